// cvt_init.cpp: start-up from a configuration root, loading of files and directories, reload and shutdown.
#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <utility>

#include "cvt.h"
#include "cvt_heap.h"
#include "cvt_log.h"
#include "stt_bind.h"

AllInfo *gptAllInfo = nullptr;
char *gpsRootPath = nullptr;
char *gpsRootFile = nullptr;
time_t gtLastLoadTime = 0;

namespace {

constexpr size_t kPathSize = 2048;

// --- Loading files and directories
// -----------------------------------------------------------------------------

struct DirClose {
  void operator()(DIR *pt) const { closedir(pt); }
};
using Directory = std::unique_ptr<DIR, DirClose>;

// The three bytes behind the last "." are "xml": a prefix test, so names like a.xmlx are taken, too.
bool isXmlName(const char *psName) {
  const char *const psDot = std::strrchr(psName, '.');
  return psDot != nullptr && std::strncmp(psDot + 1, "xml", 3) == 0;
}

// The next entry. Null behind the last one, with errno 0, and when the directory cannot be read.
dirent *nextEntry(DIR *pt) {
  errno = 0;
  return readdir(pt);
}

int locParseDirXmlLimit(char *psBasePath, char *psDirName, int nLimit, fnptr *Init) {
  CVT_NOT_NULL(psDirName, -1);
  CVT_NOT_NULL(Init, -1);
  if (psBasePath == nullptr) CVT_NOT_NULL(gpsRootPath, -1);
  const char *const psBase = psBasePath == nullptr ? gpsRootPath : psBasePath;
  char sPath[kPathSize];
  std::snprintf(sPath, sizeof sPath, "%s/%s", psBase, psDirName);
  Directory dir(opendir(sPath));
  if (dir == nullptr) {  // a missing directory is no error: that section has no files
    CVT_ERR("Open Dir [%s] err:[%s]!!", sPath, std::strerror(errno));
    return 0;
  }
  CVT_TRACE("Enter [%s] ... ", psDirName);
  int nCount = 0;
  while (dirent *const ptEntry = nextEntry(dir.get())) {
    if (!isXmlName(ptEntry->d_name)) continue;
    if (nLimit >= 0 && ++nCount > nLimit) {
      CVT_ERR("Dir[%s/%s] could only load [%d] file: Err!!", psBase, psDirName, nLimit);
      return -1;
    }
    // Files come from the configuration root also when the listing was of another base.
    if (cvtIniParseFileXml(nullptr, psDirName, ptEntry->d_name, Init) != 0) {
      CVT_ERR("Init[%s] err !!", ptEntry->d_name);
      return -1;
    }
  }
  const int nReadError = errno;
  if (closedir(dir.release()) != 0) {
    CVT_ERR("Close Dir err:[%s]!!", std::strerror(errno));
    return -1;
  }
  if (nReadError != 0) {  // the end of the listing, but not of the directory
    CVT_ERR("Read Dir [%s] err:[%s]!!", sPath, std::strerror(nReadError));
    return -1;
  }
  return 0;
}

}  // namespace

int cvtIniParseDirXml(char *psBasePath, char *psDirName, fnptr *Init) {
  return locParseDirXmlLimit(psBasePath, psDirName, -1, Init);
}

int cvtIniParseFileXml(char *psBasePath, char *psDir, char *psFileName, fnptr *Init) {
  CVT_NOT_NULL(psDir, -1);
  CVT_NOT_NULL(psFileName, -1);
  CVT_NOT_NULL(Init, -1);
  if (psBasePath == nullptr) CVT_NOT_NULL(gpsRootPath, -1);
  char sFile[kPathSize];
  std::snprintf(sFile, sizeof sFile, "%s/%s/%s", psBasePath == nullptr ? gpsRootPath : psBasePath, psDir,
                psFileName);
  switch (Init(sFile)) {
    case 0:
      CVT_TRACE("Load File [%s] ok", psFileName);
      return 0;
    case 1:
      return 0;
    default:
      CVT_ERR("Parse File[%s] Err!!", sFile);
      return -1;
  }
}

// --- The root record
// ----------------------------------------------------------------------------------------------------

namespace {

// The "Message" section's record is the registry; what stands in the file is its arguments.
void *genMessageSection(void *ptStruct, void *ptXmlNode, char *, char *psType) {
  return sttGenXmlCvtFmtArgs(static_cast<CvtFmtGlobalInfo *>(ptStruct)->ptCvtFmtArgs, ptXmlNode, psType);
}
void *genConvertSection(void *ptStruct, void *ptXmlNode, char *, char *psType) {
  return sttGenXmlCvtArgs(static_cast<CvtGlobalInfo *>(ptStruct)->ptArgs, ptXmlNode, psType);
}
void *genPlugSection(void *ptStruct, void *ptXmlNode, char *, char *psType) {
  return sttGenXmlPlugInfo(static_cast<PlugInfo *>(ptStruct), ptXmlNode, psType);
}
void *genIdSection(void *ptStruct, void *ptXmlNode, char *, char *psType) {
  return sttGenXmlCvtIdArgs(static_cast<CvtIdArgs *>(ptStruct), ptXmlNode, psType);
}

}  // namespace

// The sections run in this order wherever they stand in the file: names must be known before they are used.
// clang-format off
#define STT_TABLE_AllInfo(F)                                    \
  F(STRING,  psBasePath)                                        \
  F(INT,     nReload)                                           \
  F(INT,     nDebug)                                            \
  F(SECTION, ptPlug,    Plug,    cvtPlugInit, genPlugSection)    \
  F(SECTION, ptMessage, Message, cvtFmtInit,  genMessageSection) \
  F(SECTION, ptConvert, Convert, cvtCvtInit,  genConvertSection) \
  F(SECTION, ptId,      Id,      cvtIdInit,   genIdSection)
STT_BIND(AllInfo)

STT_BIND_MODULE(cvt_init, STT_TYPE(AllInfo))
// clang-format on

int cvtIsDebug() {
  CVT_NOT_NULL(gptAllInfo, 0);
  return gptAllInfo->nDebug;
}

char *cvtGetBasePath() {
  static char sNone[] = "";
  return gptAllInfo == nullptr || gptAllInfo->psBasePath == nullptr ? sNone : gptAllInfo->psBasePath;
}

// --- Start, restart, reload, end
// --------------------------------------------------------------------------------------

namespace {

struct HeapFree {
  void operator()(char *ps) const { std::free(ps); }
};
using HeapString = std::unique_ptr<char, HeapFree>;

void replaceRootPath(HeapString path) {
  const HeapString old(std::exchange(gpsRootPath, path.release()));
}

cvt::String f_sRootFile;  // outlives the objects of a host that end the library when they go

// gpsRootFile is interned, so it goes with the pool; callers may still read it afterwards.
void keepRootFile() {
  if (gpsRootFile == nullptr || gpsRootFile == f_sRootFile.data()) return;
  f_sRootFile = gpsRootFile;
  gpsRootFile = f_sRootFile.data();
}

int InitRoot(char *psFileName) {
  gptAllInfo = static_cast<AllInfo *>(sttParseXmlFile(psFileName, cvt::bind::name("AllInfo"),
                                                      cvt::bind::name("AllInfo"),
                                                      reinterpret_cast<void *>(sttParseXmlAllInfo)));
  if (gptAllInfo == nullptr) {
    CVT_ERR("Parse Xml File To Xml Struct Err!!");
    return -1;
  }
  gpsRootFile = cvtStrDup(psFileName);
  struct stat tStat {};
  if (stat(gpsRootFile, &tStat) != 0) {
    CVT_ERR("Stat File[%s] err:[%s]!!", gpsRootFile, std::strerror(errno));
    return -1;
  }
  gtLastLoadTime = tStat.st_mtime;
  return 1;
}

bool isRootFile(const char *psPath) {
  const char *const psDot = std::strrchr(psPath, '.');
  return psDot != nullptr && std::strcmp(psDot, ".xml") == 0;
}

// Cuts the last component off a path, in place, and returns it; null when there is no "/".
char *cutLast(char *psPath) {
  char *const psSlash = std::strrchr(psPath, '/');
  if (psSlash == nullptr) return nullptr;
  *psSlash = 0;
  return psSlash + 1;
}

// A root file lies in a directory below the configuration root. A name too short to say which is completed
// from the current directory; links are not followed, since the root is where the file is found, not where it
// is kept.
void completeRootFile() try {
  if (std::count(gpsRootPath, gpsRootPath + std::strlen(gpsRootPath), '/') >= 2) return;
  std::error_code error;
  const std::filesystem::path full = std::filesystem::absolute(gpsRootPath, error).lexically_normal();
  if (!error) replaceRootPath(HeapString(cvt::heapCopy(full.c_str())));
} catch (const std::bad_alloc &) {
  cvt::heapExhausted(kPathSize);
}

int loadRootFile() {
  completeRootFile();
  const cvt::String sWhole = gpsRootPath;
  char *const psFileName = cutLast(gpsRootPath);
  char *const psDir = psFileName == nullptr ? nullptr : cutLast(gpsRootPath);
  if (psDir == nullptr) {
    CVT_ERR("Root File[%s] has no directory above it: give its full name, ROOT/All/%s", sWhole.c_str(),
            psFileName == nullptr ? sWhole.c_str() : psFileName);
    return -1;
  }
  return cvtIniParseFileXml(gpsRootPath, psDir, psFileName, InitRoot);
}

int loadRoot() {
  if (isRootFile(gpsRootPath)) return loadRootFile();
  return locParseDirXmlLimit(gpsRootPath, cvt::bind::name("All"), 1, InitRoot);
}

void releaseRegistries() {
  keepRootFile();
  sttEnd();
  cvtEndDict();
  cvtPlugEnd();
  cvtFmtEnd();
  cvtCvtEnd();
  cvtIdEnd();
}

int initialise() {
  if (gptAllInfo != nullptr) {
    releaseRegistries();
    cvtMemReset();
    gptAllInfo = nullptr;
  }
  if (cvtInitDict() != 0) {
    CVT_ERR("Init Dict Err!!\n");
    return -1;
  }
  if (loadRoot() != 0) {
    CVT_ERR("XmlFileInit [All] Init Err!!");
    return -1;
  }
  return 0;
}

// Only the root file is watched: edits elsewhere take effect when it is touched.
bool rootFileChanged() {
  struct stat tStat {};
  if (gpsRootPath == nullptr || gpsRootFile == nullptr || stat(gpsRootFile, &tStat) != 0) return false;
  return tStat.st_mtime > gtLastLoadTime;
}

}  // namespace

int cvtInit(char *psPath) {
  CVT_NOT_NULL(psPath, -1);
  const cvt::String sPath = psPath;  // psPath may be gpsRootPath itself
  replaceRootPath(HeapString(cvt::heapCopy(psPath)));
  if (initialise() != 0) {
    CVT_ERR("Init Path[%s] err!!\n", sPath.c_str());
    return -1;
  }
  CVT_TRACE("Init Convert ok!!");
  return 0;
}

int cvtInitReload() {
  if (gptAllInfo == nullptr) {
    CVT_ERR("Not Init!!");
    return -1;
  }
  if (gptAllInfo->nReload != 1 || !rootFileChanged()) return 0;
  replaceRootPath(HeapString(cvt::heapCopy(gpsRootFile)));
  return initialise();
}

int cvtEnd() {
  releaseRegistries();
  cvtMemCleanUp();
  gptAllInfo = nullptr;
  return 0;
}

// cvt_plug.cpp: the "Plug" section: format plug-ins, opened by the dynamic loader.
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "cvt.h"
#include "cvt_guard.h"
#include "cvt_heap.h"
#include "cvt_log.h"
#include "stt_bind.h"

PlugInfo *gptPlugInfo = nullptr;

namespace {
char f_sNoPath[] = "";
}

char *gpsBasePlugPath = f_sNoPath;

namespace {

struct DlClose {
  void operator()(void *pHandle) const { dlclose(pHandle); }
};
using Library = std::unique_ptr<void, DlClose>;

class File {
 public:
  explicit File(const char *psFile) : m_nFile(open(psFile, O_RDONLY | O_CLOEXEC)) {}
  ~File() {
    if (m_nFile >= 0) close(m_nFile);
  }
  File(const File &) = delete;
  File &operator=(const File &) = delete;

  // Its size in bytes; -1 when it cannot be had.
  long size() const {
    struct stat tStat {};
    return fstat(m_nFile, &tStat) == 0 ? static_cast<long>(tStat.st_size) : -1;
  }
  // Reads a record at an offset; false when the file does not reach that far.
  template <class T>
  bool read(ElfW(Off) nAt, T &record) const {
    return pread(m_nFile, &record, sizeof record, static_cast<off_t>(nAt)) ==
           static_cast<ssize_t>(sizeof record);
  }

 private:
  int m_nFile;
};

// Whether a shared object has fewer bytes than its header tells, as one that is just being copied. The loader maps
// it as told, and the process would end at the first byte that is not there. What is no shared object at all is left
// to the loader, which says so.
bool isCut(const char *psFile) {
  const File file(psFile);
  ElfW(Ehdr) header;
  if (!file.read(0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return false;
  if (header.e_ident[EI_CLASS] != (sizeof(void *) == 8 ? ELFCLASS64 : ELFCLASS32)) return false;
  ElfW(Off) nEnd = 0;
  for (ElfW(Off) i = 0; i < header.e_phnum; ++i) {
    ElfW(Phdr) segment;
    if (!file.read(header.e_phoff + i * sizeof segment, segment)) return true;
    if (segment.p_type == PT_LOAD) nEnd = std::max<ElfW(Off)>(nEnd, segment.p_offset + segment.p_filesz);
  }
  return nEnd > static_cast<ElfW(Off)>(file.size());
}

// Where the loader will find a file: a name without a slash in the first folder of its search path that has one; as
// it stands when none has.
cvt::String foundAt(const char *psFile) {
  if (std::strchr(psFile, '/') != nullptr) return psFile;
  Dl_info here;
  void *pSelf = nullptr;
  Dl_serinfo tSize;
  if (dladdr1(reinterpret_cast<void *>(&foundAt), &here, &pSelf, RTLD_DL_LINKMAP) == 0 ||
      dlinfo(pSelf, RTLD_DI_SERINFOSIZE, &tSize) != 0) {
    return psFile;
  }
  cvt::Vector<char> bytes(tSize.dls_size);
  auto *const ptPaths = reinterpret_cast<Dl_serinfo *>(bytes.data());
  *ptPaths = tSize;
  if (dlinfo(pSelf, RTLD_DI_SERINFO, ptPaths) != 0) return psFile;
  for (unsigned i = 0; i < ptPaths->dls_cnt; ++i) {
    cvt::String sFile = cvt::String(ptPaths->dls_serpath[i].dls_name) + "/" + psFile;
    if (access(sFile.c_str(), R_OK) == 0) return sFile;
  }
  return psFile;
}

// Keeps a plug-in's code in the process after it is closed: the registries may point into it until they are
// released, which a load that failed leaves to the next start.
void keepMapped(const char *psFile) {
  dlopen(psFile, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

cvt::String fileOf(const char *psName, const char *psPath) {
  if (psPath != nullptr) return psPath;
  char sFile[2048];
  std::snprintf(sFile, sizeof sFile, "%slibcvt_plug_%s.so", gpsBasePlugPath, psName);
  return sFile;
}

cvt::String symbolOf(const char *psName, const char *psFunction) {
  if (psFunction != nullptr) return psFunction;
  char sSymbol[2048];
  std::snprintf(sSymbol, sizeof sSymbol, "%sInit", psName);
  return sSymbol;
}

// The prefix of plug-in files: read before the first plug-in of the list is loaded.
char *GetBasePlugPath(void *ptNode) {
  char *const psPath = sttParseXmlString(ptNode, cvt::bind::name("psBasePlugPath"));
  gpsBasePlugPath = psPath == nullptr ? f_sNoPath : cvtStrDup(psPath);
  return psPath;
}

void *refuse() {
  nGRet = -1;
  return nullptr;
}

// Opens a plug-in and runs its initialiser. Returns the loader's handle, or null with nGRet -1.
void *GetPlug(char *psName, char *psPath, char *psFunction, void *ptNode) {
  if (psName == nullptr) {
    CVT_ERR("Plug Name Is Null!!");
    return refuse();
  }
  const cvt::String sFile = fileOf(psName, psPath);
  const cvt::String sFound = foundAt(sFile.c_str());
  if (isCut(sFound.c_str())) {
    CVT_ERR("dlopen Err:%s: the file ends before its last segment: copy it anew!!", sFound.c_str());
    return refuse();
  }
  Library library(dlopen(sFile.c_str(), RTLD_NOW));
  if (library == nullptr) {
    CVT_ERR("dlopen Err:%s!!", dlerror());
    return refuse();
  }
  const cvt::String sSymbol = symbolOf(psName, psFunction);
  const auto fInit = reinterpret_cast<FncInit>(dlsym(library.get(), sSymbol.c_str()));
  if (fInit == nullptr) {
    const char *const psError = dlerror();
    CVT_ERR("Function [%s] Not Find in [%s]!![%s]", sSymbol.c_str(), sFile.c_str(),
            psError == nullptr ? "the symbol is null" : psError);
    return refuse();
  }
  if (cvt::guarded("Plug", psName, [&] { return fInit(ptNode); }) != 0) {
    CVT_ERR("Func[%s] in [%s] Init err!!", sSymbol.c_str(), sFile.c_str());
    keepMapped(sFile.c_str());
    return refuse();
  }
  return library.release();
}

}  // namespace

// clang-format off
#define STT_TABLE_Plug(F)                                            \
  F(STRING,  psName)                                                 \
  F(STRING,  psPath)                                                 \
  F(STRING,  psFunction)                                             \
  F(VOID_BY, ptInfo, GetPlug(psName, psPath, psFunction, ptXmlNode)) \
  F(NEXT,    ptNext, Plug)
STT_BIND(Plug)

#define STT_TABLE_PlugInfo(F)                              \
  F(STRING_BY, psBasePlugPath, GetBasePlugPath(ptXmlNode)) \
  F(STRUCT,    ptPlugs, Plug)
STT_BIND(PlugInfo)

STT_BIND_MODULE(cvt_plug, STT_TYPE(Plug), STT_TYPE(PlugInfo))
// clang-format on

void *cvtPlugInit(void *ptXmlNode, char *) {
  CVT_NOT_NULL(ptXmlNode, nullptr);
  if (gptPlugInfo != nullptr) {  // an earlier load that was not released: its registrations are still there
    for (const Plug *pt = gptPlugInfo->ptPlugs; pt != nullptr; pt = pt->ptNext) {
      keepMapped(fileOf(pt->psName, pt->psPath).c_str());
    }
  }
  cvtPlugEnd();
  PlugInfo *const ptInfo = sttParseXmlPlugInfo(ptXmlNode, cvt::bind::name("PlugInfo"));
  if (nGRet == -1) {
    CVT_ERR("Get PlugInfo Err!!");
    return nullptr;
  }
  gptPlugInfo = ptInfo;
  return gptPlugInfo;
}

int cvtPlugEnd() {
  if (gptPlugInfo == nullptr) return 0;
  for (const Plug *pt = gptPlugInfo->ptPlugs; pt != nullptr; pt = pt->ptNext) {
    if (pt->ptInfo != nullptr) dlclose(pt->ptInfo);
  }
  gptPlugInfo = nullptr;
  return 0;
}

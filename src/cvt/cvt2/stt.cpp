// stt.cpp: the registry of file types, the dispatcher chain, whole files, and the field readers and writers.
#include "stt.h"

#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "cvt_guard.h"
#include "cvt_heap.h"
#include "cvt_log.h"
#include "cvt_xml.h"
#include "stt_bind.h"

int nGRet = 0;
SttInfo *gptSttInfo = nullptr;
TypeList *gptTypeList = nullptr;

namespace {

using XmlDoc = std::unique_ptr<void, cvt::XmlDocFree>;
using XmlNode = std::unique_ptr<void, cvt::XmlNodeFree>;
using FncParseRecord = void *(*)(void *ptXmlNode, char *psType);
using FncGenRecord = void *(*)(void *ptStruct, void *ptXmlNode, char *psName, char *psType);

struct XmlStringFree {
  void operator()(char *ps) const { xmlFreeString(ps); }
};
using XmlString = std::unique_ptr<char, XmlStringFree>;

char f_sId[] = "__ID";
char f_sBaseType[] = "String";
char f_sBaseValue[] = "psValue";

FuncList *gptFuncList = nullptr;

// The current dispatcher chain: that of the file type being read, else the global one.
FuncList **f_pptChain = &gptFuncList;

// Whether the place of the failure being reported has been logged.
bool f_bPlaced = false;

// Records in fields whose users expect others.
cvt::HashSet<const void *> f_misfits;

int length(const char *ps) {
  return ps == nullptr ? 0 : static_cast<int>(std::strlen(ps));
}

// The attribute's text. Null without one; also, with the flag raised, where the heap has no room for it.
XmlString attribute(void *ptXmlNode, char *psName) {
  XmlString value(xmlGetNodeAttr(ptXmlNode, psName));
  if (value == nullptr && cvt::xmlHasAttr(ptXmlNode, psName)) {
    nGRet = -1;
    CVT_ERR("Attribute[%s]: the heap has no room for its value; raise the memory limit of the process",
            psName);
  }
  return value;
}

bool isNamed(void *ptXmlNode, const char *psName) {
  const char *const psNodeName = xmlGetNodeName(ptXmlNode);
  return psNodeName != nullptr && std::strcmp(psNodeName, psName) == 0;
}

bool hasId(void *ptXmlNode, const char *psId) {
  const XmlString id = attribute(ptXmlNode, f_sId);
  return id != nullptr && std::strcmp(id.get(), psId) == 0;
}

// The first child of that type (null: of any) with that "__ID". Text and comments carry no attributes: libxml2
// answers that for every kind of node.
void *childWithId(void *ptXmlNode, const char *psType, const char *psId) {
  if (ptXmlNode == nullptr || psId == nullptr) return nullptr;
  for (void *pt = xmlGetChileNode(ptXmlNode); pt != nullptr; pt = xmlGetNextNode(pt)) {
    if ((psType == nullptr || isNamed(pt, psType)) && hasId(pt, psId)) return pt;
  }
  return nullptr;
}

// The node itself or its nearest ancestor of that name. The climb ends at the document, which has no name.
void *selfOrAncestor(void *ptXmlNode, const char *psName) {
  void *pt = ptXmlNode;
  while (pt != nullptr && xmlGetNodeName(pt) != nullptr && !isNamed(pt, psName)) pt = xmlGetFatherNode(pt);
  return pt != nullptr && xmlGetNodeName(pt) != nullptr ? pt : nullptr;
}

SttInfo *findType(const char *psType) {
  CVT_NOT_NULL(psType, nullptr);
  SttInfo *pt = gptSttInfo;
  while (pt != nullptr && std::strcmp(pt->psTypeName, psType) != 0) pt = pt->ptNext;
  return pt;
}

void releaseChain(FuncList *&ptHead) {
  while (ptHead != nullptr) {
    const std::unique_ptr<FuncList> gone(ptHead);
    ptHead = gone->ptNext;
  }
}

// The thread's own stack, and how much of it is left to what a level needs: half of one that is small itself.
struct Stack {
  const char *psEnd = nullptr;
  std::ptrdiff_t nReserve = 0;  // bytes
};

constexpr size_t kStackReserve = size_t{256} * 1024;

Stack ownStack() {
  pthread_attr_t attributes;
  void *pEnd = nullptr;
  size_t nSize = 0;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return {};
  pthread_attr_getstack(&attributes, &pEnd, &nSize);
  pthread_attr_destroy(&attributes);
  return {static_cast<const char *>(pEnd), static_cast<std::ptrdiff_t>(std::min(kStackReserve, nSize / 2))};
}

// Whether only the reserve is left. A stack that is not the thread's own says no.
bool stackIsShort() {
  static thread_local const Stack own = ownStack();
  const std::ptrdiff_t nLeft = static_cast<const char *>(__builtin_frame_address(0)) - own.psEnd;
  return own.psEnd != nullptr && nLeft >= 0 && nLeft < own.nReserve;
}

// Makes another chain current for as long as it lives. An end meanwhile has released both and made the global one
// current: that stays.
class CurrentChain {
 public:
  explicit CurrentChain(FuncList **ppt) : m_pptOwn(ppt), m_pptSaved(std::exchange(f_pptChain, ppt)) {}
  ~CurrentChain() {
    if (f_pptChain == m_pptOwn) f_pptChain = m_pptSaved;
  }
  CurrentChain(const CurrentChain &) = delete;
  CurrentChain &operator=(const CurrentChain &) = delete;

 private:
  FuncList **m_pptOwn;
  FuncList **m_pptSaved;
};

// What a function of a plug-in or host answers; null, with the flag raised, when it lets an exception out.
template <class F>
void *answerOf(const char *psType, F &&call) {
  void *pt = nullptr;
  const auto keep = [&] {
    pt = call();
    return 0;
  };
  if (cvt::guarded("Type", psType, keep) != 0) nGRet = -1;
  return pt;
}

bool isBaseType(const char *psType) {
  return psType != nullptr && std::strcmp(psType, f_sBaseType) == 0;
}

// What the first dispatcher of the current chain that knows the type reads, or writes; null when none does.
void *readByChain(void *ptXmlNode, char *psType) {
  for (const FuncList *pt = *f_pptChain; pt != nullptr; pt = pt->ptNext) {
    CVT_NOT_NULL(pt->fpParse, nullptr);
    void *const ptStruct = answerOf(psType, [&] { return pt->fpParse(ptXmlNode, psType); });
    if (ptStruct != nullptr) return ptStruct;
  }
  return nullptr;
}

void *writeByChain(void *ptStruct, void *ptNode, char *psNodeName, char *psType) {
  for (const FuncList *pt = *f_pptChain; pt != nullptr; pt = pt->ptNext) {
    CVT_NOT_NULL(pt->fpGen, nullptr);
    void *const ptWritten = answerOf(psType, [&] { return pt->fpGen(ptStruct, ptNode, psNodeName, psType); });
    if (ptWritten != nullptr) return ptWritten;
  }
  return nullptr;
}

}  // namespace

// --- What the bound records report ----------------------------------------------------------------------------

namespace cvt::bind {

void begin() {
  nGRet = 0;
  f_bPlaced = false;
}

void failed(const char *psFile, int nLine, const char *psFunction, const char *psStatement, void *ptXmlNode) {
  logInfo(1, "$cvt2", psFile, nLine, psFunction, "%s is Err!!", psStatement);
  if (ptXmlNode != nullptr) place(ptXmlNode);
}

void place(void *ptXmlNode) {
  if (std::exchange(f_bPlaced, true)) return;
  const XmlPlace at = xmlPlaceOf(ptXmlNode);
  if (*at.psFile != 0)
    CVT_ERR("File[%s] Line[%ld] Element[%s]", at.psFile, at.nLine, xmlGetNodeName(ptXmlNode));
}

bool mayDescend(void *ptXmlNode) {
  if (!stackIsShort()) return true;
  nGRet = -1;
  CVT_ERR("Record[%s]: the list or the nesting is too long for the stack: make it shorter",
          xmlGetNodeName(ptXmlNode));
  place(ptXmlNode);
  return false;
}

bool isWanted(void *ptXmlNode, const char *psName, const void *ptRecord, const char *psType) {
  if (ptRecord == nullptr || psType == nullptr) return true;
  void *const ptElement = childWithId(ptXmlNode, nullptr, psName);
  if (ptElement == nullptr || isNamed(ptElement, psType)) return true;  // null, with the flag raised: no heap
  const XmlPlace at = xmlPlaceOf(ptElement);
  CVT_ERR("File[%s] Line[%ld] Element[%s]: it is not used: expected <%s> as %s of <%s>", at.psFile, at.nLine,
          xmlGetNodeName(ptElement), psType, psName, xmlGetNodeName(ptXmlNode));
  return false;
}

bool g_bMisfits = false;

void markMisfit(const void *ptRecord) {
  f_misfits.insert(ptRecord);
  g_bMisfits = true;
}
bool isMisfit(const void *ptRecord) {
  return g_bMisfits && f_misfits.count(ptRecord) != 0;
}

void *readChain(Reading &first) {
  Vector<ReadingPtr> others;
  Reading *ptLast = &first;
  bool bRead = first.fields();
  while (bRead) {
    begin();
    ReadingPtr next = ptLast->link();
    if (next == nullptr) break;
    ptLast = next.get();
    others.push_back(std::move(next));
    bRead = ptLast->fields();
  }
  void *ptRecord = nullptr;
  if (bRead) ptRecord = nGRet == -1 ? ptLast->linkFailed() : ptLast->make(nullptr);
  while (!others.empty()) {
    others.pop_back();
    ptLast = others.empty() ? &first : others.back().get();
    ptRecord = nGRet == -1 ? ptLast->linkFailed() : ptLast->make(ptRecord);
  }
  return ptRecord;
}

}  // namespace cvt::bind

// --- Registry -----------------------------------------------------------------------------------------------------

int sttAddSttInfo(char *psType, FncSttParse fParseFunction) {
  CVT_NOT_NULL(psType, -1);
  if (findType(psType) != nullptr) return 0;
  char *const psTypeName = strdup(psType);
  auto *const fresh = new (std::nothrow) SttInfo{psTypeName, fParseFunction, nullptr, gptSttInfo};
  if (psTypeName == nullptr || fresh == nullptr) {
    CVT_ERR("New Type[%s] SttInfo Err!!", psType);
    std::free(psTypeName);
    delete fresh;
    return -1;
  }
  gptSttInfo = fresh;
  return 0;
}

int sttAddVoidFunctionToSttInfo(char *psType, sttFncParseVoid fpParseVoid, sttFncGenVoid fpGenVoid) {
  CVT_NOT_NULL(psType, -1);
  CVT_NOT_NULL(fpParseVoid, -1);
  CVT_NOT_NULL(fpGenVoid, -1);
  SttInfo *const ptInfo = findType(psType);
  if (ptInfo == nullptr) {
    CVT_ERR("SttInfo[%s] Not Defined!!", psType);
    return -1;
  }
  ptInfo->ptVoidFunction = cvt::heapNew(FuncList{fpParseVoid, fpGenVoid, ptInfo->ptVoidFunction});
  return 0;
}

int sttAddFuncVoid(sttFncParseVoid fpParseVoid, sttFncGenVoid fpGenVoid) {
  FuncList **pptEnd = f_pptChain;
  for (; *pptEnd != nullptr; pptEnd = &(*pptEnd)->ptNext) {
    if ((*pptEnd)->fpParse == fpParseVoid) return 0;
  }
  *pptEnd = cvt::heapNew(FuncList{fpParseVoid, fpGenVoid, nullptr});
  return 0;
}

int sttResetFunctVoid() {
  releaseChain(*f_pptChain);
  return 0;
}

int sttSetVoidType(void *pPoint, char *psStructType) {
  if (pPoint == nullptr || psStructType == nullptr) return -1;
  gptTypeList = cvt::heapNew(TypeList{pPoint, psStructType, gptTypeList});
  return 0;
}

char *sttGetVoidType(void *pPoint) {
  for (const TypeList *pt = gptTypeList; pt != nullptr; pt = pt->ptNext) {
    if (pt->p == pPoint) return pt->psType;
  }
  return nullptr;
}

int sttEnd() {
  f_misfits.clear();
  cvt::bind::g_bMisfits = false;
  while (gptSttInfo != nullptr) {
    const std::unique_ptr<SttInfo> gone(gptSttInfo);
    gptSttInfo = gone->ptNext;
    std::free(gone->psTypeName);
    releaseChain(gone->ptVoidFunction);
  }
  f_pptChain = &gptFuncList;
  return sttResetFunctVoid();
}

// --- Dispatch -----------------------------------------------------------------------------------------------------

void *sttParseVoid(void *ptXmlNode, char *psStructType) {
  if (void *const ptStruct = readByChain(ptXmlNode, psStructType)) return ptStruct;
  if (isBaseType(psStructType)) {
    const XmlString value = attribute(ptXmlNode, f_sBaseValue);
    return value == nullptr ? nullptr : cvt::heapCopy(value.get());
  }
  CVT_ERR("Type[%s] Not Define", psStructType);
  return nullptr;
}

void *sttGenVoid(void *ptSruct, void *ptNode, char *psNodeName, char *psStructType) {
  if (void *const ptWritten = writeByChain(ptSruct, ptNode, psNodeName, psStructType)) return ptWritten;
  if (isBaseType(psStructType)) {
    // An element of its own, returned without being attached: who wants it in a tree attaches it.
    void *const ptMade = xmlMadeNode(psNodeName);
    auto *const psValue = static_cast<char *>(ptSruct);
    if (psValue == nullptr || xmlPutNodeAttr(ptMade, f_sBaseValue, psValue, length(psValue)) == nullptr) {
      CVT_ERR("psValue Generate Xml Node err!");
      xmlNodeFree(ptMade);
      return nullptr;
    }
    return ptMade;
  }
  CVT_ERR("Type[%s] Not Define", psStructType);
  return nullptr;
}

// --- Files ----------------------------------------------------------------------------------------------------------

void *sttParseBySttInfo(char *psFile) {
  CVT_NOT_NULL(psFile, nullptr);
  cvt::String sReason;
  const XmlDoc doc(cvt::xmlFileParse(psFile, sReason));
  if (doc == nullptr) {
    CVT_ERR("File[%s] Parse err!!", psFile);
    CVT_ERR("File[%s] %s", psFile, sReason.c_str());
    return nullptr;
  }
  void *const ptXmlRoot = xmlGetHeadNode(doc.get());
  if (ptXmlRoot == nullptr) {
    CVT_ERR("File[%s] Get Root Err!!", psFile);
    return nullptr;
  }
  char *psType = nullptr;
  CVT_NOT_NULL(psType = xmlGetNodeName(ptXmlRoot), nullptr);
  SttInfo *const ptInfo = findType(psType);
  if (ptInfo == nullptr) {
    CVT_ERR("SttInfo no Type[%s] Info!!", psType);
    return nullptr;
  }
  CVT_NOT_NULL(ptInfo->fParseFunction, nullptr);
  const CurrentChain chain(&ptInfo->ptVoidFunction);
  const FncSttParse fParse = ptInfo->fParseFunction;
  return answerOf(psType, [&] { return fParse(psFile, psType, xmlGetChileNode(ptXmlRoot)); });
}

void *sttParseXmlFile(char *psFileName, char *psRootTag, char *psType, void *pfParse) {
  CVT_NOT_NULL(psRootTag, nullptr);
  CVT_NOT_NULL(pfParse, nullptr);
  void *ptXmlDoc = nullptr;
  void *ptXmlRoot = nullptr;
  void *ptHeadNode = nullptr;
  cvt::String sReason;
  if ((ptXmlDoc = cvt::xmlFileParse(psFileName, sReason)) == nullptr) {
    CVT_ERR("[ptXmlDoc = xmlFileParse(psFileName)] is NULL");
    CVT_ERR("File[%s] %s", psFileName, sReason.c_str());
    return nullptr;
  }
  const XmlDoc owner(ptXmlDoc);
  CVT_NOT_NULL(ptXmlRoot = xmlGetHeadNode(ptXmlDoc), nullptr);
  if (!isNamed(ptXmlRoot, psRootTag)) {
    CVT_ERR("[%s] is different then xml root name[%s]", psRootTag, xmlGetNodeName(ptXmlRoot));
    return nullptr;
  }
  CVT_NOT_NULL(ptHeadNode = xmlGetChileNode(ptXmlRoot), nullptr);
  const auto fParse = reinterpret_cast<FncParseRecord>(pfParse);
  void *const ptStruct = answerOf(psType, [&] { return fParse(ptHeadNode, psType); });
  if (nGRet == -1) {
    CVT_ERR("parse xml[%s)%s] faile", psRootTag, psFileName);
    return nullptr;
  }
  return ptStruct;
}

int sttGenXmlFile(char *psFileName, void *ptStruct, char *psTagName, char *psType, void *pfGen) {
  CVT_NOT_NULL(psFileName, -1);
  CVT_NOT_NULL(ptStruct, -1);
  CVT_NOT_NULL(pfGen, -1);
  CVT_NOT_NULL(psTagName, -1);
  CVT_NOT_NULL(psType, -1);
  const XmlDoc doc(xmlInit());
  XmlNode root(xmlMadeNode(psTagName));
  XmlNode record(xmlMadeNode(psType));
  const bool bMade = doc != nullptr && root != nullptr && record != nullptr;
  if (bMade) {
    void *const ptNode = record.release();
    xmlPutChileNode(root.get(), ptNode);
    const auto fGen = reinterpret_cast<FncGenRecord>(pfGen);
    answerOf(psType, [&] { return fGen(ptStruct, ptNode, psTagName, psType); });
  }
  if (!bMade || nGRet == -1) {
    CVT_ERR("Make [%s)%s] Xml err!", psTagName, psFileName);
    return -1;
  }
  xmlPutRootNode(doc.get(), root.release());
  if (xmlFileGenerate(psFileName, doc.get()) < 0) {
    CVT_ERR("Generate Xml File[%s] err!", psFileName);
    return -1;
  }
  return 0;
}

// --- Attributes: a missing one reads as null or 0, null and 0 are not written -------------------------------

namespace {

// A failing writer drops the element that was being filled, as its callers expect, and raises the flag.
void putAttribute(void *ptXmlNode, char *psName, char *psText) {
  if (xmlPutNodeAttr(ptXmlNode, psName, psText, length(psText)) != nullptr) return;
  cvt::xmlDropNode(ptXmlNode);
  nGRet = -1;
}

template <size_t nSize, class T>
void putNumber(void *ptXmlNode, char *psName, const char *psFormat, T number) {
  if (number == T{}) return;
  char sText[nSize];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::snprintf(sText, sizeof sText, psFormat, number);
#pragma GCC diagnostic pop
  putAttribute(ptXmlNode, psName, sText);
}

}  // namespace

char sttParseXmlChar(void *ptXmlNode, char *psName) {
  const XmlString value = attribute(ptXmlNode, psName);
  return value == nullptr ? char{0} : *value;
}

void sttGenerateXmlChar(void *ptXmlNode, char caChar, char *psName) {
  putNumber<2>(ptXmlNode, psName, "%c", caChar);
}

char *sttParseXmlString(void *ptXmlNode, char *psName) {
  return attribute(ptXmlNode, psName).release();
}

void sttGenerateXmlString(void *ptXmlNode, char *psString, char *psName) {
  if (psString != nullptr) putAttribute(ptXmlNode, psName, psString);
}

void sttFreeXmlString(char *psString) {
  xmlFreeString(psString);
}

int sttParseXmlInt(void *ptXmlNode, char *psName) {
  const XmlString value = attribute(ptXmlNode, psName);
  return value == nullptr ? 0 : std::atoi(value.get());
}

void sttGenerateXmlInt(void *ptXmlNode, int nInt, char *psName) {
  putNumber<30>(ptXmlNode, psName, "%d", nInt);
}

long sttParseXmlLong(void *ptXmlNode, char *psName) {
  const XmlString value = attribute(ptXmlNode, psName);
  return value == nullptr ? 0 : std::atol(value.get());
}

void sttGenerateXmlLong(void *ptXmlNode, long lLong, char *psName) {
  putNumber<60>(ptXmlNode, psName, "%ld", lLong);
}

// Kept as it is: an attribute that is present reads as 0.0 without being converted. An absent one has no text
// to convert and reads as 0.0, too, so callers see 0.0 always. No record of the library uses these two kinds.
float sttParseXmlFloat(void *, char *) {
  return 0.0F;
}

void sttGenerateXmlFloat(void *ptXmlNode, float fFloat, char *psName) {
  putNumber<60>(ptXmlNode, psName, "%f", static_cast<double>(fFloat));
}

float sttParseXmlDouble(void *, char *) {
  return 0.0F;
}

void sttGenerateXmlDouble(void *ptXmlNode, double dDouble, char *psName) {
  putNumber<60>(ptXmlNode, psName, "%lf", dDouble);
}

// --- Records --------------------------------------------------------------------------------------------------------

namespace {

// A new last child of ptFather with its "__ID"; null, with the flag raised, when it could not be made.
void *appendRecord(void *ptFather, char *psName, char *psTypeName) {
  void *const ptNode = xmlMadeNode(psTypeName);
  if (ptFather == nullptr || ptNode == nullptr || !cvt::bind::mayDescend(ptNode) ||
      xmlPutNodeAttr(ptNode, f_sId, psName, length(psName)) == nullptr) {
    xmlNodeFree(ptNode);
    nGRet = -1;
    return nullptr;
  }
  xmlPutChileNode(ptFather, ptNode);
  return ptNode;
}

bool isGiven(const void *fFunc) {
  if (fFunc == nullptr) nGRet = -1;
  CVT_NOT_NULL(fFunc, false);
  return true;
}

void *read(void *ptElement, char *psType, void *fFunc) {
  if (ptElement == nullptr || !isGiven(fFunc) || !cvt::bind::mayDescend(ptElement)) return nullptr;
  const auto fParse = reinterpret_cast<FncParseRecord>(fFunc);
  return answerOf(psType, [&] { return fParse(ptElement, psType); });
}

void write(void *ptElement, void *ptStruct, char *psName, char *psTypeName, void *fFunc) {
  if (ptElement == nullptr || !isGiven(fFunc)) return;
  const auto fGen = reinterpret_cast<FncGenRecord>(fFunc);
  answerOf(psTypeName, [&] { return fGen(ptStruct, ptElement, psName, psTypeName); });
}

}  // namespace

namespace cvt::bind {

void *structElement(void *ptXmlNode, const char *psType, const char *psName) {
  return psType == nullptr ? nullptr : childWithId(ptXmlNode, psType, psName);
}

void *nextElement(void *ptXmlNode, const char *psType, const char *psName) {
  if (psType == nullptr || psName == nullptr) return nullptr;
  void *const ptOwn = selfOrAncestor(ptXmlNode, psType);
  if (ptOwn == nullptr) return nullptr;
  // Only the very next sibling counts: anything else between two records, a comment too, ends the list.
  void *const ptSibling = xmlGetNextNode(ptOwn);
  if (ptSibling == nullptr || !isNamed(ptSibling, psType) || !hasId(ptSibling, psName)) return nullptr;
  return ptSibling;
}

void *newStructElement(void *ptXmlNode, char *psName, char *psTypeName) {
  return appendRecord(ptXmlNode, psName, psTypeName);
}

void *newNextElement(void *ptXmlNode, char *psName, char *psTypeName) {
  void *const ptOwn = psTypeName == nullptr ? nullptr : selfOrAncestor(ptXmlNode, psTypeName);
  return appendRecord(ptOwn == nullptr ? nullptr : xmlGetFatherNode(ptOwn), psName, psTypeName);
}

}  // namespace cvt::bind

void *sttParseXmlStruct(void *ptXmlNode, char *psType, char *psName, void *fFunc) {
  return read(cvt::bind::structElement(ptXmlNode, psType, psName), psType, fFunc);
}

void sttGenerateXmlStruct(void *ptXmlNode, void *ptStruct, char *psName, char *psTypeName, void *fFunc) {
  if (ptStruct == nullptr) return;
  write(cvt::bind::newStructElement(ptXmlNode, psName, psTypeName), ptStruct, psName, psTypeName, fFunc);
}

void *sttParseXmlNext(void *ptXmlNode, char *psType, char *psName, void *fFunc) {
  return read(cvt::bind::nextElement(ptXmlNode, psType, psName), psType, fFunc);
}

void sttGenerateXmlNext(void *ptXmlNode, void *ptStruct, char *psName, char *psTypeName, void *fFunc) {
  if (ptStruct == nullptr) return;
  write(cvt::bind::newNextElement(ptXmlNode, psName, psTypeName), ptStruct, psName, psTypeName, fFunc);
}

void *sttParseXmlVoid(void *ptXmlNode, char *psName) {
  void *const ptChild = childWithId(ptXmlNode, nullptr, psName);
  if (ptChild == nullptr || !cvt::bind::mayDescend(ptChild)) return nullptr;
  return sttParseVoid(ptChild, xmlGetNodeName(ptChild));
}

void sttGenerateXmlVoid(void *ptXmlNode, void *ptVoid, char *psName) {
  if (ptVoid == nullptr) return;
  char *const psType = sttGetVoidType(ptVoid);
  if (psType == nullptr) {
    CVT_ERR("Struct Type Not Define!!");
    nGRet = -1;
    return;
  }
  void *const ptNode = xmlMadeNode(psType);
  if (ptNode == nullptr) {
    CVT_ERR("xmlMadeNode Err!!");
    nGRet = -1;
    return;
  }
  if (xmlPutNodeAttr(ptNode, f_sId, psName, length(psName)) == nullptr) {
    CVT_ERR("xmlPutNodeAttr Err!!");
    xmlNodeFree(ptNode);
    nGRet = -1;
    return;
  }
  if (ptXmlNode == nullptr || xmlPutChileNode(ptXmlNode, ptNode) != 0) {
    CVT_ERR("xmlPutChileNode Err!!");
    xmlNodeFree(ptNode);
    nGRet = -1;
    return;
  }
  if (!cvt::bind::mayDescend(ptNode)) return;
  if (isBaseType(psType)) {  // its value would go to an element of its own that nobody attaches
    writeByChain(ptVoid, ptNode, psName, psType);
  } else {
    sttGenVoid(ptVoid, ptNode, psName, psType);
  }
  if (nGRet == -1) CVT_ERR("sttGenVoid Type[%s] Err!!", psType);
}

// cvt_convert.cpp: converters: the state of the module, functions and converters by name, and the "Convert"
// section.
#include "cvt_convert.h"

#include "cvt_convert_parts.h"
#include "cvt_convert_plan.h"
#include "cvt_index.h"

CvtGlobalInfo *gptCvtGlobalInfo = nullptr;

namespace {

using StringIndex = cvt::ListIndex<StringList, &StringList::psString>;

StringIndex f_funcIndex;
StringIndex f_cvtIndex;

void NewCvtGlobalInfo() {
  if (gptCvtGlobalInfo == nullptr) {
    gptCvtGlobalInfo = static_cast<CvtGlobalInfo *>(cvtMemMalloc(sizeof(CvtGlobalInfo)));
  }
}

}  // namespace

FncConvert cvt::convert::findFunction(const char *psName) {
  const StringList *const pt = f_funcIndex.find(gptCvtGlobalInfo->ptFuncList, psName);
  return pt == nullptr ? nullptr : reinterpret_cast<FncConvert>(pt->ptInfo);
}

int cvtConvertAddFunction(char *psFuncName, FncConvert fCvtFunction) {
  NewCvtGlobalInfo();
  // The head is replaced even by null: a null name or function forgets every function registered before.
  gptCvtGlobalInfo->ptFuncList =
      cvtStrAddStringList(gptCvtGlobalInfo->ptFuncList, psFuncName, reinterpret_cast<void *>(fCvtFunction));
  return 0;
}

int cvtCvtEnd() {
  gptCvtGlobalInfo = nullptr;
  f_funcIndex.clear();
  f_cvtIndex.clear();
  cvt::convert::forgetPlans();
  return 0;
}

// --- Converter registry and the "Convert" section --------------------------------------------------------

struct Converter *cvtGetCvt(char *psName) {
  CVT_NOT_NULL(gptCvtGlobalInfo, nullptr);
  if (psName == nullptr) return nullptr;
  const StringList *const pt = f_cvtIndex.find(gptCvtGlobalInfo->ptCvtList, psName);
  return pt == nullptr ? nullptr : static_cast<Converter *>(pt->ptInfo);
}

char *cvtGetDst(Converter *ptConvert) {
  CVT_NOT_NULL(ptConvert, nullptr);
  return ptConvert->psDstStructName;
}

namespace {

int CvtInitCvt(char *psFileName) {
  sttAddFuncVoid(sttParseVoidcvt_message, sttGenVoidcvt_message);
  sttAddFuncVoid(sttParseVoidcvt_convert, sttGenVoidcvt_convert);
  auto *const ptConvert = static_cast<Converter *>(
      sttParseXmlFile(psFileName, cvt::bind::name("Convert"), cvt::bind::name("Converter"),
                      reinterpret_cast<void *>(sttParseXmlConverter)));
  if (ptConvert == nullptr) {
    CVT_ERR("Init Convert define: load file[%s] err!!", psFileName);
    return -1;
  }
  // The head is replaced even by null: a converter without a name forgets every converter loaded before.
  gptCvtGlobalInfo->ptCvtList =
      cvtStrAddStringList(gptCvtGlobalInfo->ptCvtList, ptConvert->psName, ptConvert);
  if (gptCvtGlobalInfo->ptCvtList == nullptr) {
    CVT_ERR("Add ptConvert[%s] to global define Err!!", ptConvert->psName);
    return -1;
  }
  cvt::convert::plan(*ptConvert);
  return 0;
}

}  // namespace

void *cvtCvtInit(void *ptNode, char *) {
  NewCvtGlobalInfo();
  cvt::convert::InitStack(cvt::convert::kSpareTemporaries);
  nGRet = 0;
  gptCvtGlobalInfo->ptArgs = sttParseXmlCvtArgs(ptNode, cvt::bind::name("CvtArgs"));
  if (nGRet == -1) {
    CVT_ERR("Convert Args Get Err!!\n");
    return nullptr;
  }
  const CvtArgs *const ptArgs = gptCvtGlobalInfo->ptArgs;
  if (ptArgs != nullptr && ptArgs->psCvtPath != nullptr &&
      cvtIniParseDirXml(nullptr, ptArgs->psCvtPath, CvtInitCvt) != 0) {
    CVT_ERR("Convert Pare Path[%s] err!!", ptArgs->psCvtPath);
    nGRet = -1;
    return nullptr;
  }
  nGRet = 0;
  return gptCvtGlobalInfo;
}

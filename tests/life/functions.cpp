// A plug-in without a format: the conversion function "join" puts its arguments one behind the other.
#include <cstring>

#include "cvt_convert.h"

namespace {

int join(Value *ptResult, int nArgs, Value **pptArgs, MemPort ptMemNode) {
  int nLen = 0;
  for (int i = 0; i < nArgs; ++i) nLen += pptArgs[i] == nullptr ? 0 : pptArgs[i]->nLen;
  auto *const psText = static_cast<char *>(cvtMalloc(nLen + 1, ptMemNode));
  if (psText == nullptr) return -1;
  char *ps = psText;
  for (int i = 0; i < nArgs; ++i) {
    if (pptArgs[i] == nullptr || pptArgs[i]->nLen <= 0) continue;
    std::memcpy(ps, pptArgs[i]->psValue, static_cast<size_t>(pptArgs[i]->nLen));
    ps += pptArgs[i]->nLen;
  }
  ptResult->psValue = psText;
  ptResult->nLen = nLen;
  return 0;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int lifeInit(void *) {
  char sName[] = "join";
  return cvtConvertAddFunction(sName, join);
}

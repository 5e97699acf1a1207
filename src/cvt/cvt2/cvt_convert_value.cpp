// cvt_convert_value.cpp: the values of arguments: slots, constants, counts, results of functions, and the
// temporaries that hold these.
#include <cstdio>

#include "cvt_convert_parts.h"
#include "cvt_guard.h"
#include "cvt_heap.h"

namespace cvt::convert {

// --- Temporary values ------------------------------------------------------------------------------------

namespace {

Stack *NewStack(Stack *ptNext, Stack *ptPre) {
  auto *const pt = static_cast<Stack *>(cvtMemMalloc(sizeof(Stack)));
  pt->ptValue = static_cast<Value *>(cvtMemMalloc(sizeof(Value)));
  pt->ptNext = ptNext;
  if (ptNext != nullptr) ptNext->ptPre = pt;
  pt->ptPre = ptPre;
  if (ptPre != nullptr) ptPre->ptNext = pt;
  return pt;
}

}  // namespace

int InitStack(int nNum) {
  CVT_NOT_NULL(gptCvtGlobalInfo, -1);
  Stack *const ptBottom = NewStack(nullptr, nullptr);
  gptCvtGlobalInfo->ptStack = ptBottom;
  Stack *ptTop = ptBottom;
  for (int i = 0; i < nNum; ++i) ptTop = NewStack(ptTop, nullptr);
  return 0;
}

void release(const Value *ptValue) {
  Stack *pt = gptCvtGlobalInfo->ptStack;
  while (pt->ptNext != nullptr && (ptValue == nullptr || pt->ptValue != ptValue)) pt = pt->ptNext;
  gptCvtGlobalInfo->ptStack = pt;
}

namespace {

// Hands out the next temporary, empty. The stack grows where it is deeper than ever before.
Value *PopTempValue() {
  CVT_NOT_NULL(gptCvtGlobalInfo, nullptr);
  if (gptCvtGlobalInfo->ptStack == nullptr) InitStack(kSpareTemporaries);
  Stack *const ptNow = gptCvtGlobalInfo->ptStack;
  Stack *const ptAbove = ptNow->ptPre != nullptr ? ptNow->ptPre : NewStack(ptNow, nullptr);
  gptCvtGlobalInfo->ptStack = ptAbove;
  *ptAbove->ptValue = Value{};
  return ptAbove->ptValue;
}

}  // namespace

// --- Arguments -------------------------------------------------------------------------------------------

int count(const Arg *ptArgs) {
  int n = 0;
  for (; ptArgs != nullptr; ptArgs = ptArgs->ptNext) ++n;
  return n;
}

// Whether the record of an argument belongs to another code.
bool isMisfit(const Arg *ptArgs) {
  if (!bind::isMisfit(ptArgs->pInfo)) return false;
  CVT_ERR("Arg Type [%d]: its record is of another type, as the log of the start says", ptArgs->nType);
  return true;
}

int GetNodeValueIndex(Arg *ptArgs) {
  CVT_NOT_NULL(ptArgs, -1);
  if (ptArgs->nType != CVT_TYPE_SRC && ptArgs->nType != CVT_TYPE_DST) {
    CVT_ERR("Arg Type [%d] err!!", ptArgs->nType);
    return -1;
  }
  CVT_NOT_NULL(ptArgs->pInfo, -1);
  if (isMisfit(ptArgs)) return -1;
  return static_cast<Node *>(ptArgs->pInfo)->nIdx;
}

namespace {

// The argument pointers of one call. Each depth of calls has an array of its own, which is kept for the next
// call: a call may hand its array to a function that calls others.
class ArgArray {
 public:
  explicit ArgArray(int nSize) {
    if (f_depth == f_arrays.size()) f_arrays.emplace_back();
    Vector<Value *> &array = f_arrays[f_depth++];
    array.assign(std::max(array.size(), static_cast<size_t>(nSize)), nullptr);
    m_data = array.data();
  }
  ~ArgArray() { --f_depth; }
  ArgArray(const ArgArray &) = delete;
  ArgArray &operator=(const ArgArray &) = delete;

  Value **data() const { return m_data; }

 private:
  static inline Vector<Vector<Value *>> f_arrays;
  static inline size_t f_depth = 0;
  Value **m_data;
};

Value *DoFunc(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Function *ptFunc,
              MemPort ptMemNode) {
  CVT_NOT_NULL(ptFunc, nullptr);
  CVT_NOT_NULL(gptCvtGlobalInfo, nullptr);
  // The result slot is taken before the arguments, so that their temporaries lie above it.
  Value *const ptResult = PopTempValue();
  ArgArray args(std::max(static_cast<int>(gptCvtGlobalInfo->nMaxArgs), count(ptFunc->ptArgs)));
  int nNum = 0;
  for (Arg *pt = ptFunc->ptArgs; pt != nullptr; pt = pt->ptNext) {
    args.data()[nNum++] = pt->nType == CVT_TYPE_RAW ? static_cast<Value *>(pt->pInfo)
                                                    : GetValue(ptSrcValueList, ptDstValueList, pt, ptMemNode);
  }
  const FncConvert fCvtFunc = ptFunc->fCvtFunc;
  CVT_NOT_NULL(ptFunc->fCvtFunc, nullptr);
  const int nRet =
      guarded("Func", ptFunc->psName, [&] { return fCvtFunc(ptResult, nNum, args.data(), ptMemNode); });
  PushTempValue(ptResult);
  if (nRet != 0) {
    CVT_ERR("Do Func[%s] err!!", ptFunc->psName);
    return nullptr;
  }
  return ptResult;
}

// The count is always the source list's, also for a destination node: its position is applied to the source.
Value *InnerGetLoopNum(ValueListPort ptSrcValueList, LoopGetNum *ptLoopGetNum, MemPort ptMemNode) {
  constexpr int kCountText = 12;
  CVT_NOT_NULL(ptLoopGetNum, nullptr);
  Value *const ptValue = PopTempValue();
  const int nIndex = GetNodeValueIndex(ptLoopGetNum->ptLoop);
  const int nNum = cvtGetLoopValueListNum(ptSrcValueList, nIndex);
  if (nNum < 0) {
    CVT_ERR("Get Field Index[%d] Loop Num err!!", nIndex);
    return nullptr;
  }
  CVT_NOT_NULL(ptValue, nullptr);
  PushTempValue(ptValue);
  ptValue->psValue = static_cast<char *>(cvtMalloc(kCountText, ptMemNode));
  if (ptValue->psValue == nullptr) return nullptr;
  ptValue->nLen = std::snprintf(ptValue->psValue, kCountText, "%d", nNum);
  return ptValue;
}

}  // namespace

Value *stepwise::GetValue(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Arg *ptArgs,
                          MemPort ptMemNode) {
  CVT_NOT_NULL(ptArgs, nullptr);
  if (isMisfit(ptArgs)) return nullptr;
  switch (ptArgs->nType) {
    case CVT_TYPE_SRC:
    case CVT_TYPE_DST: {
      CVT_NOT_NULL(ptArgs->pInfo, nullptr);
      const auto *const ptNode = static_cast<Node *>(ptArgs->pInfo);
      const bool bSrc = ptArgs->nType == CVT_TYPE_SRC;
      Value *const ptValue = cvtGetListValue(bSrc ? ptSrcValueList : ptDstValueList, ptNode->nIdx);
      if (ptValue == nullptr) {
        CVT_ERR("%s Msg Get Filed By Id[%s)%d] err!!", bSrc ? "Src" : "Dst", ptNode->psName, ptNode->nIdx);
      }
      return ptValue;
    }
    case CVT_TYPE_VALUE:
      CVT_NOT_NULL(ptArgs->pInfo, nullptr);
      return static_cast<Value *>(ptArgs->pInfo);
    case CVT_TYPE_FUNC:
      return DoFunc(ptSrcValueList, ptDstValueList, static_cast<Function *>(ptArgs->pInfo), ptMemNode);
    case CVT_TYPE_LOOPNUM:
      return InnerGetLoopNum(ptSrcValueList, static_cast<LoopGetNum *>(ptArgs->pInfo), ptMemNode);
    default:
      CVT_ERR("No Defined Arg Type [%d] err!!", ptArgs->nType);
      return nullptr;
  }
}

}  // namespace cvt::convert

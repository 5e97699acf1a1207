// cvt_convert_parts.h: what the files of the unit cvt_convert share. Private.
//
//   cvt_convert        module state, functions and converters by name, the "Convert" section
//   cvt_convert_bind   converter files: records, and names that become positions
//   cvt_convert_value  arguments and temporary values
//   cvt_convert_plan   rule lists as they are run: runs of copies
//   cvt_convert_rule   rules, and the walk over a list of them
//   cvt_convert_sql    the SQL rule
#pragma once

#include <algorithm>

#include "cvt_convert.h"
#include "cvt_log.h"
#include "stt_bind.h"

namespace cvt::convert {

// The function of that name, newest first; null when there is none.
FncConvert findFunction(const char *psName);

// --- Arguments -------------------------------------------------------------------------------------------

int count(const Arg *ptArgs);

// Whether the record of an argument belongs to another code (logged).
bool isMisfit(const Arg *ptArgs);

// The position of a node of code 0 or 1; -1 (logged) for any other argument.
int GetNodeValueIndex(Arg *ptArgs);

// The value of an argument, one step after the other; null (logged) when there is none.
namespace stepwise {
Value *GetValue(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Arg *ptArgs, MemPort ptMemNode);
}

// The slot that an argument names, when nothing is wrong with it; else null, and the steps say what is.
inline Value *slotOf(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, const Arg *ptArgs) {
  if (ptArgs == nullptr || ptArgs->pInfo == nullptr || bind::g_bMisfits) return nullptr;
  const int nType = ptArgs->nType;
  if (nType != CVT_TYPE_SRC && nType != CVT_TYPE_DST) return nullptr;
  const ValueList *const ptList = nType == CVT_TYPE_SRC ? ptSrcValueList : ptDstValueList;
  if (ptList == nullptr) return nullptr;
  const int nIdx = static_cast<const Node *>(ptArgs->pInfo)->nIdx;
  const bool bSlot = nIdx >= 0 && nIdx < ptList->nNow && nIdx < ptList->nMax;
  return bSlot ? &ptList->ptValue[nIdx] : nullptr;
}

inline Value *GetValue(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Arg *ptArgs,
                       MemPort ptMemNode) {
  Value *const ptSlot = slotOf(ptSrcValueList, ptDstValueList, ptArgs);
  return ptSlot != nullptr ? ptSlot : stepwise::GetValue(ptSrcValueList, ptDstValueList, ptArgs, ptMemNode);
}

// --- Temporary values ------------------------------------------------------------------------------------

constexpr int kSpareTemporaries = 10;

int InitStack(int nNum);

// Takes temporaries back until ptValue is the newest one.
void release(const Value *ptValue);

// Takes back everything handed out after ptValue; null, or a value that is not on the stack: everything.
inline void PushTempValue(const Value *ptValue) {
  if (gptCvtGlobalInfo == nullptr || gptCvtGlobalInfo->ptStack == nullptr) return;
  if (gptCvtGlobalInfo->ptStack->ptNext != nullptr) release(ptValue);
}

// --- Rules -----------------------------------------------------------------------------------------------

int CvtSql(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Sql *ptLoop, MemPort ptMemNode);

}  // namespace cvt::convert

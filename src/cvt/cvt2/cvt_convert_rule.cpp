// cvt_convert_rule.cpp: the rules of a converter, and the walk over a list of them.
#include <cstring>

#include "cvt_convert_parts.h"
#include "cvt_convert_plan.h"

namespace cvt::convert {

namespace {

int StructConvert(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, const Arg *ptArgs,
                  MemPort ptMemNode);
int StructConvert(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, const Arg *ptArgs,
                  const Steps *ptPlan, MemPort ptMemNode);

// Equal lengths and equal bytes. A slot that holds a loop equals nothing: its length is no size. Nor does a
// constant whose length was given without bytes.
bool sameBytes(const Value *a, const Value *b) {
  if (a->nLen != b->nLen || a->nLen < 0) return false;
  if (a->nLen == 0) return true;
  if (a->psValue == nullptr || b->psValue == nullptr) return false;
  return std::memcmp(a->psValue, b->psValue, static_cast<size_t>(a->nLen)) == 0;
}

// Pointer and length are copied, the bytes are shared.
int CvtCopy(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Copy *ptCopy, MemPort ptMemNode) {
  CVT_NOT_NULL(ptCopy, -1);
  Value *ptDst = nullptr;
  const Value *ptSrc = nullptr;
  CVT_NOT_NULL(ptDst = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptDstArgs, ptMemNode), -1);
  CVT_NOT_NULL(ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptSrcArgs, ptMemNode), -1);
  if (ptCopy->ptSrcArgs->nType == CVT_TYPE_VALUE && ptSrc->nLen < 0) {  // would be taken for a loop's list
    CVT_ERR("Value nLen[%d] is no length: write that of psValue, in bytes", ptSrc->nLen);
    return -1;
  }
  ptDst->psValue = ptSrc->psValue;
  ptDst->nLen = ptSrc->nLen;
  PushTempValue(nullptr);
  return 0;
}

// The first case without judges, or with a judge that holds, runs; none is not an error.
int CvtCase(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Case *ptCase, MemPort ptMemNode) {
  CVT_NOT_NULL(ptCase, -1);
  for (; ptCase != nullptr; ptCase = ptCase->ptNext) {
    bool bHolds = ptCase->ptJudge == nullptr;
    for (const Judge *ptJudge = ptCase->ptJudge; ptJudge != nullptr && !bHolds; ptJudge = ptJudge->ptNext) {
      const Value *ptDst = nullptr;
      const Value *ptSrc = nullptr;
      CVT_NOT_NULL(ptDst = GetValue(ptSrcValueList, ptDstValueList, ptJudge->ptDstArgs, ptMemNode), -1);
      CVT_NOT_NULL(ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptJudge->ptSrcArgs, ptMemNode), -1);
      bHolds = sameBytes(ptDst, ptSrc);
      if (!bHolds) PushTempValue(nullptr);
    }
    if (bHolds) return StructConvert(ptSrcValueList, ptDstValueList, ptCase->ptArgs, ptMemNode);
  }
  return 0;
}

// Set mode is asked for by the name of a code-2 argument: it begins with a capital S.
int CvtLoopCheckSet(Arg *ptArg) {
  if (ptArg->nType != CVT_TYPE_MSG || ptArg->pInfo == nullptr || isMisfit(ptArg)) return -1;
  const char *const psName = static_cast<Node *>(ptArg->pInfo)->psName;
  return psName != nullptr && *psName == 'S' ? 0 : -1;
}

// The record of a rule; null when it belongs to another code.
template <class T>
T *ruleOf(const Arg *ptArg) {
  return isMisfit(ptArg) ? nullptr : static_cast<T *>(ptArg->pInfo);
}

const char *CvtGetName(Arg *ptArg) {
  return ptArg->pInfo == nullptr || isMisfit(ptArg) ? nullptr : static_cast<Node *>(ptArg->pInfo)->psName;
}

int repetitions(ValueListPort ptValueList, int nSlot) {
  const int nCount = cvtGetLoopValueListNum(ptValueList, nSlot);
  if (nCount < 0) CVT_ERR_OF("CvtLoop", "cvtGetLoopValueListNum err, Index[%d]", nSlot);
  return nCount;
}

int CvtLoop(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Loop *ptLoop, MemPort ptMemNode) {
  CVT_NOT_NULL(ptLoop, -1);
  CVT_NOT_NULL(ptLoop->ptSrcArgs, -1);
  CVT_NOT_NULL(ptLoop->ptDstArgs, -1);
  const bool bSameSrc = ptLoop->ptSrcArgs->nType == CVT_TYPE_MSG;
  const bool bSameDst = ptLoop->ptDstArgs->nType == CVT_TYPE_MSG;
  const bool bSet = !bSameDst && CvtLoopCheckSet(ptLoop->ptSrcArgs) == 0;
  const int nSrcSlot = bSameSrc ? -1 : GetNodeValueIndex(ptLoop->ptSrcArgs);
  int nCount = bSameSrc ? 1 : repetitions(ptSrcValueList, nSrcSlot);
  if (nCount < 0) return -1;
  const int nDstSlot = bSameDst ? -1 : GetNodeValueIndex(ptLoop->ptDstArgs);
  if (bSet) nCount = repetitions(ptDstValueList, nDstSlot);
  if (nCount < 0) return -1;

  const Steps *const ptPlan = planOf(ptLoop->ptArgs);
  for (int i = 0; i < nCount; ++i) {
    ValueListPort ptSrc = bSameSrc ? ptSrcValueList : cvtGetLoopValueList(ptSrcValueList, nSrcSlot, i);
    ValueListPort ptDst = bSameDst ? ptDstValueList
                          : bSet   ? cvtGetLoopValueList(ptDstValueList, nDstSlot, i)
                                   : cvtNewLoopValueList(ptDstValueList, nDstSlot, -1);
    if (StructConvert(ptSrc, ptDst, ptLoop->ptArgs, ptPlan, ptMemNode) != 0) {
      CVT_ERR("Convert Loop[%d/%d] From[%s] to [%s]  convert err!!", i, nCount, CvtGetName(ptLoop->ptSrcArgs),
              CvtGetName(ptLoop->ptDstArgs));
      return -1;
    }
  }
  PushTempValue(nullptr);
  return 0;
}

// The first entry whose tag equals the value runs. Temporaries are kept between entries: the value is one.
int CvtMapping(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Mapping *ptMapping,
               MemPort ptMemNode) {
  CVT_NOT_NULL(ptMapping, -1);
  const Value *ptMapValue = nullptr;
  CVT_NOT_NULL(ptMapValue = GetValue(ptSrcValueList, ptDstValueList, ptMapping->ptMapArgs, ptMemNode), -1);
  for (const MappingList *p = ptMapping->ptList; p != nullptr; p = p->ptNext) {
    const Value *ptTagValue = nullptr;
    CVT_NOT_NULL(ptTagValue = GetValue(ptSrcValueList, ptDstValueList, p->ptTagArgs, ptMemNode), -1);
    if (!sameBytes(ptMapValue, ptTagValue)) continue;
    if (StructConvert(ptSrcValueList, ptDstValueList, p->ptActList, ptMemNode) != 0) {
      CVT_ERR("StructConvert err!!\n");
      return -1;
    }
    return 0;
  }
  return 0;
}

// The status of a rule, with the text that says which kind has failed.
struct Done {
  int nRet;
  const char *psFailed;
};

// Codes that are no rules do nothing.
Done convertByRule(ValueListPort ptSrc, ValueListPort ptDst, const Arg *ptArg, MemPort ptMemNode) {
  switch (ptArg->nType) {
    case CVT_TYPE_COPY:
      return {CvtCopy(ptSrc, ptDst, ruleOf<Copy>(ptArg), ptMemNode), "CvtCopy Err!!"};
    case CVT_TYPE_CASE:
      return {CvtCase(ptSrc, ptDst, ruleOf<Case>(ptArg), ptMemNode), "CvtCase Err!!"};
    case CVT_TYPE_LOOP:
      return {CvtLoop(ptSrc, ptDst, ruleOf<Loop>(ptArg), ptMemNode), "CVT_TYPE_LOOP Err!!"};
    case CVT_TYPE_SQL:
      return {CvtSql(ptSrc, ptDst, ruleOf<Sql>(ptArg), ptMemNode), "CvtSql Err!!"};
    case CVT_TYPE_MAPPING:
      return {CvtMapping(ptSrc, ptDst, ruleOf<Mapping>(ptArg), ptMemNode), "CvtMapping err!!"};
    default:
      return {0, nullptr};
  }
}

// Rule number i of a list.
int runRule(ValueListPort ptSrc, ValueListPort ptDst, const Arg *ptArg, int i, MemPort ptMemNode) {
  const Done done = convertByRule(ptSrc, ptDst, ptArg, ptMemNode);
  PushTempValue(nullptr);
  if (done.nRet == 0) return 0;
  CVT_ERR_OF("StructConvert", "%s", done.psFailed);
  CVT_ERR_OF("StructConvert", "Do Convert Rule [%d] err!!", i);
  return -1;
}

// Whether the lists have the slots of a run.
bool hasRoom(const Step &run, const ValueList *ptSrc, const ValueList *ptDst) {
  return run.nMostFrom < ptSrc->nNow && run.nMostFrom < ptSrc->nMax && run.nMostTo < ptDst->nNow &&
         run.nMostTo < ptDst->nMax;
}

// A run of copies: at once, or, where a slot is missing, rule by rule.
int runCopies(ValueListPort ptSrc, ValueListPort ptDst, const Step &run, MemPort ptMemNode) {
  if (hasRoom(run, ptSrc, ptDst)) {
    for (const SlotPair &pair : run.pairs) {
      const Value &from = ptSrc->ptValue[pair.nFrom];
      Value &to = ptDst->ptValue[pair.nTo];
      to.psValue = from.psValue;
      to.nLen = from.nLen;
    }
    PushTempValue(nullptr);
    return 0;
  }
  const Arg *pt = run.ptArg;
  for (size_t i = 0; i < run.pairs.size(); ++i, pt = pt->ptNext) {
    if (runRule(ptSrc, ptDst, pt, run.nPosition + static_cast<int>(i), ptMemNode) != 0) return -1;
  }
  return 0;
}

int runSteps(ValueListPort ptSrc, ValueListPort ptDst, const Steps &steps, MemPort ptMemNode) {
  for (const Step &step : steps) {
    const int nRet = step.pairs.empty() ? runRule(ptSrc, ptDst, step.ptArg, step.nPosition, ptMemNode)
                                        : runCopies(ptSrc, ptDst, step, ptMemNode);
    if (nRet != 0) return -1;
  }
  return 0;
}

// A list of rules, by its plan when it has one.
int StructConvert(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, const Arg *ptArgs,
                  const Steps *ptPlan, MemPort ptMemNode) {
  CVT_NOT_NULL(ptSrcValueList, -1);
  CVT_NOT_NULL(ptDstValueList, -1);
  if (ptPlan != nullptr) return runSteps(ptSrcValueList, ptDstValueList, *ptPlan, ptMemNode);
  int i = 0;
  for (const Arg *pt = ptArgs; pt != nullptr; pt = pt->ptNext) {
    if (runRule(ptSrcValueList, ptDstValueList, pt, ++i, ptMemNode) != 0) return -1;
  }
  return 0;
}

int StructConvert(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, const Arg *ptArgs,
                  MemPort ptMemNode) {
  return StructConvert(ptSrcValueList, ptDstValueList, ptArgs, planOf(ptArgs), ptMemNode);
}

}  // namespace
}  // namespace cvt::convert

int cvtConvert(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Converter *ptConvert,
               MemPort ptMemNode) {
  CVT_NOT_NULL(ptConvert, -1);
  if (cvt::convert::StructConvert(ptSrcValueList, ptDstValueList, ptConvert->ptArgs, ptMemNode) != 0) {
    CVT_ERR("Convert [%s] From struct[%s] tp Struct[%s] err!!", ptConvert->psName, ptConvert->psSrcStructName,
            ptConvert->psDstStructName);
    return -1;
  }
  return 0;
}

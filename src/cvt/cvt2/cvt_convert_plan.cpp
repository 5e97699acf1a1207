#include "cvt_convert_plan.h"

#include <algorithm>

#include "cvt_convert_parts.h"

namespace cvt::convert {

namespace {

HashMap<const Arg *, Steps> f_plans;

// The slot of a node of that code; -1 for any other argument.
int slotOf(const Arg *ptArg, int nCode) {
  if (ptArg == nullptr || ptArg->nType != nCode || ptArg->pInfo == nullptr || bind::isMisfit(ptArg->pInfo)) {
    return -1;
  }
  return static_cast<const Node *>(ptArg->pInfo)->nIdx;
}

bool isPlainCopy(const Arg *ptArg, SlotPair &pair) {
  if (ptArg->nType != CVT_TYPE_COPY || ptArg->pInfo == nullptr || bind::isMisfit(ptArg->pInfo)) return false;
  const auto *const ptCopy = static_cast<const Copy *>(ptArg->pInfo);
  pair = {slotOf(ptCopy->ptSrcArgs, CVT_TYPE_SRC), slotOf(ptCopy->ptDstArgs, CVT_TYPE_DST)};
  return pair.nFrom >= 0 && pair.nTo >= 0;
}

Steps stepsOf(const Arg *ptArgs) {
  Steps steps;
  int i = 0;
  for (const Arg *pt = ptArgs; pt != nullptr; pt = pt->ptNext) {
    ++i;
    SlotPair pair{};
    if (!isPlainCopy(pt, pair)) {
      steps.push_back({pt, i, {}, -1, -1});
      continue;
    }
    if (steps.empty() || steps.back().pairs.empty()) steps.push_back({pt, i, {}, -1, -1});
    Step &run = steps.back();
    run.pairs.push_back(pair);
    run.nMostFrom = std::max(run.nMostFrom, pair.nFrom);
    run.nMostTo = std::max(run.nMostTo, pair.nTo);
  }
  return steps;
}

void planList(const Arg *ptArgs);

// The lists inside a rule.
void planInside(const Arg *ptArg) {
  if (ptArg->pInfo == nullptr || bind::isMisfit(ptArg->pInfo)) return;
  if (ptArg->nType == CVT_TYPE_LOOP) planList(static_cast<const Loop *>(ptArg->pInfo)->ptArgs);
  if (ptArg->nType == CVT_TYPE_CASE) {
    for (const Case *pt = static_cast<const Case *>(ptArg->pInfo); pt != nullptr; pt = pt->ptNext) {
      planList(pt->ptArgs);
    }
  }
  if (ptArg->nType == CVT_TYPE_MAPPING) {
    for (const MappingList *pt = static_cast<const Mapping *>(ptArg->pInfo)->ptList; pt != nullptr;
         pt = pt->ptNext) {
      planList(pt->ptActList);
    }
  }
}

void planList(const Arg *ptArgs) {
  if (ptArgs == nullptr) return;
  f_plans[ptArgs] = stepsOf(ptArgs);
  for (const Arg *pt = ptArgs; pt != nullptr; pt = pt->ptNext) planInside(pt);
}

}  // namespace

void plan(const Converter &converter) {
  planList(converter.ptArgs);
}

const Steps *planOf(const Arg *ptArgs) {
  const auto found = f_plans.find(ptArgs);
  return found == f_plans.end() ? nullptr : &found->second;
}

void forgetPlans() {
  f_plans.clear();
}

}  // namespace cvt::convert

// cvt_convert_plan.h: rule lists as they are run. Private.
//
// Most rules copy a slot of the source into a slot of the destination. A plan knows the runs of such rules in a list, so
// that a run is one comparison with the room of both lists and then nothing but copies. It is made when a converter
// file has been read, beside the list, which stays as it is; a list without a plan is run rule by rule.
#pragma once

#include "cvt_convert.h"
#include "cvt_heap.h"

namespace cvt::convert {

struct SlotPair {
  int nFrom;
  int nTo;
};

// One rule, or a run of copies that begins at it.
struct Step {
  const Arg *ptArg;
  int nPosition;           // of the rule in its list, from 1
  Vector<SlotPair> pairs;  // empty: one rule of another kind
  int nMostFrom;           // the largest slots among them
  int nMostTo;
};

using Steps = Vector<Step>;

// Plans the lists of a converter, however deep.
void plan(const Converter &converter);

// The plan of a list; null when it has none.
const Steps *planOf(const Arg *ptArgs);

// Forgets all plans.
void forgetPlans();

}  // namespace cvt::convert

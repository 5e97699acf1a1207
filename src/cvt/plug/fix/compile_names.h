// compile_names.h: fields that a definition names: the length of another, the value that decides.
#pragma once

#include <string>

#include "kit/shape.h"
#include "plan.h"

namespace cvt::fix {

// A level while it is compiled: what stands before a node can be named there, and what stands before its loop.
struct Scope {
  const kit::Level &shape;
  LevelPlan &plan;
  size_t before;       // position of the node that names a field
  const Scope *outer;  // of the level around this one; null for the message's own
};

// Position of the sibling of that name among the nodes from `from` up to `to`; throws Misconfigured when it
// is none, or no field that can hold a length.
size_t findLength(const kit::Level &shape, const LevelPlan &plan, size_t from, size_t to, const char *name,
                  const std::string &path, const void *record);

// The condition that the field `by` has one of the values in `when`; a null `when`: any other value. The field
// is marked as one that decides. Throws Misconfigured.
Condition compileCondition(const Scope &scope, const char *by, const char *when, const std::string &path,
                           const void *record);

}  // namespace cvt::fix

// condition.h: whether the value of an earlier field says that a node is there.
#pragma once

#include <string>
#include <string_view>

#include "kit/values.h"
#include "plan.h"

namespace cvt::fix {

// The lists around a loop's repetition, the nearest first, for fields that stand further out.
struct Enclosing {
  const kit::List &list;
  const Enclosing *outer;
};

// The value that decides. `list` is the one of the node's own level, `around` what is around it.
std::string_view decidingValue(const Condition &condition, const kit::List &list, const Enclosing *around);

// Whether a value, as it is read, is one of the condition's.
bool holds(const Condition &condition, std::string_view value);

// The same for a value that is to be written, which need not be canonical.
bool holdsWritten(const Condition &condition, std::string_view value);

// Of the alternatives of the choice at that position: their values, for messages.
std::string decidingValues(const LevelPlan &level, size_t position);

}  // namespace cvt::fix

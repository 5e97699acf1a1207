// condition.h: whether the value of an earlier field says that a node is there.
#pragma once

#include <string>
#include <string_view>

#include "kit/path.h"
#include "kit/values.h"
#include "plan.h"

namespace cvt::fix {

// The lists around a loop's repetition, for fields that stand further out.
class Enclosing {
 public:
  void enter(const kit::List &list) { m_lists[m_depth++] = &list; }
  void leave() { --m_depth; }

  // The value that decides; `list` is the one of the node's own level.
  std::string_view value(const Condition &condition, const kit::List &list) const {
    return condition.up == 0 ? list.get(condition.slot)
                             : m_lists[m_depth - condition.up]->get(condition.slot);
  }

 private:
  const kit::List *m_lists[kit::Path::kMaxDepth];  // the first m_depth are set; definitions nest no deeper
  int m_depth = 0;
};

// Whether a value, as it is read, is one of the condition's.
bool holds(const Condition &condition, std::string_view value);

// The same for a value that is to be written, which need not be canonical.
bool holdsWritten(const Condition &condition, std::string_view value);

// Of the alternatives of the choice at that position: their values, for messages.
std::string decidingValues(const LevelPlan &level, size_t position);

}  // namespace cvt::fix

#include "condition.h"

#include "field.h"
#include "kit/fault.h"

namespace cvt::fix {

std::string_view decidingValue(const Condition &condition, const kit::List &list, const Enclosing *around) {
  if (condition.up == 0) return list.get(condition.slot);
  for (int up = condition.up; up > 1; --up) around = around->outer;
  return around->list.get(condition.slot);
}

bool holds(const Condition &condition, std::string_view value) {
  for (const std::string &one : condition.values) {
    if (value == one) return true;
  }
  return condition.otherwise;
}

bool holdsWritten(const Condition &condition, std::string_view value) {
  char number[kit::kCanonicalRoom];
  return holds(condition, value.empty() ? value : valueAsRead(condition.field, value, number));
}

std::string decidingValues(const LevelPlan &level, size_t position) {
  std::string all;
  const auto end = static_cast<size_t>(level.ops[position].next);
  for (size_t child = position + 1; child < end; child = static_cast<size_t>(level.ops[child].next)) {
    for (const std::string &one : level.conditions[static_cast<size_t>(level.ops[child].condition)].values) {
      all += (all.empty() ? "" : ", ") + kit::quoted(one);
    }
  }
  return all;
}

}  // namespace cvt::fix

#include "compile_names.h"

#include <strings.h>

#include "compile_field.h"
#include "kit/fault.h"

namespace cvt::fix {

using kit::Level;
using kit::Misconfigured;
using kit::Node;
using kit::NodeKind;
using kit::quoted;

namespace {

bool isNamed(const Node &node, const char *name) {
  return node.kind == NodeKind::Field && strcasecmp(node.name, name) == 0;
}

// Null for another node, and for one of type end.
template <class Level>
auto *namedField(const kit::Level &shape, Level &plan, size_t position, const char *name) {
  const Op &op = plan.ops[position];
  return isNamed(shape.nodes[position], name) && isField(op.kind) ? &plan.fields[op.detail] : nullptr;
}

// A field whose value decides is what it was when it is read again.
void checkDecides(const FieldPlan &field, const char *by, const std::string &path, const void *record) {
  const bool own = !field.constant && !field.hasDefault && !field.cut && field.counts.empty() &&
                   field.lengthOf == LengthOf::Nothing && !field.position;
  if (own) return;
  throw Misconfigured(
      path, record, "psBy with a field whose value is its own",
      std::string(by) + ", a constant, a count, a length, a position, or one with psDefault or psOverflow",
      "Name another field");
}

}  // namespace

size_t findLength(const Level &shape, const LevelPlan &plan, size_t from, size_t to, const char *name,
                  const std::string &path, const void *record) {
  for (size_t i = from; i < to; i = static_cast<size_t>(shape.nodes[i].next)) {
    const FieldPlan *field = namedField(shape, plan, i, name);
    if (field == nullptr) continue;
    const bool whole = field->isNumber() && field->number.decimals == 0 && !field->blankAllowed;
    const bool own = !field->constant && !field->hasDefault && field->allowed.empty() &&
                     field->counts.empty() && field->lengthOf == LengthOf::Nothing && !field->decides &&
                     !field->position;
    if (whole && own) return i;
    throw Misconfigured(path, record, "a length field that is a whole number and nothing else", field->name,
                        "Write psType=\"number\" or another number type on it, without psConst, psValues, "
                        "psDefault, psBlank and other uses");
  }
  throw Misconfigured(path, record, "a length field that stands before it in the same group",
                      "psLenField " + quoted(name), "Name such a field");
}

Condition compileCondition(const Scope &scope, const char *by, const char *when, const std::string &path,
                           const void *record) {
  Condition condition;
  for (const Scope *level = &scope; level != nullptr; level = level->outer, ++condition.up) {
    for (size_t i = level->before; i-- > 0;) {
      FieldPlan *field = namedField(level->shape, level->plan, i, by);
      if (field == nullptr) continue;
      checkDecides(*field, by, path, record);
      field->decides = true;
      condition.slot = level->shape.nodes[i].slot;
      condition.field = *field;
      condition.otherwise = when == nullptr;
      if (when == nullptr) return condition;
      for (const std::string &item : listOf(when)) {
        condition.values.push_back(item.empty() ? item : definedValue(*field, item, path, record));
      }
      return condition;
    }
  }
  throw Misconfigured(path, record, "a field that stands before it, here or around its loop",
                      "psBy " + quoted(by), "Name such a field");
}

}  // namespace cvt::fix

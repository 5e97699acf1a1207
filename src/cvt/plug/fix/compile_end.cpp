#include "compile_end.h"

#include "kit/fault.h"

namespace cvt::fix {

using kit::Misconfigured;

namespace {

enum class Tail { Open, Optional, Closed };

class TailCheck {
 public:
  TailCheck(const LevelPlan &level, const std::string &path, const void *record)
      : m_level(level), m_path(path), m_record(record) {}

  Tail run(size_t from, size_t to, Tail tail) const {
    for (size_t i = from; i < to; i = next(i)) tail = node(i, tail);
    return tail;
  }

 private:
  size_t next(size_t i) const { return static_cast<size_t>(m_level.ops[i].next); }

  Tail node(size_t i, Tail tail) const {
    const Op &op = m_level.ops[i];
    const FieldPlan *field = isField(op.kind) ? &m_level.fields[op.detail] : nullptr;
    const bool optional = field != nullptr && field->optional;
    if (tail == Tail::Closed) refuse("nothing behind a field with nRest", op);
    if (tail == Tail::Optional && !optional) refuse("only optional fields behind an optional one", op);
    if (field != nullptr) {
      return field->lengthBy == Length::Rest ? Tail::Closed : optional ? Tail::Optional : tail;
    }
    if (op.kind == Kind::Group) return run(i + 1, next(i), tail);
    return op.kind == Kind::Choice ? choice(i, tail) : tail;
  }

  // What one alternative ends with, another one may not contradict.
  Tail choice(size_t i, Tail tail) const {
    Tail last = tail;
    for (size_t child = i + 1; child < next(i); child = next(child)) {
      const Tail one = node(child, tail);
      if (one > last) last = one;
    }
    return last;
  }

  [[noreturn]] void refuse(const char *expected, const Op &op) const {
    throw Misconfigured(m_path, m_record, expected, op.name, "Move it");
  }

  const LevelPlan &m_level;
  const std::string &m_path;
  const void *m_record;
};

int linkMembers(LevelPlan &level, size_t from, size_t to, int behind);

// The first optional field of the node, when nothing else can stand before it; `behind`: that of what follows.
int linkNode(LevelPlan &level, size_t i, int behind) {
  const Op &op = level.ops[i];
  const auto next = static_cast<size_t>(op.next);
  if (op.kind == Kind::Group) return linkMembers(level, i + 1, next, behind);
  if (op.kind == Kind::Choice) {
    for (size_t child = i + 1; child < next; child = static_cast<size_t>(level.ops[child].next))
      linkNode(level, child, behind);
  }
  if (!isField(op.kind) || !level.fields[op.detail].optional) return -1;
  level.fields[op.detail].optionalBehind = behind;
  return static_cast<int>(i);
}

int linkMembers(LevelPlan &level, size_t from, size_t to, int behind) {
  std::vector<size_t> members;
  for (size_t i = from; i < to; i = static_cast<size_t>(level.ops[i].next)) members.push_back(i);
  while (!members.empty()) {
    behind = linkNode(level, members.back(), behind);
    members.pop_back();
  }
  return behind;
}

}  // namespace

void linkTail(LevelPlan &level, size_t from, size_t to, const std::string &path, const void *record) {
  TailCheck(level, path, record).run(from, to, Tail::Open);
  linkMembers(level, from, to, -1);
}

bool hasTail(const LevelPlan &level, size_t from, size_t to) {
  for (size_t i = from; i < to; ++i) {
    if (level.ops[i].kind != Kind::Special) continue;
    const FieldPlan &field = level.fields[level.ops[i].detail];
    if (field.optional || field.lengthBy == Length::Rest) return true;
  }
  return false;
}

bool hasOpenLoop(const LevelPlan &level, size_t from, size_t to) {
  for (size_t i = from; i < to; ++i) {
    if (level.ops[i].kind != Kind::Loop) continue;
    const LoopPlan &loop = level.loops[level.ops[i].detail];
    if (loop.until == kUntilEnd || hasOpenLoop(*loop.body, 0, loop.body->ops.size())) return true;
  }
  return false;
}

bool cleanTexts(const LevelPlan &level, size_t from, size_t to) {
  for (size_t i = from; i < to; ++i) {
    const Op &op = level.ops[i];
    if (op.kind == Kind::Loop) {
      const LevelPlan &body = *level.loops[op.detail].body;
      if (!cleanTexts(body, 0, body.ops.size())) return false;
    }
    if (!isField(op.kind)) continue;
    const FieldPlan &field = level.fields[op.detail];
    if (field.type != FieldType::Number && (field.type != FieldType::Text || field.controlKept)) return false;
  }
  return true;
}

}  // namespace cvt::fix

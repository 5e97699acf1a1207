#include "extent.h"

namespace cvt::fix {

namespace {

size_t nextOf(const LevelPlan &level, size_t position) {
  return static_cast<size_t>(level.ops[position].next);
}

Extent loopExtent(const LoopPlan &loop) {
  const Extent body = extentOf(*loop.body, 0, loop.body->ops.size());
  if (loop.room != 0) return {loop.room * body.bytes, body.exact};
  if (loop.fixed != 0) return {loop.fixed * body.bytes, body.exact};
  return {loop.least * body.bytes, false};
}

Extent choiceExtent(const LevelPlan &level, size_t position) {
  Extent all{0, true};
  for (size_t child = position + 1; child < nextOf(level, position); child = nextOf(level, child)) {
    const Extent one = extentOf(level, child, nextOf(level, child));
    const bool first = child == position + 1;
    all.exact = all.exact && one.exact && (first || one.bytes == all.bytes);
    all.bytes = first || one.bytes < all.bytes ? one.bytes : all.bytes;
  }
  return all;
}

Extent fieldExtent(const FieldPlan &field) {
  if (field.optional) return {0, false};
  if (field.lengthBy == Length::Fixed) return {field.length, !field.chars};
  return {field.lengthBy == Length::Mark ? 1U : 0U, false};
}

Extent opExtent(const LevelPlan &level, size_t position) {
  const Op &op = level.ops[position];
  if (op.kind == Kind::End) return {0, true};
  if (op.optional) return {0, false};
  if (isField(op.kind)) return fieldExtent(level.fields[op.detail]);
  if (op.kind == Kind::Loop) return loopExtent(level.loops[op.detail]);
  if (op.kind == Kind::Choice) return choiceExtent(level, position);
  Extent extent = extentOf(level, position + 1, nextOf(level, position));
  if (op.kind != Kind::Record) return extent;
  const RecordPlan &record = level.records[op.detail];
  if (record.end == End::Filled) extent = {record.length, true};
  extent.bytes += static_cast<size_t>(record.separator);
  return extent;
}

// Tags of the siblings, as far as their offset is known. False: behind a node of no fixed size.
bool collect(const LevelPlan &level, size_t from, size_t to, size_t &offset, Start &start) {
  for (size_t i = from; i < to; i = nextOf(level, i)) {
    const Op &op = level.ops[i];
    if ((op.kind == Kind::Group || op.kind == Kind::Record) && !op.optional) {
      if (!collect(level, i + 1, nextOf(level, i), offset, start)) return false;
      if (op.kind == Kind::Record) return false;  // what follows is another record
      continue;
    }
    if (isField(op.kind) && !level.fields[op.detail].tags.empty()) {
      start.push_back({offset, level.fields[op.detail].tags});
    }
    const Extent extent = opExtent(level, i);
    if (!extent.exact) return false;
    offset += extent.bytes;
  }
  return true;
}

Start tagsOf(const LevelPlan &level, size_t from, size_t to) {
  size_t offset = 0;
  Start start;
  collect(level, from, to, offset, start);
  return start;
}

bool mayBeMissing(const LevelPlan &level, const Op &op) {
  return op.optional || (op.kind == Kind::Loop && level.loops[op.detail].least == 0);
}

void append(std::vector<Start> &all, std::vector<Start> more) {
  for (Start &start : more) all.push_back(std::move(start));
}

}  // namespace

std::string memberNames(const LevelPlan &level, size_t position) {
  std::string names;
  for (size_t child = position + 1; child < nextOf(level, position); child = nextOf(level, child)) {
    names += (names.empty() ? "" : ", ") + std::string(level.ops[child].name);
  }
  return names;
}

Extent extentOf(const LevelPlan &level, size_t from, size_t to) {
  Extent sum{0, true};
  for (size_t i = from; i < to; i = nextOf(level, i)) {
    const Extent one = opExtent(level, i);
    sum.bytes += one.bytes;
    sum.exact = sum.exact && one.exact;
  }
  return sum;
}

std::vector<Start> startsOf(const LevelPlan &level, size_t position) {
  const Op &op = level.ops[position];
  if (op.kind == Kind::Loop) {
    const LevelPlan &body = *level.loops[op.detail].body;
    return startsAt(body, 0, body.ops.size());
  }
  const size_t next = nextOf(level, position);
  if (op.kind == Kind::Choice) {
    std::vector<Start> all;
    for (size_t child = position + 1; child < next; child = nextOf(level, child))
      append(all, startsOf(level, child));
    return all;
  }
  if (op.kind == Kind::Group) return startsAt(level, position + 1, next);
  return {tagsOf(level, op.kind == Kind::Record ? position + 1 : position, next)};
}

std::vector<Start> startsAt(const LevelPlan &level, size_t from, size_t to) {
  std::vector<Start> all;
  for (size_t i = from; i < to; i = nextOf(level, i)) {
    const Op &op = level.ops[i];
    if (isField(op.kind)) {
      all.push_back(tagsOf(level, i, to));
      return all;
    }
    append(all, startsOf(level, i));
    if (!mayBeMissing(level, op)) return all;
  }
  all.emplace_back();
  return all;
}

}  // namespace cvt::fix

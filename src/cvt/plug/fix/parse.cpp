#include "parser.h"

#include <charconv>
#include <cstring>

#include "field.h"
#include "kit/fault.h"

namespace cvt::fix {

using kit::Fault;
using kit::List;
using kit::quoted;

namespace {

// A field that counts or measures, with what it says.
std::string stated(const char *name, std::string_view value) {
  return std::string(name) + " " + std::string(value);
}

}  // namespace

void Parser::run() {
  List values(m_call.values, m_plan.top.slots);
  members(m_plan.top, 0, m_plan.top.ops.size(), values);
  if (m_plan.whole && m_at != m_end) {
    throw Fault(offset(), "the end of the message", found(left()), "Remove what follows, or set nWhole to 0");
  }
  if (m_missing != kSeparatorNone && m_plan.endSlot >= 0) {
    const std::string_view open = kOpenEnd;
    values.put(m_plan.endSlot, m_call.store.copy(open.data(), open.size()), open.size());
  }
  m_call.end = offset();
}

std::string Parser::found(size_t length) const {
  return left() == 0 ? "the end" : quoted(m_at, length < left() ? length : left());
}

inline void Parser::field(const FieldPlan &field, int slot, List &values) {
  m_call.path.field(field.name);
  size_t width = field.length;
  if (field.chars || width > left()) width = fieldWidth(field, m_at, left(), offset());
  const std::string_view value = readField(field, m_at, width, offset(), m_call.store);
  values.put(slot, value.data(), value.size());
  m_at += width;
}

// As many fields as are plain.
inline size_t Parser::plainRun(const PlainRun &run, List &values) {
  if (left() < run.width) return 0;
  const size_t done = readPlain(run, m_at, values, m_call.store);
  const bool all = done == run.fields.size();
  m_at += all ? run.width : widthOf(run, done);
  if (done != 0) m_call.path.field(run.fields[done - 1].name);
  return done;
}

// --- Recognising
// ------------------------------------------------------------------------------------------------

inline bool Parser::isThere(const LevelPlan &level, const Op &op, const List &values) const {
  if (op.condition < 0) return starts(op.starts);
  const Condition &condition = level.conditions[static_cast<size_t>(op.condition)];
  return holds(condition, decidingValue(condition, values, m_around));
}

inline bool Parser::starts(const std::vector<Start> &starts) const {
  for (const Start &start : starts) {
    if (startsWith(start)) return true;
  }
  return false;
}

inline bool Parser::startsWith(const Start &start) const {
  for (const Tag &tag : start) {
    if (!has(tag)) return false;
  }
  return true;
}

inline bool Parser::has(const Tag &tag) const {
  for (const FieldBytes &value : tag.values) {
    if (tag.offset + value.size() <= left() && standsAt(m_at + tag.offset, value)) return true;
  }
  return false;
}

// --- Walking
// ------------------------------------------------------------------------------------------------------

void Parser::members(const LevelPlan &level, size_t from, size_t to, List &values) {
  for (size_t i = from; i < to;) {
    const Op &op = level.ops[i];
    const size_t done = op.run < 0 ? 0 : plainRun(level.runs[static_cast<size_t>(op.run)], values);
    if (done != 0) {
      i += done;
      continue;
    }
    if (op.kind == Kind::Field) {
      field(level.fields[op.detail], op.slot, values);
    } else if (op.kind == Kind::Special) {
      special(level, op, values);
    } else if (op.kind != Kind::End && (!op.optional || isThere(level, op, values))) {
      m_call.path.enter(op.name);
      node(level, i, values);
      m_call.path.leave();
    }
    i = static_cast<size_t>(op.next);
  }
}

void Parser::node(const LevelPlan &level, size_t i, List &values) {
  const Op &op = level.ops[i];
  switch (op.kind) {
    case Kind::Group:
      members(level, i + 1, static_cast<size_t>(op.next), values);
      break;
    case Kind::Choice:
      choice(level, i, values);
      break;
    case Kind::Record:
      record(level, i, values);
      break;
    case Kind::Loop:
      loop(level.loops[op.detail], op.slot, values);
      break;
    case Kind::Field:
    case Kind::Special:
    case Kind::End:
      break;
  }
}

void Parser::special(const LevelPlan &level, const Op &op, List &values) {
  const FieldPlan &field = level.fields[op.detail];
  const bool measured = field.lengthBy == Length::Field;
  if (field.optional && m_at == m_end && !(measured && values.given(field.lengthSlot))) return;
  m_call.path.field(field.name);
  const bool fixed = field.lengthBy == Length::Fixed;
  const size_t width = fixed ? fieldWidth(field, m_at, left(), offset())
                             : variableWidth(field, level.fields[field.lengthField], values);
  const std::string_view value = fixed ? readField(field, m_at, width, offset(), m_call.store)
                                       : readVariable(field, {m_at, width}, offset(), m_call.store);
  if (field.position) checkPosition(value);
  values.put(op.slot, value.data(), value.size());
  m_at += width + (field.lengthBy == Length::Mark ? 1 : 0);
  const bool ofRecord = field.lengthOf == LengthOf::RecordRest || field.lengthOf == LengthOf::RecordAll;
  if (ofRecord) recordLength(field, value);
}

// length: the field that says the length, if one does.
size_t Parser::variableWidth(const FieldPlan &field, const FieldPlan &length, const List &values) const {
  if (field.lengthBy == Length::Mark) return markedWidth(field);
  const bool rest = field.lengthBy == Length::Rest;
  const std::string_view text = rest ? std::string_view() : values.get(field.lengthSlot);
  const size_t width = rest           ? left()
                       : text.empty() ? 0
                                      : statedNumber("a length in bytes", length.name, text);
  const char *const advice =
      rest ? "Shorten the field, or raise its nLen" : "Correct the length, or raise nLen";
  if (width > field.length) {
    throw Fault(offset(), "at most " + std::to_string(field.length) + " bytes",
                rest ? std::to_string(width) : stated(length.name, text), advice);
  }
  if (width > left()) {
    throw Fault(offset(), std::to_string(width) + " bytes, as " + length.name + " says",
                std::to_string(left()) + " and the end", "Correct " + std::string(length.name));
  }
  return width;
}

size_t Parser::markedWidth(const FieldPlan &field) const {
  const size_t most = left() <= field.length ? left() : field.length + 1;
  const void *mark = std::memchr(m_at, field.mark, most);
  if (mark != nullptr) return static_cast<size_t>(static_cast<const char *>(mark) - m_at);
  throw Fault(offset(), quoted(&field.mark, 1) + " behind at most " + std::to_string(field.length) + " bytes",
              left() == 0 ? found(0) : found(most) + (most == left() ? " and the end" : ""), "");
}

size_t Parser::statedNumber(const char *what, const char *name, std::string_view value) const {
  unsigned long number = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  if (error == std::errc() && end == value.data() + value.size()) return number;
  throw Fault(offset(), what, stated(name, value), "");
}

void Parser::checkPosition(std::string_view value) const {
  char digits[16];
  const auto [end, error] = std::to_chars(digits, digits + sizeof digits, m_call.path.repetition() + 1);
  (void)error;  // an int always fits
  const std::string_view expected(digits, static_cast<size_t>(end - digits));
  if (value.empty() || value == expected) return;
  throw Fault(offset(), std::string(expected) + ", the number of its repetition",
              quoted(value.data(), value.size()), "Number the repetitions from 1");
}

// --- Choices
// ------------------------------------------------------------------------------------------------------

void Parser::choice(const LevelPlan &level, size_t i, List &values) {
  const auto end = static_cast<size_t>(level.ops[i].next);
  for (size_t child = i + 1; child < end; child = static_cast<size_t>(level.ops[child].next)) {
    if (!isThere(level, level.ops[child], values)) continue;
    members(level, child, static_cast<size_t>(level.ops[child].next), values);
    return;
  }
  noChoice(level, i, values);
}

void Parser::noChoice(const LevelPlan &level, size_t i, const List &values) const {
  const int first = level.ops[i + 1].condition;
  if (first < 0) throw Fault(offset(), "one of " + memberNames(level, i), found(20), "");
  const Condition &condition = level.conditions[static_cast<size_t>(first)];
  const std::string_view value = decidingValue(condition, values, m_around);
  throw Fault(offset(), std::string(condition.field.name) + " one of " + decidingValues(level, i),
              quoted(value.data(), value.size()), "Correct it, or add a member without psWhen");
}

// --- Loops
// ------------------------------------------------------------------------------------------------------

void Parser::loop(const LoopPlan &plan, int slot, List &values) {
  const bool counted = plan.until == kNotGiven;
  const size_t count = !counted ? 0 : plan.fixed != 0 ? plan.fixed : countOf(plan, values);
  size_t done = 0;
  const Enclosing here{values, m_around};
  m_around = &here;
  while (counted ? done < count : plan.until == kUntilEnd ? m_at < m_end : starts(plan.starts)) {
    m_call.path.repetition(static_cast<int>(done));
    m_call.end = offset();
    if (plan.most != 0 && done == plan.most) tooMany(plan, "another one");
    List repetition = values.append(slot, plan.body->slots);
    members(*plan.body, 0, plan.body->ops.size(), repetition);
    ++done;
  }
  m_around = here.outer;
  m_call.path.repetition(-1);
  if (done < plan.least) {
    throw Fault(offset(), "at least " + std::to_string(plan.least) + " repetitions",
                std::to_string(done) + " and " + found(20), "");
  }
  if (plan.room != 0) skipRoom(plan, done);
}

void Parser::tooMany(const LoopPlan &plan, const std::string &what) const {
  throw Fault(offset(), "at most " + std::to_string(plan.most) + " repetitions", what, "");
}

size_t Parser::countOf(const LoopPlan &plan, const List &values) const {
  const std::string_view text = values.get(plan.countSlot);
  const size_t count = text.empty() ? 0 : statedNumber("a count of repetitions", plan.countName, text);
  if (plan.most != 0 && count > plan.most) tooMany(plan, stated(plan.countName, text));
  const size_t open = m_plan.lastOptional ? kSeparatorCrLf : 0;  // the last separator may be missing
  if (plan.size != 0 && count > (left() + open) / plan.size) {
    throw Fault(offset(),
                std::to_string(count) + " repetitions of at least " + std::to_string(plan.size) + " bytes",
                std::to_string(left()) + " bytes", "Correct " + std::string(plan.countName));
  }
  return count;
}

void Parser::skipRoom(const LoopPlan &plan, size_t done) {
  const size_t unused = (plan.room - done) * plan.size;
  if (left() < unused) {
    throw Fault(offset(), std::to_string(unused) + " bytes of unused room", found(left()), "");
  }
  skipPads(unused, plan.pad, "unused room", "Correct psPad of the loop, or set nLenient to 1");
}

// Bytes that nothing is in. REQUIRES: they are there.
void Parser::skipPads(size_t count, char pad, const char *what, const char *advice) {
  for (size_t i = 0; i < count && !m_plan.lenient; ++i) {
    if (m_at[i] == pad) continue;
    throw Fault(offset(m_at + i), std::string(what) + " filled with " + quoted(&pad, 1),
                quoted(m_at + i, count - i), advice);
  }
  m_at += count;
}

void parse(const Plan &plan, kit::ParseCall &call) {
  Parser(plan, call).run();
}

}  // namespace cvt::fix

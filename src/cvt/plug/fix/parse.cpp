#include <charconv>
#include <cstring>

#include "field.h"
#include "kit/fault.h"
#include "walk.h"

namespace cvt::fix {

using kit::Fault;
using kit::List;
using kit::quoted;

namespace {

const char *separatorName(Separator separator) {
  return separator == kSeparatorLf ? "a line feed" : "a carriage return and a line feed";
}

class Parser {
 public:
  Parser(const Plan &plan, kit::ParseCall &call)
      : m_plan(plan),
        m_call(call),
        m_origin(call.buffer),
        m_at(call.buffer + call.from),
        m_end(call.buffer + call.length) {}

  void run() {
    List values(m_call.values, m_plan.top.slots);
    members(m_plan.top, 0, m_plan.top.ops.size(), values);
    if (m_plan.whole && m_at != m_end) {
      throw Fault(offset(), "the end of the message", found(left()),
                  "Remove what follows, or set nWhole to 0");
    }
    if (m_openEnd && m_plan.endSlot >= 0) {
      const std::string_view open = kOpenEnd;
      values.put(m_plan.endSlot, m_call.store.copy(open.data(), open.size()), open.size());
    }
    m_call.end = offset();
  }

 private:
  size_t offset(const char *at) const { return m_base + static_cast<size_t>(at - m_origin); }
  size_t offset() const { return offset(m_at); }
  size_t left() const { return static_cast<size_t>(m_end - m_at); }

  std::string found(size_t length) const {
    return left() == 0 ? "the end" : quoted(m_at, length < left() ? length : left());
  }

  void members(const LevelPlan &level, size_t from, size_t to, List &values) {
    for (size_t i = from; i < to;) {
      const Op &op = level.ops[i];
      if (op.kind == Kind::Field) {
        field(level.fields[op.detail], op.slot, values);
      } else if (op.kind != Kind::End && (!op.optional || starts(op.starts))) {
        m_call.path.enter(op.name);
        node(level, i, values);
        m_call.path.leave();
      }
      i = static_cast<size_t>(op.next);
    }
  }

  void node(const LevelPlan &level, size_t i, List &values) {
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
      case Kind::End:
        break;
    }
  }

  void field(const FieldPlan &field, int slot, List &values) {
    m_call.path.field(field.name);
    size_t width = field.length;
    if (field.chars || width > left()) width = fieldWidth(field, m_at, left(), offset());
    const std::string_view value = readField(field, m_at, width, offset(), m_call.store);
    values.put(slot, value.data(), value.size());
    m_at += width;
  }

  // --- Recognising
  // ----------------------------------------------------------------------------------------------

  bool starts(const std::vector<Start> &starts) const {
    for (const Start &start : starts) {
      if (startsWith(start)) return true;
    }
    return false;
  }

  bool startsWith(const Start &start) const {
    for (const Tag &tag : start) {
      if (!has(tag)) return false;
    }
    return true;
  }

  bool has(const Tag &tag) const {
    for (const std::string &value : tag.values) {
      if (tag.offset + value.size() <= left() &&
          std::memcmp(m_at + tag.offset, value.data(), value.size()) == 0) {
        return true;
      }
    }
    return false;
  }

  void choice(const LevelPlan &level, size_t i, List &values) {
    const auto end = static_cast<size_t>(level.ops[i].next);
    for (size_t child = i + 1; child < end; child = static_cast<size_t>(level.ops[child].next)) {
      if (!starts(level.ops[child].starts)) continue;
      members(level, child, static_cast<size_t>(level.ops[child].next), values);
      return;
    }
    throw Fault(offset(), "one of " + memberNames(level, i), found(20), "");
  }

  // --- Records
  // --------------------------------------------------------------------------------------------------

  void record(const LevelPlan &level, size_t i, List &values) {
    const RecordPlan &plan = level.records[level.ops[i].detail];
    const char *start = m_at;
    if (plan.length != 0 && plan.separator == kSeparatorNone && left() < plan.length) {
      throw Fault(offset(), "a record of " + std::to_string(plan.length) + " bytes", found(left()), "");
    }
    if (plan.length != 0 && plan.separator != kSeparatorNone && !checkLength(plan)) {
      lenientRecord(level, i, values);
      return;
    }
    members(level, i + 1, static_cast<size_t>(level.ops[i].next), values);
    if (m_plan.lenient && plan.length == 0) {
      while (m_at > start && left() > 0 && *m_at == plan.blank) ++m_at;
    }
    separator(plan.separator);
  }

  // Length of the line that starts here: up to its separator, or the end.
  size_t lineLength(Separator kind) const {
    const char *lf = static_cast<const char *>(std::memchr(m_at, '\n', left()));
    while (lf != nullptr && kind == kSeparatorCrLf && (lf == m_at || lf[-1] != '\r')) {
      lf = static_cast<const char *>(std::memchr(lf + 1, '\n', static_cast<size_t>(m_end - lf - 1)));
    }
    if (lf == nullptr) return left();
    return static_cast<size_t>(lf - m_at) - (kind == kSeparatorCrLf ? 1 : 0);
  }

  // Whether the record has its length. If not: false for a lenient message, a fault for a strict one.
  bool checkLength(const RecordPlan &plan) const {
    const size_t wanted = plan.length;
    if (plan.plain) {
      const size_t length = lineLength(plan.separator);
      if (length == wanted) return true;
      if (m_plan.lenient && left() > 0) return false;
      badLength(plan, length);
    }
    if (left() < wanted) badLength(plan, left());
    return true;
  }

  [[noreturn]] void badLength(const RecordPlan &plan, size_t length) const {
    const char *const what = length == left() ? " bytes and the end" : " bytes";
    throw Fault(offset(),
                "a record of " + std::to_string(plan.length) + " bytes and " + separatorName(plan.separator),
                left() == 0 ? "the end" : std::to_string(length) + what,
                left() == 0 ? "" : "Correct the record, or set nLenient to 1");
  }

  // A short record is read with blanks behind it; of a long one, blanks are cut.
  void lenientRecord(const LevelPlan &level, size_t i, List &values) {
    const RecordPlan &plan = level.records[level.ops[i].detail];
    const size_t length = lineLength(plan.separator);
    const char *const line = m_at;
    for (size_t k = plan.length; k < length; ++k) {
      if (line[k] != plan.blank) {
        throw Fault(offset(line + k),
                    "blanks behind the " + std::to_string(plan.length) + " bytes of the record",
                    quoted(line + k, length - k), "");
      }
    }
    const Parser outer = *this;
    if (length < plan.length) {
      char *copy = m_call.store.take(plan.length);
      std::memcpy(copy, line, length);
      std::memset(copy + length, plan.blank, plan.length - length);
      m_base = offset(line);
      m_origin = m_at = copy;
      m_end = copy + plan.length;
    }
    members(level, i + 1, static_cast<size_t>(level.ops[i].next), values);
    m_base = outer.m_base;
    m_origin = outer.m_origin;
    m_end = outer.m_end;
    m_at = line + length;
    separator(plan.separator);
  }

  void separator(Separator kind) {
    const auto length = static_cast<size_t>(kind);
    if (length == 0) return;
    const char *const expected = kind == kSeparatorLf ? "\n" : "\r\n";
    if (left() >= length && std::memcmp(m_at, expected, length) == 0) {
      m_at += length;
      return;
    }
    m_call.path.field(nullptr);
    if (left() == 0 && m_plan.lastOptional) {
      m_openEnd = true;
      return;
    }
    throw Fault(offset(), separatorName(kind), found(20),
                left() == 0 ? "End the last record, or set psLastSeparator to optional" : "");
  }

  // --- Loops
  // ------------------------------------------------------------------------------------------------------

  void loop(const LoopPlan &plan, int slot, List &values) {
    const bool counted = plan.until == kNotGiven;
    const size_t count = !counted ? 0 : plan.fixed != 0 ? plan.fixed : countOf(plan, values);
    size_t done = 0;
    while (counted ? done < count : plan.until == kUntilEnd ? m_at < m_end : starts(plan.starts)) {
      m_call.path.repetition(static_cast<int>(done));
      m_call.end = offset();
      if (plan.most != 0 && done == plan.most) tooMany(plan, "another one");
      List repetition = values.append(slot, plan.body->slots);
      members(*plan.body, 0, plan.body->ops.size(), repetition);
      ++done;
    }
    m_call.path.repetition(-1);
    if (done < plan.least) {
      throw Fault(offset(), "at least " + std::to_string(plan.least) + " repetitions",
                  std::to_string(done) + " and " + found(20), "");
    }
    if (plan.room != 0) skipRoom(plan, done);
  }

  [[noreturn]] void tooMany(const LoopPlan &plan, const std::string &what) const {
    throw Fault(offset(), "at most " + std::to_string(plan.most) + " repetitions", what, "");
  }

  size_t countOf(const LoopPlan &plan, const List &values) const {
    const std::string_view text = values.get(plan.countSlot);
    unsigned long count = 0;
    if (text.empty()) return count;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    const std::string shown = std::string(plan.countName) + " " + std::string(text);
    if (error != std::errc() || end != text.data() + text.size()) {
      throw Fault(offset(), "a count of repetitions", shown, "");
    }
    if (plan.most != 0 && count > plan.most) tooMany(plan, shown);
    if (plan.size != 0 && count > left() / plan.size) {
      throw Fault(offset(),
                  std::to_string(count) + " repetitions of at least " + std::to_string(plan.size) + " bytes",
                  std::to_string(left()) + " bytes", "Correct " + std::string(plan.countName));
    }
    return count;
  }

  void skipRoom(const LoopPlan &plan, size_t done) {
    const size_t unused = (plan.room - done) * plan.size;
    if (left() < unused) {
      throw Fault(offset(), std::to_string(unused) + " bytes of unused room", found(left()), "");
    }
    for (size_t i = 0; i < unused && !m_plan.lenient; ++i) {
      if (m_at[i] == plan.pad) continue;
      throw Fault(offset(m_at + i), "unused room filled with " + quoted(&plan.pad, 1),
                  quoted(m_at + i, unused - i), "Correct psPad of the loop, or set nLenient to 1");
    }
    m_at += unused;
  }

  const Plan &m_plan;
  kit::ParseCall &m_call;
  size_t m_base = 0;     // offset of m_origin in the message's buffer
  const char *m_origin;  // the buffer, or the padded copy of a record
  const char *m_at;
  const char *m_end;
  bool m_openEnd = false;
};

}  // namespace

void parse(const Plan &plan, kit::ParseCall &call) {
  Parser(plan, call).run();
}

}  // namespace cvt::fix

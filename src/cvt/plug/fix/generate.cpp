#include <charconv>
#include <memory>
#include <new>

#include "condition.h"
#include "field.h"
#include "kit/fault.h"
#include "walk.h"

namespace cvt::fix {

using kit::Fault;
using kit::List;

namespace {

class Generator {
 public:
  Generator(const Plan &plan, kit::GenerateCall &call) : m_plan(plan), m_call(call), m_out(call.out) {}

  void run() {
    if (m_plan.lengths != 0) m_lengthsAt = lengthTable();
    const List values(m_call.values, m_plan.top.slots);
    members(m_plan.top, 0, m_plan.top.ops.size(), values);
    if (!openEnd(values)) endRecord();
  }

 private:
  bool openEnd(const List &values) {
    if (m_plan.endSlot < 0) return false;
    const std::string_view end = values.get(m_plan.endSlot);
    if (end.empty() || end == kOpenEnd) return !end.empty();
    m_call.path.field(m_plan.top.ops.back().name);
    throw Fault(m_out.offset(), std::string(kOpenEnd) + " or nothing", kit::quoted(end.data(), end.size()),
                "");
  }

  void members(const LevelPlan &level, size_t from, size_t to, const List &values) {
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
        special(level, i, values);
      } else if (op.kind != Kind::End && (!op.optional || isThere(level, i, values))) {
        m_call.path.enter(op.name);
        node(level, i, values);
        m_call.path.leave();
      }
      i = static_cast<size_t>(op.next);
    }
  }

  void node(const LevelPlan &level, size_t i, const List &values) {
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

  // As many fields as are plain.
  size_t plainRun(const PlainRun &run, const List &values) {
    endRecord();
    if (m_out.room() < run.width) return 0;
    const auto tell = [this](const char *name) { m_call.path.field(name); };
    const size_t done = writePlain(run, m_out.at(m_out.offset()), values, tell);
    m_out.reserve(done == run.fields.size() ? run.width : widthOf(run, done));
    return done;
  }

  void field(const FieldPlan &field, int slot, const List &values) {
    m_call.path.field(field.name);
    endRecord();
    if (!field.counts.empty()) return count(field, values);
    writeField(field, values.get(slot), m_out);
  }

  // A count field is written from the repetitions that there are, whatever its value says.
  void count(const FieldPlan &field, const List &values) {
    const int repetitions = values.repetitions(field.counts[0]);
    for (const int slot : field.counts) {
      const int other = values.repetitions(slot);
      if (other == repetitions) continue;
      throw Fault(m_out.offset(), "loops of one length behind one count field",
                  std::to_string(repetitions) + " and " + std::to_string(other) + " repetitions", "");
    }
    writeKnown(field, static_cast<size_t>(repetitions), m_out);
  }

  // A count, a position or a length.
  static void writeKnown(const FieldPlan &field, size_t number, kit::Output &out) {
    char digits[24];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, number);
    (void)error;  // it always fits
    writeField(field, {digits, static_cast<size_t>(end - digits)}, out);
  }

  // Whether anything of the node has a value.
  static bool present(const LevelPlan &level, size_t i, const List &values) {
    for (size_t k = i; k < static_cast<size_t>(level.ops[i].next); ++k) {
      const Op &op = level.ops[k];
      if (hasValue(op.kind) && (!values.empty(op.slot) || isBlankTag(level, op, values))) return true;
    }
    return false;
  }

  // Whether a tag that may be blank was given, as reading its record does.
  static bool isBlankTag(const LevelPlan &level, const Op &op, const List &values) {
    return isField(op.kind) && values.given(op.slot) && level.fields[op.detail].blankTag;
  }

  bool isThere(const LevelPlan &level, size_t i, const List &values) {
    if (level.ops[i].condition < 0) return present(level, i, values);
    const Condition &condition = conditionOf(level, i);
    const std::string_view value = decidingValue(condition, values, m_around);
    const bool there = holdsWritten(condition, value);
    if (!there && present(level, i, values)) unexpected(level, i, condition, value);
    return there;
  }

  static const Condition &conditionOf(const LevelPlan &level, size_t i) {
    return level.conditions[static_cast<size_t>(level.ops[i].condition)];
  }

  [[noreturn]] void unexpected(const LevelPlan &level, size_t i, const Condition &condition,
                               std::string_view value) {
    m_call.path.enter(level.ops[i].name);
    throw Fault(
        m_out.offset(), std::string("no values in ") + level.ops[i].name,
        std::string("some, and ") + condition.field.name + " " + kit::quoted(value.data(), value.size()),
        "Correct " + std::string(condition.field.name));
  }

  // The member that an earlier value tells. The others must be empty, or their values would be lost.
  void decided(const LevelPlan &level, size_t i, const List &values) {
    const auto end = static_cast<size_t>(level.ops[i].next);
    const std::string_view value = decidingValue(conditionOf(level, i + 1), values, m_around);
    size_t chosen = end;
    for (size_t child = i + 1; child < end; child = static_cast<size_t>(level.ops[child].next)) {
      if (chosen == end && holdsWritten(conditionOf(level, child), value)) {
        chosen = child;
      } else if (present(level, child, values)) {
        unexpected(level, child, conditionOf(level, child), value);
      }
    }
    if (chosen == end) {
      throw Fault(m_out.offset(),
                  std::string(conditionOf(level, i + 1).field.name) + " one of " + decidingValues(level, i),
                  kit::quoted(value.data(), value.size()), "Correct it, or add a member without psWhen");
    }
    members(level, chosen, static_cast<size_t>(level.ops[chosen].next), values);
  }

  void choice(const LevelPlan &level, size_t i, const List &values) {
    if (level.ops[i + 1].condition >= 0) return decided(level, i, values);
    const auto end = static_cast<size_t>(level.ops[i].next);
    size_t chosen = end;
    for (size_t child = i + 1; child < end; child = static_cast<size_t>(level.ops[child].next)) {
      if (!present(level, child, values)) continue;
      if (chosen != end) {
        throw Fault(m_out.offset(), "values in one alternative only",
                    "them in " + std::string(level.ops[chosen].name) + " and " + level.ops[child].name, "");
      }
      chosen = child;
    }
    if (chosen == end) throw Fault(m_out.offset(), "values in one of " + memberNames(level, i), "none", "");
    members(level, chosen, static_cast<size_t>(level.ops[chosen].next), values);
  }

  void record(const LevelPlan &level, size_t i, const List &values) {
    endRecord();
    const size_t start = m_out.offset();
    members(level, i + 1, static_cast<size_t>(level.ops[i].next), values);
    const RecordPlan &plan = level.records[level.ops[i].detail];
    if (plan.end == End::Filled) fill(plan, start);
    if (plan.hasLength) recordLength(level.fields[plan.lengthField], start);
    m_pending = plan.separator;
  }

  void fill(const RecordPlan &plan, size_t start) {
    const size_t used = m_out.offset() - start;
    if (used > plan.length) {
      throw Fault(start, "a record of at most " + std::to_string(plan.length) + " bytes",
                  std::to_string(used), "");
    }
    m_out.fill(plan.pad, plan.length - used);
  }

  // --- Lengths: written when what they measure has been
  // -------------------------------------------------------------------------------

  // Pool memory has no alignment of its own.
  size_t *lengthTable() {
    const size_t size = m_plan.lengths * sizeof(size_t);
    size_t room = size + alignof(size_t);
    void *table = cvtMalloc(static_cast<int>(room), m_call.memory);
    if (table == nullptr) throw std::bad_alloc();
    return static_cast<size_t *>(std::align(alignof(size_t), size, table, room));
  }

  void special(const LevelPlan &level, size_t i, const List &values) {
    const Op &op = level.ops[i];
    const FieldPlan &plan = level.fields[op.detail];
    if (plan.optional && !anyGiven(level, static_cast<int>(i), values)) return;
    m_call.path.field(plan.name);
    endRecord();
    if (plan.position) return position(plan, op.slot, values);
    const size_t start = m_out.offset();
    if (plan.lengthOf != LengthOf::Nothing) {
      m_lengthsAt[plan.lengthNumber] = start;
      return writeField(plan, "0", m_out);
    }
    if (plan.lengthBy == Length::Fixed) return writeField(plan, values.get(op.slot), m_out);
    writeVariable(plan, values.get(op.slot), m_out);
    if (plan.lengthBy == Length::Field) {
      writeLength(level.fields[plan.lengthField], m_out.offset() - start);
    }
  }

  // The number of the repetition, whatever the value says; a blank that was read comes back.
  void position(const FieldPlan &plan, int slot, const List &values) {
    if (plan.blankAllowed && values.given(slot) && values.empty(slot)) return writeField(plan, {}, m_out);
    writeKnown(plan, static_cast<size_t>(m_call.path.repetition()) + 1, m_out);
  }

  // Whether an optional field, or one behind it in the record, was given a value, be it an empty one.
  static bool anyGiven(const LevelPlan &level, int i, const List &values) {
    while (i >= 0) {
      const Op &op = level.ops[static_cast<size_t>(i)];
      if (values.given(op.slot)) return true;
      i = level.fields[op.detail].optionalBehind;
    }
    return false;
  }

  void recordLength(const FieldPlan &plan, size_t start) {
    const size_t behind = m_lengthsAt[plan.lengthNumber] + plan.length;
    writeLength(plan, m_out.offset() - (plan.lengthOf == LengthOf::RecordAll ? start : behind));
  }

  void writeLength(const FieldPlan &plan, size_t length) {
    const size_t at = m_lengthsAt[plan.lengthNumber];
    kit::Output there(m_out.at(0), at, at + plan.length);
    m_call.path.field(plan.name);
    writeKnown(plan, length, there);
  }

  // The separator of the last record is written when something follows: only the end may do without.
  void endRecord() {
    if (m_pending == kSeparatorNone) return;
    m_out.put(m_pending == kSeparatorLf ? std::string_view("\n") : std::string_view("\r\n"));
    m_pending = kSeparatorNone;
  }

  void loop(const LoopPlan &plan, int slot, const List &values) {
    const int repetitions = values.repetitions(slot);
    checkNumber(plan, static_cast<size_t>(repetitions));
    const Enclosing here{values, m_around};
    m_around = &here;
    for (int k = 0; k < repetitions; ++k) {
      m_call.path.repetition(k);
      const List repetition = values.repetition(slot, k, plan.body->slots);
      members(*plan.body, 0, plan.body->ops.size(), repetition);
    }
    m_around = here.outer;
    if (plan.room <= static_cast<size_t>(repetitions)) return;
    m_call.path.repetition(-1);
    endRecord();
    m_out.fill(plan.pad, (plan.room - static_cast<size_t>(repetitions)) * plan.size);
  }

  void checkNumber(const LoopPlan &plan, size_t repetitions) const {
    if (repetitions >= plan.least && (plan.most == 0 || repetitions <= plan.most)) return;
    const bool few = repetitions < plan.least;
    throw Fault(m_out.offset(),
                std::string(few ? "at least " : "at most ") + std::to_string(few ? plan.least : plan.most) +
                    " repetitions",
                std::to_string(repetitions), "");
  }

  const Plan &m_plan;
  kit::GenerateCall &m_call;
  kit::Output &m_out;
  Separator m_pending = kSeparatorNone;
  size_t *m_lengthsAt = nullptr;  // where each length stands, by its number
  const Enclosing *m_around = nullptr;
};

}  // namespace

void generate(const Plan &plan, kit::GenerateCall &call) {
  Generator(plan, call).run();
}

}  // namespace cvt::fix

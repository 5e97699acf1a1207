#include <charconv>

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
      if (op.kind == Kind::Field) {
        field(level.fields[op.detail], op.slot, values);
      } else if (op.kind != Kind::End && (!op.optional || present(level, i, values))) {
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
      case Kind::End:
        break;
    }
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
    char digits[16];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, repetitions);
    (void)error;  // an int always fits
    writeField(field, {digits, static_cast<size_t>(end - digits)}, m_out);
  }

  // Whether anything of the node has a value.
  static bool present(const LevelPlan &level, size_t i, const List &values) {
    for (size_t k = i; k < static_cast<size_t>(level.ops[i].next); ++k) {
      const Op &op = level.ops[k];
      if ((op.kind == Kind::Field || op.kind == Kind::Loop) && !values.empty(op.slot)) return true;
    }
    return false;
  }

  void choice(const LevelPlan &level, size_t i, const List &values) {
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
    members(level, i + 1, static_cast<size_t>(level.ops[i].next), values);
    m_pending = level.records[level.ops[i].detail].separator;
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
    for (int k = 0; k < repetitions; ++k) {
      m_call.path.repetition(k);
      const List repetition = values.repetition(slot, k, plan.body->slots);
      members(*plan.body, 0, plan.body->ops.size(), repetition);
    }
    if (plan.room == 0) return;
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
};

}  // namespace

void generate(const Plan &plan, kit::GenerateCall &call) {
  Generator(plan, call).run();
}

}  // namespace cvt::fix

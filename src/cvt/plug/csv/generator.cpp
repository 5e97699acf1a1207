#include "generator.h"

#include "kit/log.h"
#include "writer.h"

namespace cvt::csv {

namespace {

using kit::Fault;
using kit::List;

LineEnd lineEndOf(const Plan &plan, const List &values) {
  if (plan.dialect.lineEnd != LineEnd::Any) return plan.dialect.lineEnd;
  const std::string_view told = plan.lineEndSlot < 0 ? std::string_view() : values.get(plan.lineEndSlot);
  if (told.empty() || told == kLineEndWords[static_cast<int>(LineEnd::Lf)]) return LineEnd::Lf;
  if (told == kLineEndWords[static_cast<int>(LineEnd::CrLf)]) return LineEnd::CrLf;
  throw Fault(Fault::kHere, "lf, crlf or nothing in the field of kind line-end",
              kit::quoted(told.data(), told.size()));
}

bool openEndOf(const Plan &plan, const List &values) {
  if (plan.dialect.lastLineEnd == LastLineEnd::None) return true;
  if (plan.endSlot < 0) return false;
  const std::string_view told = values.get(plan.endSlot);
  if (told.empty() || told == kOpenEnd) return !told.empty();
  throw Fault(Fault::kHere, std::string(kOpenEnd) + " or nothing in the field of kind end",
              kit::quoted(told.data(), told.size()));
}

class Generator {
 public:
  Generator(const Plan &plan, kit::GenerateCall &call, const List &values)
      : m_plan(plan),
        m_path(call.path),
        m_write(plan.dialect, lineEndOf(plan, values), openEndOf(plan, values), call.out) {}

  void run(const List &values) {
    item(m_plan.top, values);
    m_write.finish();
  }

 private:
  void item(const Item &item, const List &values);
  void record(const Compound &record, const List &values);
  void loop(const Compound &loop, const List &values);
  void members(const std::vector<Item> &members, const List &values);
  void field(const Field &field, const List &values);
  void choice(const Compound &choice, const List &values);
  void fieldLoop(const Compound &loop, const List &values);
  void checkTimes(const Compound &loop, int times) const;

  const Plan &m_plan;
  kit::Path &m_path;
  Writer m_write;
  kit::Digits m_digits{};  // a count being written
};

// --- What there is to write
// -------------------------------------------------------------------------------------

bool anyGiven(const std::vector<Item> &items, const List &values);

// Whether the message gives the node something to write. Constants and defaults that were not asked for do
// not make an optional record appear.
bool given(const Item &item, const List &values) {
  if (item.kind == ItemKind::Field) return kit::given(item.field, values);
  const Compound &compound = *item.compound;
  if (item.kind == ItemKind::Loop) return values.repetitions(compound.slot) > 0;
  return anyGiven(compound.fields, values) || anyGiven(compound.records, values);
}

bool anyGiven(const std::vector<Item> &items, const List &values) {
  for (const Item &item : items) {
    if (given(item, values)) return true;
  }
  return false;
}

// --- Records
// --------------------------------------------------------------------------------------------------

void Generator::item(const Item &item, const List &values) {
  const Compound &compound = *item.compound;
  if (compound.header) m_write.line(m_plan.headerLine);
  if (compound.node != nullptr) m_path.enter(compound.node);
  if (item.kind == ItemKind::Loop) {
    loop(compound, values);
  } else if (compound.mandatory || given(item, values)) {
    if (item.kind == ItemKind::Record) {
      record(compound, values);
    } else {
      for (const Item &each : compound.records) this->item(each, values);
    }
  }
  if (compound.node != nullptr) m_path.leave();
}

void Generator::record(const Compound &record, const List &values) {
  const std::string_view wraps = record.wrapsSlot < 0 ? std::string_view() : values.get(record.wrapsSlot);
  m_write.begin(record.tag < 0 ? nullptr : &record.tagText, m_plan.quotedTags, record.shortened, wraps);
  members(record.fields, values);
  m_path.field(nullptr);
  m_write.end(record.first);
  for (const Item &each : record.records) item(each, values);
}

void Generator::checkTimes(const Compound &loop, int times) const {
  const auto found = static_cast<size_t>(times);
  if (found >= loop.least && (loop.most == 0 || found <= loop.most)) return;
  const bool few = found < loop.least;
  throw Fault(Fault::kHere,
              std::string(few ? "at least " : "at most ") + std::to_string(few ? loop.least : loop.most) +
                  " repetitions",
              std::to_string(times), "See nMin and nMax of its CsvLoop");
}

void Generator::loop(const Compound &loop, const List &values) {
  const int times = values.repetitions(loop.slot);
  checkTimes(loop, times);
  for (int i = 0; i < times; ++i) {
    m_path.repetition(i);
    const List body = values.repetition(loop.slot, i, loop.bodySlots);
    for (const Item &each : loop.records) item(each, body);
  }
}

// --- Fields
// ---------------------------------------------------------------------------------------------------

void Generator::members(const std::vector<Item> &members, const List &values) {
  for (const Item &each : members) {
    if (each.kind == ItemKind::Field) {
      field(each.field, values);
      continue;
    }
    m_path.enter(each.compound->node);
    if (each.kind == ItemKind::Group) {
      this->members(each.compound->fields, values);
    } else if (each.kind == ItemKind::Choice) {
      choice(*each.compound, values);
    } else {
      fieldLoop(*each.compound, values);
    }
    m_path.leave();
  }
}

// What ends like its pads is read without them: another count or position, nothing where something must be.
void checkPads(const Field &field, std::string_view text) {
  const std::string_view left = withoutPads(field, text);
  const bool same = left.size() == text.size();
  if (same || (left.empty() ? !field.mandatory || field.empty != kit::Empty::Omit : field.simple)) return;
  throw Fault(Fault::kHere, "a value that is the same without the pads behind it",
              kit::quoted(text.data(), text.size()), "Write another psPad");
}

void Generator::field(const Field &field, const List &values) {
  m_path.field(field.node);
  if (field.simple && field.shape == Shape::Variable) {
    const std::string_view value = values.get(field.slot);
    if (!value.empty() && (field.maxLength == 0 || value.size() <= field.maxLength)) {
      return m_write.field(value, {field.quoted, false});
    }
  }
  const std::string_view text = textToWrite(field, values, m_path, m_digits);
  if (field.shape == Shape::Fixed) {
    checkPads(field, text);
    return m_write.fixed(field, text);
  }
  if (field.shape == Shape::Rest) return m_write.rest(field, text);
  const bool kept = text.empty() && isWritten(field, values, text);
  // Where every field is in quotes, one that was not even given is told from an empty one by having none.
  const bool bare = text.empty() && !kept && field.empty == kit::Empty::KeepGiven;
  m_write.field(text, {field.quoted && !bare, kept});
}

void Generator::choice(const Compound &choice, const List &values) {
  const Field &select = choice.select;
  const std::string_view value =
      selecting(select, select.countedLoop >= 0 ? textToWrite(select, values, m_path, m_digits)
                                                : values.get(select.slot));
  const int chosen = chosenMember(choice, value);
  for (size_t i = 0; i < choice.fields.size(); ++i) {
    if (static_cast<int>(i) == chosen || !given(choice.fields[i], values)) continue;
    const Item &other = choice.fields[i];
    throw Fault(Fault::kHere, "values only in what " + std::string(select.node) + " chooses",
                std::string("them in ") +
                    (other.kind == ItemKind::Field ? other.field.node : other.compound->node) + " with " +
                    kit::quoted(value.data(), value.size()),
                "Leave them empty, or correct " + std::string(select.node));
  }
  if (chosen < 0) return;
  if (chosen >= static_cast<int>(choice.fields.size())) {
    throw Fault(Fault::kHere, "a value of " + std::string(select.node) + " that chooses what follows",
                kit::quoted(value.data(), value.size()), "Known: " + knownCases(choice));
  }
  const Item &member = choice.fields[static_cast<size_t>(chosen)];
  if (member.kind == ItemKind::Field) return field(member.field, values);
  m_path.enter(member.compound->node);
  members(member.compound->fields, values);
  m_path.leave();
}

void Generator::fieldLoop(const Compound &loop, const List &values) {
  const int times = values.repetitions(loop.slot);
  checkTimes(loop, times);
  for (int i = 0; i < times; ++i) {
    m_path.repetition(i);
    if (loop.countSlot >= 0) m_write.see();
    members(loop.fields, values.repetition(loop.slot, i, loop.bodySlots));
  }
  m_path.repetition(-1);
}

}  // namespace

void generateText(const Plan &plan, kit::GenerateCall &call) {
  const List values(call.values, plan.slots);
  call.out.put(plan.markBytes);
  Generator(plan, call, values).run(values);
}

}  // namespace cvt::csv

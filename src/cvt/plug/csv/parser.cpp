#include "parser.h"

#include "kit/log.h"
#include "parse_call.h"

namespace cvt::csv {

using kit::Fault;
using kit::List;

// --- Records
// --------------------------------------------------------------------------------------------------

// Whether what stands next may be the beginning of it.
bool Parser::starts(const Compound &compound) {
  if (!m_reader.begin()) return false;
  return compound.startsAny || compound.startOf(m_reader.tag()) != nullptr;
}

// Another record than the expected one stands here, or none.
void Parser::misplaced(const std::string &expected) {
  m_path.field(nullptr);
  if (!m_reader.begin()) throw Fault(m_reader.offset(), expected, "the end");
  if (!m_plan.tagged) m_reader.fault(m_reader.from(), expected, "Remove it, or set nWhole of CsvMsg to 0");
  const std::string_view tag = m_reader.tagText();
  const std::string shown = "a record " + kit::quoted(tag.data(), tag.size());
  if (m_reader.tag() < 0) throw Fault(m_reader.offset(), "one of the records " + m_plan.knownTags, shown);
  throw Fault(m_reader.offset(), expected, shown);
}

void Parser::item(const Item &item, List values) {
  const Compound &compound = *item.compound;
  if (compound.node != nullptr) m_path.enter(compound.node);
  if (item.kind == ItemKind::Loop) {
    loop(compound, values);
  } else if (item.kind == ItemKind::Record) {
    if (compound.header) header();
    if (starts(compound)) {
      record(compound, values);
    } else if (compound.mandatory) {
      misplaced(compound.tag < 0 ? "a record" : "the record " + kit::quoted(compound.tagText.text));
    }
  } else if (item.kind == ItemKind::AnyOrder) {
    anyOrder(compound, values);
  } else if (compound.mandatory || starts(compound)) {
    items(compound.records, values);
  }
  if (compound.node != nullptr) m_path.leave();
}

void Parser::record(const Compound &record, List values) {
  m_call.end = m_reader.offset();
  m_reader.open(record.tag >= 0);
  m_number = 0;
  if (record.wrapsSlot >= 0) m_room.wraps.clear();
  if (record.byColumn) {
    columns(record, values);
  } else {
    members(record.fields, record, values);
  }
  m_path.field(nullptr);
  m_reader.close();
  const std::string &wraps = m_room.wraps;
  if (record.wrapsSlot >= 0 && !wraps.empty()) {
    values.put(record.wrapsSlot, m_call.store.copy(wraps.data(), wraps.size()), wraps.size());
  }
  items(record.records, values);
}

void Parser::anyOrder(const Compound &group, List values) {
  char *const seen = m_call.store.take(group.records.size());
  while (starts(group)) {
    const size_t member = group.startOf(m_reader.tag())->member;
    const Item &each = group.records[member];
    if (each.kind != ItemKind::Loop && seen[member] != 0) {
      misplaced("each record once");
    }
    seen[member] = 1;
    if (each.kind == ItemKind::Loop) {
      m_path.enter(each.compound->node);
      repetition(*each.compound, values, static_cast<size_t>(values.repetitions(each.compound->slot)));
      m_path.leave();
    } else {
      item(each, values);
    }
  }
  for (size_t i = 0; i < group.records.size(); ++i) {
    // What was not seen says itself whether it had to be there.
    if (seen[i] == 0) item(group.records[i], values);
    const Compound &each = *group.records[i].compound;
    if (group.records[i].kind != ItemKind::Loop || seen[i] == 0) continue;
    const auto times = static_cast<size_t>(values.repetitions(each.slot));
    m_path.enter(each.node);
    if (times < each.least) misplaced("at least " + std::to_string(each.least) + " repetitions");
    m_path.leave();
  }
}

void Parser::repetition(const Compound &loop, List values, size_t done) {
  m_path.repetition(static_cast<int>(done));
  m_call.end = m_reader.offset();
  if (loop.most != 0 && done == loop.most) {
    throw Fault(Fault::kHere, "at most " + std::to_string(loop.most) + " repetitions", "one more",
                "Raise nMax of its CsvLoop");
  }
  const List body = values.append(loop.slot, loop.bodySlots);
  items(loop.records, body);
  for (const kit::Count &count : loop.counts) checkCount(count, body, m_call.store, m_path);
}

void Parser::loop(const Compound &loop, List values) {
  if (loop.header) header();
  size_t done = 0;
  for (; starts(loop); ++done) repetition(loop, values, done);
  m_path.repetition(-1);
  if (done < loop.least) misplaced("at least " + std::to_string(loop.least) + " repetitions");
}

// How the text was written, for the fields that say it when it is written again.
void Parser::remember(List values) {
  const auto put = [&](int slot, std::string_view word) {
    values.put(slot, m_call.store.copy(word.data(), word.size()), word.size());
  };
  if (m_plan.endSlot >= 0 && m_reader.openEnd()) put(m_plan.endSlot, kOpenEnd);
  if (m_plan.lineEndSlot >= 0 && m_reader.lineEnd() != LineEnd::Any) {
    put(m_plan.lineEndSlot, kLineEndWords[static_cast<int>(m_reader.lineEnd())]);
  }
}

// --- The text
// ---------------------------------------------------------------------------------------------------

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// What stays from one text to the next, unless one was unusually large.
constexpr size_t kKept = size_t{4} * 1024 * 1024;
std::string f_decoded;
ParseRoom f_room;

struct Release {
  ~Release() {
    for (std::string *room : {&f_decoded, &f_room.wraps}) {
      if (room->capacity() > kKept) std::string().swap(*room);
    }
  }
};

// The place in the buffer of a place in the text that was decoded from it.
size_t rawOffset(const Plan &plan, const kit::ParseCall &call, size_t offset) {
  const std::string_view raw(call.buffer + call.from, call.length - call.from);
  std::string part(offset, '\0');
  return call.from + plan.dialect.charset->decode(raw.data(), raw.size(), part.data(), offset).read;
}

const char *behindMark(const Plan &plan, const char *from, const char *end) {
  const std::string_view text(from, static_cast<size_t>(end - from));
  if (!text.starts_with(kByteOrderMark)) return from;
  const bool twice =
      plan.mark == Mark::Skip && text.substr(kByteOrderMark.size()).starts_with(kByteOrderMark);
  if (twice) throw Fault(Fault::kHere, "one byte order mark", "two", "Remove one");
  if (plan.mark != Mark::Refuse) return from + kByteOrderMark.size();
  throw Fault(Fault::kHere, "no byte order mark", "one", "Set psByteOrderMark of CsvMsg to skip or write");
}

void decode(const Plan &plan, kit::ParseCall &call) {
  const std::string_view raw(call.buffer + call.from, call.length - call.from);
  const size_t need = plan.dialect.charset->decodedRoom(raw.size());
  if (f_decoded.size() < need) f_decoded.resize(need);
  const kit::Converted done =
      plan.dialect.charset->decode(raw.data(), raw.size(), f_decoded.data(), f_decoded.size());
  if (done.damage != kit::Damage::None) {
    const std::string_view bad = raw.substr(done.read, 4);
    throw Fault(call.from + done.read, kit::damageText(done.damage) + (" in " + plan.dialect.charset->name()),
                kit::quoted(bad.data(), bad.size()), "Declare the text's psCharset");
  }
  const char *const text = f_decoded.data();
  const char *const end = text + done.written;
  Parser parser(plan, call, f_room, text, behindMark(plan, text, end), end);
  try {
    parser.run();
  } catch (const Fault &fault) {
    const size_t at = fault.offset() == Fault::kHere ? call.end : fault.offset();
    throw fault.at(rawOffset(plan, call, at));
  }
  call.end = call.length;
}

}  // namespace

void parseText(const Plan &plan, kit::ParseCall &call) {
  const Release release;
  if (!plan.dialect.charset->isUtf8()) return decode(plan, call);
  const char *const from = call.buffer + call.from;
  const char *const end = call.buffer + call.length;
  Parser(plan, call, f_room, call.buffer, behindMark(plan, from, end), end).run();
}

}  // namespace cvt::csv

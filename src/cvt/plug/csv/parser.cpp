#include "parser.h"

#include <charconv>

#include "kit/log.h"
#include "reader.h"

namespace cvt::csv {

namespace {

using kit::Fault;
using kit::List;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// What stays from one text to the next, unless one was unusually large.
constexpr size_t kKept = size_t{4} * 1024 * 1024;
std::string f_decoded;
std::string f_wraps;
std::vector<int> f_order;  // of the columns: positions in Plan::columns, -1 for one to be passed over

struct Release {
  ~Release() {
    for (std::string *room : {&f_decoded, &f_wraps}) {
      if (room->capacity() > kKept) std::string().swap(*room);
    }
  }
};

class Parser {
 public:
  Parser(const Plan &plan, kit::ParseCall &call, const char *origin, const char *from, const char *end)
      : m_plan(plan), m_call(call), m_path(call.path), m_reader(plan.dialect, origin, from, end) {}

  void run() {
    List values(m_call.values, m_plan.slots);
    item(m_plan.top, values);
    m_path.field(nullptr);
    if (m_plan.whole && m_reader.begin()) misplaced("the end of the message");
    for (const kit::Count &count : m_plan.counts) checkCount(count, values, m_call.store, m_path);
    remember(values);
    m_call.end = m_reader.done();
  }

  size_t here() const { return m_reader.here(); }

 private:
  // Records.
  void items(const std::vector<Item> &items, List values) {
    for (const Item &each : items) item(each, values);
  }
  void item(const Item &item, List values);
  void record(const Compound &record, List values);
  void anyOrder(const Compound &group, List values);
  void loop(const Compound &loop, List values);
  void repetition(const Compound &loop, List values, size_t done);
  bool starts(const Compound &compound);
  [[noreturn]] void misplaced(const std::string &expected);
  void remember(List values);

  // Fields.
  void members(const std::vector<Item> &members, const Compound &record, List values);
  void field(const Field &field, const Compound &record, List values);
  void absent(const Field &field, const Compound &record);
  void put(const Field &field, const Token &token, List values);
  void putUnescaped(const Field &field, const Token &token, List values);
  void choice(const Compound &choice, const Compound &record, List values);
  void fieldLoop(const Compound &loop, const Compound &record, List values);
  size_t countOf(const Compound &loop, List values);
  void checkUtf8(const Token &token) const;
  void noteWrap() {
    if (!m_reader.continued()) return;
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, m_number + 1).ptr;
    if (!f_wraps.empty()) f_wraps += ' ';
    f_wraps.append(digits, end);
  }

  // A header line.
  void header();
  void columnName(size_t position);
  void columns(const Compound &record, List values);

  const Plan &m_plan;
  kit::ParseCall &m_call;
  kit::Path &m_path;
  Reader m_reader;
  size_t m_number = 0;  // of the field in its record, from 1
};

// --- Records
// --------------------------------------------------------------------------------------------------

// Whether what stands next may be the beginning of it.
bool Parser::starts(const Compound &compound) {
  if (!m_reader.begin()) return false;
  if (compound.startsAny) return true;
  const int tag = m_reader.tag();
  return tag >= 0 && compound.starts[static_cast<size_t>(tag)];
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
  m_reader.open();
  m_number = 0;
  if (record.wrapsSlot >= 0) f_wraps.clear();
  if (record.byColumn) {
    columns(record, values);
  } else {
    members(record.fields, record, values);
  }
  m_path.field(nullptr);
  m_reader.close();
  if (record.wrapsSlot >= 0 && !f_wraps.empty()) {
    values.put(record.wrapsSlot, m_call.store.copy(f_wraps.data(), f_wraps.size()), f_wraps.size());
  }
  items(record.records, values);
}

void Parser::anyOrder(const Compound &group, List values) {
  char *const seen = m_call.store.take(group.records.size());
  while (starts(group)) {
    const auto member = static_cast<size_t>(group.memberOfTag[static_cast<size_t>(m_reader.tag())]);
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

// --- Fields
// ---------------------------------------------------------------------------------------------------

void Parser::members(const std::vector<Item> &members, const Compound &record, List values) {
  for (const Item &each : members) {
    if (each.kind == ItemKind::Field) {
      field(each.field, record, values);
      continue;
    }
    m_path.enter(each.compound->node);
    if (each.kind == ItemKind::Group) {
      this->members(each.compound->fields, record, values);
    } else if (each.kind == ItemKind::Choice) {
      choice(*each.compound, record, values);
    } else {
      fieldLoop(*each.compound, record, values);
    }
    m_path.leave();
  }
}

void Parser::absent(const Field &field, const Compound &record) {
  if (!record.shortened) {
    throw Fault(m_reader.stop(), "another field in the record", "its end",
                "Write it, be it empty, or set nShort");
  }
  m_call.end = m_reader.stop();
  if (field.mandatory || field.constant != nullptr) checkRead(field, {});
}

void Parser::field(const Field &field, const Compound &record, List values) {
  m_path.field(field.node);
  if (!m_reader.more()) return absent(field, record);
  if (record.wrapsSlot >= 0) noteWrap();
  ++m_number;
  if (field.shape == Shape::Variable) {
    put(field, m_reader.next(), values);
  } else if (field.shape == Shape::Rest) {
    put(field, m_reader.rest(), values);
  } else {
    Token token = m_reader.fixed(field.length);
    while (field.padded && !token.bytes.empty() && token.bytes.back() == field.pad)
      token.bytes.remove_suffix(1);
    put(field, token, values);
  }
}

void Parser::put(const Field &field, const Token &token, List values) {
  m_call.end = m_reader.offset();
  if (m_reader.high()) checkUtf8(token);
  if (token.escaped) return putUnescaped(field, token, values);
  const std::string_view bytes = token.bytes;
  if (field.constant != nullptr || (bytes.empty() ? field.mandatory : field.maxLength != 0)) {
    checkRead(field, bytes);
  }
  // Nothing at all is an empty value that was given only where it could not have been put in quotes.
  if (bytes.empty() && !token.quoted && m_plan.dialect.quoteByte != 0) return;
  if (bytes.empty() && field.empty != kit::Empty::KeepGiven) return;
  char *const copy = m_call.store.take(bytes.size());
  kit::copyShort(copy, bytes.data(), bytes.size());
  values.put(field.slot, copy, bytes.size());
}

void Parser::putUnescaped(const Field &field, const Token &token, List values) {
  char *const piece = m_call.store.take(token.bytes.size());
  const size_t length = unescape(m_plan.dialect, token, piece);
  m_call.store.trim(piece, token.bytes.size(), length);
  checkRead(field, {piece, length});
  values.put(field.slot, piece, length);
}

void Parser::checkUtf8(const Token &token) const {
  const kit::Converted seen = kit::Charset::checkUtf8(token.bytes.data(), token.bytes.size());
  if (seen.damage == kit::Damage::None) return;
  const char *const bad = token.bytes.data() + seen.read;
  m_reader.fault(bad, std::string(kit::damageText(seen.damage)) + " in UTF-8",
                 "Declare the text's psCharset");
}

void Parser::choice(const Compound &choice, const Compound &record, List values) {
  std::string_view value = values.get(choice.selectSlot);
  if (value.empty() && choice.selectElse != nullptr) value = choice.selectElse;
  const int chosen = chosenMember(choice, value);
  if (chosen < 0) return;
  if (chosen >= static_cast<int>(choice.fields.size())) {
    throw Fault(m_reader.here(),
                "a value of " + std::string(choice.selectNode) + " that chooses what follows",
                kit::quoted(value.data(), value.size()), "Known: " + knownCases(choice));
  }
  const Item &member = choice.fields[static_cast<size_t>(chosen)];
  if (member.kind == ItemKind::Field) return field(member.field, record, values);
  m_path.enter(member.compound->node);
  members(member.compound->fields, record, values);
  m_path.leave();
}

// The number of repetitions that a count field says. It is written without leading zeros, and so it is kept.
size_t Parser::countOf(const Compound &loop, List values) {
  const std::string_view text = values.get(loop.countSlot);
  int times = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), times);
  if (!text.empty() && (error != std::errc() || end != text.data() + text.size() || times < 0)) {
    throw Fault(Fault::kHere, "a count of repetitions", kit::quoted(text.data(), text.size()));
  }
  kit::Digits digits;
  const char *const stop = std::to_chars(digits.bytes, digits.bytes + sizeof digits.bytes, times).ptr;
  const std::string_view canonical(digits.bytes, static_cast<size_t>(stop - digits.bytes));
  if (text != canonical) {
    values.put(loop.countSlot, m_call.store.copy(canonical.data(), canonical.size()), canonical.size());
  }
  return static_cast<size_t>(times);
}

// A loop of fields: as many as its count says, or to the end of the record.
void Parser::fieldLoop(const Compound &loop, const Compound &record, List values) {
  const bool counted = loop.countSlot >= 0;
  const size_t times = counted ? countOf(loop, values) : 0;
  size_t done = 0;
  for (; counted ? done < times : m_reader.more(); ++done) {
    m_path.repetition(static_cast<int>(done));
    m_call.end = m_reader.here();
    if (counted && !m_reader.more()) {
      throw Fault(m_reader.here(), std::to_string(times) + " repetitions", std::to_string(done),
                  "Correct the count");
    }
    if (loop.most != 0 && done == loop.most) {
      throw Fault(Fault::kHere, "at most " + std::to_string(loop.most) + " repetitions", "one more",
                  "Raise nMax of its CsvLoop");
    }
    const List body = values.append(loop.slot, loop.bodySlots);
    members(loop.fields, record, body);
  }
  m_path.repetition(-1);
  if (done < loop.least) {
    throw Fault(m_reader.here(), "at least " + std::to_string(loop.least) + " repetitions",
                std::to_string(done));
  }
}

// --- The header line
// --------------------------------------------------------------------------------------------

void Parser::header() {
  if (!m_reader.begin()) throw Fault(m_reader.offset(), "a line of column names", "the end");
  m_reader.open();
  f_order.clear();
  for (size_t position = 0; m_reader.more(); ++position) {
    if (position == m_plan.maxColumns) {
      throw Fault(m_reader.here(), "at most " + std::to_string(m_plan.maxColumns) + " columns", "one more",
                  "Raise nMaxColumns of CsvMsg");
    }
    columnName(position);
  }
  m_call.end = m_reader.offset();
  if (m_plan.header == Header::Order && f_order.size() < m_plan.columns.size()) {
    throw Fault(m_reader.offset(), "the column " + m_plan.columnNames[f_order.size()], "no further one");
  }
  if (m_plan.header != Header::Names) return;
  for (size_t i = 0; i < m_plan.columns.size(); ++i) {
    const bool there = std::find(f_order.begin(), f_order.end(), static_cast<int>(i)) != f_order.end();
    if (there || !m_plan.columns[i].field->mandatory) continue;
    throw Fault(m_reader.offset(), "a column " + m_plan.columnNames[i], "none of that name");
  }
}

void Parser::columnName(size_t position) {
  const Token token = m_reader.next();
  if (m_reader.high()) checkUtf8(token);
  std::string_view name = token.bytes;
  if (token.escaped) {
    char *const piece = m_call.store.take(name.size());
    name = {piece, unescape(m_plan.dialect, token, piece)};
  }
  const auto shown = [name] { return kit::quoted(name.data(), name.size()); };
  const int column = m_plan.columnsByName.find(name);
  if (m_plan.header == Header::Order && column != static_cast<int>(position)) {
    throw Fault(
        m_reader.offset(),
        position < m_plan.columns.size() ? "the column " + m_plan.columnNames[position] : "no further column",
        shown(), "Correct the line, or set psHeader of CsvMsg to names");
  }
  if (m_plan.header == Header::Names && column < 0 && !m_plan.skipUnknown) {
    static constexpr size_t kShown = 12;
    std::string known;
    for (size_t i = 0; i < m_plan.columnNames.size() && i <= kShown; ++i) {
      known += (i == 0 ? "" : ", ") + (i == kShown ? "..." : m_plan.columnNames[i]);
    }
    throw Fault(m_reader.offset(), "one of the columns " + known, shown(),
                "Define it, or set psUnknown of CsvMsg to skip");
  }
  if (m_plan.header == Header::Names && column >= 0 &&
      std::find(f_order.begin(), f_order.end(), column) != f_order.end()) {
    throw Fault(m_reader.offset(), "each column once", shown() + " twice");
  }
  f_order.push_back(column);
}

// A record whose fields stand in the order of the header line.
void Parser::columns(const Compound &record, List values) {
  for (const int position : f_order) {
    if (position < 0) {
      if (m_reader.more()) {
        const Token passed = m_reader.next();
        if (m_reader.high()) checkUtf8(passed);
      } else if (!record.shortened) {
        throw Fault(m_reader.stop(), "a field for every column", "the end of the record");
      }
      continue;
    }
    const Column &column = m_plan.columns[static_cast<size_t>(position)];
    for (const char *group : column.groups) m_path.enter(group);
    field(*column.field, record, values);
    for (size_t i = 0; i < column.groups.size(); ++i) m_path.leave();
  }
}

// --- The text
// ---------------------------------------------------------------------------------------------------

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
  Parser parser(plan, call, text, behindMark(plan, text, end), end);
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
  Parser(plan, call, call.buffer, behindMark(plan, from, end), end).run();
}

}  // namespace cvt::csv

#include <algorithm>
#include <charconv>

#include "kit/log.h"
#include "parse_call.h"

namespace cvt::csv {

using kit::Fault;
using kit::List;

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

// Remembers that the record was continued before the next field.
void Parser::noteWrap() {
  if (!m_reader.continued()) return;
  char digits[24];
  const char *const end = std::to_chars(digits, digits + sizeof digits, m_number + 1).ptr;
  if (!m_room.wraps.empty()) m_room.wraps += ' ';
  m_room.wraps.append(digits, static_cast<size_t>(end - digits));
}

// Whether an empty field needs no byte where no separator is between it and what stands before.
bool Parser::standsInNothing(const Field &field) const {
  if (field.shape == Shape::Rest) return true;
  return field.shape == Shape::Variable && m_plan.dialect.quoteByte == 0 && !m_plan.dialect.terminated;
}

void Parser::absent(const Field &field, const Compound &record, List values) {
  // Where separators end fields, none is behind the last field for a rest that is empty.
  if (m_reader.bare() || (m_plan.dialect.terminated && field.shape == Shape::Rest)) {
    const Token nothing = m_reader.nothing();
    const bool there = !record.shortened || field.mandatory;
    if (there && standsInNothing(field)) return put(field, nothing, values);
  }
  if (!record.shortened) {
    throw Fault(m_reader.stop(), "another field in the record", "its end",
                "Write it, be it empty, or set nShort");
  }
  m_call.end = m_reader.stop();
  if (field.mandatory || field.constant != nullptr) checkRead(field, {}, m_path);
  notGiven(field);
}

// Where a mandatory field may be empty, it must still be there.
void Parser::notGiven(const Field &field) const {
  if (!field.mandatory || field.empty == kit::Empty::Omit) return;
  throw Fault(Fault::kHere, "a value, be it empty", "none", "The field is mandatory");
}

void Parser::field(const Field &field, const Compound &record, List values) {
  m_path.field(field.node);
  if (!m_reader.more()) return absent(field, record, values);
  if (record.wrapsSlot >= 0) noteWrap();
  ++m_number;
  if (field.shape == Shape::Variable) {
    put(field, m_reader.next(), values);
  } else if (field.shape == Shape::Rest) {
    put(field, m_reader.rest(), values);
  } else {
    Token token = m_reader.fixed(field.length);
    token.bytes = withoutPads(field, token.bytes);
    put(field, token, values);
  }
}

void Parser::put(const Field &field, const Token &token, List values) {
  m_call.end = m_reader.offset();
  if (m_reader.high()) checkUtf8(token);
  if (token.escaped) return putUnescaped(field, token, values);
  const std::string_view bytes = token.bytes;
  if (!field.simple || (bytes.empty() ? field.mandatory : field.maxLength != 0)) {
    checkRead(field, bytes, m_path);
  }
  if (bytes.empty() && field.empty != kit::Empty::KeepGiven) return;
  // Nothing at all is an empty value that was given only where it could not have been put in quotes.
  const bool quotable = m_plan.dialect.quoteByte != 0 && field.shape == Shape::Variable;
  if (bytes.empty() && !token.quoted && quotable) return notGiven(field);
  char *const copy = m_call.store.take(bytes.size());
  kit::copyShort(copy, bytes.data(), bytes.size());
  values.put(field.slot, copy, bytes.size());
}

void Parser::putUnescaped(const Field &field, const Token &token, List values) {
  char *const piece = m_call.store.take(token.bytes.size());
  const size_t length = unescape(m_plan.dialect, token, piece);
  m_call.store.trim(piece, token.bytes.size(), length);
  checkRead(field, {piece, length}, m_path);
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
  const std::string_view value = selecting(choice.select, values.get(choice.select.slot));
  const int chosen = chosenMember(choice, value);
  if (chosen < 0) return;
  if (chosen >= static_cast<int>(choice.fields.size())) {
    throw Fault(m_reader.here(),
                "a value of " + std::string(choice.select.node) + " that chooses what follows",
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
  const std::string_view plain = plainCount(text);
  unsigned times = 0;
  const auto [end, error] = std::from_chars(plain.data(), plain.data() + plain.size(), times);
  if (error != std::errc() || end != plain.data() + plain.size()) {
    throw Fault(Fault::kHere, "a count of repetitions", kit::quoted(text.data(), text.size()));
  }
  if (text != plain) {
    values.put(loop.countSlot, m_call.store.copy(plain.data(), plain.size()), plain.size());
  }
  return times;
}

// A loop of fields: as many as its count says, or to the end of the record.
void Parser::fieldLoop(const Compound &loop, const Compound &record, List values) {
  const bool counted = loop.countSlot >= 0;
  const size_t times = counted ? countOf(loop, values) : 0;
  size_t done = 0;
  for (; counted ? done < times : m_reader.more(); ++done) {
    m_path.repetition(static_cast<int>(done));
    m_call.end = m_reader.here();
    if (counted && !m_reader.more() && !(m_reader.bare() && standsInNothing(*loop.first))) {
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
  m_reader.open(false);
  m_room.order.clear();
  for (size_t position = 0; m_reader.more(); ++position) {
    if (position == m_plan.maxColumns) {
      throw Fault(m_reader.here(), "at most " + std::to_string(m_plan.maxColumns) + " columns", "one more",
                  "Raise nMaxColumns of CsvMsg");
    }
    columnName(position);
  }
  m_call.end = m_reader.offset();
  if (m_plan.header == Header::Order && m_room.order.size() < m_plan.columns.size()) {
    throw Fault(m_reader.offset(), "the column " + m_plan.columnNames[m_room.order.size()], "no further one");
  }
  if (m_plan.header != Header::Names) return;
  for (size_t i = 0; i < m_plan.columns.size(); ++i) {
    const bool there =
        std::find(m_room.order.begin(), m_room.order.end(), static_cast<int>(i)) != m_room.order.end();
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
      std::find(m_room.order.begin(), m_room.order.end(), column) != m_room.order.end()) {
    throw Fault(m_reader.offset(), "each column once", shown() + " twice");
  }
  m_room.order.push_back(column);
}

// A record whose fields stand in the order of the header line.
void Parser::columns(const Compound &record, List values) {
  for (const int position : m_room.order) {
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

}  // namespace cvt::csv

#include "writer.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "kit/fault.h"
#include "kit/log.h"

namespace cvt::csv {

using kit::Fault;

namespace {

// Kept from one text to the next, so that it takes nothing from the heap.
std::vector<EmptyField> f_waiting;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// What an escape makes of a byte where there are no quotes.
char escapeOf(char c) {
  return c == '\n' ? 'n' : c == '\r' ? 'r' : c == '\t' ? 't' : c;
}

}  // namespace

// --- Values
// ---------------------------------------------------------------------------------------------------

// A text of a value, in the output's character set.
void Writer::value(std::string_view text) {
  char *const room = m_out.reserve(0);
  const kit::Converted done = m_dialect.charset->encode(text.data(), text.size(), room, m_out.room());
  if (done.damage == kit::Damage::NoRoom) m_out.reserve(m_out.room() + 1);  // says where the room ended
  if (done.damage != kit::Damage::None) {
    const std::string_view bad = text.substr(done.read, 4);
    throw Fault(Fault::kHere, kit::damageText(done.damage) + (" in " + m_dialect.charset->name()),
                kit::quoted(bad.data(), bad.size()), "Correct the value, or write another psCharset");
  }
  m_out.reserve(done.written);
  m_line += text.size();
}

// Whether a line that begins with the value would be taken for something else.
bool Writer::looksLikeStart(std::string_view text) const {
  return m_line == 0 && ((!m_dialect.comment.empty() && text.starts_with(m_dialect.comment.text)) ||
                         (m_first && m_dialect.guardMark && text.starts_with(kByteOrderMark)));
}

bool Writer::mustQuote(std::string_view text) const {
  if (looksLikeStart(text)) return true;
  if (m_dialect.marks.absentIn(text)) return false;
  for (const char c : text) {
    if (c == '\n' || c == '\r') {
      if (m_dialect.lineEnd != LineEnd::None) return true;
    } else if (m_dialect.quoteByte != 0 && c == m_dialect.quoteByte) {
      if (!m_dialect.innerQuotes || text[0] == c) return true;
    }
  }
  if (collides(text, m_dialect.separator.text)) return true;
  if (!m_dialect.recordEnd.empty()) return collides(text, m_dialect.recordEnd.text);
  return m_dialect.lineEnd == LineEnd::None && collides(text, m_dialect.tagFront.text);
}

// What a field has between its marks, quotes not counted, is limited.
void Writer::limitField(size_t from) const {
  if (m_dialect.maxField == 0 || m_line - from <= m_dialect.maxField) return;
  throw Fault(Fault::kHere, "a field of at most " + std::to_string(m_dialect.maxField) + " bytes",
              std::to_string(m_line - from), "Raise nMaxField of CsvMsg");
}

void Writer::plainValue(std::string_view text) {
  const size_t from = m_line;
  value(text);
  limitField(from);
}

void Writer::quotedValue(std::string_view text) {
  const char escape = m_dialect.escapeByte != 0 ? m_dialect.escapeByte : m_dialect.quoteByte;
  put(m_dialect.quote);
  const size_t start = m_line;
  for (size_t from = 0;;) {
    size_t at = from;
    while (at < text.size() && text[at] != m_dialect.quoteByte && text[at] != escape) ++at;
    value(text.substr(from, at - from));
    if (at == text.size()) break;
    const char pair[2] = {escape, text[at]};
    value({pair, 2});
    from = at + 1;
  }
  limitField(start);
  put(m_dialect.quote);
}

void Writer::escapedValue(std::string_view text) {
  const size_t start = m_line;
  for (size_t from = 0;;) {
    size_t at = from;
    while (at < text.size() && !m_dialect.marks.has(text[at])) ++at;
    value(text.substr(from, at - from));
    if (at == text.size()) break;
    const char pair[2] = {m_dialect.escapeByte, escapeOf(text[at])};
    value({pair, 2});
    from = at + 1;
  }
  limitField(start);
}

// --- Fields
// ---------------------------------------------------------------------------------------------------

// What stands between the field before and the next one.
void Writer::lead() {
  if (m_separate && !m_dialect.terminated) put(m_dialect.separator);
}

// The end of a line, and the tag of the next one, instead. bare: the field before left no byte, and is seen
// in quotes or as a line of its own.
void Writer::wrap(bool bare) {
  if (bare) {
    const bool quotes = m_dialect.quoteByte != 0 && !m_afterRest;
    quotes && !isTooLong(m_line + 2 * m_dialect.quote.text.size()) ? quotedValue({}) : newLine();
  }
  newLine();
}

void Writer::newLine() {
  put(m_dialect.recordEnd);
  m_out.put(m_lineEnd.bytes);
  m_line = 0;
  put(m_dialect.continuation);
  if (m_dialect.tagBack.empty()) put(m_dialect.separator);
}

// Whether the record is continued before this field: behind a rest, and where it was when it was read.
bool Writer::wrapIsDue() {
  ++m_number;
  if (m_wraps.empty()) return m_afterRest;
  size_t number = 0;
  const auto [end, error] = std::from_chars(m_wraps.data(), m_wraps.data() + m_wraps.size(), number);
  if (error != std::errc() || number < m_number) {
    throw Fault(Fault::kHere, "numbers of fields in rising order where the record is continued",
                kit::quoted(m_wraps.data(), m_wraps.size()), "Leave the field of kind wraps empty");
  }
  if (number > m_number) return m_afterRest;
  m_wraps.remove_prefix(static_cast<size_t>(end - m_wraps.data()));
  if (!m_wraps.empty() && m_wraps[0] == ' ') m_wraps.remove_prefix(1);
  return true;
}

void Writer::tooLong() const {
  throw Fault(Fault::kHere, "a line of at most " + std::to_string(m_dialect.maxRecord) + " bytes",
              std::to_string(m_line + m_dialect.recordEnd.text.size()),
              "Raise nMaxRecord of CsvMsg, or let records be continued with psContinuation");
}

// Whether a line of so many bytes, its end mark not counted, is longer than lines may be.
bool Writer::isTooLong(size_t length) const {
  return m_dialect.maxRecord != 0 && length + m_dialect.recordEnd.text.size() > m_dialect.maxRecord;
}

Writer::Start Writer::startField() {
  const Place before = here();
  const bool wrapped = wrapIsDue();
  wrapped ? wrap(before.offset == m_bare) : lead();
  return {before, here(), wrapped};
}

// Behind a field: a line that has got too long is continued before it.
void Writer::done(const Start &start, Shape shape) {
  if (isTooLong(m_line)) moveToNewLine(start);
  if (!m_separate && m_out.offset() == start.before.offset) m_bare = start.before.offset;
  m_separate = shape != Shape::Fixed;
  m_afterRest = shape == Shape::Rest;
}

void Writer::moveToNewLine(const Start &start) {
  if (start.wrapped || m_dialect.continuation.empty() || m_number == 1) tooLong();
  const size_t from = start.before.offset;
  const size_t length = m_out.offset() - start.behindLead.offset;
  const size_t lineLength = m_line - start.behindLead.line;
  std::memmove(m_out.at(from), m_out.at(start.behindLead.offset), length);
  m_out.rewind(from + length);
  m_line = start.before.line;
  wrap(from == m_bare);
  std::rotate(m_out.at(from), m_out.at(from + length), m_out.at(m_out.offset()));
  m_line += lineLength;
  if (isTooLong(m_line)) tooLong();
}

// A field that may be left out at the end of the record waits for one behind it that must be written.
bool Writer::postponed(const EmptyField &empty, bool needed) {
  if (!m_shortened) return false;
  if (!std::exchange(m_seen, false) && !needed) {
    f_waiting.push_back(empty);
    return true;
  }
  for (const EmptyField &each : f_waiting) putEmpty(each);
  f_waiting.clear();
  return false;
}

void Writer::putEmpty(const EmptyField &empty) {
  const Field *const field = empty.field;
  if (field == nullptr) return putField({}, empty.style);
  if (field->shape == Shape::Rest) return putRest({});
  if (!field->padded) {
    throw Fault(Fault::kHere, std::to_string(field->length) + " characters in " + field->node + " before it",
                "none", "Fill it, or write psPad");
  }
  putFixed(*field, {});
}

void Writer::anyField(std::string_view text, Style style) {
  if (!postponed({nullptr, style}, !text.empty() || style.kept)) putField(text, style);
}

void Writer::fixed(const Field &field, std::string_view text) {
  if (!postponed({&field, {}}, !text.empty() || field.mandatory)) putFixed(field, text);
}

void Writer::rest(const Field &field, std::string_view text) {
  if (!postponed({&field, {}}, !text.empty() || field.mandatory)) putRest(text);
}

void Writer::putField(std::string_view text, Style style) {
  const Start start = startField();
  const bool quotes = m_dialect.quoteByte != 0;
  if (text.empty()) {
    if (quotes && (style.kept || style.quoted)) quotedValue(text);
  } else if (quotes) {
    style.quoted || mustQuote(text) ? quotedValue(text) : plainValue(text);
  } else if (m_dialect.escapeByte != 0 && !looksLikeStart(text)) {
    escapedValue(text);
  } else if (!mustQuote(text)) {
    plainValue(text);
  } else {
    throw Fault(Fault::kHere, "a value without separators, line ends and marks",
                kit::quoted(std::string(text)), "Without quotes they cannot be told from the text's own");
  }
  if (m_dialect.terminated) put(m_dialect.separator);
  done(start, Shape::Variable);
}

void Writer::putFixed(const Field &field, std::string_view text) {
  const Start start = startField();
  const size_t characters = kit::Charset::countUtf8(text.data(), text.size());
  if (characters > field.length || (characters < field.length && !field.padded)) {
    throw Fault(Fault::kHere, std::to_string(field.length) + " characters",
                std::to_string(characters) + ", " + kit::quoted(std::string(text)),
                characters > field.length ? "Shorten the value" : "Fill it, or write psPad");
  }
  if (!m_dialect.marks.absentIn(text) || (m_line == 0 && mustQuote(text))) {
    throw Fault(Fault::kHere, "a value without separators and line ends", kit::quoted(std::string(text)));
  }
  const size_t from = m_line;
  value(text);
  for (size_t i = characters; i < field.length; ++i) value({&field.pad, 1});
  limitField(from);
  done(start, Shape::Fixed);
}

void Writer::putRest(std::string_view text) {
  const Start start = startField();
  const bool breaks =
      m_dialect.lineEnd != LineEnd::None && text.find_first_of("\r\n") != std::string_view::npos;
  const bool marked =
      m_dialect.lineEnd == LineEnd::None &&
      collides(text, m_dialect.recordEnd.empty() ? m_dialect.tagFront.text : m_dialect.recordEnd.text);
  if (breaks || marked || looksLikeStart(text)) {
    throw Fault(Fault::kHere, "a value without line ends and marks", kit::quoted(std::string(text)));
  }
  plainValue(text);
  m_simple = false;
  done(start, Shape::Rest);
}

// --- Records
// --------------------------------------------------------------------------------------------------

void Writer::endLine() {
  if (m_endPending) m_out.put(m_lineEnd.bytes);
  m_endPending = false;
  m_line = 0;
}

void Writer::line(std::string_view bytes) {
  endLine();
  m_out.put(bytes);
  m_endPending = m_dialect.lineEnd != LineEnd::None;
  m_first = false;
}

void Writer::begin(const Literal *tag, bool quotedTag, bool shortened, std::string_view wraps) {
  endLine();
  m_start = m_bare = m_out.offset();
  m_number = 0;
  m_separate = false;
  m_shortened = shortened;
  m_seen = false;
  m_simple = !shortened && wraps.empty() && !m_dialect.terminated && m_dialect.maxRecord == 0 &&
             m_dialect.maxField == 0 && m_dialect.charset->containsAscii();
  f_waiting.clear();
  m_afterRest = false;
  m_blank = false;
  m_wraps = wraps;
  if (tag != nullptr) {
    put(m_dialect.tagFront);
    if (quotedTag) put(m_dialect.quote);
    put(*tag);
    if (quotedTag) put(m_dialect.quote);
    put(m_dialect.tagBack);
    m_separate = m_dialect.tagBack.empty();
    if (m_separate && m_dialect.terminated) put(m_dialect.separator);
  }
}

void Writer::end(const Field *first) {
  if (!m_wraps.empty() && !m_shortened) {
    throw Fault(Fault::kHere, "fields up to those where the record is continued",
                std::to_string(m_number) + " of them, and " + kit::quoted(std::string(m_wraps)),
                "Leave the field of kind wraps empty");
  }
  if (m_out.offset() == m_start) {
    standIn(first);
  } else if (m_out.offset() == m_bare && m_dialect.quoteByte != 0 && !m_afterRest) {
    quotedValue({});  // nothing separates the empty last field from what stands before it
  }
  if (first != nullptr && first->shape == Shape::Fixed && !m_dialect.comment.empty()) checkNoComment();
  put(m_dialect.recordEnd);
  if (m_dialect.maxRecord != 0 && m_line > m_dialect.maxRecord) tooLong();
  m_endPending = m_dialect.lineEnd != LineEnd::None;
  m_first = false;
}

// What stands for a record without a byte, which would be a blank line.
void Writer::standIn(const Field *first) {
  if (first != nullptr && first->shape == Shape::Fixed && !m_dialect.terminated) return putFixed(*first, {});
  if (!m_dialect.recordEnd.empty()) return;
  const bool rest = first != nullptr && first->shape == Shape::Rest;
  if (m_dialect.quoteByte != 0 && !m_dialect.terminated && !rest) return quotedValue({});
  m_blank = true;
  if (m_dialect.skipBlank || m_dialect.lineEnd == LineEnd::None) blankLine();
}

// A fixed field with its pads, and what follows it, may make one of what is none.
void Writer::checkNoComment() const {
  const std::string_view record(m_out.at(m_start), m_out.offset() - m_start);
  if (!record.starts_with(m_dialect.comment.bytes)) return;
  throw Fault(Fault::kHere, "a record that does not begin like a comment",
              kit::quoted(m_dialect.comment.text), "Correct the value, or psComment of CsvMsg");
}

void Writer::blankLine() {
  throw Fault(Fault::kHere, "a value in the record", "none, which makes a blank line", "Give it one");
}

void Writer::finish() {
  if (m_openEnd && m_blank) blankLine();
  if (!m_openEnd) endLine();
}

}  // namespace cvt::csv

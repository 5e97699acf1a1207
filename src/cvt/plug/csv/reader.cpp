#include "reader.h"

#include "kit/charset.h"

namespace cvt::csv {

using kit::Fault;

namespace {

// What an escape means where there are no quotes; 0: it may not stand there.
char escapedByte(const Dialect &dialect, char c) {
  switch (c) {
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    default:
      return dialect.marks.has(c) ? c : '\0';
  }
}

}  // namespace

std::string Reader::found(const char *at) const {
  static constexpr size_t kShown = 24;
  if (at >= m_end) return "the end";
  return kit::quoted(at, std::min(kShown, static_cast<size_t>(m_end - at)));
}

const char *Reader::lineEndName() const {
  const LineEnd end = m_dialect.lineEnd == LineEnd::Any ? m_lineEnd : m_dialect.lineEnd;
  return end == LineEnd::Lf     ? "a line feed"
         : end == LineEnd::CrLf ? "a carriage return and a line feed"
                                : "a line end";
}

std::string Reader::fieldEnds() const {
  std::string separator = kit::quoted(m_dialect.separator.text);
  if (m_dialect.terminated) return separator;
  if (!m_dialect.recordEnd.empty()) return separator + " or " + kit::quoted(m_dialect.recordEnd.text);
  return separator + " or " +
         (m_dialect.lineEnd == LineEnd::None ? "the next record" : std::string(lineEndName()));
}

// --- Ends of lines and records
// ----------------------------------------------------------------------------------

// Behind the line end that stands there; null: none does, or one of another kind.
const char *Reader::lineEndAt(const char *where) const {
  if (*where == '\n') {
    const bool wanted =
        m_dialect.lineEnd == LineEnd::Lf || (m_dialect.lineEnd == LineEnd::Any && m_lineEnd != LineEnd::CrLf);
    return wanted ? where + 1 : nullptr;
  }
  if (*where != '\r' || m_end - where < 2 || where[1] != '\n') return nullptr;
  const bool wanted =
      m_dialect.lineEnd == LineEnd::CrLf || (m_dialect.lineEnd == LineEnd::Any && m_lineEnd != LineEnd::Lf);
  return wanted ? where + 2 : nullptr;
}

// Behind the end of a record that stands there, or null.
const char *Reader::recordEnd(const char *where) const {
  if (!m_dialect.recordEnd.empty()) {
    if (!at(where, m_dialect.recordEnd)) return nullptr;
    where += m_dialect.recordEnd.text.size();
    if (m_dialect.lineEnd == LineEnd::None) return where;
  }
  if (where == m_end) return m_dialect.lastLineEnd == LastLineEnd::Required ? nullptr : where;
  if (m_dialect.lineEnd == LineEnd::None) return at(where, m_dialect.tagFront) ? where : nullptr;
  return lineEndAt(where);
}

// Takes the record's end if it stands here. False: it does not, or the record is continued.
bool Reader::takeEnd() {
  const char *const behind = recordEnd(m_at);
  if (behind == nullptr) return false;
  const size_t length = static_cast<size_t>(m_at - m_line) + m_dialect.recordEnd.text.size();
  if (m_dialect.maxRecord != 0 && length > m_dialect.maxRecord) {
    throw Fault(offset(m_line), "a line of at most " + std::to_string(m_dialect.maxRecord) + " bytes",
                std::to_string(length), "Raise nMaxRecord of CsvMsg");
  }
  if (m_dialect.lineEnd != LineEnd::None) {
    m_open = behind == m_end && (behind == m_at || behind[-1] != '\n');
    if (behind != m_at && behind[-1] == '\n') {
      m_lineEnd = m_recordsEnd = behind - m_at > 1 && behind[-2] == '\r' ? LineEnd::CrLf : LineEnd::Lf;
      if (behind == m_end && m_dialect.lastLineEnd == LastLineEnd::None) {
        fault(behind - (m_lineEnd == LineEnd::CrLf ? 2 : 1), "no line end behind the last record",
              "Remove it, or set psLastLineEnd of CsvMsg to optional");
      }
    }
  }
  m_stop = m_at;
  m_at = m_line = behind;
  if (at(m_at, m_dialect.continuation)) {
    const char *const next = m_at + m_dialect.continuation.text.size();
    if (!m_dialect.tagBack.empty() || at(next, m_dialect.separator)) {
      m_at = next + (m_dialect.tagBack.empty() ? m_dialect.separator.text.size() : 0);
      m_continued = true;
      return false;
    }
  }
  m_done = m_at;
  return true;
}

// --- Records
// --------------------------------------------------------------------------------------------------

bool Reader::findRecord() {
  for (;;) {
    m_from = m_at;
    if (m_at == m_end) return false;
    const bool comment = at(m_at, m_dialect.comment);
    const bool blank = m_dialect.skipBlank && lineEndAt(m_at) != nullptr;
    if (!comment && !blank) break;
    while (m_at != m_end && lineEndAt(m_at) == nullptr) ++m_at;
    if (m_at != m_end) {
      const char *const behind = lineEndAt(m_at);
      m_lineEnd = *m_at == '\r' ? LineEnd::CrLf : LineEnd::Lf;
      m_at = behind;
    }
    m_done = m_at;
  }
  m_line = m_at;
  m_begun = true;
  if (m_dialect.tagged) findTag();
  return true;
}

void Reader::findTag() {
  const char *start = m_at;
  if (!m_dialect.tagFront.empty()) {
    if (!at(m_at, m_dialect.tagFront)) {
      fault(m_at, "a record that begins with " + kit::quoted(m_dialect.tagFront.text));
    }
    start += m_dialect.tagFront.text.size();
  }
  if (!m_dialect.tagBack.empty()) {
    const std::string &back = m_dialect.tagBack.text;
    const std::string_view rest(start, static_cast<size_t>(m_end - start));
    const size_t length = rest.substr(0, 256).find(back);
    if (length == std::string_view::npos) fault(m_at, "a tag that ends with " + kit::quoted(back));
    m_tagText = rest.substr(0, length);
    m_tagEnd = start + length + back.size();
  } else if (m_dialect.quoteByte != 0 && start != m_end && *start == m_dialect.quoteByte) {
    findQuotedTag();
  } else {
    m_tagEnd = m_scan.find(start);
    m_tagText = {start, static_cast<size_t>(m_tagEnd - start)};
  }
  m_tag = m_dialect.tags.find(m_tagText);
}

void Reader::findQuotedTag() {
  const char *const close = static_cast<const char *>(
      std::memchr(m_at + 1, m_dialect.quoteByte, static_cast<size_t>(m_end - m_at) - 1));
  if (close == nullptr) fault(m_at, "a closing quote");
  m_tagText = {m_at + 1, static_cast<size_t>(close - m_at) - 1};
  m_tagEnd = close + 1;
}

void Reader::open(bool tagged) {
  m_begun = false;
  m_continued = false;
  m_bare = false;
  m_from = m_at;
  if (!tagged) {
    m_more = !m_dialect.terminated || !takeEnd();
    return;
  }
  if (!m_dialect.tagBack.empty()) {
    m_at = m_tagEnd;
    m_more = !takeEnd();
    m_bare = !m_more;
    return;
  }
  const char *const behind = at(m_tagEnd, m_dialect.separator) ? m_tagEnd + m_dialect.separator.text.size()
                             : recordEnd(m_tagEnd) != nullptr  ? m_tagEnd
                                                               : nullptr;
  if (behind == nullptr) fault(m_tagEnd, kit::quoted(m_dialect.separator.text) + " behind the tag");
  m_separated = behind != m_tagEnd;
  m_at = behind;
  m_more = m_separated;
  if (!m_separated || m_dialect.terminated) m_more = !takeEnd();
}

void Reader::close() {
  if (!m_more) return;
  const std::string end = !m_dialect.recordEnd.empty()         ? kit::quoted(m_dialect.recordEnd.text)
                          : m_dialect.lineEnd == LineEnd::None ? "the next record"
                                                               : lineEndName();
  fault(m_at, end + " behind the last field of the record", "Remove further fields, or define them");
}

// --- Fields
// ---------------------------------------------------------------------------------------------------

// Goes on behind a mark that does not end the field, or refuses it.
const char *Reader::step(const char *where, bool &escaped) const {
  if (where == m_end) {
    if (m_dialect.terminated || !m_dialect.recordEnd.empty()) fault(where, fieldEnds() + " behind the field");
    fault(where, std::string(lineEndName()) + " behind the last record",
          "End it, or set psLastLineEnd of CsvMsg to optional");
  }
  const char c = *where;
  if (c == m_dialect.separator.text[0]) return where + 1;
  if (m_dialect.quoteByte != 0 && c == m_dialect.quoteByte) {
    if (m_dialect.innerQuotes) return where + 1;
    fault(where, "no quote inside a field without quotes",
          "Write the whole field in quotes and the quote inside it " +
              std::string(m_dialect.escapeByte == 0 ? "twice" : "behind the escape"));
  }
  if (m_dialect.escapeByte != 0 && c == m_dialect.escapeByte) {
    if (m_dialect.quoteByte != 0) return where + 1;  // it means something inside quotes only
    if (m_end - where < 2 || escapedByte(m_dialect, where[1]) == '\0') {
      fault(where, "a separator, " + kit::quoted(std::string(1, c)) + ", n, r or t behind the escape");
    }
    escaped = true;
    return where + 2;
  }
  const bool breaks = m_dialect.lineEnd != LineEnd::None && (c == '\r' || c == '\n');
  if (!breaks && !at(where, m_dialect.recordEnd) && !at(where, m_dialect.tagFront)) return where + 1;
  fault(where, fieldEnds() + " behind the field",
        !breaks || m_dialect.terminated || !m_dialect.recordEnd.empty() ? ""
        : m_dialect.quoteByte != 0 ? "Write a value with line ends in quotes, or correct psLineEnd of CsvMsg"
                                   : "Correct psLineEnd of CsvMsg");
}

// Goes on behind a mark inside quotes; null: it is the closing quote.
const char *Reader::stepQuoted(const char *where, bool &escaped) const {
  const char c = *where;
  if (m_dialect.escapeByte != 0 && c == m_dialect.escapeByte) {
    if (m_end - where < 2 || (where[1] != m_dialect.escapeByte && where[1] != m_dialect.quoteByte)) {
      fault(where, "a quote or " + kit::quoted(std::string(1, c)) + " behind the escape");
    }
    escaped = true;
    return where + 2;
  }
  if (c != m_dialect.quoteByte) return where + 1;
  if (m_dialect.escapeByte != 0 || m_end - where < 2 || where[1] != c) return nullptr;
  escaped = true;
  return where + 2;
}

Token Reader::quoted() {
  bool escaped = false;
  const char *const start = m_at + 1;
  const char *at = start;
  for (const char *next = start; next != nullptr; next = stepQuoted(at, escaped)) {
    at = m_scan.find(next);
    if (at == m_end) {
      throw Fault(offset(m_from), "a closing quote", "none before the end", "Close the quotes");
    }
  }
  const Token token{{start, static_cast<size_t>(at - start)}, true, escaped};
  const char *const behind = fieldEnd(at + 1);
  if (behind == nullptr) {
    fault(at + 1, fieldEnds() + " behind the closing quote",
          "Write a quote inside the value " +
              std::string(m_dialect.escapeByte == 0 ? "twice" : "behind the escape"));
  }
  if (m_dialect.maxField != 0) limitField(token);
  moveTo(behind);
  return token;
}

void Reader::limitField(const Token &token) const {
  if (token.bytes.size() <= m_dialect.maxField) return;
  throw Fault(offset(m_from), "a field of at most " + std::to_string(m_dialect.maxField) + " bytes",
              std::to_string(token.bytes.size()), "Raise nMaxField of CsvMsg");
}

// Such a value could not be written where another field follows it.
void Reader::refuseHalfMark(const Token &token) const {
  const std::string &separator = m_dialect.separator.text;
  const std::string &end = !m_dialect.recordEnd.empty() || m_dialect.lineEnd != LineEnd::None
                               ? m_dialect.recordEnd.text
                               : m_dialect.tagFront.text;
  if (!collides(token.bytes, separator) && (end.empty() || !collides(token.bytes, end))) return;
  throw Fault(offset(m_from), "a value that does not end like a mark begins",
              kit::quoted(std::string(token.bytes)), "Set psQuote or psEscape of CsvMsg");
}

Token Reader::fixed(size_t characters) {
  m_from = m_at;
  const std::string_view left(m_at, static_cast<size_t>(m_end - m_at));
  size_t length = characters;
  if (left.size() < characters || !kit::isAscii(left.data(), characters)) {
    const kit::Converted seen = kit::Charset::find(nullptr)->measure(left.data(), left.size(), characters);
    if (seen.damage != kit::Damage::None) {
      fault(m_at, std::to_string(characters) + " characters of a field of fixed length");
    }
    length = seen.read;
  }
  const Token token{left.substr(0, length), false, false};
  for (size_t i = 0; i < length && !m_dialect.marks.absentIn(token.bytes); ++i) {
    if (!m_dialect.marks.has(left[i])) continue;
    fault(m_at + i, std::to_string(characters) + " characters of a field of fixed length, without " +
                        "separators and line ends");
  }
  if (m_dialect.maxField != 0) limitField(token);
  m_at += length;
  m_continued = false;
  m_more = !takeEnd();
  m_bare = !m_more;
  return token;
}

// All of the line that is left, separators included.
Token Reader::rest() {
  m_from = m_at;
  const size_t mark = m_dialect.recordEnd.text.size();
  for (const char *where = m_at;; ++where) {
    where = m_scan.find(where);
    const bool marked = m_dialect.lineEnd == LineEnd::None && mark > 0;
    const bool breaks = where == m_end || (m_dialect.lineEnd != LineEnd::None && lineEndAt(where) != nullptr);
    const char *const end = marked                                                ? where
                            : breaks && static_cast<size_t>(where - m_at) >= mark ? where - mark
                                                                                  : where;
    if (recordEnd(end) != nullptr) {
      const Token token{{m_from, static_cast<size_t>(end - m_from)}, false, false};
      if (m_dialect.maxField != 0) limitField(token);
      m_at = end;
      m_continued = false;
      m_more = !takeEnd();
      return token;
    }
    if (where == m_end || (m_dialect.lineEnd != LineEnd::None && (*where == '\r' || *where == '\n'))) {
      fault(where, m_dialect.recordEnd.empty()
                       ? lineEndName()
                       : kit::quoted(m_dialect.recordEnd.text) + " at the end of the line");
    }
  }
}

size_t unescape(const Dialect &dialect, const Token &token, char *out) {
  const std::string_view bytes = token.bytes;
  const char escape = dialect.escapeByte != 0 ? dialect.escapeByte : dialect.quoteByte;
  size_t length = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] == escape) {
      ++i;
      out[length++] = token.quoted ? bytes[i] : escapedByte(dialect, bytes[i]);
    } else {
      out[length++] = bytes[i];
    }
  }
  return length;
}

}  // namespace cvt::csv

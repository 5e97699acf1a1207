// writer.h: records of fields as text: separators, quotes, ends, and lines that are continued.
#pragma once

#include <string_view>

#include "kit/output.h"
#include "plan.h"

namespace cvt::csv {

// How a field is to be written.
struct Style {
  bool quoted;  // in quotes also when it does not need them
  bool kept;    // an empty value that must be seen: in quotes, and no reason to leave the field out
};

// A field without a value that is written only when one behind it is.
struct EmptyField {
  const Field *field;  // null: one of variable length
  Style style;         // of such a one
};

class Writer {
 public:
  Writer(const Dialect &dialect, LineEnd lineEnd, bool openEnd, kit::Output &out)
      : m_dialect(dialect),
        m_out(out),
        m_lineEnd(lineEnd == LineEnd::CrLf ? dialect.crlf : dialect.lf),
        m_openEnd(openEnd) {}

  // A line as it is, its length in UTF-8 told.
  void line(std::string_view bytes);

  // tag: null or the record's. shortened: empty fields at the end are left out. wraps: numbers of the fields
  // before which the record was continued when it was read.
  void begin(const Literal *tag, bool quotedTag, bool shortened, std::string_view wraps);
  void field(std::string_view value, Style style) {
    if (!m_simple || !m_separate || value.empty() || style.quoted || !m_dialect.marks.absentInAscii(value)) {
      return anyField(value, style);
    }
    // What most fields are: nothing in the value needs a thought, and nobody counts the line's bytes.
    m_out.put(m_dialect.separator.bytes);
    kit::copyShort(m_out.reserve(value.size()), value.data(), value.size());
  }
  // The next field must be seen, be it empty: a counted repetition begins with it.
  void see() { m_seen = true; }

  void fixed(const Field &field, std::string_view value);
  void rest(const Field &field, std::string_view value);

  // first: the first field that the record may have, or null.
  void end(const Field *first);

  // Behind the last record.
  void finish();

 private:
  struct Place {
    size_t offset;  // in the output
    size_t line;    // bytes of the line, in UTF-8
  };
  Place here() const { return {m_out.offset(), m_line}; }
  struct Start {  // of a field
    Place before;
    Place behindLead;
    bool wrapped;  // it begins a line
  };

  void put(const Literal &literal) {
    m_out.put(literal.bytes);
    m_line += literal.text.size();
  }
  void anyField(std::string_view value, Style style);
  void value(std::string_view text);
  void limitField(size_t from) const;
  void plainValue(std::string_view text);
  void quotedValue(std::string_view text);
  void escapedValue(std::string_view text);
  bool looksLikeStart(std::string_view value) const;
  bool mustQuote(std::string_view value) const;
  Start startField();
  void lead();
  void wrap(bool bare);
  void newLine();
  bool isTooLong(size_t length) const;
  bool postponed(const EmptyField &empty, bool needed);
  void putEmpty(const EmptyField &empty);
  void putField(std::string_view value, Style style);
  void putFixed(const Field &field, std::string_view value);
  void putRest(std::string_view value);
  void done(const Start &start, Shape shape);
  void moveToNewLine(const Start &start);
  void endLine();
  bool wrapIsDue();
  void standIn(const Field *first);
  void checkNoComment() const;
  [[noreturn]] static void blankLine();
  [[noreturn]] void tooLong() const;

  const Dialect &m_dialect;
  kit::Output &m_out;
  const Literal &m_lineEnd;
  bool m_openEnd;
  bool m_first = true;        // nothing of the text was written
  bool m_endPending = false;  // the record before has no line end yet
  bool m_separate = false;    // a separator belongs before the next field
  bool m_afterRest = false;   // the field before took all of its line
  bool m_blank = false;       // nothing stands in the record's line
  size_t m_line = 0;
  size_t m_start = 0;   // offset of the record
  size_t m_bare = 0;    // of an empty field that left no byte
  size_t m_number = 0;  // of the field, from 1
  bool m_shortened = false;
  bool m_seen = false;    // the next field is not left out
  bool m_simple = false;  // fields of the record may be written without further ado
  std::string_view m_wraps;
};

}  // namespace cvt::csv

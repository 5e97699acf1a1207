// reader.h: a text as records of fields, one after the other, without a look at what they mean.
//
//   while (reader.begin()) {             // at a record; its tag is known
//     reader.open(true);                 // behind the tag
//     while (reader.more()) reader.next();
//   }
//
// The end of a record is taken with its last field, and so is the tag of a record that continues it.
#pragma once

#include <string>
#include <string_view>

#include "kit/fault.h"
#include "plan.h"

namespace cvt::csv {

// A field as it stands in the text, without its quotes.
struct Token {
  std::string_view bytes;
  bool quoted;
  bool escaped;  // something in it stands for something else
};

class Reader {
 public:
  Reader(const Dialect &dialect, const char *origin, const char *from, const char *end)
      : m_dialect(dialect),
        m_origin(origin),
        m_at(from),
        m_end(end),
        m_done(from),
        m_line(from),
        m_stop(from),
        m_scan(dialect.marks, end) {}

  // Goes to the next record, over blank lines and comments; false at the end. May be called again.
  bool begin() { return m_begun || findRecord(); }

  // The record's tag as its position in Dialect::tags; -1: one that the definition does not have.
  int tag() const { return m_tag; }
  std::string_view tagText() const { return m_tagText; }

  // Into the record that begin() found; `tagged`: behind its tag, which is no field of it.
  void open(bool tagged);

  // Whether the record has another field.
  bool more() const { return m_more; }

  // The next field. REQUIRES: more().
  Token next() {
    m_from = m_at;
    if (m_dialect.quoteByte != 0 && m_at != m_end && *m_at == m_dialect.quoteByte) return quoted();
    bool escaped = false;
    for (const char *at = m_scan.find(m_at);; at = m_scan.find(at)) {
      const char *const behind = fieldEnd(at);
      if (behind == nullptr) {
        at = step(at, escaped);
        continue;
      }
      const Token token{{m_from, static_cast<size_t>(at - m_from)}, false, escaped};
      if (m_dialect.maxField != 0) limitField(token);
      if (m_dialect.longMarks) refuseHalfMark(token);
      moveTo(behind);
      return token;
    }
  }
  Token fixed(size_t characters);
  Token rest();

  // Whether the record ended just behind a field of fixed length, or its tag, that no separator ends: a last
  // field that is empty leaves nothing there. It is nothing().
  bool bare() const { return m_bare; }
  Token nothing() {
    m_bare = false;
    m_from = m_stop;
    return {{m_stop, m_stop}, false, false};
  }

  // A fault unless the record has no more fields.
  void close();

  // Where the field read last, or the record, begins; where reading is.
  size_t offset() const { return offset(m_from); }
  size_t here() const { return offset(m_at); }
  size_t offset(const char *at) const { return static_cast<size_t>(at - m_origin); }
  const char *from() const { return m_from; }

  // Behind the last record that was read.
  size_t done() const { return offset(m_done); }

  // Where the record ended that was read last.
  size_t stop() const { return offset(m_stop); }

  // Whether the record was continued just before the next field.
  bool continued() const { return m_continued; }

  // How the records ended; Any: none did.
  LineEnd lineEnd() const { return m_recordsEnd; }
  bool openEnd() const { return m_open; }
  bool high() const { return m_scan.high(); }

  // A part of the text from there on, for messages.
  std::string found(const char *at) const;

  [[noreturn]] void fault(const char *at, std::string expected, std::string advice = {}) const {
    throw kit::Fault(offset(at), std::move(expected), found(at), std::move(advice));
  }

 private:
  bool findRecord();
  void findTag();
  void findQuotedTag();
  Token quoted();

  static bool startsWith(const char *at, const char *end, std::string_view mark) {
    return static_cast<size_t>(end - at) >= mark.size() && std::memcmp(at, mark.data(), mark.size()) == 0;
  }
  bool at(const char *where, const Literal &mark) const {
    return !mark.empty() && startsWith(where, m_end, mark.text);
  }

  // The place behind the field's end when its end stands there: behind the separator, or at the record's end.
  const char *fieldEnd(const char *where) {
    if (where != m_end && *where == m_dialect.separator.text[0]) {
      const std::string &separator = m_dialect.separator.text;
      if (separator.size() == 1 || startsWith(where, m_end, separator)) {
        m_separated = true;
        return where + separator.size();
      }
      return nullptr;
    }
    if (m_dialect.terminated || recordEnd(where) == nullptr) return nullptr;
    m_separated = false;
    return where;
  }

  // Goes behind a field: with a separator there is another field, unless it only ends this one.
  void moveTo(const char *behind) {
    m_at = behind;
    m_continued = false;
    m_more = m_separated;
    if (!m_separated || m_dialect.terminated) m_more = !takeEnd();
  }

  const char *recordEnd(const char *where) const;
  const char *lineEndAt(const char *where) const;
  bool takeEnd();
  const char *step(const char *at, bool &escaped) const;
  const char *stepQuoted(const char *at, bool &escaped) const;
  void limitField(const Token &token) const;
  void refuseHalfMark(const Token &token) const;
  std::string fieldEnds() const;
  const char *lineEndName() const;

  const Dialect &m_dialect;
  const char *m_origin;
  const char *m_at;
  const char *m_end;
  const char *m_done;
  const char *m_line;            // start of the line
  const char *m_from = nullptr;  // start of the field
  const char *m_stop = nullptr;  // end of the record
  Scanner m_scan;

  bool m_begun = false;
  bool m_more = false;
  bool m_separated = false;
  bool m_bare = false;
  bool m_continued = false;
  bool m_open = false;
  LineEnd m_lineEnd = LineEnd::Any;  // of the first line; Any: none was seen yet
  LineEnd m_recordsEnd = LineEnd::Any;
  int m_tag = -1;
  std::string_view m_tagText;
  const char *m_tagEnd = nullptr;
};

// The text of a token with everything that stands for something else replaced. `out` has room for its bytes;
// returns the length.
size_t unescape(const Dialect &dialect, const Token &token, char *out);

}  // namespace cvt::csv

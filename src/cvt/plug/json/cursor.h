// cursor.h: goes over the tokens of a JSON text, and knows its grammar.
//
// Every call leaves the cursor behind what it has taken, or throws Fault with the offset of the token that may
// not stand there.
#pragma once

#include <string>
#include <string_view>

#include "grammar.h"
#include "scan.h"

namespace cvt::json {

class Cursor {
 public:
  // base: offset of the text in its buffer. depth: objects and arrays that are open around it.
  Cursor(const Tokens &tokens, size_t base, size_t maxDepth, size_t depth = 0)
      : m_text(tokens.text.data()),
        m_size(tokens.text.size()),
        m_begin(tokens.begin),
        m_at(tokens.begin),
        m_end(tokens.end),
        m_damage(tokens.damage),
        m_base(base),
        m_maxDepth(maxDepth),
        m_depth(depth) {}

  bool atEnd() const { return m_at == m_end; }

  // The first byte of the token; 0 at the end.
  char peek() const { return atEnd() ? '\0' : m_text[*m_at]; }

  // Offset of the token in the buffer; at the end, that behind the last one.
  size_t offset() const { return m_base + *m_at; }

  // The token; empty at the end.
  std::string_view token() const {
    if (atEnd()) return {};
    size_t end = m_at[1];
    while (isBlank(m_text[end - 1])) --end;
    return {m_text + *m_at, end - *m_at};
  }
  void next() { ++m_at; }

  bool take(char c) {
    if (peek() != c) return false;
    ++m_at;
    return true;
  }

  // The name with its quotes and the colon, when they stand here without blanks.
  bool takeName(std::string_view quoted) {
    if (m_end - m_at < 2 || m_at[1] - m_at[0] != quoted.size() || m_text[m_at[1]] != ':') return false;
    if (!kit::equalShort(m_text + *m_at, quoted.data(), quoted.size())) return false;
    m_at += 2;
    return true;
  }

  // A string without blanks behind it, when one stands here: as it is written, without its quotes.
  bool takeString(std::string_view &string) {
    if (atEnd() || !stringAt(m_at, string)) return false;
    ++m_at;
    return true;
  }

  // A member that is written in the plainest way, when one stands here, and the comma behind it: a string without
  // escapes, or a number, and no blanks. key: `"name":"`, and `"name":` of a number. `more` is whether a comma came.
  bool takeText(std::string_view key, std::string_view &string, bool &more) {
    if (!atKey(key, key.size() - 1) || !stringAt(m_at + 2, string) || hasEscape(string)) return false;
    return takeMember(more);
  }
  bool takeNumber(std::string_view key, std::string_view &number, bool &more) {
    if (!atKey(key, key.size())) return false;
    number = {m_text + m_at[2], m_at[3] - m_at[2]};
    return isNumber(number) && takeMember(more);
  }

  // { or [, counted; false when it does not stand here or is one too many.
  bool takeOpen(char bracket) {
    if (m_depth >= m_maxDepth || !take(bracket)) return false;
    ++m_depth;
    return true;
  }
  [[noreturn]] void refuseOpen(char bracket, const char *advice) const;

  // } or ], counted.
  void close(char bracket) {
    if (!take(bracket)) refuseClose(bracket);
    --m_depth;
  }

  // A string as it is written, without its quotes.
  std::string_view string(const char *expected, const char *advice = "");

  // The name of a member, as it is written, and the colon.
  std::string_view name();

  // A value of any kind, checked; as it is written.
  std::string_view value();

  // "name":value, of which `name` has been taken; from the name's quote to the value's last byte.
  std::string_view member(std::string_view name);

  // Whether a string's escapes are escapes. `string` stands in the text.
  void checkString(std::string_view string) const;

  // Nothing may follow.
  void end(const char *advice);

  // The characters of a string that stands in the text; out has room for string.size() bytes.
  size_t decode(std::string_view string, char *out) const;

  // Something else was expected here.
  [[noreturn]] void refuse(const std::string &expected, const std::string &advice) const;

 private:
  // The key, the value `length` bytes behind its beginning, and a token behind the value.
  bool atKey(std::string_view key, size_t length) const {
    return m_end - m_at >= 4 && m_at[2] - m_at[0] == length &&
           kit::equalShort(m_text + *m_at, key.data(), key.size());
  }
  bool takeMember(bool &more) {
    more = m_text[m_at[3]] == ',';
    m_at += more ? 4 : 3;
    return true;
  }
  bool stringAt(const uint32_t *at, std::string_view &string) const {
    if (m_text[*at] != '"' || at[1] - at[0] < 2 || m_text[at[1] - 1] != '"') return false;
    string = {m_text + *at + 1, at[1] - at[0] - 2};
    return true;
  }
  void open(char bracket);
  void members();
  void elements();
  bool commaBefore() const;
  [[noreturn]] void refuseClose(char bracket) const;
  [[noreturn]] void badEscape(std::string_view string, const Unescaped &bad) const;

  const char *m_text;
  size_t m_size;
  const uint32_t *m_begin;
  const uint32_t *m_at;
  const uint32_t *m_end;
  Damage m_damage;
  size_t m_base;
  size_t m_maxDepth;
  size_t m_depth;
};

// What a token is, for messages: "text "abc"", "number 1", "an object".
std::string describe(std::string_view token);

}  // namespace cvt::json

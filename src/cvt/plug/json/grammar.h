// grammar.h: the pieces that JSON texts are made of, as RFC 8259 defines them.
#pragma once

#include <cstddef>
#include <string_view>

#include "kit/bytes.h"

namespace cvt::json {

inline bool isBlank(char c) {
  return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

inline bool isOperator(char c) {
  return c == '{' || c == '}' || c == '[' || c == ']' || c == ':' || c == ',';
}

// The place behind the digits that stand there.
inline const char *behindDigits(const char *at, const char *end) {
  while (at != end && *at >= '0' && *at <= '9') ++at;
  return at;
}

// Whether the whole text is a number.
inline bool isNumber(std::string_view text) {
  const char *const end = text.data() + text.size();
  const char *const from = text.data() + (text.starts_with('-') ? 1 : 0);
  const char *at = behindDigits(from, end);
  if (at == from || (*from == '0' && at != from + 1)) return false;
  if (at != end && *at == '.') {
    const char *const fraction = at + 1;
    at = behindDigits(fraction, end);
    if (at == fraction) return false;
  }
  if (at == end || (*at != 'e' && *at != 'E')) return at == end;
  ++at;
  if (at != end && (*at == '+' || *at == '-')) ++at;
  return at != end && behindDigits(at, end) == end;
}

// Whether something in a string, without its quotes, is not itself.
inline bool hasEscape(std::string_view string) {
  return !kit::noneOf(string.data(), string.size(), ' ', [](auto word) {
    const auto other = word ^ (kit::kOnes * '\\');
    return (other - kit::kOnes) & ~other;
  });
}

// What an escape stands for, or what is wrong with one.
struct Unescaped {
  size_t length = 0;               // bytes written
  const char *expected = nullptr;  // null: fine
  size_t at = 0;                   // where the escape begins that is wrong
  const char *advice = nullptr;
};

// The characters of a string without its quotes, as UTF-8. out has room for string.size() bytes. Half of a
// surrogate pair is refused: no UTF-8 text can carry it.
Unescaped unescape(std::string_view string, char *out);

// Whether the escapes of a string are escapes; half of a surrogate pair is one.
Unescaped checkEscapes(std::string_view string);

}  // namespace cvt::json

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

inline bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// A number without sign and exponent, whole or with two decimals, as most are: looked at without a loop.
[[gnu::always_inline]] inline bool isPlainNumber(std::string_view text) {
  const size_t n = text.size();
  const bool decimals = n > 3 && text[n - 3] == '.';
  if (decimals && !(isDigit(text[n - 2]) && isDigit(text[n - 1]))) return false;
  const size_t whole = decimals ? n - 3 : n;
  return whole > 0 && kit::isDigits(text.data(), whole) && (text.front() != '0' || whole == 1);
}

// Any other number.
bool isOtherNumber(std::string_view text);

// Whether the whole text is a number.
[[gnu::always_inline]] inline bool isNumber(std::string_view text) {
  return isPlainNumber(text) || isOtherNumber(text);
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

#include "grammar.h"

#include <cstring>

#include "kit/utf8.h"

namespace cvt::json {

namespace {

// The place behind the digits that stand there.
const char *behindDigits(const char *at, const char *end) {
  while (at != end && isDigit(*at)) ++at;
  return at;
}

int hexValue(char c) {
  if (isDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The number of \uXXXX at `at`; -1 when it is none.
int unitAt(std::string_view string, size_t at) {
  if (string.size() - at < 6 || string[at] != '\\' || string[at + 1] != 'u') return -1;
  int unit = 0;
  for (size_t i = at + 2; i < at + 6; ++i) {
    const int digit = hexValue(string[i]);
    if (digit < 0) return -1;
    unit = unit * 16 + digit;
  }
  return unit;
}

bool isHigh(int unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool isLow(int unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

// What the letter behind a backslash stands for; 0: nothing.
char plainEscape(char letter) {
  switch (letter) {
    case '"':
    case '\\':
    case '/':
      return letter;
    case 'b':
      return '\b';
    case 'f':
      return '\f';
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    default:
      return 0;
  }
}

constexpr const char *kEscape =
    "an escape: \\\" \\\\ \\/ \\b \\f \\n \\r \\t or \\u and four hexadecimal digits";
constexpr const char *kNoEscape = "Write a backslash itself as \\\\";
constexpr const char *kPair = "both halves of a surrogate pair";
constexpr const char *kNoPair = "Write the other half, too, or the character itself";

}  // namespace

bool isOtherNumber(std::string_view text) {
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

Unescaped unescape(std::string_view string, char *out) {
  Unescaped done;
  for (size_t at = 0; at < string.size();) {
    const auto *next = static_cast<const char *>(std::memchr(string.data() + at, '\\', string.size() - at));
    const size_t plain = (next == nullptr ? string.size() : static_cast<size_t>(next - string.data())) - at;
    std::memcpy(out + done.length, string.data() + at, plain);
    done.length += plain;
    at += plain;
    if (at == string.size()) break;
    const char letter = at + 1 < string.size() ? plainEscape(string[at + 1]) : '\0';
    if (letter != 0) {
      out[done.length++] = letter;
      at += 2;
      continue;
    }
    const int unit = unitAt(string, at);
    if (unit < 0) return {done.length, kEscape, at, kNoEscape};
    auto code = static_cast<uint32_t>(unit);
    size_t used = 6;
    if (isHigh(unit) || isLow(unit)) {
      const int low = isHigh(unit) ? unitAt(string, at + used) : -1;
      if (!isLow(low)) return {done.length, kPair, at, kNoPair};
      code = 0x10000U + (static_cast<uint32_t>(unit - 0xD800) << 10) + static_cast<uint32_t>(low - 0xDC00);
      used = 12;
    }
    done.length += kit::putUtf8(code, out + done.length);
    at += used;
  }
  return done;
}

Unescaped checkEscapes(std::string_view string) {
  for (size_t at = 0; at < string.size();) {
    const auto *next = static_cast<const char *>(std::memchr(string.data() + at, '\\', string.size() - at));
    if (next == nullptr) break;
    at = static_cast<size_t>(next - string.data());
    if (at + 1 < string.size() && plainEscape(string[at + 1]) != 0) {
      at += 2;
    } else if (unitAt(string, at) >= 0) {
      at += 6;
    } else {
      return {0, kEscape, at, kNoEscape};
    }
  }
  return {};
}

}  // namespace cvt::json

// text.h: what the hand-written converters share: checked digits, decimals, and text as XML and JSON have it.
// Writers write at `to`, where the caller has made room, and return where they stopped.
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "program.h"

namespace bench {

inline char *put(char *to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

inline std::string_view trimmed(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

inline bool isDigit(char c) {
  return static_cast<unsigned char>(c - '0') < 10;
}

inline void needDigits(std::string_view text) {
  bool bAll = true;
  for (const char c : text) bAll = bAll && isDigit(c);
  if (!bAll || text.empty()) throw Failure("expected digits, found \"" + std::string(text) + "\"");
}

inline void needLength(std::string_view text, size_t least, size_t most) {
  if (text.size() < least || text.size() > most) throw Failure("wrong length: \"" + std::string(text) + "\"");
}

// Digits of which `decimals` stand behind the point, in front of which one digit stays.
inline char *putNumber(char *to, std::string_view digits, size_t decimals) {
  needDigits(digits);
  while (digits.size() > decimals + 1 && digits.front() == '0') digits.remove_prefix(1);
  to = put(to, digits.substr(0, digits.size() - decimals));
  if (decimals == 0) return to;
  *to++ = '.';
  return put(to, digits.substr(digits.size() - decimals));
}

inline char *putInteger(char *to, size_t value) {
  return std::to_chars(to, to + 20, value).ptr;
}

// Digits, filled with zeros in front to `width`.
inline char *putFilled(char *to, std::string_view digits, size_t width) {
  needDigits(digits);
  needLength(digits, 1, width);
  std::memset(to, '0', width - digits.size());
  put(to + width - digits.size(), digits);
  return to + width;
}

// A number with two decimals as its cents, filled with zeros in front to `width`.
inline char *putCents(char *to, std::string_view number, size_t width) {
  if (number.size() < 4 || number[number.size() - 3] != '.') {
    throw Failure("expected two decimals: \"" + std::string(number) + "\"");
  }
  const std::string_view decimals = number.substr(number.size() - 2);
  needDigits(decimals);
  return put(putFilled(to, number.substr(0, number.size() - 3), width - 2), decimals);
}

// A text filled with blanks to `width`.
inline char *putPadded(char *to, std::string_view text, size_t width) {
  needLength(text, 0, width);
  std::memset(put(to, text), ' ', width - text.size());
  return to + width;
}

// What a character of a text is to a writer: 0 itself, 1 refused, above: to be written in another way. Texts are ASCII
// where nobody has checked that they are UTF-8.
using Classes = std::array<uint8_t, 256>;

constexpr Classes classes(std::string_view special, size_t limit) {
  Classes out{};
  for (size_t c = 0; c < 32; ++c) out[c] = 1;
  for (size_t c = limit; c < 256; ++c) out[c] = 1;
  for (const char c : special) out[static_cast<unsigned char>(c)] = static_cast<uint8_t>(c);
  return out;
}

constexpr Classes kXmlText = classes("&<>", 128);
constexpr Classes kXmlAttribute = classes("&<>\"", 128);
constexpr Classes kJsonText = classes("\"\\\b\f\n\r\t", 128);
constexpr Classes kJsonUtf8 = classes("\"\\\b\f\n\r\t", 256);

[[noreturn]] inline void refuseCharacter(char c) {
  throw Failure("character " + std::to_string(static_cast<unsigned char>(c)) + " has no place in a text");
}

inline std::string_view reference(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    default:
      return "&quot;";
  }
}

// At most six bytes for each of the text.
inline char *putXml(char *to, std::string_view text, const Classes &kinds = kXmlText) {
  for (const char c : text) {
    const uint8_t kind = kinds[static_cast<unsigned char>(c)];
    *to = c;
    if (kind == 0) {
      ++to;
    } else if (kind == 1) {
      refuseCharacter(c);
    } else {
      to = put(to, reference(c));
    }
  }
  return to;
}

inline char *putEscape(char *to, char c) {
  constexpr std::string_view from = "\b\f\n\r\t";
  *to++ = '\\';
  const size_t at = from.find(c);
  *to++ = at == std::string_view::npos ? c : "bfnrt"[at];
  return to;
}

// A JSON string with its quotes; at most two bytes for each of the text, and two.
inline char *putJson(char *to, std::string_view text, const Classes &kinds = kJsonText) {
  *to++ = '"';
  for (const char c : text) {
    const uint8_t kind = kinds[static_cast<unsigned char>(c)];
    *to = c;
    if (kind == 0) {
      ++to;
    } else if (kind == 1) {
      refuseCharacter(c);
    } else {
      to = putEscape(to, c);
    }
  }
  *to++ = '"';
  return to;
}

}  // namespace bench

// characters.h: positions in UTF-8, counted in characters. A character is a code point: a letter with a
// combining accent behind it is two. The text has been checked (Call::utf8).
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace cvt::functions {

// The most that a position or a number of characters can be.
inline constexpr int kMostCharacters = 999'999'999;

inline bool startsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

inline size_t characters(std::string_view text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), startsCharacter));
}

// Bytes of the first so many characters, or of the whole text when it has fewer.
inline size_t bytesOf(std::string_view text, size_t count) {
  size_t at = 0;
  while (at < text.size()) {
    if (startsCharacter(text[at]) && count-- == 0) break;
    ++at;
  }
  return at;
}

// Bytes in front of the last so many characters; 0 when the text has no more.
inline size_t bytesBeforeLast(std::string_view text, size_t count) {
  size_t at = text.size();
  while (at > 0 && count > 0) {
    if (startsCharacter(text[--at])) --count;
  }
  return at;
}

}  // namespace cvt::functions

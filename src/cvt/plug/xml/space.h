// space.h: white space of XML, and what psSpace makes of it.
#pragma once

#include <string>
#include <string_view>

#include "records.h"

namespace cvt::xml {

inline bool blank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Without the white space at both ends.
inline std::string_view trimmed(std::string_view text) {
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

// The value of a text. room: where it is made, when it is no part of the text.
inline std::string_view spaced(std::string_view text, Space space, std::string &room) {
  if (space == Space::Preserve) return text;
  const std::string_view inner = trimmed(text);
  if (space == Space::Trim) return inner;
  room.clear();
  for (const char c : inner) {
    if (!blank(c)) {
      room += c;
    } else if (room.back() != ' ') {
      room += ' ';
    }
  }
  return room;
}

}  // namespace cvt::xml

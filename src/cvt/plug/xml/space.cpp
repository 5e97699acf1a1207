#include "space.h"

namespace cvt::xml {

namespace {

bool blank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view spaced(std::string_view text, Space space, std::string &room) {
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

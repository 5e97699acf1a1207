#include "text.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace tool {
namespace {

constexpr std::string_view kHex = "0123456789abcdef";
constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

uint8_t byteAt(std::string_view bytes, size_t i) {
  return static_cast<uint8_t>(bytes[i]);
}

bool within(uint8_t byte, int low, int high) {
  return byte >= low && byte <= high;
}

// Length of the UTF-8 sequence at i, 0 when it is malformed. What the second byte may be depends on the
// first.
size_t sequence(std::string_view bytes, size_t i) {
  const uint8_t lead = byteAt(bytes, i);
  if (lead < 0x80) return 1;
  const size_t size = within(lead, 0xc2, 0xdf)   ? 2
                      : within(lead, 0xe0, 0xef) ? 3
                      : within(lead, 0xf0, 0xf4) ? 4
                                                 : 0;
  if (size == 0 || i + size > bytes.size()) return 0;
  const int low = lead == 0xe0 ? 0xa0 : lead == 0xf0 ? 0x90 : 0x80;
  const int high = lead == 0xed ? 0x9f : lead == 0xf4 ? 0x8f : 0xbf;
  if (!within(byteAt(bytes, i + 1), low, high)) return 0;
  for (size_t n = 2; n < size; ++n) {
    if (!within(byteAt(bytes, i + n), 0x80, 0xbf)) return 0;
  }
  return size;
}

void appendByte(std::string &out, uint8_t byte) {
  out += kHex[byte >> 4];
  out += kHex[byte & 0xf];
}

void appendEscape(std::string &out, uint8_t c) {
  switch (c) {
    case '"':
      out += "\\\"";
      return;
    case '\\':
      out += "\\\\";
      return;
    case '\n':
      out += "\\n";
      return;
    case '\r':
      out += "\\r";
      return;
    case '\t':
      out += "\\t";
      return;
    default:
      out += "\\u00";
      appendByte(out, c);
  }
}

// U+0080 to U+009F, C2 80 to C2 9F, are control characters too.
bool isC1(std::string_view utf8, size_t i) {
  return byteAt(utf8, i) == 0xc2 && byteAt(utf8, i + 1) < 0xa0;
}

bool isControl(std::string_view utf8, size_t i) {
  return byteAt(utf8, i) < 0x20 || byteAt(utf8, i) == 0x7f || isC1(utf8, i);
}

std::array<int8_t, 256> base64Values() {
  std::array<int8_t, 256> values{};
  values.fill(-1);
  for (size_t i = 0; i < kBase64.size(); ++i) values[byteAt(kBase64, i)] = static_cast<int8_t>(i);
  return values;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
  for (size_t i = 0; i < bytes.size();) {
    const size_t size = sequence(bytes, i);
    if (size == 0) return false;
    i += size;
  }
  return true;
}

void appendJsonString(std::string &out, std::string_view utf8) {
  out += '"';
  for (size_t i = 0; i < utf8.size(); ++i) {
    const uint8_t c = byteAt(utf8, i);
    if (c < 0x20 || c == '"' || c == '\\' || c == 0x7f) {
      appendEscape(out, c);
    } else if (isC1(utf8, i)) {
      appendEscape(out, byteAt(utf8, ++i));
    } else {
      out += utf8[i];
    }
  }
  out += '"';
}

std::string printable(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const size_t size = sequence(text, 0);
    const std::string_view bytes = text.substr(0, std::max<size_t>(size, 1));
    if (size > 0 && !isControl(text, 0)) {
      out += bytes;
    } else {
      for (size_t i = 0; i < bytes.size(); ++i) appendByte(out += "\\x", byteAt(bytes, i));
    }
    text.remove_prefix(bytes.size());
  }
  return out;
}

void appendHex(std::string &out, std::string_view bytes) {
  for (size_t i = 0; i < bytes.size(); ++i) appendByte(out, byteAt(bytes, i));
}

void appendBase64(std::string &out, std::string_view bytes) {
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const size_t have = bytes.size() - i;
    const uint32_t group = static_cast<uint32_t>(byteAt(bytes, i)) << 16 |
                           (have > 1 ? static_cast<uint32_t>(byteAt(bytes, i + 1)) << 8 : 0) |
                           (have > 2 ? static_cast<uint32_t>(byteAt(bytes, i + 2)) : 0);
    out += kBase64[group >> 18];
    out += kBase64[group >> 12 & 63];
    out += have > 1 ? kBase64[group >> 6 & 63] : '=';
    out += have > 2 ? kBase64[group & 63] : '=';
  }
}

std::optional<std::string> decodeBase64(std::string_view text) {
  static const std::array<int8_t, 256> values = base64Values();
  if (text.size() % 4 != 0) return std::nullopt;
  const size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  std::string out;
  uint32_t group = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const int value = i + padding < text.size() ? values[byteAt(text, i)] : 0;
    if (value < 0) return std::nullopt;
    group = group << 6 | static_cast<uint32_t>(value);
    if (i % 4 != 3) continue;
    for (const int shift : {16, 8, 0}) out += static_cast<char>(group >> shift & 0xff);
  }
  out.resize(out.size() - padding);
  return out;
}

}  // namespace tool

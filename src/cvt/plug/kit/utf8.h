// utf8.h: UTF-8 one character at a time, strictly.
#pragma once

#include <cstddef>
#include <cstdint>

namespace cvt::kit {

struct Utf8Char {
  uint32_t code;
  int length;  // bytes; 0: no character; -1: the input ends inside one
};

// The character at the start of n > 0 bytes. Overlong forms, surrogates and anything above 10FFFF are none.
inline Utf8Char utf8Char(const char *in, size_t n) {
  const auto byte = [in](size_t i) { return static_cast<unsigned char>(in[i]); };
  const uint32_t lead = byte(0);
  if (lead < 0x80) return {lead, 1};
  if (lead < 0xC2 || lead > 0xF4) return {0, 0};
  const size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  uint32_t code = lead & (0x7FU >> length);
  for (size_t i = 1; i < length; ++i) {
    if (i >= n) return {0, -1};
    if ((byte(i) & 0xC0) != 0x80) return {0, 0};
    code = code << 6 | (byte(i) & 0x3FU);
    // The second byte decides whether the form is overlong, a surrogate or too large.
    if (i == 1 && length == 3 && (code < 0x20 || (code >= 0x360 && code <= 0x37F))) return {0, 0};
    if (i == 1 && length == 4 && (code < 0x10 || code > 0x10F)) return {0, 0};
  }
  return {code, static_cast<int>(length)};
}

// Writes the character; returns its length. `out` has room for 4 bytes.
inline size_t putUtf8(uint32_t code, char *out) {
  const auto put = [out](size_t i, uint32_t value) { out[i] = static_cast<char>(value); };
  if (code < 0x80) {
    put(0, code);
    return 1;
  }
  if (code < 0x800) {
    put(0, 0xC0 | code >> 6);
    put(1, 0x80 | (code & 0x3F));
    return 2;
  }
  if (code < 0x10000) {
    put(0, 0xE0 | code >> 12);
    put(1, 0x80 | (code >> 6 & 0x3F));
    put(2, 0x80 | (code & 0x3F));
    return 3;
  }
  put(0, 0xF0 | code >> 18);
  put(1, 0x80 | (code >> 12 & 0x3F));
  put(2, 0x80 | (code >> 6 & 0x3F));
  put(3, 0x80 | (code & 0x3F));
  return 4;
}

}  // namespace cvt::kit

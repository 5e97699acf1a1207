// bytes.h: tests over short texts, eight or sixteen bytes at a time.
//
// A text of eight bytes or more is covered by whole words, the last of which may overlap the one before; a
// shorter one by two overlapping halves, or by its first, middle and last byte.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace cvt::kit {

inline constexpr uint64_t kOnes = 0x0101010101010101U;
inline constexpr uint64_t kHighBits = 0x8080808080808080U;

inline uint64_t loadWord(const char *in) {
  uint64_t word;
  std::memcpy(&word, in, sizeof word);
  return word;
}

inline uint64_t loadHalf(const char *in) {
  uint32_t half;
  std::memcpy(&half, in, sizeof half);
  return half;
}

// The bytes of a text of 1 to 3, some of them twice: the first, the middle, the last.
inline uint64_t loadFew(const char *in, size_t n) {
  const auto byte = [in](size_t i) { return uint64_t{static_cast<unsigned char>(in[i])}; };
  return byte(0) | byte(n / 2) << 8 | byte(n - 1) << 16;
}

// Copies a text that is short more often than not: without a call up to sixteen bytes.
inline void copyShort(char *out, const char *in, size_t n) {
  if (n > 16) {
    std::memcpy(out, in, n);
  } else if (n >= 8) {
    const uint64_t first = loadWord(in);
    const uint64_t last = loadWord(in + n - 8);
    std::memcpy(out, &first, 8);
    std::memcpy(out + n - 8, &last, 8);
  } else if (n >= 4) {
    const auto first = static_cast<uint32_t>(loadHalf(in));
    const auto last = static_cast<uint32_t>(loadHalf(in + n - 4));
    std::memcpy(out, &first, 4);
    std::memcpy(out + n - 4, &last, 4);
  } else if (n > 0) {
    const uint64_t few = loadFew(in, n);
    out[0] = static_cast<char>(few);
    out[n / 2] = static_cast<char>(few >> 8);
    out[n - 1] = static_cast<char>(few >> 16);
  }
}

// n bytes `byte`, few more often than not: without a call up to sixteen.
inline void fillShort(char *out, char byte, size_t n) {
  const uint64_t word = kOnes * static_cast<unsigned char>(byte);
  if (n > 16) {
    std::memset(out, byte, n);
  } else if (n >= 8) {
    std::memcpy(out, &word, 8);
    std::memcpy(out + n - 8, &word, 8);
  } else if (n >= 4) {
    std::memcpy(out, &word, 4);
    std::memcpy(out + n - 4, &word, 4);
  } else if (n > 0) {
    out[0] = out[n / 2] = out[n - 1] = byte;
  }
}

// Whether two texts of one length, short more often than not, are the same: without a call up to sixteen bytes.
inline bool equalShort(const char *a, const char *b, size_t n) {
  if (n > 16) return std::memcmp(a, b, n) == 0;
  if (n >= 8) return ((loadWord(a) ^ loadWord(b)) | (loadWord(a + n - 8) ^ loadWord(b + n - 8))) == 0;
  if (n >= 4) return ((loadHalf(a) ^ loadHalf(b)) | (loadHalf(a + n - 4) ^ loadHalf(b + n - 4))) == 0;
  return n == 0 || loadFew(a, n) == loadFew(b, n);
}

// Two words at once.
using Words [[gnu::vector_size(16)]] = uint64_t;

inline Words loadWords(const char *in) {
  Words words;
  std::memcpy(&words, in, sizeof words);
  return words;
}

// Whether bad(word) & kHighBits is 0 for the bytes of the text, a word or two of which it is given; a byte decides for
// itself. `neutral` is a byte for which it is 0, for words that are not full.
template <class Bad>
[[gnu::always_inline]] inline bool noneOf(const char *in, size_t n, unsigned char neutral, Bad bad) {
  if (n >= 16) {
    Words found{};
    for (size_t i = 0; i + 16 < n; i += 16) found |= bad(loadWords(in + i));
    found |= bad(loadWords(in + n - 16));
    return ((found[0] | found[1]) & kHighBits) == 0;
  }
  uint64_t found = 0;
  if (n >= 8) {
    found = bad(loadWord(in)) | bad(loadWord(in + n - 8));
  } else if (n >= 4) {
    found = bad(loadHalf(in) | loadHalf(in + n - 4) << 32);
  } else if (n > 0) {
    found = bad(loadFew(in, n) | kOnes * neutral << 24);
  }
  return (found & kHighBits) == 0;
}

// All bytes below 0x80.
inline bool isAscii(const char *in, size_t n) {
  return noneOf(in, n, 0, [](auto word) { return word; });
}

// All bytes printable ASCII: 0x20 to 0x7E.
inline bool isPrintable(const char *in, size_t n) {
  return noneOf(in, n, ' ', [](auto word) {
    // Below a blank the difference borrows into the high bit; above a tilde the sum carries into it. A borrow
    // that reaches the next byte comes from one that is found anyway.
    return word | (word - kOnes * 0x20) | (word + kOnes);
  });
}

// The high bit of each byte that is `byte`, up to the first such byte; 0 when there is none.
inline uint64_t equals(uint64_t word, unsigned char byte) {
  const uint64_t other = word ^ (kOnes * byte);
  return (other - kOnes) & ~other & kHighBits;
}

// All bytes printable ASCII, and none of & < > ": text of XML as it stands, also in attributes.
[[gnu::always_inline]] inline bool isPlainXml(const char *in, size_t n) {
  return noneOf(in, n, ' ', [](auto word) {
    // < and > differ in one bit, and so do & and ": each pair is one comparison. A byte that is equal becomes 0, and
    // borrows into its high bit; of others with that bit, the byte itself has it.
    const auto angle = (word | kOnes * 0x02) ^ (kOnes * '>');
    const auto quote = (word | kOnes * 0x04) ^ (kOnes * '&');
    return word | (word - kOnes * 0x20) | (word + kOnes) | (angle - kOnes) | (quote - kOnes);
  });
}

// Length of the printable ASCII at the start that stands for itself in an XML text: up to any of < & ] and other bytes,
// and to the last seven bytes of the input, at which nobody looks.
inline size_t plainTextEnd(const char *in, size_t n) {
  size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    const uint64_t word = loadWord(in + i);
    const uint64_t ends = (word | (word - kOnes * 0x20) | (word + kOnes) | equals(word, '<') |
                           equals(word, '&') | equals(word, ']')) &
                          kHighBits;
    if (ends != 0) return i + static_cast<size_t>(std::countr_zero(ends)) / 8;
  }
  return i;
}

// All bytes 0 to 9.
inline bool isDigits(const char *in, size_t n) {
  return noneOf(in, n, '0', [](auto word) {
    const auto values = word ^ (kOnes * '0');  // digits become 0 .. 9
    return values | (values + kOnes * 0x76);
  });
}

// Length of the text without the bytes `pad` at its end.
inline size_t trimmedEnd(const char *in, size_t n, char pad) {
  const uint64_t pads = kOnes * static_cast<unsigned char>(pad);
  while (n >= 8) {
    const uint64_t other = loadWord(in + n - 8) ^ pads;
    if (other != 0) return n - static_cast<size_t>(std::countl_zero(other)) / 8;
    n -= 8;
  }
  while (n > 0 && in[n - 1] == pad) --n;
  return n;
}

// Number of bytes `pad` at the start of the text.
inline size_t countStart(const char *in, size_t n, char pad) {
  const uint64_t pads = kOnes * static_cast<unsigned char>(pad);
  size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    const uint64_t other = loadWord(in + i) ^ pads;
    if (other != 0) return i + static_cast<size_t>(std::countr_zero(other)) / 8;
  }
  while (i < n && in[i] == pad) ++i;
  return i;
}

}  // namespace cvt::kit

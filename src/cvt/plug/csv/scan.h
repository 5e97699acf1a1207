// scan.h: finds the next byte that means something - a separator, a quote, a line end - sixty-four bytes at a
// time. What was found in a block is kept as one bit a byte, so that short fields of the same block cost a
// shift and a count each.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "kit/bytes.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace cvt::csv {

// A few bytes to look for, all of them ASCII.
struct Marks {
  static constexpr size_t kMost = 8;
  unsigned char bytes[kMost] = {};
  size_t count = 0;
  unsigned char other = 0;  // an ASCII byte that is none of them

  void add(char byte) {
    const auto mark = static_cast<unsigned char>(byte);
    if (!has(byte)) bytes[count++] = mark;
    while (has(static_cast<char>(other))) ++other;
  }
  bool has(char byte) const {
    return std::find(bytes, bytes + count, static_cast<unsigned char>(byte)) != bytes + count;
  }
  // No byte of the text is one of them.
  bool absentIn(std::string_view text) const { return absentIn(text, 0); }

  // Nor is any byte of it above ASCII.
  bool absentInAscii(std::string_view text) const { return absentIn(text, ~uint64_t{0}); }

 private:
  bool absentIn(std::string_view text, uint64_t otherwise) const {
    return kit::noneOf(text.data(), text.size(), other, [this, otherwise](auto word) {
      auto found = word & otherwise;
      for (size_t i = 0; i < count; ++i) {
        const auto apart = word ^ (kit::kOnes * bytes[i]);
        found |= (apart - kit::kOnes) & ~apart;
      }
      return found;
    });
  }
};

inline constexpr size_t kBlock = 64;

// What a block holds: bit i for byte i.
struct Bits {
  uint64_t marks;
  uint64_t high;  // bytes that are not ASCII
};

inline Bits bitsPortable(const Marks &marks, const char *block) {
  static constexpr uint64_t kLow = ~kit::kHighBits;
  static constexpr uint64_t kGather = 0x0102040810204080U;
  Bits bits{0, 0};
  for (size_t i = 0; i < kBlock; i += 8) {
    const uint64_t word = kit::loadWord(block + i);
    uint64_t found = 0;
    for (size_t k = 0; k < marks.count; ++k) {
      const uint64_t apart = word ^ (kit::kOnes * marks.bytes[k]);
      found |= ~(((apart & kLow) + kLow) | apart | kLow);
    }
    bits.marks |= ((found >> 7) * kGather >> 56) << i;
    bits.high |= (((word & kit::kHighBits) >> 7) * kGather >> 56) << i;
  }
  return bits;
}

class Scanner {
 public:
  Scanner(const Marks &marks, const char *end) : m_marks(marks), m_end(end), m_block(end) {
#ifdef __SSE2__
    for (size_t i = 0; i < Marks::kMost; ++i) {
      m_wide[i] = _mm_set1_epi8(static_cast<char>(marks.bytes[i < marks.count ? i : 0]));
    }
#endif
  }

  // The first mark from there on, or the end.
  const char *find(const char *from) {
    const auto skip = static_cast<size_t>(from - m_block);
    if (skip < kBlock) {
      const uint64_t rest = m_bits >> skip;
      if (rest != 0) return from + std::countr_zero(rest);
      from = static_cast<size_t>(m_end - m_block) > kBlock ? m_block + kBlock : m_end;
    }
    return findFrom(from);
  }

  // Whether a byte that is not ASCII was seen.
  bool high() const {
    return m_high;
  }

 private:
  const char *findFrom(const char *from) {
    while (from < m_end) {
      const Bits bits = load(from);
      m_block = from;
      m_bits = bits.marks;
      m_high = m_high || bits.high != 0;
      if (m_bits != 0) return from + std::countr_zero(m_bits);
      from += kBlock;
    }
    m_block = m_end;
    m_bits = 0;
    return m_end;
  }

  Bits load(const char *from) const {
    const auto left = static_cast<size_t>(m_end - from);
    if (left >= kBlock) return bits(from);
    char tail[kBlock];
    std::memcpy(tail, from, left);
    std::memset(tail + left, m_marks.other, kBlock - left);
    return bits(tail);
  }

#ifdef __SSE2__
  Bits bits(const char *block) const {
    Bits all{0, 0};
    for (size_t i = 0; i < kBlock; i += 16) {
      const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(block + i));
      __m128i found =
          _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, m_wide[0]), _mm_cmpeq_epi8(bytes, m_wide[1])),
                       _mm_or_si128(_mm_cmpeq_epi8(bytes, m_wide[2]), _mm_cmpeq_epi8(bytes, m_wide[3])));
      for (size_t k = 4; k < m_marks.count; ++k) {
        found = _mm_or_si128(found, _mm_cmpeq_epi8(bytes, m_wide[k]));
      }
      all.marks |= static_cast<uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(found))) << i;
      all.high |= static_cast<uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(bytes))) << i;
    }
    return all;
  }
  __m128i m_wide[Marks::kMost];
#else
  Bits bits(const char *block) const {
    return bitsPortable(m_marks, block);
  }
#endif

  const Marks &m_marks;
  const char *m_end;
  const char *m_block;
  uint64_t m_bits = 0;
  bool m_high = false;
};

}  // namespace cvt::csv

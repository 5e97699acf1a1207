// cvt_bits.h: a set of small numbers that answers which is the next one. Private.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "cvt_heap.h"

namespace cvt {

// One bit a number; above every 64 words one word that says which of them are not empty, and so on: each call looks
// at a word of each of the few levels, however many numbers there are.
class Bits {
 public:
  static constexpr size_t kNone = SIZE_MAX;

  // Makes room for the numbers below nEnd, which is what the heap is asked for; the other calls ask for nothing.
  void reserve(size_t nEnd) {
    for (Words &words : m_levels) {
      nEnd = (nEnd + kBits - 1) / kBits;
      if (words.size() < nEnd) words.resize(nEnd);
    }
  }

  void insert(size_t n) {
    for (Words &words : m_levels) {
      uint64_t &word = words[n / kBits];
      const bool bEmpty = word == 0;
      word |= bit(n);
      if (!bEmpty) return;
      n /= kBits;
    }
  }

  void erase(size_t n) {
    for (Words &words : m_levels) {
      uint64_t &word = words[n / kBits];
      word &= ~bit(n);
      if (word != 0) return;
      n /= kBits;
    }
  }

  // The least number of the set from n on; kNone without one.
  size_t next(size_t n) const {
    for (size_t nLevel = 0; nLevel < kLevels; ++nLevel) {
      const Words &words = m_levels[nLevel];
      if (n / kBits >= words.size()) return kNone;
      const uint64_t rest = words[n / kBits] >> (n % kBits);
      if (rest != 0) return descend(n + lowest(rest), nLevel);
      n = n / kBits + 1;
    }
    return kNone;
  }

  void clear() {
    for (Words &words : m_levels) words.clear();
  }

 private:
  using Words = Vector<uint64_t>;
  static constexpr size_t kBits = 64;
  static constexpr size_t kLevels = 6;  // enough for every positive int

  static uint64_t bit(size_t n) { return uint64_t{1} << (n % kBits); }
  static size_t lowest(uint64_t word) { return static_cast<size_t>(std::countr_zero(word)); }

  // The least number of the set below position n of a level.
  size_t descend(size_t n, size_t nLevel) const {
    while (nLevel-- > 0) n = n * kBits + lowest(m_levels[nLevel][n]);
    return n;
  }

  std::array<Words, kLevels> m_levels;
};

}  // namespace cvt

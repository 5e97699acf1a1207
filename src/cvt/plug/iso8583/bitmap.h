// bitmap.h: which data elements a message has: up to three bitmaps of 64 bits, the first bit in front.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <string_view>

namespace cvt::iso8583 {

inline constexpr size_t kMaxBitmaps = 3;
inline constexpr size_t kBitmapBits = 64;

struct Bits {
  std::array<uint64_t, kMaxBitmaps> words{};

  static constexpr uint64_t mask(int number) {
    return uint64_t{1} << (63 - (static_cast<unsigned>(number) - 1) % kBitmapBits);
  }
  static constexpr size_t word(int number) { return (static_cast<size_t>(number) - 1) / kBitmapBits; }

  bool has(int number) const { return (words[word(number)] & mask(number)) != 0; }
  void set(int number) { words[word(number)] |= mask(number); }
  void clear(int number) { words[word(number)] &= ~mask(number); }

  // The lowest number in it; 0: none.
  int first() const {
    for (size_t i = 0; i < kMaxBitmaps; ++i) {
      if (words[i] != 0) return static_cast<int>(i * kBitmapBits) + std::countl_zero(words[i]) + 1;
    }
    return 0;
  }

  // Those that the other one lacks.
  Bits without(const Bits &other) const {
    Bits left;
    for (size_t i = 0; i < kMaxBitmaps; ++i) left.words[i] = words[i] & ~other.words[i];
    return left;
  }
};

// Calls visit(number) for each bit of a word, ascending. The first number of the word is base + 1.
template <class Visit>
void forEachBit(uint64_t word, int base, Visit visit) {
  while (word != 0) {
    const int bit = std::countl_zero(word);
    word &= ~(uint64_t{1} << (63 - bit));
    visit(base + bit + 1);
  }
}

// The digits of a hexadecimal bitmap: '0' and 'A' as they are written in the message.
struct HexDigits {
  char zero;
  char a;
};

// 16 hexadecimal digits to a bitmap; the position of what is none, or -1.
int readHex(const char *in, HexDigits digits, uint64_t &word);
void writeHex(uint64_t word, HexDigits digits, char *out);

uint64_t readBinary(const char *in);
void writeBinary(uint64_t word, char *out);

// 64 characters 0 and 1.
void writeBits(uint64_t word, char *out);

// A value to a bitmap: 64 characters 0 and 1, or 16 hexadecimal digits. False when it is neither.
bool valueToWord(std::string_view value, bool bits, uint64_t &word);

}  // namespace cvt::iso8583

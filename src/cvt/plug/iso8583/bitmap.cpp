#include "bitmap.h"

namespace cvt::iso8583 {

namespace {

constexpr size_t kHexDigits = 16;
constexpr HexDigits kUpper{'0', 'A'};
constexpr HexDigits kLower{'0', 'a'};

// 0 .. 15, or 16.
unsigned digitOf(char c, HexDigits digits) {
  const unsigned number = static_cast<unsigned char>(c) - unsigned{static_cast<unsigned char>(digits.zero)};
  if (number <= 9) return number;
  const unsigned letter = static_cast<unsigned char>(c) - unsigned{static_cast<unsigned char>(digits.a)};
  return letter <= 5 ? letter + 10 : 16;
}

}  // namespace

int readHex(const char *in, HexDigits digits, uint64_t &word) {
  uint64_t read = 0;
  for (size_t i = 0; i < kHexDigits; ++i) {
    const unsigned digit = digitOf(in[i], digits);
    if (digit > 15) return static_cast<int>(i);
    read = read << 4 | digit;
  }
  word = read;
  return -1;
}

void writeHex(uint64_t word, HexDigits digits, char *out) {
  for (size_t i = 0; i < kHexDigits; ++i) {
    const auto digit = static_cast<unsigned>(word >> (60 - 4 * i) & 15);
    out[i] = static_cast<char>(digit < 10 ? static_cast<unsigned char>(digits.zero) + digit
                                          : static_cast<unsigned char>(digits.a) + digit - 10);
  }
}

uint64_t readBinary(const char *in) {
  uint64_t word = 0;
  for (size_t i = 0; i < 8; ++i) word = word << 8 | static_cast<unsigned char>(in[i]);
  return word;
}

void writeBinary(uint64_t word, char *out) {
  for (size_t i = 0; i < 8; ++i) out[i] = static_cast<char>(word >> (56 - 8 * i));
}

void writeBits(uint64_t word, char *out) {
  for (size_t i = 0; i < kBitmapBits; ++i) out[i] = static_cast<char>('0' + (word >> (63 - i) & 1));
}

bool valueToWord(std::string_view value, bool bits, uint64_t &word) {
  if (!bits) {
    return value.size() == kHexDigits &&
           (readHex(value.data(), kUpper, word) < 0 || readHex(value.data(), kLower, word) < 0);
  }
  if (value.size() != kBitmapBits) return false;
  uint64_t read = 0;
  for (const char c : value) {
    if (c != '0' && c != '1') return false;
    read = read << 1 | static_cast<uint64_t>(c - '0');
  }
  word = read;
  return true;
}

}  // namespace cvt::iso8583

#include "frame.h"

namespace cvt::iso8583 {

using kit::Fault;
using kit::quoted;

namespace {

size_t power(size_t base, size_t exponent) {
  size_t result = 1;
  for (size_t i = 0; i < exponent; ++i) result *= base;
  return result;
}

size_t readDigits(const Frame &frame, std::string_view bytes, size_t offset) {
  size_t count = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    const unsigned digit =
        static_cast<unsigned char>(bytes[i]) - unsigned{static_cast<unsigned char>(frame.zero)};
    if (digit > 9) {
      throw Fault(offset + i, "a length of " + std::to_string(frame.digits) + " digits",
                  quoted(bytes.data(), bytes.size()), "See psPrefix and psPrefixCoding");
    }
    count = count * 10 + digit;
  }
  return count;
}

size_t readBcd(const Frame &frame, std::string_view bytes, size_t offset) {
  size_t count = 0;
  bool good = true;
  for (const char c : bytes) {
    const size_t high = static_cast<unsigned char>(c) >> 4;
    const size_t low = static_cast<unsigned char>(c) & 15;
    good = good && high <= 9 && low <= 9;
    count = count * 100 + high * 10 + low;
  }
  if (frame.digits % 2 != 0) {
    const bool left = frame.coding == PrefixCoding::BcdLeft;
    good = good && (left ? count % 10 == 0 : count < power(10, frame.digits));
    if (left) count /= 10;
  }
  if (good) return count;
  throw Fault(offset, "a length of " + std::to_string(frame.digits) + " bcd digits",
              quoted(bytes.data(), bytes.size()), "See psPrefix and psPrefixCoding");
}

size_t readBinary(std::string_view bytes) {
  size_t count = 0;
  for (const char c : bytes) count = count << 8 | static_cast<unsigned char>(c);
  return count;
}

}  // namespace

size_t prefixBytes(PrefixCoding coding, size_t digits) {
  return coding == PrefixCoding::Text ? digits : (digits + 1) / 2;
}

size_t prefixLimit(PrefixCoding coding, size_t digits) {
  const size_t limit =
      coding == PrefixCoding::Binary ? power(256, prefixBytes(coding, digits)) - 1 : power(10, digits) - 1;
  return limit < static_cast<size_t>(kMaxLength) ? limit : static_cast<size_t>(kMaxLength);
}

size_t readPrefix(const Frame &frame, Input &in) {
  const size_t offset = in.offset();
  const std::string_view bytes = in.take(frame.bytes);
  if (frame.coding == PrefixCoding::Text) return readDigits(frame, bytes, offset);
  if (frame.coding == PrefixCoding::Binary) return readBinary(bytes);
  return readBcd(frame, bytes, offset);
}

void writePrefix(const Frame &frame, size_t count, char *out) {
  if (frame.coding == PrefixCoding::BcdLeft && frame.digits % 2 != 0) count *= 10;
  for (size_t i = frame.bytes; i-- > 0;) {
    if (frame.coding == PrefixCoding::Text) {
      out[i] = static_cast<char>(static_cast<unsigned char>(frame.zero) + count % 10);
      count /= 10;
    } else if (frame.coding == PrefixCoding::Binary) {
      out[i] = static_cast<char>(count & 255);
      count >>= 8;
    } else {
      out[i] = static_cast<char>(count / 10 % 10 << 4 | count % 10);
      count /= 100;
    }
  }
}

}  // namespace cvt::iso8583

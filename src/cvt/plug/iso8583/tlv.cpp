#include "tlv.h"

#include <cstring>

#include "content.h"
#include "kit/fault.h"

namespace cvt::iso8583 {

using kit::Fault;
using kit::quoted;

namespace {

constexpr size_t kMaxTag = 4;
constexpr size_t kMaxLengthBytes = 3;

size_t readLength(Input &in) {
  const size_t offset = in.offset();
  const auto first = static_cast<unsigned char>(in.take(1)[0]);
  if (first < 0x80) return first;
  const size_t bytes = first & 0x7FU;
  if (bytes == 0 || bytes > kMaxLengthBytes) {
    const char found = static_cast<char>(first);
    throw Fault(offset, "a length of BER-TLV: one byte, or 81, 82 or 83 and as many bytes",
                quoted(&found, 1));
  }
  size_t length = 0;
  for (const char c : in.take(bytes)) length = length << 8 | static_cast<unsigned char>(c);
  const size_t needed = length < 0x80 ? 0 : length < 0x100 ? 1 : length < 0x10000 ? 2 : 3;
  if (needed == bytes) return length;
  throw Fault(offset, "the shortest form of the length " + std::to_string(length),
              std::to_string(bytes + 1) + " bytes");
}

size_t lengthBytes(size_t length) {
  return length < 0x80 ? 1 : length < 0x100 ? 2 : length < 0x10000 ? 3 : 4;
}

void writeLength(size_t length, char *out) {
  const size_t bytes = lengthBytes(length);
  if (bytes == 1) {
    *out = static_cast<char>(length);
    return;
  }
  *out = static_cast<char>(0x80 + bytes - 1);
  for (size_t i = bytes - 1; i > 0; --i) {
    out[i] = static_cast<char>(length & 255);
    length >>= 8;
  }
}

}  // namespace

size_t tagLength(std::string_view bytes) {
  if (bytes.empty() || bytes[0] == '\0') return 0;
  if ((static_cast<unsigned char>(bytes[0]) & 0x1F) != 0x1F) return 1;
  for (size_t i = 1; i < kMaxTag && i < bytes.size(); ++i) {
    if (static_cast<unsigned char>(bytes[i]) < 0x80) return i + 1;
  }
  return 0;
}

bool isTag(std::string_view bytes) {
  return !bytes.empty() && tagLength(bytes) == bytes.size();
}

Tlv readTlv(Input &in) {
  const char *const start = in.at();
  const size_t offset = in.offset();
  const size_t length = tagLength(in.rest());
  if (length == 0) {
    throw Fault(offset, "a tag of BER-TLV of 1 to 4 bytes",
                quoted(start, in.left() < kMaxTag ? in.left() : kMaxTag));
  }
  const std::string_view name = in.take(length);
  uint32_t tag = 0;
  for (const char c : name) tag = tag << 8 | static_cast<unsigned char>(c);
  const size_t bytes = readLength(in);
  const size_t valueOffset = in.offset();
  const std::string_view value = in.take(bytes);
  return {tag, name, offset, valueOffset, value, {start, static_cast<size_t>(in.at() - start)}};
}

TagBytes tagBytes(uint32_t tag) {
  TagBytes made{};
  for (int shift = 24; shift >= 0; shift -= 8) {
    if (tag >> shift == 0) continue;
    made.bytes[made.length++] = static_cast<char>(tag >> shift);
  }
  return made;
}

uint32_t tagOf(std::string_view digits) {
  if (digits.size() % 2 != 0 || digits.size() > 2 * kMaxTag) return 0;
  uint32_t tag = 0;
  for (const char c : digits) {
    const unsigned digit = hexDigit(c);
    if (digit > 15) return 0;
    tag = tag << 4 | digit;
  }
  const TagBytes bytes = tagBytes(tag);
  return 2 * bytes.length == digits.size() && isTag(bytes.view()) ? tag : 0;
}

std::string tagText(uint32_t tag) {
  const TagBytes bytes = tagBytes(tag);
  std::string text(2 * bytes.length, '\0');
  bytesToHex(bytes.view(), text.data());
  return text;
}

void putTagAndLength(uint32_t tag, size_t from, kit::Output &out) {
  const TagBytes name = tagBytes(tag);
  const size_t length = out.offset() - from;
  if (length > 0xFFFFFF) throw Fault(from, "at most 16777215 bytes in a tag", std::to_string(length));
  const size_t front = name.length + lengthBytes(length);
  out.reserve(front);
  char *const start = out.at(from);
  std::memmove(start + front, start, length);
  std::memcpy(start, name.bytes, name.length);
  writeLength(length, start + name.length);
}

}  // namespace cvt::iso8583

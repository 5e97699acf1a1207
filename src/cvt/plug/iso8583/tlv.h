// tlv.h: one tag, length and value of BER-TLV (ISO/IEC 8825-1): tags of up to 4 bytes, lengths of up to 3.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "input.h"
#include "kit/output.h"

namespace cvt::iso8583 {

struct Tlv {
  uint32_t tag;
  std::string_view tagBytes;
  size_t offset;  // of the tag
  size_t valueOffset;
  std::string_view value;
  std::string_view whole;
};

// Bytes of the tag that starts there; 0: no tag of at most 4 bytes starts there.
size_t tagLength(std::string_view bytes);

// Whether the bytes are one tag and nothing else.
bool isTag(std::string_view bytes);

// Throws Fault for what is none, is cut, or has a length that could be written shorter.
Tlv readTlv(Input &in);

// The bytes of a tag.
struct TagBytes {
  char bytes[4];
  size_t length;
  std::string_view view() const { return {bytes, length}; }
};
TagBytes tagBytes(uint32_t tag);

// The tag that these hexadecimal digits are; 0: they are none.
uint32_t tagOf(std::string_view digits);

// The tag in hexadecimal digits, for messages.
std::string tagText(uint32_t tag);

// Writes tag and length of a value that was written at `from` already, in front of it. Throws Fault.
void putTagAndLength(uint32_t tag, size_t from, kit::Output &out);

}  // namespace cvt::iso8583

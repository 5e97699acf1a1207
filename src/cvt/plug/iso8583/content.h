// content.h: one field between its bytes and its value.
#pragma once

#include <string_view>

#include "kit/bytes.h"
#include "kit/output.h"
#include "kit/values.h"
#include "plan.h"

namespace cvt::iso8583 {

// The length of a content is counted in characters (text), digits (bcd) or bytes (binary, hex).
inline constexpr size_t kUnknown = static_cast<size_t>(-1);

// Bytes that a content of that length takes.
size_t wireBytes(const Content &content, size_t length);

// Throws Fault when the field must not have that length.
void checkLength(const Element &field, size_t length, size_t offset);

// Whether nothing but the bytes says how many digits there are.
bool countsOnlyBytes(const Element &field);

// Whether the bytes are pads that nTrim takes off, and nothing else. A number keeps its last zero.
bool isOnlyPads(const Content &content, std::string_view bytes);

// The value of the bytes, in memory of the store. length: kUnknown when only the bytes are counted. offset:
// where the bytes stand. Throws Fault.
std::string_view readContent(const Element &field, std::string_view bytes, size_t length, size_t offset,
                             kit::Store &store);

// Writes the value, without a prefix; the length of the content. Throws Fault.
size_t writeContent(const Element &field, std::string_view value, kit::Output &out);

// Whether these are the field's bytes and its value at once. False says nothing: the functions above find out.
inline bool isPlain(const Element &field, std::string_view bytes) {
  if (field.plain == Plain::No || bytes.size() != field.frame.most) return false;
  if (field.plain == Plain::Printable) return kit::isPrintable(bytes.data(), bytes.size());
  return kit::isDigits(bytes.data(), bytes.size()) &&
         (!field.content.date.has_value() || field.content.date->check(bytes) == nullptr);
}

// The letter of a value's hexadecimal digit, and its number: 0 .. 15, or 16 for what is none.
inline constexpr char kHexLetters[] = "0123456789ABCDEF";
unsigned hexDigit(char c);

// Bytes to hexadecimal digits, twice as many.
void bytesToHex(std::string_view bytes, char *out);

}  // namespace cvt::iso8583

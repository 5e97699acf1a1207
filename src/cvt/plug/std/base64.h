// base64.h: Base64 of RFC 4648, strictly: no line breaks, nothing behind the padding, no bits that are lost.
#pragma once

#include <cstddef>
#include <string_view>

namespace cvt::functions {

enum class Base64 {
  Plain,  // "+" and "/", filled up with "=" to whole groups of four
  Url,    // "-" and "_", not filled up
};

size_t base64Length(size_t bytes, Base64 form);
void encodeBase64(std::string_view bytes, Base64 form, char *out);  // `out` has room for base64Length

// Bytes that a text without faults stands for.
size_t base64Bytes(std::string_view text, Base64 form);

struct Base64Result {
  const char *expected = nullptr;  // null: fine
  size_t at = 0;                   // offset of what is wrong
  size_t length = 0;               // bytes that were written
};

// `out` has room for base64Bytes.
Base64Result decodeBase64(std::string_view text, Base64 form, char *out);

}  // namespace cvt::functions

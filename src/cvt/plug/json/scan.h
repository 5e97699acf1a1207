// scan.h: where the tokens of a JSON text begin.
//
//   {"a": [1, "x"]}        tokens: { "a" : [ 1 , "x" ] }
//
// simdjson finds them: dozens of bytes at a time, with whatever the processor has, it tells what is inside of
// strings from what is not, and checks the UTF-8. What the tokens are, and whether they may stand there, is
// left to the Cursor. A text that it refuses, and one that ends before the buffer does, is scanned byte by
// byte, which tells where the damage is; so is everything on a processor that simdjson has no instructions for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace cvt::json {

// What ended the tokens before the text did.
struct Damage {
  const char *expected = nullptr;  // null: nothing
  const char *advice = nullptr;
  size_t at = 0;
};

struct Tokens {
  std::string_view text;
  const uint32_t *begin = nullptr;  // offsets of the tokens in the text, in order
  const uint32_t *end = nullptr;  // points to one more offset: where the last token ends, but for white space
  Damage damage;
};

// The tokens of the text; they live until the next scan. whole: of all of it; otherwise of the value that it
// begins with. REQUIRES: text.size() < 4 GiB.
Tokens scan(std::string_view text, bool whole);

// The same, byte by byte.
Tokens scanBytes(std::string_view text, bool whole);

// Gives memory back that an unusually large text has taken.
void trimScanner();

}  // namespace cvt::json

// escape.h: a value as a string of a JSON text.
#pragma once

#include <string_view>

#include "kit/bytes.h"
#include "kit/output.h"

namespace cvt::json {

// Printable ASCII without quotes and backslashes: most values are nothing else.
[[gnu::always_inline]] inline bool isPlain(std::string_view value) {
  return kit::noneOf(value.data(), value.size(), ' ', [](auto word) {
    const auto quote = word ^ (kit::kOnes * '"');
    const auto backslash = word ^ (kit::kOnes * '\\');
    return word | (word - kit::kOnes * 0x20) | (quote - kit::kOnes) | (backslash - kit::kOnes);
  });
}

// Writes the UTF-8 value in quotes: quotes, backslashes and control characters as escapes; with ascii all
// characters above ASCII too. Throws Fault for damaged UTF-8.
void putString(kit::Output &out, std::string_view value, bool ascii);

}  // namespace cvt::json

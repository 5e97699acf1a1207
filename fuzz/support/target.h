// target.h: what every target shares.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

// A target: called with one input after another in one process. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace fuzz {

inline std::string_view text(const uint8_t *data, size_t size) {
  return {reinterpret_cast<const char *>(data), size};
}

// Whether one of these stands somewhere in the text.
bool holdsAny(std::string_view text, std::initializer_list<std::string_view> marks);

// Ends the process with that line unless it holds: the input at hand is then kept as a crash.
void require(bool holds, const std::string &what);

}  // namespace fuzz

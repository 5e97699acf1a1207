// escape.h: a value as a string of a JSON text.
#pragma once

#include <string_view>

#include "kit/output.h"

namespace cvt::json {

// Writes the UTF-8 value in quotes: quotes, backslashes and control characters as escapes; with ascii all
// characters above ASCII too. Throws Fault for damaged UTF-8.
void putString(kit::Output &out, std::string_view value, bool ascii);

}  // namespace cvt::json

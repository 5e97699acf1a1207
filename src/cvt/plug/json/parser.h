// parser.h: takes a JSON text into a message's values.
#pragma once

#include "kit/plugin.h"
#include "plan.h"

namespace cvt::json {

// Reads the text at call.from: the rest of the buffer, or, without nWhole, its first value and the white space
// behind it. Throws Fault for what is no JSON and for what the definition does not allow.
void parseText(const Plan &plan, kit::ParseCall &call);

}  // namespace cvt::json

// generator.h: writes a message's values as a JSON text.
#pragma once

#include "kit/plugin.h"
#include "plan.h"

namespace cvt::json {

// Writes straight into the output. Throws Fault for values that the definition does not allow.
void generateText(const Plan &plan, kit::GenerateCall &call);

}  // namespace cvt::json

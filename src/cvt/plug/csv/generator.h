// generator.h: values into texts.
#pragma once

#include "kit/plugin.h"
#include "plan.h"

namespace cvt::csv {

// Throws Fault.
void generateText(const Plan &plan, kit::GenerateCall &call);

}  // namespace cvt::csv

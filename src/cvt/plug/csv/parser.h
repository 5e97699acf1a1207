// parser.h: texts into values.
#pragma once

#include "kit/plugin.h"
#include "plan.h"

namespace cvt::csv {

// Reads the message from call.from on and sets call.end. Throws Fault.
void parseText(const Plan &plan, kit::ParseCall &call);

}  // namespace cvt::csv

// walk.h: the two directions over a plan.
#pragma once

#include "kit/plugin.h"
#include "plan.h"

namespace cvt::iso8583 {

// Reads the message from call.from on and sets call.end. Throws Fault.
void parse(const Plan &plan, kit::ParseCall &call);

// Writes the message. Throws Fault.
void generate(const Plan &plan, kit::GenerateCall &call);

}  // namespace cvt::iso8583

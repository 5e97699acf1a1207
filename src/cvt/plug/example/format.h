// format.h: the two directions of the format.
#pragma once

#include "kit/plugin.h"
#include "plan.h"

namespace cvt::example {

// Both throw Fault; the call's Path then says where.
void parseMessage(const Plan &plan, kit::ParseCall &call);
void generateMessage(const Plan &plan, kit::GenerateCall &call);

}  // namespace cvt::example

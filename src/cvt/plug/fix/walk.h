// walk.h: the two directions over a plan.
#pragma once

#include "kit/plugin.h"
#include "plan.h"

namespace cvt::fix {

// Reads the message from call.from on and sets call.end. Throws Fault.
void parse(const Plan &plan, kit::ParseCall &call);

// Writes the message. Throws Fault.
void generate(const Plan &plan, kit::GenerateCall &call);

// The hidden slot's value for a message whose last separator was missing.
inline constexpr const char *kLastMissing = "0";

// The list with the hidden slot behind the message's own; null when the list is too short for it.
inline bool hasHiddenSlot(const Plan &plan, const ValueList *values) {
  return plan.lastSlot >= 0 && plan.lastSlot < values->nNow && plan.lastSlot < values->nMax;
}

}  // namespace cvt::fix

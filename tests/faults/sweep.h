// sweep.h: a host's life again and again, each time with another call that fails.
#pragma once

#include "host.h"
#include "trigger.h"

namespace faults {

// Counts the calls of a life, then lets them fail one after the other, each in a life of its own: all of them
// when CVT2_FAULT_POINTS is "all", else as many as it says, or kShallow, evenly spread. A bad outcome is a
// failure of the test. Prints the RESULT line of that name.
//   bForEver  also every call behind the one that fails does
constexpr long kShallow = 100;
void sweep(const char *psName, Trigger &trigger, Work &work, bool bForEver);

}  // namespace faults

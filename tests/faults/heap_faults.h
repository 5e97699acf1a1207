// heap_faults.h: a heap that has nothing left when it is told so, for the program and all that it loads.
#pragma once

#include "trigger.h"

namespace faults {
extern Trigger g_heap;  // malloc, calloc, realloc, aligned memory, operator new

// Whether it counts: a checker may have put a heap of its own in its place.
bool countsHeap();
}  // namespace faults

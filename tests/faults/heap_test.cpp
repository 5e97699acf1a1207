// Every allocation of a host's life fails once, and fails from there on: the call that needs it returns its
// documented failure, or the process ends with one line. Nothing is wrong afterwards.
#include <gtest/gtest.h>

#include "heap_faults.h"
#include "host.h"
#include "sweep.h"

namespace {

TEST(HeapFaults, EachAllocationFailsOnce) {
  faults::Work work;
  faults::sweep("heap_once", faults::g_heap, work, false);
}

TEST(HeapFaults, EachAllocationFailsAndAllBehindIt) {
  faults::Work work;
  faults::sweep("heap_for_ever", faults::g_heap, work, true);
}

}  // namespace

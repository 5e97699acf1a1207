// heap_use.h: how much of the heap, and of the machine's memory, is in use.
#pragma once

#include <malloc.h>
#include <unistd.h>

#include <fstream>

#include "allocator.h"

#if TEST_SANITIZED
extern "C" size_t __sanitizer_get_current_allocated_bytes();  // gcc has no header for it
#endif

namespace test {

// Valgrind's allocator does not say what it has given out.
inline bool heapIsMeasured() {
  return !isWatched();
}
// In a test that needs it.
#define REQUIRE_HEAP_USE() \
  if (!test::heapIsMeasured()) GTEST_SKIP() << "valgrind's allocator does not say what is in use"

// In bytes, both. heapInUse REQUIRES: heapIsMeasured().
inline long heapInUse() {
#if TEST_SANITIZED
  return static_cast<long>(__sanitizer_get_current_allocated_bytes());
#else
  const auto info = mallinfo2();
  return static_cast<long>(info.uordblks + info.hblkhd);
#endif
}

inline long resident() {
  std::ifstream in("/proc/self/statm");
  long nSize = 0;
  long nPages = 0;
  in >> nSize >> nPages;
  return nPages * sysconf(_SC_PAGESIZE);
}

}  // namespace test

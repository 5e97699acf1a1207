// heap_count.h: how often a program asks the heap for memory. Include it in one source file of the program:
// its allocation functions then stand before the C library's, also for the shared objects that it loads.
#pragma once

#include <cstddef>

#include "allocator.h"

namespace test {
inline long g_nAllocations = 0;
inline size_t g_nLargest = 0;  // bytes asked for at once

inline void countAllocation(size_t nSize) {
  ++g_nAllocations;
  if (nSize > g_nLargest) g_nLargest = nSize;
}
}  // namespace test

#if !TEST_SANITIZED
extern "C" {
void *__libc_malloc(size_t);
void *__libc_calloc(size_t, size_t);
void *__libc_realloc(void *, size_t);
__attribute__((visibility("default"))) void *malloc(size_t nSize) {
  test::countAllocation(nSize);
  return __libc_malloc(nSize);
}
__attribute__((visibility("default"))) void *calloc(size_t nNum, size_t nSize) {
  test::countAllocation(nNum * nSize);
  return __libc_calloc(nNum, nSize);
}
__attribute__((visibility("default"))) void *realloc(void *p, size_t nSize) {
  test::countAllocation(nSize);
  return __libc_realloc(p, nSize);
}
}
#endif

namespace test {

// Whether allocations arrive at the functions above; those of a sanitizer and of valgrind take their place.
inline bool heapCountWorks() {
  return TEST_SANITIZED == 0 && !isWatched();
}
// In a test or a fixture's SetUp that needs it.
#define REQUIRE_HEAP_COUNT() \
  if (!test::heapCountWorks()) GTEST_SKIP() << "another allocator stands before the counting one"

// Allocations while `work` runs. REQUIRES: heapCountWorks().
template <class Work>
long allocations(Work work) {
  const long nBefore = g_nAllocations;
  work();
  return g_nAllocations - nBefore;
}

// Bytes of the largest allocation while `work` runs. REQUIRES: heapCountWorks().
template <class Work>
size_t largestAllocation(Work work) {
  g_nLargest = 0;
  work();
  return g_nLargest;
}

}  // namespace test

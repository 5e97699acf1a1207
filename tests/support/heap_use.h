// heap_use.h: how much of the heap, and of the machine's memory, is in use.
#pragma once

#include <malloc.h>
#include <unistd.h>

#include <fstream>

#if defined(__has_feature)
#define TEST_HAS_FEATURE(feature) __has_feature(feature)
#else
#define TEST_HAS_FEATURE(feature) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || TEST_HAS_FEATURE(address_sanitizer)
#define TEST_SANITIZED 1
extern "C" size_t __sanitizer_get_current_allocated_bytes();  // gcc has no header for it
#else
#define TEST_SANITIZED 0
#endif

namespace test {

// In bytes, both.
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

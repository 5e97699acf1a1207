// allocator.h: whose allocator the program runs on. Tests that measure the heap ask here whether there is anything to
// measure.
#pragma once

#include <cstdlib>
#include <cstring>

#if defined(__has_feature)
#define TEST_HAS_FEATURE(feature) __has_feature(feature)
#else
#define TEST_HAS_FEATURE(feature) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || TEST_HAS_FEATURE(address_sanitizer)
#define TEST_SANITIZED 1
#else
#define TEST_SANITIZED 0
#endif

namespace test {

// Under valgrind, whose allocator stands before all others.
inline bool isWatched() {
  const char *const psPreloaded = std::getenv("LD_PRELOAD");
  return psPreloaded != nullptr && std::strstr(psPreloaded, "vgpreload") != nullptr;
}

}  // namespace test

#include "footprint.h"

#include <malloc.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#if defined(__has_feature)
#define LIFE_HAS_FEATURE(feature) __has_feature(feature)
#else
#define LIFE_HAS_FEATURE(feature) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || LIFE_HAS_FEATURE(address_sanitizer)
#define LIFE_SANITIZED 1
extern "C" size_t __sanitizer_get_current_allocated_bytes();  // gcc has no header for it
#else
#define LIFE_SANITIZED 0
#endif

namespace life {

namespace {

// Under valgrind, which says so, the heap is its own.
bool isWatched() {
  return std::getenv("CVT2_LIFE_WATCHED") != nullptr;
}

long heapInUse() {
#if LIFE_SANITIZED
  return static_cast<long>(__sanitizer_get_current_allocated_bytes());
#else
  const auto info = mallinfo2();
  return static_cast<long>(info.uordblks + info.hblkhd);
#endif
}

long resident() {
  std::ifstream in("/proc/self/statm");
  long nSize = 0;
  long nPages = 0;
  in >> nSize >> nPages;
  return nPages * sysconf(_SC_PAGESIZE);
}

// The descriptor of the listing itself does not count.
int descriptors() {
  int nCount = -1;
  for (auto it = std::filesystem::directory_iterator("/proc/self/fd"); it != end(it); ++it) ++nCount;
  return nCount;
}

}  // namespace

long heapBound() {
  return LIFE_SANITIZED == 0 ? 2 * 1024 : 4 * 1024;
}

bool measuresHeap() {
  return !isWatched();
}
bool measuresResident() {
  return !isWatched() && LIFE_SANITIZED == 0;
}

Footprint footprint() {
  Footprint now;
  if (measuresHeap()) now.nHeap = heapInUse();
  if (measuresResident()) now.nResident = resident();
  now.nDescriptors = descriptors();
  return now;
}

std::string Footprint::text() const {
  const auto amount = [](bool bMeasured, long n) { return bMeasured ? std::to_string(n) : "not measured"; };
  return "heap " + amount(measuresHeap(), nHeap) + ", resident " + amount(measuresResident(), nResident) +
         ", descriptors " + std::to_string(nDescriptors);
}

}  // namespace life

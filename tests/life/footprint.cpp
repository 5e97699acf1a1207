#include "footprint.h"

#include <filesystem>

#include "heap_use.h"

namespace life {

namespace {

// The descriptor of the listing itself does not count.
int descriptors() {
  int nCount = -1;
  for (auto it = std::filesystem::directory_iterator("/proc/self/fd"); it != end(it); ++it) ++nCount;
  return nCount;
}

}  // namespace

long heapBound() {
  return TEST_SANITIZED == 0 ? 2 * 1024 : 4 * 1024;
}

bool measuresHeap() {
  return test::heapIsMeasured();
}
bool measuresResident() {
  return !test::isWatched() && TEST_SANITIZED == 0;
}

Footprint footprint() {
  Footprint now;
  if (measuresHeap()) now.nHeap = test::heapInUse();
  if (measuresResident()) now.nResident = test::resident();
  now.nDescriptors = descriptors();
  return now;
}

std::string Footprint::text() const {
  const auto amount = [](bool bMeasured, long n) { return bMeasured ? std::to_string(n) : "not measured"; };
  return "heap " + amount(measuresHeap(), nHeap) + ", resident " + amount(measuresResident(), nResident) +
         ", descriptors " + std::to_string(nDescriptors);
}

}  // namespace life

#include "measure.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <utility>

namespace growth {

double cpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

long heapBytes() {
  const auto info = mallinfo2();
  return static_cast<long>(info.uordblks + info.hblkhd);
}

long residentKilobytes() {
  std::ifstream in("/proc/self/statm");
  long size = 0;
  long pages = 0;
  in >> size >> pages;
  return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace growth

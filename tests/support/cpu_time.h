// cpu_time.h: how long a process has worked. A busy machine does not fail a test that measures it.
#pragma once

#include <time.h>

namespace test {

// Of all threads of the process, since it began.
inline double cpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

}  // namespace test

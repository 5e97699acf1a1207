#include "stopwatch.h"

#include <ctime>

namespace tool {
namespace {

uint64_t nanoseconds(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<uint64_t>(now.tv_sec) * 1000000000 + static_cast<uint64_t>(now.tv_nsec);
}

// From one look to the next, with nothing between them, in the middle of many.
uint64_t costOf(Clock clock) {
  constexpr int kLooks = 10001;
  Quantiles costs;
  uint64_t last = clock();
  for (int i = 0; i < kLooks; ++i) {
    const uint64_t now = clock();
    costs.add(now - last);
    last = now;
  }
  return costs.percentile(50);
}

}  // namespace

uint64_t wallClock() {
  return nanoseconds(CLOCK_MONOTONIC);
}

uint64_t cpuClock() {
  return nanoseconds(CLOCK_THREAD_CPUTIME_ID);
}

Stopwatch::Stopwatch(Clock clock) : m_clock(clock), m_clockCost(costOf(clock)) {}

void Stopwatch::end() {
  uint64_t whole = 0;
  for (size_t i = 0; i < kStages; ++i) {
    const uint64_t net = m_laps[i] > m_clockCost ? m_laps[i] - m_clockCost : 0;
    m_stages[i].add(net);
    whole += net;
  }
  m_whole.add(whole);
}

}  // namespace tool

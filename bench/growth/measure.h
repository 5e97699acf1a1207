// measure.h: what a process costs.
#pragma once

#include <vector>

namespace growth {

// Seconds of CPU time that the process has used.
double cpuSeconds();

// Bytes of the heap in use, and kilobytes of memory that the process keeps resident.
long heapBytes();
long residentKilobytes();

double median(std::vector<double> values);

// Seconds of CPU time that one call of `work` takes: the median of rounds of so many calls that a round can be
// measured.
template <class Work>
double secondsEach(Work work) {
  constexpr double kRound = 0.02;
  constexpr int kRounds = 15;
  const auto round = [&](long calls) {
    const double start = cpuSeconds();
    for (long i = 0; i < calls; ++i) work();
    return cpuSeconds() - start;
  };
  long calls = 1;
  while (round(calls) < kRound) calls *= 2;
  std::vector<double> rounds;
  for (int i = 0; i < kRounds; ++i) rounds.push_back(round(calls) / static_cast<double>(calls));
  return median(rounds);
}

}  // namespace growth

// bench_report.h: what a bench has found out, for people and for programs.
#pragma once

#include <cstdint>
#include <string>

#include "bench.h"

namespace tool {

struct BenchReport {
  const BenchResult &result;
  uint64_t read;        // messages of the inputs
  uint64_t refused;     // of these, when they were read or later
  uint64_t heldBytes;   // in memory for the bench
  uint64_t peakMemory;  // of the process, in bytes
};

std::string benchTable(const BenchReport &report);

// One line, with its line feed.
std::string benchJson(const BenchReport &report);

// Of this process, in bytes; 0 when the system does not tell.
uint64_t peakMemory();

}  // namespace tool

#include "bench_report.h"

#include <cinttypes>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <utility>

namespace tool {
namespace {

using Json = nlohmann::ordered_json;
using Rows = std::vector<std::pair<std::string, const Quantiles *>>;

constexpr double kMega = 1e6;
constexpr double kSecond = 1e9;  // in nanoseconds

// The stages that could be told apart, then all of them together.
Rows rowsOf(const BenchResult &result) {
  const Stopwatch &stopwatch = result.stopwatch;
  Rows rows{{"parse", &stopwatch.stage(Stage::parse)}};
  if (result.bConvertApart) rows.emplace_back("convert", &stopwatch.stage(Stage::convert));
  rows.emplace_back(result.bConvertApart ? "generate" : "convert+generate",
                    &stopwatch.stage(Stage::generate));
  rows.emplace_back("release", &stopwatch.stage(Stage::release));
  rows.emplace_back("whole", &stopwatch.whole());
  return rows;
}

double ratio(double part, double all) {
  return all > 0 ? part / all : 0;
}

double number(uint64_t value) {
  return static_cast<double>(value);
}

double perCpuSecond(const BenchResult &result) {
  return ratio(result.perSecond(result.stopwatch.whole().count()), result.cpuShare());
}

// Rounded to a tenth: more digits would promise too much.
double tenths(double value) {
  return std::round(value * 10) / 10;
}

__attribute__((format(printf, 2, 3))) void append(std::string &out, const char *format, ...) {
  char line[200];
  va_list args;
  va_start(args, format);
  std::vsnprintf(line, sizeof line, format, args);
  va_end(args);
  out += line;
}

void appendFlow(std::string &out, const char *name, const BenchResult &result, uint64_t bytes) {
  const uint64_t messages = result.stopwatch.whole().count();
  append(out, "%-10s %.1f bytes/message, %.1f MB/s\n", name, ratio(number(bytes), number(messages)),
         result.perSecond(bytes) / kMega);
}

Json flow(const BenchResult &result, uint64_t bytes) {
  return {{"bytes", bytes}, {"mb_per_second", tenths(result.perSecond(bytes) / kMega)}};
}

}  // namespace

std::string benchTable(const BenchReport &report) {
  const BenchResult &result = report.result;
  const Quantiles &whole = result.stopwatch.whole();
  std::string out;
  append(out, "messages   %" PRIu64 " read, %" PRIu64 " refused, %" PRIu64 " measured\n", report.read,
         report.refused, whole.count());
  append(out, "time       %.3f s, of it on the CPU %.3f s\n", number(result.wall) / kSecond,
         number(result.cpu) / kSecond);
  append(out, "rate       %.0f messages/s, %.0f in a second on the CPU\n", result.perSecond(whole.count()),
         perCpuSecond(result));
  appendFlow(out, "input", result, result.inputBytes);
  appendFlow(out, "output", result, result.outputBytes);
  append(out, "memory     %.1f MB at the peak, of it messages held for the bench %.1f MB\n",
         number(report.peakMemory) / kMega, number(report.heldBytes) / kMega);
  append(out, "clock      %" PRIu64 " ns a look, taken off each stage\n\n", result.stopwatch.clockCost());
  append(out, "%-16s %10s %8s %10s %10s %10s\n", "stage", "ns/message", "share", "p50", "p99", "max");
  for (const auto &[name, times] : rowsOf(result)) {
    append(out, "%-16s %10.0f %6.1f %% %10" PRIu64 " %10" PRIu64 " %10" PRIu64 "\n", name.c_str(),
           times->mean(), 100 * ratio(times->mean(), whole.mean()), times->percentile(50),
           times->percentile(99), times->max());
  }
  append(out, "%-16s %10.0f %6.1f %%\n", "on the CPU", whole.mean() * result.cpuShare(),
         100 * result.cpuShare());
  return out;
}

std::string benchJson(const BenchReport &report) {
  const BenchResult &result = report.result;
  const Quantiles &whole = result.stopwatch.whole();
  Json stages;
  for (const auto &[name, times] : rowsOf(result)) {
    stages[name] = {{"mean", tenths(times->mean())},
                    {"p50", times->percentile(50)},
                    {"p99", times->percentile(99)},
                    {"max", times->max()}};
  }
  const Json json = {{"read", report.read},
                     {"refused", report.refused},
                     {"measured", whole.count()},
                     {"seconds", number(result.wall) / kSecond},
                     {"cpu_seconds", number(result.cpu) / kSecond},
                     {"messages_per_second", tenths(result.perSecond(whole.count()))},
                     {"messages_per_cpu_second", tenths(perCpuSecond(result))},
                     {"input", flow(result, result.inputBytes)},
                     {"output", flow(result, result.outputBytes)},
                     {"ns_per_message", stages},
                     {"cpu_ns_per_message", tenths(whole.mean() * result.cpuShare())},
                     {"clock_ns", result.stopwatch.clockCost()},
                     {"peak_memory_bytes", report.peakMemory},
                     {"held_bytes", report.heldBytes}};
  return json.dump() + "\n";
}

// getrusage would count what the process was before it became this program.
uint64_t peakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    uint64_t kilobytes = 0;
    if (word == "VmHWM:" && status >> kilobytes) return kilobytes * 1024;
  }
  return 0;
}

}  // namespace tool

#include "bench.h"

#include <algorithm>
#include <limits>

#include "convert_border.h"
#include "log.h"
#include "signals.h"

namespace tool {
namespace {

constexpr double kNanoseconds = 1e9;  // in a second
constexpr double kWarmUp = 0.1;       // of the time that is measured
constexpr uint64_t kNoBound = std::numeric_limits<uint64_t>::max();

}  // namespace

double BenchResult::perSecond(uint64_t amount) const {
  const uint64_t time = stopwatch.whole().sum();
  return time == 0 ? 0 : static_cast<double>(amount) * kNanoseconds / static_cast<double>(time);
}

double BenchResult::cpuShare() const {
  return wall == 0 ? 0 : static_cast<double>(std::min(cpu, wall)) / static_cast<double>(wall);
}

Bench::Bench(const Options &options, Clock wall, Clock cpu)
    : m_options(options), m_wall(wall), m_cpu(cpu), m_parser(options), m_generator(options) {}

void Bench::take(const Frame &frame) {
  Held held{std::string(frame.data, frame.size), frame.offset, ++m_taken};
  const MessageHandle source = m_parser.parsed(frame);
  m_generator.converted(*source);
  m_heldBytes += held.bytes.size();
  m_held.push_back(std::move(held));
}

BenchResult Bench::measure() {
  const time_t loaded = gtLastLoadTime;
  const uint64_t messages = m_options.messages == 0 ? kNoBound : m_options.messages;
  BenchResult warm{Stopwatch(m_wall)};
  passes(warm, m_options.seconds * kWarmUp, messages);
  BenchResult result{Stopwatch(m_wall)};
  passes(result, m_options.seconds, messages);
  result.refused += warm.refused;
  if (gtLastLoadTime != loaded) {
    throw Failure(Exit::config, "the configuration was changed while it was measured; run bench again");
  }
  return result;
}

void Bench::passes(BenchResult &result, double seconds, uint64_t messages) {
  const ConvertBorder border(m_options.to, result.stopwatch);
  result.bConvertApart = border.stands();
  const auto limit = static_cast<uint64_t>(seconds * kNanoseconds);
  const uint64_t cpu = m_cpu();
  const uint64_t begin = m_wall();
  for (size_t i = 0; !m_held.empty() && result.wall < limit && result.stopwatch.whole().count() < messages;) {
    checkSignals();
    if (i >= m_held.size()) i = 0;
    if (stillGoes(m_held[i], result)) {
      ++i;
    } else {
      m_held.erase(m_held.begin() + static_cast<std::ptrdiff_t>(i));
    }
    result.wall = result.stopwatch.last() - begin;
  }
  result.cpu = m_cpu() - cpu;
}

bool Bench::stillGoes(const Held &held, BenchResult &result) {
  log::begin();
  try {
    convert(held, result);
    return true;
  } catch (const DataError &error) {
    const std::string text = "message " + std::to_string(held.number) + " at byte " +
                             std::to_string(held.offset) +
                             " went through once and then no more: " + error.what();
    if (!m_options.bKeepGoing) throw DataError(text);
    log::report(text);
    ++result.refused;
    return false;
  }
}

void Bench::convert(const Held &held, BenchResult &result) {
  m_room = held.bytes;
  const Frame frame{m_room.data(), m_room.size(), held.bytes, held.offset};
  Stopwatch &stopwatch = result.stopwatch;
  stopwatch.begin();
  MessageHandle source = m_parser.parsed(frame);
  stopwatch.lap(Stage::parse);
  Generated target = m_generator.converted(*source);
  stopwatch.lap(Stage::generate);
  target.message.reset();
  source.reset();
  stopwatch.lap(Stage::release);
  stopwatch.end();
  result.inputBytes += held.bytes.size();
  result.outputBytes += target.bytes.size();
}

}  // namespace tool

// stopwatch.h: how long the stages of a message take, the looks at the clock taken off.
#pragma once

#include <array>
#include <cstdint>

#include "quantiles.h"

namespace tool {

// Nanoseconds since any moment.
using Clock = uint64_t (*)();

uint64_t wallClock();
uint64_t cpuClock();  // of the calling thread

enum class Stage : size_t { parse, convert, generate, release };

class Stopwatch {
 public:
  // Finds out what a look at the clock costs.
  explicit Stopwatch(Clock clock);

  // A message begins; forgets the stages of one that did not come to its end.
  void begin() {
    m_laps = {};
    m_last = m_clock();
  }

  // That stage of it ends, and the next begins: one look at the clock.
  void lap(Stage stage) {
    const uint64_t now = m_clock();
    m_laps[static_cast<size_t>(stage)] += now - m_last;
    m_last = now;
  }

  // It has come to its end, and counts.
  void end();

  // What the last look at the clock showed.
  uint64_t last() const { return m_last; }

  // Of the messages that count. A stage that none of them went through has nothing but zeros.
  const Quantiles &stage(Stage stage) const { return m_stages[static_cast<size_t>(stage)]; }
  const Quantiles &whole() const { return m_whole; }

  uint64_t clockCost() const { return m_clockCost; }

 private:
  static constexpr size_t kStages = 4;

  Clock m_clock;
  uint64_t m_clockCost;
  uint64_t m_last = 0;
  std::array<uint64_t, kStages> m_laps{};
  std::array<Quantiles, kStages> m_stages;
  Quantiles m_whole;
};

}  // namespace tool

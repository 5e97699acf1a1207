// bench.h: messages held in memory and converted again and again, against the clock.
#pragma once

#include <string>
#include <vector>

#include "message.h"
#include "stopwatch.h"

namespace tool {

struct BenchResult {
  Stopwatch stopwatch;
  bool bConvertApart = false;  // else the stage generate holds the converting too
  uint64_t refused = 0;        // that went through once, and then no more
  uint64_t inputBytes = 0;     // of the messages that count
  uint64_t outputBytes = 0;
  uint64_t wall = 0;  // from the first message to the last, the bench's own work too; nanoseconds
  uint64_t cpu = 0;

  // What such an amount comes to in a second of the messages' time.
  double perSecond(uint64_t amount) const;

  // The share of the time that was spent on the CPU, 0 to 1.
  double cpuShare() const;
};

class Bench {
 public:
  explicit Bench(const Options &options, Clock wall = wallClock, Clock cpu = cpuClock);

  // Converts the message once and, when it went through, holds it. Throws DataError when it is refused.
  void take(const Frame &frame);

  size_t held() const { return m_held.size(); }
  uint64_t heldBytes() const { return m_heldBytes; }

  // Warms up for a tenth of --seconds, then measures: until --seconds are over, or --messages are done. A
  // message that is refused now is reported and left out from then on; without --keep-going it is thrown as a
  // DataError. Throws a configuration Failure when the configuration changes meanwhile.
  BenchResult measure();

 private:
  struct Held {
    std::string bytes;
    uint64_t offset;  // in its input
    uint64_t number;  // from 1, over all inputs
  };

  void passes(BenchResult &result, double seconds, uint64_t messages);
  bool stillGoes(const Held &held, BenchResult &result);
  void convert(const Held &held, BenchResult &result);

  const Options &m_options;
  Clock m_wall;
  Clock m_cpu;
  Parser m_parser;
  Generator m_generator;
  std::vector<Held> m_held;
  uint64_t m_heldBytes = 0;
  uint64_t m_taken = 0;
  std::string m_room;  // a message as a host would have it: just received, and writable
};

}  // namespace tool

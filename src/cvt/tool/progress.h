// progress.h: how far the run is, on a terminal, and how fast it was, at the end.
#pragma once

#include <chrono>
#include <cstdint>

namespace tool {

class Progress {
 public:
  Progress();

  void message();
  void refused();

  // Takes the line on the terminal away: another one is about to be written.
  void clear();

  // Writes the totals and messages per second when there is more than one message, or in any case.
  void total(bool bAnyCase);

  uint64_t messages() const { return m_messages; }
  uint64_t refusals() const { return m_refused; }

 private:
  using Clock = std::chrono::steady_clock;

  void show();

  const Clock::time_point m_begin = Clock::now();
  Clock::time_point m_nextShow;
  uint64_t m_messages = 0;
  uint64_t m_refused = 0;
  bool m_bTerminal;
  bool m_bShown = false;
};

}  // namespace tool

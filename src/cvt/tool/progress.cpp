#include "progress.h"

#include <unistd.h>

#include <cinttypes>
#include <cstdio>

#include "log.h"

namespace tool {
namespace {

constexpr std::chrono::milliseconds kInterval(250);
constexpr uint64_t kClockEvery = 64;  // messages between two looks at the clock

}  // namespace

Progress::Progress() : m_nextShow(m_begin + kInterval), m_bTerminal(isatty(STDERR_FILENO) == 1) {}

void Progress::message() {
  ++m_messages;
  if (m_bTerminal && m_messages % kClockEvery == 0) show();
}

void Progress::refused() {
  ++m_refused;
}

void Progress::show() {
  if (Clock::now() < m_nextShow) return;
  m_nextShow = Clock::now() + kInterval;
  std::fprintf(stderr, "\rcvt2: %" PRIu64 " messages", m_messages);
  m_bShown = true;
}

void Progress::clear() {
  if (m_bShown) std::fputs("\r\033[K", stderr);
  m_bShown = false;
}

void Progress::total(bool bAnyCase) {
  clear();
  if (m_messages < 2 && !bAnyCase) return;
  const double seconds = std::chrono::duration<double>(Clock::now() - m_begin).count();
  const double rate = seconds > 0 ? static_cast<double>(m_messages) / seconds : 0;
  char text[160];
  std::snprintf(text, sizeof text, "%" PRIu64 " message%s, %" PRIu64 " refused, %.3f s, %.0f messages/s",
                m_messages, m_messages == 1 ? "" : "s", m_refused, seconds, rate);
  log::say(text);
}

}  // namespace tool

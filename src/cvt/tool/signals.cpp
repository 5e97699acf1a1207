#include "signals.h"

#include <csignal>
#include <cstdlib>
#include <initializer_list>

namespace tool {
namespace {

volatile std::sig_atomic_t f_noted = 0;

void note(int signal) {
  f_noted = signal;
}

}  // namespace

void watchSignals() {
  struct sigaction action {};
  action.sa_handler = note;  // without SA_RESTART: a read that waits for input ends
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaction(signal, &action, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
}

void checkSignals() {
  if (f_noted != 0) throw Interrupted{f_noted};
}

void endBySignal(int signal) {
  std::signal(signal, SIG_DFL);
  std::raise(signal);
  std::abort();
}

}  // namespace tool

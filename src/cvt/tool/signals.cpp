#include "signals.h"

#include <fcntl.h>

#include <csignal>
#include <cstdlib>
#include <initializer_list>

namespace tool {
namespace {

volatile std::sig_atomic_t f_noted = 0;

void note(int signal) {
  f_noted = signal;
}

// A signal that is ignored stays so: nohup, or a shell that runs the command in the background, has seen to it.
void watch(int signal) {
  struct sigaction action {};
  if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) return;
  action = {};
  action.sa_handler = note;  // without SA_RESTART: a read that waits for input ends
  sigaction(signal, &action, nullptr);
}

}  // namespace

void watchSignals() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) watch(signal);
  std::signal(SIGPIPE, SIG_IGN);
}

void checkSignals() {
  if (f_noted != 0) throw Interrupted{f_noted};
}

int openWatched(const std::string &path, int flags) {
  checkSignals();
  return uninterrupted([&] { return open(path.c_str(), flags | O_CLOEXEC); });
}

void endBySignal(int signal) {
  std::signal(signal, SIG_DFL);
  std::raise(signal);
  std::abort();
}

}  // namespace tool

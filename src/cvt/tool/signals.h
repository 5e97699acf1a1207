// signals.h: an interrupted run ends like a failed one: files that are being written aside go first.
#pragma once

#include <cerrno>
#include <string>

namespace tool {

// A signal asked the process to end.
struct Interrupted {
  int signal;
};

// From now on SIGINT, SIGTERM and SIGHUP are only noted, unless they are ignored, and writing into a closed
// pipe is an error like any other.
void watchSignals();

// Throws Interrupted when one has been noted.
void checkSignals();

// What a system call returns, made again when a signal breaks it off. Throws Interrupted when that one is noted.
template <class Call>
auto uninterrupted(Call call) {
  for (;;) {
    const auto result = call();
    if (result >= 0 || errno != EINTR) return result;
    checkSignals();
  }
}

// open(), which may wait for the other end of a pipe. Throws Interrupted.
int openWatched(const std::string &path, int flags);

// Ends the process by the signal, as if it had never been watched.
[[noreturn]] void endBySignal(int signal);

}  // namespace tool

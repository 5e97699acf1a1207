// signals.h: an interrupted run ends like a failed one: files that are being written aside go first.
#pragma once

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

// Ends the process by the signal, as if it had never been watched.
[[noreturn]] void endBySignal(int signal);

}  // namespace tool

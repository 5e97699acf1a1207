// The command cvt2: parses, converts and generates messages with the library, and measures it.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <exception>

#include "library.h"
#include "log.h"
#include "options.h"
#include "signals.h"
#include "velutil.h"
#include "verbs.h"

// The library logs through the host's function when the host has one.
extern "C" __attribute__((visibility("default"))) int logInfo(int nLevel, const char *, const char *, int,
                                                              const char *, const char *psFormat, ...) {
  va_list args;
  va_start(args, psFormat);
  tool::log::take(nLevel, psFormat, args);
  va_end(args);
  return 0;
}

namespace tool {
namespace {

// A descriptor that is closed would be given to the first file opened, which then is read or written in its
// place. It is given to /dev/null instead, opened so that to use it fails.
void fillDescriptors() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(fd, F_GETFD) >= 0) continue;
    if (open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY) == fd) continue;
    throw Failure(Exit::io, std::string("cannot open /dev/null: ") + std::strerror(errno) +
                                "; do not close standard input, output or error");
  }
}

Exit runVerb(const Options &options) {
  log::setVerbosity(options.verbosity);
  watchSignals();
  const Library library(options.config);
  switch (options.verb) {
    case Verb::convert:
      return convert(options);
    case Verb::parse:
      return parse(options);
    case Verb::generate:
      return generate(options);
    case Verb::bench:
      return bench(options);
  }
  return Exit::internal;
}

Exit runCommand(int argc, char **argv) {
  try {
    fillDescriptors();
    return runVerb(readOptions(argc, argv));
  } catch (const Failure &failure) {
    log::report(failure.what());
    return failure.code();
  } catch (const std::exception &error) {
    log::report(std::string("internal error: ") + error.what());
    return Exit::internal;
  }
}

}  // namespace
}  // namespace tool

int main(int argc, char **argv) {
  try {
    return static_cast<int>(tool::runCommand(argc, argv));
  } catch (const tool::Interrupted &interrupted) {
    tool::endBySignal(interrupted.signal);
  }
}

// The command cvt2: parses, converts and generates messages with the library, and measures it.
#include <cstdarg>
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

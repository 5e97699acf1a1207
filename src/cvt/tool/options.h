// options.h: the command line.
#pragma once

#include <string>
#include <vector>

#include "framing.h"

namespace tool {

enum class Verb { convert, parse, generate, bench };

struct Options {
  Verb verb = Verb::convert;
  std::string config;   // directory or root file
  std::string message;  // empty: the pipeline, or the JSON line, names it
  std::string from;     // format ids
  std::string to;
  std::vector<std::string> inputs;  // "-": standard input
  Framing framing;
  Framing outFraming;
  std::string output;   // empty: standard output
  std::string rejects;  // empty: none
  bool bKeepGoing = false;
  bool bJson = false;
  bool bAll = false;
  size_t maxOutput = 0;
  double seconds = 0;     // to measure for
  uint64_t messages = 0;  // to measure at most; 0: any number
  int verbosity = 0;
};

// Reads the command line. Help and version are printed and end the process with 0. Throws a usage Failure.
Options readOptions(int argc, char **argv);

}  // namespace tool

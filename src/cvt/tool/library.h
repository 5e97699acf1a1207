// library.h: the library as the command uses it: started once, messages that release themselves, and failures
// that say what the library said.
#pragma once

#include <memory>
#include <string>

#include "cvt.h"
#include "error.h"

namespace tool {

struct FreeMessage {
  void operator()(InnerMessage *message) const { cvtFreeMessage(message); }
};
using MessageHandle = std::unique_ptr<InnerMessage, FreeMessage>;

// The library, started as long as it lives.
class Library {
 public:
  // Throws a configuration Failure that names the cause.
  explicit Library(const std::string &config);
  ~Library() { cvtEnd(); }
  Library(const Library &) = delete;
  Library &operator=(const Library &) = delete;
};

// The pipeline of a format id. Throw a usage Failure that lists the ids that there are when it is unknown or
// has no such chain.
const FormatInfo &parsePipeline(const std::string &formatId);
const FormatInfo &generatePipeline(const std::string &formatId);

// Throws a usage Failure that lists the message types that there are when it is unknown.
void checkMessageName(const std::string &name);
std::string knownMessages();

// The step with which the generate chain takes its message from a converter; null when it does not.
IdFunc *convertStep(const FormatInfo &pipeline);

// For a message that no converter takes to the format: the formats it can be converted to.
std::string knownTargets(const Msg &msg);

// The format ids whose generate chain converts, for error texts.
std::string convertingFormats();

// Ends the handling of a message: what the library logged since log::begin(), or `otherwise`. A failed reload
// of the configuration ends the run instead.
[[noreturn]] void refuse(const std::string &otherwise, const std::string &advice = "");

}  // namespace tool

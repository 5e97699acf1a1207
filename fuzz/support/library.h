// library.h: the library as the targets use it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config_tree.h"
#include "cvt.h"

namespace fuzz {

struct FreeMessage {
  void operator()(InnerMessage *message) const { cvtFreeMessage(message); }
};
using Message = std::unique_ptr<InnerMessage, FreeMessage>;

// The names of the project's plug-ins.
const std::vector<std::string> &allPlugins();

// A configuration in a temporary directory: plug-ins of the project, the folders Message, Convert, Id
// and IdInfo, and two pipelines: "fuzz" reads and writes, and "02" writes, a message as it is. The plug-ins
// stay in the process: a fuzzer counts what it covers by their addresses, and opening them again and again
// would take most of its time.
class Configuration : public test::ConfigTree {
 public:
  // Adds what the folders hold, each a configuration of the project: "examples/envelope". A target that starts the
  // library for each input names the plug-ins that it needs: their starts take most of its time.
  explicit Configuration(const std::vector<std::string> &folders,
                         const std::vector<std::string> &plugins = allPlugins());

  // Copies a file, or what a folder holds, from the project into a folder of the tree.
  Configuration &add(const std::string &from, const std::string &to);

  // Takes a folder's files out of the tree.
  Configuration &clear(const std::string &folder);

  // Starts the library on the tree; true when it started.
  bool start() { return cvtInit(arg()) == 0; }

 private:
  void addPipelines(const std::string &folder);

  std::string m_pipelines;
};

// What a file of the project holds.
std::string contentOf(const std::string &file);

// The names of all definitions that are loaded.
std::vector<std::string> definitions();

// Reads the bytes as a message of that name; null when they are refused. They must outlive the message.
Message parse(std::string name, std::string format, std::string &bytes);

// Writes a message as it is, in its own format; nothing when it is refused.
std::optional<std::string> generate(InnerMessage &message, size_t room = 256 * 1024);

// An empty message.
Message create(std::string name);

// Whether two lists hold the same values, and their loops the same repetitions.
bool equal(ValueList *one, ValueList *other);

// What is read must be written, and be read from there with the same values.
void expectRoundTrip(const std::string &name, std::string_view bytes);

// Makes, writes and reads a message of every definition that is loaded.
void useDefinitions();

}  // namespace fuzz

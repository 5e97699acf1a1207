// example_messages.cpp: bytes as messages of the definition of the plug-in example. What is read is written; that
// is read and written again with the same bytes. (Values differ once: an empty one is written as its default.)
#include "support/library.h"
#include "support/target.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({});
  static const bool started = [] {
    config.add("src/cvt/plug/example/samples/Message", "Message");
    return config.start();
  }();
  fuzz::require(started, "the library starts");
  std::string input(fuzz::text(data, size));
  const fuzz::Message first = fuzz::parse("Order", "fuzz", input);
  if (first == nullptr) return 0;
  std::optional<std::string> written = fuzz::generate(*first);
  fuzz::require(written.has_value(), "what was read is written");
  const fuzz::Message second = fuzz::parse("Order", "fuzz", *written);
  fuzz::require(second != nullptr, "what was written is read:\n" + *written);
  fuzz::require(fuzz::generate(*second) == written, "it is written again with the same bytes:\n" + *written);
  return 0;
}

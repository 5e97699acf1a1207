// iso_messages.cpp: bytes as messages of every definition of the format iso8583 that the project has. What is
// read is written with the same bytes.
#include "support/library.h"
#include "support/target.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({});
  static const bool started = [] {
    config.add("src/cvt/plug/iso8583/samples/Message", "Message");
    config.add("examples/iso8583/Message/IsoReversal.xml", "Message");
    return config.start();
  }();
  fuzz::require(started, "the library starts");
  for (const std::string &name : fuzz::definitions()) {
    std::string input(fuzz::text(data, size));
    const fuzz::Message message = fuzz::parse(name, "fuzz", input);
    if (message == nullptr) continue;
    const std::optional<std::string> written = fuzz::generate(*message, input.size());
    fuzz::require(written.has_value(), name + " writes what it has read");
    fuzz::require(input.rfind(*written, 0) == 0, name + " writes the bytes that it has read:\n" + *written);
  }
  return 0;
}

// fix_messages.cpp: bytes as messages of every definition of the format fix that the project has. What is
// read is written and read again.
#include "support/library.h"
#include "support/target.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({});
  static const bool started = [] {
    config.add("src/cvt/plug/fix/samples/Message", "Message");
    config.add("examples/nacha/Message/NachaFile.xml", "Message");
    config.add("examples/envelope/Message/LinePAY.xml", "Message");
    config.add("examples/x937/Message/ChequeFile.xml", "Message");
    return config.start();
  }();
  fuzz::require(started, "the library starts");
  for (const std::string &name : fuzz::definitions()) fuzz::expectRoundTrip(name, fuzz::text(data, size));
  return 0;
}

// example_messages.cpp: bytes as messages of the definition of the plug-in example. What is read is written and
// read again.
#include "support/library.h"
#include "support/target.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({});
  static const bool started = [] {
    config.add("src/cvt/plug/example/samples/Message", "Message");
    return config.start();
  }();
  fuzz::require(started, "the library starts");
  fuzz::expectRoundTrip("Order", fuzz::text(data, size));
  return 0;
}

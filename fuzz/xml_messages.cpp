// xml_messages.cpp: bytes as messages of every definition of the format xml that the project has. What is
// read is written and read again.
#include "support/library.h"
#include "support/target.h"

namespace {

// What is missing is written as its default, and read as one: the order is taken without.
std::string orderWithoutDefault() {
  std::string definition = fuzz::contentOf("src/cvt/plug/xml/samples/order/Message/Order.xml");
  const std::string_view attribute = " psDefault=\"EUR\"";
  const size_t at = definition.find(attribute);
  fuzz::require(at != definition.npos, "the order has a default");
  return definition.erase(at, attribute.size());
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({});
  static const bool started = [] {
    config.add("src/cvt/plug/xml/samples/definitions", "Message");
    config.file("Message/Order.xml", orderWithoutDefault());
    config.add("examples/envelope/Message/XmlPAY.xml", "Message");
    config.add("examples/lookup/Message/Invoice.xml", "Message");
    return config.start();
  }();
  fuzz::require(started, "the library starts");
  for (const std::string &name : fuzz::definitions()) fuzz::expectRoundTrip(name, fuzz::text(data, size));
  return 0;
}

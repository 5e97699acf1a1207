// config_iso.cpp: a definition file of the format iso8583; a definition that is accepted is used.
#include "support/library.h"
#include "support/target.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({});
  config.file("Message/Input.xml", std::string(fuzz::text(data, size)));
  if (config.start()) fuzz::useDefinitions();
  cvtEnd();
  return 0;
}

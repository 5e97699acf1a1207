// config_json.cpp: a definition file of the format json; messages of a definition that is accepted are made,
// written and read.
#include "support/library.h"
#include "support/target.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({});
  config.file("Message/Input.xml", std::string(fuzz::text(data, size)));
  if (config.start()) {
    fuzz::useDefinitions();
    for (const std::string &name : fuzz::definitions()) {
      for (const char *text : {"{}", "[]", "[{}]", "1", "{\"a\":\"1\",\"b\":[1,{}],\"c\":{\"d\":null}}"}) {
        std::string bytes = text;
        if (const fuzz::Message message = fuzz::parse(name, "fuzz", bytes)) fuzz::generate(*message, 4096);
      }
    }
  }
  cvtEnd();
  return 0;
}

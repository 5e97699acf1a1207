// config_definition.cpp: a definition file for the plug-in FUZZ_PLUGIN; messages of one that is accepted are made,
// written and read. config_csv, config_fix and the others are this program, each with its plug-in.
#include "support/library.h"
#include "support/target.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({}, {FUZZ_PLUGIN});
  config.file("Message/Input.xml", std::string(fuzz::text(data, size)));
  if (config.start()) {
    fuzz::useDefinitions();
    for (const std::string &name : fuzz::definitions()) {
      for (const char *text : {"{\"a\":\"1\",\"b\":[1,{}],\"c\":{\"d\":null}}", "[{}]", "1", "a,b\n1,2\n",
                               "02004000000000000000041122", "1:1,4:4711,"}) {
        std::string bytes = text;
        if (const fuzz::Message message = fuzz::parse(name, "fuzz", bytes)) fuzz::generate(*message, 4096);
      }
    }
  }
  cvtEnd();
  return 0;
}

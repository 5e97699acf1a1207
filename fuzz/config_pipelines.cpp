// config_pipelines.cpp: a file of pipelines. They are not run: the steps that name and move bytes trust the
// numbers that a configuration gives them.
#include "support/library.h"
#include "support/target.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({}, {});
  config.file("Id/pipelines.xml", std::string(fuzz::text(data, size)));
  config.start();
  cvtEnd();
  return 0;
}

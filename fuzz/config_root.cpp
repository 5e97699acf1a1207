// config_root.cpp: the root file.
#include "support/library.h"
#include "support/target.h"

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  // A root file may have any function of any shared object called. That is its writer's to answer for.
  const std::string file(fuzz::text(data, size));
  if (fuzz::holdsAny(file, {"psFunction", ".so", "encoding", std::string_view("\0", 1)})) return 0;
  static fuzz::Configuration config({"examples/envelope"});
  config.file("All/root.xml", file);
  config.start();
  cvtEnd();
  return 0;
}

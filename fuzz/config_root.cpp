// config_root.cpp: the root file.
#include <algorithm>

#include "support/library.h"
#include "support/target.h"

namespace {

// A message has room for the fields that the root file says, and the pool keeps it when the library is ended. Whether a
// start may take room for a hundred thousand fields or more, each time for another number, which is the writer's to
// answer for as well.
bool isLarge(std::string_view file) {
  constexpr int kDigits = 6;
  const auto isDigit = [](char c, char) { return c >= '0' && c <= '9'; };
  return fuzz::holdsAny(file, {"gnMaxValue"}) &&
         std::search_n(file.begin(), file.end(), kDigits, '0', isDigit) != file.end();
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  // A root file may have any function of any shared object called. That is its writer's to answer for.
  const std::string file(fuzz::text(data, size));
  if (fuzz::holdsAny(file, {"psFunction", ".so", "encoding", std::string_view("\0", 1)})) return 0;
  if (isLarge(file)) return 0;
  static fuzz::Configuration config({"examples/envelope"});
  config.file("All/root.xml", file);
  config.start();
  cvtEnd();
  return 0;
}

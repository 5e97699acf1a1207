// conversion.cpp: bytes through whole pipelines: the type is found in them, they are read, converted,
// written.
#include "support/library.h"
#include "support/target.h"

namespace {

void convert(std::string from, std::string to, std::string bytes) {
  int error = 0;
  const fuzz::Message source(
      cvtParseMessasge(from.data(), bytes.data(), static_cast<int>(bytes.size()), &error));
  if (source == nullptr) return;
  std::string buffer(16 * 1024, '\0');
  int length = static_cast<int>(buffer.size());
  const fuzz::Message target(cvtGenerateMessasge(source.get(), to.data(), buffer.data(), &length, &error));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({"examples/envelope"});
  static const bool started = config.start();
  fuzz::require(started, "the library starts");
  convert("line", "xml", std::string(fuzz::text(data, size)));
  convert("xml", "line", std::string(fuzz::text(data, size)));
  return 0;
}

// conversion.cpp: bytes through whole pipelines: the type is found in them, they are read, converted,
// written.
#include "support/library.h"
#include "support/target.h"

namespace {

void write(InnerMessage *source, std::string to) {
  std::string buffer(size_t{64} * 1024, '\0');
  int length = static_cast<int>(buffer.size());
  int error = 0;
  const fuzz::Message target(cvtGenerateMessasge(source, to.data(), buffer.data(), &length, &error));
}

void convert(std::string from, const std::string &to, std::string bytes) {
  int error = 0;
  const fuzz::Message source(
      cvtParseMessasge(from.data(), bytes.data(), static_cast<int>(bytes.size()), &error));
  if (source != nullptr) write(source.get(), to);
}

// A file of payments, which does not say its type.
void convertPayments(std::string bytes) {
  if (const fuzz::Message source = fuzz::parse("NachaFile", "nacha", bytes)) write(source.get(), "pain");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({"examples/envelope", "examples/nacha"});
  static const bool started = config.start();
  fuzz::require(started, "the library starts");
  const std::string bytes(fuzz::text(data, size));
  convert("line", "xml", bytes);
  convert("xml", "line", bytes);
  convertPayments(bytes);
  return 0;
}

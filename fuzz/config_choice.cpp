// config_choice.cpp: an identification file, which says what converter takes a message to a format; the
// choices that are accepted are made.
#include "support/library.h"
#include "support/target.h"

namespace {

void choose(const std::string &name) {
  const fuzz::Message source = fuzz::create(name);
  for (std::string format : {"xml", "line", "fuzz"}) {
    std::string buffer(4096, '\0');
    int length = static_cast<int>(buffer.size());
    int error = 0;
    const fuzz::Message target(
        cvtGenerateMessasge(source.get(), format.data(), buffer.data(), &length, &error));
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({"examples/envelope"}, {"fix", "xml"});
  config.file("IdInfo/envelope.xml", std::string(fuzz::text(data, size)));
  if (config.start()) {
    for (const std::string &name : fuzz::definitions()) choose(name);
  }
  cvtEnd();
  return 0;
}

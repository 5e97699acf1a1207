// config_converter.cpp: a converter file; a converter that is accepted converts a message that was read.
#include <algorithm>
#include <cstdlib>
#include <optional>

#include "support/library.h"
#include "support/target.h"

namespace {

// The value of an attribute as it stands in a tag; nothing without it, or when something in it stands for
// something else.
std::optional<std::string_view> attribute(std::string_view tag, const std::string &name) {
  const std::string start = ' ' + name + "=\"";
  const size_t at = tag.find(start);
  if (at == tag.npos) return std::nullopt;
  const std::string_view value = tag.substr(at + start.size());
  const size_t end = value.find_first_of("\"&");
  if (end == value.npos || value[end] == '&') return std::nullopt;
  return value.substr(0, end);
}

// A constant's length is trusted not to exceed its text. Whether the fuzzer has left those of the file that
// way.
bool hasLengthsInText(std::string_view file) {
  if (fuzz::holdsAny(file, {"encoding", std::string_view("\0", 1)})) return false;
  for (size_t at = file.find("nLen"); at != file.npos; at = file.find("nLen", at + 1)) {
    const size_t start = std::min(file.rfind('<', at), at);
    const std::string_view tag = file.substr(start, file.find('>', start) - start);
    const auto length = attribute(tag, "nLen");
    const auto value = attribute(tag, "psValue");
    if (!length || !value) return false;
    if (std::atol(std::string(*length).c_str()) > static_cast<long>(value->size())) return false;
  }
  return true;
}

void convert(Converter *converter) {
  std::string name = converter->psSrcStructName;
  static const std::string order = fuzz::contentOf("examples/lookup/data/order.dat");
  std::string bytes = order;
  fuzz::Message source = fuzz::parse(name, "fuzz", bytes);
  if (source == nullptr) source = fuzz::create(name);
  const fuzz::Message target = fuzz::create(cvtGetDst(converter));
  if (source == nullptr || target == nullptr) return;
  cvtConvert(source->tValueListInfo.ptValueList, target->tValueListInfo.ptValueList, converter,
             target->tValueListInfo.ptMemNode);
  fuzz::generate(*target, 4096);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({"examples/lookup"});
  static const bool alone = (config.clear("Convert").clear("IdInfo"), true);
  fuzz::require(alone, "the converter at hand is the only one");
  const std::string file(fuzz::text(data, size));
  config.file("Convert/input.xml", file);
  if (config.start() && hasLengthsInText(file)) {
    for (StringList *pt = gptCvtGlobalInfo->ptCvtList; pt != nullptr; pt = pt->ptNext) {
      convert(static_cast<Converter *>(pt->ptInfo));
    }
  }
  cvtEnd();
  return 0;
}

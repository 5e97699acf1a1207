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

// Whether every tag of the file in which the attribute stands is one that isGood.
template <class IsGood>
bool allTags(std::string_view file, std::string_view attribute, IsGood isGood) {
  for (size_t at = file.find(attribute); at != file.npos; at = file.find(attribute, at + 1)) {
    const size_t start = std::min(file.rfind('<', at), at);
    if (!isGood(file.substr(start, file.find('>', start) - start))) return false;
  }
  return true;
}

long numberOf(std::string_view digits) {
  return std::atol(std::string(digits).c_str());
}

bool hasLengthInText(std::string_view tag) {
  const auto length = attribute(tag, "nLen");
  const auto value = attribute(tag, "psValue");
  return length && value && numberOf(*length) <= static_cast<long>(value->size());
}

bool isEvaluated(std::string_view tag) {
  const auto code = attribute(tag, "nType");
  return code && numberOf(*code) != CVT_TYPE_RAW;
}

// A constant has the room that its length says. The machine gives memory for what is used of it, and the sanitizer
// for all of it.
bool hasSmallLength(std::string_view tag) {
  const auto length = attribute(tag, "nLen");
  return length && numberOf(*length) <= 1 << 20;
}

// A constant's length is trusted not to exceed its text, and a record that is handed to a function as it is to be
// one of those that the function takes. Whether the fuzzer has left those of the file that way.
bool keepsTrust(std::string_view file) {
  return !fuzz::holdsAny(file, {"encoding", std::string_view("\0", 1)}) &&
         allTags(file, "nLen", hasLengthInText) && allTags(file, "nType", isEvaluated);
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
  static fuzz::Configuration config({"examples/lookup"}, {"fix", "xml", "std"});
  static const bool alone = (config.clear("Convert").clear("IdInfo"), true);
  fuzz::require(alone, "the converter at hand is the only one");
  const std::string file(fuzz::text(data, size));
  if (!allTags(file, "nLen", hasSmallLength)) return 0;
  config.file("Convert/input.xml", file);
  if (config.start() && keepsTrust(file)) {
    for (StringList *pt = gptCvtGlobalInfo->ptCvtList; pt != nullptr; pt = pt->ptNext) {
      convert(static_cast<Converter *>(pt->ptInfo));
    }
  }
  cvtEnd();
  return 0;
}

// config_converter.cpp: a converter file; a converter that is accepted converts a message that was read.
#include "support/library.h"
#include "support/target.h"

namespace {

void convert(Converter *converter) {
  std::string name = converter->psSrcStructName;
  std::string bytes = "A0000001    250.00Zimmer & Co         ";
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
  static fuzz::Configuration config({"examples/envelope", "examples/lookup"});
  static const bool alone = (config.clear("Convert").clear("IdInfo"), true);
  fuzz::require(alone, "the converter at hand is the only one");
  const std::string file(fuzz::text(data, size));
  config.file("Convert/input.xml", file);
  // A constant's length is trusted: files in which the fuzzer may have made one up are read only.
  const bool trusted = !fuzz::holdsAny(file, {"nLen", "encoding", std::string_view("\0", 1)});
  if (config.start() && trusted) {
    for (StringList *pt = gptCvtGlobalInfo->ptCvtList; pt != nullptr; pt = pt->ptNext) {
      convert(static_cast<Converter *>(pt->ptInfo));
    }
  }
  cvtEnd();
  return 0;
}

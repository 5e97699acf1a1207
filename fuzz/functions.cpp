// functions.cpp: the function library. Whatever a function is called with, it answers with a result within the
// limit, a zero byte behind it, or refuses; its arguments stay as they were.
#include <vector>

#include "kit/attributes.h"
#include "std/settings.h"
#include "std/topics.h"
#include "support/input.h"
#include "support/library.h"

namespace {

using namespace cvt;

constexpr int kMaxResult = 4096;

// Limits that end a call within the time that an input may take.
bool configured() {
  auto *settings = static_cast<functions::Settings *>(kit::newRecord(functions::kSettings));
  settings->nMaxResult = kMaxResult;
  settings->nRegexSteps = 20'000;
  settings->nRegexKept = 8;
  settings->nSeed = 1;
  settings->psTablePath = test::cs(CVT2_SOURCE_DIR "/examples/functions/Table");
  functions::apply(*settings);
  return true;
}

Value valueOf(std::string &bytes) {
  Value value{};
  value.psValue = bytes.data();
  value.nLen = static_cast<int>(bytes.size());
  return value;
}

void call(FncConvert entry, const std::string &name, const std::vector<std::string> &texts) {
  std::vector<std::string> handed = texts;
  std::vector<Value> values(texts.size());
  std::vector<Value *> arguments(texts.size());
  for (size_t i = 0; i < texts.size(); ++i) {
    values[i] = valueOf(handed[i]);
    arguments[i] = &values[i];
  }
  MemNode *const memory = cvtMemNewNode();
  Value result{};
  if (entry(&result, static_cast<int>(arguments.size()), arguments.data(), memory) == 0) {
    fuzz::require(result.nLen >= 0 && result.nLen <= kMaxResult, name + " keeps the limit");
    fuzz::require(result.psValue != nullptr && result.psValue[result.nLen] == 0, name + " ends its result");
  }
  fuzz::require(handed == texts, name + " leaves its arguments alone");
  cvtMemDelNode(memory);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const bool ready = configured();
  fuzz::Input input(data, size);
  const kit::Topic &topic = *functions::kTopics[input.below(std::size(functions::kTopics))];
  const size_t row = input.below(topic.functions.size());
  std::vector<std::string> texts;
  while (!input.atEnd() && texts.size() < 9) texts.push_back(input.string());
  if (ready) call(topic.entries[row], topic.functions[row].name, texts);
  return 0;
}

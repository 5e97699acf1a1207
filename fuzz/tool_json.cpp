// tool_json.cpp: the command's JSON: a text becomes a message, which is written as JSON, which becomes an
// equal message.
#include "json.h"

#include "error.h"
#include "support/library.h"
#include "support/target.h"

namespace {

// The message that the text describes; null when it is refused.
fuzz::Message read(const std::string &text, tool::Layouts &layouts) {
  try {
    const tool::JsonMessage json(text);
    fuzz::Message message = fuzz::create(json.message().empty() ? "Order" : json.message());
    if (message == nullptr) return nullptr;
    json.fill(layouts.of(*message->ptMsgInfo), message->tValueListInfo);
    return message;
  } catch (const tool::DataError &error) {
    fuzz::require(*error.what() != '\0', "the refusal says why");
    return nullptr;
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({"examples/lookup"});
  static const bool started = config.start();
  fuzz::require(started, "the library starts");
  static tool::Layouts layouts;
  const fuzz::Message first = read(std::string(fuzz::text(data, size)), layouts);
  if (first == nullptr) return 0;
  const Msg &definition = *first->ptMsgInfo;
  std::string json;
  tool::appendJson(json, definition, layouts.of(definition), first->tValueListInfo.ptValueList, false);
  const fuzz::Message second = read(json, layouts);
  fuzz::require(second != nullptr, "what is written is read: " + json);
  fuzz::require(fuzz::equal(first->tValueListInfo.ptValueList, second->tValueListInfo.ptValueList),
                "the values are the same: " + json);
  return 0;
}

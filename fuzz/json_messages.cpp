// json_messages.cpp: bytes as messages of every definition of the format json that the manual shows, and as
// those of one that reads several from a buffer. What is read is written and read again.
#include "support/library.h"
#include "support/target.h"

namespace {

// The value that a buffer begins with, and what is left to the caller.
constexpr const char *kFirst =
    "<json><Msg psMsgName=\"First\"><JsonMsg __ID=\"pInfo\" psRoot=\"value\" nWhole=\"0\" nMaxSize=\"4096\"/>"
    "<Message __ID=\"ptHead\" psNodeName=\"Value\"><FormatAttr __ID=\"ptFormAttr\"><JsonField __ID=\"pInfo\" "
    "psType=\"any\"/></FormatAttr><StructAttr __ID=\"ptStructAttr\"/></Message></Msg></json>";

// Texts alone, with everything else kept.
constexpr const char *kTexts =
    "<json><Msg psMsgName=\"Texts\"><JsonMsg __ID=\"pInfo\" nAscii=\"1\" nIndent=\"1\"/><Message "
    "__ID=\"ptHead\" psNodeName=\"a\"><StructAttr __ID=\"ptStructAttr\"/></Message><Message "
    "__ID=\"ptNextNode\" psNodeName=\"Others\"><FormatAttr __ID=\"ptFormAttr\"><JsonField __ID=\"pInfo\" "
    "psKind=\"others\"/></FormatAttr><StructAttr __ID=\"ptStructAttr\"/></Message></Msg></json>";

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static fuzz::Configuration config({});
  static const bool started = [] {
    config.add("src/cvt/plug/json/samples/order/Message", "Message");
    config.add("src/cvt/plug/json/samples/shapes/Message", "Message");
    config.add("src/cvt/plug/json/samples/suite/Message", "Message");
    config.file("Message/First.xml", kFirst);
    config.file("Message/Texts.xml", kTexts);
    return config.start();
  }();
  fuzz::require(started, "the library starts");
  for (const std::string &name : fuzz::definitions()) fuzz::expectRoundTrip(name, fuzz::text(data, size));
  return 0;
}

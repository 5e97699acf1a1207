// xml_scanner.cpp: any bytes. What the scanner takes for a document is one for expat, with the same elements,
// attributes and texts.
#include "xml/scanner.h"

#include <expat.h>

#include <memory>
#include <string>

#include "support/target.h"

namespace {

using cvt::xml::Scanner;

// What a parser tells of a document, in lines. Texts are joined, since parsers cut them where they like.
class Report {
 public:
  void open(std::string_view uri, std::string_view local) {
    flush();
    m_lines += "<" + expanded(uri, local) + "\n";
  }
  void attribute(std::string_view uri, std::string_view local, std::string_view value) {
    m_lines += "@" + expanded(uri, local) + "=" + std::string(value) + "\n";
  }
  void text(std::string_view bytes) { m_text += bytes; }
  void close() {
    flush();
    m_lines += ">\n";
  }
  const std::string &lines() const { return m_lines; }

 private:
  static std::string expanded(std::string_view uri, std::string_view local) {
    return uri.empty() ? std::string(local) : std::string(uri) + '\x1F' + std::string(local);
  }
  void flush() {
    m_lines += m_text.empty() ? "" : "\"" + m_text + "\"\n";
    m_text.clear();
  }

  std::string m_lines;
  std::string m_text;
};

// Whether the scanner comes to the end.
bool scanned(std::string_view bytes, Report &report) {
  static cvt::xml::Room room(1 << 16);
  static Scanner::Memory memory;
  cvt::xml::Plan plan;
  plan.maxAttributes = 64;
  room.region.reset();
  Scanner scanner(plan, bytes, room, memory);
  for (;;) {
    switch (scanner.next()) {
      case Scanner::Token::Open:
        report.open(scanner.name().uri, scanner.name().local);
        for (const cvt::xml::Given &each : scanner.attributes()) {
          report.attribute(each.name.uri, each.name.local, each.value);
        }
        break;
      case Scanner::Token::Text:
        report.text(scanner.text());
        break;
      case Scanner::Token::Close:
        report.close();
        break;
      case Scanner::Token::End:
        return true;
      case Scanner::Token::NotPlain:
        return false;
    }
  }
}

void onOpen(void *report, const XML_Char *name, const XML_Char **attributes) {
  static_cast<Report *>(report)->open({}, name);
  for (; *attributes != nullptr; attributes += 2) {
    static_cast<Report *>(report)->attribute({}, attributes[0], attributes[1]);
  }
}
void onClose(void *report, const XML_Char *) {
  static_cast<Report *>(report)->close();
}
void onText(void *report, const XML_Char *bytes, int length) {
  static_cast<Report *>(report)->text({bytes, static_cast<size_t>(length)});
}

bool parsed(std::string_view bytes, Report &report) {
  const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreateNS("UTF-8", '\x1F'),
                                                                       &XML_ParserFree);
  XML_SetUserData(parser.get(), &report);
  XML_SetElementHandler(parser.get(), onOpen, onClose);
  XML_SetCharacterDataHandler(parser.get(), onText);
  return XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), XML_TRUE) == XML_STATUS_OK;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string bytes(fuzz::text(data, size));
  Report ours;
  if (!scanned(bytes, ours)) return 0;
  Report theirs;
  fuzz::require(parsed(bytes, theirs), "what the scanner takes is well-formed");
  fuzz::require(ours.lines() == theirs.lines(), "the scanner and expat tell the same of a document");
  return 0;
}

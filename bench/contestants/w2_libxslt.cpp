// w2_libxslt.cpp INPUT OUTPUT STYLESHEET: each line's document through libxslt, the stylesheet compiled once.
#include <libxml/parser.h>
#include <libxslt/transform.h>
#include <libxslt/xsltutils.h>

#include <memory>

#include "program.h"

namespace {

using namespace bench;

using Stylesheet = std::unique_ptr<xsltStylesheet, decltype(&xsltFreeStylesheet)>;
using Document = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

template <typename Pointer>
Pointer needed(Pointer pointer, const char *what) {
  if (!pointer) throw Failure(what);
  return pointer;
}

std::string_view serialized(xsltStylesheet &stylesheet, xmlDoc &document, xmlChar *&text) {
  int size = 0;
  if (xsltSaveResultToString(&text, &size, &document, &stylesheet) != 0) throw Failure("no text is made");
  return {reinterpret_cast<char *>(text), static_cast<size_t>(size)};
}

void convertLine(xsltStylesheet &stylesheet, std::string_view line, Output &output) {
  const Document source = needed(
      Document(xmlReadMemory(line.data(), static_cast<int>(line.size()), nullptr, nullptr, XML_PARSE_NONET),
               xmlFreeDoc),
      "a document is not well-formed");
  const Document result = needed(
      Document(xsltApplyStylesheet(&stylesheet, source.get(), nullptr), xmlFreeDoc), "a stylesheet fails");
  xmlChar *text = nullptr;
  const std::string_view made = serialized(stylesheet, *result, text);
  char *to = output.room(made.size() + 1);
  std::memcpy(to, made.data(), made.size());
  to += made.size();
  if (!made.ends_with('\n')) *to++ = '\n';
  output.stop(to);
  xmlFree(text);
}

void run(char **arguments) {
  const Stylesheet stylesheet =
      needed(Stylesheet(xsltParseStylesheetFile(reinterpret_cast<const xmlChar *>(arguments[3])),
                        xsltFreeStylesheet),
             "the stylesheet does not load");
  convertFile(arguments[1], arguments[2], 3, [&](std::string_view input, Output &output) {
    eachLine(input, [&](std::string_view line) { convertLine(*stylesheet, line, output); });
  });
}

}  // namespace

int main(int count, char **arguments) {
  return bench::program(count, arguments, 1, run);
}

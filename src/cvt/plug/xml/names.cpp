#include "names.h"

#include <expat.h>

#include <algorithm>
#include <memory>

#include "kit/charset.h"

namespace cvt::xml {

namespace {

// The parser's own opinion of what a name is: it must read back the whole text as the name of an element.
struct Probe {
  const std::string &name;
  bool same = false;
};

void onStart(void *data, const XML_Char *name, const XML_Char **) {
  auto *probe = static_cast<Probe *>(data);
  probe->same = probe->name == name;
}

// Names of ASCII characters by rule, without a parser for each.
bool isAsciiName(const std::string &name) {
  const auto starts = [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == ':';
  };
  const auto goesOn = [&](char c) { return starts(c) || (c >= '0' && c <= '9') || c == '-' || c == '.'; };
  return starts(name.front()) && std::all_of(name.begin() + 1, name.end(), goesOn);
}

}  // namespace

bool isName(const std::string &name) {
  if (name.empty()) return false;
  if (kit::Charset::ascii(name.data(), name.size())) return isAsciiName(name);
  const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate("UTF-8"),
                                                                       &XML_ParserFree);
  if (parser == nullptr) return false;
  Probe probe{name};
  XML_SetUserData(parser.get(), &probe);
  XML_SetStartElementHandler(parser.get(), onStart);
  const std::string text = "<" + name + "/>";
  return XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), XML_TRUE) == XML_STATUS_OK &&
         probe.same;
}

bool isPlainName(const std::string &name) {
  return name.find(':') == std::string::npos && isName(name);
}

}  // namespace cvt::xml

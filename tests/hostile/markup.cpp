#include "markup.h"

#include <algorithm>

namespace hostile {

namespace {

constexpr const char *kBlank = " \t\r\n";
constexpr const char *kNameEnd = " \t\r\n=/>";

// The attributes of a start tag, from behind its name.
std::vector<AttributeAt> attributesOf(const std::string &sText, size_t nAt, size_t nEnd) {
  std::vector<AttributeAt> all;
  while ((nAt = sText.find_first_not_of(kBlank, nAt)) < nEnd && sText[nAt] != '/' && sText[nAt] != '>') {
    AttributeAt attribute;
    attribute.name = {nAt, sText.find_first_of(kNameEnd, nAt)};
    const size_t nQuote = sText.find_first_of("\"'", attribute.name.to);
    attribute.value = {nQuote + 1, sText.find(sText[nQuote], nQuote + 1)};
    attribute.whole = {nAt, attribute.value.to + 1};
    all.push_back(attribute);
    nAt = attribute.whole.to;
  }
  return all;
}

// The ">" of the tag that begins at nAt; one inside a value is no end.
size_t tagEnd(const std::string &sText, size_t nAt) {
  char cQuote = 0;
  for (; nAt < sText.size(); ++nAt) {
    const char c = sText[nAt];
    if (cQuote != 0) {
      if (c == cQuote) cQuote = 0;
    } else if (c == '"' || c == '\'') {
      cQuote = c;
    } else if (c == '>') {
      return nAt + 1;
    }
  }
  return sText.size();
}

}  // namespace

std::vector<ElementAt> elementsOf(const std::string &sText) {
  std::vector<ElementAt> all;
  std::vector<size_t> open;
  size_t nAt = 0;
  while ((nAt = sText.find('<', nAt)) != std::string::npos) {
    if (sText.compare(nAt, 4, "<!--") == 0) {
      nAt = sText.find("-->", nAt);
    } else if (sText[nAt + 1] == '?') {
      nAt = sText.find("?>", nAt);
    } else if (sText[nAt + 1] == '/') {
      ElementAt &element = all[open.back()];
      open.pop_back();
      element.endTag = {nAt, tagEnd(sText, nAt)};
      element.whole.to = nAt = element.endTag.to;
    } else {
      ElementAt element;
      const size_t nEnd = tagEnd(sText, nAt);
      element.whole = element.startTag = {nAt, nEnd};
      element.name = {nAt + 1, sText.find_first_of(kNameEnd, nAt)};
      element.attributes = attributesOf(sText, element.name.to, nEnd);
      if (sText[nEnd - 2] != '/') open.push_back(all.size());
      all.push_back(element);
      nAt = nEnd;
    }
  }
  return all;
}

}  // namespace hostile

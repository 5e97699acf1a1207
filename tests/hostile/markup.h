// markup.h: where the elements and attributes of an XML text stand. For the examples' files, which are well
// formed and without surprises.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace hostile {

// Bytes [from, to) of the text.
struct Range {
  size_t from = 0;
  size_t to = 0;
  size_t size() const { return to - from; }
};

struct AttributeAt {
  Range whole;  // name="value"
  Range name;
  Range value;
};

struct ElementAt {
  Range whole;     // from its first "<" to its last ">"
  Range startTag;  // <name ...>, or <name .../>
  Range endTag;    // empty for <name .../>
  Range name;      // in the start tag
  std::vector<AttributeAt> attributes;
};

// All elements, in the order of their start tags.
std::vector<ElementAt> elementsOf(const std::string &sText);

inline std::string cut(const std::string &sText, Range range) {
  return sText.substr(range.from, range.size());
}

}  // namespace hostile

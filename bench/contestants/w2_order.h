// w2_order.h: the order's XML document through pugixml; read by the hand-written mappings of W2.
#pragma once

#include <pugixml.hpp>

#include "text.h"

namespace bench {

// The text of a child that must be there.
inline std::string_view childText(const pugi::xml_node &node, const char *name) {
  const pugi::xml_node child = node.child(name);
  if (!child) throw Failure(std::string("no element ") + name);
  return child.child_value();
}

// Calls `convert` with the order of each line.
template <typename Convert>
void eachOrder(std::string_view input, Convert convert) {
  pugi::xml_document document;
  eachLine(input, [&](std::string_view line) {
    const pugi::xml_parse_result result =
        document.load_buffer(line.data(), line.size(), pugi::parse_default, pugi::encoding_utf8);
    if (!result) throw Failure(result.description());
    const pugi::xml_node order = document.child("order");
    if (!order) throw Failure("no order");
    convert(order, line.size());
  });
}

inline size_t countItems(const pugi::xml_node &items) {
  size_t count = 0;
  for (pugi::xml_node item = items.child("item"); item; item = item.next_sibling("item")) ++count;
  return count;
}

}  // namespace bench

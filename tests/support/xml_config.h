// xml_config.h: configurations of the format `xml`, and messages going through them.
//
//   XmlConfig config;
//   config.message("Order", "psRoot=\"order\"", {field("Id", "psKind=\"attribute\""), field("Note")});
//   ASSERT_EQ(config.start(), 0);
//   Document order = parse("Order", "<order Id=\"7\"/>");
//   EXPECT_EQ(generate(order), "<order Id=\"7\"/>");
#pragma once

#include "format_config.h"

namespace test::xmldoc {

using namespace test::format;

// sAttributes: of its XmlField.
inline FormatNode field(const std::string &sName, const std::string &sAttributes = "") {
  return leaf("XmlField", sName, sAttributes);
}

// sAttributes: of its XmlGroup.
inline FormatNode group(const std::string &sName, const std::string &sAttributes,
                        const std::vector<FormatNode> &children) {
  return branch("XmlGroup", sName, sAttributes, children);
}

// sAttributes: of its XmlGroup, or of its XmlField when it has no children. sLoop: of its XmlLoop.
inline FormatNode loop(const std::string &sName, const std::string &sAttributes, const std::string &sLoop,
                       const std::vector<FormatNode> &body, const std::string &sCount = "") {
  return repeated(body.empty() ? "XmlField" : "XmlGroup", sName, sAttributes,
                  "XmlLoop __ID=\"ptInfo\" " + sLoop, body, sCount);
}

struct XmlFormat {
  static constexpr const char *psPlugin = "xml";
  static constexpr const char *psMsg = "XmlMsg";
};
using XmlConfig = Config<XmlFormat>;
using Document = Handle;

inline Document parse(const std::string &sName, const std::string &sBytes) {
  return format::parse<XmlFormat>(sName, sBytes);
}
inline Document create(const std::string &sName) {
  return format::create<XmlFormat>(sName);
}

}  // namespace test::xmldoc

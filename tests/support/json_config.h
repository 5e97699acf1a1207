// json_config.h: configurations of the format `json`, and messages going through them.
//
//   JsonConfig config;
//   config.message("Order", "", {field("Id", "psType=\"number\""), loop("Notes", "", "", {})});
//   ASSERT_EQ(config.start(), 0);
//   Text order = parse("Order", "{\"Id\":7,\"Notes\":[\"a\"]}");
//   EXPECT_EQ(generate(order), "{\"Id\":7,\"Notes\":[\"a\"]}");
#pragma once

#include "format_config.h"

namespace test::json {

using namespace test::format;

// sAttributes: of its JsonField.
inline FormatNode field(const std::string &sName, const std::string &sAttributes = "") {
  return leaf("JsonField", sName, sAttributes);
}

// sAttributes: of its JsonGroup.
inline FormatNode group(const std::string &sName, const std::string &sAttributes,
                        const std::vector<FormatNode> &children) {
  return branch("JsonGroup", sName, sAttributes, children);
}

// sAttributes: of its JsonGroup, or of its JsonField when it has no children. sLoop: of its JsonLoop.
inline FormatNode loop(const std::string &sName, const std::string &sAttributes, const std::string &sLoop,
                       const std::vector<FormatNode> &body, const std::string &sCount = "") {
  return repeated(body.empty() ? "JsonField" : "JsonGroup", sName, sAttributes,
                  "JsonLoop __ID=\"ptInfo\" " + sLoop, body, sCount);
}

struct JsonFormat {
  static constexpr const char *psPlugin = "json";
  static constexpr const char *psMsg = "JsonMsg";
};
using JsonConfig = Config<JsonFormat>;
using Text = Handle;

inline Text parse(const std::string &sName, const std::string &sBytes) {
  return format::parse<JsonFormat>(sName, sBytes);
}
inline Text create(const std::string &sName) {
  return format::create<JsonFormat>(sName);
}

// What comes of a text that is parsed and generated; "refused", or "failed" when it cannot be written.
inline std::string pass(const std::string &sName, const std::string &sBytes) {
  const Text text = parse(sName, sBytes);
  return text == nullptr ? "refused" : generate(text);
}

}  // namespace test::json

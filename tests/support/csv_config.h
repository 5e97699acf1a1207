// csv_config.h: configurations of the format `csv`, and messages going through them.
//
//   CsvConfig config;
//   config.message("Table", "psHeader=\"order\"", {loop("Rows", "CsvRecord", "", "", {field("A"), field("B")})});
//   ASSERT_EQ(config.start(), 0);
//   Text table = parse("Table", "A,B\n1,2\n");
//   EXPECT_EQ(generate(table), "A,B\n1,2\n");
#pragma once

#include "format_config.h"

namespace test::csvtext {

using namespace test::format;

// sAttributes: of its CsvField.
inline FormatNode field(const std::string &sName, const std::string &sAttributes = "") {
  return leaf("CsvField", sName, sAttributes);
}
inline FormatNode record(const std::string &sName, const std::string &sAttributes,
                         const std::vector<FormatNode> &children) {
  return branch("CsvRecord", sName, sAttributes, children);
}
inline FormatNode group(const std::string &sName, const std::string &sAttributes,
                        const std::vector<FormatNode> &children) {
  return branch("CsvGroup", sName, sAttributes, children);
}

// sRecord: what stands in its FormatAttr, CsvRecord, CsvGroup or CsvField. sLoop: attributes of its CsvLoop.
inline FormatNode loop(const std::string &sName, const std::string &sRecord, const std::string &sAttributes,
                       const std::string &sLoop, const std::vector<FormatNode> &body,
                       const std::string &sCount = "") {
  return repeated(sRecord, sName, sAttributes, "CsvLoop __ID=\"ptInfo\" " + sLoop, body, sCount);
}
inline FormatNode rows(const std::vector<FormatNode> &fields, const std::string &sAttributes = "",
                       const std::string &sLoop = "") {
  return loop("Rows", "CsvRecord", sAttributes, sLoop, fields);
}

// The names as fields without attributes.
inline std::vector<FormatNode> fields(const std::vector<std::string> &names,
                                      const std::string &sAttributes = "") {
  std::vector<FormatNode> all;
  all.reserve(names.size());
  for (const std::string &sName : names) all.push_back(field(sName, sAttributes));
  return all;
}

struct CsvFormat {
  static constexpr const char *psPlugin = "csv";
  static constexpr const char *psMsg = "CsvMsg";
};
using CsvConfig = Config<CsvFormat>;
using Text = Handle;

inline Text parse(const std::string &sName, const std::string &sBytes) {
  return format::parse<CsvFormat>(sName, sBytes);
}
inline Text create(const std::string &sName) {
  return format::create<CsvFormat>(sName);
}

// What comes of a text that is parsed and generated; "refused", or "failed" when it cannot be written.
inline std::string pass(const std::string &sName, const std::string &sBytes) {
  const Text text = parse(sName, sBytes);
  return text == nullptr ? "refused" : generate(text);
}

}  // namespace test::csvtext

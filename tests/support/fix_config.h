// fix_config.h: configurations of the format `fix`, and messages going through them.
//
//   FixConfig config;
//   config.message("Order", "", {field("Id", "nLen=\"4\""), field("Name", "nLen=\"10\"")});
//   ASSERT_EQ(config.start(), 0);
//   Record order = parse("Order", "0007Ann       ");
//   EXPECT_EQ(generate(order), "0007Ann       ");
#pragma once

#include <regex>

#include <gtest/gtest.h>

#include "format_config.h"

namespace test::fix {

using namespace test::format;

// sAttributes: of its FixField.
inline FormatNode field(const std::string &sName, const std::string &sAttributes) {
  return leaf("FixField", sName, sAttributes);
}

// sRecord: FixRecord or FixGroup, with attributes; empty: a plain group.
inline FormatNode group(const std::string &sName, const std::string &sRecord,
                        const std::vector<FormatNode> &children) {
  const size_t nSpace = sRecord.find(' ');
  const std::string sAttributes = nSpace == std::string::npos ? "" : sRecord.substr(nSpace);
  return branch(sRecord.substr(0, nSpace), sName, sAttributes, children);
}

inline FormatNode record(const std::string &sName, const std::string &sAttributes,
                         const std::vector<FormatNode> &children) {
  return branch("FixRecord", sName, sAttributes, children);
}

// sLoop: attributes of its FixLoop. A loop without body repeats the field sField.
inline FormatNode loop(const std::string &sName, const std::string &sLoop,
                       const std::vector<FormatNode> &body, const std::string &sCount = "",
                       const std::string &sField = "") {
  return repeated(body.empty() ? "FixField" : "", sName, sField, "FixLoop __ID=\"ptInfo\" " + sLoop, body,
                  sCount);
}

struct FixFormat {
  static constexpr const char *psPlugin = "fix";
  static constexpr const char *psMsg = "FixMsg";
};
using FixConfig = Config<FixFormat>;
using Record = Handle;

inline Record parse(const std::string &sName, const std::string &sBytes) {
  return format::parse<FixFormat>(sName, sBytes);
}
inline Record create(const std::string &sName) {
  return format::create<FixFormat>(sName);
}

// The plug-in's line about the message M; file names are cut to their last part.
inline std::string refusal(const std::vector<FormatNode> &nodes, const std::string &sMessage = "") {
  test::clearLog();
  FixConfig config;
  config.message("M", sMessage, nodes);
  if (config.start() == 0) {
    cvtEnd();
    return "accepted";
  }
  std::string sFound = "nothing was told";
  for (const std::string &sLine : test::logTexts()) {
    const bool bOurs = sLine.rfind("Msg[M]", 0) == 0 || sLine.rfind("File[", 0) == 0;
    if (bOurs && sFound == "nothing was told") sFound = sLine;
  }
  cvtEnd();
  return std::regex_replace(sFound, std::regex("File\\[[^\\]]*/"), "File[");
}

inline std::string refusal(const std::string &sField, const std::string &sMessage = "") {
  return refusal({field("F", sField)}, sMessage);
}

inline void expectRefusal(const std::string &sLine, const std::string &sText) {
  EXPECT_NE(sLine.find(sText), std::string::npos) << sLine;
}

}  // namespace test::fix

// fix_config.h: configurations of the format `fix`, and messages going through them.
//
//   FixConfig config;
//   config.message("Order", "", {field("Id", "nLen=\"4\""), field("Name", "nLen=\"10\"")});
//   ASSERT_EQ(config.start(), 0);
//   Record order = parse("Order", "0007Ann       ");
//   EXPECT_EQ(generate(order), "0007Ann       ");
#pragma once

#include <fstream>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "config_tree.h"
#include "cvt.h"
#include "log_capture.h"
#include "toy_config.h"

namespace test::fix {

// One node: everything inside its Message element.
struct FixNode {
  std::string sName;
  std::string sInside;
};

inline std::string chain(const std::vector<FixNode> &nodes, const std::string &sFirstId) {
  std::string s;
  for (const FixNode &node : nodes) {
    s += "<Message __ID=\"" + (s.empty() ? sFirstId : "ptNextNode") + "\" psNodeName=\"" + node.sName +
         "\">" + node.sInside + "</Message>\n";
  }
  return s;
}

inline std::string formatAttr(const std::string &sRecord, const std::string &sAttributes) {
  return "<FormatAttr __ID=\"ptFormAttr\"><" + sRecord + " __ID=\"pInfo\" " + sAttributes + "/></FormatAttr>";
}

// sAttributes: of its FixField.
inline FixNode field(const std::string &sName, const std::string &sAttributes) {
  return {sName, formatAttr("FixField", sAttributes) + "<StructAttr __ID=\"ptStructAttr\"/>"};
}

// sRecord: FixRecord or FixGroup, with attributes; empty: a plain group.
inline FixNode group(const std::string &sName, const std::string &sRecord,
                     const std::vector<FixNode> &children) {
  const size_t nSpace = sRecord.find(' ');
  const std::string sAttributes = nSpace == std::string::npos ? "" : sRecord.substr(nSpace);
  return {sName, (sRecord.empty() ? "" : formatAttr(sRecord.substr(0, nSpace), sAttributes)) +
                     "<StructAttr __ID=\"ptStructAttr\">" + chain(children, "ptChildNode") + "</StructAttr>"};
}

inline FixNode record(const std::string &sName, const std::string &sAttributes,
                      const std::vector<FixNode> &children) {
  return group(sName, "FixRecord " + sAttributes, children);
}

// sLoop: attributes of its FixLoop. A loop without body repeats the field sField.
inline FixNode loop(const std::string &sName, const std::string &sLoop, const std::vector<FixNode> &body,
                    const std::string &sCount = "", const std::string &sField = "") {
  const std::string sCounted = sCount.empty() ? "" : " psLoopNumName=\"" + sCount + "\"";
  return {sName, (body.empty() ? formatAttr("FixField", sField) : "") +
                     "<StructAttr __ID=\"ptStructAttr\" nType=\"1\"><LoopType __ID=\"pInfo\"" + sCounted +
                     "><FixLoop __ID=\"ptInfo\" " + sLoop + "/></LoopType>" + chain(body, "ptChildNode") +
                     "</StructAttr>"};
}

// A tree with the plug-in, a pipeline "fix" that parses and one "02" that generates, and the definitions
// added.
class FixConfig : public ConfigTree {
 public:
  explicit FixConfig(const std::string &sPlugAttributes = "") {
    RootFile root;
    root.sPlug = plugSection({"psName=\"fix\" " + sPlugAttributes});
    root.sMessage = messageSection({"msg"});
    root.sId = "<Id __ID=\"ptId\" psIdPath=\"id\"/>";
    file("All/root.xml", root.text());
    file("id/pipelines.xml",
         pipelines({{"fix", {"pubParse"}, {"pubGenerate"}}, {"02", {}, {"pubGenerate"}}}));
  }

  // sAttributes: of its FixMsg.
  FixConfig &message(const std::string &sName, const std::string &sAttributes,
                     const std::vector<FixNode> &nodes) {
    file("msg/" + sName + ".xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<fix><Msg psMsgName=\"" +
                                      sName + "\">" + test::fix::chain(nodes, "ptHead") +
                                      "<FixMsg __ID=\"pInfo\" " + sAttributes + "/></Msg></fix>");
    return *this;
  }

  int start() { return cvtInit(arg()); }
};

struct Free {
  void operator()(InnerMessage *ptMsg) const { cvtFreeMessage(ptMsg); }
};
using Record = std::unique_ptr<InnerMessage, Free>;

// The message, or null. The bytes are kept in a block of exactly their size for as long as the process lives.
inline Record parse(const std::string &sName, const std::string &sBytes) {
  static std::vector<std::unique_ptr<std::vector<char>>> kept;
  kept.push_back(std::make_unique<std::vector<char>>(sBytes.begin(), sBytes.end()));
  kept.back()->shrink_to_fit();
  char none = 0;
  char *psBytes = kept.back()->empty() ? &none : kept.back()->data();
  int nError = 0;
  return Record(
      cvtInitMessasge(cs(sName.c_str()), cs("fix"), psBytes, static_cast<int>(sBytes.size()), &nError));
}

inline Record create(const std::string &sName) {
  int nError = 0;
  return Record(cvtNewMessage(cs(sName.c_str()), cs("fix"), &nError));
}

// The message in a buffer of exactly nRoom bytes; "failed" when it cannot be written.
inline std::string generate(const Record &message, size_t nRoom = 100000) {
  std::vector<char> room(nRoom);
  int nLen = static_cast<int>(nRoom);
  char none = 0;
  if (cvtGenMessage(message.get(), nRoom == 0 ? &none : room.data(), &nLen) != 0) return "failed";
  return std::string(room.data(), static_cast<size_t>(nLen));
}

inline std::string get(const Record &message, const std::string &sName) {
  if (message == nullptr) return "no message";
  int nError = 0;
  const Value *ptValue = cvtGetNameValue(message.get(), cs(sName.c_str()), &nError);
  if (ptValue == nullptr) return "no such value";
  return ptValue->nLen <= 0 ? "" : std::string(ptValue->psValue, static_cast<size_t>(ptValue->nLen));
}

inline void set(const Record &message, const std::string &sName, const std::string &sValue) {
  cvtSetNameValue(message.get(), cs(sName.c_str()), cs(sValue.c_str()), static_cast<int>(sValue.size()));
}

inline void addTime(const Record &message, const std::string &sLoop) {
  cvtAddLoopTime(message.get(), cs(sLoop.c_str()));
}

// Makes a repetition current and tells whether there is one.
inline bool at(const Record &message, const std::string &sLoop, int nTime) {
  return nTime < cvtGetLoopTime(message.get(), cs(sLoop.c_str())) &&
         cvtSetLoopTime(message.get(), cs(sLoop.c_str()), nTime) == 0;
}

// Whether some line at level 1 contains the text.
inline bool told(const std::string &sText) {
  for (const std::string &sLine : logTexts()) {
    if (sLine.find(sText) != std::string::npos) return true;
  }
  return false;
}

// All lines at level 1, for failure messages.
inline std::string told() {
  std::string s;
  for (const std::string &sLine : logTexts()) s += sLine + "\n";
  return s;
}

// The plug-in's own line of a refused message: the first that begins with "Msg[" and names a field.
inline std::string fault() {
  for (const std::string &sLine : logTexts()) {
    if (sLine.rfind("Msg[", 0) == 0 && sLine.find("] Field[") != std::string::npos) return sLine;
  }
  return "no fault was told";
}

// The plug-in's line about the message M; file names are cut to their last part.
inline std::string refusal(const std::vector<FixNode> &nodes, const std::string &sMessage = "") {
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

inline std::string contentOf(const std::string &sFile) {
  std::ifstream in(sFile, std::ios::binary);
  std::ostringstream all;
  all << in.rdbuf();
  return all.str();
}

}  // namespace test::fix

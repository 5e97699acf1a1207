// csv_config.h: configurations of the format `csv`, and messages going through them.
//
//   CsvConfig config;
//   config.message("Table", "psHeader=\"order\"", {loop("Rows", "CsvRecord", "", "", {field("A"), field("B")})});
//   ASSERT_EQ(config.start(), 0);
//   Text table = parse("Table", "A,B\n1,2\n");
//   EXPECT_EQ(generate(table), "A,B\n1,2\n");
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "config_tree.h"
#include "cvt.h"
#include "log_capture.h"
#include "toy_config.h"

namespace test::csvtext {

// One node: everything inside its Message element.
struct CsvNode {
  std::string sName;
  std::string sInside;
};

inline std::string chain(const std::vector<CsvNode> &nodes, const std::string &sFirstId) {
  std::string s;
  for (const CsvNode &node : nodes) {
    s += "<Message __ID=\"" + (s.empty() ? sFirstId : "ptNextNode") + "\" psNodeName=\"" + node.sName +
         "\">" + node.sInside + "</Message>\n";
  }
  return s;
}

inline std::string formatAttr(const std::string &sRecord, const std::string &sAttributes) {
  return "<FormatAttr __ID=\"ptFormAttr\"><" + sRecord + " __ID=\"pInfo\" " + sAttributes + "/></FormatAttr>";
}

// sAttributes: of its CsvField.
inline CsvNode field(const std::string &sName, const std::string &sAttributes = "") {
  return {sName, formatAttr("CsvField", sAttributes) + "<StructAttr __ID=\"ptStructAttr\"/>"};
}

// sRecord: CsvRecord or CsvGroup.
inline CsvNode branch(const std::string &sRecord, const std::string &sName, const std::string &sAttributes,
                      const std::vector<CsvNode> &children) {
  return {sName, formatAttr(sRecord, sAttributes) + "<StructAttr __ID=\"ptStructAttr\">" +
                     chain(children, "ptChildNode") + "</StructAttr>"};
}
inline CsvNode record(const std::string &sName, const std::string &sAttributes,
                      const std::vector<CsvNode> &children) {
  return branch("CsvRecord", sName, sAttributes, children);
}
inline CsvNode group(const std::string &sName, const std::string &sAttributes,
                     const std::vector<CsvNode> &children) {
  return branch("CsvGroup", sName, sAttributes, children);
}

// sRecord: what stands in its FormatAttr, CsvRecord, CsvGroup or CsvField. sLoop: attributes of its CsvLoop.
inline CsvNode loop(const std::string &sName, const std::string &sRecord, const std::string &sAttributes,
                    const std::string &sLoop, const std::vector<CsvNode> &body,
                    const std::string &sCount = "") {
  const std::string sCounted = sCount.empty() ? "" : " psLoopNumName=\"" + sCount + "\"";
  return {sName, formatAttr(sRecord, sAttributes) +
                     "<StructAttr __ID=\"ptStructAttr\" nType=\"1\"><LoopType __ID=\"pInfo\"" + sCounted +
                     "><CsvLoop __ID=\"ptInfo\" " + sLoop + "/></LoopType>" + chain(body, "ptChildNode") +
                     "</StructAttr>"};
}
inline CsvNode rows(const std::vector<CsvNode> &fields, const std::string &sAttributes = "",
                    const std::string &sLoop = "") {
  return loop("Rows", "CsvRecord", sAttributes, sLoop, fields);
}

// The names as fields without attributes.
inline std::vector<CsvNode> fields(const std::vector<std::string> &names,
                                   const std::string &sAttributes = "") {
  std::vector<CsvNode> all;
  for (const std::string &sName : names) all.push_back(field(sName, sAttributes));
  return all;
}

// A tree with the plug-in, a pipeline "csv" that parses and one "02" that generates, and the definitions
// added.
class CsvConfig : public ConfigTree {
 public:
  // sPlug: further attributes of the plug-in's element.
  explicit CsvConfig(const std::string &sPlug = "") {
    RootFile root;
    root.sPlug = plugSection({"psName=\"csv\" " + sPlug});
    root.sMessage = messageSection({"msg"});
    root.sId = "<Id __ID=\"ptId\" psIdPath=\"id\"/>";
    file("All/root.xml", root.text());
    file("id/pipelines.xml",
         pipelines({{"csv", {"pubParse"}, {"pubGenerate"}}, {"02", {}, {"pubGenerate"}}}));
  }

  // sAttributes: of its CsvMsg.
  CsvConfig &message(const std::string &sName, const std::string &sAttributes,
                     const std::vector<CsvNode> &nodes) {
    file("msg/" + sName + ".xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<csv><Msg psMsgName=\"" +
                                      sName + "\"><CsvMsg __ID=\"pInfo\" " + sAttributes + "/>" +
                                      test::csvtext::chain(nodes, "ptHead") + "</Msg></csv>");
    return *this;
  }

  int start() { return cvtInit(arg()); }
};

struct Free {
  void operator()(InnerMessage *ptMsg) const { cvtFreeMessage(ptMsg); }
};
using Text = std::unique_ptr<InnerMessage, Free>;

// The message, or null. The bytes are kept in a block of exactly their size for as long as the process lives.
inline Text parse(const std::string &sName, const std::string &sBytes) {
  static std::vector<std::unique_ptr<std::vector<char>>> kept;
  kept.push_back(std::make_unique<std::vector<char>>(sBytes.begin(), sBytes.end()));
  kept.back()->shrink_to_fit();
  char none = 0;
  char *psBytes = kept.back()->empty() ? &none : kept.back()->data();
  int nError = 0;
  return Text(
      cvtInitMessasge(cs(sName.c_str()), cs("csv"), psBytes, static_cast<int>(sBytes.size()), &nError));
}

inline Text create(const std::string &sName) {
  int nError = 0;
  return Text(cvtNewMessage(cs(sName.c_str()), cs("csv"), &nError));
}

// The text in a buffer of nRoom bytes; "failed" when it cannot be written.
inline std::string generate(const Text &text, size_t nRoom = 100000) {
  std::vector<char> room(nRoom);
  int nLen = static_cast<int>(nRoom);
  char none = 0;
  if (cvtGenMessage(text.get(), nRoom == 0 ? &none : room.data(), &nLen) != 0) return "failed";
  return std::string(room.data(), static_cast<size_t>(nLen));
}

// What comes out of a text that goes in; "refused" when it does not.
inline std::string pass(const std::string &sName, const std::string &sBytes) {
  const Text text = parse(sName, sBytes);
  return text == nullptr ? "refused" : generate(text);
}

inline std::string get(const Text &text, const std::string &sName) {
  int nError = 0;
  const Value *ptValue = cvtGetNameValue(text.get(), cs(sName.c_str()), &nError);
  if (ptValue == nullptr) return "no such value";
  return ptValue->nLen <= 0 ? "" : std::string(ptValue->psValue, static_cast<size_t>(ptValue->nLen));
}

inline void set(const Text &text, const std::string &sName, const std::string &sValue) {
  cvtSetNameValue(text.get(), cs(sName.c_str()), cs(sValue.c_str()), static_cast<int>(sValue.size()));
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

}  // namespace test::csvtext

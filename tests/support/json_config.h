// json_config.h: configurations of the format `json`, and messages going through them.
//
//   JsonConfig config;
//   config.message("Order", "", {field("Id", "psType=\"number\""), loop("Notes", "", "", {})});
//   ASSERT_EQ(config.start(), 0);
//   Text order = parse("Order", "{\"Id\":7,\"Notes\":[\"a\"]}");
//   EXPECT_EQ(generate(order), "{\"Id\":7,\"Notes\":[\"a\"]}");
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "config_tree.h"
#include "cvt.h"
#include "log_capture.h"
#include "toy_config.h"

namespace test::json {

// One node: everything inside its Message element.
struct JsonNode {
  std::string sName;
  std::string sInside;
};

inline std::string chain(const std::vector<JsonNode> &nodes, const std::string &sFirstId) {
  std::string s;
  for (const JsonNode &node : nodes) {
    s += "<Message __ID=\"" + (s.empty() ? sFirstId : "ptNextNode") + "\" psNodeName=\"" + node.sName +
         "\">" + node.sInside + "</Message>\n";
  }
  return s;
}

inline std::string formatAttr(const std::string &sRecord, const std::string &sAttributes) {
  return "<FormatAttr __ID=\"ptFormAttr\"><" + sRecord + " __ID=\"pInfo\" " + sAttributes + "/></FormatAttr>";
}

// sAttributes: of its JsonField.
inline JsonNode field(const std::string &sName, const std::string &sAttributes = "") {
  return {sName, formatAttr("JsonField", sAttributes) + "<StructAttr __ID=\"ptStructAttr\"/>"};
}

// sAttributes: of its JsonGroup.
inline JsonNode group(const std::string &sName, const std::string &sAttributes,
                      const std::vector<JsonNode> &children) {
  return {sName, formatAttr("JsonGroup", sAttributes) + "<StructAttr __ID=\"ptStructAttr\">" +
                     chain(children, "ptChildNode") + "</StructAttr>"};
}

// sValue: attributes of its JsonGroup, or of its JsonField when it has no children. sLoop: of its JsonLoop.
inline JsonNode loop(const std::string &sName, const std::string &sValue, const std::string &sLoop,
                     const std::vector<JsonNode> &body, const std::string &sCount = "") {
  const std::string sCounted = sCount.empty() ? "" : " psLoopNumName=\"" + sCount + "\"";
  return {sName, formatAttr(body.empty() ? "JsonField" : "JsonGroup", sValue) +
                     "<StructAttr __ID=\"ptStructAttr\" nType=\"1\"><LoopType __ID=\"pInfo\"" + sCounted +
                     "><JsonLoop __ID=\"ptInfo\" " + sLoop + "/></LoopType>" + chain(body, "ptChildNode") +
                     "</StructAttr>"};
}

// A tree with the plug-in, a pipeline "json" that parses and one "02" that generates, and the definitions
// added.
class JsonConfig : public ConfigTree {
 public:
  JsonConfig() {
    RootFile root;
    root.sPlug = plugSection({"psName=\"json\""});
    root.sMessage = messageSection({"msg"});
    root.sId = "<Id __ID=\"ptId\" psIdPath=\"id\"/>";
    file("All/root.xml", root.text());
    file("id/pipelines.xml",
         pipelines({{"json", {"pubParse"}, {"pubGenerate"}}, {"02", {}, {"pubGenerate"}}}));
  }

  // sAttributes: of its JsonMsg.
  JsonConfig &message(const std::string &sName, const std::string &sAttributes,
                      const std::vector<JsonNode> &nodes) {
    file("msg/" + sName + ".xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<json><Msg psMsgName=\"" +
                                      sName + "\"><JsonMsg __ID=\"pInfo\" " + sAttributes + "/>" +
                                      test::json::chain(nodes, "ptHead") + "</Msg></json>");
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
      cvtInitMessasge(cs(sName.c_str()), cs("json"), psBytes, static_cast<int>(sBytes.size()), &nError));
}

inline Text create(const std::string &sName) {
  int nError = 0;
  return Text(cvtNewMessage(cs(sName.c_str()), cs("json"), &nError));
}

// The text in a buffer of nRoom bytes; "failed" when it cannot be written.
inline std::string generate(const Text &text, size_t nRoom = 100000) {
  std::vector<char> room(nRoom);
  int nLen = static_cast<int>(nRoom);
  char none = 0;
  if (cvtGenMessage(text.get(), nRoom == 0 ? &none : room.data(), &nLen) != 0) return "failed";
  return std::string(room.data(), static_cast<size_t>(nLen));
}

// What comes of a text that is parsed and generated; "refused", or "failed" when it cannot be written.
inline std::string through(const std::string &sName, const std::string &sBytes) {
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

}  // namespace test::json

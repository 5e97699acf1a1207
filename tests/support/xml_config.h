// xml_config.h: configurations of the format `xml`, and messages going through them.
//
//   XmlConfig config;
//   config.message("Order", "psRoot=\"order\"", {field("Id", "psKind=\"attribute\""), field("Note")});
//   ASSERT_EQ(config.start(), 0);
//   Document order = parse("Order", "<order Id=\"7\"/>");
//   EXPECT_EQ(generate(order), "<order Id=\"7\"/>");
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "config_tree.h"
#include "cvt.h"
#include "log_capture.h"
#include "toy_config.h"

namespace test::xmldoc {

// One node: everything inside its Message element.
struct XmlNode {
  std::string sName;
  std::string sInside;
};

inline std::string chain(const std::vector<XmlNode> &nodes, const std::string &sFirstId) {
  std::string s;
  for (const XmlNode &node : nodes) {
    s += "<Message __ID=\"" + (s.empty() ? sFirstId : "ptNextNode") + "\" psNodeName=\"" + node.sName +
         "\">" + node.sInside + "</Message>\n";
  }
  return s;
}

inline std::string formatAttr(const std::string &sRecord, const std::string &sAttributes) {
  return "<FormatAttr __ID=\"ptFormAttr\"><" + sRecord + " __ID=\"pInfo\" " + sAttributes + "/></FormatAttr>";
}

// sAttributes: of its XmlField.
inline XmlNode field(const std::string &sName, const std::string &sAttributes = "") {
  return {sName, formatAttr("XmlField", sAttributes) + "<StructAttr __ID=\"ptStructAttr\"/>"};
}

// sAttributes: of its XmlGroup.
inline XmlNode group(const std::string &sName, const std::string &sAttributes,
                     const std::vector<XmlNode> &children) {
  return {sName, formatAttr("XmlGroup", sAttributes) + "<StructAttr __ID=\"ptStructAttr\">" +
                     chain(children, "ptChildNode") + "</StructAttr>"};
}

// sElement: attributes of its XmlGroup, or of its XmlField when it has no children. sLoop: of its XmlLoop.
inline XmlNode loop(const std::string &sName, const std::string &sElement, const std::string &sLoop,
                    const std::vector<XmlNode> &body, const std::string &sCount = "") {
  const std::string sCounted = sCount.empty() ? "" : " psLoopNumName=\"" + sCount + "\"";
  return {sName, formatAttr(body.empty() ? "XmlField" : "XmlGroup", sElement) +
                     "<StructAttr __ID=\"ptStructAttr\" nType=\"1\"><LoopType __ID=\"pInfo\"" + sCounted +
                     "><XmlLoop __ID=\"ptInfo\" " + sLoop + "/></LoopType>" + chain(body, "ptChildNode") +
                     "</StructAttr>"};
}

// A tree with the plug-in, a pipeline "xml" that parses and one "02" that generates, and the definitions
// added.
class XmlConfig : public ConfigTree {
 public:
  // sPlug: further attributes of the plug-in's element.
  explicit XmlConfig(const std::string &sPlug = "") {
    RootFile root;
    root.sPlug = plugSection({"psName=\"xml\" " + sPlug});
    root.sMessage = messageSection({"msg"});
    root.sId = "<Id __ID=\"ptId\" psIdPath=\"id\"/>";
    file("All/root.xml", root.text());
    file("id/pipelines.xml",
         pipelines({{"xml", {"pubParse"}, {"pubGenerate"}}, {"02", {}, {"pubGenerate"}}}));
  }

  // sAttributes: of its XmlMsg.
  XmlConfig &message(const std::string &sName, const std::string &sAttributes,
                     const std::vector<XmlNode> &nodes) {
    file("msg/" + sName + ".xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xml><Msg psMsgName=\"" +
                                      sName + "\"><XmlMsg __ID=\"pInfo\" " + sAttributes + "/>" +
                                      test::xmldoc::chain(nodes, "ptHead") + "</Msg></xml>");
    return *this;
  }

  int start() { return cvtInit(arg()); }
};

struct Free {
  void operator()(InnerMessage *ptMsg) const { cvtFreeMessage(ptMsg); }
};
using Document = std::unique_ptr<InnerMessage, Free>;

// The message, or null. The bytes are kept in a block of exactly their size for as long as the process lives.
inline Document parse(const std::string &sName, const std::string &sBytes) {
  static std::vector<std::unique_ptr<std::vector<char>>> kept;
  kept.push_back(std::make_unique<std::vector<char>>(sBytes.begin(), sBytes.end()));
  kept.back()->shrink_to_fit();
  char none = 0;
  char *psBytes = kept.back()->empty() ? &none : kept.back()->data();
  int nError = 0;
  return Document(
      cvtInitMessasge(cs(sName.c_str()), cs("xml"), psBytes, static_cast<int>(sBytes.size()), &nError));
}

inline Document create(const std::string &sName) {
  int nError = 0;
  return Document(cvtNewMessage(cs(sName.c_str()), cs("xml"), &nError));
}

// The document in a buffer of nRoom bytes; "failed" when it cannot be written.
inline std::string generate(const Document &document, size_t nRoom = 100000) {
  std::vector<char> room(nRoom);
  int nLen = static_cast<int>(nRoom);
  char none = 0;
  if (cvtGenMessage(document.get(), nRoom == 0 ? &none : room.data(), &nLen) != 0) return "failed";
  return std::string(room.data(), static_cast<size_t>(nLen));
}

inline std::string get(const Document &document, const std::string &sName) {
  int nError = 0;
  const Value *ptValue = cvtGetNameValue(document.get(), cs(sName.c_str()), &nError);
  if (ptValue == nullptr) return "no such value";
  return ptValue->nLen <= 0 ? "" : std::string(ptValue->psValue, static_cast<size_t>(ptValue->nLen));
}

inline void set(const Document &document, const std::string &sName, const std::string &sValue) {
  cvtSetNameValue(document.get(), cs(sName.c_str()), cs(sValue.c_str()), static_cast<int>(sValue.size()));
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

}  // namespace test::xmldoc

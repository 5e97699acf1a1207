// format_config.h: what the tests of every format share: definitions in the format's own words, and messages going
// through them. fix_config.h, xml_config.h and the others say which records a format has.
#pragma once

#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "config_tree.h"
#include "cvt.h"
#include "log_capture.h"
#include "toy_config.h"

namespace test::format {

// One node: everything inside its Message element.
struct FormatNode {
  std::string sName;
  std::string sInside;
};

// Siblings: the first carries the name of the field that holds the list.
inline std::string chain(const std::vector<FormatNode> &nodes, const std::string &sFirstId) {
  std::string s;
  for (const FormatNode &node : nodes) {
    s += "<Message __ID=\"" + (s.empty() ? sFirstId : "ptNextNode") + "\" psNodeName=\"" + node.sName +
         "\">" + node.sInside + "</Message>\n";
  }
  return s;
}

// An empty sRecord: the node has none.
inline std::string formatAttr(const std::string &sRecord, const std::string &sAttributes) {
  if (sRecord.empty()) return "";
  return "<FormatAttr __ID=\"ptFormAttr\"><" + sRecord + " __ID=\"pInfo\" " + sAttributes + "/></FormatAttr>";
}

inline FormatNode leaf(const std::string &sRecord, const std::string &sName, const std::string &sAttributes) {
  return {sName, formatAttr(sRecord, sAttributes) + "<StructAttr __ID=\"ptStructAttr\"/>"};
}

inline FormatNode branch(const std::string &sRecord, const std::string &sName, const std::string &sAttributes,
                         const std::vector<FormatNode> &children) {
  return {sName, formatAttr(sRecord, sAttributes) + "<StructAttr __ID=\"ptStructAttr\">" +
                     chain(children, "ptChildNode") + "</StructAttr>"};
}

// sLoop: the record of the loop, with attributes. sCount: the name of its count field, if it has one.
inline FormatNode repeated(const std::string &sRecord, const std::string &sName,
                           const std::string &sAttributes, const std::string &sLoop,
                           const std::vector<FormatNode> &body, const std::string &sCount) {
  const std::string sCounted = sCount.empty() ? "" : " psLoopNumName=\"" + sCount + "\"";
  return {sName, formatAttr(sRecord, sAttributes) +
                     "<StructAttr __ID=\"ptStructAttr\" nType=\"1\"><LoopType __ID=\"pInfo\"" + sCounted +
                     "><" + sLoop + "/></LoopType>" + chain(body, "ptChildNode") + "</StructAttr>"};
}

// A tree with a plug-in, a pipeline of its name that parses and one "02" that generates, and the definitions
// added. FORMAT says what is the plug-in's: psPlugin, and psMsg, the record of a message.
template <class FORMAT>
class Config : public ConfigTree {
 public:
  // sPlugAttributes: further attributes of the plug-in's element.
  explicit Config(const std::string &sPlugAttributes = "") {
    RootFile root;
    root.sPlug = plugSection({"psName=\"" + plugin() + "\" " + sPlugAttributes});
    root.sMessage = messageSection({"msg"});
    root.sId = "<Id __ID=\"ptId\" psIdPath=\"id\"/>";
    file("All/root.xml", root.text());
    file("id/pipelines.xml",
         pipelines({{plugin(), {"pubParse"}, {"pubGenerate"}}, {"02", {}, {"pubGenerate"}}}));
  }

  // sAttributes: of the record of the message.
  Config &message(const std::string &sName, const std::string &sAttributes,
                  const std::vector<FormatNode> &nodes) {
    file("msg/" + sName + ".xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<" + plugin() +
                                      "><Msg psMsgName=\"" + sName + "\"><" + FORMAT::psMsg +
                                      " __ID=\"pInfo\" " + sAttributes + "/>" + chain(nodes, "ptHead") +
                                      "</Msg></" + plugin() + ">");
    return *this;
  }

  int start() { return cvtInit(arg()); }

 private:
  static std::string plugin() { return FORMAT::psPlugin; }
};

struct Free {
  void operator()(InnerMessage *ptMsg) const { cvtFreeMessage(ptMsg); }
};
using Handle = std::unique_ptr<InnerMessage, Free>;

// The message, or null. The bytes are kept in a block of exactly their size for as long as the process lives.
template <class FORMAT>
Handle parse(const std::string &sName, const std::string &sBytes) {
  static std::vector<std::unique_ptr<std::vector<char>>> kept;
  kept.push_back(std::make_unique<std::vector<char>>(sBytes.begin(), sBytes.end()));
  kept.back()->shrink_to_fit();
  char none = 0;
  char *psBytes = kept.back()->empty() ? &none : kept.back()->data();
  int nError = 0;
  return Handle(cvtInitMessasge(cs(sName.c_str()), cs(FORMAT::psPlugin), psBytes,
                                static_cast<int>(sBytes.size()), &nError));
}

template <class FORMAT>
Handle create(const std::string &sName) {
  int nError = 0;
  return Handle(cvtNewMessage(cs(sName.c_str()), cs(FORMAT::psPlugin), &nError));
}

// The message in a buffer of exactly nRoom bytes; "failed" when it cannot be written.
inline std::string generate(const Handle &message, size_t nRoom = 100000) {
  if (message == nullptr) return "no message";
  std::vector<char> room(nRoom);
  int nLen = static_cast<int>(nRoom);
  char none = 0;
  if (cvtGenMessage(message.get(), nRoom == 0 ? &none : room.data(), &nLen) != 0) return "failed";
  return std::string(room.data(), static_cast<size_t>(nLen));
}

inline std::string get(const Handle &message, const std::string &sName) {
  if (message == nullptr) return "no message";
  int nError = 0;
  const Value *ptValue = cvtGetNameValue(message.get(), cs(sName.c_str()), &nError);
  if (ptValue == nullptr) return "no such value";
  return ptValue->nLen <= 0 ? "" : std::string(ptValue->psValue, static_cast<size_t>(ptValue->nLen));
}

inline void set(const Handle &message, const std::string &sName, const std::string &sValue) {
  cvtSetNameValue(message.get(), cs(sName.c_str()), cs(sValue.c_str()), static_cast<int>(sValue.size()));
}

inline void addTime(const Handle &message, const std::string &sLoop) {
  cvtAddLoopTime(message.get(), cs(sLoop.c_str()));
}

// Makes a repetition current and tells whether there is one.
inline bool at(const Handle &message, const std::string &sLoop, int nTime) {
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

inline std::string contentOf(const std::string &sFile) {
  std::ifstream in(sFile, std::ios::binary);
  std::ostringstream all;
  all << in.rdbuf();
  return all.str();
}

}  // namespace test::format

// iso_config.h: configurations of the format `iso8583`, and messages going through them.
//
//   IsoConfig config;
//   config.message("M", "", {mti(), field("Pan", "nNumber=\"2\" psType=\"n\" psPrefix=\"LL\"")});
//   ASSERT_EQ(config.start(), 0);
//   Wire message = parse("M", "0200" + bitmap({2}) + "0411");
//   EXPECT_EQ(get(message, "Pan"), "1122");
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

namespace test::iso {

// One node: everything inside its Message element.
struct IsoNode {
  std::string sName;
  std::string sInside;
};

inline std::string chain(const std::vector<IsoNode> &nodes, const std::string &sFirstId) {
  std::string s;
  for (const IsoNode &node : nodes) {
    s += "<Message __ID=\"" + (s.empty() ? sFirstId : "ptNextNode") + "\" psNodeName=\"" + node.sName +
         "\">" + node.sInside + "</Message>\n";
  }
  return s;
}

inline std::string formatAttr(const std::string &sRecord, const std::string &sAttributes) {
  return "<FormatAttr __ID=\"ptFormAttr\"><" + sRecord + " __ID=\"pInfo\" " + sAttributes + "/></FormatAttr>";
}

// sAttributes: of its IsoField.
inline IsoNode field(const std::string &sName, const std::string &sAttributes) {
  return {sName, formatAttr("IsoField", sAttributes) + "<StructAttr __ID=\"ptStructAttr\"/>"};
}

inline IsoNode mti(const std::string &sAttributes = "") {
  return field("Mti", "psKind=\"mti\" " + sAttributes);
}

// sRecord: IsoGroup or IsoTlv; empty: a plain group.
inline IsoNode group(const std::string &sName, const std::string &sRecord, const std::string &sAttributes,
                     const std::vector<IsoNode> &children) {
  return {sName, (sRecord.empty() ? "" : formatAttr(sRecord, sAttributes)) +
                     "<StructAttr __ID=\"ptStructAttr\">" + chain(children, "ptChildNode") + "</StructAttr>"};
}

// sLoop: attributes of its IsoLoop.
inline IsoNode loop(const std::string &sName, const std::string &sRecord, const std::string &sAttributes,
                    const std::string &sLoop, const std::vector<IsoNode> &body) {
  return {sName, (sRecord.empty() ? "" : formatAttr(sRecord, sAttributes)) +
                     "<StructAttr __ID=\"ptStructAttr\" nType=\"1\"><LoopType __ID=\"pInfo\"><IsoLoop "
                     "__ID=\"ptInfo\" " +
                     sLoop + "/></LoopType>" + chain(body, "ptChildNode") + "</StructAttr>"};
}

// A tree with the plug-in, a pipeline "iso" that parses and one "02" that generates, and the definitions
// added.
class IsoConfig : public ConfigTree {
 public:
  explicit IsoConfig(const std::string &sPlugAttributes = "") {
    RootFile root;
    root.sPlug = plugSection({"psName=\"iso8583\" " + sPlugAttributes});
    root.sMessage = messageSection({"msg"});
    root.sId = "<Id __ID=\"ptId\" psIdPath=\"id\"/>";
    file("All/root.xml", root.text());
    file("id/pipelines.xml",
         pipelines({{"iso", {"pubParse"}, {"pubGenerate"}}, {"02", {}, {"pubGenerate"}}}));
  }

  // sAttributes: of its IsoMsg.
  IsoConfig &message(const std::string &sName, const std::string &sAttributes,
                     const std::vector<IsoNode> &nodes) {
    file("msg/" + sName + ".xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<iso8583><Msg psMsgName=\"" +
                                      sName + "\">" + test::iso::chain(nodes, "ptHead") +
                                      "<IsoMsg __ID=\"pInfo\" " + sAttributes + "/></Msg></iso8583>");
    return *this;
  }

  int start() { return cvtInit(arg()); }
};

struct Free {
  void operator()(InnerMessage *ptMsg) const { cvtFreeMessage(ptMsg); }
};
using Wire = std::unique_ptr<InnerMessage, Free>;

// The message, or null. The bytes are kept in a block of exactly their size for as long as the process lives.
inline Wire parse(const std::string &sName, const std::string &sBytes) {
  static std::vector<std::unique_ptr<std::vector<char>>> kept;
  kept.push_back(std::make_unique<std::vector<char>>(sBytes.begin(), sBytes.end()));
  kept.back()->shrink_to_fit();
  char none = 0;
  char *psBytes = kept.back()->empty() ? &none : kept.back()->data();
  int nError = 0;
  return Wire(
      cvtInitMessasge(cs(sName.c_str()), cs("iso"), psBytes, static_cast<int>(sBytes.size()), &nError));
}

inline Wire create(const std::string &sName) {
  int nError = 0;
  return Wire(cvtNewMessage(cs(sName.c_str()), cs("iso"), &nError));
}

// The message in a buffer of exactly nRoom bytes; "failed" when it cannot be written.
inline std::string generate(const Wire &message, size_t nRoom = 100000) {
  if (message == nullptr) return "no message";
  std::vector<char> room(nRoom);
  int nLen = static_cast<int>(nRoom);
  char none = 0;
  if (cvtGenMessage(message.get(), nRoom == 0 ? &none : room.data(), &nLen) != 0) return "failed";
  return std::string(room.data(), static_cast<size_t>(nLen));
}

inline std::string get(const Wire &message, const std::string &sName) {
  if (message == nullptr) return "no message";
  int nError = 0;
  const Value *ptValue = cvtGetNameValue(message.get(), cs(sName.c_str()), &nError);
  if (ptValue == nullptr) return "no such value";
  return ptValue->nLen <= 0 ? "" : std::string(ptValue->psValue, static_cast<size_t>(ptValue->nLen));
}

inline void set(const Wire &message, const std::string &sName, const std::string &sValue) {
  cvtSetNameValue(message.get(), cs(sName.c_str()), cs(sValue.c_str()), static_cast<int>(sValue.size()));
}

// An empty value that was given, as a converter copies it.
inline void give(const Wire &message, const std::string &sName) {
  static char sEmpty[] = "";
  int nError = 0;
  Value *ptValue = cvtGetNameValue(message.get(), cs(sName.c_str()), &nError);
  if (ptValue == nullptr) return;
  ptValue->psValue = sEmpty;
  ptValue->nLen = 0;
}

inline void addTime(const Wire &message, const std::string &sLoop) {
  cvtAddLoopTime(message.get(), cs(sLoop.c_str()));
}

// A bitmap of 64 bits with those numbers, 1 to 64, in hexadecimal digits.
inline std::string bitmap(const std::vector<int> &numbers) {
  unsigned long long nBits = 0;
  for (const int n : numbers) nBits |= 1ULL << (64 - n);
  char sDigits[17];
  std::snprintf(sDigits, sizeof sDigits, "%016llX", nBits);
  return sDigits;
}

// Hexadecimal digits, blanks between them, to bytes.
inline std::string bytes(const std::string &sHex) {
  std::string sBytes;
  std::string sDigits;
  for (const char c : sHex) {
    if (c == ' ') continue;
    sDigits += c;
    if (sDigits.size() < 2) continue;
    sBytes += static_cast<char>(std::stoi(sDigits, nullptr, 16));
    sDigits.clear();
  }
  return sBytes;
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

}  // namespace test::iso

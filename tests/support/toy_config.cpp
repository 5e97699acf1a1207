#include "toy_config.h"

#include <chrono>

#include "cvt.h"

namespace test {

namespace {

constexpr int kLoop = CVT_STRUCT_LOOP;

std::string nodeList(const std::vector<Node> &nodes, const std::string &sHead) {
  std::string s;
  for (const Node &node : nodes) {
    s += "<Message __ID=\"" + (s.empty() ? sHead : "ptNextNode") + "\" psNodeName=\"" + node.sName + "\">";
    s += "<StructAttr __ID=\"ptStructAttr\" nType=\"" + std::to_string(node.nKind) + "\">";
    if (node.nKind == kLoop) s += "<LoopType __ID=\"pInfo\"/>";
    s += nodeList(node.children, "ptChildNode") + "</StructAttr></Message>";
  }
  return s;
}

// A rule that copies a source field to a destination field.
std::string copyRule(const std::string &sId, const std::string &sFrom, const std::string &sTo) {
  return "<Arg __ID=\"" + sId + "\" nType=\"6\"><Copy __ID=\"pInfo\">" +
         "<Arg __ID=\"ptSrcArgs\" nType=\"0\"><Node __ID=\"pInfo\" nType=\"0\" psName=\"" + sFrom +
         "\"/></Arg>" + "<Arg __ID=\"ptDstArgs\" nType=\"1\"><Node __ID=\"pInfo\" nType=\"1\" psName=\"" +
         sTo + "\"/></Arg>" + "</Copy></Arg>";
}

std::string loopRule(const std::string &sFrom, const std::string &sTo, const std::string &sRules) {
  return std::string("<Arg __ID=\"ptNext\" nType=\"8\"><Loop __ID=\"pInfo\">") +
         "<Arg __ID=\"ptSrcArgs\" nType=\"0\"><Node __ID=\"pInfo\" nType=\"0\" psName=\"" + sFrom +
         "\"/></Arg>" + "<Arg __ID=\"ptDstArgs\" nType=\"1\"><Node __ID=\"pInfo\" nType=\"1\" psName=\"" +
         sTo + "\"/></Arg>" + sRules + "</Loop></Arg>";
}

std::string billConverter() {
  return "<Convert><Converter psName=\"bill\" psSrcStructName=\"Order\" psDstStructName=\"Invoice\">" +
         copyRule("ptArgs", "Id", "Number") + copyRule("ptNext", "Name", "Customer") +
         loopRule("Items", "Lines", copyRule("ptArgs", "Code", "Article")) + "</Converter></Convert>";
}

std::string choice() {
  return "<IdInfo><IdMsgInfo psMsgName=\"Order\"><IdCvtInfo __ID=\"ptIdCvtInfo\" psFormatId=\"01\" "
         "psCvtName=\"bill\"/></IdMsgInfo></IdInfo>";
}

}  // namespace

Node field(const std::string &sName) {
  return {sName};
}
Node group(const std::string &sName, const std::vector<Node> &children) {
  return {sName, 0, children};
}
Node loop(const std::string &sName, const std::vector<Node> &body) {
  return {sName, kLoop, body};
}

std::string definition(const std::string &sFormat, const std::string &sName, const std::vector<Node> &nodes) {
  return "<" + sFormat + "><Msg psMsgName=\"" + sName + "\">" + nodeList(nodes, "ptHead") + "</Msg></" +
         sFormat + ">";
}

std::string chain(const std::string &sField, const std::vector<std::string> &steps) {
  std::string s;
  for (const std::string &sStep : steps) {
    s += "<IdFunc __ID=\"" + (s.empty() ? sField : "ptNext") + "\" psFunctName=\"" + sStep + "\"/>";
  }
  return s;
}

std::string pipelines(const std::vector<Pipeline> &all) {
  std::string s;
  for (const Pipeline &one : all) {
    s += std::string("<FormatInfo") + (s.empty() ? "" : " __ID=\"ptNext\"") + " psFormatId=\"" +
         one.sFormatId + "\">" + chain("ptParseFunc", one.parse) + chain("ptGenFunc", one.generate) +
         "</FormatInfo>";
  }
  return "<Id>" + s + "</Id>";
}

std::string plugSection(const std::vector<std::string> &plugs) {
  std::string s;
  for (const std::string &sPlug : plugs) {
    s += "<Plug __ID=\"" + std::string(s.empty() ? "ptPlugs" : "ptNext") + "\" " + sPlug + "/>";
  }
  return "<Plug __ID=\"ptPlug\" psBasePlugPath=\"" CVT2_PLUGIN_DIR "/\">" + s + "</Plug>";
}

std::string messageSection(const std::vector<std::string> &paths) {
  std::string s;
  for (const std::string &sPath : paths) {
    s += "<PathList __ID=\"" + std::string(s.empty() ? "ptMsgList" : "ptNext") + "\" psPath=\"" + sPath +
         "\"/>";
  }
  return "<Message __ID=\"ptMessage\" gnMaxValue=\"12\" gnMaxLoop=\"999\">" + s + "</Message>";
}

std::string RootFile::text() const {
  return "<AllInfo><AllInfo " + sAttributes + ">" + sPlug + sMessage + sConvert + sId +
         "</AllInfo></AllInfo>";
}

ToyConfig::ToyConfig() {
  root.sPlug = plugSection({"psName=\"toy\""});
  root.sMessage = messageSection({"msg"});
  root.sConvert = "<Convert __ID=\"ptConvert\" psCvtPath=\"cvt\"/>";
  root.sId = "<Id __ID=\"ptId\" psIdPath=\"id\" psIdInfoPath=\"idinfo\"/>";
  writeRoot();
  const Node lots = loop("Lots", {field("Lot"), field("Date")});
  const Node items = loop("Items", {field("Code"), field("Qty"), lots});
  const Node who = group("Who", {field("Name"), field("City")});
  file("msg/Order.xml", definition("toy", "Order", {field("Id"), who, items, field("Note")}));
  const Node lines = loop("Lines", {field("Article")});
  file("msg/Invoice.xml", definition("toy", "Invoice", {field("Number"), field("Customer"), lines}));
  file("cvt/bill.xml", billConverter());
  file("id/pipelines.xml", pipelines({{"01", {"pubParse"}, {"pubConvert", "pubGenerate"}},
                                      {"02", {"toyName", "pubParse"}, {"pubGenerate"}}}));
  file("idinfo/choice.xml", choice());
}

int ToyConfig::start() {
  return cvtInit(arg());
}

void ToyConfig::touchRoot() {
  const auto later = std::chrono::seconds(10 * ++m_nTouched);
  std::filesystem::last_write_time(path("All/root.xml"),
                                   std::filesystem::file_time_type::clock::now() + later);
}

}  // namespace test

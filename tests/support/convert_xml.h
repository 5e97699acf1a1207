// convert_xml.h: short words for the XML of definitions, converters and root files.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

namespace test::xml {

// --- Definitions: definition("toy", "Order", {field("Id"), loop("Items", {field("Code")})}) --------------

// The StructAttr element's attributes and content, and the node's name.
struct Field {
  std::string sName;
  std::string sAttributes;  // of StructAttr
  std::string sContent;     // of StructAttr
};

// A chain of sibling nodes; the first one's __ID is the field that holds the chain.
inline std::string nodes(const std::string &sId, const std::vector<Field> &fields) {
  std::string s;
  for (const Field &f : fields) {
    s += "<Message __ID='" + (s.empty() ? sId : "ptNextNode") + "' psNodeName='" + f.sName +
         "'><StructAttr __ID='ptStructAttr'" + f.sAttributes + ">" + f.sContent + "</StructAttr></Message>";
  }
  return s;
}

inline Field field(const std::string &sName) {
  return {sName, "", ""};
}

inline Field group(const std::string &sName, const std::vector<Field> &members) {
  return {sName, "", nodes("ptChildNode", members)};
}

inline Field loop(const std::string &sName, const std::vector<Field> &body) {
  return {sName, " nType='1'", "<LoopType __ID='pInfo'/>" + nodes("ptChildNode", body)};
}

inline std::string definition(const std::string &sFormat, const std::string &sName,
                              const std::vector<Field> &fields) {
  return "<" + sFormat + "><Msg psMsgName='" + sName + "'>" + nodes("ptHead", fields) + "</Msg></" + sFormat +
         ">";
}

// --- Converters: converter("C", "In", "Out", {copy(src("A"), dst("B"))}) ---------------------------------

// A rule or an argument: its code, and its record as the element with __ID pInfo (empty: none).
struct ArgXml {
  int nType;
  std::string sRecord;
};
using Args = std::vector<ArgXml>;

// A list of rules or arguments, in the field sId.
inline std::string args(const std::string &sId, const Args &list) {
  std::string s;
  for (const ArgXml &a : list) {
    s += "<Arg __ID='" + (s.empty() ? sId : "ptNext") + "' nType='" + std::to_string(a.nType) + "'>" +
         a.sRecord + "</Arg>";
  }
  return s;
}

inline ArgXml node(int nArgType, int nNodeType, const std::string &sName) {
  return {nArgType, "<Node __ID='pInfo' nType='" + std::to_string(nNodeType) + "' psName='" + sName + "'/>"};
}
inline ArgXml src(const std::string &sName) {
  return node(0, 0, sName);
}
inline ArgXml dst(const std::string &sName) {
  return node(1, 1, sName);
}
inline ArgXml level(const std::string &sName = "level") {
  return node(2, 2, sName);
}

inline ArgXml value(const std::string &sText) {
  return {3, "<Value __ID='pInfo' psValue='" + sText + "' nLen='" + std::to_string(sText.size()) + "'/>"};
}
inline ArgXml func(const std::string &sName, const Args &list = {}) {
  return {4, "<Function __ID='pInfo' psName='" + sName + "'>" + args("ptArgs", list) + "</Function>"};
}
inline ArgXml copy(const ArgXml &from, const ArgXml &to) {
  return {6, "<Copy __ID='pInfo'>" + args("ptSrcArgs", {from}) + args("ptDstArgs", {to}) + "</Copy>"};
}
inline ArgXml loopRule(const ArgXml &from, const ArgXml &to, const Args &rules) {
  return {8, "<Loop __ID='pInfo'>" + args("ptSrcArgs", {from}) + args("ptDstArgs", {to}) +
                 args("ptArgs", rules) + "</Loop>"};
}
inline ArgXml sql(const Args &pieces, const Args &fields = {}) {
  return {9, "<Sql __ID='pInfo'>" + args("ptSqlList", pieces) + args("ptFieldList", fields) + "</Sql>"};
}
inline ArgXml loopNum(const ArgXml &loop) {
  return {10, "<LoopGetNum __ID='pInfo'>" + args("ptLoop", {loop}) + "</LoopGetNum>"};
}

struct JudgeXml {
  ArgXml from;
  ArgXml to;
};
struct CaseXml {
  std::vector<JudgeXml> judges;
  Args rules;
};
inline JudgeXml equal(const ArgXml &from, const ArgXml &to) {
  return {from, to};
}
inline CaseXml when(const std::vector<JudgeXml> &alternatives, const Args &rules) {
  return {alternatives, rules};
}
inline CaseXml otherwise(const Args &rules) {
  return {{}, rules};
}

inline std::string judges(const std::vector<JudgeXml> &list) {
  std::string s;
  for (const JudgeXml &j : list) {
    s += "<Judge __ID='" + std::string(s.empty() ? "ptJudge" : "ptNext") + "'>" +
         args("ptSrcArgs", {j.from}) + args("ptDstArgs", {j.to}) + "</Judge>";
  }
  return s;
}

inline ArgXml cases(const std::vector<CaseXml> &list) {
  std::string s;
  for (const CaseXml &c : list) {
    s += "<Case __ID='" + std::string(s.empty() ? "pInfo" : "ptNext") + "'>" + judges(c.judges) +
         args("ptArgs", c.rules) + "</Case>";
  }
  return {7, s};
}

struct Entry {
  Args tag;  // one argument, or none
  Args rules;
};
inline Entry tagged(const ArgXml &tag, const Args &rules) {
  return {{tag}, rules};
}
inline Entry untagged(const Args &rules) {
  return {{}, rules};
}

inline ArgXml mapping(const Args &value, const std::vector<Entry> &list) {
  std::string s;
  for (const Entry &e : list) {
    s += "<MappingList __ID='" + std::string(s.empty() ? "ptList" : "ptNext") + "'>" +
         args("ptTagArgs", e.tag) + args("ptActList", e.rules) + "</MappingList>";
  }
  return {11, "<Mapping __ID='pInfo'>" + args("ptMapArgs", value) + s + "</Mapping>"};
}

inline std::string converter(const std::string &sName, const std::string &sSrc, const std::string &sDst,
                             const Args &rules) {
  return "<Convert><Converter psName='" + sName + "' psSrcStructName='" + sSrc + "' psDstStructName='" +
         sDst + "'>" + args("ptArgs", rules) + "</Converter></Convert>";
}

// --- Pipelines and the choice of converters --------------------------------------------------------------

struct Step {
  std::string sName;
  std::string sArg = "";  // the argument record, with __ID ptArg
};
using Steps = std::vector<Step>;

inline std::string steps(const std::string &sId, const Steps &list) {
  std::string s;
  for (const Step &step : list) {
    s += "<IdFunc __ID='" + (s.empty() ? sId : "ptNext") + "' psFunctName='" + step.sName + "'>" + step.sArg +
         "</IdFunc>";
  }
  return s;
}

struct Pipeline {
  std::string sFormatId;
  Steps parse;
  Steps generate;
};

inline std::string pipelines(const std::vector<Pipeline> &list) {
  std::string s;
  for (const Pipeline &p : list) {
    s += "<FormatInfo __ID='ptNext' psFormatId='" + p.sFormatId + "'>" + steps("ptParseFunc", p.parse) +
         steps("ptGenFunc", p.generate) + "</FormatInfo>";
  }
  return "<Id>" + s + "</Id>";
}

struct Pair {
  std::string sFormatId;
  std::string sConverter;
};
struct Choice {
  std::string sMessage;
  std::vector<Pair> pairs;
};

inline std::string choices(const std::vector<Choice> &list) {
  std::string s;
  for (const Choice &c : list) {
    s += "<IdMsgInfo __ID='ptNext' psMsgName='" + c.sMessage + "'>";
    std::string sPairs;
    for (const Pair &p : c.pairs) {
      sPairs += "<IdCvtInfo __ID='" + std::string(sPairs.empty() ? "ptIdCvtInfo" : "ptNext") +
                "' psFormatId='" + p.sFormatId + "' psCvtName='" + p.sConverter + "'/>";
    }
    s += sPairs + "</IdMsgInfo>";
  }
  return "<IdInfo>" + s + "</IdInfo>";
}

}  // namespace test::xml

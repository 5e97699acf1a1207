// bound_records.h: every bound record type as a table: its fields in declared order, its four functions, and
// what its elements need to be read at all.
#pragma once

#include <cstddef>
#include <cstring>
#include <map>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "cvt.h"

namespace test {

enum class Kind { kText, kInt, kChar, kVoid, kStruct, kNext };

struct Field {
  Kind kind;
  std::string sName;
  std::size_t nOffset;
  std::string sType = "";    // of the record pointed to
  std::string sParse = "";   // statement of a custom parse step
  std::string sWrite = "";   // statement that writes it, where it is not the kind's own
  std::string sBroken = "";  // inside of an element that a custom parse step refuses
};

// Arguments for a Make step: each another one, recognisable by its number.
class Arguments {
 public:
  template <class A>
  A next() {
    const int n = m_nNext++;
    if constexpr (std::is_same_v<A, int>) {
      return n;
    } else if constexpr (std::is_same_v<A, char>) {
      return static_cast<char>('a' + n);
    } else if constexpr (std::is_same_v<A, char *>) {
      return text(n);
    } else {
      return static_cast<A>(pointer(n));
    }
  }

  // They begin at 2, which is also the kind of a Node that stands for no node.
  static constexpr int kFirst = 2;
  char *text(int n) { return &m_texts[n][0]; }
  void *pointer(int n) { return m_records[n]; }

 private:
  int m_nNext = kFirst;
  char m_texts[10][10] = {"text0", "text1", "text2", "text3", "text4",
                          "text5", "text6", "text7", "text8", "text9"};
  char m_records[10][sizeof(Msg)] = {};
};

template <class T, class... A>
void *callMake(T *(*make)(T *, A...), void *p, Arguments &arguments) {
  const std::tuple<A...> values{arguments.next<A>()...};
  return std::apply([&](A... value) { return make(static_cast<T *>(p), value...); }, values);
}
template <class T, class... A>
void *callNew(T *(*create)(A...), Arguments &arguments) {
  const std::tuple<A...> values{arguments.next<A>()...};
  return std::apply(create, values);
}

struct Record {
  std::string sType;
  std::string sModule;
  std::size_t nSize;
  void *(*make)(void *p, Arguments &arguments);
  void *(*create)(Arguments &arguments);
  void *(*parse)(void *ptXmlNode, char *psType);
  void *(*gen)(void *p, void *ptXmlNode, char *psType);
  std::vector<Field> fields;
  std::map<std::string, std::string> needed = {};  // attributes without which it cannot be read
  std::string sNeededInside = "";                  // and elements
  std::vector<std::string> derived = {};           // statements of the Make step
};

struct Module {
  std::string sName;
  void *(*parse)(void *ptXmlNode, char *psType);
  void *(*gen)(void *p, void *ptXmlNode, char *psName, char *psType);
};

inline const std::vector<Module> &modules() {
#define MODULE(name) \
  { #name, sttParseVoid##name, sttGenVoid##name }
  static const std::vector<Module> all = {
      MODULE(cvt_init),        MODULE(cvt_plug),    MODULE(cvt_message),  MODULE(_cvt_message),
      MODULE(cvt_struct_loop), MODULE(cvt_convert), MODULE(cvt_identify),
  };
#undef MODULE
  return all;
}

#define RECORD(T, module, ...)                                                                               \
  [] {                                                                                                       \
    using R [[maybe_unused]] = T;                                                                            \
    return Record{#T,                                                                                        \
                  #module,                                                                                   \
                  sizeof(T),                                                                                 \
                  [](void *p, Arguments &arguments) { return callMake(sttMake##T, p, arguments); },          \
                  [](Arguments &arguments) { return callNew(sttNew##T, arguments); },                        \
                  [](void *ptXmlNode, char *psType) -> void * { return sttParseXml##T(ptXmlNode, psType); }, \
                  [](void *p, void *ptNode, char *psType) {                                                  \
                    return sttGenXml##T(static_cast<T *>(p), ptNode, psType);                                \
                  },                                                                                         \
                  __VA_ARGS__};                                                                              \
  }()
#define AS(kind, name, ...)                     \
  Field {                                       \
    kind, #name, offsetof(R, name), __VA_ARGS__ \
  }
#define TEXT(name) AS(Kind::kText, name)
#define TEXT_BY(name, parse) AS(Kind::kText, name, "", "char * " #name " = " parse)
#define INT(name) AS(Kind::kInt, name)
#define CHAR(name) AS(Kind::kChar, name)
#define VOID(name) AS(Kind::kVoid, name)
#define VOID_BY(name, parse) AS(Kind::kVoid, name, "", "void * " #name " = " parse)
#define STRUCT(name, U) AS(Kind::kStruct, name, #U)
#define STRUCT_BY(name, U, parse) AS(Kind::kStruct, name, #U, parse)
#define NEXT(name, U) AS(Kind::kNext, name, #U)
#define SECTION(name, U, init, gen, broken)                                                   \
  AS(Kind::kStruct, name, #U,                                                                 \
     "void * " #name " = sttParseXmlStruct(ptXmlNode, \"" #U "\", \"" #name "\", " #init ")", \
     "sttGenerateXmlStruct(ptXmlNode, p->" #name ", \"" #name "\", \"" #U "\", " #gen ")", broken)

inline const std::vector<Record> &records() {
  static const std::vector<Record> all = {
      RECORD(AllInfo, cvt_init,
             {TEXT(psBasePath), INT(nReload), INT(nDebug),
              SECTION(ptPlug, Plug, cvtPlugInit, genPlugSection, "><Plug __ID='ptPlugs'/>"),
              SECTION(ptMessage, Message, cvtFmtInit, genMessageSection,
                      "><PathList __ID='ptMsgList' psPath='bad'/>"),
              SECTION(ptConvert, Convert, cvtCvtInit, genConvertSection, " psCvtPath='bad'>"),
              SECTION(ptId, Id, cvtIdInit, genIdSection, " psIdPath='bad'>")}),

      RECORD(Plug, cvt_plug,
             {TEXT(psName), TEXT(psPath), TEXT(psFunction),
              VOID_BY(ptInfo, "GetPlug(psName, psPath, psFunction, ptXmlNode)"), NEXT(ptNext, Plug)},
             // any library with a function that takes an element and answers 0
             {{"psName", "any"}, {"psPath", "libcvt2.so"}, {"psFunction", "cvtConvertMessage"}}),
      RECORD(PlugInfo, cvt_plug,
             {TEXT_BY(psBasePlugPath, "GetBasePlugPath(ptXmlNode)"), STRUCT(ptPlugs, Plug)}),

      RECORD(Value, cvt_message, {TEXT(psValue), INT(nLen)}),
      RECORD(FormatAttr, cvt_message, {TEXT(psFormatName), VOID(pInfo)}),
      RECORD(StructAttr, cvt_message,
             {INT(nType), VOID(pInfo), STRUCT(ptOtherNode, Message), STRUCT(ptChildNode, Message),
              STRUCT(ptLoopNode, Message), NEXT(ptNextNode, Message)}),
      RECORD(Message, cvt_message,
             {TEXT(psNodeName), INT(nType), STRUCT(ptFormAttr, FormatAttr), STRUCT(ptStructAttr, StructAttr)},
             {}, "", {"p->nIndex = -1"}),
      RECORD(Msg, cvt_message,
             {TEXT(psMsgName), TEXT(psMsgDesc), TEXT(psType), STRUCT(ptHead, Message), VOID(pInfo),
              VOID(pIdInfo)},
             {}, "",
             {"p->nFieldNum = -1", "p->nValueNum = -1", "p->fGen = NULL", "p->fParse = NULL",
              "p->fGetValue = NULL", "p->fSetValue = NULL", "p->pptMessageIdx = NULL"}),

      RECORD(PathList, _cvt_message, {TEXT(psPath), NEXT(ptNext, PathList)}),
      RECORD(CvtFmtArgs, _cvt_message, {INT(gnMaxValue), INT(gnMaxLoop), STRUCT(ptMsgList, PathList)}),

      RECORD(
          LoopType, cvt_struct_loop, {TEXT(psLoopNumName), VOID(ptInfo)}, {}, "",
          {"p->nFieldNum = -1", "p->nCurrentTime = -1", "p->pptMessageIdx = NULL", "p->nLoopNumIndex = -1"}),

      // kind 2 is at home in every list
      RECORD(Arg, cvt_convert, {INT(nType), VOID(pInfo), NEXT(ptNext, Arg)}, {{"nType", "2"}}),
      RECORD(Converter, cvt_convert,
             {TEXT(psName), TEXT(psSrcStructName), TEXT(psDstStructName),
              STRUCT_BY(ptArgs, Arg,
                        "struct Arg * ptArgs = ParseArg(psSrcStructName, psDstStructName, ptXmlNode)")},
             {{"psSrcStructName", "Known"}, {"psDstStructName", "Known"}}),
      RECORD(Judge, cvt_convert, {STRUCT(ptSrcArgs, Arg), STRUCT(ptDstArgs, Arg), NEXT(ptNext, Judge)}),
      RECORD(Case, cvt_convert, {STRUCT(ptJudge, Judge), STRUCT(ptArgs, Arg), NEXT(ptNext, Case)}),
      RECORD(Copy, cvt_convert, {STRUCT(ptSrcArgs, Arg), STRUCT(ptDstArgs, Arg)}),
      RECORD(Loop, cvt_convert,
             {STRUCT(ptSrcArgs, Arg), STRUCT(ptDstArgs, Arg),
              STRUCT_BY(ptArgs, Arg, "Arg * ptArgs = ParseArgLoop(ptSrcArgs, ptDstArgs, ptXmlNode)")},
             {}, "<Arg __ID='ptSrcArgs' nType='2'/><Arg __ID='ptDstArgs' nType='2'/>"),
      RECORD(LoopGetNum, cvt_convert, {STRUCT(ptLoop, Arg)}),
      RECORD(Sql, cvt_convert, {STRUCT(ptSqlList, Arg), STRUCT(ptFieldList, Arg)}),
      RECORD(Function, cvt_convert, {TEXT(psName), STRUCT(ptArgs, Arg)}, {{"psName", "text2"}}, "",
             {"p->fCvtFunc = MakeFunction(psName, ptArgs)"}),
      RECORD(Node, cvt_convert, {INT(nType), TEXT(psName)}, {{"nType", "2"}}, "",
             {"p->nIdx = GetNodeIdx(nType, psName)"}),
      RECORD(CvtArgs, cvt_convert, {TEXT(psCvtPath)}),
      RECORD(MappingList, cvt_convert,
             {STRUCT(ptTagArgs, Arg), STRUCT(ptActList, Arg), NEXT(ptNext, MappingList)}),
      RECORD(Mapping, cvt_convert, {STRUCT(ptMapArgs, Arg), STRUCT(ptList, MappingList)}),

      RECORD(XmlNameArgs, cvt_identify, {TEXT(psNodeName), TEXT(psFront), TEXT(psBack)}),
      RECORD(IpcNameArgs, cvt_identify, {INT(nOffset), INT(nLen), TEXT(psFront), TEXT(psBack)}),
      RECORD(MoveBufferArgs, cvt_identify,
             {INT(nSrcOffset), INT(nSrcLen), INT(nDstOffset), INT(nDstAddFlag), TEXT(psFront), TEXT(psBack)}),
      RECORD(SetOffsetArgs, cvt_identify, {CHAR(caMsgType), INT(nOffset), INT(nSetType)}),
      RECORD(IdFunc, cvt_identify, {TEXT(psFunctName), VOID(ptArg), NEXT(ptNext, IdFunc)},
             {{"psFunctName", "text2"}}, "", {"p->fIdFunction = GetIdFunc(psFunctName)"}),
      RECORD(FormatInfo, cvt_identify,
             {TEXT(psFormatId), STRUCT(ptParseFunc, IdFunc), STRUCT(ptGenFunc, IdFunc),
              NEXT(ptNext, FormatInfo)}),
      RECORD(IdCvtInfo, cvt_identify,
             {TEXT_BY(psFormatId, "GetTargetFormat(ptXmlNode)"), TEXT(psCvtName), NEXT(ptNext, IdCvtInfo)},
             {{"psFormatId", ""}, {"psCvtName", "text3"}}, "", {"p->ptConverter = cvtGetCvt(psCvtName)"}),
      RECORD(IdMsgInfo, cvt_identify,
             {TEXT(psMsgName), STRUCT(ptIdCvtInfo, IdCvtInfo), NEXT(ptNext, IdMsgInfo)}),
      RECORD(CvtIdArgs, cvt_identify, {TEXT(psIdPath), TEXT(psIdInfoPath)}),
  };
  return all;
}

#undef RECORD
#undef AS
#undef TEXT
#undef TEXT_BY
#undef INT
#undef CHAR
#undef VOID
#undef VOID_BY
#undef STRUCT
#undef STRUCT_BY
#undef NEXT
#undef SECTION

inline const Record *recordOf(const std::string &sType) {
  for (const Record &record : records()) {
    if (record.sType == sType) return &record;
  }
  return nullptr;
}

// --- The statements that a failure quotes ------------------------------------------------------------------

inline std::string parseStatement(const Field &field) {
  if (!field.sParse.empty()) return field.sParse;
  const std::string sName = field.sName + " = sttParseXml";
  const std::string sQuoted = "\"" + field.sName + "\"";
  const std::string sTyped =
      "(ptXmlNode, \"" + field.sType + "\", " + sQuoted + ", sttParseXml" + field.sType + ")";
  switch (field.kind) {
    case Kind::kText:
      return "char * " + sName + "String(ptXmlNode, " + sQuoted + ")";
    case Kind::kInt:
      return "int " + sName + "Int(ptXmlNode, " + sQuoted + ")";
    case Kind::kChar:
      return "char " + sName + "Char(ptXmlNode, " + sQuoted + ")";
    case Kind::kVoid:
      return "void * " + sName + "Void(ptXmlNode, " + sQuoted + ")";
    case Kind::kStruct:
      return field.sType + " * " + sName + "Struct" + sTyped;
    case Kind::kNext:
      return "struct " + field.sType + " * " + sName + "Next" + sTyped;
  }
  return "";
}

inline std::string writeStatement(const Field &field) {
  if (!field.sWrite.empty()) return field.sWrite;
  static const std::map<Kind, std::string> names = {{Kind::kText, "String"},   {Kind::kInt, "Int"},
                                                    {Kind::kChar, "Char"},     {Kind::kVoid, "Void"},
                                                    {Kind::kStruct, "Struct"}, {Kind::kNext, "Next"}};
  const bool bTyped = field.kind == Kind::kStruct || field.kind == Kind::kNext;
  return "sttGenerateXml" + names.at(field.kind) + "(ptXmlNode, p->" + field.sName + ", \"" + field.sName +
         "\"" + (bTyped ? ", \"" + field.sType + "\", sttGenXml" + field.sType : "") + ")";
}

// --- Fields
// ----------------------------------------------------------------------------------------------------

inline bool isAttribute(const Field &field) {
  return field.kind <= Kind::kChar;
}
inline bool isSection(const Field &field) {
  return !field.sBroken.empty();
}
// A Void field that is made by a step of its own, not read from an element.
inline bool isMade(const Field &field) {
  return field.kind == Kind::kVoid && !field.sParse.empty();
}

// --- The fields of a record in memory, which may lie anywhere ----------------------------------------------

template <class V>
V valueAt(const void *p, const Field &field) {
  V value;
  std::memcpy(&value, static_cast<const char *>(p) + field.nOffset, sizeof value);
  return value;
}
template <class V>
void setAt(void *p, const Field &field, V value) {
  std::memcpy(static_cast<char *>(p) + field.nOffset, &value, sizeof value);
}

}  // namespace test

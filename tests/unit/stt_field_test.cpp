// The field readers and writers of the binding framework, one kind after the other.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <list>
#include <string>
#include <type_traits>
#include <vector>

#include "binding_fixture.h"
#include "config_tree.h"
#include "log_capture.h"
#include "stt.h"
#include "xml_text.h"

namespace {

using test::cs;
using test::logTexts;
using test::taken;
using test::untyped;
using test::Xml;
using Texts = std::vector<std::string>;

using SttAttribute = test::EmptyBinding;
using SttStruct = test::EmptyBinding;
using SttNext = test::EmptyBinding;
using SttVoid = test::EmptyBinding;

// --- Attributes --------------------------------------------------------------------------------------------

// Text of an element after one writer has filled it.
template <class F, class V>
std::string written(F writer, V value) {
  const Xml xml("<a/>");
  writer(xml.root(), value, cs("n"));
  EXPECT_EQ(nGRet, 0);
  return xml.text();
}

// What a reader makes of the attribute n of an element.
template <class F>
auto readBy(F reader, const std::string &sElement) {
  const Xml xml(sElement);
  const auto value = reader(xml.root(), cs("n"));
  EXPECT_EQ(nGRet, 0);
  return value;
}

TEST_F(SttAttribute, AStringIsReadAsANewString) {
  EXPECT_EQ(taken(readBy(sttParseXmlString, "<a n='v'/>")), "v");
  EXPECT_EQ(taken(readBy(sttParseXmlString, "<a n=''/>")), "");
  EXPECT_EQ(readBy(sttParseXmlString, "<a/>"), nullptr);
  sttFreeXmlString(readBy(sttParseXmlString, "<a n='v'/>"));
  sttFreeXmlString(nullptr);
}

TEST_F(SttAttribute, AStringIsWrittenUnlessNull) {
  EXPECT_EQ(written(sttGenerateXmlString, cs("v<")), "<a n=\"v&lt;\"/>");
  EXPECT_EQ(written(sttGenerateXmlString, cs("")), "<a n=\"\"/>");
  EXPECT_EQ(written(sttGenerateXmlString, static_cast<char *>(nullptr)), "<a/>");
}

TEST_F(SttAttribute, AnIntIsTheNumberTheTextBeginsWith) {
  EXPECT_EQ(readBy(sttParseXmlInt, "<a n='-12'/>"), -12);
  EXPECT_EQ(readBy(sttParseXmlInt, "<a n=' 7th'/>"), 7);
  EXPECT_EQ(readBy(sttParseXmlInt, "<a n='0'/>"), 0);
  EXPECT_EQ(readBy(sttParseXmlInt, "<a n='x'/>"), 0);
  EXPECT_EQ(readBy(sttParseXmlInt, "<a n=''/>"), 0);
  EXPECT_EQ(readBy(sttParseXmlInt, "<a/>"), 0);
}

TEST_F(SttAttribute, ANumberIsDecimal) {
  EXPECT_EQ(readBy(sttParseXmlInt, "<a n='010'/>"), 10);
  EXPECT_EQ(readBy(sttParseXmlInt, "<a n='08'/>"), 8);
  EXPECT_EQ(readBy(sttParseXmlInt, "<a n='0x1F'/>"), 0);
  EXPECT_EQ(readBy(sttParseXmlLong, "<a n='010'/>"), 10);
  EXPECT_EQ(readBy(sttParseXmlLong, "<a n='08'/>"), 8);
  EXPECT_EQ(readBy(sttParseXmlLong, "<a n='0x1F'/>"), 0);
}

TEST_F(SttAttribute, ALongIsTheNumberTheTextBeginsWith) {
  EXPECT_EQ(readBy(sttParseXmlLong, "<a n=' 7th'/>"), 7);
  EXPECT_EQ(readBy(sttParseXmlLong, "<a n='x'/>"), 0);
  EXPECT_EQ(readBy(sttParseXmlLong, "<a n=''/>"), 0);
}

TEST_F(SttAttribute, AnIntIsWrittenUnlessZero) {
  EXPECT_EQ(written(sttGenerateXmlInt, 12), "<a n=\"12\"/>");
  EXPECT_EQ(written(sttGenerateXmlInt, INT_MIN), "<a n=\"-2147483648\"/>");
  EXPECT_EQ(written(sttGenerateXmlInt, 0), "<a/>");
}

TEST_F(SttAttribute, ALongKeepsItsWidth) {
  EXPECT_EQ(readBy(sttParseXmlLong, "<a n='-9223372036854775808'/>"), LONG_MIN);
  EXPECT_EQ(readBy(sttParseXmlLong, "<a/>"), 0);
  EXPECT_EQ(written(sttGenerateXmlLong, LONG_MIN), "<a n=\"-9223372036854775808\"/>");
  EXPECT_EQ(written(sttGenerateXmlLong, 0L), "<a/>");
}

TEST_F(SttAttribute, ACharIsTheFirstOfTheText) {
  EXPECT_EQ(readBy(sttParseXmlChar, "<a n='sd'/>"), 's');
  EXPECT_EQ(readBy(sttParseXmlChar, "<a n=''/>"), 0);
  EXPECT_EQ(readBy(sttParseXmlChar, "<a/>"), 0);
  EXPECT_EQ(written(sttGenerateXmlChar, 's'), "<a n=\"s\"/>");
  EXPECT_EQ(written(sttGenerateXmlChar, '\0'), "<a/>");
}

TEST_F(SttAttribute, AFloatOrDoubleThatIsPresentReadsAsZero) {
  EXPECT_EQ(readBy(sttParseXmlFloat, "<a n='1.5'/>"), 0.0F);
  EXPECT_EQ(readBy(sttParseXmlDouble, "<a n='1.5'/>"), 0.0F);
  static_assert(std::is_same_v<decltype(sttParseXmlDouble(nullptr, nullptr)), float>);
}

TEST_F(SttAttribute, AFloatOrDoubleThatIsAbsentReadsAsZeroToo) {
  EXPECT_EQ(readBy(sttParseXmlFloat, "<a/>"), 0.0F);
  EXPECT_EQ(readBy(sttParseXmlDouble, "<a/>"), 0.0F);
}

TEST_F(SttAttribute, AFloatOrDoubleIsWrittenWithSixDecimalsUnlessZero) {
  EXPECT_EQ(written(sttGenerateXmlFloat, 1.5F), "<a n=\"1.500000\"/>");
  EXPECT_EQ(written(sttGenerateXmlFloat, 0.0F), "<a/>");
  EXPECT_EQ(written(sttGenerateXmlDouble, -0.25), "<a n=\"-0.250000\"/>");
  EXPECT_EQ(written(sttGenerateXmlDouble, 0.0), "<a/>");
}

TEST_F(SttAttribute, AHugeDoubleIsCutToItsBuffer) {
  const std::string sText = written(sttGenerateXmlDouble, 1e300);
  EXPECT_EQ(sText.size(), std::string("<a n=\"\"/>").size() + 59);
}

// Kept: the writer's caller finds its element gone and the flag raised.
TEST_F(SttAttribute, AWriterThatFailsDropsTheElementAndRaisesTheFlag) {
  const auto fails = [](auto writer, auto value) {
    const Xml xml("<a><!--no element, takes no attribute--><b/></a>");
    nGRet = 0;
    writer(xml.child(), value, cs("n"));
    EXPECT_EQ(nGRet, -1);
    EXPECT_EQ(xml.text(), "<a><b/></a>");
  };
  fails(sttGenerateXmlString, cs("v"));
  fails(sttGenerateXmlInt, 1);
  fails(sttGenerateXmlLong, 1L);
  fails(sttGenerateXmlChar, 'v');
  fails(sttGenerateXmlFloat, 1.0F);
  fails(sttGenerateXmlDouble, 1.0);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(SttAttribute, NeitherReaderNorWriterClearsTheFlag) {
  const Xml xml("<a m='1'/>");
  nGRet = -1;
  sttParseXmlInt(xml.root(), cs("m"));
  sttGenerateXmlInt(xml.root(), 2, cs("n"));
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(xml.text(), "<a m=\"1\" n=\"2\"/>");
}

// --- Struct
// --------------------------------------------------------------------------------------------------

// A record reads as the attribute psName of its element, and is written to it.
std::string f_sCalls;

void *parseName(void *ptXmlNode, char *psType) {
  f_sCalls += "(" + std::string(xmlGetNodeName(ptXmlNode)) + "," + psType + ")";
  static std::string sName;
  sName = taken(xmlGetNodeAttr(ptXmlNode, cs("psName")));
  return sName.data();
}

std::string readName(void *psRecord) {
  return psRecord == nullptr ? "null" : static_cast<char *>(psRecord);
}

void *writeName(void *ptStruct, void *ptNode, char *psName, char *psType) {
  f_sCalls += "(" + taken(xmlGetNodeAttr(ptNode, cs("__ID"))) + "," + psName + "," + psType + ")";
  sttGenerateXmlString(ptNode, static_cast<char *>(ptStruct), cs("psName"));
  return ptNode;
}

void *writeBadly(void *, void *, char *, char *) {
  nGRet = -1;
  return nullptr;
}

std::string readStruct(const std::string &sText) {
  f_sCalls.clear();
  const Xml xml(sText);
  return readName(sttParseXmlStruct(xml.root(), cs("Plug"), cs("ptPlugs"), untyped(parseName)));
}

TEST_F(SttStruct, IsTheFirstChildOfItsTypeAndField) {
  EXPECT_EQ(
      readStruct("<a>text<!--c--><Plug __ID='ptPlugs' psName='x'/><Plug __ID='ptPlugs' psName='y'/></a>"),
      "x");
  EXPECT_EQ(f_sCalls, "(Plug,Plug)");
  EXPECT_EQ(
      readStruct("<a><Plug psName='v'/><Plug __ID='other' psName='w'/><Plug __ID='ptPlugs' psName='x'/></a>"),
      "x");
  EXPECT_EQ(readStruct("<a><Other __ID='ptPlugs' psName='w'/><Plug __ID='ptPlugs' psName='x'/></a>"), "x");
}

TEST_F(SttStruct, IsNullWithoutSuchAChild) {
  for (const char *const psText :
       {"<a/>", "<a><Plug psName='x'/></a>", "<a><Plug __ID='ptplugs'/></a>", "<a><plug __ID='ptPlugs'/></a>",
        "<a><b><Plug __ID='ptPlugs'/></b></a>", "<a><!--c--></a>", "<a>text</a>"}) {
    EXPECT_EQ(readStruct(psText), "null") << psText;
    EXPECT_EQ(f_sCalls, "") << psText;
  }
  EXPECT_EQ(nGRet, 0);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(SttStruct, IsWrittenAsLastChildWithItsField) {
  f_sCalls.clear();
  const Xml xml("<a><b/></a>");
  sttGenerateXmlStruct(xml.root(), cs("x"), cs("ptPlugs"), cs("Plug"), untyped(writeName));
  EXPECT_EQ(xml.text(), "<a><b/><Plug __ID=\"ptPlugs\" psName=\"x\"/></a>");
  EXPECT_EQ(f_sCalls, "(ptPlugs,ptPlugs,Plug)");  // "__ID" stands before the record is written
  EXPECT_EQ(nGRet, 0);
}

TEST_F(SttStruct, ANullRecordIsNotWritten) {
  const Xml xml("<a/>");
  sttGenerateXmlStruct(xml.root(), nullptr, cs("ptPlugs"), cs("Plug"), untyped(writeBadly));
  EXPECT_EQ(xml.text(), "<a/>");
  EXPECT_EQ(nGRet, 0);
}

TEST_F(SttStruct, AFailedWriteLeavesTheFlagRaised) {
  const Xml xml("<a/>");
  sttGenerateXmlStruct(xml.root(), cs("x"), cs("ptPlugs"), cs("Plug"), untyped(writeBadly));
  EXPECT_EQ(nGRet, -1);
}

// --- Next
// ----------------------------------------------------------------------------------------------------

// The next record behind child 0 of the root.
std::string readNext(const std::string &sText, const char *psType = "Plug") {
  f_sCalls.clear();
  const Xml xml(sText);
  return readName(sttParseXmlNext(xml.child(), cs(psType), cs("ptNext"), untyped(parseName)));
}

TEST_F(SttNext, IsTheVeryNextSibling) {
  EXPECT_EQ(readNext("<a><Plug/><Plug __ID='ptNext' psName='x'/><Plug __ID='ptNext' psName='y'/></a>"), "x");
  EXPECT_EQ(f_sCalls, "(Plug,Plug)");
}

TEST_F(SttNext, AnythingElseBehindEndsTheList) {
  for (const char *const psText :
       {"<a><Plug/></a>", "<a><Plug/><!--c--><Plug __ID='ptNext'/></a>",
        "<a><Plug/>text<Plug __ID='ptNext'/></a>",
        "<a><Plug/><Other __ID='ptNext'/><Plug __ID='ptNext'/></a>", "<a><Plug/><Plug/></a>",
        "<a><Plug/><Plug __ID='x'/><Plug __ID='ptNext'/></a>", "<a><Plug/><plug __ID='ptNext'/></a>"}) {
    EXPECT_EQ(readNext(psText), "null") << psText;
    EXPECT_EQ(f_sCalls, "") << psText;
  }
  EXPECT_EQ(nGRet, 0);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(SttNext, IsLookedForBehindTheNearestElementOfItsType) {
  const Xml xml(
      "<r><Plug><Plug><b><c/></b></Plug><Plug __ID='ptNext' psName='inner'/></Plug>"
      "<Plug __ID='ptNext' psName='outer'/></r>");
  void *const ptInner = Xml::childOf(xml.child());
  void *const ptDeep = Xml::childOf(Xml::childOf(ptInner));
  EXPECT_EQ(readName(sttParseXmlNext(ptDeep, cs("Plug"), cs("ptNext"), untyped(parseName))), "inner");
  EXPECT_EQ(readName(sttParseXmlNext(xml.child(), cs("Plug"), cs("ptNext"), untyped(parseName))), "outer");
}

TEST_F(SttNext, IsNullUpToTheDocument) {
  EXPECT_EQ(readNext("<a><b/><Plug __ID='ptNext'/></a>"), "null");
  EXPECT_EQ(readNext("<a><b/></a>", "none"), "null");
}

// A list as the bound records read it: recursively, one call an element.
void *parseList(void *ptXmlNode, char *psType) {
  f_sCalls += taken(xmlGetNodeAttr(ptXmlNode, cs("psName")));
  sttParseXmlNext(ptXmlNode, psType, cs("ptNext"), untyped(parseList));
  return f_sCalls.data();
}

TEST_F(SttNext, AForeignElementEndsAListOfTwo) {
  f_sCalls.clear();
  const Xml xml(
      "<r><Plug __ID='ptPlugs' psName='a'/><Plug __ID='ptNext' psName='b'/><Plug __ID='x' psName='c'/></r>");
  sttParseXmlStruct(xml.root(), cs("Plug"), cs("ptPlugs"), untyped(parseList));
  EXPECT_EQ(f_sCalls, "ab");
}

TEST_F(SttNext, AListOfThousandsIsRead) {
  f_sCalls.clear();
  std::string sText = "<r><Plug __ID='ptPlugs' psName='a'/>";
  for (int i = 1; i < 5000; ++i) sText += "<Plug __ID='ptNext' psName='b'/>";
  const Xml xml(sText + "</r>");
  sttParseXmlStruct(xml.root(), cs("Plug"), cs("ptPlugs"), untyped(parseList));
  EXPECT_EQ(f_sCalls.size(), 5000U);
}

TEST_F(SttNext, IsWrittenAsLastChildOfTheParent) {
  f_sCalls.clear();
  const Xml xml("<r><Plug><b/></Plug><c/></r>");
  sttGenerateXmlNext(Xml::childOf(xml.child()), cs("x"), cs("ptNext"), cs("Plug"), untyped(writeName));
  EXPECT_EQ(xml.text(), "<r><Plug><b/></Plug><c/><Plug __ID=\"ptNext\" psName=\"x\"/></r>");
  EXPECT_EQ(f_sCalls, "(ptNext,ptNext,Plug)");
  EXPECT_EQ(nGRet, 0);
}

TEST_F(SttNext, ANullRecordIsNotWritten) {
  const Xml xml("<r/>");
  sttGenerateXmlNext(xml.root(), nullptr, cs("ptNext"), cs("none"), untyped(writeName));
  EXPECT_EQ(xml.text(), "<r/>");
  EXPECT_EQ(nGRet, 0);
}

TEST_F(SttNext, WithoutAnElementOfItsTypeTheFlagIsRaised) {
  const Xml xml("<r><b/></r>");
  sttGenerateXmlNext(xml.child(), cs("x"), cs("ptNext"), cs("Plug"), untyped(writeName));
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(xml.text(), "<r><b/></r>");
}

TEST_F(SttNext, WithoutAParentTheFlagIsRaised) {
  void *const ptNode = xmlMadeNode(cs("Plug"));
  sttGenerateXmlNext(ptNode, cs("x"), cs("ptNext"), cs("Plug"), untyped(writeName));
  EXPECT_EQ(nGRet, -1);
  xmlNodeFree(ptNode);
}

TEST_F(SttNext, AFailedWriteLeavesTheFlagRaised) {
  const Xml xml("<r><Plug/></r>");
  sttGenerateXmlNext(xml.child(), cs("x"), cs("ptNext"), cs("Plug"), untyped(writeBadly));
  EXPECT_EQ(nGRet, -1);
}

// --- Void
// ----------------------------------------------------------------------------------------------------

void *parseKnown(void *ptXmlNode, char *psType) {
  return std::string(psType) == "Known" ? parseName(ptXmlNode, psType) : nullptr;
}
void *writeKnown(void *ptStruct, void *ptNode, char *psName, char *psType) {
  return std::string(psType) == "Known" ? writeName(ptStruct, ptNode, psName, psType) : nullptr;
}
void *parseBroken(void *, char *psType) {
  if (std::string(psType) == "Broken") nGRet = -1;
  return nullptr;
}
void *writeBroken(void *, void *ptNode, char *, char *psType) {
  if (std::string(psType) != "Broken") return nullptr;
  nGRet = -1;
  return ptNode;
}

std::string readVoid(const std::string &sText) {
  f_sCalls.clear();
  sttAddFuncVoid(parseKnown, writeKnown);
  sttAddFuncVoid(parseBroken, writeBroken);
  const Xml xml(sText);
  return readName(sttParseXmlVoid(xml.root(), cs("pInfo")));
}

TEST_F(SttVoid, IsTheFirstChildOfItsFieldReadByTheChain) {
  EXPECT_EQ(
      readVoid("<a>text<!--c--><Known __ID='x'/><Known __ID='pInfo' psName='x'/><Other __ID='pInfo'/></a>"),
      "x");
  EXPECT_EQ(f_sCalls, "(Known,Known)");
}

TEST_F(SttVoid, IsNullWithoutSuchAChild) {
  EXPECT_EQ(readVoid("<a><Known/><b><Known __ID='pInfo'/></b></a>"), "null");
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(SttVoid, OfAnUnknownTypeIsNullAndNoFailure) {
  EXPECT_EQ(readVoid("<a><Other __ID='pInfo'/><Known __ID='pInfo'/></a>"), "null");
  EXPECT_EQ(logTexts(), Texts{"Type[Other] Not Define"});
  EXPECT_EQ(nGRet, 0);
}

TEST_F(SttVoid, ARecordThatFailsIsAlsoReportedAsUndefined) {
  EXPECT_EQ(readVoid("<a><Broken __ID='pInfo'/></a>"), "null");
  EXPECT_EQ(logTexts(), Texts{"Type[Broken] Not Define"});
  EXPECT_EQ(nGRet, -1);
}

TEST_F(SttVoid, ABaseStringReadsAsItsText) {
  const Xml xml("<a><String __ID='pInfo' psValue='v'/></a>");
  auto *const ps = static_cast<char *>(sttParseXmlVoid(xml.root(), cs("pInfo")));
  EXPECT_EQ(readName(ps), "v");
  std::free(ps);
}

// Writes a record of that type; "" leaves its type unknown.
std::string writeVoid(const char *psType) {
  sttAddFuncVoid(parseKnown, writeKnown);
  sttAddFuncVoid(parseBroken, writeBroken);
  static std::list<std::string> records;  // a fresh address each time: types are remembered for good
  char *const psRecord = records.emplace_back("x").data();
  if (*psType != 0) sttSetVoidType(psRecord, cs(psType));
  const Xml xml("<a><b/></a>");
  sttGenerateXmlVoid(xml.root(), psRecord, cs("pInfo"));
  return xml.text();
}

TEST_F(SttVoid, IsWrittenUnderTheTypeRecordedForIt) {
  f_sCalls.clear();
  EXPECT_EQ(writeVoid("Known"), "<a><b/><Known __ID=\"pInfo\" psName=\"x\"/></a>");
  EXPECT_EQ(f_sCalls, "(pInfo,pInfo,Known)");
  EXPECT_EQ(nGRet, 0);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(SttVoid, ItsFieldsNameIsHandedToTheDispatcher) {
  f_sCalls.clear();
  sttAddFuncVoid(parseKnown, writeKnown);
  const Xml xml("<a/>");
  EXPECT_EQ(sttGenVoid(cs("x"), xml.root(), cs("pInfo"), cs("Known")), xml.root());
  EXPECT_EQ(f_sCalls, "(null,pInfo,Known)");
}

TEST_F(SttVoid, ABaseStringThatTheChainKnowsIsWrittenByItWithItsFieldsName) {
  f_sCalls.clear();
  sttAddFuncVoid(parseName, writeName);
  EXPECT_EQ(writeVoid("String"), "<a><b/><String __ID=\"pInfo\" psName=\"x\"/></a>");
  EXPECT_EQ(f_sCalls, "(pInfo,pInfo,String)");
}

TEST_F(SttVoid, ANullRecordIsNotWritten) {
  const Xml xml("<a/>");
  sttGenerateXmlVoid(xml.root(), nullptr, cs("pInfo"));
  EXPECT_EQ(xml.text(), "<a/>");
  EXPECT_EQ(nGRet, 0);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(SttVoid, ARecordOfUnknownTypeIsNotWritten) {
  EXPECT_EQ(writeVoid(""), "<a><b/></a>");
  EXPECT_EQ(logTexts(), Texts{"Struct Type Not Define!!"});
  EXPECT_EQ(nGRet, -1);
}

TEST_F(SttVoid, ATypeThatTheChainDoesNotKnowLeavesAnEmptyElement) {
  EXPECT_EQ(writeVoid("Other"), "<a><b/><Other __ID=\"pInfo\"/></a>");
  EXPECT_EQ(logTexts(), Texts{"Type[Other] Not Define"});
  EXPECT_EQ(nGRet, 0);
}

TEST_F(SttVoid, AFailedWriteIsReportedWithItsType) {
  EXPECT_EQ(writeVoid("Broken"), "<a><b/><Broken __ID=\"pInfo\"/></a>");
  EXPECT_EQ(logTexts(), Texts{"sttGenVoid Type[Broken] Err!!"});
  EXPECT_EQ(nGRet, -1);
}

// Kept: its value goes to an element of its own that nobody attaches.
TEST_F(SttVoid, ABaseStringIsWrittenWithoutItsValue) {
  EXPECT_EQ(writeVoid("String"), "<a><b/><String __ID=\"pInfo\"/></a>");
  EXPECT_EQ(nGRet, 0);
  EXPECT_EQ(logTexts(0), Texts{});
}

}  // namespace

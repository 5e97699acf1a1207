// The binding of records: its state at load and over a life of the library, the order of checks, what a
// failure leaves, and what foreign functions and missing arguments can do.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "binding_fixture.h"
#include "config_tree.h"
#include "cvt.h"
#include "log_capture.h"
#include "xml_text.h"

namespace {

using test::ConfigTree;
using test::cs;
using test::logTexts;
using test::untyped;
using test::Xml;
using Texts = std::vector<std::string>;

char f_record;

void *parseRecord(void *, char *) {
  return &f_record;
}
void *parseFile(char *, char *, void *) {
  return &f_record;
}
void *writeNothing(void *, void *, char *, char *) {
  return nullptr;
}
void *readNothing(void *, char *) {
  return nullptr;
}

class Binding : public test::EmptyBinding {
 protected:
  ConfigTree m_tree;
};

using TypedFile = Binding;
using FixedRoot = Binding;
using WrittenFile = Binding;
using VoidField = Binding;
using Life = Binding;
using Foreign = Binding;
using Missing = Binding;

// --- At load ----------------------------------------------------------------------------------------------

TEST(BindingAtLoad, NothingIsRegisteredAndNothingHasFailed) {
  EXPECT_EQ(gptSttInfo, nullptr);
  EXPECT_EQ(gptTypeList, nullptr);
  EXPECT_EQ(nGRet, 0);
  EXPECT_EQ(sttParseVoid(nullptr, cs("Arg")), nullptr);
  EXPECT_EQ(logTexts(), Texts{"Type[Arg] Not Define"});
}

// --- Files of a registered type ---------------------------------------------------------------------------

TEST_F(TypedFile, ItsRecordIsReturnedAlsoWithTheFlagRaised) {
  const auto parse = [](char *, char *, void *) -> void * {
    nGRet = -1;
    return &f_record;
  };
  sttAddSttInfo(cs("fix"), parse);
  m_tree.file("a.xml", "<fix><a/></fix>");
  EXPECT_EQ(sttParseBySttInfo(m_tree.arg("a.xml")), &f_record);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(TypedFile, AFlagRaisedBeforeStays) {
  nGRet = -1;
  sttAddSttInfo(cs("fix"), parseFile);
  m_tree.file("a.xml", "<fix/>");
  EXPECT_EQ(sttParseBySttInfo(m_tree.arg("a.xml")), &f_record);
  EXPECT_EQ(nGRet, -1);
}

TEST_F(TypedFile, ThatCannotBeReadLeavesTheFlagAlone) {
  sttParseBySttInfo(nullptr);
  sttParseBySttInfo(m_tree.arg("none.xml"));
  m_tree.file("a.xml", "<unknown/>");
  sttParseBySttInfo(m_tree.arg("a.xml"));
  EXPECT_EQ(nGRet, 0);
  EXPECT_EQ(logTexts().size(), 4U);
}

// --- Files with a fixed root ------------------------------------------------------------------------------

TEST_F(FixedRoot, ItsNameIsCheckedBeforeItsChild) {
  m_tree.file("a.xml", "<other/>");
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("a.xml"), cs("a"), cs("b"), untyped(parseRecord)), nullptr);
  EXPECT_EQ(logTexts(), Texts{"[a] is different then xml root name[other]"});
}

TEST_F(FixedRoot, TheTagIsCheckedBeforeTheFunctionAndBothBeforeTheFile) {
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("none.xml"), nullptr, cs("b"), nullptr), nullptr);
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("none.xml"), cs("a"), cs("b"), nullptr), nullptr);
  EXPECT_EQ(logTexts(), (Texts{"[psRootTag] is NULL", "[pfParse] is NULL"}));
}

TEST_F(FixedRoot, WhatIsRefusedBeforeTheRecordLeavesTheFlagAlone) {
  m_tree.file("a.xml", "<other/>").file("b.xml", "<a/>");
  for (const char *const psName : {"none.xml", "a.xml", "b.xml"}) {
    EXPECT_EQ(sttParseXmlFile(m_tree.arg(psName), cs("a"), cs("b"), untyped(parseRecord)), nullptr) << psName;
    EXPECT_EQ(nGRet, 0) << psName;
  }
}

TEST_F(FixedRoot, ANullRecordWithTheFlagIsAnError) {
  const auto parse = [](void *, char *) -> void * {
    nGRet = -1;
    return nullptr;
  };
  m_tree.file("a.xml", "<a><b/></a>");
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("a.xml"), cs("a"), cs("b"), untyped(+parse)), nullptr);
  EXPECT_EQ(logTexts(), Texts{"parse xml[a)" + m_tree.path("a.xml") + "] faile"});
}

TEST_F(FixedRoot, MayHoldTextOnly) {
  m_tree.file("a.xml", "<a>text</a>");
  const auto parse = [](void *ptNode, char *) -> void * {
    return std::string(xmlGetNodeName(ptNode)) == "text" ? &f_record : nullptr;
  };
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("a.xml"), cs("a"), cs("b"), untyped(+parse)), &f_record);
}

// --- Written files ----------------------------------------------------------------------------------------

std::string contents(const std::string &sFile) {
  std::ifstream in(sFile);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

TEST_F(WrittenFile, TheFlagAloneDecides) {
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("a.xml"), &f_record, cs("R"), cs("T"), untyped(writeNothing)), 0);
  EXPECT_EQ(contents(m_tree.path("a.xml")),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<R>\n  <T/>\n</R>\n");
  nGRet = -1;  // raised before the call: it is not cleared
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("b.xml"), &f_record, cs("R"), cs("T"), untyped(writeNothing)), -1);
  EXPECT_EQ(logTexts(), Texts{"Make [R)" + m_tree.path("b.xml") + "] Xml err!"});
  EXPECT_EQ(contents(m_tree.path("b.xml")), "");
}

TEST_F(WrittenFile, AFailureLeavesTheOldOne) {
  m_tree.file("a.xml", "old");
  nGRet = -1;
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("a.xml"), &f_record, cs("R"), cs("T"), untyped(writeNothing)), -1);
  EXPECT_EQ(contents(m_tree.path("a.xml")), "old");
}

TEST_F(WrittenFile, TheElementMayBeDroppedByAFailingWriter) {
  const auto write = [](void *, void *ptNode, char *, char *) -> void * {
    sttGenerateXmlString(ptNode, cs("v"), nullptr);
    return nullptr;
  };
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("a.xml"), &f_record, cs("R"), cs("T"), untyped(+write)), -1);
  EXPECT_EQ(logTexts(), Texts{"Make [R)" + m_tree.path("a.xml") + "] Xml err!"});
}

// --- Void fields ------------------------------------------------------------------------------------------

TEST_F(VoidField, WrittenWithTheFlagRaisedBeforeCountsAsFailed) {
  const auto write = [](void *, void *ptNode, char *, char *) -> void * { return ptNode; };
  sttAddFuncVoid(readNothing, write);
  sttSetVoidType(&f_record, cs("Known"));
  const Xml xml("<a/>");
  nGRet = -1;
  sttGenerateXmlVoid(xml.root(), &f_record, cs("pInfo"));
  EXPECT_EQ(logTexts(), Texts{"sttGenVoid Type[Known] Err!!"});
  EXPECT_EQ(xml.text(), "<a><Known __ID=\"pInfo\"/></a>");
}

TEST_F(VoidField, IsWrittenByTheNewestTypeOfItsRecord) {
  sttSetVoidType(&f_record, cs("Old"));
  sttSetVoidType(&f_record, cs("New"));
  const Xml xml("<a/>");
  sttGenerateXmlVoid(xml.root(), &f_record, cs("pInfo"));
  EXPECT_EQ(xml.text(), "<a><New __ID=\"pInfo\"/></a>");
}

// --- Over a life of the library ---------------------------------------------------------------------------

void start(ConfigTree &tree, const std::string &sSections) {
  tree.file("All/root.xml", "<AllInfo><AllInfo>" + sSections + "</AllInfo></AllInfo>");
  ASSERT_EQ(cvtInit(tree.arg()), 0);
}

// Which of these types the global chain knows.
Texts known() {
  Texts types;
  const Xml any("<a psFunctName='pubParse'/>");
  for (const char *const psType :
       {"AllInfo", "Plug", "PathList", "LoopType", "Value", "Arg", "MappingList", "IdFunc", "XmlNameArgs"}) {
    if (sttParseVoid(any.root(), cs(psType)) != nullptr) types.push_back(psType);
  }
  return types;
}

TEST_F(Life, AConfigurationWithoutSectionsAddsNoDispatcher) {
  start(m_tree, "");
  EXPECT_EQ(known(), Texts{});
  cvtEnd();
}

TEST_F(Life, PipelinesAddTheirsWhenAFileOfThemIsRead) {
  start(m_tree, "<Id __ID='ptId' psIdPath='id' psIdInfoPath='info'/>");
  EXPECT_EQ(known(), Texts{});
  m_tree.file("id/a.xml", "<Id><FormatInfo psFormatId='x'/></Id>");
  start(m_tree, "<Id __ID='ptId' psIdPath='id' psIdInfoPath='info'/>");
  EXPECT_EQ(known(), (Texts{"IdFunc", "XmlNameArgs"}));
  start(m_tree, "");
  EXPECT_EQ(known(), Texts{}) << "the restart has emptied the chain";
  cvtEnd();
}

TEST_F(Life, TheEndEmptiesTheRegistryAndTheChainButNotTheTypes) {
  m_tree.file("id/a.xml", "<Id><FormatInfo psFormatId='x'/></Id>");
  start(m_tree, "<Id __ID='ptId' psIdPath='id' psIdInfoPath='info'/>");
  sttAddSttInfo(cs("fix"), parseFile);
  sttSetVoidType(&f_record, cs("Kept"));
  cvtEnd();
  EXPECT_EQ(gptSttInfo, nullptr);
  EXPECT_EQ(known(), Texts{});
  EXPECT_STREQ(sttGetVoidType(&f_record), "Kept");
}

TEST_F(Life, ARestartEmptiesTheRegistry) {
  start(m_tree, "");
  sttAddSttInfo(cs("fix"), parseFile);
  sttSetVoidType(&f_record, cs("Kept"));
  start(m_tree, "");
  EXPECT_EQ(gptSttInfo, nullptr);
  EXPECT_STREQ(sttGetVoidType(&f_record), "Kept");
  cvtEnd();
}

// --- Foreign functions that let exceptions out ------------------------------------------------------------

void *throwsParse(void *, char *) {
  throw std::runtime_error("no");
}
void *throwsWrite(void *, void *, char *, char *) {
  throw 1;
}

TEST_F(Foreign, ADispatchersExceptionEndsInTheLibrary) {
  sttAddFuncVoid(throwsParse, throwsWrite);
  EXPECT_EQ(sttParseVoid(nullptr, cs("T")), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(logTexts(), (Texts{"Type[T] let an exception out: no", "Type[T] Not Define"}));
  test::clearLog();
  nGRet = 0;
  EXPECT_EQ(sttGenVoid(&f_record, nullptr, cs("pInfo"), cs("T")), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(logTexts(), (Texts{"Type[T] let an exception out", "Type[T] Not Define"}));
}

TEST_F(Foreign, AFilesExceptionEndsInTheLibraryAndTheChainIsTheOldOne) {
  sttAddFuncVoid(parseRecord, writeNothing);
  sttAddSttInfo(cs("fix"), [](char *, char *, void *) -> void * { throw std::runtime_error("no"); });
  m_tree.file("a.xml", "<fix/>");
  EXPECT_EQ(sttParseBySttInfo(m_tree.arg("a.xml")), nullptr);
  EXPECT_EQ(logTexts(), Texts{"Type[fix] let an exception out: no"});
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(sttParseVoid(nullptr, cs("T")), &f_record);
}

TEST_F(Foreign, ARecordsExceptionEndsInTheLibrary) {
  m_tree.file("a.xml", "<a><T/></a>");
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("a.xml"), cs("a"), cs("T"), untyped(throwsParse)), nullptr);
  EXPECT_EQ(logTexts(),
            (Texts{"Type[T] let an exception out: no", "parse xml[a)" + m_tree.path("a.xml") + "] faile"}));
  test::clearLog();
  nGRet = 0;
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("b.xml"), &f_record, cs("a"), cs("T"), untyped(throwsWrite)), -1);
  EXPECT_EQ(logTexts(),
            (Texts{"Type[T] let an exception out", "Make [a)" + m_tree.path("b.xml") + "] Xml err!"}));
}

TEST_F(Foreign, AFieldsExceptionEndsInTheLibrary) {
  const Xml xml("<r><T><T __ID='p'/></T><T __ID='p'/></r>");
  EXPECT_EQ(sttParseXmlStruct(xml.child(), cs("T"), cs("p"), untyped(throwsParse)), nullptr);
  EXPECT_EQ(nGRet, -1);
  nGRet = 0;
  EXPECT_EQ(sttParseXmlNext(xml.child(), cs("T"), cs("p"), untyped(throwsParse)), nullptr);
  EXPECT_EQ(nGRet, -1);
  nGRet = 0;
  sttGenerateXmlStruct(xml.child(), &f_record, cs("p"), cs("T"), untyped(throwsWrite));
  EXPECT_EQ(nGRet, -1);
  nGRet = 0;
  sttGenerateXmlNext(xml.child(), &f_record, cs("p"), cs("T"), untyped(throwsWrite));
  EXPECT_EQ(nGRet, -1);
}

// --- Missing arguments ------------------------------------------------------------------------------------

TEST_F(Missing, NoElementReadsAsNothing) {
  EXPECT_EQ(sttParseXmlString(nullptr, cs("n")), nullptr);
  EXPECT_EQ(sttParseXmlInt(nullptr, cs("n")), 0);
  EXPECT_EQ(sttParseXmlLong(nullptr, cs("n")), 0);
  EXPECT_EQ(sttParseXmlChar(nullptr, cs("n")), 0);
  EXPECT_EQ(sttParseXmlStruct(nullptr, cs("T"), cs("p"), untyped(parseRecord)), nullptr);
  EXPECT_EQ(sttParseXmlNext(nullptr, cs("T"), cs("p"), untyped(parseRecord)), nullptr);
  EXPECT_EQ(sttParseXmlVoid(nullptr, cs("p")), nullptr);
  EXPECT_EQ(nGRet, 0);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(Missing, NoNameAndNoTypeReadAsNothing) {
  sttAddFuncVoid(parseRecord, writeNothing);
  const Xml xml("<r><T __ID='p'><T __ID='p'/></T><T __ID='p'/></r>");
  EXPECT_EQ(sttParseXmlString(xml.root(), nullptr), nullptr);
  EXPECT_EQ(sttParseXmlInt(xml.root(), nullptr), 0);
  EXPECT_EQ(sttParseXmlStruct(xml.child(), cs("T"), nullptr, untyped(parseRecord)), nullptr);
  EXPECT_EQ(sttParseXmlStruct(xml.child(), nullptr, cs("p"), untyped(parseRecord)), nullptr);
  EXPECT_EQ(sttParseXmlNext(xml.child(), cs("T"), nullptr, untyped(parseRecord)), nullptr);
  EXPECT_EQ(sttParseXmlNext(xml.child(), nullptr, cs("p"), untyped(parseRecord)), nullptr);
  EXPECT_EQ(sttParseXmlVoid(xml.child(), nullptr), nullptr);
  EXPECT_EQ(nGRet, 0);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(Missing, NoFunctionIsReported) {
  const Xml xml("<r><T><T __ID='p'/></T><T __ID='p'/></r>");
  const auto expectReported = [] {
    EXPECT_EQ(logTexts(), Texts{"[fFunc] is NULL"});
    EXPECT_EQ(nGRet, -1);
    test::clearLog();
    nGRet = 0;
  };
  EXPECT_EQ(sttParseXmlStruct(xml.child(), cs("T"), cs("p"), nullptr), nullptr);
  expectReported();
  EXPECT_EQ(sttParseXmlNext(xml.child(), cs("T"), cs("p"), nullptr), nullptr);
  expectReported();
  sttGenerateXmlStruct(xml.child(), &f_record, cs("p"), cs("T"), nullptr);
  expectReported();
  sttGenerateXmlNext(xml.child(), &f_record, cs("p"), cs("T"), nullptr);
  expectReported();
  EXPECT_EQ(sttParseXmlStruct(xml.child(), cs("none"), cs("p"), nullptr), nullptr);
  EXPECT_EQ(logTexts(), Texts{}) << "nothing to call it for";
}

template <class Write>
void expectRefused(Write write) {
  nGRet = 0;
  write();
  EXPECT_EQ(nGRet, -1);
}

TEST_F(Missing, NothingIsWrittenToNoElement) {
  sttSetVoidType(&f_record, cs("T"));
  expectRefused([] { sttGenerateXmlString(nullptr, cs("v"), cs("n")); });
  expectRefused([] { sttGenerateXmlInt(nullptr, 1, cs("n")); });
  expectRefused([] { sttGenerateXmlStruct(nullptr, &f_record, cs("p"), cs("T"), untyped(writeNothing)); });
  expectRefused([] { sttGenerateXmlNext(nullptr, &f_record, cs("p"), cs("T"), untyped(writeNothing)); });
  EXPECT_EQ(logTexts(0), Texts{});
  expectRefused([] { sttGenerateXmlVoid(nullptr, &f_record, cs("p")); });
  EXPECT_EQ(logTexts(), Texts{"xmlPutChileNode Err!!"});
}

TEST_F(Missing, NothingIsWrittenUnderNoName) {
  sttSetVoidType(&f_record, cs("T"));
  const Xml xml("<r><T/></r>");
  void *const ptNode = xml.child();
  expectRefused([&] { sttGenerateXmlStruct(ptNode, &f_record, nullptr, cs("T"), untyped(writeNothing)); });
  expectRefused([&] { sttGenerateXmlStruct(ptNode, &f_record, cs("p"), nullptr, untyped(writeNothing)); });
  expectRefused([&] { sttGenerateXmlNext(ptNode, &f_record, nullptr, cs("T"), untyped(writeNothing)); });
  expectRefused([&] { sttGenerateXmlNext(ptNode, &f_record, cs("p"), nullptr, untyped(writeNothing)); });
  EXPECT_EQ(logTexts(0), Texts{});
  expectRefused([&] { sttGenerateXmlVoid(ptNode, &f_record, nullptr); });
  EXPECT_EQ(logTexts(), Texts{"xmlPutNodeAttr Err!!"});
  EXPECT_EQ(xml.text(), "<r><T/></r>");
}

}  // namespace

// Dispatch by type name and the error flag: who is asked and whose answer counts, which value of the flag is a
// failure, and from which function each line of the binding comes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
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

void *knowsAll(void *, char *) {
  return &f_record;
}
void *knowsNothing(void *, char *) {
  return nullptr;
}
void *fails(void *, char *) {
  nGRet = -1;
  return nullptr;
}
void *raisesOne(void *, char *) {
  nGRet = 1;
  return &f_record;
}
void *readsFile(char *, char *, void *) {
  return &f_record;
}
void *writesAll(void *, void *ptNode, char *, char *) {
  xmlPutNodeAttr(ptNode, cs("n"), cs("v"), 1);
  return ptNode;
}
void *failsToWrite(void *, void *, char *, char *) {
  nGRet = -1;
  return nullptr;
}
void *writesAndRaisesOne(void *, void *ptNode, char *, char *) {
  nGRet = 1;
  return ptNode;
}

class Binding : public test::EmptyBinding {
 protected:
  ConfigTree m_tree;
};

using Chain = Binding;
using BaseString = Binding;
using Flag = Binding;
using Lines = Binding;

// --- The chain ----------------------------------------------------------------------------------------------

TEST_F(Chain, OneThatFailsKeepsTheNextFromNothing) {
  sttAddFuncVoid(fails, failsToWrite);
  sttAddFuncVoid(knowsAll, writesAll);
  EXPECT_EQ(sttParseVoid(nullptr, cs("T")), &f_record);
  EXPECT_EQ(nGRet, -1) << "the record counts, and so does the failure";
  const Xml xml("<a/>");
  EXPECT_EQ(sttGenVoid(&f_record, xml.root(), cs("p"), cs("T")), xml.root());
  EXPECT_EQ(xml.text(), "<a n=\"v\"/>");
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(Chain, ARefusedPairOfATypeIsNotInIts) {
  sttAddSttInfo(cs("fix"), readsFile);
  EXPECT_EQ(sttAddVoidFunctionToSttInfo(cs("fix"), nullptr, writesAll), -1);
  EXPECT_EQ(sttAddVoidFunctionToSttInfo(cs("fix"), knowsAll, nullptr), -1);
  EXPECT_EQ(sttAddVoidFunctionToSttInfo(cs("Fix"), knowsAll, writesAll), -1);
  EXPECT_EQ(gptSttInfo->ptVoidFunction, nullptr);
}

TEST_F(Chain, OfATypeIsNewestFirstWhileItsFileIsRead) {
  sttAddSttInfo(cs("fix"), [](char *, char *, void *) { return sttParseVoid(nullptr, cs("T")); });
  sttAddVoidFunctionToSttInfo(cs("fix"), knowsNothing, writesAll);
  sttAddVoidFunctionToSttInfo(cs("fix"), knowsAll, writesAll);
  static char other;
  sttAddVoidFunctionToSttInfo(
      cs("fix"), [](void *, char *) -> void * { return &other; }, writesAll);
  m_tree.file("a.xml", "<fix/>");
  EXPECT_EQ(sttParseBySttInfo(m_tree.arg("a.xml")), &other);
}

// The file that the next parse function reads in its turn.
char *f_psInner = nullptr;

void *readsFixedRoot(char *, char *, void *) {
  const auto ask = [](void *, char *) { return sttParseVoid(nullptr, cs("T")); };
  return sttParseXmlFile(f_psInner, cs("a"), cs("b"), untyped(+ask));
}

TEST_F(Chain, OfATypeIsCurrentAlsoInAFixedRootReadInsideItsFile) {
  sttAddSttInfo(cs("fix"), readsFixedRoot);
  sttAddVoidFunctionToSttInfo(cs("fix"), knowsAll, writesAll);
  m_tree.file("a.xml", "<fix/>").file("inner.xml", "<a><b/></a>");
  std::string sInner = m_tree.path("inner.xml");
  f_psInner = sInner.data();
  EXPECT_EQ(sttParseBySttInfo(m_tree.arg("a.xml")), &f_record);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(Chain, AnEndInsideAFileInsideAFileLeavesTheGlobalOneCurrent) {
  static void *ptAnswer = nullptr;
  sttAddSttInfo(cs("outer"), [](char *, char *, void *) -> void * {
    sttParseBySttInfo(f_psInner);
    ptAnswer = sttParseVoid(nullptr, cs("T"));
    return nullptr;
  });
  sttAddSttInfo(cs("inner"), [](char *, char *, void *) -> void * {
    sttEnd();
    sttAddFuncVoid(knowsAll, writesAll);
    return nullptr;
  });
  m_tree.file("outer.xml", "<outer/>").file("inner.xml", "<inner/>");
  std::string sInner = m_tree.path("inner.xml");
  f_psInner = sInner.data();
  sttParseBySttInfo(m_tree.arg("outer.xml"));
  EXPECT_EQ(ptAnswer, &f_record);
  EXPECT_EQ(sttParseVoid(nullptr, cs("T")), &f_record);
}

TEST_F(Chain, AFilesFunctionIsGivenTheCallersNameAndTheRootsOwn) {
  static char *psFile = nullptr;
  static bool bRootsOwn = false;
  sttAddSttInfo(cs("fix"), [](char *ps, char *psType, void *ptNode) -> void * {
    psFile = ps;
    bRootsOwn = psType == xmlGetNodeName(xmlGetFatherNode(ptNode));
    return nullptr;
  });
  m_tree.file("a.xml", "<fix><a/></fix>");
  char *const psArg = m_tree.arg("a.xml");
  sttParseBySttInfo(psArg);
  EXPECT_EQ(psFile, psArg);
  EXPECT_TRUE(bRootsOwn);
}

// --- The base type ------------------------------------------------------------------------------------------

TEST_F(BaseString, IsTheChainsWhereTheChainKnowsIt) {
  sttAddFuncVoid(knowsAll, writesAll);
  const Xml xml("<a><String __ID='p' psValue='v'/></a>");
  EXPECT_EQ(sttParseXmlVoid(xml.root(), cs("p")), &f_record);
  sttSetVoidType(&f_record, cs("String"));
  const Xml out("<a/>");
  sttGenerateXmlVoid(out.root(), &f_record, cs("p"));
  EXPECT_EQ(out.text(), "<a><String __ID=\"p\" n=\"v\"/></a>");
  EXPECT_EQ(sttGenVoid(&f_record, out.root(), cs("p"), cs("String")), out.root());
}

TEST_F(BaseString, MayBeEmptyAndIsNullWithoutAValueSilently) {
  const Xml xml("<a><String __ID='empty' psValue=''/><String __ID='none'/></a>");
  auto *const psEmpty = static_cast<char *>(sttParseXmlVoid(xml.root(), cs("empty")));
  ASSERT_NE(psEmpty, nullptr);
  EXPECT_STREQ(psEmpty, "");
  std::free(psEmpty);
  EXPECT_EQ(sttParseXmlVoid(xml.root(), cs("none")), nullptr);
  EXPECT_EQ(nGRet, 0);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(BaseString, ThatCannotBeWrittenLeavesTheFlagAlone) {
  EXPECT_EQ(sttGenVoid(nullptr, nullptr, cs("p"), cs("String")), nullptr);
  EXPECT_EQ(nGRet, 0);
}

// --- The flag -----------------------------------------------------------------------------------------------

TEST_F(Flag, OfAFileThatIsReadFailsItWithMinusOneOnly) {
  m_tree.file("a.xml", "<a><b/></a>");
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("a.xml"), cs("a"), cs("b"), untyped(raisesOne)), &f_record);
  EXPECT_EQ(nGRet, 1);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(Flag, OfAFileThatIsWrittenFailsItWithMinusOneOnly) {
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("a.xml"), &f_record, cs("a"), cs("b"), untyped(writesAndRaisesOne)), 0);
  EXPECT_EQ(nGRet, 1);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(Flag, OfAVoidFieldThatIsWrittenFailsItWithMinusOneOnly) {
  sttAddFuncVoid(knowsNothing, writesAndRaisesOne);
  sttSetVoidType(&f_record, cs("T"));
  sttGenerateXmlVoid(Xml("<a/>").root(), &f_record, cs("p"));
  EXPECT_EQ(nGRet, 1);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(Flag, IsLeftAloneByAFileThatCannotBeMade) {
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("no/a.xml"), &f_record, cs("a"), cs("b"), untyped(writesAll)), -1);
  EXPECT_EQ(nGRet, 0);
}

// --- Lines --------------------------------------------------------------------------------------------------

// The first line of a call.
void expectLine(const char *psFunction, const std::string &sText, const std::function<void()> &call) {
  SCOPED_TRACE(sText);
  nGRet = 0;
  test::clearLog();
  call();
  ASSERT_FALSE(test::logLines().empty());
  const test::LogLine &line = test::logLines().front();
  EXPECT_EQ(line.nLevel, 1);
  EXPECT_EQ(line.sModule, "$cvt2");
  EXPECT_EQ(line.sFile, "stt.cpp");
  EXPECT_GT(line.nLine, 0);
  EXPECT_EQ(line.sFunction, psFunction);
  EXPECT_EQ(line.sText, sText);
}

TEST_F(Lines, OfTheRegistryComeFromItsFunctions) {
  const char *const psAdd = "sttAddVoidFunctionToSttInfo";
  expectLine("sttAddSttInfo", "[psType] is NULL", [] { sttAddSttInfo(nullptr, readsFile); });
  expectLine(psAdd, "[psType] is NULL", [] { sttAddVoidFunctionToSttInfo(nullptr, knowsAll, writesAll); });
  expectLine(psAdd, "[fpParseVoid] is NULL",
             [] { sttAddVoidFunctionToSttInfo(cs("T"), nullptr, writesAll); });
  expectLine(psAdd, "[fpGenVoid] is NULL", [] { sttAddVoidFunctionToSttInfo(cs("T"), knowsAll, nullptr); });
  expectLine(psAdd, "SttInfo[T] Not Defined!!",
             [] { sttAddVoidFunctionToSttInfo(cs("T"), knowsAll, writesAll); });
}

TEST_F(Lines, OfTypedFilesComeFromTheirReader) {
  const char *const psRead = "sttParseBySttInfo";
  m_tree.file("a.xml", "<a/>");
  expectLine(psRead, "[psFile] is NULL", [] { sttParseBySttInfo(nullptr); });
  expectLine(psRead, "File[" + m_tree.path("none") + "] Parse err!!",
             [&] { sttParseBySttInfo(m_tree.arg("none")); });
  expectLine(psRead, "SttInfo no Type[a] Info!!", [&] { sttParseBySttInfo(m_tree.arg("a.xml")); });
}

TEST_F(Lines, OfFilesWithAFixedRootComeFromTheirReader) {
  const char *const psRead = "sttParseXmlFile";
  m_tree.file("a.xml", "<a/>").file("ab.xml", "<a><b/></a>");
  const auto read = [&](const char *psFile, const char *psTag, void *pfParse) {
    return [=, this] { sttParseXmlFile(m_tree.arg(psFile), cs(psTag), cs("b"), pfParse); };
  };
  expectLine(psRead, "[psRootTag] is NULL", read("a.xml", nullptr, untyped(knowsAll)));
  expectLine(psRead, "[pfParse] is NULL", read("a.xml", "a", nullptr));
  expectLine(psRead, "[ptXmlDoc = xmlFileParse(psFileName)] is NULL", read("none", "a", untyped(knowsAll)));
  expectLine(psRead, "[A] is different then xml root name[a]", read("a.xml", "A", untyped(knowsAll)));
  expectLine(psRead, "[ptHeadNode = xmlGetChileNode(ptXmlRoot)] is NULL",
             read("a.xml", "a", untyped(knowsAll)));
  expectLine(psRead, "parse xml[a)" + m_tree.path("ab.xml") + "] faile", read("ab.xml", "a", untyped(fails)));
}

TEST_F(Lines, OfWrittenFilesComeFromTheirWriter) {
  const char *const psWrite = "sttGenXmlFile";
  const auto write = [&](const char *psFile, void *ptStruct, void *pfGen) {
    return [=, this] { sttGenXmlFile(m_tree.arg(psFile), ptStruct, cs("a"), cs("b"), pfGen); };
  };
  expectLine(psWrite, "[psFileName] is NULL",
             [] { sttGenXmlFile(nullptr, &f_record, cs("a"), cs("b"), untyped(writesAll)); });
  expectLine(psWrite, "[ptStruct] is NULL", write("a.xml", nullptr, untyped(writesAll)));
  expectLine(psWrite, "[pfGen] is NULL", write("a.xml", &f_record, nullptr));
  expectLine(psWrite, "Make [a)" + m_tree.path("a.xml") + "] Xml err!",
             write("a.xml", &f_record, untyped(failsToWrite)));
  expectLine(psWrite, "Generate Xml File[" + m_tree.path("no/a.xml") + "] err!",
             write("no/a.xml", &f_record, untyped(writesAll)));
}

TEST_F(Lines, OfUnknownTypesComeFromTheDispatchAlsoInsideAField) {
  const Xml xml("<a><T __ID='p'/></a>");
  const std::string sText = "Type[T] Not Define";
  expectLine("sttParseVoid", sText, [] { sttParseVoid(nullptr, cs("T")); });
  expectLine("sttParseVoid", sText, [&] { sttParseXmlVoid(xml.root(), cs("p")); });
  sttSetVoidType(&f_record, cs("T"));
  expectLine("sttGenVoid", sText, [] { sttGenVoid(&f_record, nullptr, cs("p"), cs("T")); });
  expectLine("sttGenVoid", sText, [&] { sttGenerateXmlVoid(xml.root(), &f_record, cs("p")); });
  expectLine("sttGenVoid", "psValue Generate Xml Node err!",
             [] { sttGenVoid(nullptr, nullptr, cs("p"), cs("String")); });
}

TEST_F(Lines, OfVoidFieldsComeFromTheirWriter) {
  const char *const psWrite = "sttGenerateXmlVoid";
  static char unknown;
  const Xml xml("<a/>");
  sttAddFuncVoid(knowsNothing, failsToWrite);
  sttAddFuncVoid(knowsAll, writesAll);
  sttSetVoidType(&f_record, cs("T"));
  expectLine(psWrite, "Struct Type Not Define!!", [&] { sttGenerateXmlVoid(xml.root(), &unknown, cs("p")); });
  expectLine(psWrite, "xmlPutNodeAttr Err!!", [&] { sttGenerateXmlVoid(xml.root(), &f_record, nullptr); });
  expectLine(psWrite, "xmlPutChileNode Err!!", [] { sttGenerateXmlVoid(nullptr, &f_record, cs("p")); });
  expectLine(psWrite, "sttGenVoid Type[T] Err!!",
             [&] { sttGenerateXmlVoid(xml.root(), &f_record, cs("p")); });
}

TEST_F(Lines, ThatNoFileBringsAboutAreInTheLibrary) {
  std::ifstream in(CVT2_BUILD_DIR "/lib/libcvt2.so", std::ios::binary);
  const std::string sLibrary{std::istreambuf_iterator<char>(in), {}};
  for (const char *const psText :
       {"File[%s] Get Root Err!!", "psType = xmlGetNodeName(ptXmlRoot)",
        "ptXmlRoot = xmlGetHeadNode(ptXmlDoc)", "xmlMadeNode Err!!", "New Type[%s] SttInfo Err!!"}) {
    EXPECT_NE(sLibrary.find('\0' + std::string(psText) + '\0'), std::string::npos) << psText;
  }
}

}  // namespace

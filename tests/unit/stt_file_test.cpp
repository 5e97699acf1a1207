// Files of the binding framework: read by their registered type, read with a fixed root, and written.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "binding_fixture.h"
#include "config_tree.h"
#include "log_capture.h"
#include "stt.h"
#include "xml_text.h"

namespace {

using test::ConfigTree;
using test::cs;
using test::logTexts;
using test::untyped;
using Texts = std::vector<std::string>;

// What a parse function was called with.
struct Call {
  std::string sFile;
  std::string sType;
  std::string sNode;
  bool operator==(const Call &) const = default;
};
std::vector<Call> f_calls;

std::string text(const char *ps) {
  return ps == nullptr ? "null" : ps;
}
std::string nameOf(void *ptXmlNode) {
  return ptXmlNode == nullptr ? "null" : text(xmlGetNodeName(ptXmlNode));
}

char f_record;

void *parseFile(char *psFile, char *psType, void *ptNode) {
  f_calls.push_back({text(psFile), text(psType), nameOf(ptNode)});
  return &f_record;
}

void *parseRecord(void *ptNode, char *psType) {
  f_calls.push_back({"", text(psType), nameOf(ptNode)});
  return &f_record;
}

void *parseToNull(void *, char *) {
  return nullptr;
}

void *parseBadly(void *, char *) {
  nGRet = -1;
  return &f_record;
}

class SttFile : public test::EmptyBinding {
 protected:
  void SetUp() override {
    test::EmptyBinding::SetUp();
    f_calls.clear();
  }

  ConfigTree m_tree;
};

using SttTypedFile = SttFile;
using SttFixedRoot = SttFile;
using SttWrittenFile = SttFile;

// --- By registered type ------------------------------------------------------------------------------------

TEST_F(SttTypedFile, IsReadByTheFunctionOfItsRootElement) {
  sttAddSttInfo(cs("other"), nullptr);
  sttAddSttInfo(cs("fix"), parseFile);
  m_tree.file("a.xml", "<fix><Msg psMsgName='A'/></fix>");
  EXPECT_EQ(sttParseBySttInfo(m_tree.arg("a.xml")), &f_record);
  EXPECT_EQ(f_calls, (std::vector<Call>{{m_tree.path("a.xml"), "fix", "Msg"}}));
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(SttTypedFile, ItsFirstChildIsHandedOverWhateverItIs) {
  sttAddSttInfo(cs("fix"), parseFile);
  m_tree.file("comment.xml", "<fix><!--c--><Msg/></fix>").file("empty.xml", "<fix/>");
  sttParseBySttInfo(m_tree.arg("comment.xml"));
  sttParseBySttInfo(m_tree.arg("empty.xml"));
  ASSERT_EQ(f_calls.size(), 2U);
  EXPECT_EQ(f_calls[0].sNode, "comment");
  EXPECT_EQ(f_calls[1].sNode, "null");
}

TEST_F(SttTypedFile, ANullNameIsRefused) {
  EXPECT_EQ(sttParseBySttInfo(nullptr), nullptr);
  EXPECT_EQ(logTexts(), Texts{"[psFile] is NULL"});
}

TEST_F(SttTypedFile, AMissingFileIsReportedWithTheReason) {
  EXPECT_EQ(sttParseBySttInfo(m_tree.arg("a.xml")), nullptr);
  const std::string sFile = m_tree.path("a.xml");
  EXPECT_EQ(logTexts(),
            (Texts{"File[" + sFile + "] Parse err!!", "File[" + sFile + "] No such file or directory"}));
}

TEST_F(SttTypedFile, ABrokenFileIsReportedWithTheFirstThingWrong) {
  m_tree.file("a.xml", "<fix>\n<Msg>\n</fix>\n");
  EXPECT_EQ(sttParseBySttInfo(m_tree.arg("a.xml")), nullptr);
  const std::string sFile = m_tree.path("a.xml");
  EXPECT_EQ(logTexts(),
            (Texts{"File[" + sFile + "] Parse err!!",
                   "File[" + sFile + "] line 3: Opening and ending tag mismatch: Msg line 2 and fix"}));
}

TEST_F(SttTypedFile, AFileWithoutARootIsNoXml) {
  m_tree.file("a.xml", "<?xml version='1.0'?><!--c-->");
  EXPECT_EQ(sttParseBySttInfo(m_tree.arg("a.xml")), nullptr);
  EXPECT_EQ(logTexts().at(0), "File[" + m_tree.path("a.xml") + "] Parse err!!");
}

TEST_F(SttTypedFile, AnUnknownTypeIsRefused) {
  sttAddSttInfo(cs("fix"), parseFile);
  m_tree.file("a.xml", "<Fix><Msg/></Fix>");
  EXPECT_EQ(sttParseBySttInfo(m_tree.arg("a.xml")), nullptr);
  EXPECT_EQ(logTexts(), Texts{"SttInfo no Type[Fix] Info!!"});
  EXPECT_TRUE(f_calls.empty());
}

TEST_F(SttTypedFile, ATypeWithoutAFunctionIsReported) {
  sttAddSttInfo(cs("fix"), nullptr);
  m_tree.file("a.xml", "<fix/>");
  EXPECT_EQ(sttParseBySttInfo(m_tree.arg("a.xml")), nullptr);
  EXPECT_EQ(logTexts(), Texts{"[ptInfo->fParseFunction] is NULL"});
}

// --- Which chain is current --------------------------------------------------------------------------------

char f_ofType, f_ofOther, f_ofGlobal, f_late;

void *knownToType(void *, char *) {
  return &f_ofType;
}
void *knownToOther(void *, char *) {
  return &f_ofOther;
}
void *knownGlobally(void *, char *) {
  return &f_ofGlobal;
}
void *knownLate(void *, char *psType) {
  return std::string(psType) == "late" ? &f_late : nullptr;
}
void *writesNothing(void *, void *, char *, char *) {
  return nullptr;
}

void *whoAnswers() {
  return sttParseVoid(nullptr, cs("any"));
}

// Set by a test: a file that the next parse function reads in its turn.
std::string f_sInner;
std::vector<void *> f_answers;

void *parseAndAsk(char *, char *, void *) {
  f_answers.push_back(whoAnswers());
  if (const std::string sInner = std::exchange(f_sInner, ""); !sInner.empty()) {
    sttParseBySttInfo(cs(sInner.c_str()));
    f_answers.push_back(whoAnswers());
  }
  return nullptr;
}

class SttChain : public SttFile {
 protected:
  void SetUp() override {
    SttFile::SetUp();
    f_answers.clear();
    sttAddFuncVoid(knownGlobally, writesNothing);
    sttAddSttInfo(cs("type"), parseAndAsk);
    sttAddVoidFunctionToSttInfo(cs("type"), knownToType, writesNothing);
    m_tree.file("type.xml", "<type/>");
  }
};

TEST_F(SttChain, ATypesOwnChainIsCurrentWhileItsFileIsRead) {
  EXPECT_EQ(whoAnswers(), &f_ofGlobal);
  sttParseBySttInfo(m_tree.arg("type.xml"));
  EXPECT_EQ(f_answers, std::vector<void *>{&f_ofType});
  EXPECT_EQ(whoAnswers(), &f_ofGlobal);
}

TEST_F(SttChain, AFileReadInsideAnotherBringsItsOwn) {
  sttAddSttInfo(cs("other"), parseAndAsk);
  sttAddVoidFunctionToSttInfo(cs("other"), knownToOther, writesNothing);
  m_tree.file("other.xml", "<other/>");
  f_sInner = m_tree.path("other.xml");
  sttParseBySttInfo(m_tree.arg("type.xml"));
  EXPECT_EQ(f_answers, (std::vector<void *>{&f_ofType, &f_ofOther, &f_ofType}));
  EXPECT_EQ(whoAnswers(), &f_ofGlobal);
}

TEST_F(SttChain, ATypeWithoutPairsKnowsNoRecord) {
  sttAddSttInfo(cs("bare"), parseAndAsk);
  m_tree.file("bare.xml", "<bare/>");
  sttParseBySttInfo(m_tree.arg("bare.xml"));
  EXPECT_EQ(f_answers, std::vector<void *>{nullptr});
  EXPECT_EQ(logTexts(), Texts{"Type[any] Not Define"});
}

TEST_F(SttChain, AFixedRootUsesTheGlobalChain) {
  m_tree.file("a.xml", "<a><b/></a>");
  const auto ask = [](void *, char *) -> void * { return whoAnswers(); };
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("a.xml"), cs("a"), cs("b"), untyped(+ask)), &f_ofGlobal);
}

void *parseAndAdd(char *, char *, void *) {
  sttAddFuncVoid(knownLate, writesNothing);
  return sttParseVoid(nullptr, cs("late"));
}

TEST_F(SttChain, APairAddedWhileAFileIsReadJoinsTheTypesChain) {
  sttAddSttInfo(cs("bare"), parseAndAdd);
  m_tree.file("bare.xml", "<bare/>");
  EXPECT_EQ(sttParseBySttInfo(m_tree.arg("bare.xml")), &f_late);
  EXPECT_EQ(gptSttInfo->ptVoidFunction->fpParse, knownLate);
  sttResetFunctVoid();
  EXPECT_EQ(sttParseVoid(nullptr, cs("late")), nullptr);  // it never was in the global one
}

void *parseAndReset(char *, char *, void *) {
  sttResetFunctVoid();
  return whoAnswers();
}

TEST_F(SttChain, AResetWhileAFileIsReadEmptiesTheTypesChainOnly) {
  sttAddSttInfo(cs("odd"), parseAndReset);
  sttAddVoidFunctionToSttInfo(cs("odd"), knownToOther, writesNothing);
  m_tree.file("odd.xml", "<odd/>");
  EXPECT_EQ(sttParseBySttInfo(m_tree.arg("odd.xml")), nullptr);
  EXPECT_EQ(gptSttInfo->ptVoidFunction, nullptr);
  EXPECT_EQ(whoAnswers(), &f_ofGlobal);
}

void *parseAndEnd(char *, char *, void *) {
  sttEnd();
  return whoAnswers();
}

TEST_F(SttChain, AnEndWhileAFileIsReadIsSurvived) {
  sttAddSttInfo(cs("odd"), parseAndEnd);
  sttAddVoidFunctionToSttInfo(cs("odd"), knownToOther, writesNothing);
  m_tree.file("odd.xml", "<odd/>");
  EXPECT_EQ(sttParseBySttInfo(m_tree.arg("odd.xml")), nullptr);
  EXPECT_EQ(gptSttInfo, nullptr);
  EXPECT_EQ(whoAnswers(), nullptr);
}

// --- With a fixed root -------------------------------------------------------------------------------------

TEST_F(SttFixedRoot, TheFirstChildIsReadWhateverItsName) {
  m_tree.file("a.xml", "<Convert><Any/><More/></Convert>").file("b.xml", "<Convert><!--c--></Convert>");
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("a.xml"), cs("Convert"), cs("Converter"), untyped(parseRecord)),
            &f_record);
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("b.xml"), cs("Convert"), nullptr, untyped(parseRecord)), &f_record);
  EXPECT_EQ(f_calls, (std::vector<Call>{{"", "Converter", "Any"}, {"", "null", "comment"}}));
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(SttFixedRoot, ItsArgumentsAreCheckedInOrder) {
  EXPECT_EQ(sttParseXmlFile(nullptr, nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(sttParseXmlFile(nullptr, cs("a"), nullptr, nullptr), nullptr);
  EXPECT_EQ(logTexts(), (Texts{"[psRootTag] is NULL", "[pfParse] is NULL"}));
}

TEST_F(SttFixedRoot, ANullOrUnreadableFileIsReported) {
  EXPECT_EQ(sttParseXmlFile(nullptr, cs("a"), cs("b"), untyped(parseRecord)), nullptr);
  EXPECT_EQ(logTexts(),
            (Texts{"[ptXmlDoc = xmlFileParse(psFileName)] is NULL", "File[(null)] no file is named"}));
  test::clearLog();
  m_tree.file("a.xml", "<a>\n");
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("a.xml"), cs("a"), cs("b"), untyped(parseRecord)), nullptr);
  EXPECT_EQ(logTexts(),
            (Texts{"[ptXmlDoc = xmlFileParse(psFileName)] is NULL",
                   "File[" + m_tree.path("a.xml") + "] line 2: Premature end of data in tag a line 1"}));
  EXPECT_TRUE(f_calls.empty());
}

TEST_F(SttFixedRoot, ARootThatDiffersByCaseIsRefused) {
  m_tree.file("a.xml", "<convert><a/></convert>");
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("a.xml"), cs("Convert"), cs("a"), untyped(parseRecord)), nullptr);
  EXPECT_EQ(logTexts(), Texts{"[Convert] is different then xml root name[convert]"});
  EXPECT_TRUE(f_calls.empty());
}

TEST_F(SttFixedRoot, AnEmptyRootIsRefused) {
  m_tree.file("a.xml", "<a/>");
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("a.xml"), cs("a"), cs("b"), untyped(parseRecord)), nullptr);
  EXPECT_EQ(logTexts(), Texts{"[ptHeadNode = xmlGetChileNode(ptXmlRoot)] is NULL"});
}

TEST_F(SttFixedRoot, ARaisedFlagDropsTheRecord) {
  m_tree.file("a.xml", "<a><b/></a>");
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("a.xml"), cs("a"), cs("b"), untyped(parseBadly)), nullptr);
  EXPECT_EQ(logTexts(), Texts{"parse xml[a)" + m_tree.path("a.xml") + "] faile"});
  EXPECT_EQ(nGRet, -1);
}

TEST_F(SttFixedRoot, TheFlagIsNotClearedBefore) {
  m_tree.file("a.xml", "<a><b/></a>");
  nGRet = -1;
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("a.xml"), cs("a"), cs("b"), untyped(parseRecord)), nullptr);
  EXPECT_EQ(logTexts(), Texts{"parse xml[a)" + m_tree.path("a.xml") + "] faile"});
}

TEST_F(SttFixedRoot, ANullRecordWithoutTheFlagIsNoError) {
  m_tree.file("a.xml", "<a><b/></a>");
  EXPECT_EQ(sttParseXmlFile(m_tree.arg("a.xml"), cs("a"), cs("b"), untyped(parseToNull)), nullptr);
  EXPECT_EQ(logTexts(0), Texts{});
}

// --- Writing -----------------------------------------------------------------------------------------------

void *writeRecord(void *ptStruct, void *ptNode, char *psTagName, char *psType) {
  const std::string sValue = text(psTagName) + "/" + text(psType) + "/" + static_cast<char *>(ptStruct);
  xmlPutNodeAttr(ptNode, cs("n"), cs(sValue.c_str()), static_cast<int>(sValue.size()));
  return ptNode;
}

void *writeBadly(void *, void *, char *, char *) {
  nGRet = -1;
  return nullptr;
}

void *writeNext(void *ptStruct, void *ptNode, char *, char *psType) {
  sttGenerateXmlNext(ptNode, ptStruct, cs("ptNext"), psType, untyped(writeRecord));
  return ptNode;
}

std::string contents(const std::string &sFile) {
  std::ifstream in(sFile);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

TEST_F(SttWrittenFile, HoldsTheRecordUnderItsRootIndentedInUtf8) {
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("a.xml"), cs("v"), cs("Root"), cs("Type"), untyped(writeRecord)), 0);
  EXPECT_EQ(contents(m_tree.path("a.xml")),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Root>\n  <Type n=\"Root/Type/v\"/>\n</Root>\n");
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(SttWrittenFile, ItsArgumentsAreCheckedInOrder) {
  EXPECT_EQ(sttGenXmlFile(nullptr, nullptr, nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("a.xml"), nullptr, nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("a.xml"), cs("v"), nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("a.xml"), cs("v"), nullptr, nullptr, untyped(writeRecord)), -1);
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("a.xml"), cs("v"), cs("Root"), nullptr, untyped(writeRecord)), -1);
  EXPECT_EQ(logTexts(), (Texts{"[psFileName] is NULL", "[ptStruct] is NULL", "[pfGen] is NULL",
                               "[psTagName] is NULL", "[psType] is NULL"}));
  EXPECT_FALSE(std::filesystem::exists(m_tree.path("a.xml")));
}

TEST_F(SttWrittenFile, ARaisedFlagLeavesNoFile) {
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("a.xml"), cs("v"), cs("Root"), cs("Type"), untyped(writeBadly)), -1);
  EXPECT_EQ(logTexts(), Texts{"Make [Root)" + m_tree.path("a.xml") + "] Xml err!"});
  EXPECT_FALSE(std::filesystem::exists(m_tree.path("a.xml")));
}

TEST_F(SttWrittenFile, TheRootHasNoRoomForASecondOne) {
  // the nearest element of that name is the root, which has no parent
  const auto write = [](void *ptStruct, void *ptNode, char *, char *) -> void * {
    sttGenerateXmlNext(ptNode, ptStruct, cs("ptNext"), cs("Root"), untyped(writeRecord));
    return ptNode;
  };
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("a.xml"), cs("v"), cs("Root"), cs("Type"), untyped(+write)), -1);
  EXPECT_EQ(logTexts(), Texts{"Make [Root)" + m_tree.path("a.xml") + "] Xml err!"});
}

TEST_F(SttWrittenFile, AListStandsBehindItsFirstRecord) {
  EXPECT_EQ(sttGenXmlFile(m_tree.arg("a.xml"), cs("v"), cs("Root"), cs("Type"), untyped(writeNext)), 0);
  EXPECT_EQ(contents(m_tree.path("a.xml")),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Root>\n  <Type/>\n"
            "  <Type __ID=\"ptNext\" n=\"ptNext/Type/v\"/>\n</Root>\n");
}

TEST_F(SttWrittenFile, OneThatCannotBeMadeIsReported) {
  char *const psFile = m_tree.arg("no/such/a.xml");
  EXPECT_EQ(sttGenXmlFile(psFile, cs("v"), cs("Root"), cs("Type"), untyped(writeRecord)), -1);
  EXPECT_EQ(logTexts(), Texts{"Generate Xml File[" + std::string(psFile) + "] err!"});
}

}  // namespace

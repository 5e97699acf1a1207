// The registry: what the initialiser of a format finds, formats beside file types of a host, and the whole
// trail of a start that ends at a definition.
#include "convert_fixture.h"
#include "definition_xml.h"
#include "pool_use.h"
#include "trail.h"

namespace {

using test::cs;
using test::model::Definitions;
using test::model::field;
using Texts = std::vector<std::string>;

class Formats : public ::testing::Test {
 protected:
  Definitions m_definitions;
};

Texts g_paths;  // psCurrentPath and psMsgName, as an initialiser saw them

int notePath(Msg *ptMsg) {
  g_paths.push_back(std::string(gptFmtGlobalInfo->psCurrentPath) + ":" + ptMsg->psMsgName);
  return gptFmtGlobalInfo->psBasePath == nullptr ? 0 : -1;
}

TEST_F(Formats, InitialiserSeesTheDirectoryBeingRead) {
  Definitions::format("flat", notePath);
  m_definitions.file("one/A.xml", test::model::definition("A", {test::model::reference("../two/B")}));
  m_definitions.file("two/B.xml", test::model::definition("../two/B", {field("X")}));
  m_definitions.file("three/C.xml", test::model::definition("C", {field("X")}));
  ASSERT_NE(m_definitions.load({"one", "three"}), nullptr);
  EXPECT_EQ(g_paths, (Texts{"one:../two/B", "one:A", "three:C"}));
  EXPECT_EQ(gptFmtGlobalInfo->psCurrentPath, nullptr);
}

TEST_F(Formats, InitialiserDoesNotFindItsDefinitionYet) {
  static Msg *s_ptFound = nullptr;
  Definitions::format("flat", [](Msg *ptMsg) {
    s_ptFound = cvtGetMsg(ptMsg->psMsgName);
    return 0;
  });
  m_definitions.add("Order", {field("A")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(s_ptFound, nullptr);
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
}

void *readNothing(char *, char *, void *) {
  return nullptr;
}

TEST_F(Formats, FileTypeThatWasThereKeepsItsOwnReader) {
  ASSERT_EQ(sttAddSttInfo(cs("flat"), readNothing), 0);
  Definitions::format("flat");
  EXPECT_EQ(gptSttInfo->fParseFunction, readNothing);
  EXPECT_EQ(gptSttInfo->ptNext, nullptr);
  m_definitions.add("Order", {field("A")});
  EXPECT_EQ(m_definitions.load(), nullptr);
  EXPECT_EQ(test::logTexts().at(0), "File[" + m_definitions.path("msg/Order.xml") + "] Parse Err!!");
}

TEST_F(Formats, WithoutBothDispatchersIsStillAFormat) {
  EXPECT_EQ(cvtFmtAddPlug(cs("flat"), nullptr, nullptr, Definitions::accept), 0);
  EXPECT_EQ(test::logTexts(), Texts{"[fpParseVoid] is NULL"});
  m_definitions.add("Order", {test::model::loop("L", "", {field("X")})});
  EXPECT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(cvtLoopGetFieldNum(cvtGetMsg(cs("Order"))->ptHead), 1);
}

TEST_F(Formats, AreFoundNewestFirst) {
  Definitions::format("one");
  Definitions::format("two");
  Definitions::format("one");
  Texts names;
  for (const StringList *pt = gptFmtGlobalInfo->ptInitList; pt != nullptr; pt = pt->ptNext)
    names.emplace_back(pt->psString);
  EXPECT_EQ(names, (Texts{"one", "two", "one"}));
}

TEST_F(Formats, WithoutANameEmptyTheListOfInitialisers) {
  Definitions::format("flat", [](Msg *) { return -1; });
  EXPECT_EQ(cvtFmtAddPlug(nullptr, Definitions::noRecord, Definitions::noWriter, Definitions::accept), 0);
  EXPECT_EQ(gptFmtGlobalInfo->ptInitList, nullptr);
  m_definitions.add("Order", {field("A")});
  EXPECT_NE(m_definitions.load(), nullptr);  // nobody refuses it any more
}

TEST_F(Formats, ADefinitionThatIsRefusedIsNotRegisteredAndThoseItRefersToAre) {
  Definitions::format("flat", [](Msg *ptMsg) { return std::string(ptMsg->psMsgName) == "A" ? 1 : 0; });
  m_definitions.file("one/A.xml", test::model::definition("A", {test::model::reference("../two/Head")}));
  m_definitions.file("two/Head.xml", test::model::definition("../two/Head", {field("X")}));
  EXPECT_EQ(m_definitions.load({"one"}), nullptr);
  EXPECT_EQ(cvtGetMsg(cs("A")), nullptr);
  EXPECT_NE(cvtGetMsg(cs("../two/Head")), nullptr);
}

// A definition without a name has emptied the registry: what stands in front of it is forgotten, and read again.
TEST_F(Formats, ADefinitionThatWasForgottenIsReadAgain) {
  Definitions::format("flat");
  m_definitions.file("one/A.xml", test::model::definition("A", {field("X")}));
  m_definitions.file("two/Nameless.xml",
                     "<flat><Msg>" + test::model::chainXml("ptHead", {field("X")}) + "</Msg></flat>");
  m_definitions.file("three/B.xml", test::model::definition("B", {field("X")}));
  ASSERT_NE(m_definitions.load({"one", "two", "three"}), nullptr);
  EXPECT_EQ(cvtGetMsg(cs("A")), nullptr);
  EXPECT_NE(cvtGetMsg(cs("B")), nullptr);
  ASSERT_NE(m_definitions.load({"one", "three"}), nullptr);
  EXPECT_NE(cvtGetMsg(cs("A")), nullptr);
  EXPECT_STREQ(gptFmtGlobalInfo->ptMsgList->psString, "A");
  EXPECT_STREQ(gptFmtGlobalInfo->ptMsgList->ptNext->psString, "B");
  EXPECT_EQ(gptFmtGlobalInfo->ptMsgList->ptNext->ptNext, nullptr);
}

TEST_F(Formats, ADirectoryWithoutANameFailsTheSection) {
  Definitions::format("flat");
  const test::model::Element section(
      "<Message><PathList __ID='ptMsgList'/><PathList __ID='ptNext' psPath='msg'/></Message>");
  m_definitions.add("Order", {field("A")});
  EXPECT_EQ(cvtFmtInit(section.get(), cs("Message")), nullptr);
  EXPECT_EQ(test::logTexts(),
            (Texts{"[psDirName] is NULL", "Message Parse Dir[(null)] err!!", "cvt Message Parse Err!!"}));
  EXPECT_EQ(cvtGetMsg(cs("Order")), nullptr);
}

TEST_F(Formats, ADefinitionAppendedToTheListByHandIsFound) {
  Definitions::format("flat");
  m_definitions.add("Order", {field("A")});
  ASSERT_NE(m_definitions.load(), nullptr);
  Msg mine{};
  EXPECT_EQ(cvtGetMsg(cs("Mine")), nullptr);
  cvtStrListAddList(gptFmtGlobalInfo->ptMsgList, cvtStrAddStringList(nullptr, cs("Mine"), &mine));
  EXPECT_EQ(cvtGetMsg(cs("Mine")), &mine);
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
}

TEST_F(Formats, WhatIsWrongIsToldByTheFunctionThatFoundIt) {
  EXPECT_EQ(cvtGetMsg(cs("Order")), nullptr);
  Definitions::format("flat", [](Msg *) { return -1; });
  m_definitions.file("one/Nameless.xml",
                     "<flat><Msg>" + test::model::chainXml("ptHead", {field("A")}) + "</Msg></flat>");
  m_definitions.load({"one"});
  const Texts all = test::trail();
  ASSERT_GT(all.size(), 2U);
  EXPECT_EQ(all[0], "cvt_message.cpp cvtGetMsg: [gptFmtGlobalInfo] is NULL");
  EXPECT_EQ(all[1], "stt_cvt_message.cpp cvtSttInitMessage: Format [flat] Init Err!!");
  test::clearLog();
  Definitions::format("flat");
  ASSERT_NE(m_definitions.load({"one"}), nullptr);
  EXPECT_EQ(test::trail().back(),
            "cvt_message.cpp FmtAddMsg: Init Ipc Struct[(null)]: Add Msg to global define Err!!");
}

TEST_F(Formats, AFailedSectionLeavesReferencesToItsLastDirectory) {
  Definitions::format("flat");
  m_definitions.file("one/A.xml", test::model::definition("A", {field("X")}));
  m_definitions.file("two/B.xml", test::model::definition("B", {}));
  ASSERT_EQ(m_definitions.load({"one", "two"}), nullptr);
  m_definitions.file("two/C.xml", test::model::definition("C", {field("X")}));
  const Message *const pt = cvtNewMessageByType(cs("C"), -1, nullptr, nullptr);
  ASSERT_NE(cvtGetMsg(cs("C")), nullptr);
  EXPECT_EQ(pt, cvtGetMsg(cs("C"))->ptHead);
}

TEST_F(Formats, TheEndOfTheRegistryFreesNothing) {
  Definitions::format("flat");
  m_definitions.add("Order", {field("A"), field("B")});
  ASSERT_NE(m_definitions.load(), nullptr);
  const Msg *const pt = cvtGetMsg(cs("Order"));
  const int nBefore = test::handedOut();
  EXPECT_EQ(cvtFmtEnd(), 0);
  EXPECT_EQ(test::handedOut(), nBefore);
  EXPECT_STREQ(pt->psMsgName, "Order");
  EXPECT_STREQ(cvtIdxNode(pt->pptMessageIdx, 1)->psNodeName, "B");
}

TEST_F(Formats, TheLargestCapacityOutlivesTheLibrarysEnd) {
  ASSERT_NE(m_definitions.load({}, "gnMaxValue='7'"), nullptr);
  cvtEnd();
  Definitions::format("flat");
  m_definitions.add("Order", {field("A")});
  ASSERT_NE(m_definitions.load({"msg"}, "gnMaxValue='2'"), nullptr);
  EXPECT_EQ(gnMaxValueNum, 7);
  EXPECT_EQ(cvtGetValueList(-1)->nNow, 7);
}

using Start = test::ConvertTest;

TEST_F(Start, ThatEndsAtADefinitionLeavesAWholeTrail) {
  define("Empty", {});
  EXPECT_EQ(start(), -1);
  const std::string sFile = tree.path("Msg/Empty.xml");
  EXPECT_EQ(test::logTexts(),
            rootTrail({"[ptMessage] is NULL", "Create Message[Empty] Idx err!!",
                       "Init Xml struct[Empty] : cvtGenMessageInfo err!!", "File[" + sFile + "] Parse Err!!",
                       "Parse File[" + sFile + "] Err!!", "Init[Empty.xml] err !!",
                       "Message Parse Dir[Msg] err!!", "cvt Message Parse Err!!",
                       "void * ptMessage = sttParseXmlStruct(ptXmlNode, \"Message\", \"ptMessage\", "
                       "cvtFmtInit) is Err!!"},
                      false));
  EXPECT_EQ(nGRet, -1);
}

TEST_F(Start, ThatEndsAtAFileThatIsNoXmlLeavesAWholeTrail) {
  const std::string sFile = tree.file("Msg/Order.xml", "<plain>\n<Msg></plain>").path("Msg/Order.xml");
  EXPECT_EQ(start(), -1);
  Texts texts = test::logTexts();
  ASSERT_GT(texts.size(), 1U);
  EXPECT_EQ(texts[1].rfind("File[" + sFile + "] line 2", 0), 0U) << texts[1];  // the rest is libxml2's
  texts.erase(texts.begin() + 1);
  EXPECT_EQ(texts, rootTrail({"File[" + sFile + "] Parse err!!", "File[" + sFile + "] Parse Err!!",
                              "Parse File[" + sFile + "] Err!!", "Init[Order.xml] err !!",
                              "Message Parse Dir[Msg] err!!", "cvt Message Parse Err!!",
                              "void * ptMessage = sttParseXmlStruct(ptXmlNode, \"Message\", \"ptMessage\", "
                              "cvtFmtInit) is Err!!"},
                             false));
}

TEST_F(Start, ThatEndsAtACapacityLeavesAWholeTrail) {
  tree.file("All/root.xml",
            "<AllInfo><AllInfo><Message __ID='ptMessage' gnMaxLoop='2000000000'>"
            "<PathList __ID='ptMsgList' psPath='Msg'/></Message></AllInfo></AllInfo>");
  define("Order", {test::xml::field("A")});
  EXPECT_EQ(cvtInit(tree.arg()), -1);
  EXPECT_EQ(test::logTexts(),
            rootTrail({"CvtFmtArgs gnMaxLoop[2000000000] is more than [134217727]: write a smaller number",
                       "cvt Message Get Args Err!!",
                       "void * ptMessage = sttParseXmlStruct(ptXmlNode, \"Message\", \"ptMessage\", "
                       "cvtFmtInit) is Err!!"},
                      false));
  EXPECT_EQ(cvtGetMsg(cs("Order")), nullptr);  // no directory was read
}

}  // namespace

// The definition model: its bound records, and how a definition file becomes a Msg.
#include <gtest/gtest.h>

#include <stdexcept>

#include "allocator.h"
#include "definition_xml.h"
#include "heap_use.h"
#include "log_capture.h"

using namespace test;
using namespace test::model;
using Names = std::vector<std::string>;

namespace {

class DefinitionRecords : public ::testing::Test {
 protected:
  Definitions m_definitions;  // ends the library
};

class DefinitionFile : public ::testing::Test {
 protected:
  void SetUp() override { Definitions::format("flat"); }

  // The trail of a section whose file msg/NAME.xml failed, behind that file's own lines.
  Names failedSection(Names trail, const std::string &sName) const {
    const std::string sFile = m_definitions.path("msg/" + sName + ".xml");
    trail.insert(trail.end(), {"File[" + sFile + "] Parse Err!!", "Parse File[" + sFile + "] Err!!",
                               "Init[" + sName + ".xml] err !!", "Message Parse Dir[msg] err!!",
                               "cvt Message Parse Err!!"});
    return trail;
  }

  Definitions m_definitions;
};

FormatAttr *parseFormatAttr(void *ptXmlNode) {
  return sttParseXmlFormatAttr(ptXmlNode, cs("FormatAttr"));
}

}  // namespace

// --- Records
// -------------------------------------------------------------------------------------------------

TEST_F(DefinitionRecords, AValueReadsItsBytesAndLength) {
  const Value *const pt = sttParseXmlValue(Element("<Value psValue='abc' nLen='2'/>").get(), cs("Value"));
  EXPECT_STREQ(pt->psValue, "abc");
  EXPECT_EQ(pt->nLen, 2);
}

TEST_F(DefinitionRecords, AValueThatIsLongerThanItsTextEndsWithZerosAndNotWithWhatLiesBehind) {
  const Value *const pt = sttParseXmlValue(Element("<Value psValue='abc' nLen='4000'/>").get(), cs("Value"));
  ASSERT_EQ(pt->nLen, 4000);
  EXPECT_EQ(std::string(pt->psValue, 4000), "abc" + std::string(3997, '\0'));
  EXPECT_EQ(test::logTexts(1),
            std::vector<std::string>{"Value psValue[abc] has [3] bytes, not [4000]: write nLen=\"3\""});
  clearLog();
}

TEST_F(DefinitionRecords, AValueOfAHugeLengthTakesTheMachinesMemoryAsItIsUsed) {
  if (test::isWatched()) GTEST_SKIP() << "valgrind's allocator writes what it clears";
  constexpr long kLength = 600'000'000;
  const long before = test::resident();
  const Value *const pt =
      sttParseXmlValue(Element("<Value psValue='abc' nLen='600000000'/>").get(), cs("Value"));
  EXPECT_LT(test::resident() - before, kLength / 2);
  EXPECT_EQ(pt->nLen, kLength);
  EXPECT_EQ(pt->psValue[kLength - 1], 0);
  clearLog();
}

TEST_F(DefinitionRecords, AnAbsentAttributeReadsAsNullOrZero) {
  const Value *const pt = sttParseXmlValue(Element("<Value/>").get(), cs("Value"));
  EXPECT_EQ(pt->psValue, nullptr);
  EXPECT_EQ(pt->nLen, 0);
}

TEST_F(DefinitionRecords, StringsOfARecordAreInterned) {
  const FormatAttr *const pt = parseFormatAttr(Element("<FormatAttr psFormatName='wide'/>").get());
  EXPECT_EQ(pt->psFormatName, cvtStrDup(cs("wide")));
}

TEST_F(DefinitionRecords, FormatAttributesHoldAnyRegisteredRecord) {
  sttAddFuncVoid(sttParseVoidcvt_message, sttGenVoidcvt_message);
  const FormatAttr *const pt =
      parseFormatAttr(Element("<FormatAttr><Value __ID='pInfo' psValue='v'/></FormatAttr>").get());
  EXPECT_STREQ(static_cast<Value *>(pt->pInfo)->psValue, "v");
}

TEST_F(DefinitionRecords, ANewNodeHasNoNumber) {
  FormatAttr *const ptForm = sttNewFormatAttr(nullptr, nullptr);
  StructAttr *const ptStruct = sttNewStructAttr(0, nullptr, nullptr, nullptr, nullptr, nullptr);
  const Message *const pt = sttNewMessage(cs("A"), 3, ptForm, ptStruct);
  EXPECT_EQ(pt->psNodeName, cvtStrDup(cs("A")));
  EXPECT_EQ(pt->nType, 3);
  EXPECT_EQ(pt->nIndex, -1);
  EXPECT_EQ(pt->ptFormAttr, ptForm);
  EXPECT_EQ(pt->ptStructAttr, ptStruct);
}

TEST_F(DefinitionRecords, ANewDefinitionHasNoCountsFunctionsOrIndex) {
  int nInfo = 0;
  int nId = 0;
  Message *const ptHead = sttNewMessage(cs("A"), 0, nullptr, nullptr);
  const Msg *const pt = sttNewMsg(cs("Order"), cs("an order"), cs("x"), ptHead, &nInfo, &nId);
  EXPECT_EQ(pt->psMsgName, cvtStrDup(cs("Order")));
  EXPECT_EQ(pt->psMsgDesc, cvtStrDup(cs("an order")));
  EXPECT_EQ(pt->psType, cvtStrDup(cs("x")));
  EXPECT_EQ(pt->nFieldNum, -1);
  EXPECT_EQ(pt->nValueNum, -1);
  EXPECT_EQ(pt->fGen, nullptr);
  EXPECT_EQ(pt->fParse, nullptr);
  EXPECT_EQ(pt->fGetValue, nullptr);
  EXPECT_EQ(pt->fSetValue, nullptr);
  EXPECT_EQ(pt->pptMessageIdx, nullptr);
  EXPECT_EQ(pt->ptHead, ptHead);
  EXPECT_EQ(pt->pInfo, &nInfo);
  EXPECT_EQ(pt->pIdInfo, &nId);
}

TEST_F(DefinitionRecords, ANullRecordIsNotMade) {
  EXPECT_EQ(sttMakeMessage(nullptr, cs("A"), 0, nullptr, nullptr), nullptr);
  EXPECT_EQ(sttMakeMsg(nullptr, cs("A"), nullptr, nullptr, nullptr, nullptr, nullptr), nullptr);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(DefinitionRecords, ANullElementGivesNoRecordSilently) {
  EXPECT_EQ(sttParseXmlMsg(nullptr, cs("Msg")), nullptr);
  EXPECT_EQ(sttParseXmlStructAttr(nullptr, cs("StructAttr")), nullptr);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(DefinitionRecords, AStructAttrReadsItsFourSubtrees) {
  NodeXml node = group("G", {field("Child")});
  node.other = {field("Other")};
  node.loopNodes = {field("Loop")};
  node.sStruct = "nType=\"9\"";
  const Element msg(msgXml("M", {node, field("Next")}));
  const StructAttr *const pt = sttParseXmlMsg(msg.get(), cs("Msg"))->ptHead->ptStructAttr;
  EXPECT_EQ(pt->nType, 9);
  EXPECT_EQ(pt->pInfo, nullptr);
  EXPECT_STREQ(pt->ptChildNode->psNodeName, "Child");
  EXPECT_STREQ(pt->ptOtherNode->psNodeName, "Other");
  EXPECT_STREQ(pt->ptLoopNode->psNodeName, "Loop");
  EXPECT_STREQ(pt->ptNextNode->psNodeName, "Next");
  EXPECT_EQ(pt->ptNextNode->ptStructAttr->ptNextNode, nullptr);
}

TEST_F(DefinitionRecords, ACommentBetweenSiblingsEndsTheList) {
  std::string s = msgXml("M", {field("A"), field("B")});
  s.insert(s.rfind("<Message "), "<!-- B -->");
  const Msg *const pt = sttParseXmlMsg(Element(s).get(), cs("Msg"));
  EXPECT_EQ(pt->ptHead->ptStructAttr->ptNextNode, nullptr);
}

TEST_F(DefinitionRecords, TheDispatcherKnowsExactlyFiveTypes) {
  const Element element("<x psValue='v'/>");
  for (const char *ps : {"Value", "FormatAttr", "StructAttr", "Message", "Msg"}) {
    EXPECT_NE(sttParseVoidcvt_message(element.get(), cs(ps)), nullptr) << ps;
  }
  for (const char *ps : {"value", "VALUE", "Msg ", "Messag", "Messages", "LoopType", "PathList", ""}) {
    EXPECT_EQ(sttParseVoidcvt_message(element.get(), cs(ps)), nullptr) << ps;
    EXPECT_EQ(sttGenVoidcvt_message(sttNewValue(nullptr, 0), element.get(), cs("f"), cs(ps)), nullptr) << ps;
  }
  EXPECT_TRUE(logLines().empty());
}

TEST_F(DefinitionRecords, TheDispatcherWritesARecordOfItsTypes) {
  const Element element("<Value/>");
  EXPECT_EQ(sttGenVoidcvt_message(sttNewValue(cs("v"), 4), element.get(), cs("f"), cs("Value")),
            element.get());
  const Value *const pt = sttParseXmlValue(element.get(), cs("Value"));
  EXPECT_STREQ(pt->psValue, "v");
  EXPECT_EQ(pt->nLen, 4);
}

TEST_F(DefinitionRecords, ADefinitionThatIsWrittenReadsBackTheSame) {
  NodeXml node = group("G", {field("G1"), field("G2")});
  node.other = {field("Other")};
  node.loopNodes = {field("Loop")};
  const Element msg(msgXml("Order", {field("A"), node, field("B")}));
  const Element written("<Msg/>");
  ASSERT_EQ(sttGenXmlMsg(sttParseXmlMsg(msg.get(), cs("Msg")), written.get(), cs("Msg")), written.get());
  Msg *const ptBack = sttParseXmlMsg(written.get(), cs("Msg"));
  EXPECT_STREQ(ptBack->psMsgName, "Order");
  ASSERT_EQ(cvtGenMessageInfo(ptBack), 0);
  EXPECT_EQ(names(ptBack->pptMessageIdx), (Names{"A", "G", "G1", "G2", "Other", "B"}));
  EXPECT_STREQ(cvtIdxNode(ptBack->pptMessageIdx, 1)->ptStructAttr->ptLoopNode->psNodeName, "Loop");
}

TEST_F(DefinitionRecords, WhatTheLibraryWorksOutIsNotWritten) {
  const Element element("<Message/>");
  Message *const pt = sttNewMessage(cs("A"), 0, nullptr, nullptr);
  pt->nIndex = 5;
  sttGenXmlMessage(pt, element.get(), cs("Message"));
  EXPECT_EQ(xmlGetNodeAttr(element.get(), cs("nIndex")), nullptr);
  EXPECT_EQ(xmlGetNodeAttr(element.get(), cs("nType")), nullptr);
}

TEST_F(DefinitionRecords, AnIndexHasAtMostAQuarterOfAMillionNodes) {
  const int nMaxValueNum = gnMaxValueNum;
  constexpr size_t kMost = 262144;
  for (const size_t nNodes : {kMost, kMost + 1}) {
    std::vector<Message> nodes(nNodes);
    std::vector<StructAttr> attributes(nNodes);
    for (size_t i = 0; i < nNodes; ++i) {
      nodes[i].psNodeName = cs("N");
      nodes[i].nIndex = -1;
      nodes[i].ptStructAttr = &attributes[i];
      if (i + 1 < nNodes) attributes[i].ptNextNode = &nodes[i + 1];
    }
    int nNum = -1;
    Message **const pptIdx = cvtCreateMessageIdx(nodes.data(), &nNum);
    EXPECT_EQ(pptIdx != nullptr, nNodes == kMost);
    EXPECT_EQ(nNum, nNodes == kMost ? static_cast<int>(kMost) : -1);
  }
  EXPECT_EQ(logTexts(),
            Names{"Message[N] and what follows has more than [262144] nodes: refer to fewer definitions"});
  gnMaxValueNum = nMaxValueNum;
}

// --- From a file to a Msg
// ------------------------------------------------------------------------------------

TEST_F(DefinitionFile, IsReadIndexedAndHandedToItsFormat) {
  static Msg *s_ptSeen = nullptr;
  static Names s_indexed;
  Definitions::format("flat", [](Msg *ptMsg) {
    s_ptSeen = ptMsg;
    s_indexed = names(ptMsg->pptMessageIdx);
    ptMsg->nValueNum = 2;
    ptMsg->fParse = [](void *, ValueListInfo *, Msg *, char *, int *, int) { return 0; };
    return 0;
  });
  m_definitions.add("Order", {field("A"), field("B")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(s_indexed, (Names{"A", "B"}));
  ASSERT_EQ(cvtGetMsg(cs("Order")), s_ptSeen);
  EXPECT_EQ(s_ptSeen->nFieldNum, 2);
  EXPECT_EQ(s_ptSeen->nValueNum, 2);
  EXPECT_NE(s_ptSeen->fParse, nullptr);
  EXPECT_TRUE(logTexts().empty());
}

TEST_F(DefinitionFile, CarriesDescriptionTypeAndInformation) {
  m_definitions.file("msg/Order.xml",
                     "<flat><Msg psMsgName='Order' psMsgDesc='an order' psType='x'>"
                     "<Message __ID='ptHead' psNodeName='A'><FormatAttr __ID='ptFormAttr' "
                     "psFormatName='f'/><StructAttr __ID='ptStructAttr'/></Message>"
                     "<Value __ID='pInfo' psValue='info'/><Value __ID='pIdInfo' psValue='id'/></Msg></flat>");
  ASSERT_NE(m_definitions.load(), nullptr);
  const Msg *const pt = cvtGetMsg(cs("Order"));
  EXPECT_STREQ(pt->psMsgDesc, "an order");
  EXPECT_STREQ(pt->psType, "x");
  EXPECT_STREQ(pt->ptHead->ptFormAttr->psFormatName, "f");
  EXPECT_STREQ(static_cast<Value *>(pt->pInfo)->psValue, "info");
  EXPECT_STREQ(static_cast<Value *>(pt->pIdInfo)->psValue, "id");
}

TEST_F(DefinitionFile, WithoutARecordIsRefused) {
  EXPECT_EQ(cvtSttInitMessage(cs("a.xml"), cs("flat"), nullptr), nullptr);
  EXPECT_EQ(logTexts(), (Names{"Init Xml struct : Load file[a.xml] err!!"}));
}

TEST_F(DefinitionFile, ThatIsEmptyFailsItsSection) {
  m_definitions.file("msg/Order.xml", "<flat/>");
  EXPECT_EQ(m_definitions.load(), nullptr);
  EXPECT_EQ(nGRet, -1);
  const std::string sFile = m_definitions.path("msg/Order.xml");
  EXPECT_EQ(logTexts(), failedSection({"Init Xml struct : Load file[" + sFile + "] err!!"}, "Order"));
}

TEST_F(DefinitionFile, WithoutAHeadFailsItsSection) {
  m_definitions.add("Order", {});
  EXPECT_EQ(m_definitions.load(), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(logTexts(), failedSection({"[ptMessage] is NULL", "Create Message[Order] Idx err!!",
                                       "Init Xml struct[Order] : cvtGenMessageInfo err!!"},
                                      "Order"));
  EXPECT_EQ(cvtGetMsg(cs("Order")), nullptr);
}

TEST_F(DefinitionFile, RefusedByItsFormatFailsItsSection) {
  Definitions::format("flat", [](Msg *) { return 5; });
  m_definitions.add("Order", {field("A")});
  EXPECT_EQ(m_definitions.load(), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(logTexts(), failedSection({"Format [flat] Init Err!!"}, "Order"));
}

TEST_F(DefinitionFile, WhoseFormatThrowsFailsItsSection) {
  Definitions::format("flat", [](Msg *) -> int { throw std::runtime_error("out of paper"); });
  m_definitions.add("Order", {field("A")});
  EXPECT_EQ(m_definitions.load(), nullptr);
  EXPECT_EQ(logTexts(),
            failedSection({"Format[flat] let an exception out: out of paper", "Format [flat] Init Err!!"},
                          "Order"));
}

TEST_F(DefinitionFile, WithAnUnknownRecordInAVoidFieldIsStillRead) {
  m_definitions.file("msg/Order.xml",
                     "<flat><Msg psMsgName='Order'><Message __ID='ptHead' psNodeName='A'>"
                     "<StructAttr __ID='ptStructAttr'/></Message><Strange __ID='pInfo'/></Msg></flat>");
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(logTexts(), (Names{"Type[Strange] Not Define"}));
  EXPECT_EQ(cvtGetMsg(cs("Order"))->pInfo, nullptr);
}

TEST_F(DefinitionFile, OfACountedNodeWithAnotherRecordIsRefusedWhereItsCountIsResolved) {
  Definitions::format("flat", [](Msg *ptMsg) { return cvtLoopSetLoopNumIndex(ptMsg->pptMessageIdx); });
  m_definitions.file("msg/Order.xml",
                     "<flat><Msg psMsgName='Order'><Message __ID='ptHead' psNodeName='C'>"
                     "<StructAttr __ID='ptStructAttr' nType='5'><FormatAttr __ID='pInfo'/></StructAttr>"
                     "</Message></Msg></flat>");
  EXPECT_EQ(m_definitions.load(), nullptr);
  EXPECT_EQ(logTexts(), failedSection({"File[" + m_definitions.path("msg/Order.xml") +
                                           "] Line[1] Element[FormatAttr]: it is not used: expected "
                                           "<LoopType> as pInfo of <StructAttr>",
                                       "[ptLoopType = (LoopType *)pptIdx[i]->ptStructAttr->pInfo] is NULL",
                                       "Format [flat] Init Err!!"},
                                      "Order"));
}

TEST_F(DefinitionFile, LogsUnderTheLibrarysModule) {
  m_definitions.add("Order", {});
  m_definitions.load();
  ASSERT_FALSE(logLines().empty());
  for (const LogLine &line : logLines()) EXPECT_EQ(line.sModule, "$cvt2") << line.sText;
}

TEST_F(DefinitionFile, IsReadDirectlyWithoutBeingRegistered) {
  const Element msg(msgXml("Order", {field("A")}));
  const auto *const ptMsg = static_cast<Msg *>(cvtSttInitMessage(cs("x.xml"), cs("flat"), msg.get()));
  ASSERT_NE(ptMsg, nullptr);
  EXPECT_EQ(ptMsg->nFieldNum, 1);
  EXPECT_EQ(cvtGetMsg(cs("Order")), nullptr);
}

TEST_F(DefinitionFile, OfAFormatWithoutInitialiserIsAccepted) {
  static int s_nCalls = 0;
  Definitions::format("flat", [](Msg *) { return ++s_nCalls; });
  const Element msg(msgXml("Order", {field("A")}));
  EXPECT_NE(cvtSttInitMessage(cs("x.xml"), cs("Flat"), msg.get()), nullptr);
  EXPECT_NE(cvtSttInitMessage(cs("x.xml"), cs("flat2"), msg.get()), nullptr);
  EXPECT_EQ(s_nCalls, 0);
  EXPECT_TRUE(logTexts().empty());
}

// Definitions: how far a loop body reaches, what a reference's failure leaves as a trail, and what a
// definition that cannot be numbered keeps.
#include <gtest/gtest.h>

#include <cstring>

#include "definition_xml.h"
#include "log_capture.h"
#include "pool_use.h"
#include "trail.h"

using namespace test;
using namespace test::model;
using Names = std::vector<std::string>;
using Numbers = std::vector<int>;

namespace {

const char *const kNoLoopType = "[ptLoopType = (LoopType *)ptMessage->ptStructAttr->pInfo] is NULL";

class Definition : public ::testing::Test {
 protected:
  void SetUp() override { Definitions::format("flat"); }

  // A definition that is read but not numbered.
  Msg *read(const std::vector<NodeXml> &nodes) {
    const Element msg(msgXml("Order", nodes));
    sttAddFuncVoid(sttParseVoidcvt_struct_loop, sttGenVoidcvt_struct_loop);
    Msg *const ptMsg = sttParseXmlMsg(msg.get(), cs("Msg"));
    clearLog();
    return ptMsg;
  }

  // A loop that lacks its LoopType cannot be numbered.
  static NodeXml bareLoop(const std::string &sName) {
    NodeXml node = loop(sName, "", {field("Body")});
    node.sInfo.clear();
    return node;
  }

  // The index of a definition that can be numbered.
  static Message **indexed(Msg *ptMsg) {
    EXPECT_EQ(cvtGenMessageInfo(ptMsg), 0);
    return ptMsg->pptMessageIdx;
  }

  static Message **indexOf(const char *psMsg) { return cvtGetMsg(cs(psMsg))->pptMessageIdx; }

  // The lines behind those of the failing file msg/NAME.xml.
  Names sectionTrail(Names inner, const std::string &sName) const {
    const std::string sFile = m_definitions.path("msg/" + sName + ".xml");
    inner.insert(inner.end(), {"File[" + sFile + "] Parse Err!!", "Parse File[" + sFile + "] Err!!",
                               "Init[" + sName + ".xml] err !!", "Message Parse Dir[msg] err!!",
                               "cvt Message Parse Err!!"});
    return inner;
  }

  Definitions m_definitions;
};

using Numbering = Definition;
using Naming = Definition;
using Referring = Definition;
using FailedNumbering = Definition;
using FailedReference = Definition;

// --- Numbering -------------------------------------------------------------------------------------------

TEST_F(Numbering, OfAFileIsThatOfItsTree) {
  m_definitions.add("Order", {field("A"), group("B", {field("B1"), field("B2")}),
                              loop("C", "", {field("C1"), field("C2")}), field("D")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(names(indexOf("Order")), (Names{"A", "B", "B1", "B2", "C", "C1", "C2", "D"}));
  EXPECT_EQ(numbers(indexOf("Order")), (Numbers{0, 0, 2, 3, 4, 0, 1, 7}));
  EXPECT_EQ(cvtGetMsg(cs("Order"))->nFieldNum, 8);
  EXPECT_EQ(cvtIdxNode(indexOf("Order"), 8), nullptr);
  EXPECT_EQ(gnMaxValueNum, 8);
}

TEST_F(Numbering, ALoopsOtherSubtreeIsNoPartOfItsBody) {
  NodeXml node = loop("L", "", {field("X")});
  node.other = {field("O")};
  Msg *const ptMsg = read({node, field("Behind")});
  ASSERT_EQ(cvtGenMessageInfo(ptMsg), 0);
  EXPECT_EQ(names(ptMsg->pptMessageIdx), (Names{"L", "X", "O", "Behind"}));
  EXPECT_EQ(names(cvtLoopGetIdx(ptMsg->ptHead)), (Names{"X"}));
  EXPECT_EQ(numbers(ptMsg->pptMessageIdx), (Numbers{0, 0, 2, 3}));
}

TEST_F(Numbering, AGroupInALoopBodyKeepsItsNumberOfTheBody) {
  Msg *const ptMsg = read({field("A"), loop("L", "", {field("X"), group("G", {field("Y")})})});
  ASSERT_EQ(cvtGenMessageInfo(ptMsg), 0);
  EXPECT_EQ(names(cvtLoopGetIdx(nodeNamed(ptMsg->pptMessageIdx, "L"))), (Names{"X", "G", "Y"}));
  EXPECT_EQ(numbers(ptMsg->pptMessageIdx), (Numbers{0, 1, 0, 0, 2}));
}

TEST_F(Numbering, AGroupOverALoopIsNumberedZero) {
  Msg *const ptMsg = read({field("A"), group("G", {loop("L", "", {field("X")})})});
  ASSERT_EQ(cvtGenMessageInfo(ptMsg), 0);
  EXPECT_EQ(numbers(ptMsg->pptMessageIdx), (Numbers{0, 0, 2, 0}));
}

TEST_F(Numbering, OfPartOfATreeBeginsAtItsNodeAndRaisesTheCapacity) {
  Msg *const ptMsg = read({field("A"), field("B"), field("C")});
  int nNum = 0;
  Message **const pptIdx = cvtCreateMessageIdx(ptMsg->ptHead->ptStructAttr->ptNextNode, &nNum);
  EXPECT_EQ(names(pptIdx), (Names{"B", "C"}));
  EXPECT_EQ(numbers(pptIdx), (Numbers{0, 1}));
  EXPECT_EQ(nNum, 2);
  EXPECT_EQ(gnMaxValueNum, 2);
  EXPECT_EQ(ptMsg->nFieldNum, -1);
}

TEST_F(Numbering, AnyNumberButMinusOneIsKept) {
  Msg *const ptMsg = read({field("A"), group("G", {field("Child")})});
  ptMsg->ptHead->nIndex = -2;
  nodeNamed(indexed(ptMsg), "Child")->nIndex = -3;
  nodeNamed(indexed(ptMsg), "G")->nIndex = -1;
  EXPECT_EQ(numbers(indexed(ptMsg)), (Numbers{-2, 2, -3}));
}

TEST_F(Numbering, TakesAPointerForEachNodeOfAnIndexAndOneMore) {
  NEEDS_PACKED_POOL();
  Msg *const ptMsg = read({field("A"), loop("L", "", {field("X"), field("Y")}), loop("M", "", {})});
  const int nBefore = handedOut();
  ASSERT_EQ(cvtGenMessageInfo(ptMsg), 0);
  EXPECT_EQ(handedOut() - nBefore, static_cast<int>(sizeof(Message *)) * ((5 + 1) + (2 + 1) + (1 + 1)));
}

// --- Names -----------------------------------------------------------------------------------------------

TEST_F(Naming, OfANodeIsThatWhichItHasNow) {
  Message **const pptIdx = indexed(read({field("A"), field("B"), loop("L", "", {field("X")})}));
  Message **const pptBody = cvtLoopGetIdx(nodeNamed(pptIdx, "L"));
  cvtIdxNode(pptIdx, 1)->psNodeName = cs("Fresh");
  cvtIdxNode(pptBody, 0)->psNodeName = cs("A");
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("fresh")), 1);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("B")), -1);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("A")), 0);
  EXPECT_EQ(cvtGetNodeIdx(pptBody, cs("a")), 0);
  EXPECT_EQ(cvtGetNodeIdx(pptBody, cs("X")), -1);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(Naming, OfAFieldThatLostItsNameGoesToTheNextOfThatName) {
  Message **const pptIdx = indexed(read({field("A"), field("B"), field("b")}));
  cvtIdxNode(pptIdx, 1)->psNodeName = nullptr;
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("B")), 2);
}

TEST_F(Naming, FollowsTheEntriesOfTheIndex) {
  Message **const pptIdx = indexed(read({field("A"), field("B"), field("C")}));
  Message *const ptLast = cvtIdxNode(pptIdx, 2);
  std::memcpy(static_cast<void *>(pptIdx), &ptLast, sizeof ptLast);
  std::memset(static_cast<void *>(pptIdx + 2), 0, sizeof ptLast);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("C")), 0);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("A")), -1);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("B")), 1);
}

TEST_F(Naming, OfAnEarlierNodeComesBeforeThatOfOneThatHadItFirst) {
  Message **const pptIdx = indexed(read({field("A"), field("B"), field("C")}));
  cvtIdxNode(pptIdx, 0)->psNodeName = cs("b");
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("B")), 0);
  Message *const ptLast = cvtIdxNode(pptIdx, 2);
  std::memcpy(static_cast<void *>(pptIdx), &ptLast, sizeof ptLast);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("C")), 0);
}

TEST_F(Naming, EndsWithTheIndex) {
  Message **const pptIdx = indexed(read({field("A"), field("B"), field("C")}));
  std::memset(static_cast<void *>(pptIdx + 1), 0, sizeof *pptIdx);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("A")), 0);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("C")), -1);
}

TEST_F(Naming, ByTheFormatsInitialiserComesBeforeALaterNodeOfThatName) {
  Definitions::format("flat", [](Msg *ptMsg) {
    Message **const pptIdx = ptMsg->pptMessageIdx;
    EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("Count")), 1);
    cvtIdxNode(pptIdx, 0)->psNodeName = cs("count");
    cvtIdxNode(cvtLoopGetIdx(nodeNamed(pptIdx, "L")), 0)->psNodeName = cs("Y");
    return cvtLoopSetLoopNumIndex(pptIdx);
  });
  m_definitions.add("Order", {field("A"), field("Count"), loop("L", "Count", {field("X"), field("Y")})});
  ASSERT_NE(m_definitions.load(), nullptr);
  const Message *const ptLoop = nodeNamed(indexOf("Order"), "L");
  EXPECT_EQ(static_cast<LoopType *>(ptLoop->ptStructAttr->pInfo)->nLoopNumIndex, 0);
  EXPECT_EQ(cvtGetNodeIdx(indexOf("Order"), cs("COUNT")), 0);
  EXPECT_EQ(cvtGetNodeIdx(cvtLoopGetIdx(nodeNamed(indexOf("Order"), "L")), cs("y")), 0);
}

TEST_F(Naming, OfALoadedDefinitionFollowsItsNodes) {
  m_definitions.add("Order", {field("A"), field("B"), field("b"), field("C")});
  ASSERT_NE(m_definitions.load(), nullptr);
  Message **const pptIdx = indexOf("Order");
  cvtIdxNode(pptIdx, 1)->psNodeName = cs("Fresh");
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("B")), 2);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("fresh")), 1);
  std::memset(static_cast<void *>(pptIdx + 3), 0, sizeof *pptIdx);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("C")), -1);
}

TEST_F(Naming, TakesADefinitionAsItsFormatLeavesIt) {
  Definitions::format("flat", [](Msg *ptMsg) {
    Message **const pptIdx = ptMsg->pptMessageIdx;
    nodeNamed(pptIdx, "A")->ptStructAttr = nullptr;
    static_cast<LoopType *>(nodeNamed(pptIdx, "M")->ptStructAttr->pInfo)->pptMessageIdx = nullptr;
    nodeNamed(pptIdx, "L")->ptStructAttr->pInfo = nullptr;
    nodeNamed(pptIdx, "B")->psNodeName = nullptr;
    if (std::string(ptMsg->psMsgName) == "Bare") ptMsg->pptMessageIdx = nullptr;
    return 0;
  });
  for (const char *psMsg : {"Order", "Bare"}) {
    m_definitions.add(psMsg, {field("A"), field("B"), loop("L", "", {field("X")}),
                              loop("M", "", {field("Y")}), field("C")});
  }
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(cvtGetNodeIdx(indexOf("Order"), cs("B")), -1);
  EXPECT_EQ(cvtGetNodeIdx(indexOf("Order"), cs("C")), 6);
  EXPECT_EQ(indexOf("Bare"), nullptr);
}

TEST_F(Naming, ByTheFormatsInitialiserIsKnownToItsCountFields) {
  Definitions::format("flat", [](Msg *ptMsg) {
    cvtIdxNode(ptMsg->pptMessageIdx, 0)->psNodeName = cs("Count");
    return cvtLoopSetLoopNumIndex(ptMsg->pptMessageIdx);
  });
  m_definitions.add("Order", {field("N"), loop("L", "Count", {field("X")})});
  EXPECT_NE(m_definitions.load(), nullptr);
  EXPECT_TRUE(logTexts().empty());
}

// --- References ------------------------------------------------------------------------------------------

TEST_F(Referring, ReadsFromTheBasePathOfTheRegistryWhereThereIsOne) {
  m_definitions.file("here/msg/Head.xml", definition("Head", {field("Here")}));
  m_definitions.file("msg/Head.xml", definition("Head", {field("There")}));
  std::string sBase = m_definitions.path("here");
  gptFmtGlobalInfo->psBasePath = sBase.data();
  gptFmtGlobalInfo->psCurrentPath = cs("msg");
  const Message *const pt = cvtNewMessageByType(cs("Head"), -1, nullptr, nullptr);
  ASSERT_NE(pt, nullptr);
  EXPECT_STREQ(pt->psNodeName, "Here");
}

// --- Failures of numbering -------------------------------------------------------------------------------

TEST_F(FailedNumbering, LeavesTheCountTheCapacityAndTheNumbersGivenSoFar) {
  Msg *const ptMsg = read({field("A"), bareLoop("L"), field("B")});
  EXPECT_EQ(cvtGenMessageInfo(ptMsg), -1);
  EXPECT_EQ(ptMsg->pptMessageIdx, nullptr);
  EXPECT_EQ(ptMsg->nFieldNum, 4);
  EXPECT_EQ(gnMaxValueNum, 4);
  Message *const ptLoop = ptMsg->ptHead->ptStructAttr->ptNextNode;
  EXPECT_EQ(ptMsg->ptHead->nIndex, 0);
  EXPECT_EQ(ptLoop->nIndex, 1);
  EXPECT_EQ(ptLoop->ptStructAttr->ptChildNode->nIndex, -1);
  EXPECT_EQ(ptLoop->ptStructAttr->ptNextNode->nIndex, -1);
}

TEST_F(FailedNumbering, TakesTheIndexThatWasThereAway) {
  Msg *const ptMsg = read({field("A"), loop("L", "", {field("X")})});
  ASSERT_EQ(cvtGenMessageInfo(ptMsg), 0);
  ptMsg->ptHead->ptStructAttr->ptNextNode->ptStructAttr->pInfo = nullptr;
  EXPECT_EQ(cvtGenMessageInfo(ptMsg), -1);
  EXPECT_EQ(ptMsg->pptMessageIdx, nullptr);
  EXPECT_EQ(logTexts(), (Names{kNoLoopType, "Create Message index err: Message[L] create Loop index err!!",
                               "Create Message[Order] Idx err!!"}));
}

TEST_F(FailedNumbering, StillTellsTheNumberOfNodes) {
  Msg *const ptMsg = read({field("A"), bareLoop("L")});
  int nNum = -1;
  EXPECT_EQ(cvtCreateMessageIdx(ptMsg->ptHead, &nNum), nullptr);
  EXPECT_EQ(nNum, 3);
}

TEST_F(FailedNumbering, ComesBeforeTheFormatsInitialiser) {
  static int s_nCalls = 0;
  Definitions::format("flat", [](Msg *) { return ++s_nCalls; });
  m_definitions.add("Order", {field("A"), bareLoop("L")});
  EXPECT_EQ(m_definitions.load(), nullptr);
  EXPECT_EQ(s_nCalls, 0);
  EXPECT_EQ(
      logTexts(),
      sectionTrail({kNoLoopType, "Create Message index err: Message[L] create Loop index err!!",
                    "Create Message[Order] Idx err!!", "Init Xml struct[Order] : cvtGenMessageInfo err!!"},
                   "Order"));
}

TEST_F(FailedNumbering, IsToldByEveryFunctionThatItPasses) {
  m_definitions.add("Order", {field("A"), loop("L", "", {bareLoop("K")})});
  EXPECT_EQ(m_definitions.load(), nullptr);
  const std::string sFile = m_definitions.path("msg/Order.xml");
  EXPECT_EQ(trail(),
            (Texts{"cvt_struct_loop.cpp cvtLoopCreateIndex: " + std::string(kNoLoopType),
                   "stt_cvt_message.cpp cvtCreateMessageIdx: Create Message index err: Message[K] create "
                   "Loop index err!!",
                   "cvt_struct_loop.cpp cvtLoopCreateIndex: Message[L] Loop index create err!!",
                   "stt_cvt_message.cpp cvtCreateMessageIdx: Create Message index err: Message[L] create "
                   "Loop index err!!",
                   "stt_cvt_message.cpp cvtGenMessageInfo: Create Message[Order] Idx err!!",
                   "stt_cvt_message.cpp cvtSttInitMessage: Init Xml struct[Order] : cvtGenMessageInfo err!!",
                   "cvt_message.cpp FmtMsgInit: File[" + sFile + "] Parse Err!!",
                   "cvt_init.cpp cvtIniParseFileXml: Parse File[" + sFile + "] Err!!",
                   "cvt_init.cpp locParseDirXmlLimit: Init[Order.xml] err !!",
                   "cvt_message.cpp FmtParseMessage: Message Parse Dir[msg] err!!",
                   "cvt_message.cpp cvtFmtInit: cvt Message Parse Err!!"}));
}

TEST_F(FailedNumbering, OfNothingIsToldByTheFunctionThatWasCalled) {
  int nNum = 0;
  cvtGenMessageInfo(nullptr);
  cvtCreateMessageIdx(nullptr, &nNum);
  cvtGetNodeIdx(nullptr, cs("A"));
  cvtSttInitMessage(cs("a.xml"), cs("flat"), nullptr);
  EXPECT_EQ(trail(),
            (Texts{"stt_cvt_message.cpp cvtGenMessageInfo: [ptMsg] is NULL",
                   "stt_cvt_message.cpp cvtCreateMessageIdx: [ptMessage] is NULL",
                   "stt_cvt_message.cpp cvtGetNodeIdx: [pIdx] is NULL",
                   "stt_cvt_message.cpp cvtSttInitMessage: Init Xml struct : Load file[a.xml] err!!"}));
}

// --- Failures of references ------------------------------------------------------------------------------

constexpr char kHeadFails[] =
    "Message * ptHead = sttParseXmlStruct(ptXmlNode, \"Message\", \"ptHead\", sttParseXmlMessage) is Err!!";

TEST_F(FailedReference, ToAFileThatDefinesAnotherMessage) {
  m_definitions.add("A", {reference("../more/Head")});
  m_definitions.file("more/Head.xml", definition("Other", {field("H")}));
  EXPECT_EQ(m_definitions.load(), nullptr);
  const std::string sFile = m_definitions.path("msg/A.xml");
  EXPECT_EQ(logTexts(), sectionTrail({"Message Get [../more/Head][msg/../more/Head.xml] err!!",
                                      "File[" + sFile + "] Line[2] Element[Message]", kHeadFails,
                                      "Init Xml struct : Load file[" + sFile + "] err!!"},
                                     "A"));
  EXPECT_NE(cvtGetMsg(cs("Other")), nullptr);
  EXPECT_EQ(cvtGetMsg(cs("A")), nullptr);
}

TEST_F(FailedReference, ToADefinitionThatItsFormatRefuses) {
  Definitions::format("picky", [](Msg *) { return 3; });
  m_definitions.add("A", {reference("../more/Bad")});
  m_definitions.file("more/Bad.xml", "<picky>" + msgXml("Bad", {field("B")}) + "</picky>");
  EXPECT_EQ(m_definitions.load(), nullptr);
  const std::string sBad = m_definitions.path("msg/../more/Bad.xml");
  const std::string sFile = m_definitions.path("msg/A.xml");
  EXPECT_EQ(logTexts(), sectionTrail({"Format [picky] Init Err!!", "File[" + sBad + "] Parse Err!!",
                                      "Parse File[" + sBad + "] Err!!",
                                      "Message Parse [../more/Bad] From[msg/../more/Bad.xml] err!!",
                                      "File[" + sFile + "] Line[2] Element[Message]", kHeadFails,
                                      "Init Xml struct : Load file[" + sFile + "] err!!"},
                                     "A"));
}

TEST_F(FailedReference, ToItsOwnDefinition) {
  m_definitions.add("A", {reference("A")});
  EXPECT_EQ(m_definitions.load(), nullptr);
  const std::string sFile = m_definitions.path("msg/A.xml");
  EXPECT_EQ(logTexts(),
            sectionTrail({"File[" + sFile + "] refers to [" + sFile +
                              "], which is being read: take one of these references out",
                          "Parse File[" + sFile + "] Err!!", "Message Parse [A] From[msg/A.xml] err!!",
                          "File[" + sFile + "] Line[2] Element[Message]", kHeadFails,
                          "Init Xml struct : Load file[" + sFile + "] err!!"},
                         "A"));
}

TEST_F(FailedReference, IsToldByTheFunctionThatMakesNodes) {
  const auto refer = [](const char *psName) { cvtNewMessageByType(cs(psName), -1, nullptr, nullptr); };
  m_definitions.file("msg/Named.xml", definition("Other", {field("H")}));
  refer("Named");
  gptFmtGlobalInfo->psCurrentPath = cs("msg");
  refer("Named");
  EXPECT_EQ(trail(),
            (Texts{"stt_cvt_message.cpp cvtNewMessageByType: CurrentPath is NULL!!",
                   "stt_cvt_message.cpp cvtNewMessageByType: Message Get [Named][msg/Named.xml] err!!"}));
  clearLog();
  refer("Gone");
  EXPECT_EQ(trail().back(),
            "stt_cvt_message.cpp cvtNewMessageByType: Message Parse [Gone] From[msg/Gone.xml] err!!");
}

// The file's base name is known, so it is not read; but nothing is known by the name of the reference.
TEST_F(FailedReference, ToAKnownFileByAnotherPath) {
  m_definitions.file("one/Head.xml", definition("Head", {field("H")}));
  m_definitions.file("two/A.xml", definition("A", {reference("../one/Head")}));
  EXPECT_EQ(m_definitions.load({"one", "two"}), nullptr);
  EXPECT_EQ(logTexts().at(0), "Message Get [../one/Head][two/../one/Head.xml] err!!");
  EXPECT_EQ(logTexts(5), (Names{"Enter [one] ... ", "Load File [Head.xml] ok", "Enter [two] ... "}));
}

TEST_F(FailedReference, ToANameThatIsTooLongCutsItsFile) {
  gptFmtGlobalInfo->psCurrentPath = cs("msg");
  const std::string sName(3000, 'x');
  EXPECT_EQ(cvtNewMessageByType(cs(sName.c_str()), -1, nullptr, nullptr), nullptr);
  EXPECT_EQ(logTexts().back(),
            "Message Parse [" + sName + "] From[msg/" + std::string(2047, 'x') + "] err!!");
}

TEST_F(FailedReference, InTheLetterCaseOfAnotherName) {
  m_definitions.file("one/Head.xml", definition("Head", {field("H")}));
  m_definitions.file("two/A.xml", definition("A", {reference("head")}));
  EXPECT_EQ(m_definitions.load({"one", "two"}), nullptr);
  EXPECT_TRUE(logged(1, "Message Parse [head] From[two/head.xml] err!!"));
  EXPECT_NE(cvtGetMsg(cs("Head")), nullptr);
}

TEST_F(FailedReference, OfTheLastOfFourAddsTheLinesOfEveryNodeInFrontOfIt) {
  const Element msg(msgXml("Order", {field("A"), field("B"), field("C"), reference("Gone")}));
  clearLog();
  EXPECT_EQ(sttParseXmlMsg(msg.get(), cs("Msg")), nullptr);
  const std::string sNext =
      "struct Message * ptNextNode = sttParseXmlNext(ptXmlNode, \"Message\", \"ptNextNode\", "
      "sttParseXmlMessage) is Err!!";
  const std::string sStruct =
      "StructAttr * ptStructAttr = sttParseXmlStruct(ptXmlNode, \"StructAttr\", \"ptStructAttr\", "
      "sttParseXmlStructAttr) is Err!!";
  EXPECT_EQ(logTexts(),
            (Names{"CurrentPath is NULL!!", sNext, sStruct, sNext, sStruct, sNext, sStruct, kHeadFails}));
  EXPECT_EQ(nGRet, -1);
}

TEST_F(FailedReference, LaterInAListDropsTheNodesReadBefore) {
  m_definitions.add("A", {field("First"), group("G", {field("G1"), reference("Gone")}), field("Last")});
  EXPECT_EQ(m_definitions.load(), nullptr);
  Names texts = logTexts();
  const std::string sGone = m_definitions.path("msg/Gone.xml");
  const std::string sFile = m_definitions.path("msg/A.xml");
  ASSERT_GT(texts.size(), 1U);
  EXPECT_EQ(texts[1].rfind("File[" + sGone + "] ", 0), 0U) << texts[1];  // the reason in libxml2's words
  texts.erase(texts.begin() + 1);
  const std::string sNext =
      "struct Message * ptNextNode = sttParseXmlNext(ptXmlNode, \"Message\", \"ptNextNode\", "
      "sttParseXmlMessage) is Err!!";
  const std::string sStruct =
      "StructAttr * ptStructAttr = sttParseXmlStruct(ptXmlNode, \"StructAttr\", \"ptStructAttr\", "
      "sttParseXmlStructAttr) is Err!!";
  const std::string sChild =
      "Message * ptChildNode = sttParseXmlStruct(ptXmlNode, \"Message\", \"ptChildNode\", "
      "sttParseXmlMessage) is Err!!";
  EXPECT_EQ(texts,
            sectionTrail({"File[" + sGone + "] Parse err!!", "File[" + sGone + "] Parse Err!!",
                          "Parse File[" + sGone + "] Err!!", "Message Parse [Gone] From[msg/Gone.xml] err!!",
                          "File[" + sFile + "] Line[4] Element[Message]", sNext, sStruct, sChild, sStruct,
                          sNext, sStruct, kHeadFails, "Init Xml struct : Load file[" + sFile + "] err!!"},
                         "A"));
  EXPECT_EQ(cvtGetMsg(cs("A")), nullptr);
}

}  // namespace

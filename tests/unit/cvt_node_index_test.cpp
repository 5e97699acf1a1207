// The node index: visiting order, node numbers, loop bodies, and positions by name.
#include <gtest/gtest.h>

#include "definition_xml.h"
#include "log_capture.h"

using namespace test;
using namespace test::model;
using Names = std::vector<std::string>;
using Numbers = std::vector<int>;

namespace {

// A definition read from XML, as it is before it is indexed.
class NodeIndex : public ::testing::Test {
 protected:
  void SetUp() override { Definitions::format("flat"); }

  Msg *read(const std::vector<NodeXml> &nodes) {
    const Element msg(msgXml("Order", nodes));
    sttAddFuncVoid(sttParseVoidcvt_struct_loop, sttGenVoidcvt_struct_loop);
    Msg *const ptMsg = sttParseXmlMsg(msg.get(), cs("Msg"));
    clearLog();
    return ptMsg;
  }

  Msg *index(const std::vector<NodeXml> &nodes) {
    Msg *const ptMsg = read(nodes);
    EXPECT_EQ(cvtGenMessageInfo(ptMsg), 0);
    return ptMsg;
  }

  Definitions m_definitions;
};

const std::vector<NodeXml> f_example = {field("A"), group("B", {field("B1"), field("B2")}),
                                        loop("C", "", {field("C1"), field("C2")}), field("D")};

}  // namespace

// --- Order and numbers -------------------------------------------------------------------------------------

TEST_F(NodeIndex, GroupsAndLoopBodiesFollowTheirNode) {
  const Msg *const ptMsg = index(f_example);
  EXPECT_EQ(ptMsg->nFieldNum, 8);
  EXPECT_EQ(names(ptMsg->pptMessageIdx), (Names{"A", "B", "B1", "B2", "C", "C1", "C2", "D"}));
}

TEST_F(NodeIndex, AGroupIsNumberedZeroAndALoopBodyCountsFromItsOwnStart) {
  EXPECT_EQ(numbers(index(f_example)->pptMessageIdx), (Numbers{0, 0, 2, 3, 4, 0, 1, 7}));
}

TEST_F(NodeIndex, ALoopBodyHasAnIndexOfItsOwn) {
  Message *const ptLoop = nodeNamed(index(f_example)->pptMessageIdx, "C");
  EXPECT_EQ(names(cvtLoopGetIdx(ptLoop)), (Names{"C1", "C2"}));
  EXPECT_EQ(cvtLoopGetFieldNum(ptLoop), 2);
}

TEST_F(NodeIndex, TheLargestDefinitionRaisesTheCapacityOfValueLists) {
  index(f_example);
  EXPECT_EQ(gnMaxValueNum, 8);
  index({field("A")});
  EXPECT_EQ(gnMaxValueNum, 8);
}

TEST_F(NodeIndex, ATreeOfOneFieldGivesAnIndexOfOneAndItsTerminator) {
  const Msg *const ptMsg = index({field("A")});
  EXPECT_EQ(ptMsg->nFieldNum, 1);
  EXPECT_EQ(cvtIdxNode(ptMsg->pptMessageIdx, 0), ptMsg->ptHead);
  EXPECT_EQ(cvtIdxNode(ptMsg->pptMessageIdx, 1), nullptr);
}

TEST_F(NodeIndex, TheOtherSubtreeComesBetweenTheChildrenAndTheNextSibling) {
  NodeXml g = group("G", {field("Child"), field("Child2")});
  g.other = {field("Other"), field("Other2")};
  const Msg *const ptMsg = index({g, field("Next")});
  EXPECT_EQ(names(ptMsg->pptMessageIdx), (Names{"G", "Child", "Child2", "Other", "Other2", "Next"}));
}

TEST_F(NodeIndex, ANodeWithOnlyAnOtherSubtreeIsNumberedLikeAField) {
  NodeXml g = field("G");
  g.other = {field("Other")};
  EXPECT_EQ(numbers(index({field("A"), g})->pptMessageIdx), (Numbers{0, 1, 2}));
}

TEST_F(NodeIndex, TheLoopNodeOfANodeIsKeptButNotFollowed) {
  NodeXml g = group("G", {field("Child")});
  g.loopNodes = {field("Apart")};
  const Msg *const ptMsg = index({g});
  EXPECT_EQ(names(ptMsg->pptMessageIdx), (Names{"G", "Child"}));
  EXPECT_STREQ(ptMsg->ptHead->ptStructAttr->ptLoopNode->psNodeName, "Apart");
  EXPECT_EQ(ptMsg->ptHead->ptStructAttr->ptLoopNode->nIndex, -1);
}

TEST_F(NodeIndex, AGroupOverANumberedChildIsNumberedOneBehindItsPosition) {
  Msg *const ptMsg = read({field("A"), group("G", {field("Child")})});
  Message *const ptGroup = ptMsg->ptHead->ptStructAttr->ptNextNode;
  ptGroup->ptStructAttr->ptChildNode->nIndex = 7;
  ASSERT_EQ(cvtGenMessageInfo(ptMsg), 0);
  EXPECT_EQ(numbers(ptMsg->pptMessageIdx), (Numbers{0, 2, 7}));
}

TEST_F(NodeIndex, ALoopWithChildrenIsNumberedByItsPosition) {
  EXPECT_EQ(numbers(index({field("A"), field("B"), loop("L", "", {field("X")})})->pptMessageIdx),
            (Numbers{0, 1, 2, 0}));
}

TEST_F(NodeIndex, ANodeKeepsTheNumberItHas) {
  Msg *const ptMsg = read({field("A"), field("B")});
  ptMsg->ptHead->nIndex = 40;
  ASSERT_EQ(cvtGenMessageInfo(ptMsg), 0);
  EXPECT_EQ(numbers(ptMsg->pptMessageIdx), (Numbers{40, 1}));
}

TEST_F(NodeIndex, IndexingAgainGivesANewIndexOfTheSameNodesAndNumbers) {
  Msg *const ptMsg = index(f_example);
  Message **const pptFirst = ptMsg->pptMessageIdx;
  ASSERT_EQ(cvtGenMessageInfo(ptMsg), 0);
  EXPECT_NE(ptMsg->pptMessageIdx, pptFirst);
  EXPECT_EQ(names(ptMsg->pptMessageIdx), names(pptFirst));
  EXPECT_EQ(numbers(ptMsg->pptMessageIdx), (Numbers{0, 0, 2, 3, 4, 0, 1, 7}));
}

TEST_F(NodeIndex, ALoopBodyThatHasGrownIsIndexedAnew) {
  Msg *const ptMsg = index({loop("L", "", {field("X")})});
  Message *const ptLoop = ptMsg->ptHead;
  StructAttr *const ptAttr = sttNewStructAttr(0, nullptr, nullptr, nullptr, nullptr, nullptr);
  ptLoop->ptStructAttr->ptChildNode->ptStructAttr->ptNextNode = sttNewMessage(cs("Y"), 0, nullptr, ptAttr);
  ASSERT_EQ(cvtGenMessageInfo(ptMsg), 0);
  EXPECT_EQ(names(ptMsg->pptMessageIdx), (Names{"L", "X", "Y"}));
  EXPECT_EQ(names(cvtLoopGetIdx(ptLoop)), (Names{"X", "Y"}));
  EXPECT_EQ(cvtLoopGetFieldNum(ptLoop), 2);
}

TEST_F(NodeIndex, NestedLoopsAreIndexedWithinTheBodyAndInTheEnclosingIndex) {
  const Msg *const ptMsg = index({loop("L", "", {field("X"), loop("M", "", {field("Y")}), field("Z")})});
  EXPECT_EQ(names(ptMsg->pptMessageIdx), (Names{"L", "X", "M", "Y", "Z"}));
  Message *const ptOuter = ptMsg->ptHead;
  EXPECT_EQ(names(cvtLoopGetIdx(ptOuter)), (Names{"X", "M", "Y", "Z"}));
  EXPECT_EQ(cvtLoopGetFieldNum(ptOuter), 4);
  Message *const ptInner = nodeNamed(cvtLoopGetIdx(ptOuter), "M");
  EXPECT_EQ(names(cvtLoopGetIdx(ptInner)), (Names{"Y"}));
  EXPECT_EQ(numbers(ptMsg->pptMessageIdx), (Numbers{0, 0, 1, 0, 3}));
}

TEST_F(NodeIndex, ALoopWithoutChildrenIsItsOwnBody) {
  const Msg *const ptMsg = index({field("A"), loop("L", "", {}), field("B")});
  EXPECT_EQ(numbers(ptMsg->pptMessageIdx), (Numbers{0, 1, 2}));
  Message *const ptLoop = nodeNamed(ptMsg->pptMessageIdx, "L");
  EXPECT_EQ(cvtIdxNode(cvtLoopGetIdx(ptLoop), 0), ptLoop);
  EXPECT_EQ(cvtIdxNode(cvtLoopGetIdx(ptLoop), 1), nullptr);
}

// --- Failures
// ------------------------------------------------------------------------------------------------

TEST_F(NodeIndex, ANullMessageIsRefused) {
  EXPECT_EQ(cvtGenMessageInfo(nullptr), -1);
  EXPECT_EQ(logTexts(), (Names{"[ptMsg] is NULL"}));
}

TEST_F(NodeIndex, ADefinitionWithoutAHeadIsRefusedAndKeepsItsFieldCount) {
  Msg *const ptMsg = read({});
  EXPECT_EQ(cvtGenMessageInfo(ptMsg), -1);
  EXPECT_EQ(logTexts(), (Names{"[ptMessage] is NULL", "Create Message[Order] Idx err!!"}));
  EXPECT_EQ(ptMsg->pptMessageIdx, nullptr);
  EXPECT_EQ(ptMsg->nFieldNum, -1);
}

TEST_F(NodeIndex, ANullTreeGivesNoIndexAndLeavesTheCount) {
  int nNum = 77;
  EXPECT_EQ(cvtCreateMessageIdx(nullptr, &nNum), nullptr);
  EXPECT_EQ(logTexts(), (Names{"[ptMessage] is NULL"}));
  EXPECT_EQ(nNum, 77);
}

TEST_F(NodeIndex, ANullCountIsRefused) {
  Msg *const ptMsg = read({field("A")});
  EXPECT_EQ(cvtCreateMessageIdx(ptMsg->ptHead, nullptr), nullptr);
  EXPECT_EQ(logTexts(), (Names{"[pnNum] is NULL"}));
}

TEST_F(NodeIndex, ALoopWithoutALoopTypeIsRefusedByName) {
  NodeXml bare = loop("L", "", {field("X")});
  bare.sInfo.clear();
  Msg *const ptMsg = read({field("A"), bare});
  EXPECT_EQ(cvtGenMessageInfo(ptMsg), -1);
  EXPECT_EQ(logTexts(), (Names{"[ptLoopType = (LoopType *)ptMessage->ptStructAttr->pInfo] is NULL",
                               "Create Message index err: Message[L] create Loop index err!!",
                               "Create Message[Order] Idx err!!"}));
}

TEST_F(NodeIndex, AFailureInALoopBodyNamesEveryLoopAroundIt) {
  NodeXml bare = loop("M", "", {field("Y")});
  bare.sInfo.clear();
  Msg *const ptMsg = read({loop("L", "", {bare})});
  EXPECT_EQ(cvtGenMessageInfo(ptMsg), -1);
  EXPECT_EQ(logTexts(), (Names{"[ptLoopType = (LoopType *)ptMessage->ptStructAttr->pInfo] is NULL",
                               "Create Message index err: Message[M] create Loop index err!!",
                               "Message[L] Loop index create err!!",
                               "Create Message index err: Message[L] create Loop index err!!",
                               "Create Message[Order] Idx err!!"}));
}

TEST_F(NodeIndex, ANodeWithoutAStructAttrIsRefusedByName) {
  NodeXml bare = field("Bare");
  bare.bStruct = false;
  Msg *const ptMsg = read({field("A"), bare});
  EXPECT_EQ(cvtGenMessageInfo(ptMsg), -1);
  EXPECT_EQ(
      logTexts(),
      (Names{"[ptMessage->ptStructAttr] is NULL",
             "Create Message index err: Message[Bare] index[1] has no StructAttr: give it a <StructAttr "
             "__ID=\"ptStructAttr\"/>",
             "Create Message[Order] Idx err!!"}));
}

TEST_F(NodeIndex, ATreeThatDoublesAtEveryLevelIsRefused) {
  Message *ptNode = nullptr;
  for (int i = 0; i < 60; ++i) {
    ptNode =
        sttNewMessage(cs("G"), 0, nullptr, sttNewStructAttr(0, nullptr, ptNode, ptNode, nullptr, nullptr));
  }
  int nNum = 77;
  EXPECT_EQ(cvtCreateMessageIdx(ptNode, &nNum), nullptr);
  EXPECT_EQ(logTexts(), (Names{"Message[G] and what follows has more than [262144] nodes: refer to fewer "
                               "definitions"}));
  EXPECT_EQ(nNum, 77);
  EXPECT_EQ(gnMaxValueNum, 0);
}

TEST_F(NodeIndex, ACountedNodeGetsNoIndexAndNeedsNoLoopTypeHere) {
  NodeXml bare = counted("N", "");
  bare.sInfo.clear();
  const Msg *const ptMsg = index({counted("C", "A"), bare, field("A")});
  EXPECT_EQ(names(ptMsg->pptMessageIdx), (Names{"C", "N", "A"}));
  EXPECT_EQ(cvtLoopGetIdx(ptMsg->ptHead), nullptr);
}

// --- Positions by name
// ---------------------------------------------------------------------------------------

TEST_F(NodeIndex, NamesAreFoundWithoutRegardToCase) {
  Message **const pptIdx = index({field("A"), field("Field")})->pptMessageIdx;
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("FIELD")), 1);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("field")), 1);
}

TEST_F(NodeIndex, OnlyAsciiLettersAreFolded) {
  Message **const pptIdx = index({field("\xc3\x84x"), field("a@"), field("a[")})->pptMessageIdx;
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("\xc3\x84X")), 0);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("\xc3\xa4x")), -1);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("A`")), -1);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("A{")), -1);
}

TEST_F(NodeIndex, AnUnknownNameIsAnsweredSilently) {
  Message **const pptIdx = index(f_example)->pptMessageIdx;
  for (const char *psName : {"E", "", "B11", "B 1", "C."}) EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs(psName)), -1);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(NodeIndex, NullArgumentsOfALookUpAreRefused) {
  Message **const pptIdx = index(f_example)->pptMessageIdx;
  EXPECT_EQ(cvtGetNodeIdx(nullptr, nullptr), -1);
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, nullptr), -1);
  EXPECT_EQ(logTexts(), (Names{"[pIdx] is NULL", "[psName] is NULL"}));
}

TEST_F(NodeIndex, AMemberOfALoopBodyHasAPositionInBothIndexes) {
  Message **const pptIdx = index(f_example)->pptMessageIdx;
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("C2")), 6);
  EXPECT_EQ(cvtGetNodeIdx(cvtLoopGetIdx(nodeNamed(pptIdx, "C")), cs("C2")), 1);
}

TEST_F(NodeIndex, TheFirstOfTwoNodesOfOneNameIsFound) {
  Message **const pptIdx =
      index({group("G", {field("x")}), loop("L", "", {field("X")}), field("X")})->pptMessageIdx;
  EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("X")), 1);
}

TEST_F(NodeIndex, ANodeWithoutANameIsNeverFound) {
  Msg *const ptMsg = read({field("A"), field("B")});
  ptMsg->ptHead->psNodeName = nullptr;
  ASSERT_EQ(cvtGenMessageInfo(ptMsg), 0);
  EXPECT_EQ(cvtGetNodeIdx(ptMsg->pptMessageIdx, cs("B")), 1);
  EXPECT_EQ(cvtGetNodeIdx(ptMsg->pptMessageIdx, cs("")), -1);
}

TEST_F(NodeIndex, AnArrayThatTheCallerMadeIsSearched) {
  const Msg *const ptMsg = index(f_example);
  Message *apt[] = {nodeNamed(ptMsg->pptMessageIdx, "D"), nodeNamed(ptMsg->pptMessageIdx, "B2"), nullptr};
  EXPECT_EQ(cvtGetNodeIdx(apt, cs("d")), 0);
  EXPECT_EQ(cvtGetNodeIdx(apt, cs("b2")), 1);
  EXPECT_EQ(cvtGetNodeIdx(apt, cs("A")), -1);
}

TEST_F(NodeIndex, AnEmptyArrayHoldsNoName) {
  Message *apt[] = {nullptr};
  EXPECT_EQ(cvtGetNodeIdx(apt, cs("A")), -1);
}

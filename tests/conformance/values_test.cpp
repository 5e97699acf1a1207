// Value lists: the order in which lists come back, where the bytes of a value lie, and what is kept although
// it looks unguarded.
#include <gtest/gtest.h>

#include "definition_xml.h"
#include "log_capture.h"
#include "pool_use.h"
#include "trail.h"

using namespace test;
using namespace test::model;
namespace {

// Lists of capacity 4, loops of 999.
class Values : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(m_definitions.load({}, "gnMaxValue='4'"), nullptr);
    m_ptList = cvtGetValueList(3);
    clearLog();
  }

  static ValueList *loopListOf(const ValueList *ptList, int nSlot) {
    return reinterpret_cast<ValueList *>(ptList->ptValue[nSlot].psValue);
  }

  Definitions m_definitions;
  ValueList *m_ptList = nullptr;
};

TEST_F(Values, ListsOfAMessageComeBackInTheOrderOfItsChain) {
  ValueList *const ptRest = gptFreeValue->ptNext->ptNext->ptNext;
  ValueList *const ptFirst = cvtNewLoopValueList(m_ptList, 0, 1);
  ValueList *const ptNested = cvtNewLoopValueList(ptFirst, 0, 1);
  ValueList *const ptSecond = cvtNewLoopValueList(m_ptList, 0, 1);
  ASSERT_EQ(gptFreeValue, ptRest);
  cvtFreeValue(m_ptList);
  EXPECT_EQ(cvtGetValueList(1), m_ptList);
  EXPECT_EQ(cvtGetValueList(1), ptSecond);
  EXPECT_EQ(cvtGetValueList(1), ptFirst);
  EXPECT_EQ(cvtGetValueList(1), ptNested);
  EXPECT_EQ(cvtGetValueList(1), ptRest);
}

TEST_F(Values, LoopListsComeBackOneByOneSoTheLastIsTakenFirst) {
  ValueList *const ptBody = cvtNewLoopValueList(m_ptList, 0, 2);
  cvtNewLoopValueList(ptBody, 1, 1);
  ValueList *const ptOuter = loopListOf(m_ptList, 0);
  ValueList *const ptInner = loopListOf(ptBody, 1);
  ASSERT_EQ(ptInner->ptNext, ptOuter);  // side by side in the chain
  cvtFreeValue(m_ptList);
  EXPECT_EQ(gptLoopValue, ptOuter);
  EXPECT_EQ(ptOuter->ptNext, ptInner);
  EXPECT_EQ(ptInner->ptNext, nullptr);
}

TEST_F(Values, ALoopListWithoutRoomIsAttachedBeforeTheRepetitionIsRefused) {
  ValueList tFull{};
  gptLoopValue = &tFull;
  EXPECT_EQ(cvtNewLoopValueList(m_ptList, 0, 1), nullptr);
  EXPECT_EQ(logTexts(), Texts{"Loop Num is Max then Define[999]"});
  EXPECT_EQ(m_ptList->ptValue[0].nLen, -1);
  EXPECT_EQ(loopListOf(m_ptList, 0), &tFull);
  EXPECT_EQ(m_ptList->ptNext, &tFull);
  EXPECT_EQ(gptLoopValue, nullptr);
  EXPECT_EQ(cvtGetLoopValueListNum(m_ptList, 0), 0);
}

// As an ordinary list may be that was filed as a loop list. The line names the limit of the configuration still.
TEST_F(Values, ALoopListWithMoreRoomHoldsMoreRepetitions) {
  std::vector<Value> slots(1001);
  ValueList tLarge{0, 1001, slots.data(), nullptr};
  gptLoopValue = &tLarge;
  ASSERT_NE(cvtNewLoopValueList(m_ptList, 0, 1), nullptr);
  tLarge.nNow = 1000;
  EXPECT_NE(cvtNewLoopValueList(m_ptList, 0, 1), nullptr);
  EXPECT_EQ(cvtGetLoopValueListNum(m_ptList, 0), 1001);
  EXPECT_EQ(cvtNewLoopValueList(m_ptList, 0, 1), nullptr);
  EXPECT_EQ(logTexts(), Texts{"Loop Num is Max then Define[999]"});
}

TEST_F(Values, AListOfLessRoomThanAConfiguredLoopIsOrdinary) {
  ASSERT_NE(m_definitions.load({}, "gnMaxValue='1499' gnMaxLoop='1500'"), nullptr);
  m_ptList = cvtGetValueList(1);
  ValueList *const ptBody = cvtNewLoopValueList(m_ptList, 0, 1);
  ValueList *const ptLoop = loopListOf(m_ptList, 0);
  cvtFreeValue(m_ptList);
  EXPECT_EQ(gptLoopValue, ptLoop);
  EXPECT_EQ(ptLoop->ptNext, nullptr);
  EXPECT_EQ(gptFreeValue->ptNext, ptBody);
}

TEST_F(Values, OnlyTheUpperBoundOfARepetitionIsTested) {
  ValueList tBefore{};
  Value aSlots[2] = {};
  aSlots[0].psValue = reinterpret_cast<char *>(&tBefore);
  ValueList tLoop{1, 1, aSlots + 1, nullptr};
  m_ptList->ptValue[0].psValue = reinterpret_cast<char *>(&tLoop);
  m_ptList->ptValue[0].nLen = -1;
  EXPECT_EQ(cvtGetLoopValueList(m_ptList, 0, -1), &tBefore);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(Values, ListsLieInTheConfigurationsMemoryAndNothingIsTakenForThoseThatComeBack) {
  NEEDS_PACKED_POOL();
  while (gptFreeValue != nullptr) cvtGetValueList(0);
  const auto bytes = [](size_t nSlots) {
    return static_cast<int>(sizeof(ValueList) + nSlots * sizeof(Value));
  };
  int nBefore = handedOut();
  ValueList *const ptList = cvtGetValueList(1);
  EXPECT_EQ(handedOut() - nBefore, bytes(4));
  nBefore = handedOut();
  cvtNewLoopValueList(ptList, 0, 1);
  EXPECT_EQ(handedOut() - nBefore, bytes(999) + bytes(4));
  nBefore = handedOut();
  cvtFreeValue(ptList);
  cvtNewLoopValueList(cvtGetValueList(1), 0, 1);
  EXPECT_EQ(handedOut(), nBefore);
}

TEST_F(Values, BytesLieInTheNodeGiven) {
  MemPort const ptNode = cvtMemNewNode();
  ASSERT_EQ(cvtDumpValue(&m_ptList->ptValue[0], cs("abc"), 3, ptNode), 0);
  const MemBlock *const ptBlock = ptNode->ptHeadBlock;
  EXPECT_GE(m_ptList->ptValue[0].psValue, ptBlock->psBuf);
  EXPECT_LT(m_ptList->ptValue[0].psValue, ptBlock->psBuf + ptBlock->nMaxSize);
}

TEST_F(Values, ChecksOfALoopComeInOrder) {
  m_ptList->ptValue[2].nLen = 5;
  EXPECT_EQ(cvtNewLoopValueList(nullptr, 9, 1), nullptr);
  EXPECT_EQ(cvtGetLoopValueListNum(m_ptList, 3), -1);
  EXPECT_EQ(cvtGetLoopValueList(m_ptList, 2, 77), nullptr);
  EXPECT_EQ(cvtGetLoopValueList(m_ptList, 1, 77), nullptr);
  EXPECT_EQ(logTexts(), (Texts{"[ptValueList] is NULL", "Value Index[3] < 0 or >= max [3] err!!",
                               "value Index[2] is not LoopValueList", "Value Index[1]: Loop is not init!!"}));
}

TEST_F(Values, WhatIsWrongIsToldByTheFunctionThatWasCalled) {
  m_ptList->ptValue[2].nLen = 5;
  const std::string sUnit = "cvt_message.cpp ";
  const std::string sNoSlot = ": Value Index[3] < 0 or >= max [3] err!!";
  const std::string sNoLoop = ": value Index[2] is not LoopValueList";
  cvtGetListValue(nullptr, 0);
  cvtGetListValue(m_ptList, 3);
  cvtDumpValue(nullptr, nullptr, 0, nullptr);
  EXPECT_EQ(trail(), (Texts{sUnit + "cvtGetListValue: [ptValueList] is NULL",
                            sUnit + "cvtGetListValue" + sNoSlot, sUnit + "cvtDumpValue: [ptValue] is NULL"}));
  clearLog();
  for (const int nPos : {3, 2}) {
    cvtNewLoopValueList(m_ptList, nPos, 1);
    cvtGetLoopValueListNum(m_ptList, nPos);
    cvtGetLoopValueList(m_ptList, nPos, 0);
  }
  EXPECT_EQ(trail(),
            (Texts{sUnit + "cvtNewLoopValueList" + sNoSlot, sUnit + "cvtGetLoopValueListNum" + sNoSlot,
                   sUnit + "cvtGetLoopValueList" + sNoSlot, sUnit + "cvtNewLoopValueList" + sNoLoop,
                   sUnit + "cvtGetLoopValueListNum" + sNoLoop, sUnit + "cvtGetLoopValueList" + sNoLoop}));
}

// Of the lengths below 0 only -1 is ever stored, but all mean the same.
TEST_F(Values, ASlotOfAnyNegativeLengthIsALoop) {
  ValueList *const ptFirst = cvtNewLoopValueList(m_ptList, 0, 1);
  m_ptList->ptValue[0].nLen = -2;
  EXPECT_EQ(cvtGetLoopValueListNum(m_ptList, 0), 1);
  EXPECT_EQ(cvtGetLoopValueList(m_ptList, 0, 0), ptFirst);
  EXPECT_NE(cvtNewLoopValueList(m_ptList, 0, 1), nullptr);
  EXPECT_EQ(cvtGetLoopValueListNum(m_ptList, 0), 2);
  EXPECT_EQ(m_ptList->ptValue[0].nLen, -2);
}

TEST_F(Values, SlotsThatAreNotInUseAreNotCleared) {
  m_ptList->ptValue[1].nLen = 7;
  m_ptList->ptValue[2].nLen = 8;
  m_ptList->nNow = 2;
  cvtFreeValue(m_ptList);
  EXPECT_EQ(m_ptList->ptValue[1].nLen, 0);
  EXPECT_EQ(m_ptList->ptValue[2].nLen, 8);
}

TEST_F(Values, ALargerDefinitionMakesFreshListsLargerAndLeavesThoseThatAreReady) {
  gnMaxValueNum = 9;
  while (gptFreeValue != nullptr) EXPECT_EQ(cvtGetValueList(-1)->nMax, 4);
  EXPECT_EQ(cvtGetValueList(-1)->nMax, 9);
}

TEST_F(Values, ARefusedRepetitionTakesNoList) {
  m_ptList->ptValue[2].nLen = 5;
  const ValueList *const ptFree = gptFreeValue;
  EXPECT_EQ(cvtNewLoopValueList(m_ptList, 2, 1), nullptr);
  EXPECT_EQ(cvtNewLoopValueList(m_ptList, 3, 1), nullptr);
  EXPECT_EQ(gptFreeValue, ptFree);
  EXPECT_EQ(gptLoopValue, nullptr);
  EXPECT_EQ(m_ptList->ptNext, nullptr);
}

}  // namespace

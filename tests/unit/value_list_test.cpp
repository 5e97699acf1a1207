// Value lists: slots, repetitions, and the two free lists.
#include <gtest/gtest.h>

#include <climits>
#include <set>

#include "definition_xml.h"
#include "log_capture.h"

using namespace test;
using namespace test::model;
using Names = std::vector<std::string>;

namespace {

int count(const ValueList *ptList) {
  int nCount = 0;
  for (; ptList != nullptr; ptList = ptList->ptNext) ++nCount;
  return nCount;
}

bool isClear(const ValueList *ptList) {
  if (ptList->nNow != 0) return false;
  for (int i = 0; i < ptList->nMax; ++i) {
    if (ptList->ptValue[i].psValue != nullptr || ptList->ptValue[i].nLen != 0) return false;
  }
  return true;
}

std::set<ValueList *> listsOf(ValueList *ptList) {
  std::set<ValueList *> all;
  for (; ptList != nullptr; ptList = ptList->ptNext) all.insert(ptList);
  return all;
}

ValueList *loopListOf(const ValueList *ptList, int nSlot) {
  return reinterpret_cast<ValueList *>(ptList->ptValue[nSlot].psValue);
}

// The section sizes the lists.
class Sizing : public ::testing::Test {
 protected:
  Definitions m_definitions;
};

// Lists of capacity 6, loops of 999.
class Lists : public Sizing {
 protected:
  void SetUp() override {
    m_definitions.load({}, "gnMaxValue='6'");
    m_ptNode = cvtMemNewNode();
    m_ptList = cvtGetValueList(4);
    clearLog();
  }

  Value *slot(int nPos) { return cvtGetListValue(m_ptList, nPos); }
  void store(int nPos, const char *ps) {
    cvtDumpValue(slot(nPos), cs(ps), static_cast<int>(std::string(ps).size()), m_ptNode);
  }

  MemPort m_ptNode = nullptr;
  ValueList *m_ptList = nullptr;
};

const char *const f_sNoLoopList = "[ptLoopList = (void *)ptValueList->ptValue[nIndex].psValue] is NULL";

}  // namespace

// --- Sizing
// --------------------------------------------------------------------------------------------------

TEST_F(Sizing, TenListsOfTheConfiguredCapacityAreReady) {
  ASSERT_NE(m_definitions.load({}, "gnMaxValue='20'"), nullptr);
  EXPECT_EQ(gnMaxValueNum, 20);
  EXPECT_EQ(count(gptFreeValue), 10);
  for (const ValueList *pt = gptFreeValue; pt != nullptr; pt = pt->ptNext) {
    EXPECT_EQ(pt->nMax, 20);
    EXPECT_TRUE(isClear(pt));
  }
  EXPECT_EQ(gptLoopValue, nullptr);
}

TEST_F(Sizing, TheLargestDefinitionDecidesWhenItIsLarger) {
  Definitions::format("flat");
  m_definitions.add("Order", {field("A"), field("B"), field("C")});
  ASSERT_NE(m_definitions.load({"msg"}, "gnMaxValue='2'"), nullptr);
  EXPECT_EQ(gnMaxValueNum, 3);
  EXPECT_EQ(gptFreeValue->nMax, 3);
}

TEST_F(Sizing, TheCapacityNeverShrinks) {
  m_definitions.load({}, "gnMaxValue='20'");
  m_definitions.load({}, "gnMaxValue='5'");
  EXPECT_EQ(gnMaxValueNum, 20);
  EXPECT_EQ(gptFreeValue->nMax, 20);
  m_definitions.load({}, "gnMaxValue='-5'");
  EXPECT_EQ(gnMaxValueNum, 20);
}

TEST_F(Sizing, ASecondSectionStartsBothFreeListsAnew) {
  m_definitions.load({}, "gnMaxValue='6'");
  ValueList *const ptList = cvtGetValueList(2);
  cvtNewLoopValueList(ptList, 0, 1);
  cvtFreeValue(ptList);
  ASSERT_NE(gptLoopValue, nullptr);
  m_definitions.load({}, "gnMaxValue='6'");
  EXPECT_EQ(gptLoopValue, nullptr);
  EXPECT_EQ(count(gptFreeValue), 10);
}

TEST_F(Sizing, ALoopHoldsAtLeastNineHundredNinetyNineRepetitions) {
  for (const char *ps : {"", "gnMaxLoop='998'", "gnMaxLoop='0'", "gnMaxLoop='-1'"}) {
    m_definitions.load({}, std::string("gnMaxValue='1' ") + ps);
    EXPECT_EQ(gptFmtGlobalInfo->ptCvtFmtArgs->gnMaxLoop, 999) << ps;
  }
  for (const int nMaxLoop : {999, 1000}) {
    m_definitions.load({}, "gnMaxValue='1' gnMaxLoop='" + std::to_string(nMaxLoop) + "'");
    EXPECT_EQ(gptFmtGlobalInfo->ptCvtFmtArgs->gnMaxLoop, nMaxLoop);
  }
}

TEST_F(Sizing, WithoutAnyCapacityNothingIsPrepared) {
  EXPECT_NE(m_definitions.load({}), nullptr);
  EXPECT_EQ(logTexts(), (Names{"Warning No Value num!!"}));
  EXPECT_EQ(gptFreeValue, nullptr);
  EXPECT_EQ(gptFmtGlobalInfo->ptCvtFmtArgs->gnMaxLoop, 999);
  const ValueList *const ptList = cvtGetValueList(-1);
  EXPECT_EQ(ptList->nMax, 0);
  EXPECT_EQ(ptList->nNow, 0);
}

TEST_F(Sizing, WithoutAnyCapacityTheFreeListsAreLeftAlone) {
  ValueList tFree{};
  ValueList tLoop{};
  gptFreeValue = &tFree;
  gptLoopValue = &tLoop;
  m_definitions.load({});
  EXPECT_EQ(gptFreeValue, &tFree);
  EXPECT_EQ(gptLoopValue, &tLoop);
}

// --- Taking a list
// -------------------------------------------------------------------------------------------

TEST_F(Lists, AListIsTakenFromTheFrontOfTheFreeList) {
  ValueList *const ptFirst = gptFreeValue;
  ValueList *const ptSecond = ptFirst->ptNext;
  EXPECT_EQ(cvtGetValueList(3), ptFirst);
  EXPECT_EQ(ptFirst->ptNext, nullptr);
  EXPECT_EQ(ptFirst->nNow, 3);
  EXPECT_EQ(ptFirst->nMax, 6);
  EXPECT_EQ(gptFreeValue, ptSecond);
}

TEST_F(Lists, ANegativeNumberTakesTheWholeCapacity) {
  EXPECT_EQ(cvtGetValueList(-1)->nNow, 6);
  EXPECT_EQ(cvtGetValueList(INT_MIN)->nNow, 6);
  EXPECT_EQ(cvtGetValueList(0)->nNow, 0);
}

TEST_F(Lists, TheNumberIsNotComparedWithTheCapacity) {
  EXPECT_EQ(cvtGetValueList(7)->nNow, 7);
}

TEST_F(Lists, SlotsBeyondTheCapacityDoNotExist) {
  ValueList *const ptList = cvtGetValueList(7);
  EXPECT_NE(cvtGetListValue(ptList, 5), nullptr);
  EXPECT_EQ(cvtGetListValue(ptList, 6), nullptr);
  EXPECT_EQ(cvtNewLoopValueList(ptList, 6, 1), nullptr);
  EXPECT_EQ(logTexts(),
            (Names{"Value Index[6] < 0 or >= max [6] err!!", "Value Index[6] < 0 or >= max [6] err!!"}));
  EXPECT_EQ(cvtFreeValue(ptList), 0);
}

TEST_F(Lists, AnEmptyFreeListGivesAFreshListOfFullCapacity) {
  while (gptFreeValue != nullptr) cvtGetValueList(1);
  const ValueList *const ptList = cvtGetValueList(2);
  EXPECT_EQ(ptList->nNow, 2);
  EXPECT_EQ(ptList->nMax, 6);
  EXPECT_EQ(ptList->ptNext, nullptr);
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(ptList->ptValue[i].psValue, nullptr);
    EXPECT_EQ(ptList->ptValue[i].nLen, 0);
  }
}

// --- Slots
// ---------------------------------------------------------------------------------------------------

TEST_F(Lists, ASlotIsAnAddressWithinTheList) {
  EXPECT_EQ(slot(0), m_ptList->ptValue);
  EXPECT_EQ(slot(3), m_ptList->ptValue + 3);
}

TEST_F(Lists, ASlotBehindThoseInUseIsRefusedThoughTheCapacityIsLarger) {
  EXPECT_EQ(slot(4), nullptr);
  EXPECT_EQ(slot(-1), nullptr);
  EXPECT_EQ(slot(INT_MAX), nullptr);
  EXPECT_EQ(slot(INT_MIN), nullptr);
  EXPECT_EQ(logTexts(),
            (Names{"Value Index[4] < 0 or >= max [4] err!!", "Value Index[-1] < 0 or >= max [4] err!!",
                   "Value Index[2147483647] < 0 or >= max [4] err!!",
                   "Value Index[-2147483648] < 0 or >= max [4] err!!"}));
}

TEST_F(Lists, ANullListHasNoSlots) {
  EXPECT_EQ(cvtGetListValue(nullptr, 0), nullptr);
  EXPECT_EQ(logTexts(), (Names{"[ptValueList] is NULL"}));
}

TEST_F(Lists, FailuresAreLoggedUnderTheLibrarysModule) {
  slot(4);
  ASSERT_EQ(logLines().size(), 1U);
  EXPECT_EQ(logLines()[0].nLevel, 1);
  EXPECT_EQ(logLines()[0].sModule, "$cvt2");
}

// --- Storing bytes
// -------------------------------------------------------------------------------------------

TEST_F(Lists, AStoredValueIsATerminatedCopy) {
  char sBytes[] = "abcdef";
  ASSERT_EQ(cvtDumpValue(slot(0), sBytes, 3, m_ptNode), 0);
  sBytes[0] = 'X';
  EXPECT_EQ(slot(0)->nLen, 3);
  EXPECT_STREQ(slot(0)->psValue, "abc");
}

TEST_F(Lists, StoredBytesMayHoldZeros) {
  ASSERT_EQ(cvtDumpValue(slot(0), cs("a\0b"), 3, m_ptNode), 0);
  EXPECT_EQ(std::string(slot(0)->psValue, 4), std::string("a\0b\0", 4));
}

TEST_F(Lists, NoBytesAreStoredAsAnEmptyString) {
  ASSERT_EQ(cvtDumpValue(slot(0), cs("abc"), 0, m_ptNode), 0);
  EXPECT_EQ(slot(0)->nLen, 0);
  EXPECT_STREQ(slot(0)->psValue, "");
}

TEST_F(Lists, AValueIsReplacedByTheNext) {
  store(0, "first");
  const char *const psFirst = slot(0)->psValue;
  store(0, "no");
  EXPECT_EQ(slot(0)->nLen, 2);
  EXPECT_STREQ(slot(0)->psValue, "no");
  EXPECT_STREQ(psFirst, "first");
}

TEST_F(Lists, StoringRefusesNullArguments) {
  EXPECT_EQ(cvtDumpValue(nullptr, nullptr, 1, m_ptNode), -1);
  EXPECT_EQ(cvtDumpValue(slot(0), nullptr, 0, m_ptNode), -1);
  EXPECT_EQ(logTexts(), (Names{"[ptValue] is NULL", "[psBuf] is NULL"}));
}

TEST_F(Lists, AStoreThatFailsLeavesTheSlotAsItWas) {
  store(0, "kept");
  EXPECT_EQ(cvtDumpValue(slot(0), nullptr, 3, m_ptNode), -1);
  EXPECT_EQ(cvtDumpValue(slot(0), cs("new"), 3, nullptr), -1);
  EXPECT_EQ(cvtDumpValue(slot(0), cs("new"), -1, m_ptNode), -1);
  EXPECT_EQ(cvtDumpValue(slot(0), cs("new"), INT_MAX, m_ptNode), -1);
  EXPECT_EQ(cvtDumpValue(slot(0), cs("new"), INT_MIN, m_ptNode), -1);
  EXPECT_EQ(slot(0)->nLen, 4);
  EXPECT_STREQ(slot(0)->psValue, "kept");
  EXPECT_EQ(logTexts(),
            (Names{"[psBuf] is NULL", "[ptNode] is NULL", "Value Length[-1] is not in [0] .. [2147483646]",
                   "Value Length[2147483647] is not in [0] .. [2147483646]",
                   "Value Length[-2147483648] is not in [0] .. [2147483646]"}));
}

// --- Repetitions
// ---------------------------------------------------------------------------------------------

TEST_F(Lists, TheFirstRepetitionTurnsTheSlotIntoALoop) {
  const ValueList *const ptBody = cvtNewLoopValueList(m_ptList, 1, 3);
  ASSERT_NE(ptBody, nullptr);
  EXPECT_EQ(ptBody->nNow, 3);
  EXPECT_EQ(slot(1)->nLen, -1);
  EXPECT_EQ(loopListOf(m_ptList, 1)->nMax, 999);
  EXPECT_EQ(cvtGetLoopValueListNum(m_ptList, 1), 1);
  EXPECT_EQ(cvtGetLoopValueList(m_ptList, 1, 0), ptBody);
}

TEST_F(Lists, ARepetitionOfNegativeSizeHasFullCapacity) {
  EXPECT_EQ(cvtNewLoopValueList(m_ptList, 1, -1)->nNow, 6);
}

TEST_F(Lists, RepetitionsAreKeptInOrder) {
  ValueList *const ptFirst = cvtNewLoopValueList(m_ptList, 1, 3);
  ValueList *const ptSecond = cvtNewLoopValueList(m_ptList, 1, 3);
  EXPECT_EQ(cvtGetLoopValueListNum(m_ptList, 1), 2);
  EXPECT_EQ(cvtGetLoopValueList(m_ptList, 1, 0), ptFirst);
  EXPECT_EQ(cvtGetLoopValueList(m_ptList, 1, 1), ptSecond);
}

TEST_F(Lists, ARepetitionsSlotInTheLoopListIsNoLoopItself) {
  cvtNewLoopValueList(m_ptList, 1, 3);
  EXPECT_EQ(loopListOf(m_ptList, 1)->ptValue[0].nLen, 0);
}

TEST_F(Lists, NewListsGoDirectlyBehindTheListHandedIn) {
  ValueList *const ptFirst = cvtNewLoopValueList(m_ptList, 1, 3);
  ValueList *const ptLoop = loopListOf(m_ptList, 1);
  EXPECT_EQ(m_ptList->ptNext, ptFirst);
  EXPECT_EQ(ptFirst->ptNext, ptLoop);
  EXPECT_EQ(ptLoop->ptNext, nullptr);
  ValueList *const ptSecond = cvtNewLoopValueList(m_ptList, 1, 3);
  EXPECT_EQ(m_ptList->ptNext, ptSecond);
  EXPECT_EQ(ptSecond->ptNext, ptFirst);
  ValueList *const ptNested = cvtNewLoopValueList(ptFirst, 0, 1);
  EXPECT_EQ(ptFirst->ptNext, ptNested);
  EXPECT_EQ(ptNested->ptNext, loopListOf(ptFirst, 0));
  EXPECT_EQ(ptNested->ptNext->ptNext, ptLoop);
}

TEST_F(Lists, TheRepetitionBehindTheLastAllowedOneIsRefused) {
  for (int i = 0; i < 999; ++i) ASSERT_NE(cvtNewLoopValueList(m_ptList, 1, 1), nullptr);
  EXPECT_TRUE(logLines().empty());
  EXPECT_EQ(cvtNewLoopValueList(m_ptList, 1, 1), nullptr);
  EXPECT_EQ(logTexts(), (Names{"Loop Num is Max then Define[999]"}));
  EXPECT_EQ(cvtGetLoopValueListNum(m_ptList, 1), 999);
}

TEST_F(Sizing, AConfiguredLoopLimitIsTheLastRepetition) {
  m_definitions.load({}, "gnMaxValue='2' gnMaxLoop='1001'");
  ValueList *const ptList = cvtGetValueList(1);
  for (int i = 0; i < 1001; ++i) ASSERT_NE(cvtNewLoopValueList(ptList, 0, 1), nullptr);
  EXPECT_EQ(cvtNewLoopValueList(ptList, 0, 1), nullptr);
  EXPECT_TRUE(logged(1, "Loop Num is Max then Define[1001]"));
}

TEST_F(Lists, ASlotWithAPlainValueIsNoLoop) {
  store(1, "v");
  EXPECT_EQ(cvtNewLoopValueList(m_ptList, 1, 1), nullptr);
  EXPECT_EQ(cvtGetLoopValueListNum(m_ptList, 1), -1);
  EXPECT_EQ(cvtGetLoopValueList(m_ptList, 1, 0), nullptr);
  EXPECT_EQ(logTexts(), (Names{"value Index[1] is not LoopValueList", "value Index[1] is not LoopValueList",
                               "value Index[1] is not LoopValueList"}));
  EXPECT_STREQ(slot(1)->psValue, "v");
  EXPECT_EQ(m_ptList->ptNext, nullptr);
}

TEST_F(Lists, AnEmptyValueMayBecomeALoop) {
  store(1, "");
  EXPECT_NE(cvtNewLoopValueList(m_ptList, 1, 1), nullptr);
  EXPECT_EQ(cvtGetLoopValueListNum(m_ptList, 1), 1);
}

TEST_F(Lists, ALoopThatWasNotStartedHasNoRepetitions) {
  EXPECT_EQ(cvtGetLoopValueListNum(m_ptList, 1), 0);
  EXPECT_TRUE(logLines().empty());
  EXPECT_EQ(cvtGetLoopValueList(m_ptList, 1, 0), nullptr);
  EXPECT_EQ(logTexts(), (Names{"Value Index[1]: Loop is not init!!"}));
}

TEST_F(Lists, ARepetitionThatDoesNotExistIsRefused) {
  cvtNewLoopValueList(m_ptList, 1, 1);
  EXPECT_EQ(cvtGetLoopValueList(m_ptList, 1, 1), nullptr);
  EXPECT_EQ(cvtGetLoopValueList(m_ptList, 1, 1000), nullptr);
  EXPECT_EQ(logTexts(), (Names{"Value Index[1]: Loop index[1] is big then list[1]",
                               "Value Index[1]: Loop index[1000] is big then list[1]"}));
}

TEST_F(Lists, LoopsRefuseANullList) {
  EXPECT_EQ(cvtNewLoopValueList(nullptr, 0, 1), nullptr);
  EXPECT_EQ(cvtGetLoopValueListNum(nullptr, 0), -1);
  EXPECT_EQ(cvtGetLoopValueList(nullptr, 0, 0), nullptr);
  EXPECT_EQ(logTexts(), (Names{"[ptValueList] is NULL", "[ptValueList] is NULL", "[ptValueList] is NULL"}));
}

TEST_F(Lists, LoopsRefuseASlotThatIsNotInUse) {
  for (const int nPos : {-1, 4}) {
    clearLog();
    const std::string sText = "Value Index[" + std::to_string(nPos) + "] < 0 or >= max [4] err!!";
    EXPECT_EQ(cvtNewLoopValueList(m_ptList, nPos, 1), nullptr);
    EXPECT_EQ(cvtGetLoopValueListNum(m_ptList, nPos), -1);
    EXPECT_EQ(cvtGetLoopValueList(m_ptList, nPos, 0), nullptr);
    EXPECT_EQ(logTexts(), (Names{sText, sText, sText}));
  }
}

TEST_F(Lists, ALoopSlotWithoutItsListIsRefused) {
  slot(1)->nLen = -1;
  EXPECT_EQ(cvtNewLoopValueList(m_ptList, 1, 1), nullptr);
  EXPECT_EQ(cvtGetLoopValueListNum(m_ptList, 1), -1);
  EXPECT_EQ(cvtGetLoopValueList(m_ptList, 1, 0), nullptr);
  EXPECT_EQ(logTexts(), (Names{f_sNoLoopList, f_sNoLoopList, f_sNoLoopList}));
}

// --- Recycling
// -----------------------------------------------------------------------------------------------

TEST_F(Lists, ANullChainIsFreed) {
  EXPECT_EQ(cvtFreeValue(nullptr), 0);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(Lists, AFreedListIsClearAndFirstOfItsFreeList) {
  ValueList *const ptBefore = gptFreeValue;
  store(0, "a");
  store(3, "d");
  EXPECT_EQ(cvtFreeValue(m_ptList), 0);
  EXPECT_EQ(gptFreeValue, m_ptList);
  EXPECT_EQ(m_ptList->ptNext, ptBefore);
  EXPECT_TRUE(isClear(m_ptList));
  EXPECT_EQ(m_ptList->nMax, 6);
}

TEST_F(Lists, EveryListOfAMessageGoesBackToItsOwnFreeList) {
  std::set<ValueList *> loops;
  std::set<ValueList *> bodies{m_ptList};
  for (int i = 0; i < 3; ++i) {
    ValueList *const ptBody = cvtNewLoopValueList(m_ptList, 1, 2);
    bodies.insert(ptBody);
    bodies.insert(cvtNewLoopValueList(ptBody, 0, 1));
    bodies.insert(cvtNewLoopValueList(ptBody, 0, 1));
    loops.insert(loopListOf(ptBody, 0));
  }
  bodies.insert(cvtNewLoopValueList(m_ptList, 3, 2));
  loops.insert({loopListOf(m_ptList, 1), loopListOf(m_ptList, 3)});
  std::set<ValueList *> ordinary = listsOf(gptFreeValue);
  ordinary.insert(bodies.begin(), bodies.end());

  EXPECT_EQ(cvtFreeValue(m_ptList), 0);
  EXPECT_EQ(listsOf(gptLoopValue), loops);
  EXPECT_EQ(listsOf(gptFreeValue), ordinary);
  for (const ValueList *pt : loops) EXPECT_TRUE(isClear(pt));
  for (const ValueList *pt : ordinary) EXPECT_TRUE(isClear(pt));
}

TEST_F(Lists, AFreedLoopListServesTheNextLoop) {
  cvtNewLoopValueList(m_ptList, 1, 2);
  ValueList *const ptLoop = loopListOf(m_ptList, 1);
  cvtFreeValue(m_ptList);
  m_ptList = cvtGetValueList(4);
  cvtNewLoopValueList(m_ptList, 2, 2);
  EXPECT_EQ(loopListOf(m_ptList, 2), ptLoop);
  EXPECT_EQ(ptLoop->nNow, 1);
  EXPECT_EQ(gptLoopValue, nullptr);
}

TEST_F(Lists, ARecycledListShowsNothingOfTheMessageBefore) {
  cvtDumpValue(cvtGetListValue(cvtNewLoopValueList(m_ptList, 1, 2), 1), cs("old"), 3, m_ptNode);
  cvtFreeValue(m_ptList);
  for (int i = 0; i < 12; ++i) {
    const ValueList *const ptList = cvtGetValueList(-1);
    for (int n = 0; n < ptList->nNow; ++n) EXPECT_EQ(ptList->ptValue[n].nLen, 0);
  }
}

TEST_F(Lists, AListAskedForMoreThanItsCapacityIsClearedWithinIt) {
  ValueList *const ptList = cvtGetValueList(5000);
  EXPECT_EQ(cvtFreeValue(ptList), 0);
  EXPECT_TRUE(isClear(ptList));
}

TEST_F(Lists, ManyMessagesTakeNoMoreListsThanOne) {
  std::set<ValueList *> seen;
  for (int i = 0; i < 500; ++i) {
    ValueList *const ptList = cvtGetValueList(3);
    for (int n = 0; n < 20; ++n) cvtNewLoopValueList(ptList, 0, 2);
    for (ValueList *pt = ptList; pt != nullptr; pt = pt->ptNext) seen.insert(pt);
    cvtFreeValue(ptList);
  }
  EXPECT_EQ(seen.size(), 22U);
}

TEST_F(Sizing, AnOrdinaryListAsLargeAsALoopIsFiledAsOne) {
  m_definitions.load({}, "gnMaxValue='999'");
  ValueList *const ptList = cvtGetValueList(2);
  ValueList *const ptBody = cvtNewLoopValueList(ptList, 0, 1);
  cvtFreeValue(ptList);
  EXPECT_EQ(gptFreeValue, ptList);  // the head is never looked at
  EXPECT_EQ(listsOf(gptLoopValue).count(ptBody), 1U);
  EXPECT_EQ(count(gptLoopValue), 2);
  EXPECT_EQ(count(gptFreeValue), 9);
}

// A message gives back lists in another order than the next one asks for them.
TEST_F(Sizing, ManyMessagesTakeNoMoreListsThanSomeWhereTheyAreFiledAsLoops) {
  for (const char *psCapacity : {"gnMaxValue='999'", "gnMaxValue='1500'"}) {
    m_definitions.load({}, psCapacity);
    std::set<ValueList *> seen;
    for (int i = 0; i < 500; ++i) {
      ValueList *const ptList = cvtGetValueList(3);
      for (int n = 0; n < 20; ++n) {
        ValueList *const ptBody = cvtNewLoopValueList(ptList, n % 2, 2);
        cvtNewLoopValueList(ptBody, (n + i) % 2, 2);
      }
      for (ValueList *pt = ptList; pt != nullptr; pt = pt->ptNext) seen.insert(pt);
      cvtFreeValue(ptList);
    }
    EXPECT_LE(seen.size(), 2U * (1 + 20 + 20 + 22)) << psCapacity;
  }
}

TEST_F(Sizing, AnOrdinaryListIsNotMadeOfASmallerLoopList) {
  m_definitions.load({}, "gnMaxValue='1500'");
  ValueList *const ptList = cvtGetValueList(2);
  cvtNewLoopValueList(ptList, 0, 1);
  cvtFreeValue(ptList);
  EXPECT_EQ(count(gptLoopValue), 2);
  while (gptFreeValue != nullptr) cvtGetValueList(1);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(cvtGetValueList(1)->nMax, 1500);
  ASSERT_EQ(count(gptLoopValue), 1);
  EXPECT_EQ(gptLoopValue->nMax, 999);
}

TEST_F(Sizing, AnOrdinaryListThatWasFiledComesAlone) {
  m_definitions.load({}, "gnMaxValue='999'");
  ValueList *const ptList = cvtGetValueList(2);
  cvtNewLoopValueList(ptList, 0, 1);
  cvtNewLoopValueList(ptList, 0, 1);
  cvtFreeValue(ptList);
  EXPECT_EQ(count(gptLoopValue), 3);
  while (gptFreeValue != nullptr) cvtGetValueList(1);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(cvtGetValueList(1)->ptNext, nullptr);
  EXPECT_EQ(gptLoopValue, nullptr);
}

TEST_F(Sizing, WithoutASectionALoopStillHoldsNineHundredNinetyNine) {
  gnMaxValueNum = 2;
  ValueList *const ptList = cvtGetValueList(2);
  ASSERT_NE(cvtNewLoopValueList(ptList, 0, 1), nullptr);
  EXPECT_EQ(loopListOf(ptList, 0)->nMax, 999);
  EXPECT_EQ(cvtFreeValue(ptList), 0);
  EXPECT_EQ(count(gptLoopValue), 1);
}

#include <gtest/gtest.h>

#include <string>

#include "convert_xml.h"
#include "cvt.h"
#include "log_capture.h"
#include "toy_config.h"

using test::cs;
using test::loggedInOrder;
using test::logTexts;

namespace {

using Texts = std::vector<std::string>;

class Loops : public testing::Test {
 protected:
  void SetUp() override {
    config.file("msg/Counted.xml",
                test::xml::definition("toy", "Counted",
                                      {test::xml::field("Count"),
                                       {"Rows", " nType='1'",
                                        "<LoopType __ID='pInfo' psLoopNumName='Count'/>" +
                                            test::xml::nodes("ptChildNode", {test::xml::field("Row")})}}));
    ASSERT_EQ(config.start(), 0);
    ptMsg = cvtNewMessage(cs("Order"), cs("02"), &nError);
    ASSERT_NE(ptMsg, nullptr);
    test::clearLog();
  }
  void TearDown() override {
    cvtFreeMessage(ptMsg);
    cvtEnd();
  }

  int set(const char *psLoop, int nTime) { return cvtSetLoopTime(ptMsg, cs(psLoop), nTime); }
  int count(const char *psLoop) { return cvtGetLoopTime(ptMsg, cs(psLoop)); }
  int add(const char *psLoop) { return cvtAddLoopTime(ptMsg, cs(psLoop)); }

  int put(const char *psName, const std::string &sValue) {
    return cvtSetNameValue(ptMsg, cs(psName), cs(sValue.c_str()), static_cast<int>(sValue.size()));
  }
  std::string get(const char *psName) {
    const Value *const pt = cvtGetNameValue(ptMsg, cs(psName), &nError);
    return pt == nullptr   ? "(null)"
           : pt->nLen == 0 ? ""
                           : std::string(pt->psValue, static_cast<size_t>(pt->nLen));
  }
  std::string bytes() {
    char sOut[512];
    int nOut = sizeof sOut;
    return cvtGenMessage(ptMsg, sOut, &nOut) == 0 ? std::string(sOut, static_cast<size_t>(nOut)) : "(failed)";
  }

  Message *node(const char *psName) {
    Message **const pptIdx = ptMsg->ptMsgInfo->pptMessageIdx;
    return cvtIdxNode(pptIdx, cvtGetNodeIdx(pptIdx, cs(psName)));
  }

  test::ToyConfig config;
  InnerMessage *ptMsg = nullptr;
  int nError = 77;
};

using FieldName = Loops;
using AddLoopTime = Loops;
using GetLoopTime = Loops;
using SetLoopTime = Loops;
using NestedLoop = Loops;
using CountField = Loops;

// --- Names
// ------------------------------------------------------------------------------------------------------------

TEST_F(FieldName, LeadsIntoTheCurrentRepetition) {
  add("Items");
  EXPECT_EQ(put("Items.Code", "A"), 0);
  EXPECT_EQ(get("Items.Code"), "A");
  EXPECT_EQ(get("items.CODE"), "A");
  EXPECT_EQ(bytes(), ",,,[A,,[];],");
}

TEST_F(FieldName, WithThreePartsUsesTheLastTwo) {
  add("Items");
  EXPECT_EQ(put("Nothing.Items.Code", "A"), 0);
  EXPECT_EQ(get("Items.Code"), "A");
  EXPECT_EQ(get("a.b.c.d.Items.Code"), "A");
}

TEST_F(FieldName, WithAnEmptyLoopPartIsAPlainField) {
  put("Id", "7");
  EXPECT_EQ(get(".Id"), "7");
  EXPECT_EQ(get("Nothing..Id"), "7");
}

TEST_F(FieldName, WithAnEmptyFieldPartIsNotFound) {
  EXPECT_EQ(get(""), "(null)");
  EXPECT_EQ(nError, -11);
  add("Items");
  EXPECT_EQ(get("Items."), "(null)");
  EXPECT_EQ(nError, -11);
}

TEST_F(FieldName, MayHaveALoopPartOf1024Bytes) {
  const std::string sLoop(1024, 'L');
  EXPECT_EQ(get((sLoop + ".Code").c_str()), "(null)");
  EXPECT_EQ(nError, -13);  // long, but not too long: unknown
  EXPECT_TRUE(loggedInOrder({"Node [" + sLoop + "] was not define!!"}));
}

TEST_F(FieldName, MayHaveAnIgnoredPartOfAnyLength) {
  add("Items");
  put("Items.Code", "A");
  EXPECT_EQ(get((std::string(5000, 'x') + ".Items.Code").c_str()), "A");
}

TEST_F(FieldName, MayHaveAFieldPartOfAnyLength) {
  EXPECT_EQ(get(std::string(5000, 'x').c_str()), "(null)");
  EXPECT_EQ(nError, -11);
}

TEST_F(FieldName, OfAnUnknownLoopGivesMinus13) {
  EXPECT_EQ(get("Nothing.Code"), "(null)");
  EXPECT_EQ(nError, -13);
  EXPECT_EQ(logTexts(), (Texts{"Node [Nothing] was not define!!", "Node [Nothing] was not define!!",
                               "GetValueInLoopNodeListByNodeName Err!!"}));
}

TEST_F(FieldName, OfALoopWithoutACurrentRepetitionGivesMinus13) {
  EXPECT_EQ(get("Items.Code"), "(null)");
  EXPECT_EQ(nError, -13);
  EXPECT_EQ(logTexts(),
            (Texts{"Loop Node [Items] Index was not set!!", "Get Message[Items] Loop Vlaue List err!!",
                   "Node [Items] was not define!!", "GetValueInLoopNodeListByNodeName Err!!"}));
}

TEST_F(FieldName, OfANodeThatIsNoLoopGivesMinus13) {
  EXPECT_EQ(get("Who.Name"), "(null)");
  EXPECT_EQ(nError, -13);
  EXPECT_TRUE(loggedInOrder({"Loop Node [Who] Index was not set!!"}));
}

TEST_F(FieldName, OfALoopsBodyWithoutTheLoopIsTheMessagesOwnField) {
  EXPECT_EQ(put("Qty", "1"), 0);  // no repetition is current
  EXPECT_EQ(get("Qty"), "1");
  add("Items");
  put("Items.Code", "A");
  EXPECT_EQ(get("Items.Qty"), "");
  EXPECT_EQ(get("Code"), "");
  EXPECT_EQ(nError, 0);
  EXPECT_EQ(put("Code", "x"), 0);
  EXPECT_EQ(get("Code"), "x");
  EXPECT_EQ(get("Items.Code"), "A");
  EXPECT_EQ(bytes(), ",,,[A,,[];],");
  EXPECT_TRUE(logTexts().empty());
}

TEST_F(FieldName, ThatIsNotInTheLoopBodyGivesMinus11) {
  add("Items");
  EXPECT_EQ(get("Items.Note"), "(null)");
  EXPECT_EQ(nError, -11);
  EXPECT_EQ(logTexts(), (Texts{"Child Node[Note] Index Get Err!!", "Get Message[Note] Index In[Items] err!!",
                               "Node [Items] was not define!!", "GetValueInLoopNodeListByNodeName Err!!"}));
}

TEST_F(FieldName, InALoopWithoutItsIndexGivesMinus11) {
  add("Items");
  auto *const ptLoop = static_cast<LoopType *>(node("Items")->ptStructAttr->pInfo);
  Message **const pptIdx = ptLoop->pptMessageIdx;
  ptLoop->pptMessageIdx = nullptr;
  EXPECT_EQ(get("Items.Code"), "(null)");
  EXPECT_EQ(nError, -11);
  EXPECT_EQ(logTexts(), (Texts{"Loop Node[Items] Define err!!", "Get Message[Code] Index In[Items] err!!",
                               "Node [Items] was not define!!", "GetValueInLoopNodeListByNodeName Err!!"}));
  ptLoop->pptMessageIdx = pptIdx;
}

TEST_F(FieldName, FailsPastTheEndOfARepetitionsList) {
  add("Items");
  cvtGetLoopValueList(ptMsg->tValueListInfo.ptValueList, 4, 0)->nNow = 1;
  EXPECT_EQ(get("Items.Qty"), "(null)");
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(logTexts(), (Texts{"Value Index[1] < 0 or >= max [1] err!!", "Child Node[Qty] Get value Err!!",
                               "GetValueInLoopNodeListByNodeName Err!!"}));
}

// --- cvtAddLoopTime
// ---------------------------------------------------------------------------------------------------

TEST_F(AddLoopTime, AppendsARepetitionAndMakesItCurrent) {
  EXPECT_EQ(count("Items"), 0);
  EXPECT_EQ(add("Items"), 0);
  EXPECT_EQ(add("Items"), 0);
  EXPECT_EQ(count("Items"), 2);
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Items")), 1);
  EXPECT_TRUE(logTexts().empty());
}

TEST_F(AddLoopTime, MakesTheNewestCurrentAlsoWhenAnEarlierOneWas) {
  add("Items");
  add("Items");
  set("Items", 0);
  add("Items");
  put("Items.Code", "C");
  EXPECT_EQ(bytes(), ",,,[,,[];,,[];C,,[];],");
}

TEST_F(AddLoopTime, GivesEachRepetitionTheBodysFields) {
  add("Items");
  EXPECT_EQ(cvtGetLoopValueList(ptMsg->tValueListInfo.ptValueList, 4, 0)->nNow, 5);
  EXPECT_EQ(get("Items.Code"), "");
}

TEST_F(AddLoopTime, GivesMinus3ForAnUnknownLoop) {
  EXPECT_EQ(add("Nothing"), -3);
  EXPECT_EQ(logTexts(), Texts{"Node [Nothing] was not define!!"});
}

TEST_F(AddLoopTime, GivesMinus3ForAnUnknownInnerLoop) {
  add("Items");
  EXPECT_EQ(add("Items.Nothing"), -3);
  EXPECT_EQ(logTexts(), Texts{"Node [Nothing] was not define!!"});
}

TEST_F(AddLoopTime, GivesMinus11ForAField) {
  EXPECT_EQ(add("Id"), -11);
  EXPECT_EQ(logTexts(),
            (Texts{"Get Loop Field Num err!!", "AddLoopTime err!!", "Node[Id] Set Loop Index err!!"}));
  EXPECT_EQ(bytes(), ",,,[],");
}

TEST_F(AddLoopTime, GivesMinus13ForALoopWhoseSlotHoldsAValue) {
  put("Items", "text");
  EXPECT_EQ(add("Items"), -13);
  EXPECT_EQ(logTexts(), (Texts{"value Index[4] is not LoopValueList", "value Index[4] is not LoopValueList",
                               "Get Filed Max Loop Time Err!!", "AddLoopTime err!!",
                               "Node[Items] Set Loop Index err!!"}));
  EXPECT_EQ(get("Items"), "text");
}

TEST_F(AddLoopTime, GivesMinus14ForALoopPartOver1024Bytes) {
  const std::string sName = std::string(1025, 'L') + ".Items";
  EXPECT_EQ(add(sName.c_str()), -14);
  EXPECT_EQ(logTexts(), Texts{"Loop Field Name[" + sName + "] is too long"});
}

TEST_F(AddLoopTime, ChecksItsArguments) {
  InnerMessage tMsg{};
  EXPECT_EQ(cvtAddLoopTime(nullptr, nullptr), -1);
  EXPECT_EQ(cvtAddLoopTime(&tMsg, nullptr), -1);
  EXPECT_EQ(cvtAddLoopTime(&tMsg, cs("Items")), -1);
  EXPECT_EQ(logTexts(), (Texts{"[ptMsg] is NULL", "[psLoopName] is NULL", "[ptMsg->ptMsgInfo] is NULL"}));
}

TEST_F(AddLoopTime, LeavesAFullLoopAsItIsAndSucceeds) {
  for (int i = 0; i < 999; ++i) ASSERT_EQ(add("Items"), 0);
  put("Items.Code", "last");
  EXPECT_TRUE(logTexts().empty());
  EXPECT_EQ(add("Items"), 0);
  EXPECT_EQ(logTexts(), Texts{"Loop Num is Max then Define[999]"});
  EXPECT_EQ(count("Items"), 999);
  EXPECT_EQ(get("Items.Code"), "last");
}

TEST_F(AddLoopTime, HangsEveryListBehindTheMessagesOwn) {
  add("Items");
  add("Items.Lots");
  int nLists = 0;
  for (const ValueList *pt = ptMsg->tValueListInfo.ptValueList; pt != nullptr; pt = pt->ptNext) ++nLists;
  EXPECT_EQ(nLists, 5);  // its own, and a loop list and a repetition for each loop
}

// --- cvtGetLoopTime
// ---------------------------------------------------------------------------------------------------

TEST_F(GetLoopTime, Is0ForALoopNeverStarted) {
  EXPECT_EQ(count("Items"), 0);
  EXPECT_TRUE(logTexts().empty());
}

TEST_F(GetLoopTime, GivesMinus14ForAnUnknownLoop) {
  EXPECT_EQ(count("Nothing"), -14);
  EXPECT_EQ(logTexts(), (Texts{"Get Message[Nothing] Index err!!", "Node [Nothing] was not define!!"}));
}

TEST_F(GetLoopTime, NamesTheFieldPartOfAnUnknownInnerLoop) {
  EXPECT_EQ(count("Nothing.Lots"), -14);
  EXPECT_EQ(logTexts(), (Texts{"Node [Nothing] was not define!!", "Node [Lots] was not define!!"}));
}

TEST_F(GetLoopTime, GivesMinus14ForAFieldWithAValue) {
  put("Id", "7");
  EXPECT_EQ(count("Id"), -14);
  EXPECT_EQ(logTexts(), (Texts{"value Index[0] is not LoopValueList", "Node[Id] Get Time Err!!"}));
}

TEST_F(GetLoopTime, GivesMinus14ForALoopPartOver1024Bytes) {
  const std::string sName = std::string(1025, 'L') + ".Lots";
  EXPECT_EQ(count(sName.c_str()), -14);
  EXPECT_EQ(logTexts(), Texts{"Loop Field Name[" + sName + "] is too long"});
}

TEST_F(GetLoopTime, GivesMinus14ForANullArgument) {
  InnerMessage tMsg{};
  EXPECT_EQ(cvtGetLoopTime(nullptr, cs("Items")), -14);
  EXPECT_EQ(cvtGetLoopTime(ptMsg, nullptr), -14);
  EXPECT_EQ(cvtGetLoopTime(&tMsg, cs("Items")), -14);
}

// --- cvtSetLoopTime
// ---------------------------------------------------------------------------------------------------

TEST_F(SetLoopTime, ChoosesTheRepetitionThatNamesAddress) {
  add("Items");
  put("Items.Code", "A");
  add("Items");
  put("Items.Code", "B");
  EXPECT_EQ(set("Items", 0), 0);
  EXPECT_EQ(get("Items.Code"), "A");
  EXPECT_EQ(set("Items", 1), 0);
  EXPECT_EQ(get("Items.Code"), "B");
  EXPECT_TRUE(logTexts().empty());
}

TEST_F(SetLoopTime, AcceptsOnePastTheLastWhereAccessThenFails) {
  add("Items");
  EXPECT_EQ(set("Items", 1), 0);
  EXPECT_TRUE(logTexts().empty());
  EXPECT_EQ(get("Items.Code"), "(null)");
  EXPECT_EQ(nError, -13);
  EXPECT_EQ(logTexts(),
            (Texts{"Value Index[4]: Loop index[1] is big then list[1]",
                   "Loop Node[Items] Get Loop Index[1] err!!", "Get Message[Items] Loop Vlaue List err!!",
                   "Node [Items] was not define!!", "GetValueInLoopNodeListByNodeName Err!!"}));
}

TEST_F(SetLoopTime, Accepts0OnALoopNeverStarted) {
  EXPECT_EQ(set("Items", 0), 0);
  EXPECT_EQ(get("Items.Code"), "(null)");
  EXPECT_TRUE(
      loggedInOrder({"Value Index[4]: Loop is not init!!", "Loop Node[Items] Get Loop Index[0] err!!"}));
}

TEST_F(SetLoopTime, GivesMinus15OutsideTheRange) {
  add("Items");
  EXPECT_EQ(set("Items", -1), -15);
  EXPECT_EQ(set("Items", 2), -15);
  EXPECT_EQ(logTexts(), (Texts{"Node[Items] Set Loop Index err!!", "Node[Items] Set Loop Index err!!"}));
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Items")), 0);  // as it was
}

TEST_F(SetLoopTime, GivesMinus13ForAnUnknownOutermostLoop) {
  EXPECT_EQ(set("Nothing", 0), -13);
  EXPECT_EQ(logTexts(), (Texts{"Value Index[-1] < 0 or >= max [11] err!!", "Get Filed Max Loop Time Err!!",
                               "Node[Nothing] Set Loop Index err!!"}));
}

TEST_F(SetLoopTime, GivesMinus11ForAnUnknownInnerLoop) {
  add("Items");
  EXPECT_EQ(set("Items.Nothing", 0), -11);
  EXPECT_EQ(logTexts(), (Texts{"Child Node[Nothing] Index Get Err!!",
                               "Get Message[Nothing] Index In[Items] err!!", "Node [Items] was not define!!",
                               "Field[Nothing] Get value Err!!", "Restore Node[Nothing] Value Index err!!"}));
}

TEST_F(SetLoopTime, GivesMinus11WithoutARepetitionOfTheOuterLoop) {
  EXPECT_EQ(set("Items.Lots", 0), -11);
  EXPECT_TRUE(loggedInOrder({"Loop Node [Items] Index was not set!!", "Field[Lots] Get value Err!!",
                             "Restore Node[Lots] Value Index err!!"}));
}

TEST_F(SetLoopTime, GivesMinus11WhenTheMessageHasNoSlotForTheInnerLoop) {
  add("Items");
  ptMsg->tValueListInfo.ptValueList->nNow = 6;
  EXPECT_EQ(set("Items.Lots", 0), -11);
  EXPECT_EQ(logTexts(), (Texts{"Value Index[7] < 0 or >= max [6] err!!", "Child Node[Lots] Get value Err!!",
                               "Restore Node[Lots] Value Index err!!"}));
}

TEST_F(SetLoopTime, GivesMinus13ForAFieldWithAValue) {
  put("Id", "7");
  EXPECT_EQ(set("Id", 0), -13);
  EXPECT_EQ(logTexts(), (Texts{"value Index[0] is not LoopValueList", "Get Filed Max Loop Time Err!!",
                               "Node[Id] Set Loop Index err!!"}));
}

TEST_F(SetLoopTime, GivesMinus1ForAnEmptyFieldThatIsNoLoop) {
  EXPECT_EQ(set("Id", 0), -1);
  EXPECT_EQ(logTexts(), (Texts{"Node Set Loop Index err!!", "Node[Id] Set Loop Index err!!"}));
}

TEST_F(SetLoopTime, LooksForTheOuterRepetitionThenTheCountThenTheRangeThenTheCursor) {
  EXPECT_EQ(set("Items.Lots", -1), -11);
  EXPECT_EQ(set("Items.Nothing", -1), -11);
  EXPECT_EQ(set("Nothing", -1), -13);
  EXPECT_EQ(set("Id", 1), -15);
  EXPECT_EQ(set("Id", 0), -1);
  put("Id", "7");
  EXPECT_EQ(set("Id", -1), -13);
  add("Items");
  EXPECT_EQ(set("Items.Nothing", -1), -11);
  EXPECT_EQ(set("Items.Lots", -1), -15);
}

TEST_F(SetLoopTime, GivesMinus14ForALoopPartOver1024Bytes) {
  const std::string sName = std::string(1025, 'L') + ".Lots";
  EXPECT_EQ(set(sName.c_str(), 0), -14);
  EXPECT_EQ(logTexts(), Texts{"Loop Field Name[" + sName + "] is too long"});
}

TEST_F(SetLoopTime, ChecksItsArguments) {
  InnerMessage tMsg{};
  EXPECT_EQ(cvtSetLoopTime(nullptr, nullptr, 0), -1);
  EXPECT_EQ(cvtSetLoopTime(&tMsg, nullptr, 0), -1);
  EXPECT_EQ(cvtSetLoopTime(&tMsg, cs("Items"), 0), -1);
  EXPECT_EQ(logTexts(), (Texts{"[ptMsg] is NULL", "[psLoopName] is NULL", "[ptMsg->ptMsgInfo] is NULL"}));
}

TEST_F(SetLoopTime, MovesOneCursorForAllMessagesOfTheType) {
  add("Items");
  add("Items");
  InnerMessage *const ptOther = cvtNewMessage(cs("Order"), cs("02"), &nError);
  EXPECT_EQ(cvtAddLoopTime(ptOther, cs("Items")), 0);
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Items")), 0);  // shared: the first message's moved, too
  EXPECT_EQ(count("Items"), 2);
  EXPECT_EQ(cvtGetLoopTime(ptOther, cs("Items")), 1);
  cvtFreeMessage(ptOther);
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Items")), 0);  // and it outlives the message that set it
}

// --- A loop with a count field -----------------------------------------------------------------------------

TEST_F(CountField, IsNeitherWrittenNorReadByTheRepetitions) {
  cvtFreeMessage(ptMsg);
  ptMsg = cvtNewMessage(cs("Counted"), cs("02"), &nError);
  ASSERT_NE(ptMsg, nullptr);
  ASSERT_EQ(cvtLoopSetLoopNumIndex(ptMsg->ptMsgInfo->pptMessageIdx), 0);
  EXPECT_EQ(add("Rows"), 0);
  EXPECT_EQ(set("Rows", 0), 0);
  EXPECT_EQ(get("Count"), "");
  put("Count", "77");
  EXPECT_EQ(cvtLoopGetLoopNum(&ptMsg->tValueListInfo, node("Rows")), 77);
  EXPECT_EQ(count("Rows"), 1);
  EXPECT_EQ(add("Rows"), 0);
  EXPECT_EQ(count("Rows"), 2);
  EXPECT_EQ(set("Rows", 2), 0);
  EXPECT_EQ(set("Rows", 3), -15);
  EXPECT_EQ(get("Count"), "77");
}

// --- A loop inside a loop
// -----------------------------------------------------------------------------------------

TEST_F(NestedLoop, GrowsInTheCurrentOuterRepetitionOnly) {
  add("Items");
  put("Items.Code", "A");
  add("Items");
  put("Items.Code", "B");
  EXPECT_EQ(set("Items", 0), 0);
  EXPECT_EQ(add("Items.Lots"), 0);
  EXPECT_EQ(put("Lots.Lot", "x"), 0);
  EXPECT_EQ(add("Items.Lots"), 0);
  EXPECT_EQ(put("Lots.Lot", "y"), 0);
  EXPECT_EQ(count("Items.Lots"), 2);
  set("Items", 1);
  EXPECT_EQ(count("Items.Lots"), 0);
  EXPECT_EQ(bytes(), ",,,[A,,[x,;y,;];B,,[];],");
}

TEST_F(NestedLoop, IsSeenThroughTheOuterRepetitionThatWasCurrentWhenItWasSet) {
  add("Items");
  add("Items.Lots");
  put("Lots.Lot", "x");
  add("Items");
  add("Items.Lots");
  put("Lots.Lot", "y");
  set("Items", 0);
  EXPECT_EQ(get("Lots.Lot"), "y");  // still the view of the second repetition
  EXPECT_EQ(set("Items.Lots", 0), 0);
  EXPECT_EQ(get("Lots.Lot"), "x");
}

TEST_F(NestedLoop, KeepsTheFirstRepetitionOfAnEmptySlot) {
  add("Items");
  add("Items.Lots");
  const ValueList *const ptItem = cvtGetLoopValueList(ptMsg->tValueListInfo.ptValueList, 4, 0);
  EXPECT_EQ(ptItem->ptValue[2].nLen, -1);  // the inner loop's slot in the outer repetition
  EXPECT_EQ(count("Items.Lots"), 1);
}

TEST_F(NestedLoop, AcceptsOnePastTheLast) {
  add("Items");
  add("Items.Lots");
  EXPECT_EQ(set("Items.Lots", 1), 0);
  EXPECT_EQ(set("Items.Lots", 2), -15);
}

TEST_F(NestedLoop, CannotGrowWithoutAnOuterRepetition) {
  EXPECT_EQ(add("Items.Lots"), -13);
  EXPECT_EQ(logTexts(), (Texts{"Loop Node [Items] Index was not set!!",
                               "Get Message[Items] Loop Vlaue List err!!", "Node [Items] was not define!!",
                               "Field[Lots] Get value Err!!", "Node[Lots] Set Loop Index err!!"}));
}

TEST_F(NestedLoop, GivesMinus11ForALoopThatStandsElsewhere) {
  add("Items");
  EXPECT_EQ(add("Items.Items"), -11);
  EXPECT_TRUE(loggedInOrder({"Child Node[Items] Index Get Err!!", "Field[Items] Get value Err!!",
                             "Node[Items] Set Loop Index err!!"}));
}

TEST_F(NestedLoop, GivesMinus11WhenTheMessageHasNoSlotForIt) {
  add("Items");
  ptMsg->tValueListInfo.ptValueList->nNow = 6;
  EXPECT_EQ(add("Items.Lots"), -11);
  EXPECT_EQ(logTexts(), (Texts{"Value Index[7] < 0 or >= max [6] err!!", "Child Node[Lots] Get value Err!!",
                               "Node[Lots] Set Loop Index err!!"}));
}

TEST_F(NestedLoop, GoesBackToTheFreeListsWithItsMessage) {
  InnerMessage *const ptOther = cvtNewMessage(cs("Order"), cs("02"), &nError);
  cvtAddLoopTime(ptOther, cs("Items"));
  cvtAddLoopTime(ptOther, cs("Items.Lots"));
  EXPECT_EQ(gptLoopValue, nullptr);
  cvtFreeMessage(ptOther);
  ASSERT_NE(gptLoopValue, nullptr);
  EXPECT_NE(gptLoopValue->ptNext, nullptr);
  EXPECT_EQ(gptLoopValue->nNow, 0);
}

}  // namespace

// Repetitions of loops: where each line of a failure comes from, loops three levels deep, and what the views
// of inner loops show.
#include <gtest/gtest.h>

#include <string>

#include "cvt.h"
#include "toy_config.h"
#include "trail.h"

using test::cs;
using test::Texts;
using test::then;
using test::trail;

namespace {

class Repetitions : public testing::Test {
 protected:
  void SetUp() override {
    const test::Node boxes = test::loop("Boxes", {test::field("Box")});
    const test::Node pallets = test::loop("Pallets", {test::field("Pallet"), boxes});
    const test::Node trucks = test::loop("Trucks", {test::field("Truck"), pallets});
    config.file("msg/Freight.xml", test::definition("toy", "Freight", {test::field("Id"), trucks}));
    const test::Node parts = test::loop("Parts", {test::field("Part")});
    config.file("msg/Queue.xml", test::definition("toy", "Queue", {test::loop("Jobs", {parts})}));
    const test::Node same = test::field("Same");
    const test::Node two = test::loop("Two", {test::loop("Inner", {same, test::field("More")})});
    const test::Node three =
        test::loop("Three", {test::loop("Inner", {test::field("First"), test::field("Second"), same})});
    config.file("msg/Twin.xml", test::definition("toy", "Twin", {two, three}));
    config.root.sAttributes = "nReload=\"1\"";
    config.writeRoot();
    ASSERT_EQ(config.start(), 0);
    ptMsg = create();
  }
  void TearDown() override {
    cvtFreeMessage(ptMsg);
    cvtEnd();
  }

  InnerMessage *create(const char *psName = "Freight") {
    InnerMessage *const pt = cvtNewMessage(cs(psName), cs("02"), &nError);
    EXPECT_NE(pt, nullptr);
    test::clearLog();
    return pt;
  }
  int add(const char *psLoop) { return cvtAddLoopTime(ptMsg, cs(psLoop)); }
  int set(const char *psLoop, int nTime) { return cvtSetLoopTime(ptMsg, cs(psLoop), nTime); }
  int count(const char *psLoop) { return cvtGetLoopTime(ptMsg, cs(psLoop)); }
  const Value *get(const std::string &sName) { return cvtGetNameValue(ptMsg, cs(sName.c_str()), &nError); }
  int put(const char *psName, const std::string &sValue) {
    return cvtSetNameValue(ptMsg, cs(psName), cs(sValue.c_str()), static_cast<int>(sValue.size()));
  }
  std::string bytes() {
    char sOut[512];
    int nOut = sizeof sOut;
    return cvtGenMessage(ptMsg, sOut, &nOut) == 0 ? std::string(sOut, static_cast<size_t>(nOut)) : "(failed)";
  }
  int lists() const {
    int n = 0;
    for (const ValueList *pt = ptMsg->tValueListInfo.ptValueList; pt != nullptr; pt = pt->ptNext) ++n;
    return n;
  }
  Message *node(const char *psName) const {
    Message **const pptIdx = ptMsg->ptMsgInfo->pptMessageIdx;
    return cvtIdxNode(pptIdx, cvtGetNodeIdx(pptIdx, cs(psName)));
  }

  test::ToyConfig config;
  InnerMessage *ptMsg = nullptr;
  int nError = 77;
};

using Failure = Repetitions;
using Name = Repetitions;
using Count = Repetitions;
using View = Repetitions;
using Cursor = Repetitions;

const std::string kTooLong = std::string(1025, 'L') + ".Pallets";

// What the look-up of a field logs when no repetition of Trucks is current.
const Texts kNotSet = {"cvt.cpp GetLoopValueListByMessage: Loop Node [Trucks] Index was not set!!",
                       "cvt.cpp GetLoopValueInfoStruct: Get Message[Trucks] Loop Vlaue List err!!",
                       "cvt.cpp GetValueInLoopNodeListByNodeName: Node [Trucks] was not define!!"};

// --- Failures, line by line ---------------------------------------------------------------------------

TEST_F(Failure, OfANameThatIsTooLongIsReportedByTheFunctionThatWasCalled) {
  const std::string sText = ": Loop Field Name[" + kTooLong + "] is too long";
  add(kTooLong.c_str());
  set(kTooLong.c_str(), 0);
  count(kTooLong.c_str());
  get(kTooLong);
  EXPECT_EQ(trail(), (Texts{"cvt.cpp cvtAddLoopTime" + sText, "cvt.cpp cvtSetLoopTime" + sText,
                            "cvt.cpp cvtGetLoopTime" + sText, "cvt.cpp cvtGetNameValue" + sText}));
  test::clearLog();
  put(kTooLong.c_str(), "x");
  EXPECT_EQ(trail(), (Texts{"cvt.cpp cvtSetNameValue" + sText,
                            "cvt.cpp cvtSetNameValue: Field[" + kTooLong + "] get value err!!"}));
}

TEST_F(Failure, OfAFieldInALoopWithoutACurrentRepetition) {
  EXPECT_EQ(get("Trucks.Truck"), nullptr);
  EXPECT_EQ(nError, -13);
  EXPECT_EQ(trail(), then(kNotSet, {"cvt.cpp cvtGetNameValue: GetValueInLoopNodeListByNodeName Err!!"}));
  test::clearLog();
  EXPECT_EQ(put("Trucks.Truck", "x"), -13);
  EXPECT_EQ(trail(), then(kNotSet, {"cvt.cpp cvtSetNameValue: Field[Trucks.Truck] get value err!!"}));
}

TEST_F(Failure, OfSettingAnInnerLoopWithoutAnOuterRepetition) {
  EXPECT_EQ(set("Trucks.Pallets", 0), -11);
  EXPECT_EQ(trail(), then(kNotSet, {"cvt.cpp SetLoopValueListToMsg: Field[Pallets] Get value Err!!",
                                    "cvt.cpp cvtSetLoopTime: Restore Node[Pallets] Value Index err!!"}));
}

TEST_F(Failure, OfSettingAnInnerLoopOnePastTheLastOuterRepetition) {
  add("Trucks");
  set("Trucks", 1);
  EXPECT_EQ(set("Trucks.Pallets", 0), -11);
  EXPECT_EQ(trail(),
            (Texts{"cvt_message.cpp cvtGetLoopValueList: Value Index[1]: Loop index[1] is big then list[1]",
                   "cvt.cpp GetLoopValueListByMessage: Loop Node[Trucks] Get Loop Index[1] err!!",
                   "cvt.cpp GetLoopValueInfoStruct: Get Message[Trucks] Loop Vlaue List err!!",
                   "cvt.cpp GetValueInLoopNodeListByNodeName: Node [Trucks] was not define!!",
                   "cvt.cpp SetLoopValueListToMsg: Field[Pallets] Get value Err!!",
                   "cvt.cpp cvtSetLoopTime: Restore Node[Pallets] Value Index err!!"}));
}

TEST_F(Failure, OfSettingALoopOutsideItsRangeHasOneLine) {
  EXPECT_EQ(set("Trucks", 1), -15);
  EXPECT_EQ(trail(), Texts{"cvt.cpp cvtSetLoopTime: Node[Trucks] Set Loop Index err!!"});
}

TEST_F(Failure, OfSettingAFieldThatHoldsAValue) {
  put("Id", "7");
  EXPECT_EQ(set("Id", 0), -13);
  EXPECT_EQ(test::logTexts().front(), "value Index[0] is not LoopValueList");
  const Texts all = trail();
  EXPECT_EQ(Texts(all.begin() + 1, all.end()),
            (Texts{"cvt.cpp SetLoopTimeAndCheck: Get Filed Max Loop Time Err!!",
                   "cvt.cpp cvtSetLoopTime: Node[Id] Set Loop Index err!!"}));
}

TEST_F(Failure, OfSettingAnEmptyField) {
  EXPECT_EQ(set("Id", 0), -1);
  EXPECT_EQ(trail(), (Texts{"cvt.cpp SetLoopTimeAndCheck: Node Set Loop Index err!!",
                            "cvt.cpp cvtSetLoopTime: Node[Id] Set Loop Index err!!"}));
}

TEST_F(Failure, OfAddingToAFieldThatIsNoLoop) {
  EXPECT_EQ(add("Id"), -11);
  EXPECT_EQ(trail(), (Texts{"cvt.cpp AddLoopTime: Get Loop Field Num err!!",
                            "cvt.cpp AddLoopTimeAndSetToValueList: AddLoopTime err!!",
                            "cvt.cpp cvtAddLoopTime: Node[Id] Set Loop Index err!!"}));
}

TEST_F(Failure, OfAddingToALoopThatStandsElsewhere) {
  add("Trucks");
  EXPECT_EQ(add("Trucks.Trucks"), -11);  // the look-up's own code
  EXPECT_EQ(trail(), (Texts{"cvt.cpp GetMessageIndexInLoopIndex: Child Node[Trucks] Index Get Err!!",
                            "cvt.cpp GetLoopValueInfoStruct: Get Message[Trucks] Index In[Trucks] err!!",
                            "cvt.cpp GetValueInLoopNodeListByNodeName: Node [Trucks] was not define!!",
                            "cvt.cpp SetLoopValueListToMsg: Field[Trucks] Get value Err!!",
                            "cvt.cpp cvtAddLoopTime: Node[Trucks] Set Loop Index err!!"}));
}

TEST_F(Failure, OfSettingAnInnerLoopOutsideItsRangeNamesTheInnerLoop) {
  add("Trucks");
  EXPECT_EQ(set("Trucks.Pallets", 1), -15);
  EXPECT_EQ(trail(), Texts{"cvt.cpp cvtSetLoopTime: Node[Pallets] Set Loop Index err!!"});
}

TEST_F(Failure, OfAnUnknownOuterLoop) {
  const Texts unknown = {"cvt.cpp GetLoopValueInfoStruct: Node [Nothing] was not define!!",
                         "cvt.cpp GetValueInLoopNodeListByNodeName: Node [Nothing] was not define!!",
                         "cvt.cpp SetLoopValueListToMsg: Field[Pallets] Get value Err!!"};
  EXPECT_EQ(set("Nothing.Pallets", 0), -11);
  EXPECT_EQ(trail(), then(unknown, {"cvt.cpp cvtSetLoopTime: Restore Node[Pallets] Value Index err!!"}));
  test::clearLog();
  EXPECT_EQ(add("Nothing.Pallets"), -13);  // adding keeps the look-up's own code
  EXPECT_EQ(trail(), then(unknown, {"cvt.cpp cvtAddLoopTime: Node[Pallets] Set Loop Index err!!"}));
}

TEST_F(Failure, OfAnUnknownFieldComesAfterThatOfTheRepetition) {
  EXPECT_EQ(get("Trucks.Nothing"), nullptr);
  EXPECT_EQ(nError, -13);
  EXPECT_EQ(trail(), then(kNotSet, {"cvt.cpp cvtGetNameValue: GetValueInLoopNodeListByNodeName Err!!"}));
}

TEST_F(Failure, OfAnInnerLoopThatItsRepetitionHasNoSlotFor) {
  add("Trucks");
  cvtGetLoopValueList(ptMsg->tValueListInfo.ptValueList, 1, 0)->nNow = 1;
  const Texts noSlot = {"Value Index[1] < 0 or >= max [1] err!!", "Child Node[Pallets] Get value Err!!",
                        "Field[Pallets] Get value Err!!"};
  EXPECT_EQ(add("Trucks.Pallets"), -1);
  EXPECT_EQ(test::logTexts(), then(noSlot, {"Node[Pallets] Set Loop Index err!!"}));
  test::clearLog();
  EXPECT_EQ(set("Trucks.Pallets", 0), -11);
  EXPECT_EQ(test::logTexts(), then(noSlot, {"Restore Node[Pallets] Value Index err!!"}));
}

TEST_F(Failure, OfAFieldThatIsUsedAsAnInnerLoop) {
  add("Trucks");
  EXPECT_EQ(set("Trucks.Truck", 0), -1);
  EXPECT_EQ(add("Trucks.Truck"), -11);
  put("Trucks.Truck", "t");
  EXPECT_EQ(set("Trucks.Truck", 0), -13);
  test::clearLog();
  EXPECT_EQ(count("Trucks.Truck"), -14);
  EXPECT_EQ(trail().back(), "cvt.cpp cvtGetLoopTime: Node[Truck] Get Time Err!!");
  EXPECT_EQ(bytes(), ",[t,[];]");
}

TEST_F(Failure, OfAddingToALoopWhoseBodyWasNotCounted) {
  static_cast<LoopType *>(node("Trucks")->ptStructAttr->pInfo)->nFieldNum = -1;
  EXPECT_EQ(add("Trucks"), -11);
  EXPECT_EQ(trail(), (Texts{"cvt.cpp AddLoopTime: Get Loop Field Num err!!",
                            "cvt.cpp AddLoopTimeAndSetToValueList: AddLoopTime err!!",
                            "cvt.cpp cvtAddLoopTime: Node[Trucks] Set Loop Index err!!"}));
  EXPECT_EQ(count("Trucks"), 0);
}

TEST_F(Failure, OfCountingAnInnerLoopNamesTheInnerLoop) {
  EXPECT_EQ(count("Trucks.Pallets"), -14);
  EXPECT_EQ(trail(), (Texts{"cvt.cpp GetLoopValueListByMessage: Loop Node [Trucks] Index was not set!!",
                            "cvt.cpp GetLoopValueInfoStruct: Get Message[Trucks] Loop Vlaue List err!!",
                            "cvt.cpp cvtGetLoopTime: Node [Pallets] was not define!!"}));
}

TEST_F(Failure, OfCountingAnUnknownInnerLoop) {
  add("Trucks");
  EXPECT_EQ(count("Trucks.Nothing"), -14);
  EXPECT_EQ(trail(), (Texts{"cvt.cpp GetMessageIndexInLoopIndex: Child Node[Nothing] Index Get Err!!",
                            "cvt.cpp GetLoopValueInfoStruct: Get Message[Nothing] Index In[Trucks] err!!",
                            "cvt.cpp cvtGetLoopTime: Node [Nothing] was not define!!"}));
}

TEST_F(Failure, LeavesTheListsAsTheyWere) {
  add("Trucks");
  put("Trucks.Truck", "t");
  add("Trucks.Pallets");
  put("Pallets.Pallet", "p");
  const std::string sBefore = bytes();
  EXPECT_EQ(set("Trucks", 2), -15);
  EXPECT_EQ(set("Trucks.Pallets", 2), -15);
  EXPECT_EQ(add("Nothing"), -3);
  EXPECT_EQ(add("Id"), -11);
  EXPECT_EQ(add("Trucks.Id"), -11);
  EXPECT_EQ(count("Id.Id"), -14);
  EXPECT_EQ(bytes(), sBefore);
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Trucks")), 0);
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Pallets")), 0);
}

TEST_F(Failure, TakesNoValueList) {
  add("Trucks");
  const int nLists = lists();
  EXPECT_EQ(add("Nothing"), -3);
  EXPECT_EQ(add("Id"), -11);
  EXPECT_EQ(add("Trucks.Id"), -11);
  EXPECT_EQ(add("Pallets.Boxes"), -13);
  EXPECT_EQ(add(kTooLong.c_str()), -14);
  EXPECT_EQ(set("Trucks", 2), -15);
  EXPECT_EQ(lists(), nLists);
}

TEST_F(Failure, OfAMessageWithoutValues) {
  ValueList *const ptList = ptMsg->tValueListInfo.ptValueList;
  ptMsg->tValueListInfo.ptValueList = nullptr;
  EXPECT_EQ(get("Id"), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(put("Id", "7"), -1);
  EXPECT_EQ(set("Trucks", 0), -13);
  EXPECT_EQ(count("Trucks"), -14);
  EXPECT_EQ(add("Trucks"), -13);
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Trucks")), -1);
  ptMsg->tValueListInfo.ptValueList = ptList;
}

// --- Names and counts -----------------------------------------------------------------------------------

TEST_F(Name, OfALoopMayHaveMoreOrEmptyPartsInFrontAndAnyLetterCase) {
  EXPECT_EQ(add(".TRUCKS"), 0);
  EXPECT_EQ(add("any.trucks.Pallets"), 0);
  EXPECT_EQ(add("Trucks.PALLETS"), 0);
  EXPECT_EQ(count("..Trucks"), 1);
  EXPECT_EQ(count("any.Trucks.pallets"), 2);
  EXPECT_EQ(set("any.Trucks.Pallets", 0), 0);
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Pallets")), 0);
  EXPECT_TRUE(trail().empty());
}

TEST_F(Name, OfALoopMayBeTheFirstOfAMessageAndOfABody) {
  EXPECT_EQ(cvtFreeMessage(ptMsg), 0);
  ptMsg = create("Queue");
  EXPECT_EQ(add("Jobs"), 0);
  EXPECT_EQ(add("Jobs.Parts"), 0);
  EXPECT_EQ(put("Parts.Part", "p"), 0);
  EXPECT_EQ(set("Jobs", 0), 0);
  EXPECT_EQ(set("Jobs.Parts", 0), 0);
  EXPECT_EQ(count("Jobs.Parts"), 1);
  EXPECT_EQ(bytes(), "[[p;];]");
}

TEST_F(Name, OfAnInnerLoopThatTwoLoopsHaveTakesBodyCursorAndViewOfTheFirst) {
  EXPECT_EQ(cvtFreeMessage(ptMsg), 0);
  ptMsg = create("Twin");
  ASSERT_NE(ptMsg, nullptr);
  EXPECT_EQ(add("Three"), 0);
  EXPECT_EQ(add("Three.Inner"), 0);
  EXPECT_EQ(count("Three.Inner"), 1);
  EXPECT_EQ(count("Inner"), 1);  // the view is the slot of Two's
  Message *const ptThrees = cvtIdxNode(cvtLoopGetIdx(node("Three")), 0);
  ASSERT_STREQ(ptThrees->psNodeName, "Inner");
  EXPECT_NE(ptThrees, node("Inner"));
  EXPECT_EQ(cvtLoopGetFieldNum(ptThrees), 3);
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Inner")), 0);
  EXPECT_EQ(cvtGetLoopCurrentTime(ptThrees), -1);
  const int nThree = cvtGetNodeIdx(ptMsg->ptMsgInfo->pptMessageIdx, cs("Three"));
  ValueList *const ptThree = cvtGetLoopValueList(ptMsg->tValueListInfo.ptValueList, nThree, 0);
  ASSERT_NE(ptThree, nullptr);
  ValueList *const ptInner = cvtGetLoopValueList(ptThree, 0, 0);
  ASSERT_NE(ptInner, nullptr);
  EXPECT_EQ(ptInner->nNow, 2);  // the fields of Two's
  EXPECT_EQ(get("Inner.Same"), cvtGetListValue(ptInner, 0));
  EXPECT_EQ(get("Inner.Second"), nullptr);
  EXPECT_EQ(nError, -11);
}

TEST_F(Name, OfAnInnerLoopAloneIsTheMessagesOwnSlot) {
  EXPECT_EQ(add("Pallets"), 0);  // without a repetition of Trucks
  EXPECT_EQ(count("Pallets"), 1);
  EXPECT_EQ(bytes(), ",[]");
  EXPECT_EQ(add("Trucks"), 0);
  EXPECT_EQ(add("Pallets"), 0);
  EXPECT_EQ(count("Pallets"), 2);
  EXPECT_EQ(count("Trucks.Pallets"), 0);
  EXPECT_EQ(bytes(), ",[,[];]");
  EXPECT_TRUE(trail().empty());
}

TEST_F(Count, OfAnEmptyFieldIsZeroWhateverItIs) {
  EXPECT_EQ(count("Id"), 0);
  add("Trucks");
  EXPECT_EQ(count("Trucks.Truck"), 0);
  EXPECT_TRUE(trail().empty());
}

TEST_F(Count, IsTheMessagesOwnAndLimitsItsCursor) {
  add("Trucks");
  add("Trucks");
  InnerMessage *const ptOther = create();
  EXPECT_EQ(cvtGetLoopTime(ptOther, cs("Trucks")), 0);
  EXPECT_EQ(cvtSetLoopTime(ptOther, cs("Trucks"), 1), -15);
  EXPECT_EQ(set("Trucks", 2), 0);
  EXPECT_EQ(cvtFreeMessage(ptOther), 0);
}

// --- Views of inner loops -----------------------------------------------------------------------------

TEST_F(View, OfALoopThreeLevelsDeepIsReachedThroughItsTwoLastNames) {
  add("Trucks");
  put("Trucks.Truck", "t0");
  add("Trucks.Pallets");
  put("Pallets.Pallet", "p0");
  add("Pallets.Boxes");
  put("Boxes.Box", "b0");
  add("Trucks.Pallets.Boxes");  // the first part is ignored
  put("Boxes.Box", "b1");
  add("Trucks.Pallets");
  put("Pallets.Pallet", "p1");
  add("Trucks");
  put("Trucks.Truck", "t1");
  EXPECT_EQ(bytes(), ",[t0,[p0,[b0;b1;];p1,[];];t1,[];]");
  EXPECT_EQ(set("Trucks", 0), 0);
  EXPECT_EQ(set("Trucks.Pallets", 0), 0);
  EXPECT_EQ(count("Pallets.Boxes"), 2);
  EXPECT_EQ(set("Trucks.Pallets", 1), 0);
  EXPECT_EQ(count("Pallets.Boxes"), 0);
  EXPECT_EQ(add("Pallets.Boxes"), 0);
  EXPECT_EQ(put("Boxes.Box", "b2"), 0);
  EXPECT_EQ(bytes(), ",[t0,[p0,[b0;b1;];p1,[b2;];];t1,[];]");
}

TEST_F(View, OfAnEmptyInnerLoopIsEmptyAlsoAfterOneThatWasNot) {
  add("Trucks");
  add("Trucks.Pallets");
  add("Trucks");
  EXPECT_EQ(count("Trucks.Pallets"), 0);
  EXPECT_EQ(set("Trucks.Pallets", 0), 0);
  EXPECT_EQ(set("Trucks.Pallets", 1), -15);
  EXPECT_EQ(count("Pallets"), 0);  // the view itself, in the message's own list
  set("Trucks", 0);
  EXPECT_EQ(set("Trucks.Pallets", 1), 0);
  EXPECT_EQ(count("Pallets"), 1);
}

TEST_F(View, IsNotWrittenBackBySettingARepetition) {
  add("Trucks");
  add("Trucks.Pallets");
  put("Pallets.Pallet", "p");
  add("Trucks");
  EXPECT_EQ(set("Trucks.Pallets", 0), 0);
  EXPECT_EQ(bytes(), ",[,[p,[];];,[];]");
}

TEST_F(View, IsOpenedAlsoWhereTheRepetitionIsOutsideTheRange) {
  add("Trucks");
  add("Trucks.Pallets");
  add("Trucks");
  add("Trucks.Pallets");
  add("Trucks.Pallets");
  set("Trucks", 0);
  set("Trucks.Pallets", 0);
  EXPECT_EQ(count("Pallets"), 1);
  set("Trucks", 1);
  EXPECT_EQ(count("Pallets"), 1);
  EXPECT_EQ(set("Trucks.Pallets", 9), -15);
  EXPECT_EQ(count("Pallets"), 2);
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Pallets")), 0);
}

TEST_F(View, IsNotOpenedByCounting) {
  add("Trucks");
  add("Trucks.Pallets");
  put("Pallets.Pallet", "p");
  add("Trucks");
  EXPECT_EQ(count("Trucks.Pallets"), 0);
  const Value *const pt = get("Pallets.Pallet");  // still that of the first outer repetition
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(std::string(pt->psValue, static_cast<size_t>(pt->nLen)), "p");
}

TEST_F(View, OfAFullInnerLoopStaysFullAndTheNextOuterRepetitionStartsEmpty) {
  add("Trucks");
  for (int i = 0; i < 999; ++i) ASSERT_EQ(add("Trucks.Pallets"), 0);
  EXPECT_EQ(add("Trucks.Pallets"), 0);
  EXPECT_EQ(trail(), Texts{"cvt_message.cpp cvtNewLoopValueList: Loop Num is Max then Define[999]"});
  EXPECT_EQ(count("Trucks.Pallets"), 999);
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Pallets")), 998);
  add("Trucks");
  EXPECT_EQ(add("Trucks.Pallets"), 0);
  EXPECT_EQ(count("Trucks.Pallets"), 1);
}

// --- The cursor ---------------------------------------------------------------------------------------

TEST_F(Cursor, IsMinus1UntilARepetitionIsAddedOrSet) {
  for (const char *ps : {"Trucks", "Pallets", "Boxes"}) EXPECT_EQ(cvtGetLoopCurrentTime(node(ps)), -1) << ps;
  add("Trucks");
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Trucks")), 0);
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Pallets")), -1);
}

TEST_F(Cursor, OfAFinishedMessageIsWhereTheNextOneOfItsTypeStarts) {
  add("Trucks");
  add("Trucks");
  EXPECT_EQ(cvtFreeMessage(ptMsg), 0);
  ptMsg = create();
  EXPECT_EQ(get("Trucks.Truck"), nullptr);  // repetition 1 of a loop that has none
  EXPECT_EQ(trail().front(), "cvt_message.cpp cvtGetLoopValueList: Value Index[1]: Loop is not init!!");
}

TEST_F(Cursor, GoesToTheLastRepetitionOfALoopThatIsFull) {
  for (int i = 0; i < 999; ++i) ASSERT_EQ(add("Trucks"), 0);
  set("Trucks", 0);
  EXPECT_EQ(add("Trucks"), 0);
  EXPECT_EQ(count("Trucks"), 999);
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Trucks")), 998);
}

TEST_F(Cursor, IsForgottenByAReload) {
  add("Trucks");
  EXPECT_EQ(cvtFreeMessage(ptMsg), 0);
  config.touchRoot();
  ptMsg = create();
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Trucks")), -1);
}

TEST_F(Cursor, IsNotMovedByCountingOrByFields) {
  add("Trucks");
  add("Trucks");
  set("Trucks", 0);
  EXPECT_EQ(count("Trucks"), 2);
  EXPECT_NE(get("Trucks.Truck"), nullptr);
  EXPECT_EQ(put("Trucks.Truck", "t"), 0);
  EXPECT_EQ(cvtGetLoopCurrentTime(node("Trucks")), 0);
}

}  // namespace

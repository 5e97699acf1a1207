// The loop rule: its four shapes, loops in loops, and what a failing repetition leaves behind.
#include "convert_fixture.h"

namespace {

using namespace test::xml;
using test::cs;
using test::Level;
using test::newMessage;
using Texts = std::vector<std::string>;

// In:  Id, Items(Code, Parts(Part))
// Out: Key, Rows(Name, Note, Cells(Cell))
class LoopRule : public test::ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    define("In", {field("Id"), loop("Items", {field("Code"), loop("Parts", {field("Part")})})});
    define("Out",
           {field("Key"), loop("Rows", {field("Name"), field("Note"), loop("Cells", {field("Cell")})})});
  }

  void load(const Args &rules) {
    convert("C", rules);
    if (start() != 0) ADD_FAILURE() << "the configuration does not load";
    from = newMessage("In");
    to = newMessage("Out");
    from.set("Id", "7");
  }
  void addItems(const std::vector<std::string> &codes) {
    for (const std::string &sCode : codes) from.add("Items").set("Code", sCode);
  }
  int runC() { return run("C", from, to); }

  // A field of every repetition of Rows, each followed by a blank.
  std::string rows(const char *psField) const {
    std::string s;
    for (int i = 0; i < to.count("Rows"); ++i) s += to.at("Rows", i).get(psField) + " ";
    return s;
  }

  static Texts trail(Texts inner, int nRule) {
    inner.push_back("CVT_TYPE_LOOP Err!!");
    inner.push_back("Do Convert Rule [" + std::to_string(nRule) + "] err!!");
    inner.push_back("Convert [C] From struct[In] tp Struct[Out] err!!");
    return inner;
  }

  Level from{};
  Level to{};
};

const Args kCodeToName = {copy(src("Code"), dst("Name"))};

// --- Loop to loop ----------------------------------------------------------------------------------------

TEST_F(LoopRule, AppendsOneRepetitionForEachOfTheSource) {
  load({loopRule(src("Items"), dst("Rows"), kCodeToName)});
  addItems({"a", "b", "c"});
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.count("Rows"), 3);
  EXPECT_EQ(rows("Name"), "a b c ");
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(LoopRule, OverALoopWithoutRepetitionsAddsNothing) {
  load({loopRule(src("Items"), dst("Rows"), kCodeToName)});
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.slot("Rows")->nLen, 0);  // not even started
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(LoopRule, AppendsBehindRepetitionsThatAreThere) {
  load({loopRule(src("Items"), dst("Rows"), kCodeToName)});
  to.add("Rows").set("Name", "first");
  addItems({"a"});
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(rows("Name"), "first a ");
}

TEST_F(LoopRule, NewRepetitionsHaveAllSlotsOfTheirCapacity) {
  load({loopRule(src("Items"), dst("Rows"), {})});
  addItems({"a"});
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.at("Rows", 0).ptList->nNow, gnMaxValueNum);
}

TEST_F(LoopRule, NewRepetitionsHangInTheDestinationsChain) {
  load({loopRule(src("Items"), dst("Rows"), {})});
  addItems({"a", "b"});
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.ptList->ptNext, to.at("Rows", 1).ptList);  // the newest right behind the head
  EXPECT_EQ(to.ptList->ptNext->ptNext, to.at("Rows", 0).ptList);
}

TEST_F(LoopRule, LoopsInLoopsConvertEachOuterRepetitionsOwn) {
  load({loopRule(src("Items"), dst("Rows"),
                 {copy(src("Code"), dst("Name")),
                  loopRule(src("Parts"), dst("Cells"), {copy(src("Part"), dst("Cell"))})})});
  addItems({"a", "b", "c"});
  from.at("Items", 0).add("Parts").set("Part", "a1");
  from.at("Items", 0).add("Parts").set("Part", "a2");
  from.at("Items", 2).add("Parts").set("Part", "c1");
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(rows("Name"), "a b c ");
  EXPECT_EQ(to.at("Rows", 0).count("Cells"), 2);
  EXPECT_EQ(to.at("Rows", 0).at("Cells", 1).get("Cell"), "a2");
  EXPECT_EQ(to.at("Rows", 1).count("Cells"), 0);
  EXPECT_EQ(to.at("Rows", 2).at("Cells", 0).get("Cell"), "c1");
}

TEST_F(LoopRule, RulesBehindTheLoopStandOnTheOuterLevelAgain) {
  load({loopRule(src("Items"), dst("Rows"), kCodeToName), copy(src("Id"), dst("Key"))});
  addItems({"a", "b"});
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.get("Key"), "7");
}

TEST_F(LoopRule, DoesNotMoveTheCursorOfTheDefinition) {
  load({loopRule(src("Items"), dst("Rows"), kCodeToName)});
  addItems({"a", "b"});
  cvtSetLoopCurrentTime(from.node("Items"), 1);
  cvtSetLoopCurrentTime(to.node("Rows"), 0);
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(rows("Name"), "a b ");
  EXPECT_EQ(cvtGetLoopCurrentTime(from.node("Items")), 1);
  EXPECT_EQ(cvtGetLoopCurrentTime(to.node("Rows")), 0);
}

// --- The other shapes ------------------------------------------------------------------------------------

TEST_F(LoopRule, ToTheCurrentLevelLaterRepetitionsOverwriteEarlierOnes) {
  load({loopRule(src("Items"), level(), {copy(src("Code"), dst("Key"))})});
  addItems({"a", "b", "c"});
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.get("Key"), "c");
  EXPECT_EQ(to.count("Rows"), 0);
}

TEST_F(LoopRule, FromTheCurrentLevelAddsExactlyOneRepetition) {
  load({loopRule(level(), dst("Rows"), {copy(src("Id"), dst("Name"))})});
  to.add("Rows").set("Name", "first");
  addItems({"a", "b", "c"});
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(rows("Name"), "first 7 ");
}

TEST_F(LoopRule, FromTheCurrentLevelToTheCurrentLevelRunsOnce) {
  load({loopRule(level(), level("Set"), {copy(src("Id"), dst("Key"))})});
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.get("Key"), "7");
}

class SetMode : public LoopRule, public testing::WithParamInterface<const char *> {};

TEST_P(SetMode, FillsEachRepetitionThatIsThere) {
  load({loopRule(level(GetParam()), dst("Rows"), {copy(src("Id"), dst("Note"))})});
  to.add("Rows").set("Name", "x");
  to.add("Rows").set("Name", "y");
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(rows("Name"), "x y ");
  EXPECT_EQ(rows("Note"), "7 7 ");
}

TEST_P(SetMode, WithoutRepetitionsRunsNothing) {
  load({loopRule(level(GetParam()), dst("Rows"), {copy({6, ""}, dst("Note"))})});
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.slot("Rows")->nLen, 0);
}

INSTANTIATE_TEST_SUITE_P(Names, SetMode, testing::Values("Set", "S", "Source"));

class NoSetMode : public LoopRule, public testing::WithParamInterface<const char *> {};

TEST_P(NoSetMode, AppendsOneRepetition) {
  load({loopRule(level(GetParam()), dst("Rows"), {copy(src("Id"), dst("Note"))})});
  to.add("Rows").set("Name", "x");
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(rows("Name"), "x  ");
  EXPECT_EQ(rows("Note"), " 7 ");
}

INSTANTIATE_TEST_SUITE_P(Names, NoSetMode, testing::Values("set", "s", "", " Set", "aSet"));

TEST_F(LoopRule, SetNameOnTheDestinationSideMeansNothing) {
  load({loopRule(src("Items"), level("Set"), {copy(src("Code"), dst("Key"))})});
  addItems({"a", "b"});
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.get("Key"), "b");
}

TEST_F(LoopRule, SetModeOnTheCurrentDestinationLevelRunsOnce) {
  load({loopRule(level("Set"), level(), {copy(src("Id"), dst("Key"))})});
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.get("Key"), "7");
}

TEST_F(LoopRule, LevelArgumentMayLackItsNode) {
  load({loopRule({2, ""}, dst("Rows"), {copy(src("Id"), dst("Name"))})});
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(rows("Name"), "7 ");
}

TEST_F(LoopRule, SetModeInsideALoopFillsTheInnerRepetitions) {
  load({loopRule(src("Items"), dst("Rows"),
                 {loopRule(src("Parts"), dst("Cells"), {}),
                  loopRule(level("Set"), dst("Cells"), {copy(src("Code"), dst("Cell"))})})});
  addItems({"a"});
  from.at("Items", 0).add("Parts");
  from.at("Items", 0).add("Parts");
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.at("Rows", 0).at("Cells", 0).get("Cell"), "a");
  EXPECT_EQ(to.at("Rows", 0).at("Cells", 1).get("Cell"), "a");
  EXPECT_EQ(to.at("Rows", 0).count("Cells"), 2);
}

// --- Failures --------------------------------------------------------------------------------------------

int g_nCalls = 0;
int failOnSecondCall(Value *, int, Value **, MemPort) {
  return ++g_nCalls == 2 ? 1 : 0;
}

TEST_F(LoopRule, FailingRepetitionIsNamedAndStopsTheLoop) {
  cvtConvertAddFunction(cs("second"), failOnSecondCall);
  load({copy(src("Id"), dst("Key")),
        loopRule(src("Items"), dst("Rows"),
                 {copy(src("Code"), dst("Name")), copy(func("second"), dst("Note"))})});
  addItems({"a", "b", "c"});
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"Do Func[second] err!!",
                   "[ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptSrcArgs, ptMemNode)] is NULL",
                   "CvtCopy Err!!", "Do Convert Rule [2] err!!",
                   "Convert Loop[1/3] From[Items] to [Rows]  convert err!!"},
                  2));
  EXPECT_EQ(rows("Name"), "a b ");  // what was written stays, the failing repetition too
}

TEST_F(LoopRule, FailureInALoopInALoopNamesBothRepetitions) {
  cvtConvertAddFunction(cs("second"), failOnSecondCall);
  load({loopRule(src("Items"), dst("Rows"),
                 {loopRule(src("Parts"), dst("Cells"), {copy(func("second"), dst("Cell"))})})});
  addItems({"a", "b"});
  from.at("Items", 0).add("Parts");
  from.at("Items", 1).add("Parts");
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"Do Func[second] err!!",
                   "[ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptSrcArgs, ptMemNode)] is NULL",
                   "CvtCopy Err!!", "Do Convert Rule [1] err!!",
                   "Convert Loop[0/1] From[Parts] to [Cells]  convert err!!", "CVT_TYPE_LOOP Err!!",
                   "Do Convert Rule [1] err!!", "Convert Loop[1/2] From[Items] to [Rows]  convert err!!"},
                  1));
}

TEST_F(LoopRule, OverASlotWithAPlainValueFails) {
  load({loopRule(src("Items"), dst("Rows"), {})});
  from.set("Items", "plain");
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"value Index[1] is not LoopValueList", "cvtGetLoopValueListNum err, Index[1]"}, 1));
  EXPECT_EQ(to.slot("Rows")->nLen, 0);
}

TEST_F(LoopRule, IntoASlotWithAPlainValueFailsAtTheFirstRepetition) {
  load({loopRule(src("Items"), dst("Rows"), {})});
  addItems({"a", "b"});
  to.set("Rows", "plain");
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(test::logTexts(1), trail({"value Index[1] is not LoopValueList", "[ptDstValueList] is NULL",
                                      "Convert Loop[0/2] From[Items] to [Rows]  convert err!!"},
                                     1));
}

TEST_F(LoopRule, SetModeOnASlotWithAPlainValueFails) {
  load({loopRule(level("Set"), dst("Rows"), {})});
  to.set("Rows", "plain");
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"value Index[1] is not LoopValueList", "cvtGetLoopValueListNum err, Index[1]"}, 1));
}

TEST_F(LoopRule, SourceSlotOutsideTheListFails) {
  load({loopRule(src("Items"), dst("Rows"), {})});
  from.ptList->nNow = 1;
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"Value Index[1] < 0 or >= max [1] err!!", "cvtGetLoopValueListNum err, Index[1]"}, 1));
}

TEST_F(LoopRule, NewRepetitionIsMadeEvenWhenTheSourceHasAHole) {
  load({loopRule(src("Items"), dst("Rows"), kCodeToName)});
  addItems({"a", "b"});
  auto *const ptLoopList = reinterpret_cast<ValueList *>(from.slot("Items")->psValue);
  ptLoopList->ptValue[1].psValue = nullptr;
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"[ptSrcValueList] is NULL", "Convert Loop[1/2] From[Items] to [Rows]  convert err!!"}, 1));
  EXPECT_EQ(to.count("Rows"), 2);
}

TEST_F(LoopRule, FullDestinationLoopFailsAtTheRepetitionThatHasNoRoom) {
  load({loopRule(src("Items"), dst("Rows"), kCodeToName)});
  constexpr int kMaxLoop = 999;
  for (int i = 0; i < kMaxLoop - 1; ++i) to.add("Rows");
  addItems({"a", "b"});
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(test::logTexts(1), trail({"Loop Num is Max then Define[999]", "[ptDstValueList] is NULL",
                                      "Convert Loop[1/2] From[Items] to [Rows]  convert err!!"},
                                     1));
  EXPECT_EQ(to.count("Rows"), kMaxLoop);
  EXPECT_EQ(to.at("Rows", kMaxLoop - 1).get("Name"), "a");
}

TEST_F(LoopRule, RecordWithoutSidesIsReportedWhenItRuns) {
  load({});
  ::Loop *const ptLoop = sttNewLoop(nullptr, nullptr, nullptr);
  Converter *const ptConvert = sttNewConverter(cs("C"), cs("In"), cs("Out"), sttNewArg(8, ptLoop, nullptr));
  test::clearLog();
  EXPECT_EQ(cvtConvert(from.ptList, to.ptList, ptConvert, to.ptNode), -1);
  EXPECT_EQ(test::logTexts(1), trail({"[ptLoop->ptSrcArgs] is NULL"}, 1));
  ptLoop->ptSrcArgs = sttNewArg(2, nullptr, nullptr);
  test::clearLog();
  EXPECT_EQ(cvtConvert(from.ptList, to.ptList, ptConvert, to.ptNode), -1);
  EXPECT_EQ(test::logTexts(1), trail({"[ptLoop->ptDstArgs] is NULL"}, 1));
}

TEST_F(LoopRule, SideThatIsNoNodeIsReportedWhenItRuns) {
  load({});
  ::Arg *const ptBad = sttNewArg(3, nullptr, nullptr);
  ::Loop *const ptLoop = sttNewLoop(ptBad, sttNewArg(2, nullptr, nullptr), nullptr);
  Converter *const ptConvert = sttNewConverter(cs("C"), cs("In"), cs("Out"), sttNewArg(8, ptLoop, nullptr));
  test::clearLog();
  EXPECT_EQ(cvtConvert(from.ptList, to.ptList, ptConvert, to.ptNode), -1);
  EXPECT_EQ(test::logTexts(1), trail({"Arg Type [3] err!!", "Value Index[-1] < 0 or >= max [5] err!!",
                                      "cvtGetLoopValueListNum err, Index[-1]"},
                                     1));
}

TEST_F(LoopRule, SourceIsLookedAtBeforeTheDestination) {
  load({});
  ::Loop *const ptLoop = sttNewLoop(sttNewArg(3, nullptr, nullptr), sttNewArg(4, nullptr, nullptr), nullptr);
  Converter *const ptConvert = sttNewConverter(cs("C"), cs("In"), cs("Out"), sttNewArg(8, ptLoop, nullptr));
  test::clearLog();
  EXPECT_EQ(cvtConvert(from.ptList, to.ptList, ptConvert, to.ptNode), -1);
  EXPECT_EQ(test::logTexts(1), trail({"Arg Type [3] err!!", "Value Index[-1] < 0 or >= max [5] err!!",
                                      "cvtGetLoopValueListNum err, Index[-1]"},
                                     1));
}

TEST_F(LoopRule, SideWithoutItsRecordIsReportedWhenItRuns) {
  load({});
  ::Arg *const ptNoNode = sttNewArg(0, nullptr, nullptr);
  ::Loop *const ptLoop = sttNewLoop(sttNewArg(2, nullptr, nullptr), ptNoNode, nullptr);
  Converter *const ptConvert = sttNewConverter(cs("C"), cs("In"), cs("Out"), sttNewArg(8, ptLoop, nullptr));
  test::clearLog();
  EXPECT_EQ(cvtConvert(from.ptList, to.ptList, ptConvert, to.ptNode), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"[ptArgs->pInfo] is NULL", "Value Index[-1] < 0 or >= max [6] err!!",
                   "[ptDstValueList] is NULL", "Convert Loop[0/1] From[(null)] to [(null)]  convert err!!"},
                  1));
}

}  // namespace

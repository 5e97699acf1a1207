// Rules: loops that meet a side they cannot use, rules nested in every other, and what outlives a converter's
// section or a failing file.
#include "convert_fixture.h"

namespace {

using namespace test::xml;
using test::cs;
using test::Level;
using test::newMessage;
using Texts = std::vector<std::string>;

constexpr char kCopyFails[] =
    "[ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptSrcArgs, ptMemNode)] is NULL";

int g_nCalls = 0;
int failOnSecondCall(Value *, int, Value **, MemPort) {
  return ++g_nCalls == 2 ? 1 : 0;
}

// In:  Id, Items(Code, Parts(Part))
// Out: Key, Rows(Name, Cells(Cell))
class Rule : public test::ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    cvtConvertAddFunction(cs("second"), failOnSecondCall);
    define("In", {field("Id"), loop("Items", {field("Code"), loop("Parts", {field("Part")})})});
    define("Out", {field("Key"), loop("Rows", {field("Name"), loop("Cells", {field("Cell")})})});
  }

  void load(const Args &rules) {
    convert("C", rules);
    ASSERT_EQ(start(), 0);
    from = newMessage("In");
    to = newMessage("Out");
    from.set("Id", "7");
  }
  int runC() { return run("C", from, to); }

  // Runs one loop rule whose sides are made by hand, as no file can have them.
  int runLoop(::Arg *ptFrom, ::Arg *ptTo) {
    ::Arg *const ptRule = sttNewArg(8, sttNewLoop(ptFrom, ptTo, nullptr), nullptr);
    test::clearLog();
    return cvtConvert(from.ptList, to.ptList, sttNewConverter(cs("C"), cs("In"), cs("Out"), ptRule),
                      to.ptNode);
  }
  static ::Arg *side(int nType, void *pInfo = nullptr) { return sttNewArg(nType, pInfo, nullptr); }
  static ::Arg *setSide() { return side(2, sttNewNode(2, cs("Set"))); }

  // The section, read once more for another directory.
  void *readSection(const std::string &sPath) {
    tree.file("section.xml", "<Convert psCvtPath='" + sPath + "'/>");
    void *const ptDoc = xmlFileParse(tree.arg("section.xml"));
    test::clearLog();
    void *const pt = cvtCvtInit(xmlGetHeadNode(ptDoc), cs("Convert"));
    xmlDocFree(ptDoc);
    return pt;
  }

  // The functions that the lines come from, those of value lists left out.
  static Texts functions() {
    Texts all;
    for (const test::LogLine &line : test::logLines())
      if (line.sFile != "cvt_message.cpp") all.push_back(line.sFunction);
    return all;
  }

  static Texts trail(Texts inner) {
    inner.push_back("Do Convert Rule [1] err!!");
    inner.push_back("Convert [C] From struct[In] tp Struct[Out] err!!");
    return inner;
  }

  Level from{};
  Level to{};
};

using LoopSide = Rule;
using Nesting = Rule;
using Registry = Rule;

// --- Sides of a loop -------------------------------------------------------------------------------------

TEST_F(LoopSide, DestinationIsLookedAtEvenWithoutRepetitions) {
  load({});
  EXPECT_EQ(runLoop(side(0, sttNewNode(2, nullptr)), side(3)), -1);  // no position: no count
  EXPECT_EQ(test::logTexts(), trail({"Value Index[-1] < 0 or >= max [5] err!!",
                                     "cvtGetLoopValueListNum err, Index[-1]", "CVT_TYPE_LOOP Err!!"}));
  auto *const ptItems = sttNewNode(2, cs("Items"));
  ptItems->nIdx = from.position("Items");
  EXPECT_EQ(runLoop(side(0, ptItems), side(3)), 0);
  EXPECT_EQ(test::logTexts(), Texts{"Arg Type [3] err!!"});
}

TEST_F(LoopSide, ThatHasNoNameAsksForNoSetMode) {
  load({});
  EXPECT_EQ(runLoop(side(2, sttNewNode(2, nullptr)), side(3)), -1);
  EXPECT_EQ(
      test::logTexts(),
      trail({"Arg Type [3] err!!", "Value Index[-1] < 0 or >= max [5] err!!", "[ptDstValueList] is NULL",
             "Convert Loop[0/1] From[(null)] to [(null)]  convert err!!", "CVT_TYPE_LOOP Err!!"}));
}

TEST_F(LoopSide, DestinationThatIsNoNodeFailsSetMode) {
  load({});
  EXPECT_EQ(runLoop(setSide(), side(3)), -1);
  EXPECT_EQ(test::logTexts(), trail({"Arg Type [3] err!!", "Value Index[-1] < 0 or >= max [5] err!!",
                                     "cvtGetLoopValueListNum err, Index[-1]", "CVT_TYPE_LOOP Err!!"}));
}

TEST_F(LoopSide, FailureInSetModeNamesTheSetAndTheRepetition) {
  load({loopRule(level("Set"), dst("Rows"),
                 {copy(src("Id"), dst("Name")), copy(func("second"), dst("Name"))})});
  for (int i = 0; i < 3; ++i) to.add("Rows");
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(test::logTexts(),
            trail({"Do Func[second] err!!", kCopyFails, "CvtCopy Err!!", "Do Convert Rule [2] err!!",
                   "Convert Loop[1/3] From[Set] to [Rows]  convert err!!", "CVT_TYPE_LOOP Err!!"}));
  EXPECT_EQ(to.count("Rows"), 3);
  EXPECT_EQ(to.at("Rows", 1).get("Name"), "7");
  EXPECT_EQ(to.at("Rows", 2).get("Name"), "");
}

TEST_F(LoopSide, FailureOnTheCurrentLevelNamesIt) {
  load({loopRule(src("Items"), level("here"), {copy(level(), dst("Key"))})});
  from.add("Items");
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(test::logTexts(),
            trail({"No Defined Arg Type [2] err!!", kCopyFails, "CvtCopy Err!!", "Do Convert Rule [1] err!!",
                   "Convert Loop[0/1] From[Items] to [here]  convert err!!", "CVT_TYPE_LOOP Err!!"}));
}

TEST_F(LoopSide, SetModeCountsWhatEarlierRulesHaveAdded) {
  load({loopRule(level("Set"), dst("Rows"), {}), loopRule(src("Items"), dst("Rows"), {}),
        loopRule(level("Set"), dst("Rows"), {copy(src("Id"), dst("Name"))})});
  from.add("Items");
  from.add("Items");
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.count("Rows"), 2);
  EXPECT_EQ(to.at("Rows", 1).get("Name"), "7");
}

TEST_F(LoopSide, RepetitionsAreCountedOnceAlsoWhenTheLoopAddsToThem) {
  load({});
  auto *const ptRows = sttNewNode(2, cs("Rows"));
  ptRows->nIdx = to.position("Rows");
  to.add("Rows");
  from = to;  // every pass appends to the list that is counted
  EXPECT_EQ(runLoop(side(0, ptRows), side(1, ptRows)), 0);
  EXPECT_EQ(to.count("Rows"), 2);
}

TEST_F(LoopSide, IsOfItsOwnMessageWhateverItsCode) {
  load({loopRule(node(1, 1, "Rows"), node(0, 0, "Items"), {copy(src("Code"), dst("Name"))})});
  to.add("Rows").set("Name", "first");
  from.add("Items").set("Code", "a");
  from.add("Items").set("Code", "b");
  EXPECT_EQ(runC(), 0);
  ASSERT_EQ(to.count("Rows"),
            3);  // the positions are equal: counted in the source, appended to the destination
  EXPECT_EQ(to.at("Rows", 0).get("Name"), "first");
  EXPECT_EQ(to.at("Rows", 2).get("Name"), "b");
  EXPECT_EQ(from.count("Items"), 2);
}

TEST_F(LoopSide, SetModeFailsAtARepetitionWithoutAList) {
  load({loopRule(level("Set"), dst("Rows"), {copy(src("Id"), dst("Name"))})});
  for (int i = 0; i < 3; ++i) to.add("Rows");
  const Level last = to.at("Rows", 2);
  reinterpret_cast<ValueList *>(to.slot("Rows")->psValue)->ptValue[1].psValue = nullptr;
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(test::logTexts(),
            trail({"[ptDstValueList] is NULL", "Convert Loop[1/3] From[Set] to [Rows]  convert err!!",
                   "CVT_TYPE_LOOP Err!!"}));
  EXPECT_EQ(to.at("Rows", 0).get("Name"), "7");
  EXPECT_EQ(last.get("Name"), "");
}

TEST_F(LoopSide, CopyOfALoopSharesItsRepetitions) {
  load({copy(src("Items"), dst("Rows"))});
  from.add("Items").set("Code", "a");
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.slot("Rows")->nLen, -1);
  EXPECT_EQ(to.slot("Rows")->psValue, from.slot("Items")->psValue);
  EXPECT_EQ(to.count("Rows"), 1);
}

TEST_F(Rule, CopyThatLacksItsSlotIsCountedAmongAllRules) {
  load({dst("Key"), copy(src("Id"), dst("Key")), copy(src("Id"), dst("Name")), copy(src("Code"), dst("Key")),
        copy(src("Id"), dst("Cells"))});
  from.ptList->nNow = 1;
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(test::logTexts(),
            (Texts{"Value Index[2] < 0 or >= max [1] err!!", "Src Msg Get Filed By Id[Code)2] err!!",
                   kCopyFails, "CvtCopy Err!!", "Do Convert Rule [4] err!!",
                   "Convert [C] From struct[In] tp Struct[Out] err!!"}));
  EXPECT_EQ(to.get("Key"), "7");
  EXPECT_EQ(to.get("Name"), "7");
  EXPECT_EQ(to.get("Cells"), "");
}

TEST_F(Rule, CodeSaysWhoseSlotAndNodeWhichOne) {
  load({copy(node(0, 1, "Name"), node(1, 0, "Id"))});
  from.set("Code", "c");  // stands where Name stands in Out, as Id where Key does
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.get("Key"), "c");
  EXPECT_EQ(from.get("Id"), "7");
}

TEST_F(Rule, CopyMayGoToAValueThatIsComputed) {
  load({copy(src("Id"), loopNum(src("Items"))), copy(loopNum(src("Items")), dst("Key"))});
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.get("Key"), "0");
  EXPECT_EQ(from.count("Items"), 0);
  EXPECT_TRUE(test::logLines().empty());
}

// --- Rules in rules --------------------------------------------------------------------------------------

TEST_F(Nesting, EveryRuleAddsItsLinesFromTheInnermostOutward) {
  const Args broken = {src("Part"), copy(level(), dst("Cell"))};
  const Args innerLoop = {loopRule(src("Parts"), dst("Cells"), broken)};
  const ArgXml inMapping = mapping({src("Code")}, {tagged(value("b"), innerLoop)});
  const ArgXml inCase =
      cases({when({equal(value("1"), value("2"))}, {}), otherwise({dst("Name"), inMapping})});
  load({loopRule(src("Items"), dst("Rows"), {copy(src("Code"), dst("Name")), inCase})});
  for (const char *psCode : {"a", "b", "c"}) from.add("Items").set("Code", psCode).add("Parts");
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(test::logTexts(),
            trail({"No Defined Arg Type [2] err!!", kCopyFails, "CvtCopy Err!!", "Do Convert Rule [2] err!!",
                   "Convert Loop[0/1] From[Parts] to [Cells]  convert err!!", "CVT_TYPE_LOOP Err!!",
                   "Do Convert Rule [1] err!!", "StructConvert err!!\n", "CvtMapping err!!",
                   "Do Convert Rule [2] err!!", "CvtCase Err!!", "Do Convert Rule [2] err!!",
                   "Convert Loop[1/3] From[Items] to [Rows]  convert err!!", "CVT_TYPE_LOOP Err!!"}));
  EXPECT_EQ(to.count("Rows"), 2);
  EXPECT_EQ(to.at("Rows", 0).count("Cells"), 0);
  EXPECT_EQ(to.at("Rows", 1).count("Cells"), 1);  // the repetition that failed stays
}

TEST_F(Nesting, EveryLineIsOfLevelOneAndOfTheLibrary) {
  load({copy(level(), dst("Key"))});
  EXPECT_EQ(runC(), -1);
  ASSERT_EQ(test::logLines().size(), 5U);
  for (const test::LogLine &line : test::logLines()) {
    EXPECT_EQ(line.nLevel, 1) << line.sText;
    EXPECT_EQ(line.sModule, "$cvt2") << line.sText;
    EXPECT_EQ(line.sFile.rfind("cvt_convert", 0), 0U) << line.sText;
    EXPECT_GT(line.nLine, 0) << line.sText;
    EXPECT_NE(line.sFunction, "") << line.sText;
  }
}

// The walker of the rules, the rule, and what looks for its values: each line is of the one that failed.
TEST_F(Nesting, EveryLineSaysWhoFailed) {
  const Args broken = {mapping({src("Code")}, {tagged(value("a"), {copy(level(), dst("Name"))})})};
  load({cases({otherwise({loopRule(src("Items"), dst("Rows"), broken)})})});
  from.add("Items").set("Code", "a");
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(functions(), (Texts{"GetValue", "CvtCopy", "StructConvert", "StructConvert", "CvtMapping",
                                "StructConvert", "StructConvert", "CvtLoop", "StructConvert", "StructConvert",
                                "StructConvert", "StructConvert", "cvtConvert"}));
}

struct Failing {
  const char *psName;
  ArgXml rule;
  Texts functions;  // of the first lines
};
class FailingRule : public Rule, public testing::WithParamInterface<Failing> {};

TEST_P(FailingRule, SaysWhoFailed) {
  load({GetParam().rule});
  from.set("Items", "no loop");
  from.ptList->nNow = 2;
  to.ptList->nNow = 1;
  g_nCalls = 1;
  EXPECT_EQ(runC(), -1);
  Texts expected = GetParam().functions;
  expected.insert(expected.end(), {"StructConvert", "StructConvert", "cvtConvert"});
  EXPECT_EQ(functions(), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, FailingRule,
    testing::Values(
        Failing{"Destination", copy(src("Id"), dst("Rows")), {"GetValue", "CvtCopy"}},
        Failing{"Source", copy(src("Parts"), dst("Key")), {"GetValue", "CvtCopy"}},
        Failing{"Function", copy(func("second"), dst("Key")), {"DoFunc", "CvtCopy"}},
        Failing{"Count", copy(loopNum(src("Items")), dst("Key")), {"InnerGetLoopNum", "CvtCopy"}},
        Failing{"CountOfNoNode",
                copy(loopNum(level()), dst("Key")),
                {"GetNodeValueIndex", "InnerGetLoopNum", "CvtCopy"}},
        Failing{"JudgesDestination", cases({when({equal(src("Id"), level())}, {})}), {"GetValue", "CvtCase"}},
        Failing{"JudgesSource", cases({when({equal(level(), src("Id"))}, {})}), {"GetValue", "CvtCase"}},
        Failing{"MappingsValue", mapping({level()}, {}), {"GetValue", "CvtMapping"}},
        Failing{"MappingsTag", mapping({src("Id")}, {untagged({})}), {"GetValue", "CvtMapping"}},
        Failing{"LoopsSource", loopRule(src("Items"), level(), {}), {"CvtLoop"}},
        Failing{"LoopsDestination", loopRule(level("Set"), dst("Rows"), {}), {"CvtLoop"}},
        Failing{"NewRepetition", loopRule(level(), dst("Rows"), {}), {"StructConvert", "CvtLoop"}},
        Failing{"Piece", sql({level()}), {"GetValue", "CvtSql"}}),
    [](const auto &p) { return std::string(p.param.psName); });

TEST_F(Nesting, RulesRunAgainAfterAFailure) {
  load({copy(func("second"), dst("Key")), copy(src("Id"), dst("Key"))});
  g_nCalls = 1;
  EXPECT_EQ(runC(), -1);
  EXPECT_EQ(to.get("Key"), "");
  EXPECT_EQ(runC(), 0);
  EXPECT_EQ(to.get("Key"), "7");
}

// --- The registry of converters --------------------------------------------------------------------------

TEST_F(Registry, FileThatFailsLeavesTheConvertersReadBefore) {
  load({});
  const Converter *const pt = cvtGetCvt(cs("C"));
  tree.file("Other/n.xml", converter("N", "In", "Nowhere", {}));
  EXPECT_EQ(readSection("Other"), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(cvtGetCvt(cs("C")), pt);
  EXPECT_EQ(cvtGetCvt(cs("N")), nullptr);
}

TEST_F(Registry, NewestConverterStandsFirst) {
  load({});
  tree.file("Other/n.xml", converter("C", "Out", "In", {}));
  EXPECT_EQ(readSection("Other"), gptCvtGlobalInfo);
  EXPECT_STREQ(cvtGetDst(cvtGetCvt(cs("C"))), "In");
  EXPECT_EQ(gptCvtGlobalInfo->ptCvtList->ptInfo, cvtGetCvt(cs("C")));
  EXPECT_STREQ(gptCvtGlobalInfo->ptCvtList->ptNext->psString, "C");
  EXPECT_STREQ(gptCvtGlobalInfo->ptArgs->psCvtPath, "Other");
}

TEST_F(Registry, ConverterInHandWorksBehindTheEnd) {
  load({copy(src("Id"), dst("Key"))});
  Converter *const pt = cvtGetCvt(cs("C"));
  EXPECT_EQ(cvtCvtEnd(), 0);
  EXPECT_EQ(cvtConvert(from.ptList, to.ptList, pt, to.ptNode), 0);
  EXPECT_EQ(to.get("Key"), "7");
  EXPECT_EQ(cvtCvtEnd(), 0);
}

TEST_F(Registry, DestinationNameIsWhatTheRecordHolds) {
  load({});
  Converter *const pt = sttNewConverter(cs("N"), nullptr, nullptr, nullptr);
  EXPECT_EQ(cvtGetDst(pt), nullptr);
  EXPECT_TRUE(test::logTexts(1).empty());
}

TEST_F(Registry, NoConverterHasNoDestination) {
  load({});
  EXPECT_EQ(cvtGetDst(nullptr), nullptr);
  EXPECT_EQ(test::logTexts(1), std::vector<std::string>{"[ptConvert] is NULL"});
}

}  // namespace

// The registry of converters, and the rules copy, case and mapping. Loops: cvt_convert_loop_test.cpp.
#include "convert_fixture.h"

namespace {

using namespace test::xml;
using test::cs;
using test::Level;
using test::newMessage;
using Texts = std::vector<std::string>;

constexpr char kSrcOutOfList[] = "Value Index[0] < 0 or >= max [0] err!!";

class Rules : public test::ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    define("In", {field("A"), field("B"), field("C")});
    define("Out", {field("X"), field("Y"), field("Z")});
  }

  // Starts with one converter, C, and runs it from A, B, C to `to`.
  int runOnly(const Args &rules) {
    convert("C", rules);
    if (start() != 0) ADD_FAILURE() << "the configuration does not load";
    from = newMessage("In");
    to = newMessage("Out");
    from.set("A", "a").set("B", "b").set("C", "c");
    return run("C", from, to);
  }

  // The trail of converter C behind the texts of the rule that failed.
  static Texts trail(Texts inner, int nRule) {
    inner.push_back("Do Convert Rule [" + std::to_string(nRule) + "] err!!");
    inner.push_back("Convert [C] From struct[In] tp Struct[Out] err!!");
    return inner;
  }

  Level from{};
  Level to{};
};

using ConverterRegistry = Rules;
using RuleList = Rules;
using CopyRule = Rules;
using CaseRule = Rules;
using MappingRule = Rules;

// --- Registry --------------------------------------------------------------------------------------------

TEST_F(ConverterRegistry, FindsConvertersByExactName) {
  convert("First", {});
  convert("Second", {});
  ASSERT_EQ(start(), 0);
  test::clearLog();
  ASSERT_NE(cvtGetCvt(cs("First")), nullptr);
  EXPECT_STREQ(cvtGetCvt(cs("First"))->psName, "First");
  EXPECT_STREQ(cvtGetCvt(cs("Second"))->psName, "Second");
  EXPECT_EQ(cvtGetCvt(cs("first")), nullptr);
  EXPECT_EQ(cvtGetCvt(cs("Firs")), nullptr);
  EXPECT_EQ(cvtGetCvt(cs("")), nullptr);
  EXPECT_EQ(cvtGetCvt(nullptr), nullptr);
  EXPECT_TRUE(test::logLines().empty());  // not being there is no error
}

TEST_F(ConverterRegistry, SectionRecordIsTheGlobalRecord) {
  convert("C", {});
  ASSERT_EQ(start(), 0);
  EXPECT_EQ(gptAllInfo->ptConvert, gptCvtGlobalInfo);
  EXPECT_STREQ(gptCvtGlobalInfo->ptArgs->psCvtPath, "Cvt");
  EXPECT_EQ(nGRet, 0);
}

TEST_F(ConverterRegistry, SectionWithoutPathLoadsNothingAndSucceeds) {
  convert("C", {});
  ASSERT_EQ(start(""), 0);
  EXPECT_EQ(test::logTexts(1), Texts());
  ASSERT_NE(gptCvtGlobalInfo, nullptr);
  EXPECT_EQ(cvtGetCvt(cs("C")), nullptr);
}

TEST_F(ConverterRegistry, MissingDirectoryIsNoError) {
  ASSERT_EQ(start(), 0);
  EXPECT_EQ(test::logTexts(1),
            Texts{"Open Dir [" + tree.path("Cvt") + "] err:[No such file or directory]!!"});
}

TEST_F(ConverterRegistry, LookUpBeforeTheSectionLogsAndFails) {
  test::clearLog();
  EXPECT_EQ(cvtGetCvt(cs("C")), nullptr);
  EXPECT_EQ(test::logTexts(1), Texts{"[gptCvtGlobalInfo] is NULL"});
}

TEST_F(ConverterRegistry, OfTwoConvertersOfOneNameTheOneLoadedLastWins) {
  tree.file("Cvt/one.xml", converter("Same", "In", "Out", {}));
  tree.file("Cvt/two.xml", converter("Same", "Out", "In", {}));
  ASSERT_EQ(start(), 0);
  std::string sLast;
  for (const std::string &sText : test::logTexts(5)) {
    if (sText == "Load File [one.xml] ok" || sText == "Load File [two.xml] ok") sLast = sText;
  }
  const bool bTwo = sLast == "Load File [two.xml] ok";
  EXPECT_STREQ(cvtGetCvt(cs("Same"))->psDstStructName, bTwo ? "In" : "Out");
}

TEST_F(ConverterRegistry, DestinationIsTheConvertersOwn) {
  convert("C", {});
  ASSERT_EQ(start(), 0);
  EXPECT_STREQ(cvtGetDst(cvtGetCvt(cs("C"))), "Out");
}

TEST_F(ConverterRegistry, FileWithAnotherRootElementFailsTheStart) {
  tree.file("Cvt/c.xml", "<Converts><Converter psName='C'/></Converts>");
  EXPECT_EQ(start(), -1);
  EXPECT_EQ(test::logTexts(1), startTrail("c", {"[Convert] is different then xml root name[Converts]"}));
  EXPECT_EQ(gptAllInfo, nullptr);
  EXPECT_EQ(nGRet, -1);
}

TEST_F(ConverterRegistry, FileThatIsNoXmlFailsTheStartAndNamesTheLine) {
  tree.file("Cvt/c.xml", "<Convert>\n<Converter\n");
  EXPECT_EQ(start(), -1);
  const Texts texts = test::logTexts(1);
  ASSERT_GE(texts.size(), 2U);
  EXPECT_EQ(texts[0], "[ptXmlDoc = xmlFileParse(psFileName)] is NULL");
  EXPECT_EQ(texts[1].rfind("File[" + file("c") + "] line ", 0), 0U) << texts[1];
  EXPECT_EQ(texts[2], "Init Convert define: load file[" + file("c") + "] err!!");
}

TEST_F(ConverterRegistry, EmptyFileFailsTheStart) {
  tree.file("Cvt/c.xml", "<Convert/>");
  EXPECT_EQ(start(), -1);
  EXPECT_EQ(test::logTexts(1), startTrail("c", {"[ptHeadNode = xmlGetChileNode(ptXmlRoot)] is NULL"}));
}

TEST_F(ConverterRegistry, ConverterWithoutNameFailsAndEmptiesTheRegistry) {
  convert("C", {});
  ASSERT_EQ(start(), 0);
  ASSERT_NE(cvtGetCvt(cs("C")), nullptr);
  std::string sFile = tree.file("Other/n.xml",
                                "<Convert><Converter psSrcStructName='In' "
                                "psDstStructName='Out'/></Convert>")
                          .path("Other");
  tree.file("section.xml", "<Convert psCvtPath='Other'/>");
  void *const ptDoc = xmlFileParse(tree.arg("section.xml"));
  test::clearLog();
  EXPECT_EQ(cvtCvtInit(xmlGetHeadNode(ptDoc), cs("Convert")), nullptr);
  xmlDocFree(ptDoc);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(test::logTexts(1), (Texts{
                                   "[psString] is NULL",
                                   "Add ptConvert[(null)] to global define Err!!",
                                   "Parse File[" + tree.path("Other/n.xml") + "] Err!!",
                                   "Init[n.xml] err !!",
                                   "Convert Pare Path[Other] err!!",
                               }));
  EXPECT_EQ(gptCvtGlobalInfo->ptCvtList, nullptr);
  EXPECT_EQ(cvtGetCvt(cs("C")), nullptr);
}

TEST_F(ConverterRegistry, FirstFailingFileStopsTheLoading) {
  tree.file("Cvt/a.xml", "<Bad><x/></Bad>").file("Cvt/b.xml", "<Bad><x/></Bad>");
  EXPECT_EQ(start(), -1);
  int nReported = 0;
  for (const std::string &sText : test::logTexts(1)) nReported += sText.rfind("Init Convert define", 0) == 0;
  EXPECT_EQ(nReported, 1);
}

TEST_F(ConverterRegistry, SecondSectionKeepsWhatWasThere) {
  convert("C", {});
  ASSERT_EQ(start(), 0);
  CvtGlobalInfo *const ptInfo = gptCvtGlobalInfo;
  Converter *const ptConverter = cvtGetCvt(cs("C"));
  EXPECT_EQ(cvtCvtInit(nullptr, cs("Convert")), ptInfo);
  EXPECT_EQ(cvtGetCvt(cs("C")), ptConverter);
}

TEST_F(ConverterRegistry, NextGenerationMayLieAtTheSameAddresses) {
  cvtEnd();
  const StringList *ptOther = nullptr;
  for (const char *psName : {"One", "Second"}) {
    cvtCvtEnd();
    cvtEndDict();
    cvtMemReset();
    cvtConvertAddFunction(cs("f"), [](Value *, int, Value **, MemPort) { return 0; });
    static int nConverter = 0;
    gptCvtGlobalInfo->ptCvtList = cvtStrAddStringList(nullptr, cs(psName), &nConverter);
    EXPECT_NE(cvtGetCvt(cs(psName)), nullptr) << psName;
    EXPECT_EQ(ptOther == gptCvtGlobalInfo->ptCvtList, ptOther != nullptr);  // or this test shows nothing
    ptOther = gptCvtGlobalInfo->ptCvtList;
  }
  EXPECT_EQ(cvtGetCvt(cs("One")), nullptr);
}

TEST_F(ConverterRegistry, IsForgottenByItsEnd) {
  convert("C", {});
  ASSERT_EQ(start(), 0);
  EXPECT_EQ(cvtCvtEnd(), 0);
  EXPECT_EQ(gptCvtGlobalInfo, nullptr);
  EXPECT_EQ(cvtGetCvt(cs("C")), nullptr);
}

// --- Rule lists ------------------------------------------------------------------------------------------

int g_nCalls = 0;
int countCall(Value *, int, Value **, MemPort) {
  ++g_nCalls;
  return 0;
}

TEST_F(RuleList, EmptyListSucceeds) {
  EXPECT_EQ(runOnly({}), 0);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(RuleList, CodesThatAreNoRulesDoNothing) {
  cvtConvertAddFunction(cs("count"), countCall);
  const ArgXml skippedFunction = func("count");
  EXPECT_EQ(runOnly({src("A"),
                     dst("X"),
                     level(),
                     value("v"),
                     skippedFunction,
                     {5, value("v").sRecord},
                     loopNum(src("A")),
                     {12, ""},
                     {-1, ""},
                     {10, ""}}),
            0);
  EXPECT_TRUE(test::logLines().empty());
  EXPECT_EQ(g_nCalls, 0);
  EXPECT_EQ(to.slot("X")->psValue, nullptr);
  EXPECT_EQ(to.slot("X")->nLen, 0);
}

TEST_F(RuleList, FailingRuleIsCountedWithTheSkippedOnes) {
  EXPECT_EQ(runOnly({value("skipped"), {10, ""}, copy(level(), dst("X"))}), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"No Defined Arg Type [2] err!!",
                   "[ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptSrcArgs, ptMemNode)] is NULL",
                   "CvtCopy Err!!"},
                  3));
}

TEST_F(RuleList, StopsAtTheFailingRuleAndKeepsWhatWasWritten) {
  EXPECT_EQ(runOnly({copy(src("A"), dst("X")), copy(level(), dst("Y")), copy(src("C"), dst("Z"))}), -1);
  EXPECT_EQ(to.get("X"), "a");
  EXPECT_EQ(to.slot("Y")->psValue, nullptr);
  EXPECT_EQ(to.slot("Z")->psValue, nullptr);
}

TEST_F(RuleList, MissingSourceListIsReportedFirst) {
  runOnly({});
  test::clearLog();
  EXPECT_EQ(cvtConvert(nullptr, nullptr, cvtGetCvt(cs("C")), to.ptNode), -1);
  EXPECT_EQ(test::logTexts(1),
            (Texts{"[ptSrcValueList] is NULL", "Convert [C] From struct[In] tp Struct[Out] err!!"}));
}

TEST_F(RuleList, MissingDestinationListIsReported) {
  runOnly({});
  test::clearLog();
  EXPECT_EQ(cvtConvert(from.ptList, nullptr, cvtGetCvt(cs("C")), to.ptNode), -1);
  EXPECT_EQ(test::logTexts(1),
            (Texts{"[ptDstValueList] is NULL", "Convert [C] From struct[In] tp Struct[Out] err!!"}));
}

TEST_F(RuleList, MissingConverterIsReported) {
  runOnly({});
  test::clearLog();
  EXPECT_EQ(cvtConvert(from.ptList, to.ptList, nullptr, to.ptNode), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"[ptConvert] is NULL"});
}

TEST_F(RuleList, SourceListIsNotComparedWithTheConvertersSource) {
  runOnly({copy(src("B"), dst("X"))});
  const Level other = newMessage("Out");
  other.set("Y", "second");
  EXPECT_EQ(run("C", other, to), 0);
  EXPECT_EQ(to.get("X"), "second");
}

struct RuleCode {
  int nType;
  const char *psRecord;
  const char *psRule;
};
class RuleWithoutRecord : public Rules, public testing::WithParamInterface<RuleCode> {};

TEST_P(RuleWithoutRecord, FailsAndNamesTheRecord) {
  EXPECT_EQ(runOnly({{GetParam().nType, ""}}), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"[" + std::string(GetParam().psRecord) + "] is NULL", GetParam().psRule}, 1));
}

INSTANTIATE_TEST_SUITE_P(Rules, RuleWithoutRecord,
                         testing::Values(RuleCode{6, "ptCopy", "CvtCopy Err!!"},
                                         RuleCode{7, "ptCase", "CvtCase Err!!"},
                                         RuleCode{8, "ptLoop", "CVT_TYPE_LOOP Err!!"},
                                         RuleCode{9, "ptLoop", "CvtSql Err!!"},
                                         RuleCode{11, "ptMapping", "CvtMapping err!!"}),
                         [](const auto &p) { return "OfCode" + std::to_string(p.param.nType); });

// --- Copy ------------------------------------------------------------------------------------------------

TEST_F(CopyRule, SharesTheSourcesBytes) {
  EXPECT_EQ(runOnly({copy(src("B"), dst("Y"))}), 0);
  EXPECT_EQ(to.slot("Y")->psValue, from.slot("B")->psValue);
  EXPECT_EQ(to.slot("Y")->nLen, 1);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(CopyRule, SharesAConstantsBytes) {
  EXPECT_EQ(runOnly({copy(value("fixed"), dst("Y"))}), 0);
  EXPECT_EQ(to.get("Y"), "fixed");
  EXPECT_EQ(to.slot("Y")->psValue, cvtStrDup(cs("fixed")));
}

TEST_F(CopyRule, EmptyValueClearsTheDestination) {
  runOnly({copy(src("A"), dst("X"))});
  const Level empty = newMessage("In");
  to.set("X", "before");
  EXPECT_EQ(run("C", empty, to), 0);
  EXPECT_EQ(to.slot("X")->psValue, nullptr);
  EXPECT_EQ(to.slot("X")->nLen, 0);
}

TEST_F(CopyRule, MayReadTheDestination) {
  EXPECT_EQ(runOnly({copy(src("A"), dst("X")), copy(dst("X"), dst("Y"))}), 0);
  EXPECT_EQ(to.get("Y"), "a");
}

TEST_F(CopyRule, MayOverwriteTheSource) {
  EXPECT_EQ(runOnly({copy(value("new"), src("A")), copy(src("A"), dst("X"))}), 0);
  EXPECT_EQ(from.get("A"), "new");
  EXPECT_EQ(to.get("X"), "new");
}

TEST_F(CopyRule, MayOverwriteAConstantOfTheConfiguration) {
  EXPECT_EQ(runOnly({copy(src("C"), value("constant"))}), 0);
  const auto *const ptCopy = static_cast<::Copy *>(cvtGetCvt(cs("C"))->ptArgs->pInfo);
  const auto *const ptConstant = static_cast<Value *>(ptCopy->ptDstArgs->pInfo);
  EXPECT_EQ(ptConstant->psValue, from.slot("C")->psValue);
  EXPECT_EQ(ptConstant->nLen, 1);
}

TEST_F(CopyRule, ResolvesTheDestinationFirst) {
  runOnly({copy(src("A"), dst("X"))});
  EXPECT_EQ(run("C", {cvtGetValueList(0), nullptr, nullptr}, {cvtGetValueList(0), nullptr, to.ptNode}), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({kSrcOutOfList, "Dst Msg Get Filed By Id[X)0] err!!",
                   "[ptDst = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptDstArgs, ptMemNode)] is NULL",
                   "CvtCopy Err!!"},
                  1));
}

TEST_F(CopyRule, MissingSourceSlotFails) {
  runOnly({copy(src("A"), dst("X"))});
  to.set("X", "kept");
  EXPECT_EQ(run("C", {cvtGetValueList(0), nullptr, nullptr}, to), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({kSrcOutOfList, "Src Msg Get Filed By Id[A)0] err!!",
                   "[ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptSrcArgs, ptMemNode)] is NULL",
                   "CvtCopy Err!!"},
                  1));
  EXPECT_EQ(to.get("X"), "kept");
}

TEST_F(CopyRule, FailsAtTheFirstSlotThatTheDestinationLacks) {
  runOnly({copy(src("A"), dst("X")), copy(src("B"), dst("Y"))});
  ValueList *const ptShort = cvtGetValueList(1);
  EXPECT_EQ(run("C", from, {ptShort, nullptr, to.ptNode}), -1);
  EXPECT_TRUE(test::logged(1, "Dst Msg Get Filed By Id[Y)1] err!!"));
  EXPECT_EQ(ptShort->ptValue[0].psValue, from.slot("A")->psValue);
  EXPECT_EQ(ptShort->ptValue[1].psValue, nullptr);
}

TEST_F(CopyRule, FailsAtTheFirstSlotThatTheSourceLacks) {
  runOnly({copy(src("A"), dst("X")), copy(src("B"), dst("Y"))});
  ValueList *const ptShort = cvtGetValueList(1);
  ptShort->ptValue[1] = *from.slot("B");
  EXPECT_EQ(run("C", {ptShort, nullptr, nullptr}, to), -1);
  EXPECT_TRUE(test::logged(1, "Src Msg Get Filed By Id[B)1] err!!"));
}

TEST_F(CopyRule, FailsWhereAListIsLongerThanItsRoom) {
  runOnly({copy(src("A"), dst("X")), copy(src("B"), dst("Y"))});
  ValueList *const ptCramped = cvtGetValueList(2);
  const auto nRoom = ptCramped->nMax;
  ptCramped->nMax = 1;
  test::clearLog();
  EXPECT_EQ(run("C", from, {ptCramped, nullptr, to.ptNode}), -1);
  EXPECT_TRUE(test::logged(1, "Dst Msg Get Filed By Id[Y)1] err!!"));
  EXPECT_EQ(run("C", {ptCramped, nullptr, nullptr}, to), -1);
  EXPECT_TRUE(test::logged(1, "Src Msg Get Filed By Id[B)1] err!!"));
  ptCramped->nMax = nRoom;
}

TEST_F(CopyRule, WithoutArgumentsFails) {
  EXPECT_EQ(runOnly({{6, "<Copy __ID='pInfo'/>"}}), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"[ptArgs] is NULL",
                   "[ptDst = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptDstArgs, ptMemNode)] is NULL",
                   "CvtCopy Err!!"},
                  1));
}

// --- Case ------------------------------------------------------------------------------------------------

Args mark(const std::string &sText) {
  return {copy(value(sText), dst("X"))};
}

TEST_F(CaseRule, RunsTheFirstCaseThatHoldsAndNoOther) {
  EXPECT_EQ(runOnly({cases({when({equal(src("A"), value("z"))}, mark("first")),
                            when({equal(src("A"), value("a"))}, mark("second")),
                            when({equal(src("A"), value("a"))}, {copy(value("third"), dst("Y"))})})}),
            0);
  EXPECT_EQ(to.get("X"), "second");
  EXPECT_EQ(to.slot("Y")->psValue, nullptr);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(CaseRule, JudgesOfACaseAreAlternatives) {
  EXPECT_EQ(runOnly({cases(
                {when({equal(src("A"), value("1")), equal(src("B"), value("b")), equal(src("C"), value("2"))},
                      mark("any"))})}),
            0);
  EXPECT_EQ(to.get("X"), "any");
}

TEST_F(CaseRule, CaseWithoutJudgesIsTheDefault) {
  EXPECT_EQ(runOnly({cases({when({equal(src("A"), value("z"))}, mark("z")), otherwise(mark("default"))})}),
            0);
  EXPECT_EQ(to.get("X"), "default");
}

TEST_F(CaseRule, CaseWithoutJudgesThatStandsFirstAlwaysRuns) {
  EXPECT_EQ(runOnly({cases({otherwise(mark("default")), when({equal(src("A"), value("a"))}, mark("a"))})}),
            0);
  EXPECT_EQ(to.get("X"), "default");
}

TEST_F(CaseRule, NoCaseChosenIsNoError) {
  EXPECT_EQ(runOnly({cases({when({equal(src("A"), value("1")), equal(src("A"), value("2"))}, mark("x"))})}),
            0);
  EXPECT_EQ(to.slot("X")->psValue, nullptr);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(CaseRule, ChosenCaseWithoutRulesSucceeds) {
  EXPECT_EQ(runOnly({cases({when({equal(src("A"), value("a"))}, {}), otherwise(mark("default"))})}), 0);
  EXPECT_EQ(to.slot("X")->psValue, nullptr);
}

TEST_F(CaseRule, LaterCasesAreNotLookedAt) {
  EXPECT_EQ(runOnly({cases({when({equal(src("A"), value("a"))}, mark("a")),
                            when({equal(level(), level())}, mark("never"))})}),
            0);
  EXPECT_EQ(to.get("X"), "a");
}

struct Comparison {
  const char *psName;
  std::string sLeft;
  std::string sRight;
  bool bHolds;
};
class CaseComparison : public Rules, public testing::WithParamInterface<Comparison> {};

TEST_P(CaseComparison, IsByLengthAndBytes) {
  runOnly({cases({when({equal(src("A"), src("B"))}, mark("holds"))})});
  from.set("A", GetParam().sLeft).set("B", GetParam().sRight);
  to.set("X", "");
  EXPECT_EQ(run("C", from, to), 0);
  EXPECT_EQ(to.get("X"), GetParam().bHolds ? "holds" : "");
}

INSTANTIATE_TEST_SUITE_P(
    Values, CaseComparison,
    testing::Values(Comparison{"Same", "AB", "AB", true}, Comparison{"Prefix", "AB", "ABC", false},
                    Comparison{"LongerPrefix", "ABC", "AB", false},
                    Comparison{"LetterCase", "ab", "AB", false}, Comparison{"BothEmpty", "", "", true},
                    Comparison{"OneEmpty", "", "A", false},
                    Comparison{"ZeroBytes", std::string("A\0B", 3), std::string("A\0C", 3), false},
                    Comparison{"SameZeroBytes", std::string("A\0B", 3), std::string("A\0B", 3), true},
                    Comparison{"Blanks", "A ", "A", false}),
    [](const auto &p) { return std::string(p.param.psName); });

TEST_F(CaseRule, NullWithLengthZeroEqualsAnEmptyText) {
  runOnly({cases({when({equal(src("A"), value(""))}, mark("empty"))})});
  EXPECT_EQ(run("C", newMessage("In"), to), 0);
  EXPECT_EQ(to.get("X"), "empty");
}

TEST_F(CaseRule, SlotThatHoldsALoopEqualsNothing) {
  runOnly({cases({when({equal(src("A"), src("B"))}, mark("equal"))})});
  const Level looped = newMessage("In");
  ASSERT_NE(cvtNewLoopValueList(looped.ptList, 0, 1), nullptr);
  ASSERT_EQ(looped.slot("A")->nLen, -1);
  *looped.slot("B") = *looped.slot("A");  // not even itself
  EXPECT_EQ(run("C", looped, to), 0);
  EXPECT_EQ(to.slot("X")->psValue, nullptr);
}

TEST_F(CaseRule, ConstantWithALengthButNoBytesEqualsNothing) {
  const ArgXml broken{3, "<Value __ID='pInfo' nLen='1'/>"};
  EXPECT_EQ(runOnly({cases({when({equal(src("A"), broken), equal(broken, broken), equal(broken, value("v")),
                                  equal(value("v"), broken)},
                                 mark("equal"))})}),
            0);
  EXPECT_EQ(to.slot("X")->psValue, nullptr);
}

TEST_F(CaseRule, JudgeResolvesItsDestinationFirst) {
  EXPECT_EQ(runOnly({cases({when({equal({5, ""}, {6, ""})}, {})})}), -1);
  EXPECT_EQ(
      test::logTexts(1),
      trail({"No Defined Arg Type [6] err!!",
             "[ptDst = GetValue(ptSrcValueList, ptDstValueList, ptJudge->ptDstArgs, ptMemNode)] is NULL",
             "CvtCase Err!!"},
            1));
}

TEST_F(CaseRule, UnresolvedSourceOfAJudgeFails) {
  EXPECT_EQ(runOnly({cases({when({equal({5, ""}, src("A"))}, {}), otherwise(mark("default"))})}), -1);
  EXPECT_EQ(
      test::logTexts(1),
      trail({"No Defined Arg Type [5] err!!",
             "[ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptJudge->ptSrcArgs, ptMemNode)] is NULL",
             "CvtCase Err!!"},
            1));
  EXPECT_EQ(to.slot("X")->psValue, nullptr);
}

TEST_F(CaseRule, FailureInsideACaseNamesBothRules) {
  EXPECT_EQ(runOnly({src("A"), cases({otherwise({copy(src("A"), dst("X")), copy({7, ""}, dst("Y"))})})}), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"No Defined Arg Type [7] err!!",
                   "[ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptSrcArgs, ptMemNode)] is NULL",
                   "CvtCopy Err!!", "Do Convert Rule [2] err!!", "CvtCase Err!!"},
                  2));
  EXPECT_EQ(to.get("X"), "a");
}

// --- Mapping ---------------------------------------------------------------------------------------------

TEST_F(MappingRule, RunsTheFirstEntryWhoseTagIsEqual) {
  EXPECT_EQ(runOnly({mapping({src("B")}, {tagged(value("a"), mark("1")), tagged(value("b"), mark("2")),
                                          tagged(value("b"), {copy(value("3"), dst("Y"))})})}),
            0);
  EXPECT_EQ(to.get("X"), "2");
  EXPECT_EQ(to.slot("Y")->psValue, nullptr);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(MappingRule, TagMayBeAField) {
  EXPECT_EQ(runOnly({mapping({value("c")}, {tagged(src("A"), mark("1")), tagged(src("C"), mark("2"))})}), 0);
  EXPECT_EQ(to.get("X"), "2");
}

TEST_F(MappingRule, NoEntryChosenIsNoError) {
  EXPECT_EQ(runOnly({mapping({src("B")}, {tagged(value("a"), mark("1")), tagged(value("bb"), mark("2"))})}),
            0);
  EXPECT_EQ(to.slot("X")->psValue, nullptr);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(MappingRule, WithoutEntriesSucceeds) {
  EXPECT_EQ(runOnly({mapping({src("B")}, {})}), 0);
}

TEST_F(MappingRule, WithoutValueFails) {
  EXPECT_EQ(runOnly({mapping({}, {tagged(value("a"), mark("1"))})}), -1);
  EXPECT_EQ(
      test::logTexts(1),
      trail(
          {"[ptArgs] is NULL",
           "[ptMapValue = GetValue(ptSrcValueList, ptDstValueList, ptMapping->ptMapArgs, ptMemNode)] is NULL",
           "CvtMapping err!!"},
          1));
}

TEST_F(MappingRule, EntryWithoutTagIsAnError) {
  EXPECT_EQ(runOnly({mapping({src("B")}, {tagged(value("a"), mark("1")), untagged(mark("2"))})}), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"[ptArgs] is NULL",
                   "[ptTagValue = GetValue(ptSrcValueList, ptDstValueList, p->ptTagArgs, ptMemNode)] is NULL",
                   "CvtMapping err!!"},
                  1));
}

TEST_F(MappingRule, EntryWithoutTagBehindTheChosenOneIsNotReached) {
  EXPECT_EQ(runOnly({mapping({src("B")}, {tagged(value("b"), mark("1")), untagged(mark("2"))})}), 0);
  EXPECT_EQ(to.get("X"), "1");
}

TEST_F(MappingRule, FailureInsideAnEntryNamesBothRules) {
  EXPECT_EQ(runOnly({mapping({src("B")}, {tagged(value("b"), {copy({8, ""}, dst("X"))})})}), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"No Defined Arg Type [8] err!!",
                   "[ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptSrcArgs, ptMemNode)] is NULL",
                   "CvtCopy Err!!", "Do Convert Rule [1] err!!", "StructConvert err!!\n", "CvtMapping err!!"},
                  1));
}

TEST_F(MappingRule, CaseInsideAMappingInsideACaseLeavesATrailThroughAll) {
  const ArgXml broken = copy({9, ""}, dst("X"));
  const ArgXml innerCase = cases({otherwise({src("A"), src("B"), broken})});
  const ArgXml inMapping = mapping({src("A")}, {tagged(value("a"), {dst("X"), innerCase})});
  EXPECT_EQ(runOnly({cases({otherwise({inMapping})})}), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"No Defined Arg Type [9] err!!",
                   "[ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptSrcArgs, ptMemNode)] is NULL",
                   "CvtCopy Err!!", "Do Convert Rule [3] err!!", "CvtCase Err!!", "Do Convert Rule [2] err!!",
                   "StructConvert err!!\n", "CvtMapping err!!", "Do Convert Rule [1] err!!", "CvtCase Err!!"},
                  1));
}

}  // namespace

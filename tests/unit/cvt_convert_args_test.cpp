// Arguments of rules, the functions a converter calls and their registry, and temporary values.
#include <cstddef>
#include <stdexcept>

#include "convert_fixture.h"

namespace {

using namespace test::xml;
using test::cs;
using test::Level;
using test::newMessage;
using test::temporariesTaken;
using Texts = std::vector<std::string>;

// --- Functions that keep what they were given ------------------------------------------------------------

// All entries of the stack, the bottom entry too.
int stackSize() {
  const ::Stack *pt = gptCvtGlobalInfo->ptStack;
  while (pt->ptPre != nullptr) pt = pt->ptPre;
  int n = 0;
  for (; pt != nullptr; pt = pt->ptNext) ++n;
  return n;
}

struct Call {
  Value *ptResult;
  Value onEntry;
  std::vector<Value *> args;
  MemPort ptNode;
  int nTaken;
  Texts texts;
};
std::vector<Call> g_calls;

std::string textOf(const Value *pt) {
  if (pt == nullptr) return "(null)";
  return pt->nLen > 0 ? std::string(pt->psValue, static_cast<size_t>(pt->nLen)) : "";
}

// The arguments joined by "+", in bytes of the message.
int join(Value *ptResult, int nArgs, Value **pptArgs, MemPort ptNode) {
  Call call{ptResult, *ptResult, {pptArgs, pptArgs + nArgs}, ptNode, temporariesTaken(), {}};
  std::string sJoined;
  for (const Value *pt : call.args) {
    call.texts.push_back(textOf(pt));
    sJoined += (sJoined.empty() ? "" : "+") + textOf(pt);
  }
  g_calls.push_back(call);
  return cvtDumpValue(ptResult, sJoined.data(), static_cast<int>(sJoined.size()), ptNode);
}

int g_nRawArgs = 0;
Value *g_ptRaw = nullptr;
int keepRaw(Value *, int nArgs, Value **pptArgs, MemPort) {
  g_nRawArgs = nArgs;
  g_ptRaw = pptArgs[0];
  return 0;
}

int g_nResult = 0;
int answer(Value *, int, Value **, MemPort) {
  return g_nResult;
}
int throwError(Value *, int, Value **, MemPort) {
  throw std::runtime_error("out of order");
}
int throwNumber(Value *, int, Value **, MemPort) {
  throw 7;
}
int first(Value *, int, Value **, MemPort) {
  return 1;
}
int second(Value *, int, Value **, MemPort) {
  return 0;
}

// In: A, B, Items(Code)    Out: X, Y, Rows(Name)
class Arguments : public test::ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    cvtConvertAddFunction(cs("F"), join);
    cvtConvertAddFunction(cs("G"), join);
    cvtConvertAddFunction(cs("H"), join);
    cvtConvertAddFunction(cs("raw"), keepRaw);
    cvtConvertAddFunction(cs("answer"), answer);
    cvtConvertAddFunction(cs("throws"), throwError);
    cvtConvertAddFunction(cs("throwsNumber"), throwNumber);
    define("In", {field("A"), field("B"), loop("Items", {field("Code")})});
    define("Out", {field("X"), field("Y"), loop("Rows", {field("Name")})});
  }

  void load(const Args &rules) {
    convert("C", rules);
    if (start() != 0) ADD_FAILURE() << "the configuration does not load";
    from = newMessage("In");
    to = newMessage("Out");
    from.set("A", "a").set("B", "b");
  }
  int runOnly(const Args &rules) {
    load(rules);
    return run("C", from, to);
  }
  // The value of an argument, copied into X.
  int evaluate(const ArgXml &arg) { return runOnly({copy(arg, dst("X"))}); }

  // The trail of a copy, the only rule, whose source cannot be resolved.
  static Texts trail(Texts inner) {
    const Texts outer = {
        "[ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptSrcArgs, ptMemNode)] is NULL",
        "CvtCopy Err!!", "Do Convert Rule [1] err!!", "Convert [C] From struct[In] tp Struct[Out] err!!"};
    inner.insert(inner.end(), outer.begin(), outer.end());
    return inner;
  }

  Level from{};
  Level to{};
};

TEST_F(Arguments, AConstantWithANegativeLengthIsNoLoop) {
  const ArgXml constant = {3, "<Value __ID='pInfo' psValue='not a list of repetitions' nLen='-1'/>"};
  EXPECT_EQ(runOnly({copy(constant, dst("Rows"))}), -1);
  EXPECT_EQ(test::logTexts(1),
            (Texts{"Value nLen[-1] is no length: write that of psValue, in bytes", "CvtCopy Err!!",
                   "Do Convert Rule [1] err!!", "Convert [C] From struct[In] tp Struct[Out] err!!"}));
  EXPECT_EQ(to.slot("Rows")->nLen, 0);
}

using FunctionCall = Arguments;
using RepetitionCount = Arguments;
using Temporaries = Arguments;
using FunctionRegistry = Arguments;

// --- Values ----------------------------------------------------------------------------------------------

TEST_F(Arguments, SourceAndDestinationNodesAreSlots) {
  EXPECT_EQ(runOnly({copy(src("B"), dst("X")), copy(dst("X"), dst("Y"))}), 0);
  EXPECT_EQ(to.get("X"), "b");
  EXPECT_EQ(to.get("Y"), "b");
}

TEST_F(Arguments, ConstantIsTheRecordOfTheConfiguration) {
  EXPECT_EQ(runOnly({copy(func("F", {value("v")}), dst("X"))}), 0);
  const auto *const ptCopy = static_cast<::Copy *>(cvtGetCvt(cs("C"))->ptArgs->pInfo);
  const auto *const ptFunction = static_cast<::Function *>(ptCopy->ptSrcArgs->pInfo);
  EXPECT_EQ(static_cast<void *>(g_calls.at(0).args.at(0)), ptFunction->ptArgs->pInfo);
}

TEST_F(Arguments, SlotOutsideTheDestinationListIsReportedByName) {
  load({copy(dst("Y"), src("A"))});
  to.ptList->nNow = 1;
  EXPECT_EQ(run("C", from, to), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"Value Index[1] < 0 or >= max [1] err!!", "Dst Msg Get Filed By Id[Y)1] err!!"}));
}

class NoValueCode : public Arguments, public testing::WithParamInterface<int> {};

TEST_P(NoValueCode, IsReported) {
  EXPECT_EQ(evaluate({GetParam(), ""}), -1);
  EXPECT_EQ(test::logTexts(1), trail({"No Defined Arg Type [" + std::to_string(GetParam()) + "] err!!"}));
}

INSTANTIATE_TEST_SUITE_P(Codes, NoValueCode, testing::Values(2, 5, 6, 7, 8, 9, 11, 12, -1));

struct Missing {
  int nType;
  const char *psText;
};
class MissingRecord : public Arguments, public testing::WithParamInterface<Missing> {};

TEST_P(MissingRecord, IsReportedByName) {
  EXPECT_EQ(evaluate({GetParam().nType, ""}), -1);
  EXPECT_EQ(test::logTexts(1), trail({GetParam().psText}));
}

INSTANTIATE_TEST_SUITE_P(Codes, MissingRecord,
                         testing::Values(Missing{0, "[ptArgs->pInfo] is NULL"},
                                         Missing{1, "[ptArgs->pInfo] is NULL"},
                                         Missing{3, "[ptArgs->pInfo] is NULL"},
                                         Missing{4, "[ptFunc] is NULL"},
                                         Missing{10, "[ptLoopGetNum] is NULL"}),
                         [](const auto &p) { return "Code" + std::to_string(p.param.nType); });

// --- Function calls --------------------------------------------------------------------------------------

TEST_F(FunctionCall, GetsItsArgumentsInListOrder) {
  EXPECT_EQ(evaluate(func("F", {src("A"), value("v"), src("B"), dst("Y")})), 0);
  ASSERT_EQ(g_calls.size(), 1U);
  EXPECT_EQ(g_calls[0].texts, (Texts{"a", "v", "b", ""}));
  EXPECT_EQ(g_calls[0].args[0], from.slot("A"));
  EXPECT_EQ(g_calls[0].args[3], to.slot("Y"));
  EXPECT_EQ(to.get("X"), "a+v+b+");
}

TEST_F(FunctionCall, WithoutArgumentsGetsNone) {
  EXPECT_EQ(evaluate(func("F")), 0);
  EXPECT_TRUE(g_calls.at(0).args.empty());
}

TEST_F(FunctionCall, StartsFromAnEmptyResult) {
  EXPECT_EQ(runOnly({copy(func("F", {src("A")}), dst("X")), copy(func("F", {src("B")}), dst("Y"))}), 0);
  ASSERT_EQ(g_calls.size(), 2U);
  EXPECT_EQ(g_calls[0].ptResult, g_calls[1].ptResult);  // the slot is used again, and is empty again
  EXPECT_EQ(g_calls[1].onEntry.psValue, nullptr);
  EXPECT_EQ(g_calls[1].onEntry.nLen, 0);
  EXPECT_EQ(to.get("X"), "a");
  EXPECT_EQ(to.get("Y"), "b");
}

TEST_F(FunctionCall, GetsTheDestinationsMemory) {
  EXPECT_EQ(evaluate(func("F")), 0);
  EXPECT_EQ(g_calls.at(0).ptNode, to.ptNode);
}

TEST_F(FunctionCall, UnresolvedArgumentIsReportedAndPassedAsNull) {
  load({copy(func("F", {src("A"), src("B"), value("v")}), dst("X"))});
  from.ptList->nNow = 1;
  EXPECT_EQ(run("C", from, to), 0);
  EXPECT_EQ(g_calls.at(0).texts, (Texts{"a", "(null)", "v"}));
  EXPECT_EQ(test::logTexts(1),
            (Texts{"Value Index[1] < 0 or >= max [1] err!!", "Src Msg Get Filed By Id[B)1] err!!"}));
}

TEST_F(FunctionCall, RawArgumentIsTheRecordItself) {
  EXPECT_EQ(evaluate(func("raw", {{5, value("kept").sRecord}})), 0);
  EXPECT_EQ(g_nRawArgs, 1);
  EXPECT_EQ(textOf(g_ptRaw), "kept");
  EXPECT_TRUE(test::logTexts(1).empty());
}

TEST_F(FunctionCall, RawArgumentMayBeAnyRecordUnevaluated) {
  g_nResult = 1;  // would be logged if it were called
  EXPECT_EQ(evaluate(func("raw", {{5, func("answer").sRecord}})), 0);
  EXPECT_TRUE(test::logTexts(1).empty());
  EXPECT_STREQ(reinterpret_cast<::Function *>(g_ptRaw)->psName, "answer");
}

class FailingFunction : public Arguments, public testing::WithParamInterface<int> {};

TEST_P(FailingFunction, FailsTheRuleByName) {
  g_nResult = GetParam();
  EXPECT_EQ(evaluate(func("answer")), -1);
  EXPECT_EQ(test::logTexts(1), trail({"Do Func[answer] err!!"}));
  EXPECT_EQ(to.slot("X")->psValue, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Results, FailingFunction, testing::Values(1, -1, 5));

TEST_F(FunctionCall, ExceptionEndsAtTheLibraryAndFailsTheRule) {
  EXPECT_EQ(evaluate(func("throws")), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"Func[throws] let an exception out: out of order", "Do Func[throws] err!!"}));
}

TEST_F(FunctionCall, AnythingThrownEndsAtTheLibrary) {
  EXPECT_EQ(evaluate(func("throwsNumber")), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"Func[throwsNumber] let an exception out", "Do Func[throwsNumber] err!!"}));
}

TEST_F(FunctionCall, FailingInnerFunctionIsANullArgument) {
  g_nResult = 1;
  EXPECT_EQ(evaluate(func("F", {func("answer"), src("A")})), 0);
  EXPECT_EQ(test::logTexts(1), Texts{"Do Func[answer] err!!"});
  EXPECT_EQ(g_calls.at(0).texts, (Texts{"(null)", "a"}));
}

TEST_F(FunctionCall, ManyArgumentsFit) {
  Args many;
  std::string sExpected;
  for (int i = 0; i < 300; ++i) {
    many.push_back(value(std::to_string(i)));
    sExpected += (i == 0 ? "" : "+") + std::to_string(i);
  }
  EXPECT_EQ(evaluate(func("F", many)), 0);
  EXPECT_EQ(to.get("X"), sExpected);
}

TEST_F(FunctionCall, ArrayFitsAlsoWhenTheLargestCountWasNotRaised) {
  load({copy(func("F", {src("A"), src("B"), src("A")}), dst("X"))});
  gptCvtGlobalInfo->nMaxArgs = 0;
  EXPECT_EQ(run("C", from, to), 0);
  EXPECT_EQ(to.get("X"), "a+b+a");
}

TEST_F(FunctionCall, RecordWithoutAFunctionIsReported) {
  load({copy(func("F"), dst("X"))});
  const auto *const ptCopy = static_cast<::Copy *>(cvtGetCvt(cs("C"))->ptArgs->pInfo);
  static_cast<::Function *>(ptCopy->ptSrcArgs->pInfo)->fCvtFunc = nullptr;
  EXPECT_EQ(run("C", from, to), -1);
  EXPECT_EQ(test::logTexts(1), trail({"[ptFunc->fCvtFunc] is NULL"}));
}

TEST_F(FunctionCall, NeedsTheGlobalRecord) {
  load({copy(func("F"), dst("X"))});
  Converter *const ptConvert = cvtGetCvt(cs("C"));
  cvtCvtEnd();
  test::clearLog();
  EXPECT_EQ(cvtConvert(from.ptList, to.ptList, ptConvert, to.ptNode), -1);
  EXPECT_EQ(test::logTexts(1), trail({"[gptCvtGlobalInfo] is NULL"}));
}

TEST_F(FunctionCall, MissesItsRecordBeforeTheGlobalOne) {
  load({copy(func("F"), dst("X"))});
  Converter *const ptConvert = cvtGetCvt(cs("C"));
  static_cast<::Copy *>(ptConvert->ptArgs->pInfo)->ptSrcArgs->pInfo = nullptr;
  cvtCvtEnd();
  test::clearLog();
  EXPECT_EQ(cvtConvert(from.ptList, to.ptList, ptConvert, to.ptNode), -1);
  EXPECT_EQ(test::logTexts(1), trail({"[ptFunc] is NULL"}));
}

// A function that itself runs a converter, while its own arguments are in use.
int convertInside(Value *ptResult, int nArgs, Value **pptArgs, MemPort ptNode) {
  const Level inner = newMessage("Out");
  if (cvtConvert(newMessage("In").set("A", "i").set("B", "j").ptList, inner.ptList, cvtGetCvt(cs("Inner")),
                 ptNode) != 0) {
    return -1;
  }
  const std::string sText = inner.get("X") + "|" + textOf(pptArgs[nArgs - 1]);
  return cvtDumpValue(ptResult, const_cast<char *>(sText.data()), static_cast<int>(sText.size()), ptNode);
}

TEST_F(FunctionCall, MayRunAConverterItself) {
  cvtConvertAddFunction(cs("inside"), convertInside);
  convert("Inner", {copy(func("F", Args(40, src("A"))), dst("X"))});
  EXPECT_EQ(evaluate(func("inside", {src("A"), src("B")})), 0);
  EXPECT_EQ(to.get("X").substr(0, 4), "i+i+");
  EXPECT_EQ(to.get("X").substr(79), "|b");
}

// --- Repetition counts -----------------------------------------------------------------------------------

TEST_F(RepetitionCount, IsDecimalText) {
  load({copy(loopNum(src("Items")), dst("X"))});
  for (int i = 0; i < 12; ++i) from.add("Items");
  EXPECT_EQ(run("C", from, to), 0);
  EXPECT_EQ(to.get("X"), "12");
  EXPECT_EQ(to.slot("X")->nLen, 2);
}

TEST_F(RepetitionCount, OfALoopWithoutRepetitionsIsTheDigitZero) {
  EXPECT_EQ(evaluate(loopNum(src("Items"))), 0);
  EXPECT_EQ(to.slot("X")->nLen, 1);
  EXPECT_EQ(to.get("X"), "0");
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(RepetitionCount, OfADestinationNodeIsTakenFromTheSource) {
  load({copy(loopNum(dst("Rows")), dst("X"))});
  for (int i = 0; i < 3; ++i) to.add("Rows");
  from.add("Items");
  EXPECT_EQ(run("C", from, to), 0);
  EXPECT_EQ(to.get("X"), "1");
}

TEST_F(RepetitionCount, OfAPlainValueFails) {
  load({copy(loopNum(src("A")), dst("X"))});
  EXPECT_EQ(run("C", from, to), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"value Index[0] is not LoopValueList", "Get Field Index[0] Loop Num err!!"}));
}

TEST_F(RepetitionCount, OfSomethingThatIsNoNodeFails) {
  EXPECT_EQ(evaluate(loopNum(value("v"))), -1);
  EXPECT_EQ(test::logTexts(1), trail({"Arg Type [3] err!!", "Value Index[-1] < 0 or >= max [4] err!!",
                                      "Get Field Index[-1] Loop Num err!!"}));
}

TEST_F(RepetitionCount, WithoutALoopFails) {
  EXPECT_EQ(evaluate({10, "<LoopGetNum __ID='pInfo'/>"}), -1);
  EXPECT_EQ(test::logTexts(1), trail({"[ptArgs] is NULL", "Value Index[-1] < 0 or >= max [4] err!!",
                                      "Get Field Index[-1] Loop Num err!!"}));
}

TEST_F(RepetitionCount, TextIsTheDestinationMessagesOwn) {
  EXPECT_EQ(runOnly({copy(loopNum(src("Items")), dst("X")), copy(func("F", {src("A")}), dst("Y"))}), 0);
  EXPECT_EQ(to.get("X"), "0");  // not touched by the temporary's next use
  const MemBlock *const ptBlock = to.ptNode->ptHeadBlock;
  EXPECT_GE(to.slot("X")->psValue, ptBlock->psBuf);
  EXPECT_LT(to.slot("X")->psValue, ptBlock->psBuf + ptBlock->nMaxSize);
}

TEST_F(RepetitionCount, WithoutMemoryFails) {
  load({copy(loopNum(src("Items")), dst("X"))});
  to.ptNode = nullptr;
  EXPECT_EQ(run("C", from, to), -1);
  EXPECT_EQ(test::logTexts(1), trail({"[ptNode] is NULL"}));
}

TEST_F(RepetitionCount, CanBeJudged) {
  load({cases({when({equal(loopNum(src("Items")), value("2"))}, {copy(value("two"), dst("X"))})})});
  from.add("Items");
  from.add("Items");
  EXPECT_EQ(run("C", from, to), 0);
  EXPECT_EQ(to.get("X"), "two");
}

TEST_F(RepetitionCount, InsideALoopIsThatRepetitionsOwn) {
  define("In", {field("A"), field("B"), loop("Items", {field("Code"), loop("Parts", {field("Part")})})});
  load({loopRule(src("Items"), dst("Rows"), {copy(loopNum(src("Parts")), dst("Name"))})});
  from.add("Items");
  from.add("Items").add("Parts");
  EXPECT_EQ(run("C", from, to), 0);
  EXPECT_EQ(to.at("Rows", 0).get("Name"), "0");
  EXPECT_EQ(to.at("Rows", 1).get("Name"), "1");
}

// --- Temporary values ------------------------------------------------------------------------------------

TEST_F(Temporaries, TenAreReadyAndNoneIsTaken) {
  load({});
  EXPECT_EQ(stackSize(), 11);  // the bottom entry is never handed out
  EXPECT_EQ(temporariesTaken(), 0);
}

TEST_F(Temporaries, InnerResultsAreValidTogetherAndOnlyTheOuterOneStays) {
  EXPECT_EQ(evaluate(func("F", {func("G", {src("A")}), func("H", {src("B")}), loopNum(src("Items"))})), 0);
  ASSERT_EQ(g_calls.size(), 3U);
  const Call &g = g_calls[0];
  const Call &h = g_calls[1];
  const Call &f = g_calls[2];
  EXPECT_EQ(f.texts, (Texts{"a", "b", "0"}));
  EXPECT_EQ(f.args[0], g.ptResult);
  EXPECT_EQ(f.args[1], h.ptResult);
  EXPECT_EQ(g.nTaken, 2);  // F's own slot was taken first
  EXPECT_EQ(h.nTaken, 3);
  EXPECT_EQ(f.nTaken, 4);
  EXPECT_EQ(to.get("X"), "a+b+0");
}

TEST_F(Temporaries, OfAFunctionsArgumentsAreReleasedAfterItsCall) {
  EXPECT_EQ(runOnly({mapping({func("F", {func("G", {src("A")}), func("H", {src("B")})})},
                             {tagged(func("G", {value("a+b")}), {copy(value("1"), dst("X"))})})}),
            0);
  ASSERT_EQ(g_calls.size(), 4U);
  EXPECT_EQ(g_calls[3].nTaken, 2);  // F's result, and the tag's own
  EXPECT_EQ(to.get("X"), "1");
}

TEST_F(Temporaries, StackGrowsWhereTheNestingIsDeeperThanEver) {
  ArgXml nested = func("F", {src("A")});
  for (int i = 1; i < 12; ++i) nested = func("F", {nested});
  EXPECT_EQ(evaluate(nested), 0);
  EXPECT_EQ(to.get("X"), "a");
  EXPECT_EQ(stackSize(), 13);  // the bottom entry, and twelve results at once
  EXPECT_EQ(run("C", from, to), 0);
  EXPECT_EQ(stackSize(), 13);  // the new entries are used again
  EXPECT_EQ(temporariesTaken(), 0);
}

TEST_F(Temporaries, AreReleasedAfterEveryRule) {
  EXPECT_EQ(runOnly({copy(func("F", {func("G")}), dst("X")), copy(func("F"), dst("Y"))}), 0);
  EXPECT_EQ(g_calls.at(2).nTaken, 1);
  EXPECT_EQ(temporariesTaken(), 0);
}

TEST_F(Temporaries, AreReleasedAfterAFailingRule) {
  EXPECT_EQ(runOnly({copy(level(), func("F", {func("G")}))}), -1);
  EXPECT_EQ(temporariesTaken(), 0);
}

TEST_F(Temporaries, AreReleasedAfterEachJudgeThatDoesNotHold) {
  const auto no = [](const char *psName) { return equal(func(psName, {src("A")}), func("H", {src("B")})); };
  EXPECT_EQ(runOnly({cases({when({no("F"), no("G")}, {}), when({no("F")}, {})})}), 0);
  ASSERT_EQ(g_calls.size(), 6U);
  for (size_t i = 0; i < g_calls.size(); ++i) {
    EXPECT_EQ(g_calls[i].nTaken, i % 2 == 0 ? 1 : 2) << i;  // each judge: destination H, then its source
  }
  EXPECT_EQ(temporariesTaken(), 0);
}

TEST_F(Temporaries, AreKeptBetweenTheEntriesOfAMapping) {
  EXPECT_EQ(runOnly({mapping({func("F", {value("v")})},
                             {tagged(func("G", {value("1")}), {}), tagged(func("G", {value("2")}), {}),
                              tagged(func("H", {value("v")}), {copy(value("hit"), dst("X"))})})}),
            0);
  ASSERT_EQ(g_calls.size(), 4U);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(g_calls[static_cast<size_t>(i)].nTaken, i + 1);
  EXPECT_EQ(to.get("X"), "hit");
  EXPECT_EQ(temporariesTaken(), 0);
}

TEST_F(Temporaries, AreReleasedByANestedRuleList) {
  EXPECT_EQ(runOnly({mapping({func("F", {value("v")})},
                             {tagged(value("v"), {src("A"), copy(func("G"), dst("X"))})})}),
            0);
  EXPECT_EQ(g_calls.at(1).nTaken, 1);  // the skipped rule in front has released the mapping's value
}

TEST_F(Temporaries, OfAFailedCountStaysTakenUntilTheNextRelease) {
  EXPECT_EQ(evaluate(func("F", {loopNum(src("A")), func("G")})), 0);
  ASSERT_EQ(g_calls.size(), 2U);
  EXPECT_EQ(g_calls[0].nTaken, 3);  // F's, the failed count's, and G's own
  EXPECT_EQ(g_calls[1].args.at(0), nullptr);
  EXPECT_EQ(temporariesTaken(), 0);
}

TEST_F(Temporaries, SectionThatIsReadAgainGetsAFreshStack) {
  load({});
  const ::Stack *const ptOld = gptCvtGlobalInfo->ptStack;
  cvtCvtInit(nullptr, cs("Convert"));
  EXPECT_NE(gptCvtGlobalInfo->ptStack, ptOld);
  EXPECT_EQ(stackSize(), 11);
}

TEST_F(Temporaries, AreThereEvenWithoutTheSection) {
  ::Arg *const ptCall = sttNewArg(4, sttNewFunction(cs("F"), nullptr), nullptr);
  ::Arg *const ptSlot = sttNewArg(3, sttNewValue(nullptr, 0), nullptr);
  ::Arg *const ptRule = sttNewArg(6, sttNewCopy(ptCall, ptSlot), nullptr);
  Converter *const ptConvert = sttNewConverter(cs("C"), cs("In"), cs("Out"), ptRule);
  ASSERT_EQ(gptCvtGlobalInfo->ptStack, nullptr);
  EXPECT_EQ(cvtConvert(cvtGetValueList(0), cvtGetValueList(0), ptConvert, cvtMemNewNode()), 0);
  EXPECT_EQ(g_calls.size(), 1U);
}

// --- Registry of functions -------------------------------------------------------------------------------

TEST_F(FunctionRegistry, RecordMadeBeforeTheStartSurvivesTheSection) {
  CvtGlobalInfo *const ptBefore = gptCvtGlobalInfo;
  ASSERT_NE(ptBefore, nullptr);
  load({});
  EXPECT_EQ(gptCvtGlobalInfo, ptBefore);
  EXPECT_NE(cvtStrFindStringList(gptCvtGlobalInfo->ptFuncList, cs("F")), nullptr);
}

TEST_F(FunctionRegistry, LaterRegistrationOfANameWins) {
  cvtConvertAddFunction(cs("twice"), first);
  EXPECT_EQ(cvtConvertAddFunction(cs("twice"), second), 0);
  EXPECT_EQ(evaluate(func("twice")), 0);
}

TEST_F(FunctionRegistry, FunctionThatIsResolvedStays) {
  cvtConvertAddFunction(cs("twice"), second);
  load({copy(func("twice"), dst("X"))});
  cvtConvertAddFunction(cs("twice"), first);
  EXPECT_EQ(run("C", from, to), 0);
}

TEST_F(FunctionRegistry, NullFunctionEmptiesItAndReturnsZero) {
  test::clearLog();
  EXPECT_EQ(cvtConvertAddFunction(cs("N"), nullptr), 0);
  EXPECT_EQ(test::logTexts(1), Texts{"[ptInfo] is NULL"});
  EXPECT_EQ(gptCvtGlobalInfo->ptFuncList, nullptr);
  convert("C", {copy(func("F"), dst("X"))});
  EXPECT_EQ(start(), -1);
  EXPECT_EQ(test::logTexts(1).at(0), "Funct[F] is not find!!");
}

TEST_F(FunctionRegistry, NullNameEmptiesItAndReturnsZero) {
  test::clearLog();
  EXPECT_EQ(cvtConvertAddFunction(nullptr, first), 0);
  EXPECT_EQ(test::logTexts(1), Texts{"[psString] is NULL"});
  EXPECT_EQ(gptCvtGlobalInfo->ptFuncList, nullptr);
}

TEST_F(FunctionRegistry, IsUsableAfterItWasEmptied) {
  cvtConvertAddFunction(cs("N"), nullptr);
  cvtConvertAddFunction(cs("fresh"), second);
  EXPECT_EQ(evaluate(func("fresh")), 0);
}

TEST_F(FunctionRegistry, AfterTheEndTheNextRegistrationMakesAFreshRecord) {
  load({copy(func("F"), dst("X"))});
  EXPECT_EQ(cvtCvtEnd(), 0);
  EXPECT_EQ(gptCvtGlobalInfo, nullptr);
  EXPECT_EQ(cvtConvertAddFunction(cs("only"), second), 0);
  ASSERT_NE(gptCvtGlobalInfo, nullptr);
  ASSERT_NE(gptCvtGlobalInfo->ptFuncList, nullptr);
  EXPECT_STREQ(gptCvtGlobalInfo->ptFuncList->psString, "only");
  EXPECT_EQ(gptCvtGlobalInfo->ptFuncList->ptNext, nullptr);
  EXPECT_EQ(gptCvtGlobalInfo->ptCvtList, nullptr);
  EXPECT_EQ(gptCvtGlobalInfo->ptStack, nullptr);
  EXPECT_EQ(gptCvtGlobalInfo->ptArgs, nullptr);
  EXPECT_EQ(gptCvtGlobalInfo->pptSrcIdx, nullptr);
  EXPECT_EQ(gptCvtGlobalInfo->pptDstIdx, nullptr);
  EXPECT_EQ(gptCvtGlobalInfo->nMaxArgs, 0);
}

TEST_F(FunctionRegistry, NextGenerationMayLieAtTheSameAddresses) {
  cvtEnd();
  const StringList *ptOther = nullptr;
  for (const char *psName : {"old", "newer"}) {
    cvtCvtEnd();
    cvtEndDict();
    cvtMemReset();
    cvtConvertAddFunction(cs(psName), second);
    EXPECT_NE(sttNewFunction(cs(psName), nullptr), nullptr) << psName;
    EXPECT_EQ(ptOther == gptCvtGlobalInfo->ptFuncList, ptOther != nullptr);  // or this test shows nothing
    ptOther = gptCvtGlobalInfo->ptFuncList;
  }
  EXPECT_EQ(sttNewFunction(cs("old"), nullptr), nullptr);
}

TEST_F(FunctionRegistry, RestartForgetsFunctionsOfTheHost) {
  load({copy(func("F"), dst("X"))});
  EXPECT_EQ(cvtInit(tree.arg()), -1);  // the format and the functions went with the old configuration
  EXPECT_EQ(cvtConvertAddFunction(cs("again"), second), 0);
  EXPECT_EQ(cvtStrFindStringList(gptCvtGlobalInfo->ptFuncList, cs("F")), nullptr);
}

}  // namespace

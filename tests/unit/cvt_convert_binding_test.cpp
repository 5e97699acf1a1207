// Converter files: names become positions, the current indexes, and what a file that does not hold together
// logs.
#include <algorithm>
#include <cstddef>

#include "convert_fixture.h"

namespace {

using namespace test::xml;
using test::cs;
using test::newMessage;
using Texts = std::vector<std::string>;

constexpr char kNodeFails[] = "p->nIdx = GetNodeIdx(nType, psName) is Err!!";
constexpr char kFunctionFails[] = "p->fCvtFunc = MakeFunction(psName, ptArgs) is Err!!";
constexpr char kInfoFails[] = "void * pInfo = sttParseXmlVoid(ptXmlNode, \"pInfo\") is Err!!";
constexpr char kNextFails[] =
    "struct Arg * ptNext = sttParseXmlNext(ptXmlNode, \"Arg\", \"ptNext\", sttParseXmlArg) is Err!!";
constexpr char kRulesFail[] =
    "struct Arg * ptArgs = ParseArg(psSrcStructName, psDstStructName, ptXmlNode) is Err!!";
constexpr char kLoopRulesFail[] = "Arg * ptArgs = ParseArgLoop(ptSrcArgs, ptDstArgs, ptXmlNode) is Err!!";

std::string fieldFails(const std::string &sField) {
  return "Arg * " + sField + " = sttParseXmlStruct(ptXmlNode, \"Arg\", \"" + sField +
         "\", sttParseXmlArg) is Err!!";
}

int nothing(Value *, int, Value **, MemPort) {
  return 0;
}

// In:  Id, Group(City), Items(Code, Parts(Part, Code))    Out: Key, Rows(Name, Cells(Cell, Key))
class Binding : public test::ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    cvtConvertAddFunction(cs("known"), nothing);
    define("In", {field("Id"), group("Group", {field("City")}),
                  loop("Items", {field("Code"), loop("Parts", {field("Part"), field("Code")})})});
    define("Out",
           {field("Key"), loop("Rows", {field("Name"), loop("Cells", {field("Cell"), field("Key")})})});
  }

  void load(const Args &rules) {
    convert("C", rules);
    if (start() != 0) ADD_FAILURE() << "the configuration does not load";
  }
  void expectFailure(const Args &rules, const Texts &inner) {
    convert("C", rules);
    EXPECT_EQ(start(), -1);
    EXPECT_EQ(test::logTexts(1), recordTrail("C", inner));
    EXPECT_EQ(cvtGetCvt(cs("C")), nullptr);
    EXPECT_EQ(gptCvtGlobalInfo->pptSrcIdx, nullptr);  // the pair is put back after failures, too
    EXPECT_EQ(gptCvtGlobalInfo->pptDstIdx, nullptr);
  }

  // The rules of converter C, and what they hold.
  static ::Arg *rule(int nRule) {
    ::Arg *pt = cvtGetCvt(cs("C"))->ptArgs;
    while (--nRule > 0) pt = pt->ptNext;
    return pt;
  }
  static int position(const ::Arg *pt) { return static_cast<::Node *>(pt->pInfo)->nIdx; }
  template <class T>
  static T *record(const ::Arg *pt) {
    return static_cast<T *>(pt->pInfo);
  }
};

using NodeName = Binding;
using LoopNames = Binding;
using FunctionName = Binding;
using ConverterFile = Binding;
using ConverterRecords = Binding;

// --- Node names ------------------------------------------------------------------------------------------

TEST_F(NodeName, BecomesItsPositionInTheIndex) {
  load({copy(src("City"), dst("Key")), src("Group"), src("Items"), dst("Rows"), dst("Name")});
  EXPECT_EQ(position(record<::Copy>(rule(1))->ptSrcArgs), 2);
  EXPECT_EQ(position(record<::Copy>(rule(1))->ptDstArgs), 0);
  EXPECT_EQ(position(rule(2)), 1);
  EXPECT_EQ(position(rule(3)), 3);
  EXPECT_EQ(position(rule(4)), 1);
  EXPECT_EQ(position(rule(5)), 2);
  EXPECT_TRUE(test::logTexts(1).empty());
}

TEST_F(NodeName, MayBeInOtherLetterCase) {
  load({src("CITY"), src("city"), dst("kEY")});
  EXPECT_EQ(position(rule(1)), 2);
  EXPECT_EQ(position(rule(2)), 2);
  EXPECT_EQ(position(rule(3)), 0);
  EXPECT_STREQ(record<::Node>(rule(1))->psName, "CITY");  // kept as written
}

TEST_F(NodeName, OfKindTwoIsNeverLookedUp) {
  load({level("Nobody knows"), level(""), {2, "<Node __ID='pInfo' nType='2'/>"}});
  EXPECT_EQ(position(rule(1)), -1);
  EXPECT_EQ(position(rule(2)), -1);
  EXPECT_EQ(position(rule(3)), -1);
  EXPECT_EQ(record<::Node>(rule(3))->psName, nullptr);
}

TEST_F(NodeName, IsResolvedByTheNodesKindNotByTheArgumentsCode) {
  load({node(0, 1, "Key"), node(1, 0, "City")});
  EXPECT_EQ(position(rule(1)), 0);
  EXPECT_EQ(position(rule(2)), 2);
}

TEST_F(NodeName, ThatIsUnknownFailsTheFileWithAWholeTrail) {
  expectFailure({copy(src("Nope"), dst("Key"))},
                {"Get Message Field[0:Nope] err!!", kNodeFails, place("C", "Node"), "Type[Node] Not Define",
                 kInfoFails, fieldFails("ptSrcArgs"), "Type[Copy] Not Define", kInfoFails, kRulesFail});
}

TEST_F(NodeName, OfTheDestinationThatIsUnknownNamesItsKind) {
  expectFailure({src("Id"), dst("Id")}, {"Get Message Field[1:Id] err!!", kNodeFails, place("C", "Node"),
                                         "Type[Node] Not Define", kInfoFails, kNextFails, kRulesFail});
}

class OtherKind : public Binding, public testing::WithParamInterface<int> {};

TEST_P(OtherKind, Fails) {
  const std::string sKind = std::to_string(GetParam());
  expectFailure({node(0, GetParam(), "Id")},
                {"MsgType[" + sKind + "] type is not need!!", "Get Message Field[" + sKind + ":Id] err!!",
                 kNodeFails, place("C", "Node"), "Type[Node] Not Define", kInfoFails, kRulesFail});
}

INSTANTIATE_TEST_SUITE_P(Kinds, OtherKind, testing::Values(3, 4, -1));

TEST_F(NodeName, ThatIsMissingFails) {
  expectFailure({{0, "<Node __ID='pInfo'/>"}},
                {"[psFieldName] is NULL", "Get Message Field[0:(null)] err!!", kNodeFails, place("C", "Node"),
                 "Type[Node] Not Define", kInfoFails, kRulesFail});
}

TEST_F(NodeName, OutsideAnyFileHasNothingToBeResolvedAgainst) {
  load({});
  test::clearLog();
  EXPECT_EQ(sttNewNode(0, cs("Id")), nullptr);
  EXPECT_EQ(test::logTexts(1), (Texts{"[pIdx] is NULL", "Get Message Field[0:Id] err!!", kNodeFails}));
  EXPECT_EQ(nGRet, -1);
}

TEST_F(NodeName, BeforeTheGlobalRecordExistsFails) {
  cvtCvtEnd();
  test::clearLog();
  EXPECT_EQ(sttNewNode(1, cs("Id")), nullptr);
  EXPECT_EQ(test::logTexts(1),
            (Texts{"[gptCvtGlobalInfo] is NULL", "Get Message Field[1:Id] err!!", kNodeFails}));
}

// --- Names inside loops ----------------------------------------------------------------------------------

TEST_F(LoopNames, AreResolvedInTheBodysOwnIndex) {
  load({loopRule(src("Items"), dst("Rows"), {copy(src("Parts"), dst("Cells"))}), src("Parts"), dst("Cells")});
  const auto *const ptLoop = record<::Loop>(rule(1));
  EXPECT_EQ(position(ptLoop->ptSrcArgs), 3);
  EXPECT_EQ(position(ptLoop->ptDstArgs), 1);
  const auto *const ptCopy = record<::Copy>(ptLoop->ptArgs);
  EXPECT_EQ(position(ptCopy->ptSrcArgs), 1);
  EXPECT_EQ(position(ptCopy->ptDstArgs), 1);
  EXPECT_EQ(position(rule(2)), 5);  // behind the loop the enclosing index counts again
  EXPECT_EQ(position(rule(3)), 3);
}

TEST_F(LoopNames, InALoopInALoopAreTheInnerBodys) {
  load({loopRule(src("Items"), dst("Rows"),
                 {loopRule(src("Parts"), dst("Cells"), {copy(src("Code"), dst("Key"))}), src("Code")})});
  const auto *const ptOuter = record<::Loop>(rule(1));
  const auto *const ptInner = record<::Loop>(ptOuter->ptArgs);
  EXPECT_EQ(position(record<::Copy>(ptInner->ptArgs)->ptSrcArgs), 1);
  EXPECT_EQ(position(record<::Copy>(ptInner->ptArgs)->ptDstArgs), 1);
  EXPECT_EQ(position(ptOuter->ptArgs->ptNext), 0);  // Code of Items again
}

TEST_F(LoopNames, OfTheEnclosingLevelAreUnknownInsideTheLoop) {
  expectFailure({loopRule(src("Items"), dst("Rows"), {src("Id")})},
                {"Get Message Field[0:Id] err!!", kNodeFails, place("C", "Node"), "Type[Node] Not Define",
                 kInfoFails, kLoopRulesFail, "Type[Loop] Not Define", kInfoFails, kRulesFail});
}

TEST_F(LoopNames, KeepTheEnclosingSourceIndexUnderALevelArgument) {
  load({loopRule(level(), dst("Rows"), {copy(src("City"), dst("Cells"))})});
  const auto *const ptCopy = record<::Copy>(record<::Loop>(rule(1))->ptArgs);
  EXPECT_EQ(position(ptCopy->ptSrcArgs), 2);
  EXPECT_EQ(position(ptCopy->ptDstArgs), 1);
}

TEST_F(LoopNames, KeepTheEnclosingDestinationIndexUnderALevelArgument) {
  load({loopRule(src("Items"), level(), {copy(src("Parts"), dst("Rows"))})});
  const auto *const ptCopy = record<::Copy>(record<::Loop>(rule(1))->ptArgs);
  EXPECT_EQ(position(ptCopy->ptSrcArgs), 1);
  EXPECT_EQ(position(ptCopy->ptDstArgs), 1);
}

TEST_F(LoopNames, InALoopWithoutChildrenIsTheLoopItself) {
  define("In", {field("Id"), {"Items", " nType='1'", "<LoopType __ID='pInfo'/>"}});
  load({loopRule(src("Items"), dst("Rows"), {copy(src("Items"), dst("Name"))})});
  EXPECT_EQ(position(record<::Copy>(record<::Loop>(rule(1))->ptArgs)->ptSrcArgs), 0);
}

constexpr char kNoSourceIndex[] =
    "[pptSrcMsgIdx = GetLoopMessageIndex(ptSrcArgs, gptCvtGlobalInfo->pptSrcIdx)] is NULL";
constexpr char kNoDestinationIndex[] =
    "[pptDstMsgIdx = GetLoopMessageIndex(ptDstArgs, gptCvtGlobalInfo->pptDstIdx)] is NULL";

class LoopSides : public Binding {
 protected:
  void expectRefused(const ArgXml &loop, Texts inner) {
    const Texts outer = {"SetMsgInfoByLoop err!!", kLoopRulesFail, place("C", "Loop"),
                         "Type[Loop] Not Define",  kInfoFails,     kRulesFail};
    inner.insert(inner.end(), outer.begin(), outer.end());
    expectFailure({loop}, inner);
  }
};

TEST_F(LoopSides, SourceThatIsNoLoopIsRefused) {
  expectRefused(loopRule(src("Id"), dst("Rows"), {}), {"Message[Id] Get Loop Type Err!!", kNoSourceIndex});
}

TEST_F(LoopSides, DestinationThatIsNoLoopIsRefused) {
  expectRefused(loopRule(src("Items"), dst("Key"), {}),
                {"Message[Key] Get Loop Type Err!!", kNoDestinationIndex});
}

TEST_F(LoopSides, NodeWithARecordOfItsFormatIsNoLoop) {
  define("In", {{"Id", "", "<FormatAttr __ID='pInfo' psFormatName='kept here by the format'/>"}});
  expectRefused(loopRule(src("Id"), dst("Rows"), {}), {"Message[Id] Get Loop Type Err!!", kNoSourceIndex});
}

TEST_F(LoopSides, CountedNodeHasNoBody) {
  define("In", {{"Id", " nType='5'", "<LoopType __ID='pInfo'/>"}});
  expectRefused(loopRule(src("Id"), dst("Rows"), {}), {kNoSourceIndex});
}

TEST_F(LoopSides, OtherCodesAreRefused) {
  expectRefused(loopRule(value("v"), dst("Rows"), {}),
                {"Arg Type [3] err!!", "Get Message Loop Index err!!", kNoSourceIndex});
}

TEST_F(LoopSides, MissingSourceIsRefusedFirst) {
  expectRefused({8, "<Loop __ID='pInfo'/>"}, {"[ptSrcArgs] is NULL"});
}

TEST_F(LoopSides, MissingDestinationIsRefused) {
  expectRefused({8, "<Loop __ID='pInfo'>" + args("ptSrcArgs", {src("Items")}) + "</Loop>"},
                {"[ptDstArgs] is NULL"});
}

TEST_F(LoopSides, MissingNodeIsRefused) {
  expectRefused(loopRule({0, ""}, dst("Rows"), {}),
                {"[ptArgs->pInfo] is NULL", "Get Message Loop Index err!!", kNoSourceIndex});
}

TEST_F(LoopSides, PositionOfTheOtherDefinitionIsNotFollowedBeyondTheEnd) {
  define("Out", {field("Key")});
  expectRefused(loopRule(level(), node(1, 0, "Items"), {}), {"[ptMessage] is NULL", kNoDestinationIndex});
}

TEST_F(LoopSides, IndexOfALevelArgumentIsTheOneHandedIn) {
  load({});
  Message **const pptIdx = cvtGetMsg(cs("In"))->pptMessageIdx;
  EXPECT_EQ(GetLoopMessageIndex(sttNewArg(2, nullptr, nullptr), pptIdx), pptIdx);
  test::clearLog();
  EXPECT_EQ(GetLoopMessageIndex(nullptr, pptIdx), nullptr);
  EXPECT_EQ(test::logTexts(1), Texts{"[ptArgs] is NULL"});
}

TEST_F(LoopSides, IndexOfALoopIsItsBodys) {
  load({src("Items")});
  Message **const pptIdx = cvtGetMsg(cs("In"))->pptMessageIdx;
  EXPECT_EQ(GetLoopMessageIndex(rule(1), pptIdx), cvtLoopGetIdx(cvtIdxNode(pptIdx, 3)));
}

// --- Function names --------------------------------------------------------------------------------------

TEST_F(FunctionName, BecomesTheFunction) {
  load({func("known", {src("City")})});
  const auto *const ptFunction = record<::Function>(rule(1));
  EXPECT_EQ(ptFunction->fCvtFunc, &nothing);
  EXPECT_STREQ(ptFunction->psName, "known");
  EXPECT_EQ(position(ptFunction->ptArgs), 2);
}

TEST_F(FunctionName, LargestArgumentCountIsKept) {
  load({func("known", {src("Id"), src("Id"), src("Id")}), func("known", {src("Id")}), func("known")});
  EXPECT_EQ(gptCvtGlobalInfo->nMaxArgs, 3);
}

TEST_F(FunctionName, ThatIsUnknownFailsAndStillRaisesTheLargestCount) {
  expectFailure({func("unknown", {src("Id"), src("Id"), src("Id")})},
                {"Funct[unknown] is not find!!", kFunctionFails, place("C", "Function"),
                 "Type[Function] Not Define", kInfoFails, kRulesFail});
  EXPECT_EQ(gptCvtGlobalInfo->nMaxArgs, 3);
}

TEST_F(FunctionName, IsExact) {
  expectFailure({func("Known")}, {"Funct[Known] is not find!!", kFunctionFails, place("C", "Function"),
                                  "Type[Function] Not Define", kInfoFails, kRulesFail});
}

TEST_F(FunctionName, ThatIsMissingFails) {
  expectFailure({{4, "<Function __ID='pInfo'>" + args("ptArgs", {src("Id"), src("Id")}) + "</Function>"}},
                {"psFuncName[(null)] is NULL!!", kFunctionFails, place("C", "Function"),
                 "Type[Function] Not Define", kInfoFails, kRulesFail});
  EXPECT_EQ(gptCvtGlobalInfo->nMaxArgs, 0);  // nothing was counted
}

TEST_F(FunctionName, ArgumentsAreResolvedBeforeTheName) {
  expectFailure({func("unknown", {src("Nope")})},
                {"Get Message Field[0:Nope] err!!", kNodeFails, place("C", "Node"), "Type[Node] Not Define",
                 kInfoFails, fieldFails("ptArgs"), "Type[Function] Not Define", kInfoFails, kRulesFail});
}

TEST_F(FunctionName, BeforeTheGlobalRecordExistsFails) {
  cvtCvtEnd();
  test::clearLog();
  EXPECT_EQ(sttNewFunction(cs("known"), nullptr), nullptr);
  EXPECT_EQ(test::logTexts(1), (Texts{"[gptCvtGlobalInfo] is NULL", kFunctionFails}));
}

// --- Converter files -------------------------------------------------------------------------------------

TEST_F(ConverterFile, HoldsOneConverterWhateverItsElementIsCalled) {
  tree.file("Cvt/c.xml",
            "<Convert><Anything psName='C' psSrcStructName='In' psDstStructName='Out'/>"
            "<Converter psName='D' psSrcStructName='In' psDstStructName='Out'/></Convert>");
  ASSERT_EQ(start(), 0);
  EXPECT_NE(cvtGetCvt(cs("C")), nullptr);
  EXPECT_EQ(cvtGetCvt(cs("D")), nullptr);
}

TEST_F(ConverterFile, StringsAreInterned) {
  load({src("Id")});
  const Converter *const pt = cvtGetCvt(cs("C"));
  EXPECT_EQ(pt->psName, cvtStrDup(cs("C")));
  EXPECT_EQ(pt->psSrcStructName, cvtStrDup(cs("In")));
  EXPECT_EQ(pt->psDstStructName, cvtStrDup(cs("Out")));
  EXPECT_EQ(record<::Node>(rule(1))->psName, cvtStrDup(cs("Id")));
}

TEST_F(ConverterFile, OfAnUnknownSourceFails) {
  convert("C", {}, "Nowhere", "Nothing");
  EXPECT_EQ(start(), -1);
  EXPECT_EQ(test::logTexts(1), recordTrail("C", {"Get Msg[Nowhere] define info err!!",
                                                 "SetMsgInfoByName Src[Nowhere] Dst[Nothing] err!!",
                                                 kRulesFail, place("C", "Converter")}));
}

TEST_F(ConverterFile, OfAnUnknownDestinationNamesTheDestination) {
  convert("C", {}, "In", "out");
  EXPECT_EQ(start(), -1);
  EXPECT_EQ(test::logTexts(1),
            recordTrail("C", {"Get Msg[out] define info err!!", "SetMsgInfoByName Src[In] Dst[out] err!!",
                              kRulesFail, place("C", "Converter")}));
}

TEST_F(ConverterFile, WithoutDefinitionNamesFails) {
  tree.file("Cvt/c.xml", "<Convert><Converter psName='C'/></Convert>");
  EXPECT_EQ(start(), -1);
  EXPECT_EQ(test::logTexts(1), recordTrail("c", {"Get Msg[(null)] define info err!!",
                                                 "SetMsgInfoByName Src[(null)] Dst[(null)] err!!", kRulesFail,
                                                 place("c", "Converter")}));
}

TEST_F(ConverterFile, CommentInFrontIsReadAsTheConverter) {
  tree.file("Cvt/c.xml",
            "<Convert><!-- first --><Converter psName='C' psSrcStructName='In' "
            "psDstStructName='Out'/></Convert>");
  EXPECT_EQ(start(), -1);
  EXPECT_EQ(test::logTexts(1).at(0), "Get Msg[(null)] define info err!!");
}

TEST_F(ConverterFile, RulesAreReadInOrderAndTheFirstFailureEndsIt) {
  convert("C", {src("Id"), src("FirstBad"), src("SecondBad")});
  EXPECT_EQ(start(), -1);
  const Texts texts = test::logTexts(1);
  EXPECT_EQ(texts.at(0), "Get Message Field[0:FirstBad] err!!");
  EXPECT_EQ(std::count(texts.begin(), texts.end(), "Get Message Field[0:SecondBad] err!!"), 0);
}

TEST_F(ConverterFile, RecordOfAnUnknownTypeIsLeftOut) {
  load({{6, "<Cpoy __ID='pInfo'/>"}});
  EXPECT_EQ(test::logTexts(1), Texts{"Type[Cpoy] Not Define"});
  EXPECT_EQ(rule(1)->pInfo, nullptr);
}

TEST_F(ConverterFile, MissingNumbersAreZero) {
  tree.file("Cvt/c.xml",
            "<Convert><Converter psName='C' psSrcStructName='In' psDstStructName='Out'>"
            "<Arg __ID='ptArgs'><Node __ID='pInfo' psName='City'/></Arg>"
            "<Arg __ID='ptNext' nType='3'><Value __ID='pInfo' psValue='text'/></Arg></Converter></Convert>");
  ASSERT_EQ(start(), 0);
  EXPECT_EQ(rule(1)->nType, CVT_TYPE_SRC);
  EXPECT_EQ(record<::Node>(rule(1))->nType, 0);
  EXPECT_EQ(position(rule(1)), 2);
  EXPECT_EQ(record<Value>(rule(2))->nLen, 0);
  EXPECT_STREQ(record<Value>(rule(2))->psValue, "text");
}

TEST_F(ConverterFile, PairOfIndexesIsNullBehindTheReading) {
  load({loopRule(src("Items"), dst("Rows"), {})});
  EXPECT_EQ(gptCvtGlobalInfo->pptSrcIdx, nullptr);
  EXPECT_EQ(gptCvtGlobalInfo->pptDstIdx, nullptr);
}

TEST_F(ConverterFile, PairOfIndexesThatWasThereComesBack) {
  load({});
  Message *one[] = {nullptr};
  Message *other[] = {nullptr};
  gptCvtGlobalInfo->pptSrcIdx = one;
  gptCvtGlobalInfo->pptDstIdx = other;
  tree.file("again.xml", converter("C", "In", "Out", {loopRule(src("Items"), dst("Rows"), {src("Nope")})}));
  test::clearLog();
  EXPECT_EQ(sttParseXmlFile(tree.arg("again.xml"), cs("Convert"), cs("Converter"),
                            reinterpret_cast<void *>(sttParseXmlConverter)),
            nullptr);
  EXPECT_EQ(test::logTexts(1).at(0), "Get Message Field[0:Nope] err!!");
  EXPECT_EQ(gptCvtGlobalInfo->pptSrcIdx, one);
  EXPECT_EQ(gptCvtGlobalInfo->pptDstIdx, other);
}

// --- Records ---------------------------------------------------------------------------------------------

TEST_F(ConverterRecords, LieAsTheyAreDeclared) {
  EXPECT_EQ(offsetof(::Arg, pInfo), 8U);
  EXPECT_EQ(offsetof(::Arg, ptNext), 16U);
  EXPECT_EQ(sizeof(Converter), 32U);
  EXPECT_EQ(sizeof(::Judge), 24U);
  EXPECT_EQ(sizeof(::Case), 24U);
  EXPECT_EQ(sizeof(::Copy), 16U);
  EXPECT_EQ(sizeof(::Loop), 24U);
  EXPECT_EQ(sizeof(LoopGetNum), 8U);
  EXPECT_EQ(sizeof(Sql), 16U);
  EXPECT_EQ(offsetof(::Function, ptArgs), 16U);
  EXPECT_EQ(offsetof(::Node, psName), 8U);
  EXPECT_EQ(offsetof(::Node, nIdx), 16U);
  EXPECT_EQ(sizeof(CvtArgs), 8U);
  EXPECT_EQ(sizeof(MappingList), 24U);
  EXPECT_EQ(sizeof(Mapping), 16U);
  EXPECT_EQ(offsetof(CvtGlobalInfo, nMaxArgs), 24U);
  EXPECT_EQ(offsetof(CvtGlobalInfo, ptFuncList), 32U);
  EXPECT_EQ(sizeof(CvtGlobalInfo), 56U);
}

TEST_F(ConverterRecords, CasesAndTheirJudgesAreLists) {
  load({cases({when({equal(src("Id"), value("1")), equal(src("City"), dst("Key"))}, {src("Id"), src("City")}),
               otherwise({dst("Key")})})});
  const auto *const ptCase = record<::Case>(rule(1));
  EXPECT_EQ(position(ptCase->ptJudge->ptSrcArgs), 0);
  EXPECT_EQ(position(ptCase->ptJudge->ptNext->ptSrcArgs), 2);
  EXPECT_EQ(position(ptCase->ptJudge->ptNext->ptDstArgs), 0);
  EXPECT_EQ(ptCase->ptJudge->ptNext->ptNext, nullptr);
  EXPECT_EQ(position(ptCase->ptArgs->ptNext), 2);
  EXPECT_EQ(ptCase->ptNext->ptJudge, nullptr);
  EXPECT_EQ(position(ptCase->ptNext->ptArgs), 0);
  EXPECT_EQ(ptCase->ptNext->ptNext, nullptr);
}

TEST_F(ConverterRecords, EntriesOfAMappingAreAList) {
  load({mapping({src("City")}, {tagged(value("1"), {dst("Key")}), untagged({})})});
  const auto *const ptMapping = record<Mapping>(rule(1));
  EXPECT_EQ(position(ptMapping->ptMapArgs), 2);
  EXPECT_STREQ(record<Value>(ptMapping->ptList->ptTagArgs)->psValue, "1");
  EXPECT_EQ(position(ptMapping->ptList->ptActList), 0);
  EXPECT_EQ(ptMapping->ptList->ptNext->ptTagArgs, nullptr);
  EXPECT_EQ(ptMapping->ptList->ptNext->ptActList, nullptr);
  EXPECT_EQ(ptMapping->ptList->ptNext->ptNext, nullptr);
}

TEST_F(ConverterRecords, SqlAndLoopCountHoldTheirArguments) {
  load({sql({value("select "), src("City")}, {dst("Key")}), loopNum(src("Items"))});
  EXPECT_EQ(position(record<Sql>(rule(1))->ptSqlList->ptNext), 2);
  EXPECT_EQ(position(record<Sql>(rule(1))->ptFieldList), 0);
  EXPECT_EQ(position(record<LoopGetNum>(rule(2))->ptLoop), 3);
}

TEST_F(ConverterRecords, DispatcherKnowsExactlyItsTypes) {
  load({});
  void *const ptNode = xmlMadeNode(cs("Anything"));
  for (const char *psType :
       {"Arg", "Judge", "Case", "Copy", "LoopGetNum", "Sql", "CvtArgs", "MappingList", "Mapping"}) {
    EXPECT_NE(sttParseVoidcvt_convert(ptNode, cs(psType)), nullptr) << psType;
  }
  test::clearLog();
  for (const char *psType : {"arg", "Args", "", "Value", "Message", "IdFunc"}) {
    EXPECT_EQ(sttParseVoidcvt_convert(ptNode, cs(psType)), nullptr) << psType;
  }
  EXPECT_TRUE(test::logLines().empty());
  for (const char *psType : {"Converter", "Loop", "Function", "Node"}) {  // known, but not without content
    test::clearLog();
    EXPECT_EQ(sttParseVoidcvt_convert(ptNode, cs(psType)), nullptr);
    EXPECT_FALSE(test::logLines().empty()) << psType;
  }
  xmlNodeFree(ptNode);
}

// Those of the attributes that are there, as name=value.
std::string attributesOf(void *ptNode, std::initializer_list<const char *> names) {
  std::string s;
  for (const char *psName : names) {
    char *const psValue = xmlGetNodeAttr(ptNode, cs(psName));
    if (psValue != nullptr) s += std::string(psName) + "=" + psValue + " ";
    xmlFreeString(psValue);
  }
  return s;
}

TEST_F(ConverterRecords, AreWrittenAsTheyStand) {
  load({func("known", {src("City")})});
  void *const ptNode = xmlMadeNode(cs("Node"));
  const auto *const ptFunction = record<::Function>(rule(1));
  EXPECT_EQ(sttGenVoidcvt_convert(ptFunction->ptArgs->pInfo, ptNode, cs("pInfo"), cs("Node")), ptNode);
  EXPECT_EQ(attributesOf(ptNode, {"nType", "psName", "nIdx"}), "psName=City ");  // no zero, no position
  xmlNodeFree(ptNode);

  sttSetVoidType(ptFunction->ptArgs->pInfo, cs("Node"));
  void *const ptCall = xmlMadeNode(cs("Function"));
  EXPECT_EQ(sttGenVoidcvt_convert(rule(1)->pInfo, ptCall, cs("pInfo"), cs("Function")), ptCall);
  EXPECT_EQ(attributesOf(ptCall, {"psName", "fCvtFunc"}), "psName=known ");
  void *const ptArg = xmlGetChileNode(ptCall);
  EXPECT_STREQ(xmlGetNodeName(ptArg), "Arg");
  EXPECT_EQ(attributesOf(ptArg, {"__ID", "nType"}), "__ID=ptArgs ");
  EXPECT_EQ(attributesOf(xmlGetChileNode(ptArg), {"__ID", "psName"}), "__ID=pInfo psName=City ");
  xmlNodeFree(ptCall);
  EXPECT_EQ(sttGenVoidcvt_convert(rule(1)->pInfo, nullptr, cs("pInfo"), cs("Value")), nullptr);
}

TEST_F(ConverterRecords, ConverterThatIsWrittenReadsBackTheSame) {
  load({copy(src("City"), dst("Key"))});
  const auto *const ptCopy = record<::Copy>(rule(1));
  sttSetVoidType(rule(1)->pInfo, cs("Copy"));
  sttSetVoidType(ptCopy->ptSrcArgs->pInfo, cs("Node"));
  sttSetVoidType(ptCopy->ptDstArgs->pInfo, cs("Node"));
  ASSERT_EQ(sttGenXmlFile(tree.arg("written.xml"), cvtGetCvt(cs("C")), cs("Convert"), cs("Converter"),
                          reinterpret_cast<void *>(+[](void *p, void *ptNode, char *, char *psType) {
                            return sttGenXmlConverter(static_cast<Converter *>(p), ptNode, psType);
                          })),
            0);
  const auto *const ptBack =
      static_cast<Converter *>(sttParseXmlFile(tree.arg("written.xml"), cs("Convert"), cs("Converter"),
                                               reinterpret_cast<void *>(sttParseXmlConverter)));
  ASSERT_NE(ptBack, nullptr);
  EXPECT_STREQ(ptBack->psDstStructName, "Out");
  EXPECT_EQ(ptBack->ptArgs->nType, 6);
  EXPECT_EQ(position(record<::Copy>(ptBack->ptArgs)->ptSrcArgs), 2);
}

}  // namespace

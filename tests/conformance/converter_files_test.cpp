// Converter files: names below every kind of rule belong to the level around it, and a file leaves nothing
// behind for the next.
#include "convert_fixture.h"

namespace {

using namespace test::xml;
using test::cs;
using Texts = std::vector<std::string>;

int nothing(Value *, int, Value **, MemPort) {
  return 0;
}

// In:  Id, Items(Code, Parts(Part))    Out: Key, Rows(Name)
class ConverterFile : public test::ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    cvtConvertAddFunction(cs("known"), nothing);
    define("In", {field("Id"), loop("Items", {field("Code"), loop("Parts", {field("Part")})})});
    define("Out", {field("Key"), loop("Rows", {field("Name")})});
  }

  template <class T>
  static T *record(const ::Arg *pt) {
    return static_cast<T *>(pt->pInfo);
  }
  static int position(const ::Arg *pt) { return record<::Node>(pt)->nIdx; }
  static ::Arg *rules(const char *psName = "C") { return cvtGetCvt(cs(psName))->ptArgs; }
};

TEST_F(ConverterFile, NamesInACaseInALoopAreTheBodys) {
  convert("C",
          {loopRule(src("Items"), dst("Rows"),
                    {cases({when({equal(src("Parts"), dst("Name"))}, {copy(src("Code"), dst("Name"))})})})});
  ASSERT_EQ(start(), 0);
  const auto *const ptCase = record<::Case>(record<::Loop>(rules())->ptArgs);
  EXPECT_EQ(position(ptCase->ptJudge->ptSrcArgs), 1);
  EXPECT_EQ(position(ptCase->ptJudge->ptDstArgs), 0);
  EXPECT_EQ(position(record<::Copy>(ptCase->ptArgs)->ptSrcArgs), 0);
}

TEST_F(ConverterFile, NamesInAMappingInALoopAreTheBodys) {
  convert("C",
          {loopRule(src("Items"), dst("Rows"),
                    {mapping({src("Code")}, {tagged(src("Parts"), {copy(src("Part"), dst("Name"))})})})});
  ASSERT_EQ(start(), 0);
  const auto *const ptMapping = record<Mapping>(record<::Loop>(rules())->ptArgs);
  EXPECT_EQ(position(ptMapping->ptMapArgs), 0);
  EXPECT_EQ(position(ptMapping->ptList->ptTagArgs), 1);
  EXPECT_EQ(position(record<::Copy>(ptMapping->ptList->ptActList)->ptSrcArgs), 2);
}

TEST_F(ConverterFile, NamesInFunctionsCountsAndStatementsInALoopAreTheBodys) {
  const ArgXml lookUp = sql({func("known", {src("Code")}), src("Parts")}, {dst("Name")});
  convert("C", {loopRule(src("Items"), dst("Rows"), {lookUp, loopNum(src("Parts"))})});
  ASSERT_EQ(start(), 0);
  const ::Arg *const ptRules = record<::Loop>(rules())->ptArgs;
  const auto *const ptSql = record<Sql>(ptRules);
  EXPECT_EQ(position(record<::Function>(ptSql->ptSqlList)->ptArgs), 0);
  EXPECT_EQ(position(ptSql->ptSqlList->ptNext), 1);
  EXPECT_EQ(position(ptSql->ptFieldList), 0);
  EXPECT_EQ(position(record<LoopGetNum>(ptRules->ptNext)->ptLoop), 1);
}

TEST_F(ConverterFile, SidesOfAnInnerLoopAreTheBodysAndItsRulesTheInnerBodys) {
  convert("C", {loopRule(src("Items"), level(),
                         {loopRule(src("Parts"), dst("Rows"), {copy(src("Part"), dst("Name"))}),
                          copy(src("Code"), dst("Rows"))}),
                copy(src("Items"), dst("Key"))});
  ASSERT_EQ(start(), 0);
  const auto *const ptOuter = record<::Loop>(rules());
  const auto *const ptInner = record<::Loop>(ptOuter->ptArgs);
  EXPECT_EQ(position(ptInner->ptSrcArgs), 1);
  EXPECT_EQ(position(ptInner->ptDstArgs), 1);
  EXPECT_EQ(position(record<::Copy>(ptInner->ptArgs)->ptSrcArgs), 0);
  EXPECT_EQ(position(record<::Copy>(ptInner->ptArgs)->ptDstArgs), 0);
  EXPECT_EQ(position(record<::Copy>(ptOuter->ptArgs->ptNext)->ptSrcArgs), 0);
  EXPECT_EQ(position(record<::Copy>(ptOuter->ptArgs->ptNext)->ptDstArgs), 1);
  EXPECT_EQ(position(record<::Copy>(rules()->ptNext)->ptSrcArgs), 1);
}

TEST_F(ConverterFile, OfTheOppositeDirectionIsResolvedAgainstItsOwnPair) {
  convert("C", {copy(src("Id"), dst("Rows"))});
  convert("Back", {copy(src("Rows"), dst("Items"))}, "Out", "In");
  convert("Same", {copy(src("Parts"), dst("Code"))}, "In", "In");
  ASSERT_EQ(start(), 0);
  EXPECT_EQ(position(record<::Copy>(rules())->ptDstArgs), 1);
  EXPECT_EQ(position(record<::Copy>(rules("Back"))->ptSrcArgs), 1);
  EXPECT_EQ(position(record<::Copy>(rules("Same"))->ptSrcArgs), 3);
  EXPECT_EQ(position(record<::Copy>(rules("Same"))->ptDstArgs), 2);
}

TEST_F(ConverterFile, LargestArgumentCountIsThatOfAllFilesAndOfNestedCalls) {
  convert("C", {func("known", {src("Id"), src("Id")})});
  convert("D", {func("known", {func("known", Args(5, src("Id")))})});
  ASSERT_EQ(start(), 0);
  EXPECT_EQ(gptCvtGlobalInfo->nMaxArgs, 5);
}

TEST_F(ConverterFile, EveryRuleInFrontOfTheFailingOneAddsItsLine) {
  convert("C", {src("Id"), dst("Key"), level(), src("Nope"), src("Never")});
  EXPECT_EQ(start(), -1);
  const std::string sNext =
      "struct Arg * ptNext = sttParseXmlNext(ptXmlNode, \"Arg\", \"ptNext\", sttParseXmlArg) is Err!!";
  EXPECT_EQ(
      test::logTexts(),
      recordTrail("C", {"Get Message Field[0:Nope] err!!", "p->nIdx = GetNodeIdx(nType, psName) is Err!!",
                        place("C", "Node"), "Type[Node] Not Define",
                        "void * pInfo = sttParseXmlVoid(ptXmlNode, \"pInfo\") is Err!!", sNext, sNext, sNext,
                        "struct Arg * ptArgs = ParseArg(psSrcStructName, psDstStructName, ptXmlNode) is "
                        "Err!!"}));
}

TEST_F(ConverterFile, ThatIsNoXmlLeavesAWholeTrail) {
  tree.file("Cvt/C.xml", "<Convert>\n<Converter></Convert>");
  EXPECT_EQ(start(), -1);
  Texts texts = test::logTexts();
  ASSERT_GT(texts.size(), 1U);
  EXPECT_EQ(texts[1].rfind("File[" + file("C") + "] line 2", 0), 0U) << texts[1];  // the rest is libxml2's
  texts.erase(texts.begin() + 1);
  EXPECT_EQ(texts, startTrail("C", {"[ptXmlDoc = xmlFileParse(psFileName)] is NULL"}));
}

TEST_F(ConverterFile, UnknownNameInALoopInALoopLeavesAWholeTrail) {
  convert("C", {copy(src("Id"), dst("Key")),
                loopRule(src("Items"), dst("Rows"),
                         {loopRule(src("Parts"), level(), {cases({otherwise({src("Code")})})})})});
  EXPECT_EQ(start(), -1);
  const std::string sInfo = "void * pInfo = sttParseXmlVoid(ptXmlNode, \"pInfo\") is Err!!";
  const std::string sLoopRules = "Arg * ptArgs = ParseArgLoop(ptSrcArgs, ptDstArgs, ptXmlNode) is Err!!";
  EXPECT_EQ(
      test::logTexts(),
      recordTrail(
          "C",
          {"Get Message Field[0:Code] err!!", "p->nIdx = GetNodeIdx(nType, psName) is Err!!",
           place("C", "Node"), "Type[Node] Not Define", sInfo,
           "Arg * ptArgs = sttParseXmlStruct(ptXmlNode, \"Arg\", \"ptArgs\", sttParseXmlArg) is Err!!",
           "Type[Case] Not Define", sInfo, sLoopRules, "Type[Loop] Not Define", sInfo, sLoopRules,
           "Type[Loop] Not Define", sInfo,
           "struct Arg * ptNext = sttParseXmlNext(ptXmlNode, \"Arg\", \"ptNext\", sttParseXmlArg) is Err!!",
           "struct Arg * ptArgs = ParseArg(psSrcStructName, psDstStructName, ptXmlNode) is Err!!"}));
  EXPECT_EQ(cvtGetCvt(cs("C")), nullptr);
}

// --- Sides of loops, the pair of indexes ------------------------------------------------------------------

TEST_F(ConverterFile, SidesAreReadBeforeTheRulesWhereverTheyStand) {
  const ArgXml loop{8, "<Loop __ID='pInfo'>" + args("ptArgs", {copy(src("Parts"), dst("Name"))}) +
                           args("ptDstArgs", {dst("Rows")}) + args("ptSrcArgs", {src("Items")}) + "</Loop>"};
  convert("C", {loop});
  ASSERT_EQ(start(), 0);
  const auto *const ptCopy = record<::Copy>(record<::Loop>(rules())->ptArgs);
  EXPECT_EQ(position(ptCopy->ptSrcArgs), 1);
  EXPECT_EQ(position(ptCopy->ptDstArgs), 0);
}

TEST_F(ConverterFile, OfTwoSidesThatAreNoLoopsTheSourceIsNamed) {
  convert("C", {loopRule(src("Id"), dst("Key"), {})});
  EXPECT_EQ(start(), -1);
  EXPECT_EQ(test::logTexts().at(0), "Message[Id] Get Loop Type Err!!");
  EXPECT_EQ(test::logTexts().at(1),
            "[pptSrcMsgIdx = GetLoopMessageIndex(ptSrcArgs, gptCvtGlobalInfo->pptSrcIdx)] is NULL");
  EXPECT_EQ(test::logTexts().at(2), "SetMsgInfoByLoop err!!");
}

TEST_F(ConverterFile, BothSidesAreMissedBeforeEitherIsFollowed) {
  convert("C", {{8, "<Loop __ID='pInfo'>" + args("ptSrcArgs", {src("Id")}) + "</Loop>"}});
  EXPECT_EQ(start(), -1);
  EXPECT_EQ(test::logTexts().at(0), "[ptDstArgs] is NULL");
  EXPECT_EQ(test::logTexts().at(1), "SetMsgInfoByLoop err!!");
}

TEST_F(ConverterFile, NameThatIsMissingIsReportedBeforeAKindThatIsNone) {
  EXPECT_EQ(start(), 0);
  test::clearLog();
  EXPECT_EQ(sttNewNode(3, nullptr), nullptr);
  EXPECT_EQ(test::logTexts(), (Texts{"[psFieldName] is NULL", "Get Message Field[3:(null)] err!!",
                                     "p->nIdx = GetNodeIdx(nType, psName) is Err!!"}));
}

struct Refused {
  const char *psName;
  ArgXml rule;
  Texts functions;  // of the first lines
};
class RefusedRule : public ConverterFile, public testing::WithParamInterface<Refused> {};

// The functions that the first failures come from.
Texts functions(size_t nFirst) {
  Texts all;
  for (const test::LogLine &line : test::logLines())
    if (line.nLevel == 1 && all.size() < nFirst) all.push_back(line.sFunction);
  return all;
}

TEST_P(RefusedRule, SaysWhoRefusedIt) {
  convert("C", {GetParam().rule});
  EXPECT_EQ(start(), -1);
  EXPECT_EQ(functions(GetParam().functions.size()), GetParam().functions);
}

const ArgXml kNoName{0, "<Node __ID='pInfo'/>"};

INSTANTIATE_TEST_SUITE_P(
    Kinds, RefusedRule,
    testing::Values(Refused{"Name", src("Nope"), {"GetNodeIdx", "sttMakeNode"}},
                    Refused{"NoName", kNoName, {"GetMsgFieldIdx", "GetNodeIdx", "sttMakeNode"}},
                    Refused{"Kind", node(0, 3, "Id"), {"GetMsgFieldIdx", "GetNodeIdx", "sttMakeNode"}},
                    Refused{"Function", func("unknown"), {"MakeFunction", "sttMakeFunction"}},
                    Refused{"NoLoop",
                            loopRule(src("Id"), dst("Rows"), {}),
                            {"cvtLoopGetIdx", "SetMsgInfoByLoop", "ParseArgLoop", "sttParseXmlLoop"}},
                    Refused{
                        "NoSide",
                        loopRule(value("v"), dst("Rows"), {}),
                        {"GetNodeValueIndex", "GetLoopMessageIndex", "SetMsgInfoByLoop", "ParseArgLoop"}}),
    [](const auto &p) { return std::string(p.param.psName); });

TEST_F(ConverterFile, UnknownDefinitionSaysWhoMissedIt) {
  convert("C", {}, "In", "Nowhere");
  EXPECT_EQ(start(), -1);
  EXPECT_EQ(functions(3), (Texts{"SetMsgInfoByName", "ParseArg", "sttParseXmlConverter"}));
}

// The pair stays as it was where the new one cannot be had whole.
class PairOfIndexes : public ConverterFile {
 protected:
  void SetUp() override {
    ConverterFile::SetUp();
    convert("C", {});  // the first file adds the dispatchers
    ASSERT_EQ(start(), 0);
    pptIn = cvtGetMsg(cs("In"))->pptMessageIdx;
    pptOut = cvtGetMsg(cs("Out"))->pptMessageIdx;
    gptCvtGlobalInfo->pptSrcIdx = pptOut;
    gptCvtGlobalInfo->pptDstIdx = pptIn;
  }
  void TearDown() override {
    EXPECT_EQ(gptCvtGlobalInfo->pptSrcIdx, pptOut);
    EXPECT_EQ(gptCvtGlobalInfo->pptDstIdx, pptIn);
  }

  // The element that stands alone in a file, read by this function.
  template <class T>
  T *read(const std::string &sXml, T *(*fParse)(void *, char *)) {
    tree.file("alone.xml", sXml);
    void *const ptDoc = xmlFileParse(tree.arg("alone.xml"));
    test::clearLog();
    T *const pt = fParse(xmlGetHeadNode(ptDoc), cs(""));
    xmlDocFree(ptDoc);
    return pt;
  }

  Message **pptIn = nullptr;
  Message **pptOut = nullptr;
};

TEST_F(PairOfIndexes, StaysWhenADefinitionIsUnknown) {
  for (const char *psNames : {"psSrcStructName='In' psDstStructName='Nowhere'",
                              "psSrcStructName='Nowhere' psDstStructName='Out'"}) {
    EXPECT_EQ(read(std::string("<Converter psName='C' ") + psNames + "/>", sttParseXmlConverter), nullptr);
    EXPECT_EQ(test::logTexts().at(0), "Get Msg[Nowhere] define info err!!");
    EXPECT_EQ(gptCvtGlobalInfo->pptSrcIdx, pptOut) << psNames;
    EXPECT_EQ(gptCvtGlobalInfo->pptDstIdx, pptIn) << psNames;
    EXPECT_EQ(nGRet, -1);
  }
}

TEST_F(PairOfIndexes, StaysWhenASideOfALoopIsNone) {
  const std::string sLoop = args("ptSrcArgs", {src("Rows")}) + args("ptDstArgs", {dst("Id")});
  EXPECT_EQ(read("<Loop>" + sLoop + "</Loop>", sttParseXmlLoop), nullptr);
  EXPECT_EQ(test::logTexts().at(0), "Message[Id] Get Loop Type Err!!");
  EXPECT_EQ(nGRet, -1);
}

TEST_F(PairOfIndexes, ComesBackBehindALoopWhoseRulesCannotBeRead) {
  const std::string sLoop = args("ptSrcArgs", {src("Rows")}) + args("ptDstArgs", {dst("Items")});
  EXPECT_EQ(
      read("<Loop>" + sLoop + args("ptArgs", {copy(src("Nope"), dst("Parts"))}) + "</Loop>", sttParseXmlLoop),
      nullptr);
  EXPECT_EQ(test::logTexts().at(0), "Get Message Field[0:Nope] err!!");
  EXPECT_EQ(nGRet, -1);
}

TEST_F(PairOfIndexes, ComesBackBehindALoop) {
  const std::string sLoop = args("ptSrcArgs", {src("Rows")}) + args("ptDstArgs", {dst("Items")});
  ::Loop *const pt =
      read("<Loop>" + sLoop + args("ptArgs", {copy(src("Name"), dst("Parts"))}) + "</Loop>", sttParseXmlLoop);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(position(record<::Copy>(pt->ptArgs)->ptDstArgs), 1);
  EXPECT_EQ(nGRet, 0);
}

}  // namespace

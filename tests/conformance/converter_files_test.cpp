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
  const ArgXml sql{9, "<Sql __ID='pInfo'>" + args("ptSqlList", {func("known", {src("Code")}), src("Parts")}) +
                          args("ptFieldList", {dst("Name")}) + "</Sql>"};
  convert("C", {loopRule(src("Items"), dst("Rows"), {sql, loopNum(src("Parts"))})});
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

}  // namespace

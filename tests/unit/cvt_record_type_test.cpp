// A record where another type is expected is never taken for that type: it is told of when the file is read,
// and whatever needs it fails.
#include "convert_fixture.h"

namespace {

using namespace test;
using namespace test::xml;

const std::string kNode = "<Node __ID='pInfo' nType='2' psName='x'/>";

class RecordOfAnotherType : public ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    define("In", {field("A"), loop("L", {field("B")})});
    define("Out", {field("A"), loop("L", {field("B")})});
  }

  struct Rule {
    ArgXml rule;
    const char *psElement;  // that does not belong there
    const char *psWanted;
  };

  // Each rule, a converter's only one, loads and is told of; running it fails.
  void expectFailing(const std::vector<Rule> &rules) {
    for (size_t i = 0; i < rules.size(); ++i) convert("C" + std::to_string(i), {rules[i].rule});
    ASSERT_EQ(start(), 0) << testing::PrintToString(logTexts());
    EXPECT_EQ(logTexts().size(), rules.size());
    for (size_t i = 0; i < rules.size(); ++i) {
      EXPECT_TRUE(logged(1, place("C" + std::to_string(i), rules[i].psElement) +
                                ": it is not used: expected <" + rules[i].psWanted + "> as pInfo of <Arg>"))
          << i << testing::PrintToString(logTexts());
    }
    const Level from = newMessage("In");
    const Level to = newMessage("Out");
    for (size_t i = 0; i < rules.size(); ++i) {
      EXPECT_EQ(run(("C" + std::to_string(i)).c_str(), from, to), -1);
      EXPECT_EQ(logTexts().front().rfind("Arg Type [", 0), 0U) << logTexts().front();
    }
  }
};

TEST_F(RecordOfAnotherType, OfEachRuleFailsIt) {
  expectFailing({{{6, kNode}, "Node", "Copy"},
                 {{7, kNode}, "Node", "Case"},
                 {{8, kNode}, "Node", "Loop"},
                 {{9, kNode}, "Node", "Sql"},
                 {{11, kNode}, "Node", "Mapping"}});
}

TEST_F(RecordOfAnotherType, OfAnOperandFailsItsRule) {
  expectFailing({{copy({0, "<Copy __ID='pInfo'/>"}, dst("A")), "Copy", "Node"},
                 {copy(src("A"), {1, "<Value __ID='pInfo'/>"}), "Value", "Node"},
                 {copy({3, kNode}, dst("A")), "Node", "Value"},
                 {copy({4, kNode}, dst("A")), "Node", "Function"},
                 {copy({10, kNode}, dst("A")), "Node", "LoopGetNum"}});
}

TEST_F(RecordOfAnotherType, OnOneSideOfALoopIsRefusedWhenTheLoopIsRead) {
  convert("C", {loopRule({0, "<Value __ID='pInfo'/>"}, dst("L"), {})});
  EXPECT_EQ(start(), -1);
  EXPECT_EQ(logTexts().front(), place("C", "Value") + ": it is not used: expected <Node> as pInfo of <Arg>");
}

TEST_F(RecordOfAnotherType, AsTheLevelItselfGivesNoName) {
  convert("C", {loopRule({2, "<Value __ID='pInfo' psValue='S'/>"}, dst("L"), {{6, kNode}})});
  ASSERT_EQ(start(), 0);
  const Level from = newMessage("In");
  const Level to = newMessage("Out");
  EXPECT_EQ(run("C", from, to), -1);
}

// The records of each start take the places of those of the one before.
TEST_F(RecordOfAnotherType, OfOneStartIsNoneOfTheNext) {
  const ArgXml good = copy(src("A"), dst("A"));
  ArgXml misfit = good;
  misfit.nType = 7;
  for (int i = 0; i < 20; ++i) {
    const bool bFirst = i % 2 == 0;
    registerPlainFormat();
    convert("C0", {bFirst ? misfit : good});
    convert("C1", {bFirst ? good : misfit});
    ASSERT_EQ(start(), 0);
    {
      const Level from = newMessage("In");
      const Level to = newMessage("Out");
      EXPECT_EQ(run(bFirst ? "C1" : "C0", from, to), 0) << i << testing::PrintToString(logTexts());
      EXPECT_EQ(run(bFirst ? "C0" : "C1", from, to), -1) << i;
    }
    cvtEnd();
  }
}

TEST_F(RecordOfAnotherType, OfALoopNodeRefusesTheDefinition) {
  tree.file("Msg/In.xml",
            "<plain><Msg psMsgName='In'><Message __ID='ptHead' psNodeName='L'>"
            "<StructAttr __ID='ptStructAttr' nType='1'><FormatAttr __ID='pInfo'/></StructAttr>"
            "</Message></Msg></plain>");
  EXPECT_EQ(start(), -1);
  EXPECT_EQ(logTexts().front(), "File[" + tree.path("Msg/In.xml") +
                                    "] Line[1] Element[FormatAttr]: it is not used: expected <LoopType> as "
                                    "pInfo of <StructAttr>");
}

TEST_F(RecordOfAnotherType, OfAStepIsLeftOutAndTheStepFails) {
  tree.file("Id/a.xml",
            "<Id><FormatInfo psFormatId='f'><IdFunc __ID='ptParseFunc' psFunctName='GetIpcName'>"
            "<SetOffsetArgs __ID='ptArg' nOffset='1'/></IdFunc></FormatInfo></Id>");
  sMoreSections = "<Id __ID='ptId' psIdPath='Id'/>";
  ASSERT_EQ(start(), 0);
  EXPECT_EQ(logTexts().back(),
            "File[" + tree.path("Id/a.xml") +
                "] Line[1] Element[SetOffsetArgs]: it is not used: expected <IpcNameArgs> as "
                "ptArg of <IdFunc>");
  char sBuffer[] = "abc";
  int nError = 0;
  clearLog();
  EXPECT_EQ(cvtParseMessasge(cs("f"), sBuffer, 3, &nError), nullptr);
  EXPECT_TRUE(logged(1, "[ptArgs] is NULL"));
}

TEST_F(RecordOfAnotherType, OfAStepThatNeedsNoneIsLeftOutAndTheStepRuns) {
  const std::string sRecord = "<SetOffsetArgs __ID='ptArg' nOffset='1'/>";
  tree.file("Id/a.xml",
            pipelines({{"new", {{"pubNew", sRecord}}, {}}, {"parse", {{"pubParse", sRecord}}, {}}}));
  sMoreSections = "<Id __ID='ptId' psIdPath='Id'/>";
  ASSERT_EQ(start(), 0);
  const Texts all = logTexts();
  ASSERT_GE(all.size(), 2U);
  EXPECT_EQ(
      Texts(all.end() - 2, all.end()),
      Texts(2,
            "File[" + tree.path("Id/a.xml") +
                "] Line[1] Element[SetOffsetArgs]: it is not used: expected <IdFunc> as ptArg of <IdFunc>"));
  EXPECT_EQ(gptFormatInfo->ptParseFunc->ptArg, nullptr);
  EXPECT_EQ(gptFormatInfo->ptNext->ptParseFunc->ptArg, nullptr);
  cvtGetMsg(cs("In"))->fParse = [](void *, ValueListInfo *, Msg *, char *, int *, int) { return 0; };
  for (const char *psFormat : {"new", "parse"}) {
    InnerMessage message{};
    clearLog();
    EXPECT_EQ(fucParse(cs(psFormat), &message, nullptr), -1);
    EXPECT_EQ(logTexts().front(), "Msg [] get define info err!!") << psFormat;
    std::string("In").copy(message.sMsgName, 2);
    EXPECT_EQ(fucParse(cs(psFormat), &message, nullptr), 0) << psFormat;
    EXPECT_EQ(message.ptMsgInfo, cvtGetMsg(cs("In"))) << psFormat;
  }
}

TEST_F(RecordOfAnotherType, AsAListOfChoicesChoosesNothing) {
  tree.file("Msg/In.xml",
            "<plain><Msg psMsgName='In'><Message __ID='ptHead' psNodeName='A'><StructAttr "
            "__ID='ptStructAttr'/></Message><Value __ID='pIdInfo' psValue='v'/></Msg></plain>");
  ASSERT_EQ(start(), 0);
  InnerMessage source{};
  InnerMessage target{};
  source.ptMsgInfo = cvtGetMsg(cs("In"));
  ASSERT_NE(source.ptMsgInfo, nullptr);
  EXPECT_EQ(cvtGetConvert(&source, &target), nullptr);
}

}  // namespace

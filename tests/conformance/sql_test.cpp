// The SQL rule, between the library and its database access: when it asks, what it does with every answer,
// and whose the bytes are. The database access is the test's own.
#include <map>

#include "convert_fixture.h"
#include "vel_dbs.h"

namespace {

using Texts = std::vector<std::string>;

// What each call answers, and the calls in order.
std::map<std::string, int> g_answers;
Texts g_columns;
Texts g_calls;

int answer(const std::string &sCall, const std::string &sArgument = "") {
  g_calls.push_back(sArgument.empty() ? sCall : sCall + " " + sArgument);
  return g_answers[sCall];
}

// The code and the text of the last error, in whichever order they are asked for.
void askedWhy() {
  if (g_calls.back() != "why") g_calls.push_back("why");
}

}  // namespace

#define DBS(type) extern "C" __attribute__((visibility("default"))) type

DBS(int) dbsExecute(char *psSql) {
  return answer("execute", psSql);
}
DBS(int) dbsPrepare(char *psSql) {
  return answer("prepare", psSql);
}
DBS(int) dbsOpen() {
  return answer("open");
}
DBS(int) dbsColumnBuffer() {
  return answer("columnBuffer");
}
DBS(int) dbsFetch() {
  return answer("fetch");
}
DBS(int) dbsColumnCount() {
  answer("columnCount");
  return g_answers.count("columnCount") != 0 && g_answers["columnCount"] != 0
             ? g_answers["columnCount"]
             : static_cast<int>(g_columns.size());
}
DBS(char *) dbsGetField(int nColumn, int *pnLen) {
  answer("getField", std::to_string(nColumn));
  std::string &sColumn = g_columns.at(static_cast<size_t>(nColumn));
  *pnLen = static_cast<int>(sColumn.size());
  return sColumn.data();
}
DBS(int) dbsClose() {
  return answer("close");
}
DBS(int) dbsSqlCode() {
  askedWhy();
  return -904;
}
DBS(char *) dbsErrStr() {
  askedWhy();
  return test::cs("invalid column");
}

namespace {

using namespace test::xml;
using test::cs;
using test::Level;
using test::newMessage;

bool liesIn(const char *ps, const MemNode *ptNode) {
  const MemBlock *const ptBlock = ptNode->ptHeadBlock;
  return ps >= ptBlock->psBuf && ps < ptBlock->psBuf + ptBlock->nMaxSize;
}

class SqlRule : public test::ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    define("In", {field("A"), loop("Items", {field("Code")})});
    define("Out", {field("X"), field("Y"), loop("Rows", {field("Name")})});
  }

  int runRules(const Args &rules) {
    convert("C", rules);
    if (start() != 0) ADD_FAILURE() << "the configuration does not load";
    from = newMessage("In");
    from.set("A", "ann");
    for (const char *psCode : {"c0", "c1"}) from.add("Items").set("Code", psCode);
    to = newMessage("Out");
    to.set("X", "x0").set("Y", "y0");
    return run("C", from, to);
  }

  static Texts trail(Texts inner) {
    inner.push_back("CvtSql Err!!");
    inner.push_back("Do Convert Rule [1] err!!");
    inner.push_back("Convert [C] From struct[In] tp Struct[Out] err!!");
    return inner;
  }

  Level from{};
  Level to{};
};

// --- Failures --------------------------------------------------------------------------------------------

struct Failing {
  const char *psCall;
  const char *psText;  // in front of the statement
  Texts calls;         // up to the failing one
  bool bCloses;
};
class FailingCall : public SqlRule, public testing::WithParamInterface<std::tuple<Failing, int>> {};

TEST_P(FailingCall, IsReportedBetweenItsTraceAndItsClose) {
  const auto &[failing, nAnswer] = GetParam();
  g_answers[failing.psCall] = nAnswer;
  const bool bQuery = failing.calls.size() > 1 || failing.calls[0] != "execute select";
  EXPECT_EQ(runRules({bQuery ? sql({value("select")}, {dst("X")}) : sql({value("select")}),
                      copy(src("A"), dst("Y"))}),
            -1);
  Texts lines = trail({std::string(failing.psText) + "[select]" + (bQuery ? " " : " err!! ") +
                       "sqlcode[-904:invalid column]"});
  EXPECT_EQ(test::logTexts(1), lines);
  if (bQuery) lines.insert(lines.begin(), "Cvt Sql[select]");
  EXPECT_EQ(test::logTexts(0), lines);
  Texts calls = failing.calls;
  calls.push_back("why");
  if (failing.bCloses) calls.push_back("close");
  EXPECT_EQ(g_calls, calls);
  EXPECT_EQ(to.get("X"), "x0");
  EXPECT_EQ(to.get("Y"), "y0");  // the rule behind it has not run
}

INSTANTIATE_TEST_SUITE_P(
    Calls, FailingCall,
    testing::Combine(
        testing::Values(Failing{"execute", "CvtOraExecSql", {"execute select"}, false},
                        Failing{"prepare", "CvtOraInq dbsPrepare err!! sql", {"prepare select"}, false},
                        Failing{"open", "CvtOraInq dbsOpens err!! sql", {"prepare select", "open"}, false},
                        Failing{"columnBuffer",
                                "CvtOraInq dbsColumnBuffer err!! sql",
                                {"prepare select", "open", "columnBuffer"},
                                true},
                        Failing{"fetch",
                                "CvtOraInq dbsColumnBuffer err!! sql",
                                {"prepare select", "open", "columnBuffer", "fetch"},
                                true}),
        testing::Values(-1, 1, -3000)),
    [](const auto &p) { return std::string(std::get<0>(p.param).psCall) + std::to_string(p.index); });

TEST_F(SqlRule, NoDataIsAnAnswerOfTheFetchOnly) {
  for (const char *psCall : {"execute", "prepare", "open", "columnBuffer"}) {
    g_answers = {{psCall, -3001}};
    const bool bQuery = std::string(psCall) != "execute";
    EXPECT_EQ(runRules({bQuery ? sql({value("q")}, {dst("X")}) : sql({value("q")})}), -1) << psCall;
    EXPECT_EQ(test::logTexts(1).at(1), "CvtSql Err!!") << psCall;
    cvtEnd();
    test::registerPlainFormat();
  }
}

TEST_F(SqlRule, FailingCloseChangesNothing) {
  g_answers["close"] = -1;
  g_columns = {"Rome"};
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X")})}), 0);
  EXPECT_EQ(to.get("X"), "Rome");
  g_answers["fetch"] = -3001;
  EXPECT_EQ(run("C", from, to), 0);
  EXPECT_EQ(test::logTexts(1), Texts{"Warning: sql[q] not find data!!"});
}

TEST_F(SqlRule, CountOfColumnsThatIsNoneFillsNothing) {
  g_answers["columnCount"] = -1;
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X")})}), 0);
  EXPECT_EQ(test::logTexts(0), (Texts{"Cvt Sql[q]", "Cvt Field Num[-1]"}));
  EXPECT_EQ(to.get("X"), "x0");
  EXPECT_EQ(g_calls.back(), "close");
}

TEST_F(SqlRule, FailureInALoopNamesTheRepetitionAndKeepsThoseBefore) {
  g_columns = {"Rome"};
  EXPECT_EQ(runRules({loopRule(src("Items"), dst("Rows"),
                               {sql({value("q "), src("Code")}, {dst("Name")}),
                                cases({when({equal(src("Code"), value("c1"))}, {sql({level()})})})})}),
            -1);
  EXPECT_EQ(test::logTexts(1),
            (Texts{"No Defined Arg Type [2] err!!",
                   "[ptValue = GetValue(ptSrcValueList, ptDstValueList, ptArgs, ptMemNode)] is NULL",
                   "CvtSql Err!!", "Do Convert Rule [1] err!!", "CvtCase Err!!", "Do Convert Rule [2] err!!",
                   "Convert Loop[1/2] From[Items] to [Rows]  convert err!!", "CVT_TYPE_LOOP Err!!",
                   "Do Convert Rule [1] err!!", "Convert [C] From struct[In] tp Struct[Out] err!!"}));
  EXPECT_EQ(to.at("Rows", 0).get("Name"), "Rome");
  EXPECT_EQ(to.at("Rows", 1).get("Name"), "Rome");
}

// --- Statements and values -------------------------------------------------------------------------------

TEST_F(SqlRule, PercentSignsOfAStatementAreItsOwn) {
  g_answers["execute"] = 1;
  EXPECT_EQ(runRules({sql({value("like %s%n%d")})}), -1);
  EXPECT_EQ(g_calls[0], "execute like %s%n%d");
  EXPECT_EQ(test::logTexts(1), trail({"CvtOraExecSql[like %s%n%d] err!! sqlcode[-904:invalid column]"}));
}

TEST_F(SqlRule, EmptyStatementIsAskedForToo) {
  g_columns = {"1"};
  EXPECT_EQ(runRules({sql({}, {dst("X")})}), 0);
  EXPECT_EQ(g_calls,
            (Texts{"prepare", "open", "columnBuffer", "fetch", "columnCount", "getField 0", "close"}));
  EXPECT_EQ(test::logTexts(5).at(0), "Cvt Sql[]");
}

TEST_F(SqlRule, BytesBelongToTheDestinationsNodeWhateverSlotTheyAreFor) {
  g_columns = {"Rome", "Oslo"};
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X"), src("A")})}), 0);
  EXPECT_TRUE(liesIn(to.slot("X")->psValue, to.ptNode));
  EXPECT_TRUE(liesIn(from.slot("A")->psValue, to.ptNode));
  g_columns = {"XXXX", "XXXX"};
  EXPECT_EQ(to.get("X"), "Rome");
  EXPECT_EQ(from.get("A"), "Oslo");
}

TEST_F(SqlRule, FieldIsLookedUpBeforeItsColumnIsAskedFor) {
  g_columns = {"Rome", "Oslo"};
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X"), level()})}), -1);
  EXPECT_EQ(g_calls,
            (Texts{"prepare q", "open", "columnBuffer", "fetch", "columnCount", "getField 0", "close"}));
}

TEST_F(SqlRule, WithoutMemoryForAColumnFailsAndLeavesTheSlot) {
  g_columns = {"Rome", "Oslo"};
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X"), dst("Y")})}), 0);
  to.set("X", "x1");
  EXPECT_EQ(run("C", from, {to.ptList, to.pptIdx, nullptr}), -1);
  EXPECT_EQ(test::logTexts(1), trail({"[ptNode] is NULL"}));
  EXPECT_EQ(to.get("X"), "x1");
  EXPECT_EQ(to.get("Y"), "Oslo");
  EXPECT_EQ(g_calls.back(), "close");
}

TEST_F(SqlRule, WhatAQueryFoundIsAPieceOfTheNextStatement) {
  g_columns = {"Rome"};
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X")}), sql({value("note "), dst("X")})}), 0);
  EXPECT_EQ(g_calls.back(), "execute note Rome");
}

TEST_F(SqlRule, OnlyTheFirstRowIsFetched) {
  g_columns = {"Rome"};
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X")})}), 0);
  EXPECT_EQ(std::count(g_calls.begin(), g_calls.end(), "fetch"), 1);
}

TEST_F(SqlRule, ASlotNamedTwiceKeepsTheLaterColumn) {
  g_columns = {"Rome", "Oslo"};
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X"), dst("X")})}), 0);
  EXPECT_EQ(to.get("X"), "Oslo");
}

TEST_F(SqlRule, EveryTraceIsOfLevelFive) {
  g_columns = {"Rome", ""};
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X"), dst("Y")})}), 0);
  EXPECT_EQ(test::logTexts(0), (Texts{"Cvt Sql[q]", "Cvt Field Num[2]", "  Field[0][Rome]", "  Field[1][]"}));
  for (const test::LogLine &line : test::logLines()) {
    EXPECT_EQ(line.nLevel, 5) << line.sText;
    EXPECT_EQ(line.sModule, "$cvt2") << line.sText;
  }
}

}  // namespace

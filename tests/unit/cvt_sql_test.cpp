// The SQL rule, with a database-access library of the test's own: it notes the calls and gives what it is
// told.
#include <algorithm>
#include <climits>
#include <map>

#include "convert_fixture.h"
#include "heap_count.h"
#include "vel_dbs.h"

namespace {

using namespace test::xml;
using test::cs;
using test::Level;
using test::newMessage;
using Texts = std::vector<std::string>;

// What the library answers. A status is given once asked for by name.
struct Database {
  std::map<std::string, int> statuses;
  std::vector<std::string> columns;
  int nFailingColumn = -1;  // its bytes cannot be had
  int nLength = INT_MIN;    // of a column, in place of its true one
  bool bNotesCalls = true;
  Texts calls;

  int answer(const std::string &sCall, const std::string &sArgument = "") {
    if (bNotesCalls) calls.push_back(sCall + (sArgument.empty() ? "" : "(" + sArgument + ")"));
    return statuses[sCall];
  }
};
Database g_database;

}  // namespace

#define CALL(type) extern "C" __attribute__((visibility("default"))) type

CALL(int) dbsExecute(char *psSql) {
  return g_database.answer("execute", psSql);
}
CALL(int) dbsPrepare(char *psSql) {
  return g_database.answer("prepare", psSql);
}
CALL(int) dbsOpen() {
  return g_database.answer("open");
}
CALL(int) dbsColumnBuffer() {
  return g_database.answer("columnBuffer");
}
CALL(int) dbsFetch() {
  return g_database.answer("fetch");
}
CALL(int) dbsColumnCount() {
  g_database.answer("columnCount");
  return static_cast<int>(g_database.columns.size());
}
CALL(char *) dbsGetField(int nColumn, int *pnLen) {
  static std::string f_sColumn;  // one place for all columns: what is not copied at once is lost
  g_database.answer("getField", std::to_string(nColumn));
  if (nColumn == g_database.nFailingColumn) return nullptr;
  f_sColumn = g_database.columns.at(static_cast<size_t>(nColumn));
  *pnLen = g_database.nLength == INT_MIN ? static_cast<int>(f_sColumn.size()) : g_database.nLength;
  return f_sColumn.data();
}
CALL(int) dbsClose() {
  return g_database.answer("close");
}
CALL(int) dbsSqlCode() {
  g_database.answer("sqlCode");
  return 1403;
}
CALL(char *) dbsErrStr() {
  g_database.answer("errStr");
  return cs("no such table");
}

namespace {

int upper(Value *ptResult, int, Value **pptArgs, MemPort ptMemNode) {
  std::string s(pptArgs[0]->psValue, static_cast<size_t>(pptArgs[0]->nLen));
  for (char &c : s) c = static_cast<char>(toupper(c));
  return cvtDumpValue(ptResult, s.data(), static_cast<int>(s.size()), ptMemNode);
}

std::vector<int> g_taken;  // temporaries that each call of "count" found taken, its own among them
int count(Value *, int, Value **, MemPort) {
  g_taken.push_back(test::temporariesTaken());
  return 0;
}

class SqlRule : public test::ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    cvtConvertAddFunction(cs("upper"), upper);
    cvtConvertAddFunction(cs("count"), count);
    define("In", {field("A"), field("B"), loop("Items", {field("Code")})});
    define("Out", {field("X"), field("Y"), field("Z"), loop("Rows", {field("Name")})});
  }

  // Converts one message by these rules; the log begins behind the start.
  int runRules(const Args &rules) {
    convert("C", rules);
    if (start() != 0) ADD_FAILURE() << "the configuration does not load";
    from = newMessage("In");
    from.set("A", "ann").set("B", "42");
    to = newMessage("Out");
    to.set("X", "x0").set("Y", "y0").set("Z", "z0");
    return run("C", from, to);
  }

  // The trail of a failure of rule 1.
  static Texts trail(Texts inner) {
    inner.push_back("CvtSql Err!!");
    inner.push_back("Do Convert Rule [1] err!!");
    inner.push_back("Convert [C] From struct[In] tp Struct[Out] err!!");
    return inner;
  }

  Texts slots() const { return {to.get("X"), to.get("Y"), to.get("Z")}; }

  Level from;
  Level to;
};

using Statement = SqlRule;
using Change = SqlRule;
using Query = SqlRule;

// --- The statement ---------------------------------------------------------------------------------------

TEST_F(Statement, PiecesAreJoinedWithNothingBetweenThem) {
  const ArgXml open{3, "<Value __ID='pInfo' psValue=\"select name from c where id='\" nLen='29'/>"};
  const ArgXml quote{3, "<Value __ID='pInfo' psValue=\"'\" nLen='1'/>"};
  EXPECT_EQ(runRules({sql({open, src("B"), quote})}), 0);
  EXPECT_EQ(g_database.calls, Texts{"execute(select name from c where id='42')"});
}

TEST_F(Statement, PiecesAreFieldsOfBothMessagesConstantsCountsAndResults) {
  EXPECT_EQ(
      runRules({sql({value("a"), src("A"), dst("X"), func("upper", {src("A")}), loopNum(src("Items"))})}), 0);
  EXPECT_EQ(g_database.calls, Texts{"execute(aannx0ANN0)"});
}

TEST_F(Statement, ResultsOfAllPiecesLiveUntilItIsComplete) {
  Args pieces;
  for (int i = 0; i < 15; ++i) pieces.push_back(func("upper", {func("upper", {src("A")})}));
  EXPECT_EQ(runRules({sql(pieces)}), 0);
  std::string sAll;
  for (int i = 0; i < 15; ++i) sAll += "ANN";
  EXPECT_EQ(g_database.calls, Texts{"execute(" + sAll + ")"});
}

TEST_F(Statement, ResultsOfPiecesAreTakenUntilTheRuleIsDone) {
  EXPECT_EQ(runRules({sql({func("count"), func("count"), func("count")}), copy(func("count"), dst("X"))}), 0);
  EXPECT_EQ(g_taken, (std::vector<int>{1, 2, 3, 1}));
}

TEST_F(Statement, EmptyPiecesAddNothing) {
  EXPECT_EQ(runRules({copy(value(""), dst("X")), sql({value("a"), dst("X"), value("b")})}), 0);
  EXPECT_EQ(g_database.calls, Texts{"execute(ab)"});
}

TEST_F(Statement, WithoutPiecesIsEmpty) {
  EXPECT_EQ(runRules({sql({})}), 0);
  EXPECT_EQ(g_database.calls, Texts{"execute"});
}

class LongStatement : public SqlRule, public testing::WithParamInterface<size_t> {};

TEST_P(LongStatement, IsCompleteAndEndsWithAZeroByte) {
  const std::string sText(GetParam(), 'q');
  EXPECT_EQ(
      runRules({sql({value(sText.substr(0, sText.size() / 3)), value(sText.substr(sText.size() / 3))})}), 0);
  EXPECT_EQ(g_database.calls, Texts{"execute(" + sText + ")"});
}

INSTANTIATE_TEST_SUITE_P(AroundTheSteps, LongStatement,
                         testing::Values(998, 999, 1000, 1001, 1999, 2000, 2001, 2500, 3000, 30'000));

TEST_F(Statement, BufferGrowsByThousandsWithRoomForTheZeroByte) {
  REQUIRE_HEAP_COUNT();
  for (const auto &[nLen, nBuffer] : {std::pair<size_t, size_t>(1, 1000),
                                      {999, 1000},
                                      {1000, 2000},
                                      {2500, 3000},
                                      {2999, 3000},
                                      {3000, 4000}}) {
    const std::string sText(nLen, 'q');
    convert("C", {sql({value(sText)})});
    ASSERT_EQ(start(), 0);
    from = newMessage("In");
    to = newMessage("Out");
    g_database.bNotesCalls = false;
    EXPECT_EQ(test::largestAllocation([&] { run("C", from, to); }), nBuffer) << nLen;
    cvtEnd();
    test::registerPlainFormat();
  }
}

TEST_F(Statement, PieceThatDoesNotResolveFailsTheRule) {
  EXPECT_EQ(runRules({sql({value("a"), level()}, {dst("X")})}), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"No Defined Arg Type [2] err!!",
                   "[ptValue = GetValue(ptSrcValueList, ptDstValueList, ptArgs, ptMemNode)] is NULL"}));
  EXPECT_EQ(g_database.calls, Texts{});
}

TEST_F(Statement, LoopIsNoPiece) {
  EXPECT_EQ(runRules({sql({value("a"), src("Items")})}), 0);  // a loop without repetitions is an empty slot
  EXPECT_EQ(g_database.calls, Texts{"execute(a)"});
  from.add("Items").set("Code", "c");
  EXPECT_EQ(run("C", from, to), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"Sql piece [2] has no text: name a field that is no loop, or a constant with psValue"}));
  EXPECT_EQ(g_database.calls.size(), 1U);
}

TEST_F(Statement, ConstantWithALengthAndNoTextIsNoPiece) {
  EXPECT_EQ(runRules({sql({{3, "<Value __ID='pInfo' nLen='5'/>"}})}), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"Sql piece [1] has no text: name a field that is no loop, or a constant with psValue"}));
}

TEST_F(Statement, NegativeLengthOfAConstantIsNoPiece) {
  EXPECT_EQ(runRules({sql({{3, "<Value __ID='pInfo' psValue='abc' nLen='-3'/>"}})}), -1);
  EXPECT_EQ(g_database.calls, Texts{});
}

// --- A statement without result --------------------------------------------------------------------------

TEST_F(Change, IsExecutedAndLogsNothing) {
  EXPECT_EQ(runRules({sql({value("delete from t")})}), 0);
  EXPECT_EQ(g_database.calls, Texts{"execute(delete from t)"});
  EXPECT_TRUE(test::logLines().empty());
  EXPECT_EQ(slots(), (Texts{"x0", "y0", "z0"}));
}

TEST_F(Change, ThatFailsReportsStatementCodeAndText) {
  g_database.statuses["execute"] = 7;
  EXPECT_EQ(runRules({sql({value("delete from t")}), copy(src("A"), dst("X"))}), -1);
  EXPECT_EQ(test::logTexts(1), trail({"CvtOraExecSql[delete from t] err!! sqlcode[1403:no such table]"}));
  EXPECT_EQ(to.get("X"), "x0");  // the rules behind it do not run
  EXPECT_EQ(g_database.calls[0], "execute(delete from t)");
  EXPECT_EQ(g_database.calls.size(), 3U);  // code and text; no commit, no rollback, no close
}

// --- A query ---------------------------------------------------------------------------------------------

TEST_F(Query, CallsInOrderAndFillsTheSlots) {
  g_database.columns = {"Rome", "10.50"};
  EXPECT_EQ(runRules({sql({value("select city")}, {dst("X"), dst("Y")})}), 0);
  EXPECT_EQ(g_database.calls, (Texts{"prepare(select city)", "open", "columnBuffer", "fetch", "columnCount",
                                     "getField(0)", "getField(1)", "close"}));
  EXPECT_EQ(slots(), (Texts{"Rome", "10.50", "z0"}));
}

TEST_F(Query, IsTracedWithStatementCountAndColumns) {
  g_database.columns = {"Rome", ""};
  EXPECT_EQ(runRules({sql({value("select city")}, {dst("X"), dst("Y")})}), 0);
  EXPECT_EQ(test::logTexts(5),
            (Texts{"Cvt Sql[select city]", "Cvt Field Num[2]", "  Field[0][Rome]", "  Field[1][]"}));
  EXPECT_EQ(test::logTexts(1), Texts{});
}

TEST_F(Query, MoreColumnsThanFieldsAreIgnored) {
  g_database.columns = {"1", "2", "3"};
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X"), dst("Y")})}), 0);
  EXPECT_EQ(slots(), (Texts{"1", "2", "z0"}));
  EXPECT_EQ(g_database.calls.back(), "close");
  EXPECT_EQ(g_database.calls[g_database.calls.size() - 2], "getField(1)");
}

TEST_F(Query, MoreFieldsThanColumnsAreLeftAlone) {
  g_database.columns = {"1", "2", "3"};
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X"), dst("Y"), dst("Z"), level()})}), 0);  // not even resolved
  EXPECT_EQ(slots(), (Texts{"1", "2", "3"}));
  EXPECT_EQ(test::logTexts(1), Texts{});
}

TEST_F(Query, WithoutColumnsFillsNothing) {
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X")})}), 0);
  EXPECT_EQ(slots(), (Texts{"x0", "y0", "z0"}));
  EXPECT_EQ(g_database.calls.back(), "close");
}

TEST_F(Query, ColumnBytesAreCopiedWithTheirLength) {
  const std::string sBytes("a\0'\xff", 4);
  g_database.columns = {sBytes, "second"};
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X"), dst("Y")})}), 0);
  EXPECT_EQ(slots(), (Texts{sBytes, "second", "z0"}));
}

TEST_F(Query, EmptyColumnEmptiesTheSlot) {
  g_database.columns = {""};
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X")})}), 0);
  EXPECT_EQ(to.slot("X")->nLen, 0);
  EXPECT_EQ(to.slot("X")->psValue, nullptr);
}

TEST_F(Query, FieldMayBeAnySlotOfTheLevel) {
  g_database.columns = {"Rome"};
  EXPECT_EQ(runRules({sql({value("q")}, {src("B")})}), 0);
  EXPECT_EQ(from.get("B"), "Rome");
}

TEST_F(Query, InALoopFillsEachRepetition) {
  g_database.columns = {"Rome"};
  convert("C", {loopRule(src("Items"), dst("Rows"), {sql({value("q "), src("Code")}, {dst("Name")})})});
  ASSERT_EQ(start(), 0);
  from = newMessage("In");
  from.add("Items").set("Code", "a");
  from.add("Items").set("Code", "b");
  to = newMessage("Out");
  EXPECT_EQ(run("C", from, to), 0);
  EXPECT_EQ(g_database.calls[0], "prepare(q a)");
  EXPECT_EQ(g_database.calls[7], "prepare(q b)");
  EXPECT_EQ(to.count("Rows"), 2);
  EXPECT_EQ(to.at("Rows", 1).get("Name"), "Rome");
}

TEST_F(Query, WithoutARowWarnsAndGoesOn) {
  g_database.statuses["fetch"] = -3001;
  EXPECT_EQ(runRules({sql({value("select city")}, {dst("X")}), copy(src("A"), dst("Y"))}), 0);
  EXPECT_EQ(test::logTexts(1), Texts{"Warning: sql[select city] not find data!!"});
  EXPECT_EQ(g_database.calls, (Texts{"prepare(select city)", "open", "columnBuffer", "fetch", "close"}));
  EXPECT_EQ(slots(), (Texts{"x0", "ann", "z0"}));
}

TEST_F(Query, ThatCannotBePreparedFails) {
  g_database.statuses["prepare"] = 1;
  EXPECT_EQ(runRules({sql({value("select city")}, {dst("X")})}), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"CvtOraInq dbsPrepare err!! sql[select city] sqlcode[1403:no such table]"}));
  EXPECT_EQ(std::count(g_database.calls.begin(), g_database.calls.end(), "close"), 0);
}

TEST_F(Query, ThatCannotBeOpenedFailsWithoutAClose) {
  g_database.statuses["open"] = 1;
  EXPECT_EQ(runRules({sql({value("select city")}, {dst("X")})}), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"CvtOraInq dbsOpens err!! sql[select city] sqlcode[1403:no such table]"}));
  EXPECT_EQ(std::count(g_database.calls.begin(), g_database.calls.end(), "close"), 0);
}

class FailingQuery : public SqlRule, public testing::WithParamInterface<std::pair<const char *, int>> {};

TEST_P(FailingQuery, ReportsCodeAndTextBeforeItCloses) {
  const auto [psCall, nStatus] = GetParam();
  g_database.statuses[psCall] = nStatus;
  EXPECT_EQ(runRules({sql({value("select city")}, {dst("X")})}), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"CvtOraInq dbsColumnBuffer err!! sql[select city] sqlcode[1403:no such table]"}));
  EXPECT_EQ(g_database.calls.back(), "close");
  EXPECT_EQ(std::count(g_database.calls.begin(), g_database.calls.end(), "close"), 1);
  EXPECT_EQ(slots(), (Texts{"x0", "y0", "z0"}));
}

INSTANTIATE_TEST_SUITE_P(Calls, FailingQuery,
                         testing::Values(std::pair("columnBuffer", 1), std::pair("columnBuffer", -3001),
                                         std::pair("fetch", -1), std::pair("fetch", 3001)));

TEST_F(Query, FieldThatDoesNotResolveFailsAndCloses) {
  g_database.columns = {"1", "2"};
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X"), level()})}), -1);
  EXPECT_EQ(test::logTexts(1),
            trail({"No Defined Arg Type [2] err!!",
                   "[ptValue = GetValue(ptSrcValueList, ptDstValueList, ptArgs, ptMemNode)] is NULL"}));
  EXPECT_EQ(g_database.calls.back(), "close");
  EXPECT_EQ(slots(), (Texts{"1", "y0", "z0"}));  // what was written before stays
}

TEST_F(Query, ColumnThatCannotBeHadFailsAndCloses) {
  g_database.columns = {"1", "2"};
  g_database.nFailingColumn = 1;
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X"), dst("Y")})}), -1);
  EXPECT_EQ(test::logTexts(1), trail({"CvtOraInq dbsGetField[1] err!! sqlcode[1403:no such table]"}));
  EXPECT_EQ(g_database.calls.back(), "close");
  EXPECT_EQ(slots(), (Texts{"1", "y0", "z0"}));
}

TEST_F(Query, ColumnWithANegativeLengthFails) {
  g_database.columns = {"1"};
  g_database.nLength = -1;
  EXPECT_EQ(runRules({sql({value("q")}, {dst("X")})}), -1);
  EXPECT_EQ(slots(), (Texts{"x0", "y0", "z0"}));
}

}  // namespace

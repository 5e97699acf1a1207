// Database access through ODBC, on a real PostgreSQL server of the test's own.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <thread>

#include "config_tree.h"
#include "database.h"
#include "log_capture.h"
#include "postgres_server.h"
#include "vel_dbs.h"

// The driver forgets 48 bytes when a prepared statement fails.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions() {
  return "leak:psqlodbca.so";
}

namespace {

using test::cs;
using test::errorOf;
using test::query;
using test::Row;
using test::Rows;
using test::run;
using test::single;

bool has(const std::string &text, const std::string &part) {
  return text.find(part) != std::string::npos;
}
bool begins(const std::string &text, const std::string &part) {
  return text.rfind(part, 0) == 0;
}

// One server for all tests; each finds it running, empty, and is connected to it.
class Postgres : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    if (test::PostgresServer::missing().empty()) server = std::make_unique<test::PostgresServer>();
  }
  static void TearDownTestSuite() {
    dbsDisconnect();
    server.reset();
  }

  void SetUp() override {
    if (server == nullptr) GTEST_SKIP() << test::PostgresServer::missing();
    for (const char *ps : {"VEL_DBS_URL", "VEL_DBS_TIMEOUT_MS", "VEL_DBS_STATEMENTS"}) unsetenv(ps);
    if (!server->running()) server->start();
    connect(server->url());
    run("DROP SCHEMA public CASCADE");
    run("CREATE SCHEMA public");
    test::clearLog();
  }

  static void connect(const std::string &url) { ASSERT_EQ(dbsConnect(cs(url.c_str())), 0) << dbsErrStr(); }

  static std::unique_ptr<test::PostgresServer> server;
};

std::unique_ptr<test::PostgresServer> Postgres::server;

// Ends the server a little later, while the test waits for a statement.
class EndsSoon {
 public:
  EndsSoon(test::PostgresServer &server, int nSignal)
      : m_thread([&server, nSignal] {
          std::this_thread::sleep_for(std::chrono::milliseconds(300));
          kill(server.pid(), nSignal);
        }) {}
  ~EndsSoon() { m_thread.join(); }

 private:
  std::thread m_thread;
};

// --- The same statements, the same results

const char *const kLoad[] = {
    "CREATE TABLE customer (id INTEGER PRIMARY KEY, name TEXT, credit NUMERIC(10,2), note TEXT)",
    "INSERT INTO customer VALUES (1, 'Ada', 10.50, NULL), (2, 'O''Brien; --', 1.005, '')",
    "INSERT INTO customer VALUES (3, 'h\xc3\xa9llo', -0.001, 'a\\')",
    "INSERT INTO customer (id) VALUES (4)",
    "UPDATE customer SET credit = 99.995 WHERE id = 4",
    "DELETE FROM customer WHERE id = 77",
};
const char *const kLookUps[] = {
    "SELECT id, name, credit, note FROM customer ORDER BY id",
    "SELECT credit FROM customer WHERE name = 'O''Brien; --';",
    "SELECT name || '/' || id, credit AS c FROM customer WHERE note IS NOT NULL ORDER BY id DESC -- two",
    "SELECT count(*), sum(id), max(name) FROM customer WHERE id < 3",
    "SELECT '{fn x}', '?', NULL, 7, 'a''b' FROM customer WHERE id = 1",
    "SELECT id FROM customer WHERE id = 77",
};

std::vector<Rows> resultsOf(const std::string &url) {
  EXPECT_EQ(dbsConnect(cs(url.c_str())), 0) << dbsErrStr();
  for (const char *ps : kLoad) run(ps);
  std::vector<Rows> results;
  for (const char *ps : kLookUps) results.push_back(query(ps));
  return results;
}

TEST_F(Postgres, GivesTheSameResultsAsSqlite) {
  const std::vector<Rows> postgres = resultsOf(server->url());
  EXPECT_EQ(postgres[0], (Rows{{"1", "Ada", "10.50", ""},
                               {"2", "O'Brien; --", "1.01", ""},
                               {"3", "h\xc3\xa9llo", "0.00", "a\\"},
                               {"4", "", "100.00", ""}}));
  std::vector<Rows> sqlite = resultsOf("sqlite::memory:");
  for (size_t i = 0; i < postgres.size(); ++i) EXPECT_EQ(postgres[i], sqlite[i]) << kLookUps[i];
}

TEST_F(Postgres, BothRefuseTheSameStatements) {
  for (const std::string &url : {server->url(), std::string("sqlite::memory:")}) {
    connect(url);
    for (const char *ps : {"", ";", "-- c", "SELECT 1; SELECT 2", "SELECT 'a", "SELECT ?", "SELEC 1",
                           "SELECT x FROM missing", "SELECT \"abc\""}) {
      EXPECT_EQ(dbsExecute(cs(ps)), -1) << url << ": " << ps;
      EXPECT_EQ(test::prepareAndOpen(ps), -1) << url << ": " << ps;
    }
  }
}

// --- Column bytes

TEST_F(Postgres, ValuesComeInTheDatabasesTextForm) {
  EXPECT_EQ(
      query(
          "SELECT 12345678901234567890.10::numeric, 1.50::numeric(10,3), 9223372036854775807, 0.1::float8, "
          "'ab'::char(4), DATE '2024-01-31', TIMESTAMP '2024-01-31 12:00:00.5', ARRAY[1,2], 't'::bool::text"),
      (Rows{{"12345678901234567890.10", "1.500", "9223372036854775807", "0.1", "ab  ", "2024-01-31",
             "2024-01-31 12:00:00.5", "{1,2}", "true"}}));
}

TEST_F(Postgres, BytesOfAnyValueStandInABinaryColumn) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  EXPECT_EQ(single("SELECT decode(string_agg(lpad(to_hex(i), 2, '0'), '' ORDER BY i), 'hex') "
                   "FROM generate_series(0, 255) i"),
            all);
}

// Lengths around the pieces in which a driver hands a value over, and characters that may not be cut in two.
TEST_F(Postgres, ColumnsOfAnyLengthComeWhole) {
  for (const size_t length :
       std::vector<size_t>{0, 1, 510, 511, 512, 513, 1023, 1024, 1025, 70000, 3000000}) {
    std::string accents;
    for (size_t i = 0; i < length; ++i) accents += "\xc3\xa9";
    const Rows rows = query(
        "SELECT repeat('x', n), repeat('\xc3\xa9', n), 'x' || repeat('\xc3\xa9', n), decode(repeat('00', n), "
        "'hex'), "
        "NULL FROM (VALUES (" +
        std::to_string(length) + ")) AS t (n)");
    const Row expected = {std::string(length, 'x'), accents, "x" + accents, std::string(length, '\0'), ""};
    EXPECT_TRUE(rows == Rows{expected}) << length;
  }
}

TEST_F(Postgres, LongTextsGoInWhole) {
  const std::string text(3000000, 'x');
  run("CREATE TABLE t (a TEXT)");
  run("INSERT INTO t VALUES ('" + text + "')");
  EXPECT_TRUE(single("SELECT a FROM t") == text);
}

// --- Rows and the cursor

TEST_F(Postgres, NoRowIsMinus3001EachTime) {
  ASSERT_EQ(test::prepareAndOpen("SELECT 1 WHERE false"), 0);
  EXPECT_EQ(dbsFetch(), -3001);
  EXPECT_EQ(dbsFetch(), -3001);
  EXPECT_EQ(dbsClose(), 0);
}

TEST_F(Postgres, AStatementWithoutColumnsIsNoQuery) {
  run("CREATE TABLE t (a INTEGER)");
  ASSERT_EQ(test::prepareAndOpen("INSERT INTO t VALUES (1)"), 0);
  EXPECT_TRUE(has(errorOf(dbsColumnBuffer()), "returns no columns"));
  EXPECT_EQ(dbsColumnCount(), 0);
  EXPECT_EQ(dbsFetch(), -3001);
  EXPECT_EQ(single("SELECT count(*) FROM t"), "1");
}

TEST_F(Postgres, ExecuteLeavesTheCurrentQueryAloneAndDropsRows) {
  run("CREATE TABLE t (a INTEGER)");
  ASSERT_EQ(test::prepareAndOpen("SELECT i FROM generate_series(1, 3) i"), 0);
  ASSERT_EQ(dbsFetch(), 0);
  run("INSERT INTO t VALUES (1) RETURNING a");
  EXPECT_EQ(test::fetchedRow(), Row{"1"});
  ASSERT_EQ(dbsFetch(), 0);
  EXPECT_EQ(test::fetchedRow(), Row{"2"});
}

TEST_F(Postgres, AClosedQueryCanBeOpenedAgain) {
  run("CREATE TABLE t (a INTEGER)");
  ASSERT_EQ(dbsPrepare(cs("SELECT count(*) FROM t")), 0);
  for (const char *ps : {"0", "1", "2"}) {
    ASSERT_EQ(dbsOpen(), 0);
    ASSERT_EQ(dbsFetch(), 0);
    EXPECT_EQ(test::fetchedRow(), Row{ps});
    ASSERT_EQ(dbsClose(), 0);
    run("INSERT INTO t VALUES (1)");
  }
}

// --- Statements and errors

TEST_F(Postgres, AnErrorHasItsSqlStateAndNativeCodeInOneLine) {
  EXPECT_TRUE(begins(errorOf(dbsExecute(cs("SELEC 1"))), "[42601] ERROR: syntax error at or near \"SELEC\""))
      << dbsErrStr();
  EXPECT_EQ(dbsSqlCode(), 1);
  EXPECT_TRUE(begins(errorOf(test::prepareAndOpen("SELECT * FROM missing")),
                     "[42P01] ERROR: relation \"missing\" does not exist"));
  EXPECT_TRUE(begins(errorOf(dbsExecute(cs("SELECT 1/0"))), "[22012] ERROR: division by zero"));
  EXPECT_FALSE(has(dbsErrStr(), "\n"));
  const std::string last = dbsErrStr();
  EXPECT_EQ(single("SELECT 1"), "1");
  EXPECT_EQ(dbsErrStr(), last);
}

TEST_F(Postgres, SeveralStatementsAreRefusedAndNoneOfThemRuns) {
  run("CREATE TABLE t (a INTEGER)");
  for (const char *ps :
       {"INSERT INTO t VALUES (1); INSERT INTO t VALUES (2)", "INSERT INTO t VALUES (1); nonsense",
        "INSERT INTO t SELECT 1 WHERE 'x\\' = 'x\\'; DELETE FROM t --'",
        "INSERT INTO t SELECT 1 WHERE E'x\\'' <> ''; DELETE FROM t --'"}) {
    EXPECT_TRUE(has(errorOf(dbsExecute(cs(ps))), "expected one statement")) << ps;
    EXPECT_TRUE(has(errorOf(dbsPrepare(cs(ps))), "expected one statement")) << ps;
  }
  EXPECT_EQ(single("SELECT count(*) FROM t"), "0");
}

TEST_F(Postgres, TextsOfEveryKindOfQuotingPass) {
  EXPECT_EQ(
      query("SELECT 'a;b', $$c;d$$, $t$e';$$f$t$, E'g\\';h', 'i\\', \"j;k\" FROM (SELECT 'l' AS \"j;k\") x;"),
      (Rows{{"a;b", "c;d", "e';$$f", "g';h", "i\\", "l"}}));
}

TEST_F(Postgres, AStatementIsStoppedAfterItsTime) {
  setenv("VEL_DBS_TIMEOUT_MS", "900", 1);
  connect(server->url());
  EXPECT_TRUE(begins(errorOf(dbsExecute(cs("SELECT pg_sleep(30)"))), "[57014] ERROR: canceling statement"));
  EXPECT_TRUE(has(dbsErrStr(), "VEL_DBS_TIMEOUT_MS sets how long a statement may run, now 900 ms"));
  EXPECT_EQ(single("SELECT 1"), "1");
}

TEST_F(Postgres, AKeptQueryIsPreparedOnceAndAnewAfterAFailure) {
  run("CREATE TABLE t (a INTEGER)");
  run("INSERT INTO t VALUES (1)");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(query("SELECT * FROM t"), Rows{{"1"}});
  EXPECT_EQ(single("SELECT count(*) FROM pg_prepared_statements WHERE statement = 'SELECT * FROM t'"), "1");
  run("ALTER TABLE t ADD COLUMN b INTEGER");
  ASSERT_EQ(test::prepareAndOpen("SELECT * FROM t"), -1);
  EXPECT_TRUE(has(dbsErrStr(), "cached plan must not change result type")) << dbsErrStr();
  EXPECT_EQ(query("SELECT * FROM t"), (Rows{{"1", ""}}));
}

TEST_F(Postgres, QueriesThatAreNotKeptAreGoneOnTheServer) {
  setenv("VEL_DBS_STATEMENTS", "2", 1);
  connect(server->url());
  for (int i = 0; i < 20; ++i) query("SELECT " + std::to_string(i));
  EXPECT_LE(std::stoi(single("SELECT count(*) FROM pg_prepared_statements")), 3);
}

// --- A server that goes and comes back

TEST_F(Postgres, AServerKilledInTheMiddleCostsThatStatementAndWorkGoesOnWhenItIsBack) {
  run("CREATE TABLE audit (a INTEGER)");
  run("INSERT INTO audit VALUES (1)");
  {
    const EndsSoon soon(*server, SIGKILL);
    const std::string why = errorOf(dbsExecute(cs("INSERT INTO audit SELECT 2 FROM pg_sleep(30)")));
    EXPECT_TRUE(begins(why, "[08S01] ")) << why;
    EXPECT_TRUE(
        has(why, "the connection is lost, whether the statement took effect is unknown, it is not repeated"));
  }
  server->end(SIGKILL);
  ASSERT_EQ(test::logTexts(1).size(), 1U);
  EXPECT_TRUE(begins(test::logTexts(1)[0], "connection to odbc:DRIVER="));
  EXPECT_TRUE(has(test::logTexts(1)[0], " lost, the next statement makes it again: [08S01] "));

  for (int i = 0; i < 2; ++i) {
    const std::string why = errorOf(dbsPrepare(cs("SELECT count(*) FROM audit")));
    EXPECT_TRUE(has(why, "cannot connect to odbc:DRIVER=")) << why;
    EXPECT_TRUE(has(why, "[08001] ")) << why;
    EXPECT_TRUE(has(errorOf(dbsOpen()), "dbsPrepare comes first"));
  }

  server->start();
  EXPECT_EQ(single("SELECT count(*) FROM audit"), "1");
  run("INSERT INTO audit VALUES (3)");
  EXPECT_EQ(query("SELECT a FROM audit ORDER BY a"), (Rows{{"1"}, {"3"}}));
  EXPECT_EQ(test::logTexts(1).size(), 1U);
  EXPECT_EQ(test::logTexts(5).size(), 1U);
}

TEST_F(Postgres, AQueryThatRunsWhenTheServerGoesFailsWhenOpened) {
  ASSERT_EQ(dbsPrepare(cs("SELECT 1 FROM pg_sleep(30)")), 0);
  {
    const EndsSoon soon(*server, SIGQUIT);
    EXPECT_TRUE(has(errorOf(dbsOpen()), "the connection is lost"));
  }
  EXPECT_EQ(dbsClose(), 0);
  server->end(SIGQUIT);
  server->start();
  EXPECT_EQ(single("SELECT 2"), "2");
}

TEST_F(Postgres, AServerStartedAnewBetweenStatementsCostsOneOfThem) {
  run("CREATE TABLE audit (a INTEGER)");
  int nRound = 0;
  for (const int nSignal : {SIGINT, SIGQUIT, SIGKILL}) {
    server->end(nSignal);
    server->start();
    EXPECT_TRUE(has(errorOf(dbsExecute(cs("INSERT INTO audit VALUES (1)"))), "the connection is lost"))
        << dbsErrStr();
    EXPECT_EQ(single("SELECT count(*) FROM audit"), std::to_string(nRound));
    run("INSERT INTO audit VALUES (2)");
    EXPECT_EQ(single("SELECT count(*) FROM audit WHERE a = 2"), std::to_string(++nRound));
  }
}

TEST_F(Postgres, QueriesOfALostConnectionArePreparedAgain) {
  for (const int nSignal : {SIGINT, SIGQUIT, SIGKILL}) {
    for (const char *ps : {"SELECT 'kept'", "SELECT 'new'"}) {
      EXPECT_EQ(single("SELECT 'kept'"), "kept");
      server->end(nSignal);
      server->start();
      EXPECT_EQ(test::prepareAndOpen(ps), -1);
      EXPECT_TRUE(has(dbsErrStr(), "the connection is lost")) << ps << dbsErrStr();
      EXPECT_EQ(query(ps).size(), 1U);
    }
  }
}

TEST_F(Postgres, AConnectionThatTheServerEndsIsMadeAgain) {
  const std::string first = single("SELECT pg_backend_pid()");
  EXPECT_TRUE(has(errorOf(dbsExecute(cs("SELECT pg_terminate_backend(pg_backend_pid())"))),
                  "the connection is lost"));
  EXPECT_NE(single("SELECT pg_backend_pid()"), first);
}

TEST_F(Postgres, AnErrorThatOnlyLooksLikeALossKeepsTheConnection) {
  const std::string first = single("SELECT pg_backend_pid()");
  for (const std::string state : {"HY000", "08006", "57P01"}) {
    const std::string raise = "DO $$ BEGIN RAISE EXCEPTION 'x' USING ERRCODE = '" + state + "'; END $$";
    EXPECT_TRUE(begins(errorOf(dbsExecute(cs(raise.c_str()))), "[" + state + "] ERROR: x")) << dbsErrStr();
    EXPECT_FALSE(has(dbsErrStr(), "lost")) << dbsErrStr();
  }
  EXPECT_EQ(single("SELECT pg_backend_pid()"), first);
  EXPECT_EQ(test::logTexts(1).size(), 0U);
}

TEST_F(Postgres, RowsThatWereFetchedBeforeTheServerWentAreDelivered) {
  ASSERT_EQ(test::prepareAndOpen("SELECT 'a'"), 0);
  ASSERT_EQ(dbsFetch(), 0);
  server->end(SIGKILL);
  EXPECT_EQ(test::fetchedRow(), Row{"a"});
  EXPECT_EQ(dbsClose(), 0);
}

// --- The server of the tests itself

TEST_F(Postgres, DiesWithATestThatDies) {
  const test::ConfigTree tree;  // takes away what the child leaves
  std::filesystem::permissions(tree.path(), std::filesystem::perms(0755));
  int pipes[2];
  ASSERT_EQ(pipe(pipes), 0);
  const pid_t child = fork();
  if (child == 0) {
    setenv("TMPDIR", tree.path().c_str(), 1);
    const test::PostgresServer doomed;
    const pid_t pid = doomed.pid();
    if (write(pipes[1], &pid, sizeof pid) == sizeof pid) pause();
    _exit(1);
  }
  close(pipes[1]);
  pid_t pid = 0;
  ASSERT_EQ(read(pipes[0], &pid, sizeof pid), static_cast<ssize_t>(sizeof pid));
  close(pipes[0]);
  EXPECT_EQ(kill(pid, 0), 0);
  kill(child, SIGKILL);
  // Both become this process's children, which can be waited for.
  EXPECT_EQ(waitpid(child, nullptr, 0), child);
  EXPECT_EQ(waitpid(pid, nullptr, 0), pid);
}

}  // namespace

// The SQL rule on real databases: one configuration, the same results on SQLite and on a PostgreSQL server of
// the test's own.
#include <csignal>
#include <memory>

#include "convert_fixture.h"
#include "database.h"
#include "postgres_server.h"

// The driver forgets 48 bytes when a prepared statement fails.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions() {
  return "leak:psqlodbca.so";
}

namespace {

using namespace test::xml;
using test::cs;
using test::Level;
using test::newMessage;
using Texts = std::vector<std::string>;

// '...' with each quote doubled.
int quote(Value *ptResult, int, Value **pptArgs, MemPort ptMemNode) {
  std::string s = "'";
  for (int i = 0; i < pptArgs[0]->nLen; ++i)
    s.append(pptArgs[0]->psValue[i] == '\'' ? 2 : 1, pptArgs[0]->psValue[i]);
  s += "'";
  return cvtDumpValue(ptResult, s.data(), static_cast<int>(s.size()), ptMemNode);
}

// Looks a customer up by name, and keeps that it did.
class LookUp : public test::ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    cvtConvertAddFunction(cs("quote"), quote);
    define("In", {field("Name")});
    define("Out", {field("Id"), field("Credit"), field("Note")});
    convert("C",
            {sql({value("select id, credit, note from customer where name = "), func("quote", {src("Name")})},
                 {dst("Id"), dst("Credit"), dst("Note")}),
             sql({value("insert into audit values ("), func("quote", {src("Name")}), value(")")})});
    ASSERT_EQ(start(), 0);
  }
  void TearDown() override {
    cvtEnd();
    dbsDisconnect();
  }

  static void connect(const std::string &sUrl) { ASSERT_EQ(dbsConnect(cs(sUrl.c_str())), 0) << dbsErrStr(); }

  static void load() {
    for (const char *ps :
         {"drop table if exists customer", "drop table if exists audit",
          "create table customer (id integer, name varchar(40), credit numeric(10,2), note text)",
          "create table audit (name text)", "insert into customer values (7, 'Ann', 10.50, null)",
          "insert into customer values (8, 'O''Brien', 0.1, 'h\xc3\xa9llo')",
          "insert into customer values (8, 'O''Brien', 0.1, 'second row')"}) {
      test::run(ps);
    }
  }

  // Converts one message; the status in front of what the destination holds.
  Texts lookUp(const std::string &sName) {
    const Level from = newMessage("In");
    const Level to = newMessage("Out");
    from.set("Name", sName);
    to.set("Id", "-").set("Credit", "-").set("Note", "-");
    const int nRet = run("C", from, to);
    Texts all = {std::to_string(nRet), to.get("Id"), to.get("Credit"), to.get("Note")};
    for (const Level &level : {from, to}) {
      cvtFreeValue(level.ptList);
      cvtMemDelNode(level.ptNode);
    }
    return all;
  }

  // What a set of look-ups gives, and logs at level 1.
  std::vector<Texts> results(const std::string &sUrl) {
    connect(sUrl);
    load();
    std::vector<Texts> all;
    for (const char *psName :
         {"Ann", "O'Brien", "nobody", "x' or '1'='1", "'; drop table customer; --", ""}) {
      all.push_back(lookUp(psName));
      all.push_back(test::logTexts(1));
    }
    for (const char *psCount : {"select count(*) from audit", "select count(*) from customer",
                                "select name from audit where name like '%drop%'"}) {
      all.push_back({test::single(psCount)});
    }
    return all;
  }
};

class LookUpOnServer : public LookUp {
 protected:
  static void SetUpTestSuite() {
    if (test::PostgresServer::missing().empty()) server = std::make_unique<test::PostgresServer>();
  }
  static void TearDownTestSuite() { server.reset(); }
  void SetUp() override {
    if (server == nullptr) GTEST_SKIP() << test::PostgresServer::missing();
    LookUp::SetUp();
    if (!server->running()) server->start();
    connect(server->url());
    load();
  }
  static std::unique_ptr<test::PostgresServer> server;
};
std::unique_ptr<test::PostgresServer> LookUpOnServer::server;

TEST_F(LookUp, FillsFieldsAndKeepsARowOnSqlite) {
  const std::vector<Texts> found = results("sqlite::memory:");
  EXPECT_EQ(found[0], (Texts{"0", "7", "10.50", ""}));
  EXPECT_EQ(found[1], Texts{});
  EXPECT_EQ(found[2], (Texts{"0", "8", "0.10", "h\xc3\xa9llo"}));
  EXPECT_EQ(found[4], (Texts{"0", "-", "-", "-"}));
  EXPECT_EQ(
      found[5],
      Texts{"Warning: sql[select id, credit, note from customer where name = 'nobody'] not find data!!"});
  EXPECT_EQ(found[6], (Texts{"0", "-", "-", "-"}));  // what stood in the field stayed data
  EXPECT_EQ(found[12], Texts{"6"});
  EXPECT_EQ(found[13], Texts{"3"});
  EXPECT_EQ(found[14], Texts{"'; drop table customer; --"});
}

TEST_F(LookUpOnServer, GivesTheSameResultsAsOnSqlite) {
  EXPECT_EQ(results(server->url()), results("sqlite::memory:"));
}

TEST_F(LookUp, StatementThatTheDatabaseRefusesFailsWithItsWords) {
  connect("sqlite::memory:");
  EXPECT_EQ(lookUp("Ann")[0], "-1");
  EXPECT_EQ(test::logTexts(1),
            (Texts{"CvtOraInq dbsPrepare err!! sql[select id, credit, note from customer where name = 'Ann'] "
                   "sqlcode[1:no such table: customer]",
                   "CvtSql Err!!", "Do Convert Rule [1] err!!",
                   "Convert [C] From struct[In] tp Struct[Out] err!!"}));
  load();
  test::run("drop table audit");
  EXPECT_EQ(lookUp("Ann")[0], "-1");
  EXPECT_EQ(test::logTexts(1),
            (Texts{"CvtOraExecSql[insert into audit values ('Ann')] err!! sqlcode[1:no such table: audit]",
                   "CvtSql Err!!", "Do Convert Rule [2] err!!",
                   "Convert [C] From struct[In] tp Struct[Out] err!!"}));
}

TEST_F(LookUp, WithoutADatabaseSaysWhatToSet) {
  unsetenv("VEL_DBS_URL");
  EXPECT_EQ(lookUp("Ann")[0], "-1");
  ASSERT_FALSE(test::logTexts(1).empty());
  EXPECT_NE(test::logTexts(1)[0].find("VEL_DBS_URL"), std::string::npos) << test::logTexts(1)[0];
}

TEST_F(LookUp, ConnectsByItselfToTheUrlOfTheEnvironment) {
  const std::string sUrl = "sqlite:" + tree.path("shop.db");
  connect(sUrl);
  load();
  dbsDisconnect();
  setenv("VEL_DBS_URL", sUrl.c_str(), 1);
  EXPECT_EQ(lookUp("Ann"), (Texts{"0", "7", "10.50", ""}));
  unsetenv("VEL_DBS_URL");
}

TEST_F(LookUp, StatementThatBreaksOffAtAZeroByteIsWhatTheDatabaseSees) {
  connect("sqlite::memory:");
  load();
  EXPECT_EQ(lookUp(std::string("Ann\0nie", 7))[0], "-1");  // the quoted text does not end
}

TEST_F(LookUpOnServer, KilledAndStartedAgainCostsMessagesAndNothingElse) {
  EXPECT_EQ(lookUp("Ann"), (Texts{"0", "7", "10.50", ""}));
  for (int nTimes = 0; nTimes < 3; ++nTimes) {
    server->end(SIGKILL);
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(lookUp("Ann"), (Texts{"-1", "-", "-", "-"}));
      const Texts trail = test::logTexts(1);
      const bool bNamesTheStatement = std::any_of(trail.begin(), trail.end(), [](const std::string &s) {
        return s.find("sql[select id, credit, note from customer where name = 'Ann'] sqlcode[") !=
               std::string::npos;
      });
      EXPECT_TRUE(bNamesTheStatement) << trail[0];
      EXPECT_EQ(trail.back(), "Convert [C] From struct[In] tp Struct[Out] err!!");
    }
    server->start();
    EXPECT_EQ(lookUp("Ann"), (Texts{"0", "7", "10.50", ""}));
    EXPECT_EQ(lookUp("O'Brien"), (Texts{"0", "8", "0.10", "h\xc3\xa9llo"}));
  }
}

}  // namespace

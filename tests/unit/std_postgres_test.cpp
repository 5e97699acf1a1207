// What sqlQuote and sqlNumber make, read by a PostgreSQL server of the test's own.
#include "postgres_server.h"
#include "std_config.h"

// The driver forgets 48 bytes when a prepared statement fails.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions() {
  return "leak:psqlodbca.so";
}

namespace {

using namespace test::xml;
using test::cs;

class StdPostgres : public test::StdTest {};

TEST_F(StdPostgres, ReadsTheLiteralAsTheTextAndTheSameNumber) {
  if (!test::PostgresServer::missing().empty()) GTEST_SKIP() << test::PostgresServer::missing();
  const test::PostgresServer server;
  ASSERT_EQ(dbsConnect(cs(server.url().c_str())), 0) << dbsErrStr();
  load({copy(func("sqlQuote", {src("A")}), dst("X")), copy(func("sqlNumber", {src("B")}), dst("Y"))});
  const auto quoted = [&](const std::string &sText) {
    from.set("A", sText).set("B", "1");
    return run() == 0 ? to.get("X") : "refused";
  };
  const auto number = [&](const std::string &sNumber) {
    from.set("A", "").set("B", sNumber);
    return run() == 0 ? to.get("Y") : "refused";
  };

  std::string sAscii;
  for (char c = 1; c < 127; ++c) sAscii += c;
  for (const std::string &sText :
       {std::string("O'Brien"), std::string("'"), std::string("\\'"), std::string("\\' OR 1=1 --"),
        std::string("x' OR '1'='1"), std::string("x'; DROP TABLE t; --"), std::string("$$'$$"),
        std::string("?"), std::string("{fn user()}"), std::string("h\xc3\xa9llo \xe2\x80\x99"),
        std::string("/*"), std::string(), sAscii}) {
    EXPECT_EQ(test::single("SELECT " + quoted(sText)), sText);
  }
  // A character cut off before the closing quote does not take it along: the server refuses the statement.
  EXPECT_EQ(dbsPrepare(cs(("SELECT " + quoted("\xc3")).c_str())) == 0 && dbsOpen() == 0, false);

  EXPECT_EQ(test::single("SELECT " + number("0000001050")), "1050");
  EXPECT_EQ(test::single("SELECT 100 -" + number("-5")), "105");
  EXPECT_EQ(test::single("SELECT 100 +" + number("+5 ") + "* 2"), "110");
  EXPECT_EQ(test::single("SELECT" + number("  -12.50")), "-12.50");
}

}  // namespace

// The function library's manual says what its settings are, and its statements do to a database what it says.
#include <fstream>
#include <iterator>

#include "std/settings.h"
#include "std_config.h"

namespace {

using namespace test::xml;
using test::cs;
using test::Row;
using test::Rows;

const std::string &manual() {
  static const std::string s = [] {
    std::ifstream in(CVT2_SOURCE_DIR "/src/cvt/plug/std/README.md");
    return std::string(std::istreambuf_iterator<char>(in), {});
  }();
  return s;
}

ArgXml constant(const std::string &sText) {
  return {3, "<Value __ID='pInfo' psValue=\"" + sText + "\" nLen='" + std::to_string(sText.size()) + "'/>"};
}

TEST(StdManual, HasTheTableOfItsSettings) {
  const std::string sTable = cvt::kit::markdownTable(cvt::functions::kSettings);
  EXPECT_NE(manual().find(sTable), std::string::npos) << "should read:\n" << sTable;
}

// --- Joining a statement ---------------------------------------------------------------------------------

// The rule of the manual, with the field in quotes of the configuration, or in sqlQuote.
class Joining : public test::StdTest {
 protected:
  void SetUp() override {
    StdTest::SetUp();
    ASSERT_EQ(dbsConnect(cs("sqlite::memory:")), 0);
    for (const char *ps :
         {"CREATE TABLE customer (code TEXT, discount TEXT)", "CREATE TABLE staff (password TEXT)",
          "CREATE TABLE stock (article INTEGER, pieces INTEGER, price INTEGER)",
          "INSERT INTO customer VALUES ('first', '50'), ('C-1001', '10'), ('D''Arcy', '20')",
          "INSERT INTO staff VALUES ('hidden')", "INSERT INTO stock VALUES (7, 1, 9), (8, 2, 9)"}) {
      test::run(ps);
    }
  }

  // Runs the rule; which statement that was is seen in the trace, and stands in the manual.
  std::string lookUp(const Args &pieces, const std::string &sCustomer) {
    load({sql(pieces, {dst("X")})});
    from.set("A", sCustomer);
    to.set("X", "none");
    const int nRet = run();
    for (const std::string &sLine : test::logTexts(5)) {
      if (sLine.rfind("Cvt Sql[", 0) == 0) expectInManual(sLine.substr(8, sLine.size() - 9));
    }
    const std::string sFound = nRet == 0 ? to.get("X") : "error";
    again();
    return sFound;
  }
  static void expectInManual(const std::string &sStatement) {
    EXPECT_NE(manual().find("`" + sStatement + "`"), std::string::npos) << sStatement;
  }

  Rows stockAfter(const ArgXml &quantity, const std::string &sQuantity) {
    test::run("UPDATE stock SET pieces = 1, price = 9");
    load({sql({constant("UPDATE stock SET pieces = 100 -"), quantity, constant(" WHERE article = 7")})});
    from.set("A", sQuantity);
    const int nRet = run();
    again();
    return nRet == 0 ? test::query("SELECT pieces, price FROM stock ORDER BY article") : Rows{};
  }

  const std::string kSelect = "SELECT discount FROM customer WHERE code = ";
  const std::string kEveryRow = "x' OR '1'='1";
  const std::string kUnion = "x' UNION SELECT password FROM staff --";
};

TEST_F(Joining, OfTheFieldItselfLetsItsSenderWriteTheStatement) {
  const Args pieces = {constant(kSelect + "'"), src("A"), constant("'")};
  EXPECT_EQ(lookUp(pieces, "C-1001"), "10");
  EXPECT_EQ(lookUp(pieces, "D'Arcy"), "error");
  EXPECT_EQ(lookUp(pieces, kEveryRow), "50");
  EXPECT_EQ(lookUp(pieces, kUnion), "hidden");
}

TEST_F(Joining, OfQuotedTextsLooksUpWhatWasSent) {
  const Args pieces = {constant(kSelect), func("sqlQuote", {src("A")})};
  EXPECT_EQ(lookUp(pieces, "C-1001"), "10");
  EXPECT_EQ(lookUp(pieces, "D'Arcy"), "20");
  EXPECT_EQ(lookUp(pieces, kEveryRow), "none");
  EXPECT_EQ(lookUp(pieces, kUnion), "none");
}

TEST_F(Joining, QuotesAroundAQuotedTextLetItOut) {
  load({sql({constant(kSelect + "'"), func("sqlQuote", {src("A")}), constant("'")}, {dst("X")})});
  from.set("A", " OR 1=1 --");
  ASSERT_EQ(run(), 0);
  EXPECT_EQ(to.get("X"), "50");
}

TEST_F(Joining, NumbersNeedNoQuoteToChangeAStatement) {
  const std::string kStart = "UPDATE stock SET pieces = 100 -";
  for (const std::string sQuantity : {"5", "5, price = 0", "-5"}) {
    expectInManual(kStart + sQuantity + " WHERE article = 7");
  }
  EXPECT_EQ(stockAfter(src("A"), "5"), (Rows{{"95", "9"}, {"1", "9"}}));
  EXPECT_EQ(stockAfter(src("A"), "5, price = 0"), (Rows{{"95", "0"}, {"1", "9"}}));
  EXPECT_EQ(stockAfter(src("A"), "-5"), (Rows{{"100", "9"}, {"100", "9"}}));

  const ArgXml safe = func("sqlNumber", {src("A")});
  EXPECT_EQ(stockAfter(safe, "5"), (Rows{{"95", "9"}, {"1", "9"}}));
  EXPECT_EQ(stockAfter(safe, "5, price = 0"), Rows{});
  EXPECT_EQ(stockAfter(safe, "-5"), (Rows{{"105", "9"}, {"1", "9"}}));
}

}  // namespace

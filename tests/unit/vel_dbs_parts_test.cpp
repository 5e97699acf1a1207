// Parts of the database access that no database is needed for: the look at a statement, and numbers of a
// declared scale.
#include <gtest/gtest.h>

#include <string>

#include "decimal.h"
#include "session.h"
#include "statement_text.h"

namespace {

using dbs::declaredScale;
using dbs::withScale;

// Why a statement is refused; empty when it is not.
std::string refused(const std::string &sql) {
  try {
    dbs::expectOneStatement(sql);
    return "";
  } catch (const dbs::Error &e) {
    return e.what();
  }
}

void expectRefused(const std::string &sql, const std::string &part) {
  EXPECT_NE(refused(sql).find(part), std::string::npos) << sql << "\n" << refused(sql);
}

TEST(StatementText, OneStatementPasses) {
  for (const char *ps :
       {"SELECT 1", "SELECT 1;", " SELECT 1 ;\n", "SELECT 1;;", "SELECT 1 -- ; two", "x", "SELECT 1;--",
        "SELECT '--' || '/*'", "/* a; b */ SELECT 1", "SELECT 1 /**/;/**/", "SELECT a[1], 'x' = ANY (b)",
        "SELECT 1 -- it's\n + 1", "SELECT 1 -- it's\r + 1", "SELECT 4 / 2 - -1 * 3"}) {
    EXPECT_EQ(refused(ps), "") << ps;
  }
}

TEST(StatementText, SemicolonsInTextsAndNamesSeparateNothing) {
  for (const char *ps :
       {"SELECT ';'", "SELECT 'a''; b'", "SELECT \"a;b\"", "SELECT \"a\"\";b\"", "SELECT $$a;b$$",
        "SELECT $t$ a;$$ b; $u$ $t$", "SELECT E'a\\'; b'", "SELECT e'\\\\'", "SELECT E'a''; b'",
        "SELECT 'a\\'", "SELECT U&'\\0041;'", "SELECT N'a;'", "SELECT $a\xc3\xa9$;$a\xc3\xa9$"}) {
    EXPECT_EQ(refused(ps), "") << ps;
  }
}

TEST(StatementText, TextBehindASemicolonIsRefusedWithItsPlace) {
  EXPECT_EQ(
      refused("SELECT 1; SELECT 2"),
      "expected one statement, found more text behind its end, at byte 10; run statements one by one, and "
      "quote data that is joined into them");
  for (const char *ps : {"SELECT 1; x", "SELECT 'a'; DELETE FROM t --'", "SELECT 'a\\'; DELETE FROM t",
                         "SELECT E'a\\\\'; DELETE FROM t", "SELECT $$a$$; x", "SELECT 1 -- c\n; x",
                         "SELECT 1 -- c\r; x", "SELECT /* ' */ 1; x", "SELECT 1; 'open", "SELECT a$$; x --$$",
                         "SELECT $1; x --$1", "SELECT $1$; x$1$", "SELECT fire'\\'; x", "SELECT E '\\'; x"}) {
    expectRefused(ps, "expected one statement, found more text behind its end");
  }
}

TEST(StatementText, AnEmptyStatementIsRefused) {
  for (const char *ps : {"", " \t\r\n", ";", ";;", "-- a", "/* a */", " ; SELECT 1"}) {
    expectRefused(ps, "the statement is empty");
  }
}

TEST(StatementText, WhatIsNotClosedIsRefusedWithItsPlace) {
  EXPECT_EQ(refused("SELECT 'abc"),
            "the text that begins at byte 7 of the statement is not closed; expected ' before its end");
  expectRefused("SELECT 'abc''", "the text that begins at byte 7");
  expectRefused("SELECT \"abc",
                "the quoted name that begins at byte 7 of the statement is not closed; expected \"");
  expectRefused("SELECT /* abc",
                "the comment that begins at byte 7 of the statement is not closed; expected */");
  expectRefused("SELECT /*/", "the comment that begins at byte 7");
  expectRefused("SELECT $t$ abc $$",
                "the text that begins at byte 7 of the statement is not closed; expected $t$");
  expectRefused("SELECT E'abc\\'", "the text that begins at byte 8");
  expectRefused("SELECT E'abc\\", "the text that begins at byte 8");
  expectRefused("SELECT '", "the text that begins at byte 7");
}

TEST(StatementText, ACommentInACommentIsRefused) {
  expectRefused("SELECT 1 /* /* */; DELETE FROM t; /* */ */", "the comment at byte 9 holds another");
}

TEST(DeclaredScale, IsThatOfNumericAndDecimal) {
  EXPECT_EQ(declaredScale("numeric(10,2)"), 2U);
  EXPECT_EQ(declaredScale(" DECIMAL ( 12 , 4 ) "), 4U);
  EXPECT_EQ(declaredScale("Numeric(5)"), 0U);
  EXPECT_EQ(declaredScale("numeric(38,38)"), 38U);
}

TEST(DeclaredScale, OtherTypesHaveNone) {
  for (const char *ps :
       {"", "numeric", "numeric()", "numeric(a)", "varchar(10)", "float(10,2)", "numeric(3,-2)",
        "numeric(10,101)", "numericnumericnumeric(1,2)", "big numeric(10,2)"}) {
    EXPECT_EQ(declaredScale(ps), std::nullopt) << ps;
  }
  EXPECT_EQ(declaredScale(nullptr), std::nullopt);
}

TEST(Scale, IsFilledWithZeros) {
  EXPECT_EQ(withScale("10.5", 2), "10.50");
  EXPECT_EQ(withScale("10", 2), "10.00");
  EXPECT_EQ(withScale("-3", 1), "-3.0");
  EXPECT_EQ(withScale("7", 0), "7");
}

TEST(Scale, IsRoundedHalfAwayFromZero) {
  EXPECT_EQ(withScale("1.005", 2), "1.01");
  EXPECT_EQ(withScale("-1.005", 2), "-1.01");
  EXPECT_EQ(withScale("1.0049", 2), "1.00");
  EXPECT_EQ(withScale("99.995", 2), "100.00");
  EXPECT_EQ(withScale("0.5", 0), "1");
  EXPECT_EQ(withScale("9.5", 0), "10");
}

TEST(Scale, ZeroHasNoSign) {
  EXPECT_EQ(withScale("-0.004", 2), "0.00");
  EXPECT_EQ(withScale("-0.0", 0), "0");
}

TEST(Scale, SmallNumbersMayHaveAnExponent) {
  EXPECT_EQ(withScale("1.5e-07", 8), "0.00000015");
  EXPECT_EQ(withScale("-5.0e-05", 4), "-0.0001");
  EXPECT_EQ(withScale("4.0e-05", 4), "0.0000");
  EXPECT_EQ(withScale("1e-1", 1), "0.1");
  EXPECT_EQ(withScale("4.94065645841247e-324", 2), "0.00");
}

TEST(Scale, WhatIsNoPlainDecimalIsLeftAlone) {
  for (const char *ps : {"", "-", "1e5", "1.5e+16", "1e-", "1e-0", "1e-5x", "1e--5", "1e-4000000000",
                         "1e-401", "e-05", "Inf", "-Inf", "abc", ".5", "1.2.3", "+1", " 1", "--1"}) {
    EXPECT_EQ(withScale(ps, 2), std::nullopt) << ps;
  }
}

}  // namespace

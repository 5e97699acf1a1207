// Rows and columns: separators, quotes, line ends, header lines.
#include <gtest/gtest.h>

#include "csv_fixture.h"

namespace {

using namespace test::csvtext;

class CsvTable : public CsvFixture {
 protected:
  // A message "Row" that is one row of the fields A, B, C, and a message "Table" of such rows.
  void with(const std::string &sAttributes, const std::string &sField = "") {
    m_config.message("Row", sAttributes, fields({"A", "B", "C"}, sField));
    m_config.message("Table", sAttributes, {rows(fields({"A", "B", "C"}, sField))});
    ASSERT_EQ(m_config.start(), 0) << told();
  }
  void values(const std::string &sBytes, const std::string &sA, const std::string &sB,
              const std::string &sC) {
    const Text text = parse("Row", sBytes);
    ASSERT_NE(text, nullptr) << sBytes << "\n" << told();
    EXPECT_EQ(get(text, "A"), sA) << sBytes;
    EXPECT_EQ(get(text, "B"), sB) << sBytes;
    EXPECT_EQ(get(text, "C"), sC) << sBytes;
  }
};

TEST_F(CsvTable, ARowIsAMessage) {
  with("");
  values("1,2,3\n", "1", "2", "3");
  values("1,2,3", "1", "2", "3");
  values(" 1 ,, 3\t\n", " 1 ", "", " 3\t");
  values("\"1\",\"a,b\",\"x\"\"y\nz\"\n", "1", "a,b", "x\"y\nz");
  EXPECT_EQ(pass("Row", "1,\"a,b\",\"x\"\"y\r\nz\"\n"), "1,\"a,b\",\"x\"\"y\r\nz\"\n");
  EXPECT_EQ(pass("Row", "\"1\",\"2\",\"\""), "1,2,\n") << "quotes that nothing needs are not kept";
}

TEST_F(CsvTable, AFileIsAMessage) {
  with("");
  const std::string s = "1,2,3\n\"a\nb\",,\n,,\n";
  EXPECT_EQ(pass("Table", s), s) << told();
  EXPECT_EQ(pass("Table", ""), "");
  std::string sMany;
  for (int i = 0; i < 5000; ++i)
    sMany += std::to_string(i) + ",\"x" + std::string(static_cast<size_t>(i % 90), ',') + "\",é\n";
  // Quotes around a value without a comma are left out, in the rows where i % 90 is 0.
  const Text text = parse("Table", sMany);
  EXPECT_EQ(text, nullptr) << "more repetitions than gnMaxLoop";
  EXPECT_TRUE(told("Field[Rows[999]]") && told("Raise gnMaxLoop")) << told();
}

TEST_F(CsvTable, RowsOfAnotherNumberOfFieldsAreRefused) {
  with("");
  refused("Row", "1,2\n",
          "Msg[Row] Field[C] Offset[3]: expected another field in the record, found its end.");
  refused("Row", "1,2,3,4\n",
          "Offset[6]: expected a line feed behind the last field of the record, found \"4\\x0A\".");
  refused("Table", "1,2,3\n1,2\n", "Field[Rows[1].C] Offset[9]: expected another field");
  refused("Table", "1,2,3\n\n", "Field[Rows[1].B] Offset[6]: expected another field");
  refused("Row", "", "Offset[0]: expected a record, found the end.");
  refused("Row", "1,2,3\n4,5,6\n",
          "Offset[6]: expected the end of the message, found \"4,5,6\\x0A\". Remove it, or set nWhole");
}

TEST_F(CsvTable, QuotesInTheWrongPlaceAreRefusedWithTheirOffset) {
  with("");
  refused("Row", "1,2x\"y\",3\n", "Field[B] Offset[4]: expected no quote inside a field without quotes");
  refused("Row", "1,\"2\"x,3\n",
          "Field[B] Offset[5]: expected \",\" or a line feed behind the closing quote, "
          "found \"x,3\\x0A\". Write a quote inside the value twice.");
  refused("Row", "1,2,\"3\n", "Field[C] Offset[4]: expected a closing quote, found none before the end.");
  refused("Row", "1,2,\"3\"\"", "Field[C] Offset[4]: expected a closing quote");
  refused("Row", "\"", "Field[A] Offset[0]: expected a closing quote");
}

TEST_F(CsvTable, AQuoteInsideAValueMayBeAPartOfIt) {
  with("psInnerQuote=\"keep\"");
  values("37\"N,\"a\"\"\",b\"\n", "37\"N", "a\"", "b\"");
  EXPECT_EQ(pass("Row", "37\"N,\"\"\"a\",b\"\n"), "37\"N,\"\"\"a\",b\"\n");
  refused("Row", "1,\"2\"x,3\n", "Field[B] Offset[5]: expected");
}

TEST_F(CsvTable, ALineEndIsTheOneThatWasDeclared) {
  with("");
  refused("Row", "1,2,3\r\n",
          "Field[C] Offset[5]: expected \",\" or a line feed behind the field, found \"\\x0D\\x0A\". Write a "
          "value with line ends in quotes, or correct psLineEnd of CsvMsg.");
  refused("Row", "1,2\r,3\n", "Field[B] Offset[3]: expected");
}

TEST_F(CsvTable, CarriageReturnAndLineFeed) {
  with("psLineEnd=\"crlf\"");
  EXPECT_EQ(pass("Table", "1,2,3\r\n\"\r\",\"\n\",\"\r\n\"\r\n"), "1,2,3\r\n\"\r\",\"\n\",\"\r\n\"\r\n")
      << told();
  refused(
      "Row", "1,2,3\n",
      "Offset[5]: expected \",\" or a carriage return and a line feed behind the field, found \"\\x0A\".");
  refused("Row", "1,2,3\r", "Offset[5]: expected");
}

TEST_F(CsvTable, EitherLineEndIsKeptByAFieldThatSaysSo) {
  m_config.message(
      "Table", "psLineEnd=\"any\"",
      {rows(fields({"A", "B"})), field("Break", "psKind=\"line-end\""), field("Last", "psKind=\"end\"")});
  m_config.message("Plain", "psLineEnd=\"any\"", {rows(fields({"A", "B"}))});
  ASSERT_EQ(m_config.start(), 0) << told();
  for (const char *const ps : {"1,2\n3,4\n", "1,2\r\n3,4\r\n", "1,2\n3,4", "1,2\r\n3,4", "1,2", ""}) {
    EXPECT_EQ(pass("Table", ps), ps) << told();
  }
  EXPECT_EQ(get(parse("Table", "1,2\r\n3,4"), "Break"), "crlf");
  EXPECT_EQ(get(parse("Table", "1,2\r\n3,4"), "Last"), "open");
  EXPECT_EQ(pass("Plain", "1,2\r\n3,4"), "1,2\n3,4\n");
  refused("Table", "1,2\n3,4\r\n",
          "Field[Rows[1].B] Offset[7]: expected \",\" or a line feed behind the field, found");
  refused("Table", "1,2\r\n3,4\n",
          "Offset[8]: expected \",\" or a carriage return and a line feed behind the field, found");
  const Text text = create("Table");
  set(text, "Break", "cr");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("expected lf, crlf or nothing in the field of kind line-end, found \"cr\".")) << told();
}

TEST_F(CsvTable, TheLastLineEndMayBeDemandedOrForbidden) {
  m_config.message("Must", "psLastLineEnd=\"required\"", fields({"A"}));
  m_config.message("MustNot", "psLastLineEnd=\"none\"", {rows(fields({"A", "B"}))});
  ASSERT_EQ(m_config.start(), 0) << told();
  EXPECT_EQ(pass("Must", "1\n"), "1\n");
  refused("Must", "1", "Offset[1]: expected a line feed behind the last record, found the end.");
  EXPECT_EQ(pass("MustNot", "1,2\n3,4"), "1,2\n3,4");
  refused("MustNot", "1,2\n3,4\n", "Offset[7]: expected no line end behind the last record");
}

TEST_F(CsvTable, SeparatorsMayHaveSeveralCharacters) {
  with("psSeparator=\"||\" psQuote=\"'\"");
  values("a|b||||'c||d'", "a|b", "", "c||d");
  EXPECT_EQ(pass("Row", "a|b||||'c||d'\n"), "a|b||||'c||d'\n");
  const Text text = create("Row");
  set(text, "A", "x|");
  set(text, "B", "|x");
  set(text, "C", "it's");
  EXPECT_EQ(generate(text), "'x|'|||x||'it''s'\n") << "a value must not make a separator with what follows";
  const Text again = parse("Row", "'x|'|||x||'it''s'\n");
  EXPECT_EQ(get(again, "A"), "x|");
  EXPECT_EQ(get(again, "B"), "|x");
}

TEST_F(CsvTable, WithoutQuotesAValueMayNotEndLikeASeparatorBegins) {
  with("psSeparator=\"||\" psQuote=\"\"");
  values("a|b||c||d", "a|b", "c", "d");
  refused("Row", "a||b||c|\n",
          "Field[C] Offset[6]: expected a value that does not end like a mark begins, found \"c|\".");
  const Text text = create("Row");
  set(text, "A", "a|");
  EXPECT_EQ(generate(text), "failed");
}

TEST_F(CsvTable, AnEscapeStandsBeforeQuotes) {
  with("psEscape=\"\\\"");
  values("\"a\\\"b\",\"\\\\\",\\", "a\"b", "\\", "\\");
  EXPECT_EQ(pass("Row", "\"a\\\"b\",\"c,\\\\\",\\\n"), "\"a\\\"b\",\"c,\\\\\",\\\n");
  refused("Row", "\"a\"\"b\",2,3",
          "Field[A] Offset[3]: expected \",\" or a line feed behind the closing quote");
  refused("Row", "\"a\\n\",2,3", "Field[A] Offset[2]: expected a quote or \"\\\" behind the escape");
}

TEST_F(CsvTable, WithoutQuotesAnEscapeStandsBeforeWhatWouldEndTheField) {
  with("psSeparator=\"&#9;\" psQuote=\"\" psEscape=\"\\\"");
  values("a\\tb\tc\\nd\\r\t\\\\\"\n", "a\tb", "c\nd\r", "\\\"");
  EXPECT_EQ(pass("Row", "a\\tb\tc\\nd\\r\t\\\\\"\n"), "a\\tb\tc\\nd\\r\t\\\\\"\n");
  refused("Row", "a\\x\t\t\n",
          "Field[A] Offset[1]: expected a separator, \"\\\", n, r or t behind the escape");
  refused("Row", "a\t\t\\", "Field[C] Offset[3]: expected a separator");
}

TEST_F(CsvTable, WithoutQuotesAndEscapeSomeValuesCannotBeWritten) {
  with("psQuote=\"\"");
  values("\"a\",b\"\"c,'", "\"a\"", "b\"\"c", "'");
  const Text text = create("Row");
  set(text, "B", "x,y");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(
      told("Field[B] Offset[1]: expected a value without separators, line ends and marks, found \"x,y\"."))
      << told();
}

TEST_F(CsvTable, QuotesWhereTheyAreAskedFor) {
  m_config.message("Always", "psQuoting=\"always\"", fields({"A", "B"}));
  m_config.message("Some", "", {field("A", "psQuoting=\"always\""), field("B")});
  m_config.message("Kept", "psQuoting=\"always\"", fields({"A", "B"}, "nKeepEmpty=\"2\""));
  ASSERT_EQ(m_config.start(), 0) << told();
  EXPECT_EQ(pass("Always", "1,\n"), "\"1\",\"\"\n");
  EXPECT_EQ(pass("Some", "1,2\n"), "\"1\",2\n");
  EXPECT_EQ(pass("Kept", "\"1\",\n"), "\"1\",\n");
  EXPECT_EQ(pass("Kept", "\"\",\"2\"\n"), "\"\",\"2\"\n");
}

TEST_F(CsvTable, WhatIsThereButEmptyCanBeToldFromWhatIsNot) {
  with("", "nKeepEmpty=\"2\"");
  EXPECT_EQ(pass("Table", "1,\"\",\n,,\"\"\n"), "1,\"\",\n,,\"\"\n");
  const Text text = create("Row");
  EXPECT_EQ(generate(text), ",,\n");
}

TEST_F(CsvTable, ARecordWithoutAByteIsWrittenInQuotes) {
  m_config.message("One", "", {rows(fields({"A"}))});
  m_config.message("Bare", "psQuote=\"\" psBlankLines=\"skip\"", {rows(fields({"A"}))});
  m_config.message("Blank", "psQuote=\"\"", {rows(fields({"A"})), field("Last", "psKind=\"end\"")});
  ASSERT_EQ(m_config.start(), 0) << told();
  EXPECT_EQ(pass("One", "1\n\n3\n"), "1\n\"\"\n3\n");
  EXPECT_EQ(pass("Bare", "1\n\n3\n"), "1\n3\n") << "passed over";
  EXPECT_EQ(pass("Blank", "1\n\n3"), "1\n\n3") << told();
}

TEST_F(CsvTable, CommentsAndBlankLinesArePassedOver) {
  m_config.message("Table", "psComment=\"#\" psBlankLines=\"skip\"", {rows(fields({"A", "B"}))});
  m_config.message("Slashes", "psComment=\"//\"", {rows(fields({"A", "B"}))});
  ASSERT_EQ(m_config.start(), 0) << told();
  EXPECT_EQ(pass("Table", "# a,b,\"c\n\n1,2\n\n#\n3,#4\n#x"), "1,2\n3,#4\n") << told();
  EXPECT_EQ(pass("Table", "\"#1\",2\n"), "\"#1\",2\n") << "a value that looks like a comment";
  EXPECT_EQ(pass("Slashes", "// x\n/1,2\n"), "/1,2\n");
  refused("Slashes", "// x\n\n", "expected another field in the record");
}

// --- Header lines
// -------------------------------------------------------------------------------------------------

TEST_F(CsvTable, AHeaderLineInOrder) {
  with("psHeader=\"order\"");
  EXPECT_EQ(pass("Table", "A,B,C\n1,2,3\n"), "A,B,C\n1,2,3\n") << told();
  EXPECT_EQ(pass("Table", "A,B,C\n"), "A,B,C\n");
  EXPECT_EQ(pass("Row", "A,B,C\n1,2,3\n"), "A,B,C\n1,2,3\n");
  refused("Table", "", "Offset[0]: expected a line of column names, found the end.");
  refused("Table", "A,C,B\n1,2,3\n", "Offset[2]: expected the column B, found \"C\".");
  refused("Table", "A,B\n1,2\n", "expected the column C, found no further one.");
  refused("Table", "A,B,C,D\n1,2,3,4\n", "Offset[6]: expected no further column, found \"D\".");
}

TEST_F(CsvTable, AHeaderLineInAnyOrderTellsTheColumns) {
  m_config.message(
      "Row", "psHeader=\"names\"",
      {field("A", "nMandatory=\"1\""), group("G", "", {field("B", "psName=\"the b\""), field("C")})});
  m_config.message("Skip", "psHeader=\"names\" psUnknown=\"skip\"", {rows(fields({"A", "B"}))});
  ASSERT_EQ(m_config.start(), 0) << told();
  values("\"the b\",C,A\n1,2,3\n", "3", "1", "2");
  values("A\n3\n", "3", "", "");
  EXPECT_EQ(pass("Row", "C,A,the b\n1,2,3\n"), "A,the b,C\n2,3,1\n") << "written in the definition's order";
  refused("Row", "C,A,the b\n1,,3\n", "Field[A] Offset[12]: expected a value, found none.");
  refused("Row", "C,A,b\n1,2,3\n",
          "Offset[4]: expected one of the columns A, the b, C, found \"b\". Define it");
  refused("Row", "C,the b\n1,2\n", "expected a column A, found none of that name.");
  refused("Row", "A,C,A\n1,2,3\n", "Offset[4]: expected each column once, found \"A\" twice.");
  refused("Row", "A,C,\"the b\"\n1,2\n", "Field[G.B] Offset[15]: expected another field");
  EXPECT_EQ(pass("Skip", "x,B,,A\n1,2,\"3\",4\n5,6,7,8\n"), "A,B\n4,2\n8,6\n") << told();
  refused("Skip", "x,B,A,y\n1,2,3\n", "Offset[13]: expected a field for every column");
}

TEST_F(CsvTable, AHeaderLineThatIsNotLookedAt) {
  with("psHeader=\"ignore\"");
  EXPECT_EQ(pass("Table", "x\n1,2,3\n"), "A,B,C\n1,2,3\n");
  refused("Table", "\"x\n1,2,3\n", "Offset[0]: expected a closing quote");
}

TEST_F(CsvTable, NamesAreQuotedInTheHeaderLineWhereTheyNeedIt) {
  m_config.message("M", "psHeader=\"order\"",
                   {field("A", "psName=\"a,&quot;b&quot;\""), field("B", "psName=\"#\"")});
  ASSERT_EQ(m_config.start(), 0) << told();
  EXPECT_EQ(pass("M", "\"a,\"\"b\"\"\",#\n1,2\n"), "\"a,\"\"b\"\"\",#\n1,2\n") << told();
}

// --- Rules, limits, character sets
// ----------------------------------------------------------------------------------

TEST_F(CsvTable, APositionIsTheNumberOfItsRow) {
  m_config.message(
      "M", "psHeader=\"names\"",
      {rows({field("A"), group("G", "", {field("Line", "psName=\"#\" nPosition=\"1\""), field("B")})})});
  m_config.message("Short", "nShort=\"1\"",
                   {rows({field("A"), field("Line", "nPosition=\"1\" nMandatory=\"1\"")})});
  m_config.message("Quoted", "psQuoting=\"always\"", {rows({field("Line", "nPosition=\"1\"")})});
  ASSERT_EQ(m_config.start(), 0) << told();
  for (const char *const ps : {"A,#,B\nx,1,y\n,2,\n", "A,#,B\n"}) EXPECT_EQ(pass("M", ps), ps) << told();
  EXPECT_EQ(pass("M", "#,A,B\n,x,y\n\"2\",,z\n\"\",,\n"), "A,#,B\nx,1,y\n,2,z\n,3,\n") << told();
  refused(
      "M", "A,#,B\n,1,\n,1,\n",
      "Field[Rows[1].G.Line] Offset[11]: expected 2, the number of its repetition, found \"1\". Number the "
      "repetitions from 1, or leave the value out.");
  refused("M", "A,#,B\n,01,\n", "Field[Rows[0].G.Line] Offset[7]: expected 1, the number of its repetition");
  refused("Short", "x\n", "Field[Rows[0].Line] Offset[1]: expected a value, found none.");
  EXPECT_EQ(pass("Quoted", "1\n\n"), "\"1\"\n\"2\"\n") << told();
  const Text text = create("Short");
  for (const char *const psValue : {"77", "x", ""}) {
    addTime(text, "Rows");
    set(text, "Rows.Line", psValue);
  }
  EXPECT_EQ(generate(text), ",1\n,2\n,3\n") << told();
}

TEST_F(CsvTable, WhatHoldsForAValueIsCheckedInBothDirections) {
  m_config.message("M", "",
                   {field("A", "psConst=\"H\""), field("B", "nMandatory=\"1\" nMaxLen=\"3\""),
                    field("C", "psDefault=\"d\"")});
  ASSERT_EQ(m_config.start(), 0) << told();
  EXPECT_EQ(pass("M", "H,éàü,\n"), "H,éàü,d\n");
  refused("M", "X,1,2\n", "Field[A] Offset[0]: expected \"H\", found \"X\".");
  refused("M", ",1,2\n", "Field[A] Offset[0]: expected \"H\", found \"\".");
  refused("M", "H,,2\n", "Field[B] Offset[2]: expected a value, found none.");
  refused("M", "H,\"\",2\n", "Field[B] Offset[2]: expected a value, found none.");
  refused("M", "H,1234,2\n", "Field[B] Offset[2]: expected at most 3 characters, found 4");
  refused("M", "H,\"a\"\"bc\",2\n", "Field[B] Offset[2]: expected at most 3 characters, found 4");
  const Text text = create("M");
  EXPECT_EQ(generate(text), "failed");
  set(text, "B", "b");
  EXPECT_EQ(generate(text), "H,b,d\n");
}

TEST_F(CsvTable, LimitsHoldAtTheirNumber) {
  m_config.message("M", "nMaxField=\"4\" nMaxRecord=\"9\"",
                   {rows(fields({"A", "B"}), "", "nMin=\"1\" nMax=\"2\"")});
  m_config.message("H", "psHeader=\"names\" psUnknown=\"skip\" nMaxColumns=\"2\"", {rows(fields({"A"}))});
  ASSERT_EQ(m_config.start(), 0) << told();
  EXPECT_EQ(pass("M", "1234,1234\n1,2\n"), "1234,1234\n1,2\n") << told();
  refused("M", "12345,1\n", "Field[Rows[0].A] Offset[0]: expected a field of at most 4 bytes, found 5.");
  refused("M", "\"12345\",1\n", "expected a field of at most 4 bytes, found 5.");
  refused("M", "\"123\",1234\n", "Offset[0]: expected a line of at most 9 bytes, found 10. Raise nMaxRecord");
  refused("M", "", "Field[Rows] Offset[0]: expected at least 1 repetitions, found the end.");
  refused("M", "1,1\n2,2\n3,3\n",
          "Field[Rows[2]] Offset[8]: expected at most 2 repetitions, found one more.");
  EXPECT_EQ(pass("H", "A,B\n1,2\n"), "A\n1\n");
  refused("H", "A,B,C\n1,2,3\n", "Offset[4]: expected at most 2 columns, found one more. Raise nMaxColumns");
}

TEST_F(CsvTable, LimitsHoldForWhatIsWritten) {
  m_config.message("M", "nMaxField=\"4\" nMaxRecord=\"9\"", fields({"A", "B"}));
  ASSERT_EQ(m_config.start(), 0) << told();
  const Text text = create("M");
  set(text, "A", "12345");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("Field[A] Offset[5]: expected a field of at most 4 bytes, found 5.")) << told();
  set(text, "A", "1234");
  set(text, "B", "1,2");
  EXPECT_EQ(generate(text), "failed");
  set(text, "B", "1234");
  EXPECT_EQ(generate(text), "1234,1234\n");
}

TEST_F(CsvTable, LimitsHoldForFieldsOfFixedLength) {
  m_config.message("M", "nMaxField=\"4\"", {field("A", "nLen=\"3\" psPad=\" \""), field("B", "nLen=\"2\"")});
  ASSERT_EQ(m_config.start(), 0) << told();
  const Text text = create("M");
  set(text, "A", "éé");
  set(text, "B", "bb");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("Field[A] Offset[5]: expected a field of at most 4 bytes, found 5.")) << told();
  refused("M", "éé bb\n", "Field[A] Offset[0]: expected a field of at most 4 bytes, found 5.");
  set(text, "A", "é");
  EXPECT_EQ(generate(text), "é  bb\n");
  EXPECT_EQ(pass("M", "é  bb\n"), "é  bb\n");
}

TEST_F(CsvTable, BytesThatAreNoUtf8AreRefused) {
  with("");
  values("é,中,😀\n", "é", "中", "😀");
  refused("Row", "1,2\xFF,3\n",
          "Field[B] Offset[3]: expected valid characters in UTF-8, found \"\\xFF,3\\x0A\".");
  refused("Row", "1,\"2\xC3\",3\n", "Field[B] Offset[4]: expected a whole character in UTF-8");
  const Text text = create("Row");
  set(text, "A", "\xFF");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("expected valid characters in UTF-8, found \"\\xFF\".")) << told();
}

TEST_F(CsvTable, OtherCharacterSets) {
  const char *const psFields = "psHeader=\"order\" psLineEnd=\"any\" psCharset=\"";
  for (const std::string sSet :
       {"WINDOWS-1252", "IBM037", "GB18030", "UTF-16LE", "SHIFT_JIS", "ISO-2022-JP"}) {
    m_config.message(sSet, psFields + sSet + "\"",
                     {rows(fields({"A", "B"})), field("Break", "psKind=\"line-end\"")});
  }
  ASSERT_EQ(m_config.start(), 0) << told();
  EXPECT_EQ(pass("WINDOWS-1252", "A,B\n\xE9,\"\xFC,\"\n"), "A,B\n\xE9,\"\xFC,\"\n") << told();
  EXPECT_EQ(pass("IBM037", "\xC1\x6B\xC2\x25\xF1\x6B\x7F\xF2\x6B\x7F\x25"),
            "\xC1\x6B\xC2\x25\xF1\x6B\x7F\xF2\x6B\x7F\x25")
      << told();
  EXPECT_EQ(pass("GB18030", "A,B\n\xD6\xD0,\x81\x30\x81\x30\n"), "A,B\n\xD6\xD0,\x81\x30\x81\x30\n")
      << told();
  EXPECT_EQ(pass("SHIFT_JIS", "A,B\n\x83\x5C,2\n"), "A,B\n\x83\x5C,2\n") << told();
  const std::string sJis = "A,B\n\x1B$B$\"\x1B(B,\x1B$B$\"\x1B(B\n";
  EXPECT_EQ(pass("ISO-2022-JP", sJis), sJis) << told();
  std::string sWide;
  for (const char c : std::string("A,B\r\n1,\"2,\"\r\n")) sWide += {c, '\0'};
  EXPECT_EQ(pass("UTF-16LE", sWide), sWide) << told();
  refused("GB18030", "A,B\n\xD6\xD0,\xFF\n",
          "Offset[7]: expected valid characters in GB18030, found \"\\xFF\\x0A\"");
  refused("GB18030", "A,B\n\xD6\xD0,2,3\n",
          "Offset[9]: expected a line feed behind the last field of the record");
  refused("GB18030", "A,B\n\xD6\xD0,2\"3\n", "Field[Rows[0].B] Offset[8]: expected no quote inside a field");
  const Text text = create("WINDOWS-1252");
  ASSERT_NE(text, nullptr);
}

TEST_F(CsvTable, AByteOrderMarkIsSaidToBeThere) {
  m_config.message("Refuse", "", fields({"A", "B"}));
  m_config.message("Skip", "psByteOrderMark=\"skip\"", fields({"A", "B"}));
  m_config.message("Write", "psByteOrderMark=\"write\"", fields({"A", "B"}));
  ASSERT_EQ(m_config.start(), 0) << told();
  refused("Refuse",
          "\xEF\xBB\xBF"
          "1,2\n",
          "Offset[0]: expected no byte order mark, found one. Set psByteOrderMark");
  refused("Skip", "\xEF\xBB\xBF\xEF\xBB\xBF,2\n", "Offset[0]: expected one byte order mark, found two.");
  EXPECT_EQ(pass("Skip",
                 "\xEF\xBB\xBF"
                 "1,2\n"),
            "1,2\n");
  EXPECT_EQ(pass("Write", "1,2\n"),
            "\xEF\xBB\xBF"
            "1,2\n");
  EXPECT_EQ(pass("Write",
                 "\xEF\xBB\xBF"
                 "1,2\n"),
            "\xEF\xBB\xBF"
            "1,2\n");
  EXPECT_EQ(pass("Refuse", "\"\xEF\xBB\xBF\",2\n"), "\"\xEF\xBB\xBF\",2\n") << "a value that looks like one";
}

TEST_F(CsvTable, RowsCanBeReadOneAfterTheOther) {
  m_config.message("Row", "nWhole=\"0\"", fields({"A", "B"}));
  ASSERT_EQ(m_config.start(), 0) << told();
  std::string s = "1,2\n\"3\n\",4\n5,6";
  int nAt = 0;
  std::string sAll;
  while (nAt < static_cast<int>(s.size())) {
    const Text text = create("Row");
    const Msg *ptDefinition = text->ptMsgInfo;
    ASSERT_EQ(ptDefinition->fParse(nullptr, &text->tValueListInfo, text->ptMsgInfo, s.data(), &nAt,
                                   static_cast<int>(s.size())),
              0);
    sAll += get(text, "A") + get(text, "B") + ";";
  }
  EXPECT_EQ(sAll, "12;3\n4;56;");
}

TEST_F(CsvTable, MandatoryFieldsMayBeEmptyWhereTheyAreGiven) {
  const std::string sKept = "nMandatory=\"1\" nKeepEmpty=\"2\" ";
  m_config.message("Kept", "", {field("A", sKept), field("B", sKept + "nLen=\"2\" psPad=\" \""), field("C")});
  m_config.message("Always", "", {field("A", "nMandatory=\"1\" nKeepEmpty=\"1\""), field("B")});
  m_config.message("Plain", "psQuote=\"\"", {field("A", sKept), field("B")});
  m_config.message("Rest", "", {field("B"), field("A", sKept + "psKind=\"rest\"")});
  ASSERT_EQ(m_config.start(), 0) << told();
  refused("Kept", ",  x\n",
          "Field[A] Offset[0]: expected a value, be it empty, found none. The field is mandatory.");
  const auto same = [](const std::string &sName, const std::string &sBytes) {
    EXPECT_EQ(pass(sName, sBytes), sBytes) << sName << told();
  };
  same("Kept", "\"\",  x\n");
  same("Always", "\"\",x\n");
  EXPECT_EQ(pass("Always", ",x\n"), "\"\",x\n");
  same("Plain", ",x\n");
  same("Rest", "x,\n");
}

TEST_F(CsvTable, MandatoryFieldsStandInShortRecordsToo) {
  const std::string sMust = "nMandatory=\"1\" nKeepEmpty=";
  m_config.message("Always", "nShort=\"1\"", {field("A"), field("B", sMust + "\"1\"")});
  m_config.message("Kept", "nShort=\"1\"", {field("A"), field("B", sMust + "\"2\"")});
  m_config.message("Bare", "nShort=\"1\" psQuote=\"\"",
                   {field("A", "nLen=\"1\""), field("B", sMust + "\"1\"")});
  m_config.message("Fixed", "nShort=\"1\"", {field("A"), field("B", sMust + "\"1\" nLen=\"2\" psPad=\" \"")});
  m_config.message("Rest", "nShort=\"1\"", {field("A"), field("B", sMust + "\"1\" psKind=\"rest\"")});
  m_config.message("Value", "nShort=\"1\" psQuote=\"\"",
                   {field("A", "nLen=\"1\""), field("B", "nMandatory=\"1\"")});
  ASSERT_EQ(m_config.start(), 0) << told();
  for (const std::string sName : {"Always", "Kept"}) {
    refused(sName, "a\n",
            "Field[B] Offset[1]: expected a value, be it empty, found none. The field is mandatory.");
    EXPECT_EQ(pass(sName, "a,\"\"\n"), "a,\"\"\n") << told();
  }
  for (const std::string sName : {"Fixed", "Rest"})
    refused(sName, "a\n", "Field[B] Offset[1]: expected a value");
  EXPECT_EQ(pass("Bare", "a\n"), "a\n") << told();
  EXPECT_EQ(pass("Fixed", "a,  \n"), "a,  \n") << told();
  EXPECT_EQ(pass("Rest", "a,\n"), "a,\n") << told();
  refused("Value", "a\n", "Field[B] Offset[1]: expected a value, found none.");
}

TEST_F(CsvTable, EmptyFieldsAtTheEndOfShortRecordsAreLeftOutWhereAllAreInQuotes) {
  m_config.message("M", "nShort=\"1\" psQuoting=\"always\"",
                   {field("A"), field("B", "nLen=\"2\""), field("C")});
  ASSERT_EQ(m_config.start(), 0) << told();
  for (const std::string s : {"\"a\"\n", "\"a\",bb\n", "\"a\",bb\"c\"\n", "\"\",bb\n"})
    EXPECT_EQ(pass("M", s), s) << told();
  const Text text = create("M");
  set(text, "C", "c");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("Field[C] Offset[2]: expected 2 characters in B before it, found none.")) << told();
}

TEST_F(CsvTable, AHeaderLineIsThereInAGroupToo) {
  m_config.message("Rows", "psHeader=\"order\"",
                   {group("G", "", {group("H", "", {rows(fields({"A", "B"}))})})});
  m_config.message("Row", "psHeader=\"names\"", {group("G", "", {record("R", "", fields({"A", "B"}))})});
  ASSERT_EQ(m_config.start(), 0) << told();
  for (const std::string sName : {"Rows", "Row"}) {
    for (const std::string s : {"A,B\n", "A,B\n1,2\n"}) EXPECT_EQ(pass(sName, s), s) << told();
    EXPECT_EQ(generate(create(sName)), "A,B\n");
    refused(sName, "", "expected a line of column names, found the end.");
  }
}

}  // namespace

// Where a record begins and ends when little stands in it: what leaves no byte, and what would be taken for
// something else.
#include <gtest/gtest.h>

#include <array>

#include "csv_fixture.h"

namespace {

using namespace test::csvtext;

class CsvEdges : public CsvFixture {};

TEST_F(CsvEdges, RecordsThatBeginWithARestAreWrittenAsTheyWereRead) {
  const FormatNode rest = field("A", "psKind=\"rest\"");
  m_config.message("M", "psComment=\"#\"", {rest});
  m_config.message("Rows", "", {rows({rest})});
  m_config.message("Short", "nShort=\"1\"", {rows({rest})});
  start();
  for (const char *const ps : {"a,b,c\n", "\"a\",b\n", "\"\"\n"}) same("M", ps);
  same("Rows", "one\n\ntwo\n\n");
  same("Short", "one\n\ntwo\n\n");
  const Text text = create("M");
  set(text, "A", "#1");
  EXPECT_EQ(generate(text), "failed");
}

TEST_F(CsvEdges, RecordsThatBeginWithAFixedFieldAreFilledWhereNothingHasAValue) {
  const std::vector<FormatNode> table = {rows({field("A", "nLen=\"3\" psPad=\" \""), field("B")})};
  m_config.message("M", "nShort=\"1\"", table);
  m_config.message("Marked", "nShort=\"1\" psRecordEnd=\"/\"", table);
  m_config.message("Plain", "nShort=\"1\" psQuote=\"\"", table);
  start();
  same("M", "   \na  b\n");
  same("Marked", "   /\na  b/\n");
  same("Plain", "   \na  b\n");
}

TEST_F(CsvEdges, RecordsAreNotWrittenWhereTheirFieldsMakeAComment) {
  m_config.message("Pad", "psComment=\"#\"", {field("A", "nLen=\"2\" psPad=\"#\""), field("B")});
  m_config.message("Two", "psComment=\"//\" psCharset=\"IBM037\"", {field("A", "nLen=\"1\""), field("B")});
  start();
  Text text = create("Pad");
  set(text, "B", "1");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("expected a record that does not begin like a comment, found \"#\"")) << told();
  set(text, "A", "x");
  EXPECT_EQ(generate(text), "x#1\n");
  text = create("Two");
  set(text, "A", "/");
  set(text, "B", "/b");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("expected a record that does not begin like a comment")) << told();
  set(text, "B", "b");
  EXPECT_EQ(generate(text), "\x61\x82\x25");
}

TEST_F(CsvEdges, AnEmptyRestThatMayBeMissingStandsAloneInItsLine) {
  m_config.message("M", "nShort=\"1\" psContinuation=\"88\"",
                   {record("R", "psTag=\"1\"", {field("A", "psKind=\"rest\""), field("B")})});
  start();
  const Text text = create("M");
  set(text, "B", "y");
  const std::string s = "1,\n88,y\n";
  EXPECT_EQ(generate(text), s);
  same("M", s);
}

TEST_F(CsvEdges, RecordsThatMayBeShortKeepEveryCountedRepetition) {
  m_config.message("M", "nShort=\"1\"", {field("N"), loop("L", "CsvField", "", "", {}, "N"), field("After")});
  m_config.message("Pairs", "nShort=\"1\"",
                   {field("N"), loop("L", "CsvGroup", "", "", {field("X"), field("Y")}, "N")});
  m_config.message("Fixed", "nShort=\"1\" psQuote=\"\"",
                   {field("N"), loop("L", "CsvField", "nLen=\"2\" psPad=\" \"", "", {}, "N")});
  m_config.message("Two", "",
                   {record("A", "psTag=\"A\"", {field("N"), loop("L", "CsvField", "", "", {}, "N")}),
                    record("B", "psTag=\"B\" nShort=\"1\" nMandatory=\"1\"", {field("F")})});
  start();
  for (const char *const ps : {"3,a,,\n", "1,\n", "2,,b\n", "1,a,c\n", "2,a,,c\n", "0\n"}) same("M", ps);
  for (const char *const ps : {"2,a,b,c\n", "2,a,,\n", "1,\n"}) same("Pairs", ps);
  EXPECT_EQ(pass("Pairs", "2,a,,,\n"), "2,a,,\n");
  same("Fixed", "2,  a \n");
  same("Fixed", "2,    \n");
  same("Two", "A,2,,\nB\n");
}

TEST_F(CsvEdges, AnEmptyLastFieldBehindAFixedOneCanBeReadAgain) {
  const std::vector<FormatNode> fixed = {field("A", "nLen=\"2\""), field("B")};
  m_config.message("Quotes", "", fixed);
  m_config.message("Plain", "psQuote=\"\"", fixed);
  m_config.message("Marked", "psQuote=\"\" psRecordEnd=\"/\"", fixed);
  m_config.message("Rest", "", {field("A", "nLen=\"2\""), field("B", "psKind=\"rest\"")});
  m_config.message("Three", "psQuote=\"\"", {field("A", "nLen=\"2\""), field("B"), field("C")});
  m_config.message("Must", "psQuote=\"\"", {field("A", "nLen=\"2\""), field("B", "nMandatory=\"1\"")});
  m_config.message("Loop", "", {field("A", "nLen=\"2\""), loop("L", "CsvField", "", "", {})});
  m_config.message("Counted", "psQuote=\"\"",
                   {field("N", "nLen=\"1\""), loop("L", "CsvField", "", "", {}, "N")});
  m_config.message("Short", "psQuote=\"\" nShort=\"1\"",
                   {field("N", "nLen=\"1\""), loop("L", "CsvField", "", "", {}, "N")});
  start();
  for (const char *const ps : {"xx\"\"\n", "xxb\n"}) same("Quotes", ps);
  refused("Quotes", "xx\n", "Field[B] Offset[2]: expected another field in the record, found its end.");
  const Text text = create("Quotes");
  set(text, "A", "xx");
  EXPECT_EQ(generate(text), "xx\"\"\n");
  for (const char *const ps : {"xx\n", "xxb\n"}) same("Plain", ps);
  for (const char *const ps : {"xx/\n", "xxb/\n"}) same("Marked", ps);
  for (const char *const ps : {"xx\n", "xxb,c\n"}) same("Rest", ps);
  for (const char *const ps : {"xx,\n", "xx,c\n"}) same("Three", ps);
  refused("Three", "xx\n", "Field[C] Offset[2]: expected another field in the record, found its end.");
  refused("Must", "xx\n", "Field[B] Offset[2]: expected a value, found none.");
  for (const char *const ps : {"xx\n", "xx\"\"\n", "xxa,\n"}) same("Loop", ps);
  for (const std::string sName : {"Counted", "Short"}) {
    for (const char *const ps : {"0\n", "1\n", "1a\n", "2,\n"}) same(sName, ps);
    refused(sName, "2\n", "Field[L[1]] Offset[2]: expected 2 repetitions, found 1.");
  }
}

TEST_F(CsvEdges, AnEmptyRestBehindAFieldWithAnEndOfItsOwnCanBeReadAgain) {
  m_config.message("M", "nTerminated=\"1\" psQuote=\"\"",
                   {record("A", "psTag=\"A\"", {field("F"), field("R", "psKind=\"rest\"")}),
                    record("B", "psTag=\"B\" nMandatory=\"1\"", {field("S", "psKind=\"rest\"")})});
  start();
  for (const char *const ps : {"A,f,\nB,\n", "A,f,r\nB,s,t\n"}) same("M", ps);
  refused("M", "A,\nB,\n", "Field[A.F] Offset[2]: expected another field in the record, found its end.");
}

TEST_F(CsvEdges, AnEmptyLastFieldBehindATagInBracesCanBeReadAgain) {
  const std::vector<FormatNode> one = {record("R", "psTag=\"10\" nMandatory=\"1\"", {field("B")}),
                                       record("S", "psTag=\"20\"", {field("C")})};
  const std::string sBraces = "psTagFront=\"{\" psTagBack=\"}\" ";
  m_config.message("Quotes", sBraces, one);
  m_config.message("Plain", sBraces + "psQuote=\"\"", one);
  m_config.message("Line", sBraces + "psQuote=\"\" psLineEnd=\"none\"", one);
  m_config.message("Rest", sBraces,
                   {record("R", "psTag=\"10\" nMandatory=\"1\"", {field("B", "psKind=\"rest\"")})});
  start();
  EXPECT_EQ(generate(create("Quotes")), "{10}\"\"\n");
  for (const char *const ps : {"{10}\"\"\n", "{10}\"\"\n{20}c\n"}) same("Quotes", ps);
  for (const char *const ps : {"{10}\n", "{10}\n{20}c\n"}) same("Plain", ps);
  for (const char *const ps : {"{10}", "{10}{20}c"}) same("Line", ps);
  for (const char *const ps : {"{10}\n", "{10}a,\"\n"}) same("Rest", ps);
}

TEST_F(CsvEdges, AnEmptyFieldIsKeptWhereTheLineGetsTooLongBehindIt) {
  const std::string sLimited = "psContinuation=\"88\" nMaxRecord=\"12\" ";
  const std::string sBraces = sLimited + "psTagFront=\"{\" psTagBack=\"}\" ";
  const std::vector<FormatNode> first = {record("R", "psTag=\"01\"", fields({"A", "B", "D"}))};
  const std::vector<FormatNode> behind = {
      record("R", "psTag=\"01\"", {field("F", "nLen=\"4\""), field("A"), field("B")})};
  m_config.message("First", sBraces + "nShort=\"1\"", first);
  m_config.message("FirstPlain", sBraces + "nShort=\"1\" psQuote=\"\"", first);
  m_config.message("Behind", sLimited, behind);
  m_config.message("BehindPlain", sLimited + "psQuote=\"\"", behind);
  m_config.message("Full", "psContinuation=\"88\" nMaxRecord=\"8\"", behind);
  start();
  const auto written = [](const std::string &sName, const std::string &sB) {
    const Text text = create(sName);
    if (!sName.starts_with("First")) set(text, "F", "xxxx");
    set(text, "B", sB);
    return generate(text);
  };
  const std::vector<std::array<std::string, 3>> cases = {
      {"First", "abcdefgh", "{01}\"\"\n{88}abcdefgh\n"},
      {"FirstPlain", "abcdefgh", "{01}\n{88}\n{88}abcdefgh\n"},
      {"Behind", "bcdefg", "01,xxxx\"\"\n88,bcdefg\n"},
      {"BehindPlain", "bcdefg", "01,xxxx\n88,\n88,bcdefg\n"},
      {"Full", "b", "01,xxxx\n88,\n88,b\n"},
      {"Full", "bcdef", "01,xxxx\n88,\n88,bcdef\n"},
  };
  for (const auto &[sName, sB, sBytes] : cases) {
    EXPECT_EQ(written(sName, sB), sBytes) << sName << told();
    const Text text = parse(sName, sBytes);
    ASSERT_NE(text, nullptr) << sName << told();
    EXPECT_EQ(get(text, "A"), "") << sName;
    EXPECT_EQ(get(text, "B"), sB) << sName;
  }
}

TEST_F(CsvEdges, AnEmptyFieldIsKeptWhereTheRecordWasContinuedBehindIt) {
  const std::string sMarked = "psContinuation=\"88\" psRecordEnd=\"/\" ";
  const std::string sBraces = sMarked + "psTagFront=\"{\" psTagBack=\"}\" ";
  const FormatNode wraps = field("Wraps", "psKind=\"wraps\"");
  const std::vector<FormatNode> first = {record("R", "psTag=\"T1\"", {field("A"), field("B"), wraps})};
  const std::vector<FormatNode> behind = {
      record("R", "psTag=\"T1\"", {field("F", "nLen=\"2\""), field("A"), field("B"), wraps})};
  m_config.message("First", sBraces, first);
  m_config.message("FirstPlain", sBraces + "psQuote=\"\"", first);
  m_config.message("Behind", sMarked, behind);
  m_config.message("BehindPlain", sMarked + "psQuote=\"\"", behind);
  m_config.message("Rests", sBraces,
                   {record("R", "psTag=\"T1\"", {loop("L", "CsvField", "psKind=\"rest\"", "", {})})});
  start();
  for (const char *const ps : {"{T1}\"\"/\n{88} b/\n", "{T1}/\n{88}/\n{88}b/\n"}) same("First", ps);
  for (const char *const ps : {"{T1}/\n{88}/\n{88}b/\n", "{T1}/\n{88},b/\n"}) same("FirstPlain", ps);
  for (const char *const ps : {"T1,xx\"\"/\n88,b/\n", "T1,xx/\n88,/\n88,b/\n"}) same("Behind", ps);
  for (const char *const ps : {"T1,xx/\n88,/\n88,b/\n", "T1,xx/\n88,/\n88,/\n"}) same("BehindPlain", ps);
  for (const char *const ps : {"{T1}/\n{88}/\n{88}b/\n", "{T1}/\n{88}/\n{88}/\n"}) same("Rests", ps);
}

}  // namespace

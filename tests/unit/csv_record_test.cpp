// Records that are told by their tags: order, nesting, continued records, choices, brace tags.
#include <gtest/gtest.h>

#include "csv_fixture.h"

namespace {

using namespace test::csvtext;

class CsvRecords : public CsvFixture {};

// A file head, batches of items with notes of their own, a tail.
std::vector<FormatNode> batches() {
  return {record("Head", "psTag=\"H\" nMandatory=\"1\"", fields({"Sender", "Date"})),
          loop("Batches", "CsvRecord", "psTag=\"B\"", "nMax=\"3\"",
               {field("Name"),
                loop("Items", "CsvRecord", "psTag=\"I\"", "nMin=\"1\"",
                     {field("Code"), field("Amount"), record("Note", "psTag=\"N\"", {field("Text")})}),
                record("Sum", "psTag=\"S\" nMandatory=\"1\"", {field("Total")})}),
          record("Tail", "psTag=\"T\"", {field("Count")})};
}

TEST_F(CsvRecords, BelongToTheRecordThatTheyStandIn) {
  m_config.message("M", "", batches());
  start();
  same("M", "H,me,today\nB,1\nI,a,1\nN,\"x,y\"\nI,b,2\nS,3\nB,2\nI,c,4\nS,4\nT,2\n");
  same("M", "H,me,today\n");
  same("M", "H,,\nT,0\n");
  refused("M", "B,1\n", "Field[Head] Offset[0]: expected the record \"H\", found a record \"B\".");
  refused("M", "H,,\nB,1\nS,3\n",
          "Field[Batches[0].Items] Offset[8]: expected at least 1 repetitions, found a record \"S\".");
  refused("M", "H,,\nB,1\nI,a,1\n",
          "Field[Batches[0].Sum] Offset[14]: expected the record \"S\", found the end.");
  refused("M", "H,,\nB,1\nI,a,1\nX,1\n",
          "Field[Batches[0].Sum] Offset[14]: expected one of the records H, B, I, N, S, T, found a record "
          "\"X\".");
  refused("M", "H,,\nH,,\n", "Offset[4]: expected the end of the message, found a record \"H\".");
  refused("M", "H,,\nX\n", "Offset[4]: expected one of the records H, B, I, N, S, T, found a record \"X\".");
  refused("M", "H,,\nB\n",
          "Field[Batches[0].Name] Offset[5]: expected another field in the record, found its end.");
  const std::string sBatch = "B,1\nI,a,1\nS,3\n";
  same("M", "H,,\n" + sBatch + sBatch + sBatch);
  refused("M", "H,,\n" + sBatch + sBatch + sBatch + sBatch,
          "Field[Batches[3]] Offset[46]: expected at most 3 repetitions, found one more.");
}

TEST_F(CsvRecords, AreWrittenWhenTheyHaveAValueOrMustBeThere) {
  m_config.message("M", "", batches());
  start();
  const Text text = create("M");
  EXPECT_EQ(generate(text), "H,,\n");
  set(text, "Count", "0");
  EXPECT_EQ(generate(text), "H,,\nT,0\n");
}

TEST_F(CsvRecords, TagsMayBeInQuotes) {
  m_config.message("M", "psQuoting=\"always\"", batches());
  start();
  same("M", "\"H\",\"me\",\"\"\n");
  EXPECT_EQ(pass("M", "H,me,\n"), "\"H\",\"me\",\"\"\n");
  refused("M", "\"H,me\n", "Offset[0]: expected a closing quote");
  refused("M", "\"H\"x,me\n", "Offset[3]: expected \",\" behind the tag");
}

TEST_F(CsvRecords, InAnyOrderAreWrittenInTheDefinitions) {
  m_config.message(
      "M", "psOrder=\"any\"",
      {record("A", "psTag=\"A\" nMandatory=\"1\"", {field("F")}), record("B", "psTag=\"B\"", {field("G")}),
       loop("C", "CsvRecord", "psTag=\"C\"", "nMin=\"1\" nMax=\"2\"", {field("K")})});
  start();
  EXPECT_EQ(pass("M", "C,1\nB,2\nA,3\nC,4\n"), "A,3\nB,2\nC,1\nC,4\n") << told();
  refused("M", "C,1\nB,2\n", "Field[A] Offset[8]: expected the record \"A\", found the end.");
  refused("M", "A,1\nC,2\nA,3\n", "Offset[8]: expected each record once, found a record \"A\".");
  refused("M", "A,1\n", "Field[C] Offset[4]: expected at least 1 repetitions, found the end.");
  refused("M", "A,1\nC,2\nC,3\nA,4\n", "Offset[12]: expected each record once");
  refused("M", "A,1\nC,2\nC,3\nC,4\n", "Field[C[2]] Offset[12]: expected at most 2 repetitions");
  refused("M", "A,1\nC,2\nX,3\n", "Offset[8]: expected one of the records A, B, C, found a record \"X\".");
}

TEST_F(CsvRecords, GroupsOfRecordsAreThereAsAWhole) {
  m_config.message("M", "",
                   {group("G", "",
                          {record("A", "psTag=\"A\" nMandatory=\"1\"", {field("F")}),
                           record("B", "psTag=\"B\" nMandatory=\"1\"", {field("H")})}),
                    loop("L", "CsvGroup", "", "",
                         {record("C", "psTag=\"C\"", {field("I")}),
                          record("D", "psTag=\"D\" nMandatory=\"1\"", {field("J")})})});
  start();
  same("M", "A,1\nB,2\nC,1\nD,2\nD,3\n");
  same("M", "D,1\n");
  EXPECT_EQ(pass("M", ""), "");
  refused("M", "A,1\n", "Field[G.B] Offset[4]: expected the record \"B\", found the end.");
  refused("M", "C,1\nC,2\n", "Field[L[0].D] Offset[4]: expected the record \"D\", found a record \"C\".");
}

TEST_F(CsvRecords, WithoutATagKeepTheirFirstField) {
  const std::vector<FormatNode> tagless = {record("Head", "psTag=\"H\" nMandatory=\"1\"", {field("N")}),
                                           rows(fields({"V", "X"}, "nMaxLen=\"3\""))};
  m_config.message("M", "", tagless);
  m_config.message("Short", "nShort=\"1\"", tagless);
  m_config.message("Quoted", "psQuoting=\"always\"", tagless);
  start();
  same("M", "H,3\na,b\nH,\"d,e\"\n");
  refused("M", "H,3\na,b\nlong,b\n", "Field[Rows[1].V] Offset[8]: expected at most 3 characters");
  refused("M", "H,3\na,b,c\n", "Offset[8]: expected a line feed behind the last field of the record");
  same("Short", "H,3\na\na,b\n");
  same("Quoted", "\"H\",\"3\"\n\"H\",\"\"\n\"a\"\"b\",\"c\"\n");
}

// --- Fields inside a record
// ---------------------------------------------------------------------------------------

TEST_F(CsvRecords, MayEndEarlyWhenTheyMay) {
  m_config.message("M", "nShort=\"1\"",
                   {record("A", "psTag=\"A\"",
                           {field("F", "nMandatory=\"1\""), field("G"), field("H", "nKeepEmpty=\"2\"")})});
  m_config.message("Row", "nShort=\"1\" psQuote=\"\"", {field("F"), field("G", "nKeepEmpty=\"2\"")});
  start();
  for (const char *const ps : {"A,1\n", "A,1,2\n", "A,1,2,3\n", "A,1,,3\n", "A,1,,\"\"\n"}) same("M", ps);
  EXPECT_EQ(pass("M", "A,1,,\n"), "A,1\n");
  refused("M", "A\n", "Field[A.F] Offset[1]: expected a value, found none.");
  refused("M", "A,1,2,3,4\n", "Offset[8]: expected a line feed behind the last field of the record");
  for (const char *const ps : {"1\n", "1,\n", ",2\n", ",\n", "\n"}) same("Row", ps);
}

TEST_F(CsvRecords, HoldLoopsOfFieldsToTheirEndOrByCount) {
  m_config.message("M", "",
                   {record("A", "psTag=\"A\"",
                           {field("F"), field("N"),
                            loop("Pairs", "CsvGroup", "", "nMax=\"3\"", {field("X"), field("Y")}, "N"),
                            field("G"), loop("Rest", "CsvField", "nMaxLen=\"2\"", "", {})})});
  start();
  same("M", "A,f,2,1,2,3,4,g\n");
  same("M", "A,f,0,g,r,,s\n");
  EXPECT_EQ(pass("M", "A,f,,g\n"), "A,f,0,g\n");
  EXPECT_EQ(pass("M", "A,f,01,1,2,g\n"), "A,f,1,1,2,g\n");
  refused("M", "A,f,2,1,2,g\n",
          "Field[A.Pairs[1].Y] Offset[11]: expected another field in the record, found its end.");
  refused("M", "A,f,2,1,2\n",
          "Field[A.Pairs[1]] Offset[10]: expected 2 repetitions, found 1. Correct the count.");
  refused("M", "A,f,4,1,2,3,4,5,6,7,8,g\n",
          "Field[A.Pairs[3]] Offset[18]: expected at most 3 repetitions, found one more.");
  refused("M", "A,f,x,g\n", "expected a count of repetitions, found \"x\".");
  refused("M", "A,f,-1,g\n", "expected a count of repetitions, found \"-1\".");
  refused("M", "A,f,99999999999999999999,g\n", "expected a count of repetitions");
  refused("M", "A,f,0,g,123\n", "Field[A.Rest[0].Rest] Offset[8]: expected at most 2 characters, found 3");
}

TEST_F(CsvRecords, AreNumberedByTheInnermostLoopAroundThem) {
  const FormatNode line = field("No", "nPosition=\"1\"");
  m_config.message(
      "M", "",
      {loop("Batches", "CsvRecord", "psTag=\"B\"", "",
            {line, loop("Pairs", "CsvGroup", "", "", {field("X"), field("At", "nPosition=\"1\"")}),
             loop("Items", "CsvRecord", "psTag=\"I\"", "",
                  {line, record("Note", "psTag=\"N\"", {line, field("Text")})}),
             record("Sum", "psTag=\"S\"", {line, field("Total")})})});
  start();
  same("M", "B,1,a,1,b,2\nI,1\nI,2\nN,2,t\nI,3\nS,1,9\nB,2\nI,1\nS,2,9\n");
  EXPECT_EQ(pass("M", "B,,a,\nI,\nI,\nN,,t\nB,\n"), "B,1,a,1\nI,1\nI,2\nN,2,t\nB,2\n") << told();
  refused("M", "B,1\nI,1\nI,2\nN,1,t\n",
          "Field[Batches[0].Items[1].Note.No] Offset[14]: expected 2, the number of its repetition, found "
          "\"1\".");
  refused("M", "B,1,a,1,b,1\n", "Field[Batches[0].Pairs[1].At] Offset[10]: expected 2, the number of its");
  refused("M", "B,1\nB,2\nS,1,\n", "Field[Batches[1].Sum.No] Offset[10]: expected 2, the number of its");
}

TEST_F(CsvRecords, HoldAlternativesThatAValueChooses) {
  m_config.message("M", "",
                   {record("A", "psTag=\"A\"",
                           {field("Kind"),
                            group("What", "psKind=\"choice\" psSelect=\"Kind\" psNone=\"Z|\"",
                                  {group("Sum", "psWhen=\"S\"", {field("One"), field("Two")}),
                                   field("Day", "psWhen=\"D|E\"")}),
                            field("Last")})});
  m_config.message("Else", "",
                   {field("Kind", "psDefault=\"D\""),
                    group("What", "psKind=\"choice\" psSelect=\"Kind\"",
                          {field("Day", "psWhen=\"D\""), group("Other", "", {field("X"), field("Y")})})});
  start();
  for (const char *const ps : {"A,S,1,2,l\n", "A,D,1,l\n", "A,E,1,l\n", "A,Z,l\n", "A,,l\n"}) same("M", ps);
  for (const char *const ps : {"D,1\n", "q,1,2\n"}) same("Else", ps);
  EXPECT_EQ(pass("Else", ",1\n"), "D,1\n");
  refused("M", "A,Q,l\n",
          "Field[A.What] Offset[4]: expected a value of Kind that chooses what follows, found \"Q\". Known: "
          "\"S\", \"D\", \"E\", \"Z\", \"\".");
  const Text text = create("M");
  set(text, "Kind", "S");
  set(text, "Day", "1");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told(
      "Field[A.What] Offset[3]: expected values only in what Kind chooses, found them in Day with \"S\"."))
      << told();
  set(text, "Kind", "Q");
  set(text, "Day", "");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("that chooses what follows, found \"Q\"")) << told();
}

TEST_F(CsvRecords, HoldAlternativesThatACountChooses) {
  const FormatNode lots = loop("Lot", "CsvField", "", "", {}, "Cnt");
  const FormatNode what =
      group("What", "psKind=\"choice\" psSelect=\"Cnt\"",
            {field("Reason", "psWhen=\"0\""), group("Two", "psWhen=\"2\"", fields({"P", "Q"}))});
  m_config.message("Behind", "", {field("Cnt"), lots, what});
  m_config.message("Before", "", {field("Cnt"), what, lots});
  m_config.message("Rows", "",
                   {record("R", "psTag=\"R\"", {field("Cnt"), what}),
                    loop("Lot", "CsvRecord", "psTag=\"L\"", "", fields({"A", "B"}), "Cnt")});
  start();
  for (const char *const ps : {"2,a,b,p,q\n", "0,r\n"}) same("Behind", ps);
  for (const char *const ps : {"2,p,q,a,b\n", "0,r\n"}) same("Before", ps);
  for (const char *const ps : {"R,2,p,q\nL,a,b\nL,c,d\n", "R,0,r\n"}) same("Rows", ps);
  for (const std::string sName : {"Behind", "Before"})
    EXPECT_EQ(pass(sName, ",r\n"), "0,r\n") << sName << told();
  EXPECT_EQ(pass("Before", "02,p,q,a,b\n"), "2,p,q,a,b\n") << told();
  refused("Before", "3,r\n",
          "Field[What] Offset[2]: expected a value of Cnt that chooses what follows, found \"3\".");
  refused("Before", "-0,r\n", "expected a value of Cnt that chooses what follows, found \"-0\".");
  refused("Behind", "-0,r\n", "expected a count of repetitions, found \"-0\".");
  const Text text = create("Behind");
  set(text, "Reason", "r");
  EXPECT_EQ(generate(text), "0,r\n");
  addTime(text, "Lot");
  addTime(text, "Lot");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("expected values only in what Cnt chooses, found them in Reason with \"2\".")) << told();
  set(text, "Reason", "");
  set(text, "P", "p");
  EXPECT_EQ(generate(text), "2,,,p,\n") << told();
  set(text, "Cnt", "0");
  EXPECT_EQ(generate(text), "2,,,p,\n") << told();
}

TEST_F(CsvRecords, HoldAlternativesThatAValueWithoutItsPadsChooses) {
  m_config.message("M", "",
                   {field("Kind", "nLen=\"2\" psPad=\" \""),
                    group("What", "psKind=\"choice\" psSelect=\"Kind\"",
                          {field("Sum", "psWhen=\"S\""), group("Other", "", fields({"X", "Y"}))})});
  start();
  same("M", "S 1\n");
  const Text text = create("M");
  set(text, "Kind", "S ");
  set(text, "Sum", "1");
  EXPECT_EQ(generate(text), "S 1\n") << told();
}

TEST_F(CsvRecords, ARestTakesTheSeparatorsToo) {
  m_config.message("M", "psRecordEnd=\"/\" psQuote=\"\"",
                   {record("A", "psTag=\"A\"", {field("F"), field("G", "psKind=\"rest\"")})});
  start();
  same("M", "A,1,2,\"3//\n");
  same("M", "A,1,/\n");
  refused("M", "A,1,2\n", "Field[A.G] Offset[5]: expected \"/\" at the end of the line, found \"\\x0A\".");
  refused("M", "A,1,2\r/\n", "Field[A.G] Offset[5]: expected \"/\" at the end of the line");
  const Text text = create("M");
  set(text, "G", "a\nb");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("expected a value without line ends and marks, found \"a\\x0Ab\".")) << told();
}

// --- End marks and continued records
// -------------------------------------------------------------------------------

std::vector<FormatNode> continued() {
  return {record("A", "psTag=\"01\" nMandatory=\"1\"",
                 {field("F"), field("G"), field("H"), field("Wraps", "psKind=\"wraps\"")}),
          loop("B", "CsvRecord", "psTag=\"02\"", "", {loop("Texts", "CsvField", "psKind=\"rest\"", "", {})})};
}

TEST_F(CsvRecords, EndWithAMarkBeforeTheLineEnd) {
  m_config.message("M", "psRecordEnd=\"/\" psQuote=\"\" psContinuation=\"88\"", continued());
  start();
  same("M", "01,1,2,3/\n");
  refused("M", "01,1,2,3\n", "Field[A.H] Offset[8]: expected \",\" or \"/\" behind the field, found");
  refused("M", "01,1/2,3/\n",
          "Field[A.F] Offset[4]: expected \",\" or \"/\" behind the field, found \"/2,3/\\x0A\".");
  refused("M", "01/1,2,3/\n", "Offset[2]: expected \",\" behind the tag, found \"/1,2,3/\\x0A\".");
  const Text text = create("M");
  set(text, "F", "1/2");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("Field[A.F] Offset[3]: expected a value without separators, line ends and marks"))
      << told();
}

TEST_F(CsvRecords, AreContinuedWhereTheyWereWhenTheyWereRead) {
  m_config.message("M", "psRecordEnd=\"/\" psQuote=\"\" psContinuation=\"88\"", continued());
  m_config.message("Joined", "psRecordEnd=\"/\" psQuote=\"\" psContinuation=\"88\"",
                   {record("A", "psTag=\"01\"", fields({"F", "G", "H"}))});
  start();
  same("M", "01,1/\n88,2,3/\n");
  same("M", "01,1,2/\n88,3/\n");
  same("M", "01,1/\n88,2/\n88,3/\n");
  same("M", "01,1/\n88,,/\n");
  same("M", "01,1,2,3/\n02,some text/\n88,and, more/\n02,x/\n");
  EXPECT_EQ(pass("Joined", "01,1/\n88,2/\n88,3/\n"), "01,1,2,3/\n");
  EXPECT_EQ(get(parse("M", "01,1/\n88,2/\n88,3/\n"), "Wraps"), "2 3");
  refused("M", "01,1,2,3/\n88,4/\n",
          "Offset[13]: expected \"/\" behind the last field of the record, found \"4/\\x0A\".");
  refused("M", "88,1/\n", "expected one of the records 01, 02, found a record \"88\".");
  const Text text = create("M");
  for (const char *const ps : {"3 2", "x", "2x", "9", "0"}) {
    set(text, "Wraps", ps);
    EXPECT_EQ(generate(text), "failed") << ps;
  }
}

TEST_F(CsvRecords, AreContinuedAtTheDeclaredLength) {
  m_config.message("M", "psRecordEnd=\"/\" psQuote=\"\" psContinuation=\"88\" nMaxRecord=\"12\"",
                   continued());
  start();
  EXPECT_EQ(pass("M", "01,1234,56,7/\n"), "refused");
  EXPECT_TRUE(told("Offset[0]: expected a line of at most 12 bytes, found 13. Raise nMaxRecord")) << told();
  const Text text = create("M");
  set(text, "F", "12345678");
  set(text, "G", "1");
  set(text, "H", "123456");
  EXPECT_EQ(generate(text), "01,12345678/\n88,1,123456/\n");
  EXPECT_EQ(get(parse("M", "01,12345678/\n88,1,123456/\n"), "Wraps"), "2");
  set(text, "H", "1234567");
  EXPECT_EQ(generate(text), "01,12345678/\n88,1/\n88,1234567/\n");
  set(text, "H", "123456789");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("expected a line of at most 12 bytes, found 13.")) << told();
}

TEST_F(CsvRecords, AreContinuedInTheSameLineWhereThereAreNone) {
  m_config.message(
      "M", "psLineEnd=\"none\" psRecordEnd=\"'\" psQuote=\"\" psContinuation=\"88\" nMaxRecord=\"12\"",
      continued());
  start();
  const std::string s = "01,12345678'88,1,123456'02,x'";
  same("M", s);
  EXPECT_EQ(get(parse("M", s), "H"), "123456");
}

TEST_F(CsvRecords, MayStandInOneLine) {
  m_config.message("M", "psLineEnd=\"none\" psRecordEnd=\"'\" psSeparator=\"+\" psQuote=\"\" psEscape=\"?\"",
                   {record("A", "psTag=\"A\"", fields({"F", "G"})),
                    loop("B", "CsvRecord", "psTag=\"B\"", "", {field("H")})});
  start();
  same("M", "A+1+2'B+it?'s ?+ ?\?'B+\n'");
  refused("M", "A+1+2", "Field[A.G] Offset[5]: expected \"+\" or \"'\" behind the field, found the end.");
  refused("M", "A+1+2'\nB+3'", "expected one of the records A, B, found a record \"\\x0AB\".");
}

// --- Brace tags
// ---------------------------------------------------------------------------------------------------

std::vector<FormatNode> braces() {
  return {record("Head", "psTag=\"1500\" nMandatory=\"1\"",
                 {field("Version", "nLen=\"2\""), field("User", "nLen=\"4\" psPad=\" \""),
                  field("Code", "nLen=\"1\"")}),
          record("Party", "psTag=\"4000\"",
                 {field("Kind", "nLen=\"1\""), field("Id"), group("G", "", {field("Name"), field("City")})}),
          record("Info", "psTag=\"6000\"", {field("L1", "nMandatory=\"1\""), field("L2")})};
}

TEST_F(CsvRecords, BraceTagsFixedFieldsAndFieldsWithAnEndOfTheirOwn) {
  m_config.message("M",
                   "psSeparator=\"*\" nTerminated=\"1\" psQuote=\"\" psTagFront=\"{\" psTagBack=\"}\" "
                   "nShort=\"1\" psLastLineEnd=\"none\"",
                   braces());
  m_config.message("OneLine",
                   "psSeparator=\"*\" nTerminated=\"1\" psQuote=\"\" psTagFront=\"{\" psTagBack=\"}\" "
                   "nShort=\"1\" psLineEnd=\"none\"",
                   braces());
  start();
  for (const std::string s : {"{1500}30User \n{4000}Did*name*\n{6000}one*two*", "{1500}30ab   ",
                              "{1500}30abcdx\n{4000}D*name**", "{1500}30abcdx\n{6000}one*"}) {
    const Text text = parse("M", s);
    ASSERT_NE(text, nullptr) << s << told();
  }
  same("M", "{1500}30User \n{4000}Did*name*\n{6000}one*two*");
  same("M", "{1500}30ab   \n{4000}D*name*city*");
  same("OneLine", "{1500}30User {4000}Did*name*{6000}one*two*");
  refused("M", "{1500}30Use\n{4000}D",
          "Field[Head.User] Offset[11]: expected 4 characters of a field of fixed length, without");
  refused("M", "{1500}30UserXY",
          "Offset[13]: expected a line feed behind the last field of the record, found \"Y\".");
  refused("M", "{1500}30UserX\n{4000}Did*name",
          "Field[Party.G.Name] Offset[28]: expected \"*\" behind the field, found the end.");
  refused("M", "{1500}30UserX\n{4000}Did\n{6000}",
          "Field[Party.Id] Offset[23]: expected \"*\" behind the field, found");
  refused("M", "{1500}30UserX\n{6000}", "Field[Info.L1] Offset[20]: expected a value, found none.");
  refused("M", "{1599}\n{1500}30UserX",
          "Field[Head] Offset[0]: expected one of the records 1500, 4000, 6000, found a record \"1599\".");
  refused("M", "1500}30UserX", "Offset[0]: expected a record that begins with \"{\", found");
  refused("M", "{1500 30UserX", "Offset[0]: expected a tag that ends with \"}\", found");
}

TEST_F(CsvRecords, FixedFieldsMayHaveConstantsAndDefaultsThatFit) {
  m_config.message(
      "M", "",
      {field("A", "nLen=\"2\" psConst=\"ß1\""), field("B", "nLen=\"3\" psPad=\" \" psConst=\"B\""),
       field("C", "nLen=\"2\" psPad=\" \" psDefault=\"c \""), field("D")});
  start();
  const Text text = create("M");
  set(text, "D", "d");
  EXPECT_EQ(generate(text), "ß1B  c d\n");
  same("M", "ß1B  c d\n");
}

TEST_F(CsvRecords, FixedFieldsAreFilledOrRefused) {
  m_config.message("M",
                   "psSeparator=\"*\" nTerminated=\"1\" psQuote=\"\" psTagFront=\"{\" psTagBack=\"}\" "
                   "nShort=\"1\" psLastLineEnd=\"none\"",
                   braces());
  start();
  const Text text = create("M");
  set(text, "Version", "30");
  EXPECT_EQ(generate(text), "{1500}30");
  set(text, "User", "ab");
  set(text, "Code", "x");
  EXPECT_EQ(generate(text), "{1500}30ab  x");
  set(text, "User", "abcde");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(
      told("Field[Head.User] Offset[8]: expected 4 characters, found 5, \"abcde\". Shorten the value."))
      << told();
  set(text, "User", "a*b");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("expected a value without separators and line ends, found \"a*b\".")) << told();
  set(text, "User", "éé");
  EXPECT_EQ(generate(text), "{1500}30éé  x");
  set(text, "Version", "");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(
      told("Field[Head.User] Offset[6]: expected 2 characters in Version before it, found none. Fill it, or "
           "write psPad."))
      << told();
  set(text, "Version", "3");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(
      told("Field[Head.Version] Offset[6]: expected 2 characters, found 1, \"3\". Fill it, or write psPad."))
      << told();
}

TEST_F(CsvRecords, FixedFieldsAreRefusedWherePadsTakeAwayWhatTheyMustSay) {
  const std::string sPads = "nLen=\"3\" psPad=\"0\" ";
  m_config.message("Must", "", {field("A", sPads + "nMandatory=\"1\"")});
  m_config.message("May", "", {field("A", sPads + "nMandatory=\"1\" nKeepEmpty=\"1\""), field("B", sPads)});
  m_config.message("Count", "", {field("N", sPads), loop("L", "CsvField", "", "", {}, "N")});
  m_config.message("Place", "", {rows({field("P", sPads + "nPosition=\"1\""), field("B", sPads)})});
  start();
  Text text = create("Must");
  for (const char *const ps : {"0", "000"}) {
    set(text, "A", ps);
    EXPECT_EQ(generate(text), "failed");
    EXPECT_TRUE(
        told("Field[A] Offset[0]: expected a value that is the same without the pads behind it, "
             "found \"" +
             std::string(ps) + "\". Write another psPad."))
        << told();
  }
  set(text, "A", "10");
  EXPECT_EQ(generate(text), "100\n");
  refused("Must", "000\n", "Field[A] Offset[0]: expected a value, found none.");
  same("May", "000000\n");
  text = create("May");
  set(text, "A", "0");
  set(text, "B", "00");
  EXPECT_EQ(generate(text), "000000\n");
  same("Count", "000\n");
  same("Count", "900a,,,,,,,,\n");
  text = create("Count");
  for (int i = 0; i < 10; ++i) addTime(text, "L");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("Field[N] Offset[0]: expected a value that is the same without")) << told();
  const std::string sNine = "100000\n200000\n300000\n400000\n500000\n600000\n700000\n800000\n900000\n";
  same("Place", sNine);
  text = parse("Place", sNine);
  addTime(text, "Rows");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("Field[Rows[9].P] Offset[63]: expected a value that is the same without")) << told();
}

}  // namespace

// The functions sqlQuote and sqlNumber, in the plug-in that the library loads.
#include <sys/mman.h>
#include <unistd.h>

#include <climits>

#include "std_config.h"

namespace {

using namespace test::xml;
using test::cs;
using Texts = std::vector<std::string>;

class SqlFunctions : public test::StdTest {
 protected:
  // Loads a converter that puts FUNCTION(A) into X.
  void loadCall(const std::string &sFunction) { load({callRule(sFunction, 1)}); }

  // What the loaded function makes of a value; "refused" when it fails.
  std::string of(const std::string &sValue) {
    from.set("A", sValue);
    return run() == 0 ? to.get("X") : "refused";
  }

  // The one line of a failing call, without what the library adds.
  std::string error(const std::string &sValue) {
    EXPECT_EQ(of(sValue), "refused") << sValue;
    return firstLine();
  }
  static std::string firstLine() { return test::logTexts().empty() ? "no line" : test::logTexts()[0]; }
};

std::string between(const std::string &sEnds, const std::string &sText) {
  std::string s = sEnds;
  return s.append(sText).append(sEnds);
}

constexpr const char *kAnyLength = "nMaxResult=\"2147483646\"";

using SqlQuote = SqlFunctions;
using SqlNumber = SqlFunctions;

const std::string kEveryByte = [] {
  std::string all;
  for (int i = 1; i < 256; ++i) all += static_cast<char>(i);
  return all;
}();

const Texts kAttacks = {
    "'",
    "''",
    "'''",
    "\\'",
    "\\''",
    "\\",
    "x' OR '1'='1",
    "x'; DELETE FROM customer; --",
    "x' UNION SELECT 1 --",
    "'/*",
    "*/'",
    "--",
    ";",
    "%' --",
    "\xbf' OR 1=1 --",      // a first byte that would take the quote along in some character sets
    "\xc3'",                // the same in UTF-8
    "\xe2\x80\x99 OR 1=1",  // a quote of typography is an ordinary character
    "\xca\xbc OR 1=1",      // and so is a modifier letter
    "\xef\xbc\x87 OR 1=1",  // and the wide quote
    "$$; DROP TABLE t; $$",
    "\" OR \"\"=\"",
    "{fn user()}",
    "?",
    ":name",
    "\r\n--\n",
    "\x1b[2J",
};

// --- sqlQuote --------------------------------------------------------------------------------------------

TEST_F(SqlQuote, PutsTheTextInQuotesAndDoublesThoseInside) {
  loadCall("sqlQuote");
  EXPECT_EQ(of("Smith"), "'Smith'");
  EXPECT_EQ(of("O'Brien"), "'O''Brien'");
  EXPECT_EQ(of("'"), "''''");
  EXPECT_EQ(of("'a'b''"), "'''a''b'''''");
  EXPECT_EQ(of("C:\\temp\\"), "'C:\\temp\\'");
  EXPECT_TRUE(test::logTexts().empty());
}

TEST_F(SqlQuote, OfAnEmptyTextIsTwoQuotes) {
  loadCall("sqlQuote");
  EXPECT_EQ(of(""), "''");
  from.slot("A")->psValue = nullptr;
  from.slot("A")->nLen = 0;
  ASSERT_EQ(run(), 0);
  EXPECT_EQ(to.get("X"), "''");
}

TEST_F(SqlQuote, LeavesEveryByteButZeroAsItIs) {
  loadCall("sqlQuote");
  for (const char c : kEveryByte) {
    const std::string sText(1, c);
    EXPECT_EQ(of(sText), c == '\'' ? "''''" : between("'", sText));
  }
  std::string sAll = kEveryByte;
  sAll.insert(sAll.find('\''), 1, '\'');
  EXPECT_EQ(of(kEveryByte), between("'", sAll));
}

TEST_F(SqlQuote, AZeroByteIsRefusedWithItsOffset) {
  loadCall("sqlQuote");
  EXPECT_EQ(
      error(std::string("ab\0cd\0", 6)),
      "Func[sqlQuote] Arg[1] Len[6] Offset[2]: expected no zero byte, found one. A statement ends at a zero "
      "byte: take it off, or write the value in hexadecimal digits.");
  EXPECT_NE(error(std::string(1, '\0')).find("Len[1] Offset[0]"), std::string::npos);
  EXPECT_NE(error(std::string("abc\0", 4)).find("Len[4] Offset[3]"), std::string::npos);
}

TEST_F(SqlQuote, TheDatabaseReadsTheLiteralAsTheText) {
  ASSERT_EQ(dbsConnect(cs("sqlite::memory:")), 0);
  loadCall("sqlQuote");
  Texts texts = kAttacks;
  texts.push_back(kEveryByte);
  for (const std::string &sText : texts) EXPECT_EQ(test::single("SELECT " + of(sText)), sText);
}

TEST_F(SqlQuote, AHugeTextComesWhole) {
  plugAttributes(kAnyLength);
  loadCall("sqlQuote");
  std::string sHuge;
  std::string sDoubled;
  for (int i = 0; i < 1'000'000; ++i) {
    sHuge += "abcdef'";
    sDoubled += "abcdef''";
  }
  EXPECT_TRUE(of(sHuge) == between("'", sDoubled));
}

// More than a gigabyte of quotes: one page of them, many times over.
TEST_F(SqlQuote, ATextWhoseLiteralHasNoLengthIsRefused) {
  constexpr size_t kPiece = 1 << 20;
  constexpr size_t kPieces = 1024;
  const std::string sPiece(kPiece, '\'');
  const int fd = memfd_create("quotes", 0);
  ASSERT_EQ(write(fd, sPiece.data(), kPiece), static_cast<ssize_t>(kPiece));
  auto *const ps = static_cast<char *>(
      mmap(nullptr, kPiece * kPieces, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
  ASSERT_NE(static_cast<void *>(ps), MAP_FAILED);
  for (size_t i = 0; i < kPieces; ++i) {
    ASSERT_NE(mmap(ps + i * kPiece, kPiece, PROT_READ, MAP_SHARED | MAP_FIXED, fd, 0), MAP_FAILED);
  }
  plugAttributes(kAnyLength);
  loadCall("sqlQuote");
  from.slot("A")->psValue = ps;
  from.slot("A")->nLen = static_cast<int>(kPiece * kPieces);
  EXPECT_EQ(run(), -1);
  EXPECT_EQ(
      firstLine(),
      "Func[sqlQuote]: expected a result of at most 2147483646 bytes, found 2147483650 bytes. Shorten the "
      "arguments.");
  munmap(ps, kPiece * kPieces);
  close(fd);
}

// --- sqlNumber -------------------------------------------------------------------------------------------

TEST_F(SqlNumber, GivesANumberAsItIs) {
  plugAttributes(kAnyLength);
  loadCall("sqlNumber");
  for (const std::string sNumber :
       {"0", "7", "42", "0000001050", "000", "0.0", "12.50", "007.500", "1e5", "1E5", "1.5e-3", "1e+05",
        "99999999999999999999999999999999999999.99", "  12", "12   ", "  12.5  "}) {
    EXPECT_EQ(of(sNumber), sNumber);
  }
  const std::string sHuge(3'000'000, '9');
  EXPECT_TRUE(of(sHuge) == sHuge);
}

TEST_F(SqlNumber, ABlankStandsInFrontOfASign) {
  loadCall("sqlNumber");
  EXPECT_EQ(of("-5"), " -5");
  EXPECT_EQ(of("+5"), " +5");
  EXPECT_EQ(of("-0.50e-3"), " -0.50e-3");
  EXPECT_EQ(of(" -5"), " -5");
  EXPECT_EQ(of("  -5 "), "  -5 ");
}

TEST_F(SqlNumber, AnythingElseIsRefusedWithItsOffset) {
  loadCall("sqlNumber");
  const std::string sAdvice = ". Numbers look like 7, -0.50 and 1.5e-3; sqlQuote takes any text.";
  const auto line = [&](size_t nLen, size_t nOffset, const std::string &sWhat) {
    return "Func[sqlNumber] Arg[1] Len[" + std::to_string(nLen) + "] Offset[" + std::to_string(nOffset) +
           "]: expected " + sWhat + sAdvice;
  };
  const std::string sDigit = "a digit, found another character";
  const std::string sMore = "a digit, found the end";
  const std::string sEnd = "the end of the number, found another character";
  struct Bad {
    std::string sText;
    size_t nOffset;
    std::string sWhat;
  };
  const std::vector<Bad> all = {
      {"x", 0, sDigit},        {".5", 0, sDigit},       {"-", 1, sMore},     {"+-5", 1, sDigit},
      {"--5", 1, sDigit},      {"- 5", 1, sDigit},      {"5.", 2, sMore},    {"5. ", 2, sDigit},
      {"5.x", 2, sDigit},      {"5e", 2, sMore},        {"5e-", 3, sMore},   {"5e1.5", 3, sEnd},
      {"1,5", 1, sEnd},        {"1.2.3", 3, sEnd},      {"1 2", 2, sEnd},    {"1_000", 1, sEnd},
      {"0x1F", 1, sEnd},       {"1/2", 1, sEnd},        {"5--", 1, sEnd},    {"5-", 1, sEnd},
      {"5 OR 1=1", 2, sEnd},   {"5;", 1, sEnd},         {"5\n", 1, sEnd},    {"\t5", 0, sDigit},
      {"NaN", 0, sDigit},      {"Infinity", 0, sDigit}, {"NULL", 0, sDigit}, {"'5'", 0, sDigit},
      {"\xd9\xa5", 0, sDigit}, {"5\xc2\xa0", 1, sEnd},  {"1e5e5", 3, sEnd},  {"(5)", 0, sDigit},
  };
  for (const Bad &bad : all)
    EXPECT_EQ(error(bad.sText), line(bad.sText.size(), bad.nOffset, bad.sWhat)) << bad.sText;
  EXPECT_EQ(error(std::string("5\0", 2)), line(2, 1, sEnd));
}

TEST_F(SqlNumber, AnEmptyValueIsRefused) {
  loadCall("sqlNumber");
  EXPECT_EQ(
      error(""),
      "Func[sqlNumber] Arg[1] Len[0]: expected a number, found an empty value. Fill the field, or leave the "
      "rule out for an empty one with Case.");
  EXPECT_EQ(
      error("   "),
      "Func[sqlNumber] Arg[1] Len[3]: expected a number, found nothing but blanks. Fill the field, or leave "
      "the rule out for an empty one with Case.");
}

TEST_F(SqlNumber, OfEveryByteOnlyDigitsAreANumber) {
  loadCall("sqlNumber");
  for (int i = 0; i < 256; ++i) {
    const bool bDigit = i >= '0' && i <= '9';
    const std::string sByte(1, static_cast<char>(i));
    EXPECT_EQ(of(sByte), bDigit ? sByte : "refused") << i;
    const bool bAlsoAfter = bDigit || i == ' ';
    EXPECT_EQ(of("7" + sByte), bAlsoAfter ? "7" + sByte : "refused") << i;
  }
}

TEST_F(SqlNumber, NoAttackIsANumber) {
  loadCall("sqlNumber");
  for (const std::string &sAttack : kAttacks) {
    EXPECT_EQ(of(sAttack), "refused") << sAttack;
    EXPECT_EQ(of("1" + sAttack), "refused") << sAttack;
  }
}

TEST_F(SqlNumber, TheDatabaseReadsTheSameNumber) {
  ASSERT_EQ(dbsConnect(cs("sqlite::memory:")), 0);
  loadCall("sqlNumber");
  EXPECT_EQ(test::single("SELECT " + of("0000001050")), "1050");
  EXPECT_EQ(test::single("SELECT 100 -" + of("-5")), "105");
  EXPECT_EQ(test::single("SELECT 100 -" + of("5")), "95");
  EXPECT_EQ(test::single("SELECT 100 +" + of("+5 ") + "* 2"), "110");
  EXPECT_EQ(test::single("SELECT" + of("  -1.5e1")), "-15.0");
}

// --- Both ------------------------------------------------------------------------------------------------

TEST_F(SqlFunctions, TakeOneArgument) {
  for (const std::string sFunction : {"sqlQuote(text)", "sqlNumber(number)"}) {
    const std::string sName = sFunction.substr(0, sFunction.find('('));
    for (const Args &list : {Args{}, Args{src("A"), src("B")}, Args{src("A"), src("B"), value("c")}}) {
      load({copy(func(sName, list), dst("X"))});
      from.set("A", "1").set("B", "2");
      EXPECT_EQ(run(), -1);
      EXPECT_EQ(firstLine(), "Func[" + sName + "]: expected 1 argument, found " +
                                 std::to_string(list.size()) + ". Write " + sFunction + ".");
      again();
    }
  }
}

TEST_F(SqlFunctions, ArgumentsThatCannotBeResolvedAreRefused) {
  for (const std::string sName : {"sqlQuote", "sqlNumber"}) {
    load({copy(func(sName, {level()}), dst("X"))});
    EXPECT_EQ(run(), -1);
    ASSERT_GE(test::logTexts().size(), 3U);
    EXPECT_EQ(test::logTexts()[0], "No Defined Arg Type [2] err!!");
    EXPECT_EQ(test::logTexts()[1],
              "Func[" + sName +
                  "] Arg[1]: expected a value, found none. The lines before say why it was "
                  "not to be had.");
    EXPECT_EQ(test::logTexts()[2], "Do Func[" + sName + "] err!!");
    again();
  }
}

TEST_F(SqlFunctions, ALoopIsNoArgument) {
  load({copy(func("sqlQuote", {src("Items")}), dst("X"))});
  ASSERT_EQ(run(), 0);
  EXPECT_EQ(to.get("X"), "''") << "without repetitions its slot is empty";
  from.add("Items").set("Code", "c");
  EXPECT_EQ(run(), -1);
  EXPECT_EQ(
      firstLine(),
      "Func[sqlQuote] Arg[1]: expected a value, found a loop. Take a field of its repetitions, or their "
      "number with LoopGetNum.");
}

TEST_F(SqlFunctions, TakeConstantsCountsAndResults) {
  load({copy(func("sqlQuote", {func("sqlQuote", {value("a")})}), dst("X")),
        copy(func("sqlNumber", {loopNum(src("Items"))}), dst("Y"))});
  from.add("Items");
  from.add("Items");
  ASSERT_EQ(run(), 0);
  EXPECT_EQ(to.get("X"), "'''a'''");
  EXPECT_EQ(to.get("Y"), "2");
}

TEST_F(SqlFunctions, ErrorsNeverShowTheValue) {
  for (const std::string sName : {"sqlQuote", "sqlNumber"}) {
    loadCall(sName);
    from.set("A", std::string("4111secret\0", 11));
    EXPECT_EQ(run(), -1);
    for (const std::string &sLine : test::logTexts(0)) {
      EXPECT_EQ(sLine.find("4111"), std::string::npos) << sLine;
      EXPECT_EQ(sLine.find("secret"), std::string::npos) << sLine;
    }
    again();
  }
}

TEST_F(SqlFunctions, AreThereAgainAfterARestart) {
  for (int i = 0; i < 3; ++i) {
    loadCall("sqlQuote");
    EXPECT_EQ(of("a"), "'a'");
    again();
  }
}

}  // namespace

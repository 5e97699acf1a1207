// Regular expressions: their limits, and the patterns that are kept.
#include "std_config.h"

namespace {

using namespace test::xml;

// With the interpreter and with machine code.
class StdRegex : public test::StdTest, public testing::WithParamInterface<bool> {
 protected:
  void loadCall(const std::string &sFunction, size_t nArguments, const std::string &sAttributes = "") {
    plugAttributes(sAttributes + (GetParam() ? " nRegexJit='1'" : ""));
    load({callRule(sFunction, nArguments)});
  }
  std::string of(const std::string &sText, const std::string &sPattern, const std::string &sMore = "") {
    from.set("A", sText).set("B", sPattern).set("C", sMore);
    return run() == 0 ? to.get("X") : "refused";
  }
  static std::string firstLine() { return test::logTexts().empty() ? "no line" : test::logTexts()[0]; }
};

TEST_P(StdRegex, PatternsThatGoOnAndOnEndAtTheSteps) {
  loadCall("regexMatch", 2);
  const std::string sText = std::string(5000, 'a') + "X";
  for (const std::string sPattern : {"^(a+)+$", "(a*)*[bc]", "(a|aa)+$", "(?:a?){40}a{40}X{2}",
                                     "(.*)(.*)(.*)(.*)[^aX]", "^(([a-z])+.)+[A-Z]([a-z])+$"}) {
    EXPECT_EQ(of(sText, sPattern), "refused") << sPattern;
    EXPECT_NE(firstLine().find("Arg[1] Len[5001]: expected a match "), std::string::npos) << firstLine();
  }
}

TEST_P(StdRegex, StepsAreThoseOfAllStartingPoints) {
  loadCall("regexMatch", 2, "nRegexSteps='1000'");
  const std::string sPattern = "(?=(a))\\1\\d";  // a few steps from every "a"
  EXPECT_EQ(of(std::string(50, 'a'), sPattern), "0");
  EXPECT_EQ(of(std::string(500, 'a') + "1", sPattern), "refused");
  EXPECT_EQ(firstLine(),
            "Func[regexMatch] Arg[1] Len[501]: expected a match in at most 1000 steps, found more. Let no "
            "repetition "
            "stand inside another one of the same characters, or raise nRegexSteps of the plug-in.");
}

TEST_P(StdRegex, StepsAreThoseOfAllMatchesThatAreReplaced) {
  loadCall("regexReplace", 3, "nRegexSteps='1000'");
  EXPECT_EQ(of(std::string(100, 'a'), "a", "b"), std::string(100, 'b'));
  EXPECT_EQ(of(std::string(2000, 'a'), "a", "b"), "refused");
  EXPECT_NE(firstLine().find("expected a match in at most 1000 steps"), std::string::npos) << firstLine();
}

TEST_P(StdRegex, StepsAreCountedAnewInEveryCall) {
  loadCall("regexMatch", 2, "nRegexSteps='100'");
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(of("abc", "^a.c$"), "1");
}

std::string times(size_t n, const std::string &sPart) {
  std::string sAll;
  while (n-- > 0) sAll += sPart;
  return sAll;
}

TEST_P(StdRegex, AnItemThatRunsOverManyCharactersIsManySteps) {
  loadCall("regexMatch", 2);
  const std::string sNotQuite = std::string(29999, 'a') + "b";
  const std::string sOften = std::string(19999, 'a') + "c";
  std::string sClass;
  for (char c = '\x80'; c < '\xc0'; ++c) sClass += std::string("\xc4") + c + "\xc6" + c;
  const struct {
    std::string sText;
    std::string sPattern;
  } cases[] = {
      {std::string(65535, ' ') + "x", " +$"},
      {std::string(65536, '1'), "\\d+[-/]\\d+"},
      {std::string(65536, '1'), "\\d+[ab]|\\d+[cd]|\\d+[ef]|\\d+[gh]"},
      {sNotQuite + sNotQuite, "a{30000}"},
      {sNotQuite + sNotQuite, "a{30000,}+1|a{30000}2"},
      {std::string(65536, 'a'), "(?<=ba{30000})a"},
      {"a" + sOften + sOften + sOften, "^(a{20000}).*?\\1"},
      {"a" + sOften + sOften + sOften, "^(?<first>a{20000}).*?(?P=first)"},
      {times(32768, "\xc7\xa4"), "[" + sClass + "Ǥ]+x|y"},
  };
  for (const auto &c : cases) {
    EXPECT_EQ(of(c.sText, c.sPattern), "refused") << c.sPattern;
    EXPECT_NE(firstLine().find(": expected a match in at most 1000000 steps, found more."), std::string::npos)
        << firstLine();
  }
}

TEST_P(StdRegex, WhatLongTextsAreMatchedWithAsARuleIsNotTooManySteps) {
  loadCall("regexMatch", 2);
  EXPECT_EQ(of(std::string(4000, ' ') + "x", " +$"), "0");
  EXPECT_EQ(of(std::string(65535, 'a') + ";", "^.*;$"), "1");
  EXPECT_EQ(of(times(4096, "123456789012345a"), "\\d{16}"), "0");
  EXPECT_EQ(of(times(9000, "name=1;"), "(\\w+)=(\\d+);\\1=\\2;$"), "1");
  EXPECT_EQ(of(times(10000, "abcde "), "\\x{10330}|\\p{Lu}{3}|\\g{1}(x)"), "0");
  EXPECT_EQ(of(times(13000, "a,b;"), "(?<=[,;]|a|b)x"), "0");
}

TEST_P(StdRegex, GroupsThatAreWrittenOverAndOverAreManySteps) {
  loadCall("regexReplace", 3);
  EXPECT_EQ(of(std::string(3000, 'a'), "(?=(a{1000}))a", times(512, "$1")), "refused");
  EXPECT_NE(firstLine().find(": expected a match in at most 1000000 steps, found more."), std::string::npos)
      << firstLine();
  EXPECT_EQ(of(times(9000, "a=1;"), "(\\w+)=(\\d+);", "$2=$1;"), times(9000, "1=a;"));
  EXPECT_EQ(of(std::string(65536, 'a'), "^.*$", "$0$0$0$$").size(), 3 * 65536U + 1);
}

TEST_P(StdRegex, MemoryForGoingBackIsLimited) {
  loadCall("regexMatch", 2, "nRegexMemory='64' nRegexSteps='100000000'");
  EXPECT_EQ(of(std::string(50000, 'a'), "^(?:(a)|(b))*$"), "refused");
  EXPECT_NE(firstLine().find("expected a match with at most 64 KiB of memory, found more"), std::string::npos)
      << firstLine();
}

TEST_P(StdRegex, TextsAndPatternsAreNoLongerThanTheyMayBe) {
  loadCall("regexMatch", 2, "nRegexText='10' nRegexPattern='5'");
  EXPECT_EQ(of(std::string(10, 'a'), "a"), "1");
  EXPECT_EQ(of(std::string(11, 'a'), "a"), "refused");
  EXPECT_EQ(firstLine(),
            "Func[regexMatch] Arg[1] Len[11]: expected a text of at most 10 bytes, found a longer one. "
            "Shorten it, or "
            "raise nRegexText of the plug-in.");
  EXPECT_EQ(of("a", "aaaaa"), "0");
  EXPECT_EQ(of("a", "aaaaaa"), "refused");
  EXPECT_EQ(
      firstLine(),
      "Func[regexMatch] Arg[2] Len[6]: expected a regular expression of at most 5 bytes, found a longer one. "
      "Shorten it, or raise nRegexPattern of the plug-in.");
  again();
  loadCall("regexReplace", 3, "nRegexPattern='5'");
  EXPECT_EQ(of("a", "a", "12345"), "12345");
  EXPECT_EQ(of("a", "a", "123456"), "refused");
  EXPECT_EQ(
      firstLine(),
      "Func[regexReplace] Arg[3] Len[6]: expected a replacement of at most 5 bytes, found a longer one. "
      "Shorten it, or raise nRegexPattern of the plug-in.");
}

TEST_P(StdRegex, APatternHasNoMoreThan99Groups) {
  loadCall("regexExtract", 3);
  std::string sPattern;
  for (int i = 0; i < 99; ++i) sPattern += "()";
  EXPECT_EQ(of("a", sPattern + "a", "99"), "");
  EXPECT_EQ(of("a", sPattern + "(a)", "0"), "refused");
  EXPECT_NE(firstLine().find("found one with an error: more than 99 groups"), std::string::npos)
      << firstLine();
}

TEST_P(StdRegex, AResultOfAnyLengthComesWhole) {
  loadCall("regexReplace", 3, "nMaxResult='20000'");
  for (const size_t n : {1U, 511U, 512U, 513U, 1023U, 1024U, 10000U}) {
    EXPECT_EQ(of(std::string(n, 'a'), "a", "bc").size(), 2 * n) << n;
  }
  EXPECT_EQ(of(std::string(10001, 'a'), "a", "bc"), "refused");
  EXPECT_EQ(firstLine(),
            "Func[regexReplace]: expected a result of at most 20000 bytes, found 20002 bytes. Shorten the "
            "arguments.");
  EXPECT_EQ(of("aaa", "a", ""), "");
}

TEST_P(StdRegex, MorePatternsThanAreKeptWorkAsWell) {
  loadCall("regexMatch", 2, "nRegexKept='3'");
  for (int nRound = 0; nRound < 3; ++nRound) {
    for (int i = 0; i < 10; ++i) {
      const std::string sNumber = std::to_string(i);
      EXPECT_EQ(of("x" + sNumber, "^x" + sNumber + "$"), "1");
      EXPECT_EQ(of("x", "^x" + sNumber + "$"), "0");
      EXPECT_EQ(of("x0", "^x0$"), "1") << "the one that is used most stays";
    }
  }
}

TEST_P(StdRegex, AMatchIsFoundBetweenCharactersOnly) {
  loadCall("regexReplace", 3);
  EXPECT_EQ(of("äö", "", "-"), "-ä-ö-");
  EXPECT_EQ(of("äö", ".", "x"), "xx");
  EXPECT_EQ(of("äö", "\\C", "x"), "refused") << "a byte of a character";
  EXPECT_EQ(of("\xc3", ".", "x"), "refused");
  EXPECT_EQ(of("a", "\xc3", "x"), "refused");
  EXPECT_EQ(of("a", "a", "\xc3"), "refused");
}

TEST_P(StdRegex, ADollarSignHoldsTheEndAlsoBeforeALineFeed) {
  loadCall("regexMatch", 2);
  EXPECT_EQ(of("abc", "^abc$"), "1");
  EXPECT_EQ(of("abc\n", "^abc$"), "0");
  EXPECT_EQ(of("abc\n", "^abc\\n$"), "1");
  EXPECT_EQ(of("abc\ndef", "(?m)^abc$"), "1") << "of a line, where the pattern says so";
}

TEST_P(StdRegex, APatternThatCallsItselfWithoutEndIsRefused) {
  loadCall("regexReplace", 3);
  EXPECT_EQ(of("ab", "(?R)?a", "x"), "refused");
  const bool bMachineCode = GetParam();  // which finds no place for one more call of itself
  EXPECT_EQ(firstLine().find(
                bMachineCode ? "Func[regexReplace] Arg[1] Len[2]: expected a match with at most 1024 KiB"
                             : "Func[regexReplace] Arg[2] Len[6]: expected a regular expression that this "
                               "text can be matched with, found an error: nested recursion"),
            0U)
      << firstLine();
}

TEST_P(StdRegex, ErrorsNeverShowTheText) {
  loadCall("regexReplace", 3, "nRegexSteps='5'");
  for (const std::string sPattern : {"(4111", "4111.*(secret)+x", "(4111)+secret$", "4111"}) {
    of("4111secret4111secret4111secret", sPattern, "$9");
    for (const std::string &sLine : test::logTexts(0)) {
      EXPECT_EQ(sLine.find("4111"), std::string::npos) << sLine;
      EXPECT_EQ(sLine.find("secret"), std::string::npos) << sLine;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Matchers, StdRegex, testing::Bool());

}  // namespace

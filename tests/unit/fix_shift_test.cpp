// Fields of the format `fix` that count the characters of a set with shift states: what closes a text is its own.
#include <gtest/gtest.h>

#include "fix_config.h"

using namespace test::fix;

namespace {

// Two texts of two characters and two bytes of anything, with a line feed behind them.
class Shifts : public testing::Test {
 protected:
  void start(const std::string &sSet) {
    const FormatNode text = field("A", "nLen=\"2\"");
    const FormatNode right = field("B", "nLen=\"2\" psAlign=\"right\"");
    m_config.message("M", "psUnit=\"chars\" psSeparator=\"lf\" nWhole=\"1\" psCharset=\"" + sSet + "\"",
                     {record("R", "", {text, right, field("N", "nLen=\"2\" psType=\"raw\"")})});
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  // The values come back, from the same bytes.
  static void expectBack(const std::string &sA, const std::string &sB, const std::string &sN) {
    test::clearLog();
    const Record message = create("M");
    set(message, "A", sA);
    set(message, "B", sB);
    set(message, "N", sN);
    const std::string sBytes = generate(message);
    const Record read = parse("M", sBytes);
    ASSERT_NE(read, nullptr) << told();
    EXPECT_EQ(get(read, "A") + "|" + get(read, "B") + "|" + get(read, "N"), sA + "|" + sB + "|" + sN);
    EXPECT_EQ(generate(read), sBytes);
  }

  FixConfig m_config;
};

}  // namespace

TEST_F(Shifts, TextsComeBackInEverySet) {
  for (const char *psSet : {"IBM930", "IBM939", "ISO-2022-JP", "ISO-2022-JP-3", "UTF-7", "GB18030"}) {
    SCOPED_TRACE(psSet);
    start(psSet);
    for (const char *psA : {"", "x", "xy", "日", "日本", "x日", "日x"}) {
      for (const char *psB : {"", "x", "xy", "日", "日本", "x日", "日x"}) expectBack(psA, psB, "xy");
    }
    cvtEnd();
  }
}

TEST_F(Shifts, WhatClosesATextIsNotTakenFromTheBytesBehindOneThatNeedsNone) {
  start("IBM930");
  expectBack("xy", "xy", "\x0F\x0F");
  expectBack("日本", "日本", "\x0F\x0F");
  expectBack("日本", "日本", "\x0E\x0F");
}

TEST_F(Shifts, ATextThatIsNotClosedEndsWithItsLastCharacter) {
  start("IBM930");
  const Record message = parse("M", "\x0E\x45\x62\x45\x66\x40\x62xy\n");
  ASSERT_NE(message, nullptr) << told();
  EXPECT_EQ(get(message, "A") + "|" + get(message, "B") + "|" + get(message, "N"), "日本|a|xy");
}

TEST_F(Shifts, LongTextsAreClosedToo) {
  m_config.message("M", "psCharset=\"IBM930\"",
                   {field("A", "nLen=\"1000\" psUnit=\"chars\""), field("N", "nLen=\"2\" psType=\"raw\"")});
  ASSERT_EQ(m_config.start(), 0) << told();
  std::string sBytes = "\x0E";
  for (int i = 0; i < 1000; ++i) sBytes += "\x45\x62";
  sBytes += "\x0Fxy";
  const Record message = parse("M", sBytes);
  ASSERT_NE(message, nullptr) << told();
  EXPECT_EQ(get(message, "N"), "xy");
  EXPECT_EQ(generate(message), sBytes);
}

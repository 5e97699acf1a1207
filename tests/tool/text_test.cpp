#include "text.h"

#include <gtest/gtest.h>

using namespace std::string_literals;

namespace {

std::string json(std::string_view text) {
  std::string out;
  tool::appendJsonString(out, text);
  return out;
}

std::string base64(std::string_view bytes) {
  std::string out;
  tool::appendBase64(out, bytes);
  return out;
}

}  // namespace

TEST(Text, WellFormedUtf8IsRecognised) {
  for (const std::string &text : {""s, "abc"s, "\0"s, "\x7f"s, "\xc2\x80"s, "\xdf\xbf"s, "\xe0\xa0\x80"s,
                                  "\xed\x9f\xbf"s, "\xee\x80\x80"s, "\xef\xbf\xbf"s, "\xf0\x90\x80\x80"s,
                                  "\xf4\x8f\xbf\xbf"s, "\xe4\xb8\xad\xe6\x96\x87"s}) {
    EXPECT_TRUE(tool::isUtf8(text)) << json(text);
  }
}

TEST(Text, OverlongFormsSurrogatesAndCutSequencesAreNotUtf8) {
  for (const std::string &text :
       {"\x80"s, "\xbf"s, "\xc0\x80"s, "\xc1\xbf"s, "\xc2"s, "\xc2\x7f"s, "\xc2\xc0"s, "\xe0\x9f\xbf"s,
        "\xe0\xa0"s, "\xed\xa0\x80"s, "\xf0\x8f\xbf\xbf"s, "\xf4\x90\x80\x80"s, "\xf5\x80\x80\x80"s, "\xff"s,
        "\xe4\xb8"s, "\xe4\xb8\x28"s, "abc\xf0\x90\x80"s}) {
    EXPECT_FALSE(tool::isUtf8(text)) << ::testing::PrintToString(text);
  }
}

TEST(Text, JsonStringsEscapeQuotesBackslashesAndControlCharacters) {
  EXPECT_EQ(json("a\"b\\c/"), "\"a\\\"b\\\\c/\"");
  EXPECT_EQ(json("\n\r\t\x1b\0"s), "\"\\n\\r\\t\\u001b\\u0000\"");
  EXPECT_EQ(json("\x7f\xc2\x85\xc2\xa0"), "\"\\u007f\\u0085\xc2\xa0\"");
  EXPECT_EQ(json("\xe2\x82\xac"), "\"\xe2\x82\xac\"");
}

TEST(Text, Base64IsThatOfTheStandard) {
  EXPECT_EQ(base64(""), "");
  EXPECT_EQ(base64("f"), "Zg==");
  EXPECT_EQ(base64("fo"), "Zm8=");
  EXPECT_EQ(base64("foo"), "Zm9v");
  EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
  EXPECT_EQ(base64("\xfb\xff\xfe"), "+//+");
}

TEST(Text, Base64ComesBack) {
  std::string bytes;
  for (int i = 0; i < 600; ++i) {
    EXPECT_EQ(tool::decodeBase64(base64(bytes)), bytes);
    bytes += static_cast<char>(i * 37);
  }
}

TEST(Text, WhatIsNotBase64IsRefused) {
  for (const char *text : {"Z", "Zg", "Zg=", "Zg=a", "Z===", "====", "Zm9v\n", "Zm 9", "Zm9-"}) {
    EXPECT_FALSE(tool::decodeBase64(text)) << text;
  }
}

TEST(Text, HexHasTwoDigitsAByte) {
  std::string out = "0x";
  tool::appendHex(out, "\x00\x0f\xff"s);
  EXPECT_EQ(out, "0x000fff");
}

TEST(Text, PrintableTextHoldsNoControlCharactersAndIsUtf8) {
  EXPECT_EQ(tool::printable("a\xc3\xbc\xe2\x82\xac\xf0\x9f\x98\x80\xc2\xa0\xc4\x80"),
            "a\xc3\xbc\xe2\x82\xac\xf0\x9f\x98\x80\xc2\xa0\xc4\x80");
  EXPECT_EQ(tool::printable("\x1f\x20\x7e\x7f\0"s), "\\x1f ~\\x7f\\x00");
  EXPECT_EQ(tool::printable("\xc2\x80\xc2\x9f"), "\\xc2\\x80\\xc2\\x9f");
  EXPECT_EQ(tool::printable("\x80z\x9fz\xe9z\xc2"), "\\x80z\\x9fz\\xe9z\\xc2");
}

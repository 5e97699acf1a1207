// Base64, hexadecimal digits, addresses, character sets.
#include "std_call.h"

namespace {

using test::errorOf;
using test::resultOf;

std::string bytes(size_t nCount, unsigned seed) {
  std::string s;
  for (size_t i = 0; i < nCount; ++i) {
    seed = seed * 1103515245U + 12345U;
    s += static_cast<char>(seed >> 16 & 0xFF);
  }
  return s;
}

const std::string kEveryByte = [] {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  return all;
}();

// Six bits at a time, as the table of the standard has them.
std::string base64Of(const std::string &sBytes) {
  const std::string sAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string sBits;
  for (const char c : sBytes) {
    for (int bit = 7; bit >= 0; --bit) sBits += (static_cast<unsigned char>(c) >> bit & 1) != 0 ? '1' : '0';
  }
  while (sBits.size() % 6 != 0) sBits += '0';
  std::string sText;
  for (size_t i = 0; i < sBits.size(); i += 6) sText += sAlphabet[std::stoul(sBits.substr(i, 6), nullptr, 2)];
  while (sText.size() % 4 != 0) sText += '=';
  return sText;
}

std::string forAddresses(std::string sText) {
  for (char &c : sText) c = c == '+' ? '-' : c == '/' ? '_' : c;
  return sText.substr(0, sText.find('='));
}

TEST(StdBase64, TextsOfEveryLengthComeBack) {
  for (size_t n = 0; n < 200; ++n) {
    const std::string sBytes = bytes(n, static_cast<unsigned>(n));
    const std::string sText = base64Of(sBytes);
    EXPECT_EQ(resultOf("base64Encode", {sBytes}), sText);
    EXPECT_EQ(resultOf("base64Decode", {sText}), sBytes);
    EXPECT_EQ(resultOf("base64UrlEncode", {sBytes}), forAddresses(sText));
    EXPECT_EQ(resultOf("base64UrlDecode", {forAddresses(sText)}), sBytes);
  }
  EXPECT_EQ(resultOf("base64Decode", {resultOf("base64Encode", {kEveryByte})}), kEveryByte);
  const std::string sHuge = bytes(700'000, 1);
  EXPECT_TRUE(resultOf("base64Decode", {resultOf("base64Encode", {sHuge})}) == sHuge);
}

TEST(StdBase64, OnlyTheAlphabetIsTaken) {
  const std::string sPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
  for (const char c : kEveryByte) {
    for (size_t at = 0; at < 3; ++at) {
      std::string sText = "AAAA";
      sText[at] = c;
      const bool bPlain = sPlain.find(c) != std::string::npos;
      EXPECT_EQ(resultOf("base64Decode", {sText}) != "refused", bPlain || c == '+' || c == '/') << c;
      EXPECT_EQ(resultOf("base64UrlDecode", {sText}) != "refused", bPlain || c == '-' || c == '_') << c;
      if (!bPlain && std::string("+/-_").find(c) == std::string::npos) {
        EXPECT_EQ(
            errorOf("base64Decode", {sText}).rfind("Arg[1] Len[4] Offset[" + std::to_string(at) + "]: ", 0),
            0U);
      }
    }
  }
}

// Each text has one form: what another one would say is refused.
TEST(StdBase64, BitsBehindTheLastByteAreZero) {
  const std::string sAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (size_t i = 0; i < 64; ++i) {
    const std::string sLetter(1, sAlphabet[i]);
    EXPECT_EQ(resultOf("base64Decode", {"A" + sLetter + "=="}) != "refused", i % 16 == 0) << sLetter;
    EXPECT_EQ(resultOf("base64Decode", {"AA" + sLetter + "="}) != "refused", i % 4 == 0) << sLetter;
  }
  for (const std::string sText : {"=", "==", "===", "====", "A===", "A", "AA", "AAA", "AA=A",
                                  "AAA==", "AAAA=", "AAAA====", "AA==AA==", "AAA=AAAA", "AAAA\n", " AAAA"}) {
    EXPECT_EQ(resultOf("base64Decode", {sText}), "refused") << sText;
  }
  for (const std::string sText : {"A", "AAAAA", "AA=", "AA==", "AB", "AAB"}) {
    EXPECT_EQ(resultOf("base64UrlDecode", {sText}), "refused") << sText;
  }
}

TEST(StdHex, EveryByteIsTwoDigits) {
  for (int i = 0; i < 256; ++i) {
    char s[8];
    snprintf(s, sizeof s, "%02X", static_cast<unsigned>(i));
    const std::string sByte(1, static_cast<char>(i));
    EXPECT_EQ(resultOf("hexEncode", {sByte}), s);
    EXPECT_EQ(resultOf("hexDecode", {s}), sByte);
    snprintf(s, sizeof s, "%02x", static_cast<unsigned>(i));
    EXPECT_EQ(resultOf("hexDecode", {s}), sByte);
    const bool bDigit = isxdigit(i) != 0;
    EXPECT_EQ(resultOf("hexDecode", {sByte + "0"}) != "refused", bDigit) << i;
    EXPECT_EQ(resultOf("hexDecode", {"0" + sByte}) != "refused", bDigit) << i;
  }
  EXPECT_EQ(resultOf("hexDecode", {resultOf("hexEncode", {kEveryByte})}), kEveryByte);
}

TEST(StdUrl, EveryByteComesBack) {
  const std::string sText = resultOf("urlEncode", {kEveryByte});
  EXPECT_EQ(sText.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~%"),
            std::string::npos);
  EXPECT_EQ(sText.size(), 66U + 3 * 190U);
  EXPECT_EQ(resultOf("urlDecode", {sText}), kEveryByte);
  for (const std::string sBad : {"%", "a%", "%4", "%4%41", "%GG", "%%41", "%-1"}) {
    EXPECT_EQ(resultOf("urlDecode", {sBad}), "refused") << sBad;
  }
}

TEST(StdCharset, EveryByteOfASetComesBack) {
  for (const std::string sSet : {"ISO-8859-1", "ISO-8859-15", "CP437", "IBM037", "IBM500", "KOI8-R"}) {
    const std::string sText = resultOf("fromCharset", {kEveryByte, sSet});
    EXPECT_NE(sText, "refused") << sSet;
    EXPECT_EQ(resultOf("toCharset", {sText, sSet}), kEveryByte) << sSet;
  }
  const std::string sText = "a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80";
  for (const std::string sSet : {"UTF-8", "UTF-16LE", "UTF-16BE", "UTF-32LE", "GB18030"}) {
    EXPECT_EQ(resultOf("fromCharset", {resultOf("toCharset", {sText, sSet}), sSet}), sText) << sSet;
  }
  EXPECT_EQ(resultOf("toCharset", {"", "UTF-16LE"}), "");
}

TEST(StdCharset, WhatIsNoCharacterIsRefusedWithItsOffset) {
  EXPECT_EQ(errorOf("toCharset", {"abc\xe2\x82\xac", "ISO-8859-1"}),
            "Arg[1] Len[6] Offset[3]: expected characters that the set has, found others.");
  EXPECT_EQ(errorOf("fromCharset", {"ab\xff", "UTF-8"}),
            "Arg[1] Len[3] Offset[2]: expected valid characters, found others.");
  EXPECT_EQ(errorOf("fromCharset", {"ab\xe2\x82", "UTF-8"}),
            "Arg[1] Len[4] Offset[2]: expected a whole character, found others.");
  EXPECT_EQ(resultOf("fromCharset", {"a", "UTF-16LE"}), "refused");
  EXPECT_EQ(resultOf("fromCharset", {"\x80", "ASCII"}), "refused");
}

TEST(StdCharset, OnlyNamesOfSetsAreTaken) {
  for (const std::string sSet :
       {"", "No-Such-Set", "UTF-8//IGNORE", "ISO-8859-1/", "UTF-8 ", "UTF-8!", "../UTF-8"}) {
    EXPECT_EQ(resultOf("toCharset", {"a", sSet}), "refused") << sSet;
  }
  EXPECT_EQ(resultOf("toCharset", {"a", std::string("UTF-8\0", 6)}), "refused");
  EXPECT_EQ(resultOf("toCharset", {"a", std::string(1'000'000, 'U')}), "refused");
  EXPECT_EQ(resultOf("toCharset", {"a", "uTf-8"}), "a");
  EXPECT_EQ(errorOf("toCharset", {"secret\xff", "ASCII"}).find("secret"), std::string::npos);
}

}  // namespace

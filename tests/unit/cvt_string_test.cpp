// Conversion and parsing; lists and the dictionary have tests of their own.
#include "cvt_string.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "config_tree.h"
#include "heap_use.h"
#include "log_capture.h"

namespace {

using test::cs;

class Strings : public testing::Test {
 protected:
  void SetUp() override { test::clearLog(); }
};

using Base64 = Strings;
using CodeConvert = Strings;
using ToUp = Strings;
using Antoi = Strings;
using NSplit = Strings;
using DateTime = Strings;

// --- Base64 ------------------------------------------------------------------------------------------------

struct Decoded {
  int nResult;
  int nLen;
  std::string bytes;
};

// Decodes into a buffer of exactly that capacity.
Decoded decode(const std::string &text, int nLen, int nCapacity) {
  std::vector<char> out(static_cast<size_t>(std::max(nCapacity, 1)), 'x');
  int nOut = nCapacity;
  const int nResult = cvtStrDecodeBase64(cs(text.c_str()), nLen, out.data(), &nOut);
  return {nResult, nOut, std::string(out.data(), out.size())};
}

std::string decoded(const std::string &text) {
  const int nLen = static_cast<int>(text.size());
  const Decoded result = decode(text, nLen, (nLen + 3) / 4 * 3);
  EXPECT_EQ(result.nResult, 0);
  return result.bytes.substr(0, static_cast<size_t>(result.nLen));
}

TEST_F(Base64, FourCharactersAreThreeBytes) {
  EXPECT_EQ(decoded("QUJD"), "ABC");
}
TEST_F(Base64, OneFillCharacterIsTwoBytes) {
  EXPECT_EQ(decoded("QUI="), "AB");
}
TEST_F(Base64, TwoFillCharactersAreOneByte) {
  EXPECT_EQ(decoded("QQ=="), "A");
}
TEST_F(Base64, LineEndsBetweenGroupsAreSkipped) {
  EXPECT_EQ(decoded("QUJD\r\nREVG"), "ABCDEF");
  EXPECT_EQ(decoded("\n\r\n\nQUJD\n\n\nREVG\r\n"), "ABCDEF");
}
TEST_F(Base64, ACarriageReturnAloneIsALineEnd) {
  EXPECT_EQ(decoded("QUJD\rREVG"), "ABCDEF");
  EXPECT_EQ(decoded("\rQUJDREVG"), "ABCDEF");
  EXPECT_EQ(decoded("QUJDREVG\r"), "ABCDEF");
}
TEST_F(Base64, OnlyLineEndsAreNothing) {
  EXPECT_EQ(decoded("\r\n\r\n\n"), "");
}

TEST_F(Base64, EveryCharacterOfTheAlphabetCounts) {
  std::string expected;
  for (int n = 0; n < 64; n += 4) {
    expected += static_cast<char>(n << 2 | (n + 1) >> 4);
    expected += static_cast<char>((n + 1) << 4 | (n + 2) >> 2);
    expected += static_cast<char>((n + 2) << 6 | (n + 3));
  }
  EXPECT_EQ(decoded("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"), expected);
}

TEST_F(Base64, FillCharactersMayEndAnyGroup) {
  EXPECT_EQ(decoded("QQ==QUI=QUJD"), "AABABC");
}

TEST_F(Base64, AFillCharacterInFrontCountsAsZeroAndDoesNotShorten) {
  EXPECT_EQ(decoded("=UJD"), "\1BC");
  EXPECT_EQ(decoded("Q=JD"), "@\2C");
}

TEST_F(Base64, AFillCharacterInTheThirdPlaceAloneShortensByOne) {
  EXPECT_EQ(decoded("QU=D"), "A@");
}

TEST_F(Base64, LineEndsInsideAGroupAreNotSkipped) {
  const Decoded result = decode("QU\nJDREVG...", 9, 9);  // "QU\nJ", "DREV", and what stands at "G"
  EXPECT_EQ(result.nResult, 0);
  EXPECT_EQ(result.nLen, 9);
  EXPECT_EQ(result.bytes, std::string("A@\t\r\x11\x15\x18\0\0", 9));
}

TEST_F(Base64, APartialGroupIsDecodedFromTheFourBytesThatStandThere) {
  const Decoded result = decode("QUJDREVG", 5, 6);
  EXPECT_EQ(result.nResult, 0);
  EXPECT_EQ(result.bytes.substr(0, static_cast<size_t>(result.nLen)), "ABCDEF");
}

TEST_F(Base64, APartialGroupIsNotWrittenBeyondTheCapacity) {
  const Decoded result = decode("QUJDREVG", 5, 3);
  EXPECT_EQ(result.nResult, -1);
  EXPECT_EQ(result.nLen, 3);
  EXPECT_EQ(result.bytes, "ABC");
}

TEST_F(Base64, TooSmallACapacityTouchesNothing) {
  for (const int nCapacity : {5, 1, 0, -1}) {
    const Decoded result = decode("QUJDREVG", 8, nCapacity);
    EXPECT_EQ(result.nResult, -1);
    EXPECT_EQ(result.nLen, nCapacity);
    EXPECT_EQ(result.bytes.find_first_not_of('x'), std::string::npos);
  }
}

TEST_F(Base64, TheOutputIsNotTerminated) {
  EXPECT_EQ(decode("QUJD", 4, 6).bytes, "ABCxxx");
}

TEST_F(Base64, NothingIsNothing) {
  const Decoded result = decode("", 0, 0);
  EXPECT_EQ(result.nResult, 0);
  EXPECT_EQ(result.nLen, 0);
  EXPECT_EQ(result.bytes, std::string(1, '\0'));
  EXPECT_EQ(decode("QUJD", -4, 3).nLen, 0);
}

TEST_F(Base64, OtherCharactersAreNeitherRefusedNorReported) {
  EXPECT_EQ(decoded("Q*JD").size(), 3U);
  EXPECT_EQ(decoded(std::string("\0\x80\xff~", 4)).size(), 3U);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(Base64, NullArgumentsFailInSilence) {
  char sOut[4];
  int nOut = 4;
  EXPECT_EQ(cvtStrDecodeBase64(nullptr, 4, sOut, &nOut), -1);
  EXPECT_EQ(cvtStrDecodeBase64(cs("QUJD"), 4, nullptr, &nOut), -1);
  EXPECT_EQ(cvtStrDecodeBase64(cs("QUJD"), 4, sOut, nullptr), -1);
  EXPECT_TRUE(test::logLines().empty());
}

// --- Character sets ----------------------------------------------------------------------------------------

struct Converted {
  int nResult;
  int nLen;
  std::string bytes;
};

// Converts into a buffer of exactly that capacity.
Converted convert(const char *psFrom, const char *psTo, const std::string &in, int nCapacity) {
  std::vector<char> out(static_cast<size_t>(std::max(nCapacity, 1)), 'x');
  int nOut = nCapacity;
  const int nResult =
      cvtStrCodeConvert(cs(psFrom), cs(psTo), cs(in.c_str()), static_cast<int>(in.size()), out.data(), &nOut);
  return {nResult, nOut, nResult == 0 ? std::string(out.data(), static_cast<size_t>(nOut)) : ""};
}

TEST_F(CodeConvert, Utf8BecomesGb18030AndBack) {
  const std::string utf8 = "a\xe4\xb8\xad\xf0\x90\x80\x80";  // one, three and four bytes
  const std::string gb = "a\xd6\xd0\x90\x30\x81\x30";
  char sOut[32];
  int nOut = sizeof sOut;
  EXPECT_EQ(cvtStrU2G(cs(utf8.c_str()), static_cast<int>(utf8.size()), sOut, &nOut), 0);
  EXPECT_EQ(std::string(sOut, static_cast<size_t>(nOut)), gb);
  nOut = sizeof sOut;
  EXPECT_EQ(cvtStrG2U(cs(gb.c_str()), static_cast<int>(gb.size()), sOut, &nOut), 0);
  EXPECT_EQ(std::string(sOut, static_cast<size_t>(nOut)), utf8);
}

TEST_F(CodeConvert, AnyPairOfCharacterSetsWorks) {
  EXPECT_EQ(convert("IBM037", "UTF-8", "\xc1\xf1\x5b", 8).bytes, "A1$");
  EXPECT_EQ(convert("WINDOWS-1252", "UTF-8", "\x80", 8).bytes, "\xe2\x82\xac");
}

TEST_F(CodeConvert, TheExactCapacityIsEnough) {
  const Converted result = convert("UTF-8", "GB18030", "\xe4\xb8\xad", 2);
  EXPECT_EQ(result.nResult, 0);
  EXPECT_EQ(result.bytes, "\xd6\xd0");
}

TEST_F(CodeConvert, TooSmallACapacityLeavesTheLengthUnchanged) {
  for (const int nCapacity : {3, 1, 0}) {
    const Converted result = convert("UTF-8", "GB18030", "\xe4\xb8\xad\xe4\xb8\xad", nCapacity);
    EXPECT_EQ(result.nResult, -1);
    EXPECT_EQ(result.nLen, nCapacity);
  }
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(CodeConvert, AnUnknownCharacterSetFails) {
  EXPECT_EQ(convert("NO-SUCH-SET", "UTF-8", "a", 8).nResult, -1);
  EXPECT_EQ(convert("UTF-8", "NO-SUCH-SET", "a", 8).nResult, -1);
  EXPECT_EQ(convert("UTF-8", "NO-SUCH-SET", "a", 8).nLen, 8);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(CodeConvert, InvalidAndCutInputFails) {
  EXPECT_EQ(convert("UTF-8", "GB18030", "a\xff", 8).nResult, -1);
  EXPECT_EQ(convert("UTF-8", "GB18030", "a\xe4\xb8", 8).nResult, -1);
  EXPECT_EQ(convert("UTF-8", "WINDOWS-1252", "\xe4\xb8\xad", 8).nResult, -1);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(CodeConvert, NoInputIsNoOutput) {
  const Converted result = convert("UTF-8", "GB18030", "", 8);
  EXPECT_EQ(result.nResult, 0);
  EXPECT_EQ(result.nLen, 0);
}

TEST_F(CodeConvert, NoTerminatorIsAdded) {
  char sOut[] = "xxxx";
  int nOut = 4;
  EXPECT_EQ(cvtStrU2G(cs("ab"), 2, sOut, &nOut), 0);
  EXPECT_STREQ(sOut, "abxx");
}

TEST_F(CodeConvert, NoInputNeedsNoRoom) {
  char sOut[1];
  int nOut = 0;
  EXPECT_EQ(cvtStrCodeConvert(cs("UTF-8"), cs("GB18030"), cs(""), 0, sOut, &nOut), 0);
  EXPECT_EQ(nOut, 0);
}

TEST_F(CodeConvert, LeavesNothingOfTheHeapInUse) {
  REQUIRE_HEAP_USE();
  char sOut[8];
  const auto convertOften = [&] {
    for (int i = 0; i < 1000; ++i) {
      int nOut = sizeof sOut;
      ASSERT_EQ(cvtStrCodeConvert(cs("UTF-8"), cs("GB18030"), cs("a"), 1, sOut, &nOut), 0);
    }
  };
  convertOften();
  const long before = test::heapInUse();
  convertOften();
  EXPECT_LT(test::heapInUse(), before + 10000);
}

TEST_F(CodeConvert, NegativeLengthsFail) {
  char sOut[4];
  int nOut = 4;
  EXPECT_EQ(cvtStrU2G(cs("a"), -1, sOut, &nOut), -1);
  nOut = -1;
  EXPECT_EQ(cvtStrU2G(cs("a"), 1, sOut, &nOut), -1);
}

TEST_F(CodeConvert, NullArgumentsFailInSilence) {
  char sOut[4];
  int nOut = 4;
  EXPECT_EQ(cvtStrCodeConvert(nullptr, cs("UTF-8"), cs("a"), 1, sOut, &nOut), -1);
  EXPECT_EQ(cvtStrCodeConvert(cs("UTF-8"), nullptr, cs("a"), 1, sOut, &nOut), -1);
  EXPECT_EQ(cvtStrU2G(nullptr, 1, sOut, &nOut), -1);
  EXPECT_EQ(cvtStrU2G(cs("a"), 1, nullptr, &nOut), -1);
  EXPECT_EQ(cvtStrG2U(cs("a"), 1, sOut, nullptr), -1);
  EXPECT_EQ(nOut, 4);
  EXPECT_TRUE(test::logLines().empty());
}

// A descriptor left open by a failure would exhaust the process in time.
TEST_F(CodeConvert, FailuresMayBeManyWithoutHarm) {
  for (int i = 0; i < 5000; ++i) ASSERT_EQ(convert("UTF-8", "GB18030", "\xff", 8).nResult, -1);
  EXPECT_EQ(convert("UTF-8", "GB18030", "a", 8).nResult, 0);
}

// --- Small tools -------------------------------------------------------------------------------------------

TEST_F(ToUp, OnlyAsciiLettersChange) {
  std::string text = "az`{AZ09 .\x80\xe4\xff";
  EXPECT_EQ(cvtStrToUp(text.data(), static_cast<int>(text.size())), 0);
  EXPECT_EQ(text, "AZ`{AZ09 .\x80\xe4\xff");
}

TEST_F(ToUp, OnlyTheFirstBytesChange) {
  char sText[] = "abcd";
  EXPECT_EQ(cvtStrToUp(sText, 2), 0);
  EXPECT_STREQ(sText, "ABcd");
  EXPECT_EQ(cvtStrToUp(sText, 0), 0);
  EXPECT_EQ(cvtStrToUp(sText, -1), 0);
  EXPECT_STREQ(sText, "ABcd");
  EXPECT_EQ(cvtStrToUp(nullptr, 2), 0);
}

TEST_F(Antoi, TheFirstBytesAreTheNumber) {
  char sText[] = "123456";
  EXPECT_EQ(cvtStrAntoi(sText, 3), 123);
  EXPECT_STREQ(sText, "123456");
  EXPECT_EQ(cvtStrAntoi(sText, 6), 123456);
}

TEST_F(Antoi, SpaceAndSignAreRead) {
  char sText[] = " \t-42x";
  EXPECT_EQ(cvtStrAntoi(sText, 6), -42);
  EXPECT_EQ(cvtStrAntoi(sText, 2), 0);
  char sPlus[] = "+7";
  EXPECT_EQ(cvtStrAntoi(sPlus, 2), 7);
}

TEST_F(Antoi, WithoutDigitsItIsZero) {
  char sText[] = "abc";
  EXPECT_EQ(cvtStrAntoi(sText, 3), 0);
}

TEST_F(Antoi, NoLengthOrNoBufferIsZero) {
  char sText[] = "9";
  EXPECT_EQ(cvtStrAntoi(sText, 0), 0);
  EXPECT_EQ(cvtStrAntoi(sText, -1), 0);
  EXPECT_EQ(cvtStrAntoi(nullptr, 3), 0);
  EXPECT_TRUE(test::logLines().empty());
}

struct Split {
  int nCount;
  std::vector<char *> fields;
};

Split split(std::string &line, const char *psSeparators, int nNum) {
  Split result{0, std::vector<char *>(static_cast<size_t>(std::max(nNum, 1)), nullptr)};
  result.nCount = cvtStrNSplit(result.fields.data(), line.data(), cs(psSeparators), nNum);
  return result;
}

TEST_F(NSplit, AdjacentSeparatorsGiveEmptyFieldsAndLeftOverEntriesTheSharedEmptyString) {
  std::string line = "a,,b";
  const Split result = split(line, ",", 4);
  EXPECT_EQ(result.nCount, 3);
  EXPECT_STREQ(result.fields[0], "a");
  EXPECT_STREQ(result.fields[1], "");
  EXPECT_STREQ(result.fields[2], "b");
  EXPECT_STREQ(result.fields[3], "");
  std::string other = "x";
  const Split again = split(other, ",", 3);
  EXPECT_EQ(again.fields[1], result.fields[3]);
  EXPECT_EQ(again.fields[2], result.fields[3]);
}

TEST_F(NSplit, TheLastFieldKeepsTheRest) {
  std::string line = "a,,b";
  const Split result = split(line, ",", 2);
  EXPECT_EQ(result.nCount, 2);
  EXPECT_STREQ(result.fields[0], "a");
  EXPECT_STREQ(result.fields[1], ",b");
}

TEST_F(NSplit, AnyCharacterOfTheSetSeparates) {
  std::string line = "a;b c,d";
  const Split result = split(line, ",; ", 9);
  EXPECT_EQ(result.nCount, 4);
  EXPECT_STREQ(result.fields[2], "c");
  EXPECT_STREQ(result.fields[3], "d");
}

TEST_F(NSplit, SeparatorsAtTheEndsGiveEmptyFields) {
  std::string line = ",a,";
  const Split result = split(line, ",", 3);
  EXPECT_EQ(result.nCount, 3);
  EXPECT_STREQ(result.fields[0], "");
  EXPECT_STREQ(result.fields[1], "a");
  EXPECT_STREQ(result.fields[2], "");
}

TEST_F(NSplit, WithoutASeparatorThereIsOneField) {
  std::string line = "abc";
  EXPECT_EQ(split(line, ",", 3).nCount, 1);
  EXPECT_EQ(split(line, "", 3).nCount, 1);
  std::string empty;
  EXPECT_EQ(split(empty, ",", 3).nCount, 1);
}

TEST_F(NSplit, TheFirstFieldIsSetWhateverTheNumber) {
  for (const int nNum : {1, 0, -1, INT_MIN}) {
    std::string line = "a,b";
    const Split result = split(line, ",", nNum);
    EXPECT_EQ(result.nCount, 1);
    EXPECT_EQ(result.fields[0], line.data());
    EXPECT_EQ(line, "a,b");
  }
}

TEST_F(NSplit, NullArgumentsFailInSilence) {
  char *fields[2];
  char sLine[] = "a,b";
  EXPECT_EQ(cvtStrNSplit(nullptr, sLine, cs(","), 2), -1);
  EXPECT_EQ(cvtStrNSplit(fields, nullptr, cs(","), 2), -1);
  EXPECT_EQ(cvtStrNSplit(fields, sLine, nullptr, 2), -1);
  EXPECT_STREQ(sLine, "a,b");
  EXPECT_TRUE(test::logLines().empty());
}

std::string clockText() {
  const time_t nNow = std::time(nullptr);
  char sText[32];
  std::strftime(sText, sizeof sText, "%Y%m%d%H%M%S", std::localtime(&nNow));
  return sText;
}

TEST_F(DateTime, LocalTimeIsFourteenDigitsAndATerminator) {
  const std::string before = clockText();
  char sNow[17] = "xxxxxxxxxxxxxxxx";
  cvtGetCurrentDateTime(sNow);
  const std::string after = clockText();
  EXPECT_EQ(std::strlen(sNow), 14U);
  EXPECT_EQ(sNow[15], 'x');
  EXPECT_LE(before, sNow);
  EXPECT_GE(after, sNow);
}

TEST_F(DateTime, AChangedTimeZoneCounts) {
  char sWest[15];
  char sEast[15];
  setenv("TZ", "WST+12", 1);
  cvtGetCurrentDateTime(sWest);
  setenv("TZ", "EST-12", 1);
  cvtGetCurrentDateTime(sEast);
  EXPECT_LT(std::string(sWest).substr(0, 8), std::string(sEast).substr(0, 8)) << "a day apart";
  unsetenv("TZ");
}

TEST_F(DateTime, ANullBufferIsAnErrorNotACrash) {
  cvtGetCurrentDateTime(nullptr);
  EXPECT_TRUE(test::logged(1, "[psCurrentTime] is NULL"));
}

}  // namespace

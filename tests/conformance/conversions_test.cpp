// Base64 and character sets: what a call counts as room, what it takes for a success, what it leaves out.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "config_tree.h"
#include "cvt_string.h"
#include "log_capture.h"

namespace {

using test::cs;

class Conversions : public testing::Test {
 protected:
  void SetUp() override { test::clearLog(); }
  void TearDown() override { EXPECT_TRUE(test::logLines().empty()) << "nothing here logs"; }
};

using Base64Room = Conversions;
using CharacterSets = Conversions;

struct Result {
  int nResult;
  int nLen;
  std::string bytes;  // the whole buffer, filled with "x" before
  bool operator==(const Result &) const = default;
};

void PrintTo(const Result &result, std::ostream *out) {
  *out << result.nResult << "/" << result.nLen << "/" << testing::PrintToString(result.bytes);
}

// Into a buffer that is larger than the capacity told.
Result decode(const std::string &sText, int nCapacity) {
  std::vector<char> out(12, 'x');
  int nLen = nCapacity;
  const int nResult =
      cvtStrDecodeBase64(cs(sText.c_str()), static_cast<int>(sText.size()), out.data(), &nLen);
  return {nResult, nLen, {out.data(), out.size()}};
}

Result convert(const char *psFrom, const char *psTo, const std::string &sText) {
  std::vector<char> out(12, 'x');
  int nLen = static_cast<int>(out.size());
  const int nResult = cvtStrCodeConvert(cs(psFrom), cs(psTo), cs(sText.c_str()),
                                        static_cast<int>(sText.size()), out.data(), &nLen);
  return {nResult, nLen, {out.data(), out.size()}};
}

// --- Base64 ------------------------------------------------------------------------------------------------

TEST_F(Base64Room, IsThreeBytesForEveryFourWholeOnes) {
  EXPECT_EQ(decode("QUJD\r\n\n", 3), (Result{0, 3, "ABCxxxxxxxxx"}));
  EXPECT_EQ(decode("QUJD\r\n\n", 2), (Result{-1, 2, std::string(12, 'x')}));
}

TEST_F(Base64Room, IsCountedForLineEndsAndFillCharactersToo) {
  EXPECT_EQ(decode("QUJD\r\n\r\n", 6), (Result{0, 3, "ABCxxxxxxxxx"}));
  EXPECT_EQ(decode("QUJD\r\n\r\n", 5), (Result{-1, 5, std::string(12, 'x')}));
  EXPECT_EQ(decode("QQ==", 2), (Result{-1, 2, std::string(12, 'x')}));
  EXPECT_EQ(decode("QQ==", 3).nLen, 1);
}

TEST_F(Base64Room, OfNothingIsNoneAndStillTheFirstByteIsCleared) {
  EXPECT_EQ(decode("\n\r\n", 0), (Result{0, 0, std::string(1, '\0') + std::string(11, 'x')}));
}

// --- Character sets ----------------------------------------------------------------------------------------

// The converter tells how many characters it put others in place of: that is no failure.
TEST_F(CharacterSets, ReplacedCharactersAreASuccess) {
  EXPECT_EQ(convert("UTF-8", "ASCII//TRANSLIT", "\xe2\x80\x9cq\xe2\x80\x9d"),
            (Result{0, 3, "\"q\"xxxxxxxxx"}));
}

// A character set with shifts: the call that would lead back to its first one is not made.
TEST_F(CharacterSets, ShiftedTextIsNotShiftedBack) {
  EXPECT_EQ(convert("UTF-8", "ISO-2022-JP", "\xe3\x81\x82"), (Result{0, 5, "\x1b$B$\"xxxxxxx"}));
  EXPECT_EQ(convert("UTF-8", "ISO-2022-JP",
                    "\xe3\x81\x82"
                    "a"),
            (Result{0, 9, "\x1b$B$\"\x1b(Baxxx"}));
}

TEST_F(CharacterSets, EveryCallBeginsUnshifted) {
  EXPECT_EQ(convert("ISO-2022-JP", "UTF-8", "\x1b$B$\""), (Result{0, 3, "\xe3\x81\x82xxxxxxxxx"}));
  EXPECT_EQ(convert("ISO-2022-JP", "UTF-8", "$\""), (Result{0, 2, "$\"xxxxxxxxxx"}));
}

// --- Splitting ---------------------------------------------------------------------------------------------

TEST_F(Conversions, ASplitSetsAsManyEntriesAsItIsToldTo) {
  char sMine[] = "mine";
  for (const int nNum : {0, 1, 2, 3}) {
    char sLine[] = "a,b";
    std::vector<char *> fields(5, sMine);
    EXPECT_EQ(cvtStrNSplit(fields.data(), sLine, cs(","), nNum), nNum < 2 ? 1 : 2);
    for (size_t n = 0; n < fields.size(); ++n) {
      EXPECT_EQ(fields[n] == sMine, n >= 1 && n >= static_cast<size_t>(nNum)) << nNum << " " << n;
    }
  }
}

}  // namespace

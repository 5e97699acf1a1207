// Strings: the order of checks, what a refused entry leaves, what is taken from the pool and in which order;
// and arguments at their limits.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "config_tree.h"
#include "cvt_string.h"
#include "log_capture.h"
#include "pool_use.h"

namespace {

using test::cs;
using test::logTexts;
using Texts = std::vector<std::string>;

class Strings : public testing::Test {
 protected:
  void SetUp() override { test::clearLog(); }
  void TearDown() override {
    cvtEndDict();
    cvtMemCleanUp();
  }
};

using List = Strings;
using PoolOrder = Strings;
using Limits = Strings;

int f_n1 = 1;
int f_n2 = 2;

// Function and text of every line, all of them errors of the string unit.
Texts errors() {
  Texts all;
  for (const test::LogLine &line : test::logLines()) {
    EXPECT_EQ(line.nLevel, 1);
    EXPECT_EQ(line.sModule, "$cvt2");
    EXPECT_EQ(line.sFile, "cvt_string.cpp");
    all.push_back(line.sFunction + ": " + line.sText);
  }
  test::clearLog();
  return all;
}

// --- At load ----------------------------------------------------------------------------------------------

TEST(StringsAtLoad, ThereIsNoDictionary) {
  EXPECT_EQ(gptDict, nullptr);
}

// --- Order of checks --------------------------------------------------------------------------------------

TEST_F(List, AnEntryOfNothingIsRefusedForItsKey) {
  EXPECT_EQ(cvtStrAddStringList(nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(errors(), Texts{"cvtStrAddStringList: [psString] is NULL"});
  EXPECT_EQ(cvtStrAddStringListOrder(nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(errors(), Texts{"cvtStrAddStringListOrder: [psAddName] is NULL"});
  StringList element{};
  EXPECT_EQ(locStrListAdd(nullptr, &element, nullptr, nullptr), nullptr);
  EXPECT_EQ(errors(), Texts{"locStrListAdd: [psString] is NULL"});
  EXPECT_EQ(locStrListAddOrder(nullptr, &element, nullptr, nullptr), nullptr);
  EXPECT_EQ(errors(), Texts{"locStrListAddOrder: [psAddName] is NULL"});
}

TEST_F(List, WithoutANodeNothingElseIsLookedAt) {
  EXPECT_EQ(cvtStrAddStringListMem(nullptr, nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(errors(), Texts{"cvtStrAddStringListMem: [ptMemNode] is NULL"});
  EXPECT_EQ(cvtStrAddStringListOrderMem(nullptr, nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(errors(), Texts{"cvtStrAddStringListOrderMem: [ptMemNode] is NULL"});
}

TEST_F(List, OfTwoMissingListsTheFirstIsReported) {
  EXPECT_EQ(cvtStrListAddList(nullptr, nullptr), -1);
  EXPECT_EQ(errors(), Texts{"cvtStrListAddList: [ptSrc] is NULL"});
}

// --- What a refused entry leaves --------------------------------------------------------------------------

TEST_F(List, ARefusedEntryTakesNothingFromThePool) {
  cvtStrAddStringList(nullptr, nullptr, &f_n1);
  cvtStrAddStringList(nullptr, cs("a"), nullptr);
  cvtStrAddStringListOrder(nullptr, nullptr, &f_n1);
  cvtStrAddStringListOrder(nullptr, cs("a"), nullptr);
  EXPECT_EQ(gptGlobalNode, nullptr);
  EXPECT_EQ(gptDict, nullptr);
}

TEST_F(List, ARefusedElementIsLeftAsItIs) {
  StringList other{};
  StringList element{};
  element.psString = cs("mine");
  element.ptNext = &other;
  locStrListAdd(nullptr, &element, cs("a"), nullptr);
  locStrListAddOrder(&other, &element, cs("a"), nullptr);
  EXPECT_STREQ(element.psString, "mine");
  EXPECT_EQ(static_cast<StringList *>(element.ptNext), &other);
  EXPECT_EQ(other.ptNext, nullptr);
}

TEST_F(List, AnAppendedEntryThatIsRefusedLeavesTheListAsItWas) {
  StringList *const pt = cvtStrAddStringListOrder(nullptr, cs("a"), &f_n1);
  EXPECT_EQ(cvtStrAddStringListOrder(pt, cs("b"), nullptr), nullptr);
  EXPECT_EQ(pt->ptNext, nullptr);
  EXPECT_EQ(cvtStrFindStringList(pt, cs("a")), &f_n1);
  std::free(pt->psString);
}

TEST_F(List, TheIteratorLeavesTheListAlone) {
  StringList *const ptFirst =
      cvtStrAddStringList(cvtStrAddStringList(nullptr, cs("a"), &f_n1), cs("b"), &f_n2);
  StringList *ptIter = ptFirst;
  while (ptIter != nullptr) cvtStrListNext(&ptIter);
  EXPECT_EQ(cvtStrFindStringList(ptFirst, cs("a")), &f_n1);
  EXPECT_EQ(cvtStrFindStringList(ptFirst, cs("b")), &f_n2);
}

TEST_F(List, AGivenElementOfAnOrderedListIsReturnedOrAppended) {
  StringList first{};
  StringList second{};
  second.ptNext = &first;  // what an element was linked to before is forgotten
  EXPECT_EQ(locStrListAddOrder(nullptr, &first, cs("a"), &f_n1), &first);
  EXPECT_EQ(locStrListAddOrder(&first, &second, cs("b"), &f_n2), &first);
  EXPECT_EQ(static_cast<StringList *>(first.ptNext), &second);
  EXPECT_EQ(second.ptNext, nullptr);
  EXPECT_EQ(second.ptInfo, &f_n2);
  for (StringList *const pt : {&first, &second}) std::free(pt->psString);
}

TEST_F(List, AGivenElementKeepsItsKeyByPointer) {
  StringList element{};
  char key[] = "key";
  locStrListAdd(nullptr, &element, key, &f_n1);
  EXPECT_EQ(static_cast<char *>(element.psString), key);
}

TEST_F(List, AnAppendedListIsSharedAndMayGrow) {
  StringList *const ptA = cvtStrAddStringList(nullptr, cs("a"), &f_n1);
  StringList *const ptB = cvtStrAddStringList(nullptr, cs("b"), &f_n1);
  EXPECT_EQ(cvtStrListAddList(ptA, ptB), 0);
  EXPECT_EQ(static_cast<StringList *>(ptA->ptNext), ptB);
  StringList *const ptC = cvtStrAddStringList(nullptr, cs("c"), &f_n2);
  EXPECT_EQ(cvtStrListAddList(ptB, ptC), 0);
  EXPECT_EQ(cvtStrFindStringList(ptA, cs("c")), &f_n2);
}

TEST_F(List, EveryPrintedLineComesFromThePrintingFunction) {
  cvtStrLogStringList(cvtStrAddStringList(nullptr, cs("a"), &f_n1), cs("label"));
  ASSERT_EQ(test::logLines().size(), 1U);
  const test::LogLine &line = test::logLines()[0];
  EXPECT_EQ(line.nLevel, 5);
  EXPECT_EQ(line.sModule, "$cvt2");
  EXPECT_EQ(line.sFile, "cvt_string.cpp");
  EXPECT_EQ(line.sFunction, "cvtStrLogStringList");
}

// Nobody frees it: the name of an appended entry is still there when its element is memory of another.
TEST_F(List, TheKeyOfAnAppendedEntryOutlivesThePool) {
  char *const psKey = cvtStrAddStringListOrder(nullptr, cs("key"), &f_n1)->psString;
  MemNode *const ptNode = cvtMemNewNode();
  char *const psOfNode = cvtStrAddStringListOrderMem(nullptr, cs("of the node"), &f_n1, ptNode)->psString;
  cvtEndDict();
  cvtMemReset();
  cvtMemDelNode(ptNode);
  std::memset(cvtMemMalloc(1024), 'x', 1024);
  std::memset(cvtMalloc(1023, cvtMemNewNode()), 'x', 1023);
  cvtMemCleanUp();
  EXPECT_STREQ(psKey, "key");
  EXPECT_STREQ(psOfNode, "of the node");
  for (char *const ps : {psKey, psOfNode}) std::free(ps);
}

TEST_F(List, AnEntryWithoutALabelIsStillPrinted) {
  cvtStrLogStringList(cvtStrAddStringList(nullptr, cs("a"), &f_n1), nullptr);
  EXPECT_EQ(logTexts(5), Texts{"[a] - [(null)]"});
}

// --- From the pool ----------------------------------------------------------------------------------------

TEST_F(PoolOrder, AnEntryIsItsElementThenTheDictionaryThenItsKey) {
  NEEDS_PACKED_POOL();
  const StringList *const pt = cvtStrAddStringList(nullptr, cs("key"), &f_n1);
  const char *const psBuf = gptGlobalNode->ptHeadBlock->psBuf;
  EXPECT_EQ(reinterpret_cast<const char *>(pt), psBuf);
  EXPECT_EQ(reinterpret_cast<const char *>(gptDict), psBuf + sizeof(StringList));
  EXPECT_EQ(static_cast<char *>(pt->psString), psBuf + sizeof(StringList) + sizeof(Dictionary));
  EXPECT_EQ(gptGlobalNode->ptHeadBlock->nLeft, 1024 - 24 - 808 - 4);
}

TEST_F(PoolOrder, AnAppendedEntryIsItsElementThenTheDictionaryThenItsName) {
  NEEDS_PACKED_POOL();
  const StringList *const pt = cvtStrAddStringListOrder(nullptr, cs("key"), &f_n1);
  const char *const psBuf = gptGlobalNode->ptHeadBlock->psBuf;
  EXPECT_EQ(reinterpret_cast<const char *>(pt), psBuf);
  EXPECT_EQ(reinterpret_cast<const char *>(gptDict), psBuf + sizeof(StringList));
  EXPECT_EQ(static_cast<char *>(gptDict->psBuf[0]), psBuf + sizeof(StringList) + sizeof(Dictionary));
  EXPECT_EQ(gptGlobalNode->ptHeadBlock->nLeft, 1024 - 24 - 808 - 4);
  std::free(pt->psString);
}

TEST_F(PoolOrder, AnEntryOfAKnownKeyIsItsElementOnly) {
  NEEDS_PACKED_POOL();
  cvtStrDup(cs("key"));
  const int nLeft = gptGlobalNode->ptHeadBlock->nLeft;
  cvtStrAddStringList(nullptr, cs("key"), &f_n1);
  EXPECT_EQ(gptGlobalNode->ptHeadBlock->nLeft, nLeft - 24);
}

TEST_F(PoolOrder, AnEntryOnANodeTakesElementAndKeyFromIt) {
  NEEDS_PACKED_POOL();
  MemNode *const ptNode = cvtMemNewNode();
  const StringList *const pt = cvtStrAddStringListMem(nullptr, cs("key"), &f_n1, ptNode);
  EXPECT_EQ(reinterpret_cast<const char *>(pt), ptNode->ptHeadBlock->psBuf);
  EXPECT_EQ(static_cast<char *>(pt->psString), ptNode->ptHeadBlock->psBuf + 24);
  EXPECT_EQ(ptNode->ptHeadBlock->nLeft, 1024 - 24 - 4);
}

// The copy in the node is made beside the heap copy that becomes the key.
TEST_F(PoolOrder, AnAppendedEntryOnANodeTakesAsMuch) {
  NEEDS_PACKED_POOL();
  MemNode *const ptNode = cvtMemNewNode();
  const StringList *const pt = cvtStrAddStringListOrderMem(nullptr, cs("key"), &f_n1, ptNode);
  EXPECT_EQ(reinterpret_cast<const char *>(pt), ptNode->ptHeadBlock->psBuf);
  EXPECT_EQ(ptNode->ptHeadBlock->nLeft, 1024 - 24 - 4);
  EXPECT_STREQ(ptNode->ptHeadBlock->psBuf + 24, "key");
  EXPECT_NE(static_cast<char *>(pt->psString), ptNode->ptHeadBlock->psBuf + 24);
  std::free(pt->psString);
}

// The node alone is looked at before the memory is taken.
TEST_F(PoolOrder, AnEntryOnANodeIsRefusedWithItsMemoryTaken) {
  NEEDS_PACKED_POOL();
  MemNode *const ptNode = cvtMemNewNode();
  EXPECT_EQ(cvtStrAddStringListMem(nullptr, cs("key"), nullptr, ptNode), nullptr);
  EXPECT_EQ(ptNode->ptHeadBlock->nLeft, 1024 - 24 - 4);
  EXPECT_EQ(cvtStrAddStringListOrderMem(nullptr, cs("key"), nullptr, ptNode), nullptr);
  EXPECT_EQ(ptNode->ptHeadBlock->nLeft, 1024 - 2 * (24 + 4));
}

TEST_F(PoolOrder, AKnownStringTakesNothing) {
  cvtStrDup(cs("known"));
  const int nLeft = gptGlobalNode->ptHeadBlock->nLeft;
  cvtStrDup(cs("known"));
  EXPECT_EQ(gptGlobalNode->ptHeadBlock->nLeft, nLeft);
}

// --- Limits -----------------------------------------------------------------------------------------------

TEST_F(Limits, ANumberIsReadUpToTheEndsOfItsRange) {
  std::string largest = "2147483647";
  std::string smallest = "-2147483648";
  EXPECT_EQ(cvtStrAntoi(largest.data(), 10), INT_MAX);
  EXPECT_EQ(cvtStrAntoi(smallest.data(), 11), INT_MIN);
}

TEST_F(Limits, ANumberBeyondItsRangeIsReadWithoutHarm) {
  for (std::string text : {"2147483648", "-2147483649", "99999999999999999999", "-99999999999999999999"}) {
    const std::string before = text;
    cvtStrAntoi(text.data(), static_cast<int>(text.size()));
    EXPECT_EQ(text, before);
  }
}

TEST_F(Limits, ANumberEndsAtItsLengthAlsoInsideASign) {
  char text[] = "-42";
  EXPECT_EQ(cvtStrAntoi(text, 1), 0);
  EXPECT_EQ(cvtStrAntoi(text, 2), -4);
  char zero[] = "1\0002";
  EXPECT_EQ(cvtStrAntoi(zero, 3), 1);
  EXPECT_EQ(std::memcmp(zero, "1\0002", 4), 0);
}

TEST_F(Limits, ANumberOfNoLengthIsNotWrittenTo) {
  EXPECT_EQ(cvtStrAntoi(cs("9"), 0), 0);  // these bytes are read-only
}

TEST_F(Limits, AKeyOfAMegabyteIsAKey) {
  const std::string key(1 << 20, 'k');
  const std::string other = key.substr(1);
  StringList *const pt = cvtStrAddStringList(nullptr, cs(key.c_str()), &f_n1);
  EXPECT_EQ(cvtStrFindStringList(pt, cs(key.c_str())), &f_n1);
  EXPECT_EQ(cvtStrFindStringList(pt, cs(other.c_str())), nullptr);
  EXPECT_EQ(cvtStrDupMem(cs(key.c_str()), cvtMemNewNode()), key);
}

TEST_F(Limits, AKeyIsAnyBytes) {
  StringList *pt = cvtStrAddStringList(nullptr, cs("\xff\xfe\x01"), &f_n1);
  pt = cvtStrAddStringList(pt, cs("\xd6\xd0"), &f_n2);
  EXPECT_EQ(cvtStrFindStringList(pt, cs("\xff\xfe\x01")), &f_n1);
  EXPECT_EQ(cvtStrFindStringList(pt, cs("\xd6\xd0")), &f_n2);
  EXPECT_EQ(cvtStrFindStringList(pt, cs("\xd6")), nullptr);
}

// Every start of a text in two character sets, and what a byte put into it makes of it: whole characters
// only.
TEST_F(Limits, CutAndBrokenTextIsRefusedAndLeavesTheLengthAlone) {
  const std::string utf8 = "a\xc3\xa9\xe4\xb8\xad\xf0\x90\x80\x80";
  const std::string gb = "a\xd6\xd0\x90\x30\x81\x30";
  const auto result = [](int (*convert)(char *, int, char *, int *), const std::string &in) {
    char sOut[64];
    int nOut = sizeof sOut;
    const int nResult = convert(cs(in.c_str()), static_cast<int>(in.size()), sOut, &nOut);
    EXPECT_EQ(nOut == 64, nResult == -1);
    return nResult;
  };
  const std::vector<size_t> utf8Ends = {0, 1, 3, 6, 10};
  for (size_t n = 0; n <= utf8.size(); ++n) {
    const bool bWhole = std::count(utf8Ends.begin(), utf8Ends.end(), n) != 0;
    EXPECT_EQ(result(cvtStrU2G, utf8.substr(0, n)), bWhole ? 0 : -1) << n;
  }
  const std::vector<size_t> gbEnds = {0, 1, 3, 7};
  for (size_t n = 0; n <= gb.size(); ++n) {
    const bool bWhole = std::count(gbEnds.begin(), gbEnds.end(), n) != 0;
    EXPECT_EQ(result(cvtStrG2U, gb.substr(0, n)), bWhole ? 0 : -1) << n;
  }
  // overlong, surrogate, beyond the last character, a byte of a sequence alone
  for (const char *const ps : {"\xc0\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\x80", "\xfe"})
    EXPECT_EQ(result(cvtStrU2G, ps), -1);
  for (const char *const ps : {"\xff", "\xd6\x20", "\x90\x30\x81\xff", "\x81\x30\xff\x30"})
    EXPECT_EQ(result(cvtStrG2U, ps), -1);
}

TEST_F(Limits, AZeroByteIsACharacter) {
  char sOut[8];
  int nOut = sizeof sOut;
  EXPECT_EQ(cvtStrU2G(cs("a\0b"), 3, sOut, &nOut), 0);
  EXPECT_EQ(std::string(sOut, static_cast<size_t>(nOut)), std::string("a\0b", 3));
}

TEST_F(Limits, ACharacterSetMayHaveAVeryLongName) {
  char sOut[8];
  int nOut = sizeof sOut;
  const std::string name(100000, 'X');
  EXPECT_EQ(cvtStrCodeConvert(cs("UTF-8"), cs(name.c_str()), cs("a"), 1, sOut, &nOut), -1);
  EXPECT_EQ(cvtStrCodeConvert(cs(name.c_str()), cs("UTF-8"), cs("a"), 1, sOut, &nOut), -1);
  EXPECT_EQ(nOut, 8);
}

TEST_F(Limits, AThousandSeparatorsAreAThousandAndOneFields) {
  std::string line(1000, ',');
  std::vector<char *> fields(2000);
  EXPECT_EQ(cvtStrNSplit(fields.data(), line.data(), cs(","), 2000), 1001);
  for (char *const ps : fields) EXPECT_STREQ(ps, "");
}

TEST_F(Limits, NoNegativeOrMissingLengthIsRead) {
  char sOut[4] = "xyz";
  int nOut = 3;
  EXPECT_EQ(cvtStrDecodeBase64(cs("QUJD"), INT_MIN, sOut, &nOut), 0);
  EXPECT_EQ(nOut, 0);
  nOut = INT_MIN;
  EXPECT_EQ(cvtStrDecodeBase64(cs("QUJD"), 4, sOut, &nOut), -1);
  EXPECT_EQ(nOut, INT_MIN);
  char text[] = "abc";
  EXPECT_EQ(cvtStrToUp(text, INT_MIN), 0);
  EXPECT_EQ(cvtStrAntoi(text, INT_MIN), 0);
  EXPECT_STREQ(text, "abc");
}

// A copy of the bytes and nothing behind them: a sanitizer sees who reads further.
class Exactly {
 public:
  explicit Exactly(const std::string &s) : m_nLen(static_cast<int>(s.size())), m_bytes(new char[s.size()]) {
    std::memcpy(m_bytes.get(), s.data(), s.size());
  }
  char *bytes() const { return m_bytes.get(); }
  int length() const { return m_nLen; }

 private:
  int m_nLen;
  std::unique_ptr<char[]> m_bytes;
};

TEST_F(Limits, NothingBehindTheInputIsRead) {
  for (const char *const psText : {"", "QUJD", "QUJD\n", "\r\n", "QUJD\r\nREVG\n\n"}) {
    const Exactly in(psText);
    char sOut[16];
    int nOut = sizeof sOut;
    EXPECT_EQ(cvtStrDecodeBase64(in.bytes(), in.length(), sOut, &nOut), 0);
  }
  for (const char *const psText : {"", "a", "\xe4\xb8\xad", "\xe4\xb8"}) {
    const Exactly in(psText);
    const Exactly out("12");  // room for exactly one character of two bytes
    int nOut = out.length();
    cvtStrU2G(in.bytes(), in.length(), out.bytes(), &nOut);
  }
  const Exactly letters("abc");
  cvtStrToUp(letters.bytes(), letters.length());
  EXPECT_EQ(std::string(letters.bytes(), 3), "ABC");
}

TEST_F(Limits, ALargeBase64TextIsDecoded) {
  std::string text;
  for (int i = 0; i < 100000; ++i) text += "QUJD\r\n";
  std::vector<char> out(text.size());
  int nOut = static_cast<int>(out.size());
  EXPECT_EQ(cvtStrDecodeBase64(text.data(), static_cast<int>(text.size()), out.data(), &nOut), 0);
  EXPECT_EQ(nOut, 300000);
  EXPECT_EQ(std::string(out.data(), 6), "ABCABC");
}

}  // namespace

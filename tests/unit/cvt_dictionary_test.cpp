// The interning dictionary of the string unit.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <random>
#include <string>
#include <vector>

#include "config_tree.h"
#include "cvt_string.h"
#include "log_capture.h"

namespace {

using test::cs;

class DictionaryTest : public testing::Test {
 protected:
  void SetUp() override { test::clearLog(); }
  void TearDown() override {
    cvtEndDict();
    cvtMemCleanUp();
  }
};

char *dup(const std::string &text) {
  return cvtStrDup(cs(text.c_str()));
}
std::string numbered(int n) {
  return "string " + std::to_string(n);
}

TEST_F(DictionaryTest, EqualStringsAreOnePointer) {
  std::string text = "name";
  char *const ps = dup(text);
  EXPECT_STREQ(ps, "name");
  EXPECT_NE(ps, text.data());
  text = "xxxx";
  EXPECT_STREQ(ps, "name");
  EXPECT_EQ(dup("name"), ps);
  EXPECT_NE(dup("Name"), ps);
  EXPECT_NE(dup("nam"), ps);
  EXPECT_NE(dup("names"), ps);
}

TEST_F(DictionaryTest, AnInternedStringMayBeInternedAgain) {
  char *const ps = dup("name");
  EXPECT_EQ(cvtStrDup(ps), ps);
}

TEST_F(DictionaryTest, TheEmptyStringIsInterned) {
  char *const ps = dup("");
  EXPECT_STREQ(ps, "");
  EXPECT_EQ(dup(""), ps);
  EXPECT_EQ(static_cast<char *>(gptDict->psBuf[0]), ps);
}

TEST_F(DictionaryTest, NullIsAnErrorAndLogged) {
  EXPECT_EQ(cvtStrDup(nullptr), nullptr);
  ASSERT_EQ(test::logLines().size(), 1U);
  EXPECT_EQ(test::logLines()[0].nLevel, 1);
  EXPECT_EQ(test::logLines()[0].sFunction, "cvtStrDup");
  EXPECT_EQ(test::logLines()[0].sText, "[psStr] is NULL");
  EXPECT_EQ(gptDict, nullptr);
}

TEST_F(DictionaryTest, TheFirstUseMakesIt) {
  EXPECT_EQ(gptDict, nullptr);
  char *const ps = dup("a");
  ASSERT_NE(gptDict, nullptr);
  EXPECT_EQ(static_cast<char *>(gptDict->psBuf[0]), ps);
  EXPECT_EQ(gptDict->psBuf[1], nullptr);
  EXPECT_EQ(gptDict->ptNext, nullptr);
}

TEST_F(DictionaryTest, TheHundredAndFirstStringGoesIntoASecondChunk) {
  for (int i = 0; i < 100; ++i) dup(numbered(i));
  EXPECT_EQ(gptDict->ptNext, nullptr);
  dup(numbered(99));
  EXPECT_EQ(gptDict->ptNext, nullptr) << "a known string needs no room";
  char *const ps = dup(numbered(100));
  ASSERT_NE(gptDict->ptNext, nullptr);
  EXPECT_EQ(static_cast<char *>(gptDict->ptNext->psBuf[0]), ps);
  EXPECT_EQ(gptDict->ptNext->psBuf[1], nullptr);
  EXPECT_EQ(dup(numbered(100)), ps);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(dup(numbered(i)), static_cast<char *>(gptDict->psBuf[i]));
}

TEST_F(DictionaryTest, TheChunkComesFromThePoolBeforeTheString) {
#ifdef CVT2_ALIGN_POOL
  GTEST_SKIP() << "this pool rounds its sizes: CVT2_ALIGN_POOL is set";
#endif
  const char *const ps = dup("a");
  EXPECT_EQ(ps, reinterpret_cast<const char *>(gptDict) + 808);
  EXPECT_EQ(sizeof(Dictionary), 808U);
}

TEST_F(DictionaryTest, EveryFurtherChunkComesBeforeItsStringToo) {
#ifdef CVT2_ALIGN_POOL
  GTEST_SKIP() << "this pool rounds its sizes: CVT2_ALIGN_POOL is set";
#endif
  for (int i = 0; i < 100; ++i) dup(numbered(i));
  while (gptGlobalNode->ptHeadBlock != nullptr) cvtMemMalloc(gptGlobalNode->ptHeadBlock->nLeft);
  const char *const ps = dup(numbered(100));
  EXPECT_EQ(reinterpret_cast<const char *>(gptDict->ptNext), gptGlobalNode->ptHeadBlock->psBuf);
  EXPECT_EQ(ps, reinterpret_cast<const char *>(gptDict->ptNext) + sizeof(Dictionary));
}

TEST_F(DictionaryTest, LongStringsAndAnyByteAreKept) {
  const std::string text = std::string(300000, 'x') + "\x01\x80\xff";
  EXPECT_EQ(std::string(dup(text)), text);
  EXPECT_EQ(dup(text), dup(text));
}

TEST_F(DictionaryTest, TheCopyEndsInRecycledMemoryToo) {
  for (int i = 0; i < 50; ++i) std::memset(cvtMemMalloc(1000), 'x', 1000);
  cvtMemReset();
  EXPECT_STREQ(dup("ab"), "ab");
  EXPECT_STREQ(dup(""), "");
}

TEST_F(DictionaryTest, InitAlwaysStartsANewOne) {
  EXPECT_EQ(cvtInitDict(), 0);
  const Dictionary *const ptFirst = gptDict;
  char *const ps = dup("a");
  EXPECT_EQ(cvtInitDict(), 0);
  EXPECT_NE(gptDict, ptFirst);
  EXPECT_EQ(gptDict->psBuf[0], nullptr);
  EXPECT_NE(dup("a"), ps);
  EXPECT_STREQ(ps, "a");
}

TEST_F(DictionaryTest, EndForgetsIt) {
  char *const ps = dup("a");
  EXPECT_EQ(cvtEndDict(), 0);
  EXPECT_EQ(gptDict, nullptr);
  EXPECT_NE(dup("a"), ps);
  EXPECT_EQ(cvtEndDict(), 0);
  EXPECT_EQ(cvtEndDict(), 0);
}

TEST_F(DictionaryTest, SettingTheGlobalToNullForgetsItToo) {
  char *const ps = dup("a");
  gptDict = nullptr;
  char *const psNew = dup("a");
  EXPECT_NE(psNew, ps);
  EXPECT_EQ(static_cast<char *>(gptDict->psBuf[0]), psNew);
}

TEST_F(DictionaryTest, AnEarlierDictionaryMayBePutBack) {
  std::vector<char *> strings;
  for (int i = 0; i < 150; ++i) strings.push_back(dup(numbered(i)));
  Dictionary *const ptFirst = gptDict;
  cvtInitDict();
  dup("other");
  gptDict = ptFirst;
  for (int i = 0; i < 150; ++i) EXPECT_EQ(dup(numbered(i)), strings[static_cast<size_t>(i)]);
  char *const ps = dup("other");
  EXPECT_EQ(static_cast<char *>(gptDict->ptNext->psBuf[50]), ps);
}

// A reload: the next dictionary lies where the last one lay, and its strings where the old ones lay.
void expectNothingRemembered(const Dictionary *ptOld) {
  ASSERT_EQ(gptDict, ptOld) << "the case under test is the same address";
  char *const psB = dup("b");
  char *const psA = dup("a");
  EXPECT_STREQ(psB, "b");
  EXPECT_STREQ(psA, "a");
  EXPECT_EQ(static_cast<char *>(gptDict->psBuf[0]), psB);
  EXPECT_EQ(static_cast<char *>(gptDict->psBuf[1]), psA);
}

TEST_F(DictionaryTest, AfterAResetADictionaryAtTheSameAddressIsNew) {
  cvtInitDict();
  const Dictionary *const ptOld = gptDict;
  dup("a");
  dup("b");
  cvtEndDict();
  cvtMemReset();
  cvtInitDict();
  expectNothingRemembered(ptOld);
}

TEST_F(DictionaryTest, AfterAResetWithoutAnEndItIsNewToo) {
  cvtInitDict();
  const Dictionary *const ptOld = gptDict;
  dup("a");
  cvtMemReset();
  cvtInitDict();
  expectNothingRemembered(ptOld);
}

TEST_F(DictionaryTest, AfterAResetAndANullGlobalItIsNewToo) {
  dup("a");
  const Dictionary *const ptOld = gptDict;
  gptDict = nullptr;
  cvtMemReset();
  dup("b");
  EXPECT_EQ(gptDict, ptOld);
  EXPECT_STREQ(gptDict->psBuf[0], "b");
  EXPECT_EQ(gptDict->psBuf[1], nullptr);
}

TEST_F(DictionaryTest, AfterACleanUpItStartsAfresh) {
  dup("a");
  cvtEndDict();
  cvtMemCleanUp();
  EXPECT_STREQ(dup("a"), "a");
  EXPECT_EQ(dup("a"), static_cast<char *>(gptDict->psBuf[0]));
}

// What a walk over all slots answers: the string, or the slot where a new one has to go.
struct Place {
  char *psKnown;
  int nSlot;
};

Place walk(const std::string &text) {
  int nSlot = 0;
  for (const Dictionary *pt = gptDict; pt != nullptr; pt = pt->ptNext) {
    for (int i = 0; i < 100; ++i, ++nSlot) {
      char *const ps = pt->psBuf[i];
      if (ps == nullptr) return {nullptr, nSlot};
      if (text == ps) return {ps, nSlot};
    }
  }
  return {nullptr, nSlot};
}

char *atSlot(int nSlot) {
  const Dictionary *pt = gptDict;
  for (; nSlot >= 100; nSlot -= 100) pt = pt->ptNext;
  return pt->psBuf[nSlot];
}

TEST_F(DictionaryTest, AnswersAreThoseOfAWalk) {
  for (unsigned nSeed = 1; nSeed <= 5; ++nSeed) {
    std::mt19937 random(nSeed);
    for (int nStep = 0; nStep < 4000; ++nStep) {
      const auto nWhat = random() % 1000;
      if (nWhat == 0) gptDict = nullptr;
      if (nWhat == 1) cvtInitDict();
      if (nWhat == 2) {
        cvtEndDict();
        cvtMemReset();
      }
      const std::string text(random() % 3, static_cast<char>('a' + random() % 3));
      const std::string full = text + std::to_string(random() % 400);
      const Place place = walk(full);
      char *const ps = dup(full);
      ASSERT_EQ(full, ps);
      if (place.psKnown != nullptr) {
        ASSERT_EQ(ps, place.psKnown);
      }
      ASSERT_EQ(atSlot(place.nSlot), ps) << "seed " << nSeed << " step " << nStep;
    }
  }
}

// Processor time, the best of three.
double seconds(int nCount) {
  double dBest = 1e9;
  for (int nRound = 0; nRound < 3; ++nRound) {
    cvtEndDict();
    cvtMemReset();
    const std::clock_t start = std::clock();
    for (int i = 0; i < nCount; ++i) dup(numbered(i));
    dBest = std::min(dBest, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
  }
  return dBest;
}

// Twenty times the strings. A walk would take four hundred times as long, and far more than the two seconds
// that are there for caches that the small dictionary fits and the large one does not.
TEST_F(DictionaryTest, DistinctStringsTakeTimeInProportion) {
  const double dSmall = seconds(10000);
  const double dLarge = seconds(200000);
  EXPECT_LT(dLarge, 30 * dSmall + 2);
}

}  // namespace

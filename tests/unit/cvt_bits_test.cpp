// The set of small numbers against the standard library's.
#include "cvt_bits.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace {

using cvt::Bits;

size_t nextOf(const std::set<size_t> &set, size_t n) {
  const auto it = set.lower_bound(n);
  return it == set.end() ? Bits::kNone : *it;
}

TEST(Bits, AnEmptySetHasNoNext) {
  Bits bits;
  EXPECT_EQ(bits.next(0), Bits::kNone);
  bits.reserve(1);
  EXPECT_EQ(bits.next(0), Bits::kNone);
  EXPECT_EQ(bits.next(Bits::kNone), Bits::kNone);
}

TEST(Bits, ANumberMayBeInsertedAndErasedTwice) {
  Bits bits;
  bits.reserve(200);
  bits.insert(130);
  bits.insert(130);
  EXPECT_EQ(bits.next(0), 130U);
  EXPECT_EQ(bits.next(130), 130U);
  EXPECT_EQ(bits.next(131), Bits::kNone);
  bits.erase(130);
  bits.erase(130);
  EXPECT_EQ(bits.next(0), Bits::kNone);
}

TEST(Bits, MoreRoomKeepsTheSet) {
  Bits bits;
  bits.reserve(10);
  bits.insert(9);
  bits.reserve(1000000);
  bits.insert(999999);
  EXPECT_EQ(bits.next(0), 9U);
  EXPECT_EQ(bits.next(10), 999999U);
}

TEST(Bits, ClearingForgetsTheNumbersAndTheRoom) {
  Bits bits;
  bits.reserve(100);
  bits.insert(50);
  bits.clear();
  bits.reserve(100);
  EXPECT_EQ(bits.next(0), Bits::kNone);
}

// Sparse and dense, so that words of each level are empty, full and between.
TEST(Bits, IsTheSetOfTheStandardLibrary) {
  for (const size_t nEnd : {64U, 65U, 5000U, 300000U}) {
    std::mt19937 random(1);
    Bits bits;
    std::set<size_t> set;
    bits.reserve(nEnd);
    for (int nStep = 0; nStep < 20000; ++nStep) {
      const size_t n = random() % nEnd;
      if (nStep / 3000 % 2 == 0) {
        bits.insert(n);
        set.insert(n);
      } else {
        const size_t nGone = set.empty() ? n : nextOf(set, n) == Bits::kNone ? *set.begin() : nextOf(set, n);
        bits.erase(nGone);
        set.erase(nGone);
      }
      const size_t nFrom = random() % nEnd;
      ASSERT_EQ(bits.next(nFrom), nextOf(set, nFrom)) << nEnd << " step " << nStep;
    }
  }
}

}  // namespace

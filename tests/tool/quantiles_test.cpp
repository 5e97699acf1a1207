#include "quantiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

using tool::Quantiles;

namespace {

constexpr uint64_t kMost = std::numeric_limits<uint64_t>::max();

Quantiles of(const std::vector<uint64_t> &values) {
  Quantiles quantiles;
  for (const uint64_t value : values) quantiles.add(value);
  return quantiles;
}

}  // namespace

TEST(Quantiles, NothingHasNone) {
  const Quantiles none;
  EXPECT_EQ(none.count(), 0u);
  EXPECT_EQ(none.percentile(50), 0u);
  EXPECT_EQ(none.max(), 0u);
  EXPECT_EQ(none.mean(), 0);
}

TEST(Quantiles, OneValueIsAllOfThem) {
  for (const uint64_t value : {uint64_t{0}, uint64_t{7}, uint64_t{255}, uint64_t{1000003}, kMost}) {
    const Quantiles one = of({value});
    for (const uint64_t percent : {0U, 1U, 50U, 99U, 100U}) EXPECT_EQ(one.percentile(percent), value);
  }
}

TEST(Quantiles, AreTheSmallestValuesThatSoManyDoNotExceed) {
  std::vector<uint64_t> values;
  for (uint64_t i = 200; i > 0; --i) values.push_back(i);
  EXPECT_EQ(of(values).percentile(0), 1u);
  EXPECT_EQ(of(values).percentile(1), 2u);
  EXPECT_EQ(of(values).percentile(50), 100u);
  EXPECT_EQ(of(values).percentile(99), 198u);
  EXPECT_EQ(of(values).percentile(100), 200u);
  values.push_back(201);  // of 201 values, 50 in a hundred are 100 and a half
  EXPECT_EQ(of(values).percentile(50), 101u);
}

TEST(Quantiles, OneSlowMessageInAHundredIsNotTheP99ButTheMaximum) {
  std::vector<uint64_t> values(99, 10);
  values.push_back(5000000);
  EXPECT_EQ(of(values).percentile(99), 10u);
  EXPECT_EQ(of(values).max(), 5000000u);
  values.push_back(5000000);
  EXPECT_EQ(of(values).percentile(99), 5000000u);
}

TEST(Quantiles, CountSumAndMeanAreExact) {
  const Quantiles some = of({1000001, 1000002, 1000006});
  EXPECT_EQ(some.count(), 3u);
  EXPECT_EQ(some.sum(), 3000009u);
  EXPECT_EQ(some.mean(), 1000003);
}

// Against sorted values, of every length in bits.
TEST(Quantiles, AreNeverTooSmallAndAtMostOnePartIn128TooLarge) {
  std::mt19937_64 random(1);
  std::vector<uint64_t> values;
  for (int bits = 1; bits <= 64; ++bits) {
    for (int i = 0; i < 50; ++i) values.push_back(random() >> (64 - bits));
  }
  const Quantiles quantiles = of(values);
  std::sort(values.begin(), values.end());
  for (uint64_t percent = 1; percent <= 100; ++percent) {
    const uint64_t exact = values[percent * values.size() / 100 - 1];
    const uint64_t found = quantiles.percentile(percent);
    EXPECT_GE(found, exact) << percent;
    EXPECT_LE(found - exact, exact / 128) << percent;
  }
}

TEST(Quantiles, EndsOfPlacesStayApart) {
  for (int bits = 8; bits < 64; ++bits) {
    const uint64_t power = uint64_t{1} << bits;
    const Quantiles both = of({power - 1, power});
    EXPECT_EQ(both.percentile(50), power - 1);
    EXPECT_EQ(both.percentile(100), power);
  }
}

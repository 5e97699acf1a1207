// The search for marks: blocks, tails, and both ways to look at a block.
#include "csv/scan.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using cvt::csv::bitsPortable;
using cvt::csv::kBlock;
using cvt::csv::Marks;
using cvt::csv::Scanner;

Marks marks(const std::string &sBytes) {
  Marks all;
  for (const char c : sBytes) all.add(c);
  return all;
}

std::string noise(std::mt19937 &random, size_t n) {
  std::string s(n, 'x');
  for (char &c : s) {
    const unsigned u = random() % 64;
    c = u < 4   ? ",\"\r\n"[u]
        : u < 6 ? '\xC3'
        : u < 8 ? static_cast<char>(',' + 0x80)
                : static_cast<char>('a' + u % 26);
  }
  return s;
}

TEST(CsvScan, FindsWhatALookAtEveryByteFinds) {
  std::mt19937 random(1);
  for (const char *const psMarks : {",", ",\"\r\n", ",\"\r\n/", ",;:\"\r\n/{"}) {
    const Marks all = marks(psMarks);
    for (size_t n = 0; n < 300; ++n) {
      const std::vector<char> text = [&] {
        const std::string s = noise(random, n);
        return std::vector<char>(s.begin(), s.end());
      }();
      const char *const psEnd = text.data() + text.size();
      Scanner scanner(all, psEnd);
      size_t nFound = 0;
      for (const char *ps = text.data(); (ps = scanner.find(ps)) != psEnd; ++ps) {
        while (!all.has(text[nFound])) ++nFound;
        ASSERT_EQ(ps, text.data() + nFound);
        ++nFound;
      }
      for (; nFound < n; ++nFound) ASSERT_FALSE(all.has(text[nFound]));
      bool bHigh = false;
      for (const char c : text) bHigh = bHigh || static_cast<unsigned char>(c) >= 0x80;
      ASSERT_EQ(scanner.high(), bHigh);
    }
  }
}

TEST(CsvScan, GoesOnAnywhere) {
  const Marks all = marks(",");
  const std::string s = std::string(100, 'x') + "," + std::string(30, ',') + std::string(100, 'x') + ",";
  const char *const psEnd = s.data() + s.size();
  for (size_t nFirst = 0; nFirst < s.size(); ++nFirst) {
    for (size_t nSecond = nFirst; nSecond < s.size(); nSecond += 7) {
      Scanner scanner(all, psEnd);
      EXPECT_EQ(scanner.find(s.data() + nFirst), s.data() + s.find(',', nFirst));
      ASSERT_EQ(scanner.find(s.data() + nSecond), s.data() + s.find(',', nSecond));
    }
  }
}

TEST(CsvScan, ABlockWithoutWideInstructionsIsTheSame) {
  std::mt19937 random(2);
  const Marks all = marks(",\"\r\n/");
  for (int i = 0; i < 2000; ++i) {
    std::string s(kBlock, '\0');
    for (char &c : s) c = static_cast<char>(random());
    s.replace(random() % 40, 8, noise(random, 8));
    const auto bits = bitsPortable(all, s.data());
    for (size_t k = 0; k < kBlock; ++k) {
      ASSERT_EQ((bits.marks >> k & 1) != 0, all.has(s[k])) << k;
      ASSERT_EQ((bits.high >> k & 1) != 0, static_cast<unsigned char>(s[k]) >= 0x80) << k;
    }
  }
}

TEST(CsvScan, AMarkInAValueIsSeenWhereverItStands) {
  const Marks all = marks(",\"\r\n");
  for (size_t n = 0; n < 40; ++n) {
    const std::string s(n, static_cast<char>(',' + 0x80));
    EXPECT_TRUE(all.absentIn(s));
    for (size_t k = 0; k < n; ++k) {
      std::string sMarked = s;
      sMarked[k] = '"';
      EXPECT_FALSE(all.absentIn(sMarked)) << n << " " << k;
      sMarked[k] = '#';
      EXPECT_TRUE(all.absentIn(sMarked)) << n << " " << k;
    }
  }
}

}  // namespace

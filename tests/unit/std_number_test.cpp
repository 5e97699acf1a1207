// The functions for decimal numbers, held against whole numbers and against sums as they are done on paper.
#include <algorithm>
#include <cstdint>
#include <random>

#include "std_call.h"

namespace {

using test::errorOf;
using test::resultOf;

const std::vector<std::string> kModes = {"half-up", "half-even", "half-down", "up",
                                         "down",    "ceiling",   "floor"};

// --- Whole numbers -----------------------------------------------------------------------------------------

int64_t power(int n) {
  int64_t value = 1;
  while (n-- > 0) value *= 10;
  return value;
}

// 1250 with two decimals is "12.50".
std::string textOf(int64_t value, int decimals) {
  std::string digits = std::to_string(value < 0 ? -value : value);
  const auto least = static_cast<size_t>(decimals) + 1;
  if (digits.size() < least) digits.insert(0, least - digits.size(), '0');
  if (decimals > 0) digits.insert(digits.size() - static_cast<size_t>(decimals), ".");
  return (value < 0 ? "-" : "") + digits;
}

const std::vector<int64_t> kSmall = {0,  1,  2,   3,   5,    9,    10,   11,    99,     100,  101,     999,
                                     -1, -2, -10, -25, -100, -999, 1000, 12345, -12345, 5000, 1000000, 49};

TEST(StdNumber, SmallOnesAreComputedLikeWholeNumbers) {
  for (const int64_t a : kSmall) {
    for (const int64_t b : kSmall) {
      for (int da = 0; da <= 2; ++da) {
        for (int db = 0; db <= 2; ++db) {
          const std::string sA = textOf(a, da);
          const std::string sB = textOf(b, db);
          const int most = std::max(da, db);
          const int64_t wideA = a * power(most - da);
          const int64_t wideB = b * power(most - db);
          EXPECT_EQ(resultOf("add", {sA, sB}), textOf(wideA + wideB, most)) << sA << " " << sB;
          EXPECT_EQ(resultOf("subtract", {sA, sB}), textOf(wideA - wideB, most)) << sA << " " << sB;
          EXPECT_EQ(resultOf("multiply", {sA, sB}), textOf(a * b, da + db)) << sA << " " << sB;
          EXPECT_EQ(resultOf("compare", {sA, sB}), wideA < wideB ? "-1" : wideA > wideB ? "1" : "0");
          const std::string sRest = b == 0 ? "refused" : textOf(wideA % (b == 0 ? 1 : wideB), most);
          EXPECT_EQ(resultOf("remainder", {sA, sB}), sRest) << sA << " " << sB;
        }
      }
    }
  }
}

// A fraction as a whole number, rounded as the mode says.
int64_t rounded(int64_t dividend, int64_t divisor, const std::string &sMode) {
  const bool bNegative = (dividend < 0) != (divisor < 0) && dividend != 0;
  const int64_t above = dividend < 0 ? -dividend : dividend;
  const int64_t below = divisor < 0 ? -divisor : divisor;
  const int64_t down = above / below;
  const int64_t twice = above % below * 2;
  bool bUp = false;
  if (twice != 0) {
    bUp = sMode == "up" || (sMode == "ceiling" && !bNegative) || (sMode == "floor" && bNegative) ||
          (sMode == "half-up" && twice >= below) || (sMode == "half-down" && twice > below) ||
          (sMode == "half-even" && (twice > below || (twice == below && down % 2 == 1)));
  }
  return (down + (bUp ? 1 : 0)) * (bNegative ? -1 : 1);
}

TEST(StdNumber, QuotientsAreRoundedAsTheModeSays) {
  for (int64_t a = -41; a <= 41; ++a) {
    for (const int64_t b : {1, 2, 3, 4, 7, 8, 16, 25, -2, -3, -8}) {
      for (int decimals = 0; decimals <= 2; ++decimals) {
        for (const std::string &sMode : kModes) {
          EXPECT_EQ(resultOf("divide", {textOf(a, 1), textOf(b, 1), std::to_string(decimals), sMode}),
                    textOf(rounded(a * power(decimals), b, sMode), decimals))
              << a << "/" << b << " " << decimals << " " << sMode;
        }
        const bool bExact = a * power(decimals) % b == 0;
        EXPECT_EQ(resultOf("divide", {textOf(a, 0), textOf(b, 0), std::to_string(decimals)}) != "refused",
                  bExact);
      }
    }
  }
}

TEST(StdNumber, ANumberIsRoundedLikeAQuotient) {
  for (int64_t a = -1210; a <= 1210; a += a % 5 == 0 ? 1 : 4) {
    for (int decimals = 0; decimals <= 2; ++decimals) {
      for (const std::string &sMode : kModes) {
        EXPECT_EQ(resultOf("round", {textOf(a, 2), std::to_string(decimals), sMode}),
                  textOf(rounded(a, power(2 - decimals), sMode), decimals))
            << a << " " << decimals << " " << sMode;
      }
    }
  }
}

// --- On paper ------------------------------------------------------------------------------------------------

// Digits, the last one first.
using Digits = std::vector<int>;

Digits plus(const Digits &a, const Digits &b) {
  Digits sum;
  int carry = 0;
  for (size_t i = 0; i < std::max(a.size(), b.size()) || carry != 0; ++i) {
    carry += (i < a.size() ? a[i] : 0) + (i < b.size() ? b[i] : 0);
    sum.push_back(carry % 10);
    carry /= 10;
  }
  return sum;
}

Digits minus(const Digits &a, const Digits &b) {  // a is not the less
  Digits rest;
  int borrow = 0;
  for (size_t i = 0; i < a.size(); ++i) {
    int digit = a[i] - borrow - (i < b.size() ? b[i] : 0);
    borrow = digit < 0 ? 1 : 0;
    rest.push_back(digit + borrow * 10);
  }
  return rest;
}

Digits times(const Digits &a, const Digits &b) {
  Digits product(a.size() + b.size() + 1);
  for (size_t i = 0; i < a.size(); ++i) {
    for (size_t j = 0; j < b.size(); ++j) {
      product[i + j] += a[i] * b[j];
      product[i + j + 1] += product[i + j] / 10;
      product[i + j] %= 10;
    }
  }
  for (size_t i = 0; i + 1 < product.size(); ++i) {
    product[i + 1] += product[i] / 10;
    product[i] %= 10;
  }
  return product;
}

bool isLess(Digits a, Digits b) {
  a.resize(std::max(a.size(), b.size()));
  b.resize(a.size());
  return std::lexicographical_compare(a.rbegin(), a.rend(), b.rbegin(), b.rend());
}

struct Paper {
  bool bNegative;
  Digits digits;
  size_t nDecimals;

  std::string text() const {
    std::string s;
    for (const int digit : digits) s += static_cast<char>('0' + digit);
    while (s.size() > nDecimals + 1 && s.back() == '0') s.pop_back();
    while (s.size() <= nDecimals) s += '0';
    std::reverse(s.begin(), s.end());
    const bool bZero = s.find_first_not_of('0') == std::string::npos;
    if (nDecimals > 0) s.insert(s.size() - nDecimals, ".");
    return (bNegative && !bZero ? "-" : "") + s;
  }
  Paper wider(size_t nDecimalsWanted) const {
    Paper other = *this;
    other.digits.insert(other.digits.begin(), nDecimalsWanted - nDecimals, 0);
    other.nDecimals = nDecimalsWanted;
    return other;
  }
};

Paper sum(const Paper &x, const Paper &y) {
  const size_t nDecimals = std::max(x.nDecimals, y.nDecimals);
  const Paper a = x.wider(nDecimals);
  const Paper b = y.wider(nDecimals);
  if (a.bNegative == b.bNegative) return {a.bNegative, plus(a.digits, b.digits), nDecimals};
  if (isLess(a.digits, b.digits)) return {b.bNegative, minus(b.digits, a.digits), nDecimals};
  return {a.bNegative, minus(a.digits, b.digits), nDecimals};
}

class OnPaper : public testing::Test {
 protected:
  size_t below(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random); }

  Paper any(size_t nMostDigits) {
    Paper number = {below(2) == 0, {}, 0};
    const size_t nDigits = 1 + below(nMostDigits);
    // Runs of nines and zeros carry far.
    const size_t kind = below(4);
    for (size_t i = 0; i < nDigits; ++i) {
      number.digits.push_back(kind == 0 ? 9 : kind == 1 && below(8) != 0 ? 0 : static_cast<int>(below(10)));
    }
    number.nDecimals = below(nDigits + 1);
    return number;
  }

  std::mt19937 random{20240229};
};

TEST_F(OnPaper, LongNumbersComeOutTheSame) {
  for (int i = 0; i < 3000; ++i) {
    const Paper a = any(49);
    const Paper b = any(49);
    const std::string sA = a.text();
    const std::string sB = b.text();
    EXPECT_EQ(resultOf("add", {sA, sB}), sum(a, b).text()) << sA << " " << sB;
    EXPECT_EQ(resultOf("subtract", {sA, sB}), sum(a, {!b.bNegative, b.digits, b.nDecimals}).text());
    EXPECT_EQ(
        resultOf("multiply", {sA, sB}),
        (Paper{a.bNegative != b.bNegative, times(a.digits, b.digits), a.nDecimals + b.nDecimals}.text()));
    EXPECT_EQ(resultOf("compare", {sA, sA}), "0");
    EXPECT_EQ(resultOf("abs", {"-0" + resultOf("abs", {sA})}), resultOf("abs", {sA}));
  }
}

// a = quotient * b + rest, the rest is nearer to zero than b in the last place, and has the sign of a.
TEST_F(OnPaper, AQuotientTimesTheDivisorLacksLessThanTheLastPlace) {
  for (int i = 0; i < 3000; ++i) {
    const std::string sA = any(30).text();
    const std::string sB = any(20).text();
    if (resultOf("sign", {sB}) == "0") continue;
    const std::string sDecimals = std::to_string(below(12));
    const std::string sQuotient = resultOf("divide", {sA, sB, sDecimals, "down"});
    const std::string sRest = resultOf("subtract", {sA, resultOf("multiply", {sQuotient, sB})});
    const std::string sLast =
        resultOf("divide", {"1", "1" + std::string(std::stoul(sDecimals), '0'), sDecimals});
    const std::string sMost = resultOf("abs", {resultOf("multiply", {sB, sLast})});
    EXPECT_EQ(resultOf("compare", {resultOf("abs", {sRest}), sMost}), "-1") << sA << " " << sB;
    EXPECT_NE(resultOf("multiply", {resultOf("sign", {sRest}), resultOf("sign", {sA})}), "-1");
  }
}

TEST_F(OnPaper, WhatIsWrittenElsewhereIsReadAgain) {
  const std::vector<std::string> styles = {"leading-minus", "leading", "trailing-minus", "trailing"};
  for (int i = 0; i < 2000; ++i) {
    const Paper a = any(60);
    const std::string sA = a.text();
    const std::string sDecimals = std::to_string(a.nDecimals);
    const std::string &sStyle = styles[below(styles.size())];
    const std::string sWritten = resultOf("formatNumber", {sA, sDecimals, ",", ".", sStyle});
    EXPECT_EQ(resultOf("parseNumber", {sWritten, ",", "."}), sA) << sWritten;
    const std::string sImplied = resultOf("realToImplied", {sA, sDecimals, "80", sStyle});
    EXPECT_EQ(sImplied.size(), 80U);
    EXPECT_EQ(resultOf("impliedToReal", {sImplied, sDecimals}), sA) << sImplied;
  }
}

// --- Limits --------------------------------------------------------------------------------------------------

TEST(StdNumber, AHundredDigitsAreTheMost) {
  const std::string sMost(100, '9');
  const std::string sTooMany = "1" + std::string(100, '0');
  const std::string sZeros(1000, '0');
  EXPECT_EQ(resultOf("add", {sMost, "0"}), sMost);
  EXPECT_EQ(resultOf("add", {sZeros + sMost, "-" + sMost}), "0");
  EXPECT_EQ(resultOf("abs", {"0." + sMost}), "0." + sMost);
  EXPECT_EQ(errorOf("add", {"1", sTooMany}),
            "Arg[2] Len[101] Offset[100]: expected a number of at most 100 digits, found one more.");
  EXPECT_EQ(errorOf("abs", {"0.0" + sMost}),
            "Arg[1] Len[103] Offset[102]: expected a number of at most 100 digits, found one more.");
  EXPECT_EQ(errorOf("add", {sMost, "1"}),
            "Arg[2] Len[1]: expected a result of at most 100 digits, found more.");
  EXPECT_EQ(errorOf("multiply", {"1" + std::string(50, '0'), "1" + std::string(50, '0')}),
            "Arg[2] Len[51]: expected a result of at most 100 digits, found more.");
  EXPECT_EQ(errorOf("multiply", {"0." + std::string(50, '1'), "0." + std::string(51, '1')}),
            "Arg[2] Len[53]: expected a result of at most 100 digits, found more.");
  EXPECT_EQ(errorOf("divide", {sMost, "0.1", "0"}),
            "Arg[2] Len[3]: expected a result of at most 100 digits, found more.");
  EXPECT_EQ(errorOf("round", {sMost, "1"}),
            "Arg[1] Len[100]: expected a result of at most 100 digits, found more.");
  EXPECT_EQ(resultOf("divide", {"1", sMost, "100", "down"}), "0." + std::string(99, '0') + "1");
  EXPECT_EQ(resultOf("divide", {"0." + std::string(99, '0') + "1", sMost, "100", "half-up"}),
            "0." + std::string(100, '0'));
  EXPECT_EQ(resultOf("divide", {sMost, "0." + sMost, "0", "half-up"}), "refused");
}

TEST(StdNumber, ArgumentsBehindTheNumbersAreInTheirRange) {
  for (const std::string sDecimals : {"-1", "101", "2147483648", "", "x", "1.0", "99999999999999999999"}) {
    EXPECT_EQ(resultOf("round", {"1", sDecimals}), "refused") << sDecimals;
    EXPECT_EQ(resultOf("divide", {"1", "1", sDecimals}), "refused") << sDecimals;
    EXPECT_EQ(resultOf("impliedToReal", {"1", sDecimals}), "refused") << sDecimals;
  }
  EXPECT_EQ(resultOf("realToImplied", {"1", "0", "1000"}), std::string(999, '0') + "1");
  EXPECT_EQ(resultOf("realToImplied", {"1", "0", "1001"}), "refused");
  EXPECT_EQ(resultOf("realToImplied", {"1", "0", "0"}), "refused");
}

TEST(StdNumber, ManyNumbersAreOneCall) {
  std::vector<std::string> numbers(32, "0.01");
  EXPECT_EQ(resultOf("add", numbers), "0.32");
  EXPECT_EQ(resultOf("max", numbers), "0.01");
  numbers.emplace_back("1");
  EXPECT_EQ(resultOf("add", numbers), "refused");
  EXPECT_EQ(resultOf("multiply", {"1.5", "2", "-3", "0.1"}), "-0.90");
  EXPECT_EQ(resultOf("min", {"1.0", "1", "01.00"}), "1.0") << "the first of equal ones";
}

// --- What is no number -----------------------------------------------------------------------------------------

TEST(StdNumber, EveryByteButDigitsIsRefusedAndItsPlaceTold) {
  for (int i = 0; i < 256; ++i) {
    const char c = static_cast<char>(i);
    const bool bDigit = c >= '0' && c <= '9';
    const bool bAround = bDigit || c == ' ';
    const std::string sByte(1, c);
    EXPECT_EQ(resultOf("isNumber", {sByte}), bDigit ? "1" : "0") << i;
    EXPECT_EQ(resultOf("isNumber", {"7" + sByte}), bAround ? "1" : "0") << i;
    EXPECT_EQ(resultOf("isNumber", {sByte + "7"}), bAround || c == '-' || c == '+' ? "1" : "0") << i;
    EXPECT_EQ(resultOf("isNumber", {"7" + sByte + "7"}), bDigit || c == '.' ? "1" : "0") << i;
    if (!bAround) {
      const std::string sError = errorOf("abs", {"4111" + sByte});
      EXPECT_EQ(sError.rfind("Arg[1] Len[5] Offset[", 0), 0U) << sError;
      EXPECT_EQ(sError.find("4111"), std::string::npos) << sError;
    }
  }
}

TEST(StdNumber, HostileTextsEndWithAMessage) {
  const std::string sMillion(1'000'000, '9');
  EXPECT_EQ(errorOf("add", {sMillion, "1"}),
            "Arg[1] Len[1000000] Offset[100]: expected a number of at most 100 digits, found one more.");
  EXPECT_EQ(errorOf("abs", {"0." + sMillion}),
            "Arg[1] Len[1000002] Offset[102]: expected a number of at most 100 digits, found one more.");
  EXPECT_EQ(resultOf("abs", {std::string(1'000'000, '0') + "7"}), "7");
  EXPECT_EQ(resultOf("abs", {std::string(1'000'000, ' ') + "7"}), "7");
  for (const std::string sText :
       {"1e999999999", "1E+5",  "1e-999999999", "0x1F",     "NaN",       "Infinity", "-",   "+",
        ".",           "-.",    "1.",           ".5",       "--5",       "+-5",      "- 5", "1 2",
        "1,5",         "1_000", "1.2.3",        "\xd9\xa5", "7\xc2\xa0", "\t7",      "7\n"}) {
    EXPECT_EQ(resultOf("isNumber", {sText}), "0") << sText;
    EXPECT_EQ(resultOf("add", {sText, "1"}), "refused") << sText;
    EXPECT_EQ(resultOf("formatNumber", {sText, "2"}), "refused") << sText;
  }
  EXPECT_EQ(resultOf("isNumber", {std::string("7\0", 2)}), "0");
}

TEST(StdNumber, SeparatorsStandBeforeEveryThirdDigit) {
  const auto parsed = [](const std::string &sText) { return resultOf("parseNumber", {sText, ".", ","}); };
  for (const std::string sText : {"1,234", "12,345.6", "123,456,789", "1234567", "0,000,001", "-1,234.50"}) {
    std::string sPlain = sText;
    std::erase(sPlain, ',');
    EXPECT_EQ(parsed(sText), resultOf("add", {sPlain, "0"})) << sText;
  }
  for (const std::string sText : {",234", "1,23", "1,2345", "1234,567", "1,,234", "1,234,", "1,234,5",
                                  "1.234,567", "1,-234", "1, 234", "-1-", "1--", "+1-", "1+ -"}) {
    EXPECT_EQ(parsed(sText), "refused") << sText;
  }
  EXPECT_EQ(parsed("5-"), "-5");
  EXPECT_EQ(parsed("5+"), "5");
  EXPECT_EQ(parsed(" 5 "), "5");
}

}  // namespace

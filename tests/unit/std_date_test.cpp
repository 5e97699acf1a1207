// Dates and times: every day of some centuries, every letter of patterns, the clock.
#include <unistd.h>

#include <array>
#include <random>

#include "std/clock.h"
#include "std/pattern.h"
#include "std_call.h"
#include "std_config.h"

namespace {

using test::errorOf;
using test::resultOf;

// --- Every day -----------------------------------------------------------------------------------------------

// A calendar that counts on its fingers.
struct Day {
  int nYear;
  int nMonth;
  int nDay;
  int nOfYear;
  int nOfWeek;  // Monday 1

  static bool isLeap(int nYear) { return nYear % 4 == 0 && (nYear % 100 != 0 || nYear % 400 == 0); }
  int lastOfMonth() const {
    constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return kDays[static_cast<size_t>(nMonth) - 1] + (nMonth == 2 && isLeap(nYear) ? 1 : 0);
  }
  void next() {
    nOfWeek = nOfWeek % 7 + 1;
    ++nOfYear;
    if (nDay++ < lastOfMonth()) return;
    nDay = 1;
    if (nMonth++ < 12) return;
    nMonth = 1;
    nOfYear = 1;
    ++nYear;
  }
  std::string text() const {
    char s[128];
    snprintf(s, sizeof s, "%04d%02d%02d", nYear, nMonth, nDay);
    return s;
  }
};

const char *const kWeekdays[] = {"", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
const char *const kMonths[] = {"",    "Jan", "Feb", "Mar", "Apr", "May", "Jun",
                               "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

TEST(StdDate, EveryDayOfTwoCenturiesHasItsPlace) {
  Day day = {1899, 12, 31, 365, 7};
  std::string sBefore = "18991230";
  for (int n = -25568; day.nYear <= 2100; ++n, day.next()) {
    char s[128];
    snprintf(s, sizeof s, "%s, %d %s %04d, %03d", kWeekdays[day.nOfWeek], day.nDay, kMonths[day.nMonth],
             day.nYear, day.nOfYear);
    const std::string sDay = day.text();
    ASSERT_EQ(resultOf("reformatDate", {sDay, "yyyyMMdd", "EEE, d MMM yyyy, DDD"}), s);
    ASSERT_EQ(resultOf("addDays", {sBefore, "yyyyMMdd", "1"}), sDay);
    if (n % 10 == 0) {
      ASSERT_EQ(resultOf("daysBetween", {"19700101", sDay, "yyyyMMdd"}), std::to_string(n));
      ASSERT_EQ(resultOf("addDays", {"19700101", "yyyyMMdd", std::to_string(n)}), sDay);
      ASSERT_EQ(resultOf("reformatDate", {std::string(s), "EEE, d MMM yyyy, DDD", "yyyyMMdd"}), sDay);
    }
    sBefore = sDay;
  }
}

TEST(StdDate, EveryYearBeginsWhereTheOneBeforeEnds) {
  long nDays = 0;
  for (int nYear = 1; nYear <= 9999; ++nYear) {
    char s[32];
    snprintf(s, sizeof s, "%04d", nYear);
    const std::string sYear = s;
    ASSERT_EQ(resultOf("daysBetween", {"00010101", sYear + "0101", "yyyyMMdd"}), std::to_string(nDays));
    nDays += Day::isLeap(nYear) ? 366 : 365;
    ASSERT_EQ(resultOf("isDate", {sYear + "0229", "yyyyMMdd"}), Day::isLeap(nYear) ? "1" : "0") << nYear;
    ASSERT_EQ(resultOf("isDate", {sYear + "366", "yyyyDDD"}), Day::isLeap(nYear) ? "1" : "0") << nYear;
  }
  EXPECT_EQ(nDays - 1, 3652058);
  EXPECT_EQ(resultOf("addDays", {"00010101", "yyyyMMdd", "3652058"}), "99991231");
  EXPECT_EQ(resultOf("addDays", {"99991231", "yyyyMMdd", "-3652058"}), "00010101");
  EXPECT_EQ(resultOf("addDays", {"00010101", "yyyyMMdd", "-1"}), "refused");
  EXPECT_EQ(resultOf("addDays", {"00010101", "yyyyMMdd", "3652059"}), "refused");
  EXPECT_EQ(resultOf("dayOfWeek", {"00010101", "yyyyMMdd"}), "1");
}

TEST(StdDate, MonthsKeepTheDayOrEndWithTheirLast) {
  for (Day day = {2019, 12, 1, 335, 7}; day.nYear < 2022; day.next()) {
    for (int nMonths = -30; nMonths <= 30; ++nMonths) {
      const int nAll = day.nYear * 12 + day.nMonth - 1 + nMonths;
      Day wanted = {nAll / 12, nAll % 12 + 1, day.nDay, 0, 0};
      wanted.nDay = std::min(wanted.nDay, wanted.lastOfMonth());
      ASSERT_EQ(resultOf("addMonths", {day.text(), "yyyyMMdd", std::to_string(nMonths)}), wanted.text())
          << day.text() << " " << nMonths;
    }
  }
  EXPECT_EQ(resultOf("addMonths", {"00010131", "yyyyMMdd", "119987"}), "99991231");
  EXPECT_EQ(resultOf("addMonths", {"00010131", "yyyyMMdd", "119988"}), "refused");
}

TEST(StdDate, SecondsGoOverMidnight) {
  const std::string sPattern = "yyyy-MM-dd HH:mm:ss.SSS";
  EXPECT_EQ(resultOf("addSeconds", {"2024-02-28 23:59:59.500", sPattern, "86401"}),
            "2024-03-01 00:00:00.500");
  EXPECT_EQ(resultOf("addSeconds", {"2024-01-01 00:00:00.001", sPattern, "-1"}), "2023-12-31 23:59:59.001");
  EXPECT_EQ(resultOf("addSeconds", {"9999-12-31 23:59:59.999", sPattern, "1"}), "refused");
  EXPECT_EQ(resultOf("addSeconds", {"0001-01-01 00:00:00.000", sPattern, "-1"}), "refused");
  EXPECT_EQ(resultOf("addSeconds", {"2024-01-01", "yyyy-MM-dd", "-1", sPattern}), "2023-12-31 23:59:59.000");
}

TEST(StdDate, TheNearestDateIsNeverFurtherThanHalfAYear) {
  for (Day day = {2023, 1, 1, 1, 7}; day.nYear < 2025; day.next()) {
    const std::string sReference = resultOf("reformatDate", {day.text(), "yyyyMMdd", "yyyy-MM-dd"});
    for (const std::string sDay : {"0101", "0228", "0630", "0701", "1231"}) {
      const std::string sFound = resultOf("nearestDate", {sDay, "MMdd", "yyyyMMdd", sReference});
      EXPECT_EQ(sFound.substr(4), sDay);
      const int nDistance = std::stoi(resultOf("daysBetween", {day.text(), sFound, "yyyyMMdd"}));
      EXPECT_LE(std::abs(nDistance), 183) << day.text() << " " << sFound;
    }
  }
  EXPECT_EQ(resultOf("nearestDate", {"0229", "MMdd", "yyyyMMdd", "1900-02-01"}), "18960229");
  EXPECT_EQ(resultOf("nearestDate", {"1231", "MMdd", "yyyyMMdd", "0001-01-01"}), "00011231");
  EXPECT_EQ(resultOf("nearestDate", {"0101", "MMdd", "yyyyMMdd", "9999-12-31"}), "99990101");
  EXPECT_EQ(resultOf("nearestDate", {"0101", "MMdd", "yyyyMMdd", "2024-1-1"}), "refused");
}

TEST(StdDate, TheNearestDateBringsItsYearAndItsWeekday) {
  EXPECT_EQ(resultOf("nearestDate", {"20200301", "yyyyMMdd", "yyyyMMdd", "2024-03-01"}), "refused");
  EXPECT_EQ(resultOf("nearestDate", {"200301", "yyMMdd", "yyyyMMdd", "2024-03-01"}), "refused");
  EXPECT_EQ(resultOf("nearestDate", {"Mon 0301", "EEE MMdd", "EEE yyyy-MM-dd", "2024-03-01"}), "refused")
      << "it is a Friday";
  EXPECT_EQ(resultOf("nearestDate", {"EEE 0301", "'EEE' MMdd", "EEE yyyy-MM-dd", "2024-03-01"}),
            "Fri 2024-03-01");
}

// --- Patterns ------------------------------------------------------------------------------------------------

TEST(StdPattern, WhatIsWrittenIsReadAgain) {
  const std::string sAll = "yyyy-MM-dd HH:mm:ss.SSSSSSSSSxxx";
  std::mt19937 random{20240229};
  const auto below = [&](int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); };
  for (int i = 0; i < 1000; ++i) {
    char s[128];
    const int nOffset = below(2 * 23 * 60 + 1) - 23 * 60;
    snprintf(s, sizeof s, "%04d-%02d-%02d %02d:%02d:%02d.%09d%c%02d:%02d", 1970 + below(98), 1 + below(12),
             1 + below(28), below(24), below(60), below(60), below(1'000'000'000), nOffset < 0 ? '-' : '+',
             std::abs(nOffset) / 60, std::abs(nOffset) % 60);
    for (const std::string sPattern :
         {"yyyyMMddHHmmssSSSSSSSSSZ", "EEEE d MMMM yy hh:mm:ss a SSSSSSSSSXXX", "yyDDD H:mm ss.SSSSSSSSS XX",
          "SSSSSSSSS.ss:mm:h a'T'M/d/yyyyxxx", "''yyyy'yyyy'MM''dd'o''clock'HHmmssSSSSSSSSSZ"}) {
      const std::string sOther = resultOf("reformatDate", {s, sAll, sPattern});
      EXPECT_EQ(resultOf("reformatDate", {sOther, sPattern, sAll}), s) << sPattern << " " << sOther;
    }
  }
}

TEST(StdPattern, EveryLetterHasItsMeaning) {
  const auto made = [](const std::string &sPattern) {
    return resultOf("reformatDate",
                    {"0987-06-05 00:08:09.012345678-01:30", "yyyy-MM-dd HH:mm:ss.SSSSSSSSSXXX", sPattern});
  };
  const std::pair<std::string, std::string> meanings[] = {
      {"yyyy", "0987"},   {"M", "6"},
      {"MM", "06"},       {"MMM", "Jun"},
      {"MMMM", "June"},   {"d", "5"},
      {"dd", "05"},       {"DDD", "156"},
      {"EEE", "Tue"},     {"EEEE", "Tuesday"},
      {"H", "0"},         {"HH", "00"},
      {"h", "12"},        {"hh", "12"},
      {"a", "AM"},        {"H:mm", "0:08"},
      {"ss", "09"},       {"S", "0"},
      {"SSS", "012"},     {"SSSSSSSSS", "012345678"},
      {"XXX", "-01:30"},  {"XX", "-0130"},
      {"xxx", "-01:30"},  {"Z", "-0130"},
      {"'dd'", "dd"},     {"''", "'"},
      {"'''a'''", "'a'"}, {"-/.: ,_(){}[]#\xc3\xbc", "-/.: ,_(){}[]#\xc3\xbc"},
      {"", ""},
  };
  for (const auto &[sPattern, sText] : meanings) EXPECT_EQ(made(sPattern), sText) << sPattern;
  EXPECT_EQ(resultOf("reformatDate", {"12", "HH", "h a"}), "12 PM");
  EXPECT_EQ(resultOf("reformatDate", {"00", "HH", "h a"}), "12 AM");
  EXPECT_EQ(resultOf("reformatDate", {"12 am", "hh a", "HH"}), "00");
  EXPECT_EQ(resultOf("reformatDate", {"00Z", "HHXXX", "Z"}), "+0000");
}

TEST(StdPattern, OfEveryByteOnlyItsLettersAreLetters) {
  const std::string sLetters = "aHhXxyMdDESZms";
  for (int i = 1; i < 256; ++i) {
    const char c = static_cast<char>(i);
    const bool bLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    const std::string sByte(1, c);
    if (!bLetter && c != '\'') {
      EXPECT_EQ(resultOf("reformatDate", {"2024" + sByte, "yyyy" + sByte, sByte + "yyyy"}), sByte + "2024");
    } else if (bLetter && sLetters.find(c) == std::string::npos && c != 'Y') {
      EXPECT_EQ(
          errorOf("isDate", {"2024", "yyyy" + sByte}).find("Arg[2] Len[5] Offset[4]: expected a letter"), 0U)
          << c;
    }
    if (c != '\'') {
      EXPECT_EQ(resultOf("reformatDate", {sByte + "24", "'" + sByte + "'yy", "yyyy"}), "2024") << i;
    }
  }
}

TEST(StdPattern, WhatStandsBetweenNumbersKeepsThemApart) {
  EXPECT_EQ(resultOf("reformatDate", {"2024-1-2", "yyyy-M-d", "d.M.yyyy"}), "2.1.2024");
  EXPECT_EQ(resultOf("reformatDate", {"2024-01-02", "yyyy-MM-dd", "d''1'M'M"}), "2'1M1");
  EXPECT_EQ(resultOf("reformatDate", {"2024-01-02", "yyyy-MM-dd", "dMMM'1'yy"}), "2Jan124");
  EXPECT_EQ(resultOf("reformatDate", {"2024-01-02", "yyyy-MM-dd", "ddMMyyyyH"}), "020120240");
}

TEST(StdPattern, OnesThatMakeNoSenseAreRefused) {
  for (const std::string sPattern : {"yyy",
                                     "yyyyy",
                                     "y",
                                     "MMMMM",
                                     "ddd",
                                     "D",
                                     "DD",
                                     "DDDD",
                                     "E",
                                     "EE",
                                     "EEEEE",
                                     "HHH",
                                     "hhh",
                                     "aa",
                                     "m",
                                     "mmm",
                                     "s",
                                     "sss",
                                     "SSSSSSSSSS",
                                     "X",
                                     "XXXX",
                                     "x",
                                     "xx",
                                     "ZZ",
                                     "'",
                                     "'yyyy",
                                     "yyyy'",
                                     "'''",
                                     "yyyyMMddmm",
                                     "mm",
                                     "yyyymmddHHmmss",
                                     "yyyyMMyyyy",
                                     "ddMMdd",
                                     "YYYY",
                                     "DDMMYYYY",
                                     "yyyy-MM-ddTHH",
                                     "dMyyyy",
                                     "yyyyMd",
                                     "Hmm",
                                     "yyyy-MM-d1",
                                     "h'1'a",
                                     "d''HH1H"}) {
    EXPECT_EQ(resultOf("reformatDate", {"2024-01-01", "yyyy-MM-dd", sPattern}), "refused") << sPattern;
    EXPECT_EQ(resultOf("reformatDate", {"", sPattern, ""}), "refused") << sPattern;
  }
  EXPECT_EQ(errorOf("isDate", {"x", std::string(65, '-')}),
            "Arg[2] Len[65] Offset[0]: expected a pattern of at most 64 bytes, found something else. The "
            "letters of "
            "patterns are in docs/functions.md.");
  EXPECT_EQ(resultOf("isDate", {std::string(64, '-'), std::string(64, '-')}), "1");
  EXPECT_EQ(resultOf("isDate", {"x", std::string(1'000'000, 'y')}), "refused");
}

TEST(StdPattern, AFaultOfThePatternShowsWhateverTheTextIs) {
  for (const std::string sPattern : {"hh:mm", "h", "a", "DDD", "DDD MM", "yyyymmdd", "DD.MM.yyyy", "yyyy'"}) {
    for (const std::string sText : {"", "abc", "01:00", "2024"}) {
      EXPECT_EQ(errorOf("isDate", {sText, sPattern}).find("Arg[2] Len["), 0U) << sPattern << " " << sText;
    }
  }
  EXPECT_EQ(resultOf("isDate", {"abc", "hh:mm a"}), "0");
  EXPECT_EQ(resultOf("isDate", {"abc", "yyDDD"}), "0");
  EXPECT_EQ(resultOf("isDate", {"", ""}), "1");
}

TEST(StdPattern, TwoOffsetsAreRefused) {
  EXPECT_EQ(errorOf("reformatDate", {"2024-01-01 +01:00 +0200", "yyyy-MM-dd XXX Z", "yyyy-MM-dd xxx"})
                .find("Arg[2] Len[16] Offset[15]: expected one offset from UTC,"),
            0U);
  EXPECT_EQ(resultOf("reformatDate", {"12Z", "HHXXX", "HHXXxxx"}), "refused");
}

TEST(StdPattern, AWrongNumberOfALetterIsToldWithTheRightOnes) {
  const auto told = [](const std::string &sPattern) {
    const std::string sError = errorOf("isDate", {"", sPattern});
    const size_t nFrom = sError.find("expected ") + 9;
    return sError.substr(nFrom, sError.find(", found") - nFrom);
  };
  EXPECT_EQ(told("DD.MM.YYYY"), "DDD, the day of the year; dd is the day of the month");
  EXPECT_EQ(told("dd.MM.YYYY"), "yyyy, the year");
  EXPECT_EQ(told("ddd"), "dd or d, the day of the month; DDD is the day of the year");
  EXPECT_EQ(told("yyy"), "yyyy or yy, the year");
  EXPECT_EQ(told("HH:m"), "mm, the minute");
}

TEST(StdPattern, TextsThatDoNotFitAreToldWhere) {
  struct Bad {
    std::string sText;
    std::string sPattern;
    size_t nOffset;
  };
  const std::vector<Bad> all = {
      {"", "yyyy", 0},
      {"202", "yyyy", 0},
      {"0000", "yyyy", 0},
      {"20240", "yyyy", 4},
      {"-024", "yyyy", 0},
      {"2024-13", "yyyy-MM", 5},
      {"2024-00", "yyyy-MM", 5},
      {"2024/12", "yyyy-MM", 4},
      {"0431", "MMdd", 2},
      {"0230", "MMdd", 2},
      {"0100", "MMdd", 2},
      {"0132", "MMdd", 2},
      {"2023366", "yyyyDDD", 4},
      {"2024367", "yyyyDDD", 4},
      {"2024000", "yyyyDDD", 4},
      {"24", "HH", 0},
      {"2360", "HHmm", 2},
      {"235960", "HHmmss", 4},
      {"235961", "HHmmss", 4},
      {"0 am", "h a", 0},
      {"13 am", "h a", 0},
      {"12 xm", "h a", 3},
      {"13 AM", "HH a", 3},
      {"Foo", "MMM", 0},
      {"Januar", "MMMM", 0},
      {"Mon 20240229", "EEE yyyyMMdd", 0},
      {"12.5", "HH.SS", 3},
      {"12+24:00", "HHXXX", 3},
      {"12+0100", "HHXXX", 5},
      {"12z", "HHXXX", 2},
      {"12Z", "HHxxx", 2},
      {"12+01:60", "HHXXX", 6},
      {"12-1:00", "HHXXX", 3},
      {"\xd9\xa2"
       "4",
       "HH", 0},
      {" 1", "dd", 0},
      {"1 ", "d", 1},
      {"2024\n", "yyyy", 4},
  };
  for (const Bad &bad : all) {
    EXPECT_EQ(resultOf("isDate", {bad.sText, bad.sPattern}), "0") << bad.sText;
    const std::string sError = errorOf("reformatDate", {bad.sText, bad.sPattern, ""});
    const std::string sStart = "Arg[1] Len[" + std::to_string(bad.sText.size()) + "] Offset[" +
                               std::to_string(bad.nOffset) + "]: expected ";
    EXPECT_EQ(sError.rfind(sStart, 0), 0U) << bad.sText << ": " << sError;
  }
  EXPECT_EQ(resultOf("isDate", {std::string(1'000'000, '9'), "yyyy"}), "0");
  EXPECT_EQ(resultOf("isDate", {std::string("2024\0", 5), "yyyy"}), "0");
}

TEST(StdPattern, PartsThatSayTheSameTwiceAgree) {
  EXPECT_EQ(resultOf("isDate", {"2024-02-29 060", "yyyy-MM-dd DDD"}), "1");
  EXPECT_EQ(resultOf("isDate", {"060 2024-02-29", "DDD yyyy-MM-dd"}), "1");
  EXPECT_EQ(resultOf("isDate", {"2024-02-29 061", "yyyy-MM-dd DDD"}), "0");
  EXPECT_EQ(resultOf("isDate", {"2024-03 060", "yyyy-MM DDD"}), "0");
  EXPECT_EQ(resultOf("isDate", {"13 01 PM", "HH hh a"}), "1");
  EXPECT_EQ(resultOf("isDate", {"13 02 PM", "HH hh a"}), "0");
  EXPECT_EQ(resultOf("isDate", {"13 01 AM", "HH hh a"}), "0");
  EXPECT_EQ(resultOf("isDate", {"00 01 PM", "HH hh a"}), "0");
  EXPECT_EQ(resultOf("isDate", {"PM", "a"}), "refused");
  EXPECT_EQ(resultOf("isDate", {"01", "hh"}), "refused");
}

TEST(StdPattern, EveryCutOfATextIsNoDate) {
  const std::string sPattern = "EEEE, dd MMMM yyyy hh:mm:ss.SSS a XXX";
  const std::string sText = "Thursday, 29 February 2024 12:34:56.789 PM +02:00";
  EXPECT_EQ(resultOf("isDate", {sText, sPattern}), "1");
  for (size_t n = 0; n < sText.size(); ++n)
    EXPECT_EQ(resultOf("isDate", {sText.substr(0, n), sPattern}), "0") << n;
}

TEST(StdPattern, NamesAreReadInCapitalsOrNot) {
  EXPECT_EQ(resultOf("reformatDate", {"29FEB24", "ddMMMyy", "yyyyMMdd"}), "20240229");
  EXPECT_EQ(resultOf("reformatDate", {"29feb24", "ddMMMyy", "yyyyMMdd"}), "20240229");
  EXPECT_EQ(resultOf("reformatDate", {"1 MAY 2024", "d MMMM yyyy", "yyyyMMdd"}), "20240501");
  EXPECT_EQ(resultOf("reformatDate", {"1 May 2024", "d MMM yyyy", "yyyyMMdd"}), "20240501");
}

TEST(StdPattern, ShortYearsAreInTheHundredFromTheFirst) {
  const auto year = [](const std::string &sShort) {
    return resultOf("reformatDate", {sShort, "yy", "yyyy"});
  };
  EXPECT_EQ(year("69"), "1969");
  EXPECT_EQ(year("99"), "1999");
  EXPECT_EQ(year("00"), "2000");
  EXPECT_EQ(year("68"), "2068");
  for (const int nFirst : {1, 1900, 1950, 2000, 2001, 9900}) {
    cvt::functions::setFirstYear(nFirst);
    for (int n = 0; n < 100; ++n) {
      const int nYear = std::stoi(year((n < 10 ? "0" : "") + std::to_string(n)));
      EXPECT_EQ(nYear % 100, n);
      EXPECT_TRUE(nYear >= nFirst && nYear < nFirst + 100) << nFirst << " " << nYear;
    }
  }
  cvt::functions::setFirstYear(1969);
}

TEST(StdPattern, AYearThatTwoDigitsCannotSayIsNotWrittenSo) {
  const auto written = [](int nYear) {
    char s[16];
    snprintf(s, sizeof s, "%04d0101", nYear);
    return resultOf("reformatDate", {s, "yyyyMMdd", "yyMMdd"});
  };
  EXPECT_EQ(written(2070), "refused") << "700101 is of 1970";
  EXPECT_EQ(written(1899), "refused");
  for (const int nFirst : {1, 1969, 9900}) {
    cvt::functions::setFirstYear(nFirst);
    EXPECT_NE(written(nFirst), "refused") << nFirst;
    EXPECT_NE(written(nFirst + 99), "refused") << nFirst;
    EXPECT_EQ(written(nFirst == 1 ? 101 : nFirst - 1), "refused") << nFirst;
    EXPECT_EQ(written(nFirst == 9900 ? 9899 : nFirst + 100), "refused") << nFirst;
  }
  cvt::functions::setFirstYear(1969);
}

// --- The clock ------------------------------------------------------------------------------------------------

TEST(StdClock, IsTheSystems) {
  const time_t before = time(nullptr);
  const long nNow = std::stol(resultOf("toEpoch", {resultOf("now", {"yyyyMMddHHmmss"}), "yyyyMMddHHmmss"}));
  EXPECT_GE(nNow, before);
  EXPECT_LE(nNow, time(nullptr));
  EXPECT_EQ(resultOf("now", {"yyyy", "No/Zone"}), "refused");
}

TEST(StdClock, EpochsReachFromTheFirstYearToTheLast) {
  const std::string sPattern = "yyyy-MM-dd HH:mm:ss";
  EXPECT_EQ(resultOf("toEpoch", {"0001-01-01 00:00:00", sPattern}), "-62135596800");
  EXPECT_EQ(resultOf("fromEpoch", {"-62135596800", sPattern}), "0001-01-01 00:00:00");
  EXPECT_EQ(resultOf("fromEpoch", {"253402300799", sPattern}), "9999-12-31 23:59:59");
  for (const std::string sSeconds :
       {"-62135596801", "253402300800", "99999999999999999999", "", "1.5", " 1", "x"}) {
    EXPECT_EQ(resultOf("fromEpoch", {sSeconds, sPattern}), "refused") << sSeconds;
  }
  EXPECT_EQ(resultOf("fromEpoch", {"253402300799", sPattern, "+00:01"}), "refused");
  const std::string sMicros = "yyyy-MM-dd HH:mm:ss.SSSSSS";
  for (const std::string sCount : {"-62135596800000000", "-1", "0", "1", "-1000001", "253402300799999999"}) {
    EXPECT_EQ(
        resultOf("toEpoch", {resultOf("fromEpoch", {sCount, sMicros, "UTC", "6"}), sMicros, "UTC", "6"}),
        sCount);
  }
  EXPECT_EQ(resultOf("fromEpoch", {"-1", sMicros, "UTC", "6"}), "1969-12-31 23:59:59.999999");
  EXPECT_EQ(resultOf("fromEpoch", {"253402300800000000", sMicros, "UTC", "6"}), "refused");
  EXPECT_EQ(resultOf("fromEpoch", {"-62135596800000001", sMicros, "UTC", "6"}), "refused");
  EXPECT_EQ(resultOf("fromEpoch", {"1", sMicros, "UTC", "7"}), "refused");
  EXPECT_EQ(resultOf("toEpoch", {"1969-12-31 23:59:59.999999", sMicros, "UTC"}), "-1") << "cut, not rounded";
  EXPECT_EQ(resultOf("toEpoch", {"2024-01-01 00:00:00+01:00", "yyyy-MM-dd HH:mm:ssXXX", "UTC"}), "1704063600")
      << "the value's own offset counts";
}

using StdClockSettings = test::StdTest;

TEST_F(StdClockSettings, FixTheTimeUntilTheyAreGone) {
  using namespace test::xml;
  const Args rules = {copy(func("now", {src("A")}), dst("X"))};
  plugAttributes("psClock=\"2001-02-03T04:05:06.789+01:00\"");
  load(rules);
  from.set("A", "yyyy-MM-dd HH:mm:ss.SSS");
  ASSERT_EQ(run(), 0);
  EXPECT_EQ(to.get("X"), "2001-02-03 03:05:06.789");
  again();
  plugAttributes("");
  load(rules);
  from.set("A", "yyyy");
  ASSERT_EQ(run(), 0);
  EXPECT_GT(to.get("X"), "2020");
}

TEST_F(StdClockSettings, ThatAreNoTimeAreRefused) {
  for (const std::string sClock : {"2024-02-30T00:00:00.000Z", "now", "2024-02-29"}) {
    test::clearLog();
    plugAttributes("psClock=\"" + sClock + "\"");
    EXPECT_NE(start(), 0);
    ASSERT_FALSE(test::logTexts().empty());
    EXPECT_NE(test::logTexts()[0].find("expected psClock as 2024-02-29T12:30:45.678Z"), std::string::npos)
        << test::logTexts()[0];
    again();
  }
}

TEST_F(StdClockSettings, FirstYearAndZonesComeFromThem) {
  using namespace test::xml;
  plugAttributes("nFirstYear=\"1930\" psZoneInfo=\"/usr/share/zoneinfo/Europe\"");
  load({copy(func("reformatDate", {src("A"), value("yy"), value("yyyy")}), dst("X")),
        copy(func("toZone", {src("B"), value("yyyyMMddHH"), value("UTC"), value("Berlin")}), dst("Y"))});
  from.set("A", "31").set("B", "2024070112");
  if (access("/usr/share/zoneinfo/Europe/Berlin", R_OK) != 0) GTEST_SKIP() << "no zone files: install tzdata";
  ASSERT_EQ(run(), 0);
  EXPECT_EQ(to.get("X"), "1931");
  EXPECT_EQ(to.get("Y"), "2024070114");
}

// --- Patterns that are used again ----------------------------------------------------------------------------

// A pattern is taken apart once; what is wrong with a value is told in the same words the next time.
TEST(DatePattern, TellsTheSameEveryTime) {
  const std::string sHours = errorOf("reformatDate", {"9:05", "h:mm", "HH:mm"});
  EXPECT_NE(sHours.find("Arg[2] Len[4] Offset[4]: expected an a (AM or PM) beside hours to 12"),
            std::string::npos)
      << sHours;
  const std::string sWeekday = errorOf("reformatDate", {"Mon 2024-01-02", "EEE yyyy-MM-dd", "yyyyMMdd"});
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(errorOf("reformatDate", {"9:05", "h:mm", "HH:mm"}), sHours);
    EXPECT_EQ(errorOf("reformatDate", {"Mon 2024-01-02", "EEE yyyy-MM-dd", "yyyyMMdd"}), sWeekday);
  }
}

TEST(DatePattern, MoreThanAreKeptStayApart) {
  const std::vector<std::string> separators = {"-", "/", ".", " ", ":", "_", "+", "*", "#", "=", ","};
  for (int nRound = 0; nRound < 3; ++nRound) {
    for (const std::string &s : separators) {
      EXPECT_EQ(resultOf("reformatDate", {"20241231", "yyyyMMdd", "yyyy" + s + "MM" + s + "dd"}),
                "2024" + s + "12" + s + "31");
    }
  }
}

// The one that is replaced meanwhile must not be the one in use.
TEST(DatePattern, BothPatternsOfACallMayBeNew) {
  for (int i = 0; i < 40; ++i) {
    const std::string sMark(1, static_cast<char>('0' + i % 10));
    const std::string sFrom = "yyyy'" + sMark + "x" + std::to_string(i) + "'MMdd";
    const std::string sTo = "dd'" + sMark + "y" + std::to_string(i) + "'MMyyyy";
    EXPECT_EQ(resultOf("reformatDate", {"2024" + sMark + "x" + std::to_string(i) + "1231", sFrom, sTo}),
              "31" + sMark + "y" + std::to_string(i) + "122024");
  }
}

}  // namespace

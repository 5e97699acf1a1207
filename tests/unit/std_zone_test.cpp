// Time zones: every zone of the machine against the C library, rules, and damaged files.
#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>

#include "std/zone.h"
#include "std_call.h"

namespace {

using cvt::functions::Zone;
using cvt::functions::ZoneRule;
using cvt::functions::ZoneSpan;

const std::string kDirectory = "/usr/share/zoneinfo";

std::string fileOf(const std::string &sName) {
  std::ifstream in(kDirectory + "/" + sName, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// The names of all files that are zones, without the copies that count leap seconds or have another name.
void collect(const std::string &sFolder, std::vector<std::string> &names) {
  DIR *const directory = opendir((kDirectory + "/" + sFolder).c_str());
  if (directory == nullptr) return;
  while (const dirent *entry = readdir(directory)) {
    const std::string sName = sFolder + entry->d_name;
    if (entry->d_name[0] == '.' || sName == "right" || sName == "posix") continue;
    struct stat status {};
    if (stat((kDirectory + "/" + sName).c_str(), &status) != 0) continue;
    if (S_ISDIR(status.st_mode)) {
      collect(sName + "/", names);
    } else if (fileOf(sName).rfind("TZif", 0) == 0) {
      names.push_back(sName);
    }
  }
  closedir(directory);
}

// One name of each zone: many are other names of the same.
std::vector<std::string> allZones() {
  std::vector<std::string> names;
  collect("", names);
  std::sort(names.begin(), names.end());
  std::set<std::string> seen;
  std::erase_if(names, [&](const std::string &sName) { return !seen.insert(fileOf(sName)).second; });
  return names;
}

// The C library's zone of this process.
void setZone(const std::string &sName) {
  setenv("TZ", (":" + sName).c_str(), 1);
  tzset();
}

long offsetOfTheCLibrary(int64_t utc) {
  const time_t time = utc;
  tm local{};
  localtime_r(&time, &local);
  return local.tm_gmtoff;
}

// The first second with another offset than `from`; they differ at `to`.
int64_t change(int64_t from, int64_t to) {
  const long before = offsetOfTheCLibrary(from);
  while (to - from > 1) {
    const int64_t middle = from + (to - from) / 2;
    (offsetOfTheCLibrary(middle) == before ? from : to) = middle;
  }
  return to;
}

constexpr int64_t kDay = 86400;
constexpr int64_t kStep = 31 * kDay + 4321;
constexpr int64_t kYear1880 = -2840140800;
constexpr int64_t kYear2120 = 4733510400;

#define NEED_ZONES() \
  if (fileOf("Europe/Berlin").empty()) GTEST_SKIP() << "no zone files: install tzdata"

TEST(StdZone, EveryZoneIsThatOfTheCLibrary) {
  NEED_ZONES();
  const std::vector<std::string> names = allZones();
  EXPECT_GT(names.size(), 300U);
  long nChanges = 0;
  for (const std::string &sName : names) {
    const Zone *const zone = Zone::find(sName);
    ASSERT_NE(zone, nullptr) << sName;
    setZone(sName);
    long before = offsetOfTheCLibrary(kYear1880);
    for (int64_t utc = kYear1880; utc < kYear2120; utc += kStep) {
      const long offset = offsetOfTheCLibrary(utc);
      ASSERT_EQ(zone->spanAt(utc).offset, offset) << sName << " " << utc;
      if (offset != before) {
        const int64_t at = change(utc - kStep, utc);
        EXPECT_EQ(zone->spanAt(at).offset, offsetOfTheCLibrary(at)) << sName << " " << at;
        EXPECT_EQ(zone->spanAt(at - 1).offset, offsetOfTheCLibrary(at - 1)) << sName << " " << at;
        ++nChanges;
      }
      before = offset;
    }
  }
  EXPECT_GT(nChanges, 10000) << names.size();
}

TEST(StdZone, FarYearsFollowTheRule) {
  NEED_ZONES();
  for (const std::string sName : {"Europe/Berlin", "America/New_York", "Australia/Lord_Howe", "Europe/Dublin",
                                  "Asia/Kolkata", "America/Santiago", "Africa/Cairo"}) {
    const Zone *const zone = Zone::find(sName);
    ASSERT_NE(zone, nullptr) << sName;
    setZone(sName);
    for (int64_t utc = 100 * kYear2120 / 60; utc < 100 * kYear2120 / 60 + 1000 * kDay; utc += 3601 * 3) {
      ASSERT_EQ(zone->spanAt(utc).offset, offsetOfTheCLibrary(utc)) << sName << " " << utc;
    }
    const ZoneSpan last = zone->spanAt(253402300799);
    EXPECT_TRUE(last.begin <= 253402300799 && last.end > 253402300799);
  }
}

TEST(StdZone, SpansFollowEachOtherWithoutGaps) {
  NEED_ZONES();
  for (const std::string &sName : allZones()) {
    const Zone *const zone = Zone::find(sName);
    ZoneSpan span = zone->spanAt(kYear1880);
    for (int i = 0; span.end < kYear2120 && i < 2000; ++i) {
      const ZoneSpan next = zone->spanAt(span.end);
      ASSERT_EQ(next.begin, span.end) << sName;
      ASSERT_GT(next.end, next.begin) << sName;
      span = next;
    }
    EXPECT_GE(span.end, kYear2120) << sName;
  }
}

// A local time is looked for among all times that any offset could make of it.
int64_t searched(const Zone &zone, int64_t local) {
  ZoneSpan span = zone.spanAt(local - 26 * 3600);
  int before = span.offset;
  while (true) {
    const int64_t utc = local - span.offset;
    if (utc < span.begin)
      return local - before;  // skipped: the span before has ended, this one has not begun
    if (utc < span.end) return utc;
    before = span.offset;
    span = zone.spanAt(span.end);
  }
}

TEST(StdZone, ALocalTimeThatComesTwiceIsTheFirstAndASkippedOneCountsOn) {
  NEED_ZONES();
  for (const std::string &sName : allZones()) {
    const Zone &zone = *Zone::find(sName);
    ZoneSpan span = zone.spanAt(kYear1880);
    while (span.end < kYear2120) {
      const ZoneSpan next = zone.spanAt(span.end);
      const int64_t ends = span.end + span.offset;
      const int64_t begins = span.end + next.offset;
      for (const int64_t local : {ends - 1, ends, begins - 1, begins, (ends + begins) / 2}) {
        const int64_t utc = zone.utcOf(local);
        EXPECT_EQ(utc, searched(zone, local)) << sName << " " << local;
        const bool bSkipped = local >= ends && local < begins;
        EXPECT_EQ(utc + zone.spanAt(utc).offset == local, !bSkipped) << sName << " " << local;
        EXPECT_TRUE(local >= ends || utc < span.end) << sName << ": the first of the two";
      }
      span = next;
    }
  }
}

TEST(StdZone, BothRulesAsTheManualTells) {
  NEED_ZONES();
  const auto utc = [](const std::string &sLocal, const std::string &sZone) {
    return test::resultOf("toZone", {sLocal, "yyyy-MM-dd HH:mm:ss", sZone, "UTC"});
  };
  EXPECT_EQ(utc("2024-03-31 01:59:59", "Europe/Berlin"), "2024-03-31 00:59:59");
  EXPECT_EQ(utc("2024-03-31 02:00:00", "Europe/Berlin"), "2024-03-31 01:00:00") << "skipped";
  EXPECT_EQ(utc("2024-03-31 02:59:59", "Europe/Berlin"), "2024-03-31 01:59:59") << "skipped";
  EXPECT_EQ(utc("2024-03-31 03:00:00", "Europe/Berlin"), "2024-03-31 01:00:00");
  EXPECT_EQ(utc("2024-10-27 02:00:00", "Europe/Berlin"), "2024-10-27 00:00:00") << "the first of two";
  EXPECT_EQ(utc("2024-10-27 02:59:59", "Europe/Berlin"), "2024-10-27 00:59:59") << "the first of two";
  EXPECT_EQ(utc("2024-10-27 03:00:00", "Europe/Berlin"), "2024-10-27 02:00:00");
  EXPECT_EQ(utc("2011-12-30 12:00:00", "Pacific/Apia"), "2011-12-30 22:00:00") << "a day that never was";
  EXPECT_EQ(utc("2500-07-01 12:00:00", "Europe/Berlin"), "2500-07-01 10:00:00");
  EXPECT_EQ(utc("0001-01-01 00:00:00", "America/New_York"), "0001-01-01 04:56:02");
}

TEST(StdZone, TheProcesssOwnZoneIsLeftAlone) {
  NEED_ZONES();
  setZone("Asia/Tokyo");
  EXPECT_EQ(test::resultOf("toEpoch", {"20240701120000", "yyyyMMddHHmmss", "America/New_York"}),
            "1719849600");
  EXPECT_STREQ(getenv("TZ"), ":Asia/Tokyo");
  EXPECT_EQ(offsetOfTheCLibrary(0), 9 * 3600);
}

// --- Names ---------------------------------------------------------------------------------------------------

TEST(StdZone, OnlyNamesOfZonesOpenFiles) {
  NEED_ZONES();
  for (const std::string sName :
       {"", "/", "Europe", "Europe/", "/Europe/Berlin", "Europe//Berlin", "Europe/berlin", "../zoneinfo/UTC",
        "Europe/../UTC", "./UTC", "zone.tab", "tzdata.zi", "posix/../UTC", "leapseconds", "Europe/Berlin ",
        " UTC0", "/etc/localtime", "right/UTC"}) {
    EXPECT_EQ(Zone::find(sName), nullptr) << sName;
  }
  EXPECT_EQ(Zone::find(std::string("Europe/Berlin\0x", 15)), nullptr);
  EXPECT_EQ(Zone::find(std::string(1'000'000, 'A')), nullptr);
  EXPECT_NE(Zone::find("Etc/GMT+5"), nullptr);
  EXPECT_EQ(Zone::find("Europe/Berlin"), Zone::find("Europe/Berlin"));
  EXPECT_EQ(test::errorOf("toZone", {"20240101", "yyyyMMdd", "Europe/Secret", "UTC"}).find("Secret"),
            std::string::npos);
}

TEST(StdZone, ADirectoryOfTheConfigurationStandsForTheMachines) {
  NEED_ZONES();
  ASSERT_NE(Zone::find("Europe/Berlin"), nullptr);
  Zone::setDirectory(kDirectory + "/Europe");
  EXPECT_EQ(Zone::find("Europe/Berlin"), nullptr);
  EXPECT_NE(Zone::find("Berlin"), nullptr);
  Zone::setDirectory("/nowhere");
  EXPECT_EQ(Zone::find("Berlin"), nullptr);
  EXPECT_EQ(test::resultOf("toZone", {"2024010112", "yyyyMMddHH", "UTC", "+01:00"}), "2024010113");
}

// --- Rules ---------------------------------------------------------------------------------------------------

TEST(StdZoneRule, IsThatOfTheCLibrary) {
  for (const std::string sRule :
       {"CET-1CEST,M3.5.0,M10.5.0/3", "EST5EDT,M3.2.0,M11.1.0", "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0",
        "IST-1GMT0,M10.5.0,M3.5.0/1", "UTC0", "<-03>3<-02>,M3.5.0/-2,M10.5.0/-1",
        "EET-2EEST,M4.5.5/0,M10.5.4/24", "EST5EDT,J60/2,J300", "EST5EDT,59/2,300/2:30:15",
        "AAA-14BBB-13:30:30,M2.1.1,M11.5.6", "<-04>4<-03>,M9.1.6/24,M4.1.6/24",
        "IST-2IDT,M3.4.4/26,M10.5.0"}) {
    const std::optional<ZoneRule> rule = ZoneRule::read(sRule);
    ASSERT_TRUE(rule.has_value()) << sRule;
    setenv("TZ", sRule.c_str(), 1);
    tzset();
    for (int64_t utc = 0; utc < 6 * 365 * kDay; utc += 3599) {
      ASSERT_EQ(rule->spanAt(utc).offset, offsetOfTheCLibrary(utc)) << sRule << " " << utc;
    }
  }
}

TEST(StdZoneRule, AllTheYearCanBeSummer) {
  const std::optional<ZoneRule> rule = ZoneRule::read("XXX3EDT4,0/0,J365/23");
  ASSERT_TRUE(rule.has_value());
  for (int64_t utc = 0; utc < 5 * 365 * kDay; utc += 1799)
    ASSERT_EQ(rule->spanAt(utc).offset, -4 * 3600) << utc;
}

TEST(StdZoneRule, AnythingElseIsNone) {
  for (const std::string sRule : {"",
                                  "C",
                                  "CE1",
                                  "CET",
                                  "CET-",
                                  "CET-25",
                                  "CET-1:60",
                                  "CET-1:00:60",
                                  "CET-1CEST",
                                  "CET-1CEST,",
                                  "CET1 ",
                                  "CET-1CEST,M3.5.0",
                                  "CET-1CEST,M3.5.0,",
                                  "CET-1CEST,M0.5.0,M10.5.0",
                                  "CET-1CEST,M13.5.0,M10.5.0",
                                  "CET-1CEST,M3.0.0,M10.5.0",
                                  "CET-1CEST,M3.6.0,M10.5.0",
                                  "CET-1CEST,M3.5.7,M10.5.0",
                                  "CET-1CEST,M3.5.0/168,M10.5.0",
                                  "CET-1CEST,M3.5.0,M10.5.0x",
                                  "CET-1CEST,J0,J5",
                                  "CET-1CEST,J366,J5",
                                  "CET-1CEST,366,5",
                                  "<CET-1",
                                  "<+>5",
                                  "<a>5",
                                  ":Europe/Berlin",
                                  "CET-1CEST,M3.5.0,M10.5.0/3,"}) {
    EXPECT_FALSE(ZoneRule::read(sRule).has_value()) << sRule;
  }
  const std::string sWhole = "CET-1CEST-2,M3.5.0/2,M10.5.0/3:00:00";
  for (size_t n = 0; n < sWhole.size(); ++n) ZoneRule::read(sWhole.substr(0, n));
}

// --- Files ---------------------------------------------------------------------------------------------------

TEST(StdZone, AFileThatIsCutIsNone) {
  NEED_ZONES();
  for (const std::string sName : {"Europe/Berlin", "UTC", "Asia/Kolkata"}) {
    const std::string sFile = fileOf(sName);
    ASSERT_TRUE(Zone::read(sFile).has_value());
    for (size_t n = 0; n < sFile.size(); ++n) EXPECT_FALSE(Zone::read(sFile.substr(0, n)).has_value()) << n;
    EXPECT_FALSE(Zone::read(sFile + "x").has_value());
  }
}

TEST(StdZone, AFileWithAFlippedBitIsNoneOrAnotherZone) {
  NEED_ZONES();
  const std::string sFile = fileOf("Europe/Berlin");
  for (size_t i = 0; i < sFile.size() * 8; ++i) {
    std::string sFlipped = sFile;
    sFlipped[i / 8] = static_cast<char>(sFlipped[i / 8] ^ 1 << i % 8);
    const std::optional<Zone> zone = Zone::read(sFlipped);
    if (!zone) continue;
    for (const int64_t utc : {kYear1880, int64_t{0}, kYear2120}) {
      EXPECT_LE(std::abs(zone->spanAt(utc).offset), 26 * 3600);
      EXPECT_LE(std::abs(zone->utcOf(utc) - utc), 26 * 3600);
    }
  }
}

// A file of version 2 with these transitions and this rule. The types have these offsets, which follow each other.
std::string fileWith(const std::vector<int64_t> &times, uint32_t nLeapSeconds, const std::string &sRule,
                     const std::vector<int> &offsets = {3600}) {
  const auto number = [](uint64_t value, int bytes) {
    std::string s;
    for (int i = bytes - 1; i >= 0; --i) s += static_cast<char>(value >> (8 * i) & 0xFF);
    return s;
  };
  const auto head = [&](size_t nTimes, size_t nTypes) {
    return "TZif2" + std::string(15, '\0') + number(0, 4) + number(0, 4) + number(nLeapSeconds, 4) +
           number(nTimes, 4) + number(nTypes, 4) + number(4, 4);
  };
  const auto type = [&](int offset) {
    return number(static_cast<uint64_t>(offset), 4) + std::string(2, '\0');
  };
  std::string sFile = head(0, 1) + type(0) + std::string("ABC\0", 4) + head(times.size(), offsets.size());
  for (const int64_t time : times) sFile += number(static_cast<uint64_t>(time), 8);
  for (size_t i = 1; i <= times.size(); ++i) sFile += static_cast<char>(i % offsets.size());
  for (const int offset : offsets) sFile += type(offset);
  return sFile + std::string("ABC\0", 4) + "\n" + sRule + "\n";
}

TEST(StdZone, ChangesThatAreOutOfOrderOrReachAreRefused) {
  constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
  EXPECT_TRUE(Zone::read(fileWith({0, 10}, 0, "")).has_value());
  EXPECT_TRUE(Zone::read(fileWith({0, 10}, 0, "ABC-1")).has_value());
  EXPECT_FALSE(Zone::read(fileWith({10, 10}, 0, "")).has_value());
  EXPECT_FALSE(Zone::read(fileWith({10, 0}, 0, "")).has_value());
  EXPECT_FALSE(Zone::read(fileWith({kMost}, 0, "")).has_value());
  EXPECT_FALSE(Zone::read(fileWith({-kMost - 1}, 0, "")).has_value());
  EXPECT_FALSE(Zone::read(fileWith({0}, 1, "")).has_value()) << "leap seconds";
  EXPECT_FALSE(Zone::read(fileWith({0}, 0, "no rule")).has_value());
  EXPECT_EQ(Zone::read(fileWith({0, 10}, 0, ""))->utcOf(3605), 5);
}

// Two changes within less than what they move the clock: after the first one the clock stands at 3600 for ten seconds,
// then it is set back.
TEST(StdZone, ATimeThatOneChangeSkipsAndTheNextBringsBackIsFound) {
  const std::optional<Zone> zone = Zone::read(fileWith({0, 10}, 0, "", {0, 3600, 20}));
  ASSERT_TRUE(zone.has_value());
  EXPECT_EQ(zone->utcOf(-1), -1);
  EXPECT_EQ(zone->utcOf(29), 29) << "skipped: counts on with the offset from before";
  EXPECT_EQ(zone->utcOf(30), 10);
  EXPECT_EQ(zone->utcOf(1000), 980);
  EXPECT_EQ(zone->utcOf(3600), 0) << "the first of two";
  EXPECT_EQ(zone->utcOf(3609), 9);
  EXPECT_EQ(zone->utcOf(3610), 3590);
}

}  // namespace

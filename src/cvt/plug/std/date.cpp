// date.cpp: dates and times, read and written by patterns.
#include <algorithm>
#include <charconv>
#include <cstdlib>

#include "clock.h"
#include "kit/fault.h"
#include "pattern.h"
#include "settings.h"
#include "topics.h"
#include "zone.h"

namespace cvt::functions {

namespace {

constexpr size_t kWhole = kit::Fault::kHere;
constexpr int64_t kDay = 86400;
constexpr int kMostDays = 3652058;  // from the first day to the last
constexpr int kMostMonths = 119987;
constexpr int kMostSeconds = 2147483647;

// --- Arguments ---------------------------------------------------------------------------------------------

// Refuses the text or its pattern, should they not fit.
void check(kit::Call &call, const Misfit &misfit, int text, int pattern) {
  if (misfit.expected == nullptr) return;
  if (misfit.inPattern) {
    call.refuse(pattern, misfit.at, misfit.expected, "something else",
                "The letters of patterns are in docs/functions.md");
  }
  call.refuse(text, misfit.at, misfit.expected,
              misfit.at < call.text(text).size() ? "something else" : "the end");
}

Moment read(kit::Call &call, int text, int pattern) {
  Moment moment;
  check(call, readMoment(call.text(text), call.text(pattern), moment), text, pattern);
  return moment;
}

Moment readDate(kit::Call &call, int text, int pattern) {
  const Moment moment = read(call, text, pattern);
  if (!moment.hasDate()) call.refuse(pattern, kWhole, "a pattern with year, month and day", "less");
  return moment;
}

// text: the argument that the moment is from.
void answer(kit::Call &call, const Moment &moment, int pattern, int text) {
  char out[kMomentRoom];
  size_t length = 0;
  check(call, writeMoment(moment, call.text(pattern), out, length), text, pattern);
  call.answer({out, length});
}

template <class Number>
void answerNumber(kit::Call &call, Number number) {
  char digits[24];
  const char *end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  call.answer({digits, static_cast<size_t>(end - digits)});
}

// A moment with the same offset at another time. moved: the argument that says how far.
Moment at(kit::Call &call, int64_t seconds, const Moment &from, int moved) {
  if (seconds < kFirstSecond || seconds > kLastSecond) {
    call.refuse(moved, kWhole, "a result in the years 0001 to 9999", "one outside");
  }
  Moment moment = momentOf(seconds, from.nanoseconds);
  moment.offset = from.offset;
  return moment;
}

// --- Zones -------------------------------------------------------------------------------------------------

// A zone of the zone files, or always the same offset.
struct AnyZone {
  const Zone *zone = nullptr;
  int offset = 0;

  int offsetAt(int64_t utc) const { return zone != nullptr ? zone->spanAt(utc).offset : offset; }
  int64_t utcOf(int64_t local) const { return zone != nullptr ? zone->utcOf(local) : local - offset; }
};

AnyZone zone(kit::Call &call, int argument) {
  const std::string_view name = call.text(argument);
  if (name == "UTC") return {};
  if (const Zone *found = Zone::find(name)) return {found, 0};
  Moment moment;
  if (readMoment(name, "XXX", moment).expected != nullptr) {
    call.refuse(
        argument, kWhole, "a time zone", "another text",
        "Zones are UTC, offsets such as +02:00, and names such as Europe/Berlin, of the package tzdata");
  }
  return {nullptr, *moment.offset};
}

// The offset of the value decides, if it has one; otherwise the zone in an argument, or UTC.
int64_t utcOf(kit::Call &call, const Moment &moment, int argument) {
  const int64_t local = secondsOf(moment);
  if (moment.offset) return local - *moment.offset;
  return call.has(argument) ? zone(call, argument).utcOf(local) : local;
}

void answerIn(kit::Call &call, int64_t utc, int nanoseconds, const AnyZone &zone, int pattern, int text) {
  Moment moment;
  moment.nanoseconds = nanoseconds;
  moment.offset = zone.offsetAt(utc);
  answer(call, at(call, utc + *moment.offset, moment, text), pattern, text);
}

// --- Functions ---------------------------------------------------------------------------------------------

void reformatDate(kit::Call &call) {
  answer(call, read(call, 0, 1), 2, 0);
}

void isDate(kit::Call &call) {
  Moment moment;
  const Misfit misfit = readMoment(call.text(0), call.text(1), moment);
  if (misfit.inPattern) check(call, misfit, 0, 1);
  call.answer(misfit.expected == nullptr ? "1" : "0");
}

void addDays(kit::Call &call) {
  const Moment moment = readDate(call, 0, 1);
  const int days = call.number(2, -kMostDays, kMostDays);
  answer(call, at(call, secondsOf(moment) + days * kDay, moment, 2), call.has(3) ? 3 : 1, 0);
}

void addSeconds(kit::Call &call) {
  const Moment moment = readDate(call, 0, 1);
  const int seconds = call.number(2, -kMostSeconds, kMostSeconds);
  answer(call, at(call, secondsOf(moment) + seconds, moment, 2), call.has(3) ? 3 : 1, 0);
}

void addMonths(kit::Call &call) {
  Moment moment = readDate(call, 0, 1);
  const int months = moment.year * 12 + moment.month - 1 + call.number(2, -kMostMonths, kMostMonths);
  if (months < 12 || months >= 120000) {
    call.refuse(2, kWhole, "a result in the years 0001 to 9999", "one outside");
  }
  moment.year = months / 12;
  moment.month = months % 12 + 1;
  moment.day = std::min(moment.day, daysOfMonth(moment.year, moment.month));
  answer(call, moment, call.has(3) ? 3 : 1, 0);
}

int64_t dayNumber(Moment moment) {
  moment.second = 0;
  return secondsOf(moment) / kDay;
}

void daysBetween(kit::Call &call) {
  const int64_t from = dayNumber(readDate(call, 0, 2));
  answerNumber(call, dayNumber(readDate(call, 1, 2)) - from);
}

void dayOfWeek(kit::Call &call) {
  answerNumber(call, weekdayOf(readDate(call, 0, 1)));
}

// The day that a date is compared with: an argument, or today in UTC.
int64_t referenceDay(kit::Call &call, int argument) {
  if (!call.has(argument)) return dayNumber(momentOf(functions::now().seconds, 0));
  Moment moment;
  check(call, readMoment(call.text(argument), "yyyy-MM-dd", moment), argument, argument);
  return dayNumber(moment);
}

void nearestDate(kit::Call &call) {
  constexpr int kYears = 8;  // between two leap days, at most
  const Moment moment = read(call, 0, 1);
  if (moment.month == 0 || moment.day == 0) call.refuse(1, kWhole, "a pattern with month and day", "less");
  if (moment.year != 0 || hasPart(call.text(1), 'E')) {
    call.refuse(1, kWhole, "a pattern without year and weekday", "one of them",
                "Both are those of the nearest date");
  }
  const int64_t reference = referenceDay(call, 3);
  const int middle = momentOf(reference * kDay, 0).year;
  Moment nearest = moment;
  for (int year = std::max(middle - kYears, 1); year <= std::min(middle + kYears, 9999); ++year) {
    Moment candidate = moment;
    candidate.year = year;
    if (moment.day > daysOfMonth(year, moment.month)) continue;
    const auto distance = [&](const Moment &date) { return std::abs(dayNumber(date) - reference); };
    if (nearest.year == 0 || distance(candidate) < distance(nearest)) nearest = candidate;
  }
  answer(call, nearest, 2, 0);
}

void toZone(kit::Call &call) {
  const Moment moment = readDate(call, 0, 1);
  const int64_t utc = utcOf(call, moment, 2);
  answerIn(call, utc, moment.nanoseconds, zone(call, 3), call.has(4) ? 4 : 1, 0);
}

// What an epoch counts: seconds, or parts of them with so many digits.
struct Unit {
  int64_t perSecond = 1;
  int nanoseconds = 1'000'000'000;
};

Unit unit(kit::Call &call, int argument) {
  Unit unit;
  for (int digits = call.has(argument) ? call.number(argument, 0, 6) : 0; digits > 0; --digits) {
    unit.perSecond *= 10;
    unit.nanoseconds /= 10;
  }
  return unit;
}

void toEpoch(kit::Call &call) {
  const Moment moment = readDate(call, 0, 1);
  const Unit counted = unit(call, 3);
  answerNumber(call, utcOf(call, moment, 2) * counted.perSecond + moment.nanoseconds / counted.nanoseconds);
}

void fromEpoch(kit::Call &call) {
  const std::string_view digits = call.text(0);
  const Unit counted = unit(call, 3);
  int64_t count = 0;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), count);
  if (error != std::errc() || stop != digits.data() + digits.size() ||
      count < kFirstSecond * counted.perSecond || count >= (kLastSecond + 1) * counted.perSecond) {
    call.refuse(0, kWhole, "a time since 1970 of the years 0001 to 9999", "something else");
  }
  const int64_t rest = (count % counted.perSecond + counted.perSecond) % counted.perSecond;
  const int64_t seconds = (count - rest) / counted.perSecond;
  answerIn(call, seconds, static_cast<int>(rest) * counted.nanoseconds,
           call.has(2) ? zone(call, 2) : AnyZone{}, 1, 0);
}

void now(kit::Call &call) {
  const Instant instant = functions::now();
  answerIn(call, instant.seconds, instant.nanoseconds, call.has(1) ? zone(call, 1) : AnyZone{}, 0, 0);
}

// --- The table ---------------------------------------------------------------------------------------------

// clang-format off
#define LETTERS "The letters of patterns are in docs/functions.md."
#define ZONES "Zones are UTC, offsets such as +02:00, and names such as Europe/Berlin, of the package tzdata."
#define VALUE {"value", "a date, a time, or both"}
#define PATTERN {"pattern", "how it is written"}
#define DIGITS {"digits", "how many digits of a second the number ends with: 3 for milliseconds, 6 at most"}
#define TO {"toPattern", "how the result is written; like the value when left out"}

constexpr kit::FunctionRow kFunctions[] = {
    {"reformatDate",
     {VALUE, {"fromPattern", "how it is written"}, {"toPattern", "how the result is written"}}, 3, 3, reformatDate,
     "the same date and time, written in another way",
     {{{"241231", "yyMMdd", "yyyy-MM-dd"}, "2024-12-31"},
      {{"2024-02-29T07:05:09.123+02:00", "yyyy-MM-dd'T'HH:mm:ss.SSSXXX", "dd.MM.yyyy HH:mm"}, "29.02.2024 07:05"},
      {{"31 DEC 2024", "dd MMM yyyy", "EEE, d MMMM yyyy"}, "Tue, 31 December 2024"},
      {{"24366", "yyDDD", "yyyyMMdd"}, "20241231"},
      {{"9:05 pm", "h:mm a", "HHmmss"}, "210500"},
      {{"20241231", "yyyyMMdd", "yyyy-MM-dd'T'HH:mm:ss"}, "2024-12-31T00:00:00"},
      {{"1231", "MMdd", "dd/MM"}, "31/12"}},
     {{{"20230229", "yyyyMMdd", "yyyy-MM-dd"}, "Arg[1] Len[8] Offset[6]: expected a day that the month has, found "
                                               "something else."},
      {{"2024-1-31", "yyyy-MM-dd", "yyyyMMdd"}, "Arg[1] Len[9] Offset[5]: expected a month, 01 to 12, found something "
                                                "else."},
      {{"20241231", "yyyyMMddHH", "yyyyMMdd"}, "Arg[1] Len[8] Offset[8]: expected an hour, 00 to 23, found the end."},
      {{"235960", "HHmmss", "HH:mm:ss"}, "Arg[1] Len[6] Offset[4]: expected a second, 00 to 59; leap seconds have no "
                                         "place here, found something else."},
      {{"20700101", "yyyyMMdd", "yyMMdd"}, "Arg[3] Len[6] Offset[0]: expected a year that two digits can say; write "
                                           "yyyy, found something else. " LETTERS},
      {{"1231", "MMdd", "yyyyMMdd"}, "Arg[3] Len[8] Offset[0]: expected parts that are known from the value, found "
                                     "something else. " LETTERS},
      {{"20241231", "YYYYMMDD", "yyyyMMdd"}, "Arg[2] Len[8] Offset[0]: expected yyyy, the year, found something else. "
                                             LETTERS}}},

    {"isDate",
     {{"value", "any text"}, PATTERN}, 2, 2, isDate,
     "1 when the value is a date or a time of that pattern, otherwise 0",
     {{{"20240229", "yyyyMMdd"}, "1"},
      {{"20230229", "yyyyMMdd"}, "0"},
      {{"", "yyyyMMdd"}, "0"}},
     {{{"20240229", "yyyymmdd"}, "Arg[2] Len[8] Offset[4]: expected hours beside minutes; months are MM, found something "
                                 "else. " LETTERS},
      {{"no date", "DD.MM.yyyy"}, "Arg[2] Len[10] Offset[0]: expected DDD, the day of the year; dd is the day of the "
                                  "month, found something else. " LETTERS}}},

    {"addDays",
     {VALUE, PATTERN, {"days", "a whole number"}, TO}, 3, 4, addDays,
     "the date so many days later; earlier, for a negative number",
     {{{"2024-02-28", "yyyy-MM-dd", "2"}, "2024-03-01"},
      {{"20240101", "yyyyMMdd", "-1", "dd.MM.yyyy"}, "31.12.2023"}},
     {{{"99991231", "yyyyMMdd", "1"}, "Arg[3] Len[1]: expected a result in the years 0001 to 9999, found one outside."},
      {{"1231", "MMdd", "1"}, "Arg[2] Len[4]: expected a pattern with year, month and day, found less."}}},

    {"addMonths",
     {VALUE, PATTERN, {"months", "a whole number"}, TO}, 3, 4, addMonths,
     "the same day so many months later; where that month has no such day, its last one",
     {{{"2024-01-31", "yyyy-MM-dd", "1"}, "2024-02-29"},
      {{"2024-01-31", "yyyy-MM-dd", "2"}, "2024-03-31"},
      {{"20240229", "yyyyMMdd", "-12"}, "20230228"}},
     {{{"00010101", "yyyyMMdd", "-1"}, "Arg[3] Len[2]: expected a result in the years 0001 to 9999, found one "
                                       "outside."}}},

    {"addSeconds",
     {VALUE, PATTERN, {"seconds", "a whole number"}, TO}, 3, 4, addSeconds,
     "the time so many seconds later, with the same offset",
     {{{"2024-12-31 23:59:58", "yyyy-MM-dd HH:mm:ss", "3"}, "2025-01-01 00:00:01"},
      {{"2024-12-31T12:00:00+01:00", "yyyy-MM-dd'T'HH:mm:ssXXX", "-3600"}, "2024-12-31T11:00:00+01:00"}}},

    {"daysBetween",
     {{"from", "a date"}, {"to", "a date"}, {"pattern", "how both are written"}}, 3, 3, daysBetween,
     "how many days later `to` is; negative when it is earlier",
     {{{"20240228", "20240301", "yyyyMMdd"}, "2"},
      {{"2024-12-31 23:59", "2024-12-31 00:00", "yyyy-MM-dd HH:mm"}, "0"},
      {{"20250101", "20240101", "yyyyMMdd"}, "-366"}}},

    {"dayOfWeek",
     {{"value", "a date"}, PATTERN}, 2, 2, dayOfWeek,
     "the day of the week, Monday 1 to Sunday 7",
     {{{"20240229", "yyyyMMdd"}, "4"},
      {{"31.12.2023", "dd.MM.yyyy"}, "7"}}},

    {"nearestDate",
     {{"value", "a date without its year"}, {"fromPattern", "how it is written"},
      {"toPattern", "how the result is written"}, {"reference", "a date yyyy-MM-dd; today in UTC when left out"}},
     3, 4, nearestDate,
     "the date in the year that brings it nearest to the reference, the earlier one of two",
     {{{"1231", "MMdd", "yyyyMMdd", "2025-01-02"}, "20241231"},
      {{"0102", "MMdd", "yyyyMMdd", "2024-12-31"}, "20250102"},
      {{"0229", "MMdd", "yyyyMMdd", "2025-07-01"}, "20240229"},
      {{"0301083000", "MMddHHmmss", "yyyy-MM-dd HH:mm:ss"}, "2024-03-01 08:30:00"}},
     {{{"12", "MM", "yyyyMM"}, "Arg[2] Len[2]: expected a pattern with month and day, found less."},
      {{"20200301", "yyyyMMdd", "yyyyMMdd"}, "Arg[2] Len[8]: expected a pattern without year and weekday, found one of "
                                             "them. Both are those of the nearest date."}}},

    {"toZone",
     {VALUE, PATTERN, {"fromZone", "where the value's clock hangs; not asked when the value has its offset"},
      {"toZone", "where the result's clock hangs"}, TO},
     4, 5, toZone,
     "what the clock shows there at the same time",
     {{{"2024-07-01 12:00", "yyyy-MM-dd HH:mm", "Europe/Berlin", "America/New_York"}, "2024-07-01 06:00"},
      {{"20240115233000", "yyyyMMddHHmmss", "UTC", "Asia/Tokyo", "yyyy-MM-dd'T'HH:mm:ssXXX"},
       "2024-01-16T08:30:00+09:00"},
      {{"2024-07-01T12:00:00+02:00", "yyyy-MM-dd'T'HH:mm:ssXXX", "", "UTC"}, "2024-07-01T10:00:00Z"},
      {{"2024-10-27 02:30", "yyyy-MM-dd HH:mm", "Europe/Berlin", "UTC"}, "2024-10-27 00:30"},
      {{"2024-03-31 02:30", "yyyy-MM-dd HH:mm", "Europe/Berlin", "UTC"}, "2024-03-31 01:30"},
      {{"2024-07-01 12:00", "yyyy-MM-dd HH:mm", "-03:30", "UTC"}, "2024-07-01 15:30"}},
     {{{"2024-07-01", "yyyy-MM-dd", "Europe/Atlantis", "UTC"}, "Arg[3] Len[15]: expected a time zone, found another "
                                                               "text. " ZONES}}},

    {"toEpoch",
     {VALUE, PATTERN, {"zone", "where the value's clock hangs; UTC when left out"}, DIGITS}, 2, 4, toEpoch,
     "seconds since 1970-01-01T00:00:00Z, or parts of them",
     {{{"2024-07-01 12:00:00", "yyyy-MM-dd HH:mm:ss"}, "1719835200"},
      {{"2024-07-01 12:00:00", "yyyy-MM-dd HH:mm:ss", "Europe/Berlin"}, "1719828000"},
      {{"1969-12-31", "yyyy-MM-dd"}, "-86400"},
      {{"2024-07-01T12:00:00.678Z", "yyyy-MM-dd'T'HH:mm:ss.SSSXXX", "UTC", "3"}, "1719835200678"}}},

    {"fromEpoch",
     {{"seconds", "since 1970-01-01T00:00:00Z"}, {"pattern", "how the result is written"},
      {"zone", "where the result's clock hangs; UTC when left out"}, DIGITS},
     2, 4, fromEpoch,
     "the time of so many seconds, or parts of them",
     {{{"1719835200", "yyyy-MM-dd HH:mm:ss"}, "2024-07-01 12:00:00"},
      {{"1719835200", "yyyy-MM-dd'T'HH:mm:ssXXX", "Europe/Berlin"}, "2024-07-01T14:00:00+02:00"},
      {{"-1", "HH:mm:ss"}, "23:59:59"},
      {{"1719835200678", "yyyy-MM-dd HH:mm:ss.SSS", "UTC", "3"}, "2024-07-01 12:00:00.678"}},
     {{{"1e9", "HH:mm"}, "Arg[1] Len[3]: expected a time since 1970 of the years 0001 to 9999, found something "
                         "else."}}},

    {"now",
     {{"pattern", "how the result is written"}, {"zone", "where the result's clock hangs; UTC when left out"}},
     1, 2, now,
     "the time of the call; the examples are from a clock that psClock fixes to 2024-02-29T12:30:45.678Z",
     {{{"yyyy-MM-dd'T'HH:mm:ss.SSSXXX"}, "2024-02-29T12:30:45.678Z"},
      {{"yyyyMMddHHmmss", "Asia/Kolkata"}, "20240229180045"}},
     {{{"yyyy-MM-ddThh:mm"}, "Arg[1] Len[16] Offset[10]: expected a letter of dates and times, or quotes around it, "
                             "found something else. " LETTERS}}},
};

#undef LETTERS
#undef ZONES
#undef VALUE
#undef PATTERN
#undef DIGITS
#undef TO
// clang-format on

constexpr const char *kAbout =
    "A pattern says how a date or a time is written: `yyyy` the year, `yy` its last two digits; `MM` the "
    "month, `MMM` Jan, `MMMM` January; `dd` the day, `DDD` the day of the year; `EEE` Mon, `EEEE` Monday; "
    "`HH` the hour, `hh` the hour to 12, with `a` AM or PM; `mm` the minute; `ss` the second; `S` to "
    "`SSSSSSSSS` as many digits of a second; `XXX` the offset from UTC, +02:00 or Z; `XX` +0200 or Z; `xxx` "
    "+02:00, also +00:00; `Z` +0200. `M`, `d`, `H` and `h` alone are one or two digits, and no digit "
    "follows. Other letters are refused; `'T'` is a letter that stands for itself, `''` a quote, and every "
    "other character stands for itself. Names are English, in capitals or not. Years are 0001 to 9999 of the "
    "Gregorian calendar, also before it began; `yy` is in the hundred years from 1969 on, unless the "
    "plug-in's `nFirstYear` says otherwise, and no other year is written so. A pattern with a fault is "
    "refused whatever the value is. A time that a pattern leaves out is midnight; digits of a second that "
    "the result has no room for are cut off. A local time that comes twice, when clocks are put back, is the "
    "first of the two; one that is skipped, when they are put forward, counts on with the offset from "
    "before: both as in RFC 5545. The format `iso8583` has other letters: what its `psDate` calls "
    "`MMDDhhmmss` is `MMddHHmmss` here.";

}  // namespace

constinit const kit::Topic kDate = kit::topic<kFunctions>("Dates and times", kAbout);

void configureDates(const Settings &settings) {
  setFirstYear(settings.nFirstYear);
  Zone::setDirectory(settings.psZoneInfo);
  fixRandom(static_cast<uint64_t>(settings.nSeed));
  fixClock({});
  if (settings.psClock == nullptr) return;
  Moment moment;
  if (readMoment(settings.psClock, "yyyy-MM-dd'T'HH:mm:ss.SSSXXX", moment).expected != nullptr) {
    throw kit::Misconfigured("", &settings, "psClock as 2024-02-29T12:30:45.678Z", "something else");
  }
  fixClock(Instant{secondsOf(moment) - *moment.offset, moment.nanoseconds});
}

}  // namespace cvt::functions

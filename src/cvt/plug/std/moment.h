// moment.h: dates and times of the proleptic Gregorian calendar, years 1 to 9999, without leap seconds.
#pragma once

#include <cstdint>
#include <optional>

namespace cvt::functions {

struct Moment {
  int year = 0;  // 0: not known; the same for month and day
  int month = 0;
  int day = 0;
  int second = 0;             // of the day
  int nanoseconds = 0;        // of the second
  std::optional<int> offset;  // seconds east of UTC, when the text has one

  bool hasDate() const { return year != 0 && month != 0 && day != 0; }
};

// Seconds since 1970-01-01T00:00:00 as the clock on the wall shows them, and back. REQUIRES: a date.
int64_t secondsOf(const Moment &moment);
Moment momentOf(int64_t seconds, int nanoseconds);

inline constexpr int64_t kFirstSecond = -62135596800;  // 0001-01-01T00:00:00
inline constexpr int64_t kLastSecond = 253402300799;   // 9999-12-31T23:59:59

int daysOfMonth(int year, int month);

// Day of the week of a date, Monday 1 to Sunday 7.
int weekdayOf(const Moment &moment);

}  // namespace cvt::functions

#include "moment.h"

#include <chrono>

namespace cvt::functions {

namespace {
constexpr int kDay = 86400;
}

int64_t secondsOf(const Moment &moment) {
  using namespace std::chrono;
  const sys_days date{year{moment.year} / static_cast<int>(moment.month) / moment.day};
  return int64_t{date.time_since_epoch().count()} * kDay + moment.second;
}

Moment momentOf(int64_t seconds, int nanoseconds) {
  using namespace std::chrono;
  const sys_days date = floor<days>(sys_seconds{std::chrono::seconds{seconds}});
  const year_month_day parts{date};
  Moment moment;
  moment.year = int{parts.year()};
  moment.month = static_cast<int>(unsigned{parts.month()});
  moment.day = static_cast<int>(unsigned{parts.day()});
  moment.second = static_cast<int>(seconds - int64_t{date.time_since_epoch().count()} * kDay);
  moment.nanoseconds = nanoseconds;
  return moment;
}

int daysOfMonth(int year, int month) {
  using namespace std::chrono;
  const year_month_day_last end{std::chrono::year{year} / static_cast<int>(month) / last};
  return static_cast<int>(unsigned{end.day()});
}

int weekdayOf(const Moment &moment) {
  using namespace std::chrono;
  const weekday day{sys_days{year{moment.year} / moment.month / moment.day}};
  return static_cast<int>(day.iso_encoding());
}

}  // namespace cvt::functions

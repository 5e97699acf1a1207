#include "date.h"

namespace cvt::iso8583 {

namespace {

int twoDigits(const char *in) {
  return (in[0] - '0') * 10 + in[1] - '0';
}

// Without a year, or with two digits of one, every fourth one is a leap year; without any, each may be.
int daysOf(int month, int year) {
  static constexpr int kDays[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 0) return 31;
  const bool leap = year < 0 || (year % 4 == 0 && (year < 100 || year % 100 != 0 || year % 400 == 0));
  return month == 2 && !leap ? 28 : kDays[month - 1];
}

}  // namespace

bool Date::compile(std::string_view pattern) {
  static constexpr std::string_view kNames[] = {"YY", "MM", "DD", "hh", "mm", "ss"};
  size_t at = 0;
  while (at < pattern.size()) {
    const bool century = pattern.substr(at, 4) == "YYYY";
    size_t which = 0;
    while (which < kParts && pattern.substr(at, 2) != kNames[which]) ++which;
    if (which == kParts || m_at[which] != kAbsent) return false;
    m_at[which] = static_cast<uint8_t>(at);
    if (century) m_century = true;
    at += century ? 4 : 2;
  }
  m_length = at;
  return at != 0;
}

int Date::part(Part which, std::string_view digits) const {
  return m_at[which] == kAbsent ? -1 : twoDigits(digits.data() + m_at[which]);
}

const char *Date::check(std::string_view digits) const {
  int year = part(kYear, digits);
  if (m_century) year = year * 100 + twoDigits(digits.data() + m_at[kYear] + 2);
  const int month = part(kMonth, digits);
  const int day = part(kDay, digits);
  if (month == 0 || month > 12) return "a month from 01 to 12";
  if (day == 0 || day > daysOf(month, year)) return "a day of that month";
  if (part(kHour, digits) > 23) return "an hour from 00 to 23";
  if (part(kMinute, digits) > 59) return "a minute from 00 to 59";
  if (part(kSecond, digits) > 59) return "a second from 00 to 59";
  return nullptr;
}

}  // namespace cvt::iso8583

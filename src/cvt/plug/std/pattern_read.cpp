#include <algorithm>
#include <span>

#include "pattern_tokens.h"

namespace cvt::functions {

namespace {

constexpr int kDay = 86400;
constexpr int kNoon = 12;
constexpr std::string_view kHalves[] = {"AM", "PM"};

int f_firstYear = 1969;

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

bool startsWith(std::string_view text, std::string_view word) {
  return text.size() >= word.size() && std::equal(word.begin(), word.end(), text.begin(),
                                                  [](char a, char b) { return lower(a) == lower(b); });
}

// Reads on behind what is wrong, into what nobody looks at.
class Reader {
 public:
  Reader(std::string_view text, std::string_view pattern)
      : m_text(text), m_tokens(pattern, Use::Read, m_misfit) {}

  Misfit read(Moment &moment) {
    for (Token token; m_tokens.next(token);) {
      if (token.count == 0) {
        literal(token.letter);
      } else {
        part(token.letter, token.count);
      }
    }
    if (m_at < m_text.size()) refuse("the end, as in the pattern", m_at);
    if (m_misfit.expected == nullptr) putTogether();
    if (m_misfit.expected == nullptr) moment = m_moment;
    return m_misfit;
  }

 private:
  void refuse(const char *expected, size_t at) {
    if (m_misfit.expected == nullptr) m_misfit = {expected, false, at};
  }

  void literal(char c) {
    if (!skip(c)) refuse("the character that the pattern has here", m_at);
  }

  bool skip(char c) {
    if (m_at == m_text.size() || m_text[m_at] != c) return false;
    ++m_at;
    return true;
  }

  // Digits, `most` of them unless fewer are allowed.
  int number(size_t least, size_t most, int min, int max, const char *expected) {
    const size_t begin = m_at;
    int value = 0;
    for (; m_at < m_text.size() && m_at - begin < most; ++m_at) {
      const char c = m_text[m_at];
      if (c < '0' || c > '9') break;
      value = value * 10 + (c - '0');
    }
    if (m_at - begin >= least && value >= min && value <= max) return value;
    refuse(expected, begin);
    return min;
  }

  // One of the words, or its first letters; its position from 1.
  int word(std::span<const std::string_view> words, size_t letters, const char *expected) {
    for (size_t i = 0; i < words.size(); ++i) {
      const std::string_view name = words[i].substr(0, letters);
      if (!startsWith(m_text.substr(m_at), name)) continue;
      m_at += name.size();
      return static_cast<int>(i) + 1;
    }
    refuse(expected, m_at);
    return 1;
  }

  void part(char letter, size_t count) {
    switch (letter) {
      case 'y':
        return count == 2 ? shortYear() : void(m_moment.year = number(4, 4, 1, 9999, "a year, 0001 to 9999"));
      case 'M':
        m_moment.month = count > 2 ? word(kMonths, lettersOf(count), "the name of a month in English")
                                   : number(count, 2, 1, 12, "a month, 01 to 12");
        return;
      case 'd':
        m_dayAt = m_at;
        m_moment.day = number(count, 2, 1, 31, "a day of the month, 01 to 31");
        return;
      case 'D':
        m_dayOfYearAt = m_at;
        m_dayOfYear = number(3, 3, 1, 366, "a day of the year, 001 to 366");
        return;
      case 'E':
        m_weekdayAt = m_at;
        m_weekday = word(kWeekdays, lettersOf(count), "the name of a weekday in English");
        return;
      default:
        return timePart(letter, count);
    }
  }

  void shortYear() {
    const int rest = number(2, 2, 0, 99, "a year of two digits");
    m_moment.year = f_firstYear + (rest - f_firstYear % 100 + 100) % 100;
  }

  void timePart(char letter, size_t count) {
    switch (letter) {
      case 'H':
        m_hour = number(count, 2, 0, 23, "an hour, 00 to 23");
        return;
      case 'h':
        m_hour12At = m_at;
        m_hour12 = number(count, 2, 1, 12, "an hour, 01 to 12") % kNoon;
        return;
      case 'a':
        m_halfAt = m_at;
        m_half = word(kHalves, 2, "AM or PM") - 1;
        return;
      case 'm':
        m_moment.second += 60 * number(2, 2, 0, 59, "a minute, 00 to 59");
        return;
      case 's':
        m_moment.second += number(2, 2, 0, 59, "a second, 00 to 59; leap seconds have no place here");
        return;
      case 'S':
        m_moment.nanoseconds =
            number(count, count, 0, 999999999, "as many digits of a second as the pattern");
        for (; count < 9; ++count) m_moment.nanoseconds *= 10;
        return;
      default:
        return offset(letter == 'X', count == 3);
    }
  }

  void offset(bool z, bool colon) {
    if (z && skip('Z')) {
      m_moment.offset = 0;
      return;
    }
    const bool negative = skip('-');
    if (!negative && !skip('+'))
      refuse(z ? "an offset with its sign, or Z" : "an offset with its sign", m_at);
    const int hours = number(2, 2, 0, 23, "an offset's hours, 00 to 23");
    if (colon) literal(':');
    const int seconds = hours * 3600 + 60 * number(2, 2, 0, 59, "an offset's minutes, 00 to 59");
    m_moment.offset = negative ? -seconds : seconds;
  }

  // The parts put together and held against each other.
  void putTogether() {
    if (m_dayOfYear != 0) setDayOfYear();
    const int year = m_moment.year != 0 ? m_moment.year : 2000;  // unknown: a leap year gives it the benefit
    if (m_moment.month != 0 && m_moment.day > daysOfMonth(year, m_moment.month)) {
      refuse("a day that the month has", m_dayAt);
    }
    if (m_weekday != 0 && m_moment.hasDate() && weekdayOf(m_moment) != m_weekday) {
      refuse("the weekday of the date", m_weekdayAt);
    }
    if (m_hour12 >= 0) setHour12();
    if (m_half >= 0 && m_hour / kNoon != m_half) refuse("the half of the day that the hour is in", m_halfAt);
    if (m_hour > 0) m_moment.second += m_hour * 3600;
  }

  void setHour12() {
    const int hour = m_hour12 + m_half * kNoon;
    if (m_hour >= 0 && m_hour != hour) return refuse("the hour to 12 of the hour", m_hour12At);
    m_hour = hour;
  }

  void setDayOfYear() {
    const int64_t first = secondsOf({m_moment.year, 1, 1, 0, 0, {}});
    const Moment date = momentOf(first + int64_t{m_dayOfYear - 1} * kDay, 0);
    if (date.year != m_moment.year) return refuse("a day that the year has", m_dayOfYearAt);
    const bool same = (m_moment.month == 0 || m_moment.month == date.month) &&
                      (m_moment.day == 0 || m_moment.day == date.day);
    if (!same) return refuse("the day of the year that the date is", m_dayOfYearAt);
    m_moment.month = date.month;
    m_moment.day = date.day;
  }

  std::string_view m_text;
  Misfit m_misfit;
  Tokens m_tokens;
  size_t m_at = 0;
  Moment m_moment;
  int m_dayOfYear = 0;
  size_t m_dayOfYearAt = 0;
  size_t m_dayAt = 0;
  int m_weekday = 0;
  size_t m_weekdayAt = 0;
  int m_hour = -1;
  int m_hour12 = -1;
  size_t m_hour12At = 0;
  int m_half = -1;  // 0 before noon, 1 after
  size_t m_halfAt = 0;
};

}  // namespace

void setFirstYear(int year) {
  f_firstYear = year;
}

int firstYear() {
  return f_firstYear;
}

Misfit readMoment(std::string_view text, std::string_view pattern, Moment &moment) {
  return Reader(text, pattern).read(moment);
}

}  // namespace cvt::functions

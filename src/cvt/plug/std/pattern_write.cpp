#include <algorithm>
#include <cstring>
#include <span>

#include "pattern_tokens.h"

namespace cvt::functions {

namespace {

constexpr int kDay = 86400;
constexpr int kNoon = 12;

class Writer {
 public:
  Writer(const Moment &moment, std::string_view pattern, char *out)
      : m_moment(moment), m_tokens(pattern, Use::Write, m_misfit), m_begin(out), m_next(out) {}

  Misfit write(size_t &length) {
    for (Token token; m_tokens.next(token);) {
      if (token.count == 0) {
        *m_next++ = token.letter;
      } else if (known(token.letter)) {
        part(token.letter, token.count);
      } else {
        m_tokens.refuse("parts that are known from the value");
      }
    }
    length = static_cast<size_t>(m_next - m_begin);
    return m_misfit;
  }

 private:
  bool known(char letter) const {
    switch (letter) {
      case 'y':
        return m_moment.year != 0;
      case 'M':
        return m_moment.month != 0;
      case 'd':
        return m_moment.day != 0;
      case 'D':
      case 'E':
        return m_moment.hasDate();
      case 'X':
      case 'x':
      case 'Z':
        return m_moment.offset.has_value();
      default:
        return true;
    }
  }

  void number(int value, size_t digits) {
    if (digits == 2 && value < 100) {
      *m_next++ = static_cast<char>('0' + value / 10);
      *m_next++ = static_cast<char>('0' + value % 10);
      return;
    }
    char reversed[10];
    size_t count = 0;
    for (; value > 0 || count < digits; value /= 10) reversed[count++] = static_cast<char>('0' + value % 10);
    m_next = std::reverse_copy(reversed, reversed + count, m_next);
  }

  void text(std::string_view word) {
    std::memcpy(m_next, word.data(), word.size());
    m_next += word.size();
  }

  void part(char letter, size_t count) {
    const int hour = m_moment.second / 3600;
    switch (letter) {
      case 'y':
        return count == 2 ? shortYear() : number(m_moment.year, count);
      case 'M':
        return count > 2 ? name(kMonths, m_moment.month, count) : number(m_moment.month, count);
      case 'd':
        return number(m_moment.day, count);
      case 'D':
        return number(dayOfYear(), count);
      case 'E':
        return name(kWeekdays, weekdayOf(m_moment), count);
      case 'H':
        return number(hour, count);
      case 'h':
        return number((hour + kNoon - 1) % kNoon + 1, count);
      case 'a':
        return text(hour < kNoon ? "AM" : "PM");
      case 'm':
        return number(m_moment.second / 60 % 60, count);
      case 's':
        return number(m_moment.second % 60, count);
      case 'S':
        return fraction(count);
      default:
        return offset(letter == 'X', count == 3);
    }
  }

  // Any other year would be read as another one.
  void shortYear() {
    const int first = firstYear();
    if (m_moment.year < first || m_moment.year >= first + 100) {
      return m_tokens.refuse("a year that two digits can say; write yyyy");
    }
    number(m_moment.year % 100, 2);
  }

  void name(std::span<const std::string_view> names, int which, size_t count) {
    text(names[static_cast<size_t>(which) - 1].substr(0, lettersOf(count)));
  }

  int dayOfYear() const {
    const Moment first{m_moment.year, 1, 1, m_moment.second, 0, {}};
    return static_cast<int>((secondsOf(m_moment) - secondsOf(first)) / kDay) + 1;
  }

  // What there is no room for is cut off: a clock shows no second before it has come.
  void fraction(size_t count) {
    int value = m_moment.nanoseconds;
    for (size_t i = count; i < 9; ++i) value /= 10;
    number(value, count);
  }

  void offset(bool z, bool colon) {
    const int seconds = *m_moment.offset;
    if (seconds % 60 != 0) return m_tokens.refuse("no offset, as it has seconds at that time");
    if (z && seconds == 0) return text("Z");
    *m_next++ = seconds < 0 ? '-' : '+';
    const int minutes = (seconds < 0 ? -seconds : seconds) / 60;
    number(minutes / 60, 2);
    if (colon) *m_next++ = ':';
    number(minutes % 60, 2);
  }

  const Moment &m_moment;
  Misfit m_misfit;
  Tokens m_tokens;
  char *m_begin;
  char *m_next;
};

}  // namespace

Misfit writeMoment(const Moment &moment, std::string_view pattern, char *out, size_t &length) {
  return Writer(moment, pattern, out).write(length);
}

}  // namespace cvt::functions

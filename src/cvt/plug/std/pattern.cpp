#include "pattern.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <span>

namespace cvt::functions {

namespace {

constexpr int kDay = 86400;
constexpr int kNoon = 12;

constexpr std::string_view kMonths[] = {"January",   "February", "March",    "April",
                                        "May",       "June",     "July",     "August",
                                        "September", "October",  "November", "December"};
constexpr std::string_view kWeekdays[] = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                          "Friday", "Saturday", "Sunday"};
constexpr std::string_view kHalves[] = {"AM", "PM"};

// Letters of a name: three letters of a pattern stand for three of it, four for all.
constexpr size_t lettersOf(size_t count) {
  return count == 3 ? 3 : std::string_view::npos;
}

int f_firstYear = 1969;

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

bool startsWith(std::string_view text, std::string_view word) {
  return text.size() >= word.size() && std::equal(word.begin(), word.end(), text.begin(),
                                                  [](char a, char b) { return lower(a) == lower(b); });
}

// --- Patterns --------------------------------------------------------------------------------------------

// A part of a date (a letter, so many times), a character that stands for itself (count 0), or the end.
struct Token {
  char letter = 0;
  size_t count = 0;
  bool atEnd = false;
};

struct Letter {
  char letter;
  size_t min;
  size_t max;
};
constexpr Letter kLetters[] = {{'y', 2, 4}, {'M', 1, 4}, {'d', 1, 2}, {'D', 3, 3}, {'E', 3, 4},
                               {'H', 1, 2}, {'h', 1, 2}, {'a', 1, 1}, {'m', 2, 2}, {'s', 2, 2},
                               {'S', 1, 9}, {'X', 2, 3}, {'x', 3, 3}, {'Z', 1, 1}};

bool isLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// Takes a pattern apart. It throws Misfit: the callers' ends are far away from here.
class Tokens {
 public:
  explicit Tokens(std::string_view pattern) : m_pattern(pattern) {
    if (pattern.size() > kMaxPattern) refuse("a pattern of at most 64 bytes");
  }

  size_t at() const { return m_begin; }

  [[noreturn]] void refuse(const char *expected) const { throw Misfit{expected, true, m_begin}; }

  Token next() {
    m_begin = m_at;
    if (m_at == m_pattern.size()) return end();
    const char c = m_pattern[m_at];
    if (c == '\'') return quote();
    if (m_quoted || !isLetter(c)) return plain();
    while (m_at < m_pattern.size() && m_pattern[m_at] == c) ++m_at;
    const size_t count = m_at - m_begin;
    const auto *known = std::find_if(std::begin(kLetters), std::end(kLetters),
                                     [c](const Letter &letter) { return letter.letter == c; });
    if (known == std::end(kLetters)) refuse("a letter of dates and times, or quotes around it");
    if (count < known->min || count > known->max || (c == 'y' && count == 3)) {
      refuse("as many of the letter as it can stand for");
    }
    see(c);
    return {c, count, false};
  }

 private:
  Token end() {
    if (m_quoted) refuse("a quote at the end of the text");
    if (has('m') && !has('H') && !has('h')) {
      m_begin = m_minutesAt;
      refuse("hours beside minutes; months are MM");
    }
    return {0, 0, true};
  }

  bool has(char letter) const { return (m_seen >> (letter - 'A') & 1) != 0; }

  // Most often, the second one was meant for something else.
  void see(char letter) {
    if (has(letter)) refuse("each part once; months are MM, minutes mm");
    m_seen |= uint64_t{1} << (letter - 'A');
    if (letter == 'm') m_minutesAt = m_begin;
  }

  Token plain() { return {m_pattern[m_at++], 0, false}; }

  Token quote() {
    ++m_at;
    if (m_at < m_pattern.size() && m_pattern[m_at] == '\'') return plain();
    m_quoted = !m_quoted;
    return next();
  }

  std::string_view m_pattern;
  size_t m_begin = 0;
  size_t m_at = 0;
  bool m_quoted = false;
  uint64_t m_seen = 0;  // letters
  size_t m_minutesAt = 0;
};

// --- Reading ---------------------------------------------------------------------------------------------

class Reader {
 public:
  Reader(std::string_view text, std::string_view pattern) : m_text(text), m_tokens(pattern) {}

  Moment read() {
    for (Token token = m_tokens.next(); !token.atEnd; token = m_tokens.next()) {
      if (token.count == 0) {
        literal(token.letter);
      } else {
        part(token.letter, token.count);
      }
    }
    if (m_at < m_text.size()) refuse("the end, as in the pattern", m_at);
    return whole();
  }

 private:
  [[noreturn]] static void refuse(const char *expected, size_t at) { throw Misfit{expected, false, at}; }

  void literal(char c) {
    if (m_at == m_text.size() || m_text[m_at] != c) refuse("the character that the pattern has here", m_at);
    ++m_at;
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
    if (m_at - begin < least || value < min || value > max) refuse(expected, begin);
    return value;
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
        m_dayAt = m_at;
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
    if (z && m_at < m_text.size() && m_text[m_at] == 'Z') {
      ++m_at;
      m_moment.offset = 0;
      return;
    }
    const bool negative = m_at < m_text.size() && m_text[m_at] == '-';
    if (!negative && (m_at == m_text.size() || m_text[m_at] != '+')) {
      refuse(z ? "an offset with its sign, or Z" : "an offset with its sign", m_at);
    }
    ++m_at;
    const int hours = number(2, 2, 0, 23, "an offset's hours, 00 to 23");
    if (colon) literal(':');
    const int seconds = hours * 3600 + 60 * number(2, 2, 0, 59, "an offset's minutes, 00 to 59");
    m_moment.offset = negative ? -seconds : seconds;
  }

  // The parts put together and held against each other.
  Moment whole() {
    if (m_dayOfYear != 0) fromDayOfYear();
    const int year = m_moment.year != 0 ? m_moment.year : 2000;  // unknown: a leap year gives it the benefit
    if (m_moment.month != 0 && m_moment.day > daysOfMonth(year, m_moment.month)) {
      refuse("a day that the month has", m_dayAt);
    }
    if (m_weekday != 0 && m_moment.hasDate() && weekdayOf(m_moment) != m_weekday) {
      refuse("the weekday of the date", m_weekdayAt);
    }
    if (m_hour12 >= 0 && m_half < 0) m_tokens.refuse("an a (AM or PM) beside hours to 12");
    if (m_hour12 >= 0) m_hour = m_hour12 + m_half * kNoon;
    if (m_half >= 0 && m_hour / kNoon != m_half) refuse("the half of the day that the hour is in", m_halfAt);
    m_moment.second += m_hour * 3600;
    return m_moment;
  }

  void fromDayOfYear() {
    if (m_moment.year == 0) m_tokens.refuse("a year beside the day of the year");
    const int64_t first = secondsOf({m_moment.year, 1, 1, 0, 0, {}});
    const Moment date = momentOf(first + int64_t{m_dayOfYear - 1} * kDay, 0);
    if (date.year != m_moment.year) refuse("a day that the year has", m_dayAt);
    m_moment.month = date.month;
    m_moment.day = date.day;
  }

  std::string_view m_text;
  Tokens m_tokens;
  size_t m_at = 0;
  Moment m_moment;
  int m_dayOfYear = 0;
  size_t m_dayAt = 0;
  int m_weekday = 0;
  size_t m_weekdayAt = 0;
  int m_hour = 0;
  int m_hour12 = -1;
  int m_half = -1;  // 0 before noon, 1 after
  size_t m_halfAt = 0;
};

// --- Writing ---------------------------------------------------------------------------------------------

class Writer {
 public:
  Writer(const Moment &moment, std::string_view pattern, char *out)
      : m_moment(moment), m_tokens(pattern), m_begin(out), m_next(out) {}

  size_t write() {
    for (Token token = m_tokens.next(); !token.atEnd; token = m_tokens.next()) {
      if (token.count == 0) {
        *m_next++ = token.letter;
      } else {
        part(token.letter, token.count);
      }
    }
    return static_cast<size_t>(m_next - m_begin);
  }

 private:
  void require(bool known) const {
    if (!known) m_tokens.refuse("parts that are known from the value");
  }

  void number(int value, size_t digits) {
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
        require(m_moment.year != 0);
        return number(count == 2 ? m_moment.year % 100 : m_moment.year, count);
      case 'M':
        require(m_moment.month != 0);
        return count > 2 ? name(kMonths, m_moment.month, count) : number(m_moment.month, count);
      case 'd':
        require(m_moment.day != 0);
        return number(m_moment.day, count);
      case 'D':
        require(m_moment.hasDate());
        return number(dayOfYear(), count);
      case 'E':
        require(m_moment.hasDate());
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
    require(m_moment.offset.has_value());
    const int seconds = *m_moment.offset;
    if (seconds % 60 != 0) m_tokens.refuse("no offset, as it has seconds at that time");
    if (z && seconds == 0) return text("Z");
    *m_next++ = seconds < 0 ? '-' : '+';
    const int minutes = (seconds < 0 ? -seconds : seconds) / 60;
    number(minutes / 60, 2);
    if (colon) *m_next++ = ':';
    number(minutes % 60, 2);
  }

  const Moment &m_moment;
  Tokens m_tokens;
  char *m_begin;
  char *m_next;
};

}  // namespace

void setFirstYear(int year) {
  f_firstYear = year;
}

Misfit readMoment(std::string_view text, std::string_view pattern, Moment &moment) {
  try {
    moment = Reader(text, pattern).read();
    return {};
  } catch (const Misfit &misfit) {
    return misfit;
  }
}

Misfit writeMoment(const Moment &moment, std::string_view pattern, char *out, size_t &length) {
  try {
    length = Writer(moment, pattern, out).write();
    return {};
  } catch (const Misfit &misfit) {
    return misfit;
  }
}

}  // namespace cvt::functions

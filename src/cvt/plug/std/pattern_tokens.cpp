#include "pattern_tokens.h"

#include <algorithm>
#include <iterator>

#include "kit/bytes.h"

namespace cvt::functions {

namespace {

struct Letter {
  char letter;
  size_t min;
  size_t max;
  const char *expected;  // in place of any other number of it
};
// Y is none of them, but often written for y.
constexpr Letter kLetters[] = {{'y', 2, 4, "yyyy or yy, the year"},
                               {'M', 1, 4, "M to MMMM, the month"},
                               {'d', 1, 2, "dd or d, the day of the month; DDD is the day of the year"},
                               {'D', 3, 3, "DDD, the day of the year; dd is the day of the month"},
                               {'E', 3, 4, "EEE or EEEE, the weekday"},
                               {'H', 1, 2, "HH or H, the hour"},
                               {'h', 1, 2, "hh or h, the hour to 12"},
                               {'a', 1, 1, "one a, AM or PM"},
                               {'m', 2, 2, "mm, the minute"},
                               {'s', 2, 2, "ss, the second"},
                               {'S', 1, 9, "one to nine S, digits of a second"},
                               {'X', 2, 3, "XXX or XX, the offset from UTC"},
                               {'x', 3, 3, "xxx, the offset from UTC"},
                               {'Z', 1, 1, "one Z, the offset from UTC"},
                               {'Y', 1, 0, "yyyy, the year"}};
constexpr std::string_view kOffsets = "XxZ";

bool isLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isNumber(const Token &token) {
  constexpr std::string_view kNumbers = "yMdDHhmsS";
  return kNumbers.find(token.letter) != kNumbers.npos && (token.letter != 'M' || token.count < 3);
}

bool beginsWithDigit(const Token &token) {
  return token.count == 0 ? token.letter >= '0' && token.letter <= '9' : isNumber(token);
}

// Takes a pattern apart.
class Lesson {
 public:
  Lesson(std::string_view pattern, Misfit &misfit) : m_pattern(pattern), m_misfit(misfit) {}

  void learn(KnownPattern &known) {
    known.length = known.count = 0;
    known.toRead = nullptr;
    size_t count = 0;
    for (Token token; next(token);) known.tokens[count++] = {token, m_begin};
    if (m_misfit.expected != nullptr) return;
    std::copy(m_pattern.begin(), m_pattern.end(), known.text);
    known.length = m_pattern.size();
    known.count = count;
    known.toRead = toRead();
  }

 private:
  bool next(Token &token);
  void part(Token &token);
  void end();
  const char *toRead() const;

  bool seen(char letter) const { return (m_seen >> (letter - 'A') & 1) != 0; }
  bool seenOffset() const {
    return std::any_of(kOffsets.begin(), kOffsets.end(), [&](char c) { return seen(c); });
  }
  void refuse(const char *expected) {
    if (m_misfit.expected == nullptr) m_misfit = {expected, true, m_begin};
  }

  std::string_view m_pattern;
  Misfit &m_misfit;
  size_t m_begin = 0;  // of the last token
  size_t m_at = 0;
  bool m_quoted = false;
  bool m_openEnd = false;  // the last token was a number that may go on
  uint64_t m_seen = 0;     // letters
  size_t m_minutesAt = 0;
};

bool Lesson::next(Token &token) {
  for (; m_at < m_pattern.size() && m_pattern[m_at] == '\''; ++m_at) {
    m_begin = m_at;
    if (m_pattern.substr(m_at, 2) == "''") {
      m_at += 2;
      token = {'\'', 0};
      m_openEnd = false;
      return m_misfit.expected == nullptr;
    }
    m_quoted = !m_quoted;
  }
  m_begin = m_at;
  if (m_at == m_pattern.size()) {
    end();
    return false;
  }
  if (m_quoted || !isLetter(m_pattern[m_at])) {
    token = {m_pattern[m_at++], 0};
  } else {
    part(token);
  }
  if (m_openEnd && beginsWithDigit(token)) refuse("something between a number without zeros and more digits");
  m_openEnd = token.count == 1 && token.letter != 'S' && isNumber(token);
  return m_misfit.expected == nullptr;
}

void Lesson::part(Token &token) {
  const char c = m_pattern[m_at];
  while (m_at < m_pattern.size() && m_pattern[m_at] == c) ++m_at;
  token = {c, m_at - m_begin};
  const Letter *const known = std::find_if(std::begin(kLetters), std::end(kLetters),
                                           [c](const Letter &letter) { return letter.letter == c; });
  if (known == std::end(kLetters)) return refuse("a letter of dates and times, or quotes around it");
  if (token.count < known->min || token.count > known->max || (c == 'y' && token.count == 3)) {
    return refuse(known->expected);
  }
  // Most often, the second one was meant for something else.
  if (seen(c)) refuse("each part once; months are MM, minutes mm");
  if (kOffsets.find(c) != kOffsets.npos && seenOffset()) refuse("one offset from UTC");
  m_seen |= uint64_t{1} << (c - 'A');
  if (c == 'm') m_minutesAt = m_begin;
}

void Lesson::end() {
  if (m_quoted) refuse("a quote at the end of the text");
  if (seen('m') && !seen('H') && !seen('h')) {
    m_begin = m_minutesAt;
    refuse("hours beside minutes; months are MM");
  }
}

const char *Lesson::toRead() const {
  if (seen('h') && !seen('a')) return "an a (AM or PM) beside hours to 12";
  if (seen('a') && !seen('h') && !seen('H')) return "hours beside AM or PM";
  if (seen('D') && !seen('y')) return "a year beside the day of the year";
  return nullptr;
}

// The pattern taken apart; null for one with a fault.
const KnownPattern *find(std::string_view pattern, Misfit &misfit) {
  static constexpr size_t kKept = 8;
  static KnownPattern kept[kKept];
  static size_t oldest = 0;
  if (pattern.size() > kMaxPattern) {
    misfit = {"a pattern of at most 64 bytes", true, 0};
    return nullptr;
  }
  for (const KnownPattern &known : kept) {
    const bool same =
        known.length == pattern.size() && kit::equalShort(known.text, pattern.data(), pattern.size());
    if (same) return &known;
  }
  KnownPattern &made = kept[oldest];
  Lesson(pattern, misfit).learn(made);
  if (misfit.expected != nullptr) return nullptr;
  oldest = (oldest + 1) % kKept;
  return &made;
}

}  // namespace

Tokens::Tokens(std::string_view pattern, Use use, Misfit &misfit)
    : m_misfit(misfit), m_known(find(pattern, misfit)) {
  m_begin = pattern.size();
  if (m_known != nullptr && use == Use::Read && m_known->toRead != nullptr) refuse(m_known->toRead);
}

bool hasPart(std::string_view pattern, char letter) {
  Misfit misfit;
  Tokens tokens(pattern, Use::Write, misfit);
  for (Token token; tokens.next(token);) {
    if (token.count > 0 && token.letter == letter) return true;
  }
  return false;
}

}  // namespace cvt::functions

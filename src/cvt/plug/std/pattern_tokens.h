// pattern_tokens.h: a pattern of dates and times taken apart.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "pattern.h"

namespace cvt::functions {

inline constexpr std::string_view kMonths[] = {"January",   "February", "March",    "April",
                                               "May",       "June",     "July",     "August",
                                               "September", "October",  "November", "December"};
inline constexpr std::string_view kWeekdays[] = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                                 "Friday", "Saturday", "Sunday"};

// Letters of a name: three letters of a pattern stand for three of it, four for all.
constexpr size_t lettersOf(size_t count) {
  return count == 3 ? 3 : std::string_view::npos;
}

// A part of a date, a letter so many times; or a character that stands for itself, count 0.
struct Token {
  char letter = 0;
  size_t count = 0;
};

// A pattern without faults, taken apart: those used last are kept, since configurations have few.
struct KnownPattern;

// What is wrong is noted in a Misfit, the first of all that use it; then the tokens are at their end.
class Tokens {
 public:
  Tokens(std::string_view pattern, Misfit &misfit)
      : m_pattern(pattern), m_misfit(misfit), m_known(find(pattern)) {
    if (pattern.size() > kMaxPattern) refuse("a pattern of at most 64 bytes");
  }

  // False at the end.
  bool next(Token &token);

  // Notes that the last token is wrong.
  void refuse(const char *expected) {
    if (m_misfit.expected == nullptr) m_misfit = {expected, true, m_begin};
  }

 private:
  // Takes the pattern apart, for patterns that are not known.
  struct Anew {};
  Tokens(std::string_view pattern, Misfit &misfit, Anew) : m_pattern(pattern), m_misfit(misfit) {}
  static const KnownPattern *find(std::string_view pattern);
  static bool learn(std::string_view pattern, KnownPattern &known);

  bool readNext(Token &token);
  void part(Token &token);
  void end();
  bool seen(char letter) const { return (m_seen >> (letter - 'A') & 1) != 0; }

  std::string_view m_pattern;
  Misfit &m_misfit;
  const KnownPattern *m_known = nullptr;
  size_t m_position = 0;  // of the next token of a known pattern
  size_t m_begin = 0;     // of the last token
  size_t m_at = 0;
  bool m_quoted = false;
  bool m_openEnd = false;  // the last token was a number that may go on
  uint64_t m_seen = 0;     // letters
  size_t m_minutesAt = 0;
};

}  // namespace cvt::functions

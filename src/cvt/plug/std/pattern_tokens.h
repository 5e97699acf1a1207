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
struct KnownPattern {
  char text[kMaxPattern];
  size_t length = 0;
  struct Placed {
    Token token;
    size_t begin = 0;
  };
  Placed tokens[kMaxPattern];
  size_t count = 0;
  const char *toRead = nullptr;  // what is missing in it to read a text
};

// What a pattern is for. A text that is to be read must say what its parts mean: hours to 12 their half of the day.
enum class Use { Read, Write };

// What is wrong is noted in a Misfit, the first of all that use it; then the tokens are at their end. A fault of the
// pattern is noted before the first token, whatever the text is.
class Tokens {
 public:
  Tokens(std::string_view pattern, Use use, Misfit &misfit);

  // False at the end.
  bool next(Token &token) {
    if (m_misfit.expected != nullptr) return false;
    if (m_position == m_known->count) {
      m_begin = m_known->length;
      return false;
    }
    const KnownPattern::Placed &known = m_known->tokens[m_position++];
    token = known.token;
    m_begin = known.begin;
    return true;
  }

  // Notes that the last token is wrong.
  void refuse(const char *expected) {
    if (m_misfit.expected == nullptr) m_misfit = {expected, true, m_begin};
  }

 private:
  Misfit &m_misfit;
  const KnownPattern *m_known;
  size_t m_position = 0;  // of the next token
  size_t m_begin = 0;     // of the last token
};

}  // namespace cvt::functions

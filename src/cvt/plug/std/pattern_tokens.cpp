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
};
constexpr Letter kLetters[] = {{'y', 2, 4}, {'M', 1, 4}, {'d', 1, 2}, {'D', 3, 3}, {'E', 3, 4},
                               {'H', 1, 2}, {'h', 1, 2}, {'a', 1, 1}, {'m', 2, 2}, {'s', 2, 2},
                               {'S', 1, 9}, {'X', 2, 3}, {'x', 3, 3}, {'Z', 1, 1}};

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

}  // namespace

struct KnownPattern {
  char text[kMaxPattern];
  size_t length = 0;
  struct Placed {
    Token token;
    size_t begin = 0;
  };
  Placed tokens[kMaxPattern];
  size_t count = 0;
};

const KnownPattern *Tokens::find(std::string_view pattern) {
  static constexpr size_t kKept = 8;
  static KnownPattern kept[kKept];
  static size_t oldest = 0;
  if (pattern.empty() || pattern.size() > kMaxPattern) return nullptr;
  for (const KnownPattern &known : kept) {
    const bool same =
        known.length == pattern.size() && kit::equalShort(known.text, pattern.data(), pattern.size());
    if (same) return &known;
  }
  KnownPattern &made = kept[oldest];
  made.length = 0;
  if (!learn(pattern, made)) return nullptr;
  oldest = (oldest + 1) % kKept;
  return &made;
}

// False for a pattern with a fault, which is told by whoever uses it.
bool Tokens::learn(std::string_view pattern, KnownPattern &known) {
  Misfit misfit;
  Tokens tokens(pattern, misfit, Anew());
  known.count = 0;
  for (Token token; tokens.readNext(token);) known.tokens[known.count++] = {token, tokens.m_begin};
  if (misfit.expected != nullptr) return false;
  std::copy(pattern.begin(), pattern.end(), known.text);
  known.length = pattern.size();
  return true;
}

bool Tokens::next(Token &token) {
  if (m_known == nullptr) return readNext(token);
  if (m_position == m_known->count) {
    m_begin = m_pattern.size();
    return false;
  }
  const KnownPattern::Placed &known = m_known->tokens[m_position++];
  token = known.token;
  m_begin = known.begin;
  return m_misfit.expected == nullptr;
}

bool Tokens::readNext(Token &token) {
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

void Tokens::part(Token &token) {
  const char c = m_pattern[m_at];
  while (m_at < m_pattern.size() && m_pattern[m_at] == c) ++m_at;
  token = {c, m_at - m_begin};
  const Letter *const known = std::find_if(std::begin(kLetters), std::end(kLetters),
                                           [c](const Letter &letter) { return letter.letter == c; });
  if (known == std::end(kLetters)) return refuse("a letter of dates and times, or quotes around it");
  if (token.count < known->min || token.count > known->max || (c == 'y' && token.count == 3)) {
    return refuse("as many of the letter as it can stand for");
  }
  // Most often, the second one was meant for something else.
  if (seen(c)) refuse("each part once; months are MM, minutes mm");
  m_seen |= uint64_t{1} << (c - 'A');
  if (c == 'm') m_minutesAt = m_begin;
}

void Tokens::end() {
  if (m_quoted) refuse("a quote at the end of the text");
  if (seen('m') && !seen('H') && !seen('h')) {
    m_begin = m_minutesAt;
    refuse("hours beside minutes; months are MM");
  }
}

}  // namespace cvt::functions

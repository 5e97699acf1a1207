// plain_digits.h: numbers as records mostly have them, to and from canonical text: digits with zeros in front, without
// a sign, the point implied. What number.h does for every form, for this one without a detour.
#pragma once

#include <string_view>

#include "bytes.h"
#include "number.h"

namespace cvt::kit {

inline bool isPlainDigits(const NumberSpec &spec) {
  return spec.form == NumberForm::Text && spec.fill == NumberFill::Zeros && spec.sign == NumberSign::None &&
         !(spec.point && spec.decimals > 0);
}

// Digits that were read, and what becomes of them.
class PlainDigits {
 public:
  PlainDigits(const char *in, size_t bytes, size_t decimals)
      : m_in(in), m_whole(bytes - decimals), m_decimals(decimals), m_digits(isDigits(in, bytes)) {
    if (m_whole > 0) m_zeros = countStart(in, m_whole - 1, '0');
  }

  // False: something else is among them, which readNumber tells.
  bool digits() const { return m_digits; }

  size_t length() const { return wholeLength() + (m_decimals == 0 ? 0 : 1 + m_decimals); }

  void put(char *out) const {
    const size_t whole = wholeLength();
    if (m_whole == 0) *out = '0';
    copyShort(out, m_in + m_zeros, m_whole - m_zeros);
    if (m_decimals == 0) return;
    out[whole] = '.';
    copyShort(out + whole + 1, m_in + m_whole, m_decimals);
  }

 private:
  size_t wholeLength() const { return m_whole == 0 ? 1 : m_whole - m_zeros; }

  const char *m_in;
  size_t m_whole;  // digits in front of the decimals
  size_t m_decimals;
  size_t m_zeros = 0;  // of them, those that canonical text leaves out
  bool m_digits;
};

// Digits in front of the point of a value of nothing but digits, with all of its decimals behind a point; 0 when it is
// something else.
inline size_t wholeDigits(std::string_view value, size_t decimals) {
  const size_t behind = decimals == 0 ? 0 : decimals + 1;
  if (value.size() <= behind) return 0;
  const size_t whole = value.size() - behind;
  if (!isDigits(value.data(), whole)) return 0;
  return decimals == 0 || (value[whole] == '.' && isDigits(value.data() + whole + 1, decimals)) ? whole : 0;
}

// Writes such a value as exactly `bytes` digits. False when it is none, or too long, and nothing was written:
// writeNumber does it then, or tells what is wrong.
inline bool putPlainDigits(std::string_view value, size_t decimals, char *out, size_t bytes) {
  const size_t whole = wholeDigits(value, decimals);
  if (whole == 0 || whole > bytes - decimals) return false;
  const size_t zeros = bytes - decimals - whole;
  fillShort(out, '0', zeros);
  copyShort(out + zeros, value.data(), whole);
  if (decimals != 0) copyShort(out + zeros + whole, value.data() + whole + 1, decimals);
  return true;
}

}  // namespace cvt::kit

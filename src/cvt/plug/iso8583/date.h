// date.h: digits that are a date or a time, checked by a pattern.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace cvt::iso8583 {

// A pattern of YYYY, YY, MM, DD, hh, mm and ss, each once at most.
class Date {
 public:
  // False when it is no pattern.
  bool compile(std::string_view pattern);

  size_t length() const { return m_length; }

  // Null when the digits are a date; else what was expected of them. REQUIRES: length() digits.
  const char *check(std::string_view digits) const;

 private:
  enum Part : unsigned char { kYear, kMonth, kDay, kHour, kMinute, kSecond, kParts };
  static constexpr uint8_t kAbsent = 0xFF;

  int part(Part which, std::string_view digits) const;

  uint8_t m_at[kParts] = {kAbsent, kAbsent, kAbsent, kAbsent, kAbsent, kAbsent};
  bool m_century = false;  // four digits of the year
  size_t m_length = 0;
};

}  // namespace cvt::iso8583

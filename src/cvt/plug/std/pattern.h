// pattern.h: dates and times in text, by a pattern such as "yyyy-MM-dd'T'HH:mm:ss".
//
//   yyyy year, 0001 to 9999      HH  hour, 00 to 23            S ... SSSSSSSSS  fraction of a second,
//   yy   its last two digits     hh  hour, 01 to 12                 1 to 9 digits
//   MM   month, 01 to 12         a   AM or PM                  XXX  offset from UTC, +02:00, or Z
//   MMM  Jan, MMMM January       mm  minute, 00 to 59          XX   offset, +0200, or Z
//   dd   day, 01 to 31           ss  second, 00 to 59          xxx  offset, +02:00, also +00:00
//   DDD  day of the year         'text'  as it stands          Z    offset, +0200, also +0000
//   EEE  Mon, EEEE Monday        ''  a quote
//
// M, d, H and h alone are one or two digits, and no digit follows. Other letters mean nothing and are refused;
// any other character stands for itself.
#pragma once

#include <cstddef>
#include <string_view>

#include "moment.h"

namespace cvt::functions {

// What is wrong with a text or with its pattern. expected: null when nothing is.
struct Misfit {
  const char *expected = nullptr;
  bool inPattern = false;
  size_t at = 0;
};

inline constexpr size_t kMaxPattern = 64;
inline constexpr size_t kMomentRoom = 5 * kMaxPattern;  // what a pattern can become

// Years of two digits are those of the hundred years that begin with this one.
void setFirstYear(int year);
int firstYear();

// Whether a pattern has a letter that stands for a part.
bool hasPart(std::string_view pattern, char letter);

// Reads the whole text. What the pattern leaves out is not known; a time is midnight then.
Misfit readMoment(std::string_view text, std::string_view pattern, Moment &moment);

// Writes a moment; `out` has room for kMomentRoom. length: out.
Misfit writeMoment(const Moment &moment, std::string_view pattern, char *out, size_t &length);

}  // namespace cvt::functions

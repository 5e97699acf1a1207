// issued.h: a date and a time of digits as one moment, 2024-02-29T12:30:00.
#pragma once

#include "text.h"

namespace bench {

inline char *putIssued(char *to, std::string_view date, std::string_view time) {
  needDigits(date);
  needDigits(time);
  needLength(date, 8, 8);
  needLength(time, 6, 6);
  to = put(to, date.substr(0, 4));
  *to++ = '-';
  to = put(to, date.substr(4, 2));
  *to++ = '-';
  to = put(to, date.substr(6, 2));
  *to++ = 'T';
  to = put(to, time.substr(0, 2));
  *to++ = ':';
  to = put(to, time.substr(2, 2));
  *to++ = ':';
  return put(to, time.substr(4, 2));
}

}  // namespace bench

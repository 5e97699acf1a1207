// zone_rule.h: the rule for the years behind a zone's table, written as POSIX's TZ variable and extended by
// RFC 8536: "CET-1CEST,M3.5.0,M10.5.0/3".
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace cvt::functions {

// A stretch of time with one offset from UTC: begin <= t < end, all in seconds.
struct ZoneSpan {
  int64_t begin;
  int64_t end;
  int offset;
};

class ZoneRule {
 public:
  // Nothing when the text is no such rule.
  static std::optional<ZoneRule> read(std::string_view text);

  ZoneSpan spanAt(int64_t utc) const;

 private:
  // A day of the year, and the time of that day at which something changes, in seconds of local time.
  struct Change {
    enum class Kind { Month, Julian, Plain };  // Mm.w.d; Jn, without February 29; n from 0
    Kind kind = Kind::Plain;
    int month = 0;
    int week = 0;
    int day = 0;
    int time = 2 * 3600;

    int64_t inYear(int year) const;
  };
  class Reader;

  int m_standard = 0;  // offsets, east of UTC is positive
  int m_summer = 0;
  bool m_hasSummer = false;
  Change m_toSummer;
  Change m_toStandard;
};

}  // namespace cvt::functions

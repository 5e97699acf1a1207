// zone.h: time zones, read from the machine's zone files in the format of RFC 8536 (TZif, version 2 and
// later). The process's own zone, the TZ variable and the C library's time functions are left alone.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zone_rule.h"

namespace cvt::functions {

class Zone {
 public:
  // The zone of that name in the directory, "Europe/Berlin", read at its first use; null when there is none.
  // Lives until the plug-in is unloaded.
  static const Zone *find(std::string_view name);

  // Where find looks.
  static void setDirectory(std::string_view directory);

  // The zone in a file of these bytes. Nothing when they are cut or damaged, or count leap seconds.
  static std::optional<Zone> read(std::string_view file);

  // The stretch around a time, in seconds since 1970.
  ZoneSpan spanAt(int64_t utc) const;

  // Seconds since 1970 of a local time. One that comes twice is the first of the two; one that is skipped
  // counts on with the offset from before the gap (both as in RFC 5545).
  int64_t utcOf(int64_t local) const;

 private:
  class Reader;

  std::vector<ZoneSpan> m_spans;   // without gaps; the first begins at the beginning of time
  std::optional<ZoneRule> m_rule;  // for the time behind the last change, where the last span begins
};

}  // namespace cvt::functions

// time_zones.cpp: a zone file. What is taken for a zone answers every time, its stretches follow each other, and a
// local time is found where the offset says, or is one that is skipped.
#include "std/zone.h"

#include <cstdlib>

#include "support/input.h"

namespace {

using namespace cvt::functions;

constexpr int64_t kMostOffset = int64_t{26} * 3600;
constexpr int64_t kYear1800 = -5364662400;
constexpr int64_t kYear2200 = 7258118400;

void look(const Zone &zone, int64_t utc) {
  const ZoneSpan span = zone.spanAt(utc);
  fuzz::require(span.begin <= utc && utc < span.end, "a time is in its stretch");
  fuzz::require(std::abs(span.offset) <= kMostOffset, "an offset is one of a day");
  const int64_t local = utc + span.offset;
  const int64_t first = zone.utcOf(local);
  fuzz::require(first <= utc, "of two times it is the first");
  fuzz::require(first + zone.spanAt(first).offset == local, "a local time that there is is found");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::optional<Zone> zone = Zone::read(fuzz::text(data, size));
  if (!zone) return 0;
  for (int64_t utc = kYear1800; utc < kYear2200; utc += (kYear2200 - kYear1800) / 97) look(*zone, utc);
  ZoneSpan span = zone->spanAt(kYear1800);
  for (int i = 0; i < 100 && span.end < kYear2200; ++i) {
    look(*zone, span.end - 1);
    look(*zone, span.end);
    const ZoneSpan next = zone->spanAt(span.end);
    fuzz::require(next.begin == span.end && next.end > next.begin, "stretches follow each other");
    span = next;
  }
  return 0;
}

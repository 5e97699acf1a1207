// dates.cpp: a pattern and a text. What is read of a text, written by the same pattern and read again is the same; a
// whole date is that of its seconds.
#include <string>

#include "std/pattern.h"
#include "support/input.h"

namespace {

using namespace cvt::functions;

bool same(const Moment &a, const Moment &b) {
  return a.year == b.year && a.month == b.month && a.day == b.day && a.second == b.second &&
         a.nanoseconds == b.nanoseconds && a.offset == b.offset;
}

void checkSeconds(const Moment &moment) {
  const int64_t seconds = secondsOf(moment);
  fuzz::require(seconds >= kFirstSecond && seconds <= kLastSecond, "a date is in its years");
  Moment again = momentOf(seconds, moment.nanoseconds);
  again.offset = moment.offset;
  fuzz::require(same(again, moment), "a date is that of its seconds");
  fuzz::require(weekdayOf(moment) == (seconds - kFirstSecond) / 86400 % 7 + 1,
                "days of the week follow each other");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const std::string pattern = input.string();
  const std::string text = input.rest();
  Moment moment;
  const Misfit reading = readMoment(text, pattern, moment);
  if (reading.expected != nullptr) {
    fuzz::require(reading.at <= (reading.inPattern ? pattern : text).size(),
                  "the offset of what is wrong is inside");
    return 0;
  }
  if (moment.hasDate()) checkSeconds(moment);
  char out[kMomentRoom];
  size_t length = 0;
  const Misfit writing = writeMoment(moment, pattern, out, length);
  // A weekday that was read without a date is not known.
  if (writing.expected != nullptr) {
    fuzz::require(!moment.hasDate(), "[" + pattern + "] is written as it was read: " + writing.expected);
    return 0;
  }
  fuzz::require(length <= kMomentRoom, "what is written has room");
  Moment again;
  fuzz::require(readMoment({out, length}, pattern, again).expected == nullptr, "what is written is read");
  fuzz::require(same(again, moment), "[" + pattern + "] is read as it was written");
  return 0;
}

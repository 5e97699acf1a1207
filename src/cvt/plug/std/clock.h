// clock.h: what time it is, and chance. Tests fix both.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace cvt::functions {

struct Instant {
  int64_t seconds = 0;  // since 1970-01-01T00:00:00Z
  int nanoseconds = 0;
};

// The system's time, or the one that was fixed.
Instant now();
void fixClock(std::optional<Instant> instant);

// Bytes that nobody can foretell, from the system; or, with a seed other than 0, the same ones every time.
void randomBytes(unsigned char *out, size_t count);
void fixRandom(uint64_t seed);

}  // namespace cvt::functions

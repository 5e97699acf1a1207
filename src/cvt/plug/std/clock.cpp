#include "clock.h"

#include <sys/random.h>

#include <cerrno>
#include <ctime>
#include <system_error>

namespace cvt::functions {

namespace {

std::optional<Instant> f_fixed;
uint64_t f_state;  // of the generator for tests; 0: the system's chance

// SplitMix64: every seed has a sequence of its own.
uint64_t nextNumber() {
  f_state += 0x9E3779B97F4A7C15;
  uint64_t mixed = f_state;
  mixed = (mixed ^ mixed >> 30) * 0xBF58476D1CE4E5B9;
  mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EB;
  return mixed ^ mixed >> 31;
}

}  // namespace

Instant now() {
  if (f_fixed) return *f_fixed;
  timespec time{};
  clock_gettime(CLOCK_REALTIME, &time);
  return {time.tv_sec, static_cast<int>(time.tv_nsec)};
}

void fixClock(std::optional<Instant> instant) {
  f_fixed = instant;
}

void fixRandom(uint64_t seed) {
  f_state = seed;
}

// Asked of the system each time: what was kept for later would be the same in a child process.
void randomBytes(unsigned char *out, size_t count) {
  if (f_state != 0) {
    for (size_t i = 0; i < count; ++i) out[i] = static_cast<unsigned char>(nextNumber() >> 56);
    return;
  }
  while (count > 0) {
    const ssize_t got = getrandom(out, count, 0);
    if (got < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category(), "getrandom");
    if (got < 0) continue;
    out += got;
    count -= static_cast<size_t>(got);
  }
}

}  // namespace cvt::functions

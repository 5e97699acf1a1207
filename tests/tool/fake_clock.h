// fake_clock.h: clocks that go on by a step with every look, and by what a test adds.
#pragma once

#include <cstdint>
#include <functional>

namespace test {

struct FakeClock {
  static inline uint64_t now = 0;
  static inline uint64_t step = 0;                  // what a look costs
  static inline std::function<void()> atLook = {};  // called at every one

  static uint64_t look() {
    if (atLook) atLook();
    return now += step;
  }
};

}  // namespace test

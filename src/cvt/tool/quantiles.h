// quantiles.h: how a great many measurements are spread, in a room that does not grow with their number.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tool {

// Values below 256 are kept as they are; larger ones share a place with those that agree in the leading eight
// bits, so a quantile is at most one part in 128 too large.
class Quantiles {
 public:
  void add(uint64_t value);

  uint64_t count() const { return m_count; }
  uint64_t sum() const { return m_sum; }
  uint64_t max() const { return m_max; }
  double mean() const;  // 0 when there is none

  // The smallest value that so many in a hundred do not exceed; 0 when there is none.
  uint64_t percentile(uint64_t percent) const;

 private:
  static constexpr size_t kPlaces = 7424;  // for every value of 64 bits

  std::vector<uint64_t> m_places = std::vector<uint64_t>(kPlaces);
  uint64_t m_count = 0;
  uint64_t m_sum = 0;
  uint64_t m_max = 0;
};

}  // namespace tool

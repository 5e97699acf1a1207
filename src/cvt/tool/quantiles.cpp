#include "quantiles.h"

#include <algorithm>
#include <bit>

namespace tool {
namespace {

constexpr int kBits = 8;                            // that a value is told by
constexpr size_t kStep = size_t{1} << (kBits - 1);  // places for every further bit of length

size_t placeOf(uint64_t value) {
  const auto shift = static_cast<size_t>(std::max(static_cast<int>(std::bit_width(value)) - kBits, 0));
  return shift * kStep + static_cast<size_t>(value >> shift);
}

// The largest value of a place.
uint64_t valueOf(size_t place) {
  const size_t shift = place < 2 * kStep ? 0 : place / kStep - 1;
  return ((uint64_t{place - shift * kStep} + 1) << shift) - 1;
}

}  // namespace

void Quantiles::add(uint64_t value) {
  ++m_places[placeOf(value)];
  ++m_count;
  m_sum += value;
  m_max = std::max(m_max, value);
}

double Quantiles::mean() const {
  return m_count == 0 ? 0 : static_cast<double>(m_sum) / static_cast<double>(m_count);
}

uint64_t Quantiles::percentile(uint64_t percent) const {
  const uint64_t wanted = (percent * m_count + 99) / 100;
  uint64_t seen = 0;
  for (size_t place = 0; place < m_places.size(); ++place) {
    seen += m_places[place];
    if (seen > 0 && seen >= wanted) return std::min(valueOf(place), m_max);
  }
  return m_max;
}

}  // namespace tool

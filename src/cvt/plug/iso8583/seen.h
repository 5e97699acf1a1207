// seen.h: which members of a group with tags were there already.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace cvt::iso8583 {

inline constexpr size_t kMaxTags = 256;  // known tags of one group

class Seen {
 public:
  bool has(size_t member) const { return (m_words[member / 64] >> member % 64 & 1) != 0; }
  void set(size_t member) { m_words[member / 64] |= uint64_t{1} << member % 64; }

 private:
  std::array<uint64_t, kMaxTags / 64> m_words{};
};

}  // namespace cvt::iso8583

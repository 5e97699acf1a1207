// input.h: an input as a row of small decisions. Past its end every decision is 0.
#pragma once

#include <algorithm>
#include <string>
#include <utility>

#include "target.h"

namespace fuzz {

class Input {
 public:
  Input(const uint8_t *data, size_t size) : m_rest(text(data, size)) {}

  bool atEnd() const { return m_rest.empty(); }

  uint8_t byte() {
    if (m_rest.empty()) return 0;
    const auto value = static_cast<uint8_t>(m_rest.front());
    m_rest.remove_prefix(1);
    return value;
  }

  // 0 .. limit - 1
  size_t below(size_t limit) { return byte() % limit; }

  // A length byte and as many bytes, as far as there are any.
  std::string string() {
    const size_t wanted = byte();
    const size_t length = std::min(wanted, m_rest.size());
    std::string value(m_rest.substr(0, length));
    m_rest.remove_prefix(length);
    return value;
  }

  std::string rest() { return std::string(std::exchange(m_rest, {})); }

 private:
  std::string_view m_rest;
};

}  // namespace fuzz

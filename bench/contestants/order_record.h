// order_record.h: the fixed-length order, cut into its fields; read by the hand-written converters of W1.
#pragma once

#include "text.h"

namespace bench {

struct OrderRecord {
  static constexpr size_t kHead = 200, kItem = 40;

  explicit OrderRecord(std::string_view line) : m_line(line) {
    if (line.size() < kHead) throw Failure("an order of " + std::to_string(line.size()) + " bytes");
    needDigits(line.substr(198, 2));
    count = static_cast<size_t>((line[198] - '0') * 10 + (line[199] - '0'));
    if (line.size() != kHead + kItem * count) throw Failure("an order whose length is not that of its items");
    needDigits(date());
    needDigits(time());
  }

  std::string_view type() const { return trimmed(m_line.substr(0, 8)); }
  std::string_view id() const { return trimmed(m_line.substr(8, 16)); }
  std::string_view date() const { return m_line.substr(24, 8); }
  std::string_view time() const { return m_line.substr(32, 6); }
  std::string_view customer() const { return m_line.substr(38, 10); }
  std::string_view name() const { return trimmed(m_line.substr(48, 40)); }
  std::string_view currency() const { return trimmed(m_line.substr(88, 3)); }
  std::string_view amount() const { return m_line.substr(91, 15); }
  std::string_view address() const { return trimmed(m_line.substr(106, 60)); }
  std::string_view remark() const { return trimmed(m_line.substr(166, 32)); }

  std::string_view sku(size_t i) const { return trimmed(m_line.substr(kHead + kItem * i, 12)); }
  std::string_view goods(size_t i) const { return trimmed(m_line.substr(kHead + kItem * i + 12, 14)); }
  std::string_view quantity(size_t i) const { return m_line.substr(kHead + kItem * i + 26, 6); }
  std::string_view price(size_t i) const { return m_line.substr(kHead + kItem * i + 32, 8); }

  size_t count;

 private:
  std::string_view m_line;
};

}  // namespace bench

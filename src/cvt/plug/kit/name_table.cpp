#include "name_table.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace cvt::kit {

// The tail tells names apart: names of one level often begin alike.
size_t NameTable::hash(std::string_view name) {
  uint64_t tail = 0;
  const size_t n = std::min(name.size(), sizeof tail);
  if (n != 0) std::memcpy(&tail, name.data() + name.size() - n, n);
  tail = (tail ^ name.size()) * 0x9E3779B97F4A7C15U;
  return static_cast<size_t>(tail >> 32);
}

size_t NameTable::slotOf(std::string_view name) const {
  const size_t mask = m_entries.size() - 1;
  size_t slot = hash(name) & mask;
  while (m_entries[slot].position >= 0 && m_entries[slot].name != name) slot = (slot + 1) & mask;
  return slot;
}

bool NameTable::add(std::string_view name, int position) {
  if (2 * (m_used + 1) > m_entries.size()) grow();
  Entry &entry = m_entries[slotOf(name)];
  if (entry.position >= 0) return false;
  entry = {std::string(name), position};
  ++m_used;
  return true;
}

int NameTable::find(std::string_view name) const {
  return m_entries.empty() ? -1 : m_entries[slotOf(name)].position;
}

void NameTable::grow() {
  std::vector<Entry> old(m_entries.empty() ? 4 : 2 * m_entries.size());
  old.swap(m_entries);
  for (Entry &entry : old) {
    if (entry.position >= 0) m_entries[slotOf(entry.name)] = std::move(entry);
  }
}

}  // namespace cvt::kit

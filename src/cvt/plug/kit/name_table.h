// name_table.h: names of one level to their positions. Built when a definition loads; looked up without
// allocation.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace cvt::kit {

class NameTable {
 public:
  // False when the name is there already.
  bool add(std::string_view name, int position);

  // The position, or -1.
  int find(std::string_view name) const;

 private:
  struct Entry {
    std::string name;
    int position = -1;
  };

  static size_t hash(std::string_view name);
  size_t slotOf(std::string_view name) const;  // where it is, or the free entry where it belongs
  void grow();

  std::vector<Entry> m_entries;  // a power of two; open addressing
  size_t m_used = 0;
};

}  // namespace cvt::kit

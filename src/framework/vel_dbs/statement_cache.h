// statement_cache.h: the queries prepared lately; the one not used for longest goes first.
#pragma once

#include <algorithm>
#include <list>
#include <memory>
#include <string>
#include <string_view>

#include "session.h"

namespace dbs {

class StatementCache {
 public:
  // At least one query has room.
  void setSize(size_t size) { m_size = std::max<size_t>(size, 1); }

  // The query of that text, null when there is none; it is now the one used last.
  Cursor *find(std::string_view sql) {
    const auto entry =
        std::find_if(m_entries.begin(), m_entries.end(), [sql](const Entry &e) { return e.sql == sql; });
    if (entry == m_entries.end()) return nullptr;
    m_entries.splice(m_entries.begin(), m_entries, entry);
    return entry->cursor.get();
  }

  Cursor *add(std::string_view sql, std::unique_ptr<Cursor> cursor) {
    m_entries.push_front({std::string(sql), std::move(cursor)});
    if (m_entries.size() > m_size) m_entries.pop_back();
    return m_entries.front().cursor.get();
  }

  void remove(const Cursor *cursor) {
    m_entries.remove_if([cursor](const Entry &e) { return e.cursor.get() == cursor; });
  }

  void clear() { m_entries.clear(); }

 private:
  struct Entry {
    std::string sql;
    std::unique_ptr<Cursor> cursor;
  };
  std::list<Entry> m_entries;  // used last, first
  size_t m_size = 1;
};

}  // namespace dbs

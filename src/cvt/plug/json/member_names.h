// member_names.h: the names that an object has had, where the definition does not know them.
//
// Objects stand in objects: the names of the innermost one are on top. There are never more than nMaxMembers of
// one object, so they are compared one by one, by their hashes.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace cvt::json {

class MemberNames {
 public:
  // The names of an object, until the end of the scope.
  class Scope {
   public:
    explicit Scope(MemberNames &all) : m_all(all), m_outer(all.m_first) { all.m_first = all.m_names.size(); }
    ~Scope() {
      m_all.m_names.resize(m_all.m_first);
      m_all.m_first = m_outer;
    }
    Scope(const Scope &) = delete;
    Scope &operator=(const Scope &) = delete;

   private:
    MemberNames &m_all;
    size_t m_outer;
  };

  // False when the object has it already. The bytes must outlive the scope.
  bool add(std::string_view name);

  // Names of the innermost object.
  size_t count() const { return m_names.size() - m_first; }

 private:
  struct Entry {
    uint64_t hash = 0;
    std::string_view name;
  };

  std::vector<Entry> m_names;
  size_t m_first = 0;
};

}  // namespace cvt::json

#include "member_names.h"

namespace cvt::json {

bool MemberNames::add(std::string_view name) {
  uint64_t hash = 0xCBF29CE484222325U;
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
  for (size_t i = m_first; i < m_names.size(); ++i) {
    if (m_names[i].hash == hash && m_names[i].name == name) return false;
  }
  m_names.push_back({hash, name});
  return true;
}

}  // namespace cvt::json

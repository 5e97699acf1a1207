#include "plan.h"

#include <cstring>

#include "kit/fault.h"
#include "kit/log.h"
#include "names.h"

namespace cvt::xml {

// The tail tells names apart: names of one level often share their namespace.
size_t NameTable::hash(std::string_view name) {
  uint64_t tail = 0;
  const size_t n = name.size() < sizeof tail ? name.size() : sizeof tail;
  std::memcpy(&tail, name.data() + name.size() - n, n);
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

void checkValue(const Text &text, std::string_view value) {
  using kit::Fault;
  if (value.empty() && text.mandatory && !text.keepEmpty) {
    throw Fault(Fault::kHere, "a value", "none",
                "The field is mandatory; nKeepEmpty=\"1\" allows an empty one");
  }
  if (text.maxLength == 0 || value.size() <= text.maxLength) return;
  const size_t characters = kit::Charset::countUtf8(value.data(), value.size());
  if (characters <= text.maxLength) return;
  throw Fault(Fault::kHere, "at most " + std::to_string(text.maxLength) + " characters",
              std::to_string(characters) + ", " + kit::quoted(value.data(), value.size()),
              "Raise nMaxLen, or shorten the value");
}

std::string shownName(const Plan &plan, std::string_view expanded) {
  const size_t separator = expanded.find(kSeparator);
  if (separator == std::string_view::npos) {
    return std::string(expanded) + (plan.defaultSpaces.empty() ? "" : " of no namespace");
  }
  const std::string uri(expanded.substr(0, separator));
  std::string local(expanded.substr(separator + 1));
  for (const std::string &known : plan.defaultSpaces) {
    if (known == uri) return local;
  }
  for (const Prefix &known : plan.prefixes) {
    if (known.uri == uri) return known.prefix + ":" + local;
  }
  return uri == kXmlUri ? "xml:" + local : local + " of namespace \"" + uri + "\"";
}

}  // namespace cvt::xml

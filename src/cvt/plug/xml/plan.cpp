#include "plan.h"

namespace cvt::xml {

int Plan::spaceOf(std::string_view uri) const {
  for (size_t i = 0; i < spaces.size(); ++i) {
    if (spaces[i] == uri) return static_cast<int>(i);
  }
  return kUnknownSpace;
}

std::string shownName(const Plan &plan, const Name &name) {
  std::string local(name.local);
  if (name.uri.empty()) return local + (plan.defaultSpaces.empty() ? "" : " of no namespace");
  for (const std::string &known : plan.defaultSpaces) {
    if (known == name.uri) return local;
  }
  for (const Prefix &known : plan.prefixes) {
    if (known.uri == name.uri) return known.prefix + ":" + local;
  }
  return name.uri == kXmlUri ? "xml:" + local : local + " of namespace \"" + std::string(name.uri) + "\"";
}

}  // namespace cvt::xml

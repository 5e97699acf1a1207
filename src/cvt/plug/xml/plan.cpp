#include "plan.h"

#include "names.h"

namespace cvt::xml {

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

// names.h: names of elements and attributes.
#pragma once

#include <string>
#include <string_view>

namespace cvt::xml {

inline constexpr std::string_view kXmlUri = "http://www.w3.org/XML/1998/namespace";
inline constexpr std::string_view kXmlnsUri = "http://www.w3.org/2000/xmlns/";

// Those of documents in use have a tenth of it. Without a limit each name in a long one would cost as much as it has
// bytes.
inline constexpr size_t kLongestUri = 1024;

// Whether it is an XML name; colons are allowed.
bool isName(const std::string &name);

// Whether it may be the prefix or the local part of a name: a name without colon.
bool isPlainName(const std::string &name);

// A name of a document: its namespace as text and as the plan numbers it (plan.h), and its local part.
struct Name {
  std::string_view uri;
  std::string_view local;
  int space;
};

// An attribute of a document. Its value is UTF-8.
struct Given {
  Name name;
  std::string_view value;
};

}  // namespace cvt::xml

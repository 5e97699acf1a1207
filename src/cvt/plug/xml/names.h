// names.h: names of elements and attributes.
#pragma once

#include <string>
#include <string_view>

namespace cvt::xml {

// Stands between namespace URI and local name in an expanded name; no XML document can contain it.
inline constexpr char kSeparator = '\x1F';

inline constexpr std::string_view kXmlUri = "http://www.w3.org/XML/1998/namespace";
inline constexpr std::string_view kXmlnsUri = "http://www.w3.org/2000/xmlns/";

// Whether it is an XML name; colons are allowed.
bool isName(const std::string &name);

// Whether it may be the prefix or the local part of a name: a name without colon.
bool isPlainName(const std::string &name);

// "URI", separator, "local"; only "local" for an empty URI.
std::string expandedName(std::string_view uri, std::string_view local);

// Its two parts; the namespace may be empty.
std::string_view namespaceOf(std::string_view expanded);
std::string_view localName(std::string_view expanded);

}  // namespace cvt::xml

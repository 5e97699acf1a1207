// escape.h: a value as text of a document.
#pragma once

#include <string_view>

#include "kit/charset.h"
#include "kit/output.h"

namespace cvt::xml {

enum class Place { Content, AttributeValue };

// Writes the UTF-8 value in the document's encoding: markup characters, carriage returns (which parsers would
// read as line feeds) and characters that the encoding lacks as references; in an attribute also tabs and
// line feeds. Throws Fault for what XML 1.0 cannot carry: damaged UTF-8 and most control characters.
void putEscaped(kit::Output &out, const kit::Charset &charset, std::string_view value, Place place);

}  // namespace cvt::xml

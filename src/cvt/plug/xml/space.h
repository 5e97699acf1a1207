// space.h: white space of XML, and what psSpace makes of it.
#pragma once

#include <string>
#include <string_view>

#include "records.h"

namespace cvt::xml {

// Without the white space at both ends.
std::string_view trimmed(std::string_view text);

// The value of a text. room: where it is made, when it is no part of the text.
std::string_view spaced(std::string_view text, Space space, std::string &room);

}  // namespace cvt::xml

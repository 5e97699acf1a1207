// text.h: how bytes are shown: JSON strings, lines of a terminal, base64, hexadecimal.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tool {

// Well-formed UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
bool isUtf8(std::string_view bytes);

// Appends UTF-8 text as a JSON string, quotes included. Control characters are escaped, so the string is also
// safe on a terminal.
void appendJsonString(std::string &out, std::string_view utf8);

// The text as a terminal may get it: the bytes of control characters, and those that are not UTF-8, as \xNN.
std::string printable(std::string_view text);

void appendHex(std::string &out, std::string_view bytes);

void appendBase64(std::string &out, std::string_view bytes);

// The decoded bytes; nothing unless the text is base64 with padding and without line ends.
std::optional<std::string> decodeBase64(std::string_view text);

}  // namespace tool

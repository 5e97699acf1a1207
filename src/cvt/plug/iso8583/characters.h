// characters.h: the characters that a type allows.
#pragma once

#include <cstddef>
#include <string_view>

#include "records.h"

namespace cvt::iso8583 {

enum Class : unsigned char { kDigit = 1, kLetter = 2, kSpecial = 4, kTrack = 8 };

inline constexpr size_t kGood = static_cast<size_t>(-1);

unsigned classOf(Type type);

// "digits", "letters and digits", for messages.
const char *className(Type type);

// Whether a shorter value of a field of fixed length is filled up.
bool fillable(Type type);

// Position of the first character that is of none of these classes; kGood: there is none. Characters outside
// of ASCII are special ones, control characters are nothing.
size_t firstWrong(std::string_view text, unsigned classes);

// The same for x+n: C or D, then digits.
size_t wrongSigned(std::string_view text);

}  // namespace cvt::iso8583

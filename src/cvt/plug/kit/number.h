// number.h: number representations of records, to and from canonical decimal text.
//
// Canonical: an optional "-", digits without leading zeros (one digit at least), and, with decimals, a point
// and exactly that many digits: "0", "-12.34", "0.05". The sign of a negative zero is kept ("-0.00"), so that
// a number that was read is written with the same bytes.
#pragma once

#include <cstddef>
#include <string_view>

namespace cvt::kit {

enum class NumberForm {
  Text,             // ASCII digits, see NumberSpec
  ZonedEbcdic,      // F0-F9; the sign in the zone of one digit: C plus, D minus (F: unsigned)
  ZonedAscii,       // 0-9; negative sign digit p-y
  ZonedTranslated,  // 0-9; sign digit { A-I plus, } J-R minus
  Packed,           // two digits a byte, last nibble the sign: C plus, D minus, F unsigned
  Bcd,              // two digits a byte; unsigned, or D as the first nibble of a negative number
  BinaryBig,        // two's complement or unsigned, 1 .. 8 bytes
  BinaryLittle,
};

enum class NumberSign {
  None,      // unsigned
  Leading,   // Text: a sign character in front; zoned: in the first digit; bcd: the first nibble
  Trailing,  // Text: behind; zoned: in the last digit; packed: the sign nibble; binary: two's complement
};

// How Text fills its room.
enum class NumberFill {
  Zeros,       // leading zeros, the sign at the very edge
  BlankLeft,   // blanks in front: the number is right-aligned, a leading sign stands next to its digits
  BlankRight,  // blanks behind
};

struct NumberSpec {
  NumberForm form = NumberForm::Text;
  NumberSign sign = NumberSign::None;
  NumberFill fill = NumberFill::Zeros;
  int decimals = 0;
  bool point = false;      // Text: a real point before the decimals; otherwise it is implied
  bool plusBlank = false;  // Text: a positive number has no "+"; the place of its sign is blank
  bool lenient = false;    // reads other signs too: packed A, E, F plus and B minus; zoned F or a plain digit
                           // plus; Text either plus, leading zeros among blanks
};

inline constexpr int kMaxDigits = 31;
inline constexpr size_t kCanonicalRoom = 40;  // room for any canonical number

// Digits that fit into `bytes` bytes; 0 when the form cannot have that length.
int digitsOf(const NumberSpec &spec, size_t bytes);

struct NumberResult {
  const char *expected = nullptr;  // null: fine; else what was expected
  size_t at = 0;                   // reading: offset of the offending byte; writing: offset in the value
  size_t length = 0;               // reading: length of the canonical text
};

// Bytes to canonical text; `out` has room for kCanonicalRoom bytes.
NumberResult readNumber(const NumberSpec &spec, const char *in, size_t bytes, char *out);

// Decimal text (canonical or not: leading zeros, "+", fewer decimals are accepted) to exactly `bytes` bytes.
// Too many digits or decimals are an error, never a cut; decimals that are zero may be dropped.
NumberResult writeNumber(const NumberSpec &spec, std::string_view value, char *out, size_t bytes);

}  // namespace cvt::kit

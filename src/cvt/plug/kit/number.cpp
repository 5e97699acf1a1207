#include "number.h"

#include <cstdint>
#include <cstring>

#include "plain_digits.h"

namespace cvt::kit {

namespace {

const char *const kDigits = "digits";
const char *const kSignDigit = "a digit with a sign";
const char *const kPlusOrMinus = "a sign";
const char *const kTooLong = "no more digits than the field has";
const char *const kTooManyDecimals = "no more decimals than the field has";
const char *const kUnsigned = "a number that is not negative";
const char *const kNumber = "a decimal number";

// A number on its way: its digits without point and sign.
struct Digits {
  char digits[kMaxDigits + 1];
  int count = 0;
  bool negative = false;

  void add(int digit) { digits[count++] = static_cast<char>('0' + digit); }
};

constexpr NumberResult wrong(const char *expected, size_t at) {
  return {expected, at, 0};
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
unsigned high(char c) {
  return static_cast<unsigned char>(c) >> 4;
}
unsigned low(char c) {
  return static_cast<unsigned char>(c) & 0x0FU;
}
char join(unsigned highNibble, unsigned lowNibble) {
  return static_cast<char>(highNibble << 4 | lowNibble);
}

// --- Canonical text
// ---------------------------------------------------------------------------------------------

size_t canonical(const Digits &number, int decimals, char *out) {
  char *next = out;
  if (number.negative) *next++ = '-';
  const int whole = number.count - decimals;
  int i = 0;
  while (i < whole - 1 && number.digits[i] == '0') ++i;
  if (whole <= 0) *next++ = '0';
  for (; i < whole; ++i) *next++ = number.digits[i];
  if (decimals > 0) {
    *next++ = '.';
    for (int missing = whole; missing < 0; ++missing) *next++ = '0';
    for (; i < number.count; ++i) *next++ = number.digits[i];
  }
  return static_cast<size_t>(next - out);
}

// Decimal text to digits, without leading zeros, with exactly `decimals` behind the point.
NumberResult scan(std::string_view value, int decimals, Digits &number) {
  size_t at = 0;
  if (at < value.size() && (value[at] == '-' || value[at] == '+')) number.negative = value[at++] == '-';
  bool any = false;
  for (; at < value.size() && isDigit(value[at]); ++at) {
    any = true;
    if (number.count == 0 && value[at] == '0') continue;
    if (number.count == kMaxDigits) return wrong(kTooLong, at);
    number.digits[number.count++] = value[at];
  }
  int left = decimals;
  if (at < value.size() && value[at] == '.') {
    for (++at; at < value.size() && isDigit(value[at]); ++at) {
      any = true;
      if (left == 0 && value[at] != '0') return wrong(kTooManyDecimals, at);
      if (left == 0) continue;
      --left;
      if (number.count == 0 && value[at] == '0') continue;
      if (number.count == kMaxDigits) return wrong(kTooLong, at);
      number.digits[number.count++] = value[at];
    }
  }
  if (!any || at != value.size()) return wrong(kNumber, at);
  for (; left > 0; --left) {
    if (number.count == 0) continue;
    if (number.count == kMaxDigits) return wrong(kTooLong, at);
    number.digits[number.count++] = '0';
  }
  return {};
}

// --- Text
// -------------------------------------------------------------------------------------------------------

bool hasPoint(const NumberSpec &spec) {
  return spec.point && spec.decimals > 0;
}

bool isPlus(const NumberSpec &spec, char c) {
  return c == (spec.plusBlank ? ' ' : '+') || (spec.lenient && (c == '+' || c == ' '));
}

// The digits between `at` and `end`, and the point before the decimals.
NumberResult readPlain(const NumberSpec &spec, const char *in, size_t at, size_t end, Digits &number) {
  const size_t point = hasPoint(spec) && end - at > static_cast<size_t>(spec.decimals)
                           ? end - static_cast<size_t>(spec.decimals) - 1
                           : end;
  if (hasPoint(spec) && point == end) return wrong("a point and decimals", at);
  for (; at < end; ++at) {
    if (at == point) {
      if (in[at] != '.') return wrong("a decimal point", at);
      continue;
    }
    if (!isDigit(in[at])) return wrong(kDigits, at);
    if (number.count == kMaxDigits) return wrong(kTooLong, at);
    number.digits[number.count++] = in[at];
  }
  return {};
}

NumberResult readZeroFilled(const NumberSpec &spec, const char *in, size_t bytes, Digits &number) {
  size_t at = 0;
  size_t end = bytes;
  if (spec.sign != NumberSign::None) {
    const size_t edge = spec.sign == NumberSign::Leading ? 0 : bytes - 1;
    number.negative = in[edge] == '-';
    if (!number.negative && !isPlus(spec, in[edge])) return wrong(kPlusOrMinus, edge);
    if (spec.sign == NumberSign::Leading) {
      ++at;
    } else {
      --end;
    }
  }
  return readPlain(spec, in, at, end, number);
}

// Takes the sign that stands next to the digits off the range.
const char *takeSign(const NumberSpec &spec, const char *in, size_t &at, size_t &end, bool &negative) {
  if (spec.sign == NumberSign::None) return nullptr;
  const bool leading = spec.sign == NumberSign::Leading;
  const char c = in[leading ? at : end - 1];
  negative = c == '-';
  const bool plus = c == '+' && (!spec.plusBlank || spec.lenient);
  if (!negative && !plus) return spec.plusBlank || spec.lenient ? nullptr : kPlusOrMinus;
  if (leading) {
    ++at;
  } else {
    --end;
  }
  return nullptr;
}

NumberResult readBlankFilled(const NumberSpec &spec, const char *in, size_t bytes, Digits &number) {
  size_t at = 0;
  size_t end = bytes;
  bool signTaken = false;
  if (spec.fill == NumberFill::BlankLeft) {
    while (at < end && in[at] == ' ') ++at;
    // The sign of a right-aligned number keeps its place also when it is a blank.
    if (end > at && spec.sign == NumberSign::Trailing && !spec.lenient) {
      if (isDigit(in[end - 1]) || (in[end - 1] == ' ' && !spec.plusBlank))
        return wrong(kPlusOrMinus, end - 1);
    }
    if (end > at && spec.sign == NumberSign::Trailing && in[end - 1] == ' ') {
      signTaken = true;
      --end;
    }
  } else {
    while (end > at && in[end - 1] == ' ') --end;
  }
  if (at == end) return wrong(kNumber, 0);
  const char *error = signTaken ? nullptr : takeSign(spec, in, at, end, number.negative);
  if (error != nullptr) return wrong(error, spec.sign == NumberSign::Leading ? at : end - 1);
  if (at == end) return wrong(kDigits, at < bytes ? at : at - 1);
  const NumberResult result = readPlain(spec, in, at, end, number);
  if (result.expected != nullptr || spec.lenient) return result;
  const int shortest = spec.decimals + 1;
  if (number.count < shortest) return wrong("a digit before the decimals", at);
  if (number.count > shortest && number.digits[0] == '0') return wrong("no leading zeros", at);
  if (number.count > digitsOf(spec, bytes)) return wrong("room for a sign", at);
  return result;
}

void putPlain(const NumberSpec &spec, const Digits &number, int digits, char *out) {
  const int zeros = digits - number.count;
  for (int i = 0; i < digits; ++i) {
    if (hasPoint(spec) && i == digits - spec.decimals) *out++ = '.';
    *out++ = i < zeros ? '0' : number.digits[i - zeros];
  }
}

NumberResult writeText(const NumberSpec &spec, const Digits &number, char *out, size_t bytes) {
  const char sign = number.negative ? '-' : spec.plusBlank ? ' ' : '+';
  const bool blank = spec.fill != NumberFill::Zeros;
  const int shortest = spec.decimals + 1;
  const int digits = !blank ? digitsOf(spec, bytes) : number.count < shortest ? shortest : number.count;
  const size_t plain = static_cast<size_t>(digits) + (hasPoint(spec) ? 1 : 0);
  // A blank sign next to blanks is no sign; only behind right-aligned digits it keeps its place.
  const bool noSign =
      spec.sign == NumberSign::None || (blank && sign == ' ' && spec.sign == NumberSign::Leading);
  const size_t length = plain + (noSign ? 0 : 1);
  std::memset(out, ' ', bytes);
  char *next = spec.fill == NumberFill::BlankLeft ? out + (bytes - length) : out;
  if (!noSign && spec.sign == NumberSign::Leading) *next++ = sign;
  putPlain(spec, number, digits, next);
  if (!noSign && spec.sign == NumberSign::Trailing) next[plain] = sign;
  return {};
}

// Texts as canonical text has them, but for the blanks.
bool isEdited(const NumberSpec &spec) {
  return spec.form == NumberForm::Text && spec.fill != NumberFill::Zeros && spec.sign == NumberSign::None &&
         (spec.point || spec.decimals == 0);
}

// Writes a canonical value that is not negative. False when it is something else, or too long, and nothing was written.
bool putEdited(const NumberSpec &spec, std::string_view value, char *out, size_t bytes) {
  const size_t whole = wholeDigits(value, static_cast<size_t>(spec.decimals));
  if (whole == 0 || (value[0] == '0' && whole > 1) || value.size() > bytes || value.size() > kMaxDigits)
    return false;
  const size_t blanks = bytes - value.size();
  const bool left = spec.fill == NumberFill::BlankLeft;
  fillShort(left ? out : out + value.size(), ' ', blanks);
  copyShort(left ? out + blanks : out, value.data(), value.size());
  return true;
}

// --- Zoned
// ------------------------------------------------------------------------------------------------------

bool readSignNibble(const NumberSpec &spec, unsigned nibble, bool &negative) {
  negative = nibble == 0x0D || (spec.lenient && nibble == 0x0B);
  if (spec.sign == NumberSign::None) {
    return nibble == 0x0F || (spec.lenient && !negative && nibble >= 0x0A);
  }
  return nibble == 0x0C || nibble == 0x0D || (spec.lenient && nibble >= 0x0A);
}

// One digit with its sign; the digit, or -1.
int readSignDigit(const NumberSpec &spec, char c, bool &negative) {
  if (spec.form == NumberForm::ZonedEbcdic) {
    return low(c) <= 9 && readSignNibble(spec, high(c), negative) ? static_cast<int>(low(c)) : -1;
  }
  if (spec.form == NumberForm::ZonedAscii) {
    negative = c >= 'p' && c <= 'y';
    return negative ? c - 'p' : isDigit(c) ? c - '0' : -1;
  }
  negative = c == '}' || (c >= 'J' && c <= 'R');
  if (c == '{' || c == '}') return 0;
  if (negative) return c - 'J' + 1;
  if (c >= 'A' && c <= 'I') return c - 'A' + 1;
  return spec.lenient && isDigit(c) ? c - '0' : -1;
}

NumberResult readZoned(const NumberSpec &spec, const char *in, size_t bytes, Digits &number) {
  const bool ebcdic = spec.form == NumberForm::ZonedEbcdic;
  const size_t signAt = spec.sign == NumberSign::None      ? bytes
                        : spec.sign == NumberSign::Leading ? 0
                                                           : bytes - 1;
  for (size_t i = 0; i < bytes; ++i) {
    const int digit = i == signAt ? readSignDigit(spec, in[i], number.negative)
                      : ebcdic ? (high(in[i]) == 0x0F && low(in[i]) <= 9 ? static_cast<int>(low(in[i])) : -1)
                      : isDigit(in[i]) ? in[i] - '0'
                                       : -1;
    if (digit < 0) return wrong(i == signAt ? kSignDigit : kDigits, i);
    number.add(digit);
  }
  return {};
}

char signDigit(NumberForm form, unsigned digit, bool negative) {
  if (form == NumberForm::ZonedEbcdic) return join(negative ? 0x0D : 0x0C, digit);
  if (form == NumberForm::ZonedAscii) return static_cast<char>((negative ? 'p' : '0') + digit);
  if (digit == 0) return negative ? '}' : '{';
  return static_cast<char>((negative ? 'J' : 'A') + digit - 1);
}

void writeZoned(const NumberSpec &spec, const Digits &number, char *out, size_t bytes) {
  const size_t zeros = bytes - static_cast<size_t>(number.count);
  const char plain = spec.form == NumberForm::ZonedEbcdic ? static_cast<char>(0xF0) : '0';
  for (size_t i = 0; i < bytes; ++i) {
    const unsigned digit = i < zeros ? 0U : static_cast<unsigned>(number.digits[i - zeros] - '0');
    const bool sign =
        spec.sign != NumberSign::None && i == (spec.sign == NumberSign::Leading ? 0 : bytes - 1);
    out[i] = sign ? signDigit(spec.form, digit, number.negative)
                  : static_cast<char>(static_cast<unsigned char>(plain) + digit);
  }
}

// --- Packed, BCD
// ------------------------------------------------------------------------------------------------

constexpr unsigned kMinus = 0x0D;

bool signInFront(const NumberSpec &spec) {
  return spec.form == NumberForm::Bcd && spec.sign == NumberSign::Leading;
}

NumberResult readNibbles(const NumberSpec &spec, const char *in, size_t bytes, Digits &number) {
  const size_t nibbles = bytes * 2 - (spec.form == NumberForm::Packed ? 1 : 0);
  number.negative = signInFront(spec) && high(in[0]) == kMinus;
  for (size_t i = number.negative ? 1 : 0; i < nibbles; ++i) {
    const unsigned digit = i % 2 == 0 ? high(in[i / 2]) : low(in[i / 2]);
    if (digit > 9) return wrong("packed digits 0 to 9", i / 2);
    number.add(static_cast<int>(digit));
  }
  if (spec.form == NumberForm::Packed && !readSignNibble(spec, low(in[bytes - 1]), number.negative)) {
    return wrong(spec.sign == NumberSign::None ? "the sign nibble F" : "a sign nibble C or D", bytes - 1);
  }
  return {};
}

unsigned signNibble(const NumberSpec &spec, bool negative) {
  return spec.sign == NumberSign::None ? 0x0F : negative ? kMinus : 0x0C;
}

void writeNibbles(const NumberSpec &spec, const Digits &number, char *out, size_t bytes) {
  const bool packed = spec.form == NumberForm::Packed;
  const size_t nibbles = bytes * 2 - (packed ? 1 : 0);
  const size_t zeros = nibbles - static_cast<size_t>(number.count);
  const auto digit = [&](size_t i) {
    return i < zeros ? 0U : static_cast<unsigned>(number.digits[i - zeros] - '0');
  };
  const unsigned sign = signNibble(spec, number.negative);
  for (size_t i = 0; i < bytes; ++i) {
    out[i] = join(digit(i * 2), packed && i + 1 == bytes ? sign : digit(i * 2 + 1));
  }
  if (!packed && number.negative) out[0] = join(kMinus, digit(1));
}

// Eight digits as four bytes: their nibbles, pair by pair.
uint32_t packed(const char *digits) {
  uint64_t nibbles = loadWord(digits) & 0x0F0F0F0F0F0F0F0FU;
  nibbles = (nibbles << 4 | nibbles >> 8) & 0x00FF00FF00FF00FFU;
  nibbles = (nibbles | nibbles >> 8) & 0x0000FFFF0000FFFFU;
  return static_cast<uint32_t>(nibbles | nibbles >> 16);
}

// Writes plain digits (putPlainDigits) packed. False when they are not, and nothing was written.
bool putPacked(const NumberSpec &spec, std::string_view value, char *out, size_t bytes) {
  char digits[kMaxDigits + 1];
  const size_t nibbles = bytes * 2 - 1;
  if (nibbles > kMaxDigits || !putPlainDigits(value, static_cast<size_t>(spec.decimals), digits, nibbles))
    return false;
  digits[nibbles] = static_cast<char>(signNibble(spec, false));
  size_t i = 0;
  for (; i + 4 <= bytes; i += 4) {
    const uint32_t four = packed(digits + i * 2);
    std::memcpy(out + i, &four, 4);
  }
  for (; i < bytes; ++i) out[i] = join(low(digits[i * 2]), low(digits[i * 2 + 1]));
  return true;
}

// --- Binary
// -----------------------------------------------------------------------------------------------------

void readBinary(const NumberSpec &spec, const char *in, size_t bytes, Digits &number) {
  uint64_t value = 0;
  for (size_t i = 0; i < bytes; ++i) {
    const size_t from = spec.form == NumberForm::BinaryBig ? i : bytes - 1 - i;
    value = value << 8 | static_cast<unsigned char>(in[from]);
  }
  const uint64_t signBit = uint64_t{1} << (bytes * 8 - 1);
  number.negative = spec.sign != NumberSign::None && (value & signBit) != 0;
  if (number.negative) {
    value = ~value + 1;
    if (bytes < 8) value &= (uint64_t{1} << (bytes * 8)) - 1;
  }
  char reversed[20];
  int count = 0;
  do {
    reversed[count++] = static_cast<char>(value % 10);
    value /= 10;
  } while (value != 0);
  while (count > 0) number.add(reversed[--count]);
}

NumberResult writeBinary(const NumberSpec &spec, const Digits &number, char *out, size_t bytes) {
  const bool twos = spec.sign != NumberSign::None;
  const uint64_t all = bytes == 8 ? ~uint64_t{0} : (uint64_t{1} << (bytes * 8)) - 1;
  const uint64_t most = !twos ? all : number.negative ? (all >> 1) + 1 : all >> 1;
  uint64_t value = 0;
  for (int i = 0; i < number.count; ++i) {
    const auto digit = static_cast<uint64_t>(number.digits[i] - '0');
    if (value > (most - digit) / 10) return wrong("a number that the field's bytes can hold", 0);
    value = value * 10 + digit;
  }
  if (number.negative) value = ~value + 1;
  for (size_t i = 0; i < bytes; ++i) {
    const size_t to = spec.form == NumberForm::BinaryBig ? bytes - 1 - i : i;
    out[to] = static_cast<char>(value & 0xFF);
    value >>= 8;
  }
  return {};
}

// --- Unsigned digits that fill their room, the most frequent form
// -----------------------------------------------

bool isBinary(NumberForm form) {
  return form == NumberForm::BinaryBig || form == NumberForm::BinaryLittle;
}

}  // namespace

int digitsOf(const NumberSpec &spec, size_t bytes) {
  static constexpr int kBinaryDigits[] = {0, 3, 5, 8, 10, 13, 15, 17, 20};
  if (bytes == 0 || bytes > 1000) return 0;
  int digits = static_cast<int>(bytes);
  if (isBinary(spec.form)) return bytes <= 8 ? kBinaryDigits[bytes] : 0;
  if (spec.form == NumberForm::Packed) digits = digits * 2 - 1;
  if (spec.form == NumberForm::Bcd) digits = digits * 2;
  if (spec.form == NumberForm::Text) {
    digits -= (spec.sign == NumberSign::None ? 0 : 1) + (hasPoint(spec) ? 1 : 0);
    // Blank-filled texts show a digit before the decimals and may be wider than any number.
    if (spec.fill != NumberFill::Zeros) {
      if (digits <= spec.decimals) return 0;
      if (digits > kMaxDigits) digits = kMaxDigits;
    }
  }
  return digits >= 1 && digits <= kMaxDigits && spec.decimals <= digits ? digits : 0;
}

NumberResult readNumber(const NumberSpec &spec, const char *in, size_t bytes, char *out) {
  if (isPlainDigits(spec)) {
    const PlainDigits plain(in, bytes, static_cast<size_t>(spec.decimals));
    if (plain.digits()) {
      plain.put(out);
      return {nullptr, 0, plain.length()};
    }
  }
  Digits number;
  NumberResult result;
  switch (spec.form) {
    case NumberForm::Text:
      result = spec.fill == NumberFill::Zeros ? readZeroFilled(spec, in, bytes, number)
                                              : readBlankFilled(spec, in, bytes, number);
      break;
    case NumberForm::ZonedEbcdic:
    case NumberForm::ZonedAscii:
    case NumberForm::ZonedTranslated:
      result = readZoned(spec, in, bytes, number);
      break;
    case NumberForm::Packed:
    case NumberForm::Bcd:
      result = readNibbles(spec, in, bytes, number);
      break;
    case NumberForm::BinaryBig:
    case NumberForm::BinaryLittle:
      readBinary(spec, in, bytes, number);
      break;
  }
  if (result.expected == nullptr) result.length = canonical(number, spec.decimals, out);
  return result;
}

NumberResult writeNumber(const NumberSpec &spec, std::string_view value, char *out, size_t bytes) {
  if (isPlainDigits(spec) && putPlainDigits(value, static_cast<size_t>(spec.decimals), out, bytes)) return {};
  if (spec.form == NumberForm::Packed && putPacked(spec, value, out, bytes)) return {};
  if (isEdited(spec) && putEdited(spec, value, out, bytes)) return {};
  Digits number;
  NumberResult result = scan(value, spec.decimals, number);
  if (result.expected != nullptr) return result;
  const bool unsignedForm = spec.form == NumberForm::Bcd && !signInFront(spec);
  if (number.negative && (spec.sign == NumberSign::None || unsignedForm)) return wrong(kUnsigned, 0);
  // A minus in front takes the place of a digit.
  const int taken = number.negative && signInFront(spec) ? 1 : 0;
  if (!isBinary(spec.form) && number.count + taken > digitsOf(spec, bytes)) return wrong(kTooLong, 0);
  switch (spec.form) {
    case NumberForm::Text:
      return writeText(spec, number, out, bytes);
    case NumberForm::ZonedEbcdic:
    case NumberForm::ZonedAscii:
    case NumberForm::ZonedTranslated:
      writeZoned(spec, number, out, bytes);
      break;
    case NumberForm::Packed:
    case NumberForm::Bcd:
      writeNibbles(spec, number, out, bytes);
      break;
    case NumberForm::BinaryBig:
    case NumberForm::BinaryLittle:
      return writeBinary(spec, number, out, bytes);
  }
  return result;
}

}  // namespace cvt::kit

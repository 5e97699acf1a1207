// w6.cpp: ISO 8583 requests decoded into their values and encoded again, written by hand. A field of another number,
// length or alphabet is refused, and so are dates and times that are none.
#include "text.h"

namespace {

using namespace bench;

enum class Kind { digits, letters, printable, date, time, dateTime };

struct Field {
  size_t number, size;  // size: of all values, or with a prefix the most
  size_t prefix;        // digits of length in front
  Kind kind;
};

constexpr std::array<Field, 13> kFields{{{2, 19, 2, Kind::digits},
                                         {3, 6, 0, Kind::digits},
                                         {4, 12, 0, Kind::digits},
                                         {7, 10, 0, Kind::dateTime},
                                         {11, 6, 0, Kind::digits},
                                         {12, 6, 0, Kind::time},
                                         {13, 4, 0, Kind::date},
                                         {22, 3, 0, Kind::digits},
                                         {32, 11, 2, Kind::digits},
                                         {37, 12, 0, Kind::letters},
                                         {41, 8, 0, Kind::printable},
                                         {42, 15, 0, Kind::printable},
                                         {49, 3, 0, Kind::digits}}};

constexpr uint64_t bit(size_t number) {
  return uint64_t{1} << (64 - number);
}

constexpr uint64_t knownBits() {
  uint64_t bits = 0;
  for (const Field &field : kFields) bits |= bit(field.number);
  return bits;
}

struct Message {
  std::string_view type;
  uint64_t bitmap = 0;
  std::array<std::string_view, kFields.size()> values;
};

std::string_view taken(std::string_view &input, size_t size) {
  if (input.size() < size) throw Failure("a message is cut off");
  const std::string_view text = input.substr(0, size);
  input.remove_prefix(size);
  return text;
}

uint64_t binary(std::string_view bytes) {
  uint64_t value = 0;
  for (const char c : bytes) value = value << 8 | static_cast<unsigned char>(c);
  return value;
}

size_t decimal(std::string_view digits) {
  needDigits(digits);
  size_t value = 0;
  for (const char c : digits) value = 10 * value + static_cast<size_t>(c - '0');
  return value;
}

void needBetween(std::string_view digits, size_t least, size_t most) {
  const size_t value = decimal(digits);
  if (value < least || value > most) throw Failure("no date or time: \"" + std::string(digits) + "\"");
}

void needDate(std::string_view text) {
  constexpr std::array<size_t, 13> kDays{0, 31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  needBetween(text.substr(0, 2), 1, 12);
  needBetween(text.substr(2, 2), 1, kDays[decimal(text.substr(0, 2))]);
}

void needTime(std::string_view text) {
  needBetween(text.substr(0, 2), 0, 23);
  needBetween(text.substr(2, 2), 0, 59);
  needBetween(text.substr(4, 2), 0, 59);
}

bool isLetterOrDigit(char c) {
  return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

void needCharacters(std::string_view text, Kind kind) {
  bool bAll = true;
  for (const char c : text)
    bAll = bAll && (kind == Kind::letters ? isLetterOrDigit(c) : c >= ' ' && c <= '~');
  if (!bAll) throw Failure("a character that has no place: \"" + std::string(text) + "\"");
}

void check(std::string_view text, Kind kind) {
  switch (kind) {
    case Kind::digits:
      return needDigits(text);
    case Kind::date:
      return needDate(text);
    case Kind::time:
      return needTime(text);
    case Kind::dateTime:
      needDate(text);
      return needTime(text.substr(4));
    default:
      return needCharacters(text, kind);
  }
}

Message decoded(std::string_view input) {
  Message message;
  message.type = taken(input, 4);
  needDigits(message.type);
  message.bitmap = binary(taken(input, 8));
  if ((message.bitmap & ~knownBits()) != 0) throw Failure("a field that is not known");
  for (size_t i = 0; i < kFields.size(); ++i) {
    const Field &field = kFields[i];
    if ((message.bitmap & bit(field.number)) == 0) continue;
    const size_t size = field.prefix == 0 ? field.size : decimal(taken(input, field.prefix));
    if (size > field.size) throw Failure("field " + std::to_string(field.number) + " is too long");
    message.values[i] = taken(input, size);
    check(message.values[i], field.kind);
  }
  if (!input.empty()) throw Failure("bytes behind the last field");
  return message;
}

char *putBinary(char *to, uint64_t value, size_t size) {
  for (size_t i = size; i-- > 0;) *to++ = static_cast<char>(value >> (8 * i));
  return to;
}

char *putValue(char *to, const Field &field, std::string_view value) {
  if (field.prefix == 0) {
    needLength(value, field.size, field.size);
  } else {
    needLength(value, 1, field.size);
    *to++ = static_cast<char>('0' + value.size() / 10);
    *to++ = static_cast<char>('0' + value.size() % 10);
  }
  return put(to, value);
}

// The bitmap says which values there are, as an encoder without a decoder in front of it would have to find.
char *encoded(char *to, const Message &message) {
  char *const start = to;
  to = put(to + 2, message.type);
  char *const bitmapAt = to;
  uint64_t bitmap = 0;
  to += 8;
  for (size_t i = 0; i < kFields.size(); ++i) {
    if (message.values[i].empty()) continue;
    bitmap |= bit(kFields[i].number);
    to = putValue(to, kFields[i], message.values[i]);
  }
  putBinary(bitmapAt, bitmap, 8);
  putBinary(start, static_cast<uint64_t>(to - start - 2), 2);
  return to;
}

void convert(std::string_view input, Output &output) {
  while (!input.empty()) {
    const std::string_view message = taken(input, binary(taken(input, 2)));
    output.stop(encoded(output.room(256), decoded(message)));
  }
}

}  // namespace

int main(int count, char **arguments) {
  return bench::program(count, arguments, 0,
                        [](char **names) { bench::convertFile(names[1], names[2], 1, convert); });
}

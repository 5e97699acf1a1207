#include "content.h"

#include <cstring>

#include "characters.h"
#include "kit/bytes.h"
#include "kit/fault.h"

namespace cvt::iso8583 {

using kit::Converted;
using kit::Damage;
using kit::Fault;

namespace {

std::string shown(std::string_view bytes) {
  return kit::quoted(bytes.data(), bytes.size());
}

bool isSigned(const Content &content) {
  return content.type == Type::Xn;
}

const char *unitOf(const Content &content) {
  if (content.type == Type::B) return " bytes";
  return content.type == Type::N || content.type == Type::Z ? " digits" : " characters";
}

// --- Texts

// A text without the pads that a field of fixed length has, if its type is filled at all.
std::string_view withoutPads(const Element &field, std::string_view text) {
  const Content &content = field.content;
  if (!field.frame.fixed || content.rawPad || !fillable(content.type)) return text;
  if (content.right) return text.substr(kit::countStart(text.data(), text.size(), content.pad));
  return text.substr(0, kit::trimmedEnd(text.data(), text.size(), content.pad));
}

// Whether the characters are those of the type, in UTF-8; kGood, or the position of one that is not.
size_t wrongCharacter(const Element &field, std::string_view text) {
  const Type type = field.content.type;
  if (type == Type::N) return kit::isDigits(text.data(), text.size()) ? kGood : firstWrong(text, kDigit);
  if (type == Type::Ans && kit::isPrintable(text.data(), text.size())) return kGood;
  if (type == Type::Xn) return wrongSigned(text);
  return firstWrong(withoutPads(field, text), classOf(type));
}

void checkText(const Element &field, std::string_view text, size_t offset, bool positions) {
  const size_t wrong = wrongCharacter(field, text);
  if (wrong != kGood) {
    throw Fault(positions ? offset + wrong : offset, className(field.content.type), shown(text),
                "Correct it, or psType");
  }
  if (!field.content.date.has_value() || text.empty()) return;
  const char *const expected =
      text.size() == field.content.date->length() ? field.content.date->check(text) : "a whole date";
  if (expected != nullptr) throw Fault(offset, expected, shown(text), "See psDate");
}

std::string_view trimmed(const Element &field, std::string_view text) {
  if (field.content.type != Type::N) return withoutPads(field, text);
  const size_t zeros = kit::countStart(text.data(), text.size(), '0');
  return text.substr(zeros < text.size() || zeros == 0 ? zeros : zeros - 1);
}

std::string_view decoded(const Content &content, std::string_view bytes, size_t offset, kit::Store &store) {
  const size_t room = content.charset->decodedRoom(bytes.size());
  char *out = store.take(room);
  const Converted result = content.charset->decode(bytes.data(), bytes.size(), out, room);
  if (result.damage != Damage::None) {
    throw Fault(offset + result.read,
                std::string(kit::damageText(result.damage)) + " of " + content.charset->name(), shown(bytes),
                "Correct the text, or psCharset");
  }
  store.trim(out, room, result.written);
  return {out, result.written};
}

std::string_view withoutPadBytes(const Content &content, std::string_view bytes) {
  if (content.right) return bytes.substr(kit::countStart(bytes.data(), bytes.size(), content.padByte));
  return bytes.substr(0, kit::trimmedEnd(bytes.data(), bytes.size(), content.padByte));
}

std::string_view readText(const Element &field, std::string_view bytes, size_t offset, kit::Store &store) {
  const Content &content = field.content;
  checkLength(field, bytes.size(), offset);
  // A pad that is a byte and no character is taken off before the bytes become characters.
  if (content.trim && content.rawPad) bytes = withoutPadBytes(content, bytes);
  if (content.ascii && kit::isAscii(bytes.data(), bytes.size())) {
    checkText(field, bytes, offset, true);
    if (content.trim) bytes = trimmed(field, bytes);
    return {store.copy(bytes.data(), bytes.size()), bytes.size()};
  }
  const std::string_view text = decoded(content, bytes, offset, store);
  checkText(field, text, offset, text.size() == bytes.size());
  return content.trim ? trimmed(field, text) : text;
}

// The text in the field's character set, in front of what is still free in the output.
size_t encodeText(const Content &content, std::string_view text, kit::Output &out) {
  if (content.ascii && kit::isAscii(text.data(), text.size())) {
    out.put(text);
    return text.size();
  }
  const Converted result =
      content.charset->encode(text.data(), text.size(), out.at(out.offset()), out.room());
  if (result.damage == Damage::NoRoom) out.reserve(out.room() + 1);
  if (result.damage != Damage::None) {
    throw Fault(out.offset(), std::string(kit::damageText(result.damage)) + " of " + content.charset->name(),
                shown(text), "Correct the text, or psCharset");
  }
  out.reserve(result.written);
  return result.written;
}

size_t writeText(const Element &field, std::string_view value, kit::Output &out) {
  const Content &content = field.content;
  const Frame &frame = field.frame;
  const size_t from = out.offset();
  checkText(field, value, from, false);
  const size_t length = encodeText(content, value, out);
  const bool fills = frame.fixed && length < frame.most && fillable(content.type);
  if (!fills) {
    checkLength(field, length, from);
    return length;
  }
  if (length == 0 && (!content.trim || content.type == Type::N)) {
    throw Fault(from, "a value", "an empty one",
                content.type == Type::N ? "" : "nTrim=\"1\" allows a text of pads");
  }
  const size_t pads = frame.most - length;
  out.reserve(pads);
  char *const start = out.at(from);
  if (content.right) std::memmove(start + pads, start, length);
  std::memset(content.right ? start : start + length, content.padByte, pads);
  return frame.most;
}

// --- Digits, two a byte

char digitAt(std::string_view bytes, size_t halfByte) {
  const auto byte = static_cast<unsigned char>(bytes[halfByte / 2]);
  return static_cast<char>('0' + (halfByte % 2 == 0 ? byte >> 4 : byte & 15));
}

// The half byte that is no digit when there is an odd number of them.
size_t padAt(const Content &content, std::string_view bytes) {
  return content.right ? 0 : 2 * bytes.size() - 1;
}

char padDigit(const Content &content) {
  return content.pad == 'F' ? static_cast<char>('0' + 15) : '0';
}

// How many digits there are when only their bytes are counted.
size_t digitsIn(const Element &field, std::string_view bytes) {
  const size_t digits = 2 * bytes.size();
  const size_t most = field.frame.most - (isSigned(field.content) ? 1 : 0);
  if (digits == 0 || digits > most + 1) return digits;
  const bool marked = !field.frame.fixed && field.content.pad == 'F' &&
                      digitAt(bytes, padAt(field.content, bytes)) == padDigit(field.content);
  return digits > most || marked ? digits - 1 : digits;
}

void unpack(const Content &content, std::string_view bytes, size_t digits, size_t offset, char *out) {
  const size_t skipped = digits % 2 != 0 && content.right ? 1 : 0;
  if (digits % 2 != 0 && digitAt(bytes, padAt(content, bytes)) != padDigit(content)) {
    throw Fault(offset, "the half byte " + std::string(1, content.pad) + " beside an odd number of digits",
                shown(bytes), "See psPad and psAlign");
  }
  size_t i = 0;
  if (skipped != 0) out[i++] = digitAt(bytes, 1);
  for (; i + 1 < digits; i += 2) {
    const auto byte = static_cast<unsigned char>(bytes[(i + skipped) / 2]);
    out[i] = static_cast<char>('0' + (byte >> 4));
    out[i + 1] = static_cast<char>('0' + (byte & 15));
  }
  if (i < digits) out[i] = digitAt(bytes, i + skipped);
}

std::string_view readBcd(const Element &field, std::string_view bytes, size_t length, size_t offset,
                         kit::Store &store) {
  const Content &content = field.content;
  const size_t sign = isSigned(content) && !bytes.empty() ? 1 : 0;
  const std::string_view packed = bytes.substr(sign);
  if (length == kUnknown) length = sign + digitsIn(field, packed);
  checkLength(field, length, offset);
  char *const out = store.take(length);
  if (sign != 0) {
    const Converted read = content.charset->decode(bytes.data(), 1, out, 1);
    if (read.damage != Damage::None) throw Fault(offset, className(content.type), shown(bytes));
  }
  unpack(content, packed, length - sign, offset + sign, out + sign);
  std::string_view value(out, length);
  checkText(field, value, offset, false);
  return content.trim ? trimmed(field, value) : value;
}

// The separator of a track is written as = or D.
unsigned packed(char c) {
  return c == 'D' ? 13 : static_cast<unsigned char>(c) & 15;
}

// `zeros` digits 0 and those of the value.
void pack(const Content &content, size_t zeros, std::string_view value, kit::Output &out) {
  const size_t digits = zeros + value.size();
  const auto digit = [&](size_t i) { return i < zeros ? 0 : packed(value[i - zeros]); };
  char *at = out.reserve((digits + 1) / 2);
  const unsigned pad = packed(padDigit(content));
  size_t i = 0;
  if (digits % 2 != 0 && content.right) *at++ = static_cast<char>(pad << 4 | digit(i++));
  for (; i + 1 < digits; i += 2) *at++ = static_cast<char>(digit(i) << 4 | digit(i + 1));
  if (i < digits) *at = static_cast<char>(digit(i) << 4 | pad);
}

// Where only bytes are counted they must say how many digits they hold; but a 0 may come in front of a number.
void checkCountable(const Element &field, std::string_view value, std::string_view bytes, size_t offset) {
  const bool zeroInFront = field.content.right && field.content.pad == '0';
  if (zeroInFront || digitsIn(field, bytes) == value.size()) return;
  if (value.size() % 2 == 0) {
    throw Fault(offset, "another character than ? where the half byte F would stand", shown(value));
  }
  throw Fault(offset, "an even number of digits, because only their bytes are counted",
              std::to_string(value.size()), "psPad=\"F\" tells an odd number");
}

size_t writeBcd(const Element &field, std::string_view value, kit::Output &out) {
  const Content &content = field.content;
  const size_t from = out.offset();
  checkText(field, value, from, false);
  const bool fills = field.frame.fixed && content.type == Type::N && !value.empty();
  const size_t zeros = fills && value.size() < field.frame.most ? field.frame.most - value.size() : 0;
  checkLength(field, zeros + value.size(), from);
  const size_t sign = isSigned(content) && !value.empty() ? 1 : 0;
  if (sign != 0) encodeText(content, value.substr(0, 1), out);
  const size_t digits = out.offset();
  pack(content, zeros, value.substr(sign), out);
  if (countsOnlyBytes(field)) {
    checkCountable(field, value.substr(sign), {out.at(digits), out.offset() - digits}, from);
  }
  return zeros + value.size();
}

// --- Bytes

void bytesToBits(std::string_view bytes, char *out) {
  for (const char byte : bytes) {
    for (int bit = 7; bit >= 0; --bit) {
      *out++ = static_cast<char>('0' + (static_cast<unsigned char>(byte) >> bit & 1));
    }
  }
}

// The hexadecimal digits of a message, as ASCII.
std::string_view hexText(const Element &field, std::string_view bytes, size_t offset, kit::Store &store) {
  const Content &content = field.content;
  const std::string_view text = content.ascii
                                    ? std::string_view(store.copy(bytes.data(), bytes.size()), bytes.size())
                                    : decoded(content, bytes, offset, store);
  for (size_t i = 0; i < text.size(); ++i) {
    if (hexDigit(text[i]) > 15) throw Fault(offset + i, "hexadecimal digits", shown(text));
  }
  return text;
}

std::string_view readHex(const Element &field, std::string_view bytes, size_t offset, kit::Store &store) {
  if (bytes.size() % 2 != 0) {
    throw Fault(offset, "an even number of hexadecimal digits", std::to_string(bytes.size()));
  }
  checkLength(field, bytes.size() / 2, offset);
  const std::string_view text = hexText(field, bytes, offset, store);
  if (!field.content.bits) return text;
  char *const out = store.take(4 * text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    for (unsigned bit = 0; bit < 4; ++bit) {
      out[4 * i + bit] = static_cast<char>('0' + (hexDigit(text[i]) >> (3 - bit) & 1));
    }
  }
  return {out, 4 * text.size()};
}

std::string_view readBytes(const Element &field, std::string_view bytes, size_t offset, kit::Store &store) {
  checkLength(field, bytes.size(), offset);
  const size_t length = bytes.size() * (field.content.bits ? 8 : 2);
  char *const out = store.take(length);
  if (field.content.bits) {
    bytesToBits(bytes, out);
  } else {
    bytesToHex(bytes, out);
  }
  return {out, length};
}

// Digit i of a value of hexadecimal digits or of bits, as a number: 0 .. 15.
unsigned nibbleAt(const Content &content, std::string_view value, size_t i) {
  if (!content.bits) return hexDigit(value[i]);
  unsigned digit = 0;
  for (size_t bit = 4 * i; bit < 4 * i + 4; ++bit) {
    digit =
        value[bit] == '0' || value[bit] == '1' ? digit << 1 | static_cast<unsigned>(value[bit] - '0') : 16;
    if (digit > 15) return 16;
  }
  return digit;
}

size_t writeBytes(const Element &field, std::string_view value, kit::Output &out) {
  const Content &content = field.content;
  const size_t from = out.offset();
  const size_t each = content.bits ? 8 : 2;
  if (value.size() % each != 0) {
    throw Fault(from, content.bits ? "8 bits a byte" : "two hexadecimal digits a byte", shown(value));
  }
  const size_t length = value.size() / each;
  checkLength(field, length, from);
  char *const room = out.reserve(wireBytes(content, length));
  for (size_t i = 0; i < 2 * length; ++i) {
    const unsigned digit = nibbleAt(content, value, i);
    if (digit > 15) throw Fault(from, content.bits ? "bits" : "hexadecimal digits", shown(value));
    if (content.coding == Coding::Hex) {
      room[i] = content.bits ? kHexLetters[digit] : value[i];
    } else {
      room[i / 2] =
          static_cast<char>(i % 2 == 0 ? digit << 4 : static_cast<unsigned char>(room[i / 2]) | digit);
    }
  }
  if (content.coding != Coding::Hex || content.ascii) return length;
  for (size_t i = 0; i < 2 * length; ++i) {
    const char c = room[i];
    content.charset->encode(&c, 1, room + i, 1);
  }
  return length;
}

}  // namespace

unsigned hexDigit(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
  return 16;
}

void bytesToHex(std::string_view bytes, char *out) {
  for (const char c : bytes) {
    *out++ = kHexLetters[static_cast<unsigned char>(c) >> 4];
    *out++ = kHexLetters[static_cast<unsigned char>(c) & 15];
  }
}

void checkLength(const Element &field, size_t length, size_t offset) {
  const Frame &frame = field.frame;
  if (length >= frame.least && length <= frame.most) return;
  const bool few = length < frame.least;
  const std::string bound = frame.fixed ? "" : few ? "at least " : "at most ";
  throw Fault(offset, bound + std::to_string(few ? frame.least : frame.most) + unitOf(field.content),
              std::to_string(length), frame.fixed ? "See nLen" : "See nMinLen and nMaxLen");
}

size_t wireBytes(const Content &content, size_t length) {
  if (content.coding == Coding::Hex) return 2 * length;
  if (content.coding != Coding::Bcd) return length;
  const size_t sign = isSigned(content) && length > 0 ? 1 : 0;
  return sign + (length - sign + 1) / 2;
}

bool countsOnlyBytes(const Element &field) {
  return !field.frame.fixed && (field.frame.digits == 0 || field.frame.countsBytes);
}

bool isOnlyPads(const Content &content, std::string_view bytes) {
  return content.trim && content.type != Type::N && withoutPadBytes(content, bytes).empty();
}

std::string_view readContent(const Element &field, std::string_view bytes, size_t length, size_t offset,
                             kit::Store &store) {
  switch (field.content.coding) {
    case Coding::Bcd:
      return readBcd(field, bytes, length, offset, store);
    case Coding::Hex:
      return readHex(field, bytes, offset, store);
    case Coding::Binary:
      return readBytes(field, bytes, offset, store);
    case Coding::Text:
      break;
  }
  return readText(field, bytes, offset, store);
}

size_t writeContent(const Element &field, std::string_view value, kit::Output &out) {
  if (field.content.coding == Coding::Bcd) return writeBcd(field, value, out);
  if (field.content.coding == Coding::Text) return writeText(field, value, out);
  return writeBytes(field, value, out);
}

}  // namespace cvt::iso8583

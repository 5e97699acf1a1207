#include "field.h"

#include <algorithm>
#include <cstring>

#include "kit/bytes.h"
#include "kit/fault.h"
#include "kit/plain_digits.h"

namespace cvt::fix {

using kit::Charset;
using kit::Converted;
using kit::Damage;
using kit::Fault;
using kit::quoted;

namespace {

constexpr size_t kMaxNumberBytes = 64;
constexpr size_t kNumberRoom = kMaxNumberBytes * 4 + 16;

// --- Texts
// ------------------------------------------------------------------------------------------------------

std::string_view trim(std::string_view text, char pad, bool right) {
  if (!right) return text.substr(0, kit::trimmedEnd(text.data(), text.size(), pad));
  return text.substr(kit::countStart(text.data(), text.size(), pad));
}

bool plain(std::string_view text) {
  return kit::isPrintable(text.data(), text.size());
}

// Position of the first control character of a UTF-8 text, npos when there is none.
size_t findControl(std::string_view text) {
  for (size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c < 0x20 || c == 0x7F) return i;
    if (c == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0) return i;
  }
  return std::string_view::npos;
}

// --- Faults
// ----------------------------------------------------------------------------------------------------

std::string shown(std::string_view bytes) {
  return quoted(bytes.data(), bytes.size());
}

[[noreturn]] void refuseControl(std::string_view bytes, size_t offset) {
  throw Fault(offset, "text without control characters", shown(bytes),
              "Correct the text, or set psControl to kept");
}

[[noreturn]] void refuseDamage(const FieldPlan &field, const Converted &result, std::string_view bytes,
                               size_t offset) {
  throw Fault(offset, std::string(kit::damageText(result.damage)) + " of " + field.charset->name(),
              shown(bytes), "Correct the text, or psCharset");
}

bool isAllowed(const FieldPlan &field, std::string_view value) {
  return std::find(field.allowed.begin(), field.allowed.end(), value) != field.allowed.end();
}

// A value that is written need not be canonical.
void checkAllowed(const FieldPlan &field, std::string_view value, size_t offset) {
  char number[kit::kCanonicalRoom];
  if (isAllowed(field, value) || isAllowed(field, valueAsRead(field, value, number))) return;
  std::string all;
  for (const std::string &one : field.allowed) all += (all.empty() ? "" : ", ") + quoted(one);
  throw Fault(offset, "one of " + all, shown(value), "Write one of them, or add the value to psValues");
}

// --- Reading
// -----------------------------------------------------------------------------------------------------

std::string_view decodeText(const FieldPlan &field, std::string_view bytes, size_t offset,
                            kit::Store &store) {
  const size_t room = field.charset->decodedRoom(bytes.size());
  char *out = store.take(room);
  const Converted result = field.charset->decode(bytes.data(), bytes.size(), out, room);
  if (result.damage != Damage::None) refuseDamage(field, result, bytes, offset + result.read);
  store.trim(out, room, result.written);
  return {out, result.written};
}

// Everything but printable ASCII in a set that contains it.
std::string_view readOtherText(const FieldPlan &field, std::string_view bytes, size_t offset,
                               kit::Store &store) {
  // In sets of several bytes a character may end in the pad's byte: such a text is trimmed when decoded.
  const bool bytewise = field.rawPad || field.charset->isUtf8() || field.charset->oneByte();
  const std::string_view body = field.trims && bytewise ? trim(bytes, field.pad, field.right) : bytes;
  const size_t start = static_cast<size_t>(body.data() - bytes.data());
  std::string_view text = decodeText(field, body, offset + start, store);
  if (field.trims && !bytewise) text = trim(text, field.padText, field.right);
  if (field.controlKept) return text;
  const size_t control = findControl(text);
  if (control == std::string_view::npos) return text;
  const bool oneToOne = text.size() == body.size() && bytewise;
  refuseControl(bytes, offset + (oneToOne ? start + control : 0));
}

std::string_view readText(const FieldPlan &field, std::string_view bytes, size_t offset, kit::Store &store) {
  if (field.charset->containsAscii()) {
    const std::string_view body = trim(bytes, field.pad, field.right);
    if (plain(body)) return {store.copy(body.data(), body.size()), body.size()};
  }
  return readOtherText(field, bytes, offset, store);
}

std::string_view readRaw(const FieldPlan &field, std::string_view bytes, kit::Store &store) {
  if (field.trims) bytes = trim(bytes, field.pad, field.right);
  return {store.copy(bytes.data(), bytes.size()), bytes.size()};
}

std::string_view readDigits(const FieldPlan &field, std::string_view bytes, size_t offset,
                            kit::Store &store) {
  if (field.blankAllowed && bytes[0] == field.blank &&
      kit::trimmedEnd(bytes.data(), bytes.size(), field.blank) == 0) {
    return {store.take(0), 0};  // NOLINT(bugprone-string-constructor): empty, and not null
  }
  const char *in = bytes.data();
  if (field.plainDigits) {
    const kit::PlainDigits plain(in, bytes.size(), static_cast<size_t>(field.number.decimals));
    if (plain.digits()) {
      char *const out = store.take(plain.length());
      plain.put(out);
      return {out, plain.length()};
    }
  }
  char text[kNumberRoom];
  if (field.type == FieldType::Number && !field.charset->containsAscii()) {
    const Converted result = field.charset->decode(in, bytes.size(), text, sizeof text);
    if (result.damage != Damage::None) refuseDamage(field, result, bytes, offset + result.read);
    in = text;
  }
  char out[kit::kCanonicalRoom];
  const kit::NumberResult result = kit::readNumber(field.number, in, bytes.size(), out);
  if (result.expected != nullptr) {
    throw Fault(offset + result.at, result.expected, shown(bytes),
                "Correct the number, or psType and psSign");
  }
  return {store.copy(out, result.length), result.length};
}

std::string_view readConstant(const FieldPlan &field, std::string_view bytes, size_t offset,
                              kit::Store &store) {
  if (bytes.size() != field.bytes.size() || !standsAt(bytes.data(), field.bytes)) {
    throw Fault(offset, quoted(field.bytes.bytes), shown(bytes), "");
  }
  return {store.copy(field.value.data(), field.value.size()), field.value.size()};
}

// --- Writing
// -----------------------------------------------------------------------------------------------------

[[noreturn]] void tooLong(const FieldPlan &field, std::string_view value, size_t offset) {
  throw Fault(offset, "at most " + std::to_string(field.length) + (field.chars ? " characters" : " bytes"),
              shown(value), "Shorten the value, or set psOverflow to cut");
}

// Puts the text at the start of `room` bytes, or what fits of it; the number of bytes written.
Converted encodeText(const FieldPlan &field, std::string_view value, char *out, size_t room, size_t offset) {
  if (!field.controlKept && findControl(value) != std::string_view::npos) refuseControl(value, offset);
  const Converted result = field.charset->encode(value.data(), value.size(), out, room);
  if (result.damage != Damage::None && result.damage != Damage::NoRoom) {
    refuseDamage(field, result, value, offset);
  }
  return result;
}

void writeBytes(const FieldPlan &field, std::string_view value, kit::Output &out) {
  const size_t offset = out.offset();
  char *room = out.reserve(field.length);
  size_t used = value.size();
  if (used <= field.length && plain(value) && field.charset->containsAscii()) {
    if (used != 0) std::memcpy(room + (field.right ? field.length - used : 0), value.data(), used);
  } else {
    const Converted result = encodeText(field, value, room, field.length, offset);
    if (result.damage == Damage::NoRoom && !field.cut) tooLong(field, value, offset);
    used = result.written;
    if (field.right && used < field.length) std::memmove(room + (field.length - used), room, used);
  }
  std::memset(room + (field.right ? 0 : used), field.pad, field.length - used);
}

void writeChars(const FieldPlan &field, std::string_view value, kit::Output &out) {
  const size_t offset = out.offset();
  const Converted known = Charset::find(nullptr)->measure(value.data(), value.size(), field.length);
  if (known.damage == Damage::Invalid || (known.damage == Damage::Cut && known.read < value.size())) {
    throw Fault(offset, "valid UTF-8", shown(value), "");
  }
  if (known.read < value.size() && !field.cut) tooLong(field, value, offset);
  const size_t pads = field.length - known.written;
  if (field.right) out.fill(field.pad, pads);
  value = value.substr(0, known.read);
  const Converted result = encodeText(field, value, out.at(out.offset()), out.room(), offset);
  if (result.damage == Damage::NoRoom) out.reserve(out.room() + 1);
  out.reserve(result.written);
  if (!field.right) out.fill(field.pad, pads);
}

// All of the text, as many bytes as it has.
void writeAllText(const FieldPlan &field, std::string_view value, kit::Output &out) {
  if (plain(value) && field.charset->containsAscii() && value.size() <= field.length) return out.put(value);
  const size_t offset = out.offset();
  const size_t room = std::min(field.length, out.room());
  const Converted result = encodeText(field, value, out.at(offset), room, offset);
  if (result.damage == Damage::NoRoom && room < field.length) out.reserve(out.room() + 1);
  if (result.damage == Damage::NoRoom && !field.cut) tooLong(field, value, offset);
  out.reserve(result.written);
}

void writeAllBytes(const FieldPlan &field, std::string_view value, kit::Output &out) {
  if (value.size() > field.length) {
    throw Fault(out.offset(), "at most " + std::to_string(field.length) + " bytes",
                std::to_string(value.size()) + " bytes", "");
  }
  out.put(value);
}

void writeRaw(const FieldPlan &field, std::string_view value, kit::Output &out) {
  if (value.size() > field.length || (value.size() < field.length && !field.trims)) {
    throw Fault(out.offset(), (field.trims ? "at most " : "") + std::to_string(field.length) + " bytes",
                std::to_string(value.size()) + " bytes",
                field.trims ? "" : "Set psPad to fill shorter values");
  }
  if (field.right) out.fill(field.pad, field.length - value.size());
  out.put(value);
  if (!field.right) out.fill(field.pad, field.length - value.size());
}

void writeDigits(const FieldPlan &field, std::string_view value, kit::Output &out) {
  const size_t offset = out.offset();
  char *room = out.reserve(field.length);
  const auto decimals = static_cast<size_t>(field.number.decimals);
  if (field.plainDigits && kit::putPlainDigits(value, decimals, room, field.length)) return;
  const bool recode = field.type == FieldType::Number && !field.charset->containsAscii();
  char text[kNumberRoom];
  const kit::NumberResult result = kit::writeNumber(field.number, value, recode ? text : room, field.length);
  if (result.expected != nullptr) {
    throw Fault(offset, result.expected, shown(value),
                "The field has " + std::to_string(kit::digitsOf(field.number, field.length)) + " digits, " +
                    std::to_string(field.number.decimals) + " of them decimals");
  }
  if (recode) field.charset->encode(text, field.length, room, field.length);
}

inline bool isNeeded(const FieldPlan &field) {
  return !field.blankAllowed || field.hasDefault;
}

// Where a value is needed, one of nothing but pads is none: it would not come back.
inline bool isEmpty(const FieldPlan &field, std::string_view value) {
  if (value.empty()) return true;
  if (!isNeeded(field) || field.isNumber() || !field.trims) return false;
  return trim(value, field.padText, field.right).empty();
}

// What is left of a text that is cut; of any other, all.
std::string_view cutText(const FieldPlan &field, std::string_view value, kit::Output &out) {
  if (field.chars) {
    const Converted known = Charset::find(nullptr)->measure(value.data(), value.size(), field.length);
    return known.damage == Damage::None ? value.substr(0, known.read) : value;
  }
  const size_t room = std::min(field.length, out.room());
  const Converted result = field.charset->encode(value.data(), value.size(), out.at(out.offset()), room);
  return result.damage == Damage::NoRoom && room == field.length ? value.substr(0, result.read) : value;
}

// Whether no value would be written where one is needed, or none was given.
inline bool isNone(const FieldPlan &field, std::string_view value, kit::Output &out) {
  return isEmpty(field, field.cut && isNeeded(field) ? cutText(field, value, out) : value);
}

// No value: the default, or blanks where they are allowed. Whether that was all.
inline bool writeNone(const FieldPlan &field, std::string_view &value, kit::Output &out) {
  if (field.hasDefault) {
    value = field.value;
    return false;
  }
  if (!field.blankAllowed) {
    const char *const rest = isEmpty(field, value) ? "" : ", of which no more than pads fits";
    throw Fault(out.offset(), "a value", value.empty() ? "an empty one" : shown(value) + rest,
                "Give the field a value, psDefault, or psBlank allowed");
  }
  if (!field.isNumber()) return false;
  out.fill(field.blank, field.length);
  return true;
}

void writeConstant(const FieldPlan &field, std::string_view value, kit::Output &out) {
  char number[kit::kCanonicalRoom];
  if (!value.empty() && value != field.value && valueAsRead(field, value, number) != field.value) {
    throw Fault(out.offset(), quoted(field.value), shown(value), "Leave the value empty or equal to psConst");
  }
  out.fill(field.bytes.pad, field.bytes.before);
  out.put(field.bytes.bytes);
  out.fill(field.bytes.pad, field.bytes.behind);
}

inline void checkValue(const FieldPlan &field, std::string_view value, std::string_view bytes,
                       size_t offset) {
  if (value.empty() && !field.blankAllowed) {
    throw Fault(offset, "a value", shown(bytes), "Fill the field, or set psBlank to allowed");
  }
  if (!field.allowed.empty() && !(value.empty() && field.blankAllowed)) checkAllowed(field, value, offset);
}

}  // namespace

size_t fieldWidth(const FieldPlan &field, const char *in, size_t left, size_t offset) {
  size_t width = field.length;
  Damage damage = left < width ? Damage::Cut : Damage::None;
  if (field.chars) {
    const Converted measured = field.charset->measure(in, left, field.length);
    width = measured.read;
    damage = measured.damage;
  }
  if (damage == Damage::None) return width;
  if (damage != Damage::Cut) {
    refuseDamage(field, {width, 0, damage}, {in, left}, offset + width);
  }
  throw Fault(offset, std::to_string(field.length) + (field.chars ? " characters" : " bytes"),
              left == 0 ? "the end" : shown({in, left}) + " and the end", "");
}

std::string_view readField(const FieldPlan &field, const char *in, size_t width, size_t offset,
                           kit::Store &store) {
  const std::string_view bytes(in, width);
  if (field.constant) return readConstant(field, bytes, offset, store);
  const std::string_view value = field.type == FieldType::Text  ? readText(field, bytes, offset, store)
                                 : field.type == FieldType::Raw ? readRaw(field, bytes, store)
                                                                : readDigits(field, bytes, offset, store);
  if (field.checked) checkValue(field, value, bytes, offset);
  return value;
}

void writeField(const FieldPlan &field, std::string_view value, kit::Output &out) {
  if (field.constant) return writeConstant(field, value, out);
  if (isNone(field, value, out) && writeNone(field, value, out)) return;
  if (!field.allowed.empty() && !value.empty()) checkAllowed(field, value, out.offset());
  if (field.type == FieldType::Raw) return writeRaw(field, value, out);
  if (field.isNumber()) return writeDigits(field, value, out);
  if (field.chars) return writeChars(field, value, out);
  writeBytes(field, value, out);
}

std::string_view readVariable(const FieldPlan &field, std::string_view bytes, size_t offset,
                              kit::Store &store) {
  const bool copied = field.type == FieldType::Raw || (plain(bytes) && field.charset->containsAscii());
  const std::string_view value = copied
                                     ? std::string_view(store.copy(bytes.data(), bytes.size()), bytes.size())
                                     : readOtherText(field, bytes, offset, store);
  if (field.checked) checkValue(field, value, bytes, offset);
  return value;
}

void writeVariable(const FieldPlan &field, std::string_view value, kit::Output &out) {
  const size_t offset = out.offset();
  if (isNone(field, value, out)) writeNone(field, value, out);
  if (!field.allowed.empty() && !value.empty()) checkAllowed(field, value, offset);
  field.type == FieldType::Raw ? writeAllBytes(field, value, out) : writeAllText(field, value, out);
  if (field.lengthBy != Length::Mark) return;
  const size_t length = out.offset() - offset;
  const void *mark = std::memchr(out.at(offset), field.mark, length);
  if (mark != nullptr) {
    const auto at = static_cast<size_t>(static_cast<const char *>(mark) - out.at(offset));
    throw Fault(offset + at, "a value without the mark " + quoted(&field.mark, 1) + " that ends it",
                shown(value), "Change the value, or psEnd");
  }
  out.put(field.mark);
}

std::string_view valueAsRead(const FieldPlan &field, std::string_view value, char *number) {
  if (field.isNumber()) {
    kit::NumberSpec widest;
    widest.sign = kit::NumberSign::Leading;
    widest.decimals = field.number.decimals;
    char digits[kit::kMaxDigits + 1];
    const kit::NumberResult written = kit::writeNumber(widest, value, digits, sizeof digits);
    if (written.expected != nullptr) return value;
    return {number, kit::readNumber(widest, digits, sizeof digits, number).length};
  }
  return field.trims ? trim(value, field.padText, field.right) : value;
}

}  // namespace cvt::fix

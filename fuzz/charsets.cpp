// charsets.cpp: character sets. What is decoded is UTF-8, counts as many characters as were measured, and is
// encoded again.
#include "kit/charset.h"

#include "support/input.h"

using namespace cvt::kit;

namespace {

constexpr const char *kNames[] = {"UTF-8",   "ISO-8859-1", "ISO-8859-15", "CP037",    "CP1252",
                                  "GB18030", "UTF-16BE",   "SHIFT_JIS",   "UTF-16LE", "EUC-KR"};

void decode(const Charset &set, const std::string &bytes) {
  std::string text(set.decodedRoom(bytes.size()), '\0');
  const Converted decoded = set.decode(bytes.data(), bytes.size(), text.data(), text.size());
  fuzz::require(decoded.damage != Damage::NoRoom, "the room suffices");
  fuzz::require(decoded.read <= bytes.size() && decoded.written <= text.size(), "the lengths fit");
  text.resize(decoded.written);
  fuzz::require(Charset::checkUtf8(text.data(), text.size()).damage == Damage::None, "it is UTF-8");
  if (decoded.damage != Damage::None) return;
  fuzz::require(decoded.read == bytes.size(), "all of it was read");

  const size_t characters = Charset::countUtf8(text.data(), text.size());
  const Converted measured = set.measure(bytes.data(), bytes.size(), characters);
  fuzz::require(measured.damage == Damage::None && measured.read <= bytes.size(), "it can be measured");

  std::string back(bytes.size() * 4 + 8, '\0');
  const Converted encoded = set.encode(text.data(), text.size(), back.data(), back.size());
  fuzz::require(encoded.damage == Damage::None, "it is encoded again");
}

void encode(const Charset &set, const std::string &text, size_t room) {
  std::string bytes(room, '\0');
  const Converted encoded = set.encode(text.data(), text.size(), bytes.data(), room);
  fuzz::require(encoded.read <= text.size() && encoded.written <= room, "the lengths fit");
}

void cut(const std::string &text, size_t limit) {
  if (Charset::checkUtf8(text.data(), text.size()).damage != Damage::None) return;
  const size_t length = Charset::cutUtf8(text.data(), text.size(), limit);
  fuzz::require(length <= limit && length <= text.size(), "it is cut to its limit");
  fuzz::require(Charset::checkUtf8(text.data(), length).damage == Damage::None, "no character is cut");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const Charset *const set = Charset::find(kNames[input.below(std::size(kNames))]);
  const size_t room = input.byte();
  const std::string bytes = input.rest();
  cut(bytes, room);
  if (set == nullptr) return 0;
  decode(*set, bytes);
  encode(*set, bytes, room);
  return 0;
}

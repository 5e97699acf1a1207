// numbers.cpp: the numbers of records. What is read is canonical; it is written, and read again as the same
// number; without lenience it is written with the same bytes.
#include "kit/number.h"

#include "support/input.h"

using namespace cvt::kit;

namespace {

NumberSpec specOf(fuzz::Input &input) {
  NumberSpec spec;
  spec.form = static_cast<NumberForm>(input.below(8));
  spec.sign = static_cast<NumberSign>(input.below(3));
  spec.fill = static_cast<NumberFill>(input.below(3));
  spec.decimals = static_cast<int>(input.below(10));
  const uint8_t flags = input.byte();
  spec.point = (flags & 1) != 0;
  spec.plusBlank = (flags & 2) != 0;
  spec.lenient = (flags & 4) != 0;
  return spec;
}

bool isCanonical(std::string_view text, int decimals) {
  if (text.starts_with('-')) text.remove_prefix(1);
  const size_t point = text.find('.');
  const std::string_view whole = text.substr(0, point);
  const std::string_view fraction = point == text.npos ? "" : text.substr(point + 1);
  const auto digits = [](std::string_view part) { return part.find_first_not_of("0123456789") == part.npos; };
  return !whole.empty() && digits(whole) && (whole.size() == 1 || whole[0] != '0') && digits(fraction) &&
         fraction.size() == static_cast<size_t>(decimals) && (point != text.npos) == (decimals > 0);
}

void read(const NumberSpec &spec, const std::string &bytes) {
  char out[kCanonicalRoom];
  const NumberResult result = readNumber(spec, bytes.data(), bytes.size(), out);
  if (result.expected != nullptr) {
    fuzz::require(result.at <= bytes.size(), "the offset of the damage lies in the number");
    return;
  }
  const std::string text(out, result.length);
  fuzz::require(isCanonical(text, spec.decimals), "[" + text + "] is canonical");
  std::string written(bytes.size(), '?');
  const NumberResult writing = writeNumber(spec, text, written.data(), written.size());
  if (spec.lenient && writing.expected != nullptr) return;  // without its sign it may fill the room of one
  fuzz::require(writing.expected == nullptr, "[" + text + "] can be written");
  fuzz::require(spec.lenient || written == bytes, "[" + text + "] is written as it was read");
  char again[kCanonicalRoom];
  const NumberResult reading = readNumber(spec, written.data(), written.size(), again);
  fuzz::require(reading.expected == nullptr && std::string_view(again, reading.length) == text,
                "[" + text + "] is read again from " + written);
}

void write(const NumberSpec &spec, size_t room, const std::string &text) {
  std::string written(room, '?');
  if (writeNumber(spec, text, written.data(), room).expected != nullptr) return;
  char again[kCanonicalRoom];
  const NumberResult reading = readNumber(spec, written.data(), room, again);
  fuzz::require(reading.expected == nullptr, "[" + text + "] is written so that it can be read");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const NumberSpec spec = specOf(input);
  const size_t room = input.below(40);
  const std::string bytes = input.rest();
  if (digitsOf(spec, bytes.size()) > 0) read(spec, bytes);
  if (digitsOf(spec, room) > 0) write(spec, room, bytes);
  return 0;
}

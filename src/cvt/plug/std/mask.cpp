// mask.cpp: values that must not be seen whole.
#include <algorithm>

#include "kit/utf8.h"
#include "topics.h"

namespace cvt::functions {

namespace {

constexpr int kMostCharacters = 1'000'000;
constexpr size_t kPanFirst = 6;
constexpr size_t kPanLast = 4;
constexpr size_t kPanMin = 12;
constexpr size_t kPanMax = 19;

bool beginsCharacter(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

size_t characters(std::string_view text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), beginsCharacter));
}

// Bytes of the first characters of a text.
size_t bytesOf(std::string_view text, size_t count) {
  size_t at = 0;
  for (; at < text.size(); ++at) {
    if (beginsCharacter(text[at]) && count-- == 0) break;
  }
  return at;
}

// The character that hides others: one, of the argument if there is one.
std::string_view cover(kit::Call &call, int argument) {
  if (!call.has(argument)) return "*";
  const std::string_view text = call.utf8(argument);
  if (characters(text) != 1) {
    call.refuse(argument, kit::Fault::kHere, "one character", text.empty() ? "none" : "more");
  }
  return text;
}

// Shows so many characters at both ends, or none when that would be all.
void answerMasked(kit::Call &call, std::string_view text, size_t first, size_t last, std::string_view cover) {
  const size_t count = characters(text);
  const bool shown = first + last < count;
  const size_t front = shown ? bytesOf(text, first) : 0;
  const size_t back = shown ? bytesOf(text, count - last) : text.size();
  const size_t hidden = shown ? count - first - last : count;
  char *out = call.result(front + hidden * cover.size() + (text.size() - back));
  out = std::copy_n(text.data(), front, out);
  for (size_t i = 0; i < hidden; ++i) out = std::copy(cover.begin(), cover.end(), out);
  std::copy(text.begin() + static_cast<std::ptrdiff_t>(back), text.end(), out);
}

void mask(kit::Call &call) {
  const std::string_view text = call.utf8(0);
  const auto first = static_cast<size_t>(call.number(1, 0, kMostCharacters));
  const auto last = static_cast<size_t>(call.number(2, 0, kMostCharacters));
  answerMasked(call, text, first, last, cover(call, 3));
}

void maskPan(kit::Call &call) {
  const std::string_view text = call.text(0);
  const bool digits = std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
  if (!digits || text.size() < kPanMin || text.size() > kPanMax) {
    call.refuse(0, kit::Fault::kHere, "12 to 19 digits", digits ? "another length" : "something else",
                "Use mask for what is no card number");
  }
  answerMasked(call, text, kPanFirst, kPanLast, cover(call, 1));
}

// --- The table -----------------------------------------------------------------------------------------------

// clang-format off
#define COVER {"character", "what the others become; * when left out"}

constexpr kit::FunctionRow kFunctions[] = {
    {"mask",
     {{"text", "any text"}, {"first", "characters to show at the beginning"}, {"last", "characters to show at the end"},
      COVER},
     3, 4, mask,
     "the text with the other characters hidden; with all hidden, when it has no more than those to show",
     {{{"DE89370400440532013000", "4", "4"}, "DE89**************3000"},
      {{"Zürich", "2", "0", "x"}, "Züxxxx"},
      {{"1234", "2", "2"}, "****"},
      {{"", "1", "1"}, ""}},
     {{{"secret", "1", "1", ""}, "Arg[4] Len[0]: expected one character, found none."}}},

    {"maskPan",
     {{"pan", "a card number, 12 to 19 digits"}, COVER}, 1, 2, maskPan,
     "the first six digits and the last four, the others hidden",
     {{{"4111111111111111"}, "411111******1111"},
      {{"378282246310005", "X"}, "378282XXXXX0005"}},
     {{{"4111 1111 1111 1111"}, "Arg[1] Len[19]: expected 12 to 19 digits, found something else. Use mask for what is "
                                "no card number."},
      {{"41111111111"}, "Arg[1] Len[11]: expected 12 to 19 digits, found another length. Use mask for what is no card "
                        "number."}}},
};

#undef COVER
// clang-format on

}  // namespace

constinit const kit::Topic kMask =
    kit::topic<kFunctions>("Masks", "For values that must not be seen whole, in a report or in a log.");

}  // namespace cvt::functions

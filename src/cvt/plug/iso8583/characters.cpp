#include "characters.h"

#include <array>

namespace cvt::iso8583 {

namespace {

constexpr bool within(int c, int first, int last) {
  return c >= first && c <= last;
}

constexpr std::array<unsigned char, 256> makeClasses() {
  std::array<unsigned char, 256> all{};
  for (int c = 0; c < 256; ++c) {
    unsigned classes = 0;
    const bool letter = within(c, 'A', 'Z') || within(c, 'a', 'z');
    if (within(c, '0', '9')) classes |= kDigit;
    if (letter) classes |= kLetter;
    if (c >= 0x80 || (within(c, 0x20, 0x7E) && classes == 0)) classes |= kSpecial;
    if (within(c, 0x30, 0x3F) || c == 'D') classes |= kTrack;
    all[static_cast<size_t>(c)] = static_cast<unsigned char>(classes);
  }
  return all;
}

constexpr std::array<unsigned char, 256> kClasses = makeClasses();

constexpr unsigned kTypeClasses[] = {kDigit,
                                     kLetter,
                                     kDigit | kLetter,
                                     kLetter | kSpecial,
                                     kDigit | kSpecial,
                                     kDigit | kLetter | kSpecial,
                                     kTrack,
                                     0,
                                     kDigit};
constexpr const char *kTypeNames[] = {"digits",
                                      "letters",
                                      "letters and digits",
                                      "letters and special characters",
                                      "digits and special characters",
                                      "letters, digits and special characters",
                                      "digits and separators of a track",
                                      "bytes",
                                      "C or D and digits"};

// The second byte of a control character U+0080 to U+009F.
bool isControl(std::string_view text, size_t i) {
  return i > 0 && static_cast<unsigned char>(text[i - 1]) == 0xC2 &&
         static_cast<unsigned char>(text[i]) < 0xA0;
}

}  // namespace

unsigned classOf(Type type) {
  return kTypeClasses[static_cast<size_t>(type)];
}

const char *className(Type type) {
  return kTypeNames[static_cast<size_t>(type)];
}

bool fillable(Type type) {
  return type != Type::Z && type != Type::B && type != Type::Xn;
}

size_t firstWrong(std::string_view text, unsigned classes) {
  for (size_t i = 0; i < text.size(); ++i) {
    if ((kClasses[static_cast<unsigned char>(text[i])] & classes) == 0 || isControl(text, i)) return i;
  }
  return kGood;
}

size_t wrongSigned(std::string_view text) {
  if (text.empty()) return kGood;
  if (text[0] != 'C' && text[0] != 'D') return 0;
  const size_t wrong = firstWrong(text.substr(1), kDigit);
  return wrong == kGood ? kGood : wrong + 1;
}

}  // namespace cvt::iso8583

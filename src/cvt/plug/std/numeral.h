// numeral.h: numbers as they are written, in the arguments and results of functions.
#pragma once

#include <span>
#include <string_view>

#include "decimal.h"
#include "kit/function.h"

namespace cvt::functions {

// What a number may have besides digits and a sign in front. 0: no such character.
struct Marks {
  char point = '.';
  char group = 0;           // before every third digit from the point, or nowhere
  bool signBehind = false;  // the sign may stand at the other end, too
};

// Whether the text is a number; then `number` is it.
bool readNumber(std::string_view text, const Marks &marks, Decimal &number);

// An argument that is a number; anything else is refused. implied: decimals without a point before them.
Decimal number(kit::Call &call, int argument, const Marks &marks = {}, int implied = 0);

enum class SignStyle { LeadingMinus, Leading, TrailingMinus, Trailing, Unsigned };

struct Style {
  std::string_view point = ".";
  std::string_view group = {};
  SignStyle sign = SignStyle::LeadingMinus;
  size_t width = 0;  // zeros in front of the digits make it that long
};

// The result is that number. Should it not fit the style, the first argument is refused.
void answer(kit::Call &call, const Decimal &number, const Style &style = {});

// Refuses what a calculation could not do; the argument is the one to look at.
void check(kit::Call &call, Trouble trouble, int argument);

// An argument that is one of the words: its position. What is left out is `otherwise`.
int word(kit::Call &call, int argument, std::span<const std::string_view> words, int otherwise);

}  // namespace cvt::functions

// check.cpp: check digits.
#include <algorithm>

#include "topics.h"

namespace cvt::functions {

namespace {

constexpr size_t kMaxIban = 34;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isCapital(char c) {
  return c >= 'A' && c <= 'Z';
}
bool isDigits(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), isDigit);
}

// Digits, at least one; anything else is refused.
std::string_view digits(kit::Call &call, int argument) {
  const std::string_view text = call.text(argument);
  const auto other = std::find_if_not(text.begin(), text.end(), isDigit);
  if (text.empty() || other != text.end()) {
    call.refuse(argument, static_cast<size_t>(other - text.begin()), "a digit",
                text.empty() ? "the end" : "another character");
  }
  return text;
}

char asDigit(int value) {
  return static_cast<char>('0' + value);
}

void answerDigit(kit::Call &call, int value) {
  const char digit = value == 10 ? 'X' : asDigit(value);
  call.answer({&digit, 1});
}

void answerWhether(kit::Call &call, bool holds) {
  call.answer(holds ? "1" : "0");
}

// --- Luhn --------------------------------------------------------------------------------------------------

int luhnDigitOf(std::string_view digits) {
  int sum = 0;
  bool doubled = true;
  for (size_t i = digits.size(); i-- > 0; doubled = !doubled) {
    const int value = (digits[i] - '0') * (doubled ? 2 : 1);
    sum = (sum + (value > 9 ? value - 9 : value)) % 10;
  }
  return (10 - sum) % 10;
}

void luhnDigit(kit::Call &call) {
  answerDigit(call, luhnDigitOf(digits(call, 0)));
}

void luhnCheck(kit::Call &call) {
  const std::string_view text = call.text(0);
  const bool form = isDigits(text) && text.size() > 1;
  answerWhether(call, form && text.back() == asDigit(luhnDigitOf(text.substr(0, text.size() - 1))));
}

// --- Modulo 97 ---------------------------------------------------------------------------------------------

bool isCode(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return isDigit(c) || isCapital(c); });
}

// Two check digits are 02 to 98; the three others would come out right, too.
bool areCheckDigits(std::string_view two) {
  return isDigits(two) && two != "00" && two != "01" && two != "99";
}

// Goes on with the remainder by 97; a letter counts as two digits, A 10 to Z 35.
int remainder97(std::string_view code, int remainder = 0) {
  for (const char c : code) {
    remainder = isDigit(c) ? remainder * 10 + (c - '0') : remainder * 100 + (c - 'A' + 10);
    remainder %= 97;
  }
  return remainder;
}

void mod97Digits(kit::Call &call) {
  const std::string_view code = call.text(0);
  const auto other = std::find_if_not(code.begin(), code.end(), [](char c) { return isCode({&c, 1}); });
  if (code.empty() || other != code.end()) {
    call.refuse(0, static_cast<size_t>(other - code.begin()), "a digit or a capital letter",
                code.empty() ? "the end" : "another character");
  }
  const int check = 98 - remainder97("00", remainder97(code));
  const char two[] = {asDigit(check / 10), asDigit(check % 10)};
  call.answer({two, 2});
}

void mod97Check(kit::Call &call) {
  const std::string_view code = call.text(0);
  const bool form = code.size() > 2 && isCode(code) && areCheckDigits(code.substr(code.size() - 2));
  answerWhether(call, form && remainder97(code) == 1);
}

bool isIban(std::string_view text) {
  if (text.size() < 5 || text.size() > kMaxIban || !isCode(text)) return false;
  if (!isCapital(text[0]) || !isCapital(text[1])) return false;
  if (!areCheckDigits(text.substr(2, 2))) return false;
  return remainder97(text.substr(0, 4), remainder97(text.substr(4))) == 1;
}

void ibanCheck(kit::Call &call) {
  answerWhether(call, isIban(call.text(0)));
}

// --- Weights -----------------------------------------------------------------------------------------------

// The digit that brings the weighted sum to a multiple of the modulus; the last weight is for the last digit.
template <int kModulus>
int weightedDigit(std::string_view digits, std::string_view weights) {
  int sum = 0;
  size_t weight = weights.size();
  for (size_t i = digits.size(); i-- > 0;) {
    if (weight == 0) weight = weights.size();
    --weight;
    sum = (sum + (digits[i] - '0') * (weights[weight] - '0')) % kModulus;
  }
  return (kModulus - sum) % kModulus;
}

template <int kModulus>
void modDigit(kit::Call &call) {
  const std::string_view text = digits(call, 0);
  answerDigit(call, weightedDigit<kModulus>(text, digits(call, 1)));
}

template <int kModulus>
void modCheck(kit::Call &call) {
  const std::string_view text = call.text(0);
  const std::string_view weights = digits(call, 1);
  const std::string_view body = text.substr(0, text.empty() ? 0 : text.size() - 1);
  if (!isDigits(body)) return answerWhether(call, false);
  const int digit = weightedDigit<kModulus>(body, weights);
  answerWhether(call, text.back() == (digit == 10 ? 'X' : asDigit(digit)));
}

// --- The table -----------------------------------------------------------------------------------------------

// clang-format off
#define WEIGHTS {"weights", "digits; the last one is for the last digit, and towards the front they are repeated"}

constexpr kit::FunctionRow kFunctions[] = {
    {"luhnDigit",
     {{"digits", "a number without its check digit"}}, 1, 1, luhnDigit,
     "the check digit by the Luhn formula, as cards have it (ISO/IEC 7812)",
     {{{"7992739871"}, "3"},
      {{"411111111111111"}, "1"}},
     {{{""}, "Arg[1] Len[0] Offset[0]: expected a digit, found the end."},
      {{"4111 1111"}, "Arg[1] Len[9] Offset[4]: expected a digit, found another character."}}},

    {"luhnCheck",
     {{"text", "a number with its check digit at the end"}}, 1, 1, luhnCheck,
     "1 when the check digit is right, 0 when it is not, or the text is not of digits",
     {{{"79927398713"}, "1"},
      {{"79927398710"}, "0"},
      {{"7992 7398 713"}, "0"},
      {{""}, "0"}}},

    {"mod97Digits",
     {{"code", "digits and capital letters; for an IBAN, what stands behind its check digits, and its country"}},
     1, 1, mod97Digits,
     "the two check digits of ISO/IEC 7064, MOD 97-10",
     {{{"794"}, "44"},
      {{"370400440532013000DE"}, "89"},
      {{"539007547034RF"}, "18"}},
     {{{"gb"}, "Arg[1] Len[2] Offset[0]: expected a digit or a capital letter, found another character."}}},

    {"mod97Check",
     {{"text", "a code with its two check digits at the end, such as an LEI"}}, 1, 1, mod97Check,
     "1 when the check digits are right, 0 when they are not, or the text is not of digits and capital letters",
     {{{"79444"}, "1"},
      {{"529900T8BM49AURSDO55"}, "1"},
      {{"529900T8BM49AURSDO56"}, "0"},
      {{"9701"}, "0"}}},

    {"ibanCheck",
     {{"text", "an IBAN (ISO 13616) or a creditor reference (ISO 11649), without blanks"}}, 1, 1, ibanCheck,
     "1 when its form and its check digits are right, otherwise 0; lengths by country are not looked at",
     {{{"DE89370400440532013000"}, "1"},
      {{"GB82WEST12345698765432"}, "1"},
      {{"RF18539007547034"}, "1"},
      {{"DE88370400440532013000"}, "0"},
      {{"DE89 3704 0044 0532 0130 00"}, "0"}}},

    {"mod10Digit",
     {{"digits", "a number without its check digit"}, WEIGHTS}, 2, 2, modDigit<10>,
     "the digit that makes the weighted sum a multiple of 10: of a routing number of the ABA by 137, of a GTIN by 13",
     {{{"02100002", "137"}, "1"},
      {{"400638133393", "13"}, "1"}},
     {{{"0210", ""}, "Arg[2] Len[0] Offset[0]: expected a digit, found the end."}}},

    {"mod10Check",
     {{"text", "a number with its check digit at the end"}, WEIGHTS}, 2, 2, modCheck<10>,
     "1 when the check digit is that of mod10Digit, otherwise 0",
     {{{"021000021", "137"}, "1"},
      {{"021000012", "137"}, "0"}}},

    {"mod11Digit",
     {{"digits", "a number without its check digit"}, WEIGHTS}, 2, 2, modDigit<11>,
     "the digit that makes the weighted sum a multiple of 11, X for ten",
     {{{"8601111794", "765432"}, "7"},
      {{"6", "2"}, "X"}}},

    {"mod11Check",
     {{"text", "a number with its check digit at the end"}, WEIGHTS}, 2, 2, modCheck<11>,
     "1 when the check digit is that of mod11Digit, otherwise 0",
     {{{"86011117947", "765432"}, "1"},
      {{"6X", "2"}, "1"},
      {{"60", "2"}, "0"}}},
};

#undef WEIGHTS
// clang-format on

}  // namespace

constinit const kit::Topic kCheck = kit::topic<kFunctions>(
    "Check digits",
    "What makes a check digit refuses what it cannot compute with; what looks at one answers 0.");

}  // namespace cvt::functions

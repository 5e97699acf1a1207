// number.cpp: exact decimal arithmetic.
#include "numeral.h"
#include "topics.h"

namespace cvt::functions {

namespace {

constexpr int kMost = Decimal::kMaxDigits;
constexpr int kMany = 32;  // numbers that are added up, or compared

constexpr std::string_view kRoundings[] = {"half-up", "half-even", "half-down", "up",
                                           "down",    "ceiling",   "floor"};

Rounding rounding(kit::Call &call, int argument) {
  return static_cast<Rounding>(word(call, argument, kRoundings, -1) + 1);
}

// --- Arithmetic --------------------------------------------------------------------------------------------

void add(kit::Call &call) {
  Decimal sum = number(call, 0);
  for (int i = 1; i < call.count(); ++i) check(call, Decimal::add(sum, number(call, i), sum), i);
  answer(call, sum);
}

void subtract(kit::Call &call) {
  Decimal result = number(call, 0);
  check(call, Decimal::add(result, number(call, 1).negated(), result), 1);
  answer(call, result);
}

void multiply(kit::Call &call) {
  Decimal product = number(call, 0);
  for (int i = 1; i < call.count(); ++i) check(call, Decimal::multiply(product, number(call, i), product), i);
  answer(call, product);
}

void divide(kit::Call &call) {
  Decimal result = number(call, 0);
  const int decimals = call.number(2, 0, kMost);
  check(call, Decimal::divide(result, number(call, 1), decimals, rounding(call, 3), result), 1);
  answer(call, result);
}

void remainder(kit::Call &call) {
  Decimal result = number(call, 0);
  check(call, Decimal::remainder(result, number(call, 1), result), 1);
  answer(call, result);
}

void round(kit::Call &call) {
  Decimal result = number(call, 0);
  const int decimals = call.number(1, 0, kMost);
  check(call, Decimal::round(result, decimals, rounding(call, 2), result), 0);
  answer(call, result);
}

void absolute(kit::Call &call) {
  answer(call, number(call, 0).absolute());
}

void negate(kit::Call &call) {
  answer(call, number(call, 0).negated());
}

void answerOrder(kit::Call &call, int order) {
  call.answer(order < 0 ? "-1" : order > 0 ? "1" : "0");
}

void sign(kit::Call &call) {
  answerOrder(call, number(call, 0).compare({}));
}

void compare(kit::Call &call) {
  const Decimal left = number(call, 0);
  answerOrder(call, left.compare(number(call, 1)));
}

// The number that stands in the wanted order to all others; the first of equal ones.
void extreme(kit::Call &call, int wanted) {
  Decimal found = number(call, 0);
  for (int i = 1; i < call.count(); ++i) {
    const Decimal other = number(call, i);
    if (other.compare(found) == wanted) found = other;
  }
  answer(call, found);
}

void smallest(kit::Call &call) {
  extreme(call, -1);
}

void largest(kit::Call &call) {
  extreme(call, 1);
}

// --- The table ---------------------------------------------------------------------------------------------

// clang-format off
#define LIKE "Numbers look like 7, -0.50 and +12; parseNumber reads other ways of writing them."
#define FILL "Fill the field, or leave the rule out for an empty one with Case."
#define ROUNDING "half-up, half-even, half-down, up (away from zero), down, ceiling or floor; without it, the " \
                 "result must be exact"

constexpr kit::FunctionRow kFunctions[] = {
    {"add",
     {{"a", "a number"}, {"b", "a number"}}, 2, kMany, add,
     "the sum, with as many decimals as the number that has most",
     {{{"12.50", "3.7"}, "16.20"},
      {{"0.1", "0.2"}, "0.3"},
      {{"007", "-7"}, "0"},
      {{"1", "2", "3.000"}, "6.000"},
      {{"99999999999999999999.99", "0.01"}, "100000000000000000000.00"}},
     {{{"12.50", ""}, "Arg[2] Len[0]: expected a number, found an empty value. " FILL},
      {{"1,50", "2"}, "Arg[1] Len[4] Offset[1]: expected the end of the number, found another character. " LIKE},
      {{"1e5", "2"}, "Arg[1] Len[3] Offset[1]: expected the end of the number, found another character. " LIKE},
      {{"1", "12."}, "Arg[2] Len[3] Offset[3]: expected a digit, found the end. " LIKE}}},

    {"subtract",
     {{"a", "a number"}, {"b", "a number"}}, 2, 2, subtract,
     "a less b",
     {{{"10", "0.01"}, "9.99"},
      {{"-5", "-5.0"}, "0.0"},
      {{"0", "12.50"}, "-12.50"}},
     {{{"5-", "1"}, "Arg[1] Len[2] Offset[1]: expected the end of the number, found another character. " LIKE}}},

    {"multiply",
     {{"a", "a number"}, {"b", "a number"}}, 2, kMany, multiply,
     "the product, exact: it has the decimals of all numbers together",
     {{{"12.50", "3"}, "37.50"},
      {{"0.25", "-0.4"}, "-0.100"},
      {{"2", "3", "7"}, "42"}}},

    {"divide",
     {{"a", "a number"}, {"b", "a number"}, {"decimals", "of the result, 0 to 100"}, {"rounding", ROUNDING}},
     3, 4, divide,
     "a divided by b",
     {{{"10", "4", "2"}, "2.50"},
      {{"10", "3", "2", "half-up"}, "3.33"},
      {{"2", "3", "0", "down"}, "0"},
      {{"-7", "2", "0", "half-even"}, "-4"},
      {{"1", "0.002", "0"}, "500"}},
     {{{"10", "3", "2"}, "Arg[2] Len[1]: expected a result with no more decimals than wanted, found more. Name a "
                         "rounding, such as half-up or half-even."},
      {{"1", "0.00", "2"}, "Arg[2] Len[4]: expected a divisor, found zero. Leave the rule out for a zero with Case."},
      {{"1", "3", "2", "nearest"}, "Arg[4] Len[7]: expected half-up, half-even, half-down, up, down, ceiling or "
                                   "floor, found another word."}}},

    {"remainder",
     {{"a", "a number"}, {"b", "a number"}}, 2, 2, remainder,
     "what is left of a when it is divided by b without decimals; it has the sign of a",
     {{{"17", "5"}, "2"},
      {{"-17", "5"}, "-2"},
      {{"5.5", "0.2"}, "0.1"}},
     {{{"17", "0"}, "Arg[2] Len[1]: expected a divisor, found zero. Leave the rule out for a zero with Case."}}},

    {"round",
     {{"a", "a number"}, {"decimals", "of the result, 0 to 100"}, {"rounding", ROUNDING}}, 2, 3, round,
     "the number with so many decimals",
     {{{"2.345", "2", "half-up"}, "2.35"},
      {{"2.345", "2", "half-even"}, "2.34"},
      {{"-2.5", "0", "half-down"}, "-2"},
      {{"-2.1", "0", "floor"}, "-3"},
      {{"-2.9", "0", "ceiling"}, "-2"},
      {{"2.001", "2", "up"}, "2.01"},
      {{"-0.4", "0", "down"}, "0"},
      {{"7", "2"}, "7.00"}},
     {{{"2.345", "2"}, "Arg[1] Len[5]: expected a result with no more decimals than wanted, found more. Name a "
                       "rounding, such as half-up or half-even."},
      {{"2.345", "two"}, "Arg[2] Len[3]: expected a whole number from 0 to 100, found something else."}}},

    {"abs",
     {{"a", "a number"}}, 1, 1, absolute,
     "the number without its sign",
     {{{"-12.50"}, "12.50"},
      {{"+3"}, "3"}}},

    {"negate",
     {{"a", "a number"}}, 1, 1, negate,
     "the number with the other sign; zero has none",
     {{{"12.50"}, "-12.50"},
      {{"-3"}, "3"},
      {{"0.00"}, "0.00"}}},

    {"sign",
     {{"a", "a number"}}, 1, 1, sign,
     "-1, 0 or 1",
     {{{"-0.01"}, "-1"},
      {{"0.00"}, "0"},
      {{"12"}, "1"}}},

    {"compare",
     {{"a", "a number"}, {"b", "a number"}}, 2, 2, compare,
     "-1 when a is less than b, 0 when they are equal, 1 when it is greater",
     {{{"9", "10"}, "-1"},
      {{"1.50", "01.5"}, "0"},
      {{"-1", "-2"}, "1"}}},

    {"min",
     {{"a", "a number"}, {"b", "a number"}}, 2, kMany, smallest,
     "the least of the numbers",
     {{{"9", "10"}, "9"},
      {{"-1", "3", "-1.5"}, "-1.5"}}},

    {"max",
     {{"a", "a number"}, {"b", "a number"}}, 2, kMany, largest,
     "the greatest of the numbers",
     {{{"9", "10"}, "10"},
      {{"-1", "3", "-1.5"}, "3"}}},
};

#undef LIKE
#undef FILL
#undef ROUNDING
// clang-format on

constexpr const char *kAbout =
    "Exact decimal arithmetic. A number is an optional sign, digits, and an optional point with digits; "
    "blanks around it are left out, and zeros in front do not count. It has at most 100 digits, and so has a "
    "result. Results have a `-` or no sign, no zeros in front, and never an exponent.";

}  // namespace

constinit const kit::Topic kNumber = kit::topic<kFunctions>("Numbers", kAbout);

}  // namespace cvt::functions

// number_format.cpp: numbers as other systems write them, to and from those that can be computed with.
#include "numeral.h"
#include "topics.h"

namespace cvt::functions {

using namespace std::literals;

namespace {

constexpr size_t kWhole = kit::Fault::kHere;
constexpr int kMost = Decimal::kMaxDigits;
constexpr int kMaxWidth = 1000;

constexpr std::string_view kSignStyles[] = {"leading-minus", "leading", "trailing-minus", "trailing",
                                            "unsigned"};

void answerWhether(kit::Call &call, bool holds) {
  call.answer(holds ? "1" : "0");
}

void isNumber(kit::Call &call) {
  Decimal number;
  answerWhether(call, readNumber(call.text(0), {}, number));
}

void isInteger(kit::Call &call) {
  Decimal number;
  answerWhether(call, readNumber(call.text(0), {.point = 0}, number));
}

// A point or a separator: one character that is neither digit nor sign, or none.
std::string_view mark(kit::Call &call, int argument, std::string_view otherwise) {
  if (!call.has(argument)) return otherwise;
  const std::string_view text = call.text(argument);
  const bool wrong = !text.empty() && "0123456789+-"sv.find(text[0]) != text.npos;
  if (text.size() > 1 || wrong || (!text.empty() && (text[0] < ' ' || text[0] == '\x7F'))) {
    call.refuse(argument, kWhole, "one ASCII character that is no digit and no sign, or none",
                "another text");
  }
  return text;
}

char first(std::string_view mark) {
  return mark.empty() ? '\0' : mark[0];
}

// A separator that is the point, too, would make another number of it.
void checkApart(kit::Call &call, int separator, std::string_view point, std::string_view group) {
  if (point.empty() || point != group) return;
  call.refuse(separator, kWhole, "another character than the point", "the same");
}

// The first argument with as many decimals as the second one says; none that counts is lost.
Decimal withDecimals(kit::Call &call) {
  Decimal result = number(call, 0);
  const Trouble trouble = Decimal::round(result, call.number(1, 0, kMost), Rounding::None, result);
  if (trouble == Trouble::NotExact) {
    call.refuse(0, kWhole, "a number with no more decimals than wanted", "more", "Use round before");
  }
  check(call, trouble, 0);
  return result;
}

void formatNumber(kit::Call &call) {
  const Decimal formatted = withDecimals(call);
  Style style;
  style.point = mark(call, 2, ".");
  style.group = mark(call, 3, "");
  checkApart(call, 3, style.point, style.group);
  style.sign = static_cast<SignStyle>(word(call, 4, kSignStyles, 0));
  if (call.has(5)) style.width = static_cast<size_t>(call.number(5, 1, kMaxWidth));
  if (style.width > 0 && !style.group.empty()) {
    call.refuse(5, kWhole, "no width beside a separator", "one", "Fill up with padLeft");
  }
  answer(call, formatted, style);
}

void parseNumber(kit::Call &call) {
  const std::string_view point = mark(call, 1, ".");
  const std::string_view group = mark(call, 2, "");
  checkApart(call, 2, point, group);
  answer(call, number(call, 0, {first(point), first(group), true}));
}

void realToImplied(kit::Call &call) {
  const Decimal formatted = withDecimals(call);
  Style style;
  style.point = "";
  if (call.has(2)) style.width = static_cast<size_t>(call.number(2, 1, kMaxWidth));
  style.sign = static_cast<SignStyle>(word(call, 3, kSignStyles, 0));
  answer(call, formatted, style);
}

void impliedToReal(kit::Call &call) {
  const int decimals = call.number(1, 0, kMost);
  answer(call, number(call, 0, {'\0', '\0', true}, decimals));
}

// --- The table ---------------------------------------------------------------------------------------------

// clang-format off
#define MARKS "Numbers are digits, a sign at one of their ends, and the point and separators of the call."
#define FILL "Fill the field, or leave the rule out for an empty one with Case."
#define STYLES "leading-minus (as if left out), leading (a sign always), trailing-minus, trailing, or unsigned " \
               "(negative numbers are refused)"

constexpr kit::FunctionRow kFunctions[] = {
    {"isNumber",
     {{"text", "any text"}}, 1, 1, isNumber,
     "1 when the functions of the chapter before take the text for a number, otherwise 0",
     {{{"-12.50"}, "1"},
      {{" 7 "}, "1"},
      {{"5-"}, "0"},
      {{"1,5"}, "0"},
      {{"1e5"}, "0"},
      {{""}, "0"}}},

    {"isInteger",
     {{"text", "any text"}}, 1, 1, isInteger,
     "1 when the text is a number without a point, otherwise 0",
     {{{"-12"}, "1"},
      {{"0012"}, "1"},
      {{"12.0"}, "0"},
      {{"twelve"}, "0"}}},

    {"formatNumber",
     {{"a", "a number"},
      {"decimals", "0 to 100; a number that has more, other than zeros, is refused"},
      {"point", "a character, or nothing for an implied point; `.` when left out"},
      {"separator", "a character before every third digit; nothing when left out"},
      {"sign", STYLES},
      {"width", "zeros in front make the result as long as that, 1 to 1000; not beside a separator"}},
     2, 6, formatNumber,
     "the number as it is written elsewhere",
     {{{"1234567.5", "2", ".", ","}, "1,234,567.50"},
      {{"-1234567.5", "2", ",", ".", "trailing-minus"}, "1.234.567,50-"},
      {{"12.5", "2", ""}, "1250"},
      {{"7", "0", "", "", "leading"}, "+7"},
      {{"0.5", "3"}, "0.500"},
      {{"-12.5", "2", ".", "", "leading", "10"}, "-000012.50"}},
     {{{"12.505", "2"}, "Arg[1] Len[6]: expected a number with no more decimals than wanted, found more. Use round "
                        "before."},
      {{"-1", "0", "", "", "unsigned"}, "Arg[1] Len[2]: expected a number that is not negative, found a negative "
                                        "one."},
      {{"1", "2", "::"}, "Arg[3] Len[2]: expected one ASCII character that is no digit and no sign, or none, found "
                         "another text."},
      {{"1234.5", "2", ".", "."}, "Arg[4] Len[1]: expected another character than the point, found the same."},
      {{"1234", "0", ".", ",", "leading", "10"}, "Arg[6] Len[2]: expected no width beside a separator, found one. Fill "
                                                 "up with padLeft."}}},

    {"parseNumber",
     {{"text", "digits, with a sign at one of their ends"},
      {"point", "a character, or nothing when there is none; `.` when left out"},
      {"separator", "a character that may stand before every third digit; nothing when left out"}},
     1, 3, parseNumber,
     "the number as the other functions read it",
     {{{"1.234.567,50-", ",", "."}, "-1234567.50"},
      {{"1234,5", ","}, "1234.5"},
      {{"0012-"}, "-12"},
      {{"1 234 567", ".", " "}, "1234567"}},
     {{{"1.23,5", ",", "."}, "Arg[1] Len[6] Offset[4]: expected three digits behind a separator, found another "
                             "character. " MARKS},
      {{"1234.567", ",", "."}, "Arg[1] Len[8] Offset[4]: expected no separator behind more than three digits, found "
                               "another character. " MARKS},
      {{"-5-"}, "Arg[1] Len[3] Offset[2]: expected the end of the number, found another character. " MARKS},
      {{"1", ".", "."}, "Arg[3] Len[1]: expected another character than the point, found the same."}}},

    {"realToImplied",
     {{"a", "a number"},
      {"decimals", "0 to 100; a number that has more, other than zeros, is refused"},
      {"width", "zeros in front make the result as long as that, 1 to 1000"},
      {"sign", STYLES}},
     2, 4, realToImplied,
     "the digits without a point",
     {{{"10.50", "2"}, "1050"},
      {{"10.5", "2", "10"}, "0000001050"},
      {{"-10.5", "2", "10"}, "-000001050"},
      {{"10.5", "2", "8", "trailing"}, "0001050+"},
      {{"0.01", "2"}, "001"}},
     {{{"123456.78", "2", "6"}, "Arg[1] Len[9]: expected a number that fits the width, found a longer one."},
      {{"1.005", "2"}, "Arg[1] Len[5]: expected a number with no more decimals than wanted, found more. Use round "
                       "before."}}},

    {"impliedToReal",
     {{"text", "digits, with a sign at one of their ends"}, {"decimals", "how many of the digits are decimals, 0 to 100"}},
     2, 2, impliedToReal,
     "the number with its point",
     {{{"0000001050", "2"}, "10.50"},
      {{"000001050-", "2"}, "-10.50"},
      {{"5", "2"}, "0.05"},
      {{"0", "2"}, "0.00"}},
     {{{"10.50", "2"}, "Arg[1] Len[5] Offset[2]: expected the end of the number, found another character. " MARKS},
      {{"", "2"}, "Arg[1] Len[0]: expected a number, found an empty value. " FILL}}},
};

#undef MARKS
#undef FILL
#undef STYLES
// clang-format on

constexpr const char *kAbout =
    "From and to what other systems write: implied decimals, separators, signs at either end. A number that "
    "the other functions read, and that these give, is one of the chapter before.";

}  // namespace

constinit const kit::Topic kNumberFormat = kit::topic<kFunctions>("Ways of writing numbers", kAbout);

}  // namespace cvt::functions

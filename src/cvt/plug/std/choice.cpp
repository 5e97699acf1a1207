// choice.cpp: one of several values.
#include "topics.h"

namespace cvt::functions {

namespace {

void coalesce(kit::Call &call) {
  for (int i = 0; i < call.count(); ++i) {
    const std::string_view value = call.text(i);
    if (!value.empty()) return call.answer(value);
  }
  call.answer("");
}

bool isBlank(std::string_view value) {
  return value.find_first_not_of(' ') == value.npos;
}

void defaultIfEmpty(kit::Call &call) {
  call.answer(call.text(call.text(0).empty() ? 1 : 0));
}
void defaultIfBlank(kit::Call &call) {
  call.answer(call.text(isBlank(call.text(0)) ? 1 : 0));
}

void ifEmpty(kit::Call &call) {
  call.answer(call.text(call.text(0).empty() ? 1 : 2));
}
void ifEqual(kit::Call &call) {
  call.answer(call.text(call.text(0) == call.text(1) ? 2 : 3));
}

// Behind the value stand pairs of key and result, and perhaps one more result.
void choose(kit::Call &call) {
  const std::string_view value = call.text(0);
  for (int i = 1; i + 1 < call.count(); i += 2) {
    if (call.text(i) == value) return call.answer(call.text(i + 1));
  }
  const bool hasDefault = call.count() % 2 == 0;
  if (!hasDefault) {
    call.refuse(0, kit::Fault::kHere, "one of the " + std::to_string(call.count() / 2) + " keys",
                "another value", "Add the key and its result, or a last argument for all others");
  }
  call.answer(call.text(call.count() - 1));
}

// clang-format off
constexpr kit::FunctionRow kFunctions[] = {
    {"defaultIfEmpty",
     {{"value", "any bytes"}, {"default", "any bytes"}}, 2, 2, defaultIfEmpty,
     "the value, or the default when the value is empty",
     {{{"EUR", "USD"}, "EUR"}, {{"", "USD"}, "USD"}, {{"   ", "USD"}, "   "}}},

    {"defaultIfBlank",
     {{"value", "any bytes"}, {"default", "any bytes"}}, 2, 2, defaultIfBlank,
     "the value, or the default when the value is empty or has nothing but blanks",
     {{{"EUR", "USD"}, "EUR"}, {{"   ", "USD"}, "USD"}, {{"", "USD"}, "USD"}, {{" x ", "USD"}, " x "}}},

    {"coalesce",
     {{"value", "any bytes"}}, 1, 64, coalesce,
     "the first value that is not empty; empty when all are",
     {{{"", "", "c", "d"}, "c"}, {{"", ""}, ""}, {{"a"}, "a"}}},

    {"ifEmpty",
     {{"value", "any bytes"}, {"then", "the result for an empty value"}, {"else", "the result for any other"}},
     3, 3, ifEmpty,
     "one of the two",
     {{{"", "NOTPROVIDED", "/INV/"}, "NOTPROVIDED"}, {{"x", "NOTPROVIDED", "/INV/"}, "/INV/"}}},

    {"ifEqual",
     {{"a", "any bytes"}, {"b", "any bytes"}, {"then", "the result when both are the same bytes"},
      {"else", "the result when they are not"}}, 4, 4, ifEqual,
     "one of the two",
     {{{"D", "D", "-", ""}, "-"}, {{"C", "D", "-", ""}, ""}, {{"", "", "1", "0"}, "1"}, {{"1.0", "1", "=", "!"}, "!"}}},

    {"choose",
     {{"value", "any bytes"}, {"key", "a value"}, {"result", "what is taken for it"},
      {"more", "further keys with their results; a last one without a result is taken for all other values"}},
     3, 64, choose,
     "the result of the first key that is the same bytes as the value",
     {{{"22", "22", "CRDT", "27", "DBIT"}, "CRDT"},
      {{"27", "22", "CRDT", "27", "DBIT"}, "DBIT"},
      {{"99", "22", "CRDT", "OTHR"}, "OTHR"}},
     {{{"99", "22", "CRDT", "27", "DBIT"}, "Arg[1] Len[2]: expected one of the 2 keys, found another value. Add the key "
                                           "and its result, or a last argument for all others."}}},
};
// clang-format on

}  // namespace

constinit const kit::Topic kChoice = kit::topic<kFunctions>(
    "Choice",
    "Values are compared byte by byte. All arguments of a call are worked out before it, "
    "also those that are not chosen.");

}  // namespace cvt::functions

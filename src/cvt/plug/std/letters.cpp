// letters.cpp: upper and lower case, of every script that has them. Text without other than ASCII letters is
// done here; the rest by ICU, which libxml2 brings along anyway.
#include <unicode/ucasemap.h>

#include <algorithm>
#include <memory>

#include "kit/bytes.h"
#include "topics.h"

namespace cvt::functions {

namespace {

struct CloseCaseMap {
  void operator()(UCaseMap *map) const { ucasemap_close(map); }
};

// The rules of Unicode without those of one language, whatever the process's locale is: the upper case of "i"
// is "I" in Turkey, too.
const UCaseMap *caseMap() {
  static const std::unique_ptr<UCaseMap, CloseCaseMap> map = [] {
    UErrorCode error = U_ZERO_ERROR;
    return std::unique_ptr<UCaseMap, CloseCaseMap>(ucasemap_open("", 0, &error));
  }();
  if (map == nullptr) throw std::bad_alloc();
  return map.get();
}

// The case of one ASCII letter, and that of any text.
struct Mapping {
  char first;
  char last;
  decltype(&ucasemap_utf8ToUpper) whole;
};
constexpr Mapping kToUpper = {'a', 'z', ucasemap_utf8ToUpper};
constexpr Mapping kToLower = {'A', 'Z', ucasemap_utf8ToLower};

void mapLetters(kit::Call &call, const Mapping &mapping) {
  const std::string_view text = call.utf8(0);
  if (kit::isAscii(text.data(), text.size())) {
    std::transform(text.begin(), text.end(), call.result(text.size()), [&](char c) {
      return c >= mapping.first && c <= mapping.last ? static_cast<char>(c ^ 0x20) : c;
    });
    return;
  }
  const auto from = static_cast<int32_t>(text.size());
  UErrorCode error = U_ZERO_ERROR;  // of the first call: that there is no room, which is right
  const int32_t length = mapping.whole(caseMap(), nullptr, 0, text.data(), from, &error);
  char *out = call.result(static_cast<size_t>(length));
  error = U_ZERO_ERROR;
  mapping.whole(caseMap(), out, length, text.data(), from, &error);
  if (U_FAILURE(error)) throw std::bad_alloc();
}

void upper(kit::Call &call) {
  mapLetters(call, kToUpper);
}
void lower(kit::Call &call) {
  mapLetters(call, kToLower);
}

// clang-format off
constexpr kit::FunctionRow kFunctions[] = {
    {"upper",
     {{"text", "a text"}}, 1, 1, upper,
     "the text in upper case; it may get longer",
     {{{"de89 abc"}, "DE89 ABC"}, {{"Zürich"}, "ZÜRICH"}, {{"Straße"}, "STRASSE"}, {{"Ωμέγα"}, "ΩΜΈΓΑ"},
      {{""}, ""}},
     {{{"Z\xfcrich"}, "Arg[1] Len[6] Offset[1]: expected UTF-8, found a byte that is none. Take the text in UTF-8, "
                      "as formats deliver it."}}},

    {"lower",
     {{"text", "a text"}}, 1, 1, lower,
     "the text in lower case",
     {{{"DE89 ABC"}, "de89 abc"}, {{"ZÜRICH"}, "zürich"}, {{"ΟΔΟΣ"}, "οδος"}},
     {{{"Z\xc3"}, "Arg[1] Len[2] Offset[1]: expected UTF-8, found the end inside a character. Take the text in "
                  "UTF-8, as formats deliver it."}}},
};
// clang-format on

}  // namespace

constinit const kit::Topic kLetters = kit::topic<kFunctions>(
    "Upper and lower case",
    "By the rules of Unicode that belong to no language: the process's locale does not "
    "matter, the upper case of ß is SS, that of i is I.");

}  // namespace cvt::functions

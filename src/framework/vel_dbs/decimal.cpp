#include "decimal.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace dbs {
namespace {

constexpr int kMaxScale = 100;

bool allDigits(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The next greater number: "199" -> "200", "99" -> "100".
void increment(std::string &digits) {
  auto digit = digits.rbegin();
  for (; digit != digits.rend() && *digit == '9'; ++digit) *digit = '0';
  if (digit != digits.rend()) {
    ++*digit;
  } else {
    digits.insert(digits.begin(), '1');
  }
}

// "0.0015" of "1.5e-03"; a text without such an exponent as it is.
std::string withoutExponent(std::string_view number) {
  constexpr int kMost = 400;  // more than a double has
  const size_t mark = std::min(number.find("e-"), number.size());
  const std::string_view exponent = number.substr(std::min(mark + 2, number.size()));
  int places = 0;
  std::from_chars(exponent.data(), exponent.data() + exponent.size(), places);
  if (mark == 0 || !allDigits(exponent) || places < 1 || places > kMost) return std::string(number);
  std::string digits(number.substr(0, mark));
  if (digits.size() > 1 && digits[1] == '.') digits.erase(1, 1);
  return "0." + std::string(static_cast<size_t>(places) - 1, '0') + digits;
}

}  // namespace

std::optional<size_t> declaredScale(const char *type) {
  if (type == nullptr) return std::nullopt;
  char name[16] = "";
  int precision = 0;
  int scale = 0;
  if (std::sscanf(type, " %15[A-Za-z] ( %4d , %4d", name, &precision, &scale) < 2) return std::nullopt;
  const bool numeric = strcasecmp(name, "numeric") == 0 || strcasecmp(name, "decimal") == 0;
  if (!numeric || scale < 0 || scale > kMaxScale) return std::nullopt;
  return static_cast<size_t>(scale);
}

std::optional<std::string> withScale(std::string_view number, size_t scale) {
  const bool negative = number.starts_with('-');
  if (negative) number.remove_prefix(1);
  const std::string plain = withoutExponent(number);
  const size_t point = std::min(plain.find('.'), plain.size());
  std::string digits = plain.substr(0, point);
  std::string decimals = plain.substr(std::min(point + 1, plain.size()));
  if (digits.empty() || !allDigits(digits) || !allDigits(decimals)) return std::nullopt;
  const bool up = decimals.size() > scale && decimals[scale] >= '5';
  decimals.resize(scale, '0');
  digits += decimals;
  if (up) increment(digits);
  const bool zero = digits.find_first_not_of('0') == std::string::npos;
  if (scale > 0) digits.insert(digits.size() - scale, 1, '.');
  return negative && !zero ? "-" + digits : digits;
}

}  // namespace dbs

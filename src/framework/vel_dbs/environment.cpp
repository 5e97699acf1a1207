#include "environment.h"

#include <charconv>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <system_error>

namespace dbs {
namespace {

std::string_view environment(const char *name) {
  const char *const value = std::getenv(name);
  return value == nullptr ? std::string_view() : value;
}

int number(const char *name, int least, int most, int otherwise) {
  const std::string_view text = environment(name);
  if (text.empty()) return otherwise;
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < least || value > most) {
    throw Error(std::string(name) + ": expected a number from " + std::to_string(least) + " to " +
                std::to_string(most) + ", found [" + std::string(text) + "]");
  }
  return value;
}

}  // namespace

std::string urlFromEnvironment() {
  const std::string_view url = environment("VEL_DBS_URL");
  if (url.empty()) {
    throw Error(
        "no database is named; call dbsConnect, or set VEL_DBS_URL to sqlite:FILE or odbc:DSN=... before the "
        "first statement");
  }
  return std::string(url);
}

Limits limitsFromEnvironment() {
  constexpr int kMost = std::numeric_limits<int>::max();
  return {.timeoutMs = number("VEL_DBS_TIMEOUT_MS", 0, kMost, 30000),
          .busyMs = number("VEL_DBS_BUSY_MS", 0, kMost, 5000),
          .statements = number("VEL_DBS_STATEMENTS", 1, 1000, 16)};
}

}  // namespace dbs

#include "target.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "velutil.h"

// Lines are put together, so that their arguments are read, and dropped; with CVT2_FUZZ_LOG set, failures are
// shown.
extern "C" __attribute__((visibility("default"))) int logInfo(int level, const char *, const char *, int,
                                                              const char *, const char *format, ...) {
  static const bool shown = std::getenv("CVT2_FUZZ_LOG") != nullptr;
  static char line[64 * 1024];
  va_list args;
  va_start(args, format);
  std::vsnprintf(line, sizeof line, format, args);
  va_end(args);
  if (shown && level == 1) std::fprintf(stderr, "%s\n", line);
  return 0;
}

// Names of an ordered list are heap copies that stay, by design.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions() {
  return "leak:locStrListAddOrder\n";
}

// Pool memory is packed: what it points to is found at addresses that are not aligned.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_options() {
  return "use_unaligned=1:print_suppressions=0";
}

namespace fuzz {

bool holdsAny(std::string_view text, std::initializer_list<std::string_view> marks) {
  return std::any_of(marks.begin(), marks.end(),
                     [&](std::string_view mark) { return text.find(mark) != text.npos; });
}

void require(bool holds, const std::string &what) {
  if (holds) return;
  std::fprintf(stderr, "fuzz: expected that %s\n", what.c_str());
  std::abort();
}

}  // namespace fuzz

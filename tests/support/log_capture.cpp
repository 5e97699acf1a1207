#include "log_capture.h"

#include <cstdarg>
#include <cstdio>

#include "velutil.h"

namespace {
std::vector<test::LogLine> &lines() {
  static std::vector<test::LogLine> all;
  return all;
}

std::string format(const char *psFormat, va_list args) {
  va_list again;
  va_copy(again, args);
  const int nLen = std::vsnprintf(nullptr, 0, psFormat, args);
  std::string s(static_cast<size_t>(nLen), '\0');
  std::vsnprintf(s.data(), s.size() + 1, psFormat, again);
  va_end(again);
  return s;
}
}  // namespace

extern "C" __attribute__((visibility("default"))) int logInfo(int nLevel, const char *psModule,
                                                              const char *psFile, int nLine,
                                                              const char *psFunction, const char *psFormat,
                                                              ...) {
  va_list args;
  va_start(args, psFormat);
  lines().push_back({nLevel, psModule, psFile, nLine, psFunction, format(psFormat, args)});
  va_end(args);
  return 0;
}

namespace test {

const std::vector<LogLine> &logLines() { return lines(); }

void clearLog() { lines().clear(); }

std::vector<std::string> logTexts(int nLevel) {
  std::vector<std::string> texts;
  for (const LogLine &line : lines()) {
    if (nLevel == 0 || line.nLevel == nLevel) texts.push_back(line.sText);
  }
  return texts;
}

bool logged(int nLevel, const std::string &sText) {
  for (const LogLine &line : lines()) {
    if (line.nLevel == nLevel && line.sText == sText) return true;
  }
  return false;
}

bool loggedInOrder(const std::vector<std::string> &texts) {
  size_t nFound = 0;
  for (const LogLine &line : lines()) {
    if (nFound < texts.size() && line.nLevel == 1 && line.sText == texts[nFound]) ++nFound;
  }
  return nFound == texts.size();
}

}  // namespace test

#include "log_capture.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>

#include "velutil.h"

namespace {
std::vector<test::LogLine> &lines() {
  static std::vector<test::LogLine> all;
  return all;
}

bool f_bUnheard = false;

std::string format(const char *psFormat, va_list args) {
  va_list again;
  va_copy(again, args);
  const int nLen = std::vsnprintf(nullptr, 0, psFormat, args);
  std::string s(static_cast<size_t>(nLen), '\0');
  std::vsnprintf(s.data(), s.size() + 1, psFormat, again);
  va_end(again);
  return s;
}

// A format that says nothing by itself: its argument is the text.
bool isGeneric(const char *psFormat) {
  return std::strncmp(psFormat, "%s", 2) == 0 || std::strcmp(psFormat, "[%s] is NULL") == 0;
}

// Notes a text of the library in the file CVT2_SEEN_LOG, for the check against the list of all texts: one
// line LEVEL|FILE|F|FORMAT, or LEVEL|FILE|T|TEXT where the format is generic. Each once a process.
void note(int nLevel, const char *psFile, const char *psFormat, const std::string &sText) {
  static const char *const psSeen = std::getenv("CVT2_SEEN_LOG");
  if (psSeen == nullptr) return;
  const bool bGeneric = isGeneric(psFormat);
  std::string sLine = std::to_string(nLevel) + "|" + psFile + (bGeneric ? "|T|" : "|F|");
  for (const char c : bGeneric ? sText : std::string(psFormat))
    sLine += c == '\n' ? "\\n" : std::string(1, c);
  sLine += '\n';
  static std::set<std::string> noted;
  if (!noted.insert(sLine).second) return;
  const int fd = open(psSeen, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0 || write(fd, sLine.data(), sLine.size()) != static_cast<ssize_t>(sLine.size())) {
    std::perror(psSeen);
    std::abort();
  }
  close(fd);
}
}  // namespace

extern "C" __attribute__((visibility("default"))) int logInfo(int nLevel, const char *psModule,
                                                              const char *psFile, int nLine,
                                                              const char *psFunction, const char *psFormat,
                                                              ...) {
  if (f_bUnheard) return 0;
  va_list args;
  va_start(args, psFormat);
  lines().push_back({nLevel, psModule, psFile, nLine, psFunction, format(psFormat, args)});
  if (std::strcmp(psModule, "$cvt2") == 0) note(nLevel, psFile, psFormat, lines().back().sText);
  va_end(args);
  return 0;
}

namespace test {

const std::vector<LogLine> &logLines() {
  return lines();
}

void clearLog() {
  lines().clear();
}

LogUnheard::LogUnheard() {
  f_bUnheard = true;
}
LogUnheard::~LogUnheard() {
  f_bUnheard = false;
}

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

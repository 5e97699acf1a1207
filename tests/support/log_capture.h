// log_capture.h: the test program's own logInfo. It keeps every line, as a host that defines logInfo would.
#pragma once

#include <string>
#include <vector>

namespace test {

struct LogLine {
  int nLevel;
  std::string sModule;
  std::string sFile;
  int nLine;
  std::string sFunction;
  std::string sText;
};

// All lines since the start or the last clearLog().
const std::vector<LogLine> &logLines();
void clearLog();

// While one lives, lines are not kept: for tests that count what is taken from the heap.
class LogUnheard {
 public:
  LogUnheard();
  ~LogUnheard();
  LogUnheard(const LogUnheard &) = delete;
  LogUnheard &operator=(const LogUnheard &) = delete;
};

// The texts of all lines of one level, in order; level 0: of all levels.
std::vector<std::string> logTexts(int nLevel = 1);

// Whether a line of that level has exactly that text.
bool logged(int nLevel, const std::string &sText);

// Whether these texts appear at level 1 in this order (other lines may stand between them).
bool loggedInOrder(const std::vector<std::string> &texts);

}  // namespace test

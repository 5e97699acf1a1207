#include "child.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "velutil.h"

namespace {

faults::Report *f_ptReport = nullptr;  // the running child's

std::string describe(int nStatus, const faults::Report &report) {
  std::string s = report.sWrong[0] != '\0' ? report.sWrong : "";
  if (WIFSIGNALED(nStatus)) s += std::string(" signal: ") + strsignal(WTERMSIG(nStatus));
  if (WIFEXITED(nStatus) && WEXITSTATUS(nStatus) != 0) s += " exit " + std::to_string(WEXITSTATUS(nStatus));
  return s + "; " + std::to_string(report.nLines) + " lines, the last: " + report.sLine;
}

faults::Outcome judge(int nStatus, const faults::Report &report) {
  using faults::Outcome;
  if (report.sWrong[0] != '\0') return Outcome::kBad;
  if (WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == 0)
    return report.bRefused ? Outcome::kRefused : Outcome::kRight;
  const bool bSaid = std::strstr(report.sLine, "the heap has none left; raise the memory limit") != nullptr;
  return WIFSIGNALED(nStatus) && WTERMSIG(nStatus) == SIGABRT && bSaid ? Outcome::kEnded : Outcome::kBad;
}

faults::Report *newReport() {
  void *const p =
      mmap(nullptr, sizeof(faults::Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (p == MAP_FAILED) throw std::runtime_error("mmap failed");
  return static_cast<faults::Report *>(p);  // zeroed
}

}  // namespace

// The test program's own log: it takes nothing of the heap.
extern "C" __attribute__((visibility("default"))) int logInfo(int nLevel, const char *, const char *, int,
                                                              const char *, const char *psFormat, ...) {
  if (nLevel > 1 || f_ptReport == nullptr) return 0;
  ++f_ptReport->nLines;
  va_list args;
  va_start(args, psFormat);
  std::vsnprintf(f_ptReport->sLine, sizeof f_ptReport->sLine, psFormat, args);
  va_end(args);
  const char *const psWanted = f_ptReport->psWanted;
  if (psWanted != nullptr && std::strstr(f_ptReport->sLine, psWanted) != nullptr) f_ptReport->bSeen = true;
  return 0;
}

namespace faults {

void Report::wrong(const char *psFormat, ...) {
  if (sWrong[0] != '\0') return;
  va_list args;
  va_start(args, psFormat);
  std::vsnprintf(sWrong, sizeof sWrong, psFormat, args);
  va_end(args);
}

Ending inChild(const std::function<void(Report &)> &work) {
  static Report *const ptReport = newReport();
  *ptReport = {};
  const pid_t nChild = fork();
  if (nChild < 0) throw std::runtime_error("fork failed");
  if (nChild == 0) {
    alarm(kPatience);
    f_ptReport = ptReport;
    [&]() noexcept { work(*ptReport); }();  // what is thrown has left the library: that ends the child
    _exit(0);
  }
  int nStatus = 0;
  waitpid(nChild, &nStatus, 0);
  const Outcome outcome = judge(nStatus, *ptReport);
  return {outcome, outcome == Outcome::kBad ? describe(nStatus, *ptReport) : "", *ptReport};
}

}  // namespace faults

#include "trial.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <stdexcept>

#include "allocator.h"
#include "cvt.h"
#include "log_capture.h"

namespace hostile {

namespace {

constexpr size_t kRoom = 1 << 20;

// A part of what a child tells: its length, a colon, and its bytes.
std::string part(const std::string &s) {
  return std::to_string(s.size()) + ":" + s;
}

std::vector<std::string> partsOf(const std::string &s) {
  std::vector<std::string> all;
  size_t nAt = 0;
  for (size_t nColon; (nColon = s.find(':', nAt)) != std::string::npos;) {
    const size_t nSize = std::stoul(s.substr(nAt, nColon - nAt));
    all.push_back(s.substr(nColon + 1, nSize));
    nAt = nColon + 1 + nSize;
  }
  return all;
}

// --- In the child -----------------------------------------------------------------------------------------

std::string told() {
  std::string sAll;
  for (const std::string &sLine : test::logTexts()) sAll += sLine + "\n";
  return sAll;
}

struct FreeMessage {
  void operator()(InnerMessage *pt) const { cvtFreeMessage(pt); }
};
using Handle = std::unique_ptr<InnerMessage, FreeMessage>;

std::string convert(const Job &job) {
  std::string sIn = job.sBytes;  // with a zero byte behind it
  std::string sOut(kRoom, '\0');
  int nError = 0;
  const int nLen = static_cast<int>(sIn.size());
  char *const psFrom = test::cs(job.sFrom.c_str());
  const Handle source(job.sMessage.empty() ? cvtParseMessasge(psFrom, sIn.data(), nLen, &nError)
                                           : cvtInitMessasge(test::cs(job.sMessage.c_str()), psFrom,
                                                             sIn.data(), nLen, &nError));
  if (source == nullptr) return "failed:" + told();
  int nOut = static_cast<int>(sOut.size());
  if (job.sTo.empty()) {
    if (cvtGenMessage(source.get(), sOut.data(), &nOut) != 0) return "failed:" + told();
    return "ok:" + sOut.substr(0, static_cast<size_t>(nOut));
  }
  const Handle result(
      cvtGenerateMessasge(source.get(), test::cs(job.sTo.c_str()), sOut.data(), &nOut, &nError));
  if (result == nullptr) return "failed:" + told();
  return "ok:" + sOut.substr(0, static_cast<size_t>(nOut));
}

std::string work(Scenario &scenario) {
  test::clearLog();
  std::string sAll;
  if (cvtInit(scenario.tree().arg()) != 0) {
    sAll = part("refused") + part(told());
  } else {
    sAll = part("loaded");
    for (const Job &job : scenario.jobs()) {
      test::clearLog();
      sAll += part(convert(job));
    }
  }
  cvtEnd();
  return sAll;
}

// What nobody waits for shall not stay: no output, a limit of processor time, and of memory where the
// sanitizers do not need it all.
[[noreturn]] void child(Scenario &scenario, int nSeconds, int nResult, int nNoise) {
  const rlimit time{static_cast<rlim_t>(nSeconds), static_cast<rlim_t>(nSeconds)};
  setrlimit(RLIMIT_CPU, &time);
#if !TEST_SANITIZED
  const rlimit memory{rlim_t{4} << 30, rlim_t{4} << 30};
  setrlimit(RLIMIT_AS, &memory);
#endif
  dup2(nNoise, STDOUT_FILENO);
  dup2(nNoise, STDERR_FILENO);
  const std::string sAll = work(scenario);
  size_t nDone = 0;
  while (nDone < sAll.size()) {
    const ssize_t n = write(nResult, sAll.data() + nDone, sAll.size() - nDone);
    if (n <= 0) _exit(3);
    nDone += static_cast<size_t>(n);
  }
  _exit(0);
}

// --- In the parent ----------------------------------------------------------------------------------------

class Pipe {
 public:
  Pipe() {
    if (pipe2(m_fds, O_CLOEXEC) != 0) throw std::runtime_error("pipe2 failed");
  }
  ~Pipe() {
    close(m_fds[0]);
    close(m_fds[1]);
  }
  Pipe(const Pipe &) = delete;
  Pipe &operator=(const Pipe &) = delete;
  int reader() const { return m_fds[0]; }
  int writer() const { return m_fds[1]; }
  void closeWriter() {
    close(m_fds[1]);
    m_fds[1] = -1;
  }

 private:
  int m_fds[2] = {-1, -1};
};

using Clock = std::chrono::steady_clock;

// What comes through both pipes until they end, or the time is up: false.
bool readBoth(const Pipe &result, const Pipe &noise, Clock::time_point until, std::string &sResult,
              std::string &sNoise) {
  pollfd fds[2] = {{result.reader(), POLLIN, 0}, {noise.reader(), POLLIN, 0}};
  std::string *const into[2] = {&sResult, &sNoise};
  while (fds[0].fd >= 0 || fds[1].fd >= 0) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now()).count();
    if (left <= 0 || poll(fds, 2, static_cast<int>(left)) <= 0) return false;
    for (int i = 0; i < 2; ++i) {
      if (fds[i].revents == 0) continue;
      char sPiece[65536];
      const ssize_t n = read(fds[i].fd, sPiece, sizeof sPiece);
      if (n > 0) into[i]->append(sPiece, static_cast<size_t>(n));
      if (n <= 0) fds[i].fd = -1;
    }
  }
  return true;
}

std::vector<std::string> lines(const std::string &s) {
  std::vector<std::string> all;
  size_t nFrom = 0;
  for (size_t nEnd; (nEnd = s.find('\n', nFrom)) != std::string::npos; nFrom = nEnd + 1) {
    all.push_back(s.substr(nFrom, nEnd - nFrom));
  }
  return all;
}

std::string death(int nStatus, const std::string &sNoise) {
  const std::string sHow = WIFSIGNALED(nStatus) ? std::string("signal ") + strsignal(WTERMSIG(nStatus))
                                                : "exit status " + std::to_string(WEXITSTATUS(nStatus));
  return sHow + "\n" + sNoise;
}

}  // namespace

bool isConverted(const std::string &sResult) {
  return sResult.rfind("ok:", 0) == 0;
}

Outcome tryOut(Scenario &scenario, int nSeconds) {
  Pipe result;
  Pipe noise;
  const pid_t nChild = fork();
  if (nChild < 0) throw std::runtime_error("fork failed");
  if (nChild == 0) child(scenario, nSeconds, result.writer(), noise.writer());
  result.closeWriter();
  noise.closeWriter();
  std::string sResult;
  std::string sNoise;
  const bool bEnded = readBoth(result, noise, Clock::now() + std::chrono::seconds(nSeconds), sResult, sNoise);
  if (!bEnded) kill(nChild, SIGKILL);
  int nStatus = 0;
  waitpid(nChild, &nStatus, 0);

  Outcome outcome;
  const std::vector<std::string> parts = partsOf(sResult);
  if (!bEnded) {
    outcome.end = End::Hung;
  } else if (nStatus != 0 || parts.empty()) {
    outcome.sDeath = death(nStatus, sNoise);
  } else if (parts[0] == "refused") {
    outcome.end = End::Refused;
    outcome.refusal = lines(parts[1]);
  } else {
    outcome.end = End::Loaded;
    outcome.results.assign(parts.begin() + 1, parts.end());
  }
  return outcome;
}

}  // namespace hostile

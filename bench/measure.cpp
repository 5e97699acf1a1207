// measure.cpp: runs a command on one core and says what it took. A process of its own: a child begins with its parent's
// peak memory, so the parent must be small.
//
//   bench_measure CORE MAX_SECONDS MAX_MEBIBYTES COMMAND [ARGUMENT...]
//
// The seconds are those of the clock on the wall: a limit of CPU time would make the process's CPU clock coarse. The last
// line on the error output is: exit status, or minus the signal; nanoseconds of CPU; peak memory in KiB.
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void become(char **arguments) {
  cpu_set_t cores;
  CPU_ZERO(&cores);
  CPU_SET(std::strtoul(arguments[1], nullptr, 10), &cores);
  sched_setaffinity(0, sizeof cores, &cores);
  const rlim_t most = std::strtoul(arguments[3], nullptr, 10) << 20;
  const rlimit both{most, most};
  setrlimit(RLIMIT_DATA, &both);
  alarm(static_cast<unsigned>(std::strtoul(arguments[2], nullptr, 10)));
  execvp(arguments[4], arguments + 4);
  std::perror(arguments[4]);
  _exit(127);
}

long long nanoseconds(const timeval &time) {
  return 1000000000LL * time.tv_sec + 1000LL * time.tv_usec;
}

}  // namespace

int main(int count, char **arguments) {
  if (count < 5) return 2;
  const pid_t child = fork();
  if (child == 0) become(arguments);
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) != child) return 1;
  std::fprintf(stderr, "\n%d %lld %ld\n", WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status),
               nanoseconds(usage.ru_utime) + nanoseconds(usage.ru_stime), usage.ru_maxrss);
  return 0;
}

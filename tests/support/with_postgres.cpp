// with_postgres COMMAND [ARGUMENT...]: runs a command beside a PostgreSQL server of its own, which is empty
// and ends with it. The command finds it by VEL_DBS_URL, and psql by PGHOST, PGUSER and PGDATABASE. Its exit
// code is the program's; 77 when no server can be had.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "postgres_server.h"

namespace {

constexpr int kSkipped = 77;
constexpr int kFailed = 1;

int run(char **command) {
  const pid_t pid = fork();
  if (pid == 0) {
    execvp(command[0], command);
    std::perror(command[0]);
    _exit(kFailed);
  }
  int status = 0;
  if (pid < 0 || waitpid(pid, &status, 0) != pid) return kFailed;
  return WIFEXITED(status) ? WEXITSTATUS(status) : kFailed;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: with_postgres COMMAND [ARGUMENT...]\n");
    return 2;
  }
  if (const std::string missing = test::PostgresServer::missing(); !missing.empty()) {
    std::printf("skipped: %s\n", missing.c_str());
    return kSkipped;
  }
  try {
    const test::PostgresServer server;
    setenv("VEL_DBS_URL", server.url().c_str(), 1);
    setenv("PGHOST", server.host().c_str(), 1);
    setenv("PGUSER", "cvt2", 1);
    setenv("PGDATABASE", "postgres", 1);
    return run(argv + 1);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "with_postgres: %s\n", error.what());
    return kFailed;
  }
}

#include "postgres_server.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <thread>
#include <vector>

namespace test {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kPatience{60};

// Debian puts every major version into a directory of its own, and drivers into the architecture's.
fs::path newest(const fs::path &root, const fs::path &below) {
  std::vector<fs::path> found;
  std::error_code none;
  for (const fs::directory_entry &entry : fs::directory_iterator(root, none)) {
    if (fs::exists(entry.path() / below, none)) found.push_back(entry.path() / below);
  }
  return found.empty() ? fs::path() : *std::max_element(found.begin(), found.end());
}
fs::path binary(const char *psName) {
  return newest("/usr/lib/postgresql", fs::path("bin") / psName);
}
fs::path driver() {
  return newest("/usr/lib", "odbc/psqlodbca.so");
}

bool within(std::chrono::seconds patience, const std::function<bool()> &done) {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (!done()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

// The server refuses to run as root.
const passwd *unprivileged() {
  if (geteuid() != 0) return nullptr;
  const passwd *const postgres = getpwnam("postgres");
  return postgres != nullptr ? postgres : getpwnam("nobody");
}

// Between fork and exec.
[[noreturn]] void become(const std::vector<std::string> &command, const std::string &log, const passwd *user,
                         pid_t parent) {
  std::vector<char *> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string &word : command) arguments.push_back(cs(word.c_str()));
  arguments.push_back(nullptr);
  const int fd = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
  const bool asUser = user == nullptr ||
                      (setgroups(0, nullptr) == 0 && setgid(user->pw_gid) == 0 && setuid(user->pw_uid) == 0);
  // After the change of user, which would undo it. A parent that has gone already sends no signal.
  if (fd < 0 || !asUser || prctl(PR_SET_PDEATHSIG, SIGQUIT) != 0 || getppid() != parent) _exit(126);
  dup2(fd, STDOUT_FILENO);
  dup2(fd, STDERR_FILENO);
  execv(arguments[0], arguments.data());
  _exit(127);
}

}  // namespace

std::string PostgresServer::missing() {
  if (binary("initdb").empty() || binary("postgres").empty())
    return "the Debian package postgresql is missing";
  if (driver().empty()) return "the Debian package odbc-postgresql is missing";
  return "";
}

PostgresServer::PostgresServer() {
  if (const passwd *const user = unprivileged(); user != nullptr) {
    if (chown(m_tree.path().c_str(), user->pw_uid, user->pw_gid) != 0)
      throw std::runtime_error("chown failed");
  }
  // Processes of a killed server become this process's children, so that it can wait for the last of them.
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  const pid_t pid = spawn({binary("initdb"), "-D", m_tree.path("data"), "-U", "cvt2", "--auth=trust", "-E",
                           "UTF8", "--locale=C", "--no-sync", "--no-instructions"});
  int nStatus = 0;
  if (waitpid(pid, &nStatus, 0) != pid || nStatus != 0) throw std::runtime_error("initdb failed:\n" + log());
  start();
}

PostgresServer::~PostgresServer() {
  try {
    if (running()) end(SIGQUIT);
  } catch (...) {
    kill(m_pid, SIGKILL);
  }
}

pid_t PostgresServer::spawn(const std::vector<std::string> &command) const {
  const std::string log = m_tree.path("log");
  const passwd *const user = unprivileged();
  const pid_t parent = getpid();
  const pid_t pid = fork();
  if (pid < 0) throw std::runtime_error("fork failed");
  if (pid == 0) become(command, log, user, parent);
  return pid;
}

void PostgresServer::start() {
  m_pid = spawn({binary("postgres"), "-D", m_tree.path("data"), "-k", m_tree.path(), "-c",
                 "listen_addresses=", "-c", "fsync=off", "-c", "shared_buffers=16MB", "-c",
                 "max_connections=10"});
  const bool bUp = within(kPatience, [this] { return ready() || waitpid(m_pid, nullptr, WNOHANG) != 0; });
  if (bUp && ready()) return;
  kill(m_pid, SIGKILL);
  m_pid = 0;
  throw std::runtime_error("the server does not start:\n" + log());
}

// The server notes its state in the last line of its own file.
bool PostgresServer::ready() const {
  std::ifstream in(m_tree.path("data/postmaster.pid"));
  std::string first;
  std::string last;
  std::getline(in, first);
  for (std::string line; std::getline(in, line);) last = line;
  return first == std::to_string(m_pid) && last.starts_with("ready");
}

void PostgresServer::end(int nSignal) {
  kill(m_pid, nSignal);
  const bool bGone = within(kPatience, [] {
    while (waitpid(-1, nullptr, WNOHANG) > 0) continue;
    return waitpid(-1, nullptr, WNOHANG) < 0;  // no child is left
  });
  if (!bGone) throw std::runtime_error("a process of the server does not end:\n" + log());
  m_pid = 0;
}

std::string PostgresServer::log() const {
  std::ifstream in(m_tree.path("log"));
  return {std::istreambuf_iterator<char>(in), {}};
}

std::string PostgresServer::url() const {
  return "odbc:DRIVER=" + driver().string() + ";Servername=" + m_tree.path() + ";Database=postgres;Uid=cvt2";
}

}  // namespace test

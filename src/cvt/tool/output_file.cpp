#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "error.h"
#include "signals.h"

namespace tool {
namespace {

constexpr size_t kBuffer = size_t{64} * 1024;

constexpr int kMaxLinks = 40;  // as many as the system follows

mode_t modeOfNewFiles() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

std::string behindLinks(const std::string &path) {
  namespace fs = std::filesystem;
  fs::path target = path;
  std::error_code none;
  for (int i = 0; i < kMaxLinks && fs::is_symlink(target, none); ++i) {
    target = target.parent_path() / fs::read_symlink(target, none);
  }
  return target.string();
}

OutputFile::OutputFile(const std::string &path) : m_name(path), m_fd(STDOUT_FILENO) {
  if (path.empty() || path == "-") {
    m_name = "standard output";
    return;
  }
  struct stat status {};
  const bool bExists = stat(path.c_str(), &status) == 0;
  if (!bExists && errno == ELOOP) fail("open");
  if (bExists && !S_ISREG(status.st_mode)) {
    m_fd = openWatched(path, O_WRONLY);
    if (m_fd < 0) fail("open");
    m_bOwnFd = true;
    return;
  }
  m_path = behindLinks(path);
  openAside();
  if (fchmod(m_fd, bExists ? status.st_mode & 07777 : modeOfNewFiles()) == 0) return;
  const int nError = errno;
  discard();
  errno = nError;
  fail("set the mode of");
}

void OutputFile::openAside() {
  const std::filesystem::path target(m_path);
  m_aside = (target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string();
  m_fd = mkostemp(m_aside.data(), O_CLOEXEC);
  if (m_fd < 0) {
    m_aside.clear();
    fail("create a file beside");
  }
  m_bOwnFd = true;
}

OutputFile::~OutputFile() {
  try {
    if (m_aside.empty()) flush();  // what was said stays said
  } catch (...) {                  // the run has failed already, for a reason that is being reported
  }
  discard();
}

void OutputFile::discard() {
  if (m_bOwnFd) close(m_fd);
  if (!m_aside.empty()) unlink(m_aside.c_str());
}

void OutputFile::write(std::string_view bytes) {
  m_buffer.append(bytes);
  if (m_buffer.size() >= kBuffer) flush();
}

void OutputFile::flush() {
  const std::string pending = std::exchange(m_buffer, {});  // gone also when writing fails: no second try
  for (std::string_view rest = pending; !rest.empty();) {
    const ssize_t written = uninterrupted([&] { return ::write(m_fd, rest.data(), rest.size()); });
    if (written < 0) fail("write");
    rest.remove_prefix(static_cast<size_t>(written));
  }
}

void OutputFile::commit() {
  flush();
  if (m_aside.empty()) return;
  if (fsync(m_fd) != 0) fail("write");
  if (std::rename(m_aside.c_str(), m_path.c_str()) != 0) fail("rename the finished file to");
  m_aside.clear();
}

void OutputFile::fail(const char *what) const {
  const char *const why = std::strerror(errno);
  throw Failure(Exit::io, std::string("cannot ") + what + " " + m_name + ": " + why);
}

}  // namespace tool

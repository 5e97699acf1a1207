#include "input_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "error.h"
#include "signals.h"

namespace tool {
namespace {

bool isStandard(const std::string &path) {
  return path == "-";
}

[[noreturn]] void unreadable(const std::string &path, const char *why) {
  throw Failure(Exit::noInput, "cannot read " + path + ": " + why);
}

}  // namespace

InputFile::InputFile(const std::string &path)
    : m_name(isStandard(path) ? "standard input" : path),
      m_fd(isStandard(path) ? STDIN_FILENO : openWatched(path, O_RDONLY)) {
  if (m_fd < 0) unreadable(path, std::strerror(errno));
}

InputFile::~InputFile() {
  if (m_fd != STDIN_FILENO) close(m_fd);
}

size_t InputFile::read(char *to, size_t size) {
  checkSignals();
  const ssize_t got = uninterrupted([&] { return ::read(m_fd, to, size); });
  if (got < 0) throw Failure(Exit::io, "cannot read " + m_name + ": " + std::strerror(errno));
  return static_cast<size_t>(got);
}

void checkReadable(const std::string &path) {
  if (isStandard(path)) return;
  std::error_code none;  // access says why it cannot be reached
  if (std::filesystem::is_directory(path, none)) unreadable(path, "it is a directory");
  if (access(path.c_str(), R_OK) != 0) unreadable(path, std::strerror(errno));
}

}  // namespace tool

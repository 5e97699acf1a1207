// output_file.h: standard output, or a file that appears whole or not at all.
#pragma once

#include <string>
#include <string_view>

namespace tool {

// Where a path leads, also when no file is there yet: a link stays a link, the file behind it is replaced or made.
std::string behindLinks(const std::string &path);

// A regular file is written aside, in its own directory, and takes its name at commit(); without a commit
// nothing is left of it. Anything else (standard output, a device, a pipe) is written as it comes.
// Every failure is thrown as an I/O Failure that names the file.
class OutputFile {
 public:
  // "" and "-": standard output.
  explicit OutputFile(const std::string &path);
  ~OutputFile();
  OutputFile(const OutputFile &) = delete;
  OutputFile &operator=(const OutputFile &) = delete;

  void write(std::string_view bytes);
  void commit();

 private:
  void openAside();
  void flush();
  void discard();
  [[noreturn]] void fail(const char *what) const;

  std::string m_name;   // as the messages call it
  std::string m_path;   // the file that appears; empty: written as it comes
  std::string m_aside;  // the file being written until then
  std::string m_buffer;
  int m_fd;
  bool m_bOwnFd = false;
};

}  // namespace tool

// input_file.h: a file, or standard input, read as it comes.
#pragma once

#include <string>

namespace tool {

class InputFile {
 public:
  // "-": standard input. Throws a no-input Failure.
  explicit InputFile(const std::string &path);
  ~InputFile();
  InputFile(const InputFile &) = delete;
  InputFile &operator=(const InputFile &) = delete;

  // At most `size` bytes into `to`; returns their number, 0 at the end. Throws an I/O Failure, or
  // Interrupted.
  size_t read(char *to, size_t size);

  // As the messages call it.
  const std::string &name() const { return m_name; }

 private:
  std::string m_name;
  int m_fd;
};

// Throws a no-input Failure unless the file can be read, before any other is worked on.
void checkReadable(const std::string &path);

}  // namespace tool

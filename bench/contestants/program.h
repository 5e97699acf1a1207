// program.h: what the bench's programs share: read the input file, convert it into one buffer, write that as the
// output file. Prints how much CPU time the conversion took, between reading and writing.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <stdexcept>
#include <string>
#include <string_view>

namespace bench {

struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Memory that the system has given before the clock starts.
class Memory {
 public:
  explicit Memory(size_t size) : m_size(size) {
    void *at = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (at == MAP_FAILED) throw Failure("no memory for " + std::to_string(size) + " bytes");
    m_data = static_cast<char *>(at);
  }
  ~Memory() { munmap(m_data, m_size); }
  Memory(const Memory &) = delete;
  Memory &operator=(const Memory &) = delete;

  char *data() const { return m_data; }
  size_t size() const { return m_size; }

 private:
  size_t m_size;
  char *m_data;
};

class File {
 public:
  File(const char *name, int flags) : m_name(name), m_handle(open(name, flags, 0644)) {
    if (m_handle < 0) throw Failure("cannot open " + m_name);
  }
  ~File() { close(m_handle); }
  File(const File &) = delete;
  File &operator=(const File &) = delete;

  size_t size() const {
    struct stat status {};
    if (fstat(m_handle, &status) != 0) throw Failure("cannot look at " + m_name);
    return static_cast<size_t>(status.st_size);
  }

  void readAll(char *to, size_t size) const {
    for (size_t done = 0; done < size;) {
      const ssize_t got = read(m_handle, to + done, size - done);
      if (got <= 0) throw Failure("cannot read " + m_name);
      done += static_cast<size_t>(got);
    }
  }

  void writeAll(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t put = write(m_handle, bytes.data(), bytes.size());
      if (put <= 0) throw Failure("cannot write " + m_name);
      bytes.remove_prefix(static_cast<size_t>(put));
    }
  }

 private:
  std::string m_name;
  int m_handle;
};

// The output: a converter asks for room, writes there, and says where it stopped.
class Output {
 public:
  explicit Output(size_t size) : m_memory(size), m_next(m_memory.data()) {}

  char *room(size_t size) {
    if (left() < size) throw Failure("the output is larger than expected");
    return m_next;
  }
  void stop(char *at) { m_next = at; }
  size_t left() const { return m_memory.size() - bytes().size(); }
  std::string_view bytes() const { return {m_memory.data(), static_cast<size_t>(m_next - m_memory.data())}; }

 private:
  Memory m_memory;
  char *m_next;
};

inline long long cpuNanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return 1000000000LL * now.tv_sec + now.tv_nsec;
}

// Behind the input stand this many zero bytes, as some libraries want them.
constexpr size_t kPadding = 64;

// growth: how many times the input's size the output has at most.
template <typename Convert>
void convertFile(const char *from, const char *to, size_t growth, Convert convert) {
  const File in(from, O_RDONLY);
  const size_t size = in.size();
  const Memory input(size + kPadding);
  in.readAll(input.data(), size);
  Output output(growth * size + (1U << 20));
  const long long start = cpuNanoseconds();
  convert(std::string_view(input.data(), size), output);
  const long long end = cpuNanoseconds();
  File(to, O_WRONLY | O_CREAT | O_TRUNC).writeAll(output.bytes());
  std::printf("conversion_ns %lld\n", end - start);
}

// main() of a contestant: NAME INPUT OUTPUT [MORE].
template <typename Body>
int program(int count, char **arguments, int more, Body body) {
  if (count != 3 + more) {
    std::fprintf(stderr, "%s: expected an input, an output and %d more\n", arguments[0], more);
    return 2;
  }
  try {
    body(arguments);
    return 0;
  } catch (const std::exception &error) {
    std::fprintf(stderr, "%s: %s\n", arguments[0], error.what());
    return 1;
  }
}

// Calls `convert` for each line, which must end in a line feed; the line comes without it.
template <typename Convert>
void eachLine(std::string_view input, Convert convert) {
  while (!input.empty()) {
    const auto *end = static_cast<const char *>(std::memchr(input.data(), '\n', input.size()));
    if (end == nullptr) throw Failure("the last line has no end");
    const auto size = static_cast<size_t>(end - input.data());
    convert(input.substr(0, size));
    input.remove_prefix(size + 1);
  }
}

}  // namespace bench

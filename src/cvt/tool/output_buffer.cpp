#include "output_buffer.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstring>

#include "error.h"

namespace tool {

OutputBuffer::OutputBuffer(size_t size) : m_size(size), m_data(nullptr) {
  void *const room =
      mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (room == MAP_FAILED) {
    throw Failure(Exit::internal, "no room for messages of " + std::to_string(size) +
                                      " bytes: " + std::strerror(errno) + "; write a smaller --max-output");
  }
  m_data = static_cast<char *>(room);
}

OutputBuffer::~OutputBuffer() {
  munmap(m_data, m_size);
}

}  // namespace tool

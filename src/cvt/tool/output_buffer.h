// output_buffer.h: room for the largest message that may be generated. A format reports a buffer that is too
// small as a failure like any other, so the room is there from the start; the system backs what is written
// to.
#pragma once

#include <cstddef>

namespace tool {

class OutputBuffer {
 public:
  // Throws an internal Failure when there is no room.
  explicit OutputBuffer(size_t size);
  ~OutputBuffer();
  OutputBuffer(const OutputBuffer &) = delete;
  OutputBuffer &operator=(const OutputBuffer &) = delete;

  char *data() const { return m_data; }
  int size() const { return static_cast<int>(m_size); }

 private:
  size_t m_size;
  char *m_data;
};

}  // namespace tool

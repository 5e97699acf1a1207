// output.h: the buffer a message is generated into. Nothing is ever written beyond its capacity.
#pragma once

#include <cstring>
#include <string_view>

#include "bytes.h"

namespace cvt::kit {

class Output {
 public:
  // Writing starts at `from`; the capacity counts from the start of the buffer. REQUIRES: from <= capacity.
  Output(char *buffer, size_t from, size_t capacity)
      : m_buffer(buffer), m_next(buffer + from), m_end(buffer + capacity) {}

  // Offset from the start of the buffer.
  size_t offset() const { return static_cast<size_t>(m_next - m_buffer); }
  size_t room() const { return static_cast<size_t>(m_end - m_next); }

  // Room for exactly `length` bytes, which the caller writes. Throws Fault, "expected room for N bytes".
  char *reserve(size_t length) {
    if (length > room()) full(length);
    char *piece = m_next;
    m_next += length;
    return piece;
  }

  void put(std::string_view bytes) {
    char *const piece = reserve(bytes.size());
    copyShort(piece, bytes.data(), bytes.size());
  }
  // Three pieces; false, and nothing was written, where there is no room for all of them.
  [[gnu::always_inline]] bool tryPut(std::string_view first, std::string_view second,
                                     std::string_view third) {
    if (first.size() + second.size() + third.size() > room()) return false;
    char *const piece = m_next;
    m_next += first.size() + second.size() + third.size();
    copyShort(piece, first.data(), first.size());
    copyShort(piece + first.size(), second.data(), second.size());
    copyShort(piece + first.size() + second.size(), third.data(), third.size());
    return true;
  }
  void put(char byte) { *reserve(1) = byte; }
  void fill(char byte, size_t count) {
    if (count != 0) std::memset(reserve(count), byte, count);
  }

  // What was written at that offset may be written again (a count that is known later).
  char *at(size_t offset) { return m_buffer + offset; }

  // Takes back everything behind that offset.
  void rewind(size_t offset) { m_next = m_buffer + offset; }

 private:
  [[noreturn]] void full(size_t length) const;

  char *m_buffer;
  char *m_next;
  char *m_end;
};

}  // namespace cvt::kit

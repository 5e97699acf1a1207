// input.h: the bytes of a message, or of a part of it, from front to back; never one behind the end.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "kit/fault.h"

namespace cvt::iso8583 {

class Input {
 public:
  // Offsets count from origin.
  Input(const char *origin, const char *at, const char *end) : m_origin(origin), m_at(at), m_end(end) {}

  size_t offset() const { return static_cast<size_t>(m_at - m_origin); }
  size_t left() const { return static_cast<size_t>(m_end - m_at); }
  bool atEnd() const { return m_at == m_end; }
  const char *at() const { return m_at; }
  std::string_view rest() const { return {m_at, left()}; }

  std::string_view take(size_t bytes) {
    if (bytes > left()) tooShort(bytes);
    const char *const piece = m_at;
    m_at += bytes;
    return {piece, bytes};
  }

  // A piece of these bytes as an input of its own.
  Input over(std::string_view piece) const { return {m_origin, piece.data(), piece.data() + piece.size()}; }

  // The next bytes as an input of their own.
  Input part(size_t bytes) { return over(take(bytes)); }

 private:
  [[noreturn]] void tooShort(size_t bytes) const {
    throw kit::Fault(offset(), std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes"),
                     left() == 0 ? "the end" : std::to_string(left()) + " and the end");
  }

  const char *m_origin;
  const char *m_at;
  const char *m_end;
};

}  // namespace cvt::iso8583

// cvt_sql_text.h: the text of an SQL statement, joined from pieces. Private.
#pragma once

#include <cstddef>
#include <cstring>

#include "cvt_heap.h"

namespace cvt {

class SqlText {
 public:
  void append(const char *psPiece, size_t nLen) {
    const size_t nNeeded = m_length + nLen + 1;  // a zero byte always has room behind the text
    if (nNeeded > m_text.size()) {
      const size_t nSize = (nNeeded + kStep - 1) / kStep * kStep;
      m_text.reserve(nSize);
      m_text.resize(nSize);
    }
    if (nLen > 0) std::memcpy(m_text.data() + m_length, psPiece, nLen);
    m_length += nLen;
  }

  // With a zero byte behind it.
  char *text() { return m_text.data(); }

 private:
  static constexpr size_t kStep = 1000;
  Vector<char> m_text = Vector<char>(kStep);
  size_t m_length = 0;
};

}  // namespace cvt

// seen.h: what has come of the children of the objects, and of the groups that are arrays, that are being read.
//
// They stand in each other: the children of the innermost one are on top.
#pragma once

#include <vector>

#include "kit/bytes.h"

namespace cvt::json {

enum Seen : char { kNothing, kAbsent, kThere };

class SeenStack {
 public:
  // Of one that begins: where its children are, none of which has come.
  size_t open(size_t children) {
    const size_t begin = m_top;
    m_top += children;
    if (m_all.size() < m_top) m_all.resize(m_top * 2);
    kit::fillShort(from(begin), kNothing, children);
    return begin;
  }
  void close(size_t begin) { m_top = begin; }

  // The children of an open one, until the next one is opened.
  char *from(size_t begin) { return m_all.data() + begin; }

  // None is open.
  void clear() { m_top = 0; }

 private:
  std::vector<char> m_all;
  size_t m_top = 0;
};

}  // namespace cvt::json

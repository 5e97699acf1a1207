// cvt_heap.h: heap memory of the library's own: it is there, or the process ends with one line. Private.
#pragma once

#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <new>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "cvt_log.h"

namespace cvt {

// What the pool and the indexes give is used unchecked, so there is nobody to report to.
[[noreturn]] inline void heapExhausted(size_t nSize) {
  CVT_ERR(
      "memory pool: %zu bytes wanted, the heap has none left; raise the memory limit of the process or lower "
      "gnMaxValue and gnMaxLoop",
      nSize);
  std::abort();
}

// The allocator of the containers below: no exception comes out of them.
template <class T>
struct Heap {
  using value_type = T;

  Heap() = default;
  template <class U>
  Heap(const Heap<U> &) {}

  T *allocate(size_t nNum) {
    void *const pt = ::operator new(nNum * sizeof(T), std::nothrow);
    if (pt == nullptr) heapExhausted(nNum * sizeof(T));
    return static_cast<T *>(pt);
  }
  void deallocate(T *pt, size_t) { ::operator delete(pt); }

  friend bool operator==(const Heap &, const Heap &) { return true; }
};

using String = std::basic_string<char, std::char_traits<char>, Heap<char>>;
template <class T>
using Vector = std::vector<T, Heap<T>>;
template <class Key, class T>
using Map = std::map<Key, T, std::less<Key>, Heap<std::pair<const Key, T>>>;
template <class Key, class T, class Hash = std::hash<Key>, class Equal = std::equal_to<Key>>
using HashMap = std::unordered_map<Key, T, Hash, Equal, Heap<std::pair<const Key, T>>>;
template <class Key>
using HashSet = std::unordered_set<Key, std::hash<Key>, std::equal_to<Key>, Heap<Key>>;

// A record of its own; delete it.
template <class T>
T *heapNew(const T &record) {
  T *const pt = new (std::nothrow) T(record);
  if (pt == nullptr) heapExhausted(sizeof(T));
  return pt;
}

// A copy of a text; free it.
inline char *heapCopy(const char *ps) {
  char *const psCopy = strdup(ps);
  if (psCopy == nullptr) heapExhausted(std::strlen(ps) + 1);
  return psCopy;
}

}  // namespace cvt

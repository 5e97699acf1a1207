// heap_use.h: how much of the heap is in use.
#pragma once

#include <malloc.h>

#include <cstddef>

namespace test {

// Bytes in use; always 0 under a sanitizer, which finds what is left behind by itself.
inline size_t heapInUse() {
  return mallinfo2().uordblks;
}

}  // namespace test

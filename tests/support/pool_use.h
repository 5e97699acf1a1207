// pool_use.h: how much of the configuration's memory is handed out.
#pragma once

#include "cvt_memory.h"

namespace test {

// Bytes that the global node has handed out since it was made or reset.
inline int handedOut() {
  int nBytes = 0;
  if (gptGlobalNode == nullptr) return nBytes;
  for (const MemBlock *pt = gptGlobalNode->ptHeadBlock; pt != nullptr; pt = pt->ptNext)
    nBytes += pt->nMaxSize - pt->nLeft;
  for (const MemBlock *pt = gptGlobalNode->ptNowBlock; pt != nullptr; pt = pt->ptNext)
    nBytes += pt->nMaxSize;  // exhausted: its nLeft is that after the next reset
  return nBytes;
}

}  // namespace test

#ifdef CVT2_ALIGN_POOL
#define NEEDS_PACKED_POOL() GTEST_SKIP() << "this pool rounds its sizes: CVT2_ALIGN_POOL is set"
#else
#define NEEDS_PACKED_POOL() static_cast<void>(0)
#endif

// cvt_heap_pool.h: a pool for sanitizers, which see no borders inside a block. Private to cvt_memory.cpp.
//
// With CVT2_HEAP_POOL each allocation is a heap block of its own, freed when its node is: what runs over its
// end or is used too late shows at once. The pool keeps its books as ever, of blocks that nobody writes to.
// As it ships, all of this is nothing.
#pragma once

#include "cvt_memory.h"

#ifdef CVT2_HEAP_POOL

#include <map>
#include <memory>
#include <vector>

namespace cvt::pool {

class HeapBlocks {
 public:
  // What the caller gets instead of ps: nSize zeroed bytes of ptNode.
  void *give(const MemNode *ptNode, void *, int nSize) {
    auto &blocks = m_blocks[ptNode];
    blocks.push_back(std::make_unique<char[]>(static_cast<size_t>(nSize)));
    return blocks.back().get();
  }
  void freeAll(const MemNode *ptNode) { m_blocks.erase(ptNode); }

 private:
  std::map<const MemNode *, std::vector<std::unique_ptr<char[]>>> m_blocks;
};

// Never destroyed: a host may end the library when its own objects go.
inline HeapBlocks &heapBlocks() {
  static HeapBlocks &blocks = *new HeapBlocks;
  return blocks;
}

inline void *give(const MemNode *ptNode, void *ps, int nSize) {
  return heapBlocks().give(ptNode, ps, nSize);
}
inline void freeAll(const MemNode *ptNode) {
  heapBlocks().freeAll(ptNode);
}

}  // namespace cvt::pool

#else

namespace cvt::pool {

inline void *give(const MemNode *, void *ps, int) {
  return ps;
}
inline void freeAll(const MemNode *) {}

}  // namespace cvt::pool

#endif

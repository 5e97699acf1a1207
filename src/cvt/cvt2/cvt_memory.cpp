// cvt_memory.cpp: the memory pool.
//
// Two disciplines share one kind of block. A message node bumps through its chain and never looks back:
// freeing a message is one assignment, and its blocks stay warm for the next one. The global node holds
// configuration, many small pieces of mixed size for a whole generation, and takes the best fit among all its
// blocks.
#include "cvt_memory.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "cvt_bits.h"
#include "cvt_heap.h"
#include "cvt_heap_pool.h"
#include "cvt_log.h"

MemRoot *gptMemRoot = nullptr;
MemNode *gptGlobalNode = nullptr;

namespace {

constexpr int kBlockSize = 1024;
constexpr char kFree = '0';
constexpr char kUsed = '1';

// A private index beside a list of blocks that is ordered by nLeft: where each run of equal values begins and
// ends. It gives the answers of a walk from the head without walking, so that loading a configuration takes
// time in proportion to its size.
class RunIndex {
 public:
  struct Fit {
    MemBlock *ptFront = nullptr;  // the block before it; null when it is the first
    MemBlock *ptBlock = nullptr;  // null: no block has that much room
  };

  // The first block of the list with at least nSize bytes left.
  Fit fit(int nSize) const {
    const auto run = m_runs.lower_bound(nSize);
    if (run == m_runs.end()) return {};
    return {run == m_runs.begin() ? nullptr : std::prev(run)->second.ptLast, run->second.ptFirst};
  }

  // Links a block into the list: a value up to the first one's goes to the front, any other behind the last
  // block that is not greater.
  void insert(MemBlock *&ptHead, MemBlock *ptBlock) {
    const auto above = m_runs.upper_bound(ptBlock->nLeft);
    const bool bFirst = above == m_runs.begin() || m_runs.begin()->first == ptBlock->nLeft;
    MemBlock *const ptFront = bFirst ? nullptr : std::prev(above)->second.ptLast;
    MemBlock *&ptLink = bFirst ? ptHead : ptFront->ptNext;
    ptBlock->ptNext = ptLink;
    ptLink = ptBlock;
    enter(ptBlock, ptFront);
  }

  // Takes in a block that stands in the list behind ptFront (null: first) and is not in the index.
  void enter(MemBlock *ptBlock, MemBlock *ptFront) {
    const auto [run, bNew] = m_runs.try_emplace(ptBlock->nLeft, Run{ptBlock, ptBlock});
    if (bNew) return;
    (run->second.ptLast == ptFront ? run->second.ptLast : run->second.ptFirst) = ptBlock;
  }

  // Leaves out a block that is about to change its value. It is the first of its run: fit() finds no other.
  void leave(const MemBlock *ptBlock) {
    const auto run = m_runs.find(ptBlock->nLeft);
    if (run->second.ptFirst == run->second.ptLast) {
      m_runs.erase(run);
    } else {
      run->second.ptFirst = ptBlock->ptNext;
    }
  }

  void clear() { m_runs.clear(); }
  void swap(RunIndex &other) { m_runs.swap(other.m_runs); }

 private:
  struct Run {
    MemBlock *ptFirst;
    MemBlock *ptLast;
  };
  cvt::Map<int, Run> m_runs;
};

// A private index beside the list of message nodes: which of them are free.
class FreeNodes {
 public:
  // Takes in a node that is at the end of the list.
  void append(MemNode *ptNode) {
    m_nodes.push_back(ptNode);
    m_free.reserve(m_nodes.size());
    update(ptNode);
  }

  // To be called whenever a node has changed sides. A node of another list is not looked at.
  void update(const MemNode *ptNode) {
    const size_t n = position(ptNode);
    if (n >= m_nodes.size() || m_nodes[n] != ptNode) return;
    if (ptNode->cUsed == kFree) {
      m_free.insert(n);
    } else {
      m_free.erase(n);
    }
  }

  // The first free node from this one on, the last one of the list apart; null without one.
  MemNode *next(const MemNode *ptNode) const {
    const size_t n = m_free.next(position(ptNode));
    return n == cvt::Bits::kNone || n + 1 == m_nodes.size() ? nullptr : m_nodes[n];
  }

  void clear() {
    m_nodes.clear();
    m_free.clear();
  }

 private:
  static size_t position(const MemNode *ptNode) { return static_cast<size_t>(ptNode->nId) - 1; }

  cvt::Vector<MemNode *> m_nodes;
  cvt::Bits m_free;
};

FreeNodes f_nodes;               // beside gptMemRoot's ptMemNodeList
RunIndex f_room;                 // beside the global node's ptHeadBlock
RunIndex f_exhausted;            // beside its ptNowBlock
MemBlock *f_ptParked = nullptr;  // exhausted blocks that clean-ups have left: the next global node takes them
RunIndex f_parked;               // beside f_ptParked
bool f_bReleased = false;        // cvtMemCleanUp has run: the globals keep values that nothing may follow

template <class T>
T *Zeroed(size_t nNum = 1) {
  void *const pt = std::calloc(nNum, sizeof(T));
  if (pt == nullptr) cvt::heapExhausted(nNum * sizeof(T));
  return static_cast<T *>(pt);
}

int RoundUp(long nSize, long nUnit) {
  return static_cast<int>(std::min<long>((nSize + nUnit - 1) / nUnit * nUnit, INT_MAX));
}

// What an allocation takes from its block.
int TakenSize(int nSize) {
#ifdef CVT2_ALIGN_POOL
  // For sanitizers that check alignment; the pool as it ships packs its bytes.
  return RoundUp(nSize, 16);
#else
  return nSize;
#endif
}

// --- Construction ------------------------------------------------------------------------------------------

MemBlock *NewMemBlock(int nMaxSize) {
  MemBlock *const ptBlock = Zeroed<MemBlock>();
  ptBlock->nMaxSize = nMaxSize;
  ptBlock->nLeft = nMaxSize;
  ptBlock->psBuf = Zeroed<char>(static_cast<size_t>(nMaxSize));
  return ptBlock;
}

// A block that a clean-up has left, of that size; null without one. So a process which ends and starts the library
// again and again does not grow.
MemBlock *TakeParked(int nMaxSize) {
  const auto [ptFront, ptFit] = f_parked.fit(nMaxSize);
  if (ptFit == nullptr || ptFit->nMaxSize != nMaxSize) return nullptr;
  f_parked.leave(ptFit);
  (ptFront == nullptr ? f_ptParked : ptFront->ptNext) = ptFit->ptNext;
  ptFit->ptNext = nullptr;
  return ptFit;
}

MemNode *NewMemNode(int nId, MemBlock *ptBlock) {
  MemNode *const ptNode = Zeroed<MemNode>();
  ptNode->nId = nId;
  ptNode->cUsed = kFree;
  ptNode->ptHeadBlock = ptBlock;
  ptNode->ptNowBlock = ptNode->ptHeadBlock;
  return ptNode;
}

// Forgets what a clean-up has released.
void StartAfresh() {
  if (!f_bReleased) return;
  gptMemRoot = nullptr;
  gptGlobalNode = nullptr;
  f_bReleased = false;
}

[[gnu::noinline]] void MakeRoot() {
  StartAfresh();
  MemNode *const ptNode = NewMemNode(1, NewMemBlock(kBlockSize));
  gptMemRoot = Zeroed<MemRoot>();
  gptMemRoot->ptMemNodeList = ptNode;
  gptMemRoot->nMinFreeNodeId = ptNode->nId;
  gptMemRoot->ptFreeNode = ptNode;
  gptMemRoot->ptLastNode = ptNode;
  f_nodes.append(ptNode);
}

// The root, made on first use.
MemRoot *NowRoot() {
  if (f_bReleased || gptMemRoot == nullptr) MakeRoot();
  return gptMemRoot;
}

MemNode *AddLastNode() {
  MemRoot *const ptRoot = NowRoot();
  MemNode *const ptNode = NewMemNode(ptRoot->ptLastNode->nId + 1, NewMemBlock(kBlockSize));
  ptRoot->ptLastNode->ptNext = ptNode;
  ptRoot->ptLastNode = ptNode;
  f_nodes.append(ptNode);
  return ptNode;
}

// The global node, made on first use.
MemNode *NowGlobalNode() {
  StartAfresh();
  if (gptGlobalNode == nullptr) {
    MemBlock *const ptParked = TakeParked(kBlockSize);
    gptGlobalNode = NewMemNode(0, ptParked == nullptr ? NewMemBlock(kBlockSize) : ptParked);
    gptGlobalNode->ptNowBlock = nullptr;
    f_room.enter(gptGlobalNode->ptHeadBlock, nullptr);
  }
  return gptGlobalNode;
}

// --- Message nodes -----------------------------------------------------------------------------------------

// The search for the next free node stops short of the list's last node, on purpose: a free last node is found
// once another one stands behind it.
int SetNodeUse(MemNode *ptNode) {
  CVT_NOT_NULL(ptNode, -1);
  MemRoot *const ptRoot = NowRoot();
  ptNode->cUsed = kUsed;
  f_nodes.update(ptNode);
  if (ptRoot->nMinFreeNodeId != ptNode->nId) return 0;
  MemNode *const ptFree = f_nodes.next(ptNode);
  ptRoot->nMinFreeNodeId = ptFree == nullptr ? -1 : ptFree->nId;
  ptRoot->ptFreeNode = ptFree;
  return 0;
}

// Blocks behind the head keep stale counters; GetMemory resets each one when it gets there.
int SetNodeNotUse(MemNode *ptNode) {
  CVT_NOT_NULL(ptNode, -1);
  cvt::pool::freeAll(ptNode);
  ptNode->cUsed = kFree;
  f_nodes.update(ptNode);
  ptNode->ptNowBlock = ptNode->ptHeadBlock;
  ptNode->ptHeadBlock->nLeft = ptNode->ptHeadBlock->nMaxSize;
  return 0;
}

// A piece of a block, as it is there.
char *Cut(MemBlock *ptBlock, int nSize) {
  char *const ps = ptBlock->psBuf + (ptBlock->nMaxSize - ptBlock->nLeft);
  ptBlock->nLeft -= nSize;
  return ps;
}

void *Take(const MemNode *ptNode, MemBlock *ptBlock, int nSize) {
  return cvt::pool::give(ptNode, std::memset(Cut(ptBlock, nSize), 0, static_cast<size_t>(nSize)), nSize);
}

// Of a block just made, which is zero: a piece that is large and never written takes no memory.
void *TakeFresh(const MemNode *ptNode, MemBlock *ptBlock, int nSize) {
  return cvt::pool::give(ptNode, Cut(ptBlock, nSize), nSize);
}

// The tests are strict: a message's block is never filled to its last byte.
void *GetMemory(MemNode *ptNode, int nSize) {
  CVT_NOT_NULL(ptNode, nullptr);
  if (nSize <= 0) return nullptr;
  nSize = TakenSize(nSize);
  MemBlock *const ptNow = ptNode->ptNowBlock;
  if (ptNow->nLeft > nSize) return Take(ptNode, ptNow, nSize);
  if (ptNow->ptNext != nullptr && ptNow->ptNext->nMaxSize > nSize) {
    ptNow->ptNext->nLeft = ptNow->ptNext->nMaxSize;
  } else {
    MemBlock *const ptBlock = NewMemBlock(RoundUp(nSize + 1L, kBlockSize));
    ptBlock->ptNext = ptNow->ptNext;
    ptNow->ptNext = ptBlock;
  }
  ptNode->ptNowBlock = ptNow->ptNext;
  return Take(ptNode, ptNode->ptNowBlock, nSize);
}

// --- The global node ---------------------------------------------------------------------------------------

// Files a block that is in neither list. An exhausted one gets at once the value it has after the next reset.
int AddQueue(MemNode *ptNode, MemBlock *ptBlock) {
  CVT_NOT_NULL(ptNode, -1);
  CVT_NOT_NULL(ptBlock, -1);
  if (ptBlock->nLeft <= 0) {
    ptBlock->nLeft = ptBlock->nMaxSize;
    f_exhausted.insert(ptNode->ptNowBlock, ptBlock);
  } else {
    f_room.insert(ptNode->ptHeadBlock, ptBlock);
  }
  return 0;
}

// Files a block of the room list again after its value has fallen. ptFrontBlock is the block before it, null
// when it is the first. It has left the index already.
int MoveQueue(MemNode *ptNode, MemBlock *ptFrontBlock, MemBlock *ptMoveBlock) {
  CVT_NOT_NULL(ptNode, -1);
  CVT_NOT_NULL(ptMoveBlock, -1);
  const int nLeast = ptFrontBlock == nullptr ? 1 : ptFrontBlock->nLeft;
  if (ptMoveBlock->nLeft >= nLeast) {
    f_room.enter(ptMoveBlock, ptFrontBlock);
    return 0;
  }
  (ptFrontBlock == nullptr ? ptNode->ptHeadBlock : ptFrontBlock->ptNext) = ptMoveBlock->ptNext;
  ptMoveBlock->ptNext = nullptr;
  return AddQueue(ptNode, ptMoveBlock);
}

// The test is not strict: a block may be filled to its last byte.
void *GetMemoryGreedy(MemNode *ptNode, int nSize) {
  CVT_NOT_NULL(ptNode, nullptr);
  if (nSize <= 0) return nullptr;
  nSize = TakenSize(nSize);
  const auto [ptFront, ptFit] = f_room.fit(nSize);
  if (ptFit == nullptr) {
    const int nMaxSize = std::max(nSize, kBlockSize);
    MemBlock *const ptParked = TakeParked(nMaxSize);
    MemBlock *const ptBlock = ptParked == nullptr ? NewMemBlock(nMaxSize) : ptParked;
    void *const pt = ptParked == nullptr ? TakeFresh(ptNode, ptBlock, nSize) : Take(ptNode, ptBlock, nSize);
    AddQueue(ptNode, ptBlock);
    return pt;
  }
  f_room.leave(ptFit);
  void *const pt = Take(ptNode, ptFit, nSize);
  MoveQueue(ptNode, ptFront, ptFit);
  return pt;
}

int SetNodeNotUseGreedy(MemNode *ptNode) {
  CVT_NOT_NULL(ptNode, -1);
  cvt::pool::freeAll(ptNode);
  while (ptNode->ptHeadBlock != nullptr) {
    MemBlock *const ptBlock = ptNode->ptHeadBlock;
    f_room.leave(ptBlock);
    ptBlock->nLeft = 0;
    MoveQueue(ptNode, nullptr, ptBlock);
  }
  ptNode->ptHeadBlock = ptNode->ptNowBlock;
  ptNode->ptNowBlock = nullptr;
  f_room.swap(f_exhausted);
  return 0;
}

// --- Release: loops, since a chain may be long -------------------------------------------------------------

void MemBlockCleanUp(MemBlock *ptBlock) {
  while (ptBlock != nullptr) {
    MemBlock *const ptNext = ptBlock->ptNext;
    std::free(ptBlock->psBuf);
    std::free(ptBlock);
    ptBlock = ptNext;
  }
}

void MemNodeCleanUp(MemNode *ptNode) {
  while (ptNode != nullptr) {
    MemNode *const ptNext = ptNode->ptNext;
    MemBlockCleanUp(ptNode->ptHeadBlock);
    cvt::pool::freeAll(ptNode);
    std::free(ptNode);
    ptNode = ptNext;
  }
}

void MemRootCleanUp(MemRoot *ptRoot) {
  MemNodeCleanUp(ptRoot->ptMemNodeList);
  std::free(ptRoot);
}

void Park(MemBlock *ptBlock) {
  while (ptBlock != nullptr) {
    MemBlock *const ptNext = ptBlock->ptNext;
    f_parked.insert(f_ptParked, ptBlock);
    ptBlock = ptNext;
  }
}

}  // namespace

void *cvtMalloc(int nNum, MemNode *ptNode) {
  CVT_NOT_NULL(ptNode, nullptr);
  return GetMemory(ptNode, nNum);
}

void *cvtMemMalloc(int nNum) {
  return GetMemoryGreedy(NowGlobalNode(), nNum);
}

int cvtMemReset(void) {
  StartAfresh();
  if (gptGlobalNode == nullptr) return 0;
  return SetNodeNotUseGreedy(gptGlobalNode);
}

MemNode *cvtMemNewNode(void) {
  MemRoot *const ptRoot = NowRoot();
  MemNode *const ptNode = ptRoot->nMinFreeNodeId > 0 ? ptRoot->ptFreeNode : AddLastNode();
  SetNodeUse(ptNode);
  return ptNode;
}

int cvtMemDelNode(MemNode *ptNode) {
  if (SetNodeNotUse(ptNode) != 0) return -1;
  MemRoot *const ptRoot = NowRoot();
  if (ptRoot->nMinFreeNodeId == -1 || ptNode->nId < ptRoot->nMinFreeNodeId) {
    ptRoot->nMinFreeNodeId = ptNode->nId;
    ptRoot->ptFreeNode = ptNode;
  }
  return 0;
}

int cvtMemPrintNode(MemNode *ptNode) {
  CVT_NOT_NULL(ptNode, -1);
  long nTotal = 0;
  long nUsed = 0;
  bool bInUse = true;
  for (const MemBlock *pt = ptNode->ptHeadBlock; pt != nullptr; pt = pt->ptNext) {
    nTotal += pt->nMaxSize;
    if (bInUse) nUsed += pt->nMaxSize - pt->nLeft;
    if (pt == ptNode->ptNowBlock) bInUse = false;
  }
  CVT_TRACE("Node[%d]:[%d] -- Used[%d]", ptNode->nId, static_cast<int>(nTotal), static_cast<int>(nUsed));
  return 0;
}

int cvtMemCleanUp(void) {
  if (f_bReleased) return 0;
  if (gptMemRoot != nullptr) MemRootCleanUp(gptMemRoot);
  f_nodes.clear();
  if (gptGlobalNode != nullptr) {
    Park(gptGlobalNode->ptNowBlock);
    MemNodeCleanUp(gptGlobalNode);
  }
  f_room.clear();
  f_exhausted.clear();
  f_bReleased = true;
  return 0;
}

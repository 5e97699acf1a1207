// The memory pool against a straightforward program that walks its lists: the real pool must always look like
// it, and must not take the time of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "cvt_memory.h"

namespace {

class MemoryPool : public testing::Test {
 protected:
  void TearDown() override { cvtMemCleanUp(); }
};

using PoolModel = MemoryPool;
using PoolSpeed = MemoryPool;

char *global(int nNum) {
  return static_cast<char *>(cvtMemMalloc(nNum));
}
char *message(int nNum, MemNode *ptNode) {
  return static_cast<char *>(cvtMalloc(nNum, ptNode));
}

// --- The model ---------------------------------------------------------------------------------------------

#ifdef CVT2_ALIGN_POOL
int taken(int nSize) {
  return (nSize + 15) / 16 * 16;
}
#else
int taken(int nSize) {
  return nSize;
}
#endif

struct Block {
  int nMaxSize;
  int nLeft;
  char *psBuf;
  bool operator==(const Block &) const = default;
};
using Chain = std::vector<Block>;

Chain chain(const MemBlock *pt) {
  Chain blocks;
  for (; pt != nullptr; pt = pt->ptNext) blocks.push_back({pt->nMaxSize, pt->nLeft, pt->psBuf});
  return blocks;
}

// Takes nSize bytes; a block that has no memory yet is given the one that the pool has just handed out.
char *take(Block &block, int nSize, void *ptGiven) {
  if (block.psBuf == nullptr) block.psBuf = static_cast<char *>(ptGiven);
  char *const ps = block.psBuf + (block.nMaxSize - block.nLeft);
  block.nLeft -= nSize;
  return ps;
}

// The global node.
class GreedyModel {
 public:
  explicit GreedyModel(Chain first) : room(std::move(first)) {}

  // What cvtMemMalloc(nSize) had to answer, given what it did answer.
  char *allocate(int nSize, void *ptGiven) {
    nSize = taken(nSize);
    size_t i = 0;
    while (i < room.size() && room[i].nLeft < nSize) ++i;
    if (i == room.size()) {
      Block block{std::max(nSize, 1024), std::max(nSize, 1024), nullptr};
      char *const ps = take(block, nSize, ptGiven);
      add(block);
      return ps;
    }
    char *const ps = take(room[i], nSize, ptGiven);
    move(i);
    return ps;
  }

  void reset() {
    while (!room.empty()) {
      room[0].nLeft = 0;
      move(0);
    }
    room.swap(exhausted);
  }

  Chain room;
  Chain exhausted;

 private:
  static void insert(Chain &list, Block block) {
    if (list.empty() || list[0].nLeft >= block.nLeft) {
      list.insert(list.begin(), block);
      return;
    }
    size_t i = 0;
    while (i + 1 < list.size() && list[i + 1].nLeft <= block.nLeft) ++i;
    list.insert(list.begin() + static_cast<long>(i) + 1, block);
  }

  void add(Block block) {
    if (block.nLeft <= 0) {
      block.nLeft = block.nMaxSize;
      insert(exhausted, block);
    } else {
      insert(room, block);
    }
  }

  void move(size_t i) {
    if (i == 0 && room[0].nLeft > 0) return;
    if (i > 0 && room[i - 1].nLeft <= room[i].nLeft) return;
    const Block block = room[i];
    room.erase(room.begin() + static_cast<long>(i));
    add(block);
  }
};

// The message nodes and their cache.
class NodesModel {
 public:
  struct Node {
    bool bUsed;
    Chain chain;
    size_t nNow;
  };

  // What cvtMalloc(nSize, node) had to answer, given what it did answer.
  char *allocate(size_t nNode, int nSize, void *ptGiven) {
    nSize = taken(nSize);
    Node &node = nodes[nNode];
    if (node.chain[node.nNow].nLeft <= nSize) {
      const size_t nNext = node.nNow + 1;
      if (nNext < node.chain.size() && node.chain[nNext].nMaxSize > nSize) {
        node.chain[nNext].nLeft = node.chain[nNext].nMaxSize;
      } else {
        const int nMaxSize = nSize / 1024 * 1024 + 1024;
        node.chain.insert(node.chain.begin() + static_cast<long>(nNext), {nMaxSize, nMaxSize, nullptr});
      }
      node.nNow = nNext;
    }
    return take(node.chain[node.nNow], nSize, ptGiven);
  }

  // The position of the node that cvtMemNewNode had to hand out.
  size_t create() {
    const size_t nNode = nFree >= 0 ? static_cast<size_t>(nFree) : nodes.size();
    if (nFree < 0) nodes.push_back({false, {{1024, 1024, nullptr}}, 0});
    nodes[nNode].bUsed = true;
    if (nFree < 0) return nNode;
    nFree = -1;
    for (size_t i = nNode; i + 1 < nodes.size() && nFree < 0; ++i) {
      if (!nodes[i].bUsed) nFree = static_cast<long>(i);
    }
    return nNode;
  }

  void release(size_t nNode) {
    Node &node = nodes[nNode];
    node.bUsed = false;
    node.nNow = 0;
    node.chain[0].nLeft = node.chain[0].nMaxSize;
    if (nFree < 0 || static_cast<long>(nNode) < nFree) nFree = static_cast<long>(nNode);
  }

  std::vector<Node> nodes{{false, {{1024, 1024, nullptr}}, 0}};
  long nFree = 0;  // position of the cached free node, -1: none
};

// --- Against the model -------------------------------------------------------------------------------------

// Memory handed out, and the pattern written into it.
class Pieces {
 public:
  void write(char *ps, int nNum) {
    const char c = static_cast<char>(m_pieces.size() % 255 + 1);
    ASSERT_TRUE(std::all_of(ps, ps + nNum, [](char cByte) { return cByte == 0; }));
    std::memset(ps, c, static_cast<size_t>(nNum));
    m_pieces.push_back({ps, nNum, c});
  }

  void expectIntact() const {
    for (const Piece &piece : m_pieces) {
      ASSERT_EQ(std::string(piece.ps, static_cast<size_t>(piece.nNum)),
                std::string(static_cast<size_t>(piece.nNum), piece.c));
    }
  }

  void clear() { m_pieces.clear(); }

 private:
  struct Piece {
    const char *ps;
    int nNum;
    char c;
  };
  std::vector<Piece> m_pieces;
};

// Few different sizes and values make many ties.
int randomSize(std::mt19937 &random) {
  static const int some[] = {1,   2,   8,    16,   24,   32,   100,  128, 256,
                             500, 512, 1000, 1008, 1023, 1024, 1025, 2048};
  if (random() % 4 == 0) return static_cast<int>(random() % 3000) + 1;
  return some[random() % std::size(some)];
}

TEST_F(PoolModel, TheGlobalNodeLooksAsIfItsListsWereWalked) {
  for (unsigned nSeed = 1; nSeed <= 8; ++nSeed) {
    std::mt19937 random(nSeed);
    cvtMemCleanUp();
    cvtMemMalloc(0);
    GreedyModel model(chain(gptGlobalNode->ptHeadBlock));
    Pieces pieces;
    for (int nStep = 0; nStep < 3000; ++nStep) {
      if (random() % 400 == 0) {
        pieces.expectIntact();
        pieces.clear();
        cvtMemReset();
        model.reset();
      } else {
        const int nSize = randomSize(random);
        char *const ps = global(nSize);
        ASSERT_EQ(ps, model.allocate(nSize, ps)) << "seed " << nSeed << " step " << nStep;
        ASSERT_NO_FATAL_FAILURE(pieces.write(ps, nSize));
      }
      ASSERT_TRUE(chain(gptGlobalNode->ptHeadBlock) == model.room) << "seed " << nSeed << " step " << nStep;
      ASSERT_TRUE(chain(gptGlobalNode->ptNowBlock) == model.exhausted)
          << "seed " << nSeed << " step " << nStep;
    }
    pieces.expectIntact();
  }
}

void expectSame(const NodesModel &model) {
  const MemNode *pt = gptMemRoot->ptMemNodeList;
  for (size_t i = 0; i < model.nodes.size(); ++i, pt = pt->ptNext) {
    ASSERT_NE(pt, nullptr);
    const NodesModel::Node &node = model.nodes[i];
    ASSERT_EQ(pt->nId, static_cast<int>(i) + 1);
    ASSERT_EQ(pt->cUsed, node.bUsed ? '1' : '0');
    const Chain real = chain(pt->ptHeadBlock);
    ASSERT_EQ(real.size(), node.chain.size());
    for (size_t n = 0; n < real.size(); ++n) {
      ASSERT_EQ(real[n].nMaxSize, node.chain[n].nMaxSize);
      ASSERT_EQ(real[n].nLeft, node.chain[n].nLeft);
    }
    ASSERT_EQ(chain(pt->ptNowBlock).size(), node.chain.size() - node.nNow);
  }
  ASSERT_EQ(pt, nullptr);
  ASSERT_EQ(gptMemRoot->nMinFreeNodeId, model.nFree < 0 ? -1 : static_cast<int>(model.nFree) + 1);
  ASSERT_EQ(gptMemRoot->ptFreeNode == nullptr, model.nFree < 0);
}

TEST_F(PoolModel, MessageNodesLookAsIfTheirListWereWalked) {
  for (unsigned nSeed = 1; nSeed <= 8; ++nSeed) {
    std::mt19937 random(nSeed);
    cvtMemCleanUp();
    NodesModel model;
    std::vector<MemNode *> used;
    std::vector<Pieces> pieces(64);
    for (int nStep = 0; nStep < 2000; ++nStep) {
      const auto nWhat = random() % 20;
      if (used.empty() || (nWhat == 0 && used.size() < 30)) {
        used.push_back(cvtMemNewNode());
        ASSERT_EQ(static_cast<size_t>(used.back()->nId), model.create() + 1);
      } else if (nWhat == 1) {
        const size_t n = random() % used.size();
        const auto nNode = static_cast<size_t>(used[n]->nId - 1);
        pieces[nNode].expectIntact();
        pieces[nNode].clear();
        ASSERT_EQ(cvtMemDelNode(used[n]), 0);
        model.release(nNode);
        used.erase(used.begin() + static_cast<long>(n));
      } else {
        MemNode *const ptNode = used[random() % used.size()];
        const auto nNode = static_cast<size_t>(ptNode->nId - 1);
        const int nSize = randomSize(random);
        char *const ps = message(nSize, ptNode);
        ASSERT_EQ(ps, model.allocate(nNode, nSize, ps)) << "seed " << nSeed << " step " << nStep;
        ASSERT_NO_FATAL_FAILURE(pieces[nNode].write(ps, nSize));
      }
      ASSERT_NO_FATAL_FAILURE(expectSame(model)) << "seed " << nSeed << " step " << nStep;
    }
  }
}

// Phases of growing and shrinking, so that long runs of used and of free nodes come about.
TEST_F(PoolModel, ManyMessageNodesLookAsIfTheirListWereWalked) {
  for (unsigned nSeed = 1; nSeed <= 4; ++nSeed) {
    std::mt19937 random(nSeed);
    cvtMemCleanUp();
    NodesModel model;
    std::vector<MemNode *> used;
    for (unsigned nStep = 0; nStep < 4000; ++nStep) {
      const bool bGrows = nStep / 500 % 2 == 0;
      if (used.empty() || random() % 8 < (bGrows ? 6U : 2U)) {
        used.push_back(cvtMemNewNode());
        ASSERT_EQ(static_cast<size_t>(used.back()->nId), model.create() + 1);
      } else {
        const size_t n = nStep % 3 == 0 ? 0 : random() % used.size();
        model.release(static_cast<size_t>(used[n]->nId - 1));
        ASSERT_EQ(cvtMemDelNode(used[n]), 0);
        used.erase(used.begin() + static_cast<long>(n));
      }
      ASSERT_EQ(gptMemRoot->nMinFreeNodeId, model.nFree < 0 ? -1 : static_cast<int>(model.nFree) + 1)
          << "seed " << nSeed << " step " << nStep;
      if (nStep % 50 != 0) continue;
      ASSERT_NO_FATAL_FAILURE(expectSame(model));
    }
    EXPECT_GT(model.nodes.size(), 200U);
  }
}

// --- Speed -------------------------------------------------------------------------------------------------

// Processor time, the best of three, in seconds, each on a fresh pool.
template <class Work>
double seconds(Work work, int nCount) {
  double dBest = 1e9;
  for (int i = 0; i < 3; ++i) {
    cvtMemCleanUp();
    const std::clock_t start = std::clock();
    work(nCount);
    dBest = std::min(dBest, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
  }
  return dBest;
}

// Twenty times the work. A walk of the lists would take four hundred times as long, and far more than the two
// seconds that are there for caches that the small work fits and the large does not.
template <class Work>
void expectProportional(Work work, int nCount) {
  const double dSmall = seconds(work, nCount / 20);
  const double dLarge = seconds(work, nCount);
  EXPECT_LT(dLarge, 30 * dSmall + 2);
}

// Every block of ten is left with the same few bytes, which no later allocation can use.
TEST_F(PoolSpeed, SmallAllocationsTakeTimeInProportion) {
  expectProportional(
      [](int nCount) {
        for (int i = 0; i < nCount; ++i) cvtMemMalloc(100);
      },
      200000);
}

TEST_F(PoolSpeed, AllocationsOfMixedSizesTakeTimeInProportion) {
  expectProportional(
      [](int nCount) {
        std::mt19937 random(1);
        for (int i = 0; i < nCount; ++i) cvtMemMalloc(static_cast<int>(random() % 700) + 1);
      },
      200000);
}

// Exhausted blocks of many capacities, filed again at every reset.
TEST_F(PoolSpeed, ResetsTakeTimeInProportion) {
  expectProportional(
      [](int nCount) {
        for (int i = 0; i < nCount; ++i) cvtMemMalloc(1024 + i % 3000);
        for (int i = 0; i < 4; ++i) cvtMemReset();
      },
      20000);
}

// The message that has been held longest goes first, so the free node is far from the next one.
TEST_F(PoolSpeed, HoldingManyMessagesTakesTimeInProportion) {
  expectProportional(
      [](int nCount) {
        std::vector<MemNode *> held;
        for (int i = 0; i < nCount; ++i) held.push_back(cvtMemNewNode());
        for (MemNode *&pt : held) {
          cvtMemDelNode(std::exchange(pt, cvtMemNewNode()));
        }
      },
      30000);
}

}  // namespace

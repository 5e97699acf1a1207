#include "cvt_memory.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "allocator.h"
#include "heap_use.h"
#include "log_capture.h"
#include "pool_use.h"

namespace {

class MemoryPool : public testing::Test {
 protected:
  void SetUp() override { test::clearLog(); }
  void TearDown() override { cvtMemCleanUp(); }
};

using MessageNode = MemoryPool;
using GlobalNode = MemoryPool;
using CleanUp = MemoryPool;

struct Size {
  int nMaxSize;
  int nLeft;
  bool operator==(const Size &) const = default;
};

void PrintTo(const Size &size, std::ostream *out) {
  *out << size.nMaxSize << "/" << size.nLeft;
}

std::vector<Size> sizes(const MemBlock *pt) {
  std::vector<Size> all;
  for (; pt != nullptr; pt = pt->ptNext) all.push_back({pt->nMaxSize, pt->nLeft});
  return all;
}

std::vector<const char *> buffers(const MemBlock *pt) {
  std::vector<const char *> all;
  for (; pt != nullptr; pt = pt->ptNext) all.push_back(pt->psBuf);
  return all;
}

char *global(int nNum) {
  return static_cast<char *>(cvtMemMalloc(nNum));
}
char *message(int nNum, MemNode *ptNode) {
  return static_cast<char *>(cvtMalloc(nNum, ptNode));
}

bool isZero(const char *ps, int nNum) {
  for (int i = 0; i < nNum; ++i) {
    if (ps[i] != 0) return false;
  }
  return true;
}

// The only line so far: an error of that text from that function.
void expectError(const std::string &function, const std::string &text) {
  ASSERT_EQ(test::logLines().size(), 1U);
  const test::LogLine &line = test::logLines()[0];
  EXPECT_EQ(line.nLevel, 1);
  EXPECT_EQ(line.sModule, "$cvt2");
  EXPECT_EQ(line.sFile, "cvt_memory.cpp");
  EXPECT_EQ(line.sFunction, function);
  EXPECT_EQ(line.sText, text);
}

// --- Message nodes -----------------------------------------------------------------------------------------

TEST_F(MessageNode, FirstNodeHasIdOne) {
  MemNode *const ptNode = cvtMemNewNode();
  ASSERT_NE(ptNode, nullptr);
  EXPECT_EQ(ptNode->nId, 1);
  EXPECT_EQ(ptNode->cUsed, '1');
  EXPECT_EQ(ptNode->ptNext, nullptr);
  EXPECT_EQ(ptNode->ptNowBlock, ptNode->ptHeadBlock);
  EXPECT_EQ(sizes(ptNode->ptHeadBlock), (std::vector<Size>{{1024, 1024}}));
  EXPECT_EQ(gptMemRoot->ptMemNodeList, ptNode);
  EXPECT_EQ(gptMemRoot->ptLastNode, ptNode);
  EXPECT_EQ(gptMemRoot->nMinFreeNodeId, -1);
  EXPECT_EQ(gptMemRoot->ptFreeNode, nullptr);
}

TEST_F(MessageNode, NodesAreChainedByIncreasingId) {
  for (int nId = 1; nId <= 5; ++nId) EXPECT_EQ(cvtMemNewNode()->nId, nId);
  int nId = 1;
  for (MemNode *pt = gptMemRoot->ptMemNodeList; pt != nullptr; pt = pt->ptNext) EXPECT_EQ(pt->nId, nId++);
  EXPECT_EQ(nId, 6);
  EXPECT_EQ(gptMemRoot->ptLastNode->nId, 5);
}

TEST_F(MessageNode, AFreedNodeComesBackWithItsBlocks) {
  MemNode *const ptNode = cvtMemNewNode();
  cvtMalloc(1000, ptNode);
  cvtMalloc(5000, ptNode);
  const auto before = buffers(ptNode->ptHeadBlock);
  EXPECT_EQ(cvtMemDelNode(ptNode), 0);
  EXPECT_EQ(ptNode->cUsed, '0');
  EXPECT_EQ(gptMemRoot->ptFreeNode, ptNode);
  EXPECT_EQ(cvtMemNewNode(), ptNode);
  EXPECT_EQ(ptNode->cUsed, '1');
  EXPECT_EQ(before.size(), 2U);
  EXPECT_EQ(buffers(ptNode->ptHeadBlock), before);
}

TEST_F(MessageNode, TheScanForAFreeNodeNeverLooksAtTheLastOne) {
  MemNode *const pt1 = cvtMemNewNode();
  MemNode *const pt2 = cvtMemNewNode();
  MemNode *const pt3 = cvtMemNewNode();
  EXPECT_EQ(cvtMemDelNode(pt3), 0);
  EXPECT_EQ(gptMemRoot->nMinFreeNodeId, 3);
  EXPECT_EQ(cvtMemDelNode(pt1), 0);
  EXPECT_EQ(gptMemRoot->nMinFreeNodeId, 1);
  EXPECT_EQ(cvtMemNewNode(), pt1);
  EXPECT_EQ(gptMemRoot->nMinFreeNodeId, -1);
  EXPECT_EQ(cvtMemNewNode()->nId, 4);
  // With a node behind it, the free one is found by the next scan.
  cvtMemDelNode(pt1);
  EXPECT_EQ(cvtMemNewNode(), pt1);
  EXPECT_EQ(gptMemRoot->nMinFreeNodeId, 3);
  EXPECT_EQ(gptMemRoot->ptFreeNode, pt3);
  EXPECT_EQ(cvtMemNewNode(), pt3);
  EXPECT_EQ(pt2->cUsed, '1');
}

TEST_F(MessageNode, AFreedLastNodeIsCachedWhenNoneIs) {
  cvtMemNewNode();
  MemNode *const pt2 = cvtMemNewNode();
  cvtMemDelNode(pt2);
  EXPECT_EQ(cvtMemNewNode(), pt2);
}

TEST_F(MessageNode, TheLowestFreedNodeIsCached) {
  std::vector<MemNode *> nodes;
  for (int i = 0; i < 5; ++i) nodes.push_back(cvtMemNewNode());
  cvtMemDelNode(nodes[2]);
  cvtMemDelNode(nodes[3]);
  EXPECT_EQ(gptMemRoot->ptFreeNode, nodes[2]);
  cvtMemDelNode(nodes[1]);
  EXPECT_EQ(gptMemRoot->ptFreeNode, nodes[1]);
  EXPECT_EQ(gptMemRoot->nMinFreeNodeId, 2);
  for (int i = 1; i <= 3; ++i) EXPECT_EQ(cvtMemNewNode(), nodes[static_cast<size_t>(i)]);
  EXPECT_EQ(cvtMemNewNode()->nId, 6);
}

TEST_F(MessageNode, FreeingTwiceIsHarmless) {
  MemNode *const pt1 = cvtMemNewNode();
  EXPECT_EQ(cvtMemDelNode(pt1), 0);
  EXPECT_EQ(cvtMemDelNode(pt1), 0);
  EXPECT_EQ(cvtMemNewNode(), pt1);
  EXPECT_EQ(cvtMemNewNode()->nId, 2);
}

TEST_F(MessageNode, FreeingNullIsAnErrorAndLogged) {
  EXPECT_EQ(cvtMemDelNode(nullptr), -1);
  expectError("SetNodeNotUse", "[ptNode] is NULL");
}

TEST_F(MessageNode, AllocatingFromNullIsAnErrorAndLogged) {
  EXPECT_EQ(cvtMalloc(10, nullptr), nullptr);
  expectError("cvtMalloc", "[ptNode] is NULL");
}

TEST_F(MessageNode, AllocatingNothingFromNullIsLoggedToo) {
  EXPECT_EQ(cvtMalloc(0, nullptr), nullptr);
  expectError("cvtMalloc", "[ptNode] is NULL");
}

TEST_F(MessageNode, NoBytesAreNullWithoutALogLine) {
  MemNode *const ptNode = cvtMemNewNode();
  EXPECT_EQ(cvtMalloc(0, ptNode), nullptr);
  EXPECT_EQ(cvtMalloc(-1, ptNode), nullptr);
  EXPECT_EQ(cvtMalloc(INT_MIN, ptNode), nullptr);
  EXPECT_EQ(sizes(ptNode->ptHeadBlock), (std::vector<Size>{{1024, 1024}}));
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(MessageNode, BytesArePacked) {
  NEEDS_PACKED_POOL();
  MemNode *const ptNode = cvtMemNewNode();
  const char *const ps = message(3, ptNode);
  EXPECT_EQ(ps, ptNode->ptHeadBlock->psBuf);
  EXPECT_EQ(message(8, ptNode), ps + 3);
  EXPECT_EQ(message(1, ptNode), ps + 11);
  EXPECT_EQ(ptNode->ptHeadBlock->nLeft, 1012);
}

TEST_F(MessageNode, OneByteLessThanTheBlockFits) {
  NEEDS_PACKED_POOL();
  MemNode *const ptNode = cvtMemNewNode();
  EXPECT_EQ(message(1023, ptNode), ptNode->ptHeadBlock->psBuf);
  EXPECT_EQ(sizes(ptNode->ptHeadBlock), (std::vector<Size>{{1024, 1}}));
  EXPECT_NE(cvtMalloc(2, ptNode), nullptr);
  EXPECT_EQ(sizes(ptNode->ptHeadBlock), (std::vector<Size>{{1024, 1}, {1024, 1022}}));
  EXPECT_EQ(ptNode->ptNowBlock, ptNode->ptHeadBlock->ptNext);
}

TEST_F(MessageNode, ABlockIsNeverFilledToItsLastByte) {
  NEEDS_PACKED_POOL();
  MemNode *const ptNode = cvtMemNewNode();
  cvtMalloc(1023, ptNode);
  cvtMalloc(1, ptNode);
  EXPECT_EQ(sizes(ptNode->ptHeadBlock), (std::vector<Size>{{1024, 1}, {1024, 1023}}));
}

TEST_F(MessageNode, AWholeBlockTakesTheNextLargerOne) {
  MemNode *const ptNode = cvtMemNewNode();
  cvtMalloc(1024, ptNode);
  EXPECT_EQ(sizes(ptNode->ptHeadBlock), (std::vector<Size>{{1024, 1024}, {2048, 1024}}));
  EXPECT_EQ(ptNode->ptNowBlock, ptNode->ptHeadBlock->ptNext);
}

TEST_F(MessageNode, ABlockIsTheNextMultipleStrictlyAboveTheSize) {
  MemNode *const ptNode = cvtMemNewNode();
  cvtMalloc(1 << 20, ptNode);
  EXPECT_EQ(ptNode->ptNowBlock->nMaxSize, (1 << 20) + 1024);
  cvtMalloc((1 << 20) + 1025, ptNode);
  EXPECT_EQ(ptNode->ptNowBlock->nMaxSize, (1 << 20) + 2048);
}

TEST_F(MessageNode, TheRestOfABlockLeftBehindIsNotUsed) {
  MemNode *const ptNode = cvtMemNewNode();
  cvtMalloc(16, ptNode);
  cvtMalloc(1008, ptNode);
  EXPECT_EQ(sizes(ptNode->ptHeadBlock), (std::vector<Size>{{1024, 1008}, {1024, 16}}));
  cvtMalloc(16, ptNode);
  EXPECT_EQ(sizes(ptNode->ptHeadBlock), (std::vector<Size>{{1024, 1008}, {1024, 16}, {1024, 1008}}));
}

TEST_F(MessageNode, LaterBlocksKeepStaleCountersUntilTheWalkReachesThem) {
  NEEDS_PACKED_POOL();
  MemNode *const ptNode = cvtMemNewNode();
  cvtMalloc(1000, ptNode);
  cvtMalloc(1100, ptNode);
  cvtMemDelNode(ptNode);
  EXPECT_EQ(sizes(ptNode->ptHeadBlock), (std::vector<Size>{{1024, 1024}, {2048, 948}}));
  EXPECT_EQ(ptNode->ptNowBlock, ptNode->ptHeadBlock);
  ASSERT_EQ(cvtMemNewNode(), ptNode);
  EXPECT_EQ(message(2047, ptNode), ptNode->ptHeadBlock->ptNext->psBuf);
  EXPECT_EQ(sizes(ptNode->ptHeadBlock), (std::vector<Size>{{1024, 1024}, {2048, 1}}));
}

TEST_F(MessageNode, ASuccessorOfExactlyTheSizeIsTooSmall) {
  MemNode *const ptNode = cvtMemNewNode();
  cvtMalloc(1040, ptNode);
  cvtMemDelNode(ptNode);
  cvtMemNewNode();
  const char *const psOld = ptNode->ptHeadBlock->ptNext->psBuf;
  cvtMalloc(2048, ptNode);
  // The new block goes directly behind the current one, in front of the old successor.
  EXPECT_EQ(sizes(ptNode->ptHeadBlock), (std::vector<Size>{{1024, 1024}, {3072, 1024}, {2048, 1008}}));
  EXPECT_EQ(ptNode->ptNowBlock, ptNode->ptHeadBlock->ptNext);
  EXPECT_EQ(ptNode->ptNowBlock->ptNext->psBuf, psOld);
}

TEST_F(MessageNode, MemoryReadsAsZeroOnAReusedNode) {
  for (int nRound = 0; nRound < 3; ++nRound) {
    MemNode *const ptNode = cvtMemNewNode();
    ASSERT_EQ(ptNode->nId, 1);
    for (const int nSize : {1, 7, 500, 1023, 1024, 3000, 64}) {
      char *const ps = message(nSize, ptNode);
      EXPECT_TRUE(isZero(ps, nSize)) << nSize;
      std::memset(ps, 0xa5, static_cast<size_t>(nSize));
    }
    cvtMemDelNode(ptNode);
  }
}

TEST_F(MessageNode, PrintShowsCapacityAndUse) {
  NEEDS_PACKED_POOL();
  MemNode *const ptNode = cvtMemNewNode();
  cvtMalloc(1000, ptNode);
  cvtMalloc(1100, ptNode);
  EXPECT_EQ(sizes(ptNode->ptHeadBlock), (std::vector<Size>{{1024, 24}, {2048, 948}}));
  EXPECT_EQ(ptNode->ptNowBlock, ptNode->ptHeadBlock->ptNext);
  EXPECT_EQ(cvtMemPrintNode(ptNode), 0);
  EXPECT_EQ(test::logTexts(5), std::vector<std::string>{"Node[1]:[3072] -- Used[2100]"});
}

TEST_F(MessageNode, PrintCountsBlocksBehindTheCurrentOneAsCapacityOnly) {
  MemNode *const ptNode = cvtMemNewNode();
  cvtMalloc(1008, ptNode);
  cvtMalloc(1104, ptNode);
  cvtMemDelNode(ptNode);
  cvtMalloc(16, cvtMemNewNode());
  EXPECT_EQ(cvtMemPrintNode(ptNode), 0);
  EXPECT_EQ(test::logTexts(5), std::vector<std::string>{"Node[1]:[3072] -- Used[16]"});
}

TEST_F(MessageNode, PrintOfNullIsAnErrorNotACrash) {
  EXPECT_EQ(cvtMemPrintNode(nullptr), -1);
  expectError("cvtMemPrintNode", "[ptNode] is NULL");
}

// --- The global node ---------------------------------------------------------------------------------------

TEST_F(GlobalNode, TheFirstUseMakesIt) {
  EXPECT_EQ(cvtMemMalloc(0), nullptr);
  ASSERT_NE(gptGlobalNode, nullptr);
  EXPECT_EQ(gptGlobalNode->nId, 0);
  EXPECT_EQ(gptGlobalNode->cUsed, '0');
  EXPECT_EQ(gptGlobalNode->ptNowBlock, nullptr);
  EXPECT_EQ(sizes(gptGlobalNode->ptHeadBlock), (std::vector<Size>{{1024, 1024}}));
}

TEST_F(GlobalNode, NoBytesAreNullWithoutALogLine) {
  EXPECT_EQ(cvtMemMalloc(0), nullptr);
  EXPECT_EQ(cvtMemMalloc(-1), nullptr);
  EXPECT_EQ(cvtMemMalloc(INT_MIN), nullptr);
  EXPECT_EQ(sizes(gptGlobalNode->ptHeadBlock), (std::vector<Size>{{1024, 1024}}));
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(GlobalNode, BytesArePacked) {
  NEEDS_PACKED_POOL();
  const char *const ps = global(3);
  EXPECT_EQ(global(8), ps + 3);
  EXPECT_EQ(global(1), ps + 11);
}

TEST_F(GlobalNode, ABlockMayBeFilledToItsLastByte) {
  const char *const ps = global(1024);
  EXPECT_EQ(gptGlobalNode->ptHeadBlock, nullptr);
  EXPECT_EQ(sizes(gptGlobalNode->ptNowBlock), (std::vector<Size>{{1024, 1024}}));
  EXPECT_EQ(cvtMemReset(), 0);
  EXPECT_EQ(sizes(gptGlobalNode->ptHeadBlock), (std::vector<Size>{{1024, 1024}}));
  EXPECT_EQ(gptGlobalNode->ptNowBlock, nullptr);
  EXPECT_EQ(global(1), ps);
}

TEST_F(GlobalNode, ANewBlockHasTheSizeAskedForOrOneKilobyte) {
  global(1024);
  global(4000);
  global(1008);
  EXPECT_EQ(sizes(gptGlobalNode->ptNowBlock), (std::vector<Size>{{1024, 1024}, {4000, 4000}}));
  EXPECT_EQ(sizes(gptGlobalNode->ptHeadBlock), (std::vector<Size>{{1024, 16}}));
}

TEST_F(GlobalNode, TheSmallestRoomThatFitsIsTaken) {
  global(1008);                        // 16 left
  const char *const ps = global(768);  // 256 left in another block
  global(512);                         // 512 left in a third one
  EXPECT_EQ(sizes(gptGlobalNode->ptHeadBlock), (std::vector<Size>{{1024, 16}, {1024, 256}, {1024, 512}}));
  EXPECT_EQ(global(128), ps + 768);
  EXPECT_EQ(sizes(gptGlobalNode->ptHeadBlock), (std::vector<Size>{{1024, 16}, {1024, 128}, {1024, 512}}));
}

TEST_F(GlobalNode, AValueEqualToTheFirstGoesInFrontAndOneEqualToALaterBehind) {
  const char *const psA = global(1008);  // 16 left
  const char *const psB = global(1008);  // 16 left, equal to the first: in front
  EXPECT_EQ(buffers(gptGlobalNode->ptHeadBlock), (std::vector<const char *>{psB, psA}));
  const char *const psC = global(512);  // 512 left
  const char *const psD = global(896);  // 128 left
  const char *const psE = global(896);  // 128 left, equal to a later one: behind it
  EXPECT_EQ(buffers(gptGlobalNode->ptHeadBlock), (std::vector<const char *>{psB, psA, psD, psE, psC}));
  EXPECT_EQ(global(496), psC + 512);  // falls to 16, equal to the first: moves to the front
  EXPECT_EQ(buffers(gptGlobalNode->ptHeadBlock), (std::vector<const char *>{psC, psB, psA, psD, psE}));
}

TEST_F(GlobalNode, TheSameAsymmetryHoldsAmongExhaustedBlocks) {
  const char *const psA = global(1024);
  const char *const psX = global(2048);
  const char *const psY = global(2048);
  const char *const psB = global(1024);
  EXPECT_EQ(buffers(gptGlobalNode->ptNowBlock), (std::vector<const char *>{psB, psA, psX, psY}));
}

TEST_F(GlobalNode, ABlockStaysWhereItIsWhileTheOrderHolds) {
  const char *const psA = global(1008);  // 16 left
  const char *const psB = global(512);   // 512 left
  EXPECT_EQ(global(496), psB + 512);     // falls to 16: not below the one before it, so it stays behind
  EXPECT_EQ(buffers(gptGlobalNode->ptHeadBlock), (std::vector<const char *>{psA, psB}));
  EXPECT_EQ(global(16), psA + 1008);  // the first block is exhausted: the next one is first
  EXPECT_EQ(buffers(gptGlobalNode->ptHeadBlock), (std::vector<const char *>{psB}));
  EXPECT_EQ(buffers(gptGlobalNode->ptNowBlock), (std::vector<const char *>{psA}));
}

TEST_F(GlobalNode, ALaterBlockThatIsExhaustedLeavesTheRoomList) {
  const char *const psA = global(1008);
  const char *const psB = global(512);
  EXPECT_EQ(global(512), psB + 512);
  EXPECT_EQ(buffers(gptGlobalNode->ptHeadBlock), (std::vector<const char *>{psA}));
  EXPECT_EQ(buffers(gptGlobalNode->ptNowBlock), (std::vector<const char *>{psB}));
}

TEST_F(GlobalNode, AResetOrdersAllBlocksByCapacity) {
  global(4000);
  global(1008);
  global(2000);
  global(512);
  EXPECT_EQ(cvtMemReset(), 0);
  EXPECT_EQ(sizes(gptGlobalNode->ptHeadBlock),
            (std::vector<Size>{{1024, 1024}, {1024, 1024}, {2000, 2000}, {4000, 4000}}));
  EXPECT_EQ(gptGlobalNode->ptNowBlock, nullptr);
}

TEST_F(GlobalNode, AResetKeepsTheBlocksForTheNextGeneration) {
  const auto fill = [] {
    for (int i = 1; i < 400; ++i) global(i);
  };
  fill();
  cvtMemReset();
  auto before = buffers(gptGlobalNode->ptHeadBlock);
  for (int i = 0; i < 3; ++i) {
    fill();
    cvtMemReset();
  }
  auto after = buffers(gptGlobalNode->ptHeadBlock);
  std::sort(before.begin(), before.end());
  std::sort(after.begin(), after.end());
  EXPECT_EQ(after, before);
}

TEST_F(GlobalNode, AResetWithoutAGlobalNodeDoesNothing) {
  EXPECT_EQ(cvtMemReset(), 0);
  EXPECT_EQ(gptGlobalNode, nullptr);
}

TEST_F(GlobalNode, MemoryReadsAsZeroAfterAReset) {
  for (int nRound = 0; nRound < 3; ++nRound) {
    for (const int nSize : {1, 7, 500, 1023, 1024, 3000, 64}) {
      char *const ps = global(nSize);
      EXPECT_TRUE(isZero(ps, nSize)) << nSize;
      std::memset(ps, 0xa5, static_cast<size_t>(nSize));
    }
    cvtMemReset();
  }
}

TEST_F(GlobalNode, MessageNodesAreUntouchedByAReset) {
  MemNode *const ptNode = cvtMemNewNode();
  char *const ps = message(5, ptNode);
  std::memcpy(ps, "kept", 5);
  global(5);
  cvtMemReset();
  global(5);
  EXPECT_STREQ(ps, "kept");
}

// A list of a loop has room for all repetitions that may be, and mostly holds few.
TEST_F(GlobalNode, ALargePieceTakesTheMachinesMemoryAsItIsWritten) {
  if (test::isWatched()) GTEST_SKIP() << "valgrind's allocator writes what it clears";
  constexpr int kSize = 256 << 20;
  const long before = test::resident();
  auto *const ps = static_cast<char *>(cvtMemMalloc(kSize));
  ASSERT_NE(ps, nullptr);
  EXPECT_LT(test::resident() - before, kSize / 2);
  EXPECT_EQ(ps[kSize - 1], 0);
}

// --- Release -----------------------------------------------------------------------------------------------

TEST_F(CleanUp, TheGlobalsKeepTheirValues) {
  cvtMemNewNode();
  cvtMemMalloc(1);
  const auto nRoot = reinterpret_cast<uintptr_t>(gptMemRoot);
  const auto nNode = reinterpret_cast<uintptr_t>(gptGlobalNode);
  EXPECT_EQ(cvtMemCleanUp(), 0);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(gptMemRoot), nRoot);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(gptGlobalNode), nNode);
  EXPECT_EQ(cvtMemCleanUp(), 0);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(gptMemRoot), nRoot);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(gptGlobalNode), nNode);
}

TEST_F(CleanUp, WithNothingToReleaseItDoesNothing) {
  EXPECT_EQ(cvtMemCleanUp(), 0);
  EXPECT_EQ(cvtMemCleanUp(), 0);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(CleanUp, TheNextMessageNodeStartsAfresh) {
  for (int i = 0; i < 3; ++i) cvtMemNewNode();
  cvtMemCleanUp();
  MemNode *const ptNode = cvtMemNewNode();
  EXPECT_EQ(ptNode->nId, 1);
  EXPECT_EQ(ptNode->ptNext, nullptr);
  EXPECT_EQ(gptMemRoot->ptMemNodeList, ptNode);
}

TEST_F(CleanUp, TheNextGlobalAllocationStartsAfresh) {
  cvtMemMalloc(100);
  cvtMemMalloc(5000);
  cvtMemCleanUp();
  EXPECT_TRUE(isZero(global(16), 16));
  EXPECT_EQ(sizes(gptGlobalNode->ptHeadBlock), (std::vector<Size>{{1024, 1008}}));
  EXPECT_EQ(gptGlobalNode->ptNowBlock, nullptr);
}

TEST_F(CleanUp, AResetAfterItFindsNoGlobalNode) {
  cvtMemMalloc(100);
  cvtMemCleanUp();
  EXPECT_EQ(cvtMemReset(), 0);
  EXPECT_NE(cvtMemMalloc(100), nullptr);
}

TEST_F(CleanUp, UseAndReleaseMayAlternate) {
  for (int i = 0; i < 5; ++i) {
    MemNode *const ptNode = cvtMemNewNode();
    EXPECT_EQ(ptNode->nId, 1);
    cvtMalloc(3000, ptNode);
    cvtMemMalloc(1024);
    cvtMemMalloc(3000);
    if (i % 2 == 0) cvtMemReset();
    EXPECT_EQ(cvtMemCleanUp(), 0);
  }
}

TEST_F(CleanUp, ExhaustedBlocksAreNotFreed) {
  char *const ps1 = global(2000);
  char *const ps2 = global(3008);
  std::strcpy(ps1, "one");
  std::strcpy(ps2, "two");
  cvtMemCleanUp();
  cvtMemMalloc(1984);
  cvtMemCleanUp();
  EXPECT_STREQ(ps1, "one");
  EXPECT_STREQ(ps2, "two");
}

TEST_F(CleanUp, ExhaustedBlocksServeTheNextGlobalNode) {
  char *const ps1 = global(2000);
  char *const ps2 = global(3008);
  char *const ps3 = global(2000);
  char *const ps4 = global(1024);
  std::strcpy(ps1, "one");
  cvtMemCleanUp();
  const std::set<char *> two = {global(2000), global(2000)};
  EXPECT_EQ(two, (std::set<char *>{ps1, ps3}));
  EXPECT_TRUE(isZero(ps1, 2000));
  EXPECT_EQ(global(3008), ps2);
  EXPECT_EQ(global(1024), ps4);  // the node's own first block
  EXPECT_EQ(sizes(gptGlobalNode->ptNowBlock),
            (std::vector<Size>{{1024, 1024}, {2000, 2000}, {2000, 2000}, {3008, 3008}}));
}

// A recursive release of these chains would overrun this stack many times.
TEST_F(CleanUp, LongChainsAreReleasedOnASmallStack) {
  MemNode *const ptNode = cvtMemNewNode();
  for (int i = 0; i < 40000; ++i) {
    cvtMalloc(1000, ptNode);
    cvtMemMalloc(1000);
    cvtMemNewNode();
  }
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(
                &thread, &attributes,
                [](void *) -> void * {
                  cvtMemCleanUp();
                  return nullptr;
                },
                nullptr),
            0);
  EXPECT_EQ(pthread_join(thread, nullptr), 0);
  pthread_attr_destroy(&attributes);
}

#if !TEST_SANITIZED
// Asks for more than the process may have, and shows on standard error what was logged when it aborts.
void exhaustTheHeap(void *(*allocate)(int)) {
  const rlimit limit{256UL << 20, 256UL << 20};
  setrlimit(RLIMIT_AS, &limit);
  std::signal(SIGABRT, [](int) {
    for (const test::LogLine &line : test::logLines()) {
      std::fprintf(stderr, "%d %s: %s\n", line.nLevel, line.sModule.c_str(), line.sText.c_str());
    }
    _exit(99);
  });
  allocate(1 << 30);
  allocate(INT_MAX);
}

TEST_F(MemoryPool, AnExhaustedHeapIsLoggedAndAborts) {
  const char *const psExpected =
      "1 \\$cvt2: memory pool: 1073741824 bytes wanted, the heap has none left; raise";
  EXPECT_EXIT(exhaustTheHeap(cvtMemMalloc), testing::ExitedWithCode(99), psExpected);
  EXPECT_EXIT(exhaustTheHeap([](int nNum) { return cvtMalloc(nNum, cvtMemNewNode()); }),
              testing::ExitedWithCode(99), "1 \\$cvt2: memory pool: 1073742848 bytes wanted");
}

TEST_F(MemoryPool, TheLargestSizeDoesNotOverflow) {
  const auto largest = [](int) { return cvtMalloc(INT_MAX, cvtMemNewNode()); };
  EXPECT_EXIT(exhaustTheHeap(largest), testing::ExitedWithCode(99), "2147483647 bytes wanted");
}
#endif

}  // namespace

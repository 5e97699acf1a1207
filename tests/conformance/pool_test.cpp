// The memory pool: what it is before its first use, what a release leaves, what a printed node counts.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "cvt_memory.h"
#include "heap_use.h"
#include "log_capture.h"
#include "pool_use.h"

namespace {

using Texts = std::vector<std::string>;

class Pool : public testing::Test {
 protected:
  void TearDown() override { cvtMemCleanUp(); }
};

using MessageNode = Pool;
using GlobalNode = Pool;

int blocksOf(const MemNode *ptNode) {
  int nBlocks = 0;
  for (const MemBlock *pt = ptNode->ptHeadBlock; pt != nullptr; pt = pt->ptNext) ++nBlocks;
  return nBlocks;
}

std::string printed(MemNode *ptNode) {
  test::clearLog();
  EXPECT_EQ(cvtMemPrintNode(ptNode), 0);
  EXPECT_EQ(test::logTexts(0).size(), 1U);
  return test::logTexts(5).at(0);
}

// --- Before the first use ---------------------------------------------------------------------------------

TEST(PoolAtLoad, IsNotThere) {
  EXPECT_EQ(gptMemRoot, nullptr);
  EXPECT_EQ(gptGlobalNode, nullptr);
}

TEST_F(Pool, EachOfItsTwoUsesMakesItsOwnPart) {
  cvtMemMalloc(1);
  EXPECT_EQ(gptMemRoot, nullptr);
  const MemNode *const ptGlobal = gptGlobalNode;
  cvtMemNewNode();
  EXPECT_NE(gptMemRoot, nullptr);
  EXPECT_EQ(gptGlobalNode, ptGlobal);
  EXPECT_EQ(gptMemRoot->ptMemNodeList->nId, 1) << "the global node is not among the messages' nodes";
}

TEST_F(Pool, ARefusedCallMakesNothing) {
  EXPECT_EQ(cvtMemDelNode(nullptr), -1);
  EXPECT_EQ(cvtMalloc(1, nullptr), nullptr);
  EXPECT_EQ(cvtMemReset(), 0);
  EXPECT_EQ(cvtMemCleanUp(), 0);
  EXPECT_EQ(gptMemRoot, nullptr);
  EXPECT_EQ(gptGlobalNode, nullptr);
}

// --- Message nodes ----------------------------------------------------------------------------------------

TEST_F(MessageNode, GivingItBackFreesAndClearsNothing) {
  MemNode *const ptNode = cvtMemNewNode();
  std::strcpy(static_cast<char *>(cvtMalloc(5, ptNode)), "kept");
  cvtMalloc(3000, ptNode);
  const char *const psBuf = ptNode->ptHeadBlock->psBuf;
  EXPECT_EQ(cvtMemDelNode(ptNode), 0);
  EXPECT_EQ(blocksOf(ptNode), 2);
  EXPECT_EQ(ptNode->ptHeadBlock->psBuf, psBuf);
  EXPECT_STREQ(psBuf, "kept");
}

TEST_F(MessageNode, IsStillThereWhenAnotherIsGivenBack) {
  MemNode *const pt1 = cvtMemNewNode();
  MemNode *const pt2 = cvtMemNewNode();
  auto *const ps = static_cast<char *>(cvtMalloc(5, pt1));
  std::strcpy(ps, "kept");
  cvtMemDelNode(pt2);
  EXPECT_EQ(cvtMemNewNode(), pt2);
  std::memset(cvtMalloc(1000, pt2), 'x', 1000);
  EXPECT_STREQ(ps, "kept");
}

TEST_F(MessageNode, OfALongMessageKeepsAllItsBlocksForTheNextOne) {
  MemNode *const ptNode = cvtMemNewNode();
  for (int nMessage = 0; nMessage < 4; ++nMessage) {
    for (int i = 0; i < 100; ++i) cvtMalloc(1000, ptNode);
    EXPECT_EQ(blocksOf(ptNode), 100) << "message " << nMessage;
    cvtMemDelNode(ptNode);
    EXPECT_EQ(cvtMemNewNode(), ptNode);
  }
}

// The walk gives up at the first block behind that is too small: it does not look further.
TEST_F(MessageNode, LooksNoFurtherThanOneBlockAhead) {
  MemNode *const ptNode = cvtMemNewNode();
  cvtMalloc(1008, ptNode);
  cvtMalloc(1008, ptNode);
  cvtMalloc(4000, ptNode);
  cvtMemDelNode(ptNode);
  cvtMemNewNode();
  EXPECT_EQ(blocksOf(ptNode), 3);
  cvtMalloc(4000, ptNode);
  EXPECT_EQ(blocksOf(ptNode), 4);
  EXPECT_EQ(ptNode->ptNowBlock, ptNode->ptHeadBlock->ptNext);
  EXPECT_EQ(ptNode->ptNowBlock->nMaxSize, 4096);
}

TEST_F(MessageNode, PrintsItsNumber) {
  cvtMemNewNode();
  EXPECT_EQ(printed(cvtMemNewNode()), "Node[2]:[1024] -- Used[0]");
  const test::LogLine &line = test::logLines().at(0);
  EXPECT_EQ(line.sModule, "$cvt2");
  EXPECT_EQ(line.sFile, "cvt_memory.cpp");
  EXPECT_EQ(line.sFunction, "cvtMemPrintNode");
}

// --- The global node --------------------------------------------------------------------------------------

TEST_F(GlobalNode, AResetFreesAndClearsNothing) {
  std::strcpy(static_cast<char *>(cvtMemMalloc(5)), "kept");
  const char *const psBuf = gptGlobalNode->ptHeadBlock->psBuf;
  EXPECT_EQ(cvtMemReset(), 0);
  EXPECT_EQ(gptGlobalNode->ptHeadBlock->psBuf, psBuf);
  EXPECT_STREQ(psBuf, "kept");
}

TEST_F(GlobalNode, AResetTwiceIsAsOne) {
  cvtMemMalloc(2000);
  cvtMemMalloc(100);
  EXPECT_EQ(cvtMemReset(), 0);
  const MemBlock *const ptHead = gptGlobalNode->ptHeadBlock;
  EXPECT_EQ(cvtMemReset(), 0);
  EXPECT_EQ(gptGlobalNode->ptHeadBlock, ptHead);
  EXPECT_EQ(ptHead->nMaxSize, 1024);
  EXPECT_EQ(ptHead->ptNext->nMaxSize, 2000);
  EXPECT_EQ(ptHead->ptNext->ptNext, nullptr);
}

TEST_F(GlobalNode, PrintsTheBlocksThatHaveRoom) {
  NEEDS_PACKED_POOL();
  cvtMemMalloc(1000);
  cvtMemMalloc(900);
  EXPECT_EQ(printed(gptGlobalNode), "Node[0]:[2048] -- Used[1900]");
  cvtMemMalloc(2000);  // exhausted at once: in the other list
  EXPECT_EQ(printed(gptGlobalNode), "Node[0]:[2048] -- Used[1900]");
}

// Blocks that a clean-up has left go to the next start, each of them to one taker only.
TEST_F(GlobalNode, WhatACleanUpHasLeftIsHandedOutOnceEach) {
  std::mt19937 random(1);
  for (int nRound = 0; nRound < 200; ++nRound) {
    std::vector<std::string> expected;
    std::vector<char *> pieces;
    for (auto nPieces = random() % 12; nPieces > 0; --nPieces) {
      const size_t nSize = 2000 + random() % 3 * 1008;
      auto *const ps = static_cast<char *>(cvtMemMalloc(static_cast<int>(nSize)));
      ASSERT_EQ(std::string(ps, nSize), std::string(nSize, '\0')) << nRound;
      expected.emplace_back(nSize, static_cast<char>('a' + pieces.size()));
      std::memset(ps, expected.back()[0], nSize);
      pieces.push_back(ps);
    }
    for (size_t i = 0; i < pieces.size(); ++i) {
      ASSERT_EQ(std::string(pieces[i], expected[i].size()), expected[i]) << nRound;
    }
    if (random() % 3 != 0) cvtMemCleanUp();
  }
}

TEST_F(MessageNode, ACleanUpGivesAllOfTheHeapBack) {
  REQUIRE_HEAP_USE();
  const auto useOften = [] {
    for (int i = 0; i < 100; ++i) {
      for (int nNode = 0; nNode < 20; ++nNode) cvtMalloc(5000, cvtMemNewNode());
      cvtMemCleanUp();
    }
  };
  useOften();
  const long before = test::heapInUse();
  useOften();
  EXPECT_LT(test::heapInUse(), before + 20000);
}

TEST_F(GlobalNode, NeverLogs) {
  test::clearLog();
  for (const int nSize : {0, -1, INT_MIN, 1, 1024, 100000}) cvtMemMalloc(nSize);
  cvtMemReset();
  cvtMemCleanUp();
  EXPECT_TRUE(test::logLines().empty());
}

}  // namespace

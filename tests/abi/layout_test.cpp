// What layout.h says holds in C++, too; and records lie where the pool puts them.
#include "layout.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

namespace {

// The sanitizer for alignment has its say here, in builds that leave it on.
TEST(Layout, RecordsAreReadAndWrittenAtOddAddresses) {
  char memory[1 + sizeof(Plug)] = {};
  auto *const ptPlug = reinterpret_cast<Plug *>(memory + 1);
  char name[] = "name";
  ptPlug->psName = name;
  ptPlug->ptNext = ptPlug;
  EXPECT_STREQ(ptPlug->psName, "name");
  EXPECT_EQ(ptPlug->ptNext, ptPlug);
  char *psStored = nullptr;
  std::memcpy(&psStored, memory + 1, sizeof psStored);
  EXPECT_EQ(psStored, name);
}

TEST(Layout, EntriesOfAnIndexAreReadAtOddAddresses) {
  Message message = {};
  Message *const entries[] = {&message, nullptr};
  char memory[1 + sizeof entries] = {};
  std::memcpy(memory + 1, entries, sizeof entries);
  auto **const pptIdx = reinterpret_cast<Message **>(memory + 1);
  EXPECT_EQ(cvtIdxNode(pptIdx, 0), &message);
  EXPECT_EQ(cvtIdxNode(pptIdx, 1), nullptr);
}

TEST(Layout, TheStartOfANodeIsAlignedForAHandle) {
  for (int i = 0; i < 3; ++i) {
    MemNode *const ptNode = cvtMemNewNode();
    void *const p = cvtMalloc(static_cast<int>(sizeof(InnerMessage)), ptNode);
    EXPECT_EQ(reinterpret_cast<std::size_t>(p) % alignof(InnerMessage), 0U);
  }
  cvtMemCleanUp();
}

}  // namespace

#include "kit/path.h"

#include <gtest/gtest.h>

#include "kit/fault.h"
#include "kit/output.h"

using namespace cvt::kit;

TEST(KitPath, NamesGroupsLoopsAndFields) {
  Path path;
  EXPECT_EQ(path.text(), "");
  path.field("Id");
  EXPECT_EQ(path.text(), "Id");
  path.enter("Batches");
  EXPECT_EQ(path.text(), "Batches");
  path.repetition(2);
  path.enter("Entries");
  path.repetition(0);
  path.field("Amount");
  EXPECT_EQ(path.text(), "Batches[2].Entries[0].Amount");
}

TEST(KitPath, LeavingForgetsTheFieldToo) {
  Path path;
  path.enter("A");
  path.field("X");
  path.leave();
  EXPECT_EQ(path.text(), "");
  path.field("Y");
  EXPECT_EQ(path.text(), "Y");
}

TEST(KitPath, NextRepetitionReplacesTheIndexAndForgetsTheField) {
  Path path;
  path.enter("L");
  path.repetition(0);
  path.field("X");
  path.repetition(1);
  EXPECT_EQ(path.text(), "L[1]");
}

TEST(KitPath, TheInnermostRepetitionIsKnownInGroupsAndBehindInnerLoopsToo) {
  Path path;
  EXPECT_EQ(path.repetition(), -1);
  path.enter("L");
  EXPECT_EQ(path.repetition(), -1);
  path.repetition(2);
  path.field("X");
  EXPECT_EQ(path.repetition(), 2);
  path.enter("G");
  EXPECT_EQ(path.repetition(), 2);
  path.enter("K");
  path.repetition(0);
  EXPECT_EQ(path.repetition(), 0);
  path.repetition(-1);
  path.leave();
  EXPECT_EQ(path.repetition(), 2);
  path.leave();
  path.leave();
  EXPECT_EQ(path.repetition(), -1);
}

TEST(KitPath, DeeperThanItsRoomIsCountedButNotKept) {
  Path path;
  for (int i = 0; i < Path::kMaxDepth + 5; ++i) {
    path.enter("g");
    path.repetition(i);
  }
  const std::string deepest = path.text();
  EXPECT_EQ(deepest.substr(deepest.size() - 5), "g[63]");
  for (int i = 0; i < Path::kMaxDepth + 5; ++i) path.leave();
  EXPECT_EQ(path.text(), "");
}

TEST(KitFault, SaysExpectedFoundAndAdvice) {
  EXPECT_EQ(Fault(3, "digits", "\"1x\"", "Correct it").text(), "expected digits, found \"1x\". Correct it.");
  EXPECT_EQ(Fault(3, "digits", "the end").text(), "expected digits, found the end.");
  EXPECT_EQ(Fault(3, "a", "b").offset(), 3U);
}

TEST(KitFault, MisconfiguredSaysWhere) {
  EXPECT_EQ(Misconfigured("A.B", nullptr, "x", "y", "Do z").text(), "Node[A.B]: expected x, found y. Do z.");
  EXPECT_EQ(Misconfigured("", nullptr, "x", "y").text(), "expected x, found y.");
}

TEST(KitFault, BytesAreQuotedPrintableOrHexadecimal) {
  EXPECT_EQ(quoted("A b~", 4), "\"A b~\"");
  EXPECT_EQ(quoted(std::string("\0\x7F\xFF\n", 4)), "\"\\x00\\x7F\\xFF\\x0A\"");
  EXPECT_EQ(quoted(std::string(40, 'x')), "\"" + std::string(40, 'x') + "\"");
  EXPECT_EQ(quoted(std::string(41, 'x')), "\"" + std::string(40, 'x') + "\"...");
  EXPECT_EQ(quoted(""), "\"\"");
}

TEST(KitOutput, WritesUpToItsCapacityAndNotOneByteMore) {
  char buffer[6] = {'?', '?', '?', '?', '?', '!'};
  Output out(buffer, 1, 5);
  EXPECT_EQ(out.offset(), 1U);
  out.put("ab");
  out.put('c');
  out.fill('-', 1);
  EXPECT_EQ(out.room(), 0U);
  out.put("");
  out.fill('x', 0);
  try {
    out.put("d");
    FAIL();
  } catch (const Fault &fault) {
    EXPECT_EQ(fault.offset(), 5U);
    EXPECT_EQ(fault.text(),
              "expected room for 1 bytes, found 0 left in the buffer. Give a larger output buffer.");
  }
  EXPECT_EQ(std::string(buffer, 6), "?abc-!");
}

TEST(KitOutput, WhatWasWrittenCanBeTakenBack) {
  char buffer[4];
  Output out(buffer, 0, 4);
  out.put("abc");
  out.rewind(1);
  out.put("z");
  EXPECT_EQ(std::string(buffer, out.offset()), "az");
  *out.at(0) = 'y';
  EXPECT_EQ(buffer[0], 'y');
}

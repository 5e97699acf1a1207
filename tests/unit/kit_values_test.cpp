#include "kit/values.h"

#include <gtest/gtest.h>

#include <vector>

#include "kit/fault.h"
#include "log_capture.h"

using namespace cvt::kit;

namespace {

// The text of the fault that the action throws; "none" when it throws none.
template <class Action>
std::string fault(Action action) {
  try {
    action();
  } catch (const Fault &thrown) {
    EXPECT_EQ(thrown.offset(), Fault::kHere);
    return thrown.text();
  }
  return "none";
}

// A value list of its own.
struct Slots {
  explicit Slots(int slots) : values(static_cast<size_t>(slots)) {
    list.nNow = list.nMax = slots;
    list.ptValue = values.data();
  }
  std::vector<Value> values;
  ValueList list{};
};

struct Pool {
  Pool() { gnMaxValueNum = 8; }
  ~Pool() { cvtMemDelNode(node); }
  MemPort node = cvtMemNewNode();
};

}  // namespace

TEST(KitValues, ListIsCheckedAgainstItsLevel) {
  EXPECT_EQ(fault([] { List(nullptr, 1); }), "expected a value list, found none.");
  Slots slots(2);
  EXPECT_EQ(fault([&] { List(&slots.list, 2); }), "none");
  EXPECT_EQ(fault([&] { List(&slots.list, 1); }), "none") << "longer lists are fine";
  EXPECT_NE(fault([&] { List(&slots.list, 3); }).find("expected a value list of 3 slots, found one of 2"),
            std::string::npos);
  slots.list.nNow = 5;
  EXPECT_NE(fault([&] { List(&slots.list, 3); }).find("found one of 2"), std::string::npos)
      << "more slots in use than there are";
}

TEST(KitValues, NullWithLengthZeroIsTheEmptyValue) {
  Slots slots(1);
  const List list(&slots.list, 1);
  EXPECT_TRUE(list.empty(0));
  EXPECT_EQ(list.get(0), "");
}

TEST(KitValues, ValueIsReadWithItsLength) {
  Slots slots(1);
  List list(&slots.list, 1);
  list.put(0, "abc", 2);
  EXPECT_EQ(list.get(0), "ab");
  EXPECT_FALSE(list.empty(0));
}

TEST(KitValues, WhatIsNoValueIsRefused) {
  Slots slots(1);
  const List list(&slots.list, 1);
  slots.values[0].nLen = 3;
  EXPECT_EQ(fault([&] { list.get(0); }), "expected a value, found a length of 3 with no bytes.");
  slots.values[0].nLen = -7;
  EXPECT_EQ(fault([&] { list.get(0); }), "expected a value, found a length of -7 with no bytes.");
  slots.values[0].nLen = -1;
  EXPECT_EQ(fault([&] { list.get(0); }),
            "expected a value, found a loop. Give this field a value of its own.");
}

TEST(KitValues, LoopThatWasNotStartedIsEmpty) {
  Slots slots(1);
  const List list(&slots.list, 1);
  EXPECT_EQ(list.repetitions(0), 0);
}

TEST(KitValues, PlainValueInALoopSlotIsRefused) {
  Slots slots(1);
  List list(&slots.list, 1);
  list.put(0, "abc", 3);
  EXPECT_EQ(fault([&] { list.repetitions(0); }),
            "expected a loop, found a plain value of 3 bytes. Fill the loop by repetitions, not by a value.");
  EXPECT_NE(fault([&] { list.append(0, 1); }).find("expected a loop"), std::string::npos);
  slots.values[0].nLen = -1;
  slots.values[0].psValue = nullptr;
  EXPECT_EQ(fault([&] { list.repetitions(0); }), "expected a list of repetitions, found none.");
}

TEST(KitValues, RepetitionsAreAppendedAndFound) {
  const Pool pool;
  Slots slots(2);
  List list(&slots.list, 2);
  for (int i = 0; i < 3; ++i) {
    List repetition = list.append(1, 2);
    repetition.put(0, &"xyz"[i], 1);
  }
  EXPECT_EQ(list.repetitions(1), 3);
  EXPECT_FALSE(list.empty(1));
  EXPECT_EQ(list.repetition(1, 0, 2).get(0), "x");
  EXPECT_EQ(list.repetition(1, 2, 2).get(0), "z");
  EXPECT_NE(fault([&] { list.repetition(1, 3, 2); }).find("expected repetition 3"), std::string::npos);
  EXPECT_NE(fault([&] { list.repetition(1, -1, 2); }), "none");
  EXPECT_NE(fault([&] { list.repetition(0, 0, 2); }), "none") << "a loop that was not started";
}

TEST(KitValues, FullLoopIsAFaultOfOneLine) {
  const Pool pool;
  Slots slots(1);
  List list(&slots.list, 1);
  test::clearLog();
  std::string text;
  int count = 0;
  while ((text = fault([&] { list.append(0, 1); })) == "none") ++count;
  EXPECT_EQ(text, "expected at most " + std::to_string(count) +
                      " repetitions, found one more. Raise gnMaxLoop of the Message section.");
  EXPECT_TRUE(test::logTexts().empty()) << "the library itself was not asked for the one too many";
}

TEST(KitStore, PiecesAreZeroedSeparateAndTerminated) {
  const Pool pool;
  Store store(pool.node);
  std::vector<char *> pieces;
  for (size_t n = 0; n < 300; ++n) {
    char *piece = store.take(n);
    for (size_t i = 0; i <= n; ++i) ASSERT_EQ(piece[i], 0);
    std::memset(piece, 'a' + static_cast<int>(n % 26), n);
    pieces.push_back(piece);
  }
  for (size_t n = 0; n < 300; ++n) {
    EXPECT_EQ(std::string(pieces[n]), std::string(n, static_cast<char>('a' + static_cast<int>(n % 26))));
  }
}

TEST(KitStore, TrimmedRestIsHandedOutAgainZeroed) {
  const Pool pool;
  Store store(pool.node);
  char *first = store.take(20);
  std::memset(first, 'x', 20);
  store.trim(first, 20, 3);
  EXPECT_STREQ(first, "xxx");
  char *second = store.take(10);
  EXPECT_EQ(second, first + 4);
  for (int i = 0; i <= 10; ++i) EXPECT_EQ(second[i], 0);
}

TEST(KitStore, LargePiecesGetRoomOfTheirOwn) {
  const Pool pool;
  Store store(pool.node);
  store.take(10);
  char *large = store.take(1000000);
  std::memset(large, 'x', 1000000);
  EXPECT_EQ(large[1000000], 0);
}

TEST(KitStore, CopyOfNothingIsAnEmptyText) {
  const Pool pool;
  Store store(pool.node);
  EXPECT_STREQ(store.copy(nullptr, 0), "");
}

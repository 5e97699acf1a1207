// The steady path takes nothing from the heap.
#include "suite.h"

#include "heap_count.h"

namespace formats {

class Heap : public FormatTest {
 protected:
  void SetUp() override {
    REQUIRE_HEAP_COUNT();
    FormatTest::SetUp();
  }

  // A message in and out, past the message API, whose trace lines the test's own log would keep.
  bool pass(std::string &bytes, std::string &room) {
    const Handle handle = session.create("Order");
    const Msg *const definition = handle->ptMsgInfo;
    int read = 0;
    int written = 0;
    const int length = static_cast<int>(bytes.size());
    return definition->fParse(nullptr, &handle->tValueListInfo, handle->ptMsgInfo, bytes.data(), &read,
                              length) == 0 &&
           definition->fGen(nullptr, &handle->tValueListInfo, handle->ptMsgInfo, room.data(), &written,
                            static_cast<int>(room.size())) == 0;
  }
};

TEST_P(Heap, IsLeftAloneByASecondMessageLikeTheFirst) {
  std::string bytes = bytesOf(order(kMostLines, kMostNotes));
  std::string room(1 << 16, '\0');
  bool done = true;
  for (int i = 0; i < 3; ++i) done = pass(bytes, room) && done;
  const long taken = test::allocations([&] {
    for (int i = 0; i < 50; ++i) done = pass(bytes, room) && done;
  });
  EXPECT_TRUE(done) << told();
  EXPECT_EQ(taken, 0);
}

FOR_EVERY_FORMAT(Heap);

}  // namespace formats

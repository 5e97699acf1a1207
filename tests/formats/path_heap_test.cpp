// A message takes nothing from the heap on its whole way, from each format into each: read, converted, written, its
// fields asked for by name, and freed.
#include <cstdlib>

#include "heap_count.h"
#include "matrix.h"
#include "session.h"

namespace formats {

namespace {

using test::cs;

class Path {
 public:
  Path(const Format &from, const Format &to)
      : m_message(messageOf(from)), m_target(to.name()), m_bytes(golden(from)), m_room(1 << 16, '\0') {}

  // Whether the message got through.
  bool pass() {
    int error = 0;
    const Handle source(cvtInitMessasge(m_message.data(), cs("read"), m_bytes.data(),
                                        static_cast<int>(m_bytes.size()), &error));
    if (source == nullptr || !askByName(source.get())) return false;
    int length = static_cast<int>(m_room.size());
    const Handle made(cvtGenerateMessasge(source.get(), m_target.data(), m_room.data(), &length, &error));
    return made != nullptr && askByName(made.get());
  }

 private:
  static bool askByName(InnerMessage *message) {
    int error = 0;
    return cvtGetNameValue(message, cs("Id"), &error) != nullptr &&
           cvtSetNameValue(message, cs("Remark"), cs("another"), 7) == 0 &&
           cvtSetLoopTime(message, cs("Lines"), 0) == 0 &&
           cvtGetNameValue(message, cs("Lines.Sku"), &error) != nullptr;
  }

  std::string m_message;
  std::string m_target;
  std::string m_bytes;
  std::string m_room;
};

using PathHeap = Matrix;

}  // namespace

TEST_F(PathHeap, IsLeftAloneByASecondMessageLikeTheFirst) {
  REQUIRE_HEAP_COUNT();
  for (const Format *from : allFormats()) {
    for (const Format *to : allFormats()) {
      Path path(*from, *to);
      bool done = true;
      for (int i = 0; i < 3; ++i) done = path.pass() && done;
      EXPECT_TRUE(done) << testing::PrintToString(test::logTexts());
      const test::LogUnheard unheard;
      const long taken = test::allocations([&] {
        for (int i = 0; i < 50; ++i) done = path.pass() && done;
      });
      EXPECT_TRUE(done) << from->name() << " to " << to->name();
      EXPECT_EQ(taken, 0) << from->name() << " to " << to->name();
    }
  }
}

}  // namespace formats

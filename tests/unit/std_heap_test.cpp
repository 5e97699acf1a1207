// A call of the function library takes nothing from the heap once a message like it has been converted.
#include <cstdlib>

#include "heap_count.h"
#include "std_config.h"

namespace {

using namespace test::xml;
using test::cs;

class StdHeap : public test::StdTest {
 protected:
  // Converts one message into a new one, which is given back.
  int convertOne(Converter *ptConverter) const {
    const test::Level one = {cvtGetValueList(-1), cvtGetMsg(cs("Out"))->pptMessageIdx, cvtMemNewNode()};
    const int nRet = cvtConvert(from.ptList, one.ptList, ptConverter, one.ptNode);
    cvtFreeValue(one.ptList);
    cvtMemDelNode(one.ptNode);
    return nRet;
  }
};

TEST_F(StdHeap, IsLeftAlone) {
  if (!HEAP_COUNT_WORKS) GTEST_SKIP() << "the sanitizer's allocator stands before the counting one";
  load({copy(func("sqlQuote", {src("A")}), dst("X")), copy(func("sqlNumber", {src("B")}), dst("Y"))});
  from.set("A", "O'Brien").set("B", "-12.50");
  Converter *const ptConverter = cvtGetCvt(cs("C"));
  int nRet = convertOne(ptConverter) | convertOne(ptConverter);
  const long nAllocations = test::allocations([&] {
    for (int i = 0; i < 1000; ++i) nRet |= convertOne(ptConverter);
  });
  EXPECT_EQ(nRet, 0);
  EXPECT_EQ(nAllocations, 0);
}

}  // namespace

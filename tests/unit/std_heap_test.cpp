// A call of the function library takes nothing from the heap once a message like it has been converted.
#include <cstdlib>

#include "heap_count.h"
#include "std_config.h"

namespace {

using namespace test::xml;
using test::cs;

class StdHeap : public test::StdTest {
 protected:
  void SetUp() override {
    REQUIRE_HEAP_COUNT();
    StdTest::SetUp();
  }

  // Converts messages, and none but the first two may take memory.
  void expectNone() const {
    Converter *const ptConverter = cvtGetCvt(cs("C"));
    int nRet = convertOne(ptConverter) | convertOne(ptConverter);
    const long nAllocations = test::allocations([&] {
      for (int i = 0; i < 1000; ++i) nRet |= convertOne(ptConverter);
    });
    EXPECT_EQ(nRet, 0) << testing::PrintToString(test::logTexts());
    EXPECT_EQ(nAllocations, 0);
  }

 private:
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
  load({copy(func("sqlQuote", {src("A")}), dst("X")), copy(func("sqlNumber", {src("B")}), dst("Y"))});
  from.set("A", "O'Brien").set("B", "-12.50");
  expectNone();
}

TEST_F(StdHeap, IsLeftAloneByCodeTables) {
  tree.file("Table/Currency.txt", "EUR\tEuro\nJPY\tYen\n");
  plugAttributes("psTablePath='Table'");
  load({copy(func("lookUp", {value("Currency"), src("A")}), dst("X")),
        copy(func("lookUp", {value("Currency"), src("B"), value("none")}), dst("Y"))});
  from.set("A", "JPY").set("B", "XXX");
  expectNone();
}

// Here results go through one another; each function alone is another test's.
TEST_F(StdHeap, IsLeftAloneByFunctionsOfFunctions) {
  const ArgXml name = func("upper", {func("trim", {src("A")})});
  const ArgXml date = func("reformatDate", {src("B"), value("yyyyMMdd"), value("dd.MM.yyyy")});
  const ArgXml ratio = func("round", {func("divide", {src("C"), value("7"), value("6"), value("half-up")}),
                                      value("2"), value("half-up")});
  load(
      {copy(func("concat", {name, value(" "), date, value(" "), ratio}), dst("X")),
       copy(func("regexReplace", {func("repeat", {src("A"), loopNum(src("Items"))}), value("b"), value("c")}),
            dst("Y"))});
  from.set("A", " O'Brien ").set("B", "20240229").set("C", "22");
  from.add("Items");
  expectNone();
}

}  // namespace

// Converting a message takes nothing from the heap once the first one has been converted.
#include <cstdlib>

#include "convert_fixture.h"
#include "heap_count.h"
#include "seen.h"

namespace {

using namespace test::xml;
using test::allocations;
using test::cs;
using test::Level;
using test::newMessage;

// The last argument, in bytes of the message.
int last(Value *ptResult, int nArgs, Value **pptArgs, MemPort ptNode) {
  return cvtDumpValue(ptResult, pptArgs[nArgs - 1]->psValue, pptArgs[nArgs - 1]->nLen, ptNode);
}

class HeapSilence : public test::ConvertTest {
 protected:
  void SetUp() override {
    REQUIRE_HEAP_COUNT();
    ConvertTest::SetUp();
    cvtConvertAddFunction(cs("last"), last);
    define("In", {field("A"), field("B"), loop("Items", {field("Code"), loop("Parts", {field("Part")})})});
    define("Out", {field("X"), field("Y"), loop("Rows", {field("Name"), loop("Cells", {field("Cell")})})});
  }

  void load(const Args &rules) {
    convert("C", rules);
    tree.file("Id/id.xml", pipelines({{"fmt", {}, {}}}));
    tree.file("IdInfo/in.xml", choices({{"In", {{"fmt", "C"}, {"two", "C"}, {"", "C"}}}}));
    sMoreSections = "<Id __ID='ptId' psIdPath='Id' psIdInfoPath='IdInfo'/>";
    if (start() != 0) ADD_FAILURE() << "the configuration does not load";
    from = newMessage("In");
    from.set("A", "a").set("B", "b");
    for (int i = 0; i < 3; ++i) {
      const Level item = from.add("Items").set("Code", "c" + std::to_string(i));
      item.add("Parts").set("Part", "p");
    }
    ptConverter = cvtGetCvt(cs("C"));
  }

  // Converts one message into a new one, which is given back.
  int convertOne() {
    const Level to = {cvtGetValueList(-1), cvtGetMsg(cs("Out"))->pptMessageIdx, cvtMemNewNode()};
    const int nRet = cvtConvert(from.ptList, to.ptList, ptConverter, to.ptNode);
    cvtFreeValue(to.ptList);
    cvtMemDelNode(to.ptNode);
    return nRet;
  }

  // Allocations of a thousand messages behind the first two.
  long allocationsOf(const Args &rules) {
    load(rules);
    int nRet = convertOne() | convertOne();
    const long nAllocations = allocations([&] {
      for (int i = 0; i < 1000; ++i) nRet |= convertOne();
    });
    EXPECT_EQ(nRet, 0);
    return nAllocations;
  }

  Level from{};
  Converter *ptConverter = nullptr;
};

TEST_F(HeapSilence, TheCounterCounts) {
  EXPECT_EQ(allocations([] {
              void *const p = std::malloc(1);
              test::see(p);
              std::free(p);
            }),
            1);
  EXPECT_GE(allocations([] { test::see(std::string(100, 'x').data()); }), 1);
  EXPECT_GE(allocations([] { cvtMemMalloc(5000); }), 1);  // the library's own, too
}

TEST_F(HeapSilence, Copy) {
  EXPECT_EQ(allocationsOf({copy(src("A"), dst("X")), copy(value("v"), dst("Y"))}), 0);
}

TEST_F(HeapSilence, Case) {
  EXPECT_EQ(allocationsOf({cases({when({equal(src("A"), value("z")), equal(src("B"), value("b"))},
                                       {copy(value("v"), dst("X"))}),
                                  otherwise({})})}),
            0);
}

TEST_F(HeapSilence, LoopInALoop) {
  EXPECT_EQ(allocationsOf({loopRule(src("Items"), dst("Rows"),
                                    {copy(src("Code"), dst("Name")),
                                     loopRule(src("Parts"), dst("Cells"), {copy(src("Part"), dst("Cell"))})}),
                           loopRule(level("Set"), dst("Rows"), {copy(src("A"), dst("Name"))})}),
            0);
}

TEST_F(HeapSilence, Mapping) {
  EXPECT_EQ(allocationsOf({mapping(
                {src("B")}, {tagged(value("a"), {}), tagged(value("b"), {copy(src("A"), dst("X"))})})}),
            0);
}

TEST_F(HeapSilence, FunctionsInFunctions) {
  EXPECT_EQ(allocationsOf({copy(func("last", {src("A"), func("last", {src("B")})}), dst("X"))}), 0);
}

TEST_F(HeapSilence, FunctionsWithManyArguments) {
  EXPECT_EQ(allocationsOf({copy(func("last", Args(200, func("last", {src("A")}))), dst("X"))}), 0);
}

TEST_F(HeapSilence, RepetitionCounts) {
  EXPECT_EQ(allocationsOf({copy(loopNum(src("Items")), dst("X"))}), 0);
}

// A function's argument may be of every kind; a record comes as it is, here a constant.
TEST_F(HeapSilence, EveryKindOfArgument) {
  const ArgXml record = {5, "<Value __ID='pInfo' psValue='raw' nLen='3'/>"};
  const Args kinds = {src("A"), dst("X"), value("v"), func("last", {src("B")}), loopNum(src("Items")),
                      record};
  Args rules = {copy(src("A"), dst("X"))};
  for (const ArgXml &last : kinds) {
    Args arguments = kinds;
    arguments.push_back(last);
    rules.push_back(copy(func("last", arguments), dst("Y")));
  }
  EXPECT_EQ(allocationsOf(rules), 0);
}

TEST_F(HeapSilence, EveryKindOfOperand) {
  const Args kinds = {src("A"), dst("X"), value("a"), func("last", {src("A")}), loopNum(src("Items"))};
  std::vector<CaseXml> list;
  Args rules = {copy(src("B"), dst("X"))};
  for (const ArgXml &left : kinds) {
    for (const ArgXml &right : kinds) {
      list.push_back(when({equal(left, value("no")), equal(right, value("neither"))}, {}));
      rules.push_back(mapping({left}, {tagged(value("no"), {}), tagged(right, {copy(left, dst("Y"))})}));
    }
  }
  list.push_back(otherwise({copy(src("A"), dst("Y"))}));
  rules.push_back(cases(list));
  EXPECT_EQ(allocationsOf(rules), 0);
}

TEST_F(HeapSilence, RulesInRulesInRules) {
  const ArgXml inner = cases({when(
      {equal(src("Part"), value("p"))},
      {mapping({src("Part")}, {tagged(value("p"), {copy(func("last", {src("Part")}), dst("Cell"))})})})});
  const ArgXml flat = loopRule(src("Items"), level(), {copy(src("Code"), dst("Y"))});
  EXPECT_EQ(
      allocationsOf({flat, loopRule(level(), dst("Rows"), {copy(src("A"), dst("Name"))}),
                     loopRule(src("Items"), dst("Rows"), {loopRule(src("Parts"), dst("Cells"), {inner})})}),
      0);
}

TEST_F(HeapSilence, LookUpOfAConverter) {
  load({});
  const Converter *pt = cvtGetCvt(cs("C"));
  EXPECT_EQ(allocations([&] {
              for (int i = 0; i < 1000; ++i) pt = cvtGetCvt(cs("C"));
            }),
            0);
  EXPECT_EQ(allocations([&] { pt = cvtGetCvt(cs("a name that is long and not there")); }), 0);
  EXPECT_EQ(pt, nullptr);
}

class HeapSilentChoice : public HeapSilence {
 protected:
  void choose(const char *psFormat) {
    InnerMessage source{};
    InnerMessage target{};
    source.ptMsgInfo = cvtGetMsg(cs("In"));
    std::string(psFormat).copy(target.sMsgFormat, sizeof target.sMsgFormat - 1);
    Converter *pt = nullptr;  // the first look-up counts, too
    EXPECT_EQ(allocations([&] {
                for (int i = 0; i < 1000; ++i) pt = cvtGetConvert(&source, &target);
              }),
              0);
    EXPECT_EQ(pt, ptConverter);
  }
};

TEST_F(HeapSilentChoice, OfAPair) {
  load({});
  choose("fmt");
}

TEST_F(HeapSilentChoice, OfTheDefault) {
  load({});
  choose("any other");
}

TEST_F(HeapSilentChoice, FromPairsThatWereHungOnTheDefinitionByHand) {
  load({});
  cvtGetMsg(cs("In"))->pIdInfo =
      sttNewIdCvtInfo(cs("hand"), cs("C"), sttNewIdCvtInfo(cs(""), cs("C"), nullptr));
  choose("hand");
  choose("other");
}

TEST_F(HeapSilence, WholeGenerateStep) {
  load({copy(src("A"), dst("X")), loopRule(src("Items"), dst("Rows"), {copy(src("Code"), dst("Name"))})});
  InnerMessage source{};
  source.ptMsgInfo = cvtGetMsg(cs("In"));
  source.tValueListInfo = {from.ptList, from.ptNode, 0, {}};
  const auto step = [&] {
    InnerMessage target{};
    target.tValueListInfo.ptMemNode = cvtMemNewNode();
    __builtin_memcpy(target.sMsgFormat, "fmt", 4);
    const int nRet = pubConvert(&source, &target, nullptr);
    cvtFreeValue(target.tValueListInfo.ptValueList);
    cvtMemDelNode(target.tValueListInfo.ptMemNode);
    return nRet;
  };
  int nRet = step() | step();
  EXPECT_EQ(allocations([&] {
              for (int i = 0; i < 1000; ++i) nRet |= step();
            }),
            0);
  EXPECT_EQ(nRet, 0);
}

}  // namespace

// Loading large definitions of the format `fix`: time in proportion to size, and no more stack than there is.
#include <gtest/gtest.h>

#include "cpu_time.h"
#include "fix_config.h"
#include "heap_count.h"

using namespace test::fix;

namespace {

// Of a loop around a mandatory record and that many optional ones before it.
double loadSeconds(int nRecords) {
  std::vector<FormatNode> body;
  const FormatNode tag = field("Tag", "nLen=\"2\" psConst=\"A1\" nTag=\"1\"");
  for (int i = 0; i < nRecords; ++i)
    body.push_back(record("R" + std::to_string(i), "nOptional=\"1\"", {tag}));
  body.push_back(record("Last", "", {field("Tag", "nLen=\"2\" psConst=\"Z9\" nTag=\"1\"")}));
  FixConfig config;
  config.message("M", "", {loop("L", "psUntil=\"tag\"", body)});
  const double start = test::cpuSeconds();
  EXPECT_EQ(config.start(), 0) << told();
  const double taken = test::cpuSeconds() - start;
  const std::string s = "A1A1Z9Z9A1Z9";
  EXPECT_EQ(generate(parse("M", s)), s) << told();
  cvtEnd();
  return taken;
}

}  // namespace

TEST(FixLoad, ManyOptionalRecordsInALoopTakeTimeInProportion) {
  double few = 0;
  for (int i = 0; i < 40; ++i) few += loadSeconds(1000);
  const double many = loadSeconds(40000);
  std::printf("40 of 1000 records: %.3f s, 1 of 40000 records: %.3f s\n", few, many);
  EXPECT_LT(many, 4 * few);
}

TEST(FixLoad, SixtyThousandOptionalRecordsInALoopDoNotExhaustTheStack) {
  EXPECT_GT(loadSeconds(60000), 0);
}

TEST(FixLoad, ValuesOfALongFieldTakeNoMemoryForItsPads) {
  REQUIRE_HEAP_COUNT();
  for (const char *psValue : {"psConst=\"A\" nTag=\"1\"", "psConst=\"\"", "psValues=\"A|B|\" nTag=\"1\"",
                              "psDefault=\"A\"", "psConst=\"A\" psUnit=\"chars\"",
                              "psConst=\"A\" psType=\"raw\" psPad=\"0x00\" psAlign=\"right\" nTag=\"1\""}) {
    FixConfig config;
    config.message("M", "", {record("R", "", {field("F", "nLen=\"100000000\" " + std::string(psValue))})});
    const size_t nLargest = test::largestAllocation([&] { EXPECT_EQ(config.start(), 0) << told(); });
    EXPECT_LT(nLargest, 10000000U) << psValue;
    cvtEnd();
  }
}

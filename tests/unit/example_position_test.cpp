// Fields of the format `example` that number the repetitions of a loop.
#include <gtest/gtest.h>

#include "format_config.h"

namespace {

using namespace test::format;

struct ExampleFormat {
  static constexpr const char *psPlugin = "example";
  static constexpr const char *psMsg = "ExampleMsg";
};
using ExampleConfig = Config<ExampleFormat>;

FormatNode field(const std::string &sName, const std::string &sAttributes = "") {
  return leaf("ExampleField", sName, sAttributes);
}
FormatNode loop(const std::string &sName, const std::vector<FormatNode> &body) {
  return repeated("", sName, "", "ExampleLoop __ID=\"ptInfo\"", body, "");
}
Handle read(const std::string &sBytes) {
  return parse<ExampleFormat>("M", sBytes);
}

const FormatNode kNumber = field("No", "nPosition=\"1\"");

TEST(ExamplePosition, IsTheNumberOfTheRepetitionAroundIt) {
  ExampleConfig config;
  config.message("M", "", {loop("L", {kNumber, branch("", "G", "", {kNumber}), loop("K", {kNumber})})});
  ASSERT_EQ(config.start(), 0) << told();
  const std::string s = "1:2,1:1,1:1,1:2,1:1,1:2,1:2,1:2,1:0,";
  EXPECT_EQ(generate(read(s)), s) << told();
  EXPECT_EQ(generate(read("1:1,0:,0:,1:1,0:,")), "1:1,1:1,1:1,1:1,1:1,") << told();
  EXPECT_EQ(read("1:2,1:1,1:1,1:0,1:2,1:3,1:0,"), nullptr);
  EXPECT_TRUE(told("Field[L[1].G.No] Offset[24]: expected 2, the number of its repetition, found \"3\"."))
      << told();
}

TEST(ExamplePosition, StandsInALoop) {
  ExampleConfig config;
  config.message("M", "", {kNumber});
  EXPECT_NE(config.start(), 0);
  EXPECT_TRUE(told("Node[No] File[")) << told();
  EXPECT_TRUE(told("found it outside of any loop. Remove nPosition.")) << told();
}

}  // namespace

// What the format `example` accepts comes back with the same bytes, but for what its definition supplies.
#include <gtest/gtest.h>

#include "format_config.h"

namespace {

using namespace test::format;

struct ExampleFormat {
  static constexpr const char *psPlugin = "example";
  static constexpr const char *psMsg = "ExampleMsg";
};

FormatNode field(const std::string &sName, const std::string &sAttributes = "") {
  return leaf("ExampleField", sName, sAttributes);
}

class ExampleSameBytes : public testing::Test {
 protected:
  void SetUp() override {
    const FormatNode loop = repeated("", "L", "", "ExampleLoop __ID=\"ptInfo\"",
                                     {field("No", "nPosition=\"1\""), field("X")}, "Count");
    m_config.message(
        "M", "",
        {field("Default", "psDefault=\"EUR\""), field("Const", "psConst=\"1\""), field("Count"), loop});
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  static std::string back(const std::string &sBytes) {
    test::clearLog();
    return generate(parse<ExampleFormat>("M", sBytes));
  }

  Config<ExampleFormat> m_config;
};

TEST_F(ExampleSameBytes, ComeBackWhereTheMessageSaysEverything) {
  for (const char *bytes : {"3:USD,1:1,1:2,1:2,1:1,0:,1:2,1:x,", "1: ,1:1,1:0,1:0,"}) {
    EXPECT_EQ(back(bytes), bytes) << told();
  }
}

TEST_F(ExampleSameBytes, AreSuppliedWhereAPieceIsEmpty) {
  EXPECT_EQ(back("0:,1:1,0:,1:1,0:,1:x,"), "3:EUR,1:1,1:1,1:1,1:1,1:x,") << told();
  EXPECT_EQ(back("0:,0:,1:0,1:0,"), "no message");
  EXPECT_TRUE(told("The field is a constant")) << told();
}

TEST_F(ExampleSameBytes, OfACountArePlainDigits) {
  for (const char *count : {"2:01,", "3: 1 ,", "0:,"}) {
    EXPECT_EQ(back("3:USD,1:1," + std::string(count) + "1:1,1:1,1:x,"), "3:USD,1:1,1:1,1:1,1:1,1:x,")
        << told();
  }
}

}  // namespace

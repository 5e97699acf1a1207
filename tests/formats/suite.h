// suite.h: the fixture of the tests that every format plug-in passes.
#pragma once

#include <gtest/gtest.h>

#include <regex>

#include "log_capture.h"
#include "session.h"

namespace formats {

class FormatTest : public testing::TestWithParam<const Format *> {
 protected:
  const Format &format() const { return *GetParam(); }

  // With the definition of the order as Order.
  void SetUp() override {
    session.define("Order", orderItems());
    ASSERT_EQ(session.start(), 0) << told();
    test::clearLog();
  }
  void TearDown() override { cvtEnd(); }

  // The bytes of a message with these values; "refused".
  std::string bytesOf(const Json &fields, const std::string &message = "Order") {
    return session.write(session.fill(message, fields)).value_or("refused");
  }

  // All lines at level 1.
  static std::string told() {
    std::string all;
    for (const std::string &line : test::logTexts()) all += line + "\n";
    return all;
  }

  // Whether the plug-in told in one line where, what it expected, and what it found.
  static testing::AssertionResult toldOnce() {
    static const std::regex shape(
        R"(Msg\[\w+\] Field\[[\w.\[\]]*\] Offset\[\d+\]: expected [^]+, found [^]+\.( [^]+\.)?)");
    int lines = 0;
    for (const std::string &line : test::logTexts()) lines += std::regex_match(line, shape) ? 1 : 0;
    if (lines == 1) return testing::AssertionSuccess();
    return testing::AssertionFailure() << lines << " lines of that shape in:\n" << told();
  }

  static bool toldOf(const std::string &text) { return told().find(text) != std::string::npos; }

  Session session{format()};
};

inline std::string nameOf(const testing::TestParamInfo<const Format *> &info) {
  return info.param->name();
}

}  // namespace formats

// The suite's tests for every plug-in.
#define FOR_EVERY_FORMAT(Fixture) \
  INSTANTIATE_TEST_SUITE_P(Every, Fixture, testing::ValuesIn(formats::allFormats()), formats::nameOf)

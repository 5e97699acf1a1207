// csv_fixture.h: messages of one configuration that come back as they were, or are refused.
#pragma once

#include <gtest/gtest.h>

#include "csv_config.h"

namespace test::csvtext {

class CsvFixture : public testing::Test {
 protected:
  void start() { ASSERT_EQ(m_config.start(), 0) << told(); }
  void same(const std::string &sName, const std::string &sBytes) {
    test::clearLog();
    EXPECT_EQ(pass(sName, sBytes), sBytes) << told();
  }
  void refused(const std::string &sName, const std::string &sBytes, const std::string &sLine) {
    test::clearLog();
    EXPECT_EQ(parse(sName, sBytes), nullptr) << sBytes;
    EXPECT_TRUE(told(sLine)) << told();
  }

  CsvConfig m_config;
};

}  // namespace test::csvtext

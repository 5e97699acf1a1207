// Database access through an ODBC driver that does what real ones do seldom.
#include <gtest/gtest.h>

#include <string>

#include "config_tree.h"
#include "database.h"
#include "log_capture.h"
#include "vel_dbs.h"

namespace {

using test::cs;
using test::errorOf;
using test::single;

bool has(const std::string &text, const std::string &part) {
  return text.find(part) != std::string::npos;
}

class OddDriver : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(dbsConnect(cs("odbc:DRIVER=" ODBC_DRIVER)), 0) << dbsErrStr(); }
  void TearDown() override { dbsDisconnect(); }

  static std::string value() {
    std::string value = "x";
    while (value.size() + 2 < 20000) value += "\xc3\xa9";
    return value;
  }
};

TEST_F(OddDriver, TextCutBeforeACharacterThatDoesNotFitComesWhole) {
  EXPECT_TRUE(single("text") == value());
}

TEST_F(OddDriver, ValuesWhoseLengthTheDriverDoesNotTellComeWhole) {
  EXPECT_TRUE(single("text of unknown length") == value());
  EXPECT_TRUE(single("binary of unknown length") == value());
}

TEST_F(OddDriver, BehindTheLastRowTheDriverIsNotAsked) {
  ASSERT_EQ(test::prepareAndOpen("text"), 0);
  EXPECT_EQ(dbsFetch(), 0);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(dbsFetch(), -3001);
}

TEST_F(OddDriver, AnErrorBehindTheFirstResultFailsTheStatement) {
  EXPECT_EQ(errorOf(dbsExecute(cs("second result fails"))), "[22012] two lines");
  EXPECT_EQ(dbsSqlCode(), 77);
}

TEST_F(OddDriver, AFailureWithoutAReasonIsAFailure) {
  EXPECT_EQ(errorOf(dbsExecute(cs("no reason"))), "the driver gives no reason");
  EXPECT_EQ(dbsSqlCode(), -1);
}

TEST_F(OddDriver, AGeneralErrorOfALivingConnectionIsNoLoss) {
  EXPECT_EQ(errorOf(dbsExecute(cs("general error"))), "[HY000] two lines");
  EXPECT_EQ(test::logTexts(1).size(), 0U);
}

TEST_F(OddDriver, ALossThatTheDriverDoesNotTellIsNoticed) {
  test::clearLog();
  EXPECT_TRUE(has(errorOf(dbsExecute(cs("lose"))), "[HY000] two lines; the connection is lost"));
  EXPECT_EQ(test::logTexts(1).size(), 1U);
  EXPECT_EQ(dbsExecute(cs("anything")), 0) << dbsErrStr();
  EXPECT_EQ(test::logTexts(5).size(), 1U);
}

}  // namespace

// std_config.h: the function library as a converter calls it. In(A, B, Items(Code)) becomes Out(X, Y) by
// rules of the test.
#pragma once

#include "convert_fixture.h"
#include "database.h"
#include "toy_config.h"

namespace test {

class StdTest : public ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    define("In", {xml::field("A"), xml::field("B"), xml::loop("Items", {xml::field("Code")})});
    define("Out", {xml::field("X"), xml::field("Y")});
    sMoreSections = plugSection({"psName=\"std\""});
  }
  void TearDown() override {
    cvtEnd();
    dbsDisconnect();
  }

  // Loads a converter of these rules, and new messages.
  void load(const xml::Args &rules) {
    convert("C", rules);
    if (start() != 0) ADD_FAILURE() << "the configuration does not load";
    from = newMessage("In");
    to = newMessage("Out");
  }

  int run() { return ConvertTest::run("C", from, to); }

  Level from{};
  Level to{};
};

}  // namespace test

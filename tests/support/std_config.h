// std_config.h: the function library as a converter calls it. In(A .. F, Items(Code)) becomes Out(X, Y) by
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
    define("In", {xml::field("A"), xml::field("B"), xml::field("C"), xml::field("D"), xml::field("E"),
                  xml::field("F"), xml::loop("Items", {xml::field("Code")})});
    define("Out", {xml::field("X"), xml::field("Y")});
    plugAttributes("");
  }
  void TearDown() override {
    cvtEnd();
    dbsDisconnect();
  }

  // What the plug-in's element says, for the next load().
  void plugAttributes(const std::string &sAttributes) {
    sMoreSections = plugSection({"psName=\"std\" " + sAttributes});
  }

  // Loads a converter of these rules, and new messages.
  void load(const xml::Args &rules) {
    convert("C", rules);
    if (start() != 0) ADD_FAILURE() << "the configuration does not load";
    from = newMessage("In");
    to = newMessage("Out");
  }

  int run() { return ConvertTest::run("C", from, to); }

  // Ends the library, so that load() may follow.
  void again() {
    cvtEnd();
    registerPlainFormat();
  }

  // The rule that puts the function of the fields A, B, ... into X.
  static xml::ArgXml callRule(const std::string &sFunction, size_t nArguments) {
    xml::Args list;
    for (size_t i = 0; i < nArguments; ++i) list.push_back(xml::src(std::string(1, "ABCDEF"[i])));
    return xml::copy(xml::func(sFunction, list), xml::dst("X"));
  }

  Level from{};
  Level to{};
};

}  // namespace test

// Members in the definition's order, texts and numbers of which nothing is asked, are taken in one go: with the values,
// and refused with the words, of texts that are written in any other way.
#include <gtest/gtest.h>

#include <algorithm>

#include "json_config.h"

namespace {

using namespace test::json;

class JsonInOrder : public testing::Test {
 protected:
  void SetUp() override {
    m_config.message(
        "Order", "",
        {field("Id"), field("Total", "psType=\"number\""), field("Note"),
         field("Paid", "psType=\"boolean\" psNull=\"absent\""), field("Ref", "nMaxLen=\"6\""), field("Text"),
         loop("Lines", "", "", {field("Sku"), field("Qty", "psType=\"number\"")}), field("End")});
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  // All values, one behind the other.
  static std::string values(const std::string &s) {
    test::clearLog();
    const Text order = parse("Order", s);
    if (order == nullptr) return "refused";
    std::string all;
    for (const char *psName : {"Id", "Total", "Note", "Paid", "Ref", "Text"}) all += get(order, psName) + "|";
    for (int i = 0; at(order, "Lines", i); ++i)
      all += get(order, "Lines.Sku") + "*" + get(order, "Lines.Qty") + "|";
    return all + get(order, "End");
  }

  static void refused(const std::string &s, const std::string &sLine) {
    EXPECT_EQ(values(s), "refused") << s;
    EXPECT_TRUE(told("Msg[Order] " + sLine)) << s << "\n" << told();
  }

  JsonConfig m_config;
};

const std::vector<std::string> kMembers = {R"("Id":"A7")",
                                           R"("Total":12.50)",
                                           R"("Note":"a text of more than sixteen bytes")",
                                           R"("Paid":true)",
                                           R"("Ref":"R-1")",
                                           R"("Text":"t")",
                                           R"("Lines":[{"Sku":"S1","Qty":5},{"Sku":"S2","Qty":-0.5e1}])",
                                           R"("End":"e")"};
const std::string kValues = "A7|12.50|a text of more than sixteen bytes|true|R-1|t|S1*5|S2*-0.5e1|e";

std::string object(const std::vector<std::string> &members) {
  std::string s;
  for (const std::string &sMember : members) s += (s.empty() ? "" : ",") + sMember;
  return "{" + s + "}";
}

TEST_F(JsonInOrder, BlanksMayStandBesideEveryToken) {
  const std::string s = object(kMembers);
  ASSERT_EQ(values(s), kValues);
  for (size_t i = 0; i <= s.size(); ++i) {
    const auto isToken = [](char c) { return std::string_view("{}[]:,").find(c) != std::string_view::npos; };
    if (i > 0 && i < s.size() && !isToken(s[i]) && !isToken(s[i - 1])) continue;
    for (const char *psBlank : {" ", "\n\t\r "})
      EXPECT_EQ(values(std::string(s).insert(i, psBlank)), kValues) << i;
  }
}

TEST_F(JsonInOrder, EveryOrderOfMembersGivesTheSameValues) {
  std::vector<std::string> members = kMembers;
  const auto end = members.begin() + 6;
  std::ranges::sort(members.begin(), end);
  do ASSERT_EQ(values(object(members)), kValues) << object(members);
  while (std::ranges::next_permutation(members.begin(), end).found);
  EXPECT_EQ(values(object({kMembers.rbegin(), kMembers.rend()})), kValues);
}

TEST_F(JsonInOrder, EveryMemberMayBeLeftOut) {
  for (unsigned left = 0; left < 1U << kMembers.size(); ++left) {
    std::vector<std::string> members;
    for (size_t i = 0; i < kMembers.size(); ++i) {
      if ((left >> i & 1U) == 0) members.push_back(kMembers[i]);
    }
    const auto has = [&](size_t i, const char *psThere) { return (left >> i & 1U) == 0 ? psThere : ""; };
    const std::string sExpected = std::string(has(0, "A7")) + "|" + has(1, "12.50") + "|" +
                                  has(2, "a text of more than sixteen bytes") + "|" + has(3, "true") + "|" +
                                  has(4, "R-1") + "|" + has(5, "t") + "|" + has(6, "S1*5|S2*-0.5e1|") +
                                  has(7, "e");
    ASSERT_EQ(values(object(members)), sExpected) << object(members);
  }
}

TEST_F(JsonInOrder, AMemberMayComeOnceWhereverItComesAgain) {
  for (size_t i = 0; i < kMembers.size(); ++i) {
    for (size_t j = 0; j <= kMembers.size(); ++j) {
      std::vector<std::string> members = kMembers;
      members.insert(members.begin() + static_cast<std::ptrdiff_t>(j), kMembers[i]);
      EXPECT_EQ(values(object(members)), "refused") << object(members);
      EXPECT_TRUE(told("expected each member once, found a second \"" + kMembers[i].substr(1, 2))) << told();
    }
  }
}

TEST_F(JsonInOrder, ValuesThatAreWrittenInAnotherWayAreTaken) {
  EXPECT_EQ(values(R"({"Id":"\u0041\"","Total":0})"), "A\"|0|||||");
  EXPECT_EQ(values(R"({"\u0049d":"A","Total":1e5 ,"Note" :"n"})"), "A|1e5|n||||");
  EXPECT_EQ(values(R"({"Id":"A","Paid":null,"Ref":"r"})"), "A||||r||");
  EXPECT_EQ(values(R"({"Id":"","Total":10.00})"), "|10.00|||||");
}

TEST_F(JsonInOrder, WhatIsWrongIsToldAsEverywhere) {
  refused(R"({"Id":7})", "Field[Id] Offset[6]: expected a text in double quotes, found number \"7\"");
  refused(R"({"Id":"A","Total":"1"})", "Field[Total] Offset[18]: expected a number, found text \"1\"");
  refused(R"({"Id":"A","Total":01})", "Field[Total] Offset[18]: expected a number, found \"01\"");
  refused(R"({"Id":"A","Total":1,})",
          "Field[] Offset[20]: expected the name of a member, found }. Remove the comma before it");
  refused(R"({"Id":"A" "Total":1})",
          "Field[] Offset[10]: expected , or } behind the member, found text \"Total\"");
  refused(R"({"Id":"A","Total":1)",
          "Field[] Offset[19]: expected , or } behind the member, found the end of the text");
  refused(R"({"Id":"A","Total":1])", "Field[] Offset[19]: expected , or } behind the member, found ]");
  refused(R"({"Id":"A","Total")", "Field[] Offset[17]: expected : behind the name of the member");
  refused(R"({"Id":"A\x"})", "Field[Id] Offset[8]: expected an escape");
  refused(R"({"Id":"A","Idd":"B"})", "Field[] Offset[10]: expected one of the members");
  refused(R"({"Id":"A","Ref":"toolong"})", "Field[Ref] Offset[");
}

// Written in one go, too.
TEST_F(JsonInOrder, AFullBufferIsToldWithTheMemberThatHadNoRoom) {
  const std::string sWhole = object(kMembers);
  const Text order = parse("Order", sWhole);
  ASSERT_EQ(generate(order), sWhole);
  for (const auto &[sMember, sPath] :
       std::vector<std::pair<std::string, std::string>>{{kMembers[0], "Id"},
                                                        {kMembers[1], "Total"},
                                                        {kMembers[2], "Note"},
                                                        {kMembers[3], "Paid"},
                                                        {kMembers[4], "Ref"},
                                                        {R"("Sku":"S2")", "Lines[1].Sku"},
                                                        {R"("Qty":-0.5e1)", "Lines[1].Qty"}}) {
    const size_t begin = sWhole.find(sMember);
    for (size_t n = begin; n < begin + sMember.size(); ++n) {
      test::clearLog();
      EXPECT_EQ(generate(order, n), "failed");
      EXPECT_TRUE(told("Msg[Order] Field[" + sPath + "] Offset[")) << n << "\n" << told();
    }
  }
}

}  // namespace

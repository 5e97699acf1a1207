#include "json.h"
#include "cpu_time.h"

#include <gtest/gtest.h>

#include "cvt.h"
#include "error.h"
#include "toy_config.h"

namespace {

// How reading the text ends: the refusal's text, or "read".
std::string refusal(std::string_view text) {
  try {
    const tool::JsonMessage json(text);
    return "read";
  } catch (const tool::DataError &error) {
    return error.what();
  }
}

TEST(Json, ANumberThatNoTypeHoldsIsRefusedLikeAnyOtherText) {
  EXPECT_EQ(refusal(R"({"fields":{"Id":1e999}})"), "not JSON: number overflow parsing '1e999'");
  EXPECT_EQ(refusal(R"({"fields":{"Id":1e99}})"), "read");
}

TEST(Json, TextThatIsNoJsonIsRefusedWithItsPlace) {
  EXPECT_EQ(refusal("{").rfind("not JSON: parse error at line 1, column 2", 0), 0U);
}

TEST(Json, AMemberThatStandsTwiceIsRefusedWithItsPath) {
  const std::string why = ": expected one member of that name, found another; write it once";
  EXPECT_EQ(refusal(R"({"fields":{"Id":"1","Id":"2"}})"), "fields.Id" + why);
  EXPECT_EQ(refusal(R"({"fields":{},"message":"A","fields":{}})"), "fields" + why);
  EXPECT_EQ(refusal(R"({"message":"A","fields":{},"message":null})"), "message" + why);
  EXPECT_EQ(refusal(R"({"fields":{"A":[[],{"x":1},[5,{"x":1,"y":[{"x":1}],"\u0078":[2]}]]}})"),
            "fields.A[2][1].x" + why);
  EXPECT_EQ(refusal(R"({"fields":{"x":{"x":[{"x":1},{"x":1}]}}})"), "read");
}

// The text of an exception ends at a zero byte.
TEST(Json, APathWithAZeroByteIsToldToItsEnd) {
  EXPECT_EQ(refusal(R"({"\u0000a":1,"\u0000a":2})").rfind("\\x00a: expected one member", 0), 0U);
}

TEST(Json, TheNameOfAMessageHoldsNoZeroByte) {
  EXPECT_EQ(refusal(R"({"message":"Order\u0000s","fields":{}})"),
            "expected \"message\", a string without a zero byte, found one at its byte 5");
}

TEST(Json, MembersAreReadWithoutSearchingForEach) {
  const auto seconds = [](int members) {
    std::string text = R"({"fields":{"Id":1)";
    for (int i = 0; i < members; ++i) text += ",\"m" + std::to_string(i) + "\":0";
    const double begin = test::cpuSeconds();
    EXPECT_EQ(refusal(text + "}}"), "read");
    return test::cpuSeconds() - begin;
  };
  const double few = seconds(10000);
  const double many = seconds(100000);
  std::printf("10000 members: %.3f s, 100000: %.3f s\n", few, many);
  EXPECT_LT(many, 30 * few + 0.2);
}

TEST(Json, AnIntegerStandsForItsDigits) {
  test::ToyConfig config;
  ASSERT_EQ(config.start(), 0);
  tool::Layouts layouts;
  for (const char *digits : {"0", "-0", "7", "-7", "18446744073709551615", "-9223372036854775808",
                             "123456789012345678901234567890", "-123456789012345678901234567890"}) {
    int nError = 0;
    InnerMessage *const order = cvtNewMessage(test::cs("Order"), test::cs("02"), &nError);
    ASSERT_NE(order, nullptr);
    const tool::JsonMessage json(std::string(R"({"fields":{"Id":)") + digits + "}}");
    json.fill(layouts.of(*order->ptMsgInfo), order->tValueListInfo);
    EXPECT_EQ(tool::bytesIn(order->tValueListInfo.ptValueList, 0), digits);
    cvtFreeMessage(order);
  }
  cvtEnd();
}

// The members of a group are read where they stand: a copy of them would take the stack, a frame a level.
TEST(Json, AGroupWithAValueOfItsOwnMayHoldAnyDepthOfNonsense) {
  test::ToyConfig config;
  ASSERT_EQ(config.start(), 0);
  int nError = 0;
  InnerMessage *const order = cvtNewMessage(test::cs("Order"), test::cs("02"), &nError);
  ASSERT_NE(order, nullptr);
  tool::Layouts layouts;
  const size_t depth = 200000;
  const tool::JsonMessage json(R"({"fields":{"Who":{"#value":"x","Name":)" + std::string(depth, '[') +
                               std::string(depth, ']') + "}}}");
  try {
    json.fill(layouts.of(*order->ptMsgInfo), order->tValueListInfo);
    ADD_FAILURE() << "read";
  } catch (const tool::DataError &error) {
    EXPECT_STREQ(error.what(), "fields.Who.Name: expected a string, found JSON of type array");
  }
  cvtFreeMessage(order);
  cvtEnd();
}

}  // namespace

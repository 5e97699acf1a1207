#include "json.h"

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

// Long texts that are searched and trimmed, when both the text and what is looked for come from a message.

#include "cpu_time.h"
#include "std_call.h"

namespace {

using test::resultOf;

class StdLongText : public testing::Test {
 protected:
  void TearDown() override { EXPECT_LT(test::cpuSeconds() - m_begin, 5); }

  const std::string sText = std::string(2'000'000, 'a');
  const std::string sPart = std::string(1'000'000, 'a') + "b";

 private:
  const double m_begin = test::cpuSeconds();
};

TEST_F(StdLongText, APartIsLookedForInProportion) {
  EXPECT_EQ(resultOf("indexOf", {sText, sPart}), "0");
  EXPECT_EQ(resultOf("indexOf", {sText + "b", sPart}), "1000001");
  EXPECT_EQ(resultOf("indexOf", {sText + "b", sPart, "1000001"}), "1000001");
  EXPECT_EQ(resultOf("indexOf", {sText + "b", sPart, "1000002"}), "0");
}

TEST_F(StdLongText, ASeparatorIsLookedForInProportion) {
  EXPECT_EQ(resultOf("splitPart", {sText, sPart, "2"}), "");
  EXPECT_TRUE(resultOf("splitPart", {sText, sPart, "-1"}) == sText);
  EXPECT_EQ(resultOf("splitPart", {sText + "bc", sPart, "2"}), "c");
}

TEST_F(StdLongText, APartIsReplacedInProportion) {
  EXPECT_TRUE(resultOf("replace", {sText, sPart, "c"}) == sText);
  EXPECT_TRUE(resultOf("replace", {sText + "bc", sPart, "x"}) == std::string(1'000'000, 'a') + "xc");
}

TEST(StdText, NothingIsFoundInNothing) {
  EXPECT_EQ(resultOf("indexOf", {"", "a"}), "0");
  EXPECT_EQ(resultOf("splitPart", {"", "a", "1"}), "");
  EXPECT_EQ(resultOf("splitPart", {"a;", ";", "2"}), "");
  EXPECT_EQ(resultOf("replace", {"", "a", "b"}), "");
  EXPECT_EQ(resultOf("trim", {"", "a"}), "");
}

TEST_F(StdLongText, CharactersAreTakenOffInProportion) {
  const std::string sRest = std::string(2'000'000, 'b');
  EXPECT_EQ(resultOf("trim", {sRest + "x" + sRest, sPart}), "x");
  EXPECT_EQ(resultOf("trimLeft", {sRest + "x", sPart}), "x");
  EXPECT_EQ(resultOf("trimRight", {"x" + sRest, sPart}), "x");
  EXPECT_EQ(resultOf("trim", {"abxba", "b"}), "abxba") << "each call has its own characters";
  EXPECT_EQ(resultOf("trim", {"abxba", "ä"}), "abxba");
  EXPECT_EQ(resultOf("trim", {"€ä\U0001F600xä€", "\U0001F600ä€"}), "x");
}

}  // namespace

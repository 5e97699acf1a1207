// Parsing and generating take nothing from the heap once a text of that size has been through.
#include <gtest/gtest.h>

#include <array>

#include "heap_count.h"
#include "json_config.h"

namespace {

using namespace test::json;

class JsonHeap : public testing::Test {
 protected:
  void SetUp() override {
    REQUIRE_HEAP_COUNT();
    const std::vector<FormatNode> nodes = {
        field("Id", "psType=\"number\""),
        loop("Items", "", "",
             {field("Sku"), field("Text"), loop("Notes", "", "", {}), field("More", "psKind=\"others\"")}),
        loop("Rates", "psForm=\"value\"", "psForm=\"members\"",
             {field("Code", "psKind=\"name\""), field("Rate", "psType=\"any\"")})};
    m_config.message("Whole", "nIndent=\"2\"", nodes);
    m_config.message("First", "nWhole=\"0\"", nodes);
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  // One text in and out, past the trace lines of the message API, which the test's own log would keep.
  void pass(const char *psName, std::string &sBytes) {
    int nError = 0;
    InnerMessage *ptMsg = cvtNewMessage(test::cs(psName), test::cs("json"), &nError);
    const Msg *ptDefinition = ptMsg->ptMsgInfo;
    int nNow = 0;
    const int nBytes = static_cast<int>(sBytes.size());
    if (ptDefinition->fParse(nullptr, &ptMsg->tValueListInfo, ptMsg->ptMsgInfo, sBytes.data(), &nNow,
                             nBytes) != 0)
      ++m_nFailed;
    int nLen = static_cast<int>(m_out.size());
    if (nNow != nBytes || cvtGenMessage(ptMsg, m_out.data(), &nLen) != 0) ++m_nFailed;
    cvtFreeMessage(ptMsg);
  }

  JsonConfig m_config;
  std::array<char, 200000> m_out;
  int m_nFailed = 0;
};

TEST_F(JsonHeap, ASecondTextLikeTheFirstAllocatesNothing) {
  std::string s = "{\"Id\":1,\"Items\":[";
  for (int i = 0; i < 200; ++i) {
    s += (i == 0 ? "{\"Sku\":\"" : ",{\"Sku\":\"") + std::to_string(i) +
         "\",\"T\\u0065xt\":\"a\\n\xC3\xA9\",\"Notes\":[\"1\",\"2\"],\"x\":{\"y\":[1]},\"\\u007a\":0}";
  }
  s += "],\"Rates\":{\"EUR\":[1],\"\\u0055SD\":2}}";
  for (const char *const psName : {"Whole", "First"}) {
    for (int i = 0; i < 3; ++i) pass(psName, s);
    const long n = test::allocations([&] {
      for (int i = 0; i < 20; ++i) pass(psName, s);
    });
    EXPECT_EQ(n, 0) << psName;
  }
  EXPECT_EQ(m_nFailed, 0) << told();
}

}  // namespace

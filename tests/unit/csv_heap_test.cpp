// Parsing and generating take nothing from the heap once a text of that size has been through.
#include <gtest/gtest.h>

#include <array>

#include "csv_config.h"
#include "heap_count.h"

namespace {

using namespace test::csvtext;

class CsvHeap : public testing::Test {
 protected:
  void SetUp() override {
    REQUIRE_HEAP_COUNT();
    const std::vector<FormatNode> nodes = {rows(fields({"A", "B", "C"})),
                                           field("Break", "psKind=\"line-end\"")};
    m_config.message("Utf8", "psHeader=\"names\" psLineEnd=\"any\"", nodes);
    m_config.message("Gbk", "psHeader=\"names\" psLineEnd=\"any\" psCharset=\"GB18030\"", nodes);
    m_config.message(
        "Bank", "psRecordEnd=\"/\" psContinuation=\"88\" psOrder=\"any\"",
        {loop("Records", "CsvRecord", "psTag=\"01\"", "",
              {field("N"), loop("Values", "CsvField", "", "", {}), field("Wraps", "psKind=\"wraps\"")})});
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  // One text in and out, past the trace lines of the message API, which the test's own log would keep.
  void pass(const char *psName, std::string &sBytes) {
    int nError = 0;
    InnerMessage *ptMsg = cvtNewMessage(test::cs(psName), test::cs("csv"), &nError);
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

  void expectNone(const char *psName, std::string sBytes) {
    for (int i = 0; i < 3; ++i) pass(psName, sBytes);
    const long n = test::allocations([&] {
      for (int i = 0; i < 20; ++i) pass(psName, sBytes);
    });
    EXPECT_EQ(n, 0) << psName;
    EXPECT_EQ(m_nFailed, 0) << told();
  }

  CsvConfig m_config;
  std::array<char, 100000> m_out;
  int m_nFailed = 0;
};

TEST_F(CsvHeap, ASecondTextLikeTheFirstAllocatesNothing) {
  std::string sTable = "C,\"A\",B\r\n";
  std::string sBank;
  for (int i = 0; i < 200; ++i) {
    sTable += std::to_string(i) + ",\"a \"\"quoted\"\" value\",a longer value without quotes\r\n";
    sBank += "01,7,1,2/\n88,3,4/\n88,5/\n";
  }
  expectNone("Utf8", sTable);
  expectNone("Gbk", sTable);
  expectNone("Bank", sBank);
}

}  // namespace

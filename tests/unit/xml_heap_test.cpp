// Parsing and generating take nothing from the heap once a document of that size has been through.
#include <gtest/gtest.h>

#include <array>

#include "heap_count.h"
#include "xml_config.h"

namespace {

using namespace test::xmldoc;

class XmlHeap : public testing::Test {
 protected:
  void SetUp() override {
    REQUIRE_HEAP_COUNT();
    const std::vector<FormatNode> nodes = {
        field("Id", "psKind=\"attribute\""),
        loop("Items", "psName=\"item\"", "psWrapper=\"items\"",
             {field("Sku", "psKind=\"attribute\""), field("Text", "psSpace=\"collapse\""),
              loop("Notes", "psName=\"note\"", "", {})})};
    m_config.message("Utf8", "psRoot=\"m\" psNamespace=\"urn:m\" nIndent=\"2\"", nodes);
    m_config.message("Gbk", "psRoot=\"m\" psNamespace=\"urn:m\" psEncoding=\"GB18030\"", nodes);
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  // One document in and out, past the trace lines of the message API, which the test's own log would keep.
  void pass(const char *psName, std::string &sBytes) {
    int nError = 0;
    InnerMessage *ptMsg = cvtNewMessage(test::cs(psName), test::cs("xml"), &nError);
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

  XmlConfig m_config;
  std::array<char, 100000> m_out;
  int m_nFailed = 0;
};

TEST_F(XmlHeap, ASecondDocumentLikeTheFirstAllocatesNothing) {
  std::string s = "<m xmlns='urn:m' Id='1'><items>";
  for (int i = 0; i < 200; ++i) {
    s += "<item Sku='" + std::to_string(i) + "'><Text> a  &lt; b </Text><note>1</note><note>2</note></item>";
  }
  s += "</items></m>";
  for (const char *const psName : {"Utf8", "Gbk"}) {
    for (int i = 0; i < 3; ++i) pass(psName, s);
    const long n = test::allocations([&] {
      for (int i = 0; i < 20; ++i) pass(psName, s);
    });
    EXPECT_EQ(n, 0) << psName;
  }
  EXPECT_EQ(m_nFailed, 0) << told();
}

}  // namespace

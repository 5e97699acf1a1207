// Real documents through the definitions beside the plug-in.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "xml_config.h"

namespace {

using namespace test::xmldoc;

std::string content(const std::string &sFile) {
  std::ifstream in(sFile, std::ios::binary);
  EXPECT_TRUE(in.good()) << sFile;
  return {std::istreambuf_iterator<char>(in), {}};
}

std::string sample(const std::string &sName) {
  return CVT2_SOURCE_DIR "/src/cvt/plug/xml/samples/" + sName;
}

class XmlSamples : public testing::Test {
 protected:
  void SetUp() override {
    for (const char *const psName : {"Camt053", "Pacs008"}) {
      const std::string sFile = std::string(psName) + ".xml";
      m_config.file("msg/" + sFile, content(sample("definitions/" + sFile)));
    }
    m_config.message("Any", "psUnknown=\"skip\"", {field("A")});
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  XmlConfig m_config;
};

TEST_F(XmlSamples, APaymentComesBackByteForByte) {
  const std::string s = content(sample("pacs008/pacs008.xml"));
  const Document document = parse("Pacs008", s);
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(get(document, "MsgId"), "M20230713234567891T1BOTS02083825666");
  EXPECT_EQ(get(document, "SttlmMtd"), "CLRG");
  EXPECT_EQ(cvtGetLoopTime(document.get(), test::cs("CdtTrfTxInf")), 1);
  cvtSetLoopTime(document.get(), test::cs("CdtTrfTxInf"), 0);
  EXPECT_EQ(get(document, "CdtTrfTxInf.EndToEndId"), "EOTS");
  EXPECT_EQ(get(document, "CdtTrfTxInf.Value"), "46154.49");
  EXPECT_EQ(generate(document), s);
}

TEST_F(XmlSamples, AStatementHasTheFieldsThatItsPublisherAsserts) {
  const Document document = parse("Camt053", content(sample("camt/camt053.v2.minimal.xml")));
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(get(document, "MsgId"), "CAMT053RIB000000000001");
  EXPECT_EQ(get(document, "CreDtTm"), "2015-03-10T18:43:50+00:00");
  EXPECT_EQ(get(document, "StrtNm"), "12 Oxford Street");
  EXPECT_EQ(cvtGetLoopTime(document.get(), test::cs("Stmt")), 1);
  cvtSetLoopTime(document.get(), test::cs("Stmt"), 0);
  EXPECT_EQ(get(document, "Stmt.Id"), "253EURNL26VAYB8060476890");
  EXPECT_EQ(get(document, "Stmt.ElctrncSeqNb"), "12312");
  EXPECT_EQ(cvtGetLoopTime(document.get(), test::cs("Stmt.Bal")), 4);
  EXPECT_EQ(cvtGetLoopTime(document.get(), test::cs("Stmt.Ntry")), 1);
}

TEST_F(XmlSamples, StatementsComeBackByteForByteButForTheOrderOfNamespaceDeclarations) {
  for (const char *const psName : {"camt/camt053.v2.minimal.xml", "camt/camt053.v2.multi.statement.xml"}) {
    std::string s = content(sample(psName));
    const std::string sXsi = " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"";
    const std::string sDefault = " xmlns=\"urn:iso:std:iso:20022:tech:xsd:camt.053.001.02\"";
    const size_t nAt = s.find(sXsi + sDefault);
    ASSERT_NE(nAt, std::string::npos);
    const Document document = parse("Camt053", s);
    ASSERT_NE(document, nullptr) << told();
    s.replace(nAt, sXsi.size() + sDefault.size(), sDefault + sXsi);
    EXPECT_EQ(generate(document), s);
    EXPECT_EQ(generate(parse("Camt053", s)), s);
  }
}

TEST_F(XmlSamples, AStatementFileWithoutAStatementIsRefused) {
  EXPECT_EQ(parse("Camt053", content(sample("camt/camt053.v2.wrong.xml"))), nullptr);
  EXPECT_TRUE(told("Field[BkToCstmrStmt] Offset[325]: expected <Stmt> at least 1 times, found 0.")) << told();
}

TEST_F(XmlSamples, EveryMalformedDocumentIsRefused) {
  size_t n = 0;
  for (const auto &entry : std::filesystem::directory_iterator(sample("malformed"))) {
    test::clearLog();
    EXPECT_EQ(parse("Any", content(entry.path())), nullptr) << entry.path();
    EXPECT_TRUE(told("Msg[Any] Field[") && told("expected ")) << entry.path() << told();
    ++n;
  }
  EXPECT_EQ(n, 16U);
}

}  // namespace

// Real texts through the definitions of the examples: what is read is written with the same bytes.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "csv_config.h"

namespace {

using namespace test::csvtext;

std::string content(const std::filesystem::path &file) {
  std::ifstream in(file, std::ios::binary);
  EXPECT_TRUE(in.good()) << file;
  return {std::istreambuf_iterator<char>(in), {}};
}

std::filesystem::path example(const std::string &sFile) {
  return std::filesystem::path(CVT2_SOURCE_DIR "/examples") / sFile;
}

class CsvSamples : public testing::Test {
 protected:
  void with(const std::string &sExample, const std::vector<std::string> &names) {
    for (const std::string &sName : names) {
      const std::string sFile = sName + ".xml";
      m_config.file("msg/" + sFile, content(example(sExample + "/Message/" + sFile)));
    }
    ASSERT_EQ(m_config.start(), 0) << told();
  }
  static void same(const std::string &sName, const std::string &sFile) {
    const std::string s = content(example(sFile));
    EXPECT_EQ(pass(sName, s), s) << sFile << "\n" << told();
  }

  CsvConfig m_config;
};

TEST_F(CsvSamples, TablesWithAllThatQuotingCanDoComeBackByteForByte) {
  with("csv-spectrum", {"Ab", "Abc", "People", "Pairs", "Places"});
  for (const char *const ps :
       {"empty", "empty_crlf", "newlines", "newlines_crlf", "simple", "simple_crlf", "utf8"}) {
    same("Abc", "csv-spectrum/data/" + std::string(ps) + ".csv");
  }
  same("Ab", "csv-spectrum/data/escaped_quotes.csv");
  same("Ab", "csv-spectrum/data/quotes_and_newlines.csv");
  same("People", "csv-spectrum/data/comma_in_quotes.csv");
  same("Pairs", "csv-spectrum/data/json.csv");
  same("Places", "csv-spectrum/data/location_coordinates.csv");
}

TEST_F(CsvSamples, APaymentTableComesBackByteForByte) {
  with("csv-pain", {"PaymentTable"});
  same("PaymentTable", "csv-pain/data/template.csv");
}

TEST_F(CsvSamples, BankFilesComeBackByteForByteWithTheirContinuedRecords) {
  with("bai2", {"Bai2File"});
  same("Bai2File", "bai2/data/sample1.txt");
  same("Bai2File", "bai2/data/sample2.txt");
  EXPECT_EQ(parse("Bai2File", content(example("bai2/data/bad/sample-parseError.txt"))), nullptr);
}

TEST_F(CsvSamples, FundsTransfersComeBackByteForByte) {
  with("fedwire", {"FedWire"});
  int nTexts = 0;
  for (const auto &entry : std::filesystem::directory_iterator(example("fedwire/data"))) {
    if (entry.path().extension() != ".txt") continue;
    same("FedWire", "fedwire/data/" + entry.path().filename().string());
    ++nTexts;
  }
  EXPECT_EQ(nTexts, 4);
  for (const auto &entry : std::filesystem::directory_iterator(example("fedwire/data/bad"))) {
    EXPECT_EQ(parse("FedWire", content(entry.path())), nullptr) << entry.path();
  }
}

// The real texts, damaged at every byte: none may do harm, and what is read must be written.
TEST_F(CsvSamples, DamagedTextsAreReadAsWhatTheyAreOrRefused) {
  with("bai2", {"Bai2File"});
  const std::string sGood = content(example("bai2/data/sample2.txt"));
  for (size_t i = 0; i < sGood.size(); ++i) {
    for (const char c : {',', '/', 'D'}) {
      std::string s = sGood;
      s[i] = c;
      const Text text = parse("Bai2File", s);
      if (text == nullptr) continue;
      EXPECT_NE(generate(text), "failed") << s << told();
    }
    test::clearLog();
  }
}

}  // namespace

// The accept and reject files of the JSON test suite, and the order of the manual.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "json_config.h"

namespace {

using namespace test::json;

std::string content(const std::string &sFile) {
  std::ifstream in(sFile, std::ios::binary);
  EXPECT_TRUE(in.good()) << sFile;
  return {std::istreambuf_iterator<char>(in), {}};
}

std::string sample(const std::string &sName) {
  return CVT2_SOURCE_DIR "/src/cvt/plug/json/samples/" + sName;
}

std::string trimmed(const std::string &s) {
  const char *const psBlank = " \t\r\n";
  return s.substr(s.find_first_not_of(psBlank),
                  s.find_last_not_of(psBlank) + 1 - s.find_first_not_of(psBlank));
}

class JsonSamples : public testing::Test {
 protected:
  void SetUp() override {
    m_config.file("msg/Any.xml", content(sample("suite/Message/Any.xml")));
    m_config.file("msg/Order.xml", content(sample("order/Message/Order.xml")));
    m_config.message("Skip", "psUnknown=\"skip\"", {field("A")});
    m_config.message("Keep", "", {field("O", "psKind=\"others\"")});
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  JsonConfig m_config;
};

TEST_F(JsonSamples, AMessageOfOneValueAcceptsExactlyWhatTheGrammarAccepts) {
  size_t nAccepted = 0;
  size_t nRefused = 0;
  for (const auto &entry : std::filesystem::directory_iterator(sample("suite/files"))) {
    const std::string s = content(entry.path());
    test::clearLog();
    if (entry.path().filename().string()[0] == 'y') {
      EXPECT_EQ(pass("Any", s), trimmed(s)) << entry.path() << told();
      ++nAccepted;
    } else {
      EXPECT_EQ(parse("Any", s), nullptr) << entry.path();
      EXPECT_TRUE(told("Msg[Any] Field[") && told("]: expected ")) << entry.path() << told();
      ++nRefused;
    }
  }
  EXPECT_EQ(nAccepted, 48U);
  EXPECT_EQ(nRefused, 94U);
}

// RFC 8259 leaves duplicate names to the reader; a definition refuses them.
TEST_F(JsonSamples, ObjectsOfADefinitionAreRefusedForADuplicateNameAlone) {
  for (const auto &entry : std::filesystem::directory_iterator(sample("suite/files"))) {
    const std::string sName = entry.path().filename().string();
    if (sName.rfind("y_object", 0) != 0) continue;
    const std::string s = content(entry.path());
    const bool fits = sName != "y_object_duplicated_key.json";
    for (const char *const psMsg : {"Skip", "Keep"})
      EXPECT_EQ(parse(psMsg, s) != nullptr, fits) << sName << told();
  }
}

TEST_F(JsonSamples, TheOrderComesBackByteForByte) {
  const std::string s = content(sample("order/order.json"));
  const Text text = parse("Order", s);
  ASSERT_NE(text, nullptr) << told();
  EXPECT_EQ(get(text, "Buyer"), "Smith & Sons \"Ltd\"");
  EXPECT_EQ(get(text, "Amount"), "1250.00");
  EXPECT_EQ(generate(text), s);
}

}  // namespace

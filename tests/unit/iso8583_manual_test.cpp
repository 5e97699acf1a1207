// The manual of the format `iso8583` says what the plug-in does.
#include <gtest/gtest.h>

#include <regex>

#include "iso8583/records.h"
#include "iso_config.h"

using namespace test::iso;

namespace {

std::string manual() {
  return contentOf(CVT2_SOURCE_DIR "/src/cvt/plug/iso8583/README.md");
}

std::string bytesOf(const std::string &sShown) {
  return sShown[0] == 'x' ? bytes(sShown.substr(1)) : sShown;
}

TEST(IsoManual, HasTheTableOfEveryRecord) {
  const std::string sManual = manual();
  for (const cvt::kit::RecordType *ptType : cvt::iso8583::kRecordTypes) {
    const std::string sTable = cvt::kit::markdownTable(*ptType);
    EXPECT_NE(sManual.find(sTable), std::string::npos) << ptType->name << " should have this table:\n"
                                                       << sTable;
  }
}

TEST(IsoManual, GivesAnExampleOfEveryAttribute) {
  const std::string sManual = manual();
  for (const cvt::kit::RecordType *ptType : cvt::iso8583::kRecordTypes) {
    for (const cvt::kit::Attribute &row : ptType->attributes) {
      EXPECT_NE(sManual.find(std::string(row.name) + "=\""), std::string::npos)
          << ptType->name << "." << row.name;
    }
  }
}

// Rows of: attributes of a field, its bytes, its value.
TEST(IsoManual, ExamplesOfFieldsHold) {
  const std::string sManual = manual();
  const std::regex row("\n\\| `(psType=[^`]*)` \\| `([^`]*)` \\| `([^`]*)` \\|");
  int nRows = 0;
  for (std::sregex_iterator it(sManual.begin(), sManual.end(), row); it != std::sregex_iterator();
       ++it, ++nRows) {
    IsoConfig config;
    config.message("M", "nWhole=\"1\"", {mti(), field("F", "nNumber=\"2\" " + (*it)[1].str())});
    ASSERT_EQ(config.start(), 0) << (*it)[0] << told();
    const std::string sBytes = "0200" + bitmap({2}) + bytesOf((*it)[2].str());
    const Wire wire = parse("M", sBytes);
    EXPECT_EQ(get(wire, "F"), (*it)[3].str()) << (*it)[0] << told();
    EXPECT_EQ(generate(wire), sBytes) << (*it)[0];
  }
  EXPECT_EQ(nRows, 14);
}

}  // namespace

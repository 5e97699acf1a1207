// The plug-in's manual says what the plug-in's tables say.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "csv/records.h"

namespace {

std::string manual() {
  std::ifstream in(CVT2_SOURCE_DIR "/src/cvt/plug/csv/README.md", std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

TEST(CsvManual, HasTheTableOfEveryRecordAsThePluginReadsIt) {
  const std::string sManual = manual();
  for (const cvt::kit::RecordType *ptType : cvt::csv::kRecordTypes) {
    const std::string sTable = cvt::kit::markdownTable(*ptType);
    EXPECT_NE(sManual.find(sTable), std::string::npos) << ptType->name << " should have this table:\n"
                                                       << sTable;
    EXPECT_NE(sManual.find("### `" + std::string(ptType->name) + "`"), std::string::npos);
  }
}

TEST(CsvManual, GivesAnExampleOfEveryAttribute) {
  const std::string sManual = manual();
  for (const cvt::kit::RecordType *ptType : cvt::csv::kRecordTypes) {
    for (const cvt::kit::Attribute &row : ptType->attributes) {
      EXPECT_NE(sManual.find(std::string(row.name) + "=\""), std::string::npos)
          << ptType->name << "." << row.name;
    }
  }
}

}  // namespace

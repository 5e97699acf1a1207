// The plug-in's manual says what the plug-in's tables say.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "example/records.h"

namespace {

TEST(ExampleManual, HasTheTableOfEveryRecordAsThePluginReadsItAndAnExampleOfEveryAttribute) {
  std::ifstream in(CVT2_SOURCE_DIR "/src/cvt/plug/example/README.md", std::ios::binary);
  const std::string manual(std::istreambuf_iterator<char>(in), {});
  for (const cvt::kit::RecordType *type : cvt::example::kRecordTypes) {
    const std::string table = cvt::kit::markdownTable(*type);
    EXPECT_NE(manual.find(table), std::string::npos) << type->name << " should have this table:\n" << table;
    for (const cvt::kit::Attribute &row : type->attributes) {
      EXPECT_NE(manual.find(std::string(row.name) + "=\""), std::string::npos)
          << type->name << "." << row.name;
    }
  }
}

}  // namespace

// The manual of the format `fix` says what the plug-in does.
#include <gtest/gtest.h>

#include <regex>

#include "fix/records.h"
#include "fix_config.h"

using namespace test::fix;

namespace {

std::string manual() {
  return contentOf(CVT2_SOURCE_DIR "/src/cvt/plug/fix/README.md");
}

std::string bytesOf(const std::string &sShown) {
  if (sShown[0] != 'x') return sShown;
  std::string sBytes;
  for (size_t i = 1; i + 1 < sShown.size(); i += 2) {
    sBytes += static_cast<char>(std::stoi(sShown.substr(i, 2), nullptr, 16));
  }
  return sBytes;
}

}  // namespace

TEST(FixManual, HasTheTableOfEveryRecord) {
  const std::string sManual = manual();
  for (const auto *type : {&cvt::fix::kFixMsg, &cvt::fix::kFixField, &cvt::fix::kFixRecord,
                           &cvt::fix::kFixGroup, &cvt::fix::kFixLoop}) {
    EXPECT_NE(sManual.find(cvt::kit::markdownTable(*type)), std::string::npos)
        << type->name << " should read:\n"
        << cvt::kit::markdownTable(*type);
  }
}

TEST(FixManual, ExamplesOfNumbersHold) {
  const std::string sManual = manual();
  const std::regex row("\n\\| `(nLen=[^`]*)` \\| `([^`]*)` \\| `([^`]*)` \\|");
  int nRows = 0;
  for (std::sregex_iterator it(sManual.begin(), sManual.end(), row); it != std::sregex_iterator();
       ++it, ++nRows) {
    FixConfig config;
    config.message("M", "", {field("F", (*it)[1].str())});
    ASSERT_EQ(config.start(), 0) << (*it)[0] << told();
    const Record message = parse("M", bytesOf((*it)[2].str()));
    EXPECT_EQ(get(message, "F"), (*it)[3].str()) << (*it)[0] << told();
    EXPECT_EQ(generate(message), bytesOf((*it)[2].str())) << (*it)[0];
  }
  EXPECT_EQ(nRows, 8);
}

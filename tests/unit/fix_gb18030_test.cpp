// Every character of two bytes of GB18030, through a field of the format `fix`.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "fix_config.h"

using namespace test::fix;

namespace {

constexpr size_t kCharacters = 23940;

std::vector<std::string> characters(const std::string &sName) {
  std::istringstream in(contentOf(CVT2_SOURCE_DIR "/tests/unit/gb18030/" + sName));
  std::vector<std::string> lines;
  for (std::string sLine; std::getline(in, sLine);) lines.push_back(sLine);
  if (lines.size() < 4) return {};
  lines.erase(lines.begin(), lines.begin() + 4);  // the heading
  return lines;
}

// Characters to which tables older than GB18030-2022 give private code points.
const std::set<std::string> kMoved = {"\xA6\xD9", "\xA6\xDA", "\xA6\xDB", "\xA6\xDC", "\xA6\xDD",
                                      "\xA6\xDE", "\xA6\xDF", "\xA6\xEC", "\xA6\xED", "\xA6\xF3",
                                      "\xA3\xA0", "\xA8\xBC", "\xFE\x59", "\xFE\x61", "\xFE\x66",
                                      "\xFE\x67", "\xFE\x6D", "\xFE\x7E", "\xFE\x90", "\xFE\xA0"};

// Characters that have code points in plane 2, and in the published table private ones.
const std::map<std::string, std::string> kPlane2 = {{"\xFE\x51", "\U00020087"}, {"\xFE\x52", "\U00020089"},
                                                    {"\xFE\x53", "\U000200CC"}, {"\xFE\x6C", "\U000215D7"},
                                                    {"\xFE\x76", "\U0002298F"}, {"\xFE\x91", "\U000241FE"}};

// U+E000 to U+F8FF in UTF-8.
bool isPrivate(const std::string &sText) {
  return sText.size() == 3 && sText >= "\xEE\x80\x80" && sText <= "\xEF\xA3\xBF";
}

// Whether a character that differs from the published table does so as one of the known tables.
bool isKnown(const std::string &sBytes, const std::string &sText) {
  const auto plane2 = kPlane2.find(sBytes);
  return (plane2 != kPlane2.end() && plane2->second == sText) ||
         (kMoved.count(sBytes) == 1 && isPrivate(sText));
}

}  // namespace

TEST(FixGb18030, EveryCharacterOfTwoBytesIsThePublishedOne) {
  FixConfig config;
  config.message("M", "psCharset=\"GB18030\"", {field("F", "nLen=\"2\"")});
  ASSERT_EQ(config.start(), 0) << told();
  const std::vector<std::string> bytes = characters("gb18030_in.txt");
  const std::vector<std::string> expected = characters("gb18030_in_ref.txt");
  ASSERT_EQ(bytes.size(), kCharacters);
  ASSERT_EQ(expected.size(), kCharacters);
  size_t nOther = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    ASSERT_EQ(bytes[i].size(), 2U);
    const Record message = parse("M", bytes[i]);
    ASSERT_NE(message, nullptr) << i << told();
    const std::string sFound = get(message, "F");
    ASSERT_EQ(generate(message, 2), bytes[i]) << i;
    if (sFound == expected[i]) continue;
    ++nOther;
    EXPECT_TRUE(isKnown(bytes[i], sFound)) << i << " " << sFound;
  }
  EXPECT_LE(nOther, kMoved.size());
}

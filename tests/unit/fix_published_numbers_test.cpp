// Packed, BCD and zoned numbers of published test cases: bytes in, value or refusal out, and the same bytes back. They
// are from github.com/apache/daffodil, commit e8ef2e81995bbf326c48f1973ea106b124e98afd (Apache-2.0), files packed.tdml
// and zoned.tdml below daffodil-test/src/test/resources/org/apache/daffodil/section13.
//
// Left out: cases whose subject is the other system's schema (implicit lengths, alignment and lengths in bits, types
// and patterns of its numbers), sequences with separators between numbers, and what this format does not read: the signs
// of CA Realia (ZonedCARealiaModified02, 05) and of Tandem (ZonedTandemModified02, 05).
#include <gtest/gtest.h>

#include "fix_config.h"

using namespace test::fix;

namespace {

struct Published {
  const char *sFile;
  const char *sName;
  const char *sField;
  const char *sBytes;  // text, or x and hexadecimal digits
  const char *sValue;  // null: refused
};

constexpr const char *kPacked3 = "nLen=\"3\" psType=\"packed\" psSign=\"trailing\"";
constexpr const char *kPacked2 = "nLen=\"2\" psType=\"packed\" psSign=\"trailing\"";
constexpr const char *kPackedPoint = "nLen=\"3\" psType=\"packed\" psSign=\"trailing\" nDecimals=\"2\"";
constexpr const char *kBcd4 = "nLen=\"4\" psType=\"bcd\"";
constexpr const char *kBcd2 = "nLen=\"2\" psType=\"bcd\"";
constexpr const char *kBcdPoint = "nLen=\"2\" psType=\"bcd\" nDecimals=\"2\"";
constexpr const char *kDate = "nLen=\"3\" psType=\"bcd\"";
constexpr const char *kFront = "nLen=\"2\" psType=\"bcd\" psSign=\"leading\"";
constexpr const char *kFrontPoint = "nLen=\"2\" psType=\"bcd\" psSign=\"leading\" nDecimals=\"2\"";
constexpr const char *kAsciiFirst = "nLen=\"10\" psType=\"zoned-ascii\" psSign=\"leading\"";
constexpr const char *kAsciiLast = "nLen=\"10\" psType=\"zoned-ascii\" psSign=\"trailing\"";
constexpr const char *kAscii = "nLen=\"10\" psType=\"zoned-ascii\"";
constexpr const char *kOverFirst = "nLen=\"10\" psType=\"zoned-overpunch\" psSign=\"leading\"";
constexpr const char *kOverLast = "nLen=\"10\" psType=\"zoned-overpunch\" psSign=\"trailing\"";
constexpr const char *kOver = "nLen=\"10\" psType=\"zoned-overpunch\"";

// A date is its digits, as a number: 1961-02-01 as MMddyy is 020161.
constexpr Published kCases[] = {
    {"packed", "hexCharset01", kBcd2, "x1988", "1988"},
    {"packed", "hexCharset02", kFront, "xD123", "-123"},
    {"packed", "hexCharset03", kBcdPoint, "x1234", "12.34"},
    {"packed", "hexCharset04", kDate, "x020161", "20161"},
    {"packed", "packedCharset01", kPacked3, "x01988C", "1988"},
    {"packed", "packedCharset02", kPacked2, "x123D", "-123"},
    {"packed", "packedCharset03", kPackedPoint, "x01234C", "12.34"},
    {"packed", "packedCharset04", kDate, "x020161", "20161"},
    {"packed", "packedCharset05", kPacked2, "x123B", nullptr},
    {"packed", "packedCharset06", kPacked2, "xF23D", nullptr},
    {"packed", "packedCharset07", kPacked2, "x1F3D", nullptr},
    {"packed", "bcdCharset01", kBcd4, "x00000011", "11"},
    {"packed", "bcdCharset02", kBcd2, "x0123", "123"},
    {"packed", "bcdCharset03", kBcdPoint, "x1234", "12.34"},
    {"packed", "bcdCharset04", kDate, "x020161", "20161"},
    {"packed", "bcdCharset05", kBcd2, "x01F3", nullptr},
    {"packed", "bcdCharset06", kBcd2, "x012F", nullptr},
    {"packed", "IBM4690Charset01", kFront, "x1088", "1088"},
    {"packed", "IBM4690Charset02", kFront, "xD123", "-123"},
    {"packed", "IBM4690Charset03", kFrontPoint, "x1234", "12.34"},
    {"packed", "IBM4690Charset04", kDate, "x020161", "20161"},
    {"packed", "IBM4690Charset05", kFront, "xB123", nullptr},
    {"packed", "IBM4690Charset06", kFront, "xD1F3", nullptr},
    {"packed", "IBM4690Charset07", kFront, "xD12F", nullptr},
    {"zoned", "ZonedStandard01", kAsciiFirst, "1234567890", "1234567890"},
    {"zoned", "ZonedStandard02", kAsciiFirst, "q234567890", "-1234567890"},
    {"zoned", "ZonedStandard03", kAsciiFirst, "z234567890", nullptr},
    {"zoned", "ZonedStandard04", kAscii, "1234567890", "1234567890"},
    {"zoned", "ZonedStandard05", kAsciiLast, "123456789p", "-1234567890"},
    {"zoned", "ZonedTranslatedEBCDIC01", kOverFirst, "A234567890", "1234567890"},
    {"zoned", "ZonedTranslatedEBCDIC02", kOverFirst, "J234567890", "-1234567890"},
    {"zoned", "ZonedTranslatedEBCDIC03", kOverFirst, "z234567890", nullptr},
    {"zoned", "ZonedTranslatedEBCDIC04", kOver, "1234567890", "1234567890"},
    {"zoned", "ZonedTranslatedEBCDIC05", kOverLast, "123456789}", "-1234567890"},
    {"zoned", "ZonedCARealiaModified03", kAsciiFirst, "z234567890", nullptr},
    {"zoned", "ZonedTandemModified03", kAsciiFirst, "z234567890", nullptr},
};

std::string bytesOf(const std::string &sShown) {
  if (sShown[0] != 'x') return sShown;
  std::string sBytes;
  for (size_t i = 1; i < sShown.size(); i += 2) {
    sBytes += static_cast<char>(std::stoi(sShown.substr(i, 2), nullptr, 16));
  }
  return sBytes;
}

class FixPublishedNumbers : public testing::TestWithParam<Published> {};

}  // namespace

TEST_P(FixPublishedNumbers, AreReadAsPublished) {
  const Published &one = GetParam();
  const std::string sBytes = bytesOf(one.sBytes);
  FixConfig config;
  config.message("M", "", {field("F", one.sField)});
  ASSERT_EQ(config.start(), 0) << told();
  const Record message = parse("M", sBytes);
  if (one.sValue == nullptr) {
    EXPECT_EQ(message, nullptr);
    EXPECT_EQ(fault().rfind("Msg[M] Field[F] Offset[", 0), 0U) << told();
    return;
  }
  ASSERT_NE(message, nullptr) << told();
  EXPECT_EQ(get(message, "F"), one.sValue);
  EXPECT_EQ(generate(message), sBytes);
}

INSTANTIATE_TEST_SUITE_P(All, FixPublishedNumbers, testing::ValuesIn(kCases), [](const auto &one) {
  return std::string(one.param.sFile) + "_" + one.param.sName;
});

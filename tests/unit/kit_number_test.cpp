#include "kit/number.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

using namespace cvt::kit;

namespace {

// Bytes from hexadecimal digits.
std::string hex(const std::string &digits) {
  std::string bytes;
  for (size_t i = 0; i < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

// The canonical text, or "!" and the offset of the error.
std::string read(const NumberSpec &spec, const std::string &bytes) {
  char out[kCanonicalRoom];
  const NumberResult result = readNumber(spec, bytes.data(), bytes.size(), out);
  return result.expected != nullptr ? "!" + std::to_string(result.at) : std::string(out, result.length);
}

// The bytes, or "!" and what was expected.
std::string write(const NumberSpec &spec, const std::string &value, size_t bytes) {
  std::string out(bytes, '?');
  const NumberResult result = writeNumber(spec, value, out.data(), bytes);
  return result.expected != nullptr ? "!" + std::string(result.expected) : out;
}

// Reads as `value`, and `value` writes the same bytes.
void expectBoth(const NumberSpec &spec, const std::string &bytes, const std::string &value) {
  EXPECT_EQ(read(spec, bytes), value);
  EXPECT_EQ(write(spec, value, bytes.size()), bytes);
}

NumberSpec make(NumberForm form, NumberSign sign, int decimals = 0) {
  NumberSpec spec;
  spec.form = form;
  spec.sign = sign;
  spec.decimals = decimals;
  return spec;
}

NumberSpec text(NumberSign sign, int decimals = 0) {
  return make(NumberForm::Text, sign, decimals);
}

NumberSpec filled(NumberFill fill, NumberSign sign, bool plusBlank, int decimals, bool point) {
  NumberSpec spec = text(sign, decimals);
  spec.fill = fill;
  spec.plusBlank = plusBlank;
  spec.point = point;
  return spec;
}

}  // namespace

TEST(KitNumber, ZeroFilledDigitsLoseTheirLeadingZerosAndGetThemBack) {
  expectBoth(text(NumberSign::None), "000123", "123");
  expectBoth(text(NumberSign::None), "000000", "0");
  expectBoth(text(NumberSign::None), "9", "9");
}

TEST(KitNumber, ImpliedDecimalsStandBehindThePoint) {
  expectBoth(text(NumberSign::None, 2), "0000001234", "12.34");
  expectBoth(text(NumberSign::None, 2), "05", "0.05");
  expectBoth(text(NumberSign::None, 3), "000", "0.000");
}

TEST(KitNumber, RealPointStandsBeforeTheDecimals) {
  NumberSpec spec = text(NumberSign::None, 2);
  spec.point = true;
  expectBoth(spec, "0012.34", "12.34");
  expectBoth(spec, ".34", "0.34");
  EXPECT_EQ(read(spec, "0012345"), "!4");
  EXPECT_EQ(read(spec, "00.2.34"), "!2");
}

TEST(KitNumber, SignStandsAtTheEdgeOfZeroFilledText) {
  expectBoth(text(NumberSign::Leading, 2), "+00123", "1.23");
  expectBoth(text(NumberSign::Leading, 2), "-00123", "-1.23");
  expectBoth(text(NumberSign::Trailing), "00123-", "-123");
  NumberSpec blank = text(NumberSign::Trailing);
  blank.plusBlank = true;
  expectBoth(blank, "00123 ", "123");
  EXPECT_EQ(read(blank, "00123+"), "!5");
  EXPECT_EQ(read(text(NumberSign::Leading), "000123"), "!0");
}

TEST(KitNumber, SignOfNegativeZeroIsKept) {
  expectBoth(text(NumberSign::Leading, 2), "-000", "-0.00");
  expectBoth(make(NumberForm::Packed, NumberSign::Trailing), hex("000D"), "-0");
  expectBoth(make(NumberForm::ZonedEbcdic, NumberSign::Trailing), hex("F0D0"), "-0");
}

TEST(KitNumber, BlankFilledTextIsEdited) {
  const auto left = NumberFill::BlankLeft;
  expectBoth(filled(left, NumberSign::None, false, 2, true), "   12.34", "12.34");
  expectBoth(filled(left, NumberSign::None, false, 2, true), "    0.05", "0.05");
  expectBoth(filled(left, NumberSign::Leading, true, 2, true), "  -12.34", "-12.34");
  expectBoth(filled(left, NumberSign::Leading, true, 2, true), "   12.34", "12.34");
  expectBoth(filled(left, NumberSign::Leading, false, 0, false), "  +12", "12");
  expectBoth(filled(left, NumberSign::Trailing, true, 0, false), "  12 ", "12");
  expectBoth(filled(left, NumberSign::Trailing, true, 0, false), "  12-", "-12");
  expectBoth(filled(NumberFill::BlankRight, NumberSign::None, false, 0, false), "12   ", "12");
  expectBoth(filled(NumberFill::BlankRight, NumberSign::Leading, true, 1, true), "-1.2  ", "-1.2");
  expectBoth(filled(NumberFill::BlankRight, NumberSign::Trailing, true, 0, false), "12   ", "12");
  expectBoth(filled(NumberFill::BlankRight, NumberSign::Trailing, false, 0, false), "12+  ", "12");
  expectBoth(filled(left, NumberSign::None, false, 2, false), "   123", "1.23");
  expectBoth(filled(left, NumberSign::None, false, 2, false), "   005", "0.05");
}

TEST(KitNumber, BlankFilledTextThatWouldNotComeBackIsRefused) {
  const auto left = NumberFill::BlankLeft;
  EXPECT_EQ(read(filled(left, NumberSign::None, false, 0, false), "  012"), "!2");
  EXPECT_EQ(read(filled(left, NumberSign::None, false, 2, true), "  .34"), "!2");
  EXPECT_EQ(read(filled(left, NumberSign::None, false, 0, false), "12   "), "!2");
  EXPECT_EQ(read(filled(left, NumberSign::Trailing, true, 0, false), "   12"), "!4");
  EXPECT_EQ(read(filled(left, NumberSign::Leading, true, 0, false), "12345"), "!0");
  EXPECT_EQ(read(filled(left, NumberSign::Leading, true, 0, false), "  +12"), "!2");
  EXPECT_EQ(read(filled(left, NumberSign::None, false, 0, false), "     "), "!0");
  EXPECT_EQ(read(filled(NumberFill::BlankRight, NumberSign::None, false, 0, false), " 12  "), "!0");
}

TEST(KitNumber, LenientTextAcceptsBothPlusesAndLeadingZeros) {
  NumberSpec spec = filled(NumberFill::BlankLeft, NumberSign::Leading, true, 0, false);
  spec.lenient = true;
  EXPECT_EQ(read(spec, "  012"), "12");
  EXPECT_EQ(read(spec, "  +12"), "12");
  EXPECT_EQ(read(spec, "12345"), "12345");
}

TEST(KitNumber, AnythingButDigitsIsRefusedWithItsOffset) {
  EXPECT_EQ(read(text(NumberSign::None), "00CCC00004"), "!2");
  EXPECT_EQ(read(text(NumberSign::None), "12 4"), "!2");
  EXPECT_EQ(read(text(NumberSign::None), "     "), "!0");
}

TEST(KitNumber, PackedIsStrictAboutDigitsAndSign) {
  const NumberSpec spec = make(NumberForm::Packed, NumberSign::Trailing);
  expectBoth(spec, hex("01988C"), "1988");
  expectBoth(spec, hex("123D"), "-123");
  expectBoth(make(NumberForm::Packed, NumberSign::Trailing, 2), hex("01234C"), "12.34");
  expectBoth(make(NumberForm::Packed, NumberSign::None), hex("001F"), "1");
  EXPECT_EQ(read(spec, hex("123B")), "!1");
  EXPECT_EQ(read(spec, hex("F23D")), "!0");
  EXPECT_EQ(read(spec, hex("1F3D")), "!0");
  EXPECT_EQ(read(spec, hex("123F")), "!1");
  EXPECT_EQ(read(make(NumberForm::Packed, NumberSign::None), hex("123C")), "!1");
}

TEST(KitNumber, LenientPackedReadsTheOtherSigns) {
  NumberSpec spec = make(NumberForm::Packed, NumberSign::Trailing);
  spec.lenient = true;
  EXPECT_EQ(read(spec, hex("123A")), "123");
  EXPECT_EQ(read(spec, hex("123B")), "-123");
  EXPECT_EQ(read(spec, hex("123E")), "123");
  EXPECT_EQ(read(spec, hex("123F")), "123");
  EXPECT_EQ(read(spec, hex("1239")), "!1");
  spec.sign = NumberSign::None;
  EXPECT_EQ(read(spec, hex("123C")), "123");
  EXPECT_EQ(read(spec, hex("123D")), "!1");
}

TEST(KitNumber, LenientZonedReadsUnsignedDigitsAsPlus) {
  NumberSpec spec = make(NumberForm::ZonedEbcdic, NumberSign::Trailing);
  spec.lenient = true;
  EXPECT_EQ(read(spec, hex("F1F2F3")), "123");
  EXPECT_EQ(read(spec, hex("F1F2B3")), "-123");
  spec.form = NumberForm::ZonedTranslated;
  EXPECT_EQ(read(spec, "123"), "123");
  EXPECT_EQ(read(spec, "12}"), "-120");
}

TEST(KitNumber, BcdHasTwoDigitsAByte) {
  expectBoth(make(NumberForm::Bcd, NumberSign::None), hex("00000011"), "11");
  expectBoth(make(NumberForm::Bcd, NumberSign::None), hex("0123"), "123");
  expectBoth(make(NumberForm::Bcd, NumberSign::None, 2), hex("1234"), "12.34");
  EXPECT_EQ(read(make(NumberForm::Bcd, NumberSign::None), hex("01F3")), "!1");
  EXPECT_EQ(read(make(NumberForm::Bcd, NumberSign::None), hex("012F")), "!1");
}

TEST(KitNumber, BcdMayHaveItsMinusInFront) {
  const NumberSpec front = make(NumberForm::Bcd, NumberSign::Leading);
  expectBoth(front, hex("1088"), "1088");
  expectBoth(front, hex("D123"), "-123");
  expectBoth(front, hex("D000"), "-0");
  expectBoth(make(NumberForm::Bcd, NumberSign::Leading, 2), hex("D5"), "-0.05");
  EXPECT_EQ(read(front, hex("B123")), "!0");
  EXPECT_EQ(read(front, hex("D1D3")), "!1");
  char bytes[2];
  EXPECT_STREQ(cvt::kit::writeNumber(front, "-1234", bytes, 2).expected, "no more digits than the field has");
  const NumberSpec behind = make(NumberForm::Bcd, NumberSign::Trailing);
  EXPECT_STREQ(cvt::kit::writeNumber(behind, "-0", bytes, 2).expected, "a number that is not negative");
}

TEST(KitNumber, ZonedAsciiCarriesTheSignInTheFirstOrLastDigit) {
  expectBoth(make(NumberForm::ZonedAscii, NumberSign::Leading), "1234567890", "1234567890");
  expectBoth(make(NumberForm::ZonedAscii, NumberSign::Leading), "q234567890", "-1234567890");
  expectBoth(make(NumberForm::ZonedAscii, NumberSign::Trailing), "123456789p", "-1234567890");
  EXPECT_EQ(read(make(NumberForm::ZonedAscii, NumberSign::Leading), "z234567890"), "!0");
  EXPECT_EQ(read(make(NumberForm::ZonedAscii, NumberSign::None), "q234567890"), "!0");
}

TEST(KitNumber, ZonedTranslatedUsesTheOverpunchLetters) {
  expectBoth(make(NumberForm::ZonedTranslated, NumberSign::Leading), "A234567890", "1234567890");
  expectBoth(make(NumberForm::ZonedTranslated, NumberSign::Leading), "J234567890", "-1234567890");
  expectBoth(make(NumberForm::ZonedTranslated, NumberSign::Trailing), "123456789}", "-1234567890");
  expectBoth(make(NumberForm::ZonedTranslated, NumberSign::Trailing), "123456789{", "1234567890");
  expectBoth(make(NumberForm::ZonedTranslated, NumberSign::None), "1234567890", "1234567890");
  EXPECT_EQ(read(make(NumberForm::ZonedTranslated, NumberSign::Leading), "z234567890"), "!0");
}

TEST(KitNumber, ZonedEbcdicUsesTheZoneNibble) {
  expectBoth(make(NumberForm::ZonedEbcdic, NumberSign::None), hex("F1F2F3"), "123");
  expectBoth(make(NumberForm::ZonedEbcdic, NumberSign::Trailing, 2), hex("F1F2D3"), "-1.23");
  expectBoth(make(NumberForm::ZonedEbcdic, NumberSign::Leading), hex("C1F2F3"), "123");
  EXPECT_EQ(read(make(NumberForm::ZonedEbcdic, NumberSign::None), hex("F1C2F3")), "!1");
  EXPECT_EQ(read(make(NumberForm::ZonedEbcdic, NumberSign::Trailing), hex("F1F2F3")), "!2");
}

TEST(KitNumber, BinaryKnowsBothByteOrdersAndSigns) {
  expectBoth(make(NumberForm::BinaryBig, NumberSign::None), hex("0102"), "258");
  expectBoth(make(NumberForm::BinaryLittle, NumberSign::None), hex("0201"), "258");
  expectBoth(make(NumberForm::BinaryBig, NumberSign::Trailing), hex("FFFF"), "-1");
  expectBoth(make(NumberForm::BinaryBig, NumberSign::None), hex("FFFFFFFFFFFFFFFF"), "18446744073709551615");
  expectBoth(make(NumberForm::BinaryBig, NumberSign::Trailing), hex("8000000000000000"),
             "-9223372036854775808");
  expectBoth(make(NumberForm::BinaryLittle, NumberSign::Trailing, 2), hex("2EFBFF"), "-12.34");
  EXPECT_EQ(write(make(NumberForm::BinaryBig, NumberSign::None), "256", 1),
            "!a number that the field's bytes can hold");
  EXPECT_EQ(write(make(NumberForm::BinaryBig, NumberSign::Trailing), "-129", 1),
            "!a number that the field's bytes can hold");
  EXPECT_EQ(write(make(NumberForm::BinaryBig, NumberSign::Trailing), "-128", 1), hex("80"));
  EXPECT_EQ(write(make(NumberForm::BinaryBig, NumberSign::None), "99999999999999999999", 8),
            "!a number that the field's bytes can hold");
}

TEST(KitNumber, WritingNeverCutsSilently) {
  EXPECT_EQ(write(text(NumberSign::None), "1234", 3), "!no more digits than the field has");
  EXPECT_EQ(write(text(NumberSign::None, 2), "1.234", 6), "!no more decimals than the field has");
  EXPECT_EQ(write(text(NumberSign::None, 2), "1.230", 6), "000123");
  EXPECT_EQ(write(text(NumberSign::None), "-1", 3), "!a number that is not negative");
  EXPECT_EQ(write(text(NumberSign::Leading), "12345", 5), "!no more digits than the field has");
  EXPECT_EQ(write(make(NumberForm::Packed, NumberSign::Trailing), "1000", 2),
            "!no more digits than the field has");
  for (const char *bad : {"", "-", "+", ".", "1a", "a", " 1", "1 ", "1.2.3", "--1", "1e5", "0x10"}) {
    EXPECT_EQ(write(text(NumberSign::Leading, 2), bad, 8), "!a decimal number") << bad;
  }
}

TEST(KitNumber, WritingAcceptsTextThatIsNotCanonical) {
  EXPECT_EQ(write(text(NumberSign::None, 2), "0007", 6), "000700");
  EXPECT_EQ(write(text(NumberSign::None, 2), "+7.5", 6), "000750");
  EXPECT_EQ(write(text(NumberSign::None, 2), ".5", 6), "000050");
  EXPECT_EQ(write(text(NumberSign::None, 2), "5.", 6), "000500");
  EXPECT_EQ(write(text(NumberSign::None), std::string(100, '0') + "7", 3), "007");
}

TEST(KitNumber, FormsThatCannotHaveALengthHaveNoDigits) {
  EXPECT_EQ(digitsOf(text(NumberSign::None), 31), 31);
  EXPECT_EQ(digitsOf(text(NumberSign::None), 32), 0);
  EXPECT_EQ(digitsOf(text(NumberSign::Leading), 1), 0);
  EXPECT_EQ(digitsOf(text(NumberSign::None, 3), 2), 0);
  EXPECT_EQ(digitsOf(make(NumberForm::Packed, NumberSign::Trailing), 16), 31);
  EXPECT_EQ(digitsOf(make(NumberForm::Packed, NumberSign::Trailing), 17), 0);
  EXPECT_EQ(digitsOf(make(NumberForm::Bcd, NumberSign::None), 15), 30);
  EXPECT_EQ(digitsOf(make(NumberForm::BinaryBig, NumberSign::None), 9), 0);
  EXPECT_EQ(digitsOf(make(NumberForm::BinaryBig, NumberSign::None), 0), 0);
}

TEST(KitNumber, WhatIsReadIsWrittenWithTheSameBytes) {
  std::mt19937 random(7);
  const NumberForm forms[] = {NumberForm::Text,      NumberForm::ZonedEbcdic,     NumberForm::ZonedAscii,
                              NumberForm::Packed,    NumberForm::ZonedTranslated, NumberForm::Bcd,
                              NumberForm::BinaryBig, NumberForm::BinaryLittle};
  int read = 0;
  for (int round = 0; round < 400000; ++round) {
    NumberSpec spec;
    spec.form = forms[random() % 8];
    spec.sign = static_cast<NumberSign>(random() % 3);
    spec.fill = static_cast<NumberFill>(random() % 3);
    spec.decimals = static_cast<int>(random() % 4);
    spec.point = random() % 2 == 0;
    spec.plusBlank = random() % 2 == 0;
    const size_t length = 1 + random() % 9;
    if (digitsOf(spec, length) == 0) continue;
    const char *alphabet = spec.form == NumberForm::Text ? "0123456789+- .00  " : nullptr;
    std::string bytes(length, '\0');
    for (char &c : bytes)
      c = alphabet != nullptr ? alphabet[random() % 18] : static_cast<char>(random() % 256);
    char out[kCanonicalRoom];
    const NumberResult result = readNumber(spec, bytes.data(), length, out);
    if (result.expected != nullptr) {
      EXPECT_LT(result.at, length);
      continue;
    }
    ++read;
    ASSERT_EQ(write(spec, std::string(out, result.length), length), bytes)
        << std::string(out, result.length) << " form " << static_cast<int>(spec.form) << " sign "
        << static_cast<int>(spec.sign) << " fill " << static_cast<int>(spec.fill) << " decimals "
        << spec.decimals << " point " << spec.point << " blank " << spec.plusBlank;
  }
  EXPECT_GT(read, 20000);
}

// Values of plain digits have ways of their own; one with a plus takes the general way.
TEST(KitNumber, APlusInFrontOfAValueChangesNothing) {
  std::mt19937 random(11);
  const NumberForm forms[] = {NumberForm::Text, NumberForm::Packed, NumberForm::Bcd, NumberForm::BinaryBig,
                              NumberForm::ZonedEbcdic};
  int written = 0;
  for (int round = 0; round < 200000; ++round) {
    NumberSpec spec;
    spec.form = forms[random() % 5];
    spec.sign = static_cast<NumberSign>(random() % 3);
    spec.fill = static_cast<NumberFill>(random() % 3);
    spec.decimals = static_cast<int>(random() % 4);
    spec.point = random() % 2 == 0;
    const size_t length = 1 + random() % 40;
    if (digitsOf(spec, length) == 0) continue;
    std::string value(random() % 20, '0');
    for (char &c : value) c = static_cast<char>('0' + random() % 10);
    if (random() % 4 == 0) value.insert(0, random() % 20, '0');
    if (random() % 4 != 0) value += "." + std::string("1203").substr(0, random() % 5);
    if (random() % 50 == 0) value += "x";
    const std::string bytes = write(spec, value, length);
    ASSERT_EQ(bytes, write(spec, "+" + value, length))
        << value << " form " << static_cast<int>(spec.form) << " sign " << static_cast<int>(spec.sign)
        << " fill " << static_cast<int>(spec.fill) << " decimals " << spec.decimals << " point " << spec.point
        << " in " << length;
    if (bytes[0] != '!') ++written;
  }
  EXPECT_GT(written, 20000);
}

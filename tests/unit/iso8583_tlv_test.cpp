// BER-TLV in a data element of the format `iso8583`.
#include <gtest/gtest.h>

#include "iso_config.h"

using namespace test::iso;

namespace {

class Tlv : public testing::Test {
 protected:
  void define(const std::vector<FormatNode> &members, const std::string &sGroup = "") {
    m_config.message(
        "M", "nWhole=\"1\"",
        {mti(), group("G", "IsoTlv", "nNumber=\"55\" psPrefix=\"LLL\" psPrefixCoding=\"binary\" " + sGroup,
                      members)});
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  static std::string message(const std::string &sHex) {
    const std::string sContent = bytes(sHex);
    std::string s = "0200" + bitmap({55});
    s += static_cast<char>(sContent.size() >> 8);
    s += static_cast<char>(sContent.size() & 255);
    return s + sContent;
  }

  static void expectBack(const std::string &sHex) { expectBecomes(sHex, sHex); }

  static void expectBecomes(const std::string &sHex, const std::string &sAgain) {
    const Wire wire = parse("M", message(sHex));
    ASSERT_NE(wire, nullptr) << told();
    EXPECT_EQ(generate(wire), message(sAgain)) << told();
  }

  static void expectRefused(const std::string &sHex, const std::string &sTold) {
    test::clearLog();
    EXPECT_EQ(parse("M", message(sHex)), nullptr) << sHex;
    EXPECT_EQ(fault(), "Msg[M] Field[" + sTold);
  }

  static Wire with(const std::vector<std::pair<std::string, std::string>> &values) {
    Wire wire = create("M");
    set(wire, "Mti", "0200");
    for (const auto &[sName, sValue] : values) set(wire, sName, sValue);
    return wire;
  }

  static void expectNotWritten(const Wire &wire, const std::string &sTold) {
    test::clearLog();
    EXPECT_EQ(generate(wire), "failed");
    EXPECT_EQ(fault(), "Msg[M] Field[" + sTold);
  }

  IsoConfig m_config;
};

const FormatNode kAmount = field("Amount", "psTag=\"9F02\" psType=\"n\" psCoding=\"bcd\" nLen=\"12\"");
const FormatNode kCountry = field("Country", "psTag=\"9F1A\" psType=\"n\" psCoding=\"bcd\" nLen=\"3\"");
const FormatNode kSerial = field("Serial", "psTag=\"9F1E\" psType=\"an\" nMaxLen=\"8\"");
const FormatNode kTvr = field("Tvr", "psTag=\"95\" psType=\"b\" nMaxLen=\"70000\"");
const FormatNode kOthers = field("Others", "psKind=\"others\"");
const FormatNode kOrder = field("Order", "psKind=\"order\"");

TEST_F(Tlv, KnownTagsAreFields) {
  define({kAmount, kCountry, kSerial, kTvr});
  const std::string s = "9F0206000000012345 9F1A020554 9F1E04 41423132 95028000";
  const Wire wire = parse("M", message(s));
  ASSERT_NE(wire, nullptr) << told();
  EXPECT_EQ(get(wire, "Amount"), "000000012345");
  EXPECT_EQ(get(wire, "Country"), "554");
  EXPECT_EQ(get(wire, "Serial"), "AB12");
  EXPECT_EQ(get(wire, "Tvr"), "8000");
  EXPECT_EQ(generate(wire), message(s));
  EXPECT_EQ(generate(with({{"Country", "554"}})), message("9F1A020554"));
  EXPECT_EQ(generate(with({})), "0200" + bitmap({}));
}

TEST_F(Tlv, TagsStandInTheOrderOfTheDefinitionUnlessAFieldKeepsTheirs) {
  define({kAmount, kCountry});
  expectBecomes("9F1A020554 9F0206000000012345", "9F0206000000012345 9F1A020554");
  cvtEnd();
  define({kAmount, kCountry, kOrder});
  expectBack("9F1A020554 9F0206000000012345");
  EXPECT_EQ(get(parse("M", message("9F1A020554 9F0206000000012345")), "Order"), "9F1A 9F02");
}

TEST_F(Tlv, UnknownTagsAreRefusedOrKept) {
  define({kCountry});
  expectRefused(
      "9F1A020554 DF81290100",
      "G] Offset[27]: expected tags that the definition has, found DF8129. Define it, or a field of psKind "
      "others that keeps unknown ones.");
  cvtEnd();
  define({kCountry, kOthers});
  expectBecomes("DF81290100 9F1A020554 5000", "9F1A020554 DF81290100 5000");
  EXPECT_EQ(get(parse("M", message("DF81290100 9F1A020554 5000")), "Others"), "DF812901005000");
  cvtEnd();
  define({kCountry, kTvr, kOthers, kOrder});
  expectBack("DF81290100 9F1A020554 5000 9500 DF81290101");
  EXPECT_EQ(get(parse("M", message("DF81290100 9F1A020554 5000")), "Order"), "DF8129 9F1A 50");
}

TEST_F(Tlv, WhatAConverterChangesIsWrittenAndTheOrderKeptOtherwise) {
  define({kCountry, kTvr, kSerial, kOthers, kOrder});
  const Wire wire = parse("M", message("5000 9500 9F1A020554"));
  ASSERT_NE(wire, nullptr) << told();
  set(wire, "Serial", "X");
  set(wire, "Country", "1");
  EXPECT_EQ(generate(wire), message("5000 9500 9F1A020001 9F1E0158"));
  set(wire, "Order", "");
  EXPECT_EQ(generate(wire), message("9F1A020001 9500 9F1E0158 5000"));
}

TEST_F(Tlv, OrderAndOthersMustFit) {
  define({kCountry, kTvr, kOthers, kOrder});
  expectNotWritten(
      with({{"Order", "50 51"}, {"Others", "51005000"}}),
      "G.Order] Offset[22]: expected the unknown tags in the order of their values, found 50 where the "
      "value has 51. Leave the order empty: tags then stand in the order of the definition.");
  expectNotWritten(
      with({{"Order", "50"}}),
      "G.Order] Offset[22]: expected the unknown tags in the order of their values, found 50 where the "
      "value has none. Leave the order empty: tags then stand in the order of the definition.");
  expectNotWritten(with({{"Order", "95 95"}, {"Tvr", "00"}}),
                   "G.Order] Offset[25]: expected a tag once, found 95 again.");
  for (const char *const psBad : {"9", "9X", "95 ", "95  95", "0102030405", "00", "0095", "9F", "9502"}) {
    test::clearLog();
    EXPECT_EQ(generate(with({{"Order", psBad}, {"Tvr", "00"}})), "failed") << psBad;
    EXPECT_NE(fault().find("expected tags in hexadecimal digits, a blank between them"), std::string::npos)
        << psBad << fault();
  }
  expectNotWritten(with({{"Others", "9500"}}),
                   "G.Others] Offset[22]: expected tags that the definition does not have, "
                   "found 95. Give the value to the field of that tag.");
  expectNotWritten(with({{"Others", "5"}}),
                   "G.Others] Offset[22]: expected hexadecimal digits, two a byte, found \"5\".");
  test::clearLog();
  EXPECT_EQ(generate(with({{"Others", "5002AA"}})), "failed");
  EXPECT_NE(fault().find("G.Others] Offset[22]: expected whole tags in hexadecimal digits"),
            std::string::npos)
      << fault();
}

TEST_F(Tlv, AKnownTagStandsOnce) {
  define({kTvr, kOthers, kOrder});
  expectRefused("95018095 0180", "G] Offset[25]: expected a tag once, found 95 again.");
  expectBack("5000 5000");
}

TEST_F(Tlv, LengthsHaveTheirShortestForm) {
  define({kTvr});
  for (const size_t nLength : {0UL, 1UL, 127UL, 128UL, 255UL, 256UL, 30000UL}) {
    std::string sHex;
    for (size_t i = 0; i < nLength; ++i) sHex += "A5";
    const Wire wire = with({{"Tvr", sHex}});
    if (nLength == 0) give(wire, "Tvr");
    const std::string s = generate(wire);
    ASSERT_EQ(s.size(), 22 + 1 + (nLength < 128 ? 1 : nLength < 256 ? 2 : 3) + nLength) << told();
    const Wire again = parse("M", s);
    EXPECT_EQ(get(again, "Tvr"), sHex) << told();
    EXPECT_EQ(generate(again), s);
  }
  expectRefused("95810180", "G] Offset[23]: expected the shortest form of the length 1, found 2 bytes.");
  expectRefused("9582008000", "G] Offset[23]: expected the shortest form of the length 128, found 3 bytes.");
  expectRefused("9580",
                "G] Offset[23]: expected a length of BER-TLV: one byte, or 81, 82 or 83 and as many bytes, "
                "found \"\\x80\".");
  expectRefused("9584000000010",
                "G] Offset[23]: expected a length of BER-TLV: one byte, or 81, 82 or 83 and as many "
                "bytes, found \"\\x84\".");
  expectRefused("9502A5", "G] Offset[24]: expected 2 bytes, found 1 and the end.");
  expectRefused("95", "G] Offset[23]: expected 1 byte, found the end.");
}

TEST_F(Tlv, TagsHaveOneToFourBytes) {
  define({field("One", "psTag=\"5A\" psType=\"b\""), field("Two", "psTag=\"9F02\" psType=\"b\""),
          field("Three", "psTag=\"DF8129\" psType=\"b\""), field("Four", "psTag=\"1F818203\" psType=\"b\"")});
  expectBack("5A0101 9F020102 DF81290103 1F8182030104");
  expectRefused("001F00",
                "G] Offset[22]: expected a tag of BER-TLV of 1 to 4 bytes, found \"\\x00\\x1F\\x00\".");
  expectRefused("DF8182838401",
                "G] Offset[22]: expected a tag of BER-TLV of 1 to 4 bytes, found "
                "\"\\xDF\\x81\\x82\\x83\".");
  expectRefused("DF81", "G] Offset[22]: expected a tag of BER-TLV of 1 to 4 bytes, found \"\\xDF\\x81\".");
}

TEST_F(Tlv, AFieldOfATagHasItsTypeAndLength) {
  define({kAmount, kCountry, kSerial});
  expectRefused("9F02050000000123", "G.Amount] Offset[25]: expected 12 digits, found 10. See nLen.");
  expectRefused("9F1A021554",
                "G.Country] Offset[25]: expected the half byte 0 beside an odd number of digits, found "
                "\"\\x15T\". See psPad and psAlign.");
  expectRefused("9F1A02055A",
                "G.Country] Offset[25]: expected digits, found \"55:\". Correct it, or psType.");
  expectRefused("9F1E09313233343536373839",
                "G.Serial] Offset[25]: expected at most 8 characters, found 9. See nMinLen and nMaxLen.");
  expectNotWritten(with({{"Amount", "1234567890123"}}),
                   "G.Amount] Offset[22]: expected 12 digits, found 13. See nLen.");
}

TEST_F(Tlv, DigitsThatTheirBytesDoNotTellAreNotWritten) {
  define({field("Amount", "psTag=\"9F02\" psType=\"n\" psCoding=\"bcd\" psAlign=\"left\" nMaxLen=\"12\""),
          field("Track", "psTag=\"57\" psType=\"z\" psCoding=\"bcd\" nMaxLen=\"37\"")});
  const std::string sOdd = "expected an even number of digits, because only their bytes are counted, found ";
  expectNotWritten(with({{"Amount", "123"}}),
                   "G.Amount] Offset[22]: " + sOdd + "3. psPad=\"F\" tells an odd number.");
  expectNotWritten(with({{"Track", "4111=99"}}),
                   "G.Track] Offset[22]: " + sOdd + "7. psPad=\"F\" tells an odd number.");
  EXPECT_EQ(generate(with({{"Track", "4111=999"}})), message("5704 4111D999")) << told();
}

TEST_F(Tlv, AHalfByteFIsADigitWhereTheLengthIsFixed) {
  define({field("Track", "psTag=\"57\" psType=\"z\" psCoding=\"bcd\" psPad=\"F\" nLen=\"4\"")});
  expectBack("5702 411F");
  EXPECT_EQ(get(parse("M", message("5702 411F")), "Track"), "411?");
}

TEST_F(Tlv, MandatoryTagsAreReported) {
  define({kTvr, field("Must", "psTag=\"82\" psType=\"b\" nMandatory=\"1\"")});
  expectBack("95018082 0100");
  expectRefused("950180", "G.Must] Offset[25]: expected tag 82, found none. It is mandatory.");
  expectNotWritten(with({{"Tvr", "80"}}),
                   "G.Must] Offset[25]: expected a value, found none. The field is mandatory; "
                   "nKeepEmpty=\"1\" allows an empty one.");
}

TEST_F(Tlv, TemplatesHoldTags) {
  define({kTvr, group("T", "IsoTlv", "psTag=\"70\"",
                      {field("Pan",
                             "psTag=\"5A\" psType=\"n\" psCoding=\"bcd\" nMaxLen=\"19\" psAlign=\"left\" "
                             "psPad=\"F\""),
                       field("Inner", "psKind=\"others\"")})});
  expectBack("950180 7004 5A02123F");
  EXPECT_EQ(get(parse("M", message("7004 5A02123F")), "Pan"), "123");
  expectBack("7002 8000");
  expectBack("7000");
  expectRefused("7004 5A03123F", "G.T] Offset[26]: expected 3 bytes, found 2 and the end.");
}

TEST_F(Tlv, AMandatoryTemplateHasAValue) {
  define({kTvr,
          group("T", "IsoTlv", "psTag=\"70\" nMandatory=\"1\"", {field("Pan", "psTag=\"5A\" psType=\"b\"")}),
          kOrder});
  expectBack("950180 7003 5A0112");
  expectBack("950180 7000");
  expectRefused("950180", "G.T] Offset[25]: expected tag 70, found none. It is mandatory.");
  const std::string sTold =
      "G.T] Offset[25]: expected a value, found none. It is mandatory; give something inside of it a value.";
  expectNotWritten(with({{"Tvr", "80"}}), sTold);
  expectNotWritten(with({{"Tvr", "80"}, {"Order", "95 70"}}), sTold);
}

TEST_F(Tlv, SubfieldsStandInTags) {
  define({group("T", "IsoGroup", "psTag=\"70\" nLen=\"3\"",
                {field("A", "nLen=\"1\""), field("B", "nLen=\"2\"")})});
  expectBack("7003 414243");
  expectRefused("7002 4142", "G.T] Offset[24]: expected 3 bytes, found 2. See nLen.");
}

TEST_F(Tlv, ALoopHasEachTagAsDataInItsOrder) {
  m_config.message(
      "M", "nWhole=\"1\"",
      {mti(), loop("L", "IsoTlv", "nNumber=\"55\" psPrefix=\"LLL\" psPrefixCoding=\"binary\"", "nMax=\"3\"",
                   {field("Tag", "psKind=\"tag\""), field("Data", "psKind=\"value\" psType=\"b\"")})});
  ASSERT_EQ(m_config.start(), 0) << told();
  expectBack("9F1A020554 DF81290100 9500");
  const Wire wire = parse("M", message("9F1A020554 DF81290100 9500"));
  cvtSetLoopTime(wire.get(), test::cs("L"), 1);
  EXPECT_EQ(get(wire, "L.Tag"), "DF8129");
  EXPECT_EQ(get(wire, "L.Data"), "00");
  expectRefused("5000 5000 5000 5000",
                "L[3]] Offset[28]: expected at most 3 repetitions, found one more. See nMax of its IsoLoop.");
  const Wire made = with({});
  addTime(made, "L");
  set(made, "L.Tag", "9F1A");
  set(made, "L.Data", "0554");
  EXPECT_EQ(generate(made), message("9F1A020554"));
  set(made, "L.Tag", "9F1A02");
  expectNotWritten(
      made, "L[0].Tag] Offset[22]: expected a tag of BER-TLV, 1 to 4 bytes, found \"\\x9F\\x1A\\x02\".");
  const std::string sNone = "L[0].Tag] Offset[22]: expected a tag of BER-TLV, 1 to 4 bytes, found \"\".";
  give(made, "L.Tag");
  expectNotWritten(made, sNone);
  const Wire untold = with({});
  addTime(untold, "L");
  set(untold, "L.Data", "AABB");
  expectNotWritten(untold, sNone);
}

TEST_F(Tlv, ALoopHasItsTagsAsBytesWhateverTheMessagesBytesAre) {
  m_config.message(
      "M", "nWhole=\"1\" psBinary=\"hex\"",
      {mti(), loop("L", "IsoTlv", "nNumber=\"55\" psPrefix=\"LLL\" psPrefixCoding=\"binary\"", "",
                   {field("Tag", "psKind=\"tag\""),
                    field("Data", "psKind=\"value\" psType=\"b\" psCoding=\"binary\"")})});
  ASSERT_EQ(m_config.start(), 0) << told();
  expectBack("9F02021234 9500");
  const Wire made = with({});
  addTime(made, "L");
  set(made, "L.Tag", "9F02");
  set(made, "L.Data", "1234");
  EXPECT_EQ(generate(made), message("9F02021234")) << told();
}

}  // namespace

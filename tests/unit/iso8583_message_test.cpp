// Messages of the format `iso8583`: message types, headers, bitmaps and which data elements there are.
#include <gtest/gtest.h>

#include "iso_config.h"

using namespace test::iso;

namespace {

FormatNode digit(int n, const std::string &sMore = "") {
  return field("De" + std::to_string(n),
               "nNumber=\"" + std::to_string(n) + "\" psType=\"n\" nLen=\"1\" " + sMore);
}

FormatNode variable(int n, const std::string &sMore = "") {
  return field("De" + std::to_string(n),
               "nNumber=\"" + std::to_string(n) + "\" psType=\"ans\" psPrefix=\"L\" " + sMore);
}

class Message : public testing::Test {
 protected:
  void define(const std::string &sAttributes, const std::vector<FormatNode> &nodes) {
    m_config.message("M", sAttributes, nodes);
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  static void expectBack(const std::string &sBytes) {
    const Wire wire = parse("M", sBytes);
    ASSERT_NE(wire, nullptr) << told();
    EXPECT_EQ(generate(wire), sBytes) << told();
  }

  static void expectRefused(const std::string &sBytes, const std::string &sTold) {
    test::clearLog();
    EXPECT_EQ(parse("M", sBytes), nullptr);
    EXPECT_EQ(fault(), "Msg[M] " + sTold);
  }

  static void expectNotWritten(const Wire &wire, const std::string &sTold) {
    test::clearLog();
    EXPECT_EQ(generate(wire), "failed");
    EXPECT_EQ(fault(), "Msg[M] " + sTold);
  }

  static Wire with(const std::vector<std::pair<std::string, std::string>> &values) {
    Wire wire = create("M");
    set(wire, "Mti", "0200");
    for (const auto &[sName, sValue] : values) set(wire, sName, sValue);
    return wire;
  }

  IsoConfig m_config;
};

// --- The beginning

TEST_F(Message, TheTypeIsFourDigitsInTextOrBcd) {
  define("", {mti(), digit(2)});
  expectBack("0200" + bitmap({2}) + "7");
  expectRefused("02A0" + bitmap({}),
                "Field[Mti] Offset[2]: expected digits, found \"02A0\". Correct it, or psType.");
  cvtEnd();
  define("psNumeric=\"bcd\"", {mti(), digit(2)});
  expectBack(bytes("0200") + bitmap({2}) + bytes("07"));
}

TEST_F(Message, ATypeMayBeTheOnlyOne) {
  define("", {mti("psConst=\"0420\""), digit(2)});
  expectBack("0420" + bitmap({2}) + "7");
  expectRefused("0400" + bitmap({2}) + "7",
                "Field[Mti] Offset[0]: expected \"0420\", found \"0400\". The field is a constant.");
}

TEST_F(Message, HeadersStandInFrontOfTheType) {
  define("", {field("Id", "psKind=\"header\" psType=\"ans\" nLen=\"3\" psConst=\"ISO\""),
              field("Tpdu", "psKind=\"header\" psType=\"b\" nLen=\"5\""), mti(), digit(2)});
  const std::string s = "ISO" + bytes("6000030000") + "0200" + bitmap({2}) + "7";
  expectBack(s);
  EXPECT_EQ(get(parse("M", s), "Tpdu"), "6000030000");
  expectNotWritten(with({}), "Field[Tpdu] Offset[3]: expected 5 bytes, found 0. See nLen.");
}

TEST_F(Message, WhatFollowsIsLeftToTheCallerOrRefused) {
  define("", {mti(), digit(2)});
  Wire wire = parse("M", "0200" + bitmap({2}) + "7rest");
  ASSERT_NE(wire, nullptr);
  EXPECT_EQ(wire->nNowLen, 21);
  wire.reset();
  cvtEnd();
  define("nWhole=\"1\"", {mti(), digit(2)});
  expectRefused(
      "0200" + bitmap({2}) + "7rest",
      "Field[] Offset[21]: expected the end of the message, found \"rest\". Remove what follows, or set "
      "nWhole to 0.");
}

TEST_F(Message, AMessageHasALargestLength) {
  define("nMaxLen=\"30\"", {mti(), variable(2), variable(3)});
  expectBack("0200" + bitmap({2, 3}) + "41234" + "41234");
  expectRefused(
      "0200" + bitmap({2, 3}) + "41234" + "512345",
      "Field[] Offset[0]: expected a message of at most 30 bytes, found 31. See nMaxLen of IsoMsg.");
  expectNotWritten(
      with({{"De2", "1234"}, {"De3", "12345"}}),
      "Field[De3] Offset[0]: expected a message of at most 30 bytes, found 31. See nMaxLen of IsoMsg.");
}

// --- Bitmaps

TEST_F(Message, ElementsStandInTheOrderOfTheirNumbersWhateverTheDefinitionsOrder) {
  define("", {mti(), digit(64), digit(2), digit(128), digit(33)});
  const std::string s = "0200" + bitmap({1, 2, 33, 64}) + bitmap({64}) + "1234";
  expectBack(s);
  EXPECT_EQ(get(parse("M", s), "De33"), "2");
  EXPECT_EQ(generate(with({{"De33", "2"}})), "0200" + bitmap({33}) + "2");
}

TEST_F(Message, BitmapsAreHexadecimalDigitsOrBytes) {
  define("psBitmap=\"hex\"", {mti(), digit(9), digit(128)});
  expectBack(
      "020080800000000000000000000000000001"
      "12");
  expectRefused(
      "020080800000000000G00000000000000001"
      "12",
      "Field[] Offset[18]: expected a bitmap of 16 hexadecimal digits, found \"80800000000000G0\". See "
      "psBitmap.");
  cvtEnd();
  define("psBitmap=\"hex-lower\"", {mti(), digit(9), digit(11), digit(128)});
  expectBack(
      "020080a000000000000000000000000000011"
      "22");
  EXPECT_EQ(parse("M", "020080A0000000000000000000000000000112"), nullptr);
  cvtEnd();
  define("psBitmap=\"binary\"", {mti(), digit(9), digit(128)});
  expectBack("0200" + bytes("8080000000000000 0000000000000001") + "12");
}

TEST_F(Message, HexadecimalBitmapsAreInTheCharacterSet) {
  define("psCharset=\"IBM037\"", {mti(), digit(3), digit(5), digit(64)});
  expectBack(bytes("F0F2F0F0 F2F8F0F0F0F0F0F0F0F0F0F0F0F0F0F1 F1F2F3"));
  cvtEnd();
  define("psCharset=\"IBM037\"", {mti(), digit(3), digit(5), digit(7), digit(8), digit(64)});
  expectBack(bytes("F0F2F0F0 F2C2F0F0F0F0F0F0F0F0F0F0F0F0F0F1 F1F2F3F4F5"));
  EXPECT_EQ(parse("M", bytes("F0F2F0F0 F282F0F0F0F0F0F0F0F0F0F0F0F0F0F1 F1F2F3F4F5")), nullptr);
}

TEST_F(Message, BitmapsFollowWhenABitSaysSo) {
  define("nBitmaps=\"3\"", {mti(), digit(2), digit(70), digit(130)});
  expectBack("0200" + bitmap({2}) + "1");
  expectBack("0200" + bitmap({1, 2}) + bitmap({6}) + "12");
  expectBack("0200" + bitmap({1, 2}) + bitmap({1, 6}) + bitmap({2}) + "123");
  EXPECT_EQ(generate(with({{"De130", "3"}})), "0200" + bitmap({1}) + bitmap({1}) + bitmap({2}) + "3");
  expectRefused(
      "0200" + bitmap({1, 2}) + bitmap({}) + "1",
      "Field[] Offset[20]: expected a further bitmap with a bit that is set, found none. A field of "
      "psKind bitmap allows it.");
}

TEST_F(Message, TheThirdBitmapMayStandInThePlaceOfElement65) {
  define("nBitmaps=\"3\" psThird=\"element\"", {mti(), digit(2), digit(70), digit(130)});
  expectBack("0200" + bitmap({1, 2}) + bitmap({1, 6}) + "1" + bitmap({2}) + "23");
  expectBack("0200" + bitmap({1, 2}) + bitmap({6}) + "12");
}

TEST_F(Message, BitmapsMayAlwaysBeThereAndTheirFirstBitsBeElements) {
  define("psBitmaps=\"always\"", {mti(), digit(1), digit(2), digit(65)});
  expectBack("0200" + bitmap({2}) + bitmap({}) + "1");
  expectBack("0200" + bitmap({1, 2}) + bitmap({1}) + "123");
  EXPECT_EQ(get(parse("M", "0200" + bitmap({1}) + bitmap({}) + "7"), "De1"), "7");
}

TEST_F(Message, ASingleBitmapHasNoFlag) {
  define("nBitmaps=\"1\"", {mti(), digit(1), digit(2)});
  expectBack("0200" + bitmap({1, 2}) + "12");
}

TEST_F(Message, ABitWithoutDefinitionIsRefused) {
  define("", {mti(), digit(2)});
  expectRefused(
      "0200" + bitmap({2, 48}) + "1000",
      "Field[] Offset[4]: expected bits of data elements that the definition has, found that of data "
      "element 48. Define it, or a field of psKind rest for what begins with an unknown one.");
}

// --- Bitmaps as values

TEST_F(Message, AFieldShowsABitmap) {
  define("nBitmaps=\"3\"",
         {mti(), field("First", "psKind=\"bitmap\" nNumber=\"1\""),
          field("Second", "psKind=\"bitmap\" nNumber=\"2\" psValue=\"hex\""), digit(2), digit(70)});
  const std::string s = "0200" + bitmap({1, 2}) + bitmap({6}) + "12";
  const Wire wire = parse("M", s);
  EXPECT_EQ(get(wire, "First"), "11" + std::string(62, '0'));
  EXPECT_EQ(get(wire, "Second"), "0400000000000000");
  EXPECT_EQ(generate(wire), s);
  EXPECT_EQ(get(parse("M", "0200" + bitmap({2}) + "1"), "Second"), "");
  EXPECT_EQ(generate(with({{"De2", "1"}, {"De70", "2"}})), s);
}

TEST_F(Message, AFieldShowsAllBitmaps) {
  define("", {mti(), field("All", "psKind=\"bitmap\""), digit(2), digit(70)});
  const std::string s = "0200" + bitmap({1, 2}) + bitmap({6}) + "12";
  EXPECT_EQ(get(parse("M", s), "All"), "11" + std::string(67, '0') + "1" + std::string(58, '0'));
  EXPECT_EQ(get(parse("M", "0200" + bitmap({2}) + "1"), "All"), "01" + std::string(62, '0'));
  expectBack(s);
  expectBack("0200" + bitmap({2}) + "1");
}

TEST_F(Message, ASecondBitmapWithoutABitComesBackWhereABitmapIsShown) {
  for (const char *const psWhich : {"", "nNumber=\"1\"", "nNumber=\"2\""}) {
    define("", {mti(), field("B", "psKind=\"bitmap\" " + std::string(psWhich)), digit(2), digit(70)});
    expectBack("0200" + bitmap({1, 2}) + bitmap({}) + "1");
    cvtEnd();
  }
}

TEST_F(Message, TheBitsOfABitmapFieldDecideWhatIsThere) {
  define("", {mti(), field("First", "psKind=\"bitmap\" nNumber=\"1\" psValue=\"hex\""), variable(2),
              variable(3), digit(4), variable(5, "psDefault=\"X\""), digit(70)});
  EXPECT_EQ(generate(with({{"First", bitmap({2, 3})}, {"De3", "a"}})), "0200" + bitmap({2, 3}) + "01a");
  EXPECT_EQ(generate(with({{"First", bitmap({5})}})), "0200" + bitmap({5}) + "1X");
  expectNotWritten(
      with({{"First", bitmap({2})}, {"De3", "a"}}),
      "Field[De3] Offset[4]: expected no value, as its bit in the bitmap says, found one. Set the bit, "
      "or leave the bitmap's value empty: it is then made from the values.");
  expectNotWritten(with({{"First", bitmap({4})}}),
                   "Field[De4] Offset[20]: expected a value, found an empty one.");
  expectNotWritten(
      with({{"First", bitmap({9})}}),
      "Field[] Offset[4]: expected bits of data elements that the definition has, found that of data "
      "element 9.");
  expectNotWritten(
      with({{"First", bitmap({2})}, {"De70", "1"}}),
      "Field[] Offset[4]: expected bit 1 of the bitmap, since another one follows, found a bitmap "
      "without it. Leave the bitmap's value empty: it is then made from the values.");
  for (const char *const psBad : {"0", "40000000000000000", "400000000000000G"}) {
    expectNotWritten(with({{"First", psBad}}),
                     "Field[First] Offset[4]: expected a bitmap of 16 hexadecimal digits, "
                     "found \"" +
                         std::string(psBad) + "\".");
  }
}

// --- Which elements there are

TEST_F(Message, AnEmptyValueThatWasGivenIsWritten) {
  define("", {mti(), variable(2), variable(3)});
  const Wire wire = with({{"De3", "a"}});
  give(wire, "De2");
  EXPECT_EQ(generate(wire), "0200" + bitmap({2, 3}) + "01a");
  expectBack("0200" + bitmap({2, 3}) + "01a");
}

TEST_F(Message, MandatoryElementsAreReported) {
  define("", {mti(), variable(2), variable(70, "nMandatory=\"1\"")});
  expectRefused("0200" + bitmap({2}) + "1a",
                "Field[De70] Offset[4]: expected data element 70, found none. It is mandatory.");
  expectNotWritten(with({{"De2", "a"}}),
                   "Field[De70] Offset[4]: expected a value, found none. The field is mandatory.");
  expectBack("0200" + bitmap({1}) + bitmap({6}) + "0");
}

TEST_F(Message, PlainGroupsGatherElements) {
  define("", {mti(), group("Card", "", "", {digit(3), group("Inner", "", "", {digit(2)})}), digit(4)});
  expectBack("0200" + bitmap({2, 3, 4}) + "123");
  expectRefused("0200" + bitmap({2, 3, 4}) + "x23",
                "Field[Card.Inner.De2] Offset[20]: expected digits, found \"x\". Correct it, or psType.");
}

// --- Unknown elements

TEST_F(Message, WhatBeginsWithAnUnknownElementIsKeptAsTheRest) {
  define("", {mti(), digit(2), digit(4), digit(70), field("Rest", "psKind=\"rest\"")});
  expectBack("0200" + bitmap({2, 4}) + "12");
  const std::string s = "0200" + bitmap({1, 2, 3, 4}) + bitmap({6, 7}) + "1AB";
  const Wire wire = parse("M", s);
  ASSERT_NE(wire, nullptr) << told();
  EXPECT_EQ(get(wire, "De2"), "1");
  EXPECT_EQ(get(wire, "De4"), "");
  EXPECT_EQ(get(wire, "Rest"), "3,4,70,71:4142");
  EXPECT_EQ(generate(wire), s);
  expectBack("0200" + bitmap({1, 2}) + bitmap({7}) + "1");
}

TEST_F(Message, TheRestMustBeWhatItSays) {
  define("", {mti(), digit(2), digit(4), field("Rest", "psKind=\"rest\"")});
  EXPECT_EQ(generate(with({{"Rest", "3,5:4142"}, {"De2", "1"}})), "0200" + bitmap({2, 3, 5}) + "1AB");
  expectNotWritten(
      with({{"Rest", "3:41"}, {"De4", "1"}}),
      "Field[De4] Offset[4]: expected no value behind data element 3, where the rest begins, found one.");
  for (const char *const psBad : {"3", "3,:41", "3,2:41", ":41", "0:41", "129:41", "3 :41", ",3:41",
                                  "3,3:", "50,60,55,60:", "5,7,6:", "1:303031", "1,48:41"}) {
    test::clearLog();
    EXPECT_EQ(generate(with({{"Rest", psBad}})), "failed") << psBad;
    EXPECT_NE(fault().find("Field[Rest] Offset[4]: expected numbers of data elements, ascending"),
              std::string::npos)
        << psBad << fault();
  }
  expectNotWritten(with({{"Rest", "3:4"}}),
                   "Field[Rest] Offset[4]: expected hexadecimal digits, two a byte, found \"4\".");
}

TEST_F(Message, TheRestBeginsWithAnElementThatIsNotDefined) {
  define("", {mti(), digit(2), digit(4), field("Rest", "psKind=\"rest\"")});
  for (const char *const psRest : {"4:303031", "4,5:303031"}) {
    expectNotWritten(
        with({{"Rest", psRest}}),
        "Field[Rest] Offset[4]: expected a first data element that the definition does not have, "
        "found 4. Give the value to its field.");
  }
  EXPECT_EQ(generate(with({{"Rest", "3,4:4142"}})), "0200" + bitmap({3, 4}) + "AB") << told();
}

TEST_F(Message, ABitmapFieldHasNoBitsBehindTheRestButItsOwn) {
  define("", {mti(), field("First", "psKind=\"bitmap\" nNumber=\"1\" psValue=\"hex\""), variable(2),
              variable(4), digit(5), field("Rest", "psKind=\"rest\"")});
  expectBack("0200" + bitmap({2, 3, 4}) + "0AB");
  expectNotWritten(with({{"First", bitmap({2, 3, 4})}, {"Rest", "3:4142"}}),
                   "Field[De4] Offset[4]: expected no bit behind data element 3, where the rest begins, "
                   "but those that the rest names, found one. Leave the bitmap's value empty: it is then "
                   "made from the values.");
}

TEST_F(Message, TheRestHasNoBitThatSaysWhetherABitmapFollows) {
  const std::string sTold =
      "Field[Rest] Offset[4]: expected numbers of data elements, ascending, with commas, a colon, "
      "hexadecimal "
      "digits, found ";
  define("nBitmaps=\"3\"", {mti(), digit(2), field("Rest", "psKind=\"rest\"")});
  for (const char *const psRest : {"1:4141", "65:4141", "3,65,66:4141"}) {
    expectNotWritten(with({{"Rest", psRest}}), sTold + "\"" + psRest + "\".");
  }
  expectBack("0200" + bitmap({1}) + bitmap({1}) + bitmap({1}) + "AA");
  cvtEnd();
  define("", {mti(), digit(2), field("Rest", "psKind=\"rest\"")});
  EXPECT_EQ(generate(with({{"Rest", "65:4141"}})), "0200" + bitmap({1}) + bitmap({1}) + "AA") << told();
  cvtEnd();
  define("psBitmaps=\"always\"", {mti(), digit(2), field("Rest", "psKind=\"rest\"")});
  expectBack("0200" + bitmap({1}) + bitmap({1}) + "AA");
}

}  // namespace

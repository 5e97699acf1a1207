// Fields of the format `iso8583`: types, codings, lengths, pads and dates, in both directions.
#include <gtest/gtest.h>

#include "iso_config.h"

using namespace test::iso;

namespace {

// A message of data element 2 alone. sMessage: attributes of its IsoMsg.
class Field : public testing::Test {
 protected:
  void define(const std::string &sAttributes, const std::string &sMessage = "") {
    m_config.message("M", "nWhole=\"1\" " + sMessage,
                     {mti("psCoding=\"text\""), field("F", "nNumber=\"2\" " + sAttributes)});
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  static std::string message(const std::string &sBytes) { return "0200" + bitmap({2}) + sBytes; }

  // The bytes have that value and come back.
  static void expectBoth(const std::string &sBytes, const std::string &sValue) {
    const Wire wire = parse("M", message(sBytes));
    ASSERT_NE(wire, nullptr) << told();
    EXPECT_EQ(get(wire, "F"), sValue);
    EXPECT_EQ(generate(wire), message(sBytes)) << told();
  }

  // The value is written as those bytes.
  static void expectWritten(const std::string &sValue, const std::string &sBytes) {
    const Wire wire = create("M");
    set(wire, "Mti", "0200");
    sValue.empty() ? give(wire, "F") : set(wire, "F", sValue);
    EXPECT_EQ(generate(wire), message(sBytes)) << told();
  }

  // The bytes are refused; the line ends so, behind the message's and the field's name.
  static void expectRefused(const std::string &sBytes, const std::string &sTold) {
    test::clearLog();
    EXPECT_EQ(parse("M", message(sBytes)), nullptr) << sBytes;
    EXPECT_EQ(fault(), "Msg[M] Field[F] " + sTold);
  }

  static void expectNotWritten(const std::string &sValue, const std::string &sTold) {
    const Wire wire = create("M");
    set(wire, "Mti", "0200");
    sValue.empty() ? give(wire, "F") : set(wire, "F", sValue);
    test::clearLog();
    EXPECT_EQ(generate(wire), "failed") << sValue;
    EXPECT_EQ(fault(), "Msg[M] Field[F] " + sTold);
  }

  IsoConfig m_config;
};

// --- Types

TEST_F(Field, DigitsAreDigitsAndShortOnesGetZerosInFront) {
  define("psType=\"n\" nLen=\"6\"");
  expectBoth("000120", "000120");
  expectWritten("120", "000120");
  expectRefused("00012A", "Offset[25]: expected digits, found \"00012A\". Correct it, or psType.");
  expectRefused("00012", "Offset[20]: expected 6 bytes, found 5 and the end.");
  expectNotWritten("1234567", "Offset[20]: expected 6 digits, found 7. See nLen.");
  expectNotWritten("12-4", "Offset[20]: expected digits, found \"12-4\". Correct it, or psType.");
}

TEST_F(Field, ANumberMayLoseItsZeros) {
  define("psType=\"n\" nLen=\"6\" nTrim=\"1\"");
  expectBoth("000120", "120");
  expectBoth("000000", "0");
  expectBoth("100000", "100000");
  expectNotWritten("", "Offset[20]: expected a value, found an empty one.");
}

TEST_F(Field, EachTypeHasItsCharacters) {
  struct Case {
    const char *psType;
    const char *psGood;
    const char *psBad;
    const char *psName;
  };
  for (const Case &one :
       {Case{"a", "Abz", "A1z", "letters"}, Case{"an", "A1z", "A1-", "letters and digits"},
        Case{"as", "A- ", "A1-", "letters and special characters"},
        Case{"ns", "1- ", "A1-", "digits and special characters"},
        Case{"ans", "A1~", "A1\x7F", "letters, digits and special characters"},
        Case{"z", "1=D", "1=E", "digits and separators of a track"},
        Case{"x+n", "C12", "E12", "C or D and digits"}, Case{"x+n", "D12", "DD1", "C or D and digits"}}) {
    define("psType=\"" + std::string(one.psType) + "\" nLen=\"3\"");
    expectBoth(one.psGood, one.psGood);
    test::clearLog();
    EXPECT_EQ(parse("M", message(one.psBad)), nullptr) << one.psType;
    EXPECT_NE(fault().find("expected " + std::string(one.psName) + ", found \""), std::string::npos)
        << one.psType << fault();
    cvtEnd();
  }
}

TEST_F(Field, ATextOfFixedLengthKeepsItsPads) {
  define("psType=\"an\" nLen=\"5\"");
  expectBoth("AB1  ", "AB1  ");
  expectWritten("AB1", "AB1  ");
  expectRefused("AB 1 ", "Offset[22]: expected letters and digits, found \"AB 1 \". Correct it, or psType.");
  expectNotWritten("",
                   "Offset[20]: expected a value, found an empty one. nTrim=\"1\" allows a text of pads.");
}

TEST_F(Field, PadsAreTakenOffWhenAsked) {
  define("psType=\"an\" nLen=\"5\" nTrim=\"1\" psPad=\"*\" psAlign=\"right\"");
  expectBoth("**AB1", "AB1");
  expectBoth("*****", "");
  expectBoth("ABCDE", "ABCDE");
}

TEST_F(Field, APadMayBeAByteThatIsNoCharacter) {
  define("psType=\"ans\" nLen=\"4\" nTrim=\"1\" psPad=\"0x00\"");
  expectBoth(std::string("AB\0\0", 4), "AB");
  expectBoth(std::string(4, '\0'), "");
}

TEST_F(Field, TextsOfOtherCharacterSetsAreConvertedStrictly) {
  define("psType=\"ans\" psPrefix=\"LL\" psCharset=\"ISO-8859-1\"");
  expectBoth("03Zo\xEB", "Zo\xC3\xAB");
  expectRefused("03Zo\x85",
                "Offset[22]: expected letters, digits and special characters, found "
                "\"Zo\\xC2\\x85\". Correct it, or psType.");
  expectNotWritten("\xE4\xB8\xAD",
                   "Offset[22]: expected characters that the set has of ISO-8859-1, "
                   "found \"\\xE4\\xB8\\xAD\". Correct the text, or psCharset.");
}

TEST_F(Field, EbcdicIsACharacterSet) {
  m_config.message("M", "nWhole=\"1\" psCharset=\"IBM037\"",
                   {mti(), field("F", "nNumber=\"2\" psType=\"n\" psPrefix=\"LL\"")});
  ASSERT_EQ(m_config.start(), 0) << told();
  const std::string s = bytes("F0F2F0F0 F4F0F0F0F0F0F0F0F0F0F0F0F0F0F0F0 F0F3 F1F2F3");
  const Wire wire = parse("M", s);
  EXPECT_EQ(get(wire, "F"), "123") << told();
  EXPECT_EQ(generate(wire), s);
  EXPECT_EQ(parse("M", bytes("F0F2F0F0 F4F0F0F0F0F0F0F0F0F0F0F0F0F0F0F0 F0F3 F1F231")), nullptr);
  EXPECT_EQ(parse("M", bytes("F0F2F0F0 34F0F0F0F0F0F0F0F0F0F0F0F0F0F0F0 F0F3 F1F2F3")), nullptr);
}

// --- Lengths

TEST_F(Field, APrefixSaysTheLengthOfText) {
  define("psType=\"ans\" psPrefix=\"LLL\" nMinLen=\"2\" nMaxLen=\"4\"");
  expectBoth("002AB", "AB");
  expectBoth("004ABCD", "ABCD");
  expectRefused("001A", "Offset[20]: expected at least 2 characters, found 1. See nMinLen and nMaxLen.");
  expectRefused("005ABCDE", "Offset[20]: expected at most 4 characters, found 5. See nMinLen and nMaxLen.");
  expectRefused("0x2AB",
                "Offset[21]: expected a length of 3 digits, found \"0x2\". See psPrefix and psPrefixCoding.");
  expectRefused("00", "Offset[20]: expected 3 bytes, found 2 and the end.");
  expectNotWritten("A", "Offset[23]: expected at least 2 characters, found 1. See nMinLen and nMaxLen.");
  expectNotWritten("ABCDE", "Offset[23]: expected at most 4 characters, found 5. See nMinLen and nMaxLen.");
}

TEST_F(Field, PrefixesOfEveryLengthAreWrittenInEveryCoding) {
  const std::string sText(12, 'x');
  struct Case {
    const char *psPrefix;
    const char *psCoding;
    const char *psHex;
  };
  for (const Case &one :
       {Case{"LL", "text", "3132"}, Case{"LLLLLL", "text", "303030303132"}, Case{"LL", "bcd", "12"},
        Case{"LLL", "bcd", "0012"}, Case{"LLL", "bcd-left", "0120"}, Case{"LLLL", "bcd-left", "0012"},
        Case{"L", "binary", "0C"}, Case{"LLL", "binary", "000C"}, Case{"LLLLL", "binary", "00000C"}}) {
    define("psType=\"ans\" psPrefix=\"" + std::string(one.psPrefix) + "\" psPrefixCoding=\"" + one.psCoding +
           "\"");
    expectBoth(bytes(one.psHex) + sText, sText);
    cvtEnd();
  }
}

TEST_F(Field, ABcdPrefixHasNoOtherDigits) {
  define("psType=\"ans\" psPrefix=\"LLL\" psPrefixCoding=\"bcd\"");
  for (const char *const psHex : {"1001 78", "000A 78", "00"}) {
    EXPECT_EQ(parse("M", message(bytes(psHex))), nullptr) << psHex;
  }
  cvtEnd();
  define("psType=\"ans\" psPrefix=\"LLL\" psPrefixCoding=\"bcd-left\"");
  EXPECT_EQ(parse("M", message(bytes("0011 78"))), nullptr);
  EXPECT_NE(parse("M", message(bytes("0010 78"))), nullptr) << told();
}

TEST_F(Field, AValueLongerThanItsPrefixCanSayIsRefused) {
  define("psType=\"ans\" psPrefix=\"L\"");
  expectBoth("9123456789", "123456789");
  expectNotWritten("1234567890",
                   "Offset[21]: expected at most 9 characters, found 10. See nMinLen and nMaxLen.");
}

TEST_F(Field, AnEmptyFieldIsThereAndEmpty) {
  define("psType=\"n\" psPrefix=\"LL\"");
  expectBoth("00", "");
  const Wire wire = create("M");
  set(wire, "Mti", "0200");
  EXPECT_EQ(generate(wire), "0200" + bitmap({}));
  give(wire, "F");
  EXPECT_EQ(generate(wire), message("00"));
}

TEST_F(Field, AFieldThatMustNotBeEmptyIsNot) {
  define("psType=\"n\" psPrefix=\"LL\" nKeepEmpty=\"0\"");
  expectRefused("00", "Offset[20]: expected a value, found an empty field. nKeepEmpty=\"2\" allows it.");
  const Wire wire = create("M");
  set(wire, "Mti", "0200");
  give(wire, "F");
  EXPECT_EQ(generate(wire), "0200" + bitmap({}));
}

TEST_F(Field, NothingButPadsIsNoValueOfAFieldThatMustNotBeEmpty) {
  const std::string sTold =
      "Offset[20]: expected a value, found nothing but pads. nKeepEmpty=\"2\" allows it.";
  const std::string sRead = "Offset[20]: expected a value, found an empty field. nKeepEmpty=\"2\" allows it.";
  define("nLen=\"3\" nTrim=\"1\" nKeepEmpty=\"0\"");
  expectBoth("A  ", "A");
  expectRefused("   ", sRead);
  expectNotWritten("  ", sTold);
  expectNotWritten("   ", sTold);
  cvtEnd();
  define("nLen=\"3\" nTrim=\"1\" nKeepEmpty=\"0\" psAlign=\"right\" psPad=\"*\"");
  expectBoth("**A", "A");
  expectRefused("***", sRead);
  expectNotWritten("**", sTold);
  cvtEnd();
  define("nLen=\"3\" nTrim=\"1\" nKeepEmpty=\"0\" psCharset=\"IBM037\" psPad=\"0x40\"");
  expectBoth(bytes("C14040"), "A");
  expectRefused(bytes("404040"), sRead);
  expectNotWritten(" ", sTold);
  cvtEnd();
  define("psType=\"n\" nLen=\"3\" nTrim=\"1\" nKeepEmpty=\"0\"");
  expectBoth("000", "0");
  cvtEnd();
  define("nLen=\"3\" nKeepEmpty=\"0\"");
  expectBoth("   ", "   ");
}

TEST_F(Field, AFieldMayAlwaysBeWritten) {
  define("psType=\"n\" psPrefix=\"LL\" nKeepEmpty=\"1\"");
  const Wire wire = create("M");
  set(wire, "Mti", "0200");
  EXPECT_EQ(generate(wire), message("00"));
}

// --- BCD

TEST_F(Field, BcdDigitsStandTwoInAByte) {
  define("psType=\"n\" nLen=\"4\"", "psNumeric=\"bcd\"");
  expectBoth(bytes("1234"), "1234");
  expectWritten("7", bytes("0007"));
  expectRefused(bytes("123A"), "Offset[20]: expected digits, found \"123:\". Correct it, or psType.");
}

TEST_F(Field, AnOddNumberOfDigitsStandsRightOrLeftOfItsPad) {
  struct Case {
    const char *psAttributes;
    const char *psHex;
    const char *psBad;
  };
  for (const Case &one :
       {Case{"", "0123", "1123"}, Case{"psAlign=\"left\"", "1230", "1231"},
        Case{"psAlign=\"left\" psPad=\"F\"", "123F", "1230"}, Case{"psPad=\"F\"", "F123", "0123"}}) {
    define("psType=\"n\" nLen=\"3\" psCoding=\"bcd\" " + std::string(one.psAttributes));
    expectBoth(bytes(one.psHex), "123");
    EXPECT_EQ(parse("M", message(bytes(one.psBad))), nullptr) << one.psAttributes;
    cvtEnd();
  }
}

TEST_F(Field, APrefixCountsDigitsOrBytesOfBcd) {
  define("psType=\"n\" psCoding=\"bcd\" psPrefix=\"LL\" nMaxLen=\"5\"");
  expectBoth("03" + bytes("0123"), "123");
  expectBoth("04" + bytes("0123"), "0123");
  cvtEnd();
  define("psType=\"n\" psCoding=\"bcd\" psPrefix=\"LL\" psCounts=\"bytes\" nMaxLen=\"5\" psPad=\"F\"");
  expectBoth("02" + bytes("F123"), "123");
  expectBoth("02" + bytes("0123"), "0123");
  expectBoth("03" + bytes("F12345"), "12345");
  expectRefused("03" + bytes("012345"),
                "Offset[22]: expected the half byte F beside an odd number of digits, "
                "found \"\\x01#E\". See psPad and psAlign.");
  expectRefused("04" + bytes("01234567"),
                "Offset[22]: expected at most 5 digits, found 8. See nMinLen and nMaxLen.");
}

TEST_F(Field, DigitsThatTheirBytesDoNotTellAreNotWritten) {
  define("psType=\"n\" psCoding=\"bcd\" psPrefix=\"LL\" psCounts=\"bytes\" psAlign=\"left\" nMaxLen=\"5\"");
  expectWritten("1234", "02" + bytes("1234"));
  expectBoth("03" + bytes("123450"), "12345");
  expectNotWritten("123",
                   "Offset[22]: expected an even number of digits, because only their bytes are counted, "
                   "found 3. psPad=\"F\" tells an odd number.");
  cvtEnd();
  define("psType=\"n\" psCoding=\"bcd\" psPrefix=\"LL\" psCounts=\"bytes\" nMaxLen=\"5\"");
  expectWritten("123", "02" + bytes("0123"));
  cvtEnd();
  define("psType=\"z\" psCoding=\"bcd\" psPrefix=\"LL\" psCounts=\"bytes\" psPad=\"F\"");
  expectWritten("411", "02" + bytes("411F"));
  expectWritten("4?11", "02" + bytes("4F11"));
  expectNotWritten("411?",
                   "Offset[22]: expected another character than ? where the half byte F would stand, "
                   "found \"411?\".");
}

TEST_F(Field, TheSeparatorOfATrackIsAHalfByte) {
  define("psType=\"z\" psCoding=\"bcd\" psPrefix=\"LL\" nMaxLen=\"37\"");
  expectBoth("07" + bytes("1234D560"), "1234=56");
  expectWritten("1234D56", "07" + bytes("1234D560"));
}

TEST_F(Field, ATrackIsNeverFilled) {
  const std::string sTold = "Offset[20]: expected digits and separators of a track, found ";
  define("psType=\"z\" psCoding=\"bcd\" psPad=\"F\" nLen=\"7\"");
  expectBoth(bytes("1234D56F"), "1234=56");
  expectNotWritten("1234=5F", sTold + "\"1234=5F\". Correct it, or psType.");
  expectNotWritten("1234=5G", sTold + "\"1234=5G\". Correct it, or psType.");
  cvtEnd();
  define("psType=\"z\" nLen=\"8\"");
  expectBoth("1234=567", "1234=567");
  expectRefused("1234=5  ",
                "Offset[26]: expected digits and separators of a track, found \"1234=5  \". Correct it, or "
                "psType.");
  expectNotWritten("1234=5  ", sTold + "\"1234=5  \". Correct it, or psType.");
  expectNotWritten("1234=5", "Offset[20]: expected 8 digits, found 6. See nLen.");
}

TEST_F(Field, ASignStandsInFrontOfBcdDigits) {
  define("psType=\"x+n\" psCoding=\"bcd\" nLen=\"9\"");
  expectBoth("D" + bytes("00000150"), "D00000150");
  expectRefused("E" + bytes("00000150"),
                "Offset[20]: expected C or D and digits, found \"E00000150\". Correct it, or psType.");
  expectNotWritten("D150", "Offset[20]: expected 9 characters, found 4. See nLen.");
}

// --- Bytes

TEST_F(Field, BytesAreShownAsHexadecimalDigitsOrBits) {
  define("psType=\"b\" nLen=\"2\"");
  expectBoth(bytes("A50F"), "A50F");
  expectWritten("a50f", bytes("A50F"));
  expectNotWritten("A50", "Offset[20]: expected two hexadecimal digits a byte, found \"A50\".");
  expectNotWritten("A50G", "Offset[20]: expected hexadecimal digits, found \"A50G\".");
  expectNotWritten("A5", "Offset[20]: expected 2 bytes, found 1. See nLen.");
  cvtEnd();
  define("psType=\"b\" nLen=\"2\" psValue=\"bits\"");
  expectBoth(bytes("A50F"), "1010010100001111");
  expectNotWritten("101001010000111", "Offset[20]: expected 8 bits a byte, found \"101001010000111\".");
  expectNotWritten("1010010100001112", "Offset[20]: expected bits, found \"1010010100001112\".");
}

TEST_F(Field, BytesMayBeWrittenAsHexadecimalDigits) {
  define("psType=\"b\" nLen=\"2\"", "psBinary=\"hex\"");
  expectBoth("A50F", "A50F");
  expectBoth("a50F", "a50F");
  expectRefused("A50G", "Offset[23]: expected hexadecimal digits, found \"A50G\".");
  cvtEnd();
  define("psType=\"b\" psPrefix=\"LL\" psCounts=\"digits\" psCoding=\"hex\"");
  expectBoth("04A50F", "A50F");
  expectRefused("03A50", "Offset[22]: expected an even number of hexadecimal digits, found 3.");
  cvtEnd();
  define("psType=\"b\" psPrefix=\"LL\" psCoding=\"hex\" psValue=\"bits\"");
  expectBoth("02A50F", "1010010100001111");
}

// --- Constants, defaults, mandatory fields

TEST_F(Field, AConstantIsTheOnlyValue) {
  define("psType=\"an\" nLen=\"2\" psConst=\"AB\"");
  expectBoth("AB", "AB");
  expectRefused("AC", "Offset[20]: expected \"AB\", found \"AC\". The field is a constant.");
  expectNotWritten("AC",
                   "Offset[20]: expected \"AB\", found \"AC\". Leave the value empty or equal to psConst.");
  const Wire wire = create("M");
  set(wire, "Mti", "0200");
  EXPECT_EQ(generate(wire), message("AB"));
  EXPECT_NE(parse("M", "0200" + bitmap({})), nullptr) << told();
}

TEST_F(Field, AConstantIsReadAsItIsWritten) {
  struct Case {
    const char *psAttributes;
    const char *psSaid;
    const char *psBytes;
    const char *psRead;
  };
  for (const Case &one :
       {Case{"psType=\"an\" nLen=\"5\"", "AB", "AB   ", "AB   "},
        Case{"psType=\"an\" nLen=\"5\" nTrim=\"1\"", "AB", "AB   ", "AB"},
        Case{"psType=\"n\" nLen=\"3\"", "5", "005", "005"},
        Case{"psType=\"n\" nLen=\"3\" nTrim=\"1\"", "005", "005", "5"},
        Case{"psType=\"b\" nLen=\"1\"", "ab", "\xAB", "AB"},
        Case{"psType=\"n\" psCoding=\"bcd\" psPrefix=\"L\" psCounts=\"bytes\"", "123", "2\x01\x23", "0123"},
        Case{"psType=\"z\" psCoding=\"bcd\" nLen=\"4\"", "12D3", "\x12\xD3", "12=3"}}) {
    define(std::string(one.psAttributes) + " psConst=\"" + one.psSaid + "\"");
    expectBoth(one.psBytes, one.psRead);
    expectWritten("", one.psBytes);
    expectWritten(one.psSaid, one.psBytes);
    expectWritten(one.psRead, one.psBytes);
    cvtEnd();
  }
}

TEST_F(Field, ADefaultStandsInForAnEmptyValue) {
  define("psType=\"n\" nLen=\"3\" psDefault=\"360\"");
  expectWritten("", "360");
  expectWritten("392", "392");
}

TEST_F(Field, AMandatoryFieldIsThere) {
  define("psType=\"n\" nLen=\"3\" nMandatory=\"1\"");
  test::clearLog();
  EXPECT_EQ(parse("M", "0200" + bitmap({})), nullptr);
  EXPECT_EQ(fault(), "Msg[M] Field[F] Offset[4]: expected data element 2, found none. It is mandatory.");
  const Wire wire = create("M");
  set(wire, "Mti", "0200");
  test::clearLog();
  EXPECT_EQ(generate(wire), "failed");
  EXPECT_EQ(fault(), "Msg[M] Field[F] Offset[4]: expected a value, found none. The field is mandatory.");
}

// --- Dates

TEST_F(Field, DatesAreCheckedWhenAsked) {
  struct Case {
    const char *psPattern;
    std::vector<std::string> good;
    std::vector<std::string> bad;
  };
  for (const Case &one :
       {Case{"MMDD", {"0101", "0229", "1231"}, {"0001", "1301", "0100", "0132", "0230", "0431", "9099"}},
        Case{"MMDDhhmmss", {"0229235959", "0101000000"}, {"0101240000", "0101006000", "0101000060"}},
        Case{"YYMM", {"2912", "0001"}, {"2900", "2913"}},
        Case{"YYMMDD", {"240229", "000229", "230228"}, {"230229", "240230"}},
        Case{"YYYYMMDD", {"20000229", "20240229"}, {"19000229", "20230229", "20241301"}},
        Case{"DDMMYY", {"290224"}, {"290223", "022924"}}, Case{"hhmmss", {"000000", "235959"}, {"240000"}}}) {
    const std::string sPattern = one.psPattern;
    define("psType=\"n\" nLen=\"" + std::to_string(sPattern.size()) + "\" psDate=\"" + sPattern + "\"");
    for (const std::string &s : one.good) expectBoth(s, s);
    for (const std::string &s : one.bad) {
      test::clearLog();
      EXPECT_EQ(parse("M", message(s)), nullptr) << sPattern << s;
      EXPECT_NE(fault().find("found \"" + s + "\". See psDate."), std::string::npos) << fault();
      const Wire wire = create("M");
      set(wire, "Mti", "0200");
      set(wire, "F", s);
      EXPECT_EQ(generate(wire), "failed") << s;
    }
    cvtEnd();
  }
}

}  // namespace

// Fields of the format `fix`: text, padding, character sets, numbers, constants, lists, defaults.
#include <gtest/gtest.h>

#include <cstring>

#include "fix_config.h"

using namespace test::fix;

namespace {

// A configuration whose message M is one field F.
class OneField {
 public:
  explicit OneField(const std::string &sField, const std::string &sMessage = "") {
    m_config.message("M", sMessage, {field("F", sField)});
    EXPECT_EQ(m_config.start(), 0) << told();
  }
  ~OneField() { cvtEnd(); }
  OneField(const OneField &) = delete;
  OneField &operator=(const OneField &) = delete;

  // The value that the bytes give, or the fault.
  std::string read(const std::string &sBytes) const {
    test::clearLog();
    const Record message = parse("M", sBytes);
    return message == nullptr ? fault() : get(message, "F");
  }

  // The bytes that the value gives, or the fault.
  std::string write(const std::string &sValue) const {
    test::clearLog();
    const Record message = create("M");
    set(message, "F", sValue);
    const std::string sBytes = generate(message);
    return sBytes == "failed" ? fault() : sBytes;
  }

  void both(const std::string &sBytes, const std::string &sValue) const {
    EXPECT_EQ(read(sBytes), sValue);
    EXPECT_EQ(write(sValue), sBytes);
  }

 private:
  FixConfig m_config;
};

}  // namespace

TEST(FixField, TextIsPaddedWithBlanksBehindIt) {
  const OneField f("nLen=\"6\"");
  f.both("Ann   ", "Ann");
  f.both("Anna B", "Anna B");
  f.both("  x   ", "  x");
  f.both("      ", "");
}

TEST(FixField, TextCanStandAtTheRight) {
  const OneField f("nLen=\"6\" psAlign=\"right\" psPad=\"*\"");
  f.both("***Ann", "Ann");
  f.both("***A**", "A**");
  f.both("******", "");
}

TEST(FixField, LongPaddingIsTakenOff) {
  for (const char *align : {"left", "right"}) {
    const OneField f("nLen=\"100\" psAlign=\"" + std::string(align) + "\"");
    for (size_t n = 0; n <= 100; ++n) {
      const std::string text(n, 'x');
      const std::string pads(100 - n, ' ');
      f.both(*align == 'l' ? text + pads : pads + text, text);
    }
    cvtEnd();
  }
}

TEST(FixField, TextThatIsTooLongIsRefusedOrCut) {
  EXPECT_EQ(OneField("nLen=\"4\"").write("abcde"),
            "Msg[M] Field[F] Offset[0]: expected at most 4 bytes, found \"abcde\". Shorten the value, or set "
            "psOverflow to cut.");
  EXPECT_EQ(OneField("nLen=\"4\" psOverflow=\"cut\"").write("abcde"), "abcd");
}

TEST(FixField, CutNeverSplitsACharacter) {
  const OneField f("nLen=\"4\" psOverflow=\"cut\"");
  EXPECT_EQ(f.write("a中中"), "a中");
  EXPECT_EQ(f.write("ab中"), "ab  ");
  EXPECT_EQ(f.write("中é中"), "中 ");
}

TEST(FixField, TooFewBytesAreRefused) {
  const OneField f("nLen=\"6\"");
  EXPECT_EQ(f.read("Ann"), "Msg[M] Field[F] Offset[0]: expected 6 bytes, found \"Ann\" and the end.");
  EXPECT_EQ(f.read(""), "Msg[M] Field[F] Offset[0]: expected 6 bytes, found the end.");
}

TEST(FixField, ControlCharactersAreRefusedUnlessKept) {
  for (const char *bad : {"a\nb", "\x01", "a\x7F", "\xC2\x85"}) {
    const OneField f("nLen=\"4\"");
    const std::string bytes = bad + std::string(4 - std::strlen(bad), ' ');
    EXPECT_NE(f.read(bytes).find("expected text without control characters"), std::string::npos) << bad;
    EXPECT_NE(f.write(bad).find("expected text without control characters"), std::string::npos) << bad;
    cvtEnd();
    OneField("nLen=\"4\" psControl=\"kept\"").both(bytes, bad);
    cvtEnd();
    OneField("nLen=\"4\"", "psControl=\"kept\"").both(bytes, bad);
    cvtEnd();
  }
}

TEST(FixField, ControlCharacterIsFoundAtEveryPlace) {
  const OneField f("nLen=\"20\"");
  for (size_t i = 0; i < 20; ++i) {
    std::string bytes(20, 'x');
    bytes[i] = '\t';
    EXPECT_NE(f.read(bytes).find("Offset[" + std::to_string(i) + "]"), std::string::npos) << f.read(bytes);
  }
}

TEST(FixField, Utf8IsChecked) {
  const OneField f("nLen=\"6\"");
  f.both("中é ", "中é");
  EXPECT_EQ(f.read("ab\xFF   "),
            "Msg[M] Field[F] Offset[2]: expected valid characters of UTF-8, found "
            "\"ab\\xFF\". Correct the text, or psCharset.");
  EXPECT_NE(f.read("abcde\xC3").find("Offset[5]: expected a whole character of UTF-8"), std::string::npos);
  EXPECT_NE(f.write("a\xC3").find("expected a whole character of UTF-8"), std::string::npos);
}

TEST(FixField, CharacterSetOfTheMessageHoldsForAllFields) {
  const OneField f("nLen=\"6\"", "psCharset=\"WINDOWS-1252\"");
  f.both("\x80 5\xFC  ", "€ 5ü");
  EXPECT_NE(f.read("\x81     ").find("expected valid characters of WINDOWS-1252"), std::string::npos);
  EXPECT_NE(f.write("中").find("expected characters that the set has of WINDOWS-1252"), std::string::npos);
}

TEST(FixField, TextIsNotWrittenWithLikeCharactersOfTheSet) {
  {
    const OneField f("nLen=\"6\"", "psCharset=\"WINDOWS-31J\"");
    f.both("\x93\xFA\\   ", "日\\");
    EXPECT_EQ(f.write("¥500"),
              "Msg[M] Field[F] Offset[0]: expected characters that the set has of WINDOWS-31J, found "
              "\"\\xC2\\xA5500\". Correct the text, or psCharset.");
  }
  const OneField f("nLen=\"6\"", "psCharset=\"IBM930\"");
  EXPECT_NE(f.write("a·b").find("expected characters that the set has of IBM930"), std::string::npos);
}

TEST(FixField, AsciiAloneRefusesAnythingElse) {
  const OneField f("nLen=\"6\"", "psCharset=\"US-ASCII\"");
  f.both("abc   ", "abc");
  EXPECT_NE(f.read("ab\x80   ").find("Offset[2]"), std::string::npos);
}

TEST(FixField, EbcdicIsPaddedWithItsOwnBlank) {
  const OneField f("nLen=\"6\"", "psCharset=\"IBM037\"");
  f.both("\xC8\x85\x93\x93\x96\x40", "Hello");
  f.both("\x40\x40\x40\x40\x40\x40", "");
  EXPECT_NE(f.read(std::string("\xC8\0\x40\x40\x40\x40", 6)).find("Offset[1]: expected text without control"),
            std::string::npos);
}

TEST(FixField, CharacterSetOfAFieldGoesFirst) {
  OneField("nLen=\"4\" psCharset=\"IBM037\"").both("\xC1\xC2\x40\x40", "AB");
}

TEST(FixField, Gb18030IsPaddedByBytes) {
  const OneField f("nLen=\"6\"", "psCharset=\"GB18030\"");
  f.both("\xD6\xD0\xB9\xFA  ", "中国");
  f.both("\x90\x30\x81\x30  ", "𐀀");
  f.both("ab    ", "ab");
  EXPECT_NE(f.read("a\xD6\xD0 \xB9 ").find("Offset[4]"), std::string::npos);
}

TEST(FixField, PadThatEndsACharacterIsNotTakenFromIt) {
  // The last byte of this character is the digit 0.
  const OneField f("nLen=\"6\" psPad=\"0\"", "psCharset=\"GB18030\"");
  f.both(
      "\x90\x30\x81\x30"
      "00",
      "𐀀");
  f.both("a00000", "a");
}

TEST(FixField, PadWrittenAsHexadecimalIsTheByteItself) {
  OneField("nLen=\"4\" psPad=\"0x00\"").both(std::string("ab\0\0", 4), "ab");
  cvtEnd();
  OneField("nLen=\"4\" psPad=\"0xFF\"").both("ab\xFF\xFF", "ab");
  cvtEnd();
  OneField("nLen=\"4\" psPad=\"0x20\"", "psCharset=\"IBM037\"").both("\xC1\x20\x20\x20", "A");
  cvtEnd();
  OneField("nLen=\"4\" psPad=\"0xFF\"", "psCharset=\"GB18030\"").both("\xD6\xD0\xFF\xFF", "中");
}

TEST(FixField, LengthCanCountCharacters) {
  const OneField f("nLen=\"3\" psUnit=\"chars\"");
  f.both("中é ", "中é");
  f.both("中中中", "中中中");
  f.both("   ", "");
  EXPECT_EQ(f.read("中中"),
            "Msg[M] Field[F] Offset[0]: expected 3 characters, found \"\\xE4\\xB8\\xAD\\xE4\\xB8\\xAD\" and "
            "the end.");
  EXPECT_NE(f.write("中中中中").find("expected at most 3 characters"), std::string::npos);
  EXPECT_NE(f.read("a\xFF"
                   "b")
                .find("Offset[1]: expected valid characters of UTF-8"),
            std::string::npos);
}

TEST(FixField, CharactersOfGb18030AreCounted) {
  const OneField f("nLen=\"3\"", "psCharset=\"GB18030\" psUnit=\"chars\"");
  f.both("a\xD6\xD0\x90\x30\x81\x30", "a中𐀀");
  f.both("a\xD6\xD0 ", "a中");
}

TEST(FixField, TextByCharactersIsCutAndAlignedToo) {
  EXPECT_EQ(OneField("nLen=\"2\" psUnit=\"chars\" psOverflow=\"cut\"").write("中é中"), "中é");
  cvtEnd();
  OneField("nLen=\"4\" psUnit=\"chars\" psAlign=\"right\"").both("  中é", "中é");
}

TEST(FixField, RawBytesAreLeftAlone) {
  const OneField f("nLen=\"4\" psType=\"raw\"");
  f.both(std::string("\0\x20\xFF\x20", 4), std::string("\0\x20\xFF\x20", 4));
  EXPECT_EQ(f.write("abc"),
            "Msg[M] Field[F] Offset[0]: expected 4 bytes, found 3 bytes. Set psPad to fill shorter values.");
  EXPECT_EQ(f.write("abcde"),
            "Msg[M] Field[F] Offset[0]: expected 4 bytes, found 5 bytes. Set psPad to fill shorter values.");
  EXPECT_NE(f.write("").find("expected a value"), std::string::npos);
}

TEST(FixField, RawBytesWithAPadAreFilled) {
  const OneField f("nLen=\"4\" psType=\"raw\" psPad=\"0x00\"");
  f.both(std::string("\xFF\x01\0\0", 4), "\xFF\x01");
  f.both(std::string(4, '\0'), "");
}

TEST(FixField, ConstantIsTheOnlyValue) {
  const OneField f("psConst=\"HDR\"");
  f.both("HDR", "HDR");
  EXPECT_EQ(f.write(""), "HDR");
  EXPECT_EQ(f.read("HDX"), "Msg[M] Field[F] Offset[0]: expected \"HDR\", found \"HDX\".");
  EXPECT_EQ(f.write("HDX"),
            "Msg[M] Field[F] Offset[0]: expected \"HDR\", found \"HDX\". Leave the value empty or "
            "equal to psConst.");
}

TEST(FixField, ConstantIsPaddedAndConverted) {
  OneField("psConst=\"A\" nLen=\"3\"", "psCharset=\"IBM037\"").both("\xC1\x40\x40", "A");
  cvtEnd();
  OneField("psConst=\"7\" nLen=\"3\" psType=\"number\"").both("007", "7");
  cvtEnd();
  OneField("psConst=\"7\" nLen=\"2\" psType=\"packed\" psSign=\"trailing\" nDecimals=\"1\"")
      .both("\x07\x0C", "7.0");
  cvtEnd();
  OneField("psConst=\"\" nLen=\"3\"").both("   ", "");
}

TEST(FixField, OnlyListedValuesAreAllowed) {
  const OneField f("nLen=\"3\" psValues=\"ANN|MI|\"");
  f.both("ANN", "ANN");
  f.both("MI ", "MI");
  f.both("   ", "");
  EXPECT_EQ(f.read("BIL"),
            "Msg[M] Field[F] Offset[0]: expected one of \"ANN\", \"MI\", \"\", found \"BIL\". Write one "
            "of them, or add the value to psValues.");
  EXPECT_NE(f.write("BIL").find("expected one of"), std::string::npos);
}

TEST(FixField, ListWithoutTheEmptyValueRefusesBlanks) {
  const OneField f("nLen=\"3\" psValues=\"ANN|MIS\"");
  EXPECT_NE(f.read("   ").find("expected a value"), std::string::npos);
  EXPECT_NE(f.write("").find("expected a value"), std::string::npos);
}

TEST(FixField, ListedNumbersAreComparedAsNumbers) {
  const OneField f("nLen=\"3\" psType=\"number\" psValues=\"5|022\"");
  f.both("022", "22");
  f.both("005", "5");
  EXPECT_NE(f.read("007").find("expected one of \"5\", \"22\""), std::string::npos);
}

TEST(FixField, NumbersThatAreWrittenMayDifferFromTheListInForm) {
  {
    const OneField f("nLen=\"2\" psType=\"number\" psValues=\"7|8\"");
    for (const char *value : {"7", "07", "+7", "007"}) EXPECT_EQ(f.write(value), "07") << value;
    EXPECT_NE(f.write("09").find("expected one of \"7\", \"8\", found \"09\""), std::string::npos);
    EXPECT_NE(f.write("x7").find("expected one of"), std::string::npos);
  }
  const OneField f("nLen=\"4\" psType=\"number\" nDecimals=\"2\" psValues=\"7|8.5\"");
  for (const char *value : {"7", "7.0", "7.00"}) EXPECT_EQ(f.write(value), "0700") << value;
  EXPECT_EQ(f.write("8.5"), "0850");
  EXPECT_NE(f.write("8.51").find("expected one of \"7.00\", \"8.50\", found \"8.51\""), std::string::npos);
}

TEST(FixField, ConstantNumberMayDifferInForm) {
  const OneField f("nLen=\"2\" psType=\"number\" psConst=\"5\"");
  for (const char *value : {"", "5", "05", "+5"}) EXPECT_EQ(f.write(value), "05") << value;
  EXPECT_EQ(
      f.write("50"),
      "Msg[M] Field[F] Offset[0]: expected \"5\", found \"50\". Leave the value empty or equal to psConst.");
}

TEST(FixField, DefaultIsWrittenForAnEmptyValue) {
  const OneField f("nLen=\"3\" psDefault=\"EUR\"");
  EXPECT_EQ(f.write(""), "EUR");
  f.both("USD", "USD");
  EXPECT_NE(f.read("   ").find("expected a value"), std::string::npos) << "blanks would not come back";
}

TEST(FixField, LenientMessageReadsABlankFieldWithDefault) {
  EXPECT_EQ(OneField("nLen=\"3\" psDefault=\"EUR\"", "nLenient=\"1\"").read("   "), "");
}

TEST(FixField, LenientMessageRefusesABlankNumberWithDefault) {
  expectRefusal(OneField("nLen=\"3\" psType=\"number\" psDefault=\"5\"", "nLenient=\"1\"").read("   "),
                "expected digits");
}

TEST(FixField, BlankCanBeRefused) {
  const OneField f("nLen=\"3\" psBlank=\"refused\"");
  EXPECT_EQ(f.read("   "),
            "Msg[M] Field[F] Offset[0]: expected a value, found \"   \". Fill the field, or set psBlank to "
            "allowed.");
  EXPECT_EQ(f.write(""),
            "Msg[M] Field[F] Offset[0]: expected a value, found an empty one. Give the field a value, "
            "psDefault, or psBlank allowed.");
}

TEST(FixField, NumbersAreCanonical) {
  const OneField f("nLen=\"10\" psType=\"number\" nDecimals=\"2\"");
  f.both("0000027000", "270.00");
  f.both("0000000000", "0.00");
  EXPECT_EQ(f.read("00CCC00004"),
            "Msg[M] Field[F] Offset[2]: expected digits, found \"00CCC00004\". Correct the number, or "
            "psType and psSign.");
  EXPECT_EQ(f.write("123456789"),
            "Msg[M] Field[F] Offset[0]: expected no more digits than the field has, found "
            "\"123456789\". The field has 10 digits, 2 of them decimals.");
  EXPECT_NE(f.write("1.234").find("no more decimals than the field has"), std::string::npos);
  EXPECT_NE(f.write("-1").find("a number that is not negative"), std::string::npos);
  EXPECT_NE(f.write("12a").find("expected a decimal number"), std::string::npos);
  EXPECT_NE(f.write("").find("expected a value"), std::string::npos);
}

TEST(FixField, NothingButPadsIsNoValueToWrite) {
  const std::string sRefused = "expected a value, found ";
  const struct {
    const char *attributes;
    std::string value;
  } cases[] = {
      {"nLen=\"3\" psBlank=\"refused\"", "   "},
      {"nLen=\"3\" psBlank=\"refused\"", " "},
      {"nLen=\"3\" psUnit=\"chars\" psBlank=\"refused\"", " "},
      {"nLen=\"3\" psAlign=\"right\" psPad=\"0\" psBlank=\"refused\"", "0"},
      {"nLen=\"3\" psCharset=\"IBM037\" psPad=\"0x40\" psBlank=\"refused\"", "  "},
      {"nLen=\"3\" psType=\"raw\" psPad=\"0x00\" psBlank=\"refused\"", std::string(1, '\0')},
  };
  for (const auto &c : cases) {
    const OneField f(c.attributes);
    EXPECT_NE(f.write(c.value).find(sRefused + "\""), std::string::npos) << c.attributes;
    EXPECT_NE(f.write("").find(sRefused + "an empty one"), std::string::npos) << c.attributes;
    cvtEnd();
  }
}

TEST(FixField, DefaultIsWrittenForNothingButPads) {
  EXPECT_EQ(OneField("nLen=\"4\" psDefault=\"EUR\"").write("  "), "EUR ");
  cvtEnd();
  EXPECT_EQ(OneField("nLen=\"4\" psDefault=\"EUR\"", "nLenient=\"1\"").write("  "), "EUR ");
  cvtEnd();
  EXPECT_EQ(OneField("nLen=\"4\" psDefault=\"x\" psPad=\"*\"").write("*"), "x***");
}

TEST(FixField, ValueThatIsCutToNothingIsNone) {
  const std::string sBlanks(4, ' ');
  const struct {
    const char *attributes;
    std::string value;
  } cases[] = {
      {"nLen=\"2\"", "中中"},
      {"nLen=\"2\"", sBlanks + "a"},
      {"nLen=\"2\" psUnit=\"chars\"", sBlanks + "中"},
      {"nLen=\"3\" psCharset=\"GB18030\"", "𐀀"},
      {"nLen=\"2\" psCharset=\"IBM037\"", sBlanks + "a"},
      {"nLen=\"2\" psAlign=\"right\" psPad=\"*\"", "**a"},
      {"nLen=\"2\" nRest=\"1\"", "中"},
  };
  for (const auto &c : cases) {
    const std::string sField = std::string(c.attributes) + " psOverflow=\"cut\"";
    EXPECT_NE(OneField(sField + " psBlank=\"refused\"")
                  .write(c.value)
                  .find(", of which no more than pads fits. Give"),
              std::string::npos)
        << told();
    cvtEnd();
    const OneField f(sField + " psDefault=\"x\"");
    EXPECT_EQ(f.read(f.write(c.value)), "x") << c.attributes;
    cvtEnd();
  }
}

TEST(FixField, ValueOfWhichSomethingIsLeftIsCutWhereOneIsNeeded) {
  const OneField f("nLen=\"3\" psOverflow=\"cut\" psBlank=\"refused\"");
  EXPECT_EQ(f.write("abcd"), "abc");
  EXPECT_EQ(f.write("a中"), "a  ");
  EXPECT_EQ(f.write("中中"), "中");
  EXPECT_NE(f.write("\xFF").find("expected valid characters"), std::string::npos) << told();
}

TEST(FixField, TooSmallABufferDoesNotCutAValue) {
  FixConfig config;
  config.message("M", "",
                 {field("F", "nLen=\"3\" psOverflow=\"cut\" psBlank=\"refused\""),
                  field("R", "nRest=\"1\" psOverflow=\"cut\" psDefault=\"x\"")});
  ASSERT_EQ(config.start(), 0) << told();
  const Record message = create("M");
  set(message, "F", "中");
  set(message, "R", "中");
  EXPECT_EQ(generate(message, 6), "中中") << told();
  for (size_t room = 0; room < 6; ++room) {
    test::clearLog();
    EXPECT_EQ(generate(message, room), "failed");
    EXPECT_TRUE(told("expected room for")) << told();
  }
}

TEST(FixField, LongConstantsAndTagsAreComparedWithTheirPads) {
  for (const std::string &sKind : {std::string("psConst=\"A\""), std::string("psConst=\"A\" nTag=\"1\""),
                                   std::string("psValues=\"AB|A\" nTag=\"1\"")}) {
    for (const bool right : {false, true}) {
      const std::string sPads(299, '*');
      const std::string sBytes = right ? sPads + "A" : "A" + sPads;
      FixConfig config;
      config.message(
          "M", "nWhole=\"1\"",
          {loop("L",
                "psUntil=\"" + std::string(sKind.find("nTag") == std::string::npos ? "end" : "tag") + "\"",
                {field("F", "nLen=\"300\" psPad=\"*\" " + sKind + (right ? " psAlign=\"right\"" : ""))})});
      ASSERT_EQ(config.start(), 0) << told();
      EXPECT_EQ(generate(parse("M", sBytes + sBytes)), sBytes + sBytes) << told();
      for (size_t i = 0; i < sBytes.size(); ++i) {
        std::string sOther = sBytes;
        sOther[i] = 'x';
        EXPECT_EQ(parse("M", sBytes + sOther), nullptr) << i << sKind;
      }
      cvtEnd();
    }
  }
}

TEST(FixField, PadThatIsAByteIsNotTheCharacterOfThatNumber) {
  OneField("nLen=\"3\" psCharset=\"IBM037\" psPad=\"0x40\" psBlank=\"refused\"").both("\x7C\x40\x40", "@");
  cvtEnd();
  OneField("nLen=\"3\" psCharset=\"WINDOWS-1252\" psPad=\"0xA0\" psValues=\"à\"").both("\xE0\xA0\xA0", "à");
}

TEST(FixField, BlankNumberIsEmptyWhereItIsAllowed) {
  OneField("nLen=\"4\" psType=\"number\" psBlank=\"allowed\"").both("    ", "");
  cvtEnd();
  OneField("nLen=\"4\" psType=\"number\" psBlank=\"allowed\"", "psCharset=\"IBM037\"")
      .both("\x40\x40\x40\x40", "");
  cvtEnd();
  OneField("nLen=\"4\" psType=\"zoned\" psBlank=\"allowed\"").both("\x40\x40\x40\x40", "");
  cvtEnd();
  EXPECT_NE(OneField("nLen=\"4\" psType=\"number\"").read("    ").find("expected digits"), std::string::npos);
}

TEST(FixField, NumbersOfEbcdicAreItsDigits) {
  const OneField f("nLen=\"5\" psType=\"number\" psSign=\"leading\" nDecimals=\"1\"", "psCharset=\"IBM037\"");
  f.both("\x60\xF0\xF0\xF1\xF2", "-1.2");
  f.both("\x4E\xF0\xF0\xF1\xF2", "1.2");
  EXPECT_NE(f.read("\x4E\xF0\xF0\xF1\xC2").find("Offset[4]: expected digits"), std::string::npos);
}

TEST(FixField, EditedNumbersAreTexts) {
  OneField("nLen=\"9\" psType=\"number\" psPad=\" \" nDecimals=\"2\" nPoint=\"1\"")
      .both("    12.34", "12.34");
  cvtEnd();
  OneField(
      "nLen=\"9\" psType=\"number\" psPad=\" \" nDecimals=\"2\" nPoint=\"1\" psSign=\"trailing\" "
      "psPlus=\"blank\"")
      .both("   12.34-", "-12.34");
  cvtEnd();
  OneField("nLen=\"6\" psType=\"number\" psPad=\" \" psAlign=\"left\"").both("12    ", "12");
}

TEST(FixField, EveryNumberTypeIsReached) {
  const struct {
    const char *attributes;
    std::string bytes;
    const char *value;
  } cases[] = {
      {"nLen=\"3\" psType=\"zoned\" psSign=\"trailing\"", "\xF1\xF2\xD3", "-123"},
      {"nLen=\"3\" psType=\"zoned-ascii\" psSign=\"trailing\"", "12s", "-123"},
      {"nLen=\"3\" psType=\"zoned-overpunch\" psSign=\"trailing\"", "12L", "-123"},
      {"nLen=\"2\" psType=\"packed\" psSign=\"trailing\"", "\x12\x3D", "-123"},
      {"nLen=\"2\" psType=\"bcd\"", "\x01\x23", "123"},
      {"nLen=\"2\" psType=\"binary\" psSign=\"trailing\"", "\xFF\x85", "-123"},
      {"nLen=\"2\" psType=\"binary-little\"", std::string("\x7B\0", 2), "123"},
  };
  for (const auto &c : cases) {
    OneField(c.attributes).both(c.bytes, c.value);
    cvtEnd();
  }
}

// Fields of which nothing is asked are read and written in one go, numbers of every form among them.
TEST(FixField, NumbersBesideEachOtherAreThoseByThemselves) {
  FixConfig config;
  config.message("M", "",
                 {field("A", "nLen=\"3\""), field("P", "nLen=\"2\" psType=\"packed\" psSign=\"trailing\""),
                  field("E", "nLen=\"6\" psType=\"number\" psPad=\" \" nDecimals=\"2\" nPoint=\"1\""),
                  field("B", "nLen=\"2\" psType=\"binary\""), field("Z", "nLen=\"2\" psType=\"zoned\"")});
  ASSERT_EQ(config.start(), 0);
  const std::string bytes("abc\x12\x3D 12.34\x01\x00\xF4\xF2", 15);
  const Record message = parse("M", bytes);
  ASSERT_NE(message, nullptr) << told();
  EXPECT_EQ(get(message, "P"), "-123");
  EXPECT_EQ(get(message, "E"), "12.34");
  EXPECT_EQ(get(message, "B"), "256");
  EXPECT_EQ(get(message, "Z"), "42");
  EXPECT_EQ(generate(message), bytes);
  std::string damaged = bytes;
  damaged[3] = '\x1F';
  EXPECT_EQ(parse("M", damaged), nullptr);
  EXPECT_EQ(
      fault(),
      "Msg[M] Field[P] Offset[3]: expected packed digits 0 to 9, found \"\\x1F=\". Correct the number, or "
      "psType and "
      "psSign.");
  test::clearLog();
  set(message, "E", "12.345");
  EXPECT_EQ(generate(message), "failed");
  EXPECT_EQ(fault(),
            "Msg[M] Field[E] Offset[5]: expected no more decimals than the field has, found \"12.345\". The "
            "field has "
            "5 digits, 2 of them decimals.");
}

TEST(FixField, OffsetsAndPathsNameTheField) {
  FixConfig config;
  config.message("M", "",
                 {field("A", "nLen=\"3\""), group("G", "", {field("B", "nLen=\"2\" psType=\"number\"")})});
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(parse("M", "abc1x"), nullptr);
  EXPECT_EQ(fault(),
            "Msg[M] Field[G.B] Offset[4]: expected digits, found \"1x\". Correct the number, or psType and "
            "psSign.");
}

TEST(FixField, FaultIsOneLine) {
  const OneField f("nLen=\"3\" psConst=\"abc\"");
  f.read("abd");
  int lines = 0;
  for (const std::string &line : test::logTexts()) lines += line.rfind("Msg[M] Field[", 0) == 0 ? 1 : 0;
  EXPECT_EQ(lines, 1);
}

TEST(FixField, ValueOfALoopInAFieldIsRefused) {
  FixConfig config;
  config.message("M", "", {field("A", "nLen=\"3\"")});
  ASSERT_EQ(config.start(), 0);
  const Record message = create("M");
  cvtNewLoopValueList(message->tValueListInfo.ptValueList, 0, 1);
  EXPECT_EQ(generate(message), "failed");
  EXPECT_TRUE(
      told("Msg[M] Field[A] Offset[0]: expected a value, found a loop. Give this field a value of its own."));
}

// Definitions of the format `iso8583` that make no sense are refused when they are loaded, with a message that
// says where and what to write instead.
#include <gtest/gtest.h>

#include "iso_config.h"

using namespace test::iso;

namespace {

// The plug-in's line about a definition that does not load.
std::string refusal(const std::vector<FormatNode> &nodes, const std::string &sMessage = "") {
  test::clearLog();
  IsoConfig config;
  config.message("M", sMessage, nodes);
  if (config.start() == 0) return "it loads";
  for (const std::string &sLine : test::logTexts()) {
    if (sLine.rfind("Msg[M] ", 0) == 0 || sLine.rfind("File[", 0) == 0) return sLine;
  }
  return "no line: " + told();
}

std::string ofField(const std::string &sAttributes, const std::string &sMessage = "") {
  return refusal({mti(), field("F", sAttributes)}, sMessage);
}

void expectTold(const std::string &sLine, const std::string &sPart) {
  EXPECT_NE(sLine.find(sPart), std::string::npos) << sLine;
}

TEST(IsoDefinition, WhereAndWhatToWriteIsSaid) {
  const std::string sLine = ofField("nNumber=\"2\" psType=\"n\"");
  expectTold(sLine, "Msg[M] Node[F] File[");
  expectTold(sLine,
             "M.xml:3]: expected nLen or psPrefix, found none. Write nLen=\"...\" for a fixed length, or "
             "psPrefix=\"LL\".");
  expectTold(ofField("nNummer=\"2\""), "expected one of psKind, nNumber, psTag, ");
}

TEST(IsoDefinition, AMessageHasOneType) {
  expectTold(refusal({field("F", "nNumber=\"2\" nLen=\"1\"")}),
             "expected a field of psKind mti, found none.");
  expectTold(refusal({mti(), field("N", "psKind=\"mti\"")}),
             "behind those of psKind header, found a second one.");
  expectTold(refusal({mti(), field("H", "psKind=\"header\" nLen=\"2\"")}), "found a header behind it.");
}

TEST(IsoDefinition, NumbersAreThoseOfTheBitmaps) {
  expectTold(ofField("nLen=\"1\""), "expected nNumber of the data element, 1 to 128, found none.");
  expectTold(ofField("nNumber=\"129\" nLen=\"1\""), "1 to 128, found 129. See nBitmaps of IsoMsg.");
  EXPECT_EQ(ofField("nNumber=\"129\" nLen=\"1\"", "nBitmaps=\"3\""), "it loads");
  expectTold(ofField("nNumber=\"1\" nLen=\"1\""),
             "expected another nNumber than that of the bit that says whether");
  EXPECT_EQ(ofField("nNumber=\"65\" nLen=\"1\""), "it loads");
  expectTold(ofField("nNumber=\"65\" nLen=\"1\"", "nBitmaps=\"3\""), "expected another nNumber");
  EXPECT_EQ(ofField("nNumber=\"1\" nLen=\"1\"", "psBitmaps=\"always\""), "it loads");
  expectTold(refusal({mti(), field("A", "nNumber=\"2\" nLen=\"1\""), field("B", "nNumber=\"2\" nLen=\"1\"")}),
             "Node[B] ");
}

TEST(IsoDefinition, ALengthIsFixedOrSaidByAPrefix) {
  expectTold(ofField("nNumber=\"2\" nLen=\"1\" psPrefix=\"L\""), "expected nLen or psPrefix, found both.");
  expectTold(ofField("nNumber=\"2\" nLen=\"1\" nMaxLen=\"2\""),
             "expected nLen, or nMinLen and nMaxLen, found both.");
  expectTold(ofField("nNumber=\"2\" psPrefix=\"L\" nMinLen=\"3\" nMaxLen=\"2\""),
             "expected nMaxLen at least nMinLen");
  expectTold(ofField("nNumber=\"2\" psPrefix=\"L\" nMaxLen=\"10\""),
             "at most 9, found 10. Write a longer psPrefix.");
  expectTold(ofField("nNumber=\"2\" nLen=\"4\" psCounts=\"bytes\""), "expected psCounts with psPrefix");
  EXPECT_EQ(ofField("nNumber=\"2\" psPrefix=\"L\" psPrefixCoding=\"binary\" nMaxLen=\"255\""), "it loads");
}

TEST(IsoDefinition, ACodingFitsItsType) {
  expectTold(ofField("nNumber=\"2\" nLen=\"4\" psType=\"an\" psCoding=\"bcd\""), "found bcd with an.");
  expectTold(ofField("nNumber=\"2\" nLen=\"4\" psType=\"n\" psCoding=\"binary\""), "found binary with n.");
  expectTold(ofField("nNumber=\"2\" nLen=\"4\" psType=\"b\" psCoding=\"text\""), "found text with b.");
  expectTold(ofField("nNumber=\"2\" nLen=\"4\" psType=\"n\" psValue=\"hex\""),
             "expected psValue with type b only");
  expectTold(ofField("nNumber=\"2\" nLen=\"4\" psType=\"n\" psPad=\" \""),
             "expected psPad and psAlign on texts");
  expectTold(ofField("nNumber=\"2\" nLen=\"4\" psType=\"n\" psCoding=\"bcd\" psPad=\"A\""),
             "expected psPad 0 or F");
  expectTold(ofField("nNumber=\"2\" psPrefix=\"LL\" nTrim=\"1\""),
             "expected nTrim on a text or number of fixed");
  expectTold(ofField("nNumber=\"2\" nLen=\"4\" psPad=\"0x00\""),
             "expected nTrim with a psPad that is a byte");
  expectTold(ofField("nNumber=\"2\" nLen=\"4\" psCharset=\"NONE\""),
             "expected a character set that iconv knows");
  expectTold(ofField("nNumber=\"2\" nLen=\"3\" psType=\"x+n\" psCoding=\"bcd\" psCharset=\"UTF-16LE\""),
             "expected a character set in which C is one byte, found UTF-16LE.");
  expectTold(ofField("nNumber=\"2\" nLen=\"4\" psDate=\"MMXX\" psType=\"n\""),
             "expected psDate of YYYY YY MM");
  expectTold(ofField("nNumber=\"2\" nLen=\"5\" psDate=\"MMDD\" psType=\"n\""),
             "expected psDate of YYYY YY MM");
  expectTold(ofField("nNumber=\"2\" nLen=\"4\" psDate=\"MMMM\" psType=\"n\""),
             "expected psDate of YYYY YY MM");
}

TEST(IsoDefinition, ConstantsAndDefaultsAreValuesOfTheField) {
  expectTold(ofField("nNumber=\"2\" nLen=\"2\" psType=\"n\" psConst=\"A1\""),
             "expected a value that the field can have, found \"A1\". expected digits");
  expectTold(ofField("nNumber=\"2\" nLen=\"2\" psDefault=\"ABC\""),
             "found \"ABC\". expected 2 characters, found 3.");
  expectTold(ofField("nNumber=\"2\" nLen=\"2\" psDefault=\"AB\" psConst=\"AB\""),
             "expected psDefault or psConst");
}

TEST(IsoDefinition, FieldsOfBitmapsAndTheRestAreSpecial) {
  expectTold(ofField("psKind=\"bitmap\" nNumber=\"3\""), "expected nNumber of a bitmap, 1 to 2, found 3.");
  expectTold(refusal({mti(), field("A", "psKind=\"bitmap\""), field("B", "psKind=\"bitmap\" nNumber=\"1\"")}),
             "expected one field for a bitmap, found a second one.");
  expectTold(ofField("psKind=\"bitmap\" nLen=\"8\""),
             "expected no length, tag, constant or default on psKind bitmap");
  expectTold(refusal({mti(), field("A", "psKind=\"rest\""), field("B", "psKind=\"rest\"")}),
             "expected one field of psKind rest");
  expectTold(ofField("psKind=\"rest\"", "nBitmaps=\"3\" psThird=\"element\""),
             "expected psKind rest or psThird");
  expectTold(ofField("psKind=\"tag\" nNumber=\"2\""), "expected psKind tag, value, others and order inside");
  expectTold(ofField("nNumber=\"2\" nLen=\"1\"", "psThird=\"element\""),
             "expected psThird element with nBitmaps 3");
}

TEST(IsoDefinition, RecordsStandWhereTheyBelong) {
  const FormatNode bare{"F", "<StructAttr __ID=\"ptStructAttr\"/>"};
  expectTold(refusal({mti(), bare}), "Node[F]: expected an IsoField, found nothing.");
  expectTold(refusal({mti(), group("G", "IsoField", "nNumber=\"2\"", {field("A", "nLen=\"1\"")})}),
             "expected an IsoGroup or an IsoTlv, found IsoField.");
  expectTold(refusal({mti(), loop("L", "", "", "", {field("A", "nLen=\"1\"")})}),
             "expected an IsoGroup or an IsoTlv on a loop, found nothing.");
  expectTold(refusal({mti(), loop("L", "IsoGroup", "nNumber=\"2\" nLen=\"1\"", "", {})}),
             "expected a loop with members, found one without.");
  expectTold(refusal({mti(), loop("L", "IsoGroup", "nNumber=\"2\" nLen=\"1\"", "nMin=\"3\" nMax=\"2\"",
                                  {field("A", "nLen=\"1\"")})}),
             "expected nMax at least nMin");
  IsoConfig config;
  config.file("msg/M.xml", "<iso8583><Msg psMsgName=\"M\">" + chain({mti()}, "ptHead") +
                               "<IsoLoop __ID=\"pInfo\"/></Msg></iso8583>");
  EXPECT_EQ(config.start(), -1);
  EXPECT_TRUE(told("expected IsoMsg as pInfo of Msg, found IsoLoop.")) << told();
}

TEST(IsoDefinition, SubfieldsFitIntoTheirGroup) {
  const auto inGroup = [](const std::string &sGroup, const std::vector<FormatNode> &members) {
    return refusal({mti(), group("G", "IsoGroup", "nNumber=\"43\" " + sGroup, members)});
  };
  expectTold(inGroup("nLen=\"40\"", {field("A", "nLen=\"25\""), field("B", "nLen=\"13\"")}), "Node[G] File[");
  expectTold(inGroup("nLen=\"40\"", {field("A", "nLen=\"25\""), field("B", "nLen=\"13\"")}),
             "expected subfields of 40 bytes, found at most 38. See nLen.");
  expectTold(inGroup("nLen=\"40\"", {field("A", "nLen=\"41\""), field("B", "psPrefix=\"LL\"")}),
             "expected subfields of 40 bytes, found at least 43. See nLen.");
  expectTold(inGroup("psPrefix=\"LL\" nMaxLen=\"10\"", {field("A", "nLen=\"20\"")}),
             "expected subfields of at most 10 bytes, found at least 20. See nMaxLen.");
  EXPECT_EQ(inGroup("nLen=\"40\"", {field("A", "nLen=\"25\""), field("B", "psPrefix=\"LL\"")}), "it loads");
  EXPECT_EQ(inGroup("nLen=\"3\"", {field("A", "nLen=\"6\" psType=\"n\" psCoding=\"bcd\"")}), "it loads");
}

TEST(IsoDefinition, SubfieldsHaveNoNumbersAndTagsNoPrefix) {
  const auto inGroup = [](const std::string &sAttributes) {
    return refusal(
        {mti(), group("G", "IsoGroup", "nNumber=\"2\" psPrefix=\"LL\"", {field("A", sAttributes)})});
  };
  expectTold(inGroup("nNumber=\"3\" nLen=\"1\""), "Node[G.A] ");
  expectTold(inGroup("psTag=\"82\" nLen=\"1\""),
             "expected a subfield, without psKind, psTag and nNumber, found one with");
  const auto inTlv = [](const std::vector<FormatNode> &members) {
    return refusal({mti(), group("G", "IsoTlv", "nNumber=\"2\" psPrefix=\"LL\"", members)});
  };
  expectTold(inTlv({field("A", "nLen=\"1\"")}), "expected psTag, or psKind others or order, found neither.");
  expectTold(inTlv({field("A", "psTag=\"82\" psPrefix=\"LL\"")}),
             "expected no psPrefix beside psTag, found one.");
  expectTold(inTlv({field("A", "psTag=\"82\" nNumber=\"3\"")}), "expected psTag, found nNumber.");
  expectTold(inTlv({field("A", "psTag=\"82\""), field("B", "psTag=\"82\"")}), "a second one for 82.");
  for (const char *const psTag : {"", "8", "9F", "829F", "00", "9F8182", "ZZ", "9F8182830405"}) {
    expectTold(inTlv({field("A", "psTag=\"" + std::string(psTag) + "\"")}),
               "expected a tag of BER-TLV, 1 to 4 bytes");
  }
  expectTold(inTlv({field("A", "psKind=\"order\""), field("B", "psKind=\"order\"")}),
             "expected one such field");
  expectTold(inTlv({field("A", "psKind=\"value\"")}),
             "expected psTag, or psKind others or order, found neither.");
  const auto inLoop = [](const std::vector<FormatNode> &members) {
    return refusal({mti(), loop("L", "IsoTlv", "nNumber=\"2\" psPrefix=\"LL\"", "", members)});
  };
  expectTold(inLoop({field("A", "psTag=\"82\"")}),
             "expected psKind tag or value in a loop of tags, found neither.");
  expectTold(inLoop({field("A", "psKind=\"tag\"")}),
             "expected a field of psKind tag and one of psKind value");
}

}  // namespace

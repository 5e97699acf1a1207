// Data elements with subfields, of the format `iso8583`.
#include <gtest/gtest.h>

#include "iso_config.h"

using namespace test::iso;

namespace {

class Group : public testing::Test {
 protected:
  void define(const FormatNode &node) {
    m_config.message("M", "nWhole=\"1\"", {mti(), node, field("Last", "nNumber=\"60\" nLen=\"1\"")});
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  // Data element 43 with that content, and element 60.
  static std::string message(const std::string &sContent) {
    return "0200" + bitmap({43, 60}) + sContent + "Z";
  }

  static void expectBack(const std::string &sContent) {
    const Wire wire = parse("M", message(sContent));
    ASSERT_NE(wire, nullptr) << told();
    EXPECT_EQ(generate(wire), message(sContent)) << told();
  }

  static void expectRefused(const std::string &sContent, const std::string &sTold) {
    test::clearLog();
    EXPECT_EQ(parse("M", message(sContent)), nullptr);
    EXPECT_EQ(fault(), "Msg[M] Field[" + sTold);
  }

  static void expectNotWritten(const Wire &wire, const std::string &sTold) {
    test::clearLog();
    EXPECT_EQ(generate(wire), "failed");
    EXPECT_EQ(fault(), "Msg[M] Field[" + sTold);
  }

  static Wire with(const std::vector<std::pair<std::string, std::string>> &values) {
    Wire wire = create("M");
    set(wire, "Mti", "0200");
    set(wire, "Last", "Z");
    for (const auto &[sName, sValue] : values) set(wire, sName, sValue);
    return wire;
  }

  IsoConfig m_config;
};

const std::vector<FormatNode> kParts = {field("A", "nLen=\"3\" nTrim=\"1\""),
                                        field("B", "psType=\"n\" psPrefix=\"L\""),
                                        field("C", "psType=\"n\" nLen=\"2\"")};

TEST_F(Group, SubfieldsOfAFixedElementFillIt) {
  define(group("G", "IsoGroup", "nNumber=\"43\" nLen=\"8\"", kParts));
  expectBack("AB 21299");
  EXPECT_EQ(get(parse("M", message("AB 21299")), "A"), "AB");
  EXPECT_EQ(get(parse("M", message("AB 21299")), "B"), "12");
  expectRefused("AB 11299", "G] Offset[27]: expected the end behind the last subfield, found \"9\".");
  expectRefused("AB 31299", "G.C] Offset[27]: expected 2 bytes, found 1 and the end.");
  expectRefused("AB 2129x", "G.C] Offset[27]: expected digits, found \"9x\". Correct it, or psType.");
  expectNotWritten(with({{"A", "AB"}, {"B", "1"}, {"C", "99"}}),
                   "G] Offset[20]: expected 8 bytes, found 7. See nLen.");
  EXPECT_EQ(generate(with({{"A", "AB"}, {"B", "12"}, {"C", "99"}})), message("AB 21299"));
}

TEST_F(Group, AnElementOfVariableLengthMayEndInFrontOfAnySubfield) {
  define(group("G", "IsoGroup", "nNumber=\"43\" psPrefix=\"LL\" nMaxLen=\"10\"", kParts));
  for (const char *const psContent : {"00", "03AB ", "04AB 0", "06AB 212", "08AB 21299", "03   "}) {
    expectBack(psContent);
  }
  expectRefused("02AB", "G.A] Offset[22]: expected 3 bytes, found 2 and the end.");
  expectRefused("11AB 51234599",
                "G] Offset[20]: expected at most 10 bytes, found 11. See nMinLen and nMaxLen.");
  EXPECT_EQ(generate(with({{"A", "AB"}})), message("03AB "));
  EXPECT_EQ(generate(with({{"B", "1"}})), message("05   11"));
  EXPECT_EQ(generate(with({})), "0200" + bitmap({60}) + "Z");
}

TEST_F(Group, AMandatorySubfieldIsThereWhenTheElementIs) {
  define(group("G", "IsoGroup", "nNumber=\"43\" psPrefix=\"LL\"",
               {field("A", "nLen=\"1\""), field("B", "nLen=\"1\" nMandatory=\"1\"")}));
  expectBack("02AB");
  expectRefused("01A", "G.B] Offset[23]: expected a value, found the end of the element. It is mandatory.");
  expectNotWritten(with({{"A", "A"}}),
                   "G.B] Offset[23]: expected a value, found none. The field is mandatory; "
                   "nKeepEmpty=\"1\" allows an empty one.");
}

TEST_F(Group, AMandatoryElementMayBeAGroup) {
  define(group("G", "IsoGroup", "nNumber=\"43\" psPrefix=\"LL\" nMandatory=\"1\"", kParts));
  test::clearLog();
  EXPECT_EQ(parse("M", "0200" + bitmap({60}) + "Z"), nullptr);
  EXPECT_EQ(fault(), "Msg[M] Field[G] Offset[4]: expected data element 43, found none. It is mandatory.");
}

TEST_F(Group, GroupsStandInGroups) {
  define(
      group("G", "IsoGroup", "nNumber=\"43\" psPrefix=\"LL\"",
            {field("A", "nLen=\"1\""),
             group("H", "IsoGroup", "psPrefix=\"L\"", {field("X", "nLen=\"1\""), field("Y", "nLen=\"1\"")}),
             field("B", "nLen=\"1\"")}));
  for (const char *const psContent : {"01A", "02A0", "03A0B", "05A2XYB", "04A1XB"}) expectBack(psContent);
  EXPECT_EQ(get(parse("M", message("05A2XYB")), "Y"), "Y");
  expectRefused("05A3XYB", "G.H] Offset[26]: expected the end behind the last subfield, found \"B\".");
}

TEST_F(Group, AMandatoryGroupInAGroupHasAValue) {
  const std::vector<FormatNode> members = {
      field("A", "nLen=\"1\""),
      group("H", "IsoGroup", "psPrefix=\"L\" nMandatory=\"1\"", {field("X", "nLen=\"1\"")})};
  define(group("G", "IsoGroup", "nNumber=\"43\" psPrefix=\"LL\"", members));
  for (const char *const psContent : {"03A1X", "02A0"}) expectBack(psContent);
  expectRefused("01A", "G.H] Offset[23]: expected a value, found the end of the element. It is mandatory.");
  const std::string sTold =
      "expected a value, found none. It is mandatory; give something inside of it a value.";
  expectNotWritten(with({{"A", "A"}}), "G.H] Offset[23]: " + sTold);
  EXPECT_EQ(generate(with({})), "0200" + bitmap({60}) + "Z");
  cvtEnd();
  define(loop("G", "IsoGroup", "nNumber=\"43\" psPrefix=\"LL\"", "", members));
  for (const char *const psContent : {"03A1X", "05A0B1X"}) expectBack(psContent);
  const Wire wire = with({});
  addTime(wire, "G");
  set(wire, "G.A", "A");
  expectNotWritten(wire, "G[0].H] Offset[23]: " + sTold);
}

TEST_F(Group, AMandatoryLoopInAGroupIsThere) {
  define(group("G", "IsoGroup", "nNumber=\"43\" psPrefix=\"LL\"",
               {field("A", "nLen=\"1\""), loop("Notes", "IsoGroup", "psPrefix=\"L\" nMandatory=\"1\"", "",
                                               {field("Note", "psPrefix=\"L\"")})}));
  for (const char *const psContent : {"02A0", "03A10", "04A21x"}) expectBack(psContent);
  expectNotWritten(with({{"A", "A"}}),
                   "G.Notes] Offset[23]: expected a value, found none. It is mandatory; give something "
                   "inside of it a value.");
}

TEST_F(Group, ALoopRepeatsItsSubfieldsToTheEndOfTheElement) {
  define(loop("G", "IsoGroup", "nNumber=\"43\" psPrefix=\"LL\"", "nMin=\"1\" nMax=\"3\"",
              {field("A", "nLen=\"1\""), field("B", "psPrefix=\"L\"")}));
  expectBack("02A0");
  expectBack("07A1xB2yz");
  EXPECT_EQ(cvtGetLoopTime(parse("M", message("07A1xB2yz")).get(), test::cs("G")), 2);
  expectRefused("08A0B0C0D0",
                "G[3]] Offset[28]: expected at most 3 repetitions, found one more. See nMax of its "
                "IsoLoop.");
  expectRefused("00", "G] Offset[22]: expected at least 1 repetitions, found 0. See nMin of its IsoLoop.");
  expectRefused("03A0B", "G[1].B] Offset[25]: expected 1 byte, found the end.");
  const Wire wire = with({});
  EXPECT_EQ(generate(wire), "0200" + bitmap({60}) + "Z");
  for (int i = 0; i < 3; ++i) {
    addTime(wire, "G");
    set(wire, "G.A", "A");
  }
  EXPECT_EQ(generate(wire), message("06A0A0A0"));
  addTime(wire, "G");
  set(wire, "G.A", "A");
  expectNotWritten(
      wire, "G] Offset[22]: expected at most 3 repetitions, found 4. See nMin and nMax of its IsoLoop.");
}

TEST_F(Group, ALoopMayBeThereWithoutRepetitions) {
  const FormatNode notes = loop("Notes", "IsoGroup", "psPrefix=\"L\"", "", {field("Note", "psPrefix=\"L\"")});
  define(loop("G", "IsoGroup", "nNumber=\"43\" psPrefix=\"LL\"", "", {field("A", "nLen=\"1\""), notes}));
  for (const char *const psContent : {"00", "02A0",
                                      "07A0B3"
                                      "1x0"})
    expectBack(psContent);
  cvtEnd();
  define(group("G", "IsoGroup", "nNumber=\"43\" psPrefix=\"LL\"", {field("A", "nLen=\"1\""), notes}));
  for (const char *const psContent : {"00", "01A", "02A0", "03A10"}) expectBack(psContent);
}

}  // namespace

// Loops of the format `fix`.
#include <gtest/gtest.h>

#include "fix_config.h"

using namespace test::fix;

namespace {

void expectSame(const std::string &sBytes) {
  test::clearLog();
  const Record message = parse("M", sBytes);
  ASSERT_NE(message, nullptr) << told();
  EXPECT_EQ(message->nNowLen, static_cast<int>(sBytes.size()));
  EXPECT_EQ(generate(message), sBytes) << told();
  EXPECT_EQ(generate(message, sBytes.size()), sBytes) << "in a buffer of exactly its size";
}

std::string faultOf(const std::string &sBytes) {
  test::clearLog();
  return parse("M", sBytes) == nullptr ? fault() : "accepted";
}

std::string faultOf(const Record &message) {
  test::clearLog();
  const std::string bytes = generate(message);
  return bytes == "failed" ? fault() : bytes;
}

class OneMessage {
 public:
  explicit OneMessage(const std::vector<FormatNode> &nodes, const std::string &sMessage = "") {
    m_config.message("M", sMessage, nodes);
    EXPECT_EQ(m_config.start(), 0) << told();
  }
  ~OneMessage() { cvtEnd(); }
  OneMessage(const OneMessage &) = delete;
  OneMessage &operator=(const OneMessage &) = delete;

 private:
  FixConfig m_config;
};

const FormatNode kCount = field("Count", "nLen=\"2\" psType=\"number\"");
const std::vector<FormatNode> kItem = {field("Code", "nLen=\"2\""),
                                       field("Qty", "nLen=\"3\" psType=\"number\"")};

}  // namespace

TEST(FixLoop, CountFieldSaysHowOften) {
  const OneMessage m({kCount, loop("Items", "", kItem, "Count"), field("End", "nLen=\"1\"")});
  expectSame("02aa001bb002.");
  expectSame("00.");
  const Record message = parse("M", "02aa001bb002.");
  EXPECT_EQ(cvtGetLoopTime(message.get(), test::cs("Items")), 2);
  ASSERT_TRUE(at(message, "Items", 1));
  EXPECT_EQ(get(message, "Items.Code"), "bb");
  EXPECT_EQ(get(message, "Items.Qty"), "2");
}

TEST(FixLoop, CountFieldIsWrittenFromTheRepetitions) {
  const OneMessage m({kCount, loop("Items", "", kItem, "Count")});
  const Record message = create("M");
  EXPECT_EQ(generate(message), "00");
  set(message, "Count", "77");
  for (const char *code : {"aa", "bb", "cc"}) {
    addTime(message, "Items");
    set(message, "Items.Code", code);
    set(message, "Items.Qty", "7");
  }
  EXPECT_EQ(generate(message), "03aa007bb007cc007");
}

TEST(FixLoop, APositionIsTheNumberOfTheRepetitionAroundIt) {
  const FormatNode number = field("No", "nLen=\"2\" psType=\"number\" nPosition=\"1\"");
  const OneMessage m({loop("L", "nCount=\"2\"",
                           {number, group("G", "", {field("Text", "nLen=\"3\" nPosition=\"1\"")}), kCount,
                            loop("K", "", {number}, "Count")})});
  expectSame("011  020102022  00");
  EXPECT_EQ(
      faultOf("011  00032  00"),
      "Msg[M] Field[L[1].No] Offset[7]: expected 2, the number of its repetition, found \"3\". Number the "
      "repetitions from 1.");
  expectRefusal(faultOf("0101 00"),
                "Field[L[0].G.Text] Offset[2]: expected 1, the number of its repetition, found "
                "\"01\".");
  expectRefusal(faultOf("011  020101"),
                "Field[L[0].K[1].No] Offset[9]: expected 2, the number of its repetition");
}

TEST(FixLoop, ABlankPositionIsRefused) {
  for (const char *type : {"text", "number"}) {
    const OneMessage m({loop("L", "nCount=\"2\"",
                             {field("No", "nLen=\"2\" psType=\"" + std::string(type) + "\" nPosition=\"1\""),
                              field("A", "nLen=\"1\"")})});
    expectRefusal(faultOf("  a  b"), "Field[L[0].No] Offset[0]: expected ");
  }
}

TEST(FixLoop, ABlankPositionComesBackWhereItIsAllowed) {
  for (const char *type : {"text", "number"}) {
    const OneMessage m({loop(
        "L", "nCount=\"2\"",
        {field("No", "nLen=\"2\" psBlank=\"allowed\" nPosition=\"1\" psType=\"" + std::string(type) + "\""),
         field("A", "nLen=\"1\"")})});
    expectSame("  a  b");
    const Record message = create("M");
    for (const char *value : {"a", "b"}) {
      addTime(message, "L");
      set(message, "L.A", value);
    }
    expectSame(generate(message));
    EXPECT_EQ(get(parse("M", generate(message)), "L.No"), "2");
  }
}

TEST(FixLoop, APositionIsWrittenWhateverItsValueSays) {
  for (const char *type : {"text", "number", "packed", "binary", "zoned"}) {
    const std::string sField = "nLen=\"2\" psType=\"" + std::string(type) + "\" nPosition=\"1\"";
    const OneMessage m({kCount, loop("L", "", {field("No", sField)}, "Count")});
    const Record message = create("M");
    for (const char *value : {"77", "x", ""}) {
      addTime(message, "L");
      set(message, "L.No", value);
    }
    const std::string bytes = generate(message);
    expectSame(bytes);
    const Record again = parse("M", bytes);
    ASSERT_TRUE(at(again, "L", 2)) << type << told();
    EXPECT_EQ(get(again, "L.No"), "3") << type;
  }
}

TEST(FixLoop, CountFieldMayBePackedOrBinary) {
  for (const char *type : {"psType=\"packed\"", "psType=\"binary\"", "psType=\"bcd\"", "psType=\"zoned\""}) {
    const OneMessage m(
        {field("Count", "nLen=\"2\" " + std::string(type)), loop("Items", "", kItem, "Count")});
    const Record message = create("M");
    addTime(message, "Items");
    set(message, "Items.Qty", "5");
    const std::string bytes = generate(message);
    EXPECT_EQ(bytes.substr(2), "  005") << type;
    expectSame(bytes);
    EXPECT_EQ(get(parse("M", bytes), "Count"), "1");
  }
}

TEST(FixLoop, CountsThatCannotBeAreRefused) {
  const OneMessage m(
      {field("Count", "nLen=\"9\" psType=\"number\" psSign=\"leading\""), loop("Items", "", kItem, "Count")});
  EXPECT_EQ(faultOf("+99999999aa001"),
            "Msg[M] Field[Items] Offset[9]: expected 99999999 repetitions of at least 5 bytes, "
            "found 5 bytes. Correct Count.");
  EXPECT_EQ(faultOf("-00000001aa001"),
            "Msg[M] Field[Items] Offset[9]: expected a count of repetitions, found Count -1.");
  EXPECT_EQ(faultOf("+00000002aa001"),
            "Msg[M] Field[Items] Offset[9]: expected 2 repetitions of at least 5 bytes, found 5 "
            "bytes. Correct Count.");
}

TEST(FixLoop, LargestCountsAreRefusedToo) {
  const OneMessage m({field("Count", "nLen=\"31\" psType=\"number\""),
                      loop("Items", "", {field("Z", "nLen=\"1\"")}, "Count")});
  EXPECT_NE(faultOf(std::string(31, '9') + "x").find("expected a count of repetitions"), std::string::npos);
  EXPECT_NE(
      faultOf(std::string(11, '0') + "18446744073709551615" + "x").find("18446744073709551615 repetitions"),
      std::string::npos);
}

TEST(FixLoop, TooManyRepetitionsForTheLibraryAreRefused) {
  const OneMessage m({loop("Items", "psUntil=\"end\"", {field("Z", "nLen=\"1\"")})});
  EXPECT_EQ(faultOf(std::string(1000, 'x')),
            "Msg[M] Field[Items[999]] Offset[999]: expected at most 999 repetitions, found "
            "one more. Raise gnMaxLoop of the Message section.");
  expectSame(std::string(999, 'x'));
}

TEST(FixLoop, CountThatDoesNotFitItsFieldIsRefused) {
  const OneMessage m({field("Count", "nLen=\"1\" psType=\"number\""),
                      loop("Items", "", {field("Z", "nLen=\"1\"")}, "Count")});
  const Record message = create("M");
  for (int i = 0; i < 10; ++i) addTime(message, "Items");
  EXPECT_NE(faultOf(message).find(
                "Field[Count] Offset[0]: expected no more digits than the field has, found \"10\""),
            std::string::npos);
}

TEST(FixLoop, OneCountFieldMayCountTwoLoops) {
  const OneMessage m({kCount, loop("A", "", {field("X", "nLen=\"1\"")}, "Count"),
                      loop("B", "", {field("Y", "nLen=\"1\"")}, "Count")});
  expectSame("02xxyy");
  const Record message = parse("M", "02xxyy");
  addTime(message, "B");
  EXPECT_EQ(faultOf(message),
            "Msg[M] Field[Count] Offset[0]: expected loops of one length behind one count field, found 2 "
            "and 3 repetitions.");
}

TEST(FixLoop, FixedCountIsExact) {
  const OneMessage m({loop("Items", "nCount=\"3\"", kItem)});
  expectSame("aa001bb002cc003");
  EXPECT_EQ(faultOf("aa001bb002cc"),
            "Msg[M] Field[Items[2].Qty] Offset[12]: expected 3 bytes, found the end.");
  const Record message = create("M");
  addTime(message, "Items");
  EXPECT_EQ(faultOf(message), "Msg[M] Field[Items] Offset[0]: expected at least 3 repetitions, found 1.");
}

TEST(FixLoop, LoopEndsWhereTheTagEnds) {
  const OneMessage m(
      {loop("Lines", "psUntil=\"tag\"",
            {record("Line", "", {field("T", "psConst=\"L\" nTag=\"1\""), field("X", "nLen=\"2\"")})}),
       record("End", "", {field("E", "psConst=\"E\"")})},
      "psSeparator=\"lf\"");
  expectSame("E\n");
  expectSame("Lab\nE\n");
  expectSame("Lab\nLcd\nE\n");
  EXPECT_EQ(faultOf("Lab\nX\n"), "Msg[M] Field[End.E] Offset[4]: expected \"E\", found \"X\".");
}

TEST(FixLoop, LoopRunsToTheEndOfTheBuffer) {
  const OneMessage m({loop("Items", "psUntil=\"end\"", kItem)});
  expectSame("");
  expectSame("aa001bb002");
  EXPECT_EQ(faultOf("aa001b"),
            "Msg[M] Field[Items[1].Code] Offset[5]: expected 2 bytes, found \"b\" and the end.");
}

TEST(FixLoop, LoopsStandInsideLoops) {
  const OneMessage m(
      {kCount, loop("Outer", "",
                    {field("Name", "nLen=\"1\""), field("Inner", "nLen=\"1\" psType=\"number\""),
                     loop("Parts", "", {field("P", "nLen=\"2\"")}, "Inner")},
                    "Count")});
  expectSame("03A2p1p2B0C1p3");
  const Record message = parse("M", "03A2p1p2B0C1p3");
  ASSERT_TRUE(at(message, "Outer", 2));
  ASSERT_EQ(cvtSetLoopTime(message.get(), test::cs("Outer.Parts"), 0), 0);
  EXPECT_EQ(get(message, "Parts.P"), "p3");
  EXPECT_EQ(faultOf("02A2p1p2B3p3p4x"),
            "Msg[M] Field[Outer[1].Parts] Offset[10]: expected 3 repetitions of at least 2 bytes, "
            "found 5 bytes. Correct Inner.");
}

TEST(FixLoop, CountedGroupInsideCountedGroupWithoutSeparators) {
  const OneMessage m({field("Count", "nLen=\"1\" psType=\"number\""),
                      loop("A", "",
                           {field("Inner", "nLen=\"1\" psType=\"number\""),
                            loop("B", "", {field("X", "nLen=\"1\"")}, "Inner")},
                           "Count")});
  for (const char *bytes : {"0", "10", "12AB", "21A2BC", "21A1B"}) expectSame(bytes);
}

TEST(FixLoop, LoopWithoutMembersRepeatsOneField) {
  const OneMessage m({kCount, loop("Codes", "", {}, "Count", "nLen=\"2\"")});
  expectSame("03aabbcc");
  const Record message = parse("M", "02aabb");
  ASSERT_TRUE(at(message, "Codes", 1));
  EXPECT_EQ(get(message, "Codes.Codes"), "bb");
}

TEST(FixLoop, RoomIsReservedForTheMost) {
  const OneMessage m({kCount, loop("Items", "nRoom=\"3\"", kItem, "Count"), field("End", "nLen=\"1\"")});
  expectSame("00               .");
  expectSame("01aa001          .");
  expectSame("03aa001bb002cc003.");
  EXPECT_EQ(faultOf("04aa001bb002cc003dd004."),
            "Msg[M] Field[Items] Offset[2]: expected at most 3 repetitions, found Count 4.");
  EXPECT_EQ(faultOf("01aa001     x    ."),
            "Msg[M] Field[Items] Offset[12]: expected unused room filled with \" \", found "
            "\"x    \". Correct psPad of the loop, or set nLenient to 1.");
  EXPECT_EQ(faultOf("01aa001     "),
            "Msg[M] Field[Items] Offset[7]: expected 10 bytes of unused room, found \"     \".");
}

TEST(FixLoop, RoomIsFilledWithItsPad) {
  const OneMessage m({kCount, loop("Items", "nRoom=\"2\" psPad=\"0x00\"", kItem, "Count")});
  expectSame("01aa001" + std::string(5, '\0'));
}

TEST(FixLoop, LenientMessageSkipsWhateverIsInUnusedRoom) {
  const OneMessage m({kCount, loop("Items", "nRoom=\"2\"", kItem, "Count"), field("End", "nLen=\"1\"")},
                     "nLenient=\"1\"");
  EXPECT_EQ(get(parse("M", "01aa001xxxxx."), "End"), ".");
}

TEST(FixLoop, NumberOfRepetitionsIsBounded) {
  const OneMessage m({loop("Items", "psUntil=\"tag\" nMin=\"1\" nMax=\"2\"",
                           {record("R", "", {field("T", "psConst=\"L\" nTag=\"1\"")})}),
                      field("End", "nLen=\"1\"")});
  EXPECT_EQ(faultOf("."),
            "Msg[M] Field[Items] Offset[0]: expected at least 1 repetitions, found 0 and \".\".");
  expectSame("L.");
  expectSame("LL.");
  EXPECT_EQ(faultOf("LLL."),
            "Msg[M] Field[Items[2]] Offset[2]: expected at most 2 repetitions, found another one.");
  const Record message = create("M");
  EXPECT_EQ(faultOf(message), "Msg[M] Field[Items] Offset[0]: expected at least 1 repetitions, found 0.");
  for (int i = 0; i < 3; ++i) addTime(message, "Items");
  EXPECT_EQ(faultOf(message), "Msg[M] Field[Items] Offset[0]: expected at most 2 repetitions, found 3.");
}

TEST(FixLoop, RecordsInARecordOfCountedItems) {
  const OneMessage m(
      {record("Order", "", {field("Id", "nLen=\"3\""), kCount, loop("Items", "", kItem, "Count")})},
      "psSeparator=\"lf\"");
  expectSame("abc02aa001bb002\n");
  EXPECT_EQ(faultOf("abc01aa001bb002\n"),
            "Msg[M] Field[Order] Offset[10]: expected a line feed, found \"bb002\\x0A\".");
}

TEST(FixLoop, LenientRecordOfNoFixedLengthMayHaveBlanksBehindIt) {
  const OneMessage m({record("Order", "", {kCount, loop("Items", "", kItem, "Count")})},
                     "psSeparator=\"lf\" nLenient=\"1\"");
  EXPECT_EQ(generate(parse("M", "01aa001    \n")), "01aa001\n");
}

TEST(FixLoop, BlanksBehindALenientRecordThatNothingEndsBelongToTheNextOne) {
  const FormatNode codes =
      record("Codes", "",
             {field("Number", "nLen=\"1\" psType=\"number\""), loop("Code", "", {}, "Number", "nLen=\"2\"")});
  const FormatNode texts = loop("Texts", "psUntil=\"end\"", {record("R", "", {field("Text", "nLen=\"4\"")})});
  const OneMessage m({codes, texts}, "nLenient=\"1\" nWhole=\"1\"");
  expectSame("1AA    WXYZ");
  EXPECT_EQ(cvtGetLoopTime(parse("M", "1AA    WXYZ").get(), test::cs("Texts")), 2);
  expectSame("1AA 100WXYZ");
}

TEST(FixLoop, PlainValueInALoopSlotIsRefused) {
  const OneMessage m({kCount, loop("Items", "", kItem, "Count")});
  const Record message = create("M");
  set(message, "Items", "boo");
  EXPECT_EQ(faultOf(message),
            "Msg[M] Field[Count] Offset[0]: expected a loop, found a plain value of 3 bytes. Fill the loop "
            "by repetitions, not by a value.");
}

TEST(FixLoop, ListsWithMoreSlotsThanTheBodyAreFine) {
  const OneMessage m({kCount, loop("Items", "", kItem, "Count")});
  const Record message = create("M");
  ValueList *list = cvtNewLoopValueList(message->tValueListInfo.ptValueList, 1, -1);
  ASSERT_NE(list, nullptr);
  cvtDumpValue(cvtGetListValue(list, 0), test::cs("zz"), 2, message->tValueListInfo.ptMemNode);
  cvtDumpValue(cvtGetListValue(list, 1), test::cs("9"), 1, message->tValueListInfo.ptMemNode);
  EXPECT_EQ(generate(message), "01zz009");
}

TEST(FixLoop, ListsWithFewerSlotsAreRefused) {
  const OneMessage m({kCount, loop("Items", "", kItem, "Count")});
  const Record message = create("M");
  cvtNewLoopValueList(message->tValueListInfo.ptValueList, 1, 1);
  EXPECT_EQ(
      faultOf(message),
      "Msg[M] Field[Items[0]] Offset[2]: expected a value list of 2 slots, found one of 1. Make it with "
      "the definition's own nValueNum or field number.");
}

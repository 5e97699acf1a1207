// Records, groups and choices of the format `fix`.
#include <gtest/gtest.h>

#include "fix_config.h"

using namespace test::fix;

namespace {

const FormatNode kHead =
    record("Head", "nLen=\"4\"", {field("HeadTag", "psConst=\"1\" nTag=\"1\""), field("Name", "nLen=\"3\"")});
const FormatNode kNote = record("Note", "nOptional=\"1\"",
                                {field("NoteTag", "psConst=\"N\" nTag=\"1\""), field("Text", "nLen=\"3\"")});
const FormatNode kTail =
    record("Tail", "", {field("TailTag", "psConst=\"9\" nTag=\"1\""), field("Sum", "nLen=\"3\"")});

void expectSame(const std::string &sName, const std::string &sBytes) {
  test::clearLog();
  const Record message = parse(sName, sBytes);
  ASSERT_NE(message, nullptr) << told();
  EXPECT_EQ(generate(message), sBytes) << told();
  EXPECT_EQ(generate(message, sBytes.size()), sBytes) << "in a buffer of exactly its size";
}

std::string faultOf(const std::string &sName, const std::string &sBytes) {
  test::clearLog();
  return parse(sName, sBytes) == nullptr ? fault() : "accepted";
}

std::string faultOf(const Record &message) {
  test::clearLog();
  const std::string bytes = generate(message);
  return bytes == "failed" ? fault() : bytes;
}

}  // namespace

TEST(FixRecord, SeparatorsStandBehindEachRecord) {
  FixConfig config;
  config.message("None", "", {kHead, kTail});
  config.message("Lf", "psSeparator=\"lf\"", {kHead, kTail});
  config.message("CrLf", "psSeparator=\"crlf\"", {kHead, kTail});
  ASSERT_EQ(config.start(), 0) << told();
  expectSame("None", "1Ann9 12");
  expectSame("Lf", "1Ann\n9 12\n");
  expectSame("CrLf", "1Ann\r\n9 12\r\n");
}

TEST(FixRecord, SeparatorOfARecordGoesFirst) {
  FixConfig config;
  config.message("M", "psSeparator=\"lf\"",
                 {record("A", "psSeparator=\"none\"", {field("X", "nLen=\"2\"")}),
                  record("B", "psSeparator=\"crlf\"", {field("Y", "nLen=\"2\"")}),
                  record("C", "", {field("Z", "nLen=\"2\"")})});
  ASSERT_EQ(config.start(), 0);
  expectSame("M", "xxyy\r\nzz\n");
}

TEST(FixRecord, LengthIsStrict) {
  FixConfig config;
  config.message("M", "psSeparator=\"lf\"", {kHead, kTail});
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(faultOf("M", "1An\n9 12\n"),
            "Msg[M] Field[Head] Offset[0]: expected a record of 4 bytes and a line feed, "
            "found 3 bytes. Correct the record, or set nLenient to 1.");
  EXPECT_EQ(faultOf("M", "1Anna\n9 12\n"),
            "Msg[M] Field[Head] Offset[0]: expected a record of 4 bytes and a line feed, "
            "found 5 bytes. Correct the record, or set nLenient to 1.");
  EXPECT_EQ(faultOf("M", "1Ann\n9 1"),
            "Msg[M] Field[Tail] Offset[5]: expected a record of 4 bytes and a line feed, "
            "found 3 bytes and the end. Correct the record, or set nLenient to 1.");
  EXPECT_EQ(faultOf("M", "1Ann\n"),
            "Msg[M] Field[Tail] Offset[5]: expected a record of 4 bytes and a line feed, found "
            "the end.");
}

TEST(FixRecord, LengthWithoutSeparatorIsStrictToo) {
  FixConfig config;
  config.message("M", "", {kHead});
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(faultOf("M", "1An"),
            "Msg[M] Field[Head] Offset[0]: expected a record of 4 bytes, found \"1An\".");
}

TEST(FixRecord, LineFeedWithoutCarriageReturnIsNotEnough) {
  FixConfig config;
  config.message("M", "psSeparator=\"crlf\"", {kHead, kTail});
  ASSERT_EQ(config.start(), 0);
  EXPECT_NE(faultOf("M", "1Ann\n9 12\r\n").find("a carriage return and a line feed"), std::string::npos);
  EXPECT_NE(faultOf("M", "1Ann\r\n9 12\r").find("Offset[6]"), std::string::npos);
}

TEST(FixRecord, LastSeparatorMustBeThere) {
  FixConfig config;
  config.message("M", "psSeparator=\"lf\"", {kHead});
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(faultOf("M", "1Ann"),
            "Msg[M] Field[Head] Offset[4]: expected a line feed, found the end. End the "
            "last record, or set psLastSeparator to optional.");
}

TEST(FixRecord, LastSeparatorMayBeMissing) {
  FixConfig config;
  config.message("M", "psSeparator=\"lf\" psLastSeparator=\"optional\"", {kHead});
  ASSERT_EQ(config.start(), 0);
  expectSame("M", "1Ann\n");
  EXPECT_EQ(generate(parse("M", "1Ann")), "1Ann\n") << "nobody remembers that it was missing";
}

TEST(FixRecord, FieldOfTypeEndRemembersThatItWasMissing) {
  FixConfig config;
  config.message("M", "psSeparator=\"crlf\" psLastSeparator=\"optional\"",
                 {kHead, kTail, field("End", "psType=\"end\"")});
  ASSERT_EQ(config.start(), 0) << told();
  expectSame("M", "1Ann\r\n9 12\r\n");
  expectSame("M", "1Ann\r\n9 12");
  EXPECT_EQ(get(parse("M", "1Ann\r\n9 12"), "End"), "open");
  EXPECT_EQ(get(parse("M", "1Ann\r\n9 12\r\n"), "End"), "");
  EXPECT_NE(faultOf("M", "1Ann9 12\r\n"), "accepted") << "only the last one";
  const Record message = parse("M", "1Ann\r\n9 12");
  set(message, "End", "x");
  EXPECT_EQ(faultOf(message), "Msg[M] Field[End] Offset[10]: expected open or nothing, found \"x\".");
}

TEST(FixRecord, LastSeparatorMayBeMissingBehindACountedLoop) {
  const FormatNode head = record("Head", "", {field("Count", "nLen=\"1\" psType=\"number\"")});
  const FormatNode item = record("Item", "", {field("X", "nLen=\"1\"")});
  for (const char *separator : {"lf", "crlf"}) {
    FixConfig config;
    const std::string sMessage =
        "psLastSeparator=\"optional\" psSeparator=\"" + std::string(separator) + "\"";
    config.message("M", sMessage, {head, loop("Items", "", {item}, "Count"), field("End", "psType=\"end\"")});
    config.message("Room", sMessage,
                   {head, loop("Items", "nRoom=\"2\"", {item}, "Count"), field("End", "psType=\"end\"")});
    ASSERT_EQ(config.start(), 0) << told();
    const std::string s = separator == std::string("lf") ? "\n" : "\r\n";
    for (const std::string &bytes :
         {"2" + s + "A" + s + "B", "2" + s + "A" + s + "B" + s, "1" + s + "A", "0" + s}) {
      expectSame("M", bytes);
    }
    expectSame("Room", "2" + s + "A" + s + "B");
    expectSame("Room", "2" + s + "A" + s + "B" + s);
    expectSame("Room", "1" + s + "A" + s + std::string(1 + s.size(), ' '));
    expectRefusal(faultOf("Room", "1" + s + "A"), "bytes of unused room");
    expectRefusal(faultOf("M", "9" + s + "A" + s + "B"), "expected 9 repetitions of at least ");
    expectRefusal(faultOf("M", "2" + s + "A"), "expected 2 repetitions of at least ");
    cvtEnd();
  }
}

TEST(FixRecord, NoRecordFollowsOneWhoseSeparatorIsMissing) {
  const FormatNode a = record("A", "", {field("X", "nLen=\"1\"")});
  const FormatNode b = record("B", "", {field("Y", "nLen=\"1\" nOptional=\"1\"")});
  FixConfig config;
  config.message("M", "psSeparator=\"lf\" psLastSeparator=\"optional\"",
                 {a, b, field("End", "psType=\"end\"")});
  ASSERT_EQ(config.start(), 0) << told();
  for (const char *bytes : {"A\nB\n", "A\nB", "A\n\n", "A\n"}) expectSame("M", bytes);
  EXPECT_EQ(
      faultOf("M", "A"),
      "Msg[M] Field[B] Offset[1]: expected a line feed in front of another record, found the end. Add it, "
      "and the record.");
}

TEST(FixRecord, OptionalRecordIsThereWhenItsTagIs) {
  FixConfig config;
  config.message("M", "psSeparator=\"lf\"", {kHead, kNote, kTail});
  ASSERT_EQ(config.start(), 0);
  expectSame("M", "1Ann\nNhi \n9 12\n");
  expectSame("M", "1Ann\n9 12\n");
  expectSame("M", "1Ann\nN   \n9 12\n");
}

TEST(FixRecord, RecordWithABlankTagAndNothingElseComesBack) {
  const FormatNode head = field("Head", "nLen=\"1\"");
  const FormatNode text = field("Text", "nLen=\"3\"");
  const FormatNode listed = field("Tag", "nLen=\"1\" psValues=\"X|\" nTag=\"1\"");
  const FormatNode constant = field("Tag", "nLen=\"1\" psConst=\"\" nTag=\"1\"");
  const FormatNode other = record("Other", "", {field("OTag", "psConst=\"O\" nTag=\"1\"")});
  FixConfig config;
  config.message("Listed", "", {head, record("R", "nOptional=\"1\"", {listed, text})});
  config.message("Constant", "", {head, record("R", "nOptional=\"1\"", {constant, text})});
  config.message(
      "Choice", "",
      {head, group("G", "FixGroup psKind=\"choice\"", {record("R", "", {constant, text}), other})});
  ASSERT_EQ(config.start(), 0) << told();
  for (const char *bytes : {"A    ", "AX   ", "A abc", "A"}) expectSame("Listed", bytes);
  for (const char *bytes : {"A    ", "A abc", "A"}) expectSame("Constant", bytes);
  for (const char *bytes : {"A    ", "A abc", "AO"}) expectSame("Choice", bytes);
  const Record message = create("Listed");
  set(message, "Head", "A");
  EXPECT_EQ(generate(message), "A") << "the tag was not given";
  set(message, "Text", "");
  EXPECT_EQ(generate(message), "A") << "an empty value is none";
}

TEST(FixRecord, OptionalRecordIsWrittenWhenItHasAValue) {
  FixConfig config;
  config.message("M", "", {kHead, kNote, kTail});
  ASSERT_EQ(config.start(), 0);
  const Record message = create("M");
  set(message, "Name", "Ann");
  EXPECT_EQ(generate(message), "1Ann9   ");
  set(message, "Text", "hi");
  EXPECT_EQ(generate(message), "1AnnNhi 9   ");
}

TEST(FixRecord, OptionalRecordMayBeTheLastOne) {
  FixConfig config;
  config.message("M", "psSeparator=\"lf\"", {kHead, kNote});
  ASSERT_EQ(config.start(), 0);
  expectSame("M", "1Ann\n");
  expectSame("M", "1Ann\nNhi \n");
}

TEST(FixRecord, MandatoryRecordIsWrittenAlsoWhenItIsEmpty) {
  FixConfig config;
  config.message("M", "", {kHead, kTail});
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(generate(create("M")), "1   9   ");
}

TEST(FixRecord, SeveralTagsTellARecord) {
  FixConfig config;
  const FormatNode iat = record("Iat", "",
                                {field("A", "psConst=\"5\" nTag=\"1\""), field("B", "nLen=\"3\""),
                                 field("C", "psConst=\"IAT\" nTag=\"1\"")});
  const FormatNode any =
      record("Any", "", {field("D", "psConst=\"5\" nTag=\"1\""), field("E", "nLen=\"6\"")});
  config.message("M", "", {group("Batch", "FixGroup psKind=\"choice\"", {iat, any})});
  ASSERT_EQ(config.start(), 0) << told();
  expectSame("M", "5abcIAT");
  EXPECT_EQ(get(parse("M", "5abcIAT"), "B"), "abc");
  EXPECT_EQ(get(parse("M", "5abcPPD"), "E"), "abcPPD");
  EXPECT_EQ(faultOf("M", "6abcPPD"),
            "Msg[M] Field[Batch] Offset[0]: expected one of Iat, Any, found \"6abcPPD\".");
  EXPECT_EQ(faultOf("M", ""), "Msg[M] Field[Batch] Offset[0]: expected one of Iat, Any, found the end.");
  EXPECT_EQ(faultOf("M", "5"),
            "Msg[M] Field[Batch.Any] Offset[0]: expected a record of 7 bytes, found \"5\".");
}

TEST(FixRecord, TagCanHaveSeveralValues) {
  FixConfig config;
  config.message("M", "",
                 {record("A", "nOptional=\"1\"", {field("T", "nLen=\"2\" psValues=\"X|YY\" nTag=\"1\"")}),
                  field("Rest", "nLen=\"1\"")});
  ASSERT_EQ(config.start(), 0) << told();
  expectSame("M", "X z");
  expectSame("M", "YYz");
  expectSame("M", "z");
}

TEST(FixRecord, TagsAreThoseOfTheCharacterSet) {
  FixConfig config;
  config.message("M", "psCharset=\"IBM037\"", {kHead, kNote, kTail});
  ASSERT_EQ(config.start(), 0);
  expectSame("M", "\xF1\xC1\x40\x40\xD5\xC1\x40\x40\xF9\xC1\x40\x40");
  expectSame("M", "\xF1\xC1\x40\x40\xF9\xC1\x40\x40");
}

TEST(FixRecord, ChoiceIsWrittenFromTheAlternativeWithValues) {
  FixConfig config;
  config.message("M", "", {group("One", "FixGroup psKind=\"choice\"", {kHead, kTail})});
  ASSERT_EQ(config.start(), 0);
  const Record message = create("M");
  EXPECT_EQ(faultOf(message),
            "Msg[M] Field[One] Offset[0]: expected values in one of Head, Tail, found none.");
  set(message, "Sum", "7");
  EXPECT_EQ(generate(message), "97  ");
  set(message, "Name", "x");
  EXPECT_EQ(faultOf(message),
            "Msg[M] Field[One] Offset[0]: expected values in one alternative only, found them in Head "
            "and Tail.");
}

TEST(FixRecord, OptionalChoiceMayBeMissing) {
  FixConfig config;
  config.message("M", "",
                 {group("One", "FixGroup psKind=\"choice\" nOptional=\"1\"", {kHead, kTail}),
                  field("Rest", "nLen=\"1\"")});
  ASSERT_EQ(config.start(), 0) << told();
  expectSame("M", "x");
  expectSame("M", "1Annx");
  expectSame("M", "9Annx");
}

TEST(FixRecord, OptionalGroupStandsForAllOfItsRecords) {
  FixConfig config;
  const FormatNode extra =
      group("Extra", "FixGroup nOptional=\"1\"",
            {record("E1", "", {field("T1", "psConst=\"E\" nTag=\"1\"")}),
             record("E2", "", {field("T2", "psConst=\"F\""), field("X", "nLen=\"1\"")})});
  config.message("M", "psSeparator=\"lf\"", {kHead, extra, kTail});
  ASSERT_EQ(config.start(), 0) << told();
  expectSame("M", "1Ann\n9   \n");
  expectSame("M", "1Ann\nE\nFx\n9   \n");
  EXPECT_NE(faultOf("M", "1Ann\nE\n9   \n"), "accepted");
}

TEST(FixRecord, TaggedGroupsOfFieldsMayStandInsideARecord) {
  FixConfig config;
  config.message(
      "M", "psSeparator=\"lf\"",
      {record("R", "",
              {field("Id", "nLen=\"2\""),
               group("K", "FixGroup nOptional=\"1\"",
                     {field("KTag", "psConst=\"K1\" nTag=\"1\""), field("KText", "nLen=\"3\"")}),
               group("L", "FixGroup nOptional=\"1\"",
                     {field("LTag", "psConst=\"L1\" nTag=\"1\""), field("LText", "nLen=\"2\"")})})});
  ASSERT_EQ(config.start(), 0) << told();
  expectSame("M", "01\n");
  expectSame("M", "01K1abcL1xy\n");
  expectSame("M", "01L1xy\n");
  EXPECT_NE(faultOf("M", "01L1xyK1abc\n"), "accepted");
}

TEST(FixRecord, RestBehindTheMessageIsLeftOrRefused) {
  FixConfig config;
  config.message("Leaves", "", {kHead});
  config.message("Whole", "nWhole=\"1\"", {kHead});
  ASSERT_EQ(config.start(), 0);
  const Record message = parse("Leaves", "1Annxyz");
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(message->nNowLen, 4);
  EXPECT_EQ(faultOf("Whole", "1Annxyz"),
            "Msg[Whole] Field[] Offset[4]: expected the end of the message, found \"xyz\". "
            "Remove what follows, or set nWhole to 0.");
}

TEST(FixRecord, LenientMessagePadsAShortRecord) {
  FixConfig config;
  config.message("M", "psSeparator=\"lf\" nLenient=\"1\"", {kHead, kTail});
  ASSERT_EQ(config.start(), 0);
  const Record message = parse("M", "1A\n9\n");
  ASSERT_NE(message, nullptr) << told();
  EXPECT_EQ(message->nNowLen, 5);
  EXPECT_EQ(get(message, "Name"), "A");
  EXPECT_EQ(get(message, "Sum"), "");
  EXPECT_EQ(generate(message), "1A  \n9   \n");
  EXPECT_NE(faultOf("M", "\n9\n"), "accepted") << "the tag is not padding";
  EXPECT_NE(faultOf("M", "1A\n"), "accepted") << "a record that is not there is not short";
}

TEST(FixRecord, LenientMessageCutsBlanksBehindALongRecord) {
  FixConfig config;
  config.message("M", "psSeparator=\"crlf\" nLenient=\"1\"", {kHead, kTail});
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(generate(parse("M", "1Ann   \r\n9 12  \r\n")), "1Ann\r\n9 12\r\n");
  EXPECT_EQ(faultOf("M", "1Ann  x\r\n9 12\r\n"),
            "Msg[M] Field[Head] Offset[6]: expected blanks behind the 4 bytes of the "
            "record, found \"x\".");
}

TEST(FixRecord, FaultsInAPaddedRecordSayWhereItsFieldsAre) {
  FixConfig config;
  config.message(
      "M", "psSeparator=\"lf\" nLenient=\"1\"",
      {kHead, record("N", "", {field("A", "nLen=\"2\""), field("Num", "nLen=\"4\" psType=\"number\"")})});
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(faultOf("M", "1Ann\nab1\n"),
            "Msg[M] Field[N.Num] Offset[8]: expected digits, found \"1   \". Correct the number, "
            "or psType and psSign.");
}

TEST(FixRecord, LenientRecordInEbcdicIsPaddedWithItsBlank) {
  FixConfig config;
  config.message("M", "psSeparator=\"lf\" nLenient=\"1\" psCharset=\"IBM037\"", {kHead});
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(get(parse("M", "\xF1\xC1\n"), "Name"), "A");
}

TEST(FixRecord, BinaryBytesThatLookLikeASeparatorAreNone) {
  FixConfig config;
  config.message("M", "psSeparator=\"lf\"",
                 {record("R", "", {field("N", "nLen=\"2\" psType=\"binary\""), field("T", "nLen=\"2\"")})});
  ASSERT_EQ(config.start(), 0);
  expectSame("M",
             "\x0A\x0A"
             "ab\n");
  EXPECT_NE(faultOf("M",
                    "\x0A\x0A"
                    "abc\n"),
            "accepted");
}

TEST(FixRecord, EverySmallerBufferIsRefusedAndNotOverrun) {
  FixConfig config;
  config.message("M", "psSeparator=\"crlf\"", {kHead, kNote, kTail});
  ASSERT_EQ(config.start(), 0);
  const std::string bytes = "1Ann\r\nNhi \r\n9 12\r\n";
  const Record message = parse("M", bytes);
  for (size_t room = 0; room < bytes.size(); ++room) {
    EXPECT_EQ(generate(message, room), "failed") << room;
    EXPECT_TRUE(told("expected room for")) << room;
  }
  EXPECT_EQ(generate(message, bytes.size()), bytes);
}

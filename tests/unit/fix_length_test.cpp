// Lengths that a message of the format `fix` says itself: of fields, by another field, a mark or the record's
// end; of records, by a field of theirs.
#include <gtest/gtest.h>

#include "fix_config.h"

using namespace test::fix;
using namespace std::string_literals;

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
  explicit OneMessage(const std::vector<FormatNode> &nodes, const std::string &sMessage = "nWhole=\"1\"") {
    m_config.message("M", sMessage, nodes);
    EXPECT_EQ(m_config.start(), 0) << told();
  }
  ~OneMessage() { cvtEnd(); }
  OneMessage(const OneMessage &) = delete;
  OneMessage &operator=(const OneMessage &) = delete;

 private:
  FixConfig m_config;
};

const FormatNode kLen = field("Len", "nLen=\"2\" psType=\"number\"");
const FormatNode kName = field("Name", "psLenField=\"Len\"");
const FormatNode kEnd = field("End", "nLen=\"1\"");

// A record with its length in front, of that type.
FormatNode prefixed(const std::string &sLength, const std::string &sRecord = "") {
  return record("R", "psLenField=\"RLen\" " + sRecord,
                {field("RLen", sLength), field("A", "nLen=\"2\""), field("Rest", "nRest=\"1\"")});
}

}  // namespace

// --- Fields whose length stands in another one

TEST(FixLength, FieldHasTheLengthThatAnotherOneSays) {
  const OneMessage m({kLen, kName, kEnd});
  expectSame("03Ann.");
  expectSame("00.");
  expectSame("04A  n.");
  EXPECT_EQ(get(parse("M", "05 Ann ."), "Name"), " Ann ") << "blanks are part of it";
}

TEST(FixLength, LengthIsGeneratedFromTheBytes) {
  const OneMessage m(
      {kLen, field("Between", "nLen=\"1\""), field("Name", "psLenField=\"Len\" psCharset=\"IBM037\"")}, "");
  const Record message = create("M");
  set(message, "Len", "77");
  set(message, "Between", "-");
  set(message, "Name", "A\xC3\xA9");
  EXPECT_EQ(generate(message), "02-\xC1\x51") << "in the bytes of the character set";
}

TEST(FixLength, LengthMayBeOfAnyNumberType) {
  for (const char *type :
       {"psType=\"packed\"", "psType=\"binary\"", "psType=\"binary-little\"", "psType=\"bcd\"",
        "psType=\"zoned\"", "psType=\"number\" psPad=\" \"", "psType=\"number\" psCharset=\"IBM037\""}) {
    const OneMessage m({field("Len", "nLen=\"2\" " + std::string(type)), kName, kEnd});
    const Record message = create("M");
    set(message, "Name", "Ann");
    const std::string sBytes = generate(message);
    EXPECT_EQ(sBytes.substr(2), "Ann ") << type << told();
    expectSame(sBytes);
  }
}

TEST(FixLength, RawBytesAreKeptApartFromTheCharacterSet) {
  std::string sAll(256, '\0');
  for (size_t i = 0; i < 256; ++i) sAll[i] = static_cast<char>(i);
  const OneMessage m({field("Len", "nLen=\"3\" psType=\"number\""),
                      field("Image", "psType=\"raw\" psLenField=\"Len\""), field("Text", "nLen=\"2\"")},
                     "psCharset=\"IBM037\"");
  const std::string sBytes = "\xF2\xF5\xF6" + sAll + "\xC1\xC2";
  expectSame(sBytes);
  const Record message = parse("M", sBytes);
  EXPECT_EQ(get(message, "Image"), sAll);
  EXPECT_EQ(get(message, "Text"), "AB");
}

TEST(FixLength, LengthsThatCannotBeAreRefused) {
  const OneMessage m({field("Len", "nLen=\"20\" psType=\"number\" psSign=\"leading\""), kName});
  EXPECT_EQ(
      faultOf("+0000000000000000004Ann"),
      "Msg[M] Field[Name] Offset[20]: expected 4 bytes, as Len says, found 3 and the end. Correct Len.");
  EXPECT_EQ(faultOf("-0000000000000000001Ann"),
            "Msg[M] Field[Name] Offset[20]: expected a length in bytes, found Len -1.");
  EXPECT_EQ(faultOf("+9999999999999999999Ann"),
            "Msg[M] Field[Name] Offset[20]: expected at most 100000000 bytes, found Len 9999999999999999999. "
            "Correct "
            "the length, or raise nLen.");
}

TEST(FixLength, LargestLengthsAreRefusedToo) {
  const OneMessage m({field("Len", "nLen=\"31\" psType=\"number\""), kName});
  EXPECT_NE(faultOf(std::string(31, '9') + "x").find("expected a length in bytes, found Len 999"),
            std::string::npos);
  EXPECT_NE(faultOf(std::string(11, '0') + "18446744073709551615x").find("expected at most 100000000 bytes"),
            std::string::npos);
}

TEST(FixLength, MostBytesAreKept) {
  const OneMessage m({kLen, field("Name", "psLenField=\"Len\" nLen=\"3\"")});
  expectSame("03Ann");
  EXPECT_EQ(faultOf("04Anna"),
            "Msg[M] Field[Name] Offset[2]: expected at most 3 bytes, found Len 4. Correct the length, or "
            "raise nLen.");
  const Record message = create("M");
  set(message, "Name", "Anna");
  EXPECT_EQ(
      faultOf(message),
      "Msg[M] Field[Name] Offset[2]: expected at most 3 bytes, found \"Anna\". Shorten the value, or set "
      "psOverflow to cut.");
}

TEST(FixLength, LongTextMayBeCutBetweenCharacters) {
  const OneMessage m({kLen, field("Name", "psLenField=\"Len\" nLen=\"3\" psOverflow=\"cut\"")}, "");
  const Record message = create("M");
  set(message, "Name",
      "a\xE4\xB8\xAD"
      "b");
  EXPECT_EQ(generate(message), "01a");
  set(message, "Name", "abcd");
  EXPECT_EQ(generate(message), "03abc");
}

TEST(FixLength, ValueTooLongForItsLengthFieldIsRefused) {
  const OneMessage m({field("Len", "nLen=\"1\" psType=\"number\""), kName});
  const Record message = create("M");
  set(message, "Name", "0123456789");
  EXPECT_NE(
      faultOf(message).find("Field[Len] Offset[0]: expected no more digits than the field has, found \"10\""),
      std::string::npos)
      << faultOf(message);
}

TEST(FixLength, DefaultsListsAndBlanksHoldForThem) {
  const OneMessage m({kLen, field("Name", "psLenField=\"Len\" psDefault=\"none\""),
                      field("Len2", "nLen=\"1\" psType=\"number\""),
                      field("Code", "psLenField=\"Len2\" psValues=\"A|BCD\"")});
  expectSame("03Ann3BCD");
  EXPECT_NE(faultOf("001A").find("Field[Name] Offset[2]: expected a value"), std::string::npos);
  EXPECT_NE(faultOf("01x2AB").find("expected one of \"A\", \"BCD\", found \"AB\""), std::string::npos);
  const Record message = create("M");
  set(message, "Code", "A");
  EXPECT_EQ(generate(message), "04none1A");
}

// --- Marks

TEST(FixLength, MarkEndsAField) {
  const OneMessage m({field("A", "psEnd=\"*\""), field("B", "psEnd=\"0x00\" nLen=\"3\""), kEnd});
  expectSame("Ann*xyz\0."s);
  expectSame("*\0."s);
  EXPECT_EQ(get(parse("M", " a *b\0."s), "A"), " a ");
  EXPECT_EQ(
      faultOf("Ann"),
      "Msg[M] Field[A] Offset[0]: expected \"*\" behind at most 100000000 bytes, found \"Ann\" and the end.");
  EXPECT_EQ(faultOf("*wxyz\0."s),
            "Msg[M] Field[B] Offset[1]: expected \"\\x00\" behind at most 3 bytes, found \"wxyz\".");
  EXPECT_EQ(faultOf("*"),
            "Msg[M] Field[B] Offset[1]: expected \"\\x00\" behind at most 3 bytes, found the end.");
}

TEST(FixLength, ValueMustNotContainItsMark) {
  const OneMessage m({field("A", "psEnd=\"*\"")});
  const Record message = create("M");
  set(message, "A", "ab*c");
  EXPECT_EQ(faultOf(message),
            "Msg[M] Field[A] Offset[2]: expected a value without the mark \"*\" that ends it, found "
            "\"ab*c\". Change the "
            "value, or psEnd.");
}

TEST(FixLength, MarkIsOneOfTheCharacterSet) {
  const OneMessage m({field("A", "psEnd=\"*\" psCharset=\"IBM037\"")});
  expectSame("\xC1\xC2\x5C");
  EXPECT_EQ(get(parse("M", "\xC1\xC2\x5C"), "A"), "AB");
}

// --- What is left of a record, and what may be missing at its end

TEST(FixLength, FieldMayHaveWhatIsLeftOfTheRecord) {
  const OneMessage m({record("R", "", {field("A", "nLen=\"2\""), field("Rest", "nRest=\"1\" nLen=\"5\"")}),
                      record("S", "", {field("B", "nLen=\"1\"")})},
                     "psSeparator=\"crlf\" nWhole=\"1\"");
  expectSame("abcd e\r\nx\r\n");
  expectSame("ab\r\nx\r\n");
  EXPECT_EQ(get(parse("M", "abcd \r\nx\r\n"), "Rest"), "cd ");
  EXPECT_EQ(faultOf("abcdefgh\r\nx\r\n"),
            "Msg[M] Field[R.Rest] Offset[2]: expected at most 5 bytes, found 6. Shorten the field, or raise "
            "its nLen.");
  EXPECT_NE(
      faultOf("abc\nd\r\nx\r\n").find("Field[R.Rest] Offset[3]: expected text without control characters"),
      std::string::npos);
}

TEST(FixLength, FieldAtTheEndOfAMessageMayHaveTheRest) {
  const OneMessage m({field("A", "nLen=\"2\""), field("Rest", "nRest=\"1\" psType=\"raw\"")});
  expectSame("ab");
  expectSame("ab\n\0\xFF"s);
}

TEST(FixLength, FieldsAtTheEndOfARecordMayBeMissing) {
  const OneMessage m(
      {loop("L", "psUntil=\"end\"",
            {record("R", "",
                    {field("T", "psConst=\"T\""), field("A", "nLen=\"2\" nOptional=\"1\""),
                     field("N", "nLen=\"2\" psType=\"number\" nOptional=\"1\" psBlank=\"allowed\""),
                     field("B", "psEnd=\"*\" nOptional=\"1\"")})})},
      "psSeparator=\"lf\" psLastSeparator=\"optional\" nWhole=\"1\"");
  expectSame("T\nTab\nTab12\nTab12x*\nTab12*\nT  \nT    \nT    *\n");
  EXPECT_EQ(faultOf("Ta\n"), "Msg[M] Field[L[0].R.A] Offset[1]: expected 2 bytes, found \"a\" and the end.");
  EXPECT_EQ(faultOf("Tab12*x\n"),
            "Msg[M] Field[L[0].R] Offset[6]: expected the end of the record, found \"x\".");
}

TEST(FixLength, FieldsWithoutAValueAreLeftOutAtTheEndOnly) {
  const OneMessage m({record("R", "",
                             {field("T", "psConst=\"T\""), field("A", "nLen=\"2\" nOptional=\"1\""),
                              field("B", "psEnd=\"*\" nOptional=\"1\"")})},
                     "psSeparator=\"lf\"");
  const Record message = create("M");
  EXPECT_EQ(generate(message), "T\n");
  set(message, "B", "b");
  EXPECT_EQ(generate(message), "T  b*\n");
}

TEST(FixLength, FieldWithoutAValueAtTheEndOfAGroupIsWrittenBeforeAValueBehindTheGroup) {
  const FormatNode own = field("O1", "nLen=\"2\" nOptional=\"1\"");
  const FormatNode later = field("O2", "nLen=\"2\" nOptional=\"1\"");
  const std::vector<FormatNode> groups = {
      group("G", "", {own}), group("G", "", {group("H", "", {own})}),
      group("G", "FixGroup psKind=\"choice\" psBy=\"K\"",
            {group("H", "FixGroup psWhen=\"k\"", {own}),
             group("I", "", {field("O3", "nLen=\"2\" nOptional=\"1\"")})})};
  for (const FormatNode &inner : groups) {
    const OneMessage m({record("R", "", {field("K", "nLen=\"1\""), inner, later})}, "psSeparator=\"lf\"");
    const Record message = create("M");
    set(message, "K", "k");
    EXPECT_EQ(generate(message), "k\n");
    set(message, "O2", "22");
    EXPECT_EQ(generate(message), "k  22\n");
    set(message, "O1", "11");
    EXPECT_EQ(generate(message), "k1122\n");
    for (const char *bytes : {"k\n", "k11\n", "k  \n", "k  22\n", "k1122\n", "k    \n"}) expectSame(bytes);
  }
}

TEST(FixLength, FieldOfAnotherAlternativeIsNotBehindOne) {
  const OneMessage m(
      {record("R", "",
              {field("K", "nLen=\"1\""),
               group("C", "FixGroup psKind=\"choice\" psBy=\"K\"",
                     {group("G", "FixGroup psWhen=\"a\"", {field("A", "nLen=\"2\" nOptional=\"1\"")}),
                      group("H", "", {field("B", "nLen=\"2\" nOptional=\"1\"")})})})},
      "psSeparator=\"lf\"");
  const Record message = create("M");
  set(message, "K", "a");
  set(message, "B", "");
  EXPECT_EQ(generate(message), "a\n");
}

TEST(FixLength, FieldWithoutAValueAtTheEndOfAGroupIsWrittenBeforeAValueAtTheEndOfTheMessage) {
  const OneMessage m({record("R", "nLen=\"1\" psSeparator=\"lf\"", {field("K", "nLen=\"1\"")}),
                      group("G", "", {field("O1", "nLen=\"2\" nOptional=\"1\"")}),
                      field("O2", "nLen=\"2\" nOptional=\"1\"")});
  expectSame("k\n");
  expectSame("k\n  22");
  const Record message = create("M");
  set(message, "O2", "22");
  EXPECT_EQ(generate(message), " \n  22");
}

TEST(FixLength, OptionalFieldMayHaveItsLengthBeforeIt) {
  const OneMessage m(
      {record("R", "",
              {field("T", "psConst=\"T\""), field("Len", "nLen=\"1\" psType=\"number\" nOptional=\"1\""),
               field("A", "psLenField=\"Len\" nOptional=\"1\"")})},
      "psSeparator=\"lf\" nWhole=\"1\"");
  expectSame("T\n");
  expectSame("T0\n");
  expectSame("T2ab\n");
  EXPECT_EQ(faultOf("T2\n"),
            "Msg[M] Field[R.A] Offset[2]: expected 2 bytes, as Len says, found 0 and the end. Correct Len.");
}

// --- Records that say their length

TEST(FixLength, RecordSaysItsLengthInAnyNumber) {
  const struct {
    const char *sType;
    std::string sPrefix;
  } forms[] = {{"nLen=\"4\" psType=\"number\"", "0005"},
               {"nLen=\"4\" psType=\"number\" psCharset=\"IBM037\"", "\xF0\xF0\xF0\xF5"},
               {"nLen=\"2\" psType=\"binary\"", "\0\x05"s},
               {"nLen=\"4\" psType=\"binary\"", "\0\0\0\x05"s},
               {"nLen=\"2\" psType=\"binary-little\"", "\x05\0"s},
               {"nLen=\"4\" psType=\"binary-little\"", "\x05\0\0\0"s}};
  for (const auto &form : forms) {
    const OneMessage m({prefixed(form.sType), kEnd});
    expectSame(form.sPrefix + "abcde.");
    EXPECT_EQ(get(parse("M", form.sPrefix + "abcde."), "Rest"), "cde") << form.sType;
  }
}

TEST(FixLength, LengthMayCountTheWholeRecord) {
  const OneMessage m({prefixed("nLen=\"2\" psType=\"number\"", "psLenCounts=\"all\""), kEnd});
  expectSame("07abcde.");
  expectSame("04ab.");
  EXPECT_EQ(faultOf("01ab."),
            "Msg[M] Field[R.RLen] Offset[2]: expected a length from 2 to 5, found 1. Correct the length, or "
            "the record.");
  EXPECT_EQ(faultOf("03ab."), "Msg[M] Field[R.A] Offset[2]: expected 2 bytes, found \"a\" and the end.");
}

TEST(FixLength, RecordDescriptorWordIsALengthAndTwoZeroBytes) {
  const OneMessage m({loop("L", "psUntil=\"end\"",
                           {record("R", "psLenField=\"RLen\" psLenCounts=\"all\"",
                                   {field("RLen", "nLen=\"2\" psType=\"binary\""),
                                    field("Zero", "nLen=\"2\" psType=\"binary\" psConst=\"0\""),
                                    field("Rest", "nRest=\"1\" psType=\"raw\"")})})});
  expectSame("\0\x07\0\0abc\0\x04\0\0\0\x05\0\0z"s);
  EXPECT_NE(faultOf("\0\x07\0\x01"
                    "abc"s)
                .find("Field[L[0].R.Zero] Offset[2]"),
            std::string::npos);
  EXPECT_NE(faultOf("\0\x03\0\0abc"s).find("Field[L[0].R.Zero] Offset[2]: expected 2 bytes"),
            std::string::npos);
}

TEST(FixLength, RecordMustBeFilledExactly) {
  const FormatNode fixed = record("R", "psLenField=\"RLen\"",
                                  {field("RLen", "nLen=\"2\" psType=\"number\""), field("A", "nLen=\"3\"")});
  const OneMessage m({fixed, kEnd});
  expectSame("03abc.");
  EXPECT_EQ(faultOf("04abcd."),
            "Msg[M] Field[R] Offset[5]: expected the end of the record, found \"d\". Correct the record's "
            "length, or add "
            "the field that this is.");
  EXPECT_EQ(faultOf("02ab."), "Msg[M] Field[R.A] Offset[2]: expected 3 bytes, found \"ab\" and the end.");
  EXPECT_EQ(faultOf("09abc."),
            "Msg[M] Field[R.RLen] Offset[2]: expected a length from 0 to 4, found 9. Correct the length, or "
            "the record.");
}

TEST(FixLength, RecordLengthsThatCannotBeAreRefused) {
  const OneMessage m({prefixed("nLen=\"20\" psType=\"number\" psSign=\"leading\"")});
  EXPECT_NE(faultOf("-0000000000000000001ab").find("expected a length in bytes, found RLen -1"),
            std::string::npos);
  EXPECT_NE(
      faultOf("+9999999999999999999ab").find("expected a length from 0 to 2, found 9999999999999999999"),
      std::string::npos);
  EXPECT_NE(faultOf("+0000000000000000000ab").find("Field[R.A] Offset[20]: expected 2 bytes, found the end"),
            std::string::npos);
}

TEST(FixLength, NothingReadsBeyondItsRecord) {
  const OneMessage m({record("R", "psLenField=\"RLen\"",
                             {field("RLen", "nLen=\"2\" psType=\"number\""), kLen, kName,
                              loop("L", "psUntil=\"end\"", {field("X", "nLen=\"2\"")})}),
                      kEnd});
  expectSame("0703Annxx.");
  EXPECT_EQ(faultOf("0803Annxxy."),
            "Msg[M] Field[R.L[1].X] Offset[9]: expected 2 bytes, found \"y\" and the end.");
  EXPECT_NE(faultOf("0409Anna-------.")
                .find("Field[R.Name] Offset[4]: expected 9 bytes, as Len says, found 2 and the end"),
            std::string::npos)
      << fault();
}

TEST(FixLength, LenientMessageCutsBlanksBehindTheFields) {
  const FormatNode fixed = record("R", "psLenField=\"RLen\"",
                                  {field("RLen", "nLen=\"2\" psType=\"number\""), field("A", "nLen=\"3\"")});
  const OneMessage m({fixed, kEnd}, "nLenient=\"1\"");
  EXPECT_EQ(generate(parse("M", "06abc   .")), "03abc.");
}

TEST(FixLength, RecordMayBeFilledUpToItsLength) {
  const FormatNode tagged = group("G", "FixGroup nOptional=\"1\"",
                                  {field("T", "psConst=\"G\" nTag=\"1\""), field("X", "nLen=\"2\"")});
  const OneMessage m({record("R", "nLen=\"8\" psPad=\".\"", {field("A", "nLen=\"2\""), tagged}), kEnd});
  expectSame("ab......!");
  expectSame("abGxy...!");
  EXPECT_EQ(faultOf("ab...x..!"),
            "Msg[M] Field[R] Offset[5]: expected the rest of the record filled with \".\", found \"x..\". "
            "Correct psPad "
            "of the record, or set nLenient to 1.");
  EXPECT_EQ(faultOf("ab....."), "Msg[M] Field[R] Offset[0]: expected a record of 8 bytes, found 7.");
}

TEST(FixLength, FilledRecordHasRoomForSoMuch) {
  const OneMessage m(
      {record("R", "nLen=\"6\" psPad=\" \"", {field("Len", "nLen=\"1\" psType=\"number\""), kName})});
  expectSame("5abcde");
  expectSame("0     ");
  const Record message = create("M");
  set(message, "Name", "abcdef");
  EXPECT_EQ(faultOf(message),
            "Msg[M] Field[R.Len] Offset[0]: expected a record of at most 6 bytes, found 7.");
  EXPECT_NE(faultOf("6abcde").find("expected 6 bytes, as Len says, found 5 and the end"), std::string::npos);
}

TEST(FixLength, FilledRecordSaysItsOneLength) {
  const OneMessage m({record("R", "nLen=\"8\" psPad=\" \" psLenField=\"RLen\" psLenCounts=\"all\"",
                             {field("RLen", "nLen=\"2\" psType=\"number\""), kLen, kName}),
                      kEnd});
  expectSame("0802ab  .");
  EXPECT_EQ(faultOf("0702ab  ."), "Msg[M] Field[R.RLen] Offset[2]: expected the length 8, found 7.");
  EXPECT_EQ(faultOf("0902ab  ."),
            "Msg[M] Field[R.RLen] Offset[2]: expected a length from 2 to 8, found 9. Correct the length, or "
            "the record.");
}

TEST(FixLength, RecordsOfLengthsAreToldByTheirTags) {
  const auto kind = [](const std::string &sName, const std::string &sTag) {
    return record(
        sName, "psLenField=\"" + sName + "Len\"",
        {field(sName + "Len", "nLen=\"2\" psType=\"binary\""),
         field(sName + "Tag", "psConst=\"" + sTag + "\" nTag=\"1\""), field(sName + "Text", "nRest=\"1\"")});
  };
  const OneMessage m(
      {loop("L", "psUntil=\"end\"",
            {group("Any", "FixGroup psKind=\"choice\"", {kind("A", "01"), kind("B", "02")})})});
  expectSame(
      "\0\x04"
      "02xy\0\x02"
      "01\0\x03"
      "01z"s);
  EXPECT_NE(faultOf("\0\x04"
                    "03xy"s)
                .find("expected one of A, B"),
            std::string::npos);
}

TEST(FixLength, LengthsInRepetitionsAreEachTheirOwn) {
  const OneMessage m(
      {field("Count", "nLen=\"1\" psType=\"number\""),
       loop("L", "",
            {field("ALen", "nLen=\"1\" psType=\"number\""), field("BLen", "nLen=\"1\" psType=\"number\""),
             field("Inner", "nLen=\"1\" psType=\"number\""),
             loop("I", "", {field("CLen", "nLen=\"1\" psType=\"number\""), field("C", "psLenField=\"CLen\"")},
                  "Inner"),
             field("B", "psLenField=\"BLen\""), field("A", "psLenField=\"ALen\"")},
            "Count")});
  expectSame(
      "2"
      "122"
      "1c"
      "0"
      "bba"
      "010"
      "b");
}

TEST(FixLength, CountsInCountsWithoutRoom) {
  const OneMessage m({field("N", "nLen=\"1\" psType=\"number\""),
                      loop("A", "nMax=\"3\"",
                           {field("NB", "nLen=\"1\" psType=\"packed\""),
                            loop("B", "nMax=\"2\"",
                                 {field("NC", "nLen=\"2\" psType=\"binary\""),
                                  loop("C", "", {field("X", "nLen=\"1\"")}, "NC")},
                                 "NB")},
                           "N")});
  expectSame("2\x2F\0\x01x\0\0\x0F"s);
  EXPECT_NE(faultOf("1\x3F\0\0\0\0\0\0"s)
                .find("Field[A[0].B] Offset[2]: expected at most 2 repetitions, found NB 3"),
            std::string::npos)
      << fault();
  EXPECT_NE(faultOf("1\x1F\xFF\xFFx"s)
                .find("Field[A[0].B[0].C] Offset[4]: expected 65535 repetitions of at least 1 bytes"),
            std::string::npos)
      << fault();
}

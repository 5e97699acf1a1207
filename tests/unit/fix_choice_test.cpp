// Groups and records of the format `fix` that the value of an earlier field chooses.
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

FormatNode member(const std::string &sName, const std::string &sWhen, const std::string &sField) {
  return group(sName, "FixGroup " + (sWhen.empty() ? "" : "psWhen=\"" + sWhen + "\""),
               {field(sName + "X", sField)});
}

const FormatNode kKind = field("Kind", "nLen=\"2\"");
const FormatNode kByKind =
    group("Any", "FixGroup psKind=\"choice\" psBy=\"Kind\"",
          {member("A", "A|AA", "nLen=\"1\""), member("N", "N", "nLen=\"3\" psType=\"number\"")});

}  // namespace

TEST(FixChoice, EarlierValueTellsTheMember) {
  const OneMessage m({kKind, field("Between", "nLen=\"1\""), kByKind});
  expectSame("A -x");
  expectSame("AA-x");
  expectSame("N -123");
  EXPECT_EQ(get(parse("M", "N -123"), "NX"), "123");
  EXPECT_EQ(faultOf("Q -x"),
            "Msg[M] Field[Any] Offset[3]: expected Kind one of \"A\", \"AA\", \"N\", found \"Q\". Correct "
            "it, or add a "
            "member without psWhen.");
}

TEST(FixChoice, LastMemberMayTakeAnyOtherValue) {
  const OneMessage m({kKind, group("Any", "FixGroup psKind=\"choice\" psBy=\"Kind\"",
                                   {member("A", "A", "nLen=\"1\""), member("Other", "", "nLen=\"2\"")})});
  expectSame("A x");
  expectSame("ZZxy");
  expectSame("  xy");
}

TEST(FixChoice, EmptyValueCanBeOneOfTheList) {
  const OneMessage m({kKind, group("Any", "FixGroup psKind=\"choice\" psBy=\"Kind\"",
                                   {member("None", "|00", "nLen=\"1\""), member("A", "A", "nLen=\"2\"")})});
  expectSame("  x");
  expectSame("00x");
  expectSame("A xy");
}

TEST(FixChoice, NumbersAreComparedAsNumbers) {
  const OneMessage m({field("Kind", "nLen=\"3\" psType=\"number\""),
                      group("Any", "FixGroup psKind=\"choice\" psBy=\"Kind\"",
                            {member("One", "01", "nLen=\"1\""), member("Other", "", "nLen=\"2\"")})});
  expectSame("001x");
  expectSame("010xy");
  const Record message = create("M");
  set(message, "Kind", "0001");
  set(message, "OneX", "x");
  EXPECT_EQ(generate(message), "001x") << told();
}

TEST(FixChoice, ValueDecidesWhatIsGenerated) {
  const OneMessage m({kKind, kByKind});
  const Record message = create("M");
  set(message, "Kind", "N ");
  set(message, "NX", "7");
  EXPECT_EQ(generate(message), "N 007") << told();
  set(message, "AX", "x");
  EXPECT_EQ(
      faultOf(message),
      "Msg[M] Field[Any.A] Offset[2]: expected no values in A, found some, and Kind \"N \". Correct Kind.");
  const Record other = create("M");
  set(other, "Kind", "Q");
  EXPECT_EQ(faultOf(other),
            "Msg[M] Field[Any] Offset[2]: expected Kind one of \"A\", \"AA\", \"N\", found \"Q\". Correct "
            "it, or add a "
            "member without psWhen.");
}

TEST(FixChoice, ValueStandsInAnEnclosingRecordOrLevel) {
  const FormatNode detail = record("Detail", "", {field("DTag", "psConst=\"D\" nTag=\"1\""), kByKind});
  const FormatNode inner = loop("Details", "psUntil=\"tag\"", {loop("Twice", "nCount=\"1\"", {detail})});
  const FormatNode head = record("Head", "", {field("HTag", "psConst=\"H\" nTag=\"1\""), kKind});
  const OneMessage m({loop("Parts", "psUntil=\"tag\"", {head, inner})}, "psSeparator=\"lf\" nWhole=\"1\"");
  expectSame("HA \nDx\nDy\nHN \nD001\nHQ \n");
  EXPECT_EQ(faultOf("HA \nHN \nDx\n"),
            "Msg[M] Field[Parts[1].Details[0].Twice[0].Detail.Any.N.NX] Offset[9]: expected 3 bytes, found "
            "\"x\\x0A\" and the end.");
}

TEST(FixChoice, NearestFieldOfTheNameCounts) {
  const FormatNode any = group("Any", "FixGroup psKind=\"choice\" psBy=\"Kind\"",
                               {member("A", "A", "nLen=\"1\""), member("N", "N", "nLen=\"3\"")});
  const OneMessage m({kKind, loop("L", "psUntil=\"end\"", {field("Kind", "nLen=\"1\""), any})});
  expectSame("N AxN001");
}

TEST(FixChoice, OptionalGroupIsThereWithItsValue) {
  const OneMessage m(
      {field("Flag", "nLen=\"1\""),
       group("G", "FixGroup nOptional=\"1\" psBy=\"Flag\" psWhen=\"Y|1\"", {field("X", "nLen=\"2\"")}),
       field("End", "nLen=\"1\"")});
  expectSame("Yab.");
  expectSame("1  .");
  expectSame("N.");
  const Record message = create("M");
  set(message, "Flag", "N");
  set(message, "X", "ab");
  EXPECT_EQ(faultOf(message),
            "Msg[M] Field[G] Offset[1]: expected no values in G, found some, and Flag \"N\". Correct Flag.");
}

TEST(FixChoice, OptionalRecordIsThereWithItsValue) {
  const OneMessage m({record("A", "", {field("Flag", "nLen=\"1\" psType=\"number\"")}),
                      record("B", "nOptional=\"1\" psBy=\"Flag\" psWhen=\"1\"", {field("X", "nLen=\"2\"")}),
                      record("C", "", {field("Y", "nLen=\"2\"")})},
                     "psSeparator=\"lf\" nWhole=\"1\"");
  expectSame("1\nab\ncd\n");
  expectSame("0\ncd\n");
}

TEST(FixChoice, RecordsMayBeTheMembers) {
  const OneMessage m({kKind, group("Any", "FixGroup psKind=\"choice\" psBy=\"Kind\"",
                                   {record("A", "psWhen=\"A\"", {field("AX", "nLen=\"1\"")}),
                                    record("B", "", {field("BX", "nRest=\"1\"")})})},
                     "psSeparator=\"lf\" nWhole=\"1\"");
  expectSame("A x\n");
  expectSame("B xyz\n");
}

TEST(FixChoice, MemberMayBeAChoiceOfItsOwn) {
  const OneMessage m({field("K", "nLen=\"1\""), field("L", "nLen=\"1\""),
                      group("Any", "FixGroup psKind=\"choice\" psBy=\"K\"",
                            {member("A", "A", "nLen=\"1\""),
                             group("B", "FixGroup psKind=\"choice\" psBy=\"L\" psWhen=\"B\"",
                                   {member("C", "C", "nLen=\"2\""), member("D", "", "nLen=\"3\"")})})});
  expectSame("A-x");
  expectSame("BCxy");
  expectSame("B-xyz");
}

TEST(FixChoice, ValueThatIsNoNumberIsRefusedByItsField) {
  const OneMessage m({field("Kind", "nLen=\"1\" psType=\"number\""),
                      group("Any", "FixGroup psKind=\"choice\" psBy=\"Kind\"",
                            {member("One", "1", "nLen=\"1\""), member("Other", "", "nLen=\"2\"")})});
  const Record message = create("M");
  set(message, "Kind", "boo");
  EXPECT_NE(faultOf(message).find("Field[Kind] Offset[0]: expected a decimal number"), std::string::npos);
}

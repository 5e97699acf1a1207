// Definitions of the format `fix` whose lengths, ends or deciding values make no sense are refused when they are
// loaded.
#include <gtest/gtest.h>

#include "fix_config.h"

using namespace test::fix;

namespace {

const FormatNode kLen = field("Len", "nLen=\"2\" psType=\"number\"");
const FormatNode kVar = field("Var", "psLenField=\"Len\"");
const FormatNode kKind = field("Kind", "nLen=\"1\"");

FormatNode choice(const std::vector<FormatNode> &members, const std::string &sBy = "Kind") {
  return group("Any", "FixGroup psKind=\"choice\" psBy=\"" + sBy + "\"", members);
}

FormatNode member(const std::string &sName, const std::string &sAttributes) {
  return group(sName, "FixGroup " + sAttributes, {field(sName + "X", "nLen=\"1\"")});
}

}  // namespace

TEST(FixDefinitionEnd, OneThingEndsAField) {
  expectRefusal(refusal("psEnd=\"*\" nRest=\"1\""),
                "expected one of psLenField, psEnd and nRest, found several");
  expectRefusal(refusal({kLen, field("F", "psLenField=\"Len\" psEnd=\"*\"")}),
                "found several. Remove the others.");
}

TEST(FixDefinitionEnd, NumbersConstantsAndTagsHaveAFixedLength) {
  expectRefusal(refusal("psEnd=\"*\" psType=\"number\""), "expected a fixed length on a number");
  expectRefusal(refusal("psEnd=\"*\" psConst=\"A\""),
                "expected psConst and nTag on fields of a fixed length");
  expectRefusal(refusal("psEnd=\"*\" psValues=\"A\" nTag=\"1\""), "expected psConst and nTag on fields");
  expectRefusal(refusal("psEnd=\"*\" psPad=\"-\""),
                "expected psPad, psAlign and psUnit chars on fields of a fixed");
  expectRefusal(refusal("nRest=\"1\" psUnit=\"chars\""),
                "expected psPad, psAlign and psUnit chars on fields");
  expectRefusal(refusal("nRest=\"1\" psAlign=\"left\""),
                "expected psPad, psAlign and psUnit chars on fields");
}

TEST(FixDefinitionEnd, MarkIsOneByte) {
  expectRefusal(refusal("psEnd=\"**\""), "one ASCII character, or 0xNN");
}

TEST(FixDefinitionEnd, ListMustFitTheMostBytes) {
  expectRefusal(refusal("psEnd=\"*\" nLen=\"2\" psValues=\"ABC\""),
                "expected values that the field can have, found \"ABC\"");
  expectRefusal(refusal("psEnd=\"*\" psValues=\"A*\""),
                "expected values that the field can have, found \"A*\"");
}

TEST(FixDefinitionEnd, LengthFieldStandsBeforeInTheSameGroup) {
  const std::string sMissing =
      "expected a length field that stands before it in the same group, found psLenField \"Len\"";
  expectRefusal(refusal({kVar}), sMissing);
  expectRefusal(refusal({kVar, kLen}), sMissing);
  expectRefusal(refusal({kLen, group("G", "", {kVar})}), "Node[G.Var] File[M.xml:3]: " + sMissing);
  expectRefusal(refusal({group("G", "", {kLen}), kVar}), sMissing);
  expectRefusal(refusal({kLen, loop("L", "nCount=\"2\"", {kVar})}), sMissing);
  expectRefusal(refusal({group("Len", "", {field("X", "nLen=\"1\" psType=\"number\"")}), kVar}), sMissing);
}

TEST(FixDefinitionEnd, LengthFieldIsAWholeNumberAndNothingElse) {
  for (const char *attributes :
       {"nLen=\"2\"", "nLen=\"4\" psType=\"number\" nDecimals=\"2\"",
        "nLen=\"2\" psType=\"number\" psConst=\"02\"", "nLen=\"2\" psType=\"number\" psValues=\"1|2\"",
        "nLen=\"2\" psType=\"number\" psDefault=\"1\"", "nLen=\"2\" psType=\"number\" psBlank=\"allowed\""}) {
    expectRefusal(refusal({field("Len", attributes), kVar}),
                  "expected a length field that is a whole number and nothing else, found Len");
  }
  expectRefusal(refusal({kLen, kVar, field("Again", "psLenField=\"Len\"")}),
                "a whole number and nothing else, found Len");
  expectRefusal(refusal({kLen, loop("L", "", {field("X", "nLen=\"1\"")}, "Len"), kVar}),
                "and nothing else, found Len");
  expectRefusal(refusal({kLen, kVar, loop("L", "", {field("X", "nLen=\"1\"")}, "Len")}),
                "expected a count field that is a whole number, found Len");
}

TEST(FixDefinitionEnd, RecordLengthIsAFieldOfTheRecord) {
  expectRefusal(refusal({kLen, record("R", "psLenField=\"Len\"", {field("A", "nLen=\"1\"")})}),
                "Node[R] File[M.xml:3]: expected a length field that stands before it in the same group");
  expectRefusal(refusal({record("R", "psLenField=\"Len\"", {group("G", "", {kLen})})}),
                "expected a length field");
  expectRefusal(refusal({record("R", "psLenField=\"Len\"",
                                {field("Len", "nLen=\"1\" psType=\"number\" nOptional=\"1\"")})}),
                "expected a length field that is always there, found Len");
}

TEST(FixDefinitionEnd, WhatMayBeMissingStandsAtTheEnd) {
  const FormatNode optional = field("O", "nLen=\"1\" nOptional=\"1\"");
  const FormatNode rest = field("Rest", "nRest=\"1\"");
  expectRefusal(refusal({record("R", "", {optional, kKind})}, "psSeparator=\"lf\""),
                "Node[R] File[M.xml:2]: expected only optional fields behind an optional one, found "
                "Kind. Move it.");
  expectRefusal(refusal({record("R", "", {group("G", "", {optional}), kKind})}, "psSeparator=\"lf\""),
                "expected only optional fields behind an optional one, found Kind");
  expectRefusal(refusal({record("R", "", {rest, optional})}, "psSeparator=\"lf\""),
                "expected nothing behind a field with nRest, found O");
  expectRefusal(refusal({optional, kKind}),
                "expected only optional fields behind an optional one, found Kind");
  expectRefusal(refusal({rest, record("R", "", {kKind})}),
                "expected nothing behind a field with nRest, found R");
  expectRefusal(refusal({kKind, choice({group("A", "FixGroup psWhen=\"A\"", {rest}), member("B", "")}),
                         field("E", "nLen=\"1\"")}),
                "expected nothing behind a field with nRest, found E");
  expectRefusal(refusal({kLen, field("V", "psLenField=\"Len\""),
                         field("O", "nLen=\"1\" psConst=\"A\" nTag=\"1\" nOptional=\"1\"")}),
                "expected a tag that is always there, found nOptional on it");
  EXPECT_EQ(refusal({record("R", "",
                            {kKind, choice({group("A", "FixGroup psWhen=\"A\"", {rest}), member("B", "")})})},
                    "psSeparator=\"lf\""),
            "accepted");
}

TEST(FixDefinitionEnd, CountsAndLengthsAreNotOptionalAlone) {
  expectRefusal(
      refusal({record("R", "", {field("Len", "nLen=\"1\" psType=\"number\" nOptional=\"1\""), kVar})},
              "psSeparator=\"lf\""),
      "expected a length field that is always there, found Len. Remove its nOptional.");
  expectRefusal(refusal({record("R", "", {field("N", "nLen=\"1\" psType=\"number\" nOptional=\"1\"")}),
                         loop("L", "", {kKind}, "N")},
                        "psSeparator=\"lf\""),
                "expected a count field that is a whole number, found N");
}

TEST(FixDefinitionEnd, LoopsHaveNoOpenEndOfARecordAround) {
  expectRefusal(
      refusal({record("R", "", {loop("L", "nCount=\"2\"", {field("O", "nLen=\"1\" nOptional=\"1\"")})})},
              "psSeparator=\"lf\""),
      "Node[R.L.O] File[M.xml:2]: expected nOptional and nRest outside of loops, at the end of a "
      "record");
  expectRefusal(refusal({loop("L", "nCount=\"2\"", {field("Rest", "nRest=\"1\"")})}), "found them in a loop");
}

TEST(FixDefinitionEnd, RecordMustSayWhereItEnds) {
  const FormatNode rest = field("Rest", "nRest=\"1\"");
  expectRefusal(refusal({record("R", "", {rest})}),
                "expected a record whose end is known, for nOptional or nRest, found one that is not. Write "
                "psLenField, or psSeparator.");
  expectRefusal(
      refusal({record("R", "", {field("B", "nLen=\"2\" psType=\"binary\""), rest})}, "psSeparator=\"lf\""),
      "expected texts and numbers without separators in a record that ends with one, found other bytes");
  expectRefusal(
      refusal({record("R", "", {loop("L", "nCount=\"1\"", {field("B", "nLen=\"2\" psType=\"raw\"")}), rest})},
              "psSeparator=\"lf\""),
      "expected texts and numbers without separators");
  expectRefusal(refusal({record("R", "nLen=\"9\" psPad=\" \"", {rest})}),
                "expected no nOptional, nRest and psUntil end in a record that is filled");
  expectRefusal(refusal({record("R", "nLen=\"9\" psPad=\" \"", {loop("L", "psUntil=\"end\"", {kKind})})}),
                "expected no nOptional, nRest and psUntil end in a record that is filled");
}

TEST(FixDefinitionEnd, FilledRecordIsLongEnough) {
  expectRefusal(refusal({record("R", "psPad=\" \"", {kKind})}),
                "expected nLen with psPad, for 1 bytes at least, found none");
  expectRefusal(refusal({record("R", "nLen=\"2\" psPad=\" \"", {field("A", "nLen=\"3\"")})}),
                "expected nLen with psPad, for 3 bytes at least, found 2");
}

TEST(FixDefinitionEnd, MembersOfAChoiceByValueSayWhen) {
  expectRefusal(refusal({kKind, choice({member("A", ""), member("B", "psWhen=\"B\"")})}),
                "Node[Any.A] File[M.xml:3]: expected psWhen on each member but the last, found none");
  expectRefusal(refusal({kKind, choice({kLen, member("B", "psWhen=\"B\"")})}),
                "Write a FixGroup or FixRecord with psWhen");
  expectRefusal(refusal({kKind, choice({member("A", "psWhen=\"AB\""), member("B", "")})}),
                "expected values that the field can have, found \"AB\"");
}

TEST(FixDefinitionEnd, DecidingFieldStandsBefore) {
  const std::string sMissing =
      "expected a field that stands before it, here or around its loop, found psBy \"Kind\"";
  expectRefusal(refusal({choice({member("A", "psWhen=\"A\"")})}), sMissing);
  expectRefusal(refusal({choice({member("A", "psWhen=\"A\"")}), kKind}), sMissing);
  expectRefusal(refusal({loop("L", "nCount=\"1\"", {kKind}), choice({member("A", "psWhen=\"A\"")})}),
                sMissing);
  expectRefusal(refusal({loop("L", "nCount=\"1\"", {choice({member("A", "psWhen=\"A\"")})}), kKind}),
                sMissing);
}

TEST(FixDefinitionEnd, DecidingFieldHasAValueOfItsOwn) {
  for (const char *attributes :
       {"psConst=\"A\"", "nLen=\"1\" psDefault=\"A\"", "nLen=\"1\" psOverflow=\"cut\""}) {
    expectRefusal(refusal({field("Kind", attributes), choice({member("A", "psWhen=\"A\"")})}),
                  "expected psBy with a field whose value is its own, found Kind");
  }
  expectRefusal(refusal({kLen, kVar, choice({member("A", "psWhen=\"1\"")}, "Len")}),
                "whose value is its own, found Len");
  expectRefusal(refusal({kLen, choice({member("A", "psWhen=\"1\"")}, "Len"), kVar}),
                "and nothing else, found Len");
  expectRefusal(refusal({kLen, choice({member("A", "psWhen=\"1\"")}, "Len"), loop("L", "", {kKind}, "Len")}),
                "expected a count field that is a whole number, found Len");
  expectRefusal(refusal({kLen, loop("O", "nCount=\"1\"", {choice({member("A", "psWhen=\"1\"")}, "Len")}),
                         loop("L", "", {kKind}, "Len")}),
                "expected a count field that is a whole number, found Len");
}

TEST(FixDefinitionEnd, PsByAndPsWhenStandWhereTheyMeanSomething) {
  expectRefusal(refusal({kKind, member("A", "psBy=\"Kind\" psWhen=\"A\"")}),
                "expected psWhen with nOptional and psBy, or in a choice with psBy, found it elsewhere");
  expectRefusal(refusal({kKind, member("A", "nOptional=\"1\" psWhen=\"A\"")}),
                "expected psWhen with nOptional and psBy");
  expectRefusal(refusal({kKind, member("A", "nOptional=\"1\" psBy=\"Kind\"")}),
                "expected psBy on a choice, or with nOptional and psWhen, found it elsewhere");
  expectRefusal(refusal({kKind, choice({member("A", "psBy=\"Kind\" psWhen=\"A\"")})}),
                "expected psBy on a choice");
  expectRefusal(refusal({kKind, group("C", "FixGroup psKind=\"choice\" psBy=\"Kind\" psWhen=\"A\"",
                                      {member("A", "psWhen=\"A\"")})}),
                "expected psWhen with nOptional and psBy");
}

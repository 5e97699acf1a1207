// Definitions of the format `fix` that make no sense are refused when they are loaded, with a message that
// says where and what to write instead.
#include <gtest/gtest.h>

#include "fix_config.h"

using namespace test::fix;

namespace {

const FormatNode kTagged = record("Tagged", "", {field("T", "psConst=\"L\" nTag=\"1\"")});
const FormatNode kUntagged = record("Untagged", "", {field("U", "nLen=\"2\"")});

}  // namespace

TEST(FixDefinition, WhereAndWhatToWriteIsSaid) {
  EXPECT_EQ(refusal({field("A", "nLen=\"1\""), field("F", "psType=\"number\"")}),
            "Msg[M] Node[F] File[M.xml:3]: expected nLen, found no length. Write nLen=\"...\".");
  EXPECT_EQ(refusal("nLenn=\"3\""),
            "File[M.xml:2] Element[FixField] Attribute[nLenn]: expected one of nLen, psType, psUnit, "
            "psAlign, psPad, "
            "psConst, nTag, psValues, psDefault, psBlank, psCharset, psControl, psOverflow, nDecimals, "
            "psSign, psPlus, "
            "nPoint, psLenField, psEnd, nRest, nOptional, nPosition, found nLenn. Write nLen");
}

TEST(FixDefinition, APositionStandsInALoopAndHasNoOtherUse) {
  const std::string sNumber = "nLen=\"2\" psType=\"number\" nPosition=\"1\" ";
  expectRefusal(
      refusal({group("G", "", {field("F", sNumber)})}),
      "Node[G.F] File[M.xml:2]: expected nPosition in a loop, found it outside of any. Remove nPosition.");
  const auto inLoop = [](const std::vector<FormatNode> &body) {
    return refusal({loop("L", "nCount=\"2\"", body)});
  };
  for (const char *more : {"psConst=\"1\"", "psDefault=\"1\"", "psValues=\"1|2\"", "nDecimals=\"1\""}) {
    expectRefusal(inLoop({field("F", sNumber + more)}), "found it with another use.");
  }
  for (const char *more : {"psOverflow=\"cut\"", "psEnd=\"*\"", "nOptional=\"1\""}) {
    expectRefusal(inLoop({field("F", "nLen=\"2\" nPosition=\"1\" " + std::string(more))}),
                  "found it with another use.");
  }
  expectRefusal(inLoop({field("F", sNumber), loop("K", "", {field("A", "nLen=\"1\"")}, "F")}),
                "expected a count field that is a whole number, found F.");
  expectRefusal(inLoop({field("F", sNumber), field("A", "nLen=\"9\" psLenField=\"F\"")}),
                "expected a length field that is a whole number and nothing else, found F.");
  expectRefusal(
      inLoop({field("F", sNumber),
              group("G", "FixGroup nOptional=\"1\" psBy=\"F\" psWhen=\"1\"", {field("A", "nLen=\"1\"")})}),
      "expected psBy with a field whose value is its own, found F, a constant, a count, a length, a "
      "position, or one");
}

TEST(FixDefinition, FieldNeedsItsRecord) {
  const FormatNode bare{"F", "<StructAttr __ID=\"ptStructAttr\"/>"};
  expectRefusal(refusal({bare}), "Node[F]: expected a FixField, found nothing. Write <FixField");
  const FormatNode wrong{"F", formatAttr("FixGroup", "") + "<StructAttr __ID=\"ptStructAttr\"/>"};
  expectRefusal(refusal({wrong}), "Node[F] File[M.xml:2]: expected a FixField, found FixGroup.");
  const FormatNode other{"F",
                         "<FormatAttr __ID=\"ptFormAttr\"><LoopType __ID=\"pInfo\"/></FormatAttr><StructAttr "
                         "__ID=\"ptStructAttr\"/>"};
  expectRefusal(refusal({other}), "expected a FixField, found a record of another kind.");
}

TEST(FixDefinition, RecordsStandWhereTheyBelong) {
  expectRefusal(refusal({group("G", "FixField nLen=\"2\"", {field("F", "nLen=\"1\"")})}),
                "expected a FixRecord or a FixGroup, found FixField");
  FormatNode loopWithGroup = loop("L", "nCount=\"2\"", {field("F", "nLen=\"1\"")});
  loopWithGroup.sInside = formatAttr("FixGroup", "") + loopWithGroup.sInside;
  expectRefusal(refusal({loopWithGroup}), "expected no FormatAttr on a loop with members, found FixGroup");
  FormatNode wrongLoop{"L",
                       "<StructAttr __ID=\"ptStructAttr\" nType=\"1\"><LoopType __ID=\"pInfo\"><FixGroup "
                       "__ID=\"ptInfo\"/></LoopType>" +
                           chain({field("F", "nLen=\"1\"")}, "ptChildNode") + "</StructAttr>"};
  expectRefusal(refusal({wrongLoop}), "expected a FixLoop, found FixGroup");
  const FormatNode inStruct{"G", "<StructAttr __ID=\"ptStructAttr\"><FixGroup __ID=\"pInfo\"/>" +
                                     chain({field("F", "nLen=\"1\"")}, "ptChildNode") + "</StructAttr>"};
  expectRefusal(refusal({inStruct}), "expected nothing in the StructAttr, found FixGroup");
  expectRefusal(refusal({record("A", "", {record("B", "", {field("F", "nLen=\"1\"")})})}),
                "Node[A.B] File[M.xml:2]: expected a record outside of other records");
}

TEST(FixDefinition, MessageRecordIsAFixMsg) {
  FixConfig config;
  config.file("msg/M.xml", "<fix><Msg psMsgName=\"M\">" + chain({field("F", "nLen=\"1\"")}, "ptHead") +
                               "<FixGroup __ID=\"pInfo\"/></Msg></fix>");
  EXPECT_EQ(config.start(), -1);
  EXPECT_TRUE(told("expected a FixMsg in the message's pInfo, found FixGroup."));
}

TEST(FixDefinition, MessageWithoutARecordHasTheDefaults) {
  FixConfig config;
  config.file("msg/M.xml",
              "<fix><Msg psMsgName=\"M\">" + chain({field("F", "nLen=\"2\"")}, "ptHead") + "</Msg></fix>");
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_EQ(generate(parse("M", "ab")), "ab");
}

TEST(FixDefinition, CountedNodesAreNotPartOfTheFormat) {
  const FormatNode counted{"C", formatAttr("FixField", "nLen=\"1\"") +
                                    "<StructAttr __ID=\"ptStructAttr\" nType=\"5\"><LoopType __ID=\"pInfo\" "
                                    "psLoopNumName=\"N\"/></StructAttr>"};
  expectRefusal(refusal({field("N", "nLen=\"1\" psType=\"number\""), counted}),
                "expected a field, a group or a loop, found a counted node");
}

TEST(FixDefinition, LoopNeedsALoopType) {
  const FormatNode bare{"L", "<StructAttr __ID=\"ptStructAttr\" nType=\"1\">" +
                                 chain({field("F", "nLen=\"1\"")}, "ptChildNode") + "</StructAttr>"};
  EXPECT_NE(refusal({bare}), "accepted");
}

TEST(FixDefinition, LengthsMustBePossible) {
  expectRefusal(refusal(""), "expected nLen, found no length");
  expectRefusal(refusal("nLen=\"0\""), "expected a number from 1 to 100000000, found \"0\"");
  expectRefusal(refusal("nLen=\"17\" psType=\"packed\""), "at most 31 digits");
  expectRefusal(refusal("nLen=\"9\" psType=\"binary\""), "binary at most 8 bytes");
  expectRefusal(refusal("nLen=\"2\" psType=\"number\" nDecimals=\"3\""), "found nLen 2 with 3 decimals");
  expectRefusal(refusal("nLen=\"65\" psType=\"number\" psPad=\" \""), "found nLen 65");
}

TEST(FixDefinition, SettingsMustMeanSomething) {
  expectRefusal(refusal("nLen=\"3\" nDecimals=\"1\""), "expected nDecimals and psSign on numbers only");
  expectRefusal(refusal("nLen=\"3\" psSign=\"leading\""), "expected nDecimals and psSign on numbers only");
  expectRefusal(refusal("nLen=\"3\" psType=\"packed\" nPoint=\"1\""),
                "expected nPoint and psPlus with psType number");
  expectRefusal(refusal("nLen=\"3\" psType=\"number\" psOverflow=\"cut\""),
                "expected psOverflow and psControl on texts only");
  expectRefusal(refusal("nLen=\"3\" psType=\"packed\" psPad=\"0\""),
                "expected psPad and psAlign on texts and psType number");
  expectRefusal(refusal("nLen=\"3\" psType=\"packed\" psCharset=\"IBM037\""),
                "expected psCharset on texts and psType number");
  expectRefusal(refusal("nLen=\"3\" psType=\"bcd\" psSign=\"trailing\""), "Use packed, or remove psSign");
  expectRefusal(refusal("nLen=\"3\" psType=\"packed\" psSign=\"leading\""),
                "expected psSign none or trailing");
  expectRefusal(refusal("nLen=\"3\" psType=\"number\" psPad=\"*\""),
                "expected psPad 0 or a blank on a number");
  expectRefusal(refusal("nLen=\"3\" psType=\"number\" psAlign=\"left\""),
                "Write psPad=\" \" for a left-aligned number");
  expectRefusal(refusal("nLen=\"3\" psType=\"packed\" psBlank=\"allowed\""),
                "Only number and zoned can tell blanks from a number");
}

TEST(FixDefinition, CharacterSetsMustBeKnown) {
  expectRefusal(refusal("nLen=\"3\" psCharset=\"KLINGON\""),
                "expected a character set that iconv knows, found psCharset \"KLINGON\"");
  expectRefusal(refusal("nLen=\"3\"", "psCharset=\"KLINGON\""), "expected a character set that iconv knows");
  expectRefusal(refusal("nLen=\"4\"", "psCharset=\"UTF-16LE\""),
                "expected a character set in which the pad is one byte");
  expectRefusal(refusal("nLen=\"4\" psType=\"number\"", "psCharset=\"UTF-16LE\""),
                "expected a character set with one byte a digit");
}

TEST(FixDefinition, ValuesMustFitTheField) {
  expectRefusal(refusal("nLen=\"2\" psConst=\"abc\""),
                "expected values that the field can have, found \"abc\". expected at most 2 bytes");
  expectRefusal(refusal("nLen=\"2\" psValues=\"ab|abc\""), "found \"abc\"");
  expectRefusal(refusal("nLen=\"2\" psDefault=\"abc\" psOverflow=\"cut\""), "found \"abc\"");
  expectRefusal(refusal("nLen=\"2\" psType=\"number\" psConst=\"x\""), "expected a decimal number");
  expectRefusal(refusal("psType=\"number\" psConst=\"5\""), "expected nLen, found no length");
  expectRefusal(refusal("nLen=\"2\" psType=\"packed\" psConst=\"\""),
                "expected a number, found an empty psConst");
  expectRefusal(refusal("psConst=\"\xC3\xA9\"", "psCharset=\"US-ASCII\""),
                "expected characters that the set has of US-ASCII");
}

TEST(FixDefinition, ContradictionsAreRefused) {
  expectRefusal(refusal("nLen=\"2\" psConst=\"ab\" psDefault=\"cd\""), "expected psConst alone");
  expectRefusal(refusal("nLen=\"2\" psConst=\"ab\" psValues=\"cd\""), "expected psConst alone");
  expectRefusal(refusal("nLen=\"2\" psDefault=\"cd\" psBlank=\"allowed\""),
                "expected psDefault or psBlank allowed, found both");
  expectRefusal(refusal("nLen=\"2\" nTag=\"1\""), "expected psConst or psValues on a tag");
  expectRefusal(refusal("nLen=\"2\" psUnit=\"chars\" psConst=\"ab\" nTag=\"1\""),
                "expected a tag whose length is counted in bytes");
}

TEST(FixDefinition, RecordLengthIsTheSumOfItsFields) {
  expectRefusal(refusal({record("R", "nLen=\"5\"", {field("A", "nLen=\"2\""), field("B", "nLen=\"2\"")})}),
                "Node[R] File[M.xml:2]: expected fields that add up to 5 bytes, found 4. Add a field for the "
                "rest, or correct nLen.");
  expectRefusal(refusal({record("R", "nLen=\"5\"", {field("A", "nLen=\"2\" psUnit=\"chars\"")})}),
                "found fields of no fixed length");
  EXPECT_EQ(
      refusal({record("R", "nLen=\"6\"",
                      {field("A", "nLen=\"2\""), loop("L", "nCount=\"2\"", {field("B", "nLen=\"2\"")})})}),
      "accepted");
}

TEST(FixDefinition, WhatMustBeRecognisedNeedsATag) {
  const std::string sTag = "expected a tag in the first record, found none. Give a field";
  expectRefusal(refusal({group("C", "FixGroup psKind=\"choice\"", {kTagged, kUntagged})}),
                "Node[C.Untagged]");
  expectRefusal(refusal({group("C", "FixGroup psKind=\"choice\"", {kTagged, kUntagged})}), sTag);
  expectRefusal(refusal({record("R", "nOptional=\"1\"", {field("A", "nLen=\"1\"")})}), sTag);
  expectRefusal(refusal({group("G", "FixGroup nOptional=\"1\"", {kUntagged, kTagged})}), sTag);
  expectRefusal(refusal({loop("L", "psUntil=\"tag\"", {kUntagged})}), sTag);
  const FormatNode late =
      record("Late", "nOptional=\"1\"",
             {field("V", "nLen=\"2\" psUnit=\"chars\""), field("T", "psConst=\"x\" nTag=\"1\"")});
  expectRefusal(refusal({late}), sTag);
}

TEST(FixDefinition, LoopEndsInOneWay) {
  const std::vector<FormatNode> body = {field("F", "nLen=\"1\"")};
  const FormatNode count = field("N", "nLen=\"1\" psType=\"number\"");
  expectRefusal(refusal({loop("L", "", body)}),
                "expected one of psLoopNumName, nCount and psUntil, found none");
  expectRefusal(refusal({count, loop("L", "nCount=\"2\"", body, "N")}), "found several");
  expectRefusal(refusal({loop("L", "nCount=\"2\" psUntil=\"end\"", body)}), "found several");
  expectRefusal(refusal({loop("L", "nMin=\"3\" nMax=\"2\" psUntil=\"end\"", body)}),
                "expected nMin not above nMax and nRoom");
  expectRefusal(refusal({loop("L", "nRoom=\"3\" psUntil=\"end\"", body)}),
                "expected nRoom on a counted loop whose body has a fixed size");
  expectRefusal(refusal({count, loop("L", "nRoom=\"3\"", {field("F", "nLen=\"1\" psUnit=\"chars\"")}, "N")}),
                "expected nRoom on a counted loop");
  expectRefusal(refusal({loop("L", "psUntil=\"end\"",
                              {record("R", "nOptional=\"1\"", {field("T", "psConst=\"x\" nTag=\"1\"")})})}),
                "expected a body of at least one byte");
}

TEST(FixDefinition, CountFieldIsAWholeNumber) {
  const std::vector<FormatNode> body = {field("F", "nLen=\"1\"")};
  expectRefusal(refusal({field("N", "nLen=\"1\""), loop("L", "", body, "N")}),
                "expected a count field that is a whole number, found N");
  expectRefusal(
      refusal({field("N", "nLen=\"2\" psType=\"number\" psBlank=\"allowed\""), loop("L", "", body, "N")}),
      "expected a count field that is a whole number, found N. Write psType=\"number\" or another number "
      "type "
      "on it, without psBlank and other uses.");
  expectRefusal(
      refusal({field("N", "nLen=\"3\" psType=\"number\" nDecimals=\"1\""), loop("L", "", body, "N")}),
      "expected a count field");
  expectRefusal(refusal({loop("L", "", body, "N"), field("N", "nLen=\"1\" psType=\"number\"")}),
                "expected a count field that stands before it");
}

TEST(FixDefinition, TypeEndIsForTheLastNode) {
  const FormatNode end = field("E", "psType=\"end\"");
  expectRefusal(refusal({end, field("F", "nLen=\"1\"")}),
                "expected psType end on the last node of the message");
  expectRefusal(refusal({end}), "expected psType end on the last node of the message");
  expectRefusal(refusal({field("F", "nLen=\"1\""), group("G", "", {end})}),
                "expected psType end on the last node of the message");
}

TEST(FixDefinition, ReloadCompilesAnew) {
  FixConfig config;
  config.message("M", "", {field("F", "nLen=\"2\"")});
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(generate(parse("M", "ab")), "ab");
  config.message("M", "", {field("F", "nLen=\"3\"")});
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(generate(parse("M", "abc")), "abc");
  EXPECT_EQ(parse("M", "ab"), nullptr);
  cvtEnd();
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(generate(parse("M", "xyz")), "xyz");
}

TEST(FixDefinition, ReferencedDefinitionsShareTheirNodes) {
  FixConfig config;
  config.message("Part", "",
                 {field("A", "nLen=\"2\""), loop("L", "nCount=\"2\"", {field("B", "nLen=\"1\"")})});
  config.file("msg/M.xml", "<fix><Msg psMsgName=\"M\"><Message __ID=\"ptHead\" psNodeName=\"H\">" +
                               formatAttr("FixField", "nLen=\"1\"") +
                               "<StructAttr __ID=\"ptStructAttr\"/></Message><Message __ID=\"ptNextNode\" "
                               "psNodeName=\"Part\" nType=\"-1\"/></Msg></fix>");
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_EQ(generate(parse("M", "haabc")), "haabc");
  EXPECT_EQ(generate(parse("Part", "aabc")), "aabc");
}

TEST(FixDefinition, ReferenceToAnotherFormatIsRefused) {
  FixConfig config;
  test::RootFile root;
  root.sPlug = test::plugSection({"psName=\"toy\"", "psName=\"fix\""});
  root.sMessage = test::messageSection({"msg"});
  config.file("All/root.xml", root.text());
  config.file("msg/Part.xml", test::definition("toy", "Part", {test::field("A")}));
  config.file(
      "msg/M.xml",
      "<fix><Msg psMsgName=\"M\"><Message __ID=\"ptHead\" psNodeName=\"Part\" nType=\"-1\"/></Msg></fix>");
  EXPECT_EQ(config.start(), -1);
  EXPECT_TRUE(told("Msg[M] Node[A]: expected a FixField, found nothing.")) << told();
}

namespace {

void *writeMsg(void *ptRecord, void *ptElement, char *, char *psType) {
  return sttGenXmlMsg(static_cast<Msg *>(ptRecord), ptElement, psType);
}

// Outside of a file being read, writing uses the global chain: the format's own is put there.
void useChainOf(const std::string &sFormat) {
  for (const SttInfo *pt = gptSttInfo; pt != nullptr; pt = pt->ptNext) {
    if (sFormat != pt->psTypeName) continue;
    for (const FuncList *ptPair = pt->ptVoidFunction; ptPair != nullptr; ptPair = ptPair->ptNext) {
      sttAddFuncVoid(ptPair->fpParse, ptPair->fpGen);
    }
  }
}

const std::vector<FormatNode> kAllKinds = {
    record("R", "nLen=\"3\"", {field("A", "nLen=\"3\" psPad=\"0x00\" psType=\"raw\"")}),
    group("C", "FixGroup psKind=\"choice\" nOptional=\"1\"", {kTagged}),
    record("N", "", {field("B", "nLen=\"2\" psType=\"packed\" psSign=\"trailing\" nDecimals=\"2\"")})};

}  // namespace

TEST(FixDefinition, WhatIsWrittenToXmlIsTheSameDefinition) {
  FixConfig config("nWriteBack=\"1\"");
  config.message("M", "psSeparator=\"lf\"", kAllKinds);
  ASSERT_EQ(config.start(), 0) << told();
  const std::string sBytes = std::string("ab\0\nL\n\x12\x3D\n", 9);
  EXPECT_EQ(generate(parse("M", sBytes)), sBytes) << told();

  FixConfig copy;
  copy.message("M", "", {field("F", "nLen=\"1\"")});
  useChainOf("fix");
  nGRet = 0;
  ASSERT_EQ(sttGenXmlFile(copy.arg("msg/M.xml"), cvtGetMsg(test::cs("M")), test::cs("fix"), test::cs("Msg"),
                          reinterpret_cast<void *>(&writeMsg)),
            0)
      << told();
  ASSERT_EQ(copy.start(), 0) << told() << contentOf(copy.path("msg/M.xml"));
  EXPECT_EQ(generate(parse("M", sBytes)), sBytes) << contentOf(copy.path("msg/M.xml"));
}

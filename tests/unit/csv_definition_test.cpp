#include <gtest/gtest.h>

#include "csv_config.h"

namespace {

using namespace test::csvtext;

// A definition that must be refused, and a part of the line that says why.
struct Mistake {
  const char *sCase;
  std::string sAttributes;
  std::vector<FormatNode> nodes;
  std::string sLine;
};

void PrintTo(const Mistake &mistake, std::ostream *out) {
  *out << mistake.sCase;
}

class CsvDefinition : public testing::TestWithParam<Mistake> {};

TEST_P(CsvDefinition, IsRefusedWithThePlaceAndTheWayOut) {
  CsvConfig config;
  config.message("M", GetParam().sAttributes, GetParam().nodes);
  EXPECT_NE(config.start(), 0);
  EXPECT_TRUE(told(GetParam().sLine)) << told();
  EXPECT_TRUE(told("msg/M.xml:")) << told();
}

const std::vector<FormatNode> kPlain = {field("A")};
const std::vector<FormatNode> kTagged = {record("R", "psTag=\"R\"", {field("A")})};

std::vector<FormatNode> inRecord(const std::vector<FormatNode> &nodes) {
  return {record("R", "psTag=\"R\"", nodes)};
}

INSTANTIATE_TEST_SUITE_P(
    , CsvDefinition,
    testing::Values(
        Mistake{"UnknownAttribute", "psSeperator=\";\"", kPlain,
                "Attribute[psSeperator]: expected one of psSeparator, "},
        Mistake{"UnknownWord", "psLineEnd=\"cr\"", kPlain,
                "expected one of lf, crlf, any, none, found \"cr\"."},
        Mistake{"NumberOutOfRange", "nMaxField=\"0\"", kPlain, "expected a number from 1 to "},
        Mistake{"NoSeparator", "psSeparator=\"\"", kPlain,
                "expected one or more characters in psSeparator, found none."},
        Mistake{"QuoteOfTwoCharacters", "psQuote=\"''\"", kPlain,
                "expected one printable ASCII character in psQuote, found \"''\"."},
        Mistake{"QuoteThatSeparates", "psQuote=\",\"", kPlain,
                "expected a character of its own at the start of psQuote, found \",\", which another mark "
                "begins with."},
        Mistake{"EscapeThatQuotes", "psEscape=\"&quot;\"", kPlain,
                "expected a character of its own at the start of psEscape"},
        Mistake{"SeparatorWithALineEnd", "psSeparator=\",&#10;\"", kPlain,
                "expected no line end in psSeparator"},
        Mistake{"SeparatorAboveAscii", "psSeparator=\"é\"", kPlain,
                "expected an ASCII character at the start of psSeparator"},
        Mistake{"SeparatorThatAnEscapeMeans", "psSeparator=\"n\" psQuote=\"\" psEscape=\"\\\"", kPlain,
                "expected marks that begin with none of n, r and t, with psEscape and without quotes, found "
                "\"n\". Behind the escape they mean line ends and tabs."},
        Mistake{"EscapeThatItselfMeansALineEnd", "psQuote=\"\" psEscape=\"n\"", kPlain,
                "expected marks that begin with none of n, r and t"},
        Mistake{"RecordEndThatAnEscapeMeans", "psQuote=\"\" psEscape=\"\\\" psRecordEnd=\"r\"", kPlain,
                "expected marks that begin with none of n, r and t"},
        Mistake{"FrontThatAnEscapeMeans",
                "psQuote=\"\" psEscape=\"\\\" psTagFront=\"t{\" psTagBack=\"}\" psLineEnd=\"none\"", kTagged,
                "expected marks that begin with none of n, r and t"},
        Mistake{"CommentThatSeparates", "psSeparator=\";\" psComment=\";\"", kPlain,
                "expected no byte that a mark begins with in psComment, found \";\"."},
        Mistake{"CommentThatQuotes", "psComment=\"&quot;\"", kPlain,
                "expected no byte that a mark begins with in psComment"},
        Mistake{"CommentWithASeparatorInIt", "psComment=\"x,\"", kPlain,
                "expected no byte that a mark begins with in psComment"},
        Mistake{"LastLineEndWithoutLines",
                "psLineEnd=\"none\" psLastLineEnd=\"required\" psTagFront=\"{\" psTagBack=\"}\"", kTagged,
                "expected lines or a psRecordEnd, for psLastLineEnd=\"required\", found psLineEnd=\"none\"."},
        Mistake{"NothingEndsARecord", "psLineEnd=\"none\"", kPlain,
                "expected psRecordEnd or psTagFront with psLineEnd=\"none\", found neither."},
        Mistake{"CommentsWithoutLines", "psLineEnd=\"none\" psRecordEnd=\"/\" psComment=\"#\"", kPlain,
                "expected lines, for psComment and psBlankLines"},
        Mistake{"TerminatedWithQuotes", "nTerminated=\"1\"", kPlain,
                "expected psQuote=\"\" and no psContinuation with nTerminated"},
        Mistake{"FrontWithoutBack", "psTagFront=\"{\"", kTagged,
                "expected psTagBack with psTagFront, found none."},
        Mistake{"MarksWithoutTags", "psTagBack=\"}\"", kPlain,
                "expected records with a psTag, for psTagBack and psContinuation, found none."},
        Mistake{"ARecordWithoutTheTagThatBracesWant",
                "psTagFront=\"{\" psTagBack=\"}\"",
                {kTagged[0], rows({field("B")})},
                "Node[Rows] File["},
        Mistake{"ARecordWithoutATagAmongContinuedOnes",
                "psContinuation=\"88\"",
                {kTagged[0], rows({field("B")})},
                "expected a psTag in every record, with psTagBack and psContinuation, found none."},
        Mistake{"UnknownCharset", "psCharset=\"x\"", kPlain,
                "expected a character set that iconv knows in psCharset, found \"x\"."},
        Mistake{
            "CharsetWithAMark", "psCharset=\"UTF-16\"", kPlain,
            "expected a character set without a byte order mark in psCharset, found UTF-16. Write UTF-16LE"},
        Mistake{"CharsetOfAPart", "psCharset=\"IBM037\" nWhole=\"0\"", kPlain,
                "expected nWhole=\"1\" with psCharset, found nWhole=\"0\"."},
        Mistake{"SeparatorThatTheSetLacks", "psCharset=\"US-ASCII\" psSeparator=\",é\"", kPlain,
                "expected psSeparator in characters of US-ASCII"},
        Mistake{
            "HeaderOfTaggedRecords", "psHeader=\"order\"", kTagged,
            "expected one record or loop of records, without psTag, with psHeader, found records with tags."},
        Mistake{"HeaderOfTwoTables",
                "psHeader=\"order\"",
                {record("R", "", {field("A")}), rows({field("B")})},
                "found 2 of them."},
        Mistake{"HeaderOverALoop",
                "psHeader=\"order\"",
                {field("A"), loop("L", "CsvField", "", "", {})},
                "expected fields of variable length alone in a record with a header line"},
        Mistake{"HeaderOverAFixedField",
                "psHeader=\"names\"",
                {field("A", "nLen=\"2\"")},
                "expected fields of variable length alone"},
        Mistake{"TwoColumnsOfOneName",
                "psHeader=\"order\"",
                {field("A"), field("B", "psName=\"A\"")},
                "expected columns of different names, found a second \"A\"."},
        Mistake{"MoreColumnsThanTheLimit",
                "psHeader=\"order\" nMaxColumns=\"1\"",
                {field("A"), field("B")},
                "expected at most 1 columns, found 2."},
        Mistake{"AFieldBehindRecords",
                "",
                {record("R", "psTag=\"R\"", {field("A")}), field("B")},
                "Node[B] File["},
        Mistake{"AFieldBehindRecordsOfARecord", "",
                inRecord({field("A"), record("S", "psTag=\"S\"", {field("B")}), field("C")}),
                "expected a record, found a node without a CsvRecord behind one."},
        Mistake{"AnEmptyTag",
                "",
                {record("R", "psTag=\"\"", {field("A")})},
                "expected a tag of up to 200 bytes without marks, other than psContinuation, found \"\"."},
        Mistake{"ATagWithASeparator",
                "",
                {record("R", "psTag=\"a,b\"", {field("A")})},
                "expected a tag of up to 200 bytes without marks"},
        Mistake{"ATagThatContinues", "psContinuation=\"R\"", kTagged,
                "other than psContinuation, found \"R\"."},
        Mistake{"ATagThatIsAComment",
                "psComment=\"#\"",
                {record("R", "psTag=\"#1\"", {field("A")})},
                "expected a tag of up to 200 bytes without marks"},
        Mistake{"ATagWithAFieldThatMakeAComment",
                "psComment=\"{1}#\" psTagFront=\"{\" psTagBack=\"}\"",
                {record("R", "psTag=\"1\"", {field("A")})},
                "expected a tag of up to 200 bytes without marks"},
        Mistake{
            "AnyOrderWithoutTags",
            "psOrder=\"any\"",
            {record("R", "", {field("A")}), record("S", "", {field("B")})},
            "expected records in any order that each begin with a psTag of their own, found one without."},
        Mistake{"AnyOrderWithOneTagTwice",
                "psOrder=\"any\"",
                {record("R", "psTag=\"R\"", {field("A")}), record("S", "psTag=\"R\"", {field("B")})},
                "found two that begin alike."},
        Mistake{"AMandatoryLoop",
                "",
                {rows({field("A")}, "nMandatory=\"1\"")},
                "Write nMin=\"1\" into its CsvLoop"},
        Mistake{"ALoopOfRecordsWithoutFields",
                "",
                {rows({})},
                "expected a CsvRecord without nMandatory on a loop with children"},
        Mistake{"AMandatoryGroupOfFields",
                "",
                {group("G", "nMandatory=\"1\"", {field("A")})},
                "expected psKind all or choice, and no nMandatory, in a group of fields"},
        Mistake{"AChoiceOfRecords",
                "",
                {group("G", "psKind=\"choice\"", kTagged)},
                "expected a choice of fields, found one of records."},
        Mistake{"AChoiceWithoutSelect",
                "",
                {field("A"), group("G", "psKind=\"choice\"", {field("B")})},
                "expected a field before it, in the same repetition, in psSelect, found none."},
        Mistake{"AChoiceByALaterField",
                "",
                {group("G", "psKind=\"choice\" psSelect=\"A\"", {field("B")}), field("A")},
                "found \"A\"."},
        Mistake{"AChoiceByAFieldThatStandsNowhere", "psContinuation=\"88\"",
                inRecord({field("A", "psKind=\"wraps\""),
                          group("G", "psKind=\"choice\" psSelect=\"A\"", {field("B")})}),
                "expected a field before it, in the same repetition, in psSelect, found \"A\"."},
        Mistake{"AValueThatChoosesTwo",
                "",
                {field("A"), group("G", "psKind=\"choice\" psSelect=\"A\"",
                                   {field("B", "psWhen=\"1|2\""), field("C", "psWhen=\"2\"")})},
                "found values that another member has."},
        Mistake{"TwoMembersForTheRest",
                "",
                {field("A"), group("G", "psKind=\"choice\" psSelect=\"A\"", {field("B"), field("C")})},
                "found values that another member has."},
        Mistake{
            "AMemberThatIsALoop",
            "",
            {field("A"), group("G", "psKind=\"choice\" psSelect=\"A\"", {loop("L", "CsvField", "", "", {})})},
            "found a loop or a choice. Write it into a group."},
        Mistake{
            "AFieldBehindALoopToTheEnd",
            "",
            {loop("L", "CsvField", "", "", {}), field("B")},
            "expected nothing behind what takes all that is left of its record, found another node. Let that "
            "be the last; count a loop with psLoopNumName, continue a rest with psContinuation."},
        Mistake{"AFieldBehindALoopToTheEndOfAGroup", "nShort=\"1\"",
                inRecord({group("G", "", {field("A"), loop("L", "CsvField", "", "", {})}), field("B")}),
                "Node[R.B] File["},
        Mistake{"ALoopBehindALoopToTheEnd", "psContinuation=\"88\"",
                inRecord({loop("L", "CsvField", "", "", {}), loop("K", "CsvField", "", "", {})}),
                "expected nothing behind what takes all that is left of its record"},
        Mistake{"AFieldBehindALoopThatIsChosen", "",
                inRecord({field("A"),
                          group("G", "psKind=\"choice\" psSelect=\"A\" psNone=\"N\"",
                                {field("X", "psWhen=\"X\""),
                                 group("H", "", {loop("L", "CsvField", "", "", {})})}),
                          field("B")}),
                "expected nothing behind what takes all that is left of its record"},
        Mistake{"AFieldBehindARest",
                "nShort=\"1\"",
                {field("A", "psKind=\"rest\""), field("B")},
                "Node[B] File["},
        Mistake{
            "ALoopOfRests",
            "nShort=\"1\"",
            {field("P"), loop("L", "CsvField", "psKind=\"rest\"", "", {})},
            "expected nothing behind what takes all that is left of its record, found a further repetition."},
        Mistake{"ALoopToTheEndInALoop",
                "",
                {field("N"), loop("L", "CsvGroup", "", "", {loop("K", "CsvField", "", "", {})}, "N")},
                "found a further repetition."},
        Mistake{"LoopLimitsCrossed",
                "",
                {rows({field("A")}, "", "nMin=\"3\" nMax=\"2\"")},
                "expected nMax at least nMin, found 2 and 3."},
        Mistake{"APadWithoutALength",
                "",
                {field("A", "psPad=\" \"")},
                "expected nLen on a field of kind value, and an ASCII psPad that is no mark with it"},
        Mistake{"APadThatSeparates",
                "",
                {field("A", "nLen=\"2\" psPad=\",\"")},
                "an ASCII psPad that is no mark"},
        Mistake{"AConstantLongerThanItsField",
                "",
                {field("A", "nLen=\"2\" psConst=\"ABC\"")},
                "expected a psConst or psDefault that fits into the nLen characters of its field, found "
                "\"ABC\"."},
        Mistake{"AConstantThatNothingFills",
                "",
                {field("A", "nLen=\"4\" psConst=\"ABC\"")},
                "expected a psConst or psDefault that fits into the nLen"},
        Mistake{"AConstantThatEndsLikeItsPads",
                "",
                {field("A", "nLen=\"3\" psPad=\" \" psConst=\"A \"")},
                "expected a psConst or psDefault that fits into the nLen"},
        Mistake{"ADefaultLongerThanItsField",
                "",
                {field("A", "nLen=\"2\" psPad=\" \" psDefault=\"ABC\"")},
                "expected a psConst or psDefault that fits into the nLen"},
        Mistake{"AConstantWithASeparatorInAFixedField",
                "",
                {field("A", "nLen=\"3\" psConst=\"A,B\"")},
                "expected a psConst or psDefault that fits into the nLen"},
        Mistake{"ARestOfALength",
                "",
                {field("A", "nLen=\"2\" psKind=\"rest\"")},
                "expected nLen on a field of kind value"},
        Mistake{"AnEndInsideARecord", "", inRecord({field("A", "psKind=\"end\"")}),
                "expected a field of kind end at the end of the message, found it elsewhere."},
        Mistake{"TwoEnds",
                "",
                {field("A"), field("B", "psKind=\"end\""), field("C", "psKind=\"end\"")},
                "expected one field of its kind, found a second one."},
        Mistake{"AFieldBehindTheEnd",
                "",
                {field("A"), field("B", "psKind=\"end\""), field("C")},
                "expected nothing behind the fields of kind end and line-end"},
        Mistake{"NothingButAnEnd",
                "",
                {field("B", "psKind=\"end\"")},
                "expected a record or a field, found none."},
        Mistake{"WrapsWithoutContinuation", "", inRecord({field("A"), field("B", "psKind=\"wraps\"")}),
                "expected one field of kind wraps in a record, and psContinuation in CsvMsg"},
        Mistake{"WrapsInALoopOfFields", "psContinuation=\"88\"",
                inRecord({loop("L", "CsvGroup", "", "", {field("A"), field("B", "psKind=\"wraps\"")})}),
                "expected a field of kind wraps in the record itself, found it elsewhere."},
        Mistake{"DefaultAndConstant",
                "",
                {field("A", "psDefault=\"a\" psConst=\"b\"")},
                "expected psDefault or psConst, found both."},
        Mistake{"PositionOutsideOfLoops", "", inRecord({field("A", "nPosition=\"1\"")}),
                "expected nPosition in a loop, on no count field, without psDefault and psConst, found it "
                "outside of any loop. Remove nPosition."},
        Mistake{"PositionWithDefault",
                "",
                {rows({field("A", "nPosition=\"1\" psDefault=\"1\"")})},
                "found it beside one of them."},
        Mistake{"PositionThatCounts",
                "",
                {rows({field("A", "nPosition=\"1\""), loop("L", "CsvField", "", "", {}, "A")})},
                "found it on a count field."},
        Mistake{"PositionThatChooses",
                "",
                {rows({field("A", "nPosition=\"1\""),
                       group("G", "psKind=\"choice\" psSelect=\"A\"", {field("B", "psWhen=\"1\"")})})},
                "expected a field whose value is its own in psSelect, found a position."},
        Mistake{"CountWithDefault",
                "",
                {field("C", "psDefault=\"0\""), loop("L", "CsvField", "", "", {}, "C")},
                "expected a count field of one loop"},
        Mistake{"FieldRecordOnAGroup",
                "",
                {{"G", formatAttr("CsvField", "") + "<StructAttr __ID=\"ptStructAttr\">" +
                           chain({field("A")}, "ptChildNode") + "</StructAttr>"}},
                "expected CsvGroup as FormatAttr.pInfo, found CsvField."},
        Mistake{"GroupRecordOnAField",
                "",
                {{"A", formatAttr("CsvGroup", "") + "<StructAttr __ID=\"ptStructAttr\"/>"}},
                "expected CsvField as FormatAttr.pInfo, found CsvGroup."},
        Mistake{"RecordOnAField",
                "",
                {{"A", formatAttr("CsvRecord", "") + "<StructAttr __ID=\"ptStructAttr\"/>"}},
                "expected a CsvRecord on a group or a loop with children, found it on a field."},
        Mistake{"RecordInTheStructAttr",
                "",
                {{"A", "<StructAttr __ID=\"ptStructAttr\"><CsvField __ID=\"pInfo\"/></StructAttr>"}},
                "found a record in StructAttr."}),
    [](const auto &one) { return std::string(one.param.sCase); });

TEST(CsvDefinitionRecords, OnlyACsvMsgDescribesTheText) {
  CsvConfig config;
  config.file("msg/M.xml", "<csv><Msg psMsgName=\"M\">" + chain({field("A")}, "ptHead") +
                               "<CsvField __ID=\"pInfo\"/></Msg></csv>");
  EXPECT_NE(config.start(), 0);
  EXPECT_TRUE(told("expected CsvMsg as pInfo of Msg, found CsvField.")) << told();
}

TEST(CsvDefinitionRecords, WithoutACsvMsgItsDefaultsHold) {
  CsvConfig config;
  config.file("msg/M.xml", "<csv><Msg psMsgName=\"M\">" +
                               chain({field("A"), {"B", "<StructAttr __ID=\"ptStructAttr\"/>"}}, "ptHead") +
                               "</Msg></csv>");
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_EQ(pass("M", "1,\"a,b\"\n"), "1,\"a,b\"\n");
}

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

TEST(CsvDefinitionRecords, WhatIsWrittenToXmlIsTheSameDefinition) {
  CsvConfig config("nWriteBack=\"1\"");
  config.message(
      "M", "psSeparator=\"&#9;\" psQuote=\"\" psEscape=\"\\\" psLineEnd=\"crlf\"",
      {record("A", "psTag=\"A\" nMandatory=\"1\"", {field("B", "nLen=\"3\" psPad=\".\""), field("K")}),
       record("L", "psTag=\"L\"",
              {field("C", "psConst=\"&lt;1\""),
               group("G", "psKind=\"choice\" psSelect=\"C\"", {field("D", "psWhen=\"&lt;1\"")})})});
  ASSERT_EQ(config.start(), 0) << told();
  const std::string s = "A\tb..k\r\nL\t<1\t2\\n\r\n";
  EXPECT_EQ(pass("M", s), s) << told();

  CsvConfig copy;
  copy.message("M", "", {field("F")});
  useChainOf("csv");
  nGRet = 0;
  ASSERT_EQ(sttGenXmlFile(copy.arg("msg/M.xml"), cvtGetMsg(test::cs("M")), test::cs("csv"), test::cs("Msg"),
                          reinterpret_cast<void *>(&writeMsg)),
            0)
      << told();
  ASSERT_EQ(copy.start(), 0) << told();
  EXPECT_EQ(pass("M", s), s) << told();
}

}  // namespace

#include <gtest/gtest.h>

#include "xml_config.h"

namespace {

using namespace test::xmldoc;

// A definition that must be refused, and a part of the line that says why.
// <NAME n="NUMBER">text</NAME>
FormatNode element(const std::string &node, const std::string &name, const std::string &number) {
  return group(node, "psName=\"" + name + "\"",
               {field(node + "Number", "psKind=\"attribute\" psName=\"n\" psConst=\"" + number + "\""),
                field(node + "Value", "psKind=\"text\" nKeepEmpty=\"2\"")});
}

struct Mistake {
  const char *sCase;
  std::string sAttributes;
  std::vector<FormatNode> nodes;
  std::string sLine;
};

void PrintTo(const Mistake &mistake, std::ostream *out) {
  *out << mistake.sCase;
}

class XmlDefinition : public testing::TestWithParam<Mistake> {};

TEST_P(XmlDefinition, IsRefusedWithThePlaceAndTheWayOut) {
  XmlConfig config;
  config.message("M", GetParam().sAttributes, GetParam().nodes);
  EXPECT_NE(config.start(), 0);
  EXPECT_TRUE(told(GetParam().sLine)) << told();
  EXPECT_TRUE(told("msg/M.xml:")) << told();
}

const std::vector<FormatNode> kPlain = {field("A")};

FormatNode nested(int nDepth) {
  return nDepth == 0 ? field("F") : group("G", "", {nested(nDepth - 1)});
}

INSTANTIATE_TEST_SUITE_P(
    , XmlDefinition,
    testing::Values(
        Mistake{"UnknownAttribute", "psRot=\"m\"", kPlain,
                "Element[XmlMsg] Attribute[psRot]: expected one of psRoot, "},
        Mistake{"UnknownWord", "psUnknown=\"ignore\"", kPlain,
                "Attribute[psUnknown]: expected one of refuse, skip, found \"ignore\"."},
        Mistake{
            "ConstantThatItsSpaceChanges",
            "",
            {field("A", "psSpace=\"collapse\" psConst=\"a  b\"")},
            "expected psConst as psSpace leaves it, found \"a  b\", which is read as \"a b\". Write what is "
            "read, or psSpace=\"preserve\"."},
        Mistake{"DefaultThatItsSpaceChanges",
                "psSpace=\"trim\"",
                {field("A", "psDefault=\" EUR\"")},
                "expected psDefault as psSpace leaves it, found \" EUR\", which is read as \"EUR\"."},
        Mistake{"NumberOutOfRange", "nMaxDepth=\"0\"", kPlain,
                "expected a number from 1 to 1000, found \"0\"."},
        Mistake{"RootIsNoName", "psRoot=\"a b\"", kPlain,
                "expected an XML name, found \"a b\". Write psName."},
        Mistake{"NodeIsNoName", "", {field("1st")}, "Node[1st] File["},
        Mistake{"EmptyName", "", {field("A", "psName=\"\"")}, "expected an XML name, found \"\"."},
        Mistake{"TwoColons", "", {field("A", "psName=\"a:b:c\"")}, "expected an XML name, found \"a:b:c\"."},
        Mistake{"UndeclaredPrefix",
                "",
                {field("A", "psName=\"p:a\"")},
                "expected a prefix of psPrefixes, found \"p\" in p:a. "
                "Write psPrefixes=\"p=URI\" into XmlMsg."},
        Mistake{"XmlnsAttribute",
                "",
                {field("A", "psKind=\"attribute\" psName=\"xmlns\"")},
                "found xmlns. Write psNamespace"},
        Mistake{"PrefixWithoutUri", "psPrefixes=\"a=u b\"", kPlain,
                "expected prefix=URI pairs in psPrefixes, found \"b\"."},
        Mistake{"ReservedPrefix", "psPrefixes=\"xmlx=u\"", kPlain, "found \"xmlx=u\"."},
        Mistake{"PrefixTwice", "psPrefixes=\"a=u a=v\"", kPlain,
                "expected each prefix once in psPrefixes, found \"a\" twice."},
        Mistake{"PrefixOfALongNamespace", "psPrefixes=\"a=" + std::string(1025, 'u') + "\"", kPlain,
                "expected a namespace URI of at most 1024 bytes, found one of 1025. Shorten it."},
        Mistake{"LongNamespace", "psNamespace=\"" + std::string(1025, 'u') + "\"", kPlain,
                "expected a namespace URI of at most 1024 bytes, found one of 1025. Shorten it."},
        Mistake{"LongNamespaceOfAGroup",
                "",
                {group("G", "psNamespace=\"" + std::string(1025, 'u') + "\"", kPlain)},
                "Node[G] File["},
        Mistake{"TwoElementsOfOneName", "", {field("A"), field("B", "psName=\"A\"")}, "Node[B] File["},
        Mistake{"TwoNamesOfOneNamespace",
                "psNamespace=\"u\" psPrefixes=\"p=u\"",
                {field("A"), field("B", "psName=\"p:A\"")},
                "expected elements of different names, found a second <p:A> in <M>."},
        Mistake{
            "TwoElementsOfOneNameAndConstant",
            "",
            {element("A", "E", "1"), element("B", "E", "1")},
            "found a second <E> in <M>. Give it another psName, make one loop of both, or tell them apart by "
            "an attribute with another psConst in each."},
        Mistake{"TwoElementsOfOneNameOneWithoutConstant",
                "",
                {element("A", "E", "1"), element("B", "E", "2"), field("C", "psName=\"E\"")},
                "Node[C] File["},
        Mistake{"TwoAttributesOfOneName",
                "",
                {field("A", "psKind=\"attribute\""), field("B", "psKind=\"attribute\" psName=\"A\"")},
                "expected attributes of different names, found a second \"A\" of <M>."},
        Mistake{"TwoTexts",
                "",
                {field("A", "psKind=\"text\""), field("B", "psKind=\"text\"")},
                "expected one text field, without psName, in an element, found a second one."},
        Mistake{"TextWithName", "", {field("A", "psKind=\"text\" psName=\"a\"")}, "found psName. Remove it."},
        Mistake{"DefaultAndConstant",
                "",
                {field("A", "psDefault=\"a\" psConst=\"b\"")},
                "expected psDefault or psConst, found both."},
        Mistake{"MandatoryLoop",
                "",
                {loop("L", "nMandatory=\"1\"", "", {field("A")})},
                "Write nMin=\"1\" into its XmlLoop."},
        Mistake{"AttributeLoop",
                "",
                {loop("L", "psKind=\"attribute\"", "", {})},
                "in a loop, found another kind."},
        Mistake{"LoopLimitsCrossed",
                "",
                {loop("L", "", "nMin=\"3\" nMax=\"2\"", {})},
                "expected nMax at least nMin, found 2 and 3."},
        Mistake{"KeptWrapperWithoutName",
                "",
                {loop("L", "", "nKeepEmpty=\"1\"", {})},
                "expected psWrapper with nKeepEmpty, found none."},
        Mistake{"CountWithDefault",
                "",
                {field("C", "psDefault=\"0\""), loop("L", "", "", {}, "C")},
                "expected a count field of one loop"},
        Mistake{"CountOfTwoLoops",
                "",
                {field("C"), loop("L", "", "", {}, "C"), loop("K", "", "", {}, "C")},
                "found one of two loops."},
        Mistake{"PositionOutsideOfLoops",
                "",
                {field("A", "nPosition=\"1\""), loop("L", "", "", {})},
                "expected nPosition in a loop, on no count field, without psDefault and psConst, found it "
                "outside of any loop. Remove nPosition."},
        Mistake{"PositionWithConstant",
                "",
                {loop("L", "", "", {field("A", "nPosition=\"1\" psConst=\"1\"")})},
                "found it beside one of them."},
        Mistake{"PositionThatCounts",
                "",
                {loop("L", "", "", {field("A", "nPosition=\"1\""), loop("K", "", "", {}, "A")})},
                "found it on a count field."},
        Mistake{"DeeperThanTheLimit",
                "nMaxDepth=\"3\"",
                {nested(3)},
                "expected at most 3 elements inside each other, found more. Raise nMaxDepth"},
        Mistake{"MoreAttributesThanTheLimit",
                "nMaxAttributes=\"1\"",
                {field("A", "psKind=\"attribute\""), field("B", "psKind=\"attribute\"")},
                "expected at most 1 attributes, found more."},
        Mistake{"MorePrefixesThanTheLimit", "psPrefixes=\"a=u b=v c=w\" nMaxAttributes=\"2\"", kPlain,
                "expected at most 2 attributes, found more. Raise nMaxAttributes of XmlMsg; a namespace that "
                "is declared counts as one."},
        Mistake{"MoreAttributesWithPrefixesThanTheLimit",
                "psNamespace=\"u\" psPrefixes=\"a=v\" nMaxAttributes=\"2\"",
                {field("A", "psKind=\"attribute\"")},
                "expected at most 2 attributes, found more."},
        Mistake{"MoreAttributesWithTheNamespaceOfAGroupThanTheLimit",
                "nMaxAttributes=\"1\"",
                {group("G", "psNamespace=\"u\"", {field("A", "psKind=\"attribute\"")})},
                "expected at most 1 attributes, found more."},
        Mistake{"MoreAttributesWithTheNamespaceOfALoopThanTheLimit",
                "nMaxAttributes=\"1\"",
                {loop("L", "psNamespace=\"u\"", "", {field("A", "psKind=\"attribute\""), field("B")})},
                "expected at most 1 attributes, found more."},
        Mistake{"FieldRecordOnAGroup",
                "",
                {{"G", formatAttr("XmlField", "") + "<StructAttr __ID=\"ptStructAttr\">" +
                           chain({field("A")}, "ptChildNode") + "</StructAttr>"}},
                "expected XmlGroup as FormatAttr.pInfo, found XmlField."},
        Mistake{"GroupRecordOnAField",
                "",
                {{"A", formatAttr("XmlGroup", "") + "<StructAttr __ID=\"ptStructAttr\"/>"}},
                "expected XmlField as FormatAttr.pInfo, found XmlGroup."},
        Mistake{"RecordInTheStructAttr",
                "",
                {{"A", "<StructAttr __ID=\"ptStructAttr\"><XmlField __ID=\"pInfo\"/></StructAttr>"}},
                "found a record in StructAttr."},
        Mistake{"CountedNode",
                "",
                {field("N"),
                 {"A",
                  "<StructAttr __ID=\"ptStructAttr\" nType=\"5\"><LoopType __ID=\"pInfo\" "
                  "psLoopNumName=\"N\"/></StructAttr>"}},
                "found a counted node."}),
    [](const auto &one) { return std::string(one.param.sCase); });

TEST(XmlDefinitionRecords, OnlyAnXmlMsgDescribesTheDocument) {
  XmlConfig config;
  config.file("msg/M.xml", "<xml><Msg psMsgName=\"M\">" + chain({field("A")}, "ptHead") +
                               "<XmlField __ID=\"pInfo\"/></Msg></xml>");
  EXPECT_NE(config.start(), 0);
  EXPECT_TRUE(told("expected XmlMsg as pInfo of Msg, found XmlField.")) << told();
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

TEST(XmlDefinitionRecords, WhatIsWrittenToXmlIsTheSameDefinition) {
  XmlConfig config("nWriteBack=\"1\"");
  config.message(
      "M", "psNamespace=\"u\" nDeclaration=\"0\" psEmptyTag=\"pair\"",
      {field("A", "psKind=\"attribute\" psConst=\"&lt;1\""),
       group("G", "psNamespace=\"v\" nKeepEmpty=\"1\"", {field("B", "psDefault=\"d\" nMaxLen=\"3\"")})});
  ASSERT_EQ(config.start(), 0) << told();
  const std::string s = "<M xmlns=\"u\" A=\"&lt;1\"><G xmlns=\"v\"><B>b</B></G></M>";
  EXPECT_EQ(generate(parse("M", s)), s) << told();

  XmlConfig copy;
  copy.message("M", "", {field("F")});
  useChainOf("xml");
  nGRet = 0;
  ASSERT_EQ(sttGenXmlFile(copy.arg("msg/M.xml"), cvtGetMsg(test::cs("M")), test::cs("xml"), test::cs("Msg"),
                          reinterpret_cast<void *>(&writeMsg)),
            0)
      << told();
  ASSERT_EQ(copy.start(), 0) << told();
  EXPECT_EQ(generate(parse("M", s)), s) << told();
}

TEST(XmlDefinitionLimits, AsDeepAsTheLimitIsFine) {
  XmlConfig config;
  config.message("M", "nMaxDepth=\"5\"", {nested(3)});
  EXPECT_EQ(config.start(), 0) << told();
}

TEST(XmlDefinitionLimits, AsManyAttributesAsTheLimitAllowsComeBack) {
  XmlConfig config;
  config.message("M", "psNamespace=\"u\" psPrefixes=\"a=v\" nMaxAttributes=\"3\"",
                 {field("A", "psKind=\"attribute\""),
                  group("G", "psNamespace=\"w\"",
                        {field("B", "psKind=\"attribute\""), field("C", "psKind=\"attribute\"")})});
  ASSERT_EQ(config.start(), 0) << told();
  const Document document = create("M");
  for (const char *const name : {"A", "B", "C"}) set(document, name, "1");
  const std::string bytes = generate(document);
  ASSERT_NE(parse("M", bytes), nullptr) << bytes << told();
}

}  // namespace

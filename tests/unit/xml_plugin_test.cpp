#include <gtest/gtest.h>

#include <regex>

#include "xml_config.h"

namespace {

using namespace test::xmldoc;

std::string repeated(const std::string &s, size_t n) {
  std::string all;
  for (size_t i = 0; i < n; ++i) all += s;
  return all;
}

// A payment-like document: attributes, text beside an attribute, groups in groups, loops in loops.
void order(XmlConfig &config, const std::string &sAttributes) {
  config.message("Order", "psRoot=\"order\" " + sAttributes,
                 {field("Id", "psName=\"id\" psKind=\"attribute\" nMandatory=\"1\""),
                  group("Buyer", "psName=\"buyer\"",
                        {field("Name", "psName=\"name\""),
                         group("Address", "psName=\"addr\"",
                               {field("City", "psName=\"city\""), field("Zip", "psName=\"zip\"")})}),
                  group("Total", "psName=\"amt\"",
                        {field("Ccy", "psKind=\"attribute\""), field("Amount", "psKind=\"text\"")}),
                  loop("Items", "psName=\"item\"", "psWrapper=\"items\"",
                       {field("Sku", "psName=\"sku\" psKind=\"attribute\""), field("Qty", "psName=\"qty\""),
                        loop("Notes", "psName=\"note\"", "", {})})});
}

const char *const kOrder =
    "<order id=\"7\"><buyer><name>Smith &amp; Sons</name><addr><city>Lyon</city></addr></buyer>"
    "<amt Ccy=\"USD\">10.00</amt>"
    "<items><item sku=\"A\"><qty>1</qty><note>x</note><note>y</note></item><item "
    "sku=\"B\"><qty>2</qty></item></items>"
    "</order>";

TEST(XmlPlugin, TheLoaderFindsThePluginsOwnInitialiserNotTheLibrarysFunctionOfThatName) {
  XmlConfig config;
  config.message("Order", "", {field("Id")});
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_NE(cvtGetMsg(test::cs("Order")), nullptr);
  // The library's own function still answers under that name here.
  void *ptDoc = xmlInit();
  ASSERT_NE(ptDoc, nullptr);
  EXPECT_EQ(xmlDocFree(ptDoc), 0);
}

TEST(XmlPlugin, WhatItParsesItGeneratesWithTheSameBytes) {
  XmlConfig config;
  order(config, "nDeclaration=\"0\"");
  ASSERT_EQ(config.start(), 0) << told();
  const Document document = parse("Order", kOrder);
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(document->nNowLen, document->nLen);
  EXPECT_EQ(get(document, "Id"), "7");
  EXPECT_EQ(get(document, "Name"), "Smith & Sons");
  EXPECT_EQ(get(document, "Ccy"), "USD");
  EXPECT_EQ(get(document, "Amount"), "10.00");
  EXPECT_EQ(get(document, "Zip"), "");
  EXPECT_EQ(cvtGetLoopTime(document.get(), test::cs("Items")), 2);
  EXPECT_EQ(cvtSetLoopTime(document.get(), test::cs("Items"), 1), 0);
  EXPECT_EQ(get(document, "Items.Sku"), "B");
  EXPECT_EQ(generate(document), kOrder);
}

TEST(XmlPlugin, AMessageIsFilledByNameAndGenerated) {
  XmlConfig config;
  order(config, "");
  ASSERT_EQ(config.start(), 0) << told();
  const Document document = create("Order");
  set(document, "Id", "a<b>\"c\"&'d'");
  set(document, "Name", "a<b>\"c\"&'d'");
  cvtAddLoopTime(document.get(), test::cs("Items"));
  set(document, "Items.Sku", "S");
  EXPECT_EQ(
      generate(document),
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
      "<order id=\"a&lt;b&gt;&quot;c&quot;&amp;'d'\"><buyer><name>a&lt;b&gt;\"c\"&amp;'d'</name></buyer>"
      "<items><item sku=\"S\"/></items></order>");
}

TEST(XmlPlugin, WithoutAnyRecordANodeIsAnElementOfItsOwnName) {
  XmlConfig config;
  config.file(
      "msg/Bare.xml",
      "<xml><Msg psMsgName=\"Bare\"><Message __ID=\"ptHead\" psNodeName=\"A\"><StructAttr "
      "__ID=\"ptStructAttr\"/></Message><Message __ID=\"ptNextNode\" psNodeName=\"L\"><StructAttr "
      "__ID=\"ptStructAttr\" nType=\"1\"><LoopType __ID=\"pInfo\"/><Message __ID=\"ptChildNode\" "
      "psNodeName=\"B\"><StructAttr __ID=\"ptStructAttr\"/></Message></StructAttr></Message></Msg></xml>");
  ASSERT_EQ(config.start(), 0) << told();
  const std::string s = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Bare><A>1</A><L><B>2</B></L><L/></Bare>";
  const Document document = parse("Bare", s);
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(generate(document), s);
}

TEST(XmlPlugin, ADefinitionTakesNoLongerValueListThanItHasNodes) {
  XmlConfig config;
  config.message("Order", "", {field("A"), field("B")});
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_EQ(cvtGetMsg(test::cs("Order"))->nValueNum, 2);
}

// --- Loops ---

TEST(XmlPlugin, ALoopMayBeAbsentOrHaveOneOrManyRepetitions) {
  XmlConfig config;
  config.message("M", "nDeclaration=\"0\"",
                 {loop("L", "", "", {field("A"), loop("N", "", "", {field("B")})})});
  ASSERT_EQ(config.start(), 0) << told();
  const std::string sOne = "<L><A>1</A><N><B>x</B></N><N/></L>";
  for (const std::string &s : {std::string("<M/>"), "<M>" + sOne + "</M>", "<M><L/>" + sOne + "<L/></M>",
                               "<M>" + repeated(sOne, 900) + "</M>"}) {
    const Document document = parse("M", s);
    ASSERT_NE(document, nullptr) << told();
    EXPECT_EQ(generate(document), s);
  }
}

TEST(XmlPlugin, ALoopLongerThanTheListsAllowIsRefusedWithTheLimitsName) {
  XmlConfig config;
  config.message("M", "", {loop("L", "", "", {field("A")})});
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_NE(parse("M", "<M>" + repeated("<L/>", 999) + "</M>"), nullptr) << told();
  EXPECT_EQ(parse("M", "<M>" + repeated("<L/>", 1000) + "</M>"), nullptr);
  EXPECT_TRUE(told("Field[L[999]] Offset[3999]: expected at most 999 repetitions, found one more."))
      << told();
}

TEST(XmlPlugin, LeastAndLargestNumbersOfRepetitionsHoldInBothDirections) {
  XmlConfig config;
  config.message("M", "nDeclaration=\"0\"", {loop("L", "", "nMin=\"1\" nMax=\"2\"", {field("A")})});
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_EQ(parse("M", "<M/>"), nullptr);
  EXPECT_TRUE(told("expected <L> at least 1 times, found 0.")) << told();
  EXPECT_EQ(parse("M", "<M><L/><L/><L/></M>"), nullptr);
  EXPECT_TRUE(told("Field[L[2]] Offset[11]: expected <L> at most 2 times, found one more.")) << told();
  test::clearLog();
  EXPECT_EQ(generate(create("M")), "failed");
  EXPECT_TRUE(told("Field[L] Offset[3]: expected <L> at least 1 times, found 0.")) << told();
  EXPECT_EQ(generate(parse("M", "<M><L/></M>")), "<M><L/></M>");
}

TEST(XmlPlugin, AWrapperStandsAroundTheRepetitionsAndIsKeptOnRequest) {
  XmlConfig config;
  config.message("M", "nDeclaration=\"0\"",
                 {loop("L", "psName=\"l\"", "psWrapper=\"ls\"", {}),
                  loop("K", "psName=\"k\"", "psWrapper=\"ks\" nKeepEmpty=\"1\"", {})});
  ASSERT_EQ(config.start(), 0) << told();
  const Document document = parse("M", "<M><ls><l>1</l><l/><l>3</l></ls><ks/></M>");
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(generate(document), "<M><ls><l>1</l><l/><l>3</l></ls><ks/></M>");
  EXPECT_EQ(generate(create("M")), "<M><ks/></M>");
  EXPECT_EQ(parse("M", "<M><l>1</l></M>"), nullptr);
  EXPECT_TRUE(told("expected ls, ks in <M>, found element l.")) << told();
}

TEST(XmlPlugin, RepetitionsMayStandApart) {
  XmlConfig config;
  config.message("M", "nDeclaration=\"0\"", {loop("A", "", "", {}), loop("B", "", "", {})});
  ASSERT_EQ(config.start(), 0) << told();
  const Document document = parse("M", "<M><B>1</B><A>2</A><B>3</B></M>");
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(generate(document), "<M><A>2</A><B>1</B><B>3</B></M>");
}

TEST(XmlPlugin, ACountFieldIsWrittenCheckedAndFilledIn) {
  XmlConfig config;
  config.message(
      "M", "nDeclaration=\"0\"",
      {group("Lines", "nKeepEmpty=\"1\"",
             {field("Count", "psKind=\"attribute\" psName=\"count\""), loop("Line", "", "", {}, "Count")})});
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_EQ(generate(create("M")), "<M><Lines count=\"0\"/></M>");
  EXPECT_EQ(generate(parse("M", "<M><Lines count=\"0\"/></M>")), "<M><Lines count=\"0\"/></M>");
  const Document document = parse("M", "<M><Lines><Line>a</Line><Line>b</Line></Lines></M>");
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(get(document, "Count"), "2");
  set(document, "Count", "77");
  EXPECT_EQ(generate(document), "<M><Lines count=\"2\"><Line>a</Line><Line>b</Line></Lines></M>");
  EXPECT_EQ(parse("M", "<M><Lines count=\"3\"><Line>a</Line></Lines></M>"), nullptr);
  EXPECT_TRUE(
      told("Field[Lines.Count] Offset[42]: expected 1, the number of repetitions of Line, found \"3\". "
           "Correct the "
           "count."))
      << told();
}

// An order's lines, numbered by an attribute, an element in a group and the text of an element; in each, notes.
void numbered(XmlConfig &config, const std::string &sMore = "") {
  const std::string sPosition = "nPosition=\"1\" " + sMore;
  config.message(
      "M", "nDeclaration=\"0\"",
      {loop(
          "Line", "", "psWrapper=\"Lines\"",
          {field("No", "psKind=\"attribute\" " + sPosition), field("Sku"),
           group("Item", "", {field("Pos", sPosition), field("Name")}),
           loop("Note", "", "",
                {field("Lang", "psKind=\"attribute\""), field("Number", "psKind=\"text\" " + sPosition)})})});
}

TEST(XmlPlugin, APositionNumbersTheRepetitionsOfTheInnermostLoop) {
  XmlConfig config;
  numbered(config);
  ASSERT_EQ(config.start(), 0) << told();
  const std::string s =
      "<M><Lines><Line No=\"1\"><Item><Pos>1</Pos></Item><Note>1</Note><Note Lang=\"fr\">2</Note></Line>"
      "<Line No=\"2\"><Sku>x</Sku><Item><Pos>2</Pos><Name>y</Name></Item><Note>1</Note></Line></Lines></M>";
  EXPECT_EQ(generate(parse("M", s)), s) << told();
  EXPECT_EQ(generate(parse("M", s + "<?not plain?>")), s) << told();
  const Document bare =
      parse("M", "<M><Lines><Line/><Line><Item><Name>y</Name></Item><Note/></Line></Lines></M>");
  ASSERT_TRUE(at(bare, "Line", 1));
  EXPECT_EQ(get(bare, "Line.Name"), "y");
  EXPECT_EQ(get(bare, "Line.No"), "");
  EXPECT_EQ(generate(bare),
            "<M><Lines><Line No=\"1\"/><Line No=\"2\"><Item><Pos>2</Pos><Name>y</Name></Item><Note>1</Note>"
            "</Line></Lines></M>")
      << told();
}

TEST(XmlPlugin, AWrongPositionIsRefused) {
  XmlConfig config;
  numbered(config);
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_EQ(parse("M", "<M><Lines><Line No=\"1\"/><Line No=\"3\"/></Lines></M>"), nullptr);
  EXPECT_TRUE(
      told("Field[Line[1].No] Offset[24]: expected 2, the number of its repetition, found \"3\". "
           "Number the repetitions from 1, or leave the value out."))
      << told();
  EXPECT_EQ(parse("M", "<M><Lines><Line><Item><Pos>+1</Pos></Item></Line></Lines></M>"), nullptr);
  EXPECT_TRUE(
      told("Field[Line[0].Item.Pos] Offset[29]: expected 1, the number of its repetition, found \"+1\"."))
      << told();
  EXPECT_EQ(parse("M", "<M><Lines><Line/><Line><Note>2</Note></Line></Lines></M>"), nullptr);
  EXPECT_TRUE(
      told("Field[Line[1].Note[0].Number] Offset[30]: expected 1, the number of its repetition, found"))
      << told();
}

TEST(XmlPlugin, APositionIsWrittenWhateverItsValueSays) {
  XmlConfig config;
  numbered(config, "nMandatory=\"1\"");
  ASSERT_EQ(config.start(), 0) << told();
  const Document document = create("M");
  for (const char *const psValue : {"77", "x", ""}) {
    addTime(document, "Line");
    set(document, "Line.No", psValue);
  }
  EXPECT_EQ(generate(document), "<M><Lines><Line No=\"1\"/><Line No=\"2\"/><Line No=\"3\"/></Lines></M>")
      << told();
  EXPECT_EQ(parse("M", "<M><Lines><Line/></Lines></M>"), nullptr);
  EXPECT_TRUE(told("expected attribute No of <Line>, found none. It is mandatory.")) << told();
}

// --- Namespaces ---

void payment(XmlConfig &config, const std::string &sAttributes = "") {
  config.message("Pay",
                 "psRoot=\"Message\" psNamespace=\"urn:tch\" psPrefixes=\"h=urn:head ct=urn:pacs\" "
                 "nDeclaration=\"0\" " +
                     sAttributes,
                 {group("Hdr", "psName=\"AppHdr\"", {field("From", "psName=\"h:Fr\"")}),
                  group("Doc", "psName=\"ct:Doc\"",
                        {field("Kind", "psKind=\"attribute\" psName=\"h:kind\""),
                         field("Lang", "psKind=\"attribute\" psName=\"xml:lang\""),
                         field("MsgId", "psName=\"ct:MsgId\"")})});
}

TEST(XmlPlugin, NamespacesAreDeclaredOnTheRootElement) {
  XmlConfig config;
  payment(config);
  ASSERT_EQ(config.start(), 0) << told();
  const std::string s =
      "<Message xmlns=\"urn:tch\" xmlns:h=\"urn:head\" xmlns:ct=\"urn:pacs\"><AppHdr><h:Fr>A</h:Fr></AppHdr>"
      "<ct:Doc h:kind=\"k\" xml:lang=\"en\"><ct:MsgId>1</ct:MsgId></ct:Doc></Message>";
  const Document document = parse("Pay", s);
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(generate(document), s);
}

TEST(XmlPlugin, NamesMatchByNamespaceNotByPrefix) {
  XmlConfig config;
  payment(config);
  ASSERT_EQ(config.start(), 0) << told();
  const Document document =
      parse("Pay",
            "<a:Message xmlns:a='urn:tch'><a:AppHdr><Fr xmlns='urn:head'>A</Fr></a:AppHdr>"
            "<Doc xmlns='urn:pacs' xmlns:ct='urn:head' ct:kind='k'><MsgId>1</MsgId></Doc></a:Message>");
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(get(document, "From"), "A");
  EXPECT_EQ(get(document, "Kind"), "k");
  EXPECT_EQ(get(document, "MsgId"), "1");
}

TEST(XmlPlugin, TheRightNameInTheWrongNamespaceIsUnknown) {
  XmlConfig config;
  payment(config);
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_EQ(parse("Pay", "<Message xmlns='urn:tch'><AppHdr><Fr>A</Fr></AppHdr></Message>"), nullptr);
  EXPECT_TRUE(
      told("Field[Hdr] Offset[33]: expected h:Fr in <AppHdr>, found element Fr. Write it in the namespace "
           "\"urn:head\";"))
      << told();
  EXPECT_EQ(parse("Pay", "<Message xmlns='urn:tch'><x:AppHdr xmlns:x='urn:x'/></Message>"), nullptr);
  EXPECT_TRUE(told("found element AppHdr of namespace \"urn:x\". Write it in the namespace \"urn:tch\";"))
      << told();
  EXPECT_EQ(parse("Pay", "<Message/>"), nullptr);
  EXPECT_TRUE(
      told("expected the root element Message of namespace \"urn:tch\", found Message of no namespace."))
      << told();
  EXPECT_EQ(parse("Pay", "<Message xmlns='urn:tch'><p:AppHdr/></Message>"), nullptr);
  EXPECT_TRUE(told("expected well-formed XML, found unbound prefix in line 1, column 26")) << told();
}

TEST(XmlPlugin, AGroupMayOpenADefaultNamespaceOfItsOwn) {
  XmlConfig config;
  config.message("Env", "psNamespace=\"urn:env\" nDeclaration=\"0\"",
                 {field("Id"), group("Doc", "psName=\"Document\" psNamespace=\"urn:doc\"",
                                     {field("A"), loop("L", "psNamespace=\"\"", "", {field("B")})})});
  ASSERT_EQ(config.start(), 0) << told();
  const std::string s =
      "<Env xmlns=\"urn:env\"><Id>1</Id><Document xmlns=\"urn:doc\"><A>2</A><L "
      "xmlns=\"\"><B>3</B></L></Document></Env>";
  const Document document = parse("Env", s);
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(generate(document), s);
  EXPECT_EQ(parse("Env", "<Env xmlns=\"urn:env\"><Document><A>2</A></Document></Env>"), nullptr);
}

// --- Values ---

TEST(XmlPlugin, CommentsCdataReferencesAndInstructionsAreRead) {
  XmlConfig config;
  config.message("M", "", {field("A"), field("B", "psKind=\"attribute\"")});
  ASSERT_EQ(config.start(), 0) << told();
  const Document document =
      parse("M",
            "<?xml version='1.0'?><!-- c --><?pi x?>\n<M B='&lt;&#65;&#x4e2d;&apos;'><!-- c -->"
            "<A>a<!-- c -->b<![CDATA[<&>]]]]><![CDATA[>]]>&amp;<?pi?>&quot;</A>\n</M>\n<!-- c -->\n");
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(get(document, "A"), "ab<&>]]>&\"");
  EXPECT_EQ(get(document, "B"), "<A\xE4\xB8\xAD'");
}

TEST(XmlPlugin, WhiteSpaceIsPreservedTrimmedOrCollapsed) {
  XmlConfig config;
  config.message("M", "psSpace=\"trim\"",
                 {field("P", "psSpace=\"preserve\""), field("T"), field("C", "psSpace=\"collapse\""),
                  field("A", "psKind=\"attribute\" psSpace=\"collapse\"")});
  ASSERT_EQ(config.start(), 0) << told();
  const Document document =
      parse("M", "<M A='  a  b '>\n <P> a  b </P>\n <T> \t a  b\r\n </T><C>\n a \n b </C></M>");
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(get(document, "P"), " a  b ");
  EXPECT_EQ(get(document, "T"), "a  b");
  EXPECT_EQ(get(document, "C"), "a b");
  EXPECT_EQ(get(document, "A"), "a b");
}

TEST(XmlPlugin, LineEndsAndTabsSurviveTheRoundTrip) {
  XmlConfig config;
  config.message("M", "nDeclaration=\"0\"", {field("T"), field("A", "psKind=\"attribute\"")});
  ASSERT_EQ(config.start(), 0) << told();
  const std::string sValue = "a\r\nb\tc\nd\re";
  const Document document = create("M");
  set(document, "T", sValue);
  set(document, "A", sValue);
  const std::string s = generate(document);
  EXPECT_EQ(s, "<M A=\"a&#13;&#10;b&#9;c&#10;d&#13;e\"><T>a&#13;\nb\tc\nd&#13;e</T></M>");
  const Document again = parse("M", s);
  ASSERT_NE(again, nullptr) << told();
  EXPECT_EQ(get(again, "T"), sValue);
  EXPECT_EQ(get(again, "A"), sValue);
}

TEST(XmlPlugin, WhatXmlCannotCarryIsRefusedWithFieldAndByte) {
  XmlConfig config;
  order(config, "nDeclaration=\"0\"");
  ASSERT_EQ(config.start(), 0) << told();
  for (const auto &[sValue, sFound] :
       std::vector<std::pair<std::string, std::string>>{{"ab\x01", "\"\\x01\" in byte 2"},
                                                        {std::string("a\0b", 3), "\"\\x00\" in byte 1"},
                                                        {"a\xC3(", "\"\\xC3\" in byte 1"},
                                                        {"\xEF\xBF\xBF", "\"\\xEF\\xBF\\xBF\" in byte 0"},
                                                        {"\xED\xA0\x80", "\"\\xED\" in byte 0"},
                                                        {"ok\xE4\xB8", "\"\\xE4\" in byte 2"}}) {
    const Document document = create("Order");
    set(document, "Id", "1");
    set(document, "City", sValue);
    test::clearLog();
    EXPECT_EQ(generate(document), "failed");
    EXPECT_TRUE(told("Msg[Order] Field[Buyer.Address.City] Offset[")) << told();
    EXPECT_TRUE(
        told("expected characters that XML 1.0 can carry, in UTF-8, found " + sFound + " of the value."))
        << told();
  }
}

TEST(XmlPlugin, AnEmptyOptionalFieldIsLeftOutUnlessItIsKept) {
  XmlConfig config;
  config.message(
      "M", "nDeclaration=\"0\"",
      {field("A"), field("B", "nKeepEmpty=\"1\""), field("C", "psKind=\"attribute\""),
       field("D", "psKind=\"attribute\" nKeepEmpty=\"1\""), group("E", "", {field("F")}),
       group("G", "nKeepEmpty=\"1\"", {field("H")}), group("I", "nMandatory=\"1\"", {field("J")})});
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_EQ(generate(create("M")), "<M D=\"\"><B/><G/><I/></M>");
  const Document document = parse("M", "<M C=''><A/><E/><I/></M>");
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(generate(document), "<M D=\"\"><B/><G/><I/></M>");
}

TEST(XmlPlugin, WhatWasThereButEmptyIsWrittenSoWhenTheFieldKeepsWhatWasGiven) {
  XmlConfig config;
  config.message("M", "nDeclaration=\"0\"",
                 {field("A", "nKeepEmpty=\"2\" nMandatory=\"1\""), field("B", "nKeepEmpty=\"2\""),
                  field("C", "psKind=\"attribute\" nKeepEmpty=\"2\""),
                  group("E", "", {field("F", "nKeepEmpty=\"2\"")})});
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_EQ(generate(create("M")), "failed");
  EXPECT_TRUE(told("Field[A] Offset[3]: expected a value, found none.")) << told();
  for (const char *same : {"<M C=\"\"><A/><B/><E><F/></E></M>", "<M><A/><B/></M>", "<M><A/></M>"}) {
    const Document document = parse("M", same);
    ASSERT_NE(document, nullptr) << told();
    EXPECT_EQ(generate(document), same);
  }
}

// <E n="NUMBER">text</E>
FormatNode numbered(const std::string &number, const std::string &suffix = "") {
  const std::string node = number + suffix;
  return group("E" + node, "psName=\"E\"",
               {field("Number" + node, "psKind=\"attribute\" psName=\"n\" psConst=\"" + number + "\""),
                field("Value" + node, "psKind=\"text\" nKeepEmpty=\"2\"")});
}

class XmlAlternatives : public testing::Test {
 protected:
  void start(const std::string &document) {
    config.message("M", "nDeclaration=\"0\" " + document,
                   {numbered("2"), numbered("3"), group("G", "", {numbered("2", "InG")}),
                    loop("L", "psName=\"E\"", "",
                         {field("Kind", "psKind=\"attribute\" psName=\"n\" psConst=\"7\""),
                          field("Text", "psKind=\"text\"")}),
                    numbered("32")});
    ASSERT_EQ(config.start(), 0) << told();
  }

  XmlConfig config;
};

TEST_F(XmlAlternatives, ElementsOfOneNameAreToldApartByAConstantAttribute) {
  start("");
  const std::string all =
      "<M><E n=\"2\">a</E><E n=\"3\">b</E><G><E n=\"2\">c</E></G><E n=\"7\">d</E><E n=\"7\">e</E>"
      "<E n=\"32\"></E></M>";
  const Document document = parse("M", all);
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(get(document, "Value2"), "a");
  EXPECT_EQ(get(document, "Value3"), "b");
  EXPECT_EQ(get(document, "Value2InG"), "c");
  EXPECT_EQ(generate(document), std::regex_replace(all, std::regex("></E></M>"), "/></M>"));
}

TEST_F(XmlAlternatives, AreToldApartByTheValueThatTheAttributesSpaceLeaves) {
  const auto valued = [](const std::string &node, const std::string &space, const std::string &constant) {
    return group(node, "psName=\"E\"",
                 {field("No" + node, "psKind=\"attribute\" psName=\"n\" psSpace=\"" + space +
                                         "\" psConst=\"" + constant + "\""),
                  field(node + "Value", "psName=\"v\"")});
  };
  config.message("M", "",
                 {valued("Kept", "preserve", "a  b"), valued("Trimmed", "trim", "a b c"),
                  valued("Collapsed", "collapse", "a b")});
  ASSERT_EQ(config.start(), 0) << told();
  const auto fieldOf = [](const std::string &value) {
    const Document document = parse("M", "<M><E n='" + value + "'><v>x</v></E></M>");
    if (document == nullptr) return std::string();
    for (const char *const node : {"Kept", "Trimmed", "Collapsed"}) {
      if (get(document, std::string(node) + "Value") == "x") return std::string(node);
    }
    return std::string("lost");
  };
  EXPECT_EQ(fieldOf("a  b"), "Kept");
  EXPECT_EQ(fieldOf("a b"), "Collapsed");
  EXPECT_EQ(fieldOf(" a  b"), "Collapsed");
  EXPECT_EQ(fieldOf("a&#9;b"), "Collapsed");
  EXPECT_EQ(fieldOf(" a b c "), "Trimmed");
  test::clearLog();
  EXPECT_EQ(fieldOf(" a  b c "), "");
  EXPECT_TRUE(
      told("expected E n=\"a  b\", E n=\"a b c\", E n=\"a b\" in <M>, found element E n=\" a  b c \"."))
      << told();
}

TEST_F(XmlAlternatives, AreNotLostInADefinitionThatTrimsAndSkips) {
  start("psSpace=\"trim\" psUnknown=\"skip\"");
  const Document document = parse("M", "<M><E n=' 2 '>a</E><E n='3 '>b</E><E n=' 4 '>c</E></M>");
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(get(document, "Value2"), "a");
  EXPECT_EQ(get(document, "Value3"), "b");
}

TEST_F(XmlAlternatives, MayComeInAnyOrderAndBeLeftOut) {
  start("");
  const Document document = parse("M", "<M><E n=\"32\">x</E><E n=\"7\">d</E><E n=\"2\">a</E></M>");
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(generate(document), "<M><E n=\"2\">a</E><E n=\"7\">d</E><E n=\"32\">x</E></M>");
}

TEST_F(XmlAlternatives, AnotherValueIsRefusedWithThoseThatThereAre) {
  start("");
  EXPECT_EQ(parse("M", "<M><E n=\"2\">a</E><E n=\"4\">b</E></M>"), nullptr);
  EXPECT_TRUE(
      told("expected E n=\"2\", E n=\"3\", G, E n=\"7\", E n=\"32\" in <M>, found element E n=\"4\". "
           "psUnknown=\"skip\" in XmlMsg passes over it."))
      << told();
  EXPECT_EQ(parse("M", "<M><E>a</E></M>"), nullptr);
  EXPECT_TRUE(told("found element E without n.")) << told();
  EXPECT_EQ(parse("M", "<M><E n=\"2\">a</E><E n=\"2\">b</E></M>"), nullptr);
  EXPECT_TRUE(told("expected <E n=\"2\"> once, found a second one.")) << told();
}

TEST_F(XmlAlternatives, AnotherValueIsPassedOverWhereUnknownElementsAre) {
  start("psUnknown=\"skip\"");
  const Document document = parse("M", "<M><E n=\"4\"><x/></E><E>z</E><E n=\"3\">b</E></M>");
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(generate(document), "<M><E n=\"3\">b</E></M>");
}

TEST(XmlPlugin, AnElementWithoutContentMayBeWrittenAsAPairOfTags) {
  XmlConfig config;
  config.message("M", "nDeclaration=\"0\" psEmptyTag=\"pair\"", {field("A", "nKeepEmpty=\"1\"")});
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_EQ(generate(create("M")), "<M><A></A></M>");
}

TEST(XmlPlugin, MandatoryFieldsAreReportedInBothDirections) {
  XmlConfig config;
  config.message("M", "nDeclaration=\"0\"",
                 {field("A", "psKind=\"attribute\" nMandatory=\"1\""), field("B", "nMandatory=\"1\""),
                  group("G", "nMandatory=\"1\"", {field("T", "psKind=\"text\" nMandatory=\"1\"")}),
                  group("O", "", {field("P", "nMandatory=\"1\""), field("Q")}),
                  field("E", "nMandatory=\"1\" nKeepEmpty=\"1\"")});
  ASSERT_EQ(config.start(), 0) << told();
  const std::string sGood = "<M A=\"1\"><B>2</B><G>3</G><E/></M>";
  const Document good = parse("M", sGood);
  ASSERT_NE(good, nullptr) << told();
  EXPECT_EQ(generate(good), sGood);
  for (const auto &[sBytes, sLine] : std::vector<std::pair<std::string, std::string>>{
           {"<M><B>2</B><G>3</G><E/></M>", "Field[A] Offset[0]: expected attribute A of <M>, found none."},
           {"<M A=''><B>2</B><G>3</G><E/></M>", "Field[A] Offset[0]: expected a value, found none."},
           {"<M A='1'><G>3</G><E/></M>", "Field[B] Offset[21]: expected <B> in <M>, found its end."},
           {"<M A='1'><B/><G>3</G><E/></M>", "Field[B] Offset[13]: expected a value, found none."},
           {"<M A='1'><B>2</B><E/></M>", "Field[G] Offset[21]: expected <G> in <M>, found its end."},
           {"<M A='1'><B>2</B><G/><E/></M>", "Field[G.T] Offset[21]: expected a value, found none."},
           {"<M A='1'><B>2</B><G>3</G><O><Q>4</Q></O><E/></M>",
            "Field[O.P] Offset[36]: expected <P> in <O>, found its end."},
           {"<M A='1'><B>2</B><G>3</G></M>", "Field[E] Offset[25]: expected <E> in <M>, found its end."}}) {
    test::clearLog();
    EXPECT_EQ(parse("M", sBytes), nullptr) << sBytes;
    EXPECT_TRUE(told("Msg[M] " + sLine)) << sBytes << "\n" << told();
  }
  for (const char *const psName : {"A", "B", "T"}) {
    const Document document = parse("M", sGood);
    set(document, psName, "");
    test::clearLog();
    EXPECT_EQ(generate(document), "failed");
    EXPECT_TRUE(told(std::string(psName) + "] Offset[")) << told();
    EXPECT_TRUE(told("expected a value, found none. The field is mandatory")) << told();
  }
}

TEST(XmlPlugin, AMandatoryValueIsNotWrittenThatIsReadAsNone) {
  XmlConfig config;
  config.message(
      "M", "nDeclaration=\"0\"",
      {field("D", "psSpace=\"trim\" nMandatory=\"1\""), field("O", "psSpace=\"trim\""),
       field("P", "nMandatory=\"1\""), field("E", "psSpace=\"collapse\" nMandatory=\"1\" nKeepEmpty=\"1\""),
       group("G", "", {field("T", "psKind=\"text\" nMandatory=\"1\""), field("A")})});
  ASSERT_EQ(config.start(), 0) << told();
  const std::string sGood = "<M><D>1</D><O>  </O><P>  </P><E>  </E><G>3<A>4</A></G></M>";
  EXPECT_EQ(generate(parse("M", sGood)), "<M><D>1</D><P>  </P><E/><G>3<A>4</A></G></M>");
  for (const char *const psName : {"D", "T"}) {
    const Document document = parse("M", sGood);
    ASSERT_NE(document, nullptr) << told();
    set(document, psName, "  ");
    test::clearLog();
    EXPECT_EQ(generate(document), "failed") << psName;
    EXPECT_TRUE(told(std::string(psName) + "] Offset[")) << told();
    EXPECT_TRUE(told("expected a value, found none.")) << told();
  }
}

TEST(XmlPlugin, DefaultsAndConstantsAreWritten) {
  XmlConfig config;
  config.message("M", "nDeclaration=\"0\"",
                 {field("Ver", "psKind=\"attribute\" psConst=\"1.0\""), field("Ccy", "psDefault=\"EUR\""),
                  group("Opt", "", {field("K", "psConst=\"k&lt;\""), field("V")})});
  ASSERT_EQ(config.start(), 0) << told();
  const Document document = create("M");
  EXPECT_EQ(generate(document), "<M Ver=\"1.0\"><Ccy>EUR</Ccy></M>");
  set(document, "Ver", "1.0");
  set(document, "Ccy", "USD");
  set(document, "V", "v");
  EXPECT_EQ(generate(document), "<M Ver=\"1.0\"><Ccy>USD</Ccy><Opt><K>k&lt;</K><V>v</V></Opt></M>");
  set(document, "Ver", "9");
  EXPECT_EQ(generate(document), "failed");
  EXPECT_TRUE(
      told("Field[Ver] Offset[2]: expected \"1.0\", found \"9\". Leave the value empty or equal to psConst."))
      << told();
  const Document read = parse("M", "<M Ver=\"1.0\"><Opt/></M>");
  ASSERT_NE(read, nullptr) << told();
  EXPECT_EQ(get(read, "Ccy"), "");
  EXPECT_EQ(parse("M", "<M Ver=\"2.0\"/>"), nullptr);
  EXPECT_TRUE(told("Field[Ver] Offset[0]: expected \"1.0\", found \"2.0\". The field is a constant."))
      << told();
  const std::string sAlone = "<M Ver=\"1.0\"><Ccy>EUR</Ccy><Opt><K>k&lt;</K></Opt></M>";
  EXPECT_EQ(generate(parse("M", sAlone)), sAlone);
}

TEST(XmlPlugin, ADocumentMayStandBehindAHeader) {
  XmlConfig config;
  config.message("M", "nDeclaration=\"0\" nIndent=\"1\"", {field("A")});
  ASSERT_EQ(config.start(), 0) << told();
  Msg *ptDefinition = cvtGetMsg(test::cs("M"));
  const Document document = create("M");
  std::string s = "HEAD<M><A>1</A></M>";
  int nNow = 4;
  ASSERT_EQ(ptDefinition->fParse(nullptr, &document->tValueListInfo, ptDefinition, s.data(), &nNow,
                                 static_cast<int>(s.size())),
            0)
      << told();
  EXPECT_EQ(nNow, static_cast<int>(s.size()));
  std::string sOut(100, '.');
  nNow = 2;
  ASSERT_EQ(ptDefinition->fGen(nullptr, &document->tValueListInfo, ptDefinition, sOut.data(), &nNow, 100), 0)
      << told();
  EXPECT_EQ(sOut.substr(0, static_cast<size_t>(nNow)), "..<M>\n <A>1</A>\n</M>");
  s = "HEAD<M><B/></M>";
  nNow = 4;
  const Document other = create("M");
  EXPECT_EQ(ptDefinition->fParse(nullptr, &other->tValueListInfo, ptDefinition, s.data(), &nNow,
                                 static_cast<int>(s.size())),
            -1);
  EXPECT_EQ(nNow, 4);
  EXPECT_TRUE(told("Field[] Offset[7]: expected A in <M>, found element B.")) << told();
}

TEST(XmlPlugin, TheLongestTextIsCountedInCharacters) {
  XmlConfig config;
  config.message("M", "nDeclaration=\"0\" psSpace=\"trim\"", {field("A", "nMaxLen=\"3\"")});
  ASSERT_EQ(config.start(), 0) << told();
  const Document document = parse("M", "<M><A>  中文字  </A></M>");
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(generate(document), "<M><A>中文字</A></M>");
  EXPECT_EQ(parse("M", "<M><A>abcd</A></M>"), nullptr);
  EXPECT_TRUE(told("Field[A] Offset[10]: expected at most 3 characters, found 4, \"abcd\".")) << told();
  set(document, "A", "中文字x");
  test::clearLog();
  EXPECT_EQ(generate(document), "failed");
  EXPECT_TRUE(told("Field[A] Offset[3]: expected at most 3 characters, found 4")) << told();
}

TEST(XmlPlugin, UnknownContentIsRefusedWithThePlaceAndTheNamesExpectedThere) {
  XmlConfig config;
  order(config, "");
  ASSERT_EQ(config.start(), 0) << told();
  for (const auto &[sBytes, sLine] : std::vector<std::pair<std::string, std::string>>{
           {"<order id='1'><buyer><nam>x</nam></buyer></order>",
            "Field[Buyer] Offset[21]: expected name, addr in <buyer>, found element nam. Write name; "
            "psUnknown=\"skip\" in "
            "XmlMsg passes over it."},
           {"<order id='1' ID='2'/>",
            "Offset[0]: expected id in the tag of <order>, found attribute ID. Write id;"},
           {"<order id='1'><buyer x='y'/></order>",
            "Field[Buyer] Offset[14]: expected no attribute in the tag of <buyer>, found attribute x."},
           {"<order id='1'><items><item/><item><sku/></item></items></order>",
            "Field[Items[1]] Offset[34]: expected qty, note in <item>, found element sku."},
           {"<order id='1'><buyer>\n stray </buyer></order>",
            "Field[Buyer] Offset[23]: expected name, addr in <buyer>, found text \"stray\"."},
           {"<order id='1'><buyer><name>a<b/></name></buyer></order>",
            "Field[Buyer.Name] Offset[28]: expected text alone in <name>, found element b."},
           {"<order id='1'><buyer/><buyer/></order>",
            "Offset[22]: expected <buyer> once, found a second one. Make the node a loop."},
           {"<Order id='1'/>", "Field[] Offset[0]: expected the root element order, found Order."}}) {
    test::clearLog();
    EXPECT_EQ(parse("Order", sBytes), nullptr) << sBytes;
    EXPECT_TRUE(told(sLine)) << sBytes << "\n" << told();
  }
}

TEST(XmlPlugin, UnknownContentIsPassedOverOnRequest) {
  XmlConfig config;
  order(config, "psUnknown=\"skip\" nDeclaration=\"0\"");
  ASSERT_EQ(config.start(), 0) << told();
  const Document document = parse(
      "Order",
      "<order id='1' x='y'> stray <buyer><a><b><name>no</name></b>t</a><name>yes</name><c/></buyer></order>");
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(generate(document), "<order id=\"1\"><buyer><name>yes</name></buyer></order>");
  EXPECT_EQ(parse("Order", "<other id='1'/>"), nullptr);
}

// --- The form of the output ---

TEST(XmlPlugin, DeclarationIndentationAndFinalLineFeedAreConfigured) {
  XmlConfig config;
  order(config, "nIndent=\"2\" nFinalLineFeed=\"1\"");
  config.message("Mixed", "nIndent=\"1\"",
                 {group("G", "", {field("T", "psKind=\"text\""), group("H", "", {field("A")})})});
  ASSERT_EQ(config.start(), 0) << told();
  const std::string s =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<order id=\"7\">\n"
      "  <buyer>\n"
      "    <name>N</name>\n"
      "  </buyer>\n"
      "  <amt Ccy=\"USD\">1</amt>\n"
      "  <items>\n"
      "    <item sku=\"A\">\n"
      "      <qty>1</qty>\n"
      "      <note>x</note>\n"
      "    </item>\n"
      "    <item sku=\"B\"/>\n"
      "  </items>\n"
      "</order>\n";
  const Document document = parse("Order", s);
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(generate(document), s);
  // Beside text, line breaks would be text.
  const std::string sMixed =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Mixed>\n <G>text<H><A>1</A></H></G>\n</Mixed>";
  const Document mixed = parse("Mixed", sMixed);
  ASSERT_NE(mixed, nullptr) << told();
  EXPECT_EQ(generate(mixed), sMixed);
}

// --- Definitions that share nodes ---

TEST(XmlPlugin, AReferenceBringsInTheFieldsOfAnotherDefinition) {
  XmlConfig config;
  config.message("Party", "", {field("Name"), field("City")});
  config.message(
      "Pay", "nDeclaration=\"0\"",
      {group("From", "", {{"Party\" nType=\"-1", ""}}), group("To", "", {{"Party\" nType=\"-1", ""}})});
  ASSERT_EQ(config.start(), 0) << told();
  const std::string s = "<Pay><From><Name>a</Name></From><To><Name>b</Name><City>c</City></To></Pay>";
  const Document document = parse("Pay", s);
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(generate(document), s);
}

TEST(XmlPlugin, TheConfigurationCanBeReadAgain) {
  XmlConfig config;
  order(config, "nDeclaration=\"0\"");
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(config.start(), 0) << told();
    EXPECT_EQ(generate(parse("Order", kOrder)), kOrder);
  }
  EXPECT_EQ(cvtEnd(), 0);
}

}  // namespace

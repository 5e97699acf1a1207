// Elements in the definition's order, without prefix and attributes, are taken in one step: with the values, and
// refused with the words, of documents that are written in any other way.
#include <gtest/gtest.h>

#include "xml_config.h"

namespace {

using namespace test::xmldoc;

class XmlInOrder : public testing::Test {
 protected:
  void SetUp() override {
    m_config.message("Order", "psRoot=\"order\" psNamespace=\"urn:o\" psPrefixes=\"p=urn:p\"",
                     {field("Id", "nMandatory=\"1\" nMaxLen=\"8\""), field("Note", "psSpace=\"trim\""),
                      field("Other", "psName=\"p:Other\""),
                      group("Sum", "", {field("Ccy", "psKind=\"attribute\""), field("Amount")}),
                      loop("Line", "", "psWrapper=\"Lines\" nMax=\"3\"", {field("Sku"), field("Qty")}),
                      loop("Tag", "", "", {})});
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  // All values, one behind the other.
  static std::string values(const std::string &sInside, const std::string &sRoot = "order xmlns='urn:o'") {
    test::clearLog();
    const Document order = parse(
        "Order", "<" + sRoot + " xmlns:p='urn:p'>" + sInside + "</" + sRoot.substr(0, sRoot.find(' ')) + ">");
    if (order == nullptr) return "refused: " + fault();
    std::string s;
    for (const char *psName : {"Id", "Note", "Other", "Ccy", "Amount"}) s += get(order, psName) + "|";
    for (int i = 0; at(order, "Line", i); ++i)
      s += get(order, "Line.Sku") + "*" + get(order, "Line.Qty") + "|";
    for (int i = 0; at(order, "Tag", i); ++i) s += get(order, "Tag.Tag") + "|";
    return s;
  }

  XmlConfig m_config;
};

const std::string kLines = "<Lines><Line><Sku>S1</Sku><Qty>5</Qty></Line><Line><Sku>S2</Sku></Line></Lines>";
const std::string kTags = "<Tag>a</Tag><Tag>b</Tag>";
const std::string kAll =
    "<Id>77</Id><Note>a text of some length</Note><p:Other>x</p:Other>"
    "<Sum Ccy='EUR'><Amount>1.50</Amount></Sum>" +
    kLines + kTags;
const std::string kValues = "77|a text of some length|x|EUR|1.50|S1*5|S2*|a|b|";

std::string replaced(std::string s, const std::string &sFrom, const std::string &sTo) {
  const size_t at = s.find(sFrom);
  EXPECT_NE(at, s.npos) << sFrom;
  return s.replace(at, sFrom.size(), sTo);
}

TEST_F(XmlInOrder, GivesTheValuesOfEveryOtherWayToWriteThem) {
  EXPECT_EQ(values(kAll), kValues);
  for (const auto &[sFrom, sTo] : std::vector<std::pair<std::string, std::string>>{
           {"<Id>77</Id>", "<Id >77</Id >"},
           {"<Id>77</Id>", "<Id>&#55;7</Id>"},
           {"<Id>77</Id>", "<Id><![CDATA[77]]></Id>"},
           {"<Id>77</Id>", "<Id>7<!--c-->7</Id>"},
           {"<Id>77</Id>", "<!--c--><Id>77</Id>"},
           {"<Id>77</Id>", "<q:Id xmlns:q='urn:o'>77</q:Id>"},
           {"<Id>77</Id>", "<Id xmlns='urn:o'>77</Id>"},
           {"<Id>77</Id>", "\n  <Id>77</Id>\n"},
           {"<Note>a", "<Note>\ta"},
           {"length</Note>", "length \r\n</Note>"},
           {"<Amount>1.50</Amount>", "<Amount><![CDATA[1.]]>50</Amount>"},
           {"<Sku>S1</Sku><Qty>5</Qty>", "<Qty>5</Qty><Sku>S1</Sku>"},
           {kLines + kTags, kTags + kLines},
           {kLines + kTags, "<Tag>a</Tag>" + kLines + "<Tag>b</Tag>"},
       }) {
    EXPECT_EQ(values(replaced(kAll, sFrom, sTo)), kValues) << sTo;
  }
}

TEST_F(XmlInOrder, TextsOfEveryLengthAndKindComeWhole) {
  const std::string sText = "0123456789 \"quoted\" > it's ~ Z\xC3\xBCrich ]] & end";
  for (size_t n = 0; n <= sText.size(); ++n) {
    const std::string sPart = sText.substr(0, n);
    if (!sPart.empty() && sPart.back() == '\xC3') continue;
    std::string sWritten = sPart;
    if (const size_t at = sWritten.find('&'); at != sWritten.npos) sWritten.replace(at, 1, "&amp;");
    if (sPart.size() > 8) {
      EXPECT_NE(values("<Id>" + sWritten + "</Id>").find("at most 8 characters"), std::string::npos) << sPart;
    }
    const Document order =
        parse("Order", "<order xmlns='urn:o'><Id>1</Id><Sum><Amount>" + sWritten + "</Amount></Sum></order>");
    ASSERT_NE(order, nullptr) << sPart << told();
    EXPECT_EQ(get(order, "Amount"), sPart);
  }
}

TEST_F(XmlInOrder, AnEmptyElementIsAnEmptyValue) {
  EXPECT_EQ(values("<Id>1</Id><Note></Note><Sum><Amount/></Sum>"), "1|||||");
  EXPECT_EQ(values("<Id></Id>"), replaced(values("<Id />"), "Offset[43]", "Offset[41]"));
}

// The message names the same field; the offset is that of the end tag in both.
TEST_F(XmlInOrder, IsRefusedInTheSameWords) {
  const std::string sLong = values("<Id>123456789</Id>");
  EXPECT_NE(sLong.find("Field[Id] Offset[50]: expected at most 8 characters"), std::string::npos) << sLong;
  EXPECT_EQ(sLong, replaced(values("<Id >123456789</Id>"), "Offset[51]", "Offset[50]"));
  EXPECT_NE(values("<Id>1</Id><Id>2</Id>").find("expected <Id> once, found a second one"), std::string::npos);
  EXPECT_NE(values("<Id>1</Id><id>2</id>").find("found element id"), std::string::npos);
  EXPECT_NE(values("<Note>1</Note>").find("<Id> in <order>"), std::string::npos);
  EXPECT_NE(values("<Id>1</Id><Lines><Line/><Line/><Line/><Line/></Lines>").find("at most 3 times"),
            std::string::npos);
  const std::string sInLoop = values("<Id>1</Id><Lines><Line><Sku>1</Sku><Sku>2</Sku></Line></Lines>");
  EXPECT_NE(sInLoop.find("Field[Line[0]] Offset[72]: expected <Sku> once"), std::string::npos) << sInLoop;
}

TEST_F(XmlInOrder, ANamespaceOfAnotherNameIsNotTaken) {
  EXPECT_NE(values("<Id xmlns='urn:x'>1</Id>").find("found element Id"), std::string::npos);
  EXPECT_NE(values("<Id>1</Id>", "order").find("expected the root element order"), std::string::npos);
  EXPECT_EQ(values("<q:Id>1</q:Id>", "q:order xmlns:q='urn:o' xmlns='urn:x'"), "1|||||");
  EXPECT_NE(values("<Id>1</Id>", "q:order xmlns:q='urn:o' xmlns='urn:x'").find("found element Id"),
            std::string::npos);
}

TEST_F(XmlInOrder, EveryCutIsRefused) {
  const std::string s = "<order xmlns='urn:o' xmlns:p='urn:p'>" + kAll + "</order>";
  for (size_t n = 0; n < s.size(); ++n) EXPECT_EQ(parse("Order", s.substr(0, n)), nullptr) << s.substr(0, n);
}

// Written in one go, too.
TEST_F(XmlInOrder, AFullBufferIsToldWithTheElementThatHadNoRoom) {
  const Document order = parse("Order", "<order xmlns='urn:o' xmlns:p='urn:p'>" + kAll + "</order>");
  ASSERT_NE(order, nullptr) << told();
  const std::string sWhole = generate(order);
  for (const auto &[sElement, sPath] :
       std::vector<std::pair<std::string, std::string>>{{"<Id>77</Id>", "Id"},
                                                        {"<Note>a text of some length</Note>", "Note"},
                                                        {"<Amount>1.50</Amount>", "Sum.Amount"},
                                                        {"<Sku>S2</Sku>", "Line[1].Sku"},
                                                        {"<Tag>b</Tag>", "Tag[1]"}}) {
    const size_t begin = sWhole.find(sElement);
    ASSERT_NE(begin, sWhole.npos) << sWhole;
    for (size_t n = begin; n < begin + sElement.size(); ++n) {
      test::clearLog();
      EXPECT_EQ(generate(order, n), "failed");
      EXPECT_TRUE(told("Msg[Order] Field[" + sPath + "] Offset[")) << n << "\n" << told();
    }
  }
}

}  // namespace

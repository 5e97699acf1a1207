// The XML layer: results that are fixed whatever happens, what a text is made of, and arguments at their
// limits. It never logs and never prints.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "config_tree.h"
#include "log_capture.h"
#include "stt.h"
#include "xml_layer.h"
#include "xml_text.h"

namespace {

using test::ConfigTree;
using test::cs;
using test::Doc;
using test::taken;
using test::textOf;
using test::Xml;
using test::XmlLayer;

using Build = XmlLayer;
using NodeText = XmlLayer;
using Write = XmlLayer;
using Read = XmlLayer;
using Schema = XmlLayer;
using Limits = XmlLayer;

Doc parsed(std::string sText) {
  return Doc(xmlParse(sText.data(), static_cast<int>(sText.size())));
}

// --- Building ---------------------------------------------------------------------------------------------

TEST_F(Build, ASecondRootTakesThePlaceOfTheFirst) {
  const Doc doc(xmlInit());
  void *const ptFirst = xmlMadeNode(cs("first"));
  xmlPutRootNode(doc.get(), ptFirst);
  EXPECT_EQ(xmlPutRootNode(doc.get(), xmlMadeNode(cs("second"))), 0);
  EXPECT_EQ(textOf(doc.get()), "<second/>");
  xmlNodeFree(ptFirst);  // out of the tree: its maker's again
}

TEST_F(Build, PuttingANodeGivesZeroAlsoWhenNothingIsPut) {
  const Xml xml("<a/>");
  EXPECT_EQ(xmlPutChileNode(xml.root(), nullptr), 0);
  EXPECT_EQ(xmlPutRootNode(xmlGetFatherNode(xml.root()), nullptr), 0);
  EXPECT_EQ(xml.text(), "<a/>");
}

TEST_F(Build, AnElementWithoutNamespaceIsMadeByNone) {
  const Xml xml("<a xmlns='urn:x'/>");
  xmlPutChileNode(xml.root(), xmlMadeNsNode(nullptr, cs("b")));
  EXPECT_EQ(xml.text(), "<a xmlns=\"urn:x\"><b/></a>");
}

TEST_F(Build, OnlyAnElementTakesATextChildAndTheBufferIsRestoredAnyway) {
  const Xml xml("<a><!--c--></a>");
  char value[] = "abc";
  EXPECT_EQ(xmlPutNodeValue(xml.child(), cs("b"), value, 2), nullptr);
  EXPECT_STREQ(value, "abc");
  EXPECT_EQ(xml.text(), "<a><!--c--></a>");
}

TEST_F(Build, AnAttributeInANamespaceStandsBesideThePlainOne) {
  const Xml xml("<a n='1'/>");
  void *const ptNs = xmlMadeNameSpaceShortCut(xml.root(), cs("p"), cs("urn:x"), 0);
  EXPECT_NE(xmlPutNsNodeAttr(xml.root(), ptNs, cs("n"), cs("2"), 1), nullptr);
  EXPECT_NE(xmlPutNsNodeAttr(xml.root(), nullptr, cs("n"), cs("3"), 1), nullptr);
  EXPECT_EQ(xml.text(), "<a xmlns:p=\"urn:x\" n=\"3\" p:n=\"2\"/>");
}

// --- Text of a node ---------------------------------------------------------------------------------------

TEST_F(NodeText, IsWholeAcrossReferencesToCharacters) {
  for (const auto parse : {xmlParse, xmlParse2}) {
    char text[] = "<a>x&amp;y&lt;&#65;&#x4E2D;</a>";
    const Doc doc(parse(text, static_cast<int>(sizeof text) - 1));
    EXPECT_EQ(taken(xmlGetNodeVaule(xmlGetHeadNode(doc.get()))), "x&y<A\xE4\xB8\xAD");
  }
}

TEST_F(NodeText, OfBlanksIsTheirsOnlyWhereBlanksAreKept) {
  char text[] = "<a> <b/></a>";
  const Doc kept(xmlParse(text, static_cast<int>(sizeof text) - 1));
  EXPECT_EQ(taken(xmlGetNodeVaule(xmlGetHeadNode(kept.get()))), " ");
  EXPECT_EQ(taken(xmlGetNodeVaule(Xml(text).root())), "null");
}

TEST_F(NodeText, IsANewStringEachTime) {
  const Xml xml("<a>t</a>");
  char *const psFirst = xmlGetNodeVaule(xml.root());
  char *const psSecond = xmlGetNodeVaule(xml.root());
  EXPECT_NE(psFirst, psSecond);
  EXPECT_EQ(taken(psFirst), taken(psSecond));
}

// --- Writing and reading ----------------------------------------------------------------------------------

TEST_F(Write, ADocumentWithoutEncodingIsDeclaredWithoutOne) {
  const Doc doc = parsed("<a/>");
  char buffer[100];
  int nLen = sizeof buffer;
  EXPECT_EQ(xmlGenerate(doc.get(), buffer, &nLen), 0);
  EXPECT_EQ(std::string(buffer, static_cast<size_t>(nLen)), "<?xml version=\"1.0\"?>\n<a/>\n");
}

TEST_F(Write, ADeclaredEncodingIsWrittenAgain) {
  const std::string sText = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<a n=\"\xE9\"/>\n";
  const Doc doc = parsed(sText);
  char buffer[100];
  int nLen = sizeof buffer;
  EXPECT_EQ(xmlGenerate(doc.get(), buffer, &nLen), 0);
  EXPECT_EQ(std::string(buffer, static_cast<size_t>(nLen)), sText);
}

TEST_F(Write, IntoNoRoomAtAllFailsAndLeavesTheLength) {
  const Doc doc = parsed("<a/>");
  for (const int nRoom : {0, -1, INT_MIN}) {
    int nLen = nRoom;
    EXPECT_EQ(xmlGenerate(doc.get(), nullptr, &nLen), -1);
    EXPECT_EQ(nLen, nRoom);
  }
}

TEST_F(Write, AFileReplacesTheOneThatWasThere) {
  ConfigTree tree;
  tree.file("a.xml", std::string(1000, 'x'));
  const Doc doc = parsed("<a/>");
  EXPECT_GT(xmlFileGenerate(tree.arg("a.xml"), doc.get()), 0);
  const Doc again(xmlFileParse(tree.arg("a.xml")));
  EXPECT_EQ(textOf(again.get()), "<a/>");
}

TEST_F(Write, AFileHasTheNameThatWasGivenWhateverItLooksLike) {
  const Doc doc = parsed("<a/>");
  for (const char *const psName : {"a%41.xml", "a%20b.xml", "100%.xml", "a b.xml", "a#b?c.xml", "http:x.xml",
                                   "file:x.xml", "\xC3\xA4.xml", "\xFF.xml", "-", "a.xml.gz"}) {
    ConfigTree tree;
    EXPECT_GT(xmlFileGenerate(tree.arg(psName), doc.get()), 0) << psName;
    EXPECT_TRUE(std::filesystem::exists(tree.path(psName))) << psName;
    EXPECT_NE(Doc(xmlFileParse(tree.arg(psName))), nullptr) << psName;
  }
}

TEST_F(Write, AFileThatHasNoRoomGivesANegativeValue) {
  const Doc doc = parsed("<a/>");
  EXPECT_LT(xmlFileGenerate(cs("/dev/full"), doc.get()), 0);
  const Doc large =
      parsed("<a>" + std::string(1 << 16, 'x') + "</a>");  // more than is held back until the end
  EXPECT_LT(xmlFileGenerate(cs("/dev/full"), large.get()), 0);
}

TEST_F(Write, ADocumentThatCannotBeWrittenLeavesTheOldFile) {
  ConfigTree tree;
  tree.file("a.xml", "<old/>");
  const Doc doc(xmlInitEncoding(cs("no-such-set")));
  xmlPutRootNode(doc.get(), xmlMadeNode(cs("a")));
  EXPECT_LT(xmlFileGenerate(tree.arg("a.xml"), doc.get()), 0);
  EXPECT_EQ(textOf(Doc(xmlFileParse(tree.arg("a.xml"))).get()), "<old/>");
}

TEST_F(Write, AFileIsInTheEncodingOfItsDocument) {
  ConfigTree tree;
  const Doc doc(xmlInitEncoding(cs("GB18030")));
  void *const ptRoot = xmlMadeNode(cs("a"));
  xmlPutRootNode(doc.get(), ptRoot);
  xmlPutNodeAttr(ptRoot, cs("n"), cs("\xE4\xB8\xAD"), 3);
  const std::string sText = "<?xml version=\"1.0\" encoding=\"GB18030\"?>\n<a n=\"\xD6\xD0\"/>\n";
  EXPECT_EQ(xmlFileGenerate(tree.arg("a.xml"), doc.get()), static_cast<int>(sText.size()));
  std::ifstream in(tree.path("a.xml"), std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), sText);
  EXPECT_EQ(taken(xmlGetNodeAttr(xmlGetHeadNode(Doc(xmlFileParse(tree.arg("a.xml"))).get()), cs("n"))),
            "\xE4\xB8\xAD");
}

// What each of the three readers makes of a text.
struct Readings {
  explicit Readings(std::string sText) {
    ConfigTree tree;
    tree.file("a.xml", sText);
    docs.emplace_back(xmlParse(sText.data(), static_cast<int>(sText.size())));
    docs.emplace_back(xmlParse2(sText.data(), static_cast<int>(sText.size())));
    docs.emplace_back(xmlFileParse(tree.arg("a.xml")));
  }
  std::vector<Doc> docs;
};

TEST_F(Read, KeepsNodesOfEveryKindAsTheyStand) {
  const std::string sText =
      "<!DOCTYPE a [\n<!ENTITY e \"v\">\n]>\n<a>x<!--c--><?p i?><![CDATA[<x>]]>&e;<b/>&lt;</a>";
  for (const Doc &doc : Readings(sText).docs) {
    ASSERT_NE(doc, nullptr);
    EXPECT_EQ(textOf(doc.get()), sText);
  }
}

TEST_F(Read, RefusesWhatIsNestedTooDeep) {
  std::string sText;
  for (int i = 0; i < 1000; ++i) sText += "<a>";
  for (int i = 0; i < 1000; ++i) sText += "</a>";
  for (const Doc &doc : Readings(sText).docs) EXPECT_EQ(doc, nullptr);
}

TEST_F(Read, ABufferIsLeftAsItIs) {
  const std::string sText = "<a n='v'>t</a>";
  std::string copy = sText;
  const Doc doc(xmlParse2(copy.data(), static_cast<int>(copy.size())));
  EXPECT_EQ(copy, sText);
  copy.assign(copy.size(), '#');  // and may go before the document
  EXPECT_EQ(textOf(doc.get()), "<a n=\"v\">t</a>");
}

TEST_F(Read, NoLengthOrANegativeOneIsNoDocument) {
  char text[] = "<a/>";
  for (const int nLen : {0, -1, INT_MIN}) {
    EXPECT_EQ(xmlParse(text, nLen), nullptr);
    EXPECT_EQ(xmlParse2(text, nLen), nullptr);
  }
  EXPECT_EQ(xmlParse(nullptr, 4), nullptr);
  EXPECT_EQ(xmlFileParse(nullptr), nullptr);
}

// --- Schemas ----------------------------------------------------------------------------------------------

void *f_ptSchema = nullptr;  // a compiled schema has no release function in this layer

TEST_F(Schema, WithoutADocumentIsAnInternalError) {
  ConfigTree tree;
  tree.file("a.xsd",
            "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='a'/></xs:schema>");
  f_ptSchema = xmlGetSchemaObj(tree.arg("a.xsd"));
  ASSERT_NE(f_ptSchema, nullptr);
  EXPECT_EQ(xmlCheckSchema(f_ptSchema, nullptr), -1);
  EXPECT_EQ(xmlCheckSchema(f_ptSchema, parsed("<a/>").get()), 0);
}

// --- Limits -----------------------------------------------------------------------------------------------

TEST_F(Limits, ALengthBeyondTheTextIsTheWholeText) {
  const Xml xml("<a/>");
  const auto value = std::make_unique<char[]>(4);
  std::memcpy(value.get(), "abc", 4);
  EXPECT_NE(xmlPutNodeAttr(xml.root(), cs("n"), value.get(), 1000), nullptr);
  EXPECT_NE(xmlPutNodeAttr(xml.root(), cs("m"), value.get(), INT_MAX), nullptr);
  EXPECT_EQ(xml.text(), "<a n=\"abc\" m=\"abc\"/>");
}

TEST_F(Limits, ANegativeLengthIsRefused) {
  const Xml xml("<a/>");
  char value[] = "abc";
  for (const int nLen : {-1, INT_MIN}) {
    EXPECT_EQ(xmlPutNodeAttr(xml.root(), cs("n"), value + 1, nLen), nullptr);
    EXPECT_EQ(xmlPutNsNodeAttr(xml.root(), nullptr, cs("n"), value + 1, nLen), nullptr);
    EXPECT_EQ(xmlPutNodeValue(xml.root(), cs("b"), value + 1, nLen), nullptr);
  }
  EXPECT_EQ(xml.text(), "<a/>");
  EXPECT_STREQ(value, "abc");
}

TEST_F(Limits, NoValueIsRefused) {
  const Xml xml("<a n='1'/>");
  EXPECT_EQ(xmlPutNodeAttr(xml.root(), cs("n"), nullptr, 3), nullptr);
  EXPECT_EQ(xmlPutNsNodeAttr(xml.root(), nullptr, cs("n"), nullptr, 0), nullptr);
  EXPECT_EQ(xmlPutNodeValue(xml.root(), cs("b"), nullptr, 0), nullptr);
  EXPECT_EQ(xml.text(), "<a n=\"1\"/>");
}

TEST_F(Limits, NamesAndValuesMayBeVeryLong) {
  const Xml xml("<a/>");
  const std::string sName(100000, 'n');
  std::string sValue(9000000, 'v');
  xmlPutNodeAttr(xml.root(), cs(sName.c_str()), cs("v"), 1);
  void *const ptNode =
      xmlPutNodeValue(xml.root(), cs(sName.c_str()), sValue.data(), static_cast<int>(sValue.size()));
  EXPECT_EQ(taken(xmlGetNodeVaule(ptNode)), sValue);
  EXPECT_EQ(xmlGetNodeName(ptNode), sName);
  EXPECT_EQ(taken(xmlGetNodeAttr(xml.root(), cs(sName.c_str()))), "v");
}

// A byte that is no UTF-8 by itself: the end of a character, cut by the length.
TEST_F(Limits, AnAttributeCutInsideACharacterIsSilent) {
  const Doc doc(xmlInit());
  void *const ptRoot = xmlMadeNode(cs("a"));
  xmlPutRootNode(doc.get(), ptRoot);
  xmlPutNodeAttr(ptRoot, cs("n"), cs("\xE4\xB8\xAD"), 2);
  xmlPutNodeAttr(ptRoot, cs("n"), cs("\xE4\xB8\xAD"), 1);
  xmlPutNsNodeAttr(ptRoot, nullptr, cs("m"), cs("\xFF"), 1);
  textOf(doc.get());
}

TEST_F(Limits, ATextCutInsideACharacterIsSilent) {
  const Doc doc(xmlInit());
  void *const ptRoot = xmlMadeNode(cs("a"));
  xmlPutRootNode(doc.get(), ptRoot);
  char value[] = "\xE4\xB8\xAD";
  EXPECT_NE(xmlPutNodeValue(ptRoot, cs("b"), value, 2), nullptr);
  textOf(doc.get());
}

TEST_F(Limits, WhatIsNoNameIsSilentToo) {
  const Xml xml("<a/>");
  EXPECT_EQ(xmlMadeNode(nullptr), nullptr);
  xmlPutNodeAttr(xml.root(), cs("p:n"), cs("v"), 1);
  xmlPutNodeAttr(xml.root(), cs(""), cs("v"), 1);
  xmlNodeFree(xmlMadeNode(cs("")));
  xmlNodeFree(xmlMadeNode(cs("\xff<")));
  xmlEncodeAlias(cs("no-such-set"), cs("X"));
  xmlEncodeAlias(cs("UTF-8"), cs(""));
}

}  // namespace

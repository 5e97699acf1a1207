// The XML layer: building, writing, reading and walking documents. It never logs and never prints.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

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

using XmlBuild = XmlLayer;
using XmlNameSpace = XmlLayer;
using XmlAttribute = XmlLayer;
using XmlNodeValue = XmlLayer;
using XmlWrite = XmlLayer;
using XmlRead = XmlLayer;
using XmlWalk = XmlLayer;
using XmlSchema = XmlLayer;
using XmlEncoding = XmlLayer;

Doc docOf(void *ptXmlRoot) {
  Doc doc(xmlInit());
  xmlPutRootNode(doc.get(), ptXmlRoot);
  return doc;
}

std::string generated(void *ptXmlDoc) {
  char buffer[1000];
  int nLen = sizeof buffer;
  EXPECT_EQ(xmlGenerate(ptXmlDoc, buffer, &nLen), 0);
  return std::string(buffer, static_cast<size_t>(nLen));
}

std::string contents(const std::string &sFile) {
  std::ifstream in(sFile, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

// --- Building --------------------------------------------------------------------------------------------

TEST_F(XmlBuild, ANewDocumentIsVersionOneInUtf8) {
  const Doc doc = docOf(xmlMadeNode(cs("a")));
  EXPECT_EQ(generated(doc.get()), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a/>\n");
}

TEST_F(XmlBuild, ADocumentKeepsACopyOfTheEncodingGiven) {
  char encoding[] = "GB18030";
  const Doc doc(xmlInitEncoding(encoding));
  std::memset(encoding, 'x', sizeof encoding - 1);
  void *const ptRoot = xmlMadeNode(cs("a"));
  xmlPutRootNode(doc.get(), ptRoot);
  xmlPutNodeAttr(ptRoot, cs("n"), cs("\xE4\xB8\xAD"), 3);
  EXPECT_EQ(generated(doc.get()), "<?xml version=\"1.0\" encoding=\"GB18030\"?>\n<a n=\"\xD6\xD0\"/>\n");
}

TEST_F(XmlBuild, TheRootIsPutAndFound) {
  const Doc doc(xmlInit());
  EXPECT_EQ(xmlGetHeadNode(doc.get()), nullptr);
  void *const ptRoot = xmlMadeNode(cs("a"));
  EXPECT_EQ(xmlPutRootNode(doc.get(), ptRoot), 0);
  EXPECT_EQ(xmlGetHeadNode(doc.get()), ptRoot);
}

TEST_F(XmlBuild, ChildrenAreAppended) {
  void *const ptRoot = xmlMadeNode(cs("a"));
  const Doc doc = docOf(ptRoot);
  EXPECT_EQ(xmlPutChileNode(ptRoot, xmlMadeNode(cs("b"))), 0);
  EXPECT_EQ(xmlPutChileNode(ptRoot, xmlMadeNode(cs("c"))), 0);
  EXPECT_EQ(textOf(doc.get()), "<a><b/><c/></a>");
}

TEST_F(XmlBuild, ATreeOutsideADocumentIsFreedWhole) {
  void *const pt = xmlMadeNode(cs("a"));
  xmlPutChileNode(pt, xmlMadeNode(cs("b")));
  xmlPutNodeAttr(pt, cs("n"), cs("v"), 1);
  EXPECT_EQ(xmlNodeFree(pt), 0);
}

TEST_F(XmlBuild, FreeingADocumentGivesZero) {
  void *const ptXmlDoc = xmlInit();
  xmlPutRootNode(ptXmlDoc, xmlMadeNode(cs("a")));
  EXPECT_EQ(xmlDocFree(ptXmlDoc), 0);
}

// --- Namespaces ------------------------------------------------------------------------------------------

TEST_F(XmlNameSpace, ANodeIsMadeInANamespace) {
  void *const ptRoot = xmlMadeNode(cs("a"));
  const Doc doc = docOf(ptRoot);
  void *const ptNs = xmlMadeNameSpaceShortCut(ptRoot, cs("p"), cs("urn:x"), 0);
  xmlPutChileNode(ptRoot, xmlMadeNsNode(ptNs, cs("b")));
  xmlPutChileNode(ptRoot, xmlMadeNode(cs("c")));
  EXPECT_EQ(textOf(doc.get()), "<a xmlns:p=\"urn:x\"><p:b/><c/></a>");
}

TEST_F(XmlNameSpace, ANamespaceWithoutPrefixTakesTheNodeIn) {
  void *const ptRoot = xmlMadeNode(cs("a"));
  const Doc doc = docOf(ptRoot);
  EXPECT_NE(xmlMadeNameSpace(ptRoot, cs("urn:x")), nullptr);
  // an inherited namespace shows that the node is inside
  char none[] = "";
  xmlPutNodeValue(ptRoot, cs("b"), none, 0);
  EXPECT_EQ(textOf(doc.get()), "<a xmlns=\"urn:x\"><b></b></a>");
}

TEST_F(XmlNameSpace, ASecondOneWithoutPrefixIsRefusedAndChangesNothing) {
  void *const ptRoot = xmlMadeNode(cs("a"));
  const Doc doc = docOf(ptRoot);
  xmlMadeNameSpace(ptRoot, cs("urn:x"));
  EXPECT_EQ(xmlMadeNameSpace(ptRoot, cs("urn:y")), nullptr);
  EXPECT_EQ(textOf(doc.get()), "<a xmlns=\"urn:x\"/>");
}

TEST_F(XmlNameSpace, ThePrefixOfANodeIsOnlySetWithFlagOne) {
  for (const int nFlag : {0, 1, 2, -1}) {
    void *const ptRoot = xmlMadeNode(cs("a"));
    const Doc doc = docOf(ptRoot);
    EXPECT_NE(xmlMadeNameSpaceShortCut(ptRoot, cs("p"), cs("urn:x"), nFlag), nullptr);
    EXPECT_EQ(textOf(doc.get()), nFlag == 1 ? "<p:a xmlns:p=\"urn:x\"/>" : "<a xmlns:p=\"urn:x\"/>") << nFlag;
  }
}

TEST_F(XmlNameSpace, ARepeatedPrefixIsRefused) {
  void *const ptRoot = xmlMadeNode(cs("a"));
  const Doc doc = docOf(ptRoot);
  xmlMadeNameSpaceShortCut(ptRoot, cs("p"), cs("urn:x"), 0);
  EXPECT_EQ(xmlMadeNameSpaceShortCut(ptRoot, cs("p"), cs("urn:y"), 1), nullptr);
  EXPECT_EQ(textOf(doc.get()), "<a xmlns:p=\"urn:x\"/>");
}

TEST_F(XmlNameSpace, ANodeIsPutIntoOneLater) {
  void *const ptRoot = xmlMadeNode(cs("a"));
  const Doc doc = docOf(ptRoot);
  void *const ptNs = xmlMadeNameSpaceShortCut(ptRoot, cs("p"), cs("urn:x"), 2);
  xmlNodeAddNameSapce(ptRoot, ptNs);
  EXPECT_EQ(textOf(doc.get()), "<p:a xmlns:p=\"urn:x\"/>");
}

// --- Attributes ------------------------------------------------------------------------------------------

const char f_sConstant[] = "abc";  // read-only memory

TEST_F(XmlAttribute, AConstantIsCutWithoutBeingWrittenTo) {
  const Xml xml("<a/>");
  EXPECT_NE(xmlPutNodeAttr(xml.root(), cs("n"), cs(f_sConstant), 2), nullptr);
  EXPECT_EQ(xml.text(), "<a n=\"ab\"/>");
  EXPECT_STREQ(f_sConstant, "abc");
}

TEST_F(XmlAttribute, AConstantIsTakenWhole) {
  const Xml xml("<a/>");
  EXPECT_NE(xmlPutNodeAttr(xml.root(), cs("n"), cs(f_sConstant), 3), nullptr);
  EXPECT_EQ(xml.text(), "<a n=\"abc\"/>");
}

TEST_F(XmlAttribute, AnEmptyValueIsAnEmptyAttribute) {
  const Xml xml("<a/>");
  EXPECT_NE(xmlPutNodeAttr(xml.root(), cs("n"), cs(f_sConstant), 0), nullptr);
  EXPECT_EQ(xml.text(), "<a n=\"\"/>");
}

TEST_F(XmlAttribute, TheValueNeedsNoTerminator) {
  const Xml xml("<a/>");
  const auto value = std::make_unique<char[]>(2);
  std::memcpy(value.get(), "xy", 2);
  EXPECT_NE(xmlPutNodeAttr(xml.root(), cs("n"), value.get(), 2), nullptr);
  EXPECT_EQ(xml.text(), "<a n=\"xy\"/>");
}

TEST_F(XmlAttribute, AZeroByteEndsTheValueEarlier) {
  const Xml xml("<a/>");
  char value[] = "ab\0cd";
  EXPECT_NE(xmlPutNodeAttr(xml.root(), cs("n"), value, 5), nullptr);
  EXPECT_EQ(xml.text(), "<a n=\"ab\"/>");
}

TEST_F(XmlAttribute, SpecialCharactersAreEscapedAndReadBack) {
  const Xml xml("<a/>");
  xmlPutNodeAttr(xml.root(), cs("n"), cs("<&\">'"), 5);
  EXPECT_EQ(xml.text(), "<a n=\"&lt;&amp;&quot;&gt;'\"/>");
  EXPECT_EQ(taken(xmlGetNodeAttr(xml.root(), cs("n"))), "<&\">'");
}

TEST_F(XmlAttribute, ASecondValueReplacesTheFirst) {
  const Xml xml("<a n='1' m='2'/>");
  xmlPutNodeAttr(xml.root(), cs("n"), cs("3"), 1);
  EXPECT_EQ(xml.text(), "<a n=\"3\" m=\"2\"/>");
}

TEST_F(XmlAttribute, OneInANamespaceCarriesItsPrefix) {
  const Xml xml("<a/>");
  void *const ptNs = xmlMadeNameSpaceShortCut(xml.root(), cs("p"), cs("urn:x"), 0);
  EXPECT_NE(xmlPutNsNodeAttr(xml.root(), ptNs, cs("n"), cs(f_sConstant), 2), nullptr);
  EXPECT_EQ(xml.text(), "<a xmlns:p=\"urn:x\" p:n=\"ab\"/>");
  EXPECT_STREQ(f_sConstant, "abc");
}

TEST_F(XmlAttribute, OnlyElementsCarryThem) {
  const Xml xml("<a><!--c--></a>");
  EXPECT_EQ(xmlPutNodeAttr(xml.child(), cs("n"), cs("v"), 1), nullptr);
  EXPECT_EQ(taken(xmlGetNodeAttr(xml.child(), cs("n"))), "null");
}

TEST_F(XmlAttribute, AnAbsentOneIsNullAndAnEmptyOneIsNot) {
  const Xml xml("<a n=''/>");
  EXPECT_EQ(taken(xmlGetNodeAttr(xml.root(), cs("n"))), "");
  EXPECT_EQ(taken(xmlGetNodeAttr(xml.root(), cs("N"))), "null");
}

TEST_F(XmlAttribute, EachReadIsANewString) {
  const Xml xml("<a n='v'/>");
  char *const psFirst = xmlGetNodeAttr(xml.root(), cs("n"));
  char *const psSecond = xmlGetNodeAttr(xml.root(), cs("n"));
  EXPECT_NE(psFirst, psSecond);
  EXPECT_EQ(taken(psFirst), taken(psSecond));
}

// --- Text children -----------------------------------------------------------------------------------------

TEST_F(XmlNodeValue, TheFirstBytesBecomeTheTextAndTheBufferIsRestored) {
  const Xml xml("<a/>");
  char value[] = "abc";
  void *const ptNode = xmlPutNodeValue(xml.root(), cs("b"), value, 2);
  ASSERT_NE(ptNode, nullptr);
  EXPECT_STREQ(xmlGetNodeName(ptNode), "b");
  EXPECT_EQ(xml.text(), "<a><b>ab</b></a>");
  EXPECT_STREQ(value, "abc");
}

TEST_F(XmlNodeValue, SpecialCharactersAreEscaped) {
  const Xml xml("<a/>");
  char value[] = "1<2&&3>2";
  EXPECT_EQ(taken(xmlGetNodeVaule(xmlPutNodeValue(xml.root(), cs("b"), value, 8))), value);
  EXPECT_EQ(xml.text(), "<a><b>1&lt;2&amp;&amp;3&gt;2</b></a>");
}

TEST_F(XmlNodeValue, ANullNamespaceInheritsTheFathers) {
  void *const ptRoot = xmlMadeNode(cs("a"));
  const Doc doc = docOf(ptRoot);
  xmlMadeNameSpaceShortCut(ptRoot, cs("p"), cs("urn:x"), 1);
  char value[] = "v";
  xmlPutNsNodeValue(ptRoot, nullptr, cs("b"), value, 1);
  EXPECT_EQ(textOf(doc.get()), "<p:a xmlns:p=\"urn:x\"><p:b>v</p:b></p:a>");
}

TEST_F(XmlNodeValue, ItsOwnNamespaceIsUsed) {
  const Xml xml("<a/>");
  void *const ptNs = xmlMadeNameSpaceShortCut(xml.root(), cs("p"), cs("urn:x"), 0);
  char value[] = "v";
  xmlPutNsNodeValue(xml.root(), ptNs, cs("b"), value, 1);
  EXPECT_EQ(xml.text(), "<a xmlns:p=\"urn:x\"><p:b>v</p:b></a>");
}

// Unlike the attribute setters: kept, callers hand their own buffers.
TEST(XmlNodeValueDeathTest, TheByteBehindIsAlwaysWritten) {
  const Xml xml("<a/>");
  EXPECT_DEATH(xmlPutNodeValue(xml.root(), cs("b"), cs(f_sConstant), 3), "");
}

TEST_F(XmlNodeValue, OfAnElementIsItsText) {
  const Xml xml("<a>text</a>");
  EXPECT_EQ(taken(xmlGetNodeVaule(xml.root())), "text");
}

TEST_F(XmlNodeValue, OfAnEmptyElementIsNull) {
  EXPECT_EQ(taken(xmlGetNodeVaule(Xml("<a/>").root())), "null");
  EXPECT_EQ(taken(xmlGetNodeVaule(Xml("<a></a>").root())), "null");
}

TEST_F(XmlNodeValue, BehindAnElementIsNeverSeen) {
  EXPECT_EQ(taken(xmlGetNodeVaule(Xml("<a><b/>x</a>").root())), "null");
  EXPECT_EQ(taken(xmlGetNodeVaule(Xml("<a>x<b/>y</a>").root())), "x");
}

TEST_F(XmlNodeValue, IsTheFirstChildsWhateverItsKind) {
  EXPECT_EQ(taken(xmlGetNodeVaule(Xml("<a><![CDATA[<x>]]></a>").root())), "<x>");
  EXPECT_EQ(taken(xmlGetNodeVaule(Xml("<a><!--c-->x</a>").root())), "c");
}

TEST_F(XmlNodeValue, OfATextNodeIsNull) {
  EXPECT_EQ(taken(xmlGetNodeVaule(Xml("<a>x</a>").child())), "null");
}

// --- Writing -----------------------------------------------------------------------------------------------

const std::string f_sSmall = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a><b/></a>\n";

Doc small() {
  Doc doc(xmlInit());
  void *const ptRoot = xmlMadeNode(cs("a"));
  xmlPutRootNode(doc.get(), ptRoot);
  xmlPutChileNode(ptRoot, xmlMadeNode(cs("b")));
  return doc;
}

TEST_F(XmlWrite, ABufferOfExactlyTheSizeIsEnoughAndGetsNoTerminator) {
  const Doc doc = small();
  std::string buffer(f_sSmall.size() + 1, '#');
  int nLen = static_cast<int>(f_sSmall.size());
  EXPECT_EQ(xmlGenerate(doc.get(), buffer.data(), &nLen), 0);
  EXPECT_EQ(nLen, static_cast<int>(f_sSmall.size()));
  EXPECT_EQ(buffer, f_sSmall + "#");
}

TEST_F(XmlWrite, OneByteLessIsTooSmallAndTouchesNothing) {
  const Doc doc = small();
  std::string buffer(f_sSmall.size(), '#');
  int nLen = static_cast<int>(f_sSmall.size()) - 1;
  EXPECT_EQ(xmlGenerate(doc.get(), buffer.data(), &nLen), -1);
  EXPECT_EQ(nLen, static_cast<int>(f_sSmall.size()) - 1);
  EXPECT_EQ(buffer, std::string(f_sSmall.size(), '#'));
}

TEST_F(XmlWrite, ALargerBufferGetsTheSize) {
  const Doc doc = small();
  char buffer[100];
  int nLen = sizeof buffer;
  EXPECT_EQ(xmlGenerate(doc.get(), buffer, &nLen), 0);
  EXPECT_EQ(std::string(buffer, static_cast<size_t>(nLen)), f_sSmall);
}

TEST_F(XmlWrite, AnUnknownEncodingFails) {
  const Doc doc(xmlInitEncoding(cs("no-such-set")));
  xmlPutRootNode(doc.get(), xmlMadeNode(cs("a")));
  char buffer[100];
  int nLen = sizeof buffer;
  EXPECT_EQ(xmlGenerate(doc.get(), buffer, &nLen), -1);
  EXPECT_EQ(nLen, 100);
  ConfigTree tree;
  EXPECT_LT(xmlFileGenerate(tree.arg("a.xml"), doc.get()), 0);
}

TEST_F(XmlWrite, CharactersOutsideTheEncodingBecomeReferences) {
  const Doc doc(xmlInitEncoding(cs("ISO-8859-1")));
  void *const ptRoot = xmlMadeNode(cs("a"));
  xmlPutRootNode(doc.get(), ptRoot);
  xmlPutNodeAttr(ptRoot, cs("n"), cs("\xC3\xA9\xE4\xB8\xAD"), 5);
  EXPECT_EQ(generated(doc.get()),
            "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<a n=\"\xE9&#20013;\"/>\n");
}

TEST_F(XmlWrite, AFileIsIndentedAndItsSizeReturned) {
  ConfigTree tree;
  const Doc doc = small();
  const int nBytes = xmlFileGenerate(tree.arg("a.xml"), doc.get());
  EXPECT_EQ(contents(tree.path("a.xml")), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>\n  <b/>\n</a>\n");
  EXPECT_EQ(nBytes, static_cast<int>(std::filesystem::file_size(tree.path("a.xml"))));
}

TEST_F(XmlWrite, AFileThatCannotBeMadeGivesANegativeValue) {
  ConfigTree tree;
  const Doc doc = small();
  EXPECT_LT(xmlFileGenerate(tree.arg("no/such/a.xml"), doc.get()), 0);
}

// --- Reading -----------------------------------------------------------------------------------------------

TEST_F(XmlRead, ABufferKeepsItsBlankNodesOnlyInTheFirstForm) {
  char text[] = "<a>\n  <b/>\n</a>";
  const int nLen = static_cast<int>(sizeof text) - 1;
  const Doc kept(xmlParse(text, nLen));
  const Doc dropped(xmlParse2(text, nLen));
  EXPECT_STREQ(xmlGetNodeName(xmlGetChileNode(xmlGetHeadNode(kept.get()))), "text");
  EXPECT_STREQ(xmlGetNodeName(xmlGetChileNode(xmlGetHeadNode(dropped.get()))), "b");
  EXPECT_EQ(textOf(kept.get()), text);
  EXPECT_EQ(textOf(dropped.get()), "<a><b/></a>");
}

// The reader sees a file in pieces: blanks that cross the end of one are not seen with what follows them.
TEST_F(XmlRead, AFileHasNoBlankNodesHoweverLongTheBlanksAre) {
  ConfigTree tree;
  for (const size_t nBlanks : {size_t{1}, size_t{240}, size_t{4000}, size_t{100000}}) {
    const std::string sBlanks(nBlanks, '\n');
    tree.file("a.xml", "<a>" + sBlanks + "<b> </b>" + sBlanks + "<!--c-->" + sBlanks + "<d><e/>" + sBlanks +
                           "</d>" + sBlanks + "</a>");
    EXPECT_EQ(textOf(Doc(xmlFileParse(tree.arg("a.xml"))).get()), "<a><b> </b><!--c--><d><e/></d></a>")
        << nBlanks;
  }
}

// A buffer is there at once; of long blanks with carriage returns the reader sees pieces all the same.
void expectNoBlanks(const std::string &sDeclaration) {
  for (const std::string sBlank : {"\n", "\r\n"}) {
    for (const size_t nBlanks : {size_t{1}, size_t{240}, size_t{4000}, size_t{100000}}) {
      std::string sBlanks;
      for (size_t i = 0; i < nBlanks; ++i) sBlanks += sBlank;
      const Xml xml(sDeclaration + "<a>" + sBlanks + "<b> </b>" + sBlanks + "<!--c-->" + sBlanks + "<d><e/>" +
                    sBlanks + "</d>" + sBlanks + "</a>");
      EXPECT_TRUE(xml.text() == "<a><b> </b><!--c--><d><e/></d></a>") << nBlanks << " of " << sBlank.size();
    }
  }
}

TEST_F(XmlRead, ABufferHasNoBlankNodesHoweverLongTheBlanksAre) {
  expectNoBlanks("");
}

TEST_F(XmlRead, ABufferOfADeclaredEncodingHasNoBlankNodesEither) {
  expectNoBlanks("<?xml version='1.0' encoding='ISO-8859-1'?>");
}

TEST_F(XmlRead, AFileKeepsTheBlanksOfTexts) {
  ConfigTree tree;
  const std::string sBlanks(4000, ' ');
  for (const std::string &sText :
       {"<a>" + sBlanks + "</a>", "<a>x<b/>" + sBlanks + "<c/></a>",
        "<a><![CDATA[x]]>" + sBlanks + "<b/></a>", "<a xml:space=\"preserve\">" + sBlanks + "<b/></a>"}) {
    tree.file("a.xml", sText);
    EXPECT_EQ(textOf(Doc(xmlFileParse(tree.arg("a.xml"))).get()), sText);
  }
}

TEST_F(XmlRead, OnlyTheBytesOfTheLengthAreRead) {
  const std::string sText = "<a/>";
  const auto exact = std::make_unique<char[]>(sText.size());
  std::memcpy(exact.get(), sText.data(), sText.size());
  EXPECT_NE(Doc(xmlParse(exact.get(), 4)), nullptr);
  EXPECT_NE(Doc(xmlParse2(exact.get(), 4)), nullptr);
  char more[] = "<a/>no XML";
  EXPECT_NE(Doc(xmlParse2(more, 4)), nullptr);
  EXPECT_EQ(xmlParse2(more, 10), nullptr);
}

TEST_F(XmlRead, WhatIsNotXmlIsNull) {
  for (const std::string sText : {"", "text", "<a>", "<a></b>", "<a n=1/>", "<a/><b/>", "<a>&#0;</a>",
                                  "<a>\xE9</a>", "<?xml version='1.0' encoding='no-such-set'?><a/>"}) {
    EXPECT_EQ(xmlParse(cs(sText.c_str()), static_cast<int>(sText.size())), nullptr) << sText;
    EXPECT_EQ(xmlParse2(cs(sText.c_str()), static_cast<int>(sText.size())), nullptr) << sText;
  }
}

TEST_F(XmlRead, ADeclaredEncodingIsDecoded) {
  const Xml xml("<?xml version='1.0' encoding='ISO-8859-1'?><a n='\xE9'/>");
  EXPECT_EQ(taken(xmlGetNodeAttr(xml.root(), cs("n"))), "\xC3\xA9");
}

TEST_F(XmlRead, AnIndentedFileHasElementsAndCommentsOnly) {
  ConfigTree tree;
  tree.file("a.xml", "<?xml version='1.0'?>\n<a>\n  <b/>\n  <!--c-->\n  <d/>\n</a>\n");
  const Doc doc(xmlFileParse(tree.arg("a.xml")));
  ASSERT_NE(doc, nullptr);
  void *pt = xmlGetChileNode(xmlGetHeadNode(doc.get()));
  for (const char *const psName : {"b", "comment", "d"}) {
    ASSERT_NE(pt, nullptr);
    EXPECT_STREQ(xmlGetNodeName(pt), psName);
    pt = xmlGetNextNode(pt);
  }
  EXPECT_EQ(pt, nullptr);
}

TEST_F(XmlRead, AFileThatIsMissingBrokenOrADirectoryIsNull) {
  ConfigTree tree;
  tree.file("broken.xml", "<a>").file("empty.xml", "");
  for (const char *const psName : {"missing.xml", "broken.xml", "empty.xml", ""}) {
    EXPECT_EQ(xmlFileParse(tree.arg(psName)), nullptr) << psName;
  }
}

TEST_F(XmlRead, AFileWrittenReadsBack) {
  ConfigTree tree;
  const Doc doc = small();
  xmlFileGenerate(tree.arg("a.xml"), doc.get());
  const Doc again(xmlFileParse(tree.arg("a.xml")));
  ASSERT_NE(again, nullptr);
  EXPECT_EQ(generated(again.get()), f_sSmall);
}

TEST_F(XmlRead, AnExternalEntityIsNotFetched) {
  ConfigTree tree;
  tree.file("secret", "top secret");
  const std::string sText =
      "<!DOCTYPE a [<!ENTITY e SYSTEM 'file://" + tree.path("secret") + "'>]><a>&e;</a>";
  tree.file("a.xml", sText);
  const int nLen = static_cast<int>(sText.size());
  for (void *const ptXmlDoc : {xmlParse(cs(sText.c_str()), nLen), xmlParse2(cs(sText.c_str()), nLen),
                               xmlFileParse(tree.arg("a.xml"))}) {
    const Doc doc(ptXmlDoc);
    ASSERT_NE(doc, nullptr);
    EXPECT_EQ(taken(xmlGetNodeVaule(xmlGetHeadNode(doc.get()))).find("secret"), std::string::npos);
  }
}

TEST_F(XmlRead, DeepNestingIsRefused) {
  std::string sText;
  for (int i = 0; i < 1000; ++i) sText += "<a>";
  for (int i = 0; i < 1000; ++i) sText += "</a>";
  EXPECT_EQ(xmlParse2(sText.data(), static_cast<int>(sText.size())), nullptr);
}

// --- Walking -----------------------------------------------------------------------------------------------

TEST_F(XmlWalk, GoesToNodesOfEveryKind) {
  const Xml xml("<a>t<b/><!--c--></a>");
  void *const ptText = xmlGetChileNode(xml.root());
  void *const ptElement = xmlGetNextNode(ptText);
  void *const ptComment = xmlGetNextNode(ptElement);
  EXPECT_STREQ(xmlGetNodeName(ptText), "text");
  EXPECT_STREQ(xmlGetNodeName(ptElement), "b");
  EXPECT_STREQ(xmlGetNodeName(ptComment), "comment");
  EXPECT_EQ(xmlGetNextNode(ptComment), nullptr);
  EXPECT_EQ(xmlGetPrevNode(ptText), nullptr);
  EXPECT_EQ(xmlGetPrevNode(ptComment), ptElement);
  EXPECT_EQ(xmlGetLastChildNode(xml.root()), ptComment);
  EXPECT_EQ(xmlGetFatherNode(ptElement), xml.root());
  EXPECT_EQ(xmlGetChileNode(ptElement), nullptr);
  EXPECT_EQ(xmlGetLastChildNode(ptElement), nullptr);
}

TEST_F(XmlWalk, EndsAtTheDocumentWhichHasNoName) {
  const Xml xml("<a/>");
  void *const ptFather = xmlGetFatherNode(xml.root());
  ASSERT_NE(ptFather, nullptr);
  EXPECT_EQ(xmlGetNodeName(ptFather), nullptr);
  EXPECT_EQ(xmlGetFatherNode(ptFather), nullptr);
}

TEST_F(XmlWalk, ANameBelongsToTheNode) {
  const Xml xml("<a/>");
  EXPECT_EQ(xmlGetNodeName(xml.root()), xmlGetNodeName(xml.root()));
}

TEST_F(XmlWalk, TheRootIsTheElementAlsoBehindAComment) {
  const Xml xml("<!--c--><a/>");
  EXPECT_STREQ(xmlGetNodeName(xml.root()), "a");
}

// --- Schemas -----------------------------------------------------------------------------------------------

// A compiled schema has no release function in this layer; the process keeps it.
void *f_ptSchema = nullptr;

const char f_sSchema[] =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>"
    "<xs:element name='a'><xs:complexType><xs:attribute name='n' type='xs:int' use='required'/>"
    "</xs:complexType></xs:element></xs:schema>";

TEST_F(XmlSchema, IsNullForNoUrlNoFileAndNoSchema) {
  ConfigTree tree;
  tree.file("text.xsd", "no XML").file("other.xsd", "<a/>");
  EXPECT_EQ(xmlGetSchemaObj(nullptr), nullptr);
  EXPECT_EQ(xmlGetSchemaObj(cs("")), nullptr);
  for (const char *const psName : {"missing.xsd", "text.xsd", "other.xsd"}) {
    EXPECT_EQ(xmlGetSchemaObj(tree.arg(psName)), nullptr) << psName;
  }
}

TEST_F(XmlSchema, AcceptsAndRefusesDocuments) {
  ConfigTree tree;
  tree.file("a.xsd", f_sSchema);
  f_ptSchema = xmlGetSchemaObj(tree.arg("a.xsd"));
  ASSERT_NE(f_ptSchema, nullptr);
  const auto check = [](const char *psText) {
    std::string sText = psText;
    const Doc doc(xmlParse2(sText.data(), static_cast<int>(sText.size())));
    return xmlCheckSchema(f_ptSchema, doc.get());
  };
  EXPECT_EQ(check("<a n='1'/>"), 0);
  EXPECT_GT(check("<a n='x'/>"), 0);
  EXPECT_GT(check("<a/>"), 0);
  EXPECT_GT(check("<b n='1'/>"), 0);
  EXPECT_EQ(check("<a n='2'/>"), 0);  // each check stands for itself
}

// --- Encodings ---------------------------------------------------------------------------------------------

TEST_F(XmlEncoding, AnAliasNamesAnEncodingAndMayBeReplaced) {
  const std::string sText = "<?xml version='1.0' encoding='HOUSE'?><a n='\xE9'/>";
  EXPECT_THROW(Xml{sText}, std::invalid_argument);
  xmlEncodeAlias(cs("ISO-8859-1"), cs("HOUSE"));
  EXPECT_EQ(taken(xmlGetNodeAttr(Xml(sText).root(), cs("n"))), "\xC3\xA9");
  xmlEncodeAlias(cs("ISO-8859-5"), cs("HOUSE"));
  EXPECT_EQ(taken(xmlGetNodeAttr(Xml(sText).root(), cs("n"))), "\xD1\x89");
}

}  // namespace

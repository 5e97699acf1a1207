// Input that means harm, input that is damaged, and output that does not fit.
#include <gtest/gtest.h>

#include "cpu_time.h"
#include "xml_config.h"

namespace {

using namespace test::xmldoc;

std::string repeated(const std::string &s, size_t n) {
  std::string all;
  for (size_t i = 0; i < n; ++i) all += s;
  return all;
}

class XmlHostile : public testing::Test {
 protected:
  void SetUp() override {
    const std::vector<FormatNode> nodes = {
        field("Id", "psKind=\"attribute\" psName=\"p:id\" nMandatory=\"1\""),
        group("G", "psName=\"p:g\"", {field("Ccy", "psKind=\"attribute\""), field("Amt", "psKind=\"text\"")}),
        loop("L", "", "psWrapper=\"ls\"",
             {field("A", "nMaxLen=\"8\""), loop("N", "psSpace=\"collapse\"", "", {})})};
    const std::string sCommon = "psRoot=\"M\" psNamespace=\"urn:m\" psPrefixes=\"p=urn:p\"";
    m_config.message("Strict", sCommon, nodes);
    m_config.message("Skip", sCommon + " psUnknown=\"skip\" psInputEncodings=\"GB18030 windows-1252\"",
                     nodes);
    m_config.message("Gb", sCommon + " psEncoding=\"GB18030\" nIndent=\"2\" nFinalLineFeed=\"1\"", nodes);
    m_config.message("Low", sCommon + " nMaxDepth=\"4\" nMaxAttributes=\"3\" psUnknown=\"skip\"", nodes);
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  XmlConfig m_config;
};

// Every kind of markup and of text, as the plug-in itself writes it.
const std::string kGood =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><M xmlns=\"urn:m\" xmlns:p=\"urn:p\" "
    "p:id=\"1&amp;&#9;\xC3\xA9\">"
    "<p:g Ccy=\"USD\">1&lt;2 \xE4\xB8\xAD</p:g><ls><L><A>a</A><N>x y</N><N/></L><L/></ls></M>";

TEST_F(XmlHostile, ADoctypeIsRefused) {
  for (const char *const psDoctype :
       {"<!DOCTYPE M>", "<!DOCTYPE M SYSTEM 'file:///etc/passwd'>", "<!DOCTYPE M [<!ENTITY a 'b'>]>",
        "<!DOCTYPE M PUBLIC 'x' 'http://127.0.0.1/x.dtd' [<!ATTLIST M a CDATA 'b'>]>"}) {
    test::clearLog();
    EXPECT_EQ(parse("Skip", "<!--c-->" + std::string(psDoctype) + "<M xmlns='urn:m'/>"), nullptr);
    EXPECT_TRUE(
        told("Offset[8]: expected no DOCTYPE, found <!DOCTYPE M. Remove it: entities and external "
             "definitions are never "
             "read."))
        << told();
  }
}

TEST_F(XmlHostile, EntitiesThatMultiplyAreNeverExpanded) {
  std::string s = "<!DOCTYPE M [<!ENTITY a0 'ha'>";
  for (int i = 1; i < 40; ++i) {
    const std::string sOld = "&a" + std::to_string(i - 1) + ";";
    s += "<!ENTITY a" + std::to_string(i) + " '" + repeated(sOld, 10) + "'>";
  }
  const double begin = test::cpuSeconds();
  EXPECT_EQ(parse("Skip", s + "]><M xmlns='urn:m'>&a39;</M>"), nullptr);
  EXPECT_LT(test::cpuSeconds() - begin, 1);
  EXPECT_TRUE(told("expected no DOCTYPE")) << told();
  EXPECT_EQ(parse("Skip", "<M xmlns='urn:m' xmlns:p='urn:p' p:id='1'>&a;</M>"), nullptr);
  EXPECT_TRUE(told("found undefined entity in line 1, column 43: \"&a;</M>\". Write the character itself"))
      << told();
}

TEST_F(XmlHostile, DepthIsLimitedAlsoInsideWhatIsPassedOver) {
  const std::string sHead = "<M xmlns='urn:m' xmlns:p='urn:p' p:id='1'>";
  EXPECT_NE(parse("Low", sHead + "<x><x><x/></x></x></M>"), nullptr) << told();
  EXPECT_EQ(parse("Low", sHead + "<x><x><x><x/></x></x></x></M>"), nullptr);
  EXPECT_TRUE(
      told("Offset[51]: expected at most 4 open elements, found one more. Raise nMaxDepth of XmlMsg."))
      << told();
  EXPECT_NE(parse("Skip", sHead + repeated("<x>", 63) + repeated("</x>", 63) + "</M>"), nullptr) << told();
  test::clearLog();
  EXPECT_EQ(parse("Skip", sHead + repeated("<x>", 2000000)), nullptr);
  EXPECT_TRUE(told("expected at most 64 open elements")) << told();
}

TEST_F(XmlHostile, AttributesAndNamespaceDeclarationsAreLimited) {
  EXPECT_NE(parse("Low", "<M xmlns='urn:m' xmlns:p='urn:p' p:id='1'/>"), nullptr) << told();
  EXPECT_EQ(parse("Low", "<M xmlns='urn:m' xmlns:p='urn:p' p:id='1' x=''/>"), nullptr);
  EXPECT_TRUE(told("Offset[0]: expected at most 3 attributes, found 4. Raise nMaxAttributes of XmlMsg."))
      << told();
  std::string sBomb = "<M xmlns='urn:m' xmlns:p='urn:p' p:id='1'><x";
  for (int i = 0; i < 100000; ++i) sBomb += " a" + std::to_string(i) + "=''";
  test::clearLog();
  EXPECT_EQ(parse("Skip", sBomb + "/></M>"), nullptr);
  EXPECT_TRUE(told("expected at most 64 attributes, found ") && told(" before the end of the tag."))
      << told();
  std::string sSpaces = "<M xmlns='urn:m' xmlns:p='urn:p' p:id='1'><x";
  for (int i = 0; i < 100000; ++i) sSpaces += " xmlns:a" + std::to_string(i) + "='u'";
  test::clearLog();
  EXPECT_EQ(parse("Skip", sSpaces + "/></M>"), nullptr);
  EXPECT_TRUE(told("expected at most 64 attributes, found ") && told(" before the end of the tag."))
      << told();
}

TEST_F(XmlHostile, ANamespaceUriIsLimited) {
  const std::string sHead = "<M xmlns='urn:m' xmlns:p='urn:p' p:id='1'><x xmlns:q='";
  for (const char *const psBehind : {"", "<!-- -->"}) {
    const std::string sTail = std::string("' q:a='1'/></M>") + psBehind;
    EXPECT_NE(parse("Skip", sHead + std::string(1024, 'u') + sTail), nullptr) << told();
    test::clearLog();
    EXPECT_EQ(parse("Skip", sHead + std::string(1025, 'u') + sTail), nullptr);
    EXPECT_TRUE(
        told("Offset[42]: expected a namespace URI of at most 1024 bytes, found one of 1025. Shorten it."))
        << told();
  }
}

// Whichever of the two parsers reads it.
TEST_F(XmlHostile, NamespacesOfAttributesAreLimitedTogetherByTheDocumentsBytes) {
  const std::string sHead =
      "<M xmlns='urn:m' xmlns:p='urn:p' p:id='1'><x xmlns:q='" + std::string(1024, 'u') + "'>";
  std::string sTag = "<a";
  for (int i = 0; i < 60; ++i) sTag += " q:a" + std::to_string(i) + "=''";
  sTag += "/>";
  for (const std::string sTail : {"</x></M>", "</x></M><!-- -->"}) {
    const auto document = [&](size_t nTags) { return sHead + repeated(sTag, nTags) + sTail; };
    const auto most = [&](size_t nTags) { return 1048576 + 16 * document(nTags).size(); };
    size_t nTags = 1;
    while (5 + (nTags + 1) * 60 * 1024 <= most(nTags + 1)) ++nTags;
    EXPECT_NE(parse("Skip", document(nTags)), nullptr) << told();
    test::clearLog();
    EXPECT_EQ(parse("Skip", document(nTags + 1)), nullptr);
    const size_t nOffset = sHead.size() + nTags * sTag.size();
    EXPECT_TRUE(told("Offset[" + std::to_string(nOffset) +
                     "]: expected namespaces of attributes of at most " + std::to_string(most(nTags + 1)) +
                     " bytes, counted for each attribute, found more. Shorten the namespaces."))
        << told();
  }
}

// A document is parsed in pieces: tags, texts and characters of several bytes are cut at their ends.
TEST_F(XmlHostile, LongDocumentsAreReadAlikeWhereverTheirPiecesEnd) {
  const std::string sHead = "<M xmlns='urn:m' xmlns:p='urn:p' p:id='1'><p:g Ccy='";
  for (size_t nPad = 65490; nPad < 65560; ++nPad) {
    const std::string sText = std::string(nPad, 'x') + "\xE4\xB8\xAD=\"&amp;\xC3\xA9";
    const Document document = parse("Strict", sHead + "USD'>" + sText + "</p:g><ls><L><A>a</A></L></ls></M>");
    ASSERT_NE(document, nullptr) << nPad << told();
    EXPECT_EQ(get(document, "Amt"), std::string(nPad, 'x') + "\xE4\xB8\xAD=\"&\xC3\xA9");
    const Document attribute = parse("Strict", sHead + std::string(nPad, '=') + "'>1</p:g></M>");
    ASSERT_NE(attribute, nullptr) << nPad << told();
    EXPECT_EQ(get(attribute, "Ccy").size(), nPad);
  }
  EXPECT_EQ(parse("Strict", sHead + std::string(300000, 'x') + "'>1</p:g><no/></M>"), nullptr);
  const size_t nOffset = sHead.size() + 300000 + std::string("'>1</p:g>").size();
  EXPECT_TRUE(told("Offset[" + std::to_string(nOffset) + "]: expected p:g, ls in <M>, found element no."))
      << told();
}

TEST_F(XmlHostile, WhatComesAfterTheDocumentIsRefused) {
  for (const char *const psTail : {"<M/>", "x", "&#32;", "<![CDATA[]]>", "<?xml version='1.0'?>"}) {
    EXPECT_EQ(parse("Strict", kGood + psTail), nullptr) << psTail;
  }
  EXPECT_EQ(parse("Strict", kGood + std::string(1, '\0')), nullptr);
  EXPECT_NE(parse("Strict", kGood + "\r\n <!-- c --><?p i?>\n"), nullptr) << told();
}

TEST_F(XmlHostile, NothingAndNearlyNothingIsRefused) {
  for (const std::string &s :
       {std::string(), std::string(" "), std::string("<"), std::string("M"), std::string(4, '\0'),
        std::string("<?xml version='1.0'?>"), std::string("\xEF\xBB\xBF"), std::string("\xFF\xFE")}) {
    test::clearLog();
    EXPECT_EQ(parse("Strict", s), nullptr);
    EXPECT_TRUE(told("expected well-formed XML, found ")) << told();
  }
}

TEST_F(XmlHostile, ADocumentCutAtAnyByteIsRefusedInOneLineThatSaysWhere) {
  ASSERT_NE(parse("Strict", kGood), nullptr) << told();
  for (size_t n = 0; n < kGood.size(); ++n) {
    test::clearLog();
    EXPECT_EQ(parse("Strict", kGood.substr(0, n)), nullptr) << n;
    EXPECT_TRUE(told("Msg[Strict] Field[") && told("] Offset[") && told("]: expected ")) << n << told();
  }
}

// Whatever parses must be written, and what is written must come back.
void roundTrip(const std::string &sName, const std::string &sBytes) {
  const Document document = parse(sName, sBytes);
  if (document == nullptr) return;
  const std::string s = generate(document);
  ASSERT_NE(s, "failed") << sBytes << told();
  const Document again = parse(sName, s);
  ASSERT_NE(again, nullptr) << s << "\nfrom\n" << sBytes << told();
  EXPECT_EQ(generate(again), s);
}

TEST_F(XmlHostile, EveryByteMayBeAnythingWithoutACrash) {
  ASSERT_EQ(generate(parse("Strict", kGood)), kGood) << told();
  for (size_t i = 0; i < kGood.size(); ++i) {
    for (const int nFlip : {0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80, 0xFF}) {
      std::string s = kGood;
      s[i] = static_cast<char>(s[i] ^ nFlip);
      roundTrip("Strict", s);
      roundTrip("Skip", s);
    }
    test::clearLog();
  }
}

TEST_F(XmlHostile, EveryByteMayBeMissingOrDoubled) {
  for (size_t i = 0; i < kGood.size(); ++i) {
    roundTrip("Skip", kGood.substr(0, i) + kGood.substr(i + 1));
    roundTrip("Skip", kGood.substr(0, i) + kGood[i] + kGood.substr(i));
    roundTrip("Gb", kGood.substr(kGood.find("?>") + 2, i));
    test::clearLog();
  }
}

TEST_F(XmlHostile, AnyEncodingMayBeDeclaredOverAnyBytes) {
  for (const char *const psEncoding :
       {"UTF-8", "UTF-16", "ISO-8859-1", "US-ASCII", "GB18030", "windows-1252", "UTF-32", "x", ""}) {
    std::string s = kGood;
    s.replace(s.find("UTF-8"), 5, psEncoding);
    for (size_t i = 0; i < s.size(); ++i) {
      std::string sDamaged = s;
      sDamaged[i] = static_cast<char>(0x80 + i % 0x80);
      roundTrip("Skip", sDamaged);
    }
    test::clearLog();
  }
}

// An encoding that is found too late would leave the document in the one that is assumed without it.
TEST_F(XmlHostile, ADeclarationThatHidesItsEncodingIsRefused) {
  for (const std::string &sHidden :
       {"encoding=" + std::string(600, ' ') + "'GB18030'", "encoding='" + std::string(600, 'E') + "'",
        std::string(600, '\n') + "encoding='UTF-32'"}) {
    std::string s = kGood;
    s.replace(s.find("encoding=\"UTF-8\""), std::string("encoding=\"UTF-8\"").size(), sHidden);
    test::clearLog();
    EXPECT_EQ(parse("Skip", s), nullptr) << sHidden;
    EXPECT_TRUE(told("Offset[0]: expected an XML declaration of at most 512 bytes, found a longer one."))
        << told();
  }
}

TEST_F(XmlHostile, EverySmallerOutputBufferIsRefusedAtTheFieldWhereRoomRanOut) {
  for (const char *const psName : {"Strict", "Gb"}) {
    const Document document = parse(psName, kGood);
    ASSERT_NE(document, nullptr) << told();
    const std::string sWhole = generate(document);
    ASSERT_NE(sWhole, "failed");
    EXPECT_EQ(generate(document, sWhole.size()), sWhole);
    for (size_t n = 0; n < sWhole.size(); ++n) {
      test::clearLog();
      EXPECT_EQ(generate(document, n), "failed") << n;
      EXPECT_TRUE(told("]: expected room for ") && told("left in the buffer. Give a larger output buffer."))
          << told();
    }
  }
  const Document document = parse("Strict", kGood);
  const std::string sWhole = generate(document);
  test::clearLog();
  EXPECT_EQ(generate(document, sWhole.find("USD") + 1), "failed");
  EXPECT_TRUE(told("Msg[Strict] Field[G.Ccy] Offset[")) << told();
}

TEST_F(XmlHostile, TheLengthProducedIsUntouchedOnFailure) {
  const Document document = parse("Strict", kGood);
  ASSERT_NE(document, nullptr);
  char sRoom[8];
  int nLen = sizeof sRoom;
  EXPECT_NE(cvtGenMessage(document.get(), sRoom, &nLen), 0);
  EXPECT_EQ(nLen, static_cast<int>(sizeof sRoom));
  EXPECT_EQ(document->nNowLen, 0);
}

TEST_F(XmlHostile, AFailedDocumentLeavesNothingBehindForTheNext) {
  for (size_t n = 0; n < kGood.size(); n += 3) {
    parse("Strict", kGood.substr(0, n));
    const Document document = parse("Strict", kGood);
    ASSERT_NE(document, nullptr) << told();
    EXPECT_EQ(generate(document), kGood);
    test::clearLog();
  }
}

TEST_F(XmlHostile, ALongTextAndManyRepetitionsTakeTimeInProportion) {
  const std::string sHead = "<M xmlns='urn:m' xmlns:p='urn:p' p:id='1'><p:g>";
  const std::string sText = repeated("a&amp;\n", 400000);
  const double begin = test::cpuSeconds();
  const Document document = parse("Strict", sHead + sText + "</p:g></M>");
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(get(document, "Amt").size(), 1200000U);
  EXPECT_LT(test::cpuSeconds() - begin, 5);
}

}  // namespace

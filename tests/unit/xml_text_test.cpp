// The text of an element that has elements in it, too: a value, in one place; white space beside the elements is not.
#include <gtest/gtest.h>

#include "xml_config.h"

namespace {

using namespace test::xmldoc;

// With the scanner, and with what makes expat read the document.
class XmlTextBesideElements : public testing::TestWithParam<const char *> {
 protected:
  void load(const std::string &sMsg, const std::string &sText = "") {
    m_config.message("M", "nDeclaration=\"0\" " + sMsg,
                     {group("G", "",
                            {field("T", "psKind=\"text\" " + sText), field("A"), field("B"),
                             group("H", "", {field("U", "psKind=\"text\"")})})});
    ASSERT_EQ(m_config.start(), 0) << told();
  }
  // What T is, in bars, or the fault.
  static std::string text(const std::string &sInside) {
    test::clearLog();
    const Document document = parse("M", GetParam() + ("<M><G>" + sInside + "</G></M>"));
    return document == nullptr ? fault() : "|" + get(document, "T") + "|";
  }
  static bool refused(const std::string &sInside) { return text(sInside).find('|') == std::string::npos; }

  XmlConfig m_config;
};

TEST_P(XmlTextBesideElements, InTwoPlacesIsRefused) {
  load("");
  const std::string sFault = text("12<A>x</A>50");
  EXPECT_NE(sFault.find("Field[G.T]"), std::string::npos) << sFault;
  EXPECT_NE(sFault.find("expected the text of <G> in one place, found text \"50\"."), std::string::npos)
      << sFault;
  for (const std::string s : {"12<A/>\n 50", "1<A>x</A><B>y</B>2", "1<A/>\r\n<B/>2", "1&amp;2<A/>3",
                              "1<A/>&#50;", "1<A/><![CDATA[2]]>", "1<H>u</H>2", "\n1<A/>\n<H/>\n2\n"}) {
    EXPECT_TRUE(refused(s)) << s;
  }
}

TEST_P(XmlTextBesideElements, InTwoPlacesIsRefusedAlsoBesideWhatIsPassedOver) {
  load("psUnknown=\"skip\"");
  EXPECT_TRUE(refused("12<x>9</x>50"));
  EXPECT_TRUE(refused("12<x>9<A/></x><x/>50"));
  EXPECT_EQ(text("12<x>9</x>"), "|12|");
  EXPECT_EQ(text("<x>9<y/></x>50"), "|50|");
  EXPECT_EQ(text("\n <x>9</x>\n "), "||");
}

TEST_P(XmlTextBesideElements, IsTakenAsItStands) {
  load("");
  for (const auto &[sInside, sText] : std::vector<std::pair<std::string, std::string>>{
           {"12", "12"},
           {"12<A>x</A>", "12"},
           {"<A>x</A>12", "12"},
           {"<A>x</A>12<B>y</B>", "12"},
           {"<A>x</A> 12 <B>y</B>\n", " 12 "},
           {"\n <A>x</A>\n <B>y</B>\n 12\n ", "\n 12\n "},
           {"12<A>x</A>\n  <B>y</B>\n", "12"},
           {"<A/> 1&amp;2 <B/>", " 1&2 "},
           {"<A/>\r\n1<!--c-->2<![CDATA[ 3]]><B/>", "\n12 3"},
           {"&#32;1<A/>", " 1"},
           {"12<H>u</H>", "12"},
           {"<H>u</H>\n12", "\n12"},
       }) {
    EXPECT_EQ(text(sInside), "|" + sText + "|") << sInside;
  }
}

TEST_P(XmlTextBesideElements, IsNotTheLayoutOfTheDocument) {
  load("");
  for (const std::string s : {"\n ", "&#10; ", "<A/>", "\n  <A/>\n", "\n  <A>x</A>\n  <B>y</B>\n",
                              "\r\n<A/>\r\n", " &#32;<A/>", "<A/>&#32;", "\n  <H>u</H>\n  <A/>\n"}) {
    EXPECT_EQ(text(s), "||") << s;
  }
}

TEST_P(XmlTextBesideElements, ThatIsMandatoryIsNotTheLayoutEither) {
  load("", "nMandatory=\"1\"");
  EXPECT_TRUE(refused("\n    <A>x</A>\n  "));
  EXPECT_EQ(text("\n    <A>x</A>\n  7"), "|\n  7|");
}

INSTANTIATE_TEST_SUITE_P(Parsers, XmlTextBesideElements, testing::Values("", "<?pi x?>"));

}  // namespace

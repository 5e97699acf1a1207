// Which documents the scanner takes, and that those which it leaves are read all the same.
#include "xml/scanner.h"

#include <gtest/gtest.h>

#include "xml_config.h"

namespace {

using namespace test::xmldoc;
using cvt::xml::Scanner;

// Whether the scanner comes to the document's end.
bool takes(std::string_view bytes, size_t maxAttributes = 64) {
  static cvt::xml::Room room(1 << 16);
  static Scanner::Memory memory;
  cvt::xml::Plan plan;
  plan.maxAttributes = maxAttributes;
  Scanner scanner(plan, bytes, room, memory);
  for (;;) {
    const Scanner::Token token = scanner.next();
    if (token == Scanner::Token::End) return true;
    if (token == Scanner::Token::NotPlain) return false;
  }
}

TEST(XmlScanner, TakesPlainDocuments) {
  for (const char *plain : {
           "<a/>",
           "<a></a >",
           "\xEF\xBB\xBF<?xml version=\"1.0\"?>\r\n<a/>\n ",
           "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>",
           "<a b='1' c = \"2>'\"/>",
           "<a>x &lt;&gt;&amp;&quot;&apos;&#65;&#x1F600; ]] > y</a>",
           "<a b='&#10;\t&lt;\n'/>",
           "<a>\r\n\r<b/>\r</a>",
           "<a><!-- - <b> & ]]> --><!----></a>",
           "<a><![CDATA[<b> & ]] > ]]]></a>",
           "<a>Zo\xC3\xAB \xE4\xB8\xAD \xF0\x9D\x84\x9E</a>",
           "<p:a xmlns:p='u' p:b='1' b='2'><p:c/></p:a>",
           "<a xmlns='u'><b xmlns=''/><c xml:lang='en'/></a>",
       }) {
    EXPECT_TRUE(takes(plain)) << plain;
  }
}

TEST(XmlScanner, LeavesWhatIsNoDocumentOrNotPlain) {
  for (const char *other : {
           "",
           " ",
           "x",
           "<",
           "<a",
           "<a ",
           "<a b",
           "<a b=",
           "<a b='",
           "<a b='1'",
           "<a/",
           "<a>",
           "<a></",
           "<a></a",
           "</a>",
           "<a></b>",
           "<a></ab>",
           "<ab></a>",
           "<a><b></a></b>",
           "<a/><b/>",
           "<a/>x",
           "x<a/>",
           "<a b/>",
           "<a b=1/>",
           "<a b='1'c='2'/>",
           "<a b='1' b='2'/>",
           "<a b='<'/>",
           "<a b='&'/>",
           "<a b='&x;'/>",
           "<a>&x;</a>",
           "<a>&#0;</a>",
           "<a>&#xD800;</a>",
           "<a>&#1114112;</a>",
           "<a>&#;</a>",
           "<a>&lt</a>",
           "<a>]]></a>",
           "<a>\x01</a>",
           "<a>\xFF</a>",
           "<a>\xC0\xAF</a>",
           "<a>\xEF\xBF\xBE</a>",
           "<a>\xED\xA0\x80</a>",
           "<a b='\r'/>",
           "<a b='\x02'/>",
           "<a><!-- -- --></a>",
           "<a><!-- --->",
           "<a><!--",
           "<a><![CDATA[",
           "<a><![CDATA[\r]]></a>",
           "<1/>",
           "<:a/>",
           "<a:/>",
           "<a:b:c xmlns:a='u'/>",
           "<p:a/>",
           "<a p:b='1'/>",
           "<a xmlns:p=''/>",
           "<a xmlns:p='u' xmlns:p='v'/>",
           "<a xmlns:xml='u'/>",
           "<a xmlns:p='http://www.w3.org/2000/xmlns/'/>",
           "<a xmlns:p='u' xmlns:q='u' p:b='' q:b=''/>",
           "<\xC3\xA4/>",
           "<a><?pi x?></a>",
           "<?pi x?><a/>",
           "<!-- x --><a/>",
           "<!DOCTYPE a><a/>",
           "<a/><!-- x -->",
           "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a/>",
           "<?xml version=\"1.0\"?><?xml version=\"1.0\"?><a/>",
           " <?xml version=\"1.0\"?><a/>",
       }) {
    EXPECT_FALSE(takes(other)) << other;
  }
  EXPECT_TRUE(takes("<a b='1' xmlns:p='u'/>", 2));
  EXPECT_FALSE(takes("<a b='1' c='2' xmlns:p='u'/>", 2));
}

TEST(XmlScanner, CommentsWithoutEndTakeNoStack) {
  std::string many = "<a>";
  for (int i = 0; i < 1000000; ++i) many += "<!---->";
  EXPECT_TRUE(takes(many + "</a>"));
}

// What the scanner has read of such a document is forgotten before it is read once more.
TEST(XmlScanner, ADocumentThatIsNotPlainAtItsEndIsReadOnce) {
  XmlConfig config;
  config.message("M", "nDeclaration=\"0\"",
                 {field("A"), loop("L", "", "", {field("B")}), group("G", "", {field("C")})});
  ASSERT_EQ(config.start(), 0) << told();
  const std::string plain = "<M><A>1</A><L><B>2</B></L><L><B>3</B></L><G><C>4</C></G></M>";
  for (const char *behind : {"<?pi?>", "<!-- -->"}) {
    const Document document = parse("M", plain + behind);
    ASSERT_NE(document, nullptr) << told();
    EXPECT_EQ(generate(document), plain);
  }
  EXPECT_EQ(parse("M", plain + "<N/>"), nullptr);
  EXPECT_TRUE(told("found junk after document element in line 1, column 61")) << told();
}

}  // namespace

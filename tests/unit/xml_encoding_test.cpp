#include <gtest/gtest.h>
#include <iconv.h>

#include "xml_config.h"

namespace {

using namespace test::xmldoc;

std::string converted(const std::string &sTo, const std::string &s) {
  const iconv_t tool = iconv_open(sTo.c_str(), "UTF-8");
  std::string out(4 * s.size() + 16, '\0');
  char *psIn = const_cast<char *>(s.data());
  char *psOut = out.data();
  size_t nIn = s.size();
  size_t nOut = out.size();
  EXPECT_EQ(iconv(tool, &psIn, &nIn, &psOut, &nOut), 0U) << sTo;
  iconv_close(tool);
  out.resize(out.size() - nOut);
  return out;
}

std::string declaration(const std::string &sEncoding) {
  return "<?xml version=\"1.0\" encoding=\"" + sEncoding + "\"?>";
}

void message(XmlConfig &config, const std::string &sName, const std::string &sAttributes) {
  config.message(sName, sAttributes, {field("A", "psKind=\"attribute\""), field("B")});
}

TEST(XmlEncoding, EveryConfiguredEncodingMakesTheRoundTrip) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"UTF-8", "é 中文 😀"},     {"windows-1252", "é €5 “q”"}, {"ISO-8859-1", "é ÿ"},
      {"ISO-8859-15", "é €"},    {"GB18030", "é 中文 😀"},      {"GBK", "中文"},
      {"Windows-31J", "日本ソ"}, {"EUC-KR", "한국"},           {"Big5", "中文功"},
      {"US-ASCII", "plain"},     {"windows-1251", "Жук"}};
  XmlConfig config;
  int n = 0;
  for (const auto &each : cases) {
    message(config, "M" + std::to_string(n++), "psRoot=\"M\" psEncoding=\"" + each.first + "\"");
  }
  ASSERT_EQ(config.start(), 0) << told();
  n = 0;
  for (const auto &[sEncoding, sText] : cases) {
    const std::string sName = "M" + std::to_string(n++);
    const std::string s =
        converted(sEncoding, declaration(sEncoding) + "<M A=\"" + sText + "\"><B>" + sText + "</B></M>");
    const Document document = parse(sName, s);
    ASSERT_NE(document, nullptr) << sEncoding << told();
    EXPECT_EQ(get(document, "A"), sText);
    EXPECT_EQ(get(document, "B"), sText);
    EXPECT_EQ(generate(document), s) << sEncoding;
  }
}

TEST(XmlEncoding, WhatTheEncodingLacksIsWrittenAsAReferenceAndReadBack) {
  XmlConfig config;
  message(config, "Win", "psEncoding=\"windows-1252\" nDeclaration=\"0\"");
  message(config, "Ascii", "psEncoding=\"US-ASCII\"");
  ASSERT_EQ(config.start(), 0) << told();
  const std::string sText = "é中😀x";
  const Document win = create("Win");
  set(win, "A", sText);
  set(win, "B", sText);
  const std::string s = generate(win);
  EXPECT_EQ(s, "<Win A=\"\xE9&#20013;&#128512;x\"><B>\xE9&#20013;&#128512;x</B></Win>");
  // Without a declaration the definition's own encoding holds.
  const Document again = parse("Win", s);
  ASSERT_NE(again, nullptr) << told();
  EXPECT_EQ(get(again, "B"), sText);
  const Document ascii = create("Ascii");
  set(ascii, "B", sText);
  EXPECT_EQ(generate(ascii), declaration("US-ASCII") + "<Ascii><B>&#233;&#20013;&#128512;x</B></Ascii>");
}

TEST(XmlEncoding, Utf16AndByteOrderMarksAreRead) {
  XmlConfig config;
  message(config, "M", "");
  ASSERT_EQ(config.start(), 0) << told();
  const std::string sBody = "<M><B>é中😀</B></M>";
  for (const std::string &s :
       {"\xEF\xBB\xBF" + sBody, "\xEF\xBB\xBF" + declaration("UTF-8") + sBody,
        "\xFF\xFE" + converted("UTF-16LE", declaration("UTF-16") + sBody),
        "\xFE\xFF" + converted("UTF-16BE", declaration("UTF-16") + sBody),
        "\xFE\xFF" + converted("UTF-16BE", sBody), converted("UTF-16LE", declaration("UTF-16") + sBody)}) {
    const Document document = parse("M", s);
    ASSERT_NE(document, nullptr) << told();
    EXPECT_EQ(get(document, "B"), "é中😀");
  }
}

TEST(XmlEncoding, AnEncodingIsAcceptedOnInputWhenTheDefinitionNamesIt) {
  XmlConfig config;
  message(config, "M", "psInputEncodings=\"windows-1252 GB18030\"");
  message(config, "N", "");
  ASSERT_EQ(config.start(), 0) << told();
  const std::string s = declaration("gb18030") + "<M><B>" + converted("GB18030", "中😀") + "</B></M>";
  const Document document = parse("M", s);
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(get(document, "B"), "中😀");
  EXPECT_EQ(parse("N", s), nullptr);
  EXPECT_TRUE(told(
      "Msg[N] Field[] Offset[30]: expected an encoding out of UTF-8, UTF-16, ISO-8859-1, US-ASCII, found "
      "\"gb18030\". Add it to psInputEncodings of XmlMsg."))
      << told();
  EXPECT_EQ(parse("N", declaration("../../etc/x") + "<N/>"), nullptr);
  EXPECT_TRUE(told("found \"../../etc/x\"")) << told();
}

TEST(XmlEncoding, AnInstructionThatBeginsLikeADeclarationIsNone) {
  XmlConfig config;
  message(config, "M", "psEncoding=\"GB18030\"");
  ASSERT_EQ(config.start(), 0) << told();
  const std::string sBody = "<M><B>" + converted("GB18030", "中") + "</B></M>";
  for (const std::string &sData :
       {std::string("encoding=\"windows-1252\""), "href=\"" + std::string(600, 'h') + "\""}) {
    const Document document = parse("M", "<?xml-stylesheet type=\"text/xsl\" " + sData + "?>" + sBody);
    ASSERT_NE(document, nullptr) << told();
    EXPECT_EQ(get(document, "B"), "中");
  }
  EXPECT_EQ(parse("M", "<?xml"), nullptr);
  EXPECT_TRUE(told("expected well-formed XML, found ")) << told();
}

TEST(XmlEncoding, ADeclarationIsLimitedOnlyWhereItIsWhatTellsTheEncoding) {
  XmlConfig config;
  message(config, "M", "");
  ASSERT_EQ(config.start(), 0) << told();
  const std::string s = "<?xml version=\"1.0\"" + std::string(600, ' ') + "?><M><B>é</B></M>";
  EXPECT_EQ(parse("M", s), nullptr);
  EXPECT_TRUE(told("expected an XML declaration of at most 512 bytes, found a longer one.")) << told();
  EXPECT_NE(parse("M", "\xEF\xBB\xBF" + s), nullptr) << told();
  EXPECT_NE(parse("M", converted("UTF-16LE", s)), nullptr) << told();
}

TEST(XmlEncoding, DamagedTextIsRefusedAtItsByteInTheDocumentAsItCame) {
  XmlConfig config;
  message(config, "M", "psInputEncodings=\"GB18030\"");
  ASSERT_EQ(config.start(), 0) << told();
  const std::string sHead = declaration("GB18030") + "<M><B>" + converted("GB18030", "中文");
  EXPECT_EQ(parse("M", sHead + "\xFF</B></M>"), nullptr);
  EXPECT_TRUE(told("Offset[" + std::to_string(sHead.size()) +
                   "]: expected valid characters in GB18030, found \"\\xFF</B\"."))
      << told();
  // An error behind converted characters is still told at its place in the input.
  EXPECT_EQ(parse("M", sHead + "</C></M>"), nullptr);
  EXPECT_TRUE(told("Offset[" + std::to_string(sHead.size() + 2) +
                   "]: expected well-formed XML, found mismatched tag"))
      << told();
  EXPECT_EQ(parse("M", sHead + "</B><C/></M>"), nullptr);
  EXPECT_TRUE(told("Offset[" + std::to_string(sHead.size() + 4) + "]: expected B in <M>, found element C."))
      << told();
  EXPECT_EQ(parse("M", "<M><B>\xC3(</B></M>"), nullptr);
  EXPECT_TRUE(
      told("Offset[6]: expected well-formed XML, found not well-formed (invalid token) in line 1, column 7: "
           "\"\\xC3(</B></M>\""))
      << told();
}

TEST(XmlEncoding, NamesMayHaveAnyLetters) {
  XmlConfig config;
  config.message("M", "psEncoding=\"GB18030\"",
                 {field("A", "psName=\"金额\""), field("B", "psKind=\"attribute\" psName=\"Ö\"")});
  ASSERT_EQ(config.start(), 0) << told();
  const std::string s = converted("GB18030", declaration("GB18030") + "<M Ö=\"2\"><金额>1</金额></M>");
  const Document document = parse("M", s);
  ASSERT_NE(document, nullptr) << told();
  EXPECT_EQ(generate(document), s);
}

// What a definition may not ask for.
struct Refusal {
  const char *sAttributes;
  const char *sLine;
};
class XmlEncodingRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(XmlEncodingRefusal, FailsTheDefinition) {
  XmlConfig config;
  message(config, "M", GetParam().sAttributes);
  EXPECT_NE(config.start(), 0);
  EXPECT_TRUE(told(GetParam().sLine)) << told();
  EXPECT_TRUE(told("msg/M.xml:2]: ")) << told();
}

INSTANTIATE_TEST_SUITE_P(
    , XmlEncodingRefusal,
    testing::Values(
        Refusal{"psEncoding=\"UTF-9\"",
                "expected an encoding that iconv knows in psEncoding, found \"UTF-9\"."},
        Refusal{"psEncoding=\"\"", "expected an encoding that iconv knows in psEncoding, found \"\"."},
        Refusal{"psEncoding=\"UTF-8//IGNORE\"", "expected an encoding that iconv knows in psEncoding"},
        Refusal{"psEncoding=\"UTF-16\"",
                "without shift states that contains ASCII in psEncoding, found UTF-16. Write "
                "UTF-8; UTF-16 can be read but not written."},
        Refusal{"psEncoding=\"UTF-7\"", "without shift states"},
        Refusal{"psEncoding=\"IBM037\"", "without shift states"},
        Refusal{"psEncoding=\"ISO-2022-JP\"", "without shift states"},
        Refusal{"psInputEncodings=\"GBK IBM037\"",
                "expected encodings that contain ASCII in psInputEncodings, found IBM037."}));

TEST(XmlEncoding, ANameThatTheEncodingLacksFailsTheDefinition) {
  XmlConfig config;
  config.message("M", "psEncoding=\"windows-1252\"", {field("A", "psName=\"金额\"")});
  EXPECT_NE(config.start(), 0);
  EXPECT_TRUE(told("Node[A] File[")) << told();
  EXPECT_TRUE(told("expected names that windows-1252 has characters for, found \"<金额\".")) << told();
}

}  // namespace

// What the element of the function library's plug-in says, and what it may not say.
#include "std_config.h"

namespace {

using namespace test::xml;

class StdSettings : public test::StdTest {
 protected:
  // The first line of a start with these attributes.
  std::string refusal(const std::string &sAttributes) {
    plugAttributes(sAttributes);
    convert("C", {});
    EXPECT_EQ(start(), -1) << sAttributes;
    const std::string sLine = test::logTexts().empty() ? "no line" : test::logTexts()[0];
    again();
    return sLine;
  }
  std::string rootPlace() const { return "File[" + tree.path("All/root.xml") + ":1]"; }
};

TEST_F(StdSettings, AnAttributeThatIsNoneOfThemIsRefusedWithItsPlace) {
  const std::string sLine = refusal("nMaxResults='5'");
  EXPECT_EQ(sLine.find(rootPlace() + " Element[Plug] Attribute[nMaxResults]: expected one of psName, "), 0U)
      << sLine;
  EXPECT_NE(sLine.find("found nMaxResults. Write nMaxResult"), std::string::npos) << sLine;
}

TEST_F(StdSettings, AValueOutsideOfItsRangeIsRefused) {
  EXPECT_EQ(refusal("nMaxResult='0'"),
            rootPlace() +
                " Element[Plug] Attribute[nMaxResult]: expected a number from 1 to 2147483646, found \"0\".");
}

TEST_F(StdSettings, NothingStandsInsideTheElement) {
  sMoreSections = "<Plug __ID='ptPlug' psBasePlugPath='" CVT2_PLUGIN_DIR
                  "/'><Plug __ID='ptPlugs' psName='std'><Table/></Plug></Plug>";
  convert("C", {});
  EXPECT_EQ(start(), -1);
  EXPECT_EQ(test::logTexts()[0],
            rootPlace() +
                " Element[Table]: expected nothing inside Plug, found Table. Write it behind that element");
}

TEST_F(StdSettings, ResultsAreNoLongerThanTheySay) {
  plugAttributes("nMaxResult='5'");
  load({callRule("concat", 2)});
  from.set("A", "abc").set("B", "de");
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(to.get("X"), "abcde");
  from.set("B", "def");
  EXPECT_EQ(run(), -1);
  EXPECT_EQ(test::logTexts()[0],
            "Func[concat]: expected a result of at most 5 bytes, found 6 bytes. Shorten the arguments.");
}

TEST_F(StdSettings, AResultCountsWithTheBytesThatItHasInTheEnd) {
  plugAttributes("nMaxResult='3'");
  convert("Decode", {callRule("base64Decode", 1)});
  convert("To", {callRule("toCharset", 2)});
  convert("From", {callRule("fromCharset", 2)});
  ASSERT_EQ(start(), 0);
  from = test::newMessage("In");
  to = test::newMessage("Out");
  const auto of = [&](const char *psConverter, const std::string &sText, const std::string &sSet = "") {
    from.set("A", sText).set("B", sSet);
    test::clearLog();
    return ConvertTest::run(psConverter, from, to) == 0 ? to.get("X") : test::logTexts()[0];
  };
  EXPECT_EQ(of("Decode", "Zm9v"), "foo");
  EXPECT_EQ(of("Decode", "Zm8="), "fo");
  EXPECT_EQ(
      of("Decode", "Zm9vYg=="),
      "Func[base64Decode]: expected a result of at most 3 bytes, found 4 bytes. Shorten the arguments.");
  for (const std::string sSet : {"UTF-8", "GB18030", "EUC-JP"}) {
    EXPECT_EQ(of("To", "abc", sSet), "abc") << sSet;
    EXPECT_EQ(of("From", "abc", sSet), "abc") << sSet;
  }
  EXPECT_EQ(of("To", "a", "UTF-16BE"), std::string("\0a", 2));
  EXPECT_EQ(
      of("From", "\xfc\xe9", "WINDOWS-1252"),
      "Func[fromCharset]: expected a result of at most 3 bytes, found a longer one. Shorten the arguments.");
  EXPECT_EQ(of("From",
               "\xfc"
               "1",
               "WINDOWS-1252"),
            "\xc3\xbc"
            "1");
  EXPECT_EQ(
      of("To", "ab", "UTF-16LE"),
      "Func[toCharset]: expected a result of at most 3 bytes, found a longer one. Shorten the arguments.");
  EXPECT_EQ(of("To", "\xe2\x82\xac", "ISO-8859-1"),
            "Func[toCharset] Arg[1] Len[3] Offset[0]: expected characters that the set has, found others.");
}

TEST_F(StdSettings, ALongTextIsConvertedUpToTheUsualLimit) {
  load({copy(func("length", {func("toCharset", {src("A"), src("B")})}), dst("X"))});
  for (const std::string sSet : {"UTF-8", "UTF-16LE", "GB18030"}) {
    from.set("A", std::string(300'000, 'a')).set("B", sSet);
    EXPECT_EQ(run(), 0) << sSet;
    EXPECT_EQ(to.get("X"), sSet == "UTF-16LE" ? "600000" : "300000") << sSet;
  }
  again();
  load({copy(func("length", {func("fromCharset", {src("A"), src("B")})}), dst("X"))});
  from.set("A", std::string(400'000, 'a')).set("B", "WINDOWS-1252");
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(to.get("X"), "400000");
}

TEST_F(StdSettings, ARestartForgetsThem) {
  plugAttributes("nMaxResult='1'");
  load({callRule("concat", 1)});
  again();
  plugAttributes("");
  load({callRule("concat", 1)});
  from.set("A", "abc");
  EXPECT_EQ(run(), 0);
}

}  // namespace

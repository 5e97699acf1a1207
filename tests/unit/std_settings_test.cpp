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

#include <gtest/gtest.h>

#include "json_config.h"

namespace {

using namespace test::json;

// A definition that must be refused, and a part of the line that says why.
struct Mistake {
  const char *sCase;
  std::string sAttributes;
  std::vector<FormatNode> nodes;
  std::string sLine;
};

void PrintTo(const Mistake &mistake, std::ostream *out) {
  *out << mistake.sCase;
}

class JsonDefinition : public testing::TestWithParam<Mistake> {};

TEST_P(JsonDefinition, IsRefusedWithThePlaceAndTheWayOut) {
  JsonConfig config;
  config.message("M", GetParam().sAttributes, GetParam().nodes);
  EXPECT_NE(config.start(), 0);
  EXPECT_TRUE(told(GetParam().sLine)) << told();
  EXPECT_TRUE(told("msg/M.xml:")) << told();
}

const std::vector<FormatNode> kPlain = {field("A")};
const std::string kPosition = "nPosition=\"1\"";

FormatNode nested(int nDepth) {
  return nDepth == 0 ? field("F") : group("G", "", {nested(nDepth - 1)});
}

FormatNode members(const std::vector<FormatNode> &body, const std::string &sValue = "") {
  return loop("L", sValue, "psForm=\"members\"", body);
}

INSTANTIATE_TEST_SUITE_P(
    , JsonDefinition,
    testing::Values(
        Mistake{"UnknownAttribute", "psRoots=\"m\"", kPlain,
                "Element[JsonMsg] Attribute[psRoots]: expected one of psRoot, "},
        Mistake{"UnknownWord", "psUnknown=\"keep\"", kPlain,
                "Attribute[psUnknown]: expected one of refuse, skip, found \"keep\"."},
        Mistake{"DepthOutOfRange", "nMaxDepth=\"1001\"", kPlain, "expected a number from 1 to 1000"},
        Mistake{"MembersOutOfRange", "nMaxMembers=\"10001\"", kPlain, "expected a number from 1 to 10000"},
        Mistake{"TooDeep",
                "nMaxDepth=\"3\"",
                {nested(3)},
                "expected at most 3 objects and arrays inside each other"},
        Mistake{"RootArrayOfAField", "psRoot=\"array\"", kPlain,
                "expected one loop and nothing else with psRoot=\"array\", found other nodes."},
        Mistake{"RootValueOfTwoFields",
                "psRoot=\"value\"",
                {field("A"), field("B")},
                "expected one field and nothing else with psRoot=\"value\""},
        Mistake{"RootValueThatMayBeAbsent",
                "psRoot=\"value\"",
                {field("A", "psNull=\"absent\"")},
                "expected psNull refuse or empty for a value that is no member, found absent."},
        Mistake{"RootOthers",
                "psRoot=\"value\"",
                {field("A", "psKind=\"others\"")},
                "expected psKind=\"member\" outside of objects"},
        Mistake{"SameName", "", {field("A", "psName=\"a\""), field("B", "psName=\"a\"")}, "Node[B] File["},
        Mistake{"TwoOthers",
                "",
                {field("A", "psKind=\"others\""), field("B", "psKind=\"others\"")},
                "expected one field with psKind=\"others\" in an object, found a second one."},
        Mistake{
            "NameOutsideOfMembers",
            "",
            {field("A", "psKind=\"name\"")},
            "expected psKind=\"name\" once, directly in a loop with psForm=\"members\", found it elsewhere."},
        Mistake{"NameInAGroupOfMembers",
                "",
                {members({field("N", "psKind=\"name\""), group("G", "", {field("A", "psKind=\"name\"")})})},
                "found it elsewhere."},
        Mistake{"TwoNames",
                "",
                {members({field("N", "psKind=\"name\""), field("A", "psKind=\"name\"")})},
                "found a second one."},
        Mistake{"MembersWithoutName",
                "",
                {members({field("A")})},
                "expected a field with psKind=\"name\" in a loop with psForm=\"members\", found none."},
        Mistake{"MembersWithoutChildren",
                "",
                {members({})},
                "expected children in a loop with psForm=\"members\", found none."},
        Mistake{"ValueOfTwoNodes",
                "",
                {members({field("N", "psKind=\"name\""), field("A"), field("B")}, "psForm=\"value\"")},
                "expected one node beside the name with psForm=\"value\", found 2."},
        Mistake{"ValueGroup",
                "",
                {group("G", "psForm=\"value\"", {field("A")})},
                "expected psForm object or tuple, found value."},
        Mistake{"OthersInATuple",
                "",
                {group("G", "psForm=\"tuple\"", {field("A", "psKind=\"others\"")})},
                "expected psKind=\"member\" outside of objects"},
        Mistake{"AbsentInATuple",
                "",
                {group("G", "psForm=\"tuple\"", {field("A", "psNull=\"absent\"")})},
                "expected psNull refuse or empty for a value that is no member"},
        Mistake{"AbsentInAnArray",
                "",
                {loop("L", "psNull=\"absent\"", "", {})},
                "expected psNull refuse or empty for a value that is no member"},
        Mistake{"KeptEmptyInAnArray",
                "",
                {loop("L", "nKeepEmpty=\"1\"", "", {})},
                "expected psKind=\"member\" without nKeepEmpty in a loop"},
        Mistake{"MandatoryRepetition",
                "",
                {loop("L", "nMandatory=\"1\"", "", {field("A")})},
                "expected psName and psForm alone in the JsonGroup of a loop"},
        Mistake{"MostBelowLeast",
                "",
                {loop("L", "", "nMin=\"3\" nMax=\"2\"", {})},
                "expected nMax at least nMin, found 2 and 3."},
        Mistake{"TypedName",
                "",
                {members({field("N", "psKind=\"name\" psType=\"number\""), field("A")})},
                "expected no psName, psType and psNull beside psKind=\"name\""},
        Mistake{"NamedOthers",
                "",
                {field("A", "psKind=\"others\" psName=\"x\"")},
                "expected no psName, psType and psNull beside psKind"},
        Mistake{"NullOfAny",
                "",
                {field("A", "psType=\"any\" psNull=\"empty\"")},
                "expected no psNull beside psType=\"any\""},
        Mistake{"AbsentNullType",
                "",
                {field("A", "psType=\"null\" psNull=\"absent\"")},
                "expected psNull=\"empty\" beside psType=\"null\", found absent."},
        Mistake{"EmptyNumber",
                "",
                {field("A", "psType=\"number\" nKeepEmpty=\"1\"")},
                "expected psNull=\"empty\" beside nKeepEmpty, found none."},
        Mistake{"ConstantThatIsNoNumber",
                "",
                {field("A", "psType=\"number\" psConst=\"01\"")},
                "expected a number as JSON writes it, found \"01\"."},
        Mistake{"DefaultThatIsNoBoolean",
                "",
                {field("A", "psType=\"boolean\" psDefault=\"yes\"")},
                "expected true or false, found \"yes\"."},
        Mistake{"ConstantOthers",
                "",
                {field("A", "psKind=\"others\" psConst=\"1\"")},
                "expected no psDefault and psConst, found \"1\"."},
        Mistake{"DefaultThatIsNoValue",
                "",
                {field("A", "psType=\"any\" psDefault=\"[1\"")},
                "expected a JSON value without blanks around it, found \"[1\"."},
        Mistake{"ConstantWithABlankInFront",
                "",
                {field("A", "psType=\"any\" psConst=\" 1\"")},
                "expected a JSON value without blanks around it, found \" 1\"."},
        Mistake{"NameInATuple",
                "",
                {group("G", "psForm=\"tuple\"", {field("A", "psName=\"a\"")})},
                "expected no psName for a value that is no member, found \"a\". Remove psName."},
        Mistake{"NameOfTheRoot",
                "psRoot=\"array\"",
                {loop("L", "psName=\"l\"", "", {})},
                "expected no psName for a value that is no member, found \"l\"."},
        Mistake{"ConstantWithDefault",
                "",
                {field("A", "psConst=\"1\" psDefault=\"2\"")},
                "expected psDefault or psConst, found both."},
        Mistake{"ConstantLongerThanTheField",
                "",
                {field("A", "nMaxLen=\"2\" psConst=\"ABC\"")},
                "expected psConst of at most 2 characters, found 3, \"ABC\". Raise nMaxLen, or shorten the "
                "value."},
        Mistake{"DefaultLongerThanTheField",
                "",
                {field("A", "nMaxLen=\"2\" psDefault=\"\xC3\xA9\xC3\xA9\xC3\xA9\"")},
                "expected psDefault of at most 2 characters, found 3, "},
        Mistake{"PositionOutsideOfLoops",
                "",
                {loop("L", "", "", {}), group("G", "", {field("A", kPosition)})},
                "found it outside of any loop."},
        Mistake{"PositionWithDefault",
                "",
                {loop("L", "", "", {field("A", kPosition + " psDefault=\"1\"")})},
                "expected nPosition in a loop, on no count field, without psDefault and psConst, found it "
                "beside one of them. Remove nPosition."},
        Mistake{"PositionWithConstant",
                "",
                {loop("L", "", "", {field("A", kPosition + " psConst=\"1\"")})},
                "found it beside one of them."},
        Mistake{"PositionThatCounts",
                "",
                {loop("L", "", "", {field("A", kPosition), loop("K", "", "", {}, "A")})},
                "found it on a count field."},
        Mistake{"PositionThatIsTrueOrFalse",
                "",
                {loop("L", "", "", {field("A", kPosition + " psType=\"boolean\"")})},
                "expected psType text, number or any beside nPosition, found another psType or psKind."},
        Mistake{"PositionOfOthers",
                "",
                {loop("L", "", "", {field("A", kPosition + " psKind=\"others\"")})},
                "expected psType text, number or any beside nPosition, found another psType or psKind."}),
    [](const testing::TestParamInfo<Mistake> &mistake) { return std::string(mistake.param.sCase); });

TEST(JsonDefinitions, ARecordOfAnotherKindIsRefusedInEveryPlace) {
  for (const char *const psNode :
       {"<FormatAttr __ID=\"ptFormAttr\"><JsonGroup __ID=\"pInfo\"/></FormatAttr><StructAttr "
        "__ID=\"ptStructAttr\"/>",
        "<StructAttr __ID=\"ptStructAttr\"><JsonField __ID=\"pInfo\"/></StructAttr>"}) {
    JsonConfig config;
    config.message("M", "", {{"A", psNode}});
    EXPECT_NE(config.start(), 0) << psNode;
    EXPECT_TRUE(told("Node[A] File[")) << told();
    test::clearLog();
    cvtEnd();
  }
}

TEST(JsonDefinitions, WithoutAnyRecordANodeIsAMemberOfItsOwnName) {
  JsonConfig config;
  config.file(
      "msg/M.xml",
      "<json><Msg psMsgName=\"M\"><Message __ID=\"ptHead\" psNodeName=\"A\"><StructAttr "
      "__ID=\"ptStructAttr\"/></Message><Message __ID=\"ptNextNode\" psNodeName=\"L\"><StructAttr "
      "__ID=\"ptStructAttr\" nType=\"1\"><LoopType __ID=\"pInfo\"/><Message __ID=\"ptChildNode\" "
      "psNodeName=\"B\"><StructAttr __ID=\"ptStructAttr\"/></Message></StructAttr></Message></Msg></json>");
  ASSERT_EQ(config.start(), 0) << told();
  const std::string s = "{\"A\":\"1\",\"L\":[{\"B\":\"2\"},{}]}";
  EXPECT_EQ(pass("M", s), s) << told();
}

TEST(JsonDefinitions, ADefinitionAsDeepAsItsLimitIsAccepted) {
  JsonConfig config;
  config.message("M", "nMaxDepth=\"4\"", {nested(3)});
  ASSERT_EQ(config.start(), 0) << told();
  const std::string s = "{\"G\":{\"G\":{\"G\":{\"F\":\"1\"}}}}";
  EXPECT_EQ(pass("M", s), s) << told();
}

}  // namespace

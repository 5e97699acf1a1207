// What definitions of the format mean, parsing and generating.
#include <gtest/gtest.h>

#include "json_config.h"

namespace {

using namespace test::json;

// One definition M, and texts that go through it.
class Json : public testing::Test {
 protected:
  void define(const std::string &sAttributes, const std::vector<FormatNode> &nodes) {
    m_config.message("M", sAttributes, nodes);
    ASSERT_EQ(m_config.start(), 0) << told();
    test::clearLog();
  }
  void same(const std::string &s) {
    EXPECT_EQ(pass("M", s), s) << told();
    test::clearLog();
  }
  void becomes(const std::string &s, const std::string &sWritten) {
    EXPECT_EQ(pass("M", s), sWritten) << told();
    test::clearLog();
  }
  void refused(const std::string &s, const std::string &sLine) {
    EXPECT_EQ(parse("M", s), nullptr) << s;
    EXPECT_TRUE(told("Msg[M] " + sLine)) << told();
    test::clearLog();
  }

  JsonConfig m_config;
};

// --- Types ---

TEST_F(Json, NumbersAreKeptExactlyAsWritten) {
  define("", {field("A", "psType=\"number\"")});
  for (const char *const psNumber :
       {"0", "-0", "1.10", "1E+400", "-0.0e-0", "123456789012345678901234567890.000", "1e5", "10"}) {
    same("{\"A\":" + std::string(psNumber) + "}");
    EXPECT_EQ(get(parse("M", "{\"A\": " + std::string(psNumber) + " }"), "A"), psNumber);
  }
  for (const char *const psNone : {"01", "+1", ".5", "1.", "1e", "0x1", "NaN", "-", "1_0", "--1", "1.2.3"}) {
    refused("{\"A\":" + std::string(psNone) + "}",
            "Field[A] Offset[5]: expected a number, found \"" + std::string(psNone) + "\". See psType.");
  }
}

TEST_F(Json, ANumberThatIsNoneIsNotWritten) {
  define("", {field("A", "psType=\"number\"")});
  const Text text = create("M");
  for (const char *const psNone : {"01", "1 ", "+1", "1,5", "abc"}) {
    set(text, "A", psNone);
    EXPECT_EQ(generate(text), "failed") << psNone;
    EXPECT_TRUE(
        told("Field[A] Offset[5]: expected a number as JSON writes it, found \"" + std::string(psNone)))
        << told();
    test::clearLog();
  }
  set(text, "A", "-1.50");
  EXPECT_EQ(generate(text), "{\"A\":-1.50}");
}

TEST_F(Json, AWrongTypeIsToldWithWhatWasFound) {
  define("", {field("N", "psType=\"number\""), field("T"), field("B", "psType=\"boolean\""),
              field("Z", "psType=\"null\""), group("G", "", {field("A")}), loop("L", "", "", {})});
  refused("{\"N\":\"abc\"}", "Field[N] Offset[5]: expected a number, found text \"abc\". See psType.");
  refused("{\"N\":true}", "Field[N] Offset[5]: expected a number, found true.");
  refused("{\"N\":null}", "Field[N] Offset[5]: expected a number, found null. psNull says what null means.");
  refused("{\"T\":12}", "Field[T] Offset[5]: expected a text in double quotes, found number \"12\".");
  refused("{\"T\":[1]}", "Field[T] Offset[5]: expected a text in double quotes, found an array.");
  refused("{\"B\":1}", "Field[B] Offset[5]: expected true or false, found number \"1\".");
  refused("{\"Z\":0}", "Field[Z] Offset[5]: expected null, found number \"0\".");
  refused("{\"G\":[]}", "Field[G] Offset[5]: expected an object, found an array.");
  refused("{\"G\":null}", "Field[G] Offset[5]: expected an object, found null. psNull says what null means.");
  refused("{\"L\":{}}", "Field[L] Offset[5]: expected an array, found an object.");
  refused("{\"L\":[\"a\",2]}",
          "Field[L[1]] Offset[10]: expected a text in double quotes, found number \"2\".");
}

TEST_F(Json, BooleansAndAnyValueAreKeptAsWritten) {
  define("", {field("B", "psType=\"boolean\""), field("V", "psType=\"any\"")});
  same("{\"B\":true,\"V\":{\"a\": [1, null ,\"\\u00e9\\/\"], \"a\":2}}");
  same("{\"B\":false,\"V\":null}");
  same("{\"V\":\"\\ud800\"}");
  EXPECT_EQ(get(parse("M", "{\"V\" : [ 1 ] }"), "V"), "[ 1 ]");
  refused("{\"V\":[1,]}", "Field[V] Offset[8]: expected a value, found ].");
  refused("{\"V\":tru}", "Field[V] Offset[5]: expected a value, found \"tru\".");
  refused("{\"V\":}", "Field[V] Offset[5]: expected a value, found }.");
  const Text text = create("M");
  set(text, "V", " [1] ");
  EXPECT_EQ(generate(text), "{\"V\":[1]}");
  for (const char *const psNone : {"[1", "1 2", "a", "{\"a\":}", "\"\\x\""}) {
    set(text, "V", psNone);
    EXPECT_EQ(generate(text), "failed") << psNone;
    EXPECT_TRUE(told("Field[V] Offset[")) << told();
  }
  set(text, "V", "1");
  set(text, "B", "TRUE");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("Field[B] Offset[5]: expected true or false, found \"TRUE\".")) << told();
}

TEST_F(Json, NullMeansWhatTheFieldSays) {
  define("", {field("A", "psNull=\"absent\""), field("E", "psNull=\"empty\" nKeepEmpty=\"2\""),
              field("K", "psNull=\"empty\" nKeepEmpty=\"1\" psType=\"number\""),
              field("Z", "psType=\"null\" nKeepEmpty=\"2\"")});
  becomes("{\"A\":null,\"E\":null,\"K\":null,\"Z\":null}", "{\"E\":null,\"K\":null,\"Z\":null}");
  becomes("{}", "{\"K\":null}");
  becomes("{\"E\":\"\",\"K\":1}", "{\"E\":null,\"K\":1}");
  refused("{\"A\":null,\"A\":\"1\"}",
          "Field[A] Offset[10]: expected each member once, found a second \"A\".");
}

TEST_F(Json, NullOfAGroupAndOfALoopMeansWhatTheySay) {
  define("", {group("G", "psNull=\"absent\"", {field("A")}),
              group("E", "psNull=\"empty\" nMandatory=\"1\"", {field("B")}),
              loop("L", "", "psNull=\"empty\" nKeepEmpty=\"1\"", {field("C")}),
              loop("N", "psNull=\"empty\"", "psNull=\"absent\"", {})});
  becomes("{\"G\":null,\"E\":null,\"L\":null,\"N\":null}", "{\"E\":null,\"L\":null}");
  becomes("{\"E\":{},\"L\":[]}", "{\"E\":null,\"L\":null}");
  same("{\"E\":{\"B\":\"1\"},\"L\":[{}],\"N\":[null,\"a\",null]}");
}

// --- Texts ---

TEST_F(Json, EscapesAreReadAndWrittenInTheirShortestForm) {
  define("", {field("A")});
  EXPECT_EQ(get(parse("M", R"({"A":"\"\\\/\b\f\n\r\t\u0041\u00e9\ud83d\ude00"})"), "A"),
            "\"\\/\b\f\n\r\tA\xC3\xA9\xF0\x9F\x98\x80");
  same("{\"A\":\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u001f\x7F\xC3\xA9\xF0\x9F\x98\x80\"}");
  becomes(R"({"\u0041":"\u000A\u002f"})", R"({"A":"\n/"})");
}

TEST_F(Json, AZeroByteInAValueIsKept) {
  define("", {field("A")});
  const Text text = parse("M", R"({"A":"a\u0000b"})");
  ASSERT_NE(text, nullptr) << told();
  EXPECT_EQ(get(text, "A"), std::string("a\0b", 3));
  EXPECT_EQ(generate(text), R"({"A":"a\u0000b"})");
}

TEST_F(Json, HalfASurrogatePairIsRefusedWhereItWouldBecomeAValue) {
  define("", {field("A")});
  for (const char *const psHalf :
       {"\\ud800", "\\udc00", "\\ud800x", "\\ud800\\n", "\\ud800\\ud800", "\\uD83D\\u0041"}) {
    refused("{\"A\":\"x" + std::string(psHalf) + "\"}",
            "Field[A] Offset[7]: expected both halves of a surrogate pair, found \"\\u");
  }
  refused(
      "{\"\\ud800\":1}",
      "Field[] Offset[2]: expected both halves of a surrogate pair, found \"\\ud800\". Write the other half, "
      "too, or the character itself.");
  refused("{\"A\":\"\\x\"}", "Field[A] Offset[6]: expected an escape: ");
  EXPECT_EQ(parse("M", "{\"A\":\"\\x\"}"), nullptr);
  EXPECT_TRUE(told("found \"\\x\". Write a backslash itself as \\\\.")) << told();
  test::clearLog();
  refused("{\"A\":\"\\u12g4\"}", "Field[A] Offset[6]: expected an escape: ");
  refused("{\"A\":\"\\u12\"}", "Field[A] Offset[6]: expected an escape: ");
}

TEST_F(Json, CharactersAboveAsciiAreEscapedOnRequest) {
  define("nAscii=\"1\"", {field("A", "psName=\"\xC3\xA9\"")});
  becomes("{\"\xC3\xA9\":\"\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80 x\"}",
          "{\"\\u00e9\":\"\\u00e9\\u4e2d\\ud83d\\ude00 x\"}");
}

TEST_F(Json, DamagedUtf8IsRefusedInBothDirections) {
  define("", {field("A")});
  for (const char *const psDamaged :
       {"\x80", "\xC3", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF"}) {
    refused("{\"A\":\"ab" + std::string(psDamaged) + "\"}",
            "Field[A] Offset[8]: expected a text in UTF-8, found \"\\x");
    const Text text = create("M");
    set(text, "A", "ab" + std::string(psDamaged));
    EXPECT_EQ(generate(text), "failed");
    EXPECT_TRUE(told("Field[A] Offset[6]: expected UTF-8, found \"\\x") ||
                told("Field[A] Offset[8]: expected UTF-8, found \"\\x"))
        << told();
    EXPECT_TRUE(told("in byte 2 of the value.")) << told();
    test::clearLog();
  }
}

TEST_F(Json, AByteOrderMarkIsRefused) {
  define("", {field("A")});
  refused("\xEF\xBB\xBF{\"A\":\"1\"}", "Field[] Offset[0]: expected an object, found \"\\xEF\\xBB\\xBF\".");
}

// --- Members ---

TEST_F(Json, TheOrderOfMembersIsFreeAndWrittenAsDefined) {
  define("", {field("A"), field("B"), group("G", "", {field("C"), field("D")})});
  becomes("\t{ \"G\" : {\"D\":\"4\",\"C\":\"3\"},\r\n\"B\":\"2\" , \"A\":\"1\"} ",
          "{\"A\":\"1\",\"B\":\"2\",\"G\":{\"C\":\"3\",\"D\":\"4\"}}");
  becomes("{\"G\":{},\"A\":\"\"}", "{}");
}

TEST_F(Json, MandatoryMembersMustBeThereInBothDirections) {
  define("", {field("A", "nMandatory=\"1\""),
              group("G", "nMandatory=\"1\"", {field("B", "nMandatory=\"1\" nKeepEmpty=\"1\"")}),
              loop("L", "", "nMandatory=\"1\"", {})});
  refused("{\"G\":{\"B\":\"\"},\"L\":[]}",
          "Field[A] Offset[20]: expected member \"A\", found the end of the object. It is mandatory.");
  refused("{\"A\":\"\",\"G\":{\"B\":\"\"},\"L\":[]}", "Field[A] Offset[5]: expected a value, found none.");
  refused("{\"A\":\"1\",\"L\":[]}", "Field[G] Offset[15]: expected member \"G\"");
  refused("{\"A\":\"1\",\"G\":{},\"L\":[]}", "Field[G.B] Offset[14]: expected member \"B\"");
  refused("{\"A\":\"1\",\"G\":{\"B\":\"\"}}", "Field[L] Offset[21]: expected member \"L\"");
  same("{\"A\":\"1\",\"G\":{\"B\":\"\"},\"L\":[]}");
  EXPECT_EQ(generate(create("M")), "failed");
  EXPECT_TRUE(told("Field[A] Offset[1]: expected a value, found none.")) << told();
}

TEST_F(Json, UnknownMembersAreRefusedWithTheNearestName) {
  define("", {field("Amount"), group("G", "", {field("Name")})});
  refused("{\"Amount\":\"1\",\"G\":{\"Nam\":\"2\"}}",
          "Field[G] Offset[19]: expected the member \"Name\", found member \"Nam\". Write Name; "
          "psUnknown=\"skip\" in JsonMsg passes over it.");
  refused("{\"x\":1}",
          "Field[] Offset[1]: expected one of the members \"Amount\", \"G\", found member \"x\".");
}

TEST_F(Json, UnknownMembersAreCheckedAndPassedOver) {
  define("psUnknown=\"skip\"", {field("A"), loop("L", "", "", {field("B")})});
  becomes(
      "{\"x\":{\"A\":[1,{\"y\":null}]},\"A\":\"1\",\"L\":[{\"z\":0,\"B\":\"2\"}],\"\\u0078\\u0078\":"
      "\"\\ud800\"}",
      "{\"A\":\"1\",\"L\":[{\"B\":\"2\"}]}");
  refused("{\"x\":[1,}", "Field[] Offset[8]: expected a value, found }.");
  refused("{\"x\":1,\"\\u0078\":2}", "Field[] Offset[7]: expected each member once, found a second \"x\".");
  refused("{\"x\":1,\"x\":2}",
          "Field[] Offset[7]: expected each member once, found a second \"x\". Remove one of them.");
}

TEST_F(Json, UnknownMembersAreKeptAndWrittenAgain) {
  define("", {field("A"), group("G", "", {field("X", "psKind=\"others\""), field("B")}),
              field("O", "psKind=\"others\"")});
  same("{\"A\":\"1\",\"G\":{\"p\":{\"A\" : 1},\"B\":\"2\"},\"x\":[1, 2],\"y\": null}");
  EXPECT_EQ(get(parse("M", "{\"x\" : [ 1 ] ,\"A\":\"1\", \"G\":{\"q\":0}, \"y\":2 }"), "O"),
            "\"x\" : [ 1 ],\"y\":2");
  refused("{\"x\":1,\"A\":\"1\",\"x\":2}",
          "Field[] Offset[15]: expected each member once, found a second \"x\".");
}

TEST_F(Json, KeptMembersThatAreNoneOrAreDefinedAreNotWritten) {
  define("", {field("A"), field("O", "psKind=\"others\"")});
  const Text text = create("M");
  set(text, "O", " \"x\" : 1 , \"y\":2");
  EXPECT_EQ(generate(text), "{\"x\" : 1,\"y\":2}");
  for (const char *const psNone : {"x", "\"x\"", "\"x\":1,", "{\"x\":1}", "\"x\":1 2", "\"x\":1}", "\"A\":1",
                                   "\"\\u0041\":1", "\"x\":1,\"x\":1"}) {
    set(text, "O", psNone);
    EXPECT_EQ(generate(text), "failed") << psNone;
    EXPECT_TRUE(told("Field[O] Offset[")) << psNone << told();
    test::clearLog();
  }
}

TEST_F(Json, EmptyValuesAreWrittenOnRequest) {
  define("", {field("A", "nKeepEmpty=\"1\""), field("B", "nKeepEmpty=\"2\""),
              group("G", "nKeepEmpty=\"1\"", {field("C")}), loop("L", "", "nKeepEmpty=\"1\"", {field("D")})});
  becomes("{}", "{\"A\":\"\",\"G\":{},\"L\":[]}");
  becomes("{\"B\":\"\"}", "{\"A\":\"\",\"B\":\"\",\"G\":{},\"L\":[]}");
}

TEST_F(Json, DefaultsAndConstantsStandInForValues) {
  define("", {field("V", "psConst=\"1.0\""), field("C", "psDefault=\"EUR\""),
              field("N", "psType=\"number\" psConst=\"2\""),
              group("G", "", {field("D", "psDefault=\"x\""), field("E")})});
  EXPECT_EQ(generate(create("M")), "{\"V\":\"1.0\",\"C\":\"EUR\",\"N\":2}");
  becomes("{\"G\":{\"E\":\"1\"}}", "{\"V\":\"1.0\",\"C\":\"EUR\",\"N\":2,\"G\":{\"D\":\"x\",\"E\":\"1\"}}");
  refused("{\"V\":\"1.1\"}", "Field[V] Offset[5]: expected \"1.0\", found \"1.1\". The field is a constant.");
}

TEST_F(Json, LengthsAreCountedInCharacters) {
  define("", {field("A", "nMaxLen=\"3\""), field("V", "psType=\"any\" nMaxLen=\"5\"")});
  same("{\"A\":\"\xC3\xA9\xC3\xA9\xC3\xA9\",\"V\":[1,2]}");
  becomes(R"({"A":"\u00e9\u00e9\u00e9"})", "{\"A\":\"\xC3\xA9\xC3\xA9\xC3\xA9\"}");
  refused("{\"A\":\"abcd\"}", "Field[A] Offset[5]: expected at most 3 characters, found 4, \"abcd\".");
  refused("{\"V\":[1, 2]}", "Field[V] Offset[5]: expected at most 5 characters, found 6");
  const Text text = create("M");
  set(text, "A", "abcd");
  EXPECT_EQ(generate(text), "failed");
}

// --- Arrays, tuples, members ---

TEST_F(Json, LoopsAreArraysOfObjectsAndOfValues) {
  define("", {loop("L", "psName=\"lines\"", "",
                   {field("A"), loop("N", "psType=\"number\" psName=\"n\"", "", {})})});
  same("{}");
  same("{\"lines\":[{}]}");
  same("{\"lines\":[{\"A\":\"1\",\"n\":[1,2.0]},{},{\"n\":[3]}]}");
  refused("{\"lines\":[{\"A\":\"1\"},{\"n\":[1,\"x\"]}]}",
          "Field[L[1].N[1]] Offset[28]: expected a number, found text \"x\".");
  refused("{\"lines\":[{},]}", "Field[L[1]] Offset[13]: expected an object, found ].");
}

TEST_F(Json, ArraysStandInArraysAndObjectsHaveNoNamesThere) {
  define("", {loop("Rows", "psForm=\"value\"", "", {loop("Cells", "psType=\"number\"", "", {})}),
              loop("Points", "psForm=\"tuple\"", "",
                   {field("Label"), field("X", "psType=\"number\""), loop("Tags", "", "", {})})});
  same("{\"Rows\":[[1,2],[],[3]],\"Points\":[[\"a\",1.5,[\"x\",\"y\"]],[\"\",2],[\"b\"],[]]}");
  refused("{\"Rows\":[[1],[2,true]]}", "Field[Rows[1].Cells[1]] Offset[16]: expected a number, found true.");
  refused("{\"Points\":[[\"a\",1,[],0]]}",
          "Field[Points[0]] Offset[21]: expected at most 3 elements, found number \"0\".");
}

TEST_F(Json, AGroupMayBeATupleWithPlacesThatMustBeFilled) {
  define("psUnknown=\"skip\"", {group("P", "psForm=\"tuple\"",
                                      {field("A", "psType=\"number\" nMandatory=\"1\""),
                                       field("B", "psNull=\"empty\" psType=\"number\""), field("C")})});
  same("{\"P\":[1]}");
  same("{\"P\":[1,null,\"c\"]}");
  becomes("{\"P\":[1,null,\"\"]}", "{\"P\":[1]}");
  becomes("{\"P\":[1,2,\"c\",{\"d\":0}]}", "{\"P\":[1,2,\"c\"]}");
  refused("{\"P\":[]}",
          "Field[P.A] Offset[6]: expected element 1, found the end of the array. It is mandatory.");
}

TEST_F(Json, NamesOfMembersMayBeData) {
  define("", {loop("Rates", "psForm=\"value\"", "psForm=\"members\"",
                   {field("Code", "psKind=\"name\" nMaxLen=\"3\""), field("Rate", "psType=\"number\"")}),
              loop("Parts", "", "psForm=\"members\" nMin=\"1\" nMax=\"2\"",
                   {field("Part", "psKind=\"name\""), field("Size"), field("More", "psKind=\"others\"")}),
              loop("Lists", "psForm=\"value\"", "psForm=\"members\"",
                   {field("List", "psKind=\"name\""), loop("Entry", "", "", {})})});
  same(
      "{\"Rates\":{\"EUR\":1,\"USD\":1.08},\"Parts\":{\"a\\n\":{\"Size\":\"1\",\"x\":2},\"\":{}},\"Lists\":{"
      "\"l\":[\"1\"],\"m\":[]}}");
  const Text text = parse("M", "{\"Rates\":{\"\\u0041\":1},\"Parts\":{\"p\":{}}}");
  ASSERT_NE(text, nullptr) << told();
  cvtSetLoopTime(text.get(), test::cs("Rates"), 0);
  EXPECT_EQ(get(text, "Rates.Code"), "A");
  EXPECT_EQ(get(text, "Rates.Rate"), "1");
  refused("{\"Rates\":{\"EUR\":1,\"EU\\u0052\":2},\"Parts\":{\"p\":{}}}",
          "Field[Rates[1].Code] Offset[18]: expected each member once, found a second \"EUR\".");
  refused("{\"Rates\":{\"EURO\":1},\"Parts\":{\"p\":{}}}",
          "Field[Rates[0].Code] Offset[10]: expected at most 3 characters");
  refused("{\"Rates\":{\"EUR\":\"1\"},\"Parts\":{\"p\":{}}}",
          "Field[Rates[0].Rate] Offset[16]: expected a number, found text \"1\".");
  refused("{\"Parts\":{}}", "Field[Parts] Offset[10]: expected at least 1 repetitions, found 0.");
  refused("{\"Parts\":{\"a\":{},\"b\":{},\"c\":{}}}",
          "Field[Parts[2]] Offset[24]: expected at most 2 repetitions, found one more.");
}

TEST_F(Json, NamesThatAreDataMustDifferWhenTheyAreWritten) {
  define("",
         {loop("L", "psForm=\"value\"", "psForm=\"members\"", {field("N", "psKind=\"name\""), field("V")})});
  const Text text = create("M");
  for (int i = 0; i < 2; ++i) {
    cvtAddLoopTime(text.get(), test::cs("L"));
    set(text, "L.N", "same");
  }
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("Field[L[1].N] Offset[16]: expected each name once, found a second \"same\".")) << told();
}

TEST_F(Json, LeastAndLargestNumbersOfRepetitionsHoldInBothDirections) {
  define("", {loop("L", "", "nMin=\"1\" nMax=\"2\"", {})});
  refused("{}", "Field[L] Offset[1]: expected member \"L\", found the end of the object.");
  refused("{\"L\":[]}",
          "Field[L] Offset[6]: expected at least 1 repetitions, found 0. See nMin of its JsonLoop.");
  same("{\"L\":[\"1\"]}");
  same("{\"L\":[\"1\",\"2\"]}");
  refused("{\"L\":[\"1\",\"2\",\"3\"]}",
          "Field[L[2]] Offset[14]: expected at most 2 repetitions, found one more.");
  EXPECT_EQ(generate(create("M")), "failed");
  EXPECT_TRUE(told("Field[L] Offset[5]: expected at least 1 repetitions, found 0.")) << told();
}

TEST_F(Json, ACountFieldIsCheckedFilledInAndGenerated) {
  define("", {field("N", "psType=\"number\""),
              loop("L", "", "", {field("M", "psType=\"number\""), loop("K", "", "", {}, "M")}, "N")});
  same("{\"N\":1,\"L\":[{\"M\":2,\"K\":[\"a\",\"b\"]}]}");
  becomes("{\"L\":[{},{\"K\":[\"a\"]}]}", "{\"N\":2,\"L\":[{\"M\":0},{\"M\":1,\"K\":[\"a\"]}]}");
  refused("{\"N\":3,\"L\":[{}]}",
          "Field[N] Offset[16]: expected 1, the number of repetitions of L, found \"3\".");
}

TEST_F(Json, AMandatoryNullIsThereThoughItIsEmpty) {
  define("", {field("Z", "psType=\"null\" nMandatory=\"1\""), field("Y", "psType=\"null\"")});
  same("{\"Z\":null}");
  becomes("{\"Y\":null,\"Z\":null}", "{\"Z\":null}");
  EXPECT_EQ(generate(create("M")), "{\"Z\":null}");
  refused("{}", "Field[Z] Offset[1]: expected member \"Z\", found the end of the object. It is mandatory.");
}

TEST_F(Json, AMissingCommaIsToldBeforeMembersThatAreMissing) {
  define("", {field("A"), field("O", "psKind=\"others\" nMandatory=\"1\"")});
  refused("{\"A\":\"1\" \"B\":2}", "Field[] Offset[9]: expected , or } behind the member, found text \"B\".");
  refused("{\"A\":\"1\"}", "Field[O] Offset[8]: expected a value, found none. The field is mandatory");
}

TEST_F(Json, AWrongCountIsToldWithItsGroups) {
  define("",
         {group("Head", "", {field("A"), group("In", "", {field("N", "psType=\"number\"")})}),
          loop("Rows", "", "", {group("G", "", {field("A"), field("M")}), loop("K", "", "", {}, "M")}, "N")});
  refused("{\"Head\":{\"In\":{\"N\":3}},\"Rows\":[{}]}",
          "Field[Head.In.N] Offset[35]: expected 1, the number of repetitions of Rows, found \"3\".");
  refused("{\"Rows\":[{\"G\":{\"M\":\"2\"},\"K\":[\"a\"]}]}",
          "Field[Rows[0].G.M] Offset[34]: expected 1, the number of repetitions of K, found \"2\".");
}

TEST_F(Json, APositionNumbersTheRepetitionsOfTheInnermostLoop) {
  define("", {loop("L", "", "",
                   {field("No", "psType=\"number\" nPosition=\"1\""),
                    group("G", "", {field("M", "nPosition=\"1\""), field("A")}),
                    loop("K", "", "", {field("N", "nPosition=\"1\""), field("B")}),
                    group("H", "", {field("O", "nPosition=\"1\"")})})});
  same(
      R"({"L":[{"No":1,"G":{"M":"1","A":"x"},"K":[{"N":"1"},{"N":"2"}]},{"No":2,"K":[{"N":"1","B":"y"}]}]})");
  becomes(R"({"L":[{},{"H":{"O":"2"}},{"K":[{}],"G":{"A":"x"}}]})",
          R"({"L":[{"No":1},{"No":2,"H":{"O":"2"}},{"No":3,"G":{"M":"3","A":"x"},"K":[{"N":"1"}]}]})");
  refused(R"({"L":[{"No":1},{"No":1}]})",
          "Field[L[1].No] Offset[21]: expected 2, the number of its repetition, found \"1\". Number the "
          "repetitions from 1, or leave the value out.");
  refused(R"({"L":[{"G":{"M":"01"}}]})",
          "Field[L[0].G.M] Offset[16]: expected 1, the number of its repetition, found \"01\".");
  refused(R"({"L":[{},{"K":[{"N":"2"}]}]})", "Field[L[1].K[0].N] Offset[20]: expected 1, the number");
}

TEST_F(Json, APositionIsWrittenWhateverItsValueSaysAndStaysAwayWhenItWasNotRead) {
  define("", {loop("L", "", "", {field("N", "nPosition=\"1\""), field("A")})});
  const Text read = parse("M", "{\"L\":[{\"A\":\"x\"}]}");
  ASSERT_TRUE(at(read, "L", 0));
  EXPECT_EQ(get(read, "L.A"), "x");
  EXPECT_EQ(get(read, "L.N"), "");
  const Text text = create("M");
  for (const char *const psValue : {"77", "x", ""}) {
    addTime(text, "L");
    set(text, "L.N", psValue);
  }
  EXPECT_EQ(generate(text), R"({"L":[{"N":"1"},{"N":"2"},{"N":"3"}]})") << told();
}

TEST_F(Json, APositionMayBeMandatoryAndHasToFitItsLength) {
  define("", {loop("L", "", "", {field("N", "nPosition=\"1\" nMandatory=\"1\" nMaxLen=\"1\"")})});
  refused(R"({"L":[{}]})", "Field[L[0].N] Offset[7]: expected member \"N\", found the end of the object.");
  refused(R"({"L":[{"N":""}]})", "Field[L[0].N] Offset[11]: expected a value, found none.");
  const Text text = create("M");
  for (int i = 0; i < 9; ++i) addTime(text, "L");
  EXPECT_NE(generate(text), "failed") << told();
  addTime(text, "L");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("Field[L[9].N] Offset[97]: expected at most 1 characters, found 2, \"10\".")) << told();
}

TEST_F(Json, NamesAndPlainElementsMayBePositions) {
  define("", {loop("L", "", "", {field("A"), loop("K", "psType=\"number\" nPosition=\"1\"", "", {})}),
              loop("M", "psForm=\"value\"", "psForm=\"members\"",
                   {field("N", "psKind=\"name\" nPosition=\"1\""), field("V")})});
  same(R"({"L":[{"K":[1,2]},{"K":[1]}],"M":{"1":"a","2":"b"}})");
  refused(R"({"M":{"1":"a","3":"b"}})", "Field[M[1].N] Offset[14]: expected 2, the number of its repetition");
  refused(R"({"L":[{"K":[2]}]})", "Field[L[0].K[0]] Offset[12]: expected 1, the number of its repetition");
}

// --- The text as a whole ---

TEST_F(Json, TheRootMayBeAnArray) {
  define("psRoot=\"array\"", {loop("L", "", "", {field("A")})});
  same("[]");
  same("[{\"A\":\"1\"},{}]");
  refused("{}", "Field[L] Offset[0]: expected an array, found an object.");
}

TEST_F(Json, TheRootMayBeAnObjectOfMembersThatAreData) {
  define("psRoot=\"array\"", {loop("L", "psForm=\"value\"", "psForm=\"members\"",
                                   {field("N", "psKind=\"name\""), field("V", "psType=\"any\"")})});
  same("{}");
  same("{\"a\":1,\"b\":[null]}");
}

TEST_F(Json, TheRootMayBeAValue) {
  define("psRoot=\"value\"", {field("A", "psType=\"number\"")});
  same("12");
  becomes(" \n12\r\n", "12");
  refused("12 13", "Field[] Offset[3]: expected the end of the text, found number \"13\".");
  refused("", "Field[A] Offset[0]: expected a number, found the end of the text. The message is cut off.");
}

TEST_F(Json, ATextIsIndentedOnRequest) {
  define("nIndent=\"2\" nFinalLineFeed=\"1\"",
         {field("A"), group("G", "nKeepEmpty=\"1\"", {field("B")}),
          loop("L", "", "nKeepEmpty=\"1\"", {field("C")}),
          loop("M", "psForm=\"value\"", "psForm=\"members\"", {field("N", "psKind=\"name\""), field("V")}),
          field("O", "psKind=\"others\"")});
  becomes("{}", "{\n  \"G\": {},\n  \"L\": []\n}\n");
  same(
      "{\n  \"A\": \"1\",\n  \"G\": {\n    \"B\": \"2\"\n  },\n  \"L\": [\n    {\n      \"C\": \"3\"\n    "
      "},\n    {}\n  ],\n"
      "  \"M\": {\n    \"n\": \"4\"\n  },\n  \"x\": [1, 2],\n  \"y\":0\n}\n");
}

TEST_F(Json, WhatFollowsIsLeftToTheCallerOnRequest) {
  define("nWhole=\"0\" psUnknown=\"skip\"", {field("A"), field("B", "psType=\"number\"")});
  for (const char *const psNext : {"{\"A\":\"2\"}", "garbage", "\"", "\xFF", "]", "}", "\x01"}) {
    for (const char *const psBlank : {"", "\n", " \t\r\n "}) {
      const std::string sFirst = "{\"A\":\"x\\\"}\",\"u\":[{}]}" + std::string(psBlank);
      const Text text = parse("M", sFirst + psNext);
      ASSERT_NE(text, nullptr) << told();
      EXPECT_EQ(text->nNowLen, static_cast<int>(sFirst.size())) << psNext;
      EXPECT_EQ(get(text, "A"), "x\"}");
    }
  }
  refused("{\"A\":\"1\"", "Field[] Offset[8]: expected , or } behind the member, found the end of the text.");
  refused("{\"A\":\"1}", "Field[A] Offset[8]: expected \" at the end of the text, found the end.");
  refused("]", "Field[] Offset[0]: expected an object, found ].");
}

TEST_F(Json, ValuesOfAnyKindFollowEachOtherInABuffer) {
  define("nWhole=\"0\" psRoot=\"value\"", {field("A", "psType=\"any\"")});
  const std::string s = "1 -2.5\n\"a b\"true null[1]{\"a\":1}\"x\"7";
  const std::vector<std::string> all = {"1",   "-2.5",      "\"a b\"", "true", "null",
                                        "[1]", "{\"a\":1}", "\"x\"",   "7"};
  size_t nAt = 0;
  for (const std::string &sOne : all) {
    const Text text = parse("M", s.substr(nAt));
    ASSERT_NE(text, nullptr) << told();
    EXPECT_EQ(get(text, "A"), sOne);
    nAt += static_cast<size_t>(text->nNowLen);
  }
  EXPECT_EQ(nAt, s.size());
}

}  // namespace

// Input that means harm, input that is damaged, and output that does not fit.
#include <gtest/gtest.h>

#include "cpu_time.h"
#include "json_config.h"

namespace {

using namespace test::json;

std::string repeated(const std::string &s, size_t n) {
  std::string all;
  for (size_t i = 0; i < n; ++i) all += s;
  return all;
}

class JsonHostile : public testing::Test {
 protected:
  void SetUp() override {
    const std::vector<FormatNode> nodes = {
        field("Id", "psName=\"id\" psType=\"number\" nMandatory=\"1\""),
        group("G", "psName=\"g\"", {field("T", "nMaxLen=\"20\""), field("B", "psType=\"boolean\"")}),
        loop("L", "", "nMax=\"5\"",
             {field("A", "psNull=\"empty\" nKeepEmpty=\"2\""), loop("N", "psType=\"number\"", "", {})}),
        loop("R", "psForm=\"value\"", "psForm=\"members\"",
             {field("K", "psKind=\"name\""), field("V", "psType=\"any\"")}),
        loop("P", "psForm=\"tuple\"", "", {field("X", "psType=\"number\""), field("Y")})};
    std::vector<FormatNode> kept = nodes;
    kept.push_back(field("O", "psKind=\"others\""));
    m_config.message("Strict", "", nodes);
    m_config.message("Skip", "psUnknown=\"skip\" nIndent=\"2\" nAscii=\"1\"", nodes);
    m_config.message("Keep", "nFinalLineFeed=\"1\"", kept);
    m_config.message("Rest", "nWhole=\"0\"", kept);
    m_config.message("Low", "nMaxDepth=\"4\" nMaxMembers=\"3\" nMaxSize=\"60\" psUnknown=\"skip\"",
                     {field("A"), loop("L", "", "", {field("B")})});
    m_config.message("LowRest", "nWhole=\"0\" nMaxSize=\"60\" psUnknown=\"skip\"", {field("A")});
    m_config.message(
        "Names", "nMaxMembers=\"3\"",
        {loop("R", "psForm=\"value\"", "psForm=\"members\"", {field("K", "psKind=\"name\""), field("V")})});
    m_config.message("FewOthers", "nMaxMembers=\"3\"", {field("A"), field("O", "psKind=\"others\"")});
    std::vector<FormatNode> wide;
    for (int i = 0; i < 20; ++i) wide.push_back(field("Field" + std::to_string(i)));
    m_config.message("Wide", "", wide);
    m_config.message("Any", "psRoot=\"value\"", {field("V", "psType=\"any\"")});
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  JsonConfig m_config;
};

// Every kind of value, as the plug-in itself writes it.
const std::string kGood =
    "{\"id\":-1.50e2,\"g\":{\"T\":\"a\\\"\\n\\u0000\xC3\xA9\xF0\x9F\x98\x80\",\"B\":true},\"L\":[{\"A\":null,"
    "\"N\":[1,2]},{\"A\":\"x\"},{}],"
    "\"R\":{\"k\":{\"z\":[\"\\u00e9\"]},\"\":0},\"P\":[[1,\"y\"],[2]]}";

// Whatever parses must be written, and what is written must come back.
void roundTrip(const std::string &sName, const std::string &sBytes) {
  const Text text = parse(sName, sBytes);
  if (text == nullptr) return;
  const std::string s = generate(text);
  ASSERT_NE(s, "failed") << sBytes << told();
  const Text again = parse(sName, s);
  ASSERT_NE(again, nullptr) << s << "\nfrom\n" << sBytes << told();
  EXPECT_EQ(generate(again), s);
}

TEST_F(JsonHostile, ATextCutAtAnyByteIsRefusedInOneLineThatSaysWhere) {
  ASSERT_EQ(pass("Strict", kGood), kGood) << told();
  for (const char *const psName : {"Strict", "Rest", "Any"}) {
    for (size_t n = 0; n < kGood.size(); ++n) {
      test::clearLog();
      EXPECT_EQ(parse(psName, kGood.substr(0, n)), nullptr) << n;
      EXPECT_TRUE(told("Msg[" + std::string(psName) + "] Field[") && told("] Offset[") &&
                  told("]: expected "))
          << n << told();
    }
  }
}

TEST_F(JsonHostile, EveryBitMayBeFlippedWithoutACrash) {
  for (size_t i = 0; i < kGood.size(); ++i) {
    for (const int nFlip : {0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80, 0xFF}) {
      std::string s = kGood;
      s[i] = static_cast<char>(s[i] ^ nFlip);
      for (const char *const psName : {"Strict", "Skip", "Keep", "Rest", "Any"}) roundTrip(psName, s);
    }
    test::clearLog();
  }
}

TEST_F(JsonHostile, EveryByteMayBeMissingOrDoubledOrAControlCharacter) {
  for (size_t i = 0; i < kGood.size(); ++i) {
    roundTrip("Keep", kGood.substr(0, i) + kGood.substr(i + 1));
    roundTrip("Keep", kGood.substr(0, i) + kGood[i] + kGood.substr(i));
    for (const char c : {'\0', '\x0C', '\x1A', '\xEF', '"', '\\', '{', ']', ' '}) {
      std::string s = kGood;
      s[i] = c;
      roundTrip("Keep", s);
      roundTrip("Rest", s);
    }
    test::clearLog();
  }
}

TEST_F(JsonHostile, DepthIsLimitedAlsoInsideWhatIsPassedOverAndKept) {
  EXPECT_NE(parse("Low", "{\"x\":[[[1]]]}"), nullptr) << told();
  EXPECT_EQ(parse("Low", "{\"x\":[[[[1]]]]}"), nullptr);
  EXPECT_TRUE(
      told("Field[] Offset[8]: expected at most 4 open objects and arrays, found one more. Raise nMaxDepth "
           "of JsonMsg."))
      << told();
  EXPECT_NE(parse("Any", repeated("[", 64) + repeated("]", 64)), nullptr) << told();
  for (const char *const psOpen : {"[", "{\"a\":"}) {
    test::clearLog();
    EXPECT_EQ(parse("Any", repeated(psOpen, 65)), nullptr);
    EXPECT_EQ(parse("Any", repeated(psOpen, 1000000)), nullptr);
    EXPECT_TRUE(told("expected at most 64 open objects and arrays")) << told();
  }
}

TEST_F(JsonHostile, AValueThatIsTooDeepIsNotWritten) {
  const Text text = create("Keep");
  set(text, "Id", "1");
  set(text, "O", "\"x\":" + repeated("[", 63) + repeated("]", 63));
  EXPECT_NE(generate(text), "failed") << told();
  set(text, "O", "\"x\":" + repeated("[", 64) + repeated("]", 64));
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("Field[O] Offset[")) << told();
  EXPECT_TRUE(told("expected at most 64 open objects and arrays")) << told();
}

TEST_F(JsonHostile, MembersWithoutADefinitionAreLimited) {
  EXPECT_NE(parse("Low", "{\"a\":1,\"b\":2,\"A\":\"\",\"c\":3}"), nullptr) << told();
  EXPECT_EQ(parse("Low", "{\"a\":1,\"b\":2,\"c\":3,\"d\":4}"), nullptr);
  EXPECT_TRUE(
      told("Field[] Offset[19]: expected at most 3 members, found one more. Raise nMaxMembers of JsonMsg."))
      << told();
  EXPECT_NE(parse("Names", "{\"R\":{\"a\":\"\",\"b\":\"\",\"c\":\"\"}}"), nullptr) << told();
  test::clearLog();
  EXPECT_EQ(parse("Names", "{\"R\":{\"a\":\"\",\"b\":\"\",\"c\":\"\",\"d\":\"\"}}"), nullptr);
  EXPECT_TRUE(told("expected at most 3 members, found one more.")) << told();
  const Text text = create("Names");
  for (int i = 0; i < 4; ++i) {
    EXPECT_NE(generate(text), "failed") << i << told();
    cvtAddLoopTime(text.get(), test::cs("R"));
    set(text, "R.K", std::to_string(i));
  }
  EXPECT_EQ(generate(text), "failed");
}

TEST_F(JsonHostile, MembersThatWereKeptAreLimitedWhenTheyAreWritten) {
  const Text text = create("FewOthers");
  set(text, "O", R"("m":0,"n":1,"o":2)");
  EXPECT_EQ(generate(text), R"({"m":0,"n":1,"o":2})") << told();
  EXPECT_NE(parse("FewOthers", generate(text)), nullptr) << told();
  set(text, "O", R"("m":0,"n":1,"o":2,"p":3)");
  EXPECT_EQ(generate(text), "failed");
  EXPECT_TRUE(told("Field[O] Offset[") &&
              told("expected at most 3 members, found one more. Raise nMaxMembers of JsonMsg."))
      << told();
}

TEST_F(JsonHostile, TheSizeOfATextIsLimited) {
  const std::string sFits = "{\"A\":\"" + std::string(52, 'x') + "\"}";
  ASSERT_EQ(sFits.size(), 60U);
  EXPECT_NE(parse("Low", sFits), nullptr) << told();
  EXPECT_NE(parse("LowRest", sFits + sFits), nullptr) << told();
  EXPECT_EQ(parse("Low", sFits + " "), nullptr);
  EXPECT_TRUE(told("Field[] Offset[60]: expected at most 60 bytes, found 61. Raise nMaxSize of JsonMsg."))
      << told();
  test::clearLog();
  EXPECT_EQ(parse("LowRest", "{\"A\":\"" + std::string(53, 'x') + "\"}"), nullptr);
  EXPECT_TRUE(told("expected at most 60 bytes, found 61.")) << told();
}

TEST_F(JsonHostile, ALoopLongerThanTheListsAllowIsRefusedWithTheLimitsName) {
  EXPECT_NE(parse("Strict", "{\"id\":1,\"P\":[" + repeated("[],", 998) + "[]]}"), nullptr) << told();
  EXPECT_EQ(parse("Strict", "{\"id\":1,\"P\":[" + repeated("[],", 999) + "[]]}"), nullptr);
  EXPECT_TRUE(told("Field[P[999]] Offset[") &&
              told("expected at most 999 repetitions, found one more. Raise gnMaxLoop"))
      << told();
  EXPECT_NE(parse("Strict", "{\"id\":1,\"L\":[{},{},{},{},{}]}"), nullptr) << told();
  EXPECT_EQ(parse("Strict", "{\"id\":1,\"L\":[{},{},{},{},{},{}]}"), nullptr);
}

TEST_F(JsonHostile, NothingAndNearlyNothingIsRefused) {
  for (const std::string &s :
       {std::string(), std::string(" "), std::string("{"), std::string("\""), std::string("\\"),
        std::string(4, '\0'), std::string("\xEF\xBB\xBF"), std::string("\xFF\xFE")}) {
    for (const char *const psName : {"Strict", "Rest", "Any"}) {
      test::clearLog();
      EXPECT_EQ(parse(psName, s), nullptr);
      EXPECT_TRUE(told("] Offset[") && told("]: expected ")) << told();
    }
  }
}

TEST_F(JsonHostile, EverySmallerOutputBufferIsRefusedAtTheFieldWhereRoomRanOut) {
  for (const char *const psName : {"Strict", "Skip", "Keep"}) {
    const Text text = parse(psName, kGood);
    ASSERT_NE(text, nullptr) << told();
    const std::string sWhole = generate(text);
    ASSERT_NE(sWhole, "failed");
    EXPECT_EQ(generate(text, sWhole.size()), sWhole);
    for (size_t n = 0; n < sWhole.size(); ++n) {
      test::clearLog();
      EXPECT_EQ(generate(text, n), "failed") << n;
      EXPECT_TRUE(told("]: expected room for ") && told("left in the buffer. Give a larger output buffer."))
          << told();
    }
  }
  const Text text = parse("Strict", kGood);
  test::clearLog();
  EXPECT_EQ(generate(text, kGood.find("true") + 1), "failed");
  EXPECT_TRUE(told("Msg[Strict] Field[G.B] Offset[")) << told();
}

TEST_F(JsonHostile, TheLengthProducedIsUntouchedOnFailure) {
  const Text text = parse("Strict", kGood);
  ASSERT_NE(text, nullptr);
  char sRoom[8];
  int nLen = sizeof sRoom;
  EXPECT_NE(cvtGenMessage(text.get(), sRoom, &nLen), 0);
  EXPECT_EQ(nLen, static_cast<int>(sizeof sRoom));
  EXPECT_EQ(text->nNowLen, 0);
}

TEST_F(JsonHostile, AFailedTextLeavesNothingBehindForTheNext) {
  for (size_t n = 0; n < kGood.size(); n += 3) {
    parse("Keep", kGood.substr(0, n));
    EXPECT_EQ(pass("Keep", kGood), kGood + "\n") << told();
    test::clearLog();
  }
}

TEST_F(JsonHostile, ALongUnknownNameIsRefusedAtOnce) {
  const double begin = test::cpuSeconds();
  parse("Wide", "{\"" + repeated("a", 10000000) + "\":1}");
  EXPECT_TRUE(told("found member \"" + repeated("a", 40) + "\".... psUnknown=\"skip\" in JsonMsg")) << told();
  EXPECT_LT(test::cpuSeconds() - begin, 3);
}

TEST_F(JsonHostile, ALongTextAndManyMembersTakeTimeInProportion) {
  const double begin = test::cpuSeconds();
  const std::string s = repeated("a\\n\xC3\xA9", 400000);
  EXPECT_NE(parse("Any", "[\"" + s + "\"]"), nullptr) << told();
  std::string sMembers;
  for (int i = 0; i < 999; ++i)
    sMembers += ",\"m" + std::to_string(i) + "\":" + repeated("[", 50) + repeated("]", 50);
  const std::string sMany = "{\"id\":1" + sMembers + "}";
  EXPECT_EQ(generate(parse("Keep", sMany), 200000), sMany + "\n") << told();
  EXPECT_LT(test::cpuSeconds() - begin, 5);
}

}  // namespace

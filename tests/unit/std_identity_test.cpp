// Sequences and UUIDs.
#include <set>

#include "cvt.h"
#include "std/clock.h"
#include "std_call.h"
#include "toy_config.h"

namespace {

using test::errorOf;
using test::resultOf;

// --- Sequences -----------------------------------------------------------------------------------------------

TEST(StdSequence, EachNameCountsForItself) {
  for (int i = 1; i <= 1000; ++i) {
    EXPECT_EQ(resultOf("sequence", {"a"}), std::to_string(i));
    if (i % 3 == 0) {
      EXPECT_EQ(resultOf("sequence", {"b"}), std::to_string(i / 3));
    }
  }
  EXPECT_EQ(resultOf("sequence", {std::string("a\0b", 3)}), "1") << "a name is bytes";
}

TEST(StdSequence, BeginsAgainBehindTheLargestOfItsWidth) {
  for (int i = 0; i < 25; ++i) {
    EXPECT_EQ(resultOf("sequence", {"one", "1"}), std::to_string(i % 9 + 1));
    EXPECT_EQ(resultOf("sequence", {"zero", "1", "0"}), std::to_string(i % 10));
    EXPECT_EQ(resultOf("sequence", {"seven", "2", "97"}), std::to_string(97 + i % 3));
  }
  EXPECT_EQ(resultOf("sequence", {"wide", "18"}), "000000000000000001");
  EXPECT_EQ(resultOf("sequence", {"wide", "0"}), "2");
  EXPECT_EQ(resultOf("sequence", {"start", "0", "2147483647"}), "2147483647");
  EXPECT_EQ(resultOf("sequence", {"start", "0", "5"}), "2147483648") << "the name has begun already";
  EXPECT_EQ(resultOf("sequence", {"start", "3", "5"}), "005") << "too long for that width";
}

TEST(StdSequence, NamesHaveALengthAndANumber) {
  EXPECT_EQ(resultOf("sequence", {""}), "refused");
  EXPECT_EQ(resultOf("sequence", {std::string(64, 'x')}), "1");
  EXPECT_EQ(resultOf("sequence", {std::string(65, 'x')}), "refused");
  EXPECT_EQ(resultOf("sequence", {"x", "19"}), "refused");
  EXPECT_EQ(resultOf("sequence", {"x", "1", "10"}), "refused");
  EXPECT_EQ(resultOf("sequence", {"x", "0", "-1"}), "refused");
  int nNames = 0;
  while (resultOf("sequence", {"n" + std::to_string(nNames)}) == "1") ++nNames;
  EXPECT_GT(nNames, 980);
  EXPECT_LT(nNames, 1000) << "there were some before";
  EXPECT_EQ(
      errorOf("sequence", {"one more"}),
      "Arg[1] Len[8]: expected one of the 1000 names that there are, found one more. Name sequences in the "
      "configuration, not by what messages bring.");
  EXPECT_EQ(resultOf("sequence", {"n7"}), "2");
}

// The plug-in as the library loads it, beside a whole configuration.
class StdIdentityLife : public testing::Test {
 protected:
  void SetUp() override {
    configure("");
    ASSERT_EQ(config.start(), 0);
  }
  void TearDown() override { cvtEnd(); }

  void configure(const std::string &sAttributes) {
    config.root.sAttributes = "nReload=\"1\"";
    config.root.sPlug = test::plugSection({"psName=\"toy\"", "psName=\"std\" " + sAttributes});
    config.writeRoot();
  }
  void reload() {
    config.touchRoot();
    ASSERT_EQ(cvtInitReload(), 0);
  }

  static std::string next(const std::string &sFunction, const test::CallTexts &arguments) {
    void *const entry = cvtStrFindStringList(gptCvtGlobalInfo->ptFuncList, test::cs(sFunction.c_str()));
    return test::resultOf(reinterpret_cast<FncConvert>(entry), arguments);
  }
  static std::string nextNumber() { return next("sequence", {"a"}); }

  test::ToyConfig config;
};

TEST_F(StdIdentityLife, SequencesGoOnAfterAReloadAndAnEnd) {
  EXPECT_EQ(nextNumber(), "1");
  EXPECT_EQ(nextNumber(), "2");
  reload();
  EXPECT_EQ(nextNumber(), "3");
  cvtEnd();
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(nextNumber(), "4");
}

TEST_F(StdIdentityLife, TimesOfUuidsAscendWhenTheClockIsPutBackAndTheConfigurationLoadedAgain) {
  configure("psClock=\"2024-02-29T12:30:45.678Z\"");
  reload();
  const std::string sFirst = next("uuid7", {});
  EXPECT_EQ(sFirst.substr(0, 13), "018df4d8-7fae");
  configure("psClock=\"2024-02-29T12:30:44.000Z\"");
  reload();
  const std::string sSecond = next("uuid7", {});
  EXPECT_GT(sSecond, sFirst);
  cvtEnd();
  ASSERT_EQ(config.start(), 0);
  EXPECT_GT(next("uuid7", {}), sSecond);
}

// --- UUIDs ---------------------------------------------------------------------------------------------------

TEST(StdUuid, OfVersion7BeginsWithTheTimeAndAscends) {
  using namespace cvt::functions;
  fixClock(Instant{1645557742, 0});  // the example of RFC 9562
  EXPECT_EQ(resultOf("uuid7", {}).substr(0, 18), "017f22e2-79b0-7000");
  EXPECT_EQ(resultOf("uuid7", {}).substr(0, 18), "017f22e2-79b0-7001") << "the clock stands still";
  fixClock(Instant{1645557742, 999'999});
  EXPECT_EQ(resultOf("uuid7", {}).substr(0, 18), "017f22e2-79b0-7fff");
  EXPECT_EQ(resultOf("uuid7", {}).substr(0, 18), "017f22e2-79b1-7000");
  fixClock(Instant{1645557741, 0});
  EXPECT_EQ(resultOf("uuid7", {}).substr(0, 18), "017f22e2-79b1-7001") << "the clock was put back";
  fixClock({});
  std::string sBefore;
  for (int i = 0; i < 10000; ++i) {
    const std::string sUuid = resultOf("uuid7", {});
    EXPECT_LT(sBefore, sUuid);
    sBefore = sUuid;
  }
}

void expectForm(const std::string &sUuid, char version) {
  ASSERT_EQ(sUuid.size(), 36U);
  for (size_t i = 0; i < sUuid.size(); ++i) {
    const bool bHyphen = i == 8 || i == 13 || i == 18 || i == 23;
    const char *const psAllowed = bHyphen ? "-" : "0123456789abcdef";
    EXPECT_NE(std::string(psAllowed).find(sUuid[i]), std::string::npos) << sUuid;
  }
  EXPECT_EQ(sUuid[14], version) << sUuid;
  EXPECT_NE(std::string("89ab").find(sUuid[19]), std::string::npos) << sUuid;
}

TEST(StdUuid, IsOfItsFormAndNeverTheSame) {
  std::set<std::string> seen;
  for (int i = 0; i < 5000; ++i) {
    const std::string sRandom = resultOf("uuid4", {});
    const std::string sTimed = resultOf("uuid7", {});
    expectForm(sRandom, '4');
    expectForm(sTimed, '7');
    EXPECT_TRUE(seen.insert(sRandom).second);
    EXPECT_TRUE(seen.insert(sTimed).second);
  }
}

TEST(StdUuid, EveryBitThatMayChangeDoes) {
  std::string sAny[36];
  for (int i = 0; i < 2000; ++i) {
    const std::string sUuid = resultOf("uuid4", {});
    for (size_t n = 0; n < 36; ++n) {
      if (sAny[n].find(sUuid[n]) == std::string::npos) sAny[n] += sUuid[n];
    }
  }
  for (size_t n = 0; n < 36; ++n) {
    const bool bHyphen = n == 8 || n == 13 || n == 18 || n == 23;
    EXPECT_EQ(sAny[n].size(), bHyphen || n == 14 ? 1U : n == 19 ? 4U : 16U) << n;
  }
}

TEST(StdUuid, ASeedMakesTheSameOnesAgain) {
  using namespace cvt::functions;
  fixRandom(1);
  const std::string sFirst = resultOf("uuid4", {});
  const std::string sSecond = resultOf("uuid4", {});
  EXPECT_NE(sFirst, sSecond);
  fixRandom(1);
  EXPECT_EQ(resultOf("uuid4", {}), sFirst);
  EXPECT_EQ(resultOf("uuid4", {}), sSecond);
  fixRandom(2);
  EXPECT_NE(resultOf("uuid4", {}), sFirst);
  fixRandom(0);
  EXPECT_NE(resultOf("uuid4", {}), resultOf("uuid4", {}));
}

}  // namespace

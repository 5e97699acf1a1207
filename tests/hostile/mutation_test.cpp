// Damaged copies of the example configurations: none crashes or hangs the library, each is refused with the
// name of a file, or loads; and then each message is converted or refused with a word.
#include <gtest/gtest.h>

#include "allocator.h"
#include "campaign.h"
#include "trial.h"

namespace {

using namespace hostile;

void expectGood(const std::string &sName, const Tally &tally, unsigned nCount) {
  EXPECT_EQ(tally.count(), static_cast<int>(nCount));
  for (const std::string &sBad : tally.bad) ADD_FAILURE() << sBad;
  std::printf("RESULT damaged configurations, %s: %s\n", sName.c_str(), tally.figures().c_str());
}

Scenario scenario(const std::string &sName) {
  for (Scenario &each : allScenarios()) {
    if (each.name() == sName) return std::move(each);
  }
  throw std::runtime_error("no scenario " + sName);
}

// CVT2_HOSTILE_TIMES: how many times as many mutants. Under the sanitizers, where a process takes long to
// begin, there are a tenth as many.
unsigned counted(unsigned nCount) {
  const char *const psTimes = std::getenv("CVT2_HOSTILE_TIMES");
  if (TEST_SANITIZED != 0) nCount /= 10;
  return psTimes == nullptr ? nCount : nCount * static_cast<unsigned>(std::atoi(psTimes));
}

void expectGood(const std::string &sName, unsigned nCount) {
  Scenario all = scenario(sName);
  expectGood(sName, run(all, 1, counted(nCount)), counted(nCount));
}

}  // namespace

TEST(DamagedConfiguration, ExamplesAreGoodBeforeTheyAreDamaged) {
  for (Scenario &each : allScenarios()) {
    const Outcome outcome = tryOut(each, 20);
    ASSERT_EQ(outcome.end, End::Loaded)
        << each.name() << outcome.sDeath << testing::PrintToString(outcome.refusal);
    ASSERT_EQ(outcome.results.size(), each.jobs().size());
    for (const std::string &sResult : outcome.results)
      EXPECT_TRUE(isConverted(sResult)) << each.name() << sResult;
  }
}

TEST(DamagedConfiguration, OfTheEnvelopeExample) {
  expectGood("envelope", 700);
}
TEST(DamagedConfiguration, OfTheLookupExample) {
  expectGood("lookup", 500);
}
TEST(DamagedConfiguration, OfTheFixSamples) {
  expectGood("fix", 400);
}
TEST(DamagedConfiguration, OfTheIsoExample) {
  expectGood("iso8583", 300);
}
TEST(DamagedConfiguration, OfTheXmlSamples) {
  expectGood("xml payments", 200);
}
TEST(DamagedConfiguration, OfTheNachaExample) {
  expectGood("nacha", 200);
}

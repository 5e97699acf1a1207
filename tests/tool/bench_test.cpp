#include "bench.h"

#include <gtest/gtest.h>

#include "bench_report.h"
#include "fake_clock.h"
#include "seen.h"
#include "toy_config.h"

using test::cs;
using test::FakeClock;
using tool::Bench;
using tool::BenchResult;
using tool::Options;
using tool::Stage;
using tool::Stopwatch;

namespace {

constexpr uint64_t kMillisecond = 1000000;
const std::string kOrder = "7,Ann,Rome,[A,1,[x,May;];],hi";

Options options() {
  Options all;
  all.verb = tool::Verb::bench;
  all.message = "Order";
  all.from = all.to = "01";
  all.maxOutput = 1000;
  all.seconds = 1;
  return all;
}

int f_calls;
int f_refusedFrom;  // the call from which on the step "tired" refuses every message

int tired(InnerMessage *, InnerMessage *, void *) {
  return ++f_calls >= f_refusedFrom ? -1 : 0;
}

int convertOwn(InnerMessage *ptSource, InnerMessage *ptTarget, void *) {
  return pubConvert(ptSource, ptTarget, nullptr);
}

void takeBytes(Bench &bench, std::string bytes) {
  bench.take({bytes.data(), bytes.size(), bytes, 0});
}

// Holds so many orders. Each look at its clocks takes a millisecond.
struct OrderBench : Bench {
  OrderBench(const Options &options, int orders) : Bench(options, FakeClock::look, FakeClock::look) {
    for (int i = 0; i < orders; ++i) takeBytes(*this, kOrder);
  }
};

class BenchTest : public testing::Test {
 protected:
  void SetUp() override {
    FakeClock::step = kMillisecond;
    f_calls = 0;
    cvtIdAddFunction(cs("tired"), tired);
    cvtIdAddFunction(cs("convertOwn"), convertOwn);
  }
  void TearDown() override {
    FakeClock::atLook = {};
    cvtEnd();
  }

  void start(const std::vector<std::string> &parse, const std::vector<std::string> &generate) {
    config.file("id/pipelines.xml", test::pipelines({{"01", parse, generate}}));
    ASSERT_EQ(config.start(), 0);
  }

  test::ToyConfig config;
};

std::vector<std::string> stepsOf(const FormatInfo &pipeline) {
  std::vector<std::string> names;
  for (const IdFunc *step = pipeline.ptGenFunc; step != nullptr; step = step->ptNext) {
    names.emplace_back(step->psFunctName);
  }
  return names;
}

}  // namespace

// A message is five looks: its begin, and the ends of four stages. The time begins with a look of its own.
TEST_F(BenchTest, EndsWhenTheTimeIsOver) {
  start({"pubParse"}, {"pubConvert", "pubGenerate"});
  const Options all = options();
  const BenchResult result = OrderBench(all, 3).measure();
  EXPECT_EQ(result.stopwatch.whole().count(), 200u);
  EXPECT_EQ(result.wall, 1000 * kMillisecond);
  EXPECT_EQ(result.stopwatch.clockCost(), kMillisecond);
  EXPECT_EQ(result.stopwatch.whole().sum(), 0u);
}

TEST_F(BenchTest, EndsWhenTheMessagesAreDone) {
  start({"pubParse"}, {"pubConvert", "pubGenerate"});
  Options all = options();
  all.messages = 7;
  const BenchResult result = OrderBench(all, 3).measure();
  EXPECT_EQ(result.stopwatch.whole().count(), 7u);
  EXPECT_EQ(result.inputBytes, 7 * kOrder.size());
  EXPECT_EQ(result.outputBytes, 7 * std::string("7,Ann,[A;]").size());
  EXPECT_EQ(result.refused, 0u);
}

TEST_F(BenchTest, StagesEndBehindTheConverterAndAfterwardsThePipelineIsAsItWas) {
  start({"pubParse"}, {"pubConvert", "pubGenerate"});
  const FormatInfo &pipeline = tool::generatePipeline("01");
  const std::vector<std::string> before = stepsOf(pipeline);
  bool bSeen = false;
  FakeClock::atLook = [&] { bSeen = bSeen || stepsOf(pipeline).size() == 3; };
  const Options all = options();
  EXPECT_TRUE(OrderBench(all, 1).measure().bConvertApart);
  EXPECT_TRUE(bSeen);
  EXPECT_EQ(stepsOf(pipeline), before);
}

TEST_F(BenchTest, AConverterThatIsAStepOfItsOwnCannotBeToldApart) {
  start({"pubParse"}, {"convertOwn", "pubGenerate"});
  const Options all = options();
  const BenchResult result = OrderBench(all, 1).measure();
  EXPECT_FALSE(result.bConvertApart);
  EXPECT_EQ(result.stopwatch.whole().count(), 250u);  // of four looks
}

TEST_F(BenchTest, AMessageThatIsRefusedAtFirstIsNotHeld) {
  start({"pubParse"}, {"pubConvert", "pubGenerate"});
  const Options all = options();
  OrderBench bench(all, 2);
  EXPECT_THROW(takeBytes(bench, "7,Ann"), tool::DataError);
  EXPECT_EQ(bench.held(), 2u);
  EXPECT_EQ(bench.heldBytes(), 2 * kOrder.size());
}

TEST_F(BenchTest, AMessageThatIsRefusedLaterEndsTheRun) {
  f_refusedFrom = 5;
  start({"tired", "pubParse"}, {"pubConvert", "pubGenerate"});
  const Options all = options();
  OrderBench bench(all, 2);
  try {
    bench.measure();
    ADD_FAILURE();
  } catch (const tool::DataError &error) {
    EXPECT_EQ(std::string(error.what()).find("message 1 at byte 0 went through once and then no more: "), 0u);
  }
  EXPECT_EQ(stepsOf(tool::generatePipeline("01")).size(), 2u);
}

TEST_F(BenchTest, OrIsLeftOutFromThenOn) {
  f_refusedFrom = 100;
  start({"tired", "pubParse"}, {"pubConvert", "pubGenerate"});
  Options all = options();
  all.bKeepGoing = true;
  OrderBench bench(all, 2);
  const BenchResult result = bench.measure();
  EXPECT_EQ(result.refused, 2u);
  EXPECT_EQ(bench.held(), 0u);
  EXPECT_EQ(result.stopwatch.whole().count(), 99u - 2 - 20);  // without those taken and the warm-up
}

TEST_F(BenchTest, AConfigurationThatChangesMeanwhileEndsTheRun) {
  config.root.sAttributes = "nReload=\"1\"";
  config.writeRoot();
  start({"pubParse"}, {"pubConvert", "pubGenerate"});
  const Options all = options();
  OrderBench bench(all, 1);
  int looks = 0;
  FakeClock::atLook = [&] {
    if (++looks == 20500) config.touchRoot();
  };
  try {
    bench.measure();
    ADD_FAILURE();
  } catch (const tool::Failure &failure) {
    EXPECT_EQ(failure.code(), tool::Exit::config);
  }
  EXPECT_EQ(stepsOf(tool::generatePipeline("01")).size(), 2u);
}

namespace {

// Two messages of 10 and 30 bytes that took 3 and 5 microseconds, on a clock whose looks cost 20 ns.
BenchResult twoMessages() {
  FakeClock::step = 20;
  BenchResult result{Stopwatch(FakeClock::look)};
  for (const uint64_t parse : {1000u, 3000u}) {
    result.stopwatch.begin();
    for (const auto &[stage, time] : {std::pair{Stage::parse, parse},
                                      {Stage::convert, 500},
                                      {Stage::generate, 1400},
                                      {Stage::release, 100}}) {
      FakeClock::now += time;
      result.stopwatch.lap(stage);
    }
    result.stopwatch.end();
  }
  result.bConvertApart = true;
  result.inputBytes = 40;
  result.outputBytes = 100;
  result.wall = 10000;
  result.cpu = 7500;
  return result;
}

}  // namespace

TEST(BenchReport, TheTableHoldsWhatWasMeasured) {
  EXPECT_EQ(tool::benchTable({twoMessages(), 3, 1, 1500000, 12000000}),
            R"(messages   3 read, 1 refused, 2 measured
time       0.000 s, of it on the CPU 0.000 s
rate       250000 messages/s, 333333 in a second on the CPU
input      20.0 bytes/message, 5.0 MB/s
output     50.0 bytes/message, 12.5 MB/s
memory     12.0 MB at the peak, of it messages held for the bench 1.5 MB
clock      20 ns a look, taken off each stage

stage            ns/message    share        p50        p99        max
parse                  2000   50.0 %       1003       3000       3000
convert                 500   12.5 %        500        500        500
generate               1400   35.0 %       1400       1400       1400
release                 100    2.5 %        100        100        100
whole                  4000  100.0 %       3007       5000       5000
on the CPU             3000   75.0 %
)");
}

TEST(BenchReport, WhatCannotBeToldApartIsCalledByBothNames) {
  BenchResult result = twoMessages();
  result.bConvertApart = false;
  const std::string table = tool::benchTable({result, 2, 0, 0, 0});
  EXPECT_NE(table.find("\nconvert+generate       1400"), table.npos);
  EXPECT_EQ(table.find("\nconvert "), table.npos);
}

TEST(BenchReport, JsonHoldsTheSameInOneLine) {
  EXPECT_EQ(tool::benchJson({twoMessages(), 3, 1, 1500000, 12000000}),
            R"({"read":3,"refused":1,"measured":2,"seconds":1e-05,"cpu_seconds":7.5e-06,)"
            R"("messages_per_second":250000.0,"messages_per_cpu_second":333333.3,)"
            R"("input":{"bytes":40,"mb_per_second":5.0},)"
            R"("output":{"bytes":100,"mb_per_second":12.5},"ns_per_message":{)"
            R"("parse":{"mean":2000.0,"p50":1003,"p99":3000,"max":3000},)"
            R"("convert":{"mean":500.0,"p50":500,"p99":500,"max":500},)"
            R"("generate":{"mean":1400.0,"p50":1400,"p99":1400,"max":1400},)"
            R"("release":{"mean":100.0,"p50":100,"p99":100,"max":100},)"
            R"("whole":{"mean":4000.0,"p50":3007,"p99":5000,"max":5000}},"cpu_ns_per_message":3000.0,)"
            R"("clock_ns":20,"peak_memory_bytes":12000000,"held_bytes":1500000})"
            "\n");
}

TEST(BenchReport, NothingMeasuredIsNoRate) {
  FakeClock::step = 20;
  const BenchResult none{Stopwatch(FakeClock::look)};
  EXPECT_NE(tool::benchTable({none, 2, 2, 0, 0}).find("rate       0 messages/s, 0 in a second on the CPU\n"),
            std::string::npos);
}

TEST(BenchReport, PeakMemoryIsThatOfThisProcess) {
  const uint64_t before = tool::peakMemory();
  EXPECT_GT(before, 1000000u);
  const std::vector<char> more(50000000, 'x');
  test::see(more.data());
  EXPECT_GT(tool::peakMemory(), before + 40000000);
}

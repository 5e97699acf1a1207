#include "stopwatch.h"

#include <gtest/gtest.h>

#include "fake_clock.h"

using test::FakeClock;
using tool::Stage;
using tool::Stopwatch;

namespace {

Stopwatch costing(uint64_t step) {
  FakeClock::step = step;
  return Stopwatch(FakeClock::look);
}

void lap(Stopwatch &stopwatch, Stage stage, uint64_t time) {
  FakeClock::now += time;
  stopwatch.lap(stage);
}

void message(Stopwatch &stopwatch, uint64_t parse, uint64_t convert, uint64_t generate, uint64_t release) {
  stopwatch.begin();
  lap(stopwatch, Stage::parse, parse);
  lap(stopwatch, Stage::convert, convert);
  lap(stopwatch, Stage::generate, generate);
  lap(stopwatch, Stage::release, release);
  stopwatch.end();
}

}  // namespace

TEST(Stopwatch, KnowsWhatALookCosts) {
  EXPECT_EQ(costing(23).clockCost(), 23u);
  EXPECT_EQ(costing(0).clockCost(), 0u);
}

TEST(Stopwatch, ALookThatWasHeldUpDoesNotMakeTheOthersDear) {
  int looks = 0;
  FakeClock::atLook = [&] { FakeClock::now += ++looks % 10 == 0 ? 5000 : 0; };
  EXPECT_EQ(costing(20).clockCost(), 20u);
  FakeClock::atLook = {};
}

TEST(Stopwatch, StagesAreWithoutTheLooksAtTheClock) {
  Stopwatch stopwatch = costing(23);
  message(stopwatch, 100, 50, 200, 5);
  EXPECT_EQ(stopwatch.stage(Stage::parse).max(), 100u);
  EXPECT_EQ(stopwatch.stage(Stage::convert).max(), 50u);
  EXPECT_EQ(stopwatch.stage(Stage::generate).max(), 200u);
  EXPECT_EQ(stopwatch.stage(Stage::release).max(), 5u);
  EXPECT_EQ(stopwatch.whole().sum(), 355u);
}

TEST(Stopwatch, WhatLiesBetweenMessagesIsNotCounted) {
  Stopwatch stopwatch = costing(10);
  message(stopwatch, 1, 2, 3, 4);
  FakeClock::now += 1000000;
  message(stopwatch, 1, 2, 3, 4);
  EXPECT_EQ(stopwatch.whole().count(), 2u);
  EXPECT_EQ(stopwatch.whole().sum(), 20u);
}

TEST(Stopwatch, AMessageThatDidNotComeToItsEndDoesNotCount) {
  Stopwatch stopwatch = costing(10);
  stopwatch.begin();
  lap(stopwatch, Stage::parse, 500);
  message(stopwatch, 1, 2, 3, 4);
  EXPECT_EQ(stopwatch.stage(Stage::parse).count(), 1u);
  EXPECT_EQ(stopwatch.stage(Stage::parse).sum(), 1u);
}

TEST(Stopwatch, AStageThatWasLeftOutTookNoTime) {
  Stopwatch stopwatch = costing(10);
  stopwatch.begin();
  lap(stopwatch, Stage::generate, 70);
  stopwatch.end();
  EXPECT_EQ(stopwatch.stage(Stage::convert).sum(), 0u);
  EXPECT_EQ(stopwatch.whole().sum(), 70u);
}

// The middle look may be dearer than one of them was.
TEST(Stopwatch, NoTimeIsLessThanNothing) {
  Stopwatch stopwatch = costing(100);
  FakeClock::step = 90;
  message(stopwatch, 0, 0, 0, 0);
  EXPECT_EQ(stopwatch.whole().sum(), 0u);
}

TEST(Stopwatch, TheClocksOfTheSystemGoOn) {
  for (const tool::Clock clock : {tool::wallClock, tool::cpuClock}) {
    const uint64_t begin = clock();
    while (clock() == begin) {
    }
    EXPECT_GT(clock(), begin);
  }
}

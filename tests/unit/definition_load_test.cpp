// Loading many and long definitions: time in proportion to size, and no more stack than there is.
#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>

#include "allocator.h"
#include "cpu_time.h"
#include "definition_xml.h"
#include "log_capture.h"

using namespace test;
using namespace test::model;

namespace {

std::vector<NodeXml> fields(int nNum) {
  std::vector<NodeXml> all;
  for (int i = 0; i < nNum; ++i) all.push_back(field("Field" + std::to_string(i)));
  return all;
}

double loadSeconds(int nDefinitions, int nFields) {
  Definitions definitions;
  Definitions::format("flat");
  const std::string sFields = chainXml("ptHead", fields(nFields));
  for (int i = 0; i < nDefinitions; ++i) {
    const std::string sName = "Message" + std::to_string(i);
    definitions.file("msg/" + sName + ".xml",
                     "<flat><Msg psMsgName='" + sName + "'>" + sFields + "</Msg></flat>");
  }
  const double start = test::cpuSeconds();
  EXPECT_NE(definitions.load(), nullptr);
  const double taken = test::cpuSeconds() - start;
  EXPECT_EQ(cvtGetMsg(cs("Message0"))->nFieldNum, nFields);
  EXPECT_NE(cvtGetMsg(cs(("Message" + std::to_string(nDefinitions - 1)).c_str())), nullptr);
  return taken;
}

// Runs on a stack of this size.
void onStack(size_t nBytes, std::function<void()> run) {
  pthread_attr_t attr;
  pthread_attr_init(&attr);
  ASSERT_EQ(pthread_attr_setstacksize(&attr, nBytes), 0);
  pthread_t thread{};
  const auto enter = [](void *p) -> void * {
    (*static_cast<std::function<void()> *>(p))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attr, enter, &run), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attr);
}

// Lists are read by recursion, whose frames are larger with the sanitizers' red zones.
#if TEST_SANITIZED || !defined(__OPTIMIZE__)
constexpr size_t kUsualStack = size_t{32} << 20;
#else
constexpr size_t kUsualStack = size_t{8} << 20;
#endif

}  // namespace

TEST(DefinitionLoad, TakesTimeInProportionToTheNumberOfDefinitions) {
  const double few = loadSeconds(200, 100);
  const double many = loadSeconds(2000, 100);
  // A processor's caches make ten times the size a little more than ten times the work.
  std::printf("200 definitions: %.3f s, 2000 definitions: %.3f s, ratio %.1f\n", few, many, many / few);
  RecordProperty("seconds2000", std::to_string(many));
  EXPECT_LT(many, 25 * few);
}

TEST(DefinitionLoad, TakesTimeInProportionToTheLengthOfADefinition) {
  const double few = loadSeconds(20, 500);
  const double many = loadSeconds(2, 5000);
  std::printf("20 of 500 fields: %.3f s, 2 of 5000 fields: %.3f s\n", few, many);
  EXPECT_LT(many, 5 * few + 0.05);
}

TEST(DefinitionLoad, ReadsTwentyThousandSiblings) {
  onStack(kUsualStack, [] {
    Definitions definitions;
    Definitions::format("flat");
    definitions.add("Long", fields(20000));
    ASSERT_NE(definitions.load(), nullptr);
    Message **const pptIdx = cvtGetMsg(cs("Long"))->pptMessageIdx;
    EXPECT_EQ(cvtGetMsg(cs("Long"))->nFieldNum, 20000);
    EXPECT_EQ(cvtGetNodeIdx(pptIdx, cs("field19999")), 19999);
    EXPECT_EQ(gnMaxValueNum, 20000);
  });
}

TEST(DefinitionLoad, LooksNamesUpInALongDefinitionWithoutWalkingIt) {
  Definitions definitions;
  Definitions::format("flat");
  definitions.add("Long", fields(5000));
  ASSERT_NE(definitions.load(), nullptr);
  Message **const pptIdx = cvtGetMsg(cs("Long"))->pptMessageIdx;
  const double start = test::cpuSeconds();
  for (int i = 0; i < 100000; ++i) ASSERT_EQ(cvtGetNodeIdx(pptIdx, cs("FIELD4999")), 4999);
  EXPECT_LT(test::cpuSeconds() - start, 1.0);
}

TEST(DefinitionLoad, FindsADefinitionAmongManyWithoutWalkingThem) {
  Definitions definitions;
  Definitions::format("flat");
  for (int i = 0; i < 500; ++i) definitions.add("Message" + std::to_string(i), {field("A")});
  ASSERT_NE(definitions.load(), nullptr);
  const double start = test::cpuSeconds();
  for (int i = 0; i < 100000; ++i) ASSERT_NE(cvtGetMsg(cs("Message0")), nullptr);
  EXPECT_LT(test::cpuSeconds() - start, 1.0);
}

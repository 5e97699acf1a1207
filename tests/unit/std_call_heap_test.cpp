// No function takes memory from the heap when it is called as it was before: each example of the catalogue.
#include <cstdlib>

#include "heap_count.h"
#include "kit/catalogue.h"
#include "std/manual.h"
#include "std/settings.h"
#include "std_call.h"

namespace {

using namespace cvt;

class StdCallHeap : public testing::TestWithParam<const kit::Topic *> {
 protected:
  // One call, in a message's memory that is given back.
  static int call(FncConvert function, std::vector<Value *> &arguments) {
    Value result{};
    MemPort memory = cvtMemNewNode();
    const int nStatus = function(&result, static_cast<int>(arguments.size()), arguments.data(), memory);
    cvtMemDelNode(memory);
    return nStatus;
  }
};

TEST_P(StdCallHeap, IsLeftAlone) {
  REQUIRE_HEAP_COUNT();
  functions::configure(nullptr);
  const kit::Topic &topic = *GetParam();
  for (size_t i = 0; i < topic.functions.size(); ++i) {
    for (const kit::Example &example : topic.functions[i].examples) {
      std::vector<Value> values(example.arguments.size());
      std::vector<Value *> arguments;
      for (size_t n = 0; n < values.size(); ++n) {
        values[n].psValue = const_cast<char *>(example.arguments[n].data());
        values[n].nLen = static_cast<int>(example.arguments[n].size());
        arguments.push_back(&values[n]);
      }
      if (call(topic.entries[i], arguments) != 0) continue;  // a table that is not there
      EXPECT_EQ(test::allocations([&] { call(topic.entries[i], arguments); }), 0)
          << kit::shownCall(topic.functions[i], example.arguments);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Topics, StdCallHeap, testing::ValuesIn(functions::kTopics));

}  // namespace

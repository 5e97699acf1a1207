// Names, values and memory: what the library does for every message and field.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "config.h"
#include "config_tree.h"
#include "cvt.h"

namespace {

using test::cs;

constexpr int kFields = 100;

// A started library with some hundred names of each kind; it ends with the benchmark.
class Library : public benchmark::Fixture {
 public:
  void SetUp(benchmark::State &) override {
    growth::Shape shape;
    shape.fields = kFields;
    shape.definitions = shape.converters = 100;
    m_config = std::make_unique<growth::Config>(shape);
    m_config->start();
  }
  void TearDown(benchmark::State &) override {
    cvtEnd();
    m_config.reset();
  }

 private:
  std::unique_ptr<growth::Config> m_config;
};

BENCHMARK_F(Library, InternKnownString)(benchmark::State &state) {
  for (auto _ : state) benchmark::DoNotOptimize(cvtStrDup(cs("F7")));
}

BENCHMARK_F(Library, InternNewString)(benchmark::State &state) {
  long n = 0;
  for (auto _ : state) benchmark::DoNotOptimize(cvtStrDup(("a new string " + std::to_string(n++)).data()));
}

BENCHMARK_F(Library, FindDefinition)(benchmark::State &state) {
  for (auto _ : state) benchmark::DoNotOptimize(cvtGetMsg(cs("Other57")));
}

BENCHMARK_F(Library, FindConverter)(benchmark::State &state) {
  for (auto _ : state) benchmark::DoNotOptimize(cvtGetCvt(cs("C57")));
}

BENCHMARK_F(Library, FindFieldByName)(benchmark::State &state) {
  Message **const index = cvtGetMsg(cs("In"))->pptMessageIdx;
  for (auto _ : state) benchmark::DoNotOptimize(cvtGetNodeIdx(index, cs("F57")));
}

BENCHMARK_F(Library, StoreValues)(benchmark::State &state) {
  ValueList *const list = cvtGetValueList(kFields);
  for (auto _ : state) {
    MemNode *const node = cvtMemNewNode();
    for (int i = 0; i < kFields; ++i) cvtDumpValue(cvtGetListValue(list, i), cs("ten bytes."), 10, node);
    cvtMemDelNode(node);
  }
  cvtFreeValue(list);
  state.SetItemsProcessed(state.iterations() * kFields);
}

BENCHMARK_F(Library, TakeAndFreeRepetitions)(benchmark::State &state) {
  constexpr int kRepetitions = 20;
  for (auto _ : state) {
    ValueList *const list = cvtGetValueList(kFields);
    for (int i = 0; i < kRepetitions; ++i) cvtNewLoopValueList(list, 0, 4);
    cvtFreeValue(list);
  }
  state.SetItemsProcessed(state.iterations() * kRepetitions);
}

BENCHMARK_F(Library, TakeAndFreeNode)(benchmark::State &state) {
  for (auto _ : state) cvtMemDelNode(cvtMemNewNode());
}

}  // namespace

// The rules of a converter, and the whole way of a message.
#include <benchmark/benchmark.h>

#include "config.h"
#include "config_tree.h"
#include "cvt.h"
#include "traffic.h"

namespace {

using test::cs;

// Rules that copy, over ten fields; see config.h for the messages.
void Rules(benchmark::State &state) {
  growth::Shape shape;
  shape.rules = static_cast<int>(state.range(0));
  growth::Config config(shape);
  config.start();
  Converter *const converter = cvtGetCvt(cs("C"));
  MemNode *const node = cvtMemNewNode();
  ValueList *const from = cvtGetValueList(shape.fields);
  ValueList *const to = cvtGetValueList(shape.fields);
  for (int i = 0; i < shape.fields; ++i) cvtDumpValue(cvtGetListValue(from, i), cs("value"), 5, node);
  for (auto _ : state) benchmark::DoNotOptimize(cvtConvert(from, to, converter, node));
  state.SetItemsProcessed(state.iterations() * shape.rules);
  cvtFreeValue(from);
  cvtFreeValue(to);
  cvtMemDelNode(node);
  cvtEnd();
}
BENCHMARK(Rules)->Arg(1)->Arg(10)->Arg(100);

// The last entry of a look-up rule.
void LookUp(benchmark::State &state) {
  growth::Shape shape;
  shape.rules = 0;
  shape.tags = static_cast<int>(state.range(0));
  growth::Config config(shape);
  config.start();
  Converter *const converter = cvtGetCvt(cs("C"));
  MemNode *const node = cvtMemNewNode();
  ValueList *const from = cvtGetValueList(shape.fields);
  ValueList *const to = cvtGetValueList(shape.fields);
  cvtDumpValue(cvtGetListValue(from, 0), cs("0"), 1, node);
  for (auto _ : state) benchmark::DoNotOptimize(cvtConvert(from, to, converter, node));
  cvtFreeValue(from);
  cvtFreeValue(to);
  cvtMemDelNode(node);
  cvtEnd();
}
BENCHMARK(LookUp)->Arg(10)->Arg(100)->Arg(1000);

// Fixed-length to JSON: read, converted, written, freed.
void WholeMessage(benchmark::State &state) {
  growth::Shape shape;
  shape.fields = shape.rules = static_cast<int>(state.range(0));
  growth::Config config(shape);
  config.start();
  {
    growth::Traffic traffic(config.message(), 0);
    for (auto _ : state) traffic.pass();
  }
  state.SetItemsProcessed(state.iterations() * shape.fields);
  cvtEnd();
}
BENCHMARK(WholeMessage)->Arg(10)->Arg(100);

}  // namespace

// Numbers of records, to and from decimal text.
#include <benchmark/benchmark.h>

#include <stdexcept>
#include <string>

#include "kit/number.h"

namespace {

using namespace cvt::kit;

NumberSpec spec(NumberForm form, NumberSign sign, int decimals = 0) {
  NumberSpec made;
  made.form = form;
  made.sign = sign;
  made.decimals = decimals;
  return made;
}

// A text with a point, blanks in front and a sign behind.
NumberSpec edited() {
  NumberSpec made = spec(NumberForm::Text, NumberSign::Trailing, 2);
  made.fill = NumberFill::BlankLeft;
  made.point = true;
  made.plusBlank = true;
  return made;
}

struct Sample {
  NumberSpec spec;
  size_t bytes;
  const char *value;
};

const Sample kText = {spec(NumberForm::Text, NumberSign::None), 9, "123456"};
const Sample kEdited = {edited(), 12, "-12345.67"};
const Sample kPacked = {spec(NumberForm::Packed, NumberSign::Trailing, 2), 6, "-123456789.01"};
const Sample kZoned = {spec(NumberForm::ZonedEbcdic, NumberSign::Trailing, 2), 11, "-123456789.01"};
const Sample kBinary = {spec(NumberForm::BinaryBig, NumberSign::Trailing), 4, "-123456789"};

void Write(benchmark::State &state, const Sample &sample) {
  std::string bytes(sample.bytes, '\0');
  const std::string_view value = sample.value;
  for (auto _ : state) {
    if (writeNumber(sample.spec, value, bytes.data(), bytes.size()).expected != nullptr)
      return state.SkipWithError("");
    benchmark::DoNotOptimize(bytes.data());
  }
}

void Read(benchmark::State &state, const Sample &sample) {
  std::string bytes(sample.bytes, '\0');
  writeNumber(sample.spec, sample.value, bytes.data(), bytes.size());
  char text[kCanonicalRoom];
  for (auto _ : state) {
    if (readNumber(sample.spec, bytes.data(), bytes.size(), text).expected != nullptr)
      return state.SkipWithError("");
    benchmark::DoNotOptimize(text);
  }
}

#define NUMBER_BENCHMARKS(sample)             \
  BENCHMARK_CAPTURE(Read, sample, k##sample); \
  BENCHMARK_CAPTURE(Write, sample, k##sample)
NUMBER_BENCHMARKS(Text);
NUMBER_BENCHMARKS(Edited);
NUMBER_BENCHMARKS(Packed);
NUMBER_BENCHMARKS(Zoned);
NUMBER_BENCHMARKS(Binary);

}  // namespace

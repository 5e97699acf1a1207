// Character sets: checked, and converted from and to UTF-8, in fields of forty bytes.
#include <benchmark/benchmark.h>

#include <string>
#include <string_view>

#include "kit/bytes.h"
#include "kit/charset.h"

namespace {

using namespace cvt::kit;

constexpr std::string_view kAscii = "Ann Example, 12 Long Street, Springfield";
constexpr std::string_view kLatin =
    "Zo\xC3\xAB M\xC3\xBCller, Stra\xC3\x9F"
    "e 12, K\xC3\xB6ln, D-50667";
constexpr std::string_view kChinese =
    "\xE5\x8C\x97\xE4\xBA\xAC\xE5\xB8\x82\xE4\xB8\x9C\xE5\x9F\x8E\xE5\x8C\xBA"
    "\xE9\x95\xBF\xE5\xAE\x89\xE8\xA1\x97\xE4\xB8\x80\xE5\x8F\xB7";

// Fails where the text was damaged.
void told(benchmark::State &state, const Converted &result, size_t bytes) {
  if (result.damage != Damage::None) state.SkipWithError(damageText(result.damage));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
}

void IsPrintable(benchmark::State &state) {
  std::string_view text = kAscii;
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    benchmark::DoNotOptimize(isPrintable(text.data(), text.size()));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(IsPrintable);

void CheckUtf8(benchmark::State &state, std::string_view text) {
  Converted result{};
  for (auto _ : state) benchmark::DoNotOptimize(result = Charset::checkUtf8(text.data(), text.size()));
  told(state, result, text.size());
}
BENCHMARK_CAPTURE(CheckUtf8, Ascii, kAscii);
BENCHMARK_CAPTURE(CheckUtf8, Latin, kLatin);
BENCHMARK_CAPTURE(CheckUtf8, Chinese, kChinese);

void Encode(benchmark::State &state, const char *set, std::string_view text) {
  const Charset *const charset = Charset::find(set);
  char out[200];
  Converted result{};
  for (auto _ : state)
    benchmark::DoNotOptimize(result = charset->encode(text.data(), text.size(), out, sizeof out));
  told(state, result, text.size());
}

void Decode(benchmark::State &state, const char *set, std::string_view text) {
  const Charset *const charset = Charset::find(set);
  char in[200];
  char out[200];
  const size_t bytes = charset->encode(text.data(), text.size(), in, sizeof in).written;
  Converted result{};
  for (auto _ : state) benchmark::DoNotOptimize(result = charset->decode(in, bytes, out, sizeof out));
  told(state, result, bytes);
}

#define CHARSET_BENCHMARKS(name, set, text)   \
  BENCHMARK_CAPTURE(Encode, name, set, text); \
  BENCHMARK_CAPTURE(Decode, name, set, text)
CHARSET_BENCHMARKS(AsciiAsGb18030, "GB18030", kAscii);
CHARSET_BENCHMARKS(ChineseAsGb18030, "GB18030", kChinese);
CHARSET_BENCHMARKS(LatinAsIso8859, "ISO-8859-1", kLatin);
CHARSET_BENCHMARKS(AsciiAsEbcdic, "IBM037", kAscii);

}  // namespace

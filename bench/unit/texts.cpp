// Texts of formats: XML scanned and escaped, JSON read and written, Base64.
#include <benchmark/benchmark.h>

#include <string>
#include <string_view>
#include <vector>

#include "json/cursor.h"
#include "json/escape.h"
#include "std/base64.h"
#include "xml/escape.h"
#include "xml/scanner.h"

namespace {

using namespace cvt;

constexpr std::string_view kPlain = "Ann Example, 12 Long Street, Springfield";
constexpr std::string_view kMarked = "Ann & \"Bob\" <Example>, 12 Long Street\n";

std::string repeated(std::string_view text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

void count(benchmark::State &state, size_t bytes) {
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
}

void XmlScan(benchmark::State &state) {
  const std::string text =
      "<order id=\"7\">" +
      repeated(
          "<item no=\"1\"><sku>AB123456</sku><name>a thing &amp; another</name><price>12.50</price></item>",
          20) +
      "</order>";
  xml::Room room(1 << 16);
  xml::Scanner::Memory memory;
  xml::Plan plan;
  plan.maxAttributes = 64;
  for (auto _ : state) {
    xml::Scanner scanner(plan, text, room, memory);
    xml::Scanner::Token token = scanner.next();
    while (token != xml::Scanner::Token::End && token != xml::Scanner::Token::NotPlain)
      token = scanner.next();
    if (token == xml::Scanner::Token::NotPlain) return state.SkipWithError("the document is not plain");
  }
  count(state, text.size());
}
BENCHMARK(XmlScan);

void XmlEscape(benchmark::State &state, std::string_view text) {
  const kit::Charset &utf8 = *kit::Charset::find(nullptr);
  char room[500];
  for (auto _ : state) {
    kit::Output out(room, 0, sizeof room);
    xml::putEscaped(out, utf8, text, xml::Place::Content);
    benchmark::DoNotOptimize(room);
  }
  count(state, text.size());
}
BENCHMARK_CAPTURE(XmlEscape, Plain, kPlain);
BENCHMARK_CAPTURE(XmlEscape, Marked, kMarked);

std::string jsonText() {
  const std::string item = R"({"no":1,"sku":"AB123456","name":"a thing \"and\" another","price":12.50})";
  return "{\"id\":7,\"items\":[" + repeated(item + ",", 19) + item + "]}";
}

void JsonScan(benchmark::State &state) {
  const std::string text = jsonText();
  for (auto _ : state) benchmark::DoNotOptimize(json::scan(text, true));
  count(state, text.size());
}
BENCHMARK(JsonScan);

void JsonRead(benchmark::State &state) {
  const std::string text = jsonText();
  for (auto _ : state) {
    json::Cursor in(json::scan(text, true), 0, 64);
    benchmark::DoNotOptimize(in.value());
    in.end("");
  }
  count(state, text.size());
}
BENCHMARK(JsonRead);

void JsonString(benchmark::State &state, std::string_view text) {
  char room[500];
  for (auto _ : state) {
    kit::Output out(room, 0, sizeof room);
    json::putString(out, text, false);
    benchmark::DoNotOptimize(room);
  }
  count(state, text.size());
}
BENCHMARK_CAPTURE(JsonString, Plain, kPlain);
BENCHMARK_CAPTURE(JsonString, Marked, kMarked);

constexpr auto kForm = functions::Base64::Plain;

void Base64Encode(benchmark::State &state) {
  const std::string bytes = repeated(kPlain, 25);
  std::vector<char> out(functions::base64Length(bytes.size(), kForm));
  for (auto _ : state) {
    functions::encodeBase64(bytes, kForm, out.data());
    benchmark::DoNotOptimize(out.data());
  }
  count(state, bytes.size());
}
BENCHMARK(Base64Encode);

void Base64Decode(benchmark::State &state) {
  const std::string bytes = repeated(kPlain, 25);
  std::string text(functions::base64Length(bytes.size(), kForm), '\0');
  functions::encodeBase64(bytes, kForm, text.data());
  std::vector<char> out(bytes.size() + 3);
  for (auto _ : state) benchmark::DoNotOptimize(functions::decodeBase64(text, kForm, out.data()));
  count(state, text.size());
}
BENCHMARK(Base64Decode);

}  // namespace

// growth: one point of a curve: what a message, the start and the memory cost where something grows.
//
//   growth                             the curves: name, sizes of the points, what grows
//   growth CURVE SIZE                  a line of figures, in the order of `growth --head`
//   growth CURVE SIZE --messages N     converts N messages and measures nothing: for tools that count
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "config.h"
#include "cvt.h"
#include "measure.h"
#include "traffic.h"

namespace {

using growth::Config;
using growth::Shape;
using growth::Traffic;

struct Curve {
  const char *name;
  const char *what;  // grows
  std::vector<int> sizes;
  void (*grow)(Shape &shape, int size);
};

const std::vector<int> kRegistry = {10, 100, 1000, 10000};

const std::vector<int> kCounts = {10, 30, 100, 300, 1000};

// A message must cost the same wherever only the others grow.
const std::vector<Curve> kCurves = {
    {"definitions", "other definitions", kRegistry, [](Shape &s, int n) { s.definitions = n; }},
    {"converters", "other converters", kRegistry, [](Shape &s, int n) { s.converters = n; }},
    {"entries", "other definitions with a converter and an identification entry", kRegistry,
     [](Shape &s, int n) { s.entries = n; }},
    {"pipelines", "other pipelines", kRegistry, [](Shape &s, int n) { s.pipelines = n; }},
    {"pairs", "other target formats of the message", kRegistry, [](Shape &s, int n) { s.pairs = n; }},
    {"strings", "other interned strings", kRegistry, [](Shape &s, int n) { s.strings = n; }},
    {"live", "other messages, held meanwhile", kRegistry, [](Shape &s, int n) { s.live = n; }},
    {"everything",
     "others of each of these kinds",
     {10, 100, 1000},
     [](Shape &s, int n) {
       s.definitions = s.converters = s.entries = s.pipelines = s.pairs = s.strings = s.live = n;
     }},
    {"longest", "fields of another definition, beside a message of ten repetitions", kCounts,
     [](Shape &s, int n) { s.longest = n, s.repetitions = 10; }},
    {"fields", "fields, with a rule each", kCounts, [](Shape &s, int n) { s.fields = s.rules = n; }},
    {"rules", "rules, over ten fields", kCounts, [](Shape &s, int n) { s.rules = n; }},
    {"tags", "entries of a look-up rule, the last of which is taken", kCounts,
     [](Shape &s, int n) { s.tags = n; }},
    {"repetitions",
     "repetitions of two fields",
     {1, 10, 100, 1000, 10000},
     [](Shape &s, int n) { s.repetitions = n; }},
    {"size",
     "bytes of each of ten fields",
     {10, 100, 1000, 10000, 100000},
     [](Shape &s, int n) { s.fieldLength = n; }},
};

void intern(int strings) {
  for (int i = 0; i < strings; ++i) {
    std::string text = "interned " + std::to_string(i);
    cvtStrDup(text.data());
  }
}

constexpr const char *kHead =
    "size,ns_per_message,messages_per_s,message_bytes,start_ms,reload_ms,heap_kb,resident_kb,bytes_read_"
    "message,"
    "bytes_made";

void measure(const Shape &shape, int size) {
  Config config(shape);
  const long heapBefore = growth::heapBytes();
  const long residentBefore = growth::residentKilobytes();
  double from = growth::cpuSeconds();
  config.start();
  const double start = growth::cpuSeconds() - from;
  const long heap = growth::heapBytes() - heapBefore;
  const long resident = growth::residentKilobytes() - residentBefore;
  from = growth::cpuSeconds();
  config.reload();
  const double reload = growth::cpuSeconds() - from;
  intern(shape.strings);
  Traffic traffic(config.message(), shape.live);
  const double each = growth::secondsEach([&] { traffic.pass(); });
  const Traffic::Bytes bytes = traffic.bytesOfMessages();
  std::printf("%d,%.1f,%.0f,%zu,%.2f,%.2f,%ld,%ld,%.0f,%.0f\n", size, each * 1e9, 1 / each,
              config.message().size(), start * 1e3, reload * 1e3, heap / 1024, resident, bytes.read,
              bytes.made);
}

void pass(const Shape &shape, long messages) {
  Config config(shape);
  config.start();
  intern(shape.strings);
  Traffic traffic(config.message(), shape.live);
  traffic.pass();
  traffic.passAll(messages);
}

const Curve &curveOf(const std::string &name) {
  for (const Curve &curve : kCurves) {
    if (curve.name == name) return curve;
  }
  throw std::runtime_error("no curve is named " + name);
}

int positive(const char *text) {
  const int n = std::atoi(text);
  if (n <= 0) throw std::runtime_error(std::string("a positive number was expected, found ") + text);
  return n;
}

void list() {
  for (const Curve &curve : kCurves) {
    std::printf("%s,", curve.name);
    for (const int size : curve.sizes) std::printf(" %d", size);
    std::printf(",%s\n", curve.what);
  }
}

void run(const std::vector<const char *> &words) {
  if (words.empty()) return list();
  if (words.size() == 1 && std::string(words[0]) == "--head") {
    std::printf("%s\n", kHead);
    return;
  }
  if (words.size() != 2 && (words.size() != 4 || std::string(words[2]) != "--messages"))
    throw std::runtime_error("expected nothing, --head, or CURVE SIZE [--messages N]");
  Shape shape;
  const int size = positive(words[1]);
  curveOf(words[0]).grow(shape, size);
  if (words.size() == 4) return pass(shape, positive(words[3]));
  measure(shape, size);
}

}  // namespace

int main(int argc, char **argv) try {
  run({argv + 1, argv + argc});
  cvtEnd();
  return 0;
} catch (const std::exception &e) {
  std::fprintf(stderr, "growth: %s\n", e.what());
  return 1;
}

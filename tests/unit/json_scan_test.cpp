// Where the tokens of a text begin: simdjson and the bytewise scan agree, and neither reads behind the text.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "json/cursor.h"
#include "kit/fault.h"

namespace {

using namespace cvt::json;

std::string content(const std::filesystem::path &file) {
  std::ifstream in(file, std::ios::binary);
  EXPECT_TRUE(in.good()) << file;
  return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<uint32_t> offsets(const Tokens &tokens) {
  return {tokens.begin, tokens.end + 1};
}

// What the grammar says of a text, with its tokens: the value's text, or nothing when it is refused. (Where a
// token ends that is none is left to each scan.)
std::string verdict(const Tokens &tokens) {
  try {
    Cursor in(tokens, 0, 64);
    const std::string value(in.value());
    in.end("");
    return value;
  } catch (const cvt::kit::Fault &) {
    return "";
  }
}

// A text of pieces that have a meaning in JSON, most of them in the wrong place.
std::string anything(std::mt19937 &random) {
  static const std::vector<std::string> kPieces = {
      "{",      "}",    "[",    "]",     ":",     ",",         "\"",
      "\\",     "\\\\", "\\\"", " ",     "\n",    "a",         "1",
      "-1.5e3", "true", "null", "\"a\"", "\"\":", "\xC3\xA9",  "\x01",
      "\x0C",   "\x1A", "\xFF", "/",     "[1,2]", "{\"a\":1}", "\"long enough to fill more than a word\""};
  std::string s;
  for (size_t n = random() % 40; n > 0; --n) s += kPieces[random() % kPieces.size()];
  return s;
}

TEST(JsonScan, BothScansFindTheSameTokensOfEveryTextOfTheSuite) {
  size_t nWell = 0;
  for (const auto &entry :
       std::filesystem::directory_iterator(CVT2_SOURCE_DIR "/src/cvt/plug/json/samples/suite/files")) {
    const std::string s = content(entry.path());
    EXPECT_EQ(verdict(scan(s, true)), verdict(scanBytes(s, true))) << entry.path();
    if (entry.path().filename().string()[0] != 'y') continue;
    const std::vector<uint32_t> fast = offsets(scan(s, true));
    EXPECT_EQ(fast, offsets(scanBytes(s, true))) << entry.path();
    ++nWell;
  }
  EXPECT_EQ(nWell, 48U);
}

TEST(JsonScan, BothScansLeadToTheSameVerdictOnAnything) {
  std::mt19937 random(7);
  size_t nAccepted = 0;
  for (int i = 0; i < 20000; ++i) {
    const std::string s = anything(random);
    const std::string sFast = verdict(scan(s, true));
    EXPECT_EQ(sFast, verdict(scanBytes(s, true))) << s;
    if (!sFast.empty()) ++nAccepted;
  }
  EXPECT_GT(nAccepted, 100U);
}

// A text that ends where readable memory does.
class AtTheEdge {
 public:
  AtTheEdge() : m_page(static_cast<size_t>(sysconf(_SC_PAGESIZE))) {
    void *room = mmap(nullptr, 2 * m_page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    m_room = room == MAP_FAILED ? nullptr : static_cast<char *>(room);
    if (m_room != nullptr && mprotect(m_room + m_page, m_page, PROT_NONE) != 0) m_room = nullptr;
  }
  ~AtTheEdge() {
    if (m_room != nullptr) munmap(m_room, 2 * m_page);
  }
  AtTheEdge(const AtTheEdge &) = delete;
  AtTheEdge &operator=(const AtTheEdge &) = delete;

  bool works() const { return m_room != nullptr; }
  std::string_view put(std::string_view s) {
    std::memcpy(m_room + m_page - s.size(), s.data(), s.size());
    return {m_room + m_page - s.size(), s.size()};
  }

 private:
  size_t m_page;
  char *m_room;
};

// Each of simdjson's implementations that this processor can run. It chooses once in a process.
class JsonScanOn : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    if (!supported()) GTEST_SKIP() << "this processor has no " << GetParam();
    ASSERT_EQ(setenv("SIMDJSON_FORCE_IMPLEMENTATION", GetParam().c_str(), 1), 0);
  }

  static bool supported() {
#if defined(__x86_64__)
    if (GetParam() == "westmere")
      return __builtin_cpu_supports("sse4.2") != 0 && __builtin_cpu_supports("pclmul") != 0;
    if (GetParam() == "haswell")
      return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("bmi") != 0;
#endif
    return GetParam() == "fallback";
  }
};

INSTANTIATE_TEST_SUITE_P(, JsonScanOn, testing::Values("fallback", "westmere", "haswell"),
                         [](const auto &one) { return one.param; });

void readAtTheEdge() {
  AtTheEdge edge;
  ASSERT_TRUE(edge.works());
  const std::string s =
      "[{\"a\":\"" + std::string(100, 'x') + "\\n\xC3\xA9\"},12.5,true,\"\\u00e9\",{\"b\":[null]}]";
  for (size_t n = 0; n <= s.size(); ++n) {
    const std::string_view text = edge.put(std::string_view(s).substr(0, n));
    const std::string sVerdict = verdict(scan(text, true));
    EXPECT_EQ(sVerdict == s, n == s.size()) << n;
    EXPECT_EQ(verdict(scan(text, false)), sVerdict);
  }
  std::mt19937 random(11);
  for (int i = 0; i < 5000; ++i) {
    const std::string sAny = anything(random);
    verdict(scan(edge.put(sAny), true));
  }
}

TEST(JsonScan, NothingBehindTheTextIsRead) {
  readAtTheEdge();
}

TEST_P(JsonScanOn, NothingBehindTheTextIsRead) {
  readAtTheEdge();
}

TEST(JsonScan, AnUnusuallyLargeTextLeavesNoMemoryBehind) {
  const std::string s = "[" + std::string(3000000, ' ') + "1]";
  EXPECT_EQ(verdict(scan(s, true)), s);
  EXPECT_EQ(verdict(scan(s, false)), s);
  trimScanner();
  EXPECT_EQ(verdict(scan("[1]", true)), "[1]");
}

TEST(JsonScan, NumbersAreThoseOfTheGrammar) {
  for (const char *const psNumber :
       {"0", "-0", "10", "0.10", "-1.5E+10", "1e0", "1e-00", "9007199254740993"}) {
    EXPECT_TRUE(isNumber(psNumber)) << psNumber;
  }
  for (const char *const psNone : {"", "-", "00", "01", "+1", "1.", ".1", "1e", "1e+", "1.e1", "1 ", " 1",
                                   "1x", "0x1", "Infinity", "--1"}) {
    EXPECT_FALSE(isNumber(psNone)) << psNone;
  }
}

// Most numbers are known without a look at each byte: by the same grammar, whatever stands in them.
TEST(JsonScan, EveryShortTextIsANumberByOneGrammar) {
  const std::string_view alphabet = "019.-+eE x";
  size_t numbers = 0;
  for (size_t i = 10; i < 2000000; ++i) {
    std::string s;
    for (size_t rest = i; rest >= 10; rest /= 10) s += alphabet[rest % 10];
    ASSERT_EQ(isNumber(s), isOtherNumber(s)) << s;
    numbers += isNumber(s) ? 1 : 0;
  }
  EXPECT_GT(numbers, 1000U);
}

TEST(JsonScan, OneWrongByteMakesANumberOfAnyLengthNone) {
  for (size_t n = 1; n <= 20; ++n) {
    for (const std::string &s : {std::string(n, '7'), std::string(n, '7') + ".25"}) {
      EXPECT_TRUE(isNumber(s)) << s;
      for (size_t i = 0; i < s.size(); ++i) {
        for (int c = 0; c < 256; ++c) {
          std::string other = s;
          other[i] = static_cast<char>(c);
          ASSERT_EQ(isNumber(other), isOtherNumber(other)) << other;
        }
      }
    }
  }
}

}  // namespace

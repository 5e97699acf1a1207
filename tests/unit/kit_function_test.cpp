#include "kit/catalogue.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "log_capture.h"

using namespace cvt::kit;

namespace {

using Texts = std::vector<std::string>;

// Arguments joined with "+".
void join(Call &call) {
  std::string all;
  for (int i = 0; i < call.count(); ++i) all.append(i == 0 ? "" : "+").append(call.text(i));
  call.answer(all);
}

int f_thrown;
void misbehave(Call &call) {
  if (f_thrown == 1) call.refuse(1, 7, "x", "y", "z");
  if (f_thrown == 2) call.refuse(0, Fault::kHere, "x", "y", "");
  if (f_thrown == 3) throw Fault(Fault::kHere, "x", "y");
  if (f_thrown == 4) throw Misconfigured("", nullptr, "x", "y");
  if (f_thrown == 5) throw std::bad_alloc();
  if (f_thrown == 6) throw std::runtime_error("why");
  if (f_thrown == 7) throw 5;
}

size_t f_length;
void reserve(Call &call) {
  call.result(f_length);
}

void readUtf8(Call &call) {
  call.answer(call.utf8(0));
}
void readNumber(Call &call) {
  call.answer(std::to_string(call.number(0, -7, 100)));
}

// clang-format off
constexpr FunctionRow kFunctions[] = {
    {"one", {{"text", "any"}}, 1, 1, join, "the text", {{{"a|b"}, "a|b"}}},
    {"some",
     {{"text", "any"}, {"more", "any"}, {"most", "any"}}, 2, 3, join, "the texts, joined",
     {{{"\n", "`"}, "\n+`"}, {{"\"", "\\", "\xFF"}, "#+#", Match::Shape}},
     {{{"a"}, "expected X"}}},
    {"misbehave", {{"text", "any"}, {"more", "any"}}, 2, 2, misbehave, "nothing", {{{"", ""}, ""}}},
    {"reserve", {}, 0, 0, reserve, "zero bytes", {{{}, ""}}},
    {"readUtf8", {{"text", "any"}}, 1, 1, readUtf8, "the text", {{{""}, ""}}},
    {"readNumber", {{"number", "any"}}, 1, 1, readNumber, "the number", {{{"1"}, "1"}}},
    {"all", {{"text", "any"}}, 1, 9, join, "the texts", {{{""}, ""}}},
};
// clang-format on
constexpr Topic kTopic = topic<kFunctions>("Tests", "All of them are for tests.");
enum { kOne, kSome, kMisbehave, kReserve, kUtf8, kNumber };

Value valueOf(const char *bytes, int length) {
  Value value{};
  value.psValue = const_cast<char *>(bytes);
  value.nLen = length;
  return value;
}

struct Outcome {
  int status;
  std::string result;
  Texts lines;
};

Outcome run(size_t row, std::vector<Value *> arguments) {
  test::clearLog();
  Value result{};
  MemPort memory = cvtMemNewNode();
  const int status =
      kTopic.entries[row](&result, static_cast<int>(arguments.size()), arguments.data(), memory);
  const bool filled = result.psValue != nullptr;
  const Outcome outcome = {status,
                           filled ? std::string(result.psValue, static_cast<size_t>(result.nLen)) : "none",
                           test::logTexts()};
  EXPECT_TRUE(!filled || result.psValue[result.nLen] == 0);
  cvtMemDelNode(memory);
  return outcome;
}

}  // namespace

TEST(KitFunction, ArgumentsArriveAndTheResultIsInTheMessagesMemory) {
  Value a = valueOf("a", 1);
  Value bc = valueOf("bcd", 2);
  Value none = valueOf(nullptr, 0);
  EXPECT_EQ(run(kOne, {&bc}).result, "bc");
  EXPECT_EQ(run(kOne, {&none}).result, "");
  EXPECT_EQ(run(kSome, {&a, &none, &bc}).result, "a++bc");

  Value result{};
  Value *arguments[] = {&a};
  MemPort memory = cvtMemNewNode();
  ASSERT_EQ(kTopic.entries[kOne](&result, 1, arguments, memory), 0);
  const MemBlock *block = memory->ptNowBlock;
  EXPECT_TRUE(result.psValue >= block->psBuf && result.psValue < block->psBuf + block->nMaxSize);
  EXPECT_NE(static_cast<void *>(result.psValue), static_cast<void *>(a.psValue));
  cvtMemDelNode(memory);
}

TEST(KitFunction, AWrongNumberOfArgumentsSaysWhatToWrite) {
  Value a = valueOf("a", 1);
  EXPECT_EQ(run(kOne, {}).lines, Texts{"Func[one]: expected 1 argument, found 0. Write one(text)."});
  EXPECT_EQ(run(kOne, {&a, &a}).lines, Texts{"Func[one]: expected 1 argument, found 2. Write one(text)."});
  EXPECT_EQ(run(kSome, {&a}).lines,
            Texts{"Func[some]: expected 2 to 3 arguments, found 1. Write some(text, more[, most])."});
  EXPECT_EQ(run(kSome, {&a, &a, &a, &a}).status, -1);
  EXPECT_EQ(run(kSome, {&a, &a}).status, 0);
  EXPECT_EQ(run(kReserve, {&a}).lines,
            Texts{"Func[reserve]: expected 0 arguments, found 1. Write reserve()."});
}

TEST(KitFunction, ArgumentsWithoutATextAreRefused) {
  Value a = valueOf("a", 1);
  Value loop = valueOf("x", -1);
  Value empty = valueOf(nullptr, 4);
  EXPECT_EQ(
      run(kSome, {&a, nullptr}).lines,
      Texts{
          "Func[some] Arg[2]: expected a value, found none. The lines before say why it was not to be had."});
  EXPECT_EQ(run(kOne, {&loop}).lines,
            Texts{"Func[one] Arg[1]: expected a value, found a loop. Take a field of its "
                  "repetitions, or their number with LoopGetNum."});
  EXPECT_EQ(run(kOne, {&empty}).lines,
            Texts{"Func[one] Arg[1] Len[4]: expected a value, found a length without "
                  "bytes. Give the constant its psValue."});
}

TEST(KitFunction, NothingThrownLeavesTheEntryPoint) {
  Value a = valueOf("secret", 6);
  const char *const lines[] = {"",
                               "Func[misbehave] Arg[2] Len[6] Offset[7]: expected x, found y. z.",
                               "Func[misbehave] Arg[1] Len[6]: expected x, found y.",
                               "Func[misbehave]: expected x, found y.",
                               "Func[misbehave] expected x, found y.",
                               "Func[misbehave]: out of memory.",
                               "Func[misbehave]: internal error: why.",
                               "Func[misbehave]: internal error."};
  for (f_thrown = 0; f_thrown <= 7; ++f_thrown) {
    const Outcome outcome = run(kMisbehave, {&a, &a});
    EXPECT_EQ(outcome.status, f_thrown == 0 ? 0 : -1);
    EXPECT_EQ(outcome.lines, f_thrown == 0 ? Texts{} : Texts{lines[f_thrown]});
    EXPECT_EQ(outcome.result, "none");
  }
}

TEST(KitFunction, WhatTheLibraryHandsOverIsChecked) {
  Value a = valueOf("a", 1);
  Value result{};
  Value *arguments[] = {&a};
  MemPort memory = cvtMemNewNode();
  const FncConvert one = kTopic.entries[kOne];
  test::clearLog();
  EXPECT_EQ(one(nullptr, 1, arguments, memory), -1);
  EXPECT_EQ(one(&result, 1, nullptr, memory), -1);
  EXPECT_EQ(one(&result, 1, arguments, nullptr), -1);
  EXPECT_EQ(one(&result, -1, arguments, memory), -1);
  EXPECT_EQ(test::logTexts(), (Texts{"Func[one]: [ptResult] is NULL", "Func[one]: [pptArgs] is NULL",
                                     "Func[one]: [ptMemNode] is NULL",
                                     "Func[one]: expected 1 argument, found -1. Write one(text)."}));
  EXPECT_EQ(kTopic.entries[kReserve](&result, 0, nullptr, memory), 0);
  cvtMemDelNode(memory);
}

TEST(KitFunction, AResultThatNoLengthCanTellIsRefused) {
  f_length = 3;
  EXPECT_EQ(run(kReserve, {}).result, std::string(3, '\0'));
  for (f_length = INT_MAX; f_length < static_cast<size_t>(INT_MAX) + 3; ++f_length) {
    EXPECT_EQ(run(kReserve, {}).lines,
              Texts{"Func[reserve]: expected a result of at most 2147483646 bytes, found " +
                    std::to_string(f_length) + " bytes. Shorten the arguments."});
  }
}

TEST(KitFunction, AResultIsNoLongerThanTheLimit) {
  limitResults(3);
  f_length = 3;
  EXPECT_EQ(run(kReserve, {}).status, 0);
  f_length = 4;
  EXPECT_EQ(
      run(kReserve, {}).lines,
      Texts{"Func[reserve]: expected a result of at most 3 bytes, found 4 bytes. Shorten the arguments."});
}

TEST(KitFunction, TextIsRefusedAtTheByteThatIsNoUtf8) {
  Value good = valueOf("h\xc3\xa9", 3);
  Value cut = valueOf("h\xc3", 2);
  Value bad = valueOf("h\xa9y", 3);
  EXPECT_EQ(run(kUtf8, {&good}).result, "h\xc3\xa9");
  EXPECT_EQ(run(kUtf8, {&cut}).lines,
            Texts{"Func[readUtf8] Arg[1] Len[2] Offset[1]: expected UTF-8, found the end inside a character. "
                  "Take the text in UTF-8, as formats deliver it."});
  EXPECT_EQ(run(kUtf8, {&bad}).lines,
            Texts{"Func[readUtf8] Arg[1] Len[3] Offset[1]: expected UTF-8, found a byte that is none. "
                  "Take the text in UTF-8, as formats deliver it."});
}

TEST(KitFunction, NumbersAreWholeAndInsideTheirRange) {
  const auto of = [](const std::string &text) {
    Value value = valueOf(text.data(), static_cast<int>(text.size()));
    const Outcome outcome = run(kNumber, {&value});
    return outcome.status == 0 ? outcome.result : outcome.lines.at(0).substr(24);
  };
  EXPECT_EQ(of("7"), "7");
  EXPECT_EQ(of(" -007 "), "-7");
  EXPECT_EQ(of("+100"), "100");
  const std::string expected = "expected a whole number from -7 to 100, found ";
  EXPECT_EQ(of("101"), "Len[3]: " + expected + "one outside.");
  EXPECT_EQ(of("-8"), "Len[2]: " + expected + "one outside.");
  EXPECT_EQ(of("99999999999"), "Len[11]: " + expected + "one outside.");
  EXPECT_EQ(of(" "), "Len[1]: " + expected + "no digits.");
  for (const std::string text : {"1x", "x", "+-1", "--1", "1 1", "1.0", "+", "0x1"}) {
    EXPECT_EQ(of(text), "Len[" + std::to_string(text.size()) + "]: " + expected + "something else.") << text;
  }
}

TEST(KitFunction, AResultCanBecomeShorterThanItsRoom) {
  Value result{};
  MemPort memory = cvtMemNewNode();
  Call call(&result, {}, memory);
  std::memcpy(call.result(4), "abcd", 4);
  call.shorten(2);
  EXPECT_EQ(result.nLen, 2);
  EXPECT_STREQ(result.psValue, "ab");
  cvtMemDelNode(memory);
}

TEST(KitFunction, RegistersEveryRowUnderItsName) {
  addFunctions(kTopic);
  for (size_t i = 0; i < std::size(kFunctions); ++i) {
    void *entry = cvtStrFindStringList(gptCvtGlobalInfo->ptFuncList, const_cast<char *>(kFunctions[i].name));
    EXPECT_EQ(reinterpret_cast<FncConvert>(entry), kTopic.entries[i]) << kFunctions[i].name;
  }
}

TEST(KitFunction, SignaturesTellWhatMayBeLeftOutAndRepeated) {
  EXPECT_EQ(signature(kFunctions[kOne]), "one(text)");
  EXPECT_EQ(signature(kFunctions[kSome]), "some(text, more[, most])");
  EXPECT_EQ(signature(kFunctions[kReserve]), "reserve()");
  EXPECT_EQ(signature(kFunctions[kNumber + 1]), "all(text, ...)");
}

TEST(KitFunction, TheCatalogueComesFromTheTable) {
  const Topic *topics[] = {&kTopic};
  const std::string text = catalogue(topics);
  EXPECT_EQ(text.find("\n## Tests\n\nAll of them are for tests.\n\n### one(text)\n\nResult: the text.\n"),
            0U);
  EXPECT_NE(text.find("| example | result |\n|---|---|\n| `one(\"a\\|b\")` | `\"a\\|b\"` |\n"), text.npos);
  const std::string some =
      "\n### some(text, more[, most])\n\nResult: the texts, joined.\n\n| argument | meaning "
      "|\n|---|---|\n| `text` | any |\n| `more` | any |\n| `most` | any |\n\n| example | result "
      "|\n|---|---|\n| `` some(\"\\x0A\", \"`\") `` | `` \"\\x0A+`\" `` |\n| `some(\"\\\"\", \"\\\\\", "
      "\"\\xFF\")` | like "
      "`\"#+#\"` |\n\n| refused | error |\n|---|---|\n| `some(\"a\")` | `expected X` |\n";
  EXPECT_NE(text.find(some), text.npos) << text;
  EXPECT_NE(text.find("\n### reserve()\n\nResult: zero bytes.\n\n| example"), text.npos);
}

constexpr FunctionRow kNoExample[] = {{"one", {{"text", "any"}}, 1, 1, join, "the text", {}}};
constexpr FunctionRow kTooFew[] = {{"one", {{"text", "any"}}, 1, 1, join, "the text", {{{}, ""}}}};
constexpr FunctionRow kTooMany[] = {{"one", {{"text", "any"}}, 1, 1, join, "the text", {{{"", ""}, ""}}}};
constexpr FunctionRow kNoParameter[] = {{"one", {}, 0, 1, join, "the text", {{{}, ""}}}};

TEST(KitFunction, ARowThatDoesNotDocumentItsFunctionIsNone) {
  EXPECT_TRUE(isCatalogue(kFunctions));
  EXPECT_FALSE(isCatalogue(kNoExample));
  EXPECT_FALSE(isCatalogue(kTooFew));
  EXPECT_FALSE(isCatalogue(kTooMany));
  EXPECT_FALSE(isCatalogue(kNoParameter));
}

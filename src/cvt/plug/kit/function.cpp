#include "function.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdint>
#include <cstring>

#include "barrier.h"
#include "utf8.h"

namespace cvt::kit {

namespace {

constexpr int kMaxLength = INT_MAX - 1;  // of a result with its zero byte

int f_longest = kMaxLength;

std::string arguments(int n) {
  return std::to_string(n) + (n == 1 ? " argument" : " arguments");
}

void checkCount(const FunctionRow &function, int count) {
  if (count >= function.minArguments && count <= function.maxArguments) return;
  const bool exact = function.minArguments == function.maxArguments;
  throw Fault(
      Fault::kHere,
      (exact ? "" : std::to_string(function.minArguments) + " to ") + arguments(function.maxArguments),
      std::to_string(count), "Write " + signature(function));
}

void report(const FunctionRow &function, const Call &call, const Fault &fault) {
  const std::string offset =
      fault.offset() == Fault::kHere ? "" : " Offset[" + std::to_string(fault.offset()) + "]";
  KIT_ERR("Func[%s]%s%s: %s", function.name, call.place().c_str(), offset.c_str(), fault.text().c_str());
}

}  // namespace

std::string_view Call::text(int argument) {
  const Value *value = m_arguments[static_cast<size_t>(argument)];
  if (value == nullptr) {
    refuse(argument, Fault::kHere, "a value", "none", "The lines before say why it was not to be had");
  }
  if (value->nLen < 0) {
    refuse(argument, Fault::kHere, "a value", "a loop",
           "Take a field of its repetitions, or their number with LoopGetNum");
  }
  if (value->nLen == 0) return {};
  if (value->psValue == nullptr) {
    refuse(argument, Fault::kHere, "a value", "a length without bytes", "Give the constant its psValue");
  }
  return {value->psValue, static_cast<size_t>(value->nLen)};
}

std::string_view Call::utf8(int argument) {
  const std::string_view bytes = text(argument);
  for (size_t at = 0; at < bytes.size();) {
    const Utf8Char c = utf8Char(bytes.data() + at, bytes.size() - at);
    if (c.length <= 0) {
      refuse(argument, at, "UTF-8", c.length == 0 ? "a byte that is none" : "the end inside a character",
             "Take the text in UTF-8, as formats deliver it");
    }
    at += static_cast<size_t>(c.length);
  }
  return bytes;
}

int Call::number(int argument, int min, int max) {
  const auto wrong = [&](const char *found) {
    refuse(argument, Fault::kHere,
           "a whole number from " + std::to_string(min) + " to " + std::to_string(max), found);
  };
  std::string_view digits = text(argument);
  while (digits.starts_with(' ')) digits.remove_prefix(1);
  while (digits.ends_with(' ')) digits.remove_suffix(1);
  if (digits.empty()) wrong("no digits");
  const bool negative = digits[0] == '-';
  if (negative || digits[0] == '+') digits.remove_prefix(1);
  if (digits.empty()) wrong("something else");
  constexpr int64_t kOutside = int64_t{INT_MAX} + 2;
  int64_t number = 0;
  for (const char c : digits) {
    if (c < '0' || c > '9') wrong("something else");
    number = std::min(number * 10 + (c - '0'), kOutside);
  }
  if (negative) number = -number;
  if (number < min || number > max) wrong("one outside");
  return static_cast<int>(number);
}

char *Call::result(size_t length) {
  if (length > static_cast<size_t>(f_longest)) {
    throw Fault(Fault::kHere, "a result of at most " + std::to_string(f_longest) + " bytes",
                std::to_string(length) + " bytes", "Shorten the arguments");
  }
  auto *bytes = static_cast<char *>(cvtMalloc(static_cast<int>(length) + 1, m_memory));
  if (bytes == nullptr) throw std::bad_alloc();
  m_result->psValue = bytes;
  m_result->nLen = static_cast<int>(length);
  return bytes;
}

void Call::shorten(size_t length) {
  m_result->psValue[length] = '\0';
  m_result->nLen = static_cast<int>(length);
}

void Call::answer(std::string_view text) {
  char *bytes = result(text.size());
  if (!text.empty()) std::memcpy(bytes, text.data(), text.size());
}

void Call::answer(size_t number) {
  char digits[20];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  answer(std::string_view(digits, static_cast<size_t>(end - digits)));
}

void Call::refuse(int argument, size_t offset, std::string expected, std::string found, std::string advice) {
  m_refused = argument;
  throw Fault(offset, std::move(expected), std::move(found), std::move(advice));
}

std::string Call::place() const {
  if (m_refused < 0) return {};
  std::string place = " Arg[" + std::to_string(m_refused + 1) + "]";
  const Value *value = m_arguments[static_cast<size_t>(m_refused)];
  if (value != nullptr && value->nLen >= 0) place += " Len[" + std::to_string(value->nLen) + "]";
  return place;
}

void limitResults(int bytes) {
  f_longest = bytes < kMaxLength ? bytes : kMaxLength;
}

int runFunction(const FunctionRow &function, Value *result, int count, Value **arguments, MemPort memory) {
  const char *missing = result == nullptr                    ? "ptResult"
                        : arguments == nullptr && count != 0 ? "pptArgs"
                        : memory == nullptr                  ? "ptMemNode"
                                                             : nullptr;
  if (missing != nullptr) {
    KIT_ERR("Func[%s]: [%s] is NULL", function.name, missing);
    return -1;
  }
  Call call(result, {arguments, count < 0 ? 0 : static_cast<size_t>(count)}, memory);
  return guarded(
      "Func", function.name,
      [&] {
        checkCount(function, count);
        function.body(call);
      },
      [&](const Fault &fault) { report(function, call, fault); });
}

void addFunctions(const Topic &topic) {
  for (size_t i = 0; i < topic.functions.size(); ++i) {
    cvtConvertAddFunction(const_cast<char *>(topic.functions[i].name), topic.entries[i]);
  }
}

std::string signature(const FunctionRow &function) {
  std::string text;
  const size_t count = function.parameters.size();
  size_t optional = 0;
  for (size_t i = 0; i < count; ++i) {
    const bool more = i >= static_cast<size_t>(function.minArguments);
    if (more) ++optional;
    text += std::string(more ? "[" : "") + (i == 0 ? "" : ", ") + function.parameters[i].name;
  }
  if (static_cast<size_t>(function.maxArguments) > count) text += ", ...";
  return std::string(function.name) + "(" + text + std::string(optional, ']') + ")";
}

}  // namespace cvt::kit

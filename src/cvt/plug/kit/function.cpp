#include "function.h"

#include <climits>
#include <cstring>

#include "barrier.h"

namespace cvt::kit {

namespace {

std::string arguments(int n) {
  return std::to_string(n) + (n == 1 ? " argument" : " arguments");
}

void checkCount(const FunctionRow &function, int count) {
  if (count >= function.minArguments && count <= function.maxArguments) return;
  const bool exact = function.minArguments == function.maxArguments;
  throw Fault(
      Fault::kHere,
      (exact ? "" : std::to_string(function.minArguments) + " to ") + arguments(function.maxArguments),
      std::to_string(count), "Write " + std::string(function.name) + "(" + function.parameters + ")");
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

char *Call::result(size_t length) {
  if (length >= INT_MAX) {
    throw Fault(Fault::kHere, "a result of at most " + std::to_string(INT_MAX - 1) + " bytes",
                std::to_string(length) + " bytes", "Shorten the arguments");
  }
  auto *bytes = static_cast<char *>(cvtMalloc(static_cast<int>(length) + 1, m_memory));
  if (bytes == nullptr) throw std::bad_alloc();
  m_result->psValue = bytes;
  m_result->nLen = static_cast<int>(length);
  return bytes;
}

void Call::answer(std::string_view text) {
  char *bytes = result(text.size());
  if (!text.empty()) std::memcpy(bytes, text.data(), text.size());
}

void Call::refuse(int argument, size_t offset, const char *expected, const char *found, const char *advice) {
  m_refused = argument;
  throw Fault(offset, expected, found, advice);
}

std::string Call::place() const {
  if (m_refused < 0) return {};
  std::string place = " Arg[" + std::to_string(m_refused + 1) + "]";
  const Value *value = m_arguments[static_cast<size_t>(m_refused)];
  if (value != nullptr && value->nLen >= 0) place += " Len[" + std::to_string(value->nLen) + "]";
  return place;
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

std::string markdownTable(const Topic &topic) {
  std::string table = "| function | result |\n|---|---|\n";
  for (const FunctionRow &function : topic.functions) {
    table +=
        "| `" + std::string(function.name) + "(" + function.parameters + ")` | " + function.help + " |\n";
  }
  return table;
}

}  // namespace cvt::kit

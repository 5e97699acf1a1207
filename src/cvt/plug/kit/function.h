// function.h: conversion functions, for the rules of converters.
//
//   void sqlQuote(kit::Call &call) { ... call.answer(text); }       // throws Fault
//   constexpr kit::FunctionRow kFunctions[] = {                     // reads like a catalogue, and is one
//       {"sqlQuote",
//        {{"text", "any bytes but zero"}},
//        1, 1, sqlQuote,
//        "the text as a literal",
//        {{{"O'Brien"}, "'O''Brien'"}},
//        {{{"ab\0cd"sv}, "Arg[1] Len[5] Offset[2]: expected no zero byte, found one. ..."}}},
//   };
//   constinit const kit::Topic kSql = kit::topic<kFunctions>("SQL statements", "Values as pieces of ...");
//   kit::addFunctions(kSql);                                        // in the plug-in's initialiser
//
// A row is the documentation of its function and its tests: catalogue.h writes the manual from it, and every
// example and refusal is run. A row without an example does not compile.
//
// The library calls a function through an entry point of its own, which counts the arguments, catches
// everything (bad_alloc included), logs one line and answers -1:
//
//   Func[NAME] Arg[NUMBER] Len[BYTES] Offset[N]: expected X, found Y. ADVICE
//
// Arguments are counted from 1 in the line, and their bytes are never in it: nobody knows here who reads the
// log.
#pragma once

#include <array>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "cvt_convert.h"
#include "fault.h"

namespace cvt::kit {

// One call of a function. Arguments are numbered from 0.
class Call {
 public:
  Call(Value *result, std::span<Value *const> arguments, MemPort memory)
      : m_result(result), m_arguments(arguments), m_memory(memory) {}

  int count() const { return static_cast<int>(m_arguments.size()); }
  bool has(int argument) const { return argument < count(); }

  // The bytes of an argument, for as long as the call. Throws Fault when it could not be resolved or is a
  // loop.
  std::string_view text(int argument);

  // The same, when it is UTF-8.
  std::string_view utf8(int argument);

  // A whole number in that range; blanks around it are left out.
  int number(int argument, int min, int max);

  // Makes room for the result in the message's memory: length bytes, zeroed, and a zero byte behind them.
  char *result(size_t length);

  // Makes the result shorter than the room that it got.
  void shorten(size_t length);

  // The result is a copy of these bytes.
  void answer(std::string_view text);

  // The result is a number, in decimal digits.
  void answer(size_t number);

  // Throws a Fault in an argument. offset: in its bytes, or Fault::kHere for all of it. found: not its bytes.
  [[noreturn]] void refuse(int argument, size_t offset, std::string expected, std::string found,
                           std::string advice = {});

  // " Arg[1] Len[5]" of the argument that was refused; empty when none was.
  std::string place() const;

 private:
  Value *m_result;
  std::span<Value *const> m_arguments;
  MemPort m_memory;
  int m_refused = -1;
};

// The longest result of any function of this plug-in, in bytes. Until it is set: what a length can tell.
void limitResults(int bytes);

// --- The table ---------------------------------------------------------------------------------------------

// A short list inside a row.
template <class T, size_t kMost>
class Few {
 public:
  constexpr Few() = default;
  constexpr Few(std::initializer_list<T> items) {
    for (const T &item : items) m_items[m_size++] = item;
  }
  constexpr size_t size() const { return m_size; }
  constexpr const T *begin() const { return m_items.data(); }
  constexpr const T *end() const { return m_items.data() + m_size; }
  constexpr const T &operator[](size_t i) const { return m_items[i]; }

 private:
  std::array<T, kMost> m_items{};
  size_t m_size = 0;
};

struct Parameter {
  const char *name;
  const char *meaning;
};

using Arguments = Few<std::string_view, 6>;

// Whether a result is exactly that, or of that shape: "#" is any hexadecimal digit. For what chance decides.
enum class Match { Exact, Shape };

// A call, and its result; or, for a refusal, what its line says behind "Func[NAME] ".
struct Example {
  Arguments arguments;
  std::string_view result;
  Match match = Match::Exact;
};

// One row of a table.
struct FunctionRow {
  const char *name;
  Few<Parameter, 6> parameters;
  int minArguments;
  int maxArguments;  // more than there are parameters: the last one may be repeated
  void (*body)(Call &);
  const char *help;  // what the result is
  Few<Example, 8> examples;
  Few<Example, 8> refusals = {};
};

// Functions that are told in one chapter of the catalogue.
struct Topic {
  const char *title;
  const char *about;  // what holds for all of them
  std::span<const FunctionRow> functions;
  std::span<const FncConvert> entries;  // one each
};

// "substr(text, from[, length])"
std::string signature(const FunctionRow &function);

// Registers the functions for the converter files that are read from now on.
void addFunctions(const Topic &topic);

// --- What topic() is made of ------------------------------------------------------------------------------

int runFunction(const FunctionRow &function, Value *result, int count, Value **arguments, MemPort memory);

template <const auto &kTable, size_t kRow>
int functionEntry(Value *result, int count, Value **arguments, MemPort memory) {
  return runFunction(kTable[kRow], result, count, arguments, memory);
}

template <const auto &kTable, size_t... kRows>
constexpr auto functionEntries(std::index_sequence<kRows...>) {
  return std::array<FncConvert, sizeof...(kRows)>{&functionEntry<kTable, kRows>...};
}

template <const auto &kTable>
inline constexpr auto kFunctionEntries =
    functionEntries<kTable>(std::make_index_sequence<std::size(kTable)>());

// Whether every function has parameters for its arguments and an example, and all examples fit.
constexpr bool isCatalogue(std::span<const FunctionRow> functions) {
  for (const FunctionRow &function : functions) {
    const auto most = static_cast<size_t>(function.maxArguments);
    if (function.minArguments > function.maxArguments || function.parameters.size() > most) return false;
    if (most > 0 && function.parameters.size() == 0) return false;
    if (function.examples.size() == 0) return false;
    for (const Example &example : function.examples) {
      if (example.arguments.size() < static_cast<size_t>(function.minArguments)) return false;
      if (example.arguments.size() > most) return false;
    }
  }
  return true;
}

template <const auto &kTable>
constexpr Topic topic(const char *title, const char *about) {
  static_assert(isCatalogue(kTable), "a function without an example, or an example with other arguments");
  return {title, about, kTable, kFunctionEntries<kTable>};
}

}  // namespace cvt::kit

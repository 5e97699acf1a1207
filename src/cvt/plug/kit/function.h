// function.h: conversion functions, for the rules of converters.
//
//   void sqlQuote(kit::Call &call) { ... call.answer(text); }       // throws Fault
//   constexpr kit::FunctionRow kFunctions[] = {                     // reads like a catalogue
//       {"sqlQuote", "text", 1, 1, sqlQuote, "the text as a literal"},
//   };
//   constinit const kit::Topic kSql = kit::topic<kFunctions>("SQL statements");
//   kit::addFunctions(kSql);                                        // in the plug-in's initialiser
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

  // The bytes of an argument, for as long as the call. Throws Fault when it could not be resolved or is a
  // loop.
  std::string_view text(int argument);

  // Makes room for the result in the message's memory: length bytes, zeroed, and a zero byte behind them.
  char *result(size_t length);

  // The result is a copy of these bytes.
  void answer(std::string_view text);

  // Throws a Fault in an argument. offset: in its bytes, or Fault::kHere for all of it. found: not its bytes.
  [[noreturn]] void refuse(int argument, size_t offset, const char *expected, const char *found,
                           const char *advice);

  // " Arg[1] Len[5]" of the argument that was refused; empty when none was.
  std::string place() const;

 private:
  Value *m_result;
  std::span<Value *const> m_arguments;
  MemPort m_memory;
  int m_refused = -1;
};

// One row of a table.
struct FunctionRow {
  const char *name;
  const char *parameters;  // for people: "text, from, length"
  int minArguments;
  int maxArguments;
  void (*body)(Call &);
  const char *help;  // what the result is
};

// Functions that are told in one chapter of the manual.
struct Topic {
  const char *title;
  std::span<const FunctionRow> functions;
  std::span<const FncConvert> entries;  // one each
};

// Registers the functions for the converter files that are read from now on.
void addFunctions(const Topic &topic);

// The functions as a Markdown table, for the manual.
std::string markdownTable(const Topic &topic);

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

template <const auto &kTable>
constexpr Topic topic(const char *title) {
  return {title, kTable, kFunctionEntries<kTable>};
}

}  // namespace cvt::kit

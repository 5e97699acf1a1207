// child.h: work whose end is looked at from outside, in a process of its own.
#pragma once

#include <functional>
#include <string>

namespace faults {

// What the child says. It lies in memory that both processes see, since a child may end at any place.
struct Report {
  long nCalls;           // calls of the kind that fails
  bool bRefused;         // a call returned its documented failure
  int nLines;            // lines logged at level 1
  char sLine[1024];      // the last one of them
  const char *psWanted;  // what one of them must contain; null: nothing
  bool bSeen;            // one did
  char sWrong[1024];     // what must not be; empty: nothing

  void wrong(const char *psFormat, ...) __attribute__((format(printf, 2, 3)));  // the first one is kept
};

enum class Outcome {
  kRight,    // every call did its work
  kRefused,  // one returned its documented failure, and said why
  kEnded,    // the process ended: the last line says that the heap has nothing left
  kBad,      // anything else: a signal, a wrong result, a process that does not end
};

struct Ending {
  Outcome outcome;
  std::string sText;  // of a bad one
  Report report;
};

// Runs the work in a child. Its lines at level 1 stand in the report, and nowhere else. More than kPatience
// seconds count as a process that does not end.
constexpr unsigned kPatience = 20;
Ending inChild(const std::function<void(Report &)> &work);

}  // namespace faults

// manual.h: docs/functions.md, the catalogue of the function library.
#pragma once

#include "kit/catalogue.h"
#include "topics.h"

namespace cvt::functions {

// What the plug-in's element says when the examples are run, and the table Table/Country.txt.
inline constexpr const char *kManualSettings =
    "psTablePath=\"Table\" psClock=\"2024-02-29T12:30:45.678Z\" nSeed=\"1\"";

inline constexpr const char *kManualTable =
    "# Countries of ISO 3166-1\nCI\tCôte d'Ivoire\nDE\tGermany\nZZ\t\n";

inline std::string manual() {
  return R"(# Functions

What the rules of converters may call when the plug-in [`std`](../src/cvt/plug/std/README.md) is loaded: arguments,
result, examples and errors of each function. This page is written from the tables of the functions by
`cvt_function_catalogue`, and every example and every error of it is run by the tests.

Values are shown in double quotes; `\xNN` is a byte that is no character. In a call, an argument in brackets may be
left out, and the last one may be repeated where three dots stand. An error is one line in the log, with `Func[NAME] `
in front; arguments are counted from 1 in it, offsets are in bytes from 0.

The examples are run with these settings of the plug-in: `)" +
         std::string(kManualSettings) + R"(`, where `Table/Country.txt` is

```
)" + kManualTable +
         R"(```
)" + kit::catalogue(kTopics);
}

}  // namespace cvt::functions

// log.h: what the library says, kept until the command can tell it in its own words.
//
// The command defines the framework's logInfo itself (main.cpp). The library logs a failure where it is
// detected and once more in every caller, so the first line of a failure is its cause and the others are the
// trail that leads there.
#pragma once

#include <cstdarg>
#include <string>
#include <vector>

namespace tool::log {

// 0: causes; 1: trails too; 2: the library's trace lines, as they come.
void setVerbosity(int level);
int verbosity();

// Takes in one line of the library.
void take(int level, const char *format, va_list args);

// Forgets the lines so far: a new message, or the start, begins.
void begin();

// What went wrong since begin(): the first line that reports a failure, and the place in a configuration file
// when one was named. Empty when nothing was logged.
std::string cause();

// Where a conversion failed since begin(), from the converter inward, as "converter C, rule 2, Rows[4], rule 1": rules
// count from 1, repetitions from 0. Empty when none did.
std::string rule();

// The lines since begin() that report no failure.
std::vector<std::string> notices();

// Whether a line with exactly that text was logged since begin().
bool has(const std::string &text);

// All lines of level 1 since begin(), the innermost first.
const std::vector<std::string> &trail();

// Writes one line of the command's own, "cvt2: text", to standard error, as printable() shows it: the library
// quotes bytes of messages.
void say(const std::string &text);

// Says what failed and, with verbosity 1, the trail behind it; then begins anew.
void report(const std::string &text);

// After a success: says, with verbosity 1, what was logged all the same.
void remark();

}  // namespace tool::log

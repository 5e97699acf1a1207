// settings.h: what the plug-in's element in the root file says: <Plug psName="std" nMaxResult="65536"/>.
#pragma once

#include "kit/attributes.h"

namespace cvt::functions {

struct CVT_RECORD Settings {
  kit::RecordHead head;
  char *psName;
  char *psPath;
  char *psFunction;
  int nMaxResult;
  int nRegexSteps;
  int nRegexText;
  int nRegexPattern;
  int nRegexMemory;
  int nRegexKept;
  int nRegexJit;
  char *psTablePath;
  char *psTableSeparator;
  int nTableBytes;
  int nFirstYear;
  char *psZoneInfo;
  char *psClock;
  int nSeed;
};

// clang-format off
inline constexpr kit::Attribute kSettingsRows[] = {
    KIT_TEXT(Settings, psName, nullptr, "`std`; the library's own, like the next two"),
    KIT_TEXT(Settings, psPath, nullptr, "the plug-in's file"),
    KIT_TEXT(Settings, psFunction, nullptr, "its initialiser"),
    KIT_INT(Settings, nMaxResult, 1 << 20, 1, 2147483646, "bytes that the result of a function may have"),
    KIT_INT(Settings, nRegexSteps, 1'000'000, 1, 2'000'000'000, "steps that matching may take in one call"),
    KIT_INT(Settings, nRegexText, 65536, 1, 2147483646, "bytes of a text that is matched"),
    KIT_INT(Settings, nRegexPattern, 1024, 1, 65536, "bytes of a regular expression, and of a replacement"),
    KIT_INT(Settings, nRegexMemory, 1024, 64, 1 << 20, "KiB that matching may take to remember where to go back"),
    KIT_INT(Settings, nRegexKept, 128, 1, 65536, "regular expressions that are kept compiled"),
    KIT_FLAG(Settings, nRegexJit, 0, "1: regular expressions become machine code, which is faster and needs memory that "
             "is written and executed"),
    KIT_TEXT(Settings, psTablePath, nullptr, "the directory of the code tables"),
    KIT_TEXT(Settings, psTableSeparator, nullptr, "what stands between key and value; without it: a tab"),
    KIT_INT(Settings, nTableBytes, 16 << 20, 1, 1 << 30, "bytes that all code tables together may have"),
    KIT_INT(Settings, nFirstYear, 1969, 1, 9900, "years of two digits are those of the hundred years from this one on"),
    KIT_TEXT(Settings, psZoneInfo, "/usr/share/zoneinfo", "the directory of the time zones"),
    KIT_TEXT(Settings, psClock, nullptr, "for tests: the time that it always is, such as `2024-02-29T12:30:45.678Z`"),
    KIT_INT(Settings, nSeed, 0, 0, 2147483647, "for tests: where the same random numbers always begin; 0: the system's"),
};
// clang-format on
inline constexpr kit::RecordType kSettings = {"Plug", sizeof(Settings), kSettingsRows,
                                              "the plug-in's settings", nullptr};

// Reads the element (null: all defaults) and applies it. Throws Misconfigured.
void configure(void *element);

// Gives each topic what concerns it.
void apply(const Settings &settings);

// What the topics make of the settings.
void configureRegex(const Settings &settings);   // regex.cpp
void configureTables(const Settings &settings);  // table.cpp
void configureDates(const Settings &settings);   // date.cpp
void configureCoding(const Settings &settings);  // coding.cpp

}  // namespace cvt::functions

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
};

// clang-format off
inline constexpr kit::Attribute kSettingsRows[] = {
    KIT_TEXT(Settings, psName, nullptr, "`std`; the library's own, like the next two"),
    KIT_TEXT(Settings, psPath, nullptr, "the plug-in's file"),
    KIT_TEXT(Settings, psFunction, nullptr, "its initialiser"),
    KIT_INT(Settings, nMaxResult, 1 << 20, 1, 2147483646, "bytes that the result of a function may have"),
    KIT_INT(Settings, nRegexSteps, 1'000'000, 1, 2'000'000'000, "steps that matching may take in one call"),
    KIT_INT(Settings, nRegexText, 65536, 1, 2147483646, "bytes of a text that is matched"),
    KIT_INT(Settings, nRegexPattern, 1024, 1, 65536, "bytes of a regular expression"),
    KIT_INT(Settings, nRegexMemory, 1024, 64, 1 << 20, "KiB that matching may take to remember where to go back"),
    KIT_INT(Settings, nRegexKept, 128, 1, 65536, "regular expressions that are kept compiled"),
    KIT_FLAG(Settings, nRegexJit, 0, "1: regular expressions become machine code, which is faster and needs memory that "
             "is written and executed"),
};
// clang-format on
inline constexpr kit::RecordType kSettings = KIT_RECORD(Settings, kSettingsRows, "the plug-in's settings");

// Reads the element (null: all defaults) and gives each topic what concerns it. Throws Misconfigured.
void configure(void *element);

// What the topics make of the settings.
void configureRegex(const Settings &settings);  // regex.cpp

}  // namespace cvt::functions

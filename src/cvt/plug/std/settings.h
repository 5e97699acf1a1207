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
};

// clang-format off
inline constexpr kit::Attribute kSettingsRows[] = {
    KIT_TEXT(Settings, psName, nullptr, "`std`; the library's own, like the next two"),
    KIT_TEXT(Settings, psPath, nullptr, "the plug-in's file"),
    KIT_TEXT(Settings, psFunction, nullptr, "its initialiser"),
    KIT_INT(Settings, nMaxResult, 1 << 20, 1, 2147483646, "bytes that the result of a function may have"),
};
// clang-format on
inline constexpr kit::RecordType kSettings = KIT_RECORD(Settings, kSettingsRows, "the plug-in's settings");

}  // namespace cvt::functions

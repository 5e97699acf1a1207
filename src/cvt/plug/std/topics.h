// topics.h: the catalogue of the function library. A topic is a source file that begins with what its
// functions do and ends with their table.
#pragma once

#include "kit/function.h"

namespace cvt::functions {

// clang-format off
extern const kit::Topic kText;          // text.cpp
extern const kit::Topic kLetters;       // letters.cpp
extern const kit::Topic kRegex;         // regex.cpp
extern const kit::Topic kChoice;        // choice.cpp
extern const kit::Topic kTable;         // table.cpp
extern const kit::Topic kNumber;        // number.cpp
extern const kit::Topic kNumberFormat;  // number_format.cpp
extern const kit::Topic kDate;          // date.cpp
extern const kit::Topic kCoding;        // coding.cpp
extern const kit::Topic kCheck;         // check.cpp
extern const kit::Topic kHash;          // hash.cpp
extern const kit::Topic kMask;          // mask.cpp
extern const kit::Topic kIdentity;      // identity.cpp
extern const kit::Topic kSql;           // sql.cpp

inline constexpr const kit::Topic *kTopics[] = {
    &kText,
    &kLetters,
    &kRegex,
    &kChoice,
    &kTable,
    &kNumber,
    &kNumberFormat,
    &kDate,
    &kCoding,
    &kCheck,
    &kHash,
    &kMask,
    &kIdentity,
    &kSql,
};
// clang-format on

}  // namespace cvt::functions

// attributes.h: a plug-in's own records (FixField, XmlField, ...) bound to their XML elements by a table.
//
//   struct CVT_RECORD FixField {
//     kit::RecordHead head;             // first member of every record
//     int nLen;
//     char *psDefault;
//     int nAlign;                       // position in the words
//   };
//   constexpr const char *kAlign[] = {"left", "right"};
//   constexpr kit::Attribute kFixFieldRows[] = {
//       KIT_INT(FixField, nLen, 1, 1, 999999, "length").require(),
//       KIT_TEXT(FixField, psDefault, nullptr, "written when the value is empty"),
//       KIT_WORD(FixField, nAlign, "psAlign", 0, kAlign, "left or right"),
//   };
//   constexpr kit::RecordType kFixField = KIT_RECORD(FixField, kFixFieldRows, "a field");
//
// Reading fills in the defaults, checks ranges and words, and refuses any attribute or child element that is
// not in the table ("__ID" is the binding's own). A refusal is logged with file and line, what is allowed and
// the nearest known name; nGRet is then -1 and the record null. Writing leaves out what equals its default.
// Records are plain: no constructors, pool memory, strings interned.
#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "cvt_def.h"

namespace cvt::kit {

enum class AttributeKind {
  Int,   // member int; decimal, within min .. max
  Flag,  // member int; "0" or "1"
  Text,  // member char *, interned; null when absent and without default
  Word,  // member int: position of the value in `words`
  Byte,  // member int: one printable ASCII character, or 0xNN, which reads as kRawByte + NN
};

// Tells a byte written as 0xNN from the character with that code: in another character set they differ.
inline constexpr int kRawByte = 0x100;

// One row of a record's table. The fallback is what an absent attribute means; a fallback outside the range
// (-1 for an int, a word, a byte) says "not given".
struct Attribute {
  const char *name;
  AttributeKind kind;
  size_t offset;
  int fallback;
  const char *fallbackText;
  int min;
  int max;
  std::span<const char *const> words;
  const char *help;
  bool required = false;

  // A table row whose attribute must be written.
  constexpr Attribute require() const {
    Attribute row = *this;
    row.required = true;
    return row;
  }
};

struct RecordType {
  const char *name;  // element name
  size_t size;
  std::span<const Attribute> attributes;
  const char *help;
  // Looks at a whole record after its attributes have been read; null, or the complaint, "expected X, found
  // Y. ADVICE" in one static or interned text. May be null.
  const char *(*check)(const void *record);
};

// First member of every record: who made it, which type it is, and where it was written.
struct CVT_RECORD RecordHead {
  char caMagic[8];
  const RecordType *ptType;
  char *psFile;  // null for a record that was not read from a file
  int nLine;
  char caGap[4];
};

// A record of that type with all defaults, from the configuration's pool.
void *newRecord(const RecordType &type);

// Reads the element; null with nGRet -1 (logged) when it is refused.
void *readRecord(const RecordType &type, void *xmlElement);

// Writes the attributes into the element; returns it, or null with nGRet -1.
void *writeRecord(const RecordType &type, const void *record, void *xmlElement);

// Whether records remember their type with the binding when they are read (sttSetVoidType), which writing a
// definition to XML needs. The binding never forgets, so this is off unless it is asked for.
void rememberTypes(bool on);

// Whether the record is one of that type, made by this plug-in. Any record of the library (LoopType, Value,
// ...), a "String", and null may be asked.
bool isRecord(const void *record, const RecordType &type);

// The record as T, or null when it is none of that type.
template <class T>
const T *recordAs(const void *record, const RecordType &type) {
  return isRecord(record, type) ? static_cast<const T *>(record) : nullptr;
}

// Whether it is a record of some plug-in's table, of whatever type.
bool isPlugRecord(const void *record);

// The type's name for messages: "FixField", or "a record of another kind", or "nothing" for null.
std::string recordName(const void *record);

// "FILE:LINE" of a record; empty when it was not read from a file or is none of this kit's.
std::string recordPlace(const void *record);

// The record's attributes as a Markdown table, for the plug-in's manual: name, values, default, meaning.
std::string markdownTable(const RecordType &type);

// The known name nearest to a misspelt one; null when none is near.
const char *nearest(const char *name, std::span<const char *const> known);

}  // namespace cvt::kit

// Rows. The attribute is named after the member, except for Word, whose text form has a name of its own.
// clang-format off
#define KIT_INT(T, member, fallback, min, max, help) \
  cvt::kit::Attribute{#member, cvt::kit::AttributeKind::Int, offsetof(T, member), fallback, nullptr, min, max, {}, help}
#define KIT_FLAG(T, member, fallback, help) \
  cvt::kit::Attribute{#member, cvt::kit::AttributeKind::Flag, offsetof(T, member), fallback, nullptr, 0, 1, {}, help}
#define KIT_TEXT(T, member, fallback, help) \
  cvt::kit::Attribute{#member, cvt::kit::AttributeKind::Text, offsetof(T, member), 0, fallback, 0, 0, {}, help}
#define KIT_WORD(T, member, name, fallback, words, help) \
  cvt::kit::Attribute{name, cvt::kit::AttributeKind::Word, offsetof(T, member), fallback, nullptr, 0, 0, words, help}
#define KIT_BYTE(T, member, name, fallback, help) \
  cvt::kit::Attribute{name, cvt::kit::AttributeKind::Byte, offsetof(T, member), fallback, nullptr, 0, 255, {}, help}
#define KIT_RECORD(T, rows, help) cvt::kit::RecordType{#T, sizeof(T), rows, help, nullptr}
#define KIT_RECORD_CHECKED(T, rows, help, check) cvt::kit::RecordType{#T, sizeof(T), rows, help, check}
// clang-format on

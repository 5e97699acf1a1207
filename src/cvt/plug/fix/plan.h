// plan.h: a definition compiled for parsing and generating: every name is a slot, every constant its bytes.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cvt_message.h"
#include "kit/charset.h"
#include "kit/number.h"
#include "plain_run.h"
#include "records.h"

namespace cvt::fix {

// What says how long a field is.
enum class Length : unsigned char {
  Fixed,  // nLen
  Field,  // a number in another field
  Mark,   // a byte behind it
  Rest,   // the end of the record
};

// What a number counts besides being a number.
enum class LengthOf : unsigned char {
  Nothing,
  Field,       // the bytes of another field
  RecordRest,  // the bytes of the record behind this field
  RecordAll,   // the bytes of the record
};

// The bytes of a value in its field. Of a long field, most pads are only counted.
struct FieldBytes {
  std::string bytes;
  size_t before = 0;  // pads in front of them
  size_t behind = 0;
  char pad = ' ';

  size_t size() const { return before + bytes.size() + behind; }
};

// What a call needs of every field stands first.
struct FieldPlan {
  const char *name = nullptr;
  size_t length = 0;  // in bytes, or in characters; the most of a field that is not Fixed
  const kit::Charset *charset = nullptr;
  FieldType type = FieldType::Text;
  bool constant = false;
  bool chars = false;   // length counts characters, which have no fixed size
  bool right = false;   // aligned to the right
  bool rawPad = false;  // the pad is a byte, not a character
  bool trims = true;    // padding is taken off when reading and put on when writing
  bool blankAllowed = true;
  bool checked = false;  // not every value that can be read is allowed
  bool controlKept = false;
  bool cut = false;
  bool hasDefault = false;
  bool optional = false;  // the record may end before it
  bool decides = false;   // its value tells whether a node is there
  bool position = false;  // it is the number of its repetition
  bool blankTag = false;  // it is a tag, and an empty value is one that tells the record
  char pad = ' ';         // the byte that fills
  char padText = ' ';     // the same inside a decoded text
  char blank = ' ';       // a blank number
  char mark = ' ';        // behind a field that a mark ends
  Length lengthBy = Length::Fixed;
  LengthOf lengthOf = LengthOf::Nothing;
  size_t lengthField = 0;   // Length::Field: position in the level's fields
  int lengthSlot = -1;      // and slot of the field that says it
  int optionalBehind = -1;  // an optional field: position of the next one that the record may have
  size_t lengthNumber = 0;  // a field that is a length: which one of the plan's
  kit::NumberSpec number;
  bool plainDigits = false;          // a number of ASCII digits alone
  std::vector<int> counts;           // slots of the loops that this field counts
  std::vector<std::string> allowed;  // as values; empty: all
  std::vector<FieldBytes> tags;      // those that tell the record; empty: this field is no tag
  std::string value;                 // the constant, or the default, as a value
  FieldBytes bytes;                  // the constant as it stands in the message

  bool isNumber() const { return type != FieldType::Text && type != FieldType::Raw; }
};

// One of these bytes stands at that offset from where a record starts.
struct Tag {
  size_t offset;
  std::vector<FieldBytes> values;
};

// How a record starts: all of its tags.
using Start = std::vector<Tag>;

// How the end of a record is known. Where nothing below needs it, its fields alone decide.
enum class End : unsigned char {
  Fields,     // where the last field ends
  Filled,     // after `length` bytes, the last of which are pads
  Length,     // where a field of it says
  Separator,  // before its separator
};

struct RecordPlan {
  size_t length = 0;  // 0: its fields decide
  Separator separator = kSeparatorNone;
  bool plain = false;  // texts only: a separator byte inside means that the record is too short
  char blank = ' ';
  char pad = ' ';
  End end = End::Fields;
  size_t lengthField = 0;  // of a record with one: its position in the level's fields
  bool hasLength = false;
};

// The value of an earlier field tells whether a node is there.
struct Condition {
  int up = 0;  // the field stands that many levels further out
  int slot = -1;
  FieldPlan field;                  // what its values look like
  std::vector<std::string> values;  // as they are read
  bool otherwise = false;           // with any other value
};

struct LevelPlan;

struct LoopPlan {
  int countSlot = -1;
  const char *countName = nullptr;
  int until = kNotGiven;
  size_t fixed = 0;
  size_t least = 0;
  size_t most = 0;
  size_t room = 0;
  size_t size = 0;  // of a repetition, at least; exactly, where room is reserved
  char pad = ' ';
  std::vector<Start> starts;
  std::unique_ptr<LevelPlan> body;
};

// Special: a field whose length is not fixed, that may be missing, that is a length itself or a position.
// Those that have a value of their own come first.
enum class Kind : unsigned char { Field, Special, Loop, Group, Choice, Record, End };

constexpr bool isField(Kind kind) {
  return kind <= Kind::Special;
}
constexpr bool hasValue(Kind kind) {
  return kind <= Kind::Loop;
}

// One node. Members of groups follow directly, up to `next`.
struct Op {
  Kind kind;
  bool optional;
  int slot;
  int next;
  const char *name;
  size_t detail;              // position in the level's fields, records or loops
  std::vector<Start> starts;  // how it may start: known where a record must be recognised
  int condition = -1;         // position in the level's conditions: a value tells, and no tag
  int run = -1;               // position in the level's runs: one begins here
};

struct LevelPlan {
  std::vector<Op> ops;
  std::vector<FieldPlan> fields;
  std::vector<RecordPlan> records;
  std::vector<LoopPlan> loops;
  std::vector<Condition> conditions;
  std::vector<PlainRun> runs;
  int slots = 0;
};

// The names of a node's members, for messages.
std::string memberNames(const LevelPlan &level, size_t position);

struct Plan {
  LevelPlan top;
  bool lastOptional = false;
  int endSlot = -1;  // of the field of type end; -1: none
  bool lenient = false;
  bool whole = false;
  size_t lengths = 0;  // fields that are lengths
};

// Value of a field of type end when the message ended without its last separator.
inline constexpr const char *kOpenEnd = "open";

// The plan of a definition. Throws Misconfigured.
std::unique_ptr<Plan> compile(const Msg &msg, const FixMsg &settings);

}  // namespace cvt::fix

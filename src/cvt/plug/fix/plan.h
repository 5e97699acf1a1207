// plan.h: a definition compiled for parsing and generating: every name is a slot, every constant its bytes.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cvt_message.h"
#include "kit/charset.h"
#include "kit/number.h"
#include "records.h"

namespace cvt::fix {

// What a call needs of every field stands first.
struct FieldPlan {
  const char *name = nullptr;
  size_t length = 0;  // in bytes, or in characters
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
  char pad = ' ';      // the byte that fills
  char padText = ' ';  // the same inside a decoded text
  char blank = ' ';    // a blank number
  kit::NumberSpec number;
  std::vector<int> counts;           // slots of the loops that this field counts
  std::vector<std::string> allowed;  // as values; empty: all
  std::vector<std::string> tags;     // bytes that tell the record; empty: this field is no tag
  std::string value;                 // the constant, or the default, as a value
  std::string bytes;                 // the constant as it stands in the message

  bool isNumber() const { return type != FieldType::Text && type != FieldType::Raw; }
};

// One of these bytes stands at that offset from where a record starts.
struct Tag {
  size_t offset;
  std::vector<std::string> values;
};

// How a record starts: all of its tags.
using Start = std::vector<Tag>;

struct RecordPlan {
  size_t length = 0;  // 0: its fields decide
  Separator separator = kSeparatorNone;
  bool plain = false;  // texts only: a separator byte inside means that the record is too short
  char blank = ' ';
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

enum class Kind : unsigned char { Field, Group, Choice, Record, Loop, End };

// One node. Members of groups follow directly, up to `next`.
struct Op {
  Kind kind;
  bool optional;
  int slot;
  int next;
  const char *name;
  size_t detail;              // position in the level's fields, records or loops
  std::vector<Start> starts;  // how it may start: known where a record must be recognised
};

struct LevelPlan {
  std::vector<Op> ops;
  std::vector<FieldPlan> fields;
  std::vector<RecordPlan> records;
  std::vector<LoopPlan> loops;
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
};

// Value of a field of type end when the message ended without its last separator.
inline constexpr const char *kOpenEnd = "open";

// The plan of a definition. Throws Misconfigured.
std::unique_ptr<Plan> compile(const Msg &msg, const FixMsg &settings);

}  // namespace cvt::fix

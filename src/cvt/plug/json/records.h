// records.h: the records of the format `json` in a definition file, and what their attributes mean.
#pragma once

#include "kit/attributes.h"

namespace cvt::json {

struct Plan;

enum class Root { Object, Array, Value };
enum class Unknown { Refuse, Skip };
enum class FieldKind { Member, Name, Others };
enum class Type { Text, Number, Boolean, Null, Any };
enum class Null { Refuse, Absent, Empty };
enum class GroupForm { Object, Tuple, Value };
enum class LoopForm { Array, Members };

inline constexpr const char *kRootWords[] = {"object", "array", "value"};
inline constexpr const char *kUnknownWords[] = {"refuse", "skip"};
inline constexpr const char *kKindWords[] = {"member", "name", "others"};
inline constexpr const char *kTypeWords[] = {"text", "number", "boolean", "null", "any"};
inline constexpr const char *kNullWords[] = {"refuse", "absent", "empty"};
inline constexpr const char *kGroupFormWords[] = {"object", "tuple", "value"};
inline constexpr const char *kLoopFormWords[] = {"array", "members"};

// Msg.pInfo: the text as a whole.
struct CVT_RECORD JsonMsg {
  kit::RecordHead head;
  int nRoot;
  int nIndent;
  int nFinalLineFeed;
  int nAscii;
  int nUnknown;
  int nWhole;
  int nMaxDepth;
  int nMaxMembers;
  int nMaxSize;
  char caGap[4];
  const Plan *ptPlan;  // what parsing and generating run on; set when the definition is compiled
};

// FormatAttr.pInfo of a field, and of a loop without children.
struct CVT_RECORD JsonField {
  kit::RecordHead head;
  char *psName;
  int nKind;
  int nType;
  int nNull;
  int nMandatory;
  int nKeepEmpty;
  int nMaxLen;
  int nPosition;
  char caGap[4];
  char *psDefault;
  char *psConst;
};

// FormatAttr.pInfo of a group, and of a loop with children.
struct CVT_RECORD JsonGroup {
  kit::RecordHead head;
  char *psName;
  int nForm;
  int nNull;
  int nMandatory;
  int nKeepEmpty;
};

// LoopType.ptInfo.
struct CVT_RECORD JsonLoop {
  kit::RecordHead head;
  int nForm;
  int nNull;
  int nMandatory;
  int nKeepEmpty;
  int nMin;
  int nMax;
};

inline constexpr int kNoLimit = 0;  // what nMaxLen, nMaxSize and nMax are when they are not given
inline constexpr int kMaxDepth = 1000;
inline constexpr int kMaxInt = 0x7FFFFFFF;

inline constexpr kit::Attribute kJsonMsgRows[] = {
    KIT_WORD(
        JsonMsg, nRoot, "psRoot", 0, kRootWords,
        "what the text is: an object of the outermost nodes, the message's only loop, or its only field"),
    KIT_INT(JsonMsg, nIndent, 0, 0, 16, "blanks of indentation for each level; 0: compact, without any"),
    KIT_FLAG(JsonMsg, nFinalLineFeed, 0, "1: a generated text ends with a line feed"),
    KIT_FLAG(JsonMsg, nAscii, 0, "1: characters above ASCII are generated as `\\uXXXX`"),
    KIT_WORD(JsonMsg, nUnknown, "psUnknown", 0, kUnknownWords,
             "what parsing does with members and elements that the definition does not have"),
    KIT_FLAG(JsonMsg, nWhole, 1,
             "1: nothing but white space may follow the value; 0: what follows is left to the caller"),
    KIT_INT(JsonMsg, nMaxDepth, 64, 1, kMaxDepth, "objects and arrays that may be open at once"),
    KIT_INT(JsonMsg, nMaxMembers, 1000, 1, 10000,
            "members that one object may have, of those whose names the definition does not know or reads as "
            "data"),
    KIT_INT(JsonMsg, nMaxSize, kNoLimit, 1, kMaxInt, "bytes that a parsed text may have"),
};
inline constexpr kit::RecordType kJsonMsg = KIT_RECORD(JsonMsg, kJsonMsgRows, "the text");

inline constexpr kit::Attribute kJsonFieldRows[] = {
    KIT_TEXT(JsonField, psName, nullptr, "name of the member; absent: the node's name"),
    KIT_WORD(JsonField, nKind, "psKind", 0, kKindWords,
             "the field is a member, the name of the member that its repetition is, or all members that the "
             "definition does not know"),
    KIT_WORD(JsonField, nType, "psType", 0, kTypeWords, "what the value is in the text"),
    KIT_WORD(JsonField, nNull, "psNull", 0, kNullWords,
             "what `null` means: an error, that the member is not there, or an empty value, which is then "
             "also written as `null`"),
    KIT_FLAG(JsonField, nMandatory, 0, "1: an error when it is absent or empty, parsing and generating"),
    KIT_INT(JsonField, nKeepEmpty, 0, 0, 2,
            "an empty value is written: 1: always; 2: when it was given, be it empty"),
    KIT_INT(JsonField, nMaxLen, kNoLimit, 1, kMaxInt, "characters that the value may have"),
    KIT_TEXT(JsonField, psDefault, nullptr, "generating: written when the value is empty"),
    KIT_TEXT(JsonField, psConst, nullptr,
             "the only value the field may have; generating: written also when the value is empty"),
    KIT_FLAG(JsonField, nPosition, 0, "1: the number of the repetition that the field stands in, from 1"),
};
inline constexpr kit::RecordType kJsonField =
    KIT_RECORD(JsonField, kJsonFieldRows, "a field, or a loop without children");

inline constexpr kit::Attribute kJsonGroupRows[] = {
    KIT_TEXT(JsonGroup, psName, nullptr, "name of the member; absent: the node's name"),
    KIT_WORD(JsonGroup, nForm, "psForm", 0, kGroupFormWords,
             "an object, an array with a place for each node, or, for a repetition, the value of its only "
             "node"),
    KIT_WORD(JsonGroup, nNull, "psNull", 0, kNullWords,
             "what `null` means: an error, that the member is not there, or an empty group"),
    KIT_FLAG(JsonGroup, nMandatory, 0, "1: parsing reports its absence; generating always writes it"),
    KIT_FLAG(JsonGroup, nKeepEmpty, 0, "1: generating writes it also when it has no value inside"),
};
inline constexpr kit::RecordType kJsonGroup =
    KIT_RECORD(JsonGroup, kJsonGroupRows, "a group, or a loop with children");

inline constexpr kit::Attribute kJsonLoopRows[] = {
    KIT_WORD(JsonLoop, nForm, "psForm", 0, kLoopFormWords,
             "an array, or an object with one member a repetition, whose names are data"),
    KIT_WORD(JsonLoop, nNull, "psNull", 0, kNullWords,
             "what `null` means: an error, that the member is not there, or no repetition"),
    KIT_FLAG(JsonLoop, nMandatory, 0, "1: parsing reports its absence; generating always writes it"),
    KIT_FLAG(JsonLoop, nKeepEmpty, 0, "1: generating writes it also without repetitions"),
    KIT_INT(JsonLoop, nMin, 0, 0, kMaxInt, "least number of repetitions, parsing and generating"),
    KIT_INT(JsonLoop, nMax, kNoLimit, 1, kMaxInt, "largest number of repetitions, parsing and generating"),
};
inline constexpr kit::RecordType kJsonLoop = KIT_RECORD(JsonLoop, kJsonLoopRows, "a loop");

inline constexpr const kit::RecordType *kRecordTypes[] = {&kJsonMsg, &kJsonField, &kJsonGroup, &kJsonLoop};

}  // namespace cvt::json

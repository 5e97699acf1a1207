// records.h: what a definition file of the format says, as it says it.
#pragma once

#include "kit/attributes.h"

namespace cvt::example {

struct Plan;

// The whole message: Msg.pInfo. A definition without one has all defaults.
struct CVT_RECORD ExampleMsg {
  kit::RecordHead head;
  int nMaxSize;
  char caGap[4];
  const Plan *ptPlan;  // what parsing and generating run on; set when the definition is compiled
};

// A field, or the repeated field of a loop without children: FormatAttr.pInfo.
struct CVT_RECORD ExampleField {
  kit::RecordHead head;
  int nMandatory;
  int nKeepEmpty;
  int nMaxLen;
  int nPosition;
  char *psDefault;
  char *psConst;
};

// A loop: LoopType.ptInfo.
struct CVT_RECORD ExampleLoop {
  kit::RecordHead head;
  int nMax;
  char caGap[4];
};

inline constexpr kit::Attribute kExampleMsgRows[] = {
    KIT_INT(ExampleMsg, nMaxSize, 1000000, 1, 100000000, "bytes that one piece of a message may have"),
};
inline constexpr kit::RecordType kExampleMsg = KIT_RECORD(ExampleMsg, kExampleMsgRows, "the message");

inline constexpr kit::Attribute kExampleFieldRows[] = {
    KIT_FLAG(ExampleField, nMandatory, 0, "1: an error when it is empty, parsing and generating"),
    KIT_INT(ExampleField, nKeepEmpty, 0, 0, 2, "1 or 2: a mandatory field may be empty"),
    KIT_INT(ExampleField, nMaxLen, 0, 1, 100000000, "characters that the value may have"),
    KIT_TEXT(ExampleField, psDefault, nullptr, "generating: written when the value is empty"),
    KIT_TEXT(ExampleField, psConst, nullptr, "the only value that the field may have"),
    KIT_FLAG(ExampleField, nPosition, 0, "1: the number of the repetition that the field stands in, from 1"),
};
inline constexpr kit::RecordType kExampleField = KIT_RECORD(ExampleField, kExampleFieldRows, "a field");

inline constexpr kit::Attribute kExampleLoopRows[] = {
    KIT_INT(ExampleLoop, nMax, 100000, 1, 100000000, "repetitions that a message may have"),
};
inline constexpr kit::RecordType kExampleLoop = KIT_RECORD(ExampleLoop, kExampleLoopRows, "a loop");

inline constexpr const kit::RecordType *kRecordTypes[] = {&kExampleMsg, &kExampleField, &kExampleLoop};

}  // namespace cvt::example

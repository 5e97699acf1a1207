// records.h: what a definition file of the format says, as it says it.
#pragma once

#include "kit/attributes.h"

namespace cvt::fix {

// What a field's bytes are. In the order of the words of psType.
enum class FieldType {
  Text,
  Number,
  Zoned,
  ZonedAscii,
  ZonedOverpunch,
  Packed,
  Bcd,
  Binary,
  BinaryLittle,
  Raw,
  End,
};

// Words that may be left out have the value -1 then: the message's setting, or the type's own, holds.
constexpr int kNotGiven = -1;

enum Unit { kBytes, kChars };
enum Align { kLeft, kRight };
enum Blank { kBlankRefused, kBlankAllowed };
enum Control { kControlRefused, kControlKept };
enum Overflow { kOverflowError, kOverflowCut };
enum Separator { kSeparatorNone, kSeparatorLf, kSeparatorCrLf };  // each is as long as its number
enum Last { kLastRequired, kLastOptional };
enum Counts { kCountsRest, kCountsAll };
enum GroupKind { kGroupAll, kGroupChoice };
enum Until { kUntilTag, kUntilEnd };

// The whole message: Msg.pInfo. A definition without one has all defaults.
struct CVT_RECORD FixMsg {
  kit::RecordHead head;
  char *psCharset;
  int nSeparator;
  int nLastSeparator;
  int nUnit;
  int nControl;
  int nLenient;
  int nWhole;
  const void *ptPlan;  // the compiled definition, owned by the plug-in
};

// A field, or the repeated field of a loop without children: FormatAttr.pInfo.
struct CVT_RECORD FixField {
  kit::RecordHead head;
  int nLen;
  int nType;
  int nUnit;
  int nAlign;
  int nPad;
  int nTag;
  int nBlank;
  int nControl;
  int nOverflow;
  int nDecimals;
  int nSign;
  int nPlus;
  int nPoint;
  int nEnd;
  int nRest;
  int nOptional;
  int nPosition;
  char caGap[4];
  char *psConst;
  char *psValues;
  char *psDefault;
  char *psCharset;
  char *psLenField;
};

// A group that is one record: FormatAttr.pInfo.
struct CVT_RECORD FixRecord {
  kit::RecordHead head;
  int nLen;
  int nSeparator;
  int nOptional;
  int nPad;
  int nLenCounts;
  char caGap[4];
  char *psLenField;
  char *psBy;
  char *psWhen;
};

// A group that is optional or a choice: FormatAttr.pInfo. A group without a record of its own is plain.
struct CVT_RECORD FixGroup {
  kit::RecordHead head;
  int nKind;
  int nOptional;
  char *psBy;
  char *psWhen;
};

// A loop: LoopType.ptInfo.
struct CVT_RECORD FixLoop {
  kit::RecordHead head;
  int nUntil;
  int nCount;
  int nMin;
  int nMax;
  int nRoom;
  int nPad;
};

extern const kit::RecordType kFixMsg;
extern const kit::RecordType kFixField;
extern const kit::RecordType kFixRecord;
extern const kit::RecordType kFixGroup;
extern const kit::RecordType kFixLoop;

}  // namespace cvt::fix

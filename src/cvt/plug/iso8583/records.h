// records.h: the records of the format `iso8583` in a definition file, and what their attributes mean.
#pragma once

#include "kit/attributes.h"

namespace cvt::iso8583 {

struct Plan;

// Each in the order of its words. A word that may be left out is kNotGiven then.
enum class Kind { Data, Mti, Header, Bitmap, Rest, Tag, Value, Others, Order };
enum class Type { N, A, An, As, Ns, Ans, Z, B, Xn };
enum class Coding { Text, Bcd, Binary, Hex };
enum class PrefixCoding { Text, Bcd, BcdLeft, Binary };
enum class Counts { Digits, Bytes };
enum class BitmapCoding { Hex, HexLower, Binary };
enum class Bitmaps { Flag, Always };
enum class Third { Bitmaps, Element };
enum class Shown { Hex, Bits };
enum class Align { Left, Right };

inline constexpr int kNotGiven = -1;
inline constexpr int kMaxNumber = 192;
inline constexpr int kMaxLength = 999999;
inline constexpr int kMaxMessage = 100000000;
inline constexpr int kMaxTimes = 0x7FFFFFFF;

inline constexpr const char *kKindWords[] = {"data", "mti",   "header", "bitmap", "rest",
                                             "tag",  "value", "others", "order"};
inline constexpr const char *kTypeWords[] = {"n", "a", "an", "as", "ns", "ans", "z", "b", "x+n"};
inline constexpr const char *kCodingWords[] = {"text", "bcd", "binary", "hex"};
inline constexpr const char *kNumericWords[] = {"text", "bcd"};
inline constexpr const char *kPrefixWords[] = {"none", "L", "LL", "LLL", "LLLL", "LLLLL", "LLLLLL"};
inline constexpr const char *kPrefixCodingWords[] = {"text", "bcd", "bcd-left", "binary"};
inline constexpr const char *kCountsWords[] = {"digits", "bytes"};
inline constexpr const char *kBinaryWords[] = {"binary", "hex"};
inline constexpr const char *kBitmapWords[] = {"hex", "hex-lower", "binary"};
inline constexpr const char *kBitmapsWords[] = {"flag", "always"};
inline constexpr const char *kThirdWords[] = {"bitmaps", "element"};
inline constexpr const char *kShownWords[] = {"hex", "bits"};
inline constexpr const char *kAlignWords[] = {"left", "right"};

// Msg.pInfo: the message.
struct CVT_RECORD IsoMsg {
  kit::RecordHead head;
  char *psCharset;
  int nNumeric;
  int nBinary;
  int nPrefixCoding;
  int nBitmap;
  int nBitmaps;
  int nBitmapsThere;
  int nThird;
  int nMaxLen;
  int nWhole;
  char caGap[4];
  const Plan *ptPlan;  // what parsing and generating run on; set when the definition is compiled
};

// FormatAttr.pInfo of a field.
struct CVT_RECORD IsoField {
  kit::RecordHead head;
  int nKind;
  int nNumber;
  char *psTag;
  int nType;
  int nLen;
  int nPrefix;
  int nPrefixCoding;
  int nCounts;
  int nMinLen;
  int nMaxLen;
  int nCoding;
  char *psCharset;
  int nAlign;
  int nPad;
  int nTrim;
  int nShown;
  char *psDate;
  int nMandatory;
  int nKeepEmpty;
  char *psDefault;
  char *psConst;
};

// What a group with subfields and one with tags have in common: how their content stands in the message.
struct CVT_RECORD IsoGroup {
  kit::RecordHead head;
  int nNumber;
  int nLen;
  char *psTag;
  int nPrefix;
  int nPrefixCoding;
  int nMaxLen;
  int nMandatory;
};

// FormatAttr.pInfo of a group, or of a loop, whose content is BER-TLV.
struct CVT_RECORD IsoTlv {
  IsoGroup group;
};

// LoopType.ptInfo.
struct CVT_RECORD IsoLoop {
  kit::RecordHead head;
  int nMin;
  int nMax;
};

inline constexpr kit::Attribute kIsoMsgRows[] = {
    KIT_TEXT(IsoMsg, psCharset, "US-ASCII",
             "character set of texts, digits, text prefixes and hexadecimal bitmaps, as iconv names it"),
    KIT_WORD(IsoMsg, nNumeric, "psNumeric", 0, kNumericWords, "coding of the types n, z and x+n"),
    KIT_WORD(IsoMsg, nBinary, "psBinary", 0, kBinaryWords, "coding of the type b"),
    KIT_WORD(IsoMsg, nPrefixCoding, "psPrefixCoding", 0, kPrefixCodingWords, "coding of length prefixes"),
    KIT_WORD(IsoMsg, nBitmap, "psBitmap", 0, kBitmapWords, "coding of the bitmaps"),
    KIT_INT(IsoMsg, nBitmaps, 2, 1, 3, "bitmaps of 64 bits that a message may have"),
    KIT_WORD(IsoMsg, nBitmapsThere, "psBitmaps", 0, kBitmapsWords,
             "a further bitmap is there when the first bit of the one before says so, or always; that bit "
             "is then an ordinary one"),
    KIT_WORD(IsoMsg, nThird, "psThird", 0, kThirdWords,
             "the third bitmap stands behind the second, or in the place of data element 65"),
    KIT_INT(IsoMsg, nMaxLen, 65535, 1, kMaxMessage, "bytes that a message may have"),
    KIT_FLAG(IsoMsg, nWhole, 0, "1: the message must end where the buffer ends"),
};
inline constexpr kit::RecordType kIsoMsg = KIT_RECORD(IsoMsg, kIsoMsgRows, "the message");

inline constexpr kit::Attribute kIsoFieldRows[] = {
    KIT_WORD(IsoField, nKind, "psKind", 0, kKindWords,
             "what the field is: data, or a part of the message or of BER-TLV as said below"),
    KIT_INT(IsoField, nNumber, kNotGiven, 1, kMaxNumber,
            "number of the data element; of a bitmap: 1 to 3, absent: all of them"),
    KIT_TEXT(IsoField, psTag, nullptr, "tag of the field in BER-TLV, in hexadecimal digits"),
    KIT_WORD(IsoField, nType, "psType", static_cast<int>(Type::Ans), kTypeWords,
             "the characters that the field may have"),
    KIT_INT(IsoField, nLen, 0, 1, kMaxLength, "the length, when it is fixed"),
    KIT_WORD(IsoField, nPrefix, "psPrefix", 0, kPrefixWords, "the digits of the length in front"),
    KIT_WORD(IsoField, nPrefixCoding, "psPrefixCoding", kNotGiven, kPrefixCodingWords,
             "default: the message's"),
    KIT_WORD(IsoField, nCounts, "psCounts", kNotGiven, kCountsWords,
             "what the prefix counts; default: digits when the coding is bcd, else bytes"),
    KIT_INT(IsoField, nMinLen, 0, 0, kMaxLength, "least length, when it is not fixed"),
    KIT_INT(IsoField, nMaxLen, 0, 1, kMaxLength,
            "largest length, when it is not fixed; default: what the prefix can say"),
    KIT_WORD(IsoField, nCoding, "psCoding", kNotGiven, kCodingWords,
             "how the content is written; default: as the message says for the type, else text"),
    KIT_TEXT(IsoField, psCharset, nullptr, "default: the message's"),
    KIT_WORD(IsoField, nAlign, "psAlign", kNotGiven, kAlignWords,
             "where a shorter text, or an odd number of bcd digits, stands; default: right for n, else left"),
    KIT_BYTE(IsoField, nPad, "psPad", kNotGiven,
             "fills the rest of a text, default a blank, or the half byte beside bcd digits: 0 (default) or "
             "F"),
    KIT_FLAG(IsoField, nTrim, 0, "1: the value is without its pads, a number without leading zeros"),
    KIT_WORD(IsoField, nShown, "psValue", kNotGiven, kShownWords,
             "the value of bytes: hexadecimal digits, or bits; default: bits for bitmaps, else hex"),
    KIT_TEXT(IsoField, psDate, nullptr, "the digits are a date or time: YYYY YY MM DD hh mm ss in any order"),
    KIT_FLAG(IsoField, nMandatory, 0, "1: an error when it is absent, parsing and generating"),
    KIT_INT(IsoField, nKeepEmpty, 2, 0, 2,
            "0: it must not be empty; 1: it is always written, be it empty; 2: an empty one is written when "
            "it was given"),
    KIT_TEXT(IsoField, psDefault, nullptr, "generating: written when the value is empty"),
    KIT_TEXT(IsoField, psConst, nullptr,
             "the only value the field may have; generating: written also when the value is empty"),
};
inline constexpr kit::RecordType kIsoField = KIT_RECORD(IsoField, kIsoFieldRows, "a field");

inline constexpr kit::Attribute kIsoGroupRows[] = {
    KIT_INT(IsoGroup, nNumber, kNotGiven, 1, kMaxNumber, "number of the data element"),
    KIT_TEXT(IsoGroup, psTag, nullptr, "tag of the group in BER-TLV, in hexadecimal digits"),
    KIT_INT(IsoGroup, nLen, 0, 1, kMaxLength, "the length of the content in bytes, when it is fixed"),
    KIT_WORD(IsoGroup, nPrefix, "psPrefix", 0, kPrefixWords, "the digits of the length in front"),
    KIT_WORD(IsoGroup, nPrefixCoding, "psPrefixCoding", kNotGiven, kPrefixCodingWords,
             "default: the message's"),
    KIT_INT(IsoGroup, nMaxLen, 0, 1, kMaxLength,
            "largest length in bytes, when it is not fixed; default: what the prefix can say"),
    KIT_FLAG(IsoGroup, nMandatory, 0, "1: an error when it is absent, parsing and generating"),
};
inline constexpr kit::RecordType kIsoGroup =
    KIT_RECORD(IsoGroup, kIsoGroupRows, "a group, or a loop, of subfields");
inline constexpr kit::RecordType kIsoTlv =
    KIT_RECORD(IsoTlv, kIsoGroupRows, "a group, or a loop, of BER-TLV");

inline constexpr kit::Attribute kIsoLoopRows[] = {
    KIT_INT(IsoLoop, nMin, 0, 0, kMaxTimes, "least number of repetitions, where the loop is there"),
    KIT_INT(IsoLoop, nMax, 0, 1, kMaxTimes, "largest number of repetitions"),
};
inline constexpr kit::RecordType kIsoLoop = KIT_RECORD(IsoLoop, kIsoLoopRows, "a loop");

inline constexpr const kit::RecordType *kRecordTypes[] = {&kIsoMsg, &kIsoField, &kIsoGroup, &kIsoTlv,
                                                          &kIsoLoop};

}  // namespace cvt::iso8583

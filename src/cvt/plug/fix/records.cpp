#include "records.h"

namespace cvt::fix {

namespace {

constexpr int kMaxLength = 100000000;
constexpr int kMaxRepetitions = 100000000;

constexpr const char *kTypes[] = {"text",   "number", "zoned",  "zoned-ascii",   "zoned-overpunch",
                                  "packed", "bcd",    "binary", "binary-little", "raw",
                                  "end"};
constexpr const char *kUnits[] = {"bytes", "chars"};
constexpr const char *kAligns[] = {"left", "right"};
constexpr const char *kBlanks[] = {"refused", "allowed"};
constexpr const char *kControls[] = {"refused", "kept"};
constexpr const char *kOverflows[] = {"error", "cut"};
constexpr const char *kSigns[] = {"none", "leading", "trailing"};
constexpr const char *kPluses[] = {"sign", "blank"};
constexpr const char *kSeparators[] = {"none", "lf", "crlf"};
constexpr const char *kLasts[] = {"required", "optional"};
constexpr const char *kCounts[] = {"rest", "all"};
constexpr const char *kKinds[] = {"all", "choice"};
constexpr const char *kUntils[] = {"tag", "end"};

constexpr kit::Attribute kMsgRows[] = {
    KIT_TEXT(FixMsg, psCharset, "UTF-8", "character set of the texts and numbers, as iconv names it"),
    KIT_WORD(FixMsg, nSeparator, "psSeparator", kSeparatorNone, kSeparators,
             "what stands behind each record"),
    KIT_WORD(FixMsg, nLastSeparator, "psLastSeparator", kLastRequired, kLasts,
             "whether it may be missing at the end of the buffer"),
    KIT_WORD(FixMsg, nUnit, "psUnit", kBytes, kUnits, "what the fields' nLen counts"),
    KIT_WORD(FixMsg, nControl, "psControl", kControlRefused, kControls, "control characters in texts"),
    KIT_FLAG(FixMsg, nLenient, 0,
             "1: short records are padded, blanks behind long ones are cut, other signs are read"),
    KIT_FLAG(FixMsg, nWhole, 0, "1: the message must end where the buffer ends"),
};

constexpr kit::Attribute kFieldRows[] = {
    KIT_INT(FixField, nLen, 0, 1, kMaxLength,
            "length; may be left out with psConst on texts and raw. With psLenField, psEnd or nRest: at most "
            "that "
            "many bytes"),
    KIT_WORD(FixField, nType, "psType", 0, kTypes, "what the bytes are"),
    KIT_WORD(FixField, nUnit, "psUnit", kNotGiven, kUnits, "what nLen counts; default: the message's"),
    KIT_WORD(FixField, nAlign, "psAlign", kNotGiven, kAligns, "default: texts left, numbers right"),
    KIT_BYTE(FixField, nPad, "psPad", kNotGiven,
             "fills the rest of the field; default: blank, for number 0. 0xNN is the byte itself"),
    KIT_TEXT(FixField, psConst, nullptr, "the only value the field may have"),
    KIT_FLAG(FixField, nTag, 0, "1: the constant, or the list of values, tells which record this is"),
    KIT_TEXT(FixField, psValues, nullptr, "the values that are allowed, with a vertical bar between them"),
    KIT_TEXT(FixField, psDefault, nullptr, "written when the value is empty"),
    KIT_WORD(FixField, nBlank, "psBlank", kNotGiven, kBlanks,
             "whether the field may be blank; its value is empty then. Default: allowed for texts without "
             "psDefault and nPosition and for psValues with an empty one, else refused"),
    KIT_TEXT(FixField, psCharset, nullptr, "default: the message's"),
    KIT_WORD(FixField, nControl, "psControl", kNotGiven, kControls, "default: the message's"),
    KIT_WORD(FixField, nOverflow, "psOverflow", kOverflowError, kOverflows,
             "a text that is too long to be written"),
    KIT_INT(FixField, nDecimals, 0, 0, 31, "numbers: digits behind the point"),
    KIT_WORD(FixField, nSign, "psSign", 0, kSigns, "numbers: where the sign is"),
    KIT_WORD(FixField, nPlus, "psPlus", 0, kPluses, "number: the sign of a positive number is + or a blank"),
    KIT_FLAG(FixField, nPoint, 0, "number: 1: the point is written, 0: it is implied"),
    KIT_TEXT(FixField, psLenField, nullptr,
             "the field that holds this one's length in bytes; it stands before it in the same group"),
    KIT_BYTE(FixField, nEnd, "psEnd", kNotGiven, "the mark behind the field, which ends it"),
    KIT_FLAG(FixField, nRest, 0, "1: the field has what is left of the record"),
    KIT_FLAG(FixField, nOptional, 0, "1: the record may end before this field"),
    KIT_FLAG(FixField, nPosition, 0, "1: the number of the repetition that the field stands in, from 1"),
};

constexpr kit::Attribute kRecordRows[] = {
    KIT_INT(FixRecord, nLen, 0, 1, kMaxLength,
            "length in bytes without the separator; checked against the fields"),
    KIT_WORD(FixRecord, nSeparator, "psSeparator", kNotGiven, kSeparators, "default: the message's"),
    KIT_FLAG(FixRecord, nOptional, 0, "1: the record may be missing"),
    KIT_BYTE(FixRecord, nPad, "psPad", kNotGiven,
             "fills the record up to nLen behind its fields; default: they must add up to nLen"),
    KIT_TEXT(FixRecord, psLenField, nullptr, "the field of the record that holds its length in bytes"),
    KIT_WORD(FixRecord, nLenCounts, "psLenCounts", kCountsRest, kCounts,
             "what that length counts: the rest of the record behind it, or all of the record"),
    KIT_TEXT(FixRecord, psBy, nullptr, "the field whose value tells whether an optional record is there"),
    KIT_TEXT(FixRecord, psWhen, nullptr,
             "the values with which it is, with a vertical bar between them; in a choice: the choice's psBy"),
};

constexpr kit::Attribute kGroupRows[] = {
    KIT_WORD(FixGroup, nKind, "psKind", kGroupAll, kKinds,
             "all of its members in their order, or exactly one"),
    KIT_FLAG(FixGroup, nOptional, 0, "1: the group may be missing"),
    KIT_TEXT(
        FixGroup, psBy, nullptr,
        "the field whose value tells which member of a choice is there, or whether an optional group is"),
    KIT_TEXT(FixGroup, psWhen, nullptr,
             "the values with which it is, with a vertical bar between them; in a choice: the choice's psBy"),
};

constexpr kit::Attribute kLoopRows[] = {
    KIT_WORD(FixLoop, nUntil, "psUntil", kNotGiven, kUntils,
             "without a count: as long as the tag is there, or to the end of the buffer"),
    KIT_INT(FixLoop, nCount, 0, 1, kMaxRepetitions, "always this many repetitions"),
    KIT_INT(FixLoop, nMin, 0, 0, kMaxRepetitions, "at least this many"),
    KIT_INT(FixLoop, nMax, 0, 1, kMaxRepetitions, "at most this many"),
    KIT_INT(FixLoop, nRoom, 0, 1, kMaxRepetitions, "room for this many; what is not used is filled"),
    KIT_BYTE(FixLoop, nPad, "psPad", ' ', "fills the unused room"),
};

}  // namespace

constexpr kit::RecordType kFixMsg = KIT_RECORD(FixMsg, kMsgRows, "the message");
constexpr kit::RecordType kFixField = KIT_RECORD(FixField, kFieldRows, "a field");
constexpr kit::RecordType kFixRecord = KIT_RECORD(FixRecord, kRecordRows, "a group that is one record");
constexpr kit::RecordType kFixGroup = KIT_RECORD(FixGroup, kGroupRows, "a group of records or fields");
constexpr kit::RecordType kFixLoop = KIT_RECORD(FixLoop, kLoopRows, "a loop");

}  // namespace cvt::fix

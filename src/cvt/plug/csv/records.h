// records.h: the records of the format `csv` in a definition file, and what their attributes mean.
#pragma once

#include "kit/attributes.h"

namespace cvt::csv {

struct Plan;

enum class LineEnd { Lf, CrLf, Any, None };
enum class LastLineEnd { Required, Optional, None };
enum class Quoting { Needed, Always };
enum class InnerQuote { Refuse, Keep };
enum class Header { None, Order, Names, Ignore };
enum class Unknown { Refuse, Skip };
enum class BlankLines { Record, Skip };
enum class Order { Given, Any };
enum class Mark { Refuse, Skip, Write };
enum class FieldKind { Value, Rest, End, LineEnd, Wraps };
enum class GroupKind { All, Any, Choice };

inline constexpr const char *kLineEndWords[] = {"lf", "crlf", "any", "none"};
inline constexpr const char *kLastLineEndWords[] = {"required", "optional", "none"};
inline constexpr const char *kQuotingWords[] = {"needed", "always"};
inline constexpr const char *kInnerQuoteWords[] = {"refuse", "keep"};
inline constexpr const char *kHeaderWords[] = {"none", "order", "names", "ignore"};
inline constexpr const char *kUnknownWords[] = {"refuse", "skip"};
inline constexpr const char *kBlankLinesWords[] = {"record", "skip"};
inline constexpr const char *kOrderWords[] = {"given", "any"};
inline constexpr const char *kMarkWords[] = {"refuse", "skip", "write"};
inline constexpr const char *kFieldKindWords[] = {"value", "rest", "end", "line-end", "wraps"};
inline constexpr const char *kGroupKindWords[] = {"all", "any", "choice"};

// Msg.pInfo: how the text is delimited.
struct CVT_RECORD CsvMsg {
  kit::RecordHead head;
  char *psSeparator;
  char *psQuote;
  char *psEscape;
  char *psRecordEnd;
  char *psTagFront;
  char *psTagBack;
  char *psContinuation;
  char *psComment;
  char *psCharset;
  int nTerminated;
  int nQuoting;
  int nInnerQuote;
  int nLineEnd;
  int nLastLineEnd;
  int nHeader;
  int nUnknown;
  int nBlankLines;
  int nOrder;
  int nMark;
  int nShort;
  int nWhole;
  int nMaxField;
  int nMaxRecord;
  int nMaxColumns;
  char caGap[4];
  const Plan *ptPlan;  // what parsing and generating run on; set when the definition is compiled
};

// FormatAttr.pInfo of a field, and of a loop without children.
struct CVT_RECORD CsvField {
  kit::RecordHead head;
  char *psName;
  char *psWhen;
  char *psDefault;
  char *psConst;
  int nKind;
  int nLen;
  int nPad;
  int nQuoting;
  int nMandatory;
  int nKeepEmpty;
  int nMaxLen;
  int nPosition;
};

// FormatAttr.pInfo of a group that is a record, and of a loop of records.
struct CVT_RECORD CsvRecord {
  kit::RecordHead head;
  char *psTag;
  int nMandatory;
  int nShort;
};

// FormatAttr.pInfo of any other group, and of a loop of fields or of groups of records.
struct CVT_RECORD CsvGroup {
  kit::RecordHead head;
  char *psSelect;
  char *psNone;
  char *psWhen;
  int nKind;
  int nMandatory;
};

// LoopType.ptInfo.
struct CVT_RECORD CsvLoop {
  kit::RecordHead head;
  int nMin;
  int nMax;
};

inline constexpr int kNoLimit = 0;  // what nLen, nMaxLen and the like are when they are not given
inline constexpr int kNotGiven = -1;
inline constexpr int kMaxInt = 0x7FFFFFFF;

inline constexpr kit::Attribute kCsvMsgRows[] = {
    KIT_TEXT(CsvMsg, psSeparator, ",", "stands between the fields of a record; one or more characters"),
    KIT_FLAG(CsvMsg, nTerminated, 0,
             "1: the separator stands behind every field that has no nLen, also behind the last"),
    KIT_TEXT(CsvMsg, psQuote, "\"", "character around fields that need it; empty: there are no quotes"),
    KIT_TEXT(CsvMsg, psEscape, nullptr,
             "character before a quote inside quotes; without quotes, before a separator, a line end as n "
             "or r, or a tab as t. Absent: a quote is doubled"),
    KIT_WORD(CsvMsg, nQuoting, "psQuoting", 0, kQuotingWords,
             "which fields are written in quotes, for fields that do not say it themselves"),
    KIT_WORD(CsvMsg, nInnerQuote, "psInnerQuote", 0, kInnerQuoteWords,
             "a quote inside a field that does not begin with one; keep: it is a part of the value"),
    KIT_WORD(CsvMsg, nLineEnd, "psLineEnd", 0, kLineEndWords,
             "what ends a line; any: as the first line of the message ends, written as lf unless a field of "
             "kind line-end says otherwise; none: records stand in one line"),
    KIT_WORD(CsvMsg, nLastLineEnd, "psLastLineEnd", 1, kLastLineEndWords,
             "whether the last line has its end; optional: it is written unless a field of kind end says "
             "otherwise"),
    KIT_TEXT(CsvMsg, psRecordEnd, nullptr, "mark at the end of each record, before the line end"),
    KIT_TEXT(CsvMsg, psTagFront, nullptr, "mark before the tag of a record"),
    KIT_TEXT(CsvMsg, psTagBack, nullptr,
             "mark behind the tag, at once followed by the first field; absent: the tag is the first field"),
    KIT_TEXT(CsvMsg, psContinuation, nullptr, "tag of records that continue the field list before them"),
    KIT_WORD(CsvMsg, nHeader, "psHeader", 0, kHeaderWords,
             "line of column names before the records: with the names in their order, or in any order, or "
             "with whatever it holds"),
    KIT_WORD(CsvMsg, nUnknown, "psUnknown", 0, kUnknownWords,
             "what psHeader=\"names\" does with columns that the definition does not have"),
    KIT_TEXT(CsvMsg, psComment, nullptr, "lines that begin with it are passed over"),
    KIT_WORD(CsvMsg, nBlankLines, "psBlankLines", 0, kBlankLinesWords,
             "whether a line without a byte is a record or is passed over"),
    KIT_WORD(CsvMsg, nOrder, "psOrder", 0, kOrderWords,
             "order of the records of the message: the definition's, or any"),
    KIT_TEXT(CsvMsg, psCharset, "UTF-8", "character set of the text, as iconv names it"),
    KIT_WORD(CsvMsg, nMark, "psByteOrderMark", 0, kMarkWords,
             "a byte order mark at the start; write: parsing takes texts with and without it"),
    KIT_FLAG(CsvMsg, nShort, 0, "1: fields at the end of a record may be missing"),
    KIT_FLAG(CsvMsg, nWhole, 1,
             "1: the message must end where the buffer ends; 0: what follows is left to the caller"),
    KIT_INT(CsvMsg, nMaxField, kNoLimit, 1, kMaxInt, "bytes that a field may have as it stands in the text"),
    KIT_INT(CsvMsg, nMaxRecord, kNoLimit, 1, kMaxInt,
            "bytes that a line may have without its end; with psContinuation longer records are written in "
            "several lines"),
    KIT_INT(CsvMsg, nMaxColumns, 1000, 1, 1000000, "columns that a header line may have"),
};
inline constexpr kit::RecordType kCsvMsg = KIT_RECORD(CsvMsg, kCsvMsgRows, "the text");

inline constexpr kit::Attribute kCsvFieldRows[] = {
    KIT_TEXT(CsvField, psName, nullptr, "name of the column in the header line; absent: the node's name"),
    KIT_WORD(CsvField, nKind, "psKind", 0, kFieldKindWords,
             "value: a field; rest: all that is left of the record's line; the others stand nowhere in the "
             "text but remember how it was written"),
    KIT_INT(CsvField, nLen, kNoLimit, 1, 100000000,
            "characters that the field always has; no separator follows it"),
    KIT_BYTE(CsvField, nPad, "psPad", kNotGiven, "fills a field of nLen behind its value"),
    KIT_WORD(CsvField, nQuoting, "psQuoting", kNotGiven, kQuotingWords,
             "whether it is written in quotes; absent: as CsvMsg says"),
    KIT_TEXT(CsvField, psWhen, nullptr,
             "in a choice: the values of psSelect, with a vertical bar between them, that choose the field; "
             "absent: any other"),
    KIT_FLAG(CsvField, nMandatory, 0, "1: an error when it is absent or empty, parsing and generating"),
    KIT_INT(CsvField, nKeepEmpty, 0, 0, 2,
            "an empty value is written in quotes: 1: always; 2: when it was given, be it empty"),
    KIT_INT(CsvField, nMaxLen, kNoLimit, 1, kMaxInt, "characters that the value may have"),
    KIT_TEXT(CsvField, psDefault, nullptr, "generating: written when the value is empty"),
    KIT_TEXT(CsvField, psConst, nullptr,
             "the only value the field may have; generating: written also when the value is empty"),
    KIT_FLAG(CsvField, nPosition, 0, "1: the number of the repetition that the field stands in, from 1"),
};
inline constexpr kit::RecordType kCsvField =
    KIT_RECORD(CsvField, kCsvFieldRows, "a field, or a loop without children");

inline constexpr kit::Attribute kCsvRecordRows[] = {
    KIT_TEXT(CsvRecord, psTag, nullptr, "what the record begins with; absent: nothing tells the record"),
    KIT_FLAG(CsvRecord, nMandatory, 0, "1: parsing reports its absence; generating always writes it"),
    KIT_FLAG(CsvRecord, nShort, kNotGiven,
             "1: fields at its end may be missing, and are left out when they are empty; absent: as CsvMsg "
             "says"),
};
inline constexpr kit::RecordType kCsvRecord =
    KIT_RECORD(CsvRecord, kCsvRecordRows, "a record, or a loop of records");

inline constexpr kit::Attribute kCsvGroupRows[] = {
    KIT_WORD(CsvGroup, nKind, "psKind", 0, kGroupKindWords,
             "its members in their order; its records in any order; or the one field or group that another "
             "field chooses"),
    KIT_TEXT(CsvGroup, psSelect, nullptr, "choice: the field before it whose value chooses"),
    KIT_TEXT(CsvGroup, psNone, nullptr,
             "choice: values of psSelect, with a vertical bar between them, that choose nothing"),
    KIT_TEXT(CsvGroup, psWhen, nullptr, "in a choice: as in CsvField"),
    KIT_FLAG(CsvGroup, nMandatory, 0,
             "a group of records: 1: parsing reports the absence of its mandatory ones; generating always "
             "writes them"),
};
inline constexpr kit::RecordType kCsvGroup =
    KIT_RECORD(CsvGroup, kCsvGroupRows, "a group that is no record, or a loop of such groups");

inline constexpr kit::Attribute kCsvLoopRows[] = {
    KIT_INT(CsvLoop, nMin, 0, 0, kMaxInt, "least number of repetitions, parsing and generating"),
    KIT_INT(CsvLoop, nMax, kNoLimit, 1, kMaxInt, "largest number of repetitions, parsing and generating"),
};
inline constexpr kit::RecordType kCsvLoop = KIT_RECORD(CsvLoop, kCsvLoopRows, "a loop");

inline constexpr const kit::RecordType *kRecordTypes[] = {&kCsvMsg, &kCsvField, &kCsvRecord, &kCsvGroup,
                                                          &kCsvLoop};

}  // namespace cvt::csv

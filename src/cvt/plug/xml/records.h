// records.h: the records of the format `xml` in a definition file, and what their attributes mean.
#pragma once

#include "kit/attributes.h"

namespace cvt::xml {

struct Plan;

enum class Unknown { Refuse, Skip };
enum class Space { Preserve, Trim, Collapse };
enum class FieldKind { Element, Attribute, Text };
enum class EmptyTag { Short, Pair };

inline constexpr const char *kUnknownWords[] = {"refuse", "skip"};
inline constexpr const char *kSpaceWords[] = {"preserve", "trim", "collapse"};
inline constexpr const char *kKindWords[] = {"element", "attribute", "text"};
inline constexpr const char *kEmptyTagWords[] = {"short", "pair"};

// Msg.pInfo: the document.
struct CVT_RECORD XmlMsg {
  kit::RecordHead head;
  char *psRoot;
  char *psNamespace;
  char *psPrefixes;
  char *psEncoding;
  char *psInputEncodings;
  int nDeclaration;
  int nIndent;
  int nFinalLineFeed;
  int nEmptyTag;
  int nUnknown;
  int nSpace;
  int nMaxDepth;
  int nMaxAttributes;
  const Plan *ptPlan;  // what parsing and generating run on; set when the definition is compiled
};

// FormatAttr.pInfo of a field, and of a loop without children.
struct CVT_RECORD XmlField {
  kit::RecordHead head;
  char *psName;
  int nKind;
  int nMandatory;
  int nKeepEmpty;
  int nMaxLen;
  int nSpace;
  int nPosition;
  char *psDefault;
  char *psConst;
};

// FormatAttr.pInfo of a group, and of a loop with children.
struct CVT_RECORD XmlGroup {
  kit::RecordHead head;
  char *psName;
  char *psNamespace;
  int nMandatory;
  int nKeepEmpty;
};

// LoopType.ptInfo.
struct CVT_RECORD XmlLoop {
  kit::RecordHead head;
  char *psWrapper;
  int nKeepEmpty;
  int nMin;
  int nMax;
  char caGap[4];
};

inline constexpr int kNoLimit = 0;  // what nMaxLen and nMax are when they are not given
inline constexpr int kMaxInt = 0x7FFFFFFF;

inline constexpr kit::Attribute kXmlMsgRows[] = {
    KIT_TEXT(XmlMsg, psRoot, nullptr, "name of the root element; absent: the message's name"),
    KIT_TEXT(XmlMsg, psNamespace, nullptr, "namespace URI of the elements whose name has no prefix"),
    KIT_TEXT(XmlMsg, psPrefixes, nullptr,
             "the prefixes that names use, `prefix=URI` separated by blanks; declared on the root element in "
             "this order"),
    KIT_TEXT(XmlMsg, psEncoding, "UTF-8",
             "encoding of generated documents, and of parsed ones that declare none"),
    KIT_TEXT(XmlMsg, psInputEncodings, nullptr,
             "further encodings that parsed documents may declare, separated by blanks"),
    KIT_FLAG(XmlMsg, nDeclaration, 1, "1: a generated document begins with the XML declaration"),
    KIT_INT(XmlMsg, nIndent, 0, 0, 16, "blanks of indentation for each level; 0: one line"),
    KIT_FLAG(XmlMsg, nFinalLineFeed, 0, "1: a generated document ends with a line feed"),
    KIT_WORD(XmlMsg, nEmptyTag, "psEmptyTag", 0, kEmptyTagWords,
             "how an element without content is written: `<a/>` or `<a></a>`"),
    KIT_WORD(XmlMsg, nUnknown, "psUnknown", 0, kUnknownWords,
             "what parsing does with elements, attributes and text that the definition does not have"),
    KIT_WORD(XmlMsg, nSpace, "psSpace", 0, kSpaceWords,
             "white space of parsed values, for fields that do not say it themselves"),
    KIT_INT(XmlMsg, nMaxDepth, 64, 1, 1000, "open elements that a parsed document may have at once"),
    KIT_INT(XmlMsg, nMaxAttributes, 64, 1, 10000,
            "attributes, namespace declarations included, that one parsed element may have"),
};
inline constexpr kit::RecordType kXmlMsg = KIT_RECORD(XmlMsg, kXmlMsgRows, "the document");

inline constexpr kit::Attribute kXmlFieldRows[] = {
    KIT_TEXT(XmlField, psName, nullptr, "name of the element or attribute; absent: the node's name"),
    KIT_WORD(XmlField, nKind, "psKind", 0, kKindWords,
             "the field is a child element, an attribute, or the text of the element it stands in"),
    KIT_FLAG(XmlField, nMandatory, 0, "1: an error when it is absent or empty, parsing and generating"),
    KIT_INT(XmlField, nKeepEmpty, 0, 0, 2,
            "an empty value is written: 1: always; 2: when it was given, be it empty"),
    KIT_INT(XmlField, nMaxLen, kNoLimit, 1, kMaxInt, "characters that the value may have"),
    KIT_WORD(XmlField, nSpace, "psSpace", -1, kSpaceWords,
             "white space of the parsed value; absent: as XmlMsg says"),
    KIT_TEXT(XmlField, psDefault, nullptr, "generating: written when the value is empty"),
    KIT_TEXT(XmlField, psConst, nullptr,
             "the only value the field may have; generating: written also when the value is empty"),
    KIT_FLAG(XmlField, nPosition, 0, "1: the number of the repetition that the field stands in, from 1"),
};
inline constexpr kit::RecordType kXmlField =
    KIT_RECORD(XmlField, kXmlFieldRows, "a field, or a loop without children");

inline constexpr kit::Attribute kXmlGroupRows[] = {
    KIT_TEXT(XmlGroup, psName, nullptr, "name of the element; absent: the node's name"),
    KIT_TEXT(XmlGroup, psNamespace, nullptr,
             "default namespace from this element on; declared on it when it differs from the one around"),
    KIT_FLAG(XmlGroup, nMandatory, 0, "1: parsing reports its absence; generating always writes it"),
    KIT_FLAG(XmlGroup, nKeepEmpty, 0, "1: generating writes the element also when it has no value inside"),
};
inline constexpr kit::RecordType kXmlGroup =
    KIT_RECORD(XmlGroup, kXmlGroupRows, "a group, or a loop with children");

inline constexpr kit::Attribute kXmlLoopRows[] = {
    KIT_TEXT(XmlLoop, psWrapper, nullptr, "name of an element around all repetitions; absent: none"),
    KIT_FLAG(XmlLoop, nKeepEmpty, 0, "1: the wrapper is written also without repetitions"),
    KIT_INT(XmlLoop, nMin, 0, 0, kMaxInt, "least number of repetitions, parsing and generating"),
    KIT_INT(XmlLoop, nMax, kNoLimit, 1, kMaxInt, "largest number of repetitions, parsing and generating"),
};
inline constexpr kit::RecordType kXmlLoop = KIT_RECORD(XmlLoop, kXmlLoopRows, "a loop");

inline constexpr const kit::RecordType *kRecordTypes[] = {&kXmlMsg, &kXmlField, &kXmlGroup, &kXmlLoop};

}  // namespace cvt::xml

// plan.h: a definition compiled for parsing and generating: data elements by number, values by slot.
//
//   definition                           plan
//   Mti     (mti)                        opening[0]
//   Pan     nNumber 2  LL n              elements[0]   number 2
//   Address nNumber 43 (IsoGroup)        elements[1]   number 43
//     Street  25                           inside.members[0]
//     City    13                           inside.members[1]
//   Chip    nNumber 55 (IsoTlv)          elements[2]   number 55
//     Amount  9F02                         inside.members[0], by its tag
#pragma once

#include <algorithm>
#include <array>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "bitmap.h"
#include "cvt_message.h"
#include "date.h"
#include "kit/charset.h"
#include "kit/rule.h"
#include "records.h"

namespace cvt::iso8583 {

// How long a content is, and where that stands.
struct Frame {
  size_t digits = 0;  // of the prefix; 0: none
  size_t bytes = 0;   // of the prefix
  PrefixCoding coding = PrefixCoding::Text;
  char zero = '0';          // the digit 0 of a text prefix
  bool countsBytes = true;  // else digits
  bool fixed = false;       // exactly `most`
  size_t least = 0;         // length of the content: characters, digits, or bytes of type b
  size_t most = 0;
};

// Between the bytes of a content and its value.
struct Content {
  Type type = Type::Ans;
  Coding coding = Coding::Text;
  const kit::Charset *charset = nullptr;
  bool ascii = true;    // ASCII bytes are ASCII text
  bool right = false;   // pads stand in front
  bool rawPad = false;  // the pad is a byte, no character
  bool trim = false;
  bool bits = false;   // bytes are shown as bits
  char pad = ' ';      // as a character; bcd: the half byte's digit
  char padByte = ' ';  // as it is written
  std::optional<Date> date;
};

struct Container;

// Fields whose bytes are their value when all characters are of one kind.
enum class Plain : unsigned char { No, Digits, Printable };

// A data element, or a member of one.
struct Element : kit::Rule {
  Kind kind = Kind::Data;
  Plain plain = Plain::No;
  int number = 0;
  uint32_t tag = 0;
  const char *saidConstant = nullptr;  // psConst; `constant` is what is read for it
  Frame frame;
  Content content;
  std::unique_ptr<Container> inside;  // null: a field
};

enum class Form : unsigned char { Subfields, Tlv };

// What stands in a group or a loop.
struct Container {
  Form form = Form::Subfields;
  std::vector<Element> members;
  std::vector<int> slots;  // of the nodes inside that the level around holds

  bool loop = false;  // repetitions of the members, in a value list each
  int bodySlots = 0;
  int minTimes = 0;
  int maxTimes = 0;  // 0: no limit

  // BER-TLV
  struct Tag {
    uint32_t tag;
    size_t member;
  };
  static constexpr size_t kNone = static_cast<size_t>(-1);
  size_t find(uint32_t tag) const;  // the member, or kNone

  std::vector<Tag> tags;          // ascending
  std::vector<size_t> mandatory;  // members
  int othersSlot = -1;            // unknown tags are kept there
  const char *othersNode = nullptr;
  int orderSlot = -1;  // the order of the tags is kept there
  const char *orderNode = nullptr;
};

inline size_t Container::find(uint32_t tag) const {
  const auto less = [](const Tag &known, uint32_t wanted) { return known.tag < wanted; };
  const auto at = std::lower_bound(tags.begin(), tags.end(), tag, less);
  return at == tags.end() || at->tag != tag ? kNone : at->member;
}

// A field that shows a bitmap, or all of them.
struct BitmapField {
  int slot;
  const char *node;
  int which;  // 0 .. 2; -1: all
  bool bits;
};

// What tells whether a data element is written; apart from the elements, so that all of them are looked at
// quickly.
struct Presence {
  int slot;
  int16_t number;
  bool keepsGiven;  // an empty value that was given is written
  bool always;      // its definition alone says what to write
  bool group;
};

struct Plan {
  int slots = 0;
  std::vector<Element> opening;  // headers and the message type
  std::vector<Presence> presences;
  std::vector<BitmapField> bitmapFields;
  std::vector<Element> elements;                   // ascending numbers
  std::array<int16_t, kMaxNumber + 1> byNumber{};  // position in elements; -1: not defined
  Bits mandatory;
  Bits defined;

  BitmapCoding bitmapCoding = BitmapCoding::Hex;
  const kit::Charset *charset = nullptr;
  char hexZero = '0';
  char hexA = 'A';
  int bitmaps = 2;
  bool flagged = true;                    // the first bit of a bitmap says that another one follows
  bool thirdInside = false;               // the third bitmap stands in the place of data element 65
  std::array<bool, kMaxBitmaps> shown{};  // a field has that bitmap's value

  int restSlot = -1;  // unknown data elements are kept there
  const char *restNode = nullptr;

  size_t maxLength = 0;
  bool whole = false;
  std::deque<std::string> names;  // of elements in plain groups

  // Bits of a bitmap that say whether another one follows.
  uint64_t flags(size_t bitmap) const {
    return flagged && bitmap + 1 < static_cast<size_t>(bitmaps) ? Bits::mask(1) : 0;
  }
  // Whether the number's bit is such a one, and no data element's.
  bool isFlag(int number) const { return (flags(Bits::word(number)) & Bits::mask(number)) != 0; }
  const Element &element(int number) const {
    return elements[static_cast<size_t>(byNumber[static_cast<size_t>(number)])];
  }
};

// The plan of a definition. Throws Misconfigured.
std::unique_ptr<Plan> compile(const Msg &msg, const IsoMsg &settings);

}  // namespace cvt::iso8583

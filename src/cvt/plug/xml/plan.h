// plan.h: a definition as the tree of XML elements it stands for. Made once when the definition loads;
// reading and writing run over it and address values by slot.
//
//   definition                      plan
//   Order                           order
//     Id     (attribute)              @id            slot 0
//     Amount (group)                  amount
//       Ccy    (attribute)              @ccy         slot 2
//       Value  (text)                   text()       slot 3
//     Lines  (loop, wrapper lines)    lines          no node of its own
//       Sku                             line         slot 4, repeated; each repetition is a value list
//                                         sku        slot 0 of the repetition
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cvt_message.h"
#include "kit/charset.h"
#include "records.h"

namespace cvt::xml {

// Names of one level to their positions. Built once; looked up without allocation.
class NameTable {
 public:
  // False when the name is there already.
  bool add(std::string_view name, int position);

  // The position, or -1.
  int find(std::string_view name) const;

 private:
  struct Entry {
    std::string name;
    int position = -1;
  };

  static size_t hash(std::string_view name);
  size_t slotOf(std::string_view name) const;  // where it is, or the free entry where it belongs
  void grow();

  std::vector<Entry> m_entries;  // a power of two; open addressing
  size_t m_used = 0;
};

// A text of the document and the value it belongs to.
struct Text {
  int slot;
  const char *node;  // the field's name
  bool mandatory;
  bool keepEmpty;
  size_t maxLength;  // in characters; 0: no limit
  Space space;
  const char *fallback;  // psDefault, or null
  const char *constant;  // psConst, or null
  int countedLoop;       // slot of the loop whose repetitions it counts; -1: an ordinary value
};

struct Attribute {
  Text text;
  std::string name;      // as the definition writes it
  std::string expanded;  // as the parser tells it
  std::string open;      // ` name="`, in the output encoding
};

// A count field that a parsed value list must agree with.
struct Count {
  int slot;
  int loop;
  const char *node;
  const char *loopNode;
};

struct Element {
  const char *node = nullptr;  // null for a wrapper, which no node stands for
  std::string name;
  std::string expanded;
  std::string open;    // `<name`, with the namespaces that are declared on it
  std::string close;   // `</name>`
  bool field = false;  // a field: nothing but text
  bool mandatory = false;
  bool keepEmpty = false;

  std::optional<Text> text;
  std::vector<Attribute> attributes;
  NameTable attributeNames;
  std::vector<Element> children;
  NameTable childNames;
  std::vector<size_t> requiredAttributes;  // positions of the mandatory ones
  std::vector<size_t> requiredChildren;    // of the mandatory ones and of loops with a least number

  int loopSlot = -1;  // in the value list around it; -1: the element occurs once and shares that list
  int bodySlots = 0;  // loops: slots of a repetition
  int minTimes = 0;
  int maxTimes = 0;           // 0: no limit
  std::vector<Count> counts;  // loops and the root: the count fields of their value list

  bool loop() const { return loopSlot >= 0; }
  bool wrapper() const { return node == nullptr; }
};

struct Prefix {
  std::string prefix;
  std::string uri;
};

struct InputEncoding {
  std::string name;
  const kit::Charset *charset;
};

struct Plan {
  Element root;
  int slots = 0;  // of the message's value list
  bool skipUnknown = false;
  size_t maxDepth = 0;
  size_t maxAttributes = 0;

  std::string encoding;                   // as it is declared
  const kit::Charset *charset = nullptr;  // of the output
  std::vector<InputEncoding> encodings;   // what input may be encoded in, beside what the parser knows itself
  std::string prologue;
  size_t indent = 0;
  bool finalLineFeed = false;
  bool emptyPair = false;

  std::vector<Prefix> prefixes;            // in the order of their declaration
  std::vector<std::string> defaultSpaces;  // every namespace that is the default one somewhere
};

// Throws Misconfigured.
std::unique_ptr<Plan> compilePlan(const Msg &msg, const XmlMsg &document);

// What holds for a value in both directions: it is there when it is mandatory, and not too long. Throws
// Fault.
void checkValue(const Text &text, std::string_view value);

// An expanded name for messages: as the definition writes it, and with words about its namespace where the
// definition knows none of that name.
std::string shownName(const Plan &plan, std::string_view expanded);

}  // namespace cvt::xml

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
#include "kit/name_table.h"
#include "kit/rule.h"
#include "names.h"
#include "records.h"

namespace cvt::xml {

// A text of the document and the value it belongs to.
struct Text : kit::Rule {
  Space space = Space::Preserve;
  bool layout = false;  // white space alone is none of its values: it is read as no value
};

// What elements and attributes of one level are told apart by.
struct Named {
  std::string name;    // as the definition writes it
  int space = 0;       // position in the plan's namespaces
  std::string local;   // the name without its prefix
  int sameLocal = -1;  // position of the next one with the same local name in another namespace

  bool is(const Name &other) const { return space == other.space && local == other.local; }
};

struct Attribute : Named {
  Text text;
  std::string open;  // ` name="`, in the output encoding
};

// Children of one name, told apart by the value that an attribute must have.
struct Alternatives {
  Named attribute;
  kit::NameTable positions;
};

struct Element : Named {
  const char *node = nullptr;  // null for a wrapper, which no node stands for
  std::string shown;           // for messages: the name, and what tells it apart from others of that name
  std::string open;            // `<name`, with the namespaces that are declared on it
  std::string start;           // the same of an element without attributes, with the end of the tag
  std::string close;           // `</name>`
  std::string tag;             // `<local>` and `</local>`: as it comes without prefix and attributes
  std::string endTag;
  size_t declarations = 0;  // of namespaces, on it
  bool field = false;       // a field: nothing but text
  bool mandatory = false;
  bool keepEmpty = false;
  Space valueSpace = Space::Preserve;  // alternatives: of the value that tells it apart from the others

  std::optional<Text> text;
  std::vector<Attribute> attributes;
  kit::NameTable attributeNames;  // local names
  std::vector<Element> children;
  kit::NameTable childNames;  // local names; of several children of one name, the first
  std::vector<Alternatives> alternatives;
  std::vector<size_t> requiredAttributes;  // positions of the mandatory ones
  std::vector<size_t> requiredChildren;    // of the mandatory ones and of loops with a least number

  int alternative = -1;  // position in the alternatives of the element around; -1: the only one of its name
  int loopSlot = -1;     // in the value list around it; -1: the element occurs once and shares that list
  int bodySlots = 0;     // loops: slots of a repetition
  int minTimes = 0;
  int maxTimes = 0;                // 0: no limit
  std::vector<kit::Count> counts;  // loops and the root: the count fields of their value list

  bool loop() const { return loopSlot >= 0; }
  bool wrapper() const { return node == nullptr; }
  bool leaf() const { return field && !loop(); }
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
  std::vector<std::string> spaces{""};     // every namespace that a name is in; the first is none

  // The position of a namespace, or kUnknownSpace.
  static constexpr int kUnknownSpace = -1;
  int spaceOf(std::string_view uri) const;
};

// The position of a name among the elements or attributes of a level, or -1. `locals` are their local names.
template <class T>
int find(const std::vector<T> &all, const kit::NameTable &locals, const Name &name) {
  int found = locals.find(name.local);
  while (found >= 0 && all[static_cast<size_t>(found)].space != name.space) {
    found = all[static_cast<size_t>(found)].sameLocal;
  }
  return found;
}

// Throws Misconfigured.
std::unique_ptr<Plan> compilePlan(const Msg &msg, const XmlMsg &document);

// A name for messages: as the definition writes it, and with words about its namespace where the definition
// knows none of that name.
std::string shownName(const Plan &plan, const Name &name);

}  // namespace cvt::xml

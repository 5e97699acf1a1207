// plan.h: a definition as the tree of JSON values it stands for. Made once when the definition loads; reading
// and writing run over it and address values by slot.
//
//   definition                      plan
//   Order                           object           the root
//     Id                              "id"           slot 0
//     Total (group)                   "total"        object
//       Amount                          "amount"     slot 2
//     Lines (loop)                    "lines"        array, slot 3
//       Sku                             object       each repetition is a value list
//                                         "Sku"      slot 0 of the repetition
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cvt_message.h"
#include "kit/name_table.h"
#include "kit/rule.h"
#include "records.h"

namespace cvt::json {

enum class Form {
  Scalar,   // a field
  Name,     // the name of the member that a repetition is
  Others,   // the members of an object that are none of its children
  Object,   // children by name
  Tuple,    // an array, children by position
  Array,    // a loop: one child, repeated
  Members,  // a loop: one child, repeated, each with a name of its own
};

struct Item {
  const char *node = nullptr;  // null: no node stands for it (the root, a repetition)
  Form form = Form::Object;
  std::string name;     // of the member; empty in an array
  std::string quoted;   // as it is written, with its quotes; empty without a name
  std::string key;      // `,"name":` as it is written
  std::string textKey;  // the same in front of a text, with its quote
  std::string readKey;  // `"name":` as it most often comes, of a text with its quote
  Null null = Null::Refuse;
  bool mandatory = false;
  bool keepEmpty = false;

  kit::Rule rule{};  // Scalar, Name, Others
  Type type = Type::Text;
  bool plain = false;  // a text or number of which nothing is asked

  std::vector<Item> children;    // of a loop: the repeated one, and for Members its Name behind it
  kit::NameTable names;          // Object: of the children
  std::vector<size_t> required;  // Object, Tuple: positions of the children that must be there
  int others = -1;               // Object: position of its Others

  int loopSlot = -1;  // in the value list around it
  int bodySlots = 0;  // loops: slots of a repetition
  int minTimes = 0;
  int maxTimes = 0;                // 0: no limit
  std::vector<kit::Count> counts;  // loops: the count fields of a repetition's list

  bool loop() const { return form == Form::Array || form == Form::Members; }
  bool field() const { return form == Form::Scalar || form == Form::Name || form == Form::Others; }
};

struct Plan {
  Item root;
  int slots = 0;                   // of the message's value list
  std::vector<kit::Count> counts;  // its count fields
  bool skipUnknown = false;
  bool whole = true;
  bool ascii = false;
  bool finalLineFeed = false;
  size_t indent = 0;
  size_t maxDepth = 0;
  size_t maxMembers = 0;
  size_t maxSize = 0;  // 0: no limit
};

// Throws Misconfigured.
std::unique_ptr<Plan> compilePlan(const Msg &msg, const JsonMsg &settings);

}  // namespace cvt::json

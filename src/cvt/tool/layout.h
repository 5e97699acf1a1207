// layout.h: a definition as the command shows it: a tree of named fields that knows where each value is kept.
//
// A message's value list has a slot for every node of the definition. Members of a group have their slots in
// the list of the message (or of the repetition) that the group stands in. A loop's slot holds one list a
// repetition, with the slots of the loop's body; the slots that the body also has in the enclosing list are
// used by nobody and do not appear here.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cvt_message.h"

namespace tool {

struct Field {
  enum class Kind {
    value,
    group,     // members; its own slot may hold a value as well
    loop,      // members of one repetition
    valueLoop  // a loop without members: each repetition is one value, in slot 0 of its list
  };

  // Unique among its siblings: the node's name, for its second appearance with "#2" behind it, and so on.
  std::string key;
  Kind kind = Kind::value;
  int slot = 0;
  Message *node = nullptr;
  std::vector<Field> members;
};

using Fields = std::vector<Field>;

// Key under which a group's own value stands among its members.
constexpr std::string_view kOwnValue = "#value";

// The field of that key, null when there is none. Looks from position `hint` on and sets it behind the field
// found: asking in the order of the definition takes no search.
const Field *findField(const Fields &fields, std::string_view key, size_t &hint);

// The layouts of definitions, made when first asked for. A reload of the configuration makes them afresh.
class Layouts {
 public:
  // Throws a configuration Failure when the definition nests too deeply.
  const Fields &of(const Msg &msg);

 private:
  std::unordered_map<const Msg *, Fields> m_layouts;
  long m_loadTime = 0;
};

// The bytes in a slot; empty for a slot that is empty, absent, or holds a loop.
std::string_view bytesIn(ValueList *list, int slot);

// Number of repetitions of the loop in a slot, 0 unless the slot holds a loop.
int repetitionsIn(ValueList *list, int slot);

}  // namespace tool

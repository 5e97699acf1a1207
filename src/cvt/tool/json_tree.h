// json_tree.h: a JSON text as its values, one behind the other.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool {

// One value. What an array or an object holds stands behind it, in the order of the text:
//
//   for (const Json *item = json.begin(); item != json.end(); item = item->end())
struct Json {
  enum class Kind { null, boolean, integer, fraction, string, array, object };

  Kind kind = Kind::null;
  std::string key;   // of a member of an object
  std::string text;  // what a string says, the digits of an integer
  size_t span = 1;   // how many values it is, with all that it holds

  const Json *begin() const { return this + 1; }
  const Json *end() const { return this + span; }

  // The member of that key, null when there is none.
  const Json *find(std::string_view name) const;
};

// The text's values: the first is the whole. However deep they are nested, reading and releasing them takes
// no stack. Throws DataError when the text is not JSON, or an object has two members of one name.
std::vector<Json> readJson(std::string_view text);

}  // namespace tool

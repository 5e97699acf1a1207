// json.h: a message as one line of JSON, and back.
//
//   {"message":"Order","fields":{"Id":"7","Address":{"City":"Rome"},"Items":[{"Code":"A"}],"Tags":["x","y"]}}
//
// A value is a string, or {"base64":"..."} when its bytes are not UTF-8. Empty fields are left out. A group
// is an object, a loop an array of objects, a loop without members an array of values.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "json_tree.h"
#include "layout.h"

namespace tool {

// Appends the line without its line feed.
//   bAll  empty fields too
void appendJson(std::string &out, const Msg &msg, const Fields &fields, ValueList *list, bool bAll);

// A message read from JSON. Integers are taken for their digits, null for an empty field.
class JsonMessage {
 public:
  // Throws DataError when the text is not JSON of this form.
  explicit JsonMessage(std::string_view text);

  // The value of "message", empty when there is none.
  const std::string &message() const { return m_message; }

  // Stores the fields in an empty message. Throws DataError with the path of the field that does not fit.
  void fill(const Fields &fields, const ValueListInfo &info) const;

 private:
  std::vector<Json> m_values;
  std::string m_message;
};

}  // namespace tool

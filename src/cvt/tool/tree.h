// tree.h: a message as text for people.
//
//   Order
//     Id: "7"
//     Address
//       City: "Rome"
//     Items[0]
//       Code: "A"
#pragma once

#include <string>

#include "layout.h"

namespace tool {

// Appends the fields, two blanks in. Values that are not text are shown in hexadecimal.
//   bAll  empty fields too
void appendTree(std::string &out, const Fields &fields, ValueList *list, bool bAll);

}  // namespace tool

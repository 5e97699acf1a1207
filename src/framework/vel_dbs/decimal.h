// decimal.h: numbers of a declared scale. SQLite stores 10.50 as 10.5 in whatever column; where the column
// was declared numeric(10,2) the digits are put back.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace dbs {

// The scale of a declared type: 2 for "numeric(10,2)", 0 for "DECIMAL(10)"; nothing for any other type.
std::optional<size_t> declaredScale(const char *type);

// A number with exactly `scale` digits behind the point, rounded half away from zero as servers do it. The
// number is digits with an optional sign and point, or a small one as SQLite writes it, "1.5e-07". Nothing
// for any other text, also for great numbers in that form: the digits that it leaves out are lost.
std::optional<std::string> withScale(std::string_view number, size_t scale);

}  // namespace dbs

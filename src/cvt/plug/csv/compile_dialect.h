// compile_dialect.h: from the attributes of CsvMsg to how the text is delimited.
#pragma once

#include "plan.h"

namespace cvt::csv {

// Throws Misconfigured for marks that cannot be told apart and sets that cannot be written.
void compileDialect(const CsvMsg &text, Dialect &dialect);

// The text in the dialect's character set. Throws Misconfigured, naming the record and the attribute.
Literal literal(const Dialect &dialect, const char *text, const void *record, const char *attribute);

}  // namespace cvt::csv

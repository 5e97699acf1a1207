// resolve.h: what is known of a plan only when all of its records are.
#pragma once

#include "plan.h"

namespace cvt::csv {

// With which tags everything that stands for records may begin. Throws Misconfigured for records in any order
// that begin alike.
void resolveStarts(Plan &plan, const CsvMsg &text);

// The columns of the one record that a header line belongs to, and the line. Throws Misconfigured.
void resolveHeader(Plan &plan, const CsvMsg &text);

}  // namespace cvt::csv

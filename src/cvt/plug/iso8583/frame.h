// frame.h: the length of a content, as its prefix says it.
#pragma once

#include "input.h"
#include "kit/output.h"
#include "plan.h"

namespace cvt::iso8583 {

// Bytes that a prefix of so many digits takes, and the largest length that it can say.
size_t prefixBytes(PrefixCoding coding, size_t digits);
size_t prefixLimit(PrefixCoding coding, size_t digits);

// REQUIRES: a prefix.
size_t readPrefix(const Frame &frame, Input &in);

// Writes a count at a place that was reserved. REQUIRES: a prefix that can say it.
void writePrefix(const Frame &frame, size_t count, char *out);

}  // namespace cvt::iso8583

// field.h: one field between the bytes of a record and its value.
#pragma once

#include <cstring>
#include <string_view>

#include "kit/bytes.h"
#include "kit/output.h"
#include "kit/values.h"
#include "plan.h"

namespace cvt::fix {

// REQUIRES: so many bytes at `in`.
inline bool standsAt(const char *in, const FieldBytes &expected) {
  const char *const inner = in + expected.before;
  const char *const behind = inner + expected.bytes.size();
  return std::memcmp(inner, expected.bytes.data(), expected.bytes.size()) == 0 &&
         kit::countStart(in, expected.before, expected.pad) == expected.before &&
         kit::countStart(behind, expected.behind, expected.pad) == expected.behind;
}

// Bytes of the field that starts at `in`, where `left` bytes are left; throws Fault when they are too few.
size_t fieldWidth(const FieldPlan &field, const char *in, size_t left, size_t offset);

// The value of the field's `width` bytes, in memory of the store. `offset` is where the field stands.
std::string_view readField(const FieldPlan &field, const char *in, size_t width, size_t offset,
                           kit::Store &store);

// Writes the field with that value.
void writeField(const FieldPlan &field, std::string_view value, kit::Output &out);

// Fields of no fixed length: the value is all of the bytes; the mark behind them is written too.
std::string_view readVariable(const FieldPlan &field, std::string_view bytes, size_t offset,
                              kit::Store &store);
void writeVariable(const FieldPlan &field, std::string_view value, kit::Output &out);

// The value as a message gives it: a number canonical, a text without its pads. `number` has room for
// kCanonicalRoom bytes. What the field cannot have comes back as it is.
std::string_view valueAsRead(const FieldPlan &field, std::string_view value, char *number);

}  // namespace cvt::fix

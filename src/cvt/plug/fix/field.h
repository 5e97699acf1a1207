// field.h: one field between the bytes of a record and its value.
#pragma once

#include <string_view>

#include "kit/output.h"
#include "kit/values.h"
#include "plan.h"

namespace cvt::fix {

// Bytes of the field that starts at `in`, where `left` bytes are left; throws Fault when they are too few.
size_t fieldWidth(const FieldPlan &field, const char *in, size_t left, size_t offset);

// The value of the field's `width` bytes, in memory of the store. `offset` is where the field stands.
std::string_view readField(const FieldPlan &field, const char *in, size_t width, size_t offset,
                           kit::Store &store);

// Writes the field with that value.
void writeField(const FieldPlan &field, std::string_view value, kit::Output &out);

}  // namespace cvt::fix

// compile_field.h: a field's record and the message's settings to the field's plan.
#pragma once

#include <string>
#include <vector>

#include "plan.h"

namespace cvt::fix {

// The character set of that name; throws Misconfigured.
const kit::Charset *findCharset(const char *name, const std::string &path, const void *record);

// The byte that a pad stands for in a character set; throws Misconfigured when it is not one byte.
char padByte(int pad, const kit::Charset *charset, const std::string &path, const void *record);

// Throws Misconfigured.
FieldPlan compileField(const char *name, const FixField &record, const FixMsg &settings,
                       const std::string &path);

// The texts between the vertical bars.
std::vector<std::string> listOf(const char *text);

// A value that the definition names, as a message would give it; throws Misconfigured when it cannot.
std::string definedValue(const FieldPlan &field, const std::string &value, const std::string &path,
                         const void *record);

// The field's bytes for a value, as it stands in a message; throws Misconfigured when it cannot.
FieldBytes fieldBytes(const FieldPlan &field, const std::string &value, const std::string &path,
                      const void *record);

}  // namespace cvt::fix

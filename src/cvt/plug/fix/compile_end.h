// compile_end.h: where records end, and what may stand there.
#pragma once

#include <string>

#include "plan.h"

namespace cvt::fix {

// Checks that fields which a record may end before, and one that has what is left of it, are the last of the
// siblings, and tells each which one stands behind it, be it outside of its group; throws Misconfigured.
void linkTail(LevelPlan &level, size_t from, size_t to, const std::string &path, const void *record);

// Whether one of the siblings is such a field.
bool hasTail(const LevelPlan &level, size_t from, size_t to);

// Whether one of them is a loop up to the end, at any depth.
bool hasOpenLoop(const LevelPlan &level, size_t from, size_t to);

// Whether no bytes of them may look like a separator: texts without control characters, and digits.
bool cleanTexts(const LevelPlan &level, size_t from, size_t to);

}  // namespace cvt::fix

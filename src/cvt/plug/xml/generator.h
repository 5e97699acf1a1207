// generator.h: writes a message's values as a document, in one pass and without a tree.
#pragma once

#include "kit/plugin.h"
#include "plan.h"

namespace cvt::xml {

// Writes the document behind what the output holds already. Throws Fault for a value that the definition does
// not allow or XML cannot carry, and when the room ends; the call's Path then says at which field.
void generateDocument(const Plan &plan, kit::GenerateCall &call);

}  // namespace cvt::xml

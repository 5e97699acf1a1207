// parser.h: takes a document into a message's values.
#pragma once

#include "kit/plugin.h"
#include "plan.h"

namespace cvt::xml {

// Reads the document at call.from, which takes the rest of the buffer. Throws Fault for a text that is no
// well-formed document, for a DOCTYPE, and for what the definition does not allow.
void parseDocument(const Plan &plan, kit::ParseCall &call);

}  // namespace cvt::xml

// expat.h: reads a document with expat, which knows all of XML and tells what is wrong with one that is not.
#pragma once

#include "input.h"
#include "reader.h"

namespace cvt::xml {

// Throws Fault for a text that is no well-formed document, for a DOCTYPE, and for what the definition does not
// allow.
void readWithExpat(const Plan &plan, kit::ParseCall &call, const Input &input, Room &room);

}  // namespace cvt::xml

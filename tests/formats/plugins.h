// plugins.h: the plug-ins under the suite. A new one is a line here and one in plugins.cpp.
#pragma once

#include "format.h"

namespace formats {

const Format &csv();
const Format &example();
const Format &fix();
const Format &iso8583();
const Format &iso8583();
const Format &json();
const Format &xml();

}  // namespace formats

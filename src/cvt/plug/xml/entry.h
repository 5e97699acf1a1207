// entry.h: what the plug-in's exported initialiser calls. It includes nothing, see entry.cpp.
#pragma once

namespace cvt::xml {

// Registers the format; element is the plug-in's own in the configuration. 0 = success.
int initialise(void *element) noexcept;

}  // namespace cvt::xml

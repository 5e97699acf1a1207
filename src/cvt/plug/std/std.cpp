// std.cpp: the function library as a plug-in. It registers no format.
#include "kit/plugin.h"
#include "topics.h"

extern "C" KIT_EXPORT int stdInit(void *) {
  for (const cvt::kit::Topic *topic : cvt::functions::kTopics) cvt::kit::addFunctions(*topic);
  return 0;
}

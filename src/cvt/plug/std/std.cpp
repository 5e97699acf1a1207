// std.cpp: the function library as a plug-in. It registers no format.
#include "kit/barrier.h"
#include "kit/plugin.h"
#include "settings.h"
#include "topics.h"

extern "C" KIT_EXPORT int stdInit(void *element) {
  using namespace cvt;
  return kit::guarded(
      "Plug", "std",
      [&] {
        functions::configure(element);
        for (const kit::Topic *topic : functions::kTopics) kit::addFunctions(*topic);
      },
      [](const kit::Fault &fault) { KIT_ERR("Plug[std]: %s", fault.text().c_str()); });
}

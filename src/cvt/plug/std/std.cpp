// std.cpp: the function library as a plug-in. It registers no format.
#include "kit/barrier.h"
#include "kit/plugin.h"
#include "settings.h"
#include "topics.h"

namespace cvt::functions {

namespace {

// Reads the plug-in's element and gives each topic what concerns it.
void configure(void *element) {
  const auto *settings = static_cast<const Settings *>(
      element == nullptr ? kit::newRecord(kSettings) : kit::readRecord(kSettings, element));
  if (settings == nullptr)
    throw kit::Misconfigured("", nullptr, "settings of the plug-in", "others", "The line before says which");
  kit::limitResults(settings->nMaxResult);
}

}  // namespace

}  // namespace cvt::functions

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

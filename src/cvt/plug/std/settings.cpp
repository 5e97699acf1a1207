#include "settings.h"

#include "kit/fault.h"
#include "kit/function.h"

namespace cvt::functions {

void apply(const Settings &settings) {
  kit::limitResults(settings.nMaxResult);
  configureRegex(settings);
  configureTables(settings);
  configureDates(settings);
  configureCoding(settings);
}

void configure(void *element) {
  const auto *settings = static_cast<const Settings *>(
      element == nullptr ? kit::newRecord(kSettings) : kit::readRecord(kSettings, element));
  if (settings == nullptr) {
    throw kit::Misconfigured("", nullptr, "settings of the plug-in", "something else",
                             "The line before says where");
  }
  apply(*settings);
}

}  // namespace cvt::functions

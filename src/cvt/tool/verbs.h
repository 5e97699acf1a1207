// verbs.h: what the command does with a message.
#pragma once

#include "options.h"

namespace tool {

// Run one verb over all inputs; the library is started. Return what the run comes to, or throw Failure.
Exit convert(const Options &options);
Exit parse(const Options &options);
Exit generate(const Options &options);
Exit bench(const Options &options);

}  // namespace tool

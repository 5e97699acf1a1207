// environment.h: the settings that come from the environment. They are read whenever a connection is made.
#pragma once

#include <string>

#include "session.h"

namespace dbs {

// VEL_DBS_URL; throws Error when it is not set.
std::string urlFromEnvironment();

// VEL_DBS_TIMEOUT_MS, VEL_DBS_BUSY_MS, VEL_DBS_STATEMENTS; throws Error for a value that is no number or out
// of range.
Limits limitsFromEnvironment();

}  // namespace dbs

// log.h: the plug-ins' way to the framework's log.
#pragma once

#include <string>

#include "velutil.h"

// One line at level 1: what went wrong.
#define KIT_ERR(...) \
  logInfo(1, "$cvt2", __FILE_NAME__, __LINE__, static_cast<const char *>(__func__), __VA_ARGS__)

namespace cvt::kit {

// Bytes as they appear in a message: in double quotes, printable ASCII as it is, anything else as \xNN, at
// most 40 bytes, then "...".
std::string quoted(const char *bytes, size_t length);
inline std::string quoted(const std::string &bytes) {
  return quoted(bytes.data(), bytes.size());
}

}  // namespace cvt::kit

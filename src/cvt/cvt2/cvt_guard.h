// cvt_guard.h: calls of code that is not the library's. Private.
#pragma once

#include <exception>

#include "cvt_log.h"

namespace cvt {

// Calls a function of a plug-in or host and returns its result. An exception that it lets out ends here: it is
// logged with the function's kind and name and counts as failure, -1.
template <class F>
int guarded(const char *psKind, const char *psName, F &&call) noexcept {
  try {
    return call();
  } catch (const std::exception &e) {
    CVT_ERR("%s[%s] let an exception out: %s", psKind, psName, e.what());
  } catch (...) {
    CVT_ERR("%s[%s] let an exception out", psKind, psName);
  }
  return -1;
}

}  // namespace cvt

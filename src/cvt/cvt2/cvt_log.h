// cvt_log.h: the library's way to the framework's log, and the argument checks that use it. Private.
#pragma once

#include "velutil.h"

// Levels: 1 errors (and some progress lines), 5 trace.
#define CVT_LOG(nLevel, psFunction, ...) \
  logInfo(nLevel, "$cvt2", __FILE_NAME__, __LINE__, psFunction, __VA_ARGS__)
// An error that a helper found: the line is that of the function that was called.
#define CVT_ERR_OF(psFunction, ...) CVT_LOG(1, psFunction, __VA_ARGS__)
#define CVT_ERR(...) CVT_ERR_OF(static_cast<const char *>(__func__), __VA_ARGS__)
#define CVT_TRACE(...) CVT_LOG(5, static_cast<const char *>(__func__), __VA_ARGS__)

// Leaves the function with `result` when the expression, or the assignment, yields null. What is logged is
// the text of the expression itself: "[ptMsg] is NULL".
#define CVT_NOT_NULL(expression, result)    \
  do {                                      \
    if ((expression) == nullptr) {          \
      CVT_ERR("[%s] is NULL", #expression); \
      return result;                        \
    }                                       \
  } while (0)

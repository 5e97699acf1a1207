/* velutil.h: the framework's logging function. */
#ifndef VELUTIL_H
#define VELUTIL_H

#ifdef __cplusplus
extern "C" {
#endif

/* Writes one log line.
 *   nLevel      1 errors ... 5 trace; lines above the threshold cost no formatting
 *   psModule    module tag, for example "$cvt2"
 *   psFile      source file name; nLine: line; psFunction: function
 *   psFormat    printf format of the arguments that follow
 * All strings are borrowed for the call. Returns 0. */
int logInfo(int nLevel, const char *psModule, const char *psFile, int nLine, const char *psFunction,
            const char *psFormat, ...)
#ifdef __GNUC__
    __attribute__((format(printf, 6, 7)))
#endif
    ;

#ifdef __cplusplus
}
#endif

#endif

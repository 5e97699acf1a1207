/* _version.h: the version record. */
#ifndef CVT2_VERSION_H
#define CVT2_VERSION_H

#include "cvt_def.h"

CVT_C_BEGIN

/* The version record: "^__VERSION_ID__^=" and behind it version, revision and day of the build. The marker
 * lets tools find the record in the library's file. Returns the library's own buffer of 256 bytes, the same
 * one on every call: a text with a zero byte behind it. The host may write to it; what it writes stays until
 * the library is unloaded. */
char *_cvt2_Get_Ver(void);

CVT_C_END

#endif

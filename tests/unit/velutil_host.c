/* velutil_host.c: a host of the logging library that velutil_test runs with the environment it wants to see.
 *   velutil_host line LEVEL TEXT    logs TEXT at LEVEL
 *   velutil_host long LEVEL COUNT   logs COUNT times "x" in one line
 *   velutil_host wild LEVEL         logs with an argument that cannot be formatted without a crash
 *   velutil_host null LEVEL         logs without module, file, function and format
 *   velutil_host kill LEVEL TEXT    logs TEXT, then dies without any clean-up
 *   velutil_host dump LEVEL         logs bytes that are not a text
 */
#include <signal.h>
#include <stdlib.h>
#include <string.h>

#include "velutil.h"

static int logLong(int nLevel, size_t nCount) {
  char *psText = malloc(nCount + 1);
  if (psText == NULL) return 1;
  memset(psText, 'x', nCount);
  psText[nCount] = 0;
  const int nResult = logInfo(nLevel, "$host", "host.c", 12, "logLong", "[%s]", psText);
  free(psText);
  return nResult;
}

/* Without the printf attribute, for calls that the compiler would rightly refuse. */
typedef int LogFunction(int, const char *, const char *, int, const char *, const char *, ...);

int main(int argc, char **argv) {
  if (argc < 3) return 64;
  const char *psVerb = argv[1];
  const char *psText = argc > 3 ? argv[3] : "";
  const int nLevel = atoi(argv[2]);
  LogFunction *fLog = logInfo;
  if (strcmp(psVerb, "line") == 0) return logInfo(nLevel, "$host", "host.c", 7, "main", "%s", psText);
  if (strcmp(psVerb, "long") == 0) return logLong(nLevel, (size_t)strtoul(psText, NULL, 10));
  if (strcmp(psVerb, "wild") == 0) return fLog(nLevel, "$host", "host.c", 7, "main", "%s", (char *)1);
  if (strcmp(psVerb, "null") == 0) return fLog(nLevel, NULL, NULL, 7, NULL, NULL);
  if (strcmp(psVerb, "dump") == 0) return logInfo(nLevel, "$host", "host.c", 7, "main", "a\nb\x01\tc\r\n\n");
  if (strcmp(psVerb, "kill") == 0) {
    logInfo(nLevel, "$host", "host.c", 7, "main", "%s", psText);
    return raise(SIGKILL);
  }
  return 64;
}

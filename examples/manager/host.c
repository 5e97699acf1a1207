/* host.c: a host of the plug-in manager: loads the library and a module by their files, has the module
 * convert a NACHA file, writes the document to standard output, and unloads both; so for every file.
 *
 *   manager_host LIBRARY MODULE CONFIGURATION FILE...
 */
#include <stdio.h>

#include "payment.h"
#include "plug_mgr.h"

static char f_sIn[1 << 20];
static char f_sOut[1 << 20];

static int readFile(const char *psName) {
  FILE *fp = fopen(psName, "rb");
  if (fp == NULL) return -1;
  const int nLen = (int)fread(f_sIn, 1, sizeof f_sIn, fp);
  fclose(fp);
  return nLen;
}

/* Runs the module once. */
static int run(int iModule, char *psConfiguration, int nLen) {
  PaymentIn tIn = {psConfiguration, f_sIn, nLen};
  PaymentOut tOut = {f_sOut, sizeof f_sOut};
  if (plugEvent(iModule, EVENT_MGR_ON_RUN, &tIn, &tOut) != 0) return -1;
  return fwrite(tOut.psBuf, 1, (size_t)tOut.nLen, stdout) == (size_t)tOut.nLen ? 0 : -1;
}

static int leave(int iPlugId) {
  if (iPlugId < 0) return -1;
  const int nResult = plugEvent(iPlugId, EVENT_MGR_EXIT, NULL, NULL);
  return plugUnload(iPlugId) == 0 ? nResult : -1;
}

/* A whole life of library and module for one file. */
static int convert(char **ppsModules, char *psConfiguration, const char *psFile) {
  const int nLen = readFile(psFile);
  const int iLibrary = plugLoad(ppsModules[0], NULL);
  const int iModule = plugLoad(ppsModules[1], NULL);
  int nResult = -1;
  if (nLen >= 0 && iLibrary > 0 && iModule > 0 && plugEvent(iLibrary, EVENT_MGR_ON_RUN, NULL, NULL) == 0) {
    nResult = run(iModule, psConfiguration, nLen);
  }
  if (leave(iModule) != 0 || leave(iLibrary) != 0) nResult = -1;
  return nResult;
}

int main(int argc, char **argv) {
  if (argc < 5) return 2;
  for (int i = 4; i < argc; ++i) {
    if (convert(argv + 1, argv[3], argv[i]) != 0) return 1;
  }
  return 0;
}

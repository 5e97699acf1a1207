/* host.c: a program in C that uses the library: reads a NACHA file, looks at fields by name, and has the
 * message written as XML.
 *
 *   nacha_host CONFIGURATION FILE
 */
#include <stdio.h>
#include <stdlib.h>

#include "cvt.h"

/* The library takes names as char *, and does not write to them. */
static char f_sNacha[] = "nacha";
static char f_sPain[] = "pain";
static char f_sNachaFile[] = "NachaFile";
static char f_sOrigin[] = "ImmediateOriginName";
static char f_sBatches[] = "Batches";
static char f_sCompany[] = "Batches.CompanyName";

static char *readFile(const char *psName, int *pnLen) {
  FILE *fp = fopen(psName, "rb");
  char *psBuf = malloc(1 << 20);
  if (fp == NULL || psBuf == NULL) {
    free(psBuf);
    return NULL;
  }
  *pnLen = (int)fread(psBuf, 1, 1 << 20, fp);
  fclose(fp);
  return psBuf;
}

static void printField(InnerMessage *ptMsg, char *psName) {
  int nError = 0;
  const Value *ptValue = cvtGetNameValue(ptMsg, psName, &nError);
  if (ptValue != NULL) printf("%s: %.*s\n", psName, ptValue->nLen, ptValue->psValue);
}

/* One repetition of a loop is current at a time; its fields are addressed as Loop.Field. */
static void printBatches(InnerMessage *ptMsg) {
  const int nCount = cvtGetLoopTime(ptMsg, f_sBatches);
  for (int n = 0; n < nCount; ++n) {
    if (cvtSetLoopTime(ptMsg, f_sBatches, n) == 0) printField(ptMsg, f_sCompany);
  }
}

/* The generated message may share bytes with its source, so it is released first. */
static int printXml(InnerMessage *ptMsg) {
  static char f_sOut[1 << 20];
  int nLen = sizeof f_sOut;
  int nError = 0;
  InnerMessage *ptOut = cvtGenerateMessasge(ptMsg, f_sPain, f_sOut, &nLen, &nError);
  if (ptOut == NULL) return -1;
  printf("%d bytes of XML\n", nLen);
  return cvtFreeMessage(ptOut);
}

int main(int argc, char **argv) {
  if (argc != 3) return 2;
  int nLen = 0;
  char *psBuf = readFile(argv[2], &nLen);
  if (psBuf == NULL || cvtInit(argv[1]) != 0) return 1;
  int nError = 0;
  InnerMessage *ptMsg = cvtInitMessasge(f_sNachaFile, f_sNacha, psBuf, nLen, &nError);
  int nResult = 1;
  if (ptMsg != NULL) {
    printField(ptMsg, f_sOrigin);
    printBatches(ptMsg);
    nResult = printXml(ptMsg) == 0 ? 0 : 1;
    cvtFreeMessage(ptMsg);
  }
  cvtEnd();
  free(psBuf);
  return nResult;
}

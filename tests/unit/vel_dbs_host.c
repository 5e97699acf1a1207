/* A host in plain C: runs its arguments as statements. Those that begin with SELECT are queries, whose rows
 * it writes. It ends without a disconnect. */
#include <stdio.h>
#include <string.h>

#include "vel_dbs.h"

static int writeRows(void) {
  int nResult;
  while ((nResult = dbsFetch()) == 0) {
    const int nColumns = dbsColumnCount();
    for (int i = 0; i < nColumns; ++i) {
      int nLen = 0;
      const char *ps = dbsGetField(i, &nLen);
      if (ps == NULL) return -1;
      printf("[%.*s]", nLen, ps);
    }
    printf("\n");
  }
  return nResult == -3001 ? dbsClose() : nResult;
}

static int run(char *psSql) {
  if (strncmp(psSql, "SELECT", 6) != 0) return dbsExecute(psSql);
  if (dbsPrepare(psSql) != 0 || dbsOpen() != 0 || dbsColumnBuffer() != 0) return -1;
  return writeRows();
}

int main(int argc, char **argv) {
  for (int i = 1; i < argc; ++i) {
    if (run(argv[i]) != 0) {
      printf("%d: %s\n", dbsSqlCode(), dbsErrStr());
      return 1;
    }
  }
  return 0;
}

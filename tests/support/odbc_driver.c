/* An ODBC driver without a database, for what a real one does too seldom to be tested with. What it does
 * follows from the statement, see odbc_driver_test. It knows no attributes: setting or asking for one fails.
 */
#include <sql.h>
#include <sqlext.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define VALUE_MAX 20000

struct Object {
  struct Object *ptParent;
  char sSql[100];
  int nFetched;
  size_t nGiven; /* bytes of the value that were handed over */
  const char *psState;
};

static int f_bLost;

static SQLRETURN fail(struct Object *pt, const char *psState) {
  pt->psState = psState;
  return SQL_ERROR;
}

static int is(const struct Object *pt, const char *psSql) {
  return strcmp(pt->sSql, psSql) == 0;
}

/* An x, then characters of two bytes. */
static size_t valueOf(char *psValue) {
  size_t n = 0;
  psValue[n++] = 'x';
  while (n + 2 < VALUE_MAX) {
    psValue[n++] = (char)0xc3;
    psValue[n++] = (char)0xa9;
  }
  return n;
}

SQLRETURN SQLAllocHandle(SQLSMALLINT nType, SQLHANDLE hParent, SQLHANDLE *phOut) {
  struct Object *pt = calloc(1, sizeof *pt);
  (void)nType;
  pt->ptParent = hParent;
  *phOut = pt;
  return SQL_SUCCESS;
}

SQLRETURN SQLFreeHandle(SQLSMALLINT nType, SQLHANDLE hObject) {
  (void)nType;
  free(hObject);
  return SQL_SUCCESS;
}

SQLRETURN SQLDriverConnect(SQLHDBC hConnection, SQLHWND hWindow, SQLCHAR *psIn, SQLSMALLINT nIn,
                           SQLCHAR *psOut, SQLSMALLINT nOut, SQLSMALLINT *pnOut, SQLUSMALLINT nPrompt) {
  (void)hConnection, (void)hWindow, (void)psIn, (void)nIn, (void)psOut, (void)nOut, (void)pnOut,
      (void)nPrompt;
  f_bLost = 0;
  return SQL_SUCCESS;
}

SQLRETURN SQLDisconnect(SQLHDBC hConnection) {
  (void)hConnection;
  return SQL_SUCCESS;
}

SQLRETURN SQLSetStmtAttr(SQLHSTMT h, SQLINTEGER nAttribute, SQLPOINTER pValue, SQLINTEGER nLen) {
  (void)nAttribute, (void)pValue, (void)nLen;
  return fail(h, "HYC00");
}

SQLRETURN SQLGetConnectAttr(SQLHDBC h, SQLINTEGER nAttribute, SQLPOINTER pValue, SQLINTEGER nMax,
                            SQLINTEGER *pnLen) {
  (void)nAttribute, (void)pValue, (void)nMax, (void)pnLen;
  return fail(h, "HYC00");
}

SQLRETURN SQLPrepare(SQLHSTMT h, SQLCHAR *psSql, SQLINTEGER nLen) {
  struct Object *pt = h;
  (void)nLen;
  snprintf(pt->sSql, sizeof pt->sSql, "%s", (const char *)psSql);
  return SQL_SUCCESS;
}

SQLRETURN SQLExecute(SQLHSTMT h) {
  struct Object *pt = h;
  pt->nFetched = 0;
  if (is(pt, "lose")) f_bLost = 1;
  if (is(pt, "no reason")) return fail(pt, NULL);
  if (f_bLost || is(pt, "general error")) return fail(pt, "HY000");
  return SQL_SUCCESS;
}

SQLRETURN SQLExecDirect(SQLHSTMT h, SQLCHAR *psSql, SQLINTEGER nLen) {
  SQLPrepare(h, psSql, nLen);
  return SQLExecute(h);
}

SQLRETURN SQLTables(SQLHSTMT h, SQLCHAR *psCatalog, SQLSMALLINT nCatalog, SQLCHAR *psSchema,
                    SQLSMALLINT nSchema, SQLCHAR *psTable, SQLSMALLINT nTable, SQLCHAR *psType,
                    SQLSMALLINT nType) {
  (void)psCatalog, (void)nCatalog, (void)psSchema, (void)nSchema, (void)psTable, (void)nTable, (void)psType,
      (void)nType;
  if (f_bLost) return fail(h, "HY000");
  return SQL_SUCCESS;
}

SQLRETURN SQLMoreResults(SQLHSTMT h) {
  if (is(h, "second result fails")) return fail(h, "22012");
  return SQL_NO_DATA;
}

SQLRETURN SQLNumResultCols(SQLHSTMT h, SQLSMALLINT *pnCount) {
  (void)h;
  *pnCount = 1;
  return SQL_SUCCESS;
}

SQLRETURN SQLColAttribute(SQLHSTMT h, SQLUSMALLINT nColumn, SQLUSMALLINT nField, SQLPOINTER psText,
                          SQLSMALLINT nMax, SQLSMALLINT *pnLen, SQLLEN *pnValue) {
  (void)nColumn, (void)nField, (void)psText, (void)nMax, (void)pnLen;
  *pnValue = is(h, "binary of unknown length") ? SQL_VARBINARY : SQL_VARCHAR;
  return SQL_SUCCESS;
}

/* One row; to ask again behind the end is an error here. */
SQLRETURN SQLFetch(SQLHSTMT h) {
  struct Object *pt = h;
  pt->nGiven = 0;
  if (++pt->nFetched > 2) return fail(pt, "24000");
  return pt->nFetched == 1 ? SQL_SUCCESS : SQL_NO_DATA;
}

/* Hands the value over in pieces. No piece of text ends within a character. */
SQLRETURN SQLGetData(SQLHSTMT h, SQLUSMALLINT nColumn, SQLSMALLINT nType, SQLPOINTER pOut, SQLLEN nMax,
                     SQLLEN *pnLen) {
  struct Object *pt = h;
  static char s_sValue[VALUE_MAX];
  const size_t nLeft = valueOf(s_sValue) - pt->nGiven;
  size_t nRoom = nType == SQL_C_CHAR ? (size_t)nMax - 1 : (size_t)nMax;
  (void)nColumn;
  if (nLeft == 0) return SQL_NO_DATA;
  if (nType == SQL_C_CHAR && (pt->nGiven + nRoom) % 2 == 0 && nRoom < nLeft) --nRoom;
  if (nRoom > nLeft) nRoom = nLeft;
  memcpy(pOut, s_sValue + pt->nGiven, nRoom);
  if (nType == SQL_C_CHAR) ((char *)pOut)[nRoom] = '\0';
  pt->nGiven += nRoom;
  *pnLen = is(pt, "text") || nRoom == nLeft ? (SQLLEN)nLeft : SQL_NO_TOTAL;
  return nRoom == nLeft ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
}

SQLRETURN SQLFreeStmt(SQLHSTMT h, SQLUSMALLINT nOption) {
  (void)h, (void)nOption;
  return SQL_SUCCESS;
}

SQLRETURN SQLGetDiagRec(SQLSMALLINT nType, SQLHANDLE h, SQLSMALLINT nRecord, SQLCHAR *psState,
                        SQLINTEGER *pnCode, SQLCHAR *psText, SQLSMALLINT nMax, SQLSMALLINT *pnLen) {
  struct Object *pt = h;
  (void)nType;
  if (nRecord != 1 || pt->psState == NULL) return SQL_NO_DATA;
  snprintf((char *)psState, SQL_SQLSTATE_SIZE + 1, "%s", pt->psState);
  *pnCode = 77;
  *pnLen = (SQLSMALLINT)snprintf((char *)psText, (size_t)nMax, "two\n\tlines");
  return SQL_SUCCESS;
}

/* The driver manager wants both. */
SQLRETURN SQLGetDiagField(SQLSMALLINT nType, SQLHANDLE h, SQLSMALLINT nRecord, SQLSMALLINT nField,
                          SQLPOINTER pOut, SQLSMALLINT nMax, SQLSMALLINT *pnLen) {
  (void)nType, (void)h, (void)nRecord, (void)nField, (void)pOut, (void)nMax, (void)pnLen;
  return SQL_NO_DATA;
}

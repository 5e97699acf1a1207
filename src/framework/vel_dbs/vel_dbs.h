/* vel_dbs.h: the framework's database access: one connection, one current query.
 *
 * A look-up:     dbsPrepare, dbsOpen, dbsColumnBuffer, dbsFetch, dbsColumnCount, dbsGetField, dbsClose
 * A change:      dbsExecute
 *
 * Return codes: 0 for success, -1 for failure unless told otherwise; dbsSqlCode and dbsErrStr then say why. A
 * statement that failed is never run a second time by the library. Each statement is a transaction of its own
 * unless the statements themselves begin one.
 *
 * Statements are text with a zero byte behind it: exactly one statement, a ";" at its end or not, in the
 * encoding of the database, without parameter markers. They are borrowed for the call.
 *
 * One thread at a time: connection, query and last error are the process's. */
#ifndef VEL_DBS_H
#define VEL_DBS_H

#ifdef __cplusplus
extern "C" {
#endif

/* Connects; a connection at hand is closed first.
 *   psUrl  "sqlite:FILE", "sqlite::memory:", "odbc:DSN=..." or "odbc:DRIVER=...;..."; borrowed for the call
 * Returns 0 or -1. The URL is kept also after a failure: a statement without a connection connects to it, so
 * a server that is down now may come up later. Without this call the first statement connects to the URL in
 * the environment variable VEL_DBS_URL. */
int dbsConnect(char *psUrl);

/* Closes the connection and forgets its URL. Returns 0, also without a connection. A process may end without
 * this call. */
int dbsDisconnect(void);

/* Runs a statement; rows that it returns are dropped. The current query is left alone.
 * Returns 0 (also when no row was changed) or -1. */
int dbsExecute(char *psSql);

/* Makes a statement the current query, in place of the former one, whose cursor is closed. Statements that
 * were prepared lately are kept prepared. Returns 0 or -1; after -1 there is no current query. */
int dbsPrepare(char *psSql);

/* Runs the current query and opens its cursor, before the first row.
 * Returns 0; -1 without a query, when its cursor is open, or on failure. A query that fails here or in
 * dbsFetch is closed and no longer the current one. */
int dbsOpen(void);

/* Provides for the columns of the open query.
 * Returns 0; -1 without an open cursor, or when the statement has no columns, which is when it was no query.
 */
int dbsColumnBuffer(void);

/* Fetches the next row. Returns 0: a row is there; -3001: no row is left (not a failure, the last error
 * stays); -1: failure. */
int dbsFetch(void);

/* Number of columns of the open query; -1 without an open cursor. */
int dbsColumnCount(void);

/* A column of the fetched row.
 *   nColumn  position from 0
 *   pnLen    out: length in bytes; 0 for NULL and on failure
 * Returns the bytes, as the database writes the value in text (numeric(10,2): "10.50"), binary columns as
 * they are; any byte may stand in them, and no zero byte needs to stand behind. They are the library's and
 * are valid until the next call of dbsFetch, dbsClose, dbsPrepare, dbsGetField, dbsConnect or dbsDisconnect.
 * NULL has length 0 and a pointer that is not null. Returns null on failure: no fetched row, no such column,
 * pnLen null. */
char *dbsGetField(int nColumn, int *pnLen);

/* Closes the cursor; the query stays prepared and may be opened again. Returns 0, also without a cursor. */
int dbsClose(void);

/* The database's own code of the last failed call: SQLite's extended result code, the ODBC driver's native
 * error; -1 when the library itself refused; 0 before the first failure. */
int dbsSqlCode(void);

/* The text of the last failed call, one line; with ODBC it begins with the SQLSTATE in brackets. Never null,
 * empty before the first failure; the library's, valid until the next failing call. */
char *dbsErrStr(void);

#ifdef __cplusplus
}
#endif

#endif

/* cvt_string.h: string lists, the interning dictionary, and small string tools. */
#ifndef CVT_STRING_H
#define CVT_STRING_H

#include "cvt_memory.h"

CVT_C_BEGIN

/* One (name, record) pair. A list is a pointer to its first element; the empty list is null. Elements live in
 * the memory pool and are never freed singly. */
typedef struct CVT_RECORD StringList {
  char *psString; /* the key */
  void *ptInfo;   /* the value, borrowed */
  struct StringList *ptNext;
} StringList;

/* One chunk of the interning dictionary; free slots come after the used ones. */
typedef struct CVT_RECORD Dictionary {
  char *psBuf[100];
  struct Dictionary *ptNext;
} Dictionary;

extern Dictionary *gptDict; /* first chunk; null before first use and after cvtEndDict */

/* --- String lists ---------------------------------------------------------------------------------------
 * The functions that return a list return its new first element, or null when an argument is null (logged):
 * a caller that stores the result back loses its list then. */

/* Prepends; element and interned key come from the global node. Look-up finds the newest entry of a key. */
StringList *cvtStrAddStringList(StringList *ptStringList, char *psString, void *ptInfo);

/* Prepends; element and a copy of the key come from ptMemNode. psString must not be null. */
StringList *cvtStrAddStringListMem(StringList *ptStringList, char *psString, void *ptInfo, MemPort ptMemNode);

/* Appends; the element comes from the global node, its key is a heap copy that is never freed. */
StringList *cvtStrAddStringListOrder(StringList *ptRoot, char *psAddName, void *ptAddInfo);

/* Appends; the element comes from ptMemNode, its key is a heap copy that is never freed.
 * psAddName must not be null. */
StringList *cvtStrAddStringListOrderMem(StringList *ptRoot, char *psAddName, void *ptAddInfo,
                                        MemPort ptMemNode);

/* ptInfo of the first element whose key equals psString (exact); null when there is none. */
void *cvtStrFindStringList(StringList *ptStringList, char *psString);

/* Iterator step: returns (*pptIter)->ptInfo and moves *pptIter to the next element. A null pptIter gives
 * null; *pptIter itself must not be null. */
void *cvtStrListNext(StringList **pptIter);

/* Logs "[%s] - [%s]" (key, psString) at level 5 for every element. Returns 0. */
int cvtStrLogStringList(StringList *ptStringList, char *psString);

/* Appends the whole list ptDst behind ptSrc; elements are shared. Returns 0, -1 on a null list (logged). */
int cvtStrListAddList(StringList *ptSrc, StringList *ptDst);

/* Fills the element ptAdd (key by pointer) and prepends it. */
StringList *locStrListAdd(StringList *ptRoot, StringList *ptAdd, char *psString, void *ptInfo);

/* Fills the element ptAdd (key as a heap copy) and appends it. */
StringList *locStrListAddOrder(StringList *ptRoot, StringList *ptAdd, char *psAddName, void *ptAddInfo);

/* --- Dictionary ------------------------------------------------------------------------------------------ */

/* Starts a new dictionary; an earlier one is forgotten. Returns 0. */
int cvtInitDict(void);

/* Forgets the dictionary; its memory goes with the global node. Returns 0. */
int cvtEndDict(void);

/* The interned copy of psStr: equal strings give the same pointer while the dictionary lives. Never write or
 * free it. Null (logged) for a null string. */
char *cvtStrDup(char *psStr);

/* A copy of psStr in ptMemNode, not interned. psStr must not be null; a null node gives null (logged). */
char *cvtStrDupMem(char *psStr, MemPort ptMemNode);

/* --- Conversion and parsing (nothing here logs) ---------------------------------------------------------- */

/* Decodes base64 (RFC 4648 alphabet) of nInBufLen bytes. Line ends are skipped between groups of four only; a
 * group that nInBufLen cuts is read whole, so sInBuf must be readable up to its end.
 *   pnOutBufLen  in: capacity of sOutBuf in bytes, one at least; out: decoded length
 * Returns 0, or -1: with nothing touched when the capacity is below (nInBufLen / 4) * 3, with the groups before it
 * when a cut group does not fit. The output is not zero-terminated; characters outside the alphabet are not
 * reported. */
int cvtStrDecodeBase64(char *sInBuf, int nInBufLen, char *sOutBuf, int *pnOutBufLen);

/* Converts nInLen bytes between character sets by one iconv call.
 *   pnOutLen  in: capacity of psOutBuf in bytes; out: produced length
 * Returns 0, or -1 on a null argument, an unknown character set, invalid or cut input, or too small a
 * capacity; *pnOutLen is then unchanged. No terminator is added. */
int cvtStrCodeConvert(char *psFromCharset, char *psToCharset, char *psInBuf, int nInLen, char *psOutBuf,
                      int *pnOutLen);

/* cvtStrCodeConvert from UTF-8 to GB18030, and back. */
int cvtStrU2G(char *psInBuf, int nInLen, char *psOutBuf, int *pnOutLen);
int cvtStrG2U(char *psInBuf, int nInLen, char *psOutBuf, int *pnOutLen);

/* Upper-cases the ASCII letters among the first nLen bytes, in place. Returns 0. */
int cvtStrToUp(char *psBuf, int nLen);

/* atoi of the first nLen bytes; 0 for a null buffer or nLen 0. psBuf must be writable and one byte longer
 * than nLen: that byte is zero during the call. */
int cvtStrAntoi(char *psBuf, int nLen);

/* Splits psLine in place at any character of psSplitChar into at most nNum fields; the last one keeps the
 * rest. Entries of ppsStr that are left over point to a shared empty string. ppsStr has room for
 * max(nNum, 1) entries. Returns the number of fields, -1 on a null argument. */
int cvtStrNSplit(char **ppsStr, char *psLine, char *psSplitChar, int nNum);

/* Writes the local time as 14 digits, YYYYMMDDHHMMSS, and a terminator: 15 bytes. */
void cvtGetCurrentDateTime(char *psCurrentTime);

CVT_C_END

#endif

/* cvt.h: the message API, start-up and shutdown, and the plug-in section.
 *
 *   cvtInit(configuration) ... cvtParseMessasge / cvtInitMessasge -> handle
 *                              cvtGetNameValue, cvtSetNameValue, loops
 *                              cvtGenerateMessasge(handle, target format) -> second handle, bytes
 *                              cvtFreeMessage(each handle)
 *   cvtEnd()
 *
 * Every failure is logged through logInfo where it is detected. One thread at a time.
 */
#ifndef CVT_H
#define CVT_H

#include <time.h>

#include "cvt_identify.h"

CVT_C_BEGIN

/* --- Start-up, reload, shutdown ---------------------------------------------------------------------------- */

/* The root record. The section fields hold what the section initialisers returned. */
typedef struct CVT_RECORD AllInfo {
  char *psBasePath;
  int nReload; /* 1: automatic reload when the root file changes */
  int nDebug;  /* trace dumps when a message is freed */
  void *ptPlug;
  void *ptMessage;
  void *ptConvert;
  void *ptId;
} AllInfo;

extern AllInfo *gptAllInfo;   /* null before a successful start */
extern char *gpsRootPath;     /* the configuration root */
extern char *gpsRootFile;     /* full name of the root file that was loaded */
extern time_t gtLastLoadTime; /* its modification time then, in seconds */

/* Starts or restarts the library.
 *   psPath  the configuration root, a directory whose "All" directory holds one .xml file, or the full name
 *           of a root file that ends in ".xml" and has at least two "/"; copied
 * Returns 0, or -1 (logged); a root directory without a root file starts empty with 0. */
int cvtInit(char *psPath);

/* Releases everything; a later cvtInit starts afresh. No handle may be alive. Returns 0. */
int cvtEnd(void);

/* Reads the configuration again when nReload is 1 and the root file is newer than what was loaded.
 * Returns 0 when done or nothing to do, -1 (logged) when not started or the load failed. */
int cvtInitReload(void);

/* nDebug of the root record; 0 (logged) before a start. */
int cvtIsDebug(void);

/* psBasePath of the root record, borrowed until the next reload; "" when there is none. */
char *cvtGetBasePath(void);

/* --- Plug-in section ------------------------------------------------------------------------------------------ */

/* One format plug-in. */
typedef struct CVT_RECORD Plug {
  char *psName;
  char *psPath;     /* shared object; null: base path + "libcvt_plug_" + name + ".so" */
  char *psFunction; /* initialiser; null: name + "Init" */
  void *ptInfo;     /* the dynamic loader's handle */
  struct Plug *ptNext;
} Plug;

typedef struct CVT_RECORD PlugInfo {
  char *psBasePlugPath; /* prefix of plug-in files, joined without a separator */
  Plug *ptPlugs;
} PlugInfo;

extern PlugInfo *gptPlugInfo;
extern char *gpsBasePlugPath;

/* A plug-in's initialiser: gets its own "Plug" element and registers what it provides. 0 = success. */
typedef int (*FncInit)(void *ptXmlNode);

/* Initialiser and end of the "Plug" section. cvtPlugInit returns the PlugInfo record, or null (logged).
 * cvtPlugEnd closes every plug-in, first to last, and returns 0. */
void *cvtPlugInit(void *ptXmlNode, char *psType);
int cvtPlugEnd(void);

/* --- Messages --------------------------------------------------------------------------------------------------- */

extern int gnMsgNum; /* live handles; a reload waits until there is none */

/* Parses a buffer of a known message type.
 *   psBuf, nBufLen  the input, in bytes; borrowed, must outlive the handle
 *   pnError         out: 0; -1 reload or creation failed; else the pipeline's code
 * Returns the handle, released with cvtFreeMessage, or null (logged). */
InnerMessage *cvtInitMessasge(char *psMessageName, char *psFormatId, char *psBuf, int nBufLen, int *pnError);

/* Parses a buffer whose type the format's pipeline finds itself. As cvtInitMessasge, and -8 with a handle
 * when the buffer was not consumed exactly: the message is usable and the caller must release it. */
InnerMessage *cvtParseMessasge(char *psFormatId, char *psBuf, int nBufLen, int *pnError);

/* Generates a message into psBuf in the target format.
 *   pnBufLen  in: capacity of psBuf in bytes; out, on success: produced length
 *   pnError   out: 0; -1 creation failed; else the pipeline's code; untouched on a null ptSrcMsg
 * Returns the handle of the generated message, which may share bytes with ptSrcMsg and must be released
 * first, or null (logged). */
InnerMessage *cvtGenerateMessasge(InnerMessage *ptSrcMsg, char *psCvtFormatId, char *psBuf, int *pnBufLen,
                                  int *pnError);

/* The value of a field: a name, or "Loop.Field" for the current repetition of Loop.
 *   pnError  out: 0, or -1, -11, -13, -14 (loop name over 1024 bytes)
 * Returns the slot, valid until the handle is released, or null (logged). */
Value *cvtGetNameValue(InnerMessage *ptMsg, char *psValueName, int *pnError);

/* Sets a field to a copy of nLen bytes. Returns 0, or a code as above (logged). */
int cvtSetNameValue(InnerMessage *ptMessage, char *psValueName, char *psValue, int nLen);

/* An empty message of a type.
 *   pnError  out, on failure: -5 no handle, -6 unknown type, -7 no value list; not written on success
 * Returns the handle or null (logged). */
InnerMessage *cvtNewMessage(char *psMsgId, char *psFormatId, int *pnError);

/* Generates a message into a buffer by the generate chain of the format id "02".
 *   pnOutBufLen  in: capacity in bytes; out, on success: produced length
 * Returns 0, -1 on a null argument, or the pipeline's code (logged). */
int cvtGenMessage(InnerMessage *ptMessage, char *psOutBuf, int *pnOutBufLen);

/* Releases a handle with all its values. Null is accepted (logged). Returns 0, -1 (logged). */
int cvtFreeMessage(InnerMessage *ptMessage);

/* Does nothing and returns 0, on purpose: kept for callers that link against it. */
int cvtConvertMessage(char *psMessageId, char *psInFromatId, char *psInBuf, int nInBufLen,
                      char *psOutFormatId, char *psOutBuf, int *pnOutBufLen);

/* --- Repetitions ------------------------------------------------------------------------------------------------
 * psLoopName is "Loop", or "Outer.Inner" for a loop inside the current repetition of another. The current
 * repetition is kept in the definition, so it is shared by all messages of a type. */

/* Makes repetition nLoopTime (0 .. count, count being one past the last) current. Returns 0; -1 null
 * argument; -11, -13 unknown loop; -14 name too long; -15 out of range. */
int cvtSetLoopTime(InnerMessage *ptMsg, char *psLoopName, int nLoopTime);

/* Number of repetitions, or -14 on any failure. The arguments must not be null. */
int cvtGetLoopTime(InnerMessage *ptMsg, char *psLoopName);

/* Appends a repetition and makes it current; a full loop stays as it is and still gives 0. Returns 0; -1; -3
 * unknown loop; -11; -13; -14. */
int cvtAddLoopTime(InnerMessage *ptMsg, char *psLoopName);

STT_BOUND(AllInfo, char *psBasePath, int nReload, int nDebug, void *ptPlug, void *ptMessage, void *ptConvert,
          void *ptId);
STT_BOUND_MODULE(cvt_init);
STT_BOUND(Plug, char *psName, char *psPath, char *psFunction, void *ptInfo, Plug *ptNext);
STT_BOUND(PlugInfo, char *psBasePlugPath, Plug *ptPlugs);
STT_BOUND_MODULE(cvt_plug);

CVT_C_END

#endif

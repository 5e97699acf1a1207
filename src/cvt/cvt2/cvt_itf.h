/* cvt_itf.h: the library as a module of the framework's plug-in manager: the table of its functions, which
 * other modules obtain from the manager.
 *
 *   the manager   cvtPlugLoad(record), then event 1: the table is filled and registered
 *   a module      looks up kind "CVT_INTERFACE", name "cvt2": a cvtInterface *
 *                 FncCvtInit(configuration) ... FncCvtEnd()
 *
 * No event starts or ends the library: that is done through the table, by one of the modules that use it. */
#ifndef CVT_ITF_H
#define CVT_ITF_H

#include "cvt.h"

CVT_C_BEGIN

typedef InnerMessage *InMessagePtr;
typedef Value *ValuePtr;

/* Each slot is the function of the same name, as cvt.h tells it. The order of the slots is the interface. */
typedef struct cvtInterface {
  int (*FncCvtInit)(char *psPath);
  int (*FncCvtEnd)(void); /* NOLINT: C */
  InMessagePtr (*FncCvtInitMessasge)(char *psMessageName, char *psFormatId, char *psBuf, int nBufLen,
                                     int *pnError);
  InMessagePtr (*FncCvtGenerateMessasge)(InMessagePtr ptSrcMsg, char *psCvtFormatId, char *psBuf,
                                         int *pnBufLen, int *pnError);
  InMessagePtr (*FncCvtParseMessasge)(char *psFormatId, char *psBuf, int nBufLen, int *pnError);
  ValuePtr (*FncCvtGetNameValue)(InMessagePtr ptMsg, char *psValueName, int *pnError);
  int (*FncCvtSetNameValue)(InMessagePtr ptMessage, char *psValueName, char *psValue, int nLen);
  InMessagePtr (*FncCvtNewMessage)(char *psMsgId, char *psFormatId, int *pnError);
  int (*FncCvtGenMessage)(InMessagePtr ptMessage, char *psOutBuf, int *pnOutBufLen);
  int (*FncCvtFreeMessage)(InMessagePtr ptMessage);
  int (*FncCvtSetLoopTime)(InMessagePtr ptMsg, char *psLoopName, int nLoopTime);
  int (*FncCvtGetLoopTime)(InMessagePtr ptMsg, char *psLoopName);
  int (*FncCvtAddLoopTime)(InMessagePtr ptMsg, char *psLoopName);
} cvtInterface;

struct T_PLUG_MGR_PLUG_VAR;

/* The plug-in manager's way in: sets the record's event handler.
 *   ptPlugVar  the manager's record (plug_mgr.h), which must outlive the library; must not be null
 * Returns 0. The handler answers every event with 0: event 1 fills the table and registers it, each time
 * anew; the others do nothing. */
int cvtPlugLoad(struct T_PLUG_MGR_PLUG_VAR *ptPlugVar);

CVT_C_END

#endif

/* module.c: a module that turns a NACHA file into a payment document through the library's table, which it
 * gets from the plug-in manager. It does not link the library. */
#include <stddef.h>

#include "cvt_itf.h"
#include "payment.h"
#include "plug_mgr.h"

/* The table takes names as char *, and does not write to them. */
static char f_sNacha[] = "nacha";
static char f_sPain[] = "pain";
static char f_sNachaFile[] = "NachaFile";

static const cvtInterface *f_ptCvt = NULL; /* null until the library is started */

/* By now every module is loaded, in whatever order. The library is started by one of those who use it. */
static int start(char *psConfiguration) {
  const cvtInterface *ptCvt = plugGetPlug("CVT_INTERFACE", "cvt2");
  if (ptCvt == NULL || ptCvt->FncCvtInit(psConfiguration) != 0) return -1;
  f_ptCvt = ptCvt;
  return 0;
}

/* The generated message may share bytes with its source, so it is released first. */
static int convert(const PaymentIn *ptIn, PaymentOut *ptOut) {
  int nError = 0;
  InMessagePtr ptMsg = f_ptCvt->FncCvtInitMessasge(f_sNachaFile, f_sNacha, ptIn->psBuf, ptIn->nLen, &nError);
  if (ptMsg == NULL) return -1;
  InMessagePtr ptDocument =
      f_ptCvt->FncCvtGenerateMessasge(ptMsg, f_sPain, ptOut->psBuf, &ptOut->nLen, &nError);
  if (ptDocument != NULL) f_ptCvt->FncCvtFreeMessage(ptDocument);
  f_ptCvt->FncCvtFreeMessage(ptMsg);
  return ptDocument == NULL ? -1 : 0;
}

static int onRun(const PaymentIn *ptIn, PaymentOut *ptOut) {
  if (f_ptCvt == NULL && start(ptIn->psConfiguration) != 0) return -1;
  return convert(ptIn, ptOut);
}

static int onExit(void) {
  if (f_ptCvt != NULL) f_ptCvt->FncCvtEnd();
  f_ptCvt = NULL;
  return 0;
}

static int handle(int iPlugId, int iEventId, void *pInData, void *pOutData) {
  (void)iPlugId;
  switch (iEventId) {
    case EVENT_MGR_ON_RUN:
      return onRun(pInData, pOutData);
    case EVENT_MGR_EXIT:
      return onExit();
    default:
      return 0;
  }
}

int cvtPlugLoad(T_PLUG_MGR_PLUG_VAR *ptPlugVar) {
  ptPlugVar->pfnEventHdl = handle;
  return 0;
}

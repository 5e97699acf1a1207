// cvt_interface.cpp: the library as a module of the framework's plug-in manager.
#include "cvt_itf.h"
#include "plug_mgr.h"

namespace {

// The framework's events, by number: its headers need not name them.
constexpr int kInit = 1;
constexpr int kOnRun = 2;
constexpr int kExit = 4;

// What the manager handed over; no handler needs it yet.
T_PLUG_MGR_PLUG_VAR *f_ptPlugVar = nullptr;
T_RTCORE_CONTEXT *f_ptRTCoreCtx = nullptr;

cvtInterface gtCvtInterface;

// The manager takes its names as char *.
char f_sKind[] = "CVT_INTERFACE";
char f_sName[] = "cvt2";

int onInit() {
  gtCvtInterface.FncCvtInit = cvtInit;
  gtCvtInterface.FncCvtEnd = cvtEnd;
  gtCvtInterface.FncCvtInitMessasge = cvtInitMessasge;
  gtCvtInterface.FncCvtGenerateMessasge = cvtGenerateMessasge;
  gtCvtInterface.FncCvtParseMessasge = cvtParseMessasge;
  gtCvtInterface.FncCvtGetNameValue = cvtGetNameValue;
  gtCvtInterface.FncCvtSetNameValue = cvtSetNameValue;
  gtCvtInterface.FncCvtNewMessage = cvtNewMessage;
  gtCvtInterface.FncCvtGenMessage = cvtGenMessage;
  gtCvtInterface.FncCvtFreeMessage = cvtFreeMessage;
  gtCvtInterface.FncCvtSetLoopTime = cvtSetLoopTime;
  gtCvtInterface.FncCvtGetLoopTime = cvtGetLoopTime;
  gtCvtInterface.FncCvtAddLoopTime = cvtAddLoopTime;
  plugAddPlug(1, f_sKind, f_sName, &gtCvtInterface);
  return 0;
}

// Whoever uses the table starts and ends the library, so there is nothing to do here.
int onRun() {
  return 0;
}
int onExit() {
  return 0;
}
int onOther() {
  return 0;
}

int dispatch(int, int iEventId, void *, void *) {
  switch (iEventId) {
    case kInit:
      return onInit();
    case kOnRun:
      return onRun();
    case kExit:
      return onExit();
    default:
      return onOther();
  }
}

}  // namespace

int cvtPlugLoad(T_PLUG_MGR_PLUG_VAR *ptPlugVar) {
  ptPlugVar->pfnEventHdl = dispatch;
  f_ptPlugVar = ptPlugVar;
  f_ptRTCoreCtx = ptPlugVar->ptRTCoreCtx;
  return 0;
}

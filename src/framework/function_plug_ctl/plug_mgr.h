/* plug_mgr.h: the framework's plug-in manager: modules, which are shared objects, and the interfaces that
 * they offer to each other.
 *
 *   a host     plugLoad(each module's file), plugEvent(id, EVENT_MGR_ON_RUN, ...), plugEvent(id,
 *              EVENT_MGR_EXIT, ...), plugUnload(id) in the opposite order
 *   a module   exports cvtPlugLoad; its handler registers interfaces (plugAddPlug) at EVENT_MGR_INIT
 *              and looks others up (plugGetPlug) from EVENT_MGR_ON_RUN on
 *
 * Every failure is logged through logInfo, module tag "$plug_ctl". Texts are borrowed for the call. One
 * thread at a time. */
#ifndef PLUG_MGR_H
#define PLUG_MGR_H

#include "core_ctx.h"
#include "event_mgr.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The manager's record of one module: the manager's, valid until the module is unloaded. */
typedef struct T_PLUG_MGR_PLUG_VAR {
  int iPlugId;                    /* the module's id */
  PFN_EVENT_MGR_EHDL pfnEventHdl; /* set by the module in cvtPlugLoad: its event handler */
  T_RTCORE_CONTEXT *ptRTCoreCtx;  /* what the host gave to plugLoad */
} T_PLUG_MGR_PLUG_VAR;

/* The function that a module defines: sets pfnEventHdl. Returns 0; anything else refuses the load. */
#ifdef __GNUC__
__attribute__((visibility("default")))
#endif
int cvtPlugLoad(T_PLUG_MGR_PLUG_VAR *ptPlugVar);

/* Loads a module: opens the file, calls its cvtPlugLoad, delivers EVENT_MGR_INIT.
 *   psFile       path of the shared object; without a "/" the loader's search path applies
 *   ptRTCoreCtx  the host's context, handed on; may be null; must outlive the module
 * Returns the module's id, 1 or higher and never used again; -1: nothing is left of it. A module that is
 * loaded is not loaded a second time. */
int plugLoad(const char *psFile, T_RTCORE_CONTEXT *ptRTCoreCtx);

/* Delivers an event to a module. iEventId, pInData and pOutData go to the handler as they are.
 * Returns the handler's result; -1 also for an unknown id, a module without a handler, an exception. */
int plugEvent(int iPlugId, int iEventId, void *pInData, void *pOutData);

/* Withdraws the module's interfaces and closes it. No event is delivered: EVENT_MGR_EXIT is the host's to
 * send. Tables that others looked up end here. Returns 0; -1 for an unknown id, and while the module's own
 * cvtPlugLoad or handler runs. */
int plugUnload(int iPlugId);

/* Registers an interface.
 *   iSelect         kept for the framework's sake; this manager gives it no meaning
 *   psKind, psName  what it is looked up by, case-sensitive; copied
 *   pTable          the table of functions, of the module's own layout; borrowed, must stay valid until the
 *                   module is unloaded
 * Among several of one kind and name the newest is found. The interface belongs to the loaded module whose
 * object holds the table; a table elsewhere (heap) to the module whose cvtPlugLoad or handler runs; otherwise
 * to the host, for good. A module that registers a kind and name again replaces its former one.
 * Returns 0, -1 on a null argument. */
int plugAddPlug(int iSelect, const char *psKind, const char *psName, void *pTable);

/* The newest interface of that kind and name: its table, valid until the module that it belongs to is
 * unloaded; null when there is none. */
void *plugGetPlug(const char *psKind, const char *psName);

#ifdef __cplusplus
}
#endif

#endif

/* event_mgr.h: the events that a plug-in manager delivers to a module. */
#ifndef EVENT_MGR_H
#define EVENT_MGR_H

#ifdef __cplusplus
extern "C" {
#endif

#define EVENT_MGR_INIT 1   /* register what you offer */
#define EVENT_MGR_ON_RUN 2 /* everything is loaded: work may begin */
#define EVENT_MGR_EXIT 4   /* work is over: give back what you took */

/* A module's event handler.
 *   iPlugId   the module's id, as plugLoad returned it
 *   iEventId  one of the numbers above; hosts and modules may agree on others, so 0 is the answer to one that
 *             means nothing to the module
 *   pInData, pOutData  what the host hands in and wants filled, by agreement of the two; null with the
 *             manager's own EVENT_MGR_INIT; the host's, borrowed for the call
 * Returns 0; anything else is a failure. */
typedef int (*PFN_EVENT_MGR_EHDL)(int iPlugId, int iEventId, void *pInData, void *pOutData);

#ifdef __cplusplus
}
#endif

#endif

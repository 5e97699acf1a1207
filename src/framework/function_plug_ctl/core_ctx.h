/* core_ctx.h: the run-time context of a hosting process.
 *
 * The host defines the record with what it wants its modules to see, or does without; the plug-in manager
 * hands the pointer on and looks at nothing behind it. */
#ifndef CORE_CTX_H
#define CORE_CTX_H

typedef struct T_RTCORE_CONTEXT T_RTCORE_CONTEXT;

#endif

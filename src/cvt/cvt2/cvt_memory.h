/* cvt_memory.h: the memory pool.
 *
 *   gptMemRoot ── MemNode 1 ── MemNode 2 ── ...     one node per live message handle, reused lowest first
 *                    │
 *                    └─ MemBlock ─ MemBlock ─ ...   [ handed out ......|  nLeft  ]
 *                       ptNowBlock: the block allocated from; the ones behind it keep stale counters
 *
 *   gptGlobalNode ── ptHeadBlock: blocks with room, by nLeft ascending       (best fit)
 *                 └─ ptNowBlock:  exhausted blocks, by capacity ascending    (until cvtMemReset)
 *
 * Nothing is freed singly. A message's memory goes with its node (cvtMemDelNode), the configuration's with
 * cvtMemReset. Memory is handed out zero-filled and byte-packed: sizes are not rounded, results not aligned.
 * One thread at a time.
 */
#ifndef CVT_MEMORY_H
#define CVT_MEMORY_H

#include "cvt_def.h"

CVT_C_BEGIN

/* One chunk of raw memory. */
typedef struct MemBlock {
  int nMaxSize;            /* capacity of psBuf in bytes */
  int nLeft;               /* bytes not yet handed out: the next allocation starts at nMaxSize - nLeft */
  char *psBuf;             /* the memory, from the heap */
  struct MemBlock *ptNext; /* next block of the same chain */
} MemBlock;

/* One region. */
typedef struct MemNode {
  int nId;               /* 0: the global node; 1, 2, 3 ...: message nodes in order of creation */
  char cUsed;            /* '1' while a message owns the node, '0' while it is free */
  MemBlock *ptHeadBlock; /* first block; global node: the blocks with room */
  MemBlock *ptNowBlock;  /* block allocated from; global node: the exhausted blocks */
  struct MemNode *ptNext;
} MemNode;

typedef MemNode *MemPort;

/* The registry of message nodes. */
typedef struct MemRoot {
  MemNode *ptMemNodeList; /* first message node, id 1; ids increase along the list */
  int nMinFreeNodeId;     /* id of the cached free node, -1: none */
  MemNode *ptFreeNode;    /* the cached free node */
  MemNode *ptLastNode;
} MemRoot;

extern MemRoot *gptMemRoot;    /* made on first use; keeps its value after cvtMemCleanUp */
extern MemNode *gptGlobalNode; /* made by the first cvtMemMalloc; keeps its value after cvtMemCleanUp */

/* nNum zeroed bytes from a message node, never from gptGlobalNode, whose blocks stand in another order (cvtMemMalloc).
 * Valid until the node is given back.
 * Returns null when ptNode is null (logged) or nNum is 0 or below. */
void *cvtMalloc(int nNum, MemNode *ptNode);

/* nNum zeroed bytes from the global node. Valid until cvtMemReset or cvtMemCleanUp.
 * Returns null when nNum is 0 or below. */
void *cvtMemMalloc(int nNum);

/* Makes all memory of the global node free again; no block goes back to the heap. Returns 0. */
int cvtMemReset(void);

/* Hands out a free message node, the cached one or else a new one. The caller gives it back with
 * cvtMemDelNode. Never null. */
MemNode *cvtMemNewNode(void);

/* Gives a message node back: all its memory becomes free, its blocks are kept for the next message.
 * Returns 0, or -1 when ptNode is null (logged). */
int cvtMemDelNode(MemNode *ptNode);

/* Returns every node and block to the heap, except blocks parked on the global node's exhausted list, which
 * the next global node takes. The globals keep their values; the next pool call starts afresh. Returns 0. */
int cvtMemCleanUp(void);

/* Logs "Node[%d]:[%d] -- Used[%d]" at level 5: id, capacity and used bytes. ptNode must not be null.
 * Returns 0. */
int cvtMemPrintNode(MemNode *ptNode);

CVT_C_END

#endif

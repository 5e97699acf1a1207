/* cvt_message.h: message definitions, their registry, value lists, and the loop structure.
 *
 *   Msg ── ptHead: tree of Message nodes (child, other, next)
 *      └── pptMessageIdx: the same nodes in visiting order, null-terminated; a node's position there is the
 *          position of its value in a message's ValueList
 *
 *   ValueList of a message:  [ value | value | loop | value ]
 *                                              │ nLen -1
 *                             loop list: [ repetition 0 | repetition 1 | ... ]
 *                                              │
 *                             ValueList of one repetition, addressed by the loop body's own index
 */
#ifndef CVT_MESSAGE_H
#define CVT_MESSAGE_H

#include "cvt_memory.h"
#include "cvt_string.h"
#include "stt.h"

CVT_C_BEGIN

/* --- Values ------------------------------------------------------------------------------------------------ */

/* One field value. Null with length 0 is an ordinary empty value. */
typedef struct CVT_RECORD Value {
  char *psValue; /* bytes, not necessarily terminated; or the loop list; or one repetition's list */
  int nLen;      /* bytes; 0: empty, or a loop not yet started; -1: psValue is a loop list, not a size */
  char caGap[4];
} Value;

/* The values of one message, of one repetition, or (a loop list) the repetitions of one loop. */
typedef struct CVT_RECORD ValueList {
  int nNow;                 /* slots in use: every bound test is made against it */
  int nMax;                 /* capacity of ptValue */
  Value *ptValue;           /* the slots */
  struct ValueList *ptNext; /* free list, or the chain of all lists of one message */
} ValueList;

typedef ValueList *ValueListPort;

/* A message's values, as handed to the format functions. */
typedef struct CVT_RECORD ValueListInfo {
  ValueListPort ptValueList; /* head of the message's chain */
  MemPort ptMemNode;         /* value bytes are allocated from it */
  int nIndexOffset;          /* added to a node position by cvtLoopGetLoopNumValue */
  char caGap[4];
} ValueListInfo;

extern ValueList *gptFreeValue; /* free ordinary lists */
extern ValueList *gptLoopValue; /* free loop lists */
extern int gnMaxValueNum;       /* capacity of new ordinary lists; only grows */

/* --- Definitions --------------------------------------------------------------------------------------------- */

struct Message;
struct Msg;

/* Parses nLen bytes of psBuf, from *pnNowLen on, into the message's values and advances *pnNowLen.
 * ptInfo is the handle's free pointer. 0 = success. */
typedef int (*FncParse)(void *ptInfo, ValueListInfo *ptValueListInfo, struct Msg *ptMsg, char *psBuf,
                        int *pnNowLen, int nLen);

/* Writes the message into psBuf (capacity nLen bytes), from *pnNowLen on, and advances *pnNowLen. One that moves it out
 * of 0 .. nLen has failed, whatever it answers. ptInfo is null. 0 = success. */
typedef int (*FncGenerate)(void *ptInfo, ValueListInfo *ptValueListInfo, struct Msg *ptMsg, char *psBuf,
                           int *pnNowLen, int nLen);

/* The value of a named field, or null with *pnError set. */
typedef Value *(*FncGetNameValue)(struct Msg *ptMsg, ValueListInfo *ptValueListInfo, char *psName,
                                  int *pnError);

/* Sets a named field to a copy of nLen bytes. 0 = success. */
typedef int (*FncSetNameValue)(struct Msg *ptMsg, ValueListInfo *ptValueListInfo, char *psName, char *psValue,
                               int nLen);

/* Prepares a definition that has been read and indexed: fills fGen, fParse, fGetValue and fSetValue.
 * 0 = success. */
typedef int (*FncFotmatInit)(struct Msg *ptMsg);

typedef struct CVT_RECORD FormatAttr {
  char *psFormatName;
  void *pInfo; /* a record of the format plug-in */
} FormatAttr;

/* Structural kinds (StructAttr.nType). Any other value is an ordinary field or group. */
#define CVT_STRUCT_LOOP 1    /* repeating group: pInfo is a LoopType with an index of its own */
#define CVT_STRUCT_COUNTED 5 /* counted node: pInfo is a LoopType, used for its count field only */

typedef struct CVT_RECORD StructAttr {
  int nType;
  char caGap[4];
  void *pInfo;                 /* LoopType for the two kinds above, else of the format plug-in */
  struct Message *ptOtherNode; /* second subtree, numbered after the children */
  struct Message *ptChildNode; /* members of a group, body of a loop */
  struct Message *ptLoopNode;  /* kept and bound, followed by nobody */
  struct Message *ptNextNode;  /* next sibling */
} StructAttr;

/* One node of a definition. */
typedef struct CVT_RECORD Message {
  char *psNodeName; /* looked up without regard to letter case */
  int nType;        /* of the format plug-in; negative: a reference to the definition psNodeName */
  int nIndex;       /* number for the plug-ins, -1 until the node is indexed */
  FormatAttr *ptFormAttr;
  StructAttr *ptStructAttr;
} Message;

/* One message definition. */
typedef struct CVT_RECORD Msg {
  char *psMsgName; /* registry key, also the definition file's base name */
  char *psMsgDesc;
  char *psType;  /* free label */
  int nFieldNum; /* nodes in pptMessageIdx, -1 before */
  int nValueNum; /* slots of a message's value list; -1: full capacity; a plug-in may set it */
  FncGenerate fGen;
  FncParse fParse;
  FncGetNameValue fGetValue;
  FncSetNameValue fSetValue;
  Message **pptMessageIdx; /* lies in the pool: read its entries with cvtIdxNode */
  Message *ptHead;
  void *pInfo;   /* a record of the format plug-in */
  void *pIdInfo; /* IdCvtInfo list that picks the converter, set by the identification files */
} Msg;

/* What a loop or counted node knows of its repetitions. */
typedef struct CVT_RECORD LoopType {
  int nFieldNum;           /* nodes in the loop body index, -1 before */
  int nCurrentTime;        /* repetition addressed by name, 0-based; one cursor for the whole process */
  Message **pptMessageIdx; /* the loop body index; read its entries with cvtIdxNode */
  char *psLoopNumName;     /* field that holds the repetition count; may be absent */
  int nLoopNumIndex;       /* its position in the enclosing index, -1 until resolved */
  char caGap[4];
  void *ptInfo; /* a record of the format plug-in */
} LoopType;

/* Entry nPos of a node index; null is the terminator. The index may lie at an odd address. */
static inline Message *cvtIdxNode(Message **pptIdx, int nPos) {
  Message *ptNode;
  __builtin_memcpy(&ptNode, (const char *)pptIdx + (long)nPos * (long)sizeof ptNode, sizeof ptNode);
  return ptNode;
}

/* Creates a node of the global pool node, or, for a negative nType, returns the first node of the definition
 * psNodeName, which is loaded from the directory being read when it is not known yet.
 * Returns null with nGRet -1 (logged) on failure. */
Message *cvtNewMessageByType(char *psNodeName, int nType, FormatAttr *ptFormAttr, StructAttr *ptStructAttr);

/* Builds, indexes and initialises the definition of a file: psType is the format name, ptRootNode the first
 * child of the root element. Returns the Msg, which is not registered yet, or null (logged). */
void *cvtSttInitMessage(char *psFileName, char *psType, void *ptRootNode);

/* Fills pptMessageIdx and nFieldNum. Returns 0, -1 on failure (logged). */
int cvtGenMessageInfo(Msg *ptMsg);

/* Numbers the tree that starts at ptMessage: child subtree, other subtree, next sibling. Returns the
 * null-terminated index, of the global pool node, with its count in *pnNum; null on failure (logged). */
Message **cvtCreateMessageIdx(Message *ptMessage, int *pnNum);

/* First position of a node of that name, ignoring ASCII letter case; -1 when there is none (not logged) or an
 * argument is null (logged). A name that a node is given once its definition is loaded is found where the index has no
 * other node that bore it. */
int cvtGetNodeIdx(Message **pIdx, char *psName);

/* --- Registry of definitions and formats ---------------------------------------------------------------- */

typedef struct CVT_RECORD PathList {
  char *psPath; /* directory below the configuration root */
  struct PathList *ptNext;
} PathList;

/* The "Message" section. */
typedef struct CVT_RECORD CvtFmtArgs {
  int gnMaxValue; /* capacity of a value list; raised to the largest definition */
  int gnMaxLoop;  /* capacity of a loop list, in repetitions; raised to 999 */
  PathList *ptMsgList;
} CvtFmtArgs;

typedef struct CVT_RECORD CvtFmtGlobalInfo {
  CvtFmtArgs *ptCvtFmtArgs;
  StringList *ptInitList; /* format name -> FncFotmatInit, newest first */
  StringList *ptMsgList;  /* message name -> Msg, newest first */
  char *psCurrentPath;    /* directory being loaded, null otherwise */
  char *psBasePath;       /* never set: the configuration root */
} CvtFmtGlobalInfo;

extern CvtFmtGlobalInfo *gptFmtGlobalInfo;

/* Initialiser and end of the "Message" section. cvtFmtInit returns gptFmtGlobalInfo, or null (logged).
 * cvtFmtEnd forgets the registry and both free lists and returns 0. */
void *cvtFmtInit(void *ptXmlNode, char *psType);
int cvtFmtEnd(void);

/* Registers a format: definition files whose root element is psName are then read with these dispatchers and
 * finished by fpInit. Returns 0 always. A null fpInit empties the list of initialisers (logged): pass one. */
int cvtFmtAddPlug(char *psName, sttFncParseVoid fpParseVoid, sttFncGenVoid fpGenVoid, FncFotmatInit fpInit);

/* The newest definition of that name (exact), or null; logged only when nothing is registered at all. It
 * lives until the next reload. */
Msg *cvtGetMsg(char *psName);

/* --- Value lists --------------------------------------------------------------------------------------------- */

/* Address of slot nIdx; null (logged) when the list is null or nIdx is not in 0 .. nNow - 1. */
Value *cvtGetListValue(ValueList *ptValueList, int nIdx);

/* Stores a zero-terminated copy of nLen bytes, taken from ptMemNode. Returns 0, -1 on a null value or buffer
 * (logged). */
int cvtDumpValue(Value *ptValue, char *psBuf, int nLen, MemPort ptMemNode);

/* Takes an ordinary list with nNum slots in use, a negative nNum meaning its full capacity. It goes back with
 * cvtFreeValue. */
struct ValueList *cvtGetValueList(int nNum);

/* Appends one repetition of nFieldNum slots to the loop in slot nIndex and returns its list; null (logged) on
 * a bad argument, on a slot with a plain value, or when the loop is full. */
struct ValueList *cvtNewLoopValueList(ValueList *ptValueList, int nIndex, int nFieldNum);

/* Number of repetitions in slot nIndex, 0 for a loop not started; -1 (logged) on a bad argument or slot. */
int cvtGetLoopValueListNum(ValueList *ptValueList, int nIndex);

/* List of repetition nLoopIndex; null (logged) when there is none. Only the upper bound is tested. */
struct ValueList *cvtGetLoopValueList(ValueList *ptValueList, int nIndex, int nLoopIndex);

/* Gives a message's whole chain back to the free lists. Null is accepted. Returns 0. */
int cvtFreeValue(ValueList *ptValueList);

/* --- Loop structure ------------------------------------------------------------------------------------------ */

Message **cvtLoopGetIdx(Message *ptMessage); /* loop body index, null (logged) without a LoopType */
void *cvtLoopGetStruct(Message *ptMessage);  /* LoopType.ptInfo, null (logged) without a LoopType */
int cvtLoopCreateIndex(Message *ptMessage);  /* builds the loop body index; 0, -1 */
int cvtLoopGetFieldNum(Message *ptMessage);  /* nodes of the body, -1 for another kind */
int cvtSetLoopCurrentTime(Message *ptMessage, int nTime); /* moves the cursor; 0, -1 for another kind */
int cvtGetLoopCurrentTime(Message *ptMessage);            /* the cursor, -1 for another kind */

/* The slot of a loop's or counted node's count field; null for another kind or without that slot. */
Value *cvtLoopGetLoopNumValue(ValueListInfo *ptValueListInfo, Message *ptMessage);

/* The count in that slot; -1 when there is no slot. */
int cvtLoopGetLoopNum(ValueListInfo *ptValueListInfo, Message *ptMessage);

/* Resolves the count fields of an index and of its loop bodies; for format initialisers. Returns 0, -1 on a
 * missing LoopType, -3 on an unknown count field (both logged). */
int cvtLoopSetLoopNumIndex(Message **pptIdx);

/* --- Bound records --------------------------------------------------------------------------------------------- */

STT_BOUND(Value, char *psValue, int nLen);
STT_BOUND(FormatAttr, char *psFormatName, void *pInfo);
STT_BOUND(StructAttr, int nType, void *pInfo, Message *ptOtherNode, Message *ptChildNode, Message *ptLoopNode,
          Message *ptNextNode);
STT_BOUND(Message, char *psNodeName, int nType, FormatAttr *ptFormAttr, StructAttr *ptStructAttr);
STT_BOUND(Msg, char *psMsgName, char *psMsgDesc, char *psType, Message *ptHead, void *pInfo, void *pIdInfo);
STT_BOUND_MODULE(cvt_message);

STT_BOUND(PathList, char *psPath, PathList *ptNext);
STT_BOUND(CvtFmtArgs, int gnMaxValue, int gnMaxLoop, PathList *ptMsgList);
STT_BOUND_MODULE(_cvt_message);

STT_BOUND(LoopType, char *psLoopNumName, void *ptInfo);
STT_BOUND_MODULE(cvt_struct_loop);

CVT_C_END

#endif

/* cvt_convert.h: converters: their records, their registry, and the functions they may call. */
#ifndef CVT_CONVERT_H
#define CVT_CONVERT_H

#include "cvt_message.h"

CVT_C_BEGIN

/* Codes of an Arg. 0, 1, 3, 4 and 10 are values; 6 to 9 and 11 are rules; 2 stands in loops; 5 is handed to a
 * function as it is. */
#define CVT_TYPE_SRC 0      /* Node: slot of the current source list */
#define CVT_TYPE_DST 1      /* Node: slot of the current destination list */
#define CVT_TYPE_MSG 2      /* Node: the current list itself, as one side of a loop */
#define CVT_TYPE_VALUE 3    /* Value: a constant */
#define CVT_TYPE_FUNC 4     /* Function: its result */
#define CVT_TYPE_RAW 5      /* any bound record */
#define CVT_TYPE_COPY 6     /* Copy */
#define CVT_TYPE_CASE 7     /* Case */
#define CVT_TYPE_LOOP 8     /* Loop */
#define CVT_TYPE_SQL 9      /* Sql */
#define CVT_TYPE_LOOPNUM 10 /* LoopGetNum: a repetition count, as decimal text */
#define CVT_TYPE_MAPPING 11 /* Mapping */

/* A conversion function.
 *   ptResult   the result: psValue null and nLen 0 on entry; bytes are allocated from ptMemNode
 *   nArgs      number of arguments
 *   pptArgs    the arguments in list order; null where one could not be resolved
 *   ptMemNode  pool node of the destination message
 * 0 = success. */
typedef int (*FncConvert)(Value *ptResult, int nArgs, Value **pptArgs, MemPort ptMemNode);

/* A rule, or an argument of a rule. */
typedef struct CVT_RECORD Arg {
  int nType; /* a CVT_TYPE code */
  char caGap[4];
  void *pInfo; /* the record that the code implies */
  struct Arg *ptNext;
} Arg;

typedef struct CVT_RECORD Converter {
  char *psName; /* registry key */
  char *psSrcStructName;
  char *psDstStructName;
  Arg *ptArgs; /* rule list */
} Converter;

typedef struct CVT_RECORD Judge {
  Arg *ptSrcArgs;
  Arg *ptDstArgs;
  struct Judge *ptNext; /* alternative of the same case */
} Judge;

typedef struct CVT_RECORD Case {
  Judge *ptJudge; /* null: always chosen */
  Arg *ptArgs;    /* rule list */
  struct Case *ptNext;
} Case;

typedef struct CVT_RECORD Copy {
  Arg *ptSrcArgs;
  Arg *ptDstArgs;
} Copy;

typedef struct CVT_RECORD Loop {
  Arg *ptSrcArgs;
  Arg *ptDstArgs;
  Arg *ptArgs; /* rule list of one repetition */
} Loop;

typedef struct CVT_RECORD LoopGetNum {
  Arg *ptLoop;
} LoopGetNum;

typedef struct CVT_RECORD Sql {
  Arg *ptSqlList;   /* pieces of the statement */
  Arg *ptFieldList; /* slots for the columns; null for a statement without result */
} Sql;

typedef struct CVT_RECORD Function {
  char *psName;
  FncConvert fCvtFunc;
  Arg *ptArgs;
} Function;

typedef struct CVT_RECORD Node {
  int nType; /* 0 source, 1 destination, 2 no node */
  char caGap[4];
  char *psName;
  int nIdx; /* position in the node index, -1 for kind 2 */
  char caGap2[4];
} Node;

/* The "Convert" section. */
typedef struct CVT_RECORD CvtArgs {
  char *psCvtPath; /* directory of converter files */
} CvtArgs;

typedef struct CVT_RECORD MappingList {
  Arg *ptTagArgs;
  Arg *ptActList; /* rule list */
  struct MappingList *ptNext;
} MappingList;

typedef struct CVT_RECORD Mapping {
  Arg *ptMapArgs;
  MappingList *ptList;
} Mapping;

/* One entry of the temporary-value stack. */
typedef struct CVT_RECORD Stack {
  Value *ptValue;
  struct Stack *ptNext; /* the entry below */
  struct Stack *ptPre;  /* the entry above */
} Stack;

/* The conversion engine's state, of the global pool node. */
typedef struct CVT_RECORD CvtGlobalInfo {
  Message **pptSrcIdx; /* indexes against which names resolve while a converter file is read */
  Message **pptDstIdx;
  Stack *ptStack; /* newest temporary handed out, or the bottom entry */
  int nMaxArgs;   /* largest argument count of any function read */
  char caGap[4];
  StringList *ptFuncList; /* name -> FncConvert, newest first */
  StringList *ptCvtList;  /* name -> Converter, newest first */
  CvtArgs *ptArgs;
} CvtGlobalInfo;

extern CvtGlobalInfo *gptCvtGlobalInfo;

/* Initialiser and end of the "Convert" section. cvtCvtInit returns gptCvtGlobalInfo, or null with nGRet -1
 * (logged). cvtCvtEnd forgets converters and functions and returns 0. */
void *cvtCvtInit(void *ptNode, char *psType);
int cvtCvtEnd(void);

/* Registers a conversion function for converter files read from now on. Returns 0 always. A null name or
 * function empties the registry (logged). */
int cvtConvertAddFunction(char *psFuncName, FncConvert fCvtFunction);

/* The newest converter of that name, or null; logged only before the section exists. */
struct Converter *cvtGetCvt(char *psName);

/* Name of the converter's destination definition, borrowed. ptConvert must not be null. */
char *cvtGetDst(Converter *ptConvert);

/* Runs a converter. Values are shared, not copied: the destination may point into the source message's bytes.
 *   ptMemNode  pool node of the destination message
 * Returns 0, or -1 with a trail of messages; what was written before the failure stays. */
int cvtConvert(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Converter *ptConvert,
               MemPort ptMemNode);

/* The index that a loop argument opens: pptIndex itself for code 2, else the loop body's; null (logged). */
Message **GetLoopMessageIndex(Arg *ptArgs, Message **pptIndex);

STT_BOUND(Arg, int nType, void *pInfo, Arg *ptNext);
STT_BOUND(Converter, char *psName, char *psSrcStructName, char *psDstStructName, Arg *ptArgs);
STT_BOUND(Judge, Arg *ptSrcArgs, Arg *ptDstArgs, Judge *ptNext);
STT_BOUND(Case, Judge *ptJudge, Arg *ptArgs, Case *ptNext);
STT_BOUND(Copy, Arg *ptSrcArgs, Arg *ptDstArgs);
STT_BOUND(Loop, Arg *ptSrcArgs, Arg *ptDstArgs, Arg *ptArgs);
STT_BOUND(LoopGetNum, Arg *ptLoop);
STT_BOUND(Sql, Arg *ptSqlList, Arg *ptFieldList);
STT_BOUND(Function, char *psName, Arg *ptArgs);
STT_BOUND(Node, int nType, char *psName);
STT_BOUND(CvtArgs, char *psCvtPath);
STT_BOUND(MappingList, Arg *ptTagArgs, Arg *ptActList, MappingList *ptNext);
STT_BOUND(Mapping, Arg *ptMapArgs, MappingList *ptList);
STT_BOUND_MODULE(cvt_convert);

CVT_C_END

#endif

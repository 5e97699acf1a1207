/* layout.h: the layout of every public record, recorded, for C and C++ alike. Plug-ins and hosts that were
 * compiled earlier rely on it: a number that no longer fits here is a break of the binary interface, not a
 * test to mend. */
#ifndef LAYOUT_H
#define LAYOUT_H

#include <stddef.h>

#include "cvt_itf.h"

#ifdef __cplusplus
#include <type_traits>
#define HOLDS(condition) static_assert(condition, #condition)
#define PLAIN(record) HOLDS(std::is_trivial_v<record> &&std::is_standard_layout_v<record>)
#define IS(type, ...) HOLDS((std::is_same_v<type, __VA_ARGS__>))
#else
#define HOLDS(condition) _Static_assert(condition, #condition)
#define PLAIN(record) HOLDS(1)
#define IS(type, ...) HOLDS(__builtin_types_compatible_p(type, __VA_ARGS__))
#endif

#define AT(record, field, offset) HOLDS(offsetof(record, field) == (offset))

/* A record of pool memory may lie at any address. */
#define POOL_RECORD(record, size)  \
  HOLDS(sizeof(record) == (size)); \
  HOLDS(__alignof__(record) == 1); \
  PLAIN(record)

/* A record that lies on the heap, or at the start of a pool node. */
#define ALIGNED_RECORD(record, size) \
  HOLDS(sizeof(record) == (size));   \
  HOLDS(__alignof__(record) == 8);   \
  PLAIN(record)

/* --- cvt_memory.h --- */

ALIGNED_RECORD(MemBlock, 24);
AT(MemBlock, nMaxSize, 0);
AT(MemBlock, nLeft, 4);
AT(MemBlock, psBuf, 8);
AT(MemBlock, ptNext, 16);

ALIGNED_RECORD(MemNode, 32);
AT(MemNode, nId, 0);
AT(MemNode, cUsed, 4);
AT(MemNode, ptHeadBlock, 8);
AT(MemNode, ptNowBlock, 16);
AT(MemNode, ptNext, 24);

ALIGNED_RECORD(MemRoot, 32);
AT(MemRoot, ptMemNodeList, 0);
AT(MemRoot, nMinFreeNodeId, 8);
AT(MemRoot, ptFreeNode, 16);
AT(MemRoot, ptLastNode, 24);

/* --- cvt_string.h --- */

POOL_RECORD(StringList, 24);
AT(StringList, psString, 0);
AT(StringList, ptInfo, 8);
AT(StringList, ptNext, 16);

POOL_RECORD(Dictionary, 808);
AT(Dictionary, psBuf, 0);
AT(Dictionary, ptNext, 800);

/* --- stt.h --- */

ALIGNED_RECORD(FuncList, 24);
AT(FuncList, fpParse, 0);
AT(FuncList, fpGen, 8);
AT(FuncList, ptNext, 16);

ALIGNED_RECORD(SttInfo, 32);
AT(SttInfo, psTypeName, 0);
AT(SttInfo, fParseFunction, 8);
AT(SttInfo, ptVoidFunction, 16);
AT(SttInfo, ptNext, 24);

ALIGNED_RECORD(TypeList, 24);
AT(TypeList, p, 0);
AT(TypeList, psType, 8);
AT(TypeList, ptNext, 16);

/* --- cvt_message.h --- */

POOL_RECORD(Value, 16);
AT(Value, psValue, 0);
AT(Value, nLen, 8);

POOL_RECORD(ValueList, 24);
AT(ValueList, nNow, 0);
AT(ValueList, nMax, 4);
AT(ValueList, ptValue, 8);
AT(ValueList, ptNext, 16);

POOL_RECORD(ValueListInfo, 24);
AT(ValueListInfo, ptValueList, 0);
AT(ValueListInfo, ptMemNode, 8);
AT(ValueListInfo, nIndexOffset, 16);

POOL_RECORD(FormatAttr, 16);
AT(FormatAttr, psFormatName, 0);
AT(FormatAttr, pInfo, 8);

POOL_RECORD(StructAttr, 48);
AT(StructAttr, nType, 0);
AT(StructAttr, pInfo, 8);
AT(StructAttr, ptOtherNode, 16);
AT(StructAttr, ptChildNode, 24);
AT(StructAttr, ptLoopNode, 32);
AT(StructAttr, ptNextNode, 40);

POOL_RECORD(Message, 32);
AT(Message, psNodeName, 0);
AT(Message, nType, 8);
AT(Message, nIndex, 12);
AT(Message, ptFormAttr, 16);
AT(Message, ptStructAttr, 24);

POOL_RECORD(Msg, 96);
AT(Msg, psMsgName, 0);
AT(Msg, psMsgDesc, 8);
AT(Msg, psType, 16);
AT(Msg, nFieldNum, 24);
AT(Msg, nValueNum, 28);
AT(Msg, fGen, 32);
AT(Msg, fParse, 40);
AT(Msg, fGetValue, 48);
AT(Msg, fSetValue, 56);
AT(Msg, pptMessageIdx, 64);
AT(Msg, ptHead, 72);
AT(Msg, pInfo, 80);
AT(Msg, pIdInfo, 88);

POOL_RECORD(LoopType, 40);
AT(LoopType, nFieldNum, 0);
AT(LoopType, nCurrentTime, 4);
AT(LoopType, pptMessageIdx, 8);
AT(LoopType, psLoopNumName, 16);
AT(LoopType, nLoopNumIndex, 24);
AT(LoopType, ptInfo, 32);

POOL_RECORD(PathList, 16);
AT(PathList, psPath, 0);
AT(PathList, ptNext, 8);

POOL_RECORD(CvtFmtArgs, 16);
AT(CvtFmtArgs, gnMaxValue, 0);
AT(CvtFmtArgs, gnMaxLoop, 4);
AT(CvtFmtArgs, ptMsgList, 8);

POOL_RECORD(CvtFmtGlobalInfo, 40);
AT(CvtFmtGlobalInfo, ptCvtFmtArgs, 0);
AT(CvtFmtGlobalInfo, ptInitList, 8);
AT(CvtFmtGlobalInfo, ptMsgList, 16);
AT(CvtFmtGlobalInfo, psCurrentPath, 24);
AT(CvtFmtGlobalInfo, psBasePath, 32);

/* --- cvt_convert.h --- */

POOL_RECORD(Arg, 24);
AT(Arg, nType, 0);
AT(Arg, pInfo, 8);
AT(Arg, ptNext, 16);

POOL_RECORD(Converter, 32);
AT(Converter, psName, 0);
AT(Converter, psSrcStructName, 8);
AT(Converter, psDstStructName, 16);
AT(Converter, ptArgs, 24);

POOL_RECORD(Judge, 24);
AT(Judge, ptSrcArgs, 0);
AT(Judge, ptDstArgs, 8);
AT(Judge, ptNext, 16);

POOL_RECORD(Case, 24);
AT(Case, ptJudge, 0);
AT(Case, ptArgs, 8);
AT(Case, ptNext, 16);

POOL_RECORD(Copy, 16);
AT(Copy, ptSrcArgs, 0);
AT(Copy, ptDstArgs, 8);

POOL_RECORD(Loop, 24);
AT(Loop, ptSrcArgs, 0);
AT(Loop, ptDstArgs, 8);
AT(Loop, ptArgs, 16);

POOL_RECORD(LoopGetNum, 8);
AT(LoopGetNum, ptLoop, 0);

POOL_RECORD(Sql, 16);
AT(Sql, ptSqlList, 0);
AT(Sql, ptFieldList, 8);

POOL_RECORD(Function, 24);
AT(Function, psName, 0);
AT(Function, fCvtFunc, 8);
AT(Function, ptArgs, 16);

POOL_RECORD(Node, 24);
AT(Node, nType, 0);
AT(Node, psName, 8);
AT(Node, nIdx, 16);

POOL_RECORD(CvtArgs, 8);
AT(CvtArgs, psCvtPath, 0);

POOL_RECORD(MappingList, 24);
AT(MappingList, ptTagArgs, 0);
AT(MappingList, ptActList, 8);
AT(MappingList, ptNext, 16);

POOL_RECORD(Mapping, 16);
AT(Mapping, ptMapArgs, 0);
AT(Mapping, ptList, 8);

POOL_RECORD(Stack, 24);
AT(Stack, ptValue, 0);
AT(Stack, ptNext, 8);
AT(Stack, ptPre, 16);

POOL_RECORD(CvtGlobalInfo, 56);
AT(CvtGlobalInfo, pptSrcIdx, 0);
AT(CvtGlobalInfo, pptDstIdx, 8);
AT(CvtGlobalInfo, ptStack, 16);
AT(CvtGlobalInfo, nMaxArgs, 24);
AT(CvtGlobalInfo, ptFuncList, 32);
AT(CvtGlobalInfo, ptCvtList, 40);
AT(CvtGlobalInfo, ptArgs, 48);

/* --- cvt_identify.h --- */

ALIGNED_RECORD(InnerMessage, 144);
AT(InnerMessage, nMsgId, 0);
AT(InnerMessage, sMsgName, 4);
AT(InnerMessage, sMsgFormat, 65);
AT(InnerMessage, psBuf, 88);
AT(InnerMessage, nNowLen, 96);
AT(InnerMessage, nLen, 100);
AT(InnerMessage, ptMsgInfo, 104);
AT(InnerMessage, tValueListInfo, 112);
AT(InnerMessage, ptInfo, 136);

POOL_RECORD(IdFunc, 32);
AT(IdFunc, psFunctName, 0);
AT(IdFunc, fIdFunction, 8);
AT(IdFunc, ptArg, 16);
AT(IdFunc, ptNext, 24);

POOL_RECORD(FormatInfo, 32);
AT(FormatInfo, psFormatId, 0);
AT(FormatInfo, ptParseFunc, 8);
AT(FormatInfo, ptGenFunc, 16);
AT(FormatInfo, ptNext, 24);

POOL_RECORD(CvtIdArgs, 16);
AT(CvtIdArgs, psIdPath, 0);
AT(CvtIdArgs, psIdInfoPath, 8);

POOL_RECORD(IdCvtInfo, 32);
AT(IdCvtInfo, psFormatId, 0);
AT(IdCvtInfo, psCvtName, 8);
AT(IdCvtInfo, ptConverter, 16);
AT(IdCvtInfo, ptNext, 24);

POOL_RECORD(IdMsgInfo, 24);
AT(IdMsgInfo, psMsgName, 0);
AT(IdMsgInfo, ptIdCvtInfo, 8);
AT(IdMsgInfo, ptNext, 16);

POOL_RECORD(XmlNameArgs, 24);
AT(XmlNameArgs, psNodeName, 0);
AT(XmlNameArgs, psFront, 8);
AT(XmlNameArgs, psBack, 16);

POOL_RECORD(IpcNameArgs, 24);
AT(IpcNameArgs, nOffset, 0);
AT(IpcNameArgs, nLen, 4);
AT(IpcNameArgs, psFront, 8);
AT(IpcNameArgs, psBack, 16);

POOL_RECORD(MoveBufferArgs, 32);
AT(MoveBufferArgs, nSrcOffset, 0);
AT(MoveBufferArgs, nSrcLen, 4);
AT(MoveBufferArgs, nDstOffset, 8);
AT(MoveBufferArgs, nDstAddFlag, 12);
AT(MoveBufferArgs, psFront, 16);
AT(MoveBufferArgs, psBack, 24);

POOL_RECORD(SetOffsetArgs, 12);
AT(SetOffsetArgs, caMsgType, 0);
AT(SetOffsetArgs, nOffset, 4);
AT(SetOffsetArgs, nSetType, 8);

/* --- cvt.h --- */

POOL_RECORD(AllInfo, 48);
AT(AllInfo, psBasePath, 0);
AT(AllInfo, nReload, 8);
AT(AllInfo, nDebug, 12);
AT(AllInfo, ptPlug, 16);
AT(AllInfo, ptMessage, 24);
AT(AllInfo, ptConvert, 32);
AT(AllInfo, ptId, 40);

POOL_RECORD(Plug, 40);
AT(Plug, psName, 0);
AT(Plug, psPath, 8);
AT(Plug, psFunction, 16);
AT(Plug, ptInfo, 24);
AT(Plug, ptNext, 32);

POOL_RECORD(PlugInfo, 16);
AT(PlugInfo, psBasePlugPath, 0);
AT(PlugInfo, ptPlugs, 8);

/* --- cvt_itf.h --- */

ALIGNED_RECORD(cvtInterface, 104);
AT(cvtInterface, FncCvtInit, 0);
AT(cvtInterface, FncCvtEnd, 8);
AT(cvtInterface, FncCvtInitMessasge, 16);
AT(cvtInterface, FncCvtGenerateMessasge, 24);
AT(cvtInterface, FncCvtParseMessasge, 32);
AT(cvtInterface, FncCvtGetNameValue, 40);
AT(cvtInterface, FncCvtSetNameValue, 48);
AT(cvtInterface, FncCvtNewMessage, 56);
AT(cvtInterface, FncCvtGenMessage, 64);
AT(cvtInterface, FncCvtFreeMessage, 72);
AT(cvtInterface, FncCvtSetLoopTime, 80);
AT(cvtInterface, FncCvtGetLoopTime, 88);
AT(cvtInterface, FncCvtAddLoopTime, 96);

/* --- the types of functions that hosts and plug-ins supply, and of handles --- */

IS(fnptr, int(char *));
IS(FncSttParse, void *(*)(char *, char *, void *));
IS(sttFncParseVoid, void *(*)(void *, char *));
IS(sttFncGenVoid, void *(*)(void *, void *, char *, char *));
IS(FncFotmatInit, int (*)(Msg *));
IS(FncParse, int (*)(void *, ValueListInfo *, Msg *, char *, int *, int));
IS(FncGenerate, int (*)(void *, ValueListInfo *, Msg *, char *, int *, int));
IS(FncGetNameValue, Value *(*)(Msg *, ValueListInfo *, char *, int *));
IS(FncSetNameValue, int (*)(Msg *, ValueListInfo *, char *, char *, int));
IS(FncConvert, int (*)(Value *, int, Value **, MemPort));
IS(FncIdFunction, int (*)(InnerMessage *, InnerMessage *, void *));
IS(FncInit, int (*)(void *));
IS(MemPort, MemNode *);
IS(ValueListPort, ValueList *);
IS(InMessagePtr, InnerMessage *);
IS(ValuePtr, Value *);

/* --- the codes of an Arg, the kinds of a structure --- */

HOLDS(CVT_TYPE_SRC == 0 && CVT_TYPE_DST == 1 && CVT_TYPE_MSG == 2 && CVT_TYPE_VALUE == 3);
HOLDS(CVT_TYPE_FUNC == 4 && CVT_TYPE_RAW == 5 && CVT_TYPE_COPY == 6 && CVT_TYPE_CASE == 7);
HOLDS(CVT_TYPE_LOOP == 8 && CVT_TYPE_SQL == 9 && CVT_TYPE_LOOPNUM == 10 && CVT_TYPE_MAPPING == 11);
HOLDS(CVT_STRUCT_LOOP == 1 && CVT_STRUCT_COUNTED == 5);

#endif

// cvt_convert.cpp: converters: module state and functions, the reading of converter files, the resolution of
// arguments, and the rules.
#include "cvt_convert.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "cvt_guard.h"
#include "cvt_heap.h"
#include "cvt_index.h"
#include "cvt_log.h"
#include "cvt_sql_text.h"
#include "stt_bind.h"
#include "vel_dbs.h"

CvtGlobalInfo *gptCvtGlobalInfo = nullptr;

namespace {

using StringIndex = cvt::ListIndex<StringList, &StringList::psString>;

StringIndex f_funcIndex;
StringIndex f_cvtIndex;

// --- Module state and function registry ------------------------------------------------------------------

int NewCvtGlobalInfo() {
  if (gptCvtGlobalInfo == nullptr) {
    gptCvtGlobalInfo = static_cast<CvtGlobalInfo *>(cvtMemMalloc(sizeof(CvtGlobalInfo)));
  }
  return 0;
}

}  // namespace

int cvtConvertAddFunction(char *psFuncName, FncConvert fCvtFunction) {
  NewCvtGlobalInfo();
  // The head is replaced even by null: a null name or function forgets every function registered before.
  gptCvtGlobalInfo->ptFuncList =
      cvtStrAddStringList(gptCvtGlobalInfo->ptFuncList, psFuncName, reinterpret_cast<void *>(fCvtFunction));
  return 0;
}

int cvtCvtEnd() {
  gptCvtGlobalInfo = nullptr;
  f_funcIndex.clear();
  f_cvtIndex.clear();
  return 0;
}

// --- Names become positions while a file is read ---------------------------------------------------------

namespace {

// The index pair to be restored.
struct MsgInfo {
  Message **pptSrcIdx;
  Message **pptDstIdx;
};

int ReSetMsgInfo(Message **pptSrcIdx, Message **pptDstIdx, MsgInfo *ptMsgInfo) {
  if (ptMsgInfo != nullptr) *ptMsgInfo = {gptCvtGlobalInfo->pptSrcIdx, gptCvtGlobalInfo->pptDstIdx};
  gptCvtGlobalInfo->pptSrcIdx = pptSrcIdx;
  gptCvtGlobalInfo->pptDstIdx = pptDstIdx;
  return 0;
}

Msg *definitionOf(char *psName) {
  Msg *const ptMsg = cvtGetMsg(psName);
  if (ptMsg == nullptr) CVT_ERR("Get Msg[%s] define info err!!", psName);
  return ptMsg;
}

int SetMsgInfoByName(char *psSrcName, char *psDstName, MsgInfo *ptMsgInfo) {
  CVT_NOT_NULL(ptMsgInfo, -1);
  CVT_NOT_NULL(gptCvtGlobalInfo, -1);
  const Msg *const ptSrc = definitionOf(psSrcName);
  if (ptSrc == nullptr) return -1;
  const Msg *const ptDst = definitionOf(psDstName);
  if (ptDst == nullptr) return -1;
  return ReSetMsgInfo(ptSrc->pptMessageIdx, ptDst->pptMessageIdx, ptMsgInfo);
}

// Whether the record of an argument belongs to another code.
bool isMisfit(const Arg *ptArgs) {
  if (!cvt::bind::isMisfit(ptArgs->pInfo)) return false;
  CVT_ERR("Arg Type [%d]: its record is of another type, as the log of the start says", ptArgs->nType);
  return true;
}

int GetNodeValueIndex(Arg *ptArgs) {
  CVT_NOT_NULL(ptArgs, -1);
  if (ptArgs->nType != CVT_TYPE_SRC && ptArgs->nType != CVT_TYPE_DST) {
    CVT_ERR("Arg Type [%d] err!!", ptArgs->nType);
    return -1;
  }
  CVT_NOT_NULL(ptArgs->pInfo, -1);
  if (isMisfit(ptArgs)) return -1;
  return static_cast<Node *>(ptArgs->pInfo)->nIdx;
}

// Entry nPos, or null behind the end: a node may have been resolved against another definition.
Message *nodeAt(Message **pptIndex, int nPos) {
  Message *ptNode = cvtIdxNode(pptIndex, 0);
  for (int i = 1; ptNode != nullptr && i <= nPos; ++i) ptNode = cvtIdxNode(pptIndex, i);
  return ptNode;
}

// What the other kinds keep in pInfo is a record of their format, and no LoopType.
bool hasLoopType(const Message *ptNode) {
  const StructAttr *const pt = ptNode->ptStructAttr;
  return pt != nullptr && (pt->nType == CVT_STRUCT_LOOP || pt->nType == CVT_STRUCT_COUNTED);
}

}  // namespace

Message **GetLoopMessageIndex(Arg *ptArgs, Message **pptIndex) {
  CVT_NOT_NULL(ptArgs, nullptr);
  if (ptArgs->nType == CVT_TYPE_MSG) return pptIndex;
  const int nIndex = GetNodeValueIndex(ptArgs);
  if (nIndex < 0) {
    CVT_ERR("Get Message Loop Index err!!");
    return nullptr;
  }
  CVT_NOT_NULL(pptIndex, nullptr);
  Message *const ptNode = nodeAt(pptIndex, nIndex);
  if (ptNode != nullptr && !hasLoopType(ptNode)) {
    CVT_ERR("Message[%s] Get Loop Type Err!!", ptNode->psNodeName);
    return nullptr;
  }
  return cvtLoopGetIdx(ptNode);
}

namespace {

int SetMsgInfoByLoop(Arg *ptSrcArgs, Arg *ptDstArgs, MsgInfo *ptMsgInfo) {
  CVT_NOT_NULL(ptSrcArgs, -1);
  CVT_NOT_NULL(ptDstArgs, -1);
  CVT_NOT_NULL(ptMsgInfo, -1);
  CVT_NOT_NULL(gptCvtGlobalInfo, -1);
  Message **pptSrcMsgIdx = nullptr;
  Message **pptDstMsgIdx = nullptr;
  CVT_NOT_NULL(pptSrcMsgIdx = GetLoopMessageIndex(ptSrcArgs, gptCvtGlobalInfo->pptSrcIdx), -1);
  CVT_NOT_NULL(pptDstMsgIdx = GetLoopMessageIndex(ptDstArgs, gptCvtGlobalInfo->pptDstIdx), -1);
  return ReSetMsgInfo(pptSrcMsgIdx, pptDstMsgIdx, ptMsgInfo);
}

// The rule list below an element, read under the current index pair; the saved pair comes back whether the
// reading succeeded or not.
Arg *readRules(void *ptXmlNode, const MsgInfo &saved) {
  Arg *const ptArgs = cvt::bind::sttParseXmlStruct(ptXmlNode, "Arg", "ptArgs", sttParseXmlArg);
  if (ReSetMsgInfo(saved.pptSrcIdx, saved.pptDstIdx, nullptr) != 0) {
    nGRet = -1;
    CVT_ERR("ReSetMsgInfo Err!!");
  }
  return ptArgs;
}

Arg *ParseArg(char *psSrcStructName, char *psDstStructName, void *ptXmlNode) {
  MsgInfo saved{};
  if (SetMsgInfoByName(psSrcStructName, psDstStructName, &saved) != 0) {
    nGRet = -1;
    CVT_ERR("SetMsgInfoByName Src[%s] Dst[%s] err!!", psSrcStructName, psDstStructName);
    return nullptr;
  }
  return readRules(ptXmlNode, saved);
}

Arg *ParseArgLoop(Arg *ptSrc, Arg *ptDst, void *ptXmlNode) {
  MsgInfo saved{};
  if (SetMsgInfoByLoop(ptSrc, ptDst, &saved) != 0) {
    nGRet = -1;
    CVT_ERR("SetMsgInfoByLoop err!!");
    return nullptr;
  }
  return readRules(ptXmlNode, saved);
}

int GetMsgFieldIdx(int nMsgType, char *psFieldName) {
  CVT_NOT_NULL(psFieldName, -1);
  CVT_NOT_NULL(gptCvtGlobalInfo, -1);
  if (nMsgType == CVT_TYPE_SRC) return cvtGetNodeIdx(gptCvtGlobalInfo->pptSrcIdx, psFieldName);
  if (nMsgType == CVT_TYPE_DST) return cvtGetNodeIdx(gptCvtGlobalInfo->pptDstIdx, psFieldName);
  CVT_ERR("MsgType[%d] type is not need!!", nMsgType);
  return -1;
}

int GetNodeIdx(int nType, char *psName) {
  if (nType == CVT_TYPE_MSG) return -1;
  const int nIdx = GetMsgFieldIdx(nType, psName);
  if (nIdx >= 0) return nIdx;
  nGRet = -1;
  CVT_ERR("Get Message Field[%d:%s] err!!", nType, psName);
  return 0;
}

int count(const Arg *ptArgs) {
  int n = 0;
  for (; ptArgs != nullptr; ptArgs = ptArgs->ptNext) ++n;
  return n;
}

FncConvert MakeFunction(char *psFuncName, Arg *ptArgs) {
  if (psFuncName == nullptr) {
    nGRet = -1;
    CVT_ERR("psFuncName[%s] is NULL!!", "(null)");
    return nullptr;
  }
  if (gptCvtGlobalInfo == nullptr) {
    nGRet = -1;
    CVT_ERR("[gptCvtGlobalInfo] is NULL");
    return nullptr;
  }
  gptCvtGlobalInfo->nMaxArgs = std::max(static_cast<int>(gptCvtGlobalInfo->nMaxArgs), count(ptArgs));
  const StringList *const pt = f_funcIndex.find(gptCvtGlobalInfo->ptFuncList, psFuncName);
  if (pt == nullptr) {
    nGRet = -1;
    CVT_ERR("Funct[%s] is not find!!", psFuncName);
    return nullptr;
  }
  return reinterpret_cast<FncConvert>(pt->ptInfo);
}

}  // namespace

// --- Bound records ---------------------------------------------------------------------------------------

namespace {

// The record that belongs to a code. Null: any, or a code that takes none.
const char *recordOfCode(int nType) {
  switch (nType) {
    case CVT_TYPE_SRC:
    case CVT_TYPE_DST:
    case CVT_TYPE_MSG:
      return "Node";
    case CVT_TYPE_VALUE:
      return "Value";
    case CVT_TYPE_FUNC:
      return "Function";
    case CVT_TYPE_COPY:
      return "Copy";
    case CVT_TYPE_CASE:
      return "Case";
    case CVT_TYPE_LOOP:
      return "Loop";
    case CVT_TYPE_SQL:
      return "Sql";
    case CVT_TYPE_LOOPNUM:
      return "LoopGetNum";
    case CVT_TYPE_MAPPING:
      return "Mapping";
    default:
      return nullptr;
  }
}

}  // namespace

// clang-format off
#define STT_TABLE_Arg(F)                  \
  F(INT,      nType)                      \
  F(VOID_FOR, pInfo, recordOfCode(nType)) \
  F(NEXT,     ptNext, Arg)
STT_BIND(Arg)

#define STT_TABLE_Converter(F) \
  F(STRING, psName)            \
  F(STRING, psSrcStructName)   \
  F(STRING, psDstStructName)   \
  F(STRUCT_BY, ptArgs, Arg, struct Arg *, ParseArg(psSrcStructName, psDstStructName, ptXmlNode))
STT_BIND(Converter)

#define STT_TABLE_Judge(F)     \
  F(STRUCT, ptSrcArgs, Arg)    \
  F(STRUCT, ptDstArgs, Arg)    \
  F(NEXT,   ptNext,    Judge)
STT_BIND(Judge)

#define STT_TABLE_Case(F)    \
  F(STRUCT, ptJudge, Judge)  \
  F(STRUCT, ptArgs,  Arg)    \
  F(NEXT,   ptNext,  Case)
STT_BIND(Case)

#define STT_TABLE_Copy(F)    \
  F(STRUCT, ptSrcArgs, Arg)  \
  F(STRUCT, ptDstArgs, Arg)
STT_BIND(Copy)

#define STT_TABLE_Loop(F)    \
  F(STRUCT, ptSrcArgs, Arg)  \
  F(STRUCT, ptDstArgs, Arg)  \
  F(STRUCT_BY, ptArgs, Arg, Arg *, ParseArgLoop(ptSrcArgs, ptDstArgs, ptXmlNode))
STT_BIND(Loop)

#define STT_TABLE_LoopGetNum(F) \
  F(STRUCT, ptLoop, Arg)
STT_BIND(LoopGetNum)

#define STT_TABLE_Sql(F)       \
  F(STRUCT, ptSqlList,   Arg)  \
  F(STRUCT, ptFieldList, Arg)
STT_BIND(Sql)

#define STT_TABLE_Function(F) \
  F(STRING, psName)           \
  F(STRUCT, ptArgs, Arg)      \
  F(DERIVED, fCvtFunc, MakeFunction(psName, ptArgs))
STT_BIND(Function)

#define STT_TABLE_Node(F) \
  F(INT,    nType)        \
  F(STRING, psName)       \
  F(DERIVED, nIdx, GetNodeIdx(nType, psName))
STT_BIND(Node)

#define STT_TABLE_CvtArgs(F) \
  F(STRING, psCvtPath)
STT_BIND(CvtArgs)

#define STT_TABLE_MappingList(F) \
  F(STRUCT, ptTagArgs, Arg)      \
  F(STRUCT, ptActList, Arg)      \
  F(NEXT,   ptNext, MappingList)
STT_BIND(MappingList)

#define STT_TABLE_Mapping(F)  \
  F(STRUCT, ptMapArgs, Arg)   \
  F(STRUCT, ptList, MappingList)
STT_BIND(Mapping)

STT_BIND_MODULE(cvt_convert, STT_TYPE(Arg), STT_TYPE(Converter), STT_TYPE(Judge), STT_TYPE(Case),
                STT_TYPE(Copy), STT_TYPE(Loop), STT_TYPE(LoopGetNum), STT_TYPE(Sql), STT_TYPE(Function),
                STT_TYPE(Node), STT_TYPE(CvtArgs), STT_TYPE(MappingList), STT_TYPE(Mapping))
// clang-format on

// --- Temporary values ------------------------------------------------------------------------------------

namespace {

constexpr int kSpareTemporaries = 10;

Stack *NewStack(Stack *ptNext, Stack *ptPre) {
  auto *const pt = static_cast<Stack *>(cvtMemMalloc(sizeof(Stack)));
  pt->ptValue = static_cast<Value *>(cvtMemMalloc(sizeof(Value)));
  pt->ptNext = ptNext;
  if (ptNext != nullptr) ptNext->ptPre = pt;
  pt->ptPre = ptPre;
  if (ptPre != nullptr) ptPre->ptNext = pt;
  return pt;
}

int InitStack(int nNum) {
  CVT_NOT_NULL(gptCvtGlobalInfo, -1);
  Stack *const ptBottom = NewStack(nullptr, nullptr);
  gptCvtGlobalInfo->ptStack = ptBottom;
  Stack *ptTop = ptBottom;
  for (int i = 0; i < nNum; ++i) ptTop = NewStack(ptTop, nullptr);
  return 0;
}

// Hands out the next temporary, empty. The stack grows where it is deeper than ever before.
Value *PopTempValue() {
  CVT_NOT_NULL(gptCvtGlobalInfo, nullptr);
  if (gptCvtGlobalInfo->ptStack == nullptr) InitStack(kSpareTemporaries);
  Stack *const ptNow = gptCvtGlobalInfo->ptStack;
  Stack *const ptAbove = ptNow->ptPre != nullptr ? ptNow->ptPre : NewStack(ptNow, nullptr);
  gptCvtGlobalInfo->ptStack = ptAbove;
  *ptAbove->ptValue = Value{};
  return ptAbove->ptValue;
}

// Takes back everything handed out after ptValue; null, or a value that is not on the stack: everything.
void PushTempValue(const Value *ptValue) {
  if (gptCvtGlobalInfo == nullptr || gptCvtGlobalInfo->ptStack == nullptr) return;
  Stack *pt = gptCvtGlobalInfo->ptStack;
  while (pt->ptNext != nullptr && (ptValue == nullptr || pt->ptValue != ptValue)) pt = pt->ptNext;
  gptCvtGlobalInfo->ptStack = pt;
}

// --- Arguments -------------------------------------------------------------------------------------------

Value *GetValue(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Arg *ptArgs, MemPort ptMemNode);

// The argument pointers of one call. Each depth of calls has an array of its own, which is kept for the next
// call: a call may hand its array to a function that calls others.
class ArgArray {
 public:
  explicit ArgArray(int nSize) {
    if (f_depth == f_arrays.size()) f_arrays.emplace_back();
    cvt::Vector<Value *> &array = f_arrays[f_depth++];
    array.assign(std::max(array.size(), static_cast<size_t>(nSize)), nullptr);
    m_data = array.data();
  }
  ~ArgArray() { --f_depth; }
  ArgArray(const ArgArray &) = delete;
  ArgArray &operator=(const ArgArray &) = delete;

  Value **data() const { return m_data; }

 private:
  static inline cvt::Vector<cvt::Vector<Value *>> f_arrays;
  static inline size_t f_depth = 0;
  Value **m_data;
};

Value *DoFunc(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Function *ptFunc,
              MemPort ptMemNode) {
  CVT_NOT_NULL(ptFunc, nullptr);
  CVT_NOT_NULL(gptCvtGlobalInfo, nullptr);
  // The result slot is taken before the arguments, so that their temporaries lie above it.
  Value *const ptResult = PopTempValue();
  ArgArray args(std::max(static_cast<int>(gptCvtGlobalInfo->nMaxArgs), count(ptFunc->ptArgs)));
  int nNum = 0;
  for (Arg *pt = ptFunc->ptArgs; pt != nullptr; pt = pt->ptNext) {
    args.data()[nNum++] = pt->nType == CVT_TYPE_RAW ? static_cast<Value *>(pt->pInfo)
                                                    : GetValue(ptSrcValueList, ptDstValueList, pt, ptMemNode);
  }
  const FncConvert fCvtFunc = ptFunc->fCvtFunc;
  CVT_NOT_NULL(ptFunc->fCvtFunc, nullptr);
  const int nRet =
      cvt::guarded("Func", ptFunc->psName, [&] { return fCvtFunc(ptResult, nNum, args.data(), ptMemNode); });
  PushTempValue(ptResult);
  if (nRet != 0) {
    CVT_ERR("Do Func[%s] err!!", ptFunc->psName);
    return nullptr;
  }
  return ptResult;
}

// The count is always the source list's, also for a destination node: its position is applied to the source.
Value *InnerGetLoopNum(ValueListPort ptSrcValueList, LoopGetNum *ptLoopGetNum, MemPort ptMemNode) {
  constexpr int kCountText = 12;
  CVT_NOT_NULL(ptLoopGetNum, nullptr);
  Value *const ptValue = PopTempValue();
  const int nIndex = GetNodeValueIndex(ptLoopGetNum->ptLoop);
  const int nNum = cvtGetLoopValueListNum(ptSrcValueList, nIndex);
  if (nNum < 0) {
    CVT_ERR("Get Field Index[%d] Loop Num err!!", nIndex);
    return nullptr;
  }
  CVT_NOT_NULL(ptValue, nullptr);
  PushTempValue(ptValue);
  ptValue->psValue = static_cast<char *>(cvtMalloc(kCountText, ptMemNode));
  if (ptValue->psValue == nullptr) return nullptr;
  ptValue->nLen = std::snprintf(ptValue->psValue, kCountText, "%d", nNum);
  return ptValue;
}

Value *GetValue(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Arg *ptArgs, MemPort ptMemNode) {
  CVT_NOT_NULL(ptArgs, nullptr);
  if (isMisfit(ptArgs)) return nullptr;
  switch (ptArgs->nType) {
    case CVT_TYPE_SRC:
    case CVT_TYPE_DST: {
      CVT_NOT_NULL(ptArgs->pInfo, nullptr);
      const auto *const ptNode = static_cast<Node *>(ptArgs->pInfo);
      const bool bSrc = ptArgs->nType == CVT_TYPE_SRC;
      Value *const ptValue = cvtGetListValue(bSrc ? ptSrcValueList : ptDstValueList, ptNode->nIdx);
      if (ptValue == nullptr) {
        CVT_ERR("%s Msg Get Filed By Id[%s)%d] err!!", bSrc ? "Src" : "Dst", ptNode->psName, ptNode->nIdx);
      }
      return ptValue;
    }
    case CVT_TYPE_VALUE:
      CVT_NOT_NULL(ptArgs->pInfo, nullptr);
      return static_cast<Value *>(ptArgs->pInfo);
    case CVT_TYPE_FUNC:
      return DoFunc(ptSrcValueList, ptDstValueList, static_cast<Function *>(ptArgs->pInfo), ptMemNode);
    case CVT_TYPE_LOOPNUM:
      return InnerGetLoopNum(ptSrcValueList, static_cast<LoopGetNum *>(ptArgs->pInfo), ptMemNode);
    default:
      CVT_ERR("No Defined Arg Type [%d] err!!", ptArgs->nType);
      return nullptr;
  }
}

// Equal lengths and equal bytes. A slot that holds a loop equals nothing: its length is no size. Nor does a
// constant whose length was given without bytes.
bool sameBytes(const Value *a, const Value *b) {
  if (a->nLen != b->nLen || a->nLen < 0) return false;
  if (a->nLen == 0) return true;
  if (a->psValue == nullptr || b->psValue == nullptr) return false;
  return std::memcmp(a->psValue, b->psValue, static_cast<size_t>(a->nLen)) == 0;
}

// --- Rules -----------------------------------------------------------------------------------------------

int StructConvert(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Arg *ptArgs, MemPort ptMemNode);

// Pointer and length are copied, the bytes are shared.
int CvtCopy(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Copy *ptCopy, MemPort ptMemNode) {
  CVT_NOT_NULL(ptCopy, -1);
  Value *ptDst = nullptr;
  const Value *ptSrc = nullptr;
  CVT_NOT_NULL(ptDst = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptDstArgs, ptMemNode), -1);
  CVT_NOT_NULL(ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptSrcArgs, ptMemNode), -1);
  if (ptCopy->ptSrcArgs->nType == CVT_TYPE_VALUE && ptSrc->nLen < 0) {  // would be taken for a loop's list
    CVT_ERR("Value nLen[%d] is no length: write that of psValue, in bytes", ptSrc->nLen);
    return -1;
  }
  ptDst->psValue = ptSrc->psValue;
  ptDst->nLen = ptSrc->nLen;
  PushTempValue(nullptr);
  return 0;
}

// Whether one judge of the list holds: 1, 0, or -1 when an operand cannot be resolved.
int judge(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Judge *ptJudge, MemPort ptMemNode) {
  for (; ptJudge != nullptr; ptJudge = ptJudge->ptNext) {
    const Value *ptDst = nullptr;
    const Value *ptSrc = nullptr;
    CVT_NOT_NULL(ptDst = GetValue(ptSrcValueList, ptDstValueList, ptJudge->ptDstArgs, ptMemNode), -1);
    CVT_NOT_NULL(ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptJudge->ptSrcArgs, ptMemNode), -1);
    if (sameBytes(ptDst, ptSrc)) return 1;
    PushTempValue(nullptr);
  }
  return 0;
}

// The first case without judges, or with a judge that holds, runs; none is not an error.
int CvtCase(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Case *ptCase, MemPort ptMemNode) {
  CVT_NOT_NULL(ptCase, -1);
  for (; ptCase != nullptr; ptCase = ptCase->ptNext) {
    const int nHolds =
        ptCase->ptJudge == nullptr ? 1 : judge(ptSrcValueList, ptDstValueList, ptCase->ptJudge, ptMemNode);
    if (nHolds < 0) return -1;
    if (nHolds == 1) return StructConvert(ptSrcValueList, ptDstValueList, ptCase->ptArgs, ptMemNode);
  }
  return 0;
}

// Set mode is asked for by the name of a code-2 argument: it begins with a capital S.
int CvtLoopCheckSet(Arg *ptArg) {
  if (ptArg->nType != CVT_TYPE_MSG || ptArg->pInfo == nullptr || isMisfit(ptArg)) return -1;
  const char *const psName = static_cast<Node *>(ptArg->pInfo)->psName;
  return psName != nullptr && *psName == 'S' ? 0 : -1;
}

// The record of a rule; null when it belongs to another code.
template <class T>
T *ruleOf(const Arg *ptArg) {
  return isMisfit(ptArg) ? nullptr : static_cast<T *>(ptArg->pInfo);
}

const char *CvtGetName(Arg *ptArg) {
  return ptArg->pInfo == nullptr || isMisfit(ptArg) ? nullptr : static_cast<Node *>(ptArg->pInfo)->psName;
}

int repetitions(ValueListPort ptValueList, int nSlot) {
  const int nCount = cvtGetLoopValueListNum(ptValueList, nSlot);
  if (nCount < 0) CVT_ERR("cvtGetLoopValueListNum err, Index[%d]", nSlot);
  return nCount;
}

int CvtLoop(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Loop *ptLoop, MemPort ptMemNode) {
  CVT_NOT_NULL(ptLoop, -1);
  CVT_NOT_NULL(ptLoop->ptSrcArgs, -1);
  CVT_NOT_NULL(ptLoop->ptDstArgs, -1);
  const bool bSameSrc = ptLoop->ptSrcArgs->nType == CVT_TYPE_MSG;
  const bool bSameDst = ptLoop->ptDstArgs->nType == CVT_TYPE_MSG;
  const bool bSet = !bSameDst && CvtLoopCheckSet(ptLoop->ptSrcArgs) == 0;
  const int nSrcSlot = bSameSrc ? -1 : GetNodeValueIndex(ptLoop->ptSrcArgs);
  int nCount = bSameSrc ? 1 : repetitions(ptSrcValueList, nSrcSlot);
  if (nCount < 0) return -1;
  const int nDstSlot = bSameDst ? -1 : GetNodeValueIndex(ptLoop->ptDstArgs);
  if (bSet) nCount = repetitions(ptDstValueList, nDstSlot);
  if (nCount < 0) return -1;

  for (int i = 0; i < nCount; ++i) {
    ValueListPort ptSrc = bSameSrc ? ptSrcValueList : cvtGetLoopValueList(ptSrcValueList, nSrcSlot, i);
    ValueListPort ptDst = bSameDst ? ptDstValueList
                          : bSet   ? cvtGetLoopValueList(ptDstValueList, nDstSlot, i)
                                   : cvtNewLoopValueList(ptDstValueList, nDstSlot, -1);
    if (StructConvert(ptSrc, ptDst, ptLoop->ptArgs, ptMemNode) != 0) {
      CVT_ERR("Convert Loop[%d/%d] From[%s] to [%s]  convert err!!", i, nCount, CvtGetName(ptLoop->ptSrcArgs),
              CvtGetName(ptLoop->ptDstArgs));
      return -1;
    }
  }
  PushTempValue(nullptr);
  return 0;
}

// Joins the pieces with nothing between them: quotes, blanks and commas are part of the pieces.
int AssembleSql(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Arg *ptSqlList, MemPort ptMemNode,
                cvt::SqlText &sql) {
  int i = 0;
  for (Arg *ptArgs = ptSqlList; ptArgs != nullptr; ptArgs = ptArgs->ptNext) {
    const Value *ptValue = nullptr;
    CVT_NOT_NULL(ptValue = GetValue(ptSrcValueList, ptDstValueList, ptArgs, ptMemNode), -1);
    ++i;
    if (ptValue->nLen < 0 || (ptValue->nLen > 0 && ptValue->psValue == nullptr)) {
      CVT_ERR("Sql piece [%d] has no text: name a field that is no loop, or a constant with psValue", i);
      return -1;
    }
    sql.append(ptValue->psValue, static_cast<size_t>(ptValue->nLen));
  }
  return 0;
}

int CvtOraExecSql(char *psSql) {
  if (dbsExecute(psSql) == 0) return 0;
  CVT_ERR("CvtOraExecSql[%s] err!! sqlcode[%d:%s]", psSql, dbsSqlCode(), dbsErrStr());
  return -1;
}

// Copies the columns of the fetched row into the slots, as far as both reach.
int TakeColumns(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Arg *ptFieldList,
                MemPort ptMemNode) {
  const int nCount = dbsColumnCount();
  CVT_TRACE("Cvt Field Num[%d]", nCount);
  Arg *ptArgs = ptFieldList;
  for (int i = 0; i < nCount && ptArgs != nullptr; ++i, ptArgs = ptArgs->ptNext) {
    Value *ptValue = nullptr;
    CVT_NOT_NULL(ptValue = GetValue(ptSrcValueList, ptDstValueList, ptArgs, ptMemNode), -1);
    int nLen = 0;
    const char *const psColumn = dbsGetField(i, &nLen);
    if (psColumn == nullptr || nLen < 0) {
      CVT_ERR("CvtOraInq dbsGetField[%d] err!! sqlcode[%d:%s]", i, dbsSqlCode(), dbsErrStr());
      return -1;
    }
    auto *const psCopy = static_cast<char *>(cvtMalloc(nLen, ptMemNode));  // null for no bytes
    if (psCopy == nullptr && nLen > 0) return -1;                          // no pool node: already logged
    if (psCopy != nullptr) std::memcpy(psCopy, psColumn, static_cast<size_t>(nLen));
    ptValue->psValue = psCopy;
    ptValue->nLen = nLen;
    CVT_TRACE("  Field[%d][%.*s]", i, ptValue->nLen, ptValue->psValue);
  }
  return 0;
}

// Runs a query; its first row fills the slots. No row is not a failure: the slots keep what they hold.
int CvtOraInq(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, char *psSql, Arg *ptFieldList,
              MemPort ptMemNode) {
  constexpr int kNoData = -3001;
  CVT_TRACE("Cvt Sql[%s]", psSql);
  if (dbsPrepare(psSql) != 0) {
    CVT_ERR("CvtOraInq dbsPrepare err!! sql[%s] sqlcode[%d:%s]", psSql, dbsSqlCode(), dbsErrStr());
    return -1;
  }
  if (dbsOpen() != 0) {
    CVT_ERR("CvtOraInq dbsOpens err!! sql[%s] sqlcode[%d:%s]", psSql, dbsSqlCode(), dbsErrStr());
    return -1;
  }
  struct OpenCursor {
    ~OpenCursor() { dbsClose(); }
  } const cursor;
  const bool bBound = dbsColumnBuffer() == 0;
  const int nRet = bBound ? dbsFetch() : -1;
  if (nRet == kNoData) {
    CVT_ERR("Warning: sql[%s] not find data!!", psSql);
    return 0;
  }
  if (nRet != 0) {  // a row that cannot be fetched is reported like columns that cannot be bound
    CVT_ERR("CvtOraInq dbsColumnBuffer err!! sql[%s] sqlcode[%d:%s]", psSql, dbsSqlCode(), dbsErrStr());
    return -1;
  }
  return TakeColumns(ptSrcValueList, ptDstValueList, ptFieldList, ptMemNode);
}

int CvtSql(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Sql *ptLoop, MemPort ptMemNode) {
  CVT_NOT_NULL(ptLoop, -1);
  cvt::SqlText sql;
  if (AssembleSql(ptSrcValueList, ptDstValueList, ptLoop->ptSqlList, ptMemNode, sql) != 0) return -1;
  if (ptLoop->ptFieldList == nullptr) return CvtOraExecSql(sql.text());
  return CvtOraInq(ptSrcValueList, ptDstValueList, sql.text(), ptLoop->ptFieldList, ptMemNode);
}

// The first entry whose tag equals the value runs. Temporaries are kept between entries: the value is one.
int CvtMapping(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Mapping *ptMapping,
               MemPort ptMemNode) {
  CVT_NOT_NULL(ptMapping, -1);
  const Value *ptMapValue = nullptr;
  CVT_NOT_NULL(ptMapValue = GetValue(ptSrcValueList, ptDstValueList, ptMapping->ptMapArgs, ptMemNode), -1);
  for (const MappingList *p = ptMapping->ptList; p != nullptr; p = p->ptNext) {
    const Value *ptTagValue = nullptr;
    CVT_NOT_NULL(ptTagValue = GetValue(ptSrcValueList, ptDstValueList, p->ptTagArgs, ptMemNode), -1);
    if (!sameBytes(ptMapValue, ptTagValue)) continue;
    if (StructConvert(ptSrcValueList, ptDstValueList, p->ptActList, ptMemNode) != 0) {
      CVT_ERR("StructConvert err!!\n");
      return -1;
    }
    return 0;
  }
  return 0;
}

// One rule: its status, with the rule's own text logged on failure. Codes that are no rules do nothing.
int convertByRule(ValueListPort ptSrc, ValueListPort ptDst, const Arg *ptArg, MemPort ptMemNode) {
  int nRet = 0;
  const char *psFailed = nullptr;
  switch (ptArg->nType) {
    case CVT_TYPE_COPY:
      nRet = CvtCopy(ptSrc, ptDst, ruleOf<Copy>(ptArg), ptMemNode);
      psFailed = "CvtCopy Err!!";
      break;
    case CVT_TYPE_CASE:
      nRet = CvtCase(ptSrc, ptDst, ruleOf<Case>(ptArg), ptMemNode);
      psFailed = "CvtCase Err!!";
      break;
    case CVT_TYPE_LOOP:
      nRet = CvtLoop(ptSrc, ptDst, ruleOf<Loop>(ptArg), ptMemNode);
      psFailed = "CVT_TYPE_LOOP Err!!";
      break;
    case CVT_TYPE_SQL:
      nRet = CvtSql(ptSrc, ptDst, ruleOf<Sql>(ptArg), ptMemNode);
      psFailed = "CvtSql Err!!";
      break;
    case CVT_TYPE_MAPPING:
      nRet = CvtMapping(ptSrc, ptDst, ruleOf<Mapping>(ptArg), ptMemNode);
      psFailed = "CvtMapping err!!";
      break;
    default:
      break;
  }
  if (nRet != 0) CVT_ERR("%s", psFailed);
  return nRet;
}

int StructConvert(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Arg *ptArgs,
                  MemPort ptMemNode) {
  CVT_NOT_NULL(ptSrcValueList, -1);
  CVT_NOT_NULL(ptDstValueList, -1);
  int i = 0;
  for (const Arg *pt = ptArgs; pt != nullptr; pt = pt->ptNext) {
    ++i;
    const int nRet = convertByRule(ptSrcValueList, ptDstValueList, pt, ptMemNode);
    PushTempValue(nullptr);
    if (nRet != 0) {
      CVT_ERR("Do Convert Rule [%d] err!!", i);
      return -1;
    }
  }
  return 0;
}

}  // namespace

int cvtConvert(ValueListPort ptSrcValueList, ValueListPort ptDstValueList, Converter *ptConvert,
               MemPort ptMemNode) {
  CVT_NOT_NULL(ptConvert, -1);
  if (StructConvert(ptSrcValueList, ptDstValueList, ptConvert->ptArgs, ptMemNode) != 0) {
    CVT_ERR("Convert [%s] From struct[%s] tp Struct[%s] err!!", ptConvert->psName, ptConvert->psSrcStructName,
            ptConvert->psDstStructName);
    return -1;
  }
  return 0;
}

// --- Converter registry and the "Convert" section --------------------------------------------------------

struct Converter *cvtGetCvt(char *psName) {
  CVT_NOT_NULL(gptCvtGlobalInfo, nullptr);
  if (psName == nullptr) return nullptr;
  const StringList *const pt = f_cvtIndex.find(gptCvtGlobalInfo->ptCvtList, psName);
  return pt == nullptr ? nullptr : static_cast<Converter *>(pt->ptInfo);
}

char *cvtGetDst(Converter *ptConvert) {
  CVT_NOT_NULL(ptConvert, nullptr);
  return ptConvert->psDstStructName;
}

namespace {

int CvtInitCvt(char *psFileName) {
  sttAddFuncVoid(sttParseVoidcvt_message, sttGenVoidcvt_message);
  sttAddFuncVoid(sttParseVoidcvt_convert, sttGenVoidcvt_convert);
  auto *const ptConvert = static_cast<Converter *>(
      sttParseXmlFile(psFileName, cvt::bind::name("Convert"), cvt::bind::name("Converter"),
                      reinterpret_cast<void *>(sttParseXmlConverter)));
  if (ptConvert == nullptr) {
    CVT_ERR("Init Convert define: load file[%s] err!!", psFileName);
    return -1;
  }
  // The head is replaced even by null: a converter without a name forgets every converter loaded before.
  gptCvtGlobalInfo->ptCvtList =
      cvtStrAddStringList(gptCvtGlobalInfo->ptCvtList, ptConvert->psName, ptConvert);
  if (gptCvtGlobalInfo->ptCvtList == nullptr) {
    CVT_ERR("Add ptConvert[%s] to global define Err!!", ptConvert->psName);
    return -1;
  }
  return 0;
}

}  // namespace

void *cvtCvtInit(void *ptNode, char *) {
  NewCvtGlobalInfo();
  InitStack(kSpareTemporaries);
  nGRet = 0;
  gptCvtGlobalInfo->ptArgs = sttParseXmlCvtArgs(ptNode, cvt::bind::name("CvtArgs"));
  if (nGRet == -1) {
    CVT_ERR("Convert Args Get Err!!\n");
    return nullptr;
  }
  const CvtArgs *const ptArgs = gptCvtGlobalInfo->ptArgs;
  if (ptArgs != nullptr && ptArgs->psCvtPath != nullptr &&
      cvtIniParseDirXml(nullptr, ptArgs->psCvtPath, CvtInitCvt) != 0) {
    CVT_ERR("Convert Pare Path[%s] err!!", ptArgs->psCvtPath);
    nGRet = -1;
    return nullptr;
  }
  nGRet = 0;
  return gptCvtGlobalInfo;
}

// cvt_convert_bind.cpp: converter files: their records, and the names in them that become positions.
#include "cvt_convert_parts.h"

using cvt::convert::count;
using cvt::convert::GetNodeValueIndex;

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

int SetMsgInfoByName(char *psSrcName, char *psDstName, MsgInfo *ptMsgInfo) {
  CVT_NOT_NULL(ptMsgInfo, -1);
  CVT_NOT_NULL(gptCvtGlobalInfo, -1);
  const Msg *const ptSrc = cvtGetMsg(psSrcName);
  const Msg *const ptDst = ptSrc == nullptr ? nullptr : cvtGetMsg(psDstName);
  if (ptDst == nullptr) {
    CVT_ERR("Get Msg[%s] define info err!!", ptSrc == nullptr ? psSrcName : psDstName);
    return -1;
  }
  return ReSetMsgInfo(ptSrc->pptMessageIdx, ptDst->pptMessageIdx, ptMsgInfo);
}

// Entry nPos, or null behind the end: a node may have been resolved against another definition.
Message *nodeAt(Message **pptIndex, int nPos) {
  Message *ptNode = cvtIdxNode(pptIndex, 0);
  for (int i = 1; ptNode != nullptr && i <= nPos; ++i) ptNode = cvtIdxNode(pptIndex, i);
  return ptNode;
}

// What the other kinds keep in pInfo is a record of their format, and no LoopType.
bool hasOtherRecord(const Message *ptNode) {
  const StructAttr *const pt = ptNode->ptStructAttr;
  return pt != nullptr && pt->pInfo != nullptr && pt->nType != CVT_STRUCT_LOOP &&
         pt->nType != CVT_STRUCT_COUNTED;
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
  if (ptNode != nullptr && hasOtherRecord(ptNode)) {
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
  const FncConvert fCvtFunc = cvt::convert::findFunction(psFuncName);
  if (fCvtFunc == nullptr) {
    nGRet = -1;
    CVT_ERR("Funct[%s] is not find!!", psFuncName);
  }
  return fCvtFunc;
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

// cvt_identify.cpp: format pipelines, the standard steps, and the choice of a converter.
#include "cvt_identify.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

#include "cvt_guard.h"
#include "cvt_handle.h"
#include "cvt_heap.h"
#include "cvt_index.h"
#include "cvt_log.h"
#include "stt_bind.h"

FormatInfo *gptFormatInfo = nullptr;

namespace {

StringList *gptFuncList = nullptr;  // registered steps, newest first

cvt::ListIndex<StringList, &StringList::psString> f_stepIndex;
cvt::ListIndex<FormatInfo, &FormatInfo::psFormatId> f_formatIndex;

// --- Step names ------------------------------------------------------------------------------------------

struct BuiltInStep {
  const char *psName;
  FncIdFunction fStep;
  const char *psRecord;  // that it takes; null: it looks at none
};

constexpr BuiltInStep kBuiltInSteps[] = {
    {"pubParse", pubParse, "IdFunc"},
    {"pubNew", pubNew, "IdFunc"},
    {"pubGenerate", pubGenerate, nullptr},
    {"pubConvert", pubConvert, nullptr},
    {"GetIpcName", GetIpcName, "IpcNameArgs"},
    {"GetXmlNode", GetXmlNode, "XmlNameArgs"},
    {"SetMsgNameToBuf", SetMsgNameToBuf, "IpcNameArgs"},
    {"SetBufToBuf", SetBufToBuf, "MoveBufferArgs"},
    {"SetToOffset", SetToOffset, "SetOffsetArgs"},
};

const BuiltInStep *builtIn(const char *psFunctName) {
  const auto *const pt = std::find_if(
      std::begin(kBuiltInSteps), std::end(kBuiltInSteps),
      [&](const auto &step) { return psFunctName != nullptr && std::strcmp(step.psName, psFunctName) == 0; });
  return pt == std::end(kBuiltInSteps) ? nullptr : pt;
}

// The record that a step takes. Null: any; a registered step knows what it takes.
const char *recordOfStep(const char *psFunctName) {
  const BuiltInStep *const pt = builtIn(psFunctName);
  return pt == nullptr ? nullptr : pt->psRecord;
}

// Built-in steps go first: a registered step cannot replace one.
FncIdFunction GetIdFunc(char *psFunctName) {
  if (psFunctName == nullptr) {
    nGRet = -1;
    return nullptr;
  }
  const BuiltInStep *const ptBuiltIn = builtIn(psFunctName);
  if (ptBuiltIn != nullptr) return ptBuiltIn->fStep;
  const StringList *const pt = f_stepIndex.find(gptFuncList, psFunctName);
  if (pt == nullptr) {
    nGRet = -1;
    CVT_ERR("IdFunc[%s] Not Find!!", psFunctName);
    return nullptr;
  }
  return reinterpret_cast<FncIdFunction>(pt->ptInfo);
}

// The target format of a pair. The empty string marks the default, so leaving it out is refused.
char *GetTargetFormat(void *ptXmlNode) {
  char *const psFormatId = sttParseXmlString(ptXmlNode, cvt::bind::name("psFormatId"));
  if (psFormatId == nullptr) {
    CVT_ERR("[psFormatId] is NULL");
    nGRet = -1;
  }
  return psFormatId;
}

}  // namespace

int cvtIdAddFunction(char *psFuncName, FncIdFunction fCvtFunction) {
  // The head is replaced even by null: a null name or function forgets every step registered before.
  gptFuncList = cvtStrAddStringList(gptFuncList, psFuncName, reinterpret_cast<void *>(fCvtFunction));
  return 0;
}

// --- Bound records ---------------------------------------------------------------------------------------

// clang-format off
#define STT_TABLE_XmlNameArgs(F) \
  F(STRING, psNodeName)          \
  F(STRING, psFront)             \
  F(STRING, psBack)
STT_BIND(XmlNameArgs)

#define STT_TABLE_IpcNameArgs(F) \
  F(INT,    nOffset)             \
  F(INT,    nLen)                \
  F(STRING, psFront)             \
  F(STRING, psBack)
STT_BIND(IpcNameArgs)

#define STT_TABLE_MoveBufferArgs(F) \
  F(INT,    nSrcOffset)             \
  F(INT,    nSrcLen)                \
  F(INT,    nDstOffset)             \
  F(INT,    nDstAddFlag)            \
  F(STRING, psFront)                \
  F(STRING, psBack)
STT_BIND(MoveBufferArgs)

#define STT_TABLE_SetOffsetArgs(F) \
  F(CHAR, caMsgType)               \
  F(INT,  nOffset)                 \
  F(INT,  nSetType)
STT_BIND(SetOffsetArgs)

#define STT_TABLE_IdFunc(F) \
  F(STRING, psFunctName)    \
  F(VOID_OF, ptArg, recordOfStep(psFunctName)) \
  F(NEXT,   ptNext, IdFunc) \
  F(DERIVED, fIdFunction, GetIdFunc(psFunctName))
STT_BIND(IdFunc)

#define STT_TABLE_FormatInfo(F)   \
  F(STRING, psFormatId)           \
  F(STRUCT, ptParseFunc, IdFunc)  \
  F(STRUCT, ptGenFunc,   IdFunc)  \
  F(NEXT,   ptNext, FormatInfo)
STT_BIND(FormatInfo)

#define STT_TABLE_IdCvtInfo(F)                              \
  F(STRING_BY, psFormatId, GetTargetFormat(ptXmlNode))      \
  F(STRING, psCvtName)                                      \
  F(NEXT,   ptNext, IdCvtInfo)                              \
  F(FOUND,  ptConverter, cvtGetCvt(psCvtName))
STT_BIND(IdCvtInfo)

#define STT_TABLE_IdMsgInfo(F)       \
  F(STRING, psMsgName)               \
  F(STRUCT, ptIdCvtInfo, IdCvtInfo)  \
  F(NEXT,   ptNext, IdMsgInfo)
STT_BIND(IdMsgInfo)

#define STT_TABLE_CvtIdArgs(F) \
  F(STRING, psIdPath)          \
  F(STRING, psIdInfoPath)
STT_BIND(CvtIdArgs)

STT_BIND_MODULE(cvt_identify, STT_TYPE(XmlNameArgs), STT_TYPE(IpcNameArgs), STT_TYPE(MoveBufferArgs),
                STT_TYPE(SetOffsetArgs), STT_TYPE(IdFunc), STT_TYPE(FormatInfo), STT_TYPE(IdCvtInfo),
                STT_TYPE(IdMsgInfo), STT_TYPE(CvtIdArgs))
// clang-format on

// --- Running a chain -------------------------------------------------------------------------------------

namespace {

FormatInfo *GetFormatInfo(char *psFormatId) {
  CVT_NOT_NULL(psFormatId, nullptr);
  FormatInfo *pt = gptFormatInfo;
  if (f_formatIndex.follows(gptFormatInfo)) {
    pt = f_formatIndex.find(gptFormatInfo, psFormatId);
  } else {
    while (pt != nullptr && (pt->psFormatId == nullptr || std::strcmp(pt->psFormatId, psFormatId) != 0)) {
      pt = pt->ptNext;
    }
  }
  if (pt == nullptr) CVT_ERR("format id [%s] mot find!!", psFormatId);
  return pt;
}

int DoFuc(IdFunc *ptIdFunc, InnerMessage *ptSrcMsg, InnerMessage *ptDstMsg) {
  for (const IdFunc *p = ptIdFunc; p != nullptr; p = p->ptNext) {
    const FncIdFunction fIdFunction = p->fIdFunction;
    CVT_NOT_NULL(p->fIdFunction, -1);
    const int nRet =
        cvt::guarded("Step", p->psFunctName, [&] { return fIdFunction(ptSrcMsg, ptDstMsg, p->ptArg); });
    if (nRet != 0) {
      CVT_ERR("Do Func[%s] err!!", p->psFunctName);
      return -1;
    }
  }
  return 0;
}

}  // namespace

int fucParse(char *psFormatId, InnerMessage *ptInMsg, InnerMessage *ptVoid) {
  CVT_NOT_NULL(psFormatId, -1);
  FormatInfo *const ptInfo = GetFormatInfo(psFormatId);
  if (ptInfo == nullptr) {
    CVT_ERR("Get Message Formate [%s] Info err!!\n", psFormatId);
    return -1;
  }
  if (DoFuc(ptInfo->ptParseFunc, ptInMsg, ptVoid) != 0) {
    CVT_ERR("Formate[%s] Parse Err!!\n", psFormatId);
    return -1;
  }
  return 0;
}

// A failing chain is reported as a parse failure here, too: log watchers know this text. The function that
// logs it tells the two apart.
int fucGenerate(char *psFormatId, InnerMessage *ptSrcMsg, InnerMessage *ptDstMsg) {
  FormatInfo *const ptInfo = GetFormatInfo(psFormatId);
  if (ptInfo == nullptr) {
    CVT_ERR("Get Message Formate [%s] Info err!!\n", psFormatId);
    return -1;
  }
  if (DoFuc(ptInfo->ptGenFunc, ptSrcMsg, ptDstMsg) != 0) {
    CVT_ERR("Formate[%s] Parse Err!!\n", psFormatId);
    return -1;
  }
  return 0;
}

// --- Standard steps --------------------------------------------------------------------------------------

namespace {

// Whether the fall-back step for unknown names has done its work: it sets name and definition itself.
bool fallBack(const IdFunc *ptIdFunc, InnerMessage *ptInMsg) {
  const FncIdFunction fIdFunction = ptIdFunc->fIdFunction;
  return cvt::guarded("Step", ptIdFunc->psFunctName,
                      [&] { return fIdFunction(ptInMsg, nullptr, nullptr); }) == 0;
}

}  // namespace

int pubNew(InnerMessage *ptInMsg, InnerMessage *, void *ptArgs) {
  CVT_NOT_NULL(ptInMsg, -1);
  ptInMsg->ptMsgInfo = cvtGetMsg(ptInMsg->sMsgName);
  if (ptInMsg->ptMsgInfo == nullptr) {
    const auto *const ptIdFunc = static_cast<IdFunc *>(ptArgs);
    if (ptIdFunc != nullptr) CVT_NOT_NULL(ptIdFunc->fIdFunction, -1);
    if (ptIdFunc == nullptr || !fallBack(ptIdFunc, ptInMsg)) {
      CVT_ERR("Msg [%s] get define info err!!", ptInMsg->sMsgName);
      return -1;
    }
    CVT_NOT_NULL(ptInMsg->ptMsgInfo, -1);
  }
  const int nValueNum = ptInMsg->ptMsgInfo->nValueNum;
  ptInMsg->tValueListInfo.ptValueList = cvtGetValueList(nValueNum);
  if (ptInMsg->tValueListInfo.ptValueList == nullptr) {
    CVT_ERR("Msg[%s] get [%d]ValueList err!!", ptInMsg->sMsgName, nValueNum);
    return -1;
  }
  return 0;
}

int pubParse(InnerMessage *ptInMsg, InnerMessage *ptVoid, void *ptArgs) {
  CVT_NOT_NULL(ptInMsg, -1);
  const int nBound = pubNew(ptInMsg, ptVoid, ptArgs);
  if (nBound != 0) return nBound;
  CVT_NOT_NULL(ptInMsg->ptMsgInfo->fParse, -1);
  const FncParse fParse = ptInMsg->ptMsgInfo->fParse;
  const int nRet = cvt::guarded("Msg", ptInMsg->sMsgName, [&] {
    return fParse(ptInMsg->ptInfo, &ptInMsg->tValueListInfo, ptInMsg->ptMsgInfo, ptInMsg->psBuf,
                  &ptInMsg->nNowLen, ptInMsg->nLen);
  });
  if (nRet != 0) CVT_ERR("Msg[%s] Parse Buffer err!!", ptInMsg->sMsgName);
  return nRet;
}

namespace {

// The position that a format leaves is the length that the host takes the buffer to have. One that it has moved out
// of the buffer is refused.
bool endedInside(const InnerMessage *ptMsg, int nBefore) {
  const int nNow = ptMsg->nNowLen;
  if (nNow == nBefore || (nNow >= 0 && nNow <= ptMsg->nLen)) return true;
  CVT_ERR("Message[%s]: its format ended at [%d] of [%d] bytes: mend the plug-in", cvt::NameOf(ptMsg).text(),
          nNow, ptMsg->nLen);
  return false;
}

}  // namespace

int pubGenerate(InnerMessage *, InnerMessage *ptInMsg, void *) {
  CVT_NOT_NULL(ptInMsg, -1);
  CVT_NOT_NULL(ptInMsg->ptMsgInfo, -1);
  CVT_NOT_NULL(ptInMsg->ptMsgInfo->fGen, -1);
  const FncGenerate fGen = ptInMsg->ptMsgInfo->fGen;
  const int nBefore = ptInMsg->nNowLen;
  int nRet = cvt::guarded("Message", ptInMsg->ptMsgInfo->psMsgName, [&] {
    return fGen(nullptr, &ptInMsg->tValueListInfo, ptInMsg->ptMsgInfo, ptInMsg->psBuf, &ptInMsg->nNowLen,
                ptInMsg->nLen);
  });
  if (nRet == 0 && !endedInside(ptInMsg, nBefore)) nRet = -1;
  if (nRet != 0) CVT_ERR("Message[%s] generate to Buf err!!", cvt::NameOf(ptInMsg).text());
  return nRet;
}

// --- Choice of a converter, and the conversion step ------------------------------------------------------

namespace {

// The answers of a walk over one message's pair list, for the lists that the identification files gave. A pair
// that is put behind them is taken in at the next choice.
class Choices {
 public:
  explicit Choices(const IdCvtInfo *ptList) {
    if (ptList != nullptr) take(ptList);
    follow();
  }

  Converter *choose(const char *psFormatId) {
    follow();
    const auto it = m_byFormat.find(psFormatId);
    const IdCvtInfo *const pt = it != m_byFormat.end() ? it->second : m_ptDefault;
    return pt == nullptr ? nullptr : static_cast<Converter *>(pt->ptConverter);
  }

 private:
  void follow() {
    while (m_ptLast != nullptr && m_ptLast->ptNext != nullptr) take(m_ptLast->ptNext);
  }

  void take(const IdCvtInfo *pt) {
    m_ptLast = pt;
    if (pt->psFormatId == nullptr) return;
    if (*pt->psFormatId == 0) {
      m_ptDefault = pt;
    } else {
      m_byFormat.try_emplace(pt->psFormatId, pt);
    }
  }

  cvt::HashMap<std::string_view, const IdCvtInfo *> m_byFormat;  // the first pair of a format wins
  const IdCvtInfo *m_ptDefault = nullptr;                        // the last pair with an empty format id
  const IdCvtInfo *m_ptLast = nullptr;
};

// The walk itself, for a list that somebody else hung on the definition.
Converter *choose(const IdCvtInfo *ptList, const char *psFormatId) {
  Converter *ptDefault = nullptr;
  for (const IdCvtInfo *pt = ptList; pt != nullptr; pt = pt->ptNext) {
    const char *const psPairFormat = pt->psFormatId;
    if (psPairFormat == nullptr) continue;
    if (*psPairFormat == 0) {
      ptDefault = pt->ptConverter;
    } else if (std::strcmp(psPairFormat, psFormatId) == 0) {
      return pt->ptConverter;
    }
  }
  return ptDefault;
}

cvt::HashMap<const void *, Choices> f_choices;  // by loaded pair list

}  // namespace

Converter *cvtGetConvert(InnerMessage *ptInSrcMsg, InnerMessage *ptInDstMsg) {
  CVT_NOT_NULL(ptInSrcMsg, nullptr);
  CVT_NOT_NULL(ptInDstMsg, nullptr);
  CVT_NOT_NULL(ptInSrcMsg->ptMsgInfo, nullptr);
  const void *const pIdInfo = ptInSrcMsg->ptMsgInfo->pIdInfo;
  const auto known = f_choices.find(pIdInfo);
  Converter *const pt =
      known != f_choices.end()
          ? known->second.choose(ptInDstMsg->sMsgFormat)
          : choose(cvt::bind::isMisfit(pIdInfo) ? nullptr : static_cast<const IdCvtInfo *>(pIdInfo),
                   ptInDstMsg->sMsgFormat);
  if (pt == nullptr) CVT_ERR("Message Convert Format id [%s] not fond!!", ptInDstMsg->sMsgFormat);
  return pt;
}

int pubConvert(InnerMessage *ptSrtMsg, InnerMessage *ptDstMsg, void *) {
  CVT_NOT_NULL(ptSrtMsg, -1);
  CVT_NOT_NULL(ptDstMsg, -1);
  Converter *const ptConverter = cvtGetConvert(ptSrtMsg, ptDstMsg);
  if (ptConverter == nullptr) {
    CVT_ERR("Get convert Msg[%s] To Msg[%s] define info err!!", cvt::NameOf(ptSrtMsg).text(),
            ptDstMsg->sMsgFormat);
    return -1;
  }
  char *const psDstName = cvtGetDst(ptConverter);
  CVT_NOT_NULL(psDstName, -1);
  // The whole field may be filled: a name of 61 characters or more is left without a terminator. The
  // definition is found by the converter's own string, so a long name still finds it.
  std::memset(ptDstMsg->sMsgName, 0, sizeof ptDstMsg->sMsgName);
  std::memcpy(ptDstMsg->sMsgName, psDstName, std::min(std::strlen(psDstName), sizeof ptDstMsg->sMsgName));
  ptDstMsg->ptMsgInfo = cvtGetMsg(psDstName);
  if (ptDstMsg->ptMsgInfo == nullptr) {
    CVT_ERR("Msg [%s] get define info err!!", psDstName);
    return -1;
  }
  const int nValueNum = ptDstMsg->ptMsgInfo->nValueNum;
  ptDstMsg->tValueListInfo.ptValueList = cvtGetValueList(nValueNum);
  if (ptDstMsg->tValueListInfo.ptValueList == nullptr) {
    CVT_ERR("Msg [%s] get [%d]ValueList err!!", psDstName, nValueNum);
    return -1;
  }
  if (cvtConvert(ptSrtMsg->tValueListInfo.ptValueList, ptDstMsg->tValueListInfo.ptValueList, ptConverter,
                 ptDstMsg->tValueListInfo.ptMemNode) != 0) {
    CVT_ERR("cvtConvert err!!");
    return -1;
  }
  return 0;
}

// --- Buffer steps: the name out of the buffer, and pieces of buffers --------------------------------------
//
// Offsets and lengths are the configuration's word: nothing compares them with the buffers.

namespace {

// Bytes of a name that the naming steps write, with the terminator; the field itself has one more.
constexpr size_t kNameSize = 60;

// The record itself gets the empty texts, once.
template <class Args>
Args *withTexts(void *ptArgs) {
  static char f_sEmpty[] = "";
  auto *const pt = static_cast<Args *>(ptArgs);
  if (pt->psFront == nullptr) pt->psFront = f_sEmpty;
  if (pt->psBack == nullptr) pt->psBack = f_sEmpty;
  return pt;
}

// Writes to psTo and returns how many bytes these were.
int put(char *psTo, const char *psFrom, int nLen) {
  if (nLen > 0) std::memmove(psTo, psFrom, static_cast<size_t>(nLen));
  return nLen;
}

void move(int *pnNowLen, const SetOffsetArgs *ptArgs) {
  *pnNowLen = ptArgs->nSetType != 0 ? *pnNowLen + ptArgs->nOffset : ptArgs->nOffset;
}

}  // namespace

// The name is a slice of the buffer, counted from the current position; a zero byte ends it early.
int GetIpcName(InnerMessage *ptSrcMsg, InnerMessage *, void *ptArgs) {
  CVT_NOT_NULL(ptSrcMsg, -1);
  CVT_NOT_NULL(ptArgs, -1);
  const auto *const pt = withTexts<IpcNameArgs>(ptArgs);
  std::snprintf(ptSrcMsg->sMsgName, kNameSize, "%s%.*s%s", pt->psFront, pt->nLen,
                ptSrcMsg->psBuf + ptSrcMsg->nNowLen + pt->nOffset, pt->psBack);
  CVT_TRACE("Message Name[%s]", ptSrcMsg->sMsgName);
  return 0;
}

// The name is what stands between the first ">" behind a text and the next "<". Nothing is parsed: the first
// occurrence of the text counts, wherever it stands. The buffer must end with a zero byte.
int GetXmlNode(InnerMessage *ptSrcMsg, InnerMessage *, void *ptArgs) {
  CVT_NOT_NULL(ptSrcMsg, -1);
  CVT_NOT_NULL(ptArgs, -1);
  const auto *const ptXmlNameArgs = withTexts<XmlNameArgs>(ptArgs);
  CVT_NOT_NULL(ptXmlNameArgs->psNodeName, -1);
  const char *const psFound = std::strstr(ptSrcMsg->psBuf + ptSrcMsg->nNowLen, ptXmlNameArgs->psNodeName);
  const char *const psOpen = psFound == nullptr ? nullptr : std::strchr(psFound, '>');
  const char *const psEnd = psOpen == nullptr ? nullptr : std::strchr(psOpen, '<');
  if (psEnd == nullptr) {
    CVT_ERR("Xml have no Node[%s], err!!", ptXmlNameArgs->psNodeName);
    return -1;
  }
  std::snprintf(ptSrcMsg->sMsgName, kNameSize, "%s%.*s%s", ptXmlNameArgs->psFront,
                static_cast<int>(psEnd - psOpen - 1), psOpen + 1, ptXmlNameArgs->psBack);
  CVT_TRACE("Message Name[%s]", ptSrcMsg->sMsgName);
  return 0;
}

// Writes a slice of the source's name. The position moves by the whole text, also where the capacity cut it.
int SetMsgNameToBuf(InnerMessage *ptSrcMsg, InnerMessage *ptDstMsg, void *ptArgs) {
  CVT_NOT_NULL(ptSrcMsg, -1);
  CVT_NOT_NULL(ptDstMsg, -1);
  CVT_NOT_NULL(ptArgs, -1);
  const auto *const pt = withTexts<IpcNameArgs>(ptArgs);
  const cvt::NameOf name(ptSrcMsg);
  const int nRoom = std::max(ptDstMsg->nLen - ptDstMsg->nNowLen, 0);
  ptDstMsg->nNowLen +=
      std::snprintf(nRoom > 0 ? ptDstMsg->psBuf + ptDstMsg->nNowLen : nullptr, static_cast<size_t>(nRoom),
                    "%s%.*s%s", pt->psFront, pt->nLen, name.text() + pt->nOffset, pt->psBack);
  return 0;
}

// Front text, slice and back text are all written at the same position, each over the start of the one
// before, while their lengths add up. Configurations leave the texts out, or use this to patch a slice.
int SetBufToBuf(InnerMessage *ptSrcMsg, InnerMessage *ptDstMsg, void *ptArgs) {
  CVT_NOT_NULL(ptDstMsg, -1);
  CVT_NOT_NULL(ptArgs, -1);
  const auto *const pt = withTexts<MoveBufferArgs>(ptArgs);
  char *const psTo = ptDstMsg->psBuf + pt->nDstOffset;
  int nCount = put(psTo, pt->psFront, static_cast<int>(std::strlen(pt->psFront)));
  if (pt->nSrcLen != 0) {
    CVT_NOT_NULL(ptSrcMsg, -1);
    nCount += put(psTo, ptSrcMsg->psBuf + pt->nSrcOffset, pt->nSrcLen);
  }
  nCount += put(psTo, pt->psBack, static_cast<int>(std::strlen(pt->psBack)));
  if (pt->nDstAddFlag == 0) ptDstMsg->nNowLen += nCount;
  // The lengths may add up to more than was written, and than there is.
  const int nRoom = std::max(ptDstMsg->nLen - pt->nDstOffset, 0);
  CVT_TRACE("Add To Dst Message[%.*s]", std::clamp(nCount, 0, nRoom), psTo);
  return 0;
}

// What it did is logged at the level of errors: operators follow positions in the log of a running system.
int SetToOffset(InnerMessage *ptSrcMsg, InnerMessage *ptDstMsg, void *ptArgs) {
  CVT_NOT_NULL(ptArgs, -1);
  const auto *const pt = static_cast<const SetOffsetArgs *>(ptArgs);
  if (pt->caMsgType == 's' || pt->caMsgType == 'S') {
    CVT_NOT_NULL(ptSrcMsg, -1);
    move(&ptSrcMsg->nNowLen, pt);
    CVT_ERR("Set Src Message Offset to [%d]", ptSrcMsg->nNowLen);
  }
  if (pt->caMsgType == 'd' || pt->caMsgType == 'D') {
    CVT_NOT_NULL(ptDstMsg, -1);
    move(&ptDstMsg->nNowLen, pt);
    CVT_ERR("Set Dst Message Offset to [%d]", ptDstMsg->nNowLen);
  }
  return 0;
}

// --- The "Id" section ------------------------------------------------------------------------------------

namespace {

// Pipelines are replaced, not merged: of several files the one read last counts.
int IdInit(char *psFileName) {
  gptFormatInfo = nullptr;
  sttAddFuncVoid(sttParseVoidcvt_identify, sttGenVoidcvt_identify);
  gptFormatInfo = static_cast<FormatInfo *>(sttParseXmlFile(psFileName, cvt::bind::name("Id"),
                                                            cvt::bind::name("FormatInfo"),
                                                            reinterpret_cast<void *>(sttParseXmlFormatInfo)));
  if (gptFormatInfo == nullptr) {
    CVT_ERR("Parse Xml File To Identify Struct Err!!");
    return -1;
  }
  f_formatIndex.follow(gptFormatInfo);
  return 0;
}

int IdInfoInit(char *psFileName) {
  const auto *pt = static_cast<IdMsgInfo *>(sttParseXmlFile(psFileName, cvt::bind::name("IdInfo"),
                                                            cvt::bind::name("IdMsgInfo"),
                                                            reinterpret_cast<void *>(sttParseXmlIdMsgInfo)));
  if (pt == nullptr) {
    CVT_ERR("Parse Xml File To Identify Info Struct Err!!");
    return -1;
  }
  for (; pt != nullptr; pt = pt->ptNext) {
    Msg *const ptMsg = cvtGetMsg(pt->psMsgName);
    if (ptMsg == nullptr) {
      CVT_ERR("Message [%s] is not find !!", pt->psMsgName);
      return -1;
    }
    ptMsg->pIdInfo = pt->ptIdCvtInfo;
    f_choices.insert_or_assign(ptMsg->pIdInfo, Choices(pt->ptIdCvtInfo));
  }
  return 0;
}

}  // namespace

void *cvtIdInit(void *ptNode, char *) {
  nGRet = 0;
  CvtIdArgs *const ptArgs = sttParseXmlCvtIdArgs(ptNode, cvt::bind::name("CvtIdArgs"));
  if (nGRet == -1) {
    CVT_ERR("Id Args Get ERr!!");
    return nullptr;
  }
  if (ptArgs == nullptr) return nullptr;
  const struct {
    char *psPath;
    fnptr *fLoad;
  } directories[] = {{ptArgs->psIdPath, IdInit}, {ptArgs->psIdInfoPath, IdInfoInit}};
  for (const auto &directory : directories) {
    if (directory.psPath == nullptr) continue;
    if (cvtIniParseDirXml(nullptr, directory.psPath, directory.fLoad) == 0) continue;
    CVT_ERR("Parse Id File Err In[%s]!!\n", directory.psPath);
    nGRet = -1;
    return nullptr;
  }
  nGRet = 0;
  return ptArgs;
}

int cvtIdEnd() {
  gptFormatInfo = nullptr;
  gptFuncList = nullptr;
  f_stepIndex.clear();
  f_formatIndex.clear();
  f_choices.clear();
  return 0;
}

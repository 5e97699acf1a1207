// cvt.cpp: the message API: handles, fields by name, and repetitions.
#include "cvt.h"

#include <algorithm>
#include <cstring>

#include "cvt_guard.h"
#include "cvt_handle.h"
#include "cvt_log.h"

int gnMsgNum = 0;

// --- Handles
// ------------------------------------------------------------------------------------------------------------

namespace {

constexpr int kErrReload = -1;
constexpr int kErrNewHandle = -5;
constexpr int kErrNoDefinition = -6;
constexpr int kErrNoValueList = -7;
constexpr int kErrLength = -8;

char f_sOwnFormat[] = "02";  // the pipeline that writes a message in its own format

template <size_t nSize>
void copyName(char (&sField)[nSize], const char *psName) {
  if (psName != nullptr) std::memcpy(sField, psName, strnlen(psName, nSize - 1));
}

InnerMessage *newHandle(char *psName, char *psFormatId, char *psBuf, int nLen) {
  MemNode *const ptNode = cvtMemNewNode();
  auto *const ptMsg = static_cast<InnerMessage *>(cvtMalloc(sizeof(InnerMessage), ptNode));
  if (ptMsg == nullptr) return nullptr;
  copyName(ptMsg->sMsgName, psName);
  copyName(ptMsg->sMsgFormat, psFormatId);
  ptMsg->psBuf = psBuf;
  ptMsg->nLen = nLen;
  ptMsg->tValueListInfo.ptMemNode = ptNode;
  ++gnMsgNum;
  return ptMsg;
}

// Handles point into the definitions, so a reload waits until none is alive.
int autoReload() {
  const int nRet = gnMsgNum <= 0 ? cvtInitReload() : 0;
  if (nRet != 0) CVT_ERR("AutoReload err!! Please Check Config File!!");
  return nRet;
}

// What "%.*s" may print of a buffer: a negative precision would mean all of it.
int printable(const char *psBuf, int nLen) {
  return psBuf == nullptr ? 0 : std::max(nLen, 0);
}

}  // namespace

InnerMessage *cvtInitMessasge(char *psMessageName, char *psFormatId, char *psBuf, int nBufLen, int *pnError) {
  CVT_NOT_NULL(pnError, nullptr);
  *pnError = kErrReload;
  if (autoReload() != 0) return nullptr;
  CVT_TRACE("parse [%s:%s][%.*s]", psMessageName, psFormatId, printable(psBuf, nBufLen), psBuf);
  InnerMessage *const ptMsg = newHandle(psMessageName, psFormatId, psBuf, nBufLen);
  if (ptMsg == nullptr) {
    CVT_ERR("Msg[%s] New Struct err !!", psMessageName);
    return nullptr;
  }
  const int nRet = fucParse(psFormatId, ptMsg, nullptr);
  if (nRet != 0) {
    CVT_ERR("Msg[%s] parse buffer err!!", psMessageName);
    cvtFreeMessage(ptMsg);
    *pnError = nRet;
    return nullptr;
  }
  *pnError = 0;
  return ptMsg;
}

InnerMessage *cvtParseMessasge(char *psFormatId, char *psBuf, int nBufLen, int *pnError) {
  CVT_NOT_NULL(pnError, nullptr);
  *pnError = kErrReload;
  if (autoReload() != 0) return nullptr;
  CVT_TRACE("parse [%s][%.*s]", psFormatId, printable(psBuf, nBufLen), psBuf);
  InnerMessage *const ptMsg = newHandle(nullptr, psFormatId, psBuf, nBufLen);
  if (ptMsg == nullptr) {
    CVT_ERR("New Msg Struct err !!");
    return nullptr;
  }
  const int nRet = fucParse(psFormatId, ptMsg, nullptr);
  if (nRet != 0) {
    CVT_ERR("Msg[%s] parse buffer err!!", ptMsg->sMsgName);
    cvtFreeMessage(ptMsg);
    *pnError = nRet;
    return nullptr;
  }
  *pnError = 0;
  // The message is usable although the lengths differ: the caller gets it, and the code says so.
  if (ptMsg->nLen != ptMsg->nNowLen) {
    CVT_ERR("Message Len[%d] > Message Define Len[%d]", ptMsg->nLen, ptMsg->nNowLen);
    *pnError = kErrLength;
  }
  return ptMsg;
}

InnerMessage *cvtGenerateMessasge(InnerMessage *ptSrcMsg, char *psCvtFormatId, char *psBuf, int *pnBufLen,
                                  int *pnError) {
  CVT_NOT_NULL(pnError, nullptr);
  CVT_NOT_NULL(ptSrcMsg, nullptr);
  CVT_NOT_NULL(pnBufLen, nullptr);
  *pnError = kErrReload;
  InnerMessage *const ptDstMsg = newHandle(nullptr, psCvtFormatId, psBuf, *pnBufLen);
  if (ptDstMsg == nullptr) {
    CVT_ERR("New Msg Struct err !!");
    return nullptr;
  }
  const int nRet = fucGenerate(psCvtFormatId, ptSrcMsg, ptDstMsg);
  if (nRet != 0) {
    *pnError = nRet;
    CVT_ERR("Generate Message[%s] err!!", cvt::NameOf(ptDstMsg).text());
    cvtFreeMessage(ptDstMsg);
    return nullptr;
  }
  *pnBufLen = ptDstMsg->nNowLen;
  *pnError = 0;
  // Steps may set a position behind the buffer: it is told, but not read.
  const int nWritten = std::min(ptDstMsg->nNowLen, ptDstMsg->nLen);
  CVT_TRACE("Generate Len[%d] [%.*s]", ptDstMsg->nNowLen, printable(psBuf, nWritten), psBuf);
  return ptDstMsg;
}

InnerMessage *cvtNewMessage(char *psMsgId, char *psFormatId, int *pnError) {
  CVT_NOT_NULL(psMsgId, nullptr);
  CVT_NOT_NULL(pnError, nullptr);
  if (autoReload() != 0) return nullptr;
  InnerMessage *const ptMsg = newHandle(psMsgId, psFormatId, nullptr, 0);
  if (ptMsg == nullptr) {
    *pnError = kErrNewHandle;
    CVT_ERR("New Inner Message struct err!!");
    return nullptr;
  }
  ptMsg->ptMsgInfo = cvtGetMsg(psMsgId);
  if (ptMsg->ptMsgInfo == nullptr) {
    *pnError = kErrNoDefinition;
    CVT_ERR("Msg [%s] Get define info err!!", psMsgId);
    cvtFreeMessage(ptMsg);
    return nullptr;
  }
  const int nValueNum = ptMsg->ptMsgInfo->nValueNum;
  ptMsg->tValueListInfo.ptValueList = cvtGetValueList(nValueNum);
  if (ptMsg->tValueListInfo.ptValueList == nullptr) {
    *pnError = kErrNoValueList;
    CVT_ERR("Msg[%s] Get [%d]ValueList err!!", psMsgId, nValueNum);
    cvtFreeMessage(ptMsg);
    return nullptr;
  }
  return ptMsg;
}

int cvtGenMessage(InnerMessage *ptMessage, char *psOutBuf, int *pnOutBufLen) {
  CVT_NOT_NULL(ptMessage, -1);
  CVT_NOT_NULL(psOutBuf, -1);
  CVT_NOT_NULL(pnOutBufLen, -1);
  ptMessage->psBuf = psOutBuf;
  ptMessage->nLen = *pnOutBufLen;
  ptMessage->nNowLen = 0;
  const int nRet = fucGenerate(f_sOwnFormat, nullptr, ptMessage);
  if (nRet != 0) {
    CVT_ERR("Msg[%s] generate to buffer err!!", cvt::NameOf(ptMessage).text());
    return nRet;
  }
  *pnOutBufLen = ptMessage->nNowLen;
  return 0;
}

int cvtFreeMessage(InnerMessage *ptMessage) {
  if (ptMessage == nullptr) {
    CVT_ERR("Warning !! cvtFreeMessage ptMessage is NULL!!");
    return 0;
  }
  --gnMsgNum;
  const cvt::NameOf name(ptMessage);
  if (ptMessage->ptMsgInfo != nullptr && cvtFreeValue(ptMessage->tValueListInfo.ptValueList) != 0) {
    CVT_ERR("Msg[%s] cvtFreeValue err!!", name.text());
    return -1;
  }
  MemNode *const ptNode = ptMessage->tValueListInfo.ptMemNode;
  if (cvtIsDebug() != 0) {
    CVT_TRACE("Delete Message[%s] Memory Node", name.text());
    cvtMemPrintNode(ptNode);
  }
  if (cvtMemDelNode(ptNode) != 0) {
    CVT_ERR("Msg[%s] free Memory Node err!!", name.text());
    return -1;
  }
  return 0;
}

int cvtConvertMessage(char *, char *, char *, int, char *, char *, int *) {
  return 0;
}

// --- Names of fields and loops
// ----------------------------------------------------------------------------------------

namespace {

constexpr int kErrUnknownLoop = -3;
constexpr int kErrField = -11;
constexpr int kErrLoopValues = -13;
constexpr int kErrName = -14;
constexpr int kErrRange = -15;

constexpr int kLoopNameSize = 1024;  // the longest loop name accepted, in bytes

// A name split at its dots: the last part is the field, the one before it the loop; anything before is
// ignored.
struct SplitName {
  char sLoop[kLoopNameSize + 1] = {};
  char *psField = nullptr;  // points into the given name; null: the loop name is too long
};

// Copies the loop part into psNodeName and returns the field part; null when the loop part is too long.
char *GetLoopNodeName(char *psName, char *psNodeName, int nNodeNameLen) {
  char *const psLastDot = std::strrchr(psName, '.');
  if (psLastDot == nullptr) return psName;
  const char *psStart = psLastDot;
  while (psStart > psName && psStart[-1] != '.') --psStart;
  const auto nLen = psLastDot - psStart;
  if (nLen > nNodeNameLen) return nullptr;
  std::memcpy(psNodeName, psStart, static_cast<size_t>(nLen));
  return psLastDot + 1;
}

// Fills tName; false when the loop name is too long, which the caller reports.
bool split(char *psName, SplitName &tName) {
  tName.psField = GetLoopNodeName(psName, tName.sLoop, kLoopNameSize);
  return tName.psField != nullptr;
}

// Where a name leads.
struct LoopValueInfo {
  ValueListPort ptValueListPort;
  int nIndex;
};

ValueListPort GetLoopValueListByMessage(ValueListPort ptList, Message *ptLoopNode, int nLoopIndex) {
  const int nTime = cvtGetLoopCurrentTime(ptLoopNode);
  if (nTime < 0) {
    CVT_ERR("Loop Node [%s] Index was not set!!", ptLoopNode->psNodeName);
    return nullptr;
  }
  ValueListPort ptLoopList = cvtGetLoopValueList(ptList, nLoopIndex, nTime);
  if (ptLoopList == nullptr) {
    CVT_ERR("Loop Node[%s] Get Loop Index[%d] err!!", ptLoopNode->psNodeName, nTime);
  }
  return ptLoopList;
}

int GetMessageIndexInLoopIndex(Message *ptLoopNode, char *psFieldName) {
  Message **const pptIdx = cvtLoopGetIdx(ptLoopNode);
  if (pptIdx == nullptr) {
    CVT_ERR("Loop Node[%s] Define err!!", ptLoopNode->psNodeName);
    return kErrField;
  }
  const int nIndex = cvtGetNodeIdx(pptIdx, psFieldName);
  if (nIndex < 0) {
    CVT_ERR("Child Node[%s] Index Get Err!!", psFieldName);
    return kErrField;
  }
  return nIndex;
}

int GetLoopValueInfoStruct(InnerMessage *ptMsg, char *psNodeName, char *psFieldName,
                           LoopValueInfo *ptLoopValueInfo) {
  Message **const pptIdx = ptMsg->ptMsgInfo->pptMessageIdx;
  ValueListPort ptList = ptMsg->tValueListInfo.ptValueList;
  if (*psNodeName == 0) {
    const int nIndex = cvtGetNodeIdx(pptIdx, psFieldName);
    if (nIndex < 0) {
      CVT_ERR("Get Message[%s] Index err!!", psFieldName);
      return kErrField;
    }
    *ptLoopValueInfo = {ptList, nIndex};
    return 0;
  }
  const int nLoopIndex = cvtGetNodeIdx(pptIdx, psNodeName);
  if (nLoopIndex < 0) {
    CVT_ERR("Node [%s] was not define!!", psNodeName);
    return kErrLoopValues;
  }
  Message *const ptLoopNode = cvtIdxNode(pptIdx, nLoopIndex);
  ValueListPort ptLoopList = GetLoopValueListByMessage(ptList, ptLoopNode, nLoopIndex);
  if (ptLoopList == nullptr) {
    CVT_ERR("Get Message[%s] Loop Vlaue List err!!", psNodeName);
    return kErrLoopValues;
  }
  const int nIndex = GetMessageIndexInLoopIndex(ptLoopNode, psFieldName);
  if (nIndex < 0) {
    CVT_ERR("Get Message[%s] Index In[%s] err!!", psFieldName, psNodeName);
    return kErrField;
  }
  *ptLoopValueInfo = {ptLoopList, nIndex};
  return 0;
}

Value *GetValueInLoopNodeListByNodeName(InnerMessage *ptMsg, char *psNodeName, char *psFieldName,
                                        int *pnError) {
  LoopValueInfo tInfo{};
  *pnError = GetLoopValueInfoStruct(ptMsg, psNodeName, psFieldName, &tInfo);
  if (*pnError != 0) {
    CVT_ERR("Node [%s] was not define!!", psNodeName);
    return nullptr;
  }
  Value *const ptValue = cvtGetListValue(tInfo.ptValueListPort, tInfo.nIndex);
  if (ptValue == nullptr) {
    CVT_ERR("Child Node[%s] Get value Err!!", psFieldName);
    *pnError = -1;
  }
  return ptValue;
}

}  // namespace

// --- Fields by name
// -----------------------------------------------------------------------------------------------------

Value *cvtGetNameValue(InnerMessage *ptMsg, char *psValueName, int *pnError) {
  CVT_NOT_NULL(ptMsg, nullptr);
  CVT_NOT_NULL(ptMsg->ptMsgInfo, nullptr);
  CVT_NOT_NULL(psValueName, nullptr);
  CVT_NOT_NULL(pnError, nullptr);
  if (const FncGetNameValue fGetValue = ptMsg->ptMsgInfo->fGetValue) {
    Value *ptValue = nullptr;
    const int nRet = cvt::guarded("Msg", ptMsg->ptMsgInfo->psMsgName, [&] {
      ptValue = fGetValue(ptMsg->ptMsgInfo, &ptMsg->tValueListInfo, psValueName, pnError);
      return 0;
    });
    if (nRet != 0) *pnError = nRet;
    return ptValue;
  }
  SplitName tName;
  if (!split(psValueName, tName)) {
    *pnError = kErrName;
    CVT_ERR("Loop Field Name[%s] is too long", psValueName);
    return nullptr;
  }
  Value *const ptValue = GetValueInLoopNodeListByNodeName(ptMsg, tName.sLoop, tName.psField, pnError);
  if (ptValue == nullptr) CVT_ERR("GetValueInLoopNodeListByNodeName Err!!");
  return ptValue;
}

int cvtSetNameValue(InnerMessage *ptMessage, char *psValueName, char *psValue, int nLen) {
  CVT_NOT_NULL(ptMessage, -1);
  CVT_NOT_NULL(psValueName, -1);
  CVT_NOT_NULL(psValue, -1);
  CVT_NOT_NULL(ptMessage->ptMsgInfo, -1);
  if (const FncSetNameValue fSetValue = ptMessage->ptMsgInfo->fSetValue) {
    return cvt::guarded("Msg", ptMessage->ptMsgInfo->psMsgName, [&] {
      return fSetValue(ptMessage->ptMsgInfo, &ptMessage->tValueListInfo, psValueName, psValue, nLen);
    });
  }
  if (nLen < 0) {
    CVT_ERR("Field[%s] value length [%d] < 0", psValueName, nLen);
    return -1;
  }
  SplitName tName;
  int nError = kErrName;
  Value *ptValue = nullptr;
  if (split(psValueName, tName)) {
    ptValue = GetValueInLoopNodeListByNodeName(ptMessage, tName.sLoop, tName.psField, &nError);
  } else {
    CVT_ERR("Loop Field Name[%s] is too long", psValueName);
  }
  if (ptValue == nullptr) {
    CVT_ERR("Field[%s] get value err!!", psValueName);
    return nError;
  }
  auto *const psCopy = static_cast<char *>(cvtMalloc(nLen, ptMessage->tValueListInfo.ptMemNode));
  if (psCopy == nullptr && nLen > 0) return -1;  // no pool node: already logged
  if (nLen > 0) std::memcpy(psCopy, psValue, static_cast<size_t>(nLen));
  ptValue->psValue = psCopy;
  ptValue->nLen = nLen;
  return 0;
}

// --- Repetitions
// --------------------------------------------------------------------------------------------------------

namespace {

// A loop inside a loop keeps its list in each outer repetition. Its slot in the message's own list is a view:
// filled from the current outer repetition before the work, copied back where the work may have changed it.
struct NestedView {
  Value *ptOuter = nullptr;  // the loop's slot in the current outer repetition; null for an outermost loop
  Value *ptView = nullptr;   // its slot in the message's list

  void copyBack() const {
    if (ptOuter != nullptr) *ptOuter = *ptView;
  }
};

// Opens the view. 0; or nOuterError (0: the look-up's own code) when the outer value is missing, or -11
// without a view.
int SetLoopValueListToMsg(InnerMessage *ptMsg, SplitName &tName, int nIndex, int nOuterError,
                          NestedView &view) {
  if (tName.sLoop[0] == 0) return 0;
  int nError = 0;
  view.ptOuter = GetValueInLoopNodeListByNodeName(ptMsg, tName.sLoop, tName.psField, &nError);
  if (view.ptOuter == nullptr) {
    CVT_ERR("Field[%s] Get value Err!!", tName.psField);
    return nOuterError != 0 ? nOuterError : nError;
  }
  view.ptView = cvtGetListValue(ptMsg->tValueListInfo.ptValueList, nIndex);
  if (view.ptView == nullptr) {
    CVT_ERR("Child Node[%s] Get value Err!!", tName.psField);
    return kErrField;
  }
  *view.ptView = *view.ptOuter;
  return 0;
}

int SetLoopTimeAndCheck(InnerMessage *ptMsg, int nIndex, int nLoopTime) {
  const int nCount = cvtGetLoopValueListNum(ptMsg->tValueListInfo.ptValueList, nIndex);
  if (nCount < 0) {
    CVT_ERR("Get Filed Max Loop Time Err!!");
    return kErrLoopValues;
  }
  // One past the last repetition is accepted, for callers that add the next one there.
  if (nLoopTime < 0 || nLoopTime > nCount) return kErrRange;
  const int nRet = cvtSetLoopCurrentTime(cvtIdxNode(ptMsg->ptMsgInfo->pptMessageIdx, nIndex), nLoopTime);
  if (nRet != 0) CVT_ERR("Node Set Loop Index err!!");
  return nRet;
}

int AddLoopTime(InnerMessage *ptMsg, int nIndex) {
  Message *const ptLoopNode = cvtIdxNode(ptMsg->ptMsgInfo->pptMessageIdx, nIndex);
  ValueListPort ptList = ptMsg->tValueListInfo.ptValueList;
  const int nFieldNum = cvtLoopGetFieldNum(ptLoopNode);
  if (nFieldNum < 0) {
    CVT_ERR("Get Loop Field Num err!!");
    return kErrField;
  }
  // A full loop is not an error here: nothing is added, and the last repetition becomes current.
  cvtNewLoopValueList(ptList, nIndex, nFieldNum);
  const int nCount = cvtGetLoopValueListNum(ptList, nIndex);
  if (nCount < 0) {
    CVT_ERR("Get Filed Max Loop Time Err!!");
    return kErrLoopValues;
  }
  if (cvtSetLoopCurrentTime(ptLoopNode, nCount - 1) != 0) {
    CVT_ERR("Node Set Loop Index err!!");
    return -1;
  }
  return 0;
}

int AddLoopTimeAndSetToValueList(InnerMessage *ptMsg, SplitName &tName, int nIndex) {
  NestedView view;
  const int nOpened = SetLoopValueListToMsg(ptMsg, tName, nIndex, 0, view);
  if (nOpened != 0) return nOpened;
  const int nRet = AddLoopTime(ptMsg, nIndex);
  if (nRet != 0) {
    CVT_ERR("AddLoopTime err!!");
    return nRet;
  }
  view.copyBack();
  return 0;
}

}  // namespace

int cvtSetLoopTime(InnerMessage *ptMsg, char *psLoopName, int nLoopTime) {
  CVT_NOT_NULL(ptMsg, -1);
  CVT_NOT_NULL(psLoopName, -1);
  CVT_NOT_NULL(ptMsg->ptMsgInfo, -1);
  SplitName tName;
  if (!split(psLoopName, tName)) {
    CVT_ERR("Loop Field Name[%s] is too long", psLoopName);
    return kErrName;
  }
  const int nIndex = cvtGetNodeIdx(ptMsg->ptMsgInfo->pptMessageIdx, tName.psField);
  // The test lets -1 pass, so an unknown loop is not caught here: it fails below, with -13 for an outermost
  // loop and -11 for an inner one. Callers know these codes.
  if (nIndex < -1) {
    CVT_ERR("Node [%s] was not define!!", tName.psField);
    return kErrUnknownLoop;
  }
  NestedView view;
  int nRet = SetLoopValueListToMsg(ptMsg, tName, nIndex, kErrField, view);
  if (nRet != 0) {
    CVT_ERR("Restore Node[%s] Value Index err!!", tName.psField);
    return nRet;
  }
  nRet = SetLoopTimeAndCheck(ptMsg, nIndex, nLoopTime);
  if (nRet != 0) CVT_ERR("Node[%s] Set Loop Index err!!", tName.psField);
  return nRet;
}

int cvtGetLoopTime(InnerMessage *ptMsg, char *psLoopName) {
  CVT_NOT_NULL(ptMsg, kErrName);
  CVT_NOT_NULL(psLoopName, kErrName);
  CVT_NOT_NULL(ptMsg->ptMsgInfo, kErrName);
  SplitName tName;
  if (!split(psLoopName, tName)) {
    CVT_ERR("Loop Field Name[%s] is too long", psLoopName);
    return kErrName;
  }
  LoopValueInfo tInfo{};
  if (GetLoopValueInfoStruct(ptMsg, tName.sLoop, tName.psField, &tInfo) != 0) {
    CVT_ERR("Node [%s] was not define!!", tName.psField);
    return kErrName;
  }
  const int nCount = cvtGetLoopValueListNum(tInfo.ptValueListPort, tInfo.nIndex);
  if (nCount < 0) {
    CVT_ERR("Node[%s] Get Time Err!!", tName.psField);
    return kErrName;
  }
  return nCount;
}

int cvtAddLoopTime(InnerMessage *ptMsg, char *psLoopName) {
  CVT_NOT_NULL(ptMsg, -1);
  CVT_NOT_NULL(psLoopName, -1);
  CVT_NOT_NULL(ptMsg->ptMsgInfo, -1);
  SplitName tName;
  if (!split(psLoopName, tName)) {
    CVT_ERR("Loop Field Name[%s] is too long", psLoopName);
    return kErrName;
  }
  const int nIndex = cvtGetNodeIdx(ptMsg->ptMsgInfo->pptMessageIdx, tName.psField);
  if (nIndex < 0) {
    CVT_ERR("Node [%s] was not define!!", tName.psField);
    return kErrUnknownLoop;
  }
  const int nRet = AddLoopTimeAndSetToValueList(ptMsg, tName, nIndex);
  if (nRet != 0) CVT_ERR("Node[%s] Set Loop Index err!!", tName.psField);
  return nRet;
}

// cvt_message.cpp: the registry of definitions and formats, and value lists.
#include "cvt_message.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

#include "cvt_definition.h"
#include "cvt_guard.h"
#include "cvt_heap.h"
#include "cvt_index.h"
#include "cvt_log.h"
#include "stt_bind.h"

CvtFmtGlobalInfo *gptFmtGlobalInfo = nullptr;
ValueList *gptFreeValue = nullptr;
ValueList *gptLoopValue = nullptr;
int gnMaxValueNum = 0;

namespace {

using StringIndex = cvt::ListIndex<StringList, &StringList::psString>;

StringIndex f_msgIndex;
StringIndex f_initIndex;

CvtFmtGlobalInfo *NewFmtGlobalInfo() {
  if (gptFmtGlobalInfo == nullptr) {
    gptFmtGlobalInfo = static_cast<CvtFmtGlobalInfo *>(cvtMemMalloc(sizeof(CvtFmtGlobalInfo)));
  }
  return gptFmtGlobalInfo;
}

// --- Definition files --------------------------------------------------------------------------------------

// The registered definition named like the file: the part between the last "/" and the last ".". The cut is
// made in the caller's string and taken back.
Msg *MsgGetMsgByFileName(char *psFileName) {
  char *const psSlash = std::strrchr(psFileName, '/');
  char *const psBase = psSlash == nullptr ? psFileName : psSlash + 1;
  char *const psDot = std::strrchr(psFileName, '.');
  if (psDot == nullptr) return cvtGetMsg(psBase);
  *psDot = 0;
  Msg *const ptMsg = cvtGetMsg(psBase);
  *psDot = '.';
  return ptMsg;
}

int FmtAddMsg(Msg *ptMsg) {
  StringList *const ptList = cvtStrAddStringList(gptFmtGlobalInfo->ptMsgList, ptMsg->psMsgName, ptMsg);
  gptFmtGlobalInfo->ptMsgList = ptList;
  if (ptList == nullptr) {
    CVT_ERR("Init Ipc Struct[%s]: Add Msg to global define Err!!", ptMsg->psMsgName);
  }
  return 0;
}

// The files being read, each referred to by the one before it.
cvt::Vector<cvt::String> f_reading;

// Every file takes some kilobytes of the stack while it waits for the one it refers to.
constexpr size_t kMostReading = 256;

class Reading {
 public:
  explicit Reading(const char *psFileName) { f_reading.emplace_back(psFileName); }
  ~Reading() { f_reading.pop_back(); }
  Reading(const Reading &) = delete;
  Reading &operator=(const Reading &) = delete;
};

// Whether a file may be read from within those being read. One that is among them would be read for ever.
bool mayRead(const char *psFileName) {
  const auto first = std::find(f_reading.begin(), f_reading.end(), psFileName);
  if (first == f_reading.end() && f_reading.size() < kMostReading) return true;
  if (first == f_reading.end()) {
    CVT_ERR("File[%s]: more than [%zu] definitions refer one to the next: make the chain shorter", psFileName,
            kMostReading);
    return false;
  }
  for (auto it = first + 1; it != f_reading.end(); ++it)
    CVT_ERR("File[%s] refers to [%s]", (it - 1)->c_str(), it->c_str());
  CVT_ERR("File[%s] refers to [%s], which is being read: take one of these references out",
          f_reading.back().c_str(), psFileName);
  return false;
}

int FmtParseMessage(CvtFmtArgs *ptArgs) {
  if (ptArgs == nullptr) return 0;
  for (const PathList *pt = ptArgs->ptMsgList; pt != nullptr; pt = pt->ptNext) {
    gptFmtGlobalInfo->psCurrentPath = pt->psPath;
    if (cvtIniParseDirXml(nullptr, pt->psPath, cvt::FmtMsgInit) != 0) {
      CVT_ERR("Message Parse Dir[%s] err!!", pt->psPath);
      return -1;
    }
  }
  return 0;
}

}  // namespace

namespace cvt {

int FmtMsgInit(char *psFileName) {
  CVT_NOT_NULL(psFileName, -1);
  if (MsgGetMsgByFileName(psFileName) != nullptr) return 1;
  if (!mayRead(psFileName)) return -1;
  const Reading reading(psFileName);
  auto *const ptMsg = static_cast<Msg *>(sttParseBySttInfo(psFileName));
  if (ptMsg == nullptr) {
    CVT_ERR("File[%s] Parse Err!!", psFileName);
    return -1;
  }
  return FmtAddMsg(ptMsg);
}

int initFormat(char *psFormat, Msg *ptMsg) {
  if (gptFmtGlobalInfo == nullptr || psFormat == nullptr) return 0;
  const StringList *const pt = f_initIndex.find(gptFmtGlobalInfo->ptInitList, psFormat);
  if (pt == nullptr) return 0;
  const auto fInit = reinterpret_cast<FncFotmatInit>(pt->ptInfo);
  return guarded("Format", psFormat, [&] { return fInit(ptMsg); });
}

}  // namespace cvt

// --- Registry ----------------------------------------------------------------------------------------------

int cvtFmtAddPlug(char *psName, sttFncParseVoid fpParseVoid, sttFncGenVoid fpGenVoid, FncFotmatInit fpInit) {
  NewFmtGlobalInfo();
  sttAddSttInfo(psName, cvtSttInitMessage);
  sttAddVoidFunctionToSttInfo(psName, fpParseVoid, fpGenVoid);
  sttAddVoidFunctionToSttInfo(psName, sttParseVoidcvt_struct_loop, sttGenVoidcvt_struct_loop);
  sttAddVoidFunctionToSttInfo(psName, sttParseVoidcvt_message, sttGenVoidcvt_message);
  // The head is replaced even by null: a format without initialiser empties the list. A plug-in must pass
  // one.
  gptFmtGlobalInfo->ptInitList =
      cvtStrAddStringList(gptFmtGlobalInfo->ptInitList, psName, reinterpret_cast<void *>(fpInit));
  return 0;
}

Msg *cvtGetMsg(char *psName) {
  CVT_NOT_NULL(gptFmtGlobalInfo, nullptr);
  if (psName == nullptr) return nullptr;
  const StringList *const pt = f_msgIndex.find(gptFmtGlobalInfo->ptMsgList, psName);
  return pt == nullptr ? nullptr : static_cast<Msg *>(pt->ptInfo);
}

int cvtFmtEnd() {
  gptFmtGlobalInfo = nullptr;
  gptFreeValue = nullptr;
  gptLoopValue = nullptr;
  f_msgIndex.clear();
  f_initIndex.clear();
  cvt::forgetNames();
  return 0;
}

// --- Value lists -------------------------------------------------------------------------------------------

namespace {

constexpr int kSpareLists = 10;
constexpr int kLeastLoop = 999;
constexpr int kMostSlots = std::numeric_limits<int>::max() / static_cast<int>(sizeof(Value));

int maxLoop() {
  const CvtFmtArgs *const ptArgs = gptFmtGlobalInfo == nullptr ? nullptr : gptFmtGlobalInfo->ptCvtFmtArgs;
  return ptArgs == nullptr ? kLeastLoop : std::max(static_cast<int>(ptArgs->gnMaxLoop), kLeastLoop);
}

ValueList *NewValueList(int nNum, ValueList *ptNext) {
  auto *const pt = static_cast<ValueList *>(cvtMemMalloc(sizeof(ValueList)));
  pt->ptValue = static_cast<Value *>(cvtMemMalloc(nNum * static_cast<int>(sizeof(Value))));
  pt->nMax = nNum;
  pt->ptNext = ptNext;
  return pt;
}

int InitValueList() {
  CvtFmtArgs *const ptArgs = gptFmtGlobalInfo->ptCvtFmtArgs;
  if (ptArgs != nullptr) {
    gnMaxValueNum = std::max(gnMaxValueNum, static_cast<int>(ptArgs->gnMaxValue));
    ptArgs->gnMaxLoop = maxLoop();
  }
  if (gnMaxValueNum <= 0) {
    CVT_ERR("Warning No Value num!!");
    return 0;
  }
  gptLoopValue = nullptr;
  gptFreeValue = nullptr;
  for (int i = 0; i < kSpareLists; ++i) gptFreeValue = NewValueList(gnMaxValueNum, gptFreeValue);
  return 0;
}

// A list with nNum slots in use, all that it has when that is negative. nNum is not compared with the capacity.
ValueList *inUse(ValueList *pt, int nNum) {
  pt->nNow = nNum > -1 ? nNum : pt->nMax;
  return pt;
}

// The first one of a free list that is not empty.
ValueList *takeFirst(ValueList *&ptHead) {
  ValueList *const pt = ptHead;
  ptHead = pt->ptNext;
  pt->ptNext = nullptr;
  return pt;
}

ValueList *GetLoopValueList() {
  return inUse(gptLoopValue == nullptr ? NewValueList(maxLoop(), nullptr) : takeFirst(gptLoopValue), 0);
}

// An ordinary list that is filed among the loop lists, as those of a very large definition are; null without one.
// Without it each message would take new ones.
ValueList *takeFiledList() {
  if (gnMaxValueNum < maxLoop()) return nullptr;
  ValueList *ptFront = nullptr;
  ValueList *pt = gptLoopValue;
  for (; pt != nullptr && pt->nMax < gnMaxValueNum; pt = pt->ptNext) ptFront = pt;
  if (pt == nullptr) return nullptr;
  if (ptFront == nullptr) {
    gptLoopValue = pt->ptNext;
  } else {
    ptFront->ptNext = pt->ptNext;
  }
  pt->ptNext = nullptr;
  return pt;
}

// A list when the free list is empty.
[[gnu::noinline]] ValueList *moreLists() {
  ValueList *const ptFiled = takeFiledList();
  return ptFiled == nullptr ? NewValueList(gnMaxValueNum, nullptr) : ptFiled;
}

ValueList *GetValueList(int nNum) {
  return inUse(gptFreeValue == nullptr ? moreLists() : takeFirst(gptFreeValue), nNum);
}

void insertBehind(ValueList *ptList, ValueList *ptFresh) {
  ptFresh->ptNext = ptList->ptNext;
  ptList->ptNext = ptFresh;
}

// The first repetition of a slot is about to come.
[[gnu::noinline]] void startLoop(ValueList *ptList, Value *ptSlot) {
  ValueList *const ptFresh = GetLoopValueList();
  ptSlot->psValue = reinterpret_cast<char *>(ptFresh);
  ptSlot->nLen = -1;
  insertBehind(ptList, ptFresh);
}

// Clearing stays within the capacity, also where more slots were asked for.
void clearList(ValueList *ptList) {
  const int nUsed = std::min(static_cast<int>(ptList->nNow), static_cast<int>(ptList->nMax));
  if (nUsed > 0)
    std::memset(static_cast<void *>(ptList->ptValue), 0, static_cast<size_t>(nUsed) * sizeof(Value));
  ptList->nNow = 0;
}

// Moves the lists right behind ptList that are loop lists, of nMaxLoop slots, to their free list. A list counts as one
// by its capacity, so ordinary lists of a very large definition are filed there, too.
void SwitchToLoopList(ValueList *ptList, int nMaxLoop) {
  while (ptList->ptNext != nullptr && ptList->ptNext->nMax >= nMaxLoop) {
    ValueList *const ptLoop = ptList->ptNext;
    ptList->ptNext = ptLoop->ptNext;
    clearList(ptLoop);
    ptLoop->ptNext = gptLoopValue;
    gptLoopValue = ptLoop;
  }
}

bool noSlot(const char *psFunction, int nIndex, int nSlots) {
  CVT_ERR_OF(psFunction, "Value Index[%d] < 0 or >= max [%d] err!!", nIndex, nSlots);
  return false;
}
// A list may have been asked for more slots than it has room for: those beyond its capacity do not exist.
inline bool isSlot(const char *psFunction, const ValueList *ptValueList, int nIndex) {
  const int nSlots = std::min(static_cast<int>(ptValueList->nNow), static_cast<int>(ptValueList->nMax));
  return (nIndex >= 0 && nIndex < nSlots) || noSlot(psFunction, nIndex, nSlots);
}

bool holdsValue(const char *psFunction, int nIndex) {
  CVT_ERR_OF(psFunction, "value Index[%d] is not LoopValueList", nIndex);
  return false;
}
// Whether a slot is there and holds a loop, or nothing yet.
inline bool mayLoop(const char *psFunction, const ValueList *ptValueList, int nIndex) {
  return isSlot(psFunction, ptValueList, nIndex) &&
         (ptValueList->ptValue[nIndex].nLen <= 0 || holdsValue(psFunction, nIndex));
}

}  // namespace

Value *cvtGetListValue(ValueList *ptValueList, int nIdx) {
  CVT_NOT_NULL(ptValueList, nullptr);
  return isSlot(__func__, ptValueList, nIdx) ? &ptValueList->ptValue[nIdx] : nullptr;
}

int cvtDumpValue(Value *ptValue, char *psBuf, int nLen, MemPort ptMemNode) {
  CVT_NOT_NULL(ptValue, -1);
  CVT_NOT_NULL(psBuf, -1);
  if (nLen < 0 || nLen == std::numeric_limits<int>::max()) {
    CVT_ERR("Value Length[%d] is not in [0] .. [%d]", nLen, std::numeric_limits<int>::max() - 1);
    return -1;
  }
  auto *const psCopy = static_cast<char *>(cvtMalloc(nLen + 1, ptMemNode));
  if (psCopy == nullptr) return -1;  // no pool node: already logged
  std::memcpy(psCopy, psBuf, static_cast<size_t>(nLen));
  ptValue->psValue = psCopy;
  ptValue->nLen = nLen;
  return 0;
}

struct ValueList *cvtGetValueList(int nNum) {
  return GetValueList(nNum);
}

struct ValueList *cvtNewLoopValueList(ValueList *ptValueList, int nIndex, int nFieldNum) {
  CVT_NOT_NULL(ptValueList, nullptr);
  if (!mayLoop(__func__, ptValueList, nIndex)) return nullptr;
  Value *const ptSlot = &ptValueList->ptValue[nIndex];
  if (ptSlot->nLen == 0) startLoop(ptValueList, ptSlot);
  void *ptLoopList = nullptr;
  CVT_NOT_NULL(ptLoopList = (void *)ptValueList->ptValue[nIndex].psValue, nullptr);
  auto *const ptLoop = static_cast<ValueList *>(ptLoopList);
  if (ptLoop->nNow >= ptLoop->nMax) {
    CVT_ERR("Loop Num is Max then Define[%d]", maxLoop());
    return nullptr;
  }
  ValueList *const ptFresh = GetValueList(nFieldNum);
  ptLoop->ptValue[ptLoop->nNow].psValue = reinterpret_cast<char *>(ptFresh);
  insertBehind(ptValueList, ptFresh);
  ptLoop->nNow += 1;
  return ptFresh;
}

int cvtGetLoopValueListNum(ValueList *ptValueList, int nIndex) {
  CVT_NOT_NULL(ptValueList, -1);
  if (!mayLoop(__func__, ptValueList, nIndex)) return -1;
  if (ptValueList->ptValue[nIndex].nLen == 0) return 0;
  void *ptLoopList = nullptr;
  CVT_NOT_NULL(ptLoopList = (void *)ptValueList->ptValue[nIndex].psValue, -1);
  return static_cast<ValueList *>(ptLoopList)->nNow;
}

struct ValueList *cvtGetLoopValueList(ValueList *ptValueList, int nIndex, int nLoopIndex) {
  CVT_NOT_NULL(ptValueList, nullptr);
  if (!mayLoop(__func__, ptValueList, nIndex)) return nullptr;
  if (ptValueList->ptValue[nIndex].nLen == 0) {
    CVT_ERR("Value Index[%d]: Loop is not init!!", nIndex);
    return nullptr;
  }
  void *ptLoopList = nullptr;
  CVT_NOT_NULL(ptLoopList = (void *)ptValueList->ptValue[nIndex].psValue, nullptr);
  const auto *const ptLoop = static_cast<ValueList *>(ptLoopList);
  if (nLoopIndex >= ptLoop->nNow) {
    CVT_ERR("Value Index[%d]: Loop index[%d] is big then list[%d]", nIndex, nLoopIndex, ptLoop->nNow);
    return nullptr;
  }
  return reinterpret_cast<ValueList *>(ptLoop->ptValue[nLoopIndex].psValue);
}

int cvtFreeValue(ValueList *ptValueList) {
  if (ptValueList == nullptr) return 0;
  const int nMaxLoop = maxLoop();
  ValueList *ptLast = ptValueList;
  for (ValueList *pt = ptValueList; pt != nullptr; pt = pt->ptNext) {
    clearList(pt);
    SwitchToLoopList(pt, nMaxLoop);
    ptLast = pt;
  }
  ptLast->ptNext = gptFreeValue;
  gptFreeValue = ptValueList;
  return 0;
}

// --- The "Message" section ---------------------------------------------------------------------------------

// clang-format off
#define STT_TABLE_PathList(F) \
  F(STRING, psPath)           \
  F(NEXT,   ptNext, PathList)
STT_BIND(PathList)

#define STT_TABLE_CvtFmtArgs(F) \
  F(INT,    gnMaxValue)         \
  F(INT,    gnMaxLoop)          \
  F(STRUCT, ptMsgList, PathList)
STT_BIND(CvtFmtArgs)

STT_BIND_MODULE(_cvt_message, STT_TYPE(PathList), STT_TYPE(CvtFmtArgs))
// clang-format on

namespace {

bool isCapacity(const char *psName, int nSlots) {
  if (nSlots <= kMostSlots) return true;
  CVT_ERR("CvtFmtArgs %s[%d] is more than [%d]: write a smaller number", psName, nSlots, kMostSlots);
  return false;
}

bool areCapacities(const CvtFmtArgs *ptArgs) {
  return ptArgs == nullptr ||
         (isCapacity("gnMaxValue", ptArgs->gnMaxValue) && isCapacity("gnMaxLoop", ptArgs->gnMaxLoop));
}

}  // namespace

void *cvtFmtInit(void *ptXmlNode, char *) {
  NewFmtGlobalInfo();
  nGRet = 0;
  gptFmtGlobalInfo->ptCvtFmtArgs = sttParseXmlCvtFmtArgs(ptXmlNode, const_cast<char *>("CvtFmtArgs"));
  if (nGRet == 0 && !areCapacities(gptFmtGlobalInfo->ptCvtFmtArgs)) nGRet = -1;
  if (nGRet == -1) {
    CVT_ERR("cvt Message Get Args Err!!");
    return nullptr;
  }
  if (FmtParseMessage(gptFmtGlobalInfo->ptCvtFmtArgs) != 0) {
    CVT_ERR("cvt Message Parse Err!!");
    nGRet = -1;
    return nullptr;
  }
  InitValueList();
  gptFmtGlobalInfo->psCurrentPath = nullptr;
  nGRet = 0;
  return gptFmtGlobalInfo;
}

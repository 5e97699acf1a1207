// cvt_struct_loop.cpp: what a loop or counted node knows of its repetitions.
#include <optional>

#include "cvt_definition.h"
#include "cvt_log.h"
#include "cvt_message.h"
#include "stt_bind.h"

namespace {

bool isLoop(const Message *ptMessage) {
  return ptMessage->ptStructAttr->nType == CVT_STRUCT_LOOP;
}

bool isCounted(const Message *ptMessage) {
  return isLoop(ptMessage) || ptMessage->ptStructAttr->nType == CVT_STRUCT_COUNTED;
}

}  // namespace

Message **cvtLoopGetIdx(Message *ptMessage) {
  CVT_NOT_NULL(ptMessage, nullptr);
  CVT_NOT_NULL(ptMessage->ptStructAttr, nullptr);
  const auto *const ptLoopType = static_cast<LoopType *>(ptMessage->ptStructAttr->pInfo);
  if (ptLoopType == nullptr) {
    CVT_ERR("Message[%s] Get Loop Type Err!!", ptMessage->psNodeName);
    return nullptr;
  }
  return ptLoopType->pptMessageIdx;
}

void *cvtLoopGetStruct(Message *ptMessage) {
  CVT_NOT_NULL(ptMessage, nullptr);
  CVT_NOT_NULL(ptMessage->ptStructAttr, nullptr);
  const LoopType *ptLoopType = nullptr;
  CVT_NOT_NULL(ptLoopType = (LoopType *)ptMessage->ptStructAttr->pInfo, nullptr);
  return ptLoopType->ptInfo;
}

int cvtLoopCreateIndex(Message *ptMessage) {
  CVT_NOT_NULL(ptMessage, -1);
  CVT_NOT_NULL(ptMessage->ptStructAttr, -1);
  LoopType *ptLoopType = nullptr;
  CVT_NOT_NULL(ptLoopType = (LoopType *)ptMessage->ptStructAttr->pInfo, -1);
  if (!isLoop(ptMessage)) return -1;
  int nFieldNum = ptLoopType->nFieldNum;
  if (ptMessage->ptStructAttr->ptChildNode != nullptr) {
    ptLoopType->pptMessageIdx = cvtCreateMessageIdx(ptMessage->ptStructAttr->ptChildNode, &nFieldNum);
  } else {  // a loop of one repeated value: its index is the node itself
    auto **const pptIdx = static_cast<Message **>(cvtMemMalloc(2 * static_cast<int>(sizeof(Message *))));
    __builtin_memcpy(pptIdx, &ptMessage, sizeof ptMessage);
    ptLoopType->pptMessageIdx = pptIdx;
    nFieldNum = 1;
  }
  ptLoopType->nFieldNum = nFieldNum;
  if (ptLoopType->pptMessageIdx == nullptr) {
    CVT_ERR("Message[%s] Loop index create err!!", ptMessage->psNodeName);
    return -1;
  }
  return 0;
}

namespace {

LoopType *missing(const char *psFunction, const char *psWhat) {
  CVT_ERR_OF(psFunction, "[%s] is NULL", psWhat);
  return nullptr;
}

// The LoopType of a kind-1 node; null for other kinds (not logged) and without one (logged).
LoopType *loopTypeOf(const char *psFunction, const Message *ptMessage) {
  if (ptMessage == nullptr) return missing(psFunction, "ptMessage");
  if (ptMessage->ptStructAttr == nullptr) return missing(psFunction, "ptMessage->ptStructAttr");
  if (!isLoop(ptMessage)) return nullptr;
  auto *const ptLoopType = static_cast<LoopType *>(ptMessage->ptStructAttr->pInfo);
  if (ptLoopType == nullptr)
    return missing(psFunction, "ptLoopType = (LoopType *)ptMessage->ptStructAttr->pInfo");
  return ptLoopType;
}

}  // namespace

int cvtLoopGetFieldNum(Message *ptMessage) {
  const LoopType *const ptLoopType = loopTypeOf(__func__, ptMessage);
  return ptLoopType == nullptr ? -1 : ptLoopType->nFieldNum;
}

int cvtSetLoopCurrentTime(Message *ptMessage, int nTime) {
  LoopType *const ptLoopType = loopTypeOf(__func__, ptMessage);
  if (ptLoopType == nullptr) return -1;
  ptLoopType->nCurrentTime = nTime;
  return 0;
}

int cvtGetLoopCurrentTime(Message *ptMessage) {
  const LoopType *const ptLoopType = loopTypeOf(__func__, ptMessage);
  return ptLoopType == nullptr ? -1 : ptLoopType->nCurrentTime;
}

Value *cvtLoopGetLoopNumValue(ValueListInfo *ptValueListInfo, Message *ptMessage) {
  CVT_NOT_NULL(ptValueListInfo, nullptr);
  CVT_NOT_NULL(ptMessage, nullptr);
  CVT_NOT_NULL(ptMessage->ptStructAttr, nullptr);
  if (!isCounted(ptMessage)) return nullptr;
  const LoopType *ptLoopType = nullptr;
  CVT_NOT_NULL(ptLoopType = (LoopType *)ptMessage->ptStructAttr->pInfo, nullptr);
  return cvtGetListValue(ptValueListInfo->ptValueList,
                         ptLoopType->nLoopNumIndex + ptValueListInfo->nIndexOffset);
}

int cvtLoopGetLoopNum(ValueListInfo *ptValueListInfo, Message *ptMessage) {
  const Value *const ptValue = cvtLoopGetLoopNumValue(ptValueListInfo, ptMessage);
  if (ptValue == nullptr) return -1;
  return ptValue->nLen > 0 ? cvtStrAntoi(ptValue->psValue, ptValue->nLen) : 0;
}

namespace {
struct Counting;
using BodiesMet = cvt::Met<Counting, Message *>;
}  // namespace

int cvtLoopSetLoopNumIndex(Message **pptIdx) {
  CVT_NOT_NULL(pptIdx, -1);
  const BodiesMet met;
  std::optional<cvt::NodeNames> names;  // as the format has left them
  for (int i = 0; Message *const ptNode = cvtIdxNode(pptIdx, i); ++i) {
    CVT_NOT_NULL(ptNode->ptStructAttr, -1);
    if (!isCounted(ptNode)) continue;
    LoopType *ptLoopType = nullptr;
    if ((ptLoopType = static_cast<LoopType *>(ptNode->ptStructAttr->pInfo)) == nullptr) {
      CVT_ERR("[ptLoopType = (LoopType *)pptIdx[i]->ptStructAttr->pInfo] is NULL");
      return -1;
    }
    // Without a count field the node is left alone, and so is its body.
    if (ptLoopType->psLoopNumName == nullptr) continue;
    if (ptLoopType->nLoopNumIndex < 0) {
      if (!names) names.emplace(pptIdx);
      ptLoopType->nLoopNumIndex = names->find(pptIdx, ptLoopType->psLoopNumName);
    }
    if (ptLoopType->nLoopNumIndex < 0) {
      CVT_ERR("Loop Node[%s] Loop Num Field[%s] Node Not Define!!", ptNode->psNodeName,
              ptLoopType->psLoopNumName);
      return -3;
    }
    if (!isLoop(ptNode) || !BodiesMet::first(ptLoopType->pptMessageIdx)) continue;
    const int nRet = cvtLoopSetLoopNumIndex(ptLoopType->pptMessageIdx);
    if (nRet != 0) return nRet;
  }
  return 0;
}

// clang-format off
#define STT_TABLE_LoopType(F)     \
  F(STRING, psLoopNumName)        \
  F(VOID,   ptInfo)               \
  F(DERIVED, nFieldNum, -1)       \
  F(DERIVED, nCurrentTime, -1)    \
  F(DERIVED_NULL, pptMessageIdx)  \
  F(DERIVED, nLoopNumIndex, -1)
STT_BIND(LoopType)

STT_BIND_MODULE(cvt_struct_loop, STT_TYPE(LoopType))
// clang-format on

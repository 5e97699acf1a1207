// message_level.h: the values of a message, or of one repetition, addressed by name.
#pragma once

#include <string>

#include "cvt_message.h"

namespace test {

struct Level {
  ValueList *ptList;
  Message **pptIdx;
  MemNode *ptNode;

  int position(const char *psName) const { return cvtGetNodeIdx(pptIdx, const_cast<char *>(psName)); }
  Message *node(const char *psName) const { return cvtIdxNode(pptIdx, position(psName)); }
  Value *slot(const char *psName) const { return cvtGetListValue(ptList, position(psName)); }

  std::string get(const char *psName) const {
    const Value *const pt = slot(psName);
    return pt == nullptr || pt->nLen <= 0 ? "" : std::string(pt->psValue, static_cast<size_t>(pt->nLen));
  }
  const Level &set(const char *psName, std::string sText) const {
    cvtDumpValue(slot(psName), sText.data(), static_cast<int>(sText.size()), ptNode);
    return *this;
  }

  // Repetitions of a loop.
  int count(const char *psLoop) const { return cvtGetLoopValueListNum(ptList, position(psLoop)); }
  Level add(const char *psLoop) const {
    Message *const ptLoop = node(psLoop);
    return {cvtNewLoopValueList(ptList, position(psLoop), cvtLoopGetFieldNum(ptLoop)), cvtLoopGetIdx(ptLoop),
            ptNode};
  }
  Level at(const char *psLoop, int nTime) const {
    return {cvtGetLoopValueList(ptList, position(psLoop), nTime), cvtLoopGetIdx(node(psLoop)), ptNode};
  }
};

// An empty message of a type.
inline Level newMessage(const char *psName) {
  Msg *const ptMsg = cvtGetMsg(const_cast<char *>(psName));
  return {cvtGetValueList(ptMsg->nFieldNum), ptMsg->pptMessageIdx, cvtMemNewNode()};
}

}  // namespace test

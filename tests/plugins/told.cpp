#include "told.h"

namespace {

int f_anTable[1];

struct Life {
  T_RTCORE_CONTEXT *ptContext = nullptr;
  Life() = default;
  Life(const Life &) = delete;
  Life &operator=(const Life &) = delete;
  ~Life() {
    if (ptContext != nullptr) ptContext->onClose();
  }
} life;

int handle(int iPlugId, int iEventId, void *pInData, void *pOutData) {
  return life.ptContext->onEvent(iPlugId, iEventId, pInData, pOutData);
}

}  // namespace

int cvtPlugLoad(T_PLUG_MGR_PLUG_VAR *ptPlugVar) {
  life.ptContext = ptPlugVar->ptRTCoreCtx;
  life.ptContext->pTable = f_anTable;
  ptPlugVar->pfnEventHdl = handle;
  return life.ptContext->onLoad(*ptPlugVar);
}

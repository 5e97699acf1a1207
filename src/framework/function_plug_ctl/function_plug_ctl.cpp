// function_plug_ctl.cpp: a stand-in for the framework's plug-in manager: the C functions, over one Manager.
#include <exception>
#include <memory>

#include "manager.h"
#include "plug_mgr.h"
#include "velutil.h"

// Level 1: failures; 5: what was loaded, registered, unloaded.
#define PLUG_LOG(nLevel, psFunction, ...) \
  logInfo(nLevel, "$plug_ctl", __FILE_NAME__, __LINE__, psFunction, __VA_ARGS__)

namespace {

constexpr int kFailed = -1;

// Never destroyed: destructors that run at the end of the process may still look something up.
plug::Manager &manager() {
  static plug::Manager &once = *std::make_unique<plug::Manager>().release();
  return once;
}

// No exception leaves: it becomes a line of the log.
template <class Result, class Call>
Result guarded(const char *psFunction, Result failed, Call call) noexcept {
  try {
    return call();
  } catch (const std::exception &e) {
    PLUG_LOG(1, psFunction, "%s", e.what());
  } catch (...) {
    PLUG_LOG(1, psFunction, "unknown exception");
  }
  return failed;
}

void expect(const void *p, const char *psName) {
  if (p == nullptr) throw plug::Error("[" + std::string(psName) + "] is NULL");
}

}  // namespace

int plugLoad(const char *psFile, T_RTCORE_CONTEXT *ptRTCoreCtx) {
  return guarded("plugLoad", kFailed, [=] {
    expect(psFile, "psFile");
    const int iPlugId = manager().load(psFile, ptRTCoreCtx);
    PLUG_LOG(5, "plugLoad", "module [%s] loaded with the id %d", psFile, iPlugId);
    return iPlugId;
  });
}

int plugEvent(int iPlugId, int iEventId, void *pInData, void *pOutData) {
  return guarded("plugEvent", kFailed, [=] {
    const int nResult = manager().deliver(iPlugId, iEventId, pInData, pOutData);
    if (nResult != 0) {
      PLUG_LOG(1, "plugEvent", "module with the id %d: the handler of event %d returned %d, expected 0",
               iPlugId, iEventId, nResult);
    }
    return nResult;
  });
}

int plugUnload(int iPlugId) {
  return guarded("plugUnload", kFailed, [=] {
    manager().unload(iPlugId);
    PLUG_LOG(5, "plugUnload", "module with the id %d unloaded", iPlugId);
    return 0;
  });
}

int plugAddPlug(int, const char *psKind, const char *psName, void *pTable) {
  return guarded("plugAddPlug", kFailed, [=] {
    expect(psKind, "psKind");
    expect(psName, "psName");
    expect(pTable, "pTable");
    manager().add(psKind, psName, pTable);
    PLUG_LOG(5, "plugAddPlug", "interface [%s] [%s] registered", psKind, psName);
    return 0;
  });
}

void *plugGetPlug(const char *psKind, const char *psName) {
  return guarded("plugGetPlug", static_cast<void *>(nullptr), [=] {
    expect(psKind, "psKind");
    expect(psName, "psName");
    void *const pTable = manager().find(psKind, psName);
    if (pTable == nullptr) {
      PLUG_LOG(1, "plugGetPlug",
               "no interface [%s] [%s] is registered; load the module that registers it first", psKind,
               psName);
    }
    return pTable;
  });
}

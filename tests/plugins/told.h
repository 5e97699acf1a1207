// told.h: the run-time context of told.cpp, a module for the plug-in manager that does what the test tells
// it.
#pragma once

#include <functional>

#include "plug_mgr.h"

struct T_RTCORE_CONTEXT {
  std::function<int(T_PLUG_MGR_PLUG_VAR &)> onLoad = [](T_PLUG_MGR_PLUG_VAR &) { return 0; };
  std::function<int(int iPlugId, int iEventId, void *pInData, void *pOutData)> onEvent =
      [](int, int, void *, void *) { return 0; };
  std::function<void()> onClose = [] {};  // when the object leaves the process
  void *pTable = nullptr;                 // set by the module: a table in its own static memory
};

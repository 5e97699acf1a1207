// The plug-in manager as hosts and modules see it. The module libmodule_told.so does what a test tells it
// through the run-time context; a copy of its file is another module.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "config_tree.h"
#include "cvt_itf.h"
#include "log_capture.h"
#include "plug_mgr.h"
#include "told.h"

namespace {

using Texts = std::vector<std::string>;

const std::string kTold = CVT2_PLUGIN_DIR "/libmodule_told.so";

class Manager : public testing::Test {
 protected:
  void SetUp() override { test::clearLog(); }

  // No module outlives its context.
  void TearDown() override {
    told.onClose = other.onClose = [] {};
    for (const int iPlugId : loaded) plugUnload(iPlugId);
  }

  int load(T_RTCORE_CONTEXT &context) { return load(kTold, context); }
  int load(const std::string &sFile, T_RTCORE_CONTEXT &context) {
    loaded.push_back(plugLoad(sFile.c_str(), &context));
    return loaded.back();
  }

  // A second module of the same code.
  std::string copy() {
    std::filesystem::copy_file(kTold, tree.path("copy.so"));
    return tree.path("copy.so");
  }

  // The one failure that was logged.
  static std::string failure() {
    const Texts texts = test::logTexts();
    return texts.size() == 1 ? texts[0] : std::to_string(texts.size()) + " lines";
  }

  static void expectFailure(const std::string &sText) {
    EXPECT_EQ(failure(), sText);
    test::clearLog();
  }

  test::ConfigTree tree;
  T_RTCORE_CONTEXT told;
  T_RTCORE_CONTEXT other;  // of a second module
  std::vector<int> loaded;
  int nTable = 0;
};

using Load = Manager;
using Refused = Manager;
using Event = Manager;
using Interfaces = Manager;
using Unload = Manager;

// --- Loading

TEST_F(Load, CallsTheEntryThenDeliversEvent1) {
  Texts calls;
  told.onLoad = [&](T_PLUG_MGR_PLUG_VAR &) {
    calls.emplace_back("load");
    return 0;
  };
  told.onEvent = [&](int, int iEventId, void *pInData, void *pOutData) {
    EXPECT_EQ(pInData, nullptr);
    EXPECT_EQ(pOutData, nullptr);
    calls.push_back("event " + std::to_string(iEventId));
    return 0;
  };
  EXPECT_GT(load(told), 0);
  EXPECT_EQ(calls, (Texts{"load", "event 1"}));
  EXPECT_EQ(test::logTexts(), Texts{});
}

TEST_F(Load, TheRecordHoldsTheIdAndTheContext) {
  T_PLUG_MGR_PLUG_VAR seen = {};
  int nSeenId = 0;
  told.onLoad = [&](T_PLUG_MGR_PLUG_VAR &record) {
    seen = record;
    return 0;
  };
  told.onEvent = [&](int iPlugId, int, void *, void *) {
    nSeenId = iPlugId;
    return 0;
  };
  const int iPlugId = load(told);
  EXPECT_EQ(seen.iPlugId, iPlugId);
  EXPECT_EQ(nSeenId, iPlugId);
  EXPECT_EQ(seen.ptRTCoreCtx, &told);
}

TEST_F(Load, TheLibraryIsAModule) {
  const int iPlugId = plugLoad(CVT2_PLUGIN_DIR "/libcvt2.so", nullptr);
  ASSERT_GT(iPlugId, 0);
  const auto *const ptTable = static_cast<cvtInterface *>(plugGetPlug("CVT_INTERFACE", "cvt2"));
  ASSERT_NE(ptTable, nullptr);
  EXPECT_EQ(ptTable->FncCvtAddLoopTime, cvtAddLoopTime);
  EXPECT_EQ(plugEvent(iPlugId, EVENT_MGR_ON_RUN, nullptr, nullptr), 0);
  EXPECT_EQ(plugEvent(iPlugId, EVENT_MGR_EXIT, nullptr, nullptr), 0);
  EXPECT_EQ(plugUnload(iPlugId), 0);
  EXPECT_EQ(test::logTexts(), Texts{});
}

TEST_F(Load, AModuleMayLoadAnotherWhileItIsLoaded) {
  int nInner = 0;
  const std::string sCopy = copy();
  told.onEvent = [&](int, int iEventId, void *, void *) {
    if (iEventId == EVENT_MGR_INIT) nInner = load(sCopy, other);
    return 0;
  };
  const int nOuter = load(told);
  EXPECT_GT(nOuter, 0);
  EXPECT_GT(nInner, 0);
  EXPECT_NE(nOuter, nInner);
  EXPECT_EQ(plugUnload(nOuter), 0);
  EXPECT_EQ(plugUnload(nInner), 0);
}

TEST_F(Load, IdsAreNeverUsedAgain) {
  const int nFirst = load(told);
  plugUnload(nFirst);
  EXPECT_GT(load(told), nFirst);
}

// --- Refusals

TEST_F(Refused, NullAndEmptyNames) {
  EXPECT_EQ(plugLoad(nullptr, nullptr), -1);
  expectFailure("[psFile] is NULL");
  EXPECT_EQ(plugLoad("", nullptr), -1);
  expectFailure("the name of a module's file is empty; name a shared object");
}

TEST_F(Refused, AFileThatIsNotThere) {
  EXPECT_EQ(plugLoad("/no/such/module.so", nullptr), -1);
  expectFailure(
      "module [/no/such/module.so] cannot be opened: /no/such/module.so: cannot open shared object file: No "
      "such "
      "file or directory; name a shared object, with its path or beside this library, whose own libraries "
      "are "
      "found too");
}

TEST_F(Refused, AFileThatIsNoLibrary) {
  tree.file("text.so", std::string(4096, 'x')).file("short.so", "x");
  EXPECT_EQ(plugLoad(tree.arg("text.so"), nullptr), -1);
  EXPECT_NE(failure().find("invalid ELF header"), std::string::npos) << failure();
  test::clearLog();
  EXPECT_EQ(plugLoad(tree.arg("short.so"), nullptr), -1);
  EXPECT_NE(failure().find("file too short"), std::string::npos) << failure();
  test::clearLog();
  EXPECT_EQ(plugLoad(tree.arg(), nullptr), -1);
  EXPECT_NE(failure().find("[" + tree.path() + "] cannot be opened: "), std::string::npos) << failure();
}

TEST_F(Refused, AModuleWithoutTheEntry) {
  const std::string sFile = CVT2_PLUGIN_DIR "/libvelutil.so";
  EXPECT_EQ(plugLoad(sFile.c_str(), nullptr), -1);
  expectFailure(
      "module [" + sFile +
      "] does not define cvtPlugLoad; export from it: int cvtPlugLoad(T_PLUG_MGR_PLUG_VAR *ptPlugVar), "
      "in C++ as extern \"C\"");
}

// This one links the library, which has an entry.
TEST_F(Refused, AModuleThatOnlyLinksALibraryWithTheEntry) {
  EXPECT_EQ(plugLoad(CVT2_PLUGIN_DIR "/libcvt_plug_first.so", nullptr), -1);
  EXPECT_NE(failure().find("libcvt_plug_first.so] does not define cvtPlugLoad"), std::string::npos)
      << failure();
  EXPECT_EQ(plugGetPlug("CVT_INTERFACE", "cvt2"), nullptr);
}

TEST_F(Refused, AnEntryThatFails) {
  told.onLoad = [](T_PLUG_MGR_PLUG_VAR &) { return 7; };
  EXPECT_EQ(load(told), -1);
  expectFailure("module [" + kTold + "]: cvtPlugLoad returned 7, expected 0; not loaded");
}

TEST_F(Refused, AnEntryThatThrows) {
  told.onLoad = [](T_PLUG_MGR_PLUG_VAR &) -> int { throw std::runtime_error("no licence"); };
  EXPECT_EQ(load(told), -1);
  expectFailure(
      "module [" + kTold +
      "]: cvtPlugLoad let an exception out: no licence; catch it in the module and return a number");
  told.onLoad = [](T_PLUG_MGR_PLUG_VAR &) -> int { throw 7; };
  EXPECT_EQ(load(told), -1);
  expectFailure("module [" + kTold +
                "]: cvtPlugLoad let an exception out; catch it in the module and return a number");
}

TEST_F(Refused, AnEntryThatSetsNoHandler) {
  told.onLoad = [](T_PLUG_MGR_PLUG_VAR &record) {
    record.pfnEventHdl = nullptr;
    return 0;
  };
  EXPECT_EQ(load(told), -1);
  expectFailure("module [" + kTold + "]: no event handler; cvtPlugLoad must set ptPlugVar->pfnEventHdl");
}

TEST_F(Refused, AnInitialisationThatFails) {
  told.onEvent = [](int, int, void *, void *) { return 3; };
  EXPECT_EQ(load(told), -1);
  expectFailure("module [" + kTold +
                "]: the initialisation event was answered with 3, expected 0; not loaded");
}

TEST_F(Refused, AnInitialisationThatThrows) {
  told.onEvent = [](int, int, void *, void *) -> int { throw std::runtime_error("out of luck"); };
  EXPECT_EQ(load(told), -1);
  expectFailure(
      "module [" + kTold +
      "]: the handler of event 1 let an exception out: out of luck; catch it in the module and return a "
      "number");
}

TEST_F(Refused, NothingIsLeftOfAModuleThatFailed) {
  bool bClosed = false;
  told.onClose = [&] { bClosed = true; };
  told.onEvent = [&](int, int, void *, void *) {
    EXPECT_EQ(plugAddPlug(1, "K", "static", told.pTable), 0);
    EXPECT_EQ(plugAddPlug(1, "K", "elsewhere", &nTable), 0);
    EXPECT_EQ(plugGetPlug("K", "static"), told.pTable);
    return 3;
  };
  EXPECT_EQ(load(told), -1);
  EXPECT_TRUE(bClosed);
  EXPECT_EQ(plugGetPlug("K", "static"), nullptr);
  EXPECT_EQ(plugGetPlug("K", "elsewhere"), nullptr);
  told.onEvent = [](int, int, void *, void *) { return 0; };
  EXPECT_GT(load(told), 0);
}

TEST_F(Refused, AModuleThatIsLoadedAlready) {
  bool bCalled = false;
  other.onLoad = [&](T_PLUG_MGR_PLUG_VAR &) {
    bCalled = true;
    return 0;
  };
  const int iPlugId = load(told);
  EXPECT_EQ(load(other), -1);
  expectFailure("module [" + kTold + "] is loaded already, with the id " + std::to_string(iPlugId) +
                "; use that, or unload it first");
  std::filesystem::create_symlink(kTold, tree.path("link.so"));
  EXPECT_EQ(load(tree.path("link.so"), other), -1);
  EXPECT_FALSE(bCalled);
  EXPECT_EQ(plugEvent(iPlugId, EVENT_MGR_ON_RUN, nullptr, nullptr), 0);
  EXPECT_EQ(plugUnload(iPlugId), 0);
  EXPECT_GT(load(other), 0);
  EXPECT_TRUE(bCalled);
}

// --- Events

TEST_F(Event, EveryNumberAndTheDataGoToTheHandler) {
  std::vector<int> seen;
  void *pIn = nullptr;
  told.onEvent = [&](int, int iEventId, void *pInData, void *pOutData) {
    seen.push_back(iEventId);
    pIn = pInData;
    if (pOutData != nullptr) *static_cast<int *>(pOutData) = 5;
    return 0;
  };
  const int iPlugId = load(told);
  int nOut = 0;
  for (const int iEventId : {1, 2, 3, 4, 0, -1}) EXPECT_EQ(plugEvent(iPlugId, iEventId, &nTable, &nOut), 0);
  EXPECT_EQ(seen, (std::vector<int>{1, 1, 2, 3, 4, 0, -1}));
  EXPECT_EQ(pIn, &nTable);
  EXPECT_EQ(nOut, 5);
}

TEST_F(Event, AHandlersFailureIsReturnedAndLogged) {
  const int iPlugId = load(told);
  told.onEvent = [](int, int, void *, void *) { return -9; };
  EXPECT_EQ(plugEvent(iPlugId, EVENT_MGR_ON_RUN, nullptr, nullptr), -9);
  expectFailure("module with the id " + std::to_string(iPlugId) +
                ": the handler of event 2 returned -9, expected 0");
}

TEST_F(Event, AHandlersExceptionEndsInTheManager) {
  const int iPlugId = load(told);
  told.onEvent = [](int, int, void *, void *) -> int { throw std::runtime_error("disk full"); };
  EXPECT_EQ(plugEvent(iPlugId, EVENT_MGR_ON_RUN, nullptr, nullptr), -1);
  expectFailure(
      "module [" + kTold +
      "]: the handler of event 2 let an exception out: disk full; catch it in the module and return a "
      "number");
  told.onEvent = [](int, int, void *, void *) { return 0; };
  EXPECT_EQ(plugEvent(iPlugId, EVENT_MGR_ON_RUN, nullptr, nullptr), 0);
  EXPECT_EQ(plugUnload(iPlugId), 0);
}

TEST_F(Event, AnUnknownIdIsRefused) {
  for (const int iPlugId : {0, -1, 1, 0x7fffffff}) {
    EXPECT_EQ(plugEvent(iPlugId, EVENT_MGR_ON_RUN, nullptr, nullptr), -1);
    expectFailure("no module has the id " + std::to_string(iPlugId) +
                  "; use an id that plugLoad returned and that is not unloaded");
  }
}

TEST_F(Event, AHandlerThatWasTakenAwayIsNoticed) {
  T_PLUG_MGR_PLUG_VAR *ptRecord = nullptr;
  told.onLoad = [&](T_PLUG_MGR_PLUG_VAR &record) {
    ptRecord = &record;
    return 0;
  };
  const int iPlugId = load(told);
  ptRecord->pfnEventHdl = nullptr;
  EXPECT_EQ(plugEvent(iPlugId, EVENT_MGR_ON_RUN, nullptr, nullptr), -1);
  expectFailure("module [" + kTold + "]: no event handler; cvtPlugLoad must set ptPlugVar->pfnEventHdl");
}

// --- Interfaces

TEST_F(Interfaces, AreFoundByKindAndName) {
  int nOther = 0;
  EXPECT_EQ(plugAddPlug(1, "K", "a", &nTable), 0);
  EXPECT_EQ(plugAddPlug(0, "K", "b", &nOther), 0);
  EXPECT_EQ(plugGetPlug("K", "a"), &nTable);
  EXPECT_EQ(plugGetPlug("K", "b"), &nOther);
  EXPECT_EQ(test::logTexts(), Texts{});
  for (const auto &[psKind, psName] : {std::pair("k", "a"), {"K", "A"}, {"K", ""}, {"", "a"}, {"a", "K"}}) {
    EXPECT_EQ(plugGetPlug(psKind, psName), nullptr);
    expectFailure(std::string("no interface [") + psKind + "] [" + psName +
                  "] is registered; load the module that registers it first");
  }
}

TEST_F(Interfaces, NullArgumentsAreRefused) {
  EXPECT_EQ(plugAddPlug(1, nullptr, "a", &nTable), -1);
  expectFailure("[psKind] is NULL");
  EXPECT_EQ(plugAddPlug(1, "K", nullptr, &nTable), -1);
  expectFailure("[psName] is NULL");
  EXPECT_EQ(plugAddPlug(1, "K", "a", nullptr), -1);
  expectFailure("[pTable] is NULL");
  EXPECT_EQ(plugGetPlug(nullptr, "a"), nullptr);
  expectFailure("[psKind] is NULL");
  EXPECT_EQ(plugGetPlug("K", nullptr), nullptr);
  expectFailure("[psName] is NULL");
}

TEST_F(Interfaces, NamesAreCopied) {
  char sKind[] = "K";
  char sName[] = "a";
  plugAddPlug(1, sKind, sName, &nTable);
  sKind[0] = sName[0] = 'x';
  EXPECT_EQ(plugGetPlug("K", "a"), &nTable);
  EXPECT_EQ(plugGetPlug("x", "x"), nullptr);
}

TEST_F(Interfaces, TheNewestOfAKindAndNameWins) {
  int nNewer = 0;
  plugAddPlug(1, "K", "a", &nTable);
  plugAddPlug(1, "K", "a", &nNewer);
  EXPECT_EQ(plugGetPlug("K", "a"), &nNewer);
  plugAddPlug(1, "K", "a", &nTable);
  EXPECT_EQ(plugGetPlug("K", "a"), &nTable);
}

TEST_F(Interfaces, WithTheNewestModuleGoneTheFormerOnesIsFoundAgain) {
  plugAddPlug(1, "K", "a", &nTable);
  told.onEvent = [&](int, int, void *, void *) { return plugAddPlug(1, "K", "a", told.pTable); };
  other.onEvent = [&](int, int, void *, void *) { return plugAddPlug(1, "K", "a", other.pTable); };
  const int nFirst = load(told);
  const int nSecond = load(copy(), other);
  ASSERT_NE(told.pTable, other.pTable);
  EXPECT_EQ(plugGetPlug("K", "a"), other.pTable);
  EXPECT_EQ(plugUnload(nSecond), 0);
  EXPECT_EQ(plugGetPlug("K", "a"), told.pTable);
  EXPECT_EQ(plugUnload(nFirst), 0);
  EXPECT_EQ(plugGetPlug("K", "a"), &nTable);
}

// --- Unloading

TEST_F(Unload, ClosesTheModuleAndDeliversNothing) {
  bool bClosed = false;
  told.onClose = [&] { bClosed = true; };
  const int iPlugId = load(told);
  told.onEvent = [](int, int iEventId, void *, void *) {
    ADD_FAILURE() << "event " << iEventId;
    return 0;
  };
  EXPECT_FALSE(bClosed);
  EXPECT_EQ(plugUnload(iPlugId), 0);
  EXPECT_TRUE(bClosed);
  EXPECT_EQ(test::logTexts(), Texts{});
}

TEST_F(Unload, TwiceIsRefused) {
  const int iPlugId = load(told);
  EXPECT_EQ(plugUnload(iPlugId), 0);
  EXPECT_EQ(plugUnload(iPlugId), -1);
  expectFailure("no module has the id " + std::to_string(iPlugId) +
                "; use an id that plugLoad returned and that is not unloaded");
  EXPECT_EQ(plugEvent(iPlugId, EVENT_MGR_EXIT, nullptr, nullptr), -1);
}

TEST_F(Unload, AnUnknownIdIsRefused) {
  EXPECT_EQ(plugUnload(0), -1);
  EXPECT_EQ(plugUnload(-1), -1);
  EXPECT_EQ(test::logTexts().size(), 2U);
}

TEST_F(Unload, TakesTheModulesInterfacesWithIt) {
  told.onEvent = [&](int, int, void *, void *) {
    plugAddPlug(1, "K", "static", told.pTable);
    return plugAddPlug(1, "K", "elsewhere", &nTable);
  };
  const int iPlugId = load(told);
  EXPECT_EQ(plugGetPlug("K", "static"), told.pTable);
  EXPECT_EQ(plugGetPlug("K", "elsewhere"), &nTable);
  EXPECT_EQ(plugUnload(iPlugId), 0);
  EXPECT_EQ(plugGetPlug("K", "static"), nullptr);
  EXPECT_EQ(plugGetPlug("K", "elsewhere"), nullptr);
}

TEST_F(Unload, LeavesWhatTheHostAndOthersRegistered) {
  other.onEvent = [&](int, int, void *, void *) { return plugAddPlug(1, "K", "other", other.pTable); };
  plugAddPlug(1, "K", "host", &nTable);
  load(copy(), other);
  const int iPlugId = load(told);
  EXPECT_EQ(plugUnload(iPlugId), 0);
  EXPECT_EQ(plugGetPlug("K", "host"), &nTable);
  EXPECT_EQ(plugGetPlug("K", "other"), other.pTable);
}

// A table of the first module, registered while the second one's handler runs.
TEST_F(Unload, ATableGoesWithTheObjectThatHoldsIt) {
  const int nFirst = load(told);
  other.onEvent = [&](int, int, void *, void *) { return plugAddPlug(1, "K", "a", told.pTable); };
  const int nSecond = load(copy(), other);
  EXPECT_EQ(plugGetPlug("K", "a"), told.pTable);
  EXPECT_EQ(plugUnload(nFirst), 0);
  EXPECT_EQ(plugGetPlug("K", "a"), nullptr);
  EXPECT_EQ(plugUnload(nSecond), 0);
}

TEST_F(Unload, NobodyFindsAnInterfaceWhileItsModuleIsClosed) {
  told.onEvent = [&](int, int, void *, void *) { return plugAddPlug(1, "K", "a", told.pTable); };
  const void *pFound = this;
  told.onClose = [&] { pFound = plugGetPlug("K", "a"); };
  EXPECT_EQ(plugUnload(load(told)), 0);
  EXPECT_EQ(pFound, nullptr);
}

TEST_F(Unload, WhatAModuleRegistersWhileItIsClosedGoesToo) {
  const int iPlugId = load(told);
  told.onClose = [&] {
    plugAddPlug(1, "K", "late", &nTable);
    plugAddPlug(1, "K", "static", told.pTable);
  };
  EXPECT_EQ(plugUnload(iPlugId), 0);
  EXPECT_EQ(plugGetPlug("K", "late"), nullptr);
  EXPECT_EQ(plugGetPlug("K", "static"), nullptr);
}

TEST_F(Unload, IsRefusedWhileTheModulesOwnCodeRuns) {
  int nResult = 0;
  told.onLoad = [&](T_PLUG_MGR_PLUG_VAR &record) {
    EXPECT_EQ(plugUnload(record.iPlugId), -1);
    return 0;
  };
  told.onEvent = [&](int iPlugId, int, void *, void *) {
    nResult = plugUnload(iPlugId);
    return 0;
  };
  const int iPlugId = load(told);
  test::clearLog();
  EXPECT_EQ(plugEvent(iPlugId, EVENT_MGR_EXIT, nullptr, nullptr), 0);
  EXPECT_EQ(nResult, -1);
  expectFailure("module [" + kTold +
                "] cannot be unloaded while its own code runs; unload it after its handler has returned");
  EXPECT_EQ(plugUnload(iPlugId), 0);
}

TEST_F(Unload, AModuleMayUnloadAnother) {
  const int nOther = load(copy(), other);
  told.onEvent = [&](int, int iEventId, void *, void *) {
    return iEventId == EVENT_MGR_ON_RUN ? plugUnload(nOther) : 0;
  };
  const int iPlugId = load(told);
  EXPECT_EQ(plugEvent(iPlugId, EVENT_MGR_ON_RUN, nullptr, nullptr), 0);
  EXPECT_EQ(plugEvent(nOther, EVENT_MGR_ON_RUN, nullptr, nullptr), -1);
}

TEST_F(Unload, AndLoadingWorkAThousandTimes) {
  told.onEvent = [&](int, int, void *, void *) { return plugAddPlug(1, "K", "a", told.pTable); };
  for (int i = 0; i < 1000; ++i) {
    const int iPlugId = load(told);
    ASSERT_GT(iPlugId, 0);
    ASSERT_EQ(plugUnload(iPlugId), 0);
  }
  EXPECT_EQ(plugGetPlug("K", "a"), nullptr);
}

// --- The log

TEST_F(Manager, LinesNameTheModuleAndTheFunction) {
  plugLoad(nullptr, nullptr);
  ASSERT_EQ(test::logLines().size(), 1U);
  EXPECT_EQ(test::logLines()[0].sModule, "$plug_ctl");
  EXPECT_EQ(test::logLines()[0].sFile, "function_plug_ctl.cpp");
  EXPECT_EQ(test::logLines()[0].sFunction, "plugLoad");
}

TEST_F(Manager, WhatWasDoneIsTracedAtLevel5) {
  told.onEvent = [&](int, int, void *, void *) { return plugAddPlug(1, "K", "a", told.pTable); };
  const std::string sId = std::to_string(load(told));
  EXPECT_EQ(plugUnload(std::stoi(sId)), 0);
  EXPECT_EQ(test::logTexts(5),
            (Texts{"interface [K] [a] registered", "module [" + kTold + "] loaded with the id " + sId,
                   "module with the id " + sId + " unloaded"}));
}

}  // namespace

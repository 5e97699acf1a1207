// The library as a plug-in manager sees it. This program has a plugAddPlug of its own, which notes what the
// library registers.
#include "cvt_itf.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "_version.h"
#include "log_capture.h"
#include "plug_mgr.h"
#include "toy_config.h"

using test::cs;

namespace {

struct Registration {
  int iSelect;
  std::string sKind;
  std::string sName;
  void *pTable;
};

std::vector<Registration> &registrations() {
  static std::vector<Registration> all;
  return all;
}

int f_nAnswer = 0;

}  // namespace

extern "C" __attribute__((visibility("default"))) int plugAddPlug(int iSelect, const char *psKind,
                                                                  const char *psName, void *pTable) {
  registrations().push_back({iSelect, psKind, psName, pTable});
  return f_nAnswer;
}

namespace {

constexpr size_t kSlots = 13;

class Interface : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(cvtPlugLoad(&record), 0); }
  void TearDown() override { cvtEnd(); }

  int deliver(int iEventId) { return record.pfnEventHdl(7, iEventId, nullptr, nullptr); }

  // The table that event 1 registered.
  static cvtInterface &table() { return *static_cast<cvtInterface *>(registrations().back().pTable); }

  // The table as bytes.
  static std::string bytes() { return {reinterpret_cast<const char *>(&table()), sizeof(cvtInterface)}; }

  T_PLUG_MGR_PLUG_VAR record = {};
};

// --- Loading

TEST_F(Interface, LoadingSetsTheEventHandler) {
  EXPECT_NE(record.pfnEventHdl, nullptr);
}

TEST_F(Interface, LoadingLeavesTheRunTimeContextAsItIs) {
  char place = 0;
  T_PLUG_MGR_PLUG_VAR other = {};
  other.ptRTCoreCtx = reinterpret_cast<T_RTCORE_CONTEXT *>(&place);
  EXPECT_EQ(cvtPlugLoad(&other), 0);
  EXPECT_EQ(other.ptRTCoreCtx, reinterpret_cast<T_RTCORE_CONTEXT *>(&place));
  EXPECT_EQ(other.pfnEventHdl, record.pfnEventHdl);
}

TEST_F(Interface, LoadingRegistersNothing) {
  EXPECT_TRUE(registrations().empty());
}

// --- Event 1

TEST_F(Interface, Event1RegistersTheTableUnderItsKindAndName) {
  EXPECT_EQ(deliver(1), 0);
  ASSERT_EQ(registrations().size(), 1U);
  EXPECT_EQ(registrations()[0].iSelect, 1);
  EXPECT_EQ(registrations()[0].sKind, "CVT_INTERFACE");
  EXPECT_EQ(registrations()[0].sName, "cvt2");
  EXPECT_NE(registrations()[0].pTable, nullptr);
}

TEST_F(Interface, AfterEvent1EverySlotIsTheFunctionOfTheSameName) {
  deliver(1);
  EXPECT_EQ(table().FncCvtInit, cvtInit);
  EXPECT_EQ(table().FncCvtEnd, cvtEnd);
  EXPECT_EQ(table().FncCvtInitMessasge, cvtInitMessasge);
  EXPECT_EQ(table().FncCvtGenerateMessasge, cvtGenerateMessasge);
  EXPECT_EQ(table().FncCvtParseMessasge, cvtParseMessasge);
  EXPECT_EQ(table().FncCvtGetNameValue, cvtGetNameValue);
  EXPECT_EQ(table().FncCvtSetNameValue, cvtSetNameValue);
  EXPECT_EQ(table().FncCvtNewMessage, cvtNewMessage);
  EXPECT_EQ(table().FncCvtGenMessage, cvtGenMessage);
  EXPECT_EQ(table().FncCvtFreeMessage, cvtFreeMessage);
  EXPECT_EQ(table().FncCvtSetLoopTime, cvtSetLoopTime);
  EXPECT_EQ(table().FncCvtGetLoopTime, cvtGetLoopTime);
  EXPECT_EQ(table().FncCvtAddLoopTime, cvtAddLoopTime);
}

// As a module that was compiled elsewhere finds them: by position.
TEST_F(Interface, TheSlotsStandInTheirOrder) {
  deliver(1);
  void *const functions[kSlots] = {
      reinterpret_cast<void *>(cvtInit),          reinterpret_cast<void *>(cvtEnd),
      reinterpret_cast<void *>(cvtInitMessasge),  reinterpret_cast<void *>(cvtGenerateMessasge),
      reinterpret_cast<void *>(cvtParseMessasge), reinterpret_cast<void *>(cvtGetNameValue),
      reinterpret_cast<void *>(cvtSetNameValue),  reinterpret_cast<void *>(cvtNewMessage),
      reinterpret_cast<void *>(cvtGenMessage),    reinterpret_cast<void *>(cvtFreeMessage),
      reinterpret_cast<void *>(cvtSetLoopTime),   reinterpret_cast<void *>(cvtGetLoopTime),
      reinterpret_cast<void *>(cvtAddLoopTime)};
  ASSERT_EQ(sizeof(cvtInterface), sizeof functions);
  EXPECT_EQ(std::memcmp(&table(), functions, sizeof functions), 0);
}

TEST_F(Interface, Event1AgainFillsAndRegistersTheSameTableAgain) {
  deliver(1);
  const std::string sFilled = bytes();
  table() = {};
  EXPECT_EQ(deliver(1), 0);
  ASSERT_EQ(registrations().size(), 2U);
  EXPECT_EQ(registrations()[0].pTable, registrations()[1].pTable);
  EXPECT_EQ(registrations()[1].sName, "cvt2");
  EXPECT_EQ(bytes(), sFilled);
}

TEST_F(Interface, ARefusalByTheManagerIsIgnored) {
  f_nAnswer = -1;
  test::clearLog();
  EXPECT_EQ(deliver(1), 0);
  EXPECT_EQ(registrations().size(), 1U);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(Interface, InitialisationStartsNoConfiguration) {
  deliver(1);
  EXPECT_EQ(gptAllInfo, nullptr);
  EXPECT_EQ(gpsRootPath, nullptr);
}

TEST_F(Interface, InitialisationLeavesARunningConfigurationAlone) {
  test::ToyConfig config;
  ASSERT_EQ(config.start(), 0);
  const AllInfo *const ptBefore = gptAllInfo;
  test::clearLog();
  deliver(1);
  EXPECT_EQ(gptAllInfo, ptBefore);
  EXPECT_TRUE(test::logLines().empty());
}

// --- The other events

TEST_F(Interface, EventsBeforeInitialisationRegisterNothing) {
  for (const int iEventId : {0, 2, 3, 4, 5, -1, 0x7fffffff}) EXPECT_EQ(deliver(iEventId), 0) << iEventId;
  EXPECT_TRUE(registrations().empty());
}

TEST_F(Interface, AnUnknownEventChangesNothing) {
  deliver(1);
  const std::string sBefore = bytes();
  test::clearLog();
  for (const int iEventId : {0, 3, 5, -1, 0x7fffffff}) EXPECT_EQ(deliver(iEventId), 0) << iEventId;
  EXPECT_EQ(registrations().size(), 1U);
  EXPECT_EQ(bytes(), sBefore);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(Interface, RunningAndExitDoNothing) {
  deliver(1);
  const std::string sBefore = bytes();
  const T_PLUG_MGR_PLUG_VAR before = record;
  test::clearLog();
  EXPECT_EQ(deliver(2), 0);
  EXPECT_EQ(deliver(4), 0);
  EXPECT_EQ(registrations().size(), 1U);
  EXPECT_EQ(bytes(), sBefore);
  EXPECT_EQ(record.pfnEventHdl, before.pfnEventHdl);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(Interface, ExitDoesNotEndTheLibrary) {
  test::ToyConfig config;
  ASSERT_EQ(config.start(), 0);
  deliver(1);
  deliver(2);
  EXPECT_EQ(deliver(4), 0);
  ASSERT_NE(gptAllInfo, nullptr);
  char sIn[] = "Order,Ann,Rome,[A,1,[];],hi";
  int nError = -1;
  const InMessagePtr ptMsg =
      table().FncCvtParseMessasge(cs("02"), sIn, static_cast<int>(std::strlen(sIn)), &nError);
  ASSERT_NE(ptMsg, nullptr);
  EXPECT_EQ(nError, 0);
  EXPECT_EQ(table().FncCvtFreeMessage(ptMsg), 0);
}

TEST_F(Interface, TheLibraryIsStartedUsedAndEndedThroughTheTable) {
  test::ToyConfig config;
  deliver(1);
  EXPECT_EQ(table().FncCvtInit(config.arg()), 0);
  EXPECT_NE(gptAllInfo, nullptr);
  int nError = 0;
  const InMessagePtr ptMsg = table().FncCvtNewMessage(cs("Order"), cs("02"), &nError);
  ASSERT_NE(ptMsg, nullptr);
  EXPECT_EQ(table().FncCvtSetNameValue(ptMsg, cs("Name"), cs("Ann"), 3), 0);
  const ValuePtr ptValue = table().FncCvtGetNameValue(ptMsg, cs("Name"), &nError);
  ASSERT_NE(ptValue, nullptr);
  EXPECT_EQ(std::string(ptValue->psValue, static_cast<size_t>(ptValue->nLen)), "Ann");
  EXPECT_EQ(table().FncCvtAddLoopTime(ptMsg, cs("Items")), 0);
  EXPECT_EQ(table().FncCvtGetLoopTime(ptMsg, cs("Items")), 1);
  EXPECT_EQ(table().FncCvtSetLoopTime(ptMsg, cs("Items"), 0), 0);
  EXPECT_EQ(table().FncCvtFreeMessage(ptMsg), 0);
  EXPECT_EQ(table().FncCvtEnd(), 0);
  EXPECT_EQ(gptAllInfo, nullptr);
}

// --- Version

constexpr char kRecord[] = "^__VERSION_ID__^=Version[Morvane_v1.7.7] Id[$Rev: 305 $] Build[Apr 15 2014]";

TEST(Version, TheRecordHasItsExactText) {
  EXPECT_STREQ(_cvt2_Get_Ver(), kRecord);
}

TEST(Version, EveryCallReturnsTheSameBuffer) {
  char *const psFirst = _cvt2_Get_Ver();
  EXPECT_EQ(_cvt2_Get_Ver(), psFirst);
}

TEST(Version, TheBufferIsWritableUpToIts256Bytes) {
  char *const ps = _cvt2_Get_Ver();
  for (size_t i = std::strlen(kRecord); i < 256; ++i) EXPECT_EQ(ps[i], 0) << i;
  std::memset(ps, 'x', 255);
  ps[255] = 0;
  EXPECT_EQ(std::string(_cvt2_Get_Ver()), std::string(255, 'x'));
}

TEST(Version, ToolsFindTheRecordInTheFile) {
  std::ifstream in(CVT2_PLUGIN_DIR "/libcvt2.so", std::ios::binary);
  const std::string sFile{std::istreambuf_iterator<char>(in), {}};
  const size_t nAt = sFile.find("^__VERSION_ID__^=");
  ASSERT_NE(nAt, std::string::npos);
  EXPECT_STREQ(sFile.c_str() + nAt, kRecord);
  EXPECT_EQ(sFile.find("^__VERSION_ID__^=", nAt + 1), std::string::npos);
}

}  // namespace

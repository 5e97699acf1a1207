// The library as a module of a plug-in manager that uses the table the moment it is registered.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "cvt_itf.h"
#include "plug_mgr.h"
#include "toy_config.h"
#include "trail.h"

using test::cs;

namespace {

int g_nRegistered = 0;
cvtInterface g_atRegistration;  // what the table held when the manager was called
void *g_pTable = nullptr;

}  // namespace

extern "C" __attribute__((visibility("default"))) int plugAddPlug(int, const char *, const char *,
                                                                  void *pTable) {
  ++g_nRegistered;
  g_pTable = pTable;
  g_atRegistration = *static_cast<cvtInterface *>(pTable);
  return 0;
}

namespace {

class Manager : public testing::Test {
 protected:
  void TearDown() override { cvtEnd(); }

  int load() { return cvtPlugLoad(&record); }
  int deliver(int iEventId) { return record.pfnEventHdl(7, iEventId, nullptr, nullptr); }

  T_PLUG_MGR_PLUG_VAR record = {};
  test::ToyConfig config;
};

TEST_F(Manager, IsGivenATableThatIsFilledAlready) {
  load();
  EXPECT_EQ(deliver(1), 0);
  EXPECT_EQ(g_nRegistered, 1);
  EXPECT_EQ(std::memcmp(&g_atRegistration, g_pTable, sizeof(cvtInterface)), 0);
  EXPECT_EQ(g_atRegistration.FncCvtInit, &cvtInit);
  EXPECT_EQ(g_atRegistration.FncCvtAddLoopTime, &cvtAddLoopTime);
}

TEST_F(Manager, MayLoadTheLibraryTwiceAndDeliverToEitherRecord) {
  T_PLUG_MGR_PLUG_VAR other = {};
  EXPECT_EQ(load(), 0);
  EXPECT_EQ(cvtPlugLoad(&other), 0);
  EXPECT_EQ(deliver(1), 0);
  void *const pFirst = g_pTable;
  EXPECT_EQ(other.pfnEventHdl(8, 1, nullptr, nullptr), 0);
  EXPECT_EQ(g_nRegistered, 2);
  EXPECT_EQ(g_pTable, pFirst);
}

TEST_F(Manager, MayPassAnyDataWithAnEvent) {
  load();
  char sData[] = "data";
  for (const int iEventId : {1, 2, 3, 4}) {
    EXPECT_EQ(record.pfnEventHdl(-1, iEventId, sData, sData), 0) << iEventId;
  }
  EXPECT_STREQ(sData, "data");
  EXPECT_EQ(g_nRegistered, 1);
}

TEST_F(Manager, MayAnnounceItsExitBeforeTheTableIsUsedForTheLastTime) {
  load();
  deliver(1);
  const cvtInterface &table = g_atRegistration;
  ASSERT_EQ(table.FncCvtInit(config.arg()), 0);
  deliver(4);
  char sIn[] = "7,Ann,Rome,[A,1,[];],hi";
  int nError = 77;
  InMessagePtr const ptIn =
      table.FncCvtInitMessasge(cs("Order"), cs("01"), sIn, static_cast<int>(std::strlen(sIn)), &nError);
  ASSERT_NE(ptIn, nullptr);
  char sOut[64];
  int nOut = sizeof sOut;
  InMessagePtr const ptOut = table.FncCvtGenerateMessasge(ptIn, cs("01"), sOut, &nOut, &nError);
  ASSERT_NE(ptOut, nullptr);
  EXPECT_EQ(std::string(sOut, static_cast<size_t>(nOut)), "7,Ann,[A;]");
  nOut = sizeof sOut;
  EXPECT_EQ(table.FncCvtGenMessage(ptIn, sOut, &nOut), 0);
  EXPECT_EQ(std::string(sOut, static_cast<size_t>(nOut)), "7,Ann,Rome,[A,1,[];],hi");
  EXPECT_EQ(table.FncCvtFreeMessage(ptOut), 0);
  EXPECT_EQ(table.FncCvtFreeMessage(ptIn), 0);
  EXPECT_EQ(table.FncCvtEnd(), 0);
  EXPECT_EQ(gptAllInfo, nullptr);
}

// What a filled table cannot tell: that nothing else fills it.
TEST_F(Manager, HasTheTableFilledByTheFirstEventAlone) {
  load();
  deliver(1);
  auto &table = *static_cast<cvtInterface *>(g_pTable);
  const cvtInterface empty = {};
  table = empty;
  EXPECT_EQ(load(), 0);
  for (const int iEventId : {0, 2, 3, 4, 5, -1}) EXPECT_EQ(deliver(iEventId), 0) << iEventId;
  EXPECT_EQ(std::memcmp(&table, &empty, sizeof empty), 0);
  EXPECT_EQ(deliver(1), 0);
  EXPECT_EQ(std::memcmp(&table, &g_atRegistration, sizeof table), 0);
  EXPECT_EQ(table.FncCvtAddLoopTime, &cvtAddLoopTime);
}

TEST_F(Manager, LogsNothingByItself) {
  test::clearLog();
  load();
  for (const int iEventId : {1, 2, 3, 4, 1, 0, -1}) deliver(iEventId);
  EXPECT_TRUE(test::logLines().empty());
}

}  // namespace

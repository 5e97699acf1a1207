// Configurations that follow each other in one process: what a start, a reload and an end keep of the one before.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "cvt.h"
#include "toy_config.h"
#include "trail.h"

using test::cs;

namespace {

class Generations : public testing::Test {
 protected:
  void TearDown() override { cvtEnd(); }

  // A start that may be reloaded.
  void start() {
    config.root.sAttributes = "nReload=\"1\" psBasePath=\"old\"";
    config.writeRoot();
    ASSERT_EQ(config.start(), 0);
    test::clearLog();
  }
  void touch() {
    config.root.sAttributes = "nReload=\"1\" psBasePath=\"new\"";
    config.writeRoot();
    config.touchRoot();
  }

  std::string root() const { return config.path("All/root.xml"); }

  // Makes messages that live at the same time, and releases them.
  static void useMessages(int nMessages) {
    int nError = 0;
    std::vector<InnerMessage *> all;
    for (int i = 0; i < nMessages; ++i) all.push_back(cvtNewMessage(cs("Order"), cs("02"), &nError));
    for (InnerMessage *pt : all) EXPECT_EQ(cvtFreeMessage(pt), 0);
  }
  // Nodes of the pool that messages have or had.
  static int messageNodes() {
    int nNodes = 0;
    for (const MemNode *pt = gptMemRoot->ptMemNodeList; pt != nullptr; pt = pt->ptNext) ++nNodes;
    return nNodes;
  }

  test::ToyConfig config;
};

using Memory = Generations;
using Names = Generations;
using Reload = Generations;
using FailedStart = Generations;

// --- Memory -------------------------------------------------------------------------------------------

TEST_F(Memory, OfMessagesIsKeptByAReload) {
  start();
  useMessages(3);
  const MemRoot *const ptRoot = gptMemRoot;
  touch();
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_STREQ(cvtGetBasePath(), "new");
  EXPECT_EQ(gptMemRoot, ptRoot);
  EXPECT_EQ(messageNodes(), 3);
}

TEST_F(Memory, OfMessagesIsKeptByARestart) {
  start();
  useMessages(3);
  start();
  EXPECT_EQ(messageNodes(), 3);
}

TEST_F(Memory, OfMessagesIsReleasedByTheEnd) {
  start();
  useMessages(3);
  EXPECT_EQ(cvtEnd(), 0);
  start();
  useMessages(1);
  EXPECT_EQ(messageNodes(), 1);
}

TEST_F(Names, AreInternedAfreshByEachStartAlsoWhenNothingWasReleased) {
  const char *const psBefore = cvtStrDup(cs("Order"));
  config.file("id/pipelines.xml", "<broken");
  EXPECT_EQ(config.start(), -1);
  const char *const psFailed = cvtStrDup(cs("Order"));
  EXPECT_NE(psFailed, psBefore);
  EXPECT_EQ(config.start(), -1);
  EXPECT_NE(cvtStrDup(cs("Order")), psFailed);
  EXPECT_STREQ(psBefore, "Order");
  EXPECT_STREQ(psFailed, "Order");
}

TEST_F(Names, MayBeInternedBehindAStartWithoutARootFile) {
  EXPECT_EQ(cvtInit(config.arg("msg")), 0);
  EXPECT_EQ(gptAllInfo, nullptr);
  EXPECT_NE(gptDict, nullptr);
}

// --- Reload -------------------------------------------------------------------------------------------

// Handles put off the reload that the making of a message asks for, not one that the host itself asks for.
TEST_F(Reload, ThatTheHostAsksForDoesNotWaitForHandles) {
  start();
  touch();
  gnMsgNum = 1;
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(gnMsgNum, 1);
  EXPECT_STREQ(cvtGetBasePath(), "new");
  gnMsgNum = 0;
}

TEST_F(Reload, FindsARootPathThatEndsInASlash) {
  config.root.sAttributes = "nReload=\"1\"";
  config.writeRoot();
  const std::string sPath = config.path() + "/";
  ASSERT_EQ(cvtInit(cs(sPath.c_str())), 0);
  EXPECT_EQ(std::string(gpsRootPath), sPath);
  touch();
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_STREQ(cvtGetBasePath(), "new");
  EXPECT_EQ(std::string(gpsRootPath), sPath);
  EXPECT_EQ(std::string(gpsRootFile), sPath + "/All/root.xml");
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
}

TEST_F(Reload, WithoutTheRootPathItselfStaysAsideUntilItIsBack) {
  start();
  std::filesystem::rename(config.path("All"), config.path("away"));
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_STREQ(cvtGetBasePath(), "old");
  std::filesystem::rename(config.path("away"), config.path("All"));
  touch();
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_STREQ(cvtGetBasePath(), "new");
}

// Its name is taken for a directory then, where no root file is.
TEST_F(Reload, LosesARootFileWhoseNameGoesOnBehindXml) {
  config.root.sAttributes = "nReload=\"1\"";
  config.writeRoot();
  const std::string sFile = root() + "x";
  std::filesystem::rename(root(), sFile);
  ASSERT_EQ(config.start(), 0);
  EXPECT_NE(gptAllInfo, nullptr);
  std::filesystem::last_write_time(sFile,
                                   std::filesystem::file_time_type::clock::now() + std::chrono::seconds(10));
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(gptAllInfo, nullptr);
}

// --- A start that fails -------------------------------------------------------------------------------

TEST_F(FailedStart, KeepsNameAndTimeOfTheRootFileThatWasLoadedLast) {
  start();
  const time_t tLoaded = gtLastLoadTime;
  test::ToyConfig broken;
  broken.file("All/root.xml", "<broken");
  broken.touchRoot();
  EXPECT_EQ(broken.start(), -1);
  EXPECT_EQ(std::string(gpsRootFile), root());
  EXPECT_EQ(gtLastLoadTime, tLoaded);
  EXPECT_EQ(std::string(gpsRootPath), broken.path());
}

// A format of this host's own, whose initialiser takes the root file away.
void takeTheRootFileAway(const std::string &sFile) {
  static std::string s_sFile;
  s_sFile = sFile;
  cvtFmtAddPlug(
      cs("own"), [](void *, char *) -> void * { return nullptr; },
      [](void *, void *, char *, char *) -> void * { return nullptr; },
      [](Msg *) { return std::filesystem::remove(s_sFile) ? 0 : -1; });
}

TEST_F(FailedStart, AtTheTimeOfTheRootFileHasItsNameAndRecordAndIsReleasedByTheNextOne) {
  takeTheRootFileAway(root());
  config.root = {};
  config.root.sMessage = test::messageSection({"own"});
  config.file("own/Own.xml", test::definition("own", "Own", {test::field("A")}));
  config.writeRoot();
  EXPECT_EQ(config.start(), -1);
  EXPECT_EQ(std::string(gpsRootFile), root());
  EXPECT_EQ(gtLastLoadTime, 0);
  EXPECT_NE(gptAllInfo, nullptr);
  EXPECT_NE(cvtGetMsg(cs("Own")), nullptr);
  test::ToyConfig good;
  EXPECT_EQ(good.start(), 0);
  EXPECT_EQ(cvtGetMsg(cs("Own")), nullptr);
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
}

TEST_F(FailedStart, AtASecondFileInAllHasLoadedTheFirstAndIsReleasedByTheNextOne) {
  config.file("All/other.xml", config.root.text());
  EXPECT_EQ(config.start(), -1);
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
  test::ToyConfig good;
  std::filesystem::remove(good.path("msg/Order.xml"));
  good.root.sConvert = good.root.sId = "";
  good.writeRoot();
  EXPECT_EQ(good.start(), 0);
  EXPECT_EQ(cvtGetMsg(cs("Order")), nullptr);
}

}  // namespace

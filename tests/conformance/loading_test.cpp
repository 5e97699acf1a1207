// Which files a start reads, and of the root file what; nothing stays open behind them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <string>

#include "cvt.h"
#include "toy_config.h"
#include "trail.h"

using test::cs;
using test::Texts;
using test::trail;

namespace {

class Loading : public testing::Test {
 protected:
  void TearDown() override { cvtEnd(); }

  // A root file in place of the whole configuration.
  void writeRoot(const std::string &sText) {
    config.file("All/root.xml", sText);
    test::clearLog();
  }

  test::ToyConfig config;
};

using RootFile = Loading;
using Directory = Loading;

Texts g_given;
int g_nAnswer = 0;
int take(char *psFileName) {
  g_given.emplace_back(psFileName);
  return g_nAnswer;
}

// --- The root file ------------------------------------------------------------------------------------

TEST_F(RootFile, ThatIsNamedMayHaveOthersBesideIt) {
  config.file("All/other.xml", "<broken");
  EXPECT_EQ(cvtInit(config.arg("All/root.xml")), 0);
  EXPECT_EQ(std::string(gpsRootFile), config.path("All/root.xml"));
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
}

TEST_F(RootFile, OfADirectoryMayHaveAnyName) {
  std::filesystem::rename(config.path("All/root.xml"), config.path("All/a.b c.xml"));
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(std::string(gpsRootFile), config.path("All/a.b c.xml"));
}

TEST_F(RootFile, BelowTheTopDirectoryLeavesAnEmptyRootPath) {
  EXPECT_EQ(cvtInit(cs("/nosuch/root.xml")), -1);
  EXPECT_STREQ(gpsRootPath, "");
  EXPECT_TRUE(test::logged(1, "Parse File[/nosuch/root.xml] Err!!"));
  EXPECT_EQ(gpsRootFile, nullptr);
}

TEST_F(RootFile, HoldsOneRecordWhichIsItsFirstChildWhateverItsName) {
  for (const char *psName : {"AllInfo", "Any"}) {
    const std::string sName = psName;
    writeRoot("<AllInfo psBasePath=\"outside\" nDebug=\"1\"><" + sName + " psBasePath=\"first\"/>" +
              "<AllInfo psBasePath=\"second\" nDebug=\"2\"/></AllInfo>");
    EXPECT_EQ(config.start(), 0) << psName;
    EXPECT_STREQ(cvtGetBasePath(), "first") << psName;
    EXPECT_EQ(cvtIsDebug(), 0) << psName;
  }
}

TEST_F(RootFile, HasACommentInFrontOfItsRecordTakenForTheRecord) {
  writeRoot("<AllInfo><!-- none -->" + config.root.text().substr(std::strlen("<AllInfo>")));
  EXPECT_EQ(config.start(), 0);
  ASSERT_NE(gptAllInfo, nullptr);
  EXPECT_EQ(gptAllInfo->ptPlug, nullptr);
  EXPECT_EQ(gptAllInfo->ptMessage, nullptr);
  EXPECT_TRUE(trail().empty());
}

TEST_F(RootFile, LeavesOutTheSectionThatIsMissingAndReadsTheOthers) {
  config.root.sConvert = "";
  config.root.sId = "<Id __ID=\"ptId\" psIdPath=\"id\"/>";
  writeRoot(config.root.text());
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(gptAllInfo->ptConvert, nullptr);
  EXPECT_EQ(gptAllInfo->ptPlug, gptPlugInfo);
  EXPECT_EQ(gptAllInfo->ptMessage, gptFmtGlobalInfo);
  EXPECT_NE(gptAllInfo->ptId, nullptr);
  EXPECT_TRUE(trail().empty());
}

TEST_F(RootFile, IsNotYetThereForTheSectionsThatItHolds) {
  static std::string s_sBase;
  static bool s_bRecord;
  s_sBase = "nobody asked";
  s_bRecord = true;
  cvtFmtAddPlug(
      cs("asks"), [](void *, char *) -> void * { return nullptr; },
      [](void *, void *, char *, char *) -> void * { return nullptr; },
      [](Msg *) {
        s_sBase = cvtGetBasePath();
        s_bRecord = gptAllInfo != nullptr || gpsRootFile != nullptr;
        return 0;
      });
  config.root = {};
  config.root.sAttributes = "psBasePath=\"base\"";
  config.root.sMessage = test::messageSection({"asks"});
  config.file("asks/One.xml", test::definition("asks", "One", {test::field("A")}));
  writeRoot(config.root.text());
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(s_sBase, "");
  EXPECT_FALSE(s_bRecord);
  EXPECT_STREQ(cvtGetBasePath(), "base");
}

// --- Directories --------------------------------------------------------------------------------------

TEST_F(Directory, HandsOverEntriesWithoutALookAtWhatTheyAre) {
  config.file("files/folder.xml/inside.xml", "");
  std::filesystem::create_symlink("nowhere", config.path("files/link.xml"));
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("files"), take), 0);
  std::sort(g_given.begin(), g_given.end());
  EXPECT_EQ(g_given, (Texts{config.path("files/folder.xml"), config.path("files/link.xml")}));
}

TEST_F(Directory, ThatCannotBeOpenedIsNotEntered) {
  ASSERT_EQ(config.start(), 0);
  test::clearLog();
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("none"), take), 0);
  EXPECT_EQ(test::logTexts(0),
            Texts{"Open Dir [" + config.path("none") + "] err:[No such file or directory]!!"});
}

TEST_F(Directory, WhoseFilesNeedNothingIsLoadedWithoutALine) {
  config.file("files/a.xml", "").file("files/b.xml", "");
  ASSERT_EQ(config.start(), 0);
  test::clearLog();
  g_nAnswer = 1;
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("files"), take), 0);
  EXPECT_EQ(g_given.size(), 2U);
  EXPECT_EQ(test::logTexts(0), Texts{"Enter [files] ... "});
}

// Files that this process has open; the listing itself is always one of them.
std::ptrdiff_t openFiles() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST_F(Directory, IsClosedHoweverItsLoadingEnds) {
  config.file("files/a.xml", "").file("files/b.xml", "");
  ASSERT_EQ(config.start(), 0);
  const auto nBefore = openFiles();
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("files"), take), 0);
  EXPECT_EQ(openFiles(), nBefore);
  g_nAnswer = -1;
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("files"), take), -1);
  EXPECT_EQ(openFiles(), nBefore);
  config.file("All/other.xml", config.root.text());
  EXPECT_EQ(config.start(), -1);
  EXPECT_TRUE(test::logged(1, "Dir[" + config.path() + "/All] could only load [1] file: Err!!"));
  EXPECT_EQ(openFiles(), nBefore);
}

}  // namespace

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "cvt.h"
#include "log_capture.h"
#include "toy_config.h"

using test::cs;
using test::logged;
using test::loggedInOrder;
using test::logTexts;

namespace {

using Texts = std::vector<std::string>;

// The lines of the level that begin with psStart.
Texts startingWith(const char *psStart, int nLevel) {
  Texts found;
  for (const std::string &s : logTexts(nLevel)) {
    if (s.compare(0, std::strlen(psStart), psStart) == 0) found.push_back(s);
  }
  return found;
}

class Start : public testing::Test {
 protected:
  void TearDown() override { cvtEnd(); }
  test::ToyConfig config;
};

using RootFile = Start;
using RootRecord = Start;
using Section = Start;
using FailedStart = Start;
using Restart = Start;
using End = Start;
using LoadFile = Start;
using LoadDirectory = Start;

// --- Where the root is
// --------------------------------------------------------------------------------------------

TEST_F(Start, RefusesANullPath) {
  EXPECT_EQ(cvtInit(nullptr), -1);
  EXPECT_EQ(logTexts(), Texts{"[psPath] is NULL"});
  EXPECT_EQ(gpsRootPath, nullptr);
}

TEST_F(Start, OfADirectoryLoadsTheFileInAll) {
  EXPECT_EQ(config.start(), 0);
  EXPECT_NE(gptAllInfo, nullptr);
  EXPECT_EQ(std::string(gpsRootPath), config.path());
  EXPECT_EQ(std::string(gpsRootFile), config.path("All/root.xml"));
  EXPECT_TRUE(logTexts(1).empty());
  EXPECT_EQ(logTexts(5).front(), "Enter [All] ... ");
  EXPECT_EQ(logTexts(5).back(), "Init Convert ok!!");
}

TEST_F(Start, OfAFileLoadsItAndLeavesTheRootPathAboveItsDirectory) {
  EXPECT_EQ(cvtInit(config.arg("All/root.xml")), 0);
  EXPECT_NE(gptAllInfo, nullptr);
  EXPECT_EQ(std::string(gpsRootPath), config.path());
  EXPECT_EQ(std::string(gpsRootFile), config.path("All/root.xml"));
  EXPECT_FALSE(logged(5, "Enter [All] ... "));
  EXPECT_TRUE(logged(5, "Init Convert ok!!"));
}

TEST_F(Start, CopiesThePathGiven) {
  std::string sPath = config.path();
  EXPECT_EQ(cvtInit(sPath.data()), 0);
  std::fill(sPath.begin(), sPath.end(), '#');
  EXPECT_EQ(std::string(gpsRootPath), config.path());
}

TEST_F(Start, LogsNoLoadedLineForTheRootFileButForTheOthers) {
  EXPECT_EQ(config.start(), 0);
  Texts loaded = startingWith("Load File", 5);
  std::sort(loaded.begin(), loaded.end());
  EXPECT_EQ(loaded,
            (Texts{"Load File [Invoice.xml] ok", "Load File [Order.xml] ok", "Load File [bill.xml] ok",
                   "Load File [choice.xml] ok", "Load File [pipelines.xml] ok"}));
}

TEST_F(Start, RemembersTheRootFilesTime) {
  EXPECT_EQ(config.start(), 0);
  struct stat tStat {};
  ASSERT_EQ(stat(gpsRootFile, &tStat), 0);
  EXPECT_EQ(gtLastLoadTime, tStat.st_mtime);
}

TEST_F(Start, WithoutADirectoryAllSucceedsWithNothing) {
  EXPECT_EQ(cvtInit(config.arg("msg")), 0);
  EXPECT_EQ(logTexts(1),
            Texts{"Open Dir [" + config.path("msg/All") + "] err:[No such file or directory]!!"});
  EXPECT_EQ(gptAllInfo, nullptr);
  EXPECT_TRUE(logged(5, "Init Convert ok!!"));
}

TEST_F(Start, WithoutAFileInAllSucceedsWithNothing) {
  std::filesystem::remove(config.path("All/root.xml"));
  config.file("All/root.XML", "x").file("All/root.xml.bak", "x").file("All/xml", "x");
  EXPECT_EQ(config.start(), 0);
  EXPECT_TRUE(logTexts(1).empty());
  EXPECT_EQ(gptAllInfo, nullptr);
}

TEST_F(Start, WithTwoFilesInAllFailsAfterLoadingOne) {
  config.file("All/other.xml", config.root.text());
  EXPECT_EQ(config.start(), -1);
  EXPECT_EQ(logTexts(), (Texts{"Dir[" + config.path() + "/All] could only load [1] file: Err!!",
                               "XmlFileInit [All] Init Err!!", "Init Path[" + config.path() + "] err!!\n"}));
  EXPECT_NE(gptAllInfo, nullptr);
}

TEST_F(Start, AfterTwoFilesInAllWorksAgain) {
  config.file("All/other.xml", config.root.text());
  EXPECT_EQ(config.start(), -1);
  std::filesystem::remove(config.path("All/other.xml"));
  EXPECT_EQ(config.start(), 0);
}

TEST_F(Start, SurvivesOddNames) {
  for (const char *ps : {"", "/", "//", ".", "..", ".xml", "/.xml", "//.xml", "nosuch.xml", "/nosuch.xml",
                         "no/such.xml", "no/su/ch.xml", "no/su/ch.xmlx"}) {
    cvtInit(cs(ps));
    EXPECT_EQ(gptAllInfo, nullptr) << ps;
  }
  cvtInit(cs(std::string(5000, 'd').c_str()));
  cvtInit(cs((std::string(5000, 'd') + "/All/root.xml").c_str()));
  EXPECT_EQ(gptAllInfo, nullptr);
}

// --- Root file names too short to hold root, directory and name
// -----------------------------------------------

class InDirectory {
 public:
  explicit InDirectory(const std::string &s) : m_before(std::filesystem::current_path()) {
    std::filesystem::current_path(s);
  }
  ~InDirectory() { std::filesystem::current_path(m_before); }

 private:
  std::filesystem::path m_before;
};

TEST_F(RootFile, InTheCurrentDirectoryIsCompleted) {
  const InDirectory here(config.path("All"));
  EXPECT_EQ(cvtInit(cs("root.xml")), 0);
  EXPECT_NE(gptAllInfo, nullptr);
  EXPECT_TRUE(std::filesystem::equivalent(gpsRootPath, config.path()));
}

TEST_F(RootFile, BelowTheCurrentDirectoryIsCompleted) {
  const InDirectory here(config.path());
  EXPECT_EQ(cvtInit(cs("All/root.xml")), 0);
  EXPECT_NE(gptAllInfo, nullptr);
  EXPECT_TRUE(std::filesystem::equivalent(gpsRootPath, config.path()));
}

TEST_F(RootFile, WithADotBeforeItIsCompleted) {
  const InDirectory here(config.path("All"));
  EXPECT_EQ(cvtInit(cs("./root.xml")), 0);
  EXPECT_TRUE(std::filesystem::equivalent(gpsRootPath, config.path()));
}

TEST_F(RootFile, ThatIsALinkCountsWhereTheLinkIs) {
  std::filesystem::rename(config.path("All/root.xml"), config.path("kept"));
  std::filesystem::create_symlink("../kept", config.path("All/root.xml"));
  const InDirectory here(config.path());
  EXPECT_EQ(cvtInit(cs("All/root.xml")), 0);
  EXPECT_NE(gptAllInfo, nullptr);
  EXPECT_TRUE(std::filesystem::equivalent(gpsRootPath, config.path()));
}

TEST_F(RootFile, WithTwoSlashesMayBeRelative) {
  const InDirectory here(config.path("msg"));
  EXPECT_EQ(cvtInit(cs("../All/root.xml")), 0);
  EXPECT_STREQ(gpsRootPath, "..");
  EXPECT_STREQ(gpsRootFile, "../All/root.xml");
}

TEST_F(RootFile, InTheTopDirectoryIsRefusedWithWhatToWriteInstead) {
  EXPECT_EQ(cvtInit(cs("/root.xml")), -1);
  EXPECT_EQ(logTexts().front(),
            "Root File[/root.xml] has no directory above it: give its full name, ROOT/All/root.xml");
  EXPECT_EQ(logTexts().back(), "Init Path[/root.xml] err!!\n");
}

// A process whose current directory was removed cannot complete a name.
TEST_F(RootFile, WithoutACurrentDirectoryIsRefusedWithWhatToWriteInstead) {
  const std::string sGone = config.path("gone");
  ASSERT_EQ(mkdir(sGone.c_str(), 0700), 0);
  ASSERT_EQ(chdir(sGone.c_str()), 0);
  ASSERT_EQ(rmdir(sGone.c_str()), 0);
  EXPECT_EQ(cvtInit(cs("root.xml")), -1);
  EXPECT_EQ(logTexts().front(),
            "Root File[root.xml] has no directory above it: give its full name, ROOT/All/root.xml");
  ASSERT_EQ(chdir("/"), 0);
}

TEST_F(RootFile, ThatIsGoneBeforeItsTimeIsTakenFailsTheStart) {
  static std::string sFile;
  sFile = config.path("All/root.xml");
  cvtFmtAddPlug(
      cs("flat"), [](void *, char *) -> void * { return nullptr; },
      [](void *, void *, char *, char *) -> void * { return nullptr; },
      [](Msg *) { return unlink(sFile.c_str()); });
  config.root = {};
  config.root.sMessage = test::messageSection({"flat"});
  config.writeRoot();
  config.file("flat/One.xml", test::definition("flat", "One", {test::field("A")}));
  EXPECT_EQ(config.start(), -1);
  EXPECT_TRUE(loggedInOrder({"Parse File[" + sFile + "] Err!!", "XmlFileInit [All] Init Err!!"}));
}

// --- The root record
// ------------------------------------------------------------------------------------------------

TEST_F(RootRecord, AnswersNothingBeforeAStart) {
  EXPECT_STREQ(cvtGetBasePath(), "");
  EXPECT_TRUE(logTexts().empty());
  EXPECT_EQ(cvtIsDebug(), 0);
  EXPECT_EQ(logTexts(), Texts{"[gptAllInfo] is NULL"});
}

TEST_F(RootRecord, HoldsItsAttributes) {
  config.root.sAttributes = "psBasePath=\"/base\" nReload=\"2\" nDebug=\"3\"";
  config.writeRoot();
  EXPECT_EQ(config.start(), 0);
  EXPECT_STREQ(cvtGetBasePath(), "/base");
  EXPECT_EQ(gptAllInfo->psBasePath, cvtStrDup(cs("/base")));  // interned
  EXPECT_EQ(gptAllInfo->nReload, 2);
  EXPECT_EQ(cvtIsDebug(), 3);
}

TEST_F(RootRecord, ReadsAbsentAttributesAsNothing) {
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(gptAllInfo->psBasePath, nullptr);
  EXPECT_STREQ(cvtGetBasePath(), "");
  EXPECT_EQ(gptAllInfo->nReload, 0);
  EXPECT_EQ(cvtIsDebug(), 0);
}

TEST_F(RootRecord, HoldsWhatTheSectionsReturned) {
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(gptAllInfo->ptPlug, gptPlugInfo);
  EXPECT_EQ(gptAllInfo->ptMessage, gptFmtGlobalInfo);
  EXPECT_EQ(gptAllInfo->ptConvert, gptCvtGlobalInfo);
  EXPECT_STREQ(static_cast<CvtIdArgs *>(gptAllInfo->ptId)->psIdPath, "id");
}

TEST_F(RootRecord, IsTheOnlyTypeOfItsModule) {
  test::clearLog();
  EXPECT_EQ(sttParseVoidcvt_init(nullptr, cs("allinfo")), nullptr);
  EXPECT_EQ(sttGenVoidcvt_init(nullptr, nullptr, cs("x"), cs("Plug")), nullptr);
  EXPECT_TRUE(logTexts(0).empty());
}

TEST_F(RootRecord, WrittenToAFileStartsTheSameAgain) {
  config.root.sAttributes = "psBasePath=\"/base\" nDebug=\"1\"";
  config.root.sPlug = "";
  config.root.sMessage = test::messageSection({"none", "nothing"});
  config.root.sConvert = "<Convert __ID=\"ptConvert\" psCvtPath=\"none\"/>";
  config.root.sId = "<Id __ID=\"ptId\" psIdPath=\"none\"/>";
  config.writeRoot();
  ASSERT_EQ(config.start(), 0);
  std::filesystem::create_directory(config.path("Copy"));
  EXPECT_EQ(sttGenXmlFile(cs(config.path("Copy/root.xml").c_str()), gptAllInfo, cs("AllInfo"), cs("AllInfo"),
                          reinterpret_cast<void *>(sttGenVoidcvt_init)),
            0);
  EXPECT_EQ(cvtInit(config.arg("Copy/root.xml")), 0);
  EXPECT_STREQ(cvtGetBasePath(), "/base");
  EXPECT_EQ(cvtIsDebug(), 1);
  EXPECT_EQ(gptAllInfo->ptPlug, nullptr);
  EXPECT_EQ(gptFmtGlobalInfo->ptCvtFmtArgs->gnMaxValue, 12);
  EXPECT_STREQ(gptFmtGlobalInfo->ptCvtFmtArgs->ptMsgList->ptNext->psPath, "nothing");
  EXPECT_STREQ(gptCvtGlobalInfo->ptArgs->psCvtPath, "none");
  EXPECT_STREQ(static_cast<CvtIdArgs *>(gptAllInfo->ptId)->psIdPath, "none");
}

// --- Sections
// -------------------------------------------------------------------------------------------------------

TEST_F(Section, OrderIsFixedWhateverTheFileSays) {
  const test::RootFile &root = config.root;
  config.file("All/root.xml", "<AllInfo><AllInfo>" + root.sId + root.sConvert + root.sMessage + root.sPlug +
                                  "</AllInfo></AllInfo>");
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(startingWith("Enter", 5), (Texts{"Enter [All] ... ", "Enter [msg] ... ", "Enter [cvt] ... ",
                                             "Enter [id] ... ", "Enter [idinfo] ... "}));
}

TEST_F(Section, ThatIsMissingIsSkipped) {
  config.root = {};
  config.writeRoot();
  EXPECT_EQ(config.start(), 0);
  ASSERT_NE(gptAllInfo, nullptr);
  EXPECT_EQ(gptAllInfo->ptPlug, nullptr);
  EXPECT_EQ(gptAllInfo->ptMessage, nullptr);
  EXPECT_EQ(gptAllInfo->ptConvert, nullptr);
  EXPECT_EQ(gptAllInfo->ptId, nullptr);
  EXPECT_TRUE(logTexts(1).empty());
}

TEST_F(Section, UnderAnotherIdIsNotRead) {
  config.root.sId = "<Id __ID=\"other\" psIdPath=\"nowhere\"/>";
  config.writeRoot();
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(gptAllInfo->ptId, nullptr);
}

// What follows the failure of a section, from the statement of the root record on.
Texts sectionTrail(const test::ToyConfig &config, const std::string &sStatement) {
  const std::string sFile = config.path("All/root.xml");
  return {sStatement + " is Err!!",
          "parse xml[AllInfo)" + sFile + "] faile",
          "Parse Xml File To Xml Struct Err!!",
          "Parse File[" + sFile + "] Err!!",
          "Init[root.xml] err !!",
          "XmlFileInit [All] Init Err!!",
          "Init Path[" + config.path() + "] err!!\n"};
}

TEST_F(Section, PlugThatFailsFailsTheStart) {
  config.root.sPlug = test::plugSection({"psName=\"none\""});
  config.writeRoot();
  EXPECT_EQ(config.start(), -1);
  EXPECT_TRUE(loggedInOrder({"Get PlugInfo Err!!"}));
  EXPECT_TRUE(loggedInOrder(sectionTrail(
      config, "void * ptPlug = sttParseXmlStruct(ptXmlNode, \"Plug\", \"ptPlug\", cvtPlugInit)")));
  EXPECT_EQ(gptAllInfo, nullptr);
  EXPECT_TRUE(startingWith("Enter [msg]", 5).empty());  // later sections do not run
}

TEST_F(Section, MessageThatFailsFailsTheStart) {
  config.file("msg/Order.xml", "<nobody/>");
  EXPECT_EQ(config.start(), -1);
  EXPECT_TRUE(loggedInOrder({"cvt Message Parse Err!!"}));
  EXPECT_TRUE(loggedInOrder(sectionTrail(
      config, "void * ptMessage = sttParseXmlStruct(ptXmlNode, \"Message\", \"ptMessage\", cvtFmtInit)")));
  EXPECT_EQ(gptAllInfo, nullptr);
  EXPECT_TRUE(startingWith("Enter [cvt]", 5).empty());
}

TEST_F(Section, ConvertThatFailsFailsTheStart) {
  config.file("cvt/bill.xml", "<nobody/>");
  EXPECT_EQ(config.start(), -1);
  EXPECT_TRUE(loggedInOrder({"Convert Pare Path[cvt] err!!"}));
  EXPECT_TRUE(loggedInOrder(sectionTrail(
      config, "void * ptConvert = sttParseXmlStruct(ptXmlNode, \"Convert\", \"ptConvert\", cvtCvtInit)")));
  EXPECT_EQ(gptAllInfo, nullptr);
  EXPECT_TRUE(startingWith("Enter [id]", 5).empty());
}

TEST_F(Section, IdThatFailsFailsTheStart) {
  config.file("id/pipelines.xml", "<nobody/>");
  EXPECT_EQ(config.start(), -1);
  EXPECT_TRUE(loggedInOrder({"Parse Id File Err In[id]!!\n"}));
  EXPECT_TRUE(loggedInOrder(
      sectionTrail(config, "void * ptId = sttParseXmlStruct(ptXmlNode, \"Id\", \"ptId\", cvtIdInit)")));
  EXPECT_EQ(gptAllInfo, nullptr);
}

// --- Failures, and what comes after them
// ----------------------------------------------------------------------

TEST_F(FailedStart, OfABrokenFileSaysWhere) {
  config.file("All/root.xml", "<AllInfo>\n<AllInfo></oops>");
  EXPECT_EQ(config.start(), -1);
  const std::string sFile = config.path("All/root.xml");
  EXPECT_TRUE(
      loggedInOrder({"[ptXmlDoc = xmlFileParse(psFileName)] is NULL", "Parse Xml File To Xml Struct Err!!",
                     "Parse File[" + sFile + "] Err!!", "Init[root.xml] err !!",
                     "XmlFileInit [All] Init Err!!", "Init Path[" + config.path() + "] err!!\n"}));
  EXPECT_EQ(startingWith(("File[" + sFile + "] line 2").c_str(), 1).size(), 1U);
}

TEST_F(FailedStart, OfAFileDoesNotSpeakOfADirectoryEntry) {
  config.file("All/root.xml", "<AllInfo>");
  EXPECT_EQ(cvtInit(config.arg("All/root.xml")), -1);
  const std::string sFile = config.path("All/root.xml");
  EXPECT_TRUE(startingWith("Init[root.xml]", 1).empty());
  EXPECT_TRUE(loggedInOrder({"Parse File[" + sFile + "] Err!!", "XmlFileInit [All] Init Err!!",
                             "Init Path[" + sFile + "] err!!\n"}));
}

TEST_F(FailedStart, OfAnotherRootElementNamesBoth) {
  config.file("All/root.xml", "<allInfo><AllInfo/></allInfo>");
  EXPECT_EQ(config.start(), -1);
  EXPECT_TRUE(logged(1, "[AllInfo] is different then xml root name[allInfo]"));
}

TEST_F(FailedStart, OfAnEmptyRootElement) {
  config.file("All/root.xml", "<AllInfo/>");
  EXPECT_EQ(config.start(), -1);
  EXPECT_TRUE(logged(1, "[ptHeadNode = xmlGetChileNode(ptXmlRoot)] is NULL"));
}

TEST_F(FailedStart, OfADirectoryNamedLikeAFile) {
  std::filesystem::remove(config.path("All/root.xml"));
  std::filesystem::create_directory(config.path("All/dir.xml"));
  EXPECT_EQ(config.start(), -1);
  EXPECT_TRUE(logged(1, "Init[dir.xml] err !!"));
}

TEST_F(FailedStart, IsFollowedByAGoodOne) {
  for (const char *ps :
       {"All/root.xml", "msg/Order.xml", "cvt/bill.xml", "id/pipelines.xml", "idinfo/choice.xml"}) {
    test::ToyConfig good;
    config.file(ps, "<broken");
    EXPECT_EQ(config.start(), -1) << ps;
    EXPECT_EQ(good.start(), 0) << ps;
    EXPECT_NE(cvtGetMsg(cs("Invoice")), nullptr) << ps;
    cvtEnd();
  }
}

TEST_F(FailedStart, LeavesWhatItHadReadToTheNextStart) {
  config.file("id/pipelines.xml", "<broken");
  EXPECT_EQ(config.start(), -1);
  const Msg *const ptOrder = cvtGetMsg(cs("Order"));
  ASSERT_NE(ptOrder, nullptr);
  config.file("id/pipelines.xml", test::pipelines({{"02", {"toyName", "pubParse"}, {"pubGenerate"}}}));
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(cvtGetMsg(cs("Order")), ptOrder);  // nothing was released, so its file was not read again
}

// Dispatchers of the format: three for each time that it was registered.
int dispatchers(const char *psFormat) {
  const SttInfo *ptType = gptSttInfo;
  while (ptType != nullptr && std::strcmp(ptType->psTypeName, psFormat) != 0) ptType = ptType->ptNext;
  int nCount = 0;
  for (const FuncList *pt = ptType == nullptr ? nullptr : ptType->ptVoidFunction; pt != nullptr;
       pt = pt->ptNext)
    ++nCount;
  return nCount;
}

TEST_F(FailedStart, AddsToWhatEarlierOnesHaveLeftUntilTheEnd) {
  config.file("id/pipelines.xml", "<broken");
  for (int i = 1; i <= 3; ++i) {
    EXPECT_EQ(config.start(), -1);
    EXPECT_EQ(dispatchers("toy"), 3 * i);
  }
  EXPECT_EQ(cvtEnd(), 0);
  EXPECT_EQ(dispatchers("toy"), 0);
  EXPECT_EQ(config.start(), -1);
  EXPECT_EQ(dispatchers("toy"), 3);
}

TEST_F(FailedStart, IsReleasedByTheSecondGoodOneAfterIt) {
  const std::string sGood = test::pipelines({{"02", {"toyName", "pubParse"}, {"pubGenerate"}}});
  config.file("id/pipelines.xml", "<broken");
  EXPECT_EQ(config.start(), -1);
  config.file("id/pipelines.xml", sGood);
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(dispatchers("toy"), 6);
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(dispatchers("toy"), 3);
}

// --- Restart and end
// ------------------------------------------------------------------------------------------------

TEST_F(Restart, PutsTheNewConfigurationInThePlaceOfTheOld) {
  EXPECT_EQ(config.start(), 0);
  test::ToyConfig other;
  std::filesystem::remove(other.path("msg/Invoice.xml"));
  other.root.sAttributes = "psBasePath=\"other\"";
  other.root.sConvert = other.root.sId = "";
  other.writeRoot();
  EXPECT_EQ(other.start(), 0);
  EXPECT_STREQ(cvtGetBasePath(), "other");
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
  EXPECT_EQ(cvtGetMsg(cs("Invoice")), nullptr);
  EXPECT_EQ(gptCvtGlobalInfo, nullptr);
  EXPECT_EQ(gptFormatInfo, nullptr);
}

TEST_F(Restart, MayBeAskedForWithTheRootPathItself) {
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(cvtInit(gpsRootPath), 0);
  EXPECT_EQ(std::string(gpsRootPath), config.path());
  EXPECT_NE(gptAllInfo, nullptr);
}

TEST_F(Restart, MayBeAskedForWithTheRootFileItself) {
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(cvtInit(gpsRootFile), 0);
  EXPECT_EQ(std::string(gpsRootFile), config.path("All/root.xml"));
}

TEST_F(Restart, ThatFailsHasReleasedTheOldConfiguration) {
  EXPECT_EQ(config.start(), 0);
  test::ToyConfig broken;
  broken.file("All/root.xml", "<broken");
  EXPECT_EQ(broken.start(), -1);
  EXPECT_EQ(gptAllInfo, nullptr);
  EXPECT_EQ(gptPlugInfo, nullptr);
  EXPECT_EQ(gptFmtGlobalInfo, nullptr);
  EXPECT_EQ(std::string(gpsRootFile), config.path("All/root.xml"));  // still the one that was loaded
  EXPECT_EQ(config.start(), 0);
}

TEST_F(Restart, ClosesThePlugInsBesideTheOldRecordAndTheNewRootPath) {
  config.root.sAttributes = "psBasePath=\"old\"";
  config.root.sPlug = test::plugSection({"psName=\"toy\"", "psName=\"first\""});
  config.writeRoot();
  EXPECT_EQ(config.start(), 0);
  test::ToyConfig other;
  EXPECT_EQ(other.start(), 0);
  EXPECT_TRUE(
      logged(5, "there are plug-ins definitions converters pipelines record, base path [old], root [" +
                    other.path() + "]"));
}

TEST_F(Restart, OfADirectoryWithoutARootLeavesNothing) {
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(cvtInit(config.arg("msg")), 0);
  EXPECT_EQ(gptAllInfo, nullptr);
  EXPECT_EQ(gptFmtGlobalInfo, nullptr);
}

TEST_F(End, ReleasesEverythingButTheTwoPaths) {
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(cvtEnd(), 0);
  EXPECT_EQ(gptAllInfo, nullptr);
  EXPECT_EQ(gptSttInfo, nullptr);
  EXPECT_EQ(gptDict, nullptr);
  EXPECT_EQ(gptPlugInfo, nullptr);
  EXPECT_EQ(gptFmtGlobalInfo, nullptr);
  EXPECT_EQ(gptCvtGlobalInfo, nullptr);
  EXPECT_EQ(gptFormatInfo, nullptr);
  EXPECT_EQ(std::string(gpsRootPath), config.path());
  EXPECT_EQ(std::string(gpsRootFile), config.path("All/root.xml"));
  EXPECT_STREQ(cvtGetBasePath(), "");
}

TEST_F(End, ReleasesTypesAndNamesBeforeThePlugInsAndTheRestBehindThem) {
  config.root.sPlug = test::plugSection({"psName=\"toy\"", "psName=\"first\""});
  config.writeRoot();
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(cvtEnd(), 0);
  EXPECT_TRUE(logged(5, "there are plug-ins definitions converters pipelines record, base path [], root [" +
                            config.path() + "]"));
}

TEST_F(End, BeforeAStartAndTwiceIsHarmless) {
  EXPECT_EQ(cvtEnd(), 0);
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(cvtEnd(), 0);
  EXPECT_EQ(cvtEnd(), 0);
  EXPECT_EQ(std::string(gpsRootFile), config.path("All/root.xml"));
}

TEST_F(End, IsFollowedByAStartAsOftenAsWanted) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(config.start(), 0);
    char sIn[] = "Order,Ann,Rome,[],hi";
    int nError = 0;
    InnerMessage *const pt = cvtParseMessasge(cs("02"), sIn, static_cast<int>(strlen(sIn)), &nError);
    ASSERT_NE(pt, nullptr);
    cvtFreeMessage(pt);
    EXPECT_EQ(cvtEnd(), 0);
  }
  EXPECT_EQ(cvtInit(gpsRootPath), 0);
  EXPECT_NE(gptAllInfo, nullptr);
}

// --- Loading of files and directories
// -------------------------------------------------------------------------

// A file initialiser that keeps the names it is given and answers g_nAnswer.
Texts g_given;
int g_nAnswer = 0;
int take(char *psFileName) {
  g_given.emplace_back(psFileName);
  return g_nAnswer;
}

TEST_F(LoadFile, ChecksItsArgumentsInOrder) {
  EXPECT_EQ(cvtIniParseFileXml(nullptr, nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(cvtIniParseFileXml(nullptr, cs("d"), nullptr, nullptr), -1);
  EXPECT_EQ(cvtIniParseFileXml(nullptr, cs("d"), cs("f"), nullptr), -1);
  EXPECT_EQ(logTexts(), (Texts{"[psDir] is NULL", "[psFileName] is NULL", "[Init] is NULL"}));
}

TEST_F(LoadFile, JoinsBaseDirectoryAndName) {
  EXPECT_EQ(cvtIniParseFileXml(cs("/base"), cs("dir"), cs("f.xml"), take), 0);
  EXPECT_EQ(g_given, Texts{"/base/dir/f.xml"});
  EXPECT_EQ(logTexts(0), Texts{"Load File [f.xml] ok"});
  EXPECT_EQ(test::logLines().front().nLevel, 5);
}

TEST_F(LoadFile, TakesTheRootPathForANullBase) {
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(cvtIniParseFileXml(nullptr, cs("dir"), cs("f.xml"), take), 0);
  EXPECT_EQ(g_given, Texts{config.path("dir/f.xml")});
}

TEST_F(LoadFile, FailsForANullBaseBeforeAStart) {
  EXPECT_EQ(cvtIniParseFileXml(nullptr, cs("dir"), cs("f.xml"), take), -1);
  EXPECT_EQ(logTexts(), Texts{"[gpsRootPath] is NULL"});
  EXPECT_TRUE(g_given.empty());
}

TEST_F(LoadFile, IsSilentWhenThereWasNothingToDo) {
  g_nAnswer = 1;
  EXPECT_EQ(cvtIniParseFileXml(cs("/base"), cs("dir"), cs("f.xml"), take), 0);
  EXPECT_TRUE(logTexts(0).empty());
}

TEST_F(LoadFile, FailsOnAnyOtherAnswer) {
  for (const int nAnswer : {-1, 2, 99}) {
    test::clearLog();
    g_nAnswer = nAnswer;
    EXPECT_EQ(cvtIniParseFileXml(cs("/base"), cs("dir"), cs("f.xml"), take), -1);
    EXPECT_EQ(logTexts(0), Texts{"Parse File[/base/dir/f.xml] Err!!"});
  }
}

TEST_F(LoadFile, CutsTheNameTo2047Bytes) {
  const std::string sDir(3000, 'd');
  EXPECT_EQ(cvtIniParseFileXml(cs("/base"), cs(sDir.c_str()), cs("f.xml"), take), 0);
  EXPECT_EQ(g_given.front(), ("/base/" + sDir).substr(0, 2047));
}

TEST_F(LoadDirectory, ChecksItsArgumentsInOrder) {
  EXPECT_EQ(cvtIniParseDirXml(nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("d"), nullptr), -1);
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("d"), take), -1);
  EXPECT_EQ(logTexts(), (Texts{"[psDirName] is NULL", "[Init] is NULL", "[gpsRootPath] is NULL"}));
}

TEST_F(LoadDirectory, TakesFilesByTheThreeBytesBehindTheLastDot) {
  for (const char *ps : {"a.xml", "b.xmlx", "c.d.xml", ".xml", "e.XML", "f.xml.bak", "xml", "g.xm", "h."}) {
    config.file(std::string("files/") + ps, "");
  }
  EXPECT_EQ(config.start(), 0);
  test::clearLog();
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("files"), take), 0);
  std::sort(g_given.begin(), g_given.end());
  EXPECT_EQ(g_given, (Texts{config.path("files/.xml"), config.path("files/a.xml"),
                            config.path("files/b.xmlx"), config.path("files/c.d.xml")}));
  EXPECT_EQ(logTexts(5).front(), "Enter [files] ... ");
  EXPECT_EQ(startingWith("Load File", 5).size(), 4U);
}

TEST_F(LoadDirectory, HasNoLimitOfItsOwn) {
  for (int i = 0; i < 50; ++i) config.file("files/" + std::to_string(i) + ".xml", "");
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("files"), take), 0);
  EXPECT_EQ(g_given.size(), 50U);
}

TEST_F(LoadDirectory, OrderIsTheDirectorysOwn) {
  for (const char *ps : {"c", "a", "z", "b"}) config.file(std::string("files/") + ps + ".xml", "");
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("files"), take), 0);
  Texts listed;
  DIR *const pt = opendir(config.path("files").c_str());
  while (const dirent *const ptEntry = readdir(pt)) {
    if (ptEntry->d_name[0] != '.') listed.push_back(config.path("files/") + ptEntry->d_name);
  }
  closedir(pt);
  EXPECT_EQ(g_given, listed);
}

TEST_F(LoadDirectory, ThatIsMissingOrEmptyIsNoError) {
  std::filesystem::create_directory(config.path("empty"));
  EXPECT_EQ(config.start(), 0);
  test::clearLog();
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("empty"), take), 0);
  EXPECT_TRUE(logTexts(1).empty());
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("none"), take), 0);
  EXPECT_EQ(logTexts(1), Texts{"Open Dir [" + config.path("none") + "] err:[No such file or directory]!!"});
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("All/root.xml"), take), 0);
  EXPECT_TRUE(logged(1, "Open Dir [" + config.path("All/root.xml") + "] err:[Not a directory]!!"));
  EXPECT_TRUE(g_given.empty());
}

TEST_F(LoadDirectory, OfAnotherBaseIsListedThereButLoadedFromTheRoot) {
  test::ConfigTree other;
  other.file("files/a.xml", "");
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(cvtIniParseDirXml(other.arg(), cs("files"), take), 0);
  EXPECT_EQ(g_given, Texts{config.path("files/a.xml")});
}

TEST_F(LoadDirectory, StopsAtTheFirstFailingFile) {
  config.file("files/a.xml", "").file("files/b.xml", "");
  EXPECT_EQ(config.start(), 0);
  test::clearLog();
  g_nAnswer = -1;
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("files"), take), -1);
  ASSERT_EQ(g_given.size(), 1U);
  const std::string sName = std::filesystem::path(g_given.front()).filename();
  EXPECT_EQ(logTexts(1), (Texts{"Parse File[" + g_given.front() + "] Err!!", "Init[" + sName + "] err !!"}));
}

// Closes the directory being listed behind the library's back.
std::string g_sListed;
int closeListed(char *) {
  for (int fd = 3; fd < 64; ++fd) {
    std::error_code ignored;
    const auto link = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd), ignored);
    if (link == g_sListed) close(fd);
  }
  return 1;
}

TEST_F(LoadDirectory, FailsWhenTheDirectoryCannotBeClosed) {
  config.file("files/a.xml", "");
  EXPECT_EQ(config.start(), 0);
  test::clearLog();
  g_sListed = config.path("files");
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs("files"), closeListed), -1);
  EXPECT_EQ(logTexts(1), Texts{"Close Dir err:[Bad file descriptor]!!"});
}

}  // namespace

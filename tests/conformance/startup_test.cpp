// Start, reload and end: whole trails, where the root is found, and what each failure leaves.
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <string>

#include "cvt.h"
#include "toy_config.h"
#include "trail.h"

using test::cs;
using test::Texts;
using test::then;
using test::trail;

namespace {

class StartUp : public testing::Test {
 protected:
  void TearDown() override { cvtEnd(); }

  int start() {
    config.writeRoot();
    test::clearLog();
    return config.start();
  }
  void started(const std::string &sAttributes = "nReload=\"1\"") {
    config.root.sAttributes = sAttributes;
    ASSERT_EQ(start(), 0);
    test::clearLog();
  }
  void touch(const std::string &sAttributes = "nReload=\"1\"") {
    config.root.sAttributes = sAttributes;
    config.writeRoot();
    config.touchRoot();
  }

  std::string root() const { return config.path("All/root.xml"); }

  // What a root file that fails logs behind the lines of its section; bInDirectory: it was found in "All".
  Texts rootTrail(bool bInDirectory) const {
    Texts all = {"stt.cpp sttParseXmlFile: parse xml[AllInfo)" + root() + "] faile",
                 "cvt_init.cpp InitRoot: Parse Xml File To Xml Struct Err!!",
                 "cvt_init.cpp cvtIniParseFileXml: Parse File[" + root() + "] Err!!"};
    if (bInDirectory) all.push_back("cvt_init.cpp locParseDirXmlLimit: Init[root.xml] err !!");
    all.push_back("cvt_init.cpp initialise: XmlFileInit [All] Init Err!!");
    return all;
  }
  std::string rootPlace() const { return "stt.cpp place: File[" + root() + "] Line[1] Element[AllInfo]"; }
  // The last lines of the trail.
  static Texts last(size_t nLines) {
    const Texts all = trail();
    return all.size() < nLines ? all : Texts(all.end() - static_cast<std::ptrdiff_t>(nLines), all.end());
  }
  static std::string section(const std::string &sField, const std::string &sType, const std::string &sInit) {
    return "cvt_init.cpp sttParseXmlAllInfo: void * " + sField + " = sttParseXmlStruct(ptXmlNode, \"" +
           sType + "\", \"" + sField + "\", " + sInit + ") is Err!!";
  }
  std::string initPath(const std::string &sGiven) const {
    return "cvt_init.cpp cvtInit: Init Path[" + sGiven + "] err!!\n";
  }

  test::ToyConfig config;
  int nError = 77;
};

using Trail = StartUp;
using Loading = StartUp;
using Root = StartUp;
using Running = StartUp;
using Reloading = StartUp;
using Ending = StartUp;

// --- Whole trails -------------------------------------------------------------------------------------

TEST_F(Trail, OfADefinitionOfAnUnknownFormat) {
  config.file("msg/Order.xml", "<nobody/>");
  std::filesystem::remove(config.path("msg/Invoice.xml"));
  EXPECT_EQ(start(), -1);
  const std::string sFile = config.path("msg/Order.xml");
  EXPECT_EQ(trail(), then(then({"stt.cpp sttParseBySttInfo: SttInfo no Type[nobody] Info!!",
                                "cvt_message.cpp FmtMsgInit: File[" + sFile + "] Parse Err!!",
                                "cvt_init.cpp cvtIniParseFileXml: Parse File[" + sFile + "] Err!!",
                                "cvt_init.cpp locParseDirXmlLimit: Init[Order.xml] err !!",
                                "cvt_message.cpp FmtParseMessage: Message Parse Dir[msg] err!!",
                                "cvt_message.cpp cvtFmtInit: cvt Message Parse Err!!",
                                section("ptMessage", "Message", "cvtFmtInit"), rootPlace()},
                               rootTrail(true)),
                          {initPath(config.path())}));
  EXPECT_EQ(gptAllInfo, nullptr);
  EXPECT_EQ(nGRet, -1);
}

TEST_F(Trail, OfAConverterFileWithAnotherRootElement) {
  config.file("cvt/bill.xml", "<nobody/>");
  EXPECT_EQ(start(), -1);
  const Texts all = trail();
  const Texts outer =
      then(then({section("ptConvert", "Convert", "cvtCvtInit"), rootPlace()}, rootTrail(true)),
           {initPath(config.path())});
  EXPECT_EQ(last(outer.size()), outer);
}

TEST_F(Trail, OfARootFileThatWasNamedSpeaksOfNoDirectory) {
  config.root.sId = "<Id __ID=\"ptId\" psIdPath=\"id\"/>";
  config.file("id/pipelines.xml", "<nobody/>");
  config.writeRoot();
  test::clearLog();
  EXPECT_EQ(cvtInit(config.arg("All/root.xml")), -1);
  const std::string sFile = config.path("id/pipelines.xml");
  EXPECT_EQ(trail(), then(then({"stt.cpp sttParseXmlFile: [Id] is different then xml root name[nobody]",
                                "cvt_identify.cpp IdInit: Parse Xml File To Identify Struct Err!!",
                                "cvt_init.cpp cvtIniParseFileXml: Parse File[" + sFile + "] Err!!",
                                "cvt_init.cpp locParseDirXmlLimit: Init[pipelines.xml] err !!",
                                "cvt_identify.cpp cvtIdInit: Parse Id File Err In[id]!!\n",
                                section("ptId", "Id", "cvtIdInit"), rootPlace()},
                               rootTrail(false)),
                          {initPath(root())}));
}

TEST_F(Trail, OfTwoFilesInAll) {
  config.file("All/other.xml", config.root.text());
  test::clearLog();
  EXPECT_EQ(config.start(), -1);
  EXPECT_EQ(trail(),
            (Texts{"cvt_init.cpp locParseDirXmlLimit: Dir[" + config.path() +
                       "/All] could only load [1] file: Err!!",
                   "cvt_init.cpp initialise: XmlFileInit [All] Init Err!!", initPath(config.path())}));
}

TEST_F(Trail, OfARootFileWhoseTimeCannotBeReadAfterwards) {
  static std::string s_sRoot;
  s_sRoot = root();
  cvtFmtAddPlug(
      cs("own"), [](void *, char *) -> void * { return nullptr; },
      [](void *, void *, char *, char *) -> void * { return nullptr; },
      [](Msg *) { return std::filesystem::remove(s_sRoot) ? 0 : -1; });
  config.root = {};
  config.root.sMessage = test::messageSection({"own"});
  config.file("own/Own.xml", test::definition("own", "Own", {test::field("A")}));
  EXPECT_EQ(start(), -1);
  EXPECT_FALSE(test::logged(1, "Parse Xml File To Xml Struct Err!!"));
  const Texts outer = {"cvt_init.cpp cvtIniParseFileXml: Parse File[" + root() + "] Err!!",
                       "cvt_init.cpp locParseDirXmlLimit: Init[root.xml] err !!",
                       "cvt_init.cpp initialise: XmlFileInit [All] Init Err!!", initPath(config.path())};
  EXPECT_EQ(last(outer.size()), outer);
  EXPECT_NE(gptAllInfo, nullptr);  // the record had been read
}

TEST_F(Trail, OfTraceLinesTellsWhatWasLoadedInItsOrder) {
  config.root.sConvert = "";
  config.root.sId = "<Id __ID=\"ptId\" psIdPath=\"id\"/>";
  std::filesystem::remove(config.path("msg/Invoice.xml"));
  EXPECT_EQ(start(), 0);
  EXPECT_EQ(trail(5), (Texts{"cvt_init.cpp locParseDirXmlLimit: Enter [All] ... ",
                             "cvt_init.cpp locParseDirXmlLimit: Enter [msg] ... ",
                             "cvt_init.cpp cvtIniParseFileXml: Load File [Order.xml] ok",
                             "cvt_init.cpp locParseDirXmlLimit: Enter [id] ... ",
                             "cvt_init.cpp cvtIniParseFileXml: Load File [pipelines.xml] ok",
                             "cvt_init.cpp cvtInit: Init Convert ok!!"}));
  EXPECT_TRUE(trail().empty());
}

// --- Loading of files ------------------------------------------------------------------------------------

Texts g_given;
int take(char *psFileName) {
  g_given.emplace_back(psFileName);
  return 0;
}

TEST_F(Loading, OfADirectoryNeedsTheRootPathAlsoWhenItIsListedElsewhere) {
  config.file("files/a.xml", "");
  EXPECT_EQ(cvtIniParseDirXml(config.arg(), cs("files"), take), -1);
  EXPECT_EQ(trail(), (Texts{"cvt_init.cpp cvtIniParseFileXml: [gpsRootPath] is NULL",
                            "cvt_init.cpp locParseDirXmlLimit: Init[a.xml] err !!"}));
  EXPECT_TRUE(g_given.empty());
}

TEST_F(Loading, OfADirectoryListedElsewhereDoesNotLookWhetherTheRootHasItsFiles) {
  started();
  test::ConfigTree other;
  other.file("only/there.xml", "");
  EXPECT_EQ(cvtIniParseDirXml(other.arg(), cs("only"), take), 0);
  EXPECT_EQ(g_given, Texts{config.path("only/there.xml")});
  EXPECT_EQ(trail(5), (Texts{"cvt_init.cpp locParseDirXmlLimit: Enter [only] ... ",
                             "cvt_init.cpp cvtIniParseFileXml: Load File [there.xml] ok"}));
}

TEST_F(Loading, OfAPathThatIsTooLongOpensWhatIsLeftOfIt) {
  started();
  const std::string sLong(3000, 'd');
  EXPECT_EQ(cvtIniParseDirXml(nullptr, cs(sLong.c_str()), take), 0);
  const std::string sCut = config.path(sLong).substr(0, 2047);
  EXPECT_EQ(trail(),
            Texts{"cvt_init.cpp locParseDirXmlLimit: Open Dir [" + sCut + "] err:[File name too long]!!"});
}

// --- Where the root is --------------------------------------------------------------------------------

TEST_F(Root, OfAFailedStartFromAFileIsStillAboveItsDirectory) {
  config.file("All/root.xml", "<AllInfo/>");
  EXPECT_EQ(cvtInit(config.arg("All/root.xml")), -1);
  EXPECT_EQ(std::string(gpsRootPath), config.path());
}

TEST_F(Root, FileNameEndsInLowerCaseXml) {
  std::filesystem::copy_file(root(), config.path("All/root.XML"));
  test::clearLog();
  EXPECT_EQ(cvtInit(config.arg("All/root.XML")), 0);  // a directory without "All"
  EXPECT_EQ(trail(), Texts{"cvt_init.cpp locParseDirXmlLimit: Open Dir [" + config.path("All/root.XML/All") +
                           "] err:[Not a directory]!!"});
  EXPECT_EQ(gptAllInfo, nullptr);
}

TEST_F(Root, DirectoryWhoseNameEndsInXmlIsTakenForAFile) {
  std::filesystem::rename(config.path("All"), config.path("All2"));
  config.file("conf.xml/All/root.xml", config.root.text());
  EXPECT_EQ(cvtInit(config.arg("conf.xml")), -1);
  EXPECT_EQ(gptAllInfo, nullptr);
  EXPECT_FALSE(test::logged(5, "Enter [All] ... "));
  EXPECT_EQ(test::logTexts().back(), "Init Path[" + config.path("conf.xml") + "] err!!\n");
}

TEST_F(Root, DirectoryMayHaveDotsInItsName) {
  config.file("v1.7.xml.d/All/root.xml", "<AllInfo><AllInfo psBasePath=\"dots\"/></AllInfo>");
  EXPECT_EQ(cvtInit(config.arg("v1.7.xml.d")), 0);
  EXPECT_STREQ(cvtGetBasePath(), "dots");
}

TEST_F(Root, DirectoryMayEndInMoreThanXml) {
  config.file("conf.xmlx/All/root.xml", "<AllInfo><AllInfo psBasePath=\"more\"/></AllInfo>");
  EXPECT_EQ(cvtInit(config.arg("conf.xmlx")), 0);
  EXPECT_STREQ(cvtGetBasePath(), "more");
}

TEST_F(Root, FileMayStandBesideOthersThatAreNotXml) {
  config.file("All/notes.txt", "").file("All/root.xml.bak", "<broken").file("All/README", "");
  EXPECT_EQ(start(), 0);
  EXPECT_NE(gptAllInfo, nullptr);
}

TEST_F(Root, FileNameIsKeptInterned) {
  started();
  EXPECT_EQ(gpsRootFile, cvtStrDup(cs(root().c_str())));
}

TEST_F(Root, FileMayHaveAnyNameAndAnyDirectoryWhenItIsNamed) {
  config.file("elsewhere/main.xml", config.root.text());
  EXPECT_EQ(cvtInit(config.arg("elsewhere/main.xml")), 0);
  EXPECT_EQ(std::string(gpsRootPath), config.path());
  EXPECT_EQ(std::string(gpsRootFile), config.path("elsewhere/main.xml"));
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);  // sections are found from the root path
}

// --- A running library --------------------------------------------------------------------------------

TEST_F(Running, IsLeftAloneByAStartWithoutAPath) {
  started("psBasePath=\"here\"");
  EXPECT_EQ(cvtInit(nullptr), -1);
  EXPECT_EQ(trail(), Texts{"cvt_init.cpp cvtInit: [psPath] is NULL"});
  EXPECT_STREQ(cvtGetBasePath(), "here");
  EXPECT_EQ(std::string(gpsRootPath), config.path());
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
}

TEST_F(Running, HasTheRootPathOfTheLastStart) {
  started();
  test::ToyConfig other;
  EXPECT_EQ(other.start(), 0);
  EXPECT_EQ(std::string(gpsRootPath), other.path());
  EXPECT_EQ(std::string(gpsRootFile), other.path("All/root.xml"));
}

// --- Reload -------------------------------------------------------------------------------------------

TEST_F(Reloading, BeforeAStartIsReportedByTheReload) {
  EXPECT_EQ(cvtInitReload(), -1);
  EXPECT_EQ(trail(), Texts{"cvt_init.cpp cvtInitReload: Not Init!!"});
}

TEST_F(Reloading, SaysWhatItReadAndNothingOfAStart) {
  config.root.sConvert = config.root.sId = "";
  std::filesystem::remove(config.path("msg/Invoice.xml"));
  started();
  touch();
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(trail(5), (Texts{"cvt_init.cpp locParseDirXmlLimit: Enter [msg] ... ",
                             "cvt_init.cpp cvtIniParseFileXml: Load File [Order.xml] ok"}));
  EXPECT_TRUE(trail().empty());
}

TEST_F(Reloading, ThatFailsEndsWithAWholeTrail) {
  started();
  config.file("id/pipelines.xml", "<nobody/>");
  touch();
  EXPECT_EQ(cvtNewMessage(cs("Order"), cs("02"), &nError), nullptr);
  EXPECT_EQ(nError, 77);
  const std::string sFile = config.path("id/pipelines.xml");
  EXPECT_EQ(trail(), then(then({"stt.cpp sttParseXmlFile: [Id] is different then xml root name[nobody]",
                                "cvt_identify.cpp IdInit: Parse Xml File To Identify Struct Err!!",
                                "cvt_init.cpp cvtIniParseFileXml: Parse File[" + sFile + "] Err!!",
                                "cvt_init.cpp locParseDirXmlLimit: Init[pipelines.xml] err !!",
                                "cvt_identify.cpp cvtIdInit: Parse Id File Err In[id]!!\n",
                                section("ptId", "Id", "cvtIdInit"), rootPlace()},
                               rootTrail(false)),
                          {"cvt.cpp autoReload: AutoReload err!! Please Check Config File!!"}));
  EXPECT_EQ(std::string(gpsRootPath), config.path());
  EXPECT_EQ(gptAllInfo, nullptr);
}

TEST_F(Reloading, ReadsTheSwitchesAfresh) {
  started("nReload=\"1\" nDebug=\"1\" psBasePath=\"old\"");
  touch("nReload=\"1\"");
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(cvtIsDebug(), 0);
  EXPECT_STREQ(cvtGetBasePath(), "");
}

TEST_F(Reloading, FollowsTheRootFileThatWasNamed) {
  config.file("elsewhere/main.xml", "<AllInfo><AllInfo nReload=\"1\" psBasePath=\"old\"/></AllInfo>");
  ASSERT_EQ(cvtInit(config.arg("elsewhere/main.xml")), 0);
  config.file("elsewhere/main.xml", "<AllInfo><AllInfo nReload=\"1\" psBasePath=\"new\"/></AllInfo>");
  config.touchRoot();  // a root file, but not the one that was loaded
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_STREQ(cvtGetBasePath(), "old");
  std::filesystem::last_write_time(config.path("elsewhere/main.xml"),
                                   std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_STREQ(cvtGetBasePath(), "new");
  EXPECT_EQ(std::string(gpsRootPath), config.path());
}

// Blocks of the pool that the configuration has taken.
int configurationBlocks() {
  int n = 0;
  for (const MemBlock *ptList : {gptGlobalNode->ptHeadBlock, gptGlobalNode->ptNowBlock}) {
    for (const MemBlock *pt = ptList; pt != nullptr; pt = pt->ptNext) ++n;
  }
  return n;
}

TEST_F(Reloading, TakesNoMoreOfThePoolThanTheGenerationBefore) {
  started();
  touch();
  EXPECT_EQ(cvtInitReload(), 0);
  const int nBlocks = configurationBlocks();
  for (int i = 0; i < 5; ++i) {
    touch();
    EXPECT_EQ(cvtInitReload(), 0);
    EXPECT_EQ(configurationBlocks(), nBlocks);
  }
}

TEST_F(Reloading, ForgetsRecordsOfTheGenerationBefore) {
  started();
  const Msg *const ptOrder = cvtGetMsg(cs("Order"));
  ASSERT_NE(ptOrder, nullptr);
  std::filesystem::remove(config.path("msg/Invoice.xml"));
  config.root.sConvert = config.root.sId = "";
  touch();
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(cvtGetMsg(cs("Invoice")), nullptr);
  EXPECT_EQ(cvtGetCvt(cs("bill")), nullptr);
  EXPECT_EQ(gptFormatInfo, nullptr);
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
}

// A host may read a section by itself, and one that is not there is none.
TEST_F(StartUp, ASectionThatIsNotThereDoesNotFailForWhatFailedBefore) {
  test::clearLog();
  nGRet = -1;
  EXPECT_NE(cvtFmtInit(nullptr, nullptr), nullptr);
  EXPECT_EQ(nGRet, 0);
  nGRet = -1;
  EXPECT_NE(cvtCvtInit(nullptr, nullptr), nullptr);
  EXPECT_EQ(nGRet, 0);
  nGRet = -1;
  EXPECT_EQ(cvtIdInit(nullptr, nullptr), nullptr);
  EXPECT_EQ(trail(), Texts{"cvt_message.cpp InitValueList: Warning No Value num!!"});
}

// --- End ----------------------------------------------------------------------------------------------

TEST_F(Ending, SaysNothingAndAnswersZero) {
  started();
  EXPECT_EQ(cvtEnd(), 0);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(Ending, LeavesEachWayToMakeAMessageWithoutAConfiguration) {
  started();
  cvtEnd();
  char sIn[] = "7";
  EXPECT_EQ(cvtInitMessasge(cs("Order"), cs("01"), sIn, 1, &nError), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(cvtParseMessasge(cs("02"), sIn, 1, &nError), nullptr);
  EXPECT_EQ(cvtNewMessage(cs("Order"), cs("02"), &nError), nullptr);
  const Texts each = {"cvt_init.cpp cvtInitReload: Not Init!!",
                      "cvt.cpp autoReload: AutoReload err!! Please Check Config File!!"};
  EXPECT_EQ(trail(), then(then(each, each), each));
  EXPECT_EQ(gnMsgNum, 0);
}

}  // namespace

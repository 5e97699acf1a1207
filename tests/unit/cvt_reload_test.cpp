#include <gtest/gtest.h>

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

class Reload : public testing::Test {
 protected:
  void TearDown() override { cvtEnd(); }

  void start(const std::string &sAttributes = "nReload=\"1\" psBasePath=\"old\"") {
    edit(sAttributes);
    ASSERT_EQ(config.start(), 0);
    test::clearLog();
  }

  // Writes the root file with other attributes; its time stays what it is until touchRoot().
  void edit(const std::string &sAttributes) {
    const bool bThere = std::filesystem::exists(config.path("All/root.xml"));
    const auto time = bThere ? std::filesystem::last_write_time(config.path("All/root.xml"))
                             : std::filesystem::file_time_type::clock::now();
    config.root.sAttributes = sAttributes;
    config.writeRoot();
    std::filesystem::last_write_time(config.path("All/root.xml"), time);
  }

  void editAndTouch(const std::string &sAttributes = "nReload=\"1\" psBasePath=\"new\"") {
    edit(sAttributes);
    config.touchRoot();
  }

  std::string base() { return cvtGetBasePath(); }

  InnerMessage *parse() {
    return cvtParseMessasge(cs("02"), sBuffer.data(), static_cast<int>(sBuffer.size()), &nError);
  }

  test::ToyConfig config;
  std::string sBuffer = "Order,Ann,Rome,[],hi";
  int nError = 77;
};

using AutoReload = Reload;

// --- cvtInitReload
// ------------------------------------------------------------------------------------------------

TEST_F(Reload, FailsBeforeAStart) {
  EXPECT_EQ(cvtInitReload(), -1);
  EXPECT_EQ(logTexts(), Texts{"Not Init!!"});
}

TEST_F(Reload, FailsAfterTheEnd) {
  start();
  cvtEnd();
  EXPECT_EQ(cvtInitReload(), -1);
  EXPECT_TRUE(logged(1, "Not Init!!"));
}

TEST_F(Reload, FollowsATouchedRootFile) {
  start();
  editAndTouch();
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "new");
  EXPECT_TRUE(logTexts(1).empty());
}

TEST_F(Reload, LeavesTheRootPathAndFileAsTheyWere) {
  start();
  editAndTouch();
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(std::string(gpsRootPath), config.path());
  EXPECT_EQ(std::string(gpsRootFile), config.path("All/root.xml"));
}

TEST_F(Reload, WorksAgainAndAgain) {
  start();
  for (const char *ps : {"one", "two", "three"}) {
    editAndTouch("nReload=\"1\" psBasePath=\"" + std::string(ps) + "\"");
    EXPECT_EQ(cvtInitReload(), 0);
    EXPECT_EQ(base(), ps);
  }
}

TEST_F(Reload, IsOffUnlessTheSwitchIsExactly1) {
  for (const char *ps : {"psBasePath=\"old\"", "nReload=\"0\" psBasePath=\"old\"",
                         "nReload=\"2\" psBasePath=\"old\"", "nReload=\"-1\" psBasePath=\"old\""}) {
    start(ps);
    editAndTouch();
    EXPECT_EQ(cvtInitReload(), 0);
    EXPECT_EQ(base(), "old") << ps;
  }
  EXPECT_TRUE(logTexts(0).empty());
}

TEST_F(Reload, DoesNothingWhileTheTimeIsTheSame) {
  start();
  edit("nReload=\"1\" psBasePath=\"new\"");
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "old");
}

TEST_F(Reload, DoesNothingForAnEarlierTime) {
  start();
  edit("nReload=\"1\" psBasePath=\"new\"");
  const auto file = config.path("All/root.xml");
  std::filesystem::last_write_time(file, std::filesystem::last_write_time(file) - std::chrono::hours(1));
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "old");
}

TEST_F(Reload, DoesNothingWithoutTheRootFile) {
  start();
  std::filesystem::remove(config.path("All/root.xml"));
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "old");
  EXPECT_TRUE(logTexts(0).empty());
}

TEST_F(Reload, DoesNothingWithoutARootPath) {
  start();
  editAndTouch();
  char *const psKept = gpsRootPath;
  gpsRootPath = nullptr;
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "old");
  gpsRootPath = psKept;
}

TEST_F(Reload, RemembersTheTimeOfTheFileItHasRead) {
  start();
  editAndTouch();
  EXPECT_EQ(cvtInitReload(), 0);
  edit("nReload=\"1\" psBasePath=\"newest\"");
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "new");
}

TEST_F(Reload, WaitsForAFileThatIsNewerThanTheOneItHasReadNotForAnotherOne) {
  start();
  const auto file = config.path("All/root.xml");
  const auto now = std::filesystem::last_write_time(file);
  edit("nReload=\"1\" psBasePath=\"future\"");
  std::filesystem::last_write_time(file, now + std::chrono::hours(1));
  EXPECT_EQ(cvtInitReload(), 0);
  edit("nReload=\"1\" psBasePath=\"present\"");
  std::filesystem::last_write_time(file, now + std::chrono::minutes(1));
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "future");
  std::filesystem::last_write_time(file, now + std::chrono::hours(1) + std::chrono::seconds(1));
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "present");
}

TEST_F(Reload, ComparesWholeSeconds) {
  const auto file = config.path("All/root.xml");
  const auto whole = std::chrono::floor<std::chrono::seconds>(std::filesystem::last_write_time(file));
  std::filesystem::last_write_time(file, whole);
  start();
  edit("nReload=\"1\" psBasePath=\"new\"");
  std::filesystem::last_write_time(file, whole + std::chrono::milliseconds(999));
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "old");
  std::filesystem::last_write_time(file, whole + std::chrono::seconds(1));
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "new");
}

TEST_F(Reload, FollowsARootFileThatWasDeletedOnceItIsBack) {
  start();
  const auto file = config.path("All/root.xml");
  std::filesystem::remove(file);
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "old");
  config.root.sAttributes = "nReload=\"1\" psBasePath=\"back\"";
  config.writeRoot();
  config.touchRoot();
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "back");
}

TEST_F(Reload, MaySwitchItselfOff) {
  start();
  editAndTouch("psBasePath=\"last\"");
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "last");
  editAndTouch();
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "last");
}

TEST_F(Reload, WatchesTheRootFileOnly) {
  start();
  config.file("msg/Order.xml", test::definition("toy", "Order", {test::field("Only")}));
  std::filesystem::last_write_time(config.path("msg/Order.xml"),
                                   std::filesystem::file_time_type::clock::now() + std::chrono::hours(1));
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(cvtGetMsg(cs("Order"))->nFieldNum, 11);
  config.file("cvt/bill.xml", "")
      .file("idinfo/choice.xml", "<IdInfo><IdMsgInfo psMsgName=\"Order\"/></IdInfo>");
  std::filesystem::remove(config.path("cvt/bill.xml"));
  config.touchRoot();
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(cvtGetMsg(cs("Order"))->nFieldNum, 1);
}

TEST_F(Reload, ReadsTheRootFileAloneAlsoAfterADirectoryStart) {
  start();
  config.file("All/other.xml", "<broken");
  editAndTouch();
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(base(), "new");
  EXPECT_FALSE(logged(5, "Enter [All] ... "));
}

TEST_F(Reload, ThatFailsLeavesTheLibraryNotStarted) {
  start();
  config.file("All/root.xml", "<broken");
  config.touchRoot();
  EXPECT_EQ(cvtInitReload(), -1);
  const std::string sFile = config.path("All/root.xml");
  EXPECT_TRUE(
      loggedInOrder({"[ptXmlDoc = xmlFileParse(psFileName)] is NULL", "Parse Xml File To Xml Struct Err!!",
                     "Parse File[" + sFile + "] Err!!", "XmlFileInit [All] Init Err!!"}));
  EXPECT_EQ(gptAllInfo, nullptr);
  EXPECT_EQ(base(), "");
  test::clearLog();
  EXPECT_EQ(cvtInitReload(), -1);
  EXPECT_EQ(logTexts(), Texts{"Not Init!!"});
}

TEST_F(Reload, ThatFailsHasReleasedTheOldConfigurationAndKeepsWhatItHasRead) {
  start();
  config.file("msg/Fresh.xml", test::definition("toy", "Fresh", {test::field("Id")}));
  config.file("cvt/bill.xml", "<broken");
  editAndTouch();
  EXPECT_EQ(cvtInitReload(), -1);
  EXPECT_EQ(gptAllInfo, nullptr);
  EXPECT_NE(cvtGetMsg(cs("Fresh")), nullptr);
  EXPECT_NE(gptSttInfo, nullptr);
  EXPECT_EQ(gptFormatInfo, nullptr);  // a section that was not reached
}

TEST_F(Reload, AfterAMendedOneReleasesWhatTheFailedOneHasLeft) {
  start();
  const std::string sGood = config.path("good");
  std::filesystem::copy_file(config.path("cvt/bill.xml"), sGood);
  config.file("msg/Fresh.xml", test::definition("toy", "Fresh", {test::field("Id")}));
  config.file("cvt/bill.xml", "<broken");
  editAndTouch();
  EXPECT_EQ(cvtInitReload(), -1);
  std::filesystem::remove(config.path("msg/Fresh.xml"));
  std::filesystem::rename(sGood, config.path("cvt/bill.xml"));
  EXPECT_EQ(config.start(), 0);
  EXPECT_NE(cvtGetMsg(cs("Fresh")), nullptr);
  editAndTouch();
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(cvtGetMsg(cs("Fresh")), nullptr);
}

TEST_F(Reload, ForgetsTheFunctionsThatAHostHasRegistered) {
  start();
  cvtConvertAddFunction(cs("hosts"), [](Value *, int, Value **, MemPort) { return 0; });
  EXPECT_NE(cvtStrFindStringList(gptCvtGlobalInfo->ptFuncList, cs("hosts")), nullptr);
  editAndTouch();
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_EQ(cvtStrFindStringList(gptCvtGlobalInfo->ptFuncList, cs("hosts")), nullptr);
}

TEST_F(Reload, ReleasesTypesAndNamesBeforeThePlugInsAndTheRestBehindThem) {
  config.root.sPlug = test::plugSection({"psName=\"toy\"", "psName=\"first\""});
  start();
  editAndTouch();
  EXPECT_EQ(cvtInitReload(), 0);
  EXPECT_TRUE(
      logged(5, "there are plug-ins definitions converters pipelines record, base path [old], root [" +
                    config.path("All/root.xml") + "]"));
}

TEST_F(Reload, ThatFailsIsMendedByANewStart) {
  start();
  config.file("All/root.xml", "<broken");
  config.touchRoot();
  EXPECT_EQ(cvtInitReload(), -1);
  editAndTouch();
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(base(), "new");
  InnerMessage *const pt = parse();
  EXPECT_NE(pt, nullptr);
  cvtFreeMessage(pt);
}

// --- The message API's own reload
// -----------------------------------------------------------------------------

TEST_F(AutoReload, ComesBeforeEachWayToMakeAMessage) {
  start();
  editAndTouch("nReload=\"1\" psBasePath=\"one\"");
  cvtFreeMessage(parse());
  EXPECT_EQ(base(), "one");
  editAndTouch("nReload=\"1\" psBasePath=\"two\"");
  cvtFreeMessage(
      cvtInitMessasge(cs("Order"), cs("01"), sBuffer.data(), static_cast<int>(sBuffer.size()), &nError));
  EXPECT_EQ(base(), "two");
  editAndTouch("nReload=\"1\" psBasePath=\"three\"");
  cvtFreeMessage(cvtNewMessage(cs("Order"), cs("01"), &nError));
  EXPECT_EQ(base(), "three");
}

TEST_F(AutoReload, IsPutOffWhileAHandleLives) {
  start();
  InnerMessage *const ptAlive = parse();
  editAndTouch();
  cvtFreeMessage(parse());
  cvtFreeMessage(
      cvtInitMessasge(cs("Order"), cs("01"), sBuffer.data(), static_cast<int>(sBuffer.size()), &nError));
  cvtFreeMessage(cvtNewMessage(cs("Order"), cs("01"), &nError));
  EXPECT_EQ(base(), "old");
  EXPECT_NE(cvtGetNameValue(ptAlive, cs("Name"), &nError), nullptr);
  cvtFreeMessage(ptAlive);
  EXPECT_EQ(base(), "old");  // only the making of a message reloads
  cvtFreeMessage(parse());
  EXPECT_EQ(base(), "new");
}

TEST_F(AutoReload, IsPutOffWhileAGeneratedMessageLives) {
  start();
  InnerMessage *const ptOrder = parse();
  char sOut[100];
  int nOut = sizeof sOut;
  InnerMessage *const ptInvoice = cvtGenerateMessasge(ptOrder, cs("01"), sOut, &nOut, &nError);
  ASSERT_NE(ptInvoice, nullptr);
  editAndTouch();
  cvtFreeMessage(ptOrder);  // what it shares with the invoice is not looked at any more
  cvtFreeMessage(parse());
  EXPECT_EQ(base(), "old");
  cvtFreeMessage(ptInvoice);
  cvtFreeMessage(parse());
  EXPECT_EQ(base(), "new");
}

TEST_F(AutoReload, IsNotPutOffByAMessageThatWasRefused) {
  start();
  EXPECT_EQ(cvtInitMessasge(cs("Nobody"), cs("01"), sBuffer.data(), 1, &nError), nullptr);
  editAndTouch();
  cvtFreeMessage(parse());
  EXPECT_EQ(base(), "new");
}

TEST_F(AutoReload, RunsAlsoBelowNoHandle) {
  start();
  editAndTouch();
  gnMsgNum = -1;
  cvtFreeMessage(parse());
  EXPECT_EQ(base(), "new");
}

TEST_F(AutoReload, LetsMessagesPassWhileTheRootFileIsDeleted) {
  start();
  std::filesystem::remove(config.path("All/root.xml"));
  for (int i = 0; i < 3; ++i) {
    InnerMessage *const pt = parse();
    EXPECT_NE(pt, nullptr);
    cvtFreeMessage(pt);
  }
  EXPECT_TRUE(logTexts(1).empty());
}

TEST_F(AutoReload, UsesTheNewDefinitionAtOnce) {
  start();
  config.root.sConvert = "";
  config.file("idinfo/choice.xml", "<IdInfo><IdMsgInfo psMsgName=\"Order\"/></IdInfo>");
  config.file("msg/Order.xml", test::definition("toy", "Order", {test::field("Kind"), test::field("Rest")}));
  editAndTouch();
  sBuffer = "Order,all";
  InnerMessage *const pt = parse();
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(cvtGetNameValue(pt, cs("Rest"), &nError)->nLen, 3);
  cvtFreeMessage(pt);
}

TEST_F(AutoReload, ThatFailsFailsTheRequest) {
  start();
  config.file("All/root.xml", "<broken");
  config.touchRoot();
  EXPECT_EQ(parse(), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(logTexts().back(), "AutoReload err!! Please Check Config File!!");
  EXPECT_EQ(gnMsgNum, 0);
  EXPECT_EQ(cvtNewMessage(cs("Order"), cs("02"), &nError), nullptr);
  EXPECT_TRUE(loggedInOrder({"Not Init!!", "AutoReload err!! Please Check Config File!!"}));
}

TEST_F(AutoReload, OpensThePlugInsAfresh) {
  config.root.sPlug = test::plugSection({"psName=\"toy\"", "psName=\"first\""});
  start();
  editAndTouch();
  cvtFreeMessage(parse());
  const Texts trace = logTexts(5);
  Texts seen;
  for (const std::string &s : trace) {
    if (s.compare(0, 6, "first ") == 0) seen.push_back(s);
  }
  EXPECT_EQ(seen, (Texts{"first closed", "first opened", "first initialised"}));
}

}  // namespace

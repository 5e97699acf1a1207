// Handles: what the steps of a chain are given, what comes before what, whole names, and what a refusal leaves.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "cvt.h"
#include "toy_config.h"
#include "trail.h"
#include "velutil.h"

using test::cs;
using test::logTexts;
using test::Texts;
using test::trail;

namespace {

constexpr int kUntouched = 77;

int g_nError = kUntouched;

// What the step "work" was given, and what the caller's error said meanwhile. It tells that it works.
struct Given {
  InnerMessage *ptFirst;
  InnerMessage *ptSecond;
  int nError;
} g_given;

int work(InnerMessage *ptFirst, InnerMessage *ptSecond, void *) {
  g_given = {ptFirst, ptSecond, g_nError};
  logInfo(1, "$test", "handles_test.cpp", __LINE__, "work", "at work");
  return 0;
}
int fail(InnerMessage *, InnerMessage *, void *) {
  return 9;
}
// Finds a message of three bytes in a longer buffer and reads it.
int cut(InnerMessage *ptFirst, InnerMessage *, void *) {
  ptFirst->psBuf += 1;
  ptFirst->nLen = 3;
  ptFirst->nNowLen = 3;
  return 0;
}

int lists(const ValueList *pt) {
  int n = 0;
  for (; pt != nullptr; pt = pt->ptNext) ++n;
  return n;
}

const std::string kLongName = std::string(60, 'n') + "60 to 70.";
const std::string kLongFormat = "an id of more than twenty bytes";

class Handles : public testing::Test {
 protected:
  void SetUp() override {
    g_nError = kUntouched;
    g_given = {};
    cvtIdAddFunction(cs("work"), work);
    cvtIdAddFunction(cs("fail"), fail);
    cvtIdAddFunction(cs("cut"), cut);
    config.file("id/pipelines.xml", test::pipelines({{"01", {"pubParse"}, {"pubConvert", "pubGenerate"}},
                                                     {"02", {"toyName", "pubParse"}, {"work"}},
                                                     {"work", {"work"}, {"work"}},
                                                     {"cut", {"cut"}, {}},
                                                     {"fail", {"work", "fail"}, {"work", "fail"}},
                                                     {kLongFormat, {"work"}, {"work"}},
                                                     {kLongFormat.substr(0, 20), {"fail"}, {"fail"}}}));
  }
  void TearDown() override { cvtEnd(); }

  void start(const std::string &sAttributes = "") {
    config.root.sAttributes = sAttributes;
    config.writeRoot();
    ASSERT_EQ(config.start(), 0);
    test::clearLog();
  }

  InnerMessage *init(const char *psName, const char *psFormat) {
    return cvtInitMessasge(cs(psName), cs(psFormat), sBytes.data(), static_cast<int>(sBytes.size()),
                           &g_nError);
  }
  InnerMessage *parse(const char *psFormat) {
    return cvtParseMessasge(cs(psFormat), sBytes.data(), static_cast<int>(sBytes.size()), &g_nError);
  }
  InnerMessage *generate(InnerMessage *ptMsg, const char *psFormat) {
    return cvtGenerateMessasge(ptMsg, cs(psFormat), sOut, &nOut, &g_nError);
  }
  InnerMessage *order() {
    InnerMessage *const pt = init("Order", "01");
    EXPECT_NE(pt, nullptr);
    test::clearLog();
    g_nError = kUntouched;
    return pt;
  }

  test::ToyConfig config;
  std::string sBytes = "7,Ann,Rome,[A,1,[];B,2,[];],hi";
  char sOut[256] = {};
  int nOut = static_cast<int>(sizeof sOut);
};

using Steps = Handles;
using Order = Handles;
using Names = Handles;
using Refused = Handles;
using Released = Handles;

// --- What the steps are given ---------------------------------------------------------------------------

TEST_F(Steps, OfAParseChainGetTheHandleAndNoSecondMessage) {
  start();
  InnerMessage *const ptNamed = init("Order", "work");
  EXPECT_EQ(g_given.ptFirst, ptNamed);
  EXPECT_EQ(g_given.ptSecond, nullptr);
  InnerMessage *const ptParsed = parse("work");
  EXPECT_EQ(g_given.ptFirst, ptParsed);
  EXPECT_EQ(g_given.ptSecond, nullptr);
  for (InnerMessage *const pt : {ptParsed, ptNamed}) EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Steps, OfAGenerateChainGetSourceAndDestination) {
  start();
  InnerMessage *const ptSrc = order();
  InnerMessage *const ptDst = generate(ptSrc, "work");
  EXPECT_EQ(g_given.ptFirst, ptSrc);
  EXPECT_EQ(g_given.ptSecond, ptDst);
  EXPECT_EQ(cvtFreeMessage(ptDst), 0);
  EXPECT_EQ(cvtFreeMessage(ptSrc), 0);
}

TEST_F(Steps, OfTheOwnFormatGetTheMessageAsDestination) {
  start();
  InnerMessage *const pt = order();
  EXPECT_EQ(cvtGenMessage(pt, sOut, &nOut), 0);
  EXPECT_EQ(g_given.ptFirst, nullptr);
  EXPECT_EQ(g_given.ptSecond, pt);
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Steps, RunWhileTheErrorSaysMinus1) {
  start();
  InnerMessage *const ptNamed = init("Order", "work");
  EXPECT_EQ(g_given.nError, -1);
  EXPECT_EQ(g_nError, 0);
  InnerMessage *const ptParsed = parse("work");
  EXPECT_EQ(g_given.nError, -1);
  InnerMessage *const ptDst = generate(ptNamed, "work");
  EXPECT_EQ(g_given.nError, -1);
  EXPECT_EQ(g_nError, 0);
  for (InnerMessage *const pt : {ptDst, ptParsed, ptNamed}) EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Steps, MayCutTheMessageOutOfALongerBuffer) {
  start();
  InnerMessage *const pt = parse("cut");
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(g_nError, 0);  // the handle's lengths are compared, not the caller's
  EXPECT_EQ(pt->psBuf, sBytes.data() + 1);
  EXPECT_TRUE(trail().empty());
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

// --- What comes before what -----------------------------------------------------------------------------

TEST_F(Order, OfParsingIsTraceStepsReportRelease) {
  start("nDebug=\"1\"");
  sBytes = "7";
  EXPECT_EQ(init("Order", "fail"), nullptr);
  Texts texts = logTexts(0);
  ASSERT_EQ(texts.size(), 7U);
  texts.pop_back();  // the dump of the pool node
  EXPECT_EQ(texts,
            (Texts{"parse [Order:fail][7]", "at work", "Do Func[fail] err!!", "Formate[fail] Parse Err!!\n",
                   "Msg[Order] parse buffer err!!", "Delete Message[Order] Memory Node"}));
  test::clearLog();
  EXPECT_EQ(parse("fail"), nullptr);
  texts = logTexts(0);
  ASSERT_EQ(texts.size(), 7U);
  texts.pop_back();
  EXPECT_EQ(texts, (Texts{"parse [fail][7]", "at work", "Do Func[fail] err!!", "Formate[fail] Parse Err!!\n",
                          "Msg[] parse buffer err!!", "Delete Message[] Memory Node"}));
}

TEST_F(Order, OfGeneratingIsStepsThenTraceOrReportAndRelease) {
  start("nDebug=\"1\"");
  InnerMessage *const ptSrc = order();
  InnerMessage *const ptDst = generate(ptSrc, "work");
  EXPECT_EQ(logTexts(0), (Texts{"at work", "Generate Len[0] []"}));
  test::clearLog();
  EXPECT_EQ(generate(ptSrc, "fail"), nullptr);
  Texts texts = logTexts(0);
  ASSERT_EQ(texts.size(), 6U);
  texts.pop_back();
  EXPECT_EQ(texts, (Texts{"at work", "Do Func[fail] err!!", "Formate[fail] Parse Err!!\n",
                          "Generate Message[] err!!", "Delete Message[] Memory Node"}));
  EXPECT_EQ(cvtFreeMessage(ptDst), 0);
  EXPECT_EQ(cvtFreeMessage(ptSrc), 0);
}

TEST_F(Order, OfAnUnknownTypeIsReportThenRelease) {
  start("nDebug=\"1\"");
  EXPECT_EQ(cvtNewMessage(cs("Nobody"), cs("01"), &g_nError), nullptr);
  Texts texts = logTexts(0);
  ASSERT_EQ(texts.size(), 3U);
  texts.pop_back();
  EXPECT_EQ(texts, (Texts{"Msg [Nobody] Get define info err!!", "Delete Message[Nobody] Memory Node"}));
}

TEST_F(Order, OfAReleaseIsTheDumpBeforeTheNodeIsGivenBack) {
  start("nDebug=\"1\"");
  EXPECT_EQ(cvtFreeMessage(order()), 0);
  int nNode = 0;
  int nTotal = 0;
  int nUsed = 0;
  ASSERT_EQ(std::sscanf(trail(5).back().c_str(), "cvt_memory.cpp cvtMemPrintNode: Node[%d]:[%d] -- Used[%d]",
                        &nNode, &nTotal, &nUsed),
            3);
  EXPECT_GT(nUsed, static_cast<int>(sizeof(InnerMessage)));  // the handle and its values are still there
}

// --- Names and format ids longer than their fields --------------------------------------------------------

TEST_F(Names, OfNewMessagesAreLookedUpWhole) {
  config.file("msg/" + kLongName + ".xml", test::definition("toy", kLongName, {test::field("A")}));
  start();
  InnerMessage *const pt = cvtNewMessage(cs(kLongName.c_str()), cs("02"), &g_nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_STREQ(pt->ptMsgInfo->psMsgName, kLongName.c_str());
  EXPECT_EQ(std::string(pt->sMsgName), kLongName.substr(0, 60));
  EXPECT_EQ(cvtFreeMessage(pt), 0);
  EXPECT_TRUE(trail().empty());
}

TEST_F(Names, AreReportedAsTheCallerWroteThem) {
  start();
  EXPECT_EQ(cvtNewMessage(cs(kLongName.c_str()), cs("02"), &g_nError), nullptr);
  EXPECT_EQ(g_nError, -6);
  EXPECT_EQ(init(kLongName.c_str(), "01"), nullptr);
  const Texts all = trail();
  EXPECT_EQ(all.front(), "cvt.cpp cvtNewMessage: Msg [" + kLongName + "] Get define info err!!");
  EXPECT_EQ(all[1], "cvt_identify.cpp pubNew: Msg [" + kLongName.substr(0, 60) + "] get define info err!!");
  EXPECT_EQ(all.back(), "cvt.cpp cvtInitMessasge: Msg[" + kLongName + "] parse buffer err!!");
}

// Another pipeline has the id that is left when the handle has cut this one.
TEST_F(Names, OfFormatsFindTheirPipelineWhole) {
  start();
  InnerMessage *const ptNamed = init("Order", kLongFormat.c_str());
  InnerMessage *const ptParsed = parse(kLongFormat.c_str());
  InnerMessage *const ptSrc = order();
  InnerMessage *const ptDst = generate(ptSrc, kLongFormat.c_str());
  for (InnerMessage *const pt : {ptDst, ptParsed, ptNamed}) {
    ASSERT_NE(pt, nullptr);
    EXPECT_EQ(std::string(pt->sMsgFormat), kLongFormat.substr(0, 20));
    EXPECT_EQ(cvtFreeMessage(pt), 0);
  }
  EXPECT_EQ(cvtFreeMessage(ptSrc), 0);
}

// --- What a refusal leaves ------------------------------------------------------------------------------

TEST_F(Refused, NewMessagesGiveTheirPoolNodeBack) {
  start();
  cvtFreeMessage(order());
  EXPECT_EQ(cvtNewMessage(cs("Nobody"), cs("01"), &g_nError), nullptr);
  EXPECT_EQ(gptMemRoot->ptMemNodeList->cUsed, '0');
  EXPECT_EQ(gnMsgNum, 0);
}

TEST_F(Refused, CallsLeaveTheHandleWithItsBuffer) {
  start();
  InnerMessage *const pt = order();
  const int nParsed = pt->nNowLen;
  EXPECT_EQ(cvtGenMessage(pt, nullptr, &nOut), -1);
  EXPECT_EQ(cvtGenMessage(pt, sOut, nullptr), -1);
  EXPECT_EQ(pt->psBuf, sBytes.data());
  EXPECT_EQ(pt->nLen, static_cast<int>(sBytes.size()));
  EXPECT_EQ(pt->nNowLen, nParsed);
  EXPECT_EQ(g_given.ptSecond, nullptr);  // no step has run
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Refused, DestinationsLeaveTheSourceWithItsBuffer) {
  start();
  InnerMessage *const ptSrc = order();
  EXPECT_EQ(generate(ptSrc, "fail"), nullptr);
  EXPECT_EQ(ptSrc->psBuf, sBytes.data());
  EXPECT_EQ(ptSrc->nLen, static_cast<int>(sBytes.size()));
  EXPECT_STREQ(ptSrc->sMsgFormat, "01");
  EXPECT_EQ(gnMsgNum, 1);
  EXPECT_EQ(cvtFreeMessage(ptSrc), 0);
}

// --- Release --------------------------------------------------------------------------------------------

// Value lists belong to a definition: those of a handle without one are not the release's to give back.
TEST_F(Released, HandlesWithoutADefinitionKeepTheirLists) {
  start();
  cvtFreeMessage(order());
  const int nOrdinary = lists(gptFreeValue);
  InnerMessage *const pt = order();
  Msg *const ptDefinition = pt->ptMsgInfo;
  ValueList *const ptTaken = pt->tValueListInfo.ptValueList;
  ASSERT_LT(lists(gptFreeValue), nOrdinary);
  pt->ptMsgInfo = nullptr;
  EXPECT_EQ(cvtFreeMessage(pt), 0);
  ASSERT_EQ(ptTaken->nNow, ptDefinition->nValueNum);
  EXPECT_EQ(cvtFreeValue(ptTaken), 0);
  EXPECT_EQ(lists(gptFreeValue), nOrdinary);
}

TEST_F(Released, HandlesLeaveNothingToTheNextInTheirPlace) {
  start();
  InnerMessage *const ptOld = init("Order", "work");
  const MemNode *const ptNode = ptOld->tValueListInfo.ptMemNode;
  ptOld->nMsgId = 5;
  ptOld->nNowLen = 6;
  ptOld->ptInfo = ptOld;
  ptOld->tValueListInfo.nIndexOffset = 7;
  EXPECT_EQ(cvtFreeMessage(ptOld), 0);
  InnerMessage *const ptNew = parse("work");
  ASSERT_EQ(ptNew->tValueListInfo.ptMemNode, ptNode);
  EXPECT_STREQ(ptNew->sMsgName, "");
  EXPECT_EQ(ptNew->nMsgId, 0);
  EXPECT_EQ(ptNew->nNowLen, 0);
  EXPECT_EQ(ptNew->ptInfo, nullptr);
  EXPECT_EQ(ptNew->tValueListInfo.nIndexOffset, 0);
  EXPECT_EQ(cvtFreeMessage(ptNew), 0);
}

TEST_F(Released, ListsAreThereAgainWhenALoopWasOverwritten) {
  start();
  cvtFreeMessage(order());
  const int nOrdinary = lists(gptFreeValue);
  const int nLoops = lists(gptLoopValue);
  InnerMessage *const pt = order();
  EXPECT_EQ(cvtSetNameValue(pt, cs("Items"), cs("text"), 4), 0);
  EXPECT_EQ(cvtGetLoopTime(pt, cs("Items")), -14);  // no loop any more
  EXPECT_EQ(cvtFreeMessage(pt), 0);
  EXPECT_EQ(lists(gptFreeValue), nOrdinary);
  EXPECT_EQ(lists(gptLoopValue), nLoops);
}

}  // namespace

// Messages: the order of checks, whole failure trails through the format and back, and what a failure leaves.
#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include "convert_xml.h"
#include "cvt.h"
#include "toy_config.h"
#include "trail.h"

using namespace test::xml;
using test::cs;
using test::Texts;
using test::trail;

namespace {

constexpr int kUntouched = 77;

// What the step "look" saw of the message that the chain works on, before any other step.
InnerMessage g_seen;
int look(InnerMessage *ptFirst, InnerMessage *ptSecond, void *) {
  g_seen = ptSecond == nullptr ? *ptFirst : *ptSecond;
  return 0;
}
// Reads further than the buffer goes, as a format with an optional tail may.
int readBeyond(InnerMessage *ptFirst, InnerMessage *, void *) {
  ptFirst->nNowLen = ptFirst->nLen + 4;
  return 0;
}

int lists(const ValueList *pt) {
  int n = 0;
  for (; pt != nullptr; pt = pt->ptNext) ++n;
  return n;
}

class Messages : public testing::Test {
 protected:
  void SetUp() override {
    cvtIdAddFunction(cs("look"), look);
    cvtIdAddFunction(cs("readBeyond"), readBeyond);
    config.file("cvt/broken.xml", converter("broken", "Order", "Invoice", {copy({6, ""}, dst("Number"))}));
    config.file("id/pipelines.xml", pipelines({{"01", {{"pubParse"}}, {{"pubConvert"}, {"pubGenerate"}}},
                                               {"02", {{"toyName"}, {"pubParse"}}, {{"pubGenerate"}}},
                                               {"look", {{"look"}}, {{"look"}}},
                                               {"beyond", {{"readBeyond"}}, {}},
                                               {"broken", {}, {{"pubConvert"}, {"pubGenerate"}}}}));
    config.file("idinfo/choice.xml", choices({{"Order", {{"01", "bill"}, {"broken", "broken"}}}}));
  }
  void TearDown() override { cvtEnd(); }

  void start(const std::string &sAttributes = "") {
    config.root.sAttributes = sAttributes;
    config.writeRoot();
    ASSERT_EQ(config.start(), 0);
    test::clearLog();
  }

  InnerMessage *init(const char *psName, const char *psFormat, const std::string &sBytes) {
    sBuffer = sBytes;
    test::clearLog();
    return cvtInitMessasge(cs(psName), cs(psFormat), sBuffer.data(), static_cast<int>(sBuffer.size()),
                           &nError);
  }
  InnerMessage *parse(const char *psFormat, const std::string &sBytes) {
    sBuffer = sBytes;
    test::clearLog();
    return cvtParseMessasge(cs(psFormat), sBuffer.data(), static_cast<int>(sBuffer.size()), &nError);
  }
  InnerMessage *order() {
    InnerMessage *const pt = init("Order", "01", "7,Ann,Rome,[A,1,[];B,2,[];],hi");
    EXPECT_NE(pt, nullptr);
    test::clearLog();
    nError = kUntouched;
    return pt;
  }
  InnerMessage *generate(InnerMessage *ptMsg, const char *psFormat) {
    nOut = static_cast<int>(sizeof sOut);
    return cvtGenerateMessasge(ptMsg, cs(psFormat), sOut, &nOut, &nError);
  }

  test::ToyConfig config;
  std::string sBuffer;
  char sOut[256] = {};
  int nOut = static_cast<int>(sizeof sOut);
  int nError = kUntouched;
};

using Handle = Messages;
using Parsing = Messages;
using Generating = Messages;
using Values = Messages;
using Release = Messages;

// --- Handles ------------------------------------------------------------------------------------------

void expectFresh(const InnerMessage &seen, const char *psName, const char *psFormat, const char *psBuf,
                 int nLen) {
  EXPECT_EQ(seen.nMsgId, 0);
  EXPECT_STREQ(seen.sMsgName, psName);
  EXPECT_STREQ(seen.sMsgFormat, psFormat);
  EXPECT_EQ(seen.psBuf, psBuf);
  EXPECT_EQ(seen.nNowLen, 0);
  EXPECT_EQ(seen.nLen, nLen);
  EXPECT_EQ(seen.ptMsgInfo, nullptr);
  EXPECT_EQ(seen.tValueListInfo.ptValueList, nullptr);
  EXPECT_NE(seen.tValueListInfo.ptMemNode, nullptr);
  EXPECT_EQ(seen.tValueListInfo.nIndexOffset, 0);
  EXPECT_EQ(seen.ptInfo, nullptr);
}

TEST_F(Handle, IsTheSameWhicheverFunctionMadeIt) {
  start();
  InnerMessage *const ptInit = init("Order", "look", "in");
  expectFresh(g_seen, "Order", "look", sBuffer.data(), 2);
  InnerMessage *const ptParse = parse("look", "in");
  expectFresh(g_seen, "", "look", sBuffer.data(), 2);
  InnerMessage *const ptDst = generate(ptInit, "look");
  expectFresh(g_seen, "", "look", sOut, sizeof sOut);
  EXPECT_NE(ptInit->tValueListInfo.ptMemNode, ptParse->tValueListInfo.ptMemNode);
  EXPECT_NE(ptInit->tValueListInfo.ptMemNode, ptDst->tValueListInfo.ptMemNode);
  for (InnerMessage *const pt : {ptDst, ptParse, ptInit}) EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Handle, OfANewMessageHasNoBufferAndAnEmptyContext) {
  start();
  InnerMessage *const pt = cvtNewMessage(cs("Order"), cs("01"), &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(pt->psBuf, nullptr);
  EXPECT_EQ(pt->nNowLen, 0);
  EXPECT_EQ(pt->nLen, 0);
  EXPECT_EQ(pt->ptInfo, nullptr);
  EXPECT_EQ(pt->tValueListInfo.nIndexOffset, 0);
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Handle, HasRoomForExactly60And20Characters) {
  const std::string sName(60, 'n');
  const std::string sFormat(20, 'f');
  config.file("id/pipelines.xml", pipelines({{"02", {}, {}}, {sFormat, {{"look"}}, {}}}));
  start();
  InnerMessage *const pt = init(sName.c_str(), sFormat.c_str(), "");
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(std::string(pt->sMsgName), sName);
  EXPECT_EQ(std::string(pt->sMsgFormat), sFormat);
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

// --- Parsing ------------------------------------------------------------------------------------------

TEST_F(Parsing, ChecksTheErrorPointerBeforeItReloads) {
  EXPECT_EQ(cvtInitMessasge(cs("Order"), cs("01"), sOut, 0, nullptr), nullptr);
  EXPECT_EQ(cvtParseMessasge(cs("01"), sOut, 0, nullptr), nullptr);
  EXPECT_EQ(trail(), (Texts{"cvt.cpp cvtInitMessasge: [pnError] is NULL",
                            "cvt.cpp cvtParseMessasge: [pnError] is NULL"}));
}

TEST_F(Parsing, TracesNothingWhenTheReloadFails) {
  EXPECT_EQ(init("Order", "01", "7"), nullptr);
  EXPECT_EQ(parse("01", "7"), nullptr);
  EXPECT_TRUE(trail(5).empty());
  EXPECT_EQ(gnMsgNum, 0);
}

TEST_F(Parsing, OfAnUnknownMessageEndsWithAWholeTrail) {
  start();
  EXPECT_EQ(init("Nobody", "01", "7"), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(trail(), (Texts{"cvt_identify.cpp pubNew: Msg [Nobody] get define info err!!",
                            "cvt_identify.cpp DoFuc: Do Func[pubParse] err!!",
                            "cvt_identify.cpp fucParse: Formate[01] Parse Err!!\n",
                            "cvt.cpp cvtInitMessasge: Msg[Nobody] parse buffer err!!"}));
  EXPECT_EQ(trail(5), Texts{"cvt.cpp cvtInitMessasge: parse [Nobody:01][7]"});
}

TEST_F(Parsing, OfBytesThatTheFormatRefusesEndsWithAWholeTrail) {
  start();
  EXPECT_EQ(parse("02", "Order,Ann"), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(trail(), (Texts{"toy.cpp fail: Msg[Order] Field[City] Offset[9]: expected ',', found the end of "
                            "the buffer.",
                            "cvt_identify.cpp pubParse: Msg[Order] Parse Buffer err!!",
                            "cvt_identify.cpp DoFuc: Do Func[pubParse] err!!",
                            "cvt_identify.cpp fucParse: Formate[02] Parse Err!!\n",
                            "cvt.cpp cvtParseMessasge: Msg[Order] parse buffer err!!"}));
  EXPECT_EQ(trail(5), Texts{"cvt.cpp cvtParseMessasge: parse [02][Order,Ann]"});
}

TEST_F(Parsing, ThatFailsGivesListsAndPoolNodeBack) {
  start();
  cvtFreeMessage(order());
  const int nOrdinary = lists(gptFreeValue);
  const int nLoops = lists(gptLoopValue);
  // the second repetition is cut: two repetitions and their loop list are taken by then
  EXPECT_EQ(init("Order", "01", "7,Ann,Rome,[A,1,[];B,2"), nullptr);
  EXPECT_EQ(lists(gptFreeValue), nOrdinary);
  EXPECT_EQ(lists(gptLoopValue), nLoops);
  EXPECT_EQ(parse("02", "Order,Ann,Rome,[A,1,[];B,2"), nullptr);
  EXPECT_EQ(lists(gptFreeValue), nOrdinary);
  EXPECT_EQ(lists(gptLoopValue), nLoops);
  EXPECT_EQ(gptMemRoot->ptMemNodeList->cUsed, '0');
  EXPECT_EQ(gnMsgNum, 0);
}

TEST_F(Parsing, GivesMinus8AlsoWhenMoreWasReadThanThereIs) {
  start();
  InnerMessage *const pt = parse("beyond", "12345");
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(nError, -8);
  EXPECT_EQ(trail(), Texts{"cvt.cpp cvtParseMessasge: Message Len[5] > Message Define Len[9]"});
  EXPECT_EQ(gnMsgNum, 1);
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Parsing, OfANamedMessageDoesNotCompareLengths) {
  start();
  InnerMessage *const pt = init("Order", "beyond", "12345");
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(nError, 0);
  EXPECT_TRUE(trail().empty());
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

// --- Generating ---------------------------------------------------------------------------------------

TEST_F(Generating, ThatFailsInARuleEndsWithAWholeTrail) {
  start();
  InnerMessage *const ptSrc = order();
  EXPECT_EQ(generate(ptSrc, "broken"), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(test::logTexts(),
            (Texts{"No Defined Arg Type [6] err!!",
                   "[ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptSrcArgs, ptMemNode)] is NULL",
                   "CvtCopy Err!!", "Do Convert Rule [1] err!!",
                   "Convert [broken] From struct[Order] tp Struct[Invoice] err!!", "cvtConvert err!!",
                   "Do Func[pubConvert] err!!", "Formate[broken] Parse Err!!\n",
                   "Generate Message[Invoice] err!!"}));
  EXPECT_EQ(trail().back(), "cvt.cpp cvtGenerateMessasge: Generate Message[Invoice] err!!");
  EXPECT_TRUE(trail(5).empty());
  EXPECT_EQ(cvtFreeMessage(ptSrc), 0);
}

TEST_F(Generating, ThatFailsInTheFormatEndsWithAWholeTrail) {
  start();
  InnerMessage *const ptSrc = order();
  nOut = 4;
  EXPECT_EQ(cvtGenerateMessasge(ptSrc, cs("01"), sOut, &nOut, &nError), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(nOut, 4);
  EXPECT_EQ(trail(),
            (Texts{"toy.cpp fail: Msg[Invoice] Field[Customer] Offset[2]: expected room for 3 bytes, found 2 "
                   "bytes left in the buffer.",
                   "cvt_identify.cpp pubGenerate: Message[Invoice] generate to Buf err!!",
                   "cvt_identify.cpp DoFuc: Do Func[pubGenerate] err!!",
                   "cvt_identify.cpp fucGenerate: Formate[01] Parse Err!!\n",
                   "cvt.cpp cvtGenerateMessasge: Generate Message[Invoice] err!!"}));
  EXPECT_EQ(cvtFreeMessage(ptSrc), 0);
}

TEST_F(Generating, WithoutAConverterEndsWithAWholeTrail) {
  config.file("idinfo/choice.xml", choices({{"Order", {{"broken", "broken"}}}}));
  start();
  InnerMessage *const ptSrc = order();
  EXPECT_EQ(generate(ptSrc, "01"), nullptr);
  EXPECT_EQ(trail(),
            (Texts{"cvt_identify.cpp cvtGetConvert: Message Convert Format id [01] not fond!!",
                   "cvt_identify.cpp pubConvert: Get convert Msg[Order] To Msg[01] define info err!!",
                   "cvt_identify.cpp DoFuc: Do Func[pubConvert] err!!",
                   "cvt_identify.cpp fucGenerate: Formate[01] Parse Err!!\n",
                   "cvt.cpp cvtGenerateMessasge: Generate Message[] err!!"}));
  EXPECT_EQ(cvtFreeMessage(ptSrc), 0);
}

TEST_F(Generating, ThatFailsGivesListsAndPoolNodeBackAndLeavesTheSourceAlone) {
  start();
  InnerMessage *const ptSrc = order();
  cvtFreeMessage(generate(ptSrc, "01"));
  const int nOrdinary = lists(gptFreeValue);
  const int nLoops = lists(gptLoopValue);
  EXPECT_EQ(generate(ptSrc, "broken"), nullptr);
  nOut = 11;  // one byte short, after everything was converted
  EXPECT_EQ(cvtGenerateMessasge(ptSrc, cs("01"), sOut, &nOut, &nError), nullptr);
  EXPECT_EQ(lists(gptFreeValue), nOrdinary);
  EXPECT_EQ(lists(gptLoopValue), nLoops);
  EXPECT_EQ(gnMsgNum, 1);
  nOut = static_cast<int>(sizeof sOut);
  EXPECT_EQ(cvtGenMessage(ptSrc, sOut, &nOut), 0);
  EXPECT_EQ(std::string(sOut, static_cast<size_t>(nOut)), sBuffer);
  EXPECT_EQ(cvtFreeMessage(ptSrc), 0);
}

TEST_F(Generating, MayBeRepeatedFromOneSource) {
  start();
  InnerMessage *const ptSrc = order();
  InnerMessage *const ptFirst = generate(ptSrc, "01");
  const std::string sFirst(sOut, static_cast<size_t>(nOut));
  InnerMessage *const ptSecond = generate(ptSrc, "01");
  EXPECT_EQ(std::string(sOut, static_cast<size_t>(nOut)), sFirst);
  EXPECT_NE(ptFirst, ptSecond);
  EXPECT_EQ(gnMsgNum, 3);
  for (InnerMessage *const pt : {ptSecond, ptFirst, ptSrc}) EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Generating, TracesNoByteBehindTheCallersBuffer) {
  config.file("id/pipelines.xml",
              pipelines({{"01",
                          {{"pubParse"}},
                          {{"SetToOffset", "<SetOffsetArgs __ID='ptArg' caMsgType='d' nOffset='8'/>"}}},
                         {"02", {}, {}}}));
  start();
  InnerMessage *const ptSrc = order();
  char sPart[] = "abcdSECRET";
  nOut = 4;
  InnerMessage *const ptDst = cvtGenerateMessasge(ptSrc, cs("01"), sPart, &nOut, &nError);
  ASSERT_NE(ptDst, nullptr);
  EXPECT_EQ(nOut, 8);  // the position that the configuration has set
  EXPECT_EQ(trail(5), Texts{"cvt.cpp cvtGenerateMessasge: Generate Len[8] [abcd]"});
  EXPECT_EQ(cvtFreeMessage(ptDst), 0);
  EXPECT_EQ(cvtFreeMessage(ptSrc), 0);
}

TEST_F(Generating, InTheOwnFormatEndsWithAWholeTrailWhenTheBufferIsFull) {
  start();
  InnerMessage *const pt = order();
  nOut = 3;
  EXPECT_EQ(cvtGenMessage(pt, sOut, &nOut), -1);
  EXPECT_EQ(trail(),
            (Texts{"toy.cpp fail: Msg[Order] Field[Name] Offset[2]: expected room for 3 bytes, found 1 "
                   "bytes left in the buffer.",
                   "cvt_identify.cpp pubGenerate: Message[Order] generate to Buf err!!",
                   "cvt_identify.cpp DoFuc: Do Func[pubGenerate] err!!",
                   "cvt_identify.cpp fucGenerate: Formate[02] Parse Err!!\n",
                   "cvt.cpp cvtGenMessage: Msg[Order] generate to buffer err!!"}));
  EXPECT_EQ(nOut, 3);
  EXPECT_EQ(pt->psBuf, sOut);  // the handle keeps the buffer that it was given
  EXPECT_EQ(pt->nLen, 3);
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Generating, InTheOwnFormatHasNoSourceForAConversion) {
  config.file("id/pipelines.xml",
              pipelines({{"01", {{"pubParse"}}, {}}, {"02", {}, {{"pubConvert"}, {"pubGenerate"}}}}));
  start();
  InnerMessage *const pt = order();
  EXPECT_EQ(cvtGenMessage(pt, sOut, &nOut), -1);
  EXPECT_EQ(trail(), (Texts{"cvt_identify.cpp pubConvert: [ptSrtMsg] is NULL",
                            "cvt_identify.cpp DoFuc: Do Func[pubConvert] err!!",
                            "cvt_identify.cpp fucGenerate: Formate[02] Parse Err!!\n",
                            "cvt.cpp cvtGenMessage: Msg[Order] generate to buffer err!!"}));
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

// --- Values by name -----------------------------------------------------------------------------------

TEST_F(Values, ErrorIsLeftAloneWhateverArgumentIsMissing) {
  start();
  InnerMessage *const pt = order();
  EXPECT_EQ(cvtGetNameValue(pt, nullptr, &nError), nullptr);
  EXPECT_EQ(nError, kUntouched);
  EXPECT_EQ(trail(), Texts{"cvt.cpp cvtGetNameValue: [psValueName] is NULL"});
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Values, SetByNameLieInTheHandlesOwnPoolNode) {
  start();
  InnerMessage *const pt = order();
  ASSERT_EQ(cvtSetNameValue(pt, cs("City"), cs("Paris"), 5), 0);
  const Value *const ptValue = cvtGetNameValue(pt, cs("City"), &nError);
  bool bInside = false;
  for (const MemBlock *ptBlock = pt->tValueListInfo.ptMemNode->ptHeadBlock; ptBlock != nullptr;
       ptBlock = ptBlock->ptNext) {
    bInside = bInside || (ptValue->psValue >= ptBlock->psBuf &&
                          ptValue->psValue + 5 <= ptBlock->psBuf + ptBlock->nMaxSize);
  }
  EXPECT_TRUE(bInside);
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Values, SetTwiceHaveTheLaterBytesAlsoWhenTheyAreFewer) {
  start();
  InnerMessage *const pt = order();
  EXPECT_EQ(cvtSetNameValue(pt, cs("City"), cs("Konstantinopel"), 14), 0);
  EXPECT_EQ(cvtSetNameValue(pt, cs("City"), cs("Ulm"), 3), 0);
  const Value *const ptValue = cvtGetNameValue(pt, cs("City"), &nError);
  EXPECT_EQ(std::string(ptValue->psValue, static_cast<size_t>(ptValue->nLen)), "Ulm");
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Values, OfUnknownNamesAreReportedFromTheInsideOut) {
  start();
  InnerMessage *const pt = order();
  EXPECT_EQ(cvtGetNameValue(pt, cs("Nothing"), &nError), nullptr);
  EXPECT_EQ(nError, -11);
  EXPECT_EQ(cvtSetNameValue(pt, cs("Nowhere.City"), cs("x"), 1), -13);
  EXPECT_EQ(trail(), (Texts{"cvt.cpp GetLoopValueInfoStruct: Get Message[Nothing] Index err!!",
                            "cvt.cpp GetValueInLoopNodeListByNodeName: Node [] was not define!!",
                            "cvt.cpp cvtGetNameValue: GetValueInLoopNodeListByNodeName Err!!",
                            "cvt.cpp GetLoopValueInfoStruct: Node [Nowhere] was not define!!",
                            "cvt.cpp GetValueInLoopNodeListByNodeName: Node [Nowhere] was not define!!",
                            "cvt.cpp cvtSetNameValue: Field[Nowhere.City] get value err!!"}));
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Values, OfAFormatThatThrowsAreReportedUnderTheDefinitionsName) {
  start();
  InnerMessage *const pt = order();
  std::memset(pt->sMsgName, 'n', sizeof pt->sMsgName);  // as a converter's long destination leaves it
  pt->ptMsgInfo->fGetValue = [](Msg *, ValueListInfo *, char *, int *) -> Value * {
    throw std::runtime_error("no such name");
  };
  pt->ptMsgInfo->fSetValue = [](Msg *, ValueListInfo *, char *, char *, int) -> int {
    throw std::runtime_error("read only");
  };
  EXPECT_EQ(cvtGetNameValue(pt, cs("Id"), &nError), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(cvtSetNameValue(pt, cs("Id"), cs("8"), 1), -1);
  EXPECT_EQ(test::logTexts(), (Texts{"Msg[Order] let an exception out: no such name",
                                     "Msg[Order] let an exception out: read only"}));
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

// --- Release ------------------------------------------------------------------------------------------

TEST_F(Release, OfAMessageWithoutADefinitionGivesItsPoolNodeBack) {
  start();
  InnerMessage *const pt = init("Order", "look", "");
  const MemNode *const ptNode = pt->tValueListInfo.ptMemNode;
  const int nOrdinary = lists(gptFreeValue);
  test::clearLog();
  EXPECT_EQ(cvtFreeMessage(pt), 0);
  EXPECT_EQ(ptNode->cUsed, '0');
  EXPECT_EQ(lists(gptFreeValue), nOrdinary);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(Release, DumpsForAnyDebugSwitchButZero) {
  start();
  for (const int nDebug : {1, 2, -1, 0}) {
    InnerMessage *const pt = order();
    gptAllInfo->nDebug = nDebug;
    EXPECT_EQ(cvtFreeMessage(pt), 0);
    EXPECT_EQ(trail(5).size(), nDebug == 0 ? 0U : 2U) << nDebug;
    EXPECT_EQ(test::logged(5, "Delete Message[Order] Memory Node"), nDebug != 0) << nDebug;
  }
}

TEST_F(Release, OfNothingIsAWarningAtTheLevelOfErrors) {
  EXPECT_EQ(cvtFreeMessage(nullptr), 0);
  EXPECT_EQ(trail(), Texts{"cvt.cpp cvtFreeMessage: Warning !! cvtFreeMessage ptMessage is NULL!!"});
}

TEST_F(Release, ThatFailsHasUncountedTheHandle) {
  start();
  InnerMessage *const pt = order();
  MemNode *const ptNode = pt->tValueListInfo.ptMemNode;
  pt->tValueListInfo.ptMemNode = nullptr;
  EXPECT_EQ(cvtFreeMessage(pt), -1);
  EXPECT_EQ(gnMsgNum, 0);
  EXPECT_EQ(trail().back(), "cvt.cpp cvtFreeMessage: Msg[Order] free Memory Node err!!");
  cvtMemDelNode(ptNode);
}

TEST_F(Release, OfTheDestinationLeavesItsSourceReadable) {
  start();
  InnerMessage *const ptSrc = order();
  EXPECT_EQ(cvtFreeMessage(generate(ptSrc, "01")), 0);
  const Value *const ptValue = cvtGetNameValue(ptSrc, cs("Name"), &nError);
  ASSERT_NE(ptValue, nullptr);
  EXPECT_EQ(std::string(ptValue->psValue, 3), "Ann");
  EXPECT_EQ(cvtFreeMessage(ptSrc), 0);
}

}  // namespace

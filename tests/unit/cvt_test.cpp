#include "cvt.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "log_capture.h"
#include "toy_config.h"

using test::cs;
using test::logged;
using test::loggedInOrder;
using test::logTexts;

namespace {

constexpr int kUntouched = 77;

// What the step "look" saw of its message, before any other step.
InnerMessage g_seen;
int g_nAlive = 0;
int g_nLooks = 0;

int look(InnerMessage *ptFirst, InnerMessage *ptSecond, void *) {
  g_seen = ptFirst == nullptr ? *ptSecond : *ptFirst;
  g_nAlive = gnMsgNum;
  ++g_nLooks;
  return 0;
}

int fail(InnerMessage *, InnerMessage *, void *) {
  return 9;
}

// Names its message before it fails, as a pipeline does whose format then refuses the bytes.
int nameAndFail(InnerMessage *ptFirst, InnerMessage *, void *) {
  std::strcpy(ptFirst->sMsgName, "Order");
  return 9;
}

std::string text(const Value *pt) {
  return pt == nullptr
             ? "(null)"
             : std::string(pt->psValue == nullptr ? "" : pt->psValue, static_cast<size_t>(pt->nLen));
}

class MessageApi : public testing::Test {
 protected:
  void SetUp() override {
    cvtIdAddFunction(cs("look"), look);
    cvtIdAddFunction(cs("fail"), fail);
    cvtIdAddFunction(cs("nameAndFail"), nameAndFail);
    config.file("id/pipelines.xml", test::pipelines({{"01", {"pubParse"}, {"pubConvert", "pubGenerate"}},
                                                     {"02", {"toyName", "pubParse"}, {"pubGenerate"}},
                                                     {"look", {"look"}, {"look"}},
                                                     {"fail", {"fail"}, {"fail"}},
                                                     {"named", {"nameAndFail"}, {}},
                                                     {"converted", {}, {"pubConvert", "fail"}}}));
  }
  void TearDown() override { cvtEnd(); }

  void start(const std::string &sAttributes = "") {
    config.root.sAttributes = sAttributes;
    config.writeRoot();
    ASSERT_EQ(config.start(), 0);
    test::clearLog();
  }

  InnerMessage *order(const char *psBytes = "7,Ann,Rome,[A,1,[];B,2,[];],hi") {
    sBuffer = psBytes;
    InnerMessage *const pt =
        cvtInitMessasge(cs("Order"), cs("01"), sBuffer.data(), static_cast<int>(sBuffer.size()), &nError);
    EXPECT_NE(pt, nullptr);
    test::clearLog();
    return pt;
  }

  std::string get(InnerMessage *ptMsg, const char *psName) {
    return text(cvtGetNameValue(ptMsg, cs(psName), &nError));
  }

  test::ToyConfig config;
  std::string sBuffer;
  char sOut[256] = {};
  int nOut = static_cast<int>(sizeof sOut);
  int nError = kUntouched;
};

using Handle = MessageApi;
using InitMessage = MessageApi;
using ParseMessage = MessageApi;
using GenerateMessage = MessageApi;
using NewMessage = MessageApi;
using GenMessage = MessageApi;
using FreeMessage = MessageApi;
using ConvertMessage = MessageApi;

// --- The handle
// ---------------------------------------------------------------------------------------------------

TEST_F(Handle, StartsAsDescribed) {
  start();
  char sIn[] = "bytes";
  InnerMessage *const pt = cvtInitMessasge(cs("Order"), cs("look"), sIn, 5, &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(g_seen.nMsgId, 0);
  EXPECT_STREQ(g_seen.sMsgName, "Order");
  EXPECT_STREQ(g_seen.sMsgFormat, "look");
  EXPECT_EQ(g_seen.psBuf, sIn);
  EXPECT_EQ(g_seen.nNowLen, 0);
  EXPECT_EQ(g_seen.nLen, 5);
  EXPECT_EQ(g_seen.ptMsgInfo, nullptr);
  EXPECT_EQ(g_seen.tValueListInfo.ptValueList, nullptr);
  EXPECT_NE(g_seen.tValueListInfo.ptMemNode, nullptr);
  EXPECT_EQ(g_seen.tValueListInfo.nIndexOffset, 0);
  EXPECT_EQ(g_seen.ptInfo, nullptr);
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Handle, OwnsOnePoolNodeInWhichItLies) {
  start();
  char sIn[] = "";
  InnerMessage *const pt = cvtInitMessasge(cs("Order"), cs("look"), sIn, 0, &nError);
  ASSERT_NE(pt, nullptr);
  const MemNode *const ptNode = pt->tValueListInfo.ptMemNode;
  EXPECT_EQ(ptNode->cUsed, '1');
  EXPECT_EQ(static_cast<void *>(pt), static_cast<void *>(ptNode->ptHeadBlock->psBuf));
  EXPECT_EQ(cvtFreeMessage(pt), 0);
  EXPECT_EQ(ptNode->cUsed, '0');
}

TEST_F(Handle, KeepsTheFirst60BytesOfALongName) {
  start();
  const std::string sName = std::string(59, 'n') + "60+789012345";
  char sIn[] = "";
  InnerMessage *const pt = cvtInitMessasge(cs(sName.c_str()), cs("look"), sIn, 0, &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(std::string(pt->sMsgName), sName.substr(0, 60));
  EXPECT_EQ(pt->sMsgName[60], '\0');
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Handle, KeepsTheFirst20BytesOfALongFormatId) {
  const std::string sFormat = "a format id of more than twenty bytes";
  config.file("id/pipelines.xml", test::pipelines({{sFormat, {"look"}, {}}}));
  start();
  char sIn[] = "";
  InnerMessage *const pt = cvtInitMessasge(cs("Order"), cs(sFormat.c_str()), sIn, 0, &nError);
  ASSERT_NE(pt, nullptr);  // the pipeline is found by the whole id
  EXPECT_EQ(std::string(pt->sMsgFormat), sFormat.substr(0, 20));
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Handle, HasAnEmptyNameWhenNoneIsGiven) {
  start();
  char sIn[] = "";
  InnerMessage *const pt = cvtInitMessasge(nullptr, cs("look"), sIn, 0, &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_STREQ(pt->sMsgName, "");
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Handle, IsCountedFromCreationToRelease) {
  start();
  char sIn[] = "";
  EXPECT_EQ(gnMsgNum, 0);
  InnerMessage *const pt = cvtInitMessasge(cs("Order"), cs("look"), sIn, 0, &nError);
  EXPECT_EQ(g_nAlive, 1);
  EXPECT_EQ(gnMsgNum, 1);
  InnerMessage *const ptOther = cvtNewMessage(cs("Order"), cs("01"), &nError);
  EXPECT_EQ(gnMsgNum, 2);
  cvtFreeMessage(pt);
  EXPECT_EQ(gnMsgNum, 1);
  cvtFreeMessage(ptOther);
  EXPECT_EQ(gnMsgNum, 0);
}

// --- cvtInitMessasge
// ------------------------------------------------------------------------------------------

TEST_F(InitMessage, GivesAHandleWithTheValues) {
  start();
  char sIn[] = "7,Ann,Rome,[],hi";
  InnerMessage *const pt =
      cvtInitMessasge(cs("Order"), cs("01"), sIn, static_cast<int>(strlen(sIn)), &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(nError, 0);
  EXPECT_EQ(get(pt, "Id"), "7");
  EXPECT_EQ(get(pt, "City"), "Rome");
  EXPECT_EQ(pt->nNowLen, 16);
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(InitMessage, DoesNotMindBytesLeftOver) {
  start();
  char sIn[] = "7,Ann,Rome,[],hi\nrest";
  InnerMessage *const pt =
      cvtInitMessasge(cs("Order"), cs("01"), sIn, static_cast<int>(strlen(sIn)), &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(nError, 0);
  EXPECT_EQ(pt->nNowLen, 16);
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(InitMessage, RefusesANullErrorPointer) {
  start();
  char sIn[] = "";
  EXPECT_EQ(cvtInitMessasge(cs("Order"), cs("01"), sIn, 0, nullptr), nullptr);
  EXPECT_EQ(logTexts(), std::vector<std::string>{"[pnError] is NULL"});
  EXPECT_EQ(gnMsgNum, 0);
}

TEST_F(InitMessage, FailsBeforeTheLibraryIsStarted) {
  test::clearLog();
  char sIn[] = "";
  EXPECT_EQ(cvtInitMessasge(cs("Order"), cs("01"), sIn, 0, &nError), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(logTexts(),
            (std::vector<std::string>{"Not Init!!", "AutoReload err!! Please Check Config File!!"}));
}

TEST_F(InitMessage, TracesNameFormatAndTheBytesGiven) {
  start();
  char sIn[] = {'7', ',', 'A', 'n', 'n', 'X', 'X'};  // no terminator, and more bytes than the length says
  EXPECT_EQ(cvtInitMessasge(cs("Order"), cs("fail"), sIn, 5, &nError), nullptr);
  EXPECT_TRUE(logged(5, "parse [Order:fail][7,Ann]"));
}

TEST_F(InitMessage, TracesNothingOfABufferOfNegativeLength) {
  start();
  char sIn[] = "secret";
  EXPECT_EQ(cvtInitMessasge(cs("Order"), cs("fail"), sIn, -1, &nError), nullptr);
  EXPECT_TRUE(logged(5, "parse [Order:fail][]"));
}

TEST_F(InitMessage, ReleasesTheHandleWhenTheBufferIsRefused) {
  start();
  char sIn[] = "7";
  EXPECT_EQ(cvtInitMessasge(cs("Order"), cs("fail"), sIn, 1, &nError), nullptr);
  EXPECT_EQ(nError, -1);  // the pipeline's code, not the step's 9
  EXPECT_EQ(gnMsgNum, 0);
  EXPECT_EQ(gptMemRoot->ptMemNodeList->cUsed, '0');
  EXPECT_EQ(logTexts(), (std::vector<std::string>{"Do Func[fail] err!!", "Formate[fail] Parse Err!!\n",
                                                  "Msg[Order] parse buffer err!!"}));
}

TEST_F(InitMessage, FailsWithoutAFormatId) {
  start();
  char sIn[] = "7";
  EXPECT_EQ(cvtInitMessasge(cs("Order"), nullptr, sIn, 1, &nError), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(logTexts(), (std::vector<std::string>{"[psFormatId] is NULL", "Msg[Order] parse buffer err!!"}));
}

TEST_F(InitMessage, PassesANullBufferOnToThePipeline) {
  start();
  InnerMessage *const pt = cvtInitMessasge(cs("Order"), cs("look"), nullptr, 0, &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(g_seen.psBuf, nullptr);
  cvtFreeMessage(pt);
}

// --- cvtParseMessasge
// -----------------------------------------------------------------------------------------

TEST_F(ParseMessage, LetsThePipelineFindTheName) {
  start();
  char sIn[] = "Order,Ann,Rome,[],hi";
  InnerMessage *const pt = cvtParseMessasge(cs("02"), sIn, static_cast<int>(strlen(sIn)), &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(nError, 0);
  EXPECT_STREQ(pt->sMsgName, "Order");
  EXPECT_EQ(get(pt, "Name"), "Ann");
  EXPECT_TRUE(logged(5, "parse [02][Order,Ann,Rome,[],hi]"));
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(ParseMessage, StartsWithoutAName) {
  start();
  char sIn[] = "";
  InnerMessage *const pt = cvtParseMessasge(cs("look"), sIn, 0, &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_STREQ(g_seen.sMsgName, "");
  EXPECT_STREQ(g_seen.sMsgFormat, "look");
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(ParseMessage, GivesAHandleAndMinus8ForABufferThatIsTooLong) {
  start();
  char sIn[] = "Order,Ann,Rome,[],hi\nmore";
  InnerMessage *const pt = cvtParseMessasge(cs("02"), sIn, static_cast<int>(strlen(sIn)), &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(nError, -8);
  EXPECT_EQ(logTexts(), std::vector<std::string>{"Message Len[25] > Message Define Len[20]"});
  EXPECT_EQ(get(pt, "Note"), "hi");
  EXPECT_EQ(gnMsgNum, 1);
  EXPECT_EQ(cvtFreeMessage(pt), 0);
  EXPECT_EQ(gnMsgNum, 0);
}

TEST_F(ParseMessage, RefusesANullErrorPointer) {
  start();
  char sIn[] = "";
  EXPECT_EQ(cvtParseMessasge(cs("02"), sIn, 0, nullptr), nullptr);
  EXPECT_EQ(logTexts(), std::vector<std::string>{"[pnError] is NULL"});
}

TEST_F(ParseMessage, FailsBeforeTheLibraryIsStarted) {
  test::clearLog();
  char sIn[] = "";
  EXPECT_EQ(cvtParseMessasge(cs("02"), sIn, 0, &nError), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(logTexts(),
            (std::vector<std::string>{"Not Init!!", "AutoReload err!! Please Check Config File!!"}));
}

TEST_F(ParseMessage, ReportsTheNameThatThePipelineHadFound) {
  start();
  char sIn[] = "7";
  EXPECT_EQ(cvtParseMessasge(cs("named"), sIn, 1, &nError), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(gnMsgNum, 0);
  EXPECT_EQ(logTexts(),
            (std::vector<std::string>{"Do Func[nameAndFail] err!!", "Formate[named] Parse Err!!\n",
                                      "Msg[Order] parse buffer err!!"}));
}

TEST_F(ParseMessage, FailsForAnUnknownFormat) {
  start();
  char sIn[] = "7";
  EXPECT_EQ(cvtParseMessasge(cs("99"), sIn, 1, &nError), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(gnMsgNum, 0);
  EXPECT_TRUE(logged(1, "Msg[] parse buffer err!!"));
}

// --- cvtGenerateMessasge
// --------------------------------------------------------------------------------------

TEST_F(GenerateMessage, ConvertsIntoTheCallersBuffer) {
  start();
  InnerMessage *const ptSrc = order();
  InnerMessage *const ptDst = cvtGenerateMessasge(ptSrc, cs("01"), sOut, &nOut, &nError);
  ASSERT_NE(ptDst, nullptr);
  EXPECT_EQ(nError, 0);
  EXPECT_EQ(nOut, 12);
  EXPECT_EQ(std::string(sOut, 12), "7,Ann,[A;B;]");
  EXPECT_STREQ(ptDst->sMsgName, "Invoice");
  EXPECT_STREQ(ptDst->sMsgFormat, "01");
  EXPECT_TRUE(logged(5, "Generate Len[12] [7,Ann,[A;B;]]"));
  EXPECT_EQ(gnMsgNum, 2);
  EXPECT_EQ(cvtFreeMessage(ptDst), 0);
  EXPECT_EQ(cvtFreeMessage(ptSrc), 0);
}

TEST_F(GenerateMessage, HandsTheDestinationTheBufferAndItsCapacity) {
  start();
  InnerMessage *const ptSrc = order();
  nOut = 99;
  // "look" prefers its first message: the source
  InnerMessage *const ptDst = cvtGenerateMessasge(ptSrc, cs("look"), sOut, &nOut, &nError);
  ASSERT_NE(ptDst, nullptr);
  EXPECT_STREQ(g_seen.sMsgName, "Order");
  EXPECT_EQ(ptDst->psBuf, sOut);
  EXPECT_EQ(ptDst->nLen, 99);
  EXPECT_STREQ(ptDst->sMsgName, "");
  EXPECT_EQ(nOut, 0);  // nothing was produced
  cvtFreeMessage(ptDst);
  cvtFreeMessage(ptSrc);
}

TEST_F(GenerateMessage, ChecksTheErrorPointerFirst) {
  EXPECT_EQ(cvtGenerateMessasge(nullptr, cs("01"), sOut, nullptr, nullptr), nullptr);
  EXPECT_EQ(logTexts(), std::vector<std::string>{"[pnError] is NULL"});
}

TEST_F(GenerateMessage, LeavesTheErrorAloneWithoutASource) {
  EXPECT_EQ(cvtGenerateMessasge(nullptr, cs("01"), sOut, &nOut, &nError), nullptr);
  EXPECT_EQ(logTexts(), std::vector<std::string>{"[ptSrcMsg] is NULL"});
  EXPECT_EQ(nError, kUntouched);
}

TEST_F(GenerateMessage, RefusesANullLength) {
  start();
  InnerMessage *const ptSrc = order();
  EXPECT_EQ(cvtGenerateMessasge(ptSrc, cs("01"), sOut, nullptr, &nError), nullptr);
  EXPECT_TRUE(logged(1, "[pnBufLen] is NULL"));
  cvtFreeMessage(ptSrc);
}

TEST_F(GenerateMessage, ReleasesTheDestinationOnFailure) {
  start();
  InnerMessage *const ptSrc = order();
  EXPECT_EQ(cvtGenerateMessasge(ptSrc, cs("converted"), sOut, &nOut, &nError), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(gnMsgNum, 1);
  EXPECT_EQ(nOut, static_cast<int>(sizeof sOut));
  cvtFreeMessage(ptSrc);
}

TEST_F(GenerateMessage, ReportsTheDestinationsName) {
  config.file("idinfo/choice.xml",
              "<IdInfo><IdMsgInfo psMsgName=\"Order\"><IdCvtInfo __ID=\"ptIdCvtInfo\" psFormatId=\"\" "
              "psCvtName=\"bill\"/></IdMsgInfo></IdInfo>");
  start();
  InnerMessage *const ptSrc = order();
  EXPECT_EQ(cvtGenerateMessasge(ptSrc, cs("converted"), sOut, &nOut, &nError), nullptr);
  EXPECT_EQ(logTexts(), (std::vector<std::string>{"Do Func[fail] err!!", "Formate[converted] Parse Err!!\n",
                                                  "Generate Message[Invoice] err!!"}));
  cvtFreeMessage(ptSrc);
}

TEST_F(GenerateMessage, ReportsADestinationsNameThatFillsItsField) {
  const std::string sLong(70, 'L');
  config.file("msg/" + sLong + ".xml", test::definition("toy", sLong, {test::field("A")}));
  config.file("cvt/long.xml",
              "<Convert><Converter psName=\"long\" psSrcStructName=\"Order\" psDstStructName=\"" + sLong +
                  "\"/></Convert>");
  config.file("idinfo/choice.xml",
              "<IdInfo><IdMsgInfo psMsgName=\"Order\"><IdCvtInfo __ID=\"ptIdCvtInfo\" psFormatId=\"\" "
              "psCvtName=\"long\"/></IdMsgInfo></IdInfo>");
  start();
  InnerMessage *const ptSrc = order();
  EXPECT_EQ(cvtGenerateMessasge(ptSrc, cs("converted"), sOut, &nOut, &nError), nullptr);
  EXPECT_EQ(logTexts().back(), "Generate Message[" + sLong.substr(0, 61) + "] err!!");
  cvtFreeMessage(ptSrc);
}

TEST_F(GenerateMessage, FailsWhenTheBufferIsTooSmall) {
  start();
  InnerMessage *const ptSrc = order();
  nOut = 11;
  EXPECT_EQ(cvtGenerateMessasge(ptSrc, cs("01"), sOut, &nOut, &nError), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(nOut, 11);
  EXPECT_EQ(sOut[11], '\0');
  cvtFreeMessage(ptSrc);
}

TEST_F(GenerateMessage, FillsABufferOfExactlyTheRightSize) {
  start();
  InnerMessage *const ptSrc = order();
  nOut = 12;
  InnerMessage *const ptDst = cvtGenerateMessasge(ptSrc, cs("01"), sOut, &nOut, &nError);
  EXPECT_NE(ptDst, nullptr);
  EXPECT_EQ(nOut, 12);
  cvtFreeMessage(ptDst);
  cvtFreeMessage(ptSrc);
}

TEST_F(GenerateMessage, FailsWithoutAFormatId) {
  start();
  InnerMessage *const ptSrc = order();
  EXPECT_EQ(cvtGenerateMessasge(ptSrc, nullptr, sOut, &nOut, &nError), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_TRUE(loggedInOrder({"[psFormatId] is NULL", "Generate Message[] err!!"}));
  cvtFreeMessage(ptSrc);
}

TEST_F(GenerateMessage, NeverReloads) {
  start("nReload=\"1\" psBasePath=\"old\"");
  InnerMessage *const ptSrc = order();
  config.root.sAttributes = "nReload=\"1\" psBasePath=\"new\"";
  config.writeRoot();
  config.touchRoot();
  gnMsgNum = 0;  // as if nothing were alive: only then a reload would show
  InnerMessage *const ptDst = cvtGenerateMessasge(ptSrc, cs("01"), sOut, &nOut, &nError);
  ASSERT_NE(ptDst, nullptr);
  EXPECT_STREQ(cvtGetBasePath(), "old");
  gnMsgNum = 2;
  cvtFreeMessage(ptDst);
  cvtFreeMessage(ptSrc);
}

// --- cvtNewMessage
// ----------------------------------------------------------------------------------------------

TEST_F(NewMessage, IsEmptyAndOfTheNamedType) {
  start();
  InnerMessage *const pt = cvtNewMessage(cs("Order"), cs("02"), &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(nError, kUntouched);  // not written on success
  EXPECT_STREQ(pt->sMsgName, "Order");
  EXPECT_STREQ(pt->sMsgFormat, "02");
  EXPECT_EQ(pt->psBuf, nullptr);
  EXPECT_EQ(pt->nLen, 0);
  EXPECT_EQ(pt->ptMsgInfo, cvtGetMsg(cs("Order")));
  EXPECT_EQ(pt->tValueListInfo.ptValueList->nNow, pt->ptMsgInfo->nValueNum);
  EXPECT_EQ(get(pt, "Id"), "");
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(NewMessage, GetsAListOfFullCapacityWhenTheFormatLeavesTheCountOpen) {
  start();
  cvtGetMsg(cs("Order"))->nValueNum = -1;
  InnerMessage *const pt = cvtNewMessage(cs("Order"), cs("02"), &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(pt->tValueListInfo.ptValueList->nNow, gnMaxValueNum);
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(NewMessage, GivesMinus6ForAnUnknownType) {
  start();
  EXPECT_EQ(cvtNewMessage(cs("order"), cs("02"), &nError), nullptr);  // names are exact
  EXPECT_EQ(nError, -6);
  EXPECT_EQ(logTexts(), std::vector<std::string>{"Msg [order] Get define info err!!"});
  EXPECT_EQ(gnMsgNum, 0);
}

TEST_F(NewMessage, ChecksItsArgumentsInOrder) {
  EXPECT_EQ(cvtNewMessage(nullptr, cs("02"), nullptr), nullptr);
  EXPECT_EQ(cvtNewMessage(cs("Order"), cs("02"), nullptr), nullptr);
  EXPECT_EQ(cvtNewMessage(nullptr, cs("02"), &nError), nullptr);
  EXPECT_EQ(logTexts(),
            (std::vector<std::string>{"[psMsgId] is NULL", "[pnError] is NULL", "[psMsgId] is NULL"}));
  EXPECT_EQ(nError, kUntouched);
}

TEST_F(NewMessage, DoesNotWriteTheErrorWhenTheReloadFails) {
  EXPECT_EQ(cvtNewMessage(cs("Order"), cs("02"), &nError), nullptr);
  EXPECT_EQ(nError, kUntouched);
  EXPECT_EQ(logTexts(),
            (std::vector<std::string>{"Not Init!!", "AutoReload err!! Please Check Config File!!"}));
}

TEST_F(NewMessage, AcceptsANullFormatId) {
  start();
  InnerMessage *const pt = cvtNewMessage(cs("Order"), nullptr, &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_STREQ(pt->sMsgFormat, "");
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

// --- cvtGenMessage
// ----------------------------------------------------------------------------------------------

TEST_F(GenMessage, WritesAFilledMessageByTheChainOfFormat02) {
  start();
  InnerMessage *const pt = cvtNewMessage(cs("Order"), cs("ignored"), &nError);
  cvtSetNameValue(pt, cs("Id"), cs("8"), 1);
  cvtSetNameValue(pt, cs("City"), cs("Bonn"), 4);
  EXPECT_EQ(cvtGenMessage(pt, sOut, &nOut), 0);
  EXPECT_EQ(std::string(sOut, static_cast<size_t>(nOut)), "8,,Bonn,[],");
  cvtFreeMessage(pt);
}

TEST_F(GenMessage, WritesAParsedMessageBackByteForByte) {
  start();
  InnerMessage *const pt = order("7,Ann,Rome,[A,1,[x,May;y,;];B,,[];],hi");
  EXPECT_EQ(cvtGenMessage(pt, sOut, &nOut), 0);
  EXPECT_EQ(std::string(sOut, static_cast<size_t>(nOut)), sBuffer);
  EXPECT_EQ(pt->psBuf, sOut);
  cvtFreeMessage(pt);
}

TEST_F(GenMessage, CanBeRepeated) {
  start();
  InnerMessage *const pt = order("7,Ann,Rome,[],hi");
  EXPECT_EQ(cvtGenMessage(pt, sOut, &nOut), 0);
  cvtSetNameValue(pt, cs("Note"), cs(""), 0);
  char sAgain[64];
  int nAgain = sizeof sAgain;
  EXPECT_EQ(cvtGenMessage(pt, sAgain, &nAgain), 0);
  EXPECT_EQ(std::string(sAgain, static_cast<size_t>(nAgain)), "7,Ann,Rome,[],");
  cvtFreeMessage(pt);
}

TEST_F(GenMessage, RunsWithoutASourceMessage) {
  config.file("id/pipelines.xml", test::pipelines({{"01", {"pubParse"}, {}}, {"02", {}, {"look"}}}));
  start();
  InnerMessage *const pt = order();
  nOut = 33;
  EXPECT_EQ(cvtGenMessage(pt, sOut, &nOut), 0);
  EXPECT_STREQ(g_seen.sMsgName, "Order");  // the second message: there was no first
  EXPECT_EQ(g_seen.psBuf, sOut);
  EXPECT_EQ(g_seen.nLen, 33);
  EXPECT_EQ(g_seen.nNowLen, 0);
  EXPECT_EQ(nOut, 0);
  cvtFreeMessage(pt);
}

TEST_F(GenMessage, ChecksItsArgumentsInOrder) {
  InnerMessage tMsg{};
  EXPECT_EQ(cvtGenMessage(nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(cvtGenMessage(&tMsg, nullptr, nullptr), -1);
  EXPECT_EQ(cvtGenMessage(&tMsg, sOut, nullptr), -1);
  EXPECT_EQ(logTexts(),
            (std::vector<std::string>{"[ptMessage] is NULL", "[psOutBuf] is NULL", "[pnOutBufLen] is NULL"}));
}

TEST_F(GenMessage, LeavesTheLengthAloneOnFailure) {
  start();
  InnerMessage *const pt = order();
  nOut = 3;
  EXPECT_EQ(cvtGenMessage(pt, sOut, &nOut), -1);
  EXPECT_EQ(nOut, 3);
  EXPECT_TRUE(loggedInOrder({"Message[Order] generate to Buf err!!", "Do Func[pubGenerate] err!!",
                             "Formate[02] Parse Err!!\n", "Msg[Order] generate to buffer err!!"}));
  EXPECT_EQ(gnMsgNum, 1);
  cvtFreeMessage(pt);
}

TEST_F(GenMessage, FailsWithoutAPipelineOfThatId) {
  config.file("id/pipelines.xml", test::pipelines({{"01", {"pubParse"}, {}}}));
  config.file("idinfo/choice.xml", "<IdInfo><IdMsgInfo psMsgName=\"Order\"/></IdInfo>");
  start();
  InnerMessage *const pt = order();
  EXPECT_EQ(cvtGenMessage(pt, sOut, &nOut), -1);
  EXPECT_EQ(logTexts(),
            (std::vector<std::string>{"format id [02] mot find!!", "Get Message Formate [02] Info err!!\n",
                                      "Msg[Order] generate to buffer err!!"}));
  cvtFreeMessage(pt);
}

// --- cvtFreeMessage
// ---------------------------------------------------------------------------------------------

int freeLists(const ValueList *pt) {
  int n = 0;
  for (; pt != nullptr; pt = pt->ptNext) ++n;
  return n;
}

TEST_F(FreeMessage, AcceptsNullWithAWarning) {
  test::clearLog();
  EXPECT_EQ(cvtFreeMessage(nullptr), 0);
  EXPECT_EQ(logTexts(), std::vector<std::string>{"Warning !! cvtFreeMessage ptMessage is NULL!!"});
  EXPECT_EQ(gnMsgNum, 0);
}

TEST_F(FreeMessage, GivesTheValueListsBack) {
  start();
  const int nBefore = freeLists(gptFreeValue);
  InnerMessage *const pt = order();  // its own list, two repetitions; one loop list
  EXPECT_EQ(freeLists(gptFreeValue), nBefore - 3);
  EXPECT_EQ(cvtFreeMessage(pt), 0);
  EXPECT_EQ(freeLists(gptFreeValue), nBefore);
  EXPECT_EQ(freeLists(gptLoopValue), 1);
}

TEST_F(FreeMessage, GivesTheSamePoolNodeToTheNextMessage) {
  start();
  InnerMessage *const ptFirst = order();
  const MemNode *const ptNode = ptFirst->tValueListInfo.ptMemNode;
  cvtFreeMessage(ptFirst);
  InnerMessage *const ptNext = order();
  EXPECT_EQ(ptNext->tValueListInfo.ptMemNode, ptNode);
  cvtFreeMessage(ptNext);
}

TEST_F(FreeMessage, SaysNothingWithoutTheDebugSwitch) {
  start();
  InnerMessage *const pt = order();
  EXPECT_EQ(cvtFreeMessage(pt), 0);
  EXPECT_TRUE(logTexts(0).empty());
}

TEST_F(FreeMessage, DumpsThePoolNodeWithTheDebugSwitch) {
  start("nDebug=\"1\"");
  InnerMessage *const pt = order();
  EXPECT_EQ(cvtFreeMessage(pt), 0);
  const std::vector<std::string> texts = logTexts(5);
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_EQ(texts[0], "Delete Message[Order] Memory Node");
  EXPECT_EQ(texts[1].substr(0, 8), "Node[1]:");
}

TEST_F(FreeMessage, FailsWithoutAPoolNode) {
  start();
  InnerMessage *const pt = order();
  MemNode *const ptNode = pt->tValueListInfo.ptMemNode;
  pt->tValueListInfo.ptMemNode = nullptr;
  EXPECT_EQ(cvtFreeMessage(pt), -1);
  EXPECT_EQ(logTexts(), (std::vector<std::string>{"[ptNode] is NULL", "Msg[Order] free Memory Node err!!"}));
  EXPECT_EQ(gnMsgNum, 0);
  cvtMemDelNode(ptNode);
}

// --- cvtConvertMessage
// ------------------------------------------------------------------------------------------

TEST_F(ConvertMessage, DoesNothing) {
  start();
  nOut = 5;
  char sIn[] = "7,Ann,Rome,[],hi";
  EXPECT_EQ(cvtConvertMessage(cs("Order"), cs("01"), sIn, 16, cs("01"), sOut, &nOut), 0);
  EXPECT_EQ(nOut, 5);
  EXPECT_EQ(sOut[0], '\0');
  EXPECT_EQ(cvtConvertMessage(nullptr, nullptr, nullptr, 0, nullptr, nullptr, nullptr), 0);
  EXPECT_TRUE(logTexts(0).empty());
  EXPECT_EQ(gnMsgNum, 0);
}

}  // namespace

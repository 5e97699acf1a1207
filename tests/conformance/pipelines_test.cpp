// Pipelines: which function reports what, what a chain leaves behind it, and the steps in whole chains from
// bytes to bytes.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "convert_xml.h"
#include "cvt.h"
#include "toy_config.h"
#include "trail.h"

using namespace test::xml;
using test::cs;
using test::Texts;
using test::then;
using test::trail;

namespace {

constexpr const char *kBuiltIn[] = {"pubParse",        "pubNew",      "pubGenerate",
                                    "pubConvert",      "GetIpcName",  "GetXmlNode",
                                    "SetMsgNameToBuf", "SetBufToBuf", "SetToOffset"};

int g_nCalls = 0;
int note(InnerMessage *, InnerMessage *, void *) {
  ++g_nCalls;
  return 0;
}
int rename(InnerMessage *ptMsg, InnerMessage *, void *) {
  std::strcpy(ptMsg->sMsgName, "Renamed");
  ptMsg->nNowLen += 3;
  return 0;
}
int fail(InnerMessage *, InnerMessage *, void *) {
  return 42;
}

class PipelineRun : public testing::Test {
 protected:
  void SetUp() override {
    cvtIdAddFunction(cs("note"), note);
    cvtIdAddFunction(cs("rename"), rename);
    cvtIdAddFunction(cs("fail"), fail);
  }
  void TearDown() override { cvtEnd(); }

  int start(const std::vector<Pipeline> &list) {
    config.file("id/pipelines.xml", pipelines(list));
    test::clearLog();
    return config.start();
  }
  void started(const std::vector<Pipeline> &list) {
    ASSERT_EQ(start(list), 0);
    test::clearLog();
  }

  test::ToyConfig config;
  InnerMessage first{};
  InnerMessage second{};
  int nError = 77;
};

using Runner = PipelineRun;
using StepNames = PipelineRun;
using IdSection = PipelineRun;
using Standard = PipelineRun;
using Buffer = PipelineRun;

// --- The runners --------------------------------------------------------------------------------------

TEST_F(Runner, SaysByItsFunctionWhetherParsingOrGeneratingFailed) {
  started({{"f", {{"fail"}}, {{"fail"}}}});
  EXPECT_EQ(fucParse(cs("f"), &first, nullptr), -1);
  EXPECT_EQ(fucGenerate(cs("f"), &first, &second), -1);
  EXPECT_EQ(trail(), (Texts{"cvt_identify.cpp DoFuc: Do Func[fail] err!!",
                            "cvt_identify.cpp fucParse: Formate[f] Parse Err!!\n",
                            "cvt_identify.cpp DoFuc: Do Func[fail] err!!",
                            "cvt_identify.cpp fucGenerate: Formate[f] Parse Err!!\n"}));
}

TEST_F(Runner, SaysByItsFunctionWhichOneWasAskedForAnUnknownFormat) {
  started({{"f", {}, {}}});
  EXPECT_EQ(fucParse(cs("g"), &first, nullptr), -1);
  EXPECT_EQ(fucGenerate(cs("g"), &first, &second), -1);
  EXPECT_EQ(fucParse(nullptr, &first, nullptr), -1);
  EXPECT_EQ(fucGenerate(nullptr, &first, &second), -1);
  EXPECT_EQ(trail(), (Texts{"cvt_identify.cpp GetFormatInfo: format id [g] mot find!!",
                            "cvt_identify.cpp fucParse: Get Message Formate [g] Info err!!\n",
                            "cvt_identify.cpp GetFormatInfo: format id [g] mot find!!",
                            "cvt_identify.cpp fucGenerate: Get Message Formate [g] Info err!!\n",
                            "cvt_identify.cpp fucParse: [psFormatId] is NULL",
                            "cvt_identify.cpp GetFormatInfo: [psFormatId] is NULL",
                            "cvt_identify.cpp fucGenerate: Get Message Formate [(null)] Info err!!\n"}));
}

TEST_F(Runner, ReportsAStepWithoutAFunction) {
  started({{"f", {{"note"}}, {}}});
  gptFormatInfo->ptParseFunc->fIdFunction = nullptr;
  EXPECT_EQ(fucParse(cs("f"), &first, nullptr), -1);
  EXPECT_EQ(trail(), (Texts{"cvt_identify.cpp DoFuc: [p->fIdFunction] is NULL",
                            "cvt_identify.cpp fucParse: Formate[f] Parse Err!!\n"}));
}

TEST_F(Runner, LeavesWhatTheStepsBeforeTheFailingOneHaveChanged) {
  started({{"f", {{"rename"}, {"fail"}, {"note"}}, {}}});
  EXPECT_EQ(fucParse(cs("f"), &first, nullptr), -1);
  EXPECT_STREQ(first.sMsgName, "Renamed");
  EXPECT_EQ(first.nNowLen, 3);
  EXPECT_EQ(g_nCalls, 0);
}

TEST_F(Runner, RunsAStepAsOftenAsItStandsThere) {
  started({{"f", {{"note"}, {"note"}, {"note"}}, {}}});
  EXPECT_EQ(fucParse(cs("f"), nullptr, nullptr), 0);
  EXPECT_EQ(g_nCalls, 3);
}

TEST_F(Runner, DoesNotRunTheOtherChain) {
  started({{"f", {}, {{"note"}}}, {"g", {{"note"}}, {}}});
  EXPECT_EQ(fucParse(cs("f"), &first, nullptr), 0);
  EXPECT_EQ(fucGenerate(cs("g"), &first, &second), 0);
  EXPECT_EQ(g_nCalls, 0);
}

// --- Names of steps -----------------------------------------------------------------------------------

TEST_F(StepNames, OfAllNineBuiltInStepsAreKnownAndCannotBeTaken) {
  for (const char *psName : kBuiltIn) {
    test::clearLog();
    const IdFunc *const ptBefore = sttNewIdFunc(cs(psName), nullptr, nullptr);
    ASSERT_NE(ptBefore, nullptr) << psName;
    cvtIdAddFunction(cs(psName), note);
    const IdFunc *const ptAfter = sttNewIdFunc(cs(psName), nullptr, nullptr);
    EXPECT_EQ(ptAfter->fIdFunction, ptBefore->fIdFunction) << psName;
    EXPECT_NE(ptAfter->fIdFunction, &note) << psName;
    EXPECT_TRUE(test::logLines().empty()) << psName;
  }
}

TEST_F(StepNames, ThatIsUnknownIsReportedByTheLookUpAndThenByTheRecord) {
  EXPECT_EQ(sttNewIdFunc(cs("nobody"), nullptr, nullptr), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(trail(),
            (Texts{"cvt_identify.cpp GetIdFunc: IdFunc[nobody] Not Find!!",
                   "cvt_identify.cpp sttMakeIdFunc: p->fIdFunction = GetIdFunc(psFunctName) is Err!!"}));
}

TEST_F(StepNames, IsResolvedAlsoAfterAnEarlierFailure) {
  nGRet = -1;
  const IdFunc *const pt = sttNewIdFunc(cs("note"), &first, nullptr);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(pt->fIdFunction, &note);
  EXPECT_EQ(pt->ptArg, &first);
  EXPECT_EQ(pt->ptNext, nullptr);
}

TEST_F(StepNames, IsInternedBeforeItIsResolved) {
  char sName[] = "note";
  const IdFunc *const pt = sttNewIdFunc(sName, nullptr, nullptr);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(pt->psFunctName, cvtStrDup(cs("note")));
}

TEST_F(StepNames, OfAPlugInAreForgottenWhenItIsNotLoadedAgain) {
  started({{"f", {{"toyName"}}, {}}});
  config.root.sPlug = "";
  config.root.sMessage = config.root.sConvert = "";
  config.writeRoot();
  EXPECT_EQ(config.start(), -1);
  EXPECT_EQ(test::logTexts().front(), "IdFunc[toyName] Not Find!!");
}

TEST_F(StepNames, RegisteredByAHostBetweenTwoStartsAreForgottenByTheSecond) {
  started({{"f", {{"note"}}, {}}});
  EXPECT_EQ(config.start(), -1);
  EXPECT_EQ(test::logTexts().front(), "IdFunc[note] Not Find!!");
}

TEST_F(StepNames, RegisteredByAHostAreForgottenByAReload) {
  config.root.sAttributes = "nReload=\"1\"";
  config.writeRoot();
  started({{"f", {{"note"}}, {}}});
  config.touchRoot();
  EXPECT_EQ(cvtInitReload(), -1);
  EXPECT_EQ(test::logTexts().front(), "IdFunc[note] Not Find!!");
}

// --- The "Id" section ---------------------------------------------------------------------------------

TEST_F(IdSection, ThatFailsIsReportedByItsInitialiser) {
  EXPECT_EQ(start({{"f", {{"nobody"}}, {}}}), -1);
  const std::string sFile = config.path("id/pipelines.xml");
  const std::string sRoot = config.path("All/root.xml");
  EXPECT_EQ(
      trail(),
      (Texts{"cvt_identify.cpp GetIdFunc: IdFunc[nobody] Not Find!!",
             "cvt_identify.cpp sttMakeIdFunc: p->fIdFunction = GetIdFunc(psFunctName) is Err!!",
             "stt.cpp place: File[" + sFile + "] Line[1] Element[IdFunc]",
             "cvt_identify.cpp sttParseXmlFormatInfo: IdFunc * ptParseFunc = sttParseXmlStruct(ptXmlNode, "
             "\"IdFunc\", \"ptParseFunc\", sttParseXmlIdFunc) is Err!!",
             "stt.cpp sttParseXmlFile: parse xml[Id)" + sFile + "] faile",
             "cvt_identify.cpp IdInit: Parse Xml File To Identify Struct Err!!",
             "cvt_init.cpp cvtIniParseFileXml: Parse File[" + sFile + "] Err!!",
             "cvt_init.cpp locParseDirXmlLimit: Init[pipelines.xml] err !!",
             "cvt_identify.cpp cvtIdInit: Parse Id File Err In[id]!!\n",
             "cvt_init.cpp sttParseXmlAllInfo: void * ptId = sttParseXmlStruct(ptXmlNode, \"Id\", \"ptId\", "
             "cvtIdInit) is Err!!",
             "stt.cpp sttParseXmlFile: parse xml[AllInfo)" + sRoot + "] faile",
             "cvt_init.cpp InitRoot: Parse Xml File To Xml Struct Err!!",
             "cvt_init.cpp cvtIniParseFileXml: Parse File[" + sRoot + "] Err!!",
             "cvt_init.cpp locParseDirXmlLimit: Init[root.xml] err !!",
             "cvt_init.cpp initialise: XmlFileInit [All] Init Err!!",
             "cvt_init.cpp cvtInit: Init Path[" + config.path() + "] err!!\n"}));
  EXPECT_EQ(test::modules(), Texts{"$cvt2"});
}

TEST_F(IdSection, ThatFailsOnPipelinesReadsNoIdentificationFiles) {
  EXPECT_EQ(start({{"f", {{"nobody"}}, {}}}), -1);
  EXPECT_TRUE(test::logged(5, "Enter [id] ... "));
  EXPECT_FALSE(test::logged(5, "Enter [idinfo] ... "));
}

TEST_F(IdSection, ThatFailsOnIdentificationKeepsThePipelines) {
  config.file("idinfo/choice.xml", "<broken");
  EXPECT_EQ(start({{"f", {{"note"}}, {}}}), -1);
  EXPECT_EQ(test::trail().size(), test::logTexts().size());
  EXPECT_TRUE(test::loggedInOrder(
      {"Parse Xml File To Identify Info Struct Err!!", "Parse Id File Err In[idinfo]!!\n"}));
  EXPECT_EQ(fucParse(cs("f"), &first, nullptr), 0);
  EXPECT_EQ(g_nCalls, 1);
}

TEST_F(IdSection, IsReadAsItselfWhateverTypeItsCallerNames) {
  started({{"f", {{"note"}}, {}}});
  config.file("section.xml", "<Any psIdPath='id'/>");
  void *const ptDoc = xmlFileParse(config.arg("section.xml"));
  for (const char *psType : {"Any", "AllInfo", ""}) {
    cvtIdAddFunction(cs("note"), note);
    const auto *const pt = static_cast<CvtIdArgs *>(cvtIdInit(xmlGetHeadNode(ptDoc), cs(psType)));
    ASSERT_NE(pt, nullptr) << psType;
    EXPECT_STREQ(pt->psIdPath, "id");
    EXPECT_EQ(pt->psIdInfoPath, nullptr);
  }
  EXPECT_NE(cvtIdInit(xmlGetHeadNode(ptDoc), nullptr), nullptr);
  xmlDocFree(ptDoc);
}

// What stood in gptFormatInfo while a step's argument was read.
FormatInfo *g_duringRead = nullptr;
void *watch(void *, char *psType) {
  if (std::strcmp(psType, "Watch") == 0) g_duringRead = gptFormatInfo;
  return nullptr;
}

TEST_F(IdSection, DropsThePipelinesOfAnEarlierFileBeforeItReadsTheNext) {
  started({{"f", {{"note"}}, {}}});
  g_duringRead = gptFormatInfo;
  ASSERT_NE(g_duringRead, nullptr);
  sttAddFuncVoid(watch, [](void *, void *, char *, char *) -> void * { return nullptr; });
  config.file("id/pipelines.xml", pipelines({{"g", {{"note", "<Watch __ID='ptArg'/>"}}, {}}}));
  config.file("section.xml", "<Id psIdPath='id'/>");
  void *const ptDoc = xmlFileParse(config.arg("section.xml"));
  EXPECT_NE(cvtIdInit(xmlGetHeadNode(ptDoc), cs("Id")), nullptr);
  xmlDocFree(ptDoc);
  EXPECT_EQ(g_duringRead, nullptr);
  EXPECT_EQ(fucParse(cs("g"), &first, nullptr), 0);
  EXPECT_EQ(fucParse(cs("f"), &first, nullptr), -1);
}

TEST_F(IdSection, DoesNotKnowTheRecordsOfTheRootFile) {
  started(
      {{"f", {{"note", "<AllInfo __ID='ptArg'/>"}, {"note", "<Plug __ID='ptArg' psName='nobody'/>"}}, {}}});
  EXPECT_EQ(gptFormatInfo->ptParseFunc->ptArg, nullptr);
  EXPECT_EQ(gptFormatInfo->ptParseFunc->ptNext->ptArg, nullptr);
  EXPECT_EQ(start({{"f", {{"pubNew", "<AllInfo __ID='ptArg'/>"}}, {}}}), 0);
  EXPECT_EQ(test::trail(), Texts{"stt.cpp sttParseVoid: Type[AllInfo] Not Define"});
}

// --- Standard steps -----------------------------------------------------------------------------------

TEST_F(Standard, AMessageThatCannotBeBoundIsReportedByTheStepThatBinds) {
  started({{"f", {{"pubParse"}}, {}}});
  std::strcpy(first.sMsgName, "Nobody");
  EXPECT_EQ(fucParse(cs("f"), &first, nullptr), -1);
  EXPECT_EQ(trail(), (Texts{"cvt_identify.cpp pubNew: Msg [Nobody] get define info err!!",
                            "cvt_identify.cpp DoFuc: Do Func[pubParse] err!!",
                            "cvt_identify.cpp fucParse: Formate[f] Parse Err!!\n"}));
}

TEST_F(Standard, AFallBackStepThatFailsOrIsMissingIsReportedByTheStepThatBinds) {
  started({{"f", {}, {}}});
  IdFunc fallBack{cs("fail"), fail, nullptr, nullptr};
  EXPECT_EQ(pubNew(&first, nullptr, &fallBack), -1);
  fallBack.fIdFunction = nullptr;
  EXPECT_EQ(pubNew(&first, nullptr, &fallBack), -1);
  fallBack.fIdFunction = note;  // sets no definition
  EXPECT_EQ(pubNew(&first, nullptr, &fallBack), -1);
  EXPECT_EQ(trail(), (Texts{"cvt_identify.cpp pubNew: Msg [] get define info err!!",
                            "cvt_identify.cpp pubNew: [ptIdFunc->fIdFunction] is NULL",
                            "cvt_identify.cpp pubNew: [ptInMsg->ptMsgInfo] is NULL"}));
}

TEST_F(Standard, AFormatThatRefusesTheBytesLeavesDefinitionAndListBound) {
  started({{"f", {{"pubParse"}}, {}}});
  char sIn[] = "7,Ann";
  std::strcpy(first.sMsgName, "Order");
  first.psBuf = sIn;
  first.nLen = 5;
  first.tValueListInfo.ptMemNode = cvtMemNewNode();
  EXPECT_EQ(fucParse(cs("f"), &first, nullptr), -1);
  EXPECT_EQ(first.ptMsgInfo, cvtGetMsg(cs("Order")));
  EXPECT_NE(first.tValueListInfo.ptValueList, nullptr);
  EXPECT_EQ(trail(),
            (Texts{"toy.cpp fail: Msg[Order] Field[City] Offset[5]: expected ',', found the end of the "
                   "buffer.",
                   "cvt_identify.cpp pubParse: Msg[Order] Parse Buffer err!!",
                   "cvt_identify.cpp DoFuc: Do Func[pubParse] err!!",
                   "cvt_identify.cpp fucParse: Formate[f] Parse Err!!\n"}));
  EXPECT_EQ(test::modules(), (Texts{"$toy", "$cvt2"}));
}

TEST_F(Standard, AFormatGoesOnWhereTheStepBeforeItHasMovedThePosition) {
  started({{"f",
            {{"SetToOffset", "<SetOffsetArgs __ID='ptArg' caMsgType='s' nOffset='4'/>"}, {"pubParse"}},
            {}}});
  char sIn[] = "HEAD7,Ann,Rome,[],hi";
  InnerMessage *const pt = cvtInitMessasge(cs("Order"), cs("f"), sIn, 20, &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(std::string(cvtGetNameValue(pt, cs("Id"), &nError)->psValue, 1), "7");
  EXPECT_EQ(pt->nNowLen, 20);
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

// --- Buffer steps -------------------------------------------------------------------------------------

std::string record(const std::string &sType, const std::string &sAttributes) {
  return "<" + sType + " __ID='ptArg' " + sAttributes + "/>";
}

TEST_F(Buffer, AbsentTextsBecomeTheSameEmptyTextInEveryRecord) {
  started({{"f",
            {{"GetIpcName", record("IpcNameArgs", "")},
             {"GetXmlNode", record("XmlNameArgs", "psNodeName='N'")},
             {"SetBufToBuf", record("MoveBufferArgs", "")},
             {"SetMsgNameToBuf", record("IpcNameArgs", "")}},
            {}}});
  char sBuffer[] = "<N>x</N>";
  first.psBuf = second.psBuf = sBuffer;
  EXPECT_EQ(fucParse(cs("f"), &first, &second), 0);
  const IdFunc *const pt = gptFormatInfo->ptParseFunc;
  const auto *const ptIpc = static_cast<IpcNameArgs *>(pt->ptArg);
  const auto *const ptXml = static_cast<XmlNameArgs *>(pt->ptNext->ptArg);
  const auto *const ptMove = static_cast<MoveBufferArgs *>(pt->ptNext->ptNext->ptArg);
  const auto *const ptName = static_cast<IpcNameArgs *>(pt->ptNext->ptNext->ptNext->ptArg);
  for (const char *ps : {ptIpc->psFront, ptIpc->psBack, ptXml->psFront, ptXml->psBack, ptMove->psFront,
                         ptMove->psBack, ptName->psFront, ptName->psBack}) {
    ASSERT_NE(ps, nullptr);
    EXPECT_STREQ(ps, "");
  }
  EXPECT_EQ(ptIpc->psFront, ptIpc->psBack);
  EXPECT_STREQ(sBuffer, "<N>x</N>");
}

TEST_F(Buffer, AnyFlagButZeroLeavesThePosition) {
  char sBuffer[10] = {};
  first.psBuf = cs("0123456789");
  second.psBuf = sBuffer;
  second.nLen = 10;
  for (const char *psFlag : {"1", "2", "-1"}) {
    cvtIdAddFunction(cs("note"), note);
    started({{"f",
              {},
              {{"SetBufToBuf",
                record("MoveBufferArgs", "nSrcLen='4' nDstAddFlag='" + std::string(psFlag) + "'")}}}});
    EXPECT_EQ(fucGenerate(cs("f"), &first, &second), 0);
    EXPECT_EQ(second.nNowLen, 0) << psFlag;
    EXPECT_EQ(test::logTexts(5), Texts{"Add To Dst Message[0123]"}) << psFlag;
  }
}

TEST_F(Buffer, OffsetStepChecksItsArgumentsBeforeItsMessages) {
  started({{"f", {{"SetToOffset"}}, {}}});
  EXPECT_EQ(fucParse(cs("f"), nullptr, nullptr), -1);
  EXPECT_EQ(trail(), (Texts{"cvt_identify.cpp SetToOffset: [ptArgs] is NULL",
                            "cvt_identify.cpp DoFuc: Do Func[SetToOffset] err!!",
                            "cvt_identify.cpp fucParse: Formate[f] Parse Err!!\n"}));
}

TEST_F(Buffer, StepsSpeakUnderTheirOwnNames) {
  started({{"f",
            {{"GetIpcName", record("IpcNameArgs", "nLen='5'")},
             {"GetXmlNode", record("XmlNameArgs", "psNodeName='N'")},
             {"SetBufToBuf", record("MoveBufferArgs", "nSrcLen='1'")}},
            {}}});
  char sBuffer[] = "Order<N>Name</N>";
  char sOut[4] = {};
  first.psBuf = sBuffer;
  second.psBuf = sOut;
  second.nLen = 4;
  EXPECT_EQ(fucParse(cs("f"), &first, &second), 0);
  EXPECT_EQ(trail(5), (Texts{"cvt_identify.cpp GetIpcName: Message Name[Order]",
                             "cvt_identify.cpp GetXmlNode: Message Name[Name]",
                             "cvt_identify.cpp SetBufToBuf: Add To Dst Message[O]"}));
}

TEST_F(Buffer, AMessageIsNamedByItsXmlAndParsedBehindIt) {
  started({{"f",
            {{"GetXmlNode", record("XmlNameArgs", "psNodeName='Type' psFront='Or'")},
             {"SetToOffset", record("SetOffsetArgs", "caMsgType='s' nOffset='16'")},
             {"pubParse"}},
            {}}});
  char sIn[] = "<Type>der</Type>7,Ann,Rome,[],hi";
  const int nLen = static_cast<int>(std::strlen(sIn));
  InnerMessage *const pt = cvtParseMessasge(cs("f"), sIn, nLen, &nError);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(nError, 0);
  EXPECT_STREQ(pt->sMsgName, "Order");
  EXPECT_EQ(std::string(cvtGetNameValue(pt, cs("City"), &nError)->psValue, 4), "Rome");
  EXPECT_EQ(cvtFreeMessage(pt), 0);
}

TEST_F(Buffer, AMessageIsWrappedIntoItsNameAndAPieceOfItsSource) {
  started({{"01",
            {{"pubParse"}},
            {{"SetBufToBuf", record("MoveBufferArgs", "nSrcLen='2'")},
             {"SetMsgNameToBuf", record("IpcNameArgs", "nLen='60' psFront='{' psBack='}'")},
             {"pubConvert"},
             {"pubGenerate"}}}});
  char sIn[] = "7,Ann,Rome,[A,1,[];],hi";
  InnerMessage *const ptIn =
      cvtInitMessasge(cs("Order"), cs("01"), sIn, static_cast<int>(std::strlen(sIn)), &nError);
  ASSERT_NE(ptIn, nullptr);
  char sOut[64] = {};
  int nOut = sizeof sOut;
  InnerMessage *const ptOut = cvtGenerateMessasge(ptIn, cs("01"), sOut, &nOut, &nError);
  ASSERT_NE(ptOut, nullptr);
  EXPECT_EQ(std::string(sOut, static_cast<size_t>(nOut)), "7,{Order}7,Ann,[A;]");
  EXPECT_EQ(cvtFreeMessage(ptOut), 0);
  EXPECT_EQ(cvtFreeMessage(ptIn), 0);
}

}  // namespace

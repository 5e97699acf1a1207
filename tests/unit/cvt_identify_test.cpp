// Format pipelines: their files, the names of steps, and the running of chains. The steps themselves:
// cvt_identify_steps_test.cpp.
#include <cstddef>
#include <stdexcept>

#include "convert_fixture.h"

namespace {

using namespace test::xml;
using test::cs;

constexpr char kStepFails[] = "p->fIdFunction = GetIdFunc(psFunctName) is Err!!";
constexpr char kChainFails[] =
    "IdFunc * ptParseFunc = sttParseXmlStruct(ptXmlNode, \"IdFunc\", \"ptParseFunc\", sttParseXmlIdFunc) is "
    "Err!!";

// What steps were called with.
struct Call {
  char cStep;
  InnerMessage *ptFirst;
  InnerMessage *ptSecond;
  void *pArg;
};
std::vector<Call> g_calls;
int g_nTwo = 0;  // the result of step two

int one(InnerMessage *a, InnerMessage *b, void *pArg) {
  g_calls.push_back({'1', a, b, pArg});
  return 0;
}
int two(InnerMessage *a, InnerMessage *b, void *pArg) {
  g_calls.push_back({'2', a, b, pArg});
  return g_nTwo;
}
int three(InnerMessage *a, InnerMessage *b, void *pArg) {
  g_calls.push_back({'3', a, b, pArg});
  return 0;
}
int throwing(InnerMessage *, InnerMessage *, void *) {
  throw std::runtime_error("out of order");
}

std::string called() {
  std::string s;
  for (const Call &call : g_calls) s += call.cStep;
  return s;
}

class Pipelines : public test::ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    cvtIdAddFunction(cs("one"), one);
    cvtIdAddFunction(cs("two"), two);
    cvtIdAddFunction(cs("three"), three);
    define("In", {field("A")});
    sMoreSections = "<Id __ID='ptId' psIdPath='Id'/>";
  }

  int load(const std::vector<Pipeline> &list) { return loadText(pipelines(list)); }
  int loadText(const std::string &sText) {
    tree.file("Id/id.xml", sText).file("Cvt/readme.txt", "no converters");
    return start();
  }

  std::string idFile() const { return tree.path("Id/id.xml"); }
  std::string place(const std::string &sElement) const {
    return "File[" + idFile() + "] Line[1] Element[" + sElement + "]";
  }
  // The whole trail of a start that fails on the file Id/id.xml; bPlaced: a record of it failed.
  Texts idTrail(Texts inner, bool bPlaced) const {
    if (bPlaced) inner.push_back("parse xml[Id)" + idFile() + "] faile");
    inner.push_back("Parse Xml File To Identify Struct Err!!");
    inner.push_back("Parse File[" + idFile() + "] Err!!");
    inner.push_back("Init[id.xml] err !!");
    inner.push_back("Parse Id File Err In[Id]!!\n");
    inner.push_back("void * ptId = sttParseXmlStruct(ptXmlNode, \"Id\", \"ptId\", cvtIdInit) is Err!!");
    return rootTrail(std::move(inner), bPlaced);
  }

  InnerMessage a{};
  InnerMessage b{};
};

using PipelineFile = Pipelines;
using StepName = Pipelines;
using StepArguments = Pipelines;
using Chain = Pipelines;

// --- Files -----------------------------------------------------------------------------------------------

TEST_F(PipelineFile, IsAListOfFormats) {
  ASSERT_EQ(load({{"f", {{"one"}, {"two"}}, {{"three"}}}, {"g", {}, {}}}), 0);
  ASSERT_NE(gptFormatInfo, nullptr);
  EXPECT_STREQ(gptFormatInfo->psFormatId, "f");
  EXPECT_STREQ(gptFormatInfo->ptParseFunc->psFunctName, "one");
  EXPECT_EQ(gptFormatInfo->ptParseFunc->fIdFunction, &one);
  EXPECT_EQ(gptFormatInfo->ptParseFunc->ptNext->fIdFunction, &two);
  EXPECT_EQ(gptFormatInfo->ptParseFunc->ptNext->ptNext, nullptr);
  EXPECT_EQ(gptFormatInfo->ptGenFunc->fIdFunction, &three);
  EXPECT_STREQ(gptFormatInfo->ptNext->psFormatId, "g");
  EXPECT_EQ(gptFormatInfo->ptNext->ptParseFunc, nullptr);
  EXPECT_EQ(gptFormatInfo->ptNext->ptNext, nullptr);
  EXPECT_EQ(gptFormatInfo->psFormatId, cvtStrDup(cs("f")));  // strings are interned
}

TEST_F(PipelineFile, SectionRecordHoldsItsDirectories) {
  sMoreSections = "<Id __ID='ptId' psIdPath='Id' psIdInfoPath='Info'/>";
  ASSERT_EQ(load({{"f", {}, {}}}), 0);
  const auto *const ptArgs = static_cast<CvtIdArgs *>(gptAllInfo->ptId);
  EXPECT_STREQ(ptArgs->psIdPath, "Id");
  EXPECT_STREQ(ptArgs->psIdInfoPath, "Info");
  EXPECT_EQ(nGRet, 0);
}

TEST_F(PipelineFile, SectionWithoutDirectoriesSucceeds) {
  sMoreSections = "<Id __ID='ptId'/>";
  ASSERT_EQ(load({{"f", {}, {}}}), 0);
  EXPECT_NE(gptAllInfo->ptId, nullptr);
  EXPECT_EQ(gptFormatInfo, nullptr);
}

TEST_F(PipelineFile, MissingDirectoryIsNoError) {
  sMoreSections = "<Id __ID='ptId' psIdPath='Nowhere'/>";
  ASSERT_EQ(load({}), 0);
  EXPECT_EQ(test::logTexts(1),
            Texts{"Open Dir [" + tree.path("Nowhere") + "] err:[No such file or directory]!!"});
}

TEST_F(PipelineFile, WithoutElementTheInitialiserReturnsNullWithoutAnError) {
  nGRet = -1;
  EXPECT_EQ(cvtIdInit(nullptr, cs("Id")), nullptr);
  EXPECT_EQ(nGRet, 0);
}

TEST_F(PipelineFile, OfTwoFilesOnlyTheOneReadLastCounts) {
  tree.file("Id/other.xml", pipelines({{"other", {{"one"}}, {}}}));
  ASSERT_EQ(load({{"id", {{"one"}}, {}}}), 0);
  std::string sLast;
  for (const std::string &sText : test::logTexts(5)) {
    if (sText == "Load File [id.xml] ok" || sText == "Load File [other.xml] ok") sLast = sText;
  }
  const bool bOther = sLast == "Load File [other.xml] ok";
  EXPECT_EQ(fucParse(cs("other"), &a, nullptr), bOther ? 0 : -1);
  EXPECT_EQ(fucParse(cs("id"), &a, nullptr), bOther ? -1 : 0);
}

TEST_F(PipelineFile, WithAnotherRootElementFailsTheStart) {
  EXPECT_EQ(loadText("<Ids><FormatInfo/></Ids>"), -1);
  EXPECT_EQ(test::logTexts(1), idTrail({"[Id] is different then xml root name[Ids]"}, false));
  EXPECT_EQ(nGRet, -1);
}

TEST_F(PipelineFile, WithoutContentFailsTheStart) {
  EXPECT_EQ(loadText("<Id/>"), -1);
  EXPECT_EQ(test::logTexts(1), idTrail({"[ptHeadNode = xmlGetChileNode(ptXmlRoot)] is NULL"}, false));
}

TEST_F(PipelineFile, ThatFailsDropsThePipelinesReadBefore) {
  ASSERT_EQ(load({{"f", {}, {}}}), 0);
  tree.file("Bad/bad.xml", "<Ids><FormatInfo/></Ids>").file("section.xml", "<Id psIdPath='Bad'/>");
  void *const ptDoc = xmlFileParse(tree.arg("section.xml"));
  EXPECT_EQ(cvtIdInit(xmlGetHeadNode(ptDoc), cs("Id")), nullptr);
  xmlDocFree(ptDoc);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(gptFormatInfo, nullptr);
  EXPECT_EQ(fucParse(cs("f"), &a, nullptr), -1);
}

// --- Names of steps --------------------------------------------------------------------------------------

TEST_F(StepName, ThatIsUnknownFailsTheFileWithAWholeTrail) {
  EXPECT_EQ(load({{"f", {{"one"}, {"nobody"}}, {}}}), -1);
  EXPECT_EQ(test::logTexts(1),
            idTrail({"IdFunc[nobody] Not Find!!", kStepFails, place("IdFunc"),
                     "struct IdFunc * ptNext = sttParseXmlNext(ptXmlNode, \"IdFunc\", \"ptNext\", "
                     "sttParseXmlIdFunc) is Err!!",
                     kChainFails},
                    true));
}

TEST_F(StepName, IsExact) {
  EXPECT_EQ(load({{"f", {{"One"}}, {}}}), -1);
  EXPECT_EQ(test::logTexts(1).at(0), "IdFunc[One] Not Find!!");
}

TEST_F(StepName, ThatIsMissingFailsWithoutATextOfItsOwn) {
  EXPECT_EQ(loadText("<Id><FormatInfo psFormatId='f'><IdFunc __ID='ptParseFunc'/></FormatInfo></Id>"), -1);
  EXPECT_EQ(test::logTexts(1), idTrail({kStepFails, place("IdFunc"), kChainFails}, true));
}

TEST_F(StepName, InTheGenerateChainIsResolvedToo) {
  EXPECT_EQ(load({{"f", {}, {{"nobody"}}}}), -1);
  EXPECT_EQ(test::logTexts(1),
            idTrail({"IdFunc[nobody] Not Find!!", kStepFails, place("IdFunc"),
                     "IdFunc * ptGenFunc = sttParseXmlStruct(ptXmlNode, \"IdFunc\", \"ptGenFunc\", "
                     "sttParseXmlIdFunc) is Err!!"},
                    true));
}

TEST_F(StepName, OfABuiltInStepCannotBeTaken) {
  for (const char *psName : {"pubParse", "pubNew", "pubGenerate", "pubConvert"})
    cvtIdAddFunction(cs(psName), one);
  ASSERT_EQ(load({{"f", {{"pubParse"}, {"pubNew"}}, {{"pubConvert"}, {"pubGenerate"}}}}), 0);
  EXPECT_EQ(gptFormatInfo->ptParseFunc->fIdFunction, &pubParse);
  EXPECT_EQ(gptFormatInfo->ptParseFunc->ptNext->fIdFunction, &pubNew);
  EXPECT_EQ(gptFormatInfo->ptGenFunc->fIdFunction, &pubConvert);
  EXPECT_EQ(gptFormatInfo->ptGenFunc->ptNext->fIdFunction, &pubGenerate);
}

TEST_F(StepName, RegisteredTwiceIsTheLaterFunction) {
  EXPECT_EQ(cvtIdAddFunction(cs("one"), three), 0);
  ASSERT_EQ(load({{"f", {{"one"}}, {}}}), 0);
  EXPECT_EQ(gptFormatInfo->ptParseFunc->fIdFunction, &three);
}

TEST_F(StepName, RegisteredWithoutAFunctionEmptiesTheRegistry) {
  test::clearLog();
  EXPECT_EQ(cvtIdAddFunction(cs("none"), nullptr), 0);
  EXPECT_EQ(test::logTexts(1), Texts{"[ptInfo] is NULL"});
  EXPECT_EQ(load({{"f", {{"one"}}, {}}}), -1);
  EXPECT_EQ(test::logTexts(1).at(0), "IdFunc[one] Not Find!!");
}

TEST_F(StepName, RegisteredWithoutANameEmptiesTheRegistry) {
  test::clearLog();
  EXPECT_EQ(cvtIdAddFunction(nullptr, one), 0);
  EXPECT_EQ(test::logTexts(1), Texts{"[psString] is NULL"});
  EXPECT_EQ(sttNewIdFunc(cs("one"), nullptr, nullptr), nullptr);
  EXPECT_EQ(cvtIdAddFunction(cs("again"), one), 0);
  EXPECT_EQ(load({{"f", {{"again"}}, {}}}), 0);
}

TEST_F(StepName, OfTheNextGenerationMayLieAtTheSameAddress) {
  cvtEnd();
  for (const char *psName : {"old", "newer"}) {
    cvtIdEnd();
    cvtEndDict();
    cvtMemReset();
    cvtIdAddFunction(cs(psName), one);
    EXPECT_NE(sttNewIdFunc(cs(psName), nullptr, nullptr), nullptr) << psName;
  }
  EXPECT_EQ(sttNewIdFunc(cs("old"), nullptr, nullptr), nullptr);
}

TEST_F(StepName, IsForgottenByARestart) {
  ASSERT_EQ(load({{"f", {{"one"}}, {}}}), 0);
  std::filesystem::remove(tree.path("Msg/In.xml"));  // its format is forgotten, too
  test::clearLog();
  EXPECT_EQ(cvtInit(tree.arg()), -1);
  EXPECT_EQ(test::logTexts(1).at(0), "IdFunc[one] Not Find!!");
}

// --- Arguments of steps ----------------------------------------------------------------------------------

TEST_F(StepArguments, OfABuiltInTypeAreBound) {
  ASSERT_EQ(load({{"f",
                   {{"one", "<IpcNameArgs __ID='ptArg' nOffset='2' nLen='4' psFront='M' psBack='Z'/>"},
                    {"one", "<XmlNameArgs __ID='ptArg' psNodeName='MsgType' psFront='a' psBack='b'/>"},
                    {"one",
                     "<MoveBufferArgs __ID='ptArg' nSrcOffset='1' nSrcLen='2' nDstOffset='3' "
                     "nDstAddFlag='4' psFront='F' psBack='B'/>"},
                    {"one", "<SetOffsetArgs __ID='ptArg' caMsgType='d' nOffset='-8' nSetType='1'/>"}},
                   {}}}),
            0);
  const IdFunc *pt = gptFormatInfo->ptParseFunc;
  const auto *const ptIpc = static_cast<IpcNameArgs *>(pt->ptArg);
  EXPECT_EQ(ptIpc->nOffset, 2);
  EXPECT_EQ(ptIpc->nLen, 4);
  EXPECT_STREQ(ptIpc->psFront, "M");
  EXPECT_STREQ(ptIpc->psBack, "Z");
  pt = pt->ptNext;
  const auto *const ptXml = static_cast<XmlNameArgs *>(pt->ptArg);
  EXPECT_STREQ(ptXml->psNodeName, "MsgType");
  EXPECT_STREQ(ptXml->psFront, "a");
  EXPECT_STREQ(ptXml->psBack, "b");
  pt = pt->ptNext;
  const auto *const ptMove = static_cast<MoveBufferArgs *>(pt->ptArg);
  EXPECT_EQ(ptMove->nSrcOffset, 1);
  EXPECT_EQ(ptMove->nSrcLen, 2);
  EXPECT_EQ(ptMove->nDstOffset, 3);
  EXPECT_EQ(ptMove->nDstAddFlag, 4);
  EXPECT_STREQ(ptMove->psFront, "F");
  EXPECT_STREQ(ptMove->psBack, "B");
  pt = pt->ptNext;
  const auto *const ptSet = static_cast<SetOffsetArgs *>(pt->ptArg);
  EXPECT_EQ(ptSet->caMsgType, 'd');
  EXPECT_EQ(ptSet->nOffset, -8);
  EXPECT_EQ(ptSet->nSetType, 1);
}

TEST_F(StepArguments, MayLackAllTheirFields) {
  ASSERT_EQ(load({{"f",
                   {{"one", "<IpcNameArgs __ID='ptArg'/>"},
                    {"one", "<XmlNameArgs __ID='ptArg'/>"},
                    {"one", "<SetOffsetArgs __ID='ptArg' caMsgType=''/>"}},
                   {}}}),
            0);
  const IdFunc *const pt = gptFormatInfo->ptParseFunc;
  EXPECT_EQ(static_cast<IpcNameArgs *>(pt->ptArg)->nLen, 0);
  EXPECT_EQ(static_cast<IpcNameArgs *>(pt->ptArg)->psFront, nullptr);
  EXPECT_EQ(static_cast<XmlNameArgs *>(pt->ptNext->ptArg)->psNodeName, nullptr);
  EXPECT_EQ(static_cast<SetOffsetArgs *>(pt->ptNext->ptNext->ptArg)->caMsgType, 0);
}

int g_nOwnRecord = 42;
void *parseOwn(void *, char *psType) {
  return std::string(psType) == "OwnArgs" ? &g_nOwnRecord : nullptr;
}
void *genOwn(void *, void *, char *, char *) {
  return nullptr;
}

TEST_F(StepArguments, MayBeOfAPlugInsOwnType) {
  sttAddFuncVoid(parseOwn, genOwn);
  ASSERT_EQ(load({{"f", {{"one", "<OwnArgs __ID='ptArg'/>"}}, {}}}), 0);
  EXPECT_EQ(fucParse(cs("f"), &a, nullptr), 0);
  EXPECT_EQ(g_calls.at(0).pArg, &g_nOwnRecord);
}

TEST_F(StepArguments, OfAnUnknownTypeAreLeftOut) {
  ASSERT_EQ(load({{"f", {{"one", "<Strange __ID='ptArg'/>"}}, {}}}), 0);
  EXPECT_EQ(test::logTexts(1), Texts{"Type[Strange] Not Define"});
  EXPECT_EQ(gptFormatInfo->ptParseFunc->ptArg, nullptr);
}

TEST_F(StepArguments, MayBeAStepItself) {
  ASSERT_EQ(load({{"f", {{"pubNew", "<IdFunc __ID='ptArg' psFunctName='two'/>"}, {"one"}}, {}}}), 0);
  const auto *const ptFallBack = static_cast<IdFunc *>(gptFormatInfo->ptParseFunc->ptArg);
  EXPECT_EQ(ptFallBack->fIdFunction, &two);
  EXPECT_EQ(ptFallBack->ptNext, nullptr);
  EXPECT_EQ(gptFormatInfo->ptParseFunc->ptNext->fIdFunction, &one);
}

TEST_F(StepArguments, DispatcherKnowsExactlyItsTypes) {
  void *const ptNode = xmlMadeNode(cs("Anything"));
  for (const char *psType : {"XmlNameArgs", "IpcNameArgs", "MoveBufferArgs", "SetOffsetArgs", "FormatInfo",
                             "IdMsgInfo", "CvtIdArgs"}) {
    EXPECT_NE(sttParseVoidcvt_identify(ptNode, cs(psType)), nullptr) << psType;
  }
  test::clearLog();
  for (const char *psType : {"idfunc", "IdFunc ", "", "Arg", "Msg"}) {
    EXPECT_EQ(sttParseVoidcvt_identify(ptNode, cs(psType)), nullptr) << psType;
  }
  EXPECT_TRUE(test::logLines().empty());
  for (const char *psType : {"IdFunc", "IdCvtInfo"}) {  // known, but not without content
    test::clearLog();
    EXPECT_EQ(sttParseVoidcvt_identify(ptNode, cs(psType)), nullptr);
    EXPECT_FALSE(test::logLines().empty()) << psType;
  }
  xmlNodeFree(ptNode);
}

TEST_F(StepArguments, AreWrittenAsTheyStand) {
  void *const ptNode = xmlMadeNode(cs("SetOffsetArgs"));
  SetOffsetArgs *const ptSet = sttNewSetOffsetArgs('s', 0, 3);
  EXPECT_EQ(sttGenVoidcvt_identify(ptSet, ptNode, cs("ptArg"), cs("SetOffsetArgs")), ptNode);
  const auto *const ptBack = sttParseXmlSetOffsetArgs(ptNode, cs("SetOffsetArgs"));
  EXPECT_EQ(ptBack->caMsgType, 's');
  EXPECT_EQ(ptBack->nOffset, 0);
  EXPECT_EQ(ptBack->nSetType, 3);
  EXPECT_EQ(xmlGetNodeAttr(ptNode, cs("nOffset")), nullptr);  // zero is not written
  EXPECT_EQ(sttGenVoidcvt_identify(ptSet, ptNode, cs("ptArg"), cs("Unknown")), nullptr);
  xmlNodeFree(ptNode);

  void *const ptStep = xmlMadeNode(cs("IdFunc"));
  sttGenXmlIdFunc(sttNewIdFunc(cs("one"), nullptr, nullptr), ptStep, cs("IdFunc"));
  EXPECT_EQ(xmlGetNodeAttr(ptStep, cs("fIdFunction")), nullptr);
  EXPECT_EQ(sttParseXmlIdFunc(ptStep, cs("IdFunc"))->fIdFunction, &one);
  xmlNodeFree(ptStep);
}

TEST_F(StepArguments, RecordsLieAsTheyAreDeclared) {
  EXPECT_EQ(offsetof(IdFunc, ptArg), 16U);
  EXPECT_EQ(sizeof(IdFunc), 32U);
  EXPECT_EQ(sizeof(FormatInfo), 32U);
  EXPECT_EQ(sizeof(CvtIdArgs), 16U);
  EXPECT_EQ(offsetof(IdCvtInfo, ptConverter), 16U);
  EXPECT_EQ(sizeof(IdMsgInfo), 24U);
  EXPECT_EQ(sizeof(XmlNameArgs), 24U);
  EXPECT_EQ(offsetof(IpcNameArgs, psFront), 8U);
  EXPECT_EQ(offsetof(MoveBufferArgs, psBack), 24U);
  EXPECT_EQ(offsetof(SetOffsetArgs, nOffset), 4U);
  EXPECT_EQ(sizeof(SetOffsetArgs), 12U);
}

// --- Running ---------------------------------------------------------------------------------------------

TEST_F(Chain, ParseStepsRunInOrderOnBothMessages) {
  ASSERT_EQ(load({{"f", {{"one"}, {"two", "<SetOffsetArgs __ID='ptArg'/>"}}, {{"three"}}}}), 0);
  test::clearLog();
  EXPECT_EQ(fucParse(cs("f"), &a, &b), 0);
  EXPECT_EQ(called(), "12");
  EXPECT_EQ(g_calls[0].ptFirst, &a);
  EXPECT_EQ(g_calls[0].ptSecond, &b);
  EXPECT_EQ(g_calls[0].pArg, nullptr);
  EXPECT_EQ(g_calls[1].pArg, gptFormatInfo->ptParseFunc->ptNext->ptArg);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(Chain, GenerateStepsRunOnSourceAndDestination) {
  ASSERT_EQ(load({{"f", {{"one"}}, {{"three"}, {"two"}}}}), 0);
  EXPECT_EQ(fucGenerate(cs("f"), nullptr, &b), 0);
  EXPECT_EQ(called(), "32");
  EXPECT_EQ(g_calls[0].ptFirst, nullptr);
  EXPECT_EQ(g_calls[0].ptSecond, &b);
}

TEST_F(Chain, EndsAtTheFirstFailingStep) {
  g_nTwo = 5;
  ASSERT_EQ(load({{"f", {{"one"}, {"two"}, {"three"}}, {}}}), 0);
  test::clearLog();
  EXPECT_EQ(fucParse(cs("f"), &a, nullptr), -1);  // the step's own code is not passed on
  EXPECT_EQ(called(), "12");
  EXPECT_EQ(test::logTexts(1), (Texts{"Do Func[two] err!!", "Formate[f] Parse Err!!\n"}));
}

TEST_F(Chain, FailingGenerationIsReportedAsAParseFailure) {
  g_nTwo = -1;
  ASSERT_EQ(load({{"f", {}, {{"two"}, {"three"}}}}), 0);
  test::clearLog();
  EXPECT_EQ(fucGenerate(cs("f"), &a, &b), -1);
  EXPECT_EQ(called(), "2");
  EXPECT_EQ(test::logTexts(1), (Texts{"Do Func[two] err!!", "Formate[f] Parse Err!!\n"}));
}

TEST_F(Chain, ThatIsAbsentSucceeds) {
  ASSERT_EQ(load({{"f", {}, {}}}), 0);
  test::clearLog();
  EXPECT_EQ(fucParse(cs("f"), &a, nullptr), 0);
  EXPECT_EQ(fucGenerate(cs("f"), nullptr, nullptr), 0);
  EXPECT_TRUE(test::logLines().empty());
}

class UnknownFormat : public Pipelines, public testing::WithParamInterface<const char *> {};

TEST_P(UnknownFormat, IsReportedByBothRunners) {
  ASSERT_EQ(load({{"fmt", {{"one"}}, {{"one"}}}}), 0);
  const std::string sId = GetParam();
  const Texts texts = {"format id [" + sId + "] mot find!!",
                       "Get Message Formate [" + sId + "] Info err!!\n"};
  test::clearLog();
  EXPECT_EQ(fucParse(cs(GetParam()), &a, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), texts);
  test::clearLog();
  EXPECT_EQ(fucGenerate(cs(GetParam()), &a, &b), -1);
  EXPECT_EQ(test::logTexts(1), texts);
  EXPECT_EQ(called(), "");
}

INSTANTIATE_TEST_SUITE_P(Ids, UnknownFormat, testing::Values("other", "FMT", "fm", "fmt ", ""));

TEST_F(Chain, MissingFormatIdIsReported) {
  ASSERT_EQ(load({{"f", {}, {}}}), 0);
  test::clearLog();
  EXPECT_EQ(fucParse(nullptr, &a, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"[psFormatId] is NULL"});
  test::clearLog();
  EXPECT_EQ(fucGenerate(nullptr, &a, &b), -1);
  EXPECT_EQ(test::logTexts(1), (Texts{"[psFormatId] is NULL", "Get Message Formate [(null)] Info err!!\n"}));
}

TEST_F(Chain, OfTwoPipelinesOfOneFormatTheFirstRuns) {
  ASSERT_EQ(load({{"f", {{"one"}}, {}}, {"g", {}, {}}, {"f", {{"two"}}, {}}}), 0);
  EXPECT_EQ(fucParse(cs("f"), &a, nullptr), 0);
  EXPECT_EQ(called(), "1");
}

TEST_F(Chain, PipelineWithoutFormatIdIsNeverFound) {
  ASSERT_EQ(loadText("<Id><FormatInfo/><FormatInfo __ID='ptNext' psFormatId='f'>" +
                     steps("ptParseFunc", {{"one"}}) + "</FormatInfo></Id>"),
            0);
  EXPECT_EQ(fucParse(cs("f"), &a, nullptr), 0);
  EXPECT_EQ(fucParse(cs(""), &a, nullptr), -1);
}

TEST_F(Chain, StepWithoutAFunctionEndsIt) {
  ASSERT_EQ(load({{"f", {{"one"}, {"two"}, {"three"}}, {}}}), 0);
  gptFormatInfo->ptParseFunc->ptNext->fIdFunction = nullptr;
  test::clearLog();
  EXPECT_EQ(fucParse(cs("f"), &a, nullptr), -1);
  EXPECT_EQ(called(), "1");
  EXPECT_EQ(test::logTexts(1), (Texts{"[p->fIdFunction] is NULL", "Formate[f] Parse Err!!\n"}));
}

TEST_F(Chain, ExceptionOfAStepEndsAtTheLibrary) {
  cvtIdAddFunction(cs("throwing"), throwing);
  ASSERT_EQ(load({{"f", {{"throwing"}, {"one"}}, {}}}), 0);
  test::clearLog();
  EXPECT_EQ(fucParse(cs("f"), &a, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), (Texts{"Step[throwing] let an exception out: out of order",
                                      "Do Func[throwing] err!!", "Formate[f] Parse Err!!\n"}));
  EXPECT_EQ(called(), "");
}

TEST_F(Chain, OfPipelinesThatWereHungThereByHandRuns) {
  FormatInfo *const ptHand =
      sttNewFormatInfo(cs("hand"), sttNewIdFunc(cs("one"), nullptr, nullptr), nullptr, nullptr);
  gptFormatInfo = sttNewFormatInfo(nullptr, nullptr, nullptr, ptHand);  // one without a name is passed over
  EXPECT_EQ(fucParse(cs("hand"), &a, nullptr), 0);
  EXPECT_EQ(called(), "1");
  EXPECT_EQ(fucParse(cs("other"), &a, nullptr), -1);
}

TEST_F(Chain, OfPipelinesThatWereHungBehindTheLoadedOnesRuns) {
  ASSERT_EQ(load({{"f", {{"one"}}, {}}, {"g", {}, {}}}), 0);
  const auto pipeline = [](const char *psFormat, const char *psStep) {
    return sttNewFormatInfo(cs(psFormat), sttNewIdFunc(cs(psStep), nullptr, nullptr), nullptr, nullptr);
  };
  FormatInfo *const ptFirst = pipeline("first", "two");
  gptFormatInfo->ptNext->ptNext = ptFirst;
  EXPECT_EQ(fucParse(cs("first"), &a, nullptr), 0);
  EXPECT_EQ(fucParse(cs("f"), &a, nullptr), 0);
  EXPECT_EQ(fucParse(cs("later"), &a, nullptr), -1);
  ptFirst->ptNext = pipeline("f", "two");  // known: the first of a format runs
  ptFirst->ptNext->ptNext = pipeline("later", "three");
  ptFirst->ptNext->ptNext->psFormatId = nullptr;
  ptFirst->ptNext->ptNext->ptNext = pipeline("later", "three");
  EXPECT_EQ(fucParse(cs("later"), &a, nullptr), 0);
  EXPECT_EQ(fucParse(cs("f"), &a, nullptr), 0);
  EXPECT_EQ(called(), "2131");
}

TEST_F(Chain, BeforeAnyFileIsReadThereAreNoFormats) {
  test::clearLog();
  EXPECT_EQ(fucParse(cs("f"), &a, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), (Texts{"format id [f] mot find!!", "Get Message Formate [f] Info err!!\n"}));
}

TEST_F(Chain, OfTheNextGenerationMayLieAtTheSameAddress) {
  ASSERT_EQ(load({{"first", {}, {}}}), 0);
  cvtEnd();
  tree.file("section.xml", "<Id psIdPath='Id'/>");
  void *const ptDoc = xmlFileParse(tree.arg("section.xml"));
  const FormatInfo *ptOther = nullptr;
  for (const char *psFormat : {"old", "newer"}) {
    cvtIdEnd();
    cvtEndDict();
    cvtMemReset();
    tree.file("Id/id.xml", pipelines({{psFormat, {}, {}}}));
    ASSERT_NE(cvtIdInit(xmlGetHeadNode(ptDoc), cs("Id")), nullptr);
    EXPECT_EQ(fucParse(cs(psFormat), &a, nullptr), 0) << psFormat;
    EXPECT_EQ(ptOther == gptFormatInfo, ptOther != nullptr);  // or this test shows nothing
    ptOther = gptFormatInfo;
  }
  xmlDocFree(ptDoc);
  EXPECT_EQ(fucParse(cs("old"), &a, nullptr), -1);
}

TEST_F(Chain, EndForgetsPipelinesAndSteps) {
  ASSERT_EQ(load({{"f", {{"one"}}, {}}}), 0);
  EXPECT_EQ(cvtIdEnd(), 0);
  EXPECT_EQ(gptFormatInfo, nullptr);
  EXPECT_EQ(fucParse(cs("f"), &a, nullptr), -1);
  test::clearLog();
  EXPECT_EQ(sttNewIdFunc(cs("one"), nullptr, nullptr), nullptr);
  EXPECT_EQ(test::logTexts(1), (Texts{"IdFunc[one] Not Find!!", kStepFails}));
}

}  // namespace

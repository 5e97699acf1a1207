// The standard steps: binding a message to its definition, parsing it, generating it.
#include <stdexcept>

#include "convert_fixture.h"

namespace {

using namespace test::xml;
using test::cs;

// What a format's functions were called with, and what they answer.
struct FormatCall {
  void *ptInfo;
  ValueListInfo *ptValues;
  Msg *ptMsg;
  char *psBuf;
  int *pnNowLen;
  int nLen;
};
std::vector<FormatCall> g_format;
int g_nAnswer = 0;

int format(void *ptInfo, ValueListInfo *ptValues, Msg *ptMsg, char *psBuf, int *pnNowLen, int nLen) {
  g_format.push_back({ptInfo, ptValues, ptMsg, psBuf, pnNowLen, nLen});
  *pnNowLen += 3;
  return g_nAnswer;
}
int formatThrows(void *, ValueListInfo *, Msg *, char *, int *, int) {
  throw std::runtime_error("broken");
}

// Fall-back steps.
struct StepCall {
  InnerMessage *ptFirst;
  InnerMessage *ptSecond;
  void *pArg;
};
std::vector<StepCall> g_fallBack;

int nameIt(InnerMessage *ptMsg, InnerMessage *ptSecond, void *pArg) {
  g_fallBack.push_back({ptMsg, ptSecond, pArg});
  std::string("In").copy(ptMsg->sMsgName, 2);
  ptMsg->sMsgName[2] = 0;
  ptMsg->ptMsgInfo = cvtGetMsg(ptMsg->sMsgName);
  return 0;
}
int nameItAndFail(InnerMessage *ptMsg, InnerMessage *ptSecond, void *pArg) {
  return nameIt(ptMsg, ptSecond, pArg) - 1;
}
int nameItAndThrow(InnerMessage *ptMsg, InnerMessage *ptSecond, void *pArg) {
  nameIt(ptMsg, ptSecond, pArg);
  throw std::runtime_error("broken");
}
int fail(InnerMessage *, InnerMessage *, void *) {
  return 2;
}
int doNothing(InnerMessage *, InnerMessage *, void *) {
  return 0;
}

class Steps : public test::ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    cvtIdAddFunction(cs("nameIt"), nameIt);
    cvtIdAddFunction(cs("fail"), fail);
    cvtIdAddFunction(cs("doNothing"), doNothing);
    define("In", {field("A"), field("B"), field("C")});
    tree.file("Cvt/readme.txt", "no converters");
    sMoreSections = "<Id __ID='ptId' psIdPath='Id'/>";
    const auto withFallBack = [](const std::string &sName) {
      return Step{"pubParse", "<IdFunc __ID='ptArg' psFunctName='" + sName + "'/>"};
    };
    tree.file("Id/id.xml", pipelines({{"plain", {{"pubParse"}}, {{"pubGenerate"}}},
                                      {"named", {withFallBack("nameIt")}, {}}}));
    if (start() != 0) ADD_FAILURE() << "the configuration does not load";
    ptDefinition = cvtGetMsg(cs("In"));
    test::clearLog();
  }

  void name(const std::string &sName) {
    sName.copy(message.sMsgName, sizeof message.sMsgName - 1);
    message.sMsgName[sName.size()] = 0;
  }

  InnerMessage message{};
  Msg *ptDefinition = nullptr;
};

using NewStep = Steps;
using ParseStep = Steps;
using GenerateStep = Steps;

// --- pubNew ----------------------------------------------------------------------------------------------

TEST_F(NewStep, BindsTheDefinitionAndAnEmptyValueList) {
  name("In");
  EXPECT_EQ(pubNew(&message, nullptr, nullptr), 0);
  EXPECT_EQ(message.ptMsgInfo, ptDefinition);
  ASSERT_NE(message.tValueListInfo.ptValueList, nullptr);
  EXPECT_EQ(message.tValueListInfo.ptValueList->nNow, gnMaxValueNum);  // nValueNum -1: the full capacity
  EXPECT_EQ(cvtGetListValue(message.tValueListInfo.ptValueList, 0)->psValue, nullptr);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(NewStep, ValueListHasTheCountThatTheFormatSet) {
  ptDefinition->nValueNum = 2;
  name("In");
  EXPECT_EQ(pubNew(&message, nullptr, nullptr), 0);
  EXPECT_EQ(message.tValueListInfo.ptValueList->nNow, 2);
}

TEST_F(NewStep, WithoutAMessageFails) {
  EXPECT_EQ(pubNew(nullptr, &message, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"[ptInMsg] is NULL"});
}

TEST_F(NewStep, UnknownNameFails) {
  name("in");
  EXPECT_EQ(pubNew(&message, nullptr, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"Msg [in] get define info err!!"});
  EXPECT_EQ(message.ptMsgInfo, nullptr);
  EXPECT_EQ(message.tValueListInfo.ptValueList, nullptr);
}

TEST_F(NewStep, WithoutARegistryFails) {
  cvtFmtEnd();
  name("In");
  EXPECT_EQ(pubNew(&message, nullptr, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), (Texts{"[gptFmtGlobalInfo] is NULL", "Msg [In] get define info err!!"}));
}

TEST_F(NewStep, FallBackNamesTheMessage) {
  name("?");
  IdFunc *const ptFallBack = sttNewIdFunc(cs("nameIt"), &message, nullptr);
  EXPECT_EQ(pubNew(&message, &message, ptFallBack), 0);
  ASSERT_EQ(g_fallBack.size(), 1U);
  EXPECT_EQ(g_fallBack[0].ptFirst, &message);
  EXPECT_EQ(g_fallBack[0].ptSecond, nullptr);  // neither a second message
  EXPECT_EQ(g_fallBack[0].pArg, nullptr);      // nor its own argument
  EXPECT_EQ(message.ptMsgInfo, ptDefinition);
  EXPECT_NE(message.tValueListInfo.ptValueList, nullptr);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(NewStep, FallBackIsNotAskedForAKnownName) {
  name("In");
  EXPECT_EQ(pubNew(&message, nullptr, sttNewIdFunc(cs("nameIt"), nullptr, nullptr)), 0);
  EXPECT_TRUE(g_fallBack.empty());
}

TEST_F(NewStep, FailingFallBackFails) {
  name("?");
  EXPECT_EQ(pubNew(&message, nullptr, sttNewIdFunc(cs("fail"), nullptr, nullptr)), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"Msg [?] get define info err!!"});
}

TEST_F(NewStep, FallBackThatFailsOnceItHasBoundTheMessageFails) {
  name("?");
  IdFunc fallBack{cs("fallBack"), nameItAndFail, nullptr, nullptr};
  EXPECT_EQ(pubNew(&message, nullptr, &fallBack), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"Msg [In] get define info err!!"});
  EXPECT_EQ(message.tValueListInfo.ptValueList, nullptr);

  name("?");
  fallBack.fIdFunction = nameItAndThrow;
  test::clearLog();
  EXPECT_EQ(pubNew(&message, nullptr, &fallBack), -1);
  EXPECT_EQ(test::logTexts(1),
            (Texts{"Step[fallBack] let an exception out: broken", "Msg [In] get define info err!!"}));
  EXPECT_EQ(message.tValueListInfo.ptValueList, nullptr);
}

TEST_F(NewStep, FallBackWithoutAFunctionFails) {
  name("?");
  IdFunc *const ptFallBack = sttNewIdFunc(cs("fail"), nullptr, nullptr);
  ptFallBack->fIdFunction = nullptr;
  EXPECT_EQ(pubNew(&message, nullptr, ptFallBack), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"[ptIdFunc->fIdFunction] is NULL"});
}

TEST_F(NewStep, FallBackThatSetsNoDefinitionFails) {
  name("?");
  EXPECT_EQ(pubNew(&message, nullptr, sttNewIdFunc(cs("doNothing"), nullptr, nullptr)), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"[ptInMsg->ptMsgInfo] is NULL"});
}

TEST_F(NewStep, DefinitionOfAnEarlierNameIsDropped) {
  message.ptMsgInfo = ptDefinition;
  name("?");
  EXPECT_EQ(pubNew(&message, nullptr, sttNewIdFunc(cs("doNothing"), nullptr, nullptr)), -1);
  EXPECT_EQ(message.ptMsgInfo, nullptr);
}

// --- pubParse --------------------------------------------------------------------------------------------

TEST_F(ParseStep, GivesTheFormatTheBufferAndTheContext) {
  char sBuf[] = "0123456789";
  int nContext = 0;
  ptDefinition->fParse = format;
  name("In");
  message.psBuf = sBuf;
  message.nNowLen = 2;
  message.nLen = 10;
  message.ptInfo = &nContext;
  EXPECT_EQ(pubParse(&message, nullptr, nullptr), 0);
  ASSERT_EQ(g_format.size(), 1U);
  EXPECT_EQ(g_format[0].ptInfo, &nContext);
  EXPECT_EQ(g_format[0].ptValues, &message.tValueListInfo);
  EXPECT_EQ(g_format[0].ptMsg, ptDefinition);
  EXPECT_EQ(g_format[0].psBuf, sBuf);
  EXPECT_EQ(g_format[0].pnNowLen, &message.nNowLen);
  EXPECT_EQ(g_format[0].nLen, 10);
  EXPECT_EQ(message.nNowLen, 5);
  EXPECT_NE(message.tValueListInfo.ptValueList, nullptr);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(ParseStep, WithoutAMessageFails) {
  EXPECT_EQ(pubParse(nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"[ptInMsg] is NULL"});
}

TEST_F(ParseStep, UnknownNameFails) {
  name("Nobody");
  EXPECT_EQ(pubParse(&message, nullptr, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"Msg [Nobody] get define info err!!"});
}

TEST_F(ParseStep, DefinitionThatCannotParseFails) {
  name("In");
  EXPECT_EQ(pubParse(&message, nullptr, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"[ptInMsg->ptMsgInfo->fParse] is NULL"});
}

TEST_F(ParseStep, ReturnsTheFormatsCodeUnchanged) {
  ptDefinition->fParse = format;
  g_nAnswer = 5;
  name("In");
  EXPECT_EQ(pubParse(&message, nullptr, nullptr), 5);
  EXPECT_EQ(test::logTexts(1), Texts{"Msg[In] Parse Buffer err!!"});
}

TEST_F(ParseStep, ChainTurnsTheFormatsCodeIntoMinusOne) {
  ptDefinition->fParse = format;
  g_nAnswer = 5;
  name("In");
  EXPECT_EQ(fucParse(cs("plain"), &message, nullptr), -1);
  EXPECT_EQ(test::logTexts(1),
            (Texts{"Msg[In] Parse Buffer err!!", "Do Func[pubParse] err!!", "Formate[plain] Parse Err!!\n"}));
}

TEST_F(ParseStep, FallBackOfThePipelineNamesTheMessage) {
  ptDefinition->fParse = format;
  EXPECT_EQ(fucParse(cs("named"), &message, nullptr), 0);
  EXPECT_STREQ(message.sMsgName, "In");
  EXPECT_EQ(g_format.size(), 1U);
}

TEST_F(ParseStep, ExceptionOfTheFormatEndsAtTheLibrary) {
  ptDefinition->fParse = formatThrows;
  name("In");
  EXPECT_EQ(pubParse(&message, nullptr, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), (Texts{"Msg[In] let an exception out: broken", "Msg[In] Parse Buffer err!!"}));
}

// --- pubGenerate -----------------------------------------------------------------------------------------

TEST_F(GenerateStep, WritesTheSecondMessageWithoutAContext) {
  char sBuf[10];
  int nContext = 0;
  ptDefinition->fGen = format;
  name("In");
  message.psBuf = sBuf;
  message.nLen = 10;
  message.ptInfo = &nContext;
  message.ptMsgInfo = ptDefinition;
  InnerMessage source{};
  EXPECT_EQ(pubGenerate(&source, &message, nullptr), 0);
  ASSERT_EQ(g_format.size(), 1U);
  EXPECT_EQ(g_format[0].ptInfo, nullptr);
  EXPECT_EQ(g_format[0].ptValues, &message.tValueListInfo);
  EXPECT_EQ(g_format[0].ptMsg, ptDefinition);
  EXPECT_EQ(g_format[0].psBuf, sBuf);
  EXPECT_EQ(g_format[0].nLen, 10);
  EXPECT_EQ(message.nNowLen, 3);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(GenerateStep, WithoutAMessageFails) {
  EXPECT_EQ(pubGenerate(&message, nullptr, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"[ptInMsg] is NULL"});
}

TEST_F(GenerateStep, WithoutADefinitionFails) {
  EXPECT_EQ(pubGenerate(nullptr, &message, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"[ptInMsg->ptMsgInfo] is NULL"});
}

TEST_F(GenerateStep, DefinitionThatCannotGenerateFails) {
  message.ptMsgInfo = ptDefinition;
  EXPECT_EQ(pubGenerate(nullptr, &message, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"[ptInMsg->ptMsgInfo->fGen] is NULL"});
}

TEST_F(GenerateStep, ReturnsTheFormatsCodeUnchanged) {
  ptDefinition->fGen = format;
  g_nAnswer = 7;
  name("In");
  message.ptMsgInfo = ptDefinition;
  EXPECT_EQ(pubGenerate(nullptr, &message, nullptr), 7);
  EXPECT_EQ(test::logTexts(1), Texts{"Message[In] generate to Buf err!!"});
  test::clearLog();
  EXPECT_EQ(fucGenerate(cs("plain"), nullptr, &message), -1);
  EXPECT_EQ(test::logTexts(1), (Texts{"Message[In] generate to Buf err!!", "Do Func[pubGenerate] err!!",
                                      "Formate[plain] Parse Err!!\n"}));
}

// A step before it has set the position there.
TEST_F(GenerateStep, FormatMayLeaveThePositionOutsideTheBufferWhereItWas) {
  ptDefinition->fGen = [](void *, ValueListInfo *, Msg *, char *, int *, int) { return 0; };
  message.ptMsgInfo = ptDefinition;
  message.nLen = 10;
  for (const int nNow : {1000, -5}) {
    message.nNowLen = nNow;
    EXPECT_EQ(pubGenerate(nullptr, &message, nullptr), 0);
    EXPECT_EQ(message.nNowLen, nNow);
  }
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(GenerateStep, ArgumentIsNotUsed) {
  char cArgument = 0;
  ptDefinition->fGen = format;
  message.ptMsgInfo = ptDefinition;
  message.nLen = 10;
  EXPECT_EQ(pubGenerate(nullptr, &message, &cArgument), 0);
  ASSERT_EQ(g_format.size(), 1U);
  EXPECT_EQ(g_format[0].ptInfo, nullptr);
  EXPECT_EQ(message.nNowLen, 3);
  EXPECT_EQ(cArgument, 0);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(GenerateStep, NameThatFillsItsFieldIsLoggedToItsEnd) {
  ptDefinition->fGen = format;
  g_nAnswer = 7;
  message.ptMsgInfo = ptDefinition;
  std::string(sizeof message.sMsgName, 'n').copy(message.sMsgName, sizeof message.sMsgName);
  std::string("fmt").copy(message.sMsgFormat, 3);
  EXPECT_EQ(pubGenerate(nullptr, &message, nullptr), 7);
  EXPECT_EQ(test::logTexts(1), Texts{"Message[" + std::string(61, 'n') + "] generate to Buf err!!"});
}

TEST_F(GenerateStep, ExceptionOfTheFormatEndsAtTheLibrary) {
  ptDefinition->fGen = formatThrows;
  name("In");
  message.ptMsgInfo = ptDefinition;
  EXPECT_EQ(pubGenerate(nullptr, &message, nullptr), -1);
  EXPECT_EQ(test::logTexts(1),
            (Texts{"Message[In] let an exception out: broken", "Message[In] generate to Buf err!!"}));
}

}  // namespace

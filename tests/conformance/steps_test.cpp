// Steps: which definition a message is bound to, what the steps take from the buffers whatever lengths and positions
// say, and names that are taken exactly.
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
using test::trail;

namespace {

int nothing(InnerMessage *, InnerMessage *, void *) {
  return 0;
}
int bindInvoice(InnerMessage *ptMsg, InnerMessage *, void *) {
  ptMsg->ptMsgInfo = cvtGetMsg(cs("Invoice"));
  return 0;
}
int nameOrder(InnerMessage *ptMsg, InnerMessage *, void *) {
  std::strcpy(ptMsg->sMsgName, "Order");
  return 0;
}
int nameOrderAndBindInvoice(InnerMessage *ptMsg, InnerMessage *ptSecond, void *pArg) {
  return nameOrder(ptMsg, ptSecond, pArg) + bindInvoice(ptMsg, ptSecond, pArg);
}
int nameOrderAndFail(InnerMessage *ptMsg, InnerMessage *ptSecond, void *pArg) {
  return nameOrder(ptMsg, ptSecond, pArg) + 1;
}

class StepRun : public testing::Test {
 protected:
  void TearDown() override { cvtEnd(); }

  // Starts with these pipelines; the log begins here.
  void started(const std::vector<Pipeline> &list = {{"f", {}, {}}}) {
    config.file("id/pipelines.xml", pipelines(list));
    ASSERT_EQ(config.start(), 0);
    test::clearLog();
  }

  // pubNew on a message of that name, with a fall-back step.
  int bind(const char *psName, FncIdFunction fFallBack) {
    first = {};
    std::strcpy(first.sMsgName, psName);
    IdFunc fallBack{cs("fallBack"), fFallBack, nullptr, nullptr};
    test::clearLog();
    return pubNew(&first, nullptr, &fallBack);
  }

  test::ToyConfig config;
  InnerMessage first{};
  InnerMessage second{};
  std::string sFrom;  // buffers of the two
  std::string sTo;
  int nError = 77;
};

using Binding = StepRun;
using Names = StepRun;
using FormatIds = StepRun;
using Buffers = StepRun;

// --- Binding a message to its definition ----------------------------------------------------------------

TEST_F(Binding, TakesTheDefinitionThatTheFallBackStepSetWhateverTheNameIs) {
  started();
  EXPECT_EQ(bind("Nobody", bindInvoice), 0);
  EXPECT_EQ(first.ptMsgInfo, cvtGetMsg(cs("Invoice")));
  EXPECT_STREQ(first.sMsgName, "Nobody");
  EXPECT_EQ(bind("Nobody", nameOrderAndBindInvoice), 0);
  EXPECT_EQ(first.ptMsgInfo, cvtGetMsg(cs("Invoice")));
  EXPECT_STREQ(first.sMsgName, "Order");
}

TEST_F(Binding, DoesNotLookUpTheNameThatTheFallBackStepGave) {
  started();
  EXPECT_EQ(bind("Nobody", nameOrder), -1);
  EXPECT_EQ(first.ptMsgInfo, nullptr);
  EXPECT_EQ(first.tValueListInfo.ptValueList, nullptr);
}

TEST_F(Binding, NamesTheMessageAsAFailingFallBackStepHasLeftIt) {
  started();
  EXPECT_EQ(bind("Nobody", nameOrderAndFail), -1);
  EXPECT_EQ(trail(), Texts{"cvt_identify.cpp pubNew: Msg [Order] get define info err!!"});
}

TEST_F(Binding, OfAKnownNameDoesNotLookAtTheFallBackStep) {
  started();
  EXPECT_EQ(bind("Order", nullptr), 0);
  EXPECT_EQ(first.ptMsgInfo, cvtGetMsg(cs("Order")));
}

TEST_F(Binding, TakesAFreshListEachTime) {
  started();
  ASSERT_EQ(bind("Order", nothing), 0);
  ValueList *const ptBefore = first.tValueListInfo.ptValueList;
  EXPECT_EQ(pubNew(&first, nullptr, nullptr), 0);
  EXPECT_NE(first.tValueListInfo.ptValueList, ptBefore);
  EXPECT_NE(first.tValueListInfo.ptValueList, nullptr);
}

TEST_F(Binding, ComesBeforeTheQuestionWhetherTheDefinitionCanParse) {
  started();
  Msg *const ptOrder = cvtGetMsg(cs("Order"));
  ptOrder->fParse = nullptr;
  std::strcpy(first.sMsgName, "Order");
  EXPECT_EQ(pubParse(&first, nullptr, nullptr), -1);
  EXPECT_EQ(first.ptMsgInfo, ptOrder);
  EXPECT_NE(first.tValueListInfo.ptValueList, nullptr);
  EXPECT_EQ(trail(), Texts{"cvt_identify.cpp pubParse: [ptInMsg->ptMsgInfo->fParse] is NULL"});
}

TEST_F(Binding, WithoutAMessageIsReportedByTheStepThatWasCalled) {
  EXPECT_EQ(pubNew(nullptr, &first, nullptr), -1);
  EXPECT_EQ(pubParse(nullptr, &first, nullptr), -1);
  EXPECT_EQ(pubGenerate(&first, nullptr, nullptr), -1);
  EXPECT_EQ(pubConvert(nullptr, &first, nullptr), -1);
  EXPECT_EQ(pubConvert(&first, nullptr, nullptr), -1);
  EXPECT_EQ(trail(), (Texts{"cvt_identify.cpp pubNew: [ptInMsg] is NULL",
                            "cvt_identify.cpp pubParse: [ptInMsg] is NULL",
                            "cvt_identify.cpp pubGenerate: [ptInMsg] is NULL",
                            "cvt_identify.cpp pubConvert: [ptSrtMsg] is NULL",
                            "cvt_identify.cpp pubConvert: [ptDstMsg] is NULL"}));
}

// --- Names of steps -------------------------------------------------------------------------------------

struct BuiltInStep {
  const char *psName;
  FncIdFunction fStep;
};
class BuiltIn : public StepRun, public testing::WithParamInterface<BuiltInStep> {};

TEST_P(BuiltIn, StepIsKnownByItsExactNameOnly) {
  const std::string sName = GetParam().psName;
  const IdFunc *const pt = sttNewIdFunc(cs(sName.c_str()), nullptr, nullptr);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(pt->fIdFunction, GetParam().fStep);
  std::string sOtherCase = sName;
  sOtherCase[0] = static_cast<char>(sOtherCase[0] ^ 0x20);
  for (const std::string &s : {sOtherCase, sName + "s", sName.substr(0, sName.size() - 1), " " + sName}) {
    test::clearLog();
    EXPECT_EQ(sttNewIdFunc(cs(s.c_str()), nullptr, nullptr), nullptr) << s;
    EXPECT_EQ(test::logTexts().front(), "IdFunc[" + s + "] Not Find!!");
  }
}

INSTANTIATE_TEST_SUITE_P(
    Steps, BuiltIn,
    testing::Values(BuiltInStep{"pubParse", pubParse}, BuiltInStep{"pubNew", pubNew},
                    BuiltInStep{"pubGenerate", pubGenerate}, BuiltInStep{"pubConvert", pubConvert},
                    BuiltInStep{"GetIpcName", GetIpcName}, BuiltInStep{"GetXmlNode", GetXmlNode},
                    BuiltInStep{"SetMsgNameToBuf", SetMsgNameToBuf}, BuiltInStep{"SetBufToBuf", SetBufToBuf},
                    BuiltInStep{"SetToOffset", SetToOffset}),
    [](const auto &tested) { return std::string(tested.param.psName); });

TEST_F(Names, AreKeptApartFromTheCallersText) {
  std::string sName = "own";
  cvtIdAddFunction(sName.data(), nothing);
  sName = "new";
  const IdFunc *const pt = sttNewIdFunc(cs("own"), nullptr, nullptr);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(pt->fIdFunction, &nothing);
  EXPECT_EQ(sttNewIdFunc(cs("new"), nullptr, nullptr), nullptr);
}

TEST_F(Names, MayBeThoseOfABuiltInStepInAnotherLetterCase) {
  cvtIdAddFunction(cs("PUBPARSE"), nothing);
  EXPECT_EQ(sttNewIdFunc(cs("PUBPARSE"), nullptr, nullptr)->fIdFunction, &nothing);
  EXPECT_EQ(sttNewIdFunc(cs("pubParse"), nullptr, nullptr)->fIdFunction, &pubParse);
}

TEST_F(Names, AreResolvedWhenThePipelineIsReadAndNotAgain) {
  cvtIdAddFunction(cs("later"), nothing);
  started({{"f", {{"later"}}, {}}});
  cvtIdAddFunction(cs("later"), nameOrder);
  EXPECT_EQ(fucParse(cs("f"), &first, nullptr), 0);
  EXPECT_STREQ(first.sMsgName, "");
  EXPECT_EQ(cvtIdAddFunction(cs("none"), nullptr), 0);  // empties the registry
  EXPECT_EQ(fucParse(cs("f"), &first, nullptr), 0);
}

// --- Format ids -----------------------------------------------------------------------------------------

TEST_F(FormatIds, AreTakenWholeWhereTheHandleHoldsThemCut) {
  const std::string sId = "a_format_id_of_25_letters";
  started({{sId, {{"pubParse"}}, {{"pubNew"}}}});
  char sIn[] = "7,Ann,Rome,[],hi";
  InnerMessage *const ptIn =
      cvtInitMessasge(cs("Order"), cs(sId.c_str()), sIn, static_cast<int>(std::strlen(sIn)), &nError);
  ASSERT_NE(ptIn, nullptr);
  EXPECT_EQ(ptIn->sMsgFormat, sId.substr(0, 20));
  int nOut = 0;
  InnerMessage *const ptOut = cvtGenerateMessasge(ptIn, cs(sId.c_str()), nullptr, &nOut, &nError);
  ASSERT_NE(ptOut, nullptr);
  EXPECT_EQ(ptOut->sMsgFormat, sId.substr(0, 20));
  EXPECT_EQ(fucParse(ptOut->sMsgFormat, ptOut, nullptr), -1);
  EXPECT_EQ(cvtFreeMessage(ptOut), 0);
  EXPECT_EQ(cvtFreeMessage(ptIn), 0);
}

TEST_F(FormatIds, MayBeEmpty) {
  started({{"f", {{"pubParse"}}, {}}, {"", {{"pubNew"}}, {}}});
  std::strcpy(first.sMsgName, "Order");
  EXPECT_EQ(fucParse(cs(""), &first, nullptr), 0);
  EXPECT_EQ(first.ptMsgInfo, cvtGetMsg(cs("Order")));
}

// --- Buffers --------------------------------------------------------------------------------------------

std::string record(const std::string &sType, const std::string &sAttributes) {
  return "<" + sType + " __ID='ptArg' " + sAttributes + "/>";
}

TEST_F(Buffers, NamesAreTakenFromBehindTheLengthToo) {
  started({{"slice", {{"GetIpcName", record("IpcNameArgs", "nOffset='1' nLen='4'")}}, {}},
           {"text", {{"GetXmlNode", record("XmlNameArgs", "psNodeName='N'")}}, {}}});
  sFrom = "<N>Pay1</N>";
  first.psBuf = sFrom.data();
  for (const int nLen : {0, 2, -1}) {
    first.nLen = nLen;
    first.nNowLen = 2;
    EXPECT_EQ(fucParse(cs("slice"), &first, nullptr), 0);
    EXPECT_STREQ(first.sMsgName, "Pay1") << nLen;
    first.nNowLen = 0;
    EXPECT_EQ(fucParse(cs("text"), &first, nullptr), 0);
    EXPECT_STREQ(first.sMsgName, "Pay1") << nLen;
  }
}

TEST_F(Buffers, PiecesAreCountedFromTheStartsWhateverPositionsAndLengthsSay) {
  started(
      {{"f", {}, {{"SetBufToBuf", record("MoveBufferArgs", "nSrcOffset='1' nSrcLen='4' nDstOffset='3'")}}}});
  sFrom = "0123456789";
  sTo = "..........";
  first.psBuf = sFrom.data();
  first.nNowLen = 5;
  first.nLen = 2;
  second.psBuf = sTo.data();
  second.nNowLen = 2;
  second.nLen = 1;
  EXPECT_EQ(fucGenerate(cs("f"), &first, &second), 0);
  EXPECT_EQ(sTo, "...1234...");
  EXPECT_EQ(sFrom, "0123456789");
  EXPECT_EQ(test::logTexts(5), Texts{"Add To Dst Message[]"});  // nothing from behind the length
  EXPECT_EQ(second.nNowLen, 6);
  EXPECT_EQ(first.nNowLen, 5);
  EXPECT_EQ(second.nLen, 1);
}

TEST_F(Buffers, TextsAreWrittenWithoutTheirTerminators) {
  started({{"front", {}, {{"SetBufToBuf", record("MoveBufferArgs", "psFront='ABC' nDstOffset='1'")}}},
           {"back", {}, {{"SetBufToBuf", record("MoveBufferArgs", "psBack='xy' nDstOffset='1'")}}}});
  sTo = "......";
  second.psBuf = sTo.data();
  second.nLen = 6;
  EXPECT_EQ(fucGenerate(cs("front"), nullptr, &second), 0);
  EXPECT_EQ(sTo, ".ABC..");
  EXPECT_EQ(fucGenerate(cs("back"), nullptr, &second), 0);
  EXPECT_EQ(sTo, ".xyC..");
  EXPECT_EQ(second.nNowLen, 5);
}

TEST_F(Buffers, PositionsMayBeSetToAnywhere) {
  started({{"f",
            {},
            {{"SetToOffset", record("SetOffsetArgs", "caMsgType='s' nOffset='-5'")},
             {"SetToOffset", record("SetOffsetArgs", "caMsgType='d' nOffset='1000'")},
             {"SetToOffset", record("SetOffsetArgs", "caMsgType='S' nOffset='-5' nSetType='2'")}}}});
  first.nLen = second.nLen = 10;
  EXPECT_EQ(fucGenerate(cs("f"), &first, &second), 0);
  EXPECT_EQ(first.nNowLen, -10);
  EXPECT_EQ(second.nNowLen, 1000);
  EXPECT_EQ(trail(), (Texts{"cvt_identify.cpp SetToOffset: Set Src Message Offset to [-5]",
                            "cvt_identify.cpp SetToOffset: Set Dst Message Offset to [1000]",
                            "cvt_identify.cpp SetToOffset: Set Src Message Offset to [-10]"}));
}

}  // namespace

// The choice of a converter: whole trails, and what a reload makes of it.
#include <gtest/gtest.h>

#include <algorithm>
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

MemPort g_ptNode = nullptr;  // that the function was given
int keepNode(Value *ptResult, int, Value **, MemPort ptMemNode) {
  g_ptNode = ptMemNode;
  ptResult->psValue = cs("kept");
  ptResult->nLen = 4;
  return 0;
}

class Choosing : public testing::Test {
 protected:
  void SetUp() override {
    config.file("msg/Receipt.xml", test::definition("toy", "Receipt", {test::field("Who")}));
    config.file("cvt/receipt.xml", converter("receipt", "Order", "Receipt", {copy(src("Name"), dst("Who"))}));
    config.file("id/pipelines.xml", pipelines({{"01", {{"pubParse"}}, {{"pubConvert"}, {"pubGenerate"}}},
                                               {"03", {}, {{"pubConvert"}, {"pubGenerate"}}}}));
    config.root.sAttributes = "nReload=\"1\"";
    config.writeRoot();
  }
  void TearDown() override { cvtEnd(); }

  int start(const std::vector<Choice> &list) { return startFile(choices(list)); }
  int startFile(const std::string &sText) {
    config.file("idinfo/choice.xml", sText);
    test::clearLog();
    return config.start();
  }

  // The bytes of the order in the target format; the library's result code when there are none.
  std::string converted(const char *psFormat) {
    char sIn[] = "7,Ann,Rome,[A,1,[];],hi";
    InnerMessage *const ptIn =
        cvtInitMessasge(cs("Order"), cs("01"), sIn, static_cast<int>(std::strlen(sIn)), &nError);
    if (ptIn == nullptr) return "not parsed";
    test::clearLog();
    char sOut[64];
    int nOut = sizeof sOut;
    InnerMessage *const ptOut = cvtGenerateMessasge(ptIn, cs(psFormat), sOut, &nOut, &nError);
    const std::string sResult =
        ptOut == nullptr ? std::to_string(nError) : std::string(sOut, static_cast<size_t>(nOut));
    if (ptOut != nullptr) cvtFreeMessage(ptOut);
    cvtFreeMessage(ptIn);
    return sResult;
  }

  // The trail of a start that fails on the identification file, behind the file's own lines.
  Texts startTrail(Texts inner) const {
    const std::string sFile = config.path("idinfo/choice.xml");
    const std::string sRoot = config.path("All/root.xml");
    return then(inner, {"cvt_init.cpp cvtIniParseFileXml: Parse File[" + sFile + "] Err!!",
                        "cvt_init.cpp locParseDirXmlLimit: Init[choice.xml] err !!",
                        "cvt_identify.cpp cvtIdInit: Parse Id File Err In[idinfo]!!\n",
                        "cvt_init.cpp sttParseXmlAllInfo: void * ptId = sttParseXmlStruct(ptXmlNode, \"Id\", "
                        "\"ptId\", cvtIdInit) is Err!!"});
  }
  // The first lines of the log, as many as expected.
  static Texts head(const Texts &expected) {
    Texts all = trail();
    all.resize(std::min(all.size(), expected.size()));
    return all;
  }

  test::ToyConfig config;
  int nError = 77;
};

using Table = Choosing;
using Files = Choosing;

TEST_F(Table, TakesTheFormatsOwnConverterAndElseTheDefault) {
  ASSERT_EQ(start({{"Order", {{"01", "bill"}, {"", "receipt"}}}}), 0);
  EXPECT_EQ(converted("01"), "7,Ann,[A;]");
  EXPECT_EQ(converted("03"), "Ann");
}

TEST_F(Table, TakesTheLaterOfTwoDefaultsAndTheEarlierOfTwoOwnOnes) {
  ASSERT_EQ(start({{"Order", {{"", "bill"}, {"01", "receipt"}, {"01", "bill"}, {"", "receipt"}}}}), 0);
  EXPECT_EQ(converted("01"), "Ann");
  EXPECT_EQ(converted("03"), "Ann");
}

TEST_F(Table, WithoutADefaultRefusesOtherFormatsWithAWholeTrail) {
  ASSERT_EQ(start({{"Order", {{"01", "bill"}}}}), 0);
  EXPECT_EQ(converted("03"), "-1");
  EXPECT_EQ(trail(),
            (Texts{"cvt_identify.cpp cvtGetConvert: Message Convert Format id [03] not fond!!",
                   "cvt_identify.cpp pubConvert: Get convert Msg[Order] To Msg[03] define info err!!",
                   "cvt_identify.cpp DoFuc: Do Func[pubConvert] err!!",
                   "cvt_identify.cpp fucGenerate: Formate[03] Parse Err!!\n",
                   "cvt.cpp cvtGenerateMessasge: Generate Message[] err!!"}));
}

TEST_F(Table, IsReadAfreshByAReload) {
  ASSERT_EQ(start({{"Order", {{"01", "bill"}, {"03", "receipt"}}}}), 0);
  EXPECT_EQ(converted("01"), "7,Ann,[A;]");
  config.file("idinfo/choice.xml", choices({{"Order", {{"01", "receipt"}}}}));
  EXPECT_EQ(converted("01"), "7,Ann,[A;]");  // the root file was not touched
  config.touchRoot();
  EXPECT_EQ(converted("01"), "Ann");
  EXPECT_EQ(converted("03"), "-1");
}

TEST_F(Table, OfADefinitionMayBeLeftOutByTheNextFiles) {
  ASSERT_EQ(start({{"Order", {{"", "bill"}}}}), 0);
  config.file("idinfo/choice.xml", choices({{"Invoice", {}}}));
  config.touchRoot();
  EXPECT_EQ(converted("01"), "-1");
  EXPECT_EQ(trail().front(), "cvt_identify.cpp cvtGetConvert: Message Convert Format id [01] not fond!!");
}

TEST_F(Table, IsThatOfTheSourcesDefinitionWhateverItsName) {
  ASSERT_EQ(start({{"Order", {{"03", "receipt"}}}, {"Invoice", {{"03", "bill"}}}}), 0);
  char sIn[] = "7,Ann,Rome,[],hi";
  InnerMessage *const ptIn =
      cvtInitMessasge(cs("Order"), cs("01"), sIn, static_cast<int>(std::strlen(sIn)), &nError);
  ASSERT_NE(ptIn, nullptr);
  std::strcpy(ptIn->sMsgName, "Invoice");
  InnerMessage target{};
  std::strcpy(target.sMsgFormat, "03");
  EXPECT_EQ(cvtGetConvert(ptIn, &target), cvtGetCvt(cs("receipt")));
  EXPECT_EQ(cvtFreeMessage(ptIn), 0);
}

TEST_F(Table, LeadsToAConversionInTheMemoryOfTheDestination) {
  cvtConvertAddFunction(cs("keepNode"), keepNode);
  config.file("cvt/receipt.xml",
              converter("receipt", "Order", "Receipt", {copy(func("keepNode"), dst("Who"))}));
  ASSERT_EQ(start({{"Order", {{"", "receipt"}}}}), 0);
  char sIn[] = "7,Ann,Rome,[],hi";
  InnerMessage *const ptIn =
      cvtInitMessasge(cs("Order"), cs("01"), sIn, static_cast<int>(std::strlen(sIn)), &nError);
  ASSERT_NE(ptIn, nullptr);
  char sOut[8];
  int nOut = sizeof sOut;
  InnerMessage *const ptOut = cvtGenerateMessasge(ptIn, cs("03"), sOut, &nOut, &nError);
  ASSERT_NE(ptOut, nullptr);
  EXPECT_EQ(std::string(sOut, static_cast<size_t>(nOut)), "kept");
  EXPECT_EQ(g_ptNode, ptOut->tValueListInfo.ptMemNode);
  EXPECT_EQ(cvtFreeMessage(ptOut), 0);
  EXPECT_EQ(cvtFreeMessage(ptIn), 0);
}

TEST_F(Files, WithoutContentFailTheStart) {
  EXPECT_EQ(startFile("<IdInfo/>"), -1);
  const Texts expected =
      startTrail({"stt.cpp sttParseXmlFile: [ptHeadNode = xmlGetChileNode(ptXmlRoot)] is NULL",
                  "cvt_identify.cpp IdInfoInit: Parse Xml File To Identify Info Struct Err!!"});
  EXPECT_EQ(head(expected), expected);
  EXPECT_EQ(nGRet, -1);
}

TEST_F(Files, WithAnUnknownMessageKeepTheEntriesBeforeIt) {
  EXPECT_EQ(start({{"Order", {{"01", "bill"}}}, {"Nobody", {}}, {"Invoice", {{"01", "bill"}}}}), -1);
  const Texts expected = startTrail({"cvt_identify.cpp IdInfoInit: Message [Nobody] is not find !!"});
  EXPECT_EQ(head(expected), expected);
  EXPECT_NE(cvtGetMsg(cs("Order"))->pIdInfo, nullptr);
  EXPECT_EQ(cvtGetMsg(cs("Invoice"))->pIdInfo, nullptr);
}

TEST_F(Files, WithAnUnknownConverterFailWithAWholeTrail) {
  EXPECT_EQ(start({{"Order", {{"01", "nobody"}}}}), -1);
  const std::string sFile = config.path("idinfo/choice.xml");
  const Texts expected = startTrail(
      {"cvt_identify.cpp sttMakeIdCvtInfo: p->ptConverter = cvtGetCvt(psCvtName) is Err!!",
       "stt.cpp place: File[" + sFile + "] Line[1] Element[IdCvtInfo]",
       "cvt_identify.cpp sttParseXmlIdMsgInfo: IdCvtInfo * ptIdCvtInfo = sttParseXmlStruct(ptXmlNode, "
       "\"IdCvtInfo\", \"ptIdCvtInfo\", sttParseXmlIdCvtInfo) is Err!!",
       "stt.cpp sttParseXmlFile: parse xml[IdInfo)" + sFile + "] faile",
       "cvt_identify.cpp IdInfoInit: Parse Xml File To Identify Info Struct Err!!"});
  EXPECT_EQ(head(expected), expected);
  EXPECT_EQ(cvtGetMsg(cs("Order"))->pIdInfo, nullptr);
}

TEST_F(Files, NameTheConverterAsTheRegistryDoes) {
  ASSERT_EQ(start({{"Order", {{"01", "bill"}}}}), 0);
  nGRet = -1;  // of an earlier failure
  const IdCvtInfo *const pt = sttNewIdCvtInfo(cs("01"), cs("bill"), nullptr);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(pt->ptConverter, cvtGetCvt(cs("bill")));
  EXPECT_EQ(sttNewIdCvtInfo(cs("01"), cs("Bill"), nullptr), nullptr);
  EXPECT_EQ(sttNewIdCvtInfo(cs("01"), nullptr, nullptr), nullptr);
  EXPECT_EQ(nGRet, -1);
}

TEST_F(Files, TakeAMessagesPairsAwayByALaterEntryWithoutAny) {
  ASSERT_EQ(start({{"Order", {{"01", "bill"}}}, {"Order", {}}}), 0);
  EXPECT_EQ(cvtGetMsg(cs("Order"))->pIdInfo, nullptr);
  EXPECT_EQ(converted("01"), "-1");
}

TEST_F(Files, MayNameAMessageWithoutPairs) {
  ASSERT_EQ(start({{"Order", {}}}), 0);
  EXPECT_EQ(cvtGetMsg(cs("Order"))->pIdInfo, nullptr);
  EXPECT_EQ(converted("01"), "-1");
}

}  // namespace

// What the bound records make of names, lists and files, and the trails that their failures leave.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "binding_fixture.h"
#include "bound_records_config.h"
#include "log_capture.h"
#include "xml_text.h"

namespace {

using test::cs;
using test::logTexts;
using test::untyped;
using test::Xml;
using Texts = std::vector<std::string>;

// --- Make steps --------------------------------------------------------------------------------------------

using MakeStep = test::BoundRecords;

TEST_F(MakeStep, SetsDefaults) {
  const Message *const ptNode = sttNewMessage(nullptr, 3, nullptr, nullptr);
  EXPECT_EQ(ptNode->nIndex, -1);
  const LoopType *const ptLoop = sttNewLoopType(nullptr, nullptr);
  EXPECT_EQ(ptLoop->nFieldNum, -1);
  EXPECT_EQ(ptLoop->nCurrentTime, -1);
  EXPECT_EQ(ptLoop->pptMessageIdx, nullptr);
  EXPECT_EQ(ptLoop->nLoopNumIndex, -1);
}

TEST_F(MakeStep, SetsTheDefaultsOfADefinition) {
  Msg msg;
  std::memset(&msg, 0x55, sizeof msg);
  ASSERT_EQ(sttMakeMsg(&msg, cs("M"), nullptr, nullptr, nullptr, nullptr, nullptr), &msg);
  EXPECT_EQ(msg.psMsgDesc, nullptr);
  EXPECT_EQ(msg.psType, nullptr);
  EXPECT_EQ(msg.nFieldNum, -1);
  EXPECT_EQ(msg.nValueNum, -1);
  EXPECT_EQ(msg.fGen, nullptr);
  EXPECT_EQ(msg.fParse, nullptr);
  EXPECT_EQ(msg.fGetValue, nullptr);
  EXPECT_EQ(msg.fSetValue, nullptr);
  EXPECT_EQ(msg.pptMessageIdx, nullptr);
}

TEST_F(MakeStep, ResolvesNames) {
  EXPECT_EQ(sttNewFunction(cs("text2"), nullptr)->fCvtFunc, test::anyFunction);
  EXPECT_EQ(sttNewNode(0, cs("a"))->nIdx, 0);
  EXPECT_EQ(sttNewNode(2, nullptr)->nIdx, -1);
  EXPECT_EQ(sttNewIdFunc(cs("text2"), nullptr, nullptr)->fIdFunction, test::anyStep);
  EXPECT_EQ(sttNewIdCvtInfo(cs(""), cs("text3"), nullptr)->ptConverter, cvtGetCvt(cs("text3")));
}

TEST_F(MakeStep, ThatFailsIsQuotedAndMakesNoRecord) {
  EXPECT_EQ(sttNewFunction(cs("none"), nullptr), nullptr);
  EXPECT_EQ(logTexts(),
            (Texts{"Funct[none] is not find!!", "p->fCvtFunc = MakeFunction(psName, ptArgs) is Err!!"}));
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(test::logLines().back().sFunction, "sttMakeFunction");
  test::clearLog();
  EXPECT_EQ(sttNewNode(0, cs("none")), nullptr);
  EXPECT_EQ(logTexts(),
            (Texts{"Get Message Field[0:none] err!!", "p->nIdx = GetNodeIdx(nType, psName) is Err!!"}));
  test::clearLog();
  EXPECT_EQ(sttNewIdFunc(cs("none"), nullptr, nullptr), nullptr);
  EXPECT_EQ(logTexts(),
            (Texts{"IdFunc[none] Not Find!!", "p->fIdFunction = GetIdFunc(psFunctName) is Err!!"}));
  test::clearLog();
  EXPECT_EQ(sttNewIdCvtInfo(cs(""), cs("none"), nullptr), nullptr);
  EXPECT_EQ(logTexts(), Texts{"p->ptConverter = cvtGetCvt(psCvtName) is Err!!"});
  EXPECT_EQ(nGRet, -1);
}

TEST_F(MakeStep, BeginsWithAClearFlag) {
  nGRet = -1;
  EXPECT_NE(sttNewFunction(cs("text2"), nullptr), nullptr);
  EXPECT_EQ(nGRet, 0);
}

// --- Lists -------------------------------------------------------------------------------------------------

using PlugList = test::BoundRecords;

// Any library with a function that takes an element and answers 0 will do for a plug-in.
std::string plug(const std::string &sId, const std::string &sName) {
  return "<Plug __ID='" + sId + "' psName='" + sName +
         "' psPath='libcvt2.so' psFunction='cvtConvertMessage'/>";
}

std::string namesIn(const std::string &sPlugs) {
  const Xml xml("<PlugInfo>" + sPlugs + "</PlugInfo>");
  const PlugInfo *const ptInfo = sttParseXmlPlugInfo(xml.root(), cs("PlugInfo"));
  if (ptInfo == nullptr) return "null";
  std::string sNames;
  for (const Plug *pt = ptInfo->ptPlugs; pt != nullptr; pt = pt->ptNext) sNames += pt->psName;
  return sNames;
}

TEST_F(PlugList, StandsInDocumentOrder) {
  EXPECT_EQ(namesIn(plug("ptPlugs", "a") + plug("ptNext", "b") + plug("ptNext", "c")), "abc");
}

TEST_F(PlugList, EndsAtAnotherId) {
  EXPECT_EQ(namesIn(plug("ptPlugs", "a") + plug("ptNext", "b") + plug("x", "c")), "ab");
}

TEST_F(PlugList, EndsAtAComment) {
  EXPECT_EQ(namesIn(plug("ptPlugs", "a") + "<!--c-->" + plug("ptNext", "b")), "a");
}

TEST_F(PlugList, ItsOwnStepDecidesWhetherAPathIsNeeded) {
  EXPECT_EQ(namesIn("<Plug __ID='ptPlugs' psName='a'/>"), "null");  // no such file in the base path
  ASSERT_EQ(logTexts().size(), 3U);
  EXPECT_EQ(logTexts()[1], "void * ptInfo = GetPlug(psName, psPath, psFunction, ptXmlNode) is Err!!");
}

TEST_F(PlugList, AFailureInsideIsQuotedByEveryStepAroundIt) {
  EXPECT_EQ(namesIn(plug("ptPlugs", "a") + "<Plug __ID='ptNext'/>"), "null");
  EXPECT_EQ(
      logTexts(),
      (Texts{
          "Plug Name Is Null!!", "void * ptInfo = GetPlug(psName, psPath, psFunction, ptXmlNode) is Err!!",
          "struct Plug * ptNext = sttParseXmlNext(ptXmlNode, \"Plug\", \"ptNext\", sttParseXmlPlug) is Err!!",
          "Plug * ptPlugs = sttParseXmlStruct(ptXmlNode, \"Plug\", \"ptPlugs\", sttParseXmlPlug) is Err!!"}));
}

// --- Trails ------------------------------------------------------------------------------------------------

using Trail = test::BoundRecords;

TEST_F(Trail, AFailureInAFileNamesTheInnermostElementOnce) {
  m_tree.file("a b.xml",
              "<Convert>\n<Converter psSrcStructName='Known' psDstStructName='Known'>\n"
              "<Arg __ID='ptArgs' nType='6'>\n<Copy __ID='pInfo'>\n<Arg __ID='ptSrcArgs'>\n"
              "<Node __ID='pInfo' psName='none'/>\n</Arg></Copy></Arg></Converter></Convert>");
  EXPECT_EQ(
      sttParseXmlFile(m_tree.arg("a b.xml"), cs("Convert"), cs("Converter"), untyped(sttParseXmlConverter)),
      nullptr);
  const std::string sArg = "void * pInfo = sttParseXmlVoid(ptXmlNode, \"pInfo\") is Err!!";
  const std::string sFile = m_tree.path("a b.xml");
  EXPECT_EQ(
      logTexts(),
      (Texts{
          "Get Message Field[0:none] err!!", "p->nIdx = GetNodeIdx(nType, psName) is Err!!",
          "File[" + sFile + "] Line[6] Element[Node]", "Type[Node] Not Define", sArg,
          "Arg * ptSrcArgs = sttParseXmlStruct(ptXmlNode, \"Arg\", \"ptSrcArgs\", sttParseXmlArg) is Err!!",
          "Type[Copy] Not Define", sArg,
          "struct Arg * ptArgs = ParseArg(psSrcStructName, psDstStructName, ptXmlNode) is Err!!",
          "parse xml[Convert)" + sFile + "] faile"}));
}

TEST_F(Trail, EachOfTwoFailuresIsLocated) {
  m_tree.file("a.xml", "<Convert>\n<Function psName='none'/></Convert>");
  for (int i = 0; i < 2; ++i) {
    test::clearLog();
    sttParseXmlFile(m_tree.arg("a.xml"), cs("Convert"), cs("Function"), untyped(sttParseXmlFunction));
    EXPECT_TRUE(test::logged(1, "File[" + m_tree.path("a.xml") + "] Line[2] Element[Function]"));
  }
}

TEST_F(Trail, AnUnknownVoidTypeLeavesTheFieldNullAndTheRecordWhole) {
  const Xml xml("<Arg nType='5'><Nobody __ID='pInfo'/></Arg>");
  const Arg *const ptArg = sttParseXmlArg(xml.root(), cs("Arg"));
  ASSERT_NE(ptArg, nullptr);
  EXPECT_EQ(ptArg->nType, 5);
  EXPECT_EQ(ptArg->pInfo, nullptr);
  EXPECT_EQ(logTexts(), Texts{"Type[Nobody] Not Define"});
}

TEST_F(Trail, AFailedWriteIsQuotedOutwards) {
  static char nobody;
  Copy *const ptCopy = sttNewCopy(sttNewArg(5, &nobody, nullptr), nullptr);
  const Xml xml("<r><Copy/></r>");
  EXPECT_EQ(sttGenXmlCopy(ptCopy, xml.child(), cs("Copy")), nullptr);
  EXPECT_EQ(
      logTexts(),
      (Texts{
          "Struct Type Not Define!!", "sttGenerateXmlVoid(ptXmlNode, p->pInfo, \"pInfo\") is Err!!",
          "sttGenerateXmlStruct(ptXmlNode, p->ptSrcArgs, \"ptSrcArgs\", \"Arg\", sttGenXmlArg) is Err!!"}));
}

TEST_F(Trail, AFileWrittenReadsBackAsTheSameRecord) {
  SetOffsetArgs *const ptArgs = sttNewSetOffsetArgs('d', -4, 1);
  ASSERT_EQ(sttGenXmlFile(m_tree.arg("a.xml"), ptArgs, cs("Root"), cs("SetOffsetArgs"),
                          untyped(sttGenXmlSetOffsetArgs)),
            0);
  const auto *const ptRead = static_cast<SetOffsetArgs *>(sttParseXmlFile(
      m_tree.arg("a.xml"), cs("Root"), cs("SetOffsetArgs"), untyped(sttParseXmlSetOffsetArgs)));
  ASSERT_NE(ptRead, nullptr);
  EXPECT_EQ(std::memcmp(ptRead, ptArgs, sizeof *ptArgs), 0);
}

}  // namespace

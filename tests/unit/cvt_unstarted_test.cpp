// Calls before a start and after an end: each answers, most with a line, and none needs what a start makes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "config_tree.h"
#include "cvt.h"
#include "log_capture.h"

using test::cs;
using test::logTexts;
using Texts = std::vector<std::string>;

namespace {

int constant(Value *ptResult, int, Value **, MemPort ptMemNode) {
  return cvtDumpValue(ptResult, cs("x"), 1, ptMemNode);
}

class Unstarted : public testing::Test {
 protected:
  void TearDown() override { cvtEnd(); }
};

// A converter whose one rule copies what the function "constant" gives into the first slot.
Converter *constantConverter() {
  Function *const ptFunction = sttNewFunction(cs("constant"), nullptr);
  auto *const ptSlot = static_cast<Node *>(cvtMemMalloc(sizeof(Node)));
  ptSlot->nType = 1;
  Arg *const ptFrom = sttNewArg(CVT_TYPE_FUNC, ptFunction, nullptr);
  Arg *const ptTo = sttNewArg(CVT_TYPE_DST, ptSlot, nullptr);
  Arg *const ptRule = sttNewArg(CVT_TYPE_COPY, sttNewCopy(ptFrom, ptTo), nullptr);
  return sttNewConverter(cs("made"), cs("In"), cs("Out"), ptRule);
}

}  // namespace

TEST_F(Unstarted, ALookUpOfAConverterSaysWhatIsMissing) {
  EXPECT_EQ(cvtGetCvt(cs("any")), nullptr);
  EXPECT_EQ(logTexts(), Texts{"[gptCvtGlobalInfo] is NULL"});
}

TEST_F(Unstarted, ADefinitionIsReadWithoutAnyFormat) {
  const std::string sText =
      "<any><Msg psMsgName='One'><Message __ID='ptHead' psNodeName='A'><StructAttr __ID='ptStructAttr'/>"
      "</Message></Msg></any>";
  void *const ptDoc = xmlParse(cs(sText.c_str()), static_cast<int>(sText.size()));
  void *const ptElement = xmlGetChileNode(xmlGetHeadNode(ptDoc));
  for (char *const psFormat : {cs("any"), static_cast<char *>(nullptr)}) {
    const auto *const ptMsg = static_cast<Msg *>(cvtSttInitMessage(cs("One.xml"), psFormat, ptElement));
    ASSERT_NE(ptMsg, nullptr);
    EXPECT_EQ(ptMsg->nFieldNum, 1);
    EXPECT_EQ(ptMsg->fGen, nullptr);
  }
  xmlDocFree(ptDoc);
}

TEST_F(Unstarted, AFormatsNameMayBeLeftOut) {
  cvtFmtAddPlug(
      cs("any"), [](void *, char *) -> void * { return nullptr; },
      [](void *, void *, char *, char *) -> void * { return nullptr; }, [](Msg *) { return -1; });
  Msg *const ptMsg = sttNewMsg(cs("One"), nullptr, nullptr, nullptr, nullptr, nullptr);
  void *const ptNode = xmlMadeNode(cs("Msg"));
  Message *const ptHead =
      sttNewMessage(cs("A"), 0, nullptr, sttNewStructAttr(0, nullptr, nullptr, nullptr, nullptr, nullptr));
  ptMsg->ptHead = ptHead;
  ASSERT_NE(sttGenXmlMsg(ptMsg, ptNode, cs("Msg")), nullptr);
  EXPECT_NE(cvtSttInitMessage(cs("One.xml"), nullptr, ptNode), nullptr);
  EXPECT_EQ(cvtSttInitMessage(cs("One.xml"), cs("any"), ptNode), nullptr);
  xmlNodeFree(ptNode);
}

TEST_F(Unstarted, AConverterMadeByHandRuns) {
  cvtConvertAddFunction(cs("constant"), constant);
  Converter *const ptConverter = constantConverter();
  gnMaxValueNum = 1;
  MemNode *const ptNode = cvtMemNewNode();
  ValueList *const ptDst = cvtGetValueList(1);
  EXPECT_EQ(cvtConvert(cvtGetValueList(1), ptDst, ptConverter, ptNode), 0);
  EXPECT_STREQ(cvtGetListValue(ptDst, 0)->psValue, "x");
}

TEST_F(Unstarted, AConverterThatOutlivesItsEndIsRefused) {
  cvtConvertAddFunction(cs("constant"), constant);
  Converter *const ptConverter = constantConverter();
  gnMaxValueNum = 1;
  ValueList *const ptSrc = cvtGetValueList(1);
  ValueList *const ptDst = cvtGetValueList(1);
  MemNode *const ptNode = cvtMemNewNode();
  cvtCvtEnd();
  test::clearLog();
  EXPECT_EQ(cvtConvert(ptSrc, ptDst, ptConverter, ptNode), -1);
  ASSERT_FALSE(logTexts().empty());
  EXPECT_EQ(logTexts().front(), "[gptCvtGlobalInfo] is NULL");
}

TEST_F(Unstarted, ALoopsIndexIsLookedForInSomeIndex) {
  Node tNode{};
  Arg *const ptArg = sttNewArg(CVT_TYPE_SRC, &tNode, nullptr);
  EXPECT_EQ(GetLoopMessageIndex(ptArg, nullptr), nullptr);
  EXPECT_EQ(logTexts(), Texts{"[pptIndex] is NULL"});
}

TEST_F(Unstarted, ANodeWithoutAStructIsNoLoop) {
  Message tMessage{};
  Message *apIndex[] = {&tMessage, nullptr};
  Node tNode{};
  Arg *const ptArg = sttNewArg(CVT_TYPE_SRC, &tNode, nullptr);
  EXPECT_EQ(GetLoopMessageIndex(ptArg, apIndex), nullptr);
  EXPECT_FALSE(logTexts().empty());
}

TEST_F(Unstarted, APlugInThatWasNeverOpenedIsNotClosed) {
  gptPlugInfo = sttNewPlugInfo(nullptr, sttNewPlug(cs("made"), nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(cvtPlugEnd(), 0);
  EXPECT_EQ(gptPlugInfo, nullptr);
}

TEST_F(Unstarted, AListWithoutSlotsGoesBack) {
  gnMaxValueNum = 1;
  ValueList *const ptList = cvtGetValueList(0);
  EXPECT_EQ(cvtFreeValue(ptList), 0);
  EXPECT_EQ(gptFreeValue, ptList);
}

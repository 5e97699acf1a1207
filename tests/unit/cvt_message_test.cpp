// The registry of definitions and formats, and the "Message" section.
#include "cvt_message.h"

#include <gtest/gtest.h>

#include "definition_xml.h"
#include "log_capture.h"

using namespace test;
using namespace test::model;
using Names = std::vector<std::string>;

namespace {

class Registry : public ::testing::Test {
 protected:
  // The message names from the newest on.
  static Names registered() {
    Names all;
    for (const StringList *pt = gptFmtGlobalInfo->ptMsgList; pt != nullptr; pt = pt->ptNext) {
      all.emplace_back(pt->psString);
    }
    return all;
  }

  Definitions m_definitions;
};

class MessageSection : public Registry {
 protected:
  void SetUp() override { Definitions::format("flat"); }

  std::string order() const { return m_definitions.path("msg/Order.xml"); }
};

std::vector<sttFncParseVoid> dispatchers() {
  std::vector<sttFncParseVoid> all;
  for (const FuncList *pt = gptSttInfo->ptVoidFunction; pt != nullptr; pt = pt->ptNext) {
    all.push_back(pt->fpParse);
  }
  return all;
}

// A record of a plug-in's own, and another plug-in's dispatcher of the same types.
struct CVT_RECORD Own {
  int nWho;
};
template <int nWho>
void *parseOwn(void *, char *psType) {
  if (std::string(psType) != "Own" && std::string(psType) != "Value") return nullptr;
  auto *const pt = static_cast<Own *>(cvtMemMalloc(sizeof(Own)));
  pt->nWho = nWho;
  return pt;
}

int refuse(Msg *) {
  return -1;
}

}  // namespace

// --- Formats
// -------------------------------------------------------------------------------------------------

TEST_F(Registry, IsMadeEmptyByTheFirstFormat) {
  ASSERT_EQ(gptFmtGlobalInfo, nullptr);
  EXPECT_EQ(cvtFmtAddPlug(cs("flat"), Definitions::noRecord, Definitions::noWriter, Definitions::accept), 0);
  ASSERT_NE(gptFmtGlobalInfo, nullptr);
  EXPECT_EQ(gptFmtGlobalInfo->ptCvtFmtArgs, nullptr);
  EXPECT_EQ(gptFmtGlobalInfo->ptMsgList, nullptr);
  EXPECT_EQ(gptFmtGlobalInfo->psCurrentPath, nullptr);
  EXPECT_EQ(gptFmtGlobalInfo->psBasePath, nullptr);
  EXPECT_STREQ(gptFmtGlobalInfo->ptInitList->psString, "flat");
  EXPECT_EQ(gptFmtGlobalInfo->ptInitList->ptInfo, reinterpret_cast<void *>(Definitions::accept));
}

TEST_F(Registry, AFormatIsAFileTypeWithThreePairsOfDispatchers) {
  Definitions::format("flat");
  EXPECT_STREQ(gptSttInfo->psTypeName, "flat");
  EXPECT_EQ(gptSttInfo->fParseFunction, cvtSttInitMessage);
  EXPECT_EQ(dispatchers(), (std::vector<sttFncParseVoid>{sttParseVoidcvt_message, sttParseVoidcvt_struct_loop,
                                                         Definitions::noRecord}));
  EXPECT_EQ(gptSttInfo->ptVoidFunction->fpGen, sttGenVoidcvt_message);
  EXPECT_EQ(gptSttInfo->ptVoidFunction->ptNext->fpGen, sttGenVoidcvt_struct_loop);
  EXPECT_EQ(gptSttInfo->ptVoidFunction->ptNext->ptNext->fpGen, Definitions::noWriter);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(Registry, AFormatRegisteredTwiceIsOneTypeWithBothSetsOfDispatchers) {
  cvtFmtAddPlug(cs("flat"), parseOwn<1>, Definitions::noWriter, refuse);
  cvtFmtAddPlug(cs("flat"), parseOwn<2>, Definitions::noWriter, Definitions::accept);
  EXPECT_EQ(gptSttInfo->ptNext, nullptr);
  EXPECT_EQ(dispatchers(), (std::vector<sttFncParseVoid>{sttParseVoidcvt_message, sttParseVoidcvt_struct_loop,
                                                         parseOwn<2>, sttParseVoidcvt_message,
                                                         sttParseVoidcvt_struct_loop, parseOwn<1>}));
}

TEST_F(Registry, TheLaterInitialiserOfAFormatIsTheOneThatRuns) {
  Definitions::format("flat", refuse);
  Definitions::format("flat");
  m_definitions.add("Order", {field("A")});
  EXPECT_NE(m_definitions.load(), nullptr);
  Definitions::format("flat", refuse);
  m_definitions.file("more/Later.xml", definition("Later", {field("A")}));
  EXPECT_EQ(m_definitions.load({"more"}), nullptr);
  EXPECT_TRUE(logged(1, "Format [flat] Init Err!!"));
}

TEST_F(Registry, ANullDispatcherIsLeftOutAndRegistrationGoesOn) {
  EXPECT_EQ(cvtFmtAddPlug(cs("flat"), nullptr, Definitions::noWriter, Definitions::accept), 0);
  EXPECT_EQ(logTexts(), (Names{"[fpParseVoid] is NULL"}));
  EXPECT_EQ(dispatchers(),
            (std::vector<sttFncParseVoid>{sttParseVoidcvt_message, sttParseVoidcvt_struct_loop}));
  EXPECT_NE(gptFmtGlobalInfo->ptInitList, nullptr);
}

TEST_F(Registry, ANullWriterLeavesTheWholePairOut) {
  EXPECT_EQ(cvtFmtAddPlug(cs("flat"), Definitions::noRecord, nullptr, Definitions::accept), 0);
  EXPECT_EQ(logTexts(), (Names{"[fpGenVoid] is NULL"}));
  EXPECT_EQ(dispatchers(),
            (std::vector<sttFncParseVoid>{sttParseVoidcvt_message, sttParseVoidcvt_struct_loop}));
}

TEST_F(Registry, ANullInitialiserEmptiesTheListOfInitialisers) {
  Definitions::format("flat", refuse);
  EXPECT_EQ(cvtFmtAddPlug(cs("other"), Definitions::noRecord, Definitions::noWriter, nullptr), 0);
  EXPECT_EQ(logTexts(), (Names{"[ptInfo] is NULL"}));
  EXPECT_EQ(gptFmtGlobalInfo->ptInitList, nullptr);
  m_definitions.add("Order", {field("A")});
  EXPECT_NE(m_definitions.load(), nullptr);  // nobody refuses any more
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
}

TEST_F(Registry, AFormatRegisteredAfterANullInitialiserIsInitialised) {
  Definitions::format("lost");
  cvtFmtAddPlug(cs("other"), Definitions::noRecord, Definitions::noWriter, nullptr);
  Definitions::format("flat", refuse);
  m_definitions.add("Order", {field("A")});
  EXPECT_EQ(m_definitions.load(), nullptr);
}

TEST_F(Registry, AFormatWithoutANameIsRefusedStepByStep) {
  EXPECT_EQ(cvtFmtAddPlug(nullptr, Definitions::noRecord, Definitions::noWriter, Definitions::accept), 0);
  EXPECT_EQ(logTexts(), (Names{"[psType] is NULL", "[psType] is NULL", "[psType] is NULL", "[psType] is NULL",
                               "[psString] is NULL"}));
}

TEST_F(Registry, VoidFieldsHoldRecordsOfThePlugInTheLoopAndTheDefinition) {
  cvtFmtAddPlug(cs("flat"), parseOwn<7>, Definitions::noWriter, Definitions::accept);
  m_definitions.file("msg/Order.xml",
                     "<flat><Msg psMsgName='Order'><Own __ID='pInfo'/><Message __ID='ptHead' psNodeName='A'>"
                     "<FormatAttr __ID='ptFormAttr'><Value __ID='pInfo' psValue='v'/></FormatAttr>"
                     "<StructAttr __ID='ptStructAttr'><LoopType __ID='pInfo' psLoopNumName='n'/></StructAttr>"
                     "</Message></Msg></flat>");
  ASSERT_NE(m_definitions.load(), nullptr);
  const Msg *const pt = cvtGetMsg(cs("Order"));
  EXPECT_EQ(static_cast<Own *>(pt->pInfo)->nWho, 7);
  EXPECT_STREQ(static_cast<Value *>(pt->ptHead->ptFormAttr->pInfo)->psValue, "v");
  EXPECT_STREQ(static_cast<LoopType *>(pt->ptHead->ptStructAttr->pInfo)->psLoopNumName, "n");
}

TEST_F(Registry, TheNewestDispatcherOfAFormatIsAskedFirst) {
  cvtFmtAddPlug(cs("flat"), parseOwn<1>, Definitions::noWriter, Definitions::accept);
  cvtFmtAddPlug(cs("flat"), parseOwn<2>, Definitions::noWriter, Definitions::accept);
  m_definitions.file("msg/Order.xml",
                     "<flat><Msg psMsgName='Order'><Own __ID='pInfo'/><Message __ID='ptHead' psNodeName='A'>"
                     "<StructAttr __ID='ptStructAttr'/></Message></Msg></flat>");
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(static_cast<Own *>(cvtGetMsg(cs("Order"))->pInfo)->nWho, 2);
}

// --- Look-up
// -------------------------------------------------------------------------------------------------

TEST_F(Registry, LookUpBeforeAnyRegistrationIsLogged) {
  EXPECT_EQ(cvtGetMsg(cs("Order")), nullptr);
  EXPECT_EQ(logTexts(), (Names{"[gptFmtGlobalInfo] is NULL"}));
}

TEST_F(MessageSection, LookUpIsExactAndSilent) {
  m_definitions.add("Order", {field("A")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
  for (const char *ps : {"order", "ORDER", "Orde", "Order ", ""}) EXPECT_EQ(cvtGetMsg(cs(ps)), nullptr) << ps;
  EXPECT_EQ(cvtGetMsg(nullptr), nullptr);
  EXPECT_TRUE(logTexts().empty());
}

TEST_F(MessageSection, TheNewestDefinitionOfANameIsFound) {
  m_definitions.file("one/First.xml", definition("Order", {field("A")}));
  m_definitions.file("two/Second.xml", definition("Order", {field("A"), field("B")}));
  ASSERT_NE(m_definitions.load({"one", "two"}), nullptr);
  EXPECT_EQ(cvtGetMsg(cs("Order"))->nFieldNum, 2);
  EXPECT_EQ(registered(), (Names{"Order", "Order"}));
}

TEST_F(MessageSection, EndForgetsTheRegistryAndBothFreeListsButNotTheLargestSize) {
  m_definitions.add("Order", {field("A"), field("B")});
  ASSERT_NE(m_definitions.load(), nullptr);
  ValueList *const ptList = cvtGetValueList(2);
  ASSERT_NE(cvtNewLoopValueList(ptList, 0, 1), nullptr);
  EXPECT_EQ(cvtFreeValue(ptList), 0);
  ASSERT_NE(gptFreeValue, nullptr);
  ASSERT_NE(gptLoopValue, nullptr);
  EXPECT_EQ(cvtFmtEnd(), 0);
  EXPECT_EQ(gptFmtGlobalInfo, nullptr);
  EXPECT_EQ(gptFreeValue, nullptr);
  EXPECT_EQ(gptLoopValue, nullptr);
  EXPECT_EQ(gnMaxValueNum, 2);
  EXPECT_EQ(cvtGetMsg(cs("Order")), nullptr);
  EXPECT_EQ(cvtFmtEnd(), 0);
}

TEST_F(MessageSection, ARegistryMadeAfterTheEndKnowsNothingOfTheOneBefore) {
  m_definitions.add("Order", {field("A")});
  ASSERT_NE(m_definitions.load(), nullptr);
  cvtEnd();
  Definitions::format("flat");
  EXPECT_EQ(cvtGetMsg(cs("Order")), nullptr);
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
}

// --- The section
// ---------------------------------------------------------------------------------------------

TEST_F(MessageSection, ReturnsTheRegistryWithItsArguments) {
  m_definitions.add("Order", {field("A")});
  EXPECT_EQ(m_definitions.load({"msg"}, "gnMaxValue='12' gnMaxLoop='1500'"), gptFmtGlobalInfo);
  const CvtFmtArgs *const pt = gptFmtGlobalInfo->ptCvtFmtArgs;
  EXPECT_EQ(pt->gnMaxValue, 12);
  EXPECT_EQ(pt->gnMaxLoop, 1500);
  EXPECT_STREQ(pt->ptMsgList->psPath, "msg");
  EXPECT_EQ(pt->ptMsgList->ptNext, nullptr);
  EXPECT_EQ(nGRet, 0);
}

TEST_F(MessageSection, EndsWithoutACurrentPath) {
  m_definitions.add("Order", {field("A")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(gptFmtGlobalInfo->psCurrentPath, nullptr);
  EXPECT_EQ(gptFmtGlobalInfo->psBasePath, nullptr);
}

TEST_F(MessageSection, WithoutDirectoriesPreparesValueListsOnly) {
  ASSERT_NE(m_definitions.load({}, "gnMaxValue='5'"), nullptr);
  EXPECT_EQ(gptFmtGlobalInfo->ptMsgList, nullptr);
  ASSERT_NE(gptFreeValue, nullptr);
  EXPECT_EQ(gptFreeValue->nMax, 5);
  EXPECT_TRUE(logTexts().empty());
}

TEST_F(MessageSection, WithoutAnElementLoadsNothing) {
  EXPECT_EQ(cvtFmtInit(nullptr, cs("Message")), gptFmtGlobalInfo);
  EXPECT_NE(gptFmtGlobalInfo, nullptr);
  EXPECT_EQ(logTexts(), (Names{"Warning No Value num!!"}));
}

TEST_F(Registry, TheSectionMakesTheRegistryWhenNoFormatDid) {
  EXPECT_NE(m_definitions.load({}, "gnMaxValue='1'"), nullptr);
  EXPECT_NE(gptFmtGlobalInfo, nullptr);
}

TEST_F(MessageSection, LoadsItsDirectoriesInTheirOrder) {
  m_definitions.file("two/B.xml", definition("B", {field("A")}));
  m_definitions.file("one/A.xml", definition("A", {field("A")}));
  m_definitions.file("three/C.xml", definition("C", {field("A")}));
  ASSERT_NE(m_definitions.load({"two", "one", "three"}), nullptr);
  EXPECT_EQ(registered(), (Names{"C", "A", "B"}));
  EXPECT_EQ(logTexts(5), (Names{"Enter [two] ... ", "Load File [B.xml] ok", "Enter [one] ... ",
                                "Load File [A.xml] ok", "Enter [three] ... ", "Load File [C.xml] ok"}));
}

TEST_F(MessageSection, ADirectoryThatDoesNotExistHoldsNoDefinitions) {
  m_definitions.add("Order", {field("A")});
  EXPECT_NE(m_definitions.load({"nowhere", "msg"}), nullptr);
  EXPECT_EQ(logTexts(),
            (Names{"Open Dir [" + m_definitions.path("nowhere") + "] err:[No such file or directory]!!"}));
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
}

TEST_F(MessageSection, TheFirstFailingDirectoryEndsItAndKeepsWhatWasRegistered) {
  m_definitions.file("one/A.xml", definition("A", {field("A")}));
  m_definitions.file("two/B.xml", definition("B", {}));
  m_definitions.file("three/C.xml", definition("C", {field("A")}));
  EXPECT_EQ(m_definitions.load({"one", "two", "three"}), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_TRUE(
      loggedInOrder({"Init[B.xml] err !!", "Message Parse Dir[two] err!!", "cvt Message Parse Err!!"}));
  EXPECT_EQ(logTexts().back(), "cvt Message Parse Err!!");
  EXPECT_EQ(registered(), (Names{"A"}));
  EXPECT_STREQ(gptFmtGlobalInfo->psCurrentPath, "two");
  EXPECT_EQ(gptFreeValue, nullptr);
}

TEST_F(MessageSection, AFileOfAnUnknownFormatFails) {
  m_definitions.file("msg/Order.xml", "<strange>" + msgXml("Order", {field("A")}) + "</strange>");
  EXPECT_EQ(m_definitions.load(), nullptr);
  EXPECT_EQ(logTexts(), (Names{"SttInfo no Type[strange] Info!!", "File[" + order() + "] Parse Err!!",
                               "Parse File[" + order() + "] Err!!", "Init[Order.xml] err !!",
                               "Message Parse Dir[msg] err!!", "cvt Message Parse Err!!"}));
}

TEST_F(MessageSection, AFileThatIsNotXmlFailsWithItsLine) {
  m_definitions.file("msg/Order.xml", "<flat>\n<Msg></flat>");
  EXPECT_EQ(m_definitions.load(), nullptr);
  const Names texts = logTexts();
  ASSERT_EQ(texts.size(), 7U);
  EXPECT_EQ(texts[0], "File[" + order() + "] Parse err!!");
  EXPECT_NE(texts[1].find("line 2"), std::string::npos) << texts[1];
  EXPECT_EQ(texts[2], "File[" + order() + "] Parse Err!!");
}

TEST_F(MessageSection, AFileNamedAfterARegisteredMessageIsNotRead) {
  m_definitions.file("one/Order.xml", definition("Order", {field("A")}));
  m_definitions.file("two/Order.xml", "this is not XML");
  ASSERT_NE(m_definitions.load({"one", "two"}), nullptr);
  EXPECT_TRUE(logTexts().empty());
  EXPECT_EQ(logTexts(5), (Names{"Enter [one] ... ", "Load File [Order.xml] ok", "Enter [two] ... "}));
  EXPECT_EQ(registered(), (Names{"Order"}));
}

TEST_F(MessageSection, AFileNotNamedAfterItsMessageIsReadEachTime) {
  m_definitions.file("msg/Other.xml", definition("Order", {field("A")}));
  ASSERT_NE(m_definitions.load({"msg", "msg"}), nullptr);
  EXPECT_EQ(registered(), (Names{"Order", "Order"}));
}

TEST_F(MessageSection, TheBaseNameEndsAtTheLastDot) {
  m_definitions.file("one/Order.v2.xml", definition("Order.v2", {field("A")}));
  m_definitions.file("two/Order.v2.xmlx", "this is not XML");
  m_definitions.file("three/Order.xml", definition("Order", {field("A")}));
  ASSERT_NE(m_definitions.load({"one", "two", "three"}), nullptr);
  EXPECT_EQ(registered(), (Names{"Order", "Order.v2"}));
}

TEST_F(MessageSection, ADefinitionWithoutANameEmptiesTheRegistryAndStillSucceeds) {
  m_definitions.file("one/Order.xml", definition("Order", {field("A")}));
  m_definitions.file("two/Nameless.xml", "<flat><Msg>" + chainXml("ptHead", {field("A")}) + "</Msg></flat>");
  ASSERT_NE(m_definitions.load({"one", "two"}), nullptr);
  const Names texts = logTexts();
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_EQ(texts[0], "[psString] is NULL");
  EXPECT_EQ(texts[1], "Init Ipc Struct[(null)]: Add Msg to global define Err!!");
  EXPECT_EQ(gptFmtGlobalInfo->ptMsgList, nullptr);
  EXPECT_EQ(cvtGetMsg(cs("Order")), nullptr);
}

TEST_F(MessageSection, RefusesACapacityThatNoListCanHave) {
  EXPECT_EQ(m_definitions.load({}, "gnMaxValue='2147483647'"), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(logTexts(), (Names{"CvtFmtArgs gnMaxValue[2147483647] is more than [134217727]: write a smaller "
                               "number",
                               "cvt Message Get Args Err!!"}));
  EXPECT_EQ(m_definitions.load({}, "gnMaxLoop='134217728'"), nullptr);
  EXPECT_NE(m_definitions.load({}, "gnMaxLoop='134217727'"), nullptr);
}

// --- The section's records
// -----------------------------------------------------------------------------------

TEST_F(Registry, TheDispatcherOfTheSectionKnowsExactlyTwoTypes) {
  const Element element("<x psPath='p' gnMaxLoop='3'/>");
  EXPECT_STREQ(static_cast<PathList *>(sttParseVoid_cvt_message(element.get(), cs("PathList")))->psPath, "p");
  EXPECT_EQ(static_cast<CvtFmtArgs *>(sttParseVoid_cvt_message(element.get(), cs("CvtFmtArgs")))->gnMaxLoop,
            3);
  for (const char *ps : {"pathlist", "CvtFmtArg", "Msg", ""}) {
    EXPECT_EQ(sttParseVoid_cvt_message(element.get(), cs(ps)), nullptr) << ps;
    EXPECT_EQ(sttGenVoid_cvt_message(sttNewPathList(nullptr, nullptr), element.get(), cs("f"), cs(ps)),
              nullptr)
        << ps;
  }
  EXPECT_TRUE(logLines().empty());
}

TEST_F(Registry, TheArgumentsAreWrittenAsTheyAreRead) {
  const Element element("<CvtFmtArgs/>");
  PathList *const ptPaths = sttNewPathList(cs("one"), sttNewPathList(cs("two"), nullptr));
  ASSERT_NE(sttGenXmlCvtFmtArgs(sttNewCvtFmtArgs(10, 0, ptPaths), element.get(), cs("CvtFmtArgs")), nullptr);
  EXPECT_EQ(xmlGetNodeAttr(element.get(), cs("gnMaxLoop")), nullptr);
  const CvtFmtArgs *const pt = sttParseXmlCvtFmtArgs(element.get(), cs("CvtFmtArgs"));
  EXPECT_EQ(pt->gnMaxValue, 10);
  EXPECT_EQ(pt->gnMaxLoop, 0);
  EXPECT_STREQ(pt->ptMsgList->psPath, "one");
  EXPECT_STREQ(pt->ptMsgList->ptNext->psPath, "two");
  EXPECT_EQ(pt->ptMsgList->ptNext->ptNext, nullptr);
}

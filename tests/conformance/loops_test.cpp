// The loop structure: where its record may stand, how resolving ends, and what failures leave.
#include <gtest/gtest.h>

#include "definition_xml.h"
#include "log_capture.h"
#include "trail.h"

using namespace test;
using namespace test::model;
namespace {

const char *const kNoLoopType = "[ptLoopType = (LoopType *)ptMessage->ptStructAttr->pInfo] is NULL";

class Loops : public ::testing::Test {
 protected:
  static int resolve(Msg *ptMsg) { return cvtLoopSetLoopNumIndex(ptMsg->pptMessageIdx); }

  Msg *index(const std::vector<NodeXml> &nodes) {
    sttAddFuncVoid(sttParseVoidcvt_struct_loop, sttGenVoidcvt_struct_loop);
    const Element msg(msgXml("Order", nodes));
    Msg *const ptMsg = sttParseXmlMsg(msg.get(), cs("Msg"));
    EXPECT_EQ(cvtGenMessageInfo(ptMsg), 0);
    clearLog();
    return ptMsg;
  }

  static LoopType *typeOf(const Msg *ptMsg, const char *psName) {
    return static_cast<LoopType *>(nodeNamed(ptMsg->pptMessageIdx, psName)->ptStructAttr->pInfo);
  }

  Definitions m_definitions;
};

TEST_F(Loops, RecordMayStandInAnyVoidFieldOfADefinitionFile) {
  Definitions::format("flat");
  m_definitions.file(
      "msg/Order.xml",
      "<flat><Msg psMsgName='Order'><LoopType __ID='pInfo' psLoopNumName='a'/>"
      "<Message __ID='ptHead' psNodeName='A'><FormatAttr __ID='ptFormAttr'>"
      "<LoopType __ID='pInfo' psLoopNumName='b'><LoopType __ID='ptInfo' psLoopNumName='c'/></LoopType>"
      "</FormatAttr><StructAttr __ID='ptStructAttr'/></Message></Msg></flat>");
  ASSERT_NE(m_definitions.load(), nullptr);
  const Msg *const ptMsg = cvtGetMsg(cs("Order"));
  EXPECT_STREQ(static_cast<LoopType *>(ptMsg->pInfo)->psLoopNumName, "a");
  const auto *const ptType = static_cast<LoopType *>(ptMsg->ptHead->ptFormAttr->pInfo);
  EXPECT_STREQ(ptType->psLoopNumName, "b");
  EXPECT_STREQ(static_cast<LoopType *>(ptType->ptInfo)->psLoopNumName, "c");
}

TEST_F(Loops, UnknownCountFieldRefusedByTheFormatFailsTheSection) {
  Definitions::format("flat", resolve);
  m_definitions.add("Order", {field("N"), loop("L", "N", {loop("K", "Gone", {field("X")})})});
  EXPECT_EQ(m_definitions.load(), nullptr);
  const std::string sFile = m_definitions.path("msg/Order.xml");
  EXPECT_EQ(logTexts(),
            (Texts{"Loop Node[K] Loop Num Field[Gone] Node Not Define!!", "Format [flat] Init Err!!",
                   "File[" + sFile + "] Parse Err!!", "Parse File[" + sFile + "] Err!!",
                   "Init[Order.xml] err !!", "Message Parse Dir[msg] err!!", "cvt Message Parse Err!!"}));
}

TEST_F(Loops, ResolvingEndsAtTheFirstFailureAndKeepsWhatItHasFound) {
  Msg *const ptMsg = index({field("N"), loop("L", "N", {field("X")}), loop("M", "Gone", {field("Y")}),
                            counted("C", "N"), loop("O", "Lost", {field("Z")})});
  EXPECT_EQ(resolve(ptMsg), -3);
  EXPECT_EQ(logTexts(), Texts{"Loop Node[M] Loop Num Field[Gone] Node Not Define!!"});
  EXPECT_EQ(typeOf(ptMsg, "L")->nLoopNumIndex, 0);
  EXPECT_EQ(typeOf(ptMsg, "M")->nLoopNumIndex, -1);
  EXPECT_EQ(typeOf(ptMsg, "C")->nLoopNumIndex, -1);
}

TEST_F(Loops, ResolvingABodyThatLacksALoopTypeFailsTheWhole) {
  Msg *const ptMsg = index({field("N"), loop("L", "N", {field("M"), loop("K", "M", {field("X")})})});
  nodeNamed(ptMsg->pptMessageIdx, "K")->ptStructAttr->pInfo = nullptr;
  EXPECT_EQ(resolve(ptMsg), -1);
  EXPECT_EQ(logTexts(), Texts{"[ptLoopType = (LoopType *)pptIdx[i]->ptStructAttr->pInfo] is NULL"});
}

TEST_F(Loops, CountFieldWithAnEmptyNameIsLookedUpAsAnyOther) {
  NodeXml node = loop("L", "", {field("X")});
  node.sInfo = "<LoopType __ID='pInfo' psLoopNumName=''/>";
  EXPECT_EQ(resolve(index({field("N"), node})), -3);
  EXPECT_EQ(logTexts(), Texts{"Loop Node[L] Loop Num Field[] Node Not Define!!"});
}

TEST_F(Loops, CountFieldIsTheFirstOfItsName) {
  Msg *const ptMsg = index({field("A"), field("n"), loop("L", "N", {field("X")}), field("N")});
  ASSERT_EQ(resolve(ptMsg), 0);
  EXPECT_EQ(typeOf(ptMsg, "L")->nLoopNumIndex, 1);
}

TEST_F(Loops, CountFieldMayStandBehindItsLoopAndInItsBody) {
  Msg *const ptMsg = index({loop("L", "X", {field("X")}), loop("M", "N", {field("Y")}), field("N")});
  ASSERT_EQ(resolve(ptMsg), 0);
  EXPECT_EQ(typeOf(ptMsg, "L")->nLoopNumIndex, 1);  // the body's nodes stand in the enclosing index, too
  EXPECT_EQ(typeOf(ptMsg, "M")->nLoopNumIndex, 4);
}

TEST_F(Loops, BodyThatCannotBeNumberedLeavesItsCountAndNoIndex) {
  Msg *const ptMsg = index({loop("L", "", {field("X"), loop("K", "", {field("Y")})})});
  LoopType *const ptType = typeOf(ptMsg, "L");
  ptType->nFieldNum = -1;
  nodeNamed(ptMsg->pptMessageIdx, "K")->ptStructAttr->pInfo = nullptr;
  EXPECT_EQ(cvtLoopCreateIndex(ptMsg->ptHead), -1);
  EXPECT_EQ(logTexts(), (Texts{kNoLoopType, "Create Message index err: Message[K] create Loop index err!!",
                               "Message[L] Loop index create err!!"}));
  EXPECT_EQ(ptType->pptMessageIdx, nullptr);
  EXPECT_EQ(ptType->nFieldNum, 3);
}

TEST_F(Loops, BodyIndexThatWasNotMadeIsNullAndNobodySaysSo) {
  Msg *const ptMsg = index({field("N"), counted("C", "N")});
  EXPECT_EQ(cvtLoopGetIdx(nodeNamed(ptMsg->pptMessageIdx, "C")), nullptr);
  EXPECT_EQ(cvtLoopGetStruct(nodeNamed(ptMsg->pptMessageIdx, "C")), nullptr);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(Loops, WhatIsWrongIsToldByTheFunctionThatWasCalled) {
  Message *const pt =
      sttNewMessage(cs("L"), 0, nullptr, sttNewStructAttr(1, nullptr, nullptr, nullptr, nullptr, nullptr));
  ValueListInfo tInfo{};
  cvtLoopGetIdx(pt);
  cvtLoopGetStruct(pt);
  cvtLoopCreateIndex(pt);
  cvtLoopGetFieldNum(pt);
  cvtSetLoopCurrentTime(pt, 1);
  cvtGetLoopCurrentTime(pt);
  cvtLoopGetLoopNumValue(&tInfo, pt);
  cvtLoopSetLoopNumIndex(nullptr);
  const std::string sUnit = "cvt_struct_loop.cpp ";
  const std::string sNoType = std::string(": ") + kNoLoopType;
  EXPECT_EQ(trail(),
            (Texts{sUnit + "cvtLoopGetIdx: Message[L] Get Loop Type Err!!",
                   sUnit + "cvtLoopGetStruct" + sNoType, sUnit + "cvtLoopCreateIndex" + sNoType,
                   sUnit + "cvtLoopGetFieldNum" + sNoType, sUnit + "cvtSetLoopCurrentTime" + sNoType,
                   sUnit + "cvtGetLoopCurrentTime" + sNoType, sUnit + "cvtLoopGetLoopNumValue" + sNoType,
                   sUnit + "cvtLoopSetLoopNumIndex: [pptIdx] is NULL"}));
}

TEST_F(Loops, CursorIsOneForEveryMessageOfTheDefinition) {
  Definitions::format("flat");
  m_definitions.add("A", {group("G", {reference("Items")})});
  m_definitions.add("Items", {loop("Item", "", {field("Code")})});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(cvtSetLoopCurrentTime(nodeNamed(cvtGetMsg(cs("A"))->pptMessageIdx, "Item"), 3), 0);
  EXPECT_EQ(cvtGetLoopCurrentTime(cvtGetMsg(cs("Items"))->ptHead), 3);
}

}  // namespace

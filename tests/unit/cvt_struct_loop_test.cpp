// The loop structure: a loop's body index, its cursor, and its count field.
#include <gtest/gtest.h>

#include "cpu_time.h"
#include "definition_xml.h"
#include "log_capture.h"

using namespace test;
using namespace test::model;
using Names = std::vector<std::string>;

namespace {

const char *const f_sNoLoopType = "[ptLoopType = (LoopType *)ptMessage->ptStructAttr->pInfo] is NULL";

class LoopStructure : public ::testing::Test {
 protected:
  void SetUp() override { sttAddFuncVoid(sttParseVoidcvt_struct_loop, sttGenVoidcvt_struct_loop); }

  // Reads and indexes a definition.
  Message **index(const std::vector<NodeXml> &nodes) {
    const Element msg(msgXml("Order", nodes));
    Msg *const ptMsg = sttParseXmlMsg(msg.get(), cs("Msg"));
    EXPECT_EQ(cvtGenMessageInfo(ptMsg), 0);
    clearLog();
    return ptMsg->pptMessageIdx;
  }

  // A node on its own.
  static Message *node(const char *psName, int nKind, void *ptInfo) {
    return sttNewMessage(cs(psName), 0, nullptr,
                         sttNewStructAttr(nKind, ptInfo, nullptr, nullptr, nullptr, nullptr));
  }
  static LoopType *newLoopType(const char *psCount = nullptr) {
    return sttNewLoopType(const_cast<char *>(psCount), nullptr);
  }
  static LoopType *typeOf(const Message *ptNode) {
    return static_cast<LoopType *>(ptNode->ptStructAttr->pInfo);
  }

  Definitions m_definitions;  // ends the library
};

// A message with values: each slot holds the text given for it.
class Values {
 public:
  explicit Values(const std::vector<std::string> &texts) {
    gnMaxValueNum = static_cast<int>(texts.size());
    m_tInfo.ptValueList = cvtGetValueList(gnMaxValueNum);
    m_tInfo.ptMemNode = cvtMemNewNode();
    m_tInfo.nIndexOffset = 0;
    for (size_t i = 0; i < texts.size(); ++i) {
      cvtDumpValue(slot(static_cast<int>(i)), cs(texts[i].c_str()), static_cast<int>(texts[i].size()),
                   m_tInfo.ptMemNode);
    }
  }
  Value *slot(int nPos) { return cvtGetListValue(m_tInfo.ptValueList, nPos); }
  ValueListInfo *info() { return &m_tInfo; }

 private:
  ValueListInfo m_tInfo{};
};

}  // namespace

// --- The record
// ----------------------------------------------------------------------------------------------

TEST_F(LoopStructure, ANewLoopTypeIsUnresolved) {
  int nInfo = 0;
  const LoopType *const pt = sttNewLoopType(cs("Count"), &nInfo);
  EXPECT_EQ(pt->nFieldNum, -1);
  EXPECT_EQ(pt->nCurrentTime, -1);
  EXPECT_EQ(pt->pptMessageIdx, nullptr);
  EXPECT_EQ(pt->psLoopNumName, cvtStrDup(cs("Count")));
  EXPECT_EQ(pt->nLoopNumIndex, -1);
  EXPECT_EQ(pt->ptInfo, &nInfo);
}

TEST_F(LoopStructure, ALoopTypeReadsItsCountFieldAndInformation) {
  sttAddFuncVoid(sttParseVoidcvt_message, sttGenVoidcvt_message);
  const Element element(
      "<LoopType psLoopNumName='Count' nFieldNum='9' nCurrentTime='9' nLoopNumIndex='9'>"
      "<Value __ID='ptInfo' psValue='v'/></LoopType>");
  const LoopType *const pt = sttParseXmlLoopType(element.get(), cs("LoopType"));
  EXPECT_STREQ(pt->psLoopNumName, "Count");
  EXPECT_STREQ(static_cast<Value *>(pt->ptInfo)->psValue, "v");
  EXPECT_EQ(pt->nFieldNum, -1);
  EXPECT_EQ(pt->nCurrentTime, -1);
  EXPECT_EQ(pt->nLoopNumIndex, -1);
}

TEST_F(LoopStructure, ALoopTypeWithoutACountFieldIsRead) {
  const LoopType *const pt = sttParseXmlLoopType(Element("<LoopType/>").get(), cs("LoopType"));
  EXPECT_EQ(pt->psLoopNumName, nullptr);
  EXPECT_EQ(pt->ptInfo, nullptr);
}

TEST_F(LoopStructure, OnlyTheCountFieldsNameIsWritten) {
  const Element element("<LoopType/>");
  ASSERT_EQ(sttGenXmlLoopType(newLoopType("Count"), element.get(), cs("LoopType")), element.get());
  EXPECT_STREQ(sttParseXmlLoopType(element.get(), cs("LoopType"))->psLoopNumName, "Count");
  for (const char *ps : {"nFieldNum", "nCurrentTime", "nLoopNumIndex"}) {
    EXPECT_EQ(xmlGetNodeAttr(element.get(), cs(ps)), nullptr) << ps;
  }
}

TEST_F(LoopStructure, TheDispatcherKnowsExactlyOneType) {
  const Element element("<LoopType/>");
  EXPECT_NE(sttParseVoidcvt_struct_loop(element.get(), cs("LoopType")), nullptr);
  for (const char *ps : {"looptype", "LoopTyp", "LoopType2", "Msg", ""}) {
    EXPECT_EQ(sttParseVoidcvt_struct_loop(element.get(), cs(ps)), nullptr) << ps;
    EXPECT_EQ(sttGenVoidcvt_struct_loop(newLoopType(), element.get(), cs("f"), cs(ps)), nullptr) << ps;
  }
  EXPECT_NE(sttGenVoidcvt_struct_loop(newLoopType(), element.get(), cs("f"), cs("LoopType")), nullptr);
  EXPECT_TRUE(logLines().empty());
}

// --- The body index
// ------------------------------------------------------------------------------------------

TEST_F(LoopStructure, TheBodyIsTheWholeChainUnderTheLoop) {
  NodeXml first = group("X", {field("X1")});
  first.other = {field("X2")};
  Message **const pptIdx = index({loop("L", "", {first, field("Y"), field("Z")}), field("Behind")});
  Message *const ptLoop = nodeNamed(pptIdx, "L");
  EXPECT_EQ(names(cvtLoopGetIdx(ptLoop)), (Names{"X", "X1", "X2", "Y", "Z"}));
  EXPECT_EQ(cvtLoopGetFieldNum(ptLoop), 5);
}

TEST_F(LoopStructure, ALoopWithoutChildrenHasItselfAsBody) {
  Message *const ptLoop = node("L", 1, newLoopType());
  ASSERT_EQ(cvtLoopCreateIndex(ptLoop), 0);
  EXPECT_EQ(cvtLoopGetFieldNum(ptLoop), 1);
  EXPECT_EQ(cvtIdxNode(cvtLoopGetIdx(ptLoop), 0), ptLoop);
  EXPECT_EQ(cvtIdxNode(cvtLoopGetIdx(ptLoop), 1), nullptr);
  EXPECT_EQ(cvtGetNodeIdx(cvtLoopGetIdx(ptLoop), cs("l")), 0);
  EXPECT_EQ(ptLoop->nIndex, -1);
}

TEST_F(LoopStructure, IndexingALoopAgainFollowsItsBody) {
  Message *const ptLoop = node("L", 1, newLoopType());
  ASSERT_EQ(cvtLoopCreateIndex(ptLoop), 0);
  ptLoop->ptStructAttr->ptChildNode = node("X", 0, nullptr);
  ASSERT_EQ(cvtLoopCreateIndex(ptLoop), 0);
  EXPECT_EQ(names(cvtLoopGetIdx(ptLoop)), (Names{"X"}));
}

TEST_F(LoopStructure, IndexingRefusesWhatIsNoLoop) {
  EXPECT_EQ(cvtLoopCreateIndex(nullptr), -1);
  EXPECT_EQ(cvtLoopCreateIndex(node("A", 0, nullptr)), -1);
  EXPECT_EQ(cvtLoopCreateIndex(node("L", 1, nullptr)), -1);
  EXPECT_EQ(logTexts(), (Names{"[ptMessage] is NULL", f_sNoLoopType, f_sNoLoopType}));
}

TEST_F(LoopStructure, IndexingAnotherKindIsRefusedSilently) {
  for (const int nKind : {0, 2, 5, -1}) EXPECT_EQ(cvtLoopCreateIndex(node("A", nKind, newLoopType())), -1);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(LoopStructure, ABodyThatCannotBeIndexedNamesItsLoop) {
  Message *const ptLoop = node("L", 1, newLoopType());
  ptLoop->ptStructAttr->ptChildNode = node("M", 1, nullptr);
  EXPECT_EQ(cvtLoopCreateIndex(ptLoop), -1);
  EXPECT_EQ(logTexts(), (Names{f_sNoLoopType, "Create Message index err: Message[M] create Loop index err!!",
                               "Message[L] Loop index create err!!"}));
  EXPECT_EQ(cvtLoopGetIdx(ptLoop), nullptr);
}

TEST_F(LoopStructure, TheIndexOfAnyNodeWithALoopTypeIsGiven) {
  LoopType *const ptType = newLoopType();
  Message *apt[] = {nullptr};
  ptType->pptMessageIdx = apt;
  EXPECT_EQ(cvtLoopGetIdx(node("A", 0, ptType)), apt);
  EXPECT_EQ(cvtLoopGetIdx(node("A", 5, ptType)), apt);
}

TEST_F(LoopStructure, TheIndexOfANodeWithoutLoopTypeIsRefusedByName) {
  EXPECT_EQ(cvtLoopGetIdx(nullptr), nullptr);
  EXPECT_EQ(cvtLoopGetIdx(node("A", 1, nullptr)), nullptr);
  EXPECT_EQ(logTexts(), (Names{"[ptMessage] is NULL", "Message[A] Get Loop Type Err!!"}));
}

TEST_F(LoopStructure, TheInformationOfAnyNodeWithALoopTypeIsGiven) {
  int nInfo = 0;
  EXPECT_EQ(cvtLoopGetStruct(node("A", 0, sttNewLoopType(nullptr, &nInfo))), &nInfo);
  EXPECT_EQ(cvtLoopGetStruct(nullptr), nullptr);
  EXPECT_EQ(cvtLoopGetStruct(node("A", 1, nullptr)), nullptr);
  EXPECT_EQ(logTexts(), (Names{"[ptMessage] is NULL", f_sNoLoopType}));
}

TEST_F(LoopStructure, ANodeWithoutAStructAttrIsRefusedEverywhere) {
  Message *const pt = sttNewMessage(cs("A"), 0, nullptr, nullptr);
  Message *apt[] = {pt, nullptr};
  ValueListInfo tInfo{};
  EXPECT_EQ(cvtLoopGetIdx(pt), nullptr);
  EXPECT_EQ(cvtLoopGetStruct(pt), nullptr);
  EXPECT_EQ(cvtLoopCreateIndex(pt), -1);
  EXPECT_EQ(cvtLoopGetFieldNum(pt), -1);
  EXPECT_EQ(cvtSetLoopCurrentTime(pt, 0), -1);
  EXPECT_EQ(cvtGetLoopCurrentTime(pt), -1);
  EXPECT_EQ(cvtLoopGetLoopNumValue(&tInfo, pt), nullptr);
  EXPECT_EQ(cvtLoopSetLoopNumIndex(apt), -1);
  EXPECT_EQ(logTexts(), (Names{"[ptMessage->ptStructAttr] is NULL", "[ptMessage->ptStructAttr] is NULL",
                               "[ptMessage->ptStructAttr] is NULL", "[ptMessage->ptStructAttr] is NULL",
                               "[ptMessage->ptStructAttr] is NULL", "[ptMessage->ptStructAttr] is NULL",
                               "[ptMessage->ptStructAttr] is NULL", "[ptNode->ptStructAttr] is NULL"}));
}

// --- Field count and cursor
// ----------------------------------------------------------------------------------

TEST_F(LoopStructure, FieldCountAndCursorBelongToLoopsOnly) {
  for (const int nKind : {0, 2, 5}) {
    LoopType *const ptType = newLoopType();
    Message *const pt = node("A", nKind, ptType);
    EXPECT_EQ(cvtLoopGetFieldNum(pt), -1);
    EXPECT_EQ(cvtSetLoopCurrentTime(pt, 3), -1);
    EXPECT_EQ(cvtGetLoopCurrentTime(pt), -1);
    EXPECT_EQ(ptType->nCurrentTime, -1);
  }
  EXPECT_TRUE(logLines().empty());
}

TEST_F(LoopStructure, AFieldNodeWithoutLoopTypeHasNoCursor) {
  Message *const pt = node("A", 0, nullptr);
  EXPECT_EQ(cvtSetLoopCurrentTime(pt, 3), -1);
  EXPECT_EQ(cvtGetLoopCurrentTime(pt), -1);
  EXPECT_EQ(cvtLoopGetFieldNum(pt), -1);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(LoopStructure, TheCursorIsWhatWasSet) {
  Message *const pt = node("L", 1, newLoopType());
  EXPECT_EQ(cvtGetLoopCurrentTime(pt), -1);
  for (const int nTime : {0, 4, 2000, -7}) {
    EXPECT_EQ(cvtSetLoopCurrentTime(pt, nTime), 0);
    EXPECT_EQ(cvtGetLoopCurrentTime(pt), nTime);
  }
}

TEST_F(LoopStructure, FieldCountAndCursorRefuseNullAndALoopWithoutLoopType) {
  Message *const pt = node("L", 1, nullptr);
  EXPECT_EQ(cvtLoopGetFieldNum(nullptr), -1);
  EXPECT_EQ(cvtLoopGetFieldNum(pt), -1);
  EXPECT_EQ(cvtSetLoopCurrentTime(nullptr, 1), -1);
  EXPECT_EQ(cvtSetLoopCurrentTime(pt, 1), -1);
  EXPECT_EQ(cvtGetLoopCurrentTime(nullptr), -1);
  EXPECT_EQ(cvtGetLoopCurrentTime(pt), -1);
  EXPECT_EQ(logTexts(), (Names{"[ptMessage] is NULL", f_sNoLoopType, "[ptMessage] is NULL", f_sNoLoopType,
                               "[ptMessage] is NULL", f_sNoLoopType}));
}

// --- Resolving count fields
// ----------------------------------------------------------------------------------

TEST_F(LoopStructure, ACountFieldIsFoundInTheIndexOfItsLoop) {
  Message **const pptIdx = index({field("A"), field("Count"), loop("L", "COUNT", {field("X")})});
  EXPECT_EQ(cvtLoopSetLoopNumIndex(pptIdx), 0);
  EXPECT_EQ(typeOf(nodeNamed(pptIdx, "L"))->nLoopNumIndex, 1);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(LoopStructure, ACountFieldOfANestedLoopIsFoundInTheEnclosingBody) {
  Message **const pptIdx =
      index({field("N"), loop("L", "N", {field("X"), field("M"), loop("K", "M", {field("Y")})})});
  ASSERT_EQ(cvtLoopSetLoopNumIndex(pptIdx), 0);
  EXPECT_EQ(typeOf(nodeNamed(pptIdx, "L"))->nLoopNumIndex, 0);
  EXPECT_EQ(typeOf(nodeNamed(pptIdx, "K"))->nLoopNumIndex, 1);
}

TEST_F(LoopStructure, ACountedNodeIsResolvedToo) {
  Message **const pptIdx = index({field("N"), counted("C", "N")});
  ASSERT_EQ(cvtLoopSetLoopNumIndex(pptIdx), 0);
  Message *const ptCounted = nodeNamed(pptIdx, "C");
  EXPECT_EQ(typeOf(ptCounted)->nLoopNumIndex, 0);
  Values values({"17", ""});
  EXPECT_EQ(cvtLoopGetLoopNum(values.info(), ptCounted), 17);
  EXPECT_EQ(cvtLoopGetFieldNum(ptCounted), -1);
}

TEST_F(LoopStructure, AnUnknownCountFieldIsRefusedByName) {
  Message **const pptIdx = index({field("A"), loop("L", "Count", {field("X")})});
  EXPECT_EQ(cvtLoopSetLoopNumIndex(pptIdx), -3);
  EXPECT_EQ(logTexts(), (Names{"Loop Node[L] Loop Num Field[Count] Node Not Define!!"}));
  EXPECT_EQ(typeOf(nodeNamed(pptIdx, "L"))->nLoopNumIndex, -1);
}

TEST_F(LoopStructure, AnUnknownCountFieldOfANestedLoopIsRefusedAtOnce) {
  Message **const pptIdx =
      index({field("N"), loop("L", "N", {loop("K", "N", {field("Y")})}), loop("P", "Gone", {field("Z")})});
  EXPECT_EQ(cvtLoopSetLoopNumIndex(pptIdx), -3);  // N stands outside the body of L
  EXPECT_EQ(logTexts(), (Names{"Loop Node[K] Loop Num Field[N] Node Not Define!!"}));
}

TEST_F(LoopStructure, TheBodyOfALoopWithoutCountFieldIsNotVisited) {
  LoopType *const ptType = newLoopType();
  Message *const ptInner = node("K", 1, newLoopType("Gone"));
  Message *aptBody[] = {ptInner, nullptr};
  ptType->pptMessageIdx = aptBody;
  Message *apt[] = {node("L", 1, ptType), nullptr};
  EXPECT_EQ(cvtLoopSetLoopNumIndex(apt), 0);
  EXPECT_TRUE(logLines().empty());
  EXPECT_EQ(typeOf(ptInner)->nLoopNumIndex, -1);
}

TEST_F(LoopStructure, EveryNodeOfTheArrayIsTakenAlsoThatOfANestedLoop) {
  Message **const pptIdx = index({loop("L", "", {field("M"), loop("K", "M", {field("Y")})})});
  ASSERT_EQ(cvtLoopSetLoopNumIndex(pptIdx), 0);
  EXPECT_EQ(typeOf(nodeNamed(pptIdx, "K"))->nLoopNumIndex, 1);  // its position in the outer index
}

TEST_F(LoopStructure, OtherKindsAreLeftAlone) {
  LoopType *const ptType = newLoopType("Gone");
  Message *apt[] = {node("A", 0, ptType), node("B", 2, nullptr), nullptr};
  EXPECT_EQ(cvtLoopSetLoopNumIndex(apt), 0);
  EXPECT_EQ(ptType->nLoopNumIndex, -1);
  EXPECT_TRUE(logLines().empty());
}

TEST_F(LoopStructure, ResolvingRefusesNullAndANodeWithoutLoopType) {
  Message *aptLoop[] = {node("L", 1, nullptr), nullptr};
  Message *aptCounted[] = {node("C", 5, nullptr), nullptr};
  EXPECT_EQ(cvtLoopSetLoopNumIndex(nullptr), -1);
  EXPECT_EQ(cvtLoopSetLoopNumIndex(aptLoop), -1);
  EXPECT_EQ(cvtLoopSetLoopNumIndex(aptCounted), -1);
  EXPECT_EQ(logTexts(),
            (Names{"[pptIdx] is NULL", "[ptLoopType = (LoopType *)pptIdx[i]->ptStructAttr->pInfo] is NULL",
                   "[ptLoopType = (LoopType *)pptIdx[i]->ptStructAttr->pInfo] is NULL"}));
}

TEST_F(LoopStructure, AnEmptyArrayIsResolved) {
  Message *apt[] = {nullptr};
  EXPECT_EQ(cvtLoopSetLoopNumIndex(apt), 0);
}

TEST_F(LoopStructure, ALoopThatWasNotIndexedIsRefusedAtItsBody) {
  Message *apt[] = {node("N", 0, nullptr), node("L", 1, newLoopType("N")), nullptr};
  EXPECT_EQ(cvtLoopSetLoopNumIndex(apt), -1);
  EXPECT_EQ(logTexts(), (Names{"[pptIdx] is NULL"}));
}

TEST_F(LoopStructure, ResolvingAgainChangesNothing) {
  Message **const pptIdx = index({field("A"), field("N"), loop("L", "N", {field("X")})});
  ASSERT_EQ(cvtLoopSetLoopNumIndex(pptIdx), 0);
  EXPECT_EQ(cvtLoopSetLoopNumIndex(pptIdx), 0);
  EXPECT_EQ(typeOf(nodeNamed(pptIdx, "L"))->nLoopNumIndex, 1);
}

TEST_F(LoopStructure, APositionThatIsSetIsKeptWithoutLookingForTheField) {
  LoopType *const ptType = newLoopType("Gone");
  ptType->nLoopNumIndex = 4;
  Message *apt[] = {node("C", 5, ptType), nullptr};
  EXPECT_EQ(cvtLoopSetLoopNumIndex(apt), 0);
  EXPECT_EQ(ptType->nLoopNumIndex, 4);
}

TEST_F(LoopStructure, ALoopWithoutChildrenIsResolvedAndEndsThere) {
  Message **const pptIdx = index({field("N"), loop("L", "N", {})});
  EXPECT_EQ(cvtLoopSetLoopNumIndex(pptIdx), 0);
  EXPECT_EQ(typeOf(nodeNamed(pptIdx, "L"))->nLoopNumIndex, 0);
}

TEST_F(LoopStructure, ALoopWithoutChildrenMayBeItsOwnCountField) {
  Message *const ptLoop = node("L", 1, newLoopType("L"));
  ASSERT_EQ(cvtLoopCreateIndex(ptLoop), 0);
  EXPECT_EQ(cvtLoopSetLoopNumIndex(cvtLoopGetIdx(ptLoop)), 0);
  EXPECT_EQ(typeOf(ptLoop)->nLoopNumIndex, 0);
}

// --- Reading the count
// ---------------------------------------------------------------------------------------

TEST_F(LoopStructure, TheCountIsReadFromItsSlot) {
  Message **const pptIdx = index({field("A"), field("N"), loop("L", "N", {field("X")})});
  ASSERT_EQ(cvtLoopSetLoopNumIndex(pptIdx), 0);
  Values values({"9", "12", "", ""});
  Message *const ptLoop = nodeNamed(pptIdx, "L");
  EXPECT_EQ(cvtLoopGetLoopNumValue(values.info(), ptLoop), values.slot(1));
  EXPECT_EQ(cvtLoopGetLoopNum(values.info(), ptLoop), 12);
}

TEST_F(LoopStructure, OnlyTheBytesOfTheCountAreRead) {
  LoopType *const ptType = newLoopType("N");
  ptType->nLoopNumIndex = 0;
  Message *const ptLoop = node("L", 1, ptType);
  Values values({"12"});
  values.slot(0)->nLen = 1;
  EXPECT_EQ(cvtLoopGetLoopNum(values.info(), ptLoop), 1);
  EXPECT_STREQ(values.slot(0)->psValue, "12");
  values.slot(0)->nLen = 0;
  EXPECT_EQ(cvtLoopGetLoopNum(values.info(), ptLoop), 0);
}

TEST_F(LoopStructure, ACountThatHoldsNoNumberIsZero) {
  LoopType *const ptType = newLoopType("N");
  ptType->nLoopNumIndex = 0;
  Message *const ptLoop = node("L", 1, ptType);
  for (const char *ps : {"abc", "", "-", " "}) {
    Values values({ps});
    EXPECT_EQ(cvtLoopGetLoopNum(values.info(), ptLoop), 0) << ps;
  }
  Values values({" -3x"});
  EXPECT_EQ(cvtLoopGetLoopNum(values.info(), ptLoop), -3);
}

TEST_F(LoopStructure, ACountSlotThatHoldsALoopCountsZero) {
  LoopType *const ptType = newLoopType("N");
  ptType->nLoopNumIndex = 0;
  Values values({""});
  ASSERT_NE(cvtNewLoopValueList(values.info()->ptValueList, 0, 1), nullptr);
  EXPECT_EQ(cvtLoopGetLoopNum(values.info(), node("L", 1, ptType)), 0);
}

TEST_F(LoopStructure, TheOffsetOfTheMessageIsAdded) {
  LoopType *const ptType = newLoopType("N");
  ptType->nLoopNumIndex = 1;
  Values values({"1", "2", "3"});
  values.info()->nIndexOffset = 1;
  EXPECT_EQ(cvtLoopGetLoopNum(values.info(), node("C", 5, ptType)), 3);
  values.info()->nIndexOffset = -1;
  EXPECT_EQ(cvtLoopGetLoopNum(values.info(), node("C", 5, ptType)), 1);
}

TEST_F(LoopStructure, ACountOutsideTheListIsRefused) {
  LoopType *const ptType = newLoopType("N");
  Values values({"1"});
  EXPECT_EQ(cvtLoopGetLoopNum(values.info(), node("L", 1, ptType)), -1);
  ptType->nLoopNumIndex = 1;
  EXPECT_EQ(cvtLoopGetLoopNum(values.info(), node("L", 1, ptType)), -1);
  EXPECT_EQ(logTexts(),
            (Names{"Value Index[-1] < 0 or >= max [1] err!!", "Value Index[1] < 0 or >= max [1] err!!"}));
}

TEST_F(LoopStructure, ACountWithoutAValueListIsRefused) {
  ValueListInfo tInfo{};
  LoopType *const ptType = newLoopType("N");
  ptType->nLoopNumIndex = 0;
  EXPECT_EQ(cvtLoopGetLoopNum(&tInfo, node("L", 1, ptType)), -1);
  EXPECT_EQ(cvtLoopGetLoopNum(nullptr, node("L", 1, ptType)), -1);
  EXPECT_EQ(cvtLoopGetLoopNum(&tInfo, nullptr), -1);
  EXPECT_EQ(cvtLoopGetLoopNum(&tInfo, node("L", 1, nullptr)), -1);
  EXPECT_EQ(logTexts(), (Names{"[ptValueList] is NULL", "[ptValueListInfo] is NULL", "[ptMessage] is NULL",
                               f_sNoLoopType}));
}

TEST_F(LoopStructure, TheCountOfAnotherKindIsRefusedSilently) {
  Values values({"1"});
  for (const int nKind : {0, 2, 4, 6}) {
    EXPECT_EQ(cvtLoopGetLoopNumValue(values.info(), node("A", nKind, nullptr)), nullptr);
    EXPECT_EQ(cvtLoopGetLoopNum(values.info(), node("A", nKind, newLoopType("N"))), -1);
  }
  EXPECT_TRUE(logLines().empty());
}

// --- Depth
// ---------------------------------------------------------------------------------------------------

namespace {

NodeXml nested(int nDepth) {
  NodeXml node = field("Leaf");
  for (int i = nDepth; i > 0; --i) {
    node = loop("L" + std::to_string(i), "N" + std::to_string(i), {field("N" + std::to_string(i + 1)), node});
  }
  return node;
}

}  // namespace

TEST_F(LoopStructure, LoopsNestedTwelveDeepAreAllIndexed) {
  Message **pptIdx = index({field("N1"), nested(12)});
  ASSERT_EQ(cvtLoopSetLoopNumIndex(pptIdx), 0);
  for (int i = 1; i <= 12; ++i) {
    Message *const ptLoop = cvtIdxNode(pptIdx, 1);
    ASSERT_EQ(std::string(ptLoop->psNodeName), "L" + std::to_string(i));
    EXPECT_EQ(typeOf(ptLoop)->nLoopNumIndex, 0);
    EXPECT_EQ(cvtLoopGetFieldNum(ptLoop), 2 * (12 - i) + 2);
    pptIdx = cvtLoopGetIdx(ptLoop);
  }
  EXPECT_EQ(names(pptIdx), (Names{"N13", "Leaf"}));
}

TEST_F(LoopStructure, TheWorkDoesNotDoubleWithEveryLevel) {
  const double start = test::cpuSeconds();
  EXPECT_EQ(cvtLoopSetLoopNumIndex(index({field("N1"), nested(100)})), 0);
  EXPECT_LT(test::cpuSeconds() - start, 2);
}

// References: definitions that stand inside other definitions, loaded when they are met.
#include <gtest/gtest.h>

#include <map>

#include "definition_xml.h"
#include "log_capture.h"

using namespace test;
using namespace test::model;
using Names = std::vector<std::string>;
using Numbers = std::vector<int>;

namespace {

std::map<std::string, int> f_loads;  // how often each definition was finished

int countLoad(Msg *ptMsg) {
  ++f_loads[ptMsg->psMsgName];
  return 0;
}

Names f_order;  // of the definitions as they were finished

int noteOrder(Msg *ptMsg) {
  f_order.push_back(ptMsg->psMsgName);
  return 0;
}

class Reference : public ::testing::Test {
 protected:
  void SetUp() override { Definitions::format("flat", countLoad); }

  static Names fields(const char *psName) { return names(cvtGetMsg(cs(psName))->pptMessageIdx); }
  static Numbers numbersOf(const char *psName) { return numbers(cvtGetMsg(cs(psName))->pptMessageIdx); }
  static Message *nodeOf(const char *psMsg, const char *psNode) {
    return nodeNamed(cvtGetMsg(cs(psMsg))->pptMessageIdx, psNode);
  }
  std::string fileOf(const std::string &sName) const { return m_definitions.path("msg/" + sName + ".xml"); }

  Definitions m_definitions;
};

}  // namespace

// --- Creating nodes
// ------------------------------------------------------------------------------------------

TEST_F(Reference, ATypeOfZeroOrMoreMakesANode) {
  for (const int nType : {0, 1, 77}) {
    const Message *const pt = cvtNewMessageByType(cs("A"), nType, nullptr, nullptr);
    ASSERT_NE(pt, nullptr);
    EXPECT_STREQ(pt->psNodeName, "A");
    EXPECT_EQ(pt->nType, nType);
    EXPECT_EQ(pt->nIndex, -1);
  }
}

TEST_F(Reference, ToAKnownDefinitionGivesItsHead) {
  m_definitions.add("Head", {field("H1"), field("H2")});
  ASSERT_NE(m_definitions.load(), nullptr);
  for (const int nType : {-1, -2, -2147483647}) {
    EXPECT_EQ(cvtNewMessageByType(cs("Head"), nType, nullptr, nullptr), cvtGetMsg(cs("Head"))->ptHead);
  }
  EXPECT_EQ(f_loads["Head"], 1);
}

TEST_F(Reference, OutsideADirectoryLoadIsRefused) {
  nGRet = 0;
  EXPECT_EQ(cvtNewMessageByType(cs("Head"), -1, nullptr, nullptr), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(logTexts(), (Names{"CurrentPath is NULL!!"}));
}

TEST_F(Reference, AfterADirectoryLoadIsRefusedAgain) {
  m_definitions.add("Order", {field("A")});
  m_definitions.file("msg/Late.txt", "");
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(cvtNewMessageByType(cs("Late"), -1, nullptr, nullptr), nullptr);
  EXPECT_EQ(logTexts(), (Names{"CurrentPath is NULL!!"}));
}

TEST(ReferenceWithoutRegistry, IsRefused) {
  nGRet = 0;
  EXPECT_EQ(cvtNewMessageByType(cs("Head"), -1, nullptr, nullptr), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(logTexts(), (Names{"[gptFmtGlobalInfo] is NULL", "CurrentPath is NULL!!"}));
}

TEST_F(Reference, WithoutANameIsRefused) {
  nGRet = 0;
  EXPECT_EQ(cvtNewMessageByType(nullptr, -1, nullptr, nullptr), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(logTexts(), (Names{"[psNodeName] is NULL"}));
}

TEST_F(Reference, InARecordReadOutsideAFileFailsTheField) {
  const Element msg(msgXml("Order", {reference("Head")}));
  EXPECT_EQ(sttParseXmlMsg(msg.get(), cs("Msg")), nullptr);
  EXPECT_EQ(logTexts(), (Names{"CurrentPath is NULL!!",
                               "Message * ptHead = sttParseXmlStruct(ptXmlNode, \"Message\", \"ptHead\", "
                               "sttParseXmlMessage) is Err!!"}));
}

TEST_F(Reference, ThatFailsInAListFailsEveryListAroundIt) {
  const Element msg(msgXml("Order", {field("A"), reference("Head")}));
  EXPECT_EQ(sttParseXmlMsg(msg.get(), cs("Msg")), nullptr);
  EXPECT_EQ(logTexts(), (Names{"CurrentPath is NULL!!",
                               "struct Message * ptNextNode = sttParseXmlNext(ptXmlNode, \"Message\", "
                               "\"ptNextNode\", sttParseXmlMessage) is Err!!",
                               "StructAttr * ptStructAttr = sttParseXmlStruct(ptXmlNode, \"StructAttr\", "
                               "\"ptStructAttr\", sttParseXmlStructAttr) is Err!!",
                               "Message * ptHead = sttParseXmlStruct(ptXmlNode, \"Message\", \"ptHead\", "
                               "sttParseXmlMessage) is Err!!"}));
}

// --- In definition files
// -------------------------------------------------------------------------------------

TEST_F(Reference, LoadsADefinitionOnceWhicheverFileComesFirst) {
  m_definitions.add("A", {reference("Head")});
  m_definitions.add("Head", {field("H1"), field("H2")});
  m_definitions.add("Z", {reference("Head")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(f_loads, (std::map<std::string, int>{{"A", 1}, {"Head", 1}, {"Z", 1}}));
  EXPECT_EQ(fields("A"), (Names{"H1", "H2"}));
  EXPECT_TRUE(logTexts().empty());
}

TEST_F(Reference, SharesTheNodesOfTheDefinition) {
  m_definitions.add("A", {reference("Head")});
  m_definitions.add("Head", {field("H1")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(cvtGetMsg(cs("A"))->ptHead, cvtGetMsg(cs("Head"))->ptHead);
  EXPECT_NE(cvtGetMsg(cs("A")), cvtGetMsg(cs("Head")));
}

TEST_F(Reference, GoesOnWithTheSiblingsOfTheHeadNotWithItsOwn) {
  m_definitions.add("A", {field("First"), reference("Head"), field("Lost")});
  m_definitions.add("Head", {field("H1"), field("H2")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(fields("A"), (Names{"First", "H1", "H2"}));
  EXPECT_EQ(cvtGetMsg(cs("A"))->nFieldNum, 3);
}

TEST_F(Reference, DropsWhatItCarriesItself) {
  NodeXml ref = reference("Head");
  ref.sStruct = "nType=\"1\"";
  ref.sInfo = loopType("");
  ref.children = {field("Child")};
  m_definitions.add("A", {ref});
  m_definitions.add("Head", {field("H1")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(fields("A"), (Names{"H1"}));
  EXPECT_EQ(nodeOf("A", "H1")->ptStructAttr->nType, 0);
}

TEST_F(Reference, ReadsWhatItDrops) {
  m_definitions.add("A", {reference("Head"), reference("Missing")});
  m_definitions.add("Head", {field("H1")});
  EXPECT_EQ(m_definitions.load(), nullptr);
  EXPECT_TRUE(logged(1, "Message Parse [Missing] From[msg/Missing.xml] err!!"));
}

TEST_F(Reference, BelowAGroupLeavesTheGroupsOwnSiblingsAlone) {
  m_definitions.add("A", {group("G", {reference("Head")}), field("Last")});
  m_definitions.add("Head", {field("H1"), field("H2")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(fields("A"), (Names{"G", "H1", "H2", "Last"}));
}

TEST_F(Reference, NodesKeepTheNumbersOfTheirDefinitionAndTheGroupGetsPositionPlusOne) {
  m_definitions.add("A", {field("First"), group("G", {reference("Head")}), field("Last")});
  m_definitions.add("Head", {field("H1"), field("H2")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(numbersOf("Head"), (Numbers{0, 1}));
  EXPECT_EQ(numbersOf("A"), (Numbers{0, 2, 0, 1, 4}));
}

TEST_F(Reference, StandsInOtherSubtreesToo) {
  NodeXml g = group("G", {reference("One")});
  g.other = {reference("Two")};
  m_definitions.add("A", {g});
  m_definitions.add("One", {field("O")});
  m_definitions.add("Two", {field("T")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(fields("A"), (Names{"G", "O", "T"}));
}

TEST_F(Reference, TwiceInOneDefinitionGivesTheSameNodesTwice) {
  m_definitions.add("A", {group("G", {reference("Head")}), group("K", {reference("Head")})});
  m_definitions.add("Head", {field("H")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(fields("A"), (Names{"G", "H", "K", "H"}));
  EXPECT_EQ(numbersOf("A"), (Numbers{1, 0, 3, 0}));
  EXPECT_EQ(cvtGetNodeIdx(cvtGetMsg(cs("A"))->pptMessageIdx, cs("H")), 1);
}

TEST_F(Reference, ToADefinitionWithLoopsSharesTheirBodies) {
  m_definitions.add("A", {field("First"), group("G", {reference("Items")})});
  m_definitions.add("Items", {field("Count"), loop("Item", "Count", {field("Code"), field("Qty")})});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(fields("A"), (Names{"First", "G", "Count", "Item", "Code", "Qty"}));
  EXPECT_EQ(nodeOf("A", "Item"), nodeOf("Items", "Item"));
  EXPECT_EQ(names(cvtLoopGetIdx(nodeOf("A", "Item"))), (Names{"Code", "Qty"}));
  EXPECT_EQ(cvtLoopGetFieldNum(nodeOf("Items", "Item")), 2);
  EXPECT_EQ(numbersOf("A"), (Numbers{0, 2, 0, 1, 0, 1}));
}

TEST_F(Reference, InALoopBodyIsPartOfTheBody) {
  m_definitions.add("A", {loop("L", "", {field("X"), reference("Head")}), field("Last")});
  m_definitions.add("Head", {field("H1"), field("H2")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(names(cvtLoopGetIdx(nodeOf("A", "L"))), (Names{"X", "H1", "H2"}));
  EXPECT_EQ(fields("A"), (Names{"L", "X", "H1", "H2", "Last"}));
}

TEST_F(Reference, MayPassThroughSeveralDefinitions) {
  m_definitions.add("A", {field("A1"), reference("B")});
  m_definitions.add("B", {field("B1"), reference("C")});
  m_definitions.add("C", {field("C1")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(fields("A"), (Names{"A1", "B1", "C1"}));
  EXPECT_EQ(f_loads, (std::map<std::string, int>{{"A", 1}, {"B", 1}, {"C", 1}}));
}

TEST_F(Reference, MayNameADefinitionOfAnotherFormat) {
  Definitions::format("other", countLoad);
  m_definitions.add("A", {field("A1"), reference("B")});
  m_definitions.file("msg/B.xml", "<other>" + msgXml("B", {field("B1")}) + "</other>");
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(fields("A"), (Names{"A1", "B1"}));
}

TEST_F(Reference, FindsADefinitionOfAnEarlierDirectory) {
  m_definitions.file("one/Head.xml", definition("Head", {field("H")}));
  m_definitions.file("two/A.xml", definition("A", {reference("Head")}));
  ASSERT_NE(m_definitions.load({"one", "two"}), nullptr);
  EXPECT_EQ(fields("A"), (Names{"H"}));
}

TEST_F(Reference, LoadsOnlyFromTheDirectoryBeingRead) {
  m_definitions.file("one/A.xml", definition("A", {reference("Head")}));
  m_definitions.file("two/Head.xml", definition("Head", {field("H")}));
  EXPECT_EQ(m_definitions.load({"one", "two"}), nullptr);
  EXPECT_TRUE(logged(1, "Message Parse [Head] From[one/Head.xml] err!!"));
}

TEST_F(Reference, InOneListTheLastIsLoadedFirst) {
  Definitions::format("flat", noteOrder);
  m_definitions.file("one/A.xml", definition("A", {reference("../two/X"), reference("../two/Y")}));
  m_definitions.file("two/X.xml", definition("../two/X", {field("X")}));
  EXPECT_EQ(m_definitions.load({"one"}), nullptr);
  EXPECT_EQ(f_order, Names{}) << "nothing is loaded in front of one that is missing";
  m_definitions.file("two/Y.xml", definition("../two/Y", {field("Y")}));
  ASSERT_NE(m_definitions.load({"one"}), nullptr);
  EXPECT_EQ(f_order, (Names{"../two/Y", "../two/X", "A"}));
}

// --- Failures
// ------------------------------------------------------------------------------------------------

TEST_F(Reference, ToAMissingFileFailsTheSectionStepByStep) {
  m_definitions.add("A", {reference("Gone")});
  EXPECT_EQ(m_definitions.load(), nullptr);
  EXPECT_EQ(nGRet, -1);
  Names texts = logTexts();
  ASSERT_EQ(texts.size(), 13U);
  EXPECT_EQ(texts[1].rfind("File[" + fileOf("Gone") + "] ", 0), 0U) << texts[1];  // why libxml2 refused it
  texts.erase(texts.begin() + 1);
  EXPECT_EQ(
      texts,
      (Names{"File[" + fileOf("Gone") + "] Parse err!!", "File[" + fileOf("Gone") + "] Parse Err!!",
             "Parse File[" + fileOf("Gone") + "] Err!!", "Message Parse [Gone] From[msg/Gone.xml] err!!",
             "File[" + fileOf("A") + "] Line[2] Element[Message]",
             "Message * ptHead = sttParseXmlStruct(ptXmlNode, \"Message\", \"ptHead\", "
             "sttParseXmlMessage) is Err!!",
             "Init Xml struct : Load file[" + fileOf("A") + "] err!!",
             "File[" + fileOf("A") + "] Parse Err!!", "Parse File[" + fileOf("A") + "] Err!!",
             "Init[A.xml] err !!", "Message Parse Dir[msg] err!!", "cvt Message Parse Err!!"}));
}

TEST_F(Reference, ToAFileThatDefinesAnotherMessageFails) {
  m_definitions.file("one/A.xml", definition("A", {reference("Head")}));
  m_definitions.file("one/Head.xml", definition("Other", {field("H")}));
  EXPECT_EQ(m_definitions.load({"one"}), nullptr);
  EXPECT_TRUE(logged(1, "Message Get [Head][one/Head.xml] err!!"));
  EXPECT_NE(cvtGetMsg(cs("Other")), nullptr);
}

TEST_F(Reference, ToADefinitionThatItsFormatRefusesFails) {
  Definitions::format("flat", [](Msg *pt) { return std::string(pt->psMsgName) == "Bad" ? 1 : 0; });
  m_definitions.add("A", {reference("Bad")});
  m_definitions.file("more/none.txt", "");
  m_definitions.add("Bad", {field("B")});
  EXPECT_EQ(m_definitions.load(), nullptr);
  EXPECT_TRUE(logged(1, "Format [flat] Init Err!!"));
  EXPECT_EQ(cvtGetMsg(cs("A")), nullptr);
}

TEST_F(Reference, ToItsOwnDefinitionIsRefused) {
  m_definitions.add("A", {field("A1"), reference("A")});
  EXPECT_EQ(m_definitions.load(), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(logTexts()[0], "File[" + fileOf("A") + "] refers to [" + fileOf("A") +
                               "], which is being read: take one of these references out");
  EXPECT_TRUE(loggedInOrder({"Message Parse [A] From[msg/A.xml] err!!", "cvt Message Parse Err!!"}));
}

TEST_F(Reference, ThatComesBackThroughOtherDefinitionsIsRefusedWithEveryStep) {
  m_definitions.file("only/A.xml", definition("A", {reference("B")}));
  m_definitions.file("only/B.xml", definition("B", {reference("A")}));
  EXPECT_EQ(m_definitions.load({"only"}), nullptr);
  const std::string sA = m_definitions.path("only/A.xml");
  const std::string sB = m_definitions.path("only/B.xml");
  const bool bFromA = logTexts()[0] == "File[" + sA + "] refers to [" + sB + "]";
  const std::string &sFirst = bFromA ? sA : sB;
  const std::string &sSecond = bFromA ? sB : sA;
  EXPECT_EQ(logTexts()[0], "File[" + sFirst + "] refers to [" + sSecond + "]");
  EXPECT_EQ(logTexts()[1], "File[" + sSecond + "] refers to [" + sFirst +
                               "], which is being read: take one of these references out");
}

TEST_F(Reference, ToItselfByAnotherPathIsRefused) {
  m_definitions.add("A", {field("A1"), reference("../msg/A")});
  EXPECT_EQ(m_definitions.load(), nullptr);
  EXPECT_TRUE(logged(1, "cvt Message Parse Err!!"));
}

TEST_F(Reference, ThatFailedLeavesNothingBehindForTheNextLoad) {
  m_definitions.add("A", {field("A1"), reference("A")});
  ASSERT_EQ(m_definitions.load(), nullptr);
  m_definitions.add("A", {field("A1")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(fields("A"), (Names{"A1"}));
}

TEST_F(Reference, WithANameLongerThanAnyFileNameIsRefused) {
  m_definitions.add("A", {reference(std::string(5000, 'x'))});
  EXPECT_EQ(m_definitions.load(), nullptr);
  EXPECT_TRUE(logged(1, "cvt Message Parse Err!!"));
}

TEST_F(Reference, AChainOfTwoHundredDefinitionsIsRead) {
  for (int i = 0; i < 200; ++i) {
    m_definitions.add("D" + std::to_string(i), {field("F"), reference("D" + std::to_string(i + 1))});
  }
  m_definitions.add("D200", {field("Last")});
  ASSERT_NE(m_definitions.load(), nullptr);
  EXPECT_EQ(cvtGetMsg(cs("D0"))->nFieldNum, 201);
}

TEST_F(Reference, AChainOfAThousandUnreadDefinitionsIsRefusedBeforeTheStackEnds) {
  m_definitions.file("first/D0.xml", definition("D0", {reference("../rest/D1")}));
  for (int i = 1; i < 1000; ++i) {
    const std::string sNext = "../rest/D" + std::to_string(i + 1);
    m_definitions.file("rest/D" + std::to_string(i) + ".xml",
                       definition("D" + std::to_string(i), {field("F"), reference(sNext)}));
  }
  m_definitions.file("rest/D1000.xml", definition("D1000", {field("Last")}));
  EXPECT_EQ(m_definitions.load({"first"}), nullptr);
  const std::string sTold = "]: more than [256] definitions refer one to the next: make the chain shorter";
  EXPECT_TRUE(logged(1, "File[" + m_definitions.path("first/../rest/D256.xml") + sTold));
  EXPECT_FALSE(logged(1, "File[" + m_definitions.path("first/../rest/D257.xml") + sTold))
      << "nothing is read behind it";
}

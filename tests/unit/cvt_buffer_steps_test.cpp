// The buffer steps: a message's name out of its buffer, and pieces of buffers.
#include <climits>
#include <memory>

#include "convert_fixture.h"

namespace {

using namespace test::xml;
using test::cs;
using Texts = std::vector<std::string>;

// The steps are reached through pipelines only: a parse chain gives them (message, null), a generate chain
// (source, destination).
class BufferSteps : public test::ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    tree.file("Msg/readme.txt", "no definitions");
    tree.file("Cvt/readme.txt", "no converters");
    sMoreSections = "<Id __ID='ptId' psIdPath='Id'/>";
    source.psBuf = sSource;
    source.nLen = sizeof sSource;
    destination.psBuf = sDestination;
    destination.nLen = sizeof sDestination;
  }

  // A configuration whose only step is this one, in both chains. sArgument: the record, empty for none.
  void load(const std::string &sStep, const std::string &sRecord, const std::string &sAttributes) {
    const std::string sArgument =
        sRecord.empty() ? "" : "<" + sRecord + " __ID='ptArg' " + sAttributes + "/>";
    tree.file("Id/id.xml", pipelines({{"f", {{sStep, sArgument}}, {{sStep, sArgument}}}}));
    if (start() != 0) ADD_FAILURE() << "the configuration does not load";
    test::clearLog();
  }
  // Loads and runs a step of the parse chain.
  int parse(const std::string &sStep, const std::string &sRecord, const std::string &sAttributes) {
    load(sStep, sRecord, sAttributes);
    return fucParse(cs("f"), &source, nullptr);
  }
  // Loads and runs a step of the generate chain.
  int generate(const std::string &sStep, const std::string &sRecord, const std::string &sAttributes) {
    load(sStep, sRecord, sAttributes);
    return fucGenerate(cs("f"), &source, &destination);
  }

  void setSource(const std::string &sText) { sText.copy(sSource, sizeof sSource - 1); }
  void setName(const std::string &sName) { sName.copy(source.sMsgName, sizeof source.sMsgName); }
  std::string written(size_t nLen) const { return {sDestination, nLen}; }

  // What a failing step logs.
  static Texts trail(const std::string &sStep, const std::string &sText) {
    return {sText, "Do Func[" + sStep + "] err!!", "Formate[f] Parse Err!!\n"};
  }

  // Runs the loaded step with these messages.
  static int run(InnerMessage *ptFirst, InnerMessage *ptSecond) {
    test::clearLog();
    return fucGenerate(cs("f"), ptFirst, ptSecond);
  }

  void *argument() const { return gptFormatInfo->ptParseFunc->ptArg; }

  InnerMessage source{};
  InnerMessage destination{};
  char sSource[200] = {};
  char sDestination[200] = {};
};

using GetIpcName = BufferSteps;
using GetXmlNode = BufferSteps;
using SetMsgNameToBuf = BufferSteps;
using SetBufToBuf = BufferSteps;
using SetToOffset = BufferSteps;

// --- GetIpcName ------------------------------------------------------------------------------------------

TEST_F(GetIpcName, NamesTheMessageByASliceOfTheBuffer) {
  setSource("00ABCD99");
  EXPECT_EQ(parse("GetIpcName", "IpcNameArgs", "nOffset='2' nLen='4' psFront='M'"), 0);
  EXPECT_STREQ(source.sMsgName, "MABCD");
  EXPECT_EQ(source.nNowLen, 0);
  EXPECT_EQ(test::logTexts(5), Texts{"Message Name[MABCD]"});
  EXPECT_EQ(test::logTexts(1), Texts{});
}

TEST_F(GetIpcName, SliceIsCountedFromTheCurrentPosition) {
  setSource("00ABCD99");
  source.nNowLen = 3;
  EXPECT_EQ(parse("GetIpcName", "IpcNameArgs", "nOffset='-1' nLen='2' psBack='.x'"), 0);
  EXPECT_STREQ(source.sMsgName, "AB.x");
  EXPECT_EQ(source.nNowLen, 3);
}

TEST_F(GetIpcName, SliceStopsAtAZeroByte) {
  setSource(std::string("00AB\0CD", 7));
  EXPECT_EQ(parse("GetIpcName", "IpcNameArgs", "nOffset='2' nLen='40' psFront='M' psBack='Z'"), 0);
  EXPECT_STREQ(source.sMsgName, "MABZ");
}

TEST_F(GetIpcName, NegativeLengthTakesAllUpToTheZeroByte) {
  setSource("00ABCD");
  EXPECT_EQ(parse("GetIpcName", "IpcNameArgs", "nLen='-1'"), 0);
  EXPECT_STREQ(source.sMsgName, "00ABCD");
}

TEST_F(GetIpcName, NoLengthLeavesTheTextsAlone) {
  setSource("00ABCD");
  EXPECT_EQ(parse("GetIpcName", "IpcNameArgs", "psFront='front' psBack='back'"), 0);
  EXPECT_STREQ(source.sMsgName, "frontback");
}

TEST_F(GetIpcName, LongNameIsCutAt59Characters) {
  setSource(std::string(100, 'n'));
  source.sMsgName[60] = 'k';
  EXPECT_EQ(parse("GetIpcName", "IpcNameArgs", "nLen='100' psFront='M'"), 0);
  EXPECT_EQ(std::string(source.sMsgName, 60), "M" + std::string(58, 'n') + '\0');
  EXPECT_EQ(source.sMsgName[60], 'k');  // the field's last byte is not touched
}

TEST_F(GetIpcName, AbsentTextsBecomeEmptyInTheRecord) {
  setSource("AB");
  load("GetIpcName", "IpcNameArgs", "nLen='2'");
  EXPECT_EQ(static_cast<IpcNameArgs *>(argument())->psFront, nullptr);
  EXPECT_EQ(fucParse(cs("f"), &source, nullptr), 0);
  EXPECT_STREQ(static_cast<IpcNameArgs *>(argument())->psFront, "");
  EXPECT_EQ(static_cast<IpcNameArgs *>(argument())->psFront, static_cast<IpcNameArgs *>(argument())->psBack);
}

TEST_F(GetIpcName, TheSecondMessageIsNotUsed) {
  setSource("AB");
  EXPECT_EQ(generate("GetIpcName", "IpcNameArgs", "nLen='2'"), 0);
  EXPECT_STREQ(source.sMsgName, "AB");
  EXPECT_STREQ(destination.sMsgName, "");
}

TEST_F(GetIpcName, WithoutMessageOrArgumentsFails) {
  EXPECT_EQ(parse("GetIpcName", "", ""), -1);
  EXPECT_EQ(test::logTexts(1), trail("GetIpcName", "[ptArgs] is NULL"));
  EXPECT_EQ(run(nullptr, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), trail("GetIpcName", "[ptSrcMsg] is NULL"));
}

// --- GetXmlNode ------------------------------------------------------------------------------------------

TEST_F(GetXmlNode, NamesTheMessageByAnElementsText) {
  setSource("<Msg><Head/><MsgType>Pay1</MsgType></Msg>");
  EXPECT_EQ(parse("GetXmlNode", "XmlNameArgs", "psNodeName='MsgType' psFront='a.' psBack='.b'"), 0);
  EXPECT_STREQ(source.sMsgName, "a.Pay1.b");
  EXPECT_EQ(source.nNowLen, 0);
  EXPECT_EQ(test::logTexts(5), Texts{"Message Name[a.Pay1.b]"});
}

TEST_F(GetXmlNode, AttributesOfTheElementAreSkipped) {
  setSource("<MsgType v='1' >Pay1</MsgType>");
  EXPECT_EQ(parse("GetXmlNode", "XmlNameArgs", "psNodeName='MsgType'"), 0);
  EXPECT_STREQ(source.sMsgName, "Pay1");
}

TEST_F(GetXmlNode, FirstOccurrenceCountsWhereverItStands) {
  setSource("<a note='MsgType'>text</a><MsgType>Pay1</MsgType>");
  EXPECT_EQ(parse("GetXmlNode", "XmlNameArgs", "psNodeName='MsgType'"), 0);
  EXPECT_STREQ(source.sMsgName, "text");
}

TEST_F(GetXmlNode, SearchBeginsAtTheCurrentPosition) {
  setSource("<T>one</T><T>two</T>");
  source.nNowLen = 10;
  EXPECT_EQ(parse("GetXmlNode", "XmlNameArgs", "psNodeName='T'"), 0);
  EXPECT_STREQ(source.sMsgName, "two");
}

TEST_F(GetXmlNode, EndOfTheTagIsSearchedFromTheStartOfTheFoundText) {
  setSource("x<T>one</T>");
  EXPECT_EQ(parse("GetXmlNode", "XmlNameArgs", "psNodeName='&lt;T&gt;'"), 0);
  EXPECT_STREQ(source.sMsgName, "one");
}

TEST_F(GetXmlNode, EmptyElementGivesTheTextsAlone) {
  setSource("<T></T>");
  EXPECT_EQ(parse("GetXmlNode", "XmlNameArgs", "psNodeName='T' psFront='none'"), 0);
  EXPECT_STREQ(source.sMsgName, "none");
}

TEST_F(GetXmlNode, LongNameIsCutAt59Characters) {
  setSource("<T>" + std::string(100, 'n') + "</T>");
  EXPECT_EQ(parse("GetXmlNode", "XmlNameArgs", "psNodeName='T'"), 0);
  EXPECT_STREQ(source.sMsgName, std::string(59, 'n').c_str());
}

class MissingNode : public BufferSteps, public testing::WithParamInterface<const char *> {};

TEST_P(MissingNode, FailsAndNamesTheNode) {
  setSource(GetParam());
  setName("before");
  EXPECT_EQ(parse("GetXmlNode", "XmlNameArgs", "psNodeName='MsgType'"), -1);
  EXPECT_EQ(test::logTexts(1), trail("GetXmlNode", "Xml have no Node[MsgType], err!!"));
  EXPECT_STREQ(source.sMsgName, "before");
}

INSTANTIATE_TEST_SUITE_P(Buffers, MissingNode,
                         testing::Values("", "<msgtype>x</msgtype>", "<MsgType", "<MsgType>Pay1"));

TEST_F(GetXmlNode, WithoutMessageArgumentsOrNodeNameFails) {
  EXPECT_EQ(parse("GetXmlNode", "", ""), -1);
  EXPECT_EQ(test::logTexts(1), trail("GetXmlNode", "[ptArgs] is NULL"));
  EXPECT_EQ(run(nullptr, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), trail("GetXmlNode", "[ptSrcMsg] is NULL"));
  EXPECT_EQ(parse("GetXmlNode", "XmlNameArgs", "psFront='x'"), -1);
  EXPECT_EQ(test::logTexts(1), trail("GetXmlNode", "[ptXmlNameArgs->psNodeName] is NULL"));
}

// --- SetMsgNameToBuf -------------------------------------------------------------------------------------

TEST_F(SetMsgNameToBuf, WritesASliceOfTheNameAtThePosition) {
  setName("Pay1Order");
  destination.nNowLen = 2;
  EXPECT_EQ(generate("SetMsgNameToBuf", "IpcNameArgs", "nOffset='4' nLen='3' psFront='[' psBack=']'"), 0);
  EXPECT_EQ(written(8), std::string("\0\0[Ord]\0", 8));
  EXPECT_EQ(destination.nNowLen, 7);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(SetMsgNameToBuf, LongerLengthStopsAtTheEndOfTheName) {
  setName(std::string(61, 'n'));  // not terminated: a converter's destination may be as long
  EXPECT_EQ(generate("SetMsgNameToBuf", "IpcNameArgs", "nLen='100'"), 0);
  EXPECT_STREQ(sDestination, std::string(61, 'n').c_str());
  EXPECT_EQ(destination.nNowLen, 61);
}

TEST_F(SetMsgNameToBuf, TextIsCutByTheCapacityAndThePositionMovesByAllOfIt) {
  setName("Pay1Order");
  destination.nNowLen = 1;
  destination.nLen = 5;  // the terminator is part of it
  EXPECT_EQ(generate("SetMsgNameToBuf", "IpcNameArgs", "nLen='9'"), 0);
  EXPECT_EQ(written(6), std::string("\0Pay\0\0", 6));
  EXPECT_EQ(destination.nNowLen, 10);
}

TEST_F(SetMsgNameToBuf, PositionBehindTheCapacityWritesNothingAndStillMoves) {
  setName("Pay1");
  for (const int nNow : {5, 6, INT_MAX - 10}) {
    destination.nNowLen = nNow;
    destination.nLen = 5;
    EXPECT_EQ(generate("SetMsgNameToBuf", "IpcNameArgs", "nLen='9'"), 0);
    EXPECT_EQ(written(20), std::string(20, '\0'));
    EXPECT_EQ(destination.nNowLen, nNow + 4);
  }
}

TEST_F(SetMsgNameToBuf, WithoutMessagesOrArgumentsFails) {
  EXPECT_EQ(generate("SetMsgNameToBuf", "", ""), -1);
  EXPECT_EQ(test::logTexts(1), trail("SetMsgNameToBuf", "[ptArgs] is NULL"));
  EXPECT_EQ(run(&source, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), trail("SetMsgNameToBuf", "[ptDstMsg] is NULL"));
  EXPECT_EQ(run(nullptr, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), trail("SetMsgNameToBuf", "[ptSrcMsg] is NULL"));
}

// --- SetBufToBuf -----------------------------------------------------------------------------------------

TEST_F(SetBufToBuf, CopiesASliceAndMovesThePosition) {
  setSource("0123456789abc");
  EXPECT_EQ(generate("SetBufToBuf", "MoveBufferArgs",
                     "nSrcOffset='0' nSrcLen='10' nDstOffset='5' nDstAddFlag='0' psFront='' psBack=''"),
            0);
  EXPECT_EQ(written(16), std::string("\0\0\0\0\0"
                                     "0123456789\0",
                                     16));
  EXPECT_EQ(destination.nNowLen, 10);
  EXPECT_EQ(test::logTexts(5), Texts{"Add To Dst Message[0123456789]"});
}

TEST_F(SetBufToBuf, WithAFlagThePositionStays) {
  setSource("0123456789");
  destination.nNowLen = 3;
  EXPECT_EQ(generate("SetBufToBuf", "MoveBufferArgs", "nSrcOffset='2' nSrcLen='4' nDstAddFlag='1'"), 0);
  EXPECT_EQ(written(5), std::string("2345\0", 5));
  EXPECT_EQ(destination.nNowLen, 3);
}

TEST_F(SetBufToBuf, PiecesOverlayEachOtherAndTheirLengthsAddUp) {
  EXPECT_EQ(generate("SetBufToBuf", "MoveBufferArgs", "psFront='AB' nSrcLen='0' psBack='C'"), 0);
  EXPECT_EQ(written(3), std::string("CB\0", 3));
  EXPECT_EQ(destination.nNowLen, 3);
  setSource("123");
  EXPECT_EQ(
      generate("SetBufToBuf", "MoveBufferArgs", "psFront='ABCDE' nSrcLen='3' psBack='z' nDstOffset='10'"), 0);
  EXPECT_EQ(std::string(sDestination + 10, 6), std::string("z23DE\0", 6));
  EXPECT_EQ(destination.nNowLen, 3 + 9);
}

TEST_F(SetBufToBuf, ZeroBytesAreCopied) {
  setSource(std::string("a\0b", 3));
  EXPECT_EQ(generate("SetBufToBuf", "MoveBufferArgs", "nSrcLen='3'"), 0);
  EXPECT_EQ(written(3), std::string("a\0b", 3));
}

TEST_F(SetBufToBuf, PieceMayOverlapItself) {
  setSource("0123456789");
  destination.psBuf = sSource;
  EXPECT_EQ(generate("SetBufToBuf", "MoveBufferArgs", "nSrcLen='8' nDstOffset='2'"), 0);
  EXPECT_STREQ(sSource, "0101234567");
}

TEST_F(SetBufToBuf, LogDoesNotReadBehindTheBuffer) {
  const auto pExact = std::make_unique<char[]>(4);
  destination.psBuf = pExact.get();
  destination.nLen = 4;
  EXPECT_EQ(generate("SetBufToBuf", "MoveBufferArgs", "psFront='ABCD' psBack='1234'"), 0);
  EXPECT_EQ(test::logTexts(5), Texts{"Add To Dst Message[1234]"});
  EXPECT_EQ(destination.nNowLen, 8);
}

TEST_F(SetBufToBuf, NegativeLengthCopiesNothing) {
  setSource("0123");
  EXPECT_EQ(generate("SetBufToBuf", "MoveBufferArgs", "psFront='AB' nSrcLen='-1'"), 0);
  EXPECT_EQ(written(3), std::string("AB\0", 3));
  EXPECT_EQ(destination.nNowLen, 1);
}

TEST_F(SetBufToBuf, SourceIsNeededOnlyForASlice) {
  load("SetBufToBuf", "MoveBufferArgs", "psFront='AB'");
  EXPECT_EQ(run(nullptr, &destination), 0);
  EXPECT_EQ(written(3), std::string("AB\0", 3));
  load("SetBufToBuf", "MoveBufferArgs", "psFront='CD' nSrcLen='1' psBack='E'");
  EXPECT_EQ(run(nullptr, &destination), -1);
  EXPECT_EQ(test::logTexts(1), trail("SetBufToBuf", "[ptSrcMsg] is NULL"));
  EXPECT_EQ(written(3), std::string("CD\0", 3));  // the front text was written before
  EXPECT_EQ(destination.nNowLen, 2);              // from the first run
}

TEST_F(SetBufToBuf, WithoutDestinationOrArgumentsFails) {
  EXPECT_EQ(generate("SetBufToBuf", "", ""), -1);
  EXPECT_EQ(test::logTexts(1), trail("SetBufToBuf", "[ptArgs] is NULL"));
  EXPECT_EQ(run(&source, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), trail("SetBufToBuf", "[ptDstMsg] is NULL"));
}

// --- SetToOffset -----------------------------------------------------------------------------------------

struct Offset {
  const char *psType;
  int nSetType;
  int nSource;  // the positions afterwards; they are 10 and 20 before
  int nDestination;
  const char *psLog;  // at the level of errors
};
class OffsetOf : public BufferSteps, public testing::WithParamInterface<Offset> {};

TEST_P(OffsetOf, IsSetOrAddedTo) {
  source.nNowLen = 10;
  destination.nNowLen = 20;
  const Offset &p = GetParam();
  EXPECT_EQ(generate("SetToOffset", "SetOffsetArgs",
                     "caMsgType='" + std::string(p.psType) + "' nOffset='8' nSetType='" +
                         std::to_string(p.nSetType) + "'"),
            0);
  EXPECT_EQ(source.nNowLen, p.nSource);
  EXPECT_EQ(destination.nNowLen, p.nDestination);
  EXPECT_EQ(test::logTexts(1), *p.psLog == 0 ? Texts{} : Texts{p.psLog});
}

INSTANTIATE_TEST_SUITE_P(Types, OffsetOf,
                         testing::Values(Offset{"s", 0, 8, 20, "Set Src Message Offset to [8]"},
                                         Offset{"S", 1, 18, 20, "Set Src Message Offset to [18]"},
                                         Offset{"d", 0, 10, 8, "Set Dst Message Offset to [8]"},
                                         Offset{"D", 1, 10, 28, "Set Dst Message Offset to [28]"},
                                         Offset{"d", -1, 10, 28, "Set Dst Message Offset to [28]"},
                                         Offset{"x", 0, 10, 20, ""}, Offset{"", 0, 10, 20, ""}));

TEST_F(SetToOffset, NegativeOffsetGoesBack) {
  source.nNowLen = 10;
  EXPECT_EQ(parse("SetToOffset", "SetOffsetArgs", "caMsgType='s' nOffset='-4' nSetType='1'"), 0);
  EXPECT_EQ(source.nNowLen, 6);
}

TEST_F(SetToOffset, OtherMessageIsNotNeeded) {
  load("SetToOffset", "SetOffsetArgs", "caMsgType='d' nOffset='8'");
  EXPECT_EQ(run(nullptr, &destination), 0);
  EXPECT_EQ(destination.nNowLen, 8);
}

TEST_F(SetToOffset, WithoutItsMessageOrArgumentsFails) {
  EXPECT_EQ(generate("SetToOffset", "", ""), -1);
  EXPECT_EQ(test::logTexts(1), trail("SetToOffset", "[ptArgs] is NULL"));
  load("SetToOffset", "SetOffsetArgs", "caMsgType='s' nOffset='8'");
  EXPECT_EQ(run(nullptr, &destination), -1);
  EXPECT_EQ(test::logTexts(1), trail("SetToOffset", "[ptSrcMsg] is NULL"));
  load("SetToOffset", "SetOffsetArgs", "caMsgType='D' nOffset='8'");
  EXPECT_EQ(run(&source, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), trail("SetToOffset", "[ptDstMsg] is NULL"));
}

// --- In a chain ------------------------------------------------------------------------------------------

TEST_F(BufferSteps, NameTheMessageForTheParseStepBehindThem) {
  define("In", {field("A")});
  tree.file("Id/id.xml",
            pipelines({{"f",
                        {{"GetIpcName", "<IpcNameArgs __ID='ptArg' nOffset='2' nLen='2'/>"},
                         {"SetToOffset", "<SetOffsetArgs __ID='ptArg' caMsgType='s' nOffset='4'/>"},
                         {"pubNew"}},
                        {}}}));
  ASSERT_EQ(start(), 0);
  int nError = 0;
  InnerMessage *const ptMsg = cvtParseMessasge(cs("f"), cs("00In"), 4, &nError);
  ASSERT_NE(ptMsg, nullptr);
  EXPECT_EQ(nError, 0);
  EXPECT_STREQ(ptMsg->sMsgName, "In");
  EXPECT_EQ(ptMsg->ptMsgInfo, cvtGetMsg(cs("In")));
  cvtFreeMessage(ptMsg);
}

}  // namespace

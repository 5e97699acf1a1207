// The choice of a converter by source message and target format, and the step that converts.
#include "convert_fixture.h"

namespace {

using namespace test::xml;
using test::cs;
using test::Level;

class Choices : public test::ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    define("In", {field("A"), field("B")});
    define("Out", {field("X"), field("Y")});
    define("Other", {field("Z")});
    convert("ToOut", {copy(src("A"), dst("X")), copy(value("fixed"), dst("Y"))});
    convert("ToOther", {copy(src("B"), dst("Z"))}, "In", "Other");
    convert("Broken", {copy({6, ""}, dst("X"))});
    sMoreSections = "<Id __ID='ptId' psIdInfoPath='Info'/>";
  }

  int load(const std::vector<Choice> &list) { return loadText(choices(list)); }
  int loadText(const std::string &sText) {
    tree.file("Info/info.xml", sText);
    const int nRet = start();
    if (nRet == 0) source.ptMsgInfo = cvtGetMsg(cs("In"));
    return nRet;
  }

  // The name of the converter for a target format; "" for none. The log begins here.
  std::string chosen(const std::string &sFormat) {
    test::clearLog();
    setFormat(sFormat);
    const Converter *const pt = cvtGetConvert(&source, &target);
    return pt == nullptr ? "" : std::string(pt->psName);
  }
  void setFormat(const std::string &sFormat) {
    target = {};
    sFormat.copy(target.sMsgFormat, sizeof target.sMsgFormat - 1);
    target.tValueListInfo.ptMemNode = cvtMemNewNode();
  }

  std::string infoFile() const { return tree.path("Info/info.xml"); }
  std::string place(const std::string &sElement) const {
    return "File[" + infoFile() + "] Line[1] Element[" + sElement + "]";
  }
  // The whole trail of a start that fails on the file Info/info.xml.
  Texts infoTrail(Texts inner, bool bPlaced) const {
    inner.push_back("Parse File[" + infoFile() + "] Err!!");
    inner.push_back("Init[info.xml] err !!");
    inner.push_back("Parse Id File Err In[Info]!!\n");
    inner.push_back("void * ptId = sttParseXmlStruct(ptXmlNode, \"Id\", \"ptId\", cvtIdInit) is Err!!");
    return rootTrail(std::move(inner), bPlaced);
  }
  Texts recordTrail(Texts inner) const {
    inner.push_back("parse xml[IdInfo)" + infoFile() + "] faile");
    inner.push_back("Parse Xml File To Identify Info Struct Err!!");
    return infoTrail(std::move(inner), true);
  }

  InnerMessage source{};
  InnerMessage target{};
};

using Choosing = Choices;
using IdentificationFile = Choices;

// --- Choosing --------------------------------------------------------------------------------------------

TEST_F(Choosing, IsByTargetFormatAndElseTheDefault) {
  ASSERT_EQ(load({{"In", {{"X", "ToOut"}, {"", "ToOther"}}}}), 0);
  EXPECT_EQ(chosen("X"), "ToOut");
  EXPECT_EQ(chosen("Y"), "ToOther");
  EXPECT_EQ(chosen(""), "ToOther");
  EXPECT_EQ(chosen("x"), "ToOther");
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(Choosing, DefaultMayStandFirst) {
  ASSERT_EQ(load({{"In", {{"", "ToOther"}, {"X", "ToOut"}}}}), 0);
  EXPECT_EQ(chosen("X"), "ToOut");
  EXPECT_EQ(chosen("Y"), "ToOther");
}

TEST_F(Choosing, OfTwoDefaultsIsTheLater) {
  ASSERT_EQ(load({{"In", {{"", "ToOut"}, {"", "ToOther"}}}}), 0);
  EXPECT_EQ(chosen("any"), "ToOther");
}

TEST_F(Choosing, OfTwoPairsOfOneFormatIsTheFirst) {
  ASSERT_EQ(load({{"In", {{"X", "ToOut"}, {"X", "ToOther"}}}}), 0);
  EXPECT_EQ(chosen("X"), "ToOut");
}

TEST_F(Choosing, WithoutMatchOrDefaultFails) {
  ASSERT_EQ(load({{"In", {{"X", "ToOut"}}}}), 0);
  EXPECT_EQ(chosen("Y"), "");
  EXPECT_EQ(test::logTexts(1), Texts{"Message Convert Format id [Y] not fond!!"});
}

TEST_F(Choosing, WithoutPairsFails) {
  ASSERT_EQ(load({{"In", {}}}), 0);
  EXPECT_EQ(chosen("X"), "");
  EXPECT_EQ(test::logTexts(1), Texts{"Message Convert Format id [X] not fond!!"});
}

TEST_F(Choosing, OfAMessageThatNoFileNamesFails) {
  ASSERT_EQ(load({{"Out", {{"", "ToOut"}}}}), 0);
  EXPECT_EQ(chosen("X"), "");
  EXPECT_EQ(test::logTexts(1), Texts{"Message Convert Format id [X] not fond!!"});
}

TEST_F(Choosing, FormatIdThatIsLongerThanItsFieldNeverMatches) {
  ASSERT_EQ(load({{"In", {{"12345678901234567890", "ToOut"}, {"123456789012345678901", "ToOther"}}}}), 0);
  EXPECT_EQ(chosen("123456789012345678901"), "ToOut");  // the field holds the first twenty
}

TEST_F(Choosing, WithoutASourceFails) {
  ASSERT_EQ(load({{"In", {{"", "ToOut"}}}}), 0);
  test::clearLog();
  EXPECT_EQ(cvtGetConvert(nullptr, &target), nullptr);
  EXPECT_EQ(test::logTexts(1), Texts{"[ptInSrcMsg] is NULL"});
}

TEST_F(Choosing, WithoutADestinationOrADefinitionFails) {
  ASSERT_EQ(load({{"In", {{"", "ToOut"}}}}), 0);
  test::clearLog();
  EXPECT_EQ(cvtGetConvert(&source, nullptr), nullptr);
  source.ptMsgInfo = nullptr;
  EXPECT_EQ(cvtGetConvert(&source, &target), nullptr);
  EXPECT_EQ(test::logTexts(1), (Texts{"[ptInDstMsg] is NULL", "[ptInSrcMsg->ptMsgInfo] is NULL"}));
}

TEST_F(Choosing, PairsHungOnTheDefinitionByHandAreWalkedTheSameWay) {
  ASSERT_EQ(load({{"In", {{"X", "ToOut"}}}}), 0);
  IdCvtInfo *const ptLast =
      sttNewIdCvtInfo(cs("X"), cs("ToOther"), sttNewIdCvtInfo(cs(""), cs("ToOther"), nullptr));
  IdCvtInfo *const ptNoFormat =
      sttNewIdCvtInfo(nullptr, cs("ToOther"), sttNewIdCvtInfo(cs("X"), cs("ToOut"), ptLast));
  source.ptMsgInfo->pIdInfo = sttNewIdCvtInfo(cs(""), cs("ToOut"), ptNoFormat);
  EXPECT_EQ(chosen("X"), "ToOut");
  EXPECT_EQ(chosen("Y"), "ToOther");
}

TEST_F(Choosing, PairsHungBehindLoadedOnesByHandAreFound) {
  ASSERT_EQ(load({{"In", {{"X", "ToOut"}}}}), 0);
  auto *const ptLoaded = static_cast<IdCvtInfo *>(source.ptMsgInfo->pIdInfo);
  EXPECT_EQ(chosen("Y"), "");
  IdCvtInfo *const ptDefault = sttNewIdCvtInfo(cs(""), cs("ToOut"), nullptr);
  ptLoaded->ptNext = sttNewIdCvtInfo(cs("Y"), cs("ToOther"), nullptr);
  EXPECT_EQ(chosen("Y"), "ToOther");
  EXPECT_EQ(chosen("Z"), "");
  ptLoaded->ptNext->ptNext = ptDefault;
  EXPECT_EQ(chosen("Z"), "ToOut");
  ptDefault->ptNext =
      sttNewIdCvtInfo(cs("X"), cs("ToOther"), sttNewIdCvtInfo(cs(""), cs("ToOther"), nullptr));
  ptDefault->ptNext->ptNext->ptNext = sttNewIdCvtInfo(nullptr, cs("ToOut"), nullptr);
  EXPECT_EQ(chosen("Z"), "ToOther");  // the later default
  EXPECT_EQ(chosen("X"), "ToOut");    // the first of a format
}

TEST_F(Choosing, ConverterOfALoadedPairMayBeReplaced) {
  ASSERT_EQ(load({{"In", {{"X", "ToOut"}, {"", "ToOut"}}}}), 0);
  EXPECT_EQ(chosen("X"), "ToOut");
  auto *const ptLoaded = static_cast<IdCvtInfo *>(source.ptMsgInfo->pIdInfo);
  ptLoaded->ptConverter = cvtGetCvt(cs("ToOther"));
  EXPECT_EQ(chosen("X"), "ToOther");
  EXPECT_EQ(chosen("Y"), "ToOut");
  ptLoaded->ptNext->ptConverter = cvtGetCvt(cs("ToOther"));
  EXPECT_EQ(chosen("Y"), "ToOther");
}

TEST_F(Choosing, PairsOfTheNextGenerationMayLieAtTheSameAddress) {
  ASSERT_EQ(load({{"In", {{"X", "ToOut"}}}}), 0);
  EXPECT_EQ(chosen("X"), "ToOut");
  cvtIdEnd();
  static_cast<IdCvtInfo *>(source.ptMsgInfo->pIdInfo)->psFormatId = cs("Second");
  EXPECT_EQ(chosen("X"), "");
  EXPECT_EQ(chosen("Second"), "ToOut");
}

// --- Identification files --------------------------------------------------------------------------------

TEST_F(IdentificationFile, HangsThePairsOnTheDefinitions) {
  ASSERT_EQ(load({{"In", {{"X", "ToOut"}, {"Y", "ToOther"}}}, {"Out", {{"", "ToOut"}}}}), 0);
  const auto *const pt = static_cast<IdCvtInfo *>(cvtGetMsg(cs("In"))->pIdInfo);
  EXPECT_STREQ(pt->psFormatId, "X");
  EXPECT_STREQ(pt->psCvtName, "ToOut");
  EXPECT_EQ(pt->ptConverter, cvtGetCvt(cs("ToOut")));
  EXPECT_STREQ(pt->ptNext->psFormatId, "Y");
  EXPECT_EQ(pt->ptNext->ptNext, nullptr);
  EXPECT_EQ(pt->psCvtName, cvtStrDup(cs("ToOut")));
  EXPECT_NE(cvtGetMsg(cs("Out"))->pIdInfo, nullptr);
  EXPECT_EQ(cvtGetMsg(cs("Other"))->pIdInfo, nullptr);
}

TEST_F(IdentificationFile, LaterEntryOfAMessageReplacesTheEarlierOne) {
  ASSERT_EQ(load({{"In", {{"X", "ToOut"}, {"", "ToOut"}}}, {"In", {{"Y", "ToOther"}}}}), 0);
  EXPECT_EQ(chosen("Y"), "ToOther");
  EXPECT_EQ(chosen("X"), "");  // replaced, not added to
  EXPECT_STREQ(static_cast<IdCvtInfo *>(cvtGetMsg(cs("In"))->pIdInfo)->psFormatId, "Y");
}

TEST_F(IdentificationFile, OfTwoFilesTheLaterOneReplacesAMessagesPairs) {
  tree.file("Info/second.xml", choices({{"In", {{"", "ToOther"}}}}));
  ASSERT_EQ(load({{"In", {{"", "ToOut"}}}, {"Out", {{"", "ToOut"}}}}), 0);
  std::string sLast;
  for (const std::string &sText : test::logTexts(5)) {
    if (sText == "Load File [info.xml] ok" || sText == "Load File [second.xml] ok") sLast = sText;
  }
  EXPECT_EQ(chosen("any"), sLast == "Load File [second.xml] ok" ? "ToOther" : "ToOut");
  EXPECT_NE(cvtGetMsg(cs("Out"))->pIdInfo, nullptr);  // other messages keep theirs
}

TEST_F(IdentificationFile, UnknownMessageFailsTheStart) {
  EXPECT_EQ(load({{"In", {{"", "ToOut"}}}, {"in", {}}, {"Out", {{"", "ToOut"}}}}), -1);
  EXPECT_EQ(test::logTexts(1), infoTrail({"Message [in] is not find !!"}, false));
  EXPECT_NE(cvtGetMsg(cs("In"))->pIdInfo, nullptr);  // handled before, stays bound
  EXPECT_EQ(cvtGetMsg(cs("Out"))->pIdInfo, nullptr);
  EXPECT_EQ(nGRet, -1);
}

constexpr char kNoConverter[] = "p->ptConverter = cvtGetCvt(psCvtName) is Err!!";
constexpr char kPairsFail[] =
    "IdCvtInfo * ptIdCvtInfo = sttParseXmlStruct(ptXmlNode, \"IdCvtInfo\", \"ptIdCvtInfo\", "
    "sttParseXmlIdCvtInfo) is Err!!";
constexpr char kNextPairFails[] =
    "struct IdCvtInfo * ptNext = sttParseXmlNext(ptXmlNode, \"IdCvtInfo\", \"ptNext\", sttParseXmlIdCvtInfo) "
    "is "
    "Err!!";

TEST_F(IdentificationFile, UnknownConverterFailsTheStartWithAWholeTrail) {
  EXPECT_EQ(load({{"In", {{"X", "ToOut"}, {"", "toout"}}}}), -1);
  EXPECT_EQ(test::logTexts(1), recordTrail({kNoConverter, place("IdCvtInfo"), kNextPairFails, kPairsFail}));
  EXPECT_EQ(cvtGetMsg(cs("In"))->pIdInfo, nullptr);
}

TEST_F(IdentificationFile, AbsentConverterNameFailsTheStart) {
  EXPECT_EQ(loadText("<IdInfo><IdMsgInfo psMsgName='In'><IdCvtInfo __ID='ptIdCvtInfo' psFormatId='X'/>"
                     "</IdMsgInfo></IdInfo>"),
            -1);
  EXPECT_EQ(test::logTexts(1), recordTrail({kNoConverter, place("IdCvtInfo"), kPairsFail}));
}

TEST_F(IdentificationFile, PairWithoutFormatIdIsRefused) {
  EXPECT_EQ(loadText("<IdInfo><IdMsgInfo psMsgName='In'><IdCvtInfo __ID='ptIdCvtInfo' psCvtName='ToOut'/>"
                     "</IdMsgInfo></IdInfo>"),
            -1);
  EXPECT_EQ(test::logTexts(1),
            recordTrail({"[psFormatId] is NULL", "char * psFormatId = GetTargetFormat(ptXmlNode) is Err!!",
                         place("IdCvtInfo"), kPairsFail}));
}

TEST_F(IdentificationFile, WithAnotherRootElementFailsTheStart) {
  EXPECT_EQ(loadText("<Id><IdMsgInfo psMsgName='In'/></Id>"), -1);
  EXPECT_EQ(test::logTexts(1), infoTrail({"[IdInfo] is different then xml root name[Id]",
                                          "Parse Xml File To Identify Info Struct Err!!"},
                                         false));
}

TEST_F(IdentificationFile, WithoutMessageNameFailsTheStart) {
  EXPECT_EQ(loadText("<IdInfo><IdMsgInfo/></IdInfo>"), -1);
  EXPECT_EQ(test::logTexts(1), infoTrail({"Message [(null)] is not find !!"}, false));
}

TEST_F(IdentificationFile, MayBeMissing) {
  sMoreSections = "<Id __ID='ptId' psIdInfoPath='Nowhere'/>";
  EXPECT_EQ(load({}), 0);
}

// --- pubConvert ------------------------------------------------------------------------------------------

class Converting : public Choices {
 protected:
  void SetUp() override {
    Choices::SetUp();
    convert("ToLong", {copy(src("A"), dst("L"))}, "In", kLong);
    define(kLong, {field("L")});
    if (load({{"In", {{"X", "ToOut"}, {"broken", "Broken"}, {"long", "ToLong"}}}}) != 0) {
      ADD_FAILURE() << "the configuration does not load";
    }
    from = test::newMessage("In");
    from.set("A", "a").set("B", "b");
    source.tValueListInfo = {from.ptList, from.ptNode, 0, {}};
    std::string("In").copy(source.sMsgName, 2);
  }
  int convertTo(const std::string &sFormat) {
    setFormat(sFormat);
    test::clearLog();
    return pubConvert(&source, &target, nullptr);
  }
  Level result() const {
    return {target.tValueListInfo.ptValueList, target.ptMsgInfo->pptMessageIdx,
            target.tValueListInfo.ptMemNode};
  }

  const std::string kLong = "Name_of_seventy_characters_" + std::string(43, 'n');
  Level from{};
};

TEST_F(Converting, NamesBindsAndFillsTheDestination) {
  EXPECT_EQ(convertTo("X"), 0);
  EXPECT_STREQ(target.sMsgName, "Out");
  EXPECT_EQ(target.ptMsgInfo, cvtGetMsg(cs("Out")));
  EXPECT_EQ(result().get("X"), "a");
  EXPECT_EQ(result().get("Y"), "fixed");
  EXPECT_EQ(target.tValueListInfo.ptValueList->nNow, gnMaxValueNum);  // nValueNum -1: the full capacity
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(Converting, ValueListHasTheCountThatTheFormatSet) {
  cvtGetMsg(cs("Out"))->nValueNum = 2;
  EXPECT_EQ(convertTo("X"), 0);
  EXPECT_EQ(target.tValueListInfo.ptValueList->nNow, 2);
}

TEST_F(Converting, LongerNameOfTheDestinationIsCleared) {
  setFormat("X");
  std::string("AMuchLongerName").copy(target.sMsgName, 15);
  EXPECT_EQ(pubConvert(&source, &target, nullptr), 0);
  EXPECT_EQ(std::string(target.sMsgName, sizeof target.sMsgName), "Out" + std::string(58, '\0'));
}

TEST_F(Converting, NameThatFillsTheFieldHasNoTerminatorAndStillFindsItsDefinition) {
  EXPECT_EQ(convertTo("long"), 0);
  EXPECT_EQ(std::string(target.sMsgName, sizeof target.sMsgName), kLong.substr(0, 61));
  EXPECT_STREQ(target.sMsgFormat, "long");  // nothing was written behind the field
  EXPECT_EQ(target.ptMsgInfo, cvtGetMsg(cs(kLong.c_str())));
  EXPECT_EQ(result().get("L"), "a");
}

TEST_F(Converting, WithoutSourceOrDestinationFails) {
  test::clearLog();
  EXPECT_EQ(pubConvert(nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(pubConvert(&source, nullptr, nullptr), -1);
  EXPECT_EQ(test::logTexts(1), (Texts{"[ptSrtMsg] is NULL", "[ptDstMsg] is NULL"}));
}

TEST_F(Converting, WithoutAConverterFails) {
  EXPECT_EQ(convertTo("nothing"), -1);
  EXPECT_EQ(test::logTexts(1), (Texts{"Message Convert Format id [nothing] not fond!!",
                                      "Get convert Msg[In] To Msg[nothing] define info err!!"}));
  EXPECT_EQ(target.ptMsgInfo, nullptr);
}

TEST_F(Converting, WithoutASourceDefinitionFails) {
  source.ptMsgInfo = nullptr;
  EXPECT_EQ(convertTo("X"), -1);
  EXPECT_EQ(test::logTexts(1),
            (Texts{"[ptInSrcMsg->ptMsgInfo] is NULL", "Get convert Msg[In] To Msg[X] define info err!!"}));
}

TEST_F(Converting, UnknownDestinationDefinitionFails) {
  cvtGetCvt(cs("ToOut"))->psDstStructName = cs("Gone");
  EXPECT_EQ(convertTo("X"), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"Msg [Gone] get define info err!!"});
  EXPECT_STREQ(target.sMsgName, "Gone");  // the destination is left partly filled
}

TEST_F(Converting, UnknownDestinationDefinitionUnbindsADestinationAndLeavesItsValues) {
  ASSERT_EQ(convertTo("X"), 0);
  ValueList *const ptList = target.tValueListInfo.ptValueList;
  cvtGetCvt(cs("ToOut"))->psDstStructName = cs("Gone");
  EXPECT_EQ(pubConvert(&source, &target, nullptr), -1);
  EXPECT_EQ(target.ptMsgInfo, nullptr);
  EXPECT_EQ(target.tValueListInfo.ptValueList, ptList);
}

TEST_F(Converting, TakesAFreshListEachTime) {
  ASSERT_EQ(convertTo("X"), 0);
  ValueList *const ptFirst = target.tValueListInfo.ptValueList;
  EXPECT_EQ(pubConvert(&source, &target, nullptr), 0);
  EXPECT_NE(target.tValueListInfo.ptValueList, ptFirst);
  EXPECT_EQ(result().get("X"), "a");
}

TEST_F(Converting, ArgumentIsNotUsed) {
  char cArgument = 0;
  setFormat("X");
  test::clearLog();
  EXPECT_EQ(pubConvert(&source, &target, &cArgument), 0);
  EXPECT_EQ(target.ptMsgInfo, cvtGetMsg(cs("Out")));
  EXPECT_EQ(result().get("X"), "a");
  EXPECT_EQ(cArgument, 0);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(Converting, ConverterWithoutADestinationFails) {
  cvtGetCvt(cs("ToOut"))->psDstStructName = nullptr;
  EXPECT_EQ(convertTo("X"), -1);
  EXPECT_EQ(test::logTexts(1), Texts{"[psDstName] is NULL"});
}

TEST_F(Converting, FailingRulesFailTheStepWithAWholeTrail) {
  EXPECT_EQ(convertTo("broken"), -1);
  EXPECT_EQ(test::logTexts(1),
            (Texts{"No Defined Arg Type [6] err!!",
                   "[ptSrc = GetValue(ptSrcValueList, ptDstValueList, ptCopy->ptSrcArgs, ptMemNode)] is NULL",
                   "CvtCopy Err!!", "Do Convert Rule [1] err!!",
                   "Convert [Broken] From struct[In] tp Struct[Out] err!!", "cvtConvert err!!"}));
  EXPECT_EQ(target.ptMsgInfo, cvtGetMsg(cs("Out")));
}

TEST_F(Converting, SourceWithoutValuesFails) {
  source.tValueListInfo.ptValueList = nullptr;
  EXPECT_EQ(convertTo("X"), -1);
  EXPECT_EQ(test::logTexts(1),
            (Texts{"[ptSrcValueList] is NULL", "Convert [ToOut] From struct[In] tp Struct[Out] err!!",
                   "cvtConvert err!!"}));
}

// --- From bytes to bytes ---------------------------------------------------------------------------------

class EndToEnd : public testing::Test {
 protected:
  using Texts = std::vector<std::string>;

  void SetUp() override {
    tree.file("Msg/Order.xml",
              definition("toy", "Order",
                         {field("Id"), loop("Items", {field("Code"), field("Qty")}), field("Status")}));
    tree.file("Msg/Note.xml", definition("toy", "Note",
                                         {field("State"), field("Count"), field("Ref"),
                                          loop("Lines", {field("Order"), field("Text")})}));
    tree.file("Cvt/Note.xml",
              converter("Note", "Order", "Note",
                        {copy(src("Id"), dst("Ref")), copy(loopNum(src("Items")), dst("Count")),
                         mapping({src("Status")}, {tagged(value("P"), {copy(value("paid"), dst("State"))}),
                                                   tagged(value("O"), {copy(value("open"), dst("State"))})}),
                         loopRule(src("Items"), dst("Lines"), {copy(src("Code"), dst("Text"))}),
                         loopRule(level("Set"), dst("Lines"), {copy(src("Id"), dst("Order"))})}));
    tree.file("Id/id.xml", pipelines({{"toy", {{"pubParse"}}, {{"pubConvert"}, {"pubGenerate"}}}}));
    tree.file("Info/order.xml", choices({{"Order", {{"toy", "Note"}}}}));
    tree.file("All/root.xml", "<AllInfo><AllInfo><Plug __ID='ptPlug' psBasePlugPath='" CVT2_PLUGIN_DIR
                              "/'><Plug __ID='ptPlugs' psName='toy'/></Plug>"
                              "<Message __ID='ptMessage'><PathList __ID='ptMsgList' psPath='Msg'/></Message>"
                              "<Convert __ID='ptConvert' psCvtPath='Cvt'/>"
                              "<Id __ID='ptId' psIdPath='Id' psIdInfoPath='Info'/></AllInfo></AllInfo>");
    if (cvtInit(tree.arg()) != 0) ADD_FAILURE() << "the configuration does not load";
  }

  test::ConfigTree tree;
};

TEST_F(EndToEnd, MessageBecomesAnotherOne) {
  char sIn[] = "4711,[A,1;B,2;],P";
  char sOut[100];
  int nOut = sizeof sOut;
  int nError = 1;
  InnerMessage *const ptIn =
      cvtInitMessasge(cs("Order"), cs("toy"), sIn, static_cast<int>(sizeof sIn) - 1, &nError);
  ASSERT_NE(ptIn, nullptr);
  InnerMessage *const ptOut = cvtGenerateMessasge(ptIn, cs("toy"), sOut, &nOut, &nError);
  ASSERT_NE(ptOut, nullptr);
  EXPECT_EQ(nError, 0);
  EXPECT_EQ(std::string(sOut, static_cast<size_t>(nOut)), "paid,2,4711,[4711,A;4711,B;]");
  EXPECT_EQ(cvtFreeMessage(ptOut), 0);
  EXPECT_EQ(cvtFreeMessage(ptIn), 0);
}

TEST_F(EndToEnd, ManyMessagesTakeNoMoreListsThanOne) {
  char sIn[] = "4711,[A,1;B,2;],O";
  for (int i = 0; i < 100; ++i) {
    char sOut[100];
    int nOut = sizeof sOut;
    int nError = 1;
    InnerMessage *const ptIn =
        cvtInitMessasge(cs("Order"), cs("toy"), sIn, static_cast<int>(sizeof sIn) - 1, &nError);
    InnerMessage *const ptOut = cvtGenerateMessasge(ptIn, cs("toy"), sOut, &nOut, &nError);
    ASSERT_EQ(std::string(sOut, static_cast<size_t>(nOut)), "open,2,4711,[4711,A;4711,B;]");
    cvtFreeMessage(ptOut);
    cvtFreeMessage(ptIn);
  }
  int nOrdinary = 0;
  int nLoops = 0;
  for (const ValueList *pt = gptFreeValue; pt != nullptr; pt = pt->ptNext) ++nOrdinary;
  for (const ValueList *pt = gptLoopValue; pt != nullptr; pt = pt->ptNext) ++nLoops;
  EXPECT_EQ(nOrdinary, 10);
  EXPECT_EQ(nLoops, 2);
}

TEST_F(EndToEnd, UnknownTargetFormatFails) {
  char sIn[] = "4711,[],P";
  char sOut[100];
  int nOut = sizeof sOut;
  int nError = 1;
  InnerMessage *const ptIn =
      cvtInitMessasge(cs("Order"), cs("toy"), sIn, static_cast<int>(sizeof sIn) - 1, &nError);
  test::clearLog();
  EXPECT_EQ(cvtGenerateMessasge(ptIn, cs("other"), sOut, &nOut, &nError), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(test::logTexts(1),
            (Texts{"format id [other] mot find!!", "Get Message Formate [other] Info err!!\n",
                   "Generate Message[] err!!"}));
  EXPECT_EQ(cvtFreeMessage(ptIn), 0);
}

}  // namespace

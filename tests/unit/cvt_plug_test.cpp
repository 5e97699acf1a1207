#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "cvt.h"
#include "log_capture.h"
#include "toy_config.h"

using test::cs;
using test::logged;
using test::loggedInOrder;
using test::logTexts;

namespace {

using Texts = std::vector<std::string>;

const std::string kBase = CVT2_PLUGIN_DIR "/";

class PlugIns : public testing::Test {
 protected:
  void TearDown() override { cvtEnd(); }

  // A start with a "Plug" section of these plug-ins and nothing else.
  int start(const std::vector<std::string> &plugs) { return startSection(test::plugSection(plugs)); }
  int startSection(const std::string &sSection) {
    config.root = {};
    config.root.sPlug = sSection;
    config.writeRoot();
    test::clearLog();
    return config.start();
  }

  // A whole configuration of the good toy plug-in, and a message through it.
  void expectToyWorks() {
    test::ToyConfig good;
    ASSERT_EQ(good.start(), 0);
    char sIn[] = "Order,Ann,Rome,[A,1,[];],hi";
    int nError = 0;
    InnerMessage *const pt = cvtParseMessasge(cs("02"), sIn, static_cast<int>(strlen(sIn)), &nError);
    ASSERT_NE(pt, nullptr);
    EXPECT_EQ(nError, 0);
    EXPECT_EQ(cvtFreeMessage(pt), 0);
    // a type that nobody knows runs through every dispatcher that was ever registered
    good.file("msg/Odd.xml",
              "<toy><Msg psMsgName=\"Odd\"><Unknown __ID=\"pInfo\"/><Message __ID=\"ptHead\" "
              "psNodeName=\"A\"><StructAttr __ID=\"ptStructAttr\"/></Message></Msg></toy>");
    test::clearLog();
    EXPECT_EQ(good.start(), 0);
    EXPECT_TRUE(logged(1, "Type[Unknown] Not Define"));
    EXPECT_EQ(cvtEnd(), 0);
  }

  // What the probes "first" and "second" said.
  static Texts probes() {
    Texts said;
    for (const test::LogLine &line : test::logLines()) {
      if (line.sModule == "$probe") said.push_back(line.sText);
    }
    return said;
  }

  test::ToyConfig config;
};

using Load = PlugIns;
using Refused = PlugIns;
using BadFile = PlugIns;
using Faulty = PlugIns;
using Close = PlugIns;
using SectionRecord = PlugIns;

// --- Where plug-ins are found
// -------------------------------------------------------------------------------------

TEST_F(Load, NameAloneGivesFileAndInitialiser) {
  EXPECT_EQ(start({"psName=\"first\""}), 0);
  EXPECT_EQ(probes(), (Texts{"first opened", "first initialised"}));
  ASSERT_NE(gptPlugInfo, nullptr);
  EXPECT_STREQ(gptPlugInfo->ptPlugs->psName, "first");
  EXPECT_EQ(gptPlugInfo->ptPlugs->psPath, nullptr);
  EXPECT_NE(gptPlugInfo->ptPlugs->ptInfo, nullptr);
  EXPECT_EQ(gptPlugInfo->ptPlugs->ptNext, nullptr);
}

TEST_F(Load, PathAndFunctionAreUsedAsTheyStand) {
  EXPECT_EQ(
      start({"psName=\"anything\" psPath=\"" + kBase + "libcvt_plug_first.so\" psFunction=\"firstInit\""}),
      0);
  EXPECT_EQ(probes(), (Texts{"first opened", "first initialised"}));
}

TEST_F(Load, PathIgnoresTheBasePath) {
  EXPECT_EQ(startSection("<Plug __ID=\"ptPlug\" psBasePlugPath=\"/nowhere/\"><Plug __ID=\"ptPlugs\" "
                         "psName=\"first\" psPath=\"" +
                         kBase + "libcvt_plug_first.so\"/></Plug>"),
            0);
}

TEST_F(Load, FunctionAloneKeepsTheFileOfTheName) {
  EXPECT_EQ(start({"psName=\"bad\" psFunction=\"quietInit\""}), 0);
}

TEST_F(Load, BasePathIsJoinedWithoutASeparator) {
  EXPECT_EQ(startSection("<Plug __ID=\"ptPlug\" psBasePlugPath=\"/opt/plug\"><Plug __ID=\"ptPlugs\" "
                         "psName=\"fix\"/></Plug>"),
            -1);
  EXPECT_EQ(logTexts().front().substr(0, 42), "dlopen Err:/opt/pluglibcvt_plug_fix.so: ca");
}

TEST_F(Load, WithoutABasePathTheLoadersOwnSearchApplies) {
  EXPECT_EQ(startSection("<Plug __ID=\"ptPlug\"><Plug __ID=\"ptPlugs\" psName=\"nowhere\"/></Plug>"), -1);
  EXPECT_STREQ(gpsBasePlugPath, "");
  EXPECT_EQ(logTexts().front().substr(0, 36), "dlopen Err:libcvt_plug_nowhere.so: c");
}

TEST_F(Load, BasePathIsKeptInTheRecordAndTheGlobal) {
  EXPECT_EQ(start({}), 0);
  EXPECT_EQ(std::string(gpsBasePlugPath), kBase);
  EXPECT_EQ(std::string(gptPlugInfo->psBasePlugPath), kBase);
  EXPECT_EQ(gptPlugInfo->ptPlugs, nullptr);
  EXPECT_EQ(startSection("<Plug __ID=\"ptPlug\"/>"), 0);
  EXPECT_STREQ(gpsBasePlugPath, "");
  EXPECT_EQ(gptPlugInfo->psBasePlugPath, nullptr);
}

TEST_F(Load, OrderIsThatOfTheDocument) {
  EXPECT_EQ(start({"psName=\"second\"", "psName=\"first\""}), 0);
  EXPECT_EQ(probes(), (Texts{"second opened", "second initialised", "first opened", "first initialised"}));
  EXPECT_STREQ(gptPlugInfo->ptPlugs->psName, "second");
  EXPECT_STREQ(gptPlugInfo->ptPlugs->ptNext->psName, "first");
}

TEST_F(Load, InitialiserGetsItsOwnElement) {
  EXPECT_EQ(start({"psName=\"first\" nResult=\"0\"", "psName=\"second\" nResult=\"3\""}), -1);
  EXPECT_TRUE(logged(1, "Func[secondInit] in [" + kBase + "libcvt_plug_second.so] Init err!!"));
}

TEST_F(Load, RegistersTheFormat) {
  EXPECT_EQ(start({"psName=\"toy\""}), 0);
  ASSERT_NE(gptSttInfo, nullptr);
  EXPECT_STREQ(gptSttInfo->psTypeName, "toy");
  EXPECT_NE(cvtStrFindStringList(gptFmtGlobalInfo->ptInitList, cs("toy")), nullptr);
}

TEST_F(Load, NamesOfAnyLengthAreCut) {
  const std::string sLong(5000, 'n');
  EXPECT_EQ(start({"psName=\"" + sLong + "\""}), -1);
  EXPECT_EQ(start({"psName=\"" + sLong + "\" psPath=\"" + kBase + "libcvt_plug_first.so\""}), -1);
  EXPECT_TRUE(logged(1, "Function [" + sLong.substr(0, 2047) + "] Not Find in [" + kBase +
                            "libcvt_plug_first.so]!![" + kBase +
                            "libcvt_plug_first.so: undefined symbol: " + sLong.substr(0, 2047) + "]"));
}

// --- Refusals: one clear line each, then the section's trail
// ------------------------------------------------------

// The line, then what the library adds on the way out of the section.
Texts trail(const std::string &sLine) {
  return {sLine, "void * ptInfo = GetPlug(psName, psPath, psFunction, ptXmlNode) is Err!!",
          "Get PlugInfo Err!!"};
}

TEST_F(Refused, WithoutAName) {
  EXPECT_EQ(start({"psPath=\"x.so\""}), -1);
  EXPECT_TRUE(loggedInOrder(trail("Plug Name Is Null!!")));
}

TEST_F(Refused, WithoutItsFile) {
  EXPECT_EQ(start({"psName=\"none\""}), -1);
  EXPECT_TRUE(loggedInOrder(
      trail("dlopen Err:" + kBase +
            "libcvt_plug_none.so: cannot open shared object file: No such file or directory!!")));
}

TEST_F(Refused, WithoutItsInitialiserAndClosedAgain) {
  EXPECT_EQ(start({"psName=\"first\" psFunction=\"nothing\""}), -1);
  const std::string sFile = kBase + "libcvt_plug_first.so";
  EXPECT_TRUE(loggedInOrder(
      trail("Function [nothing] Not Find in [" + sFile + "]!![" + sFile + ": undefined symbol: nothing]")));
  EXPECT_EQ(probes(), (Texts{"first opened", "first closed"}));
}

TEST_F(Refused, WithANullInitialiser) {
  EXPECT_EQ(start({"psName=\"bad\" psFunction=\"zeroInit\""}), -1);
  EXPECT_TRUE(loggedInOrder(
      trail("Function [zeroInit] Not Find in [" + kBase + "libcvt_plug_bad.so]!![the symbol is null]")));
}

TEST_F(Refused, WhenItsInitialiserFails) {
  EXPECT_EQ(start({"psName=\"bad\""}), -1);
  EXPECT_TRUE(loggedInOrder(trail("Func[badInit] in [" + kBase + "libcvt_plug_bad.so] Init err!!")));
}

TEST_F(Refused, WhenItsInitialiserThrows) {
  EXPECT_EQ(start({"psName=\"bad\" psFunction=\"throwInit\""}), -1);
  EXPECT_TRUE(loggedInOrder({"Plug[bad] let an exception out: no licence",
                             "Func[throwInit] in [" + kBase + "libcvt_plug_bad.so] Init err!!"}));
  EXPECT_EQ(start({"psName=\"bad\" psFunction=\"throwNumberInit\""}), -1);
  EXPECT_TRUE(logged(1, "Plug[bad] let an exception out"));
}

TEST_F(Refused, SaysWhereInTheRootFile) {
  EXPECT_EQ(start({"psName=\"none\""}), -1);
  EXPECT_TRUE(logged(1, "File[" + config.path("All/root.xml") + "] Line[1] Element[Plug]"));
}

TEST_F(Refused, StopsTheListAndLeavesTheEarlierOnesOpen) {
  EXPECT_EQ(start({"psName=\"first\"", "psName=\"none\"", "psName=\"second\""}), -1);
  EXPECT_EQ(gptPlugInfo, nullptr);
  EXPECT_EQ(cvtPlugEnd(), 0);
  EXPECT_EQ(probes(), (Texts{"first opened", "first initialised"}));
}

TEST_F(Refused, NullSection) {
  EXPECT_EQ(cvtPlugInit(nullptr, cs("Plug")), nullptr);
  EXPECT_EQ(logTexts(), Texts{"[ptXmlNode] is NULL"});
}

// --- Files that are no plug-ins
// -------------------------------------------------------------------------------------

TEST_F(BadFile, EmptyFile) {
  config.file("empty.so", "");
  EXPECT_EQ(start({"psName=\"x\" psPath=\"" + config.path("empty.so") + "\""}), -1);
  EXPECT_TRUE(loggedInOrder(trail("dlopen Err:" + config.path("empty.so") + ": file too short!!")));
}

TEST_F(BadFile, TextFile) {
  config.file("text.so", std::string(5000, 't'));
  EXPECT_EQ(start({"psName=\"x\" psPath=\"" + config.path("text.so") + "\""}), -1);
  EXPECT_TRUE(loggedInOrder(trail("dlopen Err:" + config.path("text.so") + ": invalid ELF header!!")));
}

TEST_F(BadFile, Directory) {
  EXPECT_EQ(start({"psName=\"x\" psPath=\"" + config.path("msg") + "\""}), -1);
  EXPECT_EQ(logTexts().front().substr(0, 12), "dlopen Err:/");
}

// A copy of the toy plug-in with its first bytes changed or cut.
std::string toyBytes() {
  std::ifstream in(kBase + "libcvt_plug_toy.so", std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

TEST_F(BadFile, OfAnotherArchitecture) {
  std::string sBytes = toyBytes();
  sBytes[18] = '\xB7';  // e_machine: 64-bit Arm
  sBytes[19] = 0;
  config.file("arm.so", sBytes);
  EXPECT_EQ(start({"psName=\"x\" psPath=\"" + config.path("arm.so") + "\""}), -1);
  EXPECT_EQ(logTexts().front().substr(0, 12), "dlopen Err:/");
  EXPECT_TRUE(loggedInOrder({"Get PlugInfo Err!!"}));
}

TEST_F(BadFile, Of32Bits) {
  std::string sBytes = toyBytes();
  sBytes[4] = 1;  // EI_CLASS
  config.file("small.so", sBytes);
  EXPECT_EQ(start({"psName=\"x\" psPath=\"" + config.path("small.so") + "\""}), -1);
  EXPECT_TRUE(
      loggedInOrder(trail("dlopen Err:" + config.path("small.so") + ": wrong ELF class: ELFCLASS32!!")));
}

TEST_F(BadFile, CutInTheMiddleOfItsHeader) {
  config.file("cut.so", toyBytes().substr(0, 40));
  EXPECT_EQ(start({"psName=\"x\" psPath=\"" + config.path("cut.so") + "\""}), -1);
  EXPECT_TRUE(loggedInOrder(trail("dlopen Err:" + config.path("cut.so") + ": file too short!!")));
}

TEST_F(BadFile, IsFollowedByAGoodConfiguration) {
  config.file("text.so", "no plug-in");
  EXPECT_EQ(start({"psName=\"x\" psPath=\"" + config.path("text.so") + "\""}), -1);
  expectToyWorks();
}

// --- Plug-ins with faults
// ---------------------------------------------------------------------------------------------

// A whole toy configuration whose plug-in is bad.cpp with that initialiser.
int startFaulty(test::ToyConfig &config, const std::string &sInit) {
  config.root.sPlug = test::plugSection({"psName=\"bad\" psFunction=\"" + sInit + "\""});
  config.writeRoot();
  test::clearLog();
  return config.start();
}

TEST_F(Faulty, WhichRegistersNothingLeavesItsFilesUnread) {
  EXPECT_EQ(startFaulty(config, "quietInit"), -1);
  EXPECT_TRUE(loggedInOrder({"SttInfo no Type[toy] Info!!", "cvt Message Parse Err!!"}));
}

TEST_F(Faulty, WithNullDispatchersStillRegistersItsFormat) {
  EXPECT_EQ(startFaulty(config, "nullDispatchersInit"), -1);  // only the step "toyName" is missing
  EXPECT_TRUE(loggedInOrder({"[fpParseVoid] is NULL", "IdFunc[toyName] Not Find!!"}));
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
}

TEST_F(Faulty, WithoutAFormatInitialiserEmptiesTheList) {
  config.file("id/pipelines.xml", test::pipelines({{"02", {"pubParse"}, {"pubGenerate"}}}));
  EXPECT_EQ(startFaulty(config, "nullFormatInit"), 0);
  EXPECT_TRUE(logged(1, "[ptInfo] is NULL"));
  EXPECT_EQ(gptFmtGlobalInfo->ptInitList, nullptr);
  EXPECT_EQ(cvtGetMsg(cs("Order"))->fParse, nullptr);
}

TEST_F(Faulty, WithoutAFormatNameRegistersNothing) {
  EXPECT_EQ(startFaulty(config, "nullNameInit"), -1);
  EXPECT_TRUE(loggedInOrder({"[psType] is NULL", "[psString] is NULL", "SttInfo no Type[toy] Info!!"}));
}

TEST_F(Faulty, WithoutParseAndGenerateFailsAtTheMessage) {
  config.file("id/pipelines.xml",
              test::pipelines({{"01", {"pubParse"}, {"pubGenerate"}}, {"02", {}, {"pubGenerate"}}}));
  ASSERT_EQ(startFaulty(config, "noFunctionsInit"), 0);
  char sIn[] = "7";
  char sOut[8];
  int nOut = sizeof sOut;
  int nError = 0;
  test::clearLog();
  EXPECT_EQ(cvtInitMessasge(cs("Order"), cs("01"), sIn, 1, &nError), nullptr);
  EXPECT_EQ(logTexts().front(), "[ptInMsg->ptMsgInfo->fParse] is NULL");
  InnerMessage *const pt = cvtNewMessage(cs("Order"), cs("02"), &nError);
  test::clearLog();
  EXPECT_EQ(cvtGenMessage(pt, sOut, &nOut), -1);
  EXPECT_EQ(logTexts().front(), "[ptInMsg->ptMsgInfo->fGen] is NULL");
  cvtFreeMessage(pt);
}

TEST_F(Faulty, IsFollowedByAGoodConfiguration) {
  for (const char *ps :
       {"badInit", "throwInit", "throwNumberInit", "quietInit", "nullNameInit", "zeroInit", "nothing"}) {
    SCOPED_TRACE(ps);
    EXPECT_EQ(startFaulty(config, ps), -1);
    expectToyWorks();
  }
}

// Its definitions had been read when the start failed: a start that failed is not released by the next one.
TEST_F(Faulty, WhoseDefinitionsWereReadIsFollowedByAGoodConfigurationAfterTheEnd) {
  EXPECT_EQ(startFaulty(config, "nullDispatchersInit"), -1);
  EXPECT_EQ(cvtEnd(), 0);
  expectToyWorks();
}

TEST_F(Faulty, AtAReloadIsFollowedByAGoodConfiguration) {
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(startFaulty(config, "badInit"), -1);
  expectToyWorks();
}

TEST_F(Faulty, BesideAGoodOneIsFollowedByAGoodConfiguration) {
  config.root.sPlug = test::plugSection({"psName=\"toy\"", "psName=\"bad\""});
  config.writeRoot();
  EXPECT_EQ(config.start(), -1);
  expectToyWorks();
}

TEST_F(Faulty, InItsFilesIsFollowedByAGoodConfiguration) {
  config.file("msg/Order.xml", "<toy><broken");  // the plug-in is open, a later section fails
  EXPECT_EQ(config.start(), -1);
  EXPECT_NE(gptPlugInfo, nullptr);
  expectToyWorks();
}

TEST_F(Faulty, InItsFilesAndThenAnotherPlugIn) {
  config.file("msg/Order.xml", "<toy><broken");
  EXPECT_EQ(config.start(), -1);
  EXPECT_EQ(startFaulty(config, "nullDispatchersInit"),
            -1);  // closes the toy, whose dispatchers are still listed
  expectToyWorks();
}

// --- Closing
// ------------------------------------------------------------------------------------------------------------

TEST_F(Close, IsFirstToLast) {
  EXPECT_EQ(start({"psName=\"first\"", "psName=\"second\""}), 0);
  test::clearLog();
  EXPECT_EQ(cvtPlugEnd(), 0);
  EXPECT_EQ(probes(), (Texts{"first closed", "second closed"}));
  EXPECT_EQ(gptPlugInfo, nullptr);
  EXPECT_EQ(cvtPlugEnd(), 0);
  EXPECT_EQ(probes().size(), 2U);
}

TEST_F(Close, WithoutASectionDoesNothing) {
  EXPECT_EQ(cvtPlugEnd(), 0);
}

TEST_F(Close, HappensAtTheEnd) {
  EXPECT_EQ(start({"psName=\"first\""}), 0);
  test::clearLog();
  cvtEnd();
  EXPECT_EQ(probes(), Texts{"first closed"});
}

TEST_F(Close, ComesBeforeTheNextSectionIsOpened) {
  EXPECT_EQ(start({"psName=\"first\""}), 0);
  EXPECT_EQ(start({"psName=\"first\"", "psName=\"second\""}), 0);
  EXPECT_EQ(probes(), (Texts{"first closed", "first opened", "first initialised", "second opened",
                             "second initialised"}));
}

// --- The records
// --------------------------------------------------------------------------------------------------------

TEST_F(SectionRecord, TypesAreComparedExactly) {
  void *const ptNode = xmlMadeNode(cs("Plug"));
  test::clearLog();
  EXPECT_EQ(sttParseVoidcvt_plug(ptNode, cs("plug")), nullptr);
  EXPECT_EQ(sttParseVoidcvt_plug(ptNode, cs("PlugInfos")), nullptr);
  EXPECT_EQ(sttGenVoidcvt_plug(ptNode, ptNode, cs("x"), cs("AllInfo")), nullptr);
  EXPECT_TRUE(logTexts(0).empty());
  void *const ptInfo = sttParseVoidcvt_plug(ptNode, cs("PlugInfo"));
  ASSERT_NE(ptInfo, nullptr);
  EXPECT_EQ(static_cast<PlugInfo *>(ptInfo)->ptPlugs, nullptr);
  xmlNodeFree(ptNode);
}

TEST_F(SectionRecord, IsWrittenWithItsPlainBasePath) {
  Plug *const ptSecond = sttNewPlug(cs("b"), nullptr, nullptr, nullptr, nullptr);
  Plug *const ptFirst = sttNewPlug(cs("a"), cs("a.so"), cs("aInit"), nullptr, ptSecond);
  PlugInfo *const ptInfo = sttNewPlugInfo(cs("/opt/"), ptFirst);
  void *const ptNode = xmlMadeNode(cs("PlugInfo"));
  EXPECT_EQ(sttGenXmlPlugInfo(ptInfo, ptNode, cs("PlugInfo")), ptNode);
  char *const psBase = xmlGetNodeAttr(ptNode, cs("psBasePlugPath"));
  EXPECT_STREQ(psBase, "/opt/");
  xmlFreeString(psBase);
  void *const ptPlug = xmlGetChileNode(ptNode);
  char *const psPath = xmlGetNodeAttr(ptPlug, cs("psPath"));
  EXPECT_STREQ(psPath, "a.so");
  xmlFreeString(psPath);
  EXPECT_NE(xmlGetNextNode(ptPlug), nullptr);
  xmlNodeFree(ptNode);
}

TEST_F(SectionRecord, CannotBeWrittenWithAnOpenHandleOfNoKnownType) {
  Plug *const ptPlug = sttNewPlug(cs("a"), nullptr, nullptr, &config, nullptr);
  void *const ptNode = xmlMadeNode(cs("Plug"));
  test::clearLog();
  EXPECT_EQ(sttGenXmlPlug(ptPlug, ptNode, cs("Plug")), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_TRUE(loggedInOrder(
      {"Struct Type Not Define!!", "sttGenerateXmlVoid(ptXmlNode, p->ptInfo, \"ptInfo\") is Err!!"}));
  xmlNodeFree(ptNode);
}

TEST_F(SectionRecord, CopiesItsStrings) {
  char sName[] = "name";
  Plug *const ptPlug = sttNewPlug(sName, nullptr, nullptr, nullptr, nullptr);
  sName[0] = '#';
  EXPECT_STREQ(ptPlug->psName, "name");
  EXPECT_EQ(ptPlug->psPath, nullptr);
}

}  // namespace

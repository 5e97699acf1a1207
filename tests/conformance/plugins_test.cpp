// Plug-ins: whole trails of refusals, how the loader opens them, and what their closing leaves.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cvt.h"
#include "toy_config.h"
#include "trail.h"

using test::cs;
using test::Texts;
using test::then;
using test::trail;

namespace {
std::vector<void *> f_closed;
}

// Stands before the loader's own.
extern "C" __attribute__((visibility("default"))) int dlclose(void *pHandle) {
  f_closed.push_back(pHandle);
  return reinterpret_cast<int (*)(void *)>(dlsym(RTLD_NEXT, "dlclose"))(pHandle);
}

namespace {

const std::string kBase = CVT2_PLUGIN_DIR "/";
const std::string kFirst = kBase + "libcvt_plug_first.so";
const std::string kBad = kBase + "libcvt_plug_bad.so";

class PlugIns : public testing::Test {
 protected:
  void TearDown() override { cvtEnd(); }

  // A start with a "Plug" section of these plug-ins and nothing else.
  int start(const Texts &plugs) { return startSection(test::plugSection(plugs)); }
  int startSection(const std::string &sSection) {
    config.root = {};
    config.root.sPlug = sSection;
    config.writeRoot();
    test::clearLog();
    return config.start();
  }

  // What the plug-ins themselves said.
  static Texts probes() {
    Texts said;
    for (const test::LogLine &line : test::logLines()) {
      if (line.sModule == "$probe") said.push_back(line.sText);
    }
    return said;
  }

  // The whole trail of a start whose plug-in number nPlug (from 0) is refused with this line.
  Texts refusal(const std::string &sLine, int nPlug = 0) const {
    const std::string sRoot = config.path("All/root.xml");
    Texts all = {
        "cvt_plug.cpp GetPlug: " + sLine,
        "cvt_plug.cpp sttParseXmlPlug: void * ptInfo = GetPlug(psName, psPath, psFunction, ptXmlNode) is "
        "Err!!",
        "stt.cpp place: File[" + sRoot + "] Line[1] Element[Plug]"};
    for (int i = 0; i < nPlug; ++i) {
      all.emplace_back(
          "cvt_plug.cpp sttParseXmlPlug: struct Plug * ptNext = sttParseXmlNext(ptXmlNode, \"Plug\", "
          "\"ptNext\", sttParseXmlPlug) is Err!!");
    }
    return then(all,
                {"cvt_plug.cpp sttParseXmlPlugInfo: Plug * ptPlugs = sttParseXmlStruct(ptXmlNode, \"Plug\", "
                 "\"ptPlugs\", sttParseXmlPlug) is Err!!",
                 "cvt_plug.cpp cvtPlugInit: Get PlugInfo Err!!",
                 "cvt_init.cpp sttParseXmlAllInfo: void * ptPlug = sttParseXmlStruct(ptXmlNode, \"Plug\", "
                 "\"ptPlug\", cvtPlugInit) is Err!!",
                 "stt.cpp sttParseXmlFile: parse xml[AllInfo)" + sRoot + "] faile",
                 "cvt_init.cpp InitRoot: Parse Xml File To Xml Struct Err!!",
                 "cvt_init.cpp cvtIniParseFileXml: Parse File[" + sRoot + "] Err!!",
                 "cvt_init.cpp locParseDirXmlLimit: Init[root.xml] err !!",
                 "cvt_init.cpp initialise: XmlFileInit [All] Init Err!!",
                 "cvt_init.cpp cvtInit: Init Path[" + config.path() + "] err!!\n"});
  }

  test::ToyConfig config;
};

// A "Plug" section by itself.
class Section {
 public:
  explicit Section(const std::string &sText)
      : m_pDoc(xmlFileParse(m_tree.file("section.xml", sText).arg("section.xml"))) {}
  ~Section() { xmlDocFree(m_pDoc); }
  Section(const Section &) = delete;
  Section &operator=(const Section &) = delete;
  void *element() const { return xmlGetHeadNode(m_pDoc); }

 private:
  test::ConfigTree m_tree;
  void *m_pDoc;
};

using Refusal = PlugIns;
using Opening = PlugIns;
using Closing = PlugIns;

// --- Refusals -----------------------------------------------------------------------------------------

TEST_F(Refusal, WithoutAName) {
  EXPECT_EQ(start({"psPath=\"" + kFirst + "\""}), -1);
  EXPECT_EQ(trail(), refusal("Plug Name Is Null!!"));
  EXPECT_EQ(nGRet, -1);
}

TEST_F(Refusal, WithoutAFile) {
  EXPECT_EQ(start({"psName=\"none\""}), -1);
  EXPECT_EQ(trail(),
            refusal("dlopen Err:" + kBase +
                    "libcvt_plug_none.so: cannot open shared object file: No such file or directory!!"));
}

TEST_F(Refusal, OfAnEmptyNameIsThatOfTheFileWithThatName) {
  EXPECT_EQ(start({"psName=\"\""}), -1);
  EXPECT_EQ(trail(), refusal("dlopen Err:" + kBase +
                             "libcvt_plug_.so: cannot open shared object file: No such file or directory!!"));
}

TEST_F(Refusal, CutsTheFileOfALongName) {
  const std::string sName(5000, 'n');
  EXPECT_EQ(start({"psName=\"" + sName + "\""}), -1);
  const std::string sFile = (kBase + "libcvt_plug_" + sName).substr(0, 2047);
  EXPECT_EQ(trail(),
            refusal("dlopen Err:" + sFile + ": cannot open shared object file: File name too long!!"));
}

TEST_F(Refusal, IsToldByTheLibraryAlone) {
  EXPECT_EQ(start({"psName=\"none\""}), -1);
  EXPECT_EQ(test::modules(), Texts{"$cvt2"});
}

TEST_F(Refusal, WithoutAnInitialiser) {
  EXPECT_EQ(start({"psName=\"first\" psFunction=\"nothing\""}), -1);
  EXPECT_EQ(trail(), refusal("Function [nothing] Not Find in [" + kFirst + "]!![" + kFirst +
                             ": undefined symbol: nothing]"));
  EXPECT_EQ(probes(), (Texts{"first opened", "first closed"}));
}

TEST_F(Refusal, OfACutFileWhereTheLoaderSearches) {
  EXPECT_EQ(startSection("<Plug __ID='ptPlug'><Plug __ID='ptPlugs' psName='cut'/></Plug>"), -1);
  EXPECT_EQ(trail(), refusal("dlopen Err:" + kBase +
                             "libcvt_plug_cut.so: the file ends before its last segment: copy it anew!!"));
}

TEST_F(Refusal, OfAnEmptyFunctionThatIsGiven) {
  EXPECT_EQ(start({"psName=\"first\" psFunction=\"\""}), -1);
  EXPECT_EQ(trail(),
            refusal("Function [] Not Find in [" + kFirst + "]!![" + kFirst + ": undefined symbol: ]"));
}

// The loader takes an empty file name for the program itself.
TEST_F(Refusal, OfAnEmptyPathThatIsGiven) {
  EXPECT_EQ(start({"psName=\"first\" psPath=\"\""}), -1);
  const std::string sLine = trail().front();
  EXPECT_TRUE(sLine.starts_with("cvt_plug.cpp GetPlug: Function [firstInit] Not Find in []!![")) << sLine;
  EXPECT_TRUE(sLine.ends_with(": undefined symbol: firstInit]")) << sLine;
  EXPECT_EQ(probes(), Texts{});
}

TEST_F(Refusal, CutsNoFunctionThatIsGiven) {
  const std::string sFunction(5000, 'f');
  EXPECT_EQ(start({"psName=\"first\" psFunction=\"" + sFunction + "\""}), -1);
  EXPECT_EQ(trail(), refusal("Function [" + sFunction + "] Not Find in [" + kFirst + "]!![" + kFirst +
                             ": undefined symbol: " + sFunction + "]"));
}

TEST_F(Refusal, ByItsOwnInitialiser) {
  EXPECT_EQ(start({"psName=\"bad\""}), -1);
  EXPECT_EQ(trail(), refusal("Func[badInit] in [" + kBad + "] Init err!!"));
}

TEST_F(Refusal, ByAnyResultButZero) {
  Texts said = {"first opened", "first initialised"};
  for (const char *psResult : {"1", "-1", "2147483647"}) {
    EXPECT_EQ(start({"psName=\"first\" nResult=\"" + std::string(psResult) + "\""}), -1) << psResult;
    EXPECT_EQ(trail(), refusal("Func[firstInit] in [" + kFirst + "] Init err!!")) << psResult;
    EXPECT_EQ(probes(), said) << psResult;
    said = {"first initialised"};  // its code stays in the process
  }
}

TEST_F(Refusal, OfTheThirdOfFourStopsThere) {
  EXPECT_EQ(start({"psName=\"first\"", "psName=\"second\"", "psName=\"bad\"", "psName=\"toy\""}), -1);
  EXPECT_EQ(trail(), refusal("Func[badInit] in [" + kBad + "] Init err!!", 2));
  EXPECT_EQ(probes(), (Texts{"first opened", "first initialised", "second opened", "second initialised"}));
  EXPECT_EQ(gptPlugInfo, nullptr);
  cvtEnd();
  EXPECT_EQ(probes().size(), 4U);  // those opened before stay open
}

TEST_F(Refusal, WithAFunctionThatNobodyHas) {
  EXPECT_EQ(start({"psName=\"unresolved\""}), -1);
  EXPECT_EQ(trail(), refusal("dlopen Err:" + kBase +
                             "libcvt_plug_unresolved.so: undefined symbol: nobodyHasThisFunction!!"));
}

TEST_F(Refusal, AtAReloadHasClosedTheEarlierOnes) {
  ASSERT_EQ(start({"psName=\"first\""}), 0);
  EXPECT_EQ(start({"psName=\"bad\"", "psName=\"first\""}), -1);
  EXPECT_EQ(probes(), Texts{"first closed"});
  EXPECT_EQ(gptPlugInfo, nullptr);
}

TEST_F(Refusal, OfANullSectionLeavesTheLoadedPlugInsAlone) {
  ASSERT_EQ(start({"psName=\"first\""}), 0);
  test::clearLog();
  const PlugInfo *const ptBefore = gptPlugInfo;
  EXPECT_EQ(cvtPlugInit(nullptr, cs("Plug")), nullptr);
  EXPECT_EQ(trail(), Texts{"cvt_plug.cpp cvtPlugInit: [ptXmlNode] is NULL"});
  EXPECT_EQ(gptPlugInfo, ptBefore);
  EXPECT_TRUE(probes().empty());
}

TEST_F(Refusal, OfASectionThatIsReadInThePlaceOfAnotherHasClosedThatOne) {
  ASSERT_EQ(start({"psName=\"first\"", "psName=\"second\""}), 0);
  const std::vector<void *> opened = {gptPlugInfo->ptPlugs->ptInfo, gptPlugInfo->ptPlugs->ptNext->ptInfo};
  const Section none("<Plug><Plug __ID=\"ptPlugs\"/></Plug>");
  test::clearLog();
  f_closed.clear();
  EXPECT_EQ(cvtPlugInit(none.element(), cs("Plug")), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(gptPlugInfo, nullptr);
  EXPECT_EQ(f_closed, opened);
  EXPECT_EQ(probes(), Texts{});  // what they had registered is still callable: their code stays
  void *const pKept = dlopen(kFirst.c_str(), RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(pKept, nullptr);
  dlclose(pKept);
}

// --- Opening ------------------------------------------------------------------------------------------

TEST_F(Opening, KeepsThePlugInsSymbolsToThemselves) {
  ASSERT_EQ(start({"psName=\"first\"", "psName=\"second\""}), 0);
  void *const pAll = dlopen(nullptr, RTLD_NOW);
  EXPECT_EQ(dlsym(pAll, "firstInit"), nullptr);
  EXPECT_EQ(dlsym(pAll, "secondInit"), nullptr);
  dlclose(pAll);
  EXPECT_NE(dlsym(gptPlugInfo->ptPlugs->ptInfo, "firstInit"), nullptr);
  EXPECT_NE(dlsym(gptPlugInfo->ptPlugs->ptNext->ptInfo, "secondInit"), nullptr);
}

TEST_F(Opening, OfOnePlugInTwiceRunsItsInitialiserTwice) {
  ASSERT_EQ(
      start({"psName=\"first\"", "psName=\"again\" psPath=\"" + kFirst + "\" psFunction=\"firstInit\""}), 0);
  EXPECT_EQ(probes(), (Texts{"first opened", "first initialised", "first initialised"}));
  test::clearLog();
  EXPECT_EQ(cvtPlugEnd(), 0);
  EXPECT_EQ(probes(), Texts{"first closed"});
}

TEST_F(Opening, CutsNoPathThatIsGiven) {
  std::string sPath = kBase;
  while (sPath.size() < 3000) sPath += "./";
  ASSERT_EQ(start({"psName=\"first\" psPath=\"" + sPath + "libcvt_plug_first.so\""}), 0);
  EXPECT_EQ(probes(), (Texts{"first opened", "first initialised"}));
}

TEST_F(Opening, ReadsTheBasePathBeforeThePlugInsWhereverItStands) {
  config.root = {};
  config.file("All/root.xml", "<AllInfo><AllInfo><Plug __ID=\"ptPlug\" other=\"x\" psBasePlugPath=\"" +
                                  kBase +
                                  "\"><Plug __ID=\"ptPlugs\" psName=\"first\"/></Plug></AllInfo></AllInfo>");
  EXPECT_EQ(config.start(), 0);
}

TEST_F(Opening, ForgetsTheBasePathOfTheSectionBefore) {
  const Section with("<Plug psBasePlugPath=\"/opt/\"/>");
  const Section without("<Plug/>");
  EXPECT_NE(cvtPlugInit(with.element(), cs("Plug")), nullptr);
  EXPECT_STREQ(gpsBasePlugPath, "/opt/");
  EXPECT_NE(cvtPlugInit(without.element(), cs("Plug")), nullptr);
  EXPECT_STREQ(gpsBasePlugPath, "");
  EXPECT_EQ(gptPlugInfo->psBasePlugPath, nullptr);
}

TEST_F(Opening, OfASectionWithoutPlugInsSucceeds) {
  ASSERT_EQ(start({}), 0);
  ASSERT_NE(gptPlugInfo, nullptr);
  EXPECT_EQ(gptPlugInfo->ptPlugs, nullptr);
  EXPECT_EQ(gptAllInfo->ptPlug, gptPlugInfo);
}

TEST_F(Opening, OfAListEndsWhereTheLinkHasAnotherId) {
  config.root = {};
  config.root.sPlug = "<Plug __ID=\"ptPlug\" psBasePlugPath=\"" + kBase +
                      "\"><Plug __ID=\"ptPlugs\" psName=\"first\"/><Plug __ID=\"x\" psName=\"none\"/></Plug>";
  config.writeRoot();
  EXPECT_EQ(config.start(), 0);
  EXPECT_EQ(gptPlugInfo->ptPlugs->ptNext, nullptr);
}

TEST_F(Opening, GivesEachRecordItsOwnHandle) {
  ASSERT_EQ(start({"psName=\"first\"", "psName=\"second\""}), 0);
  EXPECT_NE(gptPlugInfo->ptPlugs->ptInfo, gptPlugInfo->ptPlugs->ptNext->ptInfo);
  EXPECT_EQ(gptPlugInfo->ptPlugs->ptNext->ptNext, nullptr);
  EXPECT_EQ(gptPlugInfo->ptPlugs->psName, cvtStrDup(cs("first")));
}

// --- Closing ------------------------------------------------------------------------------------------

TEST_F(Closing, AloneUnregistersNothing) {
  ASSERT_EQ(config.start(), 0);
  EXPECT_EQ(cvtPlugEnd(), 0);
  ASSERT_NE(gptSttInfo, nullptr);
  EXPECT_STREQ(gptSttInfo->psTypeName, "toy");
  EXPECT_NE(cvtStrFindStringList(gptFmtGlobalInfo->ptInitList, cs("toy")), nullptr);
  EXPECT_NE(cvtGetMsg(cs("Order")), nullptr);
  EXPECT_NE(sttNewIdFunc(cs("toyName"), nullptr, nullptr), nullptr);
}

TEST_F(Closing, AloneLeavesConversionFunctionsRegistered) {
  ASSERT_EQ(config.start(), 0);
  cvtConvertAddFunction(cs("kept"), [](Value *, int, Value **, MemPort) { return 0; });
  EXPECT_EQ(cvtPlugEnd(), 0);
  EXPECT_NE(sttNewFunction(cs("kept"), nullptr), nullptr);
}

TEST_F(Closing, LeavesTheRecordsReadable) {
  ASSERT_EQ(start({"psName=\"first\""}), 0);
  const PlugInfo *const ptInfo = gptPlugInfo;
  EXPECT_EQ(cvtPlugEnd(), 0);
  EXPECT_EQ(gptPlugInfo, nullptr);
  EXPECT_STREQ(ptInfo->ptPlugs->psName, "first");
}

// A definition with a type that nobody knows: every dispatcher that is registered is asked for it.
std::string oddDefinition() {
  return "<toy><Msg psMsgName=\"Odd\"><Unknown __ID=\"pInfo\"/><Message __ID=\"ptHead\" psNodeName=\"A\">"
         "<StructAttr __ID=\"ptStructAttr\"/></Message></Msg></toy>";
}

TEST_F(Closing, AfterAFailedInitialiserLeavesWhatItHadRegisteredCallable) {
  EXPECT_EQ(start({"psName=\"bad\""}), -1);
  test::ToyConfig good;
  good.file("msg/Odd.xml", oddDefinition());
  test::clearLog();
  EXPECT_EQ(good.start(), 0);
  EXPECT_EQ(trail(), Texts{"stt.cpp sttParseVoid: Type[Unknown] Not Define"});
}

TEST_F(Closing, AfterAStartThatFailedLaterLeavesWhatWasRegisteredCallable) {
  config.root = {};
  config.root.sPlug = test::plugSection({"psName=\"bad\" psFunction=\"noFunctionsInit\""});
  config.root.sId = "<Id __ID=\"ptId\" psIdPath=\"id\"/>";
  config.file("id/pipelines.xml", "<broken");
  config.writeRoot();
  EXPECT_EQ(config.start(), -1);
  EXPECT_NE(gptPlugInfo, nullptr);
  test::ToyConfig good;
  good.file("msg/Odd.xml", oddDefinition());
  test::clearLog();
  EXPECT_EQ(good.start(), 0);
  EXPECT_EQ(trail(), Texts{"stt.cpp sttParseVoid: Type[Unknown] Not Define"});
}

TEST_F(Closing, ComesBeforeAnythingOfTheNextStartIsRead) {
  ASSERT_EQ(start({"psName=\"first\"", "psName=\"second\""}), 0);
  ASSERT_EQ(start({"psName=\"second\""}), 0);
  EXPECT_EQ(probes(), (Texts{"first closed", "second closed", "second opened", "second initialised"}));
  EXPECT_EQ(test::logLines().front().sText, "first closed");
}

}  // namespace

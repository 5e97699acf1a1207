// Lists of 100,000 records of each kind, loaded by cvtInit on a stack of the usual size and on a small one,
// and used.
#include <gtest/gtest.h>
#include <pthread.h>

#include <ctime>
#include <functional>

#include "config_tree.h"
#include "cvt.h"
#include "log_capture.h"

namespace {

using test::ConfigTree;
using test::cs;

constexpr int kRecords = 100000;

std::string list(int nRecords, const std::function<std::string(int)> &record) {
  std::string s;
  for (int i = 0; i < nRecords; ++i) s += record(i);
  return s;
}

// "ptNext", or the field that holds the list for its first record.
std::string id(int i, const char *psField, const char *psNext = "ptNext") {
  return std::string(" __ID='") + (i == 0 ? psField : psNext) + "'";
}

// A root file with these sections' contents.
std::string root(const std::string &sPlug, const std::string &sMessage) {
  return "<AllInfo><AllInfo><Plug __ID='ptPlug' psBasePlugPath='" CVT2_PLUGIN_DIR "/'>" + sPlug +
         "</Plug><Message __ID='ptMessage'>" + sMessage +
         "</Message><Convert __ID='ptConvert' psCvtPath='Convert'/>"
         "<Id __ID='ptId' psIdPath='Id' psIdInfoPath='IdInfo'/></AllInfo></AllInfo>";
}
const std::string kPlug = "<Plug __ID='ptPlugs' psName='fix'/>";
const std::string kPath = "<PathList __ID='ptMsgList' psPath='Message'/>";

std::string node(int i, const char *psField) {
  return "<Message" + id(i, psField, "ptNextNode") + " psNodeName='F" + std::to_string(i) +
         "'><FormatAttr __ID='ptFormAttr'><FixField __ID='pInfo' nLen='1'/></FormatAttr>"
         "<StructAttr __ID='ptStructAttr'/></Message>";
}

std::string definition(const std::string &sName, int nFields) {
  return "<fix><Msg psMsgName='" + sName + "'><FixMsg __ID='pInfo'/>" +
         list(nFields, [](int i) { return node(i, "ptHead"); }) + "</Msg></fix>";
}

std::string copyRule(int i) {
  return "<Arg" + id(i, "ptArgs") +
         " nType='6'><Copy __ID='pInfo'><Arg __ID='ptSrcArgs' nType='0'><Node __ID='pInfo' nType='0' "
         "psName='F" +
         std::to_string(i) +
         "'/></Arg><Arg __ID='ptDstArgs' nType='1'><Node __ID='pInfo' nType='1' psName='F" +
         std::to_string(i) + "'/></Arg></Copy></Arg>";
}

// Everything of the usual length.
void smallTree(ConfigTree &tree) {
  tree.file("All/root.xml", root(kPlug, kPath));
  tree.file("Message/A.xml", definition("A", 2)).file("Message/B.xml", definition("B", 2));
  tree.file("Convert/AB.xml", "<Convert><Converter psName='AB' psSrcStructName='A' psDstStructName='B'>" +
                                  list(2, copyRule) + "</Converter></Convert>");
  tree.file(
      "Id/p.xml",
      "<Id><FormatInfo psFormatId='f'><IdFunc __ID='ptParseFunc' psFunctName='pubParse'/>"
      "<IdFunc __ID='ptGenFunc' psFunctName='pubConvert'/><IdFunc __ID='ptNext' psFunctName='pubGenerate'/>"
      "</FormatInfo></Id>");
  tree.file("IdInfo/c.xml",
            "<IdInfo><IdMsgInfo psMsgName='A'><IdCvtInfo __ID='ptIdCvtInfo' psFormatId='f' psCvtName='AB'/>"
            "</IdMsgInfo></IdInfo>");
}

std::string told() {
  std::string s;
  for (const std::string &sLine : test::logTexts()) s += sLine.substr(0, 300) + "\n";
  return s.substr(0, 3000);
}

// What comes out of a message of nFields bytes.
std::string converted(int nFields) {
  std::string sIn(static_cast<size_t>(nFields), 'x');
  std::string sOut(static_cast<size_t>(nFields) + 1, '\0');
  int nError = 0;
  int nOut = static_cast<int>(sOut.size());
  InnerMessage *const source = cvtInitMessasge(cs("A"), cs("f"), sIn.data(), nFields, &nError);
  if (source == nullptr) return "";
  InnerMessage *const result = cvtGenerateMessasge(source, cs("f"), sOut.data(), &nOut, &nError);
  if (result != nullptr) cvtFreeMessage(result);
  cvtFreeMessage(source);
  return result == nullptr ? "" : sOut.substr(0, static_cast<size_t>(nOut));
}

void *call(void *pWork) {
  (*static_cast<std::function<void()> *>(pWork))();
  return nullptr;
}

void onStackOf(size_t nSize, std::function<void()> work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, nSize);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, call, &work), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

// Loads the tree and converts a message, on both stacks.
void expectWorks(ConfigTree &tree, const char *psWhat, int nFields = 2) {
  for (const size_t nStack : {size_t{8} << 20, size_t{512} << 10}) {
    onStackOf(nStack, [&] {
      test::clearLog();
      const clock_t begin = clock();
      ASSERT_EQ(cvtInit(tree.arg()), 0) << psWhat << told();
      const double seconds = static_cast<double>(clock() - begin) / CLOCKS_PER_SEC;
      EXPECT_EQ(converted(nFields), std::string(static_cast<size_t>(nFields), 'x')) << psWhat << told();
      std::printf("RESULT list of %d %s on a stack of %zu KiB: loaded in %.2f s\n", kRecords, psWhat,
                  nStack / 1024, seconds);
      cvtEnd();
    });
  }
}

}  // namespace

TEST(LongList, OfFieldsAndRulesLoadsAndConverts) {
  ConfigTree tree;
  smallTree(tree);
  tree.file("Message/A.xml", definition("A", kRecords)).file("Message/B.xml", definition("B", kRecords));
  tree.file("Convert/AB.xml", "<Convert><Converter psName='AB' psSrcStructName='A' psDstStructName='B'>" +
                                  list(kRecords, copyRule) + "</Converter></Convert>");
  expectWorks(tree, "fields and rules", kRecords);
}

TEST(LongList, OfPipelinesLoads) {
  ConfigTree tree;
  smallTree(tree);
  tree.file("Id/p.xml", "<Id>" + list(kRecords, [](int i) {
                          const std::string sName = i == 0 ? "f" : "f" + std::to_string(i);
                          return "<FormatInfo" + (i == 0 ? "" : id(i, "")) + " psFormatId='" + sName +
                                 "'><IdFunc __ID='ptParseFunc' psFunctName='pubParse'/>"
                                 "<IdFunc __ID='ptGenFunc' psFunctName='pubConvert'/>"
                                 "<IdFunc __ID='ptNext' psFunctName='pubGenerate'/></FormatInfo>";
                        }) + "</Id>");
  expectWorks(tree, "pipelines");
}

TEST(LongList, OfStepsLoads) {
  ConfigTree tree;
  smallTree(tree);
  tree.file("Id/p.xml", "<Id><FormatInfo psFormatId='f'>" +
                            list(kRecords,
                                 [](int i) {
                                   return "<IdFunc" + id(i, "ptParseFunc") + " psFunctName='" +
                                          (i + 1 == kRecords
                                               ? "pubParse'/>"
                                               : "SetToOffset'><SetOffsetArgs __ID='ptArg'/></IdFunc>");
                                 }) +
                            "<IdFunc __ID='ptGenFunc' psFunctName='pubConvert'/><IdFunc __ID='ptNext' "
                            "psFunctName='pubGenerate'/></FormatInfo></Id>");
  expectWorks(tree, "steps");
}

TEST(LongList, OfChoicesLoads) {
  ConfigTree tree;
  smallTree(tree);
  const auto choice = [](int i) {
    const std::string sFormat = i == 0 ? "f" : "f" + std::to_string(i);
    return "<IdCvtInfo" + id(i, "ptIdCvtInfo") + " psFormatId='" + sFormat + "' psCvtName='AB'/>";
  };
  tree.file("IdInfo/c.xml",
            "<IdInfo><IdMsgInfo psMsgName='A'>" + list(kRecords, choice) + "</IdMsgInfo></IdInfo>");
  expectWorks(tree, "choices");
}

TEST(LongList, OfPathsLoads) {
  ConfigTree tree;
  smallTree(tree);
  tree.file("All/root.xml", root(kPlug, list(kRecords, [](int i) {
                                   return "<PathList" + id(i, "ptMsgList") + " psPath='Message'/>";
                                 })));
  expectWorks(tree, "paths");
}

TEST(LongList, OfPlugInsLoads) {
  ConfigTree tree;
  smallTree(tree);
  tree.file(
      "All/root.xml",
      root(list(kRecords, [](int i) { return "<Plug" + id(i, "ptPlugs") + " psName='fix'/>"; }), kPath));
  expectWorks(tree, "plug-ins");
}

TEST(LongList, OfCasesAndMappingsLoads) {
  ConfigTree tree;
  smallTree(tree);
  const std::string sNode = "<Node __ID='pInfo' nType='0' psName='F0'/>";
  const auto never = [&](int i, const char *psField, const std::string &sElement,
                         const std::string &sInside) {
    return "<" + sElement + id(i, psField) + ">" + sInside + "</" + sElement + ">";
  };
  const std::string sJudge =
      "<Judge __ID='ptJudge'><Arg __ID='ptSrcArgs' nType='0'>" + sNode +
      "</Arg><Arg __ID='ptDstArgs' nType='3'><Value __ID='pInfo' psValue='n' nLen='1'/></Arg></Judge>";
  const std::string sTag = "<Arg __ID='ptTagArgs' nType='3'><Value __ID='pInfo' psValue='n' nLen='1'/></Arg>";
  tree.file("Convert/AB.xml",
            "<Convert><Converter psName='AB' psSrcStructName='A' psDstStructName='B'>" + list(2, copyRule) +
                "<Arg __ID='ptNext' nType='7'>" +
                list(kRecords, [&](int i) { return never(i, "pInfo", "Case", sJudge); }) +
                "</Arg><Arg __ID='ptNext' nType='11'><Mapping __ID='pInfo'><Arg __ID='ptMapArgs' nType='0'>" +
                sNode + "</Arg>" +
                list(kRecords, [&](int i) { return never(i, "ptList", "MappingList", sTag); }) +
                "</Mapping></Arg></Converter></Convert>");
  expectWorks(tree, "cases and mappings");
}

// Bound records: what a failing step leaves, where reading and writing stop, the whole trail of a failure in
// each kind of file, and records beyond every measure.
#include <gtest/gtest.h>
#include <pthread.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "../unit/bound_records_config.h"
#include "binding_fixture.h"
#include "log_capture.h"
#include "xml_text.h"

namespace {

using test::cs;
using test::logTexts;
using test::untyped;
using test::Xml;
using Texts = std::vector<std::string>;

using Make = test::BoundRecords;
using Reading = test::BoundRecords;
using Writing = test::BoundRecords;
using Trail = test::BoundRecords;
using Measure = test::BoundRecords;

// --- The Make step ----------------------------------------------------------------------------------------

// Strings first, then what is computed, then the rest.
TEST_F(Make, AFailureLeavesTheStringsSetAndTheRestUntouched) {
  Function function;
  std::memset(&function, 0x55, sizeof function);
  const Function before = function;
  EXPECT_EQ(sttMakeFunction(&function, cs("none"), nullptr), nullptr);
  EXPECT_EQ(static_cast<char *>(function.psName), cvtStrDup(cs("none")));
  EXPECT_EQ(function.fCvtFunc, nullptr);
  EXPECT_EQ(static_cast<Arg *>(function.ptArgs), static_cast<Arg *>(before.ptArgs));

  Node node;
  std::memset(&node, 0x55, sizeof node);
  EXPECT_EQ(sttMakeNode(&node, 0, cs("none")), nullptr);
  EXPECT_STREQ(node.psName, "none");
  EXPECT_EQ(node.nIdx, 0);
  EXPECT_EQ(node.nType, 0x55555555);
}

TEST_F(Make, ANullStringBecomesNull) {
  PathList list;
  std::memset(&list, 0x55, sizeof list);
  EXPECT_EQ(sttMakePathList(&list, nullptr, nullptr), &list);
  EXPECT_EQ(list.psPath, nullptr);
  EXPECT_EQ(list.ptNext, nullptr);
}

TEST_F(Make, EqualStringsOfTwoRecordsAreOne) {
  const PathList *const pt1 = sttNewPathList(cs("path"), nullptr);
  const PathList *const pt2 = sttNewPathList(cs("path"), nullptr);
  EXPECT_NE(pt1, pt2);
  EXPECT_EQ(static_cast<char *>(pt1->psPath), static_cast<char *>(pt2->psPath));
}

TEST_F(Make, WithoutComputedFieldsTheFlagIsLeftAlone) {
  nGRet = -1;
  EXPECT_NE(sttNewPathList(cs("path"), nullptr), nullptr);
  EXPECT_EQ(nGRet, -1);
}

// --- Reading ----------------------------------------------------------------------------------------------

TEST_F(Reading, ComputedFieldsAreNotInTheFile) {
  const Xml msg("<Msg psMsgName='M' nFieldNum='5' nValueNum='6' fGen='1' pptMessageIdx='1'/>");
  const Msg *const ptMsg = sttParseXmlMsg(msg.root(), cs("Msg"));
  EXPECT_EQ(ptMsg->nFieldNum, -1);
  EXPECT_EQ(ptMsg->nValueNum, -1);
  EXPECT_EQ(ptMsg->fGen, nullptr);
  EXPECT_EQ(ptMsg->pptMessageIdx, nullptr);
  EXPECT_EQ(sttParseXmlMessage(Xml("<Message nIndex='9'/>").root(), cs("Message"))->nIndex, -1);
  const Xml loop("<LoopType nFieldNum='9' nCurrentTime='9' nLoopNumIndex='9'/>");
  const LoopType *const ptLoop = sttParseXmlLoopType(loop.root(), cs("LoopType"));
  EXPECT_EQ(ptLoop->nFieldNum, -1);
  EXPECT_EQ(ptLoop->nCurrentTime, -1);
  EXPECT_EQ(ptLoop->nLoopNumIndex, -1);
  EXPECT_EQ(sttParseXmlNode(Xml("<Node psName='A' nIdx='9'/>").root(), cs("Node"))->nIdx, 0);
}

TEST_F(Reading, AFieldIsNoChildAndAChildNoAttribute) {
  const Xml xml("<CvtFmtArgs ptMsgList='x'><gnMaxValue>7</gnMaxValue></CvtFmtArgs>");
  const CvtFmtArgs *const pt = sttParseXmlCvtFmtArgs(xml.root(), cs("CvtFmtArgs"));
  EXPECT_EQ(pt->gnMaxValue, 0);
  EXPECT_EQ(pt->ptMsgList, nullptr);
}

TEST_F(Reading, TheElementsNameIsNotLookedAt) {
  const PathList *const pt = sttParseXmlPathList(Xml("<Any psPath='p'/>").root(), cs("Other"));
  ASSERT_NE(pt, nullptr);
  EXPECT_STREQ(pt->psPath, "p");
}

const char kSrcFails[] =
    "Arg * ptSrcArgs = sttParseXmlStruct(ptXmlNode, \"Arg\", \"ptSrcArgs\", sttParseXmlArg) is Err!!";
const char kInfoFails[] = "void * pInfo = sttParseXmlVoid(ptXmlNode, \"pInfo\") is Err!!";

TEST_F(Reading, StopsAtTheFirstFieldThatFails) {
  const std::string sBroken = "<Fail __ID='pInfo'/></Arg>";
  const Xml xml("<Copy><Arg __ID='ptDstArgs'>" + sBroken + "<Arg __ID='ptSrcArgs'>" + sBroken + "</Copy>");
  EXPECT_EQ(sttParseXmlCopy(xml.root(), cs("Copy")), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(logTexts(), (Texts{"Type[Fail] Not Define", kInfoFails, kSrcFails}));
}

TEST_F(Reading, AListIsNotReadBehindARecordThatFails) {
  const Xml xml("<r><Arg><Fail __ID='pInfo'/></Arg><Arg __ID='ptNext'><Nobody __ID='pInfo'/></Arg></r>");
  EXPECT_EQ(sttParseXmlArg(xml.child(), cs("Arg")), nullptr);
  EXPECT_EQ(logTexts(), (Texts{"Type[Fail] Not Define", kInfoFails}));
}

TEST_F(Reading, NoFurtherPlugInIsOpenedBehindOneThatFails) {
  const Xml xml(
      "<PlugInfo><Plug __ID='ptPlugs' psName='a' psPath='libcvt2.so' psFunction='none'/>"
      "<Plug __ID='ptNext' psName='b' psPath='none.so'/></PlugInfo>");
  EXPECT_EQ(sttParseXmlPlugInfo(xml.root(), cs("PlugInfo")), nullptr);
  ASSERT_EQ(logTexts().size(), 3U);
  EXPECT_EQ(logTexts()[0].rfind("Function [none] Not Find in [libcvt2.so]!!", 0), 0U);
  EXPECT_EQ(logTexts()[1], "void * ptInfo = GetPlug(psName, psPath, psFunction, ptXmlNode) is Err!!");
  EXPECT_EQ(logTexts()[2],
            "Plug * ptPlugs = sttParseXmlStruct(ptXmlNode, \"Plug\", \"ptPlugs\", sttParseXmlPlug) is Err!!");
}

TEST_F(Reading, ARecordThatFailsMayHaveBeenReadPartly) {
  const Xml xml("<r><FormatInfo psFormatId='kept'><IdFunc __ID='ptParseFunc'/></FormatInfo></r>");
  EXPECT_EQ(sttParseXmlFormatInfo(xml.child(), cs("FormatInfo")), nullptr);
  EXPECT_EQ(logTexts(),
            (Texts{"p->fIdFunction = GetIdFunc(psFunctName) is Err!!",
                   "IdFunc * ptParseFunc = sttParseXmlStruct(ptXmlNode, \"IdFunc\", \"ptParseFunc\", "
                   "sttParseXmlIdFunc) is Err!!"}));
}

// --- Writing ----------------------------------------------------------------------------------------------

TEST_F(Writing, StopsAtTheFirstFieldThatFails) {
  static char nobody;
  Arg *const ptBad = sttNewArg(5, &nobody, nullptr);
  const Xml xml("<Copy/>");
  EXPECT_EQ(sttGenXmlCopy(sttNewCopy(ptBad, ptBad), xml.root(), cs("Copy")), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(
      logTexts(),
      (Texts{
          "Struct Type Not Define!!", "sttGenerateXmlVoid(ptXmlNode, p->pInfo, \"pInfo\") is Err!!",
          "sttGenerateXmlStruct(ptXmlNode, p->ptSrcArgs, \"ptSrcArgs\", \"Arg\", sttGenXmlArg) is Err!!"}));
  EXPECT_EQ(xml.text(), "<Copy><Arg __ID=\"ptSrcArgs\" nType=\"5\"/></Copy>");
}

// A list of three, and one of two behind it under the same record.
const char kPipelines[] =
    "<FormatInfo psFormatId=\"x\"><IdFunc __ID=\"ptParseFunc\" psFunctName=\"pubParse\"/>"
    "<IdFunc __ID=\"ptNext\" psFunctName=\"pubNew\"/><IdFunc __ID=\"ptNext\" psFunctName=\"text2\"/>"
    "<IdFunc __ID=\"ptGenFunc\" psFunctName=\"pubConvert\"/>"
    "<IdFunc __ID=\"ptNext\" psFunctName=\"pubGenerate\"/></FormatInfo>";

TEST_F(Writing, ListsStandAsConsecutiveSiblingsInTheirOrder) {
  IdFunc *const ptParse =
      sttNewIdFunc(cs("pubParse"), nullptr,
                   sttNewIdFunc(cs("pubNew"), nullptr, sttNewIdFunc(cs("text2"), nullptr, nullptr)));
  IdFunc *const ptGen =
      sttNewIdFunc(cs("pubConvert"), nullptr, sttNewIdFunc(cs("pubGenerate"), nullptr, nullptr));
  const Xml xml("<r><FormatInfo/></r>");
  sttGenXmlFormatInfo(sttNewFormatInfo(cs("x"), ptParse, ptGen, nullptr), xml.child(), cs("FormatInfo"));
  EXPECT_EQ(xml.text(), "<r>" + std::string(kPipelines) + "</r>");
}

TEST_F(Writing, ListsReadBackAndAreWrittenTheSame) {
  const Xml xml("<r>" + std::string(kPipelines) + "</r>");
  FormatInfo *const pt = sttParseXmlFormatInfo(xml.child(), cs("FormatInfo"));
  ASSERT_NE(pt, nullptr);
  const Xml out("<r><FormatInfo/></r>");
  sttGenXmlFormatInfo(pt, out.child(), cs("FormatInfo"));
  EXPECT_EQ(out.text(), xml.text());
}

TEST_F(Writing, ARecordIsWrittenIntoItsElementWhateverThatIs) {
  const Xml xml("<r><Any old='1'>text</Any></r>");
  EXPECT_EQ(sttGenXmlPathList(sttNewPathList(cs("p"), nullptr), xml.child(), cs("None")), xml.child());
  EXPECT_EQ(xml.text(), "<r><Any old=\"1\" psPath=\"p\">text</Any></r>");
}

// --- Dispatchers over a life of the library ---------------------------------------------------------------

TEST_F(Reading, AConverterFileAddsTheDispatchersOfConvertersAndValues) {
  for (const char *const psType : {"Value", "Arg", "Mapping"})
    EXPECT_NE(sttParseVoid(Xml("<a/>").root(), cs(psType)), nullptr) << psType;
  EXPECT_EQ(logTexts(), Texts{});
  for (const char *const psType : {"AllInfo", "PlugInfo", "PathList", "LoopType", "XmlNameArgs"})
    EXPECT_EQ(sttParseVoid(Xml("<a/>").root(), cs(psType)), nullptr) << psType;
}

// --- Whole trails -----------------------------------------------------------------------------------------

std::string place(const std::string &sFile, int nLine, const char *psElement) {
  return "File[" + sFile + "] Line[" + std::to_string(nLine) + "] Element[" + psElement + "]";
}

const char kNextStep[] =
    "struct IdFunc * ptNext = sttParseXmlNext(ptXmlNode, \"IdFunc\", \"ptNext\", sttParseXmlIdFunc) is Err!!";
const char kNextFormat[] =
    "struct FormatInfo * ptNext = sttParseXmlNext(ptXmlNode, \"FormatInfo\", \"ptNext\", "
    "sttParseXmlFormatInfo) is Err!!";

TEST_F(Trail, OfAPipelineFile) {
  m_tree.file("id.xml",
              "<Id>\n<FormatInfo psFormatId='a'/>\n<FormatInfo __ID='ptNext' psFormatId='b'>\n"
              "<IdFunc __ID='ptGenFunc' psFunctName='pubNew'/>\n"
              "<IdFunc __ID='ptNext' psFunctName='none'/></FormatInfo></Id>");
  const std::string sFile = m_tree.path("id.xml");
  EXPECT_EQ(sttParseXmlFile(cs(sFile.c_str()), cs("Id"), cs("FormatInfo"), untyped(sttParseXmlFormatInfo)),
            nullptr);
  EXPECT_EQ(logTexts(), (Texts{"IdFunc[none] Not Find!!", "p->fIdFunction = GetIdFunc(psFunctName) is Err!!",
                               place(sFile, 5, "IdFunc"), kNextStep,
                               "IdFunc * ptGenFunc = sttParseXmlStruct(ptXmlNode, \"IdFunc\", \"ptGenFunc\", "
                               "sttParseXmlIdFunc) is Err!!",
                               kNextFormat, "parse xml[Id)" + sFile + "] faile"}));
}

TEST_F(Trail, OfAnIdentificationFile) {
  m_tree.file("info.xml",
              "<IdInfo>\n<IdMsgInfo psMsgName='Known'>\n"
              "<IdCvtInfo __ID='ptIdCvtInfo' psFormatId='' psCvtName='text3'/>\n"
              "<IdCvtInfo __ID='ptNext' psCvtName='text3'/></IdMsgInfo></IdInfo>");
  const std::string sFile = m_tree.path("info.xml");
  EXPECT_EQ(sttParseXmlFile(cs(sFile.c_str()), cs("IdInfo"), cs("IdMsgInfo"), untyped(sttParseXmlIdMsgInfo)),
            nullptr);
  EXPECT_EQ(logTexts(),
            (Texts{"[psFormatId] is NULL", "char * psFormatId = GetTargetFormat(ptXmlNode) is Err!!",
                   place(sFile, 4, "IdCvtInfo"),
                   "struct IdCvtInfo * ptNext = sttParseXmlNext(ptXmlNode, \"IdCvtInfo\", \"ptNext\", "
                   "sttParseXmlIdCvtInfo) is Err!!",
                   "IdCvtInfo * ptIdCvtInfo = sttParseXmlStruct(ptXmlNode, \"IdCvtInfo\", \"ptIdCvtInfo\", "
                   "sttParseXmlIdCvtInfo) is Err!!",
                   "parse xml[IdInfo)" + sFile + "] faile"}));
}

std::string structFails(const char *psType, const char *psField) {
  return std::string(psType) + " * " + psField + " = sttParseXmlStruct(ptXmlNode, \"" + psType + "\", \"" +
         psField + "\", sttParseXml" + psType + ") is Err!!";
}

// A group whose second child refers to no definition: the file it would be in is missing.
TEST_F(Trail, OfADefinitionFile) {
  m_tree.file("bad.xml",
              "<r>\n<Msg psMsgName='Bad'>\n<Message __ID='ptHead' psNodeName='group'>\n"
              "<StructAttr __ID='ptStructAttr'>\n<Message __ID='ptChildNode' psNodeName='first'>\n"
              "<StructAttr __ID='ptStructAttr'/></Message>\n"
              "<Message __ID='ptNextNode' psNodeName='Missing' nType='-1'/>\n"
              "</StructAttr></Message></Msg></r>");
  const std::string sFile = m_tree.path("bad.xml");
  EXPECT_EQ(sttParseXmlFile(cs(sFile.c_str()), cs("r"), cs("Msg"), untyped(sttParseXmlMsg)), nullptr);
  EXPECT_EQ(logTexts(),
            (Texts{"CurrentPath is NULL!!", place(sFile, 7, "Message"),
                   "struct Message * ptNextNode = sttParseXmlNext(ptXmlNode, \"Message\", \"ptNextNode\", "
                   "sttParseXmlMessage) is Err!!",
                   structFails("StructAttr", "ptStructAttr"), structFails("Message", "ptChildNode"),
                   structFails("StructAttr", "ptStructAttr"), structFails("Message", "ptHead"),
                   "parse xml[r)" + sFile + "] faile"}));
}

// The lines carry the unit's file and the function of the record that could not be read.
TEST_F(Trail, NamesTheFunctionOfEachRecord) {
  const Xml xml(
      "<Case><Judge __ID='ptJudge'><Arg __ID='ptSrcArgs'><Fail __ID='pInfo'/></Arg></Judge></Case>");
  EXPECT_EQ(sttParseXmlCase(xml.root(), cs("Case")), nullptr);
  const auto &lines = test::logLines();
  ASSERT_EQ(lines.size(), 4U);
  const Texts functions = {lines[1].sFunction, lines[2].sFunction, lines[3].sFunction};
  EXPECT_EQ(functions, (Texts{"sttParseXmlArg", "sttParseXmlJudge", "sttParseXmlCase"}));
  for (size_t i = 1; i < lines.size(); ++i) EXPECT_EQ(lines[i].sFile, "cvt_convert_bind.cpp");
  for (const test::LogLine &line : lines) {
    EXPECT_EQ(line.nLevel, 1);
    EXPECT_EQ(line.sModule, "$cvt2");
    EXPECT_GT(line.nLine, 0);
  }
}

// --- Beyond every measure ---------------------------------------------------------------------------------

TEST_F(Measure, AVeryLongTextIsReadAndWrittenWhole) {
  const std::string sText(2000000, 'x');
  const Xml xml("<r><PathList psPath=\"" + sText + "\"/></r>");
  PathList *const pt = sttParseXmlPathList(xml.child(), cs("PathList"));
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(pt->psPath, sText);
  const Xml out("<r><PathList/></r>");
  EXPECT_NE(sttGenXmlPathList(pt, out.child(), cs("PathList")), nullptr);
  EXPECT_EQ(test::taken(xmlGetNodeAttr(out.child(), cs("psPath"))), sText);
}

TEST_F(Measure, ANumberIsReadUpToTheEndsOfItsRangeAndBeyondItWithoutHarm) {
  const auto read = [](const std::string &sText) {
    const Xml xml("<IpcNameArgs nOffset='" + sText + "'/>");
    return static_cast<int>(sttParseXmlIpcNameArgs(xml.root(), cs("IpcNameArgs"))->nOffset);
  };
  EXPECT_EQ(read("2147483647"), INT_MAX);
  EXPECT_EQ(read("-2147483648"), INT_MIN);
  read("2147483648");
  read("-99999999999999999999999");
  read(std::string(100000, '9'));
  EXPECT_EQ(nGRet, 0);
}

TEST_F(Measure, ANameOfAnyBytesIsKept) {
  const Xml xml("<PathList psPath='&#x4E2D;&#10;%s%n&lt;'/>");
  EXPECT_STREQ(sttParseXmlPathList(xml.root(), cs("PathList"))->psPath, "\xE4\xB8\xAD\n%s%n<");
}

TEST_F(Measure, ANameWithConversionsIsLoggedAsItIs) {
  const Xml xml("<IdFunc psFunctName='%s%n%d'/>");
  EXPECT_EQ(sttParseXmlIdFunc(xml.root(), cs("IdFunc")), nullptr);
  EXPECT_EQ(logTexts().at(0), "IdFunc[%s%n%d] Not Find!!");
}

// Writing goes down a level for each record of a list, as reading does.
void *writeOnSmallStack(void *ptList) {
  const Xml xml("<r><PathList/></r>");
  return sttGenXmlPathList(static_cast<PathList *>(ptList), xml.child(), cs("PathList"));
}

void *runOnSmallStack(void *(*run)(void *), void *p, size_t nSize = 1024 * 1024) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, nSize);
  pthread_t thread;
  EXPECT_EQ(pthread_create(&thread, &attributes, run, p), 0);
  void *pResult = nullptr;
  pthread_join(thread, &pResult);
  pthread_attr_destroy(&attributes);
  return pResult;
}

PathList *listOf(int nRecords) {
  PathList *pt = nullptr;
  for (int i = 0; i < nRecords; ++i) pt = sttNewPathList(cs("p"), pt);
  return pt;
}

// Threads of servers often have no more.
TEST_F(Measure, AThreadWithAVerySmallStackReadsAndWritesAShortList) {
  static constexpr size_t kVerySmall = 192 * 1024;
  const auto read = [](void *) -> void * {
    const Xml xml("<CvtFmtArgs><PathList __ID='ptMsgList'/><PathList __ID='ptNext'/></CvtFmtArgs>");
    return sttParseXmlCvtFmtArgs(xml.root(), cs("CvtFmtArgs"));
  };
  auto *const ptArgs = static_cast<CvtFmtArgs *>(runOnSmallStack(read, nullptr, kVerySmall));
  ASSERT_NE(ptArgs, nullptr);
  EXPECT_NE(ptArgs->ptMsgList->ptNext, nullptr);
  EXPECT_NE(runOnSmallStack(writeOnSmallStack, listOf(3), kVerySmall), nullptr);
  EXPECT_EQ(logTexts(), Texts{});
}

TEST_F(Measure, AVerySmallStackIsNotOverrunEither) {
  EXPECT_EQ(runOnSmallStack(writeOnSmallStack, listOf(100000), 192 * 1024), nullptr);
  EXPECT_EQ(nGRet, -1);
}

TEST_F(Measure, AListThatFitsTheStackIsWritten) {
  EXPECT_NE(runOnSmallStack(writeOnSmallStack, listOf(500)), nullptr);
  EXPECT_EQ(logTexts(), Texts{});
}

TEST_F(Measure, AListLongerThanTheStackIsNotWritten) {
  EXPECT_EQ(runOnSmallStack(writeOnSmallStack, listOf(100000)), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(logTexts().at(0),
            "Record[PathList]: the list or the nesting is too long for the stack: make it shorter");
}

TEST_F(Measure, ARecordThatLeadsBackToItselfIsNotWritten) {
  Arg *const ptArg = sttNewArg(5, nullptr, nullptr);
  ptArg->pInfo = ptArg;
  sttSetVoidType(ptArg, cs("Arg"));
  const auto write = [](void *p) -> void * {
    void *const ptNode = xmlMadeNode(cs("Arg"));
    void *const ptWritten = sttGenXmlArg(static_cast<Arg *>(p), ptNode, cs("Arg"));
    EXPECT_EQ(ptWritten, nullptr);
    xmlNodeFree(ptNode);
    return ptWritten;
  };
  EXPECT_EQ(runOnSmallStack(write, ptArg), nullptr);
  EXPECT_EQ(logTexts().at(0),
            "Record[Arg]: the list or the nesting is too long for the stack: make it shorter");
}

}  // namespace

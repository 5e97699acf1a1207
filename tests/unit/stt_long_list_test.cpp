// A list takes heap and no stack: its length does not matter. What is nested too deep for the stack is
// refused.
#include <gtest/gtest.h>
#include <pthread.h>
#include <ucontext.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "config_tree.h"
#include "cvt.h"
#include "log_capture.h"
#include "seen.h"
#include "xml_text.h"

namespace {

using test::ConfigTree;
using test::cs;
using test::Xml;

constexpr int kRecords = 20000;
constexpr size_t kSmallStack = 384 * 1024;  // hardly more than what is kept in reserve

// A list in a file of its own: the first record as sFirst, the others as sNext.
std::string listOf(const std::string &sFirst, const std::string &sNext, int nRecords = kRecords) {
  std::string text = "<Root>\n" + sFirst;
  for (int i = 1; i < nRecords; ++i) text += "\n" + sNext;
  return text + "\n</Root>\n";
}

void *call(void *pWork) {
  (*static_cast<std::function<void()> *>(pWork))();
  return nullptr;
}

void onSmallStack(std::function<void()> work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kSmallStack);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, call, &work), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

// Runs it where hardly more than half of what is kept in reserve is left.
void onShortStack(const std::function<void()> &work) {
  onSmallStack([&] {
    const char used[kSmallStack - 128 * 1024] = {};
    test::see(used);
    work();
  });
}

std::function<void()> g_onOwnStack;

// Runs it on a stack that the program has made for itself, as coroutines do.
void onOwnStack(std::function<void()> work) {
  g_onOwnStack = std::move(work);
  std::vector<char> stack(kSmallStack);
  ucontext_t own;
  ucontext_t back;
  ASSERT_EQ(getcontext(&own), 0);
  own.uc_stack.ss_sp = stack.data();
  own.uc_stack.ss_size = stack.size();
  own.uc_link = &back;
  makecontext(
      &own, [] { g_onOwnStack(); }, 0);
  ASSERT_EQ(swapcontext(&back, &own), 0);
}

std::string tooDeep(const std::string &sRecord) {
  return "Record[" + sRecord + "]: the list or the nesting is too long for the stack: make it shorter";
}

template <class T>
T *read(ConfigTree &tree, const char *psType, T *(*fParse)(void *, char *)) {
  void *ptList = nullptr;
  onSmallStack([&] {
    ptList = sttParseXmlFile(tree.arg("a.xml"), cs("Root"), cs(psType), reinterpret_cast<void *>(fParse));
  });
  return static_cast<T *>(ptList);
}

template <class T>
int length(const T *pt) {
  int n = 0;
  for (; pt != nullptr; pt = pt->ptNext) ++n;
  return n;
}

// Reads such a list on a small stack and returns how many records it has.
template <class T>
int lengthRead(const char *psType, T *(*fParse)(void *, char *), const std::string &sInside) {
  ConfigTree tree;
  const std::string sElement = std::string(psType) + sInside;
  const size_t nName = sElement.find_first_of(" />");
  tree.file("a.xml", listOf("<" + sElement,
                            "<" + sElement.substr(0, nName) + " __ID=\"ptNext\"" + sElement.substr(nName)));
  const T *const ptList = read(tree, psType, fParse);
  EXPECT_TRUE(test::logTexts().empty()) << test::logTexts().front();
  return length(ptList);
}

}  // namespace

TEST(SttLongList, OfEveryKindIsReadOnASmallStack) {
  sttAddFuncVoid(sttParseVoidcvt_message, sttGenVoidcvt_message);
  sttAddFuncVoid(sttParseVoidcvt_convert, sttGenVoidcvt_convert);
  EXPECT_EQ(lengthRead("PathList", sttParseXmlPathList, " psPath=\"a\"/>"), kRecords);
  EXPECT_EQ(lengthRead("Arg", sttParseXmlArg, " nType=\"3\"><Value __ID=\"pInfo\" psValue=\"v\"/></Arg>"),
            kRecords);
  EXPECT_EQ(lengthRead("Judge", sttParseXmlJudge, "><Arg __ID=\"ptSrcArgs\" nType=\"3\"/></Judge>"),
            kRecords);
  EXPECT_EQ(lengthRead("Case", sttParseXmlCase, "><Judge __ID=\"ptJudge\"/></Case>"), kRecords);
  EXPECT_EQ(lengthRead("MappingList", sttParseXmlMappingList, "/>"), kRecords);
  EXPECT_EQ(lengthRead("IdFunc", sttParseXmlIdFunc, " psFunctName=\"pubParse\"/>"), kRecords);
  EXPECT_EQ(lengthRead("FormatInfo", sttParseXmlFormatInfo, " psFormatId=\"f\"/>"), kRecords);
  EXPECT_EQ(lengthRead("IdMsgInfo", sttParseXmlIdMsgInfo, " psMsgName=\"m\"/>"), kRecords);
  sttEnd();
}

TEST(SttLongList, OfNodesIsReadOnASmallStack) {
  ConfigTree tree;
  const std::string sInside = "<StructAttr __ID=\"ptStructAttr\"/></Message>";
  tree.file("a.xml", listOf("<Message psNodeName=\"n\">" + sInside,
                            "<Message __ID=\"ptNextNode\" psNodeName=\"n\">" + sInside));
  int n = 0;
  for (const Message *pt = read(tree, "Message", sttParseXmlMessage); pt != nullptr;
       pt = pt->ptStructAttr->ptNextNode) {
    ++n;
  }
  EXPECT_EQ(n, kRecords);
  EXPECT_TRUE(test::logTexts().empty());
}

TEST(SttLongList, TellsOfAFailureOnceARecordFromTheInnermostOutward) {
  test::clearLog();
  constexpr int kFailing = 5000;
  ConfigTree tree;
  const std::string sPair = "<IdCvtInfo psFormatId=\"f\" psCvtName=\"c\"/>";
  const std::string sNext = "<IdCvtInfo __ID=\"ptNext\" psFormatId=\"f\" psCvtName=\"c\"/>";
  tree.file("a.xml", listOf(sPair, sNext, kFailing));
  EXPECT_EQ(read(tree, "IdCvtInfo", sttParseXmlIdCvtInfo), nullptr);
  const std::string sLink =
      "struct IdCvtInfo * ptNext = sttParseXmlNext(ptXmlNode, \"IdCvtInfo\", \"ptNext\", "
      "sttParseXmlIdCvtInfo) is Err!!";
  const std::vector<std::string> texts = test::logTexts();
  EXPECT_EQ(std::count(texts.begin(), texts.end(), sLink), kFailing - 1);
  const std::string sPlace =
      "File[" + tree.path("a.xml") + "] Line[" + std::to_string(kFailing + 1) + "] Element[IdCvtInfo]";
  EXPECT_EQ(std::count(texts.begin(), texts.end(), sPlace), 1);
}

TEST(SttLongList, OfReadersThatDescendThemselvesIsRefusedBeforeTheStackEnds) {
  test::clearLog();
  ConfigTree tree;
  tree.file("a.xml", listOf("<PathList psPath=\"a\"/>", "<PathList __ID=\"ptNext\" psPath=\"a\"/>", 60000));
  struct Reader {
    static void *descend(void *ptXmlNode, char *psType) {
      return sttParseXmlNext(ptXmlNode, psType, cs("ptNext"), reinterpret_cast<void *>(descend));
    }
  };
  onSmallStack([&] {
    EXPECT_EQ(sttParseXmlFile(tree.arg("a.xml"), cs("Root"), cs("PathList"),
                              reinterpret_cast<void *>(Reader::descend)),
              nullptr);
  });
  EXPECT_EQ(nGRet, -1);
  ASSERT_GT(test::logTexts().size(), 1U);
  EXPECT_EQ(test::logTexts().front(), tooDeep("PathList"));
  EXPECT_EQ(test::logTexts()[1].rfind("File[" + tree.path("a.xml") + "] Line[", 0), 0U);
}

TEST(SttNesting, OfAFieldOfAnyTypeIsRefusedBeforeTheStackEnds) {
  sttAddFuncVoid(sttParseVoidcvt_convert, sttGenVoidcvt_convert);
  const Xml arg("<Arg><Case __ID='pInfo'/></Arg>");
  EXPECT_NE(sttParseXmlVoid(arg.root(), cs("pInfo")), nullptr);
  test::clearLog();
  nGRet = 0;
  onShortStack([&] { EXPECT_EQ(sttParseXmlVoid(arg.root(), cs("pInfo")), nullptr); });
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(test::logTexts(), std::vector<std::string>{tooDeep("Case")});
  sttEnd();
}

TEST(SttNesting, OfARecordInARecordIsRefusedBeforeTheStackEnds) {
  const Xml list("<Case><Judge __ID='ptJudge'/></Case>");
  EXPECT_NE(sttParseXmlCase(list.root(), cs("Case")), nullptr);
  test::clearLog();
  onShortStack([&] { EXPECT_EQ(sttParseXmlCase(list.root(), cs("Case")), nullptr); });
  EXPECT_EQ(nGRet, -1);
  ASSERT_FALSE(test::logTexts().empty());
  EXPECT_EQ(test::logTexts().front(), tooDeep("Judge"));
}

TEST(SttNesting, OnAStackOfTheProgramsOwnIsRead) {
  const Xml list("<Case><Judge __ID='ptJudge'/></Case>");
  test::clearLog();
  onOwnStack([&] { EXPECT_NE(sttParseXmlCase(list.root(), cs("Case")), nullptr); });
  EXPECT_TRUE(test::logTexts().empty());
}

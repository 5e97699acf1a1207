// Fields that find no room on the heap for their part of the document: the flag is raised, the line is told, the
// document stays as it was, and what had been made for it is given back. A value that finds none when it is read
// fails its record.
#include <gtest/gtest.h>
#include <libxml/tree.h>
#include <libxml/xmlmemory.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "binding_fixture.h"
#include "config_tree.h"
#include "cvt.h"
#include "log_capture.h"
#include "xml_layer.h"
#include "xml_text.h"

namespace {

using test::cs;
using test::logTexts;
using test::untyped;
using test::Xml;
using Texts = std::vector<std::string>;

// How many more pieces libxml2 is given; negative: as many as it wants.
long f_nLeft = -1;

// How many it holds.
long f_nHeld = 0;

bool isEmpty() {
  if (f_nLeft == 0) return true;
  if (f_nLeft > 0) --f_nLeft;
  return false;
}
template <class T>
T *counted(T *p) {
  f_nHeld += p != nullptr;
  return p;
}
void *give(size_t nSize) {
  return isEmpty() ? nullptr : counted(std::malloc(nSize));
}
void *giveMore(void *p, size_t nSize) {
  if (p == nullptr) return give(nSize);
  return isEmpty() ? nullptr : std::realloc(p, nSize);
}
char *giveCopy(const char *ps) {
  return isEmpty() ? nullptr : counted(strdup(ps));
}
void takeBack(void *p) {
  f_nHeld -= p != nullptr;
  std::free(p);
}

// How many pieces of the documents it holds; what it keeps of an error is none.
long held() {
  xmlResetLastError();
  return f_nHeld;
}

// Before libxml2 has taken anything.
const int f_nSetUp = xmlMemSetup(takeBack, give, giveMore, giveCopy);

char f_record[] = "record";

void *writeRecord(void *ptStruct, void *ptNode, char *, char *) {
  sttGenerateXmlString(ptNode, static_cast<char *>(ptStruct), cs("psName"));
  return ptNode;
}
void *readRecord(void *, char *) {
  return f_record;
}
void *writeNothing(void *, void *ptNode, char *, char *) {
  return ptNode;
}

const char kEmpty[] = "<r><T/></r>";

class NoHeap : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(f_nSetUp, 0);
    nGRet = 0;
    test::clearLog();
    sttAddFuncVoid(readRecord, writeNothing);
    sttSetVoidType(f_record, cs("T"));
    // What libxml2 makes once and keeps.
    const Xml xml(kEmpty);
    ASSERT_EQ(xml.text(), kEmpty);
  }
  void TearDown() override { sttEnd(); }

  // Writes into the T of kEmpty with no piece, with one, and so on, until nothing is missing: the document is
  // whole, or the flag is raised and the document left as it was. The first line of each failure, without
  // repetitions.
  static Texts failures(const std::function<void(void *ptNode)> &write, const std::string &sLeft,
                        const std::string &sWhole) {
    Texts lines;
    for (long n = 0; n < 100; ++n) {
      SCOPED_TRACE(n);
      const long nBefore = held();
      const bool bEnough = attempt(n, write, sLeft, sWhole);
      EXPECT_EQ(held(), nBefore);
      if (bEnough) {
        EXPECT_EQ(nGRet, 0);
        return lines;
      }
      const std::string sLine = logTexts(0).empty() ? "" : logTexts(0).front();
      if (nGRet != 0 && (lines.empty() || lines.back() != sLine)) lines.push_back(sLine);
    }
    ADD_FAILURE() << "never enough";
    return lines;
  }

 private:
  // Writes with that many pieces; whether there were more than enough.
  static bool attempt(long nPieces, const std::function<void(void *ptNode)> &write, const std::string &sLeft,
                      const std::string &sWhole) {
    const Xml xml(kEmpty);
    test::clearLog();
    nGRet = 0;
    f_nLeft = nPieces;
    write(xml.child());
    const bool bEnough = f_nLeft > 0;
    f_nLeft = -1;
    EXPECT_EQ(xml.text(), nGRet == 0 ? sWhole : sLeft);
    return bEnough;
  }
};

TEST_F(NoHeap, ForAnAttributeDropsTheElementSilently) {
  EXPECT_EQ(
      failures([](void *pt) { sttGenerateXmlString(pt, cs("v"), cs("n")); }, "<r/>", "<r><T n=\"v\"/></r>"),
      Texts{""});
  EXPECT_EQ(failures([](void *pt) { sttGenerateXmlInt(pt, 7, cs("n")); }, "<r/>", "<r><T n=\"7\"/></r>"),
            Texts{""});
}

TEST_F(NoHeap, ForARecordsElementLeavesTheDocumentSilently) {
  const auto asStruct = [](void *pt) {
    sttGenerateXmlStruct(pt, f_record, cs("p"), cs("U"), untyped(writeNothing));
  };
  EXPECT_EQ(failures(asStruct, kEmpty, "<r><T><U __ID=\"p\"/></T></r>"), Texts{""});
  const auto asNext = [](void *pt) {
    sttGenerateXmlNext(pt, f_record, cs("p"), cs("T"), untyped(writeNothing));
  };
  EXPECT_EQ(failures(asNext, kEmpty, "<r><T/><T __ID=\"p\"/></r>"), Texts{""});
}

TEST_F(NoHeap, ForAnElementOfAnyTypeIsToldStepByStep) {
  EXPECT_EQ(failures([](void *pt) { sttGenerateXmlVoid(pt, f_record, cs("p")); }, kEmpty,
                     "<r><T><T __ID=\"p\"/></T></r>"),
            (Texts{"xmlMadeNode Err!!", "xmlPutNodeAttr Err!!"}));
}

TEST_F(NoHeap, ForWhatARecordWritesKeepsItsFieldFailed) {
  const auto write = [](void *pt) {
    sttGenerateXmlStruct(pt, f_record, cs("p"), cs("U"), untyped(writeRecord));
  };
  EXPECT_EQ(failures(write, kEmpty, "<r><T><U __ID=\"p\" psName=\"record\"/></T></r>"), Texts{""});
}

TEST_F(NoHeap, ForABaseStringIsToldAndMakesNoElement) {
  sttEnd();
  for (long n = 0; n < 3; ++n) {
    test::clearLog();
    const long nBefore = held();
    f_nLeft = n;
    EXPECT_EQ(sttGenVoid(f_record, nullptr, cs("p"), cs("String")), nullptr);
    f_nLeft = -1;
    EXPECT_EQ(held(), nBefore) << n;
    EXPECT_EQ(logTexts(0), Texts{"psValue Generate Xml Node err!"}) << n;
  }
}

// Reads the first child of a root with no piece left: nothing comes of it, and these are the lines.
void expectUnread(const std::string &sText, const std::function<void *(void *ptNode)> &read,
                  const std::string &sAttribute, const Texts &lines) {
  SCOPED_TRACE(sText);
  const Xml xml("<r>" + sText + "</r>");
  Texts all = {"Attribute[" + sAttribute +
               "]: the heap has no room for its value; raise the memory limit of the process"};
  all.insert(all.end(), lines.begin(), lines.end());
  test::clearLog();
  nGRet = 0;
  f_nLeft = 0;
  void *const pt = read(xml.child());
  f_nLeft = -1;
  EXPECT_EQ(pt, nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(logTexts(1), all);
  EXPECT_EQ(logTexts(0), all);
}

TEST_F(NoHeap, ForAValueThatIsReadFailsItsRecord) {
  expectUnread("<Plug psName='first'/>", [](void *pt) -> void * { return sttParseXmlPlug(pt, cs("Plug")); },
               "psName", {"char * psName = sttParseXmlString(ptXmlNode, \"psName\") is Err!!"});
  expectUnread("<Plug psPath='x'/>", [](void *pt) -> void * { return sttParseXmlPlug(pt, cs("Plug")); },
               "psPath", {"char * psPath = sttParseXmlString(ptXmlNode, \"psPath\") is Err!!"});
  expectUnread("<Plug psFunction='x'/>", [](void *pt) -> void * { return sttParseXmlPlug(pt, cs("Plug")); },
               "psFunction", {"char * psFunction = sttParseXmlString(ptXmlNode, \"psFunction\") is Err!!"});
  expectUnread("<Plug psBasePlugPath='/opt/'/>",
               [](void *pt) -> void * { return sttParseXmlPlugInfo(pt, cs("PlugInfo")); }, "psBasePlugPath",
               {"char * psBasePlugPath = GetBasePlugPath(ptXmlNode) is Err!!"});
  expectUnread("<StructAttr nType='1'/>",
               [](void *pt) -> void * { return sttParseXmlStructAttr(pt, cs("StructAttr")); }, "nType",
               {"int nType = sttParseXmlInt(ptXmlNode, \"nType\") is Err!!"});
  expectUnread("<Arg nType='1'/>", [](void *pt) -> void * { return sttParseXmlArg(pt, cs("Arg")); }, "nType",
               {"int nType = sttParseXmlInt(ptXmlNode, \"nType\") is Err!!"});
}

TEST_F(NoHeap, ForTheFieldOfAnElementThatIsReadFailsTheRecordAroundIt) {
  expectUnread("<Plug><Plug __ID='ptPlugs'/></Plug>",
               [](void *pt) -> void * { return sttParseXmlPlugInfo(pt, cs("PlugInfo")); }, "__ID",
               {"Plug * ptPlugs = sttParseXmlStruct(ptXmlNode, \"Plug\", \"ptPlugs\", sttParseXmlPlug) is "
                "Err!!"});
  expectUnread("<PathList/><PathList __ID='ptNext'/>",
               [](void *pt) -> void * { return sttParseXmlPathList(pt, cs("PathList")); }, "__ID",
               {"struct PathList * ptNext = sttParseXmlNext(ptXmlNode, \"PathList\", \"ptNext\", "
                "sttParseXmlPathList) is Err!!"});
}

TEST_F(NoHeap, ForAValueOfASectionFailsItBeforeAnyDirectoryIsRead) {
  expectUnread(
      "<Message gnMaxValue='5'/>", [](void *pt) { return cvtFmtInit(pt, cs("Message")); }, "gnMaxValue",
      {"int gnMaxValue = sttParseXmlInt(ptXmlNode, \"gnMaxValue\") is Err!!", "cvt Message Get Args Err!!"});
  expectUnread("<Convert psCvtPath='cvt'/>", [](void *pt) { return cvtCvtInit(pt, cs("Convert")); },
               "psCvtPath",
               {"char * psCvtPath = sttParseXmlString(ptXmlNode, \"psCvtPath\") is Err!!",
                "Convert Args Get Err!!\n"});
  expectUnread(
      "<Id psIdPath='id'/>", [](void *pt) { return cvtIdInit(pt, cs("Id")); }, "psIdPath",
      {"char * psIdPath = sttParseXmlString(ptXmlNode, \"psIdPath\") is Err!!", "Id Args Get ERr!!"});
  cvtEnd();
}

TEST_F(NoHeap, ForAFileLeavesNoneAndTheOldOne) {
  test::ConfigTree tree;
  tree.file("a.xml", "<old/>");
  f_nLeft = 0;
  EXPECT_EQ(sttGenXmlFile(tree.arg("a.xml"), f_record, cs("R"), cs("T"), untyped(writeNothing)), -1);
  f_nLeft = -1;
  EXPECT_EQ(logTexts(0), Texts{"Make [R)" + tree.path("a.xml") + "] Xml err!"});
  const test::Doc doc(xmlFileParse(tree.arg("a.xml")));
  EXPECT_EQ(test::textOf(doc.get()), "<old/>");
}

TEST(FreedNode, IsStillItsParentsChild) {
  const Xml xml("<a><b/></a>");
  void *const ptChild = xml.child();
  const auto nChild = reinterpret_cast<std::uintptr_t>(ptChild);
  EXPECT_EQ(xmlNodeFree(ptChild), 0);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(xmlGetChileNode(xml.root())), nChild);
  auto *const ptParent = static_cast<xmlNodePtr>(xml.root());
  ptParent->children = nullptr;
  ptParent->last = nullptr;
  EXPECT_EQ(xml.text(), "<a/>");
}

}  // namespace

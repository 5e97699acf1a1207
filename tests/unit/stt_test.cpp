// The binding framework's registries and its dispatch of records by type name.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "allocator.h"
#include "binding_fixture.h"
#include "config_tree.h"
#include "log_capture.h"
#include "stt.h"
#include "xml_text.h"

// --- Memory that can run out -----------------------------------------------------------------------------

namespace {
bool f_bNoMemory = false;
}

// Not inlined: the compiler would take free in place of delete for a mistake.
#define OUT_OF_LINE __attribute__((noinline))

OUT_OF_LINE void *operator new(std::size_t nSize, const std::nothrow_t &) noexcept {
  return f_bNoMemory ? nullptr : std::malloc(nSize);
}
OUT_OF_LINE void *operator new(std::size_t nSize) {
  if (void *const p = std::malloc(nSize)) return p;
  throw std::bad_alloc();
}
OUT_OF_LINE void operator delete(void *p) noexcept {
  std::free(p);
}
OUT_OF_LINE void operator delete(void *p, std::size_t) noexcept {
  std::free(p);
}
OUT_OF_LINE void operator delete(void *p, const std::nothrow_t &) noexcept {
  std::free(p);
}

namespace {

using test::cs;
using test::logTexts;
using test::Xml;
using Texts = std::vector<std::string>;

// Which dispatchers were called, in order: "P1", "G2".
Texts f_calls;

// Dispatcher n knows the type "Tn" and answers with its own record.
char f_records[4];

template <int n>
void *parse(void *, char *psType) {
  f_calls.push_back("P" + std::to_string(n));
  return psType != nullptr && psType == "T" + std::to_string(n) ? &f_records[n] : nullptr;
}
template <int n>
void *generate(void *, void *, char *, char *psType) {
  f_calls.push_back("G" + std::to_string(n));
  return psType != nullptr && psType == "T" + std::to_string(n) ? &f_records[n] : nullptr;
}
template <int n>
int addGlobal() {
  return sttAddFuncVoid(parse<n>, generate<n>);
}

void *parseFile(char *, char *, void *) {
  return nullptr;
}
void *parseFile2(char *, char *, void *) {
  return nullptr;
}

class Stt : public test::EmptyBinding {
 protected:
  void SetUp() override {
    test::EmptyBinding::SetUp();
    f_calls.clear();
  }
};

using SttRegistry = Stt;
using SttDispatch = Stt;
using SttTypeList = Stt;

Texts registered() {
  Texts names;
  for (const SttInfo *pt = gptSttInfo; pt != nullptr; pt = pt->ptNext) names.push_back(pt->psTypeName);
  return names;
}

// --- File types --------------------------------------------------------------------------------------------

TEST_F(SttRegistry, TypesStandNewestFirstUnderACopyOfTheirName) {
  char name[] = "One";
  EXPECT_EQ(sttAddSttInfo(name, parseFile), 0);
  name[0] = '?';
  EXPECT_EQ(sttAddSttInfo(cs("Two"), parseFile), 0);
  EXPECT_EQ(registered(), (Texts{"Two", "One"}));
  EXPECT_EQ(gptSttInfo->fParseFunction, parseFile);
  EXPECT_EQ(gptSttInfo->ptVoidFunction, nullptr);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(SttRegistry, ATypeRegisteredTwiceKeepsItsFirstFunction) {
  sttAddSttInfo(cs("One"), parseFile);
  EXPECT_EQ(sttAddSttInfo(cs("One"), parseFile2), 0);
  EXPECT_EQ(registered(), Texts{"One"});
  EXPECT_EQ(gptSttInfo->fParseFunction, parseFile);
}

TEST_F(SttRegistry, TypeNamesDifferByCase) {
  sttAddSttInfo(cs("One"), parseFile);
  sttAddSttInfo(cs("one"), parseFile2);
  EXPECT_EQ(registered(), (Texts{"one", "One"}));
}

TEST_F(SttRegistry, ANullTypeIsRefused) {
  EXPECT_EQ(sttAddSttInfo(nullptr, parseFile), -1);
  ASSERT_EQ(test::logLines().size(), 1U);
  const test::LogLine &line = test::logLines()[0];
  EXPECT_EQ(line.nLevel, 1);
  EXPECT_EQ(line.sModule, "$cvt2");
  EXPECT_EQ(line.sFile, "stt.cpp");
  EXPECT_EQ(line.sFunction, "sttAddSttInfo");
  EXPECT_EQ(line.sText, "[psType] is NULL");
  EXPECT_EQ(gptSttInfo, nullptr);
}

TEST_F(SttRegistry, WithoutMemoryATypeIsRefused) {
  if (test::isWatched()) GTEST_SKIP() << "valgrind's allocator stands before the one that refuses";
  f_bNoMemory = true;
  const int nRet = sttAddSttInfo(cs("One"), parseFile);
  f_bNoMemory = false;
  EXPECT_EQ(nRet, -1);
  EXPECT_EQ(logTexts(), Texts{"New Type[One] SttInfo Err!!"});
  EXPECT_EQ(gptSttInfo, nullptr);
}

TEST_F(SttRegistry, ATypesOwnPairsStandNewestFirstWithDuplicates) {
  sttAddSttInfo(cs("One"), parseFile);
  sttAddSttInfo(cs("Two"), parseFile);
  EXPECT_EQ(sttAddVoidFunctionToSttInfo(cs("One"), parse<1>, generate<1>), 0);
  EXPECT_EQ(sttAddVoidFunctionToSttInfo(cs("One"), parse<2>, generate<2>), 0);
  EXPECT_EQ(sttAddVoidFunctionToSttInfo(cs("One"), parse<1>, generate<1>), 0);
  EXPECT_EQ(gptSttInfo->ptVoidFunction, nullptr);  // of "Two"
  std::vector<sttFncParseVoid> parsers;
  std::vector<sttFncGenVoid> generators;
  for (const FuncList *pt = gptSttInfo->ptNext->ptVoidFunction; pt != nullptr; pt = pt->ptNext) {
    parsers.push_back(pt->fpParse);
    generators.push_back(pt->fpGen);
  }
  EXPECT_EQ(parsers, (std::vector<sttFncParseVoid>{parse<1>, parse<2>, parse<1>}));
  EXPECT_EQ(generators, (std::vector<sttFncGenVoid>{generate<1>, generate<2>, generate<1>}));
}

TEST_F(SttRegistry, APairsArgumentsAreCheckedInOrder) {
  EXPECT_EQ(sttAddVoidFunctionToSttInfo(nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(sttAddVoidFunctionToSttInfo(cs("None"), nullptr, nullptr), -1);
  EXPECT_EQ(sttAddVoidFunctionToSttInfo(cs("None"), parse<1>, nullptr), -1);
  EXPECT_EQ(sttAddVoidFunctionToSttInfo(cs("None"), parse<1>, generate<1>), -1);
  EXPECT_EQ(logTexts(), (Texts{"[psType] is NULL", "[fpParseVoid] is NULL", "[fpGenVoid] is NULL",
                               "SttInfo[None] Not Defined!!"}));
}

TEST_F(SttRegistry, TheEndEmptiesTheRegistryAndTheChain) {
  sttAddSttInfo(cs("One"), parseFile);
  sttAddVoidFunctionToSttInfo(cs("One"), parse<2>, generate<2>);
  addGlobal<1>();
  EXPECT_EQ(sttEnd(), 0);
  EXPECT_EQ(gptSttInfo, nullptr);
  EXPECT_EQ(sttParseVoid(nullptr, cs("T1")), nullptr);
  EXPECT_EQ(f_calls, Texts{});
  EXPECT_EQ(sttEnd(), 0);
}

// --- The chain
// -----------------------------------------------------------------------------------------------

TEST_F(SttDispatch, TheGlobalChainIsOldestFirstAndTheFirstAnswerWins) {
  EXPECT_EQ(addGlobal<1>(), 0);
  EXPECT_EQ(addGlobal<2>(), 0);
  EXPECT_EQ(addGlobal<3>(), 0);
  EXPECT_EQ(sttParseVoid(nullptr, cs("T2")), &f_records[2]);
  EXPECT_EQ(sttGenVoid(&f_records[2], nullptr, cs("pInfo"), cs("T2")), &f_records[2]);
  EXPECT_EQ(f_calls, (Texts{"P1", "P2", "G1", "G2"}));
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(SttDispatch, APairAddedTwiceStandsOnce) {
  addGlobal<1>();
  addGlobal<2>();
  EXPECT_EQ(addGlobal<1>(), 0);
  EXPECT_EQ(sttAddFuncVoid(parse<1>, generate<3>), 0);  // the parse function alone decides
  sttParseVoid(nullptr, cs("none"));
  sttGenVoid(nullptr, nullptr, cs("pInfo"), cs("none"));
  EXPECT_EQ(f_calls, (Texts{"P1", "P2", "G1", "G2"}));
}

TEST_F(SttDispatch, AResetChainIsEmpty) {
  addGlobal<1>();
  EXPECT_EQ(sttResetFunctVoid(), 0);
  sttParseVoid(nullptr, cs("T1"));
  EXPECT_EQ(f_calls, Texts{});
  addGlobal<2>();
  EXPECT_EQ(sttParseVoid(nullptr, cs("T2")), &f_records[2]);
}

TEST_F(SttDispatch, AnUnknownTypeIsLoggedAndLeavesTheFlagAlone) {
  addGlobal<1>();
  for (const int nFlag : {0, -1, 7}) {
    test::clearLog();
    nGRet = nFlag;
    EXPECT_EQ(sttParseVoid(nullptr, cs("Other")), nullptr);
    EXPECT_EQ(sttGenVoid(f_records, nullptr, cs("pInfo"), cs("Other")), nullptr);
    EXPECT_EQ(logTexts(), (Texts{"Type[Other] Not Define", "Type[Other] Not Define"}));
    EXPECT_EQ(nGRet, nFlag);
  }
}

TEST_F(SttDispatch, ANullTypeIsUnknown) {
  addGlobal<1>();
  EXPECT_EQ(sttParseVoid(nullptr, nullptr), nullptr);
  EXPECT_EQ(sttGenVoid(f_records, nullptr, cs("pInfo"), nullptr), nullptr);
  EXPECT_EQ(logTexts(), (Texts{"Type[(null)] Not Define", "Type[(null)] Not Define"}));
}

// The chain takes any pair; what a null one lacks is told when it is needed.
TEST_F(SttDispatch, APairWithoutAFunctionIsReported) {
  EXPECT_EQ(sttAddFuncVoid(nullptr, nullptr), 0);
  EXPECT_EQ(sttParseVoid(nullptr, cs("T1")), nullptr);
  EXPECT_EQ(sttGenVoid(f_records, nullptr, cs("pInfo"), cs("T1")), nullptr);
  EXPECT_EQ(logTexts(), (Texts{"[pt->fpParse] is NULL", "Type[T1] Not Define", "[pt->fpGen] is NULL",
                               "Type[T1] Not Define"}));
}

// --- The base type
// -------------------------------------------------------------------------------------------

TEST_F(SttDispatch, ABaseStringReadsAsAHeapCopyOfItsValue) {
  addGlobal<1>();
  const Xml xml("<String psValue='v'/>");
  auto *const psValue = static_cast<char *>(sttParseVoid(xml.root(), cs("String")));
  ASSERT_NE(psValue, nullptr);
  EXPECT_STREQ(psValue, "v");
  std::free(psValue);
  EXPECT_EQ(f_calls, Texts{"P1"});  // the chain is asked first
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(SttDispatch, ABaseStringWithoutValueIsNull) {
  const Xml xml("<String/>");
  EXPECT_EQ(sttParseVoid(xml.root(), cs("String")), nullptr);
  EXPECT_EQ(nGRet, 0);
}

TEST_F(SttDispatch, ABaseStringsNameIsExact) {
  const Xml xml("<string psValue='v'/>");
  EXPECT_EQ(sttParseVoid(xml.root(), cs("string")), nullptr);
  EXPECT_EQ(logTexts(), Texts{"Type[string] Not Define"});
}

TEST_F(SttDispatch, ABaseStringIsWrittenToAnElementOfItsOwn) {
  addGlobal<1>();
  const Xml xml("<a/>");
  void *const ptMade = sttGenVoid(cs("v"), xml.root(), cs("pInfo"), cs("String"));
  ASSERT_NE(ptMade, nullptr);
  EXPECT_STREQ(xmlGetNodeName(ptMade), "pInfo");
  EXPECT_EQ(test::taken(xmlGetNodeAttr(ptMade, cs("psValue"))), "v");
  EXPECT_EQ(xmlGetFatherNode(ptMade), nullptr);
  xmlNodeFree(ptMade);
  EXPECT_EQ(xml.text(), "<a/>");
  EXPECT_EQ(f_calls, Texts{"G1"});
}

TEST_F(SttDispatch, ABaseStringThatCannotBeWrittenIsReported) {
  const Xml xml("<a/>");
  EXPECT_EQ(sttGenVoid(nullptr, xml.root(), cs("pInfo"), cs("String")), nullptr);
  EXPECT_EQ(sttGenVoid(cs("v"), xml.root(), nullptr, cs("String")), nullptr);  // an element needs a name
  EXPECT_EQ(logTexts(), (Texts{"psValue Generate Xml Node err!", "psValue Generate Xml Node err!"}));
}

// --- Types of records
// ----------------------------------------------------------------------------------------

TEST_F(SttTypeList, TheNewestTypeOfARecordIsFound) {
  int record = 0;
  int other = 0;
  char type[] = "A";
  EXPECT_EQ(sttSetVoidType(&record, cs("Old")), 0);
  EXPECT_EQ(sttSetVoidType(&other, cs("Other")), 0);
  EXPECT_EQ(sttSetVoidType(&record, type), 0);
  EXPECT_EQ(sttGetVoidType(&record), type);  // by pointer, not copied
  EXPECT_EQ(gptTypeList->p, &record);
  EXPECT_STREQ(sttGetVoidType(&other), "Other");
}

TEST_F(SttTypeList, AnUnknownRecordHasNoType) {
  int record = 0;
  EXPECT_EQ(sttGetVoidType(&record), nullptr);
  EXPECT_EQ(sttGetVoidType(nullptr), nullptr);
}

TEST_F(SttTypeList, NullIsRefusedSilently) {
  int record = 0;
  const TypeList *const ptBefore = gptTypeList;
  EXPECT_EQ(sttSetVoidType(nullptr, cs("A")), -1);
  EXPECT_EQ(sttSetVoidType(&record, nullptr), -1);
  EXPECT_EQ(gptTypeList, ptBefore);
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(SttTypeList, SurvivesTheEnd) {
  int record = 0;
  sttSetVoidType(&record, cs("A"));
  sttEnd();
  EXPECT_STREQ(sttGetVoidType(&record), "A");
}

}  // namespace

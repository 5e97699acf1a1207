// String lists, and copies of strings in a message node.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "config_tree.h"
#include "cvt_string.h"
#include "log_capture.h"

namespace {

using test::cs;

class Strings : public testing::Test {
 protected:
  void SetUp() override { test::clearLog(); }
  void TearDown() override {
    cvtEndDict();
    cvtMemCleanUp();
  }
};

using StringListTest = Strings;
using OrderedList = Strings;
using DupMem = Strings;

int f_n1 = 1;
int f_n2 = 2;
int f_n3 = 3;

std::vector<std::string> keys(const StringList *pt) {
  std::vector<std::string> all;
  for (; pt != nullptr; pt = pt->ptNext) all.emplace_back(pt->psString);
  return all;
}

// The keys of an ordered list belong to nobody; here the test takes them.
void freeKeys(const StringList *pt) {
  for (; pt != nullptr; pt = pt->ptNext) std::free(pt->psString);
}

// The only lines so far: errors of these texts from these functions.
void expectErrors(const std::vector<std::pair<std::string, std::string>> &errors) {
  ASSERT_EQ(test::logLines().size(), errors.size());
  for (size_t i = 0; i < errors.size(); ++i) {
    const test::LogLine &line = test::logLines()[i];
    EXPECT_EQ(line.nLevel, 1);
    EXPECT_EQ(line.sModule, "$cvt2");
    EXPECT_EQ(line.sFile, "cvt_string.cpp");
    EXPECT_EQ(line.sFunction, errors[i].first);
    EXPECT_EQ(line.sText, errors[i].second);
  }
  test::clearLog();
}

// --- String lists ------------------------------------------------------------------------------------------

TEST_F(StringListTest, AnAddedEntryIsTheNewFirstElement) {
  StringList *pt = cvtStrAddStringList(nullptr, cs("a"), &f_n1);
  ASSERT_NE(pt, nullptr);
  EXPECT_STREQ(pt->psString, "a");
  EXPECT_EQ(pt->ptInfo, &f_n1);
  EXPECT_EQ(pt->ptNext, nullptr);
  pt = cvtStrAddStringList(pt, cs("b"), &f_n2);
  EXPECT_EQ(keys(pt), (std::vector<std::string>{"b", "a"}));
}

TEST_F(StringListTest, TheNewestEntryOfAKeyIsFound) {
  StringList *pt = cvtStrAddStringList(nullptr, cs("k"), &f_n1);
  pt = cvtStrAddStringList(pt, cs("other"), &f_n3);
  pt = cvtStrAddStringList(pt, cs("k"), &f_n2);
  EXPECT_EQ(cvtStrFindStringList(pt, cs("k")), &f_n2);
  EXPECT_EQ(keys(pt), (std::vector<std::string>{"k", "other", "k"}));
}

TEST_F(StringListTest, KeysAreInterned) {
  std::string key = "name";
  const StringList *const pt = cvtStrAddStringList(nullptr, key.data(), &f_n1);
  key = "xxxx";
  EXPECT_STREQ(pt->psString, "name");
  EXPECT_EQ(static_cast<char *>(pt->psString), cvtStrDup(cs("name")));
}

TEST_F(StringListTest, LookUpIsExactAndCaseSensitive) {
  StringList *const pt = cvtStrAddStringList(nullptr, cs("Name"), &f_n1);
  EXPECT_EQ(cvtStrFindStringList(pt, cs("Name")), &f_n1);
  for (const char *ps : {"name", "Nam", "Name ", "", "Names"})
    EXPECT_EQ(cvtStrFindStringList(pt, cs(ps)), nullptr);
}

TEST_F(StringListTest, AnEmptyKeyIsAKey) {
  StringList *const pt = cvtStrAddStringList(nullptr, cs(""), &f_n1);
  EXPECT_EQ(cvtStrFindStringList(pt, cs("")), &f_n1);
}

TEST_F(StringListTest, NothingIsFoundWithoutAListOrAName) {
  EXPECT_EQ(cvtStrFindStringList(nullptr, cs("a")), nullptr);
  EXPECT_EQ(cvtStrFindStringList(cvtStrAddStringList(nullptr, cs("a"), &f_n1), nullptr), nullptr);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(StringListTest, ANullArgumentLosesTheList) {
  StringList *const pt = cvtStrAddStringList(nullptr, cs("a"), &f_n1);
  EXPECT_EQ(cvtStrAddStringList(pt, nullptr, &f_n1), nullptr);
  expectErrors({{"cvtStrAddStringList", "[psString] is NULL"}});
  EXPECT_EQ(cvtStrAddStringList(pt, cs("b"), nullptr), nullptr);
  expectErrors({{"cvtStrAddStringList", "[ptInfo] is NULL"}});
  EXPECT_EQ(keys(pt), std::vector<std::string>{"a"});
}

TEST_F(StringListTest, AGivenElementIsFilledAndPrepended) {
  StringList first{};
  StringList second{};
  EXPECT_EQ(locStrListAdd(nullptr, &first, cs("a"), &f_n1), &first);
  EXPECT_EQ(locStrListAdd(&first, &second, cs("b"), &f_n2), &second);
  EXPECT_EQ(keys(&second), (std::vector<std::string>{"b", "a"}));
}

TEST_F(StringListTest, AGivenElementIsCheckedUnderItsOwnName) {
  StringList element{};
  EXPECT_EQ(locStrListAdd(nullptr, &element, nullptr, &f_n1), nullptr);
  EXPECT_EQ(locStrListAdd(nullptr, &element, cs("a"), nullptr), nullptr);
  EXPECT_EQ(locStrListAdd(nullptr, nullptr, cs("a"), &f_n1), nullptr);
  expectErrors({{"locStrListAdd", "[psString] is NULL"},
                {"locStrListAdd", "[ptInfo] is NULL"},
                {"locStrListAdd", "[ptAdd] is NULL"}});
}

TEST_F(StringListTest, AnElementMayComeFromAMessageNode) {
  MemNode *const ptNode = cvtMemNewNode();
  StringList *pt = cvtStrAddStringListMem(nullptr, cs("a"), &f_n1, ptNode);
  pt = cvtStrAddStringListMem(pt, cs("a"), &f_n2, ptNode);
  EXPECT_EQ(cvtStrFindStringList(pt, cs("a")), &f_n2);
  EXPECT_NE(static_cast<char *>(pt->psString), static_cast<char *>(pt->ptNext->psString)) << "not interned";
  EXPECT_EQ(gptDict, nullptr);
  EXPECT_EQ(gptGlobalNode, nullptr);
}

TEST_F(StringListTest, AMessageNodeMustBeGiven) {
  EXPECT_EQ(cvtStrAddStringListMem(nullptr, cs("a"), &f_n1, nullptr), nullptr);
  expectErrors({{"cvtStrAddStringListMem", "[ptMemNode] is NULL"}});
}

TEST_F(StringListTest, OnAMessageNodeANullInfoOrKeyIsCaughtToo) {
  MemNode *const ptNode = cvtMemNewNode();
  EXPECT_EQ(cvtStrAddStringListMem(nullptr, cs("a"), nullptr, ptNode), nullptr);
  expectErrors({{"locStrListAdd", "[ptInfo] is NULL"}});
  EXPECT_EQ(cvtStrAddStringListMem(nullptr, nullptr, &f_n1, ptNode), nullptr);
  expectErrors({{"cvtStrDupMem", "[psStr] is NULL"}, {"locStrListAdd", "[psString] is NULL"}});
}

TEST_F(StringListTest, ARefusedElementGivesNullAndLeavesTheListBehindIt) {
  MemNode *const ptNode = cvtMemNewNode();
  StringList *const pt = cvtStrAddStringListMem(nullptr, cs("a"), &f_n1, ptNode);
  StringList element{};
  EXPECT_EQ(cvtStrAddStringListMem(pt, cs("b"), &f_n2, nullptr), nullptr);
  EXPECT_EQ(cvtStrAddStringListMem(pt, nullptr, &f_n2, ptNode), nullptr);
  EXPECT_EQ(cvtStrAddStringListMem(pt, cs("b"), nullptr, ptNode), nullptr);
  EXPECT_EQ(locStrListAdd(pt, &element, nullptr, &f_n2), nullptr);
  EXPECT_EQ(locStrListAdd(pt, &element, cs("b"), nullptr), nullptr);
  EXPECT_EQ(locStrListAdd(pt, nullptr, cs("b"), &f_n2), nullptr);
  EXPECT_EQ(keys(pt), std::vector<std::string>{"a"});
}

TEST_F(StringListTest, TheIteratorReturnsEveryInfo) {
  StringList *pt = cvtStrAddStringList(nullptr, cs("a"), &f_n1);
  pt = cvtStrAddStringList(pt, cs("b"), &f_n2);
  EXPECT_EQ(cvtStrListNext(&pt), &f_n2);
  EXPECT_EQ(cvtStrListNext(&pt), &f_n1);
  EXPECT_EQ(pt, nullptr);
}

TEST_F(StringListTest, TheIteratorOfNothingIsNull) {
  EXPECT_EQ(cvtStrListNext(nullptr), nullptr);
  EXPECT_TRUE(test::logLines().empty());
  StringList *ptEnd = nullptr;
  EXPECT_EQ(cvtStrListNext(&ptEnd), nullptr);
  expectErrors({{"cvtStrListNext", "[*pptIter] is NULL"}});
}

TEST_F(StringListTest, EveryElementIsLoggedWithTheLabel) {
  StringList *pt = cvtStrAddStringList(nullptr, cs("a"), &f_n1);
  pt = cvtStrAddStringList(pt, cs("b"), &f_n2);
  EXPECT_EQ(cvtStrLogStringList(pt, cs("steps")), 0);
  EXPECT_EQ(test::logTexts(5), (std::vector<std::string>{"[b] - [steps]", "[a] - [steps]"}));
}

TEST_F(StringListTest, AnEmptyListLogsNothing) {
  EXPECT_EQ(cvtStrLogStringList(nullptr, cs("steps")), 0);
  EXPECT_TRUE(test::logLines().empty());
}

TEST_F(StringListTest, AListIsAppendedByItsElements) {
  StringList *const ptSource =
      cvtStrAddStringList(cvtStrAddStringList(nullptr, cs("b"), &f_n2), cs("a"), &f_n1);
  StringList *const ptBehind =
      cvtStrAddStringList(cvtStrAddStringList(nullptr, cs("d"), &f_n2), cs("c"), &f_n1);
  EXPECT_EQ(cvtStrListAddList(ptSource, ptBehind), 0);
  EXPECT_EQ(keys(ptSource), (std::vector<std::string>{"a", "b", "c", "d"}));
  EXPECT_EQ(static_cast<StringList *>(ptSource->ptNext->ptNext), ptBehind);
}

TEST_F(StringListTest, ANullListIsNotAppended) {
  StringList *const pt = cvtStrAddStringList(nullptr, cs("a"), &f_n1);
  EXPECT_EQ(cvtStrListAddList(nullptr, pt), -1);
  EXPECT_EQ(cvtStrListAddList(pt, nullptr), -1);
  expectErrors({{"cvtStrListAddList", "[ptSrc] is NULL"}, {"cvtStrListAddList", "[ptDst] is NULL"}});
}

// --- Ordered lists -----------------------------------------------------------------------------------------

TEST_F(OrderedList, TheFirstElementIsReturnedForAnEmptyList) {
  StringList *const pt = cvtStrAddStringListOrder(nullptr, cs("z"), &f_n1);
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(pt->ptInfo, &f_n1);
  EXPECT_EQ(pt->ptNext, nullptr);
  freeKeys(pt);
}

TEST_F(OrderedList, NewElementsAreLastAndTheFirstStays) {
  StringList *const pt = cvtStrAddStringListOrder(nullptr, cs("z"), &f_n1);
  EXPECT_EQ(cvtStrAddStringListOrder(pt, cs("a"), &f_n2), pt);
  EXPECT_EQ(cvtStrAddStringListOrder(pt, cs("z"), &f_n3), pt);
  EXPECT_EQ(keys(pt), (std::vector<std::string>{"z", "a", "z"}));
  EXPECT_EQ(cvtStrFindStringList(pt, cs("z")), &f_n1) << "the oldest entry is first here";
  freeKeys(pt);
}

TEST_F(OrderedList, TheKeyIsACopyOfItsOwnAndTheNameIsInternedAsWell) {
  StringList *const pt = cvtStrAddStringListOrder(nullptr, cs("name"), &f_n1);
  EXPECT_STREQ(gptDict->psBuf[0], "name");
  EXPECT_NE(static_cast<char *>(pt->psString), static_cast<char *>(gptDict->psBuf[0]));
  freeKeys(pt);
}

TEST_F(OrderedList, ElementsMayComeFromAMessageNode) {
  MemNode *const ptNode = cvtMemNewNode();
  StringList *const pt = cvtStrAddStringListOrderMem(nullptr, cs("z"), &f_n1, ptNode);
  EXPECT_EQ(cvtStrAddStringListOrderMem(pt, cs("a"), &f_n2, ptNode), pt);
  EXPECT_EQ(keys(pt), (std::vector<std::string>{"z", "a"}));
  EXPECT_EQ(gptGlobalNode, nullptr);
  freeKeys(pt);
}

TEST_F(OrderedList, NullArgumentsAreLogged) {
  EXPECT_EQ(cvtStrAddStringListOrder(nullptr, nullptr, &f_n1), nullptr);
  EXPECT_EQ(cvtStrAddStringListOrder(nullptr, cs("a"), nullptr), nullptr);
  EXPECT_EQ(cvtStrAddStringListOrderMem(nullptr, cs("a"), &f_n1, nullptr), nullptr);
  expectErrors({{"cvtStrAddStringListOrder", "[psAddName] is NULL"},
                {"cvtStrAddStringListOrder", "[ptAddInfo] is NULL"},
                {"cvtStrAddStringListOrderMem", "[ptMemNode] is NULL"}});
}

TEST_F(OrderedList, AGivenElementIsCheckedUnderItsOwnName) {
  StringList element{};
  MemNode *const ptNode = cvtMemNewNode();
  EXPECT_EQ(locStrListAddOrder(nullptr, &element, nullptr, &f_n1), nullptr);
  EXPECT_EQ(locStrListAddOrder(nullptr, &element, cs("a"), nullptr), nullptr);
  EXPECT_EQ(locStrListAddOrder(nullptr, nullptr, cs("a"), &f_n1), nullptr);
  EXPECT_EQ(cvtStrAddStringListOrderMem(nullptr, cs("a"), nullptr, ptNode), nullptr);
  expectErrors({{"locStrListAddOrder", "[psAddName] is NULL"},
                {"locStrListAddOrder", "[ptAddInfo] is NULL"},
                {"locStrListAddOrder", "[ptAdd] is NULL"},
                {"locStrListAddOrder", "[ptAddInfo] is NULL"}});
}

TEST_F(OrderedList, ARefusedElementGivesNullAndLeavesTheListInFrontOfIt) {
  MemNode *const ptNode = cvtMemNewNode();
  StringList *const pt = cvtStrAddStringListOrder(nullptr, cs("a"), &f_n1);
  StringList element{};
  EXPECT_EQ(cvtStrAddStringListOrder(pt, nullptr, &f_n2), nullptr);
  EXPECT_EQ(cvtStrAddStringListOrderMem(pt, cs("b"), &f_n2, nullptr), nullptr);
  EXPECT_EQ(cvtStrAddStringListOrderMem(pt, cs("b"), nullptr, ptNode), nullptr);
  EXPECT_EQ(locStrListAddOrder(pt, &element, nullptr, &f_n2), nullptr);
  EXPECT_EQ(locStrListAddOrder(pt, &element, cs("b"), nullptr), nullptr);
  EXPECT_EQ(locStrListAddOrder(pt, nullptr, cs("b"), &f_n2), nullptr);
  EXPECT_EQ(keys(pt), std::vector<std::string>{"a"});
  freeKeys(pt);
}

// --- Copies in a message node ------------------------------------------------------------------------------

TEST_F(DupMem, EveryCopyIsItsOwn) {
  MemNode *const ptNode = cvtMemNewNode();
  char *const ps1 = cvtStrDupMem(cs("text"), ptNode);
  char *const ps2 = cvtStrDupMem(cs("text"), ptNode);
  EXPECT_STREQ(ps1, "text");
  EXPECT_STREQ(ps2, "text");
  EXPECT_NE(ps1, ps2);
}

TEST_F(DupMem, AnEmptyStringIsAFreshByte) {
  MemNode *const ptNode = cvtMemNewNode();
  char *const ps1 = cvtStrDupMem(cs(""), ptNode);
  char *const ps2 = cvtStrDupMem(cs(""), ptNode);
  EXPECT_STREQ(ps1, "");
  EXPECT_NE(ps1, ps2);
#ifndef CVT2_ALIGN_POOL
  EXPECT_EQ(ps2, ps1 + 1);
#endif
}

TEST_F(DupMem, TheCopyEndsOnAReusedNodeToo) {
  MemNode *const ptNode = cvtMemNewNode();
  std::memset(cvtMalloc(1000, ptNode), 'x', 1000);
  cvtMemDelNode(ptNode);
  EXPECT_STREQ(cvtStrDupMem(cs("ab"), cvtMemNewNode()), "ab");
}

TEST_F(DupMem, ANullNodeIsLoggedByThePool) {
  EXPECT_EQ(cvtStrDupMem(cs("a"), nullptr), nullptr);
  ASSERT_EQ(test::logLines().size(), 1U);
  EXPECT_EQ(test::logLines()[0].sFunction, "cvtMalloc");
  EXPECT_EQ(test::logLines()[0].sText, "[ptNode] is NULL");
}

TEST_F(DupMem, ANullStringIsAnErrorNotACrash) {
  EXPECT_EQ(cvtStrDupMem(nullptr, cvtMemNewNode()), nullptr);
  expectErrors({{"cvtStrDupMem", "[psStr] is NULL"}});
}

}  // namespace

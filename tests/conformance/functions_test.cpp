// The registry of conversion functions: whose names they are, and in which order they stand.
#include "convert_fixture.h"

namespace {

using test::cs;
using Texts = std::vector<std::string>;

int one(Value *, int, Value **, MemPort) {
  return 0;
}
int two(Value *, int, Value **, MemPort) {
  return 0;
}

class Functions : public test::ConvertTest {
 protected:
  void TearDown() override { cvtEnd(); }
};

TEST_F(Functions, NoneAreTheLibrarysOwn) {
  ASSERT_EQ(start(), 0);
  EXPECT_EQ(gptCvtGlobalInfo->ptFuncList, nullptr);
  EXPECT_EQ(gptCvtGlobalInfo->nMaxArgs, 0);
}

TEST_F(Functions, NameIsKeptApartFromTheCallersText) {
  std::string sName = "own";
  cvtConvertAddFunction(sName.data(), one);
  sName = "new";
  EXPECT_STREQ(gptCvtGlobalInfo->ptFuncList->psString, "own");
  EXPECT_EQ(sttNewFunction(cs("own"), nullptr)->fCvtFunc, &one);
  EXPECT_EQ(sttNewFunction(cs("new"), nullptr), nullptr);
}

TEST_F(Functions, StandNewestFirstAndShadowTheOlderOfTheirName) {
  cvtConvertAddFunction(cs("F"), one);
  cvtConvertAddFunction(cs("G"), one);
  ::Function *const ptOld = sttNewFunction(cs("F"), nullptr);
  cvtConvertAddFunction(cs("F"), two);
  Texts names;
  for (const StringList *pt = gptCvtGlobalInfo->ptFuncList; pt != nullptr; pt = pt->ptNext)
    names.emplace_back(pt->psString);
  EXPECT_EQ(names, (Texts{"F", "G", "F"}));
  EXPECT_EQ(ptOld->fCvtFunc, &one);
  EXPECT_EQ(sttNewFunction(cs("F"), nullptr)->fCvtFunc, &two);
}

TEST_F(Functions, AppendedToTheListByHandAreFoundBehindTheOthers) {
  cvtConvertAddFunction(cs("F"), one);
  EXPECT_EQ(sttNewFunction(cs("H"), nullptr), nullptr);
  StringList *const ptMine =
      cvtStrAddStringList(cvtStrAddStringList(nullptr, cs("H"), reinterpret_cast<void *>(two)), cs("F"),
                          reinterpret_cast<void *>(two));
  ASSERT_EQ(cvtStrListAddList(gptCvtGlobalInfo->ptFuncList, ptMine), 0);
  EXPECT_EQ(sttNewFunction(cs("H"), nullptr)->fCvtFunc, &two);
  EXPECT_EQ(sttNewFunction(cs("F"), nullptr)->fCvtFunc, &one);
  cvtConvertAddFunction(cs("H"), one);
  EXPECT_EQ(sttNewFunction(cs("H"), nullptr)->fCvtFunc, &one);
}

TEST_F(Functions, RecordIsEmptyWhenItIsMade) {
  ASSERT_EQ(gptCvtGlobalInfo, nullptr);
  EXPECT_EQ(cvtConvertAddFunction(cs("F"), one), 0);
  EXPECT_EQ(gptCvtGlobalInfo->pptSrcIdx, nullptr);
  EXPECT_EQ(gptCvtGlobalInfo->pptDstIdx, nullptr);
  EXPECT_EQ(gptCvtGlobalInfo->ptStack, nullptr);
  EXPECT_EQ(gptCvtGlobalInfo->ptCvtList, nullptr);
  EXPECT_EQ(gptCvtGlobalInfo->ptArgs, nullptr);
}

}  // namespace

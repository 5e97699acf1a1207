#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <string>

#include "cvt.h"
#include "log_capture.h"
#include "toy_config.h"

using test::cs;
using test::logged;
using test::logTexts;

namespace {

constexpr int kUntouched = 77;

class Fields : public testing::Test {
 protected:
  void TearDown() override { cvtEnd(); }

  InnerMessage *order() {
    EXPECT_EQ(config.start(), 0);
    InnerMessage *const pt =
        cvtInitMessasge(cs("Order"), cs("01"), sBuffer.data(), static_cast<int>(sBuffer.size()), &nError);
    EXPECT_NE(pt, nullptr);
    test::clearLog();
    nError = kUntouched;
    return pt;
  }

  std::string get(InnerMessage *ptMsg, const char *psName) {
    const Value *const pt = cvtGetNameValue(ptMsg, cs(psName), &nError);
    if (pt == nullptr) return "(null)";
    return pt->nLen == 0 ? "" : std::string(pt->psValue, static_cast<size_t>(pt->nLen));
  }

  test::ToyConfig config;
  std::string sBuffer = "7,Ann,Rome,[A,1,[];],hi";
  int nError = kUntouched;
};

using GetValue = Fields;
using SetValue = Fields;

// --- cvtGetNameValue
// ------------------------------------------------------------------------------------------

TEST_F(GetValue, ChecksItsArgumentsInOrder) {
  InnerMessage tMsg{};
  Msg tDefinition{};
  EXPECT_EQ(cvtGetNameValue(nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(cvtGetNameValue(&tMsg, nullptr, nullptr), nullptr);
  tMsg.ptMsgInfo = &tDefinition;
  EXPECT_EQ(cvtGetNameValue(&tMsg, nullptr, nullptr), nullptr);
  EXPECT_EQ(cvtGetNameValue(&tMsg, cs("Id"), nullptr), nullptr);
  EXPECT_EQ(logTexts(), (std::vector<std::string>{"[ptMsg] is NULL", "[ptMsg->ptMsgInfo] is NULL",
                                                  "[psValueName] is NULL", "[pnError] is NULL"}));
}

TEST_F(GetValue, LeavesTheErrorAloneOnNullArguments) {
  InnerMessage tMsg{};
  cvtGetNameValue(nullptr, cs("Id"), &nError);
  cvtGetNameValue(&tMsg, cs("Id"), &nError);
  EXPECT_EQ(nError, kUntouched);
}

TEST_F(GetValue, FindsAFieldOrGroupMemberByItsBareName) {
  InnerMessage *const pt = order();
  EXPECT_EQ(get(pt, "Id"), "7");
  EXPECT_EQ(nError, 0);
  EXPECT_EQ(get(pt, "name"), "Ann");  // whatever the letter case
  EXPECT_EQ(get(pt, "Note"), "hi");
  EXPECT_TRUE(logTexts().empty());
  cvtFreeMessage(pt);
}

TEST_F(GetValue, FailsForAnUnknownName) {
  InnerMessage *const pt = order();
  EXPECT_EQ(cvtGetNameValue(pt, cs("Nothing"), &nError), nullptr);
  EXPECT_EQ(nError, -11);
  EXPECT_EQ(logTexts(),
            (std::vector<std::string>{"Get Message[Nothing] Index err!!", "Node [] was not define!!",
                                      "GetValueInLoopNodeListByNodeName Err!!"}));
  cvtFreeMessage(pt);
}

TEST_F(GetValue, RefusesALoopNameOver1024Bytes) {
  InnerMessage *const pt = order();
  const std::string sName = std::string(1025, 'L') + ".Code";
  EXPECT_EQ(cvtGetNameValue(pt, cs(sName.c_str()), &nError), nullptr);
  EXPECT_EQ(nError, -14);
  EXPECT_EQ(logTexts(), std::vector<std::string>{"Loop Field Name[" + sName + "] is too long"});
  cvtFreeMessage(pt);
}

TEST_F(GetValue, FailsWhenTheValueListIsShorterThanTheDefinition) {
  InnerMessage *const pt = order();
  pt->tValueListInfo.ptValueList->nNow = 3;
  EXPECT_EQ(cvtGetNameValue(pt, cs("City"), &nError), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(logTexts(), (std::vector<std::string>{"Value Index[3] < 0 or >= max [3] err!!",
                                                  "Child Node[City] Get value Err!!",
                                                  "GetValueInLoopNodeListByNodeName Err!!"}));
  cvtFreeMessage(pt);
}

// What the format's own functions were given, and what they answer.
struct Asked {
  Msg *ptMsg;
  ValueListInfo *ptInfo;
  std::string sName;
  std::string sValue;
} g_asked;
Value g_answer{cs("own"), 3, {}};

Value *ownGet(Msg *ptMsg, ValueListInfo *ptInfo, char *psName, int *pnError) {
  g_asked = {ptMsg, ptInfo, psName, ""};
  *pnError = 5;
  return &g_answer;
}
int ownSet(Msg *ptMsg, ValueListInfo *ptInfo, char *psName, char *psValue, int nLen) {
  g_asked = {ptMsg, ptInfo, psName, std::string(psValue, static_cast<size_t>(nLen))};
  return 6;
}
Value *throwingGet(Msg *, ValueListInfo *, char *, int *) {
  throw std::runtime_error("no such name");
}
int throwingSet(Msg *, ValueListInfo *, char *, char *, int) {
  throw std::runtime_error("read only");
}

TEST_F(GetValue, AsksTheFormatFirst) {
  InnerMessage *const pt = order();
  pt->ptMsgInfo->fGetValue = ownGet;
  EXPECT_EQ(cvtGetNameValue(pt, cs("Any.Name"), &nError), &g_answer);
  EXPECT_EQ(nError, 5);
  EXPECT_EQ(g_asked.ptMsg, pt->ptMsgInfo);
  EXPECT_EQ(g_asked.ptInfo, &pt->tValueListInfo);
  EXPECT_EQ(g_asked.sName, "Any.Name");
  cvtFreeMessage(pt);
}

TEST_F(GetValue, TakesTheFormatsNullForAnAnswer) {
  InnerMessage *const pt = order();
  pt->ptMsgInfo->fGetValue = [](Msg *, ValueListInfo *, char *, int *) -> Value * { return nullptr; };
  EXPECT_EQ(cvtGetNameValue(pt, cs("Id"), &nError), nullptr);  // a name that the definition has
  EXPECT_EQ(nError, kUntouched);                               // the format's to write
  EXPECT_TRUE(logTexts(0).empty());
  cvtFreeMessage(pt);
}

TEST_F(GetValue, LeavesTheLengthOfNamesToTheFormat) {
  InnerMessage *const pt = order();
  pt->ptMsgInfo->fGetValue = ownGet;
  const std::string sName = std::string(1025, 'L') + ".Code";
  EXPECT_EQ(cvtGetNameValue(pt, cs(sName.c_str()), &nError), &g_answer);
  EXPECT_EQ(g_asked.sName, sName);
  cvtFreeMessage(pt);
}

TEST_F(GetValue, DoesNotAskTheFormatWithoutANameOrAnError) {
  InnerMessage *const pt = order();
  pt->ptMsgInfo->fGetValue = throwingGet;
  EXPECT_EQ(cvtGetNameValue(pt, nullptr, &nError), nullptr);
  EXPECT_EQ(cvtGetNameValue(pt, cs("Id"), nullptr), nullptr);
  EXPECT_EQ(nError, kUntouched);
  EXPECT_EQ(logTexts(), (std::vector<std::string>{"[psValueName] is NULL", "[pnError] is NULL"}));
  cvtFreeMessage(pt);
}

TEST_F(GetValue, IsTheLibrarysOwnWhereTheFormatOnlySets) {
  InnerMessage *const pt = order();
  pt->ptMsgInfo->fSetValue = throwingSet;
  EXPECT_EQ(get(pt, "City"), "Rome");
  EXPECT_EQ(nError, 0);
  EXPECT_TRUE(logTexts(0).empty());
  cvtFreeMessage(pt);
}

TEST_F(GetValue, StopsAnExceptionOfTheFormat) {
  InnerMessage *const pt = order();
  pt->ptMsgInfo->fGetValue = throwingGet;
  EXPECT_EQ(cvtGetNameValue(pt, cs("Id"), &nError), nullptr);
  EXPECT_EQ(nError, -1);
  EXPECT_EQ(logTexts(), std::vector<std::string>{"Msg[Order] let an exception out: no such name"});
  cvtFreeMessage(pt);
}

// --- cvtSetNameValue
// ------------------------------------------------------------------------------------------

TEST_F(SetValue, ChecksItsArgumentsInOrder) {
  InnerMessage tMsg{};
  EXPECT_EQ(cvtSetNameValue(nullptr, nullptr, nullptr, 0), -1);
  EXPECT_EQ(cvtSetNameValue(&tMsg, nullptr, nullptr, 0), -1);
  EXPECT_EQ(cvtSetNameValue(&tMsg, cs("Id"), nullptr, 0), -1);
  EXPECT_EQ(cvtSetNameValue(&tMsg, cs("Id"), cs("7"), 1), -1);
  EXPECT_EQ(logTexts(), (std::vector<std::string>{"[ptMessage] is NULL", "[psValueName] is NULL",
                                                  "[psValue] is NULL", "[ptMessage->ptMsgInfo] is NULL"}));
}

TEST_F(SetValue, CopiesTheBytesIntoTheHandlesOwnMemory) {
  InnerMessage *const pt = order();
  char sValue[] = "Paris and more";
  EXPECT_EQ(cvtSetNameValue(pt, cs("City"), sValue, 5), 0);
  std::memset(sValue, '#', sizeof sValue);
  EXPECT_EQ(get(pt, "City"), "Paris");
  EXPECT_TRUE(logTexts().empty());
  cvtFreeMessage(pt);
}

TEST_F(SetValue, TakesJustTheBytesOfTheValue) {
  InnerMessage *const pt = order();
  const MemNode *const ptNode = pt->tValueListInfo.ptMemNode;
  const int nBefore = ptNode->ptNowBlock->nLeft;
  EXPECT_EQ(cvtSetNameValue(pt, cs("City"), cs("sixteen bytes ##"), 16), 0);
  EXPECT_EQ(nBefore - ptNode->ptNowBlock->nLeft, 16);  // no terminator
  cvtFreeMessage(pt);
}

TEST_F(SetValue, KeepsZeroBytes) {
  InnerMessage *const pt = order();
  EXPECT_EQ(cvtSetNameValue(pt, cs("City"), cs("a\0b"), 3), 0);
  EXPECT_EQ(get(pt, "City"), std::string("a\0b", 3));
  cvtFreeMessage(pt);
}

TEST_F(SetValue, MakesAnEmptyValueOfLength0) {
  InnerMessage *const pt = order();
  EXPECT_EQ(cvtSetNameValue(pt, cs("City"), cs(""), 0), 0);
  EXPECT_EQ(get(pt, "City"), "");
  EXPECT_EQ(cvtGetNameValue(pt, cs("City"), &nError)->nLen, 0);
  cvtFreeMessage(pt);
}

TEST_F(SetValue, RefusesANegativeLengthAndKeepsTheOldValue) {
  InnerMessage *const pt = order();
  EXPECT_EQ(cvtSetNameValue(pt, cs("City"), cs("x"), -1), -1);
  EXPECT_EQ(logTexts(), std::vector<std::string>{"Field[City] value length [-1] < 0"});
  EXPECT_EQ(get(pt, "City"), "Rome");
  cvtFreeMessage(pt);
}

TEST_F(SetValue, GivesTheCodeOfTheLookUp) {
  InnerMessage *const pt = order();
  EXPECT_EQ(cvtSetNameValue(pt, cs("Nothing"), cs("x"), 1), -11);
  EXPECT_EQ(logTexts(),
            (std::vector<std::string>{"Get Message[Nothing] Index err!!", "Node [] was not define!!",
                                      "Field[Nothing] get value err!!"}));
  cvtFreeMessage(pt);
}

TEST_F(SetValue, GivesMinus14ForALoopNameOver1024Bytes) {
  InnerMessage *const pt = order();
  const std::string sName = std::string(1025, 'L') + ".Code";
  EXPECT_EQ(cvtSetNameValue(pt, cs(sName.c_str()), cs("x"), 1), -14);
  EXPECT_EQ(logTexts(), (std::vector<std::string>{"Loop Field Name[" + sName + "] is too long",
                                                  "Field[" + sName + "] get value err!!"}));
  cvtFreeMessage(pt);
}

TEST_F(SetValue, FailsWithoutAPoolNode) {
  InnerMessage *const pt = order();
  MemNode *const ptNode = pt->tValueListInfo.ptMemNode;
  pt->tValueListInfo.ptMemNode = nullptr;
  EXPECT_EQ(cvtSetNameValue(pt, cs("City"), cs("x"), 1), -1);
  EXPECT_TRUE(logged(1, "[ptNode] is NULL"));
  EXPECT_EQ(get(pt, "City"), "Rome");
  pt->tValueListInfo.ptMemNode = ptNode;
  cvtFreeMessage(pt);
}

TEST_F(SetValue, AsksTheFormatFirst) {
  InnerMessage *const pt = order();
  pt->ptMsgInfo->fSetValue = ownSet;
  EXPECT_EQ(cvtSetNameValue(pt, cs("Any.Name"), cs("bytes"), 4), 6);
  EXPECT_EQ(g_asked.ptMsg, pt->ptMsgInfo);
  EXPECT_EQ(g_asked.ptInfo, &pt->tValueListInfo);
  EXPECT_EQ(g_asked.sName, "Any.Name");
  EXPECT_EQ(g_asked.sValue, "byte");
  cvtFreeMessage(pt);
}

TEST_F(SetValue, LeavesNamesAndLengthsToTheFormat) {
  InnerMessage *const pt = order();
  static int nLength;
  pt->ptMsgInfo->fSetValue = [](Msg *, ValueListInfo *, char *, char *, int nLen) {
    nLength = nLen;
    return 8;
  };
  EXPECT_EQ(cvtSetNameValue(pt, cs("Nothing"), cs("x"), -1), 8);
  EXPECT_EQ(nLength, -1);
  EXPECT_EQ(cvtSetNameValue(pt, cs((std::string(1025, 'L') + ".Code").c_str()), cs("x"), 1), 8);
  EXPECT_TRUE(logTexts(0).empty());
  cvtFreeMessage(pt);
}

TEST_F(SetValue, DoesNotAskTheFormatWithoutANameOrAValue) {
  InnerMessage *const pt = order();
  pt->ptMsgInfo->fSetValue = throwingSet;
  EXPECT_EQ(cvtSetNameValue(pt, nullptr, cs("8"), 1), -1);
  EXPECT_EQ(cvtSetNameValue(pt, cs("Id"), nullptr, 1), -1);
  EXPECT_EQ(logTexts(), (std::vector<std::string>{"[psValueName] is NULL", "[psValue] is NULL"}));
  cvtFreeMessage(pt);
}

TEST_F(SetValue, IsTheLibrarysOwnWhereTheFormatOnlyGets) {
  InnerMessage *const pt = order();
  pt->ptMsgInfo->fGetValue = throwingGet;
  EXPECT_EQ(cvtSetNameValue(pt, cs("City"), cs("Bonn"), 4), 0);
  pt->ptMsgInfo->fGetValue = ownGet;
  EXPECT_EQ(cvtSetNameValue(pt, cs("Note"), cs("yes"), 3), 0);
  EXPECT_STREQ(g_answer.psValue, "own");
  EXPECT_TRUE(logTexts(0).empty());
  pt->ptMsgInfo->fGetValue = nullptr;
  EXPECT_EQ(get(pt, "City"), "Bonn");
  EXPECT_EQ(get(pt, "Note"), "yes");
  cvtFreeMessage(pt);
}

TEST_F(SetValue, StopsAnExceptionOfTheFormat) {
  InnerMessage *const pt = order();
  pt->ptMsgInfo->fSetValue = throwingSet;
  EXPECT_EQ(cvtSetNameValue(pt, cs("Id"), cs("8"), 1), -1);
  EXPECT_EQ(logTexts(), std::vector<std::string>{"Msg[Order] let an exception out: read only"});
  cvtFreeMessage(pt);
}

}  // namespace

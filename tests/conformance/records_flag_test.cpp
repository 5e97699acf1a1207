// Bound records and the error flag: cleared before each field, a failure at -1 only; and the order in which the
// records of a list are read and made.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../unit/bound_records_config.h"
#include "log_capture.h"
#include "xml_text.h"

namespace {

using test::cs;
using test::logTexts;
using test::Xml;
using Texts = std::vector<std::string>;

// Probe: a record type that keeps the flag it finds and leaves another one.
std::vector<int> f_flags;
char f_record;

bool isProbe(const char *psType) {
  return std::string(psType) == "Probe";
}
void *readProbe(void *, char *psType) {
  if (!isProbe(psType)) return nullptr;
  f_flags.push_back(nGRet);
  nGRet = 1;
  return &f_record;
}
void *writeProbe(void *, void *ptNode, char *, char *psType) {
  if (!isProbe(psType)) return nullptr;
  f_flags.push_back(nGRet);
  nGRet = 1;
  return ptNode;
}

class BoundRecord : public test::BoundRecords {
 protected:
  void SetUp() override {
    test::BoundRecords::SetUp();
    f_flags.clear();
    sttAddFuncVoid(readProbe, writeProbe);
    sttSetVoidType(&f_record, cs("Probe"));
    nGRet = -1;
  }
};

using Flag = BoundRecord;
using List = BoundRecord;

const char kMsg[] = "<Msg><Probe __ID=\"pInfo\"/><Probe __ID=\"pIdInfo\"/></Msg>";

// --- The flag -----------------------------------------------------------------------------------------------

TEST_F(Flag, IsClearedBeforeEachFieldThatIsReadAndFailsItAtMinusOneOnly) {
  const Msg *const pt = sttParseXmlMsg(Xml(kMsg).root(), cs("Msg"));
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(pt->pInfo, &f_record);
  EXPECT_EQ(pt->pIdInfo, &f_record);
  EXPECT_EQ(f_flags, (std::vector<int>{0, 0}));
}

TEST_F(Flag, IsClearedBeforeEachFieldThatIsWrittenAndFailsItAtMinusOneOnly) {
  Msg msg{};
  msg.pInfo = &f_record;
  msg.pIdInfo = &f_record;
  const Xml xml("<Msg/>");
  EXPECT_EQ(sttGenXmlMsg(&msg, xml.root(), cs("Msg")), xml.root());
  EXPECT_EQ(xml.text(), kMsg);
  EXPECT_EQ(f_flags, (std::vector<int>{0, 0}));
  EXPECT_EQ(logTexts(0), Texts{});
}

TEST_F(Flag, OfAMissingElementOrRecordIsLeftAlone) {
  const Xml xml("<Msg/>");
  Msg msg{};
  EXPECT_EQ(sttParseXmlMsg(nullptr, cs("Msg")), nullptr);
  EXPECT_EQ(sttMakeMsg(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), nullptr);
  EXPECT_EQ(sttGenXmlMsg(nullptr, xml.root(), cs("Msg")), nullptr);
  EXPECT_EQ(sttGenXmlMsg(&msg, nullptr, cs("Msg")), nullptr);
  EXPECT_EQ(nGRet, -1);
  EXPECT_EQ(logTexts(0), Texts{});
}

// --- Lists --------------------------------------------------------------------------------------------------

const char kLinkFails[] =
    "struct IdFunc * ptNext = sttParseXmlNext(ptXmlNode, \"IdFunc\", \"ptNext\", sttParseXmlIdFunc) is Err!!";

TEST_F(List, IsMadeFromItsLastRecordToItsFirst) {
  const Xml xml(
      "<r><IdFunc psFunctName='first'/><IdFunc __ID='ptNext' psFunctName='pubNew'/>"
      "<IdFunc __ID='ptNext' psFunctName='last'/></r>");
  EXPECT_EQ(sttParseXmlIdFunc(xml.child(), cs("IdFunc")), nullptr);
  EXPECT_EQ(logTexts(), (Texts{"IdFunc[last] Not Find!!", "p->fIdFunction = GetIdFunc(psFunctName) is Err!!",
                               kLinkFails, kLinkFails}));
}

TEST_F(List, HasAllItsFieldsReadBeforeARecordIsMade) {
  const Xml xml(
      "<r><IdFunc psFunctName='first'><A __ID='ptArg'/></IdFunc>"
      "<IdFunc __ID='ptNext' psFunctName='last'><B __ID='ptArg'/></IdFunc></r>");
  EXPECT_EQ(sttParseXmlIdFunc(xml.child(), cs("IdFunc")), nullptr);
  EXPECT_EQ(logTexts(), (Texts{"Type[A] Not Define", "Type[B] Not Define", "IdFunc[last] Not Find!!",
                               "p->fIdFunction = GetIdFunc(psFunctName) is Err!!", kLinkFails}));
}

// A list is written from its first record on: each stands in the document before the next is begun.
TEST_F(List, IsWrittenUpToTheRecordThatFails) {
  static char nobody;
  Arg *const ptList = sttNewArg(1, nullptr, sttNewArg(2, &nobody, sttNewArg(3, nullptr, nullptr)));
  const Xml xml("<r><Arg/></r>");
  EXPECT_EQ(sttGenXmlArg(ptList, xml.child(), cs("Arg")), nullptr);
  EXPECT_EQ(xml.text(), "<r><Arg nType=\"1\"/><Arg __ID=\"ptNext\" nType=\"2\"/></r>");
  EXPECT_EQ(logTexts(),
            (Texts{"Struct Type Not Define!!", "sttGenerateXmlVoid(ptXmlNode, p->pInfo, \"pInfo\") is Err!!",
                   "sttGenerateXmlNext(ptXmlNode, p->ptNext, \"ptNext\", \"Arg\", sttGenXmlArg) is Err!!"}));
}

}  // namespace

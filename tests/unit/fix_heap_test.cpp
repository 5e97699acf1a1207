// Messages of the format `fix` take nothing from the heap once the first ones have been read and written.
#include <gtest/gtest.h>

#include "fix_config.h"
#include "heap_count.h"

using namespace test::fix;

namespace {

const std::string kSamples = CVT2_SOURCE_DIR "/src/cvt/plug/fix/samples/";

// Reads and writes the bytes as a message of that type, without the lines that the test's log would keep.
int goAround(const char *psName, std::string &sBytes, std::vector<char> &room) {
  int nError = 0;
  InnerMessage *ptMsg = cvtNewMessage(test::cs(psName), test::cs("fix"), &nError);
  int nUsed = 0;
  int nWritten = 0;
  Msg *ptDefinition = ptMsg->ptMsgInfo;
  const int nParsed = ptDefinition->fParse(nullptr, &ptMsg->tValueListInfo, ptDefinition, sBytes.data(),
                                           &nUsed, static_cast<int>(sBytes.size()));
  const int nMade = ptDefinition->fGen(nullptr, &ptMsg->tValueListInfo, ptDefinition, room.data(), &nWritten,
                                       static_cast<int>(room.size()));
  cvtFreeMessage(ptMsg);
  return nParsed | nMade | (nUsed == nWritten ? 0 : 1);
}

long allocationsOf(const char *psName, std::string sBytes) {
  std::vector<char> room(sBytes.size() + 1000);
  int nResult = goAround(psName, sBytes, room) | goAround(psName, sBytes, room);
  const long nAllocations = test::allocations([&] {
    for (int i = 0; i < 200; ++i) nResult |= goAround(psName, sBytes, room);
  });
  EXPECT_EQ(nResult, 0) << psName << told();
  return nAllocations;
}

}  // namespace

TEST(FixHeap, IsSilentOnceWarm) {
  REQUIRE_HEAP_COUNT();
  FixConfig config;
  for (const char *psName : {"Order", "Accounts", "Groups"}) {
    config.file(std::string("msg/") + psName + ".xml", contentOf(kSamples + "Message/" + psName + ".xml"));
  }
  config.file("msg/NachaFile.xml", contentOf(CVT2_SOURCE_DIR "/examples/nacha/Message/NachaFile.xml"));
  config.message("Chinese", "psCharset=\"GB18030\" psUnit=\"chars\"",
                 {field("A", "nLen=\"10\""), field("B", "nLen=\"4\" psUnit=\"bytes\"")});
  config.file("msg/ChequeFile.xml", contentOf(CVT2_SOURCE_DIR "/examples/x937/Message/ChequeFile.xml"));
  config.message("Lengths", "psCharset=\"IBM037\"",
                 {field("CountOfTheManyParts", "nLen=\"2\" psType=\"number\""),
                  loop("Parts", "",
                       {field("Kind", "nLen=\"1\""), field("Len", "nLen=\"3\" psType=\"number\""),
                        field("Text", "psLenField=\"Len\""), field("Marked", "psEnd=\"*\""),
                        group("By", "FixGroup psKind=\"choice\" psBy=\"Kind\"",
                              {group("A", "FixGroup psWhen=\"A\"", {field("X", "nLen=\"1\"")}),
                               group("B", "FixGroup", {field("Y", "nLen=\"2\"")})})},
                       "CountOfTheManyParts"),
                  field("Rest", "nRest=\"1\" psType=\"raw\"")});
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_EQ(allocationsOf("Order", contentOf(kSamples + "data/order.dat")), 0);
  EXPECT_EQ(allocationsOf("Accounts", contentOf(kSamples + "data/accounts.bin").substr(0, 2202)), 0);
  EXPECT_EQ(allocationsOf("Groups", "21A2BC"), 0);
  EXPECT_EQ(allocationsOf("NachaFile", contentOf(CVT2_SOURCE_DIR "/examples/nacha/data/iat-debit.ach")), 0);
  EXPECT_EQ(allocationsOf("Chinese", "\xD6\xD0\xB9\xFA       a\xD6\xD0\xB9\xFA"), 0);
  EXPECT_EQ(allocationsOf("ChequeFile", contentOf(CVT2_SOURCE_DIR "/examples/x937/data/valid-ebcdic.x937")),
            0);
  EXPECT_EQ(
      allocationsOf("Lengths", "\xF0\xF2\xC1\xF0\xF0\xF2\xC1\xC2\xC3\x5C\xC1\xC2\xF0\xF0\xF0\x5C\xC1\xC2xyz"),
      0);
}

// Messages of the format `iso8583` take nothing from the heap once the first ones have been read and written.
#include <gtest/gtest.h>

#include "heap_count.h"
#include "iso_config.h"

using namespace test::iso;

namespace {

const std::string kSamples = CVT2_SOURCE_DIR "/src/cvt/plug/iso8583/samples/";

// Reads and writes the bytes as a message of that type, without the lines that the test's log would keep.
int goAround(const char *psName, std::string &sBytes, std::vector<char> &room) {
  int nError = 0;
  InnerMessage *ptMsg = cvtNewMessage(test::cs(psName), test::cs("iso8583"), &nError);
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

long allocationsOf(const char *psName, const char *psFile) {
  std::string sBytes = contentOf(kSamples + "data/" + psFile);
  std::vector<char> room(sBytes.size() + 1000);
  int nResult = goAround(psName, sBytes, room) | goAround(psName, sBytes, room);
  const long nAllocations = test::allocations([&] {
    for (int i = 0; i < 200; ++i) nResult |= goAround(psName, sBytes, room);
  });
  EXPECT_EQ(nResult, 0) << psName << told();
  return nAllocations;
}

TEST(IsoHeap, IsSilentOnceWarm) {
  REQUIRE_HEAP_COUNT();
  IsoConfig config;
  for (const char *psName : {"Host", "Card", "CardTags", "Terminal", "Iso1987", "NetworkBcd"}) {
    config.file(std::string("msg/") + psName + ".xml",
                contentOf(kSamples + "Message/" + std::string(psName) + ".xml"));
  }
  ASSERT_EQ(config.start(), 0) << told();
  EXPECT_EQ(allocationsOf("Host", "host/request.bin"), 0);
  EXPECT_EQ(allocationsOf("Card", "card/0100-auth-request.bin"), 0);
  EXPECT_EQ(allocationsOf("CardTags", "card/0100-auth-request.bin"), 0);
  EXPECT_EQ(allocationsOf("Terminal", "terminal/response-2.bin"), 0);
  EXPECT_EQ(allocationsOf("Iso1987", "ascii-1987/iso_reversal_message.dat"), 0);
  EXPECT_EQ(allocationsOf("NetworkBcd", "ascii-1987/message_with_number_bcd_encoding.dat"), 0);
}

}  // namespace

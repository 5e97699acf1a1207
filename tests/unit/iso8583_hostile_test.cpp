// The format `iso8583` against input made to break it: cut, flipped and random bytes, impossible lengths, small
// buffers. What is accepted must come back byte for byte; what is not must be told in one line. Sanitizers
// watch the rest.
#include <gtest/gtest.h>

#include <random>

#include "iso_config.h"

using namespace test::iso;

namespace {

const std::string kSamples = CVT2_SOURCE_DIR "/src/cvt/plug/iso8583/samples/";

struct Sample {
  const char *psName;
  const char *psFile;
};
const Sample kSamplesToBreak[] = {{"Host", "host/request.bin"},
                                  {"Card", "card/0100-auth-request.bin"},
                                  {"CardTags", "card/0110-auth-response.bin"},
                                  {"Terminal", "terminal/request-1.bin"},
                                  {"Iso1987", "ascii-1987/iso_reversal_message.dat"}};

class IsoHostile : public testing::Test {
 protected:
  void SetUp() override {
    for (const Sample &one : kSamplesToBreak) {
      const std::string sFile = std::string(one.psName) + ".xml";
      m_config.file("msg/" + sFile, contentOf(kSamples + "Message/" + sFile));
    }
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  static std::string good(const Sample &sample) { return contentOf(kSamples + "data/" + sample.psFile); }

  // Whether the bytes are accepted; checks what must hold either way.
  static bool accepts(const std::string &sName, const std::string &sBytes) {
    test::clearLog();
    const Wire wire = parse(sName, sBytes);
    const std::string sBegin = "Msg[" + sName + "] Field[";
    if (wire == nullptr) {
      int nFaults = 0;
      for (const std::string &sLine : test::logTexts()) nFaults += sLine.rfind(sBegin, 0) == 0 ? 1 : 0;
      EXPECT_EQ(nFaults, 1) << told();
      EXPECT_TRUE(told("] Offset[") && told("]: expected ")) << told();
      return false;
    }
    const auto nUsed = static_cast<size_t>(wire->nNowLen);
    EXPECT_LE(nUsed, sBytes.size());
    EXPECT_EQ(generate(wire, nUsed), sBytes.substr(0, nUsed)) << told();
    return true;
  }

  IsoConfig m_config;
};

TEST_F(IsoHostile, GoodMessagesAreGood) {
  for (const Sample &one : kSamplesToBreak) EXPECT_TRUE(accepts(one.psName, good(one))) << told();
}

TEST_F(IsoHostile, AMessageCutAtAnyByteIsRefused) {
  for (const Sample &one : kSamplesToBreak) {
    const std::string s = good(one);
    for (size_t n = 0; n < s.size(); ++n)
      EXPECT_FALSE(accepts(one.psName, s.substr(0, n))) << one.psName << n;
  }
}

TEST_F(IsoHostile, EveryBitMayBeFlipped) {
  int nAccepted = 0;
  for (const Sample &one : kSamplesToBreak) {
    const std::string s = good(one);
    for (size_t i = 0; i < 8 * s.size(); ++i) {
      std::string sBytes = s;
      sBytes[i / 8] = static_cast<char>(sBytes[i / 8] ^ 1 << i % 8);
      nAccepted += accepts(one.psName, sBytes) ? 1 : 0;
    }
  }
  EXPECT_GT(nAccepted, 1000);
}

TEST_F(IsoHostile, EveryByteMayBeAnything) {
  for (const Sample &one : kSamplesToBreak) {
    const std::string s = good(one);
    for (size_t i = 0; i < s.size(); ++i) {
      for (const int nByte : {0x00, 0x0F, 0x30, 0x39, 0x7F, 0x80, 0x81, 0x84, 0xF0, 0xFF}) {
        std::string sBytes = s;
        sBytes[i] = static_cast<char>(nByte);
        accepts(one.psName, sBytes);
        if (testing::Test::HasFailure()) FAIL() << one.psName << i << " " << nByte;
      }
    }
  }
}

TEST_F(IsoHostile, BytesMayBePutInAndTakenOut) {
  std::mt19937 random(11);
  for (int i = 0; i < 3000; ++i) {
    const Sample &one = kSamplesToBreak[random() % std::size(kSamplesToBreak)];
    const std::string s = good(one);
    std::string sBytes = s;
    for (unsigned long n = 1 + random() % 3; n > 0; --n) {
      const size_t nAt = random() % sBytes.size();
      if (random() % 2 == 0) {
        sBytes.insert(nAt, 1, s[random() % s.size()]);
      } else {
        sBytes.erase(nAt, 1 + random() % 3);
      }
    }
    accepts(one.psName, sBytes);
    if (testing::Test::HasFailure()) FAIL() << i;
  }
}

TEST_F(IsoHostile, BytesMayBeRandomBehindAnyBitmap) {
  std::mt19937 random(13);
  for (int i = 0; i < 3000; ++i) {
    std::string sBytes = bytes("6000030000 0200");
    for (size_t n = 8 + random() % 60; n > 0; --n) sBytes += static_cast<char>(random());
    accepts("Host", sBytes);
    accepts("Iso1987", "0200" + bitmap({2, 48}) + sBytes);
    if (testing::Test::HasFailure()) FAIL() << i;
  }
}

TEST_F(IsoHostile, EverySmallerOutputBufferIsRefused) {
  for (const Sample &one : kSamplesToBreak) {
    const std::string s = good(one);
    const Wire wire = parse(one.psName, s);
    ASSERT_NE(wire, nullptr) << told();
    EXPECT_EQ(generate(wire, s.size()), s);
    for (size_t n = 0; n < s.size(); ++n) {
      test::clearLog();
      EXPECT_EQ(generate(wire, n), "failed") << n;
      EXPECT_TRUE(told("expected room for ")) << n << told();
    }
  }
}

TEST_F(IsoHostile, TheLengthProducedIsUntouchedOnFailure) {
  const Wire wire = parse("Iso1987", good(kSamplesToBreak[4]));
  ASSERT_NE(wire, nullptr);
  char sRoom[8];
  int nLen = sizeof sRoom;
  EXPECT_NE(cvtGenMessage(wire.get(), sRoom, &nLen), 0);
  EXPECT_EQ(nLen, static_cast<int>(sizeof sRoom));
}

TEST_F(IsoHostile, AFailedMessageLeavesNothingBehindForTheNext) {
  for (const Sample &one : kSamplesToBreak) {
    const std::string s = good(one);
    for (size_t n = 0; n < s.size(); n += 7) {
      accepts(one.psName, s.substr(0, n));
      EXPECT_TRUE(accepts(one.psName, s)) << told();
    }
  }
}

TEST_F(IsoHostile, AMessageMayStandAnywhereInItsBuffer) {
  const std::string s = good(kSamplesToBreak[1]);
  const Msg *ptMsg = cvtGetMsg(test::cs("Card"));
  std::string sBytes = "#####" + s;
  const Wire wire = create("Card");
  int nPosition = 5;
  EXPECT_EQ(ptMsg->fParse(nullptr, &wire->tValueListInfo, const_cast<Msg *>(ptMsg), sBytes.data(), &nPosition,
                          static_cast<int>(sBytes.size())),
            0)
      << told();
  EXPECT_EQ(nPosition, static_cast<int>(sBytes.size()));
  EXPECT_EQ(generate(wire), s);
}

}  // namespace

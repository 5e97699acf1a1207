// The format `fix` against input made to break it: cut, flipped and random bytes, impossible counts, small
// buffers. What is accepted must come back byte for byte; what is not must be told in one line. Sanitizers
// watch the rest.
#include <gtest/gtest.h>

#include <random>

#include "fix_config.h"

using namespace test::fix;

namespace {

// A message with something of everything.
std::vector<FormatNode> everything() {
  const FormatNode head =
      record("Head", "",
             {field("HeadTag", "psConst=\"H\" nTag=\"1\""), field("Name", "nLen=\"6\" psCharset=\"GB18030\""),
              field("Wide", "nLen=\"3\" psUnit=\"chars\""), field("Date", "nLen=\"4\" psType=\"bcd\""),
              field("Rate",
                    "nLen=\"7\" psType=\"number\" psPad=\" \" nDecimals=\"2\" nPoint=\"1\" "
                    "psSign=\"leading\" psPlus=\"blank\""),
              field("Blank", "nLen=\"3\" psType=\"number\" psBlank=\"allowed\""),
              field("Code", "nLen=\"2\" psValues=\"AA|B|\"")});
  const FormatNode inner = loop("Inner", "",
                                {field("X", "nLen=\"1\" psCharset=\"IBM037\" psControl=\"kept\""),
                                 field("Y", "nLen=\"1\" psType=\"raw\"")},
                                "InnerCount");
  const FormatNode items = loop(
      "Items", "", {field("Sku", "nLen=\"2\""), field("InnerCount", "nLen=\"1\" psType=\"packed\""), inner},
      "ItemCount");
  const FormatNode room =
      loop("Room", "nRoom=\"2\" psPad=\"0x00\"",
           {field("Z", "nLen=\"2\" psType=\"zoned-overpunch\" psSign=\"trailing\"")}, "RoomCount");
  const FormatNode body = record("Body", "psSeparator=\"none\"",
                                 {field("BodyTag", "psConst=\"B\" nTag=\"1\""),
                                  field("ItemCount", "nLen=\"2\" psType=\"binary\" psSign=\"trailing\""),
                                  items, field("RoomCount", "nLen=\"1\" psType=\"number\""), room});
  const FormatNode note =
      record("Note", "", {field("NoteTag", "psConst=\"N\" nTag=\"1\""), field("Text", "nLen=\"4\"")});
  const FormatNode flag = record("Flag", "", {field("FlagTag", "nLen=\"1\" psValues=\"F|G\" nTag=\"1\"")});
  return {head, loop("Bodies", "psUntil=\"tag\" nMax=\"3\"", {body}),
          loop("Notes", "psUntil=\"end\"", {group("Any", "FixGroup psKind=\"choice\"", {note, flag})}),
          field("End", "psType=\"end\"")};
}

const std::string kGood = std::string("H\xD6\xD0 \x39   ", 8).substr(0, 7) + "a中b" +
                          std::string("\x20\x24\x01\x31", 4) + "  -1.25" + "   " + "B " + "\n" + "B" +
                          std::string("\0\x02", 2) + "s1" + "\x1F" + "\xC1" + std::string("\0", 1) + "s2" +
                          "\x0F" + "1" + "1J" + std::string("\0\0", 2) + "B" + std::string("\0\0", 2) + "0" +
                          std::string(4, '\0') + "Nhi  \nG\n";

class Hostile : public testing::Test {
 protected:
  void SetUp() override {
    m_config.message("M", "psSeparator=\"lf\" psLastSeparator=\"optional\" nWhole=\"1\"", everything());
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  // Whether the bytes are accepted; checks what must hold either way.
  static bool accepts(const std::string &sBytes) {
    test::clearLog();
    const Record message = parse("M", sBytes);
    if (message == nullptr) {
      EXPECT_EQ(fault().rfind("Msg[M] Field[", 0), 0U) << told();
      int nFaults = 0;
      for (const std::string &sLine : test::logTexts())
        nFaults += sLine.rfind("Msg[M] Field[", 0) == 0 ? 1 : 0;
      EXPECT_EQ(nFaults, 1) << told();
      return false;
    }
    EXPECT_EQ(message->nNowLen, static_cast<int>(sBytes.size()));
    EXPECT_EQ(generate(message, sBytes.size()), sBytes) << told();
    return true;
  }

  FixConfig m_config;
};

}  // namespace

TEST_F(Hostile, GoodMessageIsGood) {
  EXPECT_TRUE(accepts(kGood)) << told();
  EXPECT_TRUE(accepts(kGood.substr(0, kGood.size() - 1)));
}

TEST_F(Hostile, MessageCutAtEveryByte) {
  int nAccepted = 0;
  for (size_t nLen = 0; nLen < kGood.size(); ++nLen) nAccepted += accepts(kGood.substr(0, nLen)) ? 1 : 0;
  EXPECT_GT(nAccepted, 2);
  EXPECT_LT(nAccepted, 10);
}

TEST_F(Hostile, EveryBitFlipped) {
  int nAccepted = 0;
  for (size_t i = 0; i < kGood.size(); ++i) {
    for (int nBit = 0; nBit < 8; ++nBit) {
      std::string sBytes = kGood;
      sBytes[i] = static_cast<char>(sBytes[i] ^ (1 << nBit));
      nAccepted += accepts(sBytes) ? 1 : 0;
    }
  }
  EXPECT_GT(nAccepted, 50);
}

TEST_F(Hostile, EveryByteWithEveryValue) {
  for (size_t i = 0; i < kGood.size(); ++i) {
    for (int nByte = 0; nByte < 256; ++nByte) {
      std::string sBytes = kGood;
      sBytes[i] = static_cast<char>(nByte);
      accepts(sBytes);
      if (testing::Test::HasFailure()) FAIL() << i << " " << nByte;
    }
  }
}

TEST_F(Hostile, BytesPutInAndTakenOut) {
  std::mt19937 random(11);
  for (int i = 0; i < 4000; ++i) {
    std::string sBytes = kGood;
    for (unsigned long n = 1 + random() % 4; n > 0; --n) {
      const size_t nAt = random() % (sBytes.size() + 1);
      if (random() % 2 == 0) {
        sBytes.insert(nAt, 1, kGood[random() % kGood.size()]);
      } else if (!sBytes.empty() && nAt < sBytes.size()) {
        sBytes.erase(nAt, 1 + random() % 3);
      }
    }
    accepts(sBytes);
    if (testing::Test::HasFailure()) FAIL() << i;
  }
}

TEST_F(Hostile, RandomBytes) {
  std::mt19937 random(13);
  for (int i = 0; i < 2000; ++i) {
    std::string sBytes(random() % 60, '\0');
    for (char &c : sBytes) c = static_cast<char>(random());
    if (!sBytes.empty()) sBytes[0] = 'H';
    accepts(sBytes);
    if (testing::Test::HasFailure()) FAIL() << i;
  }
}

TEST_F(Hostile, EverySmallerBuffer) {
  const Record message = parse("M", kGood);
  for (size_t nRoom = 0; nRoom < kGood.size(); ++nRoom) {
    test::clearLog();
    EXPECT_EQ(generate(message, nRoom), "failed") << nRoom;
    EXPECT_NE(fault().find("expected room for"), std::string::npos) << nRoom << fault();
  }
}

TEST_F(Hostile, RandomValuesAreRefusedOrComeBack) {
  std::mt19937 random(17);
  const char *const names[] = {"Name", "Wide", "Date", "Rate", "Blank", "Code"};
  const char *const values[] = {"",   "a",  "中",   "-1.25", "1.5",  "20240131",
                                "AA", "B",  "x y",  "\n",    "\xFF", "12345678901234567890",
                                "0",  "-0", "é中国"};
  int nWritten = 0;
  for (int i = 0; i < 3000; ++i) {
    const Record message = create("M");
    set(message, "Date", "1");
    set(message, "Rate", "1");
    for (const char *psName : names) {
      if (random() % 3 == 0) set(message, psName, values[random() % 15]);
    }
    for (unsigned long n = random() % 3; n > 0; --n) {
      addTime(message, "Bodies");
      for (unsigned long k = random() % 3; k > 0; --k) {
        addTime(message, "Bodies.Items");
        set(message, "Items.Sku", values[random() % 15]);
      }
    }
    const std::string sBytes = generate(message);
    if (sBytes == "failed") continue;
    ++nWritten;
    EXPECT_TRUE(accepts(sBytes)) << told();
    if (testing::Test::HasFailure()) FAIL() << i;
  }
  EXPECT_GT(nWritten, 300);
}

TEST(FixHostile, EmptyBufferNeedsNoBytes) {
  FixConfig config;
  config.message("M", "psSeparator=\"lf\" psLastSeparator=\"optional\"",
                 {loop("L", "psUntil=\"end\"", {field("F", "nLen=\"1\"")})});
  ASSERT_EQ(config.start(), 0);
  const Record message = parse("M", "");
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(generate(message, 0), "");
}

TEST(FixHostile, PositionStaysOnFailureAndMovesByWhatWasUsed) {
  FixConfig config;
  config.message("M", "", {field("F", "nLen=\"2\" psType=\"number\"")});
  ASSERT_EQ(config.start(), 0);
  const Record message = create("M");
  Msg *ptMsg = message->ptMsgInfo;
  char sBytes[] = "--12x4";
  int nNow = 2;
  EXPECT_EQ(ptMsg->fParse(nullptr, &message->tValueListInfo, ptMsg, sBytes, &nNow, 6), 0);
  EXPECT_EQ(nNow, 4);
  test::clearLog();
  EXPECT_EQ(ptMsg->fParse(nullptr, &message->tValueListInfo, ptMsg, sBytes, &nNow, 6), -1);
  EXPECT_EQ(nNow, 4);
  EXPECT_TRUE(told("Offset[4]: expected digits")) << told();
  char sOut[8] = "abcdefg";
  nNow = 3;
  EXPECT_EQ(ptMsg->fGen(nullptr, &message->tValueListInfo, ptMsg, sOut, &nNow, 5), 0);
  EXPECT_EQ(nNow, 5);
  EXPECT_STREQ(sOut, "abc12fg");
  EXPECT_EQ(ptMsg->fGen(nullptr, &message->tValueListInfo, ptMsg, sOut, &nNow, 6), -1);
  EXPECT_EQ(nNow, 5);
  EXPECT_STREQ(sOut, "abc12fg");
}

TEST(FixHostile, MessagesOfOnePoolNodeKeepTheirValuesApart) {
  FixConfig config;
  config.message("M", "", {field("A", "nLen=\"3\""), field("B", "nLen=\"3\"")});
  ASSERT_EQ(config.start(), 0);
  const Record one = parse("M", "aaabbb");
  const Record two = parse("M", "cccddd");
  EXPECT_EQ(get(one, "A") + get(one, "B") + get(two, "A") + get(two, "B"), "aaabbbcccddd");
}

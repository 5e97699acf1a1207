// Lengths, marks and deciding values of the format `fix` against input made to break them: what is accepted comes
// back byte for byte, what is not is told in one line. Sanitizers watch the rest.
#include <gtest/gtest.h>

#include <random>

#include "fix_config.h"

using namespace test::fix;
using namespace std::string_literals;

namespace {

FormatNode number(const std::string &sName, int nLen, const std::string &sMore = "") {
  return field(sName, "nLen=\"" + std::to_string(nLen) + "\" psType=\"number\" " + sMore);
}

// Something of everything that has no fixed length.
std::vector<FormatNode> everything() {
  const FormatNode head =
      record("Head", "psLenField=\"HLen\" psLenCounts=\"all\"",
             {field("HLen", "nLen=\"2\" psType=\"binary\""),
              field("HZero", "nLen=\"2\" psType=\"binary\" psConst=\"0\""), field("Kind", "nLen=\"1\""),
              number("ILen", 3, "psSign=\"leading\" psCharset=\"IBM037\""),
              field("Name", "psEnd=\"*\" nLen=\"9\" psCharset=\"GB18030\""),
              field("Image", "psType=\"raw\" psLenField=\"ILen\" nLen=\"40\""),
              field("Extra", "nLen=\"2\" nOptional=\"1\""), field("More", "psEnd=\"0x00\" nOptional=\"1\"")});
  const FormatNode inner =
      loop("Inner", "", {number("TLen", 1), field("Text", "psLenField=\"TLen\" psCharset=\"IBM037\"")}, "N");
  const FormatNode detail =
      record("Detail", "psLenField=\"DLen\"",
             {number("DLen", 2), field("DTag", "psConst=\"D\" nTag=\"1\""), number("N", 1), inner,
              loop("Pairs", "psUntil=\"end\"", {field("P", "nLen=\"2\"")})});
  const FormatNode note =
      record("Note", "psSeparator=\"lf\"",
             {field("NTag", "psConst=\"N\" nTag=\"1\""), field("Rest", "nRest=\"1\" nLen=\"6\"")});
  const FormatNode filled = record(
      "Filled", "nLen=\"8\" psPad=\"-\"",
      {field("FTag", "psConst=\"F\" nTag=\"1\""), number("FLen", 1), field("FText", "psLenField=\"FLen\"")});
  const FormatNode byKind = group("ByKind", "FixGroup psKind=\"choice\" psBy=\"Kind\"",
                                  {group("A", "FixGroup psWhen=\"A|a\"", {field("AText", "psEnd=\"*\"")}),
                                   group("B", "FixGroup psWhen=\"B\"", {number("BNumber", 2)}),
                                   group("C", "FixGroup", {field("CText", "nLen=\"1\"")})});
  return {head,
          loop("Parts", "psUntil=\"tag\" nMax=\"5\"",
               {group("Any", "FixGroup psKind=\"choice\"", {detail, note, filled}), byKind}),
          field("Tail", "nRest=\"1\" psType=\"raw\" nLen=\"4\"")};
}

const std::string kGood = "\0\x18\0\0"s + "A" + "\x4E\xF0\xF5" + "\xD6\xD0z*" + "\x01\n*\0\xFF"s + "xy" +
                          "more\0"s + "12D2" + "2\xC1\xC2" + "0" + "pqrsxy" + "one*" + "Nhello\n" + "*" +
                          "F3abc---" + "x*" + "t\n";

class LengthHostile : public testing::Test {
 protected:
  void SetUp() override {
    m_config.message("M", "nWhole=\"1\"", everything());
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  // Whether the bytes are accepted; checks what must hold either way.
  static bool accepts(const std::string &sBytes) {
    test::clearLog();
    const Record message = parse("M", sBytes);
    if (message == nullptr) {
      EXPECT_EQ(fault().rfind("Msg[M] Field[", 0), 0U) << told();
      return false;
    }
    EXPECT_EQ(message->nNowLen, static_cast<int>(sBytes.size()));
    EXPECT_EQ(generate(message, sBytes.size()), sBytes) << told();
    return true;
  }

  FixConfig m_config;
};

}  // namespace

TEST_F(LengthHostile, GoodMessageIsGood) {
  EXPECT_TRUE(accepts(kGood)) << told();
  const Record message = parse("M", kGood);
  EXPECT_EQ(get(message, "Image"), "\x01\n*\0\xFF"s);
  EXPECT_EQ(get(message, "More"), "more");
  EXPECT_EQ(get(message, "Tail"), "t\n");
}

TEST_F(LengthHostile, MessageCutAtEveryByte) {
  int nAccepted = 0;
  for (size_t nLen = 0; nLen < kGood.size(); ++nLen) nAccepted += accepts(kGood.substr(0, nLen)) ? 1 : 0;
  EXPECT_GT(nAccepted, 2);
  EXPECT_LT(nAccepted, 12);
}

TEST_F(LengthHostile, EveryBitFlipped) {
  int nAccepted = 0;
  for (size_t i = 0; i < kGood.size(); ++i) {
    for (int nBit = 0; nBit < 8; ++nBit) {
      std::string sBytes = kGood;
      sBytes[i] = static_cast<char>(sBytes[i] ^ (1 << nBit));
      nAccepted += accepts(sBytes) ? 1 : 0;
      if (testing::Test::HasFailure()) FAIL() << i << " " << nBit;
    }
  }
  EXPECT_GT(nAccepted, 50);
}

TEST_F(LengthHostile, EveryByteWithEveryValue) {
  for (size_t i = 0; i < kGood.size(); ++i) {
    for (int nByte = 0; nByte < 256; ++nByte) {
      std::string sBytes = kGood;
      sBytes[i] = static_cast<char>(nByte);
      accepts(sBytes);
      if (testing::Test::HasFailure()) FAIL() << i << " " << nByte;
    }
  }
}

TEST_F(LengthHostile, BytesPutInAndTakenOut) {
  std::mt19937 random(23);
  int nAccepted = 0;
  for (int i = 0; i < 4000; ++i) {
    std::string sBytes = kGood;
    for (unsigned long n = 1 + random() % 4; n > 0; --n) {
      const size_t nAt = random() % (sBytes.size() + 1);
      if (random() % 2 == 0) {
        sBytes.insert(nAt, 1, kGood[random() % kGood.size()]);
      } else if (nAt < sBytes.size()) {
        sBytes.erase(nAt, 1 + random() % 3);
      }
    }
    nAccepted += accepts(sBytes) ? 1 : 0;
    if (testing::Test::HasFailure()) FAIL() << i;
  }
  EXPECT_GT(nAccepted, 50);
}

TEST_F(LengthHostile, EverySmallerBuffer) {
  const Record message = parse("M", kGood);
  for (size_t nRoom = 0; nRoom < kGood.size(); ++nRoom) {
    test::clearLog();
    EXPECT_EQ(generate(message, nRoom), "failed") << nRoom;
    EXPECT_NE(fault().find("expected room for"), std::string::npos) << nRoom << fault();
  }
}

TEST_F(LengthHostile, RandomValuesAreRefusedOrComeBack) {
  std::mt19937 random(29);
  const char *const names[] = {"Kind", "Name", "Image", "Extra", "More", "Tail"};
  const std::string values[] = {
      "",     "A",  "B", "a*b", "\xE4\xB8\xAD", "\n",
      "\xFF", "12", "q", "x",   "xy",           "longer than it may be, by far and away",
      "\0"s};
  int nWritten = 0;
  for (int i = 0; i < 3000; ++i) {
    const Record message = create("M");
    for (const char *psName : names) {
      if (random() % 2 == 0) set(message, psName, values[random() % std::size(values)]);
    }
    for (unsigned long n = random() % 3; n > 0; --n) {
      addTime(message, "Parts");
      const unsigned long nWhich = random() % 3;
      if (nWhich == 0) set(message, "Parts.Rest", values[random() % std::size(values)]);
      if (nWhich == 1) set(message, "Parts.FText", values[random() % std::size(values)]);
      set(message, "Parts.NTag", nWhich == 0 ? "N" : "");
      set(message, "Parts.FTag", nWhich == 1 ? "F" : "");
      set(message, "Parts.DTag", nWhich == 2 ? "D" : "");
      const char *const kinds[] = {"Parts.AText", "Parts.BNumber", "Parts.CText"};
      set(message, kinds[random() % 3], values[random() % std::size(values)]);
    }
    const std::string sBytes = generate(message);
    if (sBytes == "failed") continue;
    ++nWritten;
    EXPECT_TRUE(accepts(sBytes)) << told();
    if (testing::Test::HasFailure()) FAIL() << i;
  }
  EXPECT_GT(nWritten, 100);
}

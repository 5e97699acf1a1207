#include "kit/charset.h"

#include <gtest/gtest.h>

#include <string>

using namespace cvt::kit;

namespace {

std::string text(const Converted &result, const std::string &out) {
  if (result.damage == Damage::None) return out.substr(0, result.written);
  const char *names[] = {"none", "invalid", "cut", "unmappable", "no room"};
  return std::string("!") + names[static_cast<int>(result.damage)] + " at " + std::to_string(result.read);
}

std::string decode(const char *set, const std::string &bytes) {
  const Charset *charset = Charset::find(set);
  std::string out(charset->decodedRoom(bytes.size()), '?');
  return text(charset->decode(bytes.data(), bytes.size(), out.data(), out.size()), out);
}

std::string encode(const char *set, const std::string &utf8, size_t room = 100) {
  std::string out(room, '?');
  return text(Charset::find(set)->encode(utf8.data(), utf8.size(), out.data(), room), out);
}

std::string measure(const char *set, const std::string &bytes, size_t characters) {
  const Converted result = Charset::find(set)->measure(bytes.data(), bytes.size(), characters);
  return result.damage == Damage::None ? std::to_string(result.read) : text(result, "");
}

}  // namespace

TEST(KitCharset, UnknownSetsAreNotFound) {
  EXPECT_EQ(Charset::find("NO-SUCH-SET"), nullptr);
  EXPECT_EQ(Charset::find(""), nullptr);
  EXPECT_EQ(Charset::find("ASCII//TRANSLIT"), nullptr);
  EXPECT_EQ(Charset::find("ASCII//IGNORE"), nullptr);
}

TEST(KitCharset, NullIsUtf8) {
  EXPECT_TRUE(Charset::find(nullptr)->isUtf8());
}

TEST(KitCharset, SetsAreResolvedOnce) {
  EXPECT_EQ(Charset::find("GB18030"), Charset::find("GB18030"));
}

TEST(KitCharset, SetsAreClassified) {
  EXPECT_TRUE(Charset::find("ISO-8859-1")->oneByte());
  EXPECT_TRUE(Charset::find("WINDOWS-1252")->oneByte());
  EXPECT_TRUE(Charset::find("US-ASCII")->oneByte());
  EXPECT_TRUE(Charset::find("IBM037")->oneByte());
  EXPECT_FALSE(Charset::find("IBM037")->containsAscii());
  EXPECT_TRUE(Charset::find("GB18030")->containsAscii());
  EXPECT_FALSE(Charset::find("GB18030")->oneByte());
  EXPECT_FALSE(Charset::find("UTF-16LE")->containsAscii());
  EXPECT_FALSE(Charset::find("ISO-2022-JP")->containsAscii());
  EXPECT_FALSE(Charset::find("UTF-7")->containsAscii());
}

TEST(KitCharset, TextGoesThereAndBack) {
  const struct {
    const char *set;
    std::string bytes;
    const char *utf8;
  } cases[] = {
      {"UTF-8", "Z\xC3\xBCrich", "Zürich"},
      {"ISO-8859-1", "Z\xFCrich", "Zürich"},
      {"WINDOWS-1252", "\x80 5", "€ 5"},
      {"IBM037", "\xC8\x85\x93\x93\x96", "Hello"},
      {"IBM1047", "\xAD\xBD", "[]"},
      {"GB18030", "\xD6\xD0\xB9\xFA", "中国"},
      {"GB18030", "\x81\x39\xEE\x39", "㐀"},
      {"GB18030", "\x90\x30\x81\x30", "𐀀"},
      {"BIG5", "\xA4\xA4", "中"},
      {"SHIFT_JIS", "\x93\xFA\xB1", "日ｱ"},
      {"EUC-JP", "\xC6\xFC", "日"},
      {"UTF-16LE", std::string("A\0\x2D\x4E", 4), "A中"},
      {"ISO-2022-JP", "\x1B$BF|\x1B(B", "日"},
  };
  for (const auto &c : cases) {
    EXPECT_EQ(decode(c.set, c.bytes), c.utf8) << c.set;
    EXPECT_EQ(encode(c.set, c.utf8), c.bytes) << c.set;
  }
}

TEST(KitCharset, ThereIsRoomForBytesThatAreManyCharactersEach) {
  const std::string sri = "ஸ்ரீ";
  for (const size_t n : {1U, 2U, 10U, 1000U}) {
    std::string text;
    for (size_t i = 0; i < n; ++i) text += sri;
    EXPECT_TRUE(decode("TSCII", std::string(n, '\x82')) == text) << n;
  }
  EXPECT_LE(Charset::find("GB18030")->decodedRoom(1000), 4100U) << "no more than is needed";
}

TEST(KitCharset, EmptyTextIsFine) {
  for (const char *set : {"UTF-8", "IBM037", "GB18030", "ISO-2022-JP"}) {
    EXPECT_EQ(decode(set, ""), "");
    EXPECT_EQ(encode(set, ""), "");
  }
  char out[1];
  EXPECT_EQ(Charset::find("UTF-8")->decode(nullptr, 0, out, 1).written, 0U);
}

TEST(KitCharset, InvalidBytesAreRefusedWithTheirOffset) {
  EXPECT_EQ(decode("UTF-8", "ab\xFF"), "!invalid at 2");
  EXPECT_EQ(decode("UTF-8", "ab\xC0\xAF"), "!invalid at 2");
  EXPECT_EQ(decode("UTF-8", "\xE0\x80\x80"), "!invalid at 0");
  EXPECT_EQ(decode("UTF-8", "\xED\xA0\x80"), "!invalid at 0");
  EXPECT_EQ(decode("UTF-8", "\xF4\x90\x80\x80"), "!invalid at 0");
  EXPECT_EQ(decode("UTF-8", "\xF0\x8F\x80\x80"), "!invalid at 0");
  EXPECT_EQ(decode("UTF-8",
                   "\xE4\xB8"
                   "a"),
            "!invalid at 0");
  EXPECT_EQ(decode("US-ASCII", "ab\x80"), "!invalid at 2");
  EXPECT_EQ(decode("WINDOWS-1252", "ab\x81"), "!invalid at 2");
  EXPECT_EQ(decode("GB18030", "a\xFF"), "!invalid at 1");
}

TEST(KitCharset, CutBytesAreRefusedWithTheirOffset) {
  EXPECT_EQ(decode("UTF-8", "ab\xE4\xB8"), "!cut at 2");
  EXPECT_EQ(decode("GB18030", "\xD6\xD0\xB9"), "!cut at 2");
  EXPECT_EQ(decode("GB18030", "\x81\x39\xEE"), "!cut at 0");
  EXPECT_EQ(encode("GB18030", "中\xE4\xB8"), "!cut at 3");
  EXPECT_EQ(encode("IBM037", "A\xE4\xB8"), "!cut at 1");
}

TEST(KitCharset, CharactersThatTheSetLacksAreRefused) {
  EXPECT_EQ(encode("US-ASCII", "Zürich"), "!unmappable at 1");
  EXPECT_EQ(encode("IBM037", "A中"), "!unmappable at 1");
  EXPECT_EQ(encode("BIG5", "A\xF0\x9F\x98\x80"), "!unmappable at 1");
  EXPECT_EQ(encode("GB18030", "A\xFF"), "!invalid at 1");
}

TEST(KitCharset, LikeCharactersAreNotWrittenForOnesThatTheSetLacks) {
  const struct {
    const char *set;
    const char *utf8;
    const char *expected;
  } cases[] = {
      {"IBM930", "x·y", "!unmappable at 1"},
      {"IBM930", "é", "!unmappable at 0"},
      {"IBM933", "é", "!unmappable at 0"},
      {"IBM937", "é", "!unmappable at 0"},
      {"IBM939", "é", "!unmappable at 0"},
      {"IBM1371", "é", "!unmappable at 0"},
      {"IBM943", "aé", "!unmappable at 1"},
      {"IBM932", "aé", "!unmappable at 1"},
      {"WINDOWS-31J", "¥500", "!unmappable at 0"},
      {"CP932", "5¥", "!unmappable at 1"},
      {"EUC-JP", "日¥", "!unmappable at 3"},
      {"EUC-JP", "日‾", "!unmappable at 3"},
      {"EUC-KR", "₩", "!unmappable at 0"},
      {"WINDOWS-31J", "¥€", "!unmappable at 0"},
      {"WINDOWS-31J", "a¥\xE4\xB8", "!unmappable at 1"},
  };
  for (const auto &c : cases) EXPECT_EQ(encode(c.set, c.utf8), c.expected) << c.set << " " << c.utf8;
}

TEST(KitCharset, WhatStandsBeforeALackingCharacterIsWritten) {
  char out[16];
  const std::string text = "日¥";
  const Converted done = Charset::find("EUC-JP")->encode(text.data(), text.size(), out, sizeof out);
  EXPECT_EQ(done.damage, Damage::Unmappable);
  EXPECT_EQ(done.read, 3U);
  EXPECT_EQ(std::string(out, done.written), "\xC6\xFC");
}

TEST(KitCharset, LongTextsOfSeveralBytesComeBack) {
  for (const char *set : {"BIG5", "EUC-JP", "GBK", "UTF-16", "ISO-2022-JP", "IBM939", "EUC-KR"}) {
    std::string text;
    for (int i = 0; i < 400; ++i) text += "中a";
    std::string bytes(8000, '?');
    const Converted done = Charset::find(set)->encode(text.data(), text.size(), bytes.data(), bytes.size());
    ASSERT_EQ(done.damage, Damage::None) << set;
    EXPECT_EQ(decode(set, bytes.substr(0, done.written)), text) << set;
  }
}

TEST(KitCharset, WhatFitsEndsBetweenTwoCharacters) {
  char out[16];
  const std::string two = "中国";
  for (const char *set : {"UTF-8", "GB18030"}) {
    const size_t one = Charset::find(set)->encode(two.data(), 3, out, sizeof out).written;
    const Converted fits = Charset::find(set)->encode(two.data(), two.size(), out, one * 2 - 1);
    EXPECT_EQ(fits.damage, Damage::NoRoom) << set;
    EXPECT_EQ(fits.written, one) << set;
    EXPECT_EQ(fits.read, 3U) << set;
  }
  const Converted table = Charset::find("IBM037")->encode("abc", 3, out, 2);
  EXPECT_EQ(table.damage, Damage::NoRoom);
  EXPECT_EQ(table.written, 2U);
}

TEST(KitCharset, CutTextOfAShiftingSetIsClosed) {
  char out[32];
  const std::string three = "日本語";
  const Charset *set = Charset::find("ISO-2022-JP");
  for (size_t room = 0; room < 12; ++room) {
    const Converted cut = set->encode(three.data(), three.size(), out, room);
    EXPECT_NE(cut.damage, Damage::None) << room;
    if (cut.damage != Damage::NoRoom) continue;
    EXPECT_EQ(decode("ISO-2022-JP", std::string(out, cut.written)), three.substr(0, cut.read)) << room;
  }
  EXPECT_EQ(set->encode(three.data(), three.size(), out, 12).damage, Damage::None);
}

TEST(KitCharset, DescriptorsForgetWhatFailed) {
  EXPECT_EQ(decode("ISO-2022-JP", "\x1B$BF"), "!cut at 3");
  EXPECT_EQ(decode("ISO-2022-JP", "F|"), "F|");
}

// iconv goes on with the order of the text before.
TEST(KitCharset, TheByteOrderMarkOfATextIsNotThatOfTheNext) {
  const struct {
    const char *name;
    std::string little;
    std::string big;
  } sets[] = {{"UTF-16",
               std::string("\xFF\xFE"
                           "A\0",
                           4),
               std::string("\xFE\xFF\0A", 4)},
              {"UNICODE",
               std::string("\xFF\xFE"
                           "A\0",
                           4),
               std::string("\xFE\xFF\0A", 4)},
              {"UTF-32", std::string("\xFF\xFE\0\0A\0\0\0", 8), std::string("\0\0\xFE\xFF\0\0\0A", 8)}};
  for (const auto &set : sets) {
    const Charset *const charset = Charset::find(set.name);
    ASSERT_NE(charset, nullptr);
    for (const std::string &text : {set.little, set.big, set.little, set.big, set.big, set.little}) {
      char out[32];
      const Converted decoded = charset->decode(text.data(), text.size(), out, sizeof out);
      EXPECT_EQ(decoded.damage, Damage::None) << set.name;
      EXPECT_EQ(std::string(out, decoded.written), "A") << set.name;
      EXPECT_EQ(charset->measure(text.data(), text.size(), 1).read, text.size()) << set.name;
    }
  }
}

TEST(KitCharset, CharactersAreMeasuredInBytes) {
  EXPECT_EQ(measure("UTF-8", "a中b", 2), "4");
  EXPECT_EQ(measure("UTF-8", "a中b", 3), "5");
  EXPECT_EQ(measure("UTF-8", "a中b", 4), "!cut at 5");
  EXPECT_EQ(measure("UTF-8", "a\xFF", 2), "!invalid at 1");
  EXPECT_EQ(measure("GB18030",
                    "a\xD6\xD0"
                    "b\x81\x39\xEE\x39"
                    "c",
                    4),
            "8");
  EXPECT_EQ(measure("GB18030", "a\xD6\xD0", 3), "!cut at 3");
  EXPECT_EQ(measure("GB18030", "a\xD6", 2), "!cut at 1");
  EXPECT_EQ(measure("BIG5",
                    "\xA4\xA4"
                    "a",
                    1),
            "2");
  EXPECT_EQ(measure("SHIFT_JIS", "\x93\xFA\xB1z", 2), "3");
  EXPECT_EQ(measure("IBM037", "\xC1\xC2\xC3", 2), "2");
  EXPECT_EQ(measure("IBM037", "\xC1", 2), "!cut at 1");
  EXPECT_EQ(measure("GB18030", std::string(1500, 'x'), 1000), "1000");
  EXPECT_EQ(measure("UTF-16LE", std::string("A\0\x2D\x4E", 4), 1), "2");
  EXPECT_EQ(measure("UTF-8", "", 0), "0");
}

TEST(KitCharset, Utf8IsCountedAndCutBetweenCharacters) {
  const std::string s = "a中b";
  EXPECT_EQ(Charset::countUtf8(s.data(), s.size()), 3U);
  EXPECT_EQ(Charset::cutUtf8(s.data(), s.size(), 3), 1U);
  EXPECT_EQ(Charset::cutUtf8(s.data(), s.size(), 4), 4U);
  EXPECT_EQ(Charset::cutUtf8(s.data(), s.size(), 0), 0U);
  EXPECT_EQ(Charset::cutUtf8(s.data(), s.size(), 9), 5U);
}

TEST(KitCharset, AsciiIsFoundAtEveryPosition) {
  for (size_t n = 0; n < 40; ++n) {
    std::string s(n, 'x');
    EXPECT_TRUE(Charset::ascii(s.data(), n));
    for (size_t i = 0; i < n; ++i) {
      s[i] = '\x80';
      EXPECT_FALSE(Charset::ascii(s.data(), n));
      s[i] = 'x';
    }
  }
}

TEST(KitCharset, EveryCharacterOfAOneByteSetComesBack) {
  for (const char *set :
       {"IBM037", "IBM1047", "IBM500", "WINDOWS-1252", "ISO-8859-15", "KOI8-R", "US-ASCII"}) {
    int characters = 0;
    for (int i = 0; i < 256; ++i) {
      const std::string byte(1, static_cast<char>(i));
      const std::string utf8 = decode(set, byte);
      if (utf8 == "!invalid at 0") continue;
      ++characters;
      EXPECT_EQ(encode(set, utf8), byte) << set << " byte " << i;
    }
    EXPECT_GE(characters, 128) << set;
  }
}

TEST(KitCharset, CharactersOfUnicodeComeBackFromGb18030) {
  int without = 0;
  std::string all;
  for (uint32_t code = 0x80; code < 0x110000; ++code) {
    if (code >= 0xD800 && code < 0xE000) continue;
    char utf8[4];
    size_t n = 0;
    if (code < 0x800) {
      utf8[n++] = static_cast<char>(0xC0 | code >> 6);
    } else if (code < 0x10000) {
      utf8[n++] = static_cast<char>(0xE0 | code >> 12);
      utf8[n++] = static_cast<char>(0x80 | (code >> 6 & 0x3F));
    } else {
      utf8[n++] = static_cast<char>(0xF0 | code >> 18);
      utf8[n++] = static_cast<char>(0x80 | (code >> 12 & 0x3F));
      utf8[n++] = static_cast<char>(0x80 | (code >> 6 & 0x3F));
    }
    utf8[n++] = static_cast<char>(0x80 | (code & 0x3F));
    all.assign(utf8, n);
    const std::string bytes = encode("GB18030", all);
    if (bytes[0] == '!') {
      EXPECT_EQ(bytes, "!unmappable at 0");
      ++without;
      continue;
    }
    ASSERT_EQ(decode("GB18030", bytes), all) << std::hex << code;
  }
  // Private-use codes to which the C library gives no bytes.
  EXPECT_LT(without, 100);
}

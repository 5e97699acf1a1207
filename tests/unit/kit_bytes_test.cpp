#include "kit/bytes.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace cvt::kit;

namespace {

// The text in a block of exactly its size, so that a byte read behind it is seen.
class Exact {
 public:
  explicit Exact(const std::string &s) : m_size(s.size()), m_bytes(new char[s.size()]) {
    if (!s.empty()) std::memcpy(m_bytes.get(), s.data(), s.size());
  }
  const char *data() const { return m_bytes.get(); }
  size_t size() const { return m_size; }

 private:
  size_t m_size;
  std::unique_ptr<char[]> m_bytes;
};

// Puts every byte at every place of texts of every length and compares with what holds for single bytes.
template <class Test, class Expected>
void everywhere(char neutral, Test test, Expected expected) {
  for (size_t n = 0; n <= 20; ++n) {
    for (size_t i = 0; i < n; ++i) {
      for (int byte = 0; byte < 256; ++byte) {
        std::string s(n, neutral);
        s[i] = static_cast<char>(byte);
        const Exact text(s);
        ASSERT_EQ(test(text.data(), n), expected(byte)) << n << " " << i << " " << byte;
      }
    }
    const Exact text(std::string(n, neutral));
    ASSERT_TRUE(test(text.data(), n));
  }
}

}  // namespace

TEST(KitBytes, AsciiIsBelow128) {
  everywhere('x', isAscii, [](int byte) { return byte < 128; });
}

TEST(KitBytes, PrintableIsFromBlankToTilde) {
  everywhere('~', isPrintable, [](int byte) { return byte >= 0x20 && byte <= 0x7E; });
  everywhere(' ', isPrintable, [](int byte) { return byte >= 0x20 && byte <= 0x7E; });
}

TEST(KitBytes, PlainXmlIsPrintableWithoutMarkup) {
  const std::string_view markup = "&<>\"";
  for (char neutral = ' '; neutral <= '~'; ++neutral) {
    if (markup.find(neutral) != markup.npos) continue;
    everywhere(neutral, isPlainXml, [&](int byte) {
      return byte >= 0x20 && byte <= 0x7E && markup.find(static_cast<char>(byte)) == markup.npos;
    });
  }
}

TEST(KitBytes, DigitsAreZeroToNine) {
  everywhere('0', isDigits, [](int byte) { return byte >= '0' && byte <= '9'; });
  everywhere('9', isDigits, [](int byte) { return byte >= '0' && byte <= '9'; });
}

TEST(KitBytes, PadsAreCountedAtBothEnds) {
  for (size_t n = 0; n <= 24; ++n) {
    for (size_t pads = 0; pads <= n; ++pads) {
      for (const char pad : {' ', '0', '\0', '\xFF'}) {
        const std::string text(n - pads, 'x');
        const Exact right(text + std::string(pads, pad));
        const Exact left(std::string(pads, pad) + text);
        ASSERT_EQ(trimmedEnd(right.data(), n, pad), n - pads);
        ASSERT_EQ(countStart(left.data(), n, pad), pads);
      }
    }
  }
}

TEST(KitBytes, OnlyTheOuterPadsAreCounted) {
  const std::string s = "a  b  c         ";
  EXPECT_EQ(trimmedEnd(s.data(), s.size(), ' '), 7U);
  const std::string t = "         a  b  c";
  EXPECT_EQ(countStart(t.data(), t.size(), ' '), 9U);
}

TEST(KitBytes, ShortTextsOfEveryLengthAreCopiedFilledAndCompared) {
  for (size_t n = 0; n <= 40; ++n) {
    std::string s(n, ' ');
    for (size_t i = 0; i < n; ++i) s[i] = static_cast<char>('A' + i);
    const Exact text(s);
    const auto same = std::make_unique<char[]>(n);
    copyShort(same.get(), text.data(), n);
    EXPECT_EQ(std::string(same.get(), n), s);
    EXPECT_TRUE(equalShort(same.get(), text.data(), n));
    for (size_t i = 0; i < n; ++i) {
      same[i] ^= 1;
      EXPECT_FALSE(equalShort(same.get(), text.data(), n)) << n << " " << i;
      same[i] ^= 1;
    }
    fillShort(same.get(), '*', n);
    EXPECT_EQ(std::string(same.get(), n), std::string(n, '*'));
  }
}

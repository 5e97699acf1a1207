// Text that is damaged, text that means harm, and output that does not fit.
#include <gtest/gtest.h>

#include "cpu_time.h"
#include "csv_config.h"

namespace {

using namespace test::csvtext;

struct Dialect {
  std::string sName;
  std::string sGood;  // as the plug-in itself writes it
};

class CsvHostile : public testing::Test {
 protected:
  void SetUp() override {
    const std::vector<FormatNode> columns = {field("A", "nMandatory=\"1\""), field("B", "nKeepEmpty=\"2\""),
                                             field("C", "nMaxLen=\"6\" psQuoting=\"always\"")};
    const FormatNode last = field("Last", "psKind=\"end\"");
    add("Table", "psHeader=\"names\" psLineEnd=\"any\" psComment=\"#\"",
        {rows(columns), last, field("Break", "psKind=\"line-end\"")},
        "A,B,C\r\n1,\"\",\"x\"\r\n\"a,\"\"b\r\n\",é,\"\"\r\n\"#\",中,\"2\"");
    add("Escaped", "psSeparator=\"&#9;\" psQuote=\"\" psEscape=\"\\\"", {rows(fields({"A", "B"})), last},
        "1\\t\\\\\t2\n\tx\\n\n");
    add("Pairs", "psSeparator=\"::\" psQuote=\"'\" psEscape=\"\\\" psLineEnd=\"crlf\"",
        {rows(fields({"A", "B"})), last}, "a:::b\r\n'\\'::'::'\\\\\r\n'\r\n");
    add("Bank", "psQuote=\"\" psRecordEnd=\"/\" psContinuation=\"88\"",
        {record("Head", "psTag=\"01\" nMandatory=\"1\"", fields({"F", "G"})),
         loop("Accounts", "CsvRecord", "psTag=\"03\"", "",
              {field("N"),
               loop("Sums", "CsvGroup", "", "",
                    {field("Type"), field("Funds"),
                     group("What", "psKind=\"choice\" psSelect=\"Funds\" psNone=\"0|\"",
                           {group("D", "psWhen=\"D\"",
                                  {field("Count", "nMandatory=\"1\""),
                                   loop("Days", "CsvGroup", "", "", {field("Day"), field("Sum")}, "Count")}),
                            field("V", "psWhen=\"V\"")})}),
               field("Wraps", "psKind=\"wraps\""),
               loop("Items", "CsvRecord", "psTag=\"16\"", "",
                    {field("Code"), field("Text", "psKind=\"rest\"")})}),
         record("Tail", "psTag=\"99\" nMandatory=\"1\"", {field("Total")}), last},
        "01,a,b/\n03,1,040,0,041,D,2,1,5/\n88,2,6,042,V,x/\n16,9,a,b/c/\n03,2,1,/\n99,7/\n");
    add("Braces",
        "psSeparator=\"*\" nTerminated=\"1\" psQuote=\"\" psTagFront=\"{\" psTagBack=\"}\" nShort=\"1\" "
        "psOrder=\"any\"",
        {record("Head", "psTag=\"1500\" nMandatory=\"1\"",
                {field("V", "nLen=\"2\""), field("U", "nLen=\"4\" psPad=\" \"")}),
         record("Info", "psTag=\"6000\"", {field("L1"), field("L2")}), last},
        "{1500}30ab  \n{6000}one*two*");
    m_config.message("Gb", "psCharset=\"GB18030\" psHeader=\"order\"", {rows(fields({"A", "B"}))});
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  void add(const std::string &sName, const std::string &sAttributes, const std::vector<FormatNode> &nodes,
           const std::string &sGood) {
    m_config.message(sName, sAttributes, nodes);
    m_dialects.push_back({sName, sGood});
  }

  CsvConfig m_config;
  std::vector<Dialect> m_dialects;
};

// Whatever parses must be written, and what is written must come back.
void roundTrip(const std::string &sName, const std::string &sBytes) {
  const Text text = parse(sName, sBytes);
  if (text == nullptr) return;
  const std::string s = generate(text, 4 * sBytes.size() + 1000);
  ASSERT_NE(s, "failed") << sName << "\n" << sBytes << "\n" << told();
  const Text again = parse(sName, s);
  ASSERT_NE(again, nullptr) << sName << "\n" << s << "\nfrom\n" << sBytes << "\n" << told();
  EXPECT_EQ(generate(again, s.size()), s) << sName << "\n" << sBytes;
}

TEST_F(CsvHostile, WhatIsGoodComesBackByteForByte) {
  for (const Dialect &dialect : m_dialects)
    EXPECT_EQ(pass(dialect.sName, dialect.sGood), dialect.sGood) << told();
}

TEST_F(CsvHostile, ATextCutAtAnyByteIsReadOrRefusedInALineThatSaysWhere) {
  for (const Dialect &dialect : m_dialects) {
    for (size_t n = 0; n < dialect.sGood.size(); ++n) {
      test::clearLog();
      const std::string sCut = dialect.sGood.substr(0, n);
      if (parse(dialect.sName, sCut) != nullptr) {
        roundTrip(dialect.sName, sCut);
      } else {
        EXPECT_TRUE(told("Msg[" + dialect.sName + "] Field[") && told("] Offset[") && told("]: expected "))
            << n << told();
      }
    }
  }
}

TEST_F(CsvHostile, EveryByteMayBeAnythingWithoutACrash) {
  for (const Dialect &dialect : m_dialects) {
    for (size_t i = 0; i < dialect.sGood.size(); ++i) {
      for (const int nFlip : {0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80, 0xFF}) {
        std::string s = dialect.sGood;
        s[i] = static_cast<char>(s[i] ^ nFlip);
        roundTrip(dialect.sName, s);
      }
      for (const char c : std::string(",\"\r\n/\\*{}:'\t0")) {
        std::string s = dialect.sGood;
        s[i] = c;
        roundTrip(dialect.sName, s);
      }
      test::clearLog();
    }
  }
}

TEST_F(CsvHostile, EveryByteMayBeMissingOrDoubled) {
  for (const Dialect &dialect : m_dialects) {
    const std::string &sGood = dialect.sGood;
    for (size_t i = 0; i < sGood.size(); ++i) {
      roundTrip(dialect.sName, sGood.substr(0, i) + sGood.substr(i + 1));
      roundTrip(dialect.sName, sGood.substr(0, i) + sGood[i] + sGood.substr(i));
      test::clearLog();
    }
  }
}

TEST_F(CsvHostile, EveryDialectMayGetTheTextOfAnyOther) {
  for (const Dialect &dialect : m_dialects) {
    for (const Dialect &other : m_dialects) {
      for (size_t i = 0; i < other.sGood.size(); ++i) {
        roundTrip(dialect.sName, other.sGood.substr(i));
        roundTrip("Gb", other.sGood.substr(i));
      }
      test::clearLog();
    }
  }
}

TEST_F(CsvHostile, EverySmallerOutputBufferIsRefusedAtTheFieldWhereRoomRanOut) {
  for (const Dialect &dialect : m_dialects) {
    const Text text = parse(dialect.sName, dialect.sGood);
    ASSERT_NE(text, nullptr) << told();
    EXPECT_EQ(generate(text, dialect.sGood.size()), dialect.sGood);
    for (size_t n = 0; n < dialect.sGood.size(); ++n) {
      test::clearLog();
      EXPECT_EQ(generate(text, n), "failed") << n;
      EXPECT_TRUE(told("]: expected room for ") && told("left in the buffer. Give a larger output buffer."))
          << told();
    }
  }
  test::clearLog();
  const Text text = parse("Bank", m_dialects[3].sGood);
  EXPECT_EQ(generate(text, m_dialects[3].sGood.find("a,b/c") + 2), "failed");
  EXPECT_TRUE(told("Msg[Bank] Field[Accounts[0].Items[0].Text] Offset[")) << told();
}

TEST_F(CsvHostile, AFailedTextLeavesNothingBehindForTheNext) {
  for (const Dialect &dialect : m_dialects) {
    for (size_t n = 0; n < dialect.sGood.size(); n += 3) {
      parse(dialect.sName, dialect.sGood.substr(0, n));
      EXPECT_EQ(pass(dialect.sName, dialect.sGood), dialect.sGood) << told();
      test::clearLog();
    }
  }
}

// Each of these once cost, or could cost, more than its length.
TEST_F(CsvHostile, LongTextsTakeTimeInProportion) {
  const size_t n = 500000;
  const double begin = test::cpuSeconds();
  const std::string sQuotes(n, '"');
  roundTrip("Table", "A,B,C\n1," + sQuotes + ",2\n");
  roundTrip("Table", "A,B,C\n1," + std::string(n, 'x') + ",2\n");
  roundTrip("Table", "A,B,C\n" + std::string(n, ',') + "\n");
  roundTrip("Table", std::string(n, ','));
  roundTrip("Table", "A,B,C\n" + std::string(n, '\n'));
  roundTrip("Table", "A,B,C\n#" + std::string(n, '\n'));
  roundTrip("Pairs", std::string(n, ':'));
  roundTrip("Pairs", "a::" + std::string(n, '\r'));
  roundTrip("Escaped", "a\t" + std::string(n, '\\') + "\n");
  roundTrip("Bank", "01," + std::string(n, '/'));
  roundTrip("Bank", "01,a,b/\n03,1,D,D,99999999," + std::string(n, ','));
  roundTrip("Bank", "01,a,b/\n03,1/\n16,9," + std::string(n, '/') + "\n99,1/\n");
  roundTrip("Braces", "{" + std::string(n, '1'));
  roundTrip("Braces", "{1500}" + std::string(n, '1'));
  EXPECT_LT(test::cpuSeconds() - begin, 5);
}

TEST_F(CsvHostile, ARecordContinuedOverAndOverTakesTimeInProportion) {
  std::string s = "01,a/\n";
  for (int i = 0; i < 200000; ++i) s += "88,\n";
  roundTrip("Bank", s);
  s = "01,a,b/\n03,1,x/\n";
  for (int i = 0; i < 900; ++i) s += "88,0,y/\n";
  s += "88,0/\n99,1/\n";
  EXPECT_EQ(pass("Bank", s), s) << told().substr(0, 1000);
}

}  // namespace

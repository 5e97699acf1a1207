// The NACHA definition of the example against real files: five good ones, and ten that something is wrong
// with.
#include <gtest/gtest.h>

#include "fix_config.h"

using namespace test::fix;

namespace {

const std::string kExample = CVT2_SOURCE_DIR "/examples/nacha/";

std::string replaced(std::string sText, const std::string &sFrom, const std::string &sTo) {
  const size_t nAt = sText.find(sFrom);
  EXPECT_NE(nAt, std::string::npos) << sFrom;
  return nAt == std::string::npos ? sText : sText.replace(nAt, sFrom.size(), sTo);
}

class Nacha : public testing::Test {
 protected:
  void start(const std::string &sSetting = "") {
    std::string sDefinition = contentOf(kExample + "Message/NachaFile.xml");
    if (!sSetting.empty()) sDefinition = replaced(sDefinition, "<FixMsg ", "<FixMsg " + sSetting + " ");
    m_config.file("msg/NachaFile.xml", sDefinition);
    ASSERT_EQ(m_config.start(), 0) << told();
  }

  static std::string good(const std::string &sName) { return contentOf(kExample + "data/" + sName); }

  static std::string refusal(const std::string &sName) {
    test::clearLog();
    const std::string sBytes = contentOf(kExample + "data/bad/" + sName);
    EXPECT_FALSE(sBytes.empty());
    return parse("NachaFile", sBytes) == nullptr ? fault() : "accepted";
  }

  static void expectRefused(const std::string &sName, const std::string &sField, const std::string &sText) {
    const std::string sLine = refusal(sName);
    EXPECT_NE(sLine.find("Msg[NachaFile] Field[" + sField + "]"), std::string::npos)
        << sName << ": " << sLine;
    EXPECT_NE(sLine.find(sText), std::string::npos) << sName << ": " << sLine;
  }

  FixConfig m_config;
};

constexpr const char *kGood[] = {"20110805A.ach", "flattenBatchesOneBatchHeader.ach", "iat-debit.ach",
                                 "ppd-mixedDebitCredit.ach", "two-micro-deposits.ach"};

}  // namespace

TEST_F(Nacha, GoodFilesComeBackByteForByte) {
  start();
  for (const char *psName : kGood) {
    const std::string sBytes = good(psName);
    ASSERT_GT(sBytes.size(), 900U) << psName;
    const Record file = parse("NachaFile", sBytes);
    ASSERT_NE(file, nullptr) << psName << "\n" << told();
    EXPECT_EQ(file->nNowLen, static_cast<int>(sBytes.size()));
    EXPECT_EQ(generate(file), sBytes) << psName;
    EXPECT_EQ(generate(file, sBytes.size()), sBytes) << psName;
  }
}

TEST_F(Nacha, StructureIsTheOneOfTheFile) {
  start();
  const Record file = parse("NachaFile", good("two-micro-deposits.ach"));
  ASSERT_NE(file, nullptr) << told();
  EXPECT_EQ(get(file, "ImmediateOriginName"), "Moov, Inc");
  EXPECT_EQ(cvtGetLoopTime(file.get(), test::cs("Batches")), 2);
  EXPECT_EQ(cvtGetLoopTime(file.get(), test::cs("Filler")), 2);
  EXPECT_EQ(get(file, "FileControlTotalDebitEntryDollarAmountInFile"), "1.20");
  ASSERT_TRUE(at(file, "Batches", 1));
  EXPECT_EQ(get(file, "Batches.BatchNumber"), "2");
  ASSERT_EQ(cvtSetLoopTime(file.get(), test::cs("Batches.Entries"), 2), 0);
  EXPECT_EQ(get(file, "Entries.Amount"), "0.44");
  EXPECT_EQ(get(file, "Entries.IndividualName"), "Distracted Austin");
  EXPECT_EQ(get(file, "Batches.BatchControlTotalDebitEntryDollarAmount"), "0.44");
}

TEST_F(Nacha, InternationalBatchesHaveRecordsOfTheirOwn) {
  start();
  const Record file = parse("NachaFile", good("iat-debit.ach"));
  ASSERT_NE(file, nullptr) << told();
  ASSERT_TRUE(at(file, "Batches", 0));
  EXPECT_EQ(get(file, "Batches.IatISODestinationCountryCode"), "US");
  EXPECT_EQ(get(file, "Batches.StandardEntryClassCode"), "");
  ASSERT_EQ(cvtSetLoopTime(file.get(), test::cs("Batches.IatEntries"), 0), 0);
  EXPECT_EQ(get(file, "IatEntries.IatAmount"), "1000.00");
  EXPECT_EQ(get(file, "IatEntries.IatAddendaRecords"), "7");
  ASSERT_EQ(cvtSetLoopTime(file.get(), test::cs("IatEntries.IatAddenda"), 0), 0);
  EXPECT_EQ(get(file, "IatAddenda.IatAddenda10TransactionTypeCode"), "ANN");
}

TEST_F(Nacha, BadFilesAreRefusedWithRecordAndField) {
  start();
  expectRefused("1e5RecordBefore1or8.txt", "FileHeader.FileHeaderRecordType",
                "Offset[0]: expected \"1\", found \"5\"");
  expectRefused("1k8RecordFollowing9Record.txt", "Batches[1].AnyBatch.Batch.BatchControl",
                "expected a record of 94 bytes and a line feed, found 57 bytes");
  expectRefused("1qFormatCodeIncorrect.txt", "FileHeader.FormatCode",
                "Offset[39]: expected \"1\", found \"9\"");
  expectRefused("20110729A-invalid.ach", "FileHeader",
                "expected a record of 94 bytes and a line feed, found 93 bytes");
  expectRefused("adv-noFileControl.ach", "FileControl", "found the end");
  expectRefused("iat-invalidAddenda10.ach",
                "Batches[0].AnyBatch.IatBatch.IatEntries[0].IatAddenda[0].IatAddendum.IatAddenda10."
                "IatAddenda10TransactionTypeCode",
                "found \"BIL\"");
  expectRefused("iat-invalidAddenda11.ach",
                "Batches[0].AnyBatch.IatBatch.IatEntries[0].IatAddenda[1].IatAddendum.IatAddenda11."
                "IatAddenda11OriginatorName",
                "expected text without control characters, found \"BE\\x1A Solutions");
  expectRefused("invalid-two-micro-deposits.ach", "Batches[1].AnyBatch.Batch.Entries[2].Entry.Amount",
                "expected digits, found \"00CCC00004\"");
  expectRefused("short-line.ach", "FileControl", "found 74 bytes");
  expectRefused("long-line.ach", "Batches[0].AnyBatch.Batch.Entries[0].Entry", "found 98 bytes");
}

TEST_F(Nacha, LenientDefinitionAcceptsShortAndLongLines) {
  start("nLenient=\"1\"");
  for (const char *psName : {"short-line.ach", "long-line.ach"}) {
    const Record file = parse("NachaFile", contentOf(kExample + "data/bad/" + psName));
    ASSERT_NE(file, nullptr) << psName << "\n" << told();
    const std::string sBytes = generate(file);
    EXPECT_EQ(sBytes.size() % 95, 0U) << psName;
    EXPECT_NE(parse("NachaFile", sBytes), nullptr) << psName;
  }
}

TEST_F(Nacha, FillerBehindTheControlRecordMustBeNines) {
  start();
  const std::string sBytes = good("two-micro-deposits.ach");
  std::string sDamaged = sBytes;
  sDamaged[sBytes.size() - 10] = '8';
  EXPECT_EQ(parse("NachaFile", sDamaged), nullptr);
  EXPECT_TRUE(told("Field[Filler[1].FillerRecord.Nines]")) << told();
}

TEST_F(Nacha, FillerIsNoControlRecord) {
  start();
  std::string sBytes = good("iat-debit.ach");
  const size_t nControl = sBytes.find("\n9000") + 1;
  sBytes.erase(nControl, 95);
  EXPECT_EQ(parse("NachaFile", sBytes), nullptr);
  EXPECT_TRUE(told("Field[FileControl.FileControlReserved]")) << told();
}

TEST_F(Nacha, FileCutAtAnyByteIsRefusedOrComesBack) {
  start();
  const std::string sBytes = good("iat-debit.ach");
  int nAccepted = 0;
  for (size_t nLen = 0; nLen < sBytes.size(); ++nLen) {
    const std::string sCut = sBytes.substr(0, nLen);
    test::clearLog();
    const Record file = parse("NachaFile", sCut);
    if (file == nullptr) {
      ASSERT_NE(fault(), "no fault was told") << nLen;
      continue;
    }
    ++nAccepted;
    ASSERT_EQ(generate(file), sCut) << nLen;
  }
  // The control record and each of the six fillers, with and without the last line feed; not the whole file.
  EXPECT_EQ(nAccepted, 13);
}

TEST_F(Nacha, FileWithAnyByteChangedIsRefusedOrComesBack) {
  start();
  const std::string sBytes = good("ppd-mixedDebitCredit.ach");
  for (size_t i = 0; i < sBytes.size(); ++i) {
    for (const char cFlip : {'\x01', '\x10', '\x20', '\x40', '\x80', '\xFF'}) {
      std::string sDamaged = sBytes;
      sDamaged[i] = static_cast<char>(sDamaged[i] ^ cFlip);
      test::clearLog();
      const Record file = parse("NachaFile", sDamaged);
      if (file == nullptr) {
        ASSERT_NE(fault(), "no fault was told") << i;
      } else {
        ASSERT_EQ(generate(file), sDamaged) << i;
      }
    }
  }
}

TEST_F(Nacha, EverySmallerBufferIsRefused) {
  start();
  const std::string sBytes = good("iat-debit.ach");
  const Record file = parse("NachaFile", sBytes);
  for (size_t nRoom = 0; nRoom < sBytes.size(); ++nRoom) {
    test::clearLog();
    ASSERT_EQ(generate(file, nRoom), "failed") << nRoom;
    ASSERT_NE(fault().find("expected room for"), std::string::npos) << fault();
  }
}

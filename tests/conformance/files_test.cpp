// Files of records that are cut, broken, too large, or in another character set: read as what they say or
// refused with a trail that says where.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "../unit/bound_records_config.h"
#include "log_capture.h"

namespace {

using test::cs;
using test::logTexts;
using Texts = std::vector<std::string>;

class Files : public test::BoundRecords {
 protected:
  // Reads a pipeline file of that text.
  FormatInfo *read(const std::string &sText) {
    m_tree.file("id.xml", sText);
    m_sFile = m_tree.path("id.xml");
    test::clearLog();
    nGRet = 0;
    return static_cast<FormatInfo *>(sttParseXmlFile(m_sFile.data(), cs("Id"), cs("FormatInfo"),
                                                     reinterpret_cast<void *>(sttParseXmlFormatInfo)));
  }

  // The trail of a file that is no XML.
  Texts refused(const std::string &sReason) const {
    return {"[ptXmlDoc = xmlFileParse(psFileName)] is NULL", "File[" + m_sFile + "] " + sReason};
  }

  std::string m_sFile;
};

using AnyFile = Files;
using CutFile = Files;
using BrokenFile = Files;
using CharacterSet = Files;
using LargeFile = Files;

const std::string kGood =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- pipelines -->\n<Id><FormatInfo "
    "psFormatId=\"a&lt;&#x4E2D;\">"
    "<IdFunc __ID=\"ptParseFunc\" psFunctName=\"pubParse\"><any/></IdFunc>"
    "<![CDATA[ ]]></FormatInfo></Id>";

// --- Cut and broken ----------------------------------------------------------------------------------------

TEST_F(CutFile, IsRefusedWhereverItIsCut) {
  for (size_t n = 0; n < kGood.size(); ++n) {
    ASSERT_EQ(read(kGood.substr(0, n)), nullptr) << n;
    ASSERT_EQ(logTexts().size(), 2U) << n;
    ASSERT_EQ(logTexts()[0], "[ptXmlDoc = xmlFileParse(psFileName)] is NULL") << n;
    ASSERT_EQ(logTexts()[1].rfind("File[" + m_sFile + "] ", 0), 0U) << n;
    ASSERT_EQ(nGRet, 0) << n;
  }
  EXPECT_NE(read(kGood), nullptr);
  EXPECT_EQ(logTexts(), Texts{});
}

// A record without a line, or lines without a record that say what is wrong.
TEST_F(BrokenFile, IsReadOrRefusedWithATrailWhateverByteIsWrong) {
  for (size_t n = 0; n < kGood.size(); ++n) {
    for (const char c : {'\0', '\xff', '<'}) {
      std::string sText = kGood;
      sText[n] = c;
      const bool bRead = read(sText) != nullptr;
      Texts lines = logTexts();
      std::erase_if(lines, [](const std::string &s) { return s.find("] Not Define") != std::string::npos; });
      ASSERT_EQ(bRead, lines.empty()) << n << " " << c;
      ASSERT_TRUE(bRead || lines.back().find(m_sFile) != std::string::npos) << n << " " << c;
    }
  }
}

TEST_F(BrokenFile, IsNoFileOfRecordsWhenItIsEmptyZerosOrSomethingElse) {
  EXPECT_EQ(read(""), nullptr);
  EXPECT_EQ(logTexts(), refused("line 1: Document is empty"));
  EXPECT_EQ(read(std::string(1000, '\0')), nullptr);
  EXPECT_EQ(logTexts().size(), 2U);
  EXPECT_EQ(read("\x7f"
                 "ELF\x02\x01\x01"),
            nullptr);
  EXPECT_EQ(logTexts(), refused("line 1: Start tag expected, '<' not found"));
}

TEST_F(BrokenFile, MayHaveAnyName) {
  std::string sFile(5000, 'n');
  EXPECT_EQ(sttParseXmlFile(sFile.data(), cs("Id"), cs("FormatInfo"),
                            reinterpret_cast<void *>(sttParseXmlFormatInfo)),
            nullptr);
  m_sFile = sFile;
  EXPECT_EQ(logTexts().at(0), refused("").at(0));
  EXPECT_EQ(logTexts().at(1).rfind("File[" + sFile + "] ", 0), 0U);
}

// As a server does that has closed its standard input.
TEST_F(AnyFile, MayBeReadAsDescriptorZero) {
  const int nSaved = dup(STDIN_FILENO);
  close(STDIN_FILENO);
  EXPECT_NE(read(kGood), nullptr);
  EXPECT_EQ(logTexts(), Texts{});
  EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), -1) << "the file is closed again";
  if (nSaved >= 0) {
    dup2(nSaved, STDIN_FILENO);
    close(nSaved);
  }
}

// --- Character sets ----------------------------------------------------------------------------------------

TEST_F(CharacterSet, OfAFileIsTheOneItDeclares) {
  const FormatInfo *const ptGb = read(
      "<?xml version='1.0' encoding='GB18030'?><Id><FormatInfo psFormatId='\xd6\xd0\x90\x30\x81\x30'/></Id>");
  ASSERT_NE(ptGb, nullptr);
  EXPECT_STREQ(ptGb->psFormatId, "\xe4\xb8\xad\xf0\x90\x80\x80");
  const FormatInfo *const ptLatin =
      read("<?xml version='1.0' encoding='ISO-8859-1'?><Id><FormatInfo psFormatId='\xe9'/></Id>");
  ASSERT_NE(ptLatin, nullptr);
  EXPECT_STREQ(ptLatin->psFormatId, "\xc3\xa9");
}

TEST_F(CharacterSet, MayBeToldByTheFirstBytes) {
  std::string sWide = "\xff\xfe";
  for (const char c : std::string("<Id><FormatInfo psFormatId='a'/></Id>")) sWide += {c, '\0'};
  const FormatInfo *const pt = read(sWide);
  ASSERT_NE(pt, nullptr);
  EXPECT_STREQ(pt->psFormatId, "a");
  EXPECT_NE(read("\xef\xbb\xbf<Id><FormatInfo psFormatId='a'/></Id>"), nullptr);
}

TEST_F(CharacterSet, IsUtf8WithoutADeclarationAndNothingElse) {
  EXPECT_EQ(read("<Id><FormatInfo psFormatId='\xd6\xd0'/></Id>"), nullptr);
  EXPECT_EQ(logTexts(),
            refused("line 1: Input is not proper UTF-8, indicate encoding ! Bytes: 0xD6 0xD0 0x27 0x2F"));
}

TEST_F(CharacterSet, ThatIsUnknownOrBrokenIsRefused) {
  EXPECT_EQ(read("<?xml version='1.0' encoding='NONE'?><Id><FormatInfo/></Id>"), nullptr);
  EXPECT_EQ(logTexts(), refused("line 1: Unsupported encoding NONE"));
  for (const char *const psBytes : {"\xff\xff", "\xd6", "\x90\x30\x81"}) {
    EXPECT_EQ(read("<?xml version='1.0' encoding='GB18030'?><Id><FormatInfo psFormatId='" +
                   std::string(psBytes) + "'/></Id>"),
              nullptr);
    EXPECT_EQ(logTexts().size(), 2U);
  }
}

// --- Too large ---------------------------------------------------------------------------------------------

TEST_F(LargeFile, MayHoldALongNameButNotOneBeyondEveryMeasure) {
  const std::string sName(1000000, 'n');
  const FormatInfo *const pt = read("<Id><FormatInfo psFormatId='" + sName + "'/></Id>");
  ASSERT_NE(pt, nullptr);
  EXPECT_EQ(pt->psFormatId, sName);
  EXPECT_EQ(read("<Id><FormatInfo psFormatId='" + std::string(11000000, 'n') + "'/></Id>"), nullptr);
  EXPECT_EQ(logTexts(), refused("line 1: a tag, text or comment has more than 1 MiB: make it shorter"));
}

TEST_F(LargeFile, MayNotNestWithoutEnd) {
  std::string sText = "<Id>";
  for (int i = 0; i < 1000; ++i) sText += "<a>";
  EXPECT_EQ(read(sText), nullptr);
  EXPECT_EQ(logTexts(), refused("line 1: Excessive depth in document: 256 use XML_PARSE_HUGE option"));
}

TEST_F(LargeFile, MayHaveAttributesThatNobodyReadsButNotThousands) {
  const auto withAttributes = [](int nAttributes) {
    std::string sText = "<Id><FormatInfo psFormatId='a'";
    for (int i = 0; i < nAttributes; ++i) sText.append(" a").append(std::to_string(i)).append("=''");
    return sText + "/></Id>";
  };
  EXPECT_NE(read(withAttributes(399)), nullptr);
  EXPECT_EQ(logTexts(), Texts{});
  EXPECT_EQ(read(withAttributes(2000)), nullptr);
  EXPECT_EQ(logTexts(), refused("line 1: an element has more than 400 attributes: take some out"));
}

}  // namespace

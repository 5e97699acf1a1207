#include "kit/attributes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "config_tree.h"
#include "cvt_message.h"
#include "log_capture.h"

using namespace cvt::kit;
using test::cs;

namespace {

struct CVT_RECORD Sample {
  RecordHead head;
  int nLen;
  int nAlign;
  int nPad;
  int nFlag;
  char *psText;
  char *psGiven;
};

constexpr const char *kAligns[] = {"left", "right"};
constexpr Attribute kRows[] = {
    KIT_INT(Sample, nLen, 0, 1, 99, "length"),
    KIT_WORD(Sample, nAlign, "psAlign", -1, kAligns, "alignment"),
    KIT_BYTE(Sample, nPad, "psPad", ' ', "fills"),
    KIT_FLAG(Sample, nFlag, 0, "switch"),
    KIT_TEXT(Sample, psText, nullptr, "any text"),
    KIT_TEXT(Sample, psGiven, "given", "has a default"),
};

const char *checkSample(const void *record) {
  return static_cast<const Sample *>(record)->nLen == 13 ? "expected another length, found 13." : nullptr;
}

constexpr RecordType kSample = KIT_RECORD_CHECKED(Sample, kRows, "a sample", checkSample);

struct CVT_RECORD Strict {
  RecordHead head;
  int nMust;
};
constexpr Attribute kStrictRows[] = {KIT_INT(Strict, nMust, 0, 1, 9, "what must be there").require()};
constexpr RecordType kStrict = KIT_RECORD(Strict, kStrictRows, "strict");

// An element in a file of its own, so that its place is known.
class Element {
 public:
  explicit Element(const std::string &sXml) {
    m_tree.file("a.xml", "<root>\n  " + sXml + "\n</root>\n");
    m_doc = xmlFileParse(m_tree.arg("a.xml"));
  }
  ~Element() { xmlDocFree(m_doc); }
  Element(const Element &) = delete;
  Element &operator=(const Element &) = delete;

  void *get() const { return xmlGetChileNode(xmlGetHeadNode(m_doc)); }
  std::string file() const { return m_tree.path("a.xml"); }

 private:
  test::ConfigTree m_tree;
  void *m_doc;
};

const Sample *read(const Element &element) {
  nGRet = 0;
  return static_cast<const Sample *>(readRecord(kSample, element.get()));
}

// The line of a refusal without "File[...".
std::string refusal(const std::string &sXml, const RecordType &type = kSample) {
  const Element element(sXml);
  test::clearLog();
  nGRet = 0;
  EXPECT_EQ(readRecord(type, element.get()), nullptr);
  EXPECT_EQ(nGRet, -1);
  const std::vector<std::string> lines = test::logTexts();
  if (lines.size() != 1) return std::to_string(lines.size()) + " lines";
  const std::string place = "File[" + element.file() + ":2] ";
  EXPECT_EQ(lines[0].substr(0, place.size()), place);
  return lines[0].substr(place.size());
}

}  // namespace

TEST(KitAttributes, AbsentAttributesHaveTheirDefaults) {
  const Element element("<Sample __ID=\"pInfo\"/>");
  const Sample *sample = read(element);
  ASSERT_NE(sample, nullptr);
  EXPECT_EQ(sample->nLen, 0);
  EXPECT_EQ(sample->nAlign, -1);
  EXPECT_EQ(sample->nPad, ' ');
  EXPECT_EQ(sample->nFlag, 0);
  EXPECT_EQ(sample->psText, nullptr);
  EXPECT_STREQ(sample->psGiven, "given");
}

TEST(KitAttributes, EveryKindIsRead) {
  const Element element(
      "<Sample nLen=\"99\" psAlign=\"right\" psPad=\"0\" nFlag=\"1\" psText=\"a &lt; b\" psGiven=\"\"/>");
  const Sample *sample = read(element);
  ASSERT_NE(sample, nullptr);
  EXPECT_EQ(sample->nLen, 99);
  EXPECT_EQ(sample->nAlign, 1);
  EXPECT_EQ(sample->nPad, '0');
  EXPECT_EQ(sample->nFlag, 1);
  EXPECT_STREQ(sample->psText, "a < b");
  EXPECT_STREQ(sample->psGiven, "");
}

TEST(KitAttributes, StringsAreInterned) {
  const Element element("<Sample psText=\"x\"/>");
  EXPECT_EQ(static_cast<char *>(read(element)->psText), cvtStrDup(cs("x")));
}

TEST(KitAttributes, ByteWrittenAsHexadecimalIsNotTheCharacter) {
  const Element element("<Sample psPad=\"0x40\"/>");
  EXPECT_EQ(read(element)->nPad, kRawByte + 0x40);
}

TEST(KitAttributes, UnknownAttributeIsRefusedWithTheNearestName) {
  EXPECT_EQ(refusal("<Sample nLenn=\"3\"/>"),
            "Element[Sample] Attribute[nLenn]: expected one of nLen, psAlign, psPad, nFlag, psText, psGiven, "
            "found nLenn. Write nLen");
  EXPECT_EQ(
      refusal("<Sample psalign=\"left\"/>"),
      "Element[Sample] Attribute[psalign]: expected one of nLen, psAlign, psPad, nFlag, psText, psGiven, "
      "found psalign. Write psAlign");
  EXPECT_EQ(
      refusal("<Sample quiteAnotherThing=\"3\"/>"),
      "Element[Sample] Attribute[quiteAnotherThing]: expected one of nLen, psAlign, psPad, nFlag, psText, "
      "psGiven, found quiteAnotherThing. Remove it");
}

TEST(KitAttributes, AttributeOfANamespaceIsUnknown) {
  EXPECT_NE(refusal("<Sample xml:nLen=\"3\"/>").find("found nLen"), std::string::npos);
}

TEST(KitAttributes, NumbersAreStrict) {
  const char *const expected = "Element[Sample] Attribute[nLen]: expected a number from 1 to 99, found ";
  for (const char *bad : {"", "0", "100", "-1", "+1", " 1", "1 ", "1x", "0x1", "99999999999999"}) {
    EXPECT_EQ(refusal("<Sample nLen=\"" + std::string(bad) + "\"/>"),
              expected + ("\"" + std::string(bad) + "\"."));
  }
  EXPECT_EQ(refusal("<Sample nFlag=\"2\"/>"),
            "Element[Sample] Attribute[nFlag]: expected 0 or 1, found \"2\".");
}

TEST(KitAttributes, WordsAreThoseOfTheTable) {
  EXPECT_EQ(refusal("<Sample psAlign=\"rigth\"/>"),
            "Element[Sample] Attribute[psAlign]: expected one of left, right, found \"rigth\". Write right");
  EXPECT_EQ(refusal("<Sample psAlign=\"Centered\"/>"),
            "Element[Sample] Attribute[psAlign]: expected one of left, right, found \"Centered\".");
}

TEST(KitAttributes, BytesAreOneCharacterOrTwoHexadecimalDigits) {
  for (const char *bad : {"", "ab", "0x", "0x1", "0x123", "0xGG", "0x-1", "\xC3\xA9"}) {
    EXPECT_NE(refusal("<Sample psPad=\"" + std::string(bad) + "\"/>").find("one ASCII character, or 0xNN"),
              std::string::npos)
        << bad;
  }
}

TEST(KitAttributes, RequiredAttributeMustBeThere) {
  EXPECT_EQ(
      refusal("<Strict/>", kStrict),
      "Element[Strict] Attribute[nMust]: expected a number from 1 to 9, found no such attribute. It is what "
      "must be there");
}

TEST(KitAttributes, ElementsInsideARecordAreRefused) {
  EXPECT_EQ(refusal("<Sample><Other/></Sample>"),
            "Element[Other]: expected nothing inside Sample, found Other. "
            "Write it behind that element");
}

TEST(KitAttributes, CommentsInsideARecordAreNot) {
  const Element element("<Sample><!-- why --></Sample>");
  EXPECT_NE(read(element), nullptr);
}

TEST(KitAttributes, WholeRecordIsChecked) {
  EXPECT_EQ(refusal("<Sample nLen=\"13\"/>"), "Element[Sample]: expected another length, found 13.");
}

TEST(KitAttributes, RecordIsKnownByItsType) {
  const Element element("<Sample/>");
  const Sample *sample = read(element);
  EXPECT_TRUE(isRecord(sample, kSample));
  EXPECT_FALSE(isRecord(sample, kStrict));
  EXPECT_EQ(recordAs<Strict>(sample, kStrict), nullptr);
  EXPECT_EQ(recordName(sample), "Sample");
  EXPECT_EQ(recordPlace(sample), element.file() + ":2");
}

TEST(KitAttributes, OtherRecordsAreNotTakenForOurs) {
  const LoopType loop{};
  const Value value{};
  const auto shortText = std::make_unique<char[]>(1);  // an empty "String"
  for (const void *other : {static_cast<const void *>(&loop), static_cast<const void *>(&value),
                            static_cast<const void *>(shortText.get())}) {
    EXPECT_FALSE(isRecord(other, kSample));
    EXPECT_FALSE(isPlugRecord(other));
    EXPECT_EQ(recordName(other), "a record of another kind");
    EXPECT_EQ(recordPlace(other), "");
  }
  EXPECT_FALSE(isRecord(nullptr, kSample));
  EXPECT_EQ(recordName(nullptr), "nothing");
}

TEST(KitAttributes, NewRecordHasDefaultsAndNoPlace) {
  const auto *sample = static_cast<const Sample *>(newRecord(kSample));
  EXPECT_TRUE(isRecord(sample, kSample));
  EXPECT_STREQ(sample->psGiven, "given");
  EXPECT_EQ(recordPlace(sample), "");
}

TEST(KitAttributes, WritingLeavesDefaultsOut) {
  const Element element("<Sample/>");
  const Element target("<Sample/>");
  ASSERT_NE(writeRecord(kSample, read(element), target.get()), nullptr);
  EXPECT_EQ(xmlGetNodeAttr(target.get(), cs("psGiven")), nullptr);
  EXPECT_EQ(xmlGetNodeAttr(target.get(), cs("nLen")), nullptr);
}

TEST(KitAttributes, WhatIsWrittenReadsTheSame) {
  const char *const all[] = {
      "<Sample nLen=\"7\" psAlign=\"left\" psPad=\"*\" nFlag=\"1\" psText=\"\" psGiven=\"&quot;x&quot;\"/>",
      "<Sample psPad=\"0x0A\" psAlign=\"right\"/>", "<Sample psPad=\"0x20\"/>"};
  for (const char *xml : all) {
    const Element element(xml);
    const Element target("<Sample/>");
    const Sample *first = read(element);
    ASSERT_NE(writeRecord(kSample, first, target.get()), nullptr);
    const Sample *second = read(target);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(std::memcmp(&first->nLen, &second->nLen, sizeof(Sample) - offsetof(Sample, nLen)), 0) << xml;
  }
}

TEST(KitAttributes, WritingAnotherRecordFails) {
  const Element target("<Sample/>");
  nGRet = 0;
  EXPECT_EQ(writeRecord(kSample, newRecord(kStrict), target.get()), nullptr);
  EXPECT_EQ(nGRet, -1);
}

TEST(KitAttributes, TypesAreRememberedOnlyWhenAskedFor) {
  const Element element("<Sample/>");
  EXPECT_EQ(sttGetVoidType(const_cast<Sample *>(read(element))), nullptr);
  rememberTypes(true);
  EXPECT_STREQ(sttGetVoidType(const_cast<Sample *>(read(element))), "Sample");
}

TEST(KitAttributes, TableDescribesItself) {
  EXPECT_EQ(markdownTable(kSample),
            "| attribute | values | default | meaning |\n|---|---|---|---|\n"
            "| `nLen` | a number from 1 to 99 |  | length |\n"
            "| `psAlign` | one of left, right |  | alignment |\n"
            "| `psPad` | one ASCII character, or 0xNN | blank | fills |\n"
            "| `nFlag` | 0 or 1 | 0 | switch |\n"
            "| `psText` | text |  | any text |\n"
            "| `psGiven` | text | given | has a default |\n");
  EXPECT_NE(markdownTable(kStrict).find("| required |"), std::string::npos);
}

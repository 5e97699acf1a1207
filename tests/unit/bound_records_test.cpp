// The four functions of every bound record type, and the dispatcher pairs of the modules: each check runs on
// every type of the table.
#include "bound_records.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "bound_records_config.h"
#include "log_capture.h"
#include "xml_text.h"

namespace {

using test::Arguments;
using test::cs;
using test::Field;
using test::isAttribute;
using test::isMade;
using test::isSection;
using test::Kind;
using test::logTexts;
using test::parseStatement;
using test::Record;
using test::recordOf;
using test::setAt;
using test::valueAt;
using test::writeStatement;
using test::Xml;
using Texts = std::vector<std::string>;

class EachRecord : public test::BoundRecords {
 protected:
  // Runs a check on every type, each from a fresh start.
  void each(void (*check)(const Record &)) {
    for (const Record &record : test::records()) {
      SCOPED_TRACE(record.sType);
      restart();
      check(record);
    }
  }
};

char *typeOf(const Record &record) {
  return cs(record.sType.c_str());
}

// --- Make and New ------------------------------------------------------------------------------------------

void expectArguments(const Record &record, const void *p, Arguments &arguments) {
  int n = Arguments::kFirst;
  for (const Field &field : record.fields) {
    SCOPED_TRACE(field.sName);
    switch (field.kind) {
      case Kind::kText:
        EXPECT_STREQ(valueAt<char *>(p, field), arguments.text(n));
        EXPECT_EQ(valueAt<char *>(p, field), cvtStrDup(arguments.text(n)));  // the interned copy
        break;
      case Kind::kInt:
        EXPECT_EQ(valueAt<int>(p, field), n);
        break;
      case Kind::kChar:
        EXPECT_EQ(valueAt<char>(p, field), 'a' + n);
        break;
      default:
        EXPECT_EQ(valueAt<void *>(p, field), arguments.pointer(n));
    }
    ++n;
  }
}

// Whether p lies in the memory of the configuration.
bool inGlobalNode(const void *p) {
  for (const MemBlock *pt : {gptGlobalNode->ptHeadBlock, gptGlobalNode->ptNowBlock}) {
    for (; pt != nullptr; pt = pt->ptNext) {
      if (p >= pt->psBuf && p < pt->psBuf + pt->nMaxSize) return true;
    }
  }
  return false;
}

TEST_F(EachRecord, IsMadeOfInternedTextAndTheRestAsItIs) {
  each([](const Record &record) {
    std::vector<char> memory(record.nSize);
    Arguments arguments;
    ASSERT_EQ(record.make(memory.data(), arguments), memory.data());
    expectArguments(record, memory.data(), arguments);
  });
}

TEST_F(EachRecord, MadeOfNothingIsNothing) {
  each([](const Record &record) {
    Arguments arguments;
    EXPECT_EQ(record.make(nullptr, arguments), nullptr);
    EXPECT_EQ(logTexts(0), Texts{});
  });
}

TEST_F(EachRecord, IsNewInTheConfigurationsMemory) {
  each([](const Record &record) {
    Arguments arguments;
    void *const p = record.create(arguments);
    ASSERT_NE(p, nullptr);
    EXPECT_TRUE(inGlobalNode(p));
    expectArguments(record, p, arguments);
  });
}

// --- Elements ----------------------------------------------------------------------------------------------

enum class Fill { kNeeded, kAll };

std::string attributes(const Record &record, Fill fill) {
  std::string s;
  for (const Field &field : record.fields) {
    if (!isAttribute(field)) continue;
    const auto needed = record.needed.find(field.sName);
    if (needed == record.needed.end() && fill == Fill::kNeeded) continue;
    std::string sValue = field.kind == Kind::kText ? "v-" + field.sName : "7";
    if (needed != record.needed.end()) sValue = needed->second;
    s += " " + field.sName + "=\"" + sValue + "\"";
  }
  return s;
}

std::string element(const std::string &sType, const std::string &sId, const std::string &sAttributes,
                    const std::string &sInside = "") {
  return "<" + sType + (sId.empty() ? "" : " __ID=\"" + sId + "\"") + sAttributes +
         (sInside.empty() ? "/>" : ">" + sInside + "</" + sType + ">");
}

// An element of a field's type that is read without failure.
std::string good(const Field &field, const std::string &sInside = "") {
  if (isSection(field)) {
    return element(field.sType, field.sName, field.sType == "Message" ? " gnMaxLoop=\"999\"" : "");
  }
  if (field.kind == Kind::kVoid) return element("Value", field.sName, " psValue=\"v\"");
  const Record &record = *recordOf(field.sType);
  return element(field.sType, field.sName, attributes(record, Fill::kNeeded), sInside + record.sNeededInside);
}

// A record's element, with what stands behind it, under a root. The list of a StructAttr is that of the node
// around it.
std::string document(const Record &record, const std::string &sAttributes, const std::string &sInside,
                     const std::string &sBehind = "") {
  const std::string sElement = element(record.sType, "", sAttributes, sInside);
  const bool bInNode = record.sType == "StructAttr";
  return "<r>" + (bInNode ? element("Message", "", "", sElement) : sElement) + sBehind + "</r>";
}

void *elementIn(const Record &record, const Xml &xml) {
  return record.sType == "StructAttr" ? Xml::childOf(xml.child()) : xml.child();
}

// The whole record, its list continued by one more.
std::string whole(const Record &record) {
  std::string sInside;
  std::string sBehind;
  for (const Field &field : record.fields) {
    if (isAttribute(field) || isMade(field)) continue;
    (field.kind == Kind::kNext ? sBehind : sInside) += good(field);
  }
  return document(record, attributes(record, Fill::kAll), sInside, sBehind);
}

// Only what it cannot be read without.
std::string bare(const Record &record) {
  return document(record, attributes(record, Fill::kNeeded), record.sNeededInside);
}

void *read(const Record &record, const Xml &xml) {
  return record.parse(elementIn(record, xml), typeOf(record));
}

// --- The XML form ------------------------------------------------------------------------------------------

// Tells the writers the types of the records reached through Void fields. What a step of its own made there
// is never written as it is.
void nameRecords(const Record &record, void *p) {
  for (const Field &field : record.fields) {
    if (isAttribute(field) || isSection(field)) continue;
    void *const pValue = valueAt<void *>(p, field);
    if (pValue == nullptr) continue;
    if (isMade(field)) {
      setAt<void *>(p, field, nullptr);
    } else if (field.kind == Kind::kVoid) {
      sttSetVoidType(pValue, cs("Value"));
    } else {
      nameRecords(*recordOf(field.sType), pValue);
    }
  }
}

std::string rewritten(const Record &record, void *p) {
  nameRecords(record, p);
  const Xml xml(document(record, "", ""));
  void *const ptNode = elementIn(record, xml);
  EXPECT_EQ(record.gen(p, ptNode, typeOf(record)), ptNode);
  EXPECT_EQ(nGRet, 0);
  return xml.text();
}

TEST_F(EachRecord, IsReadAndWrittenWithEveryFieldInOrder) {
  each([](const Record &record) {
    const Xml xml(whole(record));
    void *const p = read(record, xml);
    ASSERT_NE(p, nullptr);
    EXPECT_TRUE(inGlobalNode(p));
    EXPECT_EQ(rewritten(record, p), xml.text());
  });
}

TEST_F(EachRecord, IsReadWithItsTextInterned) {
  each([](const Record &record) {
    void *const p = read(record, Xml(whole(record)));
    ASSERT_NE(p, nullptr);
    for (const Field &field : record.fields) {
      if (field.kind != Kind::kText) continue;
      char *const psValue = valueAt<char *>(p, field);
      ASSERT_NE(psValue, nullptr) << field.sName;
      EXPECT_EQ(psValue, cvtStrDup(psValue)) << field.sName;
    }
  });
}

TEST_F(EachRecord, HasNullAndZeroForWhatIsAbsentAndDoesNotWriteThem) {
  each([](const Record &record) {
    const Xml xml(bare(record));
    void *const p = read(record, xml);
    ASSERT_NE(p, nullptr);
    for (const Field &field : record.fields) {
      const bool bNeeded = record.needed.count(field.sName) != 0 ||
                           record.sNeededInside.find("'" + field.sName + "'") != std::string::npos;
      if (bNeeded || isMade(field)) continue;
      SCOPED_TRACE(field.sName);
      if (field.kind == Kind::kInt) {
        EXPECT_EQ(valueAt<int>(p, field), 0);
      } else if (field.kind == Kind::kChar) {
        EXPECT_EQ(valueAt<char>(p, field), 0);
      } else if (!isSection(field)) {
        EXPECT_EQ(valueAt<void *>(p, field), nullptr);
      }
    }
    EXPECT_EQ(rewritten(record, p), xml.text());
  });
}

TEST_F(EachRecord, IsNothingWithoutElementOrRecord) {
  each([](const Record &record) {
    Arguments arguments;
    void *const p = record.create(arguments);
    nGRet = 0;
    const Xml xml("<a/>");
    EXPECT_EQ(record.parse(nullptr, typeOf(record)), nullptr);
    EXPECT_EQ(record.gen(nullptr, xml.root(), typeOf(record)), nullptr);
    EXPECT_EQ(record.gen(p, nullptr, typeOf(record)), nullptr);
    EXPECT_EQ(xml.text(), "<a/>");
    EXPECT_EQ(logTexts(0), Texts{});
    EXPECT_EQ(nGRet, 0);
  });
}

// --- Dispatch ----------------------------------------------------------------------------------------------

TEST_F(EachRecord, IsKnownToTheDispatchersOfItsModuleOnly) {
  each([](const Record &record) {
    const Xml xml(whole(record));
    std::vector<char> memory(record.nSize);
    for (const test::Module &module : test::modules()) {
      SCOPED_TRACE(module.sName);
      void *const p = module.parse(elementIn(record, xml), typeOf(record));
      const Xml out(document(record, "", ""));
      void *const ptNode = elementIn(record, out);
      if (module.sName != record.sModule) {
        EXPECT_EQ(p, nullptr);
        EXPECT_EQ(module.gen(memory.data(), ptNode, cs("any"), typeOf(record)), nullptr);
        continue;
      }
      ASSERT_NE(p, nullptr);
      nameRecords(record, p);
      EXPECT_EQ(module.gen(p, ptNode, cs("any"), typeOf(record)), ptNode);
      EXPECT_EQ(out.text(), xml.text());
    }
  });
}

TEST_F(EachRecord, IsDispatchedByItsExactNameAndNoOtherSilently) {
  const Xml xml("<Value/>");
  for (const test::Module &module : test::modules()) {
    for (char *const psType : {cs("value"), cs("Value "), cs("Val"), cs(""), cs("None"), cs(nullptr)}) {
      EXPECT_EQ(module.parse(xml.root(), psType), nullptr);
      EXPECT_EQ(module.gen(&nGRet, xml.root(), cs("any"), psType), nullptr);
    }
  }
  EXPECT_EQ(logTexts(0), Texts{});
}

// --- Order and failures of reading -------------------------------------------------------------------------

// An element of a field's type that logs "Type[sMark] Not Define" while it is read; none for types that hold
// no record of any type.
std::optional<std::string> marked(const Field &field, const std::string &sMark) {
  if (isSection(field) || isMade(field)) return {};
  if (field.kind == Kind::kVoid) return element(sMark, field.sName, "");
  if (isAttribute(field)) return {};
  for (const Field &inner : recordOf(field.sType)->fields) {
    if (inner.kind == Kind::kNext) continue;
    if (const auto inside = marked(inner, sMark)) return good(field, *inside);
  }
  return {};
}

TEST_F(EachRecord, IsReadInDeclaredOrderWhateverTheFilesOrder) {
  each([](const Record &record) {
    std::string sInside;
    std::string sBehind;
    Texts expected;
    for (const Field &field : record.fields) {
      const auto mark = marked(field, "of-" + field.sName);
      if (!mark) continue;
      expected.push_back("Type[of-" + field.sName + "] Not Define");
      if (field.kind == Kind::kNext) {
        sBehind = *mark;
      } else {
        sInside = *mark + sInside;
      }
    }
    const Xml xml(document(record, attributes(record, Fill::kNeeded), sInside, sBehind));
    EXPECT_NE(read(record, xml), nullptr);
    Texts seen = logTexts();
    std::erase_if(seen, [](const std::string &s) { return s.find("Type[") != 0; });
    EXPECT_EQ(seen, expected);
  });
}

// An element of a field's type that cannot be read; none where nothing can go wrong.
std::optional<std::string> broken(const Field &field) {
  if (isSection(field))
    return "<" + field.sType + " __ID='" + field.sName + "'" + field.sBroken + "</" + field.sType + ">";
  if (isAttribute(field) || isMade(field)) return {};
  if (field.kind == Kind::kVoid) return element("Fail", field.sName, "");
  const Record &record = *recordOf(field.sType);
  for (const Field &inner : record.fields) {
    if (inner.kind == Kind::kNext) continue;
    if (const auto inside = broken(inner)) return element(field.sType, field.sName, "", *inside);
  }
  if (!record.needed.empty()) return element(field.sType, field.sName, "");
  return {};
}

// The source file that binds the records of a module.
std::string unitOf(const Record &record) {
  if (record.sModule == "cvt_message") return "stt_cvt_message.cpp";
  if (record.sModule == "_cvt_message") return "cvt_message.cpp";
  if (record.sModule == "cvt_convert") return "cvt_convert_bind.cpp";
  return record.sModule + ".cpp";
}

// The line of a statement that failed is the last one.
void expectLast(const Record &record, const std::string &sStatement, const std::string &sFunction) {
  ASSERT_FALSE(test::logLines().empty());
  const test::LogLine &last = test::logLines().back();
  EXPECT_EQ(last.sText, sStatement + " is Err!!");
  EXPECT_EQ(last.nLevel, 1);
  EXPECT_EQ(last.sModule, "$cvt2");
  EXPECT_EQ(last.sFile, unitOf(record));
  EXPECT_EQ(last.sFunction, sFunction + record.sType);
}

void readBadly(const Record &record, const Field &field, const std::string &sBroken) {
  const bool bNext = field.kind == Kind::kNext;
  const Xml xml(document(record, attributes(record, Fill::kNeeded),
                         (bNext ? "" : sBroken) + record.sNeededInside, bNext ? sBroken : ""));
  test::clearLog();
  nGRet = 0;
  EXPECT_EQ(read(record, xml), nullptr);
  EXPECT_EQ(nGRet, -1);
  expectLast(record, parseStatement(field), "sttParseXml");
}

TEST_F(EachRecord, FailsWithAFieldThatCannotBeReadAndQuotesTheStatement) {
  each([](const Record &record) {
    for (const Field &field : record.fields) {
      SCOPED_TRACE(field.sName);
      if (const auto sBroken = broken(field)) readBadly(record, field, *sBroken);
    }
  });
}

TEST_F(EachRecord, IsReadAlsoWhenTheFlagIsStillRaised) {
  each([](const Record &record) {
    nGRet = -1;
    EXPECT_NE(read(record, Xml(whole(record))), nullptr);
    EXPECT_EQ(nGRet, 0);
  });
}

// --- Failures of writing -----------------------------------------------------------------------------------

char f_nobody;  // a record of no known type

// A record that cannot be written, since it holds one of no known type; null where nothing can go wrong.
void *unwritable(const std::string &sType) {
  const Record &record = *recordOf(sType);
  for (const Field &field : record.fields) {
    if (isAttribute(field) || field.kind == Kind::kNext) continue;
    void *const pInner = field.kind == Kind::kVoid ? &f_nobody : unwritable(field.sType);
    if (pInner == nullptr) continue;
    void *const p = cvtMemMalloc(static_cast<int>(record.nSize));
    setAt(p, field, pInner);
    return p;
  }
  return nullptr;
}

// Writes a record of which only that field is set.
void writeBadly(const Record &record, const Field &field, void *ptXmlNode, void *pValue) {
  std::vector<char> memory(record.nSize);
  if (field.kind == Kind::kInt) {
    setAt(memory.data(), field, 1);
  } else if (field.kind == Kind::kChar) {
    setAt(memory.data(), field, 'c');
  } else {
    setAt(memory.data(), field, pValue);
  }
  test::clearLog();
  nGRet = 0;
  EXPECT_EQ(record.gen(memory.data(), ptXmlNode, typeOf(record)), nullptr);
  EXPECT_EQ(nGRet, -1);
  expectLast(record, writeStatement(field), "sttGenXml");
}

void writeFieldBadly(const Record &record, const Field &field) {
  if (isAttribute(field)) {
    const Xml xml("<a><!--takes no attribute, and is dropped--></a>");
    writeBadly(record, field, xml.child(), cs("v"));
    EXPECT_EQ(xml.text(), "<a/>");
  } else if (field.kind == Kind::kNext) {  // an element without a parent has no room beside it
    void *const ptNode = xmlMadeNode(typeOf(record));
    std::vector<char> next(record.nSize);
    writeBadly(record, field, ptNode, next.data());
    xmlNodeFree(ptNode);
  } else {
    void *const p = field.kind == Kind::kVoid ? &f_nobody : unwritable(field.sType);
    if (p != nullptr) writeBadly(record, field, Xml("<a/>").root(), p);
  }
}

TEST_F(EachRecord, FailsWithAFieldThatCannotBeWrittenAndQuotesTheStatement) {
  each([](const Record &record) {
    for (const Field &field : record.fields) {
      SCOPED_TRACE(field.sName);
      if (!isSection(field)) writeFieldBadly(record, field);
    }
  });
}

// --- The statements that no input can make fail
// --------------------------------------------------------------

TEST_F(EachRecord, HasTheTextOfEveryStatementInTheLibrary) {
  std::ifstream in(CVT2_BUILD_DIR "/lib/libcvt2.so", std::ios::binary);
  const std::string sLibrary{std::istreambuf_iterator<char>(in), {}};
  ASSERT_FALSE(sLibrary.empty());
  for (const Record &record : test::records()) {
    Texts statements = record.derived;
    for (const Field &field : record.fields) {
      statements.push_back(parseStatement(field));
      statements.push_back(writeStatement(field));
    }
    for (const std::string &sStatement : statements) {
      EXPECT_NE(sLibrary.find(sStatement + '\0'), std::string::npos) << record.sType << ": " << sStatement;
    }
  }
}

}  // namespace

// XML that means harm, as a configuration file and as a message: it is refused with a reason, or read for
// what it says, soon, in little memory, and with nothing opened but the file itself.
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>
#include <malloc.h>
#include <sys/stat.h>

#include <fstream>

#include "allocator.h"
#include "attack.h"
#include "cpu_time.h"
#include "opened.h"
#include "xml_config.h"

namespace {

using namespace hostile;
using namespace test;

#if TEST_SANITIZED
constexpr double kSeconds = 5;
constexpr bool kMemoryCounts = false;  // the sanitizer keeps what was freed
#else
constexpr double kSeconds = 0.25;  // five times what it shall take: the machine may be busy
constexpr bool kMemoryCounts = true;
#endif
constexpr long kKilobytes = 32 * 1024;

// A line of /proc/self/status, in kB.
long memory(const std::string &sLine) {
  std::ifstream status("/proc/self/status");
  for (std::string s; std::getline(status, s);) {
    if (s.rfind(sLine + ":", 0) == 0) return std::stol(s.substr(sLine.size() + 1));
  }
  return -1;
}

void forgetPeak() {
  std::ofstream("/proc/self/clear_refs") << "5";
}

struct Cost {
  double seconds;
  long kilobytes;
};

template <class Work>
Cost costOf(Work work) {
  malloc_trim(0);  // what was freed shall not hide what is taken
  forgetPeak();
  const long nBefore = memory("VmRSS");
  const double before = test::cpuSeconds();
  work();
  return {test::cpuSeconds() - before, memory("VmHWM") - nBefore};
}

struct Dearest {
  double ms = 0;
  double megabytes = 0;
  void take(const std::string &sName, const Cost &cost) {
    ms = std::max(ms, cost.seconds * 1000);
    megabytes = std::max(megabytes, static_cast<double>(cost.kilobytes) / 1024);
    std::printf("%8.1f ms %8.1f MB  %s\n", cost.seconds * 1000, static_cast<double>(cost.kilobytes) / 1024,
                sName.c_str());
    EXPECT_LT(cost.seconds, kSeconds) << sName;
    if (kMemoryCounts) {
      EXPECT_LT(cost.kilobytes, kKilobytes) << sName;
    }
  }
};

std::string told() {
  std::string s;
  for (const std::string &sLine : logTexts()) s += sLine + "\n";
  return s;
}

// "" wants it read, "?" leaves that open; anything else must be in the reason.
void expectEnd(const Attack &attack, const std::string &sReason, bool bRead) {
  if (sReason != "?") {
    EXPECT_EQ(bRead, sReason.empty()) << attack.sName << "\n" << told().substr(0, 2000);
  }
  if (bRead) return;
  EXPECT_NE(told(), "") << attack.sName;
  if (sReason != "?") {
    EXPECT_NE(told().find(sReason), std::string::npos) << attack.sName << "\n" << told().substr(0, 2000);
  }
}

// A file that nobody may open.
std::string bait(ConfigTree &tree) {
  tree.file("bait.txt", "<!ENTITY bait 'taken'>");
  return tree.path("bait.txt");
}

}  // namespace

TEST(XmlAttack, OnAConfigurationFileEndsSoonAndOpensNothingElse) {
  ConfigTree tree;
  Dearest dearest;
  for (const Attack &attack : attacks(bait(tree), "<AllInfo>", "<AllInfo nDebug='1'/>", "</AllInfo>")) {
    tree.file("All/root.xml", attack.sText);
    clearLog();
    int nResult = 0;
    std::vector<std::string> files;
    const Cost cost = costOf([&] {
      forgetOpened();
      nResult = cvtInit(tree.arg());
      files = opened();
    });
    EXPECT_EQ(files, std::vector<std::string>{tree.path("All/root.xml")}) << attack.sName;
    expectEnd(attack, attack.sConfigReason, nResult == 0);
    if (nResult != 0) {
      EXPECT_NE(told().find(tree.path("All/root.xml")), std::string::npos) << attack.sName;
    } else {
      EXPECT_EQ(cvtIsDebug(), 1) << attack.sName;
    }
    dearest.take(attack.sName, cost);
    cvtEnd();
  }
  std::printf("RESULT XML attacks on a configuration file: dearest %.1f ms, %.1f MB\n", dearest.ms,
              dearest.megabytes);
}

TEST(XmlAttack, OnAMessageEndsSoonAndOpensNothing) {
  xmldoc::XmlConfig config;
  config.message("Any", "psRoot=\"M\" psUnknown=\"skip\"", {xmldoc::field("Id")});
  ASSERT_EQ(config.start(), 0) << told();
  ASSERT_NE(xmldoc::parse("Any", "<M><Id>1</Id></M>"), nullptr) << told();
  Dearest dearest;
  for (const Attack &attack : attacks(bait(config), "<M>", "<Id>1</Id>", "</M>")) {
    clearLog();
    bool bRead = false;
    std::vector<std::string> files;
    const Cost cost = costOf([&] {
      forgetOpened();
      bRead = xmldoc::parse("Any", attack.sText) != nullptr;
      files = opened();
    });
    EXPECT_EQ(files, std::vector<std::string>{}) << attack.sName;
    expectEnd(attack, attack.sMessageReason, bRead);
    dearest.take(attack.sName, cost);
  }
  std::printf("RESULT XML attacks on a message: dearest %.1f ms, %.1f MB\n", dearest.ms, dearest.megabytes);
}

TEST(XmlAttack, FileThatIsNoneIsRefusedWithoutWaitingForIt) {
  ConfigTree tree;
  tree.file("All/other.txt", "");
  ASSERT_EQ(mkfifo(tree.path("All/root.xml").c_str(), 0600), 0);
  EXPECT_EQ(cvtInit(tree.arg()), -1);
  EXPECT_NE(told().find("File[" + tree.path("All/root.xml") + "] is no regular file"), std::string::npos)
      << told();
}

TEST(XmlAttack, LeavesNoErrorOfLibxml2WhereThereWasNone) {
  ConfigTree tree;
  xmlResetLastError();
  for (const Attack &attack : attacks(bait(tree), "<AllInfo>", "<AllInfo/>", "</AllInfo>")) {
    tree.file("All/root.xml", attack.sText);
    cvtInit(tree.arg());
    EXPECT_EQ(xmlGetLastError(), nullptr) << attack.sName;
    cvtEnd();
  }
}

// What another user of libxml2 in the process has set, and what happened to him last.
TEST(XmlAttack, LeavesTheProcesssStateOfLibxml2AsItWas) {
  ConfigTree tree;
  int nHandled = 0;
  xmlSetStructuredErrorFunc(&nHandled, [](void *pCount, xmlErrorPtr) { ++*static_cast<int *>(pCount); });
  xmlSubstituteEntitiesDefault(1);
  xmlKeepBlanksDefault(1);
  xmlLineNumbersDefault(0);
  xmlLoadExtDtdDefaultValue = 1;
  xmlDoValidityCheckingDefaultValue = 0;
  const xmlExternalEntityLoader loader = xmlGetExternalEntityLoader();
  xmlFreeDoc(xmlReadMemory("<a></b>", 7, nullptr, nullptr, 0));
  const std::string sMine = xmlGetLastError()->message;
  const int nMine = nHandled;
  EXPECT_GT(nMine, 0);
  for (const Attack &attack : attacks(bait(tree), "<AllInfo>", "<AllInfo/>", "</AllInfo>")) {
    tree.file("All/root.xml", attack.sText);
    cvtInit(tree.arg());
    EXPECT_STREQ(xmlGetLastError()->message, sMine.c_str()) << attack.sName;
    cvtEnd();
  }
  EXPECT_EQ(nHandled, nMine);
  EXPECT_EQ(xmlStructuredErrorContext, &nHandled);
  EXPECT_EQ(xmlSubstituteEntitiesDefaultValue, 1);
  EXPECT_EQ(xmlKeepBlanksDefaultValue, 1);
  EXPECT_EQ(xmlLineNumbersDefaultValue, 0);
  EXPECT_EQ(xmlLoadExtDtdDefaultValue, 1);
  EXPECT_EQ(xmlDoValidityCheckingDefaultValue, 0);
  EXPECT_EQ(xmlGetExternalEntityLoader(), loader);
  EXPECT_EQ(xmlParserMaxDepth, 256U);
}

// Every allocation of a host's life fails once, and fails from there on: the call that needs it returns its
// documented failure, or the process ends with one line. Nothing is wrong afterwards.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "config_tree.h"
#include "heap_faults.h"
#include "host.h"
#include "sweep.h"

namespace {

class HeapFaults : public testing::Test {
 protected:
  void SetUp() override {
    if (!faults::countsHeap()) GTEST_SKIP() << "another heap stands in the place of the test's own";
  }
};

TEST_F(HeapFaults, EachAllocationFailsOnce) {
  faults::Work work;
  faults::sweep("heap_once", faults::g_heap, work, false);
}

TEST_F(HeapFaults, EachAllocationFailsAndAllBehindIt) {
  faults::Work work;
  faults::sweep("heap_for_ever", faults::g_heap, work, true);
}

// --- What the life above does not do
// ------------------------------------------------------------------------

// Lets each allocation of a call fail, once and with all behind it. The call returns whether it did its work.
template <class Call>
void eachFails(Call call) {
  const auto ending = [&](long nFirst, bool bForEver) {
    return faults::inChild([&](faults::Report &report) {
      faults::g_heap.arm(nFirst, bForEver);
      const bool bDone = call(report);
      faults::g_heap.disarm();
      report.nCalls = faults::g_heap.calls();
      report.bRefused = !bDone;
    });
  };
  const faults::Ending whole = ending(0, false);
  ASSERT_EQ(whole.outcome, faults::Outcome::kRight) << whole.sText;
  for (long n = 1; n <= whole.report.nCalls; ++n) {
    for (const bool bForEver : {false, true}) {
      const faults::Ending one = ending(n, bForEver);
      EXPECT_NE(one.outcome, faults::Outcome::kBad) << "allocation " << n << ": " << one.sText;
    }
  }
}

TEST_F(HeapFaults, WhileARootNameIsCompleted) {
  test::ConfigTree tree;
  tree.file("All/root.xml", "<AllInfo><AllInfo nDebug=\"7\"/></AllInfo>");
  std::filesystem::current_path(tree.path());
  eachFails([](faults::Report &report) {
    char sRoot[] = "All/root.xml";
    if (cvtInit(sRoot) != 0) return false;
    if (cvtIsDebug() != 7) report.wrong("another root");
    return true;
  });
}

// Compared without heap.
bool isWritten(const char *psFile) {
  constexpr std::string_view kWanted =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<List>\n  <PathList psPath=\"msg\"/>\n</List>\n";
  char sFound[200];
  const int nFile = open(psFile, O_RDONLY);
  const ssize_t nSize = read(nFile, sFound, sizeof sFound);
  close(nFile);
  return nSize >= 0 && std::string_view(sFound, static_cast<size_t>(nSize)) == kWanted;
}

TEST_F(HeapFaults, WhileARecordIsWritten) {
  test::ConfigTree tree;
  std::string sFile = tree.path("path.xml");
  eachFails([&](faults::Report &report) {
    char sPath[] = "msg";
    char sTag[] = "List";
    char sType[] = "PathList";
    PathList *const pt = sttNewPathList(sPath, nullptr);
    if (sttGenXmlFile(sFile.data(), pt, sTag, sType, reinterpret_cast<void *>(sttGenXmlPathList)) != 0)
      return false;
    if (!isWritten(sFile.c_str())) report.wrong("another file, %d lines", report.nLines);
    return true;
  });
}

}  // namespace

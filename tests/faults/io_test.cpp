// Every file, directory and shared object that a host's life needs cannot be had once, and cannot be had from
// there on: the call that needs it returns its documented failure. Nothing is wrong afterwards.
#include <gtest/gtest.h>

#include <string>

#include "host.h"
#include "io_faults.h"
#include "sweep.h"

namespace {

void both(const std::string &sName, faults::Trigger &trigger) {
  faults::Work work;
  faults::sweep((sName + "_once").c_str(), trigger, work, false);
  faults::sweep((sName + "_for_ever").c_str(), trigger, work, true);
}

TEST(IoFaults, EachOpenFails) {
  both("open", faults::g_open);
}
TEST(IoFaults, EachReadFails) {
  both("read", faults::g_read);
}
TEST(IoFaults, EachStatFails) {
  both("stat", faults::g_stat);
}
TEST(IoFaults, EachOpendirFails) {
  both("opendir", faults::g_opendir);
}
TEST(IoFaults, EachReaddirFails) {
  both("readdir", faults::g_readdir);
}
// Its files would be missing without a word.
TEST(IoFaults, ADirectoryThatCannotBeReadToItsEndFailsTheStart) {
  faults::Work work;
  const auto start = [&](long nFirst, int nWanted) {
    return faults::inChild([&](faults::Report &report) {
      faults::g_readdir.arm(nFirst, false);
      const int nResult = cvtInit(work.root());
      report.nCalls = faults::g_readdir.calls();
      if (nResult != nWanted) report.wrong("cvtInit returned %d", nResult);
      if (nWanted != 0 && report.nLines == 0) report.wrong("no line");
    });
  };
  const faults::Ending whole = start(0, 0);
  ASSERT_EQ(whole.outcome, faults::Outcome::kRight) << whole.sText;
  for (long n = 1; n <= whole.report.nCalls; ++n) {
    const faults::Ending ending = start(n, -1);
    EXPECT_EQ(ending.outcome, faults::Outcome::kRight) << "readdir " << n << ": " << ending.sText;
  }
}
TEST(IoFaults, ARootFileWhoseTimeCannotBeHadIsNamed) {
  faults::Work work;
  const std::string sLine = "] err:[Input/output error]!!";
  const auto start = [&](long nFirst) {
    return faults::inChild([&](faults::Report &report) {
      report.psWanted = sLine.c_str();
      faults::g_stat.arm(nFirst, false);
      const int nResult = cvtInit(work.root());
      report.nCalls = faults::g_stat.calls();
      if (report.bSeen && nResult == 0) report.wrong("it was started");
    });
  };
  const long nCalls = start(0).report.nCalls;
  int nSeen = 0;
  for (long n = 1; n <= nCalls; ++n) {
    const faults::Ending ending = start(n);
    EXPECT_EQ(ending.outcome, faults::Outcome::kRight) << "stat " << n << ": " << ending.sText;
    if (ending.report.bSeen) ++nSeen;
  }
  EXPECT_EQ(nSeen, 1);
}
TEST(IoFaults, EachDlopenFails) {
  both("dlopen", faults::g_dlopen);
}

}  // namespace

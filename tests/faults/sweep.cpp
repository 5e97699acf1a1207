#include "sweep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>

namespace faults {

namespace {

// How many points of so many are tried.
long wanted(long nCalls) {
  const char *const ps = std::getenv("CVT2_FAULT_POINTS");
  if (ps != nullptr && std::strcmp(ps, "all") == 0) return nCalls;
  return std::min(nCalls, ps == nullptr ? kShallow : std::atol(ps));
}

Ending life(Work &work, Trigger &trigger, long nFirst, bool bForEver) {
  return inChild([&](Report &report) {
    Host host(work, report);
    report.psWanted = ": out of memory.";  // what a plug-in on the kit says
    trigger.arm(nFirst, bForEver);
    host.live();
    trigger.disarm();
    report.nCalls = trigger.calls();
    host.liveAgain();
  });
}

struct Tally {
  long nPoints = 0;
  long nByPlugIns = 0;
  long nOf[4] = {};

  void add(long nPoint, const Ending &ending) {
    ++nPoints;
    if (ending.report.bSeen) ++nByPlugIns;
    constexpr long kShown = 20;
    if (++nOf[static_cast<int>(ending.outcome)] <= kShown && ending.outcome == Outcome::kBad) {
      ADD_FAILURE() << "call " << nPoint << ":" << ending.sText;
    }
  }
  long of(Outcome outcome) const { return nOf[static_cast<int>(outcome)]; }
};

}  // namespace

void sweep(const char *psName, Trigger &trigger, Work &work, bool bForEver) {
  const Ending whole = life(work, trigger, 0, bForEver);
  ASSERT_EQ(whole.outcome, Outcome::kRight) << whole.sText << whole.report.sLine;
  const long nCalls = whole.report.nCalls;
  ASSERT_GT(nCalls, 0);
  const long nWanted = wanted(nCalls);
  Tally tally;
  for (long i = 0; i < nWanted; ++i) {
    const long nPoint = 1 + i * nCalls / nWanted;
    tally.add(nPoint, life(work, trigger, nPoint, bForEver));
  }
  std::cout << "RESULT faults_" << psName << ": " << tally.nPoints << " of " << nCalls
            << " calls failed: " << tally.of(Outcome::kRight) << " right, " << tally.of(Outcome::kRefused)
            << " refused (" << tally.nByPlugIns << " by plug-ins), " << tally.of(Outcome::kEnded)
            << " ended with a line, " << tally.of(Outcome::kBad) << " bad\n";
}

}  // namespace faults

// The log without heap: a process that ends because of it must still be able to say so.
#include <gtest/gtest.h>
#include <unistd.h>

#include "heap_faults.h"
#include "velutil.h"

namespace {

constexpr long kAllocations = 40;  // more than a line takes, also the first one

[[noreturn]] void logFailing(long nFirst, bool bForEver, const char *psFormat, const char *psText) {
  faults::g_heap.arm(nFirst, bForEver);
  logInfo(1, "$faults", "log_test.cpp", 7, "logFailing", psFormat, psText);
  faults::g_heap.disarm();
  _exit(0);
}

constexpr char kLine[] =
    "\\[1\\] \\[\\$faults\\] \\[log_test.cpp:7\\] \\[logFailing\\] memory pool: a text that fits no short "
    "string\n$";

class LogFaults : public testing::Test {
 protected:
  void SetUp() override {
    if (!faults::countsHeap()) GTEST_SKIP() << "another heap stands in the place of the test's own";
  }
};

TEST_F(LogFaults, ALineIsWrittenWithoutHeap) {
  EXPECT_EXIT(logFailing(1, true, "memory pool: %s\n", "a text that fits no short string"),
              testing::ExitedWithCode(0), kLine);
}

TEST_F(LogFaults, ALineIsWrittenWhicheverAllocationFails) {
  for (long n = 1; n <= kAllocations; ++n) {
    SCOPED_TRACE(n);
    EXPECT_EXIT(logFailing(n, false, "memory pool: %s\n", "a text that fits no short string"),
                testing::ExitedWithCode(0), kLine);
  }
}

TEST_F(LogFaults, ALineOfAnyLengthIsCut) {
  const std::string sLong(5000, 'x');
  EXPECT_EXIT(logFailing(1, true, "%s", sLong.c_str()), testing::ExitedWithCode(0),
              "logFailing. x{900,1000}\n$");
}

TEST_F(LogFaults, ControlCharactersAreNoLines) {
  EXPECT_EXIT(logFailing(1, true, "a%sb", "\n\x1b"), testing::ExitedWithCode(0), " a\\?\\?b\n$");
}

}  // namespace

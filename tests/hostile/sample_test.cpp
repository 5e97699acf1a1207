// The examples' own messages, damaged: cut at every byte, every bit flipped, every smaller room for the
// output. Each is converted, or refused with a word, and the next good message is converted as ever.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "allocator.h"
#include "cvt.h"
#include "log_capture.h"
#include "scenario.h"

namespace {

using namespace hostile;
using test::cs;

// Of so many damages one is done; all with CVT2_HOSTILE_TIMES.
constexpr size_t kStep = TEST_SANITIZED != 0 ? 13 : 5;
constexpr size_t kMostBytes = 2500;  // of a sample, from its beginning and from its end
constexpr size_t kRoom = 1 << 18;

struct FreeMessage {
  void operator()(InnerMessage *pt) const { cvtFreeMessage(pt); }
};
using Handle = std::unique_ptr<InnerMessage, FreeMessage>;

Handle parsed(const Job &job, std::string &sBytes) {
  int nError = 0;
  const int nLen = static_cast<int>(sBytes.size());
  return Handle(job.sMessage.empty() ? cvtParseMessasge(cs(job.sFrom.c_str()), sBytes.data(), nLen, &nError)
                                     : cvtInitMessasge(cs(job.sMessage.c_str()), cs(job.sFrom.c_str()),
                                                       sBytes.data(), nLen, &nError));
}

// The output; "refused" when nRoom bytes are too few or the message cannot be converted.
std::string written(const Job &job, const Handle &source, size_t nRoom) {
  const std::unique_ptr<char[]> room(new char[nRoom + 1]);  // with nothing behind it that may be written to
  int nError = 0;
  int nOut = static_cast<int>(nRoom);
  if (job.sTo.empty()) {
    if (cvtGenMessage(source.get(), room.get(), &nOut) != 0) return "refused";
  } else if (Handle(cvtGenerateMessasge(source.get(), cs(job.sTo.c_str()), room.get(), &nOut, &nError)) ==
             nullptr) {
    return "refused";
  }
  EXPECT_LE(nOut, static_cast<int>(nRoom));
  return std::string(room.get(), static_cast<size_t>(nOut));
}

struct Figures {
  int nTried = 0;
  int nRefused = 0;
};

// Converts bytes as they are. A refusal has a text.
void tryOut(const Job &job, std::string sBytes, const std::string &sWhat, Figures &figures) {
  test::clearLog();
  const Handle source = parsed(job, sBytes);
  const bool bRefused = source == nullptr || written(job, source, kRoom) == "refused";
  ++figures.nTried;
  figures.nRefused += bRefused ? 1 : 0;
  EXPECT_FALSE(bRefused && test::logTexts().empty()) << sWhat;
}

// Whether a place is looked at.
bool isChosen(size_t nPlace, size_t nSize) {
  static const size_t nStep = std::getenv("CVT2_HOSTILE_TIMES") == nullptr ? kStep : 1;
  return nPlace % nStep == 0 && (nPlace < kMostBytes || nPlace + kMostBytes > nSize);
}

// Work with each job of each scenario, loaded.
template <class Work>
void withEachSample(const char *psWhat, Work work) {
  for (Scenario &scenario : allScenarios()) {
    ASSERT_EQ(cvtInit(scenario.tree().arg()), 0) << scenario.name();
    Figures figures;
    for (const Job &job : scenario.jobs()) {
      std::string sGood = job.sBytes;
      const Handle source = parsed(job, sGood);
      ASSERT_NE(source, nullptr) << scenario.name();
      const std::string sBefore = written(job, source, kRoom);
      ASSERT_NE(sBefore, "refused") << scenario.name();
      work(job, sBefore, figures);
      std::string sAgain = job.sBytes;
      const Handle again = parsed(job, sAgain);
      EXPECT_EQ(written(job, again, kRoom), sBefore) << scenario.name();
    }
    EXPECT_GT(figures.nRefused, 0) << scenario.name();
    std::printf("RESULT samples of %s, %s: %d tried, %d refused\n", scenario.name().c_str(), psWhat,
                figures.nTried, figures.nRefused);
    cvtEnd();
  }
}

}  // namespace

TEST(DamagedSample, CutAtEveryByte) {
  withEachSample("cut at every byte", [](const Job &job, const std::string &, Figures &figures) {
    for (size_t n = 0; n < job.sBytes.size(); ++n) {
      if (isChosen(n, job.sBytes.size()))
        tryOut(job, job.sBytes.substr(0, n), "cut at " + std::to_string(n), figures);
    }
  });
}

TEST(DamagedSample, WithEveryBitFlipped) {
  withEachSample("every bit flipped", [](const Job &job, const std::string &, Figures &figures) {
    for (size_t n = 0; n < job.sBytes.size(); ++n) {
      if (!isChosen(n, job.sBytes.size())) continue;
      for (int nBit = 0; nBit < 8; ++nBit) {
        std::string sBytes = job.sBytes;
        sBytes[n] = static_cast<char>(sBytes[n] ^ (1 << nBit));
        tryOut(job, sBytes, "bit " + std::to_string(nBit) + " of byte " + std::to_string(n), figures);
      }
    }
  });
}

TEST(DamagedSample, WithEverySmallerRoomForTheOutput) {
  withEachSample("every smaller output buffer",
                 [](const Job &job, const std::string &sBefore, Figures &figures) {
                   std::string sBytes = job.sBytes;
                   const Handle source = parsed(job, sBytes);
                   for (size_t nRoom = 0; nRoom < sBefore.size(); ++nRoom) {
                     if (!isChosen(nRoom, sBefore.size())) continue;
                     test::clearLog();
                     EXPECT_EQ(written(job, source, nRoom), "refused") << nRoom;
                     EXPECT_FALSE(test::logTexts().empty()) << nRoom;
                     ++figures.nTried;
                     ++figures.nRefused;
                   }
                   EXPECT_EQ(written(job, source, sBefore.size()), sBefore);
                 });
}

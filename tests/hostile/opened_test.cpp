// The note of what the process opens.
#include "opened.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>

namespace {

using testing::ElementsAre;

void openAndClose() {
  close(open("/", O_RDONLY));
}

// Made before anything is noted, and so destroyed after what is made then.
struct OpensLast {
  ~OpensLast() {
    if (bWanted) openAndClose();
  }
  bool bWanted = false;
} f_last;

void openAgainAtTheEnd() {
  openAndClose();
  f_last.bWanted = true;
  std::exit(0);
}

TEST(Opened, HoldsAFileUntilItIsForgotten) {
  hostile::forgetOpened();
  openAndClose();
  EXPECT_THAT(hostile::opened(), ElementsAre("/"));
  hostile::forgetOpened();
  EXPECT_THAT(hostile::opened(), ElementsAre());
}

TEST(Opened, IsNotedUntilTheProcessHasEnded) {
  EXPECT_EXIT(openAgainAtTheEnd(), testing::ExitedWithCode(0), "");
}

}  // namespace

#include "kit/plugin.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "log_capture.h"

using namespace cvt::kit;

namespace {

int f_thrown;

void misbehave(Path &path) {
  path.enter("L");
  path.repetition(1);
  path.field("F");
  if (f_thrown == 1) throw Fault(7, "x", "y");
  if (f_thrown == 2) throw std::bad_alloc();
  if (f_thrown == 3) throw std::runtime_error("why");
  if (f_thrown == 4) throw 5;
  if (f_thrown == 5) throw Fault(Fault::kHere, "x", "y");
}

struct Format {
  static constexpr RecordType kType{"Rec", sizeof(RecordHead), {}, "", nullptr};
  static constexpr const RecordType *kRecords[] = {&kType};
  static void compile(Msg &) {
    if (f_thrown == 1) throw Misconfigured("A", nullptr, "x", "y");
    Path path;
    misbehave(path);
  }
  static void parse(ParseCall &call) {
    call.end = call.from + 2;
    misbehave(call.path);
  }
  static void generate(GenerateCall &call) {
    call.out.put("ab");
    misbehave(call.path);
  }
};

// What each thrown thing says at the end of its one line.
std::string tail(const std::string &line) {
  return line.substr(line.find(']') + 1);
}

}  // namespace

TEST(KitPlugin, NothingThrownLeavesTheEntryPoints) {
  char name[] = "M";
  Msg msg{};
  msg.psMsgName = name;
  ValueListInfo values{};
  char buffer[10] = {};
  const char *const tails[] = {"",
                               " Field[L[1].F] Offset[7]: expected x, found y.",
                               ": out of memory.",
                               ": internal error: why.",
                               ": internal error.",
                               " Field[L[1].F] Offset[3]: expected x, found y."};
  for (f_thrown = 0; f_thrown <= 5; ++f_thrown) {
    for (const bool parsing : {true, false}) {
      test::clearLog();
      int position = 1;
      const int result = parsing ? Entry<Format>::parse(nullptr, &values, &msg, buffer, &position, 10)
                                 : Entry<Format>::generate(nullptr, &values, &msg, buffer, &position, 10);
      EXPECT_EQ(result, f_thrown == 0 ? 0 : -1);
      EXPECT_EQ(position, f_thrown == 0 ? 3 : 1) << "the position moves only on success";
      ASSERT_EQ(test::logTexts().size(), f_thrown == 0 ? 0U : 1U);
      if (f_thrown != 0) {
        EXPECT_EQ(tail(test::logTexts()[0]), tails[f_thrown]);
      }
    }
  }
}

TEST(KitPlugin, ArgumentsAreChecked) {
  f_thrown = 0;
  Msg msg{};
  ValueListInfo values{};
  char buffer[4] = {};
  int position = 0;
  EXPECT_EQ(Entry<Format>::parse(nullptr, nullptr, &msg, buffer, &position, 4), -1);
  EXPECT_TRUE(test::logged(1, "[ptValueListInfo] is NULL"));
  EXPECT_EQ(Entry<Format>::parse(nullptr, &values, nullptr, buffer, &position, 4), -1);
  EXPECT_TRUE(test::logged(1, "[ptMsg] is NULL"));
  EXPECT_EQ(Entry<Format>::generate(nullptr, &values, &msg, nullptr, &position, 4), -1);
  EXPECT_TRUE(test::logged(1, "[psBuf] is NULL"));
  EXPECT_EQ(Entry<Format>::generate(nullptr, &values, &msg, buffer, nullptr, 4), -1);
  EXPECT_TRUE(test::logged(1, "[pnNowLen] is NULL"));
  for (const int bad : {-1, 5}) {
    position = bad;
    EXPECT_EQ(Entry<Format>::parse(nullptr, &values, &msg, buffer, &position, 4), -1);
    EXPECT_EQ(position, bad);
  }
  position = 0;
  EXPECT_EQ(Entry<Format>::parse(nullptr, &values, &msg, buffer, &position, -1), -1);
}

TEST(KitPlugin, CompiledDefinitionGetsItsFunctions) {
  f_thrown = 0;
  Msg msg{};
  msg.nFieldNum = 4;
  msg.nValueNum = -1;
  EXPECT_EQ(Entry<Format>::init(&msg), 0);
  EXPECT_EQ(msg.nValueNum, 4);
  EXPECT_EQ(FncParse(msg.fParse), &Entry<Format>::parse);
  EXPECT_EQ(FncGenerate(msg.fGen), &Entry<Format>::generate);
}

TEST(KitPlugin, DefinitionThatMakesNoSenseIsToldInOneLine) {
  char name[] = "M";
  Msg msg{};
  msg.psMsgName = name;
  f_thrown = 1;
  test::clearLog();
  EXPECT_EQ(Entry<Format>::init(&msg), -1);
  EXPECT_EQ(test::logTexts(), std::vector<std::string>{"Msg[M] Node[A]: expected x, found y."});
  EXPECT_EQ(FncParse(msg.fParse), nullptr);
  EXPECT_EQ(Entry<Format>::init(nullptr), -1);
}

// A load that failed leaves its definitions registered, and the next one does not compile them again.
TEST(KitPlugin, AttachmentsStayAsLongAsDefinitionsAreLeft) {
  auto alive = std::make_shared<int>(0);
  Attachments<std::shared_ptr<int>> attachments;
  attachments.add(std::make_unique<std::shared_ptr<int>>(alive));
  StringList definition{};
  CvtFmtGlobalInfo registry{};
  registry.ptMsgList = &definition;
  gptFmtGlobalInfo = &registry;
  attachments.clearUnlessLeft();
  EXPECT_EQ(alive.use_count(), 2);
  registry.ptMsgList = nullptr;
  attachments.clearUnlessLeft();
  EXPECT_EQ(alive.use_count(), 1);
  attachments.add(std::make_unique<std::shared_ptr<int>>(alive));
  gptFmtGlobalInfo = nullptr;
  attachments.clearUnlessLeft();
  EXPECT_EQ(alive.use_count(), 1);
}

TEST(KitPlugin, UnknownRecordTypesAreLeftToOthers) {
  char rec[] = "Rec";
  char other[] = "Other";
  nGRet = 0;
  EXPECT_EQ(Entry<Format>::read(nullptr, other), nullptr);
  EXPECT_EQ(Entry<Format>::read(nullptr, nullptr), nullptr);
  EXPECT_EQ(Entry<Format>::write(nullptr, nullptr, nullptr, other), nullptr);
  EXPECT_EQ(nGRet, 0);
  EXPECT_EQ(Entry<Format>::write(nullptr, nullptr, nullptr, rec), nullptr);
  EXPECT_EQ(nGRet, -1);
}

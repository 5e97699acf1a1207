#include "log.h"

#include <gtest/gtest.h>

namespace log = tool::log;

namespace {

void library(int level, const char *format, ...) {
  va_list args;
  va_start(args, format);
  log::take(level, format, args);
  va_end(args);
}

class Log : public testing::Test {
 protected:
  void SetUp() override { log::begin(); }
};

}  // namespace

TEST_F(Log, TheFirstLineIsTheCause) {
  library(1, "Field [%s] is wrong", "A");
  library(1, "Do Func[%s] err!!", "pubParse");
  EXPECT_EQ(log::cause(), "Field [A] is wrong");
  EXPECT_EQ(log::trail().size(), 2u);
}

TEST_F(Log, NothingLoggedIsNoCause) {
  EXPECT_EQ(log::cause(), "");
}

TEST_F(Log, BeginningForgets) {
  library(1, "old");
  log::begin();
  library(1, "new");
  EXPECT_EQ(log::cause(), "new");
  EXPECT_FALSE(log::has("old"));
}

TEST_F(Log, LinesThatOnlyTellOfProgressAreNoCause) {
  library(1, "Open Dir [%s] err:[%s]!!", "Def", "No such file or directory");
  library(1, "Set Src Message Offset to [%d]", 4);
  library(1, "Warning: sql[%s] not find data!!", "SELECT 1");
  EXPECT_EQ(log::cause(), "Open Dir [Def] err:[No such file or directory]!!");
  library(1, "Msg [%s] get define info err!!", "Order");
  EXPECT_EQ(log::cause(), "Msg [Order] get define info err!!");
}

TEST_F(Log, ThePlaceInAFileStandsBehindTheCause) {
  library(1, "IdFunc[%s] Not Find!!", "pubPars");
  library(1, "File[%s] Line[%ld] Element[%s]", "id.xml", 4L, "IdFunc");
  EXPECT_EQ(log::cause(), "IdFunc[pubPars] Not Find!!, in File[id.xml] Line[4] Element[IdFunc]");
}

TEST_F(Log, TheRootRecordIsNoPlace) {
  library(1, "Get Message Args Err!!");
  library(1, "File[%s] Line[%ld] Element[%s]", "root.xml", 2L, "AllInfo");
  EXPECT_EQ(log::cause(), "Get Message Args Err!!");
}

TEST_F(Log, ALineThatNamesAFileNeedsNoOtherPlace) {
  library(1, "Msg[M] File[M.xml:25]: expected a node with a name, found none.");
  library(1, "File[%s] Line[%ld] Element[%s]", "other.xml", 4L, "Id");
  EXPECT_EQ(log::cause(), "Msg[M] File[M.xml:25]: expected a node with a name, found none.");
}

TEST_F(Log, WhyAFileIsNoXmlIsTheCause) {
  library(1, "[ptXmlDoc = xmlFileParse(psFileName)] is NULL");
  library(1, "File[c.xml] line 2: AttValue: \" or ' expected");
  EXPECT_EQ(log::cause(), "File[c.xml] line 2: AttValue: \" or ' expected");
  log::begin();
  library(1, "File[m.xml] Parse err!!");
  library(1, "File[m.xml] Permission denied");
  EXPECT_EQ(log::cause(), "File[m.xml] Permission denied");
  log::begin();
  library(1, "File[m.xml] Parse err!!");
  EXPECT_EQ(log::cause(), "File[m.xml] Parse err!!");
}

TEST_F(Log, WhereAConversionFailedIsSaidFromTheConverterInward) {
  EXPECT_EQ(log::rule(), "");
  library(1, "Func[%s] Arg[1] Len[3] Offset[0]: expected a month", "reformatDate");
  library(1, "Do Convert Rule [%d] err!!", 1);
  library(1, "Convert Loop[%d/%d] From[%s] to [%s]  convert err!!", 4, 10, "Rows", "Sale");
  library(1, "%s", "CVT_TYPE_LOOP Err!!");
  library(1, "Do Convert Rule [%d] err!!", 2);
  library(1, "Convert [%s] From struct[%s] tp Struct[%s] err!!", "C", "A", "B");
  EXPECT_EQ(log::rule(), "converter C, rule 2, Rows[4], rule 1");
}

TEST_F(Log, LineEndsAreTakenOff) {
  library(1, "Init Path[%s] err!!\n", "/etc");
  EXPECT_TRUE(log::has("Init Path[/etc] err!!"));
}

TEST_F(Log, TraceLinesAreNotKept) {
  library(5, "Init Convert ok!!");
  EXPECT_TRUE(log::trail().empty());
}

TEST_F(Log, AFloodOfLinesIsCut) {
  for (int i = 0; i < 100000; ++i) library(1, "line %d", i);
  EXPECT_LE(log::trail().size(), 1000u);
  EXPECT_EQ(log::cause(), "line 0");
}

TEST_F(Log, ControlCharactersAreShownNotWritten) {
  testing::internal::CaptureStderr();
  log::say("found '\x1b[2J\n'");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "cvt2: found '\\x1b[2J\\x0a'\n");
}

TEST_F(Log, BytesThatATerminalMightObeyAreShownNotWritten) {
  testing::internal::CaptureStderr();
  log::say("found '\xc2\x9b\x33\x31m \x9b\x33\x31m' M\xc3\xbcnchen \xe2\x82\xac");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "cvt2: found '\\xc2\\x9b31m \\x9b31m' M\xc3\xbcnchen \xe2\x82\xac\n");
}

// The logging library as another process sees it. This program has a logInfo of its own, so it runs a host
// that has none.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>

#include "config_tree.h"

namespace {

struct Outcome {
  int nStatus;         // as wait delivers it
  std::string output;  // standard output and standard error
};

Outcome host(const std::string &environment, const std::string &arguments) {
  const std::string command =
      "env -u VEL_LOG_LEVEL -u VEL_LOG_FILE " + environment + " '" VELUTIL_HOST "' " + arguments + " 2>&1";
  FILE *const pipe = popen(("exec " + command).c_str(), "r");
  if (pipe == nullptr) return {-1, ""};
  Outcome run{0, ""};
  std::array<char, 4096> piece{};
  for (size_t n = 0; (n = fread(piece.data(), 1, piece.size(), pipe)) > 0;)
    run.output.append(piece.data(), n);
  run.nStatus = pclose(pipe);
  return run;
}

std::string content(const std::string &file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

long lineCount(const std::string &text) {
  return std::count(text.begin(), text.end(), '\n');
}

TEST(LogLibrary, ALineShowsTimeLevelModulePlaceFunctionAndText) {
  const Outcome run = host("", "line 1 'Init Path[x] err!!'");
  EXPECT_EQ(run.nStatus, 0);
  EXPECT_TRUE(std::regex_match(
      run.output,
      std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \[1\] \[\$host\] \[host\.c:7\] \[main\] )"
                 R"(Init Path\[x\] err!!\n)")))
      << run.output;
}

TEST(LogLibrary, TheDefaultThresholdIsOne) {
  EXPECT_EQ(lineCount(host("", "line 1 text").output), 1);
  EXPECT_EQ(host("", "line 2 text").output, "");
  EXPECT_EQ(host("VEL_LOG_LEVEL=", "line 2 text").output, "");
}

TEST(LogLibrary, TheThresholdComesFromTheEnvironment) {
  EXPECT_EQ(lineCount(host("VEL_LOG_LEVEL=5", "line 5 text").output), 1);
  EXPECT_EQ(lineCount(host("VEL_LOG_LEVEL=4", "line 4 text").output), 1);
  EXPECT_EQ(host("VEL_LOG_LEVEL=4", "line 5 text").output, "");
  EXPECT_EQ(host("VEL_LOG_LEVEL=0", "line 1 text").output, "");
  EXPECT_EQ(host("VEL_LOG_LEVEL=-1", "line 0 text").output, "");
}

TEST(LogLibrary, AThresholdThatIsNoNumberCountsAsOneAndIsReported) {
  for (const char *ps : {"abc", "5x", "99999999999999999999", "0x5"}) {
    const std::string environment = std::string("VEL_LOG_LEVEL=") + ps;
    const Outcome run = host(environment, "line 1 text");
    EXPECT_EQ(lineCount(run.output), 2) << run.output;
    EXPECT_NE(run.output.find("VEL_LOG_LEVEL: a number was expected, found [" + std::string(ps) + "]"),
              std::string::npos);
    EXPECT_EQ(host(environment, "line 2 text").output, "");
  }
}

TEST(LogLibrary, ALineAboveTheThresholdIsNotFormatted) {
  const Outcome run = host("VEL_LOG_LEVEL=4", "wild 5");
  EXPECT_EQ(run.nStatus, 0);
  EXPECT_EQ(run.output, "");
  EXPECT_NE(host("VEL_LOG_LEVEL=5", "wild 5").nStatus, 0) << "the argument was meant to be deadly";
}

TEST(LogLibrary, ALineAboveTheThresholdOpensNoFile) {
  test::ConfigTree tree;
  host("VEL_LOG_FILE='" + tree.path("x.log") + "'", "line 2 text");
  EXPECT_FALSE(std::filesystem::exists(tree.path("x.log")));
}

TEST(LogLibrary, AFileIsAppendedTo) {
  test::ConfigTree tree;
  const std::string environment = "VEL_LOG_FILE='" + tree.path("x.log") + "'";
  tree.file("x.log", "kept\n");
  EXPECT_EQ(host(environment, "line 1 first").output, "");
  EXPECT_EQ(host(environment + " VEL_LOG_LEVEL=5", "line 5 second").output, "");
  const std::string text = content(tree.path("x.log"));
  EXPECT_EQ(lineCount(text), 3) << text;
  EXPECT_EQ(text.find("kept\n"), 0U);
  EXPECT_NE(text.find("[main] first\n"), std::string::npos);
  EXPECT_NE(text.find("[5] [$host] [host.c:7] [main] second\n"), std::string::npos);
}

TEST(LogLibrary, AFileThatCannotBeOpenedFallsBackToStandardErrorAndSaysSo) {
  test::ConfigTree tree;
  tree.file("plain", "not a directory");
  const Outcome run = host("VEL_LOG_FILE='" + tree.path("plain/x.log") + "'", "line 1 text");
  EXPECT_EQ(run.nStatus, 0);
  EXPECT_EQ(lineCount(run.output), 2) << run.output;
  EXPECT_NE(run.output.find("VEL_LOG_FILE: "), std::string::npos);
  EXPECT_NE(run.output.find("[" + tree.path("plain/x.log") + "]"), std::string::npos);
  EXPECT_NE(run.output.find("[main] text\n"), std::string::npos);
}

TEST(LogLibrary, AnErrorIsInTheFileBeforeTheCallReturns) {
  test::ConfigTree tree;
  host("VEL_LOG_FILE='" + tree.path("x.log") + "'", "kill 1 'last words'");
  EXPECT_NE(content(tree.path("x.log")).find("last words\n"), std::string::npos);
}

TEST(LogLibrary, AMessageMayHaveAnyLength) {
  for (const size_t n : {509U, 510U, 511U, 512U, 100000U, 3000000U}) {
    const Outcome run = host("", "long 1 " + std::to_string(n));
    EXPECT_EQ(run.nStatus, 0);
    EXPECT_TRUE(run.output.ends_with("[logLong] [" + std::string(n, 'x') + "]\n")) << n;
  }
}

TEST(LogLibrary, DataCannotPassForALogLine) {
  const Outcome run = host("", "dump 1");
  EXPECT_TRUE(run.output.ends_with("[main] a\\x0ab\\x01\tc\n")) << run.output;
  EXPECT_EQ(lineCount(run.output), 1);
}

// A terminal obeys U+009B like an escape sequence. Other characters of two bytes stay.
TEST(LogLibrary, DataCannotCommandATerminal) {
  EXPECT_TRUE(host("", "line 1 'a\xC2\x9B[31mb\xC2\x80\x7F'")
                  .output.ends_with("[main] a\\xc2\\x9b[31mb\\xc2\\x80\\x7f\n"));
  EXPECT_TRUE(host("", "line 1 '\xC2\xA0\xC3\x9B\xC2'").output.ends_with("[main] \xC2\xA0\xC3\x9B\xC2\n"));
}

TEST(LogLibrary, FormatCharactersInTheTextAreText) {
  EXPECT_TRUE(host("", "line 1 '%s {} {0} %n'").output.ends_with("[main] %s {} {0} %n\n"));
}

TEST(LogLibrary, MissingStringsShowAsDashes) {
  const Outcome run = host("", "null 1");
  EXPECT_EQ(run.nStatus, 0);
  EXPECT_TRUE(run.output.ends_with("[1] [-] [-:7] [-] -\n")) << run.output;
}

}  // namespace

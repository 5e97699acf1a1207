#include "output_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>

#include "config_tree.h"
#include "error.h"

using tool::OutputFile;

namespace {

std::string content(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

size_t entries(const std::string &directory) {
  return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(directory), {}));
}

}  // namespace

TEST(OutputFile, AppearsAtCommit) {
  const test::ConfigTree dir;
  OutputFile file(dir.path("out"));
  file.write("abc");
  EXPECT_FALSE(std::filesystem::exists(dir.path("out")));
  file.commit();
  EXPECT_EQ(content(dir.path("out")), "abc");
  EXPECT_EQ(entries(dir.path()), 1u);
}

TEST(OutputFile, LeavesNothingWithoutCommit) {
  const test::ConfigTree dir;
  {
    OutputFile file(dir.path("out"));
    file.write(std::string(200000, 'x'));
    EXPECT_EQ(entries(dir.path()), 1u);  // the file aside
  }
  EXPECT_EQ(entries(dir.path()), 0u);
}

TEST(OutputFile, KeepsTheOldFileUntilCommit) {
  test::ConfigTree dir;
  dir.file("out", "old");
  {
    OutputFile file(dir.path("out"));
    file.write("new");
  }
  EXPECT_EQ(content(dir.path("out")), "old");
  OutputFile file(dir.path("out"));
  file.write("new");
  file.commit();
  EXPECT_EQ(content(dir.path("out")), "new");
}

TEST(OutputFile, KeepsTheModeOfTheFileItReplaces) {
  test::ConfigTree dir;
  dir.file("out", "old");
  chmod(dir.path("out").c_str(), 0600);
  OutputFile file(dir.path("out"));
  file.commit();
  struct stat status {};
  ASSERT_EQ(stat(dir.path("out").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST(OutputFile, MakesTheFileThatALinkNames) {
  const test::ConfigTree dir;
  std::filesystem::create_directory(dir.path("sub"));
  std::filesystem::create_symlink("sub/next", dir.path("link"));
  std::filesystem::create_symlink(dir.path("target"), dir.path("sub/next"));
  OutputFile file(dir.path("link"));
  file.write("abc");
  file.commit();
  EXPECT_TRUE(std::filesystem::is_symlink(dir.path("link")));
  EXPECT_TRUE(std::filesystem::is_symlink(dir.path("sub/next")));
  EXPECT_EQ(content(dir.path("target")), "abc");
  EXPECT_EQ(entries(dir.path()), 3u);
}

TEST(OutputFile, RefusesALinkThatLeadsToItself) {
  const test::ConfigTree dir;
  std::filesystem::create_symlink("other", dir.path("loop"));
  std::filesystem::create_symlink("loop", dir.path("other"));
  try {
    OutputFile file(dir.path("loop"));
    ADD_FAILURE();
  } catch (const tool::Failure &failure) {
    EXPECT_EQ(failure.code(), tool::Exit::io);
    EXPECT_EQ(failure.what(), "cannot open " + dir.path("loop") + ": Too many levels of symbolic links");
  }
  EXPECT_TRUE(std::filesystem::is_symlink(dir.path("loop")));
  EXPECT_EQ(entries(dir.path()), 2u);
}

TEST(OutputFile, WritesLargeContentInPieces) {
  const test::ConfigTree dir;
  OutputFile file(dir.path("out"));
  std::string all;
  for (int i = 0; i < 50000; ++i) {
    const std::string piece = std::to_string(i) + "\n";
    file.write(piece);
    all += piece;
  }
  file.commit();
  EXPECT_EQ(content(dir.path("out")), all);
}

TEST(OutputFile, WritesADeviceAsItComes) {
  OutputFile file("/dev/null");
  file.write("abc");
  file.commit();
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(OutputFile, SaysWhichFileCannotBeWritten) {
  try {
    OutputFile file("/dev/full");
    file.write("abc");
    file.commit();
    ADD_FAILURE();
  } catch (const tool::Failure &failure) {
    EXPECT_EQ(failure.code(), tool::Exit::io);
    EXPECT_STREQ(failure.what(), "cannot write /dev/full: No space left on device");
  }
  EXPECT_THROW(OutputFile("/no/such/directory/out"), tool::Failure);
}

// Lists are read by recursion: one that is longer than the stack allows is refused, not a crash.
#include <gtest/gtest.h>
#include <pthread.h>

#include <string>

#include "config_tree.h"
#include "cvt_message.h"
#include "log_capture.h"

namespace {

using test::ConfigTree;
using test::cs;

constexpr size_t kSmallStack = 1024 * 1024;

std::string listOf(int nRecords) {
  std::string text = "<Root>\n<PathList __ID=\"ptMsgList\" psPath=\"a\"/>";
  for (int i = 1; i < nRecords; ++i) text += "\n<PathList __ID=\"ptNext\" psPath=\"a\"/>";
  return text + "\n</Root>\n";
}

void *readList(void *pFile) {
  return sttParseXmlFile(static_cast<char *>(pFile), cs("Root"), cs("PathList"),
                         reinterpret_cast<void *>(sttParseXmlPathList));
}

// Reads the file on a thread with a small stack.
void *readOnSmallStack(char *psFile) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kSmallStack);
  pthread_t thread;
  EXPECT_EQ(pthread_create(&thread, &attributes, readList, psFile), 0);
  void *ptList = nullptr;
  pthread_join(thread, &ptList);
  pthread_attr_destroy(&attributes);
  return ptList;
}

}  // namespace

TEST(SttLongList, OneThatFitsTheStackIsRead) {
  ConfigTree tree;
  tree.file("a.xml", listOf(500));
  int nRecords = 0;
  for (auto *pt = static_cast<PathList *>(readOnSmallStack(tree.arg("a.xml"))); pt != nullptr; pt = pt->ptNext) {
    ++nRecords;
  }
  EXPECT_EQ(nRecords, 500);
  EXPECT_TRUE(test::logTexts().empty());
}

TEST(SttLongList, OneThatDoesNotIsRefused) {
  ConfigTree tree;
  tree.file("a.xml", listOf(60000));
  EXPECT_EQ(readOnSmallStack(tree.arg("a.xml")), nullptr);
  EXPECT_EQ(nGRet, -1);
  ASSERT_FALSE(test::logTexts().empty());
  EXPECT_EQ(test::logTexts().front(),
            "Record[PathList]: the list or the nesting is too long for the stack: make it shorter");
  EXPECT_EQ(test::logTexts()[1].rfind("File[" + tree.path("a.xml") + "] Line[", 0), 0U);
}

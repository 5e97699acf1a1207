// trail.h: a failure as its lines tell it, from the innermost to the outermost, each with where it comes
// from: "cvt.cpp cvtSetLoopTime: Node[Items] Set Loop Index err!!".
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "log_capture.h"

namespace test {

using Texts = std::vector<std::string>;

inline std::string describe(const LogLine &line) {
  return line.sFile + " " + line.sFunction + ": " + line.sText;
}

// All lines of the level; every one of the library's is tagged and says its line.
inline Texts trail(int nLevel = 1) {
  Texts all;
  for (const LogLine &line : logLines()) {
    if (line.nLevel != nLevel) continue;
    EXPECT_EQ(line.sModule.substr(0, 1), "$");
    EXPECT_GT(line.nLine, 0) << describe(line);
    all.push_back(describe(line));
  }
  return all;
}

// The modules that the lines were tagged with, each once, in the order in which they spoke.
inline Texts modules() {
  Texts all;
  for (const LogLine &line : logLines()) {
    bool bKnown = false;
    for (const std::string &sModule : all) bKnown = bKnown || sModule == line.sModule;
    if (!bKnown) all.push_back(line.sModule);
  }
  return all;
}

// A trail and more lines behind it.
inline Texts then(Texts first, const Texts &more) {
  first.insert(first.end(), more.begin(), more.end());
  return first;
}

}  // namespace test

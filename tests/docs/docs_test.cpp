// docs_test.cpp: the examples of the manuals hold.
//
//   ```console             a session in the project's folder: each line that starts with "$ " is run with bash, the
//                          command cvt2 of this build first in the path, and its output and error output are
//                          compared with the lines that follow; a line "..." stands for any lines
//   ```console not run     shown only (set-up commands, which CI runs by other ways)
//   ```xml FILE            an excerpt: stands in FILE, indentation aside; also cpp, cmake
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

using Lines = std::vector<std::string>;

struct Block {
  std::string info;  // what stands behind the opening fence
  int line;
  Lines lines;
};

std::string trimmed(const std::string &s) {
  const size_t from = s.find_first_not_of(" \t");
  return from == std::string::npos ? "" : s.substr(from, s.find_last_not_of(" \t\r") - from + 1);
}

Lines linesOf(std::istream &in) {
  Lines lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

Lines linesOf(const fs::path &file) {
  std::ifstream in(file);
  return linesOf(in);
}

std::vector<Block> blocksOf(const fs::path &file) {
  std::vector<Block> blocks;
  bool bInside = false;
  int nLine = 0;
  for (const std::string &line : linesOf(file)) {
    ++nLine;
    if (line.rfind("```", 0) == 0) {
      if (!bInside) blocks.push_back({line.substr(3), nLine, {}});
      bInside = !bInside;
    } else if (bInside) {
      blocks.back().lines.push_back(line);
    }
  }
  return blocks;
}

// Whether the lines match the pattern, in which "..." stands for any number of lines.
bool matches(const Lines &pattern, size_t p, const Lines &lines, size_t l) {
  if (p == pattern.size()) return l == lines.size();
  if (trimmed(pattern[p]) == "...") {
    for (size_t i = l; i <= lines.size(); ++i) {
      if (matches(pattern, p + 1, lines, i)) return true;
    }
    return false;
  }
  return l < lines.size() && pattern[p] == lines[l] && matches(pattern, p + 1, lines, l + 1);
}

std::string joined(const Lines &lines) {
  std::string s;
  for (const std::string &line : lines) s += line + "\n";
  return s;
}

Lines outputOf(const std::string &command) {
  const std::string whole =
      "cd '" CVT2_SOURCE_DIR "' && export PATH='" CVT2_BUILD_DIR "/bin':$PATH && " + command;
  std::string quoted = "'";
  for (const char c : whole) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  FILE *pipe = popen(("bash -c " + quoted + "' 2>&1").c_str(), "r");
  std::string output;
  std::array<char, 4096> piece;
  for (size_t n; (n = fread(piece.data(), 1, piece.size(), pipe)) > 0;) output.append(piece.data(), n);
  pclose(pipe);
  std::istringstream in(output);
  return linesOf(in);
}

void checkSession(const fs::path &file, const Block &block) {
  for (size_t i = 0; i < block.lines.size();) {
    ASSERT_EQ(block.lines[i].rfind("$ ", 0), 0U)
        << file << ":" << block.line << ": a session starts with \"$ \"";
    std::string command = block.lines[i++].substr(2);
    while (!command.empty() && command.back() == '\\' && i < block.lines.size()) {
      command += "\n" + block.lines[i++];
    }
    Lines expected;
    while (i < block.lines.size() && block.lines[i].rfind("$ ", 0) != 0) expected.push_back(block.lines[i++]);
    const Lines seen = outputOf(command);
    EXPECT_TRUE(matches(expected, 0, seen, 0))
        << file << ":" << block.line << ": " << command << "\nexpected:\n"
        << joined(expected) << "seen:\n"
        << joined(seen);
  }
}

void checkExcerpt(const fs::path &file, const Block &block, const std::string &source) {
  const Lines whole = linesOf(fs::path(CVT2_SOURCE_DIR) / source);
  ASSERT_FALSE(whole.empty()) << file << ":" << block.line << ": no file " << source;
  Lines wanted;
  for (const std::string &line : block.lines) wanted.push_back(trimmed(line));
  for (size_t from = 0; from + wanted.size() <= whole.size(); ++from) {
    size_t n = 0;
    while (n < wanted.size() && trimmed(whole[from + n]) == wanted[n]) ++n;
    if (n == wanted.size()) return;
  }
  ADD_FAILURE() << file << ":" << block.line << ": does not stand in " << source;
}

std::vector<fs::path> manuals() {
  std::vector<fs::path> files;
  for (const char *psDir : {"", "docs", "examples", "src"}) {
    const fs::path dir = fs::path(CVT2_SOURCE_DIR) / psDir;
    if (!fs::exists(dir)) continue;
    if (*psDir == 0) {
      for (const auto &entry : fs::directory_iterator(dir)) {
        if (entry.path().extension() == ".md") files.push_back(entry.path());
      }
    } else {
      for (const auto &entry : fs::recursive_directory_iterator(dir)) {
        if (entry.path().extension() == ".md") files.push_back(entry.path());
      }
    }
  }
  return files;
}

class Manual : public testing::TestWithParam<fs::path> {};

}  // namespace

TEST_P(Manual, ExamplesHold) {
  for (const Block &block : blocksOf(GetParam())) {
    std::istringstream info(block.info);
    std::string language;
    std::string rest;
    info >> language;
    std::getline(info >> std::ws, rest);
    if (language == "console" && rest != "not run") checkSession(GetParam(), block);
    const bool bExcerpt = language == "xml" || language == "cpp" || language == "cmake";
    if (bExcerpt && rest.find('/') != std::string::npos) checkExcerpt(GetParam(), block, rest);
  }
}

INSTANTIATE_TEST_SUITE_P(All, Manual, testing::ValuesIn(manuals()), [](const auto &manual) {
  std::string name = fs::relative(manual.param, CVT2_SOURCE_DIR).string();
  for (char &c : name) {
    if (isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
  }
  return name;
});

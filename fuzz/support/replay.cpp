// replay.cpp: a target without a fuzzer: calls it with every file of the command line, and of its
// directories.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "target.h"

namespace {

std::vector<std::filesystem::path> filesOf(const std::filesystem::path &path) {
  if (!std::filesystem::is_directory(path)) return {path};
  std::vector<std::filesystem::path> files;
  for (const auto &entry : std::filesystem::directory_iterator(path)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// The input in a block of exactly its size.
bool replay(const std::filesystem::path &file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    std::fprintf(stderr, "%s: cannot be read\n", file.c_str());
    return false;
  }
  std::vector<char> bytes(std::istreambuf_iterator<char>(in), {});
  bytes.shrink_to_fit();
  std::printf("%s\n", file.c_str());
  std::fflush(stdout);  // the last line is the input that ended the process
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
  return true;
}

}  // namespace

int main(int argc, char **argv) {
  int replayed = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto &file : filesOf(argv[i])) {
      if (!replay(file)) return 1;
      ++replayed;
    }
  }
  std::printf("%d inputs\n", replayed);
  return replayed > 0 ? 0 : 1;
}

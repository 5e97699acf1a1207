// config_tree.h: a configuration tree in a temporary directory, gone with the object.
#pragma once

#include <filesystem>
#include <string>

namespace test {

class ConfigTree {
 public:
  ConfigTree();
  ~ConfigTree();
  ConfigTree(const ConfigTree &) = delete;
  ConfigTree &operator=(const ConfigTree &) = delete;

  // Writes a file; sName is relative to the tree ("All/root.xml"), directories are made.
  ConfigTree &file(const std::string &sName, const std::string &sText);

  // Full name of a file of the tree.
  std::string path(const std::string &sName = "") const;

  // A writable copy of path(sName), valid as long as the tree: for functions that take char *.
  char *arg(const std::string &sName = "");

 private:
  std::filesystem::path m_root;
  std::string m_sArg;
};

// A writable char * of a literal, for functions that take char * but do not write.
inline char *cs(const char *ps) {
  return const_cast<char *>(ps);
}

}  // namespace test

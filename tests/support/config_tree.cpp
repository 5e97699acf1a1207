#include "config_tree.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace test {

ConfigTree::ConfigTree() {
  std::string sTemplate = (std::filesystem::temp_directory_path() / "cvt2-test-XXXXXX").string();
  if (mkdtemp(sTemplate.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  m_root = sTemplate;
}

ConfigTree::~ConfigTree() {
  std::error_code ignored;
  std::filesystem::remove_all(m_root, ignored);
}

ConfigTree &ConfigTree::file(const std::string &sName, const std::string &sText) {
  const std::filesystem::path full = m_root / sName;
  std::filesystem::create_directories(full.parent_path());
  std::ofstream out(full, std::ios::binary);
  out << sText;
  if (!out.flush()) throw std::runtime_error("cannot write " + full.string());
  return *this;
}

std::string ConfigTree::path(const std::string &sName) const {
  return sName.empty() ? m_root.string() : (m_root / sName).string();
}

char *ConfigTree::arg(const std::string &sName) {
  m_sArg = path(sName);
  return m_sArg.data();
}

}  // namespace test

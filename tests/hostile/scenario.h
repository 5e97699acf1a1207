// scenario.h: the example configurations, and what is converted with each.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "config_tree.h"

namespace hostile {

// One message through the configuration.
struct Job {
  std::string sMessage;  // empty: the pipeline finds it
  std::string sFrom;     // format id
  std::string sTo;       // format id; empty: the message's own format
  std::string sBytes;
};

// A copy of an example's configuration.
class Scenario {
 public:
  // sFolder: of the source tree; each file that is given instead replaces or adds one.
  Scenario(std::string sName, const std::string &sFolder, std::vector<Job> jobs);

  const std::string &name() const { return m_name; }
  const std::vector<Job> &jobs() const { return m_jobs; }
  const std::map<std::string, std::string> &files() const { return m_files; }  // relative name, text
  test::ConfigTree &tree() { return *m_tree; }
  void add(const std::string &sFile, const std::string &sText);

 private:
  std::string m_name;
  std::vector<Job> m_jobs;
  std::map<std::string, std::string> m_files;
  std::unique_ptr<test::ConfigTree> m_tree;
};

// All of them. The look-ups of one need a database: its URL is put into the environment.
std::vector<Scenario> allScenarios();

}  // namespace hostile

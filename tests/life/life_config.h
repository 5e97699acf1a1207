// life_config.h: the configuration of the long run. An order of the format fix, with lots inside items,
// becomes an invoice of the format xml.
//
//   All/root.xml   msg/Order.xml   msg/Invoice.xml   cvt/bill.xml   id/pipelines.xml   idinfo/choice.xml
//
//   "fix"  parse: pubParse
//   "xml"  parse: pubParse         generate: pubConvert (Order to Invoice), pubGenerate
//   "02"                           generate: pubGenerate
#pragma once

#include <ctime>

#include "config_tree.h"

namespace life {

class LifeConfig : public test::ConfigTree {
 public:
  // Writes all files, of generation 0.
  LifeConfig();

  // Writes the files that make a generation. The root file is touched, and whole.
  void generation(int nGeneration);

  // Ways to break the next load: at its first byte, between plug-ins, and when most of it is done.
  void breakRoot();
  void breakPlug();
  void breakConverter();

  // cvtInit on the tree.
  int start();

 private:
  void writeRoot(const std::string &sText);

  std::time_t m_tRoot;  // the root file's time, a second later each time that it is written
};

}  // namespace life

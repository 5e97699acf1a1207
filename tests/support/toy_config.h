// toy_config.h: a whole configuration of the toy format (tests/plugins/toy.cpp), whose parts a test may
// replace.
//
//   All/root.xml   msg/Order.xml   msg/Invoice.xml   cvt/bill.xml   id/pipelines.xml   idinfo/choice.xml
//
//   Order    Id, Who(Name, City), Items[ Code, Qty, Lots[ Lot, Date ] ], Note 7,Ann,Rome,[A,1,[x,May;];],hi
//   Invoice  Number, Customer, Lines[ Article ]                                   7,Ann,[A;]
//
//   "01"  parse: pubParse                generate: pubConvert (Order to Invoice), pubGenerate
//   "02"  parse: toyName, pubParse       generate: pubGenerate
#pragma once

#include <string>
#include <vector>

#include "config_tree.h"

namespace test {

// One node of a definition: a field, a group, or a loop.
struct Node {
  std::string sName;
  int nKind = 0;
  std::vector<Node> children = {};
};
Node field(const std::string &sName);
Node group(const std::string &sName, const std::vector<Node> &children);
Node loop(const std::string &sName, const std::vector<Node> &body);

// A definition file.
std::string definition(const std::string &sFormat, const std::string &sName, const std::vector<Node> &nodes);

// A chain of steps: the IdFunc elements of a field of that name ("ptParseFunc", "ptGenFunc").
std::string chain(const std::string &sField, const std::vector<std::string> &steps);

// A pipeline file of these FormatInfo elements; each is made by pipeline().
struct Pipeline {
  std::string sFormatId;
  std::vector<std::string> parse;
  std::vector<std::string> generate;
};
std::string pipelines(const std::vector<Pipeline> &all);

// The root file by sections; an empty one is left out.
struct RootFile {
  std::string sAttributes;  // of the record: nReload="1" ...
  std::string sPlug;
  std::string sMessage;
  std::string sConvert;
  std::string sId;
  std::string text() const;
};

// The "Plug" section with these elements, each "psName=... psPath=..." attributes. Plug-ins lie in the build
// tree.
std::string plugSection(const std::vector<std::string> &plugs);

// The "Message" section with these definition directories.
std::string messageSection(const std::vector<std::string> &paths);

class ToyConfig : public ConfigTree {
 public:
  // Writes all files.
  ToyConfig();

  // Writes All/root.xml from root.
  void writeRoot() { file("All/root.xml", root.text()); }

  // cvtInit on the tree.
  int start();

  // Makes All/root.xml later than what is loaded, as an edit would a while after.
  void touchRoot();

  RootFile root;

 private:
  int m_nTouched = 0;
};

}  // namespace test

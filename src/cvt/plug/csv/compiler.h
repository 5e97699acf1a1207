// compiler.h: from a definition to its plan. Whatever could fail for a definition fails here, when it loads,
// with the place in its file.
#pragma once

#include "kit/attributes.h"
#include "kit/fault.h"
#include "kit/shape.h"
#include "plan.h"

namespace cvt::csv {

// Where a node stands.
struct Scope {
  std::string path;         // of the node around
  const kit::Rules *rules;  // of the level
};

// The compiler of one definition.
class Compiler {
 public:
  Compiler(const Msg &msg, const CsvMsg &text) : m_msg(msg), m_text(text), m_plan(std::make_unique<Plan>()) {}

  std::unique_ptr<Plan> run();

 private:
  void top(const kit::Level &level);
  size_t remembering(const kit::Level &level, size_t at);
  bool hasRecords(const kit::Level &level, size_t at) const;
  bool isRecord(const kit::Node &node) const { return kit::isRecord(node.record, kCsvRecord); }

  // Nodes for records.
  void records(std::vector<Item> &into, const Scope &scope, size_t from, size_t to);
  Item recordItem(const Scope &scope, size_t at);
  Item group(const Scope &scope, size_t at);
  Item recordLoop(const Scope &scope, size_t at);
  void content(Compound &record, const Scope &scope, size_t from, size_t to);
  void tag(Compound &record, const CsvRecord &said, const std::string &path);

  // Nodes for fields.
  bool takesAll(const Item &item) const;
  void checkBehind(const std::vector<Item> &members, const Scope &scope, size_t at, const char *next) const;
  Item member(const Scope &scope, size_t at);
  Item field(const Scope &scope, size_t at);
  Item fieldGroup(const Scope &scope, size_t at);
  Item fieldLoop(const Scope &scope, size_t at);
  void choice(Compound &choice, const CsvGroup &said, const Scope &scope, size_t at);
  void limits(Compound &loop, const kit::Node &node, const std::string &path) const;

  const void *placeOf(const kit::Node &node) const { return node.record != nullptr ? node.record : &m_text; }

  const Msg &m_msg;
  const CsvMsg &m_text;
  std::unique_ptr<Plan> m_plan;
};

}  // namespace cvt::csv

#include "config.h"

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include "convert_xml.h"
#include "cvt.h"
#include "format_config.h"

namespace growth {

namespace {

namespace rule = test::xml;
using test::format::FormatNode;

std::string numbered(const char *name, int n) {
  return name + std::to_string(n);
}

std::vector<FormatNode> fixFields(int count, int length) {
  const std::string attributes = "nLen=\"" + std::to_string(length) + "\"";
  std::vector<FormatNode> nodes;
  nodes.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i)
    nodes.push_back(test::format::leaf("FixField", numbered("F", i), attributes));
  return nodes;
}

std::vector<FormatNode> jsonFields(int count) {
  std::vector<FormatNode> nodes;
  nodes.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) nodes.push_back(test::format::leaf("JsonField", numbered("G", i), ""));
  return nodes;
}

std::string definition(const std::string &format, const std::string &name,
                       const std::vector<FormatNode> &nodes) {
  return "<" + format + "><Msg psMsgName=\"" + name + "\">" + test::format::chain(nodes, "ptHead") +
         "</Msg></" + format + ">";
}

std::string source(const std::string &name, const Shape &shape) {
  std::vector<FormatNode> nodes = fixFields(shape.fields, shape.fieldLength);
  if (shape.repetitions > 0) {
    nodes.push_back(test::format::leaf("FixField", "Count", "nLen=\"6\" psType=\"number\""));
    nodes.push_back(test::format::repeated("", "Items", "", "FixLoop __ID=\"ptInfo\"",
                                           {test::format::leaf("FixField", "Code", "nLen=\"8\""),
                                            test::format::leaf("FixField", "Price", "nLen=\"10\"")},
                                           "Count"));
  }
  return definition("fix", name, nodes);
}

std::string target(const Shape &shape) {
  std::vector<FormatNode> nodes = jsonFields(shape.fields);
  if (shape.repetitions > 0) {
    nodes.push_back(test::format::repeated(
        "JsonGroup", "Rows", "", "JsonLoop __ID=\"ptInfo\"",
        {test::format::leaf("JsonField", "Code", ""), test::format::leaf("JsonField", "Price", "")}, ""));
  }
  return definition("json", "Out", nodes);
}

// What stands in the first field of a message is the last tag.
rule::ArgXml lookUp(int tags) {
  std::vector<rule::Entry> entries;
  for (int i = tags - 1; i >= 0; --i) {
    const std::string tag = std::to_string(i);
    entries.push_back(rule::tagged(rule::value(tag), {rule::copy(rule::value(tag), rule::dst("G0"))}));
  }
  return rule::mapping({rule::src("F0")}, entries);
}

std::string converter(const std::string &name, const std::string &from, const Shape &shape) {
  rule::Args rules;
  for (int i = 0; i < shape.rules; ++i) {
    rules.push_back(
        rule::copy(rule::src(numbered("F", i % shape.fields)), rule::dst(numbered("G", i % shape.fields))));
  }
  if (shape.tags > 0) rules.push_back(lookUp(shape.tags));
  if (shape.repetitions > 0) {
    rules.push_back(rule::loopRule(rule::src("Items"), rule::dst("Rows"),
                                   {rule::copy(rule::src("Code"), rule::dst("Code")),
                                    rule::copy(rule::src("Price"), rule::dst("Price"))}));
  }
  return rule::converter(name, from, "Out", rules);
}

std::string root(const Shape &shape) {
  return "<AllInfo><AllInfo>" + test::plugSection({"psName=\"fix\"", "psName=\"json\""}) +
         "<Message __ID=\"ptMessage\" gnMaxLoop=\"" + std::to_string(shape.repetitions) +
         "\"><PathList __ID=\"ptMsgList\" psPath=\"Message\"/></Message>"
         "<Convert __ID=\"ptConvert\" psCvtPath=\"Convert\"/>"
         "<Id __ID=\"ptId\" psIdPath=\"Id\" psIdInfoPath=\"IdInfo\"/></AllInfo></AllInfo>";
}

std::string pipelines(int others) {
  std::vector<test::Pipeline> all = {{"fix", {"pubParse"}, {}}, {"json", {}, {"pubConvert", "pubGenerate"}}};
  for (int i = 0; i < others; ++i) all.push_back({numbered("other", i), {"pubParse"}, {"pubGenerate"}});
  return test::pipelines(all);
}

// A number makes a text of that length: a short one with blanks behind it, a long one that is full.
std::string textOf(int n, int length) {
  std::string text = std::to_string(n);
  text.resize(static_cast<size_t>(length), length <= 10 ? ' ' : 'x');
  return text;
}

std::string messageOf(const Shape &shape) {
  std::string text;
  for (int i = 0; i < shape.fields; ++i) text += textOf(i, shape.fieldLength);
  if (shape.repetitions == 0) return text;
  const std::string count = std::to_string(shape.repetitions);
  text += std::string(6 - count.size(), '0') + count;
  for (int i = 0; i < shape.repetitions; ++i) text += textOf(i, 8) + textOf(i, 10);
  return text;
}

}  // namespace

Config::Config(const Shape &shape) : m_message(messageOf(shape)) {
  file("All/root.xml", root(shape));
  file("Message/In.xml", source("In", shape));
  file("Message/Out.xml", target(shape));
  file("Convert/C.xml", converter("C", "In", shape));
  file("Id/pipelines.xml", pipelines(shape.pipelines));
  writeOthers(shape);
}

void Config::writeOthers(const Shape &shape) {
  rule::Choice in = {"In", {{"json", "C"}}};
  for (int i = 0; i < shape.pairs; ++i) in.pairs.push_back({numbered("other", i), "C"});
  std::vector<rule::Choice> choices = {in};
  const Shape plain;
  for (int i = 0; i < shape.definitions + shape.entries; ++i) {
    const std::string name = numbered("Other", i);
    file("Message/" + name + ".xml", source(name, plain));
    if (i >= shape.entries) continue;
    file("Convert/" + name + ".xml", converter(name, name, plain));
    choices.push_back({name, {{"json", name}}});
  }
  if (shape.longest > 0)
    file("Message/Longest.xml", definition("fix", "Longest", fixFields(shape.longest, 1)));
  for (int i = 0; i < shape.converters; ++i) {
    const std::string name = numbered("C", i);
    file("Convert/" + name + ".xml", converter(name, "In", plain));
  }
  file("IdInfo/choices.xml", rule::choices(choices));
}

void Config::start() {
  if (cvtInit(arg()) != 0) throw std::runtime_error("the configuration does not load");
}

void Config::reload() {
  using namespace std::chrono_literals;
  const auto now = std::filesystem::file_time_type::clock::now();
  std::filesystem::last_write_time(path("All/root.xml"), now + 10s);
  gptAllInfo->nReload = 1;
  if (cvtInitReload() != 0) throw std::runtime_error("the configuration does not load again");
}

}  // namespace growth

// compile.cpp: from a definition to its plan. Whatever could fail for a name, a form or a type fails here,
// when the definition loads, with the place in its file.
#include <utility>

#include "cursor.h"
#include "escape.h"
#include "kit/attributes.h"
#include "kit/fault.h"
#include "kit/shape.h"
#include "plan.h"

namespace cvt::json {

namespace {

using kit::Level;
using kit::Misconfigured;
using kit::Node;
using kit::NodeKind;

constexpr JsonField kPlainField{};
constexpr JsonGroup kPlainGroup{};
constexpr JsonLoop kPlainLoop{};

std::string text(const char *s) {
  return s == nullptr ? "" : s;
}

// A value alone, without blanks around it: none are read with a value.
bool isValue(const std::string &text) {
  if (text.empty() || isBlank(text.front()) || isBlank(text.back())) return false;
  try {
    Cursor in(scan(text, true), 0, kMaxDepth);
    in.value();
    in.end("");
    return true;
  } catch (const kit::Fault &) {
    return false;
  }
}

// What a constant or a default should be; null when it is that.
const char *complaint(const Item &field, const std::string &value) {
  if (field.form == Form::Others || field.type == Type::Null) return "no psDefault and psConst";
  if (field.type == Type::Number && !isNumber(value)) return "a number as JSON writes it";
  if (field.type == Type::Boolean && value != "true" && value != "false") return "true or false";
  if (field.type == Type::Any && !isValue(value)) return "a JSON value without blanks around it";
  return nullptr;
}

// What is null must not be missing because it is empty.
int keepEmpty(const JsonField &record) {
  const bool there = record.nType == static_cast<int>(Type::Null) && record.nMandatory != 0;
  return there && record.nKeepEmpty == 0 ? static_cast<int>(kit::Empty::Keep) : record.nKeepEmpty;
}

// What a level of values inherits from the one around it.
struct Scope {
  std::string path;    // of the node around, for messages
  const void *record;  // its record
  size_t depth;        // open objects and arrays
  Item *name;          // where the name of a repetition goes; null: it has none
};

class Compiler {
 public:
  Compiler(const Msg &msg, const JsonMsg &settings)
      : m_msg(msg), m_settings(settings), m_plan(std::make_unique<Plan>()) {}

  std::unique_ptr<Plan> run();

 private:
  void options();
  Item root(const Level &level);

  Item item(const kit::Rules &rules, size_t at, const Scope &scope);
  Item field(const kit::Rules &rules, size_t at, const Scope &scope) const;
  Item group(const kit::Rules &rules, size_t at, const Scope &scope);
  Item loop(const Node &node, const Scope &scope);
  Item repeatedField(const Node &node, Item &loop, const Scope &scope);
  Item repeatedGroup(const Node &node, Item &loop, const Scope &scope);

  void children(Item &parent, const kit::Rules &rules, size_t from, size_t to, const Scope &scope);
  void add(Item &parent, Item child, const Scope &scope) const;
  void checkElement(const Item &element, const Scope &scope) const;
  void checkField(const JsonField &record, const Item &field, const Scope &scope) const;
  void checkNode(const Node &node, const Scope &scope) const;
  void checkDepth(const Scope &scope) const;
  std::string quoted(const std::string &name) const;
  Scope inside(const Scope &scope, const Node &node) const;

  const Msg &m_msg;
  const JsonMsg &m_settings;
  std::unique_ptr<Plan> m_plan;
};

std::unique_ptr<Plan> Compiler::run() {
  options();
  const Level level = kit::compileShape(m_msg);
  m_plan->slots = level.slots;
  m_plan->counts = kit::countsOf(level);
  m_plan->root = root(level);
  return std::move(m_plan);
}

void Compiler::options() {
  m_plan->skipUnknown = m_settings.nUnknown == static_cast<int>(Unknown::Skip);
  m_plan->whole = m_settings.nWhole != 0;
  m_plan->ascii = m_settings.nAscii != 0;
  m_plan->finalLineFeed = m_settings.nFinalLineFeed != 0;
  m_plan->indent = static_cast<size_t>(m_settings.nIndent);
  m_plan->maxDepth = static_cast<size_t>(m_settings.nMaxDepth);
  m_plan->maxMembers = static_cast<size_t>(m_settings.nMaxMembers);
  m_plan->maxSize = static_cast<size_t>(m_settings.nMaxSize);
}

Item Compiler::root(const Level &level) {
  const auto form = static_cast<Root>(m_settings.nRoot);
  const kit::Rules rules(level);
  Scope scope{"", &m_settings, 0, nullptr};
  if (form == Root::Object) {
    checkDepth(scope);
    ++scope.depth;
    Item root;
    root.mandatory = true;
    children(root, rules, 0, level.nodes.size(), scope);
    return root;
  }
  const NodeKind kind = form == Root::Array ? NodeKind::Loop : NodeKind::Field;
  if (level.nodes.size() != 1 || level.nodes[0].kind != kind) {
    const bool array = form == Root::Array;
    throw Misconfigured("", &m_settings,
                        array ? "one loop and nothing else with psRoot=\"array\""
                              : "one field and nothing else with psRoot=\"value\"",
                        "other nodes", "Write psRoot=\"object\"");
  }
  Item root = item(rules, 0, scope);
  checkElement(root, {root.node, scope.record, 0, nullptr});
  return root;
}

Scope Compiler::inside(const Scope &scope, const Node &node) const {
  return {kit::nodePath(scope.path, node), node.record == nullptr ? scope.record : node.record, scope.depth,
          scope.name};
}

void Compiler::children(Item &parent, const kit::Rules &rules, size_t from, size_t to, const Scope &scope) {
  for (size_t at = from; at < to; at = static_cast<size_t>(rules.level().nodes[at].next)) {
    const Scope here = inside(scope, rules.level().nodes[at]);
    Item child = item(rules, at, scope);
    if (child.form != Form::Name) {
      add(parent, std::move(child), here);
    } else if (scope.name == nullptr || scope.name->node != nullptr) {
      throw Misconfigured(here.path, here.record,
                          "psKind=\"name\" once, directly in a loop with psForm=\"members\"",
                          scope.name == nullptr ? "it elsewhere" : "a second one", "Remove psKind");
    } else {
      *scope.name = std::move(child);
    }
  }
}

void Compiler::checkNode(const Node &node, const Scope &scope) const {
  if (!node.counted && node.structRecord == nullptr) return;
  throw Misconfigured(kit::nodePath(scope.path, node), scope.record, "a field, a group or a loop",
                      node.counted ? "a counted node" : "a record in StructAttr",
                      "Write the JsonField or JsonGroup into FormatAttr, the LoopType of a loop into "
                      "StructAttr nType=\"1\"");
}

Item Compiler::item(const kit::Rules &rules, size_t at, const Scope &scope) {
  const Node &node = rules.level().nodes[at];
  checkNode(node, scope);
  if (node.kind == NodeKind::Field) return field(rules, at, scope);
  if (node.kind == NodeKind::Group) return group(rules, at, scope);
  return loop(node, scope);
}

Item Compiler::field(const kit::Rules &rules, size_t at, const Scope &scope) const {
  const Node &node = rules.level().nodes[at];
  const Scope here = inside(scope, node);
  const JsonField &record =
      kit::recordOr(node.record, kJsonField, kPlainField, "FormatAttr.pInfo", here.path);
  const auto kind = static_cast<FieldKind>(record.nKind);
  Item field;
  field.node = node.name;
  field.form = kind == FieldKind::Name ? Form::Name : kind == FieldKind::Others ? Form::Others : Form::Scalar;
  field.type = static_cast<Type>(record.nType);
  field.null = field.type == Type::Null ? Null::Empty : static_cast<Null>(record.nNull);
  const kit::RuleText rule{record.nMandatory, keepEmpty(record), record.nMaxLen,
                           record.psDefault,  record.psConst,    record.nPosition};
  field.rule = rules.make(at, rule, here.path, here.record);
  field.mandatory = field.rule.mandatory;
  field.plain = field.form == Form::Scalar && field.rule.asIs &&
                (field.type == Type::Text || field.type == Type::Number);
  if (field.form == Form::Scalar) field.name = record.psName == nullptr ? node.name : text(record.psName);
  checkField(record, field, here);
  return field;
}

// What the attributes of a field may say together.
void Compiler::checkField(const JsonField &record, const Item &field, const Scope &scope) const {
  const bool plain = record.nType == 0 && record.nNull == 0;
  const auto refuse = [&](const std::string &expected, const std::string &found, const std::string &advice) {
    throw Misconfigured(scope.path, scope.record, expected, found, advice);
  };
  if (field.form != Form::Scalar && (!plain || record.psName != nullptr)) {
    refuse("no psName, psType and psNull beside psKind=\"name\" and psKind=\"others\"", "one of them",
           "Remove it");
  }
  if (field.type == Type::Any && record.nNull != 0) {
    refuse("no psNull beside psType=\"any\"", "it", "Remove it: null is a value like any other there");
  }
  if (field.type == Type::Null && record.nNull == static_cast<int>(Null::Absent)) {
    refuse("psNull=\"empty\" beside psType=\"null\"", "absent", "Remove psNull");
  }
  if (field.rule.empty != kit::Empty::Omit && field.type != Type::Text && field.null != Null::Empty) {
    refuse("psNull=\"empty\" beside nKeepEmpty", "none",
           "An empty value of this psType is null, or is left out");
  }
  const bool noNumber = field.form == Form::Others || field.type == Type::Boolean || field.type == Type::Null;
  if (field.rule.position && noNumber) {
    refuse("psType text, number or any beside nPosition", "another psType or psKind",
           "Write psType=\"number\"");
  }
  for (const char *given : {record.psDefault, record.psConst}) {
    const char *expected = given == nullptr ? nullptr : complaint(field, given);
    if (expected != nullptr) refuse(expected, "\"" + text(given) + "\"", "");
  }
}

Item Compiler::group(const kit::Rules &rules, size_t at, const Scope &scope) {
  const Node &node = rules.level().nodes[at];
  Scope here = inside(scope, node);
  here.name = nullptr;
  const JsonGroup &record =
      kit::recordOr(node.record, kJsonGroup, kPlainGroup, "FormatAttr.pInfo", here.path);
  if (record.nForm == static_cast<int>(GroupForm::Value)) {
    throw Misconfigured(here.path, here.record, "psForm object or tuple", "value",
                        "It is for the repetitions of a loop");
  }
  checkDepth(here);
  ++here.depth;
  Item group;
  group.node = node.name;
  group.form = record.nForm == static_cast<int>(GroupForm::Tuple) ? Form::Tuple : Form::Object;
  group.name = record.psName == nullptr ? node.name : text(record.psName);
  group.null = static_cast<Null>(record.nNull);
  group.mandatory = record.nMandatory != 0;
  group.keepEmpty = record.nKeepEmpty != 0;
  children(group, rules, at + 1, static_cast<size_t>(node.next), here);
  return group;
}

Item Compiler::loop(const Node &node, const Scope &scope) {
  Scope here = inside(scope, node);
  here.name = nullptr;
  const JsonLoop &record =
      kit::recordOr(node.loopRecord, kJsonLoop, kPlainLoop, "LoopType.ptInfo", here.path);
  if (record.nMax != kNoLimit && record.nMax < record.nMin) {
    throw Misconfigured(here.path, node.loopRecord, "nMax at least nMin",
                        std::to_string(record.nMax) + " and " + std::to_string(record.nMin));
  }
  checkDepth(here);
  ++here.depth;
  Item loop;
  loop.node = node.name;
  loop.form = record.nForm == static_cast<int>(LoopForm::Members) ? Form::Members : Form::Array;
  loop.null = static_cast<Null>(record.nNull);
  loop.mandatory = record.nMandatory != 0;
  loop.keepEmpty = record.nKeepEmpty != 0;
  loop.loopSlot = node.slot;
  loop.bodySlots = node.body->slots;
  loop.minTimes = record.nMin;
  loop.maxTimes = record.nMax;
  loop.counts = kit::countsOf(*node.body);
  const Level &inner = *node.body;
  const bool single = inner.nodes.size() == 1 && inner.nodes[0].message == node.message;
  Item repeated = single ? repeatedField(node, loop, here) : repeatedGroup(node, loop, here);
  loop.children.insert(loop.children.begin(), std::move(repeated));
  return loop;
}

// A loop without children: the one field of its body is the repeated value.
Item Compiler::repeatedField(const Node &node, Item &loop, const Scope &scope) {
  if (loop.form == Form::Members) {
    throw Misconfigured(scope.path, node.loopRecord, "children in a loop with psForm=\"members\"", "none",
                        "One of them, with psKind=\"name\", takes the names");
  }
  Item repeated = field(kit::Rules(*node.body), 0, scope);
  if (repeated.form != Form::Scalar || repeated.rule.empty != kit::Empty::Omit) {
    throw Misconfigured(scope.path, scope.record, "psKind=\"member\" without nKeepEmpty in a loop",
                        "another kind", "A repetition is always written, also when it is empty");
  }
  loop.name = std::exchange(repeated.name, repeated.node);
  checkElement(repeated, scope);
  repeated.node = nullptr;  // the loop stands for it
  return repeated;
}

Item Compiler::repeatedGroup(const Node &node, Item &loop, const Scope &scope) {
  Scope here = scope;
  const JsonGroup &record =
      kit::recordOr(node.record, kJsonGroup, kPlainGroup, "FormatAttr.pInfo", here.path);
  if (record.nMandatory != 0 || record.nKeepEmpty != 0 || record.nNull != 0) {
    throw Misconfigured(here.path, here.record, "psName and psForm alone in the JsonGroup of a loop",
                        "another attribute", "Write it into its JsonLoop");
  }
  loop.name = record.psName == nullptr ? node.name : text(record.psName);
  const auto form = static_cast<GroupForm>(record.nForm);
  Item name;
  if (loop.form == Form::Members) here.name = &name;
  Item repeated;
  repeated.form = form == GroupForm::Tuple ? Form::Tuple : Form::Object;
  if (form != GroupForm::Value) {
    checkDepth(here);
    ++here.depth;
  }
  children(repeated, kit::Rules(*node.body), 0, node.body->nodes.size(), here);
  if (loop.form == Form::Members && name.node == nullptr) {
    throw Misconfigured(here.path, here.record,
                        "a field with psKind=\"name\" in a loop with psForm=\"members\"", "none",
                        "It takes the names of the members");
  }
  if (loop.form == Form::Members) loop.children.push_back(std::move(name));
  if (form != GroupForm::Value) return repeated;
  if (repeated.children.size() != 1 || repeated.others >= 0) {
    throw Misconfigured(here.path, here.record, "one node beside the name with psForm=\"value\"",
                        std::to_string(repeated.children.size()), "Write psForm=\"object\"");
  }
  Item only = std::move(repeated.children[0]);
  checkElement(only, here);
  return only;
}

// What stands in an array, or is a text of its own, has no name and cannot be left out.
void Compiler::checkElement(const Item &element, const Scope &scope) const {
  if (element.form == Form::Others || element.form == Form::Name) {
    throw Misconfigured(scope.path, scope.record, "psKind=\"member\" outside of objects", "another kind",
                        "Remove psKind");
  }
  if (element.name != element.node) {
    throw Misconfigured(scope.path, scope.record, "no psName for a value that is no member",
                        "\"" + element.name + "\"", "Remove psName");
  }
  if (element.null == Null::Absent) {
    throw Misconfigured(scope.path, scope.record, "psNull refuse or empty for a value that is no member",
                        "absent", "Write psNull=\"empty\"");
  }
}

void Compiler::add(Item &parent, Item child, const Scope &scope) const {
  const auto position = static_cast<int>(parent.children.size());
  if (parent.form == Form::Tuple) {
    checkElement(child, scope);
  } else if (child.form == Form::Others) {
    if (parent.others >= 0) {
      throw Misconfigured(scope.path, scope.record, "one field with psKind=\"others\" in an object",
                          "a second one", "Remove it");
    }
    parent.others = position;
  } else {
    if (!parent.names.add(child.name, position)) {
      throw Misconfigured(scope.path, scope.record, "members of different names",
                          "a second \"" + child.name + "\"",
                          "Give it another psName, or make one loop of both");
    }
    child.quoted = quoted(child.name);
    child.key = "," + child.quoted + (m_plan->indent == 0 ? ":" : ": ");
    child.textKey = child.key + '"';
    child.readKey = child.quoted + (child.type == Type::Text ? ":\"" : ":");
  }
  const bool required = child.mandatory || child.minTimes > 0;
  if (required && child.form != Form::Others) parent.required.push_back(parent.children.size());
  parent.children.push_back(std::move(child));
}

std::string Compiler::quoted(const std::string &name) const {
  std::string room(12 * name.size() + 2, '\0');
  kit::Output out(room.data(), 0, room.size());
  putString(out, name, m_plan->ascii);
  room.resize(out.offset());
  return room;
}

void Compiler::checkDepth(const Scope &scope) const {
  if (scope.depth < m_plan->maxDepth) return;
  throw Misconfigured(scope.path, scope.record,
                      "at most " + std::to_string(m_plan->maxDepth) + " objects and arrays inside each other",
                      "more", "Raise nMaxDepth of JsonMsg");
}

}  // namespace

std::unique_ptr<Plan> compilePlan(const Msg &msg, const JsonMsg &settings) {
  return Compiler(msg, settings).run();
}

}  // namespace cvt::json

#include <algorithm>
#include <utility>

#include "compiler.h"
#include "kit/log.h"

namespace cvt::csv {

using kit::Level;
using kit::Misconfigured;
using kit::Node;
using kit::NodeKind;

namespace {

constexpr CsvField plainField() {
  CsvField field{};
  field.nPad = kNotGiven;
  field.nQuoting = kNotGiven;
  return field;
}
constexpr CsvField kPlainField = plainField();
constexpr CsvGroup kPlainGroup{};

bool standsInText(const CsvField &field) {
  const auto kind = static_cast<FieldKind>(field.nKind);
  return kind == FieldKind::Value || kind == FieldKind::Rest;
}

// The values of psWhen and psNone.
std::vector<std::string> valuesOf(const char *list) {
  std::vector<std::string> values;
  if (list == nullptr) return values;
  std::string_view rest = list;
  for (size_t bar = rest.find('|'); bar != std::string_view::npos; bar = rest.find('|')) {
    values.emplace_back(rest.substr(0, bar));
    rest.remove_prefix(bar + 1);
  }
  values.emplace_back(rest);
  return values;
}

// Whether the field can have the value that the definition supplies, if it is of fixed length. What ends like
// its pads would be read without them, and so be no constant.
bool fits(const Field &field, const Marks &marks, const char *supplied) {
  if (supplied == nullptr || field.shape != Shape::Fixed) return true;
  const std::string_view value = supplied;
  const size_t characters = kit::Charset::countUtf8(value.data(), value.size());
  if (characters > field.length || (characters < field.length && !field.padded)) return false;
  const bool stripped = field.constant != nullptr && field.padded && value.ends_with(field.pad);
  return !stripped && marks.absentIn(value);
}

}  // namespace

// Whether it leaves nothing of its record to what stands behind it.
bool Compiler::takesAll(const Item &item) const {
  if (item.kind == ItemKind::Field) {
    return item.field.shape == Shape::Rest && m_plan->dialect.continuation.empty();
  }
  if (item.kind == ItemKind::Loop) return item.compound->countSlot < 0;
  const std::vector<Item> &members = item.compound->fields;
  return std::any_of(members.begin(), members.end(), [this](const Item &each) { return takesAll(each); });
}

// What comes behind the members would never be read.
void Compiler::checkBehind(const std::vector<Item> &members, const Scope &scope, size_t at,
                           const char *next) const {
  if (members.empty() || !takesAll(members.back())) return;
  const Node &node = scope.rules->level().nodes[at];
  throw Misconfigured(
      kit::nodePath(scope.path, node), placeOf(node),
      "nothing behind what takes all that is left of its record", next,
      "Let that be the last; count a loop with psLoopNumName, continue a rest with psContinuation");
}

Item Compiler::member(const Scope &scope, size_t at) {
  const Node &node = scope.rules->level().nodes[at];
  if (node.counted || node.structRecord != nullptr) {
    throw Misconfigured(
        kit::nodePath(scope.path, node), placeOf(node), "a field, a group or a loop",
        node.counted ? "a counted node" : "a record in StructAttr",
        "Write the record into FormatAttr, the LoopType of a loop into StructAttr nType=\"1\"");
  }
  return node.kind == NodeKind::Field   ? field(scope, at)
         : node.kind == NodeKind::Group ? fieldGroup(scope, at)
                                        : fieldLoop(scope, at);
}

Item Compiler::field(const Scope &scope, size_t at) {
  const Node &node = scope.rules->level().nodes[at];
  const std::string path = kit::nodePath(scope.path, node);
  const CsvField &said = kit::recordOr(node.record, kCsvField, kPlainField, "FormatAttr.pInfo", path);
  const auto kind = static_cast<FieldKind>(said.nKind);
  if (!standsInText(said)) {
    throw Misconfigured(
        path, &said,
        std::string("a field of kind ") + kFieldKindWords[said.nKind] +
            (kind == FieldKind::Wraps ? " in the record itself" : " at the end of the message"),
        "it elsewhere");
  }
  const kit::RuleText rule{said.nMandatory, said.nKeepEmpty, said.nMaxLen,
                           said.psDefault,  said.psConst,    said.nPosition};
  Item item;
  static_cast<kit::Rule &>(item.field) = scope.rules->make(at, rule, path, &said);
  item.field.simple = item.field.constant == nullptr && item.field.countedLoop < 0 && !item.field.position;
  item.field.column = said.psName != nullptr ? said.psName : node.name;
  const int quoting = said.nQuoting == kNotGiven ? m_text.nQuoting : said.nQuoting;
  item.field.quoted = quoting == static_cast<int>(Quoting::Always);
  if (said.nLen != kNoLimit) {
    item.field.shape = Shape::Fixed;
    item.field.length = static_cast<size_t>(said.nLen);
  }
  if (kind == FieldKind::Rest) item.field.shape = Shape::Rest;
  item.field.padded = said.nPad != kNotGiven;
  if (item.field.padded) item.field.pad = static_cast<char>(said.nPad & 0xFF);
  const bool misused = (said.nLen != kNoLimit && kind == FieldKind::Rest) ||
                       (said.nLen == kNoLimit && item.field.padded) ||
                       static_cast<unsigned char>(item.field.pad) >= 0x80 ||
                       (item.field.padded && m_plan->dialect.marks.has(item.field.pad));
  if (misused) {
    throw Misconfigured(
        path, &said, "nLen on a field of kind value, and an ASCII psPad that is no mark with it", "another");
  }
  for (const char *const supplied : {item.field.constant, item.field.fallback}) {
    if (fits(item.field, m_plan->dialect.marks, supplied)) continue;
    throw Misconfigured(path, &said, "a psConst or psDefault that fits into the nLen characters of its field",
                        kit::quoted(supplied), "Correct it, or nLen and psPad");
  }
  return item;
}

Item Compiler::fieldGroup(const Scope &scope, size_t at) {
  const Node &node = scope.rules->level().nodes[at];
  const std::string path = kit::nodePath(scope.path, node);
  const CsvGroup &said = kit::recordOr(node.record, kCsvGroup, kPlainGroup, "FormatAttr.pInfo", path);
  if (said.nKind == static_cast<int>(GroupKind::Any) || said.nMandatory != 0) {
    throw Misconfigured(path, &said, "psKind all or choice, and no nMandatory, in a group of fields",
                        "another");
  }
  Item item;
  item.kind = said.nKind == static_cast<int>(GroupKind::Choice) ? ItemKind::Choice : ItemKind::Group;
  item.compound = std::make_unique<Compound>();
  item.compound->node = node.name;
  const Scope inner{path, scope.rules};
  const Level &level = scope.rules->level();
  for (size_t i = at + 1; i < static_cast<size_t>(node.next); i = static_cast<size_t>(level.nodes[i].next)) {
    if (item.kind != ItemKind::Choice) checkBehind(item.compound->fields, inner, i, "another node");
    item.compound->fields.push_back(member(inner, i));
  }
  if (item.kind == ItemKind::Choice) choice(*item.compound, said, inner, at);
  return item;
}

void Compiler::choice(Compound &choice, const CsvGroup &said, const Scope &scope, size_t at) {
  const Level &level = scope.rules->level();
  for (size_t i = 0; i < at && said.psSelect != nullptr; ++i) {
    const Node &node = level.nodes[i];
    if (node.kind != NodeKind::Field || std::string_view(node.name) != said.psSelect) continue;
    const CsvField *chooser = kit::recordAs<CsvField>(node.record, kCsvField);
    if (chooser != nullptr && !standsInText(*chooser)) continue;
    choice.select = field(scope, i).field;
    if (choice.select.position) {
      throw Misconfigured(scope.path, &said, "a field whose value is its own in psSelect", "a position");
    }
  }
  if (choice.select.node == nullptr) {
    throw Misconfigured(scope.path, &said, "a field before it, in the same repetition, in psSelect",
                        said.psSelect == nullptr ? "none" : kit::quoted(said.psSelect));
  }
  choice.none = valuesOf(said.psNone);
  std::vector<std::string> seen = choice.none;
  bool otherwise = false;
  size_t i = at + 1;
  for (size_t position = 0; position < choice.fields.size(); ++position) {
    const Node &node = level.nodes[i];
    const CsvField *field = kit::recordAs<CsvField>(node.record, kCsvField);
    const CsvGroup *group = kit::recordAs<CsvGroup>(node.record, kCsvGroup);
    const ItemKind kind = choice.fields[position].kind;
    choice.cases.push_back(valuesOf(field != nullptr   ? field->psWhen
                                    : group != nullptr ? group->psWhen
                                                       : nullptr));
    bool twice = choice.cases.back().empty() && std::exchange(otherwise, true);
    for (const std::string &value : choice.cases.back()) {
      for (const std::string &other : seen) twice = twice || other == value;
    }
    seen.insert(seen.end(), choice.cases.back().begin(), choice.cases.back().end());
    if (twice || kind == ItemKind::Loop || kind == ItemKind::Choice) {
      throw Misconfigured(kit::nodePath(scope.path, node), placeOf(node),
                          "a field or a group with values of its own in psWhen, or one without",
                          twice ? "values that another member has" : "a loop or a choice",
                          twice ? "" : "Write it into a group");
    }
    i = static_cast<size_t>(node.next);
  }
}

Item Compiler::fieldLoop(const Scope &scope, size_t at) {
  const Node &node = scope.rules->level().nodes[at];
  const std::string path = kit::nodePath(scope.path, node);
  Item item;
  item.kind = ItemKind::Loop;
  item.compound = std::make_unique<Compound>();
  Compound &loop = *item.compound;
  limits(loop, node, path);
  if (node.countNode >= 0) {
    loop.countSlot = scope.rules->level().nodes[static_cast<size_t>(node.countNode)].slot;
  }
  const Level &body = *node.body;
  const kit::Rules rules(body);
  const bool single = body.nodes[0].message == node.message;
  if (!single) {
    const CsvGroup &said = kit::recordOr(node.record, kCsvGroup, kPlainGroup, "FormatAttr.pInfo", path);
    if (said.nKind != static_cast<int>(GroupKind::All) || said.nMandatory != 0 || said.psWhen != nullptr) {
      throw Misconfigured(path, &said, "a CsvGroup without attributes on a loop of fields", "another");
    }
  }
  const Scope inner{single ? scope.path : path, &rules};
  for (size_t i = 0; i < body.nodes.size(); i = static_cast<size_t>(body.nodes[i].next)) {
    checkBehind(loop.fields, inner, i, "another node");
    loop.fields.push_back(member(inner, i));
  }
  checkBehind(loop.fields, scope, at, "a further repetition");
  loop.first = firstField(loop.fields);
  return item;
}

}  // namespace cvt::csv

#include "compile_dialect.h"
#include "compiler.h"
#include "kit/log.h"
#include "resolve.h"

namespace cvt::csv {

using kit::Level;
using kit::Misconfigured;
using kit::Node;
using kit::NodeKind;

namespace {

constexpr CsvGroup kPlainGroup{};
constexpr CsvLoop kPlainLoop{};

}  // namespace

std::unique_ptr<Plan> Compiler::run() {
  compileDialect(m_text, m_plan->dialect);
  m_plan->whole = m_text.nWhole != 0;
  m_plan->header = static_cast<Header>(m_text.nHeader);
  m_plan->skipUnknown = m_text.nUnknown == static_cast<int>(Unknown::Skip);
  m_plan->maxColumns = static_cast<size_t>(m_text.nMaxColumns);
  m_plan->mark = static_cast<Mark>(m_text.nMark);
  m_plan->quotedTags = m_text.nQuoting == static_cast<int>(Quoting::Always) &&
                       m_plan->dialect.quoteByte != 0 && m_plan->dialect.tagBack.empty();
  if (m_plan->mark == Mark::Write) {
    m_plan->markBytes = literal(m_plan->dialect, "\xEF\xBB\xBF", &m_text, "psByteOrderMark").bytes;
  }
  const Level level = kit::compileShape(m_msg);
  m_plan->slots = level.slots;
  m_plan->counts = kit::countsOf(level);
  top(level);
  m_plan->dialect.tagged = m_plan->tagged;
  if (!m_plan->tagged && (m_text.psTagBack != nullptr || m_text.psContinuation != nullptr)) {
    throw Misconfigured("", &m_text, "records with a psTag, for psTagBack and psContinuation", "none");
  }
  resolveStarts(*m_plan, m_text);
  if (m_plan->header != Header::None) resolveHeader(*m_plan, m_text);
  return std::move(m_plan);
}

// Whether a node stands for records.
bool Compiler::hasRecords(const Level &level, size_t at) const {
  const Node &node = level.nodes[at];
  if (isRecord(node)) return true;
  if (node.kind == NodeKind::Loop) {
    const std::vector<Node> &body = node.body->nodes;
    if (body.size() == 1 && body[0].message == node.message) return false;
    for (size_t i = 0; i < body.size(); i = static_cast<size_t>(body[i].next)) {
      if (hasRecords(*node.body, i)) return true;
    }
    return false;
  }
  for (size_t i = at + 1; i < static_cast<size_t>(node.next); i = static_cast<size_t>(level.nodes[i].next)) {
    if (hasRecords(level, i)) return true;
  }
  return false;
}

// The fields that say how the text was written stand first or last in the message; the position behind one
// that stands there.
size_t Compiler::remembering(const Level &level, size_t at) {
  const Node &node = level.nodes[at];
  const CsvField *field =
      node.kind == NodeKind::Field ? kit::recordAs<CsvField>(node.record, kCsvField) : nullptr;
  const auto kind = field == nullptr ? FieldKind::Value : static_cast<FieldKind>(field->nKind);
  if (kind != FieldKind::End && kind != FieldKind::LineEnd) return at;
  int &slot = kind == FieldKind::End ? m_plan->endSlot : m_plan->lineEndSlot;
  if (slot >= 0) {
    throw Misconfigured(node.name, node.record, "one field of its kind", "a second one", "Remove it");
  }
  slot = node.slot;
  return static_cast<size_t>(node.next);
}

void Compiler::top(const Level &level) {
  const kit::Rules rules(level);
  size_t from = 0;
  while (from < level.nodes.size() && remembering(level, from) != from)
    from = static_cast<size_t>(level.nodes[from].next);
  size_t to = level.nodes.size();
  for (size_t i = from; i < level.nodes.size(); i = static_cast<size_t>(level.nodes[i].next)) {
    if (remembering(level, i) == i) continue;
    to = i;
    for (size_t k = static_cast<size_t>(level.nodes[i].next); k < level.nodes.size(); ++k) {
      if (remembering(level, k) == k) {
        throw Misconfigured(level.nodes[k].name, placeOf(level.nodes[k]),
                            "nothing behind the fields of kind end and line-end", "another node");
      }
    }
    break;
  }
  Item item;
  item.compound = std::make_unique<Compound>();
  Compound &all = *item.compound;
  all.ofRecords = true;
  all.mandatory = true;
  const Scope scope{"", &rules};
  if (from == to) throw Misconfigured("", &m_text, "a record or a field", "none");
  if (hasRecords(level, from)) {
    item.kind = m_text.nOrder == static_cast<int>(Order::Any) ? ItemKind::AnyOrder : ItemKind::Group;
    records(all.records, scope, from, to);
  } else {
    item.kind = ItemKind::Record;
    all.shortened = m_text.nShort != 0;
    content(all, scope, from, to);
  }
  m_plan->top = std::move(item);
}

// --- Records
// --------------------------------------------------------------------------------------------------

void Compiler::records(std::vector<Item> &into, const Scope &scope, size_t from, size_t to) {
  const Level &level = scope.rules->level();
  for (size_t at = from; at < to; at = static_cast<size_t>(level.nodes[at].next)) {
    const Node &node = level.nodes[at];
    if (!hasRecords(level, at)) {
      throw Misconfigured(kit::nodePath(scope.path, node), placeOf(node), "a record",
                          "a node without a CsvRecord behind one",
                          "Fields stand in a record, before the records that belong to it");
    }
    into.push_back(node.kind == NodeKind::Loop ? recordLoop(scope, at)
                   : isRecord(node)            ? recordItem(scope, at)
                                               : group(scope, at));
  }
}

// What stands in a record: its fields, and then the records that belong to it.
void Compiler::content(Compound &record, const Scope &scope, size_t from, size_t to) {
  const Level &level = scope.rules->level();
  size_t at = from;
  for (; at < to && !hasRecords(level, at); at = static_cast<size_t>(level.nodes[at].next)) {
    const CsvField *field = kit::recordAs<CsvField>(level.nodes[at].record, kCsvField);
    if (level.nodes[at].kind == NodeKind::Field && field != nullptr &&
        field->nKind == static_cast<int>(FieldKind::Wraps)) {
      if (record.wrapsSlot >= 0 || m_plan->dialect.continuation.empty()) {
        throw Misconfigured(kit::nodePath(scope.path, level.nodes[at]), field,
                            "one field of kind wraps in a record, and psContinuation in CsvMsg", "another",
                            "Remove it");
      }
      record.wrapsSlot = level.nodes[at].slot;
      continue;
    }
    checkBehind(record.fields, scope, at, "another node");
    record.fields.push_back(member(scope, at));
  }
  records(record.records, scope, at, to);
}

void Compiler::tag(Compound &record, const CsvRecord &said, const std::string &path) {
  record.shortened = said.nShort == kNotGiven ? m_text.nShort != 0 : said.nShort != 0;
  Dialect &dialect = m_plan->dialect;
  if (said.psTag == nullptr) {
    if (dialect.tagBack.empty() && dialect.continuation.empty()) return;
    throw Misconfigured(path, &said, "a psTag in every record, with psTagBack and psContinuation", "none");
  }
  record.tagText = literal(dialect, said.psTag, &said, "psTag");
  const std::string &text = record.tagText.text;
  const bool marked = dialect.tagBack.empty() ? !dialect.marks.absentIn(text)
                                              : text.find(dialect.tagBack.text) != std::string::npos;
  const bool taken = m_text.psContinuation != nullptr && text == m_text.psContinuation;
  const std::string start = dialect.tagFront.text + text + dialect.tagBack.text;
  const std::string &passed = dialect.comment.text;
  const bool comment = !passed.empty() &&
                       (start.starts_with(passed) || (!dialect.tagBack.empty() && passed.starts_with(start)));
  if (text.empty() || text.size() > 200 || marked || taken || comment) {
    throw Misconfigured(path, &said, "a tag of up to 200 bytes without marks, other than psContinuation",
                        kit::quoted(text));
  }
  record.tag = dialect.tags.find(text);
  if (record.tag >= 0) return;
  record.tag = static_cast<int>(m_plan->tagCount++);
  dialect.tags.add(text, record.tag);
  m_plan->tagged = true;
  m_plan->knownTags += (record.tag == 0 ? "" : ", ") + text;
}

Item Compiler::recordItem(const Scope &scope, size_t at) {
  const Node &node = scope.rules->level().nodes[at];
  const auto &said = *kit::recordAs<CsvRecord>(node.record, kCsvRecord);
  Item item;
  item.kind = ItemKind::Record;
  item.compound = std::make_unique<Compound>();
  Compound &record = *item.compound;
  record.node = node.name;
  record.ofRecords = true;
  record.mandatory = said.nMandatory != 0;
  const std::string path = kit::nodePath(scope.path, node);
  if (node.kind != NodeKind::Group) {
    throw Misconfigured(path, &said, "a CsvRecord on a group or a loop with children", "it on a field",
                        "Give the record fields");
  }
  tag(record, said, path);
  content(record, {path, scope.rules}, at + 1, static_cast<size_t>(node.next));
  return item;
}

Item Compiler::group(const Scope &scope, size_t at) {
  const Node &node = scope.rules->level().nodes[at];
  const std::string path = kit::nodePath(scope.path, node);
  const CsvGroup &said = kit::recordOr(node.record, kCsvGroup, kPlainGroup, "FormatAttr.pInfo", path);
  if (said.nKind == static_cast<int>(GroupKind::Choice) || said.psWhen != nullptr) {
    throw Misconfigured(path, &said, "a choice of fields", "one of records",
                        "Records are chosen by their tags: leave out those that may be absent");
  }
  Item item;
  item.kind = said.nKind == static_cast<int>(GroupKind::Any) ? ItemKind::AnyOrder : ItemKind::Group;
  item.compound = std::make_unique<Compound>();
  item.compound->node = node.name;
  item.compound->ofRecords = true;
  item.compound->mandatory = said.nMandatory != 0;
  records(item.compound->records, {path, scope.rules}, at + 1, static_cast<size_t>(node.next));
  return item;
}

void Compiler::limits(Compound &loop, const Node &node, const std::string &path) const {
  const CsvLoop &said = kit::recordOr(node.loopRecord, kCsvLoop, kPlainLoop, "LoopType.ptInfo", path);
  if (said.nMax != kNoLimit && said.nMax < said.nMin) {
    throw Misconfigured(path, node.loopRecord, "nMax at least nMin",
                        std::to_string(said.nMax) + " and " + std::to_string(said.nMin));
  }
  loop.node = node.name;
  loop.slot = node.slot;
  loop.bodySlots = node.body->slots;
  loop.least = static_cast<size_t>(said.nMin);
  loop.most = static_cast<size_t>(said.nMax);
}

// A loop of one record, or of records in their order.
Item Compiler::recordLoop(const Scope &scope, size_t at) {
  const Node &node = scope.rules->level().nodes[at];
  const std::string path = kit::nodePath(scope.path, node);
  const kit::Rules rules(*node.body);
  Item item;
  item.kind = ItemKind::Loop;
  item.compound = std::make_unique<Compound>();
  Compound &loop = *item.compound;
  loop.ofRecords = true;
  limits(loop, node, path);
  loop.counts = kit::countsOf(*node.body);
  const Scope inner{path, &rules};
  Item body;
  body.compound = std::make_unique<Compound>();
  body.compound->ofRecords = true;
  body.compound->mandatory = true;
  const size_t end = node.body->nodes.size();
  if (isRecord(node)) {
    const auto &said = *kit::recordAs<CsvRecord>(node.record, kCsvRecord);
    if (said.nMandatory != 0 || node.body->nodes[0].message == node.message) {
      throw Misconfigured(path, &said, "a CsvRecord without nMandatory on a loop with children", "another",
                          "Write nMin=\"1\" into its CsvLoop, and give the record fields");
    }
    body.kind = ItemKind::Record;
    tag(*body.compound, said, path);
    content(*body.compound, inner, 0, end);
  } else {
    const CsvGroup &said = kit::recordOr(node.record, kCsvGroup, kPlainGroup, "FormatAttr.pInfo", path);
    if (said.nKind == static_cast<int>(GroupKind::Choice) || said.nMandatory != 0) {
      throw Misconfigured(path, &said, "psKind all or any, and no nMandatory, in the CsvGroup of a loop",
                          "another", "Write nMin=\"1\" into its CsvLoop");
    }
    body.kind = said.nKind == static_cast<int>(GroupKind::Any) ? ItemKind::AnyOrder : ItemKind::Group;
    records(body.compound->records, inner, 0, end);
  }
  loop.records.push_back(std::move(body));
  return item;
}

std::unique_ptr<Plan> compilePlan(const Msg &msg, const CsvMsg &text) {
  return Compiler(msg, text).run();
}

}  // namespace cvt::csv

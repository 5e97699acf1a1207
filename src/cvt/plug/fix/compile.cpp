// compile.cpp: a definition to its plan.
#include "compile_end.h"
#include "compile_field.h"
#include "compile_names.h"
#include "extent.h"
#include "kit/fault.h"
#include "kit/shape.h"
#include "plan.h"

namespace cvt::fix {

using kit::Level;
using kit::Misconfigured;
using kit::Node;
using kit::NodeKind;

namespace {

// What all levels of a message share.
struct Context {
  const FixMsg &settings;
  size_t lengths = 0;  // fields that are lengths, so far
};

// Compiles one level; loops' bodies by compilers of their own.
class LevelCompiler {
 public:
  // scope: of the level around this one; null for the message's own. inRecord: that of the loop.
  LevelCompiler(Context &context, const Level &shape, const Scope *scope, std::string outer, bool inRecord)
      : m_context(context),
        m_settings(context.settings),
        m_shape(shape),
        m_scope(scope),
        m_outer(std::move(outer)),
        m_inRecord(inRecord) {}

  LevelPlan run() {
    m_plan.slots = m_shape.slots;
    m_plan.ops.resize(m_shape.nodes.size());
    members(0, m_shape.nodes.size(), m_outer, m_inRecord, false);
    if (m_scope == nullptr) linkTail(m_plan, 0, m_plan.ops.size(), m_outer, nullptr);
    findPlainRuns(m_plan);
    return std::move(m_plan);
  }

 private:
  // inRecord: they stand in a record. byValue: they are alternatives that a value chooses from.
  void members(size_t from, size_t to, const std::string &outer, bool inRecord, bool byValue) {
    for (size_t i = from; i < to; i = next(i)) {
      const Node &node = m_shape.nodes[i];
      const std::string path = kit::nodePath(outer, node);
      m_plan.ops[i] = {Kind::Field, false, node.slot, node.next, node.name, 0, {}};
      if (node.counted) {
        throw Misconfigured(path, node.record, "a field, a group or a loop",
                            "a counted node (StructAttr nType 5)",
                            "Write a loop (nType 1), or a field of fixed length");
      }
      if (node.structRecord != nullptr) {
        throw Misconfigured(path, node.structRecord, "nothing in the StructAttr",
                            kit::recordName(node.structRecord), "Write it into the node's FormatAttr");
      }
      if (node.kind == NodeKind::Field) field(i, path, from, inRecord);
      if (node.kind == NodeKind::Group) group(i, path, inRecord, byValue);
      if (node.kind == NodeKind::Loop) loop(i, path, inRecord);
    }
  }

  size_t next(size_t i) const { return static_cast<size_t>(m_shape.nodes[i].next); }

  // first: the first of its siblings.
  void field(size_t i, const std::string &path, size_t first, bool inRecord) {
    const Node &node = m_shape.nodes[i];
    const auto *record = kit::recordAs<FixField>(node.record, kFixField);
    if (record == nullptr) {
      throw Misconfigured(path, node.record, "a FixField", kit::recordName(node.record),
                          "Write <FixField __ID=\"pInfo\" nLen=\"...\"/> into the FormatAttr");
    }
    if (record->nType == static_cast<int>(FieldType::End)) return messageEnd(i, path);
    m_plan.ops[i].detail = m_plan.fields.size();
    m_plan.fields.push_back(compileField(node.name, *record, m_settings, path));
    FieldPlan &plan = m_plan.fields.back();
    if (plan.position && m_scope == nullptr) {
      throw Misconfigured(path, record, "nPosition in a loop", "it outside of any", "Remove nPosition");
    }
    if (!plan.optional && !plan.position && plan.lengthBy == Length::Fixed) return;
    m_plan.ops[i].kind = Kind::Special;
    const bool ends = m_scope == nullptr || (inRecord && !m_inRecord);
    if (!ends && (plan.optional || plan.lengthBy == Length::Rest)) {
      throw Misconfigured(path, record, "nOptional and nRest outside of loops, at the end of a record",
                          "them in a loop", "Write a record into the loop, or another length");
    }
    if (plan.lengthBy == Length::Field) lengthOfField(plan, first, i, *record, path);
  }

  void lengthOfField(FieldPlan &field, size_t first, size_t i, const FixField &record,
                     const std::string &path) {
    const size_t at = findLength(m_shape, m_plan, first, i, record.psLenField, path, &record);
    FieldPlan &length = becomesLength(at, LengthOf::Field);
    if (length.optional && !field.optional) {
      throw Misconfigured(path, &record, "a length field that is always there", length.name,
                          "Remove its nOptional");
    }
    field.lengthField = m_plan.ops[at].detail;
    field.lengthSlot = m_plan.ops[at].slot;
  }

  FieldPlan &becomesLength(size_t at, LengthOf what) {
    m_plan.ops[at].kind = Kind::Special;
    FieldPlan &field = m_plan.fields[m_plan.ops[at].detail];
    field.lengthOf = what;
    field.lengthNumber = m_context.lengths++;
    return field;
  }

  // The field that remembers how the message ended: of no bytes, behind everything else.
  void messageEnd(size_t i, const std::string &path) {
    if (path != m_shape.nodes[i].name || i + 1 != m_shape.nodes.size() || i == 0) {
      throw Misconfigured(path, m_shape.nodes[i].record, "psType end on the last node of the message",
                          "it elsewhere", "");
    }
    m_plan.ops[i].kind = Kind::End;
  }

  void group(size_t i, const std::string &path, bool inRecord, bool byValue) {
    const Node &node = m_shape.nodes[i];
    Op &op = m_plan.ops[i];
    op.kind = Kind::Group;
    const auto *record = kit::recordAs<FixRecord>(node.record, kFixRecord);
    const auto *plain = kit::recordAs<FixGroup>(node.record, kFixGroup);
    if (node.record != nullptr && record == nullptr && plain == nullptr) {
      throw Misconfigured(path, node.record, "a FixRecord or a FixGroup", kit::recordName(node.record), "");
    }
    if (plain != nullptr && plain->nKind == kGroupChoice) op.kind = Kind::Choice;
    op.optional =
        (plain != nullptr && plain->nOptional != 0) || (record != nullptr && record->nOptional != 0);
    const Decided decided = decidedBy(node);
    checkDecided(i, decided, byValue, path);
    const bool chooses = op.kind == Kind::Choice && decided.by != nullptr;
    members(i + 1, next(i), path, inRecord || record != nullptr, chooses);
    if (record != nullptr) asRecord(i, *record, path, inRecord);
    if (m_plan.ops[i].optional && m_plan.ops[i].condition < 0) recognise(i, path);
    if (m_plan.ops[i].kind == Kind::Choice) choice(i, chooses ? decided.by : nullptr, path);
  }

  // What a group's or a record's node says of values that decide.
  struct Decided {
    const char *by = nullptr;
    const char *when = nullptr;
  };

  static Decided decidedBy(const Node &node) {
    const auto *record = kit::recordAs<FixRecord>(node.record, kFixRecord);
    const auto *plain = kit::recordAs<FixGroup>(node.record, kFixGroup);
    if (record != nullptr) return {record->psBy, record->psWhen};
    if (plain != nullptr) return {plain->psBy, plain->psWhen};
    return {};
  }

  // An optional node with psBy and psWhen is there when the value is; psBy of a choice is for its members.
  void checkDecided(size_t i, const Decided &decided, bool byValue, const std::string &path) {
    const void *record = m_shape.nodes[i].record;
    const bool chooses = m_plan.ops[i].kind == Kind::Choice;
    const bool own = m_plan.ops[i].optional && !chooses && !byValue;
    if (decided.when != nullptr && !byValue && !(own && decided.by != nullptr)) {
      throw Misconfigured(path, record, "psWhen with nOptional and psBy, or in a choice with psBy",
                          "it elsewhere", "Write psBy, or remove it");
    }
    if (decided.by != nullptr && !chooses && !(own && decided.when != nullptr)) {
      throw Misconfigured(path, record, "psBy on a choice, or with nOptional and psWhen", "it elsewhere",
                          "Write psWhen, or remove it");
    }
    if (own && decided.by != nullptr)
      m_plan.ops[i].condition = condition(i, decided.by, decided.when, path, record);
  }

  int condition(size_t i, const char *by, const char *when, const std::string &path, const void *record) {
    const Scope scope{m_shape, m_plan, i, m_scope};
    m_plan.conditions.push_back(compileCondition(scope, by, when, path, record));
    return static_cast<int>(m_plan.conditions.size()) - 1;
  }

  // by: the field whose value tells the member; null: their tags do.
  void choice(size_t i, const char *by, const std::string &path) {
    for (size_t child = i + 1; child < next(i); child = next(child)) {
      const Node &node = m_shape.nodes[child];
      const std::string childPath = kit::nodePath(path, node);
      if (by == nullptr) {
        recognise(child, childPath);
        continue;
      }
      const char *when = decidedBy(node).when;
      if (when == nullptr && next(child) != next(i)) {
        throw Misconfigured(childPath, node.record, "psWhen on each member but the last", "none",
                            "Write a FixGroup or FixRecord with psWhen");
      }
      m_plan.ops[child].condition = condition(i, by, when, childPath, node.record);
    }
  }

  void asRecord(size_t i, const FixRecord &record, const std::string &path, bool inRecord) {
    if (inRecord)
      throw Misconfigured(path, &record, "a record outside of other records", "one inside",
                          "Write a FixGroup");
    Op &op = m_plan.ops[i];
    op.kind = Kind::Record;
    op.detail = m_plan.records.size();
    RecordPlan plan;
    plan.separator = static_cast<Separator>(record.nSeparator == kNotGiven ? int{m_settings.nSeparator}
                                                                           : int{record.nSeparator});
    const kit::Charset *charset = findCharset(m_settings.psCharset, path, &m_settings);
    plan.blank = padByte(' ', charset, path, &record);
    const Extent extent = extentOf(m_plan, i + 1, next(i));
    plan.length = extent.exact ? extent.bytes : 0;
    plan.plain = extent.exact && textsOnly(i);
    const auto wanted = static_cast<size_t>(int{record.nLen});
    const bool filled = record.nPad != kNotGiven;
    if (wanted != 0 && !filled && (!extent.exact || extent.bytes != wanted)) {
      throw Misconfigured(path, &record, "fields that add up to " + std::to_string(record.nLen) + " bytes",
                          extent.exact ? std::to_string(extent.bytes) : "fields of no fixed length",
                          "Add a field for the rest, or correct nLen");
    }
    if (record.psLenField != nullptr) recordLength(i, plan, record, path);
    if (filled) fill(plan, extent, record, path);
    recordEnd(i, plan, record, path);
    m_plan.records.push_back(plan);
  }

  void recordLength(size_t i, RecordPlan &plan, const FixRecord &record, const std::string &path) {
    const size_t at = findLength(m_shape, m_plan, i + 1, next(i), record.psLenField, path, &record);
    const FieldPlan &length =
        becomesLength(at, record.nLenCounts == kCountsAll ? LengthOf::RecordAll : LengthOf::RecordRest);
    if (length.optional) {
      throw Misconfigured(path, &record, "a length field that is always there", length.name,
                          "Remove its nOptional");
    }
    plan.lengthField = m_plan.ops[at].detail;
    plan.hasLength = true;
    plan.end = End::Length;
  }

  void fill(RecordPlan &plan, const Extent &extent, const FixRecord &record, const std::string &path) const {
    plan.length = static_cast<size_t>(int{record.nLen});
    if (plan.length == 0 || extent.bytes > plan.length) {
      throw Misconfigured(path, &record,
                          "nLen with psPad, for " + std::to_string(extent.bytes) + " bytes at least",
                          plan.length == 0 ? "none" : std::to_string(plan.length), "");
    }
    plan.pad = padByte(record.nPad, findCharset(m_settings.psCharset, path, &record), path, &record);
    plan.end = End::Filled;
  }

  // A node that asks where the record ends must have an answer.
  void recordEnd(size_t i, RecordPlan &plan, const FixRecord &record, const std::string &path) {
    linkTail(m_plan, i + 1, next(i), path, &record);
    const bool tail = hasTail(m_plan, i + 1, next(i));
    const bool asks = tail || hasOpenLoop(m_plan, i + 1, next(i));
    if (asks && plan.end == End::Filled) {
      throw Misconfigured(path, &record, "no nOptional, nRest and psUntil end in a record that is filled",
                          "one of them", "Remove psPad");
    }
    if (!asks || plan.end == End::Length) return;
    if (plan.separator == kSeparatorNone && tail) {
      throw Misconfigured(path, &record, "a record whose end is known, for nOptional or nRest",
                          "one that is not", "Write psLenField, or psSeparator");
    }
    if (plan.separator == kSeparatorNone) return;
    if (!cleanTexts(m_plan, i + 1, next(i))) {
      throw Misconfigured(path, &record,
                          "texts and numbers without separators in a record that ends with one",
                          "other bytes", "Write psLenField, or remove nOptional and nRest");
    }
    plan.end = End::Separator;
  }

  // No bytes that may look like a separator.
  bool textsOnly(size_t i) const {
    for (size_t k = i + 1; k < next(i); ++k) {
      if (m_plan.ops[k].kind == Kind::Loop) return false;
    }
    return cleanTexts(m_plan, i + 1, next(i));
  }

  void loop(size_t i, const std::string &path, bool inRecord) {
    const Node &node = m_shape.nodes[i];
    const auto *record = kit::recordAs<FixLoop>(node.loopRecord, kFixLoop);
    if (node.loopRecord != nullptr && record == nullptr) {
      throw Misconfigured(path, node.loopRecord, "a FixLoop", kit::recordName(node.loopRecord), "");
    }
    if (node.record != nullptr && node.body->nodes[0].record != node.record) {
      throw Misconfigured(path, node.record, "no FormatAttr on a loop with members",
                          kit::recordName(node.record),
                          "Write a group into the loop and put the record there");
    }
    LoopPlan plan;
    const Scope scope{m_shape, m_plan, i, m_scope};
    plan.body =
        std::make_unique<LevelPlan>(LevelCompiler(m_context, *node.body, &scope, path, inRecord).run());
    if (record != nullptr) bounds(plan, *record, path);
    end(plan, i, record, path);
    m_plan.ops[i].kind = Kind::Loop;
    m_plan.ops[i].detail = m_plan.loops.size();
    m_plan.loops.push_back(std::move(plan));
  }

  void bounds(LoopPlan &plan, const FixLoop &record, const std::string &path) const {
    plan.until = record.nUntil;
    plan.fixed = static_cast<size_t>(int{record.nCount});
    plan.least = static_cast<size_t>(int{record.nMin});
    plan.most = static_cast<size_t>(int{record.nMax});
    plan.room = static_cast<size_t>(int{record.nRoom});
    plan.pad = padByte(record.nPad, findCharset(m_settings.psCharset, path, &record), path, &record);
    if (plan.room != 0 && (plan.most == 0 || plan.most > plan.room)) plan.most = plan.room;
    if (plan.fixed != 0) plan.least = plan.most = plan.fixed;
    if (plan.most != 0 && plan.least > plan.most) {
      throw Misconfigured(path, &record, "nMin not above nMax and nRoom", "more", "");
    }
  }

  // What ends the loop: exactly one of its count field, its fixed count, its tag, the end of the buffer.
  void end(LoopPlan &plan, size_t i, const FixLoop *record, const std::string &path) {
    const Node &node = m_shape.nodes[i];
    const int ways =
        (node.countNode >= 0 ? 1 : 0) + (plan.fixed != 0 ? 1 : 0) + (plan.until != kNotGiven ? 1 : 0);
    if (ways != 1) {
      throw Misconfigured(
          path, record, "one of psLoopNumName, nCount and psUntil", ways == 0 ? "none" : "several",
          "Write psLoopNumName into the LoopType, or <FixLoop __ID=\"ptInfo\" psUntil=\"tag\"/>");
    }
    if (node.countNode >= 0) count(plan, i, path);
    const Extent body = extentOf(*plan.body, 0, plan.body->ops.size());
    if (plan.until != kNotGiven && body.bytes == 0) {
      throw Misconfigured(path, record, "a body of at least one byte", "one that may be empty", "");
    }
    if (plan.until == kUntilTag) {
      plan.starts = startsAt(*plan.body, 0, plan.body->ops.size());
      requireStarts(plan.starts, path, record);
    }
    plan.size = body.bytes;
    if (plan.room == 0) return;
    if (!body.exact || node.countNode < 0) {
      throw Misconfigured(path, record, "nRoom on a counted loop whose body has a fixed size", "another loop",
                          "Remove nRoom");
    }
  }

  void count(LoopPlan &plan, size_t i, const std::string &path) {
    const Node &node = m_shape.nodes[i];
    const auto at = static_cast<size_t>(node.countNode);
    FieldPlan &field = m_plan.fields[m_plan.ops[at].detail];
    const bool own = !field.constant && !field.optional && !field.decides && !field.position &&
                     !field.blankAllowed && field.lengthOf == LengthOf::Nothing;
    if (!field.isNumber() || field.number.decimals != 0 || !own) {
      throw Misconfigured(
          path, m_shape.nodes[at].record, "a count field that is a whole number", field.name,
          "Write psType=\"number\" or another number type on it, without psBlank and other uses");
    }
    field.counts.push_back(node.slot);
    plan.countSlot = m_plan.ops[at].slot;
    plan.countName = field.name;
  }

  void recognise(size_t i, const std::string &path) {
    m_plan.ops[i].starts = startsOf(m_plan, i);
    requireStarts(m_plan.ops[i].starts, path, m_shape.nodes[i].record);
  }

  static void requireStarts(const std::vector<Start> &starts, const std::string &path, const void *record) {
    bool known = !starts.empty();
    for (const Start &start : starts) known = known && !start.empty();
    if (known) return;
    throw Misconfigured(path, record, "a tag in the first record", "none",
                        "Give a field at a fixed place of it psConst or psValues, and nTag=\"1\"");
  }

  Context &m_context;
  const FixMsg &m_settings;
  const Level &m_shape;
  const Scope *m_scope;
  std::string m_outer;
  bool m_inRecord;
  LevelPlan m_plan;
};

}  // namespace

std::unique_ptr<Plan> compile(const Msg &msg, const FixMsg &settings) {
  const Level shape = kit::compileShape(msg);
  auto plan = std::make_unique<Plan>();
  Context context{settings};
  plan->top = LevelCompiler(context, shape, nullptr, "", false).run();
  plan->lengths = context.lengths;
  plan->lenient = settings.nLenient != 0;
  plan->whole = settings.nWhole != 0;
  plan->lastOptional = settings.nLastSeparator == kLastOptional;
  if (plan->top.ops.back().kind == Kind::End) plan->endSlot = plan->top.ops.back().slot;
  return plan;
}

}  // namespace cvt::fix

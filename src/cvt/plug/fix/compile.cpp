// compile.cpp: a definition to its plan.
#include "compile_field.h"
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

// Compiles one level; loops' bodies by compilers of their own.
class LevelCompiler {
 public:
  LevelCompiler(const FixMsg &settings, const Level &shape, std::string outer, bool inRecord)
      : m_settings(settings), m_shape(shape), m_outer(std::move(outer)), m_inRecord(inRecord) {}

  LevelPlan run() {
    m_plan.slots = m_shape.slots;
    m_plan.ops.resize(m_shape.nodes.size());
    members(0, m_shape.nodes.size(), m_outer, m_inRecord);
    return std::move(m_plan);
  }

 private:
  void members(size_t from, size_t to, const std::string &outer, bool inRecord) {
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
      if (node.kind == NodeKind::Field) field(i, path);
      if (node.kind == NodeKind::Group) group(i, path, inRecord);
      if (node.kind == NodeKind::Loop) loop(i, path, inRecord);
    }
  }

  size_t next(size_t i) const { return static_cast<size_t>(m_shape.nodes[i].next); }

  void field(size_t i, const std::string &path) {
    const Node &node = m_shape.nodes[i];
    const auto *record = kit::recordAs<FixField>(node.record, kFixField);
    if (record == nullptr) {
      throw Misconfigured(path, node.record, "a FixField", kit::recordName(node.record),
                          "Write <FixField __ID=\"pInfo\" nLen=\"...\"/> into the FormatAttr");
    }
    if (record->nType == static_cast<int>(FieldType::End)) return messageEnd(i, path);
    m_plan.ops[i].detail = m_plan.fields.size();
    m_plan.fields.push_back(compileField(node.name, *record, m_settings, path));
  }

  // The field that remembers how the message ended: of no bytes, behind everything else.
  void messageEnd(size_t i, const std::string &path) {
    if (path != m_shape.nodes[i].name || i + 1 != m_shape.nodes.size() || i == 0) {
      throw Misconfigured(path, m_shape.nodes[i].record, "psType end on the last node of the message",
                          "it elsewhere", "");
    }
    m_plan.ops[i].kind = Kind::End;
  }

  void group(size_t i, const std::string &path, bool inRecord) {
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
    members(i + 1, next(i), path, inRecord || record != nullptr);
    if (record != nullptr) asRecord(i, *record, path, inRecord);
    if (m_plan.ops[i].optional) recognise(i, path);
    if (m_plan.ops[i].kind == Kind::Choice) choice(i, path);
  }

  void choice(size_t i, const std::string &path) {
    for (size_t child = i + 1; child < next(i); child = next(child)) {
      recognise(child, kit::nodePath(path, m_shape.nodes[child]));
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
    if (record.nLen != 0 && (!extent.exact || extent.bytes != static_cast<size_t>(record.nLen))) {
      throw Misconfigured(path, &record, "fields that add up to " + std::to_string(record.nLen) + " bytes",
                          extent.exact ? std::to_string(extent.bytes) : "fields of no fixed length",
                          "Add a field for the rest, or correct nLen");
    }
    m_plan.records.push_back(plan);
  }

  // No bytes that may look like a separator.
  bool textsOnly(size_t i) const {
    for (size_t k = i + 1; k < next(i); ++k) {
      const Op &op = m_plan.ops[k];
      if (op.kind == Kind::Loop) return false;
      if (op.kind != Kind::Field) continue;
      const FieldPlan &field = m_plan.fields[op.detail];
      if (field.type != FieldType::Number && (field.type != FieldType::Text || field.controlKept))
        return false;
    }
    return true;
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
    plan.body = std::make_unique<LevelPlan>(LevelCompiler(m_settings, *node.body, path, inRecord).run());
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
    if (!field.isNumber() || field.number.decimals != 0 || field.constant) {
      throw Misconfigured(path, m_shape.nodes[at].record, "a count field that is a whole number", field.name,
                          "Write psType=\"number\" or another number type on it");
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

  const FixMsg &m_settings;
  const Level &m_shape;
  std::string m_outer;
  bool m_inRecord;
  LevelPlan m_plan;
};

}  // namespace

std::unique_ptr<Plan> compile(const Msg &msg, const FixMsg &settings) {
  const Level shape = kit::compileShape(msg);
  auto plan = std::make_unique<Plan>();
  plan->top = LevelCompiler(settings, shape, "", false).run();
  plan->lenient = settings.nLenient != 0;
  plan->whole = settings.nWhole != 0;
  plan->lastOptional = settings.nLastSeparator == kLastOptional;
  if (plan->top.ops.back().kind == Kind::End) plan->endSlot = plan->top.ops.back().slot;
  return plan;
}

}  // namespace cvt::fix

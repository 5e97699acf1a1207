#include <charconv>

#include "format.h"
#include "kit/charset.h"
#include "kit/log.h"

namespace cvt::example {

namespace {

using kit::Fault;

class Generator {
 public:
  Generator(const Plan &plan, kit::GenerateCall &call) : m_plan(plan), m_out(call.out), m_path(call.path) {}

  void level(const LevelPlan &plan, const kit::List &list) { nodes(plan, 0, plan.level->nodes.size(), list); }

 private:
  void nodes(const LevelPlan &plan, size_t from, size_t to, const kit::List &list) {
    for (size_t at = from; at < to; at = static_cast<size_t>(plan.level->nodes[at].next)) {
      const kit::Node &node = plan.level->nodes[at];
      if (node.kind == kit::NodeKind::Field) {
        m_path.field(node.name);
        field(plan.rules[at], list);
        m_path.field(nullptr);
        continue;
      }
      m_path.enter(node.name);
      if (node.kind == kit::NodeKind::Group) {
        nodes(plan, at + 1, static_cast<size_t>(node.next), list);
      } else {
        loop(plan, at, list);
      }
      m_path.leave();
    }
  }

  void field(const kit::Rule &rule, const kit::List &list) {
    const std::string_view text = textToWrite(rule, list, m_path, m_digits);
    const kit::Converted checked = kit::Charset::checkUtf8(text.data(), text.size());
    if (checked.damage != kit::Damage::None) {
      throw Fault(Fault::kHere, "UTF-8", kit::damageText(checked.damage),
                  "See byte " + std::to_string(checked.read) + " of the value");
    }
    piece(text);
  }

  void loop(const LevelPlan &plan, size_t at, const kit::List &list) {
    const kit::Node &node = plan.level->nodes[at];
    const int times = list.repetitions(node.slot);
    if (times > plan.most[at]) {
      throw Fault(Fault::kHere, "at most " + std::to_string(plan.most[at]) + " repetitions",
                  std::to_string(times), "See nMax of its ExampleLoop");
    }
    kit::Digits digits;
    const auto end = std::to_chars(digits.bytes, digits.bytes + sizeof digits.bytes, times).ptr;
    piece({digits.bytes, static_cast<size_t>(end - digits.bytes)});
    for (int i = 0; i < times; ++i) {
      m_path.repetition(i);
      level(*plan.bodies[at], list.repetition(node.slot, i, node.body->slots));
    }
  }

  void piece(std::string_view bytes) {
    if (bytes.size() > m_plan.maxSize) {
      throw Fault(Fault::kHere, "at most " + std::to_string(m_plan.maxSize) + " bytes",
                  std::to_string(bytes.size()), "Raise nMaxSize of ExampleMsg");
    }
    kit::Digits digits;
    const auto end = std::to_chars(digits.bytes, digits.bytes + sizeof digits.bytes, bytes.size()).ptr;
    m_out.put({digits.bytes, static_cast<size_t>(end - digits.bytes)});
    m_out.put(':');
    m_out.put(bytes);
    m_out.put(',');
  }

  const Plan &m_plan;
  kit::Output &m_out;
  kit::Path &m_path;
  kit::Digits m_digits{};
};

}  // namespace

void generateMessage(const Plan &plan, kit::GenerateCall &call) {
  Generator(plan, call).level(plan.top, kit::List(call.values, plan.shape.slots));
}

}  // namespace cvt::example

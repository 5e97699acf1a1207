#include <charconv>

#include "format.h"
#include "kit/charset.h"
#include "kit/log.h"

namespace cvt::example {

namespace {

using kit::Fault;

class Parser {
 public:
  Parser(const Plan &plan, kit::ParseCall &call) : m_plan(plan), m_call(call), m_path(call.path) {}

  void level(const LevelPlan &plan, kit::List list) {
    nodes(plan, 0, plan.level->nodes.size(), list);
    for (const kit::Count &count : plan.counts) checkCount(count, list, m_call.store, m_path);
  }

 private:
  // The nodes from `from` up to `to`: a level's, or a group's.
  void nodes(const LevelPlan &plan, size_t from, size_t to, kit::List list) {
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

  void field(const kit::Rule &rule, kit::List list) {
    const std::string_view value = piece();
    const kit::Converted checked = kit::Charset::checkUtf8(value.data(), value.size());
    if (checked.damage != kit::Damage::None) {
      throw Fault(m_call.end - 1 - value.size() + checked.read, "UTF-8", kit::damageText(checked.damage));
    }
    checkRead(rule, value, m_path);
    putRead(rule, list, m_call.store, value);
  }

  void loop(const LevelPlan &plan, size_t at, kit::List list) {
    const kit::Node &node = plan.level->nodes[at];
    const size_t start = m_call.end;
    const std::string_view digits = piece();
    int times = -1;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), times);
    if (error != std::errc() || end != digits.data() + digits.size() || times < 0 || times > plan.most[at] ||
        (digits.size() > 1 && digits[0] == '0')) {
      throw Fault(start, "a number of repetitions up to " + std::to_string(plan.most[at]),
                  kit::quoted(digits.data(), digits.size()), "See nMax of its ExampleLoop");
    }
    for (int i = 0; i < times; ++i) {
      m_path.repetition(i);
      level(*plan.bodies[at], list.append(node.slot, node.body->slots));
    }
  }

  // The bytes of a piece, LENGTH:BYTES, and the offset behind it.
  std::string_view piece() {
    const size_t start = m_call.end;
    const size_t length = lengthOf(start);
    const size_t from = m_call.end;
    if (m_call.length - from < length + 1) {
      throw Fault(from, std::to_string(length) + " bytes and a comma",
                  std::to_string(m_call.length - from) + " bytes");
    }
    if (m_call.buffer[from + length] != ',') {
      throw Fault(from + length, "a comma", kit::quoted(m_call.buffer + from + length, 1),
                  "It stands behind the last byte of a piece");
    }
    m_call.end = from + length + 1;
    return {m_call.buffer + from, length};
  }

  // The number in front of the colon, which is passed.
  size_t lengthOf(size_t start) {
    size_t length = 0;
    size_t at = start;
    while (at < m_call.length && m_call.buffer[at] >= '0' && m_call.buffer[at] <= '9') {
      length = 10 * length + static_cast<size_t>(m_call.buffer[at++] - '0');
      if (length > m_plan.maxSize) {
        throw Fault(start, "a piece of at most " + std::to_string(m_plan.maxSize) + " bytes", "a longer one",
                    "Raise nMaxSize of ExampleMsg");
      }
    }
    const bool padded = at > start + 1 && m_call.buffer[start] == '0';
    if (at == start || padded || at == m_call.length || m_call.buffer[at] != ':') {
      throw Fault(at, "a length, without leading zeros, and a colon",
                  at == m_call.length ? "the end" : kit::quoted(m_call.buffer + start, at - start + 1),
                  "A piece looks like 5:hello,");
    }
    m_call.end = at + 1;
    return length;
  }

  const Plan &m_plan;
  kit::ParseCall &m_call;
  kit::Path &m_path;
};

}  // namespace

void parseMessage(const Plan &plan, kit::ParseCall &call) {
  Parser(plan, call).level(plan.top, kit::List(call.values, plan.shape.slots));
}

}  // namespace cvt::example

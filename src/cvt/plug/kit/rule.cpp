#include "rule.h"

#include <charconv>
#include <cstring>

#include "charset.h"
#include "fault.h"
#include "log.h"

namespace cvt::kit {

namespace {

constexpr int kNone = -1;
constexpr int kTwo = -2;

std::string quotedText(std::string_view text) {
  return quoted(text.data(), text.size());
}

std::string_view trimmed(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

std::string_view decimal(int number, Digits &digits) {
  if (number >= 0 && number < 10) {
    digits.bytes[0] = static_cast<char>('0' + number);
    return {digits.bytes, 1};
  }
  const auto end = std::to_chars(digits.bytes, digits.bytes + sizeof digits.bytes, number).ptr;
  return {digits.bytes, static_cast<size_t>(end - digits.bytes)};
}

[[noreturn]] void missing() {
  throw Fault(Fault::kHere, "a value", "none",
              "The field is mandatory; nKeepEmpty=\"1\" allows an empty one");
}

// What holds in both directions.
void check(const Rule &rule, std::string_view value) {
  if (value.empty() && rule.mandatory && rule.empty == Empty::Omit) missing();
  if (rule.maxLength == 0 || value.size() <= rule.maxLength) return;
  const size_t characters = Charset::countUtf8(value.data(), value.size());
  if (characters <= rule.maxLength) return;
  throw Fault(Fault::kHere, "at most " + std::to_string(rule.maxLength) + " characters",
              std::to_string(characters) + ", " + quotedText(value), "Raise nMaxLen, or shorten the value");
}

void checkPosition(std::string_view value, const Path &path) {
  Digits digits;
  const std::string_view expected = decimal(path.repetition() + 1, digits);
  if (value.empty() || value == expected) return;
  throw Fault(Fault::kHere, std::string(expected) + ", the number of its repetition", quotedText(value),
              "Number the repetitions from 1, or leave the value out");
}

std::string_view constantToWrite(const Rule &rule, std::string_view value) {
  if (value.empty() || value == rule.constant) return rule.constant;
  throw Fault(Fault::kHere, quotedText(rule.constant), quotedText(value),
              "Leave the value empty or equal to psConst");
}

// What the definition itself supplies must be a value that the field can have.
void checkSupplied(const char *attribute, const char *value, const RuleText &text, const std::string &path,
                   const void *record) {
  if (value == nullptr || text.nMaxLen == 0) return;
  const size_t characters = Charset::countUtf8(value, std::strlen(value));
  if (characters <= static_cast<size_t>(text.nMaxLen)) return;
  throw Misconfigured(
      path, record, std::string(attribute) + " of at most " + std::to_string(text.nMaxLen) + " characters",
      std::to_string(characters) + ", " + quotedText(value), "Raise nMaxLen, or shorten the value");
}

// The node with the groups around it, as far as they belong to the level.
std::string pathInLevel(const Level &level, size_t position) {
  std::string path;
  for (size_t i = 0; i < position; ++i) {
    if (level.nodes[i].next > static_cast<int>(position)) path = nodePath(path, level.nodes[i]);
  }
  return nodePath(path, level.nodes[position]);
}

}  // namespace

Rules::Rules(const Level &level) : m_level(level), m_counted(level.nodes.size(), kNone) {
  for (const Node &node : level.nodes) {
    if (node.kind != NodeKind::Loop || node.countNode < 0) continue;
    int &loop = m_counted[static_cast<size_t>(node.countNode)];
    loop = loop == kNone ? node.slot : kTwo;
  }
}

Rule Rules::make(size_t position, const RuleText &text, const std::string &path, const void *record) const {
  if (text.psDefault != nullptr && text.psConst != nullptr) {
    throw Misconfigured(path, record, "psDefault or psConst", "both", "A constant needs no default");
  }
  checkSupplied("psDefault", text.psDefault, text, path, record);
  checkSupplied("psConst", text.psConst, text, path, record);
  const Node &node = m_level.nodes[position];
  const int counted = m_counted[position];
  const bool supplied = text.psDefault != nullptr || text.psConst != nullptr;
  if (counted == kTwo || (counted != kNone && supplied)) {
    throw Misconfigured(path, record, "a count field of one loop, without psDefault or psConst",
                        supplied ? "one with such an attribute" : "one of two loops");
  }
  const char *misplaced = !m_level.repeated  ? "it outside of any loop"
                          : counted != kNone ? "it on a count field"
                          : supplied         ? "it beside one of them"
                                             : nullptr;
  if (text.nPosition != 0 && misplaced != nullptr) {
    throw Misconfigured(path, record, "nPosition in a loop, on no count field, without psDefault and psConst",
                        misplaced, "Remove nPosition");
  }
  return {node.slot,
          node.name,
          text.nMandatory != 0,
          text.nPosition != 0,
          static_cast<Empty>(text.nKeepEmpty),
          static_cast<size_t>(text.nMaxLen),
          text.psDefault,
          text.psConst,
          counted,
          text.nMandatory == 0 && text.nPosition == 0 && text.nMaxLen == 0 && !supplied && counted == kNone};
}

void detail::checkRead(const Rule &rule, std::string_view value, const Path &path) {
  if (rule.constant != nullptr && value != rule.constant) {
    throw Fault(Fault::kHere, quotedText(rule.constant), quotedText(value), "The field is a constant");
  }
  if (rule.position) checkPosition(value, path);
  check(rule, value);
}

std::string_view detail::textToWrite(const Rule &rule, const List &list, const Path &path, Digits &digits) {
  std::string_view text;
  if (rule.countedLoop >= 0) {
    text = decimal(list.repetitions(rule.countedLoop), digits);
  } else if (rule.position) {
    text = decimal(path.repetition() + 1, digits);
  } else {
    text = list.get(rule.slot);
    if (rule.constant != nullptr) text = constantToWrite(rule, text);
    if (text.empty() && rule.fallback != nullptr) text = rule.fallback;
  }
  check(rule, text);
  if (rule.mandatory && !isWritten(rule, list, text)) missing();
  return text;
}

bool given(const Rule &rule, const List &list) {
  if (rule.empty == Empty::KeepGiven && list.given(rule.slot)) return true;
  return !list.empty(rule.slot) || (rule.countedLoop >= 0 && list.repetitions(rule.countedLoop) > 0);
}

std::vector<Count> countsOf(const Level &level) {
  std::vector<Count> counts;
  for (const Node &node : level.nodes) {
    if (node.kind != NodeKind::Loop || node.countNode < 0) continue;
    const auto field = static_cast<size_t>(node.countNode);
    counts.push_back({level.nodes[field].slot, node.slot, pathInLevel(level, field), node.name});
  }
  return counts;
}

void checkCount(const Count &count, List list, Store &store, Path &path) {
  const int times = list.repetitions(count.loop);
  const std::string_view value = list.get(count.slot);
  if (value.empty()) {
    if (times == 0) return;
    Digits digits;
    const std::string_view text = decimal(times, digits);
    list.put(count.slot, store.copy(text.data(), text.size()), text.size());
    return;
  }
  int told = -1;
  const std::string_view inner = trimmed(value);
  const auto [end, error] = std::from_chars(inner.data(), inner.data() + inner.size(), told);
  if (error == std::errc() && end == inner.data() + inner.size() && told == times) return;
  path.field(count.node.c_str());
  throw Fault(Fault::kHere, std::to_string(times) + ", the number of repetitions of " + count.loopNode,
              quotedText(value), "Correct the count");
}

}  // namespace cvt::kit

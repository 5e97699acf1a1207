#include "regex_cache.h"

#include <algorithm>
#include <charconv>
#include <new>

namespace cvt::functions {

namespace {

constexpr size_t kKiB = 1024;

// What a step costs where the item looks at one character or none. A character that it runs over costs as much as the
// item is long in the pattern: a class that lists more takes longer.
constexpr size_t kStepCost = 64;

// What it costs to write a character of a group. A group has no more than were run over.
constexpr size_t kCopyCost = 8;

const unsigned char *units(std::string_view text) {
  return reinterpret_cast<const unsigned char *>(text.data());
}

template <class T>
T *there(T *object) {
  if (object == nullptr) throw std::bad_alloc();
  return object;
}

// The largest n of `x{n}` in an item; 0: none. The braces of \x{n}, \o{n} and \g{n} are no repetition.
size_t repetitions(std::string_view item) {
  const bool braced =
      item.size() > 2 && item[0] == '\\' && std::string_view("xog").find(item[1]) != item.npos;
  size_t most = 0;
  for (size_t at = item.find('{', braced ? 3 : 1); at != item.npos; at = item.find('{', at + 1)) {
    size_t number = 0;
    std::from_chars(item.data() + at + 1, item.data() + item.size(), number);
    most = std::max(most, number);
  }
  return most;
}

bool isBackReference(std::string_view item) {
  return item.starts_with("(?P=") ||
         (item.size() > 1 && item[0] == '\\' && std::string_view("123456789gk").find(item[1]) != item.npos);
}

size_t longestGroup(const pcre2_callout_block &step) {
  size_t longest = 0;
  for (size_t i = 1; i < step.capture_top; ++i) {
    const size_t from = step.offset_vector[2 * i];
    const size_t to = step.offset_vector[2 * i + 1];
    if (to > from) longest = std::max(longest, to - from);
  }
  return longest;
}

// Characters that the item may look at before it fails, which does not show in where the matcher goes on.
size_t lookedAtInVain(const pcre2_callout_block &step, const Regex &regex, std::string_view item) {
  if (item.starts_with(')')) return 0;
  const size_t times = repetitions(item);
  if (isBackReference(item)) return longestGroup(step) * std::max<size_t>(times, 1);
  return item.starts_with('(') ? regex.lookbehind : times;
}

}  // namespace

std::string regexMessage(int error) {
  unsigned char text[256] = {};
  pcre2_get_error_message(error, text, sizeof text);
  return reinterpret_cast<const char *>(text);
}

RegexCache::RegexCache(const RegexLimits &limits)
    : m_limits(limits),
      m_match(there(pcre2_match_data_create(kMostGroups + 1, nullptr))),
      m_context(there(pcre2_match_context_create(nullptr))) {
  pcre2_set_callout(m_context.get(), countStep, this);
  pcre2_set_match_limit(m_context.get(), static_cast<uint32_t>(limits.steps));
  pcre2_set_depth_limit(m_context.get(), static_cast<uint32_t>(limits.steps));
  pcre2_set_heap_limit(m_context.get(), static_cast<uint32_t>(limits.memory));
  if (!limits.jit) return;
  m_stack.reset(there(pcre2_jit_stack_create(kKiB, limits.memory * kKiB, nullptr)));
  pcre2_jit_stack_assign(m_context.get(), nullptr, m_stack.get());
}

void RegexCache::begin(size_t groups) {
  m_left = m_limits.steps * kStepCost;
  m_position = 0;
  m_weight = 0;
  m_copied = groups * kCopyCost;
}

int RegexCache::countStep(pcre2_callout_block *step, void *cache) {
  return static_cast<RegexCache *>(cache)->pay(*step) ? 0 : PCRE2_ERROR_MATCHLIMIT;
}

// Pays for the way from the item before to here, and for what this item takes where it stands.
bool RegexCache::pay(const pcre2_callout_block &step) {
  const Regex &regex = m_kept.front();
  const std::string_view item =
      std::string_view(regex.text).substr(step.pattern_position, step.next_item_length);
  const size_t way = step.current_position > m_position ? step.current_position - m_position : 0;
  const size_t cost =
      kStepCost + way * (m_weight + m_copied) + lookedAtInVain(step, regex, item) * item.size();
  if (cost > m_left) return false;
  m_left -= cost;
  m_position = step.current_position;
  m_weight = item.size();
  return true;
}

const Regex &RegexCache::compiled(std::string_view pattern) {
  if (const auto known = m_index.find(pattern); known != m_index.end()) {
    m_kept.splice(m_kept.begin(), m_kept, known->second);
    return m_kept.front();
  }
  m_kept.push_front(compile(pattern));
  m_index.emplace(m_kept.front().text, m_kept.begin());
  if (m_kept.size() > m_limits.kept) {
    m_index.erase(m_kept.back().text);
    m_kept.pop_back();
  }
  return m_kept.front();
}

Regex RegexCache::compile(std::string_view pattern) const {
  int error = 0;
  size_t offset = 0;
  Regex regex{std::string(pattern), nullptr, 0, 0};
  constexpr uint32_t kOptions =
      PCRE2_UTF | PCRE2_NO_UTF_CHECK | PCRE2_AUTO_CALLOUT | PCRE2_NEVER_BACKSLASH_C | PCRE2_DOLLAR_ENDONLY;
  regex.code.reset(pcre2_compile(units(regex.text), regex.text.size(), kOptions, &error, &offset, nullptr));
  if (regex.code == nullptr) throw RegexError{regexMessage(error), offset};
  uint32_t groups = 0;
  pcre2_pattern_info(regex.code.get(), PCRE2_INFO_CAPTURECOUNT, &groups);
  if (groups > kMostGroups) {
    throw RegexError{"more than " + std::to_string(kMostGroups) + " groups", pattern.size()};
  }
  regex.groups = static_cast<int>(groups);
  pcre2_pattern_info(regex.code.get(), PCRE2_INFO_MAXLOOKBEHIND, &regex.lookbehind);
  // Where there is no machine code to be had, the interpreter does the work.
  if (m_limits.jit) pcre2_jit_compile(regex.code.get(), PCRE2_JIT_COMPLETE);
  return regex;
}

}  // namespace cvt::functions

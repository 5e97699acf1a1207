#include "regex_cache.h"

#include <new>

namespace cvt::functions {

namespace {

constexpr size_t kKiB = 1024;

const unsigned char *units(std::string_view text) {
  return reinterpret_cast<const unsigned char *>(text.data());
}

template <class T>
T *there(T *object) {
  if (object == nullptr) throw std::bad_alloc();
  return object;
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

int RegexCache::countStep(pcre2_callout_block *, void *cache) {
  size_t &left = static_cast<RegexCache *>(cache)->m_left;
  if (left == 0) return PCRE2_ERROR_MATCHLIMIT;
  --left;
  return 0;
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
  Regex regex{std::string(pattern), nullptr, 0};
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
  // Where there is no machine code to be had, the interpreter does the work.
  if (m_limits.jit) pcre2_jit_compile(regex.code.get(), PCRE2_JIT_COMPLETE);
  return regex;
}

}  // namespace cvt::functions

// regex_cache.h: regular expressions of PCRE2, compiled once and kept, and matched within limits.
//
// A match that backtracks without end is ended by counting: before each item of the pattern that is tried the
// matcher calls back (a callout), over all starting points and all matches of one call of a function. An item may run
// over many characters before the next callout: these are counted, too, by what each of them costs.
#pragma once

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
namespace cvt::functions {

template <auto kFree>
struct RegexFree {
  template <class T>
  void operator()(T *object) const {
    kFree(object);
  }
};

struct RegexLimits {
  size_t steps;    // of one call
  size_t text;     // bytes that are looked at
  size_t pattern;  // bytes of a pattern
  size_t memory;   // KiB for backtracking
  size_t kept;     // compiled patterns
  bool jit;        // machine code in place of the interpreter
};

struct Regex {
  std::string text;
  std::unique_ptr<pcre2_code, RegexFree<pcre2_code_free>> code;
  int groups;           // the largest number of one
  uint32_t lookbehind;  // characters that it goes back at most
};

// PCRE2's words for one of its errors.
std::string regexMessage(int error);

// What is wrong with a pattern: PCRE2's words, and where.
struct RegexError {
  std::string text;
  size_t offset;
};

class RegexCache {
 public:
  static constexpr int kMostGroups = 99;

  explicit RegexCache(const RegexLimits &limits);

  // The compiled pattern, until the next call of this. Throws RegexError.
  const Regex &compiled(std::string_view pattern);

  // Starts counting the steps of a call. groups: that are written for each match.
  void begin(size_t groups = 0);

  const RegexLimits &limits() const { return m_limits; }
  pcre2_match_context *context() const { return m_context.get(); }
  pcre2_match_data *match() const { return m_match.get(); }

 private:
  Regex compile(std::string_view pattern) const;
  static int countStep(pcre2_callout_block *step, void *cache);
  bool pay(const pcre2_callout_block &step);

  RegexLimits m_limits;
  size_t m_left = 0;      // of what the steps of this call may cost
  size_t m_position = 0;  // in the text, where the last item was tried
  size_t m_weight = 0;    // of that item
  size_t m_copied = 0;    // what it costs besides to write a character that was run over
  std::unique_ptr<pcre2_match_data, RegexFree<pcre2_match_data_free>> m_match;
  std::unique_ptr<pcre2_match_context, RegexFree<pcre2_match_context_free>> m_context;
  std::unique_ptr<pcre2_jit_stack, RegexFree<pcre2_jit_stack_free>> m_stack;
  std::list<Regex> m_kept;  // the one used last in front
  std::unordered_map<std::string_view, std::list<Regex>::iterator> m_index;
};

}  // namespace cvt::functions

// regex.cpp: regular expressions: matched, extracted, replaced.
#include <algorithm>
#include <new>

#include "regex_cache.h"
#include "settings.h"
#include "topics.h"

namespace cvt::functions {

namespace {

constexpr size_t kWhole = kit::Fault::kHere;

std::unique_ptr<RegexCache> f_cache;

const unsigned char *units(std::string_view text) {
  return reinterpret_cast<const unsigned char *>(text.data());
}

void checkLength(kit::Call &call, int argument, const char *what, size_t most, const char *attribute) {
  if (call.text(argument).size() <= most) return;
  call.refuse(argument, kWhole, std::string(what) + " of at most " + std::to_string(most) + " bytes",
              "a longer one", "Shorten it, or raise " + std::string(attribute) + " of the plug-in");
}

// The text of argument 0 and the pattern of argument 1.
class Matching {
 public:
  explicit Matching(kit::Call &call)
      : m_call(call),
        m_text(call.utf8(0)),
        m_regex(compiled(call)),
        m_found(pcre2_get_ovector_pointer(f_cache->match())) {
    checkLength(call, 0, "a text", f_cache->limits().text, "nRegexText");
    f_cache->begin();
  }

  const Regex &regex() const { return m_regex; }

  // Whether the pattern is found.
  bool run() {
    const int count = pcre2_match(m_regex.code.get(), units(m_text), m_text.size(), 0, PCRE2_NO_UTF_CHECK,
                                  f_cache->match(), f_cache->context());
    if (count < 0 && count != PCRE2_ERROR_NOMATCH) fail(count);
    return count > 0;
  }

  // What the group matched; empty when it did not take part.
  std::string_view group(int number) const {
    const size_t *pair = m_found + 2 * static_cast<size_t>(number);
    const size_t from = pair[0];
    const size_t to = pair[1];
    return from == PCRE2_UNSET || to <= from ? std::string_view() : m_text.substr(from, to - from);
  }

  // Puts the replacement for every match into `out`. Returns the length of the result, which is larger than
  // `room` when it was not written.
  size_t replace(std::string_view replacement, char *out, size_t room) {
    constexpr uint32_t kOptions = PCRE2_NO_UTF_CHECK | PCRE2_SUBSTITUTE_GLOBAL |
                                  PCRE2_SUBSTITUTE_UNSET_EMPTY | PCRE2_SUBSTITUTE_OVERFLOW_LENGTH;
    size_t length = room + 1;
    f_cache->begin(static_cast<size_t>(std::count(replacement.begin(), replacement.end(), '$')));
    const int count = pcre2_substitute(m_regex.code.get(), units(m_text), m_text.size(), 0, kOptions,
                                       f_cache->match(), f_cache->context(), units(replacement),
                                       replacement.size(), reinterpret_cast<unsigned char *>(out), &length);
    const bool tooLong = count == PCRE2_ERROR_NOMEMORY && length != PCRE2_UNSET;
    if (tooLong) return length - 1;
    if (count < 0) failReplacing(count, length);
    return length;
  }

 private:
  static const Regex &compiled(kit::Call &call) {
    checkLength(call, 1, "a regular expression", f_cache->limits().pattern, "nRegexPattern");
    try {
      return f_cache->compiled(call.utf8(1));
    } catch (const RegexError &error) {
      call.refuse(1, error.offset, "a regular expression", "one with an error: " + error.text,
                  "The syntax is that of PCRE2");
    }
  }

  [[noreturn]] void failLimit(const std::string &expected, const char *attribute) {
    m_call.refuse(
        0, kWhole, "a match " + expected, "more",
        std::string("Let no repetition stand inside another one of the same characters, or raise ") +
            attribute + " of the plug-in");
  }

  [[noreturn]] void fail(int error) {
    const RegexLimits &limits = f_cache->limits();
    switch (error) {
      case PCRE2_ERROR_MATCHLIMIT:
        failLimit("in at most " + std::to_string(limits.steps) + " steps", "nRegexSteps");
      case PCRE2_ERROR_DEPTHLIMIT:
      case PCRE2_ERROR_HEAPLIMIT:
      case PCRE2_ERROR_JIT_STACKLIMIT:
        failLimit("with at most " + std::to_string(limits.memory) + " KiB of memory", "nRegexMemory");
      case PCRE2_ERROR_NOMEMORY:
        throw std::bad_alloc();
      default:
        m_call.refuse(1, kWhole, "a regular expression that this text can be matched with",
                      "an error: " + regexMessage(error), "Write it in another way");
    }
  }

  [[noreturn]] void failReplacing(int error, size_t offset) {
    if (error == PCRE2_ERROR_BADREPLACEMENT || error == PCRE2_ERROR_NOSUBSTRING ||
        error == PCRE2_ERROR_REPMISSINGBRACE || error == PCRE2_ERROR_UNAVAILABLE) {
      m_call.refuse(2, offset, "a replacement, in which groups of the pattern are $1 or ${1}",
                    error == PCRE2_ERROR_NOSUBSTRING ? "a group that the pattern does not have" : "another $",
                    "A dollar sign is $$");
    }
    fail(error);
  }

  kit::Call &m_call;
  std::string_view m_text;
  const Regex &m_regex;
  const size_t *m_found;
};

void regexMatch(kit::Call &call) {
  call.answer(Matching(call).run() ? "1" : "0");
}

void regexExtract(kit::Call &call) {
  Matching matching(call);
  const int group = call.has(2) ? call.number(2, 0, matching.regex().groups) : 0;
  call.answer(matching.run() ? matching.group(group) : std::string_view());
}

// Most results fit into the room that is tried first; a longer one is made once more, in place.
void regexReplace(kit::Call &call) {
  Matching matching(call);
  checkLength(call, 2, "a replacement", f_cache->limits().pattern, "nRegexPattern");
  const std::string_view replacement = call.utf8(2);
  char room[1024];
  const size_t length = matching.replace(replacement, room, sizeof room - 1);
  if (length < sizeof room) return call.answer(std::string_view(room, length));
  matching.replace(replacement, call.result(length), length);
}

// clang-format off
#define PATTERN {"pattern", "a regular expression of PCRE2; it is found anywhere unless `^` and `$` hold it"}
#define BAD "expected a regular expression, found one with an error: "
#define SYNTAX ". The syntax is that of PCRE2."
#define REPEATED "Let no repetition stand inside another one of the same characters, or raise nRegexSteps of the " \
                 "plug-in."

constexpr kit::FunctionRow kFunctions[] = {
    {"regexMatch",
     {{"text", "a text"}, PATTERN}, 2, 2, regexMatch,
     "1 when the pattern is found in the text, else 0",
     {{{"DE89370400440532013000", "^[A-Z]{2}\\d{2}[A-Z0-9]{11,30}$"}, "1"},
      {{"DE89370400440532013000\n", "^[A-Z]{2}\\d{2}[A-Z0-9]{11,30}$"}, "0"},
      {{"Zürich", "^.{6}$"}, "1"},
      {{"ZÜRICH", "(?i)zürich"}, "1"},
      {{"Zürich", "^\\w+$"}, "0"},
      {{"Zürich", "^\\p{L}+$"}, "1"},
      {{"", "^$"}, "1"}},
     {{{"abc", "a(b"}, "Arg[2] Len[3] Offset[3]: " BAD "missing closing parenthesis" SYNTAX},
      {{"abc", "a**"}, "Arg[2] Len[3] Offset[2]: " BAD "quantifier does not follow a repeatable item" SYNTAX},
      {{"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaX", "^(a+)+$"},
       "Arg[1] Len[41]: expected a match in at most 1000000 steps, found more. " REPEATED}}},

    {"regexExtract",
     {{"text", "a text"}, PATTERN, {"group", "number of a pair of parentheses; 0, or without it: all that is matched"}},
     2, 3, regexExtract,
     "what the first match found; empty when there is none, or the group had no part in it",
     {{{"/INV/2024-0815/", "\\d{4}-\\d+"}, "2024-0815"},
      {{"/INV/2024-0815/", "/INV/(\\d+)-(\\d+)/", "2"}, "0815"},
      {{"EUR 12,50", "([A-Z]{3}) +([\\d,]+)", "1"}, "EUR"},
      {{"nothing", "\\d+"}, ""},
      {{"b", "(a)|b", "1"}, ""}},
     {{{"abc", "(b)", "2"}, "Arg[3] Len[1]: expected a whole number from 0 to 1, found one outside."},
      {{"abc", "[b"}, "Arg[2] Len[2] Offset[2]: " BAD "missing terminating ] for character class" SYNTAX}}},

    {"regexReplace",
     {{"text", "a text"}, PATTERN, {"replacement", "what is written for each match; `$1` is what a group found, `$0` "
                                                   "the whole match, `$$` a dollar sign"}}, 3, 3, regexReplace,
     "the text with every match replaced, first to last",
     {{{"DE89 3704 0044", " +", ""}, "DE8937040044"},
      {{"2024-01-31", "^(\\d+)-(\\d+)-(\\d+)$", "$3.$2.$1"}, "31.01.2024"},
      {{"Müller & Söhne", "[^A-Za-z0-9 ]", "."}, "M.ller . S.hne"},
      {{"5", "\\d", "$$$0"}, "$5"},
      {{"abc", "x", "y"}, "abc"}},
     {{{"abc", "b", "$2"}, "Arg[3] Len[2] Offset[2]: expected a replacement, in which groups of the pattern are $1 or "
                           "${1}, found a group that the pattern does not have. A dollar sign is $$."},
      {{"abc", "b", "5$"}, "Arg[3] Len[2] Offset[2]: expected a replacement, in which groups of the pattern are $1 or "
                           "${1}, found another $. A dollar sign is $$."}}},
};
// clang-format on

}  // namespace

constinit const kit::Topic kRegex = kit::topic<kFunctions>(
    "Regular expressions",
    "By PCRE2, on characters of UTF-8. `\\d`, `\\w` and `\\s` are those of ASCII; "
    "`\\p{L}` is a letter of any "
    "script. `$` is the very end of the text: a line feed there is a character too many. A "
    "pattern is compiled once and kept. Matching ends at the "
    "[limits](../src/cvt/plug/std/README.md#settings) of the plug-in: a pattern that "
    "goes on and on is an error, "
    "not a process that hangs.");

void configureRegex(const Settings &settings) {
  const auto size = [](int number) { return static_cast<size_t>(number); };
  f_cache = std::make_unique<RegexCache>(
      RegexLimits{size(settings.nRegexSteps), size(settings.nRegexText), size(settings.nRegexPattern),
                  size(settings.nRegexMemory), size(settings.nRegexKept), settings.nRegexJit != 0});
}

}  // namespace cvt::functions

#include "scan.h"

#include <simdjson.h>

#include <bit>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "grammar.h"
#include "kit/utf8.h"

namespace cvt::json {

namespace {

// What stays from one text to the next, unless one was unusually large.
constexpr size_t kKept = size_t{1} << 20;
constexpr size_t kLeast = 4096;

// The first of simdjson's two stages. Its interfaces read a text once more to build a tree, or to look for a
// member; the offsets of the tokens are all that is needed here.
using Stage = simdjson::internal::dom_parser_implementation;
std::unique_ptr<Stage> f_stage;

std::vector<uint32_t> f_offsets;  // of scanBytes

// Without instructions for many bytes at a time simdjson reads behind the text, and is no faster.
bool isWorthwhile() {
  static const bool worthwhile = [] {
    const std::string name = simdjson::get_active_implementation()->name();
    return name != "fallback" && name != "unsupported";
  }();
  return worthwhile;
}

Stage &stageFor(size_t bytes) {
  if (f_stage == nullptr || f_stage->capacity() < bytes) {
    const size_t room = std::bit_ceil(bytes < kLeast ? kLeast : bytes);
    f_stage.reset();
    const auto &processor = simdjson::get_active_implementation();
    if (processor->create_dom_parser_implementation(room, 1, f_stage) != simdjson::SUCCESS) {
      throw std::bad_alloc();
    }
  }
  return *f_stage;
}

// The offset behind a string that begins at `at`, or its damage.
size_t stringEnd(std::string_view text, size_t at, Damage &damage) {
  for (++at; at < text.size();) {
    const char c = text[at];
    if (c == '"') return at + 1;
    if (static_cast<unsigned char>(c) < 0x20) {
      damage = {"a text without control characters", "Write it as an escape, such as \\n or \\u001f", at};
      return at;
    }
    if (static_cast<unsigned char>(c) >= 0x80) {
      const kit::Utf8Char wide = kit::utf8Char(text.data() + at, text.size() - at);
      if (wide.length <= 0) {
        damage = {"a text in UTF-8", "Convert the text to UTF-8", at};
        return at;
      }
      at += static_cast<size_t>(wide.length);
      continue;
    }
    const bool escapes = c == '\\' && at + 1 < text.size() && (text[at + 1] == '"' || text[at + 1] == '\\');
    at += escapes ? 2 : 1;
  }
  damage = {"\" at the end of the text", "The message is cut off", text.size()};
  return at;
}

size_t scalarEnd(std::string_view text, size_t at) {
  do ++at;
  while (at < text.size() && !isBlank(text[at]) && !isOperator(text[at]) && text[at] != '"');
  return at;
}

Tokens tokens(std::string_view text, const uint32_t *begin, size_t count, const Damage &damage = {}) {
  return {text, begin, begin + count, damage};
}

}  // namespace

Tokens scan(std::string_view text, bool whole) {
  if (!whole || text.empty() || !isWorthwhile()) return scanBytes(text, whole);
  Stage &stage = stageFor(text.size());
  const auto *bytes = reinterpret_cast<const uint8_t *>(text.data());
  if (stage.stage1(bytes, text.size(), simdjson::stage1_mode::regular) != simdjson::SUCCESS) {
    return scanBytes(text, whole);
  }
  return tokens(text, stage.structural_indexes.get(), stage.n_structural_indexes);
}

Tokens scanBytes(std::string_view text, bool whole) {
  f_offsets.clear();
  Damage damage;
  size_t depth = 0;
  size_t at = 0;
  while (at < text.size()) {
    const char c = text[at];
    if (isBlank(c)) {
      ++at;
      continue;
    }
    const size_t end = c == '"' ? stringEnd(text, at, damage) : isOperator(c) ? at + 1 : scalarEnd(text, at);
    if (damage.expected != nullptr) break;
    f_offsets.push_back(static_cast<uint32_t>(at));
    at = end;
    if (c == '{' || c == '[') ++depth;
    if ((c == '}' || c == ']') && depth > 0) --depth;
    if (!whole && depth == 0) break;
  }
  f_offsets.push_back(static_cast<uint32_t>(at));
  return tokens(text, f_offsets.data(), f_offsets.size() - 1, damage);
}

void trimScanner() {
  if (f_stage != nullptr && f_stage->capacity() > kKept) f_stage.reset();
  if (f_offsets.capacity() > kKept) std::vector<uint32_t>().swap(f_offsets);
}

}  // namespace cvt::json

#include "log.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "text.h"

namespace tool::log {
namespace {

constexpr int kErrorLevel = 1;
constexpr int kTraceVerbosity = 2;
constexpr size_t kMaxLines = 200;  // a failing list reports once an entry

int f_verbosity = 0;
std::vector<std::string> f_lines;

std::string format(const char *format, va_list args) {
  va_list again;
  va_copy(again, args);
  const int size = std::vsnprintf(nullptr, 0, format, args);
  std::string text(size < 0 ? 0 : static_cast<size_t>(size), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

// Lines that the library writes at the level of errors although nothing has failed.
bool isNotice(const std::string &line) {
  constexpr std::array<std::string_view, 6> kNotices = {"Set Src Message Offset to [",
                                                        "Set Dst Message Offset to [",
                                                        "Warning No Value num!!",
                                                        "Warning: sql[",
                                                        "Open Dir [",
                                                        "Value psValue["};
  return std::any_of(kNotices.begin(), kNotices.end(),
                     [&](std::string_view notice) { return line.starts_with(notice); });
}

// Where a record stands that failed. The root record fails with each of its sections, and says nothing.
bool isPlace(const std::string &line) {
  return line.starts_with("File[") && line.find("] Line[") != line.npos &&
         !line.ends_with("Element[AllInfo]");
}

// A file that is none of XML, or cannot be read: the line behind says why.
bool isUnread(const std::string &line) {
  return line == "[ptXmlDoc = xmlFileParse(psFileName)] is NULL" ||
         (line.starts_with("File[") && line.ends_with("] Parse err!!"));
}

// What stands between two marks; empty without both.
std::string between(const std::string &line, std::string_view before, std::string_view behind) {
  const size_t from = line.find(before);
  if (from == line.npos) return "";
  const size_t to = line.find(behind, from + before.size());
  return to == line.npos ? "" : line.substr(from + before.size(), to - from - before.size());
}

// The part of a conversion that a line says has failed; empty when it says nothing of the kind.
std::string stepOf(const std::string &line) {
  if (line.starts_with("Do Convert Rule [")) return "rule " + between(line, "[", "]");
  if (line.starts_with("Convert Loop["))
    return between(line, "From[", "]") + "[" + between(line, "Loop[", "/") + "]";
  if (line.starts_with("Convert [")) return "converter " + between(line, "[", "]");
  return "";
}

}  // namespace

void setVerbosity(int level) {
  f_verbosity = level;
}
int verbosity() {
  return f_verbosity;
}

void take(int level, const char *text, va_list args) {
  if (level == kErrorLevel) {
    if (f_lines.size() < kMaxLines) f_lines.push_back(format(text, args));
  } else if (f_verbosity >= kTraceVerbosity) {
    say("  " + format(text, args));
  }
}

void begin() {
  f_lines.clear();
}

std::string cause() {
  const auto first = std::find_if_not(f_lines.begin(), f_lines.end(), isNotice);
  if (first == f_lines.end()) return f_lines.empty() ? "" : f_lines.front();
  if (isUnread(*first) && first + 1 != f_lines.end() && first[1].starts_with("File[")) return first[1];
  if (first->find("File[") != first->npos) return *first;
  const auto place = std::find_if(first, f_lines.end(), isPlace);
  return place == f_lines.end() ? *first : *first + ", in " + *place;
}

std::string rule() {
  std::string place;
  for (const std::string &line : f_lines) {
    const std::string step = stepOf(line);
    if (!step.empty()) place.insert(0, step + (place.empty() ? "" : ", "));
  }
  return place;
}

std::vector<std::string> notices() {
  std::vector<std::string> found;
  std::copy_if(f_lines.begin(), f_lines.end(), std::back_inserter(found), isNotice);
  return found;
}

bool has(const std::string &text) {
  return std::find(f_lines.begin(), f_lines.end(), text) != f_lines.end();
}

const std::vector<std::string> &trail() {
  return f_lines;
}

void say(const std::string &text) {
  std::fprintf(stderr, "cvt2: %s\n", printable(text).c_str());
}

void remark() {
  if (f_verbosity == 0) return;
  for (const std::string &line : f_lines) say("note: " + line);
}

void report(const std::string &text) {
  say(text);
  if (f_verbosity > 0) {
    for (const std::string &line : f_lines) {
      if (text.find(printable(line)) == text.npos) say("  " + line);
    }
  }
  begin();
}

}  // namespace tool::log

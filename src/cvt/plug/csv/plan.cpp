#include "plan.h"

#include <algorithm>

#include "kit/log.h"

namespace cvt::csv {

namespace {

bool holds(const std::vector<std::string> &values, std::string_view value) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

}  // namespace

const Field *firstField(const std::vector<Item> &fields) {
  if (fields.empty()) return nullptr;
  return fields[0].kind == ItemKind::Field ? &fields[0].field : firstField(fields[0].compound->fields);
}

bool collides(std::string_view value, std::string_view mark) {
  for (size_t at = value.find(mark[0]); at != std::string_view::npos; at = value.find(mark[0], at + 1)) {
    const std::string_view tail = value.substr(at);
    if (tail.size() >= mark.size() ? tail.starts_with(mark) : mark.starts_with(tail)) return true;
  }
  return false;
}

std::string_view plainCount(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
  return text.empty() ? "0" : text;
}

std::string_view selecting(const Field &select, std::string_view value) {
  if (select.countedLoop >= 0) return plainCount(value);
  const char *const supplied = select.constant != nullptr ? select.constant : select.fallback;
  value = withoutPads(select, value);
  return value.empty() && supplied != nullptr ? withoutPads(select, supplied) : value;
}

int chosenMember(const Compound &choice, std::string_view value) {
  if (holds(choice.none, value)) return -1;
  int otherwise = static_cast<int>(choice.fields.size());
  for (size_t i = 0; i < choice.fields.size(); ++i) {
    if (holds(choice.cases[i], value)) return static_cast<int>(i);
    if (choice.cases[i].empty()) otherwise = static_cast<int>(i);
  }
  return otherwise;
}

std::string knownCases(const Compound &choice) {
  std::string all;
  const auto add = [&all](const std::vector<std::string> &values) {
    for (const std::string &value : values) all += (all.empty() ? "" : ", ") + kit::quoted(value);
  };
  for (const std::vector<std::string> &values : choice.cases) add(values);
  add(choice.none);
  return all;
}

}  // namespace cvt::csv

#include "samples.h"

namespace formats {

namespace {

using Kind = Item::Kind;
using Random = std::mt19937;

size_t below(Random &random, size_t limit) {
  return random() % limit;
}

// Letters and digits at both ends: padding is not the text's.
std::string text(Random &random, size_t most, const std::string &signs) {
  static const std::string kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
  const std::string inside = signs + kPlain.substr(0, signs.size() + 1) + " ";
  std::string s;
  for (size_t n = below(random, most + 1); s.size() < n;) {
    const bool atEnd = s.empty() || s.size() + 1 == n;
    const std::string &from = atEnd ? kPlain : inside;
    s += from[below(random, from.size())];
  }
  return s;
}

// No leading zero.
std::string digits(Random &random, size_t most) {
  std::string s(1, static_cast<char>('1' + below(random, 9)));
  for (size_t n = below(random, most); n > 0; --n) s += static_cast<char>('0' + below(random, 10));
  return s;
}

void put(Json &object, const char *name, const std::string &value) {
  if (!value.empty()) object[name] = value;
}

}  // namespace

Items orderItems(int more) {
  const Items line = {
      {Kind::Text, "Sku", 8},
      {Kind::Digits, "Quantity", 6},
      {Kind::Count, "NoteCount", 2},
      {Kind::Loop, "Notes", kMostNotes + more, {{Kind::Text, "Note", 12}}, "NoteCount"},
  };
  return {
      {Kind::Constant, "Type", 4},
      {Kind::Digits, "Id", 8},
      {Kind::Group, "Customer", 0, {{Kind::Text, "Name", kMostName}, {Kind::Text, "City", 16}}},
      {Kind::Count, "LineCount", 2},
      {Kind::Loop, "Lines", kMostLines + more, line, "LineCount"},
      {Kind::Text, "Remark", 30},
  };
}

Json order(int lines, int notes) {
  Json all = {{"Id", "4711"}, {"Customer", {{"Name", "Ann Example"}, {"City", "Rome"}}}};
  for (int i = 0; i < lines; ++i) {
    Json line = {{"Sku", "S" + std::to_string(i)}, {"Quantity", std::to_string(10 * i + 1)}};
    for (int n = 0; n < notes; ++n) line["Notes"].push_back({{"Note", "note " + std::to_string(n)}});
    all["Lines"].push_back(line);
  }
  all["Remark"] = "as discussed";
  return all;
}

Json randomOrder(Random &random, const Format &format) {
  const std::string signs = format.signs();
  Json all = {{"Id", digits(random, 8)}};
  Json customer = Json::object();
  put(customer, "Name", text(random, kMostName, signs));
  put(customer, "City", text(random, 16, signs));
  if (!customer.empty()) all["Customer"] = customer;
  const size_t lines = below(random, kMostLines + 1);
  for (size_t i = 0; i < lines; ++i) {
    Json line = {{"Sku", "S" + text(random, 7, signs)}, {"Quantity", digits(random, 6)}};
    const size_t notes = below(random, kMostNotes + 1);
    for (size_t n = 0; n < notes; ++n) line["Notes"].push_back({{"Note", "N" + text(random, 11, signs)}});
    all["Lines"].push_back(line);
  }
  put(all, "Remark", text(random, 30, signs));
  return all;
}

}  // namespace formats

#include "json_tree.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "error.h"

namespace tool {
namespace {

// Takes the values in as the parser comes to them.
class Reader : public nlohmann::json_sax<nlohmann::json> {
 public:
  std::vector<Json> values() { return std::move(m_values); }

  bool null() override { return add(Json::Kind::null); }
  bool boolean(bool) override { return add(Json::Kind::boolean); }
  bool number_unsigned(number_unsigned_t value) override {
    return add(Json::Kind::integer, std::to_string(value));
  }
  // One with a sign: 0 was written -0.
  bool number_integer(number_integer_t value) override {
    return add(Json::Kind::integer, value == 0 ? "-0" : std::to_string(value));
  }
  // Also an integer that is too large for the others.
  bool number_float(number_float_t, const string_t &digits) override {
    const bool bInteger = digits.find_first_not_of("-0123456789") == digits.npos;
    return add(bInteger ? Json::Kind::integer : Json::Kind::fraction, digits);
  }
  bool string(string_t &text) override { return add(Json::Kind::string, std::move(text)); }
  bool binary(binary_t &) override { return false; }  // stands in no text

  bool start_object(size_t) override { return open(Json::Kind::object); }
  bool start_array(size_t) override { return open(Json::Kind::array); }
  bool key(string_t &key) override {
    m_key = std::move(key);
    return true;
  }
  bool end_array() override { return close(); }
  bool end_object() override { return close(); }

  bool parse_error(size_t, const std::string &, const nlohmann::detail::exception &error) override {
    const std::string_view what = error.what();  // "[json.exception.parse_error.101] parse error at line ..."
    throw DataError("not JSON: " + std::string(what.substr(what.find("] ") + 2)));
  }

 private:
  bool add(Json::Kind kind, std::string text = {}) {
    m_values.push_back({kind, std::exchange(m_key, {}), std::move(text)});
    return true;
  }
  bool open(Json::Kind kind) {
    m_open.push_back(m_values.size());
    return add(kind);
  }

  bool close() {
    Json &json = m_values[m_open.back()];
    json.span = m_values.size() - m_open.back();
    if (json.kind == Json::Kind::object) checkKeys(json);
    m_open.pop_back();
    return true;
  }

  // Sorted, all of them at once: no member is looked for among the others.
  void checkKeys(const Json &object) const {
    std::vector<std::string_view> keys;
    for (const Json *item = object.begin(); item != object.end(); item = item->end())
      keys.push_back(item->key);
    std::sort(keys.begin(), keys.end());
    const auto twice = std::adjacent_find(keys.begin(), keys.end());
    if (twice == keys.end()) return;
    throw DataError(openPath() + std::string(*twice) +
                    ": expected one member of that name, found another; write it once");
  }

  // Leads to the members of the object that was opened last, as "fields.Items[1]."
  std::string openPath() const {
    std::string path;
    for (size_t i = 1; i < m_open.size(); ++i) {
      const Json &outer = m_values[m_open[i - 1]];
      const Json &inner = m_values[m_open[i]];
      if (outer.kind == Json::Kind::object) {
        path += (i == 1 ? "" : ".") + inner.key;
      } else {
        path += "[" + std::to_string(positionIn(outer, inner)) + "]";
      }
    }
    return path.empty() ? path : path + ".";
  }

  static size_t positionIn(const Json &array, const Json &sought) {
    size_t position = 0;
    for (const Json *item = array.begin(); item != &sought; item = item->end()) ++position;
    return position;
  }

  std::vector<Json> m_values;
  std::vector<size_t> m_open;  // arrays and objects that have not ended, the outermost first
  std::string m_key;
};

}  // namespace

const Json *Json::find(std::string_view name) const {
  for (const Json *item = begin(); item != end(); item = item->end()) {
    if (item->key == name) return item;
  }
  return nullptr;
}

std::vector<Json> readJson(std::string_view text) {
  Reader reader;
  nlohmann::json::sax_parse(text, &reader);
  return reader.values();
}

}  // namespace tool

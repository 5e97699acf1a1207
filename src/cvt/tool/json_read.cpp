#include <nlohmann/json.hpp>

#include "error.h"
#include "json.h"
#include "text.h"

namespace tool {
namespace {

using Json = nlohmann::ordered_json;

constexpr size_t kNamesInError = 12;

std::string found(const Json &json) {
  if (json.is_number_float()) return "a number with a fraction or exponent (write it as a string)";
  if (json.is_boolean()) return "true or false (write it as a string)";
  return std::string("JSON of type ") + json.type_name();
}

std::string names(const Fields &fields) {
  std::string out;
  for (size_t i = 0; i < fields.size() && i < kNamesInError; ++i) {
    out += (i == 0 ? "" : ", ") + fields[i].key;
  }
  return fields.size() > kNamesInError ? out + ", ..." : out;
}

// Fills one message. Keeps the path of the field at hand for errors.
class Filler {
 public:
  explicit Filler(const ValueListInfo &info) : m_pool(info.ptMemNode) {}

  // done: a member that has been taken already.
  void object(const Json &json, const Fields &fields, ValueList *list, std::string_view done = {}) {
    if (!json.is_object()) mistyped("an object", json);
    size_t hint = 0;
    for (const auto &[key, item] : json.items()) {
      if (!done.empty() && key == done) continue;
      const At at(m_path, "." + key);
      const Field *const field = findField(fields, key, hint);
      if (field == nullptr)
        fail("one of the fields " + names(fields), "no field of that name in the definition");
      if (!item.is_null()) member(item, *field, list);
    }
  }

 private:
  // Lengthens the path as long as it lives.
  class At {
   public:
    At(std::string &path, const std::string &step) : m_path(path), m_size(path.size()) { path += step; }
    ~At() { m_path.resize(m_size); }
    At(const At &) = delete;
    At &operator=(const At &) = delete;

   private:
    std::string &m_path;
    size_t m_size;
  };

  void member(const Json &json, const Field &field, ValueList *list) {
    switch (field.kind) {
      case Field::Kind::value:
        value(json, field.slot, list);
        return;
      case Field::Kind::group:
        group(json, field, list);
        return;
      case Field::Kind::loop:
      case Field::Kind::valueLoop:
        loop(json, field, list);
    }
  }

  void group(const Json &json, const Field &field, ValueList *list) {
    const auto own = json.is_object() ? json.find(kOwnValue) : json.end();
    if (own == json.end()) {
      object(json, field.members, list);
      return;
    }
    value(*own, field.slot, list);
    object(json, field.members, list, kOwnValue);
  }

  void loop(const Json &json, const Field &field, ValueList *list) {
    if (!json.is_array()) mistyped("an array", json);
    for (size_t i = 0; i < json.size(); ++i) {
      const At at(m_path, "[" + std::to_string(i) + "]");
      ValueList *const repetition = cvtNewLoopValueList(list, field.slot, cvtLoopGetFieldNum(field.node));
      if (repetition == nullptr) {
        fail("at most " + std::to_string(i) + " repetitions", "more; configure a larger gnMaxLoop");
      }
      if (field.kind == Field::Kind::valueLoop) {
        value(json[i], 0, repetition);
      } else {
        object(json[i], field.members, repetition);
      }
    }
  }

  void value(const Json &json, int slot, ValueList *list) {
    std::string bytes;
    if (json.is_string()) {
      bytes = json.get_ref<const std::string &>();
    } else if (json.is_number_integer()) {
      bytes = json.dump();
    } else if (json.is_object()) {
      bytes = binary(json);
    } else if (!json.is_null()) {
      mistyped("a string", json);
    }
    Value *const target = cvtGetListValue(list, slot);
    if (target == nullptr ||
        cvtDumpValue(target, bytes.data(), static_cast<int>(bytes.size()), m_pool) != 0) {
      fail("a slot for the value", "a message without one; its format keeps fewer values than it has fields");
    }
  }

  std::string binary(const Json &json) {
    const auto base64 = json.find("base64");
    if (json.size() != 1 || base64 == json.end() || !base64->is_string()) {
      mistyped("a string or {\"base64\":\"...\"}", json);
    }
    auto bytes = decodeBase64(base64->get_ref<const std::string &>());
    if (!bytes) fail("base64 with padding", "characters that are not");
    return std::move(*bytes);
  }

  [[noreturn]] void mistyped(const std::string &expected, const Json &json) { fail(expected, found(json)); }

  [[noreturn]] void fail(const std::string &expected, const std::string &what) {
    throw DataError(m_path + ": expected " + expected + ", found " + what);
  }

  MemPort m_pool;
  std::string m_path = "fields";
};

}  // namespace

JsonMessage::JsonMessage(std::string_view text) {
  Json json;
  try {
    json = Json::parse(text);
  } catch (const Json::exception &error) {       // also numbers that are too large
    const std::string_view what = error.what();  // "[json.exception.parse_error.101] parse error at line ..."
    throw DataError("not JSON: " + std::string(what.substr(what.find("] ") + 2)));
  }
  if (!json.is_object()) throw DataError("expected {\"message\":...,\"fields\":{...}}, found " + found(json));
  for (const auto &[key, item] : json.items()) {
    if (key == "fields") continue;
    if (key != "message" || !item.is_string()) {
      throw DataError("expected \"message\", a string, and \"fields\", an object, found \"" + key + "\", " +
                      found(item));
    }
    m_message = item.get_ref<const std::string &>();
  }
  const auto fields = json.find("fields");
  if (fields == json.end()) throw DataError("expected \"fields\", an object, found no such member");
  m_fields = std::make_unique<const Json>(std::move(*fields));
}

JsonMessage::~JsonMessage() = default;

void JsonMessage::fill(const Fields &fields, const ValueListInfo &info) const {
  Filler(info).object(*m_fields, fields, info.ptValueList);
}

}  // namespace tool

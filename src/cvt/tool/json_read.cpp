#include "error.h"
#include "json.h"
#include "text.h"

namespace tool {
namespace {

constexpr size_t kNamesInError = 12;

std::string found(const Json &json) {
  switch (json.kind) {
    case Json::Kind::fraction:
      return "a number with a fraction or exponent (write it as a string)";
    case Json::Kind::boolean:
      return "true or false (write it as a string)";
    case Json::Kind::null:
      return "JSON of type null";
    case Json::Kind::integer:
      return "JSON of type number";
    case Json::Kind::string:
      return "JSON of type string";
    case Json::Kind::array:
      return "JSON of type array";
    case Json::Kind::object:
      return "JSON of type object";
  }
  return "";
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
    if (json.kind != Json::Kind::object) mistyped("an object", json);
    size_t hint = 0;
    for (const Json *item = json.begin(); item != json.end(); item = item->end()) {
      if (!done.empty() && item->key == done) continue;
      const At at(m_path, "." + item->key);
      const Field *const field = findField(fields, item->key, hint);
      if (field == nullptr)
        fail("one of the fields " + names(fields), "no field of that name in the definition");
      if (item->kind != Json::Kind::null) member(*item, *field, list);
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
    const Json *const own = json.kind == Json::Kind::object ? json.find(kOwnValue) : nullptr;
    if (own == nullptr) {
      object(json, field.members, list);
      return;
    }
    value(*own, field.slot, list);
    object(json, field.members, list, kOwnValue);
  }

  void loop(const Json &json, const Field &field, ValueList *list) {
    if (json.kind != Json::Kind::array) mistyped("an array", json);
    size_t i = 0;
    for (const Json *item = json.begin(); item != json.end(); item = item->end(), ++i) {
      const At at(m_path, "[" + std::to_string(i) + "]");
      ValueList *const repetition = cvtNewLoopValueList(list, field.slot, cvtLoopGetFieldNum(field.node));
      if (repetition == nullptr) {
        fail("at most " + std::to_string(i) + " repetitions", "more; configure a larger gnMaxLoop");
      }
      if (field.kind == Field::Kind::valueLoop) {
        value(*item, 0, repetition);
      } else {
        object(*item, field.members, repetition);
      }
    }
  }

  void value(const Json &json, int slot, ValueList *list) {
    std::string bytes = bytesOf(json);
    Value *const target = cvtGetListValue(list, slot);
    if (target == nullptr ||
        cvtDumpValue(target, bytes.data(), static_cast<int>(bytes.size()), m_pool) != 0) {
      fail("a slot for the value", "a message without one; its format keeps fewer values than it has fields");
    }
  }

  std::string bytesOf(const Json &json) {
    switch (json.kind) {
      case Json::Kind::null:
      case Json::Kind::integer:
      case Json::Kind::string:
        return json.text;
      case Json::Kind::object:
        return binary(json);
      default:
        mistyped("a string", json);
    }
  }

  std::string binary(const Json &json) {
    const Json *const base64 = json.find("base64");
    if (json.span != 2 || base64 == nullptr || base64->kind != Json::Kind::string) {
      mistyped("a string or {\"base64\":\"...\"}", json);
    }
    auto bytes = decodeBase64(base64->text);
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

JsonMessage::JsonMessage(std::string_view text) : m_values(readJson(text)) {
  const Json &json = m_values.front();
  if (json.kind != Json::Kind::object) {
    throw DataError("expected {\"message\":...,\"fields\":{...}}, found " + found(json));
  }
  for (const Json *item = json.begin(); item != json.end(); item = item->end()) {
    if (item->key == "fields") continue;
    if (item->key != "message" || item->kind != Json::Kind::string) {
      throw DataError("expected \"message\", a string, and \"fields\", an object, found \"" + item->key +
                      "\", " + found(*item));
    }
    m_message = item->text;
  }
  const size_t zero = m_message.find('\0');  // where the library would see its end
  if (zero != m_message.npos) {
    throw DataError("expected \"message\", a string without a zero byte, found one at its byte " +
                    std::to_string(zero));
  }
  if (json.find("fields") == nullptr) throw DataError("expected \"fields\", an object, found no such member");
}

void JsonMessage::fill(const Fields &fields, const ValueListInfo &info) const {
  Filler(info).object(*m_values.front().find("fields"), fields, info.ptValueList);
}

}  // namespace tool

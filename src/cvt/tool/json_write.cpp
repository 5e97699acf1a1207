#include "json.h"
#include "text.h"

namespace tool {
namespace {

class JsonWriter {
 public:
  JsonWriter(std::string &out, bool bAll) : m_out(out), m_bAll(bAll) {}

  void object(const Fields &all, ValueList *list) {
    m_out += '{';
    members(all, list);
    m_out += '}';
  }

 private:
  void members(const Fields &all, ValueList *list) {
    for (const Field &field : all) member(field, list);
  }

  void member(const Field &field, ValueList *list) {
    const std::string_view bytes = bytesIn(list, field.slot);
    switch (field.kind) {
      case Field::Kind::value:
        if (m_bAll || !bytes.empty()) pair(field.key, bytes);
        return;
      case Field::Kind::group:
        group(field, bytes, list);
        return;
      case Field::Kind::loop:
      case Field::Kind::valueLoop:
        loop(field, list);
    }
  }

  void group(const Field &field, std::string_view own, ValueList *list) {
    const size_t before = m_out.size();
    key(field.key);
    m_out += '{';
    const size_t empty = m_out.size();
    if (!own.empty()) pair(kOwnValue, own);
    members(field.members, list);
    const bool bEmpty = m_out.size() == empty;
    m_out += '}';
    if (bEmpty && !m_bAll) m_out.resize(before);
  }

  void loop(const Field &field, ValueList *list) {
    const int count = repetitionsIn(list, field.slot);
    if (count == 0 && !m_bAll) return;
    key(field.key);
    m_out += '[';
    for (int i = 0; i < count; ++i) {
      if (i > 0) m_out += ',';
      ValueList *const repetition = cvtGetLoopValueList(list, field.slot, i);
      if (field.kind == Field::Kind::valueLoop) {
        value(bytesIn(repetition, 0));
      } else {
        object(field.members, repetition);
      }
    }
    m_out += ']';
  }

  void pair(std::string_view name, std::string_view bytes) {
    key(name);
    value(bytes);
  }

  void key(std::string_view name) {
    if (!m_out.ends_with('{')) m_out += ',';
    appendJsonString(m_out, name);
    m_out += ':';
  }

  void value(std::string_view bytes) {
    if (isUtf8(bytes)) {
      appendJsonString(m_out, bytes);
      return;
    }
    m_out += "{\"base64\":\"";
    appendBase64(m_out, bytes);
    m_out += "\"}";
  }

  std::string &m_out;
  bool m_bAll;
};

}  // namespace

void appendJson(std::string &out, const Msg &msg, const Fields &fields, ValueList *list, bool bAll) {
  out += "{\"message\":";
  appendJsonString(out, msg.psMsgName);
  out += ",\"fields\":";
  JsonWriter(out, bAll).object(fields, list);
  out += '}';
}

}  // namespace tool

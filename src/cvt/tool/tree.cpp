#include "tree.h"

#include <algorithm>

#include "text.h"

namespace tool {
namespace {

// Text as a person would call it: UTF-8 without control characters other than those of lines.
bool isText(std::string_view bytes) {
  const auto odd = [](char c) {
    return (static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\r' && c != '\t') || c == 0x7f;
  };
  return isUtf8(bytes) && std::none_of(bytes.begin(), bytes.end(), odd);
}

class TreeWriter {
 public:
  TreeWriter(std::string &out, bool bAll) : m_out(out), m_bAll(bAll) {}

  void fields(const Fields &all, ValueList *list, size_t depth) {
    for (const Field &field : all) {
      if (bytesIn(list, field.slot).empty()) {
        structure(field, list, depth);
      } else {
        value(field.key, bytesIn(list, field.slot), depth);
        if (field.kind == Field::Kind::group) fields(field.members, list, depth + 1);
      }
    }
  }

 private:
  void structure(const Field &field, ValueList *list, size_t depth) {
    switch (field.kind) {
      case Field::Kind::value:
        value(field.key, {}, depth);
        return;
      case Field::Kind::group:
        group(field, list, depth);
        return;
      case Field::Kind::loop:
      case Field::Kind::valueLoop:
        loop(field, list, depth);
    }
  }

  void group(const Field &field, ValueList *list, size_t depth) {
    const size_t before = m_out.size();
    line(field.key, depth);
    const size_t empty = m_out.size();
    fields(field.members, list, depth + 1);
    if (m_out.size() == empty && !m_bAll) m_out.resize(before);
  }

  void loop(const Field &field, ValueList *list, size_t depth) {
    const int count = repetitionsIn(list, field.slot);
    for (int i = 0; i < count; ++i) {
      const std::string key = field.key + "[" + std::to_string(i) + "]";
      ValueList *const repetition = cvtGetLoopValueList(list, field.slot, i);
      if (field.kind == Field::Kind::valueLoop) {
        quoted(key, bytesIn(repetition, 0), depth);
      } else {
        line(key, depth);
        fields(field.members, repetition, depth + 1);
      }
    }
    if (count == 0 && m_bAll) line(field.key + "[]", depth);
  }

  void value(const std::string &key, std::string_view bytes, size_t depth) {
    if (m_bAll || !bytes.empty()) quoted(key, bytes, depth);
  }

  void quoted(const std::string &key, std::string_view bytes, size_t depth) {
    m_out.append(2 * depth, ' ').append(key).append(": ");
    if (isText(bytes)) {
      appendJsonString(m_out, bytes);
    } else {
      m_out += "0x";
      appendHex(m_out, bytes);
    }
    m_out += '\n';
  }

  void line(const std::string &key, size_t depth) { m_out.append(2 * depth, ' ').append(key).append("\n"); }

  std::string &m_out;
  bool m_bAll;
};

}  // namespace

void appendTree(std::string &out, const Fields &fields, ValueList *list, bool bAll) {
  TreeWriter(out, bAll).fields(fields, list, 1);
}

}  // namespace tool

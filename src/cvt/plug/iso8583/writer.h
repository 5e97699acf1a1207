// writer.h: data elements and what is in them, from values to their bytes.
#pragma once

#include "kit/plugin.h"
#include "plan.h"
#include "seen.h"

namespace cvt::iso8583 {

class Writer {
 public:
  explicit Writer(kit::GenerateCall &call) : m_call(call), m_out(call.out) {}

  // All throw Fault.
  void element(const Element &element, const kit::List &list) {
    if (element.inside == nullptr) return field(element, list);
    group(element, list);
  }
  void field(const Element &field, const kit::List &list);

 private:
  size_t content(const Element &field, const kit::List &list);
  void enter(const Element &group, const kit::List &list);
  void group(const Element &element, const kit::List &list);
  void inside(const Element &element, const kit::List &list);
  void repetitions(const Element &element, const kit::List &list);
  void subfields(const Element &group, const kit::List &list);
  static size_t lastWritten(const Element &group, const kit::List &list);

  void tags(const Container &container, const kit::List &list);
  void inOrder(const Container &container, const kit::List &list, class Others &others, Seen &seen);
  void tagged(const Element &member, const kit::List &list);
  void tagAndValue(const Container &container, const kit::List &list);

  kit::GenerateCall &m_call;
  kit::Output &m_out;
  kit::Digits m_digits{};
};

}  // namespace cvt::iso8583

// reader.h: data elements and what is in them, from their bytes to values.
#pragma once

#include "input.h"
#include "kit/plugin.h"
#include "plan.h"
#include "tlv.h"

namespace cvt::iso8583 {

class Reader {
 public:
  explicit Reader(kit::ParseCall &call) : m_call(call) {}

  // All throw Fault.
  void element(const Element &element, Input &in, kit::List &list) {
    if (element.inside == nullptr) return field(element, in, list);
    group(element, in, list);
  }
  void field(const Element &field, Input &in, kit::List &list);

 private:
  void group(const Element &element, Input &in, kit::List &list);
  void inside(const Element &element, const Input &in, kit::List &list);
  void repetitions(const Element &element, Input in, kit::List &list);
  void subfields(const Element &group, Input in, kit::List &list);
  void allMembers(const Container &container, Input &in, kit::List &list);

  void tags(const Container &container, Input in, kit::List &list);
  void knownTag(const Element &member, const Tlv &tlv, const Input &part, kit::List &list);
  void tagAndValue(const Container &container, Input &in, kit::List &list);
  void others(const Container &container, Input in, kit::List &list, size_t orderLength, size_t othersLength);

  void put(const Element &field, std::string_view value, kit::List &list);

  kit::ParseCall &m_call;
};

}  // namespace cvt::iso8583

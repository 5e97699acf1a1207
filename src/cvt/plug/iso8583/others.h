// others.h: the tags that a definition does not know, as a message's value has them.
#pragma once

#include <string_view>

#include "input.h"
#include "kit/values.h"
#include "plan.h"
#include "tlv.h"

namespace cvt::iso8583 {

// Hexadecimal digits to bytes, in memory of the store. Throws Fault.
std::string_view hexToBytes(std::string_view digits, kit::Store &store);

// The unknown tags, one after the other.
class Others {
 public:
  Others(const Container &container, std::string_view value, kit::Store &store)
      : m_container(container), m_bytes(hexToBytes(value, store)), m_in(nullptr, nullptr, nullptr) {
    m_in = Input(m_bytes.data(), m_bytes.data(), m_bytes.data() + m_bytes.size());
  }

  bool done() const { return m_in.atEnd(); }

  // Throws Fault for what is no tag, or one that the definition knows.
  Tlv next();

 private:
  const Container &m_container;
  std::string_view m_bytes;
  Input m_in;
};

// A list of tags in hexadecimal digits, a blank between them.
class Order {
 public:
  explicit Order(std::string_view value) : m_rest(value) {}

  bool done() const { return m_rest.empty(); }
  uint32_t next();  // throws Fault

 private:
  std::string_view m_rest;
};

}  // namespace cvt::iso8583

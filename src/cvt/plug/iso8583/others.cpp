#include "others.h"

#include "content.h"
#include "kit/fault.h"

namespace cvt::iso8583 {

using kit::Fault;
using kit::quoted;

std::string_view hexToBytes(std::string_view digits, kit::Store &store) {
  const size_t length = digits.size() / 2;
  char *const out = store.take(length);
  bool good = digits.size() % 2 == 0;
  for (size_t i = 0; good && i < length; ++i) {
    const unsigned high = hexDigit(digits[2 * i]);
    const unsigned low = hexDigit(digits[2 * i + 1]);
    good = high <= 15 && low <= 15;
    out[i] = static_cast<char>((high & 15) << 4 | (low & 15));
  }
  if (good) return {out, length};
  throw Fault(Fault::kHere, "hexadecimal digits, two a byte", quoted(digits.data(), digits.size()));
}

Tlv Others::next() {
  try {
    const Tlv tlv = readTlv(m_in);
    if (m_container.find(tlv.tag) == Container::kNone) return tlv;
    throw Fault(Fault::kHere, "tags that the definition does not have", tagText(tlv.tag),
                "Give the value to the field of that tag");
  } catch (const Fault &fault) {
    if (fault.offset() == Fault::kHere) throw;
    throw Fault(Fault::kHere, "whole tags in hexadecimal digits", quoted(m_bytes.data(), m_bytes.size()),
                fault.text());
  }
}

uint32_t Order::next() {
  const size_t length = m_rest.find(' ') < m_rest.size() ? m_rest.find(' ') : m_rest.size();
  const uint32_t tag = tagOf(m_rest.substr(0, length));
  const bool blankAtTheEnd = length + 1 == m_rest.size();
  if (tag == 0 || blankAtTheEnd) {
    throw Fault(Fault::kHere, "tags in hexadecimal digits, a blank between them",
                quoted(m_rest.data(), m_rest.size()));
  }
  m_rest.remove_prefix(length < m_rest.size() ? length + 1 : length);
  return tag;
}

}  // namespace cvt::iso8583

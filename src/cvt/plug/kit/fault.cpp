#include "fault.h"

#include "attributes.h"

namespace cvt::kit {

namespace {
constexpr size_t kMaxQuoted = 40;

std::string sentence(const std::string &expected, const std::string &found, const std::string &advice) {
  std::string text = "expected " + expected + ", found " + found + ".";
  if (!advice.empty()) text += " " + advice + ".";
  return text;
}
}  // namespace

std::string quoted(const char *bytes, size_t length) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string text = "\"";
  for (size_t i = 0; i < length && i < kMaxQuoted; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if (byte >= 0x20 && byte < 0x7F) {
      text += static_cast<char>(byte);
    } else {
      text += "\\x";
      text += kHex[byte >> 4];
      text += kHex[byte & 0x0F];
    }
  }
  text += length > kMaxQuoted ? "\"..." : "\"";
  return text;
}

std::string Fault::text() const {
  return sentence(m_expected, m_found, m_advice);
}

std::string Misconfigured::text() const {
  std::string text;
  if (!m_path.empty()) text += "Node[" + m_path + "] ";
  const std::string place = recordPlace(m_record);
  if (!place.empty()) text += "File[" + place + "] ";
  if (!text.empty()) text.back() = ':';
  if (!text.empty()) text += ' ';
  return text + sentence(m_expected, m_found, m_advice);
}

}  // namespace cvt::kit

#include "base64.h"

#include <array>
#include <cstdint>

namespace cvt::functions {

namespace {

constexpr std::string_view kAlphabets[] = {
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/",
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_"};

constexpr uint8_t kNone = 0xFF;

constexpr std::array<uint8_t, 256> valuesOf(std::string_view alphabet) {
  std::array<uint8_t, 256> values{};
  values.fill(kNone);
  for (size_t i = 0; i < alphabet.size(); ++i) {
    values[static_cast<unsigned char>(alphabet[i])] = static_cast<uint8_t>(i);
  }
  return values;
}

constexpr std::array<uint8_t, 256> kValues[] = {valuesOf(kAlphabets[0]), valuesOf(kAlphabets[1])};

const char *const kGroups = "whole groups of four, filled up with =";
const char *const kLetters = "letters, digits, + and /";
const char *const kUrlLetters = "letters, digits, - and _, not filled up with =";

// All but what the last group is filled up with.
size_t lettersOf(std::string_view text, Base64 form) {
  size_t letters = text.size();
  if (form == Base64::Url) return letters;
  for (int i = 0; i < 2 && letters > 0 && text[letters - 1] == '='; ++i) --letters;
  return letters;
}

}  // namespace

size_t base64Length(size_t bytes, Base64 form) {
  return form == Base64::Plain ? (bytes + 2) / 3 * 4 : (bytes * 4 + 2) / 3;
}

void encodeBase64(std::string_view bytes, Base64 form, char *out) {
  const std::string_view alphabet = kAlphabets[static_cast<size_t>(form)];
  for (; !bytes.empty(); bytes.remove_prefix(bytes.size() < 3 ? bytes.size() : 3)) {
    const auto byte = [&](size_t i) {
      return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : uint32_t{0};
    };
    const uint32_t group = byte(0) << 16 | byte(1) << 8 | byte(2);
    for (size_t i = 0; i < 4; ++i) {
      if (i <= bytes.size()) {
        *out++ = alphabet[group >> (18 - 6 * i) & 0x3F];
      } else if (form == Base64::Plain) {
        *out++ = '=';
      }
    }
  }
}

size_t base64Bytes(std::string_view text, Base64 form) {
  const size_t letters = lettersOf(text, form);
  return letters / 4 * 3 + (letters % 4 == 0 ? 0 : letters % 4 - 1);
}

Base64Result decodeBase64(std::string_view text, Base64 form, char *out) {
  const auto &values = kValues[static_cast<size_t>(form)];
  if (form == Base64::Plain && text.size() % 4 != 0) return {kGroups, text.size(), 0};
  const size_t length = lettersOf(text, form);
  char *const begin = out;
  uint32_t group = 0;
  for (size_t i = 0; i < length; ++i) {
    const uint8_t value = values[static_cast<unsigned char>(text[i])];
    if (value == kNone) return {form == Base64::Plain ? kLetters : kUrlLetters, i, 0};
    group = group << 6 | value;
    if (i % 4 == 0) continue;
    *out++ = static_cast<char>(group >> (6 - i % 4 * 2) & 0xFF);
  }
  if (length % 4 == 1) return {"two letters at least for the last byte", length - 1, 0};
  const uint32_t lost = length % 4 == 2 ? group & 0x0F : length % 4 == 3 ? group & 0x03 : 0;
  if (lost != 0) return {"a last letter without bits of a byte that is not there", length - 1, 0};
  return {nullptr, 0, static_cast<size_t>(out - begin)};
}

}  // namespace cvt::functions

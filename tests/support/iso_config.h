// iso_config.h: configurations of the format `iso8583`, and messages going through them.
//
//   IsoConfig config;
//   config.message("M", "", {mti(), field("Pan", "nNumber=\"2\" psType=\"n\" psPrefix=\"LL\"")});
//   ASSERT_EQ(config.start(), 0);
//   Wire message = parse("M", "0200" + bitmap({2}) + "0411");
//   EXPECT_EQ(get(message, "Pan"), "1122");
#pragma once

#include "format_config.h"

namespace test::iso {

using namespace test::format;

// sAttributes: of its IsoField.
inline FormatNode field(const std::string &sName, const std::string &sAttributes) {
  return leaf("IsoField", sName, sAttributes);
}

inline FormatNode mti(const std::string &sAttributes = "") {
  return field("Mti", "psKind=\"mti\" " + sAttributes);
}

// sRecord: IsoGroup or IsoTlv; empty: a plain group.
inline FormatNode group(const std::string &sName, const std::string &sRecord, const std::string &sAttributes,
                        const std::vector<FormatNode> &children) {
  return branch(sRecord, sName, sAttributes, children);
}

// sLoop: attributes of its IsoLoop.
inline FormatNode loop(const std::string &sName, const std::string &sRecord, const std::string &sAttributes,
                       const std::string &sLoop, const std::vector<FormatNode> &body) {
  return repeated(sRecord, sName, sAttributes, "IsoLoop __ID=\"ptInfo\" " + sLoop, body, "");
}

struct IsoFormat {
  static constexpr const char *psPlugin = "iso8583";
  static constexpr const char *psMsg = "IsoMsg";
};
using IsoConfig = Config<IsoFormat>;
using Wire = Handle;

inline Wire parse(const std::string &sName, const std::string &sBytes) {
  return format::parse<IsoFormat>(sName, sBytes);
}
inline Wire create(const std::string &sName) {
  return format::create<IsoFormat>(sName);
}

// An empty value that was given, as a converter copies it.
inline void give(const Wire &message, const std::string &sName) {
  static char sEmpty[] = "";
  int nError = 0;
  Value *ptValue = cvtGetNameValue(message.get(), cs(sName.c_str()), &nError);
  if (ptValue == nullptr) return;
  ptValue->psValue = sEmpty;
  ptValue->nLen = 0;
}

// A bitmap of 64 bits with those numbers, 1 to 64, in hexadecimal digits.
inline std::string bitmap(const std::vector<int> &numbers) {
  unsigned long long nBits = 0;
  for (const int n : numbers) nBits |= 1ULL << (64 - n);
  char sDigits[17];
  std::snprintf(sDigits, sizeof sDigits, "%016llX", nBits);
  return sDigits;
}

// Hexadecimal digits, blanks between them, to bytes.
inline std::string bytes(const std::string &sHex) {
  std::string sBytes;
  std::string sDigits;
  for (const char c : sHex) {
    if (c == ' ') continue;
    sDigits += c;
    if (sDigits.size() < 2) continue;
    sBytes += static_cast<char>(std::stoi(sDigits, nullptr, 16));
    sDigits.clear();
  }
  return sBytes;
}

}  // namespace test::iso

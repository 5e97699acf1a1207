// charset.h: conversion between a character set and UTF-8, the form of all values inside the library.
//
// A set is resolved once, when a definition loads; its iconv descriptors stay open until the plug-in is
// unloaded. Conversion is strict: a byte sequence that is no character, one that is cut off, or a character
// the other set lacks is an error with its offset, never a replacement character. Bytes that are all ASCII
// are copied without iconv when the set contains ASCII; sets of one byte a character are converted by table.
// What iconv wrote in any other set is read back: some tables of the C library have like characters for those
// that the set lacks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace cvt::kit {

enum class Damage {
  None,
  Invalid,     // bytes that are no character of the source set
  Cut,         // the input ends inside a character
  Unmappable,  // a character that the target set lacks
  NoRoom,      // the output is full; what fits, up to a character's end, was written
};

// What is wrong, for "expected X".
const char *damageText(Damage damage);

struct Converted {
  size_t read;     // input bytes used; the offset of the damage, if any
  size_t written;  // output bytes
  Damage damage;
};

class Charset {
 public:
  // The set of that name; null when iconv does not know it. UTF-8 for null. Lives until the plug-in unloads.
  static const Charset *find(const char *name);

  ~Charset();
  Charset(const Charset &) = delete;
  Charset &operator=(const Charset &) = delete;

  const std::string &name() const { return m_name; }
  bool isUtf8() const { return m_kind == Kind::Utf8; }
  bool containsAscii() const { return m_ascii; }          // ASCII bytes alone are ASCII text
  bool oneByte() const { return m_kind == Kind::Table; }  // every character is one byte

  // Room in which n bytes of the set always fit as UTF-8.
  size_t decodedRoom(size_t n) const;

  // Set to UTF-8, and UTF-8 to set.
  Converted decode(const char *in, size_t n, char *out, size_t room) const;
  Converted encode(const char *in, size_t n, char *out, size_t room) const;

  // Bytes that the first `characters` characters of the input take: `read` bytes, or damage (NoRoom never;
  // Cut when there are fewer characters). `written` is the number of characters seen. In a set with shift states,
  // what closes a text belongs to it.
  Converted measure(const char *in, size_t n, size_t characters) const;

  // Number of characters of a UTF-8 text. REQUIRES: valid UTF-8.
  static size_t countUtf8(const char *in, size_t n);

  // The largest length <= limit at which the UTF-8 text can be cut without splitting a character.
  static size_t cutUtf8(const char *in, size_t n, size_t limit);

  // Whether all bytes are below 0x80.
  static bool ascii(const char *in, size_t n);

  // Strict UTF-8 check: offset of the first damage in `read`.
  static Converted checkUtf8(const char *in, size_t n);

 private:
  enum class Kind { Utf8, Table, Iconv };
  struct Table;
  class Converter;

  // More than any shift sequence that closes a text.
  static constexpr size_t kShiftRoom = 8;

  explicit Charset(const char *name);
  bool open();      // false: iconv does not know the set
  void classify();  // one byte a character, several characters a byte, contains ASCII
  bool hasAllOfUnicode() const;
  bool hasShifts() const;

  Converted encodeByTable(const char *in, size_t n, char *out, size_t room) const;
  Converted encodeByIconv(const char *in, size_t n, char *out, size_t room) const;
  size_t comesBack(const char *in, size_t n, const char *bytes, size_t size) const;
  size_t closing(const char *in, size_t text, size_t n) const;
  size_t closingSequence(const char *in, size_t n, char (&sequence)[kShiftRoom]) const;

  std::string m_name;
  Kind m_kind = Kind::Iconv;
  bool m_ascii = false;
  size_t m_mostOfByte = 1;  // characters that one byte may be
  bool m_shifts = false;    // a text may have to be closed
  std::unique_ptr<Converter> m_toUtf8;
  std::unique_ptr<Converter> m_fromUtf8;
  std::unique_ptr<Converter> m_toCodes;  // for measuring: four bytes a character
  std::unique_ptr<Converter> m_back;     // reads what was written; null: all of Unicode comes back
  std::unique_ptr<Table> m_table;
};

}  // namespace cvt::kit
